// SPDX-License-Identifier: MIT
#include "Archive.h"

#include <map>

#include "toolkit/core/smart_ptr.h"
#include "toolkit/files/ArchiveEntriesFlags.h"
#include "toolkit/files/ArchiveZip.h"
#include "toolkit/files/ArchiveZipEntry.h"

namespace Desk
{

using namespace Toolkit;

namespace
{

using Entries = std::map<Text, smart_ptr<ArchiveZipEntry>>;

} // namespace

bool ExtractFiles(const Text& path, const Text& pattern, const Text& folder, std::vector<Text>& paths,
                  std::vector<Text>& report)
{
    ArchiveZip archive;
    archive.Open(path);
    Entries entries;
    if (archive.EntriesList(entries, pattern, ArchiveEntriesFlags::Files) < 1)
        return false;
    bool all = true;
    for (const auto& [name, entry] : entries)
    {
        Text target = Join(folder, FileName(name));
        const bool done = archive.UnZip(entry, target);
        report.push_back(name +
                         (done ? L", " + ToText(static_cast<unsigned long long>(entry->GetSize())) + L" bytes"
                               : Text(L": cannot be extracted")));
        paths.push_back(target);
        all = all && done;
    }
    return all;
}

} // namespace Desk
