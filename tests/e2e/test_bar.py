"""The control bar: its buttons and its field, with real clicks and keys."""

import numpy as np
import pytest

import rules
from desktop import wait_until
from framefile import Picture, noise, stored_pixels, write
from menus import Bar
from scene import Scene

WIDTH, HEIGHT = 101, 75


def test_the_buttons_play_and_step(play):
    player = play(last=6)
    bar = Bar.of(player)
    stopped = bar.pixels()
    for button, frame in (("step", 2), ("end", 6), ("back", 5), ("start", 1)):
        bar.click(button)
        player.wait_for(frame)
    for button, direction in (("forward", 1), ("backward", -1)):
        bar.click(button)
        goes_on = lambda seen: all((b - a) % 6 == direction % 6 for a, b in zip(seen, seen[1:]))
        player.record_in_order(4, goes_on)
    bar.click("forward")
    player.playing()
    bar.desktop.park_pointer()
    wait_until(lambda: (bar.pixels() != stopped).any(), what="a bar that shows the playing")
    bar.click("forward")  # the one in force pauses
    player.settled()
    bar.desktop.park_pointer()
    wait_until(lambda: (bar.pixels() == stopped).all(), what="a bar that shows the pause")
    player.rewind()  # the keyboard is the picture's


def test_a_rate_that_is_typed_is_played(play):
    player = play(last=8)
    bar = Bar.of(player)
    bar.click("rate")
    for key in ("Control_L+a", "1", "space", "0", "Return"):
        bar.desktop.key(key)
    player.program.wait_for_rest()
    player.program.key("space")
    player.plays_a_round_in(0.8)


@pytest.mark.parametrize("planes", ["all", "colour"])
def test_the_buttons_of_the_views_show_them_and_are_grey_without_their_plane(start, folder, planes):
    picture = Picture(colour=noise(WIDTH, HEIGHT, 1))
    if planes == "all":
        picture.mask = noise(WIDTH, HEIGHT, 2, channels=1)
        z = np.random.default_rng(3).normal(500, 200, (HEIGHT, WIDTH))
        picture.z = z.astype(np.float32)
    write(folder / "one", picture)
    scene = Scene(start("one"), stored_pixels(picture))
    bar = Bar(scene.program, WIDTH, HEIGHT, scene.place.x, scene.place.y)
    stored, colours = scene.stored, scene.stored[..., :3]
    masked = rules.grey(rules.plane(stored, 0)) if planes == "all" else colours
    depth = rules.grey(rules.depth(picture.z)) if planes == "all" else colours
    for button, shown in (("mask", masked), ("depth", depth), ("all channels", colours)):
        bar.click(button)
        scene.program.wait_for_rest()
        scene.expect(shown, f"the picture after {button}")
