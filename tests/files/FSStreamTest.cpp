// SPDX-License-Identifier: MIT
#include "toolkit/files/FSStream.h"

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "tests/reference/PlainStream.h"
#include "tests/support/InChild.h"
#include "tests/support/Resources.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/encoding/UTF8.h"

using Toolkit::FSStream;
using Toolkit::StreamResult;
using Toolkit::TString;
using ToolkitTest::CapturedOutput;
using ToolkitTest::PlainStream;
using ToolkitTest::ReadBytes;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

namespace
{

static_assert(!std::is_copy_constructible_v<FSStream> && !std::is_copy_assignable_v<FSStream>);
static_assert(FSStream::ModeRead == 0 && FSStream::ModeWrite == 1 && FSStream::ModeReadWrite == 2 &&
              FSStream::ModeAppend == 3 && FSStream::ModeCreate == 4);

std::string Value(unsigned int value)
{
    std::string bytes(4, '\0');
    std::memcpy(bytes.data(), &value, 4);
    return bytes;
}

std::string Characters(const std::wstring& text)
{
    std::string bytes;
    for (const wchar_t character : text)
        bytes += Value(static_cast<unsigned int>(character));
    return bytes;
}

// A file with the given bytes and a stream that reads it.
class Input
{
public:
    explicit Input(const std::string& bytes) : stream(Made(bytes), FSStream::ModeRead) {}

private:
    TString<wchar_t> Made(const std::string& bytes)
    {
        WriteBytes(m_folder.Path("file"), bytes);
        return m_folder.Wide("file");
    }

    TemporaryFolder m_folder;

public:
    FSStream stream;
};

bool IsOpen(FSStream& stream)
{
    char nothing = 0;
    return stream.Read(&nothing, 0) != StreamResult::NotOpen;
}

// A value, a text or a block ('v', 't', 'b') of a length, and what a stream answers and hands out that reads
// it.
struct Item
{
    std::string Bytes() const
    {
        if (kind == 'v')
            return Value(length);
        return kind == 't' ? Value(4 * length) + Characters(std::wstring(length, L'x'))
                           : std::string(length, 'b');
    }

    std::string Read(Toolkit::IStream& stream) const
    {
        unsigned int value = 7;
        TString<wchar_t> text(L"old");
        std::string block(length, ' ');
        const StreamResult result = kind == 'v'   ? stream.Read(value)
                                    : kind == 't' ? stream.Read(text)
                                                  : stream.Read(block.data(), length);
        return Value(result) + Value(value) + Characters(text) + block;
    }

    char kind;
    unsigned int length;
};

// Fails its write of a value, or its read of one.
class FailingValues : public FSStream
{
public:
    using FSStream::FSStream;
    using FSStream::Read;
    using FSStream::Write;
    StreamResult Write(unsigned int) override { return StreamResult::Failed; }
    StreamResult Read(unsigned int&) override { return StreamResult::ShortTransfer; }
};

// The environment of a child process: a file of the system's own that tells no size.
class ChildEnvironment
{
public:
    explicit ChildEnvironment(const std::vector<std::string>& strings)
    {
        if (pipe2(m_input, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
        std::vector<char*> environment;
        std::size_t size = 0;
        for (const std::string& text : strings)
        {
            environment.push_back(const_cast<char*>(text.c_str()));
            size += text.size() + 1;
        }
        environment.push_back(nullptr);
        m_child = fork();
        if (m_child == 0)
        {
            char* const arguments[] = {const_cast<char*>("cat"), nullptr};
            dup2(m_input[0], 0);
            execve("/bin/cat", arguments, environment.data());
            _exit(1);
        }
        // Until the child has taken on its new environment.
        while (Bytes().size() != size)
            usleep(1000);
    }

    ~ChildEnvironment()
    {
        close(m_input[0]);
        close(m_input[1]);
        waitpid(m_child, nullptr, 0);
    }

    ChildEnvironment(const ChildEnvironment&) = delete;
    ChildEnvironment& operator=(const ChildEnvironment&) = delete;

    std::string Path() const { return "/proc/" + std::to_string(m_child) + "/environ"; }
    TString<wchar_t> Wide() const { return Toolkit::UTF8::ToUNICODE(Path()); }
    std::string Bytes() const { return ReadBytes(Path()); }

private:
    int m_input[2] = {-1, -1};
    pid_t m_child = -1;
};

// A terminal whose reader gets the bytes as they are typed.
class Terminal
{
public:
    Terminal() : m_iMaster(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        termios settings;
        if (m_iMaster < 0 || grantpt(m_iMaster) != 0 || unlockpt(m_iMaster) != 0 ||
            tcgetattr(m_iMaster, &settings) != 0)
            throw std::runtime_error("no terminal");
        cfmakeraw(&settings);
        tcsetattr(m_iMaster, TCSANOW, &settings);
    }
    ~Terminal() { close(m_iMaster); }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    TString<wchar_t> Wide() const { return Toolkit::UTF8::ToUNICODE(ptsname(m_iMaster)); }
    void Type(const std::string& text)
    {
        ASSERT_EQ(write(m_iMaster, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

private:
    const int m_iMaster;
};

// Takes a signal without a restart of what it interrupts.
class SignalHandler
{
public:
    explicit SignalHandler(int number) : m_iNumber(number)
    {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        sigaction(number, &action, &m_before);
    }
    ~SignalHandler() { sigaction(m_iNumber, &m_before, nullptr); }
    SignalHandler(const SignalHandler&) = delete;
    SignalHandler& operator=(const SignalHandler&) = delete;

private:
    const int m_iNumber;
    struct sigaction m_before = {};
};

long PeakKilobytes()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

TEST(FSStream, WritesAValueInHostOrder)
{
    const TemporaryFolder folder;
    {
        FSStream stream(folder.Wide("file"), FSStream::ModeWrite);
        EXPECT_EQ(stream.Write(0x01020304U), StreamResult::Ok);
    }
    EXPECT_EQ(ReadBytes(folder.Path("file")), Value(0x01020304U));
}

TEST(FSStream, WritesAStringAsByteCountAndCharacters)
{
    const TemporaryFolder folder;
    {
        FSStream stream(folder.Wide("file"), FSStream::ModeWrite);
        EXPECT_EQ(stream.Write(TString<wchar_t>(L"a\u00E9\U0001F600")), StreamResult::Ok);
    }
    const std::string bytes = ReadBytes(folder.Path("file"));
    EXPECT_EQ(bytes, Value(12) + Value('a') + Value(0xE9) + Value(0x1F600));
    EXPECT_EQ(bytes.size(), 16U);
}

TEST(FSStream, WritesABlockWithoutACount)
{
    const TemporaryFolder folder;
    {
        FSStream stream(folder.Wide("file"), FSStream::ModeWrite);
        EXPECT_EQ(stream.Write("a\0b", 3), StreamResult::Ok);
        EXPECT_EQ(stream.Write(nullptr, 0), StreamResult::Ok);
    }
    EXPECT_EQ(ReadBytes(folder.Path("file")), std::string("a\0b", 3));
}

TEST(FSStream, EmptyStringIsItsCountAlone)
{
    const TemporaryFolder folder;
    FSStream stream(folder.Wide("file"), FSStream::ModeWrite);
    EXPECT_EQ(static_cast<unsigned int>(stream.Write(TString<wchar_t>())), 0x01000000U);
    EXPECT_EQ(ReadBytes(folder.Path("file")), std::string(4, '\0'));
}

TEST(FSStream, WritesAnEmbeddedZeroAndReadsTheStringCutThere)
{
    const TemporaryFolder folder;
    const TString<wchar_t> text(std::wstring(L"ab\0cd", 5));
    {
        FSStream stream(folder.Wide("file"), FSStream::ModeWrite);
        EXPECT_EQ(stream.Write(text), StreamResult::Ok);
        EXPECT_EQ(stream.Write(7U), StreamResult::Ok);
    }
    FSStream stream(folder.Wide("file"), FSStream::ModeRead);
    TString<wchar_t> read(L"old");
    unsigned int value = 0;
    EXPECT_EQ(stream.Length(), 28U);
    EXPECT_EQ(stream.Read(read), StreamResult::Ok);
    EXPECT_EQ(read, L"ab");
    EXPECT_EQ(stream.Read(value), StreamResult::Ok);
    EXPECT_EQ(value, 7U);
}

TEST(FSStream, StringWhoseCountDoesNotFitWritesNothing)
{
    const TemporaryFolder folder;
    FSStream stream(folder.Wide("file"), FSStream::ModeWrite);
    // 4 GiB of text would be too much for a test: the string is told that it is longer than it is.
    TString<wchar_t> text(L"abc");
    const std::size_t real = text.size();
    const std::size_t forged = std::size_t{1} << 30;
    char* const length = reinterpret_cast<char*>(&text) + sizeof(void*);
    std::memcpy(length, &forged, sizeof forged);
    ASSERT_EQ(text.size(), forged);
    const StreamResult result = stream.Write(text);
    std::memcpy(length, &real, sizeof real);
    EXPECT_EQ(result, StreamResult::LengthWriteFailed);
    EXPECT_EQ(stream.Length(), 0U);
}

TEST(FSStream, FailedCountOfAStringWritesNothingMore)
{
    const TemporaryFolder folder;
    FailingValues stream(folder.Wide("file"), FSStream::ModeWrite);
    EXPECT_EQ(stream.Write(TString<wchar_t>(L"abc")), StreamResult::LengthWriteFailed);
    EXPECT_EQ(stream.Write(TString<wchar_t>()), StreamResult::LengthWriteFailed);
    EXPECT_EQ(stream.Length(), 0U);
}

TEST(FSStream, CountOfAStringIsReadThroughTheVirtualOperation)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), Value(4) + Value('a'));
    FailingValues stream(folder.Wide("file"), FSStream::ModeRead);
    TString<wchar_t> text(L"old");
    EXPECT_EQ(stream.Read(text), StreamResult::LengthReadFailed);
    EXPECT_EQ(text, L"old");
}

TEST(FSStream, FullDiskFailsEachWriteWithItsOwnCode)
{
    FSStream stream(L"/dev/full", FSStream::ModeWrite);
    EXPECT_EQ(stream.Write(1U), StreamResult::Failed);
    EXPECT_EQ(stream.Write("abc", 3), StreamResult::ShortTransfer);
    EXPECT_EQ(stream.Write(TString<wchar_t>(L"abc")), StreamResult::LengthWriteFailed);
    EXPECT_EQ(stream.Write(TString<wchar_t>()), StreamResult::LengthWriteFailed);
}

TEST(FSStream, DiskThatFillsUpLeavesWhatFitted)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(ToolkitTest::InChild(
        [&]
        {
            signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{10, 10};
            setrlimit(RLIMIT_FSIZE, &limit);
            FSStream stream(folder.Wide("file"), FSStream::ModeWrite);
            return stream.Write(TString<wchar_t>(L"abc")) == StreamResult::ShortTransfer &&
                   stream.Write(1U) == StreamResult::Failed;
        }));
    EXPECT_EQ(ReadBytes(folder.Path("file")), (Value(12) + Characters(L"abc")).substr(0, 10));
}

TEST(FSStream, ReadsItemsInTheirOrder)
{
    Input input(Value(7) + Value(8) + Characters(L"a\u20AC") + "xyz" + Value(9));
    unsigned int value = 0;
    TString<wchar_t> text;
    char block[4] = "";
    EXPECT_EQ(input.stream.Read(value), StreamResult::Ok);
    EXPECT_EQ(value, 7U);
    EXPECT_EQ(input.stream.Read(text), StreamResult::Ok);
    EXPECT_EQ(text, L"a\u20AC");
    EXPECT_EQ(input.stream.Read(block, 3), StreamResult::Ok);
    EXPECT_STREQ(block, "xyz");
    EXPECT_EQ(input.stream.Read(value), StreamResult::Ok);
    EXPECT_EQ(value, 9U);
}

TEST(FSStream, CountOfZeroLeavesTheStringAsItWas)
{
    Input input(Value(0) + Value(5));
    TString<wchar_t> text(L"old");
    unsigned int value = 0;
    EXPECT_EQ(static_cast<unsigned int>(input.stream.Read(text)), 0x01000000U);
    EXPECT_EQ(text, L"old");
    EXPECT_EQ(input.stream.Read(value), StreamResult::Ok);
    EXPECT_EQ(value, 5U);
}

TEST(FSStream, StringAtTheEndOfTheFileHasNoCount)
{
    for (const char* const bytes : {"", "a", "abc"})
    {
        Input input(bytes);
        TString<wchar_t> text(L"old");
        EXPECT_EQ(static_cast<unsigned int>(input.stream.Read(text)), 0x10000006U);
        EXPECT_EQ(text, L"old");
    }
}

TEST(FSStream, CountBeyondTheFileLeavesTheStringAsItWas)
{
    for (const unsigned int count : {5U, 8U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFCU, 0xFFFFFFFFU})
    {
        Input input(Value(count) + Characters(L"a"));
        TString<wchar_t> text(L"old");
        EXPECT_EQ(static_cast<unsigned int>(input.stream.Read(text)), 0x10000003U) << count;
        EXPECT_EQ(text, L"old");
        EXPECT_EQ(input.stream.Read(text), StreamResult::LengthReadFailed) << count;
    }
}

TEST(FSStream, ForgedCountCostsNoMemory)
{
    Input input(Value(0xFFFFFFFCU) + "little");
    TString<wchar_t> text;
    const long before = PeakKilobytes();
    EXPECT_EQ(input.stream.Read(text), StreamResult::ShortTransfer);
    EXPECT_LT(PeakKilobytes() - before, 16 * 1024);
}

TEST(FSStream, ForgedCountOfAFileOfUnknownLengthCostsNoMemory)
{
    // A count of about 1.1 GB.
    const ChildEnvironment environment({"ABCDEFGH"});
    const long before = PeakKilobytes();
    TString<wchar_t> text(L"old");
    FSStream stream(environment.Wide(), FSStream::ModeRead);
    EXPECT_EQ(stream.Read(text), StreamResult::ShortTransfer);
    EXPECT_EQ(text, L"old");
    EXPECT_EQ(stream.Length(), 0U);
    EXPECT_LT(PeakKilobytes() - before, 16 * 1024);
}

TEST(FSStream, LongStringOfAFileOfUnknownLengthArrivesWhole)
{
    // The bytes 04 00 11 00 are a count of more than one slice.
    std::vector<std::string> strings(14, std::string(100000, 'x'));
    strings[0] = "\x04";
    strings[1] = "\x11";
    const ChildEnvironment environment(strings);
    TString<wchar_t> text;
    FSStream stream(environment.Wide(), FSStream::ModeRead);
    EXPECT_EQ(stream.Read(text), StreamResult::Ok);
    EXPECT_EQ(text.size(), 0x110004U / 4);
    EXPECT_TRUE(Characters(text) == environment.Bytes().substr(4, 0x110004));
    char rest = 0;
    EXPECT_EQ(stream.Read(&rest, 1), StreamResult::Ok);
    EXPECT_EQ(rest, environment.Bytes()[4 + 0x110004]);
}

TEST(FSStream, DevicesAreRead)
{
    FSStream stream(L"/dev/zero", FSStream::ModeRead);
    TString<wchar_t> text(L"old");
    unsigned int value = 1;
    EXPECT_EQ(stream.Read(text), StreamResult::Empty);
    EXPECT_EQ(stream.Read(value), StreamResult::Ok);
    EXPECT_EQ(value, 0U);
    EXPECT_EQ(stream.Length(), 0U);
}

TEST(FSStream, InterruptedAndShortReadsAreContinued)
{
    Terminal terminal;
    const SignalHandler handler(SIGUSR1);
    FSStream stream(terminal.Wide(), FSStream::ModeRead);
    char block[9] = "";
    StreamResult result = StreamResult::NotOpen;
    std::thread reader([&] { result = stream.Read(block, 8); });
    for (const char* const part : {"abc", "d", "efgh"})
    {
        pthread_kill(reader.native_handle(), SIGUSR1);
        terminal.Type(part);
        pthread_kill(reader.native_handle(), SIGUSR1);
    }
    reader.join();
    EXPECT_EQ(result, StreamResult::Ok);
    EXPECT_STREQ(block, "abcdefgh");
}

TEST(FSStream, CountThatIsNoMultipleOfFourGivesTheWholeCharacters)
{
    for (unsigned int extra = 1; extra < 4; ++extra)
    {
        Input input(Value(8 + extra) + Characters(L"ab") + std::string(extra, '\xFF') + Value(77));
        TString<wchar_t> text(L"old");
        unsigned int value = 0;
        EXPECT_EQ(input.stream.Read(text), StreamResult::Ok);
        EXPECT_EQ(text, L"ab");
        EXPECT_EQ(input.stream.Read(value), StreamResult::Ok);
        EXPECT_EQ(value, 77U);
    }
}

TEST(FSStream, CountBelowFourGivesAnEmptyString)
{
    for (unsigned int count = 1; count < 4; ++count)
    {
        Input input(Value(count) + std::string(count, 'x') + Value(77));
        TString<wchar_t> text(L"old");
        unsigned int value = 0;
        EXPECT_EQ(input.stream.Read(text), StreamResult::Ok);
        EXPECT_EQ(text, L"");
        EXPECT_EQ(input.stream.Read(value), StreamResult::Ok);
        EXPECT_EQ(value, 77U);
    }
}

TEST(FSStream, StringThatBeginsWithAZeroIsEmpty)
{
    Input input(Value(8) + Value(0) + Value('a'));
    TString<wchar_t> text(L"old");
    EXPECT_EQ(input.stream.Read(text), StreamResult::Ok);
    EXPECT_EQ(text, L"");
}

TEST(FSStream, ShortValueIsAShortTransferAndLeavesTheValue)
{
    Input input("abc");
    unsigned int value = 77;
    EXPECT_EQ(input.stream.Read(value), StreamResult::ShortTransfer);
    EXPECT_EQ(value, 77U);
}

TEST(FSStream, ShortBlockKeepsTheBytesThatWereThere)
{
    Input input("ab");
    char block[5] = "wxyz";
    EXPECT_EQ(input.stream.Read(block, 4), StreamResult::ShortTransfer);
    EXPECT_STREQ(block, "abyz");
    EXPECT_EQ(input.stream.Read(block, 0), StreamResult::Ok);
}

TEST(FSStream, ReadsAnyBytesAsThePlainStream)
{
    std::mt19937 random(6);
    for (int i = 0; i < 1000; ++i)
    {
        std::string bytes;
        for (std::size_t item = random() % 4; item > 0; --item)
            bytes += Value(static_cast<unsigned int>(random() % 24)) +
                     std::string(random() % 24, static_cast<char>(random() % 3));
        Input input(bytes);
        PlainStream plain(bytes);
        for (int operation = 0; operation < 5; ++operation)
        {
            TString<wchar_t> text(L"old");
            TString<wchar_t> expected(L"old");
            char block[8] = "";
            char plainBlock[8] = "";
            const unsigned int size = static_cast<unsigned int>(random() % 8);
            const bool block8 = random() % 3 == 0;
            ASSERT_EQ(block8 ? input.stream.Read(block, size) : input.stream.Read(text),
                      block8 ? plain.Read(plainBlock, size) : plain.Read(expected));
            ASSERT_EQ(text, expected);
            ASSERT_EQ(std::memcmp(block, plainBlock, sizeof block), 0);
        }
    }
}

TEST(FSStream, ReadsLongFilesAsThePlainStream)
{
    std::mt19937 random(7);
    for (int i = 0; i < 300; ++i)
    {
        const std::size_t most = i % 2 == 0 ? 20 : 6000;
        std::string bytes;
        std::vector<Item> items;
        while (bytes.size() < 20000)
        {
            items.push_back({"vtb"[random() % 3], static_cast<unsigned int>(random() % most)});
            bytes += items.back().Bytes();
        }
        // Some items are not what is there, and the last ones may be cut short.
        for (Item& item : items)
            if (random() % 200 == 0)
                item = {"vtb"[random() % 3], static_cast<unsigned int>(random() % most)};
        bytes.resize(bytes.size() - random() % 4);
        Input input(bytes);
        PlainStream plain(bytes);
        for (const Item& item : items)
            ASSERT_EQ(item.Read(input.stream), item.Read(plain)) << item.kind << item.length;
    }
}

TEST(FSStream, ReadsWhatIsAppendedAfterTheEndWasMet)
{
    const TemporaryFolder folder;
    FSStream writer(folder.Wide("file"), FSStream::ModeWrite);
    ASSERT_EQ(writer.Write(1U), StreamResult::Ok);
    ASSERT_EQ(writer.Write("ab", 2), StreamResult::Ok);
    FSStream reader(folder.Wide("file"), FSStream::ModeRead);
    unsigned int value = 0;
    EXPECT_EQ(reader.Read(value), StreamResult::Ok);
    EXPECT_EQ(reader.Read(value), StreamResult::ShortTransfer);
    EXPECT_EQ(value, 1U);
    for (unsigned int next = 2; next < 2000; ++next)
    {
        ASSERT_EQ(writer.Write(next), StreamResult::Ok);
        ASSERT_EQ(reader.Read(value), StreamResult::Ok);
        ASSERT_EQ(value, next);
    }
    TString<wchar_t> text;
    EXPECT_EQ(writer.Write(TString<wchar_t>(std::wstring(5000, L'x'))), StreamResult::Ok);
    EXPECT_EQ(reader.Read(text), StreamResult::Ok);
    EXPECT_EQ(text, std::wstring(5000, L'x'));
}

TEST(FSStream, SeesWhatAnotherWriterChangesBetweenTwoReads)
{
    const TemporaryFolder folder;
    for (const FSStream::OpenMode mode : {FSStream::ModeRead, FSStream::ModeReadWrite})
    {
        WriteBytes(folder.Path("file"), Value(1) + Value(2) + Value(4) + Characters(L"a") + "old!");
        FSStream reader(folder.Wide("file"), mode);
        unsigned int value = 0;
        EXPECT_EQ(reader.Read(value), StreamResult::Ok);
        WriteBytes(folder.Path("file"), Value(7) + Value(8) + Value(4) + Characters(L"b") + "new!");
        EXPECT_EQ(reader.Read(value), StreamResult::Ok);
        EXPECT_EQ(value, 8U);
        TString<wchar_t> text;
        EXPECT_EQ(reader.Read(text), StreamResult::Ok);
        EXPECT_EQ(text, L"b");
        char block[5] = "";
        EXPECT_EQ(reader.Read(block, 4), StreamResult::Ok);
        EXPECT_STREQ(block, "new!");
    }
}

TEST(FSStream, DoesNotReadWhatWasCutOff)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), Value(1) + Value(2));
    FSStream reader(folder.Wide("file"), FSStream::ModeRead);
    unsigned int value = 0;
    EXPECT_EQ(reader.Read(value), StreamResult::Ok);
    ASSERT_EQ(truncate(folder.Path("file").c_str(), 4), 0);
    EXPECT_EQ(reader.Read(value), StreamResult::ShortTransfer);
    EXPECT_EQ(value, 1U);
}

TEST(FSStream, ReadsNothingThatWasNotAskedFor)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), Value(1) + Value(4) + Characters(L"a") + std::string(100, 'x'));
    FSStream reader(folder.Wide("file"), FSStream::ModeRead);
    const int descriptor = ToolkitTest::DescriptorOf(folder.Path("file"));
    unsigned int value = 0;
    EXPECT_EQ(reader.Read(value), StreamResult::Ok);
    EXPECT_EQ(lseek(descriptor, 0, SEEK_CUR), 4);
    TString<wchar_t> text;
    EXPECT_EQ(reader.Read(text), StreamResult::Ok);
    EXPECT_EQ(lseek(descriptor, 0, SEEK_CUR), 12);
    char block[7];
    EXPECT_EQ(reader.Read(block, 7), StreamResult::Ok);
    EXPECT_EQ(lseek(descriptor, 0, SEEK_CUR), 19);
}

TEST(FSStream, StreamThatIsNotOpenAnswersNotOpenToEverything)
{
    const TemporaryFolder folder;
    FSStream stream(folder.Wide("missing"), FSStream::ModeRead);
    TString<wchar_t> text(L"old");
    unsigned int value = 77;
    char block[4] = "abc";
    EXPECT_EQ(stream.Write(TString<wchar_t>(L"a")), StreamResult::NotOpen);
    EXPECT_EQ(stream.Write(TString<wchar_t>()), StreamResult::NotOpen);
    EXPECT_EQ(stream.Write(1U), StreamResult::NotOpen);
    EXPECT_EQ(stream.Write("a", 1), StreamResult::NotOpen);
    EXPECT_EQ(stream.Read(text), StreamResult::NotOpen);
    EXPECT_EQ(stream.Read(value), StreamResult::NotOpen);
    EXPECT_EQ(stream.Read(block, 3), StreamResult::NotOpen);
    EXPECT_EQ(stream.Length(), 0U);
    EXPECT_EQ(text, L"old");
    EXPECT_EQ(value, 77U);
    EXPECT_STREQ(block, "abc");
}

TEST(FSStream, FailuresAreSilent)
{
    const TemporaryFolder folder;
    CapturedOutput output(2);
    {
        FSStream missing(folder.Wide("missing"), FSStream::ModeRead);
        FSStream folderStream(folder.Wide(), FSStream::ModeWrite);
        FSStream writer(folder.Wide("file"), FSStream::ModeWrite);
        unsigned int value = 0;
        EXPECT_EQ(writer.Read(value), StreamResult::ShortTransfer);
        EXPECT_EQ(writer.Read(nullptr, 4), StreamResult::ShortTransfer);
        FSStream reader(folder.Wide("file"), FSStream::ModeRead);
        EXPECT_EQ(reader.Write(1U), StreamResult::Failed);
        FSStream full(L"/dev/full", FSStream::ModeWrite);
        EXPECT_EQ(full.Write(1U), StreamResult::Failed);
    }
    EXPECT_EQ(output.Stop(), "");
}

TEST(FSStream, NullBufferIsAShortTransfer)
{
    Input input("abcdefgh");
    EXPECT_EQ(input.stream.Read(nullptr, 4), StreamResult::ShortTransfer);
    char block[9] = "";
    EXPECT_EQ(input.stream.Read(block, 4), StreamResult::Ok);
    EXPECT_EQ(input.stream.Read(nullptr, 4), StreamResult::ShortTransfer);
    EXPECT_EQ(input.stream.Read(block + 4, 4), StreamResult::Ok);
    EXPECT_STREQ(block, "abcdefgh");
    const TemporaryFolder folder;
    FSStream writer(folder.Wide("file"), FSStream::ModeWrite);
    EXPECT_EQ(writer.Write(nullptr, 4), StreamResult::ShortTransfer);
}

TEST(FSStream, FolderDoesNotOpen)
{
    const TemporaryFolder folder;
    for (const unsigned int mode : {0U, 1U, 2U, 3U, 4U})
    {
        FSStream stream(folder.Wide(), static_cast<FSStream::OpenMode>(mode));
        EXPECT_FALSE(IsOpen(stream)) << mode;
        EXPECT_EQ(stream.Length(), 0U);
    }
}

TEST(FSStream, NamedPipeDoesNotOpenAndIsNotWaitedFor)
{
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    for (const unsigned int mode : {0U, 1U, 2U, 3U, 4U})
    {
        FSStream stream(folder.Wide("pipe"), static_cast<FSStream::OpenMode>(mode));
        EXPECT_FALSE(IsOpen(stream)) << mode;
    }
}

TEST(FSStream, NothingIsWaitedForThatMayNeverCome)
{
    char block[4] = "";
    FSStream messages(L"/proc/kmsg", FSStream::ModeRead);
    // The kernel's messages may fill the block several times.
    while (messages.Read(block, 4) == StreamResult::Ok)
        continue;
    for (const FSStream::OpenMode mode : {FSStream::ModeRead, FSStream::ModeWrite, FSStream::ModeReadWrite})
    {
        FSStream stream(L"/dev/ptmx", mode);
        EXPECT_EQ(stream.Read(block, 4), StreamResult::NotOpen);
    }
}

TEST(FSStream, WritesToANamedPipeThatIsRead)
{
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    const int reader = open(folder.Path("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_NE(reader, -1);
    {
        FSStream stream(folder.Wide("pipe"), FSStream::ModeWrite);
        EXPECT_EQ(stream.Write("abc", 3), StreamResult::Ok);
    }
    char bytes[4] = {};
    EXPECT_EQ(read(reader, bytes, sizeof bytes), 3);
    EXPECT_STREQ(bytes, "abc");
    close(reader);
}

TEST(FSStream, PathsThatNameNoFileDoNotOpen)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "abc");
    TString<wchar_t> zero = folder.Wide("file");
    zero += std::wstring(L"\0.txt", 5);
    TString<wchar_t> invalid = folder.Wide("x");
    invalid += static_cast<wchar_t>(0xD800);
    for (const TString<wchar_t>& path : {TString<wchar_t>(), zero, invalid, folder.Wide("no/such"),
                                         TString<wchar_t>(std::wstring(5000, L'a'))})
        for (const unsigned int mode : {0U, 1U, 4U})
        {
            FSStream stream(path, static_cast<FSStream::OpenMode>(mode));
            EXPECT_FALSE(IsOpen(stream)) << mode;
        }
    EXPECT_EQ(ReadBytes(folder.Path("file")), "abc");
}

TEST(FSStream, FileWithoutPermissionDoesNotOpen)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "abc");
    // Refused to their owner as well, whom the test runs as unless that is root.
    ASSERT_EQ(chmod(folder.Path("file").c_str(), 0), 0);
    ASSERT_EQ(chmod(folder.Path().c_str(), 0555), 0);
    EXPECT_TRUE(ToolkitTest::AsNobody(
        [&folder]
        {
            FSStream reader(folder.Wide("file"), FSStream::ModeRead);
            FSStream writer(folder.Wide("file"), FSStream::ModeWrite);
            FSStream creator(folder.Wide("new"), FSStream::ModeWrite);
            return !IsOpen(reader) && !IsOpen(writer) && !IsOpen(creator);
        }));
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(folder.Path("file").c_str(), 0600), 0);
    EXPECT_EQ(ReadBytes(folder.Path("file")), "abc");
}

TEST(FSStream, UnknownModeDoesNotOpen)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "abc");
    FSStream stream(folder.Wide("file"), static_cast<FSStream::OpenMode>(5));
    EXPECT_FALSE(IsOpen(stream));
}

TEST(FSStream, NonAsciiPathOpensInAnyLocale)
{
    const TemporaryFolder folder;
    ASSERT_STREQ(setlocale(LC_ALL, nullptr), "C");
    TString<wchar_t> path = folder.Wide("x");
    path += L"\u00E9\u20AC\U0001F600";
    FSStream stream(path, FSStream::ModeCreate);
    EXPECT_EQ(stream.Write(1U), StreamResult::Ok);
    EXPECT_EQ(ReadBytes(folder.Path("x\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80")).size(), 4U);
}

TEST(FSStream, ModeReadStartsAtTheBeginningAndWritesNothing)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), Value(5));
    FSStream stream(folder.Wide("file"), FSStream::ModeRead);
    EXPECT_EQ(stream.Write(9U), StreamResult::Failed);
    EXPECT_EQ(stream.Write("a", 1), StreamResult::ShortTransfer);
    EXPECT_EQ(stream.Write(TString<wchar_t>(L"a")), StreamResult::LengthWriteFailed);
    unsigned int value = 0;
    EXPECT_EQ(stream.Read(value), StreamResult::Ok);
    EXPECT_EQ(value, 5U);
}

TEST(FSStream, ModeWriteEmptiesAnExistingFile)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "old");
    FSStream stream(folder.Wide("file"), FSStream::ModeWrite);
    EXPECT_EQ(ReadBytes(folder.Path("file")), "");
    TString<wchar_t> text;
    unsigned int value = 0;
    EXPECT_EQ(stream.Read(text), StreamResult::LengthReadFailed);
    EXPECT_EQ(stream.Read(value), StreamResult::ShortTransfer);
}

TEST(FSStream, ModeReadWriteNeedsAFileAndGoesBothWays)
{
    const TemporaryFolder folder;
    FSStream missing(folder.Wide("file"), FSStream::ModeReadWrite);
    EXPECT_FALSE(IsOpen(missing));
    WriteBytes(folder.Path("file"), Value(5) + "old!");
    FSStream stream(folder.Wide("file"), FSStream::ModeReadWrite);
    unsigned int value = 0;
    EXPECT_EQ(stream.Read(value), StreamResult::Ok);
    EXPECT_EQ(value, 5U);
    EXPECT_EQ(stream.Write(6U), StreamResult::Ok);
    EXPECT_EQ(ReadBytes(folder.Path("file")), Value(5) + Value(6));
}

TEST(FSStream, ModeAppendWritesBehindTheEnd)
{
    const TemporaryFolder folder;
    for (const unsigned int value : {1U, 2U})
    {
        FSStream stream(folder.Wide("file"), FSStream::ModeAppend);
        EXPECT_EQ(stream.Write(value), StreamResult::Ok);
        EXPECT_EQ(stream.Length(), 4 * value);
    }
    EXPECT_EQ(ReadBytes(folder.Path("file")), Value(1) + Value(2));
}

TEST(FSStream, ModeCreateLeavesAnExistingFileAlone)
{
    const TemporaryFolder folder;
    {
        FSStream stream(folder.Wide("file"), FSStream::ModeCreate);
        EXPECT_EQ(stream.Write(1U), StreamResult::Ok);
    }
    FSStream again(folder.Wide("file"), FSStream::ModeCreate);
    EXPECT_FALSE(IsOpen(again));
    EXPECT_EQ(ReadBytes(folder.Path("file")), Value(1));
}

TEST(FSStream, NewFileHasThePermissionsThatTheMaskLeaves)
{
    const TemporaryFolder folder;
    const mode_t before = umask(0);
    {
        const FSStream open(folder.Wide("open"), FSStream::ModeWrite);
        umask(027);
        const FSStream masked(folder.Wide("masked"), FSStream::ModeWrite);
    }
    umask(before);
    struct stat status;
    ASSERT_EQ(stat(folder.Path("open").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0666U);
    ASSERT_EQ(stat(folder.Path("masked").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST(FSStream, LengthIsTheSizeNow)
{
    const TemporaryFolder folder;
    FSStream stream(folder.Wide("file"), FSStream::ModeWrite);
    EXPECT_EQ(stream.Length(), 0U);
    EXPECT_EQ(stream.Write("abcde", 5), StreamResult::Ok);
    EXPECT_EQ(stream.Length(), 5U);
    WriteBytes(folder.Path("file"), "ab");
    EXPECT_EQ(stream.Length(), 2U);
}

TEST(FSStream, LengthOfALongerFileIsTheLargestValue)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "");
    for (const off_t size : {off_t{0xFFFFFFFF}, off_t{1} << 32, off_t{1} << 40})
    {
        ASSERT_EQ(truncate(folder.Path("file").c_str(), size), 0);
        EXPECT_EQ(FSStream(folder.Wide("file"), FSStream::ModeRead).Length(), 4294967295U);
    }
}

TEST(FSStream, DescriptorIsClosedOnExecAndWithTheStream)
{
    const TemporaryFolder folder;
    const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(next, 0);
    close(next);
    {
        const FSStream stream(folder.Wide("file"), FSStream::ModeWrite);
        EXPECT_EQ(fcntl(next, F_GETFD), FD_CLOEXEC);
        EXPECT_EQ(fcntl(next, F_GETFL) & O_NONBLOCK, 0);
    }
    EXPECT_EQ(fcntl(next, F_GETFD), -1);
}
