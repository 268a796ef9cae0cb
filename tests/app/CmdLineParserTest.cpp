// SPDX-License-Identifier: MIT
#include "toolkit/app/CmdLineParser.h"

#include <random>
#include <type_traits>

#include <gmock/gmock.h>

#include "tests/reference/PlainTokenize.h"

using testing::ElementsAre;
using testing::IsEmpty;
using Toolkit::CmdLineOption;
using Toolkit::CmdLineParser;
using Toolkit::smart_ptr;
using Toolkit::TString;
using ToolkitTest::PlainTokenize;

static_assert(std::is_same_v<decltype(std::declval<const CmdLineParser&>().GetArguments()),
                             const std::vector<TString<wchar_t>>&>);
static_assert(!std::is_convertible_v<TString<wchar_t>, CmdLineParser>);
static_assert(!std::is_convertible_v<TString<char>, CmdLineParser>);

namespace
{

using Wide = TString<wchar_t>;
using Words = std::vector<Wide>;
using Option = smart_ptr<CmdLineOption>;

Words TokensOf(const Wide& line)
{
    Words tokens = {L"old"};
    CmdLineParser::Tokenize(line, tokens);
    return tokens;
}

Option MakeOption(const wchar_t* name, bool required = false)
{
    return Option(new CmdLineOption(name, required));
}

} // namespace

TEST(CmdLineParser, HasTheConstantsOfItsSyntax)
{
    EXPECT_EQ(CmdLineParser::c_strSeparators, L" \t");
    EXPECT_EQ(CmdLineParser::c_strDelimiters, L"\"");
    EXPECT_EQ(CmdLineParser::c_strIdentifiers, L"-");
}

TEST(CmdLineParser, TokenizesCommandLines)
{
    const struct
    {
        const wchar_t* line;
        Words tokens;
    } rows[] = {
        {L"", {}},
        {L" \t ", {}},
        {L"a", {L"a"}},
        {L"  -restart   \"C:\\a b\"  -x", {L"-restart", L"C:\\a b", L"-x"}},
        {L"\t\ta\tb\t \tc\t", {L"a", L"b", L"c"}},
        {L"-a \"b c d", {L"-a"}},
        {L"\"", {}},
        {L"\"\"", {L""}},
        {L"\"a b\"c", {L"a b", L"c"}},
        {L"\"a\"\"b\"", {L"a", L"b"}},
        {L"a\"b c\"", {L"a\"b", L"c\""}},
        {L"\"\t \"", {L"\t "}},
        {L"a\nb\rc", {L"a\nb\rc"}},
        {L"'a b'", {L"'a", L"b'"}},
        {L"\"a\\\"b\" c", {L"a\\", L"b\"", L"c"}},
        {L"\u00E4\U0001F600 \u00A0", {L"\u00E4\U0001F600", L"\u00A0"}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(TokensOf(row.line), row.tokens) << testing::PrintToString(std::wstring(row.line));
}

TEST(CmdLineParser, TokenizesPastAZero)
{
    EXPECT_THAT(TokensOf(std::wstring(L"a\0b c", 5)), ElementsAre(std::wstring(L"a\0b", 3), L"c"));
}

TEST(CmdLineParser, TokenizesALineThatLiesInItsOwnResult)
{
    Words tokens = {L"x", L"a \"b c\" d"};
    CmdLineParser::Tokenize(tokens[1], tokens);
    EXPECT_THAT(tokens, ElementsAre(L"a", L"b c", L"d"));
}

TEST(CmdLineParser, TokenizesEveryShortLineAsThePlainFormDoes)
{
    const wchar_t alphabet[] = {L'a', L' ', L'\t', L'"'};
    for (std::size_t length = 0; length <= 7; ++length)
        for (std::size_t code = 0; code < (std::size_t{1} << (2 * length)); ++code)
        {
            Wide line;
            for (std::size_t i = 0; i < length; ++i)
                line += alphabet[(code >> (2 * i)) & 3];
            ASSERT_EQ(TokensOf(line), PlainTokenize(line)) << testing::PrintToString(std::wstring(line));
        }
}

TEST(CmdLineParser, TokenizesLongRandomLinesAsThePlainFormDoes)
{
    std::mt19937 random(1);
    const Wide alphabet = L"abc-\u00E4   \t\"";
    for (int round = 0; round < 300; ++round)
    {
        Wide line;
        for (std::size_t length = random() % 200; length > 0; --length)
            line += alphabet[random() % alphabet.size()];
        ASSERT_EQ(TokensOf(line), PlainTokenize(line)) << testing::PrintToString(std::wstring(line));
    }
}

TEST(CmdLineParser, KeepsAllEntriesOfANarrowVector)
{
    const char* argv[] = {"/bin/tool", "-name", "\xC3\xA4\xF0\x9F\x98\x80", "", "a b"};
    EXPECT_THAT(CmdLineParser(5, argv).GetArguments(),
                ElementsAre(L"/bin/tool", L"-name", L"\u00E4\U0001F600", L"", L"a b"));
}

TEST(CmdLineParser, KeepsAllEntriesOfAWideVector)
{
    const wchar_t* argv[] = {L"/bin/tool", L"\u00E4", L"", L"\"a b\""};
    EXPECT_THAT(CmdLineParser(4, argv).GetArguments(), ElementsAre(L"/bin/tool", L"\u00E4", L"", L"\"a b\""));
}

TEST(CmdLineParser, TakesNoMoreThanTheCountSays)
{
    const char* argv[] = {"a", "b", "c"};
    EXPECT_THAT(CmdLineParser(2, argv).GetArguments(), ElementsAre(L"a", L"b"));
    EXPECT_THAT(CmdLineParser(0, argv).GetArguments(), IsEmpty());
    EXPECT_THAT(CmdLineParser(-1, argv).GetArguments(), IsEmpty());
}

TEST(CmdLineParser, SurvivesNullVectorsAndEntries)
{
    const char* narrow[] = {"a", nullptr, "b"};
    const wchar_t* wide[] = {nullptr, L"b"};
    EXPECT_THAT(CmdLineParser(3, narrow).GetArguments(), ElementsAre(L"a", L"", L"b"));
    EXPECT_THAT(CmdLineParser(2, wide).GetArguments(), ElementsAre(L"", L"b"));
    EXPECT_THAT(CmdLineParser(3, static_cast<const char**>(nullptr)).GetArguments(), IsEmpty());
    EXPECT_THAT(CmdLineParser(3, static_cast<const wchar_t**>(nullptr)).GetArguments(), IsEmpty());
}

TEST(CmdLineParser, ReadsAnEntryThatIsNotUtf8AsAnEmptyArgument)
{
    const char* argv[] = {"a", "\xFF", "b"};
    EXPECT_THAT(CmdLineParser(3, argv).GetArguments(), ElementsAre(L"a", L"", L"b"));
}

TEST(CmdLineParser, TokenizesOneText)
{
    EXPECT_THAT(CmdLineParser(Wide(L"tool \"\u00E4 b\" -x")).GetArguments(),
                ElementsAre(L"tool", L"\u00E4 b", L"-x"));
    EXPECT_THAT(CmdLineParser(TString<char>("tool \"\xC3\xA4 b\" -x")).GetArguments(),
                ElementsAre(L"tool", L"\u00E4 b", L"-x"));
}

TEST(CmdLineParser, FindsNothingInATextThatIsNotUtf8)
{
    EXPECT_THAT(CmdLineParser(TString<char>("a \xFF b")).GetArguments(), IsEmpty());
}

TEST(CmdLineParser, RefusesASecondOptionOfOneName)
{
    CmdLineParser parser(Wide(L"-a v"));
    const Option first = MakeOption(L"a");
    const Option second = MakeOption(L"A");
    EXPECT_TRUE(parser.AddOption(first));
    EXPECT_FALSE(parser.AddOption(second));
    EXPECT_TRUE(parser.Parse());
    EXPECT_TRUE(first->IsFound());
    EXPECT_FALSE(second->IsFound());
}

TEST(CmdLineParser, RefusesANullOption)
{
    CmdLineParser parser(Wide(L"-a"));
    EXPECT_FALSE(parser.AddOption(Option()));
    EXPECT_TRUE(parser.Parse());
}

TEST(CmdLineParser, GivesAnOptionTheNextPlainArgument)
{
    const struct
    {
        const wchar_t* line;
        bool aFound;
        const wchar_t* aValue;
        bool bFound;
        const wchar_t* bValue;
    } rows[] = {
        {L"", false, L"", false, L""},           {L"-a -b v", true, L"", true, L"v"},
        {L"-a v w", true, L"v", false, L""},     {L"v -a", true, L"", false, L""},
        {L"-a v -a w", true, L"w", false, L""},  {L"-a v -a", true, L"v", false, L""},
        {L"-a -x v", true, L"", false, L""},     {L"-a \"\" v", true, L"", false, L""},
        {L"-a \"-b\" v", true, L"", true, L"v"}, {L"--a v", false, L"", false, L""},
        {L"- v", false, L"", false, L""},        {L"-A v", false, L"", false, L""},
        {L"-b v -a", true, L"", true, L"v"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(std::wstring(row.line)));
        CmdLineParser parser{Wide(row.line)};
        const Option first = MakeOption(L"a");
        const Option second = MakeOption(L"b");
        parser.AddOption(first);
        parser.AddOption(second);
        EXPECT_TRUE(parser.Parse());
        EXPECT_EQ(first->IsFound(), row.aFound);
        EXPECT_EQ(first->GetValue(), row.aValue);
        EXPECT_EQ(second->IsFound(), row.bFound);
        EXPECT_EQ(second->GetValue(), row.bValue);
    }
}

TEST(CmdLineParser, KeepsOneDashOfTwoInTheName)
{
    CmdLineParser parser(Wide(L"--long v"));
    const Option option = MakeOption(L"-long");
    parser.AddOption(option);
    EXPECT_TRUE(parser.Parse());
    EXPECT_EQ(option->GetValue(), L"v");
}

TEST(CmdLineParser, MatchesALoneDashWithTheEmptyName)
{
    CmdLineParser parser(Wide(L"- v"));
    const Option option = MakeOption(L"");
    parser.AddOption(option);
    EXPECT_TRUE(parser.Parse());
    EXPECT_EQ(option->GetValue(), L"v");
}

TEST(CmdLineParser, MatchesDeclaredNamesInLowerCaseOnly)
{
    const struct
    {
        const wchar_t* line;
        bool found;
    } rows[] = {{L"-culture de", true}, {L"-Culture de", false}, {L"-CULTURE de", false}};
    for (const auto& row : rows)
    {
        CmdLineParser parser{Wide(row.line)};
        const Option option = MakeOption(L"Culture");
        parser.AddOption(option);
        EXPECT_TRUE(parser.Parse());
        EXPECT_EQ(option->IsFound(), row.found);
    }
}

TEST(CmdLineParser, TreatsTheFirstEntryOfAVectorAsAnyOther)
{
    const char* argv[] = {"-a", "v"};
    CmdLineParser parser(2, argv);
    const Option option = MakeOption(L"a");
    parser.AddOption(option);
    EXPECT_TRUE(parser.Parse());
    EXPECT_EQ(option->GetValue(), L"v");
}

TEST(CmdLineParser, FailsWhenARequiredOptionIsMissing)
{
    CmdLineParser parser(Wide(L"-a v"));
    const Option a = MakeOption(L"a", true);
    parser.AddOption(a);
    parser.AddOption(MakeOption(L"b", true));
    parser.AddOption(MakeOption(L"c", false));
    EXPECT_FALSE(parser.Parse());
    EXPECT_EQ(a->GetValue(), L"v");
}

TEST(CmdLineParser, IsContentWithARequiredOptionThatHasNoValue)
{
    CmdLineParser parser(Wide(L"-a"));
    parser.AddOption(MakeOption(L"a", true));
    EXPECT_TRUE(parser.Parse());
}

TEST(CmdLineParser, KeepsWhatAnEarlierParseFound)
{
    const Option option = MakeOption(L"a", true);
    CmdLineParser first(Wide(L"-a v"));
    first.AddOption(option);
    EXPECT_TRUE(first.Parse());
    CmdLineParser second(Wide(L""));
    second.AddOption(option);
    EXPECT_TRUE(second.Parse());
    EXPECT_TRUE(option->IsFound());
    EXPECT_EQ(option->GetValue(), L"v");
}

TEST(CmdLineParser, SharesItsOptionsWithTheCaller)
{
    const Option option = MakeOption(L"a");
    {
        CmdLineParser parser(Wide(L"-a v"));
        parser.AddOption(option);
        parser.Parse();
    }
    EXPECT_EQ(option->GetValue(), L"v");
}
