"""Takes one measurement at a time: a run of a command, or of a Google Benchmark program."""

import contextlib
import json
import mmap
import os
import re
import statistics
import subprocess
import threading
import time

REPETITIONS = 3  # of each benchmark of a suite, within a round
SHORTEST = 0.05  # seconds that a repetition lasts at least
SUFFIXES = re.compile(r"(/(manual_time|real_time|process_time|iterations:\d+|min_time:[\d.]+))+$")
SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


class Failed(Exception):
    """A measurement could not be taken; says why."""


def memory_of(field):
    """Bytes, by a field of /proc/meminfo: MemAvailable, or MemFree, what not even a cache uses."""
    with open("/proc/meminfo", encoding="ascii") as lines:
        fields = dict(line.split(":") for line in lines)
    return int(fields[field].split()[0]) * 1024


def resident_bytes(process):
    try:
        with open(f"/proc/{process}/statm", encoding="ascii") as fields:
            return int(fields.read().split()[1]) * mmap.PAGESIZE
    except OSError:  # it has ended
        return 0


class WarmMemory:
    """Memory held between runs and released for them, as much as each will fill.

    A virtual machine may give memory that lies free for a second or two back to its host, and then
    its first use is many times as slow. Holding nearly all of it keeps it supplied, so that every
    run finds only memory that was in use a moment ago. What a long run fills is released little by
    little, ahead of it.
    """

    BLOCK = 64 << 20
    AHEAD = 1 << 30  # bytes that a run finds free
    POPULATE_WRITE = 23  # madvise: supply all pages now

    def __init__(self):
        self.blocks = []

    def hold_all_but(self, spare):
        while memory_of("MemFree") > spare + self.BLOCK:
            block = mmap.mmap(-1, self.BLOCK, flags=mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS)
            block.madvise(mmap.MADV_HUGEPAGE)
            block.madvise(self.POPULATE_WRITE)
            self.blocks.append(block)

    def release(self, size):
        for _ in range(min(len(self.blocks), -(-int(size) // self.BLOCK))):
            self.blocks.pop().close()

    @contextlib.contextmanager
    def released_ahead_of(self, process, size):
        """Releases, while the process grows to `size`, what it has not yet filled."""
        ended = threading.Event()

        def follow():
            released = self.AHEAD
            while released < size and not ended.wait(0.02):
                wanted = min(resident_bytes(process) + self.AHEAD, size) - released
                if wanted >= self.BLOCK:
                    self.release(wanted)
                    released += -(-int(wanted) // self.BLOCK) * self.BLOCK

        follower = threading.Thread(target=follow)
        follower.start()
        try:
            yield
        finally:
            ended.set()
            follower.join()


def printed_values(text):
    """The "name value" lines of a program."""
    values = {}
    for line in text.splitlines():
        words = line.split()
        if len(words) == 2:
            try:
                values[words[0]] = float(words[1])
            except ValueError:
                pass
    return values


def time_command(run, memory):
    """{"": seconds, "processor": seconds, and what the command printed}."""
    environment = {**os.environ, **run.get("environment", {})}
    size = run.get("memory", 0)
    memory.release(min(size, memory.AHEAD))
    start = time.perf_counter()
    with subprocess.Popen(run["command"], env=environment, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True) as process:
        with memory.released_ahead_of(process.pid, size):
            output = process.stdout.read()
            _, status, usage = os.wait4(process.pid, 0)
            seconds = time.perf_counter() - start
        process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise Failed(f"{run['name']}: status {process.returncode}: {output.strip()[-500:]}")
    return {**printed_values(output), "": seconds, "processor": usage.ru_utime + usage.ru_stime}


def run_suite(program, names):
    """Median seconds of each named benchmark of the program, repetitions interleaved."""
    any_name = "|".join(re.escape(name) for name in sorted(names))
    result = subprocess.run(
        [program, f"--benchmark_filter=^({any_name})(/.*_time)?$",
         f"--benchmark_repetitions={REPETITIONS}",
         "--benchmark_enable_random_interleaving=true", f"--benchmark_min_time={SHORTEST}",
         "--benchmark_format=json"],
        stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    if result.returncode != 0:
        raise Failed(f"{program}: status {result.returncode}: {result.stderr.strip()[-500:]}")
    seconds = {}
    for row in json.loads(result.stdout)["benchmarks"]:
        if row.get("error_occurred"):
            raise Failed(f"{row['name']}: {row.get('error_message')}")
        if row["run_type"] == "iteration":
            name = SUFFIXES.sub("", row["run_name"])
            seconds.setdefault(name, []).append(row["real_time"] * SECONDS[row["time_unit"]])
    return {name: statistics.median(times) for name, times in seconds.items()}


def list_suite(program):
    """Names of the benchmarks that the program has."""
    listed = subprocess.run([program, "--benchmark_list_tests=true"],
                            capture_output=True, text=True, check=True)
    return {SUFFIXES.sub("", name) for name in listed.stdout.split("\n") if name}
