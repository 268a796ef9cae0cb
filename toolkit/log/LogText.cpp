// SPDX-License-Identifier: MIT
#include "toolkit/log/LogText.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/text/AsciiText.h"
#include "toolkit/internal/text/DecimalDigits.h"

namespace Toolkit
{

namespace
{

// How much is widened at a time, so that the text grows by what it then holds.
const std::size_t s_uPiece = 128;

template <class T>
void AppendDecimal(TString<wchar_t>& text, T value)
{
    wchar_t digits[DecimalDigits::s_iMost];
    text.append(digits, static_cast<std::size_t>(DecimalDigits::Write(digits, value) - digits));
}

} // namespace

void LogText::AppendNumber(TString<wchar_t>& text, long long value)
{
    AppendDecimal(text, value);
}

void LogText::AppendNumber(TString<wchar_t>& text, unsigned long long value)
{
    AppendDecimal(text, value);
}

void LogText::AppendUtf8(TString<wchar_t>& text, std::string_view bytes)
{
    const std::size_t before = text.size();
    text.resize(before + bytes.size());
    if (AsciiText::Widen(bytes.data(), bytes.size(), text.data() + before))
        return;
    text.resize(before);
    text += UTF8::ToUNICODE(std::string(bytes));
}

wchar_t LogText::Widened(char byte)
{
    return std::use_facet<std::ctype<wchar_t>>(std::locale::classic()).widen(byte);
}

void LogText::AppendCharacter(TString<wchar_t>& text, wchar_t character)
{
    if (static_cast<wint_t>(character) != WEOF)
        text += character;
}

void LogText::AppendNarrow(TString<wchar_t>& text, const char* bytes, std::size_t length)
{
    wchar_t piece[s_uPiece];
    for (std::size_t size = 0; length > 0; bytes += size, length -= size)
    {
        size = std::min(length, s_uPiece);
        if (!AsciiText::Widen(bytes, size, piece))
            std::use_facet<std::ctype<wchar_t>>(std::locale::classic()).widen(bytes, bytes + size, piece);
        text.append(piece, size);
    }
}

void LogText::AppendArray(TString<wchar_t>& text, const wchar_t* characters, std::size_t limit)
{
    if (characters != nullptr)
        text.append(characters, wcsnlen(characters, limit));
}

void LogText::AppendArray(TString<wchar_t>& text, const char* bytes, std::size_t limit)
{
    if (bytes != nullptr)
        AppendNarrow(text, bytes, strnlen(bytes, limit));
}

} // namespace Toolkit
