#ifndef TOOLKIT_FILES_ZIPFILE_H
#define TOOLKIT_FILES_ZIPFILE_H

#include <cstddef>
#include <string>

#include "toolkit/core/TString.h"

class wxZipEntry;

namespace Toolkit
{

// The open file of an archive, read at any place by as many streams as share it, and the few facts of the
// format (APPNOTE.TXT of PKWARE) that the base library leaves unchecked. It waits for no FIFO. Failures are
// answered.
class ZipFile
{
public:
    explicit ZipFile(const TString<wchar_t>& path);
    ~ZipFile();

    ZipFile(const ZipFile&) = delete;
    ZipFile& operator=(const ZipFile&) = delete;

    // False when nothing lies at the path, or the user may not read it.
    bool Exists() const { return m_bExists; }
    // True when it is a file long enough for an archive; nothing is known of its content.
    bool MayBeArchive() const;

    // In bytes, when the file was opened.
    long long GetLength() const { return m_iLength; }

    // The bytes read, less than `count` only at the end of the file or on an error.
    std::size_t ReadAt(long long offset, void* buffer, std::size_t count) const;

    // True when the entry's own record says the same of its content as the archive's directory: nothing
    // encrypted, the same method and the same checksum.
    bool IsConsistent(const wxZipEntry& entry) const;

    // The declared length of the entry's content, as far as so much can reasonably come of what is in the
    // file.
    std::size_t GetCredibleLength(const wxZipEntry& entry) const;

    // The name, in bytes, in the record of the directory at `offset`.
    std::string ReadDirectoryName(long long offset) const;

private:
    bool HasChecksum(long long offset, unsigned int checksum) const;

    int m_iDescriptor;
    long long m_iLength = 0;
    bool m_bExists;
};

} // namespace Toolkit

#endif
