// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/LibraryPart.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>

#include <dlfcn.h>
#include <fcntl.h>

#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/SharedLibrary.h"
#include "toolkit/internal/system/Transfer.h"

namespace Toolkit
{

namespace
{

std::string Content(const Descriptor& file)
{
    std::string content;
    char block[4096];
    while (const std::size_t count = ReadUpTo(file.Get(), block, sizeof(block)))
        content.append(block, count);
    return content;
}

// The file that holds this address, as the system has mapped it; empty where it does not tell.
std::string MappedFile(const void* address)
{
    const auto wanted = reinterpret_cast<std::uintptr_t>(address);
    std::istringstream maps(Content(Descriptor(open("/proc/self/maps", O_RDONLY | O_CLOEXEC))));
    for (std::string line; std::getline(maps, line);)
    {
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        const std::size_t path = line.find('/');
        if (std::sscanf(line.c_str(), "%" SCNxPTR "-%" SCNxPTR, &begin, &end) == 2 && wanted >= begin &&
            wanted < end && path != line.npos)
            return line.substr(path);
    }
    return std::string();
}

// The file of this code. What the loader was given is at the end of all links, for the parts lie beside the
// library itself, or, when it begins at a working folder that may have changed since, what the system knows.
std::string OwnFile()
{
    Dl_info own = {};
    const void* const address = reinterpret_cast<const void*>(&LoadLibraryPart);
    if (dladdr(address, &own) == 0 || own.dli_fname[0] != '/')
        return MappedFile(address);
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(own.dli_fname, nullptr), &std::free);
    return resolved ? resolved.get() : own.dli_fname;
}

Failure CannotLoad(const Failure& failure)
{
    return Failure(std::make_error_code(std::errc::not_supported), failure.Message());
}

} // namespace

Result<const void*> LoadLibraryPart(const char* name, const char* entry)
{
    const std::string own = OwnFile();
    const std::string file =
        own.substr(0, own.rfind('/') + 1) + "toolkit/libtoolkit-" + name + ".so." + TOOLKIT_VERSION;
    if (own.empty())
        return CannotLoad(LibraryFailure(std::error_code(), file, "the folder of the library is not known"));
    Result<SharedLibrary> part = SharedLibrary::Load(NativePath::OfBytes(file), RTLD_LOCAL);
    if (!part)
        return CannotLoad(part.error());
    const auto function = reinterpret_cast<const void* (*)()>(part->Find(entry));
    if (function == nullptr)
        return CannotLoad(LibraryFailure(std::error_code(), file, "it is no part of this library"));
    // What it keeps, such as all that ICU has read, would be lost with every unloading: the part stays when
    // the library is unloaded.
    part->Release();
    return function();
}

} // namespace Toolkit
