#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes docs/benchmarks.md of what was measured: report.py <folder of the tables> <results folder>. Without the results it only
says which rows of the tables it could not make."""
import json
import pathlib
import re
import sys

import growth

UNITS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}

# What is called a loss: less is noise.
LOSS = 1.05

# How much faster than a peer's the cost of an operation may grow with the threads before it is said: less is noise.
THREADS_TOLERANCE = 1.1


FACES = ["new", "both", "classic"]


class Results:
    """Medians and spreads in ns by name, by size for what grows and by threads; allocations; what the machine says of itself."""

    def __init__(self, folder):
        self.medians, self.spreads, self.allocations, self.peaks = {}, {}, {}, {}
        self.times, self.threads, self.context = {}, {}, {}
        for path in sorted(folder.glob("bench_*.json")):
            result = json.loads(path.read_text())
            self.context = self.context or result["context"]
            for row in result["benchmarks"]:
                self.take(row)

    def take(self, row):
        # Times of processes and of several threads are real ones, all others those of the processor.
        name = re.sub(r"(/iterations:\d+|/repeats:\d+|/real_time|/manual_time)+$", "", row["run_name"])
        is_real = row["run_name"].endswith(("/real_time", "/manual_time"))
        kind = row.get("aggregate_name")
        if kind == "cv":
            self.spreads[name] = row.get("real_time" if is_real else "cpu_time", 0.0)
        if kind != "median" or row.get("error_occurred"):
            return
        value = row.get("real_time" if is_real else "cpu_time", 0.0) * UNITS[row["time_unit"]]
        if name.startswith("growth:"):
            operation, size = name.split(":", 1)[1].split("/")
            self.times.setdefault(operation, {})[int(size)] = value
        elif name.startswith("threads:"):
            operation, whose, count = name.split(":", 1)[1].split("/")
            self.threads.setdefault((operation, whose), {})[int(count)] = value
        else:
            self.medians[name] = value
            if "allocations" in row:
                self.allocations[name] = row["allocations"]
                self.peaks[name] = row["peak"]


def table_lines(path):
    return [line for line in path.read_text().splitlines() if line and not line.startswith("#")]


def cells_of(line, columns):
    """The line's cells, that many."""
    cells = [part.strip() for part in line.split("|")]
    return cells + [""] * (columns - len(cells))


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


class Operation:
    """A row of operations.txt with what was measured of it."""

    def __init__(self, line, others, results):
        self.name, self.text, self.face, self.includes, peers, self.limit_text, goals, self.reason = cells_of(line, 8)
        self.goals = [goal.strip() for goal in goals.split(",") if goal.strip()]
        self.source = self
        if peers.startswith("as "):
            self.source = others[peers[3:]]
            self.wanted, self.absent = self.source.wanted, []
            self.limit_text = self.limit_text or self.source.limit_text
        else:
            self.wanted, self.absent = split_peers(peers)
        self.results = results
        medians = results.medians
        self.own = medians.get(f"{self.name}/Toolkit")
        self.peers = {peer: medians[f"{self.source.name}/{peer}"] for peer in self.wanted
                      if f"{self.source.name}/{peer}" in medians}
        self.limit = medians.get(f"{self.name}/limit", medians.get(f"{self.source.name}/limit"))
        self.counted = results.allocations.get(f"{self.name}/Toolkit")

    def missing(self):
        """Peers that have the operation and were not measured."""
        return [peer for peer in self.wanted if peer not in self.peers] if self.source is self else []

    def best(self):
        return min(self.peers, key=self.peers.get, default=None)

    def met(self):
        answers = [is_met(goal, self.own, self.peers, self.limit, self.counted) for goal in self.goals]
        if self.own is None or None in answers and False not in answers:
            return "?"
        if False in answers:
            return "no"
        return "yes" if answers else ""

    def losses(self):
        """How many times as long as the best peer it takes, and as the limit where that misses its goal, with whose it is."""
        found = []
        best = self.best() if self.own is not None else None
        if best and self.own > self.peers[best] * LOSS:
            found.append((self.own / self.peers[best], best))
        limits = [goal for goal in self.goals if goal.startswith(("limit", "over limit"))]
        if False in [is_met(goal, self.own, self.peers, self.limit, self.counted) for goal in limits]:
            found.append((self.own / self.limit, self.limit_text))
        return found

    def others_text(self):
        return "; ".join(f"{peer} {time_text(self.peers[peer])}" for peer in sorted(self.peers, key=self.peers.get))

    def row(self):
        if self.own is None:
            return [self.text, self.face, self.includes, "not measured", "", "", "", ", ".join(self.goals), "?"]
        best = self.best()
        return [self.text, self.face, self.includes, time_text(self.own),
                f"{self.own / self.peers[best]:.2f} ({self.others_text()})" if best else "",
                f"{self.own / self.limit:.2f} ({self.limit_text})" if self.limit and self.limit_text else "",
                f"{self.counted:.3g}" if self.counted is not None else "", ", ".join(self.goals), self.met()]


class Subject:
    def __init__(self, title):
        self.title, self.texts, self.operations = title, [], []


def load_subjects(path, results):
    """The subjects of the table, in its order. A row whose peers are another's may stand before it."""
    lines = table_lines(path)
    found = {}
    rows = [line for line in lines if not line.startswith(("==", ">"))]
    for borrowing in (False, True):
        for line in rows:
            if cells_of(line, 8)[4].startswith("as ") == borrowing:
                found[line] = Operation(line, {operation.name: operation for operation in found.values()}, results)
    subjects = []
    for line in lines:
        if line.startswith("=="):
            subjects.append(Subject(line[2:].strip()))
        elif line.startswith(">"):
            subjects[-1].texts.append(line[1:].strip())
        else:
            subjects[-1].operations.append(found[line])
    return subjects


def time_text(ns):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if ns >= size:
            return f"{ns / size:.3g} {unit}"
    return f"{ns:.3g} ns"


def is_met(goal, own, peers, limit, allocations):
    """True or False, None when what the goal compares with was not measured."""
    what, most = (part.strip() for part in goal.split("<="))
    if own is None:
        return None
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


def size_text(size):
    for unit, scale in (("MiB", 1 << 20), ("KiB", 1 << 10)):
        if size >= scale:
            return f"{size / scale:.3g} {unit}"
    return f"{size:.0f} B"


def memory_rows(operations):
    """The library, its peers and the limit beside each other, where allocations were counted."""
    rows = []
    for operation in operations:
        results = operation.results

        def cell(name):
            return f"{results.allocations[name]:.3g}, {size_text(results.peaks[name])}" if name in results.peaks else ""

        own = cell(f"{operation.name}/Toolkit")
        others = [(whose, cell(f"{operation.source.name}/{whose}")) for whose in [*operation.wanted, "limit"]]
        if own:
            rows.append([operation.text, operation.face, own, "; ".join(f"{whose} {text}" for whose, text in others if text)])
    return rows


def loss_rows(operations):
    """The classes for new code first, each from the greatest loss on."""
    lost = [(ratio, whose, operation) for operation in operations for ratio, whose in operation.losses()]
    return [[operation.text, operation.face, f"{ratio:.2f} x {whose}", operation.reason]
            for ratio, whose, operation in sorted(lost, key=lambda row: (FACES.index(row[2].face), -row[0]))]


def thread_rows(table, threads):
    """Ours and everyone else's below it; whether ours grows no faster."""
    rows = []
    for line in table_lines(table):
        name, operation, includes, peers, limit_text, remark = cells_of(line, 6)
        own = threads.get((name, "Toolkit"))
        if not own:
            rows.append([operation, "Toolkit", "not measured"])
            continue
        whose = [peer for peer in split_peers(peers)[0] + ["limit"] if (name, peer) in threads]
        growths = {peer: threads[name, peer][max(threads[name, peer])] / threads[name, peer][1] for peer in whose}
        grown = own[max(own)] / own[1]
        slower = [limit_text if peer == "limit" else peer for peer in whose if grown > growths[peer] * THREADS_TOLERANCE]
        verdict = "no more than theirs" if not slower else "more than that of " + " and ".join(slower)
        if remark:
            verdict += ": " + remark
        rows.append([f"{operation} ({includes})", "**Toolkit**", *cost_cells(own), f"{grown:.2f}: {verdict}"])
        for peer in whose:
            rows.append(["", limit_text if peer == "limit" else peer, *cost_cells(threads[name, peer]), f"{growths[peer]:.2f}"])
    return rows


def cost_cells(costs):
    return [time_text(costs[count]) for count in sorted(costs)]


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
    for line in table_lines(table):
        name, operation, what, possible, remark = cells_of(line, 5)
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


def head_lines(results, run, versions):
    noise = sorted(results.spreads.values()) or [0.0]
    context = results.context
    return ["# Benchmarks", "",
            "Made by `bench/run`, which runs all of this in one go; the rows come from `bench/operations.txt`, `bench/threads.txt` "
            "and `bench/growth.txt`. Each subject begins with what is done with it every day. A row is of the classes for new "
            "code, of the classic ones, or of both. A time is the median; a ratio above 1 is slower than what it is compared with.",
            "",
            f"Machine: {processor_name()}, {context.get('num_cpus', '?')} processors, load "
            f"{context.get('load_avg', ['?'])[0]:.2f} at the start, {context.get('date', '')[:10]}; "
            f"{versions.get('compiler', 'g++')}, {versions.get('libc', 'glibc')}. Noise: the spread between "
            f"repetitions (standard deviation by mean) is {noise[len(noise) // 2]:.1%} for half of the benchmarks and "
            f"{noise[len(noise) * 9 // 10]:.1%} for nine tenths of them. Each has {run['repetitions']} repetitions; "
            f"everything together took {run['minutes']} minutes.", ""]


def loss_lines(operations):
    measured = [operation for operation in operations if operation.own is not None and (operation.peers or operation.limit)]
    rows = loss_rows(operations)
    out = ["## Where we lose", "",
           f"Of {len(measured)} rows with something to compare with, these take longer than the best peer by more than "
           f"{LOSS - 1:.0%}, or longer than their limit's goal allows. The column \"met\" tells of every goal.", ""]
    return out + markdown_table(["operation", "for", "its time", "why"], rows) + [""]


def subject_lines(subject):
    titles = ["operation", "for", "its time includes", "median", "to the best peer (all of them)", "to the limit", "allocations",
              "goal", "met"]
    out = [f"## {subject.title}", ""]
    for text in subject.texts:
        out += [text, ""]
    return out + markdown_table(titles, [operation.row() for operation in subject.operations]) + [""]


def version_of(package, versions):
    # The epoch and the packager's part say nothing of the peer.
    version = versions.get(package)
    return re.sub(r"^\d+:|[-+~].*$", "", version) if version else "not installed"


def peer_lines(table, versions, operations, not_installed):
    rows = [[peer, f"`{package}`", version_of(package, versions), how]
            for package, peer, how in (cells_of(line, 3) for line in table_lines(table)) if peer]
    out = ["## The peers", ""] + markdown_table(["peer", "package", "version", "how it is used"], rows) + [""]
    if not_installed:
        out += ["Left out, because they are not installed: " + ", ".join(sorted(not_installed)) + ".", ""]
    missing, without = {}, {}
    for operation in operations:
        for peer in operation.missing() if operation.own is not None else []:
            missing.setdefault(peer, []).append(operation.text)
        for peer, why in operation.absent:
            without.setdefault((peer, why), []).append(operation.text)
    for peer, texts in sorted(missing.items()):
        out += [f"{peer} was not measured for: {'; '.join(texts)}.", ""]
    if without:
        out += ["Peers without such an operation:", ""]
        out += [f"- {peer} ({why}): {'; '.join(texts)}" for (peer, why), texts in sorted(without.items())] + [""]
    return out


def thread_lines(table, results):
    counts = sorted({count for costs in results.threads.values() for count in costs})
    out = ["## Many threads", "",
           "The time of one operation while that many threads, or processes, do it at once: the time from their common start to the "
           "end of the last of them, divided by what all of them did. On two processors what needs no lock can fall to a half. "
           "The last column is how many times the cost with one thread the cost with the most threads is, and whether that is more than "
           f"the others' by over {THREADS_TOLERANCE - 1:.0%}.", ""]
    titles = ["operation", "whose", *map(str, counts), "times as much"]
    return out + markdown_table(titles, thread_rows(table, results.threads)) + [""]


def load_versions(path):
    """Package and version by line; what else is known of the machine likewise."""
    return dict(line.split(" ", 1) for line in path.read_text().splitlines() if " " in line) if path.exists() else {}


def check_tables(bench):
    """Ends the program where a row is not as the head of its table wants it."""
    rows = [line for line in table_lines(bench / "operations.txt") if not line.startswith(("==", ">"))]
    names = {cells_of(line, 8)[0] for line in rows}
    for line in rows:
        cells = cells_of(line, 8)
        if len(cells) != 8 or cells[2] not in FACES or cells[4].startswith("as ") and cells[4][3:] not in names:
            sys.exit(f"operations.txt: {line}")
    for name, columns in (("threads.txt", 6), ("growth.txt", 5), ("peers.txt", 3)):
        for line in table_lines(bench / name):
            if len(cells_of(line, columns)) != columns:
                sys.exit(f"{name}: {line}")


def main():
    if len(sys.argv) not in (2, 3):
        print("usage: report.py <folder of the tables> [<results folder>]", file=sys.stderr)
        sys.exit(2)
    check_tables(pathlib.Path(sys.argv[1]))
    if len(sys.argv) == 2:
        return
    bench, folder = (pathlib.Path(argument) for argument in sys.argv[1:3])
    results = Results(folder)
    versions = load_versions(folder / "versions.txt")
    subjects = load_subjects(bench / "operations.txt", results)
    operations = [operation for subject in subjects for operation in subject.operations]
    out = head_lines(results, json.loads((folder / "run.json").read_text()), versions)
    out += loss_lines(operations)
    for subject in subjects:
        out += subject_lines(subject)
    out += thread_lines(bench / "threads.txt", results)
    out += peer_lines(bench / "peers.txt", versions, operations, (folder / "missing.txt").read_text().split())
    out += ["## Memory", "", "Allocations of one operation, and the most memory that it held at a time, on the calling "
            "thread; of a whole process, in its `main`.", ""]
    out += markdown_table(["operation", "for", "Toolkit", "others"], memory_rows(operations))
    counts = growth.load_counts(folder)
    out += ["", "## How cost grows", "", growth.RULE, ""]
    if not counts:
        out += ["valgrind is not installed: time alone decides here.", ""]
    out += markdown_table(["operation", "sizes", "grows", "at best", "as good", "instructions for one, by size",
                           "ns for one, by size"], growth_rows(bench / "growth.txt", counts, results.times))
    own, others = header_rows(json.loads((folder / "headers.json").read_text()))
    out += ["", "## What a header costs", "", "Time to compile a source of nothing but this include, the best of three.", ""]
    out += markdown_table(["our header", "time"], own) + [""] + markdown_table(["other header", "time"], others)
    print("\n".join(out))


main()
