// SPDX-License-Identifier: MIT
#include "toolkit/files/FSStream.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/NoCancellation.h"

namespace Toolkit
{

namespace
{

const std::size_t s_uUnit = 4;
const std::size_t s_uSlice = std::size_t{1} << 20;
const std::size_t s_uLargest = std::numeric_limits<unsigned int>::max();
const std::size_t s_uUnknown = std::numeric_limits<std::size_t>::max();
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

// A descriptor, or wxFile::fd_invalid.
int OpenFile(const TString<wchar_t>& path, FSStream::OpenMode mode)
{
    const int flags = OpenFlags(mode);
    return flags == s_iNoFlags ? static_cast<int>(wxFile::fd_invalid) : NativePath(path).Open(flags);
}

// Repeats `transfer`, which is `read` or `write` and answered `count`, until all is done, nothing more comes
// or an error is met; answers the bytes that were transferred.
template <class Byte, class Transfer>
[[gnu::noinline]] std::size_t TransferRest(Transfer transfer, int descriptor, Byte* data, std::size_t size,
                                           ssize_t count)
{
    std::size_t done = 0;
    for (;;)
    {
        if (count > 0)
            done += static_cast<std::size_t>(count);
        else if (count == 0 || errno != EINTR)
            return done;
        if (done == size)
            return done;
        count = transfer(descriptor, data + done, size - done);
    }
}

template <class Byte, class Transfer>
std::size_t TransferAll(Transfer transfer, int descriptor, Byte* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const ssize_t count = transfer(descriptor, data, size);
    if (count == static_cast<ssize_t>(size))
        return size;
    return TransferRest(transfer, descriptor, data, size, count);
}

bool WriteAll(int descriptor, const void* data, std::size_t size)
{
    return TransferAll(write, descriptor, static_cast<const char*>(data), size) == size;
}

// The state of a regular file; false for devices, and for files that the system makes up, which tell no size.
bool IsRegular(int descriptor, struct stat& status)
{
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
}

} // namespace

// What was read of a regular file and not asked for yet.
class FSStream::ReadAhead
{
public:
    std::size_t GetSize() const { return m_uEnd - m_uBegin; }

    // The bytes read, fewer only when the file ends or cannot be read.
    std::size_t Read(int descriptor, char* data, std::size_t size)
    {
        const std::size_t begin = Take(data, size);
        if (begin == size)
            return size;
        data += begin;
        const std::size_t rest = size - begin;
        if (rest >= sizeof m_bytes)
            return begin + TransferAll(read, descriptor, data, rest);
        m_uBegin = 0;
        m_uEnd = Fill(descriptor, rest);
        return begin + Take(data, rest);
    }

    void Drop() { m_uBegin = m_uEnd; }

private:
    std::size_t Take(char* data, std::size_t size)
    {
        size = std::min(size, GetSize());
        std::memcpy(data, m_bytes + m_uBegin, size);
        m_uBegin += size;
        return size;
    }

    // At least `wanted` bytes, if there are so many.
    std::size_t Fill(int descriptor, std::size_t wanted)
    {
        for (std::size_t filled = 0;;)
        {
            const ssize_t count = read(descriptor, m_bytes + filled, sizeof m_bytes - filled);
            if (count > 0)
                filled += static_cast<std::size_t>(count);
            if (filled >= wanted || count == 0 || (count < 0 && errno != EINTR))
                return filled;
        }
    }

    std::size_t m_uBegin = 0;
    std::size_t m_uEnd = 0;
    char m_bytes[4096];
};

FSStream::FSStream(const TString<wchar_t>& path, OpenMode mode)
    : m_file(OpenFile(path, mode)), m_bMayReadAhead(mode == ModeRead)
{
}

FSStream::~FSStream()
{
    const NoCancellation whole;
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
    if (!ReadAll(&read, sizeof read))
        return StreamResult::ShortTransfer;
    value = read;
    return StreamResult::Ok;
}

StreamResult FSStream::Read(void* data, unsigned int size)
{
    if (!m_file.IsOpened())
        return StreamResult::NotOpen;
    return ReadAll(data, size) ? StreamResult::Ok : StreamResult::ShortTransfer;
}

unsigned int FSStream::Length() const
{
    struct stat status;
    if (!m_file.IsOpened() || fstat(m_file.fd(), &status) != 0 || status.st_size < 0)
        return 0;
    return static_cast<unsigned int>(std::min(static_cast<std::size_t>(status.st_size), s_uLargest));
}

bool FSStream::ReadAll(void* data, std::size_t size)
{
    if (size == 0)
        return true;
    if (m_bMayReadAhead)
        BeginToReadAhead();
    char* const bytes = static_cast<char*>(data);
    if (m_pAhead == nullptr)
        return TransferAll(read, m_file.fd(), bytes, size) == size;
    return bytes != nullptr && m_pAhead->Read(m_file.fd(), bytes, size) == size;
}

// Without the memory for it each item is read by itself.
void FSStream::BeginToReadAhead()
{
    struct stat status;
    if (IsRegular(m_file.fd(), status))
        m_pAhead.reset(new (std::nothrow) ReadAhead);
    m_bMayReadAhead = false;
}

// The bytes of a regular file from where the stream stands to its end; s_uUnknown for other files.
std::size_t FSStream::Remaining() const
{
    struct stat status;
    if (!IsRegular(m_file.fd(), status))
        return s_uUnknown;
    const off_t position = lseek(m_file.fd(), 0, SEEK_CUR);
    if (position < 0)
        return s_uUnknown;
    const std::size_t unread = static_cast<std::size_t>(std::max<off_t>(status.st_size - position, 0));
    return unread + (m_pAhead != nullptr ? m_pAhead->GetSize() : 0);
}

// A count is compared with what the file holds; where that is unknown, memory is taken slice by slice.
StreamResult FSStream::ReadText(TString<wchar_t>& text, unsigned int count)
{
    const bool read = m_pAhead != nullptr && m_pAhead->GetSize() >= count;
    const std::size_t remaining = read ? count : Remaining();
    if (remaining < count)
    {
        lseek(m_file.fd(), 0, SEEK_END);
        if (m_pAhead != nullptr)
            m_pAhead->Drop();
        return StreamResult::ShortTransfer;
    }
    const std::size_t step = remaining == s_uUnknown ? s_uSlice : count;
    const std::size_t whole = count / s_uUnit * s_uUnit;
    TString<wchar_t> characters;
    for (std::size_t done = 0; done < whole;)
    {
        const std::size_t size = std::min(step, whole - done);
        characters.resize((done + size) / s_uUnit);
        if (!ReadAll(reinterpret_cast<char*>(characters.data()) + done, size))
            return StreamResult::ShortTransfer;
        done += size;
    }
    char rest[s_uUnit];
    if (!ReadAll(rest, count - whole))
        return StreamResult::ShortTransfer;
    characters.resize(std::min(characters.find(L'\0'), characters.size()));
    text = std::move(characters);
    return StreamResult::Ok;
}

} // namespace Toolkit
