// SPDX-License-Identifier: MIT
#include "toolkit/internal/log/LineFormat.h"

#include <cstddef>
#include <cstdio>
#include <cstring>

#include "toolkit/internal/zones/CivilTime.h"

namespace Toolkit
{

namespace
{

// The time, the severity and the number of a thread are shorter.
const std::size_t s_uMostOfFields = 256;
const std::size_t s_uMostOfName = 64;

const std::string_view s_words[] = {"error", "warning", "info", "debug", "verbose"};

std::string_view WordOf(unsigned int severity)
{
    return s_words[severity < std::size(s_words) ? severity : std::size(s_words) - 1];
}

// True when no byte of the eight is a control character, DEL, or part of a character beyond ASCII. A false
// "no" is possible for what follows such a byte.
bool IsPrintable(const char* bytes)
{
    const std::uint64_t ones = 0x0101010101010101U;
    const std::uint64_t high = 0x8080808080808080U;
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof(word));
    const std::uint64_t del = word ^ 0x7F * ones;
    return ((word | (word - 0x20 * ones) | ((del - ones) & ~del)) & high) == 0;
}

// The same of a text of any length.
bool IsAllPrintable(std::string_view text)
{
    char rest[8] = {'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x'};
    if (text.size() < sizeof(rest))
    {
        for (std::size_t i = 0; i < text.size(); ++i)
            rest[i] = text[i];
        return IsPrintable(rest);
    }
    bool all = true;
    for (std::size_t i = 0; i + sizeof(rest) <= text.size(); i += sizeof(rest))
        all = all && IsPrintable(text.data() + i);
    return all && IsPrintable(text.data() + text.size() - sizeof(rest));
}

// The length of the character at the start that must be escaped, 0 when there is none: a control character of
// Unicode, or one of its two separators of lines.
std::size_t LengthOfControl(std::string_view text)
{
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x20 || first == 0x7F)
        return 1;
    if (first == 0xC2 && text.size() > 1 && static_cast<unsigned char>(text[1]) < 0xA0)
        return 2;
    if (text.substr(0, 3) == "\xE2\x80\xA8" || text.substr(0, 3) == "\xE2\x80\xA9")
        return 3;
    return 0;
}

void AppendEscape(std::string& text, std::string_view control)
{
    const auto last = static_cast<unsigned char>(control.back());
    char escape[8];
    if (control.size() == 3)
        std::snprintf(escape, sizeof(escape), "\\u%04x", 0x2000U + last - 0x80U);
    else if (control.size() == 2)
        std::snprintf(escape, sizeof(escape), "\\u%04x", last);
    else if (last == '\n' || last == '\r' || last == '\t')
        std::snprintf(escape, sizeof(escape), "\\%c", last == '\n' ? 'n' : last == '\r' ? 'r' : 't');
    else
        std::snprintf(escape, sizeof(escape), "\\x%02x", last);
    text += escape;
}

void AppendEscaped(std::string& text, std::string_view value)
{
    if (IsAllPrintable(value))
    {
        text += value;
        return;
    }
    std::size_t done = 0;
    for (std::size_t i = 0; i < value.size();)
    {
        const std::size_t length = LengthOfControl(value.substr(i));
        if (length != 0)
        {
            text += value.substr(done, i - done);
            AppendEscape(text, value.substr(i, length));
            done = i + length;
        }
        i += length != 0 ? length : 1;
    }
    text += value.substr(done);
}

// Copies and returns the end.
char* Put(char* place, std::string_view text)
{
    std::memcpy(place, text.data(), text.size());
    return place + text.size();
}

} // namespace

void LineFormat::Append(std::string& text, std::chrono::system_clock::time_point time, unsigned int severity,
                        std::uint64_t thread, std::string_view function, std::string_view message)
{
    using std::chrono::milliseconds;
    using std::chrono::seconds;
    auto rest = time - m_second;
    if (rest < seconds(0) || rest >= seconds(1))
    {
        SetSecond(std::chrono::floor<seconds>(time));
        rest = time - m_second;
    }
    if (thread != m_uThread || m_strThread.empty())
    {
        m_uThread = thread;
        m_strThread = ' ' + std::to_string(thread) + ' ';
    }
    const auto count = static_cast<unsigned int>(std::chrono::duration_cast<milliseconds>(rest).count());
    const char fraction[] = {'.', static_cast<char>('0' + count / 100),
                             static_cast<char>('0' + count / 10 % 10), static_cast<char>('0' + count % 10)};
    char fields[s_uMostOfFields];
    char* end = Put(fields, m_strDate);
    end = Put(end, std::string_view(fraction, sizeof(fraction)));
    end = Put(end, m_strOffset);
    end = Put(end, WordOf(severity));
    end = Put(end, m_strThread);
    const std::string_view name = function.empty() ? "-" : function;
    if (name.size() <= s_uMostOfName && IsAllPrintable(name))
    {
        end = Put(end, name);
        *end++ = ' ';
        text.append(fields, static_cast<std::size_t>(end - fields));
    }
    else
    {
        text.append(fields, static_cast<std::size_t>(end - fields));
        AppendEscaped(text, name);
        text += ' ';
    }
    AppendEscaped(text, message);
    text += '\n';
}

void LineFormat::SetSecond(Second moment)
{
    const std::int64_t second = moment.time_since_epoch().count();
    const CivilTime local = CivilTime::Local(second);
    const std::int64_t minutes = (local.UtcInstant() - second) / 60;
    const std::int64_t distance = minutes < 0 ? -minutes : minutes;
    char date[64];
    std::snprintf(date, sizeof(date), "%04d-%02d-%02dT%02d:%02d:%02d", static_cast<int>(local.year),
                  static_cast<int>(local.month), static_cast<int>(local.day), static_cast<int>(local.hour),
                  static_cast<int>(local.minute), static_cast<int>(local.second));
    char offset[16];
    std::snprintf(offset, sizeof(offset), "%c%02d:%02d ", minutes < 0 ? '-' : '+',
                  static_cast<int>(distance / 60 % 100), static_cast<int>(distance % 60));
    m_strDate = date;
    m_strOffset = offset;
    m_second = moment;
}

} // namespace Toolkit
