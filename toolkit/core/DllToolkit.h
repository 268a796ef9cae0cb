// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_DLLTOOLKIT_H
#define TOOLKIT_CORE_DLLTOOLKIT_H

#include "toolkit/core/Export.h"

/// The entry points through which a host brings the library's own module up and down; a host that opens the
/// library at run time looks them up by these names. Both belong to the host's main thread.
extern "C"
{
    /// @ingroup classic_life
    /// Makes the module manager if there is none, and the library's module, and registers that one. It is
    /// initialised with the others, or at once if the manager is initialised already. Loading again before an
    /// unload only adds a registration of the same module.
    TOOLKIT_API void DllToolkitLoad();

    /// @ingroup classic_life
    /// Unregisters the library's module, which releases it if the manager is still initialised, then destroys
    /// the manager and the module. Without a load it does nothing.
    /// Quirk: one unload takes everything down, however often it was loaded; the modules of others are
    /// forgotten, not released.
    TOOLKIT_API void DllToolkitUnload();
}

#endif
