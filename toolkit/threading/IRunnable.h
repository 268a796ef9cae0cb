// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_THREADING_IRUNNABLE_H
#define TOOLKIT_THREADING_IRUNNABLE_H

#include "toolkit/core/Export.h"

/// Work that a thread of its own runs, whatever it derives from.
namespace Toolkit::Threading
{

/// A task that a Threadable runs on its thread. It is shared between the thread and whoever made it.
///
/// @code
/// struct Work : Toolkit::Threading::IRunnable
/// {
///     void Run() override { LookForWork(); }
/// };
/// @endcode
class TOOLKIT_API IRunnable
{
public:
    /// The task; called once, on the worker thread.
    virtual void Run() = 0;
    virtual ~IRunnable() = default;
};

} // namespace Toolkit::Threading

#endif
