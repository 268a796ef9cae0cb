// SPDX-License-Identifier: MIT
#include "toolkit/internal/locale/ShortPattern.h"

#include <algorithm>
#include <vector>

namespace Toolkit
{

namespace
{

// What stands in front of a field: its punctuation and spaces, and whether words, or other fields, were left
// out there.
struct Gap
{
    std::wstring m_strText;
    bool m_bLeftOut = false;
};

struct Field
{
    Gap m_before;
    wchar_t m_cLetter;
    std::size_t m_uCount;
};

struct Fields
{
    std::vector<Field> m_list;
    Gap m_after;
};

// What a field stands for in the result: nothing for a field that is left out.
struct Token
{
    wchar_t m_cPart;
    std::wstring m_strText;
};

using TokenOf = Token (*)(const Field&);

bool IsLetter(wchar_t c)
{
    return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z');
}

bool IsSpace(wchar_t c)
{
    return (c >= L'\t' && c <= L'\r') || c == L' ' || c == 0xA0 || c == 0x1680 ||
           (c >= 0x2000 && c <= 0x200A) || c == 0x202F || c == 0x205F || c == 0x3000;
}

bool IsDirectionMark(wchar_t c)
{
    return c == 0x61C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
}

// "%" would make a token of the letter that follows.
bool IsPunctuation(wchar_t c)
{
    return c > L' ' && c < 0x7F && !IsLetter(c) && !(c >= L'0' && c <= L'9') && c != L'%';
}

// The position after a quoted text that begins at `start`.
std::size_t EndOfQuotation(const std::wstring& pattern, std::size_t start)
{
    return std::min(pattern.find(L'\'', start + 1), pattern.size() - 1) + 1;
}

void AddToGap(Gap& gap, wchar_t c)
{
    if (IsSpace(c))
        gap.m_strText += L' ';
    else if (IsPunctuation(c))
        gap.m_strText += c;
    else if (!IsDirectionMark(c))
        gap.m_bLeftOut = true;
}

Fields Parse(const std::wstring& pattern)
{
    Fields fields;
    for (std::size_t i = 0; i < pattern.size();)
    {
        const wchar_t c = pattern[i];
        if (IsLetter(c))
        {
            const std::size_t end = std::min(pattern.find_first_not_of(c, i), pattern.size());
            fields.m_list.push_back({std::move(fields.m_after), c, end - i});
            fields.m_after = Gap();
            i = end;
        }
        else if (c == L'\'')
        {
            fields.m_after.m_bLeftOut = true;
            i = EndOfQuotation(pattern, i);
        }
        else
        {
            AddToGap(fields.m_after, c);
            ++i;
        }
    }
    return fields;
}

std::wstring WithoutSpaces(std::wstring text)
{
    text.erase(std::remove(text.begin(), text.end(), L' '), text.end());
    return text;
}

struct Piece
{
    Gap m_before;
    Token m_token;
};

// The fields that have a token, each part once. What stands between two of them when others are left out is
// the last text that is not empty.
std::vector<Piece> PiecesOf(const Fields& fields, TokenOf tokenOf)
{
    std::vector<Piece> pieces;
    Gap before;
    for (const Field& field : fields.m_list)
    {
        if (!field.m_before.m_strText.empty())
            before.m_strText = field.m_before.m_strText;
        before.m_bLeftOut = before.m_bLeftOut || field.m_before.m_bLeftOut;
        const Token token = tokenOf(field);
        const bool repeated =
            std::any_of(pieces.begin(), pieces.end(),
                        [&token](const Piece& piece) { return piece.m_token.m_cPart == token.m_cPart; });
        if (token.m_strText.empty() || repeated)
        {
            before.m_bLeftOut = true;
            continue;
        }
        pieces.push_back({before, token});
        before = Gap();
    }
    return pieces;
}

bool HasPart(const std::vector<Piece>& pieces, wchar_t part)
{
    return std::any_of(pieces.begin(), pieces.end(),
                       [part](const Piece& piece) { return piece.m_token.m_cPart == part; });
}

Token DateTokenOf(const Field& field)
{
    switch (field.m_cLetter)
    {
    case L'd':
        return {L'd', field.m_uCount == 1 ? L"d" : L"dd"};
    case L'M':
    case L'L':
        return {L'M', field.m_uCount == 1 ? L"M" : L"MM"};
    case L'y':
    case L'u':
        return {L'y', field.m_uCount == 2 ? L"yy" : L"yyyy"};
    default:
        return {L' ', L""};
    }
}

Token TimeTokenOf(const Field& field)
{
    switch (field.m_cLetter)
    {
    case L'H':
    case L'k':
        return {L'H', field.m_uCount == 1 ? L"H" : L"HH"};
    case L'h':
    case L'K':
        return {L'H', field.m_uCount == 1 ? L"h" : L"hh"};
    case L'm':
        return {L'm', field.m_uCount == 1 ? L"m" : L"mm"};
    case L'a':
    case L'b':
    case L'B':
        return {L'a', L"a"};
    default:
        return {L' ', L""};
    }
}

// What separates numbers in this pattern: the first punctuation between two of them.
std::wstring SeparatorOf(const std::vector<Piece>& pieces)
{
    for (std::size_t i = 1; i < pieces.size(); ++i)
    {
        std::wstring separator = WithoutSpaces(pieces[i].m_before.m_strText);
        if (!separator.empty())
            return separator;
    }
    return L"/";
}

// Between the time and its marker: as it is, but for one space in place of several, or of what is left out.
std::wstring BesideTheMarker(const Gap& gap)
{
    if (gap.m_bLeftOut)
        return L" ";
    const std::wstring text = WithoutSpaces(gap.m_strText);
    return text == gap.m_strText ? text : text + L' ';
}

std::vector<Piece> TimePiecesOf(const Fields& fields)
{
    std::vector<Piece> pieces = PiecesOf(fields, TimeTokenOf);
    const bool halfDays = std::any_of(pieces.begin(), pieces.end(),
                                      [](const Piece& piece) { return piece.m_token.m_strText[0] == L'h'; });
    if (!halfDays)
        pieces.erase(std::remove_if(pieces.begin(), pieces.end(),
                                    [](const Piece& piece) { return piece.m_token.m_cPart == L'a'; }),
                     pieces.end());
    else if (!HasPart(pieces, L'a'))
        pieces.push_back({{L" ", false}, {L'a', L"a"}});
    return pieces;
}

} // namespace

std::wstring ShortPattern::Date(const std::wstring& pattern)
{
    const Fields fields = Parse(pattern);
    const std::vector<Piece> pieces = PiecesOf(fields, DateTokenOf);
    if (!HasPart(pieces, L'd') || !HasPart(pieces, L'M') || !HasPart(pieces, L'y'))
        return std::wstring();
    const std::wstring usual = SeparatorOf(pieces);
    std::wstring result = pieces[0].m_token.m_strText;
    for (std::size_t i = 1; i < pieces.size(); ++i)
    {
        const std::wstring separator = WithoutSpaces(pieces[i].m_before.m_strText);
        result += (separator.empty() ? usual : separator) + pieces[i].m_token.m_strText;
    }
    // The full stop that ends a date; not one that belongs to a word or to something that was left out.
    if (!fields.m_after.m_bLeftOut && !DateTokenOf(fields.m_list.back()).m_strText.empty())
        result += WithoutSpaces(fields.m_after.m_strText);
    return result;
}

std::wstring ShortPattern::Time(const std::wstring& pattern)
{
    const std::vector<Piece> pieces = TimePiecesOf(Parse(pattern));
    if (!HasPart(pieces, L'H') || !HasPart(pieces, L'm'))
        return std::wstring();
    std::wstring result = pieces[0].m_token.m_strText;
    for (std::size_t i = 1; i < pieces.size(); ++i)
    {
        const Gap& before = pieces[i].m_before;
        const bool marker = pieces[i].m_token.m_cPart == L'a' || pieces[i - 1].m_token.m_cPart == L'a';
        const std::wstring separator = WithoutSpaces(before.m_strText);
        result += marker ? BesideTheMarker(before) : separator.empty() ? L":" : separator;
        result += pieces[i].m_token.m_strText;
    }
    return result;
}

} // namespace Toolkit
