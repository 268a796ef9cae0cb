// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZONES_ISOTEXT_H
#define TOOLKIT_INTERNAL_ZONES_ISOTEXT_H

#include <cstddef>

#include "toolkit/internal/zones/CivilTime.h"

namespace Toolkit
{

// The fields that are read from "2009-03-07 14:05:09 Z": what a wide stream in the classic locale reads.
struct IsoText
{
    CivilTime time;
    bool utc = false;

    static IsoText Read(const wchar_t* text, const wchar_t* end);
};

} // namespace Toolkit

#endif
