"""The converters by themselves: every type of picture both ways, against files and readers of our own
(pictures.py); their command lines; and what they need of memory and time."""

import io
import struct
import subprocess
import sys
import tempfile
import time
import zlib

import numpy as np
import pytest
from PIL import Image

import framefile
import framereader
import pictures
from pictures import Pixels, nearest
from program import HELPERS, Finished

WIDTH, HEIGHT = 61, 43


def convert(system, path):
    """The frame that a file becomes."""
    done = system.run_tool("pixconv", path, "stdout")
    assert (done.status, done.messages) == (0, "")
    return framereader.read(done.output)


def converted(system, tmp_path, data, name="picture"):
    """Without an extension what it is must be told by its first bytes."""
    path = tmp_path / name
    path.write_bytes(data)
    return convert(system, path)


def write_back(system, tmp_path, frame, name, *options):
    """The file that a frame becomes."""
    source, target = tmp_path / "frame.iff", tmp_path / name
    source.write_bytes(frame)
    with source.open("rb") as stream:
        done = system.run_tool("pixconv", *options, target, stdin=stream)
    assert (done.status, done.output, done.messages) == (0, b"", "")
    return target.read_bytes()


def is_within(plane, span):
    return ((plane == span.low) | (plane == span.high)).all()


def noise(channels=3, dtype=np.uint8, seed=5):
    return framefile.noise(WIDTH, HEIGHT, seed, channels, dtype)


def blocky(channels=3, dtype=np.uint8, seed=5):
    return framefile.blocky(WIDTH, HEIGHT, seed, channels, dtype)


def depth():
    """Distances with infinity among them."""
    z = np.random.default_rng(8).uniform(0.1, 5000, (HEIGHT, WIDTH)).astype(np.float32)
    z[3, 5:9] = np.inf
    return z


def light(channels=3, dtype=np.float32, seed=6):
    """Linear light from deep shadow to far above white, with values that are none."""
    generator = np.random.default_rng(seed)
    shape = (HEIGHT, WIDTH, channels) if channels > 1 else (HEIGHT, WIDTH)
    values = np.exp2(generator.uniform(-14, 3, shape)).astype(dtype)
    values[0, :6] = np.array([0, 1, -0.5, np.nan, np.inf, 1e-5])[:, None] if channels > 1 else 0
    return values


# --- files of others, integers --------------------------------------------------------------------

SHAPES = {
    "colour": (3, False), "colour and mask": (3, True), "grey": (1, False), "grey and mask": (1, True),
}
STORED = {
    "sgi": (pictures.sgi, 2),
    "packed sgi": (lambda pixels: pictures.sgi(pixels, packed=True), 2),
    "psd": (pictures.psd, 2),
    "pam": (pictures.pam, 2),
    "png": (pictures.png, 2),
    "tiff": (pictures.tiff, 2),
}


@pytest.mark.parametrize("dtype", [np.uint8, np.uint16], ids=["8 bits", "16 bits"])
@pytest.mark.parametrize("shape", SHAPES.values(), ids=SHAPES.keys())
@pytest.mark.parametrize("kind", STORED)
def test_samples_are_kept_as_wide_as_they_are(system, tmp_path, kind, shape, dtype):
    channels, masked = shape
    pixels = Pixels(blocky(channels, dtype), blocky(1, dtype, 9) if masked else None)
    frame = converted(system, tmp_path, STORED[kind][0](pixels))
    wanted = pixels.colour if channels == 3 else np.dstack([pixels.colour] * 3)
    assert frame.colour.dtype == dtype
    assert np.array_equal(frame.colour, wanted)
    assert (frame.mask is None) == (not masked)
    assert not masked or np.array_equal(frame.mask, pixels.mask)


FILM = {"dpx": pictures.dpx, "cineon": pictures.cineon}


@pytest.mark.parametrize("order", [">", "<"], ids=["big-endian", "little-endian"])
@pytest.mark.parametrize("kind", FILM)
def test_film_codes_stay_as_they_are_stored(system, tmp_path, kind, order):
    codes = (noise(dtype=np.uint16) >> 6).astype(np.uint16)
    codes[0, :2] = [[0, 1, 2], [1023, 1022, 512]]
    frame = converted(system, tmp_path, FILM[kind](codes, order))
    assert frame.mask is None and frame.colour.dtype == np.uint16
    assert np.array_equal(frame.colour >> 6, codes)
    # Nothing and everything are so in 16 bits too, and all others where they belong within a step.
    assert (frame.colour[codes == 0] == 0).all() and (frame.colour[codes == 1023] == 65535).all()
    assert np.abs(frame.colour - codes * (65535 / 1023)).max() <= 1


# --- files of others, light -----------------------------------------------------------------------


@pytest.mark.parametrize("dtype", [np.float16, np.float32], ids=["half", "float"])
def test_open_exr_becomes_bytes_by_the_curve_and_keeps_mask_and_depth(system, tmp_path, dtype):
    colour, mask, z = light(dtype=dtype), light(1, dtype, 7), depth()
    planes = dict(zip("RGB", np.moveaxis(colour, -1, 0)), A=mask, Z=z)
    frame = converted(system, tmp_path, pictures.exr(planes))
    assert frame.colour.dtype == np.uint8
    assert is_within(frame.colour, pictures.bytes_of_light(colour))
    assert is_within(frame.mask, pictures.bytes_of_mask(mask))
    assert np.array_equal(frame.z, z)


def test_open_exr_without_mask_and_depth_has_none(system, tmp_path):
    frame = converted(system, tmp_path, pictures.exr({"Y": light(1)}))
    assert is_within(frame.colour, pictures.bytes_of_light(np.dstack([light(1)] * 3)))
    assert frame.mask is None and frame.z is None


def test_the_display_window_of_open_exr_is_the_picture(system, tmp_path):
    """What the file holds outside is left out, and what it does not hold is black."""
    colour = light()
    planes = dict(zip("RGB", np.moveaxis(colour, -1, 0)))
    data = (-4, 3, WIDTH - 5, HEIGHT + 2)
    frame = converted(system, tmp_path, pictures.exr(planes, data, (0, 0, WIDTH - 1, HEIGHT - 1)))
    wanted = np.zeros((HEIGHT, WIDTH, 3))
    wanted[3:, : WIDTH - 4] = colour[: HEIGHT - 3, 4:]
    assert is_within(frame.colour, pictures.bytes_of_light(wanted))


@pytest.mark.parametrize("packed", [True, False], ids=["packed", "flat"])
def test_radiance_becomes_bytes_by_the_curve(system, tmp_path, packed):
    colour = np.clip(np.nan_to_num(light().astype(np.float64)), 0, 100)
    colour[10:20, 10:40] = (0.25, 0.5, 0.125)  # runs
    stored = pictures.shared_exponents(colour)
    frame = converted(system, tmp_path, pictures.hdr(stored, packed))
    assert is_within(frame.colour, pictures.bytes_of_light(pictures.light_of_exponents(stored)))
    assert frame.mask is None


@pytest.mark.parametrize("order", [">", "<"], ids=["big-endian", "little-endian"])
@pytest.mark.parametrize("channels", [3, 1], ids=["colour", "grey"])
def test_float_maps_become_bytes_by_the_curve(system, tmp_path, channels, order):
    values = light(channels)
    frame = converted(system, tmp_path, pictures.pfm(values, order))
    wanted = values if channels == 3 else np.dstack([values] * 3)
    assert is_within(frame.colour, pictures.bytes_of_light(wanted))
    assert frame.mask is None


# --- the way back ---------------------------------------------------------------------------------


def by_library(data):
    """8 bits for each sample."""
    image = Image.open(io.BytesIO(data))
    samples = np.asarray(image)
    return samples if samples.ndim == 3 else samples[..., None]


# What keeps 16 bits, and how it is read. The first column: the key and the name.
KEPT_WIDE = {
    ("png", "a.png"): pictures.read_png,
    ("tiff", "a.tif"): pictures.read_tiff,
    ("sgi", "a.sgi"): pictures.read_sgi,
    ("pnm", "a.pam"): pictures.read_pam,
}
NARROW = {("tga", "a.tga"): by_library, ("bmp", "a.bmp"): by_library, ("webp", "a.webp"): by_library}


def masked_pixels(dtype, channels=3):
    return Pixels(blocky(channels, dtype), blocky(1, dtype, 9))


def ids(table):
    return {"argvalues": list(table.items()), "ids": [key[0] for key in table]}


@pytest.mark.parametrize("dtype", [np.uint8, np.uint16], ids=["8 bits", "16 bits"])
@pytest.mark.parametrize("channels", [3, 1], ids=["colour", "grey"])
@pytest.mark.parametrize("row", **ids(KEPT_WIDE))
def test_the_way_back_keeps_colour_mask_and_width(system, tmp_path, row, channels, dtype):
    (key, name), read = row
    pixels = masked_pixels(dtype, channels)
    data = write_back(system, tmp_path, pictures.frame_bytes(pixels), name, "-t", key)
    samples = read(data)
    assert samples.dtype == dtype
    assert np.array_equal(samples, pixels.samples())


@pytest.mark.parametrize("dtype", [np.uint8, np.uint16], ids=["8 bits", "16 bits"])
@pytest.mark.parametrize("row", **ids(NARROW))
def test_the_way_back_takes_the_nearest_of_8_bits(system, tmp_path, row, dtype):
    (key, name), read = row
    pixels = masked_pixels(dtype)
    data = write_back(system, tmp_path, pictures.frame_bytes(pixels), name, "-t", key)
    assert np.array_equal(read(data), nearest(pixels.samples(), 255))


def smooth():
    """Colours that change slowly, for the type that is packed with loss."""
    y, x = np.mgrid[0:HEIGHT, 0:WIDTH]
    return np.stack([x * 4, y * 5, 255 - (x + y)], axis=-1).clip(0, 255).astype(np.uint8)


def test_jpeg_stays_near(system, tmp_path):
    frame = pictures.frame_bytes(Pixels(smooth()))
    samples = by_library(write_back(system, tmp_path, frame, "a.jpg", "-t", "jpeg"))
    assert samples.shape == (HEIGHT, WIDTH, 3)
    apart = np.abs(samples.astype(int) - smooth())
    assert apart.mean() < 2 and apart.max() < 24


@pytest.mark.parametrize("dtype", [np.uint8, np.uint16], ids=["8 bits", "16 bits"])
@pytest.mark.parametrize("channels", [3, 1], ids=["colour", "grey"])
def test_portable_anymaps_lose_the_mask_alone(system, tmp_path, channels, dtype):
    pixels = masked_pixels(dtype, channels)
    data = write_back(system, tmp_path, pictures.frame_bytes(pixels), "a.ppm", "-t", "pnm")
    samples = pictures.read_pnm(data)
    assert samples.dtype == dtype
    assert np.array_equal(samples, pixels.samples()[..., :channels])


@pytest.mark.parametrize("dtype", [np.uint8, np.uint16], ids=["8 bits", "16 bits"])
def test_dpx_gets_the_nearest_of_10_bits(system, tmp_path, dtype):
    pixels = masked_pixels(dtype)
    data = write_back(system, tmp_path, pictures.frame_bytes(pixels), "a.dpx", "-t", "dpx")
    assert np.array_equal(pictures.read_dpx(data), nearest(pixels.colour, 1023))


@pytest.mark.parametrize("dtype", [np.uint8, np.uint16], ids=["8 bits", "16 bits"])
def test_open_exr_gets_light_mask_and_depth(system, tmp_path, dtype):
    pixels = masked_pixels(dtype)
    pixels.z = depth()
    data = write_back(system, tmp_path, pictures.frame_bytes(pixels), "a.exr", "-t", "exr")
    planes = pictures.read_exr(data)
    assert set(planes) == set("RGBAZ")
    half = {"rtol": 2**-11 + 1e-5, "atol": 2**-24}
    for name, channel in zip("RGB", np.moveaxis(pixels.colour, -1, 0)):
        assert np.allclose(planes[name].astype(float), pictures.light_of(channel), **half)
    mask = pixels.mask / np.iinfo(dtype).max
    assert np.allclose(planes["A"].astype(float), mask, **half)
    assert np.array_equal(planes["Z"], pixels.z)


@pytest.mark.parametrize("dtype", [np.uint8, np.uint16], ids=["8 bits", "16 bits"])
def test_float_maps_get_light(system, tmp_path, dtype):
    pixels = masked_pixels(dtype)
    data = write_back(system, tmp_path, pictures.frame_bytes(pixels), "a.pfm", "-t", "pfm")
    assert np.allclose(pictures.read_pfm(data), pictures.light_of(pixels.colour), 1e-5, 1e-9)


@pytest.mark.parametrize("dtype", [np.uint8, np.uint16], ids=["8 bits", "16 bits"])
def test_radiance_gets_light_within_half_a_step(system, tmp_path, dtype):
    pixels = masked_pixels(dtype)
    data = write_back(system, tmp_path, pictures.frame_bytes(pixels), "a.hdr", "-t", "hdr")
    wanted = pictures.light_of(pixels.colour)
    step = wanted.max(axis=-1, keepdims=True) / 128
    assert (np.abs(pictures.read_hdr(data) - wanted) <= step * 0.5001 + 1e-9).all()


@pytest.mark.parametrize("dtype", [np.uint8, np.uint16], ids=["8 bits", "16 bits"])
def test_a_frame_stays_a_frame_with_all_its_planes(system, tmp_path, dtype):
    pixels = masked_pixels(dtype)
    pixels.z = depth()
    for name in ("a.iff", "a.0007", "a"):
        data = write_back(system, tmp_path, pictures.frame_bytes(pixels), name)
        frame = framereader.read(data)
        assert frame.colour.dtype == dtype
        assert np.array_equal(frame.colour, pixels.colour)
        assert np.array_equal(frame.mask, pixels.mask)
        assert np.array_equal(frame.z, pixels.z)


# --- what each build has --------------------------------------------------------------------------

TYPES = """
    tavo    iff                  read  write
    png     png                  read  write
    jpeg    jpg jpeg             read  write
    tiff    tif tiff             read  write
    exr     exr                  read  write
    tga     tga                  read  write
    bmp     bmp                  read  write
    pnm     ppm pgm pbm pnm pam  read  write
    pfm     pfm                  read  write
    sgi     sgi rgb rgba bw int  read  write
    dpx     dpx                  read  write
    cineon  cin                  read  write
    psd     psd                  read
    gif     gif                  read  multi-frame
    webp    webp                 read  write
    hdr     hdr                  read  write
"""


def columns_of(line):
    """Key, extensions and abilities of a line; the name is not compared."""
    words = [part.strip() for part in line.split("  ") if part.strip()]
    return words[0], words[2], words[3:]


def test_each_build_has_all_types(system):
    done = system.run_tool("pixconv", "--formats")
    assert (done.status, done.messages) == (0, "")
    listed = [columns_of(line) for line in done.output.decode().splitlines()]
    wanted = [[p.strip() for p in line.split("  ") if p.strip()] for line in TYPES.split("\n")]
    assert listed == [(w[0], w[1], w[2:]) for w in wanted if w]


def test_the_columns_of_the_list_stand_below_each_other(system):
    lines = system.run_tool("pixconv", "--formats").output.decode().splitlines()
    reads = {line.index("read") for line in lines}
    writes = {line.index("write") for line in lines if "write" in line}
    assert len(reads) == len(writes) == 1
    assert all(line.isascii() and line.isprintable() for line in lines)


# --- command line of the converter ----------------------------------------------------------------


def test_help_tells_the_usage_and_what_becomes_of_light(system):
    done = system.run_tool("pixconv", "--help")
    assert (done.status, done.messages) == (0, "")
    text = " ".join(done.output.decode().split())
    for words in ("pixconv FILE stdout", "pixconv [-t KEY] FILE", "--formats", "--help",
                  "linear light", "clamped to 0..1", "sRGB curve to 8 bits", "Masks are linear",
                  "Logarithmic film data stays as it is stored", "Exit status 0, or 1"):
        assert words in text


WRONG = {
    "an unknown option": ["--nonsense"],
    "an unknown letter": ["-x", "a.png"],
    "a key that is missing": ["-t"],
    "a file that is missing": ["-t", "png"],
    "a file that is missing after an attached key": ["-tpng"],
    "nothing after the end of the options": ["--"],
    "too many files": ["a.png", "b.png"],
    "too many words": ["a.png", "stdout", "more"],
    "a name without a letter": [""],
    "help among other words": ["--help", "a.png", "b.png"],
}


@pytest.mark.parametrize("words", WRONG.values(), ids=WRONG.keys())
def test_wrong_words_lead_to_the_usage(system, tmp_path, words):
    done = system.run_tool("pixconv", *words, folder=tmp_path)
    assert (done.status, done.output) == (1, b"")
    assert done.messages.startswith("usage: pixconv FILE stdout")
    assert "linear light" not in done.messages
    assert not list(tmp_path.iterdir())


GOOD = {
    "a key of its own": (["-t", "png", "picture"], "picture"),
    "an attached key": (["-tpng", "picture"], "picture"),
    "a key in capitals": (["-t", "PNG", "picture"], "picture"),
    "the key that came last": (["-tbmp", "-t", "png", "picture"], "picture"),
    "a key against the extension": (["-tpng", "picture.bmp"], "picture.bmp"),
    "the extension alone": (["picture.png"], "picture.png"),
    "an extension in capitals": (["PICTURE.PNG"], "PICTURE.PNG"),
    "a name after the end of the options": (["--", "-picture.png"], "-picture.png"),
    "key and end of the options": (["-t", "png", "--", "-t"], "-t"),
    "a name that looks like an option": (["--", "--help"], None),
    "a name that begins with a dash, in a folder": (["./-picture.png"], "-picture.png"),
}


@pytest.mark.parametrize("words, name", GOOD.values(), ids=GOOD.keys())
def test_a_frame_is_written_to_the_name_and_type_that_were_typed(system, tmp_path, words, name):
    pixels = Pixels(noise(), noise(1, seed=9))
    (tmp_path / "frame.iff").write_bytes(pictures.frame_bytes(pixels))
    with (tmp_path / "frame.iff").open("rb") as stream:
        done = system.run_tool("pixconv", *words, stdin=stream, folder=tmp_path)
    assert (done.status, done.output, done.messages) == (0, b"", "")
    data = (tmp_path / (name or words[-1])).read_bytes()
    if name is None:  # no extension: a frame
        assert np.array_equal(framereader.read(data).mask, pixels.mask)
    else:
        assert np.array_equal(pictures.read_png(data), pixels.samples())
    assert len(list(tmp_path.iterdir())) == 2


@pytest.mark.parametrize("name", ["-picture.png", "-tpng", "--help", "--formats", "--", "-x"])
def test_a_file_whose_name_begins_with_a_dash_is_read(system, tmp_path, name):
    pixels = Pixels(noise())
    (tmp_path / name).write_bytes(pictures.png(pixels))
    done = system.run_tool("pixconv", name, "stdout", folder=tmp_path)
    assert (done.status, done.messages) == (0, "")
    assert np.array_equal(framereader.read(done.output).colour, pixels.colour)


REFUSED = {
    "an unknown key": (["-t", "xyz", "a.png"], "xyz"),
    "an unknown attached key": (["-txyz", "a.png"], "xyz"),
    "an unknown extension": (["a.xyz"], "xyz"),
    "a type that is only read": (["-t", "psd", "a.psd"], "Photoshop"),
    "another type that is only read": (["a.gif"], "GIF"),
}


@pytest.mark.parametrize("words, reason", REFUSED.values(), ids=REFUSED.keys())
def test_a_type_that_cannot_be_written_is_named(system, tmp_path, words, reason):
    frame = tmp_path / "frame.iff"
    frame.write_bytes(pictures.frame_bytes(Pixels(noise())))
    with frame.open("rb") as stream:
        done = system.run_tool("pixconv", *words, stdin=stream, folder=tmp_path)
    assert (done.status, done.output) == (1, b"")
    assert done.messages.startswith(f"pixconv: {words[-1]}: ") and reason in done.messages
    assert done.messages.count("\n") == 1
    assert [path.name for path in tmp_path.iterdir()] == ["frame.iff"]


UNREADABLE = {
    "that is not there": (None, ""),
    "that is empty": (b"", "empty"),
    "of a few letters": (b"no picture at all\n", "not a picture of a known type"),
    "that is a folder": ("folder", "only regular files"),
}


@pytest.mark.parametrize("content, reason", UNREADABLE.values(), ids=UNREADABLE.keys())
def test_a_file_that_cannot_be_read_is_named(system, tmp_path, content, reason):
    path = tmp_path / "picture"
    if content == "folder":
        path.mkdir()
    elif content is not None:
        path.write_bytes(content)
    done = system.run_tool("pixconv", "picture", "stdout", folder=tmp_path)
    assert (done.status, done.output) == (1, b"")
    named, said = done.messages.rstrip("\n").split(": ", 2)[1:]
    assert named == "picture" and said and reason in said


# --- the older converter --------------------------------------------------------------------------

RASTER = b"\x87\xcf\x03\x2b"
OLDER = {
    "kind 1": (RASTER + struct.pack("<I", 1) + bytes(64), "kind 1 cannot be read"),
    "kind 2": (RASTER + struct.pack("<I", 2) + bytes(64), "kind 2 cannot be read"),
    "kind 3": (RASTER + struct.pack("<I", 3) + bytes(64), "kind 3 cannot be read"),
    "kind 8": (b"\x02\x4a\x02\x0a" + bytes(64), "kind 8 cannot be read"),
    "the next number": (RASTER + struct.pack("<I", 4) + bytes(64), "not a raster of kind"),
    "another file": (b"\x01\xda\x01\x01" + bytes(64), "not a raster of kind"),
    "a frame": (pictures.frame_bytes(Pixels(noise())), "not a raster of kind"),
    "too short for a kind": (RASTER + b"\1\0\0", "too short"),
    "too short for a mark": (RASTER[:3], "too short"),
    "empty": (b"", "too short"),
}


@pytest.mark.parametrize("content, reason", OLDER.values(), ids=OLDER.keys())
def test_the_older_converter_names_the_file_and_the_kind(system, tmp_path, content, reason):
    (tmp_path / "old picture.ras").write_bytes(content)
    done = system.run_tool("rasconv", "-s", "-B", "old picture.ras", "stdout", folder=tmp_path)
    assert (done.status, done.output) == (1, b"")
    assert done.messages.startswith("rasconv: old picture.ras: ") and reason in done.messages
    assert done.messages.count("\n") == 1


def test_the_older_converter_names_a_file_that_is_not_there_and_a_folder(system, tmp_path):
    (tmp_path / "folder").mkdir()
    for name, reason in (("absent", "No such file"), ("folder", "only regular files")):
        done = system.run_tool("rasconv", "-s", "-B", name, "stdout", folder=tmp_path)
        assert (done.status, done.output) == (1, b"")
        assert done.messages.startswith(f"rasconv: {name}: ") and reason in done.messages


def test_the_older_converter_has_help(system):
    done = system.run_tool("rasconv", "--help")
    assert (done.status, done.messages) == (0, "")
    assert done.output.startswith(b"usage: rasconv -s -B FILE stdout")
    assert b"kinds (1, 2, 3 and 8)" in done.output


@pytest.mark.parametrize("words", [[], ["-s", "-B"], ["a", "elsewhere"], ["a", "stdout", "b"]])
def test_wrong_words_lead_to_the_usage_of_the_older_converter(system, words):
    done = system.run_tool("rasconv", *words)
    assert (done.status, done.output) == (1, b"")
    assert done.messages.startswith("usage: rasconv -s -B FILE stdout")


# --- memory ---------------------------------------------------------------------------------------

LONG = 300  # seconds that no conversion takes
MB = 1 << 20


def measured(system, tmp_path, *arguments, stdin=None):
    """Runs the converter; how it ended, and the bytes of memory it took at most."""
    result = tmp_path / "peak"
    launcher = [sys.executable, "-I", "-S", str(HELPERS / "peak.py"), str(result)]
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
        started = time.monotonic()
        done = subprocess.run(
            [*launcher, *system.command("pixconv"), *map(str, arguments)],
            env=system.environment(tmp_path, f"{system.marker}-tool"),
            stdin=stdin or subprocess.DEVNULL,
            stdout=out,
            stderr=err,
            timeout=LONG,
            check=False,
        )
        seconds = time.monotonic() - started
        out.seek(0), err.seek(0)
        text = err.read().decode("utf-8", "replace").replace("\r\n", "\n")
        return Finished(done.returncode, out.read(), text, seconds), int(result.read_text())


@pytest.fixture
def least(system, tmp_path):
    """Bytes that the converter takes at most for a picture of one pixel, either way."""
    source, frame = tmp_path / "least.png", tmp_path / "least.iff"
    source.write_bytes(pictures.png(Pixels(np.zeros((1, 1, 3), np.uint8))))
    done, there = measured(system, tmp_path, source, "stdout")
    assert done.status == 0
    frame.write_bytes(done.output)
    with frame.open("rb") as stream:
        done, back = measured(system, tmp_path, tmp_path / "back.png", stdin=stream)
    assert done.status == 0
    return max(there, back)


LARGE = 4096, 3072


@pytest.fixture(scope="module", params=[np.uint8, np.uint16], ids=["8 bits", "16 bits"])
def large_pixels(request):
    """Noise in a band and black: large for the converter, quickly made and packed."""
    width, height = LARGE
    colour = np.zeros((height, width, 3), request.param)
    colour[:256] = framefile.noise(width, 256, 3, 3, request.param)
    return Pixels(colour)


# Four samples for each pixel are held at once, and a half more for all that is on its way.
MOST_PICTURES = 1.5


@pytest.mark.parametrize("extension", ["png", "tif"])
def test_a_large_picture_takes_its_own_memory_both_ways(
    system, tmp_path, least, large_pixels, extension
):
    write = {"png": pictures.png, "tif": pictures.tiff}[extension]
    source, frame = tmp_path / f"large.{extension}", tmp_path / "large.iff"
    source.write_bytes(write(large_pixels))
    most = least + MOST_PICTURES * large_pixels.colour[..., 0].nbytes * 4
    done, there = measured(system, tmp_path, source, "stdout")
    assert (done.status, done.messages) == (0, "")
    assert there < most, f"{there / MB:.0f} MB, of which {least / MB:.0f} for nothing"
    frame.write_bytes(done.output)
    target = tmp_path / f"back.{extension}"
    with frame.open("rb") as stream:
        done, back = measured(system, tmp_path, target, stdin=stream)
    assert (done.status, done.messages) == (0, "")
    assert back < most, f"{back / MB:.0f} MB, of which {least / MB:.0f} for nothing"
    done = system.run_tool("pixconv", target, "stdout", timeout=LONG)
    assert np.array_equal(framereader.read(done.output).colour, large_pixels.colour)


# --- files whose sizes lie ------------------------------------------------------------------------

FEW = 48 * MB  # what a file of a few hundred bytes may take


def deflated_zeros(count):
    packer = zlib.compressobj(9)
    block = bytes(MB)
    return b"".join(packer.compress(block) for _ in range(count // MB)) + packer.flush()


def png_that_inflates():
    """16 x 16 pixels, and data for sixteen thousand times as many."""
    return pictures.png_file(16, 16, 8, 2, deflated_zeros(256 * MB))


def gif_blocks(data):
    return b"".join(bytes((len(data[i : i + 255]),)) + data[i : i + 255]
                    for i in range(0, len(data), 255)) + b"\0"


GIF_CLEAR, GIF_END, GIF_FIRST, GIF_LAST = 4, 5, 6, 4095  # codes of pixels of two bits


def gif_bits(codes):
    """Codes after one that cleared the table, each of as many bits as the table needs, the lowest bit
    first; and how many bits these are."""
    bits, count, known = 0, 0, GIF_FIRST - 1
    for code in codes:
        width = min(max(known.bit_length(), 3), 12)
        bits, count, known = bits | code << count, count + width, known + 1
    return bits, count


def gif_data(rounds, last=()):
    """Data of a table that is cleared and filled again `rounds` times, and further codes. Each code
    tells one pixel more than the one before it; all pixels are 0."""
    bits, count = gif_bits([0, *range(GIF_FIRST, GIF_LAST + 1), GIF_CLEAR])
    eight = sum(bits << i * count for i in range(8)).to_bytes(count, "little")
    whole = int.from_bytes(eight * (rounds // 8), "little")
    further, _ = gif_bits(last)
    whole |= further << rounds // 8 * 8 * count
    whole = whole << 3 | GIF_CLEAR
    return whole.to_bytes(whole.bit_length() // 8 + 1, "little")


GIF_COLOUR = 9, 8, 7


def gif_start(width, height):
    """A canvas of 16 x 16 pixels, and on it a picture of another size."""
    head = b"GIF89a" + struct.pack("<HHBBB", 16, 16, 0x80, 0, 0) + bytes((*GIF_COLOUR, 200, 0, 0))
    return head + b"," + struct.pack("<HHHHB", 0, 0, width, height, 0) + b"\2"


def gif_with_a_large_picture():
    """Data of one pixel, and its end."""
    return gif_start(65535, 65535) + gif_blocks(gif_data(0, [0, GIF_END])) + b";"


def gif_with_a_large_whole_picture():
    """Data for more than all of its pixels, over three megabytes of it."""
    return gif_start(65535, 65535) + gif_blocks(gif_data(520, [0, GIF_END])) + b";"


def lying_tiff(width, height, compression=1, size=64, strip_rows=None, told=None):
    data = zlib.compress(bytes(size)) if compression == 8 else bytes(size)
    tags = {
        pictures.WIDTH: [width], pictures.HEIGHT: [height], pictures.BITS: [8, 8, 8],
        pictures.COMPRESSION: [compression], pictures.PHOTOMETRIC: [2], pictures.STRIPS: [8],
        pictures.CHANNELS: [3], pictures.STRIP_ROWS: [strip_rows or height],
        pictures.STRIP_SIZES: [told or len(data)],
    }
    return pictures.tiff_file(tags, data)


def lying_exr(data, display):
    header = pictures.exr_header([(name, 1) for name in "BGR"], data, display)
    return header + struct.pack("<Q", len(header) + 8) + struct.pack("<iI", data[1], 96) + bytes(96)


def exr_of_a_long_text():
    """A text of two gigabytes in its header, so it says."""
    whole = pictures.exr({name: np.zeros((16, 16), np.float32) for name in "BGR"})
    return whole[:8] + b"comment\0string\0" + struct.pack("<I", 0x7FFFFFF0) + whole[8:]


def fax_tiff(side):
    """White all over: one bit for each row."""
    data = b"\xff" * (side // 8 + 1) + b"\x00\x10\x01"
    tags = {
        pictures.WIDTH: [side], pictures.HEIGHT: [side], pictures.BITS: [1],
        pictures.COMPRESSION: [4], pictures.PHOTOMETRIC: [0], pictures.STRIPS: [8],
        pictures.CHANNELS: [1], pictures.STRIP_ROWS: [side], pictures.STRIP_SIZES: [len(data)],
    }
    return pictures.tiff_file(tags, data)


def png_of_nothing(side):
    """Black all over, of one bit for each pixel."""
    rows = side * (side // 8 + 1)
    return pictures.png_file(side, side, 1, 0, deflated_zeros(rows + MB))


def sparse_frame(side):
    """One tile of a large picture."""
    whole = pictures.frame_bytes(Pixels(np.zeros((16, 16, 3), np.uint8)))
    at = whole.index(b"TBHD") + 8
    return whole[:at] + struct.pack(">II", side, side) + whole[at + 8 :]


def riff(chunks):
    body = b"WEBP" + b"".join(k + struct.pack("<I", len(c)) + c + bytes(len(c) % 2) for k, c in chunks)
    return b"RIFF" + struct.pack("<I", len(body)) + body


def webp_chunk(width, height, make=None):
    """The lossless picture of another program; of noise, for one colour would need no data at all."""
    out = io.BytesIO()
    colour = make((height, width, 3), np.uint8) if make else framefile.noise(width, height)
    Image.fromarray(colour).save(out, "webp", lossless=True)
    data = out.getvalue()
    assert data[12:16] == b"VP8L"
    return data[20 : 20 + struct.unpack_from("<I", data, 16)[0]]


def with_webp_size(chunk, width, height):
    """The same data under another size."""
    word = struct.unpack_from("<I", chunk, 1)[0] & 0xF0000000
    return chunk[:1] + struct.pack("<I", word | height - 1 << 14 | width - 1) + chunk[5:]


# Extension, file, and the first pixel where the file holds a picture of 16 x 16 that may be shown; all
# others must be refused.
LYING = {
    "a png that inflates beyond its size": ("png", png_that_inflates, (0, 0, 0)),
    "a png that ends before its size": (
        "png", lambda: pictures.png_file(16000, 16000, 8, 6, deflated_zeros(MB)), None,
    ),
    "a gif with a large picture that ends": ("gif", gif_with_a_large_picture, GIF_COLOUR),
    "a gif with a large whole picture": ("gif", gif_with_a_large_whole_picture, GIF_COLOUR),
    "a large tiff of one strip": ("tif", lambda: lying_tiff(16000, 16000), None),
    "a large tiff of many rows": (
        "tif", lambda: lying_tiff(16000, 16000, strip_rows=1), None,
    ),
    "a tiff larger than frames": ("tif", lambda: lying_tiff(*[0xFFFFFFF0] * 2), None),
    "a tiff whose strip is larger than the file": (
        "tif", lambda: lying_tiff(16, 16, told=0x7FFFFFF0), (0, 0, 0),  # a row of it
    ),
    "a deflated tiff whose strip ends early": (
        "tif", lambda: lying_tiff(16000, 16000, compression=8, size=MB), None,
    ),
    "a large exr": (
        "exr", lambda: lying_exr((0, 0, 15999, 15999), (0, 0, 15999, 15999)), None,
    ),
    "an exr with a large data window": (
        "exr", lambda: lying_exr((-(2**30), -(2**30), 2**30, 2**30), (0, 0, 15, 15)), None,
    ),
    "an exr with a large display window": (
        "exr", lambda: lying_exr((0, 0, 15, 0), (0, 0, 2**31 - 2, 2**31 - 2)), None,
    ),
    "an exr of a long text": ("exr", exr_of_a_long_text, None),
    "a white fax": ("tif", lambda: fax_tiff(16380), None),
    "a black png of bits": ("png", lambda: png_of_nothing(16000), None),
    "a frame of one tile": ("iff", lambda: sparse_frame(16000), None),
    "a webp of one colour": (
        "webp",
        lambda: riff([(b"VP8L", with_webp_size(webp_chunk(16, 16, np.zeros), 16383, 16383))]),
        None,
    ),
    "a large webp": (
        "webp", lambda: riff([(b"VP8L", with_webp_size(webp_chunk(16, 16), 16383, 16383))]),
        None,
    ),
    "a webp with a large canvas": (
        "webp",
        lambda: riff([
            (b"VP8X", struct.pack("<I", 0) + (16382).to_bytes(3, "little") * 2),
            (b"VP8L", webp_chunk(16, 16)),
        ]),
        framefile.noise(16, 16)[0, 0],
    ),
}


# One colour costs a WebP file nothing at all: only the size of files tells it from a lie.
@pytest.mark.parametrize("extension", [
    "png", "jpg", "tif", "exr", "tga", "bmp", "hdr", "ppm", "pfm", "sgi", "dpx", "cin", "iff",
])
def test_a_large_black_picture_is_no_lie(system, tmp_path, extension):
    source, frame = tmp_path / "black.png", tmp_path / "black.frame"
    target = tmp_path / f"black.{extension}"
    source.write_bytes(pictures.png(Pixels(np.zeros((4000, 5000, 3), np.uint8))))
    frame.write_bytes(system.run_tool("pixconv", source, "stdout", timeout=LONG).output)
    with frame.open("rb") as stdin:
        done = system.run_tool("pixconv", target, stdin=stdin, timeout=LONG)
    assert (done.status, done.messages) == (0, "")
    done = system.run_tool("pixconv", target, "stdout", timeout=LONG)
    assert (done.status, done.messages) == (0, "")
    assert framereader.read(done.output).colour.shape == (4000, 5000, 3)


@pytest.mark.parametrize("packing", ["lzma", "zstd"])
def test_a_large_black_tiff_of_the_tightest_packings_is_no_lie(system, tmp_path, packing):
    path = tmp_path / "black.tif"
    # One strip: else its table of strips would take more than its pixels.
    Image.new("L", (5000, 4000)).save(path, compression=packing, strip_size=5000 * 4000)
    done = system.run_tool("pixconv", path, "stdout", timeout=LONG)
    assert (done.status, done.messages) == (0, "")
    assert framereader.read(done.output).colour.shape == (4000, 5000, 3)


@pytest.mark.parametrize("extension, make, pixel", LYING.values(), ids=LYING.keys())
def test_a_file_whose_sizes_lie_ends_soon_in_little_memory(
    system, tmp_path, least, extension, make, pixel
):
    path = tmp_path / f"lying.{extension}"
    path.write_bytes(make())
    done, peak = measured(system, tmp_path, path, "stdout")
    assert peak < least + FEW, f"{peak / MB:.0f} MB, of which {least / MB:.0f} for nothing"
    assert done.seconds < 5
    if done.output and pixel is not None:
        colour = framereader.read(done.output).colour
        assert colour.shape == (16, 16, 3) and (colour[0, 0] == pixel).all()
        assert (done.status, "ends early" in done.messages) in ((0, False), (1, True))
        return
    assert (done.status, done.output) == (1, b"")
    assert done.messages.startswith("pixconv: ") and path.name in done.messages
    assert done.messages.count("\n") == 1
