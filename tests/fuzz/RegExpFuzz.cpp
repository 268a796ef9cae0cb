// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <string>

#include "tests/reference/PlainMatch.h"
#include "tests/reference/PlainReplacement.h"
#include "tests/support/FuzzCheck.h"
#include "tests/support/RegExpSupport.h"

// The input is a pattern, a replacement and a subject, with a zero behind each of the first two.

namespace
{

using namespace Toolkit;
using namespace ToolkitTest;

const std::size_t s_uMostBytes = 120;
const int s_iMostReplacements = 500;

std::string TakeText(std::string& input)
{
    const std::size_t end = input.find('\0');
    const std::string text = input.substr(0, end);
    input.erase(0, end == input.npos ? end : end + 1);
    return text;
}

// Everything that the bare library finds.
void CheckMatch(const RegExp& regExp, const TString<char>& subject)
{
    const PlainMatch plain(regExp.GetPattern(), subject);
    // PCRE2 has other texts for what PCRE refuses, and refuses some of what PCRE takes.
    if (!plain.isCompiled && !BareRegex::s_bHasPcreTexts)
        return;
    bool isMatch = false;
    TOOLKIT_FUZZ_CHECK(MessageOf([&] { isMatch = regExp.IsMatch(subject); }) == plain.message);
    smart_ptr<MatchResult, smart_ptr_policy> match;
    TOOLKIT_FUZZ_CHECK(MessageOf([&] { match = regExp.Match(subject); }) == plain.message);
    if (match.IsNull())
        return;
    TOOLKIT_FUZZ_CHECK(isMatch == (plain.result > 0));
    TOOLKIT_FUZZ_CHECK(match->GetResult() == plain.result);
    TOOLKIT_FUZZ_CHECK(match->GetCount() == plain.groups.size());
    for (std::size_t i = 0; i < plain.groups.size(); ++i)
    {
        const auto name = plain.namesOfGroups.find(static_cast<int>(i));
        TOOLKIT_FUZZ_CHECK((*match)[i]->GetIndex() == i && (*match)[i]->GetValue() == plain.groups[i]);
        TOOLKIT_FUZZ_CHECK((*match)[i]->GetName() ==
                           (name != plain.namesOfGroups.end() ? name->second : std::string()));
        TOOLKIT_FUZZ_CHECK(
            std::equal(plain.offsets + 2 * i, plain.offsets + 2 * i + 2, match->GetOffsets() + 2 * i));
    }
    TOOLKIT_FUZZ_CHECK(match->GetNames().size() == plain.names.size());
    for (const auto& [name, number] : plain.names)
        TOOLKIT_FUZZ_CHECK(match->Find(name) == (*match)[static_cast<std::size_t>(number)]);
}

void CheckReplacement(const RegExp& regExp, const TString<char>& replacement, const TString<char>& subject)
{
    try
    {
        TString<char> plain;
        TString<char> fast;
        const std::string message =
            MessageOf([&] { plain = PlainReplace(regExp, replacement, subject, s_iMostReplacements); });
        TOOLKIT_FUZZ_CHECK(MessageOf([&] { fast = regExp.Replace(replacement, subject, 0); }) == message);
        TOOLKIT_FUZZ_CHECK(plain == fast);
    }
    catch (const TooManyReplacements&)
    {
        TOOLKIT_FUZZ_CHECK(MessageOf([&] { regExp.Replace(replacement, subject, 0); }) != MessageOf([] {}));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size > s_uMostBytes)
        return 0;
    std::string input(reinterpret_cast<const char*>(data), size);
    // Each search may take some steps only: what takes long is not what is looked for.
    const RegExp regExp = Pattern("(*LIMIT_MATCH=5000)" + TakeText(input));
    const TString<char> replacement(TakeText(input));
    const TString<char> subject(input);
    CheckMatch(regExp, subject);
    CheckReplacement(regExp, replacement, subject);
    return 0;
}
