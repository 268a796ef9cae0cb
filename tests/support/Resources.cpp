// SPDX-License-Identifier: MIT
#include "tests/support/Resources.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TOOLKIT_TEST_SANITIZER_HEAP
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define TOOLKIT_TEST_SANITIZER_HEAP
#endif
#if defined(TOOLKIT_TEST_SANITIZER_HEAP)
#include <atomic>

extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, std::size_t),
                                                         void (*onFree)(const volatile void*));
extern "C" std::size_t __sanitizer_get_allocated_size(const volatile void* memory);
#endif

namespace ToolkitTest
{

#if defined(TOOLKIT_TEST_SANITIZER_HEAP)

namespace
{

// A sanitizer's heap keeps freed memory for a while, so the blocks that are not freed yet are counted. Left
// out are the C library's tables of exit functions, which the sanitizer's own entries keep from being used
// again.
std::atomic<long long> s_lBlocks{0};

const std::size_t s_uExitTable = 1040;

const bool s_bCounting = __sanitizer_install_malloc_and_free_hooks(
                             [](const volatile void*, std::size_t size)
                             {
                                 if (size != s_uExitTable)
                                     ++s_lBlocks;
                             },
                             [](const volatile void* memory)
                             {
                                 if (__sanitizer_get_allocated_size(memory) != s_uExitTable)
                                     --s_lBlocks;
                             }) != 0;

} // namespace

long long HeapInUse()
{
    EXPECT_TRUE(s_bCounting);
    return s_lBlocks;
}

bool HasSanitizersHeap()
{
    return true;
}

#else

long long HeapInUse()
{
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<long long>(heap.uordblks + heap.hblkhd);
}

bool HasSanitizersHeap()
{
    return false;
}

#endif

std::size_t ResidentBytes()
{
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

long OpenDescriptors()
{
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return std::distance(begin(descriptors), end(descriptors));
}

int DescriptorOf(const std::string& path)
{
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
    {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry.path(), gone) == path)
            return std::stoi(entry.path().filename());
    }
    return -1;
}

} // namespace ToolkitTest
