// SPDX-License-Identifier: MIT
#include "toolkit/core/MacAutoreleasePool.h"

MacAutoreleasePool::MacAutoreleasePool() = default;

MacAutoreleasePool::~MacAutoreleasePool() = default;
