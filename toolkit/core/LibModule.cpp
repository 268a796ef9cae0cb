// SPDX-License-Identifier: MIT
#include "toolkit/core/LibModule.h"

#include "toolkit/core/LibModuleManager.h"

namespace Toolkit
{

// A plug-in that is unloaded before the session ends takes its module along: the manager must not call it
// then.
LibModule::~LibModule()
{
    if (LibModuleManager::s_pInstance != nullptr)
        LibModuleManager::s_pInstance->Forget(this);
}

} // namespace Toolkit
