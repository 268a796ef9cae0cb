"""How cost grows: what callgrind counted and what was timed, by size, and the form that follows from it."""
import math

# From the best to the worst.
FORMS = ["constant", "logarithmic", "linear", "n log n", "worse"]

# How far exact counts may stray from a form: memory is taken in chunks, and other code serves the larger sizes.
TOLERANCE = 1.15

# What the processor's caches explain of the time of a linear operation, as a power of the size.
TIME_POWER = 1.4


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


def power_of_times(times):
    """Between the last two sizes, where what an operation costs without elements counts least."""
    sizes = sorted(times)
    return math.log(times[sizes[-1]] / times[sizes[-2]]) / math.log(sizes[-1] / sizes[-2])


def form_of_times(times):
    """Of what happens in the system, which no count sees: n log n cannot be told from linear by time."""
    sizes = sorted(times)
    whole = math.log(times[sizes[-1]] / times[sizes[0]]) / math.log(sizes[-1] / sizes[0])
    if whole <= 0.1:
        return "constant"
    return "linear" if power_of_times(times) <= TIME_POWER else "worse"


def is_as_good(form, possible):
    return FORMS.index(form) <= FORMS.index(possible)
