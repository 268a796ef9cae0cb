// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_SINGLEAPPLICATIONINSTANCE_H
#define TOOLKIT_APP_SINGLEAPPLICATIONINSTANCE_H

#include "toolkit/core/Export.h"
#include "toolkit/core/smart_ptr.h"

namespace Toolkit
{

class InstanceLock;

/// Tells whether another process of this user runs the same installation of the application. The first one
/// holds a lock file in the home folder, named by the path manager's unique instance name, for as long as the
/// object lives; the lock of a process that has ended is taken over, also when another has its number by now.
/// The library's module owns the instance; a host may make further objects. Any thread may ask. Nothing fails
/// aloud: when there can be no lock (no home folder, a name that is too long, a file there that is no lock),
/// nobody else is running.
///
/// @code
/// const Toolkit::ToolkitSession session;
/// if ((*Toolkit::SingleApplicationInstance::s_pInstance)->IsAlreadyRunning())
///     return Fail("it runs already");
/// @endcode
class TOOLKIT_API SingleApplicationInstance
{
public:
    /// Null before the modules are initialised and after they are released.
    static smart_ptr<SingleApplicationInstance, smart_ptr_policy>* s_pInstance;

    /// Finds out who is first. Blocks while other processes of this user do the same; milliseconds as a rule,
    /// and five seconds at most, when one of them is stopped in the midst of it.
    SingleApplicationInstance();
    /// Gives the lock up, but not in a process that was forked meanwhile. Blocks likewise, for a quarter of a
    /// second at most.
    ~SingleApplicationInstance();

    SingleApplicationInstance(const SingleApplicationInstance&) = delete;
    SingleApplicationInstance& operator=(const SingleApplicationInstance&) = delete;

    /// True when another process is the first one; in a forked copy of the first process it is true, too.
    /// Quirk: the answer is that of the moment of construction, also when the other process has ended since.
    bool IsAlreadyRunning() const;

private:
    InstanceLock* m_pLock;
};

} // namespace Toolkit

#endif
