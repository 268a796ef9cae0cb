// SPDX-License-Identifier: MIT
#include "toolkit/files/Directory.h"

#include <algorithm>
#include <climits>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/dir.h>

#include "tests/support/InChild.h"
#include "tests/support/Resources.h"
#include "tests/support/ScopedLocale.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/encoding/UTF8.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;
using Toolkit::Directory;
using Toolkit::PathManager;
using Toolkit::smart_ptr;
using Toolkit::TString;
using ToolkitTest::AsNobody;
using ToolkitTest::CapturedOutput;
using ToolkitTest::OpenDescriptors;
using ToolkitTest::ScopedLocale;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

using Names = std::vector<TString<wchar_t>>;

const std::wstring s_strZero(1, L'\0');

Names Files(const Directory& directory, const TString<wchar_t>& filter)
{
    Names names = {L"before"};
    directory.GetFiles(filter, names);
    return names;
}

Names Folders(const Directory& directory, const TString<wchar_t>& filter)
{
    Names names = {L"before"};
    directory.GetDirectories(filter, names);
    return names;
}

Names Both(const TString<wchar_t>& folder, const TString<wchar_t>& filter)
{
    Names names = {L"before"};
    Directory::EnumFilePaths(names, folder, filter);
    return names;
}

void MakeFolder(const std::string& path)
{
    ASSERT_TRUE(std::filesystem::create_directory(path)) << path;
}

// Stands in for the library's own instance while it lives.
class OwnPathManager
{
public:
    explicit OwnPathManager(PathManager* manager) : m_manager(manager), m_pBefore(PathManager::s_pInstance)
    {
        PathManager::s_pInstance = &m_manager;
    }
    ~OwnPathManager() { PathManager::s_pInstance = m_pBefore; }
    OwnPathManager(const OwnPathManager&) = delete;
    OwnPathManager& operator=(const OwnPathManager&) = delete;

private:
    smart_ptr<PathManager> m_manager;
    smart_ptr<PathManager>* const m_pBefore;
};

TEST(Directory, FilterPicksFilesOnly)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("a.ini"), "");
    WriteBytes(folder.Path("b.txt"), "");
    MakeFolder(folder.Path("c.ini"));
    EXPECT_THAT(Files(Directory(folder.Wide()), L"*.ini"), ElementsAre(L"a.ini"));
}

TEST(Directory, FilterPicksFoldersOnly)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("a.ini"), "");
    MakeFolder(folder.Path("b"));
    MakeFolder(folder.Path("c.ini"));
    EXPECT_THAT(Folders(Directory(folder.Wide()), L"*.ini"), ElementsAre(L"c.ini"));
}

TEST(Directory, EnumFilePathsGivesFilesAndFoldersWithoutPaths)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "");
    MakeFolder(folder.Path("folder"));
    WriteBytes(folder.Path("folder/below"), "");
    EXPECT_THAT(Both(folder.Wide(), L""), UnorderedElementsAre(L"file", L"folder"));
    EXPECT_THAT(Both(folder.Wide() + L"/", L"*"), UnorderedElementsAre(L"file", L"folder"));
}

TEST(Directory, FiltersByWildcards)
{
    const TemporaryFolder folder;
    for (const char* name :
         {"a", "b", "ab", "a.b", "a.b.c", "A", ".hidden", "a*", "a\\b", "[ab]", "\xC3\xA9"})
        WriteBytes(folder.Path(name), "");
    struct Row
    {
        TString<wchar_t> filter;
        Names names;
    };
    const Names all = {L"a", L"b", L"ab", L"a.b", L"a.b.c", L"A", L"a*", L"a\\b", L"[ab]", L"\xE9"};
    const Row rows[] = {
        {L"", all},
        {L"*", all},
        {L"**", all},
        {L"*.*", {L"a.b", L"a.b.c"}},
        {L"*.b", {L"a.b"}},
        {L"*.c", {L"a.b.c"}},
        {L"a", {L"a"}},
        {L"?", {L"a", L"b", L"A", L"\xE9"}},
        {L"??", {L"ab", L"a*"}},
        {L"a*", {L"a", L"ab", L"a.b", L"a.b.c", L"a*", L"a\\b"}},
        {L"a?b", {L"a.b", L"a\\b"}},
        {L"*b*", {L"b", L"ab", L"a.b", L"a.b.c", L"a\\b", L"[ab]"}},
        {L"[ab]", {L"[ab]"}},
        {L"\xE9*", {L"\xE9"}},
        {L".*", {}},
        {L".hidden", {}},
        {L"missing", {}},
        {L"a\\*", {L"a*"}},
        {L"a\\\\b", {L"a\\b"}},
        {L"a" + s_strZero, {}},
        {s_strZero, {}},
    };
    for (const Row& row : rows)
        EXPECT_THAT(Files(Directory(folder.Wide()), row.filter), UnorderedElementsAreArray(row.names))
            << row.filter.c_str();
}

TEST(Directory, NeverListsHiddenEntries)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path(".file"), "");
    MakeFolder(folder.Path(".folder"));
    for (const wchar_t* filter : {L"", L"*", L".*", L".f*", L"*.*"})
    {
        EXPECT_THAT(Files(Directory(folder.Wide()), filter), IsEmpty()) << filter;
        EXPECT_THAT(Folders(Directory(folder.Wide()), filter), IsEmpty()) << filter;
        EXPECT_THAT(Both(folder.Wide(), filter), IsEmpty()) << filter;
    }
}

TEST(Directory, ListsNothingOfWhatIsNoFolder)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "");
    ASSERT_EQ(0, mkfifo(folder.Path("fifo").c_str(), 0600));
    const TString<wchar_t> paths[] = {
        folder.Wide("missing"),
        folder.Wide("file"),
        folder.Wide("fifo"),
        folder.Wide() + s_strZero,
        folder.Wide() + static_cast<wchar_t>(0xD800),
    };
    for (const TString<wchar_t>& path : paths)
    {
        EXPECT_THAT(Files(Directory(path), L""), IsEmpty());
        EXPECT_THAT(Folders(Directory(path), L""), IsEmpty());
        EXPECT_THAT(Both(path, L""), IsEmpty());
    }
    EXPECT_THAT(Both(L"", L""), IsEmpty());
}

TEST(Directory, ListsNothingThatTheUserMayNotSee)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "");
    EXPECT_THAT(Both(folder.Wide(), L""), ElementsAre(L"file"));
    ASSERT_EQ(0, chmod(folder.Path().c_str(), 0300));
    EXPECT_TRUE(AsNobody([&] { return geteuid() != 0 && Both(folder.Wide(), L"").empty(); }));
    ASSERT_EQ(0, chmod(folder.Path().c_str(), 0700));
}

TEST(Directory, TakesLinksForWhatTheyLeadTo)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "");
    MakeFolder(folder.Path("folder"));
    std::filesystem::create_symlink("file", folder.Path("toFile"));
    std::filesystem::create_symlink("folder", folder.Path("toFolder"));
    std::filesystem::create_symlink("nowhere", folder.Path("dangling"));
    std::filesystem::create_symlink("circle", folder.Path("circle"));
    ASSERT_EQ(0, mkfifo(folder.Path("fifo").c_str(), 0600));
    EXPECT_THAT(Files(Directory(folder.Wide()), L""),
                UnorderedElementsAre(L"file", L"toFile", L"dangling", L"circle", L"fifo"));
    EXPECT_THAT(Folders(Directory(folder.Wide()), L""), UnorderedElementsAre(L"folder", L"toFolder"));
}

TEST(Directory, ListsWhatWxWidgetsListsInItsOrder)
{
    const TemporaryFolder folder;
    for (int i = 0; i < 50; ++i)
    {
        WriteBytes(folder.Path("file" + std::to_string(i)), "");
        MakeFolder(folder.Path("folder." + std::to_string(i)));
    }
    std::filesystem::create_symlink("file1", folder.Path("toFile"));
    std::filesystem::create_symlink("folder.1", folder.Path("toFolder"));
    std::filesystem::create_symlink("nowhere", folder.Path("dangling"));
    ASSERT_EQ(0, mkfifo(folder.Path("fifo").c_str(), 0600));
    WriteBytes(folder.Path(".hidden"), "");
    WriteBytes(folder.Path("\xC3\xA9\xE6\x97\xA5"), "");

    const ScopedLocale locale("C.UTF-8");
    for (const wchar_t* filter : {L"", L"*", L"*.*", L"f*1", L"?????", L"missing"})
        for (const int kinds : {1, 2, 3})
        {
            Names expected;
            wxDir directory(wxString::FromUTF8(folder.Path().c_str()));
            wxString name;
            for (bool more = directory.GetFirst(&name, filter, kinds); more; more = directory.GetNext(&name))
                expected.push_back(name.ToStdWstring());
            const Names names = kinds == 1   ? Files(Directory(folder.Wide()), filter)
                                : kinds == 2 ? Folders(Directory(folder.Wide()), filter)
                                             : Both(folder.Wide(), filter);
            EXPECT_EQ(expected, names) << filter << kinds;
        }
}

TEST(Directory, ListsNamesBeyondAsciiWhateverTheLocale)
{
    const TemporaryFolder folder;
    MakeFolder(folder.Path("\xE6\x97\xA5"));
    WriteBytes(folder.Path("\xE6\x97\xA5/\xC3\xA9"), "");
    WriteBytes(folder.Path("\xE6\x97\xA5/\xF0\x9F\x98\x80.txt"), "");
    EXPECT_THAT(Files(Directory(folder.Wide() + L"/\x65E5"), L""),
                UnorderedElementsAre(L"\xE9", L"\x1F600.txt"));
}

TEST(Directory, NameThatIsNotUtf8HidesNoOther)
{
    const TemporaryFolder folder;
    for (const char* name : {"a", "b", "bad\xFF", "\xC0\xAF", "z"})
        WriteBytes(folder.Path(name), "");
    EXPECT_THAT(Files(Directory(folder.Wide()), L""), UnorderedElementsAre(L"a", L"b", L"z"));
    EXPECT_THAT(Both(folder.Wide(), L"*"), UnorderedElementsAre(L"a", L"b", L"z"));
}

TEST(Directory, ListsThousandsOfEntries)
{
    const TemporaryFolder folder;
    Names expected;
    for (int i = 0; i < 3000; ++i)
    {
        WriteBytes(folder.Path(std::to_string(i)), "");
        expected.push_back(std::to_wstring(i));
    }
    Names names = Files(Directory(folder.Wide()), L"");
    std::sort(names.begin(), names.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(expected, names);
}

TEST(Directory, ArgumentsMayBeElementsOfTheNames)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("a.ini"), "");
    Names names = {folder.Wide(), L"*.ini"};
    Directory::EnumFilePaths(names, names[0], names[1]);
    EXPECT_THAT(names, ElementsAre(L"a.ini"));
    names = {L"*.ini"};
    Directory(folder.Wide()).GetFiles(names[0], names);
    EXPECT_THAT(names, ElementsAre(L"a.ini"));
}

TEST(Directory, EmptyPathIsTheApplicationFolder)
{
    const OwnPathManager manager(new PathManager);
    const std::string program = std::filesystem::read_symlink("/proc/self/exe");
    const TString<wchar_t> name = Toolkit::UTF8::ToUNICODE(program.substr(program.rfind('/') + 1));
    EXPECT_THAT(Files(Directory(L""), name), ElementsAre(name));
}

TEST(Directory, EmptyPathIsReadWhenTheDirectoryIsMade)
{
    TString<wchar_t> folder;
    const auto make = [&]
    {
        const OwnPathManager manager(new PathManager);
        folder = (*PathManager::s_pInstance)->GetApplicationPath();
        return Directory(L"");
    };
    const Directory directory = make();
    EXPECT_EQ(Both(folder, L""),
              [&]
              {
                  Names names = Files(directory, L"");
                  const Names folders = Folders(directory, L"");
                  const Names both = Both(folder, L"");
                  names.insert(names.end(), folders.begin(), folders.end());
                  EXPECT_THAT(names, UnorderedElementsAreArray(both));
                  return both;
              }());
}

TEST(Directory, EmptyPathWithoutAPathManagerListsNothing)
{
    ASSERT_EQ(nullptr, PathManager::s_pInstance);
    EXPECT_THAT(Files(Directory(L""), L""), IsEmpty());
    const OwnPathManager none(nullptr);
    EXPECT_THAT(Files(Directory(L""), L""), IsEmpty());
    EXPECT_THAT(Folders(Directory(L""), L""), IsEmpty());
}

TEST(Directory, OnlyAFolderExists)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "");
    MakeFolder(folder.Path("\xE6\x97\xA5"));
    std::filesystem::create_symlink(".", folder.Path("link"));
    std::filesystem::create_symlink("nowhere", folder.Path("dangling"));
    EXPECT_TRUE(Directory::Exist(folder.Wide()));
    EXPECT_TRUE(Directory::Exist(folder.Wide() + L"/"));
    EXPECT_TRUE(Directory::Exist(folder.Wide() + L"/\x65E5"));
    EXPECT_TRUE(Directory::Exist(folder.Wide("link")));
    EXPECT_TRUE(Directory::Exist(L"/"));
    EXPECT_TRUE(Directory::Exist(L"."));
    EXPECT_FALSE(Directory::Exist(folder.Wide("file")));
    EXPECT_FALSE(Directory::Exist(folder.Wide("dangling")));
    EXPECT_FALSE(Directory::Exist(folder.Wide("missing")));
    EXPECT_FALSE(Directory::Exist(L""));
    EXPECT_FALSE(Directory::Exist(folder.Wide() + s_strZero));
    EXPECT_FALSE(Directory::Exist(folder.Wide() + static_cast<wchar_t>(0xD800)));
}

TEST(Directory, CreatesEveryMissingParent)
{
    const TemporaryFolder folder;
    MakeFolder(folder.Path("a"));
    EXPECT_TRUE(Directory::Create(folder.Wide("a/b/c")));
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path("a/b/c")));
}

TEST(Directory, CreatesWhateverFormThePathHas)
{
    struct Row
    {
        const wchar_t* path;
        const char* made;
    };
    const Row rows[] = {
        {L"/new", "new"},
        {L"/new/", "new"},
        {L"//new//below//", "new/below"},
        {L"/./new/.", "new"},
        {L"/new/../other", "other"},
        {L"/\x65E5/\xE9", "\xE6\x97\xA5/\xC3\xA9"},
        {L"/with space", "with space"},
    };
    for (const Row& row : rows)
    {
        const TemporaryFolder folder;
        EXPECT_TRUE(Directory::Create(folder.Wide() + row.path)) << row.path;
        EXPECT_TRUE(std::filesystem::is_directory(folder.Path(row.made))) << row.path;
    }
}

TEST(Directory, CreatesParentsUpToTheLengthOfAPath)
{
    const TemporaryFolder folder;
    std::string below;
    while (folder.Path().size() + below.size() + 20 < PATH_MAX)
        below += below.size() % 7 == 0 ? "//a folder" : "/a folder";
    EXPECT_TRUE(Directory::Create(folder.Wide(below)));
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path(below)));
    EXPECT_FALSE(Directory::Create(folder.Wide(below + "/another folder/d")));
}

TEST(Directory, CreatesNoParentOfANameThatIsTooLong)
{
    const TemporaryFolder folder;
    EXPECT_FALSE(Directory::Create(folder.Wide("new/" + std::string(300, 'x') + "/below")));
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(Directory, CreatesARelativePathInTheWorkingFolder)
{
    const TemporaryFolder folder;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    EXPECT_TRUE(Directory::Create(L"new/below"));
    std::filesystem::current_path(before);
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path("new/below")));
}

TEST(Directory, CreatesNothingInAWorkingFolderThatIsGone)
{
    const TemporaryFolder folder;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::create_directory(folder.Path("gone"));
    std::filesystem::current_path(folder.Path("gone"));
    std::filesystem::remove(folder.Path("gone"));
    EXPECT_FALSE(Directory::Create(L"new"));
    EXPECT_FALSE(Directory::Create(L"new/below"));
    std::filesystem::current_path(before);
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(Directory, CreatingWhatIsThereIsSuccess)
{
    const TemporaryFolder folder;
    std::filesystem::create_symlink(".", folder.Path("link"));
    EXPECT_TRUE(Directory::Create(folder.Wide()));
    EXPECT_TRUE(Directory::Create(folder.Wide() + L"/"));
    EXPECT_TRUE(Directory::Create(folder.Wide("link")));
    EXPECT_TRUE(Directory::Create(L"/"));
}

TEST(Directory, CreatedFoldersHaveThePermissionsThatTheUmaskLeaves)
{
    const TemporaryFolder folder;
    for (const mode_t mask : {0U, 022U, 027U})
    {
        const std::string name = "mask" + std::to_string(mask);
        const mode_t before = umask(mask);
        EXPECT_TRUE(Directory::Create(folder.Wide(name + "/below")));
        umask(before);
        for (const std::string& made : {name, name + "/below"})
        {
            struct stat status = {};
            ASSERT_EQ(0, stat(folder.Path(made).c_str(), &status));
            EXPECT_EQ(0777U & ~mask, status.st_mode & 07777) << made;
        }
    }
}

TEST(Directory, CreatesNothingWhereNothingCanBe)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "abc");
    std::filesystem::create_symlink("nowhere", folder.Path("dangling"));
    const TString<wchar_t> paths[] = {
        L"",
        s_strZero,
        folder.Wide("file"),
        folder.Wide("file/below"),
        folder.Wide("dangling"),
        folder.Wide("new") + s_strZero,
        folder.Wide("new") + static_cast<wchar_t>(0xD800),
        folder.Wide(std::string(300, 'x')),
        L"/proc/new",
    };
    for (const TString<wchar_t>& path : paths)
        EXPECT_FALSE(Directory::Create(path)) << path.c_str();
    EXPECT_EQ("abc", ToolkitTest::ReadBytes(folder.Path("file")));
    EXPECT_EQ(2, std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
}

TEST(Directory, CreatesNothingInAFolderThatMayNotBeWritten)
{
    const TemporaryFolder folder;
    MakeFolder(folder.Path("there"));
    ASSERT_EQ(0, chmod(folder.Path("there").c_str(), 0555));
    ASSERT_EQ(0, chmod(folder.Path().c_str(), 0555));
    EXPECT_TRUE(AsNobody(
        [&]
        {
            return geteuid() != 0 && !Directory::Create(folder.Wide("new")) &&
                   !Directory::Create(folder.Wide("there/new/below")) &&
                   Directory::Create(folder.Wide("there"));
        }));
    ASSERT_EQ(0, chmod(folder.Path().c_str(), 0755));
}

TEST(Directory, SeveralMayCreateTheSameAtOnce)
{
    const TemporaryFolder folder;
    for (int round = 0; round < 100; ++round)
    {
        const TString<wchar_t> path = folder.Wide(std::to_string(round) + "/a/b/c/d");
        bool made[4] = {};
        std::vector<std::thread> threads;
        for (bool& one : made)
            threads.emplace_back([&one, &path] { one = Directory::Create(path); });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_THAT(made, testing::Each(true)) << round;
    }
}

TEST(Directory, RemovesOneFile)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "");
    WriteBytes(folder.Path("\xE6\x97\xA5"), "");
    EXPECT_TRUE(Directory::RemoveFile(folder.Wide("file")));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("file")));
    EXPECT_FALSE(Directory::RemoveFile(folder.Wide("file")));
    EXPECT_TRUE(Directory::RemoveFile(folder.Wide() + L"/\x65E5"));
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(Directory, RemovesALinkAndNotItsTarget)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "");
    MakeFolder(folder.Path("folder"));
    std::filesystem::create_symlink("file", folder.Path("toFile"));
    std::filesystem::create_symlink("folder", folder.Path("toFolder"));
    std::filesystem::create_symlink("nowhere", folder.Path("dangling"));
    for (const char* link : {"toFile", "toFolder", "dangling"})
    {
        EXPECT_TRUE(Directory::RemoveFile(folder.Wide(link))) << link;
        EXPECT_FALSE(std::filesystem::is_symlink(folder.Path(link))) << link;
    }
    EXPECT_THAT(Both(folder.Wide(), L""), UnorderedElementsAre(L"file", L"folder"));
}

TEST(Directory, RemovesNoFolderAndNothingThatIsNotThere)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "");
    MakeFolder(folder.Path("folder"));
    const TString<wchar_t> paths[] = {
        L"",
        s_strZero,
        folder.Wide("missing"),
        folder.Wide("folder"),
        folder.Wide("folder/"),
        folder.Wide("file/"),
        folder.Wide("file") + s_strZero,
        folder.Wide("file") + s_strZero + L"x",
        folder.Wide("file") + static_cast<wchar_t>(0xD800),
    };
    for (const TString<wchar_t>& path : paths)
        EXPECT_FALSE(Directory::RemoveFile(path)) << path.c_str();
    EXPECT_THAT(Both(folder.Wide(), L""), UnorderedElementsAre(L"file", L"folder"));
}

TEST(Directory, RemovesNothingInAFolderThatMayNotBeWritten)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "");
    ASSERT_EQ(0, chmod(folder.Path().c_str(), 0555));
    EXPECT_TRUE(AsNobody([&] { return geteuid() != 0 && !Directory::RemoveFile(folder.Wide("file")); }));
    ASSERT_EQ(0, chmod(folder.Path().c_str(), 0755));
    EXPECT_TRUE(std::filesystem::exists(folder.Path("file")));
}

TEST(Directory, LeavesNoDescriptorOpen)
{
    const TemporaryFolder folder;
    const long before = OpenDescriptors();
    for (const wchar_t* filter : {L"", L"*", L"missing"})
        Both(folder.Wide(), filter);
    EXPECT_EQ(before, OpenDescriptors());
}

TEST(Directory, SaysNothing)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("bad\xFF"), "");
    CapturedOutput captured(STDERR_FILENO);
    Both(folder.Wide("missing"), L"");
    Both(folder.Wide(), L"*");
    Both(L"", L"");
    Directory::Exist(L"");
    Directory::Create(folder.Wide("bad") + s_strZero);
    Directory::Create(L"/proc/new");
    Directory::RemoveFile(folder.Wide());
    Directory::RemoveFile(folder.Wide("missing"));
    EXPECT_EQ("", captured.Stop());
}

} // namespace
