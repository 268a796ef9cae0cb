// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_INCHILD_H
#define TOOLKIT_TESTS_SUPPORT_INCHILD_H

#include <string>

#include <gtest/gtest.h>

#include "tests/support/ForkedCopy.h"

namespace ToolkitTest
{

// What `work` answers when the system does not let it do its part: the test is skipped.
ChildAnswer NotAllowed(const std::string& what);

// Each runs `work` in a child process to its end: a success when nothing went wrong there, else what did.

testing::AssertionResult InChild(const ChildWork& work);

// As a user who owns nothing and may do nothing.
testing::AssertionResult AsNobody(const ChildWork& work);

// With a disk of that many KiB at `folder`, which only the child sees; not allowed where none can be mounted.
testing::AssertionResult OnSmallDisk(const std::string& folder, unsigned int kibibytes,
                                     const ChildWork& work);

// Mounts the child's own disk at `folder` anew, for reading only or for both; false when the system refuses.
bool RemountSmallDisk(const std::string& folder, bool readOnly);

} // namespace ToolkitTest

#endif
