// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_SYSTEMCODES_H
#define TOOLKIT_INTERNAL_SYSTEM_SYSTEMCODES_H

#include <string>

#include "toolkit/app/SystemInfo.h"

namespace Toolkit
{

// How the system's own names and numbers translate into the codes of SystemInfo. Any thread may call it.
class SystemCodes
{
public:
    struct Release
    {
        unsigned int m_uMajor;
        unsigned int m_uMinor;
    };

    // The first two numbers of a kernel release, for instance "6.1.0-13-amd64"; 0 for what is not there.
    static Release ReleaseOf(const std::string& text);
    static unsigned int CombinedId(unsigned int major, unsigned int minor);

    // The base library's operating-system id (wxOperatingSystemId) of a kernel name as `uname` tells it.
    static unsigned int SystemIdOf(const std::string& kernel);
    // Quirk: the two small Windows variants, 16 and 32, count as unknown.
    static SystemInfo::Platform PlatformOf(unsigned int systemId);
    // From the base library's endianness (wxEndianness).
    static SystemInfo::Endian EndianOf(unsigned int endianness);
};

} // namespace Toolkit

#endif
