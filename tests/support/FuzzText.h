// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_FUZZTEXT_H
#define TOOLKIT_TESTS_SUPPORT_FUZZTEXT_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "toolkit/encoding/UTF8.h"

namespace ToolkitTest
{

// Any wide text out of a fuzzer's bytes: UTF-8 where they are that, else a character for each byte, with the
// bytes F8 to FF standing for characters that have no UTF-8 form and for the largest one.
inline std::wstring FuzzText(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::wstring text = Toolkit::UTF8::ToUNICODE(bytes);
    if (!text.empty())
        return text;
    static const std::uint32_t special[] = {0xD800,     0xDFFF,     0x110000,   0x80000041,
                                            0xFFFFFFFF, 0x7FFFFFFF, 0x0010FFFF, 0x00010000};
    std::wstring wide;
    for (std::size_t i = 0; i < size; ++i)
        wide += static_cast<wchar_t>(data[i] < 0xF8 ? data[i] : special[data[i] - 0xF8]);
    return wide;
}

} // namespace ToolkitTest

#endif
