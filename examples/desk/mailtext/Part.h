// SPDX-License-Identifier: MIT
#ifndef DESK_MAILTEXT_PART_H
#define DESK_MAILTEXT_PART_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/core/Result.h"

namespace Desk
{

// A mail, or one of the parts of its body (RFC 2045 and 2046): fields, and bytes that they describe.
class Part
{
public:
    // The bytes must live as long.
    explicit Part(std::string_view bytes);

    // The value of a field, whose name is given in small letters; empty when there is none.
    std::string Field(const std::string& name) const;
    // A parameter of a field, as "utf-8" in "text/plain; charset=utf-8"; empty when there is none.
    std::string Parameter(const std::string& field, const std::string& name) const;

    // The parts of a body that consists of some.
    std::vector<Part> Parts() const;

    // What is sent, without the encoding that it travels in.
    Toolkit::Result<std::string> Content() const;
    // The same as text in UTF-8. What its charset does not know becomes U+FFFD.
    Toolkit::Result<std::string> Text(const std::string& charset) const;

private:
    std::map<std::string, std::string> m_fields;
    std::string_view m_body;
};

} // namespace Desk

#endif
