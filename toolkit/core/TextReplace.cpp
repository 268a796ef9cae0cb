#include "toolkit/core/TString.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "toolkit/core/TextFind.h"

namespace Toolkit::Detail
{

namespace
{

// Up to that length each element of the text may be compared with all of what is replaced.
const std::size_t s_uShort = 64;

// Which matches a replacement can make with its neighbours, where neither of `what` and `with` holds the
// other.
class Overlaps
{
public:
    Overlaps(const std::wstring& what, const std::wstring& with) : m_what(what)
    {
        for (std::size_t count = 1; count < what.size() && count <= with.size(); ++count)
        {
            if (what.compare(what.size() - count, count, with, 0, count) == 0)
                m_begins.push_back(what.size() - count);
            if (what.compare(0, count, with, with.size() - count, count) == 0)
                m_ends.push_back(count);
        }
    }

    // True when the replacement may have made a match with what stands before it or with what follows.
    bool MayMatch(const std::wstring& before, const wchar_t* after, std::size_t afterLength) const
    {
        for (const std::size_t count : m_begins)
            if (before.size() >= count && before.compare(before.size() - count, count, m_what, 0, count) == 0)
                return true;
        for (const std::size_t count : m_ends)
            if (afterLength >= m_what.size() - count &&
                std::char_traits<wchar_t>::compare(after, &m_what[count], m_what.size() - count) == 0)
                return true;
        return false;
    }

private:
    const std::wstring& m_what;
    // The elements of a match before a replacement with which it ends; those of it with which a replacement
    // ends.
    std::vector<std::size_t> m_begins;
    std::vector<std::size_t> m_ends;
};

// Goes through the text once: `result` holds no match, and what a replacement may have made a match with is
// looked at again element by element.
void ReplaceOnce(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    const Overlaps overlaps(what, with);
    std::wstring result;
    // Some room for a replacement that is longer.
    result.reserve(text.size() + (with.size() > what.size() ? text.size() / 4 : 0));
    // Replacements that are still to be looked at, the next element last.
    std::wstring pending;
    std::size_t next = 0;
    for (std::size_t found = text.find(what); found != text.npos; found = text.find(what, next))
    {
        result.append(text, next, found - next);
        next = found + what.size();
        if (!overlaps.MayMatch(result, &text[next], text.size() - next))
        {
            result += with;
            continue;
        }
        pending.assign(with.rbegin(), with.rend());
        // A match that begins behind the replacements is found by the search above.
        std::size_t apart = 0;
        while (apart + 1 < what.size() && (!pending.empty() || next < text.size()))
        {
            if (pending.empty())
            {
                result += text[next++];
                ++apart;
            }
            else
            {
                result += pending.back();
                pending.pop_back();
                apart = 0;
            }
            if (result.size() < what.size() || result.back() != what.back() ||
                result.compare(result.size() - what.size(), what.size(), what) != 0)
                continue;
            result.resize(result.size() - what.size());
            pending.append(with.rbegin(), with.rend());
            apart = 0;
        }
        result.resize(result.size() - apart);
        next -= apart;
    }
    result.append(text, next);
    text = std::move(result);
}

// Moves the text element by element to its front and takes each match away as it ends there. The replacement,
// which is no longer than the match, goes back in front of what is still to be moved.
void ReplaceShrinking(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    std::size_t done = text.find(what);
    std::size_t next = done;
    while (next < text.size())
    {
        text[done++] = text[next++];
        if (done < what.size() || text[done - 1] != what.back() ||
            text.compare(done - what.size(), what.size(), what) != 0)
            continue;
        done -= what.size();
        next -= with.size();
        with.copy(&text[next], with.size());
    }
    text.resize(done);
}

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

// Where `what` is long: moves the text element by element and keeps for each how much of a match ends there,
// so that nothing is compared anew after a match has gone.
void ReplaceLong(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    const std::vector<std::size_t> borders = FindBorders(what);
    std::wstring result;
    std::vector<std::size_t> matched;
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
    else if (TextFind<wchar_t>::In(text, what) == text.npos)
        return;
    else if (TextFind<wchar_t>::In(with, what) != with.npos)
        ReplaceEndlessly(text, what, with);
    else if (what.size() > s_uShort)
        ReplaceLong(text, what, with);
    else if (what.find(with) != what.npos)
        ReplaceShrinking(text, what, with);
    else
        ReplaceOnce(text, what, with);
}

} // namespace Toolkit::Detail
