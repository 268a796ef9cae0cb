#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes docs/benchmarks.md of what was measured: report.py <folder of the tables> <results folder>."""
import json
import pathlib
import sys

import growth

UNITS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def load_results(folder):
    """The medians and spreads in ns by name, the medians of growing operations by size, and what the machine says of itself."""
    medians, spreads, allocations, peaks, times, context = {}, {}, {}, {}, {}, {}
    for path in sorted(folder.glob("bench_*.json")):
        result = json.loads(path.read_text())
        context = context or result["context"]
        for row in result["benchmarks"]:
            kind = row.get("aggregate_name")
            name = row["run_name"]
            # Times of processes are real ones, all others those of the processor.
            for suffix in ("/real_time", "/iterations:20000"):
                if name.endswith(suffix):
                    name = name[: -len(suffix)]
            clock = "real_time" if row["run_name"].endswith("/real_time") else "cpu_time"
            value = row.get(clock, 0.0)
            if kind == "median" and name.startswith("growth:"):
                operation, size = name.split(":", 1)[1].split("/")
                times.setdefault(operation, {})[int(size)] = value * UNITS[row["time_unit"]]
            elif kind == "median":
                medians[name] = value * UNITS[row["time_unit"]]
                if "allocations" in row:
                    allocations[name] = row["allocations"]
                    peaks[name] = row["peak"]
            elif kind == "cv":
                spreads[name] = value
    return medians, spreads, allocations, peaks, times, context


def table_rows(path, columns):
    """The table's rows, each with that many cells."""
    for line in path.read_text().splitlines():
        if line and not line.startswith("#"):
            cells = [part.strip() for part in line.split("|")]
            yield cells + [""] * (columns - len(cells))


def split_peers(cell):
    """The peers that have the operation, and those that have not, with the reason."""
    present, absent = [], []
    for peer in filter(None, (part.strip() for part in cell.split(","))):
        name, _, reason = peer.partition(" (")
        if reason:
            absent.append((name, reason.rstrip(")")))
        else:
            present.append(name)
    return present, absent


def time_text(ns):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if ns >= size:
            return f"{ns / size:.3g} {unit}"
    return f"{ns:.3g} ns"


def ratio_text(own, other):
    return "" if other is None else f"{own / other:.2f}"


def is_met(goal, own, peers, limit, allocations):
    """True or False, None when what the goal compares with was not measured."""
    what, most = (part.strip() for part in goal.split("<="))
    if what == "allocations":
        # One of a million repetitions may meet what the process does once.
        return None if allocations is None else round(allocations, 3) <= float(most)
    if what == "time":
        number, unit = most.split()
        return own <= float(number) * UNITS[unit]
    if what == "over limit":
        number, unit = most.split()
        return None if limit is None else own - limit <= float(number) * UNITS[unit]
    others = {"limit": [limit], "best": [min(peers.values(), default=None)], "all": list(peers.values())}.get(
        what, [peers.get(what)])
    if not others or None in others:
        return None
    return all(own <= float(most) * other for other in others)


def verdict(goals, own, peers, limit, allocations):
    answers = [is_met(goal, own, peers, limit, allocations) for goal in goals]
    if False in answers:
        return "no"
    return "?" if None in answers else "yes" if answers else ""


def size_text(size):
    for unit, scale in (("MiB", 1 << 20), ("KiB", 1 << 10)):
        if size >= scale:
            return f"{size / scale:.3g} {unit}"
    return f"{size:.0f} B"


def memory_rows(table, allocations, peaks):
    """The library, its peers and the limit beside each other, where allocations were counted."""
    rows = []
    for name, operation, peers, *_ in table_rows(table, 6):
        cells = []
        for whose in ["Toolkit", *split_peers(peers)[0], "limit"]:
            key = f"{name}/{whose}"
            if key in peaks:
                cells.append((whose, f"{allocations[key]:.3g}, {size_text(peaks[key])}"))
        if cells and cells[0][0] == "Toolkit":
            rows.append([operation, cells[0][1], "; ".join(f"{whose} {cell}" for whose, cell in cells[1:])])
    return rows


def operation_rows(table, medians, allocations):
    """The rows, the peers that were not measured with the operations, and those without an operation with the reasons."""
    rows, missing, without = [], {}, {}
    for name, operation, peers, limit_text, goals, reason in table_rows(table, 6):
        wanted, absent = split_peers(peers)
        for peer, why in absent:
            without.setdefault((peer, why), []).append(operation)
        own = medians.get(name + "/Toolkit")
        if own is None:
            rows.append([operation, "not measured", "", "", "", goals, "?"])
            continue
        peers = {peer: medians[f"{name}/{peer}"] for peer in wanted if f"{name}/{peer}" in medians}
        for peer in wanted:
            if peer not in peers:
                missing.setdefault(peer, []).append(operation)
        limit = medians.get(name + "/limit")
        best = min(peers, key=peers.get, default=None)
        counted = allocations.get(name + "/Toolkit")
        met = verdict([goal for goal in goals.split(",") if goal.strip()], own, peers, limit, counted)
        if met == "no" and reason:
            met += ": " + reason
        rows.append([operation, time_text(own),
                     f"{ratio_text(own, peers[best])} ({best})" if best else "",
                     f"{ratio_text(own, limit)} ({limit_text})" if limit else "",
                     f"{counted:.3g}" if counted is not None else "",
                     goals, met])
    return rows, missing, without


def growth_form(name, counts, times):
    """Counts decide; time adds what happens in the system, where it grows faster than they do."""
    if name not in counts:
        return growth.form_of_times(times[name]) if name in times else None
    form = growth.form_of_counts(counts[name])
    seen = growth.form_of_times(times[name]) if name in times else form
    if seen == "worse" or form == "constant" and seen == "linear":
        return seen
    return form


def growth_rows(table, counts, times):
    rows = []
    for name, operation, what, possible, remark in table_rows(table, 5):
        form = growth_form(name, counts, times)
        if form is None:
            rows.append([operation, what, "not measured", possible, "?", "", ""])
            continue
        answer = "yes" if growth.is_as_good(form, possible) else "no"
        by_size = [" / ".join(f"{values[name][size] / size:.3g}" for size in sorted(values[name])) if name in values else ""
                   for values in (counts, times)]
        sizes = sorted(counts.get(name) or times[name])
        rows.append([operation, f"{what}: {', '.join(map(str, sizes))}", form, possible,
                     f"{answer}: {remark}" if remark else answer, *by_size])
    return rows


def markdown_table(titles, rows):
    lines = ["| " + " | ".join(titles) + " |", "|" + "---|" * len(titles)]
    return lines + ["| " + " | ".join(str(cell) for cell in row) + " |" for row in rows]


def processor_name():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return "unknown processor"


def header_rows(headers):
    """From the cheapest to the dearest, our own apart from the others; what does not compile is said."""
    rows = {True: [], False: []}
    for name, seconds in sorted(headers.items(), key=lambda item: (item[1] is None, item[1])):
        cell = "not installed, or does not compile alone" if seconds is None else f"{seconds * 1000:.0f} ms"
        rows[name.startswith("toolkit/")].append([f"`{name}`", cell])
    return rows[True], rows[False]


def list_text(operations):
    return "; ".join(operations)


def head_lines(spreads, context, run):
    noise = sorted(spreads.values()) or [0.0]
    return ["# Benchmarks", "",
            "Made by `bench/run`, which runs all of this in one go; the rows come from `bench/operations.txt` and "
            "`bench/growth.txt`.", "",
            f"Machine: {processor_name()}, {context.get('num_cpus', '?')} processors, load "
            f"{context.get('load_avg', ['?'])[0]} at the start, {context.get('date', '')[:10]}. Noise: the spread between "
            f"repetitions (standard deviation by mean) is {noise[len(noise) // 2]:.1%} for half of the benchmarks and "
            f"{noise[len(noise) * 9 // 10]:.1%} for nine tenths of them. Each has {run['repetitions']} repetitions; "
            f"everything together took {run['minutes']} minutes.", ""]


def main():
    if len(sys.argv) != 3:
        print("usage: report.py <folder of the tables> <results folder>", file=sys.stderr)
        sys.exit(2)
    bench, folder = (pathlib.Path(argument) for argument in sys.argv[1:3])
    medians, spreads, allocations, peaks, times, context = load_results(folder)
    rows, missing, without = operation_rows(bench / "operations.txt", medians, allocations)
    out = head_lines(spreads, context, json.loads((folder / "run.json").read_text()))
    not_installed = (folder / "missing.txt").read_text().split()
    if not_installed:
        out += ["Left out, because they are not installed: " + ", ".join(sorted(not_installed)) + ".", ""]
    for peer, operations in sorted(missing.items()):
        out += [f"{peer} was not measured for: {list_text(operations)}.", ""]
    if without:
        out += ["Peers without such an operation:", ""]
        out += [f"- {peer} ({why}): {list_text(operations)}" for (peer, why), operations in sorted(without.items())]
        out += [""]
    out += ["A ratio above 1 is slower than what it is compared with. Allocations are counted on the calling thread.", ""]
    out += markdown_table(["operation", "median", "to the best peer", "to the limit", "allocations", "goal", "met"], rows)
    out += ["", "## Memory", "", "Allocations of one operation, and the most memory that it held at a time, on the calling "
            "thread; of a whole process, in its `main`.", ""]
    out += markdown_table(["operation", "Toolkit", "others"], memory_rows(bench / "operations.txt", allocations, peaks))
    counts = growth.load_counts(folder)
    out += ["", "## How cost grows", "", growth.RULE, ""]
    if not counts:
        out += ["valgrind is not installed: time alone decides here.", ""]
    out += markdown_table(["operation", "sizes", "grows", "at best", "as good", "instructions for one, by size",
                           "ns for one, by size"], growth_rows(bench / "growth.txt", counts, times))
    own, others = header_rows(json.loads((folder / "headers.json").read_text()))
    out += ["", "## What a header costs", "", "Time to compile a source of nothing but this include, the best of three.", ""]
    out += markdown_table(["our header", "time"], own) + [""] + markdown_table(["other header", "time"], others)
    print("\n".join(out))


main()
