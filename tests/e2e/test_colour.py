"""The keys that change the display's colours: each control against its own formula."""

import numpy as np
import pytest

import rules
from framefile import Picture, noise, stored_pixels, write
from rules import BLUE, GREEN, RED, Lut
from scene import Scene

WIDTH, HEIGHT = 101, 75
ALL = (BLUE, GREEN, RED)


@pytest.fixture
def scene(start, folder):
    picture = Picture(colour=noise(WIDTH, HEIGHT), mask=noise(WIDTH, HEIGHT, 2, channels=1))
    write(folder / "one", picture)
    return Scene(start("one"), stored_pixels(picture))


class Corrected:
    """A scene whose colours go through a table that follows the keys."""

    def __init__(self, scene):
        self.scene, self.lut = scene, Lut()

    def colours(self):
        return rules.colours(self.lut.apply(self.scene.stored))

    def step(self, stroke, control, amount, channels=ALL):
        self.lut.step(control, amount, channels)
        self.scene.key(stroke, self.colours())

    def reset(self, stroke, control, channels=ALL):
        self.lut.reset(control, channels)
        self.scene.key(stroke, self.colours())

    def negate(self, stroke, channels):
        for channel in channels:
            self.lut.negate[channel] = not self.lut.negate[channel]
        self.scene.key(stroke, self.colours())


MODIFIERS = ("", "Shift_L+", "Alt_L+", "Alt_L+Shift_L+")
CONTROLS = {
    "gamma": ("bracketleft", "bracketright", (0.01, 0.1, 0.5, 1)),
    "gain": ("minus", "equal", (0.01, 0.1, 0.5, 1)),
    "saturation": ("semicolon", "apostrophe", (0.01, 0.1, 0.5, 1)),
    "offset": ("slash", "backslash", (1, 5, 10, 20)),
}


@pytest.mark.parametrize("control", CONTROLS)
def test_each_control_goes_up_and_down_by_its_steps(scene, control):
    down, up, steps = CONTROLS[control]
    tried = Corrected(scene)
    for modifier, step in zip(MODIFIERS, steps):
        tried.step(modifier + up, control, step)
    for modifier, step in zip(MODIFIERS, steps):
        tried.step(modifier + down, control, -step)
    for modifier, step in zip(MODIFIERS[1:3], steps[1:3]):
        tried.step(modifier + down, control, -step)
    tried.reset(f"Control_L+{down}", control)
    tried.step(f"Shift_R+{up}", control, steps[1])
    tried.reset(f"Control_R+{up}", control)
    assert not scene.differences(rules.upright(scene.stored[..., :3])).any()


CHOICES = {
    "F1": (RED,), "F2": (GREEN,), "F3": (BLUE,),
    "Shift_L+F1": (BLUE, GREEN), "Shift_L+F2": (BLUE, RED), "Shift_R+F3": (GREEN, RED),
}


def test_a_control_channel_is_adjusted_alone_and_named_in_the_label(scene):
    tried = Corrected(scene)
    labels = set()
    for number, (stroke, channels) in enumerate(CHOICES.items()):
        scene.program.key(stroke)
        control = list(CONTROLS)[number % 4]
        up, steps = CONTROLS[control][1], CONTROLS[control][2]
        tried.step(f"Shift_L+{up}", control, steps[1], channels)
        label, off_centre = scene.label()
        assert label and abs(off_centre) <= 2
        labels.add(label)
    assert len(labels) == 6
    scene.program.key("F1")
    tried.reset("Control_L+equal", "gain", (RED,))
    scene.program.key("F4")
    tried.step("Shift_L+equal", "gain", 0.1)
    assert scene.label() == (b"", 0)
    tried.lut = Lut()
    scene.key("d", scene.stored[..., :3])


def test_the_label_holds_view_and_control_channel(scene):
    red = rules.grey(rules.plane(scene.stored, 3))
    scene.key("r", red)
    alone = scene.label()[0]
    scene.program.key("F2")
    scene.key("g", rules.grey(rules.plane(scene.stored, 2)))
    both = scene.label()[0]
    scene.program.key("Shift_L+F2")
    scene.key("r", red)
    assert len({alone, both, scene.label()[0]}) == 3
    scene.program.key("F4")
    scene.key("g", rules.grey(rules.plane(scene.stored, 2)))
    scene.key("r", red)
    assert scene.label()[0] == alone


def test_d_resets_the_controls_and_leaves_the_negative(scene):
    tried = Corrected(scene)
    for control, (_, up, steps) in CONTROLS.items():
        tried.step(f"Shift_L+{up}", control, steps[1])
    tried.negate("x", ALL)
    for control in CONTROLS:
        tried.lut.reset(control)
    scene.key("d", tried.colours())
    tried.negate("x", ALL)


def test_the_negative_of_all_and_of_single_channels(scene):
    tried = Corrected(scene)
    tried.negate("x", ALL)
    assert not scene.differences(rules.upright(255 - scene.stored[..., :3])).any()
    for stroke, channel in (("F1", RED), ("F2", GREEN), ("F3", BLUE)):
        scene.program.key(stroke)
        tried.negate("x", (channel,))
    scene.program.key("F4")
    tried.negate("x", ALL)
    tried.lut.negate = [False] * 3
    scene.key("Control_L+x", scene.stored[..., :3])


def test_shift_inverts_the_mask_view_alone(scene):
    mask = rules.plane(scene.stored, 0)
    scene.program.key("Shift_L+x")
    scene.key("m", rules.grey(255 - mask))
    scene.key("c", scene.stored[..., :3])
    scene.key("m", rules.grey(255 - mask))
    scene.key("Shift_R+x", rules.grey(mask))
    scene.key("Shift_L+x", rules.grey(255 - mask))
    scene.key("Control_R+x", rules.grey(mask))


def test_film_and_exposure_exclude_each_other(scene):
    tried = Corrected(scene)

    def now(stroke, film, exposure):
        tried.lut.film, tried.lut.exposure = film, exposure
        scene.key(stroke, tried.colours())

    now("k", True, False)
    now("Shift_L+k", False, True)
    now("k", True, False)
    now("k", False, False)
    now("Shift_L+k", False, True)
    tried.step("Alt_L+bracketright", "gamma", 0.5)
    tried.step("Alt_L+backslash", "offset", 10)
    now("k", True, False)
    tried.negate("x", ALL)
    now("k", False, False)


def test_the_film_option_starts_with_the_conversion(start, folder):
    picture = Picture(colour=noise(WIDTH, HEIGHT))
    write(folder / "one", picture)
    lut = Lut(film=True)
    stored = stored_pixels(picture)
    expected = rules.colours(lut.apply(stored))
    assert expected.unsure() == 0
    scene = Scene(start("-K", "one"), stored, expected.low)
    scene.key("k", stored[..., :3])


def test_views_show_corrected_planes_and_an_uncorrected_mask(scene):
    tried = Corrected(scene)
    scene.program.key("F2")
    tried.step("Alt_L+bracketright", "gamma", 0.5, (GREEN,))
    scene.program.key("F1")
    tried.step("Alt_L+backslash", "offset", 10, (RED,))
    corrected = tried.lut.apply(scene.stored)
    for stroke, number in (("r", 3), ("g", 2), ("b", 1), ("m", 0)):
        plane = corrected.of(lambda pixels, number=number: rules.plane(pixels, number))
        scene.key(stroke, rules.grey(plane))
    scene.key("l", rules.grey(corrected.of(rules.luminance)))
    # The view follows the controls.
    scene.program.key("F4")
    tried.lut.negate = [True] * 3
    scene.key("x", rules.grey(tried.lut.apply(scene.stored).of(rules.luminance)))
    tried.lut = Lut(negate=[True] * 3)
    scene.key("d", rules.grey(tried.lut.apply(scene.stored).of(rules.luminance)))


def test_the_depth_is_seen_through_the_table(start, folder):
    z = np.random.default_rng(4).uniform(1, 9, (HEIGHT, WIDTH)).astype(np.float32)
    picture = Picture(colour=noise(WIDTH, HEIGHT), z=z)
    write(folder / "one", picture)
    scene = Scene(start("one"), stored_pixels(picture))
    lut, grey = Lut(), rules.depth(z)
    scene.key("z", rules.grey(grey))
    shown = lambda: rules.colours(lut.apply(np.stack([grey.low] * 4, axis=-1)))
    lut.negate = [True] * 3
    scene.key("x", shown())
    lut.step("gamma", 0.5, ALL)
    scene.key("Alt_L+bracketright", shown())
    lut.negate = [False] * 3
    scene.key("x", shown())


def test_keys_of_the_screen_alone_change_no_colours(scene):
    colours, red = scene.stored[..., :3], rules.grey(rules.plane(scene.stored, 3))
    for stroke in ("e", "q", "f", "f", "Shift_L", "Control_R", "Alt_L", "F7", "Tab"):
        scene.program.key(stroke)
        scene.key("r", red)
        scene.key("c", colours)
        assert scene.margin_is_clear()


def test_single_buffered_drawing_shows_the_same(scene):
    scene.program.key("f")
    tried = Corrected(scene)
    tried.step("Alt_L+bracketright", "gamma", 0.5)
    scene.key("r", rules.grey(tried.lut.apply(scene.stored).of(lambda s: rules.plane(s, 3))))
    assert scene.label()[0]
    scene.key("c", tried.colours())
    scene.held("z")
    scene.expect(tried.colours())
    scene.program.key("f")
    scene.key("d", scene.stored[..., :3])


def test_the_controls_stay_from_frame_to_frame(play):
    player = play(last=4)
    frames = [stored_pixels(player.animation.picture(n)) for n in (1, 2, 3, 4)]
    tried = Corrected(Scene(player.program, frames[0]))
    tried.step("Alt_L+bracketright", "gamma", 0.5)
    tried.negate("x", ALL)
    for index in (1, 2, 3, 0):
        tried.scene.key("Right", rules.colours(tried.lut.apply(frames[index])))
