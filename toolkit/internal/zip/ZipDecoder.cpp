// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipDecoder.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace Toolkit
{

namespace
{

const long long s_iInput = 32768;
// Deflated data alone, with nothing of zlib's own around it, and distances of up to 32 KiB.
const int s_iRawWindow = -MAX_WBITS;

// What zlib asks for memory, so that a want of it is known here as everywhere.
voidpf Allocate(voidpf, uInt count, uInt size)
{
    return ::operator new (std::size_t{count} * size, std::nothrow);
}

void Free(voidpf, voidpf memory)
{
    ::operator delete(memory);
}

} // namespace

ZipDecoder::ZipDecoder(std::shared_ptr<const ZipFile> file, const ZipFile::ContentRecord& entry)
    : m_pFile(std::move(file)),
      m_uChecksum(entry.checksum),
      m_bDeflated(entry.method == ZipFile::s_iDeflated),
      m_content(m_pFile->FindContent(entry))
{
    if (!m_content.consistent || m_content.size < 0 || (!m_bDeflated && entry.method != ZipFile::s_iStored))
        return;
    m_zlib.zalloc = Allocate;
    m_zlib.zfree = Free;
    if (m_bDeflated && inflateInit2(&m_zlib, s_iRawWindow) != Z_OK)
        throw std::bad_alloc();
    m_state = State::Open;
}

ZipDecoder::~ZipDecoder()
{
    inflateEnd(&m_zlib);
}

std::size_t ZipDecoder::Read(void* buffer, std::size_t count)
{
    if (m_state != State::Open)
        return 0;
    auto* const bytes = static_cast<unsigned char*>(buffer);
    const std::size_t room = std::min<std::size_t>(count, std::numeric_limits<uInt>::max());
    m_zlib.next_out = bytes;
    m_zlib.avail_out = static_cast<uInt>(room);
    if (m_bDeflated)
        Inflate();
    else
        Copy();
    const std::size_t decoded = room - m_zlib.avail_out;
    m_uChecksumSoFar = crc32_z(m_uChecksumSoFar, bytes, decoded);
    m_content.size -= static_cast<long long>(decoded);
    const bool isWhole = m_content.size == 0 && m_uChecksumSoFar == m_uChecksum;
    if (m_content.size < 0 || (m_state == State::Complete && !isWhole))
        m_state = State::Damaged;
    return m_state != State::Damaged ? decoded : 0;
}

// Until the reader's memory is full or the data ends. What zlib still holds back is yielded without more
// input.
void ZipDecoder::Inflate()
{
    while (m_state == State::Open && m_zlib.avail_out > 0)
    {
        const bool hasInput = m_zlib.avail_in > 0 || Refill();
        // Said to be the last call, it keeps no copy of what it decodes if it really is.
        const int answer = inflate(&m_zlib, Z_FINISH);
        const bool goesOn = answer == Z_OK || answer == Z_BUF_ERROR;
        if (answer == Z_STREAM_END)
            m_state = State::Complete;
        else if (!goesOn || (!hasInput && m_zlib.avail_out > 0))
            m_state = State::Damaged;
        if (answer == Z_MEM_ERROR)
            throw std::bad_alloc();
    }
}

void ZipDecoder::Copy()
{
    const long long most = std::min<long long>(m_content.size, m_zlib.avail_out);
    const std::size_t read =
        m_pFile->ReadAt(m_content.offset, m_zlib.next_out, static_cast<std::size_t>(most));
    m_content.offset += most;
    m_zlib.avail_out -= static_cast<uInt>(read);
    if (static_cast<long long>(read) < most)
        m_state = State::Damaged;
    else if (most == m_content.size)
        m_state = State::Complete;
}

// False when there is no more input.
bool ZipDecoder::Refill()
{
    const long long most = std::min(m_content.compressedSize, s_iInput);
    if (most <= 0)
        return false;
    if (m_pInput == nullptr)
        m_pInput.reset(new unsigned char[static_cast<std::size_t>(most)]);
    const std::size_t read =
        m_pFile->ReadAt(m_content.offset, m_pInput.get(), static_cast<std::size_t>(most));
    m_content.offset += most;
    m_content.compressedSize -= most;
    m_zlib.next_in = m_pInput.get();
    m_zlib.avail_in = static_cast<uInt>(read);
    return read > 0;
}

} // namespace Toolkit
