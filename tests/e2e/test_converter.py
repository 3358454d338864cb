"""The converter on files of other people's programs: what it makes of them is compared with what
another library reads there."""

import os
import signal
import struct
import subprocess
import warnings
import zlib
from pathlib import Path

import numpy as np
import pytest
from PIL import Image

import framefile
import framereader
from desktop import wait_until
from program import ROOT, processes_marked

# Files that are packed with loss are unpacked alike too.
TYPES = {".png", ".bmp", ".gif", ".tga", ".ppm", ".pnm", ".pgm", ".tif", ".tiff", ".webp", ".jpg",
         ".jpeg"}


@pytest.fixture(scope="session")
def real_pictures():
    folder = subprocess.run(
        [ROOT / "scripts" / "real_pictures"], capture_output=True, text=True, check=True
    ).stdout.strip()
    files = sorted(f for f in Path(folder).rglob("*") if f.suffix.lower() in TYPES and f.is_file())
    assert len(files) > 300
    return files


def as_others_read_it(path):
    """(height, width, 4) bytes, or None where the other library gives up or gives less."""
    try:
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")
            image = Image.open(path)
            image.load()
            if image.mode in ("I;16", "I;16B", "I"):  # 16 bits of grey: the upper half counts
                grey = (np.asarray(image).astype(np.uint32) >> 8).astype(np.uint8)
                return np.dstack([grey] * 3 + [np.full_like(grey, 255)])
            return np.asarray(image.convert("RGBA"))
    except Exception:
        return None


def bytes_of(plane):
    return (plane >> 8).astype(np.uint8) if plane.dtype == np.uint16 else plane


def rgba(frame):
    colour = bytes_of(frame.colour)
    mask = np.full(colour.shape[:2], 255, np.uint8) if frame.mask is None else bytes_of(frame.mask)
    return np.dstack([colour, mask])


def difference(ours, theirs):
    """The largest one; what nothing is seen of has no colour to compare."""
    if ours.shape != theirs.shape:
        return f"{ours.shape} instead of {theirs.shape}"
    seen = (theirs[..., 3:] > 0).astype(int)
    apart = np.abs(ours.astype(int) - theirs.astype(int))
    apart[..., :3] *= seen
    return int(apart.max())


def is_broken(path):
    """Files that were made to be refused."""
    return any(folder in ("fail", "randomly-modified") for folder in path.parts)


# What the other library sees differently. Outside the first image of an animation, and where it has
# no pixels, it paints a background or makes the canvas larger; the suite's own notes say what we do.
OTHERWISE = {
    "image-outside-bg.gif", "image-overlap-bg.gif", "image-inside-bg.gif", "missing-pixels.gif",
    "dispose-restore-background.gif", "high-color.gif", "images-combine.gif", "invalid-colors.gif",
}


def tolerance(path):
    """How far a sample may lie off: colours of 5 bits are widened by the other library without
    rounding."""
    return 1 if "16bpp" in path.name else 0


def test_real_pictures_become_what_other_libraries_read(system, real_pictures):
    wrong, compared = [], 0
    for path in real_pictures:
        known_otherwise = is_broken(path) or path.name in OTHERWISE
        theirs = None if known_otherwise else as_others_read_it(path)
        done = system.run_tool("pixconv", path, "stdout")
        if done.status != 0:
            if not done.messages.startswith("pixconv: ") or str(path.name) not in done.messages:
                wrong.append(f"{path}: status {done.status}, {done.messages!r}")
            elif theirs is not None:
                wrong.append(f"{path}: others read it: {done.messages!r}")
            continue
        if theirs is None:
            continue
        ours = rgba(framereader.read(done.output))
        compared += 1
        apart = difference(ours, theirs)
        if isinstance(apart, str) or apart > tolerance(path):
            wrong.append(f"{path}: {apart}")
    assert not wrong, "\n".join(wrong)
    assert compared > 250


# --- round trips ----------------------------------------------------------------------------------


def square_picture(channels=4):
    return framefile.blocky(301, 203, seed=7, channels=channels)


@pytest.mark.parametrize("extension", ["png", "tif"])
def test_a_picture_survives_the_way_to_a_frame_and_back(system, tmp_path, extension):
    pixels = square_picture()
    source, frame, target = (tmp_path / f"bild ä {i}.{extension}" for i in ("1", "frame", "2"))
    Image.fromarray(pixels, "RGBA").save(source)
    done = system.run_tool("pixconv", source, "stdout")
    assert (done.status, done.messages) == (0, "")
    frame.write_bytes(done.output)
    with frame.open("rb") as stream:
        back = system.run_tool("pixconv", target, stdin=stream)
    assert (back.status, back.messages) == (0, "")
    assert (np.asarray(Image.open(target)) == pixels).all()
    assert (rgba(framereader.read(done.output)) == pixels).all()


def test_sixteen_bits_survive(system, tmp_path):
    grey = framefile.noise(64, 48, channels=1, dtype=np.uint16)
    source, target = tmp_path / "a.png", tmp_path / "b.png"
    Image.fromarray(grey).save(source)
    frame = tmp_path / "frame"
    frame.write_bytes(system.run_tool("pixconv", source, "stdout").output)
    assert (framereader.read(frame.read_bytes()).colour[..., 0] == grey).all()
    with frame.open("rb") as stream:
        assert system.run_tool("pixconv", "-t", "png", target, stdin=stream).status == 0
    assert (np.asarray(Image.open(target)).astype(np.uint16) == grey).all()


def test_a_terminal_is_no_frame(system, tmp_path):
    keyboard, terminal = os.openpty()
    try:
        done = system.run_tool("pixconv", tmp_path / "a.png", stdin=terminal)
    finally:
        os.close(keyboard)
        os.close(terminal)
    assert (done.status, done.output) == (1, b"")
    assert "standard input is a terminal" in done.messages and "a.png" in done.messages
    assert not (tmp_path / "a.png").exists()


# --- in the viewer --------------------------------------------------------------------------------


def test_numbered_pictures_of_another_type_play(system, start, folder, real_pictures):
    frames = [p for p in real_pictures if p.parent.name == "glow" and "throbber-" in p.name]
    assert len(frames) == 20
    for path in frames:
        (folder / path.name).write_bytes(path.read_bytes())
    program = start("-n", 0, 19, 1, "throbber-@@.png")
    program.window()
    program.wait_until_loaded()
    program.key("space", "Control_L+Left", "a")  # these are all mask
    for path in (frames[0], frames[1], frames[2]):
        mask = np.asarray(Image.open(path).convert("RGBA"))[..., 3]
        program.find(np.dstack([mask] * 3))
        program.key("Right")
    assert program.close() == 0
    assert program.stderr() == ""


def test_a_picture_of_another_type_opens_under_any_name(system, start, folder):
    pixels = square_picture(3)
    place = folder / "Ordner mit Leerzeichen" / "Größe"
    place.mkdir(parents=True)
    Image.fromarray(pixels).save(place / "übung 1 (a&b).png")
    program = start("Ordner mit Leerzeichen/Größe/übung 1 (a&b).png")
    program.find(pixels)
    assert program.close() == 0
    assert program.stderr() == ""


def test_test_mode_shows_the_chart_of_the_converter(system, start):
    chart = framereader.read(system.run_tool("pixconv").output).colour
    program = start("-t")
    program.find(chart)
    assert program.close() == 0


def test_a_cut_picture_is_shown_as_far_as_it_goes_and_named_and_then_the_next_one(
    system, start, folder
):
    pixels = square_picture(3)
    Image.fromarray(pixels).save(folder / "good.png")
    whole = (folder / "good.png").read_bytes()
    (folder / "cut.png").write_bytes(whole[: len(whole) // 2])
    (folder / "words.txt").write_text("no picture at all\n")
    part = framereader.read(system.run_tool("pixconv", folder / "cut.png", "stdout").output).colour
    program = start("cut.png", "words.txt", "good.png")
    program.find(part)
    assert "cut.png: the file ends early" in program.stderr()
    program.system.close_window(program.window())
    program.find(pixels)
    assert "cut.png" in program.stderr() and "words.txt" in program.stderr()
    assert program.close() == 0


def png_chunk(kind, body):
    return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))


def test_a_bomb_is_named_and_the_next_one_shown(system, start, folder):
    side = 60000
    header = struct.pack(">IIBBBBB", side, side, 8, 6, 0, 0, 0)
    pixels = zlib.compress(bytes(64 << 20), 9)
    (folder / "bomb.png").write_bytes(
        b"\x89PNG\r\n\x1a\n"
        + png_chunk(b"IHDR", header) + png_chunk(b"IDAT", pixels) + png_chunk(b"IEND", b"")
    )
    done = system.run_tool("pixconv", folder / "bomb.png", "stdout")
    assert (done.status, done.output) == (1, b"")
    assert "bomb.png" in done.messages
    picture = square_picture(3)
    Image.fromarray(picture).save(folder / "good.png")
    program = start("bomb.png", "good.png")
    program.find(picture)
    assert "bomb.png" in program.stderr()
    assert program.close() == 0


def converter_of(program, picture):
    """Waits for the process that converts the picture of that name."""

    def running():
        for number, name in processes_marked(program.marker):
            try:
                line = Path(f"/proc/{number}/cmdline").read_bytes()
            except OSError:  # it has just ended
                continue
            if name.startswith("pixconv") and picture.encode() in line:
                return number
        return None

    return wait_until(running, what=f"the converter of {picture}")


@pytest.fixture(scope="session")
def large_picture(tmp_path_factory):
    """A file that takes its converter a while."""
    path = tmp_path_factory.mktemp("large") / "large.png"
    Image.fromarray(framefile.noise(7000, 5000)).save(path, compress_level=1)
    return path


def test_a_converter_that_is_killed_is_named_and_the_next_one_shown(start, folder, large_picture):
    os.link(large_picture, folder / "large.png")
    picture = square_picture(3)
    Image.fromarray(picture).save(folder / "good.png")
    program = start("large.png", "good.png")
    os.kill(converter_of(program, "large.png"), signal.SIGKILL)
    program.find(picture)
    assert "large.png" in program.stderr()
    assert program.close() == 0


def test_the_window_can_be_closed_while_a_converter_hangs(start, folder, large_picture):
    picture = square_picture(3)
    Image.fromarray(picture).save(folder / "shot.1.png")
    os.link(large_picture, folder / "shot.2.png")
    program = start("-n", 1, 2, 1, "shot.@.png")
    hanging = converter_of(program, "shot.2.png")
    os.kill(hanging, signal.SIGSTOP)
    program.find(picture)
    assert program.close() == 0
    wait_until(lambda: not Path(f"/proc/{hanging}").exists(), what="the end of the converter")


def test_older_kinds_are_refused_by_name(system, start, folder):
    (folder / "old.ras").write_bytes(b"\x87\xcf\x03\x2b" + b"\x01\0\0\0" + bytes(64))
    program = start("old.ras")
    program.wait_for_exit()
    assert "old.ras" in program.stderr()
    assert "rasconv: " in program.stderr()
