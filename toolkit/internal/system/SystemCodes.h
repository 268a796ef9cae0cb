// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_SYSTEMCODES_H
#define TOOLKIT_INTERNAL_SYSTEM_SYSTEMCODES_H

#include <string>

// How the system's own names and numbers translate into the codes of SystemInfo. Any thread may call it.
namespace Toolkit::SystemCodes
{

// The platforms and byte orders, numbered as those of SystemInfo.
enum class Platform : unsigned int
{
    Unknown = 0,
    Windows = 1,
    Mac = 2,
    Unix = 3
};

enum class ByteOrder : unsigned int
{
    Unknown = 0,
    Big = 1,
    Little = 2,
    Middle = 3
};

struct Release
{
    unsigned int m_uMajor;
    unsigned int m_uMinor;
};

// The first two numbers of a kernel release, for instance "6.1.0-13-amd64"; 0 for what is not there.
Release ReleaseOf(const std::string& text);
unsigned int CombinedId(unsigned int major, unsigned int minor);

// wxWidgets' id of an operating system (wxOperatingSystemId) of a kernel name as `uname` tells it.
unsigned int SystemIdOf(const std::string& kernel);
// Quirk: the two small Windows variants, 16 and 32, count as unknown.
Platform PlatformOf(unsigned int systemId);
// From wxWidgets' endianness (wxEndianness).
ByteOrder ByteOrderOf(unsigned int endianness);

} // namespace Toolkit::SystemCodes

#endif
