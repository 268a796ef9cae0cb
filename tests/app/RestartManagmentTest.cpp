// SPDX-License-Identifier: MIT
#include "toolkit/app/RestartManagment.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <regex>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wx/utils.h>

#include "tests/support/InstalledLogger.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/encoding/UTF8.h"

using Toolkit::ILogger;
using Toolkit::LogSeverity;
using Toolkit::RestartManagment;
using Toolkit::smart_ptr;
using Toolkit::TString;
using Toolkit::UTF8;
using ToolkitTest::CapturedOutput;
using ToolkitTest::InstalledLogger;
using ToolkitTest::ReadBytes;
using ToolkitTest::Record;
using ToolkitTest::RecordingLogger;
using ToolkitTest::ScopedEnvironment;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

static_assert(std::is_polymorphic_v<RestartManagment> && std::has_virtual_destructor_v<RestartManagment>);
static_assert(!std::is_copy_constructible_v<RestartManagment>);

namespace
{

using Wide = TString<wchar_t>;

Wide User()
{
    return wxGetUserId().ToStdWstring();
}

// A lock file's folder and a logger of the test's own. There is no path manager: what would be started is
// not this test program.
class RestartManagmentTest : public testing::Test
{
protected:
    RestartManagmentTest() { RestartManagment::s_strExecutableFilename = L"/usr/bin/Tool.bin"; }
    ~RestartManagmentTest() override { RestartManagment::s_strExecutableFilename.clear(); }

    std::string LockPath() const { return UTF8::ToUTF8(RestartManagment::GetLockFileName()); }

    // The arguments behind the executable's name, and the traces without the numbers that differ.
    bool Activate(std::vector<const wchar_t*> arguments)
    {
        arguments.insert(arguments.begin(), L"/usr/bin/Tool.bin");
        return Activate(static_cast<int>(arguments.size()), arguments.data());
    }
    bool Activate(int argc, const wchar_t** argv)
    {
        m_record.Clear();
        const bool answer = RestartManagment::ActivateRestartProcess(argc, argv);
        int status = 0;
        EXPECT_LT(0, waitpid(-1, &status, 0));
        EXPECT_EQ(ENOENT, WEXITSTATUS(status));
        return answer;
    }
    std::wstring Traces() const
    {
        return std::regex_replace(m_record.Text(), std::wregex(L"(^|\n)2 [0-9]+ : [0-9]+ : "), L"$1");
    }
    // The arguments of the last start, from its trace.
    std::wstring Arguments() const
    {
        std::wsmatch match;
        const std::wstring traces = Traces();
        const std::wregex trace(L"ActivateRestartProcess : <<< ActivateRestartProcess\\( ([^\n]*)\\)\n");
        return std::regex_search(traces, match, trace) ? match[1].str() : L"(none)";
    }

    TemporaryFolder m_folder;
    const ScopedEnvironment m_environment{"TMPDIR", m_folder.Path().c_str()};
    Record m_record;
    const InstalledLogger m_logger{new RecordingLogger(m_record)};
};

struct Variables
{
    const char* tmpdir;
    const char* tmp;
    const char* temp;
    const wchar_t* folder;
};

struct Planted
{
    const char* what;
    std::function<void(const std::string& lock, const std::string& other)> plant;
    // What lies there has this content, too, seen through the link.
    const char* bytes;
};

void MakeOther(const std::string& path)
{
    WriteBytes(path, "precious");
}

const Planted s_planted[] = {
    {"a link",
     [](const std::string& lock, const std::string& other)
     {
         MakeOther(other);
         std::filesystem::create_symlink(other, lock);
     },
     "precious"},
    {"a link to nothing",
     [](const std::string& lock, const std::string& other) { std::filesystem::create_symlink(other, lock); },
     ""},
    {"a FIFO", [](const std::string& lock, const std::string&) { EXPECT_EQ(0, mkfifo(lock.c_str(), 0666)); },
     ""},
    {"a folder", [](const std::string& lock, const std::string&) { std::filesystem::create_directory(lock); },
     ""},
};

} // namespace

TEST(RestartManagment, HasAnIdentifierForTheHost)
{
    EXPECT_EQ(L"{3F2A9C71-8D44-4b1e-A6C0-5E7B2D19F4A8}", RestartManagment::c_strUniqueIdentifer);
}

TEST(RestartManagment, KnowsNoExecutableBeforeTheHostNamesIt)
{
    EXPECT_EQ(L"", RestartManagment::s_strExecutableFilename);
    EXPECT_EQ(L"", RestartManagment::GetAppName());
    const ScopedEnvironment environment("TMPDIR", "/somewhere");
    EXPECT_EQ(L"/somewhere/" + User() + L".restart", RestartManagment::GetLockFileName());
}

TEST_F(RestartManagmentTest, TakesTheNameOfTheExecutable)
{
    const std::vector<std::pair<const wchar_t*, const wchar_t*>> rows = {
        {L"/usr/bin/Tool", L"Tool"},
        {L"Tool", L"Tool"},
        {L"/opt/a.b/Tool.exe", L"Tool"},
        {L"tool.bin.exe", L"tool.bin"},
        {L"/usr/bin/", L""},
        {L"", L""},
        {L"/opt/Größe.x", L"Größe"},
        {L"/bin/.hidden", L".hidden"},
    };
    for (const auto& [executable, name] : rows)
    {
        RestartManagment::s_strExecutableFilename = executable;
        EXPECT_EQ(name, RestartManagment::GetAppName()) << UTF8::ToUTF8(executable);
    }
}

TEST_F(RestartManagmentTest, TakesTheFirstTemporaryFolderThatTheEnvironmentNames)
{
    const std::vector<Variables> rows = {
        {"/a", "/b", "/c", L"/a"},    {"", "/b", "/c", L"/b"},
        {nullptr, "/b", "/c", L"/b"}, {nullptr, nullptr, "/c", L"/c"},
        {"", "", "/c", L"/c"},        {nullptr, nullptr, nullptr, L"/tmp"},
        {"", "", "", L"/tmp"},        {"/a/", nullptr, nullptr, L"/a/"},
        {"rel", "/b", "/c", L"rel"},  {"/h\xC3\xA9", "/b", "/c", L"/h\u00e9"},
    };
    for (const Variables& row : rows)
    {
        const ScopedEnvironment tmpdir("TMPDIR", row.tmpdir);
        const ScopedEnvironment tmp("TMP", row.tmp);
        const ScopedEnvironment temp("TEMP", row.temp);
        EXPECT_EQ(row.folder, RestartManagment::GetTempDir());
        EXPECT_EQ(row.folder + (L"/Tool" + User()) + L".restart", RestartManagment::GetLockFileName());
    }
}

TEST_F(RestartManagmentTest, PassesOverATemporaryFolderThatIsNoUTF8)
{
    const ScopedEnvironment tmpdir("TMPDIR", "/h\xE9");
    const ScopedEnvironment tmp("TMP", "/b");
    EXPECT_EQ(L"/b", RestartManagment::GetTempDir());
    const ScopedEnvironment tmpToo("TMP", "\xC0\xAF");
    const ScopedEnvironment temp("TEMP", nullptr);
    EXPECT_EQ(L"/tmp", RestartManagment::GetTempDir());
}

TEST_F(RestartManagmentTest, IsLockedWhileTheFileIsThere)
{
    EXPECT_FALSE(RestartManagment::IsLocked());
    WriteBytes(LockPath(), "");
    EXPECT_TRUE(RestartManagment::IsLocked());
    std::filesystem::remove(LockPath());
    EXPECT_FALSE(RestartManagment::IsLocked());
    EXPECT_EQ(L"", m_record.Text());
}

TEST_F(RestartManagmentTest, RemovesTheLockWithATrace)
{
    WriteBytes(LockPath(), "");
    RestartManagment::RemoveLock();
    EXPECT_FALSE(std::filesystem::exists(LockPath()));
    EXPECT_FALSE(RestartManagment::IsLocked());
    EXPECT_EQ(L"RemoveLock : Remove lock file: " + RestartManagment::GetLockFileName() + L"\n", Traces());
}

TEST_F(RestartManagmentTest, RemovingNoLockWritesNoTrace)
{
    RestartManagment::RemoveLock();
    EXPECT_EQ(L"", m_record.Text());
}

TEST_F(RestartManagmentTest, WritesWholeLogLines)
{
    WriteBytes(LockPath(), "");
    RestartManagment::RemoveLock();
    const std::wregex line(L"2 [0-9]+ : [1-9][0-9]* : RemoveLock : Remove lock file: [^\n]*\n");
    EXPECT_TRUE(std::regex_match(m_record.Text(), line));
}

TEST_F(RestartManagmentTest, TracesItsStart)
{
    EXPECT_TRUE(Activate({L"a", L"-culture", L"fr-FR", L"b"}));
    EXPECT_EQ(L"ActivateRestartProcess : >>> ActivateRestartProcess()\n"
              L"ActivateRestartProcess : <<< ActivateRestartProcess( a b -restart)\n"
              L"ActivateRestartProcess : <<< ActivateRestartProcess()=1\n",
              Traces());
}

TEST_F(RestartManagmentTest, ChoosesTheArgumentsOfTheNewProcess)
{
    const std::vector<std::pair<std::vector<const wchar_t*>, const wchar_t*>> rows = {
        {{}, L"-restart"},
        {{L"a"}, L"a -restart"},
        {{L"a", L"b", L"c"}, L"a b c -restart"},
        {{L"a", L"", L"b"}, L"a b -restart"},
        {{nullptr, L"b"}, L"b -restart"},
        {{L"-restart"}, L"-restart"},
        {{L"-restart", L"a", L"-RESTART", L"-Restart"}, L"a -restart"},
        {{L"restart", L"--restart", L"-restart2"}, L"restart --restart -restart2 -restart"},
        {{L"-culture", L"fr-FR", L"a", L"b"}, L"a b -restart"},
        {{L"a", L"-Culture", L"de", L"b"}, L"a b -restart"},
        {{L"a", L"-culture"}, L"a -restart"},
        {{L"-culture", L"", L"a"}, L"a -restart"},
        {{L"-culture", L"-restart", L"a"}, L"a -restart"},
        {{L"-culture", L"-culture", L"a"}, L"a -restart"},
        {{L"-culture", nullptr, L"a"}, L"a -restart"},
        {{L"-culture", L"fr", L"-culture", L"de"}, L"-restart"},
        {{L"--culture", L"x"}, L"--culture x -restart"},
        {{L"two words", L"\"quoted\""}, L"two words \"quoted\" -restart"},
        {{L" ", L"a "}, L"  a  -restart"},
        {{L"\u65e5\u672c", L"\U0001F600"}, L"\u65e5\u672c \U0001F600 -restart"},
    };
    for (const auto& [arguments, expected] : rows)
    {
        EXPECT_TRUE(Activate(arguments));
        EXPECT_EQ(expected, Arguments());
    }
}

TEST_F(RestartManagmentTest, SurvivesImpossibleArgumentVectors)
{
    const wchar_t* names[] = {L"tool", L"a"};
    const wchar_t* none[] = {nullptr, nullptr};
    const std::vector<std::pair<int, const wchar_t**>> rows = {
        {0, nullptr}, {3, nullptr}, {-1, nullptr}, {-2147483647 - 1, names},
        {0, names},   {1, names},   {2, none},
    };
    for (const auto& [argc, argv] : rows)
    {
        EXPECT_TRUE(Activate(argc, argv)) << argc;
        EXPECT_EQ(L"-restart", Arguments()) << argc;
    }
}

TEST_F(RestartManagmentTest, LeavesAnEmptyLockBehindThoughNothingWasStarted)
{
    EXPECT_TRUE(Activate({}));
    EXPECT_TRUE(RestartManagment::IsLocked());
    EXPECT_TRUE(std::filesystem::is_regular_file(LockPath()));
    EXPECT_EQ(0U, std::filesystem::file_size(LockPath()));
}

TEST_F(RestartManagmentTest, EmptiesALockOfAnEarlierStart)
{
    WriteBytes(LockPath(), "left behind");
    EXPECT_TRUE(Activate({}));
    EXPECT_EQ("", ReadBytes(LockPath()));
    EXPECT_TRUE(RestartManagment::IsLocked());
}

TEST_F(RestartManagmentTest, StartsWithoutALockWhenNoneCanBeMade)
{
    CapturedOutput output(2);
    for (const char* const folder : {"/dev/null", "/dev/null/folder"})
    {
        const ScopedEnvironment environment("TMPDIR", folder);
        EXPECT_TRUE(Activate({}));
        EXPECT_FALSE(RestartManagment::IsLocked());
        EXPECT_EQ(L"-restart", Arguments());
    }
    EXPECT_EQ("", output.Stop());
}

TEST_F(RestartManagmentTest, NeverTouchesWhatIsNoLock)
{
    for (const Planted& planted : s_planted)
    {
        SCOPED_TRACE(planted.what);
        const TemporaryFolder folder;
        const ScopedEnvironment environment("TMPDIR", folder.Path().c_str());
        planted.plant(LockPath(), folder.Path("other"));
        const std::filesystem::file_type type = std::filesystem::symlink_status(LockPath()).type();
        EXPECT_FALSE(RestartManagment::IsLocked());
        EXPECT_TRUE(Activate({}));
        EXPECT_FALSE(RestartManagment::IsLocked());
        m_record.Clear();
        RestartManagment::RemoveLock();
        EXPECT_EQ(L"", m_record.Text());
        EXPECT_EQ(type, std::filesystem::symlink_status(LockPath()).type());
        const bool readable = type != std::filesystem::file_type::fifo;
        EXPECT_EQ(planted.bytes, readable ? ReadBytes(LockPath()) : "");
    }
}

TEST_F(RestartManagmentTest, LockWithAnotherNameCountsButIsNeverEmptied)
{
    MakeOther(m_folder.Path("other"));
    std::filesystem::create_hard_link(m_folder.Path("other"), LockPath());
    EXPECT_TRUE(RestartManagment::IsLocked());
    EXPECT_TRUE(Activate({}));
    EXPECT_EQ("precious", ReadBytes(m_folder.Path("other")));
    RestartManagment::RemoveLock();
    EXPECT_FALSE(RestartManagment::IsLocked());
    EXPECT_EQ("precious", ReadBytes(m_folder.Path("other")));
}

TEST_F(RestartManagmentTest, NeverTouchesAnotherUsersFile)
{
    WriteBytes(LockPath(), "precious");
    std::filesystem::permissions(LockPath(), static_cast<std::filesystem::perms>(0666));
    if (!ToolkitTest::GiveToAnotherUser(LockPath()))
        return;
    EXPECT_FALSE(RestartManagment::IsLocked());
    EXPECT_TRUE(Activate({}));
    m_record.Clear();
    RestartManagment::RemoveLock();
    EXPECT_EQ(L"", m_record.Text());
    EXPECT_EQ("precious", ReadBytes(LockPath()));
}

TEST_F(RestartManagmentTest, HandOverOnlyWritesToTheLog)
{
    EXPECT_FALSE(RestartManagment::WaitingForPreviousProcessFinish());
    EXPECT_EQ(L"WaitingForPreviousProcessFinish : >>> WaitingForPreviousProcessFinish()\n"
              L"WaitingForPreviousProcessFinish : <<< WaitingForPreviousProcessFinish()\n",
              Traces());
    m_record.Clear();
    EXPECT_FALSE(RestartManagment::RestartProcessFinish());
    EXPECT_EQ(L"RestartProcessFinish : >>> RestartProcessFinish()\n"
              L"RestartProcessFinish : <<< RestartProcessFinish()=0\n",
              Traces());
}

TEST_F(RestartManagmentTest, LocksBeforeItStartsTheNewProcess)
{
    // Notes whether the lock is there whenever a line ends.
    class LockLogger : public ILogger
    {
    public:
        explicit LockLogger(std::vector<bool>& locked) : ILogger(LogSeverity::Info), m_locked(locked) {}
        void Write(const Wide& text) override
        {
            if (!text.empty() && text[text.size() - 1] == L'\n')
                m_locked.push_back(RestartManagment::IsLocked());
        }

    private:
        std::vector<bool>& m_locked;
    };
    std::vector<bool> locked;
    ILogger::SetLogger(smart_ptr<ILogger>(new LockLogger(locked)));
    EXPECT_TRUE(Activate({}));
    // The last but one is written before the new process is started.
    EXPECT_EQ((std::vector<bool>{false, true, true}), locked);
}

TEST_F(RestartManagmentTest, TracesAreOfTheSeverityInfo)
{
    ILogger::SetLogger(smart_ptr<ILogger>(new RecordingLogger(m_record, LogSeverity::Warning)));
    WriteBytes(LockPath(), "");
    RestartManagment::RemoveLock();
    RestartManagment::RestartProcessFinish();
    EXPECT_EQ(L"", m_record.Text());
    EXPECT_FALSE(RestartManagment::IsLocked());
}

TEST(RestartManagment, NeedsNeitherLoggerNorInstance)
{
    const TemporaryFolder folder;
    const ScopedEnvironment environment("TMPDIR", folder.Path().c_str());
    WriteBytes(UTF8::ToUTF8(RestartManagment::GetLockFileName()), "");
    RestartManagment::RemoveLock();
    EXPECT_FALSE(RestartManagment::IsLocked());
    EXPECT_FALSE(RestartManagment::WaitingForPreviousProcessFinish());
    EXPECT_FALSE(RestartManagment::RestartProcessFinish());
    EXPECT_EQ(nullptr, RestartManagment::s_pInstance);
}
