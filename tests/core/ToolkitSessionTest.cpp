// SPDX-License-Identifier: MIT
#include "toolkit/core/ToolkitSession.h"

#include <memory>
#include <optional>
#include <stdexcept>

#include <gtest/gtest.h>
#include <wx/app.h>

#include "tests/support/RecordingModule.h"
#include "toolkit/core/DllToolkit.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/log/ILogger.h"
#include "toolkit/log/NullLogger.h"

using Toolkit::ILogger;
using Toolkit::LibModuleManager;
using Toolkit::NullLogger;
using Toolkit::smart_ptr;
using Toolkit::ToolkitSession;
using ToolkitTest::Journal;
using ToolkitTest::RecordingModule;

namespace
{

bool IsWxStarted()
{
    return wxAppConsole::GetInstance() != nullptr;
}

void ExpectAllDown()
{
    EXPECT_EQ(nullptr, LibModuleManager::s_pInstance);
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
    EXPECT_FALSE(IsWxStarted());
}

void ExpectAllUp()
{
    ASSERT_NE(nullptr, LibModuleManager::s_pInstance);
    EXPECT_TRUE(LibModuleManager::s_pInstance->IsInitialized());
    EXPECT_NE(nullptr, ILogger::s_pInstance);
    EXPECT_TRUE(IsWxStarted());
}

} // namespace

TEST(ToolkitSession, BringsEverythingUpAndDown)
{
    for (int i = 0; i < 3; ++i)
    {
        {
            const ToolkitSession session;
            ExpectAllUp();
        }
        ExpectAllDown();
    }
}

TEST(ToolkitSession, ReleasesModulesThatWereRegisteredMeanwhile)
{
    Journal journal;
    RecordingModule module("plugin", journal);
    {
        const ToolkitSession session;
        LibModuleManager::s_pInstance->Register(&module);
    }
    EXPECT_EQ((Journal{"+plugin", "-plugin"}), journal);
}

TEST(ToolkitSession, InnerSessionLeavesTheOuterAlone)
{
    Journal journal;
    RecordingModule module("plugin", journal);
    {
        const ToolkitSession outer;
        LibModuleManager* const manager = LibModuleManager::s_pInstance;
        manager->Register(&module);
        const smart_ptr<ILogger> sink(new NullLogger);
        ILogger::SetLogger(sink);
        {
            const ToolkitSession inner;
        }
        ExpectAllUp();
        EXPECT_EQ(manager, LibModuleManager::s_pInstance);
        EXPECT_EQ(sink, *ILogger::s_pInstance);
        EXPECT_EQ(Journal{"+plugin"}, journal);
    }
    ExpectAllDown();
}

TEST(ToolkitSession, InnerSessionMayOutliveTheOuter)
{
    std::optional<ToolkitSession> outer(std::in_place);
    const auto inner = std::make_unique<ToolkitSession>();
    outer.reset();
    ExpectAllDown();
}

TEST(ToolkitSession, KeepsWhatTheHostLoadedItself)
{
    DllToolkitLoad();
    {
        const ToolkitSession session;
        ExpectAllUp();
    }
    ASSERT_NE(nullptr, LibModuleManager::s_pInstance);
    EXPECT_FALSE(LibModuleManager::s_pInstance->IsInitialized());
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
    EXPECT_FALSE(IsWxStarted());
    DllToolkitUnload();
}

TEST(ToolkitSession, KeepsWhatTheHostInitializedItself)
{
    DllToolkitLoad();
    LibModuleManager::s_pInstance->Initialize(true);
    {
        const ToolkitSession session;
    }
    ExpectAllUp();
    LibModuleManager::s_pInstance->Release(true);
    DllToolkitUnload();
    ExpectAllDown();
}

TEST(ToolkitSession, SurvivesAnUnloadInside)
{
    {
        const ToolkitSession session;
        LibModuleManager::s_pInstance->Release(true);
        DllToolkitUnload();
    }
    ExpectAllDown();
}

TEST(ToolkitSession, ThrowsWhatAModuleThrowsAndTakesAllBack)
{
    Journal journal;
    RecordingModule module("plugin", journal);
    module.m_onInitialize = [] { throw std::runtime_error("module"); };
    DllToolkitLoad();
    LibModuleManager::s_pInstance->Register(&module);
    EXPECT_THROW(ToolkitSession session, std::runtime_error);
    EXPECT_EQ((Journal{"+plugin", "-plugin"}), journal);
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
    EXPECT_FALSE(IsWxStarted());
    DllToolkitUnload();
}

TEST(ToolkitSession, SwallowsWhatAModuleThrowsAtTheEnd)
{
    Journal journal;
    RecordingModule module("plugin", journal);
    module.m_onRelease = [] { throw std::runtime_error("module"); };
    {
        const ToolkitSession session;
        LibModuleManager::s_pInstance->Register(&module);
    }
    EXPECT_EQ(nullptr, LibModuleManager::s_pInstance);
    EXPECT_NE(nullptr, ILogger::s_pInstance);

    // The next session goes on from there and takes down what was left.
    {
        const ToolkitSession session;
        ExpectAllUp();
    }
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
    LibModuleManager().Release(true);
    ExpectAllDown();
}
