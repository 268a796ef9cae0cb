// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_SHAREDLIBRARY_H
#define TOOLKIT_INTERNAL_SYSTEM_SHAREDLIBRARY_H

#include <string>
#include <string_view>
#include <utility>

#include "toolkit/core/Result.h"

namespace Toolkit
{

class NativePath;

// Owns a library that was loaded at run time, or none, and unloads it when it is destroyed.
class SharedLibrary
{
public:
    // Loads the library and resolves all of its symbols at once; `flags` are RTLD_LOCAL or RTLD_GLOBAL. A
    // path without a folder is searched for as the system does. The failure says why, in the words of the
    // loader where it has some; its code is one of `PluginsBase::Load`.
    static Result<SharedLibrary> Load(const NativePath& path, int flags);

    SharedLibrary(SharedLibrary&& other) noexcept : m_pHandle(std::exchange(other.m_pHandle, nullptr)) {}
    SharedLibrary& operator=(SharedLibrary&& other) noexcept
    {
        std::swap(m_pHandle, other.m_pHandle);
        return *this;
    }
    ~SharedLibrary();

    // The symbol's address; null when there is none.
    void* Find(const char* name) const;
    // True when what lies at the address was loaded with this library.
    bool Contains(const void* address) const;

    // True when there is a loaded library at the address.
    static bool IsLoaded(const void* address);

    // True when both own the same library, which the system has loaded once.
    bool IsSame(const SharedLibrary& other) const noexcept { return m_pHandle == other.m_pHandle; }

    // The system's handle, which is the caller's from now on.
    void* Release() { return std::exchange(m_pHandle, nullptr); }

private:
    explicit SharedLibrary(void* handle) noexcept : m_pHandle(handle) {}

    void* m_pHandle;
};

// "cannot load /home/a/x.so: it is no library"
Failure LibraryFailure(std::error_code code, std::string_view path, std::string_view reason);

} // namespace Toolkit

#endif
