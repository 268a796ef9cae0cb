// SPDX-License-Identifier: MIT
#include "toolkit/core/TString.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/internal/text/TextFind.h"

namespace Toolkit::Detail
{

namespace
{

// How many elements at the beginning of `what` also end it, up to each element of it.
std::vector<std::size_t> FindBorders(const std::wstring& what)
{
    std::vector<std::size_t> borders(what.size(), 0);
    for (std::size_t i = 1, same = 0; i < what.size(); ++i)
    {
        while (same != 0 && what[i] != what[same])
            same = borders[same - 1];
        same += what[i] == what[same] ? 1 : 0;
        borders[i] = same;
    }
    return borders;
}

// Moves the text element by element and keeps for each how much of a match ends there, so that nothing is
// compared anew after a match was taken away; the replacement is looked at like the text that follows it.
void ReplaceMatches(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    const std::vector<std::size_t> borders = FindBorders(what);
    std::wstring result;
    result.reserve(text.size());
    std::vector<std::size_t> matched;
    matched.reserve(text.size());
    // Of replacements that are still to be looked at, the next element last.
    std::wstring pending;
    for (std::size_t next = 0; !pending.empty() || next < text.size();)
    {
        wchar_t element = 0;
        if (pending.empty())
        {
            element = text[next++];
        }
        else
        {
            element = pending.back();
            pending.pop_back();
        }
        std::size_t same = matched.empty() ? 0 : matched.back();
        while (same != 0 && element != what[same])
            same = borders[same - 1];
        same += element == what[same] ? 1 : 0;
        result += element;
        matched.push_back(same);
        if (same != what.size())
            continue;
        result.resize(result.size() - what.size());
        matched.resize(matched.size() - what.size());
        pending.append(with.rbegin(), with.rend());
    }
    text = std::move(result);
}

// For what never ends.
void ReplaceEndlessly(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    for (std::size_t found = text.find(what); found != text.npos; found = text.find(what))
        text.replace(found, what.size(), with);
}

} // namespace

void Replace(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    if (&what == &text || &with == &text)
        Replace(text, std::wstring(what), std::wstring(with));
    else if (TextFind::In(text, what) == text.npos)
        return;
    else if (TextFind::In(with, what) != with.npos)
        ReplaceEndlessly(text, what, with);
    else
        ReplaceMatches(text, what, with);
}

} // namespace Toolkit::Detail
