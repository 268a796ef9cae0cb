// SPDX-License-Identifier: MIT
#include "mailtext/Mail.h"

#include "mailtext/Part.h"
#include "toolkit/encoding/EncodedWords.h"

namespace Desk
{

using namespace Toolkit;

namespace
{

// Parts have parts of their own; nobody who writes mails nests them deeper.
const int s_iDepth = 10;

Result<void> Add(const Part& part, const std::string& charset, Mail& mail, int depth)
{
    const std::vector<Part> parts = part.Parts();
    for (const Part& each : parts)
        if (Result<void> added = depth > 0 ? Add(each, charset, mail, depth - 1) : Result<void>(); !added)
            return added;
    const std::string name = part.Parameter("content-disposition", "filename");
    if (!parts.empty() || (name.empty() && !mail.text.empty()))
        return Result<void>();
    Result<std::string> content = name.empty() ? part.Text(charset) : part.Content();
    if (!content)
        return content.error();
    if (name.empty())
    {
        mail.text = *std::move(content);
        mail.encoding = part.Field("content-transfer-encoding");
    }
    else
        mail.attachments.push_back({EncodedWords::Decode(name), *std::move(content)});
    return Result<void>();
}

} // namespace

Result<Mail> Mail::Parse(std::string_view bytes, const std::string& charset)
{
    const Part all(bytes);
    Mail mail;
    mail.from = EncodedWords::Decode(all.Field("from"));
    mail.subject = EncodedWords::Decode(all.Field("subject"));
    mail.date = all.Field("date");
    if (mail.from.empty() && mail.subject.empty())
        return Failure(Errc::Malformed, "it tells neither a sender nor a subject");
    if (const Result<void> added = Add(all, charset, mail, s_iDepth); !added)
        return added.error();
    return mail;
}

} // namespace Desk
