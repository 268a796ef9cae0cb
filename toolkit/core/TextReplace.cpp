#include "toolkit/core/TString.h"

#include <algorithm>
#include <utility>

namespace Toolkit::Detail
{

namespace
{

// True when no occurrence of `what` can overlap an occurrence of `with`, so that a replacement creates no
// match.
bool IsIndependent(const std::wstring& what, const std::wstring& with)
{
    if (with.empty() || with.find(what) != with.npos || what.find(with) != what.npos)
        return false;
    for (std::size_t count = 1; count < std::min(what.size(), with.size()); ++count)
        if (what.compare(0, count, with, with.size() - count, count) == 0 ||
            what.compare(what.size() - count, count, with, 0, count) == 0)
            return false;
    return true;
}

void ReplaceIndependent(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    std::size_t found = text.find(what);
    if (found == text.npos)
        return;
    std::wstring result;
    result.reserve(text.size());
    std::size_t done = 0;
    for (; found != text.npos; found = text.find(what, done))
    {
        result.append(text, done, found - done);
        result += with;
        done = found + what.size();
    }
    result.append(text, done);
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

// The next match can begin at the earliest where its last element is the first one replaced.
void ReplaceResuming(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    const std::size_t overlap = what.empty() ? 0 : what.size() - 1;
    for (std::size_t found = text.find(what); found != text.npos;
         found = text.find(what, found - std::min(found, overlap)))
        text.replace(found, what.size(), with);
}

} // namespace

void Replace(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    if (&what == &text || &with == &text)
        Replace(text, std::wstring(what), std::wstring(with));
    else if (text.find(what) == text.npos)
        return;
    else if (IsIndependent(what, with))
        ReplaceIndependent(text, what, with);
    else if (with.size() <= what.size() && with != what)
        ReplaceShrinking(text, what, with);
    else
        ReplaceResuming(text, what, with);
}

} // namespace Toolkit::Detail
