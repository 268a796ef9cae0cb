// SPDX-License-Identifier: MIT
#include "toolkit/files/ZipReader.h"

#include <algorithm>
#include <atomic>
#include <ctime>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/Archives.h"
#include "tests/support/FolderEntries.h"
#include "tests/support/Resources.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/encoding/UTF8.h"

using testing::HasSubstr;
using Toolkit::Errc;
using Toolkit::Failure;
using Toolkit::Result;
using Toolkit::ZipEntry;
using Toolkit::ZipLimits;
using Toolkit::ZipReader;
using Toolkit::ZipReport;
using ToolkitTest::NamesBelow;
using ToolkitTest::ReadBytes;
using ToolkitTest::RunPython;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

namespace
{

std::string Names(const ZipReader& zip)
{
    std::string names;
    for (const ZipEntry& entry : zip)
        names += entry.Name() + "|";
    return names;
}

const char c_strOrdinary[] = R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    z.writestr(zipfile.ZipInfo('a/', (2026, 3, 2, 14, 5, 8)), '')
    z.writestr(zipfile.ZipInfo('a/b.txt', (2026, 3, 2, 14, 5, 8)), 'stored')
    z.writestr(zipfile.ZipInfo('größe.txt', (2026, 7, 2, 14, 5, 8)), 'x' * 100000, zipfile.ZIP_DEFLATED)
    z.writestr('empty', '')
)";

} // namespace

TEST(ZipReader, ListsFindsAndReads)
{
    const TemporaryFolder folder;
    RunPython(folder, c_strOrdinary);
    const Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
    ASSERT_TRUE(zip) << zip.error().Message();
    EXPECT_EQ("a/|a/b.txt|gr\xC3\xB6\xC3\x9F"
              "e.txt|empty|",
              Names(*zip));
    const std::optional<ZipEntry> entry = zip->Find("a/b.txt");
    ASSERT_TRUE(entry);
    EXPECT_EQ(6U, entry->Size());
    EXPECT_FALSE(entry->IsFolder());
    EXPECT_TRUE(zip->Find("a/")->IsFolder());
    EXPECT_FALSE(zip->Find("a"));
    EXPECT_FALSE(zip->Find("A/b.txt"));
    const std::time_t modified = std::chrono::system_clock::to_time_t(entry->Modified());
    char text[32];
    std::strftime(text, sizeof text, "%F %T", std::localtime(&modified));
    EXPECT_STREQ("2026-03-02 14:05:08", text);
    EXPECT_EQ("stored", zip->Read(*entry).value_or("none"));
    EXPECT_EQ(std::string(100000, 'x'), zip->Read(*zip->Find("gr\xC3\xB6\xC3\x9F"
                                                             "e.txt"))
                                            .value_or("none"));
    EXPECT_EQ("", zip->Read(*zip->Find("empty")).value_or("none"));
    EXPECT_EQ(Errc::LimitReached, zip->Read(*entry, 5).error().Code());
}

TEST(ZipReader, ReadsStreamedAndLongFormsAndAnEmptyArchive)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile(Pipe('a.zip'), 'w') as z:
    add(z, 'deflated', 'deflated content', zipfile.ZIP_DEFLATED)
    add(z, 'stored', 'stored content')
with zipfile.ZipFile('b.zip', 'w') as z:
    with z.open(zipfile.ZipInfo('long'), 'w', force_zip64=True) as f:
        f.write(b'content')
with zipfile.ZipFile('c.zip', 'w') as z:
    pass
)");
    const Result<ZipReader> streamed = ZipReader::Open(folder.Path("a.zip"));
    ASSERT_TRUE(streamed);
    EXPECT_EQ("deflated content", streamed->Read(*streamed->Find("deflated")).value_or("none"));
    EXPECT_EQ("stored content", streamed->Read(*streamed->Find("stored")).value_or("none"));
    const Result<ZipReader> longer = ZipReader::Open(folder.Path("b.zip"));
    ASSERT_TRUE(longer);
    EXPECT_EQ("content", longer->Read(*longer->Find("long")).value_or("none"));
    const Result<ZipReader> empty = ZipReader::Open(folder.Path("c.zip"));
    ASSERT_TRUE(empty);
    EXPECT_EQ("", Names(*empty));
}

// The beginning of a record of the directory has 42 bytes after its signature.
TEST(ZipReader, ListsNamesAndCommentsAsLongAsARecord)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    z.comment = b'c' * 42
    for length in (41, 42, 43):
        info = zipfile.ZipInfo('n' * length)
        info.comment = b'c' * 42
        info.extra = struct.pack('<HH', 0x7777, 38) + b'e' * 38
        z.writestr(info, 'content')
    z.writestr('last', 'content')
)");
    const Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
    ASSERT_TRUE(zip);
    EXPECT_EQ(std::string(41, 'n') + "|" + std::string(42, 'n') + "|" + std::string(43, 'n') + "|last|",
              Names(*zip));
    for (const ZipEntry& entry : *zip)
        EXPECT_EQ("content", zip->Read(entry).value_or("none"));
}

// The classic class has wxWidgets read the directory.
TEST(ZipReader, ReadsEachDamagedDirectoryAsTheClassicClassDoes)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('plain.zip', 'w') as z:
    add(z, 'one', 'stored')
    add(z, 'two', 'x' * 100, zipfile.ZIP_DEFLATED)
    add(z, 'three', '')
data = open('plain.zip', 'rb').read()
end = data.rfind(b'PK\5\6')
count, size, place = struct.unpack('<HII', data[end + 10:end + 20])
# The length, the packed length and the place of each entry lie in a field of their own.
directory = b''
at = place
while at < end:
    r = data[at:at + 46]
    n = struct.unpack('<H', r[28:30])[0]
    long = struct.pack('<HHQQQ', 1, 24, *struct.unpack('<I', r[24:28]), *struct.unpack('<I', r[20:24]),
                       *struct.unpack('<I', r[42:46]))
    f = b'\xff' * 4
    directory += r[:20] + f + f + r[28:30] + struct.pack('<H', 28) + r[32:42] + f + data[at + 46:at + 46 + n] + long
    at += 46 + n
behind = place + len(directory)
long = (data[:place] + directory +
        b'PK\6\6' + struct.pack('<QHHIIQQQQ', 44, 45, 45, 0, 0, count, count, len(directory), place) +
        b'PK\6\7' + struct.pack('<IQI', 0, behind, 1) +
        b'PK\5\6' + struct.pack('<HHHHIIH', 0, 0, count, count, len(directory), place, 0))
open('long.zip', 'wb').write(long)
open('program.zip', 'wb').write(b'#! a program' * 10 + data)
)");
    std::mt19937 random(1);
    for (const char* const name : {"plain.zip", "long.zip", "program.zip"})
    {
        const std::string whole = ReadBytes(folder.Path(name));
        const std::size_t directory = whole.find("PK\x01\x02");
        for (int round = 0; round < 100; ++round)
        {
            std::string bytes = whole;
            // Not the names: the classic class lists those that are the same once.
            for (int i = round == 0 ? 0 : 1 + round % 3; i > 0; --i)
                if (char& byte = bytes[directory + random() % (bytes.size() - directory)];
                    std::string_view("onetwhr").find(byte) == std::string_view::npos)
                    byte = static_cast<char>(random() % 2 == 0 ? 0xFF : random());
            WriteBytes(folder.Path("a.zip"), bytes);
            ToolkitTest::OpenArchive classic(Toolkit::UTF8::ToUNICODE(folder.Path("a.zip")));
            const Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
            SCOPED_TRACE(std::string(name) + " " + std::to_string(round));
            ASSERT_TRUE(zip || round > 0);
            if (!zip)
                continue;
            ASSERT_EQ(static_cast<std::size_t>(zip->end() - zip->begin()), classic.entries.size());
            for (const ZipEntry& entry : *zip)
            {
                const Toolkit::TString<wchar_t> wide = Toolkit::UTF8::ToUNICODE(entry.Name());
                ASSERT_FALSE(classic[wide].IsNull()) << entry.Name();
                // wxWidgets takes nothing of a field that declares more than is there.
                if (classic[wide]->GetSize() == 0xFFFFFFFF ||
                    classic[wide]->GetCompressedSize() == 0xFFFFFFFF)
                    continue;
                EXPECT_EQ(std::max<long long>(classic[wide]->GetSize(), 0), entry.Size());
                // The new class refuses more.
                const Result<std::string> content = zip->Read(entry);
                EXPECT_TRUE(content || round > 0);
                EXPECT_EQ(content ? *content : classic.Read(wide), classic.Read(wide));
            }
        }
    }
}

TEST(ZipReader, SaysWhyItCannotOpen)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("text"), std::string(100, 'x'));
    WriteBytes(folder.Path("empty"), "");
    EXPECT_EQ(std::errc::no_such_file_or_directory, ZipReader::Open(folder.Path("missing")).error().Code());
    EXPECT_EQ(std::errc::is_a_directory, ZipReader::Open(folder.Path()).error().Code());
    ASSERT_EQ(0, mkfifo(folder.Path("fifo").c_str(), 0600));
    for (const char* const name : {"text", "empty", "fifo"})
    {
        const Result<ZipReader> zip = ZipReader::Open(folder.Path(name));
        ASSERT_FALSE(zip);
        EXPECT_EQ(Errc::Malformed, zip.error().Code());
        EXPECT_EQ("cannot read " + folder.Path(name) + ": it is no ZIP archive", zip.error().Message());
    }
}

TEST(ZipReader, HandsOutNothingOfADamagedEntry)
{
    const TemporaryFolder folder;
    ToolkitTest::MakeSmallArchive(folder, "a.zip");
    ToolkitTest::ForgedArchive forged(ReadBytes(folder.Path("a.zip")));
    forged.bytes[forged.Content("one.txt")] ^= 1;
    WriteBytes(folder.Path("a.zip"), forged.bytes);
    WriteBytes(folder.Path("out"), "old");
    const Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
    ASSERT_TRUE(zip);
    const Result<std::string> read = zip->Read(*zip->Find("one.txt"));
    ASSERT_FALSE(read);
    EXPECT_EQ(Errc::Malformed, read.error().Code());
    EXPECT_EQ("cannot read one.txt of " + folder.Path("a.zip") + ": it is damaged", read.error().Message());
    EXPECT_EQ(Errc::Malformed, zip->Extract(*zip->Find("one.txt"), folder.Path("out")).error().Code());
    EXPECT_EQ("old", ReadBytes(folder.Path("out")));
    EXPECT_EQ(ToolkitTest::ContentOf("two.txt"), zip->Read(*zip->Find("two.txt")).value_or("none"));
    EXPECT_EQ(2U, NamesBelow(folder.Path()).size());
}

TEST(ZipReader, ExtractsAnEntryIntoAFile)
{
    const TemporaryFolder folder;
    RunPython(folder, c_strOrdinary);
    const Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
    ASSERT_TRUE(zip);
    WriteBytes(folder.Path("out"), "old");
    ASSERT_EQ(0, chmod(folder.Path("out").c_str(), 0600));
    EXPECT_TRUE(zip->Extract(*zip->Find("a/b.txt"), folder.Path("out")));
    EXPECT_EQ("stored", ReadBytes(folder.Path("out")));
    struct stat status = {};
    ASSERT_EQ(0, stat(folder.Path("out").c_str(), &status));
    EXPECT_EQ(0600U, status.st_mode & 07777);
    EXPECT_TRUE(zip->Extract(*zip->Find("empty"), folder.Path("new/folder/file")));
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path("new/folder/file")));
    EXPECT_EQ(std::errc::is_a_directory, zip->Extract(*zip->Find("a/"), folder.Path("x")).error().Code());
}

TEST(ZipReader, EntriesOutliveTheirReaderAndBelongToIt)
{
    const TemporaryFolder folder;
    RunPython(folder, c_strOrdinary);
    std::optional<ZipEntry> entry;
    {
        const Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
        entry = zip->Find("a/b.txt");
    }
    EXPECT_EQ("a/b.txt", entry->Name());
    const Result<ZipReader> again = ZipReader::Open(folder.Path("a.zip"));
    EXPECT_EQ("cannot read a/b.txt of " + folder.Path("a.zip") + ": Invalid argument",
              again->Read(*entry).error().Message());
    EXPECT_EQ(std::errc::invalid_argument, again->Extract(*entry, folder.Path("b.txt")).error().Code());
    entry = again->Find("a/b.txt");
    EXPECT_EQ("stored", *again->Read(*entry));
    ZipEntry other = *again->Find("a/");
    other = *entry;
    EXPECT_EQ("a/b.txt", other.Name());
}

TEST(ZipReader, LimitsAndReportsAreValues)
{
    const TemporaryFolder folder;
    RunPython(folder, c_strOrdinary);
    const Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
    ASSERT_TRUE(zip);
    const ZipLimits none = ZipLimits().Entries(0);
    ZipLimits limits = none;
    EXPECT_EQ(Errc::LimitReached, zip->ExtractAll(folder.Path("none"), limits).error().Code());
    limits = ZipLimits();
    ZipReport report = zip->ExtractAll(folder.Path("all"), limits).value();
    EXPECT_THAT(report.Refused(), testing::IsEmpty());
    EXPECT_EQ(Errc::LimitReached, zip->ExtractAll(folder.Path("none"), none).error().Code());
    const ZipReport kept = report;
    report = zip->ExtractAll(folder.Path("few"), ZipLimits().Bytes(0)).value();
    EXPECT_NE(kept.Extracted(), report.Extracted());
}

TEST(ZipReader, SeveralThreadsReadAtOnce)
{
    const TemporaryFolder folder;
    RunPython(folder, c_strOrdinary);
    const Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
    std::vector<std::thread> threads;
    std::atomic<int> right{0};
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            [&]
            {
                for (int round = 0; round < 20; ++round)
                    right += zip->Read(*zip->Find("a/b.txt")).value_or("") == "stored" ? 1 : 0;
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(80, right);
}

TEST(ZipReader, ExtractsAWholeFolder)
{
    const TemporaryFolder folder;
    RunPython(folder, c_strOrdinary);
    const long descriptors = ToolkitTest::OpenDescriptors();
    {
        const Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
        for (int round = 0; round < 2; ++round)
        {
            const Result<ZipReport> report = zip->ExtractAll(folder.Path("new/out"));
            ASSERT_TRUE(report) << report.error().Message();
            EXPECT_EQ(4U, report->Extracted().size());
            EXPECT_TRUE(report->Refused().empty());
        }
    }
    EXPECT_EQ(descriptors, ToolkitTest::OpenDescriptors());
    EXPECT_EQ((std::vector<std::string>{"a", "a/b.txt", "empty",
                                        "gr\xC3\xB6\xC3\x9F"
                                        "e.txt"}),
              NamesBelow(folder.Path("new/out")));
    EXPECT_EQ("stored", ReadBytes(folder.Path("new/out/a/b.txt")));
}

TEST(ZipReader, NeverExtractsOutsideTheFolder)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
def info(name, mode=0):
    i = zipfile.ZipInfo('x')
    i.filename = name
    i.create_system = 3
    i.external_attr = mode << 16
    return i
names = ['/absolute', '../outside', 'a/../../outside', '..', '.', './here', 'a//b', '//x', 'C:/x', 'C:x', 'a\\b',
         '..\\outside', 'a/..', 'a/.', 'nul' + chr(0) + 'x', 'a/../b/', '/', '../', 'dir/./x']
with zipfile.ZipFile('a.zip', 'w') as z:
    z.writestr(info('good'), 'good')
    for name in names:
        z.writestr(info(name), 'bad')
    z.writestr(info('link', 0o120777), '/etc')
    z.writestr(info('link/passwd'), 'bad')
    for kind in (0o010000, 0o020000, 0o060000, 0o140000):
        z.writestr(info('special%o' % kind, kind | 0o644), 'bad')
    z.writestr(info('GOOD'), 'bad')
    z.writestr(info('good'), 'bad')
    z.writestr(info('Dir/one'), 'good')
    z.writestr(info('dir/two'), 'bad')
    z.writestr(info('caf\u00e9'), 'good')
    z.writestr(info('cafe\u0301'), 'bad')
    z.writestr(info('good/below'), 'bad')
    z.writestr(info('last'), 'good')
)");
    const Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
    ASSERT_TRUE(zip);
    const Result<ZipReport> report = zip->ExtractAll(folder.Path("out"));
    ASSERT_TRUE(report);
    // An entry "link/passwd" is an ordinary one where the link was refused.
    EXPECT_THAT(report->Extracted(),
                testing::ElementsAre("good", "link/passwd", "Dir/one", "caf\xC3\xA9", "last"));
    EXPECT_EQ(29U, report->Refused().size());
    for (const Failure& refused : report->Refused())
        EXPECT_THAT(refused.Message(), HasSubstr("cannot extract "));
    EXPECT_THAT(NamesBelow(folder.Path()),
                testing::ElementsAre("a.zip", "out", "out/Dir", "out/Dir/one", "out/caf\xC3\xA9", "out/good",
                                     "out/last", "out/link", "out/link/passwd"));
    for (const char* const name : {"good", "Dir/one", "last"})
        EXPECT_EQ("good", ReadBytes(folder.Path("out") + "/" + name));
}

TEST(ZipReader, FollowsNoLinkThatWasPlantedBefore)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    z.writestr('folder/x', 'bad')
    z.writestr('file', 'bad')
    z.writestr('fifo', 'bad')
    z.writestr('last', 'good')
)");
    const TemporaryFolder outside;
    WriteBytes(outside.Path("precious"), "precious");
    std::filesystem::create_directory(folder.Path("out"));
    std::filesystem::create_directory_symlink(outside.Path(), folder.Path("out/folder"));
    std::filesystem::create_symlink(outside.Path("precious"), folder.Path("out/file"));
    ASSERT_EQ(0, mkfifo(folder.Path("out/fifo").c_str(), 0600));
    const Result<ZipReport> report = ZipReader::Open(folder.Path("a.zip"))->ExtractAll(folder.Path("out"));
    ASSERT_TRUE(report);
    EXPECT_THAT(report->Extracted(), testing::ElementsAre("last"));
    EXPECT_EQ(3U, report->Refused().size());
    EXPECT_EQ(1U, NamesBelow(outside.Path()).size());
    EXPECT_EQ("precious", ReadBytes(outside.Path("precious")));
}

TEST(ZipReader, FollowsNoLinkThatIsPlantedMeanwhile)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    for i in range(200):
        z.writestr('folder/x%d' % i, 'content')
)");
    const TemporaryFolder outside;
    const Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
    ASSERT_TRUE(zip);
    std::atomic<bool> done{false};
    std::thread planter(
        [&]
        {
            const std::filesystem::path place = folder.Path("out/folder");
            std::error_code ignored;
            while (!done)
            {
                std::filesystem::remove_all(place, ignored);
                std::filesystem::create_directory_symlink(outside.Path(), place, ignored);
                std::filesystem::remove(place, ignored);
            }
        });
    for (int round = 0; round < 5; ++round)
        EXPECT_TRUE(zip->ExtractAll(folder.Path("out")));
    done = true;
    planter.join();
    EXPECT_TRUE(NamesBelow(outside.Path()).empty());
}

TEST(ZipReader, KeepsItsLimits)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    z.writestr('one', 'x' * 600)
    z.writestr('two', 'x' * 600)
    z.writestr('three', 'x' * 100)
    z.writestr('bomb', '0' * (40 << 20), zipfile.ZIP_DEFLATED)
)");
    const Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
    ASSERT_TRUE(zip);
    EXPECT_EQ(Errc::LimitReached,
              zip->ExtractAll(folder.Path("none"), ZipLimits().Entries(3)).error().Code());
    EXPECT_FALSE(std::filesystem::exists(folder.Path("none")));
    const Result<ZipReport> few = zip->ExtractAll(folder.Path("few"), ZipLimits().Bytes(1000));
    EXPECT_THAT(few->Extracted(), testing::ElementsAre("one", "three"));
    const Result<ZipReport> usual = zip->ExtractAll(folder.Path("usual"));
    EXPECT_THAT(usual->Extracted(), testing::ElementsAre("one", "two", "three"));
    ASSERT_EQ(1U, usual->Refused().size());
    EXPECT_EQ(Errc::LimitReached, usual->Refused()[0].Code());
    const Result<ZipReport> all = zip->ExtractAll(folder.Path("all"), ZipLimits().Ratio(2000));
    EXPECT_EQ(4U, all->Extracted().size());
}

TEST(ZipReader, TakesAContentThatIsJustAsManyTimesAsLong)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    z.writestr('stored', bytes(17 << 20))
)");
    const Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
    ASSERT_TRUE(zip);
    EXPECT_EQ(1U, zip->ExtractAll(folder.Path("as-long"), ZipLimits().Ratio(1))->Extracted().size());
    EXPECT_EQ(Errc::LimitReached,
              zip->ExtractAll(folder.Path("never"), ZipLimits().Ratio(0))->Refused().at(0).Code());
}

TEST(ZipReader, OneThatWasMovedFromHasNoEntries)
{
    const TemporaryFolder folder;
    RunPython(folder, c_strOrdinary);
    Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
    ASSERT_TRUE(zip);
    const ZipEntry entry = *zip->Find("a/b.txt");
    ZipReader taken = *std::move(zip);
    EXPECT_EQ("stored", *taken.Read(entry));
    // NOLINTBEGIN(bugprone-use-after-move): the header says what it does.
    EXPECT_EQ(zip->begin(), zip->end());
    EXPECT_FALSE(zip->Find("a/b.txt"));
    EXPECT_EQ("cannot read a/b.txt: it was moved elsewhere", zip->Read(entry).error().Message());
    EXPECT_EQ(Errc::Refused, zip->Read(entry).error().Code());
    EXPECT_EQ(Errc::Refused, zip->Extract(entry, folder.Path("out")).error().Code());
    EXPECT_EQ(Errc::Refused, zip->ExtractAll(folder.Path("out")).error().Code());
    EXPECT_FALSE(std::filesystem::exists(folder.Path("out")));
    // NOLINTEND(bugprone-use-after-move)
    *zip = std::move(taken);
    EXPECT_EQ("stored", *zip->Read(entry));
}
