#include "toolkit/core/TString.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <type_traits>
#include <utility>

namespace Toolkit
{

template <>
const TString<char>& TString<char>::Empty()
{
    static const TString<char> s_strEmpty;
    return s_strEmpty;
}

template <>
const TString<wchar_t>& TString<wchar_t>::Empty()
{
    static const TString<wchar_t> s_strEmpty;
    return s_strEmpty;
}

namespace Detail
{

namespace
{

// ---- folding
// -------------------------------------------------------------------------------------------------

const int s_iFirstNarrow = -128;
const int s_iLastNarrow = 255;
const std::size_t s_uNarrow = 384;

// The narrow `tolower` of the current locale. It is defined from -128 to 255; every other element stays as it
// is.
class NarrowFold
{
public:
#ifdef __GLIBC__
    NarrowFold() : m_pTable(*__ctype_tolower_loc() + s_iFirstNarrow) {}
#else
    NarrowFold() : m_pTable(m_table)
    {
        for (std::size_t i = 0; i < s_uNarrow; ++i)
            m_table[i] = ToLower(static_cast<int>(i) + s_iFirstNarrow);
    }
#endif
    NarrowFold(const NarrowFold&) = delete;
    NarrowFold& operator=(const NarrowFold&) = delete;

    wchar_t operator()(wchar_t element) const
    {
        return element < s_iFirstNarrow || element > s_iLastNarrow ? element
                                                                   : m_pTable[element - s_iFirstNarrow];
    }
    // A byte counts as signed.
    int operator()(char byte) const
    {
        return m_pTable[static_cast<signed char>(byte) - s_iFirstNarrow];
    }

    // The results for s_iFirstNarrow and what follows, s_uNarrow of them.
    const std::int32_t* Table() const
    {
        return m_pTable;
    }

private:
#ifndef __GLIBC__
    static int ToLower(int element)
    {
        const bool negative = element < 0 && element != EOF;
        return std::tolower(negative ? static_cast<unsigned char>(element) : element);
    }

    std::int32_t m_table[s_uNarrow];
#endif
    const std::int32_t* const m_pTable;
};

int FoldForOrder(wchar_t element, const NarrowFold&)
{
    return static_cast<int>(std::towlower(static_cast<std::wint_t>(element)));
}

int FoldForOrder(char byte, const NarrowFold& fold)
{
    return fold(byte);
}

// ---- substring without case
// ----------------------------------------------------------------------------------

// A few neighbouring elements, compared at once.
template <class C>
struct Lanes
{
    using Element = std::conditional_t<sizeof(C) == 1, signed char, std::int32_t>;
    typedef Element Vector __attribute__((vector_size(16)));

    static const std::size_t s_uCount = sizeof(Vector) / sizeof(C);

    // All ones where the element is `a` or `b`.
    static Vector Either(const C* text, C a, C b)
    {
        Vector elements;
        std::memcpy(&elements, text, sizeof elements);
        return (elements == (Vector{} + static_cast<Element>(a))) |
               (elements == (Vector{} + static_cast<Element>(b)));
    }

    static bool Any(Vector mask)
    {
        std::uint64_t halves[2];
        std::memcpy(halves, &mask, sizeof halves);
        return (halves[0] | halves[1]) != 0;
    }
};

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
    using Table = Lanes<std::int32_t>;
    // The table knows a byte by its unsigned value, but for the one that is EOF.
    const std::int32_t a = std::is_same_v<C, char> ? static_cast<unsigned char>(folded) : folded;
    const std::int32_t b = folded;
    const std::size_t candidates = std::is_same_v<C, char> ? s_uNarrow - 128 : s_uNarrow;
    Pair<C> pair{folded, folded, true};
    for (std::size_t block = 0; block < candidates; block += Table::s_uCount)
    {
        if (!Table::Any(Table::Either(fold.Table() + block, a, b)))
            continue;
        for (std::size_t i = block; i < block + Table::s_uCount; ++i)
        {
            const C candidate = static_cast<C>(static_cast<int>(i) + s_iFirstNarrow);
            if (static_cast<C>(fold.Table()[i]) != folded || candidate == folded)
                continue;
            pair.complete = pair.complete && pair.b == folded;
            pair.b = candidate;
        }
    }
    return pair;
}

template <class C>
bool SameFolded(const C* text, const C* what, std::size_t count, const NarrowFold& fold)
{
    for (std::size_t i = 0; i < count; ++i)
        if (text[i] != what[i] && static_cast<C>(fold(text[i])) != static_cast<C>(fold(what[i])))
            return false;
    return true;
}

template <class C>
bool SearchEach(const C* text, std::size_t starts, const C* what, std::size_t count, const NarrowFold& fold)
{
    for (std::size_t at = 0; at < starts; ++at)
        if (SameFolded(text + at, what, count, fold))
            return true;
    return false;
}

// Only where the first and the last element fit can there be an occurrence.
template <class C>
bool SearchEnds(const C* text, std::size_t starts, const C* what, std::size_t count, const Pair<C>& first,
                const Pair<C>& last, const NarrowFold& fold)
{
    using Text = Lanes<C>;
    const std::size_t toLast = count - 1;
    std::size_t at = 0;
    for (; starts - at >= Text::s_uCount; at += Text::s_uCount)
    {
        if (!Text::Any(Text::Either(text + at, first.a, first.b) &
                       Text::Either(text + at + toLast, last.a, last.b)))
            continue;
        for (std::size_t i = at; i < at + Text::s_uCount; ++i)
            if (first.Has(text[i]) && last.Has(text[i + toLast]) && SameFolded(text + i, what, count, fold))
                return true;
    }
    return SearchEach(text + at, starts - at, what, count, fold);
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
    // The preparation pays for itself in a long text only.
    const std::size_t worthwhile = 256;
    if (starts < worthwhile)
        return SearchEach(text, starts, what, count, fold);
    const Pair<C> first = SameFold(static_cast<C>(fold(what[0])), fold);
    const Pair<C> last = SameFold(static_cast<C>(fold(what[count - 1])), fold);
    // Some locales fold three elements and more into one.
    if (!first.complete || !last.complete)
        return SearchEach(text, starts, what, count, fold);
    return SearchEnds(text, starts, what, count, first, last, fold);
}

// ---- comparison without case
// ---------------------------------------------------------------------------------

// The first position where the two differ as they stand; `length` if there is none.
template <class C>
std::size_t FindDifference(const C* a, const C* b, std::size_t position, std::size_t length)
{
    const std::size_t block = 8;
    for (; length - position >= block; position += block)
    {
        int different = 0;
        for (std::size_t i = 0; i < block; ++i)
            different |= static_cast<int>(a[position + i] != b[position + i]);
        if (different != 0)
            break;
    }
    while (position < length && a[position] == b[position])
        ++position;
    return position;
}

template <class C>
int Compare(const C* a, std::size_t aLength, const C* b, std::size_t bLength)
{
    const NarrowFold fold;
    const std::size_t common = std::min(aLength, bLength);
    for (std::size_t i = FindDifference(a, b, 0, common); i < common; i = FindDifference(a, b, i + 1, common))
    {
        const int x = FoldForOrder(a[i], fold);
        const int y = FoldForOrder(b[i], fold);
        if (x != y)
            return x < y ? -1 : 1;
    }
    if (aLength == bLength)
        return 0;
    return aLength < bLength ? -1 : 1;
}

// ---- replacement
// ---------------------------------------------------------------------------------------------

// True when no occurrence of `what` can overlap an occurrence of `with`, so that a replacement creates no
// match.
bool IsIndependent(const std::wstring& what, const std::wstring& with)
{
    if (with.empty() || with.find(what) != with.npos || what.find(with) != what.npos)
        return false;
    for (std::size_t count = 1; count < std::min(what.size(), with.size()); ++count)
        if (what.compare(0, count, with, with.size() - count, count) == 0 ||
            what.compare(what.size() - count, count, with, 0, count) == 0)
            return false;
    return true;
}

void ReplaceIndependent(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    std::size_t found = text.find(what);
    if (found == text.npos)
        return;
    std::wstring result;
    result.reserve(text.size());
    std::size_t done = 0;
    for (; found != text.npos; found = text.find(what, done))
    {
        result.append(text, done, found - done);
        result += with;
        done = found + what.size();
    }
    result.append(text, done);
    text = std::move(result);
}

// Moves the text element by element to its front and takes each match away as it ends there. The replacement,
// which is no longer than the match, goes back in front of what is still to be moved.
void ReplaceShrinking(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    std::size_t done = text.find(what);
    std::size_t next = done;
    while (next < text.size())
    {
        text[done++] = text[next++];
        if (done < what.size() || text[done - 1] != what.back() ||
            text.compare(done - what.size(), what.size(), what) != 0)
            continue;
        done -= what.size();
        next -= with.size();
        with.copy(&text[next], with.size());
    }
    text.resize(done);
}

// The next match can begin at the earliest where its last element is the first one replaced.
void ReplaceResuming(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    const std::size_t overlap = what.empty() ? 0 : what.size() - 1;
    for (std::size_t found = text.find(what); found != text.npos;
         found = text.find(what, found - std::min(found, overlap)))
        text.replace(found, what.size(), with);
}

} // namespace

bool HasSubstring(const wchar_t* text, std::size_t length, const wchar_t* what, std::size_t count)
{
    return Search(text, length, what, count);
}

bool HasSubstring(const char* text, std::size_t length, const char* what, std::size_t count)
{
    return Search(text, length, what, count);
}

int CompareNoCase(const wchar_t* a, std::size_t aLength, const wchar_t* b, std::size_t bLength)
{
    return Compare(a, aLength, b, bLength);
}

int CompareNoCase(const char* a, std::size_t aLength, const char* b, std::size_t bLength)
{
    return Compare(a, aLength, b, bLength);
}

void Replace(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    if (&what == &text || &with == &text)
        Replace(text, std::wstring(what), std::wstring(with));
    else if (text.find(what) == text.npos)
        return;
    else if (IsIndependent(what, with))
        ReplaceIndependent(text, what, with);
    else if (with.size() <= what.size() && with != what)
        ReplaceShrinking(text, what, with);
    else
        ReplaceResuming(text, what, with);
}

} // namespace Detail

} // namespace Toolkit
