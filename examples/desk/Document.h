// SPDX-License-Identifier: MIT
#ifndef DESK_DOCUMENT_H
#define DESK_DOCUMENT_H

#include "Text.h"

namespace Desk
{

// A file as desk shows it: texts for the user, decoded and redacted.
struct Document
{
    Text m_strPath;
    Text m_strTitle;
    // Empty for a file that nobody sent.
    Text m_strFrom;
    // As a list shows it; empty when the file tells none.
    Text m_strDate;
    Text m_strText;
    // How many places of the text are hidden.
    std::size_t m_uHidden = 0;
};

} // namespace Desk

#endif
