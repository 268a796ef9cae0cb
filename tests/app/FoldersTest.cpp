// SPDX-License-Identifier: MIT
#include "toolkit/app/Folders.h"

#include <cstdlib>
#include <filesystem>
#include <list>
#include <string>

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"

using Toolkit::Folders;
using Toolkit::Result;
using ToolkitTest::ScopedEnvironment;

namespace fs = std::filesystem;

namespace
{

const char* const c_strVariables[] = {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME",
                                      "XDG_RUNTIME_DIR"};

// A home of its own, and none of the variables.
class FoldersTest : public testing::Test
{
protected:
    FoldersTest()
    {
        for (const char* const variable : c_strVariables)
            m_environment.emplace_back(variable, nullptr);
        m_environment.emplace_back("HOME", m_home.Path().c_str());
    }

    fs::path Home() const { return m_home.Path(); }
    void Set(const char* variable, const std::string& value)
    {
        m_environment.emplace_back(variable, value.c_str());
    }
    void Unset(const char* variable) { m_environment.emplace_back(variable, nullptr); }

private:
    const ToolkitTest::TemporaryFolder m_home;
    std::list<ScopedEnvironment> m_environment;
};

} // namespace

TEST_F(FoldersTest, LieInTheHomeFolderUnlessTheEnvironmentSaysOtherwise)
{
    const Result<Folders> folders = Folders::Of("watch");
    ASSERT_TRUE(folders) << folders.error().Message();

    EXPECT_EQ(folders->Config(), Home() / ".config/watch");
    EXPECT_EQ(folders->Data(), Home() / ".local/share/watch");
    EXPECT_EQ(folders->State(), Home() / ".local/state/watch");
    EXPECT_EQ(folders->Cache(), Home() / ".cache/watch");
    EXPECT_TRUE(fs::is_empty(Home())) << "something was made";
}

TEST_F(FoldersTest, LieWhereTheEnvironmentSays)
{
    for (const char* const variable : c_strVariables)
        Set(variable, (Home() / variable).string());
    Unset("HOME");
    const Result<Folders> folders = Folders::Of("org.example.Watch");
    ASSERT_TRUE(folders) << folders.error().Message();

    EXPECT_EQ(folders->Config(), Home() / "XDG_CONFIG_HOME/org.example.Watch");
    EXPECT_EQ(folders->Data(), Home() / "XDG_DATA_HOME/org.example.Watch");
    EXPECT_EQ(folders->State(), Home() / "XDG_STATE_HOME/org.example.Watch");
    EXPECT_EQ(folders->Cache(), Home() / "XDG_CACHE_HOME/org.example.Watch");
    EXPECT_EQ(folders->Runtime(), Home() / "XDG_RUNTIME_DIR/org.example.Watch");
    EXPECT_TRUE(fs::is_empty(Home())) << "something was made";
}

TEST_F(FoldersTest, TakeNoRelativeAndNoEmptyValue)
{
    Set("XDG_CONFIG_HOME", "relative/config");
    Set("XDG_DATA_HOME", "");
    Set("XDG_RUNTIME_DIR", "./run");
    const Result<Folders> folders = Folders::Of("watch");
    ASSERT_TRUE(folders);

    EXPECT_EQ(folders->Config(), Home() / ".config/watch");
    EXPECT_EQ(folders->Data(), Home() / ".local/share/watch");
    EXPECT_TRUE(folders->Runtime().is_absolute());
}

TEST_F(FoldersTest, AskTheSystemWithoutHome)
{
    const passwd* const entry = getpwuid(geteuid());
    if (entry == nullptr || *entry->pw_dir != '/')
        GTEST_SKIP() << "this user has no home folder in the system's list";
    const fs::path listed = entry->pw_dir;
    for (const char* const home : {"", "relative"})
    {
        Set("HOME", home);
        EXPECT_EQ(Folders::Of("watch")->Config(), listed / ".config/watch") << home;
    }
    Unset("HOME");
    EXPECT_EQ(Folders::Of("watch")->Config(), listed / ".config/watch");
}

TEST_F(FoldersTest, SayThatThereIsNoHomeAtAll)
{
    EXPECT_TRUE(ToolkitTest::InChild(
        []() -> ToolkitTest::ChildAnswer
        {
            const uid_t nobodys = 54321;
            if (getpwuid(nobodys) != nullptr || setresuid(nobodys, nobodys, nobodys) != 0)
                return ToolkitTest::NotAllowed("to become a user that the system does not know");
            unsetenv("HOME");
            const Result<Folders> folders = Folders::Of("watch");
            if (folders)
                return "there are folders";
            if (folders.error().Code() != std::errc::no_such_file_or_directory)
                return folders.error().Code().message();
            return folders.error().Message() ==
                           "cannot find the home folder of user 54321: No such file or directory"
                       ? ""
                       : folders.error().Message().c_str();
        }));
}

TEST_F(FoldersTest, SayThatTheSystemCouldNotBeAsked)
{
    EXPECT_TRUE(ToolkitTest::InChild(
        []() -> ToolkitTest::ChildAnswer
        {
            unsetenv("HOME");
            // A sanitizer that meets a type for the first time looks at it through a pipe: let it be now.
            if (Folders::Of("") || !Folders::Of("other"))
                return "the list of users cannot be read";
            rlimit before = {};
            getrlimit(RLIMIT_NOFILE, &before);
            const rlimit none = {3, before.rlim_max};
            setrlimit(RLIMIT_NOFILE, &none);
            const Result<Folders> folders = Folders::Of("watch");
            setrlimit(RLIMIT_NOFILE, &before);
            if (folders)
                return "there are folders";
            if (folders.error().Code() != std::errc::too_many_files_open)
                return folders.error().Code().message();
            const std::string user = std::to_string(geteuid());
            return folders.error().Message() ==
                           "cannot find the home folder of user " + user + ": Too many open files"
                       ? ""
                       : folders.error().Message();
        }));
}

TEST_F(FoldersTest, TakeNoRuntimeFolderInWhichOthersWrite)
{
    const fs::path folder = Home() / "run";
    fs::create_directory(folder);
    ASSERT_EQ(chmod(folder.c_str(), 0700), 0);
    Set("XDG_RUNTIME_DIR", folder.string());
    EXPECT_EQ(Folders::Of("watch")->Runtime(), folder / "watch");

    for (const mode_t mode : {0720U, 0702U, 0777U})
    {
        ASSERT_EQ(chmod(folder.c_str(), mode), 0);
        const fs::path runtime = Folders::Of("watch")->Runtime();
        EXPECT_NE(runtime, folder / "watch") << mode;
        const fs::path usual = "/run/user/" + std::to_string(geteuid());
        EXPECT_TRUE(runtime == usual / "watch" || runtime == Home() / ".cache/watch/runtime") << runtime;
    }
}

TEST_F(FoldersTest, TakeNoRuntimeFolderOfAnotherUser)
{
    const fs::path folder = Home() / "run";
    fs::create_directory(folder);
    if (!ToolkitTest::GiveToAnotherUser(folder.string()))
        return;
    Set("XDG_RUNTIME_DIR", folder.string());
    EXPECT_NE(Folders::Of("watch")->Runtime(), folder / "watch");
}

TEST_F(FoldersTest, TakeNoRuntimeFolderThatIsAFile)
{
    ToolkitTest::WriteBytes((Home() / "run").string(), "");
    Set("XDG_RUNTIME_DIR", (Home() / "run").string());
    EXPECT_NE(Folders::Of("watch")->Runtime(), Home() / "run/watch");
}

TEST_F(FoldersTest, KeepNamesThatAreNoUtf8)
{
    Set("XDG_CONFIG_HOME", "/tmp/gr\xFC");
    EXPECT_EQ(Folders::Of("watch")->Config().native(), "/tmp/gr\xFC/watch");
}

TEST_F(FoldersTest, HaveAPlainName)
{
    const std::pair<std::string, const char*> rows[] = {
        {"", "cannot name a folder \"\": it is empty"},
        {".", "cannot name a folder \".\": it stands for another folder"},
        {"..", "cannot name a folder \"..\": it stands for another folder"},
        {"a/b", "cannot name a folder \"a/b\": it has a slash"},
        {"/", "cannot name a folder \"/\": it has a slash"},
        {std::string("a\0b", 3), "cannot name a folder \"a?b\": it has a control character"},
        {"a\n", "cannot name a folder \"a?\": it has a control character"},
    };
    for (const auto& [name, message] : rows)
    {
        const Result<Folders> folders = Folders::Of(name);
        ASSERT_FALSE(folders) << name;
        EXPECT_EQ(folders.error().Code(), std::errc::invalid_argument);
        EXPECT_EQ(folders.error().Message(), message);
    }
    EXPECT_FALSE(Folders::Of(std::string(256, 'a')));
    EXPECT_TRUE(Folders::Of(std::string(255, 'a')));
    EXPECT_TRUE(Folders::Of("Gr\u00f6\u00dfe und mehr"));
}

TEST_F(FoldersTest, StayAsTheyWereFoundOut)
{
    Result<Folders> folders = Folders::Of("watch");
    Folders copy = *folders;
    Set("XDG_CONFIG_HOME", "/elsewhere");
    EXPECT_EQ(copy.Config(), Home() / ".config/watch");
    copy = *Folders::Of("watch");
    EXPECT_EQ(copy.Config(), "/elsewhere/watch");
    EXPECT_EQ(folders->Config(), Home() / ".config/watch");
}

TEST_F(FoldersTest, KnowTheRunningExecutable)
{
    EXPECT_EQ(Folders::Executable(), fs::read_symlink("/proc/self/exe"));
    EXPECT_EQ(Folders::Executable().filename(), "test_app");
}
