// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "toolkit/core/smart_ptr.h"

namespace
{

// How many more allocations of this thread succeed; negative means all of them.
thread_local int t_iAllocationsLeft = -1;

struct Counted
{
    ~Counted() { ++s_iDestroyed; }
    static int s_iDestroyed;
};
int Counted::s_iDestroyed = 0;

using Pointer = Toolkit::smart_ptr<Counted>;

// Runs `work` with the given number of allocations; true when it ran out of memory.
template <class Work>
bool RunsOutOfMemory(int allocations, Work work)
{
    bool out = false;
    t_iAllocationsLeft = allocations;
    try
    {
        work();
    }
    catch (const std::bad_alloc&)
    {
        out = true;
    }
    t_iAllocationsLeft = -1;
    return out;
}

} // namespace

[[gnu::noinline]] void* operator new(std::size_t size)
{
    void* const memory = t_iAllocationsLeft == 0 ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
        throw std::bad_alloc();
    if (t_iAllocationsLeft > 0)
        --t_iAllocationsLeft;
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

TEST(smart_ptrOutOfMemory, ConstructorDestroysTheObjectGiven)
{
    Counted::s_iDestroyed = 0;
    Counted* const object = new Counted;
    EXPECT_TRUE(RunsOutOfMemory(0, [object] { const Pointer pointer(object); }));
    EXPECT_EQ(1, Counted::s_iDestroyed);
}

TEST(smart_ptrOutOfMemory, BlockIsTheOnlyAllocation)
{
    Counted* const object = new Counted;
    EXPECT_FALSE(RunsOutOfMemory(1,
                                 [object]
                                 {
                                     const Pointer pointer(object);
                                     const Pointer copy(pointer);
                                 }));
}

TEST(smart_ptrOutOfMemory, AssignmentDestroysTheObjectGivenAndKeepsTheOldOne)
{
    Counted* const kept = new Counted;
    Pointer pointer(kept);
    Counted* const object = new Counted;
    Counted::s_iDestroyed = 0;
    EXPECT_TRUE(RunsOutOfMemory(0, [&pointer, object] { pointer = object; }));
    EXPECT_EQ(1, Counted::s_iDestroyed);
    EXPECT_EQ(kept, pointer.get());
}

TEST(smart_ptrOutOfMemory, DefaultConstructorThrows)
{
    EXPECT_TRUE(RunsOutOfMemory(0, [] { const Pointer pointer; }));
}
