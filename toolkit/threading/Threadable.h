// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_THREADING_THREADABLE_H
#define TOOLKIT_THREADING_THREADABLE_H

#include "toolkit/core/smart_ptr.h"
#include "toolkit/threading/IRunnable.h"
#include "toolkit/threading/Thread.h"

namespace Toolkit::Threading
{

/// A thread that runs one task. It shares the task, which is released when the object is destroyed; the
/// destructor waits for a task that was run and has not ended yet.
///
/// @code
/// Toolkit::Threading::Threadable thread(Toolkit::smart_ptr<Toolkit::Threading::IRunnable>(new Work));
/// if (thread.Run())
///     thread.Wait();
/// @endcode
class TOOLKIT_API Threadable : public Thread
{
public:
    /// Shares the task; null is one that does nothing.
    explicit Threadable(smart_ptr<IRunnable, smart_ptr_policy> task);
    ~Threadable() override;

    /// True when the thread was started; a thread is started once.
    bool Run();
    /// Blocks while the task runs, even after Kill; returns at once otherwise.
    ExitCode Wait();

protected:
    ExitCode Entry() override;
    /// What Entry does; a null task does nothing.
    ExitCode DoWork() override;

private:
    smart_ptr<IRunnable, smart_ptr_policy> m_task;
};

} // namespace Toolkit::Threading

#endif
