"""Writes frame files, from arrays of numbers to bytes, with every freedom that the format leaves to
a writer. It shares no code with the program: what the program shows is compared with what this file
says it must show.

Arrays have the first row of the file first, which is the bottom row of the window.

A file is put together from three layers:

    Picture      what the image is: planes of numbers
    Style        how it is written: group kinds, sizes, tiles, compression, chunks around it
    image_form   the bytes of one image; wrap() puts several of them into a list or concatenation
"""

import struct
from dataclasses import dataclass, field

import numpy as np

COLOUR, MASK, DEPTH, A_PLANE, BLACK = 0x1, 0x2, 0x4, 0x8, 0x10
COLOUR_MAP, TWELVE_BIT, MAP = 0x1000, 0x2000, 0x20000

SIZE_UNKNOWN = 0x80000000
SIZE_TO_END_MARKER = 0x80000002

# Alignment of the chunks inside each kind of group.
ALIGNMENT = {
    "FOR4": 4, "FORM": 2, "FOR8": 8,
    "CAT4": 4, "CAT ": 2, "CAT8": 8,
    "LIS4": 4, "LIST": 2, "LIS8": 8,
    "PRO4": 4, "PROP": 2, "PRO8": 8,
}


# --- pictures -------------------------------------------------------------------------------------


@dataclass
class Picture:
    """Planes of one image. `colour` is (height, width, 3) in the order red, green, blue; the other
    planes are (height, width). 16-bit channels are given as uint16 arrays."""

    colour: np.ndarray = None
    grey: np.ndarray = None
    mask: np.ndarray = None
    z: np.ndarray = None

    @property
    def shape(self):
        for plane in (self.colour, self.grey, self.mask, self.z):
            if plane is not None:
                return plane.shape[:2]
        raise ValueError("a picture without planes")

    @property
    def wide(self):
        planes = [p for p in (self.colour, self.grey, self.mask) if p is not None]
        return any(p.dtype == np.uint16 for p in planes)

    @property
    def flags(self):
        flags = 0
        if self.colour is not None:
            flags |= COLOUR
        elif self.grey is None:
            flags |= BLACK
        if self.mask is not None:
            flags |= MASK
        if self.z is not None:
            flags |= DEPTH
        return flags

    def channels(self):
        """The channels of a colour tile in file order: mask, blue, green, red; or mask, grey."""
        channels = [] if self.mask is None else [self.mask]
        if self.colour is not None:
            channels += [self.colour[..., 2], self.colour[..., 1], self.colour[..., 0]]
        elif self.grey is not None:
            channels.append(self.grey)
        return channels


def stored_pixels(picture):
    """The pixels that a reader keeps: (height, width, 4) bytes red, green, blue, mask."""
    height, width = picture.shape
    stored = np.zeros((height, width, 4), np.uint8)

    def high_byte(plane):
        return (plane >> 8).astype(np.uint8) if plane.dtype == np.uint16 else plane

    if picture.colour is not None:
        stored[..., :3] = high_byte(picture.colour)
    elif picture.grey is not None:
        stored[..., :3] = high_byte(picture.grey)[..., None]
    if picture.mask is not None:
        stored[..., 3] = high_byte(picture.mask)
    elif picture.colour is not None or picture.grey is not None:
        stored[..., 3] = 255
    return stored


def on_screen(picture):
    """What a window shows of a picture with colour: (height, width, 3), top row first."""
    return np.ascontiguousarray(stored_pixels(picture)[::-1, :, :3])


def shrunk(stored, factor):
    """Nearest-sample shrinking: the first pixel of each block of factor x factor whole pixels."""
    height, width = stored.shape[0] // factor, stored.shape[1] // factor
    return stored[: height * factor : factor, : width * factor : factor]


def noise(width, height, seed=1, channels=3, dtype=np.uint8):
    """A picture no part of which occurs anywhere else on the screen."""
    generator = np.random.default_rng(seed)
    shape = (height, width, channels) if channels > 1 else (height, width)
    return generator.integers(0, np.iinfo(dtype).max + 1, shape, dtype=dtype)


def blocky(width, height, seed=1, channels=3, dtype=np.uint8, block=5):
    """Noise in blocks, so that run-length packets of both kinds occur."""
    small = noise(width // block + 1, height // block + 1, seed, channels, dtype)
    large = small.repeat(block, axis=0).repeat(block, axis=1)[:height, :width].copy()
    single = np.random.default_rng(seed + 1).random((height, width)) < 0.05
    large[single] = noise(width, height, seed + 2, channels, dtype)[single]
    return large


# --- tile codecs ----------------------------------------------------------------------------------


def byte_planes(channels):
    """Each channel as byte planes, most significant byte first; floats by their bits."""
    planes = []
    for channel in channels:
        big_endian = np.ascontiguousarray(channel.astype(channel.dtype.newbyteorder(">")))
        parts = big_endian.view(np.uint8).reshape(*channel.shape, channel.dtype.itemsize)
        planes += [parts[..., i] for i in range(parts.shape[-1])]
    return planes


def raw_tile(channels):
    """Interleaved: all bytes of a pixel, then the next pixel."""
    return np.stack(byte_planes(channels), axis=-1).tobytes()


def packets(values, largest=128, shortest_run=2):
    """Splits a list into (is_run, values) packets of at most `largest` values."""
    result, literal, i = [], [], 0

    def flush():
        for start in range(0, len(literal), largest):
            result.append((False, literal[start : start + largest]))
        literal.clear()

    while i < len(values):
        end = i + 1
        while end < len(values) and values[end] == values[i] and end - i < largest:
            end += 1
        if end - i >= shortest_run:
            flush()
            result.append((True, values[i:end]))
        else:
            literal.extend(values[i:end])
        i = end
    flush()
    return result


def encode_packets(values, **options):
    out = bytearray()
    for is_run, run in packets(values, **options):
        out.append((0x80 if is_run else 0) | (len(run) - 1))
        for value in run[:1] if is_run else run:
            out += value
    return bytes(out)


def encode_bytes(data, largest=128, shortest_run=2):
    """The packets of encode_packets() for values of one byte; takes time for its runs only."""
    values = np.frombuffer(data, np.uint8)
    starts = np.concatenate(([0], np.flatnonzero(values[1:] != values[:-1]) + 1))
    lengths = np.diff(np.append(starts, len(values)))
    runs = lengths >= shortest_run
    out, done = bytearray(), 0

    def literals(end):
        for at in range(done, end, largest):
            piece = data[at : min(at + largest, end)]
            out.append(len(piece) - 1)
            out.extend(piece)

    for start, length in zip(starts[runs].tolist(), lengths[runs].tolist()):
        while length >= shortest_run:
            literals(start)
            count = min(length, largest)
            out.extend((0x80 | (count - 1), data[start]))
            start, length = start + count, length - count
            done = start
    literals(len(data))
    return bytes(out)


def rle_tile(channels, **options):
    """Channel after channel, byte plane after byte plane; packets run across rows."""
    return b"".join(
        encode_bytes(plane.tobytes(), **options) for plane in byte_planes(channels) if plane.size
    )


def qrl_tile(colour, **options):
    """Whole pixels of three bytes red, green, blue; packets end with the row."""
    return b"".join(
        encode_packets([bytes(pixel) for pixel in row.tolist()], **options) for row in colour
    )


# --- containers -----------------------------------------------------------------------------------


def padded(body, alignment):
    return body + b"\0" * (-len(body) % alignment)


def chunk(tag, body, alignment=4, to_end_marker=False):
    """One chunk with its pad bytes. `to_end_marker`: written by someone who could not go back to
    patch the size."""
    name = tag.encode("latin-1")
    assert len(name) == 4
    if to_end_marker:
        header = name + struct.pack(">I", SIZE_TO_END_MARKER)
        return header + padded(body, alignment) + b"EOVC" + struct.pack(">I", SIZE_UNKNOWN)
    return name + struct.pack(">I", len(body)) + padded(body, alignment)


def group(kind, type_tag, content, size="known", outer_alignment=4):
    """A group around chunks that are written already.

    size: "known"; "known+end" (known, with the end chunk inside); "unknown" (the end chunk of size
    0x80000000); "unknown+0" (the end chunk of size 0)."""
    body = type_tag.encode("latin-1") + content
    if size == "known":
        return kind.encode() + struct.pack(">I", len(body)) + padded(body, outer_alignment)
    body += b"GEND" + struct.pack(">I", 0 if size == "unknown+0" else SIZE_UNKNOWN)
    announced = len(body) if size == "known+end" else SIZE_UNKNOWN
    return kind.encode() + struct.pack(">I", announced) + padded(body, outer_alignment)


# --- information chunks ---------------------------------------------------------------------------


def extended_float(value):
    """80-bit float of a positive whole number."""
    exponent = int(value).bit_length() - 1
    return struct.pack(">HQ", 16383 + exponent, int(value) << (63 - exponent))


def sound_format(channels=1, frames=4, bits=16, rate=44100, compression=None):
    body = struct.pack(">HIH", channels, frames, bits) + extended_float(rate)
    if compression is not None:
        tag, name = compression
        body += tag + bytes((len(name),)) + name + (b"" if len(name) % 2 else b"\0")
    return body


INFORMATION = {
    "NAME": b"a named picture",
    "DATE": b"Thu Jan  1 00:00:00 1970",
    "AUTH": b"the author",
    "ANNO": b"a remark of odd size.",
    "VERS": b"1.0",
    "HIST": b"rendered, then written",
    "(c) ": b"nobody",
    "ZPLC": struct.pack(">ff", 0.5, 1000.0),
    "ICON": struct.pack(">HH", 3, 2) + bytes(range(18)),
    "USER": bytes(range(37)),
    "COMM": sound_format(),
    "SSND": struct.pack(">II", 0, 0) + bytes(8),
    "XTRA": b"nobody knows this chunk",
}


# --- images ---------------------------------------------------------------------------------------


@dataclass
class Style:
    """How a picture is written."""

    form: str = "FOR4"  # kind of the image's group
    tile_form: str = "FOR4"  # kind of the tiles' group
    size: str = "known"  # of the image's group, as in group()
    tile_size: str = "known"  # of the tiles' group
    tiles: tuple = (64, 64)  # tile width and height, or a list of rectangles (x1, y1, x2, y2)
    order: int = None  # seed of a random order of the tiles; None: row by row
    codec: str = "rle"  # "raw", "rle", "qrl"
    compression: int = None  # of the header; None: what the codec needs
    shortest_run: int = 2  # from which repeated values are written as a run
    tile_count: int = None  # of the header; None: as many as there are
    extra_flags: int = 0
    pair: tuple = (1, 1)
    header_to_end_marker: bool = False
    before_header: list = field(default_factory=list)  # (tag, body) or ready chunk bytes
    after_header: list = field(default_factory=list)
    inside_tiles: list = field(default_factory=list)
    after_tiles: list = field(default_factory=list)
    z_first: bool = False  # the Z tiles before the colour tiles
    second_colour: bool = False  # "RGB2" after each colour tile
    a_plane: bool = False  # "ABUF" after each colour tile

    def header_compression(self):
        if self.compression is not None:
            return self.compression
        return {"raw": 0, "rle": 1, "qrl": 2}[self.codec]


def regular_tiles(width, height, tile_width, tile_height):
    return [
        (x, y, min(x + tile_width, width) - 1, min(y + tile_height, height) - 1)
        for y in range(0, height, tile_height)
        for x in range(0, width, tile_width)
    ]


def image_header(width, height, flags, wide=0, tiles=0, compression=1, pair=(1, 1)):
    return struct.pack(">IIHHIHHI", width, height, *pair, flags, wide, tiles, compression)


def smaller(encoded, raw):
    """A tile that does not become smaller is stored raw: its size alone says so."""
    return encoded if len(encoded) < len(raw) else raw


def colour_tile(picture, rect, style):
    x1, y1, x2, y2 = rect
    area = (slice(y1, y2 + 1), slice(x1, x2 + 1))
    channels = [channel[area] for channel in picture.channels()]
    raw = raw_tile(channels)
    if style.codec == "raw":
        return raw
    options = {"shortest_run": style.shortest_run}
    pixels_of_three = picture.colour is not None and picture.mask is None and not picture.wide
    if style.codec == "qrl" and pixels_of_three:
        return smaller(qrl_tile(picture.colour[area], **options), raw)
    return smaller(rle_tile(channels, **options), raw)


def depth_tile(picture, rect, style):
    x1, y1, x2, y2 = rect
    z = [picture.z[y1 : y2 + 1, x1 : x2 + 1].astype(np.float32)]
    raw = raw_tile(z)
    return raw if style.codec == "raw" else smaller(rle_tile(z), raw)


def tile_chunks(picture, style, rects):
    """The chunks of all tiles."""
    alignment = ALIGNMENT[style.tile_form]
    colour, depth = [], []
    for rect in rects:
        place = struct.pack(">HHHH", *rect)
        both = []
        if picture.channels():
            data = colour_tile(picture, rect, style)
            both.append(chunk("RGBA", place + data, alignment))
            if style.second_colour:
                both.append(chunk("RGB2", place + data, alignment))
            if style.a_plane:
                both.append(chunk("ABUF", place + b"\x80\x01", alignment))
        colour.append(b"".join(both))
        if picture.z is not None:
            depth.append(chunk("ZBUF", place + depth_tile(picture, rect, style), alignment))
        else:
            depth.append(b"")
    if style.z_first:
        return b"".join(depth) + b"".join(colour)
    return b"".join(c + d for c, d in zip(colour, depth))


def loose_chunks(entries, alignment):
    return b"".join(
        entry if isinstance(entry, bytes) else chunk(*entry, alignment=alignment)
        for entry in entries
    )


def image_form(picture, style=None, outer_alignment=4):
    """The bytes of one image."""
    style = style or Style()
    height, width = picture.shape
    rects = style.tiles if isinstance(style.tiles, list) else regular_tiles(
        width, height, *style.tiles
    )
    if style.order is not None:
        rects = [rects[i] for i in np.random.default_rng(style.order).permutation(len(rects))]
    flags = picture.flags | style.extra_flags
    flags |= TWELVE_BIT if style.second_colour else 0
    flags |= A_PLANE if style.a_plane else 0
    count = len(rects) if style.tile_count is None else style.tile_count
    header = image_header(
        width, height, flags, int(picture.wide), count, style.header_compression(), style.pair
    )
    alignment = ALIGNMENT[style.form]
    inner = ALIGNMENT[style.tile_form]
    content = loose_chunks(style.before_header, alignment)
    content += chunk("TBHD", header, alignment, style.header_to_end_marker)
    content += loose_chunks(style.after_header, alignment)
    content += group(
        style.tile_form,
        "TBMP",
        loose_chunks(style.inside_tiles, inner) + tile_chunks(picture, style, rects),
        style.tile_size,
        alignment,
    )
    content += loose_chunks(style.after_tiles, alignment)
    return group(style.form, "CIMG", content, style.size, outer_alignment)


def wrap(kind, pictures, style=None, size="known", type_tag="CIMG", properties=()):
    """Several images in one list or concatenation; `properties` only in a list."""
    alignment = ALIGNMENT[kind]
    content = b""
    if properties:
        property_kind = {2: "PROP", 4: "PRO4", 8: "PRO8"}[alignment]
        content += group(
            property_kind, type_tag, loose_chunks(properties, alignment), "known", alignment
        )
    content += b"".join(image_form(picture, style, alignment) for picture in pictures)
    return group(kind, type_tag, content, size)


# --- numbered frames ------------------------------------------------------------------------------


def write(path, picture, style=None):
    path.write_bytes(image_form(picture, style))
    return path


class Animation:
    """Frames whose number can be read from the screen: the left half is the same noise in all, the
    right half one colour per frame."""

    def __init__(self, first=1, last=6, step=1, width=64, height=48):
        self.numbers = list(range(first, last + 1, step))
        self.width, self.height = width, height
        self._left = noise(width // 2, height, seed=77)

    def colour_of(self, number):
        """Distinct for numbers that differ by less than 4096."""
        return (16 + (number % 16) * 15, 16 + (number // 16 % 16) * 15, 250 - number // 256 % 16)

    def picture(self, number):
        colour = np.empty((self.height, self.width, 3), np.uint8)
        colour[:, : self.width // 2] = self._left
        colour[:, self.width // 2 :] = self.colour_of(number)
        return Picture(colour=colour)

    def landmark(self):
        """The half that all frames have, as it lies on the screen."""
        return np.ascontiguousarray(self._left[::-1])

    def number_of(self, colour):
        for number in self.numbers:
            if self.colour_of(number) == tuple(int(c) for c in colour):
                return number
        return None

    def write(self, folder, pattern="shot.{}", style=None):
        for number in self.numbers:
            write(folder / pattern.format(number), self.picture(number), style)
        return self
