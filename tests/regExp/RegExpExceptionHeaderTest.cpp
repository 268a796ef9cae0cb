// SPDX-License-Identifier: MIT
#include "toolkit/regExp/RegExp.Exceptions"

#include <gtest/gtest.h>

// Nothing else is included here: who catches the exception needs its own header alone.

TEST(RegExpExceptionHeader, SufficesToCatchAndRead)
{
    try
    {
        Toolkit::RegExpException::Throw(L"text");
    }
    catch (const Toolkit::smart_ptr<Toolkit::RegExpException, Toolkit::smart_ptr_policy>& exception)
    {
        EXPECT_EQ("text", exception->GetMessage());
        return;
    }
    FAIL() << "another type was thrown";
}
