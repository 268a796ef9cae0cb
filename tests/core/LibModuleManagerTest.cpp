// SPDX-License-Identifier: MIT
#include "toolkit/core/LibModuleManager.h"

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/init.h>

#include "tests/support/RecordingModule.h"
#include "tests/support/TemporaryFolder.h"

using Toolkit::LibModuleManager;
using ToolkitTest::CapturedOutput;
using ToolkitTest::Journal;
using ToolkitTest::RecordingModule;

namespace
{

// A manager of the test's own with three modules, none of them registered yet.
class LibModuleManagerTest : public testing::Test
{
protected:
    void RegisterAll()
    {
        m_manager.Register(&m_a);
        m_manager.Register(&m_b);
        m_manager.Register(&m_c);
    }

    // The journal since the last call.
    Journal Take() { return std::exchange(m_journal, Journal()); }

    // True when another thread gets the manager at once.
    bool IsFree()
    {
        return std::async(std::launch::async, [this] { m_manager.Unregister(&m_stranger); })
                   .wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    }

    Journal m_journal;
    RecordingModule m_a{"a", m_journal};
    RecordingModule m_b{"b", m_journal};
    RecordingModule m_c{"c", m_journal};
    RecordingModule m_stranger{"stranger", m_journal};
    LibModuleManager m_manager;
};

// The one instance, for a scope.
class InstalledManager
{
public:
    InstalledManager() { LibModuleManager::s_pInstance = &m_manager; }
    ~InstalledManager() { LibModuleManager::s_pInstance = nullptr; }
    InstalledManager(const InstalledManager&) = delete;
    InstalledManager& operator=(const InstalledManager&) = delete;

    LibModuleManager* operator->() { return &m_manager; }

private:
    LibModuleManager m_manager;
};

// Calls a function when it is initialised.
class CallingModule : public Toolkit::LibModule
{
public:
    explicit CallingModule(std::function<void()> call) : m_call(std::move(call)) {}

    void Initialize() override { m_call(); }
    void Release() override {}

private:
    const std::function<void()> m_call;
};

// Destroys another module when it is released.
class DestroyingModule : public Toolkit::LibModule
{
public:
    explicit DestroyingModule(std::unique_ptr<RecordingModule> other) : m_pOther(std::move(other)) {}
    void Initialize() override {}
    void Release() override { m_pOther.reset(); }

private:
    std::unique_ptr<RecordingModule> m_pOther;
};

[[noreturn]] void Throw()
{
    throw std::runtime_error("module");
}

bool IsWxStarted()
{
    return wxAppConsole::GetInstance() != nullptr;
}

} // namespace

// ---- registered, not initialised

TEST_F(LibModuleManagerTest, RegisterBeforeInitializeCallsNothing)
{
    RegisterAll();
    EXPECT_EQ(Journal(), Take());
    EXPECT_FALSE(m_manager.IsInitialized());
}

TEST_F(LibModuleManagerTest, InitializeCallsModulesInOrderOfRegistration)
{
    RegisterAll();
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+b", "+c"}), Take());
    EXPECT_TRUE(m_manager.IsInitialized());
}

TEST_F(LibModuleManagerTest, UnregisterBeforeInitializeRemovesWithoutACall)
{
    RegisterAll();
    m_manager.Unregister(&m_b);
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+c"}), Take());
}

TEST_F(LibModuleManagerTest, AfterReleaseRegisterAndUnregisterCallNothing)
{
    RegisterAll();
    m_manager.Initialize(false);
    m_manager.Release(false);
    Take();
    m_manager.Register(&m_stranger);
    m_manager.Unregister(&m_a);
    EXPECT_EQ(Journal(), Take());
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+b", "+c", "+stranger"}), Take());
}

// ---- initialised

TEST_F(LibModuleManagerTest, RegisterWhileInitializedInitializesAtOnce)
{
    m_manager.Register(&m_a);
    m_manager.Initialize(false);
    m_manager.Register(&m_b);
    EXPECT_EQ((Journal{"+a", "+b"}), Take());
    m_manager.Release(false);
    EXPECT_EQ((Journal{"-b", "-a"}), Take());
}

TEST_F(LibModuleManagerTest, UnregisterWhileInitializedReleasesAndRemoves)
{
    RegisterAll();
    m_manager.Initialize(false);
    Take();
    m_manager.Unregister(&m_b);
    EXPECT_EQ(Journal{"-b"}, Take());
    m_manager.Release(false);
    EXPECT_EQ((Journal{"-c", "-a"}), Take());
}

TEST_F(LibModuleManagerTest, SecondInitializeCallsEveryModuleAgain)
{
    m_manager.Register(&m_a);
    m_manager.Initialize(false);
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+a"}), Take());
}

// ---- counting

TEST_F(LibModuleManagerTest, SecondRegistrationOnlyCounts)
{
    m_manager.Register(&m_a);
    m_manager.Initialize(false);
    m_manager.Register(&m_a);
    EXPECT_EQ(Journal{"+a"}, Take());
    m_manager.Release(false);
    EXPECT_EQ(Journal{"-a"}, Take());
}

TEST_F(LibModuleManagerTest, ModuleRegisteredTwiceIsUnregisteredTwice)
{
    m_manager.Register(&m_a);
    m_manager.Register(&m_a);
    m_manager.Initialize(false);
    m_manager.Unregister(&m_a);
    EXPECT_EQ(Journal{"+a"}, Take());
    m_manager.Unregister(&m_a);
    EXPECT_EQ(Journal{"-a"}, Take());
    m_manager.Release(false);
    EXPECT_EQ(Journal(), Take());
}

TEST_F(LibModuleManagerTest, SecondRegistrationKeepsTheFirstPlace)
{
    RegisterAll();
    m_manager.Register(&m_a);
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+b", "+c"}), Take());
}

TEST_F(LibModuleManagerTest, RemovedModuleRegistersAnewAtTheEnd)
{
    RegisterAll();
    m_manager.Unregister(&m_a);
    m_manager.Register(&m_a);
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+b", "+c", "+a"}), Take());
}

TEST_F(LibModuleManagerTest, UnregisterOfAStrangerIsIgnored)
{
    RegisterAll();
    m_manager.Unregister(&m_stranger);
    m_manager.Initialize(false);
    m_manager.Unregister(&m_stranger);
    EXPECT_EQ((Journal{"+a", "+b", "+c"}), Take());
}

TEST_F(LibModuleManagerTest, NullIsIgnored)
{
    m_manager.Register(nullptr);
    m_manager.Initialize(false);
    m_manager.Register(nullptr);
    m_manager.Unregister(nullptr);
    m_manager.Release(false);
    EXPECT_EQ(Journal(), Take());
}

TEST_F(LibModuleManagerTest, DestructionReleasesAndDeletesNoModule)
{
    auto manager = std::make_unique<LibModuleManager>();
    manager->Register(&m_a);
    manager->Initialize(false);
    manager.reset();
    EXPECT_EQ(Journal{"+a"}, Take());
}

// ---- releasing

TEST_F(LibModuleManagerTest, ReleaseCallsModulesInReverseOrder)
{
    RegisterAll();
    m_manager.Initialize(false);
    Take();
    m_manager.Release(false);
    EXPECT_EQ((Journal{"-c", "-b", "-a"}), Take());
    EXPECT_FALSE(m_manager.IsInitialized());
}

TEST_F(LibModuleManagerTest, ReleaseCallsModulesThatWereNeverInitialized)
{
    RegisterAll();
    m_manager.Release(false);
    EXPECT_EQ((Journal{"-c", "-b", "-a"}), Take());
}

TEST_F(LibModuleManagerTest, ReleaseKeepsModulesRegistered)
{
    RegisterAll();
    m_manager.Initialize(false);
    m_manager.Release(false);
    Take();
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+b", "+c"}), Take());
}

TEST_F(LibModuleManagerTest, RegisterWhileReleasingInitializesAtOnceAndStaysRegistered)
{
    RegisterAll();
    m_b.m_onRelease = [this] { m_manager.Register(&m_stranger); };
    m_manager.Initialize(false);
    Take();
    m_manager.Release(false);
    EXPECT_EQ((Journal{"-c", "-b", "+stranger", "-a"}), Take());
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+b", "+c", "+stranger"}), Take());
}

TEST_F(LibModuleManagerTest, RegisterFromTheFirstReleasedModuleReleasesNobodyTwice)
{
    RegisterAll();
    m_c.m_onRelease = [this] { m_manager.Register(&m_stranger); };
    m_manager.Initialize(false);
    Take();
    m_manager.Release(false);
    EXPECT_EQ((Journal{"-c", "+stranger", "-b", "-a"}), Take());
}

TEST_F(LibModuleManagerTest, RegisterWhileReleasingUninitializedCallsNothing)
{
    RegisterAll();
    m_b.m_onRelease = [this] { m_manager.Register(&m_stranger); };
    m_manager.Release(false);
    EXPECT_EQ((Journal{"-c", "-b", "-a"}), Take());
}

TEST_F(LibModuleManagerTest, ModuleThatUnregistersItselfIsReleasedOnceAndRemovedAfterTheWalk)
{
    RegisterAll();
    m_b.m_onRelease = [this] { m_manager.Unregister(&m_b); };
    m_manager.Initialize(false);
    Take();
    m_manager.Release(false);
    EXPECT_EQ((Journal{"-c", "-b", "-a"}), Take());
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+c"}), Take());
}

TEST_F(LibModuleManagerTest, RemovalWaitsForTheEndOfTheWalk)
{
    RegisterAll();
    // Still registered in the middle of the walk: registering it again is no new module.
    m_c.m_onRelease = [this] { m_manager.Unregister(&m_c); };
    m_a.m_onRelease = [this] { m_manager.Register(&m_c); };
    m_manager.Initialize(false);
    Take();
    m_manager.Release(false);
    EXPECT_EQ((Journal{"-c", "-b", "-a"}), Take());
}

TEST_F(LibModuleManagerTest, ModuleRegisteredAgainWhileItsRemovalWaitsIsRemovedAllTheSame)
{
    RegisterAll();
    m_b.m_onRelease = [this]
    {
        m_manager.Unregister(&m_b);
        m_manager.Register(&m_b);
    };
    m_manager.Initialize(false);
    m_manager.Release(false);
    Take();
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+c"}), Take());
}

TEST_F(LibModuleManagerTest, ModuleUnregisteredOverAndOverWhileReleasingIsRemovedOnce)
{
    RegisterAll();
    m_b.m_onRelease = [this]
    {
        m_manager.Unregister(&m_b);
        m_manager.Unregister(&m_b);
        m_manager.Register(&m_b);
        m_manager.Unregister(&m_b);
    };
    m_manager.Initialize(false);
    m_manager.Release(false);
    Take();
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+c"}), Take());
}

TEST_F(LibModuleManagerTest, AllModulesMayUnregisterThemselves)
{
    RegisterAll();
    for (RecordingModule* module : {&m_a, &m_b, &m_c})
        module->m_onRelease = [this, module] { m_manager.Unregister(module); };
    m_manager.Initialize(false);
    m_manager.Release(false);
    EXPECT_EQ((Journal{"+a", "+b", "+c", "-c", "-b", "-a"}), Take());
    m_manager.Initialize(false);
    EXPECT_EQ(Journal(), Take());
}

TEST_F(LibModuleManagerTest, UnregisteringAModuleThatTheWalkHasYetToReachReleasesItOnce)
{
    RegisterAll();
    m_c.m_onRelease = [this] { m_manager.Unregister(&m_a); };
    m_manager.Initialize(false);
    Take();
    m_manager.Release(false);
    EXPECT_EQ((Journal{"-c", "-b", "-a"}), Take());
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+b", "+c"}), Take());
}

TEST_F(LibModuleManagerTest, UnregisteringAModuleThatTheWalkHasLeftReleasesItOnce)
{
    RegisterAll();
    m_a.m_onRelease = [this] { m_manager.Unregister(&m_c); };
    m_manager.Initialize(false);
    Take();
    m_manager.Release(false);
    EXPECT_EQ((Journal{"-c", "-b", "-a"}), Take());
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+b"}), Take());
}

TEST_F(LibModuleManagerTest, OneOfTwoRegistrationsTakenBackWhileReleasingKeepsTheModule)
{
    RegisterAll();
    m_manager.Register(&m_b);
    m_b.m_onRelease = [this] { m_manager.Unregister(&m_b); };
    m_manager.Initialize(false);
    m_manager.Release(false);
    Take();
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+b", "+c"}), Take());
}

// ---- calls back from Initialize

TEST_F(LibModuleManagerTest, ModuleRegisteredByAnotherOneIsInitializedOnceByTheWalk)
{
    m_a.m_onInitialize = [this] { m_manager.Register(&m_b); };
    m_b.m_onInitialize = [this] { m_manager.Register(&m_c); };
    m_manager.Register(&m_a);
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+b", "+c"}), Take());
}

TEST_F(LibModuleManagerTest, ModuleMayUnregisterItselfWhenInitialized)
{
    RegisterAll();
    m_b.m_onInitialize = [this] { m_manager.Unregister(&m_b); };
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+b", "+c"}), Take());
    m_manager.Release(false);
    EXPECT_EQ((Journal{"-c", "-a"}), Take());
}

TEST_F(LibModuleManagerTest, ModuleUnregisteredByTheOneBeforeItIsNotInitialized)
{
    RegisterAll();
    m_a.m_onInitialize = [this]
    {
        m_manager.Unregister(&m_b);
        m_manager.Unregister(&m_a);
        m_manager.Unregister(&m_c);
        m_manager.Register(&m_stranger);
    };
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+stranger"}), Take());
    m_manager.Release(false);
    EXPECT_EQ(Journal{"-stranger"}, Take());
}

TEST_F(LibModuleManagerTest, ModuleRegisteredByOneThatIsRegisteredLateIsInitializedAtOnce)
{
    m_manager.Initialize(false);
    m_a.m_onInitialize = [this]
    {
        m_manager.Register(&m_b);
        m_journal.push_back("registered");
    };
    m_manager.Register(&m_a);
    EXPECT_EQ((Journal{"+a", "+b", "registered"}), Take());
}

TEST_F(LibModuleManagerTest, LateModuleMayUnregisterItselfWhenInitialized)
{
    m_manager.Initialize(false);
    m_a.m_onInitialize = [this] { m_manager.Unregister(&m_a); };
    m_manager.Register(&m_a);
    EXPECT_EQ((Journal{"+a", "-a"}), Take());
    m_manager.Release(false);
    EXPECT_EQ(Journal(), Take());
}

TEST_F(LibModuleManagerTest, ModuleMayUnregisterItselfAndOthersWhenUnregistered)
{
    RegisterAll();
    m_b.m_onRelease = [this]
    {
        m_manager.Unregister(&m_b);
        m_manager.Unregister(&m_c);
    };
    m_manager.Initialize(false);
    Take();
    m_manager.Unregister(&m_b);
    EXPECT_EQ((Journal{"-b", "-c"}), Take());
    m_manager.Release(false);
    EXPECT_EQ(Journal{"-a"}, Take());
}

TEST_F(LibModuleManagerTest, UnregisteredModuleMayReleaseAllTheOthers)
{
    RegisterAll();
    bool nested = false;
    m_b.m_onRelease = [this, &nested]
    {
        if (std::exchange(nested, true))
            return;
        m_manager.Register(&m_b);
        m_c.m_onRelease = [this] { m_manager.Unregister(&m_b); };
        m_manager.Release(false);
    };
    m_manager.Initialize(false);
    Take();
    m_manager.Unregister(&m_b);
    EXPECT_EQ((Journal{"-b", "-c", "-b", "-a"}), Take());
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+c"}), Take());
}

// ---- exceptions

TEST_F(LibModuleManagerTest, ExceptionOfInitializePassesAndLeavesTheManagerUninitialized)
{
    RegisterAll();
    m_b.m_onInitialize = &Throw;
    EXPECT_THROW(m_manager.Initialize(false), std::runtime_error);
    EXPECT_EQ((Journal{"+a", "+b"}), Take());
    EXPECT_TRUE(IsFree());
    EXPECT_FALSE(m_manager.IsInitialized());
    m_manager.Register(&m_stranger);
    EXPECT_EQ(Journal(), Take());

    m_b.m_onInitialize = nullptr;
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+b", "+c", "+stranger"}), Take());
}

TEST_F(LibModuleManagerTest, ExceptionOfALateModulePassesAndLeavesItRegistered)
{
    m_manager.Initialize(false);
    m_a.m_onInitialize = &Throw;
    EXPECT_THROW(m_manager.Register(&m_a), std::runtime_error);
    EXPECT_TRUE(IsFree());
    EXPECT_TRUE(m_manager.IsInitialized());
    Take();
    m_manager.Release(false);
    EXPECT_EQ(Journal{"-a"}, Take());
}

TEST_F(LibModuleManagerTest, ExceptionOfReleasePassesAndLeavesTheManagerReleasing)
{
    RegisterAll();
    m_manager.Initialize(false);
    Take();
    m_b.m_onRelease = &Throw;
    EXPECT_THROW(m_manager.Release(false), std::runtime_error);
    EXPECT_EQ((Journal{"-c", "-b"}), Take());
    EXPECT_TRUE(IsFree());
    EXPECT_TRUE(m_manager.IsInitialized());
    // Still releasing: a removal waits, and a new module is initialised at once.
    m_manager.Unregister(&m_c);
    m_manager.Register(&m_stranger);
    EXPECT_EQ(Journal{"+stranger"}, Take());

    m_b.m_onRelease = nullptr;
    m_manager.Release(false);
    EXPECT_EQ((Journal{"-stranger", "-c", "-b", "-a"}), Take());
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+b", "+stranger"}), Take());
}

TEST_F(LibModuleManagerTest, ExceptionOfReleaseKeepsRemovalsThatWait)
{
    RegisterAll();
    m_manager.Initialize(false);
    m_c.m_onRelease = [this] { m_manager.Unregister(&m_c); };
    m_b.m_onRelease = &Throw;
    EXPECT_THROW(m_manager.Release(false), std::runtime_error);
    m_b.m_onRelease = nullptr;
    m_manager.Release(false);
    Take();
    m_manager.Initialize(false);
    EXPECT_EQ((Journal{"+a", "+b"}), Take());
}

TEST_F(LibModuleManagerTest, ExceptionOfAnUnregisteredModulePassesAndLeavesItRegistered)
{
    RegisterAll();
    m_manager.Initialize(false);
    Take();
    m_b.m_onRelease = &Throw;
    EXPECT_THROW(m_manager.Unregister(&m_b), std::runtime_error);
    EXPECT_TRUE(IsFree());
    EXPECT_EQ(Journal{"-b"}, Take());

    m_b.m_onRelease = nullptr;
    m_manager.Unregister(&m_b);
    EXPECT_EQ(Journal{"-b"}, Take());
    m_manager.Release(false);
    EXPECT_EQ((Journal{"-c", "-a"}), Take());
}

// ---- threads

TEST_F(LibModuleManagerTest, ModulesAreCalledWithTheManagerHeld)
{
    std::promise<void> inside;
    std::promise<void> proceed;
    std::atomic<bool> registered{false};
    m_a.m_onInitialize = [&]
    {
        inside.set_value();
        proceed.get_future().wait();
        EXPECT_FALSE(registered);
    };
    m_manager.Register(&m_a);
    std::thread other(
        [&]
        {
            inside.get_future().wait();
            proceed.set_value();
            m_manager.Register(&m_b);
            registered = true;
        });
    m_manager.Initialize(false);
    other.join();
    EXPECT_EQ((Journal{"+a", "+b"}), Take());
}

TEST_F(LibModuleManagerTest, ThreadsMayRegisterAndUnregisterAtOnce)
{
    m_manager.Register(&m_a);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            [this]
            {
                for (int round = 0; round < 500; ++round)
                {
                    m_manager.Register(&m_b);
                    m_manager.Register(&m_a);
                    m_manager.Unregister(&m_a);
                    m_manager.Unregister(&m_b);
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    m_manager.Initialize(false);
    EXPECT_EQ(Journal{"+a"}, Take());
}

// ---- wxWidgets

TEST_F(LibModuleManagerTest, InitializeStartsWxWidgetsBeforeTheModules)
{
    bool started = false;
    m_a.m_onInitialize = [&started] { started = IsWxStarted(); };
    m_manager.Register(&m_a);
    m_manager.Initialize(true);
    EXPECT_TRUE(started);
    m_manager.Release(true);
    EXPECT_FALSE(IsWxStarted());
}

TEST_F(LibModuleManagerTest, ReleaseStopsWxWidgetsAfterTheModules)
{
    bool started = false;
    m_a.m_onRelease = [&started] { started = IsWxStarted(); };
    m_manager.Register(&m_a);
    m_manager.Initialize(true);
    m_manager.Release(true);
    EXPECT_TRUE(started);
    EXPECT_FALSE(IsWxStarted());
}

TEST_F(LibModuleManagerTest, FalseLeavesWxWidgetsAlone)
{
    m_manager.Initialize(false);
    EXPECT_FALSE(IsWxStarted());
    m_manager.Release(false);
    m_manager.Initialize(true);
    m_manager.Release(false);
    EXPECT_TRUE(IsWxStarted());
    m_manager.Release(true);
    EXPECT_FALSE(IsWxStarted());
}

TEST_F(LibModuleManagerTest, ReleaseWithoutAStartStopsNothing)
{
    m_manager.Release(true);
    m_manager.Release(true);
    ASSERT_FALSE(IsWxStarted());
    m_manager.Initialize(true);
    EXPECT_TRUE(IsWxStarted());
    m_manager.Release(true);
    EXPECT_FALSE(IsWxStarted());
}

TEST_F(LibModuleManagerTest, EachStartTakesAStop)
{
    m_manager.Initialize(true);
    m_manager.Initialize(true);
    m_manager.Release(true);
    EXPECT_TRUE(IsWxStarted());
    m_manager.Release(true);
    EXPECT_FALSE(IsWxStarted());
    m_manager.Release(true);
    EXPECT_FALSE(IsWxStarted());
}

TEST_F(LibModuleManagerTest, StartOutlivesTheManagerThatMadeIt)
{
    std::make_unique<LibModuleManager>()->Initialize(true);
    EXPECT_TRUE(IsWxStarted());
    m_manager.Release(true);
    EXPECT_FALSE(IsWxStarted());
}

TEST_F(LibModuleManagerTest, StartIsOwedEvenWhenAModuleThrows)
{
    m_a.m_onInitialize = &Throw;
    m_manager.Register(&m_a);
    EXPECT_THROW(m_manager.Initialize(true), std::runtime_error);
    EXPECT_TRUE(IsWxStarted());
    m_manager.Release(true);
    EXPECT_FALSE(IsWxStarted());
}

TEST_F(LibModuleManagerTest, WxWidgetsStartedByTheHostStaysStarted)
{
    ASSERT_TRUE(wxInitialize());
    m_manager.Release(true);
    EXPECT_TRUE(IsWxStarted());
    m_manager.Initialize(true);
    m_manager.Release(true);
    m_manager.Release(true);
    EXPECT_TRUE(IsWxStarted());
    wxUninitialize();
    EXPECT_FALSE(IsWxStarted());
}

TEST_F(LibModuleManagerTest, ApplicationObjectOfTheHostStays)
{
    class HostApplication : public wxAppConsole
    {
    public:
        int OnRun() override { return 0; }
    };
    int count = 1;
    char name[] = "host";
    char* arguments[] = {name, nullptr};
    wxAppConsole* const application = new HostApplication;
    wxAppConsole::SetInstance(application);
    ASSERT_TRUE(wxEntryStart(count, arguments));

    m_manager.Initialize(true);
    EXPECT_EQ(application, wxAppConsole::GetInstance());
    m_manager.Release(true);
    EXPECT_EQ(application, wxAppConsole::GetInstance());
    wxEntryCleanup();
}

TEST_F(LibModuleManagerTest, WxWidgetsMayBeStoppedOnAnotherThread)
{
    m_manager.Initialize(true);
    std::thread([this] { m_manager.Release(true); }).join();
    m_manager.Initialize(true);
    EXPECT_TRUE(IsWxStarted());
    m_manager.Release(true);
    EXPECT_FALSE(IsWxStarted());
}

TEST_F(LibModuleManagerTest, NothingIsPrinted)
{
    CapturedOutput output(2);
    m_manager.Release(true);
    m_manager.Initialize(true);
    m_manager.Initialize(true);
    m_manager.Release(true);
    m_manager.Release(true);
    m_manager.Release(true);
    EXPECT_EQ("", output.Stop());
}

TEST(LibModuleManager, ForgetsAModuleThatIsDestroyedWhileItIsRegistered)
{
    Journal journal;
    InstalledManager manager;
    RecordingModule stays("stays", journal);
    {
        RecordingModule goes("goes", journal);
        manager->Register(&goes);
        manager->Register(&goes);
        manager->Register(&stays);
        manager->Initialize(false);
    }
    manager->Release(false);
    manager->Initialize(false);
    EXPECT_EQ((Journal{"+goes", "+stays", "-stays", "+stays"}), journal);
}

TEST(LibModuleManager, ForgetsAModuleThatIsDestroyedDuringTheWalk)
{
    Journal journal;
    InstalledManager manager;
    auto first = std::make_unique<RecordingModule>("first", journal);
    RecordingModule* const module = first.get();
    DestroyingModule second(std::move(first));
    manager->Register(module);
    manager->Register(&second);
    manager->Release(false);
    manager->Release(false);
    EXPECT_EQ(Journal{}, journal);
}

// Its destructor may run within the system's loader, for which a module waits that is being initialised.
TEST(LibModule, DestructionOfOneThatIsNotRegisteredDoesNotWaitForTheManager)
{
    InstalledManager manager;
    bool isDestroyed = false;
    CallingModule module(
        [&isDestroyed]
        {
            Journal journal;
            auto stranger = std::make_unique<RecordingModule>("stranger", journal);
            isDestroyed = std::async(std::launch::async, [&stranger] { stranger.reset(); })
                              .wait_for(std::chrono::seconds(20)) == std::future_status::ready;
        });
    manager->Register(&module);
    manager->Initialize(false);
    EXPECT_TRUE(isDestroyed);
    manager->Release(false);
    manager->Unregister(&module);
}
