// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_DIRECTORY_H
#define TOOLKIT_FILES_DIRECTORY_H

#include <vector>

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// One folder, named at construction, and what it holds; besides, operations on folders and files named by
/// their paths. A relative path counts from the working folder. Any thread may call any operation. Failures
/// are told by false or by an empty list, and not logged.
///
/// @code
/// std::vector<Toolkit::TString<wchar_t>> names;
/// Toolkit::Directory(L"/etc").GetFiles(L"*.conf", names);
/// if (!Toolkit::Directory::Create(L"/tmp/desk/mails"))
///     return Fail("there is no folder");
/// @endcode
class TOOLKIT_API Directory
{
public:
    /// An empty path stands for the application's folder, and for none at all while there is no path manager.
    explicit Directory(const TString<wchar_t>& path);

    /// True when a folder lies at `path`.
    static bool Exist(const TString<wchar_t>& path);
    /// Makes the folder and every missing parent, with permissions 0777 before the umask; true when the
    /// folder is there in the end.
    static bool Create(const TString<wchar_t>& path);
    /// Removes one file; of a link it removes the link, not its target. False for a folder.
    static bool RemoveFile(const TString<wchar_t>& path);

    /// A listing replaces `names` by bare names in the system's order, never of entries that begin with ".".
    /// "*" in a filter stands for any characters and "?" for one; an empty filter matches everything, "*.*"
    /// only what has a dot. Links are what they lead to. A name that is not UTF-8 is left out.
    /// Quirk: a backslash in a filter makes the next character an ordinary one.
    /// Quirk: everything that is no folder is a file, dangling links and FIFOs too.
    void GetFiles(const TString<wchar_t>& filter, std::vector<TString<wchar_t>>& names) const;
    /// The same for folders.
    void GetDirectories(const TString<wchar_t>& filter, std::vector<TString<wchar_t>>& names) const;
    /// Files and folders; nothing for an empty folder name.
    static void EnumFilePaths(std::vector<TString<wchar_t>>& names, const TString<wchar_t>& folder,
                              const TString<wchar_t>& filter);

private:
    TString<wchar_t> m_strPath;
};

} // namespace Toolkit

#endif
