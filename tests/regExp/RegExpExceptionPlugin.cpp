// SPDX-License-Identifier: MIT
#include "tests/regExp/RegExpExceptionPlugin.h"

#include <cstdio>

#include "toolkit/regExp/RegExp.Exceptions"
#include "toolkit/regExp/RegExp.h"

using namespace Toolkit;

namespace
{
using Thrown = smart_ptr<RegExpException, smart_ptr_policy>;
}

extern "C" TOOLKIT_API bool TryPatternInPlugin(const char* pattern, const char* subject, char* message,
                                               std::size_t size)
{
    try
    {
        RegExp(TString<char>(pattern), RegExpOptions::Default).Match(TString<char>(subject));
    }
    catch (const Thrown& exception)
    {
        std::snprintf(message, size, "%s", exception->what());
        return true;
    }
    return false;
}

extern "C" TOOLKIT_API void LetPassInPlugin(const wchar_t* message)
{
    RegExpException::Throw(message);
}

extern "C" TOOLKIT_API bool CallBackFromPlugin(void (*function)())
{
    try
    {
        function();
    }
    catch (const Thrown&)
    {
        return true;
    }
    return false;
}
