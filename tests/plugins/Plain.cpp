// SPDX-License-Identifier: MIT
#include "tests/plugins/Greeter.h"

// Built several times, each with a PLUGIN_NAME of its own.

namespace
{

class Plain : public ToolkitTest::Greeter
{
public:
    std::string Greet(const std::string& whom) const override { return m_strGreeting + " " + whom; }

private:
    const std::string m_strGreeting = "this is " + Info().Name() + ", hello";
};

} // namespace

TOOLKIT_PLUGIN(Plain, ToolkitTest::Greeter, PLUGIN_NAME, "1.2.0");
