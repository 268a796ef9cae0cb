// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_ARCHIVEZIP_H
#define TOOLKIT_FILES_ARCHIVEZIP_H

#include <map>

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/files/ArchiveEntriesFlags.h"
#include "toolkit/files/ArchiveZipEntry.h"
#include "toolkit/files/ZipInputStream.h"

namespace Toolkit
{

/// A ZIP file, read only: its entries, their content, and their extraction. An object and the streams that it
/// gives away belong to one thread at a time. What cannot be opened shows at the first use. Entries may also
/// come from another object that has the same file open. An archive is never trusted: what it declares is
/// neither allocated nor taken for its content.
///
/// @code
/// Toolkit::ArchiveZip mailbox;
/// mailbox.Open(L"mails.zip");
/// std::map<Toolkit::TString<wchar_t>, Toolkit::smart_ptr<Toolkit::ArchiveZipEntry>> found;
/// mailbox.EntriesList(found, L"*.*", Toolkit::ArchiveEntriesFlags::Files);
/// Toolkit::TString<wchar_t> target(L"1.eml");
/// if (found.count(L"inbox/1.eml") != 0 && !mailbox.UnZip(found[L"inbox/1.eml"], target))
///     return Fail("the mail is damaged");
/// @endcode
class TOOLKIT_API ArchiveZip
{
public:
    ArchiveZip();
    virtual ~ArchiveZip();

    /// A copy has the same archive open, with one stream and one listing for both, until either opens
    /// another.
    ArchiveZip(const ArchiveZip&) = default;
    ArchiveZip& operator=(const ArchiveZip&) = default;

    /// Opens the archive at `path` in place of the one opened before. A FIFO is never waited for.
    void Open(const TString<wchar_t>& path);

    /// Gives up the archive. Streams that were handed out stay as they are.
    void Close();

    /// Replaces `entries` by the entries from where the listing stands to its end, and returns how many those
    /// are; -1, with a line in the log, when no archive is open, its listing is complete already, or the file
    /// is no archive. A name is in the native format and stays as it is in the archive, ".." included; of two
    /// equal ones the first is kept. It is decoded as UTF-8, by the local character set or byte by byte,
    /// whichever is the first that fits.
    ///
    /// Only the names that match `pattern` are listed. What stands before its last "*", or all of it where
    /// there is none, is the beginning that a name must have, in upper or lower case. An empty pattern and
    /// "*.*" keep all names.
    ///
    /// Quirk: "/" and "./" in front of a name are dropped, unless nothing else would be left.
    /// Quirk: the line in the log names source line 106, or 99 for a file that is no archive, whatever the
    /// source says.
    /// Quirk: a second listing goes on where the first one ended: after a complete one it returns -1, but 0
    /// after an `UnZip`.
    int EntriesList(std::map<TString<wchar_t>, smart_ptr<ArchiveZipEntry>>& entries,
                    const TString<wchar_t>& pattern, ArchiveEntriesFlags::ArchiveEntriesType type);

    /// The archive's one stream, which now stands at the beginning of the entry's content; it yields nothing
    /// if that cannot be found. Null for a null entry and when no archive is open. The stream is shared with
    /// this object: the next positioning moves it.
    smart_ptr<ZipInputStream> GetZipInputStream(smart_ptr<ArchiveZipEntry> entry);

    /// Writes the entry's content to the file `target`, which is made or emptied, and returns true when all
    /// of it was there, its length and checksum were right, and the disk took it. After a failure the target
    /// is empty; it is not touched when the entry's content cannot be found.
    /// Quirk: the archive itself, by whatever path, and a FIFO, even one that is read, are refused untouched.
    /// Quirk: an entry without content returns false and leaves an empty target.
    bool UnZip(smart_ptr<ArchiveZipEntry> entry, TString<wchar_t>& target);

private:
    smart_ptr<ZipInputStream> m_pStream;
};

} // namespace Toolkit

#endif
