"""The table of figures, and docs/performance.md around it."""

import datetime

from measuring import REPETITIONS

BUSY = 0.1  # processors that other programs may keep busy on an idle machine

HEAD = """\
# Performance

Written by `./bench`; do not edit. What each figure is made of stands in `tests/bench/goals.toml`.
"""

METHOD = """\
## How it was measured

{rounds} rounds; in each, every program ran once, the order shuffled. A figure is computed within
each round, so that it compares times taken close to each other; the table gives the median of the
rounds and, in brackets, the smallest and the largest. Benchmarks within one program repeat
{repetitions} times a round, interleaved at random, and their median is taken.

Loading is timed from the start of a process to its end, reading from the page cache: 100 pictures
of 1920 x 1080 with four channels, as frame files by us and as uncompressed bitmaps and run-length
coded TGA, SGI and TIFF files by ffmpeg, which decodes all of them on one thread and keeps them all;
libtiff is a loop over the strips of TIFF files; ImageMagick reads one bitmap or TGA file.

As much memory as a program fills is kept in use until just before it needs it: on a virtual machine
memory that lay free may be slow at its first use.
"""


def number(value):
    digits = 2 if abs(value) < 10 else 1 if abs(value) < 100 else 0
    return f"{value:.{digits}f}"


def figure_text(row):
    if row.missing or not row.figures:
        return "-"
    return f"{number(row.figure())} ({number(min(row.figures))} to {number(max(row.figures))})"


def goal_text(row):
    limits = (("at least", row.least), ("at most", row.most))
    return ", ".join(f"{sign} {limit:g}" for sign, limit in limits if limit is not None)


def reached_text(row):
    if row.missing or not row.figures:
        return f"not measured: {row.missing}".split("\n")[0]
    if not row.has_goal():
        return ""
    return "yes" if row.reached() else "**missed**"


def table(rows):
    lines = ["| | What | Figure | Goal | Reached |", "|---|---|---|---|---|"]
    for row in rows:
        cells = (row.group, row.what, figure_text(row), goal_text(row), reached_text(row))
        lines.append("| " + " | ".join(cells) + " |")
    return lines


def missed(rows):
    """What is known of the goals that were missed."""
    known = [row for row in rows if row.figures and not row.reached() and row.limit]
    if not known:
        return []
    return ["", "## Missed goals", "", *(f"- {row.what}: {row.limit}" for row in known)]


def document(rows, machine_rows, rounds, busy):
    today = datetime.date.today().isoformat()
    facts = machine_rows + [("date", today)]
    if busy > BUSY:
        facts.append(("not idle", f"others kept {busy:.1f} processors busy before or after"))
    method = METHOD.format(rounds=rounds, repetitions=REPETITIONS)
    machine_lines = [f"- {what}: {text}" for what, text in facts]
    return "\n".join([HEAD, *table(rows), "", "Rows without a goal are for information.", *missed(rows), "",
                      "## Machine", "", *machine_lines, "", method])
