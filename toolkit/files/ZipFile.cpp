#include "toolkit/files/ZipFile.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <wx/zipstrm.h>

#include "toolkit/files/NativePath.h"

namespace Toolkit
{

namespace
{

// The record at the end, without which no file is an archive.
const long long s_iEndRecordLength = 22;

const std::size_t s_uLocalRecordLength = 30;
const std::size_t s_uLocalFlags = 6;
const std::size_t s_uLocalMethod = 8;
const std::size_t s_uLocalChecksum = 14;
const std::size_t s_uLocalNameLength = 26;
const std::size_t s_uLocalExtraLength = 28;

const std::size_t s_uDirectoryRecordLength = 46;
const std::size_t s_uDirectoryNameLength = 28;

// Text seldom compresses better.
const long long s_iUsualExpansion = 16;

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

bool IsRegular(int descriptor, long long& length)
{
    struct stat status = {};
    if (descriptor == -1 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    length = status.st_size;
    return true;
}

// True for what is there without being a file: a folder, a FIFO, a socket.
bool IsNoFile(const NativePath& path)
{
    struct stat status = {};
    return path.IsValid() && stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

} // namespace

ZipFile::ZipFile(const TString<wchar_t>& path)
{
    const NativePath native(path);
    m_iDescriptor = native.Open(O_RDONLY);
    m_bExists = IsRegular(m_iDescriptor, m_iLength) || IsNoFile(native);
}

ZipFile::~ZipFile()
{
    if (m_iDescriptor != -1)
        close(m_iDescriptor);
}

bool ZipFile::MayBeArchive() const
{
    return m_iLength >= s_iEndRecordLength;
}

std::size_t ZipFile::ReadAt(long long offset, void* buffer, std::size_t count) const
{
    std::size_t have = 0;
    while (have < count)
    {
        const ssize_t read = pread(m_iDescriptor, static_cast<char*>(buffer) + have, count - have,
                                   offset + static_cast<long long>(have));
        if (read > 0)
            have += static_cast<std::size_t>(read);
        else if (read == 0 || errno != EINTR)
            break;
    }
    return have;
}

bool ZipFile::IsConsistent(const wxZipEntry& entry) const
{
    unsigned char local[s_uLocalRecordLength];
    if (ReadAt(entry.GetOffset(), local, sizeof local) != sizeof local)
        return false;
    const int flags = static_cast<int>(Get16(local + s_uLocalFlags));
    if (((flags | entry.GetFlags()) & s_iEncrypted) != 0 ||
        static_cast<int>(Get16(local + s_uLocalMethod)) != entry.GetMethod())
        return false;
    if ((flags & wxZIP_SUMS_FOLLOW) == 0)
        return Get32(local + s_uLocalChecksum) == entry.GetCrc();
    const long long header = static_cast<long long>(s_uLocalRecordLength + Get16(local + s_uLocalNameLength) +
                                                    Get16(local + s_uLocalExtraLength));
    return entry.GetCompressedSize() >= 0 && entry.GetCompressedSize() <= m_iLength &&
           HasChecksum(entry.GetOffset() + header + entry.GetCompressedSize(), entry.GetCrc());
}

std::size_t ZipFile::GetCredibleLength(const wxZipEntry& entry) const
{
    const long long compressed = std::clamp<long long>(entry.GetCompressedSize(), 0, m_iLength);
    const long long expansion = entry.GetMethod() == wxZIP_METHOD_STORE ? 1 : s_iUsualExpansion;
    return static_cast<std::size_t>(std::clamp<long long>(entry.GetSize(), 0, compressed * expansion));
}

std::string ZipFile::ReadDirectoryName(long long offset) const
{
    unsigned char record[s_uDirectoryRecordLength];
    if (ReadAt(offset, record, sizeof record) != sizeof record)
        return std::string();
    std::string name(Get16(record + s_uDirectoryNameLength), '\0');
    name.resize(ReadAt(offset + static_cast<long long>(sizeof record), name.data(), name.size()));
    return name;
}

// What follows the content begins with the checksum, or with a signature in front of it.
bool ZipFile::HasChecksum(long long offset, unsigned int checksum) const
{
    unsigned char bytes[8] = {};
    const std::size_t have = ReadAt(offset, bytes, sizeof bytes);
    return (have >= 4 && Get32(bytes) == checksum) ||
           (have == 8 && Get32(bytes) == s_uDescriptorSignature && Get32(bytes + 4) == checksum);
}

} // namespace Toolkit
