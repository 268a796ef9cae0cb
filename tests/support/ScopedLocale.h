// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_SCOPEDLOCALE_H
#define TOOLKIT_TESTS_SUPPORT_SCOPEDLOCALE_H

#include <clocale>
#include <string>

#include <gtest/gtest.h>

namespace ToolkitTest
{

// The C library has that locale for as long as this object lives.
class ScopedLocale
{
public:
    explicit ScopedLocale(const char* name) : m_strBefore(std::setlocale(LC_ALL, nullptr))
    {
        EXPECT_NE(nullptr, std::setlocale(LC_ALL, name)) << name;
    }
    ~ScopedLocale() { std::setlocale(LC_ALL, m_strBefore.c_str()); }
    ScopedLocale(const ScopedLocale&) = delete;
    ScopedLocale& operator=(const ScopedLocale&) = delete;

private:
    const std::string m_strBefore;
};

} // namespace ToolkitTest

#endif
