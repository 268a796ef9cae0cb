// SPDX-License-Identifier: MIT
#include "toolkit/core/LibraryVersion.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "toolkit/app/Version.h"

TEST(LibraryVersion, IsTheVersionThatTheLibraryStartsWith)
{
    const std::string text = Toolkit::LibraryVersion();
    const std::unique_ptr<Toolkit::Version> version(Toolkit::Version::Create());

    EXPECT_EQ(text, "1.0.865.8");
    EXPECT_EQ(version->ToString(), Toolkit::TString<wchar_t>(text.begin(), text.end()));
}
