// SPDX-License-Identifier: MIT
#include "toolkit/files/ZipReader.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <ctime>
#include <mutex>
#include <unordered_map>
#include <utility>

#include <fcntl.h>
#include <unistd.h>
#include <wx/zipstrm.h>

#include "toolkit/internal/system/MovedFrom.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/SafeReplace.h"
#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/system/TemporaryFile.h"
#include "toolkit/internal/system/Transfer.h"
#include "toolkit/internal/text/Utf8Codec.h"
#include "toolkit/internal/text/Utf8Scan.h"
#include "toolkit/internal/text/WrittenText.h"
#include "toolkit/internal/wx/WxLibrary.h"
#include "toolkit/internal/zip/ZipContent.h"
#include "toolkit/internal/zip/ZipExtraction.h"
#include "toolkit/internal/zip/ZipFile.h"
#include "toolkit/internal/zip/ZipFileStream.h"
#include "toolkit/internal/zip/ZipNameConverter.h"

namespace Toolkit
{

struct ZipEntry::Content
{
    std::string name;
    // Its name is the one in the archive; only there a NUL shows.
    ZipFile::DirectoryRecord record;
    bool isFolder = false;
    // Whose entry it is.
    std::uint64_t archive = 0;
};

struct ZipReport::Content
{
    std::vector<std::string> extracted;
    std::vector<Failure> refused;
};

struct ZipLimits::Content
{
    std::uint64_t entries = 100000;
    std::uint64_t bytes = std::uint64_t{16} << 30;
    std::uint64_t ratio = 250;
};

namespace
{

std::atomic<std::uint64_t> s_uNumbers{0};

std::chrono::system_clock::time_point TimeOf(unsigned int date, unsigned int time)
{
    std::tm fields = {};
    fields.tm_year = static_cast<int>(date >> 9) + 80;
    fields.tm_mon = static_cast<int>(date >> 5 & 15) - 1;
    fields.tm_mday = static_cast<int>(date & 31);
    fields.tm_hour = static_cast<int>(time >> 11);
    fields.tm_min = static_cast<int>(time >> 5 & 63);
    fields.tm_sec = static_cast<int>(time & 31) * 2;
    fields.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&fields));
}

std::uint64_t SizeOf(const ZipFile::DirectoryRecord& record)
{
    return static_cast<std::uint64_t>(std::max<long long>(record.size, 0));
}

// No more than there can be.
std::uint64_t CompressedSizeOf(const ZipFile::DirectoryRecord& record, const ZipFile& file)
{
    return static_cast<std::uint64_t>(std::clamp<long long>(record.compressedSize, 0, file.GetLength()));
}

// A damaged offset may be any number.
long long Sum(long long offset, unsigned long long shift)
{
    return static_cast<long long>(static_cast<unsigned long long>(offset) + shift);
}

std::string NameOf(const std::string& bytes)
{
    // What is UTF-8 stays as it is.
    if (bytes.find('\0') == bytes.npos && Utf8Scan::FindBroken(bytes) == bytes.npos)
        return bytes;
    return Utf8Codec::Encode(ZipNameConverter::Decode(TString<char>(bytes)));
}

} // namespace

struct ZipReader::Content
{
    // wxWidgets finds the directory, wherever the end of the archive lies, and says where the first entry
    // really is, which may be behind a program that unpacks it. False for what is no archive.
    bool ReadEntries()
    {
        if (!file->MayBeArchive())
            return false;
        const WxLibrary::Silence silence;
        auto* const source = new ZipFileStream(file);
        wxZipInputStream directory(source, ZipNameConverter::Instance());
        const std::unique_ptr<const wxZipEntry> first(directory.GetNextEntry());
        if (first == nullptr)
            return directory.GetLastError() == wxSTREAM_EOF;
        return ReadEntriesFrom(source->GetLastRecord(), first->GetOffset());
    }

    // Reads all records, the first one included: as an object of wxWidgets, with a wide name and a date in
    // the local zone, each would take eight times as long.
    bool ReadEntriesFrom(long long place, long long firstOffset)
    {
        const auto shift = static_cast<unsigned long long>(firstOffset) -
                           static_cast<unsigned long long>(file->ReadDirectoryRecord(place).offset);
        while (!file->IsEndOfDirectory(place))
        {
            auto entry = std::make_shared<ZipEntry::Content>();
            entry->record = file->ReadDirectoryRecord(place);
            place = entry->record.next;
            if (place == 0)
                return false;
            entry->record.offset = Sum(entry->record.offset, shift);
            entry->name = NameOf(entry->record.name);
            entry->isFolder = !entry->record.name.empty() && entry->record.name.back() == '/';
            entry->archive = number;
            entries.push_back(ZipEntry(std::move(entry)));
        }
        return true;
    }

    std::mutex mutex;
    // No two archives of a process have the same one, unlike an address.
    const std::uint64_t number = ++s_uNumbers;
    std::string path;
    std::shared_ptr<const ZipFile> file;
    std::vector<ZipEntry> entries;
    // Made by the first look for a name.
    std::once_flag hasNumbers;
    std::unordered_map<std::string_view, std::size_t> numbers;
};

ZipEntry::ZipEntry(std::shared_ptr<const Content> content) noexcept : m_pContent(std::move(content)) {}
ZipEntry::ZipEntry(const ZipEntry& other) noexcept = default;
ZipEntry& ZipEntry::operator=(const ZipEntry& other) noexcept = default;
ZipEntry::~ZipEntry() = default;

const std::string& ZipEntry::Name() const noexcept
{
    return m_pContent->name;
}

std::uint64_t ZipEntry::Size() const noexcept
{
    return SizeOf(m_pContent->record);
}

std::chrono::system_clock::time_point ZipEntry::Modified() const noexcept
{
    return TimeOf(m_pContent->record.date, m_pContent->record.time);
}

bool ZipEntry::IsFolder() const noexcept
{
    return m_pContent->isFolder;
}

ZipReport::ZipReport(std::shared_ptr<const Content> content) noexcept : m_pContent(std::move(content)) {}
ZipReport::ZipReport(const ZipReport& other) noexcept = default;
ZipReport& ZipReport::operator=(const ZipReport& other) noexcept = default;
ZipReport::~ZipReport() = default;

const std::vector<std::string>& ZipReport::Extracted() const noexcept
{
    return m_pContent->extracted;
}

const std::vector<Failure>& ZipReport::Refused() const noexcept
{
    return m_pContent->refused;
}

ZipLimits::ZipLimits() : m_pContent(std::make_unique<Content>()) {}
ZipLimits::ZipLimits(const ZipLimits& other) : m_pContent(std::make_unique<Content>(*other.m_pContent)) {}
ZipLimits& ZipLimits::operator=(const ZipLimits& other)
{
    *m_pContent = *other.m_pContent;
    return *this;
}
ZipLimits::~ZipLimits() = default;

ZipLimits& ZipLimits::Entries(std::uint64_t most)
{
    m_pContent->entries = most;
    return *this;
}

ZipLimits& ZipLimits::Bytes(std::uint64_t most)
{
    m_pContent->bytes = most;
    return *this;
}

ZipLimits& ZipLimits::Ratio(std::uint64_t most)
{
    m_pContent->ratio = most;
    return *this;
}

ZipReader::ZipReader(std::unique_ptr<Content> content) noexcept : m_pContent(std::move(content)) {}
ZipReader::ZipReader(ZipReader&& other) noexcept = default;
ZipReader& ZipReader::operator=(ZipReader&& other) noexcept = default;
ZipReader::~ZipReader() = default;

Result<ZipReader> ZipReader::Open(const std::filesystem::path& path)
{
    const char* const attempt = "cannot read";
    Descriptor descriptor = NativePath::OfBytes(path.native()).Open(O_RDONLY);
    if (!descriptor.IsOpen() && errno != ENXIO)
        return SystemFailure(attempt, path.native(), errno);
    auto content = std::make_unique<Content>();
    content->path = path.native();
    content->file = std::make_shared<const ZipFile>(std::move(descriptor));
    if (!content->ReadEntries())
        return Failure(Errc::Malformed, attempt + (" " + path.native()) + ": it is no ZIP archive");
    return ZipReader(std::move(content));
}

const ZipEntry* ZipReader::begin() const noexcept
{
    return m_pContent != nullptr ? m_pContent->entries.data() : nullptr;
}

const ZipEntry* ZipReader::end() const noexcept
{
    return m_pContent != nullptr ? m_pContent->entries.data() + m_pContent->entries.size() : nullptr;
}

std::optional<ZipEntry> ZipReader::Find(std::string_view name) const
{
    if (m_pContent == nullptr)
        return std::nullopt;
    Content& content = *m_pContent;
    std::call_once(content.hasNumbers,
                   [&content]
                   {
                       for (std::size_t i = 0; i < content.entries.size(); ++i)
                           content.numbers.emplace(content.entries[i].Name(), i);
                   });
    const auto place = content.numbers.find(name);
    if (place == content.numbers.end())
        return std::nullopt;
    return content.entries[place->second];
}

Result<std::string> ZipReader::Read(const ZipEntry& entry, std::size_t largest) const
{
    const ZipEntry::Content& content = *entry.m_pContent;
    if (m_pContent == nullptr)
        return MovedFrom::Refused("cannot read " + content.name);
    const std::string name = content.name + " of " + m_pContent->path;
    if (content.archive != m_pContent->number)
        return SystemFailure("cannot read", name, EINVAL);
    if (SizeOf(content.record) > largest)
        return Failure(Errc::LimitReached,
                       "cannot read " + name + ": it is longer than " + std::to_string(largest) + " bytes");
    const std::lock_guard<std::mutex> lock(m_pContent->mutex);
    std::string bytes;
    // More than expected, so that the end is met without growing again.
    bytes.reserve(m_pContent->file->GetCredibleLength(content.record) + ZipContent::s_uLeastRoom);
    const ZipContent::Block append = [&bytes](std::size_t room, const WriteText& decode)
    {
        AppendWritten(bytes, room, decode);
        return true;
    };
    const Result<void> read =
        ZipContent::Decode(m_pContent->file, content.record, "cannot read", name, append);
    if (!read)
        return read.error();
    return bytes;
}

Result<void> ZipReader::Extract(const ZipEntry& entry, const std::filesystem::path& file) const
{
    const ZipEntry::Content& content = *entry.m_pContent;
    if (m_pContent == nullptr)
        return MovedFrom::Refused("cannot extract " + content.name);
    const std::string name = content.name + " of " + m_pContent->path;
    if (content.archive != m_pContent->number || file.native().find('\0') != std::string::npos)
        return SystemFailure("cannot extract", name, EINVAL);
    if (content.isFolder)
        return SystemFailure("cannot extract", name, EISDIR);
    SafeReplace::Options options;
    options.m_bFollowsDangling = true;
    std::error_code ignored;
    if (file.has_parent_path())
        std::filesystem::create_directories(file.parent_path(), ignored);
    Result<std::unique_ptr<SafeReplace::Writer>> writer =
        SafeReplace::Writer::Begin(NativePath::OfBytes(file.native()), options);
    if (!writer)
        return writer.error();
    const int descriptor = (*writer)->Get();
    const std::lock_guard<std::mutex> lock(m_pContent->mutex);
    const Result<void> decoded = ZipContent::Decode(m_pContent->file, content.record, "cannot extract", name,
                                                    [descriptor](const char* block, std::size_t count)
                                                    { return WriteAll(descriptor, block, count); });
    return decoded ? (*writer)->Finish() : decoded;
}

Result<ZipReport> ZipReader::ExtractAll(const std::filesystem::path& folder, const ZipLimits& limits) const
{
    if (m_pContent == nullptr)
        return MovedFrom::Refused("cannot extract the archive");
    const ZipLimits::Content& limit = *limits.m_pContent;
    if (m_pContent->entries.size() > limit.entries)
        return Failure(Errc::LimitReached, "cannot extract " + m_pContent->path + ": it has more than " +
                                               std::to_string(limit.entries) + " entries");
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    const Descriptor root(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!root.IsOpen())
        return SystemFailure("cannot open the folder", folder.native(), errno);
    const std::lock_guard<std::mutex> lock(m_pContent->mutex);
    TemporaryFile::RemoveLeftBehind(root.Get());
    ZipExtraction extraction(m_pContent->file, root.Get(), limit.bytes, limit.ratio);
    auto report = std::make_shared<ZipReport::Content>();
    for (const ZipEntry& entry : m_pContent->entries)
    {
        const ZipEntry::Content& content = *entry.m_pContent;
        const std::uint64_t compressed = CompressedSizeOf(content.record, *m_pContent->file);
        const Result<void> done = extraction.Extract(
            {content.name, content.isFolder, SizeOf(content.record), compressed, content.record});
        if (done)
            report->extracted.push_back(content.name);
        else
            report->refused.push_back(done.error());
    }
    return ZipReport(std::move(report));
}

} // namespace Toolkit
