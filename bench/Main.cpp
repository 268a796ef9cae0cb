// SPDX-License-Identifier: MIT
#include "bench/Bench.h"

int main(int count, char** arguments)
{
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments))
        return 2;
    ToolkitBench::Folder();
    ToolkitBench::Register();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
