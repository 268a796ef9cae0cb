// SPDX-License-Identifier: MIT
#include "toolkit/files/ArchiveZip.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/NoCancellation.h"
#include "toolkit/internal/system/Transfer.h"
#include "toolkit/internal/zip/ZipEntryStream.h"
#include "toolkit/internal/zip/ZipFile.h"
#include "toolkit/log/LogLine.h"

namespace Toolkit
{

namespace
{

// Quirk: the line numbers of what is logged are fixed; they follow no source.
const unsigned int s_uNotReadableLine = 99;
const unsigned int s_uNotValidLine = 106;
const long long s_iSmallestRead = 64;

int FailListing(unsigned int line, const wchar_t* message)
{
    LogLine::Stream(LogSeverity::Error, line, "EntriesList", message);
    return -1;
}

bool IsWanted(const wxZipEntry& entry, ArchiveEntriesFlags::ArchiveEntriesType type)
{
    if (type == ArchiveEntriesFlags::All)
        return true;
    const bool unwantedFile = (type & ArchiveEntriesFlags::Folders) != 0 && !entry.IsDir();
    const bool unwantedFolder = (type & ArchiveEntriesFlags::Files) != 0 && entry.IsDir();
    return !unwantedFile && !unwantedFolder;
}

// What a name has to begin with; empty for every name.
TString<wchar_t> PrefixOf(const TString<wchar_t>& pattern)
{
    return pattern == L"*.*" ? TString<wchar_t>() : TString<wchar_t>(pattern.substr(0, pattern.rfind(L'*')));
}

bool BeginsWith(const TString<wchar_t>& name, const TString<wchar_t>& prefix)
{
    return prefix.empty() || TString<wchar_t>(name.substr(0, prefix.size())).compareNoCase(prefix) == 0;
}

// The file that content is extracted into: never the archive itself, which would be lost, nor a FIFO, whose
// reader may let wait for ever and whose end would be a signal. It is emptied again unless it was kept.
class Target
{
public:
    Target(const TString<wchar_t>& path, const ZipFile& archive)
        : m_file(NativePath(path).Open(O_WRONLY | O_CREAT))
    {
        struct stat status = {};
        if (fstat(m_file.Get(), &status) != 0 || S_ISFIFO(status.st_mode) || archive.IsSame(status) ||
            (S_ISREG(status.st_mode) && ftruncate(m_file.Get(), 0) != 0))
            m_file.Close();
    }

    ~Target()
    {
        const NoCancellation whole;
        // Where it cannot be emptied, on a device, nothing can be taken back.
        if (m_file.IsOpen())
            static_cast<void>(ftruncate(m_file.Get(), 0) == 0);
    }

    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    bool IsOpened() const { return m_file.IsOpen(); }

    bool Write(const char* bytes, std::size_t count) { return WriteAll(m_file.Get(), bytes, count); }

    bool Keep() { return m_file.Close(); }

private:
    Descriptor m_file;
};

// Decodes block by block: memory follows neither the declared length nor the real one, and no more is asked
// for than shows whether the content is longer than declared. The last block, the only one of most entries,
// is written when all is verified.
bool Extract(ZipEntryStream& content, long long length, Target& target)
{
    const auto roomFor = [](long long left)
    {
        const auto most = static_cast<long long>(ZipDecoder::s_uBlock);
        return static_cast<std::size_t>(std::clamp<long long>(left, s_iSmallestRead, most - 1)) + 1;
    };
    const std::unique_ptr<char[]> block(new char[roomFor(length)]);
    for (;;)
    {
        const std::size_t room = roomFor(length);
        const std::size_t count = content.Read(block.get(), room).LastRead();
        length -= static_cast<long long>(count);
        const bool end = count < room;
        if (length < 0 || (end && (length != 0 || content.IsDamaged())) || !target.Write(block.get(), count))
            return false;
        if (end)
            return true;
    }
}

} // namespace

ArchiveZip::ArchiveZip() = default;

ArchiveZip::~ArchiveZip() = default;

void ArchiveZip::Open(const TString<wchar_t>& path)
{
    m_pStream.Reset();
    m_pStream = new ZipInputStream(path);
}

void ArchiveZip::Close()
{
    m_pStream.Reset();
}

int ArchiveZip::EntriesList(std::map<TString<wchar_t>, smart_ptr<ArchiveZipEntry>>& entries,
                            const TString<wchar_t>& pattern, ArchiveEntriesFlags::ArchiveEntriesType type)
{
    // Before the entries go: `pattern` may be one of their names.
    const TString<wchar_t> prefix = PrefixOf(pattern);
    entries.clear();
    if (m_pStream.IsNull() || !m_pStream->IsOk())
        return FailListing(s_uNotValidLine, L"  archive is not valid! ");
    if (!m_pStream->CanRead())
        return FailListing(s_uNotReadableLine, L"  archive format can't be read! ");
    for (;;)
    {
        ZipInputStream::Listed next = m_pStream->TakeNextEntry();
        if (next.record == nullptr)
            break;
        if (!IsWanted(*next.record, type) || !BeginsWith(next.name, prefix))
            continue;
        const auto place = entries.lower_bound(next.name);
        if (place == entries.end() || place->first != next.name)
            entries.emplace_hint(place, std::move(next.name),
                                 smart_ptr<ArchiveZipEntry>(new ArchiveZipEntry(*next.record)));
    }
    return static_cast<int>(entries.size());
}

smart_ptr<ZipInputStream> ArchiveZip::GetZipInputStream(smart_ptr<ArchiveZipEntry> entry)
{
    if (m_pStream.IsNull() || entry.IsNull())
        return smart_ptr<ZipInputStream>();
    m_pStream->OpenEntry(*entry);
    return m_pStream;
}

bool ArchiveZip::UnZip(smart_ptr<ArchiveZipEntry> entry, TString<wchar_t>& target)
{
    ZipEntryStream* const content =
        m_pStream.IsNull() || entry.IsNull() ? nullptr : m_pStream->OpenEntry(*entry);
    if (content == nullptr)
        return false;
    Target file(target, m_pStream->GetFile());
    const long long length = entry->GetSize();
    const bool whole = file.IsOpened() && length > 0 && Extract(*content, length, file);
    m_pStream->CloseEntry();
    return whole && file.Keep();
}

} // namespace Toolkit
