// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_PLUGINS_GREETER_H
#define TOOLKIT_TESTS_PLUGINS_GREETER_H

#include <string>
#include <vector>

#include "toolkit/core/Plugin.h"

// The interfaces of the tests, and what their programs hand to plug-ins. Every plug-in is a library of its
// own.

#ifndef GREETER_VERSION
#define GREETER_VERSION 3
#endif

namespace ToolkitTest
{

struct Greeter : Toolkit::Plugin
{
    virtual std::string Greet(const std::string& whom) const = 0;
};
TOOLKIT_PLUGIN_INTERFACE(Greeter, "toolkit.test.Greeter", GREETER_VERSION);

// The functions of this one are in the program alone, which exports them.
struct TOOLKIT_API Counter : Toolkit::Plugin
{
    virtual int Count() const;
};
TOOLKIT_PLUGIN_INTERFACE(Counter, "toolkit.test.Counter", 1);

// What happened, in order: "+a" and "-a" for an object, "<a" and ">a" for a module, "~a" when the statics of
// the code are destroyed.
struct Notes
{
    std::vector<std::string> events;
    // What a constructor is to throw, if anything.
    std::string refusal;
};

} // namespace ToolkitTest

#endif
