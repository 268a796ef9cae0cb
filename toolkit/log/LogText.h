// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_LOGTEXT_H
#define TOOLKIT_LOG_LOGTEXT_H

#include <cstddef>
#include <locale>
#include <sstream>
#include <string_view>
#include <type_traits>

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// The text form of a logged value: that of a wide stream with its default flags in the classic locale,
/// whatever the host's global locale. Numbers are decimal, a bool is 1 or 0; a TString<char> or
/// std::string_view is UTF-8. Any thread may call it. Quirk: narrow characters and arrays of them are
/// not decoded but widened one by one.
///
/// @code
/// Toolkit::TString<wchar_t> piece = Toolkit::LogText::Of(42);
/// Toolkit::LogText::Append(piece, " mails");
/// (*Toolkit::ILogger::s_pInstance)->Write(piece);
/// @endcode
class TOOLKIT_API LogText
{
public:
    /// The text of a value.
    template <class T>
    static TString<wchar_t> Of(const T& value)
    {
        TString<wchar_t> text;
        Append(text, value);
        return text;
    }

    /// Appends the text of a value.
    template <class T>
    static void Append(TString<wchar_t>& text, const T& value)
    {
        if constexpr (std::is_same_v<T, char>)
            AppendCharacter(text, Widened(value));
        else if constexpr (std::is_same_v<T, wchar_t>)
            AppendCharacter(text, value);
        else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>)
            AppendNumber(text, static_cast<long long>(value));
        else if constexpr (std::is_integral_v<T> || std::is_same_v<T, bool>)
            AppendNumber(text, static_cast<unsigned long long>(value));
        else if constexpr (std::is_enum_v<T>)
            Append(text, static_cast<std::underlying_type_t<T>>(value));
        else if constexpr (std::is_base_of_v<std::wstring, T>)
            text += value;
        else if constexpr (std::is_base_of_v<std::string, T> || std::is_same_v<T, std::string_view>)
            AppendUtf8(text, value);
        else
            AppendOther(text, value);
    }

private:
    static void AppendNumber(TString<wchar_t>& text, long long value);
    static void AppendNumber(TString<wchar_t>& text, unsigned long long value);
    static void AppendUtf8(TString<wchar_t>& text, std::string_view bytes);
    static wchar_t Widened(char byte);
    // A byte that is no character of the locale, widened, is left out as a stream leaves it out.
    static void AppendCharacter(TString<wchar_t>& text, wchar_t character);
    static void AppendNarrow(TString<wchar_t>& text, const char* bytes, std::size_t length);
    // Up to the first NUL, at most `limit` elements; a null pointer appends nothing.
    static void AppendArray(TString<wchar_t>& text, const wchar_t* characters, std::size_t limit);
    static void AppendArray(TString<wchar_t>& text, const char* bytes, std::size_t limit);

    template <class T>
    static void AppendOther(TString<wchar_t>& text, const T& value)
    {
        using Element = std::remove_cv_t<std::remove_pointer_t<std::decay_t<T>>>;
        if constexpr ((std::is_array_v<T> || std::is_pointer_v<T>)&&(std::is_same_v<Element, char> ||
                                                                     std::is_same_v<Element, wchar_t>))
        {
            AppendArray(text, value, std::is_array_v<T> ? std::extent_v<T> : static_cast<std::size_t>(-1));
        }
        else
        {
            std::wostringstream stream;
            stream.imbue(std::locale::classic());
            stream << value;
            text += stream.str();
        }
    }
};

} // namespace Toolkit

#endif
