// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_TOOLKITMODULE_H
#define TOOLKIT_CORE_TOOLKITMODULE_H

#include "toolkit/core/LibModule.h"

namespace Toolkit
{

/// The library's own module: creates and destroys the process-wide singletons, each reached through the
/// `s_pInstance` of its class. DllToolkitLoad makes and registers the one instance, DllToolkitUnload deletes
/// it. The host's main thread brings it up and down; nothing may use a singleton at the same time.
class TOOLKIT_API ToolkitModule : public LibModule
{
public:
    ToolkitModule();
    ~ToolkitModule() override;

    /// Creates each singleton that does not exist yet.
    void Initialize() override;

    /// Puts a NullLogger in the place of the host's sink and destroys the singletons that exist.
    /// Quirk: the singletons are not destroyed in the reverse order of their creation.
    void Release() override;
};

} // namespace Toolkit

#endif
