// SPDX-License-Identifier: MIT
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/FuzzCheck.h"
#include "toolkit/regExp/Pattern.h"

// The input is a byte of options, a pattern, a replacement and a text, with a NUL after each of the middle
// two.

namespace
{

using namespace Toolkit;

const std::size_t s_uMostBytes = 120;

std::string TakeText(std::string& input)
{
    const std::size_t end = input.find('\0');
    const std::string text = input.substr(0, end);
    input.erase(0, end == input.npos ? end : end + 1);
    return text;
}

struct Found
{
    std::vector<std::string> matches;
    bool failed = false;
};

// All matches with their groups; each lies in the text and after the one before it.
Found FindAll(const Pattern& pattern, std::string_view text)
{
    Found found;
    std::size_t end = 0;
    for (const Match& match : pattern.All(text))
    {
        TOOLKIT_FUZZ_CHECK(!found.failed);
        found.failed = !match;
        if (!match)
        {
            TOOLKIT_FUZZ_CHECK(match.Error() != nullptr && match.Count() == 0);
            continue;
        }
        TOOLKIT_FUZZ_CHECK(match.Position() >= end && match.Position() + match.Length() <= text.size());
        end = match.Position() + match.Length();
        std::string groups;
        for (std::size_t group = 0; group < match.Count(); ++group)
            groups += std::string(match.Has(group) ? "+" : "-") + std::string(match[group]) + "\n";
        found.matches.push_back(groups);
    }
    return found;
}

void Check(const Pattern& pattern, std::string_view replacement, std::string_view text)
{
    const Found found = FindAll(pattern, text);
    const Match first = pattern.Find(text);
    TOOLKIT_FUZZ_CHECK(static_cast<bool>(first) == !found.matches.empty());
    const Result<std::string> same = pattern.Replace(text, "$0");
    TOOLKIT_FUZZ_CHECK(same.has_value() == !found.failed && (!same || *same == text));
    const Result<std::string> doubled =
        pattern.Replace(text, [](const Match&) { return std::string_view("$0"); });
    TOOLKIT_FUZZ_CHECK(doubled.has_value() == !found.failed);
    const Result<std::vector<std::string_view>> parts = pattern.Split(text);
    TOOLKIT_FUZZ_CHECK(parts.has_value() == !found.failed);
    const std::size_t groups = first ? first.Count() : 1;
    TOOLKIT_FUZZ_CHECK(!parts || parts->size() == found.matches.size() * groups + 1);
    const Result<std::string> replaced = pattern.Replace(text, replacement);
    TOOLKIT_FUZZ_CHECK(replaced || !replaced.error().Message().empty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0 || size > s_uMostBytes)
        return 0;
    std::string input(reinterpret_cast<const char*>(data), size);
    const auto options = static_cast<Pattern::Options>(static_cast<unsigned char>(input[0]) & 15U);
    input.erase(0, 1);
    const std::string text = TakeText(input);
    const std::string replacement = TakeText(input);
    // Each search may take some steps only: what takes long is not what is looked for.
    const PatternLimits limits = PatternLimits().Steps(5000);
    const Result<Pattern> pattern = Pattern::Compile(text, options, limits);
    if (!pattern)
        return 0;
    Check(*pattern, replacement, input);
    // Machine code finds what the interpreter finds, unless one of them reaches a limit.
    const Result<Pattern> interpreted = Pattern::Compile("(*NO_JIT)" + text, options, limits);
    if (!interpreted)
        return 0;
    const Found found = FindAll(*pattern, input);
    const Found expected = FindAll(*interpreted, input);
    TOOLKIT_FUZZ_CHECK(found.failed || expected.failed || found.matches == expected.matches);
    return 0;
}
