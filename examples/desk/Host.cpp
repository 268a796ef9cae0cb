// SPDX-License-Identifier: MIT
#include "Host.h"

#include <algorithm>

#include "Text.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/files/Directory.h"
#include "toolkit/log/FileLogger.h"
#include "toolkit/log/ILogger.h"
#include "toolkit/log/LogSeverity.h"
#include "toolkit/log/LogStatement.h"
#include "toolkit/threading/MutexLock.h"

namespace Desk
{

namespace
{

const unsigned int s_uLogSize = 1024 * 1024;

using PluginEntry = Plugin* (*)();

} // namespace

Host::Host() : m_session(new Toolkit::ToolkitSession)
{
    Toolkit::smart_ptr<Toolkit::PathManager> paths = *Toolkit::PathManager::s_pInstance;
    paths->SetApplicationRessourcesPath(
        Join(paths->GetApplicationPath(), Toolkit::PathManager::c_strRessourcesFolderName));
    m_strOutputFolder = Join(paths->GetApplicationDataPath(), L"output");
    Toolkit::Directory::Create(m_strOutputFolder);
}

Host::~Host()
{
    ShutDown();
}

void Host::OpenLog(const Text& logName)
{
    Toolkit::smart_ptr<Toolkit::PathManager> paths = *Toolkit::PathManager::s_pInstance;
    m_strLogPath = Join(paths->GetTempDir(), logName + Toolkit::FileLogger::c_strLogExtension);
    Toolkit::ILogger::SetLogger(new Toolkit::FileLogger(Toolkit::LogSeverity::Info, logName, s_uLogSize));
    m_forwarder = std::make_unique<Toolkit::WxLogForwarder>();
    TOOLKIT_LOG(Toolkit::LogSeverity::Info) << L"desk: started as " << paths->GetUniqueInstanceName();
}

void Host::LoadPlugins()
{
    const Text folder = (*Toolkit::PathManager::s_pInstance)->GetPluginsPath();
    std::vector<Text> names;
    Toolkit::Directory(folder).GetFiles(L"*.so", names);
    std::sort(names.begin(), names.end());
    for (const Text& name : names)
    {
        auto library = std::make_unique<Toolkit::DynamicLibrary>(Join(folder, name));
        const auto entry = reinterpret_cast<PluginEntry>(library->GetSymbol(L"DeskPluginLoad"));
        if (entry == nullptr)
        {
            TOOLKIT_LOG(Toolkit::LogSeverity::Warning) << L"desk: no plug-in in " << name;
            continue;
        }
        TOOLKIT_LOG(Toolkit::LogSeverity::Info) << L"desk: loading " << name;
        m_plugins.push_back(entry());
        m_libraries.push_back(std::move(library));
    }
}

Plugin* Host::FindPlugin(const Text& name) const
{
    const auto found = std::find_if(m_plugins.begin(), m_plugins.end(),
                                    [&name](const Plugin* plugin) { return plugin->GetName() == name; });
    return found != m_plugins.end() ? *found : nullptr;
}

void Host::Configure(const Toolkit::IniFile& settings, std::vector<Text>& problems)
{
    for (Plugin* plugin : m_plugins)
        plugin->Configure(settings, problems);
}

bool Host::Read(const Text& path, Document& document)
{
    const Toolkit::MutexLock lock(m_pluginMutex);
    const auto reads = [&path, &document](Plugin* plugin) { return plugin->Read(path, document); };
    if (std::none_of(m_plugins.begin(), m_plugins.end(), reads))
        return false;
    for (const Plugin* plugin : m_plugins)
        document.m_uHidden += plugin->Hide(document.m_strText);
    return true;
}

void Host::ShutDown()
{
    if (m_session == nullptr)
        return;
    TOOLKIT_LOG(Toolkit::LogSeverity::Info) << L"desk: shutting down";
    m_forwarder.reset();
    m_session.reset();
    m_plugins.clear();
    m_libraries.clear();
}

} // namespace Desk
