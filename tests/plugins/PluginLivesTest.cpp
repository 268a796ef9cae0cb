// SPDX-License-Identifier: MIT
#include <atomic>
#include <cstdlib>
#include <memory>
#include <thread>

#include <gmock/gmock.h>

#include "tests/plugins/PluginsTest.h"
#include "tests/support/RecordingModule.h"
#include "tests/support/Rounds.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/core/Plugins.h"
#include "toolkit/core/ToolkitSession.h"

using namespace ToolkitTest;
using testing::ElementsAre;
using testing::ElementsAreArray;
using Toolkit::LibModuleManager;
using Toolkit::Plugins;
using Toolkit::ToolkitSession;

namespace
{

class PluginLives : public PluginsTest
{
protected:
    void SetUp() override
    {
        Put("noting_a", "a.so");
        Put("noting_b", "b.so");
    }

    std::unique_ptr<Plugins<Greeter>> Loaded()
    {
        auto greeters = std::make_unique<Plugins<Greeter>>(m_notes);
        EXPECT_THAT(Messages(greeters->LoadFolder(Folder())), testing::IsEmpty());
        return greeters;
    }

    Notes m_notes;
};

const char* const c_loaded[] = {"+a", "<a.static", "<a.lost", "+b", "<b.static", "<b.lost"};

} // namespace

TEST_F(PluginLives, SetMadeAndDestroyedInASessionReleasesItsModulesFirst)
{
    const ToolkitSession session;
    {
        const auto greeters = Loaded();
        EXPECT_THAT(m_notes.events, ElementsAreArray(c_loaded));
        m_notes.events.clear();
    }
    EXPECT_THAT(m_notes.events,
                ElementsAre(">b.lost", ">b.static", "-b", "~b", ">a.lost", ">a.static", "-a", "~a"));
    EXPECT_FALSE(IsMapped(Folder()));
}

TEST_F(PluginLives, SetThatOutlivesTheSession)
{
    {
        Plugins<Greeter> greeters(m_notes);
        {
            const ToolkitSession session;
            greeters.LoadFolder(Folder());
            m_notes.events.clear();
        }
        EXPECT_THAT(m_notes.events, ElementsAre(">b.lost", ">b.static", ">a.lost", ">a.static"));
        EXPECT_EQ("noted you", greeters.Find("a")->Greet("you"));
        m_notes.events.clear();
    }
    EXPECT_THAT(m_notes.events, ElementsAre("-b", "~b", "-a", "~a"));
}

TEST_F(PluginLives, SetWithoutASession)
{
    Loaded();
    EXPECT_THAT(m_notes.events, ElementsAre("+a", "+b", "-b", "~b", "-a", "~a"));
    // None of the code that is gone is called.
    const ToolkitSession session;
}

TEST_F(PluginLives, ModulesOfAPluginThatIsStillHeldStay)
{
    const ToolkitSession session;
    auto greeters = Loaded();
    std::shared_ptr<Greeter> holder = greeters->Find("a");
    greeters.reset();
    m_notes.events.clear();
    holder.reset();
    EXPECT_THAT(m_notes.events, ElementsAre(">a.lost", ">a.static", "-a", "~a"));
}

TEST_F(PluginLives, ModulesAreNotTakenFromThoseWhoShareTheirCode)
{
    const ToolkitSession session;
    auto first = Loaded();
    auto second = Loaded();
    m_notes.events.clear();
    EXPECT_FALSE(first->Load(first->Find("a")->Info().File()));
    EXPECT_THAT(m_notes.events, testing::IsEmpty()) << "refused, as it is loaded";
    first.reset();
    EXPECT_THAT(m_notes.events, ElementsAre("-b", "-a"));
    m_notes.events.clear();
    second.reset();
    EXPECT_THAT(m_notes.events,
                ElementsAre(">b.lost", ">b.static", "-b", "~b", ">a.lost", ">a.static", "-a", "~a"));
}

TEST_F(PluginLives, ModuleOfTheHostMayUnloadThemWhenItIsReleased)
{
    // A host's module is released after those of the plug-ins when it was registered before them.
    for (const bool before : {true, false})
    {
        RecordingModule module("host", m_notes.events);
        std::unique_ptr<Plugins<Greeter>> greeters;
        module.m_onRelease = [&greeters] { greeters.reset(); };
        {
            const ToolkitSession session;
            if (before)
                LibModuleManager::s_pInstance->Register(&module);
            greeters = Loaded();
            if (!before)
                LibModuleManager::s_pInstance->Register(&module);
            m_notes.events.clear();
        }
        if (before)
            EXPECT_THAT(m_notes.events, ElementsAre(">b.lost", ">b.static", ">a.lost", ">a.static", "-host",
                                                    "-b", "~b", "-a", "~a"));
        else
            EXPECT_THAT(m_notes.events, ElementsAre("-host", ">b.lost", ">b.static", "-b", "~b", ">a.lost",
                                                    ">a.static", "-a", "~a"));
    }
}

TEST_F(PluginLives, ModulesOfALibraryThatOneBringsAlongAreNotCalledOnceItIsGone)
{
    const ToolkitSession session;
    std::filesystem::remove(Folder() / "b.so");
    for (int round = 0; round < 2; ++round)
    {
        Plugins<Greeter> greeters(m_notes);
        ASSERT_TRUE(greeters.Load(Built("bringing")));
        EXPECT_EQ("brought you", greeters.Find("bringing")->Greet("you"));
        EXPECT_TRUE(IsMapped("plugin_brought"));
        EXPECT_TRUE(greeters.Unload("bringing"));
        EXPECT_FALSE(IsMapped("plugin_brought"));
    }
}

TEST_F(PluginLives, NeverUnloadedBeforeTheEndOfTheProcess)
{
    const auto process = [this](bool session, bool destroyed)
    {
        // What plug-ins refer to is destroyed last.
        static Notes s_notes;
        static std::unique_ptr<ToolkitSession> s_session;
        static std::shared_ptr<Plugins<Greeter>> s_destroyed;
        static Plugins<Greeter>* s_pKept = nullptr;
        if (session)
            s_session = std::make_unique<ToolkitSession>();
        auto greeters = std::make_unique<Plugins<Greeter>>(s_notes);
        greeters->LoadFolder(Folder());
        if (destroyed)
            s_destroyed = std::move(greeters);
        else
            s_pKept = greeters.release();
        std::exit(s_notes.events.empty() || (!destroyed && s_pKept->All().size() != 2) ? 1 : 0);
    };
    for (const bool session : {false, true})
        for (const bool destroyed : {false, true})
            EXPECT_EXIT(process(session, destroyed), testing::ExitedWithCode(0), "^$");
}

TEST_F(PluginLives, ManyLivesLeaveNothingBehind)
{
    Rounds rounds("sets loaded", "TOOLKIT_TEST_PLUGINS", 200);
    const ToolkitSession session;
    while (rounds.GoOn())
    {
        unsigned long lives = 0;
        for (; lives < rounds.Size(50) && !HasFailure(); ++lives)
        {
            Loaded();
            ASSERT_FALSE(IsMapped(Folder()));
            m_notes = Notes();
        }
        rounds.Did(lives);
    }
}

TEST_F(PluginLives, AnyThreadLooksWhileOthersLoadAndUnload)
{
    Put("a", "a.so");
    Put("b", "b.so");
    Plugins<Greeter> greeters;
    std::atomic<bool> stop(false);
    std::atomic<unsigned int> greeted(0);
    const auto look = [&]
    {
        while (!stop)
        {
            for (const std::shared_ptr<Greeter>& greeter : greeters.All())
                if (greeter->Greet("you") == "this is " + greeter->Info().Name() + ", hello you")
                    ++greeted;
            const std::shared_ptr<Greeter> greeter = greeters.Find("b");
            EXPECT_TRUE(greeter == nullptr || greeter->Greet("you") == "this is b, hello you");
        }
    };
    const auto load = [&](const std::string& name)
    {
        for (unsigned int round = 0; round < 100 || greeted < 100; ++round)
        {
            EXPECT_TRUE(greeters.Load(Folder() / (name + ".so")));
            EXPECT_TRUE(greeters.Unload(name));
        }
    };
    std::thread lookers[] = {std::thread(look), std::thread(look)};
    std::thread other(load, "a");
    load("b");
    other.join();
    stop = true;
    for (std::thread& looker : lookers)
        looker.join();
    EXPECT_FALSE(IsMapped(Folder()));
}

TEST_F(PluginLives, OfManyThreadsOneLoadsAName)
{
    Put("a", "a.so");
    for (unsigned int round = 0; round < 20; ++round)
    {
        Plugins<Greeter> greeters;
        std::atomic<unsigned int> loaded(0);
        const auto load = [&]
        {
            if (greeters.Load(Folder() / "a.so"))
                ++loaded;
        };
        std::thread threads[] = {std::thread(load), std::thread(load), std::thread(load)};
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(1U, loaded);
        EXPECT_EQ(1U, greeters.All().size());
    }
}
