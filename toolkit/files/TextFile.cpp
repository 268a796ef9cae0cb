#include "toolkit/files/TextFile.h"

#include <cerrno>
#include <cwchar>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/files/NativePath.h"
#include "toolkit/files/SafeReplace.h"
#include "toolkit/files/TextEncoding.h"

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
        const ssize_t count = read(descriptor, &bytes[have], bytes.size() - have);
        if (count == 0)
            break;
        if (count > 0)
            have += static_cast<std::size_t>(count);
        else if (errno != EINTR)
            return false;
        if (have == bytes.size())
            bytes.resize(have + have / 2 + s_uSlice);
    }
    bytes.resize(have);
    return true;
}

bool ReadFile(const NativePath& path, TString<char>& bytes)
{
    const int descriptor = path.Open(O_RDONLY);
    if (descriptor == -1)
        return false;
    struct stat status = {};
    const bool read = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
                      ReadAll(descriptor, static_cast<std::size_t>(status.st_size), bytes);
    close(descriptor);
    return read;
}

} // namespace

TextFile::TextFile() : m_uCurrent(0) {}

TextFile::~TextFile() = default;

bool TextFile::Open(const TString<wchar_t>& path)
{
    Close();
    TString<char> bytes;
    if (!ReadFile(NativePath(path), bytes))
        return false;
    const TextEncoding encoding(bytes.data(), bytes.size());
    bytes.erase(0, encoding.GetMarkLength());
    if (!encoding.Decode(bytes, m_strText))
    {
        m_strText.clear();
        return false;
    }
    m_strPath = path;
    FindLines();
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
    if (!m_lines.empty() && m_lines.back().m_uBegin + m_lines.back().m_uLength == m_strText.size())
        m_strText += L'\n';
    m_lines.push_back({m_strText.size(), line.size()});
    m_strText += line;
    m_strText += L'\n';
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

void TextFile::FindLines()
{
    const std::size_t size = m_strText.size();
    for (std::size_t begin = 0; begin < size;)
    {
        std::size_t end = begin;
        while (end < size && m_strText[end] != L'\n' && m_strText[end] != L'\r')
            ++end;
        m_lines.push_back({begin, end - begin});
        begin = end + 1;
        if (begin < size && m_strText[end] == L'\r' && m_strText[begin] == L'\n')
            ++begin;
    }
}

TString<wchar_t> TextFile::GetCurrentLine() const
{
    if (Eof())
        return TString<wchar_t>();
    const Line& line = m_lines[m_uCurrent];
    return TString<wchar_t>(m_strText.substr(line.m_uBegin, line.m_uLength));
}

} // namespace Toolkit
