"""What the converter and its companions say when the system does not take what they write, and what
they leave of the files that were there."""

import os
import resource
import shutil
import stat
import subprocess
import tempfile
from pathlib import Path

import numpy as np
import pytest
from PIL import Image

from framefile import Picture, noise, write

WRITTEN = ["png", "jpeg", "tiff", "exr", "webp", "tga", "bmp", "hdr", "pnm", "pfm", "sgi", "dpx",
           "cineon", "tavo"]
FULL = "No space left on device"
NOBODY = 65534


@pytest.fixture(autouse=True)
def linux_only(system):
    if system.name != "linux":
        pytest.skip("devices, limits and users are Linux's own")


@pytest.fixture
def frame(tmp_path):
    path = tmp_path / "frame"
    write(path, Picture(colour=noise(300, 200, seed=8)))
    return path


def run(system, tool, *words, output="", stdin=None, **options):
    """Runs a tool through the shell, with a redirection of its output; status and messages."""
    done = subprocess.run(
        ["/bin/sh", "-c", f'"$@" {output}', "sh", *system.command(tool), *map(str, words)],
        stdin=stdin or subprocess.DEVNULL, capture_output=True, text=True, timeout=30, check=False,
        **options,
    )
    return done.returncode, done.stderr


@pytest.mark.parametrize("tool, words", [
    ("pixconv", []), ("pixconv", ["--help"]), ("pixconv", ["--formats"]),
    ("pixconv", ["picture.png", "stdout"]), ("pixconv", ["cut.png", "stdout"]),
    ("pixconv", ["-", "stdout"]), ("rasconv", ["--help"]),
    ("demo_sequence", ["shot.", "1", "16", "16"]),
])
@pytest.mark.parametrize("output, reason", [
    (">/dev/full", FULL), (">&-", "Bad file descriptor"),
])
def test_output_that_goes_nowhere_is_a_failure(system, tmp_path, tool, words, output, reason):
    picture = tmp_path / "picture.png"
    Image.fromarray(noise(40, 30)).save(picture)
    whole = picture.read_bytes()
    (tmp_path / "cut.png").write_bytes(whole[: len(whole) // 2])
    with picture.open("rb") as stdin:
        status, messages = run(system, tool, *words, output=output, stdin=stdin, cwd=tmp_path)
    assert status == 1
    assert messages.startswith(f"{tool}: ") and messages.endswith(f": {reason}\n")
    assert messages.count("\n") == 1


@pytest.mark.parametrize("key", WRITTEN)
def test_a_full_device_is_named(system, frame, key):
    with frame.open("rb") as stdin:
        status, messages = run(system, "pixconv", "-t", key, "/dev/full", stdin=stdin)
    assert (status, messages) == (1, f"pixconv: /dev/full: {FULL}\n")


@pytest.fixture
def small_disk(tmp_path):
    folder = tmp_path / "disk"
    folder.mkdir()
    mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=48k", "none", folder],
                             capture_output=True, check=False)
    if mounted.returncode != 0:
        pytest.skip("no disk may be made here")
    yield folder
    subprocess.run(["umount", folder], check=True)


@pytest.mark.parametrize("key", WRITTEN)
def test_a_full_disk_is_named_and_the_old_file_stays(system, small_disk, frame, key):
    target = small_disk / f"old.{key}"
    target.write_bytes(b"old")
    with frame.open("rb") as stdin:
        status, messages = run(system, "pixconv", "-t", key, target, stdin=stdin)
    assert (status, messages) == (1, f"pixconv: {target}: {FULL}\n")
    assert [path.name for path in small_disk.iterdir()] == [target.name]
    assert target.read_bytes() == b"old"


def test_a_file_of_two_names_is_whole_or_old_when_the_disk_is_full(system, small_disk, tmp_path):
    tiny = tmp_path / "tiny"
    write(tiny, Picture(colour=noise(100, 90, seed=9)))  # some 27 kB, twice that does not fit
    target, other = small_disk / "old.bmp", small_disk / "same.bmp"
    target.write_bytes(b"old")
    os.link(target, other)
    with tiny.open("rb") as stdin:
        status, messages = run(system, "pixconv", "-t", "bmp", target, stdin=stdin)
    assert (status, messages) == (1, f"pixconv: {target}: {FULL}\n")
    assert sorted(path.name for path in small_disk.iterdir()) == ["old.bmp", "same.bmp"]
    assert other.read_bytes() == b"old"


@pytest.mark.parametrize("key", WRITTEN)
def test_a_limit_of_sizes_is_named(system, tmp_path, frame, key):
    target = tmp_path / f"old.{key}"
    target.write_bytes(b"old")
    limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (20_000, 20_000))
    with frame.open("rb") as stdin:
        status, messages = run(system, "pixconv", "-t", key, target, stdin=stdin, preexec_fn=limit)
    assert (status, messages) == (1, f"pixconv: {target}: File too large\n")
    assert sorted(path.name for path in tmp_path.iterdir()) == ["frame", target.name]
    assert target.read_bytes() == b"old"


@pytest.fixture
def closed_folder():
    """A folder that somebody else may look at and not change."""
    if os.geteuid() != 0:
        pytest.skip("only root can be somebody else")
    folder = Path(tempfile.mkdtemp(prefix="vistel-closed-"))
    folder.chmod(0o755)
    yield folder
    shutil.rmtree(folder)


def as_nobody(system, frame, target):
    with frame.open("rb") as stdin:
        return run(system, "pixconv", "-t", "png", target, stdin=stdin, user=NOBODY, group=NOBODY,
                   extra_groups=[], cwd="/")


def assert_written(path):
    assert np.asarray(Image.open(path)).shape == (200, 300, 3)


def test_no_permission_is_named(system, closed_folder, frame):
    target = closed_folder / "new.png"
    status, messages = as_nobody(system, frame, target)
    assert (status, messages) == (1, f"pixconv: {target}: Permission denied\n")
    target.write_bytes(b"old")
    status, messages = as_nobody(system, frame, target)
    assert (status, messages) == (1, f"pixconv: {target}: Permission denied\n")
    assert target.read_bytes() == b"old"


def test_a_file_that_may_be_written_in_a_folder_that_may_not_is(system, closed_folder, frame):
    target = closed_folder / "old.png"
    target.write_bytes(b"old")
    os.chown(target, NOBODY, NOBODY)
    assert as_nobody(system, frame, target) == (0, "")
    assert_written(target)
    assert [path.name for path in closed_folder.iterdir()] == ["old.png"]


def test_a_file_keeps_its_owner_and_mode(system, closed_folder, frame):
    closed_folder.chmod(0o777)
    for owner, mode in [(0, 0o666), (NOBODY, 0o600), (NOBODY, 0o640)]:
        target = closed_folder / f"old{owner}-{mode:o}.png"
        target.write_bytes(b"old")
        os.chown(target, owner, owner)
        target.chmod(mode)
        assert as_nobody(system, frame, target) == (0, "")
        assert_written(target)
        status = target.stat()
        assert (status.st_uid, status.st_gid, stat.S_IMODE(status.st_mode)) == (owner, owner, mode)


@pytest.mark.parametrize("mask, mode", [(0o022, 0o644), (0o077, 0o600), (0o002, 0o664)])
def test_a_new_file_has_the_mode_of_new_files(system, tmp_path, frame, mask, mode):
    target = tmp_path / "new.png"
    with frame.open("rb") as stdin:
        assert run(system, "pixconv", target, stdin=stdin, umask=mask) == (0, "")
    assert stat.S_IMODE(target.stat().st_mode) == mode
