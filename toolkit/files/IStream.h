// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_ISTREAM_H
#define TOOLKIT_FILES_ISTREAM_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/files/StreamResult.h"

namespace Toolkit
{

/// A binary stream that objects are written to and read from, item by item in one order; the bytes of the
/// three kinds of item are described in docs/file-formats.md. There is no seek. A stream belongs to one
/// thread at a time. Failures are told by the result and leave what was already transferred.
///
/// @code
/// Toolkit::FSStream window(L"window.bin", Toolkit::FSStream::ModeRead);
/// Toolkit::IStream& stream = window;
/// unsigned int width = 0;
/// if (stream.Read(width) == Toolkit::StreamResult::Ok)
///     Show(std::to_string(width));
/// @endcode
class TOOLKIT_API IStream
{
public:
    virtual ~IStream() = default;

    /// Writes a string: its count of bytes, then its characters of 4 bytes each.
    virtual StreamResult Write(const TString<wchar_t>& text) = 0;
    /// Writes a value of 4 bytes in the host's order.
    virtual StreamResult Write(unsigned int value) = 0;
    /// Writes a raw block of `size` bytes with no count in front.
    virtual StreamResult Write(const void* data, unsigned int size) = 0;

    /// Reads a string.
    virtual StreamResult Read(TString<wchar_t>& text) = 0;
    /// Reads a value of 4 bytes in the host's order.
    virtual StreamResult Read(unsigned int& value) = 0;
    /// Reads a raw block of `size` bytes.
    virtual StreamResult Read(void* data, unsigned int size) = 0;

    /// The stream's size in bytes, 0 when it is not open.
    virtual unsigned int Length() const = 0;
};

} // namespace Toolkit

#endif
