// SPDX-License-Identifier: MIT
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>
#include <utility>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/files/Settings.h"
#include "toolkit/files/WholeFile.h"

using Toolkit::Result;
using Toolkit::Settings;
using ToolkitTest::ChildAnswer;
using ToolkitTest::TemporaryFolder;

namespace
{

// What an operation on a file must say that the system does not let through: "read: REASON" or "write:
// REASON", after what it failed to do to the file; "" where it succeeds.
using Says = const char*;

struct Row
{
    Says m_readFile;
    Says m_writeFile;
    Says m_load;
    Says m_loadOrNew;
    Says m_save;
};

const auto s_nothing = [] {};

// Compares a result with what it must be. The text of what is wrong, empty when nothing is.
template <class T>
std::string Check(const char* operation, const Result<T>& result, const std::string& path, std::errc code,
                  const std::string& says)
{
    if (says.empty())
        return result ? "" : std::string(operation) + ": " + result.error().Message();
    if (result)
        return std::string(operation) + " succeeded";
    const std::size_t colon = says.find(':');
    const std::string message =
        "cannot " + says.substr(0, colon) + (path.empty() ? "" : " ") + path + says.substr(colon);
    if (result.error().Message() != message)
        return std::string(operation) + ": " + result.error().Message();
    return result.error().Code() == code ? "" : std::string(operation) + " has another code";
}

// Settings that were loaded, or made, while nothing was wrong yet, and have something to save.
Settings Changed(const std::string& path)
{
    Settings settings = Settings::LoadOrNew(path).value();
    settings.Set("a", "b", std::string(100000, 'x')).value();
    return settings;
}

// Every operation on one file, after `spoil` made it impossible and before `mend` undoes that. `Save` comes
// first: it may say that another program changed the file, if one of the others did.
std::string CheckAll(const std::string& path, std::errc code, const Row& row,
                     const std::function<void()>& spoil, const std::function<void()>& mend = s_nothing)
{
    Settings settings = Changed(path);
    spoil();
    const Result<void> saved = settings.Save();
    const Result<void> written = Toolkit::WriteFile(path, std::string(100000, 'x'));
    const Result<std::string> read = Toolkit::ReadFile(path);
    const Result<Settings> loaded = Settings::Load(path);
    const Result<Settings> loadedOrNew = Settings::LoadOrNew(path);
    mend();
    const std::string found[] = {
        Check("Save", saved, path, code, row.m_save),
        Check("WriteFile", written, path, code, row.m_writeFile),
        Check("ReadFile", read, path, code, row.m_readFile),
        Check("Load", loaded, path, code, row.m_load),
        Check("LoadOrNew", loadedOrNew, path, code, row.m_loadOrNew),
    };
    for (const std::string& wrong : found)
        if (!wrong.empty())
            return wrong;
    return "";
}

// How many descriptors the process may have, for a while.
void LimitDescriptors(rlim_t most)
{
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = most;
    setrlimit(RLIMIT_NOFILE, &limit);
}

void MakeReadable(const TemporaryFolder& folder)
{
    ASSERT_EQ(0, chmod(folder.Path().c_str(), 0755));
    ToolkitTest::WriteBytes(folder.Path("a.ini"), "[a]\n");
    ASSERT_EQ(0, chmod(folder.Path("a.ini").c_str(), 0644));
}

} // namespace

TEST(FailureReasons, OfAMissingFile)
{
    const TemporaryFolder folder;
    const char* const missing = "read: No such file or directory";
    EXPECT_EQ("", Check("ReadFile", Toolkit::ReadFile(folder.Path("a")), folder.Path("a"),
                        std::errc::no_such_file_or_directory, missing));
    EXPECT_EQ("", Check("Load", Settings::Load(folder.Path("a/b")), folder.Path("a/b"),
                        std::errc::no_such_file_or_directory, missing));
    EXPECT_EQ("", Check("LoadOrNew", Settings::LoadOrNew(folder.Path("a/b")), folder.Path("a/b"),
                        std::errc::no_such_file_or_directory, ""));
    // Nothing is made for a file without a name.
    const char* const nameless = "write: No such file or directory";
    EXPECT_EQ("", Check("WriteFile", Toolkit::WriteFile("", "new"), "", std::errc::no_such_file_or_directory,
                        nameless));
}

TEST(FailureReasons, OfAFileThatMayNotBeRead)
{
    const TemporaryFolder folder;
    MakeReadable(folder);
    const std::string path = folder.Path("a.ini");
    ASSERT_EQ(0, chmod(path.c_str(), 0));
    EXPECT_TRUE(ToolkitTest::AsNobody(
        [&]() -> ChildAnswer
        {
            const char* const denied = "read: Permission denied";
            const std::string found[] = {
                Check("ReadFile", Toolkit::ReadFile(path), path, std::errc::permission_denied, denied),
                Check("Load", Settings::Load(path), path, std::errc::permission_denied, denied),
                Check("LoadOrNew", Settings::LoadOrNew(path), path, std::errc::permission_denied, denied),
            };
            return found[0] + found[1] + found[2];
        }));
    ASSERT_EQ(0, chmod(path.c_str(), 0644));
}

TEST(FailureReasons, OfAFileThatMayNotBeWritten)
{
    const TemporaryFolder folder;
    MakeReadable(folder);
    if (geteuid() != 0)
    {
        ASSERT_EQ(0, chmod(folder.Path("a.ini").c_str(), 0444));
    }
    const char* const denied = "write: Permission denied";
    EXPECT_TRUE(ToolkitTest::AsNobody(
        [&]() -> ChildAnswer
        {
            return CheckAll(folder.Path("a.ini"), std::errc::permission_denied, {"", denied, "", "", denied},
                            s_nothing);
        }));
    EXPECT_EQ("[a]\n", ToolkitTest::ReadBytes(folder.Path("a.ini")));
}

TEST(FailureReasons, OfAFolderThatMayNotBeWrittenTo)
{
    const TemporaryFolder folder;
    ASSERT_EQ(0, chmod(folder.Path().c_str(), 0555));
    const std::string path = folder.Path("new.ini");
    EXPECT_TRUE(ToolkitTest::AsNobody(
        [&]() -> ChildAnswer
        {
            const char* const missing = "read: No such file or directory";
            const std::string load =
                Check("Load", Settings::Load(path), path, std::errc::no_such_file_or_directory, missing);
            const char* const denied = "write: Permission denied";
            const std::string write = Check("WriteFile", Toolkit::WriteFile(path, "new"), path,
                                            std::errc::permission_denied, denied);
            const std::string save =
                Check("Save", Changed(path).Save(), path, std::errc::permission_denied, denied);
            return load + write + save;
        }));
    ASSERT_EQ(0, chmod(folder.Path().c_str(), 0755));
}

TEST(FailureReasons, OfAFolderInPlaceOfTheFile)
{
    const TemporaryFolder folder;
    const char* const read = "read: Is a directory";
    EXPECT_EQ("", CheckAll(folder.Path("a.ini"), std::errc::is_a_directory,
                           {read, "write: Is a directory", read, read, read},
                           [&] { std::filesystem::create_directory(folder.Path("a.ini")); }));
}

TEST(FailureReasons, OfAFileInPlaceOfAFolder)
{
    const TemporaryFolder folder;
    const char* const read = "read: Not a directory";
    EXPECT_EQ("", CheckAll(folder.Path("a/a.ini"), std::errc::not_a_directory,
                           {read, "write: Not a directory", read, read, read},
                           [&] { ToolkitTest::WriteBytes(folder.Path("a"), ""); }));
}

TEST(FailureReasons, OfLinksInACircle)
{
    const TemporaryFolder folder;
    const char* const read = "read: Too many levels of symbolic links";
    EXPECT_EQ("", CheckAll(folder.Path("a.ini"), std::errc::too_many_symbolic_link_levels,
                           {read, "write: Too many levels of symbolic links", read, read, read},
                           [&] { std::filesystem::create_symlink("a.ini", folder.Path("a.ini")); }));
}

TEST(FailureReasons, OfANameThatIsTooLong)
{
    const TemporaryFolder folder;
    const char* const read = "read: File name too long";
    EXPECT_EQ(
        "", CheckAll(folder.Path("a.ini"), std::errc::filename_too_long,
                     {read, "write: File name too long", read, read, read},
                     [&] { std::filesystem::create_symlink(std::string(300, 'n'), folder.Path("a.ini")); }));
}

TEST(FailureReasons, OfAFullDisk)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(ToolkitTest::OnSmallDisk(
        folder.Path(), 64,
        [&]() -> ChildAnswer
        {
            ToolkitTest::WriteBytes(folder.Path("a.ini"), "[a]\n");
            const char* const full = "write: No space left on device";
            const std::string wrong = CheckAll(folder.Path("a.ini"), std::errc::no_space_on_device,
                                               {"", full, "", "", full}, s_nothing);
            return wrong.empty() && ToolkitTest::ReadBytes(folder.Path("a.ini")) != "[a]\n"
                       ? "the file is another"
                       : wrong;
        }));
}

TEST(FailureReasons, OfADiskThatIsReadOnly)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(ToolkitTest::OnSmallDisk(
        folder.Path(), 64,
        [&]() -> ChildAnswer
        {
            ToolkitTest::WriteBytes(folder.Path("a.ini"), "[a]\n");
            const char* const denied = "write: Read-only file system";
            return CheckAll(folder.Path("a.ini"), std::errc::read_only_file_system,
                            {"", denied, "", "", denied},
                            [&] { EXPECT_TRUE(ToolkitTest::RemountSmallDisk(folder.Path(), true)); });
        }));
}

TEST(FailureReasons, OfAProcessWithoutADescriptorLeft)
{
    const TemporaryFolder folder;
    ToolkitTest::WriteBytes(folder.Path("a.ini"), "[a]\n");
    EXPECT_TRUE(ToolkitTest::InChild(
        [&]() -> ChildAnswer
        {
            // A sanitizer that meets a type for the first time looks at it through a pipe: let it be now.
            const char* const folderRead = "read: Is a directory";
            const std::string before =
                CheckAll(folder.Path("b.ini"), std::errc::is_a_directory,
                         {folderRead, "write: Is a directory", folderRead, folderRead, folderRead},
                         [&] { std::filesystem::create_directory(folder.Path("b.ini")); });
            const char* const read = "read: Too many open files";
            return before + CheckAll(
                                folder.Path("a.ini"), std::errc::too_many_files_open,
                                {read, "write: Too many open files", read, read, read},
                                [] { LimitDescriptors(3); }, [] { LimitDescriptors(100); });
        }));
}
