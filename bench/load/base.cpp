// SPDX-License-Identifier: MIT
#include <wx/init.h>

#include "bench/load/Tally.h"

int main()
{
    const ToolkitBench::Tally tally;
    const wxInitializer started;
    return started.IsOk() ? 0 : 1;
}
