// SPDX-License-Identifier: MIT
#include "toolkit/files/TextFile.h"

#include <array>
#include <chrono>
#include <climits>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/InChild.h"
#include "tests/support/PlainLines.h"
#include "tests/support/Resources.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/encoding/UTF8.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using Toolkit::TextFile;
using Toolkit::TString;
using ToolkitTest::CapturedOutput;
using ToolkitTest::OpenDescriptors;
using ToolkitTest::ReadBytes;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

using Lines = std::vector<std::wstring>;

const std::wstring s_strZero(1, L'\0');

// The bytes of a text that may hold zeros.
template <std::size_t N>
std::string Bytes(const char (&text)[N])
{
    return std::string(text, N - 1);
}

Lines AllLines(TextFile& file)
{
    Lines lines;
    for (TString<wchar_t> line = file.GetFirstLine(); !file.Eof(); line = file.GetNextLine())
        lines.push_back(line);
    return lines;
}

// A folder with one file in it, and that file opened.
struct Opened
{
    explicit Opened(const std::string& bytes)
    {
        WriteBytes(Path(), bytes);
        EXPECT_TRUE(m_file.Open(m_folder.Wide("text")));
    }

    std::string Path() const { return m_folder.Path("text"); }
    std::string Content() const { return ReadBytes(Path()); }
    // How many entries the folder has: a stray temporary file would be one more.
    std::ptrdiff_t Entries() const
    {
        return std::distance(std::filesystem::directory_iterator(m_folder.Path()), {});
    }

    TemporaryFolder m_folder;
    TextFile m_file;
};

// The number in the name that the new content of a file has meanwhile, which is asked of one that is written.
unsigned long NumberOfNewContent(Opened& opened)
{
    const int events = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    EXPECT_LE(0, inotify_add_watch(events, opened.m_folder.Path().c_str(), IN_CREATE));
    EXPECT_TRUE(opened.m_file.Write());
    alignas(inotify_event) std::array<char, sizeof(inotify_event) + NAME_MAX + 1> event = {};
    EXPECT_LT(0, read(events, event.data(), event.size()));
    close(events);
    const std::string name = event.data() + sizeof(inotify_event);
    return std::stoul(name.substr(name.rfind('-') + 1));
}

TEST(TextFile, HasNoLinesAtFirst)
{
    TextFile file;
    EXPECT_TRUE(file.Eof());
    EXPECT_EQ(L"", file.GetFirstLine());
    EXPECT_EQ(L"", file.GetNextLine());
    EXPECT_TRUE(file.Eof());
}

TEST(TextFile, FindsTheLines)
{
    struct Row
    {
        const char* bytes;
        Lines lines;
    };
    const Row rows[] = {
        {"", {}},
        {"a", {L"a"}},
        {"a\n", {L"a"}},
        {"\n", {L""}},
        {"\r", {L""}},
        {"\r\n", {L""}},
        {"\n\n", {L"", L""}},
        {"\r\r", {L"", L""}},
        {"\n\r", {L"", L""}},
        {"\r\r\n", {L"", L""}},
        {"\r\n\r\n", {L"", L""}},
        {"a\nb\n", {L"a", L"b"}},
        {"a\r\nb\r\n", {L"a", L"b"}},
        {"a\rb\r", {L"a", L"b"}},
        {"a\r\nb\nc\rd", {L"a", L"b", L"c", L"d"}},
        {"a\n\r\nb", {L"a", L"", L"b"}},
        {" a \t\n", {L" a \t"}},
    };
    for (const Row& row : rows)
    {
        Opened opened(row.bytes);
        EXPECT_EQ(row.lines, AllLines(opened.m_file)) << row.bytes;
    }
}

TEST(TextFile, LoopVisitsALastLineWithoutAnEnd)
{
    Opened opened("one\ntwo");
    EXPECT_EQ(L"one", opened.m_file.GetFirstLine());
    EXPECT_FALSE(opened.m_file.Eof());
    EXPECT_EQ(L"two", opened.m_file.GetNextLine());
    EXPECT_FALSE(opened.m_file.Eof());
    EXPECT_EQ(L"", opened.m_file.GetNextLine());
    EXPECT_TRUE(opened.m_file.Eof());
}

TEST(TextFile, PastTheEndStaysThere)
{
    Opened opened("one\n");
    opened.m_file.GetFirstLine();
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(L"", opened.m_file.GetNextLine());
        EXPECT_TRUE(opened.m_file.Eof());
    }
    EXPECT_EQ(L"one", opened.m_file.GetFirstLine());
    EXPECT_FALSE(opened.m_file.Eof());
}

TEST(TextFile, FirstLineIsCurrentAfterOpen)
{
    Opened opened("one\ntwo\nthree\n");
    EXPECT_FALSE(opened.m_file.Eof());
    EXPECT_EQ(L"two", opened.m_file.GetNextLine());
    EXPECT_EQ(L"one", opened.m_file.GetFirstLine());
    EXPECT_EQ(L"two", opened.m_file.GetNextLine());
}

TEST(TextFile, LineAddedAtTheEndIsTheCurrentOne)
{
    Opened opened("one\n");
    opened.m_file.GetFirstLine();
    opened.m_file.GetNextLine();
    ASSERT_TRUE(opened.m_file.Eof());
    opened.m_file.AddLine(L"two");
    EXPECT_FALSE(opened.m_file.Eof());
    opened.m_file.AddLine(L"three");
    EXPECT_EQ(L"three", opened.m_file.GetNextLine());
}

TEST(TextFile, DecodesWhatTheMarkSelects)
{
    struct Row
    {
        const char* name;
        std::string bytes;
        Lines lines;
    };
    const Row rows[] = {
        {"UTF-8 without a mark",
         Bytes("\xC3\xA9\n\xE2\x82\xAC\xF0\x9F\x98\x80"),
         {L"\xE9", L"\x20AC\x1F600"}},
        {"UTF-8", Bytes("\xEF\xBB\xBF\xC3\xA9\nb"), {L"\xE9", L"b"}},
        {"UTF-16LE", Bytes("\xFF\xFE\xE9\0\r\0\n\0=\xD8\0\xDE"), {L"\xE9", L"\x1F600"}},
        {"UTF-16BE", Bytes("\xFE\xFF\0\xE9\0\r\0\n\xD8=\xDE\0"), {L"\xE9", L"\x1F600"}},
        {"UTF-32LE", Bytes("\xFF\xFE\0\0\xE9\0\0\0\n\0\0\0\0\xF6\1\0"), {L"\xE9", L"\x1F600"}},
        {"UTF-32BE", Bytes("\0\0\xFE\xFF\0\0\0\xE9\0\0\0\n\0\1\xF6\0"), {L"\xE9", L"\x1F600"}},
        {"UTF-16LE, line ends in other characters", Bytes("\xFF\xFE\n\1\1\n\r\r"), {L"\x10A\xA01\xD0D"}},
        {"UTF-8, only the first mark counts",
         Bytes("\xEF\xBB\xBF\xEF\xBB\xBF"
               "a"),
         {L"\xFEFF"
          L"a"}},
        {"UTF-8, highest and lowest",
         Bytes("\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"),
         {L"\x80\x7FF\x800\xFFFF\x10000\x10FFFF"}},
        {"UTF-16BE, highest and lowest",
         Bytes("\xFE\xFF\xFF\xFF\xD8\0\xDC\0\xDB\xFF\xDF\xFF"),
         {L"\xFFFF\x10000\x10FFFF"}},
    };
    for (const Row& row : rows)
    {
        Opened opened(row.bytes);
        EXPECT_EQ(row.lines, AllLines(opened.m_file)) << row.name;
    }
}

TEST(TextFile, MarkAloneIsAFileWithoutLines)
{
    for (const std::string& mark : {Bytes("\xEF\xBB\xBF"), Bytes("\xFF\xFE"), Bytes("\xFE\xFF"),
                                    Bytes("\xFF\xFE\0\0"), Bytes("\0\0\xFE\xFF")})
    {
        Opened opened(mark);
        EXPECT_TRUE(opened.m_file.Eof());
        EXPECT_TRUE(opened.m_file.Write());
        EXPECT_EQ("", opened.Content());
    }
}

TEST(TextFile, RefusesBrokenText)
{
    const std::string texts[] = {
        Bytes("caf\xE9\n"),         // Latin-1
        Bytes("a\x80"),             // a continuation alone
        Bytes("\xC3"),              // cut short
        Bytes("\xF0\x9F\x98"),      // cut short
        Bytes("\xC0\xAF"),          // overlong
        Bytes("\xE0\x80\xAF"),      // overlong
        Bytes("\xED\xA0\x80"),      // a surrogate
        Bytes("\xF4\x90\x80\x80"),  // above 10FFFF
        Bytes("good\n\0\nbad\xFF"), // behind a zero
        Bytes("\xEF\xBB\xBF\xFF"),  // behind each mark
        Bytes("\xEF\xBB"),          // half a mark
        Bytes("\xFF\xFE"
              "a"),              // half a unit
        Bytes("\xFF\xFE\0\xDC"), // a low surrogate alone
        Bytes("\xFF\xFE\0\xD8"), // a high one at the end
        Bytes("\xFF\xFE\0\xD8"
              "a\0"),                          // a high one before something else
        Bytes("\xFE\xFF\xD8\0\xD8\0"),         // two high ones
        Bytes("\xFF\xFE\0\0a\0\0"),            // three quarters of a unit
        Bytes("\xFF\xFE\0\0\0\0\x11\0"),       // above 10FFFF
        Bytes("\0\0\xFE\xFF\0\0\xD8\0"),       // a surrogate
        Bytes("\0\0\xFE\xFF\xFF\xFF\xFF\xFF"), // negative
    };
    for (const std::string& text : texts)
    {
        const TemporaryFolder folder;
        WriteBytes(folder.Path("text"), text);
        TextFile file;
        EXPECT_FALSE(file.Open(folder.Wide("text"))) << testing::PrintToString(text);
        EXPECT_TRUE(file.Eof());
        EXPECT_FALSE(file.Write());
        EXPECT_EQ(text, ReadBytes(folder.Path("text")));
    }
}

TEST(TextFile, KeepsZeros)
{
    Opened opened(Bytes("\0a\0\0b\n\0\n"));
    EXPECT_THAT(AllLines(opened.m_file),
                ElementsAre(s_strZero + L"a" + s_strZero + s_strZero + L"b", s_strZero));
    opened.m_file.AddLine(L"c" + s_strZero);
    EXPECT_TRUE(opened.m_file.Write());
    EXPECT_EQ(Bytes("\0a\0\0b\n\0\nc\0\n"), opened.Content());
}

TEST(TextFile, OpensNoPathThatNamesNoFile)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("text"), "one\n");
    std::filesystem::create_symlink("nowhere", folder.Path("dangling"));
    ASSERT_EQ(0, mkfifo(folder.Path("fifo").c_str(), 0600));
    const TString<wchar_t> paths[] = {
        L"",
        s_strZero,
        folder.Wide("missing"),
        folder.Wide("missing/text"),
        folder.Wide("dangling"),
        folder.Wide("fifo"),
        folder.Wide(),
        folder.Wide("text") + s_strZero,
        folder.Wide("text") + s_strZero + L"x",
        folder.Wide("text") + static_cast<wchar_t>(0xD800),
        folder.Wide("text") + L"/",
        L"/dev/null",
        L"/dev/zero",
        L"/proc/self/mem",
        // Whoever reads it to its end waits for the kernel's next message.
        L"/proc/kmsg",
        L"/dev/ptmx",
    };
    for (const TString<wchar_t>& path : paths)
    {
        TextFile file;
        EXPECT_FALSE(file.Open(path)) << path.c_str();
        EXPECT_TRUE(file.Eof());
        EXPECT_FALSE(file.Write());
    }
    EXPECT_FALSE(std::filesystem::exists(folder.Path("missing")));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("nowhere")));
}

TEST(TextFile, OpensNamesBeyondAsciiWhateverTheLocale)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("\xC3\xA9\xE6\x97\xA5"), "one\n");
    TextFile file;
    ASSERT_TRUE(file.Open(folder.Wide() + L"/\xE9\x65E5"));
    file.AddLine(L"two");
    EXPECT_TRUE(file.Write());
    EXPECT_EQ("one\ntwo\n", ReadBytes(folder.Path("\xC3\xA9\xE6\x97\xA5")));
}

TEST(TextFile, OpensAFileWhoseLengthTheSystemDoesNotTell)
{
    TextFile file;
    ASSERT_TRUE(file.Open(L"/proc/self/status"));
    EXPECT_THAT(AllLines(file), testing::Contains(testing::StartsWith(L"Name:")));
}

TEST(TextFile, OpeningAgainReplacesTheLines)
{
    Opened opened("one\ntwo\n");
    WriteBytes(opened.m_folder.Path("other"), "three\n");
    opened.m_file.AddLine(L"unsaved");
    EXPECT_TRUE(opened.m_file.Open(opened.m_folder.Wide("other")));
    EXPECT_THAT(AllLines(opened.m_file), ElementsAre(L"three"));
    EXPECT_TRUE(opened.m_file.Open(opened.m_folder.Wide("other")));
    EXPECT_THAT(AllLines(opened.m_file), ElementsAre(L"three"));
    opened.m_file.AddLine(L"four");
    EXPECT_TRUE(opened.m_file.Write());
    EXPECT_EQ("three\nfour\n", ReadBytes(opened.m_folder.Path("other")));
    EXPECT_EQ("one\ntwo\n", opened.Content());
}

TEST(TextFile, FailedOpenLeavesNothingOpened)
{
    Opened opened("one\n");
    EXPECT_FALSE(opened.m_file.Open(opened.m_folder.Wide("missing")));
    EXPECT_TRUE(opened.m_file.Eof());
    opened.m_file.AddLine(L"two");
    EXPECT_FALSE(opened.m_file.Write());
    EXPECT_EQ("one\n", opened.Content());
}

TEST(TextFile, WritesEachLineWithItsOwnEnd)
{
    for (const char* text : {"", "a", "a\n", "a\r\nb\nc\rd", "a\r\nb\nc\rd\r", "\r\r\n\n\r", "\n"})
    {
        Opened opened(text);
        EXPECT_TRUE(opened.m_file.Write());
        EXPECT_EQ(text, opened.Content());
    }
}

TEST(TextFile, WritesUtf8WithoutAMark)
{
    const std::string texts[] = {
        Bytes("\xEF\xBB\xBF\xC3\xA9\r\nb"),
        Bytes("\xFF\xFE\xE9\0\r\0\n\0b\0"),
        Bytes("\xFE\xFF\0\xE9\0\r\0\n\0b"),
        Bytes("\xFF\xFE\0\0\xE9\0\0\0\r\0\0\0\n\0\0\0b\0\0\0"),
        Bytes("\0\0\xFE\xFF\0\0\0\xE9\0\0\0\r\0\0\0\n\0\0\0b"),
    };
    for (const std::string& text : texts)
    {
        Opened opened(text);
        EXPECT_TRUE(opened.m_file.Write());
        EXPECT_EQ("\xC3\xA9\r\nb", opened.Content());
    }
}

TEST(TextFile, AddsLinesAtTheEnd)
{
    struct Row
    {
        const char* before;
        const char* after;
    };
    // An unterminated last line is ended first; ends that are there stay as they are.
    const Row rows[] = {{"", "x\xE2\x82\xAC\n\n"},       {"a\n", "a\nx\xE2\x82\xAC\n\n"},
                        {"a", "a\nx\xE2\x82\xAC\n\n"},   {"a\r\n", "a\r\nx\xE2\x82\xAC\n\n"},
                        {"a\r", "a\rx\xE2\x82\xAC\n\n"}, {"a\r\nb", "a\r\nb\nx\xE2\x82\xAC\n\n"}};
    for (const Row& row : rows)
    {
        Opened opened(row.before);
        opened.m_file.AddLine(L"x\x20AC");
        opened.m_file.AddLine(L"");
        EXPECT_TRUE(opened.m_file.Write());
        EXPECT_EQ(row.after, opened.Content());
    }
}

TEST(TextFile, AddsALineWithALineEndInItAsOne)
{
    Opened opened("");
    opened.m_file.AddLine(L"a\nb\r");
    opened.m_file.AddLine(L"c");
    EXPECT_THAT(AllLines(opened.m_file), ElementsAre(L"a\nb\r", L"c"));
    EXPECT_TRUE(opened.m_file.Write());
    EXPECT_EQ("a\nb\r\nc\n", opened.Content());
}

TEST(TextFile, HoldsLinesWithoutAFile)
{
    TextFile file;
    file.AddLine(L"one");
    file.AddLine(L"two");
    EXPECT_FALSE(file.Eof());
    EXPECT_THAT(AllLines(file), ElementsAre(L"one", L"two"));
    EXPECT_FALSE(file.Write());
    file.Clear();
    EXPECT_TRUE(file.Eof());
    EXPECT_THAT(AllLines(file), IsEmpty());
}

TEST(TextFile, ClearRemovesTheLinesAndKeepsTheFile)
{
    Opened opened("one\r\ntwo");
    opened.m_file.GetFirstLine();
    opened.m_file.GetNextLine();
    opened.m_file.Clear();
    EXPECT_TRUE(opened.m_file.Eof());
    EXPECT_EQ(L"", opened.m_file.GetFirstLine());
    EXPECT_EQ("one\r\ntwo", opened.Content());
    opened.m_file.AddLine(L"three");
    EXPECT_FALSE(opened.m_file.Eof());
    EXPECT_TRUE(opened.m_file.Write());
    EXPECT_EQ("three\n", opened.Content());
    opened.m_file.Clear();
    EXPECT_TRUE(opened.m_file.Write());
    EXPECT_EQ("", opened.Content());
}

TEST(TextFile, CloseForgetsTheLinesAndTheFile)
{
    Opened opened("one\n");
    opened.m_file.Close();
    EXPECT_TRUE(opened.m_file.Eof());
    EXPECT_EQ(L"", opened.m_file.GetFirstLine());
    EXPECT_FALSE(opened.m_file.Write());
    opened.m_file.Close();
    EXPECT_EQ("one\n", opened.Content());
}

TEST(TextFile, DoesNotWriteOnItsOwn)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("text"), "one\n");
    {
        TextFile file;
        ASSERT_TRUE(file.Open(folder.Wide("text")));
        file.AddLine(L"two");
    }
    EXPECT_EQ("one\n", ReadBytes(folder.Path("text")));
}

TEST(TextFile, MayBeWrittenRepeatedly)
{
    Opened opened("one\n");
    for (const char* expected : {"one\nx\n", "one\nx\nx\n", "one\nx\nx\nx\n"})
    {
        opened.m_file.AddLine(L"x");
        EXPECT_TRUE(opened.m_file.Write());
        EXPECT_EQ(expected, opened.Content());
    }
    EXPECT_EQ(1, opened.Entries());
}

TEST(TextFile, LineWithoutUtf8IsNotWritten)
{
    for (const unsigned int value : {0xD800U, 0xDFFFU, 0x110000U, 0x80000041U})
    {
        Opened opened("one\n");
        opened.m_file.AddLine(std::wstring(1, static_cast<wchar_t>(value)));
        EXPECT_FALSE(opened.m_file.Write());
        EXPECT_EQ("one\n", opened.Content());
        EXPECT_EQ(1, opened.Entries());
        opened.m_file.Clear();
        opened.m_file.AddLine(s_strZero + static_cast<wchar_t>(value));
        EXPECT_FALSE(opened.m_file.Write());
        opened.m_file.Clear();
        EXPECT_TRUE(opened.m_file.Write());
    }
}

TEST(TextFile, WritesTheTargetOfALink)
{
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.Path("real"));
    WriteBytes(folder.Path("real/text"), "one\n");
    std::filesystem::create_symlink("real/text", folder.Path("second"));
    std::filesystem::create_symlink("second", folder.Path("first"));
    TextFile file;
    ASSERT_TRUE(file.Open(folder.Wide("first")));
    file.AddLine(L"two");
    EXPECT_TRUE(file.Write());
    EXPECT_EQ("one\ntwo\n", ReadBytes(folder.Path("real/text")));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("first")));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("second")));
    EXPECT_FALSE(std::filesystem::is_symlink(folder.Path("real/text")));
}

// The names that the new content may get until it takes the file's place can be guessed.
TEST(TextFile, DoesNotWriteThroughLinksAtTheNamesOfItsNewContent)
{
    const TemporaryFolder precious;
    WriteBytes(precious.Path("precious"), "precious");
    Opened opened("one\n");
    const std::string begin = std::filesystem::path(opened.Path()).parent_path().string() + "/.toolkit-";
    for (int number = 0; number < 50; ++number)
        std::filesystem::create_symlink(precious.Path("precious"),
                                        begin + std::to_string(getpid()) + "-" + std::to_string(number));
    opened.m_file.AddLine(L"two");
    EXPECT_TRUE(opened.m_file.Write());
    EXPECT_EQ("one\ntwo\n", ReadBytes(opened.Path()));
    EXPECT_EQ("precious", ReadBytes(precious.Path("precious")));
    EXPECT_EQ(51, opened.Entries());
}

TEST(TextFile, GivesUpWhenEveryNameOfItsNewContentIsTaken)
{
    Opened opened("one\n");
    const std::string begin = opened.m_folder.Path(".toolkit-" + std::to_string(getpid()) + "-");
    // The names are counted in the whole process.
    const unsigned long last = NumberOfNewContent(opened);
    for (unsigned long number = 1; number <= 200; ++number)
        WriteBytes(begin + std::to_string(last + number), "taken");
    opened.m_file.AddLine(L"two");
    EXPECT_FALSE(opened.m_file.Write());
    EXPECT_EQ("one\n", ReadBytes(opened.Path()));
    EXPECT_EQ(201, opened.Entries());
    EXPECT_EQ("taken", ReadBytes(begin + std::to_string(last + 100)));
}

TEST(TextFile, DoesNotWriteThroughALinkThatLeadsNowhere)
{
    Opened opened("one\n");
    std::filesystem::remove(opened.Path());
    std::filesystem::create_symlink("nowhere", opened.Path());
    EXPECT_FALSE(opened.m_file.Write());
    EXPECT_TRUE(std::filesystem::is_symlink(opened.Path()));
    EXPECT_EQ(1, opened.Entries());
}

TEST(TextFile, MakesARemovedFileAnew)
{
    Opened opened("one\n");
    std::filesystem::remove(opened.Path());
    const mode_t before = umask(027);
    EXPECT_TRUE(opened.m_file.Write());
    umask(before);
    EXPECT_EQ("one\n", opened.Content());
    struct stat status = {};
    ASSERT_EQ(0, stat(opened.Path().c_str(), &status));
    EXPECT_EQ(0640U, status.st_mode & 07777);
}

TEST(TextFile, DoesNotReplaceWhatIsNoFileAnyMore)
{
    Opened opened("one\n");
    std::filesystem::remove(opened.Path());
    std::filesystem::create_directory(opened.Path());
    EXPECT_FALSE(opened.m_file.Write());
    std::filesystem::remove(opened.Path());
    ASSERT_EQ(0, mkfifo(opened.Path().c_str(), 0600));
    EXPECT_FALSE(opened.m_file.Write());
    const int reader = open(opened.Path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_FALSE(opened.m_file.Write());
    close(reader);
    EXPECT_TRUE(std::filesystem::is_fifo(opened.Path()));
    std::filesystem::remove_all(opened.m_folder.Path());
    EXPECT_FALSE(opened.m_file.Write());
}

TEST(TextFile, WritesARelativePathInTheWorkingFolder)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("text"), "one");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    TextFile file;
    EXPECT_TRUE(file.Open(L"text"));
    file.AddLine(L"two");
    EXPECT_TRUE(file.Write());
    std::filesystem::remove("text");
    EXPECT_TRUE(file.Write());
    std::filesystem::current_path(before);
    EXPECT_EQ("one\ntwo\n", ReadBytes(folder.Path("text")));
}

TEST(TextFile, WriteKeepsPermissionsAndOwner)
{
    Opened opened("one\n");
    // Only root may give files away.
    const uid_t owner = geteuid() == 0 ? 12345 : geteuid();
    const gid_t group = geteuid() == 0 ? 23456 : getegid();
    for (const mode_t mode : {0600U, 0644U, 0640U, 0777U, 0666U})
    {
        ASSERT_EQ(0, chmod(opened.Path().c_str(), mode));
        ASSERT_EQ(0, chown(opened.Path().c_str(), owner, group));
        struct stat before = {};
        struct stat after = {};
        ASSERT_EQ(0, stat(opened.Path().c_str(), &before));
        EXPECT_TRUE(opened.m_file.Write());
        ASSERT_EQ(0, stat(opened.Path().c_str(), &after));
        EXPECT_EQ(before.st_mode, after.st_mode);
        EXPECT_EQ(before.st_uid, after.st_uid);
        EXPECT_EQ(before.st_gid, after.st_gid);
    }
}

TEST(TextFile, UserWhoMayNotGiveFilesAwayWritesThem)
{
    Opened opened("one\n");
    ASSERT_EQ(0, chmod(opened.m_folder.Path().c_str(), 0777));
    ASSERT_EQ(0, chmod(opened.Path().c_str(), 0666));
    EXPECT_TRUE(ToolkitTest::AsNobody([&] { return opened.m_file.Write(); }));
    struct stat status = {};
    ASSERT_EQ(0, stat(opened.Path().c_str(), &status));
    EXPECT_EQ(0666U, status.st_mode & 07777);
    EXPECT_EQ("one\n", opened.Content());
}

TEST(TextFile, HardLinksKeepTheOldContent)
{
    Opened opened("one\n");
    std::filesystem::create_hard_link(opened.Path(), opened.m_folder.Path("other"));
    opened.m_file.AddLine(L"two");
    EXPECT_TRUE(opened.m_file.Write());
    EXPECT_EQ("one\ntwo\n", opened.Content());
    EXPECT_EQ("one\n", ReadBytes(opened.m_folder.Path("other")));
}

TEST(TextFile, FullDiskLeavesTheFileAsItWas)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(ToolkitTest::OnSmallDisk(
        folder.Path(), 64,
        [&]
        {
            WriteBytes(folder.Path("text"), "one\n");
            TextFile file;
            if (!file.Open(folder.Wide("text")))
                return false;
            file.AddLine(TString<wchar_t>(std::wstring(100000, L'x')));
            const bool written = file.Write();
            const auto entries = std::distance(std::filesystem::directory_iterator(folder.Path()), {});
            if (written || entries != 1 || ReadBytes(folder.Path("text")) != "one\n")
                return false;
            file.Clear();
            file.AddLine(L"fits");
            return file.Write() && ReadBytes(folder.Path("text")) == "fits\n";
        }));
}

TEST(TextFile, FileThatMayNotBeWrittenStaysAsItWas)
{
    Opened opened("one\n");
    ASSERT_EQ(0, chmod(opened.m_folder.Path().c_str(), 0777));
    ASSERT_EQ(0, chmod(opened.Path().c_str(), 0444));
    EXPECT_TRUE(ToolkitTest::AsNobody(
        [&]
        {
            opened.m_file.AddLine(L"two");
            return !opened.m_file.Write();
        }));
    EXPECT_EQ("one\n", opened.Content());
    EXPECT_EQ(1, opened.Entries());
}

TEST(TextFile, FolderThatMayNotBeWrittenStaysAsItWas)
{
    Opened opened("one\n");
    ASSERT_EQ(0, chmod(opened.m_folder.Path().c_str(), 0555));
    ASSERT_EQ(0, chmod(opened.Path().c_str(), 0666));
    EXPECT_TRUE(ToolkitTest::AsNobody(
        [&]
        {
            opened.m_file.AddLine(L"two");
            return !opened.m_file.Write();
        }));
    ASSERT_EQ(0, chmod(opened.m_folder.Path().c_str(), 0755));
    EXPECT_EQ("one\n", opened.Content());
    EXPECT_EQ(1, opened.Entries());
}

TEST(TextFile, HoldsNoDescriptor)
{
    const long before = OpenDescriptors();
    Opened opened("one\n");
    opened.m_file.Write();
    TextFile broken;
    WriteBytes(opened.m_folder.Path("broken"), "\xFF");
    broken.Open(opened.m_folder.Wide("broken"));
    broken.Open(opened.m_folder.Wide());
    EXPECT_EQ(before, OpenDescriptors());
}

TEST(TextFile, SaysNothing)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("broken"), "\xFF");
    CapturedOutput captured(STDERR_FILENO);
    TextFile file;
    file.Open(folder.Wide("missing"));
    file.Open(folder.Wide("broken"));
    file.Open(folder.Wide());
    file.Open(L"");
    file.GetNextLine();
    file.GetNextLine();
    file.Write();
    file.Close();
    EXPECT_EQ("", captured.Stop());
}

TEST(TextFile, SplitsEveryShortTextLikeThePlainForm)
{
    const wchar_t alphabet[] = {L'\n', L'\r', L'a', L'\x20AC'};
    const TemporaryFolder folder;
    for (unsigned int length = 0; length <= 5; ++length)
        for (unsigned int number = 0; number < 1U << (2 * length); ++number)
        {
            std::wstring text;
            for (unsigned int i = 0; i < length; ++i)
                text += alphabet[number >> (2 * i) & 3];
            const std::string bytes = Toolkit::UTF8::ToUTF8(text);
            WriteBytes(folder.Path("text"), bytes);
            TextFile file;
            ASSERT_TRUE(file.Open(folder.Wide("text")));
            ASSERT_EQ(ToolkitTest::PlainLines(text), AllLines(file)) << testing::PrintToString(bytes);
        }
}

TEST(TextFile, RandomTextsComeBackAsTheyWere)
{
    std::mt19937 random(20240607);
    const wchar_t alphabet[] = {L'\n', L'\r', L'a', L' ', L'\xE9', L'\x20AC', L'\x1F600', L'\0'};
    const TemporaryFolder folder;
    for (int round = 0; round < 300; ++round)
    {
        std::wstring text(random() % 400, L'\0');
        for (wchar_t& character : text)
            character = alphabet[random() % 7];
        WriteBytes(folder.Path("text"), Toolkit::UTF8::ToUTF8(text));
        TextFile file;
        ASSERT_TRUE(file.Open(folder.Wide("text")));
        ASSERT_EQ(ToolkitTest::PlainLines(text), AllLines(file)) << round;
        ASSERT_TRUE(file.Write());
        ASSERT_EQ(Toolkit::UTF8::ToUTF8(text), ReadBytes(folder.Path("text"))) << round;
    }
}

TEST(TextFile, HoldsAMillionLines)
{
    const unsigned int count = 1000000;
    std::string text;
    for (unsigned int i = 0; i < count; ++i)
        text += std::to_string(i) + (i % 3 == 0 ? "\r\n" : "\n");
    Opened opened(text);
    unsigned int visited = 0;
    unsigned int wrong = 0;
    for (TString<wchar_t> line = opened.m_file.GetFirstLine(); !opened.m_file.Eof();
         line = opened.m_file.GetNextLine())
        wrong += line != std::to_wstring(visited++);
    EXPECT_EQ(0U, wrong);
    EXPECT_EQ(count, visited);
    EXPECT_TRUE(opened.m_file.Write());
    EXPECT_EQ(text, opened.Content());
}

} // namespace
