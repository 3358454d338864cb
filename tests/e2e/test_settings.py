"""What survives from one run to the next, and what a damaged or closed store does to a start."""

import fcntl
import os
import signal
import struct
import termios
import time

import pytest

from desktop import wait_until
from framefile import Animation, Picture, Style, noise, on_screen, write
from program import BUILD, SETTINGS_KEY, Player, compile_helper

NAMES = ("FilterIndex", "FPS", "LastFolder")
PICTURE = Picture(colour=noise(120, 90, seed=6))


class Store:
    """The settings from outside."""

    def __init__(self, system, tmp_path):
        self.system = system
        self.file = tmp_path / "settings" / "config" / "vistel" / "vistel.conf"

    def read(self):
        if self.system.name == "linux":
            lines = self.file.read_text(encoding="utf-8").splitlines() if self.file.exists() else []
            return dict(line.split("=", 1) for line in lines)
        _, answer = self.system._run("reg", "query", SETTINGS_KEY)
        rows = [line.strip().split("    ") for line in answer.splitlines()]
        found = {row[0]: (row[1], row[2] if len(row) > 2 else "") for row in rows if len(row) > 1}
        assert all(kind == "REG_SZ" for name, (kind, _) in found.items() if name in NAMES), found
        return {name: text for name, (_, text) in found.items()}

    def write(self, **values):
        if self.system.name == "linux":
            self.file.parent.mkdir(parents=True, exist_ok=True)
            kept = {**self.read(), **values}
            self.file.write_text("".join(f"{name}={text}\n" for name, text in kept.items()))
            return
        for name, text in values.items():
            status, answer = self.system._run(
                "reg", "add", SETTINGS_KEY, "/v", name, "/d", text, "/f"
            )
            assert status == 0, answer


@pytest.fixture
def store(system, tmp_path):
    return Store(system, tmp_path)


def show(start, folder, *options, **further):
    write(folder / "one", PICTURE)
    program = start(*options, "one", **further)
    program.find(on_screen(PICTURE))
    return program


def test_one_run_stores_all_three_values(start, folder, store):
    assert store.read() == {}
    assert show(start, folder).close() == 0
    stored = store.read()
    assert sorted(stored) == sorted(NAMES)
    assert (stored["FilterIndex"], stored["FPS"]) == ("0", "24")


def test_the_rate_of_the_last_run_is_that_of_the_next(start, folder, store):
    assert show(start, folder, "-r", "12").close() == 0
    assert store.read()["FPS"] == "12"
    animation = Animation(last=12).write(folder)
    player = Player(start("shot."), animation)
    assert player.plays_a_round_in(1.0)
    player.program.key("KP_Add")
    assert player.program.close() == 0
    assert store.read()["FPS"] == "13"


# Stored texts, and the rate that is stored after a run.
DAMAGE = {
    "no number": ({"FPS": "fast", "FilterIndex": "first"}, "0"),
    "a number with a tail": ({"FPS": "30 frames", "FilterIndex": "1x"}, "30"),
    "numbers beyond all bounds": ({"FPS": "99999999999999999999", "FilterIndex": "-5"}, "2147483647"),
    "a negative rate": ({"FPS": "-25"}, "-25"),
    "texts without an end": ({"FPS": "1" * 5000, "LastFolder": "d" * 5000}, None),
    "nothing": ({"FPS": "", "FilterIndex": "", "LastFolder": ""}, "0"),
    "a folder that has gone": ({"LastFolder": "/no/such/folder/\u00e4\u65e5"}, "24"),
}


@pytest.mark.parametrize("values, rate", DAMAGE.values(), ids=DAMAGE.keys())
def test_damaged_values_never_prevent_a_start(start, folder, store, values, rate):
    store.write(**values)
    animation = Animation(last=3).write(folder)
    player = Player(start("shot."), animation)
    # Not waited for at rest: at a rate beyond all bounds there is none.
    wait_until(lambda: "loading" not in (player.program.title() or "loading"), what="the frames")
    player.program.key("space")
    player.settled()
    player.step("Control_L+Left", 1)
    player.step("Right", 2)
    assert player.program.close() == 0
    assert player.program.stderr() == ""
    stored = store.read()
    assert sorted(stored) == sorted(NAMES)
    if rate is not None:
        assert stored["FPS"] == rate


def test_values_of_others_stay(start, folder, store):
    store.write(Other="a = b", FPS="30")
    assert show(start, folder).close() == 0
    stored = store.read()
    assert (stored["Other"], stored["FPS"]) == ("a = b", "30")


def test_values_of_another_kind_are_as_good_as_none(start, folder, system, store):
    if system.name != "wine":
        pytest.skip("values have no kinds there")
    kinds = {"FPS": ("REG_DWORD", "48"), "LastFolder": ("REG_BINARY", "00ff41"), "FilterIndex": ("REG_NONE", "")}
    for name, (kind, value) in kinds.items():
        data = ["/d", value] if value else []
        status, answer = system._run("reg", "add", SETTINGS_KEY, "/v", name, "/t", kind, *data, "/f")
        assert status == 0, answer
    assert show(start, folder).close() == 0
    stored = store.read()
    assert (stored["FilterIndex"], stored["FPS"]) == ("0", "24")


UNREADABLE = {
    "a file in the place of the folder": lambda place: (place.parent.mkdir(), place.write_text("x")),
    "a folder in the place of the file": lambda place: (place / "vistel.conf").mkdir(parents=True),
    "bytes without sense": lambda place: (
        place.mkdir(parents=True), (place / "vistel.conf").write_bytes(bytes(range(256)) * 9)
    ),
}


@pytest.mark.parametrize("spoil", UNREADABLE.values(), ids=UNREADABLE.keys())
def test_a_store_that_cannot_be_used_never_prevents_a_start(start, folder, system, store, spoil):
    if system.name != "linux":
        pytest.skip("the system keeps them there")
    spoil(store.file.parent)
    program = show(start, folder)
    assert program.close() == 0
    assert program.stderr() == ""


def test_two_programs_at_once_both_start_and_leave_all_values(start, folder, system, store):
    store.write(Other="1")
    first = show(start, folder, "-r", "12")
    Animation(last=3).write(folder)
    second = start("-r", "30", "shot.")
    wait_until(lambda: len(first.desktop.windows()) == 2, what="two windows")
    desktop = first.desktop
    for window, _ in reversed(desktop.windows()):  # from the topmost one on
        x, y, width, height = desktop.rectangle(window)
        desktop.focus(window)
        desktop.move_pointer(x + width / 2, y + height / 2)
        desktop.button(1, True)
        desktop.button(1, False)
        second.wait_for_rest()
        system.close_window(window)
    assert first.wait_for_exit() == 0 and second.wait_for_exit() == 0
    stored = store.read()
    assert sorted(stored) == sorted([*NAMES, "Other"])
    assert stored["FPS"] in ("12", "30")


def test_a_store_that_is_closed_never_prevents_a_start(start, folder, system, store):
    if system.name != "wine":
        pytest.skip("the settings of the other system are a file")
    compiler = ["x86_64-w64-mingw32-gcc-posix", "-static"]
    target = BUILD / "e2e" / "win64" / "settings_lock.exe"
    lock = str(compile_helper(compiler, "settings_lock", target, ["-lntdll"]))
    assert system._run(lock, "close") == (0, "")
    try:
        program = show(start, folder, "-r", "12")
        assert program.close() == 0
        assert program.stderr() == ""
        assert store.read() == {}
    finally:
        assert system._run(lock, "open") == (0, "")


ENDINGS = {
    "the window": lambda program: program.system.close_window(program.window()),
    "an interrupt": lambda program: program.interrupt(),
    "termination": lambda program: program.process.send_signal(signal.SIGTERM),
    "a hang-up": lambda program: program.process.send_signal(signal.SIGHUP),
}


def bytes_in(pipe):
    return struct.unpack("i", fcntl.ioctl(pipe, termios.FIONREAD, bytes(4)))[0]


STREAMS = {"the report": ["stdout"], "all that is said": ["stdout", "stderr"]}


@pytest.mark.parametrize("streams", STREAMS.values(), ids=STREAMS.keys())
@pytest.mark.parametrize("end", ENDINGS.values(), ids=ENDINGS.keys())
def test_a_report_that_nobody_reads_does_not_hold_up_the_end(
    system, start, folder, store, end, streams
):
    if system.name == "wine" and end in (ENDINGS["termination"], ENDINGS["a hang-up"]):
        pytest.skip("there are no such signals there")
    # In a list that is shown again and again the window is there while the next file is read.
    long_report = Style(after_header=[("ANNO", b"x" * 200)] * 500)
    write(folder / "one", PICTURE)
    write(folder / "two", PICTURE, long_report)
    read_end, write_end = os.pipe()
    with os.fdopen(read_end), os.fdopen(write_end):
        streams = dict.fromkeys(streams, write_end)
        program = start("-S", "-v", "-r", "17", "one", "two", **streams)
        program.find(on_screen(PICTURE))
        wait_until(lambda: bytes_in(read_end) > 50_000, what="a pipe that is full")
        program.wait_for_rest(0.5)
        began = time.monotonic()
        end(program)
        assert program.wait_for_exit() == 0
        took = time.monotonic() - began
    assert took < 5
    assert store.read()["FPS"] == "17"
