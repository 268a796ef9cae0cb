// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/MachineCode.h"

#include <cstddef>
#include <new>

#include "toolkit/internal/regex/Pcre2.h"
#include "toolkit/internal/regex/Pcre2Contexts.h"

namespace Toolkit
{

namespace
{

using Text = std::string_view;

// True when there is "*+" or "{0,}+", with white space and comments between as well; for other texts, too.
bool MayHoldQuantifier(Text text)
{
    const std::size_t begin = text.find_first_of("*{");
    return begin != Text::npos && text.find('+', begin) != Text::npos;
}

// PCRE2 lists the end of a group with the quantifier that follows, and with white space and comments before
// it and between them.
int IsRepeatedGroup(pcre2_callout_enumerate_block* block, void* argument)
{
    const Text& pattern = *static_cast<const Text*>(argument);
    const Text item = pattern.substr(block->pattern_position, block->next_item_length);
    const std::size_t end = item.find(')');
    return end != Text::npos && MayHoldQuantifier(item.substr(end)) ? 1 : 0;
}

bool MayRepeatGroup(Text pattern, std::uint32_t options)
{
    // A pattern with callouts lists its items, unless they make it too large.
    const Pcre2Ptr<pcre2_code> code =
        TryCompile(pattern, options | PCRE2_AUTO_CALLOUT, Pcre2Contexts::Get().Compile());
    return code == nullptr || pcre2_callout_enumerate(code.get(), IsRepeatedGroup, &pattern) != 0;
}

// Asks this PCRE2 itself. Without machine code there is nothing to lose.
bool KeepsCaptures()
{
    const Pcre2Contexts& contexts = Pcre2Contexts::Get();
    const Pcre2Ptr<pcre2_code> code = TryCompile("(a)*+b|ac", 0, contexts.Compile());
    const Pcre2Ptr<pcre2_match_data> found(pcre2_match_data_create(2, contexts.General()));
    if (code == nullptr || found == nullptr)
        throw std::bad_alloc();
    return pcre2_jit_compile(code.get(), PCRE2_JIT_COMPLETE) != 0 ||
           pcre2_match(code.get(), ToPcre2("ac"), 2, 0, 0, found.get(), nullptr) != 1;
}

} // namespace

bool MachineCode::IsRight(std::string_view pattern, std::uint32_t options)
{
    if (!MayHoldQuantifier(pattern))
        return true;
    static const bool keepsCaptures = KeepsCaptures();
    return !keepsCaptures || !MayRepeatGroup(pattern, options);
}

} // namespace Toolkit
