// SPDX-License-Identifier: MIT
#include "toolkit/regExp/Pattern.h"

#include <algorithm>
#include <utility>

#include "toolkit/internal/regex/RegexPart.h"

namespace Toolkit
{

namespace
{

// ---- compilation

std::uint32_t ToPcre2(Pattern::Options options)
{
    std::uint32_t translated = 0;
    translated |= (options & Pattern::IgnoreCase) != 0 ? PCRE2_CASELESS : 0;
    translated |= (options & Pattern::Multiline) != 0 ? PCRE2_MULTILINE : 0;
    translated |= (options & Pattern::DotAll) != 0 ? PCRE2_DOTALL : 0;
    translated |= (options & Pattern::Extended) != 0 ? PCRE2_EXTENDED : 0;
    return translated;
}

// PCRE2's numbers for patterns that are too much for it: levels, size, complexity, groups.
bool IsTooMuch(int number)
{
    const int numbers[] = {119, 120, 135, 184, 186, 187, 188, 197};
    return std::find(std::begin(numbers), std::end(numbers), number) != std::end(numbers);
}

std::string CannotCompile(std::string_view pattern)
{
    return "cannot compile the pattern \"" + std::string(pattern) + "\": ";
}

Failure CompileFailure(std::string_view pattern, const CompiledPattern::Error& error)
{
    return Failure(IsTooMuch(error.number) ? Errc::LimitReached : Errc::Malformed,
                   CannotCompile(pattern) + error.text + " at byte " + std::to_string(error.offset));
}

// ---- replacement texts

// A part of a replacement text: the text up to a group, and the group.
struct Part
{
    std::string_view text;
    std::size_t group = CompiledPattern::s_uNoGroup;
    std::string_view name;
};

class ReplacementReader
{
public:
    ReplacementReader(const CompiledPattern& pattern, std::string_view replacement)
        : m_pattern(pattern), m_strReplacement(replacement), m_strRest(replacement)
    {
    }

    Result<std::vector<Part>> Read()
    {
        std::vector<Part> parts;
        while (!m_strRest.empty())
        {
            const std::size_t dollar = std::min(m_strRest.find('$'), m_strRest.size());
            Part part;
            part.text = m_strRest.substr(0, dollar);
            m_strRest.remove_prefix(dollar);
            if (m_strRest.substr(0, 2) == "$$")
            {
                part.text = std::string_view(part.text.data(), part.text.size() + 1);
                m_strRest.remove_prefix(2);
            }
            else if (!m_strRest.empty() && !ReadGroup(part))
                return Problem();
            parts.push_back(part);
        }
        return parts;
    }

private:
    static bool IsDigit(char character) { return character >= '0' && character <= '9'; }

    // Reads "$1", "${1}" or "${name}".
    bool ReadGroup(Part& part)
    {
        m_strUnknown = std::string_view();
        std::string_view name = m_strRest.substr(1);
        if (name.substr(0, 1) == "{")
        {
            const std::size_t end = name.find('}');
            if (end == name.npos)
                return false;
            name = name.substr(1, end - 1);
            m_strRest.remove_prefix(end + 2);
        }
        else
        {
            name = name.substr(0, static_cast<std::size_t>(
                                      std::find_if_not(name.begin(), name.end(), IsDigit) - name.begin()));
            if (name.empty())
                return false;
            m_strRest.remove_prefix(name.size() + 1);
        }
        return FindGroup(name, part);
    }

    bool FindGroup(std::string_view name, Part& part)
    {
        m_strUnknown = name;
        if (name.empty() || !std::all_of(name.begin(), name.end(), IsDigit))
        {
            part.name = name;
            part.group = LoadedRegex().findGroup(m_pattern, name, nullptr);
            return part.group != CompiledPattern::s_uNoGroup;
        }
        part.group = 0;
        for (const char digit : name)
        {
            part.group = 10 * part.group + static_cast<std::size_t>(digit - '0');
            if (part.group > m_pattern.GetGroupCount())
                return false;
        }
        return true;
    }

    Failure Problem() const
    {
        const std::string what = "cannot replace by \"" + std::string(m_strReplacement) + "\": ";
        if (m_strUnknown.data() != nullptr)
            return Failure(Errc::Malformed,
                           what + "the pattern has no group \"" + std::string(m_strUnknown) + "\"");
        return Failure(Errc::Malformed, what + "after \"$\" comes neither a group nor another \"$\"");
    }

    const CompiledPattern& m_pattern;
    const std::string_view m_strReplacement;
    std::string_view m_strRest;
    // The last group that was looked for.
    std::string_view m_strUnknown;
};

} // namespace

Pattern::Pattern(std::shared_ptr<const CompiledPattern> pattern) noexcept : m_pPattern(std::move(pattern)) {}

Result<Pattern> Pattern::Compile(std::string_view pattern, Options options, const PatternLimits& limits)
{
    const Result<const RegexCalls*> regex = LoadRegex();
    if (!regex)
        return Failure(regex.error().Code(), CannotCompile(pattern) + regex.error().Message());
    CompiledPattern::Error error;
    std::shared_ptr<const CompiledPattern> compiled =
        (*regex)->compilePattern(pattern, {ToPcre2(options), limits.GetSteps(), limits.GetMemory()}, error);
    if (compiled == nullptr)
        return CompileFailure(pattern, error);
    return Pattern(std::move(compiled));
}

Match Pattern::Find(std::string_view text) const
{
    return Match(LoadedRegex().search(m_pPattern, text));
}

Matches Pattern::All(std::string_view text) const
{
    return Matches(m_pPattern, text);
}

Result<std::string> Pattern::Replace(std::string_view text, std::string_view replacement) const
{
    const Result<std::vector<Part>> parts = ReplacementReader(*m_pPattern, replacement).Read();
    if (!parts)
        return parts.error();
    return ReplaceEach(text,
                       [&parts](const Match& match, std::string& to)
                       {
                           for (const Part& part : *parts)
                           {
                               to += part.text;
                               to += part.name.empty() ? match[part.group] : match[part.name];
                           }
                       });
}

Result<std::string> Pattern::ReplaceEach(std::string_view text,
                                         const std::function<void(const Match&, std::string&)>& append) const
{
    std::string replaced;
    std::size_t end = 0;
    for (const Match& match : All(text))
    {
        if (!match)
            return *match.Error();
        replaced += text.substr(end, match.Position() - end);
        append(match, replaced);
        end = match.Position() + match.Length();
    }
    replaced += text.substr(end);
    return replaced;
}

Result<std::vector<std::string_view>> Pattern::Split(std::string_view text) const
{
    std::vector<std::string_view> parts;
    std::size_t end = 0;
    for (const Match& match : All(text))
    {
        if (!match)
            return *match.Error();
        parts.push_back(text.substr(end, match.Position() - end));
        for (std::size_t group = 1; group < match.Count(); ++group)
            parts.push_back(match[group]);
        end = match.Position() + match.Length();
    }
    parts.push_back(text.substr(end));
    return parts;
}

} // namespace Toolkit
