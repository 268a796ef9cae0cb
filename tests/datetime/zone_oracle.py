#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints what Python's own zone rules say of the changes of every zone that the system knows.

  Z <zone> ...                                 the zones, all alike, of the lines that follow
  I <instant> <local> <first> <as utc> <ahead> an instant one second before, at or after a change: its local time, the
                                               first instant with that local time, the instant whose local time is
                                               this one's UTC time, and how far the local clocks are ahead
  M <local> <instant>                          a local time that is left out, and the instant that it counts on to

Local times are written like 2009-03-07T14:05:09, instants in seconds since 1970. The folders "posix" and "right" of the
zone database hold the same zones once more, as they are and with leap seconds.
"""
import datetime
import os
import struct
import sys
import zoneinfo

ROOT = zoneinfo.TZPATH[0]
UTC = datetime.timezone.utc
FIRST = int(datetime.datetime(1902, 1, 1, tzinfo=UTC).timestamp())
LAST = int(datetime.datetime(2101, 1, 1, tzinfo=UTC).timestamp())
# No rule for the years to come moves the clocks twice within so short a time.
STEP = 5 * 86400
EPOCH = datetime.datetime(1970, 1, 1)


def zone_files():
    """The names of all zones by what their files hold."""
    names = {}
    for folder, subfolders, files in os.walk(ROOT):
        subfolders.sort()
        if folder == ROOT:
            subfolders[:] = [name for name in subfolders if name not in ("posix", "right")]
        for file in sorted(files):
            path = os.path.join(folder, file)
            with open(path, "rb") as stream:
                data = stream.read()
            if data.startswith(b"TZif"):
                names.setdefault(data, []).append(os.path.relpath(path, ROOT))
    return names


def listed_changes(data):
    """The instants that a zone's file lists, and whether its last line has more (RFC 8536)."""
    def counts(offset):
        return struct.unpack(">6l", data[offset + 20:offset + 44])

    isut, isstd, leap, times, types, chars = counts(0)
    second = 44 + times * 5 + types * 6 + chars + leap * 8 + isstd + isut
    times = counts(second)[3]
    rule = data.rstrip(b"\n").rsplit(b"\n", 1)[1]
    return struct.unpack(">%dq" % times, data[second + 44:second + 44 + 8 * times]), b"," in rule


def local(zone, instant):
    return (EPOCH + datetime.timedelta(seconds=instant)).replace(tzinfo=UTC).astimezone(zone)


def ahead(zone, instant):
    return int(local(zone, instant).utcoffset().total_seconds())


def instant_of(clock, zone):
    """Of a local time: the first of two, and the one before the change for one that is left out."""
    offset = clock.replace(tzinfo=zone, fold=0).utcoffset()
    return (clock - EPOCH) // datetime.timedelta(seconds=1) - int(offset.total_seconds())


def changes(data, zone):
    listed, more = listed_changes(data)
    found = {t for t in listed if FIRST <= t < LAST}
    last = max(found, default=FIRST)
    old = ahead(zone, last)
    while more and last < LAST:
        before, after = last, last + STEP
        new = ahead(zone, after)
        last = after
        while new != old and after - before > 1:
            middle = (before + after) // 2
            if ahead(zone, middle) == old:
                before = middle
            else:
                after = middle
        if new != old:
            found.add(after)
        old = new
    return sorted(found)


def main():
    for data, names in zone_files().items():
        print("Z", *names)
        zone = zoneinfo.ZoneInfo(names[0])
        for change in changes(data, zone):
            for instant in (change - 1, change, change + 1):
                clock = local(zone, instant).replace(tzinfo=None, fold=0)
                utc = EPOCH + datetime.timedelta(seconds=instant)
                print("I", instant, clock.isoformat(), instant_of(clock, zone), instant_of(utc, zone),
                      ahead(zone, instant))
            before, after = ahead(zone, change - 1), ahead(zone, change)
            for second in sorted({before, (before + after) // 2, after - 1}) if after > before else ():
                clock = EPOCH + datetime.timedelta(seconds=change + second)
                print("M", clock.isoformat(), instant_of(clock, zone))


if __name__ == "__main__":
    sys.exit(main())
