// SPDX-License-Identifier: MIT
#include "toolkit/internal/log/LineFormat.h"

#include <cstddef>
#include <cstdio>
#include <cstring>

#include "toolkit/internal/text/DecimalDigits.h"
#include "toolkit/internal/text/SimdBlock.h"
#include "toolkit/internal/zones/CivilTime.h"

namespace Toolkit
{

namespace
{

using Block = Detail::SimdBlock<char>;

// In nanoseconds.
const std::int64_t s_nMillisecond = 1000000;
const std::int64_t s_nSecond = 1000 * s_nMillisecond;

const std::string_view s_words[] = {"error", "warning", "info", "debug", "verbose"};

std::string_view WordOf(unsigned int severity)
{
    return s_words[severity < std::size(s_words) ? severity : std::size(s_words) - 1];
}

// True when no byte is a control character, DEL, or part of a character beyond ASCII. There is at least a
// block of them.
bool IsAllPrintable(std::string_view text)
{
    // Bytes beyond ASCII are negative.
    const auto others = [](const char* bytes)
    {
        const Block::Vector block = Block::Load(bytes);
        return (block < ' ') | (block == '\x7F');
    };
    Block::Vector any = others(text.data() + text.size() - Block::s_uCount);
    for (std::size_t i = 0; i + Block::s_uCount <= text.size(); i += Block::s_uCount)
        any |= others(text.data() + i);
    return !Block::Any(any);
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
    if (value.size() >= Block::s_uCount && IsAllPrintable(value))
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

std::string_view LineFormat::Of(const LineParts& parts)
{
    // Divided and not subtracted: the clock's first second begins before its first moment.
    const std::int64_t count = std::chrono::nanoseconds(parts.time.time_since_epoch()).count();
    std::int64_t second = count / s_nSecond;
    std::int64_t rest = count % s_nSecond;
    if (rest < 0)
    {
        rest += s_nSecond;
        --second;
    }
    if (second != m_nSecond || m_strDate.empty())
        SetSecond(second);
    if (parts.severity != m_uSeverity || parts.thread != m_uThread || m_uFields == 0)
        SetFields(parts.severity, parts.thread);
    SetMilliseconds(static_cast<unsigned int>(rest / s_nMillisecond));

    const std::string_view function = parts.function.empty() ? "-" : parts.function;
    const std::size_t size = m_uFields + function.size() + 1 + parts.message.size() + 1;
    if (size > sizeof(m_line))
        return LongLine(function, parts.message);
    char* end = Put(m_line + m_uFields, function);
    *end++ = ' ';
    end = Put(end, parts.message);
    // The fields, which are printable, are longer than a block.
    const char* const begin = m_line + m_uFields - Block::s_uCount;
    if (!IsAllPrintable(std::string_view(begin, static_cast<std::size_t>(end - begin))))
        return LongLine(function, parts.message);
    *end = '\n';
    return {m_line, size};
}

std::string_view LineFormat::LongLine(std::string_view function, std::string_view message)
{
    m_strLongLine.assign(m_line, m_uFields);
    AppendEscaped(m_strLongLine, function);
    m_strLongLine += ' ';
    AppendEscaped(m_strLongLine, message);
    m_strLongLine += '\n';
    return m_strLongLine;
}

void LineFormat::SetFields(unsigned int severity, std::uint64_t thread)
{
    char* end = Put(m_line, m_strDate);
    end = Put(end, ".000");
    end = Put(end, m_strOffset);
    end = Put(end, WordOf(severity));
    *end++ = ' ';
    end = DecimalDigits::Write(end, thread);
    *end++ = ' ';
    m_uFields = static_cast<std::size_t>(end - m_line);
    m_uSeverity = severity;
    m_uThread = thread;
}

void LineFormat::SetMilliseconds(unsigned int count)
{
    char* const digits = m_line + m_strDate.size() + 1;
    digits[0] = static_cast<char>('0' + count / 100);
    digits[1] = static_cast<char>('0' + count / 10 % 10);
    digits[2] = static_cast<char>('0' + count % 10);
}

void LineFormat::SetSecond(std::int64_t second)
{
    m_uFields = 0;
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
    m_nSecond = second;
}

} // namespace Toolkit
