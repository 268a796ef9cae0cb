// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipFile.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include <wx/zipstrm.h>

#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/Transfer.h"

namespace Toolkit
{

namespace
{

// The record at the end, without which no file is an archive.
const long long s_iEndRecordLength = 22;

const std::size_t s_uLocalFlags = 6;
const std::size_t s_uLocalMethod = 8;
const std::size_t s_uLocalChecksum = 14;
const std::size_t s_uLocalCompressed = 18;
const std::size_t s_uLocalLength = 22;
const std::size_t s_uLocalNameLength = 26;
const std::size_t s_uLocalExtraLength = 28;

// The field for numbers that need more than the 4 bytes that a record has for each, and says so there.
const unsigned int s_uLongNumber = 0xFFFFFFFF;
const unsigned int s_uLongField = 1;
const std::size_t s_uLongLength = 8;
const std::size_t s_uFieldHead = 4;

const unsigned int s_uDirectorySignature = 0x02014B50;
const unsigned int s_uEndSignature = 0x06054B50;
const unsigned int s_uLongEndSignature = 0x06064B50;
const std::size_t s_uDirectoryRecordLength = 46;
const std::size_t s_uDirectoryMaker = 5;
const unsigned char s_uMadeByUnix = 3;
const std::size_t s_uDirectoryFlags = 8;
const std::size_t s_uDirectoryMethod = 10;
const std::size_t s_uDirectoryTime = 12;
const std::size_t s_uDirectoryDate = 14;
const std::size_t s_uDirectoryChecksum = 16;
const std::size_t s_uDirectoryCompressed = 20;
const std::size_t s_uDirectoryLength = 24;
const std::size_t s_uDirectoryNameLength = 28;
const std::size_t s_uDirectoryExtraLength = 30;
const std::size_t s_uDirectoryCommentLength = 32;
const std::size_t s_uDirectoryMode = 40;
const std::size_t s_uDirectoryOffset = 42;
// At no place of a file.
const long long s_iNowhere = 0xFFFFFFFE;

// No deflated content is longer.
const long long s_iMostExpansion = 1032;
const long long s_iMostCredible = 64LL << 20;

const unsigned int s_uDescriptorSignature = 0x08074B50;
const int s_iEncrypted = wxZIP_ENCRYPTED | wxZIP_STRONG_ENC;

unsigned int Get16(const unsigned char* bytes)
{
    return bytes[0] | static_cast<unsigned int>(bytes[1]) << 8;
}

unsigned int Get32(const unsigned char* bytes)
{
    return Get16(bytes) | Get16(bytes + 2) << 16;
}

void Put32(unsigned char* bytes, unsigned int value)
{
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<unsigned char>(value >> (8 * i));
}

// True for a length that needs no extra field.
bool IsShort(long long length)
{
    return length >= 0 && length < 0xFFFFFFFF;
}

// Where the fields after the name begin.
long long ExtraOffset(const ZipFile::LocalRecord& record)
{
    return record.offset + static_cast<long long>(record.bytes.size()) +
           static_cast<long long>(Get16(&record.bytes[s_uLocalNameLength]));
}

bool IsRegular(int descriptor, long long& length)
{
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    length = status.st_size;
    return true;
}

// True for what is there without being a file: a folder, a FIFO, a socket.
bool IsNoFile(const NativePath& path)
{
    return path.GetKind() != 0 && !path.IsFile();
}

} // namespace

ZipFile::ZipFile(const TString<wchar_t>& path)
{
    const NativePath native(path);
    m_file = native.Open(O_RDONLY);
    m_bExists = IsRegular(m_file.Get(), m_iLength) || IsNoFile(native);
}

ZipFile::ZipFile(Descriptor file) : m_file(std::move(file))
{
    m_bExists = IsRegular(m_file.Get(), m_iLength);
}

ZipFile::~ZipFile() = default;

bool ZipFile::MayBeArchive() const
{
    return m_iLength >= s_iEndRecordLength;
}

bool ZipFile::IsSame(const struct stat& status) const
{
    struct stat own = {};
    return fstat(m_file.Get(), &own) == 0 && own.st_dev == status.st_dev && own.st_ino == status.st_ino;
}

std::size_t ZipFile::ReadAt(long long offset, void* buffer, std::size_t count) const
{
    return ReadUpTo(m_file.Get(), buffer, count, offset);
}

std::size_t ZipFile::ReadRecord(long long offset, void* buffer, std::size_t count) const
{
    const Window& window = FindWindow(offset, count);
    const std::size_t begin = static_cast<std::size_t>(offset - window.offset);
    const std::size_t read = std::min(count, window.length - std::min(begin, window.length));
    if (read > 0)
        std::memcpy(buffer, window.bytes.data() + begin, read);
    return read;
}

ZipFile::LocalRecord ZipFile::ReadLocalRecord(const wxZipEntry& entry) const
{
    LocalRecord record;
    record.offset = entry.GetOffset();
    record.consistent =
        record.offset >= 0 &&
        ReadRecord(record.offset, record.bytes.data(), record.bytes.size()) == record.bytes.size() &&
        IsConsistent(entry, record);
    DropUnknownLengths(record);
    const bool completed = record.consistent && IsShort(entry.GetCompressedSize()) &&
                           IsShort(entry.GetSize()) &&
                           (Get16(&record.bytes[s_uLocalFlags]) & wxZIP_SUMS_FOLLOW) != 0;
    record.replaced = record.replaced || completed;
    if (completed)
    {
        record.bytes[s_uLocalFlags] &= static_cast<unsigned char>(~wxZIP_SUMS_FOLLOW);
        Put32(&record.bytes[s_uLocalChecksum], entry.GetCrc());
        Put32(&record.bytes[s_uLocalCompressed], static_cast<unsigned int>(entry.GetCompressedSize()));
        Put32(&record.bytes[s_uLocalLength], static_cast<unsigned int>(entry.GetSize()));
    }
    return record;
}

std::size_t ZipFile::GetCredibleLength(const wxZipEntry& entry) const
{
    const long long compressed = std::clamp<long long>(entry.GetCompressedSize(), 0, m_iLength);
    const long long expansion = entry.GetMethod() == wxZIP_METHOD_STORE ? 1 : s_iMostExpansion;
    return static_cast<std::size_t>(
        std::clamp<long long>(entry.GetSize(), 0, std::min(compressed * expansion, s_iMostCredible)));
}

ZipFile::DirectoryRecord ZipFile::ReadDirectoryRecord(long long offset) const
{
    DirectoryRecord result;
    unsigned char record[s_uDirectoryRecordLength];
    if (ReadRecord(offset, record, sizeof record) != sizeof record || Get32(record) != s_uDirectorySignature)
        return result;
    result.flags = static_cast<int>(Get16(record + s_uDirectoryFlags));
    result.method = static_cast<int>(Get16(record + s_uDirectoryMethod));
    result.time = Get16(record + s_uDirectoryTime);
    result.date = Get16(record + s_uDirectoryDate);
    result.checksum = Get32(record + s_uDirectoryChecksum);
    result.compressedSize = Get32(record + s_uDirectoryCompressed);
    result.size = Get32(record + s_uDirectoryLength);
    result.offset = Get32(record + s_uDirectoryOffset);
    if (record[s_uDirectoryMaker] == s_uMadeByUnix)
        result.mode = Get16(record + s_uDirectoryMode);
    const std::size_t size = Get16(record + s_uDirectoryNameLength);
    result.name.resize(size);
    const long long name = offset + static_cast<long long>(sizeof record);
    result.name.resize(size <= s_uWindow ? ReadRecord(name, result.name.data(), size)
                                         : ReadAt(name, result.name.data(), size));
    const long long extra = name + static_cast<long long>(size);
    const std::size_t extraLength = Get16(record + s_uDirectoryExtraLength);
    ReadLongSizes(extra, extraLength, result);
    const long long next =
        extra + static_cast<long long>(extraLength + Get16(record + s_uDirectoryCommentLength));
    result.next = next <= m_iLength ? next : 0;
    return result;
}

// Takes the numbers for which the record has no room from the fields that follow its name. Where those are
// too short for them, the entry has no length, and lies at no place.
void ZipFile::ReadLongSizes(long long offset, std::size_t length, DirectoryRecord& record) const
{
    std::vector<long long*> missing;
    for (long long* const number : {&record.size, &record.compressedSize, &record.offset})
        if (*number == s_uLongNumber)
            missing.push_back(number);
    if (missing.empty())
        return;
    std::vector<unsigned long long> numbers;
    if (ReadLongNumbers(offset, length, missing.size(), numbers))
        for (std::size_t i = 0; i < numbers.size(); ++i)
            *missing[i] = static_cast<long long>(numbers[i]);
    else
    {
        record.size = record.compressedSize = 0;
        record.offset = s_iNowhere;
    }
}

bool ZipFile::IsEndOfDirectory(long long offset) const
{
    unsigned char signature[4];
    return ReadRecord(offset, signature, sizeof signature) == sizeof signature &&
           (Get32(signature) == s_uEndSignature || Get32(signature) == s_uLongEndSignature);
}

// The window that holds all of the bytes, or else the one that went unused the longest, now filled there.
ZipFile::Window& ZipFile::FindWindow(long long offset, std::size_t count) const
{
    Window* oldest = &m_windows[0];
    for (Window& window : m_windows)
    {
        const long long end = window.offset + static_cast<long long>(window.length);
        if (offset >= window.offset && offset <= end - static_cast<long long>(count))
        {
            window.lastUse = ++m_uUses;
            return window;
        }
        if (window.lastUse < oldest->lastUse)
            oldest = &window;
    }
    const long long last = m_iLength - static_cast<long long>(s_uWindow);
    oldest->bytes.resize(s_uWindow);
    oldest->offset = last >= 0 && offset > last && offset < m_iLength ? last : offset;
    oldest->length = ReadAt(oldest->offset, oldest->bytes.data(), s_uWindow);
    oldest->lastUse = ++m_uUses;
    return *oldest;
}

bool ZipFile::IsConsistent(const wxZipEntry& entry, const LocalRecord& record) const
{
    const auto get16 = [&](std::size_t place) { return Get16(&record.bytes[place]); };
    const int flags = static_cast<int>(get16(s_uLocalFlags));
    if (((flags | entry.GetFlags()) & s_iEncrypted) != 0 ||
        static_cast<int>(get16(s_uLocalMethod)) != entry.GetMethod())
        return false;
    const bool stored = entry.GetMethod() == wxZIP_METHOD_STORE;
    if (stored && entry.GetSize() != entry.GetCompressedSize())
        return false;
    if ((flags & wxZIP_SUMS_FOLLOW) == 0)
        return Get32(&record.bytes[s_uLocalChecksum]) == entry.GetCrc() &&
               (!stored || HasLengthsOf(entry, record));
    const std::size_t content = record.bytes.size() + get16(s_uLocalNameLength) + get16(s_uLocalExtraLength);
    return entry.GetCompressedSize() >= 0 && entry.GetCompressedSize() <= m_iLength &&
           HasChecksum(record.offset + static_cast<long long>(content) + entry.GetCompressedSize(),
                       entry.GetCrc());
}

// True when the record declares the same lengths as the directory, in itself or in the field for long ones.
bool ZipFile::HasLengthsOf(const wxZipEntry& entry, const LocalRecord& record) const
{
    const unsigned int length = Get32(&record.bytes[s_uLocalLength]);
    const unsigned int compressed = Get32(&record.bytes[s_uLocalCompressed]);
    std::vector<unsigned long long> numbers;
    if (length == s_uLongNumber || compressed == s_uLongNumber)
        ReadLongNumbers(ExtraOffset(record), Get16(&record.bytes[s_uLocalExtraLength]), 2, numbers);
    const auto is = [&numbers](unsigned int number, long long expected)
    {
        unsigned long long real = number;
        if (number == s_uLongNumber && !numbers.empty())
        {
            real = numbers.front();
            numbers.erase(numbers.begin());
        }
        return real == static_cast<unsigned long long>(expected);
    };
    const bool hasLength = is(length, entry.GetSize());
    return is(compressed, entry.GetCompressedSize()) && hasLength;
}

void ZipFile::DropUnknownLengths(LocalRecord& record) const
{
    unsigned char* const bytes = record.bytes.data();
    const std::size_t count = static_cast<std::size_t>(Get32(bytes + s_uLocalLength) == s_uLongNumber) +
                              static_cast<std::size_t>(Get32(bytes + s_uLocalCompressed) == s_uLongNumber);
    std::vector<unsigned long long> numbers;
    if (count == 0 ||
        ReadLongNumbers(ExtraOffset(record), Get16(bytes + s_uLocalExtraLength), count, numbers))
        return;
    Put32(bytes + s_uLocalLength, 0);
    Put32(bytes + s_uLocalCompressed, 0);
    record.replaced = true;
    record.consistent = false;
}

bool ZipFile::ReadLongNumbers(long long offset, std::size_t length, std::size_t count,
                              std::vector<unsigned long long>& numbers) const
{
    std::vector<unsigned char> fields(length);
    fields.resize(ReadAt(offset, fields.data(), length));
    for (std::size_t at = 0; at + s_uFieldHead <= fields.size();)
    {
        const unsigned int id = Get16(&fields[at]);
        const std::size_t end = at + s_uFieldHead + Get16(&fields[at + 2]);
        at += s_uFieldHead;
        for (; id == s_uLongField && count > 0 && at + s_uLongLength <= std::min(end, fields.size()); --count)
        {
            numbers.push_back(Get32(&fields[at]) | static_cast<unsigned long long>(Get32(&fields[at + 4]))
                                                       << 32);
            at += s_uLongLength;
        }
        if (id == s_uLongField)
            return count == 0;
        at = end;
    }
    return true;
}

// What follows the content begins with the checksum, or with a signature in front of it.
bool ZipFile::HasChecksum(long long offset, unsigned int checksum) const
{
    unsigned char bytes[8] = {};
    const std::size_t have = ReadRecord(offset, bytes, sizeof bytes);
    return (have >= 4 && Get32(bytes) == checksum) ||
           (have == 8 && Get32(bytes) == s_uDescriptorSignature && Get32(bytes + 4) == checksum);
}

} // namespace Toolkit
