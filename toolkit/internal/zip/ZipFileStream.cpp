// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipFileStream.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Toolkit
{

namespace
{

const long long s_iSignatureLength = 4;

} // namespace

// What the base library reads of a record at once, behind the signature, and where in it the length of the
// name lies.
struct ZipFileStream::RecordRead
{
    const char* signature;
    std::size_t length;
    std::size_t nameLength;
};
const ZipFileStream::RecordRead ZipFileStream::s_directoryRecord = {"PK\x01\x02", 42, 24};
const ZipFileStream::RecordRead ZipFileStream::s_localRecord = {"PK\x03\x04", 26, 22};

ZipFileStream::ZipFileStream(std::shared_ptr<const ZipFile> file) : m_pFile(std::move(file)) {}

ZipFileStream::~ZipFileStream() = default;

wxInputStream& ZipFileStream::Read(void* buffer, std::size_t count)
{
    // The base library's own form fills the whole buffer with zeros first.
    if (m_wback == nullptr)
        m_lastcount = OnSysRead(buffer, count);
    else
        wxInputStream::Read(buffer, count);
    if (m_lastcount == s_directoryRecord.length)
        m_iLastRecord = m_iPosition - static_cast<long long>(m_lastcount) - s_iSignatureLength;
    const bool nameless = IsNameless(s_directoryRecord, buffer) || IsNameless(s_localRecord, buffer);
    m_iQuestionsToZero = nameless ? 2 : 0;
    return *this;
}

std::size_t ZipFileStream::LastRead() const
{
    if (m_iQuestionsToZero > 0 && --m_iQuestionsToZero == 0)
        return 0;
    return m_lastcount;
}

void ZipFileStream::Replace(const ZipFile::LocalRecord& record)
{
    m_replaced = record;
}

wxFileOffset ZipFileStream::GetLength() const
{
    return m_pFile->GetLength();
}

std::size_t ZipFileStream::OnSysRead(void* buffer, std::size_t count)
{
    const std::size_t read = count <= ZipFile::s_uWindow ? m_pFile->ReadRecord(m_iPosition, buffer, count)
                                                         : m_pFile->ReadAt(m_iPosition, buffer, count);
    // The base library takes a name that the file cuts short with all the length that it should have.
    if (read < count)
        std::memset(static_cast<char*>(buffer) + read, 0, count - read);
    if (m_replaced.completed)
        ShowReplaced(static_cast<char*>(buffer), read);
    m_iPosition += static_cast<long long>(read);
    m_lasterror = read == count ? wxSTREAM_NO_ERROR : wxSTREAM_EOF;
    return read;
}

wxFileOffset ZipFileStream::OnSysSeek(wxFileOffset offset, wxSeekMode mode)
{
    const long long base = mode == wxFromStart     ? 0
                           : mode == wxFromCurrent ? m_iPosition
                                                   : m_pFile->GetLength();
    long long position = 0;
    if (__builtin_add_overflow(base, static_cast<long long>(offset), &position) || position < 0)
        return wxInvalidOffset;
    m_iPosition = position;
    m_lasterror = wxSTREAM_NO_ERROR;
    return position;
}

// True when what was read last, into `bytes`, is such a record and has a name of no length.
bool ZipFileStream::IsNameless(const RecordRead& record, const void* bytes) const
{
    char signature[s_iSignatureLength];
    const long long begin = m_iPosition - static_cast<long long>(m_lastcount) - s_iSignatureLength;
    return m_lastcount == record.length &&
           std::memcmp(static_cast<const char*>(bytes) + record.nameLength, "\0\0", 2) == 0 &&
           m_pFile->ReadAt(begin, signature, sizeof signature) == sizeof signature &&
           std::memcmp(signature, record.signature, sizeof signature) == 0;
}

// Puts those of the replaced bytes that belong to what was read at the position.
void ZipFileStream::ShowReplaced(char* bytes, std::size_t count) const
{
    long long place = m_replaced.offset - m_iPosition;
    for (const unsigned char byte : m_replaced.bytes)
    {
        if (place >= 0 && place < static_cast<long long>(count))
            bytes[place] = static_cast<char>(byte);
        ++place;
    }
}

} // namespace Toolkit
