// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_PCRE2_H
#define TOOLKIT_INTERNAL_REGEX_PCRE2_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

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

// PCRE2 takes no null pointer for an empty text.
inline PCRE2_SPTR ToPcre2(std::string_view text)
{
    return reinterpret_cast<PCRE2_SPTR>(text.data() != nullptr ? text.data() : "");
}

// Null for a text that is no pattern or too large for one, and without memory.
inline Pcre2Ptr<pcre2_code> TryCompile(std::string_view pattern, std::uint32_t options,
                                       pcre2_compile_context* context)
{
    int number = 0;
    std::size_t offset = 0;
    return Pcre2Ptr<pcre2_code>(
        pcre2_compile(ToPcre2(pattern), pattern.size(), options, &number, &offset, context));
}

} // namespace Toolkit

#endif
