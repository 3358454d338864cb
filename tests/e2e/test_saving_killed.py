"""The program killed while it saves: the old file or the new one is there, whole."""

import re

import numpy as np
import pytest

import framefile
import framereader
from desktop import wait_until
from framefile import Picture, noise
from tracer import Tracer

OLD = b"what was there"
PICTURE = Picture(colour=noise(101, 75, seed=3))
# What saving asks of the system; some of the writes are the window's own.
CALLS = "trace=openat,write,pwrite64,fchmod,ftruncate,fdatasync,fsync,close,rename,renameat,renameat2,unlink"
MOST_OF_A_CALL = 8


def show(start, folder):
    framefile.write(folder / "one", PICTURE)
    (folder / "vistel.out.1").write_bytes(OLD)
    program = start("one")
    program.find_part(framefile.on_screen(PICTURE))
    program.wait_for_rest()
    return program


def what_is_there(target):
    content = target.read_bytes()
    if content == OLD:
        return "old"
    whole = np.array_equal(framereader.read(content).colour[::-1], PICTURE.colour)
    return "new" if whole else "broken"


def test_killed_at_any_system_call_the_old_file_or_the_new_one_is_there_whole(system, start, folder):
    if system.name != "linux":
        pytest.skip("needs strace")
    target, log = folder / "vistel.out.1", folder / "log"
    program = show(start, folder)
    Tracer(program, "-e", CALLS, log=log)
    program.key("w")
    traced = lambda: text if "done" in (text := log.read_text()) else ""
    calls = re.findall(r"^(?:\d+ +)?(\w+)\(", wait_until(traced, what="the end of saving"), re.MULTILINE)
    assert what_is_there(target) == "new"
    assert program.close() == 0
    assert {"fdatasync", "rename"} & set(calls), set(calls)
    left = []
    for name in sorted(set(calls)):
        for count in range(1, min(calls.count(name), MOST_OF_A_CALL) + 1):
            program = show(start, folder)
            inject = f"inject={name}:signal=KILL:when={count}"
            Tracer(program, "-e", CALLS, "-e", inject)
            program.key("w")
            ended = lambda: not program.running() or "done" in program.stderr()
            wait_until(ended, what=lambda: f"the end at {name} {count}")
            left.append(what_is_there(target))
            program.kill()
    assert set(left) == {"old", "new"}, left


FAILURES = {"fdatasync": ("ENOSPC", "No space left on device"), "rename": ("EROFS", "Read-only file system")}


def test_a_disk_that_fails_at_the_end_leaves_the_old_file_and_is_named(system, start, folder):
    if system.name != "linux":
        pytest.skip("needs strace")
    target = folder / "vistel.out.1"
    for call, (error, reason) in FAILURES.items():
        program = show(start, folder)
        Tracer(program, "-e", f"trace={call}", "-e", f"inject={call}:error={error}")
        program.key("w")
        wait_until(lambda: reason in program.stderr(), what=lambda: f"{reason} {program.report()}")
        assert "vistel.out.1" in program.stderr()
        assert what_is_there(target) == "old"
        wait_until(lambda: not list(folder.glob("*unfinished*")), what="the unfinished file to go")
        assert program.close() == 0
