"""The page of figures, from the rows that the benchmarks print."""

import os

import day

TABLES = [
    ("compared", "Beside others that do the same work", """\
Both sides do the same work in turn, in one run, and the ratio is the median of the rounds' ratios.
Where the other side is plain libcurl it has the session's options, keeps its handles and connections,
and keeps nothing of what it loads. Chains are resolved through `DeeplinkManager::resolve` with its
state on a real disk, POSTs are encoded, sent, checked and decoded fifty in a row, events go to a local
HTTP/2 server with 64 on the wire on both sides."""),
    ("lookups", "Looking at links and settings", """\
Google Benchmark, all calls in random order, medians."""),
    ("calls", "What a call costs its caller", """\
100,000 calls with the network running and none lost; the dictionary is built before and moved."""),
    ("threads", "Calls from several threads", """\
20,000 events from that many threads, each building its dictionaries, to a local HTTP/2 server."""),
    ("start", "Start", """\
Of a minimal host of the shared library, a new process each time; then events must become enabled."""),
    ("memory", "Memory", """\
A megabyte is 1,000,000 bytes."""),
    ("size", "Size of the library", """\
As the linker's map has it; sections under 1 kB are left out. What was inlined counts where it went."""),
]

INTRODUCTION = """\
# Figures

Written by `make bench` on a machine with {processors} processors, servers and client on it together.
Times are medians, but for what is done once in a run, as 100,000 events are. No figure is here whose
outcome was not checked: what was loaded, acknowledged, kept or found. Targets hold for the machine as
it is; rows of one core are for comparison.
"""


def number(value):
    """Three digits that count."""
    if value >= 1000:
        return f"{value:,.0f}"
    return f"{value:.0f}" if value >= 100 else f"{value:.3g}"


def scaled(value, units):
    for factor, unit in units:
        if value >= factor:
            return f"{number(value / factor)} {unit}"
    factor, unit = units[-1]
    return f"{number(value / factor)} {unit}"


def figure(value, unit):
    if unit == "s":
        return scaled(value, [(1, "s"), (1e-3, "ms"), (1e-6, "µs"), (1e-9, "ns")])
    if unit == "B":
        return scaled(value, [(1e9, "GB"), (1e6, "MB"), (1e3, "kB"), (1, "bytes")])
    return f"{value:,.0f} a second"


def table(heads, lines):
    made = [heads, ["---"] * len(heads)] + lines
    return "\n".join("| " + " | ".join(line) + " |" for line in made) + "\n"


def cells(row, has_other):
    """The cells of one row."""
    made = [row["what"], figure(row["ours"], row["unit"])]
    if has_other:
        made.append(f"{row['other']}: {figure(row['theirs'], row['unit'])}" if "theirs" in row else "")
        made.append(f"{row['ratio']:.2f}" if "ratio" in row else "")
    target = row.get("target")
    if not target:
        return made + ["", ""]
    asked = f"{target['value']:.2f}" if target["of"] == "ratio" else figure(target["value"], row["unit"])
    bound = "at least" if target["isLeast"] else "at most"
    return made + [f"{bound} {asked}", "met" if target["isMet"] else "**not met**"]


def plain_table(rows):
    has_other = any("theirs" in row for row in rows)
    heads = ["what", "ours"] + (["the other", "ratio"] if has_other else []) + ["target", ""]
    lines = [cells(row, has_other) for row in rows]
    if not any("target" in row for row in rows):
        heads, lines = heads[:-2], [line[:-2] for line in lines]
    return table(heads, lines)


def by_operation(rows):
    """The rows of growth by operation and size."""
    operations = {}
    for row in rows:
        if row["table"] == "growth":
            operations.setdefault(row["what"], {})[row["size"]] = row
    return operations


def growth(by_size):
    """How often the least of an operation's smaller sizes goes into its largest."""
    *smaller, last = (by_size[size]["ours"] for size in sorted(by_size))
    return last / min(smaller)


def growth_table(rows):
    """A line for each operation, a column for each size."""
    sizes = sorted({row["size"] for row in rows})
    made = []
    for what, by_size in by_operation(rows).items():
        grown = growth(by_size)
        made.append([what] + [figure(by_size[size]["ours"], by_size[size]["unit"])
                              if size in by_size else "" for size in sizes]
                    + [f"{grown:.2f}", "met" if grown <= 2 else "**not met**"])
    return table(["operation"] + [f"{size:,.0f}" for size in sizes]
                 + ["last to least", "at most 2"], made)


def reasons_for(rows, texts):
    """Why the rows that miss their targets do, from texts headed by how such a row begins."""
    missed = [row["what"] for row in rows if not row.get("target", {"isMet": True})["isMet"]]
    missed += [what for what, by_size in by_operation(rows).items() if growth(by_size) > 2]
    told = [text.split("\n", 1) for text in ("\n" + texts).split("\n## ")[1:]]
    others = [what for what in missed if not any(what.startswith(head) for head, _ in told)]
    parts = [f"**{head[0].upper() + head[1:]}.** {text.strip()}\n" for head, text in told
             if any(what.startswith(head) for what in missed)]
    parts += [f"**{what}.** No reason is known: the machine may have been busy, so run it again.\n"
              for what in others]
    return ["## What misses its target, and why\n"] + parts if parts else []


def written(rows, reasons):
    def of(name):
        return [row for row in rows if row["table"] == name]

    parts = [INTRODUCTION.format(processors=os.cpu_count())]
    for name, title, text in TABLES:
        parts += [f"## {title}\n", text + "\n", plain_table(of(name))]
    parts += ["## Growth\n", """\
The cost of one operation, beside so many: it must not grow with their number, so that the whole grows
no worse than in proportion and look-ups stay as they are. What the first one waits for alone (a write,
a connection) is no measure: the last column is held against the least of the others. Link users are
noted on one core: to wake a thread on another costs as much as the note, and comes and goes.
""", growth_table(of("growth"))]
    parts += ["## On the wire\n", day.text(of("wire"), table)] + reasons_for(rows, reasons)
    return "\n".join(parts)
