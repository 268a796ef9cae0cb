# SPDX-License-Identifier: MIT
"""How cost grows: what callgrind counted and what was timed, by size, and the form that follows from it."""
import math

# From the best to the worst.
FORMS = ["constant", "logarithmic", "linear", "n log n", "worse"]

# How far exact counts may stray from a form: memory is taken in chunks, and other code serves the larger sizes.
TOLERANCE = 1.15

# As powers of the size: what the caches and the system's pages explain of the time of a linear operation, and what noise makes of
# a constant one.
TIME_POWER = 1.4
CONSTANT_POWER = 0.3

RULE = (
    "Each operation was done once for each size under callgrind, which counts the instructions of the process exactly; noise has no "
    "part in it. From them follows the form, by what one element more costs at the last step from size to size, beside the first "
    f"step: up to {TOLERANCE} times as much is linear; up to what n log n rises between these sizes, with the same tolerance, is "
    "n log n; more is worse. It is constant if the largest size costs no more than that many times the smallest, and logarithmic if "
    "the last step adds no more to the whole than the first. Counts do not see the system: where time rises faster than the size to "
    f"the power of {TIME_POWER} from the second size to the last, which caches do not explain, it is worse, whatever the counts say, "
    f"and where only the system's part grows, faster than the power of {CONSTANT_POWER}, time decides. Linear and n log n are not "
    "told apart by time.")


def load_counts(folder):
    """Instructions by operation and size, from the parts that callgrind wrote at each operation's request."""
    counts = {}
    for path in folder.glob("growth.callgrind.*"):
        name = None
        with path.open(encoding="utf-8", errors="replace") as lines:
            for line in lines:
                if line.startswith("desc: Trigger: Client Request: "):
                    name = line.split(": ")[-1].strip()
                elif line.startswith("summary: ") and name is not None:
                    operation, size = name.split("/")
                    counts.setdefault(operation, {})[int(size)] = float(line.split()[1])
    return counts


def form_of_counts(counts):
    """Judged by what one element more costs at the last step from size to size, beside the first step: what an operation
    costs without elements falls out of that."""
    sizes = sorted(counts)
    steps = list(zip(sizes, sizes[1:]))
    if counts[sizes[-1]] <= counts[sizes[0]] * TOLERANCE:
        return "constant"

    def rise(cost):
        first, last = ((cost(b) - cost(a)) / (b - a) for a, b in (steps[0], steps[-1]))
        return last / first if first > 0 else math.inf

    added = [counts[b] - counts[a] for a, b in steps]
    if 0 < added[-1] <= added[0] * TOLERANCE:
        return "logarithmic"
    if rise(counts.get) <= TOLERANCE:
        return "linear"
    return "n log n" if rise(counts.get) <= rise(lambda n: n * math.log(n)) * TOLERANCE else "worse"


def form_of_times(times):
    """Of what happens in the system, which no count sees: n log n cannot be told from linear by time. The smallest size is left
    out, for there what an operation costs without elements counts most."""
    sizes = sorted(times)
    power = math.log(times[sizes[-1]] / times[sizes[1]]) / math.log(sizes[-1] / sizes[1])
    if power <= CONSTANT_POWER:
        return "constant"
    return "linear" if power <= TIME_POWER else "worse"


def is_as_good(form, possible):
    return FORMS.index(form) <= FORMS.index(possible)
