// SPDX-License-Identifier: MIT
#include "toolkit/app/PathManager.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/app.h>
#include <wx/init.h>
#include <wx/stdpaths.h>
#include <wx/utils.h>

#include "tests/support/ScopedLocale.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/encoding/UTF8.h"

using testing::AllOf;
using testing::HasSubstr;
using Toolkit::PathManager;
using Toolkit::smart_ptr;
using Toolkit::smart_ptr_policy;
using Toolkit::TString;
using Toolkit::UTF8;
using ToolkitTest::CapturedOutput;
using ToolkitTest::Quoted;
using ToolkitTest::RunInShell;
using ToolkitTest::ScopedEnvironment;
using ToolkitTest::ScopedLocale;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

static_assert(!std::is_copy_constructible_v<PathManager> && !std::is_copy_assignable_v<PathManager>);
static_assert(!std::is_polymorphic_v<PathManager>);

namespace
{

using Wide = TString<wchar_t>;

// A path manager as the library's module installs it.
class Installed
{
public:
    Installed() { PathManager::s_pInstance = new smart_ptr<PathManager, smart_ptr_policy>(new PathManager); }
    ~Installed()
    {
        delete PathManager::s_pInstance;
        PathManager::s_pInstance = nullptr;
    }
    Installed(const Installed&) = delete;
    Installed& operator=(const Installed&) = delete;
};

class ScopedMask
{
public:
    explicit ScopedMask(mode_t mask) : m_before(umask(mask)) {}
    ~ScopedMask() { umask(m_before); }
    ScopedMask(const ScopedMask&) = delete;
    ScopedMask& operator=(const ScopedMask&) = delete;

private:
    const mode_t m_before;
};

Wide WideOf(const wxString& text)
{
    return text.ToStdWstring();
}

std::filesystem::path ExecutablePath()
{
    return std::filesystem::read_symlink("/proc/self/exe");
}

std::string UserName()
{
    std::string user = wxGetUserId().utf8_string();
    std::transform(user.begin(), user.end(), user.begin(), ::tolower);
    return user;
}

mode_t PermissionsOf(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0;
}

std::vector<Wide> FieldsOf(const PathManager& paths)
{
    return {paths.GetApplicationName(),
            paths.GetConfigurationPath(),
            paths.GetApplicationDataPath(),
            paths.GetApplicationPath(),
            paths.GetApplicationRessourcesPath(),
            paths.GetAppearancesPath(),
            paths.GetPluginsPath(),
            paths.GetDocumentsPath(),
            paths.GetPathSeparator(),
            paths.GetUniqueInstanceName(),
            paths.GetDataDir(),
            paths.GetUserLocalDataDir()};
}

// Login and id of a user whose full name is another one, as that of Debian's "list" is; of root if there is
// none.
std::pair<std::string, std::string> UserWithAFullName()
{
    std::pair<std::string, std::string> found("root", "0");
    setpwent();
    while (const passwd* const entry = getpwent())
    {
        const std::string fullName = entry->pw_gecos;
        const std::string login = entry->pw_name;
        const bool lower = login.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string::npos;
        if (!fullName.empty() && fullName[0] != ',' && fullName != login && lower)
            found = {login, std::to_string(entry->pw_uid)};
    }
    endpwent();
    return found;
}

// The same program under another path, in a folder that it is started from.
std::string CopyOf(const std::string& program, const TemporaryFolder& folder, const std::string& name)
{
    const std::filesystem::path copy = folder.Path(name);
    std::filesystem::create_directories(copy.parent_path());
    std::filesystem::copy_file(program, copy);
    return copy.string();
}

} // namespace

TEST(PathManager, NamesItsFolders)
{
    EXPECT_EQ(PathManager::c_strConfigurationFolderName, L"config");
    EXPECT_EQ(PathManager::c_strRessourcesFolderName, L"ressources");
    EXPECT_EQ(PathManager::c_strAppearancesFolderName, L"ressources");
    EXPECT_EQ(PathManager::c_strPluginsFolderName, L"plugins");
    EXPECT_EQ(PathManager::c_strCacheFolderName, L"cache");
}

TEST(PathManager, HasNoInstanceBeforeTheModules)
{
    EXPECT_EQ(PathManager::s_pInstance, nullptr);
}

TEST(PathManager, UsesTheNativeSeparator)
{
    EXPECT_EQ(PathManager().GetPathSeparator(), L"/");
}

TEST(PathManager, KnowsTheRunningExecutable)
{
    const PathManager paths;
    EXPECT_EQ(paths.GetApplicationName(), UTF8::ToUNICODE(ExecutablePath().stem().string()));
    EXPECT_EQ(paths.GetApplicationPath(), UTF8::ToUNICODE(ExecutablePath().parent_path().string()));
}

TEST(PathManager, BuildsItsPathsFromTheStandardPaths)
{
    const ScopedLocale readsAnyPath("C.UTF-8");
    const wxInitializer started;
    const wxStandardPaths& standard = wxStandardPaths::Get();
    const PathManager paths;
    EXPECT_EQ(paths.GetConfigurationPath(), WideOf(standard.GetDataDir() + "/config"));
    EXPECT_EQ(paths.GetApplicationRessourcesPath(), WideOf(standard.GetResourcesDir() + "/ressources"));
    EXPECT_EQ(paths.GetAppearancesPath(), WideOf(standard.GetResourcesDir() + "/ressources"));
    EXPECT_EQ(paths.GetPluginsPath(), WideOf(standard.GetResourcesDir() + "/ressources/plugins"));
    EXPECT_EQ(paths.GetDocumentsPath(), WideOf(standard.GetDocumentsDir()));
    EXPECT_EQ(paths.GetApplicationDataPath(),
              WideOf(standard.GetUserLocalDataDir() + "/") + paths.GetApplicationName());
    EXPECT_EQ(paths.GetDataDir(), WideOf(standard.GetDataDir()));
    EXPECT_EQ(paths.GetUserLocalDataDir(), WideOf(standard.GetUserLocalDataDir()));
}

TEST(PathManager, MakesNoFolderAtTheRootWhereHomeIsEmpty)
{
    const ScopedEnvironment environment("HOME", "");
    const PathManager paths;
    EXPECT_NE(paths.GetApplicationDataPath().substr(0, 2), L"/.");
    EXPECT_NE(paths.GetApplicationDataPath().substr(0, 2), L"//");
    const std::string name = "/." + UTF8::ToUTF8(paths.GetApplicationName());
    EXPECT_FALSE(std::filesystem::exists(name)) << name;
}

TEST(PathManager, AsksForTheStandardPathsAtEachCall)
{
    const PathManager paths;
    const TemporaryFolder home;
    const ScopedEnvironment environment("HOME", home.Path().c_str());
    EXPECT_EQ(paths.GetUserLocalDataDir(), home.Wide("." + ExecutablePath().stem().string()));
    EXPECT_NE(paths.GetApplicationDataPath().find(paths.GetApplicationName()), Wide::npos);
    EXPECT_FALSE(PathManager::DirExists(paths.GetUserLocalDataDir()));
}

// The second name has a folder that wxWidgets cannot read in the locale "C".
TEST(PathManager, FollowsTheNameThatTheHostGaveToWxWidgets)
{
    ASSERT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
    char* const invocation = program_invocation_name;
    for (const std::string name : {"/opt/tool", "/opt/caf\xC3\xA9/tool"})
    {
        std::string called = name;
        program_invocation_name = called.data();
        const wxInitializer started;
        wxAppConsole::GetInstance()->SetAppName("host");
        const PathManager paths;
        EXPECT_EQ(paths.GetDataDir(), WideOf(wxStandardPaths::Get().GetInstallPrefix()) + L"/share/host");
        EXPECT_EQ(paths.GetApplicationRessourcesPath(), paths.GetDataDir() + L"/ressources");
        EXPECT_EQ(paths.GetUserLocalDataDir(),
                  UTF8::ToUNICODE(TString<char>(std::getenv("HOME"))) + L"/.host");
        program_invocation_name = invocation;
    }
}

TEST(PathManager, AnswersTheSameWithoutWxWidgets)
{
    CapturedOutput errors(2);
    const std::vector<Wide> without = FieldsOf(PathManager());
    const wxInitializer started;
    EXPECT_EQ(without, FieldsOf(PathManager()));
    EXPECT_EQ(errors.Stop(), "");
}

TEST(PathManager, FindsTheDocumentsAsTheStandardPathsDo)
{
    const char* const lists[] = {
        "",
        "\n",
        "XDG_DOCUMENTS_DIR=\"$HOME/docs\"\n",
        "# comment\nXDG_MUSIC_DIR=\"$HOME/m\"\nXDG_DOCUMENTS_DIR=\"$HOME/docs\"",
        "XDG_DOCUMENTS_DIR = \"$HOME/docs\" \t\n",
        "XDG_DOCUMENTS_DIR=$HOME/docs\r\n",
        "XDG_DOCUMENTS_DIR=/usr\n",
        "XDG_DOCUMENTS_DIR=\"$HOME/missing\"\nXDG_DOCUMENTS_DIR=\"$HOME/docs\"\n",
        "XDG_DOCUMENTS_DIR=\n",
        "XDG_DOCUMENTS_DIR\n",
        "XDG_DOCUMENTS_DIR=\"\"\n",
        "#XDG_DOCUMENTS_DIR=\"/usr\"\n",
    };
    for (const char* const list : lists)
    {
        SCOPED_TRACE(list);
        const TemporaryFolder home;
        const ScopedEnvironment environment("HOME", home.Path().c_str());
        const ScopedEnvironment configuration("XDG_CONFIG_HOME", nullptr);
        std::filesystem::create_directories(home.Path(".config"));
        std::filesystem::create_directories(home.Path("docs"));
        WriteBytes(home.Path(".config/user-dirs.dirs"), list);
        const Wide without = PathManager().GetDocumentsPath();
        const wxInitializer started;
        EXPECT_EQ(without, WideOf(wxStandardPaths::Get().GetDocumentsDir()));
        EXPECT_EQ(without, PathManager().GetDocumentsPath());
    }
}

TEST(PathManager, ReadsTheListOfUserFoldersWhereTheEnvironmentSays)
{
    const TemporaryFolder home;
    const ScopedEnvironment environment("HOME", home.Path().c_str());
    const ScopedEnvironment configuration("XDG_CONFIG_HOME", home.Path("conf").c_str());
    std::filesystem::create_directories(home.Path("conf"));
    std::filesystem::create_directories(home.Path("docs"));
    WriteBytes(home.Path("conf/user-dirs.dirs"), "XDG_DOCUMENTS_DIR=\"$HOME/docs\"\n");
    EXPECT_EQ(PathManager().GetDocumentsPath(), home.Wide("docs"));
}

TEST(PathManager, TakesTheHomeFolderForDocumentsWhenTheListCannotBeRead)
{
    const TemporaryFolder home;
    const ScopedEnvironment environment("HOME", home.Path().c_str());
    const ScopedEnvironment configuration("XDG_CONFIG_HOME", nullptr);
    std::filesystem::create_directories(home.Path(".config"));
    ASSERT_EQ(mkfifo(home.Path(".config/user-dirs.dirs").c_str(), 0600), 0);
    EXPECT_EQ(PathManager().GetDocumentsPath(), home.Wide());
}

TEST(PathManager, SurvivesAHomeThatNobodyCanUse)
{
    CapturedOutput errors(2);
    for (const char* const home : {"/dev/null", "/proc/none"})
    {
        const ScopedEnvironment environment("HOME", home);
        const std::vector<Wide> without = FieldsOf(PathManager());
        const wxInitializer started;
        EXPECT_EQ(without, FieldsOf(PathManager()));
    }
    EXPECT_EQ(errors.Stop(), "");
}

TEST(PathManager, TakesFoldersOfTheEnvironmentBeyondAsciiAsUtf8)
{
    for (const char* const variable : {"HOME", "XDG_CONFIG_HOME"})
    {
        const TemporaryFolder folder;
        const std::string home = folder.Path("h\xC3\xB6me");
        std::filesystem::create_directories(home);
        const ScopedEnvironment environment(variable, home.c_str());
        const PathManager without;
        const wxInitializer started;
        const PathManager with;
        EXPECT_EQ(FieldsOf(without), FieldsOf(with)) << variable;
        if (std::string(variable) == "HOME")
        {
            EXPECT_EQ(with.GetDocumentsPath(), folder.Wide("h\xC3\xB6me"));
        }
    }
}

TEST(PathManager, CreatesTheApplicationDataFolder)
{
    const TemporaryFolder home;
    const ScopedEnvironment environment("HOME", home.Path().c_str());
    const ScopedMask mask(0027);
    const PathManager paths;
    EXPECT_TRUE(PathManager::DirExists(paths.GetApplicationDataPath()));
    EXPECT_EQ(PermissionsOf(UTF8::ToUTF8(paths.GetApplicationDataPath())), 0750U);
    EXPECT_EQ(PermissionsOf(UTF8::ToUTF8(paths.GetUserLocalDataDir())), 0750U);
}

TEST(PathManager, MakesAUniqueNameOfFolderNameAndUser)
{
    const PathManager paths;
    const Wide unique = paths.GetUniqueInstanceName();
    EXPECT_EQ(unique.find(L'/'), Wide::npos);
    EXPECT_EQ(unique.find(L':'), Wide::npos);
    EXPECT_EQ(unique.find_first_of(L"ABCDEFGHIJKLMNOPQRSTUVWXYZ"), Wide::npos);
    const Wide tail = paths.GetApplicationName() + UTF8::ToUNICODE(UserName());
    ASSERT_GE(unique.size(), tail.size());
    EXPECT_EQ(unique.substr(unique.size() - tail.size()), tail);
}

TEST(PathManager, LeavesTheHostsPathsEmptyUntilTheyAreSet)
{
    PathManager paths;
    EXPECT_EQ(paths.GetMassStorageDataPath(), L"");
    EXPECT_EQ(paths.GetCdRomPath(), L"");
    const TemporaryFolder folder;
    paths.SetMassStorageDataPath(folder.Wide("storage"));
    paths.SetCdRomPath(folder.Wide("cd"));
    EXPECT_EQ(paths.GetMassStorageDataPath(), folder.Wide("storage"));
    EXPECT_EQ(paths.GetCdRomPath(), folder.Wide("cd"));
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(PathManager, RebuildsOnlyThePluginsWhenTheResourcesAreSet)
{
    PathManager paths;
    std::vector<Wide> expected = FieldsOf(paths);
    paths.SetApplicationRessourcesPath(L"/r");
    expected[4] = L"/r";
    expected[6] = L"/r/plugins";
    EXPECT_EQ(FieldsOf(paths), expected);
    paths.SetApplicationRessourcesPath(L"/r/");
    EXPECT_EQ(paths.GetPluginsPath(), L"/r//plugins");
}

TEST(PathManager, RebuildsThePluginsFromTheResources)
{
    PathManager paths;
    paths.RebuildDependentPathes();
    EXPECT_EQ(paths.GetPluginsPath(), paths.GetApplicationRessourcesPath() + L"/plugins");
}

TEST(PathManager, CreatesAFolderThatIsSetForTheData)
{
    const TemporaryFolder folder;
    const ScopedMask mask(0002);
    PathManager paths;
    std::vector<Wide> expected = FieldsOf(paths);
    paths.SetApplicationDataPath(folder.Wide("a/\xC3\xA4/c/"));
    expected[2] = folder.Wide("a/\xC3\xA4/c/");
    EXPECT_EQ(FieldsOf(paths), expected);
    for (const char* const made : {"a", "a/\xC3\xA4", "a/\xC3\xA4/c"})
        EXPECT_EQ(PermissionsOf(folder.Path(made)), 0775U) << made;
}

TEST(PathManager, CreatesARelativeDataFolderInTheWorkingDirectory)
{
    const TemporaryFolder folder;
    const std::filesystem::path before = std::filesystem::current_path();
    PathManager paths;
    std::filesystem::current_path(folder.Path());
    paths.SetApplicationDataPath(L"x/../y");
    std::filesystem::current_path(before);
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path("y")));
}

TEST(PathManager, IgnoresADataFolderThatCannotBeCreated)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "content");
    const Wide bad[] = {L"",
                        folder.Wide("file"),
                        folder.Wide("file/below"),
                        folder.Wide(std::string(300, 'n')),
                        folder.Wide("zero") + Wide(std::wstring(L"\0x", 2)),
                        folder.Wide() + Wide(std::wstring(L"/") + static_cast<wchar_t>(0xD800)),
                        L"/proc/toolkit/below"};
    PathManager paths;
    CapturedOutput errors(2);
    const wxInitializer started;
    for (const Wide& path : bad)
    {
        paths.SetApplicationDataPath(path);
        EXPECT_EQ(paths.GetApplicationDataPath(), path);
    }
    EXPECT_EQ(errors.Stop(), "");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
    EXPECT_EQ(ToolkitTest::ReadBytes(folder.Path("file")), "content");
}

TEST(PathManager, HasOneTemporaryFolderWhateverTheEnvironmentSays)
{
    const PathManager paths;
    const ScopedEnvironment first("TMPDIR", "/elsewhere");
    const ScopedEnvironment second("TMP", "/elsewhere");
    const ScopedEnvironment third("TEMP", "/elsewhere");
    EXPECT_EQ(paths.GetTempDir(), L"/tmp");
}

TEST(PathManager, AppendsNames)
{
    const Installed installed;
    const struct
    {
        const wchar_t* base;
        const wchar_t* name;
        const wchar_t* result;
    } rows[] = {
        {L"", L"x", L"x"},
        {L"/a", L"x", L"/a/x"},
        {L"/a/", L"x", L"/a/x"},
        {L"/a/", L"/x", L"/a//x"},
        {L"/a", L"", L"/a/"},
        {L"", L"", L""},
        {L"\u00E4", L"\u0416", L"\u00E4/\u0416"},
    };
    for (const auto& row : rows)
    {
        Wide path = row.base;
        PathManager::AppendPath(path, row.name);
        EXPECT_EQ(path, row.result);
        Wide result = L"old";
        PathManager::AppendPath(result, row.base, row.name);
        EXPECT_EQ(result, row.result);
    }
}

TEST(PathManager, AppendsWhenTheResultIsAnArgumentToo)
{
    const Installed installed;
    Wide base = L"/a";
    PathManager::AppendPath(base, base, L"x");
    EXPECT_EQ(base, L"/a/x");
    Wide name = L"x";
    PathManager::AppendPath(name, L"/a", name);
    EXPECT_EQ(name, L"/a/x");
    Wide both = L"/a";
    PathManager::AppendPath(both, both, both);
    EXPECT_EQ(both, L"/a//a");
    Wide twice = L"/a";
    PathManager::AppendPath(twice, twice);
    EXPECT_EQ(twice, L"/a//a");
    Wide onEmpty = L"x";
    PathManager::AppendPath(onEmpty, L"", onEmpty);
    EXPECT_EQ(onEmpty, L"x");
}

TEST(PathManager, AppendsWithoutAnInstance)
{
    Wide path = L"/a";
    PathManager::AppendPath(path, L"x");
    EXPECT_EQ(path, L"/a/x");
}

TEST(PathManager, AppendsOnSeveralThreads)
{
    const Installed installed;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            []
            {
                for (int round = 0; round < 1000; ++round)
                {
                    Wide path = L"/a";
                    PathManager::AppendPath(path, L"x");
                    ASSERT_EQ(path, L"/a/x");
                }
            });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(PathManager, SplitsPaths)
{
    const struct
    {
        const wchar_t* path;
        const wchar_t* folder;
        const wchar_t* name;
        const wchar_t* extension;
    } rows[] = {
        {L"/usr/lib/tool.tar.gz", L"/usr/lib", L"tool.tar", L"gz"},
        {L"/tool", L"/", L"tool", L""},
        {L"tool.x", L"", L"tool", L"x"},
        {L"/a.b/tool", L"/a.b", L"tool", L""},
        {L"/a/.tool", L"/a", L".tool", L""},
        {L"/a/tool.", L"/a", L"tool", L""},
        {L"/a/", L"/a", L"", L""},
        {L"C:\\a\\b.c", L"", L"C:\\a\\b", L"c"},
        {L"/\u00E4/\u0416.\U0001F600", L"/\u00E4", L"\u0416", L"\U0001F600"},
        {L"", L"", L"", L""},
    };
    for (const auto& row : rows)
    {
        Wide volume = L"old";
        Wide folder = L"old";
        Wide name = L"old";
        Wide extension = L"old";
        PathManager::SplitPath(row.path, volume, folder, name, extension);
        EXPECT_EQ(volume, L"");
        EXPECT_EQ(folder, row.folder) << testing::PrintToString(std::wstring(row.path));
        EXPECT_EQ(name, row.name) << testing::PrintToString(std::wstring(row.path));
        EXPECT_EQ(extension, row.extension) << testing::PrintToString(std::wstring(row.path));
    }
}

TEST(PathManager, SplitsAPathIntoItself)
{
    Wide text = L"/a/b.c";
    Wide volume;
    Wide name;
    Wide extension;
    PathManager::SplitPath(text, volume, text, name, extension);
    EXPECT_EQ(text, L"/a");
    EXPECT_EQ(name, L"b");
    EXPECT_EQ(extension, L"c");
}

TEST(PathManager, TellsWhatExists)
{
    ASSERT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.Path("folder"));
    WriteBytes(folder.Path("file"), "");
    WriteBytes(folder.Path("\xC3\xA4"), "");
    ASSERT_EQ(mkfifo(folder.Path("fifo").c_str(), 0600), 0);
    std::filesystem::create_symlink("nowhere", folder.Path("dangling"));
    std::filesystem::create_symlink("file", folder.Path("tofile"));
    std::filesystem::create_symlink("folder", folder.Path("tofolder"));
    const struct
    {
        Wide path;
        bool file;
        bool isFolder;
    } rows[] = {
        {folder.Wide("folder"), false, true},
        {folder.Wide("folder/"), false, true},
        {folder.Wide("file"), true, false},
        {folder.Wide("file/"), false, false},
        {folder.Wide("\xC3\xA4"), true, false},
        {folder.Wide("missing"), false, false},
        {folder.Wide("fifo"), false, false},
        {folder.Wide("dangling"), false, false},
        {folder.Wide("tofile"), true, false},
        {folder.Wide("tofolder"), false, true},
        {L"", false, false},
        {L"/", false, true},
        {L".", false, true},
        {L"/dev/null", false, false},
        {folder.Wide("file") + Wide(std::wstring(L"\0x", 2)), false, false},
        {folder.Wide("file") + Wide(std::wstring(1, L'\0')), false, false},
        {std::wstring(1, L'\0'), false, false},
        {std::wstring(1, static_cast<wchar_t>(0xD800)), false, false},
        {folder.Wide(std::string(5000, 'n')), false, false},
    };
    CapturedOutput errors(2);
    for (const auto& row : rows)
    {
        EXPECT_EQ(PathManager::FileExists(row.path), row.file) << testing::PrintToString(row.path);
        EXPECT_EQ(PathManager::DirExists(row.path), row.isFolder) << testing::PrintToString(row.path);
        EXPECT_EQ(PathManager::Exists(row.path), row.file || row.isFolder)
            << testing::PrintToString(row.path);
    }
    EXPECT_EQ(errors.Stop(), "");
}

TEST(PathManager, WorksInANonAsciiFolderInTheCLocale)
{
    for (const std::string mode : {"", " started"})
    {
        const TemporaryFolder folder;
        const std::string program =
            CopyOf(TOOLKIT_SHOW_PATHS, folder, "\xC3\xA4 \xD0\x96/bin/Pr\xC3\xB6g.v1.x");
        const std::string home = folder.Path("h\xC3\xB6me");
        const auto result =
            RunInShell("env -u XDG_CONFIG_HOME LC_ALL=C HOME=" + Quoted(home) + " " + Quoted(program) + mode);
        const std::string prefix = folder.Path("\xC3\xA4 \xD0\x96");
        const std::string shared = prefix + "/share/Pr\xC3\xB6g.v1";
        EXPECT_EQ(result.m_iExitCode, 0);
        const std::string expected = "name=Pr\xC3\xB6g.v1\napplication=" + prefix +
                                     "/bin\nconfiguration=" + shared + "/config\ndata=" + home +
                                     "/.Pr\xC3\xB6g.v1/Pr\xC3\xB6g.v1\n" + "resources=" + shared +
                                     "/ressources\nappearances=" + shared + "/ressources\nplugins=" + shared +
                                     "/ressources/plugins\ndocuments=" + home + "\nunique=";
        EXPECT_EQ(result.m_strOutput.substr(0, expected.size()), expected);
        EXPECT_THAT(result.m_strOutput, HasSubstr("binpr\xC3\xB6g.v1" + UserName() + "\nexists=1\n"));
    }
}

TEST(PathManager, HomeThatTheLocaleCannotReadHidesNoOtherFolder)
{
    const TemporaryFolder folder;
    const std::string program = CopyOf(TOOLKIT_SHOW_PATHS, folder, "bin/program.x");
    const std::string home = folder.Path("h\xC3\xB6me");
    const auto result = RunInShell("env -u XDG_CONFIG_HOME LC_ALL=C HOME=" + Quoted(home) + " " +
                                   Quoted(program) + " started named");
    EXPECT_EQ(result.m_iExitCode, 0);
    EXPECT_THAT(result.m_strOutput, HasSubstr("\nconfiguration=" + folder.Path("share/named") + "/config\n"));
}

TEST(PathManager, NameThatTheLocaleCannotReadIsThatOfTheFileUnlessTheHostGaveOne)
{
    const TemporaryFolder folder;
    const std::string program = CopyOf(TOOLKIT_SHOW_PATHS, folder, "bin/program.x");
    const std::string command = "LC_ALL=C bash -c \"exec -a 'Pr\xC3\xB6g' " + Quoted(program) + " started";
    EXPECT_THAT(RunInShell(command + "\"").m_strOutput,
                HasSubstr("\nconfiguration=" + folder.Path("share/program") + "/config\n"));
    EXPECT_THAT(RunInShell(command + " named\"").m_strOutput,
                HasSubstr("\nconfiguration=" + folder.Path("share/named") + "/config\n"));
}

TEST(PathManager, KnowsAnExecutableThatWasDeleted)
{
    const TemporaryFolder folder;
    const struct
    {
        const char* file;
        const char* arguments;
        const char* name;
    } rows[] = {
        {"tool", " deleted", "tool"},
        {"tool (deleted)", "", "tool (deleted)"},
        {"other (deleted)", " deleted", "other (deleted)"},
    };
    for (const auto& row : rows)
    {
        const std::string program = CopyOf(TOOLKIT_SHOW_PATHS, folder, row.file);
        const auto result = RunInShell(Quoted(program) + row.arguments);
        EXPECT_THAT(result.m_strOutput,
                    HasSubstr(std::string("name=") + row.name + "\napplication=" + folder.Path() + "\n"));
    }
}

TEST(PathManager, SurvivesAnExecutableWhosePathIsNotUtf8)
{
    const TemporaryFolder folder;
    const std::string program = CopyOf(TOOLKIT_SHOW_PATHS, folder, "\xFF/tool");
    for (const char* const mode : {"", " started"})
    {
        const auto result = RunInShell("cd / && " + Quoted(program) + mode);
        EXPECT_EQ(result.m_iExitCode, 0);
        EXPECT_THAT(result.m_strOutput, HasSubstr("name=\napplication=/\n"));
    }
}

TEST(PathManager, AppendsTheLoginNameOfTheUserAndNothingWithoutOne)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    const TemporaryFolder folder;
    std::filesystem::permissions(folder.Path(), std::filesystem::perms::all);
    const std::string program = CopyOf(TOOLKIT_SHOW_PATHS, folder, "tool");
    std::string unique = folder.Path() + "tool";
    unique.erase(std::remove(unique.begin(), unique.end(), '/'), unique.end());
    std::transform(unique.begin(), unique.end(), unique.begin(), ::tolower);
    const auto [login, id] = UserWithAFullName();
    const std::pair<std::string, std::string> rows[] = {{"54321", ""}, {id, login}};
    for (const auto& [user, name] : rows)
    {
        const auto result =
            RunInShell("USER=ann HOME=" + Quoted(folder.Path()) + " " + Quoted(program) + " " + user);
        EXPECT_EQ(result.m_iExitCode, 0);
        EXPECT_THAT(result.m_strOutput, HasSubstr("unique=" + unique + name + "\n")) << user;
    }
}

TEST(PathManager, IsNamedAsItsFileWhenStartedThroughALink)
{
    const TemporaryFolder folder;
    const std::string program = CopyOf(TOOLKIT_SHOW_PATHS, folder, "bin/tool-1.2");
    std::filesystem::create_symlink(program, folder.Path("link"));
    std::string before;
    for (const char* const mode : {"", " started"})
    {
        const auto result = RunInShell(Quoted(folder.Path("link")) + mode);
        EXPECT_THAT(result.m_strOutput, AllOf(HasSubstr("name=tool-1\n"), HasSubstr("/.tool-1/tool-1\n")));
        EXPECT_TRUE(before.empty() || before == result.m_strOutput);
        before = result.m_strOutput;
    }
}
