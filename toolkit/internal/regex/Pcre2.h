// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_PCRE2_H
#define TOOLKIT_INTERNAL_REGEX_PCRE2_H

// PCRE2's 8-bit library.
#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#endif
