// SPDX-License-Identifier: MIT
// Lists the files of a ZIP archive with the first line of each: zip-reader <archive> [<beginning of the
// names>]

#include <toolkit/Toolkit.h>

#include <iostream>
#include <map>

using namespace Toolkit;

int main(int argumentCount, char** arguments)
{
    const ToolkitSession session;
    if (argumentCount < 2 || argumentCount > 3)
    {
        std::cerr << "usage: zip-reader <archive> [<beginning of the names>]\n";
        return 2;
    }

    ArchiveZip archive;
    archive.Open(UTF8::ToUNICODE(TString<char>(arguments[1])));

    // An empty pattern keeps every name.
    const TString<wchar_t> pattern = UTF8::ToUNICODE(TString<char>(argumentCount == 3 ? arguments[2] : ""));
    std::map<TString<wchar_t>, smart_ptr<ArchiveZipEntry>> entries;
    if (archive.EntriesList(entries, pattern, ArchiveEntriesFlags::Files) < 0)
    {
        std::cerr << "no archive: " << arguments[1] << '\n';
        return 1;
    }

    for (const auto& [name, entry] : entries)
    {
        // The archive has one stream; this call moves it to the entry.
        const smart_ptr<ZipInputStream> content = archive.GetZipInputStream(entry);
        TString<wchar_t> line;
        content->ReadLine(line);
        std::cout << UTF8::ToUTF8(name) << ", " << entry->GetSize() << " bytes: " << UTF8::ToUTF8(line)
                  << '\n';
    }
}
