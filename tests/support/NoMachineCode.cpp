// SPDX-License-Identifier: MIT
// Loaded before a program by scripts/valgrind: patterns run without PCRE2's machine code, which reads a
// subject's last bytes together with those after them, on purpose; valgrind cannot tell that from a mistake.
#include <cstdint>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

extern "C" __attribute__((visibility("default"))) int pcre2_jit_compile_8(pcre2_code*, std::uint32_t)
{
    return PCRE2_ERROR_JIT_BADOPTION;
}
