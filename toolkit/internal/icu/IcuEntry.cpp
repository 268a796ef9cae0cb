// SPDX-License-Identifier: MIT
#include "toolkit/internal/icu/IcuCalls.h"

// What the library finds by its name, `c_strIcuEntry`.
extern "C" __attribute__((visibility("default"))) const void* ToolkitIcuEntry()
{
    using namespace Toolkit;
    static const IcuCalls calls = {&IcuTexts::ShortPatterns, &IcuTexts::DateAndTime, &IcuCharsets::Convert,
                                   &IcuCharsets::Fold};
    return &calls;
}
