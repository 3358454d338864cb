"""Files of other people's programs in the viewer: sequences that play, film scans, names, a converter
that is missing."""

import os
import shutil
import time

import numpy as np
import pytest

import framefile
import framereader
import pictures
import rules
from desktop import wait_until
from framefile import Animation
from pictures import Pixels
from program import Player, Program
from rules import Lut
from scene import Scene

SLOW = ("-r", "8")  # frames can be told apart by looking
FRAMES = Animation(1, 20)


def as_pixels(picture):
    """What a frame's picture is for a file of another type: the top row first."""
    return Pixels(np.ascontiguousarray(picture.colour[::-1]))


def write_frames(folder, animation, pattern="shot.{:02}.png", writer=lambda number: pictures.png):
    for number in animation.numbers:
        data = writer(number)(as_pixels(animation.picture(number)))
        (folder / pattern.format(number)).write_bytes(data)


def range_of(animation, pattern):
    return "-n", animation.numbers[0], animation.numbers[-1], 1, pattern


def record_all(player, numbers):
    """Watches until all of these frames were shown: what was seen, in order. The machine may be too
    busy to see each of them in each round."""
    seen = []

    def enough():
        number = player.frame()
        if number is not None and (not seen or seen[-1] != number):
            seen.append(number)
        return set(numbers) <= set(seen)

    wait_until(enough, what=lambda: f"all of {numbers}; seen: {seen}", interval=0.004)
    return seen


def goes_by(seen, step, numbers):
    """Whether nearly every frame is followed by the one `step` further on, round the ends."""
    places = [numbers.index(n) for n in seen]
    steps = [(b - a) % len(numbers) for a, b in zip(places, places[1:])]
    return steps.count(step % len(numbers)) >= 0.8 * len(steps)


def without_first(seen):
    """Going backward the first frame is only shown for a moment, because the clock starts anew
    there."""
    rest = [number for number in seen if number != FRAMES.numbers[0]]
    return [n for n, before in zip(rest, [None, *rest]) if n != before]


def turns_of(seen):
    """The frames at which the direction changes."""
    return [b for a, b, c in zip(seen, seen[1:], seen[2:]) if (b > a) != (c > b)]


def go(player, stroke, number):
    """Types the stroke until that frame is shown: there may be another one between."""
    seen = []
    for _ in range(3):
        player.program.key(stroke)
        seen.append(player.settled())
        if seen[-1] == number:
            return
    raise AssertionError(f"frame {number}; seen: {seen} {player.program.report()}")


def end_silently(program):
    assert program.close() == 0
    assert program.stdout() == "" and program.stderr() == ""


# --- sequences ------------------------------------------------------------------------------------


def start_frames(start, folder, *options):
    write_frames(folder, FRAMES)
    return Player(start(*SLOW, *options, *range_of(FRAMES, "shot.@@.png")), FRAMES)


def test_foreign_frames_play_forward(start, folder):
    player = start_frames(start, folder)
    assert goes_by(record_all(player, FRAMES.numbers), 1, FRAMES.numbers)
    end_silently(player.program)


def test_foreign_frames_play_backward(start, folder):
    player = start_frames(start, folder)
    player.pause()
    player.step("Control_L+Right", 20)
    player.program.key("comma")
    seen = without_first(record_all(player, FRAMES.numbers[1:]))
    assert goes_by(seen, -1, FRAMES.numbers[1:])
    player.program.key("space")
    player.settled()
    player.step("Control_L+Left", 1)
    end_silently(player.program)


def test_foreign_frames_play_to_and_fro(start, folder):
    player = start_frames(start, folder)
    player.pause()
    player.step("Control_L+Left", 1)
    player.program.key("s", "space")
    there = record_all(player, FRAMES.numbers[1:])
    back = record_all(player, FRAMES.numbers[1:-1])
    turns = turns_of(without_first(there + back))
    assert turns and all(turn <= 4 or turn >= 18 for turn in turns), there + back
    end_silently(player.program)


def test_foreign_frames_that_are_not_kept_are_read_each_time(start, folder):
    player = start_frames(start, folder, "-k", 0)
    assert goes_by(record_all(player, FRAMES.numbers), 1, FRAMES.numbers)
    player.pause()
    go(player, "Control_L+Left", 1)
    go(player, "Left", 20)
    go(player, "Left", 19)
    end_silently(player.program)


def as_frame(pixels):
    return pictures.frame_bytes(pixels)


# What is told by its first bytes, whatever it is called. Light and 10 bits would give other colours.
MIXED = [
    pictures.png, pictures.sgi, as_frame, pictures.psd, pictures.pam, pictures.tiff,
    lambda pixels: pictures.sgi(pixels, packed=True),
]


@pytest.mark.parametrize("pattern, files", [
    ("shot.@@.png", "shot.{:02}.png"), ("shot.", "shot.{}"), ("shot.#", "shot.{:04}"),
])
def test_frames_of_different_types_play_in_one_range(start, folder, pattern, files):
    write_frames(folder, FRAMES, files, lambda number: MIXED[number % len(MIXED)])
    arguments = [pattern] if pattern.endswith(".") else range_of(FRAMES, pattern)
    player = Player(start(*SLOW, *arguments), FRAMES)
    assert goes_by(record_all(player, FRAMES.numbers), 1, FRAMES.numbers)
    end_silently(player.program)


def age(path):
    """A file that was written just now may be on the way still: it is looked at again and again."""
    hour_ago = time.time() - 3600
    os.utime(path, (hour_ago, hour_ago))


def cut(data):
    """Nothing of the picture is left."""
    return data[:60]


def lines_with(text, word):
    return [line for line in text.splitlines() if word in line]


@pytest.mark.parametrize("broken", [2, 11, 20])
def test_a_broken_file_in_a_range_is_named_once_and_the_others_play(start, folder, broken):
    write_frames(folder, FRAMES)
    path = folder / f"shot.{broken:02}.png"
    path.write_bytes(cut(path.read_bytes()))
    age(path)
    program = start(*SLOW, *range_of(FRAMES, "shot.@@.png"))
    player = Player(program, FRAMES)
    player.pause()
    player.step("Control_L+Left", 1)
    whole = [number for number in FRAMES.numbers if number != broken]
    for number in whole[1:]:
        go(player, "Right", number)  # once more over what stands in the place of the broken one
    player.program.key("period")
    player.wait_for(whole[3])
    player.wait_for(whole[-4])
    converter = lines_with(program.stderr(), "pixconv: ")
    assert len(converter) == 1 and path.name in converter[0]
    others = [n for n in whole if f"shot.{n:02}.png" in program.stderr()]
    assert not others
    assert program.close() == 0
    assert len(lines_with(program.stderr(), "pixconv: ")) == 1


def test_a_cut_file_in_a_range_is_shown_as_far_as_it_goes_and_named_once(system, start, folder):
    write_frames(folder, FRAMES)
    path = folder / f"shot.{11:02}.png"
    whole = path.read_bytes()
    path.write_bytes(whole[: len(whole) // 2])
    age(path)
    part = framereader.read(system.run_tool("pixconv", path, "stdout").output).colour
    program = start(*SLOW, *range_of(FRAMES, "shot.@@.png"))
    player = Player(program, FRAMES)
    player.pause()
    player.step("Control_L+Left", 1)
    for number in range(2, 11):
        go(player, "Right", number)
    program.key("Right")
    program.find(part)
    program.key("Right")
    go(player, "Right", 13)
    go(player, "Left", 12)
    program.key("Left")
    program.find(part)
    assert program.close() == 0
    converter = lines_with(program.stderr(), "pixconv: ")
    assert len(converter) == 1 and path.name in converter[0] and "ends early" in converter[0]


# --- film -----------------------------------------------------------------------------------------

SCANS = {"dpx": pictures.dpx, "cin": pictures.cineon}


@pytest.fixture(params=SCANS)
def scan(request, folder):
    """Name of a film scan, and the pixels that the viewer keeps of it, first row below."""
    codes = (framefile.noise(101, 75, dtype=np.uint16) >> 6).astype(np.uint16)
    codes[:16, :64] = np.arange(1024).reshape(16, 64, 1)  # every code there is
    name = f"scan.{request.param}"
    (folder / name).write_bytes(SCANS[request.param](codes))
    upper = (codes[::-1] >> 2).astype(np.uint8)
    return name, np.dstack([upper, np.full(upper.shape[:2], 255, np.uint8)])


def test_a_film_scan_is_converted_for_display_by_k(start, scan):
    name, stored = scan
    scene = Scene(start(name), stored)
    film = rules.colours(Lut(film=True).apply(stored))
    assert (film.low != stored[..., :3]).mean() > 0.5
    scene.key("k", film)
    scene.key("k", stored[..., :3])
    end_silently(scene.program)


def test_a_film_scan_is_converted_from_the_start_by_the_option(start, scan):
    name, stored = scan
    film = rules.colours(Lut(film=True).apply(stored))
    assert film.unsure() == 0
    scene = Scene(start("-K", name), stored, film.low)
    scene.key("k", stored[..., :3])
    end_silently(scene.program)


# --- names ----------------------------------------------------------------------------------------

NAMES = {
    "Japanese": "日本",
    "Cyrillic": "кадр",
    "blanks": "my own  shot",
    "an ampersand": "a&b",
    "two ampersands": "a && b",
    "a caret": "a^b",
    "a per cent sign": "50%",
    "an exclamation mark": "wow!",
    "a variable between exclamation marks": "a!PATH!b",
    "a dollar sign": "a$HOME b",
    "a grave accent": "a`b`c",
    "an apostrophe": "it's",
    "brackets": "a (b) [c] {d}",
    "a semicolon and a comma": "a;b,c=d",
    "all of them": "日 本&кадр 50%^!",
    "a tilde": "~a",
    "a dash": "-a b",
}


@pytest.mark.parametrize("name", NAMES.values(), ids=NAMES.keys())
def test_a_foreign_file_opens_under_any_name(start, folder, name):
    pixels = framefile.noise(120, 90, seed=3)
    (folder / name).mkdir()
    (folder / name / f"{name}.png").write_bytes(pictures.png(Pixels(pixels)))
    program = start(f"./{name}/{name}.png")
    program.find(pixels)
    end_silently(program)


@pytest.mark.parametrize("name", NAMES.values(), ids=NAMES.keys())
def test_a_foreign_range_plays_under_any_name(start, folder, name):
    animation = Animation(8, 11)
    (folder / name).mkdir()
    write_frames(folder / name, animation, name.replace("{", "{{").replace("}", "}}") + ".{:02}.png")
    player = Player(start(*SLOW, *range_of(animation, f"./{name}/{name}.@@.png")), animation)
    record_all(player, animation.numbers)
    end_silently(player.program)


# --- a converter that is missing ------------------------------------------------------------------


@pytest.fixture
def start_alone(system, start, folder, tmp_path):
    """start_alone(*arguments) runs a copy of the program that has no converters beside it."""
    place = tmp_path / "alone"
    place.mkdir()

    class Alone(type(system)):
        binary = place / system.binary.name

        def __init__(self):
            vars(self).update(vars(system))

    shutil.copy2(system.binary, Alone.binary)
    for name in ("run", "settings2"):
        (tmp_path / name).mkdir()
    runs = []

    def run(*arguments):
        runs.append(Program(Alone(), arguments, folder, tmp_path / "run", tmp_path / "settings2"))
        return runs[-1]

    yield run
    for program in runs:
        program.kill()


def test_a_converter_that_is_missing_is_named_with_the_file_and_the_next_one_shown(
    start_alone, folder
):
    picture = framefile.Picture(colour=framefile.noise(120, 90, seed=4))
    (folder / "foreign.png").write_bytes(pictures.png(as_pixels(picture)))
    (folder / "old.ras").write_bytes(b"\x87\xcf\x03\x2b\1\0\0\0" + bytes(64))
    framefile.write(folder / "own.iff", picture)
    program = start_alone("foreign.png", "old.ras", "own.iff")
    program.find(framefile.on_screen(picture))
    said = program.stderr()
    for file, converter in (("foreign.png", "pixconv"), ("old.ras", "rasconv")):
        told = lines_with(said, file)
        assert len(told) == 1 and converter in told[0], said
    assert program.close() == 0


def test_a_converter_among_the_frames_is_not_run(system, start_alone, folder):
    picture = framefile.Picture(colour=framefile.noise(120, 90, seed=4))
    (folder / "foreign.png").write_bytes(pictures.png(as_pixels(picture)))
    framefile.write(folder / "own.iff", framefile.Picture(colour=framefile.noise(120, 90, seed=5)))
    name = f"pixconv{system.binary.suffix}"
    shutil.copy2(system.binary.with_name(name), folder / name)
    program = start_alone("foreign.png", "own.iff")
    program.find(framefile.on_screen(framefile.Picture(colour=framefile.noise(120, 90, seed=5))))
    told = lines_with(program.stderr(), "foreign.png")
    assert len(told) == 1 and "pixconv" in told[0], program.stderr()
    assert program.close() == 0


def test_a_range_whose_converter_is_missing_is_named(start_alone, folder):
    write_frames(folder, FRAMES)
    program = start_alone(*range_of(FRAMES, "shot.@@.png"))
    assert program.wait_for_exit() == 0
    assert "pixconv" in program.stderr() and "shot." in program.stderr()
