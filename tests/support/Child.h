#ifndef TOOLKIT_TESTS_SUPPORT_CHILD_H
#define TOOLKIT_TESTS_SUPPORT_CHILD_H

#include <functional>
#include <string>

namespace ToolkitTest
{

// Each runs `work` in a child process and answers what it answered; false also when the child cannot be set
// up.

// As a user who owns nothing and may do nothing.
bool AsNobody(const std::function<bool()>& work);

// With a disk of that many KiB at `folder`, which only the child sees.
bool OnSmallDisk(const std::string& folder, unsigned int kibibytes, const std::function<bool()>& work);

} // namespace ToolkitTest

#endif
