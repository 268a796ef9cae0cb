// SPDX-License-Identifier: MIT
#include "toolkit/internal/wx/TextReader.h"

#include <wx/stream.h>

#include "toolkit/internal/wx/WxLibrary.h"

namespace Toolkit
{

namespace
{

bool IsLineEnd(wchar_t character)
{
    return character == L'\n' || character == L'\r';
}

bool IsBlank(wchar_t character)
{
    return character == L' ' || character == L'\t';
}

} // namespace

TextReader::TextReader(wxInputStream* stream) : m_pStream(stream) {}

bool TextReader::ReadWord(TString<wchar_t>& word)
{
    const WxLibrary::Silence silence;
    word.clear();
    wchar_t character = L' ';
    bool read = true;
    while (read && (IsBlank(character) || IsLineEnd(character)))
        read = ReadCharacter(character);
    while (read && character != L'\0' && !IsBlank(character) && !IsLineEnd(character))
    {
        word += character;
        read = ReadCharacter(character);
    }
    if (read)
        EndLine(character);
    return !word.empty();
}

bool TextReader::ReadLine(TString<wchar_t>& line)
{
    const WxLibrary::Silence silence;
    line.clear();
    wchar_t character = L'\0';
    while (ReadCharacter(character))
    {
        if (IsLineEnd(character))
        {
            EndLine(character);
            return true;
        }
        line += character;
    }
    return !line.empty();
}

// An unusable stream is not asked: a closed one would complain.
bool TextReader::ReadByte(char& byte)
{
    return m_pStream != nullptr && m_pStream->IsOk() && m_pStream->Read(&byte, 1).LastRead() == 1;
}

bool TextReader::ReadCharacter(wchar_t& character)
{
    if (!m_bBegun)
        ReadMark();
    m_strBytes.clear();
    std::size_t length = m_encoding.GetUnitLength();
    while (!m_bBroken && m_strBytes.size() < length)
    {
        char byte = '\0';
        if (!ReadByte(byte))
        {
            m_bBroken = !m_strBytes.empty();
            return false;
        }
        m_strBytes += byte;
        if (m_strBytes.size() == m_encoding.GetUnitLength())
            length = m_encoding.GetCharacterLength(m_strBytes.data());
    }
    m_bBroken = m_bBroken || !m_encoding.Decode(m_strBytes, m_strCharacter);
    if (!m_bBroken)
        character = m_strCharacter[0];
    return !m_bBroken;
}

void TextReader::ReadMark()
{
    m_bBegun = true;
    TString<char> bytes;
    char byte = '\0';
    while (TextEncoding::MayBecomeMark(bytes.data(), bytes.size()) && ReadByte(byte))
        bytes += byte;
    m_encoding = TextEncoding(bytes.data(), bytes.size());
    const std::size_t mark = m_encoding.GetMarkLength();
    if (bytes.size() > mark)
        m_pStream->Ungetch(bytes.data() + mark, bytes.size() - mark);
}

// Takes the second half of "\r\n" too, and gives anything else back.
void TextReader::EndLine(wchar_t character)
{
    if (character != L'\r')
        return;
    m_strBytes.clear();
    char byte = '\0';
    while (m_strBytes.size() < m_encoding.GetUnitLength() && ReadByte(byte))
        m_strBytes += byte;
    const bool newLine = m_encoding.Decode(m_strBytes, m_strCharacter) && m_strCharacter == L"\n";
    if (!newLine && !m_strBytes.empty())
        m_pStream->Ungetch(m_strBytes.data(), m_strBytes.size());
}

} // namespace Toolkit
