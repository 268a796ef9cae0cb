// SPDX-License-Identifier: MIT
// Runs a program with a text as its input, and prints what it makes of it: process <program> [<argument>...]

#include <chrono>
#include <iostream>
#include <string>
#include <vector>

#include <toolkit/app/Process.h>

using namespace Toolkit;

int main(int argc, char** argv)
{
    if (argc < 2)
    {
        std::cerr << "usage: process <program> [<argument>...]\n";
        return 2;
    }
    const auto options = ProcessOptions().Input("pear\nplum\napple\n").Timeout(std::chrono::seconds(10));
    const Result<ProcessResult> result =
        Process::Run(std::vector<std::string>(argv + 1, argv + argc), options);
    if (!result)
    {
        std::cerr << result.error().Message() << '\n';
        return 1;
    }
    std::cout << result->Output();
    std::cerr << result->Errors();
    return result->TimedOut() ? 1 : result->ExitCode();
}
