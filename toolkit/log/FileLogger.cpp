// SPDX-License-Identifier: MIT
#include "toolkit/log/FileLogger.h"

#include <cstdint>
#include <cstdio>
#include <utility>

#include "toolkit/app/GetTickCount.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/FFile.h"
#include "toolkit/internal/log/Handover.h"
#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/FalseWithoutMemory.h"
#include "toolkit/internal/system/ForkShield.h"
#include "toolkit/internal/system/GuardedFile.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/threading/MutexLock.h"

namespace Toolkit
{

namespace
{

const unsigned int s_uRetryInterval = 10;
const unsigned int s_uQuietTime = 500;

TString<wchar_t> NameOrApplication(const TString<wchar_t>& name)
{
    const smart_ptr<PathManager> paths = InstalledPathManager();
    return name.empty() && !paths.IsNull() ? paths->GetApplicationName() : name;
}

// Everyone may write where the log lies: whatever lies there instead of a log is left as it is. The lock is
// what two loggers of one name tell each other by; it goes with the descriptor. None on failure.
Descriptor OpenLogDescriptor(const TString<wchar_t>& path)
{
    Descriptor descriptor = GuardedFile::Open(NativePath(path));
    // The links are counted again under the lock: who held it before may have removed the file.
    const bool isOurs =
        descriptor.TryLock() && GuardedFile::Is(descriptor.Get()) && GuardedFile::Empty(descriptor.Get());
    return isOurs ? std::move(descriptor) : Descriptor();
}

} // namespace

TOOLKIT_ONCE const TString<wchar_t> FileLogger::c_strOpenMode(L"w");
TOOLKIT_ONCE const TString<wchar_t> FileLogger::c_strLogExtension(L".vxlog");
TOOLKIT_ONCE const TString<wchar_t> FileLogger::c_strTickSeparator(L"-");

FileLogger::FileLogger(LogSeverity level, const TString<wchar_t>& name, unsigned int maxSize)
    : ILogger(level),
      m_pWorkEvent(new EventObject(true, false)),
      m_pStopEvent(new EventObject(false, false)),
      m_strName(NameOrApplication(name)),
      m_pFile(new FFile),
      m_uMaxSize(maxSize),
      m_bRuns(false)
{
    m_bRuns = Run();
}

FileLogger::~FileLogger()
{
    m_pStopEvent->Signal();
    if (m_bRuns)
        Wait();
    else
        FileLogger::DoWork();
    StopAndWait();
}

void FileLogger::Write(const TString<wchar_t>& text)
{
    TString<wchar_t> piece(text);
    if (Handover::Add<MutexLock>(m_mutex, m_pending,
                                 [&piece](auto& pending) { pending.push_back(std::move(piece)); }))
        m_pWorkEvent->Signal();
}

wxThread::ExitCode FileLogger::DoWork()
{
    ForkShield shield;
    for (bool opened = OpenPrimary(shield); !opened; opened = OpenFallback(shield))
        if (m_pStopEvent->Wait(s_uRetryInterval))
            return reinterpret_cast<ExitCode>(std::intptr_t{1});

    m_pFile->SeekEnd(0);
    while (HasMoreToDo())
    {
        DrainQueue();
        WrapAround();
    }
    const ForkShield::Pause pause;
    shield.Set(-1, pause);
    m_pFile->Close();
    return nullptr;
}

bool FileLogger::OpenPrimary(ForkShield& shield)
{
    return FalseWithoutMemory([&] { return OpenFile(PrimaryPath(), shield); });
}

bool FileLogger::OpenFallback(ForkShield& shield)
{
    return FalseWithoutMemory([&] { return OpenFile(FallbackPath(), shield); });
}

// A forked child that had the descriptor, too, would keep the lock when this process is long gone.
bool FileLogger::OpenFile(const TString<wchar_t>& path, ForkShield& shield)
{
    const TString<char> mode = UTF8::ToUTF8(c_strOpenMode);
    const ForkShield::Pause pause;
    std::FILE* const stream = OpenLogDescriptor(path).ToStream(mode.c_str());
    if (stream == nullptr)
        return false;
    // Unbuffered: each piece is one write, and what the disk did not take is not tried again later.
    std::setvbuf(stream, nullptr, _IONBF, 0);
    shield.Set(fileno(stream), pause);
    m_pFile->Attach(stream);
    return true;
}

TString<wchar_t> FileLogger::PathWithoutExtension() const
{
    const smart_ptr<PathManager> paths = InstalledPathManager();
    const TString<wchar_t> folder = paths.IsNull() ? L"/tmp" : paths->GetTempDir();
    const TString<wchar_t> separator = paths.IsNull() ? L"/" : paths->GetPathSeparator();
    return folder + separator + m_strName;
}

TString<wchar_t> FileLogger::PrimaryPath() const
{
    return PathWithoutExtension() + c_strLogExtension;
}

TString<wchar_t> FileLogger::FallbackPath() const
{
    return PathWithoutExtension() + c_strTickSeparator + LogText::Of(GetTickCount()) + c_strLogExtension;
}

bool FileLogger::HasMoreToDo()
{
    // Asked once more after the stop: a piece may have come between the wait and the stop.
    return m_pWorkEvent->Wait(s_uQuietTime) || !m_pStopEvent->Wait(0) || m_pWorkEvent->Wait(0);
}

void FileLogger::DrainQueue()
{
    Handover::Drain<MutexLock>(m_mutex, m_pending, m_writing,
                               [this](const auto& pieces)
                               {
                                   for (const TString<wchar_t>& piece : pieces)
                                       WritePiece(piece);
                               });
}

void FileLogger::WritePiece(const TString<wchar_t>& piece)
{
    // A piece is lost that finds no memory; it must not take the process with it.
    FalseWithoutMemory(
        [&]
        {
            m_pFile->Write(piece);
            return m_pFile->Flush();
        });
}

void FileLogger::WrapAround()
{
    const long long offset = m_pFile->GetOffset();
    if (offset >= 0 && offset >= static_cast<long long>(m_uMaxSize))
        m_pFile->Seek(0, true);
}

} // namespace Toolkit
