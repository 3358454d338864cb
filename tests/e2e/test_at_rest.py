"""While the user looks at a picture the program holds no file of it, no pipe and no ended command:
a renderer can replace the file, and nothing is left over from reading it."""

import os
from pathlib import Path

import pytest
from PIL import Image

from desktop import wait_until
from framefile import Picture, noise, on_screen, write
from program import SHARED, processes_marked

PICTURE = Picture(colour=noise(120, 90, seed=5))
SHOWN = on_screen(PICTURE)


def holders(file):
    """The processes that have the file open; under Wine that is its server."""
    found = []
    for entry in Path("/proc").glob("[0-9]*/fd/*"):
        try:
            if os.readlink(entry) == str(file):
                found.append(entry.parts[2])
        except OSError:
            continue
    return found


def started_by(program):
    """Names of what the program has started and of what has ended and was not collected."""
    me = program.process.pid
    names = [
        name
        for number, name in processes_marked(program.marker)
        if number != me and name not in SHARED and name != "vistel.exe"
    ]
    for entry in Path("/proc").glob("[0-9]*/stat"):
        try:
            fields = entry.read_text().rpartition(")")[2].split()
        except OSError:
            continue
        if fields[0] == "Z" and int(fields[1]) == me:
            names.append("an ended child")
    return names


def expect_rest(program, *files):
    for file in files:
        wait_until(lambda: not holders(file), what=lambda: f"{file} closed, not by {holders(file)}")
    wait_until(lambda: not started_by(program), what=lambda: f"nothing left: {started_by(program)}")


def test_a_frame_file_is_closed_while_it_is_shown(start, folder):
    one = write(folder / "one", PICTURE)
    program = start("one")
    program.find(SHOWN)
    expect_rest(program, one)
    other = Picture(colour=noise(120, 90, seed=6))
    os.replace(write(folder / "next", other), one)
    program.key("u")
    program.find(on_screen(other))
    expect_rest(program, one)


def test_a_foreign_file_and_its_converter_are_gone_while_it_is_shown(start, folder):
    one = folder / "one.png"
    Image.fromarray(SHOWN).save(one)
    program = start("one.png")
    program.find(SHOWN)
    expect_rest(program, one)


@pytest.mark.parametrize("options", ["", "-s 500"])
def test_a_command_that_has_ended_is_collected(start, system, folder, options):
    write(folder / "one", PICTURE)
    program = start(f"pipe:{system.emit_command()} {options} one")
    program.find(SHOWN)
    expect_rest(program)


def test_the_first_frame_of_an_animation_is_closed_while_it_plays(start, folder):
    frames = [write(folder / f"shot.{number}", PICTURE) for number in (1, 2, 3)]
    program = start("shot.")
    program.find(SHOWN)
    program.wait_until_loaded()
    expect_rest(program, *frames)


def test_only_the_file_of_a_one_file_animation_stays_open(start, folder):
    forms = write(folder / "form", PICTURE).read_bytes()
    (folder / "film").write_bytes(forms * 3)
    program = start("-N", "-n", "1", "3", "1", "film")
    program.find(SHOWN)
    program.wait_until_loaded()
    assert holders(folder / "film"), program.report()
