// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_ZIPREADER_H
#define TOOLKIT_FILES_ZIPREADER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/core/Export.h"
#include "toolkit/core/Result.h"

namespace Toolkit
{

/// What an archive says of one of its entries. Nothing of it is verified. A value that is cheap to copy and
/// outlives its reader; several threads may read one at once.
///
/// @code
/// for (const Toolkit::ZipEntry& entry : *zip)
///     if (!entry.IsFolder())
///         std::cout << entry.Name() << ' ' << entry.Size() << '\n';
/// @endcode
class TOOLKIT_API ZipEntry
{
public:
    ZipEntry(const ZipEntry& other) noexcept;
    ZipEntry& operator=(const ZipEntry& other) noexcept;
    ~ZipEntry();

    /// As it is in the archive, in UTF-8: parts are separated by "/", and a folder's name ends with one.
    const std::string& Name() const noexcept;
    /// The declared length of the content, in bytes.
    std::uint64_t Size() const noexcept;
    /// When the content was changed last, to two seconds, in the local zone of now.
    std::chrono::system_clock::time_point Modified() const noexcept;
    /// True for a folder, whose name ends with "/".
    bool IsFolder() const noexcept;

private:
    friend class ZipReader;
    struct Content;

    explicit ZipEntry(std::shared_ptr<const Content> content) noexcept;

    std::shared_ptr<const Content> m_pContent;
};

/// What `ZipReader::ExtractAll` did: the names of the entries that are there now, and a failure for each one
/// that is not, which names the entry and says why. A value that is cheap to copy.
///
/// @code
/// std::cout << report->Extracted().size() << " entries\n";
/// for (const Toolkit::Failure& refused : report->Refused())
///     std::cerr << refused.Message() << '\n';
/// @endcode
class TOOLKIT_API ZipReport
{
public:
    ZipReport(const ZipReport& other) noexcept;
    ZipReport& operator=(const ZipReport& other) noexcept;
    ~ZipReport();

    /// The names of the entries that were extracted.
    const std::vector<std::string>& Extracted() const noexcept;
    /// A failure for each entry that was not.
    const std::vector<Failure>& Refused() const noexcept;

private:
    friend class ZipReader;
    struct Content;

    explicit ZipReport(std::shared_ptr<const Content> content) noexcept;

    std::shared_ptr<const Content> m_pContent;
};

/// How much `ZipReader::ExtractAll` takes from an archive; what is over it is refused. By default 100,000
/// entries, 16 GiB, and for an entry of more than 16 MiB a content 250 times as long as what lies in the
/// archive.
///
/// @code
/// const Toolkit::ZipLimits limits = Toolkit::ZipLimits().Entries(1000).Bytes(100 << 20);
/// if (Toolkit::Result<Toolkit::ZipReport> report = zip->ExtractAll(folder, limits); !report)
///     return Fail(report.error().Message());
/// @endcode
class TOOLKIT_API ZipLimits
{
public:
    ZipLimits();
    ZipLimits(const ZipLimits& other);
    ZipLimits& operator=(const ZipLimits& other);
    ~ZipLimits();

    /// How many entries an archive may have.
    ZipLimits& Entries(std::uint64_t most);
    /// How many bytes may be written altogether.
    ZipLimits& Bytes(std::uint64_t most);
    /// How many times as long as in the archive a content may be.
    ZipLimits& Ratio(std::uint64_t most);

private:
    friend class ZipReader;
    struct Content;

    std::unique_ptr<Content> m_pContent;
};

/// A ZIP archive that is read. It holds the file open, and its list of entries as it was when it was opened.
/// An archive is never trusted: nothing of an entry is handed out whose checksum, length or records are
/// wrong, and what it declares is not allocated. Any thread may use it, and several at once; they wait for
/// each other. Failures of all operations are `Errc::Malformed` for what is damaged, `Errc::Refused` for what
/// is encrypted or packed by an unknown method, `Errc::LimitReached`, and those of the system. One that was
/// moved from has no entries, and its operations fail with `Errc::Refused`.
///
/// @code
/// Toolkit::Result<Toolkit::ZipReader> zip = Toolkit::ZipReader::Open("mails.zip");
/// if (!zip)
///     std::cerr << zip.error().Message() << '\n';
/// else if (std::optional<Toolkit::ZipEntry> entry = zip->Find("inbox/1.eml"))
///     std::cout << zip->Read(*entry).value_or("");
/// @endcode
class TOOLKIT_API ZipReader
{
public:
    /// Reads the list of entries. `Errc::Malformed` for what is no archive.
    static Result<ZipReader> Open(const std::filesystem::path& path);

    ZipReader(ZipReader&& other) noexcept;
    ZipReader& operator=(ZipReader&& other) noexcept;
    ~ZipReader();

    /// The entries in the order of the archive.
    const ZipEntry* begin() const noexcept;
    /// The end of the entries.
    const ZipEntry* end() const noexcept;

    /// The first entry of exactly this name.
    std::optional<ZipEntry> Find(std::string_view name) const;

    /// The content of an entry of this archive, 1 GiB at most unless it is told otherwise.
    Result<std::string> Read(const ZipEntry& entry, std::size_t largest = std::size_t{1} << 30) const;

    /// Writes the content into a file, as `WriteFile` does: whole, or the file is as it was. The entry's name
    /// plays no part.
    Result<void> Extract(const ZipEntry& entry, const std::filesystem::path& file) const;

    /// Extracts every entry below a folder, which is made if it is missing. A file that is there is replaced.
    /// Whatever the archive or another process does meanwhile, nothing outside the folder is made or changed:
    /// refused are names that are absolute, hold "..", a backslash or a NUL, that differ from another one in
    /// case or form alone, names beyond ASCII while ICU cannot be loaded, links, devices, and whatever would
    /// go through a link or over something else than a file. It fails as a whole when the folder cannot be
    /// opened or the archive has too many entries.
    Result<ZipReport> ExtractAll(const std::filesystem::path& folder,
                                 const ZipLimits& limits = ZipLimits()) const;

private:
    struct Content;

    explicit ZipReader(std::unique_ptr<Content> content) noexcept;

    std::unique_ptr<Content> m_pContent;
};

} // namespace Toolkit

#endif
