// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_LOGFILE_H
#define TOOLKIT_TESTS_SUPPORT_LOGFILE_H

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "toolkit/core/TString.h"

namespace ToolkitTest
{

// A name for a log file that no other test has, and the files that loggers of that name leave; they go with
// the object.
class LogFile
{
public:
    LogFile();
    ~LogFile();

    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    const std::string& Name() const { return m_strName; }
    Toolkit::TString<wchar_t> WideName() const;
    // The path without a time stamp.
    std::string Path() const;
    std::string Bytes() const;
    // Waits until the file holds `bytes` and the logger of this process goes on at `offset`.
    testing::AssertionResult BecomesWrittenUpTo(const std::string& bytes, std::size_t offset) const;

    // The paths with a time stamp.
    std::vector<std::string> FallbackPaths() const;
    // What the only file with a time stamp holds; fails the test when there is not exactly one.
    std::string FallbackBytes() const;

private:
    const std::string m_strName;
};

} // namespace ToolkitTest

#endif
