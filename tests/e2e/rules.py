"""What the window must show of a picture, computed from the rules with numpy in double precision.

Arrays have the first row of the file first; upright() turns them into what is seen. Where a rule
cuts fractions off, the program's single precision may fall on either side of a whole number: such
results are a Span of two pictures, and each pixel must be one or the other."""

from dataclasses import dataclass, field

import numpy as np

BLUE, GREEN, RED = 0, 1, 2  # order of the colour channels in controls
BYTE_OF_PLANE = (3, 2, 1, 0)  # mask, blue, green, red in a stored pixel
CHANNEL_BYTES = (2, 1, 0)  # the same for controls


@dataclass
class Span:
    low: np.ndarray
    high: np.ndarray

    def of(self, change):
        return Span(change(self.low), change(self.high))

    def unsure(self):
        """Part of the values that may be one or the other."""
        return float((self.low != self.high).mean())


def span(picture):
    return picture if isinstance(picture, Span) else Span(picture, picture)


def upright(picture):
    return span(picture).of(lambda rows: np.ascontiguousarray(rows[::-1]))


def truncated(values, doubt=5e-4):
    """Whole numbers 0 to 255 of values that are not exact."""
    values = np.nan_to_num(np.asarray(values, np.float64), nan=0, posinf=1e9, neginf=-1e9)
    return Span(*(np.clip(values + d, 0, 255).astype(np.uint8) for d in (-doubt, doubt)))


def grey(values):
    return span(values).of(lambda v: np.repeat(v[..., None], 3, axis=-1).astype(np.uint8))


# --- views ----------------------------------------------------------------------------------------


def plane(stored, number):
    """0 mask, 1 blue, 2 green, 3 red."""
    return stored[..., BYTE_OF_PLANE[number]]


def luminance(stored):
    """(red + 2 green + blue) / 4; the last (count mod 4) pixels are black."""
    wide = stored.astype(np.int64)
    values = (wide[..., 0] + 2 * wide[..., 1] + wide[..., 2]) >> 2
    flat = values.ravel().copy()
    if flat.size % 4:
        flat[-(flat.size % 4) :] = 0
    return flat.reshape(values.shape).astype(np.uint8)


def depth(z, low=None, high=None):
    """Smallest sample white, largest black; what lies outside low and high is held there."""
    z = z.astype(np.float64)
    finite = np.isfinite(z)
    low = z[finite].min() if low is None else low
    high = z[finite].max() if high is None else high
    with np.errstate(invalid="ignore"):
        nearness = np.clip((high - z) / (high - low), 0, 1)
    return truncated(np.where(finite, nearness * 255 + 0.5, 0), 1e-6)


# --- relief ---------------------------------------------------------------------------------------


def shade(heights, slope):
    """Heights lit from one side; differences to the pixel on the left and to the row before."""
    heights = span(heights).low.astype(np.int64)
    dx, dy = np.zeros_like(heights), np.zeros_like(heights)
    dx[:, 1:] = heights[:, 1:] - heights[:, :-1]
    dy[1:] = heights[1:] - heights[:-1]
    k = float(np.float32(slope)) * -0.25
    light = 255 / np.sqrt(2.36)
    lit = (dx * k + 0.6 + dy * k) * light / np.sqrt((dy * k) ** 2 + 1 + (dx * k) ** 2)
    return truncated(lit)


def relief(stored, shades, amount):
    """The colours under the relief's light; grey without any amount of colour."""
    if stored is None or amount == 0:
        return grey(shades)
    factor = int(amount / (0.6 / np.sqrt(2.36)))
    colours = stored[..., :3].astype(np.int64)

    def blend(s):
        s = s.astype(np.int64)[..., None]
        if amount == 256:
            lit = colours * s * factor >> 16
        else:
            lit = (colours * factor + (256 - amount) * 256) * s >> 16
        return np.minimum(lit, 255).astype(np.uint8)

    return shades.of(blend)


# --- look-up table --------------------------------------------------------------------------------


def three(value):
    return field(default_factory=lambda: np.full(3, value, np.float32))


@dataclass
class Lut:
    """The display's controls, each for blue, green, red."""

    gain: np.ndarray = three(1)
    gamma: np.ndarray = three(1)
    saturation: np.ndarray = three(1)
    offset: np.ndarray = three(0)
    negate: list = field(default_factory=lambda: [False] * 3)
    film: bool = False
    exposure: bool = False

    def step(self, control, amount, channels=(BLUE, GREEN, RED)):
        for channel in channels:
            getattr(self, control)[channel] += np.float32(amount)

    def reset(self, control, channels=(BLUE, GREEN, RED)):
        for channel in channels:
            getattr(self, control)[channel] = 0 if control == "offset" else 1

    def table(self, channel):
        x = np.arange(256) / 255
        s = float(self.saturation[channel])
        with np.errstate(all="ignore"):
            upper = np.abs(2 * x - 1) ** s * 0.5 + 0.5
            lower = 0.5 - np.abs(1 - 2 * x) ** s * 0.5
            y = np.where(x >= 0.5, upper, lower) ** float(self.gamma[channel])
            y = y * float(self.gain[channel]) + float(self.offset[channel]) / 255
            if self.negate[channel]:
                y = 1 - y
            if self.film:
                y = np.minimum(10 ** ((y * 1023 - 800) * 0.0033333), 1)
            if self.film or self.exposure:
                y = 1 - np.exp(-4.4 * y**0.78125)
        return truncated(y * 255 + 0.5)

    def apply(self, stored):
        """The stored pixels with their colours corrected."""
        corrected = Span(stored.copy(), stored.copy())
        for channel, byte in enumerate(CHANNEL_BYTES):
            table = self.table(channel)
            corrected.low[..., byte] = table.low[stored[..., byte]]
            corrected.high[..., byte] = table.high[stored[..., byte]]
        return corrected


def colours(stored):
    return span(stored).of(lambda pixels: pixels[..., :3])


# --- zoom and pan ---------------------------------------------------------------------------------


class Layout:
    """Which part of a picture is seen, and how large. All in single precision, as the pan is."""

    def __init__(self, width, height, start_zoom=1, visible=None):
        self.size = width, height
        self.start_zoom = self.zoom = start_zoom
        self.visible = visible or (width * start_zoom, height * start_zoom)
        self.pan = np.zeros(2, np.float32)

    def zoom_by(self, direction):
        if self.zoom + direction < self.start_zoom:
            return
        upper = max(self.zoom, self.zoom + direction)
        for axis in (0, 1):
            change = np.float32(self.visible[axis]) / np.float32((upper - 1) * upper)
            self.pan[axis] += np.float32(direction) * change * np.float32(0.5)
        self.zoom += direction
        self.clamp()

    def move(self, x, y):
        """Image pixels; the pan's own direction."""
        self.pan += np.float32((x, y))
        self.clamp()

    def reset(self):
        self.zoom = self.start_zoom
        self.pan[:] = 0
        self.clamp()

    def clamp(self):
        for axis in (0, 1):
            shown = -(-self.visible[axis] // self.zoom)  # the last of them perhaps in part
            most = np.float32(self.size[axis] - shown)
            self.pan[axis] = max(np.float32(0), min(self.pan[axis], most))

    def corner(self):
        """Image column and row at the lower left corner."""
        return int(self.pan[0]), int(self.pan[1])

    def seen(self, picture):
        """The window pixels of a picture, first row below; what no image pixel reaches is band."""
        column, row = self.corner()
        width, height = self.visible
        columns, rows = -(-width // self.zoom), -(-height // self.zoom)
        part = picture[row : row + rows, column : column + columns]
        part = part.repeat(self.zoom, axis=0).repeat(self.zoom, axis=1)[:height, :width]
        full = np.full((height, width, 3), 0x20, np.uint8)
        full[: part.shape[0], : part.shape[1]] = part
        return full
