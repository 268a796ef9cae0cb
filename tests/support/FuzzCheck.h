// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_FUZZCHECK_H
#define TOOLKIT_TESTS_SUPPORT_FUZZCHECK_H

#include <cstdio>
#include <cstdlib>

// Ends a fuzz target with a finding unless the condition holds.
#define TOOLKIT_FUZZ_CHECK(condition)                                                                        \
    do                                                                                                       \
    {                                                                                                        \
        if (!(condition))                                                                                    \
        {                                                                                                    \
            std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition);                             \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)

#endif
