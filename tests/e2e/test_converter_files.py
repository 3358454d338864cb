"""What the converter leaves in the folder it writes to when it is not let finish."""

import os
import re
import signal
import subprocess
from pathlib import Path

import numpy as np
import pytest
from PIL import Image

from desktop import PATIENCE, wait_until
from framefile import Picture, Style, noise, on_screen, write
from program import end_processes

SIGNALS = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]


@pytest.fixture(scope="session")
def large_frame(tmp_path_factory):
    """A frame that takes its converter seconds to write as PNG."""
    path = tmp_path_factory.mktemp("frame") / "large"
    write(path, Picture(colour=noise(5000, 4000, seed=5)), Style(codec="raw"))
    return path


class Writing:
    """A converter that is writing a PNG file."""

    def __init__(self, system, frame, target):
        self.system, self.marker = system, f"{system.marker}-writing"
        self.folder = target.parent
        with frame.open("rb") as stdin:
            self.process = subprocess.Popen(
                [*system.command("pixconv"), "-t", "png", str(target)],
                env=system.environment(system.folder, self.marker),
                stdin=stdin,
                stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL,
            )
        wait_until(lambda: self.size() > 100_000, what=lambda: f"a file that grows {self.names()}")

    def names(self):
        return sorted(path.name for path in self.folder.iterdir())

    def unfinished(self):
        """What is not finished: a file with a name, or one that only the process knows."""
        named = [path for path in self.folder.iterdir() if path.suffix == ".tmp"]
        descriptors = Path(f"/proc/{self.process.pid}/fd")
        return named + [path for path in descriptors.iterdir() if self.is_nameless(path)]

    def is_nameless(self, descriptor):
        try:
            return os.readlink(descriptor).startswith(f"{self.folder}/#")
        except FileNotFoundError:  # closed since it was listed
            return False

    def size(self):
        assert self.process.poll() is None, "it has ended before it was told to"
        return max((path.stat().st_size for path in self.unfinished()), default=0)


@pytest.fixture
def writing(system, large_frame, tmp_path):
    target = tmp_path / "old.png"
    Image.fromarray(noise(40, 30, seed=6)).save(target)
    run = Writing(system, large_frame, target)
    yield run
    end_processes(run.marker)
    run.process.wait(PATIENCE)


def assert_old_is_left(run):
    wait_until(lambda: run.names() == ["old.png"], what=lambda: f"only the old file {run.names()}")
    picture = np.asarray(Image.open(run.folder / "old.png"))
    assert (picture == noise(40, 30, seed=6)).all()


@pytest.mark.parametrize("number", SIGNALS, ids=lambda number: number.name)
def test_a_converter_that_is_told_to_end_leaves_nothing_behind(system, writing, number):
    if system.name == "wine" and number != signal.SIGINT:
        pytest.skip("there are no such signals there")
    writing.process.send_signal(number)
    status = writing.process.wait(PATIENCE)
    assert_old_is_left(writing)
    if system.name == "linux":
        assert status == -number


def test_one_that_is_killed_leaves_nothing(system, writing):
    writing.process.kill()
    writing.process.wait(PATIENCE)
    assert_old_is_left(writing)


def test_the_next_one_writes_beside_one_that_is_not_finished(system, writing, tmp_path):
    frame = tmp_path / "frame"
    colour = noise(30, 20, seed=7)
    write(frame, Picture(colour=colour))
    with frame.open("rb") as stdin:
        done = system.run_tool("pixconv", "-t", "png", tmp_path / "new.png", stdin=stdin)
    assert done.status == 0, done.messages
    shown = on_screen(Picture(colour=colour))  # frames begin with the bottom row
    assert (np.asarray(Image.open(tmp_path / "new.png").convert("RGB")) == shown[..., :3]).all()
    assert writing.unfinished()


def traced(system, frame, target, *options):
    """One conversion under strace; its exit status."""
    with frame.open("rb") as stdin:
        return subprocess.run(
            ["strace", "-f", "-qq", "-e", "trace=%file,%desc", *options,
             *system.command("pixconv"), "-t", "png", str(target)],
            env=system.environment(target.parent, f"{system.marker}-traced"),
            stdin=stdin, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            timeout=PATIENCE, check=False,
        ).returncode


def test_killed_at_any_system_call_the_old_file_or_the_new_one_is_there_whole(system, folder):
    if system.name != "linux":
        pytest.skip("needs strace")
    frame, target, log = folder / "frame", folder / "picture.png", folder / "log"
    write(frame, Picture(colour=noise(101, 75)))
    old = b"what was there"
    target.write_bytes(old)
    assert traced(system, frame, target, "-o", log) == 0
    new = target.read_bytes()
    lines = [line for line in log.read_text().splitlines() if "(" in line]
    calls = [re.match(r"(?:\d+ +)?(\w+)", line)[1] for line in lines]
    first = next(i for i, line in enumerate(lines) if target.name in line)
    assert new != old and len(calls) - first > 10
    left = {old: 0, new: 0}
    for last in range(first, len(calls)):
        name = calls[last]
        target.write_bytes(old)
        traced(system, frame, target, "-o", "/dev/null",
               "-e", f"inject={name}:signal=KILL:when={calls[:last + 1].count(name)}")
        left[target.read_bytes()] += 1  # anything else is an error
    assert left[old] and left[new], left
