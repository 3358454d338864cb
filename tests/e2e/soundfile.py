"""Sound files of our own, byte for byte."""

import struct

import numpy as np


def wave(samples, rate=44100):
    """A WAVE file; samples are an array of frames and channels, of uint8 or int16."""
    frames, channels = samples.shape
    width = samples.dtype.itemsize * 8
    data = samples.astype(samples.dtype.newbyteorder("<")).tobytes()
    align = channels * width // 8
    form = struct.pack("<HHIIHH", 1, channels, rate, rate * align, align, width)
    chunks = b"fmt " + struct.pack("<I", 16) + form + b"data" + struct.pack("<I", len(data)) + data
    return b"RIFF" + struct.pack("<I", len(chunks) + 4) + b"WAVE" + chunks


def noise(frames, channels=2, seed=3):
    """16 bits without a sample of 0: silence around it is told apart."""
    values = np.random.default_rng(seed).integers(1, 30000, (frames, channels))
    return values.astype(np.int16)
