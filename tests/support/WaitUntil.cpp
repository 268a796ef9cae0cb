// SPDX-License-Identifier: MIT
#include "tests/support/WaitUntil.h"

#include <chrono>
#include <thread>

namespace ToolkitTest
{

bool WaitUntil(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

} // namespace ToolkitTest
