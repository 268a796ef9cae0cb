// SPDX-License-Identifier: MIT
#include "tests/plugins/Greeter.h"

// A plug-in for a library that will be: nothing of its entry is as here but for the first two fields.

struct LaterEntry
{
    std::uint32_t size;
    std::uint32_t libraryMajor;
};

extern "C"
{
    TOOLKIT_API extern const LaterEntry ToolkitPluginEntry;
    const LaterEntry ToolkitPluginEntry = {sizeof(LaterEntry), 7};
}
