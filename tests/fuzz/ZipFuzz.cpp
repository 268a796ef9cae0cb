// SPDX-License-Identifier: MIT
#include <map>
#include <vector>

#include "tests/support/FuzzCheck.h"
#include "tests/support/FuzzFile.h"
#include "toolkit/files/ArchiveZip.h"
#include "toolkit/files/ArchiveZipEntry.h"
#include "toolkit/files/ZipInputStream.h"

using Text = Toolkit::TString<wchar_t>;

static std::uint32_t Checksum(const std::string& bytes)
{
    std::uint32_t sum = 0xFFFFFFFF;
    for (const char byte : bytes)
    {
        sum ^= static_cast<unsigned char>(byte);
        for (int i = 0; i < 8; ++i)
            sum = (sum >> 1) ^ ((sum & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~sum;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Toolkit;
    const ToolkitTest::FuzzFile file(data, size);
    const ToolkitTest::FuzzFile target;
    ArchiveZip archive;
    archive.Open(file.GetPath());
    std::map<Text, smart_ptr<ArchiveZipEntry>> entries;
    const int count = archive.EntriesList(entries, L"", ArchiveEntriesFlags::All);
    TOOLKIT_FUZZ_CHECK(count == static_cast<int>(entries.size()) || (count == -1 && entries.empty()));
    for (const auto& [name, entry] : entries)
    {
        std::vector<unsigned char> bytes;
        *archive.GetZipInputStream(entry) >> bytes;
        const std::string content(bytes.begin(), bytes.end());
        TOOLKIT_FUZZ_CHECK(content.empty() || Checksum(content) == entry->GetCrc());

        Text path = target.GetPath();
        const bool extracted = archive.UnZip(entry, path);
        TOOLKIT_FUZZ_CHECK(!extracted || (target.GetContent() == content && !content.empty()));

        Text line;
        const auto stream = archive.GetZipInputStream(entry);
        *stream >> line;
        while (stream->ReadLine(line))
            TOOLKIT_FUZZ_CHECK(!content.empty());
    }
    return 0;
}
