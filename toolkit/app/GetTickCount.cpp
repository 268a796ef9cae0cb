// SPDX-License-Identifier: MIT
#include "toolkit/app/GetTickCount.h"

#include <sys/times.h>
#include <unistd.h>

namespace Toolkit
{

unsigned int GetTickCount()
{
    // Quirk: it is spelled so.
    static const unsigned int uMsMulitplier = 1000U / static_cast<unsigned int>(sysconf(_SC_CLK_TCK));
    // Without a buffer the system does not add up the process's times, which takes longer than the rest.
    return static_cast<unsigned int>(times(nullptr)) * uMsMulitplier;
}

} // namespace Toolkit
