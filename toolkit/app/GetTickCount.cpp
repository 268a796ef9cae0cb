#include "toolkit/app/GetTickCount.h"

#include <sys/times.h>
#include <unistd.h>

namespace Toolkit
{

unsigned int GetTickCount()
{
    static const unsigned int uMsMulitplier = 1000U / static_cast<unsigned int>(sysconf(_SC_CLK_TCK));
    tms unused;
    return static_cast<unsigned int>(times(&unused)) * uMsMulitplier;
}

} // namespace Toolkit
