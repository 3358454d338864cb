"""Frames that are read again: files that change, vanish or are half written, and more frames than
memory may hold."""

import pytest

import rules
import view
from desktop import wait_until
from framefile import Animation, Picture, Style, image_form, noise, on_screen, stored_pixels, write
from program import Player
from scene import Scene


def open_image(start, folder, width=101, height=75):
    picture = Picture(colour=noise(width, height))
    write(folder / "one", picture)
    return Scene(start("one"), stored_pixels(picture))


def assert_fitted(program, picture, largest):
    """The picture comes, in the middle of a window that is made for one of the sides `largest`."""
    height, width = picture.shape
    margins = view.expected_margins(*largest)
    x, y = (largest[i] + 2 * margins[i] - side for i, side in enumerate((width, height)))
    found = []

    def fitted():
        found[:] = [program.find(on_screen(picture)).margins()]
        left, right, top, bottom = found[0]
        return (left, bottom) == (x // 2, y // 2) and (left + right, top + bottom) == (x, y)

    wait_until(fitted, what=lambda: f"margins of {x} and {y} in all, not {found}")


def test_a_file_that_changed_is_read_again(start, folder):
    scene = open_image(start, folder)
    changed = Picture(colour=noise(101, 75, 2), mask=noise(101, 75, 3, channels=1))
    write(folder / "one", changed)
    stored = stored_pixels(changed)
    scene.key("u", stored[..., :3])
    assert scene.margin_is_clear()
    scene.key("m", rules.grey(rules.plane(stored, 0)))
    # The view stays when it is read once more.
    again = Picture(colour=noise(101, 75, 4), mask=noise(101, 75, 5, channels=1))
    write(folder / "one", again)
    scene.key("u", rules.grey(again.mask))


SIZES = [(240, 200), (60, 40), (500, 30), (101, 75)]


def test_the_window_grows_with_a_file_and_does_not_shrink(start, folder):
    program = open_image(start, folder).program
    largest = (101, 75)
    for number, size in enumerate(SIZES):
        picture = Picture(colour=noise(*size, 10 + number))
        write(folder / "one", picture)
        program.key("u")
        largest = tuple(map(max, largest, size))
        assert_fitted(program, picture, largest)


def test_the_window_stays_while_zoomed_in(start, folder):
    program = open_image(start, folder, 200, 160).program
    program.key("KP_Decimal", "KP_Decimal")
    picture = Picture(colour=noise(150, 120, 9))
    write(folder / "one", picture)
    program.key("u")
    program.key("Control_L+KP_5")
    assert_fitted(program, picture, (200, 160))


def test_a_vanished_file_leaves_the_picture_and_a_message(start, folder):
    scene = open_image(start, folder)
    (folder / "one").unlink()
    text = scene.held("u", at_rest=True)
    scene.expect(scene.stored[..., :3])
    scene.key("r", rules.grey(rules.plane(scene.stored, 3)))
    wait_until(lambda: scene.held("u", at_rest=True) == text, what="the same message")
    scene.key("c", scene.stored[..., :3])
    write(folder / "one", Picture(colour=noise(101, 75, 8)))
    scene.key("u", noise(101, 75, 8))


def test_a_file_that_is_no_picture_any_more_leaves_the_old_one(start, folder):
    scene = open_image(start, folder)
    whole = (folder / "one").read_bytes()
    for rest in (b"", whole[:10], whole[:40]):
        (folder / "one").write_bytes(rest)
        scene.held("u", at_rest=True)
        scene.expect(scene.stored[..., :3])
    (folder / "one").write_bytes(whole[:40] + bytes(200))
    scene.program.key("u")
    (folder / "one").write_bytes(whole)
    scene.key("r", rules.grey(rules.plane(scene.stored, 3)))
    scene.key("u", rules.grey(rules.plane(scene.stored, 3)))
    scene.key("c", scene.stored[..., :3])


def test_a_half_written_file_shows_the_tiles_that_are_there(start, folder):
    scene = open_image(start, folder, 128, 128)
    picture = Picture(colour=noise(128, 128, 6))
    whole = image_form(picture, Style(codec="raw"))
    (folder / "one").write_bytes(whole[: len(whole) * 5 // 8])  # two of four tiles, half a third
    scene.program.key("u")
    lower = stored_pixels(picture)[:64, :, :3]
    arrived = lambda: (scene.picture()[::-1][:64] == lower).all()
    wait_until(arrived, what="the lower half of the new picture")
    (folder / "one").write_bytes(whole)
    scene.key("u", stored_pixels(picture)[..., :3])


def test_a_half_written_frame_is_told_once_and_read_again_when_it_has_grown(start, folder):
    pictures = {n: Picture(colour=noise(128, 128, n)) for n in (1, 2, 3)}
    style = Style(codec="raw")
    whole = {n: image_form(picture, style) for n, picture in pictures.items()}
    (folder / "shot.1").write_bytes(whole[1])
    (folder / "shot.2").write_bytes(whole[2][: len(whole[2]) * 5 // 8])
    (folder / "shot.3").write_bytes(whole[3])
    program = start("-r", "8", "shot.")
    program.find_part(on_screen(pictures[1]))
    program.wait_until_loaded()
    program.key("space", "Control_L+Left")
    scene = Scene(program, stored_pixels(pictures[1]))
    lower = stored_pixels(pictures[2])[:64, :, :3]
    arrived = lambda: (scene.picture()[::-1][:64] == lower).all()
    for _ in range(2):
        program.key("Right")
        wait_until(arrived, what="the lower half of the second frame")
        scene.key("Left", stored_pixels(pictures[1])[..., :3])
    told = [line for line in program.stderr().splitlines() if "shot.2" in line]
    assert len(told) == 1, program.stderr()
    (folder / "shot.2").write_bytes(whole[2])
    scene.key("Right", stored_pixels(pictures[2])[..., :3])
    (folder / "shot.3").write_bytes(whole[1])  # it was whole: it stays as it is
    scene.key("Right", stored_pixels(pictures[3])[..., :3])
    assert [line for line in program.stderr().splitlines() if "shot." in line] == told


def test_one_frame_of_an_animation_is_read_again(play, folder):
    player = play(last=3)
    frames = [stored_pixels(player.animation.picture(n))[..., :3] for n in (1, 2, 3)]
    scene = Scene(player.program, stored_pixels(player.animation.picture(1)))
    scene.key("Right", frames[1])
    new = Picture(colour=noise(64, 48, 50))
    write(folder / "shot.2", new)
    write(folder / "shot.3", new)
    scene.key("u", new.colour)
    scene.key("Right", frames[2])
    scene.key("Left", new.colour)
    scene.key("Left", frames[0])
    (folder / "shot.3").unlink()
    scene.key("Left", frames[2])
    scene.held("u", at_rest=True)
    scene.expect(frames[2])
    scene.key("Right", frames[0])


# --- more frames than memory holds ----------------------------------------------------------------

LARGE = {"width": 320, "height": 240}  # three frames fit in 1 MB
SMALL_MEMORY = {"VISTEL_MEMORY": "1"}


@pytest.fixture
def play_from_disk(start, folder):
    def run(*options, environment=SMALL_MEMORY, last=8):
        animation = Animation(last=last, **LARGE).write(folder)
        program = start(*options, "shot.", environment=environment)
        return Player(program, animation)

    return run


def follows(seen, numbers):
    places = [numbers.index(n) for n in seen]
    return all((b - a) % len(numbers) == 1 for a, b in zip(places, places[1:]))


def test_frames_beyond_the_limit_are_read_when_they_are_shown(play_from_disk, folder):
    player = play_from_disk("-r", "10")
    told = lambda: "VISTEL_MEMORY" in player.program.stderr()
    wait_until(told, what="a message that memory is used up")
    player.record_in_order(18, lambda seen: follows(seen, player.animation.numbers))
    player.pause()
    player.step("Control_L+Left", 1)
    for number in (2, 3, 4, 5, 6, 7, 8, 1, 2):
        player.step("Right", number)
    # A frame in memory stays as it is, one on disk follows its file.
    new = Picture(colour=noise(320, 240, 60))
    write(folder / "shot.3", new)
    write(folder / "shot.6", new)
    for number in (3, 4, 5):
        player.step("Right", number)
    player.program.key("Right")
    player.program.find(on_screen(new))
    player.program.key("Right")
    player.wait_for(7)
    player.program.key("Left")
    player.program.find(on_screen(new))


def test_a_missing_file_does_not_stop_frames_played_from_disk(play_from_disk, folder):
    player = play_from_disk("-r", "12", last=7)
    (folder / "shot.6").unlink()
    wait_until(lambda: player.frame() == 1, what="the first frame")
    player.wait_for(7)  # frames that were read ahead are through
    present = [1, 2, 3, 4, 5, 7]
    in_order = lambda seen: set(seen) <= set(present) and follows(seen, present)
    player.record_in_order(14, in_order)
    player.animation.write(folder)
    wait_until(lambda: player.frame() == 6, what="the frame that came back")
    assert player.program.close() == 0


def test_without_memory_every_frame_is_read(play_from_disk, folder):
    player = play_from_disk("-r", "10", "-k", "0", environment=None, last=4)
    player.record_in_order(9, lambda seen: follows(seen, player.animation.numbers))
    player.pause()
    player.step("Control_L+Left", 1)
    new = Picture(colour=noise(320, 240, 61))
    write(folder / "shot.2", new)
    player.program.key("Right")
    player.program.find(on_screen(new))


@pytest.mark.parametrize("variable", ["VISTEL_MEMORY", "VISTEL_THREADS"])
def test_a_variable_that_is_no_number_is_told_of_once_and_does_not_count(play_from_disk, variable):
    player = play_from_disk("-r", "10", environment={variable: "4x"}, last=4)
    player.record_in_order(9, lambda seen: follows(seen, player.animation.numbers))
    assert player.program.close() == 0
    lines = [line for line in player.program.stderr().splitlines() if variable in line]
    assert len(lines) == 1, player.program.stderr()
    assert lines[0].startswith(f'{variable}: "4x" is no number of '), lines
    assert lines[0].endswith(" is used"), lines


def test_the_status_line_tells_memory_from_disk(play_from_disk):
    player = play_from_disk("-r", "10")
    player.pause()
    player.step("Control_L+Left", 1)

    def line_after(*strokes):
        player.program.key(*strokes)
        player.wait_for(1)
        wait_until(player.program.steady, what="the status line")
        return player.status_line().tobytes()

    # The rate in the line changes every 20 passes: then it is tried again.
    for _ in range(3):
        memory, disk = line_after("Right", "Left"), line_after("u")
        if memory == line_after("Right", "Left"):
            break
    else:
        pytest.fail("the same frame never had the same status line")
    assert memory != disk


# --- frames that are still being written ----------------------------------------------------------


@pytest.fixture
def half_written(start, folder):
    """Loading waits for the fourth of six frames; returns the program, the animation, and what
    completes the frame."""

    def run():
        animation = Animation(last=6, width=128, height=96).write(folder)
        whole = (folder / "shot.4").read_bytes()
        (folder / "shot.4").write_bytes(whole[: len(whole) // 2])
        program = start("-w", "-r", "8", "shot.")
        program.find(on_screen(animation.picture(1)))
        wait_until(lambda: "loading" in (program.title() or ""), what="progress in the title")
        return program, animation, lambda: (folder / "shot.4").write_bytes(whole)

    return run


def test_loading_waits_for_a_frame_that_is_still_written(half_written):
    program, animation, complete = half_written()
    with program.desktop.covering(400, 300, 400, 400):
        assert program.has_window()
    program.find(on_screen(animation.picture(1)))  # it is painted while it waits
    assert "loading" in program.title()
    complete()
    player = Player(program, animation)
    player.record_in_order(8, lambda seen: follows(seen, animation.numbers))
    assert program.close() == 0


def test_escape_ends_loading_and_the_rest_is_read_when_it_is_shown(half_written):
    program, animation, complete = half_written()
    program.key("Escape")
    player = Player(program, animation)
    player.wait_for(3)
    player.pause()
    complete()
    player.step("Control_L+Left", 1)
    for number in (2, 3, 4, 5, 6, 1):
        player.step("Right", number)


def test_the_window_closes_while_loading_waits(half_written):
    program, _, _ = half_written()
    assert program.close() == 0
