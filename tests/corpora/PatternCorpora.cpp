// SPDX-License-Identifier: MIT
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tests/reference/BarePattern.h"
#include "toolkit/regExp/Pattern.h"

// Prints what Pattern finds in subjects that others wrote, for compare-patterns to judge.
//   PatternCorpora FILE
// Each line of the file is the options of a pattern as a number, the pattern and a subject, both as "x" and
// hexadecimal digits, with a tab after each of the first two. Each line that is printed says with how many of
// all combinations of options Pattern and bare PCRE2 agree in all matches and their groups, with how many
// they do not, and how many neither compiles, and then the groups of the first match with the options of the
// line, likewise: "-" for one that took no part, "none" without a match, "error" for a search that failed,
// "refused" for a pattern that is not compiled.

using namespace Toolkit;
using ToolkitTest::BarePattern;

namespace
{

const unsigned int s_uCombinations = 16;

// A pattern with every combination of options, by both.
struct Compiled
{
    std::array<std::unique_ptr<Pattern>, s_uCombinations> patterns;
    std::array<std::unique_ptr<BarePattern>, s_uCombinations> bare;
};

std::string Unhex(const std::string& text)
{
    std::string bytes;
    for (std::size_t i = 1; i + 1 < text.size(); i += 2)
        bytes += static_cast<char>(std::strtoul(text.substr(i, 2).c_str(), nullptr, 16));
    return bytes;
}

void PrintHex(std::string_view bytes)
{
    std::fputs(" x", stdout);
    for (const char byte : bytes)
        std::printf("%02x", static_cast<unsigned int>(static_cast<unsigned char>(byte)));
}

std::uint32_t BareOptions(unsigned int options)
{
    return ((options & Pattern::IgnoreCase) != 0 ? PCRE2_CASELESS : 0) |
           ((options & Pattern::Multiline) != 0 ? PCRE2_MULTILINE : 0) |
           ((options & Pattern::DotAll) != 0 ? PCRE2_DOTALL : 0) |
           ((options & Pattern::Extended) != 0 ? PCRE2_EXTENDED : 0);
}

Compiled Compile(const std::string& text)
{
    Compiled compiled;
    for (unsigned int options = 0; options < s_uCombinations; ++options)
    {
        const Result<Pattern> pattern = Pattern::Compile(text, static_cast<Pattern::Options>(options));
        if (pattern)
            compiled.patterns[options] = std::make_unique<Pattern>(*pattern);
        compiled.bare[options] = std::make_unique<BarePattern>(text, BareOptions(options));
    }
    return compiled;
}

std::vector<BarePattern::Offsets> FindAll(const Pattern& pattern, const std::string& subject, bool& failed)
{
    std::vector<BarePattern::Offsets> found;
    for (const Match& match : pattern.All(subject))
    {
        failed = match.Error() != nullptr;
        BarePattern::Offsets groups;
        for (std::size_t group = 0; group < match.Count(); ++group)
        {
            const bool has = match.Has(group);
            groups.push_back(has ? match.Position(group) : PCRE2_UNSET);
            groups.push_back(has ? match.Position(group) + match.Length(group) : PCRE2_UNSET);
        }
        if (!failed)
            found.push_back(groups);
    }
    return found;
}

// True when both find the same. A limit may end one of the two sooner.
bool Agree(const Pattern& pattern, const BarePattern& bare, const std::string& subject)
{
    bool failed = false;
    bool bareFailed = false;
    const auto found = FindAll(pattern, subject, failed);
    const auto expected = bare.FindAll(subject, bareFailed);
    return found == expected ? failed == bareFailed : failed && bareFailed;
}

void PrintFirst(const Pattern* pattern, const std::string& subject)
{
    if (pattern == nullptr)
    {
        std::puts(" refused");
        return;
    }
    const Match match = pattern->Find(subject);
    if (!match)
        std::fputs(match.Error() != nullptr ? " error" : " none", stdout);
    for (std::size_t group = 0; group < match.Count(); ++group)
        if (match.Has(group))
            PrintHex(match[group]);
        else
            std::fputs(" -", stdout);
    std::putchar('\n');
}

void Compare(const Compiled& compiled, unsigned int options, const std::string& subject)
{
    int agreed = 0;
    int differed = 0;
    int refused = 0;
    for (unsigned int each = 0; each < s_uCombinations; ++each)
    {
        const Pattern* const pattern = compiled.patterns[each].get();
        const BarePattern& bare = *compiled.bare[each];
        if ((pattern != nullptr) != bare.IsCompiled())
            ++differed;
        else if (pattern == nullptr)
            ++refused;
        else
            ++(Agree(*pattern, bare, subject) ? agreed : differed);
    }
    std::printf("%d %d %d", agreed, differed, refused);
    PrintFirst(compiled.patterns[options].get(), subject);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    std::ifstream file(argv[1]);
    std::string last;
    Compiled compiled;
    for (std::string line; std::getline(file, line);)
    {
        std::istringstream parts(line);
        unsigned int options = 0;
        std::string pattern;
        std::string subject;
        parts >> options >> pattern >> subject;
        if (pattern != last)
            compiled = Compile(Unhex(pattern));
        last = pattern;
        Compare(compiled, options % s_uCombinations, Unhex(subject));
    }
    return 0;
}
