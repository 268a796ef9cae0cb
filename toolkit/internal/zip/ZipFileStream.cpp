// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipFileStream.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace Toolkit
{

namespace
{

const long long s_iSignatureLength = 4;
const char c_strSignature[] = "PK\x01\x02";
// What wxWidgets reads of a record at once, after the signature, and where in it the length of the name lies.
const std::size_t s_uRecordLength = 42;
const std::size_t s_uNameLength = 24;
const std::size_t s_uNumberLength = 4;
// Behind the signature of a record of the directory: the two lengths, and the place of the entry.
const std::size_t s_numbers[] = {16, 20, 38};
// Of its name, of the fields and of the comment.
const std::size_t s_lengths[] = {24, 26, 28};

unsigned int Get16(const unsigned char* bytes)
{
    return bytes[0] | static_cast<unsigned int>(bytes[1]) << 8;
}

} // namespace

ZipFileStream::ZipFileStream(std::shared_ptr<const ZipFile> file) : m_pFile(std::move(file)) {}

ZipFileStream::~ZipFileStream() = default;

wxInputStream& ZipFileStream::Read(void* buffer, std::size_t count)
{
    // wxWidgets' own form fills the whole buffer with zeros first.
    if (m_wback == nullptr)
        m_lastcount = OnSysRead(buffer, count);
    else
        wxInputStream::Read(buffer, count);
    NoteRecord(static_cast<const unsigned char*>(buffer));
    DropUnknownNumbers(static_cast<unsigned char*>(buffer));
    m_iQuestionsToZero = IsNameless(buffer) ? 2 : 0;
    return *this;
}

std::size_t ZipFileStream::LastRead() const
{
    if (m_iQuestionsToZero > 0 && --m_iQuestionsToZero == 0)
        return 0;
    return m_lastcount;
}

wxFileOffset ZipFileStream::GetLength() const
{
    return m_pFile->GetLength();
}

std::size_t ZipFileStream::OnSysRead(void* buffer, std::size_t count)
{
    const std::size_t read = count <= ZipFile::s_uWindow ? m_pFile->ReadRecord(m_iPosition, buffer, count)
                                                         : m_pFile->ReadAt(m_iPosition, buffer, count);
    // wxWidgets takes a name that the file cuts short with all the length that it should have.
    if (read < count)
        std::memset(static_cast<char*>(buffer) + read, 0, count - read);
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

// Whatever else is read with a record, its name for one, may be as long as its beginning.
void ZipFileStream::NoteRecord(const unsigned char* bytes)
{
    const long long begin = m_iPosition - static_cast<long long>(m_lastcount) - s_iSignatureLength;
    if (m_lastcount != s_uRecordLength || begin < m_iEndOfLastRecord || !IsBehindSignature())
        return;
    m_iLastRecord = begin;
    m_iEndOfLastRecord = m_iPosition;
    for (const std::size_t place : s_lengths)
        m_iEndOfLastRecord += Get16(bytes + place);
}

// True when a record of the directory stands before the place that was read to.
bool ZipFileStream::IsBehindSignature() const
{
    char signature[s_iSignatureLength];
    const long long begin = m_iPosition - static_cast<long long>(m_lastcount) - s_iSignatureLength;
    return m_pFile->ReadRecord(begin, signature, sizeof signature) == sizeof signature &&
           std::memcmp(signature, c_strSignature, sizeof signature) == 0;
}

// True when what was read last, into `bytes`, is such a record and has a name of no length.
bool ZipFileStream::IsNameless(const void* bytes) const
{
    return m_lastcount == s_uRecordLength &&
           std::memcmp(static_cast<const char*>(bytes) + s_uNameLength, "\0\0", 2) == 0 &&
           IsBehindSignature();
}

// Where a record of the directory, in `bytes`, leaves numbers to a field that is too short for them,
// wxWidgets would take what is in memory. Then the entry has no length, and lies at no place.
void ZipFileStream::DropUnknownNumbers(unsigned char* bytes) const
{
    if (m_lastcount != s_uRecordLength)
        return;
    const auto isLong = [bytes](std::size_t place)
    { return std::memcmp(bytes + place, "\xFF\xFF\xFF\xFF", s_uNumberLength) == 0; };
    std::size_t count = 0;
    for (const std::size_t place : s_numbers)
        count += isLong(place) ? 1 : 0;
    const std::size_t extraLength = Get16(bytes + s_lengths[1]);
    const long long extra = m_iPosition + static_cast<long long>(Get16(bytes + s_lengths[0]));
    std::vector<unsigned long long> numbers;
    if (count == 0 || !IsBehindSignature() || m_pFile->ReadLongNumbers(extra, extraLength, count, numbers))
        return;
    for (const std::size_t place : s_numbers)
        std::memset(bytes + place, 0, s_uNumberLength);
    std::memcpy(bytes + s_numbers[2], "\xFE\xFF\xFF\xFF", s_uNumberLength);
}

} // namespace Toolkit
