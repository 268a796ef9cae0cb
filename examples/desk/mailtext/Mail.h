// SPDX-License-Identifier: MIT
#ifndef DESK_MAILTEXT_MAIL_H
#define DESK_MAILTEXT_MAIL_H

#include "Text.h"
#include "toolkit/files/TextFile.h"

namespace Desk
{

// A mail (RFC 5322) as far as the user wants to see it: who wrote it, about what and when, and its text,
// decoded.
struct Mail
{
    // False when the file cannot be read.
    bool Read(const Text& path);

    Text m_strFrom;
    Text m_strSubject;
    Text m_strEncoding;
    Text m_strDate;
    Text m_strText;

private:
    void ReadHeader(const Text& line);
    void ReadBody(Toolkit::TextFile& file);
};

} // namespace Desk

#endif
