// SPDX-License-Identifier: MIT
#include "toolkit/core/TString.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/internal/text/SimdBlock.h"
#include "toolkit/internal/text/TextFind.h"

namespace Toolkit::Detail
{

namespace
{

// Up to that length each element of the text may be compared with all of what is replaced.
const std::size_t s_uShort = 64;

bool Equal(const wchar_t* a, const wchar_t* b, std::size_t count)
{
    std::size_t same = 0;
    while (same < count && a[same] == b[same])
        ++same;
    return same == count;
}

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
    bool MayMatch(const wchar_t* before, std::size_t beforeLength, const wchar_t* after,
                  std::size_t afterLength) const
    {
        const wchar_t* const what = m_what.data();
        for (const std::size_t count : m_begins)
            if (beforeLength >= count && Equal(before + beforeLength - count, what, count))
                return true;
        for (const std::size_t count : m_ends)
            if (afterLength >= m_what.size() - count && Equal(after, what + count, m_what.size() - count))
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

using Block = SimdBlock<wchar_t>;

// Copies whole blocks, the last of which may go beyond the length.
void CopyBlocks(const wchar_t* from, std::size_t length, wchar_t* to)
{
    for (std::size_t i = 0; i < length; i += Block::s_uCount)
        std::memcpy(to + i, from + i, sizeof(Block::Vector));
}

// Copies up to the first such element and answers where that is; `length` if there is none. A block of `to`
// may be overwritten up to its end.
std::size_t CopyUpTo(wchar_t element, const wchar_t* from, std::size_t length, wchar_t* to)
{
    std::size_t i = 0;
    for (; length - i >= Block::s_uCount; i += Block::s_uCount)
    {
        const Block::Vector elements = Block::Load(from + i);
        std::memcpy(to + i, &elements, sizeof elements);
        if (Block::Any(elements == static_cast<Block::Element>(element)))
            break;
    }
    for (; i < length && from[i] != element; ++i)
        to[i] = from[i];
    return i;
}

// For replacements that make no match with their neighbours: false, with the text as it was, as soon as one
// may.
bool ReplaceApart(std::wstring& text, const std::wstring& what, const std::wstring& with,
                  const Overlaps& overlaps)
{
    std::wstring blocks(with);
    blocks.resize(with.size() + Block::s_uCount);
    // Always room for a replacement more, and some where it is longer.
    const std::size_t more = with.size() > what.size() ? text.size() / 4 : 0;
    std::wstring result(text.size() + more + blocks.size(), L'\0');
    std::size_t done = 0;
    const wchar_t* next = text.data();
    const wchar_t* const end = next + text.size();
    while (next != end)
    {
        if (result.size() - done <= blocks.size())
            result.resize(2 * result.size() + blocks.size());
        const std::size_t left = static_cast<std::size_t>(end - next);
        const std::size_t length = std::min(left, result.size() - blocks.size() - done);
        const std::size_t copied = CopyUpTo(what[0], next, length, &result[done]);
        next += copied;
        done += copied;
        if (copied == length)
            continue;
        if (left - copied < what.size() || !Equal(next, what.data(), what.size()))
        {
            result[done++] = *next++;
            continue;
        }
        next += what.size();
        if (overlaps.MayMatch(result.data(), done, next, static_cast<std::size_t>(end - next)))
            return false;
        CopyBlocks(blocks.data(), with.size(), &result[done]);
        done += with.size();
    }
    result.resize(done);
    text = std::move(result);
    return true;
}

// Goes through the text once: `result` holds no match, and what a replacement may have made a match with is
// looked at again element by element.
void ReplaceOnce(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    const Overlaps overlaps(what, with);
    if (ReplaceApart(text, what, with, overlaps))
        return;
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
        if (!overlaps.MayMatch(result.data(), result.size(), &text[next], text.size() - next))
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
