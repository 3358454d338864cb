"""A system that gives no more threads: frames are read all the same."""

import subprocess

import pytest

from framefile import Animation
from program import Player


def test_an_animation_plays_from_disk_without_the_threads_that_read_ahead(system, start, folder):
    if system.name != "linux":
        pytest.skip("needs strace")
    animation = Animation(last=6).write(folder)
    player = Player(start("-k", "0", "-r", "8", "shot."), animation)
    player.pause()
    log = folder / "log"
    tracer = subprocess.Popen(
        ["strace", "-f", "-p", str(player.program.process.pid), "-o", str(log),
         "-e", "trace=clone,clone3", "-e", "inject=clone,clone3:error=EAGAIN"],
        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
    )
    assert "attached" in tracer.stderr.readline()
    player.program.key("space")
    assert len(player.playing(12)) == 13
    tracer.terminate()
    tracer.communicate()
    assert "EAGAIN" in log.read_text(), "threads were wanted"
    assert player.program.close() == 0
