// SPDX-License-Identifier: MIT
#include "toolkit/files/Directory.h"

#include <climits>
#include <filesystem>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <wx/filefn.h>

#include "toolkit/app/PathManager.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/system/FolderStream.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/wx/WxText.h"

namespace Toolkit
{

namespace
{

const unsigned int s_uFiles = 1;
const unsigned int s_uFolders = 2;

bool IsFolder(DIR* folder, const dirent& entry)
{
    struct stat status = {};
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN)
        return entry.d_type == DT_DIR;
    return fstatat(dirfd(folder), entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

bool IsWanted(DIR* folder, const dirent& entry, unsigned int kinds)
{
    return kinds == (s_uFiles | s_uFolders) || IsFolder(folder, entry) == (kinds == s_uFolders);
}

// The names are gathered apart, so that the folder and the filter may be elements of what the caller gives.
std::vector<TString<wchar_t>> List(const TString<wchar_t>& path, const TString<wchar_t>& filter,
                                   unsigned int kinds)
{
    std::vector<TString<wchar_t>> names;
    const NativePath native(path);
    // No name holds a NUL, but the comparison would stop there.
    if (!native.IsValid() || filter.find(L'\0') != filter.npos)
        return names;
    const FolderStream folder = OpenFolder(AT_FDCWD, native.c_str());
    if (folder == nullptr)
        return names;
    const wxString pattern = ToWx(filter);
    while (const dirent* const entry = readdir(folder.get()))
    {
        if (entry->d_name[0] == '.' || !IsWanted(folder.get(), *entry, kinds))
            continue;
        TString<wchar_t> name = UTF8::ToUNICODE(entry->d_name);
        if (!name.empty() && (filter.empty() || wxMatchWild(pattern, ToWx(name), false)))
            names.push_back(std::move(name));
    }
    return names;
}

// Its parents are not made, either.
bool HasTooLongName(const TString<char>& path)
{
    std::size_t length = 0;
    for (const char byte : path)
    {
        length = byte == '/' ? 0 : length + 1;
        if (length > NAME_MAX)
            return true;
    }
    return false;
}

} // namespace

Directory::Directory(const TString<wchar_t>& path) : m_strPath(path)
{
    if (!path.empty())
        return;
    const smart_ptr<PathManager, smart_ptr_policy> manager = InstalledPathManager();
    if (!manager.IsNull())
        m_strPath = manager->GetApplicationPath();
}

bool Directory::Exist(const TString<wchar_t>& path)
{
    return NativePath(path).IsFolder();
}

bool Directory::Create(const TString<wchar_t>& path)
{
    const NativePath native(path);
    std::error_code ignored;
    if (native.IsValid() && !HasTooLongName(native.GetBytes()))
        std::filesystem::create_directories(native.c_str(), ignored);
    // Only the outcome counts: the folder may be there, or be made by another process at the same time.
    return native.IsFolder();
}

bool Directory::RemoveFile(const TString<wchar_t>& path)
{
    const NativePath native(path);
    return native.IsValid() && unlink(native.c_str()) == 0;
}

void Directory::GetFiles(const TString<wchar_t>& filter, std::vector<TString<wchar_t>>& names) const
{
    names = List(m_strPath, filter, s_uFiles);
}

void Directory::GetDirectories(const TString<wchar_t>& filter, std::vector<TString<wchar_t>>& names) const
{
    names = List(m_strPath, filter, s_uFolders);
}

void Directory::EnumFilePaths(std::vector<TString<wchar_t>>& names, const TString<wchar_t>& folder,
                              const TString<wchar_t>& filter)
{
    names = List(folder, filter, s_uFiles | s_uFolders);
}

} // namespace Toolkit
