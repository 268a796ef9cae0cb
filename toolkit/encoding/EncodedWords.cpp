// SPDX-License-Identifier: MIT
#include "toolkit/encoding/EncodedWords.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "toolkit/encoding/Base64.h"
#include "toolkit/encoding/Text.h"
#include "toolkit/internal/text/Base64Codec.h"
#include "toolkit/internal/text/CodePoints.h"
#include "toolkit/internal/text/QuotedPrintableCodec.h"

namespace Toolkit
{

namespace
{

namespace Codec = QuotedPrintableCodec;

const std::string_view s_begin = "=?";
const std::string_view s_end = "?=";
const std::string_view s_blanks = " \t\r\n";
// "?", the letter of the encoding, "?".
const std::size_t s_uEncoding = 3;
const std::size_t s_uLongestCharset = 64;
const std::size_t s_uLongestWord = 75;
// What the name of a charset in a word must not hold (RFC 2047, 2); ICU knows some of these as names.
const char c_strNeverInNames[] = "()<>@,;:\"/[]?.= \t\r\n";
// The most bytes of UTF-8 that may become one byte of another charset.
const std::size_t s_uMostBytesForOne = 3;

char LowerCase(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool IsEqualName(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char one, char other) { return LowerCase(one) == LowerCase(other); });
}

// What stands at "=" in a word: an escape, or "=" itself.
void TakeAtEscape(const char*& from, const char* end, char*& to)
{
    if (!Codec::TakeEscape(from, end, to))
        *to++ = *from++;
}

std::string DecodeQ(std::string_view text)
{
    std::string spaced(text);
    std::replace(spaced.begin(), spaced.end(), '_', ' ');
    return Codec::Decode(spaced, TakeAtEscape);
}

std::optional<std::string> DecodeB(std::string_view text)
{
    std::string body(text);
    body.erase(std::remove(body.begin(), body.end(), ' '), body.end());
    body.erase(std::find_if(body.rbegin(), body.rend(),
                            [](char character) { return character != Base64Codec::s_chPad; })
                   .base(),
               body.end());
    std::string bytes;
    std::uint32_t ignored = 0;
    const bool whole = body.size() % Base64Codec::s_uGroupCharacters != 1 &&
                       Base64Codec::DecodeUnpadded(body, bytes, ignored);
    return whole ? std::optional<std::string>(std::move(bytes)) : std::nullopt;
}

std::optional<std::string> DecodeContent(char encoding, std::string_view text)
{
    switch (encoding)
    {
    case 'q':
        return text.find(s_begin) == text.npos ? std::optional<std::string>(DecodeQ(text)) : std::nullopt;
    case 'b':
        return text.find('?') == text.npos ? DecodeB(text) : std::nullopt;
    default:
        return std::nullopt;
    }
}

// A word of a header, or several neighbours of one charset.
struct Word
{
    std::size_t begin;
    std::size_t end;
    std::string_view charset;
    std::vector<std::string> parts;
};

// Goes through a header and gives its words one after the other. To look for the ends of all of them takes
// a time that is linear in the header, whatever it is.
class WordSearch
{
public:
    explicit WordSearch(std::string_view header) : m_header(header) {}

    std::optional<Word> Next()
    {
        for (;; m_uNext += s_begin.size())
        {
            m_uNext = m_header.find(s_begin, m_uNext);
            if (m_uNext == m_header.npos)
                return std::nullopt;
            if (std::optional<Word> word = At(m_uNext))
            {
                m_uNext = word->end;
                return word;
            }
        }
    }

private:
    std::optional<Word> At(std::size_t begin)
    {
        const std::string_view rest = m_header.substr(begin + s_begin.size());
        const std::string_view name = rest.substr(0, rest.substr(0, s_uLongestCharset + 1).find('?'));
        if (name.size() > s_uLongestCharset || rest.size() < name.size() + s_uEncoding ||
            rest[name.size() + s_uEncoding - 1] != '?')
            return std::nullopt;
        const std::size_t content = begin + s_begin.size() + name.size() + s_uEncoding;
        const std::size_t end = FindEnd(content);
        if (end == m_header.npos)
            return std::nullopt;
        std::optional<std::string> bytes =
            DecodeContent(LowerCase(rest[name.size() + 1]), m_header.substr(content, end - content));
        if (!bytes)
            return std::nullopt;
        // A language may follow the charset.
        return Word{begin, end + s_end.size(), name.substr(0, name.find('*')), {*std::move(bytes)}};
    }

    // Where the content ends, which it does in its line; npos when it does not.
    std::size_t FindEnd(std::size_t content)
    {
        if (m_uEnd < content)
            m_uEnd = std::min(m_header.find(s_end, content), m_header.size());
        if (m_uLineEnd < content)
            m_uLineEnd = std::min(m_header.find_first_of("\r\n", content), m_header.size());
        return m_uEnd < m_uLineEnd ? m_uEnd : m_header.npos;
    }

    const std::string_view m_header;
    std::size_t m_uNext = 0;
    // What FindEnd found last.
    std::size_t m_uEnd = 0;
    std::size_t m_uLineEnd = 0;
};

bool IsBlank(std::string_view text)
{
    return text.find_first_not_of(s_blanks) == text.npos;
}

// The words, neighbours of one charset as one.
std::vector<Word> FindWords(std::string_view header)
{
    std::vector<Word> words;
    WordSearch search(header);
    while (std::optional<Word> word = search.Next())
    {
        if (!words.empty() && IsEqualName(words.back().charset, word->charset) &&
            IsBlank(header.substr(words.back().end, word->begin - words.back().end)))
        {
            words.back().parts.push_back(std::move(word->parts.front()));
            words.back().end = word->end;
        }
        else
            words.push_back(*std::move(word));
    }
    return words;
}

// The charset of a name in a mail. Python's mail library writes two names that only Python knows.
std::string CharsetOf(std::string_view name)
{
    if (IsEqualName(name, "eucgb2312_cn"))
        return "gb2312";
    return std::string(IsEqualName(name, "big5_tw") ? std::string_view("big5") : name);
}

// Each part by itself, as it was made, or all of them joined where a character is divided among them.
Result<std::string> DecodeWord(const Word& word)
{
    const std::string charset = CharsetOf(word.charset);
    std::string text;
    std::string bytes;
    bool isWhole = true;
    for (const std::string& part : word.parts)
    {
        const Result<std::string> decoded = Text::FromCharset(part, charset);
        isWhole = isWhole && decoded;
        text += decoded.value_or("");
        bytes += part;
    }
    return isWhole ? Result<std::string>(std::move(text)) : Text::FromCharset(bytes, charset, Text::Replace);
}

bool IsPlainHeader(std::string_view text)
{
    return text.find(s_begin) == text.npos &&
           std::all_of(text.begin(), text.end(), [](char byte) { return byte >= ' ' && byte <= '~'; });
}

bool IsPlainInQ(char byte)
{
    return (byte >= '0' && byte <= '9') || (LowerCase(byte) >= 'a' && LowerCase(byte) <= 'z') ||
           std::string_view("!*+-/").find(byte) != std::string_view::npos;
}

std::string EncodeQ(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes)
    {
        if (byte == ' ')
            text += '_';
        else if (IsPlainInQ(byte))
            text += byte;
        else
            Codec::AppendEscape(text, static_cast<unsigned char>(byte));
    }
    return text;
}

bool BeginsCharacter(char byte)
{
    return !CodePoints::IsContinuation(byte);
}

// The largest length up to `most` at which a character of the text ends.
std::size_t WholeCharacters(std::string_view utf8, std::size_t most)
{
    std::size_t length = std::min(most, utf8.size());
    while (length > 0 && length < utf8.size() && !BeginsCharacter(utf8[length]))
        --length;
    return length;
}

std::size_t FirstCharacter(std::string_view utf8)
{
    const auto end = std::find_if(utf8.begin() + 1, utf8.end(), BeginsCharacter);
    return static_cast<std::size_t>(end - utf8.begin());
}

// Takes as much of the text as has room in a word; empty when not even one character has.
Result<std::string> TakeContent(std::string_view& utf8, const std::string& charset, bool isQ,
                                std::size_t room)
{
    std::size_t length = WholeCharacters(utf8, s_uMostBytesForOne * room);
    while (length > 0)
    {
        const Result<std::string> bytes = Text::ToCharset(utf8.substr(0, length), charset);
        if (!bytes)
            return bytes.error();
        std::string content = isQ ? EncodeQ(*bytes) : Base64::Encode(*bytes);
        if (content.size() <= room)
        {
            utf8.remove_prefix(length);
            return content;
        }
        const std::size_t share = std::max(length * room / content.size(), FirstCharacter(utf8));
        length = WholeCharacters(utf8, std::min(share, length - 1));
    }
    return std::string();
}

} // namespace

std::string EncodedWords::Decode(std::string_view header)
{
    std::string text;
    std::size_t done = 0;
    bool afterWord = false;
    for (const Word& word : FindWords(header))
    {
        const std::string_view between = header.substr(done, word.begin - done);
        const Result<std::string> decoded = DecodeWord(word);
        if (!afterWord || !decoded || !IsBlank(between))
            text.append(between);
        text.append(decoded ? *decoded : header.substr(word.begin, word.end - word.begin));
        done = word.end;
        afterWord = decoded.has_value();
    }
    return text.append(header.substr(done));
}

Result<std::string> EncodedWords::Encode(std::string_view utf8, const std::string& charset)
{
    const Result<std::string> bytes = Text::ToCharset(utf8, charset);
    if (!bytes)
        return bytes.error();
    if (IsPlainHeader(utf8))
        return std::string(utf8);
    if (charset.find_first_of(c_strNeverInNames) != charset.npos)
        return Failure(std::make_error_code(std::errc::invalid_argument),
                       "cannot encode in " + charset + ": its name cannot stand in a word");
    // Words that are mostly plain stay readable.
    const bool isQ = EncodeQ(*bytes).size() <= (Codec::s_uEscape + 1) * bytes->size() / 2;
    const std::string begin = std::string(s_begin) + charset + (isQ ? "?Q?" : "?B?");
    const std::size_t frame = begin.size() + s_end.size();
    std::string words;
    while (!utf8.empty())
    {
        const Result<std::string> content =
            TakeContent(utf8, charset, isQ, s_uLongestWord - std::min(frame, s_uLongestWord));
        if (!content)
            return content;
        if (content->empty())
            return Failure(std::make_error_code(std::errc::invalid_argument),
                           "cannot encode in " + charset + ": its name leaves a word no room");
        words.append(words.empty() ? "" : " ").append(begin).append(*content).append(s_end);
    }
    return words;
}

} // namespace Toolkit
