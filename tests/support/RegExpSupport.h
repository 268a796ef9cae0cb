// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_REGEXPSUPPORT_H
#define TOOLKIT_TESTS_SUPPORT_REGEXPSUPPORT_H

#include <string>

#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/regExp/RegExp.Exceptions"
#include "toolkit/regExp/RegExp.h"

namespace ToolkitTest
{

inline Toolkit::RegExp Pattern(const std::string& pattern)
{
    return Toolkit::RegExp(Toolkit::TString<char>(pattern), Toolkit::RegExpOptions::Default);
}

inline std::string Repeat(const std::string& text, std::size_t count)
{
    std::string repeated;
    repeated.reserve(text.size() * count);
    while (count-- > 0)
        repeated += text;
    return repeated;
}

// The message of the regular-expression exception that `work` throws, "nothing was thrown" if it throws none.
template <class Work>
std::string MessageOf(const Work& work)
{
    try
    {
        work();
    }
    catch (const Toolkit::smart_ptr<Toolkit::RegExpException, Toolkit::smart_ptr_policy>& exception)
    {
        return exception->GetMessage();
    }
    return "nothing was thrown";
}

// The message of a failed execution with that result.
inline std::string ExecutionMessage(const std::string& result)
{
    return result + std::string("RegExp::Match return error: ").substr(result.size());
}

} // namespace ToolkitTest

#endif
