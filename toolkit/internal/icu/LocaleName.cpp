// SPDX-License-Identifier: MIT
#include "toolkit/internal/icu/LocaleName.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace Toolkit
{

namespace
{

using View = std::string_view;

// What small letters have besides the bits of great ones.
const int s_iSmall = 0x20;

// The C library's own functions would follow the host's locale.
bool IsLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsLetterOrDigit(char c)
{
    return IsLetter(c) || IsDigit(c);
}

bool IsOfCharset(char c)
{
    return IsLetterOrDigit(c) || c == '-' || c == '_';
}

bool Is(View part, bool (*kind)(char), std::size_t least, std::size_t most)
{
    return part.size() >= least && part.size() <= most && std::all_of(part.begin(), part.end(), kind);
}

bool IsLanguage(View part)
{
    return Is(part, IsLetter, 2, 3);
}

bool IsScript(View part)
{
    return Is(part, IsLetter, 4, 4);
}

bool IsCountry(View part)
{
    return Is(part, IsLetter, 2, 2) || Is(part, IsDigit, 3, 3);
}

// "NY" is the only short one: "no_NO_NY" is an old name of Norwegian Nynorsk.
bool IsVariant(View part)
{
    return Is(part, IsLetterOrDigit, 4, 8) || part == "NY";
}

bool IsCharset(View part)
{
    return Is(part, IsOfCharset, 1, 32);
}

bool IsModifier(View part)
{
    return Is(part, IsLetterOrDigit, 1, 32);
}

// Cuts `name` at the first `mark` and returns what stands after it. False for a mark with something after
// it that is not of that kind; no mark is right.
bool CutAt(View& name, char mark, bool (*kind)(View), View& behind)
{
    const std::size_t found = name.find(mark);
    if (found == View::npos)
        return true;
    behind = name.substr(found + 1);
    name = name.substr(0, found);
    return kind(behind);
}

std::vector<View> Split(View text, char mark)
{
    std::vector<View> parts;
    std::size_t start = 0;
    for (std::size_t end = text.find(mark); end != View::npos; end = text.find(mark, start))
    {
        parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    parts.push_back(text.substr(start));
    return parts;
}

// As scripts are written; the text is of letters.
std::string Titled(View letters)
{
    std::string titled(letters);
    for (char& letter : titled)
        letter = static_cast<char>(&letter == &titled.front() ? letter & ~s_iSmall : letter | s_iSmall);
    return titled;
}

// The script that a modifier stands for; empty for every other modifier.
View ScriptOf(View modifier)
{
    static const struct
    {
        View modifier;
        View script;
    } rows[] = {
        {"latin", "Latn"},      {"iqtelif", "Latn"}, {"cyrillic", "Cyrl"},
        {"devanagari", "Deva"}, {"arabic", "Arab"},
    };
    for (const auto& row : rows)
        if (row.modifier == modifier)
            return row.script;
    return View();
}

} // namespace

LocaleName::LocaleName(const std::string& name)
{
    View rest = name;
    View modifier;
    View charset;
    if (!CutAt(rest, '@', IsModifier, modifier) || !CutAt(rest, '.', IsCharset, charset))
        return;
    const std::vector<View> parts = Split(rest, '_');
    auto part = parts.begin();
    const auto take = [&part, &parts](bool (*kind)(View))
    { return part != parts.end() && kind(*part) ? *part++ : View(); };
    const View language = take(IsLanguage);
    View script = take(IsScript);
    const View country = take(IsCountry);
    View variant = take(IsVariant);
    if (language.empty() || part != parts.end())
        return;
    if (script.empty())
        script = ScriptOf(modifier);
    if (variant.empty() && !country.empty() && modifier == "valencia")
        variant = "VALENCIA";

    m_strId = language;
    m_strScript = Titled(script);
    for (const View other : {View(m_strScript), country})
        if (!other.empty())
            m_strId.append("_").append(other);
    // Without a country its place stays empty: "be__tarask".
    if (!variant.empty())
        m_strId.append(country.empty() ? "__" : "_").append(variant);
}

const char* LocaleName::OfUser()
{
    for (const char* const variable : {"LC_ALL", "LC_TIME", "LANG"})
    {
        const char* const value = std::getenv(variable);
        if (value != nullptr && *value != '\0')
            return value;
    }
    return "";
}

LocaleName LocaleName::WithoutScript() const
{
    LocaleName name(*this);
    if (!m_strScript.empty())
        name.m_strId.erase(m_strId.find('_'), m_strScript.size() + 1);
    name.m_strScript.clear();
    return name;
}

} // namespace Toolkit
