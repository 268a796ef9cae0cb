// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_REGEXP_MATCHRESULT_H
#define TOOLKIT_REGEXP_MATCHRESULT_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/regExp/GroupCollection.h"

namespace Toolkit
{

struct RegExpCode;

/// The record of one compilation and execution: what was searched, what PCRE returned, and the groups. It
/// lives on the heap, held by a smart_ptr, and owns the compiled pattern. RegExp::Match makes and fills one;
/// a host may also make its own for RegExp_compile and RegExp_exec. One thread at a time may change it.
///
/// @code
/// Toolkit::smart_ptr<Toolkit::MatchResult> record(new Toolkit::MatchResult);
/// record->SetPattern("a+");
/// record->SetSubject("baa");
/// const Toolkit::RegExp search("", Toolkit::RegExpOptions::Default);
/// search.RegExp_compile(record);
/// search.RegExp_exec(record, 0);
/// std::cout << record->GetOffsets()[0] << '\n'; // 1
/// @endcode
class TOOLKIT_API MatchResult : public GroupCollection
{
public:
    MatchResult();
    ~MatchResult() override;

    MatchResult(const MatchResult&) = delete;
    MatchResult& operator=(const MatchResult&) = delete;

    /// What the last execution returned, by PCRE's numbers: the number of pairs in GetOffsets(), -1 for no
    /// match. 0 is a match in which a group took part that is numbered 20 or higher.
    int GetResult() const { return m_iResult; }
    /// PCRE's static message when the last compilation failed, null otherwise.
    const char* GetErrorText() const { return m_pErrorText; }
    /// The byte of the pattern where the compilation failed.
    int GetErrorOffset() const { return m_iErrorOffset; }

    /// The text that is searched.
    const TString<char>& GetSubject() const { return m_strSubject; }
    /// The pattern that is compiled.
    const TString<char>& GetPattern() const { return m_strPattern; }
    /// PCRE's execution options (PCRE_NOTBOL is 128, for instance).
    int GetExecOptions() const { return m_iExecOptions; }

    /// The elements of GetOffsets(), always 60.
    int GetVectorSize() const { return m_iVectorSize; }
    /// Start and end of the whole match and of each group in bytes of the subject, -1 and -1 for a group that
    /// took no part; the last third is PCRE's own.
    const int* GetOffsets() const { return m_offsets; }

    /// Sets the text that is searched.
    void SetSubject(const TString<char>& subject) { m_strSubject = subject; }
    /// Sets the pattern that is compiled.
    void SetPattern(const TString<char>& pattern) { m_strPattern = pattern; }
    /// Sets PCRE's execution options.
    void SetExecOptions(int options) { m_iExecOptions = options; }

private:
    friend class RegExp;

    static const int s_iVectorSize = 60;

    void FreeCode();

    const char* m_pErrorText = nullptr;
    int m_iErrorOffset = 0;
    RegExpCode* m_pCode = nullptr;
    TString<char> m_strSubject;
    TString<char> m_strPattern;
    int m_iExecOptions = 0;
    int m_iResult = 0;
    int m_iVectorSize = s_iVectorSize;
    int m_offsets[s_iVectorSize] = {};
};

} // namespace Toolkit

#endif
