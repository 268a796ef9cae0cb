// SPDX-License-Identifier: MIT
#include "toolkit/files/FFile.h"

#include <cstdio>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/InChild.h"
#include "tests/support/Resources.h"
#include "tests/support/TemporaryFolder.h"

namespace
{

using Toolkit::FFile;
using Toolkit::TString;
using ToolkitTest::AsNobody;
using ToolkitTest::CapturedOutput;
using ToolkitTest::DescriptorOf;
using ToolkitTest::ReadBytes;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

const std::wstring s_strZero(1, L'\0');

std::string ReadText(FFile& file, unsigned int count)
{
    std::string text(count, '?');
    text.resize(file.Read(text.data(), count));
    return text;
}

TEST(FFile, HasNoFileOpenAtFirst)
{
    const FFile file;
    EXPECT_FALSE(file.IsOpened());
}

TEST(FFile, OpensInTheModesOfTheCLibrary)
{
    struct Row
    {
        const wchar_t* mode;
        bool missing;
        bool existing;
        const char* content;
        long long offset;
    };
    // The content and the offset right after a file that held "abc" was opened.
    const Row rows[] = {
        {L"r", false, true, "abc", 0},  {L"rb", false, true, "abc", 0},  {L"rt", false, true, "abc", 0},
        {L"r+", false, true, "abc", 0}, {L"rb+", false, true, "abc", 0}, {L"r+b", false, true, "abc", 0},
        {L"re", false, true, "abc", 0}, {L"w", true, true, "", 0},       {L"wb", true, true, "", 0},
        {L"w+", true, true, "", 0},     {L"w+b", true, true, "", 0},     {L"wx", true, false, "abc", -1},
        {L"a", true, true, "abc", 3},   {L"ab", true, true, "abc", 3},   {L"a+", true, true, "abc", 0},
        {L"a+b", true, true, "abc", 0},
    };
    for (const Row& row : rows)
    {
        const TemporaryFolder folder;
        WriteBytes(folder.Path("there"), "abc");
        FFile file;
        EXPECT_EQ(row.missing, file.Open(folder.Wide("new"), row.mode)) << row.mode;
        EXPECT_EQ(row.missing, file.IsOpened()) << row.mode;
        EXPECT_EQ(row.existing, file.Open(folder.Wide("there"), row.mode)) << row.mode;
        EXPECT_EQ(row.offset, file.GetOffset()) << row.mode;
        file.Close();
        EXPECT_EQ(row.content, ReadBytes(folder.Path("there"))) << row.mode;
    }
}

TEST(FFile, RefusesWhatIsNoMode)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("there"), "abc");
    const TString<wchar_t> modes[] = {
        L"", L"z", L"R", L"+r", L"rw", L" r", L"r ", L"r,ccs=UTF-8", L"r\x100", s_strZero, L"r" + s_strZero,
    };
    for (const TString<wchar_t>& mode : modes)
    {
        FFile file;
        EXPECT_FALSE(file.Open(folder.Wide("there"), mode)) << mode.c_str();
        EXPECT_FALSE(file.IsOpened()) << mode.c_str();
    }
    EXPECT_EQ("abc", ReadBytes(folder.Path("there")));
}

TEST(FFile, AppendsWhereverItStands)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("there"), "abc");
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("there"), L"a"));
    file.Seek(0, true);
    file.Write(L"d");
    file.Close();
    EXPECT_EQ("abcd", ReadBytes(folder.Path("there")));
}

TEST(FFile, NewFilesHaveThePermissionsThatTheUmaskLeaves)
{
    const TemporaryFolder folder;
    const mode_t before = umask(027);
    FFile file;
    EXPECT_TRUE(file.Open(folder.Wide("new"), L"w"));
    umask(before);
    struct stat status = {};
    ASSERT_EQ(0, stat(folder.Path("new").c_str(), &status));
    EXPECT_EQ(0640U, status.st_mode & 07777);
}

TEST(FFile, ReadsUpToTheCount)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("there"), std::string("ab\0cde", 6));
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("there"), L"rb"));
    EXPECT_EQ(std::string("ab\0c", 4), ReadText(file, 4));
    EXPECT_EQ("", ReadText(file, 0));
    EXPECT_EQ("de", ReadText(file, 100));
    EXPECT_EQ("", ReadText(file, 100));
}

TEST(FFile, ReadsNothingIntoNothing)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("there"), "abc");
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("there"), L"r"));
    EXPECT_EQ(0U, file.Read(nullptr, 3));
    EXPECT_EQ(0, file.GetOffset());
}

TEST(FFile, ReadsNothingFromAFileOpenedForWriting)
{
    const TemporaryFolder folder;
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("new"), L"w"));
    EXPECT_EQ("", ReadText(file, 3));
    EXPECT_TRUE(file.Flush());
    EXPECT_TRUE(file.Close());
}

TEST(FFile, WritesUtf8WithoutAMarkUpToTheFirstZero)
{
    struct Row
    {
        TString<wchar_t> text;
        const char* bytes;
    };
    const Row rows[] = {
        {L"", ""},
        {L"plain\r\n", "plain\r\n"},
        {L"\xE9\x20AC\x1F600", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
        {L"\x7F\x80\x7FF\x800\xFFFF\x10000\x10FFFF",
         "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {L"head" + s_strZero + L"tail", "head"},
        {s_strZero + L"tail", ""},
        {std::wstring(1, static_cast<wchar_t>(0xD800)), ""},
        {L"a" + std::wstring(1, static_cast<wchar_t>(0x110000)), ""},
        {L"a" + s_strZero + std::wstring(1, static_cast<wchar_t>(0xDFFF)), "a"},
        {std::wstring(1, static_cast<wchar_t>(0x80000041)), ""},
    };
    for (const Row& row : rows)
    {
        const TemporaryFolder folder;
        FFile file;
        ASSERT_TRUE(file.Open(folder.Wide("new"), L"w"));
        file.Write(row.text);
        EXPECT_TRUE(file.Close());
        EXPECT_EQ(row.bytes, ReadBytes(folder.Path("new")));
    }
}

TEST(FFile, WritesOneTextAfterTheOther)
{
    const TemporaryFolder folder;
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("new"), L"w"));
    file.Write(L"one ");
    file.Write(TString<wchar_t>(std::wstring(100000, L'x')));
    file.Write(L" two");
    EXPECT_TRUE(file.Flush());
    EXPECT_EQ("one " + std::string(100000, 'x') + " two", ReadBytes(folder.Path("new")));
}

TEST(FFile, FlushBringsTheTextToTheSystem)
{
    const TemporaryFolder folder;
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("new"), L"w"));
    file.Write(L"text");
    EXPECT_EQ("", ReadBytes(folder.Path("new")));
    EXPECT_TRUE(file.Flush());
    EXPECT_EQ("text", ReadBytes(folder.Path("new")));
}

TEST(FFile, TellsOfAFullDiskWhenItIsFlushedOrClosed)
{
    FFile file;
    ASSERT_TRUE(file.Open(L"/dev/full", L"w"));
    file.Write(L"text");
    EXPECT_FALSE(file.Flush());
    EXPECT_FALSE(file.Close());
    EXPECT_FALSE(file.IsOpened());
    EXPECT_TRUE(file.Close());

    ASSERT_TRUE(file.Open(L"/dev/full", L"w"));
    file.Write(L"text");
    EXPECT_FALSE(file.Close());

    ASSERT_TRUE(file.Open(L"/dev/full", L"w"));
    file.Write(TString<wchar_t>(std::wstring(100000, L'x')));
    EXPECT_FALSE(file.Flush());
}

TEST(FFile, TellsThatTextDidNotFitOnTheDisk)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(ToolkitTest::OnSmallDisk(folder.Path(), 16,
                                         [&]
                                         {
                                             FFile file;
                                             if (!file.Open(folder.Wide("new"), L"w"))
                                                 return false;
                                             file.Write(TString<wchar_t>(std::wstring(8192, L'x')));
                                             const bool first = file.Flush();
                                             file.Write(TString<wchar_t>(std::wstring(32768, L'x')));
                                             return first && !file.Flush() && !file.Close();
                                         }));
}

TEST(FFile, TellsThatTextWasLostInAFileOpenedForReading)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("there"), "abc");
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("there"), L"r"));
    file.Write(L"lost");
    EXPECT_FALSE(file.Flush());
    EXPECT_FALSE(file.Close());
    EXPECT_EQ("abc", ReadBytes(folder.Path("there")));
}

TEST(FFile, AnswersEveryQuestionWhenClosed)
{
    FFile file;
    char buffer[1];
    EXPECT_EQ(0U, file.Read(buffer, 1));
    file.Write(L"text");
    EXPECT_FALSE(file.Flush());
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(-1, file.GetLength());
    EXPECT_EQ(-1, file.GetOffset());
    EXPECT_FALSE(file.Seek(0, true));
    EXPECT_FALSE(file.Seek(0, false));
    EXPECT_FALSE(file.SeekEnd(0));
    EXPECT_TRUE(file.IsEOF());
}

TEST(FFile, DestructorWritesAndCloses)
{
    const TemporaryFolder folder;
    {
        FFile file;
        ASSERT_TRUE(file.Open(folder.Wide("new"), L"w"));
        file.Write(L"text");
        EXPECT_NE(-1, DescriptorOf(folder.Path("new")));
    }
    EXPECT_EQ("text", ReadBytes(folder.Path("new")));
    EXPECT_EQ(-1, DescriptorOf(folder.Path("new")));
}

TEST(FFile, SecondOpenClosesTheFirstFile)
{
    const TemporaryFolder folder;
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("first"), L"w"));
    file.Write(L"first");
    ASSERT_TRUE(file.Open(folder.Wide("second"), L"w"));
    EXPECT_EQ("first", ReadBytes(folder.Path("first")));
    EXPECT_EQ(-1, DescriptorOf(folder.Path("first")));
    file.Write(L"second");
    EXPECT_FALSE(file.Open(folder.Wide("missing"), L"r"));
    EXPECT_FALSE(file.IsOpened());
    EXPECT_EQ("second", ReadBytes(folder.Path("second")));
}

TEST(FFile, SameFileOpenedAgainHasWhatWasWritten)
{
    const TemporaryFolder folder;
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("new"), L"w"));
    file.Write(L"text");
    ASSERT_TRUE(file.Open(folder.Wide("new"), L"r"));
    EXPECT_EQ("text", ReadText(file, 10));
}

TEST(FFile, LengthCountsWhatIsStillBuffered)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("there"), "abc");
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("there"), L"r+"));
    EXPECT_EQ(3, file.GetLength());
    file.Write(L"12345");
    EXPECT_EQ(5, file.GetLength());
    EXPECT_EQ(5, file.GetOffset());
}

TEST(FFile, LengthLeavesTheOffsetAndTheEndAlone)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("there"), "abc");
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("there"), L"r"));
    ReadText(file, 10);
    EXPECT_EQ(3, file.GetLength());
    EXPECT_TRUE(file.IsEOF());
    EXPECT_EQ(3, file.GetOffset());
}

TEST(FFile, SeeksFromTheStartFromWhereItStandsAndFromTheEnd)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("there"), "0123456789abcdef");
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("there"), L"rb"));
    EXPECT_TRUE(file.Seek(10, true));
    EXPECT_EQ(10, file.GetOffset());
    EXPECT_TRUE(file.Seek(-2, false));
    EXPECT_EQ(8, file.GetOffset());
    EXPECT_EQ("89", ReadText(file, 2));
    EXPECT_TRUE(file.Seek(1, false));
    EXPECT_EQ("b", ReadText(file, 1));
    EXPECT_TRUE(file.SeekEnd(-3));
    EXPECT_EQ("def", ReadText(file, 10));
    EXPECT_TRUE(file.SeekEnd(0));
    EXPECT_EQ(16, file.GetOffset());
}

TEST(FFile, DoesNotSeekBeforeTheStart)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("there"), "abc");
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("there"), L"rb"));
    ASSERT_TRUE(file.Seek(2, true));
    EXPECT_FALSE(file.Seek(-1, true));
    EXPECT_FALSE(file.Seek(-3, false));
    EXPECT_FALSE(file.SeekEnd(-4));
    EXPECT_EQ(2, file.GetOffset());
}

TEST(FFile, CountsBeyondFourGibibytes)
{
    const TemporaryFolder folder;
    const long long far = 5LL << 30;
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("sparse"), L"w+"));
    EXPECT_TRUE(file.Seek(far, true));
    file.Write(L"end");
    EXPECT_EQ(far + 3, file.GetOffset());
    EXPECT_EQ(far + 3, file.GetLength());
    EXPECT_TRUE(file.Seek(-far, false));
    EXPECT_EQ(3, file.GetOffset());
    EXPECT_TRUE(file.SeekEnd(-3));
    EXPECT_EQ(far, file.GetOffset());
    EXPECT_EQ("end", ReadText(file, 10));
}

TEST(FFile, EndIsMetByReadingBeyondIt)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("there"), "abc");
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("there"), L"r"));
    EXPECT_FALSE(file.IsEOF());
    ReadText(file, 3);
    EXPECT_FALSE(file.IsEOF());
    ReadText(file, 1);
    EXPECT_TRUE(file.IsEOF());
    file.Seek(0, true);
    EXPECT_FALSE(file.IsEOF());
}

TEST(FFile, OnlyARegularFileExists)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "");
    WriteBytes(folder.Path("\xE6\x97\xA5"), "");
    std::filesystem::create_symlink("file", folder.Path("link"));
    std::filesystem::create_symlink("nowhere", folder.Path("dangling"));
    ASSERT_EQ(0, mkfifo(folder.Path("fifo").c_str(), 0600));
    EXPECT_TRUE(FFile::Exists(folder.Wide("file")));
    EXPECT_TRUE(FFile::Exists(folder.Wide("link")));
    EXPECT_TRUE(FFile::Exists(folder.Wide() + L"/\x65E5"));
    EXPECT_FALSE(FFile::Exists(folder.Wide()));
    EXPECT_FALSE(FFile::Exists(folder.Wide("dangling")));
    EXPECT_FALSE(FFile::Exists(folder.Wide("fifo")));
    EXPECT_FALSE(FFile::Exists(L"/dev/null"));
    EXPECT_FALSE(FFile::Exists(folder.Wide("missing")));
    EXPECT_FALSE(FFile::Exists(L""));
    EXPECT_FALSE(FFile::Exists(folder.Wide("file") + s_strZero + L"x"));
    EXPECT_FALSE(FFile::Exists(folder.Wide("file") + static_cast<wchar_t>(0xD800)));
}

TEST(FFile, OpensNamesBeyondAsciiWhateverTheLocale)
{
    const TemporaryFolder folder;
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide() + L"/\xE9\x65E5\x1F600", L"w"));
    file.Write(L"text");
    file.Close();
    EXPECT_EQ("text", ReadBytes(folder.Path("\xC3\xA9\xE6\x97\xA5\xF0\x9F\x98\x80")));
}

TEST(FFile, OpensNoPathThatNamesNothing)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("there"), "abc");
    const TString<wchar_t> paths[] = {
        L"",
        s_strZero,
        folder.Wide("there") + s_strZero,
        folder.Wide("there") + s_strZero + L"x",
        folder.Wide("there") + static_cast<wchar_t>(0xD800),
        folder.Wide("there") + L"/",
        folder.Wide("there") + L"/below",
        folder.Wide("missing/new"),
        TString<wchar_t>(std::wstring(5000, L'x')),
    };
    for (const TString<wchar_t>& path : paths)
        for (const wchar_t* mode : {L"r", L"w", L"a"})
        {
            FFile file;
            EXPECT_FALSE(file.Open(path, mode)) << path.c_str() << mode;
        }
    EXPECT_EQ("abc", ReadBytes(folder.Path("there")));
}

TEST(FFile, DoesNotOpenAFolder)
{
    const TemporaryFolder folder;
    for (const wchar_t* mode : {L"r", L"rb", L"r+", L"w", L"w+", L"a", L"a+"})
    {
        FFile file;
        EXPECT_FALSE(file.Open(folder.Wide(), mode)) << mode;
    }
    EXPECT_EQ(-1, DescriptorOf(folder.Path()));
}

TEST(FFile, DoesNotWaitForTheOtherEndOfAFifo)
{
    const TemporaryFolder folder;
    ASSERT_EQ(0, mkfifo(folder.Path("fifo").c_str(), 0600));
    for (const wchar_t* mode : {L"r", L"r+", L"w", L"w+", L"a", L"a+"})
    {
        FFile file;
        EXPECT_FALSE(file.Open(folder.Wide("fifo"), mode)) << mode;
    }
    EXPECT_EQ(-1, DescriptorOf(folder.Path("fifo")));
}

TEST(FFile, DoesNotWaitForWhatMayNeverCome)
{
    char bytes[4096];
    FFile messages;
    if (messages.Open(L"/proc/kmsg", L"r"))
        while (messages.Read(bytes, sizeof bytes) > 0)
            continue;
    FFile terminal;
    for (const wchar_t* const mode : {L"r", L"w", L"r+"})
        EXPECT_FALSE(terminal.Open(L"/dev/ptmx", mode)) << mode;
}

TEST(FFile, WritesToAFifoThatIsRead)
{
    const TemporaryFolder folder;
    ASSERT_EQ(0, mkfifo(folder.Path("fifo").c_str(), 0600));
    const int reader = open(folder.Path("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    FFile file;
    EXPECT_TRUE(file.Open(folder.Wide("fifo"), L"w"));
    file.Write(L"text");
    EXPECT_TRUE(file.Flush());
    char buffer[8] = {};
    EXPECT_EQ(4, read(reader, buffer, sizeof buffer));
    EXPECT_STREQ("text", buffer);
    EXPECT_FALSE(file.Seek(0, true));
    EXPECT_EQ(-1, file.GetOffset());
    close(reader);
}

TEST(FFile, DescriptorWaitsAndIsClosedOnExec)
{
    const TemporaryFolder folder;
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("new"), L"w"));
    const int descriptor = DescriptorOf(folder.Path("new"));
    ASSERT_NE(-1, descriptor);
    EXPECT_EQ(FD_CLOEXEC, fcntl(descriptor, F_GETFD) & FD_CLOEXEC);
    EXPECT_EQ(0, fcntl(descriptor, F_GETFL) & O_NONBLOCK);
}

TEST(FFile, AttachTakesTheStreamOver)
{
    const TemporaryFolder folder;
    {
        FFile file;
        ASSERT_TRUE(file.Open(folder.Wide("first"), L"w"));
        file.Write(L"first");
        std::FILE* const stream = std::fopen(folder.Path("second").c_str(), "we");
        ASSERT_NE(nullptr, stream);
        file.Attach(stream);
        EXPECT_EQ("first", ReadBytes(folder.Path("first")));
        file.Attach(stream);
        EXPECT_TRUE(file.IsOpened());
        file.Write(L"second");
    }
    EXPECT_EQ("second", ReadBytes(folder.Path("second")));
    EXPECT_EQ(-1, DescriptorOf(folder.Path("second")));
}

namespace
{

// A file whose texts are to reach the system at once.
void OpenUnbuffered(FFile& file, const std::string& path, const char* mode)
{
    std::FILE* const stream = std::fopen(path.c_str(), mode);
    ASSERT_NE(nullptr, stream);
    std::setvbuf(stream, nullptr, _IONBF, 0);
    file.Attach(stream);
}

} // namespace

TEST(FFile, UnbufferedTextReachesTheSystemAtOnce)
{
    const TemporaryFolder folder;
    FFile file;
    OpenUnbuffered(file, folder.Path("new"), "w+");
    file.Write(L"one ");
    EXPECT_EQ("one ", ReadBytes(folder.Path("new")));
    file.Write(L"\u00E4");
    EXPECT_EQ("one \xC3\xA4", ReadBytes(folder.Path("new")));
    EXPECT_EQ(6, file.GetOffset());
    EXPECT_EQ(6, file.GetLength());
    EXPECT_TRUE(file.Flush());

    EXPECT_TRUE(file.Seek(0, true));
    EXPECT_EQ(0, file.GetOffset());
    file.Write(L"two");
    EXPECT_EQ(3, file.GetOffset());
    EXPECT_TRUE(file.Seek(1, false));
    EXPECT_EQ(4, file.GetOffset());
    EXPECT_TRUE(file.SeekEnd(-2));
    char bytes[8] = {};
    EXPECT_EQ(2U, file.Read(bytes, sizeof bytes));
    EXPECT_STREQ("\xC3\xA4", bytes);
    file.Write(L"end");
    EXPECT_TRUE(file.Close());
    EXPECT_EQ("two \xC3\xA4"
              "end",
              ReadBytes(folder.Path("new")));
}

TEST(FFile, UnbufferedTextThatIsLostIsToldUntilTheFileIsClosed)
{
    const TemporaryFolder folder;
    FFile file;
    OpenUnbuffered(file, "/dev/full", "w");
    EXPECT_TRUE(file.Flush());
    file.Write(L"text");
    EXPECT_FALSE(file.Flush());
    EXPECT_FALSE(file.Close());
    EXPECT_FALSE(file.Flush());
    EXPECT_TRUE(file.Close());

    OpenUnbuffered(file, folder.Path("new"), "w");
    file.Write(L"text");
    EXPECT_TRUE(file.Flush());
    EXPECT_TRUE(file.Close());
}

TEST(FFile, UnbufferedTextThatDoesNotFitIsWrittenAsFarAsItDoes)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(ToolkitTest::OnSmallDisk(folder.Path(), 16,
                                         [&]
                                         {
                                             FFile file;
                                             OpenUnbuffered(file, folder.Path("new"), "w");
                                             file.Write(TString<wchar_t>(std::wstring(32768, L'x')));
                                             const long long length = file.GetLength();
                                             return length > 0 && length < 32768 && !file.Flush() &&
                                                    !file.Close();
                                         }));
}

TEST(FFile, AttachedNothingIsClosed)
{
    const TemporaryFolder folder;
    FFile file;
    ASSERT_TRUE(file.Open(folder.Wide("new"), L"w"));
    file.Write(L"text");
    file.Attach(nullptr);
    EXPECT_FALSE(file.IsOpened());
    EXPECT_EQ("text", ReadBytes(folder.Path("new")));
}

TEST(FFile, StreamWithoutADescriptorHasNoLength)
{
    char memory[16];
    FFile file;
    file.Attach(fmemopen(memory, sizeof memory, "w+"));
    ASSERT_TRUE(file.IsOpened());
    file.Write(L"text");
    EXPECT_EQ(-1, file.GetLength());
    EXPECT_TRUE(file.Flush());
    EXPECT_STREQ("text", memory);
}

TEST(FFile, OpensOnlyWhatTheUserMay)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("secret"), "abc");
    WriteBytes(folder.Path("public"), "abc");
    ASSERT_EQ(0, chmod(folder.Path("secret").c_str(), 0));
    ASSERT_EQ(0, chmod(folder.Path("public").c_str(), 0444));
    ASSERT_EQ(0, chmod(folder.Path().c_str(), 0555));
    EXPECT_TRUE(AsNobody(
        [&]
        {
            FFile file;
            return geteuid() != 0 && file.Open(folder.Wide("public"), L"r") &&
                   !file.Open(folder.Wide("public"), L"w") && !file.Open(folder.Wide("public"), L"r+") &&
                   !file.Open(folder.Wide("secret"), L"r") && !file.Open(folder.Wide("new"), L"w");
        }));
    ASSERT_EQ(0, chmod(folder.Path().c_str(), 0755));
    EXPECT_EQ("abc", ReadBytes(folder.Path("public")));
}

TEST(FFile, SaysNothing)
{
    const TemporaryFolder folder;
    CapturedOutput captured(STDERR_FILENO);
    FFile file;
    file.Open(folder.Wide("missing"), L"r");
    file.Open(folder.Wide(), L"w");
    file.Open(folder.Wide("missing"), L"?");
    file.Read(nullptr, 1);
    file.Write(L"text");
    file.Flush();
    file.Seek(-1, true);
    file.Open(L"/dev/full", L"w");
    file.Write(L"text");
    file.Flush();
    file.SeekEnd(-1);
    file.Close();
    EXPECT_EQ("", captured.Stop());
}

} // namespace
