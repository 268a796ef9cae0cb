// SPDX-License-Identifier: MIT
#include "mailtext/Mail.h"

#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/encoding/B64.h"
#include "toolkit/encoding/Bytes.h"
#include "toolkit/encoding/QP.h"
#include "toolkit/encoding/UTF8.h"

namespace Desk
{

namespace
{

// The value of the field when `line` holds it; field names have no case.
bool ReadField(const Text& line, const Text& field, Text& value)
{
    if (line.size() <= field.size() || Text(line.substr(0, field.size())).compareNoCase(field) != 0 ||
        line[field.size()] != L':')
        return false;
    const std::size_t start = line.find_first_not_of(L" \t", field.size() + 1);
    value = start == line.npos ? Text() : Text(line.substr(start));
    return true;
}

Text DecodeBase64(const Text& encoded)
{
    const Toolkit::smart_ptr<Toolkit::Bytes> bytes = Toolkit::B64::ToB64(encoded);
    unsigned char* data = nullptr;
    unsigned int size = 0;
    if (!bytes->GetBytes(&data, &size))
        return Text();
    const Text text =
        Toolkit::UTF8::ToUNICODE(Toolkit::TString<char>(std::string(reinterpret_cast<char*>(data), size)));
    delete[] data;
    return text;
}

// An encoded word of a header (RFC 2047), like "=?utf-8?Q?caf=C3=A9?=", given without its frame.
Text DecodeWord(const Text& word)
{
    const std::size_t charset = word.find(L'?');
    if (charset == word.npos || word.size() < charset + 3 || word[charset + 2] != L'?')
        return word;
    Text encoded(word.substr(charset + 3));
    if (word[charset + 1] == L'B' || word[charset + 1] == L'b')
        return DecodeBase64(encoded);
    encoded.Replace(L"_", L" ");
    return Toolkit::QP::ToUNICODE(encoded);
}

Text DecodeHeader(const Text& value)
{
    const std::size_t start = value.find(L"=?");
    const std::size_t end = value.find(L"?=", value.find(L'?', value.find(L'?', start + 2) + 1) + 1);
    if (start == value.npos || end == value.npos)
        return value;
    return value.substr(0, start) + DecodeWord(value.substr(start + 2, end - start - 2)) +
           DecodeHeader(value.substr(end + 2));
}

} // namespace

bool Mail::Read(const Text& path)
{
    Toolkit::TextFile file;
    if (!file.Open(path))
        return false;
    for (Text line = file.GetFirstLine(); !file.Eof() && !line.empty(); line = file.GetNextLine())
        ReadHeader(line);
    ReadBody(file);
    return true;
}

void Mail::ReadHeader(const Text& line)
{
    Text value;
    if (ReadField(line, L"From", value))
        m_strFrom = DecodeHeader(value);
    else if (ReadField(line, L"Subject", value))
        m_strSubject = DecodeHeader(value);
    else if (ReadField(line, L"Content-Transfer-Encoding", value))
        m_strEncoding = value;
    else if (ReadField(line, L"Date", value))
        m_strDate = value;
}

void Mail::ReadBody(Toolkit::TextFile& file)
{
    const bool base64 = m_strEncoding.compareNoCase(L"base64") == 0;
    const bool quotedPrintable = m_strEncoding.compareNoCase(L"quoted-printable") == 0;
    Text body;
    for (Text line = file.GetNextLine(); !file.Eof(); line = file.GetNextLine())
    {
        // A soft line break joins two lines; line breaks are no part of Base64.
        const bool soft = quotedPrintable && !line.empty() && line.back() == L'=';
        body += soft ? line.substr(0, line.size() - 1) : line;
        if (!soft && !base64)
            body += L'\n';
    }
    m_strText = base64 ? DecodeBase64(body) : quotedPrintable ? Toolkit::QP::ToUNICODE(body) : body;
}

} // namespace Desk
