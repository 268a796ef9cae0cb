// SPDX-License-Identifier: MIT
#include "toolkit/internal/log/ClassicLine.h"

#include <algorithm>
#include <utility>

namespace Toolkit
{

namespace
{

const std::wstring_view s_separator(L" : ");
const std::size_t s_uMostCharacters = 65536;

bool IsNumber(std::wstring_view text)
{
    return std::all_of(text.begin(), text.end(),
                       [](wchar_t character) { return character >= L'0' && character <= L'9'; });
}

unsigned int NumberOf(std::wstring_view digits)
{
    unsigned int number = 0;
    for (const wchar_t digit : digits)
        number = number * 10 + static_cast<unsigned int>(digit - L'0');
    return number;
}

// What stands before the next separator, which is taken away with it; nothing without one.
std::optional<std::wstring_view> TakeField(std::wstring_view& text)
{
    const std::size_t end = text.find(s_separator);
    if (end == std::wstring_view::npos)
        return std::nullopt;
    const std::wstring_view field = text.substr(0, end);
    text.remove_prefix(end + s_separator.size());
    return field;
}

} // namespace

std::optional<ClassicLine> ClassicLine::Of(std::wstring_view text)
{
    if (text.size() < 2 || text[0] < L'0' || text[0] > L'4' || text[1] != L' ')
        return std::nullopt;
    ClassicLine fields;
    fields.severity = NumberOf(text.substr(0, 1));
    text.remove_prefix(2);
    if (!text.empty() && text.back() == L'\n')
        text.remove_suffix(1);

    const std::optional<std::wstring_view> ticks = TakeField(text);
    const std::optional<std::wstring_view> line = TakeField(text);
    const std::optional<std::wstring_view> function = TakeField(text);
    if (!ticks || !line || !function || !IsNumber(*ticks) || line->empty())
        return std::nullopt;
    if (*line == L"wx")
        fields.function = *line;
    else if (IsNumber(*line) && line->size() <= 10)
    {
        fields.line = NumberOf(*line);
        fields.function = *function;
    }
    else
        return std::nullopt;
    fields.message = text;
    return fields;
}

std::vector<std::wstring> LineCollector::Add(std::uint64_t thread, std::wstring_view piece)
{
    std::vector<std::wstring> lines;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (std::size_t end = piece.find(L'\n'); end != std::wstring_view::npos; end = piece.find(L'\n'))
    {
        std::wstring line;
        if (const auto begun = m_begun.find(thread); begun != m_begun.end())
        {
            line = std::move(begun->second);
            m_begun.erase(begun);
        }
        line += piece.substr(0, end);
        lines.push_back(std::move(line));
        piece.remove_prefix(end + 1);
    }
    if (piece.empty())
        return lines;
    std::wstring& begun = m_begun[thread];
    begun += piece;
    if (begun.size() >= s_uMostCharacters)
    {
        lines.push_back(std::move(begun));
        m_begun.erase(thread);
    }
    return lines;
}

bool LineCollector::HasBegun(std::uint64_t thread)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_begun.count(thread) != 0;
}

std::map<std::uint64_t, std::wstring> LineCollector::TakeBegun()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_begun, {});
}

} // namespace Toolkit
