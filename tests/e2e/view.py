"""Where a picture must lie in the window, and where it does."""

from dataclasses import dataclass

from desktop import occurrences

BAND = 0x202020  # colour of the margins and of the bands behind text
CONTROL_BAR = 29  # rows at the top of the window


def magnified(picture, zoom):
    return picture.repeat(zoom, axis=0).repeat(zoom, axis=1)


def expected_margins(width, height, animation=False):
    """Margins (x, y) of a picture of that many window pixels."""
    half_width, half_height = width // 2, height // 2
    x = 160 - half_width if width < 320 else 0
    if not animation:
        return x, 72 - half_height if height < 144 else 0
    y = 120 - half_height if height < 240 else 0
    return max(x, 20), max(y, 20)


@dataclass
class Measured:
    """Place of a picture on the screen, and how far the band reaches around it."""

    x: int
    y: int
    width: int
    height: int
    left: int
    right: int
    top: int
    bottom: int
    text: bool  # there is red text in the band above

    def margins(self):
        return self.left, self.right, self.top, self.bottom


def is_band(pixels):
    return pixels == BAND


def is_band_or_text(pixels):
    """The band, or red text on it, smoothed or not: green and blue are equal and not above the
    band's, red is not below it."""
    red, green, blue = pixels >> 16, pixels >> 8 & 255, pixels & 255
    return (red >= 0x20) & (green <= 0x20) & (green == blue)


def run_length(lines, accepts):
    """How many lines from the start of the list on are accepted in full."""
    count = 0
    for line in lines:
        if not accepts(line).all():
            break
        count += 1
    return count


def measure(packed, width, height, x, y):
    """A picture was found with its upper-left corner at (x, y). The bands at its sides are measured
    beside its rows, those above and below over the whole width of picture and side bands."""
    columns = packed[y : y + height].T
    left = run_length(columns[:x][::-1], is_band)
    right = run_length(columns[x + width :], is_band)
    rows = packed[:, x - left : x + width + right]
    bottom = run_length(rows[y + height :], is_band)
    top = run_length(rows[:y][::-1], is_band_or_text)
    text = not is_band(rows[y - top : y]).all()
    return Measured(x, y, width, height, left, right, top, bottom, text)


def place_of(packed, picture):
    """The one place of a picture on the screen, None when it is not there or not alone."""
    places = occurrences(packed, picture)
    return places[0] if len(places) == 1 else None
