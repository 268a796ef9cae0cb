// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REGEXP_REGEXPEXCEPTIONPLUGIN_H
#define TOOLKIT_TESTS_REGEXP_REGEXPEXCEPTIONPLUGIN_H

#include <cstddef>

// The functions of the plug-in of RegExpExceptionTest.
extern "C"
{
    // "TryPatternInPlugin": true when matching threw; the exception's message is then in `message`.
    using TryPattern = bool(const char* pattern, const char* subject, char* message, std::size_t size);
    // "LetPassInPlugin": throws an exception with that message.
    using LetPass = void(const wchar_t* message);
    // "CallBackFromPlugin": true when the function threw.
    using CallBack = bool(void (*function)());
}

#endif
