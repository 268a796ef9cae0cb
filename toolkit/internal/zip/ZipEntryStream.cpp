// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipEntryStream.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "toolkit/internal/wx/WxLibrary.h"
#include "toolkit/internal/zip/ZipFile.h"
#include "toolkit/internal/zip/ZipFileStream.h"
#include "toolkit/internal/zip/ZipNameConverter.h"

namespace Toolkit
{

namespace
{

// Of what is read in small pieces.
const std::size_t s_uSmallBlock = 65536;
// Decoded straight into the reader's memory.
const std::size_t s_uLargeRead = 16;

// wxWidgets' decoder, but for the zeros that it fills the reader's memory with before each read.
class Decoder : public wxZipInputStream
{
public:
    using wxZipInputStream::wxZipInputStream;

    wxInputStream& Read(void* buffer, std::size_t count) override
    {
        m_lastcount = OnSysRead(buffer, count);
        return *this;
    }
};

} // namespace

ZipEntryStream::ZipEntryStream(std::shared_ptr<const ZipFile> file, const wxZipEntry& entry)
    : m_pFile(std::move(file)), m_entry(entry)
{
    m_lasterror = wxSTREAM_READ_ERROR;
    if (!m_pFile->MayBeArchive())
        return;
    const WxLibrary::Silence silence;
    auto source = std::make_unique<ZipFileStream>(m_pFile);
    const ZipFile::LocalRecord record = m_pFile->ReadLocalRecord(entry);
    source->Replace(record);
    // Not made by make_unique, which would lose the source if there is no memory for the decoder.
    std::unique_ptr<wxZipInputStream> decoder(new Decoder(source.release(), ZipNameConverter::Instance()));
    if (!decoder->OpenEntry(m_entry))
        return;
    m_pDecoder = std::move(decoder);
    m_lasterror = wxSTREAM_NO_ERROR;
    if (record.consistent)
        m_state = State::Open;
}

ZipEntryStream::~ZipEntryStream() = default;

wxInputStream& ZipEntryStream::Read(void* buffer, std::size_t count)
{
    if (m_wback != nullptr)
        return wxInputStream::Read(buffer, count);
    // The base class would fill the whole buffer with zeros first.
    std::size_t read = 0;
    for (m_lastcount = 0; m_lastcount < count; m_lastcount += read)
    {
        read = OnSysRead(static_cast<char*>(buffer) + m_lastcount, count - m_lastcount);
        if (read == 0)
            break;
    }
    return *this;
}

std::size_t ZipEntryStream::OnSysRead(void* buffer, std::size_t count)
{
    if (m_uBegin == m_uEnd && count >= s_uLargeRead)
        return Decode(buffer, count);
    if (m_uBegin == m_uEnd)
    {
        if (m_pBlock == nullptr)
            m_pBlock.reset(new char[s_uSmallBlock]);
        m_uBegin = 0;
        m_uEnd = Decode(m_pBlock.get(), s_uSmallBlock);
        if (m_uEnd == s_uSmallBlock && !m_bVerified)
            Verify();
    }
    const std::size_t read = std::min(count, m_uEnd - m_uBegin);
    std::memcpy(buffer, m_pBlock.get() + m_uBegin, read);
    m_uBegin += read;
    return read;
}

// Decodes all of the content once more, for itself, and takes back the block that was decoded if that fails.
void ZipEntryStream::Verify()
{
    m_bVerified = true;
    ZipEntryStream other(m_pFile, m_entry);
    const std::unique_ptr<char[]> block(new char[s_uSmallBlock]);
    while (other.Decode(block.get(), s_uSmallBlock) > 0)
    {
    }
    if (!other.IsDamaged())
        return;
    m_state = State::Damaged;
    m_lasterror = wxSTREAM_READ_ERROR;
    m_uEnd = 0;
}

// Decodes up to `count` bytes, fewer only where the content ends; 0 and an error after it and in damage.
std::size_t ZipEntryStream::Decode(void* buffer, std::size_t count)
{
    std::size_t decoded = 0;
    if (m_state == State::Open)
    {
        const WxLibrary::Silence silence;
        decoded = m_pDecoder->Read(buffer, count).LastRead();
        const wxStreamError error = m_pDecoder->GetLastError();
        if (error == wxSTREAM_EOF)
            m_state = State::Complete;
        else if (error != wxSTREAM_NO_ERROR || decoded == 0)
            m_state = State::Damaged;
        if (m_state == State::Damaged)
            decoded = 0;
    }
    if (decoded == 0)
        m_lasterror = m_state == State::Complete ? wxSTREAM_EOF : wxSTREAM_READ_ERROR;
    return decoded;
}

} // namespace Toolkit
