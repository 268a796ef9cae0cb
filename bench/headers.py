#!/usr/bin/env python3
"""Prints as JSON what it takes to compile each header alone: headers.py <flags of the base library>..."""
import json
import pathlib
import shlex
import subprocess
import sys
import time

REPETITIONS = 3
PEERS = {"spdlog/spdlog.h": "spdlog", "QString": "Qt5Core", "QSettings": "Qt5Core", "glib.h": "glib-2.0",
         "absl/strings/str_replace.h": "absl_strings", "boost/regex.hpp": "", "Poco/Logger.h": "", "re2/re2.h": "re2",
         "wx/string.h": "", "wx/textfile.h": "", "string": "", "regex": "", "filesystem": ""}


def flags_of(package):
    if not package:
        return []
    answer = subprocess.run(["pkg-config", "--cflags", package], capture_output=True, text=True)
    return shlex.split(answer.stdout) if answer.returncode == 0 else []


def seconds(header, flags):
    command = ["g++", "-std=c++17", "-O2", "-fPIC", "-x", "c++", "-fsyntax-only", "-", *flags]
    best = None
    for _ in range(REPETITIONS):
        start = time.perf_counter()
        if subprocess.run(command, input=f"#include <{header}>\n", text=True, stderr=subprocess.DEVNULL).returncode != 0:
            return None
        best = min(best or 1e9, time.perf_counter() - start)
    return best


def main():
    root = pathlib.Path(__file__).resolve().parent.parent
    own = sorted(path.relative_to(root).as_posix() for path in (root / "toolkit").rglob("*")
                 if path.suffix == ".h" or path.suffix == ".Exceptions")
    # Private headers do not compile for a consumer and are nobody's cost.
    public = (root / "toolkit/CMakeLists.txt").read_text()
    sets = public.split("target_sources(")
    private = {word for part in sets[1:] for word in part.split(")")[0].split() if word.endswith(".h")}
    own = [name for name in own if name.removeprefix("toolkit/") not in private]
    costs = {}
    for header in own:
        costs[header] = seconds(header, ["-I", str(root), *sys.argv[1:]])
    for header, package in PEERS.items():
        costs[header] = seconds(header, [*flags_of(package), *sys.argv[1:]])
    print(json.dumps({name: cost for name, cost in costs.items() if cost is not None}))


main()
