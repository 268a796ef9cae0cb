// SPDX-License-Identifier: MIT
#include "toolkit/files/ArchiveZip.h"

#include <atomic>
#include <clocale>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/Archives.h"
#include "tests/support/InChild.h"
#include "tests/support/InstalledLogger.h"
#include "tests/support/ScopedLocale.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/files/ArchiveZipEntry.h"
#include "toolkit/files/ZipInputStream.h"

namespace
{

using Toolkit::ArchiveEntriesFlags;
using Toolkit::ArchiveZip;
using Toolkit::ArchiveZipEntry;
using Toolkit::smart_ptr;
using Toolkit::TString;
using Toolkit::ZipInputStream;
using ToolkitTest::AsNobody;
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
using ToolkitTest::ScopedLocale;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;
using ToolkitTest::ZipEntries;
using Text = TString<wchar_t>;

const std::wstring s_strNotValid = L" : 106 : EntriesList :   archive is not valid! \n";
const std::wstring s_strNotReadable = L" : 99 : EntriesList :   archive format can't be read! \n";

// Lists with a logger installed, and answers the number; `line` is what was logged behind the tick count.
int List(ArchiveZip& archive, ZipEntries& entries, std::wstring& line)
{
    Record record;
    const InstalledLogger logger(new RecordingLogger(record));
    const int count = archive.EntriesList(entries, L"", ArchiveEntriesFlags::All);
    const std::vector<std::wstring> pieces = record.Pieces();
    line.clear();
    for (std::size_t i = 3; i < pieces.size(); ++i)
        line += pieces[i];
    EXPECT_TRUE(pieces.empty() || pieces[0] == L"0");
    return count;
}

void ExpectListingFails(ArchiveZip& archive, const std::wstring& message)
{
    ZipEntries entries;
    entries[L"old"] = nullptr;
    std::wstring line;
    CapturedOutput errors(2);
    EXPECT_EQ(List(archive, entries, line), -1);
    EXPECT_EQ(errors.Stop(), "");
    EXPECT_EQ(line, message);
    EXPECT_TRUE(entries.empty());
}

void ExpectListingFails(const Text& path, const std::wstring& message)
{
    ArchiveZip archive;
    archive.Open(path);
    ExpectListingFails(archive, message);
}

TEST(ArchiveZip, NumbersTheKindsOfEntries)
{
    EXPECT_EQ(static_cast<int>(ArchiveEntriesFlags::Files), 1);
    EXPECT_EQ(static_cast<int>(ArchiveEntriesFlags::Folders), 2);
    EXPECT_EQ(static_cast<int>(ArchiveEntriesFlags::All), 3);
}

TEST(ArchiveZip, KeepsTheEntriesThatAreAskedFor)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    for name in ['data/', 'data/a.txt', 'Data/b.txt', 'docs/', 'docs/c.txt', 'img*1', 'top']:
        add(z, name, '' if name.endswith('/') else name)
)");
    const std::wstring all = L"|Data/b.txt|data/|data/a.txt|docs/|docs/c.txt|img*1|top|";
    struct Row
    {
        const wchar_t* pattern;
        unsigned int type;
        std::wstring names;
    };
    const Row rows[] = {
        {L"", 3, all},
        {L"*.*", 3, all},
        {L"*", 3, all},
        {L"", 1, L"|Data/b.txt|data/a.txt|docs/c.txt|img*1|top|"},
        {L"", 2, L"|data/|docs/|"},
        {L"", 0, all},
        {L"", 7, L"|"},
        {L"DATA/*", 3, L"|Data/b.txt|data/|data/a.txt|"},
        {L"DATA/*", 1, L"|Data/b.txt|data/a.txt|"},
        {L"DATA/*", 2, L"|data/|"},
        {L"data", 3, L"|Data/b.txt|data/|data/a.txt|"},
        {L"d", 3, L"|Data/b.txt|data/|data/a.txt|docs/|docs/c.txt|"},
        {L"IMG**", 3, L"|img*1|"},
        {L"img*1", 3, L"|img*1|"},
        {L"img*1*x", 3, L"|img*1|"},
        {L"*a*", 3, L"|"},
        {L"top", 3, L"|top|"},
        {L"topmost", 3, L"|"},
        {L"*.txt", 3, all},
        {L"**", 3, L"|"},
    };
    for (const Row& row : rows)
    {
        OpenArchive open(L"");
        open.archive.Open(folder.Wide("a.zip"));
        const auto type = static_cast<ArchiveEntriesFlags::ArchiveEntriesType>(row.type);
        const int count = open.archive.EntriesList(open.entries, row.pattern, type);
        EXPECT_EQ(open.Names(), row.names) << row.pattern << " " << row.type;
        EXPECT_EQ(static_cast<std::size_t>(count), open.entries.size());
    }
}

TEST(ArchiveZip, TakesAPatternOutOfTheListItFills)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    OpenArchive open(L"");
    open.archive.Open(folder.Wide("a.zip"));
    open.entries[L"t*"] = nullptr;
    EXPECT_EQ(open.archive.EntriesList(open.entries, open.entries.begin()->first, ArchiveEntriesFlags::All),
              2);
}

TEST(ArchiveZip, DescribesEntries)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    const OpenArchive open(folder.Wide("a.zip"));
    EXPECT_EQ(open.count, 3);
    const auto entry = open[L"two.txt"];
    ASSERT_FALSE(entry.IsNull());
    EXPECT_EQ(entry->GetName(), L"two.txt");
    EXPECT_EQ(entry->GetSize(), 320);
    EXPECT_EQ(entry->GetMethod(), wxZIP_METHOD_DEFLATE);
    EXPECT_FALSE(entry->IsDir());
    EXPECT_EQ(entry->GetDateTime().GetYear(), 2020);
    EXPECT_EQ(entry->GetDateTime().GetMinute(), 34);
}

TEST(ArchiveZip, CopiesARecord)
{
    wxZipEntry record("name");
    record.SetSize(7);
    const ArchiveZipEntry entry(record);
    EXPECT_EQ(entry.GetName(), L"name");
    EXPECT_EQ(entry.GetSize(), 7);
}

TEST(ArchiveZip, ListsWhatTheZipProgramMakes)
{
    const TemporaryFolder folder;
    RunIn(folder, "mkdir -p tree/sub && echo one >tree/one.txt && : >tree/empty && seq 1000 >tree/sub/numbers"
                  " && zip -qr plain.zip tree && zip -q0r stored.zip tree && zip -q9r best.zip tree"
                  " && zip -qrD files.zip tree && zip -qr - tree >streamed.zip && zip -qrfz zip64.zip tree"
                  " && { cat /etc/hostname plain.zip >prefixed.zip; zip -qA prefixed.zip; }"
                  " && cp plain.zip commented.zip && echo comment | zip -qz commented.zip"
                  " && cat /dev/null >none && zip -q empty.zip none && zip -qd empty.zip none || [ $? = 0 ]");
    const std::wstring all = L"|tree/|tree/empty|tree/one.txt|tree/sub/|tree/sub/numbers|";
    for (const char* const name : {"plain.zip", "stored.zip", "best.zip", "streamed.zip", "zip64.zip",
                                   "prefixed.zip", "commented.zip"})
    {
        OpenArchive open(folder.Wide(name));
        EXPECT_EQ(open.count, 5) << name;
        EXPECT_EQ(open.Names(), all) << name;
        EXPECT_TRUE(open.UnZip(L"tree/sub/numbers", folder.Wide("out"))) << name;
        EXPECT_EQ(ReadBytes(folder.Path("out")), ReadBytes(folder.Path("tree/sub/numbers"))) << name;
        EXPECT_EQ(open.Read(L"tree/one.txt"), "one\n") << name;
    }
    EXPECT_EQ(OpenArchive(folder.Wide("files.zip")).Names(), L"|tree/empty|tree/one.txt|tree/sub/numbers|");
}

TEST(ArchiveZip, ListsAnArchiveBehindOtherBytes)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    WriteBytes(folder.Path("b.zip"), std::string(5000, 'x') + ReadBytes(folder.Path("a.zip")));
    OpenArchive open(folder.Wide("b.zip"));
    EXPECT_EQ(open.count, 3);
    EXPECT_EQ(open.Read(L"two.txt"), ContentOf("two.txt"));
    EXPECT_EQ(open.Read(L"one.txt"), ContentOf("one.txt"));
}

TEST(ArchiveZip, ListsAnEmptyArchive)
{
    const TemporaryFolder folder;
    RunPython(folder, "zipfile.ZipFile('a.zip', 'w').close()");
    ASSERT_EQ(ReadBytes(folder.Path("a.zip")).size(), 22U);
    OpenArchive open(folder.Wide("a.zip"));
    EXPECT_EQ(open.count, 0);
    ExpectListingFails(open.archive, s_strNotValid);
}

TEST(ArchiveZip, ListsTenThousandEntries)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    for i in range(10000): add(z, 'folder/%d' % i, 'content %d' % i)
)");
    OpenArchive open(folder.Wide("a.zip"));
    EXPECT_EQ(open.count, 10000);
    EXPECT_EQ(open.Read(L"folder/9999"), "content 9999");
    EXPECT_EQ(open.Read(L"folder/0"), "content 0");
}

TEST(ArchiveZip, ListsMoreEntriesThanTheShortRecordCounts)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
count = 65600
with open('a.zip', 'wb') as f:
    f.write(b'PK\3\4' + struct.pack('<HHHHHIIIHH', 20, 0, 0, 0, 33, 0, 0, 0, 1, 0) + b'x')
    start = f.tell()
    for i in range(count):
        f.write(b'PK\1\2' + struct.pack('<HHHHHHIIIHHHHHII', 20, 20, 0, 0, 0, 33, 0, 0, 0, 5, 0, 0, 0, 0, 0, 0))
        f.write(b'%05d' % i)
    end = f.tell()
    f.write(b'PK\6\6' + struct.pack('<QHHIIQQQQ', 44, 45, 45, 0, 0, count, count, end - start, start))
    f.write(b'PK\6\7' + struct.pack('<IQI', 0, end, 1))
    f.write(b'PK\5\6' + struct.pack('<HHHHIIH', 0, 0, 0xFFFF, 0xFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0))
)");
    EXPECT_EQ(OpenArchive(folder.Wide("a.zip")).count, 65600);
}

TEST(ArchiveZip, ReadsTheLongRecords)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
zipfile.ZIP64_LIMIT = 4
zipfile.ZIP_FILECOUNT_LIMIT = 1
with zipfile.ZipFile('a.zip', 'w') as z:
    add(z, 'stored', 'stored content')
    with z.open('forced', 'w', force_zip64=True) as f: f.write(b'forced content')
    add(z, 'deflated', 'deflated content ' * 100, zipfile.ZIP_DEFLATED)
)");
    ASSERT_NE(ReadBytes(folder.Path("a.zip")).find("PK\x06\x06"), std::string::npos);
    OpenArchive open(folder.Wide("a.zip"));
    EXPECT_EQ(open.Names(), L"|deflated|forced|stored|");
    EXPECT_EQ(open.Read(L"stored"), "stored content");
    EXPECT_EQ(open.Read(L"forced"), "forced content");
    EXPECT_EQ(open.Read(L"deflated").size(), 1700U);
}

TEST(ArchiveZip, KeepsTheFirstOfEqualNames)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
import warnings
warnings.simplefilter('ignore')
with zipfile.ZipFile('a.zip', 'w') as z:
    add(z, 'same', 'first')
    add(z, 'same', 'second')
    add(z, 'other', 'third')
)");
    OpenArchive open(folder.Wide("a.zip"));
    EXPECT_EQ(open.count, 2);
    EXPECT_EQ(open.Read(L"same"), "first");
}

TEST(ArchiveZip, LeavesNamesAsTheyAre)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    for name in ['../../x', 'a/../b', 'back\\slash', 'C:/drive', 'sp ace']: add(z, name, name)
)");
    OpenArchive open(folder.Wide("a.zip"));
    EXPECT_EQ(open.Names(), L"|../../x|C:/drive|a/../b|back\\slash|sp ace|");
    EXPECT_EQ(open.Read(L"../../x"), "../../x");
}

TEST(ArchiveZip, TakesANameThatEndsWithASlashForAFolder)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z: add(z, 'folder/', '')
)");
    const OpenArchive open(folder.Wide("a.zip"));
    ASSERT_EQ(open.Names(), L"|folder/|");
    EXPECT_TRUE(open[L"folder/"]->IsDir());
}

// Names of bytes that only Python's own encoding of names keeps from being written.
void MakeArchiveOfOldNames(const TemporaryFolder& folder)
{
    RunPython(folder, R"(
class Name(str):
    def __new__(cls, data):
        self = str.__new__(cls, data.decode('latin-1'))
        self.data = data
        return self
class Info(zipfile.ZipInfo):
    def _encodeFilenameFlags(self): return self.filename_bytes, self.flag_bits | self.extra_flags
    __slots__ = ('filename_bytes', 'extra_flags')
with zipfile.ZipFile('a.zip', 'w') as z:
    for data, flags in [(b'caf\x82', 0), (b'caf\xe9', 0), (b'\xc3\xbc', 0), (b'\xff\xfe', 0x800),
                        (b'\xff\xfd', 0x800), (b'\xe2\x82\xac', 0x800), (b'old\xff/', 0), (b'', 0), (b'last', 0)]:
        info = Info('x' if not data.endswith(b'/') else 'x/')
        info.filename_bytes, info.extra_flags = data, flags
        z.writestr(info, '' if data.endswith(b'/') else data)
)");
}

TEST(ArchiveZip, ListsNamesInEveryCharset)
{
    const TemporaryFolder folder;
    MakeArchiveOfOldNames(folder);
    ASSERT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    OpenArchive open(folder.Wide("a.zip"));
    EXPECT_EQ(open.Names(),
              L"||caf\u0082|caf\u00E9|last|old\u00FF/|\u00FC|\u00FF\u00FD|\u00FF\u00FE|\u20AC|");
    EXPECT_EQ(open.count, 9);
    EXPECT_EQ(open.Read(L"caf\u0082"), "caf\x82");
    EXPECT_EQ(open.Read(L"\u00FF\u00FE"), "\xFF\xFE");
    EXPECT_EQ(open.Read(L"\u20AC"), "\xE2\x82\xAC");
    EXPECT_EQ(open.Read(L"last"), "last");
    EXPECT_TRUE(open[L"old\u00FF/"]->IsDir());
    EXPECT_EQ(open[L"\u00FF\u00FE"]->GetName(), L"\u00FF\u00FE");
}

TEST(ArchiveZip, ListsNamesInAUtf8Locale)
{
    const TemporaryFolder folder;
    MakeArchiveOfOldNames(folder);
    const ScopedLocale locale("C.UTF-8");
    const OpenArchive open(folder.Wide("a.zip"));
    EXPECT_EQ(open.count, 9);
    EXPECT_FALSE(open[L"\u00FC"].IsNull());
    EXPECT_FALSE(open[L"caf\u00E9"].IsNull());
}

TEST(ArchiveZip, ListsOnAfterANameOfNoLength)
{
    const TemporaryFolder folder;
    MakeArchiveOfOldNames(folder);
    OpenArchive open(folder.Wide("a.zip"));
    ASSERT_FALSE(open[L""].IsNull());
    EXPECT_FALSE(open[L"last"].IsNull());
    EXPECT_FALSE(open.UnZip(L"", folder.Wide("out")));
}

TEST(ArchiveZip, KeepsNamesApartThatWxWidgetsLeavesEmpty)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    for name in ['.', '..', './', '../', '/', '//', './/', './.', 'last']: add(z, name, 'of ' + name)
)");
    OpenArchive open(folder.Wide("a.zip"));
    EXPECT_EQ(open.Names(), L"|.|..|../|./|./.|.//|/|//|last|");
    EXPECT_EQ(open.count, 9);
    for (const std::wstring& name : {std::wstring(L"."), std::wstring(L".."), std::wstring(L"./"),
                                     std::wstring(L"/"), std::wstring(L"last")})
        EXPECT_EQ(open.Read(name), "of " + std::string(name.begin(), name.end()));
    EXPECT_TRUE(open.UnZip(L"..", folder.Wide("out")));
    EXPECT_EQ(ReadBytes(folder.Path("out")), "of ..");
}

TEST(ArchiveZip, FiltersNamesThatWxWidgetsLeavesEmpty)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    for name in ['.', '..', '../', 'last']: add(z, name, '')
)");
    ArchiveZip archive;
    ZipEntries entries;
    archive.Open(folder.Wide("a.zip"));
    EXPECT_EQ(archive.EntriesList(entries, L"..*", ArchiveEntriesFlags::Folders), 1);
    EXPECT_EQ(entries.count(L"../"), 1U);
}

TEST(ArchiveZip, TakesSlashesInFrontFromNames)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    for name in ['/root', './here', 'root', '.hidden']: add(z, name, name)
)");
    OpenArchive open(folder.Wide("a.zip"));
    EXPECT_EQ(open.Names(), L"|.hidden|here|root|");
    EXPECT_EQ(open.Read(L"root"), "/root");
}

TEST(ArchiveZip, KeepsNamesApartThatDifferBehindAZero)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    for name in ['zero_a', 'zero_b', 'zero_']: add(z, name, name)
data = open('a.zip', 'rb').read().replace(b'zero_a', b'zero\0a').replace(b'zero_b', b'zero\0b')
open('a.zip', 'wb').write(data)
)");
    OpenArchive open(folder.Wide("a.zip"));
    EXPECT_EQ(open.count, 3);
    EXPECT_FALSE(open[Text(std::wstring(L"zero\0b", 6))].IsNull());
}

TEST(ArchiveZip, ExtractsAnEntryWithoutAName)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z: add(z, 'Q', 'content')
data = bytearray(open('a.zip', 'rb').read())
for place, length, signature in ((30, 26, b'PK\3\4'), (46, 28, b'PK\1\2')):
    start = data.find(signature)
    struct.pack_into('<H', data, start + length, 0)
    del data[start + place]
end = data.find(b'PK\5\6')
struct.pack_into('<II', data, end + 12, 46, end - 46)
open('a.zip', 'wb').write(data)
)");
    OpenArchive open(folder.Wide("a.zip"));
    ASSERT_EQ(open.Names(), L"||");
    EXPECT_EQ(open.Read(L""), "content");
}

TEST(ArchiveZip, FailsToListBeforeOpen)
{
    ArchiveZip archive;
    ExpectListingFails(archive, s_strNotValid);
}

TEST(ArchiveZip, FailsToListAfterClose)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    ArchiveZip archive;
    archive.Open(folder.Wide("a.zip"));
    archive.Close();
    archive.Close();
    ExpectListingFails(archive, s_strNotValid);
}

TEST(ArchiveZip, SaysNothingOfWhatItOpens)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("text"), "This is no archive, but it is long enough to be one.");
    Record record;
    const InstalledLogger logger(new RecordingLogger(record));
    CapturedOutput errors(2);
    ArchiveZip archive;
    for (const char* const name : {"missing.zip", "text", "."})
        archive.Open(folder.Wide(name));
    EXPECT_EQ(errors.Stop(), "");
    EXPECT_EQ(record.Text(), L"");
}

TEST(ArchiveZip, FailsToListAMissingFile)
{
    const TemporaryFolder folder;
    for (const Text& path :
         {folder.Wide("missing.zip"), Text(), Text(L"/\xD800"), Text(folder.Wide() + std::wstring(1, L'\0'))})
        ExpectListingFails(path, s_strNotValid);
}

TEST(ArchiveZip, FailsToListAFileThatMayNotBeRead)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    RunIn(folder, "chmod 755 . && chmod 000 a.zip");
    EXPECT_TRUE(AsNobody(
        [&]
        {
            ArchiveZip archive;
            ZipEntries entries;
            std::wstring line;
            archive.Open(folder.Wide("a.zip"));
            return List(archive, entries, line) == -1 && line == s_strNotValid;
        }));
}

TEST(ArchiveZip, FailsToListWhatIsNoArchive)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("empty"), "");
    WriteBytes(folder.Path("short"), "PK\x05\x06");
    WriteBytes(folder.Path("text"), "This is no archive, but it is long enough to be one.");
    WriteBytes(folder.Path("zeros"), std::string(100000, '\0'));
    WriteBytes(folder.Path("header"), "PK\x03\x04" + std::string(100, 'x'));
    WriteBytes(folder.Path("end"), "PK\x05\x06" + std::string(18, '\xFF'));
    ASSERT_EQ(mkfifo(folder.Path("fifo").c_str(), 0600), 0);
    for (const char* const name : {"empty", "short", "text", "zeros", "header", "end", "fifo", "."})
    {
        SCOPED_TRACE(name);
        ExpectListingFails(folder.Wide(name), s_strNotReadable);
    }
    ExpectListingFails(L"/dev/zero", s_strNotReadable);
}

TEST(ArchiveZip, SaysTheSameOfNoArchiveEachTime)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("text"), "This is no archive, but it is long enough to be one.");
    ArchiveZip archive;
    archive.Open(folder.Wide("text"));
    ExpectListingFails(archive, s_strNotReadable);
    ExpectListingFails(archive, s_strNotReadable);
}

TEST(ArchiveZip, FailsToListAgain)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    OpenArchive open(folder.Wide("a.zip"));
    ExpectListingFails(open.archive, s_strNotValid);
    ExpectListingFails(open.archive, s_strNotValid);
}

TEST(ArchiveZip, ListsFromTheBeginningWhenOpenedAgain)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    OpenArchive open(folder.Wide("a.zip"));
    open.archive.Open(folder.Wide("a.zip"));
    EXPECT_EQ(open.archive.EntriesList(open.entries, L"", ArchiveEntriesFlags::All), 3);
}

TEST(ArchiveZip, DropsTheOldArchiveWhenAnotherIsOpened)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    OpenArchive open(folder.Wide("a.zip"));
    open.archive.Open(folder.Wide("missing.zip"));
    EXPECT_EQ(open.Read(L"one.txt"), "");
    ExpectListingFails(open.archive, s_strNotValid);
}

TEST(ArchiveZip, FindsNothingMoreBehindTheEndAfterAnExtraction)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    OpenArchive open(folder.Wide("a.zip"));
    ASSERT_TRUE(open.UnZip(L"one.txt", folder.Wide("out")));
    ZipEntries entries;
    std::wstring line;
    EXPECT_EQ(List(open.archive, entries, line), 0);
    EXPECT_EQ(line, L"");
    ExpectListingFails(open.archive, s_strNotValid);
}

TEST(ArchiveZip, FailsToListBehindAnEntryReadToItsEnd)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    OpenArchive open(folder.Wide("a.zip"));
    ASSERT_EQ(open.Read(L"one.txt"), ContentOf("one.txt"));
    ExpectListingFails(open.archive, s_strNotValid);
}

TEST(ArchiveZip, ListsOnAfterAnEntryReadInPart)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    const OpenArchive other(folder.Wide("a.zip"));
    ArchiveZip archive;
    archive.Open(folder.Wide("a.zip"));
    Text word;
    *archive.GetZipInputStream(other[L"one.txt"]) >> word;
    EXPECT_EQ(word, L"the");
    ZipEntries entries;
    EXPECT_EQ(archive.EntriesList(entries, L"", ArchiveEntriesFlags::All), 3);
}

TEST(ArchiveZip, ListsOnBehindAnEntryThatIsNotFound)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    ArchiveZip archive;
    archive.Open(folder.Wide("a.zip"));
    archive.GetZipInputStream(new ArchiveZipEntry(wxZipEntry("nowhere")));
    ZipEntries entries;
    EXPECT_EQ(archive.EntriesList(entries, L"", ArchiveEntriesFlags::All), 3);
}

TEST(ArchiveZip, ListsTheEntriesBeforeADamagedRecord)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    ForgedArchive forged(ReadBytes(folder.Path("a.zip")));
    forged.Set32(forged.Directory("three.txt"), 0);
    WriteBytes(folder.Path("a.zip"), forged.bytes);
    CapturedOutput errors(2);
    OpenArchive open(folder.Wide("a.zip"));
    EXPECT_EQ(errors.Stop(), "");
    EXPECT_EQ(open.count, 2);
    EXPECT_EQ(open.Names(), L"|one.txt|two.txt|");
    EXPECT_EQ(open.Read(L"two.txt"), ContentOf("two.txt"));
}

TEST(ArchiveZip, AnswersNullStreamsForNothing)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    OpenArchive open(folder.Wide("a.zip"));
    EXPECT_TRUE(open.archive.GetZipInputStream(nullptr).IsNull());
    open.archive.Close();
    EXPECT_TRUE(open.archive.GetZipInputStream(open[L"one.txt"]).IsNull());
    EXPECT_TRUE(ArchiveZip().GetZipInputStream(open[L"one.txt"]).IsNull());
}

TEST(ArchiveZip, AnswersTheSameStreamEachTime)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    OpenArchive open(folder.Wide("a.zip"));
    const smart_ptr<ZipInputStream> first = open.archive.GetZipInputStream(open[L"one.txt"]);
    EXPECT_TRUE(first == open.archive.GetZipInputStream(open[L"two.txt"]));
}

TEST(ArchiveZip, KeepsEntriesAndStreamsAliveAfterIt)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    ZipEntries entries;
    smart_ptr<ZipInputStream> stream;
    {
        OpenArchive open(folder.Wide("a.zip"));
        entries = open.entries;
        stream = open.archive.GetZipInputStream(open[L"one.txt"]);
    }
    std::vector<unsigned char> bytes;
    *stream >> bytes;
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), ContentOf("one.txt"));
    EXPECT_EQ(entries.begin()->second->GetName(), L"one.txt");
}

TEST(ArchiveZip, LeavesTheStreamWithItsEntryWhenClosed)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    OpenArchive open(folder.Wide("a.zip"));
    const smart_ptr<ZipInputStream> stream = open.archive.GetZipInputStream(open[L"three.txt"]);
    open.archive.Close();
    Text line;
    EXPECT_TRUE(stream->ReadLine(line));
    EXPECT_EQ(line, L"the third content");
}

TEST(ArchiveZip, TakesEntriesThatAnotherObjectListed)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    const OpenArchive other(folder.Wide("a.zip"));
    OpenArchive open(folder.Wide("a.zip"));
    open.entries = other.entries;
    EXPECT_EQ(open.Read(L"two.txt"), ContentOf("two.txt"));
}

TEST(ArchiveZip, ReadsOnWhenTheFileIsRemoved)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    OpenArchive open(folder.Wide("a.zip"));
    RunIn(folder, "rm a.zip");
    EXPECT_EQ(open.Read(L"two.txt"), ContentOf("two.txt"));
}

TEST(ArchiveZip, OpensPathsOutsideAscii)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "\xC3\xA9\xE2\x82\xAC.zip");
    EXPECT_EQ(OpenArchive(folder.Wide("\xC3\xA9\xE2\x82\xAC.zip")).count, 3);
}

TEST(ArchiveZip, LeavesOtherThreadsTheirArchives)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            [&, i]
            {
                for (int j = 0; j < 20; ++j)
                {
                    OpenArchive open(folder.Wide("a.zip"));
                    right += open.count == 3 && open.Read(L"two.txt") == ContentOf("two.txt") &&
                             open.UnZip(L"one.txt", folder.Wide("out" + std::to_string(i)));
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(right, 80);
}

TEST(ArchiveZip, KeepsItsFileFromChildProcesses)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(next);
    const OpenArchive open(folder.Wide("a.zip"));
    EXPECT_EQ(fcntl(next, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(ArchiveZip, CopySharesTheListingUntilEitherOpensAnother)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    OpenArchive open(folder.Wide("a.zip"));
    ArchiveZip copy(open.archive);
    ZipEntries entries;
    EXPECT_EQ(copy.EntriesList(entries, L"", ArchiveEntriesFlags::All), -1);
    copy.Open(folder.Wide("a.zip"));
    EXPECT_EQ(copy.EntriesList(entries, L"", ArchiveEntriesFlags::All), open.count);
    ArchiveZip assigned;
    assigned = open.archive;
    open.archive.Close();
    EXPECT_FALSE(assigned.GetZipInputStream(open[L"one.txt"]).IsNull());
    EXPECT_TRUE(open.archive.GetZipInputStream(open[L"one.txt"]).IsNull());
}

TEST(ArchiveZip, GivesItsFileBackWhenClosed)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    const int before = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(before);
    OpenArchive archive(folder.Wide("a.zip"));
    archive.Read(L"one.txt");
    archive.archive.Close();
    const int after = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(after);
    EXPECT_EQ(after, before);
}

} // namespace
