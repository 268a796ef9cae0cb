// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/plugin/Library.h"
#include "tests/plugin/Plugin.h"
#include "tests/support/Resources.h"
#include "tests/support/Rounds.h"

using namespace ToolkitTest;

// This program is not linked with the library: it opens it, and plug-ins that are, at run time, and
// everything is gone again when it closes them.

namespace
{

using Journal = std::vector<std::string>;

Journal s_journal;

void Record(const char* event)
{
    s_journal.push_back(event);
}

// True when code of the library is in the address space.
bool IsMapped(const std::string& name)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        if (line.find(" r-xp ") != line.npos && line.find(name) != line.npos)
            return true;
    return false;
}

// One life of the library with its two plug-ins, in one of eight orders: which plug-in registers first, which
// unregisters first, and which is closed first.
class Life
{
public:
    explicit Life(unsigned int order)
        : m_bRegister(order & 1U), m_bUnregister(order & 2U), m_bClose(order & 4U)
    {
        m_plugins[0] = std::make_unique<Library>(PLUGIN_A);
        m_plugins[1] = std::make_unique<Library>(PLUGIN_B);
    }

    void Run()
    {
        m_toolkit->Find<Action>("DllToolkitLoad")();
        Call<PluginAttach>(m_bRegister, "PluginAttach", &Record);
        Call<PluginAttach>(!m_bRegister, "PluginAttach", &Record);
        m_host->Find<HostInitialize>("HostInitialize")(true);
        Call<PluginInstallSink>(m_bRegister, "PluginInstallSink");
        Call<PluginLog>(!m_bRegister, "PluginLog", L"running");
        Call<PluginEmpty>(m_bRegister, "PluginEmpty", true);
        m_host->Find<HostRelease>("HostRelease")(true);
        Call<PluginDetach>(m_bUnregister, "PluginDetach");
        Call<PluginDetach>(!m_bUnregister, "PluginDetach");
        m_toolkit->Find<Action>("DllToolkitUnload")();
        EXPECT_FALSE(m_host->Find<HostHasManager>("HostHasManager")());
        EXPECT_FALSE(m_host->Find<HostHasSingletons>("HostHasSingletons")());
    }

    void Close()
    {
        m_plugins[m_bClose].reset();
        m_plugins[!m_bClose].reset();
        m_host.reset();
        m_toolkit.reset();
    }

    Journal Expected() const
    {
        const std::string first = m_bRegister ? "b" : "a";
        const std::string second = m_bRegister ? "a" : "b";
        return {"+" + first, "+" + second, "-" + second, "-" + first};
    }

private:
    template <class Function, class... Arguments>
    void Call(bool second, const char* name, Arguments... arguments)
    {
        m_plugins[second]->Find<Function>(name)(arguments...);
    }

    const bool m_bRegister;
    const bool m_bUnregister;
    const bool m_bClose;
    std::unique_ptr<Library> m_toolkit = std::make_unique<Library>(TOOLKIT_LIBRARY);
    std::unique_ptr<Library> m_host = std::make_unique<Library>(HOST_CORE);
    std::unique_ptr<Library> m_plugins[2];
};

const unsigned int s_uOrders = 8;

void LiveInEveryOrder()
{
    for (unsigned int order = 0; order < s_uOrders; ++order)
    {
        s_journal.clear();
        Life life(order);
        life.Run();
        EXPECT_EQ(life.Expected(), s_journal);
        life.Close();
        ASSERT_FALSE(Library::IsLoaded(TOOLKIT_LIBRARY));
    }
}

// A function of the host that needs a part of the library, and tells whether it could do its work.
HostWorks s_works = nullptr;

void Work()
{
    if (!s_works())
        _exit(1);
}

// What was to be done at the end before the library was opened is done after its statics have gone.
[[noreturn]] void WorkUntilTheEnd(const char* function)
{
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    std::atexit(&Work);
    static const auto* const host = new Library(HOST_CORE);
    s_works = host->Find<HostWorks>(function);
    Work();
    std::exit(0);
}

void WorkInManyLives(const char* function)
{
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    Rounds rounds(function, "TOOLKIT_TEST_LIVES", 100);
    while (rounds.GoOn())
    {
        unsigned long lives = 0;
        for (; lives < rounds.Size(50) && !testing::Test::HasFailure(); ++lives)
        {
            const Library host(HOST_CORE);
            EXPECT_TRUE(host.Find<HostWorks>(function)());
        }
        EXPECT_FALSE(IsMapped("/libtoolkit.so"));
        rounds.Did(lives);
    }
    unsetenv("LC_ALL");
}

// One life of the library in which a Log is installed before the session, in it or after it.
void LogInALife(const std::string& folder, bool background, bool before, bool in)
{
    const Library toolkit(TOOLKIT_LIBRARY);
    const Library host(HOST_CORE);
    const Library plugin(PLUGIN_A);
    const auto install = host.Find<HostInstallLog>("HostInstallLog");
    const auto log = host.Find<HostLog>("HostLog");
    EXPECT_TRUE(!before || install(folder.c_str(), background));
    log("before");
    toolkit.Find<Action>("DllToolkitLoad")();
    host.Find<HostInitialize>("HostInitialize")(true);
    EXPECT_TRUE(!in || install(folder.c_str(), background));
    log("in");
    plugin.Find<PluginLog>("PluginLog")(L"in, from a plug-in");
    host.Find<HostRelease>("HostRelease")(true);
    toolkit.Find<Action>("DllToolkitUnload")();
    EXPECT_TRUE(before || in || install(folder.c_str(), background));
    log("after");
    log("last");
}

// The messages of the Log's file that a host or a plug-in logged.
std::vector<std::string> LinesIn(const std::string& folder)
{
    std::vector<std::string> messages;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
    {
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);)
            for (const char* function : {" HostLog ", " PluginLog "})
                if (const std::size_t place = line.find(function); place != line.npos)
                    messages.push_back(line.substr(place + std::strlen(function)));
    }
    return messages;
}

// A home folder of the test's own.
class Reload : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_NE(nullptr, mkdtemp(m_home));
        setenv("HOME", m_home, 1);
    }
    void TearDown() override { std::filesystem::remove_all(m_home); }

private:
    char m_home[32] = "/tmp/toolkit-test-XXXXXX";
};

} // namespace

TEST_F(Reload, ProgramIsNotLinkedWithTheLibrary)
{
    EXPECT_FALSE(IsMapped("/libtoolkit.so"));
    const Library toolkit(TOOLKIT_LIBRARY);
    EXPECT_TRUE(IsMapped("/libtoolkit.so"));
}

TEST_F(Reload, LibraryIsGoneWhenItIsClosedUnused)
{
    {
        const Library toolkit(TOOLKIT_LIBRARY);
    }
    EXPECT_FALSE(Library::IsLoaded(TOOLKIT_LIBRARY));
    EXPECT_FALSE(IsMapped("/libtoolkit.so"));
}

TEST_F(Reload, EntryPointsAloneBringTheLibraryUpAndDown)
{
    for (int i = 0; i < 2; ++i)
    {
        {
            const Library toolkit(TOOLKIT_LIBRARY);
            const Library host(HOST_CORE);
            toolkit.Find<Action>("DllToolkitLoad")();
            EXPECT_TRUE(host.Find<HostHasManager>("HostHasManager")());
            EXPECT_FALSE(host.Find<HostHasSingletons>("HostHasSingletons")());
            host.Find<HostInitialize>("HostInitialize")(false);
            EXPECT_TRUE(host.Find<HostHasSingletons>("HostHasSingletons")());
            toolkit.Find<Action>("DllToolkitUnload")();
            EXPECT_FALSE(host.Find<HostHasManager>("HostHasManager")());
            EXPECT_FALSE(host.Find<HostHasSingletons>("HostHasSingletons")());
        }
        EXPECT_FALSE(IsMapped("/libtoolkit.so"));
    }
}

TEST_F(Reload, LibraryIsGoneAfterALifeInEveryOrder)
{
    LiveInEveryOrder();
    EXPECT_FALSE(IsMapped("/libtoolkit.so"));
    EXPECT_FALSE(IsMapped(PLUGIN_A));
    EXPECT_FALSE(IsMapped(PLUGIN_B));
}

TEST_F(Reload, HundredsOfLivesLeaveNoMemoryBehind)
{
    Rounds rounds("lives", "TOOLKIT_TEST_LIVES", 240);
    while (rounds.GoOn())
    {
        unsigned long lives = 0;
        for (; lives < rounds.Size(80) && !HasFailure(); lives += s_uOrders)
            LiveInEveryOrder();
        rounds.Did(lives);
    }
}

// A Log is installed at one of three moments and stays: the library takes it down with itself.
TEST_F(Reload, LibraryIsGoneWithAnInstalledLogAndEveryLineIsInItsFile)
{
    enum Moment
    {
        Before,
        In,
        After
    };
    for (const bool background : {false, true})
        for (const Moment moment : {Before, In, After, Before, In, After})
        {
            const std::string folder =
                std::string(getenv("HOME")) + "/" + std::to_string(background) + std::to_string(moment);
            std::filesystem::remove_all(folder);
            LogInALife(folder, background, moment == Before, moment == In);
            ASSERT_FALSE(Library::IsLoaded(TOOLKIT_LIBRARY));
            EXPECT_FALSE(IsMapped("/libtoolkit.so"));
            const std::vector<std::string> all = {"before", "in", "in, from a plug-in", "after", "last"};
            EXPECT_EQ(std::vector<std::string>(all.begin() + (moment == Before ? 0
                                                              : moment == In   ? 1
                                                                               : 3),
                                               all.end()),
                      LinesIn(folder))
                << background << moment;
        }
}

TEST_F(Reload, DatesAreShownAtTheEndOfTheProcess)
{
    EXPECT_EXIT(WorkUntilTheEnd("HostShowsDate"), testing::ExitedWithCode(0), "");
}

TEST_F(Reload, DatesInManyLivesLeaveNoMemoryBehind)
{
    WorkInManyLives("HostShowsDate");
}

TEST_F(Reload, PatternsAreFoundAtTheEndOfTheProcess)
{
    EXPECT_EXIT(WorkUntilTheEnd("HostFindsPattern"), testing::ExitedWithCode(0), "");
}

TEST_F(Reload, PatternsInManyLivesLeaveNoMemoryBehind)
{
    WorkInManyLives("HostFindsPattern");
}
