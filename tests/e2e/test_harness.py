"""The suite's own eyes: they see one wrong pixel, and a margin that is one pixel off."""

import os
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest

import activity
import view
from desktop import HEIGHT, WIDTH, occurrences, pack, wait_until
from framefile import (
    Animation, Picture, blocky, encode_bytes, encode_packets, group, image_form, noise, on_screen,
    packets, shrunk, stored_pixels,
)


def screen_with(picture, x, y, left=10, right=11, top=12, bottom=13):
    packed = np.zeros((HEIGHT, WIDTH), np.uint32)
    height, width = picture.shape[:2]
    packed[y - top : y + height + bottom, x - left : x + width + right] = view.BAND
    packed[y : y + height, x : x + width] = pack(picture)
    return packed


PICTURE = noise(40, 30)


def test_a_picture_is_found_where_it_is():
    assert occurrences(screen_with(PICTURE, 300, 200), PICTURE) == [(300, 200)]


@pytest.mark.parametrize("x, y", [(0, 0), (39, 0), (0, 29), (39, 29), (17, 11)])
@pytest.mark.parametrize("bit", [0x01, 0x80, 0x100, 0x10000])
def test_one_wrong_bit_is_seen(x, y, bit):
    packed = screen_with(PICTURE, 300, 200)
    packed[200 + y, 300 + x] ^= bit
    assert occurrences(packed, PICTURE) == []


def test_two_pictures_are_no_place():
    packed = screen_with(PICTURE, 300, 200)
    packed[500:530, 700:740] = pack(PICTURE)
    assert view.place_of(packed, PICTURE) is None


def test_margins_are_measured_to_the_pixel():
    measured = view.measure(screen_with(PICTURE, 300, 200), 40, 30, 300, 200)
    assert measured.margins() == (10, 11, 12, 13)
    assert not measured.text


def test_red_text_belongs_to_the_band_above_and_other_colours_do_not():
    packed = screen_with(PICTURE, 300, 200)
    packed[195, 305] = 0xFF0000
    packed[195, 306] = 0x901212
    measured = view.measure(packed, 40, 30, 300, 200)
    assert measured.text and measured.top == 12
    packed[195, 307] = 0x202021
    assert view.measure(packed, 40, 30, 300, 200).top == 4


def test_waiting_fails_when_nothing_comes():
    with pytest.raises(AssertionError, match="in vain for: rain"):
        wait_until(lambda: False, 0.05, "rain")


INHERITED = "import program, subprocess; START subprocess.run(['cat', '/proc/self/status'])"


@pytest.mark.parametrize("begin, ignored", [("program.be_an_ordinary_parent();", 0), ("", 3)])
def test_programs_inherit_no_signal_that_is_ignored_and_no_mask(begin, ignored):
    """A hang-up and an interrupt (bits 0 and 1) are ignored where the tests are started."""
    command = ["sh", "-c", 'trap "" HUP INT; umask 077; exec "$@"', "sh", sys.executable, "-c"]
    shown = subprocess.run(
        [*command, INHERITED.replace("START", begin)],
        cwd=Path(__file__).parent, capture_output=True, text=True, check=True,
    )
    status = dict(line.split(":", 1) for line in shown.stdout.splitlines())
    assert int(status["SigIgn"], 16) & 3 == ignored
    assert int(status["Umask"], 8) == (0o077 if ignored else 0o022)


def test_who_sleeps_is_told_from_who_works():
    asleep = subprocess.Popen(["sleep", "100"])
    at_work = subprocess.Popen(["sh", "-c", "while :; do :; done"])
    try:
        assert activity.is_working(at_work.pid)
        wait_until(lambda: not activity.is_working(asleep.pid), what="sleep")
        assert {asleep.pid, at_work.pid} <= set(activity.family(os.getpid()))
        patience = 0.2
        with pytest.raises(AssertionError, match="an end of the work"):
            activity.stays(int, lambda: activity.is_working(at_work.pid), 0.1, patience)
        assert activity.stays(int, lambda: activity.is_working(asleep.pid), 0.1, 60)
        assert not activity.stays(iter([1, 2]).__next__, lambda: False, 0.1, patience)
    finally:
        for process in (asleep, at_work):
            process.kill()
            process.wait()


def test_packets_hold_what_was_put_in():
    values = [bytes((v,)) for v in blocky(60, 50, channels=1).ravel().tolist()]
    rebuilt = [value for _, run in packets(values) for value in run]
    assert rebuilt == values
    assert encode_packets([b"a"] * 128) == b"\xffa"
    assert encode_packets([b"a"] * 130) == b"\xffa\x81a"
    assert encode_packets([b"a", b"b"]) == b"\x01ab"


@pytest.mark.parametrize("options", [{}, {"largest": 5}, {"shortest_run": 3}], ids=str)
def test_packets_of_bytes_are_those_of_values(options):
    random = np.random.default_rng(1)
    for size in (1, 2, 127, 128, 129, 130, 600):
        for several in (1, 2, 200):
            data = np.repeat(random.integers(0, several, size), 3)[:size].astype(np.uint8).tobytes()
            values = [bytes((value,)) for value in data]
            assert encode_bytes(data, **options) == encode_packets(values, **options)


def test_an_image_of_one_pixel_byte_for_byte():
    picture = Picture(colour=np.array([[[1, 2, 3]]], np.uint8), mask=np.array([[4]], np.uint8))
    tile = b"RGBA\0\0\0\x0c" + bytes(8) + b"\x04\x03\x02\x01"
    header = b"TBHD\0\0\0\x18" + b"\0\0\0\x01\0\0\0\x01\0\x01\0\x01\0\0\0\x03\0\0\0\x01\0\0\0\x01"
    tiles = b"FOR4\0\0\0\x18TBMP" + tile
    assert image_form(picture) == b"FOR4\0\0\0\x44CIMG" + header + tiles
    assert stored_pixels(picture).tolist() == [[[1, 2, 3, 4]]]


def test_groups_of_unknown_size_end_with_a_chunk():
    assert group("FORM", "ABCD", b"", "unknown") == b"FORM\x80\0\0\0ABCDGEND\x80\0\0\0"
    assert group("FORM", "ABCD", b"", "known+end") == b"FORM\0\0\0\x0cABCDGEND\x80\0\0\0"


def test_the_first_row_of_a_file_is_the_bottom_row_of_the_window():
    picture = Picture(grey=np.array([[10], [20]], np.uint8))
    assert on_screen(picture).tolist() == [[[20, 20, 20]], [[10, 10, 10]]]


def test_shrinking_drops_the_rest_of_a_division():
    assert shrunk(np.arange(35).reshape(5, 7), 2).tolist() == [[0, 2, 4], [14, 16, 18]]


def test_frames_of_an_animation_can_be_told_apart():
    animation = Animation(1, 4200)
    assert len({animation.colour_of(n) for n in animation.numbers}) > 4000
    assert animation.number_of(animation.colour_of(4)) == 4
