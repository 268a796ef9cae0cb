// SPDX-License-Identifier: MIT
#include "tests/plugins/Greeter.h"

// Implements an interface whose functions, and so its type, are defined in the program alone.

namespace
{

class Counting : public ToolkitTest::Counter
{
public:
    int Count() const override { return Counter::Count() + 1; }
};

} // namespace

TOOLKIT_PLUGIN(Counting, ToolkitTest::Counter, "counting", "1");
