// SPDX-License-Identifier: MIT
#include <string>

#include <gtest/gtest.h>

#include "tests/faults/OutOfMemory.h"
#include "tests/plugins/Greeter.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/app/Folders.h"
#include "toolkit/app/Process.h"
#include "toolkit/core/LibraryVersion.h"
#include "toolkit/core/Plugins.h"
#include "toolkit/core/Result.h"
#include "toolkit/encoding/Base64.h"
#include "toolkit/encoding/EncodedWords.h"
#include "toolkit/encoding/QuotedPrintable.h"
#include "toolkit/encoding/Text.h"
#include "toolkit/files/Settings.h"

using namespace Toolkit;
using ToolkitTest::Attempt;

namespace
{

const char c_strLong[] = "a text that no string keeps within itself, \u20ac";

} // namespace

TEST(OutOfMemory, IsSurvivedByResults)
{
    ToolkitTest::FailEachAllocation({
        {"Failure::Failure", [](const Attempt& attempt)
         { attempt([] { EXPECT_EQ(c_strLong, Failure(Errc::Refused, c_strLong).Message()); }); }},
        {"Failure::operator=",
         [](const Attempt& attempt)
         {
             Failure failure(Errc::Refused, "before");
             const bool assigned = attempt([&] { failure = Failure(Errc::Malformed, c_strLong); });
             EXPECT_EQ(assigned ? c_strLong : std::string("before"), failure.Message());
         }},
        {"Result::operator=",
         [](const Attempt& attempt)
         {
             const Result<std::string> value = c_strLong;
             Result<std::string> result = Failure(Errc::Refused, "before");
             const bool assigned = attempt([&] { result = value; });
             EXPECT_EQ(assigned, result.has_value());
             EXPECT_TRUE(assigned || result.error().Message() == "before");
         }},
        {"LibraryVersion", [](const Attempt& attempt) { attempt([] { EXPECT_NE("", LibraryVersion()); }); }},
    });
}

TEST(OutOfMemory, IsSurvivedByTexts)
{
    // ICU keeps what it has once found of a charset.
    ASSERT_TRUE(Text::FromCharset("a", "iso-8859-15"));
    ToolkitTest::FailEachAllocation({
        {"Text::ToWide",
         [](const Attempt& attempt) { attempt([] { EXPECT_TRUE(Text::ToWide(c_strLong).has_value()); }); }},
        {"Text::FromWide", [](const Attempt& attempt)
         { attempt([] { EXPECT_TRUE(Text::FromWide(std::wstring(100, L'\u20ac')).has_value()); }); }},
        {"Text::ToCharset", [](const Attempt& attempt)
         { attempt([] { EXPECT_TRUE(Text::ToCharset(c_strLong, "iso-8859-15").has_value()); }); }},
        {"Text::FromCharset(broken)", [](const Attempt& attempt)
         { attempt([] { EXPECT_FALSE(Text::FromCharset("\xFF", "us-ascii").has_value()); }); }},
        {"Text::FromCharset(unknown)", [](const Attempt& attempt)
         { attempt([] { EXPECT_FALSE(Text::FromCharset("a", "no-such-charset").has_value()); }); }},
    });
}

TEST(OutOfMemory, IsSurvivedByEncodingsOfMails)
{
    // ICU keeps what it has once found of a charset.
    ASSERT_TRUE(Text::FromCharset("a", "iso-8859-15"));
    const std::string encoded = Base64::Encode(c_strLong);
    const std::string header = "=?iso-8859-15?Q?of_a_header_of_some_length_=A4?= =?none?Q?b?=";
    ToolkitTest::FailEachAllocation({
        {"Base64::Encode",
         [&](const Attempt& attempt) { attempt([&] { EXPECT_EQ(encoded, Base64::Encode(c_strLong)); }); }},
        {"Base64::Decode", [&](const Attempt& attempt)
         { attempt([&] { EXPECT_EQ(c_strLong, Base64::Decode(encoded).value_or("")); }); }},
        {"Base64::Decode(broken)", [&](const Attempt& attempt)
         { attempt([&] { EXPECT_FALSE(Base64::Decode(encoded + "=").has_value()); }); }},
        {"Base64::DecodeMime", [&](const Attempt& attempt)
         { attempt([&] { EXPECT_EQ(c_strLong, Base64::DecodeMime(encoded + "\n").value_or("")); }); }},
        {"QuotedPrintable::Encode",
         [](const Attempt& attempt) { attempt([] { EXPECT_NE("", QuotedPrintable::Encode(c_strLong)); }); }},
        {"QuotedPrintable::Decode", [](const Attempt& attempt)
         { attempt([] { EXPECT_EQ(c_strLong, QuotedPrintable::Decode(c_strLong)); }); }},
        {"EncodedWords::Decode",
         [&](const Attempt& attempt)
         {
             attempt(
                 [&] {
                     EXPECT_EQ("of a header of some length \u20ac =?none?Q?b?=",
                               EncodedWords::Decode(header));
                 });
         }},
        {"EncodedWords::Encode",
         [](const Attempt& attempt) {
             attempt(
                 []
                 { EXPECT_TRUE(EncodedWords::Encode("of some length \u20ac", "iso-8859-15").has_value()); });
         }},
    });
}

TEST(OutOfMemory, IsSurvivedByFolders)
{
    ToolkitTest::FailEachAllocation({
        {"Folders::Of", [](const Attempt& attempt)
         { attempt([] { EXPECT_TRUE(Folders::Of("an application of a long name").has_value()); }); }},
        {"Folders::Of(bad name)", [](const Attempt& attempt)
         { attempt([] { EXPECT_FALSE(Folders::Of("an application / of a long name").has_value()); }); }},
        {"Folders::Config",
         [](const Attempt& attempt)
         {
             const Folders folders = *Folders::Of("watch");
             attempt([&] { EXPECT_EQ("watch", folders.Config().filename()); });
         }},
        {"Folders::Executable",
         [](const Attempt& attempt) { attempt([] { EXPECT_FALSE(Folders::Executable().empty()); }); }},
    });
}

TEST(OutOfMemory, IsSurvivedBySettings)
{
    const ToolkitTest::TemporaryFolder folder;
    const std::string path = folder.Path("a.ini");
    const std::string text = "[a section of a long name]\na key of a long name = a value of a long text\n";
    const char* const section = "a section of a long name";
    const char* const key = "a key of a long name";
    const auto load = [&]
    {
        ToolkitTest::WriteBytes(path, text);
        return Settings::Load(path).value();
    };
    // What a change must have done when it ended, and must not have done when it did not.
    const auto check = [&](Settings& settings, bool changed, const char* otherKey)
    {
        EXPECT_EQ(changed, settings.Has(section, otherKey) || settings.Has("new", otherKey));
        EXPECT_EQ("a value of a long text", settings.Get(section, key, ""));
        EXPECT_TRUE(settings.Set(section, "after", 1).has_value());
        EXPECT_TRUE(settings.Save().has_value());
        EXPECT_EQ(changed,
                  Settings::Load(path)->Has(section, otherKey) || Settings::Load(path)->Has("new", otherKey));
    };
    ToolkitTest::FailEachAllocation({
        {"Settings::Load",
         [&](const Attempt& attempt)
         {
             ToolkitTest::WriteBytes(path, text);
             attempt([&] { EXPECT_TRUE(Settings::Load(path).has_value()); });
         }},
        {"Settings::LoadOrNew", [&](const Attempt& attempt)
         { attempt([&] { EXPECT_TRUE(Settings::LoadOrNew(folder.Path("missing")).has_value()); }); }},
        {"Settings::Settings(copy)",
         [&](const Attempt& attempt)
         {
             const Settings settings = load();
             attempt([&] { EXPECT_TRUE(Settings(settings).Has(section, key)); });
         }},
        {"Settings::Get, Keys, Sections",
         [&](const Attempt& attempt)
         {
             const Settings settings = load();
             attempt([&] { EXPECT_EQ(22U, settings.Get(section, key, "").size()); });
             attempt([&] { EXPECT_EQ(7, settings.Get(section, key, 7)); });
             attempt([&] { EXPECT_EQ(1U, settings.Keys(section).size()); });
             attempt([&] { EXPECT_EQ(1U, settings.Sections().size()); });
         }},
        {"Settings::Set(a new key)",
         [&](const Attempt& attempt)
         {
             Settings settings = load();
             const char* const name = "another key of a long name";
             const bool done = attempt([&] { EXPECT_TRUE(settings.Set(section, name, 1).has_value()); });
             check(settings, done, name);
         }},
        {"Settings::Set(a new section)",
         [&](const Attempt& attempt)
         {
             Settings settings = load();
             const char* const name = "another key of a long name";
             const bool done = attempt([&] { EXPECT_TRUE(settings.Set("new", name, 1).has_value()); });
             check(settings, done, name);
         }},
        {"Settings::Set(an old key)",
         [&](const Attempt& attempt)
         {
             Settings settings = load();
             const bool done = attempt(
                 [&]
                 { EXPECT_TRUE(settings.Set(section, key, "another value of a long text").has_value()); });
             EXPECT_EQ(done ? "another value of a long text" : "a value of a long text",
                       settings.Get(section, key, ""));
         }},
        {"Settings::Remove",
         [&](const Attempt& attempt)
         {
             ToolkitTest::WriteBytes(path, text + key + " = repeated\n");
             Settings settings = Settings::Load(path).value();
             const bool done = attempt([&] { EXPECT_TRUE(settings.Remove(section, key)); });
             EXPECT_NE(done, settings.Has(section, key));
         }},
        {"Settings::Save",
         [&](const Attempt& attempt)
         {
             Settings settings = load();
             settings.Set(section, key, "changed").value();
             attempt([&] { EXPECT_TRUE(settings.Save().has_value()); });
             EXPECT_TRUE(settings.Save().has_value());
             EXPECT_EQ("changed", Settings::Load(path)->Get(section, key, ""));
         }},
    });
}

TEST(OutOfMemory, IsSurvivedByProcesses)
{
    const std::string text = "a line of a long text that no string keeps within itself\n";
    const auto options = [&text]
    {
        return ProcessOptions()
            .Input(text)
            .Folder("/usr/share/./././././././././.")
            .Environment("A_VARIABLE_OF_A_LONG_NAME", text);
    };
    ToolkitTest::FailEachAllocation({
        {"ProcessOptions",
         [&](const Attempt& attempt) { attempt([&] { const ProcessOptions copy(options()); }); }},
        {"Process::Run",
         [&](const Attempt& attempt)
         {
             const ProcessOptions given = options();
             attempt([&] { EXPECT_EQ(text, Process::Run({"cat", "-"}, given)->Output()); });
         }},
        {"Process::Run(missing)", [&](const Attempt& attempt)
         { attempt([&] { EXPECT_FALSE(Process::Run({"a-program-that-is-not-there"})); }); }},
        {"Process::Run(NUL)",
         [&](const Attempt& attempt) {
             attempt([&] { EXPECT_FALSE(Process::Run({"cat", std::string(1, '\0')})); });
         }},
        {"Process::Start",
         [&](const Attempt& attempt)
         {
             attempt(
                 [&]
                 {
                     Process process = Process::Start({"cat"}, options()).value();
                     EXPECT_EQ(text, *process.ReadLine() + "\n");
                 });
         }},
        {"Process::ReadLine, Wait",
         [&](const Attempt& attempt)
         {
             Process process = Process::Start({"cat"}).value();
             EXPECT_TRUE(process.Write(text + text));
             bool isTaken = false;
             attempt(
                 [&]
                 {
                     const Result<std::string> line = process.ReadLine();
                     isTaken = true;
                     EXPECT_EQ(text.size(), line->size() + 1);
                     EXPECT_EQ(text, process.Wait()->Output());
                 });
             const ProcessResult result = process.Wait().value();
             EXPECT_EQ(0, result.ExitCode());
             EXPECT_TRUE(result.Truncated() || result.Output() == (isTaken ? text : text + text));
         }},
        {"Process::ReplaceSelf",
         [&](const Attempt& attempt) {
             attempt([&] { EXPECT_FALSE(Process::ReplaceSelf({text, std::string(1, '\0')})); });
         }},
    });
}

TEST(OutOfMemory, IsSurvivedByPlugins)
{
    const ToolkitTest::TemporaryFolder folder;
    for (const char* const name : {"loadable_a.so", "loadable_b.so", "loadable_undefined.so"})
        ToolkitTest::WriteBytes(folder.Path(name),
                                ToolkitTest::ReadBytes(TOOLKIT_TEST_PLUGINS + std::string("/") + name));
    ToolkitTest::WriteBytes(folder.Path("text.so"), "no library");
    // What a plug-in's constructor has no memory for is a failure like any other of it.
    const auto isExpected = [](const Failure& failure)
    { return failure.Code() == Errc::Malformed || failure.Code() == std::errc::not_enough_memory; };
    ToolkitTest::FailEachAllocation({
        {"Plugins::LoadFolder",
         [&](const Attempt& attempt)
         {
             Plugins<ToolkitTest::Greeter> greeters;
             attempt(
                 [&]
                 {
                     for (const Failure& failure : greeters.LoadFolder(folder.Path()))
                         EXPECT_TRUE(isExpected(failure)) << failure.Message();
                 });
             greeters.LoadFolder(folder.Path());
             EXPECT_EQ(2U, greeters.All().size());
         }},
        {"Plugins::Load",
         [&](const Attempt& attempt)
         {
             const std::filesystem::path file = folder.Path("loadable_a.so");
             Plugins<ToolkitTest::Greeter> greeters;
             attempt(
                 [&]
                 {
                     const Result<void> loaded = greeters.Load(file);
                     EXPECT_TRUE(loaded || isExpected(loaded.error()));
                     EXPECT_EQ(loaded.has_value(), greeters.Find("a") != nullptr);
                 });
             EXPECT_TRUE(greeters.Find("a") != nullptr || greeters.Load(file).has_value());
             bool isUnloaded = false;
             attempt([&] { isUnloaded = greeters.Unload("a").has_value(); });
             EXPECT_TRUE(isUnloaded);
         }},
        {"Plugins::All",
         [&](const Attempt& attempt)
         {
             Plugins<ToolkitTest::Greeter> greeters;
             greeters.LoadFolder(folder.Path());
             attempt([&] { EXPECT_EQ(2U, greeters.All().size()); });
             attempt([&] { EXPECT_FALSE(greeters.Unload("a plug-in of a name that is not there")); });
         }},
    });
}
