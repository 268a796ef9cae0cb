#ifndef TOOLKIT_DATETIME_DATETIME_H
#define TOOLKIT_DATETIME_DATETIME_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"

class wxDateTime;

namespace Toolkit
{

// A point in time, in milliseconds, with the calendar of the system's local zone. A value: copies are deep,
// and each object is used by one thread at a time. Zone rules are the C library's, so every zone and year is
// right. Nothing here throws or logs: what does not exist is an invalid value, which stays invalid through
// every operation and whose getters answer 0.
class TOOLKIT_API DateTime
{
public:
    // The current time, without its milliseconds.
    DateTime();
    // A wall-clock time in the local zone; months from 1. Invalid if there is no such date or time.
    // Quirk: day, hour, minute and second are taken modulo 65536 first.
    DateTime(unsigned int year, unsigned int month, unsigned int day, unsigned int hour, unsigned int minute,
             unsigned int second);
    // The same in the fixed zone UTC + utcOffsetHours. Invalid for offsets outside -12 to +13.
    DateTime(unsigned int year, unsigned int month, unsigned int day, unsigned int hour, unsigned int minute,
             unsigned int second, int utcOffsetHours);
    DateTime(const DateTime& other);
    DateTime& operator=(const DateTime& other);
    ~DateTime();

    bool IsValid() const;

    // Local time; months from 1, hours from 0.
    int GetYear() const;
    int GetMonth() const;
    unsigned int GetDay() const;
    unsigned int GetHour() const;
    unsigned int GetMinute() const;
    unsigned int GetSecond() const;

    // By instant.
    bool operator==(const DateTime& other) const;
    bool operator!=(const DateTime& other) const;
    bool operator<(const DateTime& other) const;
    bool operator<=(const DateTime& other) const;
    bool operator>(const DateTime& other) const;
    bool operator>=(const DateTime& other) const;

    // Calendar arithmetic: a day that the resulting month does not have becomes its last one.
    void Add(unsigned int years, unsigned int months, unsigned int weeks, unsigned int days);
    void Remove(unsigned int years, unsigned int months, unsigned int weeks, unsigned int days);
    // Moves the instant by exactly that much.
    void Add(unsigned int hours, unsigned int minutes, unsigned int seconds);
    void Remove(unsigned int hours, unsigned int minutes, unsigned int seconds);

    // This minus the other, truncated toward zero and cut to 32 bits.
    int GetTotalSecondes(smart_ptr<DateTime, smart_ptr_policy> other) const;
    int GetTotalMinutes(smart_ptr<DateTime, smart_ptr_policy> other) const;
    int GetTotalHours(smart_ptr<DateTime, smart_ptr_policy> other) const;

    // Shifts the instant so that the local fields show what a clock in UTC shows; and back.
    DateTime& MakeToUTC();
    DateTime& MakeFromUTC();

    // The current time, without its milliseconds.
    void Now();

    // A real date, at 00:00:00 local time, for a wished-for day of a month.
    static DateTime CreateNormalizedDateTime(unsigned int year, unsigned int month, unsigned int day);

    // "2009-03-07", "14:05:09", and both with a space in between; with `utc` the fields of UTC, and " Z"
    // after the time.
    void GetIsoDate(TString<wchar_t>& out, bool utc) const;
    void GetIsoTime(TString<wchar_t>& out, bool utc) const;
    void GetIsoString(TString<wchar_t>& out, bool utc) const;
    void GetIsoString(TString<char>& out, bool utc) const;
    // "20090307140509", local time.
    void GetSortableString(TString<wchar_t>& out) const;

    // Reads what GetIsoString writes. False, and an invalid value, if the text holds no time.
    bool ParseIsoString(const TString<wchar_t>& text);
    bool ParseIsoString(const TString<char>& text);

    // Decimal, filled with "0" to `width`.
    TString<wchar_t> IntToUString(int value, int width) const;

    // The short forms of the user's locale: the date; the hour and minute; both with a space in between; and
    // the time for a value of today, else the date.
    void GetDate(TString<wchar_t>& out) const;
    void GetTime(TString<wchar_t>& out) const;
    void GetString(TString<wchar_t>& out) const;
    void GetRelativeStringFromNow(TString<wchar_t>& out) const;

private:
    wxDateTime* m_pDateTime;
};

} // namespace Toolkit

#endif
