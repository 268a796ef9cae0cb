// SPDX-License-Identifier: MIT
#include "tests/support/RunOnStack.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include "tests/support/Sanitized.h"

namespace ToolkitTest
{

void RunOnStack(std::size_t size, const std::function<void()>& work)
{
    // A sanitizer keeps its account of a thread on the thread's stack, and makes each function's part larger.
    const std::size_t share = s_bSanitized ? std::size_t{1} << 20 : 0;
    pthread_attr_t attributes;
    ASSERT_EQ(0, pthread_attr_init(&attributes));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, size + share));
    pthread_t thread;
    const auto entry = [](void* argument) -> void*
    {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(0, pthread_create(&thread, &attributes, entry, const_cast<std::function<void()>*>(&work)));
    ASSERT_EQ(0, pthread_join(thread, nullptr));
    pthread_attr_destroy(&attributes);
}

} // namespace ToolkitTest
