// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_FALSEWITHOUTMEMORY_H
#define TOOLKIT_INTERNAL_SYSTEM_FALSEWITHOUTMEMORY_H

#include <new>

namespace Toolkit
{

// Returns what `work` returns, which is true for success; false also when there is no memory for it.
template <class Work>
bool FalseWithoutMemory(Work work)
{
    try
    {
        return work();
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

} // namespace Toolkit

#endif
