// SPDX-License-Identifier: MIT
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>

#include <unistd.h>

#include "tests/support/FuzzCheck.h"
#include "tests/support/FuzzFile.h"
#include "toolkit/encoding/Text.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/ZipReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Toolkit;
    const ToolkitTest::FuzzFile file(data, size);
    const std::filesystem::path path(std::string(UTF8::ToUTF8(file.GetPath())));
    const Result<ZipReader> zip = ZipReader::Open(path);
    if (!zip)
        return 0;
    std::size_t count = 0;
    for (const ZipEntry& entry : *zip)
    {
        ++count;
        TOOLKIT_FUZZ_CHECK(zip->Find(entry.Name()).has_value());
        TOOLKIT_FUZZ_CHECK(Text::IsUtf8(entry.Name()));
        const Result<std::string> content = zip->Read(entry, std::size_t{1} << 20);
        TOOLKIT_FUZZ_CHECK(!content || content->size() == entry.Size());
        static_cast<void>(entry.Modified());
    }
    // A folder in a folder, beside which nothing may appear.
    const std::filesystem::path around =
        std::filesystem::temp_directory_path() / ("around" + std::to_string(getpid()));
    std::filesystem::create_directory(around);
    const Result<ZipReport> report = zip->ExtractAll(around / "out", ZipLimits().Bytes(1 << 20));
    TOOLKIT_FUZZ_CHECK(!report || report->Extracted().size() + report->Refused().size() == count);
    for (const auto& each : std::filesystem::directory_iterator(around))
        TOOLKIT_FUZZ_CHECK(each.path().filename() == "out");
    for (const auto& each : std::filesystem::recursive_directory_iterator(around / "out"))
        TOOLKIT_FUZZ_CHECK(!each.is_symlink() && (each.is_directory() || each.is_regular_file()));
    std::filesystem::remove_all(around);
    return 0;
}
