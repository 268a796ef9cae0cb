// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/IPCPayload.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <wx/ipcbase.h>

#include "toolkit/internal/text/Utf8Codec.h"

namespace Toolkit
{

namespace
{

const char32_t s_uLastCharacter = 0x10ffff;

bool IsSurrogate(char32_t c)
{
    return c >= 0xd800 && c <= 0xdfff;
}

// The whole elements before the first zero; the data need not be aligned.
template <class Element>
std::basic_string<Element> ElementsOf(const void* data, std::size_t size)
{
    std::basic_string<Element> elements(size / sizeof(Element), Element());
    if (!elements.empty())
        std::memcpy(&elements[0], data, elements.size() * sizeof(Element));
    elements.resize(std::min(elements.find(Element()), elements.size()));
    return elements;
}

bool FromUTF8(const TString<char>& bytes, TString<wchar_t>& text)
{
    text = Utf8Codec::Decode(bytes);
    return bytes.empty() || !text.empty();
}

bool FromUTF16(const std::u16string& units, TString<wchar_t>& text)
{
    text.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i)
    {
        char32_t c = units[i];
        if (IsSurrogate(c))
        {
            const char32_t low = i + 1 < units.size() ? units[i + 1] : 0;
            if (c >= 0xdc00 || low < 0xdc00 || !IsSurrogate(low))
                return false;
            c = 0x10000 + (c - 0xd800) * 0x400 + (low - 0xdc00);
            ++i;
        }
        text += static_cast<wchar_t>(c);
    }
    return true;
}

bool FromUTF32(const std::u32string& units, TString<wchar_t>& text)
{
    text.assign(units.begin(), units.end());
    return std::none_of(units.begin(), units.end(),
                        [](char32_t c) { return c > s_uLastCharacter || IsSurrogate(c); });
}

bool DecodeText(const void* data, std::size_t size, int format, TString<wchar_t>& text)
{
    switch (format)
    {
    case wxIPC_UTF16TEXT:
        return FromUTF16(ElementsOf<char16_t>(data, size), text);
    case wxIPC_UTF32TEXT:
        return FromUTF32(ElementsOf<char32_t>(data, size), text);
    default:
        return FromUTF8(ElementsOf<char>(data, size), text);
    }
}

} // namespace

bool IPCPayload::Decode(const void* data, std::size_t size, int format, TString<wchar_t>& text)
{
    text.clear();
    const bool decoded = DecodeText(data, data == nullptr ? 0 : size, format, text);
    if (!decoded)
        text.clear();
    return decoded;
}

} // namespace Toolkit
