// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_SECONDS_H
#define TOOLKIT_TESTS_SUPPORT_SECONDS_H

#include <algorithm>
#include <chrono>
#include <functional>

namespace ToolkitTest
{

inline double SecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The least of what up to 20 attempts take, each answering its seconds; the first that takes no more than
// `enough` is the last. What is slow takes longer each time, a busy machine does at times.
inline double LeastSeconds(double enough, const std::function<double()>& attempt)
{
    double least = attempt();
    for (int i = 1; i < 20 && least > enough; ++i)
        least = std::min(least, attempt());
    return least;
}

} // namespace ToolkitTest

#endif
