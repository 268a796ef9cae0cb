// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAINREPLACEMENT_H
#define TOOLKIT_TESTS_REFERENCE_PLAINREPLACEMENT_H

#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/regExp/MatchResult.h"
#include "toolkit/regExp/RegExp.h"

namespace ToolkitTest
{

// Thrown by PlainReplace when it has made more replacements than it may.
struct TooManyReplacements
{
};

// The global replacement in its plain form: after each match the whole text is rewritten and searched again
// behind the replacement. The library's own form must give the same text for every input.
inline Toolkit::TString<char> PlainReplace(const Toolkit::RegExp& regExp,
                                           const Toolkit::TString<char>& replacement,
                                           const Toolkit::TString<char>& input, int mostReplacements)
{
    using namespace Toolkit;
    smart_ptr<MatchResult, smart_ptr_policy> record(new MatchResult);
    record->SetSubject(input);
    record->SetPattern(regExp.GetPattern());
    regExp.RegExp_compile(record);
    record->SetExecOptions(0x580);
    TString<char> result = input;
    regExp.RegExp_exec(record, 0);
    while (record->GetResult() > 0)
    {
        if (--mostReplacements < 0)
            throw TooManyReplacements();
        regExp.RegExp_replace(record, 0, result, replacement, 0);
        record->SetSubject(result);
        const std::size_t start = static_cast<std::size_t>(record->GetOffsets()[0]) + replacement.size();
        regExp.RegExp_exec(record, static_cast<unsigned short>(start));
    }
    return result;
}

} // namespace ToolkitTest

#endif
