// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/RegExpBackend.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include <pcre.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

namespace Toolkit
{

namespace
{

// ---- the stack that is left

// More than this is never used, however much the system would grant.
const std::size_t s_uMostStack = std::size_t{256} << 20;
// What a caller on a stack of its own is trusted to have left.
const std::size_t s_uUnknownStack = std::size_t{64} << 10;

struct StackBounds
{
    std::uintptr_t lowest = 0;
    std::uintptr_t highest = 0;
    bool grows = false;
};

// No bounds when the system does not tell them, for want of a descriptor for instance.
StackBounds FindStack()
{
    StackBounds bounds;
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        return bounds;
    void* lowest = nullptr;
    std::size_t size = 0;
    std::size_t guard = 0;
    if (pthread_attr_getstack(&attributes, &lowest, &size) == 0 &&
        pthread_attr_getguardsize(&attributes, &guard) == 0)
    {
        bounds.highest = reinterpret_cast<std::uintptr_t>(lowest) + size;
        bounds.lowest = bounds.highest - std::min(size - std::min(size, guard), s_uMostStack);
        bounds.grows = getpid() == gettid();
    }
    pthread_attr_destroy(&attributes);
    return bounds;
}

// The stack of the main thread grows up to a limit that the host may lower at any time.
std::uintptr_t LowestNow(const StackBounds& bounds)
{
    rlimit limit;
    if (!bounds.grows || getrlimit(RLIMIT_STACK, &limit) != 0)
        return bounds.lowest;
    const std::size_t size = bounds.highest - bounds.lowest;
    return bounds.highest - std::min<rlim_t>(size, limit.rlim_cur);
}

std::size_t StackLeft()
{
    // Bounds that the system did not tell are asked for again the next time. The thread has the memory for
    // them from its beginning: it would be ended where it had none by now.
    static thread_local StackBounds s_bounds __attribute__((tls_model("initial-exec")));
    if (s_bounds.highest == 0)
        s_bounds = FindStack();
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    if (here < s_bounds.lowest || here > s_bounds.highest)
        return s_uUnknownStack;
    const std::uintptr_t lowest = LowestNow(s_bounds);
    return here > lowest ? here - lowest : 0;
}

// ---- what PCRE needs of it

// What pcre_exec and whatever interrupts it need besides the recursion.
const std::size_t s_uExecuteReserve = std::size_t{24} << 10;
// What pcre_compile needs at most: at all, for each level of parentheses, and for each group on a path of
// groups that call each other. It allows 250 levels, and its size limit some 6,000 groups.
const std::size_t s_uCompileReserve = std::size_t{16} << 10;
const std::size_t s_uStackOfLevel = 800;
const std::size_t s_uMostLevels = 250;
const std::size_t s_uStackOfCall = 160;
const std::size_t s_uMostCalls = 8000;
const std::size_t s_uMostCompileStack =
    s_uCompileReserve + s_uMostLevels * s_uStackOfLevel + s_uMostCalls * s_uStackOfCall;

// PCRE tells the size of one step of its recursion when it is asked in this way.
std::size_t FrameSize()
{
    const std::size_t least = 256;
    const int answer = pcre_exec(nullptr, nullptr, nullptr, -999, -999, 0, nullptr, 0);
    return std::max(least, static_cast<std::size_t>(std::max(0, -answer)));
}

unsigned long RecursionLimit()
{
    static const std::size_t s_uFrame = FrameSize();
    const std::size_t left = StackLeft();
    return left > s_uExecuteReserve ? (left - s_uExecuteReserve) / s_uFrame : 0;
}

std::size_t Count(std::string_view text, const char* what)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != text.npos; at = text.find(what, at + 1))
        ++count;
    return count;
}

// True when the pattern may call one of its groups or itself, "(?1)", "(?&name)" or "(?R)" for instance.
bool MayCallGroups(std::string_view pattern)
{
    for (const char* const call : {"\\g<", "\\g'", "(?P>"})
        if (pattern.find(call) != pattern.npos)
            return true;
    for (std::size_t at = pattern.find("(?"); at != pattern.npos; at = pattern.find("(?", at + 2))
    {
        const std::size_t next = pattern.find_first_not_of("+-", at + 2);
        if (next != pattern.npos && std::string_view("R&0123456789").find(pattern[next]) != pattern.npos)
            return true;
    }
    return false;
}

bool HasStackToCompile(std::string_view pattern)
{
    const std::size_t left = StackLeft();
    if (left >= s_uMostCompileStack)
        return true;
    const std::size_t opened = Count(pattern, "(");
    std::size_t need = s_uCompileReserve + std::min(opened, s_uMostLevels) * s_uStackOfLevel;
    if (MayCallGroups(pattern))
        need += std::min(opened, s_uMostCalls) * s_uStackOfCall;
    return left >= need;
}

const pcre* ToPcre(const RegExpCode* code)
{
    return reinterpret_cast<const pcre*>(code);
}

} // namespace

RegExpCode* RegExpBackend::Compile(const char* pattern, const char*& errorText, int& errorOffset)
{
    if (!HasStackToCompile(pattern))
    {
        errorText = "parentheses are too deeply nested (stack check)";
        errorOffset = 0;
        return nullptr;
    }
    pcre* const code = pcre_compile(pattern, PCRE_UTF8, &errorText, &errorOffset, nullptr);
    return reinterpret_cast<RegExpCode*>(code);
}

void RegExpBackend::Free(RegExpCode* code)
{
    if (code != nullptr)
        pcre_free(code);
}

// PCRE does not tell.
std::optional<std::size_t> RegExpBackend::FindReach(const char*)
{
    return std::nullopt;
}

int RegExpBackend::Execute(const RegExpCode* code, const char* subject, std::size_t length, std::size_t start,
                           int options, int* offsets, int vectorSize, RegExpWorkspace*)
{
    if (length > INT_MAX)
        return s_iBadLength;
    pcre_extra extra = {};
    extra.flags = PCRE_EXTRA_MATCH_LIMIT_RECURSION;
    extra.match_limit_recursion = RecursionLimit();
    return pcre_exec(ToPcre(code), &extra, subject, static_cast<int>(length), static_cast<int>(start),
                     options, offsets, vectorSize);
}

RegExpWorkspace* RegExpBackend::NewWorkspace()
{
    return nullptr;
}

void RegExpBackend::FreeWorkspace(RegExpWorkspace*) {}

bool RegExpBackend::GetNameCount(const RegExpCode* code, int& count)
{
    return pcre_fullinfo(ToPcre(code), nullptr, PCRE_INFO_NAMECOUNT, &count) == 0;
}

bool RegExpBackend::GetNameEntrySize(const RegExpCode* code, int& size)
{
    return pcre_fullinfo(ToPcre(code), nullptr, PCRE_INFO_NAMEENTRYSIZE, &size) == 0;
}

bool RegExpBackend::GetNameTable(const RegExpCode* code, const char*& table)
{
    return pcre_fullinfo(ToPcre(code), nullptr, PCRE_INFO_NAMETABLE, &table) == 0;
}

} // namespace Toolkit
