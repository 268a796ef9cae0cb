// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/LibraryFile.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>

#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/SharedLibrary.h"
#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/system/Transfer.h"

// The head of the library that this code is in; the linker makes the name.
extern "C" __attribute__((visibility("hidden"))) const ElfW(Ehdr) __ehdr_start;

namespace Toolkit
{

namespace
{

using Head = ElfW(Ehdr);
using Segment = ElfW(Phdr);

Failure Refuse(std::error_code code, const NativePath& path, const char* reason)
{
    return LibraryFailure(code, path.GetBytes(), reason);
}

bool IsOfThisArchitecture(const Head& head)
{
    return head.e_ident[EI_CLASS] == __ehdr_start.e_ident[EI_CLASS] &&
           head.e_ident[EI_DATA] == __ehdr_start.e_ident[EI_DATA] && head.e_machine == __ehdr_start.e_machine;
}

bool Fits(std::size_t offset, std::size_t length, std::size_t size)
{
    return offset <= size && length <= size - offset;
}

// True when the file has all of what the loader maps.
bool IsWhole(int descriptor, const Head& head, std::size_t size)
{
    std::vector<Segment> segments(head.e_phnum);
    const std::size_t bytes = segments.size() * sizeof(Segment);
    if (head.e_phentsize != sizeof(Segment) || !Fits(head.e_phoff, bytes, size) ||
        ReadUpTo(descriptor, segments.data(), bytes, static_cast<off_t>(head.e_phoff)) != bytes)
        return false;
    for (const Segment& segment : segments)
        if (segment.p_type == PT_LOAD && !Fits(segment.p_offset, segment.p_filesz, size))
            return false;
    return true;
}

} // namespace

Result<void> CheckLibraryFile(const NativePath& path)
{
    const Descriptor file = path.Open(O_RDONLY);
    struct stat status = {};
    if (!file.IsOpen() && errno != ENXIO)
        return LibraryFailure(std::error_code(errno, std::generic_category()), path.GetBytes(),
                              SystemReason(errno));
    if (file.IsOpen() && fstat(file.Get(), &status) != 0)
        return LibraryFailure(std::error_code(errno, std::generic_category()), path.GetBytes(),
                              SystemReason(errno));
    if (!S_ISREG(status.st_mode))
        return Refuse(Errc::Refused, path, "it is no regular file");
    Head head = {};
    const std::size_t read = ReadUpTo(file.Get(), &head, sizeof(head), 0);
    if (read < SELFMAG || std::memcmp(head.e_ident, ELFMAG, SELFMAG) != 0)
        return Refuse(Errc::Malformed, path, "it is no library");
    if (read < sizeof(head))
        return Refuse(Errc::Malformed, path, "it is cut short");
    if (!IsOfThisArchitecture(head))
        return Refuse(std::make_error_code(std::errc::executable_format_error), path,
                      "it is made for another architecture");
    if (!IsWhole(file.Get(), head, static_cast<std::size_t>(status.st_size)))
        return Refuse(Errc::Malformed, path, "it is cut short");
    return Result<void>();
}

} // namespace Toolkit
