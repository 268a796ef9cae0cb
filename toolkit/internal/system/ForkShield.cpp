// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/ForkShield.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

namespace Toolkit
{

namespace
{

// What a forked child must not have. Both outlive every owner of a descriptor.
std::mutex& Guard()
{
    static auto& s_guard = *new std::mutex;
    return s_guard;
}

std::vector<int>& Numbers()
{
    static auto& s_numbers = *new std::vector<int>;
    return s_numbers;
}

void BeforeFork()
{
    Guard().lock();
}

void AfterForkInParent()
{
    Guard().unlock();
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
    Guard().unlock();
}

} // namespace

ForkShield::Pause::Pause()
{
    static const int s_installed = pthread_atfork(BeforeFork, AfterForkInParent, AfterForkInChild);
    static_cast<void>(s_installed);
    Guard().lock();
}

ForkShield::Pause::~Pause()
{
    Guard().unlock();
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
    m_iDescriptor = descriptor;
}

} // namespace Toolkit
