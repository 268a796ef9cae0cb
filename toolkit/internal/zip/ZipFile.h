// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZIP_ZIPFILE_H
#define TOOLKIT_INTERNAL_ZIP_ZIPFILE_H

#include <array>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include "toolkit/core/TString.h"
#include "toolkit/internal/system/Descriptor.h"

struct stat;

namespace Toolkit
{

// The open file of an archive, read at any place by as many streams as share it, and the few facts of the
// format (APPNOTE.TXT of PKWARE) that wxWidgets leaves unchecked. It waits for no FIFO. Failures are
// answered. The streams belong to one thread at a time together.
class ZipFile
{
public:
    // How content is packed.
    static constexpr int s_iStored = 0;
    static constexpr int s_iDeflated = 8;

    // What the directory says of an entry's content.
    struct ContentRecord
    {
        int flags = 0;
        int method = 0;
        unsigned int checksum = 0;
        long long compressedSize = 0;
        long long size = 0;
        // Where the record in front of the content lies.
        long long offset = 0;

        bool IsEncrypted() const;
    };

    // Where the content of an entry lies, and how long it is, by the record in front of it; by the directory
    // where that record leaves the lengths to what follows the content.
    struct Content
    {
        // True when there is such a record.
        bool found = false;
        // True when it and what follows the content say the same of it as the directory: nothing encrypted,
        // the same method and the same checksum, and the same lengths of stored content.
        bool consistent = false;
        long long offset = 0;
        long long compressedSize = 0;
        long long size = 0;
    };

    explicit ZipFile(const TString<wchar_t>& path);
    // A regular file that is open already.
    explicit ZipFile(Descriptor file);
    ~ZipFile();

    ZipFile(const ZipFile&) = delete;
    ZipFile& operator=(const ZipFile&) = delete;

    // False when nothing lies at the path, or the user may not read it.
    bool Exists() const { return m_bExists; }
    // True when it is a file long enough for an archive; nothing is known of its content.
    bool MayBeArchive() const;

    // True for what `fstat` or `stat` says of this file, whatever path led there.
    bool IsSame(const struct stat& status) const;

    // In bytes, when the file was opened.
    long long GetLength() const { return m_iLength; }

    // The bytes read, less than `count` only at the end of the file or on an error.
    std::size_t ReadAt(long long offset, void* buffer, std::size_t count) const;

    // The same for a few bytes, at most s_uWindow. They come out of windows on the file that are kept for the
    // places that are read again and again: the end, the beginning of the directory, an entry's record.
    std::size_t ReadRecord(long long offset, void* buffer, std::size_t count) const;

    Content FindContent(const ContentRecord& entry) const;

    // What a record has no room for lies in one of the fields of `length` bytes at `offset` that follow its
    // name (ZIP64). Appends the numbers that are there to `numbers`, `count` at most; true unless the field
    // is there and holds fewer, or is longer than all of them.
    bool ReadLongNumbers(long long offset, std::size_t length, std::size_t count,
                         std::vector<unsigned long long>& numbers) const;

    // The declared length of the entry's content, as far as so much can come of what is in the file; never
    // more than 64 MiB.
    std::size_t GetCredibleLength(const ContentRecord& entry) const;

    // A record of the directory.
    struct DirectoryRecord : ContentRecord
    {
        // In whatever charset.
        std::string name;
        // As MS-DOS writes them.
        unsigned int time = 0;
        unsigned int date = 0;
        // As Unix writes it; 0 where another system made the entry.
        unsigned int mode = 0;
        // Where the next record lies, or the end of the directory; 0 when this one cannot be read.
        long long next = 0;
    };

    // Without a name when it cannot be read.
    DirectoryRecord ReadDirectoryRecord(long long offset) const;

    // True when the directory ends at `offset`.
    bool IsEndOfDirectory(long long offset) const;

    static constexpr std::size_t s_uWindow = 4096;

private:
    struct Window
    {
        long long offset = 0;
        std::size_t length = 0;
        unsigned long long lastUse = 0;
        std::vector<char> bytes;
    };

    Window& FindWindow(long long offset, std::size_t count) const;
    bool ReadLongSizes(long long offset, std::size_t length, std::initializer_list<long long*> all) const;
    bool ReadLocalLengths(const unsigned char* record, Content& content) const;
    bool IsConsistent(const ContentRecord& entry, const unsigned char* record, const Content& content) const;
    bool HasChecksum(long long offset, unsigned int checksum) const;

    Descriptor m_file;
    long long m_iLength = 0;
    bool m_bExists;
    mutable std::array<Window, 4> m_windows;
    mutable unsigned long long m_uUses = 0;
};

} // namespace Toolkit

#endif
