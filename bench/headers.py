#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints as JSON what it takes to compile each header alone, null where it is not installed or does not:
headers.py <repetitions> <flags of wxWidgets>..."""
import json
import pathlib
import shlex
import subprocess
import sys
import time

# The headers of the classes that ours stand beside, by the package that knows their flags.
PEERS = {
    "": ["string", "filesystem", "regex", "wx/string.h", "wx/log.h", "wx/fileconf.h", "wx/zipstrm.h", "wx/datetime.h",
         "boost/regex.hpp", "Poco/Logger.h", "Poco/Process.h"],
    "Qt5Core": ["QString", "QSettings", "QProcess", "QRegularExpression", "QDateTime", "QPluginLoader"],
    "Qt5Network": ["QLocalSocket"],
    "glib-2.0": ["glib.h"],
    "spdlog": ["spdlog/spdlog.h"],
    "absl_time": ["absl/time/time.h"],
    "INIReader": ["INIReader.h"],
    "simpleini": ["SimpleIni.h"],
    "libzip": ["zip.h"],
    "re2": ["re2/re2.h"],
}

# What a user must define before he includes the headers of a package.
DEFINITIONS = {
    "simpleini": ["-DSI_NO_CONVERSION"],
}


def flags_of(package):
    """None when there is no such package."""
    if not package:
        return []
    answer = subprocess.run(["pkg-config", "--cflags", package], capture_output=True, text=True)
    return shlex.split(answer.stdout) + DEFINITIONS.get(package, []) if answer.returncode == 0 else None


def seconds(header, flags, repetitions):
    """The best of the repetitions; None when it does not compile."""
    command = ["g++", "-std=c++17", "-O2", "-fPIC", "-x", "c++", "-fsyntax-only", "-", *flags]
    times = []
    for _ in range(repetitions):
        start = time.perf_counter()
        if subprocess.run(command, input=f"#include <{header}>\n", text=True, stderr=subprocess.DEVNULL).returncode != 0:
            return None
        times.append(time.perf_counter() - start)
    return min(times)


def public_headers(root):
    own = sorted(path.relative_to(root).as_posix() for path in (root / "toolkit").rglob("*")
                 if path.suffix in (".h", ".Exceptions"))
    # Private headers do not compile for a consumer and are nobody's cost.
    sources = (root / "toolkit/CMakeLists.txt").read_text().split("target_sources(")[1:]
    private = {word for part in sources for word in part.split(")")[0].split() if word.endswith(".h")}
    return [name for name in own if name.removeprefix("toolkit/") not in private]


def main():
    if len(sys.argv) < 2 or not sys.argv[1].isdecimal():
        print("usage: headers.py <repetitions> <flags of wxWidgets>...", file=sys.stderr)
        sys.exit(2)
    root = pathlib.Path(__file__).resolve().parent.parent
    repetitions, base = int(sys.argv[1]), sys.argv[2:]
    costs = {}
    for header in public_headers(root):
        costs[header] = seconds(header, ["-I", str(root), *base], repetitions)
        if costs[header] is None:
            sys.exit(f"{header} does not compile alone")
    for package, headers in PEERS.items():
        flags = flags_of(package)
        for header in headers:
            costs[header] = None if flags is None else seconds(header, [*flags, *base], repetitions)
    print(json.dumps(costs))


main()
