// SPDX-License-Identifier: MIT
#include "toolkit/core/ToolkitModule.h"

#include <gtest/gtest.h>

#include "toolkit/app/PathManager.h"
#include "toolkit/app/RestartManagment.h"
#include "toolkit/app/SingleApplicationInstance.h"
#include "toolkit/app/SystemInfo.h"
#include "toolkit/app/Version.h"
#include "toolkit/log/ILogger.h"
#include "toolkit/log/LogLine.h"
#include "toolkit/log/NullLogger.h"

using Toolkit::ILogger;
using Toolkit::LogSeverity;
using Toolkit::NullLogger;
using Toolkit::PathManager;
using Toolkit::RestartManagment;
using Toolkit::SingleApplicationInstance;
using Toolkit::smart_ptr;
using Toolkit::SystemInfo;
using Toolkit::ToolkitModule;
using Toolkit::TString;
using Toolkit::Version;

namespace
{

// What a sink saw of the singletons when it was destroyed.
struct Seen
{
    int m_iTimes = 0;
    bool m_bLogger = false;
    bool m_bNullLogger = false;
    bool m_bSystemInfo = false;
    bool m_bVersion = false;
    bool m_bPathManager = false;
    bool m_bRestartManagment = false;
    bool m_bSingleInstance = false;
};

class WatchingSink : public ILogger
{
public:
    explicit WatchingSink(Seen& seen) : ILogger(LogSeverity::Verbose), m_seen(seen) {}
    ~WatchingSink() override
    {
        ++m_seen.m_iTimes;
        m_seen.m_bLogger = ILogger::s_pInstance != nullptr;
        m_seen.m_bNullLogger =
            m_seen.m_bLogger && dynamic_cast<NullLogger*>(ILogger::s_pInstance->get()) != nullptr;
        m_seen.m_bSystemInfo = SystemInfo::s_pInstance != nullptr;
        m_seen.m_bVersion = Version::s_pInstance != nullptr;
        m_seen.m_bPathManager = PathManager::s_pInstance != nullptr;
        m_seen.m_bRestartManagment = RestartManagment::s_pInstance != nullptr;
        m_seen.m_bSingleInstance = SingleApplicationInstance::s_pInstance != nullptr;
    }

    void Write(const TString<wchar_t>& text) override { m_strText += text; }

    TString<wchar_t> m_strText;

private:
    Seen& m_seen;
};

// Installs `successor` when it goes, which is after the library has put a sink of its own in its place.
class HandingOverSink : public NullLogger
{
public:
    explicit HandingOverSink(const smart_ptr<ILogger>& successor) : m_successor(successor) {}
    ~HandingOverSink() override { ILogger::SetLogger(m_successor); }

private:
    smart_ptr<ILogger> m_successor;
};

} // namespace

TEST(ToolkitModule, ReleaseWithoutInitializeIsHarmless)
{
    ToolkitModule().Release();
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
}

TEST(ToolkitModule, ConstructionCreatesNothing)
{
    const ToolkitModule module;
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
    EXPECT_EQ(nullptr, SystemInfo::s_pInstance);
    EXPECT_EQ(nullptr, Version::s_pInstance);
    EXPECT_EQ(nullptr, PathManager::s_pInstance);
    EXPECT_EQ(nullptr, RestartManagment::s_pInstance);
    EXPECT_EQ(nullptr, SingleApplicationInstance::s_pInstance);
}

TEST(ToolkitModule, InitializeCreatesEverySingleton)
{
    ToolkitModule module;
    module.Initialize();
    ASSERT_NE(nullptr, ILogger::s_pInstance);
    EXPECT_NE(nullptr, dynamic_cast<NullLogger*>(ILogger::s_pInstance->get()));
    ASSERT_NE(nullptr, SystemInfo::s_pInstance);
    EXPECT_FALSE(SystemInfo::s_pInstance->IsNull());
    ASSERT_NE(nullptr, Version::s_pInstance);
    EXPECT_EQ(L"1.0.865.8", (*Version::s_pInstance)->ToString());
    ASSERT_NE(nullptr, PathManager::s_pInstance);
    EXPECT_FALSE(PathManager::s_pInstance->IsNull());
    ASSERT_NE(nullptr, RestartManagment::s_pInstance);
    EXPECT_FALSE(RestartManagment::s_pInstance->IsNull());
    ASSERT_NE(nullptr, SingleApplicationInstance::s_pInstance);
    EXPECT_FALSE((*SingleApplicationInstance::s_pInstance)->IsAlreadyRunning());
    module.Release();
}

TEST(ToolkitModule, SecondInitializeChangesNothing)
{
    ToolkitModule module;
    module.Initialize();
    smart_ptr<ILogger>* const holder = ILogger::s_pInstance;
    const ILogger* const logger = ILogger::s_pInstance->get();
    const SystemInfo* const systemInfo = SystemInfo::s_pInstance->get();
    const Version* const version = Version::s_pInstance->get();
    const PathManager* const pathManager = PathManager::s_pInstance->get();
    const RestartManagment* const restart = RestartManagment::s_pInstance->get();
    const SingleApplicationInstance* const single = SingleApplicationInstance::s_pInstance->get();
    module.Initialize();
    EXPECT_EQ(holder, ILogger::s_pInstance);
    EXPECT_EQ(logger, ILogger::s_pInstance->get());
    EXPECT_EQ(systemInfo, SystemInfo::s_pInstance->get());
    EXPECT_EQ(version, Version::s_pInstance->get());
    EXPECT_EQ(pathManager, PathManager::s_pInstance->get());
    EXPECT_EQ(restart, RestartManagment::s_pInstance->get());
    EXPECT_EQ(single, SingleApplicationInstance::s_pInstance->get());
    module.Release();
}

TEST(ToolkitModule, InitializeKeepsASingletonThatTheHostMade)
{
    smart_ptr<SystemInfo>* const own = new smart_ptr<SystemInfo>(new SystemInfo);
    SystemInfo::s_pInstance = own;
    ToolkitModule module;
    module.Initialize();
    EXPECT_EQ(own, SystemInfo::s_pInstance);
    EXPECT_NE(nullptr, PathManager::s_pInstance);
    module.Release();
    EXPECT_EQ(nullptr, SystemInfo::s_pInstance);
}

TEST(ToolkitModule, ReleaseDestroysEverySingletonAndMayBeRepeated)
{
    ToolkitModule module;
    module.Initialize();
    for (int i = 0; i < 2; ++i)
    {
        module.Release();
        EXPECT_EQ(nullptr, ILogger::s_pInstance);
        EXPECT_EQ(nullptr, SystemInfo::s_pInstance);
        EXPECT_EQ(nullptr, Version::s_pInstance);
        EXPECT_EQ(nullptr, PathManager::s_pInstance);
        EXPECT_EQ(nullptr, RestartManagment::s_pInstance);
        EXPECT_EQ(nullptr, SingleApplicationInstance::s_pInstance);
    }
}

TEST(ToolkitModule, MayBeInitializedAgainAfterRelease)
{
    ToolkitModule module;
    for (int i = 0; i < 3; ++i)
    {
        module.Initialize();
        EXPECT_NE(nullptr, ILogger::s_pInstance);
        EXPECT_NE(nullptr, PathManager::s_pInstance);
        module.Release();
    }
}

TEST(ToolkitModule, AnotherOwnerKeepsASingletonAlive)
{
    ToolkitModule module;
    module.Initialize();
    const smart_ptr<PathManager> kept(*PathManager::s_pInstance);
    module.Release();
    EXPECT_EQ(nullptr, PathManager::s_pInstance);
    EXPECT_FALSE(kept->GetApplicationPath().empty());
}

TEST(ToolkitModule, HostsSinkGoesFirstAndLeavesANullLoggerBehind)
{
    Seen seen;
    ToolkitModule module;
    module.Initialize();
    ILogger::SetLogger(smart_ptr<ILogger>(new WatchingSink(seen)));
    module.Release();
    EXPECT_EQ(1, seen.m_iTimes);
    EXPECT_TRUE(seen.m_bNullLogger);
    EXPECT_TRUE(seen.m_bSystemInfo);
    EXPECT_TRUE(seen.m_bVersion);
    EXPECT_TRUE(seen.m_bPathManager);
    EXPECT_TRUE(seen.m_bRestartManagment);
    EXPECT_TRUE(seen.m_bSingleInstance);
}

TEST(ToolkitModule, HostsSinkThatIsStillOwnedGetsNothingOfTheTeardown)
{
    Seen seen;
    ToolkitModule module;
    module.Initialize();
    const smart_ptr<ILogger> sink(new WatchingSink(seen));
    ILogger::SetLogger(sink);
    TOOLKIT_LOG(LogSeverity::Info) << "before";
    const TString<wchar_t> before = static_cast<const WatchingSink&>(*sink).m_strText;
    EXPECT_TRUE(before.Contains(L"before"));
    module.Release();
    TOOLKIT_LOG(LogSeverity::Info) << "after";
    EXPECT_EQ(before, static_cast<const WatchingSink&>(*sink).m_strText);
    EXPECT_EQ(0, seen.m_iTimes);
}

TEST(ToolkitModule, LoggerGoesLast)
{
    Seen seen;
    ToolkitModule module;
    module.Initialize();
    ILogger::SetLogger(smart_ptr<ILogger>(new HandingOverSink(smart_ptr<ILogger>(new WatchingSink(seen)))));
    module.Release();
    EXPECT_EQ(1, seen.m_iTimes);
    EXPECT_TRUE(seen.m_bLogger);
    EXPECT_FALSE(seen.m_bSystemInfo);
    EXPECT_FALSE(seen.m_bVersion);
    EXPECT_FALSE(seen.m_bPathManager);
    EXPECT_FALSE(seen.m_bRestartManagment);
    EXPECT_FALSE(seen.m_bSingleInstance);
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
}
