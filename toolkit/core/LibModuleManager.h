// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_LIBMODULEMANAGER_H
#define TOOLKIT_CORE_LIBMODULEMANAGER_H

#include <cstdint>
#include <list>
#include <typeinfo>

#include "toolkit/core/Export.h"
#include "toolkit/threading/Mutex.h"

namespace Toolkit
{

class LibModule;
class SharedLibrary;

/// The process-wide registry of modules: brings them up in the order of their registration and down in the
/// reverse one. DllToolkitLoad makes the one instance, DllToolkitUnload destroys it; the modules belong to
/// whoever registered them. Any thread may call; a recursive mutex is held while modules are called, so a
/// module may call back into the manager. Nothing is reported: an exception that a module throws passes to
/// the caller, with the mutex unlocked and the manager's state as it was at that point.
///
/// @code
/// static MailModule module;
/// DllToolkitLoad();
/// Toolkit::LibModuleManager::s_pInstance->Register(&module);
/// Toolkit::LibModuleManager::s_pInstance->Initialize(true);
/// Toolkit::LibModuleManager::s_pInstance->Release(true);
/// Toolkit::LibModuleManager::s_pInstance->Unregister(&module);
/// DllToolkitUnload();
/// @endcode
class TOOLKIT_API LibModuleManager
{
public:
    /// Null before the first DllToolkitLoad and after DllToolkitUnload.
    static LibModuleManager* s_pInstance;

    /// A registered module, not owned, and how often it is registered.
    struct LibModuleContainer
    {
        /// The module, which belongs to whoever registered it.
        LibModule* m_pModule;
        /// How often it is registered.
        std::int32_t m_iCount;
    };

    LibModuleManager();
    /// Forgets the modules that are still registered; none of them is released.
    ~LibModuleManager();

    LibModuleManager(const LibModuleManager&) = delete;
    LibModuleManager& operator=(const LibModuleManager&) = delete;

    /// Appends `module`, and initialises it at once if the manager is initialised. A module that is
    /// registered already is only counted. Null is ignored.
    void Register(LibModule* module);

    /// Takes back one registration. The last one releases the module, if the manager is initialised, and
    /// removes it; while `Release` walks the modules the removal waits for its end. A module that is not
    /// registered is ignored. An exception of the module leaves it registered.
    /// Quirk: a module registered again while its removal waits is removed all the same.
    void Unregister(LibModule* module);

    /// Starts wxWidgets if asked to, then initialises every module, those included that are registered
    /// meanwhile. Quirk: a second call initialises every module again.
    void Initialize(bool startWxWidgets);

    /// Releases every module; they stay registered. Then stops wxWidgets if asked to, unless no
    /// `Initialize` started it; on another thread than the one that started it, that is put off until a later
    /// start or stop on that one.
    /// Quirk: modules that were never initialised are released too.
    /// Quirk: after a module's exception the manager stays releasing: removals wait for the next `Release`.
    void Release(bool stopWxWidgets);

    /// True from the end of `Initialize` to the end of the next `Release`.
    bool IsInitialized() const;

private:
    struct Registered : LibModuleContainer
    {
        // Tells where its code is, also once that is unloaded.
        const std::type_info* m_pType;
    };
    using Modules = std::list<Registered>;
    class ModuleCall;
    class ReleaseWalk;

    friend class LibModule;
    friend class PluginsBase;

    // Takes back every registration of a module that is being destroyed.
    void Forget(const LibModule* module);

    // Takes back, in the reverse order, the modules whose code or data is that library's, which is about to
    // be unloaded. Those that are not released yet are released; what they throw is dropped.
    static void TakeBackModulesOf(const SharedLibrary& library);
    void TakeBack(const SharedLibrary& library);

    // Gives up a library, and then takes back the modules whose code went with it all the same: those of a
    // library that it brought along. They cannot be released any more.
    static void Unload(SharedLibrary library);
    void ForgetUnloaded();

    bool IsRegistered(const LibModule* module);
    static LibModule* Clear(LibModuleContainer& container);

    Modules::iterator Find(const LibModule* module);
    void ReleaseAndRemove(Modules::iterator position);
    void RemovePending();

    Modules m_modules;
    mutable Mutex m_mutex;
    bool m_bInitialized = false;
    bool m_bReleasing = false;
    std::list<Modules::iterator> m_pendingRemovals;
    // How many calls into modules are under way. Meanwhile no container is freed, as a walk may stand on it;
    // a removed one holds no module any more.
    unsigned int m_uCalls = 0;
};

} // namespace Toolkit

#endif
