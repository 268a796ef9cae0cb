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

} // namespace

void ToolkitBench::Register()
{
    const std::filesystem::path path = WriteArchive(s_uEntries);
    RegisterToolkit(path);
    Operation("ZipList/wx",
              [path]
              {
                  wxFFileInputStream file(path.string());
                  wxZipInputStream archive(file);
                  std::size_t count = 0;
                  while (const std::unique_ptr<wxZipEntry> entry{archive.GetNextEntry()})
                      ++count;
                  benchmark::DoNotOptimize(count);
              });
#ifdef BENCH_ZLIB
    // The content packed by itself, and what unpacking and checking it takes.
    const std::string content = Words(s_uContent);
    uLongf packedSize = compressBound(content.size());
    std::vector<unsigned char> packed(packedSize);
    compress(packed.data(), &packedSize, reinterpret_cast<const unsigned char*>(content.data()),
             content.size());
    packed.resize(packedSize);
    for (const char* name : {"ZipBytes/limit", "ZipExtract/limit"})
        Operation(name,
                  [packed]
                  {
                      std::vector<unsigned char> bytes(s_uContent);
                      uLongf size = bytes.size();
                      uncompress(bytes.data(), &size, packed.data(), packed.size());
                      benchmark::DoNotOptimize(crc32(0, bytes.data(), static_cast<uInt>(size)));
                  });
#endif
#ifdef BENCH_LIBZIP
    Operation("ZipList/libzip",
              [path]
              {
                  zip_t* const archive = zip_open(path.c_str(), ZIP_RDONLY, nullptr);
                  const zip_int64_t count = zip_get_num_entries(archive, 0);
                  for (zip_int64_t i = 0; i < count; ++i)
                      benchmark::DoNotOptimize(
                          std::string(zip_get_name(archive, static_cast<zip_uint64_t>(i), 0)));
                  zip_discard(archive);
              });
    for (const char* name : {"ZipBytes/libzip", "ZipExtract/libzip"})
        Operation(name,
                  [path, extract = name[3] == 'E']
                  {
                      zip_t* const archive = zip_open(path.c_str(), ZIP_RDONLY, nullptr);
                      zip_file_t* const entry = zip_fopen(archive, s_strBig, 0);
                      std::vector<char> bytes(s_uContent);
                      benchmark::DoNotOptimize(zip_fread(entry, bytes.data(), bytes.size()));
                      if (extract)
                      {
                          std::FILE* const file = std::fopen((Folder() / "libzip").c_str(), "wb");
                          std::fwrite(bytes.data(), 1, bytes.size(), file);
                          std::fclose(file);
                      }
                      zip_fclose(entry);
                      zip_discard(archive);
                  });
#endif
#ifdef BENCH_MINIZIP
    Operation("ZipBytes/minizip",
              [path]
              {
                  const unzFile archive = unzOpen(path.c_str());
                  unzLocateFile(archive, s_strBig, 1);
                  unzOpenCurrentFile(archive);
                  std::vector<char> bytes(s_uContent);
                  benchmark::DoNotOptimize(
                      unzReadCurrentFile(archive, bytes.data(), static_cast<unsigned int>(bytes.size())));
                  unzCloseCurrentFile(archive);
                  unzClose(archive);
              });
#endif
#ifdef BENCH_LIBARCHIVE
    Operation("ZipList/libarchive",
              [path]
              {
                  archive* const reader = archive_read_new();
                  archive_read_support_format_zip_seekable(reader);
                  archive_read_open_filename(reader, path.c_str(), 65536);
                  archive_entry* entry = nullptr;
                  while (archive_read_next_header(reader, &entry) == ARCHIVE_OK)
                      benchmark::DoNotOptimize(archive_entry_pathname(entry));
                  archive_read_free(reader);
              });
#endif
}
