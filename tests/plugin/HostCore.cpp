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

// Stands for the library in which an application keeps its own core, when the program itself only loads it.

using Toolkit::LibModuleManager;

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
