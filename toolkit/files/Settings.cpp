// SPDX-License-Identifier: MIT
#include "toolkit/files/Settings.h"

#include <chrono>
#include <mutex>
#include <shared_mutex>
#include <utility>

#include "toolkit/encoding/Text.h"
#include "toolkit/files/WholeFile.h"
#include "toolkit/internal/ini/IniDocument.h"
#include "toolkit/internal/system/AbsolutePath.h"
#include "toolkit/internal/system/FolderLock.h"
#include "toolkit/internal/text/BoolText.h"
#include "toolkit/internal/text/CodePoints.h"
#include "toolkit/internal/text/NumberText.h"
#include "toolkit/internal/text/TextEncoding.h"
#include "toolkit/internal/text/Utf8Scan.h"

namespace Toolkit
{

namespace
{

const std::chrono::milliseconds s_lockLimit(5000);
const std::size_t s_uShown = 100;

std::string Place(std::string_view section, std::string_view key)
{
    return std::string(section).append("/").append(key);
}

// So much of a value as fits into a message, cut between two characters.
std::string Shown(std::string_view value)
{
    if (value.size() <= s_uShown)
        return "'" + std::string(value) + "'";
    std::size_t end = s_uShown;
    while (end > 0 && CodePoints::IsContinuation(value[end]))
        --end;
    return "'" + std::string(value.substr(0, end)) + "...'";
}

Failure Unreadable(std::string_view section, std::string_view key, std::string_view value, const char* kind)
{
    return Failure(Errc::Malformed, Place(section, key) + ": " + Shown(value) + " is no " + kind);
}

Failure TooLarge(std::string_view section, std::string_view key, std::string_view value)
{
    return Failure(std::make_error_code(std::errc::result_out_of_range),
                   Place(section, key) + ": " + Shown(value) + " does not fit");
}

Failure Refused(std::string_view section, std::string_view key, const char* reason)
{
    return Failure(Errc::Refused, "cannot set " + Place(section, key) + ": " + reason);
}

// The text of a file without its mark, as UTF-8.
Result<std::string> Decode(std::string bytes, const TextEncoding& encoding, const std::filesystem::path& path)
{
    const std::string prefix = "cannot read " + path.native() + ": ";
    if (encoding.GetUnitLength() == 1)
    {
        const std::size_t broken = Utf8Scan::FindBroken(bytes);
        if (broken != std::string_view::npos)
            return Failure(Errc::Malformed,
                           prefix + "byte " + std::to_string(broken) + " begins no character of UTF-8");
        bytes.erase(0, encoding.GetMarkLength());
        return bytes;
    }
    const char* const name = encoding.GetUnitLength() == 2 ? "UTF-16" : "UTF-32";
    bytes.erase(0, encoding.GetMarkLength());
    TString<wchar_t> wide;
    if (!encoding.Decode(bytes, wide))
        return Failure(Errc::Malformed, prefix + "after its mark it is no " + name);
    return Text::FromWide(wide);
}

// What Decode decoded; it cannot fail for what came from there and was checked since.
Result<std::string> Encode(std::string text, const TextEncoding& encoding)
{
    if (encoding.GetMarkLength() == 0)
        return text;
    Result<std::wstring> wide = Text::ToWide(text);
    if (!wide)
        return std::move(wide).error();
    TString<char> bytes;
    if (!encoding.EncodeMarked(*std::move(wide), bytes))
        return Failure(Errc::Malformed, "cannot encode the settings");
    return std::string(std::move(bytes));
}

bool IsMissing(const Failure& failure)
{
    return failure.Code() == std::errc::no_such_file_or_directory;
}

} // namespace

struct Settings::Content
{
    Content(const std::filesystem::path& path, std::optional<std::string> onDisk,
            const TextEncoding& encoding, std::string text)
        : m_path(AbsolutePath(path)),
          m_onDisk(std::move(onDisk)),
          m_encoding(encoding),
          m_document(std::move(text))
    {
    }

    // The value itself, until the lock is given back.
    std::optional<std::string_view> Find(std::string_view section, std::string_view key) const
    {
        return m_document.Find(section, key);
    }

    // Null, or the failure for what another program did to the file since.
    std::optional<Failure> FindChange() const
    {
        const Result<std::string> now = ReadFile(m_path);
        const char* change = nullptr;
        if (now)
            change = m_onDisk == *now || m_attempt == *now ? nullptr : m_onDisk ? "changed" : "made";
        else if (!IsMissing(now.error()))
            return now.error();
        else if (m_onDisk)
            change = "removed";
        if (change == nullptr)
            return std::nullopt;
        return Failure(Errc::ChangedByOther,
                       "cannot save " + m_path.native() + ": another program " + change + " it");
    }

    mutable std::shared_mutex m_mutex;
    // It leads to the file wherever the process works when it saves.
    const std::filesystem::path m_path;
    // The bytes of the file when it was last read or written here; nothing where there was none.
    std::optional<std::string> m_onDisk;
    // What Save wrote when it failed: it may be there all the same, without being sure to survive a loss of
    // power.
    std::optional<std::string> m_attempt;
    const TextEncoding m_encoding;
    IniDocument m_document;
};

Result<Settings> Settings::Load(const std::filesystem::path& path)
{
    return LoadAs(path, false);
}

Result<Settings> Settings::LoadOrNew(const std::filesystem::path& path)
{
    return LoadAs(path, true);
}

Result<Settings> Settings::LoadAs(const std::filesystem::path& path, bool mayBeMissing)
{
    Result<std::string> bytes = ReadFile(path);
    if (!bytes && mayBeMissing && IsMissing(bytes.error()))
        return Settings(std::make_unique<Content>(path, std::nullopt, TextEncoding(), std::string()));
    if (!bytes)
        return std::move(bytes).error();
    const TextEncoding encoding(bytes->data(), bytes->size());
    Result<std::string> text = Decode(*bytes, encoding, path);
    if (!text)
        return std::move(text).error();
    return Settings(std::make_unique<Content>(path, *std::move(bytes), encoding, *std::move(text)));
}

Settings::Settings(std::unique_ptr<Content> content) noexcept : m_pContent(std::move(content)) {}

Settings::Settings(const Settings& other)
{
    if (other.m_pContent == nullptr)
        return;
    const Content& content = *other.m_pContent;
    const std::shared_lock lock(content.m_mutex);
    m_pContent = std::make_unique<Content>(content.m_path, content.m_onDisk, content.m_encoding,
                                           content.m_document.ToText());
}

Settings::Settings(Settings&& other) noexcept = default;

Settings& Settings::operator=(const Settings& other)
{
    Settings copy(other);
    m_pContent.swap(copy.m_pContent);
    return *this;
}

Settings& Settings::operator=(Settings&& other) noexcept = default;
Settings::~Settings() = default;

std::string Settings::Get(std::string_view section, std::string_view key, std::string_view fallback) const
{
    if (m_pContent == nullptr)
        return std::string(fallback);
    const std::shared_lock lock(m_pContent->m_mutex);
    return std::string(m_pContent->Find(section, key).value_or(fallback));
}

bool Settings::Has(std::string_view section, std::string_view key) const
{
    if (m_pContent == nullptr)
        return false;
    const std::shared_lock lock(m_pContent->m_mutex);
    return m_pContent->Find(section, key).has_value();
}

std::vector<std::string> Settings::Sections() const
{
    if (m_pContent == nullptr)
        return {};
    const std::shared_lock lock(m_pContent->m_mutex);
    return m_pContent->m_document.Sections();
}

std::vector<std::string> Settings::Keys(std::string_view section) const
{
    if (m_pContent == nullptr)
        return {};
    const std::shared_lock lock(m_pContent->m_mutex);
    return m_pContent->m_document.Keys(section);
}

Result<void> Settings::Set(std::string_view section, std::string_view key, std::string_view value)
{
    if (m_pContent == nullptr)
        return Refused(section, key, "the settings were moved elsewhere");
    if (!Text::IsUtf8(section) || !Text::IsUtf8(key) || !Text::IsUtf8(value))
        return Failure(Errc::Refused, "cannot set a value: a name or the value is no UTF-8");
    const std::unique_lock lock(m_pContent->m_mutex);
    if (!m_pContent->m_document.Set(section, key, value))
        return Refused(section, key, "it would not be read back equal");
    return {};
}

bool Settings::Remove(std::string_view section, std::string_view key)
{
    if (m_pContent == nullptr)
        return false;
    const std::unique_lock lock(m_pContent->m_mutex);
    return m_pContent->m_document.Remove(section, key);
}

Result<void> Settings::Save()
{
    if (m_pContent == nullptr)
        return Failure(Errc::Refused, "cannot save the settings: they were moved elsewhere");
    Content& content = *m_pContent;
    const std::unique_lock lock(content.m_mutex);
    Result<std::string> bytes = Encode(content.m_document.ToText(), content.m_encoding);
    if (!bytes)
        return std::move(bytes).error();
    const FolderLock folder(content.m_path, s_lockLimit);
    if (folder.IsBusy())
        return Failure(std::make_error_code(std::errc::device_or_resource_busy),
                       "cannot save " + content.m_path.native() + ": another program has locked its folder");
    if (std::optional<Failure> change = content.FindChange())
        return *std::move(change);
    if (content.m_onDisk != *bytes)
    {
        content.m_attempt = *bytes;
        if (Result<void> written = WriteFile(content.m_path, *bytes); !written)
            return written;
    }
    content.m_onDisk = *std::move(bytes);
    content.m_attempt.reset();
    return {};
}

namespace
{

// Calls `convert` with the text of a key, if there is one. True when it made a value of it.
template <class Content, class Convert>
Result<bool> Converted(const Content* content, std::string_view section, std::string_view key,
                       const char* kind, Convert convert)
{
    if (content == nullptr)
        return false;
    const std::shared_lock lock(content->m_mutex);
    const std::optional<std::string_view> text = content->Find(section, key);
    if (!text)
        return false;
    const std::errc error = convert(*text);
    if (error == std::errc::result_out_of_range)
        return TooLarge(section, key, *text);
    if (error != std::errc())
        return Unreadable(section, key, *text, kind);
    return true;
}

const char c_strNumber[] = "number";

} // namespace

Result<bool> Settings::ReadSigned(std::string_view section, std::string_view key, long long least,
                                  long long greatest, long long& value) const
{
    const auto convert = [&](std::string_view text)
    {
        const std::errc error = NumberText::Read(text, value);
        const bool fits = error != std::errc() || (value >= least && value <= greatest);
        return fits ? error : std::errc::result_out_of_range;
    };
    return Converted(m_pContent.get(), section, key, c_strNumber, convert);
}

Result<bool> Settings::ReadUnsigned(std::string_view section, std::string_view key,
                                    unsigned long long greatest, unsigned long long& value) const
{
    const auto convert = [&](std::string_view text)
    {
        const std::errc error = NumberText::Read(text, value);
        long long negative = 0;
        if (error == std::errc::invalid_argument &&
            NumberText::Read(text, negative) != std::errc::invalid_argument)
            return std::errc::result_out_of_range;
        return error == std::errc() && value > greatest ? std::errc::result_out_of_range : error;
    };
    return Converted(m_pContent.get(), section, key, c_strNumber, convert);
}

Result<bool> Settings::ReadValue(std::string_view section, std::string_view key, float& value) const
{
    return Converted(m_pContent.get(), section, key, c_strNumber,
                     [&](std::string_view text) { return NumberText::Read(text, value); });
}

Result<bool> Settings::ReadValue(std::string_view section, std::string_view key, double& value) const
{
    return Converted(m_pContent.get(), section, key, c_strNumber,
                     [&](std::string_view text) { return NumberText::Read(text, value); });
}

Result<bool> Settings::ReadValue(std::string_view section, std::string_view key, long double& value) const
{
    return Converted(m_pContent.get(), section, key, c_strNumber,
                     [&](std::string_view text) { return NumberText::Read(text, value); });
}

Result<bool> Settings::ReadValue(std::string_view section, std::string_view key, bool& value) const
{
    const auto convert = [&](std::string_view text)
    {
        const std::optional<bool> read = BoolText::Read(text);
        value = read.value_or(value);
        return read ? std::errc() : std::errc::invalid_argument;
    };
    return Converted(m_pContent.get(), section, key, "bool", convert);
}

Result<bool> Settings::ReadValue(std::string_view section, std::string_view key, std::string& value) const
{
    const auto convert = [&](std::string_view text)
    {
        value = text;
        return std::errc();
    };
    return Converted(m_pContent.get(), section, key, "text", convert);
}

namespace
{

template <class Number>
Result<void> SetText(Settings& settings, std::string_view section, std::string_view key, Number value)
{
    if constexpr (std::is_floating_point_v<Number>)
        if (value != value)
            return Refused(section, key, "it is not equal to itself");
    return settings.Set(section, key, std::string_view(NumberText::Write(value)));
}

} // namespace

Result<void> Settings::SetNumber(std::string_view section, std::string_view key, long long value)
{
    return SetText(*this, section, key, value);
}

Result<void> Settings::SetNumber(std::string_view section, std::string_view key, unsigned long long value)
{
    return SetText(*this, section, key, value);
}

Result<void> Settings::SetNumber(std::string_view section, std::string_view key, float value)
{
    return SetText(*this, section, key, value);
}

Result<void> Settings::SetNumber(std::string_view section, std::string_view key, double value)
{
    return SetText(*this, section, key, value);
}

Result<void> Settings::SetNumber(std::string_view section, std::string_view key, long double value)
{
    return SetText(*this, section, key, value);
}

} // namespace Toolkit
