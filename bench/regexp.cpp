// SPDX-License-Identifier: MIT
#include <cstdint>
#include <memory>
#include <regex>
#include <string>

#ifndef BENCH_PCRE2
#include <pcre.h>
#endif
#include <wx/regex.h>

#include "bench/BareCode.h"
#include "bench/Bench.h"
#include "toolkit/regExp/MatchResult.h"
#include "toolkit/regExp/Pattern.h"
#include "toolkit/regExp/RegExp.h"

#ifdef BENCH_QT
#include <QRegularExpression>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_RE2
#include <re2/re2.h>
#endif
#ifdef BENCH_POCO
#include <Poco/RegularExpression.h>
#endif
#ifdef BENCH_BOOST_REGEX
#include <boost/regex.hpp>
#endif

using namespace Toolkit;

namespace
{

const char s_strPattern[] = "(\\w+)@(\\w+)\\.com";
const char s_strSubject[] = "write to somebody@example.com or call";
const char s_strReplaced[] = "dog|fox";

// About 30 kB with 3,500 places to replace.
std::string LongText(std::size_t places)
{
    std::string text;
    for (std::size_t i = 0; i < places; ++i)
        text += i % 2 == 0 ? "the dog " : "quick fox";
    return text;
}

// As the library must: compiled for each match, since an object keeps nothing but its pattern.
int MatchBare(const std::string& subject)
{
#ifdef BENCH_PCRE2
    int error = 0;
    PCRE2_SIZE offset = 0;
    pcre2_code* const code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(s_strPattern), PCRE2_ZERO_TERMINATED,
                                           PCRE2_UTF, &error, &offset, nullptr);
    pcre2_match_data* const data = pcre2_match_data_create(20, nullptr);
    const int result =
        pcre2_match(code, reinterpret_cast<PCRE2_SPTR>(subject.data()), subject.size(), 0, 0, data, nullptr);
    pcre2_match_data_free(data);
    pcre2_code_free(code);
#else
    const char* error = nullptr;
    int offset = 0;
    pcre* const code = pcre_compile(s_strPattern, PCRE_UTF8, &error, &offset, nullptr);
    int offsets[60];
    const int result =
        pcre_exec(code, nullptr, subject.data(), static_cast<int>(subject.size()), 0, 0, offsets, 60);
    pcre_free(code);
#endif
    return result;
}

void RegisterMatch()
{
    const RegExp expression(TString<char>(s_strPattern), RegExpOptions::Default);
    const TString<char> subject(s_strSubject);
    ToolkitBench::Operation("IsMatch/Toolkit",
                            [expression, subject] { benchmark::DoNotOptimize(expression.IsMatch(subject)); });
    ToolkitBench::Operation("Match/Toolkit", [expression, subject]
                            { benchmark::DoNotOptimize(expression.Match(subject)->GetResult()); });
    for (const char* name : {"IsMatch/limit", "Match/limit"})
        ToolkitBench::Operation(name, [subject] { benchmark::DoNotOptimize(MatchBare(subject)); });
    ToolkitBench::Operation("IsMatch/wx",
                            [subject = wxString(subject)]
                            {
                                const wxRegEx regex(s_strPattern, wxRE_ADVANCED);
                                benchmark::DoNotOptimize(regex.Matches(subject));
                            });
    ToolkitBench::Operation("IsMatch/std",
                            [] {
                                benchmark::DoNotOptimize(
                                    std::regex_search(std::string(s_strSubject), std::regex(s_strPattern)));
                            });
#ifdef BENCH_QT
    ToolkitBench::Operation(
        "IsMatch/Qt", [subject = QString(s_strSubject)]
        { benchmark::DoNotOptimize(QRegularExpression(s_strPattern).match(subject).hasMatch()); });
#endif
#ifdef BENCH_GLIB
    ToolkitBench::Operation("IsMatch/GLib",
                            []
                            {
                                benchmark::DoNotOptimize(g_regex_match_simple(
                                    s_strPattern, s_strSubject, GRegexCompileFlags(0), GRegexMatchFlags(0)));
                            });
#endif
#ifdef BENCH_RE2
    ToolkitBench::Operation(
        "IsMatch/RE2", [] { benchmark::DoNotOptimize(RE2::PartialMatch(s_strSubject, RE2(s_strPattern))); });
#endif
#ifdef BENCH_POCO
    ToolkitBench::Operation(
        "IsMatch/POCO",
        []
        {
            std::string found;
            benchmark::DoNotOptimize(
                Poco::RegularExpression(s_strPattern).extract(std::string(s_strSubject), found));
        });
#endif
#ifdef BENCH_BOOST_REGEX
    ToolkitBench::Operation("IsMatch/Boost",
                            [] {
                                benchmark::DoNotOptimize(boost::regex_search(std::string(s_strSubject),
                                                                             boost::regex(s_strPattern)));
                            });
#endif
}

// Bare PCRE2 with machine code, for as long as the program runs.
struct BareCode
{
    explicit BareCode(const char* pattern)
        : code(CompileBare(pattern)), data(pcre2_match_data_create_from_pattern(code.get(), nullptr))
    {
    }

    // The end of the match after `start`; 0 without one.
    std::size_t Find(const std::string& subject, std::size_t start, std::uint32_t options) const
    {
        const int result = pcre2_match(code.get(), reinterpret_cast<PCRE2_SPTR>(subject.data()),
                                       subject.size(), start, options, data, nullptr);
        return result > 0 ? pcre2_get_ovector_pointer(data)[1] : 0;
    }

    std::shared_ptr<pcre2_code> code;
    pcre2_match_data* data;
};

// With a pattern that was compiled before.
void RegisterPattern()
{
    const std::string subject = s_strSubject;
    ToolkitBench::Operation("PatternFind/Toolkit", [pattern = Pattern::Compile(s_strPattern).value(), subject]
                            { benchmark::DoNotOptimize(pattern.Find(subject).Position()); });
    ToolkitBench::Operation("PatternFind/limit", [bare = BareCode(s_strPattern), subject]
                            { benchmark::DoNotOptimize(bare.Find(subject, 0, 0)); });
    const std::string text = LongText(3500);
    ToolkitBench::Operation("PatternAll/Toolkit",
                            [pattern = Pattern::Compile(s_strReplaced).value(), text]
                            {
                                std::size_t bytes = 0;
                                for (const Match& match : pattern.All(text))
                                    bytes += match.Length();
                                benchmark::DoNotOptimize(bytes);
                            });
    ToolkitBench::Operation("PatternAll/limit",
                            [bare = BareCode(s_strReplaced), text]
                            {
                                std::size_t count = 0;
                                for (std::size_t end = bare.Find(text, 0, 0); end != 0;
                                     end = bare.Find(text, end, PCRE2_NO_UTF_CHECK))
                                    ++count;
                                benchmark::DoNotOptimize(count);
                            });
    ToolkitBench::Operation("PatternAll/std",
                            [regex = std::regex(s_strReplaced), text]
                            {
                                std::ptrdiff_t bytes = 0;
                                for (std::sregex_iterator it(text.begin(), text.end(), regex), end; it != end;
                                     ++it)
                                    bytes += it->length();
                                benchmark::DoNotOptimize(bytes);
                            });
    ToolkitBench::Operation("PatternFind/std", [regex = std::regex(s_strPattern), subject]
                            { benchmark::DoNotOptimize(std::regex_search(subject, regex)); });
#ifdef BENCH_QT
    ToolkitBench::Operation("PatternFind/Qt",
                            [regex = QRegularExpression(s_strPattern), subject = QString(s_strSubject)]
                            { benchmark::DoNotOptimize(regex.match(subject).hasMatch()); });
    ToolkitBench::Operation("PatternAll/Qt",
                            [regex = QRegularExpression(s_strReplaced), text = QString::fromStdString(text)]
                            {
                                int characters = 0;
                                for (auto it = regex.globalMatch(text); it.hasNext();)
                                    characters += it.next().capturedLength();
                                benchmark::DoNotOptimize(characters);
                            });
#endif
#ifdef BENCH_RE2
    ToolkitBench::Operation("PatternAll/RE2",
                            [regex = std::make_shared<RE2>(s_strReplaced), text]
                            {
                                std::size_t bytes = 0;
                                re2::StringPiece found;
                                for (std::size_t start = 0;
                                     regex->Match(text, start, text.size(), RE2::UNANCHORED, &found, 1);
                                     start = static_cast<std::size_t>(found.end() - text.data()))
                                    bytes += found.size();
                                benchmark::DoNotOptimize(bytes);
                            });
    ToolkitBench::Operation("PatternFind/RE2",
                            [regex = std::make_shared<RE2>(s_strPattern), subject]
                            {
                                std::string user;
                                std::string host;
                                benchmark::DoNotOptimize(RE2::PartialMatch(subject, *regex, &user, &host));
                            });
#endif
#ifdef BENCH_BOOST_REGEX
    ToolkitBench::Operation("PatternAll/Boost",
                            [regex = boost::regex(s_strReplaced), text]
                            {
                                std::ptrdiff_t bytes = 0;
                                for (boost::sregex_iterator it(text.begin(), text.end(), regex), end;
                                     it != end; ++it)
                                    bytes += it->length();
                                benchmark::DoNotOptimize(bytes);
                            });
    ToolkitBench::Operation("PatternFind/Boost",
                            [regex = boost::regex(s_strPattern), subject]
                            {
                                boost::smatch match;
                                benchmark::DoNotOptimize(boost::regex_search(subject, match, regex));
                            });
#endif
}

void RegisterReplace()
{
    const std::string text = LongText(3500);
    ToolkitBench::Operation("RegExpReplace/Toolkit",
                            [expression = RegExp(TString<char>(s_strReplaced), RegExpOptions::Default),
                             text = TString<char>(text), with = TString<char>("cat")]
                            { benchmark::DoNotOptimize(expression.Replace(with, text, 0)); });
    ToolkitBench::Operation("RegExpReplace/wx",
                            [text = wxString(text)]
                            {
                                const wxRegEx regex(s_strReplaced, wxRE_ADVANCED);
                                wxString copy(text);
                                benchmark::DoNotOptimize(regex.ReplaceAll(&copy, "cat"));
                            });
    ToolkitBench::Operation(
        "RegExpReplace/std",
        [text] { benchmark::DoNotOptimize(std::regex_replace(text, std::regex(s_strReplaced), "cat")); });
#ifdef BENCH_QT
    ToolkitBench::Operation("RegExpReplace/Qt",
                            [text = QString::fromStdString(text)]
                            {
                                QString copy(text);
                                copy.replace(QRegularExpression(s_strReplaced), "cat");
                                benchmark::DoNotOptimize(copy.size());
                            });
#endif
#ifdef BENCH_GLIB
    ToolkitBench::Operation("RegExpReplace/GLib",
                            [text]
                            {
                                GRegex* const regex = g_regex_new(s_strReplaced, GRegexCompileFlags(0),
                                                                  GRegexMatchFlags(0), nullptr);
                                g_free(g_regex_replace(regex, text.data(), static_cast<gssize>(text.size()),
                                                       0, "cat", GRegexMatchFlags(0), nullptr));
                                g_regex_unref(regex);
                            });
#endif
#ifdef BENCH_RE2
    ToolkitBench::Operation("RegExpReplace/RE2",
                            [text]
                            {
                                std::string copy(text);
                                benchmark::DoNotOptimize(
                                    RE2::GlobalReplace(&copy, RE2(s_strReplaced), "cat"));
                            });
#endif
#ifdef BENCH_POCO
    ToolkitBench::Operation("RegExpReplace/POCO",
                            [text]
                            {
                                std::string copy(text);
                                benchmark::DoNotOptimize(
                                    Poco::RegularExpression(s_strReplaced)
                                        .subst(copy, "cat", Poco::RegularExpression::RE_GLOBAL));
                            });
#endif
#ifdef BENCH_BOOST_REGEX
    ToolkitBench::Operation(
        "RegExpReplace/Boost",
        [text] { benchmark::DoNotOptimize(boost::regex_replace(text, boost::regex(s_strReplaced), "cat")); });
#endif
}

} // namespace

void ToolkitBench::Register()
{
    RegisterMatch();
    RegisterPattern();
    RegisterReplace();
}
