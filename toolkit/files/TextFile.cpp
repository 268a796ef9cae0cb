// SPDX-License-Identifier: MIT
#include "toolkit/files/TextFile.h"

#include <cwchar>
#include <limits>
#include <new>

#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/ReadWhole.h"
#include "toolkit/internal/system/SafeReplace.h"
#include "toolkit/internal/text/TextEncoding.h"
#include "toolkit/internal/text/TextLines.h"

namespace Toolkit
{

TextFile::TextFile() : m_uMode(0), m_uCurrent(0) {}

TextFile::~TextFile() = default;

bool TextFile::Open(const TString<wchar_t>& path)
{
    TString<wchar_t> name(path);
    Close();
    TString<char> bytes;
    const Result<mode_t> mode =
        ReadWhole(NativePath(name).GetBytes(), std::numeric_limits<std::size_t>::max(), bytes);
    if (!mode)
        return false;
    const TextEncoding encoding(bytes.data(), bytes.size());
    bytes.erase(0, encoding.GetMarkLength());
    TString<wchar_t> text;
    if (!encoding.Decode(bytes, text))
        return false;
    // Taken over once all of it is there: a part must not be written back.
    m_lines = FindLines(text);
    m_strText.swap(text);
    m_strPath.swap(name);
    m_uMode = *mode;
    return true;
}

TString<wchar_t> TextFile::GetFirstLine()
{
    if (!m_lines.empty())
        m_uCurrent = 0;
    return GetCurrentLine();
}

TString<wchar_t> TextFile::GetNextLine()
{
    if (m_uCurrent < m_lines.size())
        ++m_uCurrent;
    return GetCurrentLine();
}

bool TextFile::Eof() const
{
    return m_uCurrent == m_lines.size();
}

void TextFile::AddLine(const TString<wchar_t>& line)
{
    const std::size_t before = m_strText.size();
    try
    {
        if (!m_lines.empty() && m_lines.back().m_uBegin + m_lines.back().m_uLength == before)
            m_strText += L'\n';
        const std::size_t begin = m_strText.size();
        m_strText += line;
        m_strText += L'\n';
        m_lines.push_back({begin, line.size()});
    }
    catch (const std::bad_alloc&)
    {
        m_strText.resize(before);
        throw;
    }
}

void TextFile::Clear()
{
    m_strText.clear();
    m_lines.clear();
    m_uCurrent = 0;
}

bool TextFile::Write()
{
    TString<char> bytes;
    if (m_strPath.empty() || !TextEncoding::Encode(m_strText, bytes))
        return false;
    SafeReplace::Options options;
    options.m_uMode = m_uMode;
    options.m_bWasThere = true;
    return SafeReplace::Write(NativePath(m_strPath), bytes, options).has_value();
}

void TextFile::Close()
{
    m_strPath.clear();
    Clear();
}

std::vector<TextFile::Line> TextFile::FindLines(const TString<wchar_t>& text)
{
    std::vector<Line> lines;
    ForEachLine(std::wstring_view(text),
                [&](const TextLine<wchar_t>& line)
                {
                    const auto begin = static_cast<std::size_t>(line.m_text.data() - text.data());
                    lines.push_back({begin, line.m_text.size()});
                });
    return lines;
}

TString<wchar_t> TextFile::GetCurrentLine() const
{
    if (Eof())
        return TString<wchar_t>();
    const Line& line = m_lines[m_uCurrent];
    return TString<wchar_t>(m_strText.substr(line.m_uBegin, line.m_uLength));
}

} // namespace Toolkit
