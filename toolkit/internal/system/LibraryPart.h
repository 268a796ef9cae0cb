// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_LIBRARYPART_H
#define TOOLKIT_INTERNAL_SYSTEM_LIBRARYPART_H

#include <atomic>

#include "toolkit/core/Result.h"

namespace Toolkit
{

// Loads the part with that name, "icu" for instance, from the folder "toolkit" beside the library, and
// returns what the one function that it exports returns, whose name is `entry`. The part stays loaded until
// the process ends. Where it, or a library that it is linked with, cannot be loaded, for want of memory for
// instance, the failure is `std::errc::not_supported` with the file and the reason of the loader.
Result<const void*> LoadLibraryPart(const char* name, const char* entry);

// A part of the library that is a file of its own, since it is linked with what not every program needs. It
// is loaded when it is first needed. Both are built together and have one version, which the part bears in
// the name of its file. `Calls` is what the part does, a structure of pointers to its functions. A static
// object, constant-initialised and trivially destroyed, so that a part is at hand before and after any other
// static object. Any thread may call it.
template <class Calls>
class LibraryPart
{
public:
    constexpr LibraryPart(const char* name, const char* entry) noexcept : m_strName(name), m_strEntry(entry)
    {
    }

    // The first call loads the part; after a failure the next one tries it again.
    Result<const Calls*> Load()
    {
        if (const Calls* const calls = m_pCalls.load(std::memory_order_acquire); calls != nullptr)
            return calls;
        const Result<const void*> loaded = LoadLibraryPart(m_strName, m_strEntry);
        if (!loaded)
            return loaded.error();
        // Several threads may come here: each gets the same calls.
        const Calls* const calls = static_cast<const Calls*>(*loaded);
        m_pCalls.store(calls, std::memory_order_release);
        return calls;
    }

    // For whoever holds what the part has made: it is loaded, or, where another copy of the library has
    // loaded it, can be. Throws a `FailureError` otherwise.
    const Calls& Get()
    {
        const Calls* const calls = m_pCalls.load(std::memory_order_acquire);
        return calls != nullptr ? *calls : *Load().value();
    }

private:
    const char* m_strName;
    const char* m_strEntry;
    std::atomic<const Calls*> m_pCalls{nullptr};
};

} // namespace Toolkit

#endif
