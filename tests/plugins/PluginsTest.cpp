// SPDX-License-Identifier: MIT
#include "toolkit/core/Plugins.h"

#include <optional>
#include <system_error>
#include <thread>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/plugins/PluginsTest.h"

using namespace ToolkitTest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Toolkit::Errc;
using Toolkit::Failure;
using Toolkit::PluginInfo;
using Toolkit::Plugins;
using Toolkit::Result;

namespace ToolkitTest
{

int Counter::Count() const
{
    return 41;
}

} // namespace ToolkitTest

namespace
{

static_assert(!std::is_copy_constructible_v<Plugins<Greeter>> &&
              !std::is_move_constructible_v<Plugins<Greeter>>);
static_assert(sizeof(Plugins<Greeter>) == sizeof(Toolkit::PluginsBase));
static_assert(sizeof(PluginInfo) == sizeof(void*));

// One that no library brings.
struct OwnGreeter : Greeter
{
    std::string Greet(const std::string& whom) const override { return whom; }
};

} // namespace

TEST_F(PluginsTest, LoadsAFolderInOrderByName)
{
    Put("b", "1.so");
    Put("a", "2.so");
    Put("c", "10.so");
    WriteBytes(Folder() / "README", "no plug-in");
    WriteBytes(Folder() / ".hidden.so", "no plug-in");
    WriteBytes(Folder() / ".so", "no plug-in");
    WriteBytes(Folder() / "a.so.bak", "no plug-in");

    Plugins<Greeter> greeters;
    EXPECT_THAT(Messages(greeters.LoadFolder(Folder())), IsEmpty());
    EXPECT_THAT(Names(greeters.All()), ElementsAre("b", "c", "a"));
    EXPECT_EQ("this is a, hello you", greeters.Find("a")->Greet("you"));
    EXPECT_EQ(nullptr, greeters.Find("d"));
    EXPECT_EQ(nullptr, greeters.Find(""));
}

TEST_F(PluginsTest, LoadsOne)
{
    Plugins<Greeter> greeters;
    EXPECT_THAT(greeters.All(), IsEmpty());
    ASSERT_TRUE(greeters.Load(Put("a", "mails.so")));
    const std::shared_ptr<Greeter> greeter = greeters.Find("a");
    ASSERT_NE(nullptr, greeter);
    EXPECT_EQ("a", greeter->Info().Name());
    EXPECT_EQ("1.2.0", greeter->Info().Version());
    EXPECT_EQ(Folder() / "mails.so", greeter->Info().File());
}

TEST_F(PluginsTest, InformationOutlivesThePlugin)
{
    PluginInfo info;
    EXPECT_EQ("", info.Name() + info.Version() + info.File().string());
    {
        Plugins<Greeter> greeters;
        ASSERT_TRUE(greeters.Load(Put("a", "a.so")));
        info = greeters.Find("a")->Info();
    }
    EXPECT_FALSE(IsMapped(Folder()));
    const PluginInfo copy = info;
    info = PluginInfo();
    EXPECT_EQ("a 1.2.0", copy.Name() + " " + copy.Version());
}

TEST_F(PluginsTest, ObjectOfAProgramsOwnKnowsNothingOfItself)
{
    const OwnGreeter own;
    EXPECT_EQ("", own.Info().Name());
    EXPECT_EQ("", own.Info().File());
}

TEST_F(PluginsTest, RelativePathBecomesAbsolute)
{
    Put("a", "a.so");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(Folder());
    Plugins<Greeter> greeters;
    const Result<void> loaded = greeters.Load("a.so");
    std::filesystem::current_path(before);
    ASSERT_TRUE(loaded) << loaded.error().Message();
    EXPECT_EQ(Folder() / "a.so", greeters.Find("a")->Info().File());
}

TEST_F(PluginsTest, AnyBytesAreAName)
{
    Plugins<Greeter> greeters;
    const std::filesystem::path path = Put("a", "gr\xFC\xDF %s.so");
    ASSERT_TRUE(greeters.Load(path));
    EXPECT_EQ(path, greeters.Find("a")->Info().File());
}

TEST_F(PluginsTest, FollowsLinks)
{
    std::filesystem::create_directory(Folder() / "links");
    std::filesystem::create_symlink(Put("a", "a.so"), Folder() / "links" / "1.so");
    std::filesystem::create_symlink("../gone.so", Folder() / "links" / "2.so");
    Plugins<Greeter> greeters;
    const std::vector<Failure> failures = greeters.LoadFolder(Folder() / "links");
    ASSERT_THAT(Messages(failures),
                ElementsAre("cannot load " + Folder().string() + "/links/2.so: No such file or directory"));
    EXPECT_EQ(std::errc::no_such_file_or_directory, failures[0].Code());
    EXPECT_EQ(Folder() / "links" / "1.so", greeters.Find("a")->Info().File());
}

TEST_F(PluginsTest, MissingFolderIsOneFailure)
{
    Plugins<Greeter> greeters;
    const std::vector<Failure> failures = greeters.LoadFolder(Folder() / "none");
    ASSERT_THAT(Messages(failures), ElementsAre("cannot load plug-ins from " + Folder().string() +
                                                "/none: No such file or directory"));
    EXPECT_EQ(std::errc::no_such_file_or_directory, failures[0].Code());
    WriteBytes(Folder() / "file", "no folder");
    EXPECT_EQ(std::errc::not_a_directory, greeters.LoadFolder(Folder() / "file").at(0).Code());
    EXPECT_EQ(1U, greeters.LoadFolder("").size());
    EXPECT_EQ(1U, greeters.LoadFolder(std::string("/tmp\0/x", 7)).size());
}

TEST_F(PluginsTest, RefusesTwoOfOneName)
{
    Put("a", "1.so");
    Put("a", "2.so");
    Put("b", "3.so");
    Plugins<Greeter> greeters;
    const std::vector<Failure> failures = greeters.LoadFolder(Folder());
    ASSERT_THAT(Messages(failures),
                ElementsAre("cannot load " + Folder().string() + "/2.so: its name is \"a\", as is that of " +
                            Folder().string() + "/1.so"));
    EXPECT_EQ(Errc::Refused, failures[0].Code());
    EXPECT_THAT(Names(greeters.All()), ElementsAre("a", "b"));
    EXPECT_FALSE(IsMapped(Folder() / "2.so"));
    // The same file once more.
    EXPECT_EQ(Errc::Refused, greeters.Load(Folder() / "1.so").error().Code());
    EXPECT_EQ("this is a, hello you", greeters.Find("a")->Greet("you"));
}

TEST_F(PluginsTest, TwoSetsLoadTheSameLibrary)
{
    const std::filesystem::path path = Put("a", "a.so");
    Plugins<Greeter> first;
    ASSERT_TRUE(first.Load(path));
    {
        Plugins<Greeter> second;
        ASSERT_TRUE(second.Load(path));
        EXPECT_NE(first.Find("a"), second.Find("a"));
    }
    EXPECT_EQ("this is a, hello you", first.Find("a")->Greet("you"));
}

TEST_F(PluginsTest, UnloadedCodeIsGone)
{
    Plugins<Greeter> greeters;
    ASSERT_TRUE(greeters.Load(Put("a", "a.so")));
    ASSERT_TRUE(greeters.Load(Put("b", "b.so")));
    EXPECT_TRUE(IsMapped(Folder() / "a.so"));
    EXPECT_TRUE(greeters.Unload("a"));
    EXPECT_FALSE(IsMapped(Folder() / "a.so"));
    EXPECT_THAT(Names(greeters.All()), ElementsAre("b"));

    const Result<void> again = greeters.Unload("a");
    ASSERT_FALSE(again);
    EXPECT_EQ(std::errc::invalid_argument, again.error().Code());
    EXPECT_EQ("cannot unload \"a\": no plug-in of this name is loaded", again.error().Message());
}

TEST_F(PluginsTest, CodeStaysForItsLastHolder)
{
    std::shared_ptr<Greeter> holder;
    std::weak_ptr<Greeter> watcher;
    {
        Plugins<Greeter> greeters;
        ASSERT_TRUE(greeters.Load(Put("a", "a.so")));
        const std::vector<std::shared_ptr<Greeter>> all = greeters.All();
        EXPECT_TRUE(greeters.Unload("a"));
        EXPECT_EQ(nullptr, greeters.Find("a"));
        EXPECT_EQ("this is a, hello you", all.at(0)->Greet("you"));
        ASSERT_TRUE(greeters.Load(Put("b", "b.so")));
        holder = greeters.Find("b");
        watcher = holder;
    }
    EXPECT_FALSE(IsMapped(Folder() / "a.so"));
    EXPECT_EQ("this is b, hello you", holder->Greet("you"));
    std::thread([last = std::move(holder)] {}).join();
    EXPECT_TRUE(watcher.expired());
    EXPECT_FALSE(IsMapped(Folder() / "b.so"));
}

TEST_F(PluginsTest, NewLibraryOfTheSamePathIsLoadedAfterTheOldOneWasUnloaded)
{
    Plugins<Greeter> greeters;
    ASSERT_TRUE(greeters.Load(Put("a", "plugin.so")));
    Put("b", "plugin.so");
    ASSERT_TRUE(greeters.Unload("a"));
    ASSERT_TRUE(greeters.Load(Folder() / "plugin.so"));
    EXPECT_THAT(Names(greeters.All()), ElementsAre("b"));
}

TEST_F(PluginsTest, InterfaceMayBeDefinedInTheProgramAlone)
{
    Plugins<Counter> counters;
    const Result<void> loaded = counters.Load(Put("counting", "counting.so"));
    ASSERT_TRUE(loaded) << loaded.error().Message();
    EXPECT_EQ(42, counters.Find("counting")->Count());
    EXPECT_NE(nullptr, dynamic_cast<Counter*>(counters.Find("counting").get()));
}

TEST_F(PluginsTest, HandsEachConstructorTheContext)
{
    Notes notes;
    {
        Plugins<Greeter> greeters(notes);
        ASSERT_TRUE(greeters.Load(Put("noting_a", "a.so")));
        // One that takes none.
        ASSERT_TRUE(greeters.Load(Put("b", "b.so")));
    }
    EXPECT_THAT(notes.events, ElementsAre("+a", "-a", "~a"));
    {
        Plugins<Greeter> greeters(&notes);
        ASSERT_TRUE(greeters.Load(Folder() / "a.so"));
    }
    EXPECT_EQ(6U, notes.events.size());
}

TEST_F(PluginsTest, ContextMayBeOfADerivedClass)
{
    struct Other
    {
        virtual ~Other() = default;
        int number = 3;
    };
    struct Derived : Other, Notes
    {
    };
    Derived derived;
    {
        Plugins<Greeter> greeters(derived);
        ASSERT_TRUE(greeters.Load(Put("noting_a", "a.so")));
    }
    EXPECT_THAT(derived.events, ElementsAre("+a", "-a", "~a"));
}

TEST_F(PluginsTest, RefusesAnotherContext)
{
    const std::filesystem::path path = Put("noting_a", "a.so");
    const auto refused = [&path](Plugins<Greeter>& greeters)
    {
        const Result<void> loaded = greeters.Load(path);
        EXPECT_EQ(Errc::WrongInterface, loaded.error().Code());
        return loaded.error().Message().substr(loaded.error().Message().find("it "));
    };
    Plugins<Greeter> without;
    EXPECT_EQ("it needs a context of type ToolkitTest::Notes, this program gives none", refused(without));
    int number = 3;
    Plugins<Greeter> other(number);
    EXPECT_EQ("it needs a context of type ToolkitTest::Notes, this program gives one of type int",
              refused(other));
    const Notes notes = {};
    Plugins<Greeter> constant(notes);
    EXPECT_EQ("it needs a context of type ToolkitTest::Notes, this program gives one of type const "
              "ToolkitTest::Notes",
              refused(constant));
    EXPECT_FALSE(IsMapped(Folder()));
}

TEST_F(PluginsTest, DestroysInTheReverseOrderAndEachObjectBeforeItsCode)
{
    Notes notes;
    {
        Plugins<Greeter> greeters(notes);
        ASSERT_TRUE(greeters.Load(Put("noting_b", "b.so")));
        ASSERT_TRUE(greeters.Load(Put("noting_a", "a.so")));
    }
    EXPECT_THAT(notes.events, ElementsAre("+b", "+a", "-a", "~a", "-b", "~b"));
    EXPECT_FALSE(IsMapped(Folder()));
}
