// SPDX-License-Identifier: MIT
#include "tests/faults/HeldLocks.h"

#include <pthread.h>

#include "tests/support/NextDefinition.h"

using ToolkitTest::NextDefinition;

namespace
{
thread_local int t_iHeld = 0;
}

int ToolkitTest::GetHeldLocks()
{
    return t_iHeld;
}

#if !defined(__SANITIZE_THREAD__)

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    static const auto s_next = NextDefinition<int(pthread_mutex_t*)>("pthread_mutex_lock");
    const int answer = s_next(mutex);
    if (answer == 0)
        ++t_iHeld;
    return answer;
}

extern "C" int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept
{
    static const auto s_next = NextDefinition<int(pthread_mutex_t*)>("pthread_mutex_trylock");
    const int answer = s_next(mutex);
    if (answer == 0)
        ++t_iHeld;
    return answer;
}

extern "C" int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept
{
    static const auto s_next = NextDefinition<int(pthread_mutex_t*)>("pthread_mutex_unlock");
    const int answer = s_next(mutex);
    if (answer == 0)
        --t_iHeld;
    return answer;
}

#endif
