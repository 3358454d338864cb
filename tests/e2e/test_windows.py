"""Two windows at once: each has its title, place, picture and events, and its own end."""

import pytest

from desktop import wait_until

# Of helpers/two_windows.cpp: what each window shows at first and after the key C, 0xRRGGBB.
COLOURS = {"left": (0xF01020, 0xC0C010), "right": (0x1030E0, 0xC010C0)}
PLACES = {"left": (60, 120, 400, 200), "right": (640, 400, 360, 300)}


class TwoWindows:
    def __init__(self, program, desktop):
        self.program, self.desktop = program, desktop

    def said(self, name, beginning):
        """What a window has said that begins so, without that beginning."""
        lines = [line.split(" ", 1) for line in self.program.stdout().splitlines() if " " in line]
        return [t[len(beginning) :].strip() for n, t in lines if n == name and t.startswith(beginning)]

    def wait_for(self, name, what):
        wait_until(
            lambda: self.said(name, what), what=lambda: f"{name} {what!r} {self.program.report()}"
        )
        return self.said(name, what)

    def window(self, name):
        found = [window for window, title in self.desktop.windows() if title == name]
        assert len(found) <= 1
        return found[0] if found else None

    def titles(self):
        return sorted(title for _, title in self.desktop.windows())

    def choose(self, name):
        """Without a window manager it takes the keyboard and a click, on one system or the other."""
        x, y, width, height = PLACES[name]
        heard = len(self.said(name, "event 1 0"))
        self.desktop.focus(self.window(name))
        self.desktop.move_pointer(x + width / 2, y + height / 2)
        self.desktop.button(1, True)
        self.desktop.button(1, False)
        wait_until(lambda: len(self.said(name, "event 1 0")) > heard, what=f"a click on {name}")

    def key(self, name, stroke):
        self.choose(name)
        self.desktop.key(stroke)

    def close(self, name, system):
        self.choose(name)
        system.close_window(self.window(name))

    def shows(self, name, index):
        """Whether the window's place on the screen has its colour, and nothing else."""
        x, y, width, height = map(int, self.said(name, "opened")[0].split())
        area = self.desktop.packed(x, y, width, height)
        return (area == COLOURS[name][index]).all()

    def wait_to_show(self, name, index):
        what = lambda: f"colour {index} of {name} {self.program.report()}"
        wait_until(lambda: self.shows(name, index), what=what)


@pytest.fixture
def two(start, system):
    def run(mode):
        windows = TwoWindows(start(mode, name="two_windows"), system.desktop)
        for name in COLOURS:
            windows.wait_for(name, "opened")
        return windows

    return run


TICK = "259 1"  # also when the keyboard comes


def modes(system):
    # The toolkit of the one binds windows to the first thread.
    return ["loop", "threads"] if system.name == "wine" else ["loop"]


def test_two_windows_live_beside_each_other(two, system):
    for mode in modes(system):
        windows = two(mode)
        assert windows.titles() == ["left", "right"]
        for name in COLOURS:
            assert windows.said(name, "opened") == [" ".join(map(str, PLACES[name]))]
            windows.wait_to_show(name, 0)

        # Each hears its own keys only.
        windows.key("left", "a")
        windows.wait_for("left", "event 65 0")
        windows.key("right", "b")
        windows.wait_for("right", "event 66 0")
        for name, code in {"left": 65, "right": 66}.items():
            button, key = ["1 1", "1 0"], [f"{code} 1", f"{code} 0"]
            heard = [event for event in windows.said(name, "event") if event != TICK]
            assert heard == button + key

        # One picture changes, the other stays.
        windows.key("left", "c")
        windows.wait_to_show("left", 1)
        assert windows.shows("right", 0)

        # Closing one leaves the other working.
        windows.close("left", system)
        windows.wait_for("left", "closed")
        assert windows.titles() == ["right"] and windows.program.running()
        windows.key("right", "c")
        windows.wait_to_show("right", 1)
        windows.close("right", system)
        assert windows.program.wait_for_exit() == 0
        assert windows.said("right", "closed") == [""]
        for name in COLOURS:
            drawn = windows.said(name, "drawn")
            assert drawn and all(text.endswith("wrong 0") for text in drawn), drawn
        if mode == "threads":
            for name in COLOURS:
                assert windows.said(name, "texts") == ["wrong 0"]


def test_a_window_that_the_thread_cannot_have_is_refused(start, system):
    if system.name == "wine":
        pytest.skip("every thread can have one there")
    windows = TwoWindows(start("threads", name="two_windows"), system.desktop)
    windows.wait_for("right", "refused")
    windows.wait_for("left", "drawn")
    system.close_window(windows.window("left"))
    assert windows.program.wait_for_exit() == 0
