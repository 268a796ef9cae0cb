// SPDX-License-Identifier: MIT
#ifndef EXAMPLE_GREETER_H
#define EXAMPLE_GREETER_H

#include <string>

#include <toolkit/core/Plugin.h>

namespace example
{

// What the host and its plug-ins agree on. Whoever changes it counts the version up.
class Greeter : public Toolkit::Plugin
{
public:
    virtual std::string Greet(const std::string& name) const = 0;
};
TOOLKIT_PLUGIN_INTERFACE(Greeter, "org.example.Greeter", 1);

} // namespace example

#endif
