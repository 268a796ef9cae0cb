// SPDX-License-Identifier: MIT
#include "toolkit/files/ZipReader.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <ctime>
#include <functional>
#include <map>
#include <mutex>
#include <unordered_map>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/zipstrm.h>

#include "toolkit/internal/charsets/FoldedText.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/SafeReplace.h"
#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/system/TemporaryFile.h"
#include "toolkit/internal/system/Transfer.h"
#include "toolkit/internal/text/Utf8Codec.h"
#include "toolkit/internal/text/Utf8Scan.h"
#include "toolkit/internal/wx/BaseLibrary.h"
#include "toolkit/internal/zip/ZipEntryStream.h"
#include "toolkit/internal/zip/ZipFile.h"
#include "toolkit/internal/zip/ZipFileStream.h"
#include "toolkit/internal/zip/ZipName.h"
#include "toolkit/internal/zip/ZipNameConverter.h"

namespace Toolkit
{

struct ZipEntry::Content
{
    std::string name;
    // As the archive has it, in whatever charset; only here a NUL shows.
    std::string bytes;
    std::uint64_t size = 0;
    std::uint64_t compressed = 0;
    // As MS-DOS writes them.
    unsigned int time = 0;
    unsigned int date = 0;
    bool isFolder = false;
    // As Unix writes it; 0 where nothing is known.
    unsigned int mode = 0;
    std::unique_ptr<const wxZipEntry> record;
    // Whose entry it is.
    const void* archive = nullptr;
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

struct ZipReader::Content
{
    std::mutex mutex;
    std::string path;
    std::shared_ptr<const ZipFile> file;
    std::vector<ZipEntry> entries;
    // Made by the first look for a name.
    std::once_flag hasNumbers;
    std::unordered_map<std::string_view, std::size_t> numbers;
};

namespace
{

const std::size_t s_uBlock = 65536;
const std::uint64_t s_uNoRatio = 16 << 20;
const int s_iEncrypted = wxZIP_ENCRYPTED | wxZIP_STRONG_ENC;

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

std::string NameOf(const std::string& bytes)
{
    // What is UTF-8 stays as it is.
    if (bytes.find('\0') == bytes.npos && Utf8Scan::FindBroken(bytes) == bytes.npos)
        return bytes;
    return Utf8Codec::Encode(ZipNameConverter::Decode(TString<char>(bytes)));
}

bool IsSpecial(unsigned int mode)
{
    const unsigned int kind = mode & S_IFMT;
    return kind != 0 && kind != S_IFREG && kind != S_IFDIR;
}

// What takes content block by block; false, and the reason in errno, when it cannot.
using Take = std::function<bool(const char*, std::size_t)>;

// Decodes block by block: memory follows neither the declared length nor the real one.
Result<void> Decode(const std::shared_ptr<const ZipFile>& file, const wxZipEntry& record,
                    const std::string& attempt, const std::string& name, const Take& take)
{
    if ((record.GetFlags() & s_iEncrypted) != 0)
        return Failure(Errc::Refused, attempt + " " + name + ": it is encrypted");
    if (record.GetMethod() != wxZIP_METHOD_STORE && record.GetMethod() != wxZIP_METHOD_DEFLATE)
        return Failure(Errc::Refused, attempt + " " + name + ": it is packed by an unknown method");
    const Failure damaged(Errc::Malformed, attempt + " " + name + ": it is damaged");
    ZipEntryStream content(file, record);
    long long left = record.GetSize();
    const std::unique_ptr<char[]> block(new char[s_uBlock]);
    while (content.IsFound())
    {
        // One byte more than is left shows that the content is longer.
        const std::size_t room =
            static_cast<std::size_t>(std::clamp<long long>(left, 15, static_cast<long long>(s_uBlock) - 1)) +
            1;
        const std::size_t count = content.Read(block.get(), room).LastRead();
        left -= static_cast<long long>(count);
        if (left < 0)
            break;
        if (count > 0 && !take(block.get(), count))
            return SystemFailure(attempt, name, errno);
        if (count < room)
            return left == 0 && !content.IsDamaged() ? Result<void>() : damaged;
    }
    return damaged;
}

// A folder below `parent`, made if it is missing; never through a link.
Descriptor OpenFolderBelow(int parent, const std::string& name)
{
    const int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    Descriptor folder(openat(parent, name.c_str(), flags));
    if (folder.IsOpen() || errno != ENOENT || (mkdirat(parent, name.c_str(), 0777) != 0 && errno != EEXIST))
        return folder;
    return Descriptor(openat(parent, name.c_str(), flags));
}

// True where nothing is there, or a regular file.
bool MayBeReplaced(int folder, const std::string& name)
{
    struct stat status = {};
    if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT;
    errno = S_ISDIR(status.st_mode) ? EISDIR : EEXIST;
    return S_ISREG(status.st_mode);
}

// The names that were made, and those that only differ from them on some systems: a tree, so that what it
// takes is never more than what the archive has.
class TakenNames
{
public:
    // What is wrong with a name, or null.
    const char* Take(const std::vector<std::string_view>& parts, bool isFolder)
    {
        Name* last = nullptr;
        std::size_t parent = 0;
        for (const std::string_view part : parts)
        {
            const std::size_t number = m_names.size() + 1;
            const auto place =
                m_names.try_emplace({parent, FoldText(part)}, Name{std::string(part), number}).first;
            last = &place->second;
            if (last->m_strPart != part)
                return "its name is another one's but for case or form";
            parent = last->m_uNumber;
        }
        return isFolder || !std::exchange(last->m_bIsFile, true) ? nullptr : "its name is another one's";
    }

private:
    // A part of a name, below another one that has a number.
    struct Name
    {
        std::string m_strPart;
        std::size_t m_uNumber;
        bool m_bIsFile = false;
    };

    std::map<std::pair<std::size_t, std::string>, Name> m_names;
};

} // namespace

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
    return m_pContent->size;
}

std::chrono::system_clock::time_point ZipEntry::Modified() const noexcept
{
    return TimeOf(m_pContent->date, m_pContent->time);
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
    const auto malformed = [&]
    { return Failure(Errc::Malformed, attempt + (" " + path.native()) + ": it is no ZIP archive"); };
    Descriptor descriptor = NativePath::OfBytes(path.native()).Open(O_RDONLY);
    if (!descriptor.IsOpen() && errno != ENXIO)
        return SystemFailure(attempt, path.native(), errno);
    auto content = std::make_unique<Content>();
    content->path = path.native();
    content->file = std::make_shared<const ZipFile>(std::move(descriptor));
    if (!content->file->MayBeArchive())
        return malformed();
    const BaseLibrary::Silence silence;
    auto* const source = new ZipFileStream(content->file);
    wxZipInputStream directory(source, ZipNameConverter::Instance());
    while (auto record = std::unique_ptr<const wxZipEntry>(directory.GetNextEntry()))
    {
        ZipFile::DirectoryRecord raw = content->file->ReadDirectoryRecord(source->GetLastRecord());
        auto entry = std::make_shared<ZipEntry::Content>();
        entry->name = NameOf(raw.name);
        entry->bytes = std::move(raw.name);
        entry->size = static_cast<std::uint64_t>(std::max<long long>(record->GetSize(), 0));
        entry->compressed = static_cast<std::uint64_t>(
            std::clamp<long long>(record->GetCompressedSize(), 0, content->file->GetLength()));
        entry->date = raw.date;
        entry->time = raw.time;
        entry->isFolder = !entry->bytes.empty() && entry->bytes.back() == '/';
        entry->mode = raw.mode;
        entry->archive = content->file.get();
        entry->record = std::move(record);
        content->entries.push_back(ZipEntry(std::move(entry)));
    }
    if (directory.GetLastError() != wxSTREAM_EOF)
        return malformed();
    return ZipReader(std::move(content));
}

const ZipEntry* ZipReader::begin() const noexcept
{
    return m_pContent->entries.data();
}

const ZipEntry* ZipReader::end() const noexcept
{
    return m_pContent->entries.data() + m_pContent->entries.size();
}

std::optional<ZipEntry> ZipReader::Find(std::string_view name) const
{
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
    const std::string name = content.name + " of " + m_pContent->path;
    if (content.archive != m_pContent->file.get())
        return SystemFailure("cannot read", name, EINVAL);
    if (content.size > largest)
        return Failure(Errc::LimitReached,
                       "cannot read " + name + ": it is longer than " + std::to_string(largest) + " bytes");
    const std::lock_guard<std::mutex> lock(m_pContent->mutex);
    std::string bytes;
    bytes.reserve(m_pContent->file->GetCredibleLength(*content.record));
    const Result<void> read = Decode(m_pContent->file, *content.record, "cannot read", name,
                                     [&bytes](const char* block, std::size_t count)
                                     {
                                         bytes.append(block, count);
                                         return true;
                                     });
    if (!read)
        return read.error();
    return bytes;
}

Result<void> ZipReader::Extract(const ZipEntry& entry, const std::filesystem::path& file) const
{
    const ZipEntry::Content& content = *entry.m_pContent;
    const std::string name = content.name + " of " + m_pContent->path;
    if (content.archive != m_pContent->file.get() || file.native().find('\0') != std::string::npos)
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
    const Result<void> decoded = Decode(m_pContent->file, *content.record, "cannot extract", name,
                                        [descriptor](const char* block, std::size_t count)
                                        { return WriteAll(descriptor, block, count); });
    return decoded ? (*writer)->Finish() : decoded;
}

namespace
{

// The extraction of a whole archive below one folder.
class Extraction
{
public:
    Extraction(std::shared_ptr<const ZipFile> file, int root, std::uint64_t bytes, std::uint64_t ratio)
        : m_file(std::move(file)), m_iRoot(root), m_uBytes(bytes), m_uRatio(ratio)
    {
    }

    struct Entry
    {
        const std::string& name;
        const std::string& bytes;
        std::uint64_t size;
        std::uint64_t compressed;
        bool isFolder;
        unsigned int mode;
        const wxZipEntry& record;
    };

    Result<void> Extract(const Entry& entry)
    {
        const char* wrong =
            WrongInZipName(entry.bytes.find('\0') != entry.bytes.npos ? entry.bytes : entry.name);
        // No system call takes a longer one.
        if (entry.name.size() >= PATH_MAX)
            return SystemFailure(c_strAttempt, entry.name, ENAMETOOLONG);
        const std::vector<std::string_view> parts = PartsOfZipName(entry.name);
        if (wrong == nullptr && IsSpecial(entry.mode))
            wrong = "it is a link or a device";
        if (wrong == nullptr)
            wrong = m_names.Take(parts, entry.isFolder);
        if (wrong != nullptr)
            return Failure(Errc::Refused, c_strAttempt + (" " + entry.name) + ": " + wrong);
        if (entry.size > m_uBytes || (entry.size > s_uNoRatio &&
                                      entry.size / std::max<std::uint64_t>(entry.compressed, 1) >= m_uRatio))
            return Failure(Errc::LimitReached, c_strAttempt + (" " + entry.name) + ": it is too long");
        return ExtractInto(entry, parts);
    }

private:
    static constexpr const char* c_strAttempt = "cannot extract";

    Result<void> ExtractInto(const Entry& entry, const std::vector<std::string_view>& parts)
    {
        Descriptor parent;
        const std::size_t folders = entry.isFolder ? parts.size() : parts.size() - 1;
        for (std::size_t i = 0; i < folders; ++i)
        {
            Descriptor folder = OpenFolderBelow(i == 0 ? m_iRoot : parent.Get(), std::string(parts[i]));
            if (!folder.IsOpen())
                return SystemFailure(c_strAttempt, entry.name, errno);
            parent = std::move(folder);
        }
        return entry.isFolder
                   ? Result<void>()
                   : ExtractFile(entry, folders == 0 ? m_iRoot : parent.Get(), std::string(parts.back()));
    }

    Result<void> ExtractFile(const Entry& entry, int folder, const std::string& name)
    {
        if (!MayBeReplaced(folder, name))
            return SystemFailure(c_strAttempt, entry.name, errno);
        TemporaryFile file(folder, 0666);
        if (!file.IsOpen())
            return SystemFailure(c_strAttempt, entry.name, errno);
        const auto take = [&](const char* block, std::size_t count)
        { return WriteAll(file.Get(), block, count); };
        if (Result<void> decoded = Decode(m_file, entry.record, c_strAttempt, entry.name, take); !decoded)
            return decoded;
        if (!file.TakePlaceOf(name.c_str()))
            return SystemFailure(c_strAttempt, entry.name, errno);
        m_uBytes -= entry.size;
        return {};
    }

    const std::shared_ptr<const ZipFile> m_file;
    const int m_iRoot;
    std::uint64_t m_uBytes;
    const std::uint64_t m_uRatio;
    TakenNames m_names;
};

} // namespace

Result<ZipReport> ZipReader::ExtractAll(const std::filesystem::path& folder, const ZipLimits& limits) const
{
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
    Extraction extraction(m_pContent->file, root.Get(), limit.bytes, limit.ratio);
    auto report = std::make_shared<ZipReport::Content>();
    for (const ZipEntry& entry : m_pContent->entries)
    {
        const ZipEntry::Content& content = *entry.m_pContent;
        const Result<void> done =
            extraction.Extract({content.name, content.bytes, content.size, content.compressed,
                                content.isFolder, content.mode, *content.record});
        if (done)
            report->extracted.push_back(content.name);
        else
            report->refused.push_back(done.error());
    }
    return ZipReport(std::move(report));
}

} // namespace Toolkit
