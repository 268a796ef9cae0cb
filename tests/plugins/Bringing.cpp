// SPDX-License-Identifier: MIT
#include "tests/plugins/Brought.h"
#include "tests/plugins/Greeter.h"

// Brings a library along, and has that register a module.

namespace
{

class Bringing : public ToolkitTest::Greeter
{
public:
    Bringing() { ToolkitTest::RegisterBrought(); }

    std::string Greet(const std::string& whom) const override { return "brought " + whom; }
};

} // namespace

TOOLKIT_PLUGIN(Bringing, ToolkitTest::Greeter, "bringing", "1");
