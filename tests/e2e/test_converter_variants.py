"""Rarer layouts of other people's files, written here byte by byte or by other libraries."""

import io
import lzma
import struct

import numpy as np
import pytest
from PIL import Image

import framefile
import framereader
import pictures
from pictures import Pixels

WIDTH, HEIGHT = 38, 22


def noise(channels=3, dtype=np.uint8, seed=5):
    return framefile.noise(WIDTH, HEIGHT, seed, channels, dtype)


def converted(system, tmp_path, data, name="picture"):
    (tmp_path / name).write_bytes(data)
    done = system.run_tool("pixconv", name, "stdout", folder=tmp_path)
    assert (done.status, done.messages) == (0, "")
    return framereader.read(done.output)


def refusal(system, tmp_path, data, name="picture"):
    (tmp_path / name).write_bytes(data)
    done = system.run_tool("pixconv", name, "stdout", folder=tmp_path)
    assert (done.status, done.output) == (1, b"")
    return done.messages


def written(system, tmp_path, frame, name):
    (tmp_path / "frame").write_bytes(frame)
    with (tmp_path / "frame").open("rb") as stream:
        done = system.run_tool("pixconv", name, stdin=stream, folder=tmp_path)
    assert (done.status, done.messages) == (0, "")
    return (tmp_path / name).read_bytes()


# --- OpenEXR --------------------------------------------------------------------------------------

KINDS = {np.dtype(np.uint32): 0, np.dtype(np.float16): 1, np.dtype(np.float32): 2}


def exr(planes, sampling=None):
    """Plain rows; a plane of lower resolution has its steps across and down in `sampling`."""
    sampling = sampling or {}
    names = sorted(planes)
    step = lambda name: sampling.get(name, 1)
    listed = b"".join(
        name.encode() + b"\0"
        + struct.pack("<IB3xII", KINDS[planes[name].dtype], 0, step(name), step(name))
        for name in names
    )
    window = (0, 0, WIDTH - 1, HEIGHT - 1)
    plain = pictures.exr_header([], window, window)
    empty = pictures.exr_attribute("channels", "chlist", b"\0")
    header = plain.replace(empty, pictures.exr_attribute("channels", "chlist", listed + b"\0"))
    rows = [
        b"".join(planes[n][y // step(n)].tobytes() for n in names if y % step(n) == 0)
        for y in range(HEIGHT)
    ]
    blocks = [struct.pack("<iI", y, len(row)) + row for y, row in enumerate(rows)]
    first = len(header) + 8 * HEIGHT
    places = first + np.cumsum([0, *(len(block) for block in blocks[:-1])])
    return header + b"".join(struct.pack("<Q", p) for p in places) + b"".join(blocks)


WEIGHTS = 0.2126, 0.7152, 0.0722  # of light, for the usual primaries


def luminance_chroma(colour):
    """One colour everywhere."""
    y = sum(w * c for w, c in zip(WEIGHTS, colour))
    half = lambda value: np.full((HEIGHT // 2, WIDTH // 2), value, np.float16)
    return {
        "Y": np.full((HEIGHT, WIDTH), y, np.float16),
        "RY": half((colour[0] - y) / y),
        "BY": half((colour[2] - y) / y),
    }


@pytest.mark.parametrize("layer", ["", "left."])
def test_luminance_and_chroma_become_colour(system, tmp_path, layer):
    colour = 0.6, 0.2, 0.05
    planes = {layer + name: plane for name, plane in luminance_chroma(colour).items()}
    frame = converted(system, tmp_path, exr(planes, {layer + "RY": 2, layer + "BY": 2}))
    wanted = pictures.bytes_of_light(np.array(colour))
    assert np.abs(frame.colour.astype(int) - wanted.low).max() <= 1
    assert frame.mask is None


def test_luminance_and_chroma_keep_their_mask(system, tmp_path):
    planes = luminance_chroma((0.5, 0.5, 0.5))
    planes["A"] = np.random.default_rng(2).uniform(0, 1, (HEIGHT, WIDTH)).astype(np.float16)
    frame = converted(system, tmp_path, exr(planes, {"RY": 2, "BY": 2}))
    assert np.abs(frame.mask - planes["A"].astype(float) * 255).max() <= 1
    assert np.ptp(frame.colour) <= 1


def test_channels_of_lower_resolution_are_spread(system, tmp_path):
    generator = np.random.default_rng(6)
    full = generator.uniform(0, 1, (HEIGHT, WIDTH)).astype(np.float32)
    low = generator.uniform(0, 1, (HEIGHT // 2, WIDTH // 2)).astype(np.float32)
    frame = converted(system, tmp_path, exr({"R": full, "G": low, "B": low}, {"G": 2, "B": 2}))
    wide = low.repeat(2, axis=0).repeat(2, axis=1)
    span = pictures.bytes_of_light(np.stack([full, wide, wide], axis=-1))
    assert ((frame.colour == span.low) | (frame.colour == span.high)).all()


def test_channels_in_small_letters_are_colour(system, tmp_path):
    light = np.random.default_rng(7).uniform(0, 1, (4, HEIGHT, WIDTH)).astype(np.float32)
    frame = converted(system, tmp_path, exr(dict(zip("rgba", light))))
    span = pictures.bytes_of_light(np.moveaxis(light[:3], 0, -1))
    assert ((frame.colour == span.low) | (frame.colour == span.high)).all()
    assert np.abs(frame.mask - light[3] * 255).max() <= 0.51


def test_whole_numbers_are_shares_of_the_largest(system, tmp_path):
    codes = np.random.default_rng(8).integers(0, 2**32, (3, HEIGHT, WIDTH), dtype=np.uint32)
    frame = converted(system, tmp_path, exr(dict(zip("RGB", codes))))
    span = pictures.bytes_of_light(np.moveaxis(codes, 0, -1) / (2**32 - 1))
    assert np.abs(frame.colour.astype(int) - span.low).max() <= 1
    assert np.ptp(frame.colour) > 200


# --- TIFF -----------------------------------------------------------------------------------------


def packed_bits(samples, bits):
    """Rows of samples, the highest bit first, each from a byte on."""
    rows = samples.reshape(samples.shape[0], -1)
    unpacked = (rows[..., None].astype(np.uint32) >> np.arange(bits - 1, -1, -1)) & 1
    return np.packbits(unpacked.reshape(rows.shape[0], -1).astype(np.uint8), axis=1).tobytes()


def tiff(data, bits, photometric, channels, further=None, rows=None, pack=None, compression=1):
    rows = rows or HEIGHT
    pieces = len(data) // HEIGHT * rows
    strips = [data[i : i + pieces] for i in range(0, len(data), pieces)]
    strips = [pack(strip) if pack else strip for strip in strips]
    places = 8 + np.cumsum([0, *map(len, strips[:-1])])
    tags = {256: [WIDTH], 257: [HEIGHT], 258: [bits] * channels, 259: [compression],
            262: [photometric], 273: places.tolist(), 277: [channels], 278: [rows],
            279: list(map(len, strips)), **(further or {})}
    return pictures.tiff_file(tags, b"".join(strips))


def scaled(codes, bits):
    """To 8 or 16 bits, the nearest."""
    most, full = 2**bits - 1, 255 if bits <= 8 else 65535
    return (codes.astype(np.uint64) * full + most // 2) // most


def codes_of(bits, channels, seed=3):
    codes = np.random.default_rng(seed).integers(0, 2**bits, (HEIGHT, WIDTH, channels), dtype=np.int64)
    codes[0, :2] = [[0], [2**bits - 1]]
    return codes.astype(np.uint32)


@pytest.mark.parametrize("channels", [1, 3, 4], ids=["grey", "colour", "colour and mask"])
@pytest.mark.parametrize("bits", [2, 4, 6, 10, 12, 14])
def test_tiff_of_odd_depths(system, tmp_path, bits, channels):
    codes = codes_of(bits, channels)
    data = tiff(packed_bits(codes, bits), bits, 1 if channels == 1 else 2, channels,
                {338: [2]} if channels == 4 else {})
    frame = converted(system, tmp_path, data)
    assert frame.colour.dtype == (np.uint8 if bits <= 8 else np.uint16)
    wanted = scaled(codes, bits)
    assert np.array_equal(frame.colour, wanted[..., :3] if channels > 1 else wanted.repeat(3, axis=2))
    assert channels < 4 or np.array_equal(frame.mask, wanted[..., 3])


def test_tiff_of_12_bits_where_white_is_zero(system, tmp_path):
    codes = codes_of(12, 1)
    frame = converted(system, tmp_path, tiff(packed_bits(codes, 12), 12, 0, 1))
    assert np.array_equal(frame.colour[..., :1], scaled(4095 - codes, 12))


@pytest.mark.parametrize("dtype", [np.int8, np.int16, np.int32])
def test_tiff_of_signed_samples_has_zero_in_the_middle(system, tmp_path, dtype):
    low, high = np.iinfo(dtype).min, np.iinfo(dtype).max
    values = np.random.default_rng(4).integers(low, high, (HEIGHT, WIDTH, 3), dtype=dtype, endpoint=True)
    values[0, :3, 0] = low, 0, high
    bits = values.itemsize * 8
    frame = converted(system, tmp_path, tiff(values.tobytes(), bits, 2, 3, {339: [2] * 3}))
    wanted = values.astype(np.int64) - low
    assert np.array_equal(frame.colour, wanted >> max(bits - 16, 0))


def light_of_inks(inks, full):
    values = inks.astype(np.uint64)
    return ((full - values[..., :3]) * (full - values[..., 3:4]) + full // 2) // full


@pytest.mark.parametrize("planar", [1, 2], ids=["together", "apart"])
@pytest.mark.parametrize("mask", [False, True], ids=["inks", "inks and mask"])
@pytest.mark.parametrize("dtype", [np.uint8, np.uint16])
def test_tiff_of_inks(system, tmp_path, dtype, mask, planar):
    inks = noise(5 if mask else 4, dtype)
    data = inks.tobytes() if planar == 1 else np.moveaxis(inks, -1, 0).tobytes()
    further = {332: [1], 284: [planar], **({338: [2]} if mask else {})}
    channels, size = inks.shape[-1], WIDTH * HEIGHT * inks.itemsize
    if planar == 2:
        further |= {273: [8 + i * size for i in range(channels)], 279: [size] * channels}
    frame = converted(system, tmp_path, tiff(data, 8 * inks.itemsize, 5, channels, further))
    assert np.array_equal(frame.colour, light_of_inks(inks, np.iinfo(dtype).max))
    assert (frame.mask is not None) == mask and (not mask or np.array_equal(frame.mask, inks[..., 4]))


def zstd_stored(data):
    """One frame of one raw block."""
    assert len(data) < 1 << 17
    size = struct.pack("<I", len(data))
    return b"\x28\xb5\x2f\xfd\xa0" + size + struct.pack("<I", len(data) << 3 | 1)[:3] + data


@pytest.mark.parametrize("code, pack", [(34925, lzma.compress), (50000, zstd_stored)],
                         ids=["LZMA", "ZSTD"])
def test_tiff_in_newer_packings(system, tmp_path, code, pack):
    pixels = noise()
    frame = converted(system, tmp_path, tiff(pixels.tobytes(), 8, 2, 3, None, 5, pack, code))
    assert np.array_equal(frame.colour, pixels)


UNKNOWN = {
    "JPEG 2000": lambda: tiff(bytes(WIDTH * HEIGHT * 3), 8, 2, 3, compression=34712),
    "compression 40000": lambda: tiff(bytes(WIDTH * HEIGHT * 3), 8, 2, 3, compression=40000),
    "complex numbers": lambda: tiff(bytes(WIDTH * HEIGHT * 8), 64, 1, 1, {339: [6]}),
}


@pytest.mark.parametrize("name", UNKNOWN)
def test_what_tiff_holds_that_is_not_read_is_not_called_damaged(system, tmp_path, name):
    said = refusal(system, tmp_path, UNKNOWN[name]())
    assert name in said and "not supported" in said and "damaged" not in said


# --- Photoshop ------------------------------------------------------------------------------------

BITMAP, GREY, RGB, CMYK, DUOTONE, LAB = 0, 1, 3, 4, 8, 9


def psd(mode, bits, planes, header=b""):
    """The planes' bytes one after the other; `header` is the section of the colour mode."""
    start = struct.pack(">4sH6xHIIHH", b"8BPS", 1, len(planes), HEIGHT, WIDTH, bits, mode)
    return (start + struct.pack(">I", len(header)) + header + struct.pack(">IIH", 0, 0, 0)
            + b"".join(planes))


def planes_of(samples):
    big = samples.astype(samples.dtype.newbyteorder(">"))
    return [plane.tobytes() for plane in np.moveaxis(big, -1, 0)]


@pytest.mark.parametrize("channels", [4, 5], ids=["inks", "inks and mask"])
@pytest.mark.parametrize("dtype", [np.uint8, np.uint16])
def test_psd_in_inks(system, tmp_path, dtype, channels):
    stored = noise(channels, dtype)
    full = np.iinfo(dtype).max
    frame = converted(system, tmp_path, psd(CMYK, 8 * stored.itemsize, planes_of(stored)))
    assert np.array_equal(frame.colour, light_of_inks(full - stored, full))
    assert channels == 4 or np.array_equal(frame.mask, stored[..., 4])


TO_XYZ = np.array([[0.4360747, 0.3850649, 0.1430804], [0.2225045, 0.7168786, 0.0606169],
                   [0.0139322, 0.0971045, 0.7141733]])  # under D50


def lab_of(colour):
    """Lightness, a and b of what a screen shows."""
    ratio = pictures.light_of(colour) @ TO_XYZ.T / (0.9642, 1, 0.8249)
    root = np.where(ratio > 216 / 24389, np.cbrt(ratio), (24389 / 27 * ratio + 16) / 116)
    x, y, z = np.moveaxis(root, -1, 0)
    return np.stack([116 * y - 16, 500 * (x - y), 200 * (y - z)], axis=-1)


@pytest.mark.parametrize("bits", [8, 16])
def test_psd_in_lab(system, tmp_path, bits):
    colour = noise() // 2 + 64  # far from black, where a step of lightness is several of a byte
    colour[0, :2] = [[0] * 3, [255] * 3]
    full, step, dtype = (255, 1, np.uint8) if bits == 8 else (65535, 256, np.uint16)
    lab = lab_of(colour)
    stored = np.concatenate([lab[..., :1] * full / 100, (lab[..., 1:] + 128) * step], axis=-1)
    planes = planes_of(np.round(stored).clip(0, full).astype(dtype))
    frame = converted(system, tmp_path, psd(LAB, bits, planes))
    # Half a step of a or b is up to three of blue.
    apart = np.abs((frame.colour >> (bits - 8)).astype(int) - colour)
    assert apart.max() <= (4 if bits == 8 else 1)


def test_psd_in_black_and_white(system, tmp_path):
    dots = noise(1) > 100
    frame = converted(system, tmp_path, psd(BITMAP, 1, [np.packbits(dots, axis=1).tobytes()]))
    assert np.array_equal(frame.colour[..., 0], np.where(dots, 0, 255))


def test_psd_in_duotone_is_grey(system, tmp_path):
    grey = noise(1)
    frame = converted(system, tmp_path, psd(DUOTONE, 8, [grey.tobytes()], bytes(range(60))))
    assert np.array_equal(frame.colour, np.dstack([grey] * 3))


@pytest.mark.parametrize("mode, channels", [(GREY, 1), (RGB, 3), (RGB, 4)])
def test_psd_of_floating_point_light(system, tmp_path, mode, channels):
    light = np.random.default_rng(9).uniform(-0.2, 1.5, (HEIGHT, WIDTH, channels)).astype(np.float32)
    frame = converted(system, tmp_path, psd(mode, 32, planes_of(light)))
    span = pictures.bytes_of_light(light[..., :3] if channels > 1 else light.repeat(3, axis=2))
    assert ((frame.colour == span.low) | (frame.colour == span.high)).all()
    assert channels < 4 or np.abs(frame.mask - light[..., 3].clip(0, 1) * 255).max() <= 0.51


# --- film scans -----------------------------------------------------------------------------------


def test_dpx_of_a_picture_is_video_and_that_of_film_codes_is_film(system, tmp_path):
    picture = pictures.frame_bytes(Pixels(noise()))
    data = written(system, tmp_path, picture, "a.dpx")
    assert tuple(data[801:803]) == (6, 6)  # Rec. 709
    codes = (noise(dtype=np.uint16) >> 6).astype(np.uint16)
    (tmp_path / "a.cin").write_bytes(pictures.cineon(codes))
    scan = system.run_tool("pixconv", "a.cin", "stdout", folder=tmp_path).output
    data = written(system, tmp_path, scan, "b.dpx")
    assert tuple(data[801:803]) == (1, 1)  # printing densities
    assert np.array_equal(pictures.read_dpx(data), codes)
    again = system.run_tool("pixconv", "b.dpx", "stdout", folder=tmp_path).output
    assert np.array_equal(pictures.read_cineon(written(system, tmp_path, again, "b.cin")), codes)


def light_of_film(codes):
    """As readers take them: white at 685, black at 95, 0.002 of density a code, gamma 0.6."""
    black = 10 ** ((95 - 685) * 0.002 / 0.6)
    return (10 ** ((codes.astype(float) - 685) * 0.002 / 0.6) - black) / (1 - black)


@pytest.mark.parametrize("dtype", [np.uint8, np.uint16])
def test_cineon_of_a_picture_has_codes_of_film(system, tmp_path, dtype):
    pixels = noise(dtype=dtype)
    full = np.iinfo(dtype).max
    pixels[0, :2] = [[0] * 3, [full] * 3]
    codes = pictures.read_cineon(written(system, tmp_path, pictures.frame_bytes(Pixels(pixels)), "a.cin"))
    assert (codes[0, 0] == 95).all() and (codes[0, 1] == 685).all()
    light = pictures.light_of(pixels)
    assert (light_of_film(codes - 0.51) <= light + 1e-9).all()
    assert (light <= light_of_film(codes + 0.51) + 1e-9).all()


# --- others ---------------------------------------------------------------------------------------


def webp_chunks(pixels):
    out = io.BytesIO()
    Image.fromarray(pixels).save(out, "webp", lossless=True, exact=True)
    return out.getvalue()[12:]


def riff(body):
    return b"RIFF" + struct.pack("<I", len(body) + 4) + b"WEBP" + body


def three(number):
    return struct.pack("<I", number)[:3]


def animation(width, height, stills):
    """`stills`: left, top and pixels of each picture."""
    body = b"VP8X" + struct.pack("<IB3x", 10, 0x12) + three(width - 1) + three(height - 1)
    body += b"ANIM" + struct.pack("<IIH", 6, 0xFFFFFFFF, 0)
    for left, top, pixels in stills:
        size = three(pixels.shape[1] - 1) + three(pixels.shape[0] - 1)
        chunk = three(left // 2) + three(top // 2) + size + three(40) + b"\0" + webp_chunks(pixels)
        body += b"ANMF" + struct.pack("<I", len(chunk)) + chunk
    return riff(body)


def test_an_animated_webp_gives_its_first_picture(system, tmp_path):
    first = noise(4)
    data = animation(WIDTH, HEIGHT, [(0, 0, first), (0, 0, noise(4, seed=9))])
    frame = converted(system, tmp_path, data)
    assert np.array_equal(frame.mask, first[..., 3])
    seen = first[..., 3] > 0
    assert np.array_equal(frame.colour[seen], first[..., :3][seen])


def test_the_first_picture_of_an_animated_webp_lies_on_its_canvas(system, tmp_path):
    first = noise()
    frame = converted(system, tmp_path, animation(WIDTH + 10, HEIGHT + 9, [(4, 6, first)]))
    inside = np.s_[6 : 6 + HEIGHT, 4 : 4 + WIDTH]
    wanted = np.zeros((HEIGHT + 9, WIDTH + 10), np.uint8)
    wanted[inside] = 255
    assert np.array_equal(frame.mask, wanted)
    assert np.array_equal(frame.colour[inside], first)


def test_an_animated_webp_of_another_library(system, tmp_path):
    pictures_ = [Image.fromarray(noise(seed=i)) for i in range(3)]
    pictures_[0].save(tmp_path / "a.webp", save_all=True, append_images=pictures_[1:], lossless=True)
    frame = converted(system, tmp_path, (tmp_path / "a.webp").read_bytes(), "b")
    assert np.array_equal(frame.colour, noise(seed=0))


def test_a_webp_picture_beyond_its_canvas_is_refused(system, tmp_path):
    data = animation(WIDTH, HEIGHT, [(2, 0, noise())])
    assert "beyond its canvas" in refusal(system, tmp_path, data)


def test_radiance_in_xyz(system, tmp_path):
    to_xyz = np.array([[0.4124, 0.3576, 0.1805], [0.2126, 0.7152, 0.0722], [0.0193, 0.1192, 0.9505]])
    colour = np.random.default_rng(3).uniform(0.05, 1, (HEIGHT, WIDTH, 3))
    stored = pictures.shared_exponents(colour @ to_xyz.T)
    data = pictures.hdr(stored).replace(b"32-bit_rle_rgbe", b"32-bit_rle_xyze")
    frame = converted(system, tmp_path, data)
    light = pictures.light_of_exponents(stored) @ np.linalg.inv(to_xyz).T
    wanted = pictures.bytes_of_light(light)
    assert np.abs(frame.colour.astype(int) - wanted.low).max() <= 2


def plain_targa(pixels):
    out = io.BytesIO()
    Image.fromarray(pixels).save(out, "tga")
    data = out.getvalue()
    return data[: 18 + pixels.size]  # without a footer


def test_a_targa_file_is_known_by_its_sound_header(system, tmp_path):
    pixels = noise()
    for name in ("picture.tga", "picture", "PICTURE.TGA"):
        assert np.array_equal(converted(system, tmp_path, plain_targa(pixels), name).colour, pixels)


UNSOUND = {
    "a bit that is always clear": (17, 0x40), "a kind that there is not": (2, 7),
    "a map without entries": (1, 1), "no width": (12, 0), "more rows than bytes": (15, 2),
    "a mask without its bits": (17, 8),
}


@pytest.mark.parametrize("at, value", UNSOUND.values(), ids=UNSOUND.keys())
def test_an_unsound_header_is_no_targa_file(system, tmp_path, at, value):
    data = bytearray(plain_targa(noise()))
    data[at] = value
    assert "not a picture of a known type" in refusal(system, tmp_path, bytes(data))


MAPS = {
    "text": b"P2\n2 1\n7\n3 8\n", "bytes": b"P5\n2 1\n7\n\x03\x08",
    "words": b"P5\n2 1\n300\n\0\x03\x01\x2d", "tuples": b"P7\nWIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 7\nENDHDR\n\3\x08",
}


@pytest.mark.parametrize("data", MAPS.values(), ids=MAPS.keys())
def test_a_sample_above_the_largest_value_is_refused(system, tmp_path, data):
    assert "damaged: row 1 of 1" in refusal(system, tmp_path, data)
