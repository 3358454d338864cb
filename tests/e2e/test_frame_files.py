"""Every freedom of the frame format: the same picture, however its file is written."""

import numpy as np
import pytest

from framefile import (
    COLOUR_MAP, INFORMATION, MAP, Picture, Style, blocky, chunk, image_form, noise, on_screen,
    stored_pixels, wrap,
)

WIDTH, HEIGHT = 150, 110


def colour(**planes):
    return Picture(colour=blocky(WIDTH, HEIGHT), **planes)


def mask(**options):
    return blocky(WIDTH, HEIGHT, seed=9, channels=1, **options)


def depth():
    return blocky(WIDTH, HEIGHT, seed=11, channels=1).astype(np.float32) * 12.5 - 100


WIDE = {"dtype": np.uint16}
RAGGED = [
    (0, 0, 6, 109), (7, 0, 149, 0), (7, 1, 80, 60), (81, 1, 149, 60), (7, 61, 149, 108),
    (7, 109, 7, 109), (8, 109, 149, 109),
]

PICTURES = {
    "colour": colour(),
    "colour and mask": colour(mask=mask()),
    "colour and depth": colour(z=depth()),
    "colour, mask and depth": colour(mask=mask(), z=depth()),
    "grey": Picture(grey=mask()),
    "grey and mask": Picture(grey=mask(), mask=blocky(WIDTH, HEIGHT, 13, 1)),
    "16-bit colour": Picture(colour=blocky(WIDTH, HEIGHT, **WIDE)),
    "16-bit colour and mask": Picture(colour=blocky(WIDTH, HEIGHT, **WIDE), mask=mask(**WIDE)),
    "16-bit grey": Picture(grey=mask(**WIDE)),
    "16-bit grey and mask": Picture(grey=mask(**WIDE), mask=blocky(WIDTH, HEIGHT, 13, 1, **WIDE)),
}
CODECS = ["raw", "rle", "qrl"]


def show(start, folder, data, picture):
    (folder / "one").write_bytes(data)
    program = start("one")
    program.find(on_screen(picture))
    return program


@pytest.mark.parametrize("codec", CODECS)
@pytest.mark.parametrize("picture", PICTURES.values(), ids=PICTURES.keys())
def test_planes_and_codecs(start, folder, picture, codec):
    if codec == "qrl" and picture.colour is not None and picture.mask is not None:
        # How such a tile keeps its mask is nobody's agreement; raw tiles are the same in all files.
        style = Style(codec="raw", compression=2)
    else:
        style = Style(codec=codec)
    show(start, folder, image_form(picture, style), picture)


STYLES = {
    "one tile": Style(tiles=(WIDTH, HEIGHT)),
    "tiles of one row": Style(tiles=(WIDTH, 1)),
    "tiles of one column": Style(tiles=(1, HEIGHT)),
    "small tiles": Style(tiles=(7, 5)),
    "wide tiles": Style(tiles=(512, 128)),
    "tiles in any order": Style(tiles=(20, 30), order=3),
    "tiles of different sizes": Style(tiles=RAGGED, order=5),
    "overlapping tiles": Style(tiles=[(0, 0, 100, 109), (50, 0, 149, 109)]),
    "no tile count": Style(tile_count=0),
    "a wrong tile count": Style(tile_count=9999),
    "another version pair": Style(pair=(7, 65535)),
    "flags that change nothing": Style(extra_flags=COLOUR_MAP | MAP),
    "only literal packets": Style(shortest_run=1000),
    "runs of one": Style(shortest_run=1, tiles=(WIDTH, HEIGHT)),
    "raw tiles of an RLE image": Style(codec="raw", compression=1),
    "raw tiles of a QRL image": Style(codec="raw", compression=2),
    "raw tiles of a QR4 image": Style(codec="raw", compression=3),
    "QRL, only literal packets": Style(codec="qrl", shortest_run=1000),
    "QRL, tiles of different sizes": Style(codec="qrl", tiles=RAGGED),
    "a second colour plane": Style(second_colour=True),
    "an analysis plane": Style(a_plane=True),
    "2-byte alignment": Style(form="FORM", tile_form="FORM"),
    "8-byte alignment": Style(form="FOR8", tile_form="FOR8"),
    "2 bytes in 8": Style(form="FOR8", tile_form="FORM"),
    "8 bytes in 2": Style(form="FORM", tile_form="FOR8"),
    "4 bytes in 8": Style(form="FOR8", tile_form="FOR4", after_tiles=[("ANNO", b"last")]),
    "unknown size of the image": Style(size="unknown"),
    "unknown size of the tiles": Style(tile_size="unknown"),
    "unknown sizes": Style(size="unknown", tile_size="unknown"),
    "unknown sizes, empty end chunks": Style(size="unknown+0", tile_size="unknown+0"),
    "known sizes with end chunks": Style(size="known+end", tile_size="known+end"),
    "unknown sizes, 2-byte alignment": Style("FORM", "FORM", "unknown", "unknown"),
    "unknown sizes, 8-byte alignment": Style("FOR8", "FOR8", "unknown", "unknown"),
    "header up to an end marker": Style(header_to_end_marker=True),
    "chunks after the tiles": Style(after_tiles=[("USER", bytes(5000)), ("ANNO", b"end")]),
    "chunks among the tiles": Style(inside_tiles=[("ANNO", b"odd"), ("XTRA", bytes(700))]),
    "chunks before the header": Style(before_header=[("NAME", b"early"), ("XTRA", b"!")]),
}


@pytest.mark.parametrize("style", STYLES.values(), ids=STYLES.keys())
def test_styles(start, folder, style):
    picture = colour()
    show(start, folder, image_form(picture, style), picture)


@pytest.mark.parametrize("form", ["FOR4", "FORM", "FOR8"])
def test_information_chunks_of_every_kind(start, folder, form):
    picture = colour(z=depth())
    style = Style(form=form, tile_form=form, after_header=list(INFORMATION.items()))
    program = show(start, folder, image_form(picture, style), picture)
    assert program.close() == 0


MARKED = {
    "an unknown chunk": chunk("XTRA", bytes(range(100)), to_end_marker=True),
    "a long unknown chunk": chunk("XTRA", bytes(3000), to_end_marker=True),
    "a text": chunk("ANNO", b"some remark", to_end_marker=True),
    "an empty chunk": chunk("XTRA", b"", to_end_marker=True),
    "a marker by itself": b"EOVC\x80\0\0\0",
}


@pytest.mark.parametrize("extra", MARKED.values(), ids=MARKED.keys())
def test_chunks_that_run_to_an_end_marker(start, folder, extra):
    picture = colour()
    show(start, folder, image_form(picture, Style(after_header=[extra])), picture)


EDGES = [(1, 1), (64, 64), (65, 63), (128, 65), (257, 1), (3, 300)]


@pytest.mark.parametrize("width, height", EDGES)
@pytest.mark.parametrize("codec", CODECS)
def test_sizes_around_the_tile_size(start, folder, width, height, codec):
    picture = Picture(colour=noise(width, height, seed=width))
    picture.colour[height // 2 :] = picture.colour[-1:, -1:]
    show(start, folder, image_form(picture, Style(codec=codec)), picture)


def test_parts_without_a_tile_are_black(start, folder):
    picture = colour()
    data = image_form(picture, Style(tiles=[(10, 20, 99, 80)]))
    picture.colour[:20] = picture.colour[81:] = 0
    picture.colour[:, :10] = picture.colour[:, 100:] = 0
    show(start, folder, data, picture)


WRAPPERS = ["CAT4", "CAT ", "CAT8", "LIS4", "LIST", "LIS8"]


@pytest.mark.parametrize("kind", WRAPPERS)
@pytest.mark.parametrize("size", ["known", "unknown"])
def test_an_image_in_a_list_or_concatenation(start, folder, kind, size):
    picture = colour()
    show(start, folder, wrap(kind, [picture], size=size), picture)


@pytest.mark.parametrize("kind", ["LIS4", "LIST", "LIS8"])
def test_a_list_with_properties(start, folder, kind):
    picture = colour()
    data = wrap(kind, [picture], properties=[("NAME", b"shared"), ("AUTH", b"all")])
    show(start, folder, data, picture)


def test_of_several_images_in_one_file_the_first_is_shown(start, folder):
    first, second = colour(), Picture(colour=noise(WIDTH, HEIGHT, seed=5))
    show(start, folder, wrap("CAT4", [first, second]), first)


def test_of_several_images_side_by_side_the_first_is_shown(start, folder):
    first, second = colour(), Picture(colour=noise(WIDTH, HEIGHT, seed=5))
    show(start, folder, image_form(first) + image_form(second), first)


# --- no colour ------------------------------------------------------------------------------------


def as_grey(values):
    """A byte plane as it looks on the screen."""
    return np.ascontiguousarray(values[::-1, :, None].repeat(3, axis=2))


@pytest.mark.parametrize("codec", ["raw", "rle"])
@pytest.mark.parametrize("options", [{}, WIDE], ids=["8-bit", "16-bit"])
def test_an_image_of_only_a_mask_shows_the_mask(start, folder, codec, options):
    picture = Picture(mask=mask(**options))
    (folder / "one").write_bytes(image_form(picture, Style(codec=codec)))
    measured = start("one").find(as_grey(stored_pixels(picture)[..., 3]))
    assert measured.text, "the view's name is above the picture"


@pytest.mark.parametrize("codec", ["raw", "rle"])
def test_an_image_of_only_depth_shows_near_white_and_far_black(start, folder, codec):
    near = noise(WIDTH, HEIGHT, channels=1) < 128
    picture = Picture(z=np.where(near, -5.5, 2000.25).astype(np.float32))
    (folder / "one").write_bytes(image_form(picture, Style(codec=codec)))
    measured = start("one").find(as_grey(np.where(near, 255, 0).astype(np.uint8)))
    assert measured.text, "the view's name is above the picture"


DEPTH_STYLES = {
    "regular tiles": Style(),
    "tiles of different sizes": Style(tiles=RAGGED, order=2),
    "unknown sizes": Style(size="unknown", tile_size="unknown"),
    "8-byte alignment": Style(form="FOR8", tile_form="FOR8"),
}


@pytest.mark.parametrize("style", DEPTH_STYLES.values(), ids=DEPTH_STYLES.keys())
def test_depth_is_linear_between_near_and_far(start, folder, style):
    values = blocky(WIDTH, HEIGHT, channels=1)
    values[0, :2] = 0, 255
    # 255 equal steps: each falls on a whole grey.
    picture = Picture(z=values.astype(np.float32) * 4 + 1)
    (folder / "one").write_bytes(image_form(picture, style))
    start("one").find(as_grey(255 - values))


def test_an_image_of_mask_and_depth_shows_the_mask(start, folder):
    picture = Picture(mask=mask(), z=depth())
    (folder / "one").write_bytes(image_form(picture))
    start("one").find(as_grey(picture.mask))
