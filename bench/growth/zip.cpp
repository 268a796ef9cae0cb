// SPDX-License-Identifier: MIT
#include "bench/growth/Growth.h"

#include <map>
#include <memory>

#include <wx/wfstream.h>
#include <wx/zipstrm.h>

#include "toolkit/files/ArchiveZip.h"
#include "toolkit/files/ArchiveZipEntry.h"
#include "toolkit/files/ZipInputStream.h"

namespace ToolkitGrowth
{

using namespace Toolkit;

namespace
{

using Entries = std::map<TString<wchar_t>, smart_ptr<ArchiveZipEntry>>;

// An archive of that many small entries and, last, one of that many bytes.
TString<wchar_t> WriteArchive(std::size_t entries, std::size_t length)
{
    const std::string name = "archive" + std::to_string(entries) + "-" + std::to_string(length) + ".zip";
    wxFFileOutputStream file((ToolkitBench::Folder() / name).string());
    wxZipOutputStream archive(file);
    for (std::size_t i = 0; i < entries; ++i)
    {
        archive.PutNextEntry("folder/file" + std::to_string(1000000 + i));
        archive.Write("text", 4);
    }
    archive.PutNextEntry("last");
    std::string content = ToolkitBench::Words(length);
    // Lines of the same length.
    for (std::size_t i = 55; i < content.size(); i += 56)
        content[i] = '\n';
    archive.Write(content.data(), content.size());
    archive.Close();
    return PathOf(name);
}

Entries ListOf(ArchiveZip& archive)
{
    Entries entries;
    archive.EntriesList(entries, L"*", ArchiveEntriesFlags::All);
    return entries;
}

// An archive that is open, and its last entry.
struct Opened
{
    explicit Opened(const TString<wchar_t>& path)
    {
        m_archive.Open(path);
        m_last = ListOf(m_archive).at(L"last");
    }

    ArchiveZip m_archive;
    smart_ptr<ArchiveZipEntry> m_last;
};

// `read(opened)` of an entry of that many bytes.
template <class Read>
void AddContent(const std::string& operation, Read read)
{
    Add(operation, s_vecMany,
        [read](std::size_t length)
        { return [read, opened = std::make_shared<Opened>(WriteArchive(0, length))] { read(*opened); }; });
}

} // namespace

void AddZip()
{
    Add("ZipList", s_vecFew,
        [](std::size_t entries)
        {
            return [path = WriteArchive(entries, 1)]
            {
                ArchiveZip archive;
                archive.Open(path);
                benchmark::DoNotOptimize(ListOf(archive).size());
            };
        });
    Add("ZipPosition", s_vecFew,
        [](std::size_t entries)
        {
            return [opened = std::make_shared<Opened>(WriteArchive(entries, 1))]
            { benchmark::DoNotOptimize(opened->m_archive.GetZipInputStream(opened->m_last).get()); };
        });
    AddContent("ZipExtract",
               [](Opened& opened)
               {
                   TString<wchar_t> target = PathOf("extracted");
                   benchmark::DoNotOptimize(opened.m_archive.UnZip(opened.m_last, target));
               });
    AddContent("ZipBytes",
               [](Opened& opened)
               {
                   std::vector<unsigned char> bytes;
                   *opened.m_archive.GetZipInputStream(opened.m_last) >> bytes;
                   benchmark::DoNotOptimize(bytes.data());
               });
    AddContent("ZipWords",
               [](Opened& opened)
               {
                   const auto stream = opened.m_archive.GetZipInputStream(opened.m_last);
                   TString<wchar_t> word;
                   do
                       *stream >> word;
                   while (!word.empty());
               });
    AddContent("ZipLines",
               [](Opened& opened)
               {
                   const auto stream = opened.m_archive.GetZipInputStream(opened.m_last);
                   TString<wchar_t> line;
                   while (stream->ReadLine(line))
                       benchmark::DoNotOptimize(line.data());
               });
}

} // namespace ToolkitGrowth
