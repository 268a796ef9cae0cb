// SPDX-License-Identifier: MIT
#include "tests/plugins/Greeter.h"

// No program has this function.
namespace desk
{
TOOLKIT_API std::string FormatOfAnotherVersion(int number);
}

namespace
{

class Undefined : public ToolkitTest::Greeter
{
public:
    std::string Greet(const std::string&) const override { return desk::FormatOfAnotherVersion(3); }
};

} // namespace

TOOLKIT_PLUGIN(Undefined, ToolkitTest::Greeter, "undefined", "1");
