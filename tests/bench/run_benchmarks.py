"""Runs the benchmarks of goals.toml in rounds and writes docs/performance.md (see ./bench).

In every round each program runs once, the order being shuffled, so that what the machine does
meanwhile meets all of them alike. A row's figure is computed for each round; the median counts.
"""

import argparse
import dataclasses
import hashlib
import pathlib
import random
import re
import shutil
import statistics
import subprocess
import sys
import tomllib

import machine
import measuring
import page

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = ROOT / "build" / "bench"
FILES = BUILD / "files"
ROUNDS, QUICK_ROUNDS = 7, 2
MEMORY_LEFT = 5e9  # bytes that the files in the page cache and everything else may need
MEMORY_FREE = 1e9  # bytes that are left free between runs
BRACKETS = re.compile(r"\[([^\]]+)\]")


@dataclasses.dataclass
class Row:
    group: str
    what: str
    formula: str
    least: float | None = None
    most: float | None = None
    needs: str = ""  # instruction set
    limit: str = ""  # what stands in the way of the goal, as far as it was measured
    figures: list = dataclasses.field(default_factory=list)  # one for each round
    missing: str = ""  # why it could not be measured

    def measurements(self):
        return {name.split(":")[0] for name in BRACKETS.findall(self.formula)}

    def add_round(self, values):
        look_up = lambda match: repr(values[match.group(1)])
        expression = " ".join(BRACKETS.sub(look_up, self.formula).split())
        self.figures.append(eval(expression, {"__builtins__": {}, "min": min, "max": max}))

    def figure(self):
        return statistics.median(self.figures)

    def has_goal(self):
        return self.least is not None or self.most is not None

    def reached(self):
        if self.least is not None and self.figure() < self.least:
            return False
        return self.most is None or self.figure() <= self.most


def filled(text, **more):
    """The text with {bin}, {files} and more put in."""
    for name, value in {"bin": BUILD / "bin", "files": FILES, **more}.items():
        text = text.replace("{" + name + "}", str(value))
    return text


def expand_runs(runs):
    expanded = {}
    for run in runs:
        for word in run.get("each", [""]):
            name = filled(run["name"], each=word)
            command = [filled(part, each=word) for part in run["command"]]
            expanded[name] = {**run, "name": name, "command": command}
    return expanded


def installed(command):
    return shutil.which(filled(command[0])) is not None


def prepare_files(steps, made_from):
    """Makes the files anew unless they are what these steps and sources make."""
    digest = hashlib.sha256(repr(steps).encode())
    for source in made_from:
        digest.update((ROOT / source).read_bytes())
    stamp = FILES / "stamp"
    programs = [step["command"][0] for step in steps if installed(step["command"])]
    wanted = " ".join([digest.hexdigest(), *programs])
    if stamp.exists() and stamp.read_text(encoding="ascii") == wanted:
        return
    print("writing the files", file=sys.stderr)
    shutil.rmtree(FILES, ignore_errors=True)
    FILES.mkdir(parents=True)
    for step in steps:
        command = [filled(part) for part in step["command"]]
        if installed(command):
            (FILES / step.get("folder", "")).mkdir(exist_ok=True)
            subprocess.run(command, stdin=subprocess.DEVNULL, check=True)
    stamp.write_text(wanted, encoding="ascii")


def read_all_files():
    """Brings the files into the page cache."""
    for path in FILES.rglob("*"):
        if path.is_file() and not path.name.startswith("tenfold."):
            path.read_bytes()


class Measurements:
    """All that the rows need, how to take it, and what went wrong."""

    def __init__(self, names, goals):
        runs = expand_runs(goals["run"])
        self.runs = [runs[name] for name in sorted(names & runs.keys())]
        self.suites = {}  # program: names of its benchmarks
        self.missing = {}  # measurement: why
        self.failures = []
        self.memory = measuring.WarmMemory()
        left = names - runs.keys()
        for program in goals["suites"] if left else []:
            path = str(BUILD / "bin" / program)
            self.suites[path] = measuring.list_suite(path) & left
            left -= self.suites[path]
        for name in left:
            self.fail(name, f"there is no measurement {name}")
        self.drop_what_cannot_run(goals["prepare"])

    def fail(self, name, why):
        self.missing[name] = why
        self.failures.append(why)
        print(why, file=sys.stderr)

    def drop_what_cannot_run(self, steps):
        spare = measuring.memory_of("MemAvailable") - MEMORY_LEFT
        unmade = [f"{FILES}/{step['folder']}/" for step in steps if not installed(step["command"])]
        for run in self.runs:
            if not installed(run["command"]):
                self.missing[run["name"]] = f"{run['command'][0]} is not installed"
            elif any(part.startswith(folder) for part in run["command"] for folder in unmade):
                self.missing[run["name"]] = "its files could not be made"
            elif run.get("memory", 0) > spare:
                self.missing[run["name"]] = f"needs {run['memory'] / 1e9:.1f} GB of free memory"
        self.runs = [run for run in self.runs if run["name"] not in self.missing]

    def take_run(self, run):
        self.memory.hold_all_but(MEMORY_FREE)
        values = measuring.time_command(run, self.memory)
        return {f"{run['name']}:{key}".rstrip(":"): value for key, value in values.items()}

    def take_round(self, number):
        """{measurement: seconds}; what fails is left out from then on."""
        takers = [(run["name"], self.take_run, (run,)) for run in self.runs]
        takers += [(path, measuring.run_suite, (path, names))
                   for path, names in self.suites.items() if names]
        random.Random(number).shuffle(takers)
        values = {}
        for name, take, arguments in takers:
            if name in self.missing:
                continue
            try:
                values.update(take(*arguments))
            except measuring.Failed as failure:
                self.fail(name, str(failure))
                for benchmark in self.suites.get(name, ()):
                    self.missing[benchmark] = str(failure)
        return values


def measure(rows, goals, rounds):
    sets = machine.instruction_sets()
    for row in rows:
        row.missing = f"the processor has no {row.needs}" if row.needs not in sets else ""
    rows = [row for row in rows if not row.missing]
    names = set().union(*(row.measurements() for row in rows))
    measurements = Measurements(names, goals)
    if any(str(FILES) in part for run in measurements.runs for part in run["command"]):
        prepare_files(goals["prepare"], goals["made_from"])
        read_all_files()
    for number in range(rounds):
        print(f"round {number + 1} of {rounds}", file=sys.stderr)
        values = measurements.take_round(number)
        for row in rows:
            reasons = map(measurements.missing.get, sorted(row.measurements()))
            row.missing = next(filter(None, reasons), "")
            if not row.missing:
                row.add_round(values)
    return measurements.failures


def parse_arguments(groups):
    parser = argparse.ArgumentParser(prog="./bench")
    parser.add_argument("groups", nargs="*", metavar="GROUP", help=f"of {', '.join(groups)}")
    parser.add_argument("--quick", action="store_true", help="fewer rounds")
    arguments = parser.parse_args()
    if unknown := set(arguments.groups) - set(groups):
        parser.error(f"no such group: {', '.join(sorted(unknown))}")
    return arguments


def main():
    goals = tomllib.loads((ROOT / "tests/bench/goals.toml").read_text(encoding="utf-8"))
    rows = [Row(**row) for row in goals["row"]]
    arguments = parse_arguments(list(dict.fromkeys(row.group for row in rows)))
    whole = not arguments.groups and not arguments.quick
    rows = [row for row in rows if not arguments.groups or row.group in arguments.groups]
    rounds = QUICK_ROUNDS if arguments.quick else ROUNDS

    busy = [machine.processors_busy()]
    failures = measure(rows, goals, rounds)
    busy.append(machine.processors_busy())
    print("\n".join(page.table(rows)))
    if whole:
        peers = [[filled(part) for part in command] for command in goals["peers"]]
        text = page.document(rows, machine.describe(ROOT, BUILD, peers), rounds, max(busy))
        (ROOT / "docs/performance.md").write_text(text, encoding="utf-8")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
