"""Bad input of every kind: the program names it, goes on with the rest, and ends as usual."""

import os
import struct

import numpy as np
import pytest

import view
from desktop import wait_until
from framefile import (
    COLOUR, DEPTH, Animation, Picture, blocky, chunk, group, image_form, image_header, noise,
    on_screen, wrap, write,
)
from program import Player

GOOD = Picture(colour=noise(120, 90, seed=3))
SHOWN = on_screen(GOOD)
BASE = Picture(colour=blocky(100, 80), z=blocky(100, 80, 4, 1).astype(np.float32))
MEGABYTE = 1 << 20


def show_good_after(start, folder, *bad):
    """Gives the program bad names and then a good one. A bad file may still hold a part of a
    picture, which is shown; see leave_damaged_picture."""
    write(folder / "good", GOOD)
    program = start(*bad, "good")
    wait_until(
        lambda: program.shows(SHOWN) or not program.running() or program.has_window(),
        what=lambda: f"a reaction {program.report()}",
    )
    return program


def leave_damaged_picture(program):
    """Closes the window of a damaged picture, if there is one; then the good one must be shown."""
    if "bad.pic" in program.title():
        program.system.close_window(program.window())
        program.find(SHOWN)


def assert_survives(system, program, *named, memory=400 * MEGABYTE):
    """No crash, exit status 0, not much memory, and each name in a message."""
    assert program.running(), f"ended by itself {program.report()}"
    wait_until(program.has_window, what="a window")
    if system.name == "linux":
        assert program.peak_memory() < memory
    leave_damaged_picture(program)
    assert program.close() == 0, program.report()
    for name in named:
        assert name in program.stderr(), program.report()


def image(body):
    """An image's group with any content."""
    return group("FOR4", "CIMG", body)


def header(width=100, height=80, flags=COLOUR, **more):
    return chunk("TBHD", image_header(width, height, flags, **more))


def tiles(*chunks):
    return group("FOR4", "TBMP", b"".join(chunks))


def tile(x1, y1, x2, y2, data=b"", tag="RGBA"):
    return chunk(tag, struct.pack(">HHHH", x1, y1, x2, y2) + data)


def resized(data, at, size):
    """The size field at an offset set to another value."""
    return data[:at] + struct.pack(">I", size) + data[at + 4 :]


GOOD_BYTES = image_form(BASE)
TILES_AT = GOOD_BYTES.index(b"TBMP") - 4
FIRST_TILE_AT = GOOD_BYTES.index(b"RGBA") + 4
FIRST_DEPTH_AT = GOOD_BYTES.index(b"ZBUF") + 4
PIXELS = bytes(300)

# Nothing of these can be shown.
HOPELESS = {
    "no bytes": b"",
    "one byte": b"F",
    "a group's first word": b"FOR4",
    "half a group header": b"FOR4\0\0",
    "a group without type": b"FOR4\0\0\0\x04",
    "a width of 0": image(header(width=0) + tiles(tile(0, 0, 9, 9, PIXELS))),
    "a height of 0": image(header(height=0) + tiles(tile(0, 0, 9, 9, PIXELS))),
    "a size of 0 by 0": image(header(0, 0)),
    "no header": image(tiles(tile(0, 0, 9, 9, PIXELS))),
    "a short header": image(chunk("TBHD", b"\0\0\0\x10\0\0\0\x10")),
    "a group size with the top bit": resized(GOOD_BYTES, 4, 0x90000000),
    "a header size with the top bit": resized(GOOD_BYTES, 16, 0xFFFFFFFF),
    "a header larger than its group": resized(GOOD_BYTES, 16, 0x7FFFFFFF),
    "a root that is a plain chunk": b"FORX" + struct.pack(">I", 4) + b"CIMG",
    "a reserved group": b"PATH" + struct.pack(">I", 4) + b"CIMG",
    "garbage": bytes(np.random.default_rng(8).integers(0, 256, 5000, dtype=np.uint8)),
    "text": b"This is no picture at all.\n" * 50,
    "a group of garbage": b"FOR4" + struct.pack(">I", 4004) + b"CIMG" + bytes(range(250)) * 16,
}


@pytest.mark.parametrize("data", HOPELESS.values(), ids=HOPELESS.keys())
def test_hopeless_files_are_named_and_the_next_file_is_shown(system, start, folder, data):
    (folder / "bad.pic").write_bytes(data)
    program = show_good_after(start, folder, "bad.pic")
    program.find(SHOWN)
    assert_survives(system, program, "bad.pic")


DAMAGED = {
    "cut in the tile header": GOOD_BYTES[: FIRST_TILE_AT + 6],
    "cut in the first tile": GOOD_BYTES[: FIRST_TILE_AT + 100],
    "cut in the middle": GOOD_BYTES[: len(GOOD_BYTES) // 2],
    "cut before the last byte": GOOD_BYTES[:-1],
    "an image group that ends too late": resized(GOOD_BYTES, 4, len(GOOD_BYTES) + 1000),
    "an image group that ends too early": resized(GOOD_BYTES, 4, len(GOOD_BYTES) // 4 * 2),
    "an image group that ends at an odd place": resized(GOOD_BYTES, 4, len(GOOD_BYTES) - 9),
    "a tile group larger than its image": resized(GOOD_BYTES, TILES_AT, 0x00FFFFF0),
    "a tile that passes its group's end": resized(GOOD_BYTES, FIRST_TILE_AT, 0x7FFFFFF0),
    "a tile without data": image(header() + tiles(tile(0, 0, 63, 63))),
    "a tile shorter than its header": image(header() + tiles(chunk("RGBA", b"\0\0\0"))),
    "a tile with too much data": image(header() + tiles(tile(0, 0, 1, 1, bytes(100)))),
    "a tile with too little data": image(header() + tiles(tile(0, 0, 63, 63, b"\xff\0"))),
    "a tile beyond the right edge": image(header() + tiles(tile(90, 0, 109, 4, PIXELS))),
    "a tile beyond the top": image(header() + tiles(tile(0, 70, 9, 89, PIXELS * 2))),
    "a tile far outside": image(header() + tiles(tile(65000, 65000, 65009, 65009, PIXELS))),
    "a tile of the largest rectangle": image(header() + tiles(tile(0, 0, 65535, 65535, b"\xff\0"))),
    "a tile upside down": image(header() + tiles(tile(9, 9, 0, 0, PIXELS))),
    "a tile turned left": image(header() + tiles(tile(9, 0, 0, 9, PIXELS))),
    "a depth tile outside": image(
        header(flags=COLOUR | DEPTH) + tiles(tile(95, 75, 104, 84, bytes(400), "ZBUF"))
    ),
    "a depth tile that is too long": resized(GOOD_BYTES, FIRST_DEPTH_AT, 0x00FFFFF0),
    "an empty image": image(b""),
    "no tiles": image(header()),
    "two headers of different size": image(
        header(400, 300) + header(10, 10) + tiles(tile(200, 200, 209, 209, PIXELS))
    ),
    "4 thousand million pixels": image(
        header(65535, 65535) + tiles(tile(65000, 65000, 65009, 65009, PIXELS))
    ),
    "a header of the largest numbers": image(
        header(0xFFFFFFFF, 0xFFFFFFFF) + tiles(tile(0, 0, 9, 9, PIXELS))
    ),
    "a wide header of the largest numbers": image(
        header(0xFFFFFFFF, 1) + tiles(tile(0, 0, 9, 0, bytes(30)))
    ),
    "an end marker that never comes": image(
        chunk("XTRA", bytes(64), to_end_marker=True)[:-8] + header()
    ),
    "groups in groups in groups": b"".join(
        b"FOR4" + struct.pack(">I", 12 * (3000 - i) - 8) + b"CIMG" for i in range(3000)
    ),
    "lists in lists in lists": b"".join(
        b"LIST" + struct.pack(">I", 12 * (50000 - i) - 8) + b"CIMG" for i in range(50000)
    ),
}


@pytest.mark.parametrize("data", DAMAGED.values(), ids=DAMAGED.keys())
def test_damaged_files_do_no_harm(system, start, folder, data):
    (folder / "bad.pic").write_bytes(data)
    assert_survives(system, show_good_after(start, folder, "bad.pic"))


# Damage that a reader must notice: what the file says cannot be.
REPORTED = [
    "cut in the tile header", "cut in the first tile", "cut in the middle",
    "cut before the last byte", "an image group that ends too late",
    "a tile group larger than its image", "a tile that passes its group's end",
    "a tile with too much data", "a tile beyond the right edge", "a tile beyond the top",
    "a tile far outside", "a tile upside down", "a tile turned left",
]


@pytest.mark.parametrize("name", REPORTED)
def test_damage_is_reported_with_the_file_name(system, start, folder, name):
    (folder / "bad.pic").write_bytes(DAMAGED[name])
    assert_survives(system, show_good_after(start, folder, "bad.pic"), "bad.pic")


@pytest.mark.parametrize("step", [1, 7])
def test_a_file_cut_anywhere_in_its_beginning(system, start, folder, step):
    names = []
    for length in range(step, FIRST_TILE_AT, step * 8):
        names.append(f"cut{length}.pic")
        (folder / names[-1]).write_bytes(GOOD_BYTES[:length])
    program = show_good_after(start, folder, *names)
    program.find(SHOWN)
    assert_survives(system, program, *names)


# --- names ----------------------------------------------------------------------------------------


def test_a_file_that_is_not_there(system, start, folder):
    program = show_good_after(start, folder, "absent.pic")
    program.find(SHOWN)
    assert_survives(system, program, "absent.pic")


def test_a_folder_instead_of_a_file(system, start, folder):
    (folder / "drawer").mkdir()
    program = show_good_after(start, folder, "drawer")
    program.find(SHOWN)
    assert_survives(system, program, "drawer")


def test_a_link_that_leads_to_itself(system, start, folder):
    (folder / "loop.pic").symlink_to("loop.pic")
    program = show_good_after(start, folder, "loop.pic")
    program.find(SHOWN)
    assert_survives(system, program, "loop.pic")


NAMES = {
    "a stem without files": "nothing.",
    "only a dot": ".",
    "only dots": "...",
    "an empty folder's dot": "drawer/.",
    "a hash without files": "no.#.pic",
    "many hashes": "#" * 300,
    "many at signs": "@" * 300,
    "percent signs": "%s%n%d%99999d",
    "percent signs and a hash": "%s#%n",
    "positional placeholders": "^1s^2s^9d",
    "quotes and ampersands": "a\"b'c&d|e;f",
    "ten thousand digits": "9" * 10000,
    "a stem of ten thousand digits": "9" * 10000 + ".",
    "a very long path": "folder/" * 1000 + "file",
}


@pytest.mark.parametrize("name", NAMES.values(), ids=NAMES.keys())
def test_odd_names_of_files_that_are_not_there(system, start, folder, name):
    (folder / "drawer").mkdir()
    program = show_good_after(start, folder, name)
    program.find(SHOWN)
    assert_survives(system, program)
    assert program.stderr().strip()


@pytest.mark.parametrize("name", NAMES.values(), ids=NAMES.keys())
def test_odd_names_of_animations_that_are_not_there(start, folder, name):
    (folder / "drawer").mkdir()
    program = start("-n", "1", "3", "1", name)
    assert program.wait_for_exit() == 0, program.report()
    assert program.stderr().strip()


def test_an_animation_whose_names_have_no_number(system, start, folder):
    write(folder / "plain", GOOD)
    program = start("-n", "1", "3", "1", "plain")
    assert program.wait_for_exit() == 0
    assert "plain" in program.stderr()


def test_files_whose_numbers_no_number_can_hold(system, start, folder):
    animation = Animation(3, 5).write(folder)
    for tail in ("1" * 200, "-7", "bak", "00000000000000000000000000000000000000004.x"):
        (folder / f"shot.{tail}").write_bytes(b"")
    program = start("shot.")
    reacted = lambda: not program.running() or view.place_of(program.desktop.packed(), landmark)
    landmark = animation.landmark()
    wait_until(reacted, what=lambda: f"a reaction {program.report()}")
    if not program.running():
        assert "shot" in program.stderr()
    if program.running():
        assert_survives(system, program)
    assert program.process.returncode == 0


def test_more_files_than_a_sequence_can_hold(system, start, folder):
    animation = Animation(1, 4200, width=8, height=8)
    for number in animation.numbers:
        path = folder / f"shot.{number}"
        if number <= 20:
            write(path, animation.picture(number % 20 + 1))
        else:
            os.link(folder / f"shot.{number % 20 + 1}", path)
    program = start("shot.")
    program.window()
    assert_survives(system, program, memory=600 * MEGABYTE)


# --- animations -----------------------------------------------------------------------------------


def assert_plays_without(player, missing):
    rest = [n for n in player.animation.numbers if n not in missing]
    player.pause()
    player.rewind()
    seen = [player.frame()]
    for _ in range(2 * len(player.animation.numbers)):
        player.program.key("Right")
        number = player.settled()
        if number != seen[-1]:
            seen.append(number)
    assert set(seen) == set(rest)


def test_a_missing_frame_in_the_middle(system, start, folder):
    animation = Animation(1, 5).write(folder)
    (folder / "shot.3").unlink()
    program = start("shot.")
    player = Player(program, animation)
    assert_plays_without(player, {3})
    assert_survives(system, program, "shot.3")


UNREADABLE = {
    "a group of garbage": HOPELESS["a group of garbage"],
    "garbage": HOPELESS["garbage"],
    "no bytes": b"",
    "a size of 0": HOPELESS["a size of 0 by 0"],
}


@pytest.mark.parametrize("data", UNREADABLE.values(), ids=UNREADABLE.keys())
def test_an_unreadable_frame_in_the_middle(system, start, folder, data):
    animation = Animation(1, 5).write(folder)
    (folder / "shot.3").write_bytes(data)
    program = start("shot.")
    player = Player(program, animation)
    assert_plays_without(player, {3})
    assert_survives(system, program, "shot.3")


def test_a_missing_first_frame(system, start, folder):
    Animation(2, 5).write(folder)
    program = start("-n", "1", "5", "1", "shot")
    assert program.wait_for_exit() == 0
    assert "shot" in program.stderr()


def test_a_range_far_beyond_the_files(system, start, folder):
    animation = Animation(1, 2).write(folder)
    program = start("-n", "1", "300", "1", "shot")
    player = Player(program, animation)
    assert player.pause() in (1, 2)
    assert_survives(system, program, "shot")


def test_a_one_file_animation_with_fewer_images_than_asked_for(system, start, folder):
    animation = Animation(1, 2)
    (folder / "all").write_bytes(wrap("CAT4", [animation.picture(n) for n in (1, 2)]))
    program = start("-N", "-n", "1", "6", "1", "all")
    Player(program, animation)
    assert_survives(system, program)


# --- pipes ----------------------------------------------------------------------------------------


@pytest.mark.parametrize("length", [0, 3, 12, 30, 200, len(GOOD_BYTES) // 2])
def test_standard_input_that_breaks_off(system, start, folder, length):
    (folder / "part").write_bytes(GOOD_BYTES[:length])
    read_end, write_end = os.pipe()
    with os.fdopen(write_end, "wb") as pipe:
        pipe.write(GOOD_BYTES[:length])
    with os.fdopen(read_end, "rb") as source:
        program = start(stdin=source)
    wait_until(lambda: program.has_window() or not program.running(), what="a reaction")
    if program.running():
        program.close()
    assert program.process.returncode == 0, program.report()


def test_the_picture_is_never_sought_behind_the_groups_end(system, start, folder):
    picture = Picture(colour=blocky(100, 80))
    data = image_form(picture) + b"\xff" * 1000
    (folder / "one").write_bytes(data)
    program = start("one")
    program.find(on_screen(picture))
    assert_survives(system, program)
