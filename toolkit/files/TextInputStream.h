// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_TEXTINPUTSTREAM_H
#define TOOLKIT_FILES_TEXTINPUTSTREAM_H

#include <memory>

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/files/InputStream.h"

class wxInputStream;

namespace Toolkit
{

class TextReader;

/// Reads words from a source of bytes that it owns. A byte-order mark at the beginning selects UTF-32, UTF-16
/// or UTF-8; without one the text is UTF-8. It belongs to one thread at a time. Failures are returned, not
/// logged.
///
/// @code
/// Toolkit::TextInputStream words(new wxStringInputStream("one two"));
/// Toolkit::TString<wchar_t> word;
/// words >> word; // one
/// @endcode
class TOOLKIT_API TextInputStream : public InputStream
{
public:
    /// Takes ownership of `stream`; null stands for a stream without anything in it.
    explicit TextInputStream(wxInputStream* stream);
    ~TextInputStream() override;

    /// Reads the next word, which ends at a space, a tab or a line's end; empty at the end of the text. A
    /// word also ends at broken text, after which nothing is read.
    /// Quirk: a NUL character ends a word as well, and where a word should begin it makes an empty one.
    TextInputStream& operator>>(TString<wchar_t>& word);

private:
    const std::unique_ptr<TextReader> m_pReader;
};

} // namespace Toolkit

#endif
