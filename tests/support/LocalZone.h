// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_LOCALZONE_H
#define TOOLKIT_TESTS_SUPPORT_LOCALZONE_H

#include <ctime>
#include <string>

#include "tests/support/TemporaryFolder.h"

namespace ToolkitTest
{

// The system's local zone for a scope: what TZ says; null unsets it.
class LocalZone
{
public:
    explicit LocalZone(const char* zone) : m_environment("TZ", zone) { tzset(); }
    explicit LocalZone(const std::string& zone) : LocalZone(zone.c_str()) {}

private:
    // The next use of the C library's zone sees that TZ is back.
    const ScopedEnvironment m_environment;
};

} // namespace ToolkitTest

#endif
