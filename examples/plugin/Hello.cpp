// SPDX-License-Identifier: MIT
#include "Greeter.h"

namespace example
{

class Hello : public Greeter
{
public:
    std::string Greet(const std::string& name) const override { return "Hello " + name; }
};

} // namespace example

TOOLKIT_PLUGIN(example::Hello, example::Greeter, "hello", "1.0");
