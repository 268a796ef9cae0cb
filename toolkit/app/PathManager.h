// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_PATHMANAGER_H
#define TOOLKIT_APP_PATHMANAGER_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"

namespace Toolkit
{

/// Where the running application and its files live: its folders, the native path separator, and a key that
/// names this installation as run by this user. The library's module owns the one instance, reached through
/// `s_pInstance`; callers copy that smart pointer for the length of their call. The fields carry no lock:
/// they change only through the four setters, which the host keeps apart from readers. Nothing here reports a
/// failure.
///
/// @code
/// const Toolkit::smart_ptr<Toolkit::PathManager> paths = Toolkit::InstalledPathManager();
/// Toolkit::TString<wchar_t> ini = paths->GetConfigurationPath();
/// Toolkit::PathManager::AppendPath(ini, L"desk.ini");
/// @endcode
class TOOLKIT_API PathManager
{
public:
    /// Null before the modules are initialised and after they are released.
    static smart_ptr<PathManager, smart_ptr_policy>* s_pInstance;

    /// The name of the configuration folder.
    static const TString<wchar_t> c_strConfigurationFolderName;
    /// The name of the resources folder. Quirk: it is spelled "ressources".
    static const TString<wchar_t> c_strRessourcesFolderName;
    /// The name of the appearances folder. Quirk: appearances lie in the resources folder, so that it has the
    /// name of that one.
    static const TString<wchar_t> c_strAppearancesFolderName;
    /// The name of the plug-ins folder.
    static const TString<wchar_t> c_strPluginsFolderName;
    /// The name of the cache folder.
    static const TString<wchar_t> c_strCacheFolderName;

    /// Asks the platform for every folder and creates the application data folder.
    PathManager();
    ~PathManager();

    PathManager(const PathManager&) = delete;
    PathManager& operator=(const PathManager&) = delete;

    /// The executable's file name without its last extension.
    const TString<wchar_t>& GetApplicationName() const { return m_strApplicationName; }
    /// The folder of the user's configuration.
    const TString<wchar_t>& GetConfigurationPath() const { return m_strConfigurationPath; }
    /// The folder of the application's data.
    const TString<wchar_t>& GetApplicationDataPath() const { return m_strApplicationDataPath; }
    /// The folder of the executable.
    const TString<wchar_t>& GetApplicationPath() const { return m_strApplicationPath; }
    /// The resources folder; `SetApplicationRessourcesPath` changes it.
    const TString<wchar_t>& GetApplicationRessourcesPath() const { return m_strApplicationRessourcesPath; }
    /// The folder of the appearances, in the resources folder.
    const TString<wchar_t>& GetAppearancesPath() const { return m_strAppearancesPath; }
    /// The folder of the plug-ins, in the resources folder.
    const TString<wchar_t>& GetPluginsPath() const { return m_strPluginsPath; }
    /// The folder of the user's documents.
    const TString<wchar_t>& GetDocumentsPath() const { return m_strDocumentsPath; }
    /// The separator of the parts of a path, one character.
    const TString<wchar_t>& GetPathSeparator() const { return m_strPathSeparator; }
    /// What the host set; empty before.
    const TString<wchar_t>& GetMassStorageDataPath() const { return m_strMassStorageDataPath; }
    /// Application folder, application name and user, without separators and colons, in lower case.
    const TString<wchar_t>& GetUniqueInstanceName() const { return m_strUniqueInstanceName; }
    /// What the host set; empty before.
    const TString<wchar_t>& GetCdRomPath() const { return m_strCdRomPath; }

    /// Sets the path and creates the folder with its parents (permissions 0777 before the umask); a failure
    /// is ignored.
    void SetApplicationDataPath(const TString<wchar_t>& path);
    /// Sets the path and rebuilds the dependent one. Quirk: the appearances path stays as it is.
    void SetApplicationRessourcesPath(const TString<wchar_t>& path);
    /// Sets the path, and does nothing else.
    void SetMassStorageDataPath(const TString<wchar_t>& path);
    /// Sets the path, and does nothing else.
    void SetCdRomPath(const TString<wchar_t>& path);

    /// Makes the plug-ins path anew from the resources path.
    void RebuildDependentPathes();

    /// The platform's data folder, asked for at each call.
    TString<wchar_t> GetDataDir() const;
    /// The platform's local data folder of this user, asked for at each call.
    TString<wchar_t> GetUserLocalDataDir() const;
    /// The folder for temporary files. Quirk: always "/tmp", whatever the environment says.
    TString<wchar_t> GetTempDir() const;

    /// Appends `name` to `path` with one separator in between, unless `path` is empty or ends with one. Needs
    /// the instance. Quirk: a separator at the beginning of `name` is kept: "/a//b".
    static void AppendPath(TString<wchar_t>& path, const TString<wchar_t>& name);
    /// The same into `result`, which may be `base` or `name` itself.
    static void AppendPath(TString<wchar_t>& result, const TString<wchar_t>& base,
                           const TString<wchar_t>& name);

    /// Takes a path to pieces: volume (empty on this platform), folder, name, and extension without its dot.
    static void SplitPath(const TString<wchar_t>& fullPath, TString<wchar_t>& volume, TString<wchar_t>& path,
                          TString<wchar_t>& name, TString<wchar_t>& extension);

    /// True when a folder or a regular file lies at `path`.
    static bool Exists(const TString<wchar_t>& path);
    /// True when a regular file lies at `path`.
    static bool FileExists(const TString<wchar_t>& path);
    /// True when a folder lies at `path`.
    static bool DirExists(const TString<wchar_t>& path);

private:
    TString<wchar_t> m_strApplicationName;
    TString<wchar_t> m_strConfigurationPath;
    TString<wchar_t> m_strApplicationDataPath;
    TString<wchar_t> m_strApplicationPath;
    TString<wchar_t> m_strApplicationRessourcesPath;
    TString<wchar_t> m_strAppearancesPath;
    TString<wchar_t> m_strPluginsPath;
    TString<wchar_t> m_strDocumentsPath;
    TString<wchar_t> m_strPathSeparator;
    TString<wchar_t> m_strMassStorageDataPath;
    TString<wchar_t> m_strUniqueInstanceName;
    TString<wchar_t> m_strCdRomPath;
};

/// The path manager, shared for the length of a call; null outside the modules' life. @ingroup classic_app
inline smart_ptr<PathManager, smart_ptr_policy> InstalledPathManager()
{
    return PathManager::s_pInstance != nullptr ? *PathManager::s_pInstance
                                               : smart_ptr<PathManager, smart_ptr_policy>();
}

} // namespace Toolkit

#endif
