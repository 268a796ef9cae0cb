// SPDX-License-Identifier: MIT
#include "toolkit/internal/icu/IcuCharsets.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucnv_err.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

namespace Toolkit
{

namespace
{

const std::size_t s_uLongestName = UCNV_MAX_CONVERTER_NAME_LENGTH - 1;
const std::size_t s_uPivot = 1024;
// ICU counts what it is given at once in 31 bits.
const std::size_t s_uPart = 65536;
const UChar s_chReplacement = 0xFFFD;
const UChar s_chQuestionMark = '?';

using Converter = std::unique_ptr<UConverter, decltype(&ucnv_close)>;

bool IsNameCharacter(char character)
{
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
           (character >= 'a' && character <= 'z') ||
           std::string_view("-_.:+()").find(character) != std::string_view::npos;
}

// ICU takes an empty name for the host's own charset, what follows a comma for options, and opens a file of
// the name.
bool IsName(const std::string& name)
{
    return !name.empty() && name.size() <= s_uLongestName &&
           std::all_of(name.begin(), name.end(), IsNameCharacter);
}

Converter Open(const std::string& name)
{
    UErrorCode status = U_ZERO_ERROR;
    Converter converter(IsName(name) ? ucnv_open(name.c_str(), &status) : nullptr, &ucnv_close);
    if (status == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    return converter;
}

// Leaves the error as it is: the conversion stops.
void StopReading(const void*, UConverterToUnicodeArgs*, const char*, int32_t, UConverterCallbackReason,
                 UErrorCode*)
{
}

void StopWriting(const void*, UConverterFromUnicodeArgs*, const UChar*, int32_t, UChar32,
                 UConverterCallbackReason, UErrorCode*)
{
}

bool IsLoss(UConverterCallbackReason reason)
{
    return reason <= UCNV_IRREGULAR;
}

void ReplaceReading(const void*, UConverterToUnicodeArgs* arguments, const char*, int32_t,
                    UConverterCallbackReason reason, UErrorCode* status)
{
    if (!IsLoss(reason))
        return;
    *status = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(arguments, &s_chReplacement, 1, 0, status);
}

void ReplaceWriting(const void*, UConverterFromUnicodeArgs* arguments, const UChar*, int32_t, UChar32,
                    UConverterCallbackReason reason, UErrorCode* status)
{
    if (!IsLoss(reason))
        return;
    *status = U_ZERO_ERROR;
    ucnv_cbFromUWriteSub(arguments, 0, status);
}

void Prepare(UConverter* reader, UConverter* writer, bool replaces)
{
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(reader, replaces ? ReplaceReading : StopReading, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(writer, replaces ? ReplaceWriting : StopWriting, nullptr, nullptr, nullptr,
                          &status);
    // A charset that has no question mark keeps what ICU takes.
    ucnv_setSubstString(writer, &s_chQuestionMark, 1, &status);
}

// Where ICU stopped is after the bytes that are no character, or that have no form on the other side.
void TellWhy(UConverter* reader, UConverter* writer, IcuCharsets::Conversion& conversion)
{
    char bytes[32];
    UChar units[32];
    int8_t byteCount = sizeof(bytes);
    int8_t unitCount = 32;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_getInvalidUChars(writer, units, &unitCount, &status);
    conversion.outcome = IcuCharsets::Outcome::NoForm;
    if (U_SUCCESS(status) && unitCount > 0)
        return;
    status = U_ZERO_ERROR;
    ucnv_getInvalidChars(reader, bytes, &byteCount, &status);
    const std::size_t broken = U_SUCCESS(status) && byteCount > 0 ? static_cast<std::size_t>(byteCount) : 0;
    conversion.outcome = IcuCharsets::Outcome::BrokenText;
    conversion.byte -= std::min(conversion.byte, broken);
}

// Converts all of the bytes; the returned status is ICU's, and `stopped` tells how far it came.
UErrorCode ConvertAll(UConverter* reader, UConverter* writer, std::string_view bytes, std::string& converted,
                      std::size_t& stopped)
{
    UChar pivot[s_uPivot];
    UChar* pivotBegin = pivot;
    UChar* pivotEnd = pivot;
    const char* source = bytes.data();
    const char* const end = source + bytes.size();
    UBool first = true;
    UErrorCode status = U_BUFFER_OVERFLOW_ERROR;
    std::size_t done = 0;
    converted.resize(bytes.size() + bytes.size() / 8 + s_uPivot);
    while (status == U_BUFFER_OVERFLOW_ERROR || (U_SUCCESS(status) && source != end))
    {
        if (done == converted.size())
            converted.resize(done + done / 2);
        status = U_ZERO_ERROR;
        char* target = converted.data() + done;
        const char* const room = target + std::min(2 * s_uPart, converted.size() - done);
        const char* const part = source + std::min(s_uPart, static_cast<std::size_t>(end - source));
        ucnv_convertEx(writer, reader, &target, room, &source, part, pivot, &pivotBegin, &pivotEnd,
                       pivot + s_uPivot, first, part == end, &status);
        first = false;
        done = static_cast<std::size_t>(target - converted.data());
    }
    converted.resize(done);
    stopped = static_cast<std::size_t>(source - bytes.data());
    return status;
}

// A text of UTF-16, which `make` writes into so many units and tells the length of.
template <class Make>
bool MakeText(std::u16string& text, std::size_t expected, Make make)
{
    text.resize(expected + 1);
    for (;;)
    {
        UErrorCode error = U_ZERO_ERROR;
        const std::int32_t length = make(text.data(), static_cast<std::int32_t>(text.size()), &error);
        if (error == U_BUFFER_OVERFLOW_ERROR)
        {
            text.resize(static_cast<std::size_t>(length) + 1);
            continue;
        }
        text.resize(static_cast<std::size_t>(std::max(length, 0)));
        return U_SUCCESS(error) != 0;
    }
}

} // namespace

IcuCharsets::Conversion IcuCharsets::Convert(std::string_view bytes, const std::string& from,
                                             const std::string& to, bool replaces)
{
    Conversion conversion;
    const Converter reader = Open(from);
    const Converter writer = Open(to);
    if (!reader || !writer)
    {
        conversion.outcome = reader ? Outcome::UnknownTarget : Outcome::UnknownSource;
        return conversion;
    }
    Prepare(reader.get(), writer.get(), replaces);
    if (bytes.empty())
        return conversion;
    const UErrorCode status = ConvertAll(reader.get(), writer.get(), bytes, conversion.text, conversion.byte);
    if (status == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    if (U_FAILURE(status))
        TellWhy(reader.get(), writer.get(), conversion);
    return conversion;
}

std::string IcuCharsets::Fold(std::string_view text)
{
    UErrorCode error = U_ZERO_ERROR;
    const UNormalizer2* const normalizer = unorm2_getNFKCCasefoldInstance(&error);
    std::u16string wide;
    std::u16string folded;
    if (U_FAILURE(error) != 0 || text.size() > std::numeric_limits<std::int32_t>::max() / 8)
        return std::string(text);
    const auto toWide = [text](char16_t* to, std::int32_t room, UErrorCode* code)
    {
        std::int32_t length = 0;
        u_strFromUTF8(to, room, &length, text.data(), static_cast<std::int32_t>(text.size()), code);
        return length;
    };
    const auto fold = [normalizer, &wide](char16_t* to, std::int32_t room, UErrorCode* code) {
        return unorm2_normalize(normalizer, wide.data(), static_cast<std::int32_t>(wide.size()), to, room,
                                code);
    };
    if (!MakeText(wide, text.size(), toWide) || !MakeText(folded, wide.size(), fold))
        return std::string(text);
    std::string result;
    for (const char16_t unit : folded)
        result += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
    return result;
}

} // namespace Toolkit
