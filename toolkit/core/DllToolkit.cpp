// SPDX-License-Identifier: MIT
#include "toolkit/core/DllToolkit.h"

#include "toolkit/core/LibModuleManager.h"
#include "toolkit/core/ToolkitModule.h"

using Toolkit::LibModuleManager;
using Toolkit::ToolkitModule;

namespace
{
ToolkitModule* s_pModule = nullptr;
unsigned int s_uLoads = 0;
} // namespace

void DllToolkitLoad()
{
    if (s_pModule == nullptr)
        s_pModule = new ToolkitModule;
    if (LibModuleManager::s_pInstance == nullptr)
        LibModuleManager::s_pInstance = new LibModuleManager;
    ++s_uLoads;
    LibModuleManager::s_pInstance->Register(s_pModule);
}

void DllToolkitUnload()
{
    if (LibModuleManager::s_pInstance != nullptr)
        for (; s_uLoads > 0; --s_uLoads)
            LibModuleManager::s_pInstance->Unregister(s_pModule);
    s_uLoads = 0;
    delete LibModuleManager::s_pInstance;
    LibModuleManager::s_pInstance = nullptr;
    delete s_pModule;
    s_pModule = nullptr;
}
