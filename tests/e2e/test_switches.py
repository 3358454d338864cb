"""Keys that switch something without changing the picture: what they say, and what they do."""

import pytest

import rules
from desktop import wait_until
from framefile import Animation, Picture, noise, on_screen, stored_pixels, write
from program import Player
from scene import Scene


def console(program):
    return program.stdout().splitlines() + program.stderr().splitlines()


def test_switches_tell_their_state_on_the_console(start, folder):
    picture = Picture(colour=noise(101, 75))
    write(folder / "one", picture)
    scene = Scene(start("one"), stored_pixels(picture))
    lines = []
    for stroke in ("F8", "F8", "F8", "F11", "F11", "F8"):
        before = len(console(scene.program))
        scene.program.key(stroke)
        wait_until(lambda: len(console(scene.program)) > before, what=f"a line after {stroke}")
        lines.append(console(scene.program)[-1])
    curve_on, curve_off = lines[:2]
    assert curve_on != curve_off and lines[2] == curve_on
    overwrite_on, overwrite_off = lines[3:5]
    assert overwrite_on != overwrite_off and lines[5] == curve_off
    assert len({curve_on, curve_off, overwrite_on, overwrite_off}) == 4
    assert len(console(scene.program)) == 6
    scene.expect(picture.colour)


def test_a_picture_outlives_every_key_without_a_meaning_for_it(start, folder):
    picture = Picture(colour=noise(101, 75))
    write(folder / "one", picture)
    scene = Scene(start("one"), stored_pixels(picture))
    red = rules.grey(rules.plane(scene.stored, 3))
    others = ["space", "Left", "Right", "comma", "period", "0", "7", "s", "t", "h", "j", "o", "y"]
    others += ["Home", "End", "Page_Up", "Page_Down", "Insert", "Delete", "Escape", "F7", "F9"]
    others += ["KP_Add", "KP_Subtract", "KP_5", "KP_Multiply", "Up", "Down", "Return", "BackSpace"]
    for stroke in others:
        scene.program.key(stroke)
    scene.key("r", red)
    scene.key("c", picture.colour)
    assert scene.margin_is_clear()
    assert scene.program.close() == 0
    assert console(scene.program) == []


# Strokes, and the rate they lead to from 12 frames per second.
RATES = {
    "up": (["KP_Add", "Shift_L+KP_Add", "Alt_L+KP_Add", "Alt_L+Shift_L+KP_Add"], 30),
    "down": (["KP_Subtract", "Shift_R+KP_Subtract", "Alt_L+KP_Subtract"], 4),
    "not below 1, then back to the start": (
        ["Alt_L+Shift_L+KP_Subtract"] * 2 + ["Shift_L+KP_Add", "Control_L+KP_Add", "KP_Add"],
        13,
    ),
}


@pytest.mark.parametrize("strokes, rate", RATES.values(), ids=RATES.keys())
def test_the_keypad_changes_the_frame_rate(start, folder, strokes, rate):
    # A range of `rate` frames takes one second.
    animation = Animation(last=rate).write(folder)
    player = Player(start("-r", "12", "shot."), animation)
    player.pause()
    player.program.key(*strokes, "space")
    assert player.plays_a_round_in(1.0)


def test_without_double_buffering_labels_and_messages_leave_nothing_behind(start, folder):
    picture = Picture(colour=noise(101, 75))
    write(folder / "one", picture)
    scene = Scene(start("one"), stored_pixels(picture))
    scene.program.key("f")
    for stroke in ("F1", "Shift_L+F2"):
        scene.program.key(stroke)
        wait_until(lambda: scene.label()[0], what=f"a label after {stroke}")
        scene.program.key("F4")
        wait_until(lambda: not scene.label()[0], what="no label")
        scene.expect(picture.colour)
        assert scene.margin_is_clear()
    scene.held("m")
    scene.expect(picture.colour)
    assert scene.margin_is_clear()
    scene.program.key("f")
    scene.key("r", rules.grey(rules.plane(scene.stored, 3)))
    assert scene.margin_is_clear()


def test_the_files_of_a_sequence_follow_each_other_until_the_window_is_closed(start, folder):
    sizes = [(101, 75), (160, 90)]
    pictures = [Picture(colour=noise(*size, seed=n)) for n, size in enumerate(sizes)]
    for name, picture in zip("ab", pictures):
        write(folder / name, picture)
    program = start("-S", "a", "b")
    window = program.window().id
    for _ in range(4):
        for picture in pictures:
            program.find_part(on_screen(picture))
            assert [shown.id for shown, _ in program.desktop.windows()] == [window]
    assert program.close() == 0
    assert console(program) == []


def test_animations_of_a_sequence_follow_each_other(start, folder):
    shots = Animation(first=1, last=3).write(folder)
    clips = Animation(first=7, last=12, width=128, height=96).write(folder, "clip.{}")
    picture = Picture(colour=noise(101, 75))
    write(folder / "one", picture)
    program = start("-S", "-r", "4", "shot.", "one", "clip.")
    for _ in range(3):
        program.find_part(on_screen(shots.picture(1)))
        program.find_part(on_screen(picture))
        program.find_part(on_screen(clips.picture(7)))
    assert program.close() == 0


def test_escape_means_nothing_in_a_window(play):
    player = play(last=3)
    player.step("Right", 2)
    before = player.desktop.rectangle(player.program.window())
    player.program.key("Escape")
    player.step("Right", 3)
    assert player.desktop.rectangle(player.program.window()) == before
