"""The menu: each item but those of files, sounds and help pages."""

import numpy as np

import rules
import view
from desktop import HEIGHT, WIDTH, wait_until
from dialogs import Dialog
from framefile import Picture, noise, on_screen, shrunk, stored_pixels, write
from menus import choose, menu_picture
from scene import Scene

PICTURE = Picture(colour=noise(101, 75, seed=2), mask=noise(101, 75, seed=3, channels=1))


def show(start, folder, picture, *options):
    write(folder / "one", picture)
    return start(*options, "one")


def window_height(program):
    return program.desktop.rectangle(program.window())[3]


def wait_for_height(program, height):
    what = lambda: f"a window {height} high, not {window_height(program)} {program.report()}"
    wait_until(lambda: window_height(program) == height, what=what)


def test_each_item_of_a_view_shows_its_plane(start, folder):
    scene = Scene(show(start, folder, PICTURE), stored_pixels(PICTURE))
    stored = scene.stored
    expected = {
        "Red Channel": rules.grey(rules.plane(stored, 3)),
        "Green Channel": rules.grey(rules.plane(stored, 2)),
        "Blue Channel": rules.grey(rules.plane(stored, 1)),
        "Alpha Channel": rules.grey(rules.plane(stored, 0)),
        "Luminance": rules.grey(rules.luminance(stored)),
        "All Channels": stored[..., :3],
    }
    for item, picture in expected.items():
        choose(scene.program, item)
        scene.expect(picture, item)


def test_revert_shows_what_is_in_the_file_now_and_exit_ends(start, folder):
    program = show(start, folder, PICTURE)
    program.find(on_screen(PICTURE))
    other = Picture(colour=noise(101, 75, seed=8), mask=PICTURE.mask)
    write(folder / "one", other)
    choose(program, "Revert")
    program.find(on_screen(other))
    choose(program, "Exit")
    assert program.wait_for_exit() == 0
    assert program.stderr() == ""


def test_about_names_the_program_over_the_picture(start, folder):
    program = show(start, folder, PICTURE)
    program.find(on_screen(PICTURE))
    for stroke in ("Return", "Escape"):
        choose(program, "About")
        box = Dialog(program, "About VisTel")
        assert program.shows(on_screen(PICTURE)) is False, "the box lies over the picture"
        box.end(stroke)
        program.find(on_screen(PICTURE))
    program.key("r")  # the keyboard is the picture's again
    program.find(rules.upright(rules.grey(rules.plane(stored_pixels(PICTURE), 3))).low)


def fills_the_screen(program, picture):
    """Whether the picture lies in the middle of the screen and nothing else is on it."""
    packed = program.desktop.packed()
    wanted = on_screen(picture)
    height, width = wanted.shape[:2]
    place = view.place_of(packed, wanted)
    if place != ((WIDTH - width) // 2, HEIGHT - height - (HEIGHT - height) // 2):
        return False
    packed[place[1] : place[1] + height, place[0] : place[0] + width] = view.BAND
    return bool(view.is_band(packed).all())


def test_full_screen_has_no_bar_and_leaves_it_as_it_was(start, folder):
    program = show(start, folder, PICTURE)
    place = program.find_part(on_screen(PICTURE))
    with_bar = window_height(program)
    full = lambda: fills_the_screen(program, PICTURE)
    for height in (with_bar, with_bar - view.CONTROL_BAR):
        wait_for_height(program, height)
        choose(program, "Full Screen")
        wait_until(full, what=lambda: f"the full screen {program.report()}")
        choose(program, "Full Screen")  # there is no menu now
        program.wait_for_rest()
        assert full()
        program.key("Escape")
        wait_for_height(program, height)
        back = lambda: view.place_of(program.desktop.packed(), on_screen(PICTURE)) == place
        wait_until(back, what=lambda: f"the picture in its place {program.report()}")
        if height == with_bar:
            choose(program, "Control Bar")
    assert program.close() == 0


def test_the_bar_comes_and_goes_with_its_mark_and_moves_nothing_of_the_picture(start, folder):
    program = show(start, folder, PICTURE)
    place = program.find_part(on_screen(PICTURE))
    before, marked = window_height(program), menu_picture(program, "v")
    for height in (before - view.CONTROL_BAR, before):
        choose(program, "Control Bar")
        wait_for_height(program, height)
        stays = lambda: view.place_of(program.desktop.packed(), on_screen(PICTURE)) == place
        wait_until(stays, what=lambda: f"the picture in its place {program.report()}")
        looks_the_same = np.array_equal(menu_picture(program, "v"), marked)
        assert looks_the_same == (height == before)


def test_full_resolution_shows_each_pixel_and_is_marked(start, folder):
    picture = Picture(colour=noise(1700, 1300, seed=4))
    program = show(start, folder, picture)
    small = np.ascontiguousarray(shrunk(stored_pixels(picture), 2)[::-1, :, :3])
    program.find_part(small)
    unmarked = menu_picture(program, "v")
    choose(program, "Full Resolution")
    middle = on_screen(picture)[600:700, 800:900]
    x, y = program.find_part(middle)
    left, top, width, height = program.desktop.rectangle(program.window())
    assert left >= 0 and top >= 0 and left + width <= WIDTH and top + height <= HEIGHT
    assert abs((x + 50) - (left + width / 2)) <= 2, "the middle of the picture is in the middle"
    assert not np.array_equal(menu_picture(program, "v"), unmarked)
    choose(program, "Full Resolution")
    program.find_part(small)
    assert np.array_equal(menu_picture(program, "v"), unmarked)
    assert program.close() == 0
