#include "toolkit/log/LogText.h"

#include <charconv>
#include <cstring>
#include <cwchar>

#include "toolkit/encoding/UTF8.h"

namespace Toolkit
{

namespace
{

template <class T>
void AppendDecimal(TString<wchar_t>& text, T value)
{
    char digits[24];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof(digits), value);
    text.append(digits, end.ptr);
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

void LogText::AppendUtf8(TString<wchar_t>& text, const TString<char>& bytes)
{
    text += UTF8::ToUNICODE(bytes);
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
    const std::size_t before = text.size();
    text.resize(before + length);
    std::use_facet<std::ctype<wchar_t>>(std::locale::classic())
        .widen(bytes, bytes + length, text.data() + before);
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
