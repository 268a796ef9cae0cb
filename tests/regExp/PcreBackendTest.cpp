// SPDX-License-Identifier: MIT
#include <cerrno>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <pcre.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <ucontext.h>

#include "tests/regExp/BackendCalls.h"
#include "tests/support/NextDefinition.h"
#include "tests/support/RegExpSupport.h"
#include "tests/support/RunOnStack.h"
#include "toolkit/regExp/RegExp.h"

using namespace Toolkit;
using namespace ToolkitTest;

// This program stands between the library and PCRE: it sees the library's calls and can let one fail.

namespace
{

// What no test of all backends sees: tables of the library's own, and how an execution is limited.
bool s_bOwnTables = false;
std::vector<unsigned long> s_flags;
std::vector<bool> s_studyData;
thread_local bool s_bFailStackBounds = false;

// What PCRE has allocated and not freed.
int s_iHeld = 0;
void* (*s_malloc)(std::size_t) = nullptr;
void (*s_free)(void*) = nullptr;

// Runs `work` on memory that the system does not know as a stack, as a coroutine is run.
void RunOnUnknownStack(const std::function<void()>& work)
{
    static const std::function<void()>* s_pWork;
    static ucontext_t s_own;
    static ucontext_t s_host;
    s_pWork = &work;
    const std::size_t size = std::size_t{1} << 20;
    void* const stack = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(MAP_FAILED, stack);
    ASSERT_EQ(0, getcontext(&s_own));
    s_own.uc_stack.ss_sp = stack;
    s_own.uc_stack.ss_size = size;
    s_own.uc_link = &s_host;
    makecontext(
        &s_own, [] { (*s_pWork)(); }, 0);
    ASSERT_EQ(0, swapcontext(&s_host, &s_own));
    munmap(stack, size);
}

const std::size_t s_uSmallStack = 256 * 1024;

std::string Nested(std::size_t levels)
{
    return Repeat("(", levels) + "a" + Repeat(")", levels);
}

// Each group calls the next one, so that PCRE follows the whole chain when it compiles.
std::string Chain(int groups)
{
    std::string pattern;
    for (int i = 1; i < groups; ++i)
        pattern += "((?" + std::to_string(i + 1) + "))";
    return pattern + "(a)";
}

// The message of the exception that `work` throws, up to the place and the pattern.
template <class Work>
std::string BeginningOf(Work work)
{
    const std::string message = MessageOf(work);
    return message.substr(0, message.find(" (@"));
}

} // namespace

const std::uint32_t ToolkitTest::s_uUtf = PCRE_UTF8;
const std::uint32_t ToolkitTest::s_uGlobal = PCRE_NOTBOL | PCRE_NOTEOL | PCRE_NOTEMPTY;
const std::uint32_t ToolkitTest::s_uUnchecked = PCRE_NO_UTF8_CHECK;
const BackendQueries ToolkitTest::s_queries = {PCRE_INFO_NAMECOUNT, PCRE_INFO_NAMEENTRYSIZE,
                                               PCRE_INFO_NAMETABLE};

HeldPatterns::HeldPatterns()
{
    s_iHeld = 0;
    s_malloc = pcre_malloc;
    s_free = pcre_free;
    pcre_malloc = [](std::size_t size)
    {
        ++s_iHeld;
        return s_malloc(size);
    };
    pcre_free = [](void* memory)
    {
        --s_iHeld;
        s_free(memory);
    };
}

HeldPatterns::~HeldPatterns()
{
    pcre_malloc = s_malloc;
    pcre_free = s_free;
}

int HeldPatterns::Get() const
{
    return s_iHeld;
}

extern "C" pcre* pcre_compile(const char* pattern, int options, const char** error, int* offset,
                              const unsigned char* tables)
{
    if (BackendCalls::s_pRecording != nullptr)
        BackendCalls::s_pRecording->m_compilations.push_back(static_cast<std::uint32_t>(options));
    s_bOwnTables = s_bOwnTables || tables != nullptr;
    return NextDefinition<decltype(pcre_compile)>("pcre_compile")(pattern, options, error, offset, tables);
}

extern "C" int pcre_exec(const pcre* code, const pcre_extra* extra, const char* subject, int length,
                         int start, int options, int* offsets, int size)
{
    if (BackendCalls::s_pRecording != nullptr && code != nullptr)
    {
        BackendCalls::s_pRecording->m_executions.push_back(
            {static_cast<std::size_t>(start), static_cast<std::size_t>(length),
             static_cast<std::uint32_t>(options), static_cast<std::size_t>(size) / 3});
        s_flags.push_back(extra == nullptr ? 0 : extra->flags);
        s_studyData.push_back(extra != nullptr && extra->study_data != nullptr);
    }
    return NextDefinition<decltype(pcre_exec)>("pcre_exec")(code, extra, subject, length, start, options,
                                                            offsets, size);
}

extern "C" int pthread_getattr_np(pthread_t thread, pthread_attr_t* attributes)
{
    if (s_bFailStackBounds)
        return EMFILE;
    return NextDefinition<decltype(pthread_getattr_np)>("pthread_getattr_np")(thread, attributes);
}

extern "C" int pcre_fullinfo(const pcre* code, const pcre_extra* extra, int what, void* where)
{
    if (what == FailingQuery::s_iFailing)
        return PCRE_ERROR_BADMAGIC;
    return NextDefinition<decltype(pcre_fullinfo)>("pcre_fullinfo")(code, extra, what, where);
}

// ---- what PCRE is asked

TEST(PcreBackend, NeedsNeitherTablesNorStudyDataAndLimitsTheRecursion)
{
    const RegExp regExp = Pattern("a");
    s_bOwnTables = false;
    s_flags.clear();
    s_studyData.clear();
    {
        const BackendCalls calls;
        regExp.IsMatch("aa");
        regExp.Match("aa");
        regExp.Replace("b", "aa", 0);
    }
    EXPECT_FALSE(s_bOwnTables);
    ASSERT_LE(3U, s_flags.size());
    for (const std::size_t execution : {0U, 1U})
        EXPECT_EQ(static_cast<unsigned long>(PCRE_EXTRA_MATCH_LIMIT_RECURSION), s_flags[execution]);
    for (const std::size_t execution : {0U, 1U, 2U})
        EXPECT_FALSE(s_studyData[execution]);
}

// ---- the stack that is left

TEST(PcreBackend, DeepRecursionEndsInAnExceptionOnASmallStack)
{
    RunOnStack(
        s_uSmallStack,
        []
        {
            const RegExp regExp = Pattern("(a|b)*");
            EXPECT_TRUE(regExp.IsMatch(TString<char>(Repeat("ab", 40))));
            for (const std::size_t length : {300U, 500U, 1000U, 100000U})
            {
                const TString<char> subject(Repeat("ab", length));
                EXPECT_EQ(ExecutionMessage("-21"), MessageOf([&] { regExp.IsMatch(subject); })) << length;
                EXPECT_EQ(ExecutionMessage("-21"), MessageOf([&] { regExp.Match(subject); })) << length;
                EXPECT_EQ(ExecutionMessage("-21"), MessageOf([&] { regExp.Replace("x", subject, 0); }));
            }
        });
}

TEST(PcreBackend, BoundsThatTheSystemDidNotTellAreAskedForAgain)
{
    const RegExp regExp = Pattern("^(a|b)*$");
    const TString<char> subject(Repeat("ab", 1000));
    RunOnStack(16 * s_uSmallStack,
               [&]
               {
                   s_bFailStackBounds = true;
                   const std::string message = MessageOf([&] { regExp.IsMatch(subject); });
                   s_bFailStackBounds = false;
                   EXPECT_EQ(ExecutionMessage("-21"), message);
                   EXPECT_TRUE(regExp.IsMatch(subject));
               });
}

TEST(PcreBackend, HostMayLowerTheLimitOfTheMainThreadsStack)
{
    const RegExp regExp = Pattern("^(a|b)*$");
    EXPECT_TRUE(regExp.IsMatch("ab"));
    rlimit before = {};
    ASSERT_EQ(0, getrlimit(RLIMIT_STACK, &before));
    rlimit lowered = before;
    lowered.rlim_cur = 1 << 20;
    ASSERT_EQ(0, setrlimit(RLIMIT_STACK, &lowered));
    const std::string message = MessageOf([&] { regExp.IsMatch(TString<char>(Repeat("ab", 1000000))); });
    ASSERT_EQ(0, setrlimit(RLIMIT_STACK, &before));
    EXPECT_EQ(ExecutionMessage("-21"), message);
}

TEST(PcreBackend, EveryThreadHasItsOwnLimit)
{
    const RegExp regExp = Pattern("^(a|b)*$");
    const TString<char> subject(Repeat("ab", 1000));
    RunOnStack(s_uSmallStack,
               [&] { EXPECT_EQ(ExecutionMessage("-21"), MessageOf([&] { regExp.IsMatch(subject); })); });
    RunOnStack(16 * s_uSmallStack, [&] { EXPECT_TRUE(regExp.IsMatch(subject)); });
    EXPECT_TRUE(regExp.IsMatch(subject));
}

TEST(PcreBackend, StackThatTheSystemDoesNotKnowIsTrustedALittle)
{
    const RegExp regExp = Pattern("(a|b)*");
    bool matched = false;
    std::string message;
    RunOnUnknownStack(
        [&]
        {
            matched = regExp.IsMatch("abab");
            message = MessageOf([&] { regExp.IsMatch(TString<char>(Repeat("ab", 100000))); });
        });
    EXPECT_TRUE(matched);
    EXPECT_EQ(ExecutionMessage("-21"), message);
}

TEST(PcreBackend, NestedPatternsCompileWhereTheStackAllows)
{
    RunOnStack(4 * s_uSmallStack, [] { EXPECT_EQ(0, Pattern(Nested(250)).Match("a")->GetResult()); });
    std::string message;
    RunOnUnknownStack([&] { message = MessageOf([] { Pattern(Nested(250)).IsMatch("a"); }); });
    EXPECT_EQ(" : parentheses are too deeply nested (stack check) (@offset: 0) " + Nested(250), message);
}

TEST(PcreBackend, GroupsSideBySideNeedNoStack)
{
    RunOnStack(4 * s_uSmallStack, [] { EXPECT_FALSE(Pattern(Repeat("(a)", 5000)).IsMatch("a")); });
}

TEST(PcreBackend, EveryWayToCallAGroupNeedsStack)
{
    const std::string groups = "(?<n>a)" + Repeat("(a)", 5000);
    for (const char* const call :
         {"(?1)", "(?+1)(a)", "(?-1)", "(?R)?", "(?0)?", "(?&n)", "(?P>n)", "\\g<1>", "\\g'1'", "\\g<n>"})
    {
        const std::string pattern = groups + call;
        EXPECT_EQ("nothing was thrown", BeginningOf([&] { Pattern(pattern).IsMatch("a"); })) << call;
        std::string message;
        RunOnStack(2 * s_uSmallStack, [&] { message = BeginningOf([&] { Pattern(pattern).IsMatch("a"); }); });
        EXPECT_EQ(" : parentheses are too deeply nested (stack check)", message) << call;
    }
}

TEST(PcreBackend, WhatOnlyResemblesACallNeedsNoStack)
{
    for (const char* const end : {"(?:a)", "(?=a)", "(?i)", "(?#1)", "(?", "(?-"})
    {
        const std::string pattern = Repeat("(a)", 8000) + end;
        const std::string expected = BeginningOf([&] { Pattern(pattern).IsMatch("a"); });
        std::string message;
        RunOnStack(4 * s_uSmallStack, [&] { message = BeginningOf([&] { Pattern(pattern).IsMatch("a"); }); });
        EXPECT_EQ(expected, message) << end;
    }
}

TEST(PcreBackend, ShortPatternsMatchAlikeOnASmallStack)
{
    for (const char* const pattern : {"a+b", "\\d+x?$", "b"})
        for (const char* const subject : {"xaab", "12", "aaa", ""})
        {
            const bool expected = Pattern(pattern).IsMatch(subject);
            bool matched = !expected;
            RunOnStack(s_uSmallStack, [&] { matched = Pattern(pattern).IsMatch(subject); });
            EXPECT_EQ(expected, matched) << pattern << " " << subject;
        }
}

TEST(PcreBackend, ChainsOfCallsCompileWhereTheStackAllows)
{
    const std::string pattern = Chain(600);
    EXPECT_EQ(0, Pattern(pattern).Match(TString<char>(Repeat("a", 600)))->GetResult());
    std::string message;
    RunOnUnknownStack([&] { message = MessageOf([&] { Pattern(pattern).IsMatch("a"); }); });
    EXPECT_EQ(" : parentheses are too deeply nested (stack check) (@offset: 0) " + pattern, message);
}

TEST(PcreBackend, LongChainsOfCallsAreRefusedOnASmallStack)
{
    for (const int groups : {300, 600, 5000})
    {
        const std::string pattern = Chain(groups);
        std::string message;
        RunOnStack(s_uSmallStack, [&] { message = MessageOf([&] { Pattern(pattern).IsMatch("a"); }); });
        EXPECT_EQ(" : parentheses are too deeply nested (stack check) (@offset: 0) " + pattern, message);
    }
}
