// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/LeakOnPurpose.h"

#include <atomic>
#include <new>

namespace Toolkit
{

namespace
{

struct Abandoned
{
    const void* m_pObject;
    Abandoned* m_pNext;
};

// Never emptied.
std::atomic<Abandoned*> s_pLast{nullptr};

} // namespace

void LeakOnPurpose(const void* object) noexcept
{
    Abandoned* const abandoned = new (std::nothrow) Abandoned{object, s_pLast};
    // Without memory it is lost after all.
    if (abandoned == nullptr)
        return;
    while (!s_pLast.compare_exchange_weak(abandoned->m_pNext, abandoned))
        continue;
}

} // namespace Toolkit
