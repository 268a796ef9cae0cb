// SPDX-License-Identifier: MIT
#include "toolkit/internal/text/WrittenText.h"

namespace Toolkit
{

void AppendWritten(std::string& text, std::size_t room, const WriteText& write)
{
    const std::size_t before = text.size();
#ifdef __cpp_lib_string_resize_and_overwrite
    text.resize_and_overwrite(before + room, [before, room, &write](char* memory, std::size_t)
                              { return before + write(memory + before, room); });
#else
    text.resize(before + room);
    text.resize(before + write(&text[before], room));
#endif
}

} // namespace Toolkit
