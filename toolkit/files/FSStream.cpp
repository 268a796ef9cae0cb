// SPDX-License-Identifier: MIT
#include "toolkit/files/FSStream.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/Transfer.h"

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

int OpenFile(const TString<wchar_t>& path, FSStream::OpenMode mode)
{
    const int flags = OpenFlags(mode);
    return flags == s_iNoFlags ? static_cast<int>(wxFile::fd_invalid)
                               : NativePath(path).Open(flags).Release();
}

} // namespace

FSStream::FSStream(const TString<wchar_t>& path, OpenMode mode) : m_file(OpenFile(path, mode)) {}

FSStream::~FSStream()
{
    // Here rather than by wxWidgets, which logs a failure.
    Descriptor(m_file.Detach()).Close();
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
    return ReadUpTo(m_file.fd(), data, size) == size;
}

// The bytes of a regular file from where the stream stands to its end; s_uUnknown for devices, and for files
// that the system makes up, which tell no size.
std::size_t FSStream::Remaining() const
{
    struct stat status = {};
    if (fstat(m_file.fd(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= 0)
        return s_uUnknown;
    const off_t position = lseek(m_file.fd(), 0, SEEK_CUR);
    if (position < 0)
        return s_uUnknown;
    return static_cast<std::size_t>(std::max<off_t>(status.st_size - position, 0));
}

// A count is compared with what the file holds; where that is unknown, memory is taken slice by slice.
StreamResult FSStream::ReadText(TString<wchar_t>& text, unsigned int count)
{
    const std::size_t remaining = Remaining();
    if (remaining < count)
    {
        lseek(m_file.fd(), 0, SEEK_END);
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
