// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipEntryStream.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <wx/zipstrm.h>

namespace Toolkit
{

namespace
{

// Of what is read in small pieces.
const std::size_t s_uSmallBlock = 65536;
// Decoded straight into the reader's memory.
const std::size_t s_uLargeRead = 16;

ZipFile::ContentRecord RecordOf(const wxZipEntry& entry)
{
    ZipFile::ContentRecord record;
    record.flags = entry.GetFlags();
    record.method = entry.GetMethod();
    record.checksum = entry.GetCrc();
    record.compressedSize = entry.GetCompressedSize();
    record.size = entry.GetSize();
    record.offset = entry.GetOffset();
    return record;
}

} // namespace

ZipEntryStream::ZipEntryStream(std::shared_ptr<const ZipFile> file, const wxZipEntry& entry)
    : m_pFile(std::move(file)), m_entry(RecordOf(entry)), m_decoder(m_pFile, m_entry)
{
    if (!m_decoder.IsFound())
        m_lasterror = wxSTREAM_READ_ERROR;
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
    ZipDecoder other(m_pFile, m_entry);
    const std::unique_ptr<char[]> block(new char[s_uSmallBlock]);
    while (other.Read(block.get(), s_uSmallBlock) > 0)
    {
    }
    if (!other.IsDamaged())
        return;
    m_decoder.GiveUp();
    m_lasterror = wxSTREAM_READ_ERROR;
    m_uEnd = 0;
}

std::size_t ZipEntryStream::Decode(void* buffer, std::size_t count)
{
    const std::size_t decoded = m_decoder.Read(buffer, count);
    if (decoded == 0)
        m_lasterror = m_decoder.IsDamaged() ? wxSTREAM_READ_ERROR : wxSTREAM_EOF;
    return decoded;
}

} // namespace Toolkit
