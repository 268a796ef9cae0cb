// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/WideOutput.h"

#include <algorithm>
#include <cwchar>
#include <fstream>
#include <iostream>
#include <locale>
#include <mutex>

#include "toolkit/internal/system/NoCancellation.h"

namespace Toolkit
{

namespace
{

// The stream's buffer is safe across threads only as long as it is that of the C library. Recursive, as a
// buffer of the host may log in turn.
std::recursive_mutex s_mutex;

using Converter = std::codecvt<wchar_t, char, std::mbstate_t>;

bool IsAscii(wchar_t character)
{
    return static_cast<std::make_unsigned_t<wchar_t>>(character) <= 0x7F;
}

bool CanConvert(const Converter& converter, wchar_t character)
{
    std::mbstate_t state = std::mbstate_t();
    const wchar_t* fromEnd = nullptr;
    char bytes[16];
    char* bytesEnd = nullptr;
    return converter.out(state, &character, &character + 1, fromEnd, bytes, bytes + sizeof(bytes),
                         bytesEnd) == std::codecvt_base::ok;
}

// `text` with "?" for what the buffer's own locale cannot convert. A wide file buffer keeps such a character
// for ever and takes nothing more; no other buffer does.
TString<wchar_t> Convertible(const TString<wchar_t>& text, const std::wstreambuf& buffer)
{
    TString<wchar_t> result(text);
    if (dynamic_cast<const std::wfilebuf*>(&buffer) == nullptr)
        return result;
    const std::locale locale = buffer.getloc();
    const Converter& converter = std::use_facet<Converter>(locale);
    std::replace_if(
        result.begin(), result.end(),
        [&converter](wchar_t character) { return !IsAscii(character) && !CanConvert(converter, character); },
        L'?');
    return result;
}

} // namespace

void WriteToWideOutput(const TString<wchar_t>& text)
{
    const NoCancellation whole;
    const std::lock_guard<std::recursive_mutex> lock(s_mutex);
    const std::wstreambuf* const buffer = std::wcout.rdbuf();
    if (buffer == nullptr || std::all_of(text.begin(), text.end(), IsAscii))
        std::wcout << text;
    else
        std::wcout << Convertible(text, *buffer);
    if (!std::wcout)
        std::wcout.clear();
}

} // namespace Toolkit
