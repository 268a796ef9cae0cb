#ifndef TOOLKIT_FILES_ZIPENTRYSTREAM_H
#define TOOLKIT_FILES_ZIPENTRYSTREAM_H

#include <cstddef>
#include <memory>
#include <vector>

#include <wx/stream.h>
#include <wx/zipstrm.h>

namespace Toolkit
{

class ZipFile;

// The content of one entry, decoded by a base library stream of its own, so that no other entry, damaged or
// half read, has any part in it. It is decoded block by block. A block in which damage, a wrong length or a
// wrong checksum shows is not yielded, and with it the content ends.
class ZipEntryStream : public wxInputStream
{
public:
    ZipEntryStream(const std::shared_ptr<const ZipFile>& file, const wxZipEntry& entry);
    ~ZipEntryStream() override;

    ZipEntryStream(const ZipEntryStream&) = delete;
    ZipEntryStream& operator=(const ZipEntryStream&) = delete;

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

    std::size_t Decode(void* buffer, std::size_t count);

    std::unique_ptr<wxZipInputStream> m_pDecoder;
    State m_state = State::Damaged;
    std::vector<char> m_block;
    std::size_t m_uBegin = 0;
    std::size_t m_uEnd = 0;
};

} // namespace Toolkit

#endif
