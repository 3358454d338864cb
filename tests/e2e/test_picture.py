"""A single image: every pixel, the band around it, the title."""

import numpy as np
import pytest

import view
from desktop import wait_until
from framefile import Picture, Style, noise, on_screen, shrunk, stored_pixels, write


def make(folder, width, height, name="one", **style):
    picture = Picture(colour=noise(width, height))
    write(folder / name, picture, Style(**style))
    return picture


def assert_laid_out(measured, width, height, animation=False):
    """The picture of that many window pixels has exactly its margins."""
    x, y = view.expected_margins(width, height, animation)
    assert measured.margins() == (x, x, y, y)
    assert (measured.width, measured.height) == (width, height)


SIZES = [(100, 60), (320, 144), (319, 143), (1, 200), (400, 30), (64, 300), (640, 480), (333, 217)]


@pytest.mark.parametrize("width, height", SIZES)
def test_an_image_is_shown_pixel_for_pixel_with_its_margins(start, folder, width, height):
    picture = make(folder, width, height)
    measured = start("one").find(on_screen(picture))
    assert_laid_out(measured, width, height)
    assert not measured.text


@pytest.mark.parametrize("option, zoom", [("3", 3), ("8", 8), ("0", 1), ("-2", 1), ("20", 8)])
def test_zoom_makes_blocks_of_screen_pixels(start, folder, option, zoom):
    picture = make(folder, 70, 50)
    measured = start("-m", option, "one").find(view.magnified(on_screen(picture), zoom))
    assert_laid_out(measured, 70 * zoom, 50 * zoom)


SHRINKS = [("2", 2, 200, 120), ("3", 3, 200, 121), ("5", 5, 64, 64), ("0", 1, 80, 40)]


@pytest.mark.parametrize("option, factor, width, height", SHRINKS)
def test_shrinking_takes_the_nearest_sample(start, folder, option, factor, width, height):
    # One tile: with several, each tile's own corner decides which samples are taken.
    picture = make(folder, width, height, tiles=(width, height))
    stored = shrunk(stored_pixels(picture), factor)[::-1, :, :3]
    measured = start("-s", option, "one").find(np.ascontiguousarray(stored))
    assert_laid_out(measured, width // factor, height // factor)


def test_shrinking_by_2_over_many_tiles_of_even_size(start, folder):
    picture = make(folder, 200, 120, tiles=(64, 32))
    stored = shrunk(stored_pixels(picture), 2)[::-1, :, :3]
    start("-s", "2", "one").find(np.ascontiguousarray(stored))


def test_zoom_and_shrink_together(start, folder):
    picture = make(folder, 150, 90, tiles=(150, 90))
    stored = np.ascontiguousarray(shrunk(stored_pixels(picture), 3)[::-1, :, :3])
    measured = start("-s", "3", "-m", "4", "one").find(view.magnified(stored, 4))
    assert_laid_out(measured, 200, 120)


def test_an_image_that_is_wider_than_the_screen_is_shrunk_until_it_fits(start, folder):
    picture = make(folder, 2700, 40, tiles=(2700, 40))
    stored = np.ascontiguousarray(shrunk(stored_pixels(picture), 3)[::-1, :, :3])
    start("one").find(stored)


def test_the_title_names_the_file(start, folder):
    picture = make(folder, 100, 60, name="a picture.iff")
    program = start("a picture.iff")
    program.find(on_screen(picture))
    assert program.title() == "VisTel: a picture.iff"


def test_the_title_tells_what_the_picture_alone_does_not(start, folder):
    picture = make(folder, 100, 60)
    program = start("-m", "2", "one", "one")
    program.find(view.magnified(on_screen(picture), 2))
    titled = lambda end: wait_until(
        lambda: program.title() == f"VisTel: one{end} (file 1 of 2)",
        what=lambda: f"{end} in the title {program.title()}",
    )
    titled(" x2")
    program.key("g")
    titled(" x2, Green")
    program.key("x", "KP_Decimal")
    titled(" x3, Green, corrected colours")
    program.key("x", "c", "KP_0")
    titled(" x2")


def test_a_name_outside_ascii_is_shown_and_opened(start, folder):
    picture = make(folder, 100, 60, name="größe-日本.iff")
    program = start("größe-日本.iff")
    program.find(on_screen(picture))
    assert program.title() == "VisTel: größe-日本.iff"


def test_a_relative_name_with_a_folder_opens(start, folder):
    (folder / "sub").mkdir()
    picture = make(folder / "sub", 100, 60)
    program = start("sub/one")
    program.find(on_screen(picture))
    assert program.title() == "VisTel: sub/one"


def test_a_second_file_in_another_folder_is_looked_up_from_where_the_user_stands(start, folder):
    (folder / "sub").mkdir()
    write(folder / "sub" / "empty", Picture(colour=noise(8, 8)))
    (folder / "sub" / "empty").write_bytes(b"")
    picture = make(folder, 100, 60, name="two")
    start("sub/empty", "two").find(on_screen(picture))


def test_a_picture_is_found_under_the_project_folder(start, folder):
    place = folder / "work" / "image" / "film"
    place.mkdir(parents=True)
    picture = make(place, 100, 60)
    start("-W", "work", "-P", "film", "one").find(on_screen(picture))


def test_closing_the_window_ends_with_status_0(start, folder):
    picture = make(folder, 100, 60)
    program = start("one")
    program.find(on_screen(picture))
    assert program.close() == 0
    assert program.stderr() == ""
    assert program.stdout() == ""


def test_the_picture_comes_back_after_it_was_covered(start, folder):
    picture = make(folder, 200, 160)
    program = start("one")
    place = program.find(on_screen(picture))
    with program.desktop.covering(place.x - 20, place.y - 20, 150, 100):
        assert not program.shows(on_screen(picture))
    program.find(on_screen(picture))
