"""A system that gives no more threads: frames are read all the same."""

import pytest

from framefile import Animation
from program import Player
from tracer import Tracer


def test_an_animation_plays_from_disk_without_the_threads_that_read_ahead(system, start, folder):
    if system.name != "linux":
        pytest.skip("needs strace")
    animation = Animation(last=6).write(folder)
    player = Player(start("-k", "0", "-r", "8", "shot."), animation)
    player.pause()
    log = folder / "log"
    refuse = ("-e", "trace=clone,clone3", "-e", "inject=clone,clone3:error=EAGAIN")
    tracer = Tracer(player.program, *refuse, log=log)
    player.program.key("space")
    assert len(player.playing(12)) == 13
    assert player.program.close() == 0
    tracer.wait_for_end()
    assert "EAGAIN" in log.read_text(), "threads were wanted"
