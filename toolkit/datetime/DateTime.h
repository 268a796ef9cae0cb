// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_DATETIME_DATETIME_H
#define TOOLKIT_DATETIME_DATETIME_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"

class wxDateTime;

namespace Toolkit
{

/// A point in time, of whole seconds, with the calendar of the system's local zone. A value: copies are deep,
/// and each object is used by one thread at a time, while no other changes the environment. The zones are the
/// C library's, which follows TZ. Nothing here throws or logs: what does not exist is an invalid value, which
/// stays invalid through every operation, and whose fields are 0. Quirk: of a local time that comes twice the
/// first is meant, and one that is left out counts on from the last one before.
///
/// @code
/// Toolkit::DateTime due(2026, 3, 31, 14, 0, 0);
/// due.Add(0, 1, 0, 0); // 30 April
/// Toolkit::TString<wchar_t> iso;
/// due.GetIsoString(iso, true);
/// std::wcout << iso << L'\n';
/// @endcode
class TOOLKIT_API DateTime
{
public:
    /// The current time.
    DateTime();
    /// A wall-clock time in the local zone; months from 1. Invalid if there is no such date or time.
    /// Quirk: day, hour, minute and second are taken modulo 65536 first.
    /// Quirk: seconds 60 and 61 are taken and count on into the next minute, but in a zone with leap seconds.
    DateTime(unsigned int year, unsigned int month, unsigned int day, unsigned int hour, unsigned int minute,
             unsigned int second);
    /// The same in the fixed zone UTC + utcOffsetHours. Invalid for offsets outside -12 to +13 as well.
    DateTime(unsigned int year, unsigned int month, unsigned int day, unsigned int hour, unsigned int minute,
             unsigned int second, int utcOffsetHours);
    DateTime(const DateTime& other);
    DateTime& operator=(const DateTime& other);
    ~DateTime();

    /// True unless this is the invalid value.
    bool IsValid() const;

    /// The year in the local zone, as are the other fields.
    int GetYear() const;
    /// The month, from 1.
    int GetMonth() const;
    /// The day of the month, from 1.
    unsigned int GetDay() const;
    /// The hour, from 0.
    unsigned int GetHour() const;
    /// The minute, from 0.
    unsigned int GetMinute() const;
    /// The second, from 0.
    unsigned int GetSecond() const;

    /// By instant; the invalid value comes before all others.
    bool operator==(const DateTime& other) const;
    /// True when the instants differ.
    bool operator!=(const DateTime& other) const;
    /// True when this instant is the earlier one.
    bool operator<(const DateTime& other) const;
    /// True when this instant is not the later one.
    bool operator<=(const DateTime& other) const;
    /// True when this instant is the later one.
    bool operator>(const DateTime& other) const;
    /// True when this instant is not the earlier one.
    bool operator>=(const DateTime& other) const;

    /// Years and months first: a day that the month does not have becomes its last one; then weeks and days.
    /// The time of the day stays. Too far for 64 bits of milliseconds is invalid.
    void Add(unsigned int years, unsigned int months, unsigned int weeks, unsigned int days);
    /// The same backwards: years and months first, then weeks and days.
    void Remove(unsigned int years, unsigned int months, unsigned int weeks, unsigned int days);
    /// Moves the instant by exactly that much, or to the invalid value if that is too far.
    void Add(unsigned int hours, unsigned int minutes, unsigned int seconds);
    /// Moves the instant back by exactly that much.
    void Remove(unsigned int hours, unsigned int minutes, unsigned int seconds);

    /// The seconds from the other to this one, negative if this is the earlier one, cut to 32 bits; 0 unless
    /// both are valid. Quirk: it is spelled "Secondes".
    int GetTotalSecondes(smart_ptr<DateTime, smart_ptr_policy> other) const;
    /// The same in minutes, truncated toward zero.
    int GetTotalMinutes(smart_ptr<DateTime, smart_ptr_policy> other) const;
    /// The same in hours, truncated toward zero.
    int GetTotalHours(smart_ptr<DateTime, smart_ptr_policy> other) const;

    /// Shifts the instant so that the local fields show what a clock in UTC shows.
    /// Quirk: `MakeFromUTC` does not lead back where the local zone leaves out that time.
    DateTime& MakeToUTC();
    /// Undoes `MakeToUTC`.
    DateTime& MakeFromUTC();

    /// The current time.
    void Now();

    /// A real date, at 00:00:00 local time, for a wished-for day of a month: days 29 to 31 that the month
    /// does not have become the first of the next one. Invalid for month 0 and for other days that do not
    /// exist.
    /// Quirk: every month above 12, not only 13, is January of the next year.
    /// Quirk: 30 February is 1 March in leap years too, though 31 April is 1 May.
    static DateTime CreateNormalizedDateTime(unsigned int year, unsigned int month, unsigned int day);

    /// Replaces `out` by the date, "2009-03-07": that of the local zone, or with `utc` that of UTC. Each
    /// number has at least two digits. Quirk: years below 1000 have fewer than four digits; an invalid value
    /// has texts of zeros. Quirk: with `utc` the text is right also where MakeToUTC cannot show that time.
    void GetIsoDate(TString<wchar_t>& out, bool utc) const;
    /// Replaces `out` by the time, "14:05:09", or with `utc` "14:05:09 Z".
    void GetIsoTime(TString<wchar_t>& out, bool utc) const;
    /// Replaces `out` by both with a space in between, "2009-03-07 14:05:09".
    void GetIsoString(TString<wchar_t>& out, bool utc) const;
    /// The same as bytes.
    void GetIsoString(TString<char>& out, bool utc) const;
    /// Replaces `out` by all of the local time, "20090307140509".
    void GetSortableString(TString<wchar_t>& out) const;

    /// Reads what GetIsoString writes. False, and an invalid value, if the text holds no time. Numbers are
    /// read as a wide stream in the classic locale reads them, with any one character between two of them and
    /// between the seconds and the "Z".
    /// Quirk: "12:00:00Z" is local time, as its "Z" is that one character.
    /// Quirk: seconds that begin with no number are 0.
    /// Quirk: without "Z" the second of two equal times, when the clocks go back, is read as the first.
    bool ParseIsoString(const TString<wchar_t>& text);
    /// The same for bytes.
    bool ParseIsoString(const TString<char>& text);

    /// Decimal, filled with "0" to `width`, however wide; nothing of this value is in it.
    /// Quirk: the zeros stand before a minus sign.
    TString<wchar_t> IntToUString(int value, int width) const;

    /// Replaces `out` by the date in the short form of the user's locale (see Locales).
    /// Quirk: months have two digits always, days only where the locale wants it: "03/7/09".
    void GetDate(TString<wchar_t>& out) const;
    /// Replaces `out` by the hour and minute in the short form of the user's locale.
    /// Quirk: seconds are never shown.
    /// Quirk: `%T`, `%R` and `%r`, which no pattern of Locales holds, are hours and minutes without a marker.
    /// Quirk: AM and PM are what the C library's current locale calls them, whatever locale the pattern is
    /// of.
    /// Quirk: where the C library has no such texts, they are "AM" and "PM" all the same.
    void GetTime(TString<wchar_t>& out) const;
    /// Replaces `out` by both with a space in between.
    /// Quirk: every field of an invalid value is 0: "00/00/0000 00:00".
    void GetString(TString<wchar_t>& out) const;
    /// Replaces `out` by the time for a value of today, and by the date for any other.
    void GetRelativeStringFromNow(TString<wchar_t>& out) const;

private:
    friend class Timestamp;

    wxDateTime* m_pDateTime;
};

} // namespace Toolkit

#endif
