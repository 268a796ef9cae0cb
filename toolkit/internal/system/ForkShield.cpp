// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/ForkShield.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <type_traits>
#include <vector>

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

namespace Toolkit
{

namespace
{

// Nothing destroys it, so that it outlives every owner of a descriptor.
std::mutex s_guard;
static_assert(std::is_trivially_destructible_v<std::mutex>);

// What a forked child must not have. It is never destroyed, and holds no memory while it is empty, so that a
// library that is unloaded leaves nothing behind.
std::vector<int>& Numbers()
{
    alignas(std::vector<int>) static unsigned char s_place[sizeof(std::vector<int>)];
    static auto* const s_pNumbers = new (s_place) std::vector<int>;
    return *s_pNumbers;
}

void BeforeFork()
{
    s_guard.lock();
}

void AfterForkInParent()
{
    s_guard.unlock();
}

// Closed first, so that there is a descriptor for the null device even where none is left.
void ReplaceByNull(int number)
{
    close(number);
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (null == -1 || null == number)
        return;
    dup3(null, number, O_CLOEXEC);
    close(null);
}

// The child has this one thread, and may call nothing but what a signal handler may.
void AfterForkInChild()
{
    for (const int number : Numbers())
        ReplaceByNull(number);
    s_guard.unlock();
}

} // namespace

ForkShield::Pause::Pause()
{
    static const int s_installed = pthread_atfork(BeforeFork, AfterForkInParent, AfterForkInChild);
    static_cast<void>(s_installed);
    s_guard.lock();
}

ForkShield::Pause::~Pause()
{
    s_guard.unlock();
}

ForkShield::~ForkShield()
{
    if (m_iDescriptor == -1)
        return;
    const Pause pause;
    Set(-1, pause);
}

void ForkShield::Set(int descriptor, const Pause&)
{
    std::vector<int>& numbers = Numbers();
    if (descriptor != -1)
        numbers.push_back(descriptor);
    if (m_iDescriptor != -1)
        numbers.erase(std::find(numbers.begin(), numbers.end(), m_iDescriptor));
    if (numbers.empty())
        std::vector<int>().swap(numbers);
    m_iDescriptor = descriptor;
}

} // namespace Toolkit
