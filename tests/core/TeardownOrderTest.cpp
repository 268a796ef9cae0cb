// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "toolkit/app/PathManager.h"
#include "toolkit/app/RestartManagment.h"
#include "toolkit/app/SingleApplicationInstance.h"
#include "toolkit/app/SystemInfo.h"
#include "toolkit/app/Version.h"
#include "toolkit/core/ToolkitModule.h"
#include "toolkit/log/ILogger.h"

using Toolkit::ILogger;
using Toolkit::PathManager;
using Toolkit::RestartManagment;
using Toolkit::SingleApplicationInstance;
using Toolkit::SystemInfo;
using Toolkit::ToolkitModule;
using Toolkit::Version;

// The singletons' destructors cannot be replaced, so this program sees their memory go: it has an operator
// delete of its own, which the library uses like everyone else.

namespace
{

const std::size_t s_uLimit = 16;

// The memory that is watched for, and the order in which it went, each once, as it may be used again. Plain
// arrays, as nothing here may allocate.
const void* s_watched[s_uLimit];
const void* s_gone[s_uLimit];
std::size_t s_uWatched = 0;
std::size_t s_uGone = 0;

void Watch(const void* memory)
{
    s_watched[s_uWatched++] = memory;
}

void NoteGone(const void* memory)
{
    for (std::size_t i = 0; i < s_uWatched; ++i)
        if (s_watched[i] == memory)
        {
            s_watched[i] = nullptr;
            s_gone[s_uGone++] = memory;
        }
}

void Free(void* memory)
{
    if (memory != nullptr)
        NoteGone(memory);
    std::free(memory);
}

} // namespace

void* operator new(std::size_t size)
{
    if (void* const memory = std::malloc(size != 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    Free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    Free(memory);
}

TEST(TeardownOrder, SingletonsAreDestroyedInTheirOwnOrderEachWithItsHolder)
{
    ToolkitModule module;
    module.Initialize();
    const std::vector<const void*> expected = {ILogger::s_pInstance->get(),
                                               SingleApplicationInstance::s_pInstance->get(),
                                               SingleApplicationInstance::s_pInstance,
                                               PathManager::s_pInstance->get(),
                                               PathManager::s_pInstance,
                                               Version::s_pInstance->get(),
                                               Version::s_pInstance,
                                               SystemInfo::s_pInstance->get(),
                                               SystemInfo::s_pInstance,
                                               RestartManagment::s_pInstance->get(),
                                               RestartManagment::s_pInstance,
                                               ILogger::s_pInstance};
    for (const void* memory : expected)
        Watch(memory);
    module.Release();
    EXPECT_EQ(expected, std::vector<const void*>(s_gone, s_gone + s_uGone));
}
