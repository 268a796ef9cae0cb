// SPDX-License-Identifier: MIT
#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <vector>

#include <wx/wfstream.h>
#include <wx/zipstrm.h>

#include "bench/Bench.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/ArchiveZip.h"
#include "toolkit/files/ArchiveZipEntry.h"
#include "toolkit/files/ZipInputStream.h"
#include "toolkit/files/ZipReader.h"

#ifdef BENCH_LIBZIP
#include <zip.h>
#endif
#ifdef BENCH_MINIZIP
#include <minizip/unzip.h>
#endif
#ifdef BENCH_LIBARCHIVE
#include <archive.h>
#include <archive_entry.h>
#endif
#ifdef BENCH_POCO
#include <Poco/StreamCopier.h>
#include <Poco/Zip/ZipArchive.h>
#include <Poco/Zip/ZipStream.h>
#endif
#ifdef BENCH_ZLIB
#include <zlib.h>
#endif

using namespace Toolkit;

namespace
{

using Entries = std::map<TString<wchar_t>, smart_ptr<ArchiveZipEntry>>;

const std::size_t s_uEntries = 500;
const std::size_t s_uContent = std::size_t{4} << 20;
const char s_strBig[] = "big.txt";

std::filesystem::path WriteArchive(std::size_t entries)
{
    const std::filesystem::path path =
        ToolkitBench::Folder() / ("archive" + std::to_string(entries) + ".zip");
    wxFFileOutputStream file(path.string());
    wxZipOutputStream archive(file);
    for (std::size_t i = 0; i < entries; ++i)
    {
        archive.PutNextEntry("folder/file" + std::to_string(i));
        archive.Write("text", 4);
    }
    archive.PutNextEntry(s_strBig);
    const std::string content = ToolkitBench::Words(s_uContent);
    archive.Write(content.data(), content.size());
    archive.Close();
    return path;
}

std::size_t CountEntries(const TString<wchar_t>& path)
{
    ArchiveZip archive;
    archive.Open(path);
    Entries entries;
    archive.EntriesList(entries, L"*", ArchiveEntriesFlags::All);
    return entries.size();
}

void RegisterReader(const std::filesystem::path& path)
{
    ToolkitBench::Operation("ReaderList/Toolkit",
                            [path]
                            {
                                const Result<ZipReader> zip = ZipReader::Open(path);
                                for (const ZipEntry& entry : *zip)
                                    benchmark::DoNotOptimize(std::string(entry.Name()));
                            });
    const auto zip = std::make_shared<Result<ZipReader>>(ZipReader::Open(path));
    const ZipEntry big = (*zip)->Find(s_strBig).value();
    ToolkitBench::Operation("ReaderRead/Toolkit",
                            [zip, big] { benchmark::DoNotOptimize((*zip)->Read(big)->size()); });
    ToolkitBench::Operation("ReaderExtract/Toolkit", [zip, big, target = ToolkitBench::Folder() / "read"]
                            { benchmark::DoNotOptimize((*zip)->Extract(big, target).has_value()); });
    const auto whole = std::make_shared<Result<ZipReader>>(ZipReader::Open(WriteArchive(0)));
    ToolkitBench::Operation("ReaderExtractAll/Toolkit", [whole, target = ToolkitBench::Folder() / "all"]
                            { benchmark::DoNotOptimize((*whole)->ExtractAll(target)->Extracted().size()); });
}

void RegisterToolkit(const std::filesystem::path& archivePath)
{
    const TString<wchar_t> path = UTF8::ToUNICODE(TString<char>(archivePath.string()));
    ToolkitBench::Operation("ZipList/Toolkit", [path] { benchmark::DoNotOptimize(CountEntries(path)); });
    const auto archive = std::make_shared<ArchiveZip>();
    archive->Open(path);
    Entries entries;
    archive->EntriesList(entries, L"*", ArchiveEntriesFlags::All);
    const smart_ptr<ArchiveZipEntry> big = entries.at(L"big.txt");
    ToolkitBench::Operation(
        "ZipExtract/Toolkit",
        [archive, big, target = UTF8::ToUNICODE(TString<char>((ToolkitBench::Folder() / "out").string()))]
        {
            TString<wchar_t> to(target);
            benchmark::DoNotOptimize(archive->UnZip(big, to));
        });
    ToolkitBench::Operation("ZipBytes/Toolkit",
                            [archive, big]
                            {
                                std::vector<unsigned char> bytes;
                                *archive->GetZipInputStream(big) >> bytes;
                                benchmark::DoNotOptimize(bytes.size());
                            });
}

// Registers a peer's bytes, what `read()` answers, and its extraction, which writes them to a file as well.
template <class Read>
void RegisterContent(const std::string& whose, Read read)
{
    ToolkitBench::Operation("ZipBytes/" + whose,
                            [read]() mutable
                            {
                                const auto bytes = read();
                                benchmark::DoNotOptimize(bytes.data());
                            });
    ToolkitBench::Operation("ZipExtract/" + whose,
                            [read, target = (ToolkitBench::Folder() / whose).string()]() mutable
                            {
                                const auto bytes = read();
                                std::FILE* const file = std::fopen(target.c_str(), "wb");
                                std::fwrite(bytes.data(), 1, bytes.size(), file);
                                std::fclose(file);
                            });
}

void RegisterWx(const std::string& path)
{
    ToolkitBench::Operation("ZipList/wx",
                            [path]
                            {
                                wxFFileInputStream file(path);
                                wxZipInputStream archive(file);
                                std::size_t count = 0;
                                while (const std::unique_ptr<wxZipEntry> entry{archive.GetNextEntry()})
                                    ++count;
                                benchmark::DoNotOptimize(count);
                            });
    const auto archive = std::make_shared<wxZipInputStream>(new wxFFileInputStream(path));
    std::shared_ptr<wxZipEntry> big;
    while (big == nullptr || big->GetName() != s_strBig)
        big.reset(archive->GetNextEntry());
    RegisterContent("wx",
                    [archive, big]
                    {
                        archive->OpenEntry(*big);
                        std::vector<char> bytes(s_uContent);
                        archive->Read(bytes.data(), bytes.size());
                        archive->CloseEntry();
                        return bytes;
                    });
}

// The content packed by itself, and what unpacking and checking it takes.
void RegisterLimit()
{
#ifdef BENCH_ZLIB
    std::string content = ToolkitBench::Words(s_uContent);
    std::vector<unsigned char> packed(compressBound(content.size()));
    z_stream deflation = {};
    deflateInit2(&deflation, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, MAX_MEM_LEVEL,
                 Z_DEFAULT_STRATEGY);
    deflation.next_in = reinterpret_cast<unsigned char*>(content.data());
    deflation.avail_in = static_cast<uInt>(content.size());
    deflation.next_out = packed.data();
    deflation.avail_out = static_cast<uInt>(packed.size());
    deflate(&deflation, Z_FINISH);
    packed.resize(deflation.total_out);
    deflateEnd(&deflation);
    for (const char* name : {"ZipBytes/limit", "ZipExtract/limit"})
        ToolkitBench::Operation(name,
                                [packed]() mutable
                                {
                                    std::vector<unsigned char> bytes(s_uContent);
                                    z_stream inflation = {};
                                    inflateInit2(&inflation, -MAX_WBITS);
                                    inflation.next_in = packed.data();
                                    inflation.avail_in = static_cast<uInt>(packed.size());
                                    inflation.next_out = bytes.data();
                                    inflation.avail_out = static_cast<uInt>(bytes.size());
                                    benchmark::DoNotOptimize(inflate(&inflation, Z_FINISH));
                                    inflateEnd(&inflation);
                                    benchmark::DoNotOptimize(crc32_z(0, bytes.data(), bytes.size()));
                                });
#endif
}

#ifdef BENCH_LIBZIP
void RegisterLibzip(const std::string& path)
{
    ToolkitBench::Operation("ZipList/libzip",
                            [path]
                            {
                                zip_t* const archive = zip_open(path.c_str(), ZIP_RDONLY, nullptr);
                                const zip_int64_t count = zip_get_num_entries(archive, 0);
                                for (zip_int64_t i = 0; i < count; ++i)
                                    benchmark::DoNotOptimize(
                                        std::string(zip_get_name(archive, static_cast<zip_uint64_t>(i), 0)));
                                zip_discard(archive);
                            });
    const std::shared_ptr<zip_t> archive(zip_open(path.c_str(), ZIP_RDONLY, nullptr), &zip_discard);
    const zip_uint64_t big = static_cast<zip_uint64_t>(zip_name_locate(archive.get(), s_strBig, 0));
    RegisterContent("libzip",
                    [archive, big]
                    {
                        zip_file_t* const entry = zip_fopen_index(archive.get(), big, 0);
                        std::vector<char> bytes(s_uContent);
                        benchmark::DoNotOptimize(zip_fread(entry, bytes.data(), bytes.size()));
                        zip_fclose(entry);
                        return bytes;
                    });
}
#endif

#ifdef BENCH_MINIZIP
void RegisterMinizip(const std::string& path)
{
    ToolkitBench::Operation(
        "ZipList/minizip",
        [path]
        {
            const unzFile archive = unzOpen(path.c_str());
            for (int answer = unzGoToFirstFile(archive); answer == UNZ_OK; answer = unzGoToNextFile(archive))
            {
                unz_file_info entry = {};
                char name[256];
                unzGetCurrentFileInfo(archive, &entry, name, sizeof name, nullptr, 0, nullptr, 0);
                benchmark::DoNotOptimize(std::string(name));
            }
            unzClose(archive);
        });
    const std::shared_ptr<void> archive(unzOpen(path.c_str()), &unzClose);
    unzLocateFile(archive.get(), s_strBig, 1);
    unz_file_pos big = {};
    unzGetFilePos(archive.get(), &big);
    RegisterContent("minizip",
                    [archive, big]() mutable
                    {
                        unzGoToFilePos(archive.get(), &big);
                        unzOpenCurrentFile(archive.get());
                        std::vector<char> bytes(s_uContent);
                        benchmark::DoNotOptimize(unzReadCurrentFile(archive.get(), bytes.data(),
                                                                    static_cast<unsigned int>(bytes.size())));
                        unzCloseCurrentFile(archive.get());
                        return bytes;
                    });
}
#endif

#ifdef BENCH_LIBARCHIVE
// Goes through the names up to the one looked for, as it can do nothing else.
std::vector<char> ReadByLibarchive(const std::string& path, const std::string& name)
{
    std::vector<char> bytes;
    archive* const reader = archive_read_new();
    archive_read_support_format_zip_seekable(reader);
    archive_read_open_filename(reader, path.c_str(), 65536);
    archive_entry* entry = nullptr;
    while (archive_read_next_header(reader, &entry) == ARCHIVE_OK)
    {
        if (name != archive_entry_pathname(entry))
            continue;
        bytes.resize(s_uContent);
        benchmark::DoNotOptimize(archive_read_data(reader, bytes.data(), bytes.size()));
        break;
    }
    archive_read_free(reader);
    return bytes;
}

void RegisterLibarchive(const std::string& path)
{
    ToolkitBench::Operation("ZipList/libarchive",
                            [path] { benchmark::DoNotOptimize(ReadByLibarchive(path, "no such name")); });
    RegisterContent("libarchive", [path] { return ReadByLibarchive(path, s_strBig); });
}
#endif

#ifdef BENCH_POCO
void RegisterPoco(const std::string& path)
{
    ToolkitBench::Operation("ZipList/POCO",
                            [path]
                            {
                                std::ifstream file(path, std::ios::binary);
                                const Poco::Zip::ZipArchive archive(file);
                                for (auto entry = archive.headerBegin(); entry != archive.headerEnd();
                                     ++entry)
                                    benchmark::DoNotOptimize(std::string(entry->first));
                            });
    std::ifstream file(path, std::ios::binary);
    const auto archive = std::make_shared<Poco::Zip::ZipArchive>(file);
    RegisterContent("POCO",
                    [path, archive]
                    {
                        std::ifstream content(path, std::ios::binary);
                        Poco::Zip::ZipInputStream entry(content, archive->findHeader(s_strBig)->second, true);
                        std::string bytes;
                        Poco::StreamCopier::copyToString(entry, bytes, 65536);
                        benchmark::DoNotOptimize(entry.crcValid());
                        return bytes;
                    });
}
#endif

} // namespace

// Listing opens the archive; for the content it is open already.
void ToolkitBench::Register()
{
    const std::filesystem::path path = WriteArchive(s_uEntries);
    RegisterToolkit(path);
    RegisterReader(path);
    RegisterLimit();
    RegisterWx(path.string());
#ifdef BENCH_LIBZIP
    RegisterLibzip(path.string());
#endif
#ifdef BENCH_MINIZIP
    RegisterMinizip(path.string());
#endif
#ifdef BENCH_LIBARCHIVE
    RegisterLibarchive(path.string());
#endif
#ifdef BENCH_POCO
    RegisterPoco(path.string());
#endif
}
