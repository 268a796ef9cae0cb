#ifndef TOOLKIT_FILES_ZIPENTRYSTREAM_H
#define TOOLKIT_FILES_ZIPENTRYSTREAM_H

#include <cstddef>
#include <memory>

#include <wx/stream.h>
#include <wx/zipstrm.h>

namespace Toolkit
{

class ZipFile;

// The content of one entry, decoded block by block. The base library's decoder keeps traces of an entry that
// was damaged or half read; so only one that has come to a good end is used again. Nothing is yielded of a
// block in which damage, a wrong length or a wrong checksum shows, nor behind it; a reader of small pieces,
// who cannot take back what he has used, gets nothing at all of a damaged entry.
class ZipEntryStream : public wxInputStream
{
public:
    // `decoder` is what another entry of the same file has left, or null.
    ZipEntryStream(std::shared_ptr<const ZipFile> file, const wxZipEntry& entry,
                   std::unique_ptr<wxZipInputStream> decoder);
    ~ZipEntryStream() override;

    ZipEntryStream(const ZipEntryStream&) = delete;
    ZipEntryStream& operator=(const ZipEntryStream&) = delete;

    // True when the entry's content was found.
    bool IsFound() const { return m_pDecoder != nullptr; }

    // True when the content, met so far or not, cannot be read to its end.
    bool IsDamaged() const { return m_state == State::Damaged; }

    // Gives the decoder away; null unless it may be used again. Nothing can be read afterwards.
    std::unique_ptr<wxZipInputStream> TakeDecoder();

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
    // A copy: the base library writes into the entry that it opens.
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
