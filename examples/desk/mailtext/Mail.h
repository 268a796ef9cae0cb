// SPDX-License-Identifier: MIT
#ifndef DESK_MAILTEXT_MAIL_H
#define DESK_MAILTEXT_MAIL_H

#include <string>
#include <string_view>
#include <vector>

#include "Document.h"
#include "toolkit/core/Result.h"

namespace Desk
{

// A mail (RFC 5322) as far as the user wants to see it: who wrote it, about what and when, its text, decoded,
// and the files that came with it.
struct Mail
{
    // `charset` is that of texts that do not name theirs. `Errc::Malformed` for what is no mail.
    static Toolkit::Result<Mail> Parse(std::string_view bytes, const std::string& charset);

    std::string from;
    std::string subject;
    // As the mail has it.
    std::string date;
    // Of its text: "base64", say.
    std::string encoding;
    std::string text;
    std::vector<Attachment> attachments;
};

} // namespace Desk

#endif
