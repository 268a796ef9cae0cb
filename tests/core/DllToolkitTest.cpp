// SPDX-License-Identifier: MIT
#include "toolkit/core/DllToolkit.h"

#include <gtest/gtest.h>

#include "tests/support/RecordingModule.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/log/ILogger.h"

using Toolkit::ILogger;
using Toolkit::LibModuleManager;
using Toolkit::PathManager;
using ToolkitTest::Journal;
using ToolkitTest::RecordingModule;

TEST(DllToolkit, LoadMakesTheManagerAndInitializesNothing)
{
    ASSERT_EQ(nullptr, LibModuleManager::s_pInstance);
    DllToolkitLoad();
    ASSERT_NE(nullptr, LibModuleManager::s_pInstance);
    EXPECT_FALSE(LibModuleManager::s_pInstance->IsInitialized());
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
    DllToolkitUnload();
    EXPECT_EQ(nullptr, LibModuleManager::s_pInstance);
}

TEST(DllToolkit, LoadRegistersTheLibrarysModule)
{
    DllToolkitLoad();
    LibModuleManager::s_pInstance->Initialize(false);
    EXPECT_NE(nullptr, ILogger::s_pInstance);
    EXPECT_NE(nullptr, PathManager::s_pInstance);
    LibModuleManager::s_pInstance->Release(false);
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
    EXPECT_EQ(nullptr, PathManager::s_pInstance);
    DllToolkitUnload();
}

TEST(DllToolkit, LoadKeepsAManagerThatExists)
{
    LibModuleManager* const own = new LibModuleManager;
    LibModuleManager::s_pInstance = own;
    own->Initialize(false);
    DllToolkitLoad();
    EXPECT_EQ(own, LibModuleManager::s_pInstance);
    EXPECT_NE(nullptr, ILogger::s_pInstance);
    DllToolkitUnload();
    EXPECT_EQ(nullptr, LibModuleManager::s_pInstance);
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
}

TEST(DllToolkit, ModulesRegisteredLaterAreInitializedAfterTheLibrarysAndReleasedBefore)
{
    Journal journal;
    RecordingModule module("plugin", journal);
    module.m_onInitialize = module.m_onRelease = [] { EXPECT_NE(nullptr, ILogger::s_pInstance); };
    DllToolkitLoad();
    LibModuleManager::s_pInstance->Register(&module);
    LibModuleManager::s_pInstance->Initialize(false);
    LibModuleManager::s_pInstance->Release(false);
    EXPECT_EQ((Journal{"+plugin", "-plugin"}), journal);
    DllToolkitUnload();
}

TEST(DllToolkit, UnloadReleasesTheLibrarysModuleWhileInitializedAndForgetsTheOthers)
{
    Journal journal;
    RecordingModule module("plugin", journal);
    DllToolkitLoad();
    LibModuleManager::s_pInstance->Register(&module);
    LibModuleManager::s_pInstance->Initialize(false);
    DllToolkitUnload();
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
    EXPECT_EQ(nullptr, PathManager::s_pInstance);
    EXPECT_EQ(nullptr, LibModuleManager::s_pInstance);
    EXPECT_EQ(Journal{"+plugin"}, journal);
}

TEST(DllToolkit, UnloadWithoutALoadIsSurvived)
{
    DllToolkitUnload();
    DllToolkitUnload();
    EXPECT_EQ(nullptr, LibModuleManager::s_pInstance);
    DllToolkitLoad();
    EXPECT_NE(nullptr, LibModuleManager::s_pInstance);
    DllToolkitUnload();
}

TEST(DllToolkit, SecondLoadKeepsManagerSingletonsAndPlace)
{
    Journal journal;
    RecordingModule module("plugin", journal);
    module.m_onRelease = [] { EXPECT_NE(nullptr, ILogger::s_pInstance); };
    DllToolkitLoad();
    LibModuleManager* const manager = LibModuleManager::s_pInstance;
    manager->Register(&module);
    manager->Initialize(false);
    ILogger* const logger = ILogger::s_pInstance->get();
    DllToolkitLoad();
    EXPECT_EQ(manager, LibModuleManager::s_pInstance);
    EXPECT_EQ(logger, ILogger::s_pInstance->get());
    manager->Release(false);
    EXPECT_EQ((Journal{"+plugin", "-plugin"}), journal);
    DllToolkitUnload();
    DllToolkitUnload();
}

TEST(DllToolkit, OneUnloadTakesEverythingDownHoweverOftenLoaded)
{
    DllToolkitLoad();
    DllToolkitLoad();
    LibModuleManager::s_pInstance->Initialize(false);
    DllToolkitUnload();
    EXPECT_EQ(nullptr, LibModuleManager::s_pInstance);
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
    DllToolkitUnload();
    EXPECT_EQ(nullptr, LibModuleManager::s_pInstance);
}

TEST(DllToolkit, LoadInitializesAtOnceWhenTheManagerIsInitialized)
{
    LibModuleManager::s_pInstance = new LibModuleManager;
    LibModuleManager::s_pInstance->Initialize(false);
    EXPECT_EQ(nullptr, PathManager::s_pInstance);
    DllToolkitLoad();
    EXPECT_NE(nullptr, PathManager::s_pInstance);
    DllToolkitUnload();
}

TEST(DllToolkit, ManagerThatTheHostDestroyedIsSurvived)
{
    DllToolkitLoad();
    delete LibModuleManager::s_pInstance;
    LibModuleManager::s_pInstance = nullptr;
    DllToolkitUnload();
    DllToolkitLoad();
    EXPECT_NE(nullptr, LibModuleManager::s_pInstance);
    DllToolkitUnload();
}

TEST(DllToolkit, LifeWithoutWxWidgetsIsSilent)
{
    ToolkitTest::CapturedOutput output(2);
    DllToolkitLoad();
    LibModuleManager::s_pInstance->Initialize(false);
    LibModuleManager::s_pInstance->Release(true);
    DllToolkitUnload();
    EXPECT_EQ("", output.Stop());
}
