// SPDX-License-Identifier: MIT
#include "toolkit/threading/Mutex.h"

namespace Toolkit
{

Mutex::Mutex(bool lockNow) : MutexInternal(lockNow) {}

Mutex::~Mutex() = default;

} // namespace Toolkit
