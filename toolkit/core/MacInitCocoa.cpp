// SPDX-License-Identifier: MIT
#include "toolkit/core/MacInitCocoa.h"

bool MacInitCocoa()
{
    return false;
}
