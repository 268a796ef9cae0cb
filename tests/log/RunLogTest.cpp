// SPDX-License-Identifier: MIT
#include "toolkit/log/RunLog.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/ForkedCopy.h"
#include "tests/support/InChild.h"
#include "tests/support/NoNewThreads.h"
#include "tests/support/RecordingSink.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "toolkit/log/Log.h"

using namespace Toolkit;
using namespace std::chrono_literals;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using ToolkitTest::InstalledSinks;
using ToolkitTest::ScopedEnvironment;
using ToolkitTest::WaitUntil;

namespace
{

namespace fs = std::filesystem;

const char c_strLine[] = "(\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}[+-]\\d\\d:\\d\\d) "
                         "(error|warning|info|debug|verbose) (\\d+) (\\S+) (.*)";

std::vector<fs::path> FilesIn(const fs::path& folder)
{
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

// The messages of all files, the oldest first; what is no whole line becomes "torn: ...".
std::vector<std::string> MessagesIn(const fs::path& folder)
{
    static const std::regex s_line(c_strLine);
    std::vector<std::string> messages;
    for (const fs::path& file : FilesIn(folder))
    {
        std::ifstream stream(file);
        for (std::string line; std::getline(stream, line);)
        {
            std::smatch match;
            const bool whole = std::regex_match(line, match, s_line) && !stream.eof();
            messages.push_back(whole ? match[5].str() : "torn: " + line);
        }
    }
    return messages;
}

std::shared_ptr<RunLog> OpenLog(const RunLogOptions& options)
{
    Result<std::shared_ptr<RunLog>> log = RunLog::Open(options);
    EXPECT_TRUE(log) << log.error().Message();
    return log ? *log : nullptr;
}

LogRecord RecordOf(const std::string& message)
{
    LogRecord record;
    record.time = std::chrono::system_clock::now();
    record.function = "f";
    record.message = message;
    return record;
}

std::vector<std::string> Numbered(const std::string& before, int count)
{
    std::vector<std::string> messages;
    for (int i = 0; i < count; ++i)
        messages.push_back(before + std::to_string(i));
    return messages;
}

class RunLogTest : public testing::Test
{
protected:
    fs::path Folder() const { return m_folder.Path(); }
    RunLogOptions Options() const { return RunLogOptions("watch").Folder(Folder()); }

    const ToolkitTest::TemporaryFolder m_folder;
};

// Eight threads log at once; every line is there, whole, and in its thread's order.
void LogOnManyThreads(const fs::path& folder, const RunLogOptions& options, int lines)
{
    {
        const std::shared_ptr<RunLog> log = OpenLog(options);
        const InstalledSinks installed({log});
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 8; ++thread)
            threads.emplace_back(
                [thread, lines]
                {
                    for (int i = 0; i < lines; ++i)
                        TOOLKIT_LOG(LogSeverity::Info)
                            << thread << ' ' << i << std::string(static_cast<std::size_t>(i % 60), '.');
                });
        for (std::thread& thread : threads)
            thread.join();
    }
    std::vector<int> next(8, 0);
    for (const std::string& message : MessagesIn(folder))
    {
        char* end = nullptr;
        const auto thread = static_cast<std::size_t>(std::strtoul(message.c_str(), &end, 10));
        ASSERT_LT(thread, next.size()) << message;
        ASSERT_EQ(std::to_string(thread) + " " + std::to_string(next[thread]) +
                      std::string(static_cast<unsigned int>(next[thread]) % 60U, '.'),
                  message);
        ++next[thread];
    }
    EXPECT_EQ(std::vector<int>(8, lines), next);
}

// A million lines for each thread where the environment asks for it.
int LinesOfAThread()
{
    const char* const lines = std::getenv("TOOLKIT_LOG_LINES");
    return lines != nullptr ? std::atoi(lines) : 2000;
}

// No file of this process may have more bytes; a write that would make one longer fails.
void LimitFiles(rlim_t bytes)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace

TEST_F(RunLogTest, LineHasItsFieldsAndIsThereBeforeTheStatementEnds)
{
    const ScopedEnvironment zone("TZ", "IST-5:30");
    const std::shared_ptr<RunLog> log = OpenLog(Options());
    const InstalledSinks installed({log});
    TOOLKIT_LOG(LogSeverity::Warning) << "gr\xC3\xBC" << 7;
    ASSERT_THAT(FilesIn(Folder()), ElementsAre(log->File()));
    EXPECT_TRUE(
        std::regex_match(log->File().filename().string(), std::regex("watch-\\d{8}T\\d{6}\\.\\d{3}Z\\.log")));
    const std::string text = ToolkitTest::ReadBytes(log->File().string());
    std::smatch match;
    ASSERT_TRUE(std::regex_match(text, match, std::regex(std::string(c_strLine) + "\n"))) << text;
    EXPECT_THAT(match[1].str(), testing::EndsWith("+05:30"));
    EXPECT_EQ("warning", match[2]);
    EXPECT_EQ(std::to_string(syscall(SYS_gettid)), match[3]);
    EXPECT_EQ("TestBody", match[4]);
    EXPECT_EQ("gr\xC3\xBC"
              "7",
              match[5]);
}

TEST_F(RunLogTest, TimeIsThatOfTheRecordInTheLocalZone)
{
    const ScopedEnvironment zone("TZ", "BRT3");
    const std::shared_ptr<RunLog> log = OpenLog(Options());
    LogRecord record = RecordOf("m");
    record.thread = 12;
    record.severity = LogSeverity::Verbose;
    for (const auto& [milliseconds, text] :
         std::map<long long, std::string>{{0, "1969-12-31T21:00:00.000-03:00"},
                                          {-1, "1969-12-31T20:59:59.999-03:00"},
                                          {1772460309250, "2026-03-02T11:05:09.250-03:00"}})
    {
        record.time = std::chrono::system_clock::time_point(std::chrono::milliseconds(milliseconds));
        log->Write(record);
        EXPECT_THAT(ToolkitTest::ReadBytes(log->File().string()),
                    testing::EndsWith(text + " verbose 12 f m\n"));
    }
}

TEST_F(RunLogTest, TimeMayBeTheFirstAndTheLastOfTheClock)
{
    using TimePoint = std::chrono::system_clock::time_point;
    const ScopedEnvironment zone("TZ", "UTC0");
    const std::shared_ptr<RunLog> log = OpenLog(Options());
    LogRecord record = RecordOf("m");
    for (const auto& [time, text] : {std::pair(TimePoint::max(), "2262-04-11T23:47:16.854"),
                                     {TimePoint::min(), "1677-09-21T00:12:43.145"},
                                     {TimePoint::max(), "2262-04-11T23:47:16.854"}})
    {
        record.time = time;
        log->Write(record);
        EXPECT_THAT(ToolkitTest::ReadBytes(log->File().string()),
                    testing::EndsWith(text + std::string("+00:00 info 0 f m\n")));
    }
}

TEST_F(RunLogTest, FirstLineMayBeOfAnySecond)
{
    const ScopedEnvironment zone("TZ", "UTC0");
    LogRecord record = RecordOf("m");
    for (const int hours : {0, -1000000})
    {
        const std::shared_ptr<RunLog> log = OpenLog(Options());
        record.time = std::chrono::system_clock::time_point(std::chrono::hours(hours));
        log->Write(record);
        EXPECT_THAT(ToolkitTest::ReadBytes(log->File().string()),
                    testing::HasSubstr(":00:00.000+00:00 info"));
    }
}

TEST_F(RunLogTest, OneLineStaysOneLine)
{
    const std::shared_ptr<RunLog> log = OpenLog(Options());
    log->Write(RecordOf("a\nb\r\tc\0d\x1B[0m\x7F \xC2\x85 \xE2\x80\xA8 \xE2\x80\xA9 \xC3\xA9 \\"s));
    LogRecord record = RecordOf("twelve bytes and a line feed\n");
    record.function = "";
    log->Write(record);
    EXPECT_THAT(MessagesIn(Folder()),
                ElementsAre("a\\nb\\r\\tc\\x00d\\x1b[0m\\x7f \\u0085 \\u2028 \\u2029 \xC3\xA9 \\",
                            "twelve bytes and a line feed\\n"));
}

TEST_F(RunLogTest, EscapesWhereverTheyStand)
{
    const std::shared_ptr<RunLog> log = OpenLog(Options());
    std::vector<std::string> expected;
    for (std::size_t length = 0; length < 20; ++length)
        for (std::size_t place = 0; place <= length; ++place)
        {
            const std::string before(place, 'x');
            const std::string after(length - place, '\x80');
            log->Write(RecordOf(before + '\n' + after));
            expected.push_back(before + "\\n" + after);
        }
    EXPECT_EQ(expected, MessagesIn(Folder()));
}

TEST_F(RunLogTest, LinesOfEveryLengthAreWhole)
{
    const std::shared_ptr<RunLog> log = OpenLog(Options());
    std::vector<std::string> expected;
    // Around the lengths of a block and of a usual line.
    for (const std::size_t from : {0U, 420U, 500U})
        for (std::size_t length = from; length < from + 40; ++length)
        {
            log->Write(RecordOf(std::string(length, 'x')));
            log->Write(RecordOf(std::string(length, 'x') + '\n'));
            expected.emplace_back(length, 'x');
            expected.push_back(expected.back() + "\\n");
        }
    EXPECT_EQ(expected, MessagesIn(Folder()));
}

TEST_F(RunLogTest, NameOfAFunctionIsEscaped)
{
    const std::shared_ptr<RunLog> log = OpenLog(Options());
    LogRecord record = RecordOf("m");
    for (const auto& [function, text] :
         std::map<std::string, std::string>{{"a\nb", "a\\nb"}, {"a function\t", "a function\\t"}})
    {
        record.function = function;
        log->Write(record);
        EXPECT_THAT(ToolkitTest::ReadBytes(log->File().string()), testing::EndsWith(" 0 " + text + " m\n"));
    }
}

TEST_F(RunLogTest, SinksBesideTheFileGetTheWholeRecord)
{
    const std::shared_ptr<RunLog> log = OpenLog(Options().Threshold(LogSeverity::Warning));
    const auto before = std::make_shared<ToolkitTest::RecordingSink>();
    const auto after = std::make_shared<ToolkitTest::RecordingSink>();
    const InstalledSinks installed({before, log, after});
    const unsigned int line = __LINE__ + 1;
    TOOLKIT_LOG(LogSeverity::Warning) << "for all of them";
    TOOLKIT_LOG(LogSeverity::Info) << "not for the file";
    EXPECT_THAT(MessagesIn(Folder()), ElementsAre("for all of them"));
    for (const auto& sink : {before, after})
    {
        EXPECT_THAT(sink->Messages(), ElementsAre("for all of them", "not for the file"));
        const LogRecord record = sink->Records()[0];
        EXPECT_EQ(LogSeverity::Warning, record.severity);
        EXPECT_EQ(static_cast<std::uint64_t>(syscall(SYS_gettid)), record.thread);
        EXPECT_EQ(__FILE__, record.file);
        EXPECT_EQ(line, record.line);
        EXPECT_EQ("TestBody", record.function);
        EXPECT_EQ(before->Records()[0].time, record.time);
    }
}

TEST_F(RunLogTest, ThreadIsNotCancelledWithinALine)
{
    const std::shared_ptr<RunLog> log = OpenLog(Options());
    const InstalledSinks installed({log});
    const auto logWhileCancelled = [](void* returned) -> void*
    {
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
        pthread_cancel(pthread_self());
        pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr);
        TOOLKIT_LOG(LogSeverity::Info) << "whole";
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
        return returned;
    };
    pthread_t thread = {};
    ASSERT_EQ(0, pthread_create(&thread, nullptr, logWhileCancelled, this));
    void* end = nullptr;
    ASSERT_EQ(0, pthread_join(thread, &end));
    EXPECT_EQ(this, end);
    TOOLKIT_LOG(LogSeverity::Info) << "after";
    EXPECT_THAT(MessagesIn(Folder()), ElementsAre("whole", "after"));
}

TEST_F(RunLogTest, EachRunHasItsFileAndTheNewestStay)
{
    for (int run = 0; run < 8; ++run)
        OpenLog(Options())->Write(RecordOf("run " + std::to_string(run)));
    EXPECT_THAT(MessagesIn(Folder()), ElementsAre("run 3", "run 4", "run 5", "run 6", "run 7"));
    OpenLog(Options().Keep(2))->Write(RecordOf("run 8"));
    EXPECT_THAT(MessagesIn(Folder()), ElementsAre("run 7", "run 8"));
    for (int run = 0; run < 8; ++run)
        OpenLog(Options().Keep(0));
    EXPECT_THAT(FilesIn(Folder()), SizeIs(10));
}

TEST_F(RunLogTest, FilesOfOthersAndOfLivingRunsStay)
{
    const std::vector<std::string> others = {"watch.log", "watch-x.log", "watch-20200101T000000.000Z.log.gz",
                                             "watch-me-20200101T000000.000Z.log",
                                             "watch-20200101T00000A.000Z.log"};
    for (const std::string& other : others)
        ToolkitTest::WriteBytes(m_folder.Path(other), "x");
    fs::create_directory(Folder() / "watch-20200101T000001.000Z.log");
    fs::create_symlink("watch.log", Folder() / "watch-20200101T000002.000Z.log");
    const std::shared_ptr<RunLog> living = OpenLog(Options());
    for (int run = 0; run < 3; ++run)
        OpenLog(Options().Keep(1))->Write(RecordOf("x"));
    EXPECT_TRUE(fs::exists(living->File()));
    EXPECT_THAT(FilesIn(Folder()), SizeIs(others.size() + 2 + 2));
}

TEST_F(RunLogTest, IsRotatedBySize)
{
    const std::shared_ptr<RunLog> log = OpenLog(Options().Keep(0).MaxSize(500));
    for (const std::string& message : Numbered("a line of some length ", 50))
        log->Write(RecordOf(message));
    log->Write(RecordOf(std::string(1000, 'x')));
    log->Write(RecordOf("after"));
    std::vector<std::string> expected = Numbered("a line of some length ", 50);
    expected.push_back(std::string(1000, 'x'));
    expected.push_back("after");
    EXPECT_EQ(expected, MessagesIn(Folder()));
    EXPECT_LE(8U, FilesIn(Folder()).size());
    for (const fs::path& file : FilesIn(Folder()))
        EXPECT_TRUE(fs::file_size(file) <= 500 || fs::file_size(file) > 1000) << file;
}

TEST_F(RunLogTest, KeepCountsTheFilesOfARotatedRun)
{
    const std::shared_ptr<RunLog> log = OpenLog(Options().Keep(3).MaxSize(100));
    for (const std::string& message : Numbered("a line of some length ", 50))
        log->Write(RecordOf(message));
    EXPECT_THAT(FilesIn(Folder()), SizeIs(3));
    EXPECT_EQ("a line of some length 49", MessagesIn(Folder()).back());
}

TEST_F(RunLogTest, LinesOfManyThreadsAreWholeAndInOrder)
{
    LogOnManyThreads(Folder(), Options().MaxSize(0), LinesOfAThread());
}

TEST_F(RunLogTest, LinesOfManyThreadsAreWholeAndInOrderWhileFilesRotate)
{
    LogOnManyThreads(Folder(), Options().Keep(0).MaxSize(100000), LinesOfAThread());
}

TEST_F(RunLogTest, LinesOfManyThreadsAreWholeAndInOrderInTheBackground)
{
    LogOnManyThreads(Folder(), Options().Keep(0).MaxSize(100000).Background(1U << 30), LinesOfAThread());
}

TEST_F(RunLogTest, FileThatIsTakenAwayIsMadeAnew)
{
    const fs::path folder = Folder() / "a" / "b";
    const std::shared_ptr<RunLog> log = OpenLog(RunLogOptions("watch").Folder(folder));
    log->Write(RecordOf("lost"));
    fs::remove(log->File());
    log->Write(RecordOf("one"));
    EXPECT_THAT(MessagesIn(folder), ElementsAre("one"));
    fs::rename(log->File(), folder / "moved");
    log->Write(RecordOf("two"));
    EXPECT_THAT(MessagesIn(folder), ElementsAre("one", "two"));
    fs::remove_all(Folder() / "a");
    log->Write(RecordOf("three"));
    EXPECT_THAT(MessagesIn(folder), ElementsAre("three"));
    EXPECT_TRUE(fs::exists(log->File()));
}

TEST_F(RunLogTest, FolderThatCannotBeMadeAnewCostsTheLinesMeanwhile)
{
    const fs::path folder = Folder() / "logs";
    const std::shared_ptr<RunLog> log = OpenLog(RunLogOptions("watch").Folder(folder));
    fs::remove_all(folder);
    ToolkitTest::WriteBytes(folder.string(), "in its place");
    for (int i = 0; i < 3; ++i)
        log->Write(RecordOf("lost"));
    fs::remove(folder);
    log->Write(RecordOf("after"));
    EXPECT_THAT(MessagesIn(folder), ElementsAre("3 lines were lost", "after"));
}

TEST_F(RunLogTest, FullDiskCostsTheLinesThatDoNotFit)
{
    EXPECT_TRUE(ToolkitTest::OnSmallDisk(
        m_folder.Path(), 64,
        [this]() -> ToolkitTest::ChildAnswer
        {
            const std::shared_ptr<RunLog> log = OpenLog(Options());
            const std::string filler = m_folder.Path("filler");
            std::ofstream(filler) << std::string(1 << 20, 'x');
            std::vector<std::string> expected;
            for (int i = 0; i < 200; ++i)
                log->Write(RecordOf("line " + std::to_string(i) + std::string(100, '.')));
            fs::remove(filler);
            log->Write(RecordOf("after"));
            const std::vector<std::string> messages = MessagesIn(Folder());
            if (messages.size() < 2 || messages.back() != "after")
                return "nothing after the end of the full disk";
            if (messages[messages.size() - 2].find(" lines were lost") == std::string::npos)
                return "not counted: " + messages[messages.size() - 2];
            for (std::size_t i = 0; i + 2 < messages.size(); ++i)
                if (messages[i] != "line " + std::to_string(i) + std::string(100, '.'))
                    return "not the beginning: " + messages[i];
            const auto lost = std::stoul(messages[messages.size() - 2]);
            return lost + messages.size() - 2 == 200;
        }));
}

TEST_F(RunLogTest, LimitOfAFilesSizeBeginsAnother)
{
    EXPECT_TRUE(ToolkitTest::InChild(
        [this]() -> ToolkitTest::ChildAnswer
        {
            LimitFiles(1000);
            const std::shared_ptr<RunLog> log = OpenLog(Options().Keep(0));
            for (const std::string& message : Numbered("a line of some length ", 50))
                log->Write(RecordOf(message));
            return MessagesIn(Folder()) == Numbered("a line of some length ", 50);
        }));
}

TEST_F(RunLogTest, OpenSaysWhyItCannot)
{
    ToolkitTest::WriteBytes(m_folder.Path("file"), "x");
    const auto failure = [](const RunLogOptions& options)
    {
        const Result<std::shared_ptr<RunLog>> log = RunLog::Open(options);
        return log ? Failure(std::error_code(), "opened") : log.error();
    };
    EXPECT_EQ(std::errc::not_a_directory, failure(RunLogOptions("a").Folder(Folder() / "file" / "x")).Code());
    EXPECT_EQ("cannot write a log in " + m_folder.Path("file") + ": Not a directory",
              failure(RunLogOptions("a").Folder(Folder() / "file")).Message());
    for (const char* name : {"", ".", "..", "a/b"})
        EXPECT_EQ(std::errc::invalid_argument, failure(RunLogOptions(name).Folder(Folder())).Code()) << name;
    EXPECT_EQ(std::errc::invalid_argument,
              failure(RunLogOptions(std::string_view("a\0b", 3)).Folder(Folder())).Code());
    EXPECT_EQ(std::errc::invalid_argument,
              failure(RunLogOptions(std::string(201, 'a')).Folder(Folder())).Code());
    EXPECT_TRUE(ToolkitTest::AsNobody(
        [&]() -> ToolkitTest::ChildAnswer
        {
            const Failure refused = failure(RunLogOptions("a").Folder("/proc/1/x"));
            return refused.Code() == std::errc::permission_denied ||
                   refused.Code() == std::errc::no_such_file_or_directory ||
                   refused.Code() == std::errc::operation_not_permitted;
        }));
}

TEST_F(RunLogTest, WithoutAFolderLiesWithTheStateOfTheUser)
{
    const ScopedEnvironment state("XDG_STATE_HOME", m_folder.Path().c_str());
    const std::shared_ptr<RunLog> log = OpenLog(RunLogOptions("watch"));
    EXPECT_EQ(Folder() / "watch" / "logs", log->File().parent_path());
    struct stat status = {};
    ASSERT_EQ(0, stat((Folder() / "watch").c_str(), &status));
    EXPECT_EQ(0700U, status.st_mode & 0777U);
    ASSERT_EQ(0, stat(log->File().c_str(), &status));
    EXPECT_EQ(0600U, status.st_mode & 0777U);
}

TEST_F(RunLogTest, OptionsAreValues)
{
    RunLogOptions options("watch");
    const RunLogOptions copy = options.Folder(Folder()).Threshold(LogSeverity::Warning);
    options = RunLogOptions("other").Folder("/nowhere/at/all");
    const std::shared_ptr<RunLog> log = OpenLog(copy);
    EXPECT_EQ(LogSeverity::Warning, log->Threshold());
    EXPECT_EQ(Folder(), log->File().parent_path());
}

TEST_F(RunLogTest, OptionsThatWereMovedFromHaveNoName)
{
    RunLogOptions options = RunLogOptions("watch").Folder(Folder());
    const RunLogOptions taken = std::move(options);
    EXPECT_EQ(Folder(), OpenLog(taken)->File().parent_path());
    // NOLINTBEGIN(bugprone-use-after-move): the header says what they are.
    EXPECT_EQ(std::errc::invalid_argument, RunLog::Open(options).error().Code());
    const RunLogOptions copy = options;
    EXPECT_EQ(std::errc::invalid_argument, RunLog::Open(copy).error().Code());
    options.Folder(Folder()).Keep(1).MaxSize(1).Threshold(LogSeverity::Info).Background();
    EXPECT_EQ(std::errc::invalid_argument, RunLog::Open(options).error().Code());
    // NOLINTEND(bugprone-use-after-move)
}

TEST_F(RunLogTest, ThresholdOfTheFileDecides)
{
    const std::shared_ptr<RunLog> log = OpenLog(Options().Threshold(LogSeverity::Info));
    const InstalledSinks installed({log});
    TOOLKIT_LOG(LogSeverity::Debug) << "dropped";
    log->SetThreshold(LogSeverity::Debug);
    TOOLKIT_LOG(LogSeverity::Debug) << "kept";
    EXPECT_THAT(MessagesIn(Folder()), ElementsAre("kept"));
}

TEST_F(RunLogTest, BackgroundWritesWhatIsQueuedOnFlushAndAtItsEnd)
{
    std::shared_ptr<RunLog> log = OpenLog(Options().Background());
    log->Write(RecordOf("one"));
    EXPECT_TRUE(log->Flush());
    EXPECT_THAT(MessagesIn(Folder()), ElementsAre("one"));
    log->Write(RecordOf("two"));
    EXPECT_TRUE(log->Flush(std::chrono::hours(1000000)));
    EXPECT_TRUE(log->Flush(std::chrono::nanoseconds::max()));
    log->Write(RecordOf("three"));
    log.reset();
    EXPECT_THAT(MessagesIn(Folder()), ElementsAre("one", "two", "three"));
}

TEST_F(RunLogTest, OpenSaysThatTheSystemRefusesTheThread)
{
    const ToolkitTest::NoNewThreads none;
    EXPECT_TRUE(RunLog::Open(Options()));
    const auto refused = RunLog::Open(Options().Background());
    EXPECT_FALSE(refused);
    EXPECT_THAT(refused.error().Message(), HasSubstr("cannot start the thread of the log watch: "));
}

TEST_F(RunLogTest, BackgroundWritesByItself)
{
    const std::shared_ptr<RunLog> log = OpenLog(Options().Background());
    std::vector<std::string> expected;
    // The second ones come while the thread rests after the first.
    for (const char* message : {"one", "two", "three", "four"})
    {
        log->Write(RecordOf(message));
        log->Write(RecordOf(message));
        expected.insert(expected.end(), 2, message);
        EXPECT_TRUE(WaitUntil([&] { return MessagesIn(Folder()) == expected; })) << message;
    }
}

TEST_F(RunLogTest, BackgroundDoesNotRestWhenTheQueueIsHalfFull)
{
    // The thread would else rest while lines are dropped.
    const std::shared_ptr<RunLog> log = OpenLog(Options().Background(1));
    for (int i = 0; i < 50; ++i)
    {
        log->Write(RecordOf(std::to_string(i)));
        EXPECT_TRUE(
            WaitUntil([&] { return MessagesIn(Folder()).size() == static_cast<std::size_t>(i) + 1; }));
    }
    EXPECT_EQ(Numbered("", 50), MessagesIn(Folder()));
}

TEST_F(RunLogTest, FlushNeverWaitsWithoutBackground)
{
    const std::shared_ptr<RunLog> log = OpenLog(Options());
    log->Write(RecordOf("one"));
    EXPECT_TRUE(log->Flush(-1ns));
    EXPECT_TRUE(log->Flush(500ms));
    EXPECT_TRUE(log->Flush());
}

TEST_F(RunLogTest, BackgroundCountsWhatItHadToDrop)
{
    std::shared_ptr<RunLog> log = OpenLog(Options().Background(2000));
    for (const std::string& message : Numbered("a line of some length ", 20000))
        log->Write(RecordOf(message));
    EXPECT_TRUE(log->Flush());
    log->Write(RecordOf("after"));
    log.reset();
    unsigned long lost = 0;
    unsigned long written = 0;
    for (const std::string& message : MessagesIn(Folder()))
    {
        const bool counts = message.find("lost") != std::string::npos;
        (counts ? lost : written) += counts ? std::stoul(message) : 1;
        EXPECT_THAT(message, testing::Not(HasSubstr("torn")));
    }
    EXPECT_EQ(20001U, lost + written);
    EXPECT_LT(0U, lost);
    EXPECT_EQ("after", MessagesIn(Folder()).back());
}

TEST_F(RunLogTest, ForkedProcessEndsWithoutTheQueue)
{
    std::shared_ptr<RunLog> log = OpenLog(Options().Background());
    log->Write(RecordOf("one"));
    ASSERT_TRUE(log->Flush());
    const pid_t child = fork();
    if (child == 0)
    {
        log.reset();
        _exit(7);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(7, WEXITSTATUS(status));
    log.reset();
    EXPECT_THAT(MessagesIn(Folder()), ElementsAre("one"));
}

TEST_F(RunLogTest, ForkedProcessLogsIntoTheSameFile)
{
    const std::shared_ptr<RunLog> log = OpenLog(Options());
    log->Write(RecordOf("one"));
    EXPECT_TRUE(ToolkitTest::InChild(
        [&log]
        {
            log->Write(RecordOf("two"));
            return true;
        }));
    log->Write(RecordOf("three"));
    EXPECT_THAT(FilesIn(Folder()), SizeIs(1));
    EXPECT_THAT(MessagesIn(Folder()), ElementsAre("one", "two", "three"));
}

// A line that does not fit is taken back, and nothing that the other process has written meanwhile.
TEST_F(RunLogTest, FullFileCostsNoLineOfAForkedProcess)
{
    EXPECT_TRUE(ToolkitTest::InChild(
        [this]() -> ToolkitTest::ChildAnswer
        {
            LimitFiles(1000);
            const std::shared_ptr<RunLog> log = OpenLog(Options().Keep(0));
            log->Write(RecordOf("of the one"));
            const testing::AssertionResult child = ToolkitTest::InChild(
                [&log]
                {
                    log->Write(RecordOf("of the other"));
                    return true;
                });
            log->Write(RecordOf(std::string(900, 'x')));
            if (!child)
                return child.message();
            const std::vector<std::string> messages = MessagesIn(Folder());
            return messages.size() == 4 && messages[0] == "of the one" && messages[1] == "of the other" &&
                   messages[3] == std::string(900, 'x');
        }));
}

TEST_F(RunLogTest, DescriptorsThatTheHostHasClosedAreNotClosedAgain)
{
    EXPECT_TRUE(ToolkitTest::InChild(
        [this]() -> ToolkitTest::ChildAnswer
        {
            std::shared_ptr<RunLog> log = OpenLog(Options());
            log->Write(RecordOf("one"));
            const int last = open("/dev/null", O_RDONLY | O_CLOEXEC);
            std::vector<int> closed;
            for (int number = 3; number < last; ++number)
            {
                char target[PATH_MAX] = {};
                const std::string link = "/proc/self/fd/" + std::to_string(number);
                if (readlink(link.c_str(), target, sizeof target - 1) > 0 && target == log->File().native())
                {
                    close(number);
                    closed.push_back(number);
                }
            }
            for (std::size_t i = 1; i < closed.size(); ++i)
                dup2(last, closed[i]);
            log->Write(RecordOf("lost"));
            log->Write(RecordOf("two"));
            log.reset();
            for (std::size_t i = 1; i < closed.size(); ++i)
                if (fcntl(closed[i], F_GETFD) == -1)
                    return "closed what is the host's";
            const std::vector<std::string> messages = MessagesIn(Folder());
            return !closed.empty() && messages.back() == "two";
        }));
}

TEST_F(RunLogTest, KilledProcessLosesNoLineThatWasLogged)
{
    auto* const logged = static_cast<std::atomic<int>*>(
        mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    for (int round = 0; round < 20; ++round)
    {
        logged->store(0);
        const fs::path folder = Folder() / std::to_string(round);
        ToolkitTest::ForkedCopy child(
            [&]() -> ToolkitTest::ChildAnswer
            {
                const std::shared_ptr<RunLog> log =
                    OpenLog(RunLogOptions("watch").Folder(folder).Keep(0).MaxSize(20000));
                const InstalledSinks installed({log});
                for (int i = 0;; logged->store(++i))
                    TOOLKIT_LOG(LogSeverity::Info) << "line " << i;
            });
        while (logged->load() < 100 * (round % 7 + 1))
            std::this_thread::yield();
        child.Kill();
        std::vector<std::string> messages = MessagesIn(folder);
        const int certain = logged->load();
        // The system may end a write at the boundary of a page when it kills; that line's statement had not
        // ended.
        if (messages.size() > static_cast<std::size_t>(certain) && messages.back().rfind("torn: ", 0) == 0)
            messages.pop_back();
        ASSERT_LE(static_cast<std::size_t>(certain), messages.size());
        ASSERT_EQ(Numbered("line ", static_cast<int>(messages.size())), messages);
    }
    munmap(logged, sizeof(std::atomic<int>));
}

class RunLogEnds : public testing::TestWithParam<const char*>
{
};

TEST_P(RunLogEnds, NoEndOfTheProcessLosesALine)
{
    const ToolkitTest::TemporaryFolder folder;
    const pid_t child = fork();
    if (child == 0)
    {
        if (std::freopen("/dev/null", "w", stderr) == nullptr)
            _exit(102);
        execl(TOOLKIT_LOG_ENDS, TOOLKIT_LOG_ENDS, folder.Path().c_str(), GetParam(), nullptr);
        _exit(103);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    const std::string how = GetParam();
    const std::map<std::string, int> signals = {{"abort", SIGABRT},
                                                {"exception", SIGABRT},
                                                {"SIGTERM", SIGTERM},
                                                {"SIGSEGV", SIGSEGV},
                                                {"SIGKILL", SIGKILL}};
    const auto signal = signals.find(how);
    if (signal == signals.end())
        EXPECT_EQ(0, status);
    else
        EXPECT_EQ(signal->second, WIFSIGNALED(status) ? WTERMSIG(status) : 0);
    std::vector<std::string> expected = Numbered("line ", 200);
    if (how == "exit" || how == "return")
        expected.push_back("last");
    EXPECT_EQ(expected, MessagesIn(folder.Path()));
}

INSTANTIATE_TEST_SUITE_P(All, RunLogEnds,
                         testing::Values("return", "exit", "_exit", "abort", "exception", "SIGTERM",
                                         "SIGSEGV", "SIGKILL"),
                         [](const auto& end) { return std::string(end.param); });

TEST_F(RunLogTest, BackgroundIsWrittenWhenTheProcessExits)
{
    for (const char* how : {"return", "exit"})
    {
        const std::string folder = m_folder.Path(how);
        const std::string command =
            "'" + std::string(TOOLKIT_LOG_ENDS) + "' '" + folder + "' " + how + " background";
        EXPECT_EQ(0, std::system(command.c_str()));
        std::vector<std::string> expected = Numbered("line ", 200);
        expected.push_back("last");
        EXPECT_EQ(expected, MessagesIn(folder)) << how;
    }
}
