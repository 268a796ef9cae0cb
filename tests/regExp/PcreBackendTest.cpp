// SPDX-License-Identifier: MIT
#include <cerrno>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pcre.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <ucontext.h>

#include "tests/support/RegExpSupport.h"
#include "tests/support/RunOnStack.h"
#include "toolkit/regExp/RegExp.h"

using namespace Toolkit;
using namespace ToolkitTest;

// This program stands between the library and PCRE: it sees the library's calls and can let one fail.

namespace
{

struct Compilation
{
    int options;
    const unsigned char* tables;
};

struct Execution
{
    unsigned long flags;
    bool hasStudyData;
    int start;
    int options;
    int vectorSize;
};

std::vector<Compilation> s_compilations;
std::vector<Execution> s_executions;
bool s_bRecord = false;
int s_iFailingInfo = -1;
thread_local bool s_bFailStackBounds = false;

template <class Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

class Recording
{
public:
    Recording()
    {
        s_compilations.clear();
        s_executions.clear();
        s_bRecord = true;
    }
    ~Recording() { s_bRecord = false; }
};

class FailingInfo
{
public:
    explicit FailingInfo(int what) { s_iFailingInfo = what; }
    ~FailingInfo() { s_iFailingInfo = -1; }
};

// Counts what PCRE has allocated and not freed.
class CountedMemory
{
public:
    CountedMemory() : m_malloc(pcre_malloc), m_free(pcre_free)
    {
        s_iHeld = 0;
        s_malloc = m_malloc;
        s_free = m_free;
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
    ~CountedMemory()
    {
        pcre_malloc = m_malloc;
        pcre_free = m_free;
    }

    int GetHeld() const { return s_iHeld; }

private:
    static int s_iHeld;
    static void* (*s_malloc)(std::size_t);
    static void (*s_free)(void*);

    void* (*const m_malloc)(std::size_t);
    void (*const m_free)(void*);
};

int CountedMemory::s_iHeld = 0;
void* (*CountedMemory::s_malloc)(std::size_t) = nullptr;
void (*CountedMemory::s_free)(void*) = nullptr;

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

extern "C" pcre* pcre_compile(const char* pattern, int options, const char** error, int* offset,
                              const unsigned char* tables)
{
    if (s_bRecord)
        s_compilations.push_back({options, tables});
    return Real<decltype(pcre_compile)>("pcre_compile")(pattern, options, error, offset, tables);
}

extern "C" int pcre_exec(const pcre* code, const pcre_extra* extra, const char* subject, int length,
                         int start, int options, int* offsets, int size)
{
    if (s_bRecord && code != nullptr)
        s_executions.push_back({extra == nullptr ? 0 : extra->flags,
                                extra != nullptr && extra->study_data != nullptr, start, options, size});
    return Real<decltype(pcre_exec)>("pcre_exec")(code, extra, subject, length, start, options, offsets,
                                                  size);
}

extern "C" int pthread_getattr_np(pthread_t thread, pthread_attr_t* attributes)
{
    if (s_bFailStackBounds)
        return EMFILE;
    return Real<decltype(pthread_getattr_np)>("pthread_getattr_np")(thread, attributes);
}

extern "C" int pcre_fullinfo(const pcre* code, const pcre_extra* extra, int what, void* where)
{
    if (what == s_iFailingInfo)
        return PCRE_ERROR_BADMAGIC;
    return Real<decltype(pcre_fullinfo)>("pcre_fullinfo")(code, extra, what, where);
}

// ---- what PCRE is asked

TEST(PcreBackend, CompilesInUtf8ModeAloneOnEachCall)
{
    const RegExp regExp(TString<char>("a"), static_cast<RegExpOptions::Modifiers>(0xFFFFFFFFU));
    RegExp::ReplacementMappedStrings named;
    const Recording recording;
    regExp.IsMatch("a");
    regExp.IsMatch("a");
    regExp.Match("a");
    regExp.Replace("b", "a", 0);
    regExp.Replace(std::vector<TString<char>>(), "a");
    regExp.Replace(named, "a");
    ASSERT_EQ(6U, s_compilations.size());
    for (const Compilation& compilation : s_compilations)
    {
        EXPECT_EQ(PCRE_UTF8, compilation.options);
        EXPECT_EQ(nullptr, compilation.tables);
    }
}

TEST(PcreBackend, ExecutesOnceFromTheStartWithoutOptionsOrStudyData)
{
    const RegExp regExp(TString<char>("a"), static_cast<RegExpOptions::Modifiers>(0xFFFFFFFFU));
    RegExp::ReplacementMappedStrings named;
    const Recording recording;
    regExp.IsMatch("aa");
    regExp.Match("aa");
    regExp.Replace(std::vector<TString<char>>(), "aa");
    regExp.Replace(named, "aa");
    ASSERT_EQ(4U, s_executions.size());
    for (const Execution& execution : s_executions)
    {
        EXPECT_EQ(0, execution.options);
        EXPECT_EQ(0, execution.start);
        EXPECT_EQ(60, execution.vectorSize);
        EXPECT_FALSE(execution.hasStudyData);
        EXPECT_EQ(static_cast<unsigned long>(PCRE_EXTRA_MATCH_LIMIT_RECURSION), execution.flags);
    }
}

TEST(PcreBackend, GlobalReplacementExecutesOncePerMatchAndOnceMore)
{
    const RegExp regExp = Pattern("a");
    const Recording recording;
    regExp.Replace("b", "banana", 0);
    ASSERT_EQ(4U, s_executions.size());
    EXPECT_EQ(0x580, s_executions[0].options);
    EXPECT_FALSE(s_executions[0].hasStudyData);
    for (const Execution& execution : s_executions)
    {
        EXPECT_EQ(0x580, execution.options & ~PCRE_NO_UTF8_CHECK);
        EXPECT_EQ(60, execution.vectorSize);
    }
}

TEST(PcreBackend, FailedNameQueriesThrowTheirMessages)
{
    const struct
    {
        int what;
        const char* message;
    } rows[] = {
        {PCRE_INFO_NAMECOUNT, "pcre_fullinfo 'PCRE_INFO_NAMECOUNT' return error"},
        {PCRE_INFO_NAMEENTRYSIZE, "pcre_fullinfo 'PCRE_INFO_NAMEENTRYSIZE' return error"},
        {PCRE_INFO_NAMETABLE, "pcre_fullinfo 'PCRE_INFO_NAMETABLE' return error"},
    };
    for (const auto& row : rows)
    {
        const CountedMemory memory;
        const FailingInfo failing(row.what);
        EXPECT_EQ(row.message, MessageOf([] { Pattern("(?<n>a)").Match("a"); }));
        EXPECT_EQ(0, memory.GetHeld()) << row.message;
    }
}

TEST(PcreBackend, NameTableIsAskedOnlyForNames)
{
    for (const int what : {PCRE_INFO_NAMEENTRYSIZE, PCRE_INFO_NAMETABLE})
    {
        const FailingInfo failing(what);
        EXPECT_EQ(2U, Pattern("(a)").Match("a")->GetCount()) << what;
        EXPECT_EQ(0U, Pattern("(?<n>a)").Match("b")->GetCount()) << what;
    }
}

TEST(PcreBackend, NamesAreCountedForEveryMatchWithGroups)
{
    const std::string message = "pcre_fullinfo 'PCRE_INFO_NAMECOUNT' return error";
    RegExp::ReplacementMappedStrings named;
    const RegExp regExp = Pattern("a");
    const FailingInfo failing(PCRE_INFO_NAMECOUNT);
    EXPECT_EQ(message, MessageOf([&] { regExp.Match("a"); }));
    EXPECT_EQ(message, MessageOf([&] { regExp.Replace(std::vector<TString<char>>(), "a"); }));
    EXPECT_EQ(message, MessageOf([&] { regExp.Replace(named, "a"); }));
    EXPECT_EQ(-1, regExp.Match("b")->GetResult());
    EXPECT_EQ(0, Pattern(Repeat("(a)", 20)).Match(TString<char>(Repeat("a", 20)))->GetResult());
    EXPECT_TRUE(regExp.IsMatch("a"));
    EXPECT_EQ("b", regExp.Replace("b", "a", 0));
}

// ---- who frees what was compiled

TEST(PcreBackend, NothingCompiledSurvivesACall)
{
    const CountedMemory memory;
    const RegExp regExp = Pattern("(?<n>a)");
    RegExp::ReplacementMappedStrings named;
    regExp.IsMatch("a");
    regExp.Match("a");
    regExp.Replace("b", "aa", 0);
    regExp.Replace(named, "a");
    MessageOf([&] { regExp.IsMatch("\xFF"); });
    MessageOf([&] { regExp.Match("\xFF"); });
    MessageOf([&] { regExp.Replace("\xFF", "a", 0); });
    MessageOf([&] { Pattern("(").Match("a"); });
    EXPECT_EQ(0, memory.GetHeld());
}

TEST(PcreBackend, RecordKeepsOneCompiledPatternToItsEnd)
{
    const CountedMemory memory;
    const RegExp regExp = Pattern("a");
    {
        smart_ptr<MatchResult, smart_ptr_policy> record = regExp.Match("a");
        const smart_ptr<MatchResult, smart_ptr_policy> other = record;
        EXPECT_EQ(1, memory.GetHeld());
        regExp.RegExp_compile(record);
        EXPECT_EQ(1, memory.GetHeld());
        record->SetPattern("(");
        MessageOf([&] { regExp.RegExp_compile(record); });
        EXPECT_EQ(0, memory.GetHeld());
        record->SetPattern("a");
        regExp.RegExp_compile(record);
        EXPECT_EQ(1, memory.GetHeld());
    }
    EXPECT_EQ(0, memory.GetHeld());
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
