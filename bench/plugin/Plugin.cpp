// SPDX-License-Identifier: MIT
#include "bench/plugin/Plugin.h"

namespace
{

class Plain : public ToolkitBench::Adder
{
public:
    int Add(int a, int b) const override { return a + b; }
};

} // namespace

TOOLKIT_PLUGIN(Plain, ToolkitBench::Adder, "plain", "1.0");
