// SPDX-License-Identifier: MIT
#include "toolkit/core/LibModuleManager.h"

#include <algorithm>
#include <mutex>
#include <typeinfo>
#include <utility>

#include "toolkit/core/LibModule.h"
#include "toolkit/internal/system/SharedLibrary.h"
#include "toolkit/internal/wx/WxLibrary.h"
#include "toolkit/threading/MutexLock.h"

namespace Toolkit
{

namespace
{

// How often wxWidgets was started here and not stopped again. It outlives the manager as the started
// wxWidgets does; the mutex of the one manager guards it.
unsigned int s_uWxStarts = 0;

// Where `Release` stands among the modules; null where it does not walk over them. The same mutex guards it.
const LibModuleManager::LibModuleContainer* s_pWalked = nullptr;

// Held where the modules of a list change, within the mutex of their manager, so that `IsRegistered` needs
// that mutex not. Nothing is called meanwhile.
std::mutex s_listMutex;

bool IsOf(const LibModule& module, const SharedLibrary& library)
{
    return library.Contains(&module) || library.Contains(&typeid(module));
}

void StartWx()
{
    if (WxLibrary::Hold())
        ++s_uWxStarts;
}

void StopWx()
{
    if (s_uWxStarts == 0)
        return;
    --s_uWxStarts;
    WxLibrary::Stop();
}

} // namespace

LibModuleManager* LibModuleManager::s_pInstance = nullptr;

// A call into modules; the end of the outermost one frees the containers that were removed meanwhile.
// `EventNotifier`, which owns its listeners and must destroy a removed one at once, instead moves its walks
// past it.
class LibModuleManager::ModuleCall
{
public:
    explicit ModuleCall(LibModuleManager& manager) : m_manager(manager) { ++m_manager.m_uCalls; }
    ~ModuleCall()
    {
        const std::lock_guard<std::mutex> list(s_listMutex);
        if (--m_manager.m_uCalls == 0)
            m_manager.m_modules.remove_if([](const LibModuleContainer& container)
                                          { return container.m_pModule == nullptr; });
    }

    ModuleCall(const ModuleCall&) = delete;
    ModuleCall& operator=(const ModuleCall&) = delete;

private:
    LibModuleManager& m_manager;
};

// A walk of `Release`, perhaps within another one.
class LibModuleManager::ReleaseWalk
{
public:
    ReleaseWalk() = default;
    ~ReleaseWalk() { s_pWalked = m_pBefore; }

    ReleaseWalk(const ReleaseWalk&) = delete;
    ReleaseWalk& operator=(const ReleaseWalk&) = delete;

    void StandOn(const LibModuleContainer& container) { s_pWalked = &container; }

private:
    const LibModuleContainer* const m_pBefore = s_pWalked;
};

LibModuleManager::LibModuleManager() = default;

LibModuleManager::~LibModuleManager() = default;

void LibModuleManager::Register(LibModule* module)
{
    if (module == nullptr)
        return;
    const MutexLock lock(m_mutex);
    const Modules::iterator found = Find(module);
    if (found != m_modules.end())
    {
        ++found->m_iCount;
        return;
    }
    {
        const std::lock_guard<std::mutex> list(s_listMutex);
        m_modules.push_back({{module, 1}, &typeid(*module)});
    }
    if (m_bInitialized)
    {
        const ModuleCall call(*this);
        module->Initialize();
    }
}

void LibModuleManager::Unregister(LibModule* module)
{
    if (module == nullptr)
        return;
    const MutexLock lock(m_mutex);
    const Modules::iterator found = Find(module);
    // Without a count left its removal is already under way.
    if (found == m_modules.end() || found->m_iCount < 1 || --found->m_iCount >= 1)
        return;
    if (m_bReleasing)
        m_pendingRemovals.push_back(found);
    else
        ReleaseAndRemove(found);
}

void LibModuleManager::Initialize(bool startWxWidgets)
{
    const MutexLock lock(m_mutex);
    if (startWxWidgets)
        StartWx();
    {
        const ModuleCall call(*this);
        for (const LibModuleContainer& container : m_modules)
            if (container.m_pModule != nullptr)
                container.m_pModule->Initialize();
    }
    m_bInitialized = true;
}

void LibModuleManager::Release(bool stopWxWidgets)
{
    const MutexLock lock(m_mutex);
    m_bReleasing = true;
    {
        const ModuleCall call(*this);
        ReleaseWalk walk;
        for (Modules::iterator position = m_modules.end(); position != m_modules.begin();)
        {
            walk.StandOn(*--position);
            if (position->m_pModule != nullptr)
                position->m_pModule->Release();
        }
        m_bReleasing = false;
        RemovePending();
    }
    if (stopWxWidgets)
        StopWx();
    m_bInitialized = false;
}

bool LibModuleManager::IsInitialized() const
{
    const MutexLock lock(m_mutex);
    return m_bInitialized;
}

// One that is not registered must not wait for the manager: its destructor may run within the system's
// loader, for which a module waits that the manager calls.
void LibModuleManager::Forget(const LibModule* module)
{
    if (!IsRegistered(module))
        return;
    const MutexLock lock(m_mutex);
    const Modules::iterator found = Find(module);
    if (found == m_modules.end())
        return;
    const ModuleCall call(*this);
    m_pendingRemovals.remove(found);
    Clear(*found);
}

bool LibModuleManager::IsRegistered(const LibModule* module)
{
    const std::lock_guard<std::mutex> list(s_listMutex);
    return Find(module) != m_modules.end();
}

void LibModuleManager::TakeBackModulesOf(const SharedLibrary& library)
{
    if (s_pInstance != nullptr)
        s_pInstance->TakeBack(library);
}

void LibModuleManager::Unload(SharedLibrary library)
{
    {
        const SharedLibrary unloaded(std::move(library));
    }
    if (s_pInstance != nullptr)
        s_pInstance->ForgetUnloaded();
}

void LibModuleManager::ForgetUnloaded()
{
    const MutexLock lock(m_mutex);
    const ModuleCall call(*this);
    for (Modules::iterator position = m_modules.begin(); position != m_modules.end(); ++position)
        if (position->m_pModule != nullptr && !SharedLibrary::IsLoaded(position->m_pType))
        {
            m_pendingRemovals.remove(position);
            Clear(*position);
        }
}

void LibModuleManager::TakeBack(const SharedLibrary& library)
{
    const MutexLock lock(m_mutex);
    const ModuleCall call(*this);
    // A walk of `Release` has been at all that stand after it, and is at the one that it stands on.
    bool released = s_pWalked != nullptr;
    for (Modules::iterator position = m_modules.end(); position != m_modules.begin();)
    {
        --position;
        const bool isReleased = released;
        released = released && &*position != s_pWalked;
        if (position->m_pModule == nullptr || !IsOf(*position->m_pModule, library))
            continue;
        m_pendingRemovals.remove(position);
        LibModule* const module = Clear(*position);
        if (m_bInitialized && !isReleased)
            try
            {
                module->Release();
            }
            catch (...)
            {
                // A module that cannot be released is unloaded all the same.
            }
    }
}

LibModuleManager::Modules::iterator LibModuleManager::Find(const LibModule* module)
{
    return std::find_if(m_modules.begin(), m_modules.end(),
                        [module](const LibModuleContainer& container)
                        { return container.m_pModule == module; });
}

void LibModuleManager::ReleaseAndRemove(Modules::iterator position)
{
    const ModuleCall call(*this);
    if (m_bInitialized)
        try
        {
            position->m_pModule->Release();
        }
        catch (...)
        {
            position->m_iCount = 1;
            throw;
        }
    m_pendingRemovals.remove(position);
    Clear(*position);
}

void LibModuleManager::RemovePending()
{
    for (const Modules::iterator position : m_pendingRemovals)
        Clear(*position);
    m_pendingRemovals.clear();
}

LibModule* LibModuleManager::Clear(LibModuleContainer& container)
{
    const std::lock_guard<std::mutex> list(s_listMutex);
    return std::exchange(container.m_pModule, nullptr);
}

} // namespace Toolkit
