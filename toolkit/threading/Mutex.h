// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_THREADING_MUTEX_H
#define TOOLKIT_THREADING_MUTEX_H

#include "toolkit/threading/MutexInternal.h"

namespace Toolkit
{

// The public name of the recursive mutex; see MutexInternal.
class TOOLKIT_API Mutex : public MutexInternal
{
public:
    explicit Mutex(bool lockNow = false);
    ~Mutex() override;
};

} // namespace Toolkit

#endif
