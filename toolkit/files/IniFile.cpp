// SPDX-License-Identifier: MIT
#include "toolkit/files/IniFile.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string_view>
#include <unordered_map>

#include "toolkit/files/TextFile.h"
#include "toolkit/internal/ini/IniLine.h"
#include "toolkit/internal/text/ParseNumber.h"
#include "toolkit/log/LogLine.h"

namespace Toolkit
{

namespace
{

// Quirk: the line numbers of what is logged are fixed; they follow no source.
const unsigned int s_uOpenFailedLine = 64;

// What `>>` of a wide stream in the classic locale leaves in a number that was 0.
template <class Number>
Number ReadNumber(const TString<wchar_t>& text)
{
    Number number = 0;
    const wchar_t* next = text.data();
    ParseNumber::Read(next, next + text.size(), number);
    return number;
}

struct HashOfName
{
    std::size_t operator()(const TString<wchar_t>& name) const
    {
        return std::hash<std::wstring_view>()(name);
    }
};

template <class Value>
using ByName = std::unordered_map<TString<wchar_t>, Value, HashOfName>;

using Keys = ByName<TString<wchar_t>>;

// Null when there is none.
template <class Value>
const Value* Find(const ByName<Value>& values, const TString<wchar_t>& name)
{
    const auto found = values.find(name);
    return found == values.end() ? nullptr : &found->second;
}

} // namespace

// Few ask for a section's keys in their order, but all look single ones up.
struct IniFile::Sections
{
    void ParseLine(const TString<wchar_t>& line);

    ByName<Keys> m_table;
    Keys* m_pCurrent = nullptr;
};

void IniFile::Sections::ParseLine(const TString<wchar_t>& line)
{
    const IniLine<wchar_t> parsed(line);
    if (parsed.m_kind == parsed.Section)
        m_pCurrent = &m_table[TString<wchar_t>(parsed.m_name)];
    else if (parsed.m_kind == parsed.Key && m_pCurrent != nullptr)
        m_pCurrent->try_emplace(TString<wchar_t>(parsed.m_name), parsed.m_value);
}

IniFile::IniFile(const TString<wchar_t>& path) : m_pSections(std::make_unique<Sections>()), m_bLoaded(false)
{
    m_bLoaded = Parse(path);
}

IniFile::IniFile(const IniFile& other)
    : m_pSections(std::make_unique<Sections>(*other.m_pSections)), m_bLoaded(other.m_bLoaded)
{
    // A pointer of the copied object is of no use here; nothing is parsed but from the beginning.
    m_pSections->m_pCurrent = nullptr;
}

IniFile::~IniFile() = default;

IniFile& IniFile::operator=(const IniFile& other)
{
    IniFile copy(other);
    m_pSections.swap(copy.m_pSections);
    m_bLoaded = copy.m_bLoaded;
    return *this;
}

bool IniFile::Parse(const TString<wchar_t>& path)
{
    // Copied, for it may lie in the sections that go now.
    const TString<wchar_t> kept(path);
    *m_pSections = Sections();
    TextFile file;
    if (!file.Open(kept))
    {
        LogLine::Stream(LogSeverity::Error, s_uOpenFailedLine, "Parse", L"Unable to open file : " + kept);
        return false;
    }
    for (TString<wchar_t> line = file.GetFirstLine(); !file.Eof(); line = file.GetNextLine())
        m_pSections->ParseLine(line);
    file.Close();
    return true;
}

bool IniFile::HasSection(const TString<wchar_t>& section) const
{
    return Find(m_pSections->m_table, section) != nullptr;
}

bool IniFile::HasValue(const TString<wchar_t>& section, const TString<wchar_t>& key) const
{
    return FindValue(section, key) != nullptr;
}

const TString<wchar_t>& IniFile::GetValue(const TString<wchar_t>& section, const TString<wchar_t>& key,
                                          const TString<wchar_t>& defaultValue) const
{
    const TString<wchar_t>* const value = FindValue(section, key);
    return value != nullptr ? *value : defaultValue;
}

TString<wchar_t> IniFile::GetValue(const TString<wchar_t>& section, const TString<wchar_t>& key,
                                   const TString<wchar_t>&& defaultValue) const
{
    return GetValue(section, key, defaultValue);
}

unsigned int IniFile::GetUint32(const TString<wchar_t>& section, const TString<wchar_t>& key,
                                unsigned int defaultValue) const
{
    return GetNumber<unsigned int>(section, key, defaultValue);
}

int IniFile::GetInt32(const TString<wchar_t>& section, const TString<wchar_t>& key, int defaultValue) const
{
    return GetNumber<int>(section, key, defaultValue);
}

bool IniFile::GetBool(const TString<wchar_t>& section, const TString<wchar_t>& key, bool defaultValue) const
{
    return GetNumber<unsigned int>(section, key, defaultValue ? 1 : 0) == 1;
}

void IniFile::GetKeyList(const TString<wchar_t>& section, std::vector<TString<wchar_t>>& keys) const
{
    // Found first, for `section` may lie in `keys`.
    const Keys* const found = Find(m_pSections->m_table, section);
    keys.clear();
    if (found == nullptr)
        return;
    keys.reserve(found->size());
    for (const auto& [name, value] : *found)
        keys.push_back(name);
    std::sort(keys.begin(), keys.end());
}

const TString<wchar_t>* IniFile::FindValue(const TString<wchar_t>& section, const TString<wchar_t>& key) const
{
    const Keys* const keys = Find(m_pSections->m_table, section);
    return keys != nullptr ? Find(*keys, key) : nullptr;
}

template <class Number>
Number IniFile::GetNumber(const TString<wchar_t>& section, const TString<wchar_t>& key,
                          Number defaultValue) const
{
    const TString<wchar_t>* const value = FindValue(section, key);
    return value != nullptr && !value->empty() ? ReadNumber<Number>(*value) : defaultValue;
}

} // namespace Toolkit
