// SPDX-License-Identifier: MIT
#include "toolkit/files/TextFile.h"

#include <cerrno>
#include <cwchar>
#include <new>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/SafeReplace.h"
#include "toolkit/internal/system/Transfer.h"
#include "toolkit/internal/text/TextEncoding.h"

namespace Toolkit
{

namespace
{

// What is read at once where the system does not tell a file's length.
const std::size_t s_uSlice = 65536;

// Reads to the end, wherever that is: the file may change while it is read.
bool ReadAll(int descriptor, std::size_t expected, TString<char>& bytes)
{
    std::size_t have = 0;
    // One more than expected, so that the end is met without another slice.
    bytes.resize(expected + 1);
    for (;;)
    {
        have += ReadUpTo(descriptor, &bytes[have], bytes.size() - have);
        if (have < bytes.size())
            break;
        bytes.resize(have + have / 2 + s_uSlice);
    }
    const bool whole = errno == 0;
    bytes.resize(have);
    return whole;
}

bool ReadFile(const NativePath& path, TString<char>& bytes)
{
    const Descriptor descriptor = path.Open(O_RDONLY);
    struct stat status = {};
    return fstat(descriptor.Get(), &status) == 0 && S_ISREG(status.st_mode) &&
           ReadAll(descriptor.Get(), static_cast<std::size_t>(status.st_size), bytes);
}

} // namespace

TextFile::TextFile() : m_uCurrent(0) {}

TextFile::~TextFile() = default;

bool TextFile::Open(const TString<wchar_t>& path)
{
    TString<wchar_t> name(path);
    Close();
    TString<char> bytes;
    if (!ReadFile(NativePath(name), bytes))
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
    return !m_strPath.empty() && TextEncoding::Encode(m_strText, bytes) &&
           SafeReplace::Write(NativePath(m_strPath), bytes);
}

void TextFile::Close()
{
    m_strPath.clear();
    Clear();
}

std::vector<TextFile::Line> TextFile::FindLines(const TString<wchar_t>& text)
{
    std::vector<Line> lines;
    const std::size_t size = text.size();
    for (std::size_t begin = 0; begin < size;)
    {
        std::size_t end = begin;
        while (end < size && text[end] != L'\n' && text[end] != L'\r')
            ++end;
        lines.push_back({begin, end - begin});
        begin = end + 1;
        if (begin < size && text[end] == L'\r' && text[begin] == L'\n')
            ++begin;
    }
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
