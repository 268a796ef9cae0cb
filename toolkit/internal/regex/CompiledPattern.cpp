// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/CompiledPattern.h"

#include <algorithm>
#include <cstring>
#include <new>

#include <pthread.h>

#include "toolkit/internal/regex/MachineCode.h"
#include "toolkit/internal/regex/Pcre2Contexts.h"
#include "toolkit/internal/text/CodePoints.h"

namespace Toolkit
{

namespace
{

const std::size_t s_uFirstJitStack = std::size_t{32} << 10;
// Its addresses are taken at once, however little of it is used.
const std::size_t s_uMostJitStack = std::size_t{1} << 30;

template <class T>
T* NeedMemory(T* memory)
{
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

bool IsAscii(std::string_view text)
{
    const std::uint64_t highBits = 0x8080808080808080U;
    std::uint64_t word = 0;
    std::size_t i = 0;
    for (; text.size() - i >= sizeof(word); i += sizeof(word))
    {
        std::memcpy(&word, text.data() + i, sizeof(word));
        if ((word & highBits) != 0)
            return false;
    }
    return std::all_of(text.begin() + static_cast<std::ptrdiff_t>(i), text.end(),
                       [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

// The first character that begins there or later.
std::size_t CharacterBegin(std::string_view text, std::size_t index)
{
    while (index < text.size() && CodePoints::IsContinuation(text[index]))
        ++index;
    return index;
}

std::uint32_t ToKiB(std::size_t bytes)
{
    return static_cast<std::uint32_t>(std::min<std::size_t>(bytes >> 10, UINT32_MAX));
}

} // namespace

PatternSearch::PatternSearch(Pcre2Ptr<pcre2_match_data> matchData)
    : data(std::move(matchData)), offsets(pcre2_get_ovector_pointer(data.get()))
{
}

void CompiledPattern::Release(PatternSearch* search)
{
    // The last owner of the pattern may be this search: the pattern ends last.
    const std::shared_ptr<const CompiledPattern> pattern = std::move(search->pattern);
    // What a search without machine code has taken from the heap it would keep.
    if (pattern != nullptr && pattern->m_bHasMachineCode && !search->holdsHeap)
        search = pattern->m_spare[GetSlot()].exchange(search, std::memory_order_acq_rel);
    delete search;
}

std::shared_ptr<const CompiledPattern> CompiledPattern::Compile(std::string_view pattern,
                                                                const Settings& settings, Error& error)
{
    Pcre2Ptr<pcre2_code> code(pcre2_compile(ToPcre2(pattern), pattern.size(), settings.options | PCRE2_UTF,
                                            &error.number, &error.offset, Pcre2Contexts::Get().Compile()));
    if (code != nullptr)
    {
        std::shared_ptr<CompiledPattern> compiled(new CompiledPattern(std::move(code), settings));
        if (compiled->m_uGroups == 0 || MachineCode::IsRight(pattern, settings.options | PCRE2_UTF))
            compiled->MakeMachineCode();
        compiled->m_bRefusesEmpty = pattern.find("(*NOTEMPTY") != pattern.npos;
        return compiled;
    }
    const int noMemory = 121;
    if (error.number == noMemory)
        throw std::bad_alloc();
    error.text = Describe(error.number);
    return nullptr;
}

CompiledPattern::CompiledPattern(Pcre2Ptr<pcre2_code> code, const Settings& settings)
    : m_pCode(std::move(code)),
      m_pContext(NeedMemory(pcre2_match_context_create(Pcre2Contexts::Get().General())))
{
    pcre2_set_match_limit(m_pContext.get(), settings.steps);
    const std::uint32_t heap =
        settings.memory ? ToKiB(*settings.memory) : Pcre2Contexts::MostHeap(m_pCode.get());
    pcre2_set_heap_limit(m_pContext.get(), heap);
    m_uMemory = std::size_t{heap} << 10;
    std::uint32_t groups = 0;
    std::uint32_t lineEnd = 0;
    pcre2_pattern_info(m_pCode.get(), PCRE2_INFO_CAPTURECOUNT, &groups);
    pcre2_pattern_info(m_pCode.get(), PCRE2_INFO_NEWLINE, &lineEnd);
    m_uGroups = groups;
    m_bCrlf =
        lineEnd == PCRE2_NEWLINE_CRLF || lineEnd == PCRE2_NEWLINE_ANY || lineEnd == PCRE2_NEWLINE_ANYCRLF;
}

void CompiledPattern::MakeMachineCode()
{
    std::size_t machineCode = 0;
    pcre2_jit_compile(m_pCode.get(), PCRE2_JIT_COMPLETE);
    pcre2_pattern_info(m_pCode.get(), PCRE2_INFO_JITSIZE, &machineCode);
    m_bHasMachineCode = machineCode > 0;
}

CompiledPattern::~CompiledPattern()
{
    for (const std::atomic<PatternSearch*>& spare : m_spare)
        delete spare.load(std::memory_order_acquire);
}

std::size_t CompiledPattern::FindGroup(const CompiledPattern& pattern, std::string_view name,
                                       const PatternSearch* search)
{
    std::uint32_t count = 0;
    std::uint32_t size = 0;
    PCRE2_SPTR entry = nullptr;
    const pcre2_code* const code = pattern.m_pCode.get();
    pcre2_pattern_info(code, PCRE2_INFO_NAMECOUNT, &count);
    pcre2_pattern_info(code, PCRE2_INFO_NAMEENTRYSIZE, &size);
    pcre2_pattern_info(code, PCRE2_INFO_NAMETABLE, &entry);
    std::size_t first = s_uNoGroup;
    std::size_t firstInMatch = s_uNoGroup;
    for (; count > 0; --count, entry += size)
    {
        if (name != reinterpret_cast<const char*>(entry + 2))
            continue;
        const std::size_t number = static_cast<std::size_t>(entry[0]) * 256 + entry[1];
        first = std::min(first, number);
        if (search != nullptr && search->Has(number))
            firstInMatch = std::min(firstInMatch, number);
    }
    return firstInMatch != s_uNoGroup ? firstInMatch : first;
}

CompiledPattern::SearchPtr CompiledPattern::NewSearch(std::shared_ptr<const CompiledPattern> pattern,
                                                      std::string_view subject)
{
    std::unique_ptr<PatternSearch> search(
        pattern->m_spare[GetSlot()].exchange(nullptr, std::memory_order_acq_rel));
    if (search == nullptr)
        search = std::make_unique<PatternSearch>(Pcre2Ptr<pcre2_match_data>(NeedMemory(
            pcre2_match_data_create_from_pattern(pattern->m_pCode.get(), Pcre2Contexts::Get().General()))));
    search->pattern = std::move(pattern);
    search->subject = subject;
    search->result = PCRE2_ERROR_NOMATCH;
    return SearchPtr(search.release());
}

PatternSearch* CompiledPattern::Search(std::shared_ptr<const CompiledPattern> pattern,
                                       std::string_view subject)
{
    const CompiledPattern& searched = *pattern;
    SearchPtr search = NewSearch(std::move(pattern), subject);
    searched.Find(*search, 0, 0);
    return search.release();
}

void CompiledPattern::SearchNext(PatternSearch& search)
{
    search.pattern->FindNext(search);
}

PatternSearch* CompiledPattern::Copy(const PatternSearch& search)
{
    SearchPtr copy = NewSearch(search.pattern, search.subject);
    std::copy(search.offsets, search.offsets + 2 * pcre2_get_ovector_count(search.data.get()), copy->offsets);
    copy->result = search.result;
    copy->place = search.place;
    return copy.release();
}

void CompiledPattern::FindNext(PatternSearch& search) const
{
    const std::size_t length = search.subject.size();
    const bool wasEmpty = search.offsets[0] == search.offsets[1];
    const std::size_t end = search.offsets[1];
    std::size_t start = end;
    // "\\K" may have put the match before the place where it was found: it would be found again.
    if (!wasEmpty && start <= search.place)
        start = NextCharacter(search.subject, search.place);
    if (start > length || (wasEmpty && start == length))
    {
        search.result = PCRE2_ERROR_NOMATCH;
        return;
    }
    Find(search, start, PCRE2_NO_UTF_CHECK | (wasEmpty ? PCRE2_NOTEMPTY_ATSTART | PCRE2_ANCHORED : 0));
    // With "\K" what goes no further need not be empty for PCRE2.
    if (wasEmpty && (search.result == PCRE2_ERROR_NOMATCH || (search.result > 0 && search.offsets[1] <= end)))
        Find(search, NextCharacter(search.subject, start), PCRE2_NO_UTF_CHECK);
    // It may also put the beginning into the match before.
    if (search.result > 0)
    {
        search.offsets[0] = std::max(search.offsets[0], end);
        search.offsets[1] = std::max(search.offsets[1], end);
    }
}

std::size_t CompiledPattern::NextCharacter(std::string_view subject, std::size_t index) const
{
    if (m_bCrlf && subject.substr(index, 2) == "\r\n")
        return index + 2;
    return CharacterBegin(subject, index + 1);
}

void CompiledPattern::Find(PatternSearch& search, std::size_t start, std::uint32_t options) const
{
    // Machine code does not know anchors that a search brings.
    search.holdsHeap = search.holdsHeap || (options & PCRE2_ANCHORED) != 0;
    // "\C" may have ended a match inside a character.
    start = CharacterBegin(search.subject, start);
    search.result = Execute(search, start, options, m_pContext.get());
    if (search.result == PCRE2_ERROR_JIT_STACKLIMIT)
        search.result = FindOnLargerStack(search, start, options);
    search.place = pcre2_get_startchar(search.data.get());
    // "\K" in a look-around may put the beginning after the end.
    if (search.result > 0)
        search.offsets[0] = std::min(search.offsets[0], search.offsets[1]);
    if (search.result == PCRE2_ERROR_NOMEMORY)
        throw std::bad_alloc();
}

int CompiledPattern::Execute(PatternSearch& search, std::size_t start, std::uint32_t options,
                             pcre2_match_context* context) const
{
    // Machine code takes what is known to be UTF-8 without another look at it.
    const bool isChecked = (options & PCRE2_NO_UTF_CHECK) != 0 || IsAscii(search.subject);
    const auto match = m_bHasMachineCode && !m_bRefusesEmpty && isChecked && (options & PCRE2_ANCHORED) == 0
                           ? pcre2_jit_match
                           : pcre2_match;
    return match(m_pCode.get(), ToPcre2(search.subject), search.subject.size(), start, options,
                 search.data.get(), context);
}

// Machine code uses 32 KiB of the caller's stack, unless it is given more.
int CompiledPattern::FindOnLargerStack(PatternSearch& search, std::size_t start, std::uint32_t options) const
{
    if (m_uMemory <= s_uFirstJitStack)
        return PCRE2_ERROR_JIT_STACKLIMIT;
    const Pcre2Ptr<pcre2_match_context> context(NeedMemory(pcre2_match_context_copy(m_pContext.get())));
    const Pcre2Ptr<pcre2_jit_stack> stack(NeedMemory(pcre2_jit_stack_create(
        s_uFirstJitStack, std::min(m_uMemory, s_uMostJitStack), Pcre2Contexts::Get().General())));
    pcre2_jit_stack_assign(context.get(), nullptr, stack.get());
    return Execute(search, start, options, context.get());
}

std::string CompiledPattern::Describe(int result)
{
    PCRE2_UCHAR text[256];
    if (pcre2_get_error_message(result, text, sizeof(text)) < 0)
        return "unknown error " + std::to_string(result);
    return reinterpret_cast<const char*>(text);
}

// Any slot will do; that of the thread is mostly free.
std::size_t CompiledPattern::GetSlot()
{
    return (static_cast<std::uintptr_t>(pthread_self()) >> 12) * 0x9E3779B9U % s_uSpare;
}

} // namespace Toolkit
