// SPDX-License-Identifier: MIT
#include "tests/faults/FailingMemory.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>

#include <execinfo.h>
#include <link.h>

namespace ToolkitTest
{

namespace
{

thread_local bool t_bArmed = false;
thread_local bool t_bSpared = false;
std::atomic<bool> s_bAllArmed{false};
std::atomic<bool> s_bOnwards{false};
std::atomic<bool> s_bFailed{false};
std::atomic<unsigned long> s_uFailing{0};
std::atomic<unsigned long> s_uCount{0};
std::atomic<long> s_iLive{0};

// Where a library's code lies.
struct Range
{
    const char* const name;
    std::uintptr_t begin;
    std::uintptr_t end;

    bool Holds(const void* address) const
    {
        const auto value = reinterpret_cast<std::uintptr_t>(address);
        return value >= begin && value < end;
    }
};

Range s_standardLibrary = {"/libstdc++.so", 0, 0};
Range s_wxWidgets[] = {{"/libwx_baseu-", 0, 0}, {"/libwx_baseu_net-", 0, 0}};

bool IsWxWidgets(const void* address)
{
    return std::any_of(std::begin(s_wxWidgets), std::end(s_wxWidgets),
                       [address](const Range& range) { return range.Holds(address); });
}

int FindRange(dl_phdr_info* info, std::size_t, void* data)
{
    Range& range = *static_cast<Range*>(data);
    if (std::strstr(info->dlpi_name, range.name) == nullptr)
        return 0;
    for (int i = 0; i < info->dlpi_phnum; ++i)
        if (info->dlpi_phdr[i].p_type == PT_LOAD && (info->dlpi_phdr[i].p_flags & PF_X) != 0)
        {
            range.begin = info->dlpi_addr + info->dlpi_phdr[i].p_vaddr;
            range.end = range.begin + info->dlpi_phdr[i].p_memsz;
        }
    return 1;
}

// True for memory that wxWidgets wants, itself or through a string of the standard library. `caller`
// is what called `operator new`.
bool IsForWxWidgets(const void* caller)
{
    if (!s_standardLibrary.Holds(caller))
        return IsWxWidgets(caller);
    void* frames[24];
    void** const end = frames + backtrace(frames, 24);
    const auto isStandard = [](const void* frame) { return s_standardLibrary.Holds(frame); };
    void** const asked = std::find_if_not(std::find_if(frames, end, isStandard), end, isStandard);
    return asked != end && IsWxWidgets(*asked);
}

bool Fails(const void* caller)
{
    if ((!t_bArmed && (!s_bAllArmed || t_bSpared)) || IsForWxWidgets(caller))
        return false;
    const unsigned long number = ++s_uCount;
    const bool fails = s_bOnwards ? number >= s_uFailing : number == s_uFailing;
    if (fails)
        s_bFailed = true;
    return fails;
}

void* Allocate(std::size_t size, const void* caller)
{
    void* const memory = Fails(caller) ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory != nullptr)
        ++s_iLive;
    return memory;
}

void* AllocateOrThrow(std::size_t size, const void* caller)
{
    void* const memory = Allocate(size, caller);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void Free(void* memory)
{
    if (memory != nullptr)
        --s_iLive;
    std::free(memory);
}

} // namespace

void FailingMemory::Set(unsigned long failing, Mode mode)
{
    if (s_standardLibrary.end == 0)
    {
        dl_iterate_phdr(&FindRange, &s_standardLibrary);
        for (Range& range : s_wxWidgets)
            dl_iterate_phdr(&FindRange, &range);
        // The first call loads what it needs.
        void* frame = nullptr;
        backtrace(&frame, 1);
    }
    s_uFailing = failing;
    s_bOnwards = mode == Mode::Onwards;
    s_uCount = 0;
    s_bFailed = false;
}

void FailingMemory::Arm()
{
    t_bArmed = true;
}

void FailingMemory::ArmOtherThreads()
{
    t_bSpared = true;
    s_bAllArmed = true;
}

void FailingMemory::ArmAllThreads()
{
    s_bAllArmed = true;
}

void FailingMemory::Disarm()
{
    t_bArmed = false;
    t_bSpared = false;
    s_bAllArmed = false;
}

bool FailingMemory::HasFailed()
{
    return s_bFailed;
}

long FailingMemory::GetLive()
{
    return s_iLive;
}

} // namespace ToolkitTest

[[gnu::noinline]] void* operator new(std::size_t size)
{
    return ToolkitTest::AllocateOrThrow(size, __builtin_return_address(0));
}

[[gnu::noinline]] void* operator new[](std::size_t size)
{
    return ToolkitTest::AllocateOrThrow(size, __builtin_return_address(0));
}

[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return ToolkitTest::Allocate(size, __builtin_return_address(0));
}

[[gnu::noinline]] void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return ToolkitTest::Allocate(size, __builtin_return_address(0));
}

[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    ToolkitTest::Free(memory);
}

[[gnu::noinline]] void operator delete[](void* memory) noexcept
{
    ToolkitTest::Free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    ToolkitTest::Free(memory);
}

[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept
{
    ToolkitTest::Free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    ToolkitTest::Free(memory);
}

[[gnu::noinline]] void operator delete[](void* memory, const std::nothrow_t&) noexcept
{
    ToolkitTest::Free(memory);
}
