// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/ThreadNumber.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Toolkit
{

namespace
{

thread_local std::uint64_t s_uNumber = 0;

// A forked process has one thread, of another number.
const int s_iForgotten = pthread_atfork(nullptr, nullptr, [] { s_uNumber = 0; });

} // namespace

std::uint64_t ThreadNumber()
{
    static_cast<void>(s_iForgotten);
    if (s_uNumber == 0)
        s_uNumber = static_cast<std::uint64_t>(syscall(SYS_gettid));
    return s_uNumber;
}

} // namespace Toolkit
