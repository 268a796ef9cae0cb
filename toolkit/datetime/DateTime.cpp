// SPDX-License-Identifier: MIT
#include "toolkit/datetime/DateTime.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>

#include <wx/datetime.h>

#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/text/AsciiText.h"
#include "toolkit/internal/zones/CivilTime.h"
#include "toolkit/internal/zones/IsoText.h"
#include "toolkit/internal/zones/IsoWriting.h"

namespace Toolkit
{

namespace
{

const std::int64_t s_nInvalid = std::numeric_limits<std::int64_t>::min();
const std::int64_t s_nMillisecondsPerSecond = 1000;
const std::int64_t s_nLastSecond = std::numeric_limits<std::int64_t>::max() / s_nMillisecondsPerSecond;
// What lies further away from year 0 has no instant.
const std::int64_t s_nLastYear = 292300000;
const int s_nFirstOffset = -12;
const int s_nLastOffset = 13;
const std::int64_t s_nMonthsPerYear = 12;

std::int64_t Milliseconds(const wxDateTime& time)
{
    return time.IsValid() ? time.GetValue().GetValue() : s_nInvalid;
}

// Every value is one of whole seconds.
std::int64_t Seconds(const wxDateTime& time)
{
    return Milliseconds(time) / s_nMillisecondsPerSecond;
}

// Invalid for instants that milliseconds cannot count.
wxDateTime FromSeconds(std::int64_t seconds)
{
    if (seconds < -s_nLastSecond || seconds > s_nLastSecond)
        return wxDateTime();
    return wxDateTime(wxLongLong(seconds * s_nMillisecondsPerSecond));
}

bool IsPossible(const CivilTime& civil)
{
    return civil.year >= -s_nLastYear && civil.year <= s_nLastYear && civil.Exists();
}

wxDateTime FromLocal(const CivilTime& civil)
{
    return IsPossible(civil) ? FromSeconds(civil.LocalInstant()) : wxDateTime();
}

wxDateTime FromUtc(const CivilTime& civil)
{
    return IsPossible(civil) ? FromSeconds(civil.UtcInstant()) : wxDateTime();
}

// All fields 0 for an invalid value.
CivilTime Fields(const wxDateTime& time, bool utc)
{
    if (!time.IsValid())
        return CivilTime();
    return utc ? CivilTime::Utc(Seconds(time)) : CivilTime::Local(Seconds(time));
}

CivilTime Arguments(unsigned int year, unsigned int month, unsigned int day, unsigned int hour,
                    unsigned int minute, unsigned int second)
{
    CivilTime civil;
    civil.year = year;
    civil.month = month;
    civil.day = static_cast<std::uint16_t>(day);
    civil.hour = static_cast<std::uint16_t>(hour);
    civil.minute = static_cast<std::uint16_t>(minute);
    civil.second = static_cast<std::uint16_t>(second);
    return civil;
}

// Years and months first, then the day is cut to the month's last, then the days.
wxDateTime Shifted(const wxDateTime& time, std::int64_t years, std::int64_t months, std::int64_t days)
{
    if (!time.IsValid() || (years == 0 && months == 0 && days == 0))
        return time;
    CivilTime civil = CivilTime::Local(Seconds(time));
    civil.AddMonths(years * s_nMonthsPerYear + months);
    if (!IsPossible(civil))
        return wxDateTime();
    civil.day += days;
    return FromSeconds(civil.LocalInstant());
}

wxDateTime Moved(const wxDateTime& time, std::int64_t seconds)
{
    return time.IsValid() ? FromSeconds(Seconds(time) + seconds) : time;
}

std::int64_t Duration(unsigned int hours, unsigned int minutes, unsigned int seconds)
{
    return (std::int64_t{hours} * 60 + minutes) * 60 + seconds;
}

wxDateTime FromIso(const wchar_t* text, std::size_t length)
{
    const IsoText iso = IsoText::Read(text, text + length);
    return iso.utc ? FromUtc(iso.time) : FromLocal(iso.time);
}

// In milliseconds.
const std::uint64_t s_uSecond = 1000;
const std::uint64_t s_uMinute = 60 * s_uSecond;
const std::uint64_t s_uHour = 60 * s_uMinute;

// This minus the other in whole units, cut to 32 bits; 0 without two valid values.
int Difference(const wxDateTime& time, const wxDateTime* other, std::uint64_t unit)
{
    if (!time.IsValid() || other == nullptr || !other->IsValid())
        return 0;
    const auto mine = static_cast<std::uint64_t>(Milliseconds(time));
    const auto others = static_cast<std::uint64_t>(Milliseconds(*other));
    const bool later = Milliseconds(time) >= Milliseconds(*other);
    const std::uint64_t units = (later ? mine - others : others - mine) / unit;
    return static_cast<int>(static_cast<std::uint32_t>(later ? units : 0 - units));
}

} // namespace

DateTime::DateTime() : m_pDateTime(new wxDateTime(FromSeconds(std::time(nullptr)))) {}

DateTime::DateTime(unsigned int year, unsigned int month, unsigned int day, unsigned int hour,
                   unsigned int minute, unsigned int second)
    : m_pDateTime(new wxDateTime(FromLocal(Arguments(year, month, day, hour, minute, second))))
{
}

DateTime::DateTime(unsigned int year, unsigned int month, unsigned int day, unsigned int hour,
                   unsigned int minute, unsigned int second, int utcOffsetHours)
    : m_pDateTime(new wxDateTime)
{
    if (utcOffsetHours < s_nFirstOffset || utcOffsetHours > s_nLastOffset)
        return;
    CivilTime civil = Arguments(year, month, day, hour, minute, second);
    if (!IsPossible(civil))
        return;
    // Not from the instant: a leap second may lie between.
    civil.hour -= utcOffsetHours;
    *m_pDateTime = FromSeconds(civil.UtcInstant());
}

DateTime::DateTime(const DateTime& other) : m_pDateTime(new wxDateTime(*other.m_pDateTime)) {}

DateTime& DateTime::operator=(const DateTime& other)
{
    if (this != &other)
        *m_pDateTime = *other.m_pDateTime;
    return *this;
}

DateTime::~DateTime()
{
    delete m_pDateTime;
}

bool DateTime::IsValid() const
{
    return m_pDateTime->IsValid();
}

int DateTime::GetYear() const
{
    return static_cast<int>(Fields(*m_pDateTime, false).year);
}

int DateTime::GetMonth() const
{
    return static_cast<int>(Fields(*m_pDateTime, false).month);
}

unsigned int DateTime::GetDay() const
{
    return static_cast<unsigned int>(Fields(*m_pDateTime, false).day);
}

unsigned int DateTime::GetHour() const
{
    return static_cast<unsigned int>(Fields(*m_pDateTime, false).hour);
}

unsigned int DateTime::GetMinute() const
{
    return static_cast<unsigned int>(Fields(*m_pDateTime, false).minute);
}

unsigned int DateTime::GetSecond() const
{
    return static_cast<unsigned int>(Fields(*m_pDateTime, false).second);
}

bool DateTime::operator==(const DateTime& other) const
{
    return Milliseconds(*m_pDateTime) == Milliseconds(*other.m_pDateTime);
}

bool DateTime::operator!=(const DateTime& other) const
{
    return !(*this == other);
}

bool DateTime::operator<(const DateTime& other) const
{
    return Milliseconds(*m_pDateTime) < Milliseconds(*other.m_pDateTime);
}

bool DateTime::operator<=(const DateTime& other) const
{
    return !(other < *this);
}

bool DateTime::operator>(const DateTime& other) const
{
    return other < *this;
}

bool DateTime::operator>=(const DateTime& other) const
{
    return !(*this < other);
}

void DateTime::Add(unsigned int years, unsigned int months, unsigned int weeks, unsigned int days)
{
    *m_pDateTime = Shifted(*m_pDateTime, years, months, std::int64_t{weeks} * 7 + days);
}

void DateTime::Remove(unsigned int years, unsigned int months, unsigned int weeks, unsigned int days)
{
    *m_pDateTime =
        Shifted(*m_pDateTime, -std::int64_t{years}, -std::int64_t{months}, -std::int64_t{weeks} * 7 - days);
}

void DateTime::Add(unsigned int hours, unsigned int minutes, unsigned int seconds)
{
    *m_pDateTime = Moved(*m_pDateTime, Duration(hours, minutes, seconds));
}

void DateTime::Remove(unsigned int hours, unsigned int minutes, unsigned int seconds)
{
    *m_pDateTime = Moved(*m_pDateTime, -Duration(hours, minutes, seconds));
}

int DateTime::GetTotalSecondes(smart_ptr<DateTime, smart_ptr_policy> other) const
{
    return Difference(*m_pDateTime, other.IsNull() ? nullptr : other->m_pDateTime, s_uSecond);
}

int DateTime::GetTotalMinutes(smart_ptr<DateTime, smart_ptr_policy> other) const
{
    return Difference(*m_pDateTime, other.IsNull() ? nullptr : other->m_pDateTime, s_uMinute);
}

int DateTime::GetTotalHours(smart_ptr<DateTime, smart_ptr_policy> other) const
{
    return Difference(*m_pDateTime, other.IsNull() ? nullptr : other->m_pDateTime, s_uHour);
}

DateTime& DateTime::MakeToUTC()
{
    *m_pDateTime = FromLocal(Fields(*m_pDateTime, true));
    return *this;
}

DateTime& DateTime::MakeFromUTC()
{
    *m_pDateTime = FromUtc(Fields(*m_pDateTime, false));
    return *this;
}

void DateTime::Now()
{
    *m_pDateTime = FromSeconds(std::time(nullptr));
}

DateTime DateTime::CreateNormalizedDateTime(unsigned int year, unsigned int month, unsigned int day)
{
    CivilTime real = Arguments(year, month, day, 0, 0, 0);
    const bool movable = day == 31 || (month == 2 && (day == 29 || day == 30));
    if (movable && real.day > CivilTime::DaysOfMonth(real.year, real.month))
    {
        ++real.month;
        real.day = 1;
    }
    if (real.month > s_nMonthsPerYear)
    {
        ++real.year;
        real.month = 1;
    }
    DateTime result;
    *result.m_pDateTime = FromLocal(real);
    return result;
}

void DateTime::GetIsoDate(TString<wchar_t>& out, bool utc) const
{
    wchar_t text[IsoWriting::s_uMostText];
    out.assign(text, IsoWriting::WriteDate(text, Fields(*m_pDateTime, utc)));
}

void DateTime::GetIsoTime(TString<wchar_t>& out, bool utc) const
{
    wchar_t text[IsoWriting::s_uMostText];
    out.assign(text, IsoWriting::WriteTime(text, Fields(*m_pDateTime, utc), utc));
}

void DateTime::GetIsoString(TString<wchar_t>& out, bool utc) const
{
    IsoWriting::WriteIso(out, Fields(*m_pDateTime, utc), utc);
}

void DateTime::GetIsoString(TString<char>& out, bool utc) const
{
    IsoWriting::WriteIso(out, Fields(*m_pDateTime, utc), utc);
}

void DateTime::GetSortableString(TString<wchar_t>& out) const
{
    const CivilTime civil = Fields(*m_pDateTime, false);
    wchar_t text[IsoWriting::s_uMostText];
    wchar_t* end = IsoWriting::WriteYear(text, civil.year);
    end = IsoWriting::WriteNumber(IsoWriting::WriteNumber(end, civil.month), civil.day);
    end = IsoWriting::WriteNumber(
        IsoWriting::WriteNumber(IsoWriting::WriteNumber(end, civil.hour), civil.minute), civil.second);
    out.assign(text, end);
}

bool DateTime::ParseIsoString(const TString<wchar_t>& text)
{
    *m_pDateTime = FromIso(text.data(), text.size());
    return IsValid();
}

bool DateTime::ParseIsoString(const TString<char>& text)
{
    wchar_t wide[IsoWriting::s_uMostText];
    if (text.size() > IsoWriting::s_uMostText || !AsciiText::Widen(text.data(), text.size(), wide))
        return ParseIsoString(UTF8::ToUNICODE(text));
    *m_pDateTime = FromIso(wide, text.size());
    return IsValid();
}

TString<wchar_t> DateTime::IntToUString(int value, int width) const
{
    TString<wchar_t> text(std::to_wstring(value));
    if (width > 0 && text.size() < static_cast<std::size_t>(width))
        text.insert(0, static_cast<std::size_t>(width) - text.size(), L'0');
    return text;
}

} // namespace Toolkit
