"""What accessibility tools read of menu and bar, on a bus of their own. Needs the packages
at-spi2-core, gir1.2-atspi-2.0, python3-gi and dbus."""

import json
import subprocess
import sys

import pytest

from desktop import wait_until
from framefile import Animation
from menus import choose
from program import HELPERS, Player


@pytest.fixture
def bus(system, tmp_path):
    """The variables with which program and tools find each other."""
    if system.name != "linux":
        pytest.skip("tools of the other system read its own controls")
    address = f"unix:path={tmp_path / 'bus'}"
    command = ["dbus-daemon", "--session", "--nofork", f"--address={address}"]
    variables = {
        **system.environment(tmp_path, f"{system.marker}-bus"),
        "DBUS_SESSION_BUS_ADDRESS": address,
        "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
        "NO_AT_BRIDGE": "0",
    }
    quiet = dict.fromkeys(("stdin", "stdout", "stderr"), subprocess.DEVNULL)
    daemon = subprocess.Popen(command, env=variables, **quiet)
    wait_until((tmp_path / "bus").exists, what="the bus")
    yield variables
    daemon.terminate()
    daemon.wait()


def controls(bus):
    """{(role, name without its key): (states, description)} of what the program has."""
    told = subprocess.run(
        [sys.executable, HELPERS / "accessible.py", "vistel"],
        env=bus, capture_output=True, text=True, timeout=60, check=True,
    ).stdout
    rows = map(json.loads, told.splitlines())
    return {(role, name.split("\t")[0]): (set(states), text) for role, name, states, text in rows}


BUTTONS = {
    "<<-": "To the start", "<-": "One step back", "<": "Play backward", ">": "Play forward",
    "->": "One step forward", "->>": "To the end", "C": "All channels", "A": "Mask", "Z": "Depth",
}
GREY_ITEMS = {"Alpha Channel", "Toggle Sound"}  # colours alone, no sound
ITEMS = {
    "Open Image...", "Open Animation...", "Revert", "Import Sound...", "Toggle Sound",
    "Save Image...", "Save Animation...", "Exit", "Red Channel", "Green Channel", "Blue Channel",
    "Alpha Channel", "All Channels", "Luminance", "Control Bar", "Full Screen", "Full Resolution",
    "Manipulations...", "Opening Images...", "Saving Images...", "Animation Controls...",
    "Command Line...", "Mouse Controls...", "Keyboard...", "About...",
}


def test_names_roles_and_states_of_menu_and_bar_are_read(bus, start, folder):
    animation = Animation(last=3).write(folder)
    player = Player(start("shot.", environment=bus), animation)
    player.pause()
    wait_until(lambda: ("menu bar", "") in controls(bus), what="the program on the bus")
    read = controls(bus)
    items = {name: states for (role, name), (states, _) in read.items() if role == "menu item"}
    assert items.keys() == ITEMS | {"File", "View", "Help"}
    assert {name for name in items if "enabled" not in items[name]} == GREY_ITEMS
    assert {name for name in items if "checked" in items[name]} == {"Control Bar"}
    buttons = {name: told for (role, name), told in read.items() if role == "push button"}
    assert buttons.keys() == BUTTONS.keys()
    assert {name for name, (states, _) in buttons.items() if "enabled" not in states} == {"A", "Z"}
    assert all(buttons[name][1].startswith(tip) for name, tip in BUTTONS.items())
    assert "enabled" in read["text", "FPS"][0]
    choose(player.program, "Control Bar")
    unmarked = lambda: "checked" not in controls(bus)["menu item", "Control Bar"][0]
    wait_until(unmarked, what="the item without its mark")
    assert not {name for role, name in controls(bus) if role == "push button"}
    assert player.program.close() == 0
