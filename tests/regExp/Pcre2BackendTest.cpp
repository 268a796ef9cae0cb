// SPDX-License-Identifier: MIT
#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include "tests/regExp/BackendCalls.h"
#include "tests/support/NextDefinition.h"
#include "tests/support/RegExpSupport.h"
#include "tests/support/RunOnStack.h"
#include "toolkit/regExp/RegExp.h"

using namespace Toolkit;
using namespace ToolkitTest;

// This program stands between the library and PCRE2: it sees the library's calls and can let one fail.

namespace
{

std::atomic<int> s_iCodes{0};
int s_iCodesBefore = 0;

smart_ptr<MatchResult, smart_ptr_policy> Executed(const std::string& pattern, const std::string& subject,
                                                  unsigned short start, int options)
{
    smart_ptr<MatchResult, smart_ptr_policy> record(new MatchResult);
    record->SetPattern(TString<char>(pattern));
    record->SetSubject(TString<char>(subject));
    record->SetExecOptions(options);
    const RegExp steps = Pattern("");
    steps.RegExp_compile(record);
    MessageOf([&] { steps.RegExp_exec(record, start); });
    return record;
}

} // namespace

const std::uint32_t ToolkitTest::s_uUtf = PCRE2_UTF;
const std::uint32_t ToolkitTest::s_uGlobal = PCRE2_NOTBOL | PCRE2_NOTEOL | PCRE2_NOTEMPTY;
const std::uint32_t ToolkitTest::s_uUnchecked = PCRE2_NO_UTF_CHECK;
const BackendQueries ToolkitTest::s_queries = {PCRE2_INFO_NAMECOUNT, PCRE2_INFO_NAMEENTRYSIZE,
                                               PCRE2_INFO_NAMETABLE};

HeldPatterns::HeldPatterns()
{
    s_iCodesBefore = s_iCodes;
}

HeldPatterns::~HeldPatterns() = default;

int HeldPatterns::Get() const
{
    return s_iCodes - s_iCodesBefore;
}

extern "C" pcre2_code* pcre2_compile_8(PCRE2_SPTR pattern, PCRE2_SIZE length, std::uint32_t options,
                                       int* error, PCRE2_SIZE* offset, pcre2_compile_context* context)
{
    if (BackendCalls::s_pRecording != nullptr)
        BackendCalls::s_pRecording->m_compilations.push_back(options);
    pcre2_code* const code = NextDefinition<decltype(pcre2_compile_8)>("pcre2_compile_8")(
        pattern, length, options, error, offset, context);
    s_iCodes += code != nullptr ? 1 : 0;
    return code;
}

extern "C" void pcre2_code_free_8(pcre2_code* code)
{
    s_iCodes -= code != nullptr ? 1 : 0;
    NextDefinition<decltype(pcre2_code_free_8)>("pcre2_code_free_8")(code);
}

extern "C" int pcre2_match_8(const pcre2_code* code, PCRE2_SPTR subject, PCRE2_SIZE length, PCRE2_SIZE start,
                             std::uint32_t options, pcre2_match_data* data, pcre2_match_context* context)
{
    if (BackendCalls::s_pRecording != nullptr)
        BackendCalls::s_pRecording->m_executions.push_back(
            {start, length, options, pcre2_get_ovector_count(data)});
    return NextDefinition<decltype(pcre2_match_8)>("pcre2_match_8")(code, subject, length, start, options,
                                                                    data, context);
}

extern "C" int pcre2_pattern_info_8(const pcre2_code* code, std::uint32_t what, void* where)
{
    if (static_cast<int>(what) == FailingQuery::s_iFailing)
        return PCRE2_ERROR_BADMAGIC;
    return NextDefinition<decltype(pcre2_pattern_info_8)>("pcre2_pattern_info_8")(code, what, where);
}

// ---- how often a text is looked at

// The bytes that the searches of a global replacement may look at, and those before them that they are given
// but cannot begin in. `wasAsked` tells whether what was written was looked at apart.
struct Effort
{
    PCRE2_SIZE written = 0;
    PCRE2_SIZE passed = 0;
    bool wasAsked = false;
};

Effort EffortOf(const char* pattern, const std::string& text)
{
    Effort effort;
    const BackendCalls calls;
    MessageOf([&] { Pattern(pattern).Replace("-", TString<char>(text), 0); });
    for (const BackendExecution& execution : calls.m_executions)
    {
        const bool isPartial = (execution.options & PCRE2_PARTIAL_HARD) != 0;
        effort.wasAsked = effort.wasAsked || isPartial;
        effort.written += isPartial ? execution.length - execution.start : 0;
        effort.passed += isPartial ? 0 : execution.start;
    }
    return effort;
}

TEST(Pcre2Backend, GlobalReplacementPassesOnceOverALongText)
{
    for (const char* const pattern :
         {"dog|fox", "(?i)dog", "d[ox]g", "\\bdog\\b", "(?:d)(o)g", "dog(?= )", "(?<=[^x])dog(?!x)",
          "d+?o{1,2}g", "\\x64og", "\\p{Ll}+g", "^x|dog", "(?>do)g"})
    {
        for (const std::size_t places : {7000U, 14000U})
        {
            const std::string text = Repeat("a dog a wolf\n", places);
            const Effort effort = EffortOf(pattern, text);
            EXPECT_TRUE(effort.wasAsked) << pattern;
            EXPECT_LT(effort.written, 2 * text.size()) << pattern;
            EXPECT_LT(effort.passed, 2 * text.size()) << pattern;
        }
    }
}

TEST(Pcre2Backend, GlobalReplacementPassesOnceOnlyWhereThePatternIsKnownToAllowIt)
{
    const std::string text = Repeat("-", 65530) + Repeat("ba", 20);
    for (const char* const pattern : {"\\Ga|b", "a(*SKIP)c|b", "(*CRLF)b", "(*NO_START_OPT)b", "a\\Kb",
                                      "(?m)^a|b", "(?x)b #a", "(?<n>b)", "\\X", "\\Cb", "(b)\\1?", "(?1)(b)",
                                      "\\Qb\\E", "b(?#a)", "(?s)b", "(?(?=a)b|b)", "(?|b)", "\\yb?b"})
        EXPECT_FALSE(EffortOf(pattern, text).wasAsked) << pattern;
}

// ---- what PCRE 8 would do

TEST(Pcre2Backend, TakesTheOptionsThatPcreTakesByPcresNumbers)
{
    const struct
    {
        const char* pattern;
        const char* subject;
        unsigned short start;
        int options;
        int result;
    } rows[] = {
        {"b", "ab", 0, 0x00000010, -1},  // anchored
        {"b", "ab", 1, 0x00000010, 1},   // anchored
        {"^a", "ab", 0, 0x00000080, -1}, // the start is no start of a line
        {"b$", "ab", 0, 0x00000100, -1}, // the end is no end of a line
        {"c*", "ab", 0, 0x00000400, -1}, // not empty
        {"b",
         "a\xFF"
         "b",
         0, 0x00002000, 1},                 // not checked
        {"abc", "xab", 0, 0x00008000, -12}, // partial
        {"abc", "xab", 0, 0x08000000, -12}, // partial before whole
        {"a", "xa", 0, 0x04000000, 1},      // no optimization
        {"a*", "ba", 0, 0x10000000, 1},     // not empty at the start
        {"a", "a", 0, 0x00000001, -3},
        {"a", "a", 0, 0x00000002, -3},
        {"a", "a", 0, 0x40000000, -3},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.result, Executed(row.pattern, row.subject, row.start, row.options)->GetResult())
            << row.pattern << " " << row.options;
}

TEST(Pcre2Backend, ChecksAllOfTheSubjectWhereverTheSearchBegins)
{
    EXPECT_EQ(-10, Executed("b",
                            "\xFF"
                            "aaab",
                            4, 0)
                       ->GetResult());
    EXPECT_EQ(-10, Executed("b", "aaa\xC3\xA4\xC3", 1, 0)->GetResult());
    EXPECT_EQ(-11, Executed("b",
                            "aaa\xC3\xA4"
                            "b",
                            4, 0)
                       ->GetResult());
    EXPECT_EQ(-10, Executed("b",
                            "\xFF"
                            "aa\xC3\xA4"
                            "b",
                            4, 0)
                       ->GetResult());
    EXPECT_EQ(1, Executed("(?<=(?<=a)b)c", "abc", 2, 0)->GetResult());
}

TEST(Pcre2Backend, TellsWhereASubjectIsNotUtf8)
{
    const auto record = Executed("a", "ab\xED\xA0\x80", 0, 0);
    EXPECT_EQ(-10, record->GetResult());
    EXPECT_EQ(2, record->GetOffsets()[0]);
    EXPECT_EQ(14, record->GetOffsets()[1]);
    EXPECT_EQ(-25, Executed("a", "ab\xC3", 0, 0x08000000)->GetResult());
}

TEST(Pcre2Backend, ElementsOfGroupsThatThePatternDoesNotHaveStay)
{
    const auto record = Executed("(a)|(b)|(c)", "b", 0, 0);
    EXPECT_EQ((std::vector<int>{0, 1, -1, -1, 0, 1, -1, -1, 0, 0}),
              std::vector<int>(record->GetOffsets(), record->GetOffsets() + 10));
    const auto without = Executed("(a)", "b", 0, 0);
    EXPECT_EQ((std::vector<int>{-1, -1, 0, 0}),
              std::vector<int>(without->GetOffsets(), without->GetOffsets() + 4));
}

TEST(Pcre2Backend, TakesEscapesWithoutAMeaningForTheirCharacters)
{
    const struct
    {
        const char* pattern;
        const char* subject;
    } rows[] = {
        {"^a\\yb$", "ayb"},
        {"^\\y\\q\\j$", "yqj"},
        {"^[\\y]$", "y"},
        {"^\\F$", "F"},
        {"^[\\R\\X\\B]+$", "RXB"},
        {"^[\\w-.]+$", "a-.b"},
        {"^[\\d-z]+$", "1-z"},
        {"^[\\w-\\s]+$", "a- "},
        {"^[[:alpha:]-z]+$", "a-z"},
        {"^\xC3\xA4\\y$", "\xC3\xA4y"},
    };
    for (const auto& row : rows)
        EXPECT_TRUE(Pattern(row.pattern).IsMatch(row.subject)) << row.pattern;
    EXPECT_FALSE(Pattern("^[\\w-.]+$").IsMatch("/"));
}

TEST(Pcre2Backend, RefusesWhatPcreRefusesInItsWords)
{
    const struct
    {
        const char* pattern;
        const char* message;
    } rows[] = {
        {"abcdefghijk\\", " : \\ at end of pattern (@offset: 12) abcdefghijk\\"},
        {"abcdefghijk)", " : unmatched parentheses (@offset: 11) abcdefghijk)"},
        {"abcdefghijk(?", " : unrecognized character after (? or (?- (@offset: 13) abcdefghijk(?"},
        {"abcdefghijk(?<", " : unrecognized character after (?< (@offset: 14) abcdefghijk(?<"},
        {"abcdefghijk(*)", " : nothing to repeat (@offset: 12) abcdefghijk(*)"},
        {"abcdefghi{2,1}", " : numbers out of order in {} quantifier (@offset: 13) abcdefghi{2,1}"},
        {"[z-a]abcdefghijk", " : range out of order in character class (@offset: 3) [z-a]abcdefghijk"},
        {"abcdefgh[[:foo:]]", " : unknown POSIX class name (@offset: 11) abcdefgh[[:foo:]]"},
        {"abcdefgh[[=foo=]]", " : POSIX collating elements are not supported (@offset: 9) abcdefgh[[=foo=]]"},
        {"abcdefg\\p{Nothing}",
         " : unknown property name after \\P or \\p (@offset: 17) abcdefg\\p{Nothing}"},
        {"abcdefghijklmn\\L",
         " : PCRE does not support \\L, \\l, \\N{name}, \\U, or \\u (@offset: 15) abcdefghijklmn\\L"},
        {"(?<n>a)(?<n>b)cdefg",
         " : two named subpatterns have the same name (@offset: 11) (?<n>a)(?<n>b)cdefg"},
        {"\\y\\y[\\w-.]abcdefg(", " : missing ) (@offset: 18) \\y\\y[\\w-.]abcdefg("},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.message, MessageOf([&] { Pattern(row.pattern).IsMatch("a"); })) << row.pattern;
}

TEST(Pcre2Backend, ManyEscapesWithoutAMeaningAreRefused)
{
    EXPECT_TRUE(Pattern(Repeat("\\y", 500)).IsMatch(TString<char>(Repeat("y", 500))));
    const std::string message = MessageOf([] { Pattern(Repeat("\\y", 501)).IsMatch("y"); });
    EXPECT_EQ(" : unrecognized character follows \\ (@offset: ", message.substr(0, 46));
}

// ---- bounds

TEST(Pcre2Backend, SearchesAndCompilesOnASmallStack)
{
    RunOnStack(std::size_t{256} * 1024,
               []
               {
                   const RegExp regExp = Pattern("^(a|b)*$");
                   EXPECT_TRUE(regExp.IsMatch(TString<char>(Repeat("ab", 10000))));
                   EXPECT_EQ(ExecutionMessage("-21"),
                             MessageOf([&] { regExp.IsMatch(TString<char>(Repeat("ab", 1000000))); }));
                   EXPECT_EQ(0, Pattern(Repeat("(", 250) + "a" + Repeat(")", 250)).Match("a")->GetResult());
               });
}

TEST(Pcre2Backend, PatternsThatWouldTakeForeverEndByALimit)
{
    for (const char* const pattern : {"(a+)+$", "(a|aa)+$", "(a*)*c|(?R)x"})
        EXPECT_NE("nothing was thrown",
                  MessageOf([&] { Pattern(pattern).IsMatch(TString<char>(Repeat("a", 5000) + "!")); }))
            << pattern;
}
