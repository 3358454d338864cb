"""The entropy analyser: the window that shows how often each byte value occurs in a file's tiles."""

import os
import struct

import numpy as np
import pytest
from Xlib import X

import rules
from desktop import wait_until
from dialogs import Dialog
from framefile import Picture, Style, blocky, chunk, group, image_form, image_header, noise
from pictures import Pixels, png
from test_settings import store  # noqa: F401

WIDTH, HEIGHT = 532, 320
WHITE, RED, GREY = 0xFFFFFF, 0xFF0000, 0x202020
TITLE_ROWS = 29


def chunks(data, tag, kinds=(b"FOR4",)):
    """The bodies of all chunks of a name, at any depth."""
    bodies, at = [], 0
    while at + 8 <= len(data):
        name, size = data[at : at + 4], struct.unpack(">I", data[at + 4 : at + 8])[0]
        body = data[at + 8 : at + 8 + size]
        if name in kinds:
            bodies += chunks(body[4:], tag, kinds)
        elif name == tag:
            bodies.append(body)
        at += 8 + size + -size % 4
    return bodies


def expected(data, uncounted=0):
    """The picture, first row uppermost; so many more bytes are in the total alone."""
    counts, total = [0] * 256, uncounted
    for body in chunks(data, b"RGBA"):
        if len(body) > 8:
            total += len(body) - 8
            read = body[: len(body) - 8] + bytes(8)
            for value in read[8:]:
                counts[value] += 1
    picture = np.full((HEIGHT, WIDTH), GREY, np.uint32)
    for value, count in enumerate(counts):
        if count:
            left, top = 10 + 2 * value, 10 + count * 300 // max(counts)
            picture[10 : top + 1, left : left + 2] = WHITE
    points = [(10 + 2 * i, 10 + (c * 300 // total if total else 0)) for i, c in enumerate(counts)]
    for (x0, y0), (x1, y1) in zip(points, points[1:]):
        steps = max(abs(x1 - x0), abs(y1 - y0))
        for i in range(steps + 1):
            picture[y0 + int((y1 - y0) * i / steps), x0 + (x1 - x0) * i // steps] = RED
    return picture[::-1]


class Analyser:
    """A program that counts, and the middle of its screen."""

    def __init__(self, program, title_rows=TITLE_ROWS):
        self.program, self.desktop = program, program.desktop
        height, width = self.desktop.packed().shape
        self.x, self.y = (width - WIDTH) // 2, (height - title_rows - HEIGHT) // 2

    def area(self):
        return self.desktop.packed()[self.y : self.y + HEIGHT, self.x : self.x + WIDTH]

    def wait_for(self, picture):
        def there():
            assert self.program.running(), self.program.report()
            return (self.area() == picture).all()

        what = lambda: f"{(self.area() != picture).sum()} pixels to be right {self.program.report()}"
        wait_until(there, what=what)

    def titles(self):
        return sorted(title for _, title in self.desktop.windows())

    def window(self, name):
        title = f"VisTel: byte histogram of {name}"
        found = lambda: [window for window, text in self.desktop.windows() if text == title]
        return wait_until(found, what=lambda: f"{title!r} {self.program.report()}")[0]

    def choose(self, window):
        """Without a window manager it takes the keyboard and a click, on one system or the other, and
        both again when another window that has just opened takes the keyboard after all."""

        def chosen():
            window.configure(stack_mode=X.Above)
            self.desktop.focus(window)
            x, y, _, height = self.desktop.rectangle(window)
            self.desktop.move_pointer(x + 5, y + height - 5)
            self.desktop.button(1, True)
            self.desktop.button(1, False)
            self.program.wait_for_rest()
            return self.desktop.has_keyboard(window)

        wait_until(chosen, what=lambda: f"the keyboard {self.program.report()}")

    def key(self, name, stroke):
        self.choose(self.window(name))
        self.desktop.key(stroke)

    def close(self, window):
        self.choose(window)
        self.program.system.close_window(window)


COLOUR = Picture(colour=blocky(90, 70))
DEPTH = Picture(colour=blocky(400, 300), z=blocky(400, 300, channels=1).astype(np.float32))


def put(folder, name, data):
    (folder / name).write_bytes(data)
    return data


def bare_image(bodies):
    """An image whose tiles have these bodies."""
    tiles = b"".join(chunk("RGBA", body) for body in bodies)
    header = chunk("TBHD", image_header(64, 64, 1, tiles=len(bodies)))
    return group("FOR4", "CIMG", header + group("FOR4", "TBMP", tiles))


FILES = {
    "several tiles": image_form(COLOUR),
    "raw tiles": image_form(Picture(colour=noise(200, 130)), Style(codec="raw")),
    "one value": bare_image([bytes(300)]),
    "two images": image_form(COLOUR) + image_form(Picture(colour=noise(30, 30))),
    "short tiles": bare_image([bytes(range(n)) for n in range(24)]),
    "nothing to count": bare_image([b"", bytes(8)]),
    "all values": bare_image([bytes([i % 256 for i in range(16 << 10)]) + bytes(range(256)) * 3]),
}


@pytest.mark.parametrize("data", FILES.values(), ids=FILES.keys())
def test_the_picture_is_that_of_the_bytes(start, folder, data):
    put(folder, "one.iff", data)
    analyser = Analyser(start("-e", "one.iff"))
    analyser.wait_for(expected(data))
    assert analyser.titles() == ["VisTel: byte histogram of one.iff"]
    analyser.key("one.iff", "a")
    analyser.key("one.iff", "Escape")
    assert analyser.program.wait_for_exit() == 0
    assert analyser.program.stderr() == ""


def test_in_full_screen_the_title_takes_no_rows(start, folder):
    data = put(folder, "one.iff", image_form(COLOUR))
    analyser = Analyser(start("-e", "-d", "one.iff"), title_rows=0)
    analyser.wait_for(expected(data))


def test_what_covered_it_is_drawn_again(start, folder):
    data = put(folder, "one.iff", image_form(COLOUR))
    analyser = Analyser(start("-e", "one.iff"))
    analyser.wait_for(expected(data))
    with analyser.desktop.covering(analyser.x + 20, analyser.y + 20, 200, 100):
        wait_until(lambda: (analyser.area() != expected(data)).any(), what="something over it")
    analyser.wait_for(expected(data))


def test_closing_the_only_window_ends_the_program(start, folder):
    data = put(folder, "one.iff", image_form(COLOUR))
    analyser = Analyser(start("-e", "one.iff"))
    analyser.wait_for(expected(data))
    analyser.program.wait_for_rest(1)
    assert analyser.program.running()
    analyser.close(analyser.window("one.iff"))
    assert analyser.program.wait_for_exit() == 0


def test_an_interrupt_ends_it(start, folder):
    data = put(folder, "one.iff", image_form(COLOUR))
    analyser = Analyser(start("-e", "one.iff"))
    analyser.wait_for(expected(data))
    analyser.program.interrupt()
    assert analyser.program.wait_for_exit() == 0


def test_a_file_without_tiles_has_no_analyser(start, folder):
    put(folder, "depth", image_form(Picture(z=DEPTH.z[:70, :90])))
    program = start("-e", "depth")
    program.find(rules.upright(rules.grey(rules.depth(DEPTH.z[:70, :90]))).low)
    assert [title for _, title in program.desktop.windows()] == ["VisTel: depth, Z Buffer"]
    assert program.close() == 0
    put(folder, "name", group("FOR4", "CIMG", chunk("NAME", b"a name")))
    assert start("-e", "name").wait_for_exit() == 0


def test_without_pixel_data_nothing_is_counted(start, folder):
    put(folder, "one.iff", image_form(COLOUR))
    assert start("-e", "-c", "one.iff").wait_for_exit() == 0


def test_each_file_has_its_own_window(start, folder):
    first = put(folder, "first", image_form(COLOUR))
    second = put(folder, "second", image_form(Picture(colour=noise(60, 50))))
    analyser = Analyser(start("-e", "first", "second"))
    both = ["VisTel: byte histogram of first", "VisTel: byte histogram of second"]
    wait_until(lambda: analyser.titles() == both, what=lambda: f"both {analyser.program.report()}")
    # They lie in the same place; either may be above.
    pictures = {"first": expected(first), "second": expected(second)}
    above = lambda: [name for name in pictures if (analyser.area() == pictures[name]).all()]
    (name,) = wait_until(above, what="one of the pictures")
    analyser.close(analyser.window(name))
    (other,) = set(pictures) - {name}
    analyser.wait_for(pictures[other])
    assert analyser.program.running()
    analyser.key(other, "Escape")
    assert analyser.program.wait_for_exit() == 0


# --- beside the viewer --------------------------------------------------------------------------------


VIEWER = "VisTel: both, Z Buffer"


@pytest.fixture
def beside(start, folder):
    """The depth of a picture in the viewer, and the analyser before it."""

    def run(*options):
        data = put(folder, "both", image_form(DEPTH))
        analyser = Analyser(start("-e", *options, "both"))
        wait_until(
            lambda: analyser.titles() == [VIEWER, "VisTel: byte histogram of both"],
            what=lambda: f"both windows {analyser.program.report()}",
        )
        desktop = analyser.desktop
        desktop.focus(analyser.window("both"))
        return analyser, expected(data)

    return run


def viewer_window(analyser):
    return next(window for window, title in analyser.desktop.windows() if title == VIEWER)


SEEN = rules.upright(rules.grey(rules.depth(DEPTH.z))).low


def test_the_viewer_does_not_hide_the_analyser(system, start, folder):
    if system.name == "wine":
        pytest.skip("there the two open at the same time: the later one lies above")
    z = np.linspace(1, 2, 900 * 700, dtype=np.float32).reshape(700, 900)
    data = put(folder, "large", image_form(Picture(colour=blocky(900, 700), z=z)))
    analyser = Analyser(start("-e", "large"))
    wait_until(lambda: len(analyser.titles()) == 2, what="both windows")
    analyser.program.wait_for_rest()
    analyser.wait_for(expected(data))


def test_escape_in_the_analyser_ends_the_viewer_too(beside, store):
    analyser, _ = beside("-r", "19")
    analyser.key("both", "Escape")
    assert analyser.program.wait_for_exit() == 0
    assert store.read()["FPS"] == "19"


def test_closing_the_analyser_leaves_the_viewer(beside):
    analyser, _ = beside()
    analyser.close(analyser.window("both"))
    analyser.program.find_part(SEEN[40:])  # below its label
    assert analyser.titles() == [VIEWER]
    analyser.close(viewer_window(analyser))
    assert analyser.program.wait_for_exit() == 0


def test_closing_the_viewer_leaves_the_analyser(beside):
    analyser, picture = beside()
    analyser.close(viewer_window(analyser))
    wait_until(lambda: analyser.titles() == ["VisTel: byte histogram of both"], what="its window")
    analyser.wait_for(picture)
    analyser.program.wait_for_rest(1)
    assert analyser.program.running()
    analyser.key("both", "Escape")
    assert analyser.program.wait_for_exit() == 0


def test_a_list_that_is_shown_again_and_again_has_one_window_for_each_file(beside):
    analyser, _ = beside("-S", "-v")
    rounds = lambda: analyser.program.stdout().count("File: both") >= 5
    wait_until(rounds, what=lambda: f"five rounds {analyser.program.report()}")
    assert analyser.titles() == [VIEWER, "VisTel: byte histogram of both"]


def test_a_dialog_of_the_viewer_does_not_hold_up_escape(beside):
    analyser, picture = beside()
    program = analyser.program
    analyser.choose(viewer_window(analyser))
    program.desktop.key("Alt_L+f")
    program.wait_for_rest(0.1)
    program.desktop.key("o")
    Dialog(program, "Open")
    analyser.key("both", "Escape")
    assert program.wait_for_exit() == 0


# --- sources ------------------------------------------------------------------------------------------


def piped(start, data, *arguments):
    read_end, write_end = os.pipe()
    with os.fdopen(read_end, "rb") as source:
        program = start(*arguments, stdin=source)
    with os.fdopen(write_end, "wb") as target:
        target.write(data)
    return Analyser(program)


@pytest.mark.parametrize("arguments", [[], ["stdin"], ["-"]])
@pytest.mark.parametrize("name", [None, "a named picture", "\x1b[31mred"])
def test_standard_input_is_named_by_its_image(start, arguments, name):
    named = [] if name is None else [("NAME", name.encode())]
    data = image_form(COLOUR, Style(after_header=named))
    analyser = piped(start, data, "-e", *arguments)
    analyser.wait_for(expected(data))
    shown = {None: "stdin", "\x1b[31mred": "\\x1b[31mred"}.get(name, name)
    assert analyser.titles() == [f"VisTel: byte histogram of {shown}"]


def test_a_file_is_named_by_its_name_alone(start, folder):
    (folder / "sub").mkdir()
    data = put(folder / "sub", "one.iff", image_form(COLOUR, Style(after_header=[("NAME", b"x")])))
    analyser = Analyser(start("-e", "sub/one.iff"))
    analyser.wait_for(expected(data))
    assert analyser.titles() == ["VisTel: byte histogram of one.iff"]


def test_a_foreign_file_shows_what_its_converter_writes(system, start, folder):
    put(folder, "one.png", png(Pixels(noise(90, 70))))
    written = system.run_tool("pixconv", "one.png", "stdout", folder=folder).output
    analyser = Analyser(start("-e", "one.png"))
    analyser.wait_for(expected(written))
    assert analyser.titles() == ["VisTel: byte histogram of one.png"]
    assert analyser.program.stderr() == ""


def test_of_an_animation_the_frame_it_begins_with_is_counted(start, folder):
    data = [put(folder, f"shot.{i}", image_form(Picture(colour=noise(40, 30, seed=i)))) for i in range(1, 5)]
    analyser = Analyser(start("-e", "-n", 2, 4, 1, "shot"))
    analyser.wait_for(expected(data[1]))
    analyser.program.wait_for_rest(1)
    assert analyser.titles() == ["VisTel: byte histogram of shot"]


def test_a_file_that_was_cut_shows_what_was_read(start, folder):
    whole = image_form(Picture(colour=noise(200, 130)), Style(codec="raw"))
    bodies = chunks(whole, b"RGBA")
    data = put(folder, "one", whole[: whole.index(bodies[-1]) + 20])
    analyser = Analyser(start("-e", "one"))
    # The last chunk's bytes are in the total alone.
    counted = bare_image(bodies[:-1])
    analyser.wait_for(expected(counted, uncounted=len(bodies[-1]) - 8))
    assert "one: " in analyser.program.stderr()
    assert data != whole


def test_a_file_that_is_being_written_is_waited_for(start, folder):
    whole = image_form(COLOUR)
    (folder / "one").write_bytes(whole[:900])
    analyser = Analyser(start("-e", "-w", "one"))
    analyser.program.wait_for_rest(1)
    assert analyser.titles() == []
    with open(folder / "one", "ab") as file:
        file.write(whole[900:])
    analyser.wait_for(expected(whole))


def test_a_window_answers_while_the_next_source_is_waited_for(start, folder):
    data = put(folder, "one", image_form(COLOUR))
    whole = image_form(Picture(colour=noise(40, 30)))
    read_end, write_end = os.pipe()
    os.write(write_end, whole[:500])
    try:
        with os.fdopen(read_end, "rb") as source:
            analyser = Analyser(start("-e", "one", "stdin", stdin=source))
        analyser.wait_for(expected(data))
        with analyser.desktop.covering(analyser.x + 20, analyser.y + 20, 200, 100):
            pass
        analyser.wait_for(expected(data))
        analyser.key("one", "Escape")
        assert analyser.program.wait_for_exit() == 0
    finally:
        os.close(write_end)


def test_without_a_display_the_program_ends_with_one_line(system, start, folder):
    put(folder, "one", image_form(COLOUR))
    if system.name == "wine":
        pytest.skip("there the display is the system's own")
    program = start("-e", "one", environment={"DISPLAY": ":9999"})
    assert program.wait_for_exit() == 1
    assert len(program.stderr().splitlines()) == 1 and "no window" in program.stderr()


def test_it_starts_and_ends_twenty_times(start, folder):
    data = put(folder, "one", image_form(COLOUR))
    for _ in range(20):
        analyser = Analyser(start("-e", "one"))
        analyser.wait_for(expected(data))
        analyser.key("one", "Escape")
        assert analyser.program.wait_for_exit() == 0
