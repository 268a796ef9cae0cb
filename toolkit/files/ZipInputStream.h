// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_ZIPINPUTSTREAM_H
#define TOOLKIT_FILES_ZIPINPUTSTREAM_H

#include <cstddef>
#include <memory>
#include <vector>

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/files/InputStream.h"

class wxZipEntry;

namespace Toolkit
{

class TextReader;
class ZipEntryStream;
class ZipFile;

/// The stream of an open archive: it walks through the archive's directory and yields the content of the
/// entry at which ArchiveZip has positioned it. It is shared by its archive and everyone that got it from
/// there, and stays usable when the archive is closed. It belongs to one thread at a time. Content is
/// verified while it is read: a block in which damage shows is not yielded, and nothing after it.
///
/// @code
/// const Toolkit::smart_ptr<Toolkit::ZipInputStream> stream = archive.GetZipInputStream(entry);
/// Toolkit::TString<wchar_t> word;
/// while (stream->ReadLine(word))
///     std::wcout << word << L'\n';
/// @endcode
class TOOLKIT_API ZipInputStream : public InputStream
{
public:
    /// Opens the archive at `path`; a failure shows at the first use.
    explicit ZipInputStream(const TString<wchar_t>& path);
    ~ZipInputStream() override;

    /// Appends every remaining byte of the entry; nothing when the entry is damaged or its checksum is wrong.
    /// Quirk: all three readers give nothing of a damaged entry, not even what lies before the damage.
    ZipInputStream& operator>>(std::vector<unsigned char>& bytes);

    /// Reads the next word, which ends at a space, a tab or a line's end; empty at the end of the entry. A
    /// byte-order mark at the entry's beginning selects UTF-32, UTF-16 or UTF-8; without one the text is
    /// UTF-8. A word also ends at broken text, after which no text is read.
    /// Quirk: a NUL ends a word as well, and where a word should begin it makes an empty one.
    ZipInputStream& operator>>(TString<wchar_t>& word);

    /// Reads the next line, decoded as a word is, without the "\n", "\r\n" or "\r" at its end; the last line
    /// may lack one. False, and an empty line, at the end of the entry and where it is damaged.
    bool ReadLine(TString<wchar_t>& line);

private:
    friend class ArchiveZip;

    explicit ZipInputStream(std::shared_ptr<const ZipFile> file);

    const ZipFile& GetFile() const { return *m_pFile; }

    // False when there is no file, and when what was read last has met its end, be it the directory or an
    // entry.
    bool IsOk() const;
    // True when the file is an archive.
    bool CanRead();

    // An entry of the directory and its name in the native format; a null record after the last one.
    struct Listed
    {
        std::unique_ptr<wxZipEntry> record;
        TString<wchar_t> name;
    };

    // The entry at which the directory stands, which then stands at the next one.
    Listed TakeNextEntry();

    // Positions the stream at an entry's content and returns that, which stays this object's; null when it is
    // not found.
    ZipEntryStream* OpenEntry(const wxZipEntry& entry);
    void CloseEntry();

    const std::shared_ptr<const ZipFile> m_pFile;
    Listed m_next;
    bool m_bAsked = false;
    bool m_bIsArchive = false;
    bool m_bListed = false;
    std::unique_ptr<ZipEntryStream> m_pContent;
    std::size_t m_uCredibleLength = 0;
    std::unique_ptr<TextReader> m_pReader;
};

} // namespace Toolkit

#endif
