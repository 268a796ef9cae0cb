// SPDX-License-Identifier: MIT
#include "toolkit/files/FFile.h"

#include <cerrno>

#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/stat.h>
#include <unistd.h>

#include <wx/ffile.h>

#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/NoCancellation.h"
#include "toolkit/internal/system/Transfer.h"

namespace Toolkit
{

namespace
{

const int s_iBadMode = -1;

// The flags of `open` for a mode of `fopen`. Appending is left to `fdopen`, which also moves to the end.
int ParseMode(const TString<wchar_t>& mode)
{
    if (mode.empty() || mode.find_first_not_of(L"+btexcm", 1) != mode.npos)
        return s_iBadMode;
    const bool both = mode.find(L'+') != mode.npos;
    const int exclusive = mode.find(L'x') != mode.npos ? O_EXCL : 0;
    const int writing = (both ? O_RDWR : O_WRONLY) | O_CREAT | exclusive;
    switch (mode[0])
    {
    case L'r':
        return both ? O_RDWR : O_RDONLY;
    case L'w':
        return writing | O_TRUNC;
    case L'a':
        return writing;
    default:
        return s_iBadMode;
    }
}

std::FILE* OpenStream(const TString<wchar_t>& path, const TString<wchar_t>& mode)
{
    const int flags = ParseMode(mode);
    if (flags == s_iBadMode)
        return nullptr;
    const char streamMode[] = {static_cast<char>(mode[0]), (flags & O_ACCMODE) == O_RDWR ? '+' : '\0', '\0'};
    return NativePath(path).Open(flags).ToStream(streamMode);
}

// True when a signal kept the stream from writing, which may then be tried again; an error from before stays.
bool ForgetInterruption(std::FILE* stream, bool spoilt)
{
    if (errno != EINTR)
        return false;
    if (!spoilt)
        clearerr_unlocked(stream);
    return true;
}

} // namespace

FFile::FFile() : m_pFile(new wxFFile), m_bUnbuffered(false), m_bLostText(false) {}

FFile::~FFile()
{
    const NoCancellation whole;
    Close();
    delete m_pFile;
}

bool FFile::Open(const TString<wchar_t>& path, const TString<wchar_t>& mode)
{
    Attach(nullptr);
    Attach(OpenStream(path, mode));
    return IsOpened();
}

void FFile::Attach(std::FILE* stream)
{
    if (stream != nullptr && stream == m_pFile->fp())
        return;
    Close();
    m_pFile->Attach(stream);
    // A buffer that is yet to be made has no size.
    m_bUnbuffered = stream != nullptr && __fbufsize(stream) == 1 && fileno(stream) != -1;
    m_bLostText = false;
}

bool FFile::IsOpened() const
{
    return m_pFile->IsOpened();
}

std::size_t FFile::Read(void* buffer, unsigned int count)
{
    // A stream that is not open for reading would keep an error that only belongs to lost text.
    if (!IsOpened() || buffer == nullptr || __freadable(m_pFile->fp()) == 0)
        return 0;
    return std::fread(buffer, 1, count, m_pFile->fp());
}

void FFile::Write(const TString<wchar_t>& text)
{
    if (!IsOpened())
        return;
    UTF8::Encode(text, m_strBytes);
    if (m_bUnbuffered)
        WriteThrough();
    else
        WriteBuffered();
}

bool FFile::Flush()
{
    if (!IsOpened())
        return false;
    if (m_bUnbuffered)
        return !m_bLostText;
    std::FILE* const stream = m_pFile->fp();
    const bool spoilt = ferror_unlocked(stream) != 0;
    while (fflush_unlocked(stream) != 0)
        if (!ForgetInterruption(stream, spoilt))
            return false;
    return ferror_unlocked(stream) == 0;
}

bool FFile::Close()
{
    // Detached first: wxWidgets would keep a stream whose closing failed, and close it again.
    std::FILE* const stream = m_pFile->Detach();
    if (stream == nullptr)
        return true;
    const bool whole = std::ferror(stream) == 0 && !m_bLostText;
    return std::fclose(stream) == 0 && whole;
}

long long FFile::GetLength() const
{
    struct stat status = {};
    if (!IsOpened())
        return -1;
    // Not measured by seeking, which would forget that the end was met.
    if (__fpending(m_pFile->fp()) > 0)
        std::fflush(m_pFile->fp());
    return fstat(fileno(m_pFile->fp()), &status) == 0 ? status.st_size : -1;
}

long long FFile::GetOffset() const
{
    if (!IsOpened())
        return -1;
    return m_bUnbuffered ? lseek(fileno(m_pFile->fp()), 0, SEEK_CUR) : ftello(m_pFile->fp());
}

bool FFile::Seek(long long offset, bool fromStart)
{
    // The stream does not know by itself how far it was passed by.
    if (m_bUnbuffered && !fromStart && !Seek(GetOffset(), true))
        return false;
    return IsOpened() && fseeko(m_pFile->fp(), offset, fromStart ? SEEK_SET : SEEK_CUR) == 0;
}

bool FFile::SeekEnd(long long offset)
{
    return IsOpened() && fseeko(m_pFile->fp(), offset, SEEK_END) == 0;
}

bool FFile::IsEOF() const
{
    return !IsOpened() || std::feof(m_pFile->fp()) != 0;
}

bool FFile::Exists(const TString<wchar_t>& path)
{
    return NativePath(path).IsFile();
}

void FFile::WriteBuffered()
{
    std::FILE* const stream = m_pFile->fp();
    const bool spoilt = ferror_unlocked(stream) != 0;
    const char* bytes = m_strBytes.data();
    for (std::size_t left = m_strBytes.size(); left > 0;)
    {
        const std::size_t written = fwrite_unlocked(bytes, 1, left, stream);
        bytes += written;
        left -= written;
        if (left > 0 && !ForgetInterruption(stream, spoilt))
            return;
    }
}

void FFile::WriteThrough()
{
    if (!WriteAll(fileno_unlocked(m_pFile->fp()), m_strBytes.data(), m_strBytes.size()))
        m_bLostText = true;
}

} // namespace Toolkit
