"""Saving with the write key: names, pixels, types, and what happens when a file cannot be written."""

import io

import numpy as np
import pytest
from PIL import Image

import framefile
import framereader
import pictures
from desktop import wait_until
from framefile import Animation, Picture, noise
from pictures import Pixels
from program import Player
from test_painting import stroke
from scene import Scene

WIDTH, HEIGHT = 101, 75


def masked(seed=1, width=WIDTH, height=HEIGHT):
    return Picture(
        colour=noise(width, height, seed), mask=noise(width, height, seed + 1, channels=1)
    )


def saved(path):
    """What the file holds, with the first row below as in the picture that was written."""
    frame = framereader.read(path.read_bytes())
    return Picture(
        colour=frame.colour[::-1], mask=None if frame.mask is None else frame.mask[::-1]
    )


def same(one, other):
    return np.array_equal(framefile.stored_pixels(one), framefile.stored_pixels(other))


def done(program, count=1):
    """Waits until so many files were written, or were not."""
    ends = ("done", "not written:")
    return wait_until(
        lambda: sum(any(end in line for end in ends) for line in lines(program)) >= count,
        what=lambda: f"the end of the writing {program.report()}",
    )


def lines(program):
    return program.stderr().splitlines()


def show(start, folder, picture, name="one", *options):
    framefile.write(folder / name, picture)
    program = start(*options, name)
    program.find(framefile.on_screen(picture))
    return program


def unfinished(folder):
    return [path.name for path in folder.rglob("*vistel-unfinished*")]


# --- names and pixels -----------------------------------------------------------------------------


def test_the_frame_on_screen_is_written_under_a_name_of_its_own(start, folder):
    picture = masked()
    program = show(start, folder, picture)
    before = set(folder.iterdir())
    program.key("w")
    done(program)
    (path,) = set(folder.iterdir()) - before
    assert path.name == "vistel.out.1"
    assert same(saved(path), picture)
    assert [line for line in lines(program) if line][-2:] == [f"Writing {path.name} ...", "done"]
    assert b"ANNO" in path.read_bytes() and not unfinished(folder)
    assert program.close() == 0


def test_a_picture_without_a_mask_is_written_without_one(start, folder):
    picture = Picture(colour=noise(WIDTH, HEIGHT))
    program = show(start, folder, picture)
    program.key("w")
    done(program)
    frame = framereader.read((folder / "vistel.out.1").read_bytes())
    assert frame.mask is None and frame.z is None
    assert np.array_equal(frame.colour[::-1], picture.colour)


def test_a_written_frame_opens_again(start, folder):
    picture = masked()
    first = show(start, folder, picture)
    first.key("w")
    done(first)
    assert first.close() == 0
    start("vistel.out.1").find(framefile.on_screen(picture))


@pytest.mark.parametrize("options, frame, name", [
    ((), "shot.{}", "vistel.out.3"), (("-p",), "shot.{:04}", "vistel.out.0003"),
])
def test_a_frame_of_an_animation_has_its_number(start, folder, options, frame, name):
    frames = Animation(1, 4).write(folder, frame)
    player = Player(start(*options, "shot."), frames)
    player.pause()
    player.rewind()
    player.step("Right", 2)
    player.step("Right", 3)
    player.program.key("w")
    done(player.program)
    assert sorted(path.name for path in folder.iterdir() if "out" in path.name) == [name]
    assert same(saved(folder / name), frames.picture(3))


def test_the_mask_is_written_inverted_when_it_is_seen_so(start, folder):
    picture = masked()
    program = show(start, folder, picture)
    program.key("Shift_L+x", "x", "w")  # the colours' negation is not written
    done(program)
    expected = Picture(colour=picture.colour, mask=255 - picture.mask)
    assert same(saved(folder / "vistel.out.1"), expected)


def test_a_written_file_replaces_an_older_one_whole(start, folder):
    (folder / "vistel.out.1").write_bytes(bytes(1_000_000))
    picture = masked()
    program = show(start, folder, picture)
    program.key("w")
    done(program)
    assert same(saved(folder / "vistel.out.1"), picture)


# --- every frame of a range -----------------------------------------------------------------------


def numbers_written(folder):
    return sorted(int(path.suffix[1:]) for path in folder.glob("vistel.out.*"))


def test_shift_writes_every_frame_of_the_range_and_stops(start, folder):
    frames = Animation(1, 9).write(folder)
    player = Player(start("-r", "300", "shot."), frames)
    player.pause()
    player.rewind()
    player.step("Right", 2)
    player.program.key("Shift_L+comma")  # the range starts here
    player.step("Right", 3)
    player.step("Right", 4)
    player.step("Right", 5)
    player.program.key("Shift_L+period", "Shift_L+w")
    wait_until(lambda: "frames written" in player.program.stderr(), what="the end of the range")
    assert numbers_written(folder) == [2, 3, 4, 5]
    for number in (2, 5):
        assert same(saved(folder / f"vistel.out.{number}"), frames.picture(number))
    assert lines(player.program)[-1] == "4 of 4 frames written"
    assert player.settled() == 5  # it plays no more
    assert player.program.close() == 0


def test_a_range_is_written_in_its_steps(start, folder):
    frames = Animation(1, 8).write(folder)
    player = Player(start("shot."), frames)
    player.pause()
    player.rewind()
    player.program.key("3", "Shift_L+w")
    wait_until(lambda: "frames written" in player.program.stderr(), what="the end of the range")
    assert numbers_written(folder) == [1, 4, 7]


def test_a_frame_that_is_gone_is_named_and_the_others_are_written(start, folder):
    frames = Animation(1, 5).write(folder)
    player = Player(start("-k", "0", "shot."), frames)
    player.pause()
    player.rewind()
    (folder / "shot.3").unlink()
    player.program.key("Shift_L+w")
    wait_until(lambda: "frames written" in player.program.stderr(), what="the end of the range")
    assert numbers_written(folder) == [1, 2, 4, 5]
    assert lines(player.program)[-1] == "4 of 5 frames written; not written: 3"


def test_a_place_that_takes_no_file_ends_a_range_at_its_first_frame(start, folder):
    frames = Animation(1, 5).write(folder)
    player = Player(start("shot."), frames)
    player.pause()
    player.rewind()
    (folder / "vistel.out.2").mkdir()
    player.program.key("Shift_L+w")
    wait_until(lambda: "frames written" in player.program.stderr(), what="the end of the range")
    assert lines(player.program)[-1] == "1 of 5 frames written; not written: 2"
    assert any("vistel.out.2: not written:" in line for line in lines(player.program))
    assert (folder / "vistel.out.2").is_dir() and not (folder / "vistel.out.3").exists()
    player.program.key("w")  # the viewer goes on
    done(player.program, 3)
    assert player.program.close() == 0


# --- over the source ------------------------------------------------------------------------------


def test_in_overwrite_mode_the_source_is_replaced_with_what_was_painted(start, folder):
    picture = masked()
    (folder / "sub").mkdir()
    framefile.write(folder / "sub" / "one", picture)
    program = start("sub/one")
    scene = Scene(program, framefile.stored_pixels(picture))
    stroke(scene, [(10, 20), (30, 20)])
    program.key("F11", "w")
    done(program)
    painted = Picture(colour=picture.colour.copy(), mask=picture.mask)
    painted.colour[20, 10:31] = 255
    assert same(saved(folder / "sub" / "one"), painted)
    assert sorted(path.name for path in folder.rglob("*")) == ["one", "sub"]


def test_frames_keep_their_own_names_when_they_are_overwritten(start, folder):
    frames = Animation(1, 3).write(folder, "take.{:03}.iff")
    player = Player(start("-n", 1, 3, 1, "take.@@@.iff"), frames)
    player.pause()
    before = {path.name: path.read_bytes() for path in folder.iterdir()}
    player.program.key("F11", "Shift_L+w")
    wait_until(lambda: "frames written" in player.program.stderr(), what="the end of the range")
    after = {path.name: path.read_bytes() for path in folder.iterdir()}
    assert before.keys() == after.keys()
    assert all(before[name] != after[name] for name in before)  # they say who wrote them
    for number in frames.numbers:
        assert same(saved(folder / f"take.{number:03}.iff"), frames.picture(number))


def test_a_foreign_source_keeps_its_type(start, folder):
    picture = masked(5)
    pixels = Pixels(np.dstack([picture.colour, picture.mask])[::-1])
    (folder / "shot.png").write_bytes(pictures.png(pixels))
    before = (folder / "shot.png").read_bytes()
    program = start("shot.png")
    program.find(framefile.on_screen(picture))
    program.key("Shift_L+x", "F11", "w")  # the mask changes: it is not written as it was read
    done(program)
    data = (folder / "shot.png").read_bytes()
    assert data[:8] == before[:8] and data != before
    shown = np.asarray(Image.open(io.BytesIO(data)))[::-1]
    assert np.array_equal(shown, np.dstack([picture.colour, 255 - picture.mask]))
    assert program.close() == 0


def test_a_source_that_the_converter_cannot_write_is_not_overwritten(start, folder):
    Image.new("RGB", (WIDTH, HEIGHT), (9, 90, 200)).save(folder / "shot.gif")
    data = (folder / "shot.gif").read_bytes()
    program = start("shot.gif")
    program.find(np.full((HEIGHT, WIDTH, 3), (9, 90, 200), np.uint8))
    program.key("F11", "w")
    done(program)
    assert (folder / "shot.gif").read_bytes() == data
    assert any("shot.gif: not written:" in line and "GIF" in line for line in lines(program))
    assert list(folder.iterdir()) == [folder / "shot.gif"]


def test_a_command_is_no_file_that_could_be_overwritten(system, start, folder):
    picture = masked()
    framefile.write(folder / "one", picture)
    program = start(f"pipe:{system.emit_command()} one")
    program.find(framefile.on_screen(picture))
    program.key("F11", "w")
    done(program)
    assert "not written: the source is no file" in program.stderr()
    assert [path.name for path in folder.iterdir()] == ["one"]


def test_a_frame_that_was_shrunk_to_fit_is_written_at_its_full_size(start, folder):
    picture = masked(3, 1700, 1300)
    framefile.write(folder / "large", picture)
    program = start("large")
    shown = framefile.shrunk(framefile.stored_pixels(picture), 2)[::-1, :, :3]
    program.find(np.ascontiguousarray(shown))
    program.key("w")
    done(program)
    assert same(saved(folder / "vistel.out.1"), picture)
