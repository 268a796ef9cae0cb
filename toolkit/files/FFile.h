// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_FFILE_H
#define TOOLKIT_FILES_FFILE_H

#include <cstddef>
#include <cstdio>

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

class wxFFile;

namespace Toolkit
{

/// A buffered file. The object owns it, closes it when it is destroyed, and belongs to one thread at a time.
/// Failures are returned, not logged; on a closed object no operation does anything.
///
/// @code
/// Toolkit::FFile notes;
/// if (notes.Open(L"notes.txt", L"w"))
///     notes.Write(L"milk\n");
/// if (!notes.Close())
///     return Fail("the disk is full");
/// @endcode
class TOOLKIT_API FFile
{
public:
    FFile();
    ~FFile();

    FFile(const FFile&) = delete;
    FFile& operator=(const FFile&) = delete;

    /// True when the file was opened; a file opened before is closed first. `mode` is that of C's `fopen`,
    /// for instance "rb". A folder, a path that holds a NUL, and a FIFO opened for reading return false
    /// without waiting. A read waits for nothing but the input of a terminal.
    bool Open(const TString<wchar_t>& path, const TString<wchar_t>& mode);

    /// Takes over an open stream instead; a file opened before is closed first. What is written to a stream
    /// without a buffer reaches the system at once, each text in one write.
    void Attach(std::FILE* stream);

    /// True while a file is open.
    bool IsOpened() const;

    /// The number of bytes read, at most `count`; 0 at the end, on an error and when closed.
    std::size_t Read(void* buffer, unsigned int count);

    /// Writes the text as UTF-8 without a byte-order mark, up to its first NUL; a text that has no UTF-8 form
    /// writes nothing. An error is not reported.
    void Write(const TString<wchar_t>& text);

    /// True when what was written has reached the system; false when closed.
    bool Flush();
    /// True when nothing was lost; true when closed.
    bool Close();

    /// The length of the file in bytes; -1 when closed.
    long long GetLength() const;
    /// Where the file stands, in bytes; -1 when closed.
    long long GetOffset() const;

    /// Moves to `offset` from the start, or by `offset` from where the file stands; false when closed.
    bool Seek(long long offset, bool fromStart);
    /// Moves to `offset` from the end; false when closed.
    bool SeekEnd(long long offset);

    /// True when a read has met the end of the file; true when closed.
    bool IsEOF() const;

    /// True when a regular file lies at `path`.
    static bool Exists(const TString<wchar_t>& path);

private:
    void WriteBuffered();
    void WriteThrough();

    wxFFile* m_pFile;
    // Nothing is buffered: texts and positions pass the stream by, which costs half as much.
    bool m_bUnbuffered;
    // A write that passed the stream by has failed.
    bool m_bLostText;
    // What is being written; kept for its memory.
    TString<char> m_strBytes;
};

} // namespace Toolkit

#endif
