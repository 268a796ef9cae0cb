// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_BYTESCONTENT_H
#define TOOLKIT_TESTS_SUPPORT_BYTESCONTENT_H

#include <memory>
#include <string>

#include "toolkit/encoding/Bytes.h"

namespace ToolkitTest
{

// The text as the array that the library's buffers take.
inline const unsigned char* Raw(const std::string& bytes)
{
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

// What a buffer holds.
inline std::string ContentOf(const Toolkit::Bytes& bytes)
{
    unsigned char* out = nullptr;
    unsigned int size = 0;
    bytes.GetBytes(&out, &size);
    const std::unique_ptr<unsigned char[]> owner(out);
    return std::string(out, out + size);
}

} // namespace ToolkitTest

#endif
