// SPDX-License-Identifier: MIT
#include "toolkit/internal/charsets/FoldedText.h"

#include <algorithm>

#include "toolkit/internal/icu/IcuPart.h"

namespace Toolkit
{

Result<std::string> FoldText(std::string_view text)
{
    std::string folded;
    for (const char character : text)
        folded +=
            {'\0', character >= 'A' && character <= 'Z' ? static_cast<char>(character | 0x20) : character};
    const auto isAscii = [](char character) { return static_cast<signed char>(character) >= 0; };
    if (std::all_of(text.begin(), text.end(), isAscii))
        return folded;
    const Result<const IcuCalls*> icu = LoadIcu();
    if (!icu)
        return icu.error();
    return (*icu)->fold(text);
}

} // namespace Toolkit
