// SPDX-License-Identifier: MIT
#include "toolkit/core/ToolkitSession.h"

#include "toolkit/core/DllToolkit.h"
#include "toolkit/core/LibModuleManager.h"

namespace Toolkit
{

namespace
{

template <class Step>
void Quietly(Step step)
{
    try
    {
        step();
    }
    catch (...)
    {
        // What a module throws at the end of a session reaches nobody.
    }
}

} // namespace

ToolkitSession::ToolkitSession()
{
    try
    {
        if (LibModuleManager::s_pInstance == nullptr)
        {
            m_bLoaded = true;
            DllToolkitLoad();
        }
        if (!LibModuleManager::s_pInstance->IsInitialized())
        {
            m_bInitialized = true;
            LibModuleManager::s_pInstance->Initialize(true);
        }
    }
    catch (...)
    {
        End();
        throw;
    }
}

ToolkitSession::~ToolkitSession()
{
    End();
}

void ToolkitSession::End()
{
    if (m_bInitialized && LibModuleManager::s_pInstance != nullptr)
        Quietly([] { LibModuleManager::s_pInstance->Release(true); });
    if (m_bLoaded)
        Quietly([] { DllToolkitUnload(); });
}

} // namespace Toolkit
