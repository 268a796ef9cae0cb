// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_PATHNAMES_H
#define TOOLKIT_INTERNAL_SYSTEM_PATHNAMES_H

#include "toolkit/core/TString.h"

// What the path manager makes of texts alone, without asking the platform. Any thread may call it.
namespace Toolkit::PathNames
{

struct Executable
{
    TString<wchar_t> m_strFolder;
    TString<wchar_t> m_strName;
};

// The folder, and the file name without its last extension, of an executable's full path. Without a
// separator in it the folder is what `workingFolder` returns, and the name is empty.
Executable SplitExecutable(const TString<wchar_t>& path, wchar_t separator,
                           TString<wchar_t> (*workingFolder)());

// Folder without separators and colons, name and user, each character through the narrow `tolower`.
TString<wchar_t> MakeUniqueInstanceName(const TString<wchar_t>& folder, const TString<wchar_t>& name,
                                        const TString<wchar_t>& user, wchar_t separator);

// `base` joined with `name` by one separator, unless `base` is empty or ends with one. `result` may be
// `base` or `name`.
void Join(TString<wchar_t>& result, const TString<wchar_t>& base, const TString<wchar_t>& name,
          wchar_t separator);

// The path as the system takes it; empty when it can name nothing (an embedded NUL, no UTF-8 form).
TString<char> ToNative(const TString<wchar_t>& path);

} // namespace Toolkit::PathNames

#endif
