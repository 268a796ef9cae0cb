// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/PcreErrors.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>

#include "toolkit/internal/regex/Pcre2.h"

namespace Toolkit
{

namespace
{

// Where PCRE says it in other words or stops elsewhere; of the rows for a number the first whose ending fits
// counts. An empty ending stands for every pattern, and no text for PCRE2's, which is then PCRE's as well.
struct Row
{
    int number;
    std::string_view ending;
    PcreError error;
};

const int s_iCollatingElement = 113;
const int s_iUnknownClass = 130;

const Row s_rows[] = {
    {107, "", {"invalid escape sequence in character class", 0}},
    {109, "", {"nothing to repeat", 0}},
    {114, "(?", {"unrecognized character after (? or (?-", 0}},
    {114, "(?P", {"unrecognized character after (?P", 0}},
    {114, "(?C", {"closing ) for (?C expected", 0}},
    {114, "(?(", {"assertion expected after (?( or (?(?C)", 0}},
    {114, "", {"missing )", 0}},
    {118, "", {"missing ) after comment", 0}},
    {119, "", {"parentheses are too deeply nested", 0}},
    {121, "", {"failed to get memory", 0}},
    {122, "", {"unmatched parentheses", 0}},
    {124, "", {"malformed number or name after (?(", 0}},
    {126, "", {"a numbered reference must not be zero", 0}},
    {127, "", {"conditional group contains more than two branches", 0}},
    {129, "", {"digit expected after (?+", 0}},
    {132, "", {"this version of PCRE is compiled without UTF support", 0}},
    {134, "", {"character value in \\x{} or \\o{} is too large", 0}},
    {135, "", {"lookbehind assertion is not fixed length", 0}},
    {136, "", {"\\C not allowed in lookbehind assertion", 0}},
    {137, "", {"PCRE does not support \\L, \\l, \\N{name}, \\U, or \\u", 1}},
    {138, "", {"number after (?C is > 255", 0}},
    {139, "", {"closing ) for (?C expected", 0}},
    {142, "", {"syntax error in subpattern name (missing terminator)", 0}},
    {143, "", {"two named subpatterns have the same name", 1}},
    {144, "", {"group name must start with a non-digit", 0}},
    {145, "", {"support for \\P, \\p, and \\X has not been compiled", 0}},
    {147, "", {"unknown property name after \\P or \\p", 1}},
    {148, "", {"subpattern name is too long (maximum 32 characters)", 0}},
    {154, "", {"DEFINE group contains more than one branch", 0}},
    {155, "\\o", {nullptr, 1}},
    {157, "", {"a numbered reference must not be zero", 1}},
    {158, "", {"(?R or (?[+-]digits must be followed by )", 0}},
    {160, "(*", {"nothing to repeat", 1}},
    {161, "", {"number is too big", 0}},
    {162, "(?<", {"unrecognized character after (?<", 0}},
    {162, "(?'", {"syntax error in subpattern name (missing terminator)", 0}},
    {162, "(?P<", {"syntax error in subpattern name (missing terminator)", 0}},
    {162,
     "\\g{",
     {"\\g is not followed by a braced, angle-bracketed, or quoted name/number or by a plain number", 0}},
    {164, "", {"non-octal character in \\o{} (closing brace missing?)", 0}},
    {168, "", {"\\c must be followed by an ASCII character", 0}},
    {169, "", {nullptr, 1}},
    {171, "", {nullptr, 1}},
    {172, "", {"closing ) for (?C expected", 0}},
    {178, "", {"digits missing in \\x{} or \\o{}", 0}},
    {181, "", {"closing ) for (?C expected", 0}},
    {182, "", {"closing ) for (?C expected", 0}},
    {184, "", {"parentheses are too deeply nested", 0}},
    {187, "", {"lookbehind assertion is not fixed length", 0}},
    {194, "", {"unrecognized character after (? or (?-", 0}},
    {195, "", {"(*VERB) not recognized or malformed", 0}},
    {197, "", {"regular expression is too large", 0}},
    {198, "", {"assertion expected after (?( or (?(?C)", 0}},
};

using Texts = std::map<int, std::string>;

Texts CollectTexts()
{
    const int first = 101;
    const int end = 1000;
    Texts texts;
    for (int number = first; number < end; ++number)
    {
        PCRE2_UCHAR text[256];
        if (pcre2_get_error_message(number, text, sizeof(text)) < 0)
            break;
        texts[number] = reinterpret_cast<const char*>(text);
    }
    return texts;
}

const char* Pcre2Text(int number)
{
    static const Texts s_texts = CollectTexts();
    const auto found = s_texts.find(number);
    return found != s_texts.end() ? found->second.c_str() : "internal error: unknown error number";
}

bool EndsWith(std::string_view text, std::string_view ending)
{
    return text.size() >= ending.size() && text.substr(text.size() - ending.size()) == ending;
}

} // namespace

PcreError FindPcreError(int number, const std::string& read)
{
    // A pattern that is not UTF-8 has one of several negative numbers.
    if (number < 0)
        return {"invalid UTF-8 string", 0};
    // Newer versions of PCRE2 stop at the end of "[:name:]" and "[=name=]", not at its name and not before
    // it.
    const std::size_t bracket = read.rfind('[');
    if (EndsWith(read, "]") && bracket != read.npos && number == s_iUnknownClass)
        return {Pcre2Text(number), read.size() - std::min(read.size(), bracket + 2)};
    if (EndsWith(read, "]") && bracket != read.npos && number == s_iCollatingElement)
        return {Pcre2Text(number), read.size() - bracket};
    for (const Row& row : s_rows)
        if (row.number == number && EndsWith(read, row.ending))
            return {row.error.text != nullptr ? row.error.text : Pcre2Text(number), row.error.bytesEarlier};
    return {Pcre2Text(number), 0};
}

} // namespace Toolkit
