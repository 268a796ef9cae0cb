// SPDX-License-Identifier: MIT
#include "toolkit/internal/charsets/CharsetConversion.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucnv_err.h>

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

std::string Conversion(const std::string& from, const std::string& to)
{
    return "cannot convert from " + from + " to " + to + ": ";
}

Failure UnknownCharset(const std::string& from, const std::string& to, const std::string& unknown)
{
    return Failure(std::make_error_code(std::errc::invalid_argument),
                   Conversion(from, to) + "\"" + unknown + "\" is no charset that ICU knows");
}

// Where ICU stopped is after the bytes that are no character, or that have no form on the other side.
std::string ReasonAt(UConverter* reader, UConverter* writer, std::size_t stopped)
{
    char bytes[32];
    UChar units[32];
    int8_t byteCount = sizeof(bytes);
    int8_t unitCount = 32;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_getInvalidUChars(writer, units, &unitCount, &status);
    if (U_SUCCESS(status) && unitCount > 0)
        return "a character before byte " + std::to_string(stopped) + " has no form there";
    status = U_ZERO_ERROR;
    ucnv_getInvalidChars(reader, bytes, &byteCount, &status);
    const std::size_t broken = U_SUCCESS(status) && byteCount > 0 ? static_cast<std::size_t>(byteCount) : 0;
    return "byte " + std::to_string(stopped - std::min(stopped, broken)) + " begins no character";
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

} // namespace

Result<std::string> ConvertCharset(std::string_view bytes, const std::string& from, const std::string& to,
                                   bool replaces)
{
    const Converter reader = Open(from);
    const Converter writer = Open(to);
    if (!reader || !writer)
        return UnknownCharset(from, to, reader ? to : from);
    Prepare(reader.get(), writer.get(), replaces);
    if (bytes.empty())
        return std::string();
    std::string converted;
    std::size_t stopped = 0;
    const UErrorCode status = ConvertAll(reader.get(), writer.get(), bytes, converted, stopped);
    if (status == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    if (U_FAILURE(status))
        return Failure(Errc::Malformed, Conversion(from, to) + ReasonAt(reader.get(), writer.get(), stopped));
    return converted;
}

} // namespace Toolkit
