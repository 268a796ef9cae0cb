// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>

#include <wx/datetime.h>

#include "bench/Bench.h"
#include "toolkit/datetime/DateTime.h"
#include "toolkit/datetime/Timestamp.h"

#ifdef BENCH_QT
#include <QDateTime>
#include <QLocale>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_ABSEILTIME
#include <absl/time/time.h>
#endif

using Toolkit::DateTime;
using Toolkit::Timestamp;
using Toolkit::TString;

namespace
{

const char s_strIso[] = "2009-03-07 14:05:09";
const char s_strIsoFormat[] = "%Y-%m-%d %H:%M:%S";
const std::time_t s_iInstant = 1236431109;

// The user's locale for the standard library; the plain one where it is not made on this machine.
std::locale UsersLocale()
{
    try
    {
        return std::locale("");
    }
    catch (const std::runtime_error&)
    {
        return std::locale::classic();
    }
}

// Has the C library follow that zone, the system's own without one.
void UseZone(const char* zone)
{
    static const char* s_pUsed = "none yet";
    if (zone == s_pUsed)
        return;
    s_pUsed = zone;
    if (zone == nullptr)
        unsetenv("TZ");
    else
        setenv("TZ", zone, 1);
    tzset();
}

std::tm Fields()
{
    std::tm fields = {};
    fields.tm_year = 2009 - 1900;
    fields.tm_mon = 2;
    fields.tm_mday = 7;
    fields.tm_hour = 14;
    fields.tm_min = 5;
    fields.tm_sec = 9;
    fields.tm_isdst = -1;
    return fields;
}

void FormatLimit(const char* format)
{
    std::tm fields = {};
    localtime_r(&s_iInstant, &fields);
    char text[64];
    benchmark::DoNotOptimize(std::strftime(text, sizeof text, format, &fields));
    benchmark::DoNotOptimize(text[0]);
}

// Registers the operations, named with the suffix, in that zone.
class Zoned
{
public:
    Zoned(std::string suffix, const char* zone) : m_strSuffix(std::move(suffix)), m_pZone(zone) {}

    template <class Work>
    void Add(const std::string& operation, const std::string& whose, Work work) const
    {
        ToolkitBench::Operation(operation + m_strSuffix + "/" + whose,
                                [zone = m_pZone, work]() mutable
                                {
                                    UseZone(zone);
                                    work();
                                });
    }

private:
    const std::string m_strSuffix;
    const char* const m_pZone;
};

void RegisterConstruct(const Zoned& zoned)
{
    const std::string name = "DateConstruct";
    zoned.Add(name, "Toolkit",
              []
              {
                  const DateTime time(2009, 3, 7, 14, 5, 9);
                  benchmark::DoNotOptimize(&time);
              });
    zoned.Add(name, "limit",
              []
              {
                  std::tm fields = Fields();
                  benchmark::DoNotOptimize(std::mktime(&fields));
              });
    zoned.Add(
        name, "wx",
        []
        { benchmark::DoNotOptimize(wxDateTime(7, wxDateTime::Mar, 2009, 14, 5, 9).GetValue().GetValue()); });
#ifdef BENCH_QT
    zoned.Add(
        name, "Qt",
        [] { benchmark::DoNotOptimize(QDateTime(QDate(2009, 3, 7), QTime(14, 5, 9)).toMSecsSinceEpoch()); });
#endif
#ifdef BENCH_GLIB
    zoned.Add(name, "GLib", [] { g_date_time_unref(g_date_time_new_local(2009, 3, 7, 14, 5, 9)); });
#endif
#ifdef BENCH_ABSEILTIME
    zoned.Add(name, "Abseil",
              [zone = absl::LocalTimeZone()]
              { benchmark::DoNotOptimize(absl::FromCivil(absl::CivilSecond(2009, 3, 7, 14, 5, 9), zone)); });
#endif
}

void RegisterIsoText(const Zoned& zoned)
{
    const std::string name = "DateIsoText";
    zoned.Add(name, "Toolkit",
              [time = DateTime(2009, 3, 7, 14, 5, 9), text = TString<char>()]() mutable
              {
                  time.GetIsoString(text, false);
                  benchmark::DoNotOptimize(text.data());
              });
    zoned.Add(name, "limit", [] { FormatLimit(s_strIsoFormat); });
    zoned.Add(name, "wx",
              [time = wxDateTime(s_iInstant)]
              { benchmark::DoNotOptimize(time.FormatISOCombined(' ').length()); });
    zoned.Add(name, "std",
              []
              {
                  std::tm fields = {};
                  localtime_r(&s_iInstant, &fields);
                  std::ostringstream out;
                  out << std::put_time(&fields, s_strIsoFormat);
                  benchmark::DoNotOptimize(out.str().data());
              });
#ifdef BENCH_QT
    zoned.Add(name, "Qt",
              [time = QDateTime::fromSecsSinceEpoch(s_iInstant)]
              { benchmark::DoNotOptimize(time.toString(Qt::ISODate).data()); });
#endif
#ifdef BENCH_GLIB
    zoned.Add(name, "GLib",
              []
              {
                  GDateTime* const time = g_date_time_new_from_unix_local(s_iInstant);
                  g_free(g_date_time_format(time, s_strIsoFormat));
                  g_date_time_unref(time);
              });
#endif
#ifdef BENCH_ABSEILTIME
    zoned.Add(name, "Abseil",
              [zone = absl::LocalTimeZone()] {
                  benchmark::DoNotOptimize(
                      absl::FormatTime(s_strIsoFormat, absl::FromTimeT(s_iInstant), zone).data());
              });
#endif
}

void RegisterParse(const Zoned& zoned)
{
    const std::string name = "DateParse";
    zoned.Add(name, "Toolkit",
              [time = DateTime(), text = TString<char>(s_strIso)]() mutable
              { benchmark::DoNotOptimize(time.ParseIsoString(text)); });
    zoned.Add(name, "limit",
              []
              {
                  std::tm fields = {};
                  strptime(s_strIso, s_strIsoFormat, &fields);
                  fields.tm_isdst = -1;
                  benchmark::DoNotOptimize(std::mktime(&fields));
              });
    zoned.Add(name, "wx",
              [text = wxString(s_strIso)]
              {
                  wxDateTime time;
                  benchmark::DoNotOptimize(time.ParseISOCombined(text, ' '));
              });
    zoned.Add(name, "std",
              []
              {
                  std::tm fields = {};
                  std::istringstream in(s_strIso);
                  in >> std::get_time(&fields, s_strIsoFormat);
                  fields.tm_isdst = -1;
                  benchmark::DoNotOptimize(std::mktime(&fields));
              });
#ifdef BENCH_QT
    zoned.Add(name, "Qt",
              [text = QString(s_strIso)]
              { benchmark::DoNotOptimize(QDateTime::fromString(text, Qt::ISODate).toMSecsSinceEpoch()); });
#endif
#ifdef BENCH_GLIB
    zoned.Add(name, "GLib",
              []
              {
                  GTimeZone* const zone = g_time_zone_new_local();
                  GDateTime* const time = g_date_time_new_from_iso8601(s_strIso, zone);
                  g_date_time_unref(time);
                  g_time_zone_unref(zone);
              });
#endif
#ifdef BENCH_ABSEILTIME
    zoned.Add(name, "Abseil",
              [zone = absl::LocalTimeZone()]
              {
                  absl::Time time;
                  benchmark::DoNotOptimize(absl::ParseTime(s_strIsoFormat, s_strIso, zone, &time, nullptr));
              });
#endif
}

void RegisterLocaleText(const Zoned& zoned)
{
    const std::string name = "DateLocaleText";
    static const char s_strFormat[] = "%x %H:%M";
    zoned.Add(name, "Toolkit",
              [time = DateTime(2009, 3, 7, 14, 5, 9), text = TString<wchar_t>()]() mutable
              {
                  time.GetString(text);
                  benchmark::DoNotOptimize(text.data());
              });
    zoned.Add(name, "limit", [] { FormatLimit(s_strFormat); });
    zoned.Add(name, "wx",
              [time = wxDateTime(s_iInstant)]
              { benchmark::DoNotOptimize(time.Format(s_strFormat).length()); });
    zoned.Add(name, "std",
              [locale = UsersLocale()]
              {
                  std::tm fields = {};
                  localtime_r(&s_iInstant, &fields);
                  std::ostringstream out;
                  out.imbue(locale);
                  out << std::put_time(&fields, s_strFormat);
                  benchmark::DoNotOptimize(out.str().data());
              });
#ifdef BENCH_QT
    zoned.Add(name, "Qt",
              [time = QDateTime::fromSecsSinceEpoch(s_iInstant)]
              { benchmark::DoNotOptimize(QLocale::system().toString(time, QLocale::ShortFormat).data()); });
#endif
#ifdef BENCH_GLIB
    zoned.Add(name, "GLib",
              []
              {
                  GDateTime* const time = g_date_time_new_from_unix_local(s_iInstant);
                  g_free(g_date_time_format(time, s_strFormat));
                  g_date_time_unref(time);
              });
#endif
}

const char s_strRfc3339[] = "2026-03-02T14:05:09.250+05:00";

// No zone has a part in it: what is read and written has its own offset.
void RegisterTimestampParse()
{
    const std::string name = "TimestampParse/";
    ToolkitBench::Operation(name + "Toolkit",
                            [] { benchmark::DoNotOptimize(Timestamp::Parse(s_strRfc3339).has_value()); });
#ifdef BENCH_QT
    ToolkitBench::Operation(
        name + "Qt", [text = QString(s_strRfc3339)]
        { benchmark::DoNotOptimize(QDateTime::fromString(text, Qt::ISODateWithMs).toMSecsSinceEpoch()); });
#endif
#ifdef BENCH_GLIB
    ToolkitBench::Operation(name + "GLib",
                            [] { g_date_time_unref(g_date_time_new_from_iso8601(s_strRfc3339, nullptr)); });
#endif
#ifdef BENCH_ABSEILTIME
    ToolkitBench::Operation(name + "Abseil",
                            []
                            {
                                absl::Time time;
                                benchmark::DoNotOptimize(
                                    absl::ParseTime(absl::RFC3339_full, s_strRfc3339, &time, nullptr));
                            });
#endif
}

void RegisterTimestampText()
{
    const std::string name = "TimestampText/";
    ToolkitBench::Operation(name + "Toolkit", [time = *Timestamp::Parse(s_strRfc3339)]
                            { benchmark::DoNotOptimize(time.ToRfc3339().data()); });
#ifdef BENCH_QT
    ToolkitBench::Operation(name + "Qt",
                            [time = QDateTime::fromString(s_strRfc3339, Qt::ISODateWithMs).toUTC()]
                            { benchmark::DoNotOptimize(time.toString(Qt::ISODateWithMs).data()); });
#endif
#ifdef BENCH_GLIB
    GDateTime* const read = g_date_time_new_from_iso8601(s_strRfc3339, nullptr);
    ToolkitBench::Operation(name + "GLib",
                            [time = g_date_time_to_utc(read)] { g_free(g_date_time_format_iso8601(time)); });
    g_date_time_unref(read);
#endif
#ifdef BENCH_ABSEILTIME
    absl::Time time;
    absl::ParseTime(absl::RFC3339_full, s_strRfc3339, &time, nullptr);
    ToolkitBench::Operation(name + "Abseil",
                            [time] {
                                benchmark::DoNotOptimize(
                                    absl::FormatTime(absl::RFC3339_full, time, absl::UTCTimeZone()).data());
                            });
#endif
}

} // namespace

void ToolkitBench::Register()
{
    setenv("LC_ALL", "en_GB.UTF-8", 1);
    for (const Zoned& zoned : {Zoned("", "Europe/Paris"), Zoned("NoTZ", nullptr)})
    {
        RegisterConstruct(zoned);
        RegisterIsoText(zoned);
        RegisterParse(zoned);
        RegisterLocaleText(zoned);
    }
    RegisterTimestampParse();
    RegisterTimestampText();
}
