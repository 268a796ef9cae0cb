// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_FSSTREAM_H
#define TOOLKIT_FILES_FSSTREAM_H

#include "toolkit/core/NeedsWx.h"

#include <cstddef>
#include <cstdint>

#include <wx/file.h>

#include "toolkit/files/IStream.h"

namespace Toolkit
{

/// A binary stream over a file, open from its construction until its destruction. What is written reaches the
/// system at once, and a read asks the system for its own bytes at that moment, so that whatever others have
/// changed by then is seen. A file that cannot be opened leaves a stream that returns `NotOpen` from
/// everything; nothing is logged. A stream belongs to one thread at a time; streams on different files are
/// independent.
///
/// @code
/// Toolkit::FSStream stream(L"count.bin", Toolkit::FSStream::ModeWrite);
/// if (Toolkit::IsError(stream.Write(42U)))
///     return Fail("the disk is full");
/// @endcode
class TOOLKIT_API FSStream : public IStream
{
public:
    /// How a file is opened.
    enum OpenMode : std::uint32_t
    {
        /// An existing file, from its start.
        ModeRead = 0,
        /// Created, or emptied.
        ModeWrite = 1,
        /// An existing file, both ways.
        ModeReadWrite = 2,
        /// Written after its end; created if absent.
        ModeAppend = 3,
        /// Created; must be absent.
        ModeCreate = 4
    };

    /// A new file has permissions 0666 before the umask. A folder, a path that holds a NUL or has no UTF-8
    /// form, and an unknown mode do not open; a named pipe opens for writing only, and only while it is read.
    /// It waits for the input of a terminal and for the reader of a pipe alone; a read that would have to
    /// wait for anything else is a short transfer.
    FSStream(const TString<wchar_t>& path, OpenMode mode);
    ~FSStream() override;

    FSStream(const FSStream&) = delete;
    FSStream& operator=(const FSStream&) = delete;

    /// `Ok`, `NotOpen`; `Empty` for an empty text, of which only the count is written; `LengthWriteFailed`,
    /// also for a text whose bytes no count can hold, of which nothing is written; `ShortTransfer`.
    StreamResult Write(const TString<wchar_t>& text) override;
    /// `Ok` or `NotOpen`. Quirk: a short write of a value is `Failed`, not `ShortTransfer`.
    StreamResult Write(unsigned int value) override;
    /// `Ok`, `NotOpen` or `ShortTransfer`.
    StreamResult Write(const void* data, unsigned int size) override;

    /// `Ok`, `NotOpen`, `LengthReadFailed`, or `ShortTransfer` when the file ends before the text does:
    /// `text` is unchanged then, and no memory was taken for what is not there. The text ends at its first
    /// NUL; a count that is no multiple of 4 gives the whole characters and takes all its bytes.
    /// Quirk: a count of 0 returns `Empty` and leaves `text` as it was.
    StreamResult Read(TString<wchar_t>& text) override;
    /// `Ok`, `NotOpen`, or `ShortTransfer` with `value` unchanged.
    StreamResult Read(unsigned int& value) override;
    /// `Ok`, `NotOpen`, or `ShortTransfer` with the bytes that were there.
    StreamResult Read(void* data, unsigned int size) override;

    /// The file's size now, 4294967295 for anything longer; 0 when not open.
    unsigned int Length() const override;

private:
    bool ReadAll(void* data, std::size_t size);
    std::size_t Remaining() const;
    StreamResult ReadText(TString<wchar_t>& text, unsigned int count);

    wxFile m_file;
};

} // namespace Toolkit

#endif
