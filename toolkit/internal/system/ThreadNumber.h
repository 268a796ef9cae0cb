// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_THREADNUMBER_H
#define TOOLKIT_INTERNAL_SYSTEM_THREADNUMBER_H

#include <cstdint>

namespace Toolkit
{

// The system's number of the calling thread; asked for once in each thread.
std::uint64_t ThreadNumber();

} // namespace Toolkit

#endif
