// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/Archives.h"
#include "tests/support/EndChild.h"
#include "tests/support/InstalledLogger.h"
#include "tests/support/Sanitized.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/files/ArchiveZip.h"
#include "toolkit/files/ZipInputStream.h"
#include "toolkit/files/ZipReader.h"

// Archives that are damaged or lie.

namespace
{

using Toolkit::Errc;
using Toolkit::Result;
using Toolkit::TString;
using Toolkit::ZipReader;
using ToolkitTest::CapturedOutput;
using ToolkitTest::ContentOf;
using ToolkitTest::ForgedArchive;
using ToolkitTest::InstalledLogger;
using ToolkitTest::MakeSmallArchive;
using ToolkitTest::OpenArchive;
using ToolkitTest::ReadBytes;
using ToolkitTest::Record;
using ToolkitTest::RecordingLogger;
using ToolkitTest::RunIn;
using ToolkitTest::RunPython;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;
using Text = TString<wchar_t>;

// Offsets in a record of the directory, and in that in front of the content.
const std::size_t s_uDirectoryFlags = 8;
const std::size_t s_uDirectoryMethod = 10;
const std::size_t s_uDirectoryChecksum = 16;
const std::size_t s_uDirectoryCompressed = 20;
const std::size_t s_uDirectoryLength = 24;
const std::size_t s_uDirectoryOffset = 42;
const std::size_t s_uLocalFlags = 6;
const std::size_t s_uLocalMethod = 8;
const std::size_t s_uLocalChecksum = 14;
const std::size_t s_uLocalLength = 22;

using Forge = std::function<void(ForgedArchive&)>;

struct Forgery
{
    const char* what;
    Forge forge;
};

// The small archive after `forge`, written as "b.zip".
void WriteForged(const TemporaryFolder& folder, const Forge& forge)
{
    if (ReadBytes(folder.Path("a.zip")).empty())
        MakeSmallArchive(folder, "a.zip");
    ForgedArchive forged(ReadBytes(folder.Path("a.zip")));
    forge(forged);
    WriteBytes(folder.Path("b.zip"), forged.bytes);
}

// An archive, written as "a.zip", whose entries tell their lengths only behind their contents.
void WriteStreamed(const TemporaryFolder& folder)
{
    RunPython(folder, R"(
with zipfile.ZipFile(Pipe('a.zip'), 'w') as z:
    add(z, 'bad', 'deflated content', zipfile.ZIP_DEFLATED)
    add(z, 'good', 'stored content')
)");
}

// The entry answers false and leaves an empty target, and the one behind it is as good as ever. Nothing
// reaches the standard error output.
void ExpectBadEntry(const TemporaryFolder& folder, const std::string& archive, const Text& bad,
                    const Text& good)
{
    CapturedOutput errors(2);
    OpenArchive open(folder.Wide(archive));
    for (int round = 0; round < 2; ++round)
    {
        WriteBytes(folder.Path("out"), "old");
        EXPECT_FALSE(open.UnZip(bad, folder.Wide("out")));
        EXPECT_EQ(ReadBytes(folder.Path("out")), "");
        EXPECT_TRUE(open.UnZip(good, folder.Wide("out")));
        const std::string content = ReadBytes(folder.Path("out"));
        EXPECT_NE(content, "");
        open.Read(bad);
        EXPECT_EQ(open.Read(good), content);
    }
    EXPECT_EQ(errors.Stop(), "");
}

// Neither reader ever yields bytes of the entry.
void ExpectNothingRead(const Text& archive, const Text& name)
{
    OpenArchive open(archive);
    EXPECT_EQ(open.Read(name), "");
    Text line = L"old";
    EXPECT_FALSE(open.archive.GetZipInputStream(open[name])->ReadLine(line));
    EXPECT_EQ(line, L"");
    std::vector<unsigned char> bytes = {'k'};
    *open.archive.GetZipInputStream(open[name]) >> bytes;
    EXPECT_EQ(bytes, std::vector<unsigned char>{'k'});
}

const Forgery s_badChecksums[] = {
    {"content", [](ForgedArchive& a) { a.bytes[a.Content("one.txt") + 3] ^= 1; }},
    {"last byte", [](ForgedArchive& a) { a.bytes[a.Content("one.txt") + 16] ^= 1; }},
    {"directory", [](ForgedArchive& a) { a.Set32(a.Directory("one.txt") + s_uDirectoryChecksum, 1); }},
    {"local", [](ForgedArchive& a) { a.Set32(a.Local("one.txt") + s_uLocalChecksum, 1); }},
    {"both",
     [](ForgedArchive& a)
     {
         a.Set32(a.Directory("one.txt") + s_uDirectoryChecksum, 1);
         a.Set32(a.Local("one.txt") + s_uLocalChecksum, 1);
     }},
};

TEST(ArchiveZipDamage, RefusesBadChecksums)
{
    const TemporaryFolder folder;
    for (const Forgery& row : s_badChecksums)
    {
        SCOPED_TRACE(row.what);
        WriteForged(folder, row.forge);
        ExpectBadEntry(folder, "b.zip", L"one.txt", L"two.txt");
        ExpectNothingRead(folder.Wide("b.zip"), L"one.txt");
    }
}

TEST(ArchiveZipDamage, RefusesBadChecksumsOfStreamedEntries)
{
    for (const int place : {0, 1, 2})
    {
        SCOPED_TRACE(place);
        const TemporaryFolder folder;
        WriteStreamed(folder);
        ForgedArchive forged(ReadBytes(folder.Path("a.zip")));
        const std::size_t offsets[] = {forged.Content("bad") + 2, forged.bytes.find("PK\x07\x08") + 4,
                                       forged.Directory("bad") + s_uDirectoryChecksum};
        forged.bytes[offsets[place]] ^= 1;
        WriteBytes(folder.Path("a.zip"), forged.bytes);
        ExpectBadEntry(folder, "a.zip", L"bad", L"good");
        ExpectNothingRead(folder.Wide("a.zip"), L"bad");
    }
}

TEST(ArchiveZipDamage, KnowsTheLengthOfAStreamedEntryByTheChecksumBehindIt)
{
    const TemporaryFolder folder;
    WriteStreamed(folder);
    const ForgedArchive whole(ReadBytes(folder.Path("a.zip")));
    const std::size_t content = whole.Content("bad");
    const std::size_t signature = whole.bytes.find("PK\x07\x08");
    const std::string checksum = whole.bytes.substr(signature + 4, 4);
    std::vector<std::uint32_t> lengths = {0x7FFFFFFF, 0x80000000, 0xFFFFFFF0, 0xFFFFFFFF};
    // Also those behind which less than a checksum is left of the file, or nothing.
    for (std::uint32_t length = 0; length < whole.bytes.size() - content + 4; ++length)
        lengths.push_back(length);
    for (const std::uint32_t length : lengths)
    {
        ForgedArchive forged(whole);
        forged.Set32(forged.Directory("bad") + s_uDirectoryCompressed, length);
        WriteBytes(folder.Path("b.zip"), forged.bytes);
        OpenArchive open(folder.Wide("b.zip"));
        const std::size_t end = content + length;
        const bool ended =
            end == signature || (end < whole.bytes.size() && whole.bytes.compare(end, 4, checksum) == 0);
        EXPECT_EQ(open.UnZip(L"bad", folder.Wide("out")), ended) << length;
        EXPECT_EQ(ReadBytes(folder.Path("out")), ended ? "deflated content" : "") << length;
        EXPECT_EQ(open.Read(L"good"), "stored content") << length;
    }
}

TEST(ArchiveZipDamage, RefusesDamagedDeflateData)
{
    const TemporaryFolder folder;
    for (const int damage : {0x00, 0xFF, 0x55})
    {
        SCOPED_TRACE(damage);
        WriteForged(folder,
                    [&](ForgedArchive& a)
                    {
                        for (std::size_t i = 2; i < 12; ++i)
                            a.bytes[a.Content("two.txt") + i] = static_cast<char>(damage);
                    });
        ExpectBadEntry(folder, "b.zip", L"two.txt", L"three.txt");
        ExpectNothingRead(folder.Wide("b.zip"), L"two.txt");
    }
}

TEST(ArchiveZipDamage, YieldsNothingOfALargeDamagedEntry)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
import random
data = ''.join(random.Random(1).choices('abcdefgh\n', k=1000000))
with zipfile.ZipFile('a.zip', 'w') as z:
    add(z, 'large', data, zipfile.ZIP_DEFLATED)
    add(z, 'good', data[:200000], zipfile.ZIP_DEFLATED)
)");
    ForgedArchive forged(ReadBytes(folder.Path("a.zip")));
    forged.bytes[forged.Content("large") + 300000] ^= 0x10;
    WriteBytes(folder.Path("a.zip"), forged.bytes);
    ExpectBadEntry(folder, "a.zip", L"large", L"good");
    ExpectNothingRead(folder.Wide("a.zip"), L"large");
}

TEST(ArchiveZipDamage, RefusesEncryptedEntries)
{
    const TemporaryFolder folder;
    RunIn(folder, "seq 100 >secret && echo open >good && zip -qP key a.zip secret && zip -q a.zip good"
                  " && zip -q0P key stored.zip secret && zip -q stored.zip good");
    for (const char* const name : {"a.zip", "stored.zip"})
    {
        ExpectBadEntry(folder, name, L"secret", L"good");
        ExpectNothingRead(folder.Wide(name), L"secret");
    }
}

TEST(ArchiveZipDamage, RefusesEntriesThatOneRecordCallsEncrypted)
{
    const TemporaryFolder folder;
    for (const bool local : {false, true})
    {
        WriteForged(folder,
                    [&](ForgedArchive& a)
                    {
                        a.Set16(local ? a.Local("one.txt") + s_uLocalFlags
                                      : a.Directory("one.txt") + s_uDirectoryFlags,
                                wxZIP_ENCRYPTED);
                    });
        ExpectBadEntry(folder, "b.zip", L"one.txt", L"two.txt");
        ExpectNothingRead(folder.Wide("b.zip"), L"one.txt");
    }
}

TEST(ArchiveZipDamage, RefusesUnsupportedMethods)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    add(z, 'bzip2', 'content' * 50, zipfile.ZIP_BZIP2)
    add(z, 'lzma', 'content' * 50, zipfile.ZIP_LZMA)
    add(z, 'good', 'content')
)");
    for (const wchar_t* const name : {L"bzip2", L"lzma"})
    {
        ExpectBadEntry(folder, "a.zip", name, L"good");
        ExpectNothingRead(folder.Wide("a.zip"), name);
    }
}

TEST(ArchiveZipDamage, RefusesForgedMethods)
{
    const TemporaryFolder folder;
    for (const int method : {1, 9, 8, 99, 0xFFFF})
        for (const int places : {1, 2, 3})
        {
            SCOPED_TRACE(std::to_string(method) + " in " + std::to_string(places));
            WriteForged(folder,
                        [&](ForgedArchive& a)
                        {
                            if ((places & 1) != 0)
                                a.Set16(a.Directory("one.txt") + s_uDirectoryMethod,
                                        static_cast<std::uint16_t>(method));
                            if ((places & 2) != 0)
                                a.Set16(a.Local("one.txt") + s_uLocalMethod,
                                        static_cast<std::uint16_t>(method));
                        });
            ExpectBadEntry(folder, "b.zip", L"one.txt", L"two.txt");
        }
}

// Declares a length of 64 bits for "one.txt" by an extra field in the directory.
void DeclareLongLength(ForgedArchive& a, std::uint64_t length)
{
    const std::size_t record = a.Directory("one.txt");
    a.Set32(record + s_uDirectoryLength, 0xFFFFFFFF);
    a.Set16(record + 30, 12);
    std::string extra("\x01\x00\x08\x00", 4);
    for (int i = 0; i < 8; ++i)
        extra += static_cast<char>(length >> (8 * i));
    a.bytes.insert(record + 46 + std::string("one.txt").size(), extra);
    const std::size_t end = a.bytes.rfind("PK\x05\x06");
    a.Set32(end + 12, static_cast<std::uint32_t>(end - a.bytes.find("PK\x01\x02")));
}

const Forgery s_badLengths[] = {
    {"2^62", [](ForgedArchive& a) { DeclareLongLength(a, 1ULL << 62); }},
    {"negative", [](ForgedArchive& a) { DeclareLongLength(a, ~0ULL - 16); }},
    {"2^63", [](ForgedArchive& a) { DeclareLongLength(a, 1ULL << 63); }},
    {"2^31 in the directory",
     [](ForgedArchive& a) { a.Set32(a.Directory("one.txt") + s_uDirectoryLength, 1U << 31); }},
    {"one more", [](ForgedArchive& a) { a.Set32(a.Directory("one.txt") + s_uDirectoryLength, 18); }},
    {"one less", [](ForgedArchive& a) { a.Set32(a.Directory("one.txt") + s_uDirectoryLength, 16); }},
    {"2^31 in front", [](ForgedArchive& a) { a.Set32(a.Local("one.txt") + s_uLocalLength, 1U << 31); }},
    {"one less in front", [](ForgedArchive& a) { a.Set32(a.Local("one.txt") + s_uLocalLength, 16); }},
    {"everywhere",
     [](ForgedArchive& a)
     {
         for (const std::size_t offset :
              {a.Directory("one.txt") + s_uDirectoryCompressed, a.Directory("one.txt") + s_uDirectoryLength,
               a.Local("one.txt") + s_uLocalLength - 4, a.Local("one.txt") + s_uLocalLength})
             a.Set32(offset, 0x7FFFFFF0);
     }},
    {"of a deflated entry",
     [](ForgedArchive& a)
     {
         a.Set32(a.Directory("two.txt") + s_uDirectoryLength, 0x7FFFFFF0);
         a.Set32(a.Local("two.txt") + s_uLocalLength, 0x7FFFFFF0);
     }},
};

TEST(ArchiveZipDamage, RefusesForgedLengths)
{
    const TemporaryFolder folder;
    for (const Forgery& row : s_badLengths)
    {
        SCOPED_TRACE(row.what);
        WriteForged(folder, row.forge);
        const bool deflated = std::string(row.what) == "of a deflated entry";
        ExpectBadEntry(folder, "b.zip", deflated ? L"two.txt" : L"one.txt", L"three.txt");
        OpenArchive open(folder.Wide("b.zip"));
        EXPECT_EQ(open.count, 3);
        EXPECT_LE(open.Read(L"one.txt").size(), ContentOf("one.txt").size());
    }
}

TEST(ArchiveZipDamage, BelievesNoNumbersOfAFieldThatIsTooShortForThem)
{
    const TemporaryFolder folder;
    // The lengths and the place lie in a field for 0 to 3 numbers that says how long it is, or lies.
    RunPython(folder, R"(
for have in range(4):
    for says in (have * 8, 24, 65535):
        if have == 3: continue
        field = struct.pack('<HH', 1, says) + b'\x07\0\0\0\0\0\0\0' * have
        record = struct.pack('<4sHHHHHHIIIHHHHHII', b'PK\1\2', 45, 45, 0, 0, 0, 0, 0, 0xFFFFFFFF, 0xFFFFFFFF,
                             1, len(field), 0, 0, 0, 0, 0xFFFFFFFF) + b'n' + field
        end = struct.pack('<4sHHHHIIH', b'PK\5\6', 0, 0, 1, 1, len(record), 0, 0)
        open('short%d-%d.zip' % (have, says), 'wb').write(record + end)
)");
    int archives = 0;
    for (const auto& file : std::filesystem::directory_iterator(folder.Path()))
    {
        if (file.path().extension() != ".zip")
            continue;
        ++archives;
        OpenArchive open(folder.Wide(file.path().filename().string()));
        ASSERT_EQ(open.count, 1) << file.path();
        EXPECT_EQ(open[L"n"]->GetSize(), 0) << file.path();
        EXPECT_EQ(open[L"n"]->GetCompressedSize(), 0) << file.path();
        EXPECT_FALSE(open.UnZip(L"n", folder.Wide("out")));
        EXPECT_EQ(open.Read(L"n"), "");
    }
    EXPECT_EQ(archives, 9);
}

TEST(ArchiveZipDamage, BelievesNoLengthsOfALocalFieldThatIsTooShortForThem)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
import zlib
content = b'content'
field = struct.pack('<HHQ', 1, 8, 7)
local = struct.pack('<4sHHHHHIIIHH', b'PK\3\4', 45, 0, 0, 0, 0, zlib.crc32(content), 0xFFFFFFFF, 0xFFFFFFFF,
                    1, len(field)) + b'n' + field + content
record = struct.pack('<4sHHHHHHIIIHHHHHII', b'PK\1\2', 45, 45, 0, 0, 0, 0, zlib.crc32(content), 7, 7,
                     1, 0, 0, 0, 0, 0, 0) + b'n'
end = struct.pack('<4sHHHHIIH', b'PK\5\6', 0, 0, 1, 1, len(record), len(local), 0)
open('a.zip', 'wb').write(local + record + end)
)");
    OpenArchive open(folder.Wide("a.zip"));
    EXPECT_FALSE(open.UnZip(L"n", folder.Wide("out")));
    EXPECT_EQ(open.Read(L"n"), "");
}

TEST(ArchiveZipDamage, BelievesNoLengthsOfAFieldThatIsLongerThanItsPlace)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
import zlib
content = b'content'
def archive(name, localLength, recordLength):
    field = struct.pack('<HHQQ', 1, localLength, 7, 7)
    local = struct.pack('<4sHHHHHIIIHH', b'PK\3\4', 45, 0, 0, 0, 0, zlib.crc32(content), 0xFFFFFFFF, 0xFFFFFFFF,
                        1, len(field)) + b'n' + field + content
    field = struct.pack('<HHQQ', 1, recordLength, 7, 7)
    record = struct.pack('<4sHHHHHHIIIHHHHHII', b'PK\1\2', 45, 45, 0, 0, 0, 0, zlib.crc32(content), 0xFFFFFFFF,
                         0xFFFFFFFF, 1, len(field), 0, 0, 0, 0, 0) + b'n' + field
    end = struct.pack('<4sHHHHIIH', b'PK\5\6', 0, 0, 1, 1, len(record), len(local), 0)
    open(name, 'wb').write(local + record + end)
archive('right.zip', 16, 16)
archive('local.zip', 17, 16)
archive('directory.zip', 16, 17)
)");
    EXPECT_EQ(OpenArchive(folder.Wide("right.zip")).Read(L"n"), "content");
    for (const char* name : {"local.zip", "directory.zip"})
    {
        OpenArchive open(folder.Wide(name));
        EXPECT_FALSE(open.UnZip(L"n", folder.Wide("out"))) << name;
        EXPECT_EQ(open.Read(L"n"), "") << name;
        const Result<ZipReader> zip = ZipReader::Open(folder.Path(name));
        ASSERT_TRUE(zip) << zip.error().Message();
        EXPECT_EQ(zip->Read(*zip->begin()).error().Code(), Errc::Malformed) << name;
    }
}

TEST(ArchiveZipDamage, ReadsLengthsThatLieInTheirField)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    for method in (zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED):
        with z.open(zipfile.ZipInfo('n%d' % method), 'w', force_zip64=True) as f:
            f.write(b'content')
)");
    OpenArchive open(folder.Wide("a.zip"));
    EXPECT_EQ(open.Read(L"n0"), "content");
    EXPECT_TRUE(open.UnZip(L"n0", folder.Wide("out")));
}

TEST(ArchiveZipDamage, RefusesStoredEntriesWhoseLengthsAreNotThoseOfTheirData)
{
    const TemporaryFolder folder;
    const Forgery forgeries[] = {
        {"the directory's compressed length",
         [](ForgedArchive& a) { a.Set32(a.Directory("one.txt") + s_uDirectoryCompressed, 5); }},
        {"the record's length", [](ForgedArchive& a) { a.Set32(a.Local("one.txt") + s_uLocalLength, 5); }},
        {"the record's compressed length",
         [](ForgedArchive& a) { a.Set32(a.Local("one.txt") + s_uLocalLength - 4, 5); }},
        {"the record's lengths in a field that is not there",
         [](ForgedArchive& a)
         {
             a.Set32(a.Local("one.txt") + s_uLocalLength, 0xFFFFFFFF);
             a.Set32(a.Local("one.txt") + s_uLocalLength - 4, 0xFFFFFFFF);
         }},
    };
    for (const Forgery& forgery : forgeries)
    {
        SCOPED_TRACE(forgery.what);
        WriteForged(folder, forgery.forge);
        ExpectBadEntry(folder, "b.zip", L"one.txt", L"three.txt");
        ExpectNothingRead(folder.Wide("b.zip"), L"one.txt");
    }
}

TEST(ArchiveZipDamage, NeedsNoMemoryForForgedLengths)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    int number = 0;
    for (const Forgery& row : s_badLengths)
    {
        ForgedArchive forged(ReadBytes(folder.Path("a.zip")));
        row.forge(forged);
        WriteBytes(folder.Path(std::to_string(number++)), forged.bytes);
    }
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0)
    {
        const struct rlimit limit = {256U << 20, 256U << 20};
        if (!ToolkitTest::s_bSanitized)
            setrlimit(RLIMIT_AS, &limit);
        for (int i = 0; i < number; ++i)
        {
            OpenArchive open(folder.Wide(std::to_string(i)));
            for (const auto& pair : open.entries)
            {
                open.Read(pair.first);
                open.UnZip(pair.first, folder.Wide("out"));
            }
        }
        ToolkitTest::EndChild(0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(ArchiveZipDamage, LeavesTheReaderNoMemoryForAForgedLength)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
import random
with zipfile.ZipFile('a.zip', 'w') as z:
    add(z, 'long', random.Random(1).randbytes(1 << 17), zipfile.ZIP_DEFLATED)
)");
    ForgedArchive forged(ReadBytes(folder.Path("a.zip")));
    forged.Set32(forged.Directory("long") + s_uDirectoryLength, 64U << 20);
    forged.Set32(forged.Local("long") + s_uLocalLength, 64U << 20);
    WriteBytes(folder.Path("a.zip"), forged.bytes);
    OpenArchive open(folder.Wide("a.zip"));
    std::vector<unsigned char> bytes = {'k'};
    *open.archive.GetZipInputStream(open[L"long"]) >> bytes;
    EXPECT_EQ(bytes, std::vector<unsigned char>{'k'});
    EXPECT_LT(bytes.capacity(), 4096U);
}

TEST(ArchiveZipDamage, StopsDecodingBehindTheDeclaredLength)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    add(z, 'bomb', b'\0' * (64 << 20), zipfile.ZIP_DEFLATED)
    add(z, 'good', 'content')
)");
    ForgedArchive forged(ReadBytes(folder.Path("a.zip")));
    forged.Set32(forged.Directory("bomb") + s_uDirectoryLength, 1000);
    WriteBytes(folder.Path("a.zip"), forged.bytes);
    ExpectBadEntry(folder, "a.zip", L"bomb", L"good");
}

TEST(ArchiveZipDamage, RefusesAnEntryThatPointsAtAnotherOnesContent)
{
    const TemporaryFolder folder;
    WriteForged(folder,
                [](ForgedArchive& a) {
                    a.Set32(a.Directory("one.txt") + s_uDirectoryOffset,
                            static_cast<std::uint32_t>(a.Local("three.txt")));
                });
    ExpectBadEntry(folder, "b.zip", L"one.txt", L"two.txt");
    ExpectNothingRead(folder.Wide("b.zip"), L"one.txt");
}

TEST(ArchiveZipDamage, RefusesArchivesCutAnywhere)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    const std::string whole = ReadBytes(folder.Path("a.zip"));
    const OpenArchive good(folder.Wide("a.zip"));
    CapturedOutput errors(2);
    Record record;
    const InstalledLogger logger(new RecordingLogger(record));
    for (std::size_t length = 0; length < whole.size(); ++length)
    {
        WriteBytes(folder.Path("cut.zip"), whole.substr(0, length));
        record.Clear();
        OpenArchive open(folder.Wide("cut.zip"));
        ASSERT_EQ(open.count, -1) << length;
        ASSERT_TRUE(open.entries.empty()) << length;
        ASSERT_NE(record.Text().find(L" : 99 : EntriesList :   archive format can't be read! \n"),
                  std::wstring::npos)
            << length;
        open.entries = good.entries;
        for (const auto& pair : open.entries)
        {
            ASSERT_FALSE(open.UnZip(pair.first, folder.Wide("out"))) << length;
            ASSERT_EQ(open.Read(pair.first), "") << length;
        }
    }
    EXPECT_EQ(errors.Stop(), "");
}

TEST(ArchiveZipDamage, ExtractsOnlyRightContentWhicheverByteIsChanged)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    add(z, 's', 'content')
    add(z, 'd', 'deflated ' * 9, zipfile.ZIP_DEFLATED)
)");
    const std::string whole = ReadBytes(folder.Path("a.zip"));
    std::string right[] = {"content", ""};
    for (int i = 0; i < 9; ++i)
        right[1] += "deflated ";
    CapturedOutput errors(2);
    std::size_t extracted = 0;
    for (std::size_t i = 0; i < whole.size(); ++i)
    {
        std::string changed = whole;
        changed[i] = static_cast<char>(changed[i] ^ (1 << i % 8));
        WriteBytes(folder.Path("b.zip"), changed);
        OpenArchive open(folder.Wide("b.zip"));
        ASSERT_LE(open.count, 2) << i;
        for (const auto& pair : open.entries)
        {
            const bool done = open.UnZip(pair.first, folder.Wide("out"));
            const std::string content = ReadBytes(folder.Path("out"));
            if (done)
            {
                ASSERT_NE(std::find(std::begin(right), std::end(right), content), std::end(right)) << i;
                ++extracted;
            }
        }
    }
    EXPECT_GT(extracted, whole.size());
    EXPECT_EQ(errors.Stop(), "");
}

TEST(ArchiveZipDamage, ListsWithMemoryForTheEntriesOnly)
{
    const TemporaryFolder folder;
    WriteForged(folder,
                [](ForgedArchive& a)
                {
                    // As many entries, and as large a directory, as the record at the end can declare.
                    const std::size_t end = a.bytes.rfind("PK\x05\x06");
                    a.Set16(end + 8, 0xFFFE);
                    a.Set16(end + 10, 0xFFFE);
                });
    CapturedOutput errors(2);
    const OpenArchive open(folder.Wide("b.zip"));
    EXPECT_EQ(open.count, 3);
    EXPECT_EQ(errors.Stop(), "");
}

} // namespace
