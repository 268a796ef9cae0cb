// SPDX-License-Identifier: MIT
#include "Archive.h"

#include "toolkit/files/ZipReader.h"
#include "toolkit/regExp/Pattern.h"

namespace Desk
{

using namespace Toolkit;

Result<std::vector<std::filesystem::path>> ExtractFiles(const std::filesystem::path& archive,
                                                        const std::string& wanted,
                                                        const std::filesystem::path& folder)
{
    const Result<Pattern> pattern = Pattern::Compile(wanted);
    if (!pattern)
        return pattern.error();
    const Result<ZipReader> zip = ZipReader::Open(archive);
    if (!zip)
        return zip.error();
    std::vector<std::filesystem::path> files;
    for (const ZipEntry& entry : *zip)
    {
        if (entry.IsFolder() || !pattern->Find(entry.Name()))
            continue;
        const std::filesystem::path file = folder / std::filesystem::path(entry.Name()).filename();
        if (const Result<void> done = zip->Extract(entry, file); !done)
            return done.error();
        files.push_back(file);
    }
    return files;
}

} // namespace Desk
