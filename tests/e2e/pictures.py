"""Writes and reads picture files of other people's types, from arrays of numbers to bytes and back,
by nothing but the types' own layouts. It shares no code with the converter, nor with the libraries
that the converter uses.

Arrays have the top row first. A Pixels holds what a file holds: samples of 8 or 16 bits, of 10-bit
codes, or floating point numbers."""

import struct
import zlib
from dataclasses import dataclass

import numpy as np

import framefile
import rules


@dataclass
class Pixels:
    colour: np.ndarray  # (height, width, 3), or (height, width) of grey
    mask: np.ndarray = None  # (height, width)
    z: np.ndarray = None

    @property
    def size(self):
        return self.colour.shape[1], self.colour.shape[0]

    def planes(self):
        """Red, green, blue or grey, then the mask."""
        colours = [self.colour] if self.colour.ndim == 2 else list(np.moveaxis(self.colour, -1, 0))
        return colours + ([] if self.mask is None else [self.mask])

    def samples(self):
        """(height, width, channels)"""
        return np.stack(self.planes(), axis=-1)


def frame_bytes(pixels, style=None):
    """The same picture as a frame file."""
    up = lambda plane: None if plane is None else np.ascontiguousarray(plane[::-1])
    grey = pixels.colour.ndim == 2
    picture = framefile.Picture(
        colour=None if grey else up(pixels.colour),
        grey=up(pixels.colour) if grey else None,
        mask=up(pixels.mask),
        z=up(pixels.z),
    )
    return framefile.image_form(picture, style)


# --- light ----------------------------------------------------------------------------------------


def bytes_of_light(linear):
    """What linear light becomes in 8 bits, by the sRGB curve: a Span, for where it lies between."""
    light = np.clip(np.nan_to_num(np.asarray(linear, np.float64), nan=0), 0, 1)
    curve = np.where(light <= 0.0031308, light * 12.92, 1.055 * light ** (1 / 2.4) - 0.055)
    return rules.truncated(curve * 255 + 0.5)


def bytes_of_mask(values):
    return rules.truncated(np.clip(np.nan_to_num(values.astype(np.float64)), 0, 1) * 255 + 0.5)


def light_of(samples):
    """The other way, of samples of 8 or 16 bits."""
    encoded = samples.astype(np.float64) / np.iinfo(samples.dtype).max
    return np.where(encoded <= 0.04045, encoded / 12.92, ((encoded + 0.055) / 1.055) ** 2.4)


def nearest(samples, most):
    """Samples of 8 or 16 bits on the scale from 0 to `most`."""
    full = np.iinfo(samples.dtype).max
    return (samples.astype(np.int64) * most * 2 + full) // (2 * full)


# --- run lengths ----------------------------------------------------------------------------------


def runs_of(values, longest):
    """(value, count) of a list."""
    runs = []
    for value in values:
        if runs and runs[-1][0] == value and runs[-1][1] < longest:
            runs[-1][1] += 1
        else:
            runs.append([value, 1])
    return runs


def packed_runs(values, longest, shortest, put_run, put_literal):
    """Runs of at least `shortest` values, and what lies between them, each by its own writer."""
    out, literal = b"", []
    for value, count in runs_of(values, longest):
        if count < shortest:
            literal += [value] * count
            while len(literal) >= longest:
                out, literal = out + put_literal(literal[:longest]), literal[longest:]
            continue
        out += put_literal(literal) if literal else b""
        literal = []
        out += put_run(value, count)
    return out + (put_literal(literal) if literal else b"")


# --- OpenEXR --------------------------------------------------------------------------------------

EXR_MAGIC = struct.pack("<II", 20000630, 2)
EXR_TYPES = {0: np.dtype("<u4"), 1: np.dtype("<f2"), 2: np.dtype("<f4")}
EXR_PLAIN, EXR_SINGLE_ROWS, EXR_SIXTEEN_ROWS = 0, 2, 3  # kinds of compression


def exr_attribute(name, kind, value):
    return name.encode() + b"\0" + kind.encode() + b"\0" + struct.pack("<I", len(value)) + value


def exr_header(channels, data, display):
    """`channels`: (name, number of its type); windows: x and y of the first and the last pixel."""
    listed = b"".join(
        name.encode() + b"\0" + struct.pack("<IB3xII", kind, 0, 1, 1) for name, kind in channels
    )
    attributes = [
        ("channels", "chlist", listed + b"\0"),
        ("compression", "compression", b"\0"),
        ("dataWindow", "box2i", struct.pack("<4i", *data)),
        ("displayWindow", "box2i", struct.pack("<4i", *display)),
        ("lineOrder", "lineOrder", b"\0"),
        ("pixelAspectRatio", "float", struct.pack("<f", 1)),
        ("screenWindowCenter", "v2f", struct.pack("<2f", 0, 0)),
        ("screenWindowWidth", "float", struct.pack("<f", 1)),
    ]
    return EXR_MAGIC + b"".join(exr_attribute(*a) for a in attributes) + b"\0"


def exr(planes, data=None, display=None):
    """Plain rows of planes by their names, of half or single precision. The data window is as large
    as the planes; without a display window that is the same."""
    names = sorted(planes)
    height, width = planes[names[0]].shape
    data = data or (0, 0, width - 1, height - 1)
    kinds = [1 if planes[name].dtype == np.float16 else 2 for name in names]
    header = exr_header(list(zip(names, kinds)), data, display or data)
    rows = [
        b"".join(planes[n][y].astype(EXR_TYPES[k]).tobytes() for n, k in zip(names, kinds))
        for y in range(height)
    ]
    blocks = [struct.pack("<iI", data[1] + y, len(row)) + row for y, row in enumerate(rows)]
    first = len(header) + 8 * height
    places = first + np.cumsum([0, *(len(block) for block in blocks[:-1])])
    return header + b"".join(struct.pack("<Q", p) for p in places) + b"".join(blocks)


def exr_unpacked(block, size):
    """A block that was taken apart into even and odd bytes, made into differences, and deflated; one
    that would not become smaller is stored as it is."""
    if len(block) == size:
        return block
    steps = np.frombuffer(zlib.decompress(block), np.uint8).astype(np.int64)
    steps[1:] -= 128
    halves = np.cumsum(steps) % 256
    whole, middle = np.zeros(size, np.uint8), (size + 1) // 2
    whole[0::2], whole[1::2] = halves[:middle], halves[middle:]
    return whole.tobytes()


def exr_attributes(data):
    """The attributes by name, and the place behind them."""
    assert data[:8] == EXR_MAGIC
    attributes, at = {}, 8
    while data[at]:
        name, kind, rest = data[at:].split(b"\0", 2)
        size = struct.unpack_from("<I", rest)[0]
        at += len(name) + len(kind) + 6
        attributes[name.decode()] = data[at : at + size]
        at += size
    return attributes, at + 1


def read_exr(data):
    """Planes by their names, of rows that are plain or deflated."""
    attributes, at = exr_attributes(data)
    channels, listed = [], attributes["channels"]
    while listed[0]:
        name, listed = listed.split(b"\0", 1)
        channels.append((name.decode(), EXR_TYPES[struct.unpack_from("<I", listed)[0]]))
        listed = listed[16:]
    left, top, right, bottom = struct.unpack("<4i", attributes["dataWindow"])
    width, height = right - left + 1, bottom - top + 1
    rows = {EXR_PLAIN: 1, EXR_SINGLE_ROWS: 1, EXR_SIXTEEN_ROWS: 16}[attributes["compression"][0]]
    planes = {name: np.zeros((height, width), kind) for name, kind in channels}
    for place in struct.unpack_from(f"<{-(-height // rows)}Q", data, at):
        first, size = struct.unpack_from("<iI", data, place)
        count = min(rows, bottom + 1 - first)
        block = data[place + 8 : place + 8 + size]
        block = exr_unpacked(block, count * width * sum(kind.itemsize for _, kind in channels))
        for y in range(first - top, first - top + count):
            for name, kind in channels:
                planes[name][y] = np.frombuffer(block, kind, width)
                block = block[width * kind.itemsize :]
    return planes


# --- film scans -----------------------------------------------------------------------------------

CINEON_MAGIC = 0x802A5FD7
FILM_HEADER = 2048


def film_words(codes, order):
    """Three codes of 10 bits in the upper bits of a word."""
    wide = codes.astype(np.uint32)
    words = wide[..., 0] << 22 | wide[..., 1] << 12 | wide[..., 2] << 2
    return words.astype(f"{order}u4").tobytes()


def film_codes(data, width, height, order):
    words = np.frombuffer(data, f"{order}u4", width * height).reshape(height, width)
    return np.stack([words >> 22, words >> 12 & 1023, words >> 2 & 1023], axis=-1).astype(np.uint16)


def dpx(codes, order=">"):
    """(height, width, 3) codes of 10 bits."""
    height, width = codes.shape[:2]
    header = bytearray(FILM_HEADER)
    struct.pack_into(f"{order}4sI8sI", header, 0, b"", FILM_HEADER, b"V1.0",
                     FILM_HEADER + 4 * width * height)
    header[:4] = b"SDPX" if order == ">" else b"XPDS"
    struct.pack_into(f"{order}HHII", header, 768, 0, 1, width, height)
    struct.pack_into(f"{order}IIIII4BHHIII", header, 780, 0, 0, 0, 1023, 0, 50, 3, 1, 10, 1, 0,
                     FILM_HEADER, 0, 0)
    return bytes(header) + film_words(codes, order)


def read_dpx(data):
    order = {b"SDPX": ">", b"XPDS": "<"}[data[:4]]
    place = struct.unpack_from(f"{order}I", data, 4)[0]
    count, width, height = struct.unpack_from(f"{order}HII", data, 770)
    kind, bits, packing = data[800], data[803], struct.unpack_from(f"{order}H", data, 804)[0]
    assert (count, kind, bits, packing) == (1, 50, 10, 1)
    assert len(data) == struct.unpack_from(f"{order}I", data, 16)[0]
    return film_codes(data[place:], width, height, order)


def cineon(codes, order=">"):
    height, width = codes.shape[:2]
    header = bytearray(FILM_HEADER)
    struct.pack_into(f"{order}6I8s", header, 0, CINEON_MAGIC, FILM_HEADER, 1024, 1024, 0,
                     FILM_HEADER + 4 * width * height, b"V4.5")
    header[192:194] = bytes((0, 3))
    for i in range(3):
        struct.pack_into(f"{order}4BII", header, 196 + 28 * i, 0, i + 1, 10, 0, width, height)
    header[680:684] = bytes((0, 5, 0, 0))
    return bytes(header) + film_words(codes, order)


def read_cineon(data):
    order = ">" if struct.unpack_from(">I", data)[0] == CINEON_MAGIC else "<"
    magic, place = struct.unpack_from(f"{order}II", data)
    assert magic == CINEON_MAGIC and data[193] == 3 and tuple(data[680:683]) == (0, 5, 0)
    shapes = [struct.unpack_from(f"{order}II", data, 200 + 28 * i) for i in range(3)]
    assert len(set(shapes)) == 1 and all(data[198 + 28 * i] == 10 for i in range(3))
    return film_codes(data[place:], *shapes[0], order)


# --- SGI ------------------------------------------------------------------------------------------


def sgi_row(values):
    """Runs and literals of at most 127 samples, and the end mark; samples of the row's own width."""
    kind = values.dtype.newbyteorder(">")
    word = lambda number: np.array([number], kind).tobytes()
    row = packed_runs(
        values.tolist(), 127, 3,
        lambda value, count: word(count) + word(value),
        lambda literal: word(0x80 | len(literal)) + np.array(literal, kind).tobytes(),
    )
    return row + word(0)


def sgi(pixels, packed=False):
    planes, (width, height) = pixels.planes(), pixels.size
    itemsize = planes[0].dtype.itemsize
    dimension = 2 if len(planes) == 1 else 3
    header = struct.pack(">HBBHHHHII4x80sI404x", 474, packed, itemsize, dimension, width, height,
                         len(planes), 0, 256**itemsize - 1, b"", 0)
    upward = [plane[::-1] for plane in planes]
    if not packed:
        return header + b"".join(p.astype(p.dtype.newbyteorder(">")).tobytes() for p in upward)
    rows = [sgi_row(row) for plane in upward for row in plane]
    lengths = [len(row) for row in rows]
    places = 512 + 8 * len(rows) + np.cumsum([0, *lengths[:-1]])
    tables = struct.pack(f">{2 * len(rows)}I", *places, *lengths)
    return header + tables + b"".join(rows)


def unpacked_sgi_row(data, kind):
    values, at, row = np.frombuffer(data, kind), 0, []
    while values[at] & 0x7F:
        count, literal = int(values[at] & 0x7F), values[at] & 0x80
        row += values[at + 1 : at + 1 + count].tolist() if literal else [values[at + 1]] * count
        at += 1 + (count if literal else 1)
    return row


def read_sgi(data):
    """(height, width, channels)"""
    magic, packed, itemsize, dimension, width, height, channels = struct.unpack_from(">HBBHHHH", data)
    assert magic == 474
    channels = channels if dimension == 3 else 1
    kind, rows = np.dtype(f">u{itemsize}"), height * channels
    if packed:
        tables = struct.unpack_from(f">{2 * rows}I", data, 512)
        samples = [unpacked_sgi_row(data[place : place + size], kind)
                   for place, size in zip(tables[:rows], tables[rows:])]
    else:
        samples = np.frombuffer(data, kind, rows * width, 512)
    planes = np.array(samples, kind.newbyteorder("=")).reshape(channels, height, width)
    return np.moveaxis(planes[:, ::-1], 0, -1)


# --- Photoshop ------------------------------------------------------------------------------------


def psd(pixels):
    """Without layers and resources, the picture stored plainly."""
    planes, (width, height) = pixels.planes(), pixels.size
    mode = 1 if pixels.colour.ndim == 2 else 3
    bits = 8 * planes[0].dtype.itemsize
    header = struct.pack(">4sH6xHIIHH", b"8BPS", 1, len(planes), height, width, bits, mode)
    rows = b"".join(p.astype(p.dtype.newbyteorder(">")).tobytes() for p in planes)
    return header + struct.pack(">IIIH", 0, 0, 0, 0) + rows


# --- Radiance -------------------------------------------------------------------------------------


def shared_exponents(light):
    """(height, width, 4): three bytes and the power of two that they are to be multiplied with."""
    most = light.max(axis=-1)
    fraction, exponent = np.frexp(most)
    exponent += fraction * 256 >= 255.5
    bytes_ = np.round(light * np.exp2(8.0 - exponent)[..., None])
    pixels = np.concatenate([bytes_, exponent[..., None] + 128], axis=-1).astype(np.uint8)
    pixels[most == 0] = 0
    return pixels


def light_of_exponents(pixels):
    scale = np.where(pixels[..., 3] > 0, np.exp2(pixels[..., 3].astype(np.float64) - 136), 0)
    return pixels[..., :3] * scale[..., None]


def hdr_row(row):
    head = struct.pack(">BBH", 2, 2, len(row))
    return head + b"".join(
        packed_runs(
            plane.tolist(), 127, 3,
            lambda value, count: bytes((128 + count, value)),
            lambda literal: bytes((len(literal), *literal)),
        )
        for plane in row.T
    )


def hdr(pixels, packed=True):
    """(height, width, 4) as shared_exponents gives them."""
    height, width = pixels.shape[:2]
    head = f"#?RADIANCE\n# of our own making\nFORMAT=32-bit_rle_rgbe\n\n-Y {height} +X {width}\n"
    return head.encode() + b"".join(hdr_row(row) if packed else row.tobytes() for row in pixels)


def read_hdr(data):
    """The light of pixels that are stored one by one."""
    head, rows = data.split(b"\n\n", 1)
    assert head.startswith(b"#?RADIANCE\n") and b"FORMAT=32-bit_rle_rgbe" in head
    size, rows = rows.split(b"\n", 1)
    down, height, right, width = size.decode().split()
    assert (down, right) == ("-Y", "+X")
    shape = (int(height), int(width), 4)
    assert len(rows) == np.prod(shape), "read are only pixels that are stored one by one"
    return light_of_exponents(np.frombuffer(rows, np.uint8).reshape(shape))


# --- maps -----------------------------------------------------------------------------------------


def pfm(light, order):
    """Float maps have the bottom row first."""
    head = f"{'Pf' if light.ndim == 2 else 'PF'}\n{light.shape[1]} {light.shape[0]}\n"
    scale = {"<": "-1.0\n", ">": "1.0\n"}[order]
    return (head + scale).encode() + light[::-1].astype(f"{order}f4").tobytes()


def read_pfm(data):
    kind, size, scale, rows = data.split(b"\n", 3)
    width, height = map(int, size.split())
    shape = (height, width, 3) if kind == b"PF" else (height, width)
    return np.frombuffer(rows, "<f4" if float(scale) < 0 else ">f4").reshape(shape)[::-1]


TUPLES = {1: "GRAYSCALE", 2: "GRAYSCALE_ALPHA", 3: "RGB", 4: "RGB_ALPHA"}


def pam(pixels):
    samples = pixels.samples()
    height, width, depth = samples.shape
    head = f"P7\nWIDTH {width}\nHEIGHT {height}\nDEPTH {depth}\nMAXVAL {np.iinfo(samples.dtype).max}\n"
    head += f"TUPLTYPE {TUPLES[depth]}\nENDHDR\n"
    return head.encode() + samples.astype(samples.dtype.newbyteorder(">")).tobytes()


def map_samples(rows, width, height, depth, most):
    kind = np.dtype(">u2" if most > 255 else "u1")
    assert most == np.iinfo(kind).max and len(rows) == width * height * depth * kind.itemsize
    return np.frombuffer(rows, kind).reshape(height, width, depth).astype(kind.newbyteorder("="))


def read_pam(data):
    head, rows = data.split(b"ENDHDR\n", 1)
    fields = dict(line.split(" ", 1) for line in head.decode().splitlines()[1:])
    assert TUPLES[int(fields["DEPTH"])] == fields["TUPLTYPE"]
    return map_samples(rows, *(int(fields[n]) for n in ("WIDTH", "HEIGHT", "DEPTH", "MAXVAL")))


def read_pnm(data):
    kind, width, height, most, rows = data.split(maxsplit=4)
    head = len(data) - len(rows)
    while not data[head - 1 : head].isspace() or data[head - 2 : head - 1].isspace():
        head -= 1  # samples that look like blanks
    depth = {b"P5": 1, b"P6": 3}[kind]
    return map_samples(data[head:], int(width), int(height), depth, int(most))


# --- PNG ------------------------------------------------------------------------------------------

PNG_MAGIC = b"\x89PNG\r\n\x1a\n"
PNG_COLOURS = {1: 0, 2: 4, 3: 2, 4: 6}


def png_chunk(kind, body):
    return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))


def png_file(width, height, bits, colour, deflated):
    header = struct.pack(">IIBBBBB", width, height, bits, colour, 0, 0, 0)
    chunks = [(b"IHDR", header), (b"IDAT", deflated), (b"IEND", b"")]
    return PNG_MAGIC + b"".join(png_chunk(*chunk) for chunk in chunks)


def png(pixels, level=1):
    """Rows without a filter."""
    samples = pixels.samples()
    height, width, channels = samples.shape
    big = samples.astype(samples.dtype.newbyteorder(">"))
    rows = b"".join(b"\0" + row.tobytes() for row in big)
    bits = 8 * samples.dtype.itemsize
    return png_file(width, height, bits, PNG_COLOURS[channels], zlib.compress(rows, level))


def png_prediction(kind, left, above, corner):
    if kind == 4:
        near = left + above - corner
        return min((abs(near - v), i, v) for i, v in enumerate((left, above, corner)))[2]
    return (0, left, above, (left + above) // 2)[kind]


def read_png(data):
    """(height, width, channels) of a picture of 8 or 16 bits that is not interlaced."""
    assert data.startswith(PNG_MAGIC)
    at, chunks = len(PNG_MAGIC), []
    while at < len(data):
        size, kind = struct.unpack_from(">I4s", data, at)
        chunks.append((kind, data[at + 8 : at + 8 + size]))
        assert data[at : at + 12 + size] == png_chunk(*chunks[-1]), "a wrong check sum"
        at += 12 + size
    width, height, bits, colour, *rest = struct.unpack(">IIBBBBB", dict(chunks)[b"IHDR"])
    channels = {v: k for k, v in PNG_COLOURS.items()}[colour]
    assert bits in (8, 16) and rest == [0, 0, 0] and chunks[-1][0] == b"IEND"
    rows = zlib.decompress(b"".join(body for kind, body in chunks if kind == b"IDAT"))
    step, stride = channels * bits // 8, width * channels * bits // 8
    assert len(rows) == height * (1 + stride)
    above, out = bytes(stride), []
    for y in range(height):
        kind, row = rows[y * (1 + stride)], bytearray(rows[y * (1 + stride) + 1 :][:stride])
        for i in range(stride if kind else 0):
            left, corner = (row[i - step], above[i - step]) if i >= step else (0, 0)
            row[i] = row[i] + png_prediction(kind, left, above[i], corner) & 255
        above = row
        out.append(bytes(row))
    samples = np.frombuffer(b"".join(out), ">u2" if bits == 16 else "u1")
    return samples.reshape(height, width, channels).astype(samples.dtype.newbyteorder("="))


# --- TIFF -----------------------------------------------------------------------------------------

TIFF_KINDS = {1: "B", 2: "B", 3: "H", 4: "I", 5: "Q"}
WIDTH, HEIGHT, BITS, COMPRESSION, PHOTOMETRIC, STRIPS, CHANNELS, STRIP_ROWS, STRIP_SIZES = (
    256, 257, 258, 259, 262, 273, 277, 278, 279,
)
PREDICTOR, EXTRA = 317, 338


def tiff_file(tags, data):
    """Little-endian; `tags`: {number: values}, each of 32 bits; the strips' data begins at byte 8."""
    at, table, room = 8 + len(data), b"", b""
    end = at + 2 + 12 * len(tags) + 4
    for number, values in sorted(tags.items()):
        body = struct.pack(f"<{len(values)}I", *values)
        if len(values) > 1:
            body, room = struct.pack("<I", end + len(room)), room + body
        table += struct.pack("<HHI", number, 4, len(values)) + body
    directory = struct.pack("<H", len(tags)) + table + struct.pack("<I", 0)
    return struct.pack("<2sHI", b"II", 42, at) + data + directory + room


def tiff(pixels):
    """One plain strip."""
    samples = pixels.samples()
    height, width, channels = samples.shape
    data = samples.astype(samples.dtype.newbyteorder("<")).tobytes()
    colour = pixels.colour.ndim == 3
    tags = {
        WIDTH: [width], HEIGHT: [height], BITS: [8 * samples.dtype.itemsize] * channels,
        COMPRESSION: [1], PHOTOMETRIC: [2 if colour else 1], STRIPS: [8], CHANNELS: [channels],
        STRIP_ROWS: [height], STRIP_SIZES: [len(data)],
    }
    return tiff_file(tags if pixels.mask is None else {**tags, EXTRA: [2]}, data)


def lzw_unpacked(data):
    """Codes of 9 to 12 bits, the highest bit first; 256 begins anew, 257 ends."""
    out, table, last, bits, held, width = [], [], None, 0, 0, 9
    for byte in data:
        held, bits = held << 8 | byte, bits + 8
        if bits < width:
            continue
        bits -= width
        code, held = held >> bits, held & (1 << bits) - 1
        if code == 257:
            break
        if code == 256:
            table, last, width = [bytes((i,)) for i in range(256)] + [b"", b""], None, 9
            continue
        entry = table[code] if code < len(table) else last + last[:1]
        out.append(entry)
        if last is not None:
            table.append(last + entry[:1])
        last = entry
        width = 9 + (len(table) >= 511) + (len(table) >= 1023) + (len(table) >= 2047)
    return b"".join(out)


def read_tiff(data):
    """(height, width, channels) of plain or LZW-packed strips."""
    order = {b"II": "<", b"MM": ">"}[data[:2]]
    assert struct.unpack_from(f"{order}H", data, 2)[0] == 42
    at = struct.unpack_from(f"{order}I", data, 4)[0]
    tags = {COMPRESSION: (1,), PREDICTOR: (1,)}
    for i in range(struct.unpack_from(f"{order}H", data, at)[0]):
        number, kind, count = struct.unpack_from(f"{order}HHI", data, at + 2 + 12 * i)
        layout, place = f"{order}{count}{TIFF_KINDS[kind]}", at + 10 + 12 * i
        if struct.calcsize(layout) > 4:
            place = struct.unpack_from(f"{order}I", data, place)[0]
        tags[number] = struct.unpack_from(layout, data, place)
    assert tags[COMPRESSION][0] in (1, 5)
    strips = [data[p : p + n] for p, n in zip(tags[STRIPS], tags[STRIP_SIZES])]
    unpack = lzw_unpacked if tags[COMPRESSION][0] == 5 else bytes
    kind = np.dtype(f"{order}u{tags[BITS][0] // 8}")
    samples = np.frombuffer(b"".join(map(unpack, strips)), kind)
    samples = samples.reshape(tags[HEIGHT][0], tags[WIDTH][0], tags[CHANNELS][0])
    samples = samples.astype(kind.newbyteorder("="))
    return np.cumsum(samples, axis=1, dtype=samples.dtype) if tags[PREDICTOR][0] == 2 else samples
