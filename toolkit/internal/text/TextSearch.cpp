// SPDX-License-Identifier: MIT
#include "toolkit/core/TString.h"

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "toolkit/internal/text/LinearSearch.h"
#include "toolkit/internal/text/NarrowFold.h"
#include "toolkit/internal/text/SimdBlock.h"
#include "toolkit/internal/text/TextFind.h"

namespace Toolkit::Detail
{

namespace
{

// All ones where the element is `a` or `b`.
template <class C>
typename SimdBlock<C>::Vector Either(const C* text, C a, C b)
{
    using Element = typename SimdBlock<C>::Element;
    const typename SimdBlock<C>::Vector elements = SimdBlock<C>::Load(text);
    return (elements == static_cast<Element>(a)) | (elements == static_cast<Element>(b));
}

// Two elements; a third one that would belong to them makes the pair incomplete.
template <class C>
struct Pair
{
    C a;
    C b;
    bool complete;

    bool Has(C element) const { return element == a || element == b; }
};

// The elements that fold to `folded`, with `folded` itself.
template <class C>
Pair<C> SameFold(C folded, const NarrowFold& fold)
{
    using Table = SimdBlock<std::int32_t>;
    // The table knows a byte by its unsigned value, but for the one that is EOF.
    const std::int32_t a = std::is_same_v<C, char> ? static_cast<unsigned char>(folded) : folded;
    const std::int32_t b = folded;
    const std::size_t candidates =
        std::is_same_v<C, char> ? NarrowFold::s_uCount - 128 : NarrowFold::s_uCount;
    Pair<C> pair{folded, folded, true};
    for (std::size_t block = 0; block < candidates; block += Table::s_uCount)
    {
        if (!Table::Any(Either(fold.Table() + block, a, b)))
            continue;
        for (std::size_t i = block; i < block + Table::s_uCount; ++i)
        {
            const C candidate = static_cast<C>(static_cast<int>(i) + NarrowFold::s_iFirst);
            if (static_cast<C>(fold.Table()[i]) != folded || candidate == folded)
                continue;
            pair.complete = pair.complete && pair.b == folded;
            pair.b = candidate;
        }
    }
    return pair;
}

// Spends of `effort` what the comparison takes.
template <class C>
bool SameFolded(const C* text, const C* what, std::size_t count, const NarrowFold& fold, std::size_t& effort)
{
    std::size_t i = 0;
    while (i < count &&
           (text[i] == what[i] || static_cast<C>(fold(text[i])) == static_cast<C>(fold(what[i]))))
        ++i;
    effort -= std::min(effort, i);
    return i == count;
}

// Where `what` nearly occurs everywhere. There is at least one start.
template <class C>
bool SearchLinearly(const C* text, std::size_t starts, const C* what, std::size_t count,
                    const NarrowFold& fold)
{
    const auto key = [&fold](C element) { return static_cast<C>(fold(element)); };
    const LinearSearch<C, decltype(key)> search(what, count, key);
    return search.Find(text, starts + count - 1) != search.s_uNone;
}

template <class C>
bool SearchEach(const C* text, std::size_t starts, const C* what, std::size_t count, const NarrowFold& fold,
                std::size_t& effort)
{
    for (std::size_t at = 0; at < starts; ++at)
    {
        if (effort == 0)
            return SearchLinearly(text + at, starts - at, what, count, fold);
        if (SameFolded(text + at, what, count, fold, effort))
            return true;
    }
    return false;
}

// Only where the first and the last element fit can there be an occurrence.
template <class C>
bool SearchEnds(const C* text, std::size_t starts, const C* what, std::size_t count, const Pair<C>& first,
                const Pair<C>& last, const NarrowFold& fold, std::size_t& effort)
{
    using Text = SimdBlock<C>;
    const std::size_t toLast = count - 1;
    std::size_t at = 0;
    for (; starts - at >= Text::s_uCount && effort != 0; at += Text::s_uCount)
    {
        if (!Text::Any(Either(text + at, first.a, first.b) & Either(text + at + toLast, last.a, last.b)))
            continue;
        for (std::size_t i = at; i < at + Text::s_uCount; ++i)
            if (first.Has(text[i]) && last.Has(text[i + toLast]) &&
                SameFolded(text + i, what, count, fold, effort))
                return true;
    }
    return SearchEach(text + at, starts - at, what, count, fold, effort);
}

template <class C>
bool Search(const C* text, std::size_t length, const C* what, std::size_t count)
{
    if (count == 0)
        return true;
    if (count > length)
        return false;
    const NarrowFold fold;
    const std::size_t starts = length - count + 1;
    // What comparing may take before it is given up for a search that looks at `what` first.
    std::size_t effort = 4 * length;
    // The preparation pays for itself in a long text only.
    const std::size_t worthwhile = 256;
    if (starts < worthwhile)
        return SearchEach(text, starts, what, count, fold, effort);
    const Pair<C> first = SameFold(static_cast<C>(fold(what[0])), fold);
    const Pair<C> last = SameFold(static_cast<C>(fold(what[count - 1])), fold);
    // Some locales fold three elements and more into one.
    if (!first.complete || !last.complete)
        return SearchEach(text, starts, what, count, fold, effort);
    return SearchEnds(text, starts, what, count, first, last, fold, effort);
}

} // namespace

bool Contains(const wchar_t* text, std::size_t length, const wchar_t* what, std::size_t count)
{
    return TextFind<wchar_t>::In({text, length}, {what, count}) != std::wstring_view::npos;
}

bool Contains(const char* text, std::size_t length, const char* what, std::size_t count)
{
    return TextFind<char>::In({text, length}, {what, count}) != std::string_view::npos;
}

bool HasSubstring(const wchar_t* text, std::size_t length, const wchar_t* what, std::size_t count)
{
    return Search(text, length, what, count);
}

bool HasSubstring(const char* text, std::size_t length, const char* what, std::size_t count)
{
    return Search(text, length, what, count);
}

} // namespace Toolkit::Detail
