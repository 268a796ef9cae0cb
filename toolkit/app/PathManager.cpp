// SPDX-License-Identifier: MIT
#include "toolkit/app/PathManager.h"

#include <filesystem>

#include <sys/stat.h>
#include <wx/filename.h>
#include <wx/utils.h>

#include "toolkit/internal/folders/StandardFolders.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/PathNames.h"
#include "toolkit/internal/wx/WxText.h"

namespace Toolkit
{

namespace
{

void CreateFolders(const TString<wchar_t>& path)
{
    // As at every start but the first.
    if (NativePath(path).IsFolder())
        return;
    std::error_code ignored;
    std::filesystem::create_directories(PathNames::ToNative(path).c_str(), ignored);
}

// The separator of the instance, which is kept alive meanwhile; without an instance the platform's own.
wchar_t InstanceSeparator()
{
    const smart_ptr<PathManager> manager = InstalledPathManager();
    return manager.IsNull() ? L'/' : manager->GetPathSeparator().at(0);
}

} // namespace

smart_ptr<PathManager, smart_ptr_policy>* PathManager::s_pInstance = nullptr;

TOOLKIT_ONCE const TString<wchar_t> PathManager::c_strConfigurationFolderName = L"config";
TOOLKIT_ONCE const TString<wchar_t> PathManager::c_strRessourcesFolderName = L"ressources";
TOOLKIT_ONCE const TString<wchar_t> PathManager::c_strAppearancesFolderName = L"ressources";
TOOLKIT_ONCE const TString<wchar_t> PathManager::c_strPluginsFolderName = L"plugins";
TOOLKIT_ONCE const TString<wchar_t> PathManager::c_strCacheFolderName = L"cache";

PathManager::PathManager()
{
    const wchar_t separator = FromWx(wxFileName::GetPathSeparators()).at(0);
    m_strPathSeparator.assign(1, separator);

    const StandardFolders::Program program;
    PathNames::Executable executable =
        PathNames::SplitExecutable(program.executable, separator, &StandardFolders::Working);
    m_strApplicationPath = std::move(executable.m_strFolder);
    m_strApplicationName = std::move(executable.m_strName);

    m_strDocumentsPath = StandardFolders::Documents(program);

    const TString<wchar_t> resources = StandardFolders::Resources(program);
    m_strConfigurationPath = StandardFolders::Data(program) + separator + c_strConfigurationFolderName;
    m_strApplicationRessourcesPath = resources + separator + c_strRessourcesFolderName;
    const TString<wchar_t> userLocalData = StandardFolders::UserLocalData(program);
    m_strApplicationDataPath = userLocalData + separator + m_strApplicationName;
    m_strAppearancesPath = resources + separator + c_strAppearancesFolderName;

    RebuildDependentPathes();
    // Without a home it would be a folder at the root.
    if (!userLocalData.empty())
        CreateFolders(m_strApplicationDataPath);
    m_strUniqueInstanceName = PathNames::MakeUniqueInstanceName(m_strApplicationPath, m_strApplicationName,
                                                                FromWx(wxGetUserId()), separator);
}

PathManager::~PathManager() = default;

void PathManager::SetApplicationDataPath(const TString<wchar_t>& path)
{
    m_strApplicationDataPath = path;
    CreateFolders(m_strApplicationDataPath);
}

void PathManager::SetApplicationRessourcesPath(const TString<wchar_t>& path)
{
    m_strApplicationRessourcesPath = path;
    RebuildDependentPathes();
}

void PathManager::SetMassStorageDataPath(const TString<wchar_t>& path)
{
    m_strMassStorageDataPath = path;
}

void PathManager::SetCdRomPath(const TString<wchar_t>& path)
{
    m_strCdRomPath = path;
}

void PathManager::RebuildDependentPathes()
{
    m_strPluginsPath = m_strApplicationRessourcesPath + m_strPathSeparator + c_strPluginsFolderName;
}

TString<wchar_t> PathManager::GetDataDir() const
{
    return StandardFolders::Data();
}

TString<wchar_t> PathManager::GetUserLocalDataDir() const
{
    return StandardFolders::UserLocalData();
}

TString<wchar_t> PathManager::GetTempDir() const
{
    return L"/tmp";
}

void PathManager::AppendPath(TString<wchar_t>& path, const TString<wchar_t>& name)
{
    AppendPath(path, path, name);
}

void PathManager::AppendPath(TString<wchar_t>& result, const TString<wchar_t>& base,
                             const TString<wchar_t>& name)
{
    PathNames::Join(result, base, name, InstanceSeparator());
}

void PathManager::SplitPath(const TString<wchar_t>& fullPath, TString<wchar_t>& volume,
                            TString<wchar_t>& path, TString<wchar_t>& name, TString<wchar_t>& extension)
{
    wxString parts[4];
    wxFileName::SplitPath(ToWx(fullPath), &parts[0], &parts[1], &parts[2], &parts[3], wxPATH_NATIVE);
    volume = FromWx(parts[0]);
    path = FromWx(parts[1]);
    name = FromWx(parts[2]);
    extension = FromWx(parts[3]);
}

bool PathManager::Exists(const TString<wchar_t>& path)
{
    const mode_t kind = NativePath(path).GetKind();
    return kind == S_IFDIR || kind == S_IFREG;
}

bool PathManager::FileExists(const TString<wchar_t>& path)
{
    return NativePath(path).IsFile();
}

bool PathManager::DirExists(const TString<wchar_t>& path)
{
    return NativePath(path).IsFolder();
}

} // namespace Toolkit
