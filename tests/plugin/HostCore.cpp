// SPDX-License-Identifier: MIT
#include "tests/plugin/Plugin.h"

#include "toolkit/app/PathManager.h"
#include "toolkit/app/RestartManagment.h"
#include "toolkit/app/SingleApplicationInstance.h"
#include "toolkit/app/SystemInfo.h"
#include "toolkit/app/Version.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/datetime/DateTime.h"
#include "toolkit/log/ILogger.h"
#include "toolkit/log/Log.h"
#include "toolkit/log/RunLog.h"
#include "toolkit/regExp/Pattern.h"
#include "toolkit/regExp/RegExp.h"

// Stands for the library in which an application keeps its own core, when the program itself only loads it.

using Toolkit::LibModuleManager;
using Toolkit::Log;
using Toolkit::LogSeverity;
using Toolkit::RunLog;
using Toolkit::RunLogOptions;

extern "C"
{
    TOOLKIT_API void HostInitialize(bool baseLibrary)
    {
        LibModuleManager::s_pInstance->Initialize(baseLibrary);
    }

    TOOLKIT_API void HostRelease(bool baseLibrary)
    {
        LibModuleManager::s_pInstance->Release(baseLibrary);
    }

    TOOLKIT_API bool HostShowsDate()
    {
        Toolkit::TString<wchar_t> text;
        Toolkit::DateTime(2009, 3, 7, 14, 5, 9).GetString(text);
        return text == L"07.03.09 14:05";
    }

    TOOLKIT_API bool HostFindsPattern()
    {
        const auto pattern = Toolkit::Pattern::Compile("[a-z]+(?==)");
        const Toolkit::RegExp regExp("[a-z]+(?==)", Toolkit::RegExpOptions::Default);
        return pattern && pattern->Find("the key=42")[0] == "key" &&
               regExp.Replace("-", "the key=42", 0) == "the -=42";
    }

    TOOLKIT_API bool HostInstallLog(const char* folder, bool background)
    {
        RunLogOptions options("host");
        options.Folder(folder).Keep(0);
        if (background)
            options.Background();
        const Toolkit::Result<std::shared_ptr<RunLog>> log = RunLog::Open(options);
        if (log)
            Log::Install({*log, Log::Console(LogSeverity::Error)});
        return log.has_value();
    }

    TOOLKIT_API void HostLog(const char* message)
    {
        TOOLKIT_LOG(LogSeverity::Info) << message;
    }

    TOOLKIT_API bool HostHasManager()
    {
        return LibModuleManager::s_pInstance != nullptr;
    }

    TOOLKIT_API bool HostHasSingletons()
    {
        return Toolkit::ILogger::s_pInstance != nullptr || Toolkit::SystemInfo::s_pInstance != nullptr ||
               Toolkit::Version::s_pInstance != nullptr || Toolkit::PathManager::s_pInstance != nullptr ||
               Toolkit::RestartManagment::s_pInstance != nullptr ||
               Toolkit::SingleApplicationInstance::s_pInstance != nullptr;
    }
}
