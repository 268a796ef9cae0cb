// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_PCRE2_H
#define TOOLKIT_INTERNAL_REGEX_PCRE2_H

#include <memory>

// PCRE2's 8-bit library.
#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

namespace Toolkit
{

struct FreePcre2
{
    void operator()(pcre2_code* code) const { pcre2_code_free(code); }
    void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
    void operator()(pcre2_match_context* context) const { pcre2_match_context_free(context); }
    void operator()(pcre2_jit_stack* stack) const { pcre2_jit_stack_free(stack); }
};

// What PCRE2 made, for as long as it has an owner.
template <class T>
using Pcre2Ptr = std::unique_ptr<T, FreePcre2>;

} // namespace Toolkit

#endif
