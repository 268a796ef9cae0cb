// SPDX-License-Identifier: MIT
// Works in the background and reports how far it is: task [<steps>]

#include <chrono>
#include <cstdlib>
#include <iostream>

#include <toolkit/threading/Task.h>

using namespace Toolkit;
using namespace std::chrono_literals;

int main(int argc, char** argv)
{
    const int all = argc == 2 ? std::atoi(argv[1]) : 5;
    Task<int> counting = Task<int>::Start(
        [all](TaskContext& context)
        {
            int sum = 0;
            for (int i = 1; i <= all; ++i)
            {
                context.Report(i, all, "step " + std::to_string(i));
                // False at once when the task is cancelled.
                if (!context.SleepFor(1ms))
                    break;
                sum += i;
            }
            return sum;
        });
    if (!counting.WaitFor(10s))
        counting.Cancel();
    std::cout << counting.Progress().Text() << ", the sum is " << counting.Get() << '\n';
}
