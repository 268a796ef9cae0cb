#include "toolkit/app/SingleApplicationInstance.h"

#include <filesystem>
#include <type_traits>

#include <gtest/gtest.h>

#include "tests/support/Child.h"
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

    bool IsLockThere() const
    {
        return std::filesystem::exists(
            m_home.Path(UTF8::ToUTF8((*PathManager::s_pInstance)->GetUniqueInstanceName())));
    }

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
