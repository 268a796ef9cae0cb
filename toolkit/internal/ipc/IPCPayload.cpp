// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/IPCPayload.h"

#include <algorithm>
#include <cstring>
#include <string>

#include <wx/ipcbase.h>

#include "toolkit/internal/text/TextEncoding.h"

namespace Toolkit
{

namespace
{

// The whole elements before the first NUL; the data need not be aligned.
template <class Element>
TString<char> BytesBeforeNul(const void* data, std::size_t size)
{
    std::basic_string<Element> elements(size / sizeof(Element), Element());
    if (!elements.empty())
        std::memcpy(&elements[0], data, elements.size() * sizeof(Element));
    elements.resize(std::min(elements.find(Element()), elements.size()));
    return TString<char>(
        std::string(reinterpret_cast<const char*>(elements.data()), elements.size() * sizeof(Element)));
}

// Text of such elements in the order of this machine's bytes.
template <class Element>
bool DecodeElements(const void* data, std::size_t size, TString<wchar_t>& text)
{
    const Element mark = 0xfeff;
    const TextEncoding encoding(reinterpret_cast<const char*>(&mark), sizeof mark);
    return encoding.Decode(BytesBeforeNul<Element>(data, size), text);
}

bool DecodeText(const void* data, std::size_t size, int format, TString<wchar_t>& text)
{
    switch (format)
    {
    case wxIPC_UTF16TEXT:
        return DecodeElements<char16_t>(data, size, text);
    case wxIPC_UTF32TEXT:
        return DecodeElements<char32_t>(data, size, text);
    default:
        return TextEncoding().Decode(BytesBeforeNul<char>(data, size), text);
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
