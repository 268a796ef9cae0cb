#!/usr/bin/env python3
"""Makes docs/benchmarks.md of Google Benchmark's results: report.py <operations> <results folder> <headers.json>."""
import json
import pathlib
import sys

UNITS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def load_results(folder):
    """The medians and spreads in ns by name, the growth by operation, and what the machine says of itself."""
    medians, spreads, allocations, peaks, growth, costs, context = {}, {}, {}, {}, {}, {}, {}
    for path in sorted(folder.glob("*.json")):
        if path.name == "headers.json":
            continue
        result = json.loads(path.read_text())
        context = result["context"]
        for row in result["benchmarks"]:
            kind = row.get("aggregate_name")
            name = row["run_name"]
            # Times of processes are real ones, all others those of the processor.
            for suffix in ("/real_time", "/iterations:20000"):
                if name.endswith(suffix):
                    name = name[: -len(suffix)]
            clock = "real_time" if row["run_name"].endswith("/real_time") else "cpu_time"
            if kind == "BigO":
                growth[name.split(":", 1)[1]] = row["big_o"]
            elif name.startswith("growth:"):
                if kind == "median":
                    operation, size = name.split(":", 1)[1].split("/")
                    costs.setdefault(operation, {})[int(size)] = row[clock] * UNITS[row["time_unit"]] / int(size)
            elif kind == "median":
                medians[name] = row[clock] * UNITS[row["time_unit"]]
                if "allocations" in row:
                    allocations[name] = row["allocations"]
                    peaks[name] = row["peak"]
            elif kind == "cv":
                spreads[name] = row[clock]
    return medians, spreads, allocations, peaks, growth, costs, context


def time_text(ns):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if ns >= size:
            return f"{ns / size:.3g} {unit}"
    return f"{ns:.3g} ns"


def ratio_text(own, other):
    return "" if other is None else f"{own / other:.2f}"


def is_met(goal, own, peers, limit):
    """True or False, None when what the goal compares with was not measured."""
    what, most = (part.strip() for part in goal.split("<="))
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


def verdict(goals, own, peers, limit):
    answers = [is_met(goal, own, peers, limit) for goal in goals]
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
    for line in table.read_text().splitlines():
        if not line or line.startswith("#"):
            continue
        name, operation, wanted = [part.strip() for part in line.split("|")][:3]
        cells = []
        for whose in ["Toolkit", *filter(None, (peer.strip() for peer in wanted.split(","))), "limit"]:
            key = f"{name}/{whose}"
            if key in peaks:
                cells.append((whose, f"{allocations[key]:.3g}, {size_text(peaks[key])}"))
        if cells and cells[0][0] == "Toolkit":
            rows.append([operation, cells[0][1], "; ".join(f"{whose} {cell}" for whose, cell in cells[1:])])
    return rows


def operation_rows(table, medians, allocations):
    rows, missing = [], set()
    for line in table.read_text().splitlines():
        if not line or line.startswith("#"):
            continue
        name, operation, wanted, limit_text, goals, reason = (part.strip() for part in line.split("|"))
        own = medians.get(name + "/Toolkit")
        if own is None:
            rows.append([operation, "not measured", "", "", "", goals, "?", ""])
            continue
        wanted = [peer.strip() for peer in wanted.split(",") if peer.strip()]
        peers = {peer: medians[f"{name}/{peer}"] for peer in wanted if f"{name}/{peer}" in medians}
        missing.update(set(wanted) - set(peers))
        limit = medians.get(name + "/limit")
        best = min(peers, key=peers.get, default=None)
        met = verdict([goal for goal in goals.split(",") if goal.strip()], own, peers, limit)
        if met == "no" and reason:
            met += ": " + reason
        rows.append([operation, time_text(own),
                     f"{ratio_text(own, peers[best])} ({best})" if best else "",
                     f"{ratio_text(own, limit)} ({limit_text})" if limit else "",
                     f"{allocations[name + '/Toolkit']:.3g}" if name + "/Toolkit" in allocations else "",
                     goals, met])
    return rows, missing


def markdown_table(titles, rows):
    lines = ["| " + " | ".join(titles) + " |", "|" + "---|" * len(titles)]
    return lines + ["| " + " | ".join(str(cell) for cell in row) + " |" for row in rows]


def processor_name():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return "unknown processor"


def main():
    table, folder, headers = (pathlib.Path(argument) for argument in sys.argv[1:4])
    medians, spreads, allocations, peaks, growth, costs, context = load_results(folder)
    rows, missing = operation_rows(table, medians, allocations)
    noise = sorted(spreads.values()) or [0.0]
    out = ["# Benchmarks", "",
           "Made by `bench/run`, which runs all of this in one go; the rows come from `bench/operations.txt`.", "",
           f"Machine: {processor_name()}, {context.get('num_cpus', '?')} processors, load "
           f"{context.get('load_avg', ['?'])[0]} at the start, {context.get('date', '')[:10]}. Noise: the spread between "
           f"repetitions (standard deviation by mean) is {noise[len(noise) // 2]:.1%} for half of the benchmarks and "
           f"{noise[len(noise) * 9 // 10]:.1%} for nine tenths of them.", ""]
    if missing:
        out += ["Left out, because it is not installed or has no such operation: " + ", ".join(sorted(missing)) + ".", ""]
    out += ["A ratio above 1 is slower than what it is compared with. Allocations are counted on the calling thread.", ""]
    out += markdown_table(["operation", "median", "to the best peer", "to the limit", "allocations", "goal", "met"], rows)
    out += ["", "## Memory", "", "Allocations of one operation, and the most memory that it held at a time, on the calling "
            "thread.", ""]
    out += markdown_table(["operation", "Toolkit", "others"], memory_rows(table, allocations, peaks))
    out += ["", "## How cost grows", "", "Fitted over four sizes at least; \"?\" where noise hid the form. \"n log n\" is also "
            "what a linear operation looks like whose data outgrow the caches: the cost of one element tells.", ""]
    forms = {"N": "linear", "NlgN": "n log n", "(1)": "constant", "lgN": "logarithmic", "N^2": "worse", "N^3": "worse"}
    out += markdown_table(["operation", "grows", "one element, by size"],
                          [[name, forms.get(form, "?"),
                            "; ".join(f"{size}: {time_text(cost)}" for size, cost in sorted(costs.get(name, {}).items()))]
                           for name, form in growth.items()])
    if headers.exists():
        out += ["", "## What a header costs", "", "Time to compile a source of nothing but this include.", ""]
        out += markdown_table(["header", "time"], [[f"`{name}`", f"{seconds * 1000:.0f} ms"]
                                                   for name, seconds in json.loads(headers.read_text()).items()])
    print("\n".join(out))


main()
