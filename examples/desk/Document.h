// SPDX-License-Identifier: MIT
#ifndef DESK_DOCUMENT_H
#define DESK_DOCUMENT_H

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace Desk
{

// A file that came with a mail.
struct Attachment
{
    // As the sender calls it, which is no path to trust.
    std::string name;
    std::string bytes;
};

// A file as desk shows it: texts for the user, in UTF-8, decoded and redacted.
struct Document
{
    std::filesystem::path file;
    std::string title;
    // Empty for a file that nobody sent.
    std::string from;
    // By the user's clock; empty when the file tells none.
    std::string date;
    // How the file holds its text; empty when it is there as it is.
    std::string encoding;
    std::string text;
    // The beginning of the text in one line.
    std::string preview;
    std::vector<Attachment> attachments;
    // How many places of the text are hidden.
    std::size_t hidden = 0;
};

} // namespace Desk

#endif
