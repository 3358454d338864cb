"""The dialogs for files: what is typed and chosen in them is what is opened, saved, imported."""

import io
import time

import numpy as np
import pytest
from PIL import Image

import rules
import soundfile
from desktop import wait_until
from dialogs import Dialog, answer_file
from framefile import Animation, Picture, noise, on_screen, shrunk, stored_pixels, write
from menus import choose, menu_picture
from program import Player
from scene import Scene
from sound_server import SoundServer
from test_saving import same, saved

OTHER = Picture(colour=noise(200, 100, seed=5))


def show(start, folder, picture, name="one"):
    write(folder / name, picture)
    program = start(name)
    program.find(on_screen(picture))
    return program


def lines_at_the_end(program, text):
    wait_until(lambda: text in program.stderr(), what=lambda: f"{text!r} {program.report()}")


# --- opening --------------------------------------------------------------------------------------


def test_an_image_is_opened_over_a_running_animation(start, folder):
    animation = Animation(last=9).write(folder)
    write(folder / "other.1", OTHER)
    program = start("shot.")
    program.find_part(animation.landmark())
    choose(program, "Open Image")
    answer_file(program, "Open", "other.1")
    program.find_part(on_screen(OTHER))
    assert program.close() == 0


def test_the_folder_of_the_last_file_is_where_the_next_dialog_starts(start, folder):
    (folder / "sub").mkdir()
    write(folder / "sub" / "other.1", OTHER)
    third = Picture(colour=noise(150, 120, seed=6))
    write(folder / "sub" / "third.1", third)
    picture = Picture(colour=noise(180, 100, seed=7))
    program = show(start, folder, picture)
    choose(program, "Open Image")
    below = "sub\\other.1" if program.system.name == "wine" else "sub/other.1"
    answer_file(program, "Open", below)
    program.find_part(on_screen(OTHER))
    choose(program, "Open Image")
    answer_file(program, "Open", "third.1")
    program.find_part(on_screen(third))
    assert program.close() == 0
    again = start()  # also in the next run
    again.window()
    choose(again, "Open Image")
    answer_file(again, "Open", "third.1")
    again.find_part(on_screen(third))


def test_an_animation_is_opened_by_a_frame_with_what_the_fields_say(start, folder):
    Animation(last=9).write(folder)
    program = show(start, folder, OTHER)
    choose(program, "Open Animation")
    answer_file(program, "Open", "shot.3", end=6, zoom=2)
    shown = Animation(3, 6)
    half = shown.landmark().repeat(2, axis=0).repeat(2, axis=1)
    x, y = program.find_part(half)
    program.wait_until_loaded()
    assert "x2" in program.title()
    program.key("space")

    def number():
        packed = program.desktop.pixel(x + half.shape[1] + 3, y + 3)
        return shown.number_of((packed >> 16, packed >> 8 & 255, packed & 255))

    for stroke, expected in (("Control_L+Left", 3), ("Control_L+Right", 6), ("Left", 5)):
        program.key(stroke)
        wait_until(lambda: number() == expected, what=lambda: f"frame {expected}, not {number()}")
    assert program.close() == 0


def test_an_animation_is_shrunk_and_has_its_depth_when_that_is_asked_for(start, folder):
    z = np.random.default_rng(3).normal(500, 200, (150, 202)).astype(np.float32)
    picture = Picture(colour=noise(202, 150, seed=9), z=z)
    for number in (1, 2):
        write(folder / f"deep.{number}", picture)
    program = show(start, folder, OTHER)
    choose(program, "Open Animation")
    answer_file(program, "Open", "deep.1", shrink=2, depth=True)
    small = shrunk(stored_pixels(picture), 2)
    program.find(np.ascontiguousarray(small[::-1, :, :3]))
    program.wait_until_loaded()
    program.key("space")
    program.wait_for_rest()
    scene = Scene(program, small)  # the window may have moved until now
    scene.key("z", rules.grey(rules.depth(shrunk(z, 2))))
    assert program.close() == 0


def test_a_file_that_is_not_there_is_told_in_the_dialog(system, start, folder):
    if system.name != "linux":
        pytest.skip("the dialog is the system's own there")
    program = show(start, folder, OTHER)
    choose(program, "Open Image")
    dialog = Dialog(program, "Open")
    dialog.type("none.1")
    dialog.key("Return")
    program.wait_for_rest()
    Dialog(program, "Open", after=dialog).end("Return")
    dialog.end("Escape")
    program.find(on_screen(OTHER))


def test_a_file_without_a_picture_leaves_what_is_on_screen(start, folder):
    animation = Animation(last=9).write(folder)
    (folder / "broken.1").write_text("no picture")
    program = start("shot.")
    program.find_part(animation.landmark())
    choose(program, "Open Image")
    answer_file(program, "Open", "broken.1")
    Dialog(program, "VisTel").end("Return")
    program.find_part(animation.landmark())
    assert program.close() == 0


def test_a_cancelled_dialog_changes_nothing(start, folder):
    player = Player(start("shot."), Animation(last=3).write(folder))
    player.pause()
    player.rewind()
    program = player.program
    title, files = program.title(), sorted(folder.iterdir())
    captions = {"Open Image": "Open", "Open Animation": "Open", "Import Sound": "Open",
                "Save Image": "Save As", "Save Animation": "Save As"}
    for item, caption in captions.items():
        choose(program, item)
        dialog = Dialog(program, caption)
        dialog.type("shot.2")
        program.wait_for_rest(0.1)
        while dialog.there():  # the first one may only close a list of names
            dialog.key("Escape")
            program.wait_for_rest(0.2)
        assert player.settled() == 1 and program.title() == title, item
    assert sorted(folder.iterdir()) == files
    assert program.close() == 0


def test_the_help_of_a_dialog_lies_over_it(system, start, folder):
    if system.name != "linux":
        pytest.skip("the button tells the program nothing there")
    program = show(start, folder, OTHER)
    choose(program, "Save Image")
    dialog = Dialog(program, "Save As")
    dialog.key("Tab", "Tab", "Tab", "space")
    Dialog(program, "Help on Opening and Saving Images").end("Return")
    dialog.end("Escape")


# --- saving ---------------------------------------------------------------------------------------


def test_an_image_is_saved_and_replaced_only_after_yes(start, folder):
    picture = Picture(colour=noise(101, 75, seed=1), mask=noise(101, 75, seed=2, channels=1))
    program = show(start, folder, picture)
    (folder / "kept.iff").write_bytes(b"older")
    for answer in ("n", "Return", "y"):  # it is No that a Return typed too much gives
        choose(program, "Save Image")
        dialog = answer_file(program, "Save As", "kept.iff")
        Dialog(program, "Save As", after=dialog).end(answer)
        program.wait_for_rest()
        if answer != "y":
            assert (folder / "kept.iff").read_bytes() == b"older"
            assert "Writing" not in program.stderr()
    lines_at_the_end(program, "done")
    assert same(saved(folder / "kept.iff"), picture)
    assert program.close() == 0


def test_an_image_is_saved_in_the_chosen_type(start, folder):
    picture = Picture(colour=noise(101, 75, seed=1), mask=noise(101, 75, seed=2, channels=1))
    program = show(start, folder, picture)
    choose(program, "Save Image")
    answer_file(program, "Save As", "new.png", type_letters="p")
    lines_at_the_end(program, "done")
    data = (folder / "new.png").read_bytes()
    pixels = np.asarray(Image.open(io.BytesIO(data)))[::-1]
    assert data[1:4] == b"PNG"
    assert np.array_equal(pixels, np.dstack([picture.colour, picture.mask]))


def test_every_frame_of_an_animation_is_saved_under_its_number(start, folder):
    animation = Animation(last=4).write(folder)
    player = Player(start("shot."), animation)
    player.pause()
    player.rewind()
    program = player.program
    # Marks for the number, in a type of its own; and a number put before the type.
    choose(program, "Save Animation")
    answer_file(program, "Save As", "new##.png", type_letters="p")
    lines_at_the_end(program, "4 of 4 frames written")
    for number in animation.numbers:
        pixels = np.asarray(Image.open(folder / f"new{number:02}.png").convert("RGB"))[::-1]
        assert np.array_equal(pixels, animation.picture(number).colour)
    player.rewind()
    choose(program, "Save Animation")
    answer_file(program, "Save As", "own.iff")
    wait_until(lambda: program.stderr().count("4 of 4 frames written") == 2, what="the end")
    for number in animation.numbers:
        assert same(saved(folder / f"own{number}.iff"), animation.picture(number))
    assert program.close() == 0


# --- sound ----------------------------------------------------------------------------------------


def test_without_a_sound_service_one_line_tells_and_the_pictures_go_on(start, folder):
    player = Player(start("shot."), Animation(last=6).write(folder))
    player.pause()
    player.rewind()
    program = player.program
    (folder / "noise.wav").write_bytes(soundfile.wave(soundfile.noise(4410)))
    grey = menu_picture(program, "f")
    choose(program, "Toggle Sound")  # grey: there is none
    program.desktop.key("Escape")
    program.wait_for_rest()
    program.desktop.key("Escape")
    assert np.array_equal(menu_picture(program, "f"), grey)
    choose(program, "Import Sound")
    answer_file(program, "Open", "noise.wav")
    lines_at_the_end(program, "noise.wav is not played")
    assert program.stderr().count("not played") == 1
    program.wait_for_rest(0.2)  # the keyboard comes back a moment after the dialog has gone
    program.key("space")
    player.playing()
    assert program.close() == 0


def test_an_imported_sound_begins_with_the_frame_of_its_offset(start, folder, tmp_path):
    server = SoundServer(tmp_path / "sound")
    try:
        animation = Animation(last=20).write(folder)
        (folder / "noise.wav").write_bytes(soundfile.wave(soundfile.noise(8820)))  # 0.2 s
        player = Player(start("-r", "10", "shot.", environment=server.environment), animation)
        player.pause()
        program = player.program
        silent = menu_picture(program, "f")
        program.key("space")
        choose(program, "Import Sound")
        began = time.monotonic()
        answer_file(program, "Open", "noise.wav", offset=11)
        player.wait_for(11)
        shown = time.monotonic()
        wait_until(lambda: len(server.starts(began)), what=lambda: f"a sound {program.report()}")
        assert abs(server.starts(began)[0] - shown) < 0.5, "1 second after the first frame"
        player.pause()
        assert not np.array_equal(menu_picture(program, "f"), silent), "the item is there now"
        choose(program, "Toggle Sound")  # off
        program.key("space")
        program.wait_for_rest()
        muted = time.monotonic()
        for frame in (10, 20, 10, 20):
            player.wait_for(frame)
        assert not len(server.starts(muted)), "silence"
        choose(program, "Toggle Sound")
        player.wait_for(11)
        wait_until(lambda: len(server.starts(muted)), what=lambda: f"a sound {program.report()}")
        assert program.close() == 0
    finally:
        server.close()
