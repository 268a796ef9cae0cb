// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipNameConverter.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "toolkit/internal/text/TextEncoding.h"

namespace Toolkit
{

namespace
{

bool IsAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

bool DecodeLocally(const TString<char>& name, TString<wchar_t>& text)
{
    const std::size_t length = wxConvLocal.ToWChar(nullptr, 0, name.data(), name.size());
    if (length == wxCONV_FAILED || length == 0)
        return false;
    text.resize(length);
    return wxConvLocal.ToWChar(text.data(), length, name.data(), name.size()) == length;
}

// Each byte becomes the character of the same value.
TString<wchar_t> Widen(const TString<char>& name)
{
    TString<wchar_t> text;
    text.reserve(name.size());
    for (const char byte : name)
        text += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    return text;
}

} // namespace

TString<wchar_t> ZipNameConverter::Decode(const TString<char>& name)
{
    TString<wchar_t> text;
    if (!IsAscii(name) && (TextEncoding().Decode(name, text) || DecodeLocally(name, text)))
        return text;
    return Widen(name);
}

ZipNameConverter& ZipNameConverter::Instance()
{
    // Never destroyed: a stream may outlive every static object.
    static ZipNameConverter& instance = *new ZipNameConverter;
    return instance;
}

std::size_t ZipNameConverter::ToWChar(wchar_t* to, std::size_t capacity, const char* from,
                                      std::size_t length) const
{
    // The terminating NUL belongs to the text when no length is given.
    const std::size_t bytes = length == wxNO_LEN ? std::strlen(from) + 1 : length;
    if (IsAscii({from, bytes}))
    {
        if (to != nullptr && capacity < bytes)
            return wxCONV_FAILED;
        if (to != nullptr)
            std::copy_n(from, bytes, to);
        return bytes;
    }
    const TString<wchar_t> text = Decode(TString<char>(std::string(from, bytes)));
    if (to == nullptr)
        return text.size();
    if (capacity < text.size())
        return wxCONV_FAILED;
    std::copy(text.begin(), text.end(), to);
    return text.size();
}

std::size_t ZipNameConverter::FromWChar(char*, std::size_t, const wchar_t*, std::size_t) const
{
    return wxCONV_FAILED;
}

wxMBConv* ZipNameConverter::Clone() const
{
    return new ZipNameConverter;
}

} // namespace Toolkit
