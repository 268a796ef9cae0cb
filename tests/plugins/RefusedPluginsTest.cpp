// SPDX-License-Identifier: MIT
#include <algorithm>
#include <atomic>
#include <cstring>
#include <system_error>
#include <thread>

#include <gmock/gmock.h>
#include <link.h>
#include <sys/stat.h>

#include "tests/plugins/PluginsTest.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/core/Plugins.h"
#include "toolkit/core/ToolkitSession.h"

using namespace ToolkitTest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Toolkit::Errc;
using Toolkit::Failure;
using Toolkit::Plugins;
using Toolkit::Result;

namespace
{

class RefusedPlugins : public PluginsTest
{
protected:
    // Loads the file among others, which are loaded all the same, and returns why it is refused.
    template <class... Context>
    Failure WhyRefused(const std::string& name, Context&... context)
    {
        Put("a", "!first.so");
        Put("b", "~last.so");
        Plugins<Greeter> greeters(context...);
        const std::vector<Failure> failures = greeters.LoadFolder(Folder());
        EXPECT_THAT(Names(greeters.All()), ElementsAre("a", "b"));
        EXPECT_EQ(1U, failures.size());
        EXPECT_FALSE(IsMapped(Folder() / name));
        const std::string begin = "cannot load " + (Folder() / name).string() + ": ";
        EXPECT_THAT(failures.at(0).Message(), StartsWith(begin));
        return Failure(failures.at(0).Code(), failures.at(0).Message().substr(begin.size()));
    }

    // A copy of a good plug-in with another byte in its head.
    void PutWithByte(const std::string& name, std::size_t offset, char byte)
    {
        std::string bytes = ReadBytes(Built("a"));
        bytes.at(offset) = byte;
        WriteBytes(Folder() / name, bytes);
    }
};

// Up to where the loader maps a library.
std::size_t LoadedPart(const std::string& bytes)
{
    ElfW(Ehdr) head = {};
    std::memcpy(&head, bytes.data(), sizeof(head));
    std::size_t end = 0;
    for (std::size_t i = 0; i < head.e_phnum; ++i)
    {
        ElfW(Phdr) segment = {};
        std::memcpy(&segment, &bytes.at(head.e_phoff + i * sizeof(segment)), sizeof(segment));
        if (segment.p_type == PT_LOAD)
            end = std::max<std::size_t>(end, segment.p_offset + segment.p_filesz);
    }
    return end;
}

} // namespace

TEST_F(RefusedPlugins, OtherVersionOfTheInterface)
{
    Put("old", "x.so");
    const Failure why = WhyRefused("x.so");
    EXPECT_EQ(Errc::WrongInterface, why.Code());
    EXPECT_EQ("it is made for version 2 of toolkit.test.Greeter, this program uses version 3 of "
              "toolkit.test.Greeter",
              why.Message());
}

TEST_F(RefusedPlugins, OtherInterface)
{
    Put("counting", "x.so");
    const Failure why = WhyRefused("x.so");
    EXPECT_EQ(Errc::WrongInterface, why.Code());
    EXPECT_THAT(why.Message(), StartsWith("it is made for version 1 of toolkit.test.Counter, "));
}

TEST_F(RefusedPlugins, OtherMajorVersionOfTheLibrary)
{
    Put("major", "x.so");
    const Failure why = WhyRefused("x.so");
    EXPECT_EQ(Errc::WrongInterface, why.Code());
    EXPECT_EQ("it is made for version 7 of the library, this program uses version 1", why.Message());
}

TEST_F(RefusedPlugins, UndefinedSymbol)
{
    Put("undefined", "x.so");
    const Failure why = WhyRefused("x.so");
    EXPECT_EQ(Errc::Malformed, why.Code());
    EXPECT_THAT(why.Message(), HasSubstr("undefined symbol: _ZN4desk22FormatOfAnotherVersionB5cxx11Ei"));
    EXPECT_THAT(why.Message(), HasSubstr("(desk::FormatOfAnotherVersion[abi:cxx11](int))"));
}

TEST_F(RefusedPlugins, LibraryWithoutAnEntry)
{
    Put("no_entry", "x.so");
    const Failure why = WhyRefused("x.so");
    EXPECT_EQ(Errc::Malformed, why.Code());
    EXPECT_EQ("it is no plug-in, as it has no entry", why.Message());
}

TEST_F(RefusedPlugins, LibraryThatOnlyNeedsAPlugin)
{
    Put("linking", "x.so");
    const Failure why = WhyRefused("x.so");
    EXPECT_EQ(Errc::Malformed, why.Code());
    EXPECT_EQ("it is no plug-in, as it has no entry", why.Message());
}

TEST_F(RefusedPlugins, NoLibrary)
{
    for (const std::string& bytes :
         {std::string(), std::string("E"), std::string("a text file\n"), std::string(5000, '\0')})
    {
        WriteBytes(Folder() / "x.so", bytes);
        const Failure why = WhyRefused("x.so");
        EXPECT_EQ(Errc::Malformed, why.Code());
        EXPECT_EQ("it is no library", why.Message());
    }
}

TEST_F(RefusedPlugins, LibraryThatIsCutShort)
{
    const std::string whole = ReadBytes(Built("a"));
    const std::size_t needed = LoadedPart(whole);
    Plugins<Greeter> greeters;
    for (std::size_t length = 4; length < whole.size(); length += length < 64 ? 1 : needed / 61)
    {
        WriteBytes(Folder() / "x.so", whole.substr(0, length));
        const Result<void> done = greeters.Load(Folder() / "x.so");
        ASSERT_EQ(length >= needed, done.has_value()) << length << " of " << needed;
        if (done)
        {
            EXPECT_TRUE(greeters.Unload("a"));
            break;
        }
        EXPECT_EQ(Errc::Malformed, done.error().Code());
        EXPECT_THAT(done.error().Message(), HasSubstr("x.so: it is cut short"));
    }
}

TEST_F(RefusedPlugins, LibraryWhoseHeadLies)
{
    // Where the segments are, how many of them, how long each description is.
    for (const std::size_t offset : {33U, 36U, 39U, 54U, 57U})
    {
        PutWithByte("x.so", offset, '\x7F');
        EXPECT_EQ(Errc::Malformed, WhyRefused("x.so").Code()) << offset;
    }
}

TEST_F(RefusedPlugins, LibraryOfAnotherArchitecture)
{
    const char anotherMachine = '\x5A';
    for (const auto& [offset, byte] :
         {std::pair<std::size_t, char>{EI_CLASS, '\x01'}, {EI_DATA, '\x02'}, {18, anotherMachine}})
    {
        PutWithByte("x.so", offset, byte);
        const Failure why = WhyRefused("x.so");
        EXPECT_EQ(std::errc::executable_format_error, why.Code());
        EXPECT_EQ("it is made for another architecture", why.Message());
    }
    // A head and nothing else.
    std::string head("\x7F"
                     "ELF\x01\x01\x01",
                     7);
    head.resize(52);
    head[16] = ET_DYN;
    head[18] = EM_ARM;
    WriteBytes(Folder() / "x.so", head + std::string(100, 'x'));
    EXPECT_EQ(std::errc::executable_format_error, WhyRefused("x.so").Code());
}

TEST_F(RefusedPlugins, MissingLibraryThatItNeeds)
{
    std::string bytes = ReadBytes(Built("a"));
    const std::size_t needed = bytes.find("libtoolkit.so.1");
    ASSERT_NE(bytes.npos, needed);
    bytes.replace(needed, 15, "libtoolkit.so.7");
    WriteBytes(Folder() / "x.so", bytes);
    const Failure why = WhyRefused("x.so");
    EXPECT_EQ(Errc::Malformed, why.Code());
    EXPECT_EQ("libtoolkit.so.7: cannot open shared object file: No such file or directory", why.Message());
}

TEST_F(RefusedPlugins, WhatIsNoFile)
{
    ASSERT_EQ(0, mkfifo((Folder() / "x.so").c_str(), 0600));
    EXPECT_EQ("it is no regular file", WhyRefused("x.so").Message());
    EXPECT_EQ(Errc::Refused, WhyRefused("x.so").Code());
    std::filesystem::remove(Folder() / "x.so");
    std::filesystem::create_directory(Folder() / "x.so");
    EXPECT_EQ(std::errc::is_a_directory, WhyRefused("x.so").Code());
    EXPECT_EQ("Is a directory", WhyRefused("x.so").Message());

    Plugins<Greeter> greeters;
    for (const std::filesystem::path& path : {Folder() / "none.so", std::filesystem::path(), Folder() / ""})
        EXPECT_FALSE(greeters.Load(path));
    // Nothing is searched for elsewhere.
    EXPECT_EQ(std::errc::no_such_file_or_directory, greeters.Load("libtoolkit.so.1").error().Code());
    EXPECT_FALSE(greeters.Load(std::string("a\0.so", 5)));
}

TEST_F(RefusedPlugins, ConstructorThatThrows)
{
    struct Row
    {
        const char* what;
        std::error_code code;
        const char* message;
    };
    const Row rows[] = {
        {"refusal", Errc::Refused, "its constructor threw: no mailbox is set up"},
        {"strange", Errc::Refused, "its constructor threw a (anonymous namespace)::Strange"},
        {"memory", std::make_error_code(std::errc::not_enough_memory), "there is no memory for it"},
    };
    Put("throwing", "x.so");
    for (const Row& row : rows)
    {
        const std::string what = row.what;
        const Failure why = WhyRefused("x.so", what);
        EXPECT_EQ(row.code, why.Code());
        EXPECT_EQ(row.message, why.Message());
    }
}

TEST_F(RefusedPlugins, ModuleThatCannotBeInitialized)
{
    const Toolkit::ToolkitSession session;
    Put("throwing", "x.so");
    const std::string what = "module";
    const Failure why = WhyRefused("x.so", what);
    EXPECT_EQ(Errc::Refused, why.Code());
    EXPECT_EQ("its constructor threw: the module has no licence", why.Message());
}

TEST_F(RefusedPlugins, FilesThatComeAndGoMeanwhile)
{
    std::atomic<bool> stop(false);
    std::thread other(
        [&]
        {
            while (!stop)
            {
                for (const char* const name : {"1.so", "2.so", "3.so"})
                    Put("a", name);
                for (const char* const name : {"1.so", "2.so", "3.so"})
                    std::filesystem::remove(Folder() / name);
            }
        });
    for (std::size_t loaded = 0; loaded < 50;)
    {
        Plugins<Greeter> greeters;
        for (const Failure& failure : greeters.LoadFolder(Folder()))
            EXPECT_TRUE(failure.Code() == Errc::Refused || failure.Code() == Errc::Malformed ||
                        failure.Code() == std::errc::no_such_file_or_directory)
                << failure.Message();
        loaded += greeters.All().size();
    }
    stop = true;
    other.join();
    Put("a", "1.so");
    Plugins<Greeter> greeters;
    greeters.LoadFolder(Folder());
    EXPECT_THAT(Names(greeters.All()), ElementsAre("a"));
}
