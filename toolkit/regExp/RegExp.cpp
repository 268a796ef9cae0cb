// SPDX-License-Identifier: MIT
#include "toolkit/regExp/RegExp.h"

#include <memory>
#include <stdexcept>
#include <string>

#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/regex/GlobalReplacement.h"
#include "toolkit/internal/regex/RegExpBackend.h"
#include "toolkit/internal/regex/RegexPart.h"
#include "toolkit/regExp/RegExp.Exceptions"

namespace Toolkit
{

namespace
{

const int s_iMostGroups = 30;

// `text` written over the beginning of `initial`.
TString<wchar_t> WriteOver(const std::wstring& initial, const std::wstring& text)
{
    return text.size() < initial.size() ? text + initial.substr(text.size()) : text;
}

// The library of regular expressions, which is loaded at its first use.
const RegexCalls& NeedRegex()
{
    const Result<const RegexCalls*> calls = LoadRegex();
    if (!calls)
        RegExpException::Throw(UTF8::ToUNICODE(TString<char>(calls.error().Message())));
    return **calls;
}

// `errorText` and `errorOffset` are PCRE's.
[[noreturn]] void ThrowCompilation(const char* errorText, int errorOffset, const TString<char>& pattern)
{
    const std::wstring text = L" : " + UTF8::ToUNICODE(errorText) + L" (@offset: " +
                              std::to_wstring(errorOffset) + L") " + UTF8::ToUNICODE(pattern);
    RegExpException::Throw(WriteOver(L"pcre_compile failed with error ", text));
}

[[noreturn]] void ThrowExecution(int result)
{
    RegExpException::Throw(WriteOver(L"RegExp::Match return error: ", std::to_wstring(result)));
}

// A match and no match are no failures.
void RequireResult(int result)
{
    if (result < -1)
        ThrowExecution(result);
}

void RequireRecord(const smart_ptr<MatchResult, smart_ptr_policy>& record)
{
    if (record.IsNull())
        ThrowExecution(RegExpBackend::s_iNullArgument);
}

// The bytes of the subject between two offsets; none for a group that took no part and for an end before the
// start.
TString<char> Piece(const TString<char>& subject, int start, int end)
{
    if (start < 0 || end <= start)
        return TString<char>();
    return subject.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
}

// A position before the start is one beyond every end, and so is a length below zero: the standard
// replacement throws for the former and stops at the end for the latter.
void ReplaceShifted(TString<char>& target, const int* pair, long long shift, const TString<char>& replacement)
{
    target.replace(static_cast<std::size_t>(pair[0] + shift), static_cast<std::size_t>(pair[1] - pair[0]),
                   replacement);
}

long long Growth(const TString<char>& result, const TString<char>& input)
{
    return static_cast<long long>(result.size()) - static_cast<long long>(input.size());
}

} // namespace

RegExp::RegExp(const TString<char>& pattern, RegExpOptions::Modifiers modifiers)
    : m_strPattern(pattern), m_modifiers(modifiers)
{
}

RegExp::RegExp(const TString<wchar_t>& pattern, RegExpOptions::Modifiers modifiers)
    : m_strPattern(UTF8::ToUTF8(pattern)), m_modifiers(modifiers)
{
}

bool RegExp::IsMatch(const TString<char>& subject) const
{
    // The record of a plain question is never seen: only what PCRE fills is made, and nothing is copied.
    const char* errorText = nullptr;
    int errorOffset = 0;
    const RegexCalls& regex = NeedRegex();
    const std::unique_ptr<RegExpCode, void (*)(RegExpCode*)> code(
        regex.compile(m_strPattern.c_str(), errorText, errorOffset), regex.free);
    if (code == nullptr)
        ThrowCompilation(errorText, errorOffset, m_strPattern);
    int offsets[MatchResult::s_iVectorSize];
    const int result = regex.execute(code.get(), subject.data(), subject.size(), 0, 0, offsets,
                                     MatchResult::s_iVectorSize, nullptr);
    RequireResult(result);
    return result > 0;
}

bool RegExp::IsMatch(const TString<wchar_t>& subject) const
{
    return IsMatch(UTF8::ToUTF8(subject));
}

smart_ptr<MatchResult, smart_ptr_policy> RegExp::Match(const TString<char>& subject) const
{
    smart_ptr<MatchResult, smart_ptr_policy> record = NewRecord(subject);
    RegExp_compile(record);
    RegExp_exec(record, 0);
    if (record->m_iResult > 0)
    {
        CollectGroups(*record);
        CollectNames(*record);
    }
    return record;
}

smart_ptr<MatchResult, smart_ptr_policy> RegExp::Match(const TString<wchar_t>& subject) const
{
    return Match(UTF8::ToUTF8(subject));
}

TString<char> RegExp::Replace(const TString<char>& replacement, const TString<char>& input,
                              unsigned char) const
{
    // The text is kept beside the record, which would copy it for each search.
    smart_ptr<MatchResult, smart_ptr_policy> record = NewRecord(input);
    RegExp_compile(record);
    record->m_iExecOptions = RegExpBackend::s_iWholeMatchOptions;
    RegExp_exec(record, 0);
    if (record->m_iResult <= 0)
        return input;

    GlobalReplacement work(record->m_pCode, record->m_iExecOptions, input, replacement);
    RequireResult(work.Run(m_strPattern, record->m_offsets, record->m_iVectorSize));
    return work.GetText();
}

TString<char> RegExp::Replace(const std::vector<TString<char>>& replacements,
                              const TString<char>& input) const
{
    const smart_ptr<MatchResult, smart_ptr_policy> record = Match(input);
    if (record->m_iResult < 0)
        return TString<char>();
    TString<char> result = input;
    for (int i = 1; i < record->m_iResult; ++i)
        ReplaceShifted(result, record->m_offsets + 2 * i, Growth(result, input),
                       replacements.at(static_cast<std::size_t>(i - 1)));
    return result;
}

TString<char> RegExp::Replace(ReplacementMappedStrings& replacements, const TString<char>& input) const
{
    const smart_ptr<MatchResult, smart_ptr_policy> record = Match(input);
    if (record->m_iResult < 0)
        return TString<char>();
    TString<char> result = input;
    for (int i = 1; i < record->m_iResult; ++i)
    {
        const TString<char>& name = (*record)[static_cast<std::size_t>(i)]->GetName();
        if (!name.empty())
            ReplaceShifted(result, record->m_offsets + 2 * i, Growth(result, input), replacements[name]);
    }
    return result;
}

void RegExp::RegExp_compile(smart_ptr<MatchResult, smart_ptr_policy>& result) const
{
    RequireRecord(result);
    result->FreeCode();
    result->m_pCode =
        NeedRegex().compile(result->m_strPattern.c_str(), result->m_pErrorText, result->m_iErrorOffset);
    if (result->m_pCode == nullptr)
        ThrowCompilation(result->m_pErrorText, result->m_iErrorOffset, result->m_strPattern);
}

void RegExp::RegExp_exec(smart_ptr<MatchResult, smart_ptr_policy>& result, unsigned short start) const
{
    RequireRecord(result);
    const TString<char>& subject = result->m_strSubject;
    result->m_iResult =
        NeedRegex().execute(result->m_pCode, subject.data(), subject.size(), start, result->m_iExecOptions,
                            result->m_offsets, result->m_iVectorSize, nullptr);
    RequireResult(result->m_iResult);
}

void RegExp::RegExp_replace(smart_ptr<MatchResult, smart_ptr_policy>& record, int group,
                            TString<char>& target, const TString<char>& replacement, int shift) const
{
    RequireRecord(record);
    if (group < 0 || group >= s_iMostGroups)
        throw std::out_of_range("RegExp_replace: no such group");
    ReplaceShifted(target, record->m_offsets + 2 * group, shift, replacement);
}

smart_ptr<MatchResult, smart_ptr_policy> RegExp::NewRecord(const TString<char>& subject) const
{
    smart_ptr<MatchResult, smart_ptr_policy> record(new MatchResult);
    record->m_strSubject = subject;
    record->m_strPattern = m_strPattern;
    return record;
}

void RegExp::CollectGroups(MatchResult& record)
{
    record.Clear();
    record.Reserve(static_cast<std::size_t>(record.m_iResult));
    for (const int* pair = record.m_offsets; pair != record.m_offsets + 2 * record.m_iResult; pair += 2)
        record.AddGroup(Piece(record.m_strSubject, pair[0], pair[1]));
}

void RegExp::CollectNames(MatchResult& record)
{
    const RegexCalls& regex = LoadedRegex();
    int count = 0;
    if (!regex.getNameCount(record.m_pCode, count))
        RegExpException::Throw(L"pcre_fullinfo 'PCRE_INFO_NAMECOUNT' return error");
    if (count <= 0)
        return;
    int size = 0;
    if (!regex.getNameEntrySize(record.m_pCode, size))
        RegExpException::Throw(L"pcre_fullinfo 'PCRE_INFO_NAMEENTRYSIZE' return error");
    const char* table = nullptr;
    if (!regex.getNameTable(record.m_pCode, table))
        RegExpException::Throw(L"pcre_fullinfo 'PCRE_INFO_NAMETABLE' return error");

    for (const char* entry = table; entry != table + count * size; entry += size)
    {
        // The bytes count as signed, hence the numbers of the groups from 128 to 255.
        const int number = static_cast<signed char>(entry[0]) * 256 + static_cast<signed char>(entry[1]);
        if (number < record.m_iResult)
            record.AddName(entry + 2, number);
    }
}

} // namespace Toolkit
