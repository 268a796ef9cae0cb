// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_ZIPWRITER_H
#define TOOLKIT_FILES_ZIPWRITER_H

#include <filesystem>
#include <memory>
#include <string_view>

#include "toolkit/core/Export.h"
#include "toolkit/core/Result.h"

namespace Toolkit
{

/// A ZIP archive that is written. The file gets its name, or its new content, in `Finish`, all at once; a
/// writer that is dropped before leaves everything as it was. One thread at a time. Once an operation failed
/// in the middle of an entry every later one returns that failure. A name is UTF-8, its parts are separated
/// by "/", and one that ends with "/" is a folder's; `Errc::Refused` for one that is absolute, holds "..", a
/// backslash or a NUL, is no UTF-8, or was added before, and for every operation of a writer that was moved
/// from. The other failures are those of the system.
///
/// @code
/// Toolkit::Result<Toolkit::ZipWriter> zip = Toolkit::ZipWriter::Create("mails.zip");
/// if (zip && zip->Add("inbox/1.eml", text) && zip->AddFile("notes.txt", "notes.txt"))
///     zip->Finish().value();
/// @endcode
class TOOLKIT_API ZipWriter
{
public:
    /// Begins an archive that is to lie at `path`; missing folders are made. A relative path means the same
    /// file when `Finish` is called in another folder. Links are followed, and a file that is there keeps its
    /// permissions, as with `WriteFile`.
    static Result<ZipWriter> Create(const std::filesystem::path& path);

    ZipWriter(ZipWriter&& other) noexcept;
    ZipWriter& operator=(ZipWriter&& other) noexcept;
    ~ZipWriter();

    /// Adds an entry of this content, modified now.
    Result<void> Add(std::string_view name, std::string_view bytes);

    /// Adds an entry with the content of a regular file, and the time at which that was modified.
    Result<void> AddFile(std::string_view name, const std::filesystem::path& file);

    /// Writes the list of the entries and has the archive take its name; it is on the disk then. Nothing can
    /// be added afterwards (`std::errc::invalid_argument`).
    Result<void> Finish();

private:
    struct Content;

    explicit ZipWriter(std::unique_ptr<Content> content) noexcept;

    std::unique_ptr<Content> m_pContent;
};

} // namespace Toolkit

#endif
