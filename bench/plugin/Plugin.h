// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_BENCH_PLUGIN_PLUGIN_H
#define TOOLKIT_BENCH_PLUGIN_PLUGIN_H

#include "toolkit/core/Plugin.h"

namespace ToolkitBench
{

struct Adder : Toolkit::Plugin
{
    virtual int Add(int a, int b) const = 0;
};
TOOLKIT_PLUGIN_INTERFACE(Adder, "org.example.Adder", 1);

} // namespace ToolkitBench

#endif
