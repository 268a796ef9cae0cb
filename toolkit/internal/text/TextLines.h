// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_TEXTLINES_H
#define TOOLKIT_INTERNAL_TEXT_TEXTLINES_H

#include <cstddef>
#include <string_view>

namespace Toolkit
{

// A line of a text, and what ends it: "\n", "\r\n", "\r", or nothing at the end of the text.
template <class C>
struct TextLine
{
    std::basic_string_view<C> m_text;
    std::basic_string_view<C> m_end;
};

// Calls `take` with each line of a text, in their order. Nothing stands after the last line end.
template <class C, class Take>
void ForEachLine(std::basic_string_view<C> text, Take take)
{
    const std::size_t size = text.size();
    for (std::size_t begin = 0; begin < size;)
    {
        std::size_t end = begin;
        while (end < size && text[end] != C('\n') && text[end] != C('\r'))
            ++end;
        std::size_t next = end == size ? size : end + 1;
        if (next < size && text[end] == C('\r') && text[next] == C('\n'))
            ++next;
        take(TextLine<C>{text.substr(begin, end - begin), text.substr(end, next - end)});
        begin = next;
    }
}

} // namespace Toolkit

#endif
