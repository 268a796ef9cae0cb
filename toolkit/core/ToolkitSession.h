// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_TOOLKITSESSION_H
#define TOOLKIT_CORE_TOOLKITSESSION_H

#include "toolkit/core/Export.h"

namespace Toolkit
{

/// The library, up and running for a scope: load, `Initialize(true)` ... `Release(true)`, unload. It belongs
/// to the host's main thread. A session does only what is not done yet and takes back only what it did, so
/// one inside another, or inside a host that loaded or initialised the library itself, leaves the outer state
/// alone. When the constructor throws, because a module did, all is taken back. An exception of a module at
/// the end is swallowed; the modules that it kept from being released stay as they are.
///
/// @code
/// const Toolkit::ToolkitSession session;
/// const Toolkit::smart_ptr<Toolkit::PathManager> paths = Toolkit::InstalledPathManager();
/// Show(Toolkit::UTF8::ToUTF8(paths->GetApplicationName()));
/// @endcode
class TOOLKIT_API ToolkitSession
{
public:
    ToolkitSession();
    ~ToolkitSession();

    ToolkitSession(const ToolkitSession&) = delete;
    ToolkitSession& operator=(const ToolkitSession&) = delete;

private:
    void End();

    bool m_bLoaded = false;
    bool m_bInitialized = false;
};

} // namespace Toolkit

#endif
