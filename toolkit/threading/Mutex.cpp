#include "toolkit/threading/Mutex.h"

namespace Toolkit
{

const unsigned int Mutex::s_uInfinite;

Mutex::Mutex(bool lockNow) : MutexInternal(lockNow) {}

Mutex::~Mutex() = default;

} // namespace Toolkit
