"""Files and folders dropped on the window."""

from contextlib import closing

from dialogs import Dialog
from drops import Source
from framefile import Animation, Picture, noise, on_screen, write
from program import Player

PICTURE = Picture(colour=noise(200, 100, seed=5))
OTHER = Picture(colour=noise(180, 120, seed=6))


def drop(program, *paths):
    window = program.window()
    left, top, width, height = program.desktop.rectangle(window)
    with closing(Source(program.desktop, paths)) as source:
        return source.drop(window, left + width // 2, top + height - 20)


def test_files_and_folders_that_are_dropped_are_opened(start, folder):
    write(folder / "one", PICTURE)
    program = start("one")
    program.find(on_screen(PICTURE))
    write(folder / "other one.iff", OTHER)  # blanks are written otherwise in the list
    assert drop(program, folder / "other one.iff")
    program.find(on_screen(OTHER))
    (folder / "empty").mkdir()
    assert drop(program, folder / "empty")
    Dialog(program, "VisTel").end("Return")
    program.find(on_screen(OTHER))
    (folder / "shots").mkdir()
    animation = Animation(last=4).write(folder / "shots")
    assert drop(program, folder / "shots")
    player = Player(program, animation)
    player.pause()
    player.rewind()
    player.step("Right", 2)
    Animation(11, 14, width=80).write(folder, "next.{}")
    assert drop(program, folder / "next.14", folder / "next.12")  # from the lower number on
    player = Player(program, Animation(12, 14, width=80))
    player.pause()
    player.rewind()
    player.step("Left", 14)
    assert program.close() == 0
