// SPDX-License-Identifier: MIT
#include "tour/Tour.h"

#include <algorithm>

#include "toolkit/app/GetTickCount.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/app/RestartManagment.h"
#include "toolkit/app/SingleApplicationInstance.h"
#include "toolkit/app/SystemInfo.h"
#include "toolkit/app/Version.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/log/ILogger.h"
#include "toolkit/log/Log.h"
#include "tour/TourText.h"

namespace Desk
{

using namespace Toolkit;

namespace
{

std::string PlatformName()
{
    switch (SystemInfo::GetPlatform())
    {
    case SystemInfo::PlatformUnix:
        return "Unix";
    case SystemInfo::PlatformMac:
        return "Mac";
    case SystemInfo::PlatformWindows:
        return "Windows";
    default:
        return "unknown";
    }
}

} // namespace

void Tour::OpenSession()
{
    Begin("The host installs a log for this run, and opens a ToolkitSession for the classic classes");
    const Result<std::shared_ptr<RunLog>> log = RunLog::Open(
        RunLogOptions("desk").Folder(m_folders.State() / "logs").Threshold(LogSeverity::Info).Keep(5));
    m_log = log.value_or(nullptr);
    Log::Install({m_log});
    m_session = std::make_unique<ToolkitSession>();
    (*PathManager::s_pInstance)
        ->SetApplicationRessourcesPath((*PathManager::s_pInstance)->GetApplicationPath());
    std::filesystem::create_directories(m_output);
    Say("the library registered its module, wxWidgets was started, the module made its singletons:");
    Say("logger, system information, version, path manager, restart, single instance");
    Say("version of the library: " + Narrow((*Version::s_pInstance)->ToString()));
    Say(log ? "log file: " + m_log->File().string() : log.error().Message());
    End(log && LibModuleManager::s_pInstance != nullptr && ILogger::s_pInstance != nullptr &&
        SystemInfo::s_pInstance != nullptr && Version::s_pInstance != nullptr &&
        PathManager::s_pInstance != nullptr && RestartManagment::s_pInstance != nullptr &&
        SingleApplicationInstance::s_pInstance != nullptr);
}

void Tour::FindFolders()
{
    Begin("Folders and the classic path manager know where everything lies");
    const smart_ptr<PathManager> paths = *PathManager::s_pInstance;
    Say("application:      " + Folders::Executable().string());
    Say("settings:         " + m_folders.Config().string());
    Say("logs:             " + m_folders.State().string());
    Say("cache:            " + m_folders.Cache().string());
    Say("plug-ins:         " + Narrow(paths->GetPluginsPath()));
    Say("application data: " + Narrow(paths->GetApplicationDataPath()));
    Say("documents:        " + Narrow(paths->GetDocumentsPath()));
    Say("unique instance:  " + Narrow(paths->GetUniqueInstanceName()));
    End(PathManager::DirExists(paths->GetApplicationDataPath()) &&
        PathManager::DirExists(paths->GetPluginsPath()) &&
        !paths->GetUniqueInstanceName().Contains(paths->GetPathSeparator()) &&
        Narrow(paths->GetApplicationName()) == Folders::Executable().filename());
}

void Tour::AskSystem()
{
    Begin("The system around it");
    const bool littleEndian = SystemInfo::GetEndian() == SystemInfo::EndianLittle;
    Say(PlatformName() + ", version " + std::to_string(SystemInfo::GetOSMajorVersion()) + '.' +
        std::to_string(SystemInfo::GetOSMinorVersion()) + ", " +
        (littleEndian ? "little-endian" : "not little-endian"));
    Say("tick count: " + std::to_string(GetTickCount()) + " ms");
    End(SystemInfo::GetPlatform() != SystemInfo::PlatformUnknown &&
        SystemInfo::GetEndian() != SystemInfo::EndianUnknown);
}

void Tour::ShutDown()
{
    Begin("Shutdown: plug-ins are given up in reverse order, modules are released, wxWidgets stops");
    m_host.reset();
    TOOLKIT_LOG(LogSeverity::Info) << "desk: shutting down";
    m_session.reset();
    const std::vector<std::string> lines = LinesOf(m_log->File());
    const std::size_t module = FindMessage(lines, "redact: module released");
    const std::size_t second = FindMessage(lines, "redact: released");
    const std::size_t first = FindMessage(lines, "mailtext: released");
    Say("redact's module, redact, mailtext, toolkit");
    End(LibModuleManager::s_pInstance == nullptr && ILogger::s_pInstance == nullptr && module < second &&
        second < first && first < lines.size());
}

void Tour::ShowLog()
{
    Begin("One log holds the lines of the host, its plug-ins and the library: time, severity, thread, "
          "function, message");
    const std::vector<std::string> lines = LinesOf(m_log->File());
    Say(m_log->File().string() + ", " + std::to_string(lines.size()) + " lines, the last ones:");
    const std::size_t shown = m_preferences->Current().Get("tour", "loglines", std::size_t{8});
    for (std::size_t i = lines.size() - std::min(lines.size(), shown); i < lines.size(); ++i)
        Say("  " + lines[i]);
    End(FindMessage(lines, "desk: shutting down") < lines.size() &&
        FindMessage(lines, "mailtext: ready") < FindMessage(lines, "redact: ready") &&
        FindMessage(lines, "redact: ready") < lines.size());
}

} // namespace Desk
