#ifndef TOOLKIT_THREADING_MUTEX_H
#define TOOLKIT_THREADING_MUTEX_H

#include "toolkit/threading/MutexInternal.h"

namespace Toolkit
{

// The public name of the recursive mutex; see MutexInternal.
class TOOLKIT_API Mutex : public MutexInternal
{
public:
    // The time-out that waits without limit, in every operation of the library that takes one.
    static const unsigned int s_uInfinite = 4294967295U;

    explicit Mutex(bool lockNow = false);
    ~Mutex() override;
};

} // namespace Toolkit

#endif
