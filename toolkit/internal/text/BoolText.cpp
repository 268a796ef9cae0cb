// SPDX-License-Identifier: MIT
#include "toolkit/internal/text/BoolText.h"

#include <cstddef>
#include <utility>

namespace Toolkit
{

namespace
{

bool EqualsNoCase(std::string_view text, std::string_view lower)
{
    if (text.size() != lower.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i)
        if ((text[i] >= 'A' && text[i] <= 'Z' ? static_cast<char>(text[i] + ('a' - 'A')) : text[i]) !=
            lower[i])
            return false;
    return true;
}

} // namespace

std::optional<bool> BoolText::Read(std::string_view text)
{
    const std::pair<std::string_view, bool> words[] = {{"1", true},      {"0", false},  {"true", true},
                                                       {"false", false}, {"yes", true}, {"no", false},
                                                       {"on", true},     {"off", false}};
    for (const auto& [word, value] : words)
        if (EqualsNoCase(text, word))
            return value;
    return std::nullopt;
}

} // namespace Toolkit
