// SPDX-License-Identifier: MIT
#include "toolkit/internal/ini/IniDocument.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <unordered_map>
#include <utility>

#include "toolkit/internal/ini/IniLine.h"
#include "toolkit/internal/text/TextLines.h"

namespace Toolkit
{

namespace
{

using Line = TextLine<char>;
using Parsed = IniLine<char>;

const std::uint32_t s_uNone = static_cast<std::uint32_t>(-1);
const std::size_t s_uWasteAllowed = 65536;
const std::size_t s_uUsualLine = 16;
const std::string_view c_strLineFeed = "\n";
const std::string_view c_strEquals = " = ";

// A line and its neighbours: lines come and go in the middle, and keep their numbers.
struct LinkedLine
{
    Line m_line;
    std::uint32_t m_uPrevious;
    std::uint32_t m_uNext;
};

// Values by their names, in the order in which they were added.
template <class Value>
struct InOrder
{
    // Null when there is none; valid until something is added.
    Value* Find(std::string_view name)
    {
        const auto found = m_places.find(name);
        return found == m_places.end() ? nullptr : &m_entries[found->second].second;
    }

    // The value of that name, a new one if there is none; valid until something is added.
    Value& Add(std::string_view name)
    {
        // Memory that runs out leaves no place without an entry.
        if (m_entries.size() == m_entries.capacity())
            m_entries.reserve(2 * m_entries.size() + 4);
        const auto [place, isNew] = m_places.try_emplace(name, m_entries.size());
        if (isNew)
            m_entries.emplace_back(name, Value());
        return m_entries[place->second].second;
    }

    std::vector<std::pair<std::string_view, Value>> m_entries;
    std::unordered_map<std::string_view, std::size_t> m_places;
};

bool HasLineEnd(std::string_view text)
{
    return text.find_first_of("\r\n") != text.npos;
}

bool SaysKey(std::string_view line, std::string_view key, std::string_view value)
{
    const Parsed parsed(line);
    return !HasLineEnd(line) && parsed.m_kind == Parsed::Key && parsed.m_name == key &&
           parsed.m_value == value;
}

bool SaysSection(std::string_view line, std::string_view section)
{
    const Parsed parsed(line);
    return !HasLineEnd(line) && parsed.m_kind == Parsed::Section && parsed.m_name == section;
}

std::size_t OffsetIn(std::string_view line, std::string_view part)
{
    return static_cast<std::size_t>(part.data() - line.data());
}

// A new line in the spacing of another one that is a key's.
std::string Alike(std::string_view line, std::string_view key, std::string_view value)
{
    const Parsed parsed(line);
    const std::size_t name = OffsetIn(line, parsed.m_name);
    const std::size_t nameEnd = name + parsed.m_name.size();
    const std::size_t valueBegin = OffsetIn(line, parsed.m_value);
    std::string made(line.substr(0, name));
    made.append(key).append(line.substr(nameEnd, valueBegin - nameEnd)).append(value);
    return made;
}

std::string Plain(std::string_view key, std::string_view value)
{
    return std::string(key).append(c_strEquals).append(value);
}

} // namespace

// One that was removed has no line.
struct IniDocument::Entry
{
    std::string_view m_value;
    std::uint32_t m_uLine = s_uNone;
    bool m_bRepeated = false;
};

// One that is not in the text has no last line: that of its last key, or its head.
struct IniDocument::SectionKeys
{
    InOrder<Entry> m_keys;
    std::uint32_t m_uLast = s_uNone;
};

struct IniDocument::State
{
    explicit State(std::string text) : m_strText(std::move(text))
    {
        m_lines.reserve(m_strText.size() / s_uUsualLine);
        SectionKeys* current = nullptr;
        ForEachLine(std::string_view(m_strText), [&](const Line& line) { Read(line, current); });
    }

    // Takes the line in as the last one.
    void Read(const Line& line, SectionKeys*& current)
    {
        const std::uint32_t number = AddLine(line);
        LinkAfter(m_uLast, number);
        const Parsed parsed(line.m_text);
        if (parsed.m_kind == Parsed::Section)
            current = &m_sections.Add(parsed.m_name);
        if (parsed.m_kind == Parsed::Ignored || current == nullptr)
            return;
        current->m_uLast = number;
        if (parsed.m_kind == Parsed::Section)
            return;
        Entry& entry = current->m_keys.Add(parsed.m_name);
        if (entry.m_uLine == s_uNone)
            entry = {parsed.m_value, number, false};
        else
            entry.m_bRepeated = true;
    }

    std::uint32_t AddLine(const Line& line)
    {
        m_lines.push_back({line, s_uNone, s_uNone});
        return static_cast<std::uint32_t>(m_lines.size() - 1);
    }

    // Keeps a text for as long as the state lives.
    std::string_view Keep(std::string text)
    {
        m_added.push_back(std::move(text));
        m_uWaste += m_added.back().size();
        return m_added.back();
    }

    void LinkAfter(std::uint32_t previous, std::uint32_t number)
    {
        std::uint32_t& next = previous == s_uNone ? m_uFirst : m_lines[previous].m_uNext;
        m_lines[number].m_uPrevious = previous;
        m_lines[number].m_uNext = next;
        (next == s_uNone ? m_uLast : m_lines[next].m_uPrevious) = number;
        next = number;
    }

    void Unlink(std::uint32_t number)
    {
        const LinkedLine& line = m_lines[number];
        (line.m_uPrevious == s_uNone ? m_uFirst : m_lines[line.m_uPrevious].m_uNext) = line.m_uNext;
        (line.m_uNext == s_uNone ? m_uLast : m_lines[line.m_uNext].m_uPrevious) = line.m_uPrevious;
    }

    std::string_view LineEnd() const
    {
        const bool hasOne = m_uFirst != s_uNone && !m_lines[m_uFirst].m_line.m_end.empty();
        return hasOne ? m_lines[m_uFirst].m_line.m_end : c_strLineFeed;
    }

    // A line in whose spacing a new key of that section is written; empty without any key.
    std::string_view Model(std::uint32_t last) const
    {
        if (last != s_uNone && Parsed(m_lines[last].m_line.m_text).m_kind == Parsed::Key)
            return m_lines[last].m_line.m_text;
        for (std::uint32_t i = m_uFirst; i != s_uNone; i = m_lines[i].m_uNext)
            if (Parsed(m_lines[i].m_line.m_text).m_kind == Parsed::Key)
                return m_lines[i].m_line.m_text;
        return {};
    }

    const Entry* FindEntry(std::string_view section, std::string_view key)
    {
        SectionKeys* const keys = m_sections.Find(section);
        const Entry* const entry = keys != nullptr ? keys->m_keys.Find(key) : nullptr;
        return entry != nullptr && entry->m_uLine != s_uNone ? entry : nullptr;
    }

    const std::string m_strText;
    std::deque<std::string> m_added;
    std::vector<LinkedLine> m_lines;
    std::uint32_t m_uFirst = s_uNone;
    std::uint32_t m_uLast = s_uNone;
    InOrder<SectionKeys> m_sections;
    // What is kept of lines that were added, some of which others have taken the place of.
    std::size_t m_uWaste = 0;
};

IniDocument::IniDocument(std::string text) : m_pState(std::make_unique<State>(std::move(text))) {}

IniDocument::~IniDocument() = default;

std::optional<std::string_view> IniDocument::Find(std::string_view section, std::string_view key) const
{
    const Entry* const entry = m_pState->FindEntry(section, key);
    return entry != nullptr ? std::make_optional(entry->m_value) : std::nullopt;
}

std::vector<std::string> IniDocument::Sections() const
{
    std::vector<std::string> names;
    for (const auto& [name, keys] : m_pState->m_sections.m_entries)
        if (keys.m_uLast != s_uNone)
            names.emplace_back(name);
    return names;
}

std::vector<std::string> IniDocument::Keys(std::string_view section) const
{
    std::vector<std::string> names;
    if (SectionKeys* const keys = m_pState->m_sections.Find(section))
        for (const auto& [name, entry] : keys->m_keys.m_entries)
            if (entry.m_uLine != s_uNone)
                names.emplace_back(name);
    return names;
}

bool IniDocument::Set(std::string_view section, std::string_view key, std::string_view value)
{
    TidyUp();
    SectionKeys* const keys = m_pState->m_sections.Find(section);
    if (keys == nullptr || keys->m_uLast == s_uNone)
        return AppendSection(section, key, value);
    Entry* const entry = keys->m_keys.Find(key);
    if (entry == nullptr)
        return Append(section, key, value);
    if (entry->m_uLine != s_uNone)
        return Replace(*entry, key, value);
    // It would get the place in the table that it had before.
    m_pState = std::make_unique<State>(ToText());
    return Append(section, key, value);
}

bool IniDocument::Replace(Entry& entry, std::string_view key, std::string_view value)
{
    if (entry.m_value == value)
        return true;
    std::string_view& line = m_pState->m_lines[entry.m_uLine].m_line.m_text;
    const std::size_t begin = OffsetIn(line, entry.m_value);
    std::string made(line.substr(0, begin));
    made.append(value).append(line.substr(begin + entry.m_value.size()));
    if (!SaysKey(made, key, value))
        return false;
    line = m_pState->Keep(std::move(made));
    entry.m_value = line.substr(begin, value.size());
    return true;
}

bool IniDocument::Append(std::string_view section, std::string_view key, std::string_view value)
{
    SectionKeys& keys = *m_pState->m_sections.Find(section);
    const std::string_view model = m_pState->Model(keys.m_uLast);
    std::string made = model.empty() ? Plain(key, value) : Alike(model, key, value);
    if (!SaysKey(made, key, value))
        return false;
    const std::string_view line = m_pState->Keep(std::move(made));
    const std::uint32_t number = m_pState->AddLine({line, {}});
    const Parsed parsed(line);
    keys.m_keys.Add(parsed.m_name) = {parsed.m_value, number, false};

    // Nothing fails from here on. A last line without an end hands that on.
    std::string_view& lastEnd = m_pState->m_lines[keys.m_uLast].m_line.m_end;
    m_pState->m_lines[number].m_line.m_end = lastEnd;
    if (lastEnd.empty())
        lastEnd = m_pState->LineEnd();
    m_pState->LinkAfter(keys.m_uLast, number);
    keys.m_uLast = number;
    return true;
}

bool IniDocument::AppendSection(std::string_view section, std::string_view key, std::string_view value)
{
    std::string newHead = "[" + std::string(section) + "]";
    const std::string_view model = m_pState->Model(s_uNone);
    std::string newLine = model.empty() ? Plain(key, value) : Alike(model, key, value);
    if (!SaysSection(newHead, section) || !SaysKey(newLine, key, value))
        return false;
    State& state = *m_pState;
    const std::string_view end = state.LineEnd();
    const std::uint32_t last = state.m_uLast;
    const std::uint32_t gap = state.AddLine({{}, end});
    const std::uint32_t head = state.AddLine({state.Keep(std::move(newHead)), end});
    const std::uint32_t line = state.AddLine({state.Keep(std::move(newLine)), end});
    const Parsed parsed(state.m_lines[line].m_line.m_text);
    SectionKeys& keys = state.m_sections.Add(Parsed(state.m_lines[head].m_line.m_text).m_name);
    keys.m_keys.Add(parsed.m_name) = {parsed.m_value, line, false};

    // Nothing fails from here on.
    keys.m_uLast = line;
    if (last != s_uNone)
    {
        std::string_view& lastEnd = state.m_lines[last].m_line.m_end;
        lastEnd = lastEnd.empty() ? end : lastEnd;
        state.LinkAfter(last, gap);
    }
    state.LinkAfter(state.m_uLast, head);
    state.LinkAfter(head, line);
    return true;
}

bool IniDocument::Remove(std::string_view section, std::string_view key)
{
    SectionKeys* const keys = m_pState->m_sections.Find(section);
    Entry* const entry = keys != nullptr ? keys->m_keys.Find(key) : nullptr;
    if (entry == nullptr || entry->m_uLine == s_uNone)
        return false;
    const std::uint32_t number = entry->m_uLine;
    const bool repeated = entry->m_bRepeated;
    if (!repeated)
    {
        if (keys->m_uLast == number)
            keys->m_uLast = m_pState->m_lines[number].m_uPrevious;
        m_pState->Unlink(number);
        entry->m_uLine = s_uNone;
        return true;
    }
    std::string text;
    bool inSection = false;
    for (std::uint32_t i = m_pState->m_uFirst; i != s_uNone; i = m_pState->m_lines[i].m_uNext)
    {
        const Line& line = m_pState->m_lines[i].m_line;
        const Parsed parsed(line.m_text);
        if (parsed.m_kind == Parsed::Section)
            inSection = parsed.m_name == section;
        if (!inSection || parsed.m_kind != Parsed::Key || parsed.m_name != key)
            text.append(line.m_text).append(line.m_end);
    }
    m_pState = std::make_unique<State>(std::move(text));
    return true;
}

std::string IniDocument::ToText() const
{
    std::size_t size = 0;
    const auto forEach = [this](auto take)
    {
        for (std::uint32_t i = m_pState->m_uFirst; i != s_uNone; i = m_pState->m_lines[i].m_uNext)
            take(m_pState->m_lines[i].m_line);
    };
    forEach([&](const Line& line) { size += line.m_text.size() + line.m_end.size(); });
    std::string text;
    text.reserve(size);
    forEach([&](const Line& line) { text.append(line.m_text).append(line.m_end); });
    return text;
}

// Lets go of the lines that others have taken the place of, once they are many.
void IniDocument::TidyUp()
{
    if (m_pState->m_uWaste > s_uWasteAllowed + m_pState->m_strText.size())
        m_pState = std::make_unique<State>(ToText());
}

} // namespace Toolkit
