// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/SharedLibrary.h"

#include <dlfcn.h>
#include <link.h>

#include "toolkit/internal/system/LibraryFile.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/text/ReadableSymbol.h"

namespace Toolkit
{

namespace
{

// What the loader says of the last failure on this thread, without the path, which the message has already.
std::string LoadersReason(const std::string& path)
{
    const char* const text = dlerror();
    std::string reason = text != nullptr ? text : "the loader does not say why";
    if (reason.compare(0, path.size() + 2, path + ": ") == 0)
        reason.erase(0, path.size() + 2);
    return reason;
}

// Adds to "undefined symbol: _ZN4desk4ShowEv" what a programmer calls that.
std::string WithReadableSymbol(std::string reason)
{
    const std::size_t symbol = reason.find("_Z");
    if (symbol == reason.npos)
        return reason;
    const std::string mangled = reason.substr(symbol, reason.find_first_of(", \t\n", symbol) - symbol);
    const std::string readable = ReadableSymbol(mangled.c_str());
    if (!readable.empty())
        reason.append(" (").append(readable).append(")");
    return reason;
}

} // namespace

Result<SharedLibrary> SharedLibrary::Load(const NativePath& path, int flags)
{
    const bool isSearchedFor = path.IsValid() && path.GetBytes().find('/') == path.GetBytes().npos;
    if (!isSearchedFor)
    {
        const Result<void> checked = CheckLibraryFile(path);
        // One that is loaded already needs its file no more.
        const bool mayBeLoaded =
            !checked && path.IsValid() && checked.error().Code() == std::errc::no_such_file_or_directory;
        if (void* const handle = mayBeLoaded ? dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD | flags) : nullptr;
            handle != nullptr)
            return SharedLibrary(handle);
        if (!checked)
            return checked.error();
    }
    if (void* const handle = dlopen(path.c_str(), RTLD_NOW | flags); handle != nullptr)
        return SharedLibrary(handle);
    return LibraryFailure(Errc::Malformed, path.GetBytes(),
                          WithReadableSymbol(LoadersReason(path.GetBytes())));
}

SharedLibrary::~SharedLibrary()
{
    if (m_pHandle != nullptr)
        dlclose(m_pHandle);
}

void* SharedLibrary::Find(const char* name) const
{
    return dlsym(m_pHandle, name);
}

bool SharedLibrary::Contains(const void* address) const
{
    dl_find_object found = {};
    link_map* own = nullptr;
    return _dl_find_object(const_cast<void*>(address), &found) == 0 &&
           dlinfo(m_pHandle, RTLD_DI_LINKMAP, &own) == 0 && found.dlfo_link_map == own;
}

bool SharedLibrary::IsLoaded(const void* address)
{
    dl_find_object found = {};
    return _dl_find_object(const_cast<void*>(address), &found) == 0;
}

Failure LibraryFailure(std::error_code code, std::string_view path, std::string_view reason)
{
    std::string message("cannot load");
    if (!path.empty())
        message.append(" ").append(path);
    return Failure(code, message.append(": ").append(reason));
}

} // namespace Toolkit
