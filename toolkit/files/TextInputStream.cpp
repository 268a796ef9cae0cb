// SPDX-License-Identifier: MIT
#include "toolkit/files/TextInputStream.h"

#include <wx/stream.h>

#include "toolkit/internal/wx/TextReader.h"

namespace Toolkit
{

TextInputStream::TextInputStream(wxInputStream* stream)
    : InputStream(stream), m_pReader(std::make_unique<TextReader>(GetStream()))
{
}

TextInputStream::~TextInputStream() = default;

TextInputStream& TextInputStream::operator>>(TString<wchar_t>& word)
{
    m_pReader->ReadWord(word);
    return *this;
}

} // namespace Toolkit
