// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include "tests/support/TemporaryFolder.h"

// Every test program runs with a home folder of its own, so that nothing it does reaches the user's.
int main(int argc, char** argv)
{
    const ToolkitTest::TemporaryFolder home;
    const ToolkitTest::ScopedEnvironment environment("HOME", home.Path().c_str());
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
