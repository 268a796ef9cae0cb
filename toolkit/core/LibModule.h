// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_LIBMODULE_H
#define TOOLKIT_CORE_LIBMODULE_H

#include "toolkit/core/Export.h"

namespace Toolkit
{

/// A part of the library, or of a plug-in library, that is brought up and down with all the others: it is
/// registered with LibModuleManager. Its creator owns it and unregisters it before it destroys it; a module
/// that is destroyed while it is registered is removed then, and not released. Both operations are called
/// with the manager locked, on the thread that calls the manager; an exception passes to that caller.
///
/// @code
/// struct MailModule : Toolkit::LibModule
/// {
///     void Initialize() override { Show("up"); }
///     void Release() override { Show("down"); }
/// };
/// @endcode
class TOOLKIT_API LibModule
{
public:
    virtual ~LibModule();

    /// Brings the module up. An exception passes to whoever initialises or registers it.
    virtual void Initialize() = 0;
    /// Brings the module down; it is not destroyed here, and may be initialised again.
    virtual void Release() = 0;
};

} // namespace Toolkit

#endif
