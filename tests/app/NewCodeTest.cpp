// SPDX-License-Identifier: MIT
// New code as its author writes it: no session, nothing but headers for new code, and one scope for all of
// it.
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"
#include "toolkit/app/Folders.h"
#include "toolkit/core/LibraryVersion.h"
#include "toolkit/core/Result.h"
#include "toolkit/encoding/Text.h"
#include "toolkit/files/Settings.h"
#include "toolkit/files/WholeFile.h"
#include "toolkit/files/ZipReader.h"
#include "toolkit/files/ZipWriter.h"

using namespace Toolkit;
using testing::ElementsAre;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

// A host may have a class of the same name.
namespace Host
{

struct Settings
{
    int m_iValue = 1;
};

} // namespace Host

TEST(NewCode, ReadsAndWritesWholeFiles)
{
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.Path("a/file");
    Result<std::string> text = ReadFile("/proc/sys/kernel/ostype");
    if (!text)
        std::cerr << text.error().Message();
    ASSERT_TRUE(text);
    Result<void> done = WriteFile(path, *text);
    EXPECT_TRUE(done) << done.error().Message();
    Result<std::string> all = ReadFile(path);
    EXPECT_EQ(*all, "Linux\n");
    EXPECT_EQ(all->size(), 6U);
    EXPECT_EQ(ReadFile(folder.Path("missing")).value_or("none"), "none");
    std::string version = LibraryVersion();
    EXPECT_FALSE(version.empty());
}

TEST(NewCode, FailuresAreTestedThrownAndHandedOn)
{
    const auto half = [](const std::filesystem::path& path) -> Result<std::size_t>
    {
        Result<std::string> text = ReadFile(path);
        if (!text)
            return text.error();
        if (text->size() % 2 != 0)
            return Failure(Errc::Malformed, "cannot halve " + path.string() + ": its length is odd");
        return text->size() / 2;
    };
    const TemporaryFolder folder;
    WriteBytes(folder.Path("odd"), "123");
    EXPECT_EQ(half(folder.Path("missing")).error().Code(), std::errc::no_such_file_or_directory);
    EXPECT_EQ(half(folder.Path("odd")).error().Code(), Errc::Malformed);
    try
    {
        half(folder.Path("odd")).value();
        FAIL();
    }
    catch (const FailureError& error)
    {
        EXPECT_EQ(error.what(), "cannot halve " + folder.Path("odd") + ": its length is odd");
        EXPECT_EQ(error.code(), Errc::Malformed);
    }
}

TEST(NewCode, KeepsSettings)
{
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.Path("settings.ini");
    WriteBytes(path, "; mine\n[mail]\nname = A. Developer\npreview = 8o\nhtml = off\nold = 1\n");
    Result<Settings> settings = Settings::Load(path);
    ASSERT_TRUE(settings) << settings.error().Message();
    EXPECT_EQ(settings->Get("mail", "name", "nobody"), "A. Developer");
    EXPECT_EQ(settings->Get("mail", "preview", 80), 80);
    EXPECT_EQ(settings->Get("mail", "html", true), false);
    Result<std::optional<int>> n = settings->Read<int>("mail", "preview");
    ASSERT_FALSE(n);
    EXPECT_EQ(n.error().Message(), "mail/preview: '8o' is no number");
    EXPECT_THAT(settings->Sections(), ElementsAre("mail"));
    EXPECT_THAT(settings->Keys("mail"), ElementsAre("name", "preview", "html", "old"));
    EXPECT_TRUE(settings->Set("mail", "preview", 100));
    EXPECT_TRUE(settings->Remove("mail", "old"));
    EXPECT_TRUE(settings->Save());
    EXPECT_EQ(*ReadFile(path), "; mine\n[mail]\nname = A. Developer\npreview = 100\nhtml = off\n");
    const Host::Settings own;
    EXPECT_EQ(Settings::LoadOrNew(folder.Path("missing"))->Get("a", "b", own.m_iValue), 1);
}

// What is asked for by every type that one would think of, and set by it.
TEST(NewCode, SettingsTakeEveryTypeOfTextAndNumber)
{
    const TemporaryFolder folder;
    Result<Settings> settings = Settings::LoadOrNew(folder.Path("settings.ini"));
    ASSERT_TRUE(settings);
    const std::string section = "a";
    const std::string_view key = "key";
    const char* const literal = "text";
    char array[] = "text";
    EXPECT_TRUE(settings->Set(section, key, literal));
    EXPECT_TRUE(settings->Set(section, key, array));
    EXPECT_TRUE(settings->Set(section, key, std::string("text")));
    EXPECT_EQ(settings->Get(section, key, literal), "text");
    EXPECT_EQ(settings->Get(section, key, array), "text");
    EXPECT_EQ(settings->Get(section, key, std::string()), "text");
    EXPECT_EQ(*settings->Read<std::string>(section, key), "text");
    EXPECT_TRUE(settings->Set(section, key, std::size_t{7}));
    EXPECT_EQ(settings->Get(section, key, std::size_t{0}), 7U);
    EXPECT_EQ(settings->Get(section, key, 0L), 7L);
    EXPECT_EQ(settings->Get(section, key, 0.5), 7.0);
    EXPECT_EQ(settings->Get(section, key, 0.5F), 7.0F);
    EXPECT_EQ(settings->Get(section, key, std::uint8_t{0}), 7U);
    EXPECT_TRUE(settings->Set(section, key, false));
    EXPECT_EQ(settings->Get(section, key, true), false);
    EXPECT_EQ(*settings->Read<bool>(section, key), false);
}

TEST(NewCode, ReadsAndWritesArchives)
{
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.Path("a.zip");
    const std::filesystem::path file = folder.Path("file");
    const std::string bytes = "bytes";
    WriteBytes(file, "content");

    Result<ZipWriter> out = ZipWriter::Create(path);
    ASSERT_TRUE(out) << out.error().Message();
    EXPECT_TRUE(out->Add("a/b.txt", bytes));
    EXPECT_TRUE(out->AddFile("c.bin", file));
    EXPECT_TRUE(out->Finish());

    Result<ZipReader> zip = ZipReader::Open(path);
    ASSERT_TRUE(zip) << zip.error().Message();
    std::vector<std::string> names;
    for (const ZipEntry& e : *zip)
    {
        names.push_back(e.Name());
        EXPECT_FALSE(e.IsFolder());
        EXPECT_GT(e.Size(), 0U);
        EXPECT_GT(e.Modified(), std::chrono::system_clock::now() - std::chrono::hours(48));
    }
    EXPECT_THAT(names, ElementsAre("a/b.txt", "c.bin"));
    const std::optional<ZipEntry> entry = zip->Find("a/b.txt");
    ASSERT_TRUE(entry);
    EXPECT_EQ(*zip->Read(*entry), bytes);
    EXPECT_TRUE(zip->Extract(*entry, file));
    EXPECT_EQ(*ReadFile(file), bytes);
    Result<ZipReport> report = zip->ExtractAll(folder.Path("all"));
    ASSERT_TRUE(report) << report.error().Message();
    EXPECT_THAT(report->Extracted(), ElementsAre("a/b.txt", "c.bin"));
    EXPECT_TRUE(report->Refused().empty());
}

TEST(NewCode, KnowsItsFolders)
{
    Result<Folders> folders = Folders::Of("watch");
    ASSERT_TRUE(folders) << folders.error().Message();
    for (const std::filesystem::path& each :
         {folders->Config(), folders->Data(), folders->State(), folders->Cache()})
        EXPECT_EQ(each.filename(), "watch");
    EXPECT_TRUE(folders->Runtime().is_absolute());
    EXPECT_TRUE(std::filesystem::exists(Folders::Executable()));
}

TEST(NewCode, ConvertsText)
{
    const std::string bytes = "gr\xFC\xDF";
    const std::string set = "iso-8859-1";
    EXPECT_EQ(*Text::FromCharset(bytes, "iso-8859-1"), "gr\u00fc\u00df");
    EXPECT_EQ(*Text::FromCharset(bytes, set, Text::Replace), "gr\u00fc\u00df");
    EXPECT_EQ(*Text::FromCharset(bytes, "us-ascii", Text::Replace), "gr\uFFFD\uFFFD");
    const std::string u8 = "\u20ac";
    const std::wstring w = L"\u20ac";
    EXPECT_EQ(*Text::ToWide(u8), w);
    EXPECT_EQ(*Text::FromWide(w), u8);
    EXPECT_FALSE(Text::IsUtf8(bytes));
    EXPECT_TRUE(Text::IsUtf8(u8));
}
