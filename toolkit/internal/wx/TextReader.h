// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_WX_TEXTREADER_H
#define TOOLKIT_INTERNAL_WX_TEXTREADER_H

#include <cstddef>

#include "toolkit/core/TString.h"
#include "toolkit/internal/text/TextEncoding.h"

class wxInputStream;

namespace Toolkit
{

// Decodes one text from a source of bytes, which it does not own. It never takes more than it returns: after
// each operation the source stands right after the word or line and what ended it. A byte-order mark counts
// only where the reader begins. Broken text, a source that cannot be read and no source at all are the end.
class TextReader
{
public:
    explicit TextReader(wxInputStream* stream);

    TextReader(const TextReader&) = delete;
    TextReader& operator=(const TextReader&) = delete;

    // Both return true when something was read, an empty line being something.
    // A word ends at a space, a tab, a line's end or a NUL.
    bool ReadWord(TString<wchar_t>& word);
    // A line ends at "\n", "\r\n" or "\r", which is not part of it, or at the end of the text.
    bool ReadLine(TString<wchar_t>& line);

private:
    bool ReadByte(char& byte);
    bool ReadCharacter(wchar_t& character);
    void ReadMark();
    void EndLine(wchar_t character);

    wxInputStream* const m_pStream;
    TextEncoding m_encoding;
    TString<char> m_strBytes;
    TString<wchar_t> m_strCharacter;
    bool m_bBegun = false;
    bool m_bBroken = false;
};

} // namespace Toolkit

#endif
