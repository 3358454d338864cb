"""Picking points with the middle button: where they are, what is written of them, what is seen of
it; luminance curves; the report of the display's controls. All texts to the character."""

import fcntl
import os

import numpy as np
import pytest

from desktop import unpack, wait_until
from framefile import Animation, Picture, noise, on_screen, shrunk, stored_pixels, write
from program import Player
from rules import Layout
from view import magnified

WIDTH, HEIGHT = 64, 48  # of the frames of an Animation


# --- what must be written -------------------------------------------------------------------------


def lines(picks):
    return "".join(f"{frame} {x:.2f} {y:.2f}\n" for frame, (x, y) in sorted(picks.items()))


def curve(name, picks, axis):
    values = [f"{point[axis]:.2f}@{frame}" for frame, point in sorted(picks.items())]
    rows = [", ".join(values[i : i + 5]) for i in range(0, len(values), 5)]
    return f"{name} = Linear(" + (", \n" + 14 * " ").join(rows) + ");\n"


def curves(picks):
    return curve("PanX", picks, 0) + curve("PanY", picks, 1)


def luminance(picture, column, row):
    """Of a file's pixel, first row below."""
    red, green, blue = map(int, stored_pixels(picture)[row, column, :3])
    return np.float32(77 * blue + 151 * green + 28 * red) * np.float32(1.5318628e-5)


def luminance_curve(column, row, values):
    """`values`: number to luminance, each number of the range."""
    text, last = f"Lum{column}_{row} = Linear(\n    ", max(values)
    for frame, value in sorted(values.items()):
        end = ")\n" if frame == last else ",\n    " if frame % 6 == 0 else ", "
        text += f"{value:.4f}@{frame}{end}"
    return text


# --- the hand -------------------------------------------------------------------------------------


class Tracker:
    """The mouse over the picture of a Player; places are window pixels from the picture's lower left
    corner."""

    def __init__(self, player):
        self.player, self.program, self.desktop = player, player.program, player.desktop

    def screen(self, x, y):
        return self.player.x + x, self.player.y + HEIGHT - 1 - y

    def click(self, x, y):
        self.desktop.move_pointer(*self.screen(x, y))
        self.desktop.button(2, True)
        self.desktop.button(2, False)
        self.desktop.park_pointer()

    def pick(self, frame, x, y):
        """A click, and what is told of it."""
        told = self.program.stderr().count(f"Frame {frame}: ")
        self.click(x, y)
        more = lambda: self.program.stderr().count(f"Frame {frame}: ") > told
        wait_until(more, what=lambda: f"a pick in frame {frame} {self.program.report()}")

    def told(self, text, times=1):
        seen = lambda: self.program.stderr().count(text) >= times
        wait_until(seen, what=lambda: f"{text!r} {self.program.report()}")

    def wrote(self, text):
        """Waits until exactly this is on standard output, while the program runs."""
        same = lambda: self.program.stdout() == text
        wait_until(same, what=lambda: f"{text!r} instead of {self.program.stdout()!r}")

    def titled(self, end):
        wait_until(lambda: (self.program.title() or "").endswith(end), what=lambda: f"{end!r} {self.program.report()}")

    def around(self, x, y, reach=14):
        """The pixels round a place."""
        column, row = self.screen(x, y)
        packed = self.desktop.packed()
        return unpack(packed[row - reach : row + reach + 1, column - reach : column + reach + 1])

    def marked(self, x, y):
        """Whether the white cross is there, and nowhere a hand's breadth away."""
        white = (self.around(x, y) == 255).all(axis=-1)
        wanted = np.zeros_like(white)
        for away in range(4, 12):
            for across, up in ((away, 0), (-away, 0), (0, away), (0, -away)):
                wanted[14 - up, 14 + across] = True
        return np.array_equal(white, wanted)


@pytest.fixture
def track(play):
    def run(*options, **shape):
        tracker = Tracker(play(*options, **shape))
        tracker.program.key("F5")
        tracker.told("Tracking: on\n")
        return tracker

    return run


# --- tracking -------------------------------------------------------------------------------------


def test_points_are_written_as_lines_and_while_playing_as_curves(track):
    tracker = track(last=7)
    program, player = tracker.program, tracker.player
    picks = {}
    tracker.titled(", 0 of 7 frames tracked, next 1")
    for frame in range(1, 8):
        player.wait_for(frame)
        if frame != 4:
            picks[frame] = 5 + frame, 3 * frame  # the mark leaves the half with the colour free
            tracker.pick(frame, 1, 1)  # by mistake
            tracker.pick(frame, *picks[frame])
        if frame < 7:
            program.key("Right")
    tracker.titled(", 6 of 7 frames tracked, next 4")
    program.key("F6")
    tracker.told("Tracked points:\n")
    tracker.wrote(lines(picks))
    program.key("period")
    player.playing()
    program.key("F6")
    tracker.wrote(lines(picks) + curves(picks))
    program.key("F5")
    tracker.told("Tracking while playing: off\n")
    player.pause()
    program.key("F5")  # keeps them
    tracker.told("Tracking: on\n", 2)
    program.key("F6")
    tracker.wrote(lines(picks) + curves(picks) + lines(picks))
    assert program.close() == 0


def test_without_a_point_only_the_message_comes_or_empty_curves(play):
    tracker = Tracker(play(last=3))
    tracker.program.key("F6")  # was never on: nothing
    tracker.program.key("F5", "F6")
    tracker.told("Tracked points:\n")
    tracker.program.key("period")
    tracker.player.playing()
    tracker.program.key("F6")
    tracker.wrote(curves({}))
    assert tracker.program.stderr().count("Tracked points:") == 2


def test_points_are_image_pixels_at_every_zoom_and_pan(track):
    tracker = track(last=3)
    layout = Layout(WIDTH, HEIGHT)
    picks, frame = {}, 1
    for strokes, zoom, move in (
        (["KP_Decimal", "KP_Decimal"], 2, (0, 0)),
        (["KP_Decimal", "Shift_L+KP_6", "Shift_L+KP_8"], 1, (-5, -5)),
        (["KP_Decimal", "KP_Decimal", "KP_Decimal", "KP_1"], 3, (1, 1)),
    ):
        tracker.program.key(*strokes)
        for _ in range(zoom):
            layout.zoom_by(1)
        layout.move(*move)
        tracker.titled(f" x{layout.zoom}, {len(picks)} of 3 frames tracked, next {frame}")
        column, row = layout.corner()
        window = 17 + frame, 8 + 5 * frame
        picks[frame] = tuple(np.float32(c + w / layout.zoom) for c, w in zip((column, row), window))
        tracker.pick(frame, *window)
        wait_until(lambda: tracker.marked(*window), what="the mark")
        tracker.program.key("Right")
        frame += 1
    tracker.program.key("F6")
    tracker.wrote(lines(picks))


def test_the_place_of_a_point_is_told_from_the_lower_left_corner(play):
    tracker = Tracker(play(last=3))
    margin_x, margin_y = (320 - WIDTH) // 2, (240 - HEIGHT) // 2
    for x, y in ((0, 0), (63, 47), (12, 34), (-7, -9)):
        tracker.click(x, y)
        tracker.told(f"Frame 1: image {x}, {y}; window {x + margin_x}, {y + margin_y}\n")
    assert tracker.program.stdout() == ""


def test_a_mark_shows_the_point_of_the_frame_while_tracking_is_on(track):
    tracker = track(last=3)
    player = tracker.player
    tracker.pick(1, 47, 24)
    wait_until(lambda: tracker.marked(47, 24), what="the mark")
    tracker.pick(1, 49, 20)
    wait_until(lambda: tracker.marked(49, 20), what="the mark at its new place")
    player.step("Right", 2)
    assert not (tracker.around(49, 20) == 255).all(axis=-1).any()
    tracker.program.key("Left")
    wait_until(lambda: tracker.marked(49, 20), what="the mark again")
    tracker.program.key("F5")
    wait_until(lambda: tracker.program.shows(on_screen(player.animation.picture(1))), what="the plain picture")


def test_the_cursor_is_a_cross_hair_while_tracking_is_on(start, folder):
    for name in ("first", "second"):
        Animation(1, 3).write(folder, name + ".{}")
    program = start("first.", "second.")
    tracker = Tracker(Player(program, Animation(1, 3)))
    tracker.player.pause(), tracker.player.rewind()
    tracker.desktop.move_pointer(*tracker.screen(48, 24))
    program.wait_for_rest()
    arrow = tracker.desktop.cursor()
    program.key("F5")
    wait_until(lambda: tracker.desktop.cursor() != arrow, what="the cross-hair")
    cross = tracker.desktop.cursor()
    assert min(cross[0]) > 2 * max(arrow[0]), f"its hot spot is at {cross[0]}, not in its middle"
    program.key("F5")
    wait_until(lambda: tracker.desktop.cursor() == arrow, what="the arrow")
    program.key("F5")
    wait_until(lambda: tracker.desktop.cursor() == cross, what="the cross-hair again")
    program.system.close_window(program.window())
    wait_until(lambda: "second" in (program.title() or ""), what="the second sequence")
    tracker = Tracker(Player(program, Animation(1, 3)))
    tracker.desktop.move_pointer(*tracker.screen(47, 24))
    wait_until(lambda: tracker.desktop.cursor() == cross, what="the cross-hair of the new window")


def test_frames_are_counted_by_the_step_of_the_range(track):
    tracker = track(first=10, last=22, step=4)
    tracker.titled(", 0 of 4 frames tracked, next 10")
    for frame in (10, 14, 18):
        tracker.player.wait_for(frame)
        tracker.pick(frame, frame, 5)
        tracker.program.key("Right")
    tracker.titled(", 3 of 4 frames tracked, next 22")
    tracker.pick(22, 22, 5)
    tracker.titled(", all 4 frames tracked")
    tracker.program.key("F6")
    tracker.wrote(lines({frame: (frame, 5) for frame in (10, 14, 18, 22)}))


def test_points_of_a_shrunk_picture_count_its_own_pixels(start, folder):
    animation = Animation(1, 3, width=128, height=96).write(folder)
    program = start("-s", "2", "-m", "3", "shot.")
    seen = magnified(shrunk(animation.landmark()[::-1], 2)[::-1], 3)  # rows from below
    x, y = program.find_part(np.ascontiguousarray(seen))
    program.wait_until_loaded()
    program.key("space", "Control_L+Left", "F5")
    at_start = lambda: (program.title() or "").endswith(" 1/2 x3, 0 of 3 frames tracked, next 1")
    wait_until(at_start, what=lambda: f"frame 1 {program.report()}")
    program.desktop.move_pointer(x + 20, y + 3 * HEIGHT - 1 - 31)
    program.desktop.button(2, True), program.desktop.button(2, False)
    program.key("F6", "F8")
    points = lines({1: (20 / 3, 31 / 3)})
    wait_until(lambda: program.stdout() == points, what=lambda: f"the point {program.report()}")
    program.desktop.button(2, True), program.desktop.button(2, False)
    values = {n: luminance(animation.picture(n), 2 * (20 // 3), 2 * (31 // 3)) for n in (1, 2, 3)}
    both = points + luminance_curve(20 // 3, 31 // 3, values)
    wait_until(lambda: program.stdout() == both, what=lambda: f"{both} {program.report()}")


def test_another_sequence_takes_no_more_points_than_the_first(start, folder):
    first = Animation(1, 3).write(folder, "first.{}")
    second = Animation(5, 10).write(folder, "second.{}")
    program = start("first.", "second.")
    tracker = Tracker(Player(program, first))
    tracker.player.pause(), tracker.player.rewind()
    program.key("F5")
    tracker.pick(1, 12, 20)
    program.system.close_window(program.window())
    wait_until(lambda: "second" in (program.title() or ""), what=lambda: f"the second {program.report()}")
    tracker = Tracker(Player(program, second))
    player = tracker.player
    player.pause(), player.rewind()
    tracker.titled("1 of 6 frames tracked, next 6 (file 2 of 2)")
    for frame in range(5, 11):
        player.wait_for(frame)
        tracker.pick(frame, 5 + frame, 10)
        program.key("Right")
    for frame in (8, 9, 10):
        tracker.told(f"Frame {frame}: the point is not kept; tracking began with 3 frames.\n")
    program.key("F6")
    tracker.wrote(lines({frame: (5 + frame, 10) for frame in (5, 6, 7)}))
    assert program.close() == 0


# --- luminance curves -----------------------------------------------------------------------------


def numbers_of(animation):
    return range(animation.numbers[0], animation.numbers[-1] + 1)


def expected_curve(animation, column, row, absent=()):
    there = [n for n in animation.numbers if n not in absent]
    value = lambda n: luminance(animation.picture(n), column, row) if n in there else 0
    return luminance_curve(column, row, {n: value(n) for n in numbers_of(animation)})


@pytest.mark.parametrize("options", [[], ["-k", "0"]], ids=["in memory", "read from disk"])
def test_a_luminance_curve_has_every_frame_of_the_range(play, options):
    tracker = Tracker(play(*options, first=3, last=14))
    animation = tracker.player.animation
    tracker.program.key("F5", "F8")
    tracker.told("Luminance curve: on\n")
    wanted = ""
    for x, y in ((10, 7), (50, 40), (63, 0)):
        tracker.click(x, y)
        wanted += expected_curve(animation, x, y)
        tracker.wrote(wanted)
    tracker.titled("0 of 12 frames tracked, next 3")  # no point was kept
    tracker.program.key("F8")
    tracker.told("Luminance curve: off\n")
    assert "Frame" not in tracker.program.stderr()
    tracker.player.step("Right", 4)


def test_frames_beyond_the_memory_limit_have_their_luminance(start, folder):
    animation = Animation(1, 4, width=640, height=480).write(folder)
    program = start("shot.", environment={"VISTEL_MEMORY": "2"})
    player = Player(program, animation)
    player.pause(), player.rewind()
    program.key("F8")
    program.wait_for_rest()
    program.desktop.move_pointer(player.x + 500, player.y + 480 - 1 - 100)
    program.desktop.button(2, True), program.desktop.button(2, False)
    wait_until(
        lambda: program.stdout() == expected_curve(animation, 500, 100),
        what=lambda: f"the curve {program.report()}",
    )


def test_the_luminance_is_that_of_the_pixel_under_the_cursor_at_every_zoom(play):
    tracker = Tracker(play(last=7))
    tracker.program.key("F8", "KP_Decimal", "KP_Decimal")
    layout = Layout(WIDTH, HEIGHT)
    layout.zoom_by(1), layout.zoom_by(1)
    tracker.titled(" x3")
    column, row = layout.corner()
    tracker.click(20, 13)
    tracker.wrote(expected_curve(tracker.player.animation, column + 20 // 3, row + 13 // 3))


def test_frames_that_are_missing_or_left_out_count_as_zero(start, folder):
    animation = Animation(1, 9, step=2).write(folder)
    (folder / "shot.5").unlink()
    program = start("-n", "1", "9", "2", "shot")
    tracker = Tracker(Player(program, animation))
    tracker.player.pause(), tracker.player.rewind()
    program.key("F8")
    tracker.click(10, 7)
    tracker.wrote(expected_curve(animation, 10, 7, absent=[5]))
    tracker.click(-20, 7)
    column = luminance_curve(-20, 7, dict.fromkeys(range(1, 10), 0))
    tracker.wrote(expected_curve(animation, 10, 7, absent=[5]) + column)


@pytest.mark.parametrize("opened", ["a file", "standard input", "kept nowhere"])
def test_one_picture_is_not_tracked_but_has_a_luminance(start, folder, opened):
    picture = Picture(colour=noise(320, 200, seed=4))
    path = write(folder / "one", picture)
    if opened == "standard input":
        program = start("-", stdin=open(path, "rb"))
    else:
        program = start(*(["-k", "0"] if opened == "kept nowhere" else []), "one")
    x, y = program.find_part(on_screen(picture)[40:160])
    program.key("F5", "F6", "F8")
    program.desktop.move_pointer(x + 33, y + 50)
    program.desktop.button(2, True), program.desktop.button(2, False)
    row = 200 - 1 - 40 - 50
    value = f"{luminance(picture, 33, row):.4f}"
    wait_until(lambda: program.stdout(), what=lambda: f"a curve {program.report()}")
    text, _, frame = program.stdout().partition("@")
    assert text == f"Lum33_{row} = Linear(\n    {value}"
    assert frame in ("0)\n", "1)\n")
    assert program.stderr() == "Luminance curve: on\n"


# --- pipes ----------------------------------------------------------------------------------------


def with_pipe(start, folder):
    Animation(1, 4).write(folder)
    reader, writer = os.pipe()
    program = start("shot.", stdout=writer)
    tracker = Tracker(Player(program, Animation(1, 4)))
    tracker.player.pause(), tracker.player.rewind()
    program.key("F8")
    tracker.told("Luminance curve: on\n")
    return tracker, reader, writer


def test_a_reader_of_the_curves_gets_them_at_once(start, folder):
    tracker, reader, writer = with_pipe(start, folder)
    tracker.click(10, 7)
    wanted = expected_curve(Animation(1, 4), 10, 7).encode()
    got = b""
    while len(got) < len(wanted):
        got += os.read(reader, 4096).replace(b"\r\n", b"\n")
    assert got == wanted
    os.close(reader), os.close(writer)


def test_a_reader_that_has_gone_does_not_matter(start, folder):
    tracker, reader, writer = with_pipe(start, folder)
    os.close(writer), os.close(reader)
    tracker.click(10, 7)
    tracker.told("Standard output could not be written.\n")
    tracker.player.step("Right", 2)
    assert tracker.program.close() == 0


def fill(writer):
    flags = fcntl.fcntl(writer, fcntl.F_GETFL)
    fcntl.fcntl(writer, fcntl.F_SETFL, flags | os.O_NONBLOCK)
    filled = 0
    for size in (4096, 1):
        try:
            while True:
                filled += os.write(writer, b"." * size)
        except BlockingIOError:
            pass
    fcntl.fcntl(writer, fcntl.F_SETFL, flags)
    return filled


def test_a_reader_that_does_not_read_is_waited_for_until_escape(start, folder):
    tracker, reader, writer = with_pipe(start, folder)
    fill(writer)
    tracker.click(10, 7)
    tracker.titled("nobody reads standard output (Escape ends the wait)")
    tracker.program.key("Escape")
    tracker.told("Standard output could not be written.\n")
    tracker.titled("VisTel: shot")
    tracker.click(10, 7)  # is lost, too, and waits no more
    tracker.told("Standard output could not be written.\n", 2)
    tracker.player.step("Right", 2)
    assert tracker.program.close() == 0
    os.close(reader), os.close(writer)


def test_a_slow_reader_gets_all(start, folder):
    tracker, reader, writer = with_pipe(start, folder)
    filled = fill(writer)
    tracker.click(10, 7)
    tracker.titled("nobody reads standard output (Escape ends the wait)")
    wanted = expected_curve(Animation(1, 4), 10, 7).encode()
    got = b""
    while len(got) < filled + len(wanted):
        got += os.read(reader, 4096).replace(b"\r\n", b"\n")
    assert got[filled:] == wanted
    tracker.titled("VisTel: shot")
    tracker.player.step("Right", 2)
    os.close(reader), os.close(writer)


# --- report ---------------------------------------------------------------------------------------


def report(**changed):
    shown = dict(
        luminance="1, 1, 1", gamma="1, 1, 1", saturation="1, 1, 1", offset="0, 0, 0", slope="0.1",
        colour="0", negative="off, off, off", exposure="off", film="off", speed="",
    )
    shown.update(changed)
    return (
        "\nDisplay controls: red, green, blue\n"
        "Luminance:   {luminance}\nGamma:       {gamma}\nSaturation:  {saturation}\n"
        "Offset:      {offset}\nRelief slope: {slope}\nRelief colour: {colour} %\n"
        "Negative:    {negative}\nExposure curve: {exposure}\nLogarithmic film data: {film}\n{speed}"
    ).format(**shown)


def test_the_report_has_each_control(start, folder):
    picture = Picture(colour=noise(320, 200, seed=4))
    write(folder / "one", picture)
    program = start("one")
    program.find_part(on_screen(picture)[40:160])

    def tells(*strokes, **changed):
        before = program.stderr()
        program.key(*strokes, "p")
        same = lambda: program.stderr() == before + report(**changed)
        wait_until(same, what=lambda: f"{report(**changed)} instead of {program.stderr()[len(before):]}")

    tells()
    seen = {}
    for strokes, change in (
        (["F1", "equal"], {"luminance": "1.01, 1, 1"}),
        (["F2", "Shift_L+bracketright"], {"gamma": "1, 1.1, 1"}),
        (["F3", "Alt_L+apostrophe"], {"saturation": "1, 1, 1.5"}),
        (["Shift_L+backslash", "F1", "slash"], {"offset": "-1, 0, 5"}),
        (["x"], {"negative": "on, off, off"}),
        (["Shift_L+k"], {"exposure": "on"}),
        (["k"], {"exposure": "off", "film": "on"}),
        (["Alt_L+Down"], {"slope": "-0"}),
        (["Alt_L+KP_Multiply"], {"colour": "3.90625"}),
    ):
        seen.update(change)
        tells(*strokes, **seen)


def extremes(pixels):
    """Masks, blues and greens of stored pixels; the largest mask is tested against the red of the
    next pixel."""
    flat = pixels.reshape(-1, 4).astype(int)
    largest = 0
    for pixel, following in zip(flat, flat[1:]):
        if following[0] > largest:
            largest = pixel[3]
    smallest = [flat[:, byte].min() for byte in (3, 2, 1)]
    return (*smallest, largest, flat[:, 2].max(), flat[:, 1].max())


def test_while_playing_the_report_is_of_the_values_on_display(play):
    player = play(last=3)
    player.program.key("p")
    wait_until(lambda: report(speed="Frames per second: 24\n") in player.program.stderr(), what=lambda: f"the report {player.program.report()}")
    player.program.key("period")
    player.playing()
    player.program.key("p")
    told = lambda: player.program.stderr().count("Mask, blue, green: ")
    wait_until(told, what=lambda: f"the values {player.program.report()}")
    text = "Mask, blue, green: smallest {}, {}, {}, largest {}, {}, {}\n"
    frames = [extremes(stored_pixels(player.animation.picture(n))) for n in (1, 2, 3)]
    assert any(player.program.stderr().endswith(text.format(*values)) for values in frames)
