// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipFile.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/Transfer.h"

namespace Toolkit
{

namespace
{

// The record at the end, without which no file is an archive.
const long long s_iEndRecordLength = 22;

const unsigned int s_uLocalSignature = 0x04034B50;
const std::size_t s_uLocalRecordLength = 30;
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

// Of the flags: by a password or by a certificate, and that lengths and checksum follow the content.
const int s_iEncrypted = 0x41;
const int s_iSumsFollow = 0x08;

unsigned int Get16(const unsigned char* bytes)
{
    return bytes[0] | static_cast<unsigned int>(bytes[1]) << 8;
}

unsigned int Get32(const unsigned char* bytes)
{
    return Get16(bytes) | Get16(bytes + 2) << 16;
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

bool ZipFile::ContentRecord::IsEncrypted() const
{
    return (flags & s_iEncrypted) != 0;
}

ZipFile::Content ZipFile::FindContent(const ContentRecord& entry) const
{
    Content content;
    unsigned char record[s_uLocalRecordLength];
    if (entry.offset < 0 || ReadRecord(entry.offset, record, sizeof record) != sizeof record ||
        Get32(record) != s_uLocalSignature)
        return content;
    content.offset = entry.offset + static_cast<long long>(sizeof record);
    const bool hasLengths = ReadLocalLengths(record, content);
    content.found = content.offset <= m_iLength;
    if ((Get16(record + s_uLocalFlags) & s_iSumsFollow) != 0)
    {
        content.compressedSize = entry.compressedSize;
        content.size = entry.size;
    }
    content.consistent = content.found && hasLengths && IsConsistent(entry, record, content);
    return content;
}

// Puts the lengths that are in the record, or in the field for long ones, and the end of its fields. False
// when they are nowhere.
bool ZipFile::ReadLocalLengths(const unsigned char* record, Content& content) const
{
    const long long fields = content.offset + static_cast<long long>(Get16(record + s_uLocalNameLength));
    const std::size_t length = Get16(record + s_uLocalExtraLength);
    content.offset = fields + static_cast<long long>(length);
    content.size = Get32(record + s_uLocalLength);
    content.compressedSize = Get32(record + s_uLocalCompressed);
    return ReadLongSizes(fields, length, {&content.size, &content.compressedSize});
}

std::size_t ZipFile::GetCredibleLength(const ContentRecord& entry) const
{
    const long long compressed = std::clamp<long long>(entry.compressedSize, 0, m_iLength);
    const long long expansion = entry.method == s_iStored ? 1 : s_iMostExpansion;
    return static_cast<std::size_t>(
        std::clamp<long long>(entry.size, 0, std::min(compressed * expansion, s_iMostCredible)));
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
    // Otherwise the entry has no length, and lies at no place.
    if (!ReadLongSizes(extra, extraLength, {&result.size, &result.compressedSize, &result.offset}))
    {
        result.size = result.compressedSize = 0;
        result.offset = s_iNowhere;
    }
    const long long next =
        extra + static_cast<long long>(extraLength + Get16(record + s_uDirectoryCommentLength));
    result.next = next <= m_iLength ? next : 0;
    return result;
}

// Takes the numbers for which a record has no room from the fields that follow its name. False, and nothing
// is taken, where those are too short for them.
bool ZipFile::ReadLongSizes(long long offset, std::size_t length, std::initializer_list<long long*> all) const
{
    std::vector<long long*> missing;
    std::copy_if(all.begin(), all.end(), std::back_inserter(missing),
                 [](const long long* number) { return *number == s_uLongNumber; });
    std::vector<unsigned long long> numbers;
    if (!missing.empty() && !ReadLongNumbers(offset, length, missing.size(), numbers))
        return false;
    for (std::size_t i = 0; i < numbers.size(); ++i)
        *missing[i] = static_cast<long long>(numbers[i]);
    return true;
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

bool ZipFile::IsConsistent(const ContentRecord& entry, const unsigned char* record,
                           const Content& content) const
{
    const int flags = static_cast<int>(Get16(record + s_uLocalFlags));
    if (((flags | entry.flags) & s_iEncrypted) != 0 ||
        static_cast<int>(Get16(record + s_uLocalMethod)) != entry.method)
        return false;
    const bool stored = entry.method == s_iStored;
    if (stored && entry.size != entry.compressedSize)
        return false;
    if ((flags & s_iSumsFollow) == 0)
        return Get32(record + s_uLocalChecksum) == entry.checksum &&
               (!stored || (content.size == entry.size && content.compressedSize == entry.compressedSize));
    return entry.compressedSize >= 0 && entry.compressedSize <= m_iLength &&
           HasChecksum(content.offset + entry.compressedSize, entry.checksum);
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
        if (id == s_uLongField && end > fields.size())
            return false;
        for (; id == s_uLongField && count > 0 && at + s_uLongLength <= end; --count)
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
