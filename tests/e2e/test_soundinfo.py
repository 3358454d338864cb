"""soundinfo against files and readers of others: sox and libsndfile (packages sox and
sndfile-programs)."""

import json
import subprocess

import numpy as np
import pytest

RATE = 22050
FRAMES = 1000


def tell(system, *names):
    done = system.run_tool("soundinfo", "--json", *names)
    return done, json.loads(done.output)


def samples_of(system, path, tmp_path):
    """The samples as the library hands them out."""
    out = tmp_path / "samples.raw"
    done = system.run_tool("soundinfo", "--raw", out, path)
    assert (done.status, done.messages) == (0, "")
    return out.read_bytes()


def written_by_sox(path, bits, channels, *options):
    command = ["sox", "-R", "-r", str(RATE), "-n", "-c", str(channels), "-b", str(bits)]
    command += [*options, str(path), "synth", f"{FRAMES}s", "whitenoise"]
    subprocess.run(command, check=True, capture_output=True)
    return path


def read_by_sox(path, bits, encoding):
    command = ["sox", "-D", str(path), "-t", "raw", "-e", encoding, "-b", str(bits), "-L", "-"]
    return subprocess.run(command, check=True, capture_output=True).stdout


def widened(little_endian):
    """24 bits as sign-extended 32."""
    three = np.frombuffer(little_endian, np.uint8).reshape(-1, 3).astype(np.int32)
    wide = three[:, 0] | three[:, 1] << 8 | three[:, 2] << 16
    return ((wide << 8) >> 8).astype("<i4").tobytes()


@pytest.mark.parametrize("channels", [1, 2, 3, 4, 6])
@pytest.mark.parametrize("bits", [8, 16, 24, 32])
@pytest.mark.parametrize("name", ["noise.aiff", "noise.aifc"])
def test_aiff_files_of_sox_are_read_sample_for_sample(system, tmp_path, name, bits, channels):
    path = written_by_sox(tmp_path / name, bits, channels)
    done, [found] = tell(system, path)
    assert (done.status, done.messages) == (0, "")
    assert found["format"] == ("AIFF" if name.endswith("f") else "AIFF-C")
    assert (found["channels"], found["rate"], found["width"]) == (channels, RATE, bits)
    assert (found["frames"], found["sampleFormat"]) == (FRAMES, "two's complement")
    assert found["played"] == (channels in (1, 2, 4) and bits <= 24)
    expected = read_by_sox(path, bits, "signed-integer")
    if bits == 24:
        expected = widened(expected)
    if bits == 32:  # only samples of 16 bits are brought into our byte order
        expected = np.frombuffer(expected, "<u4").byteswap().tobytes()
    assert samples_of(system, path, tmp_path) == expected


@pytest.mark.parametrize("channels", [1, 2])
@pytest.mark.parametrize("bits", [8, 16])
def test_wave_files_of_sox_are_read_sample_for_sample(system, tmp_path, bits, channels):
    path = written_by_sox(tmp_path / "noise.wav", bits, channels)
    done, [found] = tell(system, path)
    assert (done.status, done.messages) == (0, "")
    assert found["format"] == "MS RIFF WAVE"
    assert (found["channels"], found["rate"], found["width"]) == (channels, RATE, bits)
    assert (found["frames"], found["played"]) == (FRAMES, True)
    assert found["sampleFormat"] == ("unsigned" if bits == 8 else "two's complement")
    expected = read_by_sox(path, bits, "unsigned-integer" if bits == 8 else "signed-integer")
    assert samples_of(system, path, tmp_path) == expected


@pytest.mark.parametrize("bits,encoding", [(24, "signed-integer"), (32, "floating-point")])
def test_wave_files_that_are_no_plain_pcm_are_refused(system, tmp_path, bits, encoding):
    path = written_by_sox(tmp_path / "noise.wav", bits, 2, "-e", encoding)
    done, [found] = tell(system, path)
    assert done.status == 1
    assert not found["opened"]
    assert done.messages == "Audio File Library error 50:  AFopenfile: \n\n"


@pytest.mark.parametrize("kind", ["-pcms8", "-pcm16", "-pcm24"])
def test_aiff_files_of_libsndfile_hold_the_same(system, tmp_path, kind):
    source = written_by_sox(tmp_path / "source.aiff", 24, 2)
    path = tmp_path / "made.aiff"
    subprocess.run(["sndfile-convert", kind, source, path], check=True, capture_output=True)
    bits = int(kind.lstrip("-pcms"))
    done, [found] = tell(system, path)
    assert done.status == 0
    assert (found["channels"], found["frames"], found["width"]) == (2, FRAMES, bits)
    expected = read_by_sox(path, bits, "signed-integer")
    assert samples_of(system, path, tmp_path) == (widened(expected) if bits == 24 else expected)


def test_what_cannot_be_opened_is_told_and_the_rest_is(system, tmp_path):
    good = written_by_sox(tmp_path / "good.aiff", 16, 1)
    bad = tmp_path / "bad.aiff"
    bad.write_bytes(b"no sound")
    done, found = tell(system, bad, good, tmp_path / "missing.wav")
    assert done.status == 1
    assert [each["opened"] for each in found] == [False, True, False]
    first, _, second, _ = done.messages.split("\n", 3)
    assert first.startswith("Audio File Library error 0:  AFopenfile: WARNING ")
    assert first.endswith("bad.aiff does not have a recognized audio file format")
    assert second.startswith("Audio File Library error 3:  AFopenfile: open(")


def test_the_report_is_read_line_by_line(system, tmp_path):
    path = written_by_sox(tmp_path / "tone.aiff", 16, 2, "--comment", "made here")
    done = system.run_tool("soundinfo", path)
    lines = done.output.decode().replace("\r\n", "\n").splitlines()[1:]
    assert lines == [
        "  format         AIFF",
        "  channels       2",
        f"  rate           {RATE}",
        "  width          16 bits",
        "  sample format  two's complement",
        f"  frames         {FRAMES}",
        "  played         yes",
    ]


def test_calls_that_make_no_sense_get_the_usage(system):
    for words in ([], ["--raw"], ["--what", "x"], ["--raw", "out", "a", "b"]):
        done = system.run_tool("soundinfo", *words)
        assert done.status == 1
        assert done.messages.startswith("usage: soundinfo")
