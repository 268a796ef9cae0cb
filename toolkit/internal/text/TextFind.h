// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_TEXTFIND_H
#define TOOLKIT_INTERNAL_TEXT_TEXTFIND_H

#include <cstddef>
#include <string>
#include <string_view>

#include "toolkit/internal/text/LinearSearch.h"

namespace Toolkit
{

// The standard strings' `find` with the same answers, but in a time that is linear in both texts even where
// `what` nearly occurs everywhere.
template <class C>
class TextFind
{
public:
    using View = std::basic_string_view<C>;

    static std::size_t In(View text, View what, std::size_t from = 0)
    {
        // What is short costs the standard search no more than that many times the length.
        const std::size_t shortest = 32;
        if (what.size() < shortest || from > text.size())
            return text.find(what, from);
        // What comparing may cost before it is worth while to look at `what` first.
        std::size_t effort = 4 * (text.size() - from);
        for (std::size_t at = from; text.size() - at >= what.size(); ++at)
        {
            at = text.substr(0, text.size() - what.size() + 1).find(what.front(), at);
            if (at == text.npos)
                return at;
            std::size_t same = 1;
            while (same < what.size() && text[at + same] == what[same])
                ++same;
            if (same == what.size())
                return at;
            if (same > effort)
                return Linearly(text, what, at + 1);
            effort -= same;
        }
        return text.npos;
    }

private:
    struct Itself
    {
        C operator()(C element) const { return element; }
    };

    static std::size_t Linearly(View text, View what, std::size_t from)
    {
        const LinearSearch<C, Itself> search(what.data(), what.size(), Itself());
        const std::size_t found = search.Find(text.data() + from, text.size() - from);
        return found == search.s_uNone ? text.npos : from + found;
    }
};

} // namespace Toolkit

#endif
