"""Zoom, pan and scrubbing: which image pixels are seen, to the pixel; windows of every kind."""


import numpy as np
import pytest

import rules
import view
from desktop import HEIGHT, WIDTH, wait_until
from framefile import Animation, Picture, Style, noise, on_screen, shrunk, stored_pixels, write
from program import Player
from rules import Layout
from scene import Scene


class Moved:
    """A scene whose part and size on the screen follow the keys."""

    def __init__(self, scene, layout):
        self.scene, self.layout = scene, layout
        self.shown = scene.stored[..., :3]

    def expect(self):
        self.scene.expect(self.layout.seen(self.shown))
        assert self.scene.margin_is_clear()

    def key(self, stroke):
        self.scene.key(stroke, self.layout.seen(self.shown))
        assert self.scene.margin_is_clear()

    def zoom(self, direction):
        self.layout.zoom_by(direction)
        self.key("KP_Decimal" if direction > 0 else "KP_0")

    def move(self, stroke, x, y):
        self.layout.move(x, y)
        self.key(stroke)


def show(start, folder, width, height, *options, zoom=1, shrink=1, visible=None):
    picture = Picture(colour=noise(width, height))
    # One tile: with several, each tile's own corner decides which samples are taken.
    write(folder / "one", picture, Style(tiles=(width, height)))
    stored = stored_pixels(picture)
    if shrink > 1:
        stored = np.ascontiguousarray(shrunk(stored, shrink))
    layout = Layout(stored.shape[1], stored.shape[0], zoom, visible)
    if visible:
        layout.move(*((layout.size[i] - visible[i]) / 2 for i in (0, 1)))
    scene = Scene(start(*options, "one"), stored, layout.seen(stored[..., :3]))
    return Moved(scene, layout)


# Sizes whose visible side divides by the zooms, and not; smaller than the smallest window, and not.
ZOOMED = [(101, 75, 1), (96, 60, 1), (400, 301, 1), (61, 200, 2)]


@pytest.mark.parametrize("width, height, zoom", ZOOMED)
def test_zooming_keeps_the_centre_and_shows_whole_blocks(start, folder, width, height, zoom):
    moved = show(start, folder, width, height, "-m", str(zoom), zoom=zoom)
    margins = view.expected_margins(width * zoom, height * zoom)
    assert moved.scene.place.margins() == (margins[0], margins[0], margins[1], margins[1])
    for direction in (1, 1, 1, 1, 1, -1, 1, -1, -1, -1, -1, -1):
        moved.zoom(direction)
    assert moved.layout.zoom == zoom, "back where it began"
    moved.zoom(-1)  # the start-up zoom is the smallest
    assert moved.layout.zoom == zoom


MOVES = {
    7: (1, -1), 8: (0, -1), 9: (-1, -1),
    4: (1, 0), 6: (-1, 0),
    1: (1, 1), 2: (0, 1), 3: (-1, 1),
}


def test_the_keypad_moves_the_picture(start, folder):
    moved = show(start, folder, 240, 180)
    for _ in range(3):
        moved.zoom(1)
    for digit, (x, y) in MOVES.items():
        moved.move(f"KP_{digit}", x, y)
    steps = {"Shift_L": 5, "Shift_R": 5, "Alt_L": 10, "Alt_L+Shift_L": 20, "Control_L": 0}
    for modifier, step in steps.items():
        for digit in (1, 6, 8, 4, 9):
            x, y = MOVES[digit]
            moved.move(f"{modifier}+KP_{digit}", x * step, y * step)
    moved.key("KP_5")
    moved.layout.reset()
    moved.key("Control_L+KP_5")


def test_the_picture_stops_at_its_edges(start, folder):
    moved = show(start, folder, 160, 120)
    moved.move("Alt_L+KP_1", 10, 10)  # nothing is hidden: nothing moves
    assert moved.layout.corner() == (0, 0)
    for _ in range(2):
        moved.zoom(1)
    for _ in range(4):
        moved.move("Alt_L+Shift_L+KP_9", -20, -20)
    assert moved.layout.corner() == (0, 0)
    for _ in range(6):
        moved.move("Alt_L+Shift_L+KP_1", 20, 20)
    assert moved.layout.pan[0] + 160 / 3 <= 160 and moved.layout.pan[0] > 100
    moved.move("KP_9", -1, -1)
    moved.zoom(-1)
    moved.zoom(-1)


def test_zoom_and_pan_of_a_shrunk_picture(start, folder):
    moved = show(start, folder, 180, 150, "-s", "3", "-m", "2", zoom=2, shrink=3)
    moved.zoom(1)
    moved.zoom(1)
    moved.move("Shift_L+KP_1", 5, 5)
    moved.move("KP_8", 0, -1)
    moved.layout.reset()
    moved.key("Control_R+KP_5")


def test_views_are_moved_with_the_picture(start, folder):
    moved = show(start, folder, 101, 75)
    moved.zoom(1)
    moved.zoom(1)
    moved.shown = rules.grey(rules.luminance(moved.scene.stored)).low
    moved.key("l")
    moved.move("KP_1", 1, 1)
    moved.shown = moved.scene.stored[..., :3]
    moved.key("c")


def test_a_picture_larger_than_the_screen_starts_at_its_centre_and_can_be_moved(start, folder):
    visible = (WIDTH - 120, HEIGHT - 120)
    moved = show(start, folder, 1700, 1300, "-F", visible=visible)
    moved.move("Alt_L+Shift_L+KP_1", 20, 20)
    moved.zoom(1)
    moved.move("Shift_L+KP_6", -5, 0)
    moved.layout.reset()
    moved.key("Control_L+KP_5")


# --- the mouse ------------------------------------------------------------------------------------


def drag(moved, steps, modifier=None):
    """Presses the left button in the picture and moves by each step (x, y up) in turn."""
    scene = moved.scene
    x, y = scene.at(scene.width // 2, scene.height // 2)
    scene.desktop.move_pointer(x, y)
    if modifier:
        scene.desktop.press(modifier)
    scene.desktop.button(1, True)
    divisor = 1 if modifier and modifier.startswith("Alt") else moved.layout.zoom
    for across, up in steps:
        x, y = x + across, y - up
        scene.desktop.move_pointer(x, y)
        moved.layout.move(-np.float32(across) / divisor, -np.float32(up) / divisor)
        moved.expect()
    scene.desktop.button(1, False)
    scene.desktop.move_pointer(x + 9, y + 9)
    if modifier:
        scene.desktop.release(modifier)
    moved.move("KP_4", 1, 0)  # the drag is over


def test_the_left_button_drags_an_image(start, folder):
    moved = show(start, folder, 240, 180)
    moved.zoom(1)
    drag(moved, [(-20, 8), (7, -30), (1, 0), (0, 1), (-1, -1)])
    moved.zoom(1)
    drag(moved, [(-12, -3), (2, 4), (-1, 1)])
    drag(moved, [(11, 7), (-30, -1)], "Alt_L")
    drag(moved, [(9, 6)], "Shift_L")


def test_a_drag_begins_where_the_cursor_was_before_there_was_a_window(system, start, folder):
    x, y = WIDTH // 2 + 13, HEIGHT // 2 - 7
    system.desktop.move_pointer(x, y)
    moved = show(start, folder, 400, 300)
    moved.zoom(1)
    system.desktop.button(1, True)
    moved.scene.program.wait_for_rest()  # seen before the first move
    system.desktop.move_pointer(x - 20, y - 8)
    moved.layout.move(np.float32(20) / 2, np.float32(-8) / 2)
    moved.expect()
    system.desktop.button(1, False)
    moved.move("KP_4", 1, 0)


def test_a_drag_ends_where_the_button_was_released(start, folder):
    moved = show(start, folder, 240, 180)
    moved.zoom(1)
    desktop, (x, y) = moved.scene.desktop, moved.scene.at(120, 90)
    for _ in range(5):
        desktop.move_pointer(x, y)
        desktop.button(1, True)
        for across in (4, 9, 16):
            desktop.move_pointer(x - across, y)
        desktop.button(1, False)
        for across in (40, -60, 5):  # with no button held
            desktop.move_pointer(x + across, y + across)
        moved.layout.move(np.float32(16) / 2, 0)
        moved.expect()
    moved.move("KP_6", -1, 0)


FRAMES = 40  # 8 window pixels of travel for a frame: (64 - 8 + 2 * 128) / 39


def test_the_left_button_scrubs_through_an_animation(play):
    player = play("-r", "8", last=FRAMES)
    desktop, x, y = player.desktop, player.x + 20, player.y + 20
    desktop.move_pointer(x, y)
    desktop.button(1, True)
    places = [(8, 2), (16, 3), (15, 2), (80, 11), (79, 10), (-7, 1), (240, 31), (-300, 1)]
    for travel, frame in places:
        desktop.move_pointer(x + travel, y)
        player.wait_for(frame)
    desktop.move_pointer(x + 500, y)
    player.wait_for(FRAMES)
    desktop.move_pointer(x + 40, y)
    player.wait_for(6)
    desktop.button(1, False)
    desktop.move_pointer(x + 300, y)
    player.step("Right", 7)
    # In steps, of at most 20 pixels' travel, and within the range.
    player.program.key("3", "Shift_L+comma")
    desktop.move_pointer(x, y)
    desktop.button(1, True)
    for travel, frame in ((20, 10), (19, 7), (59, 13), (60, 16), (-300, 7), (700, 40)):
        desktop.move_pointer(x + travel, y)
        player.wait_for(frame)
    desktop.button(1, False)


def test_a_scrub_ends_where_the_button_was_released(play):
    player = play(last=FRAMES)
    desktop, x, y = player.desktop, player.x + 20, player.y + 20
    for frame in (4, 7, 10, 13):
        desktop.move_pointer(x, y)
        desktop.button(1, True)
        for travel in (3, 16, 24):  # three frames
            desktop.move_pointer(x + travel, y)
        desktop.button(1, False)
        for travel in (-40, 200, 80):
            desktop.move_pointer(x + travel, y)
        player.wait_for(frame)
        assert player.settled() == frame


def test_a_few_frames_are_scrubbed_by_20_pixels_each(play):
    player = play(last=6)
    desktop, x, y = player.desktop, player.x + 20, player.y + 20
    desktop.move_pointer(x, y)
    desktop.button(1, True)
    for travel, frame in ((20, 2), (40, 3), (39, 2), (19, 1), (100, 6)):
        desktop.move_pointer(x + travel, y)
        player.wait_for(frame)
    desktop.button(1, False)


def test_scrubbing_holds_playback_until_the_button_is_released(start, folder):
    animation = Animation(last=FRAMES).write(folder)
    player = Player(start("-r", "12", "shot."), animation)
    player.playing(2)
    desktop, x, y = player.desktop, player.x + 20, player.y + 20
    desktop.move_pointer(x, y)
    desktop.button(1, True)
    stopped_on = player.settled()
    desktop.move_pointer(x + 24, y)
    player.wait_for(min(stopped_on + 3, FRAMES))
    assert player.settled() == min(stopped_on + 3, FRAMES)
    desktop.button(1, False)
    player.playing(3)


def test_a_modifier_drags_the_picture_of_an_animation(play):
    player = play(last=3)
    stored = stored_pixels(player.animation.picture(1))
    moved = Moved(Scene(player.program, stored), Layout(64, 48))
    moved.zoom(1)
    moved.zoom(1)
    drag(moved, [(-9, 6), (3, 3)], "Control_L")
    # Zoom and pan stay when the frame changes.
    moved.shown = stored_pixels(player.animation.picture(2))[..., :3]
    moved.key("Right")


# --- windows --------------------------------------------------------------------------------------


def test_a_frame_of_another_size_is_centred_in_the_window(start, folder):
    sizes = [(200, 160), (150, 120), (61, 40)]
    pictures = [Picture(colour=noise(*size, seed=n)) for n, size in enumerate(sizes, 1)]
    for number, picture in enumerate(pictures, 1):
        write(folder / f"shot.{number}", picture)
    program = start("-r", "8", "shot.")
    program.find_part(on_screen(pictures[0]))
    program.wait_until_loaded()
    program.key("space", "Control_L+Left")
    first = Scene(program, stored_pixels(pictures[0]))
    left, top, right, bottom = first.client()
    margin = [first.place.left, first.place.bottom]
    for picture, size, before in zip(pictures[1:], sizes[1:], sizes):
        program.key("Right")
        place = program.find_part(on_screen(picture))
        # Half of what the sides became smaller, fractions cut off.
        margin = [margin[i] + (before[i] - size[i]) // 2 for i in (0, 1)]
        assert place == (left + margin[0], bottom - margin[1] - size[1])
    program.key("Right")
    assert program.find_part(on_screen(pictures[0])) == (first.place.x, first.place.y)


def window_round(size):
    """Sides of the window that an animation with frames of that size has."""
    across, up = view.expected_margins(*size, animation=True)
    return size[0] + 2 * across, size[1] + 2 * up


def test_a_larger_frame_makes_the_window_grow_which_stays_so(start, folder):
    sizes = [(150, 120), (420, 160), (200, 330)]
    pictures = [Picture(colour=noise(*size, seed=n)) for n, size in enumerate(sizes, 1)]
    for number in (1, 2, 3):
        write(folder / f"shot.{number}", pictures[0])
    # Frames are read when they are shown: they become larger once playing has stopped.
    program = start("-r", "8", "shot.", environment={"VISTEL_MEMORY": "0"})
    program.find_part(on_screen(pictures[0]))
    program.wait_until_loaded()
    program.key("space", "Control_L+Left")
    program.wait_for_rest()
    for number in (2, 3):
        write(folder / f"shot.{number}", pictures[number - 1])
    window = window_round(sizes[0])

    def expect(picture, size):
        place = program.find_part(on_screen(picture))
        left, top, width, height = program.desktop.rectangle(program.window())
        # The picture is in the middle of a client area of the window's sides; below and beside it
        # the window has a border of less than ten pixels.
        assert abs((width - window[0]) - 2 * (place[0] - left - (window[0] - size[0]) // 2)) <= 1
        assert 0 <= width - window[0] < 20
        below = top + height - place[1] - size[1]
        assert 0 <= below - (window[1] - size[1]) // 2 < 10

    expect(pictures[0], sizes[0])
    program.key("Right")
    window = tuple(map(max, window, window_round(sizes[1])))
    expect(pictures[1], sizes[1])
    program.key("Right")
    window = window_round((420, 330))
    expect(pictures[2], sizes[2])
    for number in (0, 1, 2, 0):
        program.key("Right")
        expect(pictures[number], sizes[number])
    write(folder / "shot.1", Picture(colour=noise(500, 400, seed=9)))
    program.key("u")
    window = window_round((500, 400))
    expect(Picture(colour=noise(500, 400, seed=9)), (500, 400))


def test_a_window_that_does_not_fit_lies_on_the_screen_and_all_rows_can_be_reached(start, folder):
    pictures = [Picture(colour=noise(1270, 990, seed=n)) for n in (1, 1)]
    for number, picture in enumerate(pictures, 1):
        write(folder / f"shot.{number}", picture)
    program = start("-r", "8", "shot.")
    shown = on_screen(pictures[0])
    program.find_part(shown[400:600, 400:800])
    program.wait_until_loaded()
    program.key("space")
    left, top, width, height = program.desktop.rectangle(program.window())
    assert left >= 0 and top >= 0
    assert left + width <= WIDTH and top + height <= HEIGHT
    corners = {
        "KP_7": shown[-100:, -100:], "KP_9": shown[-100:, :100],
        "KP_3": shown[:100, :100], "KP_1": shown[:100, -100:],
    }
    for stroke, corner in corners.items():
        program.key(*[f"Alt_L+Shift_L+{stroke}"] * 8)
        program.find_part(corner)


def assert_fills_the_screen(program, picture, zoom=1):
    """The picture is centred on the screen and nothing else is on it."""
    wanted = view.magnified(on_screen(picture), zoom)
    height, width = wanted.shape[:2]
    x, y = program.find_part(wanted)
    assert x == (WIDTH - width) // 2
    assert HEIGHT - (y + height) == (HEIGHT - height) // 2
    packed = program.desktop.packed()
    packed[y : y + height, x : x + width] = view.BAND
    assert view.is_band(packed).all()


def test_full_screen_centres_the_picture_and_escape_leaves_it(start, folder):
    picture = Picture(colour=noise(200, 160))
    write(folder / "one", picture)
    program = start("-d", "one")
    assert_fills_the_screen(program, picture)
    red = rules.upright(rules.grey(rules.plane(stored_pixels(picture), 3))).low
    program.key("r")
    program.find_part(red)
    program.key("c", "Escape")
    placed = lambda: program.desktop.rectangle(program.window())[2] < WIDTH
    wait_until(placed, what="a window smaller than the screen")
    margins = view.expected_margins(200, 160)

    def in_its_window():
        place = program.find(on_screen(picture))
        return place.margins() == (margins[0], margins[0], margins[1], margins[1])

    wait_until(in_its_window, what="the margins of a window")
    program.key("Escape", "r")
    program.find_part(red[17:])  # without a margin the label stands over the topmost rows
    assert program.close() == 0


def test_full_screen_with_zoom(start, folder):
    picture = Picture(colour=noise(150, 120))
    write(folder / "one", picture)
    assert_fills_the_screen(start("-d", "-m", "4", "one"), picture, 4)


@pytest.mark.parametrize("width, height", [(320, 240), (400, 300), (100, 60)])
def test_a_borderless_animation_has_no_margin_of_its_own(start, folder, width, height):
    animation = Animation(last=2, width=width, height=height).write(folder)
    program = start("-B", "-r", "8", "shot.")
    program.find_part(animation.landmark()[24:])  # the status line lies on the rest
    program.wait_until_loaded()
    program.key("space", "Control_L+Left")
    x, y = program.find_part(on_screen(animation.picture(1))[24:])
    left, top, window_width, window_height = program.desktop.rectangle(program.window())
    margin_x, margin_y = max(0, 160 - width // 2), max(0, 120 - height // 2)
    assert (x - left, window_width) == (margin_x, max(320, width + 2 * margin_x))
    assert y - 24 + height + margin_y == top + window_height
    assert window_height == view.CONTROL_BAR + height + 2 * margin_y
