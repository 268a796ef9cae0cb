// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/RegExpBackend.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>
#include <new>

#include "toolkit/internal/regex/LiteralEscapes.h"
#include "toolkit/internal/regex/Pcre2.h"
#include "toolkit/internal/regex/Pcre2Contexts.h"
#include "toolkit/internal/regex/Pcre2Items.h"
#include "toolkit/internal/regex/PcreErrors.h"
#include "toolkit/internal/text/CodePoints.h"

namespace Toolkit
{

namespace
{

// ---- options and results: PCRE's numbers outside, PCRE2's inside

struct Option
{
    int pcre;
    std::uint32_t pcre2;
};

// PCRE2 decides while it compiles whether it may begin where a match can begin; the result is the same.
const std::uint32_t s_uNoEffect = 0;

const Option s_options[] = {
    {0x00000010, PCRE2_ANCHORED}, {0x00000080, PCRE2_NOTBOL},       {0x00000100, PCRE2_NOTEOL},
    {0x00000400, PCRE2_NOTEMPTY}, {0x00002000, PCRE2_NO_UTF_CHECK}, {0x00008000, PCRE2_PARTIAL_SOFT},
    {0x04000000, s_uNoEffect},    {0x08000000, PCRE2_PARTIAL_HARD}, {0x10000000, PCRE2_NOTEMPTY_ATSTART},
};

const int s_iBadOption = -3;
const int s_iNoMemory = -6;
const int s_iInternal = -14;
const int s_iBadOffset = -24;
const int s_iShortUtf8 = -25;

const Option* const s_pEndOfOptions = s_options + sizeof(s_options) / sizeof(s_options[0]);

// False when there is an option that no execution takes.
bool Translate(int options, std::uint32_t& translated)
{
    translated = 0;
    for (const Option* option = s_options; option != s_pEndOfOptions; ++option)
        if ((options & option->pcre) != 0)
        {
            translated |= option->pcre2;
            options &= ~option->pcre;
        }
    return options == 0;
}

int ToPcreResult(int result)
{
    switch (result)
    {
    case PCRE2_ERROR_PARTIAL:
        return RegExpBackend::s_iPartial;
    case PCRE2_ERROR_NULL:
        return RegExpBackend::s_iNullArgument;
    case PCRE2_ERROR_BADOPTION:
        return s_iBadOption;
    case PCRE2_ERROR_BADMAGIC:
        return -4;
    case PCRE2_ERROR_NOMEMORY:
        return s_iNoMemory;
    case PCRE2_ERROR_MATCHLIMIT:
        return RegExpBackend::s_iMatchLimit;
    case PCRE2_ERROR_DEPTHLIMIT:
    case PCRE2_ERROR_HEAPLIMIT:
        return -21;
    case PCRE2_ERROR_BADOFFSET:
        return s_iBadOffset;
    case PCRE2_ERROR_BADUTFOFFSET:
        return RegExpBackend::s_iBadUtf8Offset;
    case PCRE2_ERROR_RECURSELOOP:
        return -26;
    default:
        return result >= PCRE2_ERROR_NOMATCH ? result : s_iInternal;
    }
}

bool IsUtf8Error(int result)
{
    return result <= PCRE2_ERROR_UTF8_ERR1 && result >= PCRE2_ERROR_UTF8_ERR21;
}

// ---- the offsets, as PCRE leaves them

int ToOffset(PCRE2_SIZE offset)
{
    return offset == PCRE2_UNSET ? -1 : static_cast<int>(offset);
}

// The pairs of all groups of the pattern; elements beyond them stay.
void CopyOffsets(const pcre2_code* code, pcre2_match_data* data, int* offsets)
{
    std::uint32_t groups = 0;
    pcre2_pattern_info(code, PCRE2_INFO_CAPTURECOUNT, &groups);
    const std::uint32_t pairs = std::min(groups + 1, pcre2_get_ovector_count(data));
    std::transform(pcre2_get_ovector_pointer(data), pcre2_get_ovector_pointer(data) + 2 * pairs, offsets,
                   ToOffset);
}

// Tells in the first pair where the subject is not UTF-8, and PCRE's number of the reason.
int ReportBadUtf8(int result, std::uint32_t options, const pcre2_match_data* data, int* offsets)
{
    const int mostMissingBytes = 5;
    const int reason = PCRE2_ERROR_UTF8_ERR1 + 1 - result;
    offsets[0] = ToOffset(pcre2_get_startchar(const_cast<pcre2_match_data*>(data)));
    offsets[1] = reason;
    const bool isCutShort = reason <= mostMissingBytes && (options & PCRE2_PARTIAL_HARD) != 0;
    return isCutShort ? s_iShortUtf8 : RegExpBackend::s_iBadUtf8;
}

int Report(int result, const pcre2_code* code, pcre2_match_data* data, std::uint32_t options, int* offsets)
{
    if (IsUtf8Error(result))
        return ReportBadUtf8(result, options, data, offsets);
    if (result >= 0)
        CopyOffsets(code, data, offsets);
    else if (result == PCRE2_ERROR_PARTIAL)
    {
        const PCRE2_SIZE* const pair = pcre2_get_ovector_pointer(data);
        offsets[0] = offsets[2] = ToOffset(pair[0]);
        offsets[1] = ToOffset(pair[1]);
    }
    else
        offsets[0] = offsets[1] = -1;
    return ToPcreResult(result);
}

// ---- one search

struct Subject
{
    PCRE2_SPTR text;
    std::size_t length;
    std::size_t start;
};

// What PCRE2 finds wrong with the subject, or another result.
int Check(const pcre2_code* code, const Subject& subject, pcre2_match_data* data)
{
    // The subject is checked before the first step is made.
    const int result = pcre2_match(code, subject.text, subject.length, 0, PCRE2_ANCHORED | PCRE2_NOTEMPTY,
                                   data, Pcre2Contexts::Get().CheckOnly());
    if (!IsUtf8Error(result) && subject.start < subject.length &&
        CodePoints::IsContinuation(static_cast<char>(subject.text[subject.start])))
        return PCRE2_ERROR_BADUTFOFFSET;
    return result;
}

// Of a search that begins later PCRE2 checks only the part that it believes to be seen, and sees no more of
// it; PCRE checks and sees all of the subject.
int Search(const pcre2_code* code, const Subject& subject, std::uint32_t options, pcre2_match_data* data,
           int* offsets)
{
    if ((options & PCRE2_NO_UTF_CHECK) == 0 && subject.start > 0)
    {
        const int result = Check(code, subject, data);
        if (IsUtf8Error(result) || result == PCRE2_ERROR_BADUTFOFFSET)
            return Report(result, code, data, options, offsets);
        options |= PCRE2_NO_UTF_CHECK;
    }
    const std::uint32_t heap = Pcre2Contexts::MostHeap(code);
    Pcre2Ptr<pcre2_match_context> larger;
    if (heap > Pcre2Contexts::s_uUsualHeap)
    {
        larger.reset(pcre2_match_context_copy(Pcre2Contexts::Get().Match()));
        if (larger == nullptr)
            return s_iNoMemory;
        pcre2_set_heap_limit(larger.get(), heap);
    }
    const int result = pcre2_match(code, subject.text, subject.length, subject.start, options, data,
                                   larger != nullptr ? larger.get() : Pcre2Contexts::Get().Match());
    return Report(result, code, data, options, offsets);
}

const pcre2_code* ToPcre2(const RegExpCode* code)
{
    return reinterpret_cast<const pcre2_code*>(code);
}

pcre2_match_data* ToPcre2(RegExpWorkspace* workspace)
{
    return reinterpret_cast<pcre2_match_data*>(workspace);
}

const std::uint32_t s_uPairs = 20;

} // namespace

RegExpCode* RegExpBackend::Compile(const char* pattern, const char*& errorText, int& errorOffset)
{
    LiteralEscapes text(pattern);
    errorText = nullptr;
    errorOffset = 0;
    for (;;)
    {
        int number = 0;
        PCRE2_SIZE offset = 0;
        pcre2_code* const code =
            pcre2_compile(reinterpret_cast<PCRE2_SPTR>(text.GetText().data()), text.GetText().size(),
                          PCRE2_UTF, &number, &offset, Pcre2Contexts::Get().CompileAsPcre());
        if (code != nullptr)
            return reinterpret_cast<RegExpCode*>(code);
        if (!text.TakeLiterally(number, offset))
        {
            const PcreError error = FindPcreError(number, text.GetText().substr(0, offset));
            const std::size_t place = text.GetOffset(offset - std::min(offset, error.bytesEarlier));
            errorText = error.text;
            errorOffset = static_cast<int>(std::min<std::size_t>(INT_MAX, place));
            return nullptr;
        }
    }
}

void RegExpBackend::Free(RegExpCode* code)
{
    pcre2_code_free(reinterpret_cast<pcre2_code*>(code));
}

std::optional<std::size_t> RegExpBackend::FindReach(const char* pattern)
{
    return Pcre2Items::FindReach(pattern);
}

int RegExpBackend::Execute(const RegExpCode* code, const char* subject, std::size_t length, std::size_t start,
                           int options, int* offsets, int vectorSize, RegExpWorkspace* workspace)
{
    std::uint32_t translated = 0;
    if (!Translate(options, translated))
        return s_iBadOption;
    if (code == nullptr)
        return s_iNullArgument;
    if (length > INT_MAX)
        return s_iBadLength;
    if (start > length)
        return s_iBadOffset;
    const Subject searched = {reinterpret_cast<PCRE2_SPTR>(subject), length, start};
    if (workspace != nullptr)
        return Search(ToPcre2(code), searched, translated, ToPcre2(workspace), offsets);
    const Pcre2Ptr<pcre2_match_data> data(
        pcre2_match_data_create(static_cast<std::uint32_t>(vectorSize / 3), Pcre2Contexts::Get().General()));
    return data == nullptr ? s_iNoMemory : Search(ToPcre2(code), searched, translated, data.get(), offsets);
}

RegExpWorkspace* RegExpBackend::NewWorkspace()
{
    return reinterpret_cast<RegExpWorkspace*>(
        pcre2_match_data_create(s_uPairs, Pcre2Contexts::Get().General()));
}

void RegExpBackend::FreeWorkspace(RegExpWorkspace* workspace)
{
    pcre2_match_data_free(ToPcre2(workspace));
}

bool RegExpBackend::GetNameCount(const RegExpCode* code, int& count)
{
    std::uint32_t answer = 0;
    const bool isKnown = pcre2_pattern_info(ToPcre2(code), PCRE2_INFO_NAMECOUNT, &answer) == 0;
    count = static_cast<int>(answer);
    return isKnown;
}

bool RegExpBackend::GetNameEntrySize(const RegExpCode* code, int& size)
{
    std::uint32_t answer = 0;
    const bool isKnown = pcre2_pattern_info(ToPcre2(code), PCRE2_INFO_NAMEENTRYSIZE, &answer) == 0;
    size = static_cast<int>(answer);
    return isKnown;
}

bool RegExpBackend::GetNameTable(const RegExpCode* code, const char*& table)
{
    PCRE2_SPTR answer = nullptr;
    const bool isKnown = pcre2_pattern_info(ToPcre2(code), PCRE2_INFO_NAMETABLE, &answer) == 0;
    table = reinterpret_cast<const char*>(answer);
    return isKnown;
}

} // namespace Toolkit
