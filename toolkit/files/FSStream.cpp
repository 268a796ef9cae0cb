#include "toolkit/files/FSStream.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <limits>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/encoding/UTF8.h"

namespace Toolkit
{

namespace
{

const std::size_t s_uUnit = 4;
const std::size_t s_uSlice = std::size_t{1} << 20;
const std::size_t s_uLargest = std::numeric_limits<unsigned int>::max();
const std::size_t s_uUnknown = std::numeric_limits<std::size_t>::max();
const mode_t s_uPermissions = 0666;
const int s_iNoFlags = -1;

static_assert(sizeof(wchar_t) == s_uUnit && sizeof(unsigned int) == s_uUnit,
              "the file format holds counts and characters of 4 bytes");

int OpenFlags(FSStream::OpenMode mode)
{
    switch (mode)
    {
    case FSStream::ModeRead:
        return O_RDONLY;
    case FSStream::ModeWrite:
        return O_WRONLY | O_CREAT | O_TRUNC;
    case FSStream::ModeReadWrite:
        return O_RDWR;
    case FSStream::ModeAppend:
        return O_WRONLY | O_CREAT | O_APPEND;
    case FSStream::ModeCreate:
        return O_WRONLY | O_CREAT | O_EXCL;
    }
    return s_iNoFlags;
}

// True when the descriptor is neither a folder nor a pipe; it then waits for its data as usual.
bool IsUsable(int descriptor)
{
    struct stat status;
    if (fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode) || S_ISFIFO(status.st_mode))
        return false;
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) == 0;
}

// A descriptor, or wxFile::fd_invalid. The path is opened by its UTF-8 bytes, whatever the locale.
int OpenFile(const TString<wchar_t>& path, FSStream::OpenMode mode)
{
    const TString<char> name = UTF8::ToUTF8(path);
    const int flags = OpenFlags(mode);
    if (flags == s_iNoFlags || name.empty() || path.find(L'\0') != path.npos)
        return wxFile::fd_invalid;
    // Without waiting, so that a named pipe is seen before it is waited for.
    const int descriptor = open(name.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, s_uPermissions);
    if (descriptor >= 0 && !IsUsable(descriptor))
    {
        close(descriptor);
        return wxFile::fd_invalid;
    }
    return descriptor;
}

// Repeats `transfer`, which is `read` or `write`, until all is done, nothing more comes or an error is met;
// answers the bytes that were transferred.
template <class Byte, class Transfer>
std::size_t TransferAll(Transfer transfer, int descriptor, Byte* data, std::size_t size)
{
    std::size_t done = 0;
    while (done < size)
    {
        const ssize_t count = transfer(descriptor, data + done, size - done);
        if (count > 0)
            done += static_cast<std::size_t>(count);
        else if (count == 0 || errno != EINTR)
            break;
    }
    return done;
}

bool ReadAll(int descriptor, void* data, std::size_t size)
{
    return TransferAll(read, descriptor, static_cast<char*>(data), size) == size;
}

bool WriteAll(int descriptor, const void* data, std::size_t size)
{
    return TransferAll(write, descriptor, static_cast<const char*>(data), size) == size;
}

// The bytes of a regular file from where it stands to its end; s_uUnknown for devices, and for files that the
// system makes up, which tell no size.
std::size_t Remaining(int descriptor)
{
    struct stat status;
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0)
        return s_uUnknown;
    const off_t position = lseek(descriptor, 0, SEEK_CUR);
    if (position < 0)
        return s_uUnknown;
    return static_cast<std::size_t>(std::max<off_t>(status.st_size - position, 0));
}

} // namespace

FSStream::FSStream(const TString<wchar_t>& path, OpenMode mode) : m_file(OpenFile(path, mode)) {}

FSStream::~FSStream()
{
    // Here rather than by the base library, which logs a failure.
    if (m_file.IsOpened())
        close(m_file.Detach());
}

StreamResult FSStream::Write(const TString<wchar_t>& text)
{
    if (!m_file.IsOpened())
        return StreamResult::NotOpen;
    if (text.size() > s_uLargest / s_uUnit)
        return StreamResult::LengthWriteFailed;
    const unsigned int count = static_cast<unsigned int>(text.size() * s_uUnit);
    if (IsError(Write(count)))
        return StreamResult::LengthWriteFailed;
    if (count == 0)
        return StreamResult::Empty;
    return WriteAll(m_file.fd(), text.data(), count) ? StreamResult::Ok : StreamResult::ShortTransfer;
}

StreamResult FSStream::Write(unsigned int value)
{
    if (!m_file.IsOpened())
        return StreamResult::NotOpen;
    return WriteAll(m_file.fd(), &value, sizeof value) ? StreamResult::Ok : StreamResult::Failed;
}

StreamResult FSStream::Write(const void* data, unsigned int size)
{
    if (!m_file.IsOpened())
        return StreamResult::NotOpen;
    return WriteAll(m_file.fd(), data, size) ? StreamResult::Ok : StreamResult::ShortTransfer;
}

StreamResult FSStream::Read(TString<wchar_t>& text)
{
    if (!m_file.IsOpened())
        return StreamResult::NotOpen;
    unsigned int count = 0;
    if (IsError(Read(count)))
        return StreamResult::LengthReadFailed;
    if (count == 0)
        return StreamResult::Empty;
    return ReadText(text, count);
}

StreamResult FSStream::Read(unsigned int& value)
{
    if (!m_file.IsOpened())
        return StreamResult::NotOpen;
    unsigned int read = 0;
    if (!ReadAll(m_file.fd(), &read, sizeof read))
        return StreamResult::ShortTransfer;
    value = read;
    return StreamResult::Ok;
}

StreamResult FSStream::Read(void* data, unsigned int size)
{
    if (!m_file.IsOpened())
        return StreamResult::NotOpen;
    return ReadAll(m_file.fd(), data, size) ? StreamResult::Ok : StreamResult::ShortTransfer;
}

unsigned int FSStream::Length() const
{
    struct stat status;
    if (!m_file.IsOpened() || fstat(m_file.fd(), &status) != 0 || status.st_size < 0)
        return 0;
    return static_cast<unsigned int>(std::min(static_cast<std::size_t>(status.st_size), s_uLargest));
}

// A count is compared with what the file holds; where that is unknown, memory is taken slice by slice.
StreamResult FSStream::ReadText(TString<wchar_t>& text, unsigned int count)
{
    const std::size_t remaining = Remaining(m_file.fd());
    if (remaining < count)
    {
        lseek(m_file.fd(), 0, SEEK_END);
        return StreamResult::ShortTransfer;
    }
    const std::size_t step = remaining == s_uUnknown ? s_uSlice : count;
    const std::size_t whole = count / s_uUnit * s_uUnit;
    TString<wchar_t> read;
    for (std::size_t done = 0; done < whole;)
    {
        const std::size_t size = std::min(step, whole - done);
        read.resize((done + size) / s_uUnit);
        if (!ReadAll(m_file.fd(), reinterpret_cast<char*>(read.data()) + done, size))
            return StreamResult::ShortTransfer;
        done += size;
    }
    char rest[s_uUnit];
    if (!ReadAll(m_file.fd(), rest, count - whole))
        return StreamResult::ShortTransfer;
    read.resize(std::min(read.find(L'\0'), read.size()));
    text = std::move(read);
    return StreamResult::Ok;
}

} // namespace Toolkit
