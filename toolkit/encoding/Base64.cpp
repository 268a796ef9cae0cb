// SPDX-License-Identifier: MIT
#include "toolkit/encoding/Base64.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "toolkit/internal/text/Base64Codec.h"

namespace Toolkit
{

namespace
{

const std::size_t s_uMostPads = 2;
const char c_strForeign[] = "is no character of the alphabet";
const char c_strMisplaced[] = "is padding at the wrong place";
const char c_strMissing[] = "is missing: the text ends within a group of four";
const char c_strLeftOver[] = "has bits set that are part of no byte";

// How a text has to end.
enum class Ending
{
    Exact,
    // Padding may be missing, and bits may be left over.
    AsInMails,
};

// The first thing that is wrong with a text.
struct Wrong
{
    std::size_t position;
    const char* reason;
};

Wrong FindForeign(std::string_view text)
{
    const auto foreign = std::find_if_not(text.begin(), text.end(), Base64Codec::IsInAlphabet);
    return {static_cast<std::size_t>(foreign - text.begin()),
            *foreign == Base64Codec::s_chPad ? c_strMisplaced : c_strForeign};
}

std::optional<Wrong> DecodeText(std::string_view text, Ending ending, std::string& bytes)
{
    std::size_t pads = 0;
    while (pads < std::min(s_uMostPads, text.size()) && text[text.size() - 1 - pads] == Base64Codec::s_chPad)
        ++pads;
    const std::string_view body = text.substr(0, text.size() - pads);
    std::uint32_t leftOver = 0;
    if (!Base64Codec::DecodeUnpadded(body, bytes, leftOver))
        return FindForeign(body);
    const std::size_t rest = body.size() % Base64Codec::s_uGroupCharacters;
    const std::size_t wanted = rest < 2 ? 0 : Base64Codec::s_uGroupCharacters - rest;
    if (pads > wanted)
        return Wrong{body.size() + wanted, c_strMisplaced};
    if (rest == 1 || (pads < wanted && ending == Ending::Exact))
        return Wrong{text.size(), c_strMissing};
    if (leftOver != 0 && ending == Ending::Exact)
        return Wrong{body.size() - 1, c_strLeftOver};
    return std::nullopt;
}

Failure CannotDecode(const Wrong& wrong)
{
    return Failure(Errc::Malformed,
                   "cannot decode Base64: byte " + std::to_string(wrong.position) + " " + wrong.reason);
}

bool IsLineEnd(char character)
{
    return character == '\r' || character == '\n';
}

// Where the character stands that has this place when line ends are not counted. What is missing is missing
// at the end.
std::size_t PlaceAmongLines(std::string_view text, std::size_t place)
{
    for (std::size_t i = 0; i < text.size(); ++i)
        if (!IsLineEnd(text[i]) && place-- == 0)
            return i;
    return text.size();
}

} // namespace

std::string Base64::Encode(std::string_view bytes)
{
    std::string text(Base64Codec::EncodedSize(bytes.size()), '\0');
    Base64Codec::Encode(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                        reinterpret_cast<unsigned char*>(text.data()));
    return text;
}

Result<std::string> Base64::Decode(std::string_view text)
{
    std::string bytes;
    if (const std::optional<Wrong> wrong = DecodeText(text, Ending::Exact, bytes))
        return CannotDecode(*wrong);
    return bytes;
}

Result<std::string> Base64::DecodeMime(std::string_view text)
{
    std::string line(text.size(), '\0');
    line.erase(std::remove_copy_if(text.begin(), text.end(), line.begin(), IsLineEnd), line.end());
    std::string bytes;
    if (const std::optional<Wrong> wrong = DecodeText(line, Ending::AsInMails, bytes))
        return CannotDecode({PlaceAmongLines(text, wrong->position), wrong->reason});
    return bytes;
}

} // namespace Toolkit
