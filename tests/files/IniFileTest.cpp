// SPDX-License-Identifier: MIT
#include "toolkit/files/IniFile.h"

#include <atomic>
#include <climits>
#include <clocale>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/reference/PlainIni.h"
#include "tests/support/Document.h"
#include "tests/support/InChild.h"
#include "tests/support/InstalledLogger.h"
#include "tests/support/PlainLines.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/log/ILogger.h"

namespace
{

using Toolkit::IniFile;
using Toolkit::TString;
using ToolkitTest::AsNobody;
using ToolkitTest::CapturedOutput;
using ToolkitTest::InstalledLogger;
using ToolkitTest::PlainIni;
using ToolkitTest::PlainLines;
using ToolkitTest::Record;
using ToolkitTest::RecordingLogger;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;
using Text = TString<wchar_t>;

const Text s_strNone = L"(none)";

// Settings out of a file of that content.
struct Settings
{
    explicit Settings(const std::string& content) : file(Write(folder, content)), ini(file) {}

    static Text Write(const TemporaryFolder& folder, const std::string& content)
    {
        WriteBytes(folder.Path("settings.ini"), content);
        return folder.Wide("settings.ini");
    }

    Text Get(const Text& section, const Text& key) const { return ini.GetValue(section, key, s_strNone); }

    TemporaryFolder folder;
    Text file;
    IniFile ini;
};

// Groups digits in threes and has a decimal comma.
class GroupingDigits : public std::numpunct<wchar_t>
{
    wchar_t do_thousands_sep() const override { return L','; }
    std::string do_grouping() const override { return "\3"; }
    wchar_t do_decimal_point() const override { return L';'; }
};

// The global locale for a scope.
class ScopedLocale
{
public:
    explicit ScopedLocale(const std::locale& locale) : m_before(std::locale::global(locale)) {}
    ~ScopedLocale() { std::locale::global(m_before); }
    ScopedLocale(const ScopedLocale&) = delete;
    ScopedLocale& operator=(const ScopedLocale&) = delete;

private:
    const std::locale m_before;
};

TEST(IniFile, ReadsKeysOfSections)
{
    const Settings settings("[first]\na=1\nb=two words\n[second]\na=3\n");
    EXPECT_TRUE(settings.ini.IsLoaded());
    EXPECT_EQ(settings.Get(L"first", L"a"), L"1");
    EXPECT_EQ(settings.Get(L"first", L"b"), L"two words");
    EXPECT_EQ(settings.Get(L"second", L"a"), L"3");
}

TEST(IniFile, TakesEachLineByItsOwnRules)
{
    struct Row
    {
        const char* line;
        const wchar_t* key;
        const wchar_t* value;
    };
    const Row rows[] = {
        {"key = a = b", L"key", L"a = b"},
        {"name=", L"name", L""},
        {"name =  \t ", L"name", L""},
        {" \t key \t = \t value \t ", L"key", L"value"},
        {"key=\"quoted\"", L"key", L"\"quoted\""},
        {"key=a\\nb", L"key", L"a\\nb"},
        {"key=value ; note", L"key", L"value ; note"},
        {" ;key=value", L";key", L"value"},
        {"#key=value", L"#key", L"value"},
        {"=value", L"", L"value"},
        {" \t = value", L"", L"value"},
        {"=", L"", L""},
        {"[abc=value", L"[abc", L"value"},
        {"[abc]=value", L"[abc]", L"value"},
        {" [abc=d]", L"[abc", L"d]"},
        {"abc]=value", L"abc]", L"value"},
        {"a b=c d", L"a b", L"c d"},
        {"key=\xC2\xA0value\xC2\xA0", L"key", L"\u00A0value\u00A0"},
        {"key=\vvalue\f", L"key", L"\vvalue\f"},
        {"k\xC3\xA9y=\xE2\x82\xAC", L"k\u00E9y", L"\u20AC"},
    };
    for (const Row& row : rows)
    {
        const Settings settings(std::string("[s]\n") + row.line + "\n");
        std::vector<Text> keys;
        settings.ini.GetKeyList(L"s", keys);
        EXPECT_EQ(keys, std::vector<Text>{row.key}) << row.line;
        EXPECT_EQ(settings.Get(L"s", row.key), row.value) << row.line;
    }
}

TEST(IniFile, SkipsLinesThatAreNoSettings)
{
    for (const char* const line : {"", ";key=value", ";", "no equals sign", "  ", "  [sec]", "[sec] ; note",
                                   "[", "]", "[sec] ", "[sec"})
    {
        const Settings settings(std::string("[s]\n") + line + "\nlast=1\n");
        std::vector<Text> keys;
        settings.ini.GetKeyList(L"s", keys);
        EXPECT_EQ(keys, std::vector<Text>{L"last"}) << line;
        EXPECT_FALSE(settings.ini.HasSection(L"sec")) << line;
    }
}

TEST(IniFile, DocumentedExampleIsReadAsItSays)
{
    const Settings settings(ToolkitTest::DocumentedText("```ini"));
    std::vector<Text> keys;
    settings.ini.GetKeyList(L"window", keys);
    EXPECT_EQ(keys, (std::vector<Text>{L"#note", L"title", L"visible", L"width"}));
    EXPECT_EQ(settings.Get(L"window", L"width"), L"640");
    EXPECT_EQ(settings.Get(L"window", L"title"), L"Caf\u00E9 = 2 ; open");
    EXPECT_EQ(settings.Get(L"window", L"#note"), L"a key");
    EXPECT_FALSE(settings.ini.GetBool(L"window", L"visible", true));
    EXPECT_TRUE(settings.ini.HasSection(L"empty"));
    EXPECT_FALSE(settings.ini.HasValue(L"window", L"lost"));
}

TEST(IniFile, TakesSectionNamesUntrimmed)
{
    struct Row
    {
        const char* line;
        const wchar_t* section;
    };
    for (const Row& row : {Row{"[]", L""}, Row{"[ a ]", L" a "}, Row{"[a=b]", L"a=b"}, Row{"[[a]]", L"[a]"},
                           Row{"[;]", L";"}, Row{"[][]", L"]["}})
    {
        const Settings settings(std::string(row.line) + "\nk=v\n");
        EXPECT_TRUE(settings.ini.HasSection(row.section)) << row.line;
        EXPECT_EQ(settings.Get(row.section, L"k"), L"v") << row.line;
    }
}

TEST(IniFile, KnowsSectionsWithoutKeys)
{
    const Settings settings("[empty]\n[other]\n");
    EXPECT_TRUE(settings.ini.HasSection(L"empty"));
    EXPECT_TRUE(settings.ini.HasSection(L"other"));
    EXPECT_FALSE(settings.ini.HasSection(L""));
}

TEST(IniFile, ComparesNamesExactly)
{
    const Settings settings("[Section]\nKey=1\n[section]\nkey=2\n");
    EXPECT_EQ(settings.Get(L"Section", L"Key"), L"1");
    EXPECT_EQ(settings.Get(L"section", L"key"), L"2");
    EXPECT_EQ(settings.Get(L"Section", L"key"), s_strNone);
    EXPECT_FALSE(settings.ini.HasSection(L"SECTION"));
    EXPECT_FALSE(settings.ini.HasSection(L"Sectio"));
}

TEST(IniFile, MergesRepeatedSections)
{
    const Settings settings("[a]\nx=1\ny=2\n[b]\nx=3\n[a]\nx=4\nz=5\n");
    std::vector<Text> keys;
    settings.ini.GetKeyList(L"a", keys);
    EXPECT_EQ(keys, (std::vector<Text>{L"x", L"y", L"z"}));
    EXPECT_EQ(settings.Get(L"a", L"x"), L"1");
    EXPECT_EQ(settings.Get(L"b", L"x"), L"3");
}

TEST(IniFile, KeepsTheFirstOfRepeatedKeys)
{
    const Settings settings("[a]\nk=\nk=second\n");
    EXPECT_EQ(settings.Get(L"a", L"k"), L"");
}

TEST(IniFile, IgnoresKeysBeforeTheFirstSection)
{
    const Settings settings("stray=1\n[a]\nk=2\n");
    EXPECT_FALSE(settings.ini.HasValue(L"a", L"stray"));
    EXPECT_FALSE(settings.ini.HasValue(L"", L"stray"));
    EXPECT_FALSE(settings.ini.HasSection(L""));
}

TEST(IniFile, CountsAnEmptyValueAsAValue)
{
    const Settings settings("[a]\nname=\n");
    EXPECT_TRUE(settings.ini.HasValue(L"a", L"name"));
    EXPECT_EQ(settings.Get(L"a", L"name"), L"");
    EXPECT_EQ(settings.ini.GetInt32(L"a", L"name", 5), 5);
    EXPECT_EQ(settings.ini.GetUint32(L"a", L"name", 6), 6U);
    EXPECT_TRUE(settings.ini.GetBool(L"a", L"name", true));
    EXPECT_FALSE(settings.ini.GetBool(L"a", L"name", false));
}

TEST(IniFile, HasNoValueWithoutSectionOrKey)
{
    const Settings settings("[a]\nk=1\n");
    EXPECT_FALSE(settings.ini.HasValue(L"a", L"other"));
    EXPECT_FALSE(settings.ini.HasValue(L"other", L"k"));
}

TEST(IniFile, AnswersTheDefaultItself)
{
    const Settings settings("[a]\nk=1\n");
    const Text fallback = L"fallback";
    EXPECT_EQ(&settings.ini.GetValue(L"a", L"other", fallback), &fallback);
    EXPECT_EQ(&settings.ini.GetValue(L"other", L"k", fallback), &fallback);
}

TEST(IniFile, AnswersTheStoredValueItself)
{
    const Settings settings("[a]\nk=1\n");
    const Text fallback = L"1";
    const Text& value = settings.ini.GetValue(L"a", L"k", fallback);
    EXPECT_NE(&value, &fallback);
    EXPECT_EQ(&value, &settings.ini.GetValue(L"a", L"k", s_strNone));
}

TEST(IniFile, GetValueOfADefaultMadeOnTheSpotIsACopy)
{
    const Settings settings("[a]\nk=v\n");
    const auto& missing = settings.ini.GetValue(L"a", L"other", L"a default made on the spot");
    const auto& there = settings.ini.GetValue(L"a", L"k", std::wstring(L"a default made on the spot"));
    EXPECT_EQ(L"a default made on the spot", missing);
    EXPECT_EQ(L"v", there);
    EXPECT_TRUE((std::is_same_v<Text, decltype(settings.ini.GetValue(L"a", L"k", L""))>));
    EXPECT_TRUE((std::is_same_v<const Text&, decltype(settings.ini.GetValue(L"a", L"k", s_strNone))>));
}

TEST(IniFile, ConvertsNumbers)
{
    const Settings settings("[n]\nword=abc\nnegative=-7\npart=12abc\nplus=+5\nlarge=4294967295\n");
    EXPECT_EQ(settings.ini.GetInt32(L"n", L"word", 9), 0);
    EXPECT_EQ(settings.ini.GetUint32(L"n", L"word", 9), 0U);
    EXPECT_EQ(settings.ini.GetInt32(L"n", L"negative", 9), -7);
    EXPECT_EQ(settings.ini.GetInt32(L"n", L"part", 9), 12);
    EXPECT_EQ(settings.ini.GetUint32(L"n", L"plus", 9), 5U);
    EXPECT_EQ(settings.ini.GetUint32(L"n", L"large", 9), 4294967295U);
    EXPECT_EQ(settings.ini.GetInt32(L"n", L"missing", -9), -9);
    EXPECT_EQ(settings.ini.GetUint32(L"missing", L"word", 9), 9U);
}

TEST(IniFile, TakesOnlyOneForTrue)
{
    struct Row
    {
        const char* value;
        bool expected;
    };
    for (const Row& row :
         {Row{"1", true}, Row{"0", false}, Row{"2", false}, Row{"true", false}, Row{"yes", false},
          Row{"01", true}, Row{"+1", true}, Row{"1x", true}, Row{"-1", false}, Row{"11", false},
          Row{"4294967297", false}, Row{"-4294967295", true}})
    {
        const Settings settings(std::string("[b]\nflag=") + row.value + "\n");
        EXPECT_EQ(settings.ini.GetBool(L"b", L"flag", true), row.expected) << row.value;
        EXPECT_EQ(settings.ini.GetBool(L"b", L"flag", false), row.expected) << row.value;
    }
}

TEST(IniFile, AnswersTheDefaultForMissingFlags)
{
    const Settings settings("[b]\n");
    EXPECT_TRUE(settings.ini.GetBool(L"b", L"flag", true));
    EXPECT_FALSE(settings.ini.GetBool(L"b", L"flag", false));
}

// Each text stands once in the file, so that blanks in front of a number survive as the section's keys.
void ExpectNumbersOfAStream(const std::vector<std::wstring>& texts)
{
    std::string content = "[n]\n";
    for (std::size_t i = 0; i < texts.size(); ++i)
        content += std::to_string(i) + "=" + std::string(texts[i].begin(), texts[i].end()) + "\n";
    const Settings settings(content);
    for (std::size_t i = 0; i < texts.size(); ++i)
    {
        const Text key = std::to_wstring(i);
        const Text stored = settings.Get(L"n", key);
        if (stored.empty())
            continue;
        EXPECT_EQ(settings.ini.GetInt32(L"n", key, 9), PlainIni::ReadNumber<int>(stored))
            << std::wstring(stored);
        EXPECT_EQ(settings.ini.GetUint32(L"n", key, 9), PlainIni::ReadNumber<unsigned int>(stored))
            << std::wstring(stored);
        EXPECT_EQ(settings.ini.GetBool(L"n", key, true), PlainIni::ReadNumber<unsigned int>(stored) == 1)
            << std::wstring(stored);
    }
}

const std::vector<std::wstring> s_numbers = {
    L"0",
    L"-0",
    L"+0",
    L"007",
    L"-007",
    L"1,234",
    L"1.5",
    L"1e5",
    L"0x10",
    L"2147483647",
    L"2147483648",
    L"-2147483648",
    L"-2147483649",
    L"4294967295",
    L"4294967296",
    L"-4294967295",
    L"-4294967296",
    L"-1",
    L"--1",
    L"+-1",
    L"- 1",
    L"-",
    L"+",
    L"\v12",
    L"\f\v-12",
    L"12 34",
    L"99999999999999999999",
    L"-99999999999999999999",
    L"18446744073709551617",
    L"18446744073709551615",
    L"abc",
    L",1",
    L".1",
    L"1,,2",
    L"00000000000000000000000012",
    L"4294967297",
    L"1;2",
};

TEST(IniFile, ConvertsNumbersAsAStreamDoes)
{
    ExpectNumbersOfAStream(s_numbers);
}

TEST(IniFile, ConvertsNumbersInTheClassicLocaleWhateverTheHosts)
{
    const ScopedLocale locale(std::locale(std::locale::classic(), new GroupingDigits));
    ExpectNumbersOfAStream(s_numbers);
}

TEST(IniFile, ConvertsRandomTextsAsAStreamDoes)
{
    std::mt19937 random(11);
    const std::wstring alphabet = L"0123456789012345678901234567890123456789+-., \vx";
    std::vector<std::wstring> texts;
    for (int i = 0; i < 5000; ++i)
    {
        std::wstring text(random() % 14, L' ');
        for (wchar_t& character : text)
            character = alphabet[random() % alphabet.size()];
        texts.push_back(text);
    }
    ExpectNumbersOfAStream(texts);
}

TEST(IniFile, ConvertsEveryShortTextAsAStreamDoes)
{
    const std::wstring alphabet = L"019+-, \va";
    std::vector<std::wstring> texts = {L""};
    for (std::size_t i = 0; texts[i].size() < 4; ++i)
        for (const wchar_t character : alphabet)
            texts.push_back(texts[i] + character);
    ExpectNumbersOfAStream(texts);
}

TEST(IniFile, ReadsRandomFilesAsThePlainFormDoes)
{
    std::mt19937 random(13);
    const std::string alphabet = "[[]]==;; \t\n\n\n\rabA1";
    const TemporaryFolder folder;
    for (int i = 0; i < 300; ++i)
    {
        std::string content(random() % 400, ' ');
        for (char& character : content)
            character = alphabet[random() % alphabet.size()];
        WriteBytes(folder.Path("random.ini"), content);
        const IniFile ini(folder.Wide("random.ini"));
        for (const auto& [section, plain] :
             PlainIni(PlainLines(std::wstring(content.begin(), content.end()))).sections)
        {
            std::vector<Text> keys;
            ini.GetKeyList(section, keys);
            ASSERT_EQ(keys.size(), plain.size()) << content;
            for (const auto& [key, value] : plain)
                ASSERT_EQ(ini.GetValue(section, key, s_strNone), value) << content;
        }
    }
}

TEST(IniFile, StopsNumbersAtOtherDigitsAndZeros)
{
    const Settings settings(std::string("[n]\nthai=\xE0\xB9\x91\xE0\xB9\x92\nspace=\xE2\x80\x83") +
                            "7\nzero=1" + std::string(1, '\0') + "2\n");
    EXPECT_EQ(settings.ini.GetInt32(L"n", L"thai", 9), 0);
    EXPECT_EQ(settings.ini.GetInt32(L"n", L"space", 9), 0);
    EXPECT_EQ(settings.ini.GetInt32(L"n", L"zero", 9), 1);
}

TEST(IniFile, ListsKeysInAscendingOrder)
{
    const Settings settings("[s]\nb=1\nA=2\na=3\nab=4\n\xC3\xA9=5\n=6\n");
    std::vector<Text> keys = {L"old"};
    settings.ini.GetKeyList(L"s", keys);
    EXPECT_EQ(keys, (std::vector<Text>{L"", L"A", L"a", L"ab", L"b", L"\u00E9"}));
}

TEST(IniFile, ListsNoKeysOfAMissingSection)
{
    const Settings settings("[s]\na=1\n");
    std::vector<Text> keys = {L"old"};
    settings.ini.GetKeyList(L"other", keys);
    EXPECT_TRUE(keys.empty());
}

TEST(IniFile, ListsKeysOfASectionNamedInTheList)
{
    const Settings settings("[s]\na=1\n");
    std::vector<Text> keys = {L"s"};
    settings.ini.GetKeyList(keys[0], keys);
    EXPECT_EQ(keys, std::vector<Text>{L"a"});
}

TEST(IniFile, TakesTheLastLineWithoutAnEnd)
{
    EXPECT_EQ(Settings("[s]\nk=v").Get(L"s", L"k"), L"v");
    EXPECT_TRUE(Settings("[s]").ini.HasSection(L"s"));
}

TEST(IniFile, TakesEveryKindOfLineEnd)
{
    const Settings settings("[s]\r\na=1\rb=2\nc=3\r\n\r\nd=4");
    EXPECT_EQ(settings.Get(L"s", L"a"), L"1");
    EXPECT_EQ(settings.Get(L"s", L"b"), L"2");
    EXPECT_EQ(settings.Get(L"s", L"c"), L"3");
    EXPECT_EQ(settings.Get(L"s", L"d"), L"4");
}

TEST(IniFile, DetectsTheEncoding)
{
    using namespace std::string_literals;
    for (const std::string& content : {"\xEF\xBB\xBF[s]\nk=\xC3\xA9\n"s, "\xFF\xFE[\0s\0]\0\n\0k\0=\0\xE9\0"s,
                                       "\xFE\xFF\0[\0s\0]\0\n\0k\0=\0\xE9"s})
        EXPECT_EQ(Settings(content).Get(L"s", L"k"), L"\u00E9");
}

TEST(IniFile, IsLoadedFromAnEmptyFile)
{
    const Settings settings("");
    EXPECT_TRUE(settings.ini.IsLoaded());
    EXPECT_FALSE(settings.ini.HasSection(L""));
}

TEST(IniFile, LogsAFileThatCannotBeOpened)
{
    Record record;
    const InstalledLogger logger(new RecordingLogger(record));
    const TemporaryFolder folder;
    const IniFile ini(folder.Wide("missing.ini"));
    EXPECT_FALSE(ini.IsLoaded());
    const std::vector<std::wstring> pieces = record.Pieces();
    ASSERT_EQ(pieces.size(), 10U);
    EXPECT_EQ(pieces[0] + pieces[1], L"0 ");
    EXPECT_EQ(pieces[3] + pieces[4] + pieces[5] + pieces[6] + pieces[7], L" : 64 : Parse : ");
    EXPECT_EQ(pieces[8], L"Unable to open file : " + folder.Wide("missing.ini"));
    EXPECT_EQ(pieces[9], L"\n");
}

TEST(IniFile, LogsNothingOfAFileThatOpens)
{
    Record record;
    const InstalledLogger logger(new RecordingLogger(record));
    const Settings settings("nonsense\n");
    EXPECT_TRUE(settings.ini.IsLoaded());
    EXPECT_EQ(record.Text(), L"");
}

TEST(IniFile, IsNotLoadedFromWhatIsNoTextFile)
{
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.Path("fifo").c_str(), 0600), 0);
    WriteBytes(folder.Path("broken"), "[s]\nk=\xFF\n");
    CapturedOutput errors(2);
    for (const Text& path : {folder.Wide(), folder.Wide("fifo"), folder.Wide("broken"), Text(),
                             Text(folder.Wide("broken") + std::wstring(1, L'\0')), Text(L"/\xD800")})
    {
        Record record;
        const InstalledLogger logger(new RecordingLogger(record));
        const IniFile ini(path);
        EXPECT_EQ(record.Pieces().size(), 10U) << std::wstring(path);
        EXPECT_FALSE(ini.IsLoaded()) << std::wstring(path);
        EXPECT_FALSE(ini.HasSection(L"s")) << std::wstring(path);
    }
    EXPECT_EQ(errors.Stop(), "");
}

TEST(IniFile, ReplacesEverythingWhenParsedAgain)
{
    Settings settings("[old]\nk=1\n[both]\nk=1\n");
    WriteBytes(settings.folder.Path("other.ini"), "stray=1\n[both]\nk=2\n");
    EXPECT_TRUE(settings.ini.Parse(settings.folder.Wide("other.ini")));
    EXPECT_FALSE(settings.ini.HasSection(L"old"));
    EXPECT_FALSE(settings.ini.HasValue(L"both", L"stray"));
    EXPECT_EQ(settings.Get(L"both", L"k"), L"2");
}

TEST(IniFile, KeepsTheLoadedFlagWhenParsedAgain)
{
    Settings settings("[s]\nk=1\n");
    EXPECT_FALSE(settings.ini.Parse(settings.folder.Wide("missing.ini")));
    EXPECT_TRUE(settings.ini.IsLoaded());
    EXPECT_FALSE(settings.ini.HasSection(L"s"));

    IniFile missing(settings.folder.Wide("missing.ini"));
    EXPECT_TRUE(missing.Parse(settings.file));
    EXPECT_FALSE(missing.IsLoaded());
    EXPECT_TRUE(missing.HasSection(L"s"));
}

TEST(IniFile, CopyHasSectionsOfItsOwn)
{
    const Settings other("[t]\nk=2\n");
    IniFile assigned(other.folder.Wide("missing.ini"));
    {
        Settings settings("[s]\nk=1\nl=3\n");
        const IniFile copy(settings.ini);
        EXPECT_TRUE(settings.ini.Parse(other.file));
        EXPECT_EQ(settings.Get(L"t", L"k"), L"2");
        EXPECT_TRUE(copy.IsLoaded());
        EXPECT_FALSE(copy.HasSection(L"t"));
        EXPECT_EQ(copy.GetValue(L"s", L"k", s_strNone), L"1");
        assigned = copy;
        const IniFile& self = assigned;
        assigned = self;
    }
    EXPECT_TRUE(assigned.IsLoaded());
    EXPECT_EQ(assigned.GetValue(L"s", L"l", s_strNone), L"3");
    EXPECT_TRUE(assigned.Parse(other.file));
    EXPECT_FALSE(assigned.HasSection(L"s"));
}

TEST(IniFile, ParsesAFileThatOneOfItsValuesNames)
{
    TemporaryFolder folder;
    WriteBytes(folder.Path("other.ini"), "[other]\nk=2\n");
    Settings settings("[s]\nnext=" + folder.Path("other.ini") + "\nbad=/nowhere/at/all.ini\n");
    EXPECT_TRUE(settings.ini.Parse(settings.ini.GetValue(L"s", L"next", s_strNone)));
    EXPECT_EQ(settings.Get(L"other", L"k"), L"2");

    Record record;
    const InstalledLogger logger(new RecordingLogger(record));
    EXPECT_TRUE(settings.ini.Parse(settings.file));
    EXPECT_FALSE(settings.ini.Parse(settings.ini.GetValue(L"s", L"bad", s_strNone)));
    EXPECT_NE(record.Text().find(L"Unable to open file : /nowhere/at/all.ini\n"), std::wstring::npos);
}

TEST(IniFile, IsNotLoadedFromAFileThatMayNotBeRead)
{
    const Settings settings("[s]\nk=1\n");
    ASSERT_EQ(chmod(settings.folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(settings.folder.Path("settings.ini").c_str(), 0), 0);
    EXPECT_TRUE(AsNobody(
        [&]
        {
            Record record;
            const InstalledLogger logger(new RecordingLogger(record));
            const IniFile ini(settings.file);
            return !ini.IsLoaded() && !ini.HasSection(L"s") && record.Pieces().size() == 10;
        }));
}

TEST(IniFile, AnswersSeveralThreadsAtOnce)
{
    const Settings settings("[s]\nnumber=-12\nflag=1\n");
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            [&]
            {
                std::vector<Text> keys;
                for (int j = 0; j < 500; ++j)
                {
                    settings.ini.GetKeyList(L"s", keys);
                    right += keys.size() == 2 && settings.ini.HasSection(L"s") &&
                             settings.ini.HasValue(L"s", L"flag") &&
                             settings.ini.GetBool(L"s", L"flag", false) &&
                             settings.ini.GetInt32(L"s", L"number", 0) == -12;
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(right, 2000);
}

TEST(IniFile, ReadsManyKeysAndSections)
{
    std::string content;
    for (int i = 0; i < 10000; ++i)
        content += (i % 100 == 0 ? "[" + std::to_string(i / 100) + "]\n" : "") + "key" + std::to_string(i) +
                   "=" + std::to_string(i) + "\n";
    const Settings settings(content);
    for (int i = 0; i < 10000; ++i)
        ASSERT_EQ(settings.ini.GetInt32(std::to_wstring(i / 100), L"key" + std::to_wstring(i), -1), i);
}

} // namespace
