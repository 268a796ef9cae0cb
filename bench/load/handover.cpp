// SPDX-License-Identifier: MIT
#include <cstdlib>

#include "bench/load/Tally.h"
#include "toolkit/app/Instance.h"

// A second start: it finds that the benchmark is the first one, hands its command over and gets the answer.
int main()
{
    const ToolkitBench::Tally tally;
    const char* const key = std::getenv("BENCH_KEY");
    const Toolkit::Result<Toolkit::Instance> instance = Toolkit::Instance::Claim(key != nullptr ? key : "");
    const auto answer =
        instance && !instance->IsFirst() ? instance->Ask({"open", "file"}) : Toolkit::Instance::Answer(1);
    return answer ? answer->Code() : 1;
}
