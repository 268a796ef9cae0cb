// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_MACAUTORELEASEPOOL_H
#define TOOLKIT_CORE_MACAUTORELEASEPOOL_H

#include "toolkit/core/Export.h"

/// An autorelease pool of the desktop's object runtime for a scope, put around work on threads that the
/// runtime does not manage. This platform has no such runtime: the guard does nothing.
///
/// @code
/// {
///     const MacAutoreleasePool pool;
///     LookForWork();
/// }
/// @endcode
class TOOLKIT_API MacAutoreleasePool
{
public:
    MacAutoreleasePool();
    ~MacAutoreleasePool();

    MacAutoreleasePool(const MacAutoreleasePool&) = delete;
    MacAutoreleasePool& operator=(const MacAutoreleasePool&) = delete;
};

#endif
