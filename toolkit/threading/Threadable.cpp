// SPDX-License-Identifier: MIT
#include "toolkit/threading/Threadable.h"

namespace Toolkit::Threading
{

Threadable::Threadable(smart_ptr<IRunnable, smart_ptr_policy> task) : m_task(task) {}

Threadable::~Threadable()
{
    StopAndWait();
}

bool Threadable::Run()
{
    return Thread::Run();
}

wxThread::ExitCode Threadable::Wait()
{
    const bool running = IsRunning();
    const ExitCode code = Thread::Wait();
    return running ? code : nullptr;
}

wxThread::ExitCode Threadable::Entry()
{
    return Thread::Entry();
}

wxThread::ExitCode Threadable::DoWork()
{
    if (!m_task.IsNull())
        m_task->Run();
    return nullptr;
}

} // namespace Toolkit::Threading
