// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_BENCH_BARECODE_H
#define TOOLKIT_BENCH_BARECODE_H

#include <memory>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

// A pattern for bare PCRE2, with machine code.
inline std::shared_ptr<pcre2_code> CompileBare(const char* pattern)
{
    int error = 0;
    PCRE2_SIZE offset = 0;
    std::shared_ptr<pcre2_code> code(pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern),
                                                   PCRE2_ZERO_TERMINATED, PCRE2_UTF, &error, &offset,
                                                   nullptr),
                                     &pcre2_code_free);
    pcre2_jit_compile(code.get(), PCRE2_JIT_COMPLETE);
    return code;
}

#endif
