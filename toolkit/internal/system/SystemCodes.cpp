// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/SystemCodes.h"

#include <charconv>

#include <wx/platinfo.h>

namespace Toolkit
{

SystemCodes::Release SystemCodes::ReleaseOf(const std::string& text)
{
    Release release = {0, 0};
    const char* const stop = text.data() + text.size();
    const char* const dot = std::from_chars(text.data(), stop, release.m_uMajor).ptr;
    if (dot != text.data() && dot != stop && *dot == '.')
        std::from_chars(dot + 1, stop, release.m_uMinor);
    return release;
}

unsigned int SystemCodes::CombinedId(unsigned int major, unsigned int minor)
{
    return major * 100 + minor * 10;
}

unsigned int SystemCodes::SystemIdOf(const std::string& kernel)
{
    return kernel == "Linux" ? wxOS_UNIX_LINUX : wxOS_UNKNOWN;
}

SystemCodes::Platform SystemCodes::PlatformOf(unsigned int systemId)
{
    switch (systemId)
    {
    case wxOS_MAC_OS:
    case wxOS_MAC_OSX_DARWIN:
    case wxOS_MAC:
        return Platform::Mac;
    case wxOS_WINDOWS_9X:
    case wxOS_WINDOWS_NT:
    case wxOS_WINDOWS:
        return Platform::Windows;
    case wxOS_UNIX_LINUX:
    case wxOS_UNIX_FREEBSD:
    case wxOS_UNIX_OPENBSD:
    case wxOS_UNIX_NETBSD:
    case wxOS_UNIX_SOLARIS:
    case wxOS_UNIX_AIX:
    case wxOS_UNIX_HPUX:
    case wxOS_UNIX:
        return Platform::Unix;
    default:
        return Platform::Unknown;
    }
}

SystemCodes::ByteOrder SystemCodes::ByteOrderOf(unsigned int endianness)
{
    switch (endianness)
    {
    case wxENDIAN_BIG:
        return ByteOrder::Big;
    case wxENDIAN_LITTLE:
        return ByteOrder::Little;
    case wxENDIAN_PDP:
        return ByteOrder::Middle;
    default:
        return ByteOrder::Unknown;
    }
}

} // namespace Toolkit
