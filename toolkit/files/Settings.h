// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_SETTINGS_H
#define TOOLKIT_FILES_SETTINGS_H

#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "toolkit/core/Export.h"
#include "toolkit/core/Result.h"

namespace Toolkit
{

/// A settings file of sections and keys that is read whole, asked, changed and saved. It reads what `IniFile`
/// reads: "[name]" over the whole line begins a section, ";" in the first column a comment, and the first of
/// equal keys counts; a byte-order mark selects UTF-8, UTF-16 or UTF-32. Names are compared exactly. `Save`
/// rewrites only the lines that were changed: comments, order, spacing, line ends and mark stay. Any
/// number of threads may use one object, which locks itself; a copy is a snapshot with a life of its own.
/// Whoever assigns to an object or destroys it does so alone. One that was moved from has no keys, and
/// refuses to be changed and saved.
///
/// @code
/// auto settings = Toolkit::Settings::LoadOrNew(folders->Config() / "watch.ini");
/// if (!settings)
///     return Fail(settings.error().Message());
/// int lines = settings->Get("mail", "preview", 80);
/// if (Toolkit::Result<void> set = settings->Set("mail", "preview", lines + 20); !set)
///     return Fail(set.error().Message());
/// Toolkit::Result<void> saved = settings->Save();
/// @endcode
class TOOLKIT_API Settings
{
    template <typename T>
    static constexpr bool s_bIsCharacter = std::is_same_v<T, char> || std::is_same_v<T, wchar_t> ||
                                           std::is_same_v<T, char16_t> || std::is_same_v<T, char32_t>;
    template <typename T>
    static constexpr bool s_bIsNumber = std::is_arithmetic_v<T> && !s_bIsCharacter<T>;
    template <typename T>
    using IfNumber = std::enable_if_t<s_bIsNumber<T>, int>;

public:
    /// Reads the file. A relative path means the same file when `Save` is called in another folder. It fails
    /// as `ReadFile` does (`std::errc::no_such_file_or_directory`, `permission_denied`, `is_a_directory`,
    /// `Errc::LimitReached`, `Errc::Refused` ...), and with `Errc::Malformed` when the file is no text.
    static Result<Settings> Load(const std::filesystem::path& path);
    /// The same, but a missing file is one without sections, which `Save` makes together with its folders.
    static Result<Settings> LoadOrNew(const std::filesystem::path& path);

    Settings(const Settings& other);
    Settings(Settings&& other) noexcept;
    Settings& operator=(const Settings& other);
    Settings& operator=(Settings&& other) noexcept;
    ~Settings();

    /// The text of a key, or `fallback` where it is missing.
    std::string Get(std::string_view section, std::string_view key, std::string_view fallback) const;
    /// The number or the bool of a key, or `fallback` where it is missing or anything else. A number is
    /// decimal and all of the text; a bool is 1 or 0, true or false, yes or no, on or off, in any case.
    template <typename T, IfNumber<T> = 0>
    T Get(std::string_view section, std::string_view key, T fallback) const
    {
        T value = fallback;
        return Fetch(section, key, value) ? value : fallback;
    }

    /// Reads a number, a bool or a `std::string`, and tells a missing key, which is an empty result, from a
    /// wrong value, which is a failure: `Errc::Malformed` ("mail/preview: '8o' is no number") or, for a
    /// number that `T` cannot hold, `std::errc::result_out_of_range`.
    template <typename T>
    Result<std::optional<T>> Read(std::string_view section, std::string_view key) const
    {
        static_assert(s_bIsNumber<T> || std::is_same_v<T, std::string>, "a number, a bool or a std::string");
        T value{};
        Result<bool> found = Require(section, key, value);
        if (!found)
            return std::move(found).error();
        return *found ? std::optional<T>(std::move(value)) : std::nullopt;
    }

    /// True when the key is there, with or without a value.
    bool Has(std::string_view section, std::string_view key) const;

    /// The names of the sections, with and without keys, in the order of the file.
    std::vector<std::string> Sections() const;
    /// The names of the keys of a section, in the order of the file.
    std::vector<std::string> Keys(std::string_view section) const;

    /// Gives a key a value, in memory. A key that is there keeps its line, a new one comes after the last one
    /// of its section, a new section at the end of the file. What would not be read back equal is refused
    /// (`Errc::Refused`) and changes nothing: a value with a line end or with blanks at its ends, for
    /// instance, or text that is no UTF-8. A bool is written as 1 or 0, which `IniFile` understands.
    Result<void> Set(std::string_view section, std::string_view key, std::string_view value);
    /// The same for a number or a bool.
    template <typename T, IfNumber<T> = 0>
    Result<void> Set(std::string_view section, std::string_view key, T value)
    {
        if constexpr (std::is_same_v<T, bool>)
            return Set(section, key, std::string_view(value ? "1" : "0"));
        else if constexpr (std::is_floating_point_v<T>)
            return SetNumber(section, key, value);
        else if constexpr (std::is_signed_v<T>)
            return SetNumber(section, key, static_cast<long long>(value));
        else
            return SetNumber(section, key, static_cast<unsigned long long>(value));
    }

    /// Takes a key out, in memory, as often as it occurs in the section; false when it does not. The section
    /// stays.
    bool Remove(std::string_view section, std::string_view key);

    /// Writes the file as `WriteFile` does: whole and on the disk, or as before. Without a change nothing is
    /// written. It fails as `ReadFile` and `WriteFile` do (`std::errc::permission_denied`,
    /// `no_space_on_device`, `read_only_file_system`, `is_a_directory` ...), and with `Errc::ChangedByOther`
    /// when the file is no longer as it was when this object last read or wrote it: whoever wants both
    /// changes loads the file anew. Processes that save at once with this class take
    /// turns; one that has waited for five seconds fails with `std::errc::device_or_resource_busy`.
    Result<void> Save();

private:
    struct Content;

    explicit Settings(std::unique_ptr<Content> content) noexcept;

    static Result<Settings> LoadAs(const std::filesystem::path& path, bool mayBeMissing);

    // The whole number of a key between two bounds. True when there is one; otherwise, if it is asked for, a
    // failure for what is none.
    Result<bool> ReadSigned(std::string_view section, std::string_view key, long long least,
                            long long greatest, long long& value) const;
    Result<bool> ReadUnsigned(std::string_view section, std::string_view key, unsigned long long greatest,
                              unsigned long long& value) const;
    Result<bool> ReadValue(std::string_view section, std::string_view key, float& value) const;
    Result<bool> ReadValue(std::string_view section, std::string_view key, double& value) const;
    Result<bool> ReadValue(std::string_view section, std::string_view key, long double& value) const;
    Result<bool> ReadValue(std::string_view section, std::string_view key, bool& value) const;
    Result<bool> ReadValue(std::string_view section, std::string_view key, std::string& value) const;

    Result<void> SetNumber(std::string_view section, std::string_view key, long long value);
    Result<void> SetNumber(std::string_view section, std::string_view key, unsigned long long value);
    Result<void> SetNumber(std::string_view section, std::string_view key, float value);
    Result<void> SetNumber(std::string_view section, std::string_view key, double value);
    Result<void> SetNumber(std::string_view section, std::string_view key, long double value);

    template <typename T>
    Result<bool> Require(std::string_view section, std::string_view key, T& value) const
    {
        if constexpr (!std::is_integral_v<T> || std::is_same_v<T, bool>)
            return ReadValue(section, key, value);
        else if constexpr (std::is_signed_v<T>)
        {
            long long number = 0;
            Result<bool> found = ReadSigned(section, key, std::numeric_limits<T>::min(),
                                            std::numeric_limits<T>::max(), number);
            value = static_cast<T>(number);
            return found;
        }
        else
        {
            unsigned long long number = 0;
            Result<bool> found = ReadUnsigned(section, key, std::numeric_limits<T>::max(), number);
            value = static_cast<T>(number);
            return found;
        }
    }

    template <typename T>
    bool Fetch(std::string_view section, std::string_view key, T& value) const
    {
        const Result<bool> found = Require(section, key, value);
        return found && *found;
    }

    std::unique_ptr<Content> m_pContent;
};

} // namespace Toolkit

#endif
