"""Files that are cut or damaged: what could be read of the picture comes, the rest black and clear, as
a frame stream that ends early too; and pictures that come to the converter on standard input."""

import io
import struct
import subprocess
import zlib

import numpy as np
import pytest
from PIL import Image

import framefile
import framereader
import pictures
from pictures import Pixels

WIDTH, HEIGHT = 160, 120


def colours(channels=3, dtype=np.uint8):
    """Noise without black, so that what has come is told from what has not."""
    return np.maximum(framefile.noise(WIDTH, HEIGHT, 4, channels, dtype), 1)


def smooth():
    y, x = np.mgrid[0:HEIGHT, 0:WIDTH]
    return np.stack([x + 40, y + 60, 255 - (x + y) // 2], axis=-1).clip(1, 255).astype(np.uint8)


def by_library(pixels, kind, **options):
    out = io.BytesIO()
    Image.fromarray(pixels).save(out, kind, **options)
    return out.getvalue()


def interlaced_png(pixels):
    """The seven passes of an 8-bit picture."""
    passes = ((0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2), (0, 1, 1, 2))
    rows = b"".join(
        b"\0" + row.tobytes()
        for left, top, across, down in passes
        for row in pixels[top::down, left::across]
    )
    header = struct.pack(">IIBBBBB", WIDTH, HEIGHT, 8, 2, 0, 0, 1)
    return (b"\x89PNG\r\n\x1a\n" + pictures.png_chunk(b"IHDR", header)
            + pictures.png_chunk(b"IDAT", zlib.compress(rows)) + pictures.png_chunk(b"IEND", b""))


def tiff_with_tags_first(pixels, strip_rows, packed=False):
    """The strips behind the directory, as scanners and cameras write them."""
    strips = [pixels[y : y + strip_rows].tobytes() for y in range(0, HEIGHT, strip_rows)]
    strips = [zlib.compress(strip) if packed else strip for strip in strips]
    tags = {256: [WIDTH], 257: [HEIGHT], 258: [8] * 3, 259: [8 if packed else 1], 262: [2],
            273: [0] * len(strips), 277: [3], 278: [strip_rows], 279: [len(s) for s in strips]}
    room = 8 + 2 + 12 * len(tags) + 4
    first = room + sum(4 * len(v) for v in tags.values() if len(v) > 1)
    tags[273] = [first + sum(map(len, strips[:i])) for i in range(len(strips))]
    table, further = b"", b""
    for number, values in sorted(tags.items()):
        body = struct.pack(f"<{len(values)}I", *values)
        if len(values) > 1:
            body, further = struct.pack("<I", room + len(further)), further + body
        table += struct.pack("<HHI", number, 4, len(values)) + body
    head = struct.pack("<2sHI", b"II", 42, 8) + struct.pack("<H", len(tags)) + table + bytes(4)
    assert len(head + further) == first
    return head + further + b"".join(strips)


def bmp(pixels):
    return by_library(pixels, "bmp")


def targa_from_the_top():
    data = bytearray(by_library(colours(), "tga"))
    data[17] |= 0x20
    return bytes(data[: 18 + 3 * WIDTH * HEIGHT])


def light_planes():
    light = np.random.default_rng(3).uniform(0.1, 1, (3, HEIGHT, WIDTH)).astype(np.float32)
    return dict(zip("RGB", light))


# The file, and the share of its rows that a cut at two thirds must leave.
CUT = {
    "png": (lambda: pictures.png(Pixels(colours())), 0.6),
    "png of 16 bits": (lambda: pictures.png(Pixels(colours(dtype=np.uint16))), 0.6),
    "jpeg": (lambda: by_library(smooth(), "jpeg", quality=95), 0.4),
    "exr": (lambda: pictures.exr(light_planes()), 0.6),
    "tiff of one strip": (lambda: tiff_with_tags_first(colours(), HEIGHT), 0.6),
    "tiff of strips": (lambda: tiff_with_tags_first(colours(), 10), 0.6),
    "deflated tiff of strips": (lambda: tiff_with_tags_first(colours(), 10, packed=True), 0.5),
    "dpx": (lambda: pictures.dpx(np.maximum(colours(dtype=np.uint16) >> 6, 1)), 0.6),
    "cineon": (lambda: pictures.cineon(np.maximum(colours(dtype=np.uint16) >> 6, 1)), 0.6),
    "pnm": (lambda: by_library(colours(), "ppm"), 0.6),
    "tga.tga": (lambda: targa_from_the_top(), 0.6),
    "hdr": (lambda: pictures.hdr(pictures.shared_exponents(
        np.random.default_rng(1).uniform(0.1, 1, (HEIGHT, WIDTH, 3)))), 0.5),
    "webp": (lambda: by_library(colours(), "webp", lossless=True), 0.3),
}


def part_of(done, name):
    """The picture of a reading that failed in the middle, with its one line."""
    assert done.status == 1
    assert done.messages.startswith(f"pixconv: {name}: the ") and done.messages.count("\n") == 1
    assert "ends early" in done.messages or "damaged" in done.messages
    return framereader.read(done.output)


@pytest.mark.parametrize("kind", CUT)
def test_the_part_of_a_cut_file_comes_and_the_rest_is_black(system, tmp_path, kind):
    make, share = CUT[kind]
    whole, name = make(), kind.split()[-1]
    (tmp_path / name).write_bytes(whole)
    done = system.run_tool("pixconv", name, "stdout", folder=tmp_path)
    assert (done.status, done.messages) == (0, "")
    wanted = framereader.read(done.output).colour
    (tmp_path / name).write_bytes(whole[: len(whole) * 2 // 3])
    part = part_of(system.run_tool("pixconv", name, "stdout", folder=tmp_path), name).colour
    there = part.any(axis=(1, 2))
    rows = int(there.sum())
    assert HEIGHT * share <= rows < HEIGHT and there[:rows].all()
    assert np.array_equal(part[:rows], wanted[:rows])


def test_a_cut_bitmap_has_its_lower_rows(system, tmp_path):
    pixels = colours()
    whole = bmp(pixels)
    (tmp_path / "a").write_bytes(whole[: len(whole) // 2])
    part = part_of(system.run_tool("pixconv", "a", "stdout", folder=tmp_path), "a").colour
    there = part.any(axis=(1, 2))
    assert 0.4 * HEIGHT < there.sum() < 0.6 * HEIGHT and not there[: HEIGHT // 3].any()
    assert np.array_equal(part[there], pixels[there])


def test_a_cut_interlaced_png_is_coarse_but_covered(system, tmp_path):
    whole = interlaced_png(smooth())
    (tmp_path / "a").write_bytes(whole[: len(whole) // 2])
    part = part_of(system.run_tool("pixconv", "a", "stdout", folder=tmp_path), "a").colour
    assert part.any(axis=2).all()
    assert np.array_equal(part[::8, ::8], smooth()[::8, ::8])


def test_a_cut_progressive_jpeg_is_coarse_but_covered(system, tmp_path):
    whole = by_library(smooth(), "jpeg", quality=95, progressive=True)
    (tmp_path / "a").write_bytes(whole[: len(whole) * 3 // 4])
    part = part_of(system.run_tool("pixconv", "a", "stdout", folder=tmp_path), "a").colour
    assert np.abs(part.astype(int) - smooth()).mean() < 8


def test_what_a_mask_does_not_reach_is_clear(system, tmp_path):
    pixels = Pixels(colours(), colours(1))
    whole = pictures.png(pixels)
    (tmp_path / "a").write_bytes(whole[: len(whole) // 2])
    part = part_of(system.run_tool("pixconv", "a", "stdout", folder=tmp_path), "a")
    rows = int(part.mask.any(axis=1).sum())
    assert 0.4 * HEIGHT < rows < 0.6 * HEIGHT
    assert np.array_equal(part.mask[:rows], pixels.mask[:rows]) and not part.mask[rows:].any()


def test_a_damaged_row_of_open_exr_does_not_take_the_others_along(system, tmp_path):
    planes = light_planes()
    names = sorted(planes)
    header = pictures.exr_header([(name, 2) for name in names], *[(0, 0, WIDTH - 1, HEIGHT - 1)] * 2)
    whole = bytearray(pictures.exr(planes))
    row = len(header) + 8 * HEIGHT + 30 * (8 + 12 * WIDTH)
    assert struct.unpack_from("<i", whole, row)[0] == 30
    struct.pack_into("<i", whole, row, 31)  # calls itself another row
    (tmp_path / "a").write_bytes(whole)
    part = part_of(system.run_tool("pixconv", "a", "stdout", folder=tmp_path), "a").colour
    assert [y for y in range(HEIGHT) if not part[y].any()] == [30]


def test_a_part_is_not_taken_for_a_whole_picture_by_the_next_converter(system, tmp_path):
    whole = pictures.png(Pixels(colours()))
    (tmp_path / "a").write_bytes(whole[: len(whole) // 2])
    frame = tmp_path / "frame"
    frame.write_bytes(system.run_tool("pixconv", "a", "stdout", folder=tmp_path).output)
    with frame.open("rb") as stream:
        done = system.run_tool("pixconv", "b.png", stdin=stream, folder=tmp_path)
    assert done.status == 1 and "ends early" in done.messages
    assert not (tmp_path / "b.png").exists()


def on_screen(picture):
    """Of colours in 16 bits the higher ones."""
    colour = picture.colour
    return (colour >> 8).astype(np.uint8) if colour.dtype == np.uint16 else colour


@pytest.mark.parametrize("kind", CUT)
def test_the_viewer_shows_the_part_and_says_why(system, start, folder, kind):
    make, name = CUT[kind][0], f"cut.{kind.split('.')[-1].split()[0]}"
    whole = make()
    (folder / name).write_bytes(whole[: len(whole) * 2 // 3])
    done = system.run_tool("pixconv", name, "stdout", folder=folder)
    part = on_screen(part_of(done, name))
    assert part.any() and not part[-HEIGHT // 8 :].any()
    program = start(name)
    program.find(part)
    assert program.close() == 0
    told, reason = program.stderr().splitlines(), done.messages.removeprefix("pixconv: ").strip()
    assert len(told) == 1 and told[0].endswith(reason), (told, reason)


def test_a_cut_frame_of_an_animation_is_told_on_one_line(start, folder):
    shown = {n: framefile.noise(WIDTH, HEIGHT, seed=n) for n in (1, 2, 3)}
    for number, picture in shown.items():
        whole = pictures.png(Pixels(picture))
        length = len(whole) // 2 if number == 2 else len(whole)
        (folder / f"shot.{number}.png").write_bytes(whole[:length])
    program = start("-n", "1", "3", "1", "-r", "8", "shot.@.png")
    program.find_part(shown[1])
    program.wait_until_loaded()
    program.find_part(shown[3])
    program.find_part(shown[1])
    assert program.close() == 0
    lines = program.stderr().splitlines()
    assert len(lines) == 1 and "shot.2.png: the file ends early" in lines[0], lines


# --- standard input -------------------------------------------------------------------------------

TYPES = {
    "png": lambda: pictures.png(Pixels(colours())),
    "sgi": lambda: pictures.sgi(Pixels(colours())),
    "ppm": lambda: by_library(colours(), "ppm"),
    "bmp": lambda: bmp(colours()),
    "tga": lambda: by_library(colours(), "tga"),
    "tiff": lambda: pictures.tiff(Pixels(colours())),
}


@pytest.mark.parametrize("way", ["file", "pipe"])
@pytest.mark.parametrize("kind", TYPES)
def test_a_picture_on_standard_input_is_told_by_its_first_bytes(system, tmp_path, kind, way):
    path = tmp_path / "picture"
    path.write_bytes(TYPES[kind]())
    if way == "file":
        with path.open("rb") as stream:
            done = system.run_tool("pixconv", "-", "stdout", stdin=stream)
    else:
        with subprocess.Popen(["cat", path], stdout=subprocess.PIPE) as cat:
            done = system.run_tool("pixconv", "-", "stdout", stdin=cat.stdout)
    assert (done.status, done.messages) == (0, "")
    assert np.array_equal(framereader.read(done.output).colour, colours())


def test_a_file_that_is_called_a_dash_has_a_folder(system, tmp_path):
    (tmp_path / "-").write_bytes(pictures.png(Pixels(colours())))
    done = system.run_tool("pixconv", "./-", "stdout", folder=tmp_path)
    assert (done.status, done.messages) == (0, "")


@pytest.mark.parametrize("content, reason", [(b"", "empty"), (b"words\n", "not a picture of a known")])
def test_standard_input_without_a_picture_is_named(system, tmp_path, content, reason):
    with subprocess.Popen(["printf", "%s", content.decode()], stdout=subprocess.PIPE) as words:
        done = system.run_tool("pixconv", "-", "stdout", stdin=words.stdout)
    assert (done.status, done.output) == (1, b"")
    assert done.messages.startswith("pixconv: standard input: ") and reason in done.messages
