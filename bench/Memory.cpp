// SPDX-License-Identifier: MIT
#include "bench/Memory.h"

#include <algorithm>
#include <cstdlib>

#include <malloc.h>

extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);
extern "C" void* __libc_realloc(void* memory, std::size_t size);
extern "C" void __libc_free(void* memory);

namespace
{

thread_local std::size_t t_uAllocations = 0;
thread_local bool t_bWatching = false;
thread_local std::ptrdiff_t t_iHeld = 0;
thread_local std::ptrdiff_t t_iPeak = 0;

void Hold(void* memory)
{
    ++t_uAllocations;
    if (!t_bWatching)
        return;
    t_iHeld += static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
    t_iPeak = std::max(t_iPeak, t_iHeld);
}

void LetGo(void* memory)
{
    if (t_bWatching)
        t_iHeld -= static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
}

} // namespace

// In front of the C library's, so that every library's requests are counted.
extern "C" void* malloc(std::size_t size) noexcept
{
    void* const memory = __libc_malloc(size);
    Hold(memory);
    return memory;
}

extern "C" void* calloc(std::size_t count, std::size_t size) noexcept
{
    void* const memory = __libc_calloc(count, size);
    Hold(memory);
    return memory;
}

extern "C" void* realloc(void* memory, std::size_t size) noexcept
{
    LetGo(memory);
    void* const moved = __libc_realloc(memory, size);
    Hold(moved);
    return moved;
}

extern "C" void free(void* memory) noexcept
{
    LetGo(memory);
    __libc_free(memory);
}

namespace ToolkitBench
{

std::size_t Allocations()
{
    return t_uAllocations;
}

void Watch()
{
    t_iHeld = 0;
    t_iPeak = 0;
    t_bWatching = true;
}

std::size_t Peak()
{
    t_bWatching = false;
    return static_cast<std::size_t>(t_iPeak);
}

} // namespace ToolkitBench
