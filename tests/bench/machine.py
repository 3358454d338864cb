"""Describes the machine, the build and the peers, as rows of (what, text)."""

import os
import pathlib
import re
import shutil
import subprocess
import time


def output_of(*command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=True).stdout.strip()
    except (OSError, subprocess.CalledProcessError):
        return ""


def first_line(text):
    return text.split("\n", 1)[0]


def file_text(path):
    try:
        return pathlib.Path(path).read_text(encoding="utf-8").strip()
    except OSError:
        return "unknown"


def instruction_sets():
    """Names as /proc/cpuinfo has them, and the empty one."""
    flags = re.search(r"^flags\s*:(.*)$", file_text("/proc/cpuinfo"), re.M)
    return {"", *(flags.group(1).split() if flags else ())}


def processors_busy(seconds=2):
    """How many processors other programs keep busy, on average, while this one waits."""

    def idle():
        fields = file_text("/proc/stat").split("\n")[0].split()
        return (int(fields[4]) + int(fields[5])) / os.sysconf("SC_CLK_TCK")  # idle and disk

    before, start = idle(), time.monotonic()
    time.sleep(seconds)
    return max(0.0, os.cpu_count() - (idle() - before) / (time.monotonic() - start))


def processor():
    fields = dict(line.split(":", 1) for line in output_of("lscpu").splitlines() if ":" in line)

    def field(name):
        return fields.get(name, "unknown").strip()

    caches = ", ".join(f"{name} {field(name + ' cache')}" for name in ("L1d", "L2", "L3"))
    virtual = "Hypervisor vendor" in fields
    host = f", virtual machine ({field('Hypervisor vendor')})" if virtual else ""
    return [
        ("processor", f"{field('Model name')}, family {field('CPU family')} "
                      f"model {field('Model')}, {os.cpu_count()} cores{host}"),
        ("caches", caches),
    ]


def memory():
    total = int(re.search(r"MemTotal:\s+(\d+)", file_text("/proc/meminfo")).group(1))
    pages = file_text("/sys/kernel/mm/transparent_hugepage/enabled")
    chosen = re.search(r"\[(.*?)\]", pages)
    return [("memory", f"{total / 1048576:.1f} GiB, transparent huge pages: "
                       f"{chosen.group(1) if chosen else pages}")]


def system():
    name = re.search(r'PRETTY_NAME="(.*?)"', file_text("/etc/os-release"))
    return [("system", f"{name.group(1) if name else 'Linux'}, kernel {os.uname().release}")]


def compiler(build):
    cache = file_text(build / "CMakeCache.txt")

    def value(name):
        found = re.search(rf"^{name}:\w+=(.*)$", cache, re.M)
        return found.group(1) if found else ""

    flags = " ".join(filter(None, (value("CMAKE_CXX_FLAGS"), value("CMAKE_CXX_FLAGS_RELEASE"))))
    name = first_line(output_of(value("CMAKE_CXX_COMPILER"), "--version"))
    return [("compiler", f"{name}, {flags}")]


def commit(root):
    name = output_of("git", "-C", str(root), "rev-parse", "--short", "HEAD") or "unknown"
    changes = output_of("git", "-C", str(root), "status", "--porcelain", "--", ".",
                        ":!docs/performance.md")
    return [("commit", name + (" and changes that are not committed" if changes else ""))]


def peers(commands):
    names = [first_line(output_of(*command)) for command in commands if shutil.which(command[0])]
    versions = [re.sub(r"^Version: | Copyright.*| https?:.*", "", name) for name in names if name]
    return [("compared with", "; ".join(versions))]


def describe(root, build, peer_commands):
    return (processor() + memory() + system() + compiler(build) + commit(root)
            + peers(peer_commands))
