"""What the converter leaves in the folder it writes to when it is not let finish."""

import os
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
        nameless = [
            path for path in descriptors.iterdir() if os.readlink(path).startswith(f"{self.folder}/#")
        ]
        return named + nameless

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
