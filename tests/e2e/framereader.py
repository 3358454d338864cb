"""Reads frame files: the other direction of framefile.py, for what the program's tools write. It
shares no code with them and reads no more than they write: groups whose size is known, tiles stored
whole or run-length coded."""

import struct
from dataclasses import dataclass

import numpy as np

import framefile


@dataclass
class Frame:
    """Planes with the top row first; 16-bit channels are uint16."""

    colour: np.ndarray = None  # (height, width, 3), red, green, blue
    mask: np.ndarray = None
    z: np.ndarray = None


def chunks(body, alignment):
    """(tag, content) of the chunks one after the other."""
    at = 0
    while at + 8 <= len(body):
        tag, size = body[at : at + 4].decode("latin-1"), struct.unpack_from(">I", body, at + 4)[0]
        if size & framefile.SIZE_UNKNOWN:
            # Written to a pipe: the rest belongs to it, up to its own end chunk.
            size = len(body) - at - 8
        assert at + 8 + size <= len(body), f"{tag} ends behind its group"
        yield tag, body[at + 8 : at + 8 + size]
        at += 8 + size + -size % alignment


def unpacked(data, values):
    """Run-length packets of single bytes."""
    out, at = bytearray(), 0
    while len(out) < values:
        head = data[at]
        count = (head & 0x7F) + 1
        if head & 0x80:
            out += data[at + 1 : at + 2] * count
            at += 2
        else:
            out += data[at + 1 : at + 1 + count]
            at += 1 + count
    assert len(out) == values and at == len(data), "packets that do not end with their tile"
    return np.frombuffer(bytes(out), np.uint8)


def tile_planes(data, width, height, pixel_bytes):
    """(pixel_bytes, height, width): the bytes of each pixel in file order."""
    if len(data) == width * height * pixel_bytes:
        return np.frombuffer(data, np.uint8).reshape(height, width, pixel_bytes).transpose(2, 0, 1)
    return unpacked(data, width * height * pixel_bytes).reshape(pixel_bytes, height, width)


def read(stream):
    """The first image of a frame file's bytes."""
    assert stream[:4] == b"FOR4" and stream[8:12] == b"CIMG", stream[:12]
    header, tiles = None, None
    for tag, content in chunks(stream[12:], 4):
        if tag == "TBHD":
            header = struct.unpack(">IIHHIHHI", content)
        if tag == "FOR4" and content[:4] == b"TBMP":
            tiles = content[4:]
    assert header and tiles is not None, "no header or no tiles"
    width, height, _, _, flags, wide, count, _ = header
    assert not flags & framefile.BLACK
    sample = 2 if wide else 1
    channels = (1 if flags & framefile.MASK else 0) + (3 if flags & framefile.COLOUR else 1)
    pixels = np.zeros((channels * sample, height, width), np.uint8)
    z = np.zeros((4, height, width), np.uint8)
    painted = np.zeros((height, width), int)
    found = 0
    for tag, content in chunks(tiles, 4):
        if tag not in ("RGBA", "ZBUF"):
            continue
        x1, y1, x2, y2 = struct.unpack_from(">HHHH", content)
        area = (slice(None), slice(y1, y2 + 1), slice(x1, x2 + 1))
        target = pixels if tag == "RGBA" else z
        target[area] = tile_planes(content[8:], x2 - x1 + 1, y2 - y1 + 1, len(target))
        if tag == "RGBA":
            painted[area[1:]] += 1
            found += 1
    assert (painted == 1).all(), "tiles that do not cover the picture once"
    assert found == count or count == 0
    planes = pixels[:, ::-1].astype(np.uint16)
    if wide:
        planes = planes[0::2] << 8 | planes[1::2]
    else:
        planes = planes.astype(np.uint8)
    mask = planes[0] if flags & framefile.MASK else None
    colour = planes[1 if mask is not None else 0 :]
    order = [2, 1, 0] if flags & framefile.COLOUR else [0, 0, 0]
    depth = None
    if flags & framefile.DEPTH:
        bits = np.ascontiguousarray(z[:, ::-1].transpose(1, 2, 0)).view(">f4")
        depth = bits[..., 0].astype(np.float32)
    return Frame(np.stack([colour[i] for i in order], axis=-1), mask, depth)
