"""Where pictures come from: names as users type them, standard input, commands (also such that
misbehave), one-file animations, and files that are still being written."""

import os
import signal
import subprocess
import threading
import time

import pytest
from PIL import Image

from desktop import wait_until
from framefile import Animation, Picture, Style, image_form, noise, on_screen, wrap, write
from program import Player, processes_marked

PICTURE = Picture(colour=noise(120, 90, seed=3))
SHOWN = on_screen(PICTURE)


# --- names ----------------------------------------------------------------------------------------

# Folder, pattern of the files, first and last frame, arguments (HERE: the folder's full name).
NAMED = {
    "a stem": ("", "shot.{}", 1, 3, ["shot."]),
    "a stem in this folder": ("", "shot.{}", 1, 3, ["./shot."]),
    "a stem in a folder": ("drawer", "shot.{}", 1, 3, ["drawer/shot."]),
    "a stem in a folder with blanks": (
        "my own  drawer", "my shot.{}", 1, 3, ["my own  drawer/my shot."],
    ),
    "a stem in a folder with accents": (
        "Bilder \xe4\xf6\xfc", "shot.{}", 1, 3, ["Bilder \xe4\xf6\xfc/shot."],
    ),
    "a stem in a foreign folder": ("\u65e5\u672c", "shot.{}", 1, 3, ["\u65e5\u672c/shot."]),
    "a stem with accents": ("", "sh\xf6t.{}", 1, 3, ["sh\xf6t."]),
    "a foreign hash": ("", "\u65e5.{:04d}.iff", 1, 3, ["-n", "1", "3", "1", "\u65e5.#.iff"]),
    "a full name": ("drawer", "shot.{}", 1, 3, ["HERE/drawer/shot."]),
    "a full name with a hash": (
        "a b", "shot.{:04d}.iff", 1, 3, ["-n", "1", "3", "1", "HERE/a b/shot.#.iff"],
    ),
    "a hash": ("", "shot.{:04d}.iff", 1, 3, ["-n", "1", "3", "1", "shot.#.iff"]),
    "at signs": ("", "shot.{:04d}.iff", 1, 3, ["-n", "1", "3", "1", "shot.@@@@.iff"]),
    "one at sign": ("", "shot.{}.iff", 9, 11, ["-n", "9", "11", "1", "shot.@.iff"]),
    "padded as asked": ("", "shot.{:04d}", 1, 3, ["-p", "-n", "1", "3", "1", "shot"]),
    "a range backwards": ("", "shot.{}", 1, 3, ["-n", "3", "1", "-1", "shot"]),
    "a range among the files": ("", "shot.{}", 5, 7, ["absent", "-n5", "7", "1", "shot"]),
    "a range in words among the files": (
        "", "shot.{}", 5, 7, ["absent", "-n", "5", "7", "1", "shot"],
    ),
    "negative numbers": ("", "shot.{:04d}.iff", -2, 2, ["-n", "-2", "2", "1", "shot.#.iff"]),
    "negative numbers among the files": (
        "", "shot.{}", -2, 1, ["absent", "-n-2", "1", "1", "shot"],
    ),
    "a stem of negative numbers": ("", "shot.{}", -2, 2, ["shot."]),
    "a power of ten": ("", "shot.{}", 998, 1001, ["shot."]),
    "a padded power of ten": ("", "shot.{:04d}", 998, 1001, ["shot."]),
    "a power of ten in a hash": (
        "", "shot.{:04d}.iff", 998, 1001, ["-n", "998", "1001", "1", "shot.#.iff"],
    ),
    "a power of ten beyond at signs": (
        "", "shot.{:03d}.iff", 998, 1001, ["-n", "998", "1001", "1", "shot.@@@.iff"],
    ),
    "the width of a larger number": ("", "shot.{:05d}", 9998, 10001, ["shot."]),
}


def rest_on_first(player, reading=0.3):
    """Stops on the first frame, which may be shown already when the key is still under way. A read
    takes up to `reading` seconds."""
    player.pause()
    player.rewind(reading)


# The same without a range: the files that are there tell it.
UNRANGED = {
    "a hash": ("", "take.{:04d}.iff", 1, 3, ["take.#.iff"]),
    "a hash for unpadded numbers": ("", "take.{}.iff", 9, 11, ["take.#.iff"]),
    "at signs": ("a@b", "take.{:03d}.iff", 1, 3, ["a@b/take.@@@.iff"]),
    "a printf mark": ("", "take.{:04d}.iff", 1, 3, ["take.%04d.iff"]),
    "an unpadded printf mark": ("", "take.{}.iff", 9, 11, ["HERE/take.%d.iff"]),
    "a printf mark and a range": ("", "take.{:02d}.iff", 1, 3, ["-n", "1", "3", "1", "take.%02d.iff"]),
    "a range in the name": ("", "take.{:04d}.iff", 4, 6, ["take.0004-0006.iff"]),
    "a stem of files with a suffix": ("my own", "shot.{:04d}.iff", 1, 3, ["my own/shot."]),
    "a stem that holds marks": ("", "b c #d@.{}", 1, 3, ["b c #d@."]),
    "a stem that holds marks, of files with a suffix": ("", "b #d.{:02d}.iff", 1, 3, ["b #d."]),
}
NAMED |= UNRANGED


@pytest.mark.parametrize("case", NAMED.values(), ids=NAMED.keys())
def test_a_sequence_under_the_name_that_was_typed(start, folder, case):
    drawer, pattern, first, last, arguments = case
    (folder / drawer).mkdir(exist_ok=True)
    animation = Animation(first, last)
    animation.numbers.reverse()  # the order in which files were made says nothing
    animation.write(folder / drawer, pattern)
    animation.numbers.reverse()
    program = start(*(a.replace("HERE", str(folder)) for a in arguments))
    player = Player(program, animation)
    rest_on_first(player)
    for expected in [*range(first + 1, last + 1), first]:
        player.step("Right", expected)
    assert "shot" not in program.stderr()
    assert program.close() == 0


def names_told(start, *arguments):
    program = start(*arguments)
    assert program.wait_for_exit() == 0
    return program.stderr().splitlines()


# What was typed where take.1.iff to take.3.iff lie, the name that is suggested.
SUGGESTED = {
    "no number": (["take"], "take.@.iff"),
    "no suffix": (["take.#"], "take.@.iff"),
    "another width": (["take.@@.iff"], "take.@.iff"),
    "another number": (["take.4.iff"], "take.@.iff"),
    "the folder": (["."], "./take.@.iff"),
    "a folder with its separator": (["sub/"], "sub/take.@.iff"),
    "a range without the suffix": (["-n", "1", "3", "1", "take"], "take.@.iff"),
    "a range beside the files": (["-n", "5", "7", "1", "take.@.iff"], "take.@.iff"),
}


@pytest.mark.parametrize("arguments, name", SUGGESTED.values(), ids=SUGGESTED.keys())
def test_a_name_that_finds_nothing_is_answered_by_one_that_works(start, folder, arguments, name):
    (folder / "sub").mkdir()
    animation = Animation(1, 3).write(folder, "take.{}.iff")
    animation.write(folder / "sub", "take.{}.iff")
    told = names_told(start, *arguments)
    assert told[-1] == f'"{name}" shows the frames 1 to 3.'
    assert not any("-f" in line for line in told), "it would not help here"
    player = Player(start(name), animation)
    player.playing()


def test_the_option_that_finds_the_first_frame_is_named_where_it_helps(start, folder):
    Animation(2, 3).write(folder)
    told = names_told(start, "-n", "1", "3", "1", "shot")
    assert told[1] == "With -f the animation begins with the first frame that exists."


def test_a_file_without_a_number_that_counts_as_frame_0_is_told(start, folder):
    Animation(12, 13).write(folder, "t.{}.iff")
    (folder / "t.bak").write_bytes(b"x")
    told = names_told(start, "t.")
    assert told[0] == "t.bak has no number: it counts as frame 0 of t."
    assert told[-1] == '"t.@.iff" shows the frames 12 to 13.'


def test_a_file_whose_name_is_a_pattern_is_that_file(start, folder):
    Animation(1, 3).write(folder, "take.{:04d}.iff")
    write(folder / "take.#.iff", PICTURE)
    program = start("take.#.iff")
    program.find(SHOWN)
    assert program.stderr() == (
        'take.#.iff: the file of this name is shown; with "-n 1 3 1 take.#.iff" these frames are\n'
    )
    assert program.close() == 0


def test_a_range_of_which_nearly_all_is_missing_is_loaded_at_once(start, folder):
    animation = Animation(1, 3).write(folder, "s.{}")
    player = Player(start("-n", "1", "2000000000", "1", "s"), animation)
    player.pause()
    err = player.program.stderr()
    assert err.startswith("Frames 4 to 2000000000 are left out; the last: s.2000000000: "), err
    assert player.program.close() == 0


def test_the_first_frame_of_a_huge_range_is_found_at_once(start, folder):
    animation = Animation(1_999_999_998, 2_000_000_000).write(folder, "s.{}")
    player = Player(start("-f", "-n", "-2000000000", "2000000000", "1", "s"), animation)
    # They pass once, then frames follow for years of which there is none.
    assert player.record(1)[0] in animation.numbers
    assert player.program.close() == 0


def test_the_largest_step_shows_the_first_frame(start, folder):
    animation = Animation(1, 3).write(folder)
    player = Player(start("-n", "1", "40", "2147483647", "shot"), animation)
    assert player.settled() == 1
    player.program.key("space")
    assert player.settled() == 1
    assert player.program.close() == 0


def mixed_widths(folder):
    animation = Animation(8, 10)
    animation.write(folder, "shot.{}")
    (folder / "shot.9").rename(folder / "shot.09")  # the one that tells the width: two digits
    return animation


def test_numbers_of_another_width_are_other_names(start, folder):
    mixed_widths(folder)
    program = start("shot.")
    assert program.wait_for_exit() == 0
    assert "shot.08" in program.stderr()


def test_frames_of_any_width_are_found_when_the_first_is_looked_for(start, folder):
    animation = mixed_widths(folder)
    program = start("-f", "shot.")
    player = Player(program, animation)
    rest_on_first(player)
    for expected in (9, 10, 8):
        player.step("Right", expected)
    assert program.close() == 0


@pytest.mark.parametrize("name", ["a b", "\u00e9t\u00e9", "\u65e5\u672c", "it's", "50%", "a&b;c"])
def test_an_image_under_the_name_that_was_typed(start, folder, name):
    (folder / name).mkdir()
    write(folder / name / f"{name}.iff", PICTURE)
    program = start(f"{name}/{name}.iff")
    program.find(SHOWN)
    assert program.close() == 0


# --- standard input -------------------------------------------------------------------------------


@pytest.mark.parametrize("arguments", [[], ["stdin"], ["STDIN"], ["-"]])
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


def feed_slowly(descriptor, data):
    with os.fdopen(descriptor, "wb", buffering=0) as pipe:
        for at in range(0, len(data), len(data) // 10 + 1):
            pipe.write(data[at : at + len(data) // 10 + 1])
            time.sleep(0.05)


FOREIGN = {"ppm": "PPM", "png": "PNG"}


@pytest.mark.parametrize("kind", FOREIGN.values(), ids=FOREIGN.keys())
@pytest.mark.parametrize("way", ["a file", "a pipe", "a slow pipe"])
def test_a_foreign_picture_on_standard_input(start, folder, kind, way):
    Image.fromarray(PICTURE.colour[::-1]).save(folder / "one", kind)
    data = (folder / "one").read_bytes()
    if way == "a file":
        with open(folder / "one", "rb") as source:
            program = start("-", stdin=source)
    else:
        read_end, write_end = os.pipe()
        with os.fdopen(read_end, "rb") as source:
            program = start("-", stdin=source)
        if way == "a pipe":
            data += bytes(300_000)
            threading.Thread(target=lambda: os.fdopen(write_end, "wb").write(data)).start()
        else:
            threading.Thread(target=feed_slowly, args=(write_end, data)).start()
    program.find(SHOWN)
    program.key("u")  # reads it once more
    program.find(SHOWN)
    assert program.stderr() == ""
    assert program.close() == 0


def test_standard_input_that_is_no_picture_is_told(start, folder):
    (folder / "words").write_bytes(b"These are words.\n" * 1000)
    with subprocess.Popen(["cat", str(folder / "words")], stdout=subprocess.PIPE) as source:
        program = start("-", stdin=source.stdout)
        source.stdout.close()
    assert program.wait_for_exit() == 0
    assert "standard input" in program.stderr()


def test_a_pipe_that_delivers_slowly(start):
    read_end, write_end = os.pipe()
    feeder = threading.Thread(target=feed_slowly, args=(write_end, image_form(PICTURE)))
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


NO_INPUT = {
    "from the null device": subprocess.DEVNULL,
    "from a file without a byte": "empty",
    "from a pipe without a byte": "pipe",
}


@pytest.mark.parametrize("kind", NO_INPUT.values(), ids=NO_INPUT.keys())
def test_standard_input_without_a_byte_is_told(start, folder, kind):
    (folder / "empty").write_bytes(b"")
    write(folder / "one", PICTURE)
    with subprocess.Popen(["cat", str(folder / "empty")], stdout=subprocess.PIPE) as cat:
        with open(folder / "empty", "rb") as empty:
            stdin = {"empty": empty, "pipe": cat.stdout}.get(kind, kind)
            program = start("stdin", "one", stdin=stdin)
        cat.stdout.close()
        program.find(SHOWN)
    assert "standard input" in program.stderr()
    assert program.close() == 0


@pytest.mark.parametrize("arguments", [[], ["stdin"]])
def test_standard_input_that_is_closed_is_told(system, start, folder, arguments):
    if system.name == "wine":
        pytest.skip("there a program is always given some standard input")
    program = start(*arguments, stdin="closed")
    assert program.wait_for_exit() == 0
    assert program.stderr().strip() == "standard input is closed"


@pytest.mark.parametrize("length", [0, 5, 2000])
def test_standard_input_that_stalls_is_left_by_an_interrupt(start, length):
    read_end, write_end = os.pipe()
    os.write(write_end, image_form(PICTURE)[:length])
    with os.fdopen(read_end, "rb") as source:
        program = start("stdin", stdin=source)
    try:
        program.interrupt()
        assert program.wait_for_exit() == 0
        assert program.stderr() == ""
    finally:
        os.close(write_end)


# --- named pipes ----------------------------------------------------------------------------------


def named_pipe(system, path):
    if system.name == "wine":
        pytest.skip("there no name of a file is that of a pipe")
    os.mkfifo(path)


def test_a_named_pipe_without_a_writer_is_left_by_an_interrupt(system, start, folder):
    named_pipe(system, folder / "pipe")
    program = start("pipe")
    program.interrupt()
    assert program.wait_for_exit() == 0
    assert program.stderr() == ""


@pytest.mark.parametrize("first, second", [(0, 2000), (2000, 5000)])
def test_a_named_pipe_whose_writer_comes_late_is_waited_for(system, start, folder, first, second):
    named_pipe(system, folder / "pipe")
    data = image_form(PICTURE)
    program = start("pipe")
    program.wait_for_rest(1)
    with open(folder / "pipe", "wb", buffering=0) as pipe:
        for piece in (data[:first], data[first:second], data[second:]):
            pipe.write(piece)
            program.wait_for_rest()
        program.find(SHOWN)
    assert program.close() == 0
    assert program.stderr() == ""


def test_the_window_answers_while_a_named_pipe_has_no_writer(system, start, folder):
    animation = Animation(1, 3).write(folder)
    (folder / "shot.2").unlink()
    named_pipe(system, folder / "shot.2")
    program = start("shot.")
    player = Player(program, animation)
    with program.desktop.covering(player.x, player.y, 20, 20):
        assert player.frame() == 1
    program.find_part(player.animation.landmark())
    assert program.close() == 0


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
    rest_on_first(player, 1.5)
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


# --- commands that misbehave ----------------------------------------------------------------------

LONG = 600_000  # milliseconds; nobody is patient for so long


def command(system, options):
    return f"pipe:{system.emit_command()} {options}"


def commands_left(program):
    return [name for _, name in processes_marked(program.marker) if name.startswith("emit")]


def assert_no_commands_left(program):
    ended = lambda: not commands_left(program)
    wait_until(ended, what=lambda: f"the end of {commands_left(program)}")


FAILING = {
    "fails": "-x 3 empty",
    "fails with words": "absent",
    "writes nothing": "empty",
    "writes words": "words",
    "breaks off": "-c 1000 one",
}


@pytest.mark.parametrize("options", FAILING.values(), ids=FAILING.keys())
def test_a_command_that_brings_no_image_is_named_and_the_next_file_shown(
    system, start, folder, options
):
    (folder / "empty").write_bytes(b"")
    (folder / "words").write_bytes(b"This is no picture, only a text that someone wrote.\n" * 50)
    write(folder / "one", PICTURE)
    other = Picture(colour=noise(100, 70, seed=4))
    write(folder / "two", other)
    program = start(command(system, options), "two")
    program.find(on_screen(other))
    assert "command" in program.stderr() or "emit" in program.stderr()
    assert program.close() == 0


def test_a_command_that_writes_slowly(system, start, folder):
    write(folder / "one", PICTURE)
    program = start(command(system, "-p 60 one"))
    program.find(SHOWN)
    assert program.close() == 0
    assert program.stderr() == ""


@pytest.mark.parametrize("options", ["-w LONG one", "-c 2000 -s LONG one"])
def test_a_command_that_stalls_is_left_by_an_interrupt(system, start, folder, options):
    write(folder / "one", PICTURE)
    program = start(command(system, options.replace("LONG", str(LONG))))
    program.interrupt()
    assert program.wait_for_exit() == 0
    assert program.stderr() == ""
    assert_no_commands_left(program)


ENDINGS = {
    "the window": lambda program: program.system.close_window(program.window()),
    "an interrupt": lambda program: program.interrupt(),
    "termination": lambda program: program.process.send_signal(signal.SIGTERM),
    "a hang-up": lambda program: program.process.send_signal(signal.SIGHUP),
}


@pytest.mark.parametrize("end", ENDINGS.values(), ids=ENDINGS.keys())
def test_a_command_that_has_written_its_image_and_stays_ends_with_the_program(
    system, start, folder, end
):
    if system.name == "wine" and end in (ENDINGS["termination"], ENDINGS["a hang-up"]):
        pytest.skip("there are no such signals there")
    write(folder / "one", PICTURE)
    program = start(command(system, f"-s {LONG} one"))
    program.find(SHOWN)
    program.wait_for_rest()
    assert commands_left(program), "what it still does it may do while the picture is shown"
    end(program)
    assert program.wait_for_exit() == 0
    assert_no_commands_left(program)


# The command itself, a part of it, and one that the command leaves behind as it ends.
STUBBORN = [
    "trap '' TERM; EMIT; echo",
    "(trap '' TERM; EMIT; :) | cat; echo",
    "(trap '' TERM; EMIT; :) & echo; exit",
]


@pytest.mark.parametrize("words", STUBBORN)
def test_a_command_that_will_not_end_is_made_to(system, start, folder, words):
    if system.name == "wine":
        pytest.skip("there an end cannot be refused")
    write(folder / "one", PICTURE)
    program = start("pipe:" + words.replace("EMIT", f"{system.emit_command()} -w {LONG} one"))
    program.interrupt()
    assert program.wait_for_exit() == 0
    assert_no_commands_left(program)


@pytest.mark.parametrize("words", STUBBORN[:2])
def test_one_that_has_written_its_image_and_will_not_end_is_made_to(system, start, folder, words):
    if system.name == "wine":
        pytest.skip("there an end cannot be refused")
    write(folder / "one", PICTURE)
    program = start("pipe:" + words.replace("EMIT", f"{system.emit_command()} -s {LONG} one"))
    program.find(SHOWN)
    assert program.close() == 0
    assert commands_left(program) == []


def told_on_a_terminal(start, name):
    """What the program writes to its terminal until its picture is there."""
    master, slave = os.openpty()
    try:
        program = start(name, stderr=slave)
        program.find(SHOWN)
        assert program.close() == 0
        os.set_blocking(master, False)
        try:
            return os.read(master, 10_000).decode()
        except BlockingIOError:
            return ""
    finally:
        os.close(master)
        os.close(slave)


@pytest.mark.parametrize("options", ["-w 3500 one", "one"])
def test_what_is_waited_for_is_told_on_a_terminal(system, start, folder, options):
    if system.name == "wine":
        pytest.skip("there is no terminal there")
    write(folder / "one", PICTURE)
    name = command(system, options)
    line = f"waiting for {name} (Ctrl+C ends)\r\n"
    told = told_on_a_terminal(start, name)
    if "-w" in options:
        assert told == line
        return
    # A command without delay may be held up by a busy machine, but not each time.
    for _ in range(5):
        assert told in ("", line)
        if not told:
            return
        told = told_on_a_terminal(start, name)
    pytest.fail("a command that brings its picture at once was waited for")


def test_frames_that_take_long_come_while_a_key_is_held(system, start, folder):
    animation = Animation(1, 8).write(folder)
    emit = command(system, f"-w 1700 shot.{system.frame_variable()}")
    player = Player(start("-k", "0", "-n", "1", "8", "1", emit), animation)
    rest_on_first(player, 2.5)
    player.desktop.press("Right")
    assert player.record(4) == [1, 2, 3, 4]
    player.desktop.release("Right")


def test_a_frame_that_is_no_picture_is_told_with_its_name_once(start, folder):
    animation = Animation(1, 3).write(folder)
    (folder / "shot.2").write_bytes(b"")
    program = start("-n", "1", "3", "1", "shot")
    rest_on_first(Player(program, animation))
    assert program.stderr() == "Frame 2 is left out: shot.2: no image found\n"
    assert program.close() == 0


def test_commands_that_stay_do_not_hold_up_an_animation(system, start, folder):
    animation = Animation(1, 7).write(folder)
    options = f"-s {LONG} shot.{system.frame_variable()}"
    program = start("-n", "1", "7", "1", command(system, options))
    player = Player(program, animation)
    rest_on_first(player, 1.5)
    player.step("Right", 2)
    assert program.close() == 0


def stalling_at_second_frame(system, start, folder, *options):
    animation = Animation(1, 3).write(folder)
    (folder / "shot.2").unlink()
    emit = command(system, f"-m {LONG} shot.{system.frame_variable()}")
    program = start(*options, "-n", "1", "3", "1", emit)
    return program, Player(program, animation)


def test_the_window_can_be_closed_while_a_command_stalls(system, start, folder):
    program, player = stalling_at_second_frame(system, start, folder)
    assert player.settled(1.0) == 1
    with program.desktop.covering(player.x, player.y, 20, 20):
        assert player.frame() == 1
    program.find_part(player.animation.landmark())
    assert program.close() == 0
    assert_no_commands_left(program)


def test_escape_ends_a_load_whose_command_stalls(system, start, folder):
    program, player = stalling_at_second_frame(system, start, folder)
    wait_until(lambda: "loading" in program.title(), what="progress in the title")
    assert player.settled(1.0) == 1
    program.key("Escape")
    program.wait_until_loaded()
    assert program.close() == 0
    assert_no_commands_left(program)


def test_keys_act_while_a_command_stalls(system, start, folder):
    program, player = stalling_at_second_frame(system, start, folder, "-k", "0")
    rest_on_first(player, 1.5)
    program.key("Right")  # the frame that does not come
    program.wait_for_rest()
    player.step("Right", 3)
    assert program.close() == 0
    assert_no_commands_left(program)


def test_playing_commands_leaves_no_dead_ones_behind(system, start, folder):
    if system.name == "wine":
        pytest.skip("dead processes take no place there")
    animation = Animation(1, 4).write(folder)
    emit = command(system, f"shot.{system.frame_variable()}")
    program = start("-k", "0", "-n", "1", "4", "1", emit)
    player = Player(program, animation)
    player.playing(20)
    dead = subprocess.run(
        ["ps", "--ppid", str(program.process.pid), "-o", "stat="],
        capture_output=True, text=True, check=False,
    )
    assert dead.stdout.count("Z") <= 3
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
    rest_on_first(player, 1.5)
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
    program.wait_for_rest(1)
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
    assert program.close() == 0


# --- interrupting ---------------------------------------------------------------------------------


def test_closing_the_window_ends_loading(system, start, folder):
    animation = Animation(1, 200, width=32, height=24).write(folder)
    command = f"pipe:{system.emit_command()} -w 3000 shot.{system.frame_variable()}"
    program = start("-n", "1", "200", "1", command)
    Player(program, animation)
    assert program.close() == 0, "loading them all takes ten minutes"
    assert program.stderr() == ""


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
