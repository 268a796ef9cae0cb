#include "toolkit/core/TString.h"

#include <algorithm>
#include <cctype>
#include <cwchar>
#include <cwctype>
#include <vector>

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

// The narrow `tolower` of the current locale. It is defined for bytes only; every other element stays as it
// is.
int FoldNarrow(int element)
{
    if (element < s_iFirstNarrow || element > s_iLastNarrow || element == EOF)
        return element;
    return std::tolower(element);
}

wchar_t FoldForSearch(wchar_t element)
{
    return static_cast<wchar_t>(FoldNarrow(element));
}

char FoldForSearch(char byte)
{
    return static_cast<char>(FoldNarrow(static_cast<signed char>(byte)));
}

int FoldForOrder(wchar_t element)
{
    return static_cast<int>(std::towlower(static_cast<std::wint_t>(element)));
}

int FoldForOrder(char byte)
{
    return FoldNarrow(static_cast<signed char>(byte));
}

// ---- substring without case
// ----------------------------------------------------------------------------------

// The elements that fold to the same one as `element`.
template <class C>
std::vector<C> SameFold(C element)
{
    const C folded = FoldForSearch(element);
    std::vector<C> same;
    for (int candidate = s_iFirstNarrow; candidate <= s_iLastNarrow; ++candidate)
        if (static_cast<C>(candidate) == candidate && FoldForSearch(static_cast<C>(candidate)) == folded)
            same.push_back(static_cast<C>(candidate));
    if (std::find(same.begin(), same.end(), folded) == same.end())
        same.push_back(folded);
    return same;
}

// The first position from `position` on where one of the two elements stands; `length` if there is none.
template <class C>
std::size_t FindEither(const C* text, std::size_t position, std::size_t length, C a, C b)
{
    const std::size_t block = 16;
    for (; length - position >= block; position += block)
    {
        int found = 0;
        for (std::size_t i = 0; i < block; ++i)
            found |= static_cast<int>(text[position + i] == a) | static_cast<int>(text[position + i] == b);
        if (found != 0)
            break;
    }
    while (position < length && text[position] != a && text[position] != b)
        ++position;
    return position;
}

template <class C>
bool SameFolded(const C* text, const C* folded, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        if (text[i] != folded[i] && FoldForSearch(text[i]) != folded[i])
            return false;
    return true;
}

template <class C>
bool Search(const C* text, std::size_t length, const C* what, std::size_t count)
{
    if (count == 0)
        return true;
    if (count > length)
        return false;
    std::vector<C> folded(what, what + count);
    std::transform(folded.begin(), folded.end(), folded.begin(),
                   [](C element) { return FoldForSearch(element); });

    const std::vector<C> first = SameFold(what[0]);
    const std::size_t starts = length - count + 1;
    // Some locales fold more than two elements into one: their starts are looked for pair by pair.
    for (std::size_t pair = 0; pair < first.size(); pair += 2)
    {
        const C a = first[pair];
        const C b = first[std::min(pair + 1, first.size() - 1)];
        for (std::size_t at = FindEither(text, 0, starts, a, b); at < starts;
             at = FindEither(text, at + 1, starts, a, b))
            if (SameFolded(text + at, folded.data(), count))
                return true;
    }
    return false;
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
    const std::size_t common = std::min(aLength, bLength);
    for (std::size_t i = FindDifference(a, b, 0, common); i < common; i = FindDifference(a, b, i + 1, common))
    {
        const int x = FoldForOrder(a[i]);
        const int y = FoldForOrder(b[i]);
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

// The next match can begin at the earliest where its last element is the first one replaced.
void ReplaceResuming(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    std::size_t from = 0;
    for (std::size_t found = text.find(what); found != text.npos; found = text.find(what, from))
    {
        text.replace(found, what.size(), with);
        const std::size_t overlap = what.empty() ? 0 : what.size() - 1;
        from = found - std::min(found, overlap);
    }
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
    if (IsIndependent(what, with))
        ReplaceIndependent(text, what, with);
    else
        ReplaceResuming(text, what, with);
}

} // namespace Detail

} // namespace Toolkit
