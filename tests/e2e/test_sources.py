"""Where pictures come from besides plain files: standard input, commands, one-file animations, and
files that are still being written."""

import os
import subprocess
import threading
import time

import pytest

from framefile import Animation, Picture, Style, image_form, noise, on_screen, wrap, write
from program import Player

PICTURE = Picture(colour=noise(120, 90, seed=3))
SHOWN = on_screen(PICTURE)


# --- standard input -------------------------------------------------------------------------------


@pytest.mark.parametrize("arguments", [[], ["stdin"], ["STDIN"]])
def test_standard_input_from_a_file(start, folder, arguments):
    write(folder / "one", PICTURE)
    with open(folder / "one", "rb") as source:
        program = start(*arguments, stdin=source)
    measured = program.find(SHOWN)
    assert measured.margins() == (100, 100, 27, 27)
    assert program.title().startswith("VisTel: ")
    assert program.close() == 0


STYLES = {
    "plain": Style(),
    "unknown sizes": Style(size="unknown", tile_size="unknown"),
    "large chunks to skip": Style(after_header=[("USER", bytes(70000))]),
}


@pytest.mark.parametrize("arguments", [[], ["stdin"]])
@pytest.mark.parametrize("style", STYLES.values(), ids=STYLES.keys())
def test_standard_input_from_a_pipe(start, folder, arguments, style):
    write(folder / "one", PICTURE, style)
    with subprocess.Popen(["cat", str(folder / "one")], stdout=subprocess.PIPE) as source:
        program = start(*arguments, stdin=source.stdout)
        source.stdout.close()
        program.find(SHOWN)
        assert program.close() == 0


def test_a_pipe_that_delivers_slowly(start):
    data = image_form(PICTURE)
    read_end, write_end = os.pipe()

    def feed():
        with os.fdopen(write_end, "wb", buffering=0) as pipe:
            for at in range(0, len(data), len(data) // 10 + 1):
                pipe.write(data[at : at + len(data) // 10 + 1])
                time.sleep(0.05)

    feeder = threading.Thread(target=feed)
    with os.fdopen(read_end, "rb") as source:
        program = start(stdin=source)
    feeder.start()
    program.find(SHOWN)
    feeder.join()
    assert program.close() == 0


def test_standard_input_shows_one_image_even_when_a_range_is_given(start, folder):
    write(folder / "one", PICTURE)
    with open(folder / "one", "rb") as source:
        program = start("-n", "1", "5", "1", "stdin", stdin=source)
    measured = program.find(SHOWN)
    assert not measured.text, "no status line"
    assert program.stderr().strip()


# --- commands -------------------------------------------------------------------------------------


def test_a_command_delivers_an_image(system, start, folder):
    write(folder / "one", PICTURE)
    program = start(f"pipe:{system.emit_command()} one")
    program.find(SHOWN)
    assert program.close() == 0


def test_a_command_runs_once_per_frame_with_its_number(system, start, folder):
    animation = Animation(3, 6).write(folder)
    command = f"pipe:{system.emit_command()} shot.{system.frame_variable()}"
    player = Player(start("-n", "3", "6", "1", command), animation)
    player.pause()
    player.step("Control_L+Left", 3)
    for expected in (4, 5, 6, 3):
        player.step("Right", expected)


def test_a_command_that_does_not_exist_is_reported_and_the_next_file_shown(start, folder):
    write(folder / "one", PICTURE)
    program = start("pipe:no-such-command-anywhere", "one")
    program.find(SHOWN)
    assert program.close() == 0


def test_the_converter_test_runs_the_command_named_in_the_environment(system, start, folder):
    write(folder / "one", PICTURE)
    program = start("-t", environment={"VTTEST": f"{system.emit_command()} one"})
    program.find(SHOWN)
    assert program.close() == 0


# --- one-file animations --------------------------------------------------------------------------


ONE_FILE = {
    "in a concatenation": lambda pictures: wrap("CAT4", pictures),
    "in a list": lambda pictures: wrap("LIST", pictures),
    "side by side": lambda pictures: b"".join(map(image_form, pictures)),
}


@pytest.mark.parametrize("join", ONE_FILE.values(), ids=ONE_FILE.keys())
@pytest.mark.parametrize("arguments", [["-N", "-n", "1", "4", "1"], ["absent", "-N1", "4", "1"]])
def test_an_animation_in_one_file(start, folder, join, arguments):
    animation = Animation(1, 4)
    (folder / "all").write_bytes(join([animation.picture(n) for n in animation.numbers]))
    player = Player(start(*arguments, "all"), animation)
    player.pause()
    player.step("Control_L+Left", 1)
    for expected in (2, 3, 4, 1):
        player.step("Right", expected)
    player.step("Left", 4)


# --- files that are still being written -----------------------------------------------------------


def halves(picture):
    data = image_form(picture, Style(tiles=(16, 16), codec="raw"))
    return data[: len(data) // 2], data[len(data) // 2 :]


def append(path, data):
    with open(path, "ab") as file:
        file.write(data)


def test_an_image_that_is_still_being_written_is_waited_for(start, folder):
    first, second = halves(PICTURE)
    (folder / "one").write_bytes(first)
    program = start("-w", "one")
    time.sleep(1.0)
    assert program.running()
    assert not program.shows(SHOWN)
    append(folder / "one", second)
    program.find(SHOWN)
    assert program.close() == 0
    assert program.stderr() == ""


def test_an_image_that_grows_by_small_pieces_is_waited_for(start, folder):
    data = image_form(PICTURE)
    (folder / "one").write_bytes(data[:6])
    program = start("-w", "one")
    for at in range(6, len(data), len(data) // 20):
        append(folder / "one", data[at : at + len(data) // 20])
        time.sleep(0.02)
    program.find(SHOWN)


def waiting_for_second_frame(start, folder):
    animation = Animation(1, 3).write(folder)
    first, second = halves(animation.picture(2))
    (folder / "shot.2").write_bytes(first)
    program = start("-w", "shot.")
    return program, Player(program, animation), second


def test_a_frame_that_is_still_being_written_is_waited_for(start, folder):
    program, player, rest = waiting_for_second_frame(start, folder)
    assert player.settled(1.0) == 1
    append(folder / "shot.2", rest)
    assert set(player.record(7)) == {1, 2, 3}
    assert program.close() == 0
    assert program.stderr() == ""


def test_the_window_answers_while_a_frame_is_waited_for(start, folder):
    program, player, _ = waiting_for_second_frame(start, folder)
    with program.desktop.covering(player.x, player.y, 20, 20):
        assert player.frame() == 1
    program.find_part(player.animation.landmark())
    begin = time.monotonic()
    assert program.close(5) == 0
    assert time.monotonic() - begin < 3


# --- interrupting ---------------------------------------------------------------------------------


def test_closing_the_window_ends_loading(system, start, folder):
    animation = Animation(1, 200).write(folder)
    command = f"pipe:{system.emit_command()} -w 100 shot.{system.frame_variable()}"
    program = start("-n", "1", "200", "1", command)
    Player(program, animation)
    begin = time.monotonic()
    assert program.close(10) == 0
    assert time.monotonic() - begin < 4, "loading them all takes 20 seconds"


# --- several files --------------------------------------------------------------------------------


def test_closing_the_window_leads_to_the_next_file(start, folder):
    other = Picture(colour=noise(100, 70, seed=4))
    write(folder / "one", PICTURE)
    write(folder / "two", other)
    program = start("-v", "one", "two")
    program.find(SHOWN)
    program.system.close_window(program.window())
    program.find(on_screen(other))
    assert program.close() == 0
    assert "2" in program.stderr().splitlines()[-1]
