// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZIP_ZIPENTRYSTREAM_H
#define TOOLKIT_INTERNAL_ZIP_ZIPENTRYSTREAM_H

#include <cstddef>
#include <memory>

#include <wx/stream.h>
#include <wx/zipstrm.h>

namespace Toolkit
{

class ZipFile;

// The content of one entry, decoded block by block by a decoder of its own: wxWidgets' one keeps
// traces of the entry before, even of a whole one. Nothing is yielded of a block in which damage, a wrong
// length or a wrong checksum shows, nor after it; a reader of small pieces, who cannot take back what he has
// used, gets nothing at all of a damaged entry.
class ZipEntryStream : public wxInputStream
{
public:
    // What is best read at a time: before each return the decoder copies 32 KiB of what it decoded last.
    static constexpr std::size_t s_uBlock = 262144;

    ZipEntryStream(std::shared_ptr<const ZipFile> file, const wxZipEntry& entry);
    ~ZipEntryStream() override;

    ZipEntryStream(const ZipEntryStream&) = delete;
    ZipEntryStream& operator=(const ZipEntryStream&) = delete;

    wxInputStream& Read(void* buffer, std::size_t count) override;

    // True when the entry's content was found.
    bool IsFound() const { return m_pDecoder != nullptr; }

    // True when the content, met so far or not, cannot be read to its end.
    bool IsDamaged() const { return m_state == State::Damaged; }

protected:
    std::size_t OnSysRead(void* buffer, std::size_t count) override;

private:
    enum class State
    {
        Open,
        Complete,
        Damaged
    };

    void Verify();
    std::size_t Decode(void* buffer, std::size_t count);

    const std::shared_ptr<const ZipFile> m_pFile;
    // A copy: wxWidgets writes into the entry that it opens.
    wxZipEntry m_entry;
    std::unique_ptr<wxZipInputStream> m_pDecoder;
    State m_state = State::Damaged;
    std::unique_ptr<char[]> m_pBlock;
    bool m_bVerified = false;
    std::size_t m_uBegin = 0;
    std::size_t m_uEnd = 0;
};

} // namespace Toolkit

#endif
