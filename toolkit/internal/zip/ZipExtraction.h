// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZIP_ZIPEXTRACTION_H
#define TOOLKIT_INTERNAL_ZIP_ZIPEXTRACTION_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/core/Result.h"
#include "toolkit/internal/zip/ZipFile.h"

namespace Toolkit
{

// The extraction of a whole archive below one folder, which nothing leaves, whatever the archive or another
// process does meanwhile.
class ZipExtraction
{
public:
    // An entry of the archive; all of it must live as long as its extraction takes.
    struct Entry
    {
        const std::string& name;
        bool isFolder;
        std::uint64_t size;
        std::uint64_t compressed;
        // With the name as the archive has it; only there a NUL shows.
        const ZipFile::DirectoryRecord& record;
    };

    // `root` is the folder, open; `bytes` and `ratio` are the limits.
    ZipExtraction(std::shared_ptr<const ZipFile> file, int root, std::uint64_t bytes, std::uint64_t ratio);

    Result<void> Extract(const Entry& entry);

private:
    // The names that were made, and those that only differ from them on some systems: a tree, so that what it
    // takes is never more than what the archive has.
    class TakenNames
    {
    public:
        // What is wrong with a name; empty when nothing is.
        std::string Take(const std::vector<std::string_view>& parts, bool isFolder);

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

    Result<void> ExtractInto(const Entry& entry, const std::vector<std::string_view>& parts);
    Result<void> ExtractFile(const Entry& entry, int folder, const std::string& name);

    const std::shared_ptr<const ZipFile> m_file;
    const int m_iRoot;
    std::uint64_t m_uBytes;
    const std::uint64_t m_uRatio;
    TakenNames m_names;
};

} // namespace Toolkit

#endif
