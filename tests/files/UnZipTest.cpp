// SPDX-License-Identifier: MIT
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/Archives.h"
#include "tests/support/InChild.h"
#include "tests/support/InstalledLogger.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/files/ArchiveZip.h"

namespace
{

using Toolkit::ArchiveZip;
using Toolkit::ArchiveZipEntry;
using Toolkit::TString;
using ToolkitTest::AsNobody;
using ToolkitTest::CapturedOutput;
using ToolkitTest::ContentOf;
using ToolkitTest::ForgedArchive;
using ToolkitTest::InstalledLogger;
using ToolkitTest::MakeArchiveOfLengths;
using ToolkitTest::MakeSmallArchive;
using ToolkitTest::OnSmallDisk;
using ToolkitTest::OpenArchive;
using ToolkitTest::ReadBytes;
using ToolkitTest::Record;
using ToolkitTest::RecordingLogger;
using ToolkitTest::RunIn;
using ToolkitTest::RunPython;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;
using Text = TString<wchar_t>;

// The small archive, open, and a target beside it that holds something already.
struct Extraction
{
    Extraction() : open(Make(folder)) { WriteBytes(folder.Path("out"), "old"); }

    static Text Make(const TemporaryFolder& folder)
    {
        MakeSmallArchive(folder, "a.zip");
        return folder.Wide("a.zip");
    }

    bool To(const Text& target) { return open.UnZip(L"two.txt", target); }
    std::string Target() const { return ReadBytes(folder.Path("out")); }

    TemporaryFolder folder;
    OpenArchive open;
};

TEST(UnZip, WritesTheContent)
{
    Extraction extraction;
    EXPECT_TRUE(extraction.To(extraction.folder.Wide("new")));
    EXPECT_EQ(ReadBytes(extraction.folder.Path("new")), ContentOf("two.txt"));
}

TEST(UnZip, ReplacesALongerFile)
{
    Extraction extraction;
    WriteBytes(extraction.folder.Path("out"), std::string(5000, 'x'));
    EXPECT_TRUE(extraction.To(extraction.folder.Wide("out")));
    EXPECT_EQ(extraction.Target(), ContentOf("two.txt"));
}

TEST(UnZip, ExtractsEveryEntryInAnyOrder)
{
    Extraction extraction;
    for (const char* const name : {"three.txt", "one.txt", "two.txt", "two.txt", "one.txt"})
    {
        EXPECT_TRUE(
            extraction.open.UnZip(Text(std::wstring(name, name + std::char_traits<char>::length(name))),
                                  extraction.folder.Wide("out")));
        EXPECT_EQ(extraction.Target(), ContentOf(name));
    }
}

TEST(UnZip, ExtractsContentsOfEveryLengthAroundItsBlocks)
{
    const TemporaryFolder folder;
    MakeArchiveOfLengths(folder);
    OpenArchive open(folder.Wide("a.zip"));
    for (const auto& pair : open.entries)
    {
        EXPECT_TRUE(open.UnZip(pair.first, folder.Wide("out"))) << std::wstring(pair.first);
        const std::string number(pair.first.begin() + 1, pair.first.end());
        EXPECT_TRUE(ReadBytes(folder.Path("out")) == ReadBytes(folder.Path("plain" + number)))
            << std::wstring(pair.first);
    }
}

TEST(UnZip, ExtractsStreamedEntries)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile(Pipe('a.zip'), 'w') as z:
    add(z, 'stored', 'stored content')
    add(z, 'deflated', 'deflated content', zipfile.ZIP_DEFLATED)
    with z.open('long', 'w', force_zip64=True) as f: f.write(b'long content')
)");
    RunIn(folder, "printf 'piped content' | zip -q piped.zip -");
    OpenArchive open(folder.Wide("a.zip"));
    for (const std::wstring& name :
         {std::wstring(L"stored"), std::wstring(L"deflated"), std::wstring(L"long")})
    {
        EXPECT_TRUE(open.UnZip(name, folder.Wide("out"))) << name;
        EXPECT_EQ(ReadBytes(folder.Path("out")), std::string(name.begin(), name.end()) + " content");
    }
    EXPECT_TRUE(OpenArchive(folder.Wide("piped.zip")).UnZip(L"-", folder.Wide("out")));
    EXPECT_EQ(ReadBytes(folder.Path("out")), "piped content");
}

TEST(UnZip, WritesOnlyItsTarget)
{
    const TemporaryFolder folder;
    RunIn(folder, "mkdir inner");
    RunPython(folder, R"(
with zipfile.ZipFile('inner/a.zip', 'w') as z: add(z, '../evil', 'content')
)");
    OpenArchive open(folder.Wide("inner/a.zip"));
    EXPECT_TRUE(open.UnZip(L"../evil", folder.Wide("inner/out")));
    EXPECT_EQ(ReadBytes(folder.Path("inner/out")), "content");
    RunIn(
        folder,
        "test \"$(ls)\" = \"$(printf 'inner\\nlog')\" && test \"$(ls inner)\" = \"$(printf 'a.zip\\nout')\"");
}

TEST(UnZip, NeverExtractsAnEmptyEntry)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    add(z, 'stored', '')
    add(z, 'deflated', '', zipfile.ZIP_DEFLATED)
    add(z, 'folder/', '')
)");
    OpenArchive open(folder.Wide("a.zip"));
    for (const wchar_t* const name : {L"stored", L"deflated", L"folder/"})
    {
        WriteBytes(folder.Path("out"), "old");
        EXPECT_FALSE(open.UnZip(name, folder.Wide("out"))) << name;
        EXPECT_EQ(ReadBytes(folder.Path("out")), "") << name;
        RunIn(folder, "rm out");
        EXPECT_FALSE(open.UnZip(name, folder.Wide("out"))) << name;
        RunIn(folder, "test -f out");
    }
}

TEST(UnZip, TouchesNothingWithoutAnEntryOrAnArchive)
{
    Extraction extraction;
    Text target = extraction.folder.Wide("out");
    EXPECT_FALSE(extraction.open.archive.UnZip(nullptr, target));
    EXPECT_FALSE(ArchiveZip().UnZip(extraction.open[L"one.txt"], target));
    extraction.open.archive.Close();
    EXPECT_FALSE(extraction.open.archive.UnZip(extraction.open[L"one.txt"], target));
    extraction.open.archive.Open(extraction.folder.Wide("missing.zip"));
    EXPECT_FALSE(extraction.open.archive.UnZip(extraction.open[L"one.txt"], target));
    EXPECT_EQ(extraction.Target(), "old");
}

TEST(UnZip, TouchesNothingWhenTheContentIsNotFound)
{
    Extraction extraction;
    CapturedOutput errors(2);
    Text target = extraction.folder.Wide("out");
    EXPECT_FALSE(extraction.open.archive.UnZip(new ArchiveZipEntry(wxZipEntry("nowhere")), target));
    for (const char* const other : {"empty", "short", "text"})
    {
        WriteBytes(extraction.folder.Path("empty"), "");
        WriteBytes(extraction.folder.Path("short"), "PK\x05\x06");
        WriteBytes(extraction.folder.Path("text"), "This is no archive, but it is long enough to be one.");
        extraction.open.archive.Open(extraction.folder.Wide(other));
        EXPECT_FALSE(extraction.To(target)) << other;
    }
    ForgedArchive forged(ReadBytes(extraction.folder.Path("a.zip")));
    forged.Set32(forged.Directory("two.txt") + 42, 0x7FFFFFFF);
    WriteBytes(extraction.folder.Path("a.zip"), forged.bytes);
    OpenArchive open(extraction.folder.Wide("a.zip"));
    EXPECT_FALSE(open.UnZip(L"two.txt", target));
    EXPECT_EQ(extraction.Target(), "old");
    EXPECT_TRUE(open.UnZip(L"three.txt", target));
    EXPECT_EQ(errors.Stop(), "");
}

TEST(UnZip, FailsWhereNothingCanBeWritten)
{
    Extraction extraction;
    ASSERT_EQ(mkfifo(extraction.folder.Path("fifo").c_str(), 0600), 0);
    Record record;
    const InstalledLogger logger(new RecordingLogger(record));
    CapturedOutput errors(2);
    for (const Text& target :
         {Text(), extraction.folder.Wide(), extraction.folder.Wide("no/folder"),
          extraction.folder.Wide("fifo"), extraction.folder.Wide("a.zip/out"),
          Text(extraction.folder.Wide("out") + std::wstring(1, L'\0')),
          Text(extraction.folder.Wide("out") + L"\xD800"), Text(std::wstring(5000, L'x'))})
        EXPECT_FALSE(extraction.To(target)) << std::wstring(target);
    EXPECT_EQ(extraction.Target(), "old");
    EXPECT_TRUE(extraction.To(extraction.folder.Wide("out")));
    EXPECT_EQ(errors.Stop(), "");
    EXPECT_EQ(record.Text(), L"");
}

TEST(UnZip, FailsInAFolderThatMayNotBeWritten)
{
    Extraction extraction;
    RunIn(extraction.folder, "mkdir locked && chmod 555 locked && chmod 755 .");
    EXPECT_TRUE(AsNobody(
        [&]
        {
            CapturedOutput errors(2);
            const bool extracted = extraction.To(extraction.folder.Wide("locked/out"));
            return !extracted && errors.Stop().empty();
        }));
}

TEST(UnZip, FailsOnAFullDevice)
{
    Extraction extraction;
    CapturedOutput errors(2);
    EXPECT_FALSE(extraction.To(L"/dev/full"));
    EXPECT_EQ(errors.Stop(), "");
    EXPECT_TRUE(extraction.To(L"/dev/null"));
}

TEST(UnZip, FailsOnAFullDiskAndEmptiesTheTarget)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    add(z, 'large', 'content' * 100000, zipfile.ZIP_DEFLATED)
    add(z, 'small', 'content')
)");
    OpenArchive open(folder.Wide("a.zip"));
    const TemporaryFolder disk;
    EXPECT_TRUE(OnSmallDisk(disk.Path(), 128,
                            [&]
                            {
                                const bool large = open.UnZip(L"large", disk.Wide("out"));
                                const bool emptied = ReadBytes(disk.Path("out")).empty();
                                return !large && emptied && open.UnZip(L"small", disk.Wide("out"));
                            }));
}

TEST(UnZip, WritesThroughALink)
{
    Extraction extraction;
    ASSERT_EQ(symlink("out", extraction.folder.Path("link").c_str()), 0);
    EXPECT_TRUE(extraction.To(extraction.folder.Wide("link")));
    EXPECT_EQ(extraction.Target(), ContentOf("two.txt"));
}

TEST(UnZip, WritesThroughALinkToNothing)
{
    Extraction extraction;
    ASSERT_EQ(symlink("new", extraction.folder.Path("link").c_str()), 0);
    EXPECT_TRUE(extraction.To(extraction.folder.Wide("link")));
    EXPECT_EQ(ReadBytes(extraction.folder.Path("new")), ContentOf("two.txt"));
}

TEST(UnZip, NeverWritesTheArchiveItself)
{
    Extraction extraction;
    RunIn(extraction.folder, "ln a.zip hard && ln -s a.zip soft && mkdir inner");
    const std::string archive = ReadBytes(extraction.folder.Path("a.zip"));
    for (const char* const path : {"a.zip", "inner/../a.zip", "hard", "soft"})
    {
        EXPECT_FALSE(extraction.To(extraction.folder.Wide(path))) << path;
        EXPECT_EQ(ReadBytes(extraction.folder.Path("a.zip")), archive) << path;
    }
    EXPECT_TRUE(extraction.To(extraction.folder.Wide("out")));
    EXPECT_EQ(extraction.Target(), ContentOf("two.txt"));
}

TEST(UnZip, WritesWhereARemovedArchiveWas)
{
    Extraction extraction;
    RunIn(extraction.folder, "rm a.zip");
    EXPECT_TRUE(extraction.To(extraction.folder.Wide("a.zip")));
    EXPECT_EQ(ReadBytes(extraction.folder.Path("a.zip")), ContentOf("two.txt"));
}

TEST(UnZip, RefusesAFifoThatIsRead)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z: add(z, 'large', 'content' * 100000)
)");
    OpenArchive archive(folder.Wide("a.zip"));
    ASSERT_EQ(mkfifo(folder.Path("fifo").c_str(), 0600), 0);
    const int reader = open(folder.Path("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_NE(reader, -1);
    EXPECT_FALSE(archive.UnZip(L"large", folder.Wide("fifo")));
    char byte = 0;
    EXPECT_EQ(read(reader, &byte, 1), 0);
    close(reader);
}

TEST(UnZip, WritesPathsOutsideAscii)
{
    Extraction extraction;
    EXPECT_TRUE(extraction.To(extraction.folder.Wide("\xC3\xA9\xE2\x82\xAC")));
    EXPECT_EQ(ReadBytes(extraction.folder.Path("\xC3\xA9\xE2\x82\xAC")), ContentOf("two.txt"));
}

TEST(UnZip, LeavesTheTargetTextAlone)
{
    Extraction extraction;
    Text target = extraction.folder.Wide("out");
    extraction.open.archive.UnZip(extraction.open[L"one.txt"], target);
    EXPECT_EQ(target, extraction.folder.Wide("out"));
}

} // namespace
