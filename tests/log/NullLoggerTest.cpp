// SPDX-License-Identifier: MIT
#include "toolkit/log/NullLogger.h"

#include <gtest/gtest.h>

#include "tests/support/InstalledLogger.h"
#include "tests/support/TemporaryFolder.h"

using namespace Toolkit;

TEST(NullLogger, HasTheThresholdErrorAndTheSeverityVerbose)
{
    const NullLogger logger;
    EXPECT_EQ(LogSeverity::Error, logger.GetThreshold());
    EXPECT_EQ(LogSeverity::Verbose, logger.GetSeverity());
}

TEST(NullLogger, WritesNothingAnywhere)
{
    const ToolkitTest::InstalledLogger installed;
    ToolkitTest::CapturedOutput output(1);
    ToolkitTest::CapturedOutput errors(2);
    **ILogger::s_pInstance << SetSeverity(LogSeverity::Error) << L"text" << 1 << TString<char>("bytes");
    (*ILogger::s_pInstance)->Write(L"piece");
    EXPECT_EQ("", errors.Stop());
    EXPECT_EQ("", output.Stop());
}
