"""The screen's density, and a display that goes away."""

import signal

import numpy as np
import pytest
from Xlib import Xatom

from desktop import Desktop, wait_until
from framefile import Animation, Picture, noise, on_screen, write
from program import Program, processes_marked


@pytest.fixture
def linux(system):
    if system.name != "linux":
        pytest.skip("the system has its own way with densities and displays")
    return system


def say_density(desktop, dots):
    """As the user's resources say it; None: they say nothing."""
    display, root = desktop._display, desktop._root
    resources = display.intern_atom("RESOURCE_MANAGER")
    if dots is None:
        root.delete_property(resources)
    else:
        root.change_property(resources, Xatom.STRING, 8, f"Xft.dpi:\t{dots}\n".encode())
    display.sync()


@pytest.fixture(params=["variable", "resources"])
def environment_of(request, linux):
    """What a program needs to be started with for texts of a size."""

    def by_resources(factor):
        say_density(linux.desktop, 96 * factor)
        return {}

    ways = {"variable": lambda factor: {"QT_SCALE_FACTOR": str(factor)}, "resources": by_resources}
    yield ways[request.param]
    say_density(linux.desktop, None)


def test_menu_and_texts_follow_the_density_and_the_picture_does_not(environment_of, start, folder):
    picture = Picture(colour=noise(200, 100))
    write(folder / "one", picture)
    rows, ink = {}, {}
    for factor in (1, 2):
        program = start("one", environment=environment_of(factor))
        place = program.find(on_screen(picture))
        assert place.margins()[:2] == (60, 60), "an image pixel is a pixel of the screen"
        left, top, width, height = program.desktop.rectangle(program.window())
        rows[factor] = height - 144  # of menu and bar
        program.key("g")

        def label():
            band = program.desktop.packed()[top + height - 144 : place.y, left : left + width]
            red = (band >> 16 > 0x60) & (band >> 8 & 255 < 0x40)
            return np.flatnonzero(red.any(axis=0)).tolist()

        columns = wait_until(label, what="the label")
        ink[factor] = columns[-1] - columns[0] + 1
        assert program.close() == 0
    assert 1.6 < rows[2] / rows[1] < 2.4, rows
    assert 1.7 < ink[2] / ink[1] < 2.3, ink


@pytest.mark.parametrize("number", [signal.SIGHUP, signal.SIGTERM])
def test_a_hang_up_ends_the_program_as_termination_does(linux, start, folder, tmp_path, number):
    Animation(last=3).write(folder)
    program = start("-r", "17", "shot.")
    program.window()
    program.wait_until_loaded()
    program.process.send_signal(number)
    assert program.wait_for_exit() == 0
    assert "17" in (tmp_path / "settings" / "config" / "vistel" / "vistel.conf").read_text()


def test_a_display_that_goes_away_ends_the_program_and_its_commands(linux, tmp_path, folder):
    Animation(last=3).write(folder)
    settings, private = tmp_path / "own settings", tmp_path / "own run"
    settings.mkdir(), private.mkdir()
    display = Desktop()
    try:
        stays = f"{linux.emit_command()} -s 600000 shot.$FRAME"
        program = Program(
            linux, ["-r", "19", "-n", "1", "3", "1", f"pipe:trap '' TERM; {stays}; :"], folder,
            private, settings, environment={"DISPLAY": display.name},
        )
        wait_until(lambda: display.windows(), what="a window on the other display")
        program.wait_for_rest()
        display._server.kill()
        assert program.wait_for_exit() == 1
        assert [name for _, name in processes_marked(program.marker) if name == "emit"] == []
    finally:
        program.kill()
        display.close()
    assert program.stderr() == "vistel: the connection to the display is lost.\n"
    assert "19" in (settings / "config" / "vistel" / "vistel.conf").read_text()
