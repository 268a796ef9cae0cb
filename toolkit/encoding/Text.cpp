// SPDX-License-Identifier: MIT
#include "toolkit/encoding/Text.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "toolkit/internal/charsets/CharsetConversion.h"
#include "toolkit/internal/text/CodePoints.h"
#include "toolkit/internal/text/TextEncoding.h"
#include "toolkit/internal/text/Utf8Scan.h"

namespace Toolkit
{

namespace
{

const char c_strUtf8[] = "utf-8";
const wchar_t s_chReplacement = L'\uFFFD';

Failure NoText(const char* conversion, const char* unit, std::size_t position)
{
    return Failure(Errc::Malformed, "cannot convert from " + std::string(conversion) + ": " + unit + " " +
                                        std::to_string(position) + " begins no character");
}

} // namespace

Result<std::wstring> Text::ToWide(std::string_view utf8, Loss loss)
{
    TString<wchar_t> wide;
    if (TextEncoding().Decode(std::string(utf8), wide))
        return std::wstring(std::move(wide));
    if (loss == Refuse)
        return NoText("UTF-8", "byte", Utf8Scan::FindBroken(utf8));
    Result<std::string> replaced = FromCharset(utf8, c_strUtf8, Replace);
    return replaced ? ToWide(*replaced) : std::move(replaced).error();
}

Result<std::string> Text::FromWide(std::wstring_view wide, Loss loss)
{
    TString<wchar_t> text{std::wstring(wide)};
    for (std::size_t i = 0; i < text.size(); ++i)
        if (!CodePoints::IsCharacter(static_cast<std::uint32_t>(text[i])))
        {
            if (loss == Refuse)
                return NoText("wide text", "element", i);
            text[i] = s_chReplacement;
        }
    TString<char> bytes;
    if (!TextEncoding::Encode(text, bytes))
        return NoText("wide text", "element", 0);
    return std::string(std::move(bytes));
}

bool Text::IsUtf8(std::string_view bytes) noexcept
{
    return Utf8Scan::FindBroken(bytes) == bytes.npos;
}

Result<std::string> Text::FromCharset(std::string_view bytes, const std::string& charset, Loss loss)
{
    return ConvertCharset(bytes, charset, c_strUtf8, loss == Replace);
}

Result<std::string> Text::ToCharset(std::string_view utf8, const std::string& charset, Loss loss)
{
    return ConvertCharset(utf8, c_strUtf8, charset, loss == Replace);
}

} // namespace Toolkit
