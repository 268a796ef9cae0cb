// SPDX-License-Identifier: MIT
#include "toolkit/internal/charsets/CharsetConversion.h"

#include <utility>

#include "toolkit/internal/icu/IcuPart.h"

namespace Toolkit
{

namespace
{

using IcuCharsets::Outcome;

Failure UnknownCharset(const std::string& attempt, const std::string& unknown)
{
    return Failure(std::make_error_code(std::errc::invalid_argument),
                   attempt + "\"" + unknown + "\" is no charset that ICU knows");
}

} // namespace

Result<std::string> ConvertCharset(std::string_view bytes, const std::string& from, const std::string& to,
                                   bool replaces)
{
    const std::string attempt = "cannot convert from " + from + " to " + to + ": ";
    const Result<const IcuCalls*> icu = LoadIcu();
    if (!icu)
        return Failure(icu.error().Code(), attempt + icu.error().Message());
    IcuCharsets::Conversion conversion = (*icu)->convert(bytes, from, to, replaces);
    const std::string byte = "byte " + std::to_string(conversion.byte);
    switch (conversion.outcome)
    {
    case Outcome::UnknownSource:
        return UnknownCharset(attempt, from);
    case Outcome::UnknownTarget:
        return UnknownCharset(attempt, to);
    case Outcome::BrokenText:
        return Failure(Errc::Malformed, attempt + byte + " begins no character");
    case Outcome::NoForm:
        return Failure(Errc::Malformed, attempt + "a character before " + byte + " has no form there");
    default:
        return std::move(conversion.text);
    }
}

} // namespace Toolkit
