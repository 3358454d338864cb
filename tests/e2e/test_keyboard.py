"""Keyboards of other layouts, and modifiers that change while another window has the keyboard."""

import subprocess
from contextlib import contextmanager

import numpy as np
import pytest
from Xlib import X
from Xlib.ext import xtest

import rules
from framefile import Picture, blocky, noise, stored_pixels, write
from menus import leave_menu, open_menu
from rules import Lut
from scene import Scene

WIDTH, HEIGHT = 101, 75

# Places of keys, the same on every layout.
SHIFT, ALT_GR = 50, 108
KEY_0, KEY_7, KEY_8, KEY_9, KEY_SHARP_S, KEY_HASH, KEY_COMMA, KEY_POINT = 19, 16, 17, 18, 20, 51, 59, 60


@contextmanager
def layout(desktop, name):
    """The display's keyboard has that layout for a while."""
    change = lambda to: subprocess.run(["setxkbmap", "-display", desktop.name, to], check=True)
    change(name)
    try:
        yield
    finally:
        change("us")


@pytest.fixture
def german(system, start, folder):
    with layout(system.desktop, "de"):
        picture = Picture(colour=noise(WIDTH, HEIGHT))
        write(folder / "one", picture)
        yield Scene(start("one"), stored_pixels(picture))


def stroke(desktop, *places):
    """Keys by their places: the last one is pressed while the others are held."""
    for kind, order in ((X.KeyPress, places), (X.KeyRelease, places[::-1])):
        for place in order:
            xtest.fake_input(desktop._display, kind, place)
            desktop._display.sync()


# What a German keyboard types with AltGr or Shift, and the control that it changes.
TYPED = [
    ((ALT_GR, KEY_9), "gamma", 0.01),  # ]
    ((ALT_GR, KEY_8), "gamma", -0.01),  # [
    ((SHIFT, KEY_0), "gain", 0.01),  # =
    ((SHIFT, KEY_HASH), "saturation", 0.01),  # '
    ((SHIFT, KEY_COMMA), "saturation", -0.01),  # ;
    ((ALT_GR, KEY_SHARP_S), "offset", 1),  # \\
    ((SHIFT, KEY_7), "offset", -1),  # /
]
REPEATS = 3


# Wine gives AltGr a code of its own (0xE4), with neither Control nor Alt held.
def rows_that_come(system):
    return [row for row in TYPED if system.name != "wine" or ALT_GR not in row[0]]


def test_the_character_that_is_typed_decides(system, german):
    lut, all_channels = Lut(), (rules.BLUE, rules.GREEN, rules.RED)
    shown = lambda: rules.colours(lut.apply(german.stored))
    for places, control, step in rows_that_come(system):
        german.desktop.focus(german.program.window())
        for _ in range(REPEATS):  # one after the other: queued repeats are dropped
            stroke(german.desktop, *places)
            lut.step(control, step, all_channels)
            german.expect(shown(), f"{control} changed by {step}")
    # A key that types its character without them is that key still.
    german.key("x", rules.colours(Lut(**{**vars(lut), "negate": [True] * 3}).apply(german.stored)))


def test_a_modifier_that_was_released_elsewhere_is_not_held(system, start, folder):
    picture = Picture(colour=noise(WIDTH, HEIGHT))
    write(folder / "one", picture)
    scene = Scene(start("one"), stored_pixels(picture))
    desktop, window = system.desktop, scene.program.window()
    negative, stored = 255 - scene.stored[..., :3], scene.stored[..., :3]
    for _ in range(2):
        desktop.focus(window)
        desktop.press("Shift_L")
        scene.program.wait_for_rest(0.2)
        desktop._root.set_input_focus(X.RevertToPointerRoot, X.CurrentTime)
        desktop._display.sync()
        scene.program.wait_for_rest(1.5)  # longer than the time after which held keys are looked up
        desktop.release("Shift_L")
        desktop.give_keyboard(window)
        # With Shift it would be another key.
        scene.key("x", negative)
        scene.key("x", stored)


def test_a_modifier_that_a_menu_saw_released_is_not_held(start, folder):
    z = blocky(WIDTH, HEIGHT, channels=1).astype(np.float32)
    picture = Picture(colour=noise(WIDTH, HEIGHT), z=z)
    write(folder / "one", picture)
    scene = Scene(start("one"), stored_pixels(picture))
    plain, stored = rules.grey(rules.depth(z)), scene.stored[..., :3]
    for _ in range(4):
        open_menu(scene.program, "f")
        leave_menu(scene.program)
        scene.key("z", plain)
        scene.key("c", stored)
