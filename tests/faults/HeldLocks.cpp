// SPDX-License-Identifier: MIT
#include "tests/faults/HeldLocks.h"

#include <dlfcn.h>
#include <pthread.h>

namespace
{
thread_local int t_iHeld = 0;
}

int ToolkitTest::GetHeldLocks()
{
    return t_iHeld;
}

#if !defined(__SANITIZE_THREAD__)

namespace
{

using MutexFunction = int (*)(pthread_mutex_t*);

MutexFunction Next(const char* name)
{
    return reinterpret_cast<MutexFunction>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    static const MutexFunction s_next = Next("pthread_mutex_lock");
    const int answer = s_next(mutex);
    if (answer == 0)
        ++t_iHeld;
    return answer;
}

extern "C" int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept
{
    static const MutexFunction s_next = Next("pthread_mutex_trylock");
    const int answer = s_next(mutex);
    if (answer == 0)
        ++t_iHeld;
    return answer;
}

extern "C" int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept
{
    static const MutexFunction s_next = Next("pthread_mutex_unlock");
    const int answer = s_next(mutex);
    if (answer == 0)
        --t_iHeld;
    return answer;
}

#endif
