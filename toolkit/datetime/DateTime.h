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
/// C library's, which follows TZ. Quirk: a local time that comes twice is the first, and one that is left out
/// counts on from the last one before. Nothing here throws or logs: what does not exist is an invalid value,
/// which stays invalid through every operation, and whose fields are 0.
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

    bool IsValid() const;

    /// Local time; months from 1, hours from 0.
    int GetYear() const;
    int GetMonth() const;
    unsigned int GetDay() const;
    unsigned int GetHour() const;
    unsigned int GetMinute() const;
    unsigned int GetSecond() const;

    /// By instant; the invalid value comes before all others.
    bool operator==(const DateTime& other) const;
    bool operator!=(const DateTime& other) const;
    bool operator<(const DateTime& other) const;
    bool operator<=(const DateTime& other) const;
    bool operator>(const DateTime& other) const;
    bool operator>=(const DateTime& other) const;

    /// Years and months first: a day that the month does not have becomes its last one; then weeks and days.
    /// The time of the day stays. Too far for 64 bits of milliseconds is invalid.
    void Add(unsigned int years, unsigned int months, unsigned int weeks, unsigned int days);
    void Remove(unsigned int years, unsigned int months, unsigned int weeks, unsigned int days);
    /// Moves the instant by exactly that much, or to the invalid value if that is too far.
    void Add(unsigned int hours, unsigned int minutes, unsigned int seconds);
    void Remove(unsigned int hours, unsigned int minutes, unsigned int seconds);

    /// This minus the other, truncated toward zero and cut to 32 bits; 0 unless both are valid.
    /// Quirk: the first one is spelled "Secondes".
    int GetTotalSecondes(smart_ptr<DateTime, smart_ptr_policy> other) const;
    int GetTotalMinutes(smart_ptr<DateTime, smart_ptr_policy> other) const;
    int GetTotalHours(smart_ptr<DateTime, smart_ptr_policy> other) const;

    /// Shifts the instant so that the local fields show what a clock in UTC shows; and back.
    /// Quirk: it does not come back where the local zone leaves out that time.
    DateTime& MakeToUTC();
    DateTime& MakeFromUTC();

    /// The current time.
    void Now();

    /// A real date, at 00:00:00 local time, for a wished-for day of a month: days 29 to 31 that the month
    /// does not have become the first of the next one. Invalid for month 0 and for other days that do not
    /// exist.
    /// Quirk: every month above 12, not only 13, is January of the next year.
    /// Quirk: 30 February is 1 March in leap years too, though 31 April is 1 May.
    static DateTime CreateNormalizedDateTime(unsigned int year, unsigned int month, unsigned int day);

    /// "2009-03-07", "14:05:09", and both with a space in between; with `utc` the fields of UTC, and " Z"
    /// after the time. At least two digits each; `out` is replaced.
    /// Quirk: years below 1000 have fewer than four digits; an invalid value has texts of zeros.
    /// Quirk: with `utc` the text is right also where MakeToUTC cannot show that time.
    void GetIsoDate(TString<wchar_t>& out, bool utc) const;
    void GetIsoTime(TString<wchar_t>& out, bool utc) const;
    void GetIsoString(TString<wchar_t>& out, bool utc) const;
    void GetIsoString(TString<char>& out, bool utc) const;
    /// "20090307140509", local time.
    void GetSortableString(TString<wchar_t>& out) const;

    /// Reads what GetIsoString writes. False, and an invalid value, if the text holds no time. Numbers are
    /// read as a wide stream in the classic locale reads them, with any one character between two of them and
    /// between the seconds and the "Z".
    /// Quirk: "12:00:00Z" is local time, as its "Z" is that one character.
    /// Quirk: seconds that begin with no number are 0.
    /// Quirk: without "Z" the second of two equal times, when the clocks go back, is read as the first.
    bool ParseIsoString(const TString<wchar_t>& text);
    bool ParseIsoString(const TString<char>& text);

    /// Decimal, filled with "0" to `width`, however wide; nothing of this value is in it.
    /// Quirk: the zeros stand before a minus sign.
    TString<wchar_t> IntToUString(int value, int width) const;

    /// The short forms of the user's locale (see Locales): the date; the hour and minute; both with a space
    /// in between; and the time for a value of today, else the date.
    /// Quirk: months have two digits always, days only where the locale wants it: "03/7/09".
    /// Quirk: seconds are never shown.
    /// Quirk: `%T`, `%R` and `%r`, which no pattern of Locales holds, are hours and minutes without a marker.
    /// Quirk: AM and PM are what the C library's current locale calls them, whatever locale the pattern is
    /// of.
    /// Quirk: where the C library has no such texts, they are "AM" and "PM" all the same.
    /// Quirk: every field of an invalid value is 0: "00/00/0000 00:00".
    void GetDate(TString<wchar_t>& out) const;
    void GetTime(TString<wchar_t>& out) const;
    void GetString(TString<wchar_t>& out) const;
    void GetRelativeStringFromNow(TString<wchar_t>& out) const;

private:
    friend class Timestamp;

    wxDateTime* m_pDateTime;
};

} // namespace Toolkit

#endif
