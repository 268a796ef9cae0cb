// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZIP_ZIPENTRYSTREAM_H
#define TOOLKIT_INTERNAL_ZIP_ZIPENTRYSTREAM_H

#include <cstddef>
#include <memory>

#include <wx/stream.h>

#include "toolkit/internal/zip/ZipDecoder.h"
#include "toolkit/internal/zip/ZipFile.h"

class wxZipEntry;

namespace Toolkit
{

// The content of one entry, decoded block by block. Nothing is yielded of a block in which damage, a wrong
// length or a wrong checksum shows, nor after it; a reader of small pieces, who cannot take back what he has
// used, gets nothing at all of a damaged entry.
class ZipEntryStream : public wxInputStream
{
public:
    ZipEntryStream(std::shared_ptr<const ZipFile> file, const wxZipEntry& entry);
    ~ZipEntryStream() override;

    ZipEntryStream(const ZipEntryStream&) = delete;
    ZipEntryStream& operator=(const ZipEntryStream&) = delete;

    wxInputStream& Read(void* buffer, std::size_t count) override;

    // True when the entry's content was found.
    bool IsFound() const { return m_decoder.IsFound(); }

    // How much of it may be expected, as ZipFile says.
    std::size_t GetCredibleLength() const { return m_pFile->GetCredibleLength(m_entry); }

    // True when the content, met so far or not, cannot be read to its end.
    bool IsDamaged() const { return m_decoder.IsDamaged(); }

protected:
    std::size_t OnSysRead(void* buffer, std::size_t count) override;

private:
    void Verify();
    std::size_t Decode(void* buffer, std::size_t count);

    const std::shared_ptr<const ZipFile> m_pFile;
    const ZipFile::ContentRecord m_entry;
    ZipDecoder m_decoder;
    std::unique_ptr<char[]> m_pBlock;
    bool m_bVerified = false;
    std::size_t m_uBegin = 0;
    std::size_t m_uEnd = 0;
};

} // namespace Toolkit

#endif
