// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/Pcre2Items.h"

#include <cstddef>
#include <cstdint>

#include "toolkit/internal/regex/Pcre2.h"
#include "toolkit/internal/regex/Pcre2Contexts.h"

namespace Toolkit
{

namespace
{

using Text = std::string_view;

// Items that PCRE2 lists one after the other, from the beginning of the pattern.
struct Items
{
    Text pattern;
    std::size_t end = 0;
    std::size_t lookBehinds = 0;
};

// Classes of characters, characters by their names, and the edges of words; not \\G, \\K, \\A, \\C and \\X.
bool IsPlainEscape(Text item)
{
    const Text letters = "bBdDefhHnNopPrRsStvVwWx";
    const Text signs = "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~";
    return item.size() > 1 && (letters.find(item[1]) != Text::npos || signs.find(item[1]) != Text::npos);
}

bool IsLookBehind(Text item)
{
    return item == "(?<=" || item == "(?<!";
}

bool IsPlainGroup(Text item)
{
    for (const Text plain : {"(", "(?:", "(?=", "(?!", "(?>", "(?i)"})
        if (item == plain)
            return true;
    return IsLookBehind(item);
}

// PCRE2 lists a quantifier with what it repeats. What it adds else, a comment for instance, has a parenthesis
// or a backslash.
bool IsPlain(Text item)
{
    if (item.empty() || item[0] == '[')
        return true;
    if (item[0] == '(')
        return IsPlainGroup(item);
    const bool isEscape = item[0] == '\\';
    return (!isEscape || IsPlainEscape(item)) && item.find_first_of("(\\", isEscape ? 2 : 0) == Text::npos;
}

int AddItem(pcre2_callout_enumerate_block* block, void* argument)
{
    Items& items = *static_cast<Items*>(argument);
    const Text item = items.pattern.substr(block->pattern_position, block->next_item_length);
    if (block->pattern_position != items.end || !IsPlain(item))
        return 1;
    items.end += item.size();
    items.lookBehinds += IsLookBehind(item) ? 1 : 0;
    return 0;
}

template <class Value>
Value GetInfo(const pcre2_code* code, std::uint32_t what)
{
    Value value = 0;
    pcre2_pattern_info(code, what, &value);
    return value;
}

// Between the two characters of a line end no attempt is made, unless the search begins there.
bool HasLineEndOfOneCharacter(const pcre2_code* code)
{
    const std::uint32_t lineEnd = GetInfo<std::uint32_t>(code, PCRE2_INFO_NEWLINE);
    return lineEnd == PCRE2_NEWLINE_LF || lineEnd == PCRE2_NEWLINE_CR || lineEnd == PCRE2_NEWLINE_NUL;
}

} // namespace

std::optional<std::size_t> Pcre2Items::FindReach(std::string_view pattern)
{
    // A pattern with callouts lists them: there is one before each item.
    const Pcre2Ptr<pcre2_code> code =
        TryCompile(pattern, PCRE2_UTF | PCRE2_AUTO_CALLOUT, Pcre2Contexts::Get().CompileAsPcre());
    Items items;
    items.pattern = pattern;
    if (code == nullptr || !HasLineEndOfOneCharacter(code.get()) ||
        pcre2_callout_enumerate(code.get(), AddItem, &items) != 0 || items.end != pattern.size())
        return std::nullopt;
    // Look-behinds may stand in each other.
    return GetInfo<std::uint32_t>(code.get(), PCRE2_INFO_MAXLOOKBEHIND) * (items.lookBehinds + 1);
}

} // namespace Toolkit
