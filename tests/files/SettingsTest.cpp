// SPDX-License-Identifier: MIT
#include "toolkit/files/Settings.h"

#include <cmath>
#include <filesystem>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/files/IniFile.h"

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Toolkit::Errc;
using Toolkit::Failure;
using Toolkit::Result;
using Toolkit::Settings;
using ToolkitTest::InChild;
using ToolkitTest::ReadBytes;

namespace
{

using Text = Toolkit::TString<wchar_t>;

class SettingsTest : public testing::Test
{
protected:
    std::string Path() const { return m_folder.Path("a.ini"); }
    std::string Content() const { return ReadBytes(Path()); }
    void Write(const std::string& bytes) const { ToolkitTest::WriteBytes(Path(), bytes); }

    // The settings of a file with this content.
    Settings Of(const std::string& bytes) const
    {
        Write(bytes);
        return Settings::Load(Path()).value();
    }

    // What the file holds after a key was set and saved.
    std::string AfterSet(const std::string& before, const char* section, const char* key,
                         const char* value) const
    {
        Settings settings = Of(before);
        const Result<void> set = settings.Set(section, key, value);
        EXPECT_TRUE(set) << set.error().Message();
        const Result<void> saved = settings.Save();
        EXPECT_TRUE(saved) << saved.error().Message();
        return Content();
    }

    std::string AfterRemove(const std::string& before, const char* section, const char* key) const
    {
        Settings settings = Of(before);
        EXPECT_TRUE(settings.Remove(section, key));
        EXPECT_TRUE(settings.Save());
        return Content();
    }

    const ToolkitTest::TemporaryFolder m_folder;
};

const char c_strMail[] =
    "; of mails\n[mail]\nname = Gr\u00f6\u00dfe\npreview=80\nhtml = yes\nempty =\n\n[other]\n";

} // namespace

TEST_F(SettingsTest, GetReturnsWhatTheFileHolds)
{
    const Settings settings = Of(c_strMail);

    EXPECT_EQ(settings.Get("mail", "name", "nobody"), "Gr\u00f6\u00dfe");
    EXPECT_EQ(settings.Get("mail", "preview", 7), 80);
    EXPECT_EQ(settings.Get("mail", "preview", "7"), "80");
    EXPECT_EQ(settings.Get("mail", "html", false), true);
    EXPECT_EQ(settings.Get("mail", "empty", "x"), "");
    EXPECT_TRUE(settings.Has("mail", "empty"));
}

TEST_F(SettingsTest, GetReturnsTheFallbackForWhatIsMissingOrSomethingElse)
{
    const Settings settings = Of(c_strMail);
    const std::string text = "text";

    EXPECT_EQ(settings.Get("mail", "missing", "nobody"), "nobody");
    EXPECT_EQ(settings.Get("missing", "name", text), text);
    EXPECT_EQ(settings.Get("Mail", "name", std::string_view("x")), "x");
    EXPECT_EQ(settings.Get("mail", "name", 7), 7);
    EXPECT_EQ(settings.Get("mail", "empty", 7U), 7U);
    EXPECT_EQ(settings.Get("mail", "name", true), true);
    EXPECT_EQ(settings.Get("mail", "preview", false), false);
    EXPECT_FALSE(settings.Has("mail", "missing"));
}

TEST_F(SettingsTest, ALiteralIsNeverABool)
{
    const Settings settings = Of(c_strMail);
    static_assert(std::is_same_v<decltype(settings.Get("a", "b", "c")), std::string>);
    static_assert(std::is_same_v<decltype(settings.Get("a", "b", true)), bool>);
    static_assert(std::is_same_v<decltype(settings.Get("a", "b", 1L)), long>);
    static_assert(std::is_same_v<decltype(settings.Get("a", "b", 1.5F)), float>);
}

TEST_F(SettingsTest, ReadSaysWhatIsWrong)
{
    const Settings settings =
        Of("[mail]\npreview = 8o\nlines = 300\nminus = -1\nhtml = maybe\nempty =\nn = 42\n");

    EXPECT_FALSE(settings.Read<int>("mail", "missing")->has_value());
    EXPECT_EQ(settings.Read<int>("mail", "n")->value(), 42);
    EXPECT_EQ(settings.Read<std::string>("mail", "n")->value(), "42");
    EXPECT_FALSE(settings.Read<std::string>("mail", "missing")->has_value());
    const Result<std::optional<int>> preview = settings.Read<int>("mail", "preview");
    ASSERT_FALSE(preview);
    EXPECT_EQ(preview.error().Message(), "mail/preview: '8o' is no number");
    EXPECT_EQ(preview.error().Code(), Errc::Malformed);
    EXPECT_EQ(settings.Read<double>("mail", "empty").error().Message(), "mail/empty: '' is no number");
    EXPECT_EQ(settings.Read<bool>("mail", "html").error().Message(), "mail/html: 'maybe' is no bool");
    const Result<std::optional<unsigned char>> lines = settings.Read<unsigned char>("mail", "lines");
    ASSERT_FALSE(lines);
    EXPECT_EQ(lines.error().Code(), std::errc::result_out_of_range);
    EXPECT_EQ(lines.error().Message(), "mail/lines: '300' does not fit");
    EXPECT_EQ(settings.Read<unsigned int>("mail", "minus").error().Code(), std::errc::result_out_of_range);
    EXPECT_EQ(settings.Read<int>("mail", "minus")->value(), -1);
}

TEST_F(SettingsTest, ReadCutsALongValueBetweenCharacters)
{
    std::string value = "x";
    for (int i = 0; i < 100; ++i)
        value += "\u00f6";
    const Settings settings = Of("[a]\nb = " + value + "\n");
    EXPECT_EQ(settings.Read<int>("a", "b").error().Message(),
              "a/b: '" + value.substr(0, 99) + "...' is no number");
}

TEST_F(SettingsTest, ReadsNumbersThatAreAllOfTheText)
{
    const std::pair<const char*, std::optional<int>> rows[] = {
        {"0", 0},
        {"-7", -7},
        {"+7", 7},
        {"007", 7},
        {"2147483647", 2147483647},
        {"", {}},
        {"7 8", {}},
        {"7.0", {}},
        {"0x7", {}},
        {"2147483648", {}},
        {"+", {}},
        {"-", {}},
        {"+-7", {}},
        {"++7", {}},
        {"1e3", {}},
        {"1,5", {}},
        {"\u0667", {}},
        {"99999999999999999999999", {}},
    };
    for (const auto& [text, number] : rows)
        EXPECT_EQ(Of("[a]\nb = "s + text + "\n").Get("a", "b", 12345), number.value_or(12345)) << text;
    EXPECT_EQ(Of("[a]\nb = 1.5e3\n").Get("a", "b", 0.0), 1500.0);
    EXPECT_EQ(Of("[a]\nb = inf\n").Get("a", "b", 0.0), std::numeric_limits<double>::infinity());
    EXPECT_EQ(Of("[a]\nb = nan\n").Get("a", "b", 2.0), 2.0);
    EXPECT_EQ(Of("[a]\nb = 1,5\n").Get("a", "b", 2.0), 2.0);
}

TEST_F(SettingsTest, ReadsBoolsInAnyCase)
{
    for (const char* const yes : {"1", "true", "True", "YES", "on"})
        EXPECT_EQ(Of("[a]\nb = "s + yes + "\n").Read<bool>("a", "b")->value(), true) << yes;
    for (const char* const no : {"0", "false", "FALSE", "no", "Off"})
        EXPECT_EQ(Of("[a]\nb = "s + no + "\n").Read<bool>("a", "b")->value(), false) << no;
    for (const char* const neither : {"2", "01", "t", "y", "ja", ""})
        EXPECT_FALSE(Of("[a]\nb = "s + neither + "\n").Read<bool>("a", "b")) << neither;
}

TEST_F(SettingsTest, ListsSectionsAndKeysInTheOrderOfTheFile)
{
    const Settings settings = Of("ignored = 1\n[z]\nb = 1\na = 2\nb = 3\n[y]\n[z]\nc = 4\n[]\n = x\n");

    EXPECT_THAT(settings.Sections(), ElementsAre("z", "y", ""));
    EXPECT_THAT(settings.Keys("z"), ElementsAre("b", "a", "c"));
    EXPECT_THAT(settings.Keys("y"), IsEmpty());
    EXPECT_THAT(settings.Keys("missing"), IsEmpty());
    EXPECT_EQ(settings.Get("z", "b", 0), 1) << "the first one counts";
    EXPECT_EQ(settings.Get("", "", "none"), "x");
}

TEST_F(SettingsTest, SetKeepsTheSpacingOfTheLine)
{
    EXPECT_EQ(AfterSet("[a]\nb\t=  old \t\n", "a", "b", "new"), "[a]\nb\t=  new \t\n");
    EXPECT_EQ(AfterSet("[a]\nb=old", "a", "b", "new"), "[a]\nb=new");
    EXPECT_EQ(AfterSet("[a]\nb=", "a", "b", "new"), "[a]\nb=new");
    EXPECT_EQ(AfterSet("[a]\nb = \n", "a", "b", "new"), "[a]\nb = new\n");
    EXPECT_EQ(AfterSet("[a]\nb = old ; note\n", "a", "b", ""), "[a]\nb = \n");
    EXPECT_EQ(AfterSet("[a]\n = old\n", "a", "", "x"), "[a]\n = x\n");
}

TEST_F(SettingsTest, SetAddsAKeyAfterTheLastOfItsSectionInItsSpacing)
{
    EXPECT_EQ(AfterSet("[a]\nb=1\n\n; of c\n[c]\n", "a", "n", "2"), "[a]\nb=1\nn=2\n\n; of c\n[c]\n");
    EXPECT_EQ(AfterSet("[a]\r\n\tb : = 1\r\n[c]\r\n", "a", "n", "2"),
              "[a]\r\n\tb : = 1\r\n\tn = 2\r\n[c]\r\n");
    EXPECT_EQ(AfterSet("[a]\nb=1", "a", "n", "2"), "[a]\nb=1\nn=2");
    EXPECT_EQ(AfterSet("[a]", "a", "n", "2"), "[a]\nn = 2");
    EXPECT_EQ(AfterSet("[a]\rb=1\r[c]\r", "c", "n", "2"), "[a]\rb=1\r[c]\rn=2\r");
    EXPECT_EQ(AfterSet("[a]\nb=1\n[c]\n[a]\nd=1\n", "a", "n", "2"), "[a]\nb=1\n[c]\n[a]\nd=1\nn=2\n");
}

TEST_F(SettingsTest, SetAddsASectionAtTheEnd)
{
    EXPECT_EQ(AfterSet("", "a", "b", "1"), "[a]\nb = 1\n");
    EXPECT_EQ(AfterSet("[c]\r\nd=1", "a", "b", "1"), "[c]\r\nd=1\r\n\r\n[a]\r\nb=1\r\n");
    EXPECT_EQ(AfterSet("[c]\n", "", "b", "1"), "[c]\n\n[]\nb = 1\n");
    EXPECT_EQ(AfterSet("no line of it counts", "a", "b", "1"), "no line of it counts\n\n[a]\nb = 1\n");
}

TEST_F(SettingsTest, RemoveTakesTheLinesAndNothingElse)
{
    EXPECT_EQ(AfterRemove("; x\n[a]\n; of b\nb=1\nc=2\n", "a", "b"), "; x\n[a]\n; of b\nc=2\n");
    EXPECT_EQ(AfterRemove("[a]\nb=1\nc=2\nb=3\n[d]\nb=4\n[a]\nb=5", "a", "b"), "[a]\nc=2\n[d]\nb=4\n[a]\n");
    Settings settings = Of("[a]\nb=1\n");
    EXPECT_FALSE(settings.Remove("a", "missing"));
    EXPECT_FALSE(settings.Remove("missing", "b"));
    EXPECT_TRUE(settings.Remove("a", "b"));
    EXPECT_FALSE(settings.Remove("a", "b"));
    EXPECT_FALSE(settings.Has("a", "b"));
    EXPECT_THAT(settings.Sections(), ElementsAre("a"));
    EXPECT_THAT(settings.Keys("a"), IsEmpty());
}

TEST_F(SettingsTest, AKeyThatComesBackIsTheLastOne)
{
    Settings settings = Of("[a]\nb=1\nc=2\n");
    EXPECT_TRUE(settings.Remove("a", "b"));
    EXPECT_TRUE(settings.Set("a", "b", 3));
    EXPECT_THAT(settings.Keys("a"), ElementsAre("c", "b"));
    EXPECT_TRUE(settings.Save());
    EXPECT_EQ(Content(), "[a]\nc=2\nb=3\n");
}

TEST_F(SettingsTest, SetRefusesWhatWouldNotBeReadBackEqual)
{
    const struct
    {
        std::string section, key, value;
    } rows[] = {
        {"a", "b", " blank"}, {"a", "b", "blank\t"}, {"a", "b", "two\nlines"}, {"a", "b", "two\rlines"},
        {"a", "b", "\xFF"},   {"a", "b=c", "d"},     {"a", " b", "c"},         {"a", "b\t", "c"},
        {"a", "b\n", "c"},    {"a", "[b", "c]"},     {"a", ";b", "c"},         {"a", "\xC3", "c"},
        {"a\n", "b", "c"},    {"\x80", "b", "c"},    {"a\r", "b", "c"},        {"n\nx", "b", "c"},
        {"new", ";b", "c"},   {"new", "b", " c"},
    };
    const std::string before = "[a]\nb=1\n";
    Settings settings = Of(before);
    for (const auto& row : rows)
    {
        const Result<void> set = settings.Set(row.section, row.key, row.value);
        ASSERT_FALSE(set) << row.section << '/' << row.key << '=' << row.value;
        EXPECT_EQ(set.error().Code(), Errc::Refused);
    }
    EXPECT_EQ(settings.Set("a", "b", " x").error().Message(),
              "cannot set a/b: it would not be read back equal");
    EXPECT_EQ(settings.Set("a", "b", std::nan("")).error().Code(), Errc::Refused);
    EXPECT_TRUE(settings.Save());
    EXPECT_EQ(Content(), before);
    EXPECT_THAT(settings.Sections(), ElementsAre("a"));
}

TEST_F(SettingsTest, NumbersAreReadBackEqual)
{
    Settings settings = Settings::LoadOrNew(Path()).value();
    const auto check = [&settings](auto number)
    {
        using Number = decltype(number);
        EXPECT_TRUE(settings.Set("a", "b", number));
        EXPECT_EQ(settings.Read<Number>("a", "b")->value(), number);
    };
    check(std::numeric_limits<long long>::min());
    check(std::numeric_limits<long long>::max());
    check(std::numeric_limits<unsigned long long>::max());
    check(static_cast<signed char>(-128));
    check(static_cast<unsigned short>(65535));
    check(0.1);
    check(0.1F);
    check(0.1L);
    check(-std::numeric_limits<double>::infinity());
    check(std::numeric_limits<double>::denorm_min());
    check(std::numeric_limits<float>::max());
    check(true);
    check(false);
    EXPECT_EQ(settings.Get("a", "b", "none"), "0") << "IniFile understands that";
}

TEST_F(SettingsTest, SavesAndLoadsAgain)
{
    Settings settings = Settings::LoadOrNew(m_folder.Path("new/folder/a.ini")).value();
    EXPECT_TRUE(settings.Set("mail", "preview", 100));
    const Result<void> saved = settings.Save();
    ASSERT_TRUE(saved) << saved.error().Message();
    EXPECT_EQ(ReadBytes(m_folder.Path("new/folder/a.ini")), "[mail]\npreview = 100\n");
    EXPECT_TRUE(settings.Set("mail", "preview", 101));
    EXPECT_TRUE(settings.Save()) << "its own change is nobody else's";
    EXPECT_EQ(Settings::Load(m_folder.Path("new/folder/a.ini"))->Get("mail", "preview", 0), 101);
}

TEST_F(SettingsTest, LoadSaysWhyItCannot)
{
    const Result<Settings> missing = Settings::Load(Path());
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().Code(), std::errc::no_such_file_or_directory);
    EXPECT_NE(missing.error().Message().find(Path()), std::string::npos);
    EXPECT_EQ(Settings::LoadOrNew(m_folder.Path()).error().Code(), std::errc::is_a_directory);
    Write("[a]\nb=\xFF\n");
    const Result<Settings> broken = Settings::Load(Path());
    ASSERT_FALSE(broken);
    EXPECT_EQ(broken.error().Code(), Errc::Malformed);
    EXPECT_EQ(broken.error().Message(), "cannot read " + Path() + ": byte 6 begins no character of UTF-8");
    Write("\xFF\xFE["s);
    EXPECT_EQ(Settings::Load(Path()).error().Message(),
              "cannot read " + Path() + ": after its mark it is no UTF-16");
}

TEST_F(SettingsTest, SaveRefusesToUndoTheChangeOfAnother)
{
    Settings settings = Of("[a]\nb=1\n");
    EXPECT_TRUE(settings.Set("a", "b", 2));
    Write("[a]\nb=3\n");
    const Result<void> changed = settings.Save();
    ASSERT_FALSE(changed);
    EXPECT_EQ(changed.error().Code(), Errc::ChangedByOther);
    EXPECT_EQ(changed.error().Message(), "cannot save " + Path() + ": another program changed it");
    EXPECT_EQ(Content(), "[a]\nb=3\n");
    std::filesystem::remove(Path());
    EXPECT_EQ(settings.Save().error().Message(), "cannot save " + Path() + ": another program removed it");
    EXPECT_FALSE(std::filesystem::exists(Path()));

    Settings fresh = Settings::LoadOrNew(Path()).value();
    Write("");
    EXPECT_TRUE(fresh.Set("a", "b", 2));
    EXPECT_EQ(fresh.Save().error().Message(), "cannot save " + Path() + ": another program made it");
}

TEST_F(SettingsTest, SaveWritesNothingWithoutAChange)
{
    Settings settings = Of("[a]\nb=1\n");
    struct stat before = {};
    ASSERT_EQ(stat(Path().c_str(), &before), 0);
    EXPECT_TRUE(settings.Set("a", "b", "1"));
    EXPECT_TRUE(settings.Save());
    struct stat after = {};
    ASSERT_EQ(stat(Path().c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(SettingsTest, SaveKeepsMarkAndEncoding)
{
    const struct
    {
        std::string mark;
        int unit;
        bool big;
    } rows[] = {{"\xEF\xBB\xBF", 1, false},
                {"\xFF\xFE", 2, false},
                {"\xFE\xFF", 2, true},
                {"\xFF\xFE\0\0"s, 4, false},
                {"\0\0\xFE\xFF"s, 4, true}};
    for (const auto& row : rows)
    {
        const auto encoded = [&row](const std::u16string& text)
        {
            std::string bytes = row.mark;
            for (const char16_t character : text)
                for (int i = 0; i < row.unit; ++i)
                    bytes += static_cast<char>(character >> (8 * (row.big ? row.unit - 1 - i : i)) & 0xFF);
            return bytes;
        };
        Settings settings = Of(encoded(u"[a]\r\nb=1\r\n"));
        EXPECT_EQ(settings.Get("a", "b", 0), 1);
        EXPECT_TRUE(settings.Save());
        EXPECT_EQ(Content(), encoded(u"[a]\r\nb=1\r\n"));
        EXPECT_TRUE(settings.Set("a", "b", "x=y"));
        EXPECT_TRUE(settings.Save());
        EXPECT_EQ(Content(), encoded(u"[a]\r\nb=x=y\r\n"));
        EXPECT_TRUE(settings.Set("a", "c", row.unit == 1 ? "z" : "\U0001F600"));
        EXPECT_TRUE(settings.Save());
        EXPECT_EQ(Settings::Load(Path())->Get("a", "c", "none"), row.unit == 1 ? "z" : "\U0001F600");
    }
}

TEST_F(SettingsTest, ACopyIsASnapshot)
{
    Settings settings = Of("[a]\nb=1\n");
    const Settings copy = settings;
    EXPECT_TRUE(settings.Set("a", "b", 2));
    EXPECT_TRUE(settings.Set("c", "d", 2));
    EXPECT_EQ(copy.Get("a", "b", 0), 1);
    EXPECT_FALSE(copy.Has("c", "d"));
    Settings other = Settings::LoadOrNew(m_folder.Path("other")).value();
    other = settings;
    EXPECT_EQ(other.Get("c", "d", 0), 2);
    EXPECT_TRUE(other.Save());
    EXPECT_EQ(settings.Save().error().Code(), Errc::ChangedByOther) << "even if both wrote the same";
}

TEST_F(SettingsTest, SavesARelativePathWhereItWasLoaded)
{
    ToolkitTest::WriteBytes(m_folder.Path("there.ini"), "[a]\nb=1\n");
    std::filesystem::create_directory(m_folder.Path("other"));
    EXPECT_TRUE(InChild(
        [this]
        {
            std::filesystem::current_path(m_folder.Path());
            Settings there = Settings::Load("there.ini").value();
            Settings made = Settings::LoadOrNew("made.ini").value();
            std::filesystem::current_path("other");
            Settings copy = made;
            return there.Set("a", "b", 2) && there.Save() && copy.Set("a", "b", 3) && copy.Save();
        }));
    EXPECT_EQ(ReadBytes(m_folder.Path("there.ini")), "[a]\nb=2\n");
    EXPECT_EQ(ReadBytes(m_folder.Path("made.ini")), "[a]\nb = 3\n");
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.Path("other")));
}

TEST_F(SettingsTest, WhatWasMovedFromIsEmptyAndRefusesToChange)
{
    Settings settings = Of("[a]\nb=1\n");
    Settings taken = std::move(settings);
    EXPECT_EQ(taken.Get("a", "b", 0), 1);
    // NOLINTBEGIN(bugprone-use-after-move): the header says what it does.
    EXPECT_EQ(settings.Get("a", "b", 7), 7);
    EXPECT_EQ(settings.Get("a", "b", "x"), "x");
    EXPECT_FALSE(settings.Has("a", "b"));
    EXPECT_FALSE(settings.Remove("a", "b"));
    EXPECT_THAT(settings.Sections(), IsEmpty());
    EXPECT_THAT(settings.Keys("a"), IsEmpty());
    EXPECT_FALSE(settings.Read<int>("a", "b")->has_value());
    EXPECT_EQ(settings.Set("a", "b", 1).error().Code(), Errc::Refused);
    EXPECT_EQ(settings.Save().error().Code(), Errc::Refused);
    const Settings copy = settings;
    EXPECT_THAT(copy.Sections(), IsEmpty());
    // NOLINTEND(bugprone-use-after-move)
    settings = std::move(taken);
    EXPECT_EQ(settings.Get("a", "b", 0), 1);
}

TEST_F(SettingsTest, SaveWaitsForAnotherThatSaves)
{
    Settings settings = Of("[a]\nb=1\n");
    EXPECT_TRUE(settings.Set("a", "b", 2));
    const int folder = open(m_folder.Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(folder, LOCK_EX), 0);
    Result<void> saved;
    std::thread saver([&] { saved = settings.Save(); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(Content(), "[a]\nb=1\n");
    close(folder);
    saver.join();
    EXPECT_TRUE(saved) << saved.error().Message();
    EXPECT_EQ(Content(), "[a]\nb=2\n");
}

TEST_F(SettingsTest, SaveSaysThatItHasWaitedLongEnough)
{
    Settings settings = Of("[a]\nb=1\n");
    EXPECT_TRUE(settings.Set("a", "b", 2));
    const int folder = open(m_folder.Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(folder, LOCK_EX), 0);
    const Result<void> saved = settings.Save();
    EXPECT_EQ(std::errc::device_or_resource_busy, saved.error().Code());
    EXPECT_EQ("cannot save " + Path() + ": another program has locked its folder", saved.error().Message());
    EXPECT_EQ(Content(), "[a]\nb=1\n");
    close(folder);
    EXPECT_TRUE(settings.Save());
    EXPECT_EQ(Content(), "[a]\nb=2\n");
}

TEST_F(SettingsTest, OfManyThatSaveAtOnceNoneUndoesAnother)
{
    Write("[a]\nn=0\n");
    const int rounds = 25;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            [this]
            {
                for (int done = 0; done < rounds;)
                {
                    Settings settings = Settings::Load(Path()).value();
                    settings.Set("a", "n", settings.Get("a", "n", 0) + 1).value();
                    const Result<void> saved = settings.Save();
                    ASSERT_TRUE(saved || saved.error().Code() == Errc::ChangedByOther)
                        << saved.error().Message();
                    done += saved ? 1 : 0;
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(Content(), "[a]\nn=" + std::to_string(4 * rounds) + "\n");
}

TEST_F(SettingsTest, ServesManyThreadsAtOnce)
{
    Settings settings = Of("[a]\nn=0\nt=some text\n");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            [&settings, i]
            {
                for (int n = 1; n <= 300; ++n)
                {
                    const std::string key = "k" + std::to_string(n % 7);
                    EXPECT_TRUE(settings.Set("s" + std::to_string(i), key, n));
                    EXPECT_EQ(settings.Get("s" + std::to_string(i), key, 0), n);
                    EXPECT_EQ(settings.Get("a", "t", ""), "some text");
                    const Settings copy = settings;
                    EXPECT_EQ(copy.Get("a", "n", 7), 0);
                    if (n % 9 == 0)
                        settings.Remove("s" + std::to_string(i), key);
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(settings.Sections().size(), 5U);
}
