// SPDX-License-Identifier: MIT
#include "toolkit/threading/Mutex.h"

#include <system_error>

namespace Toolkit
{

Mutex::Mutex(bool lockNow) : MutexInternal(lockNow) {}

Mutex::~Mutex() = default;

void Mutex::lock()
{
    if (!Lock(s_uInfinite))
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
}

} // namespace Toolkit
