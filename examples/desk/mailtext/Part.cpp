// SPDX-License-Identifier: MIT
#include "mailtext/Part.h"

#include <algorithm>

#include "toolkit/encoding/Base64.h"
#include "toolkit/encoding/QuotedPrintable.h"
#include "toolkit/encoding/Text.h"
#include "toolkit/regExp/Pattern.h"

namespace Desk
{

using namespace Toolkit;

namespace
{

std::string Small(std::string_view text)
{
    std::string small(text);
    std::transform(small.begin(), small.end(), small.begin(),
                   [](char letter)
                   { return letter >= 'A' && letter <= 'Z' ? letter + ('a' - 'A') : letter; });
    return small;
}

// The fields end at the first empty line.
std::size_t EndOfFields(std::string_view bytes)
{
    const std::size_t end = bytes.find("\n\n");
    return std::min(end, bytes.find("\n\r\n"));
}

std::string_view AfterFields(std::string_view bytes)
{
    const std::size_t end = EndOfFields(bytes);
    return end == bytes.npos ? std::string_view() : bytes.substr(bytes.find('\n', end + 1) + 1);
}

// A header is ASCII, or UTF-8 where senders know no better.
std::string Unfolded(std::string_view header)
{
    const std::string text = Toolkit::Text::FromCharset(header, "utf-8", Toolkit::Text::Replace).value();
    // A line that begins with a blank goes on with the one before.
    static const Pattern s_fold = Pattern::Compile(R"(\r?\n(?=[ \t]))").value();
    return s_fold.Replace(text, "").value();
}

} // namespace

Part::Part(std::string_view bytes) : m_body(AfterFields(bytes))
{
    static const Pattern s_field =
        Pattern::Compile(R"(^([\w-]+):[ \t]*(.*?)[ \t]*\r?$)", Pattern::Multiline).value();
    const std::string header = Unfolded(bytes.substr(0, EndOfFields(bytes)));
    for (const Match& field : s_field.All(header))
        m_fields.emplace(Small(field[1]), field[2]);
}

std::string Part::Field(const std::string& name) const
{
    const auto found = m_fields.find(name);
    return found == m_fields.end() ? std::string() : found->second;
}

std::string Part::Parameter(const std::string& field, const std::string& name) const
{
    static const Pattern s_parameter = Pattern::Compile(R"(;\s*([\w-]+)="?([^";]*))").value();
    const std::string value = Field(field);
    for (const Match& parameter : s_parameter.All(value))
        if (Small(parameter[1]) == name)
            return std::string(parameter[2]);
    return std::string();
}

std::vector<Part> Part::Parts() const
{
    std::vector<Part> parts;
    const std::string boundary = "\n--" + Parameter("content-type", "boundary");
    if (boundary.size() == 3)
        return parts;
    // Before the first boundary and after the last one is nothing for people.
    std::size_t end = m_body.find(boundary.substr(1));
    while (end != m_body.npos)
    {
        const std::size_t begin = m_body.find('\n', end + 1);
        end = begin == m_body.npos ? begin : m_body.find(boundary, begin);
        if (end != m_body.npos)
            parts.emplace_back(m_body.substr(begin + 1, end - begin - 1));
    }
    return parts;
}

Result<std::string> Part::Content() const
{
    const std::string encoding = Small(Field("content-transfer-encoding"));
    if (encoding == "base64")
        return Base64::DecodeMime(m_body);
    return encoding == "quoted-printable" ? QuotedPrintable::Decode(m_body) : std::string(m_body);
}

Result<std::string> Part::Text(const std::string& charset) const
{
    const Result<std::string> content = Content();
    if (!content)
        return content;
    const std::string named = Parameter("content-type", "charset");
    Result<std::string> text =
        Toolkit::Text::FromCharset(*content, named.empty() ? charset : named, Toolkit::Text::Replace);
    if (!text)
        return text;
    static const Pattern s_lineEnd = Pattern::Compile(R"(\r\n)").value();
    return s_lineEnd.Replace(*text, "\n");
}

} // namespace Desk
