// SPDX-License-Identifier: MIT
// Logs to a file for each run and to the console: log <folder>

#include <chrono>
#include <iostream>

#include <toolkit/log/Log.h>
#include <toolkit/log/RunLog.h>

using namespace Toolkit;

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::cerr << "usage: log <folder>\n";
        return 2;
    }
    const auto file = RunLog::Open(RunLogOptions("example").Folder(argv[1]).Keep(5).MaxSize(8 << 20));
    if (!file)
    {
        std::cerr << file.error().Message() << '\n';
        return 1;
    }
    Log::Install({*file, Log::Console(LogSeverity::Warning)});
    TOOLKIT_LOG(LogSeverity::Info) << "read 3 files in " << std::chrono::milliseconds(30);
    TOOLKIT_LOG(LogSeverity::Warning) << "größe is unknown";
    std::cout << (*file)->File().filename().string() << '\n';
}
