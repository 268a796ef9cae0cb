// SPDX-License-Identifier: MIT
#include "bench/load/Tally.h"
#include "toolkit/core/ToolkitSession.h"

int main()
{
    const ToolkitBench::Tally tally;
    const Toolkit::ToolkitSession session;
}
