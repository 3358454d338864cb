"""Who has work to do. A screen that does not change says little on a busy machine: whoever would
change it may not have had its turn. Once all that take part sleep, everything sent to them before has
been dealt with."""

import os
import time

INTERVAL = 0.02  # seconds from look to look


def _threads(number):
    try:
        return [f"/proc/{number}/task/{thread}" for thread in os.listdir(f"/proc/{number}/task")]
    except OSError:  # it has ended
        return []


def _text(path):
    try:
        with open(path, encoding="utf-8", errors="replace") as file:
            return file.read()
    except OSError:
        return ""


def is_working(number):
    """Whether a thread of the process runs, waits for a processor or for a disk."""
    states = (_text(f"{thread}/stat").rpartition(")")[2].split() for thread in _threads(number))
    return any(state and state[0] in "RD" for state in states)


def family(number):
    """The process and what it has started."""
    found, rest = [], [number]
    while rest:
        found.append(rest.pop())
        for thread in _threads(found[-1]):
            rest += map(int, _text(f"{thread}/children").split())
    return found


def catches(number, signal):
    """Whether the process has a handler of its own for the signal."""
    for line in _text(f"/proc/{number}/status").splitlines():
        if line.startswith("SigCgt:"):
            return bool(int(line.split()[1], 16) >> (signal - 1) & 1)
    return False


def stays(look, busy, seconds, patience):
    """Whether `look` gives the same at each look until nobody was busy for so many seconds, all in
    all; fails when that takes longer than `patience`."""
    first, end = look(), time.monotonic() + patience
    quiet = max(1, round(seconds / INTERVAL))
    while quiet > 0:
        time.sleep(INTERVAL)
        if look() != first:
            return False
        quiet -= not busy()
        if time.monotonic() > end:
            raise AssertionError(f"waited {patience:g} s in vain for an end of the work")
    return True
