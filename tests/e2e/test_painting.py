"""Painting with the right button: which pixels, which channels, and what stays of it."""

import numpy as np
import pytest

import rules
from desktop import wait_until
from framefile import Picture, noise, stored_pixels, write
from rules import Layout
from scene import Scene

WIDTH, HEIGHT = 101, 75
FULL, EMPTY = 255, 0


@pytest.fixture
def canvas(start, folder):
    picture = Picture(
        colour=noise(WIDTH, HEIGHT),
        mask=noise(WIDTH, HEIGHT, 2, channels=1),
        z=np.random.default_rng(3).uniform(1, 9, (HEIGHT, WIDTH)).astype(np.float32),
    )
    write(folder / "one", picture)
    return Scene(start("one"), stored_pixels(picture))


def stroke(scene, points, modifier=None, zoom=1):
    """Presses the right button at the first point and moves to the others."""
    scene.point(*points[0], zoom)
    if modifier:
        scene.desktop.press(modifier)
    scene.desktop.button(3, True)
    for point in points[1:]:
        scene.point(*point, zoom)
    scene.desktop.button(3, False)
    if modifier:
        scene.desktop.release(modifier)


def line(start, end):
    """Pixels of a line along a row, a column or a diagonal, both ends included."""
    steps = max(abs(end[0] - start[0]), abs(end[1] - start[1]))
    directions = [np.sign(end[i] - start[i]) for i in (0, 1)]
    return [(start[0] + i * directions[0], start[1] + i * directions[1]) for i in range(steps + 1)]


def paint(stored, pixels, channels, value=FULL):
    """`channels`: bytes of the stored pixel."""
    for column, row in pixels:
        for channel in channels:
            stored[row, column, channel] = value


def nearest(point):
    return min(max(point[0], 0), WIDTH - 1), min(max(point[1], 0), HEIGHT - 1)


def draw(scene, points):
    """Draws from point to point, waiting for each line: a system may leave out what lies between
    two places of a mouse that moves fast."""
    scene.point(*points[0])
    scene.desktop.button(3, True)
    for ends in zip(points, points[1:]):
        scene.point(*ends[1])
        paint(scene.stored, line(*map(nearest, ends)), [0, 1, 2])
        scene.expect(scene.stored[..., :3])
    scene.desktop.button(3, False)


VIEWS = {"r": 0, "g": 1, "b": 2, "m": 3}


def test_in_the_view_of_a_channel_that_channel_is_painted(canvas):
    stored = canvas.stored
    for number, (key, byte) in enumerate(VIEWS.items()):
        canvas.key(key, rules.grey(stored[..., byte]))
        for modifier, value, row in ((None, FULL, 10), ("Control_L", EMPTY, 14)):
            ends = (20 + number, row + number), (60, row + number)
            stroke(canvas, ends, modifier)
            paint(stored, line(*ends), [byte], value)
            canvas.expect(rules.grey(stored[..., byte]))
    canvas.key("c", stored[..., :3])
    canvas.key("m", rules.grey(stored[..., 3]))


# Bytes that are filled, and one that is emptied under its complement.
CHOICES = {
    "F1": ([0], []), "F2": ([1], []), "F3": ([2], []), "F4": ([0, 1, 2], []),
    "Shift_L+F1": ([1, 2], [0]), "Shift_L+F2": ([0, 2], [1]), "Shift_L+F3": ([0, 1], [2]),
}


def test_elsewhere_the_control_channel_is_painted(canvas):
    stored = canvas.stored
    for number, (key, (filled, emptied)) in enumerate(CHOICES.items()):
        canvas.program.key(key)
        ends = (8, 5 + 3 * number), (40 + number, 5 + 3 * number)
        stroke(canvas, ends)
        paint(stored, line(*ends), filled)
        paint(stored, line(*ends), emptied, EMPTY)
        canvas.expect(stored[..., :3])
    canvas.key("m", rules.grey(stored[..., 3]))
    canvas.key("l", rules.grey(rules.luminance(stored)))
    canvas.program.key("F4")
    stroke(canvas, [(70, 8), (70, 30)])
    paint(stored, line((70, 8), (70, 30)), [0, 1, 2])
    canvas.expect(rules.grey(rules.luminance(stored)))
    canvas.key("c", stored[..., :3])


def test_lines_join_the_points_and_single_points_do_not(canvas):
    stored = canvas.stored
    draw(canvas, [(10, 10), (40, 10), (40, 30), (25, 45), (25, 12)])
    canvas.program.key("Shift_L+l", "F1")
    canvas.point(60, 10)
    canvas.desktop.button(3, True)
    for point in [(60, 10), (75, 20), (90, 11), (66, 60)]:
        canvas.point(*point)
        paint(stored, [point], [0])
        canvas.expect(stored[..., :3])
    canvas.desktop.button(3, False)
    canvas.point(80, 60)
    canvas.program.key("Shift_R+l", "F2")
    stroke(canvas, [(50, 50), (50, 70)])
    paint(stored, line((50, 50), (50, 70)), [1])
    canvas.expect(stored[..., :3])


def test_an_oblique_line_is_connected_from_end_to_end(canvas):
    painted = lambda: (canvas.picture() == 255).all(axis=-1)
    before = painted().sum()
    stroke(canvas, [(12, 9), (83, 40)])
    count = lambda: painted().sum() - before >= 72
    wait_until(count, what="a line of 72 pixels")
    rows = [np.flatnonzero(painted()[:, column]) for column in range(12, 84)]
    wrong = canvas.differences(rules.upright(canvas.stored[..., :3]))
    assert wrong.sum() == 72
    seen = [HEIGHT - 1 - row[0] for row in rows if len(row)]
    assert len(seen) == 72 and (seen[0], seen[-1]) == (9, 40)
    assert set(np.diff(seen)) <= {0, 1}
    for column, row in zip(range(12, 84), seen):
        assert abs(row - (9 + 31 * (column - 12) / 71)) <= 1


def test_painting_stays_inside_the_picture(canvas):
    outside = [(50, -20), (-25, -20), (-25, 95), (120, 95), (120, 37), (50, 37)]
    draw(canvas, [(50, 37), *outside])
    assert canvas.margin_is_clear()


def test_painting_goes_on_while_the_mouse_is_outside_the_window(canvas):
    draw(canvas, [(30, 20), (30, -300), (-400, -300), (-400, 50), (80, 50)])


def test_the_pixel_under_the_cursor_is_painted_at_every_zoom(canvas):
    layout = Layout(WIDTH, HEIGHT)
    stored = canvas.stored
    for number in range(3):
        layout.zoom_by(1)
        canvas.key("KP_Decimal", layout.seen(stored[..., :3]))
        ends = (3 + number, 4), (3 + number, 12)
        stroke(canvas, ends, zoom=layout.zoom)
        column, row = layout.corner()
        paint(stored, [(x + column, y + row) for x, y in line(*ends)], [0, 1, 2])
        canvas.expect(layout.seen(stored[..., :3]))
    layout.reset()
    canvas.key("Control_L+KP_5", stored[..., :3])


def test_painting_goes_through_the_look_up_table_and_is_undone_by_reloading(canvas):
    before = canvas.stored.copy()
    canvas.key("x", 255 - canvas.stored[..., :3])
    stroke(canvas, [(10, 20), (90, 20)])
    paint(canvas.stored, line((10, 20), (90, 20)), [0, 1, 2])
    canvas.expect(255 - canvas.stored[..., :3])
    canvas.key("x", canvas.stored[..., :3])
    canvas.key("u", before[..., :3])


def test_near_depth_is_painted_with_the_colours_in_the_depth_view(canvas):
    def white(*rows):
        picture = canvas.picture()
        return [(picture[HEIGHT - 1 - row, 10:91] == 255).all() for row in rows]

    canvas.program.key("z")
    stroke(canvas, [(10, 20), (90, 20)])
    wait_until(lambda: white(20) == [True], what="a white line")
    paint(canvas.stored, line((10, 20), (90, 20)), [0, 1, 2])
    canvas.key("c", canvas.stored[..., :3])
    stroke(canvas, [(10, 50), (90, 50)])
    canvas.program.key("z")
    # The colours have both lines; the depth of the second one has stayed.
    wait_until(lambda: white(20, 50) == [True, False], what="the white line of the depth alone")


def test_a_painted_frame_keeps_its_paint_while_it_is_in_memory(play):
    player = play(last=3)
    frames = [stored_pixels(player.animation.picture(n)) for n in (1, 2, 3)]
    scene = Scene(player.program, frames[0])
    stroke(scene, [(4, 30), (60, 30)])
    paint(frames[0], line((4, 30), (60, 30)), [0, 1, 2])
    scene.expect(frames[0][..., :3])
    scene.key("Right", frames[1][..., :3])
    scene.key("Left", frames[0][..., :3])
