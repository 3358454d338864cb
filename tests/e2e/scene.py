"""One picture on the screen that many keys are tried on: the program is started once, then what
stands in its place must become what the rules say."""

import numpy as np

import view
from desktop import PATIENCE, unpack, wait_until
from rules import upright

LABEL_ROWS = 17
MESSAGE_ROWS = 20


class Scene:
    def __init__(self, program, stored, expected=None):
        """`stored`: the pixels of the file, first row below; they are on the screen already or come
        there, unless `expected` does."""
        self.program, self.desktop, self.stored = program, program.desktop, stored
        first = upright(stored[..., :3] if expected is None else expected).low
        self.place = program.find(first)
        self.width, self.height = self.place.width, self.place.height

    # --- the picture ------------------------------------------------------------------------------

    def picture(self):
        """The window pixels in the picture's place, first row above."""
        y, x = self.place.y, self.place.x
        return unpack(self.desktop.packed(x, y, self.width, self.height))

    def differences(self, wanted):
        """Which pixels are not as they should be."""
        shown = self.picture()
        return ((shown != wanted.low) & (shown != wanted.high)).any(axis=-1)

    def expect(self, picture, what="the picture", timeout=PATIENCE):
        """Waits until the picture, first row below, is there pixel for pixel."""
        wanted = upright(picture)
        assert wanted.low.shape == (self.height, self.width, 3), wanted.low.shape
        # A gain of 1.5 puts every odd value just between two whole numbers.
        assert wanted.unsure() < 0.55, "the rule is not sharp enough for this picture"

        def report():
            wrong = self.differences(wanted)
            path = self.program._out.with_name("screen.png")
            self.desktop.save(path)
            if not wrong.any():
                return f"{what}; it came too late"
            y, x = np.argwhere(wrong)[0]
            return (
                f"{what}; {wrong.sum()} of {wrong.size} pixels differ, first at column {x}, row {y}"
                f" from above: {self.picture()[y, x]} instead of {wanted.low[y, x]} or"
                f" {wanted.high[y, x]}; {path} {self.program.report()}"
            )

        wait_until(lambda: not self.differences(wanted).any(), timeout, report)

    def key(self, stroke, picture):
        """A stroke, and what it must lead to."""
        self.program.key(stroke)
        self.expect(picture, f"the picture after {stroke}")

    # --- around it --------------------------------------------------------------------------------

    def client(self):
        """Left, top (below a control bar), right, bottom of the picture with its margins."""
        place = self.place
        return (
            place.x - place.left,
            place.y - place.top,
            place.x + place.width + place.right,
            place.y + place.height + place.bottom,
        )

    def margin_is_clear(self):
        """Whether the margins left, right and below hold nothing but the band's colour."""
        left, top, right, bottom = self.client()
        packed = self.desktop.packed()[top:bottom, left:right].copy()
        place = self.place
        packed[: place.top + place.height, place.left : place.left + place.width] = view.BAND
        packed[: place.top] = view.BAND
        return bool(view.is_band(packed).all())

    def label(self, animation=False):
        """The text of the channel label as a bitmap cut to its ink: bytes, empty without a label;
        and how far its middle is from the window's."""
        left, top, right, bottom = self.client()
        rows = slice(bottom - 16, bottom) if animation else slice(top, self.place.y)
        band = self.desktop.packed()[rows, left:right]
        ink = (band >> 16) > 0x20
        if not ink.any():
            return b"", 0
        columns, lines = np.flatnonzero(ink.any(axis=0)), np.flatnonzero(ink.any(axis=1))
        cut = ink[lines[0] : lines[-1] + 1, columns[0] : columns[-1] + 1]
        middle = (columns[0] + columns[-1] + 1) / 2 - (right - left) / 2
        return bytes(cut.shape) + np.packbits(cut).tobytes(), middle

    # --- message band -----------------------------------------------------------------------------

    def message_rows(self):
        """The rows of the window in which a message band lies."""
        left, top, right, bottom = self.client()
        return self.desktop.packed()[bottom - MESSAGE_ROWS : bottom, left:right]

    def band(self):
        """The text of the message band as a bitmap, None when there is no band. The band is as wide
        as the window or as the picture; its text may be longer."""
        rows = self.message_rows()
        red, green, blue = rows >> 16, rows >> 8 & 255, rows & 255
        if not ((red == green) & (green == blue)).all():
            return None
        left = self.place.left
        begins = any((rows[:, x : x + 5] == 0).all() for x in range(left + 1))  # before the text
        above_text = rows[0, left : left + self.width]
        ink = rows > 0x808080
        if not begins or above_text.any() or not ink.any():
            return None
        return ink.tobytes()

    def wait_for_band(self):
        return wait_until(self.band, what=lambda: f"a message band {self.program.report()}")

    def wait_for_message(self):
        return wait_until(
            lambda: self.band() if self.program.steady(0.2) else None,
            what=lambda: f"a message band that stays {self.program.report()}",
        )

    def held(self, stroke, at_rest=False):
        """Holds the last key of a stroke until a message band is there, which goes with the key;
        its text. `at_rest`: a band that stays, not one that tells what is being done."""
        *modifiers, name = stroke.split("+")
        self.desktop.focus(self.program.window())
        for modifier in modifiers:
            self.desktop.press(modifier)
        self.desktop.let_keys_repeat(not at_rest)
        self.desktop.press(name)
        text = self.wait_for_message() if at_rest else self.wait_for_band()
        self.desktop.release(name)
        self.desktop.let_keys_repeat(True)
        for modifier in reversed(modifiers):
            self.desktop.release(modifier)
        wait_until(lambda: self.band() is None, what=lambda: f"the end of the message of {stroke}")
        return text

    # --- mouse ------------------------------------------------------------------------------------

    def at(self, column, row, zoom=1):
        """Screen position of a window pixel of the picture, counted from its lower left corner in
        image pixels."""
        x = self.place.x + column * zoom + zoom // 2
        return x, self.place.y + self.height - 1 - row * zoom - zoom // 2

    def point(self, column, row, zoom=1):
        self.desktop.move_pointer(*self.at(column, row, zoom))
