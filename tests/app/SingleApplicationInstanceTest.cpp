// SPDX-License-Identifier: MIT
#include "toolkit/app/SingleApplicationInstance.h"

#include <filesystem>
#include <type_traits>

#include <gtest/gtest.h>
#include <wx/app.h>
// The checker's header asks the application object, by a cast to the class of the graphical library, whose
// type information the sanitizers would look for.
#undef wxTheApp
#define wxTheApp wxAppConsole::GetInstance()
#include <wx/snglinst.h>

#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/encoding/UTF8.h"

using Toolkit::PathManager;
using Toolkit::SingleApplicationInstance;
using Toolkit::smart_ptr;
using Toolkit::UTF8;
using ToolkitTest::CapturedOutput;
using ToolkitTest::InChild;
using ToolkitTest::ScopedEnvironment;
using ToolkitTest::TemporaryFolder;

static_assert(!std::is_copy_constructible_v<SingleApplicationInstance>);
static_assert(!std::is_polymorphic_v<SingleApplicationInstance>);

namespace
{

// A path manager, whose name for the application the lock file has, in a home folder of the test's own.
class SingleApplicationInstanceTest : public testing::Test
{
protected:
    SingleApplicationInstanceTest()
    {
        PathManager::s_pInstance = new smart_ptr<PathManager>(new PathManager);
    }
    ~SingleApplicationInstanceTest() override { RemovePathManager(); }

    static void RemovePathManager()
    {
        delete PathManager::s_pInstance;
        PathManager::s_pInstance = nullptr;
    }

    std::string LockPath() const
    {
        return m_home.Path(UTF8::ToUTF8((*PathManager::s_pInstance)->GetUniqueInstanceName()));
    }
    bool IsLockThere() const { return std::filesystem::exists(LockPath()); }

    TemporaryFolder m_home;
    const ScopedEnvironment m_environment{"HOME", m_home.Path().c_str()};
};

} // namespace

TEST_F(SingleApplicationInstanceTest, OnlyProcessIsTheFirst)
{
    {
        const SingleApplicationInstance instance;
        EXPECT_FALSE(instance.IsAlreadyRunning());
        EXPECT_TRUE(IsLockThere());
    }
    EXPECT_FALSE(IsLockThere());
}

TEST_F(SingleApplicationInstanceTest, AnotherProcessIsNot)
{
    const SingleApplicationInstance instance;
    EXPECT_TRUE(InChild([] { return SingleApplicationInstance().IsAlreadyRunning(); }));
    EXPECT_TRUE(IsLockThere());
}

TEST_F(SingleApplicationInstanceTest, FurtherObjectsOfTheProcessAreNoOtherInstance)
{
    const SingleApplicationInstance instance;
    EXPECT_FALSE(SingleApplicationInstance().IsAlreadyRunning());
    EXPECT_TRUE(IsLockThere());
    EXPECT_TRUE(InChild([] { return SingleApplicationInstance().IsAlreadyRunning(); }));
}

// A host of an older kind may stand at the same path.
TEST_F(SingleApplicationInstanceTest, AndACheckerOfWxWidgetsSeeEachOther)
{
    const auto isSeenByChecker = [this]
    {
        wxSingleInstanceChecker checker;
        return checker.Create((*PathManager::s_pInstance)->GetUniqueInstanceName(), m_home.Path()) &&
               checker.IsAnotherRunning();
    };
    {
        const SingleApplicationInstance instance;
        EXPECT_TRUE(InChild(isSeenByChecker));
    }
    EXPECT_FALSE(isSeenByChecker());
    wxSingleInstanceChecker checker;
    ASSERT_TRUE(checker.Create((*PathManager::s_pInstance)->GetUniqueInstanceName(), m_home.Path()));
    EXPECT_TRUE(InChild([] { return SingleApplicationInstance().IsAlreadyRunning(); }));
    EXPECT_TRUE(IsLockThere());
}

TEST_F(SingleApplicationInstanceTest, RemovesNoLockButItsOwn)
{
    const std::string other = m_home.Path("other");
    ToolkitTest::WriteBytes(other, "1");
    {
        const SingleApplicationInstance instance;
        EXPECT_TRUE(IsLockThere());
        std::filesystem::rename(other, LockPath());
    }
    EXPECT_EQ("1", ToolkitTest::ReadBytes(LockPath()));
}

TEST_F(SingleApplicationInstanceTest, IsFirstWithoutAPathManager)
{
    RemovePathManager();
    CapturedOutput output(2);
    EXPECT_FALSE(SingleApplicationInstance().IsAlreadyRunning());
    PathManager::s_pInstance = new smart_ptr<PathManager>;
    EXPECT_FALSE(SingleApplicationInstance().IsAlreadyRunning());
    RemovePathManager();
    EXPECT_EQ("", output.Stop());
    for (const auto& entry : std::filesystem::directory_iterator(m_home.Path()))
        EXPECT_TRUE(entry.is_directory()) << entry;
}

TEST_F(SingleApplicationInstanceTest, GoesQuietlyWhenItsFileIsGone)
{
    CapturedOutput output(2);
    {
        const SingleApplicationInstance instance;
        std::filesystem::remove_all(m_home.Path());
    }
    EXPECT_EQ("", output.Stop());
}

TEST(SingleApplicationInstance, NoneExistsBeforeTheModulesAreInitialised)
{
    EXPECT_EQ(nullptr, SingleApplicationInstance::s_pInstance);
}
