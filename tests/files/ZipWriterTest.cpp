// SPDX-License-Identifier: MIT
#include "toolkit/files/ZipWriter.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/Archives.h"
#include "tests/support/FolderEntries.h"
#include "tests/support/InChild.h"
#include "tests/support/Resources.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/files/ZipReader.h"

using Toolkit::Errc;
using Toolkit::Result;
using Toolkit::ZipReader;
using Toolkit::ZipWriter;
using ToolkitTest::ChildAnswer;
using ToolkitTest::CountEntries;
using ToolkitTest::InChild;
using ToolkitTest::ReadBytes;
using ToolkitTest::RunIn;
using ToolkitTest::RunPython;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

namespace
{

std::string Noise(std::size_t size)
{
    std::string bytes(size, '\0');
    unsigned int state = 1;
    for (char& byte : bytes)
        byte = static_cast<char>((state = state * 1103515245 + 12345) >> 16);
    return bytes;
}

} // namespace

TEST(ZipWriter, WritesWhatOthersRead)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), Noise(300000));
    {
        Result<ZipWriter> zip = ZipWriter::Create(folder.Path("new/a.zip"));
        ASSERT_TRUE(zip) << zip.error().Message();
        EXPECT_TRUE(zip->Add("a/", ""));
        EXPECT_TRUE(zip->Add("a/b.txt", "text"));
        EXPECT_TRUE(zip->Add("empty", ""));
        EXPECT_TRUE(zip->Add("gr\xC3\xB6\xC3\x9F"
                             "e",
                             std::string(200000, 'x')));
        EXPECT_TRUE(zip->Add("zeros", std::string("\0\0\0", 3)));
        EXPECT_TRUE(zip->AddFile("c.bin", folder.Path("file")));
        EXPECT_FALSE(std::filesystem::exists(folder.Path("new/a.zip")));
        EXPECT_TRUE(zip->Finish());
    }
    EXPECT_EQ(1U, CountEntries(folder.Path("new")));
    RunPython(folder, R"(
with zipfile.ZipFile('new/a.zip') as z:
    assert z.testzip() is None
    assert z.namelist() == ['a/', 'a/b.txt', 'empty', 'gr\u00f6\u00dfe', 'zeros', 'c.bin'], z.namelist()
    assert z.read('a/b.txt') == b'text'
    assert z.read('empty') == b''
    assert z.read('gr\u00f6\u00dfe') == b'x' * 200000
    assert z.read('zeros') == bytes(3)
    assert z.read('c.bin') == open('file', 'rb').read()
    assert z.getinfo('gr\u00f6\u00dfe').compress_size < 2000
    assert z.getinfo('a/').is_dir()
)");
    if (std::system("command -v unzip > /dev/null") == 0)
        RunIn(folder, "unzip -tq new/a.zip > /dev/null");
    const Result<ZipReader> back = ZipReader::Open(folder.Path("new/a.zip"));
    ASSERT_TRUE(back) << back.error().Message();
    EXPECT_EQ("text", back->Read(*back->Find("a/b.txt")).value_or("none"));
    EXPECT_EQ(Noise(300000), back->Read(*back->Find("c.bin")).value_or("none"));
    ToolkitTest::OpenArchive classic(folder.Wide("new/a.zip"));
    EXPECT_EQ(6, classic.count);
    EXPECT_EQ("text", classic.Read(L"a/b.txt"));
}

TEST(ZipWriter, WritesAnEmptyArchive)
{
    const TemporaryFolder folder;
    Result<ZipWriter> zip = ZipWriter::Create(folder.Path("a.zip"));
    EXPECT_TRUE(zip->Finish());
    const Result<ZipReader> back = ZipReader::Open(folder.Path("a.zip"));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->begin(), back->end());
}

TEST(ZipWriter, DroppedWriterLeavesNothing)
{
    const TemporaryFolder folder;
    const long descriptors = ToolkitTest::OpenDescriptors();
    {
        Result<ZipWriter> zip = ZipWriter::Create(folder.Path("a.zip"));
        EXPECT_TRUE(zip->Add("a", Noise(100000)));
    }
    EXPECT_EQ(0U, CountEntries(folder.Path()));
    WriteBytes(folder.Path("a.zip"), "old");
    {
        Result<ZipWriter> zip = ZipWriter::Create(folder.Path("a.zip"));
        EXPECT_TRUE(zip->Add("a", "content"));
        EXPECT_EQ("old", ReadBytes(folder.Path("a.zip")));
    }
    EXPECT_EQ("old", ReadBytes(folder.Path("a.zip")));
    EXPECT_EQ(1U, CountEntries(folder.Path()));
    EXPECT_EQ(descriptors, ToolkitTest::OpenDescriptors());
}

TEST(ZipWriter, FinishesARelativePathWhereItWasBegun)
{
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.Path("other"));
    EXPECT_TRUE(InChild(
        [&folder]
        {
            std::filesystem::current_path(folder.Path());
            ZipWriter zip = ZipWriter::Create("a.zip").value();
            std::filesystem::current_path("other");
            return zip.Add("b", "text") && zip.Finish();
        }));
    EXPECT_EQ("b", ZipReader::Open(folder.Path("a.zip")).value().begin()->Name());
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path("other")));
}

TEST(ZipWriter, OneThatWasMovedFromRefusesEverything)
{
    const TemporaryFolder folder;
    Result<ZipWriter> zip = ZipWriter::Create(folder.Path("a.zip"));
    ASSERT_TRUE(zip);
    ZipWriter taken = *std::move(zip);
    // NOLINTBEGIN(bugprone-use-after-move): the header says what it does.
    EXPECT_EQ("cannot add a: it was moved elsewhere", zip->Add("a", "text").error().Message());
    EXPECT_EQ(Errc::Refused, zip->Add("a", "text").error().Code());
    EXPECT_EQ(Errc::Refused, zip->AddFile("a", folder.Path("a")).error().Code());
    EXPECT_EQ(Errc::Refused, zip->Finish().error().Code());
    // NOLINTEND(bugprone-use-after-move)
    EXPECT_TRUE(taken.Add("b", "text"));
    EXPECT_TRUE(taken.Finish());
    EXPECT_EQ("b", ZipReader::Open(folder.Path("a.zip")).value().begin()->Name());
}

TEST(ZipWriter, ReplacesAFileAndKeepsItsPermissions)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("a.zip"), "old");
    ASSERT_EQ(0, chmod(folder.Path("a.zip").c_str(), 0600));
    Result<ZipWriter> zip = ZipWriter::Create(folder.Path("a.zip"));
    EXPECT_TRUE(zip->Add("a", "content"));
    EXPECT_TRUE(zip->Finish());
    struct stat status = {};
    ASSERT_EQ(0, stat(folder.Path("a.zip").c_str(), &status));
    EXPECT_EQ(0600U, status.st_mode & 07777);
    EXPECT_TRUE(ZipReader::Open(folder.Path("a.zip")));
}

TEST(ZipWriter, RefusesNamesThatLeadElsewhere)
{
    const TemporaryFolder folder;
    Result<ZipWriter> zip = ZipWriter::Create(folder.Path("a.zip"));
    EXPECT_TRUE(zip->Add("good", "content"));
    for (const std::string& name :
         {std::string(), std::string("/a"), std::string("../a"), std::string("a/../b"), std::string("a//b"),
          std::string("a\\b"), std::string("C:a"), std::string("a\0b", 3), std::string("\xFF"),
          std::string("./a"), std::string("good")})
    {
        const Result<void> added = zip->Add(name, "content");
        ASSERT_FALSE(added) << name;
        EXPECT_EQ(Errc::Refused, added.error().Code()) << name;
    }
    EXPECT_EQ("cannot add ../a to " + folder.Path("a.zip") + ": its name leads elsewhere",
              zip->Add("../a", "").error().Message());
    EXPECT_EQ(std::errc::is_a_directory, zip->Add("folder/", "content").error().Code());
    EXPECT_TRUE(zip->Add("last", "content"));
    EXPECT_TRUE(zip->Finish());
    EXPECT_EQ(std::errc::invalid_argument, zip->Add("late", "").error().Code());
    EXPECT_EQ(std::errc::invalid_argument, zip->Finish().error().Code());
    const Result<ZipReader> back = ZipReader::Open(folder.Path("a.zip"));
    EXPECT_EQ(2, std::distance(back->begin(), back->end()));
}

TEST(ZipWriter, SaysWhyItCannot)
{
    const TemporaryFolder folder;
    EXPECT_EQ(std::errc::is_a_directory, ZipWriter::Create(folder.Path()).error().Code());
    Result<ZipWriter> zip = ZipWriter::Create(folder.Path("a.zip"));
    EXPECT_EQ("cannot read " + folder.Path("missing") + ": No such file or directory",
              zip->AddFile("a", folder.Path("missing")).error().Message());
    EXPECT_EQ(Errc::Refused, zip->AddFile("a", "/dev/zero").error().Code());
    EXPECT_EQ(std::errc::is_a_directory, zip->AddFile("a", folder.Path()).error().Code());
    EXPECT_EQ("cannot add folder/ to " + folder.Path("a.zip") + ": Is a directory",
              zip->AddFile("folder/", folder.Path("a.zip")).error().Message());
    EXPECT_EQ(std::errc::is_a_directory, zip->Add("folder/", "content").error().Code());
    const std::string nul("a\0b", 3);
    EXPECT_EQ(std::errc::invalid_argument, ZipWriter::Create(folder.Path(nul)).error().Code());
    EXPECT_EQ(std::errc::invalid_argument, zip->AddFile("a", folder.Path(nul)).error().Code());
    EXPECT_EQ(std::errc::filename_too_long, zip->Add(std::string(65536, 'n'), "").error().Code());
    EXPECT_TRUE(zip->Add(std::string(65535, 'n'), ""));
    EXPECT_TRUE(zip->Add("a", "content"));
    EXPECT_TRUE(zip->Finish());
}

TEST(ZipWriter, FullDiskLeavesTheFileAsItWas)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(ToolkitTest::OnSmallDisk(folder.Path(), 64,
                                         [&]() -> ChildAnswer
                                         {
                                             WriteBytes(folder.Path("a.zip"), "old");
                                             {
                                                 Result<ZipWriter> zip =
                                                     ZipWriter::Create(folder.Path("a.zip"));
                                                 Result<void> added = zip->Add("a", Noise(200000));
                                                 if (added)
                                                     return "added";
                                                 if (added.error().Code() != std::errc::no_space_on_device)
                                                     return added.error().Message();
                                                 if (zip->Add("b", "b") || zip->Finish())
                                                     return "went on";
                                             }
                                             return ReadBytes(folder.Path("a.zip")) == "old" &&
                                                    CountEntries(folder.Path()) == 1;
                                         }));
}
