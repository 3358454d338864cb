"""The views of a picture: single planes, luminance, depth, relief; labels, missing planes."""

import numpy as np
import pytest

import rules
import view
from desktop import wait_until
from framefile import Picture, Style, blocky, noise, stored_pixels, write
from rules import Layout
from scene import Scene

WIDTH, HEIGHT = 101, 75  # 7575 pixels: three are left over by the blocks of the luminance


def full_picture(seed=1):
    colour = noise(WIDTH, HEIGHT, seed)
    mask = noise(WIDTH, HEIGHT, seed + 10, channels=1)
    z = np.random.default_rng(seed + 20).normal(500, 200, (HEIGHT, WIDTH)).astype(np.float32)
    return Picture(colour=colour, mask=mask, z=z)


@pytest.fixture
def show(start, folder):
    def run(picture, *options, style=None, expected=None):
        write(folder / "one", picture, style)
        return Scene(start(*options, "one"), stored_pixels(picture), expected)

    return run


def test_each_view_shows_its_plane_under_its_name(show):
    picture = full_picture()
    scene = show(picture)
    stored = scene.stored
    views = {
        "r": rules.grey(rules.plane(stored, 3)),
        "g": rules.grey(rules.plane(stored, 2)),
        "b": rules.grey(rules.plane(stored, 1)),
        "a": rules.grey(rules.plane(stored, 0)),
        "l": rules.grey(rules.luminance(stored)),
        "z": rules.grey(rules.depth(picture.z)),
    }
    assert scene.label() == (b"", 0)
    labels = {}
    for stroke, expected in views.items():
        scene.key(stroke, expected)
        labels[stroke], off_centre = scene.label()
        assert labels[stroke] and abs(off_centre) <= 2, f"the label after {stroke}"
        assert scene.margin_is_clear()
    assert len(set(labels.values())) == len(views)
    scene.key("c", stored[..., :3])
    assert scene.label() == (b"", 0)
    for stroke, same_as in (("m", "a"), ("R", "r"), ("Shift_L+g", "g"), ("Control_L+b", "b")):
        scene.key(stroke, views[same_as])
        assert scene.label()[0] == labels[same_as]


def test_the_last_pixels_of_the_luminance_are_black(show):
    scene = show(Picture(colour=np.maximum(noise(WIDTH, HEIGHT), 8)))
    scene.key("l", rules.grey(rules.luminance(scene.stored)))
    assert not scene.picture()[0, -3:].any()
    assert scene.picture()[0, :-3].all()


def test_depth_with_a_modifier_leaves_outliers_out(show):
    picture = full_picture()
    # 3 % at each end are equal, so that every way of counting gives the same limits.
    z = np.random.default_rng(5).uniform(100, 200, HEIGHT * WIDTH)
    order = np.random.default_rng(6).permutation(z.size)
    z[order[:300]], z[order[300:600]] = 100, 200
    z[order[:5]], z[order[300:305]] = -1e6, 1e6
    picture.z = z.reshape(HEIGHT, WIDTH).astype(np.float32)
    scene = show(picture)
    scene.key("z", rules.grey(rules.depth(picture.z)))
    for modifier in ("Shift_L", "Control_R", "Alt_L"):
        scene.key(f"{modifier}+z", rules.grey(rules.depth(picture.z, 100, 200)))
        scene.key("z", rules.grey(rules.depth(picture.z)))


def test_depth_without_numbers_is_black_and_a_flat_one_is_of_one_grey(show, folder):
    picture = full_picture()
    picture.z[3:9, 5:30] = np.inf
    picture.z[20:30, 5:30] = -np.inf
    picture.z[40:50, 5:30] = np.nan
    scene = show(picture)
    scene.key("z", rules.grey(rules.depth(picture.z)))
    picture.z[:] = 7
    write(folder / "one", picture)
    scene.program.key("u")
    flat = lambda: (scene.picture() == scene.picture()[0, 0]).all() and scene.picture()[0, 0, 0]
    wait_until(flat, what="a depth view of one grey")


def test_a_picture_with_depth_alone_shows_it(show):
    picture = Picture(z=full_picture().z)
    scene = show(picture, expected=rules.grey(rules.depth(picture.z)))
    no_colour = {scene.held(stroke) for stroke in "rgblc"}
    assert len(no_colour) == 1
    assert scene.held("m") not in no_colour
    scene.key("n", rules.grey(rules.shade(rules.depth(picture.z), -0.1)))


def test_a_picture_with_a_mask_alone_shows_it(show):
    picture = Picture(mask=noise(WIDTH, HEIGHT, 3, channels=1))
    mask = rules.grey(picture.mask)
    scene = show(picture, expected=mask)
    assert len({scene.held(stroke) for stroke in "rgbl"}) == 1
    scene.key("m", mask)


def test_missing_planes_are_told_in_a_band_while_the_key_is_held(show):
    scene = show(Picture(colour=noise(WIDTH, HEIGHT)))
    colours = scene.stored[..., :3]
    texts = []
    for stroke in ("m", "z"):
        texts.append(scene.held(stroke))
        scene.expect(colours)
        assert scene.margin_is_clear()
    assert texts[0] != texts[1]
    # It is as wide as its text needs, which is wider than the picture.
    scene.desktop.press("m")
    scene.wait_for_band()
    rows, left = scene.message_rows(), scene.place.left
    scene.desktop.release("m")
    black = np.flatnonzero(rows[0] == 0)
    first, last = black[0], black[-1]
    ink = np.flatnonzero((rows == 0xFFFFFF).any(axis=0))
    assert len(black) == last - first + 1 and first < left and last >= left + WIDTH
    assert 5 <= ink[0] - first < 10 and 5 <= last - ink[-1] < 10
    assert (rows[:, :first] == view.BAND).all() and (rows[:, last + 1 :] == view.BAND).all()
    wait_until(lambda: scene.band() is None, what="the end of the message")
    # The band lies on the view that is on the screen.
    red = rules.grey(rules.plane(scene.stored, 3))
    scene.key("r", red)
    assert scene.held("a") == texts[0]
    scene.expect(red)


def test_a_depth_plane_that_was_not_loaded_is_told_apart(show, start, folder):
    scene = show(full_picture(), "-z")
    not_loaded = scene.held("z")
    write(folder / "two", Picture(colour=noise(WIDTH, HEIGHT)))
    scene.program.close()
    other = Scene(start("two"), stored_pixels(Picture(colour=noise(WIDTH, HEIGHT))))
    assert other.held("z") != not_loaded


# --- relief ---------------------------------------------------------------------------------------

RELIEFS = [("r", 3), ("g", 2), ("b", 1), ("m", 0)]


def test_the_relief_of_each_view(show):
    picture = full_picture()
    scene = show(picture)
    heights = {stroke: rules.plane(scene.stored, number) for stroke, number in RELIEFS}
    heights["l"] = rules.luminance(scene.stored)
    heights["z"] = rules.depth(picture.z)
    labels = set()
    for stroke, values in heights.items():
        scene.key(stroke, rules.grey(values))
        for relief, slope in (("n", -0.1), ("i", 0.1)):
            scene.key(relief, rules.grey(rules.shade(values, slope)))
            labels.add(scene.label()[0])
    assert b"" not in labels and len(labels) == 2 * len(heights)
    scene.key("c", scene.stored[..., :3])
    scene.key("n", rules.grey(rules.shade(heights["l"], -0.1)))


def test_the_slope_of_the_relief(show):
    scene = show(full_picture())
    heights = rules.plane(scene.stored, 2)
    scene.key("g", rules.grey(heights))
    scene.key("n", rules.grey(rules.shade(heights, -0.1)))
    slope = np.float32(-0.1)
    steps = [
        ("Up", -0.005), ("Shift_L+Up", -0.05), ("Alt_L+Up", -0.1), ("Down", 0.005),
        ("Shift_R+Down", 0.05), ("Alt_L+Down", 0.1), ("Shift_L+Down", 0.05),
        ("Shift_L+Down", 0.05), ("Alt_L+Down", 0.1),
    ]
    for stroke, step in steps:
        slope += np.float32(step)
        scene.key(stroke, rules.grey(rules.shade(heights, slope)))
    scene.key("Control_L+Up", rules.grey(rules.shade(heights, -0.1)))
    scene.key("Alt_L+Down", rules.grey(rules.shade(heights, 0.0)))
    assert (scene.picture() == 99).all(), "a flat relief"
    scene.key("Control_R+Down", rules.grey(rules.shade(heights, -0.1)))


def test_the_amount_of_colour_in_the_relief(show):
    scene = show(full_picture())
    shades = rules.shade(rules.luminance(scene.stored), -0.1)
    amount = 0
    scene.key("n", rules.relief(scene.stored, shades, 0))
    steps = [
        ("KP_Multiply", 1), ("Shift_L+KP_Multiply", 5), ("Alt_L+KP_Multiply", 10),
        ("KP_Divide", -1), ("Shift_L+KP_Divide", -5),
    ]
    for stroke, step in steps:
        amount += step
        scene.key(stroke, rules.relief(scene.stored, shades, amount))
    scene.key("Control_L+KP_Multiply", rules.relief(scene.stored, shades, 256))
    scene.program.key("KP_Multiply")
    scene.key("KP_Divide", rules.relief(scene.stored, shades, 255))
    scene.key("Control_L+KP_Divide", rules.relief(scene.stored, shades, 0))
    scene.program.key("KP_Divide", "Alt_L+KP_Divide")
    scene.key("Shift_L+KP_Multiply", rules.relief(scene.stored, shades, 5))


def test_a_large_relief_has_the_same_shades(start, folder):
    # Above it there is just room for the label.
    picture = Picture(colour=blocky(1230, 110, block=3))
    write(folder / "one", picture)
    scene = Scene(start("one"), stored_pixels(picture))
    heights = rules.plane(scene.stored, 3)
    scene.key("r", rules.grey(heights))
    scene.key("n", rules.grey(rules.shade(heights, -0.1)))
    scene.key("Alt_L+Up", rules.grey(rules.shade(heights, np.float32(-0.1) - np.float32(0.1))))


PROFILE = {"r": (0x80, 0, 0), "g": (0, 0x80, 0), "b": (0, 0, 0x80), "m": (0, 0x80, 0x80)}


def test_profile_lines_have_the_colour_of_the_view(show):
    scene = show(full_picture())
    for stroke, number in RELIEFS:
        heights = rules.plane(scene.stored, number)
        plain = rules.grey(rules.shade(heights, -0.1))
        scene.key(stroke, rules.grey(heights))
        scene.program.key("Shift_L+n")
        wanted = rules.upright(plain)
        line = lambda: (scene.picture() == PROFILE[stroke]).all(axis=-1)
        wait_until(lambda: line().any(), what=f"profile lines over {stroke}")
        wrong = scene.differences(wanted)
        assert (line() | ~wrong).all(), "what is no line is the relief"
        assert wrong.any(axis=0).all(), "each column has a line"
        scene.key("n", plain)


def with_row(picture, row, colour):
    changed = picture.copy()
    changed[row] = colour
    return changed


def test_profile_lines_stand_on_their_rows_and_rise_with_their_heights(show):
    # Each eighth row is of one height, so its line is level.
    colour = np.zeros((HEIGHT, WIDTH, 3), np.uint8)
    colour[:, :, 0] = (np.arange(HEIGHT) // 8 % 4 * 51)[:, None]
    scene = show(Picture(colour=colour))
    heights = rules.plane(scene.stored, 3)
    shown = rules.grey(rules.shade(heights, -0.1))
    scene.key("r", rules.grey(heights))
    for row in range(0, HEIGHT, 8):
        line = row + int(heights[row, 0] * 32 / 255)
        if line < HEIGHT:
            shown = shown.of(lambda rows: with_row(rows, line, PROFILE["r"]))
    scene.key("Shift_L+n", shown)


# --- outlines of the tiles ------------------------------------------------------------------------


def outlined(seen, layout, rects):
    """A border of one window pixel inside each tile."""
    picture = seen.copy()
    height, width = picture.shape[:2]
    column, row = layout.corner()
    for x1, y1, x2, y2 in rects:
        left, right = (x1 - column) * layout.zoom, (x2 + 1 - column) * layout.zoom - 1
        lower, upper = (y1 - row) * layout.zoom, (y2 + 1 - row) * layout.zoom - 1
        xs = slice(max(left, 0), max(right + 1, 0))
        ys = slice(max(lower, 0), max(upper + 1, 0))
        for y in (lower, upper):
            if 0 <= y < height:
                picture[y, xs] = 255
        for x in (left, right):
            if 0 <= x < width:
                picture[ys, x] = 255
    return picture


def test_the_tiles_are_outlined_while_the_key_is_held(show):
    rects = [(0, 0, 40, 30), (41, 0, 100, 30), (0, 31, 100, 74)]
    scene = show(full_picture(), style=Style(tiles=rects))
    layout, colours = Layout(WIDTH, HEIGHT), scene.stored[..., :3]
    scene.desktop.focus(scene.program.window())
    for _ in range(3):
        scene.desktop.press("F12")
        scene.expect(outlined(layout.seen(colours), layout, rects))
        assert scene.margin_is_clear()
        scene.desktop.release("F12")
        scene.expect(layout.seen(colours))
        layout.zoom_by(1)
        scene.key("KP_Decimal", layout.seen(colours))


# --- views of an animation ------------------------------------------------------------------------


def animation_pictures(folder, masks):
    pictures = []
    for number, has_mask in enumerate(masks, 1):
        mask = noise(64, 48, 100 + number, channels=1) if has_mask else None
        pictures.append(Picture(colour=noise(64, 48, number), mask=mask))
        write(folder / f"shot.{number}", pictures[-1])
    return [stored_pixels(picture) for picture in pictures]


def stopped(start, first):
    program = start("-r", "8", "shot.")
    program.find(rules.upright(first[..., :3]).low)
    program.wait_until_loaded()
    program.key("space", "Control_L+Left")
    return Scene(program, first)


def test_the_view_stays_when_the_frame_changes(start, folder):
    stored = animation_pictures(folder, [True] * 4)
    scene = stopped(start, stored[0])
    for stroke, number in RELIEFS:
        scene.key(stroke, rules.grey(rules.plane(stored[0], number)))
        for index in (1, 2, 3, 0):
            scene.key("Right", rules.grey(rules.plane(stored[index], number)))
    label, off_centre = scene.label(animation=True)
    assert label and abs(off_centre) <= 2
    scene.key("l", rules.grey(rules.luminance(stored[0])))
    scene.key("i", rules.grey(rules.shade(rules.luminance(stored[0]), 0.1)))
    for index in (3, 2, 1):
        scene.key("Left", rules.grey(rules.shade(rules.luminance(stored[index]), 0.1)))
    # And while it plays, no frame is shown in another way.
    scene.key("g", rules.grey(rules.plane(stored[1], 2)))
    greens = [rules.upright(rules.grey(rules.plane(s, 2))) for s in stored]
    scene.program.key("space")
    seen = set()

    def all_seen():
        shown = scene.picture()
        matching = [i for i, wanted in enumerate(greens) if (shown == wanted.low).all()]
        assert matching or (shown[..., 0] == shown[..., 1]).all(), "colours in the green view"
        seen.update(matching)
        return len(seen) == 4

    wait_until(all_seen, what="all frames in green")


def test_a_view_that_a_frame_lacks_comes_back_with_the_next(start, folder):
    stored = animation_pictures(folder, [True, False, True])
    scene = stopped(start, stored[0])
    scene.key("m", rules.grey(rules.plane(stored[0], 0)))
    scene.key("Right", stored[1][..., :3])
    scene.key("Right", rules.grey(rules.plane(stored[2], 0)))


def test_the_depth_of_an_animation_is_loaded_on_demand(start, folder):
    z = [np.random.default_rng(i).normal(0, 1, (48, 64)).astype(np.float32) for i in range(2)]
    for number in (1, 2):
        picture = Picture(colour=noise(64, 48, number), z=z[number - 1])
        write(folder / f"shot.{number}", picture)
    program = start("-Z", "-r", "8", "shot.")
    program.find(rules.upright(noise(64, 48, 1)).low)
    program.wait_until_loaded()
    program.key("space", "Control_L+Left")
    scene = Scene(program, stored_pixels(Picture(colour=noise(64, 48, 1))))
    scene.key("z", rules.grey(rules.depth(z[0])))
    scene.key("Right", rules.grey(rules.depth(z[1])))
    scene.key("n", rules.grey(rules.shade(rules.depth(z[1]), -0.1)))
    scene.key("Left", rules.grey(rules.shade(rules.depth(z[0]), -0.1)))
