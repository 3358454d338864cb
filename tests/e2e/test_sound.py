"""Sound through a real sound server (packages pulseaudio and pulseaudio-utils), by a helper that
plays a file as the viewer does."""

import re
import socket
import subprocess
import tempfile
import time
from pathlib import Path

import numpy as np
import pytest

import soundfile
from desktop import wait_until
from sound_server import SoundServer

PATIENCE = 60


@pytest.fixture(scope="module")
def server(tmp_path_factory):
    made = SoundServer(tmp_path_factory.mktemp("sound"))
    yield made
    made.close()


class Played:
    def __init__(self, status, text):
        self.status = status
        self.told = {name: float(value) for name, value in re.findall(r"(\w+) ([\d.]+)", text)}


def play(system, path, *words, environment):
    with tempfile.TemporaryFile() as output:
        done = subprocess.run(
            [*system.command("play_sound"), str(path), *words],
            env={**system.environment(system.folder, f"{system.marker}-tool"), **environment},
            stdin=subprocess.DEVNULL,
            stdout=output,
            stderr=subprocess.DEVNULL,
            timeout=PATIENCE,
            check=False,
        )
        output.seek(0)
        return Played(done.returncode, output.read().decode())


def file_of(tmp_path, samples, rate=44100):
    path = tmp_path / "sound.wav"
    path.write_bytes(soundfile.wave(samples, rate))
    return path


def sounding(heard):
    """The frames that are no silence; our sounds have none of their own."""
    frames = np.frombuffer(heard[: len(heard) // 4 * 4], "<i2").reshape(-1, 2)
    return frames[frames.any(axis=1)]


def hears(system, server, before, samples):
    """The whole sound in order, nothing twice. On Linux without a gap; under Wine a busy machine may
    tear it apart, and a block counts as played a moment before it is heard: the last of them may be
    cut off."""
    heard = server.heard()[before:]
    if system.name == "linux":
        return samples.tobytes() in heard
    found = sounding(heard)
    spared = 44100 // 20
    whole = np.array_equal(found, samples[: len(found)])
    return whole and len(samples) - spared <= len(found) <= len(samples)


def start_of_next(server):
    """A place between frames, from where on the next sound is looked for."""
    return len(server.heard()) // 4 * 4


def wakes(process):
    """How often its threads have waited, all but the first, which only waits for the end."""
    threads = [thread for thread in Path(f"/proc/{process}/task").iterdir() if thread.name != str(process)]
    status = "".join((thread / "status").read_text() for thread in threads)
    return sum(map(int, re.findall(r"^voluntary_ctxt_switches:\s+(\d+)", status, re.MULTILINE)))


def test_every_sample_is_heard_once_and_in_order(system, tmp_path, server):
    samples = soundfile.noise(44100)
    path, before = file_of(tmp_path, samples), start_of_next(server)
    done = play(system, path, environment=server.environment)
    assert done.status == 0
    assert done.told["played"] == pytest.approx(1, abs=0.02)
    wait_until(lambda: hears(system, server, before, samples), what="the whole sound")


def test_twice_the_speed_takes_every_other_frame(system, tmp_path, server):
    samples = soundfile.noise(44100, seed=4)
    path, before = file_of(tmp_path, samples), start_of_next(server)
    assert play(system, path, "2", environment=server.environment).status == 0
    wait_until(lambda: hears(system, server, before, samples[::2]), what="every other frame")


def test_playing_seldom_wakes_the_processor(system, tmp_path, server):
    if system.name != "linux":
        pytest.skip("under Wine the threads of its own sound service are counted, too")
    path, before = file_of(tmp_path, soundfile.noise(44100 * 6)), start_of_next(server)
    with subprocess.Popen(
        [*system.command("play_sound"), str(path)],
        env={**system.environment(system.folder, f"{system.marker}-tool"), **server.environment},
        stdout=subprocess.DEVNULL,
    ) as player:
        wait_until(lambda: len(sounding(server.heard()[before:])) > 0, what="the sound")
        earlier, start = wakes(player.pid), time.monotonic()
        wait_until(lambda: time.monotonic() > start + 4, what="four seconds of sound")
        assert (wakes(player.pid) - earlier) / (time.monotonic() - start) < 800


def test_without_a_server_there_is_no_sound_and_no_wait(system, tmp_path):
    path = file_of(tmp_path, soundfile.noise(100))

    def not_waited_for():
        done = play(system, path, environment={"PULSE_SERVER": f"unix:{tmp_path}/nowhere"})
        # Wine may take longer to find that out than opening waits for it: then the sound ends later.
        assert done.status == 2 or (system.name == "wine" and done.status == 0)
        return done.status == 0 or done.told["opened"] <= 100

    wait_until(not_waited_for, what="an opening that does not wait")


def test_a_server_that_does_not_answer_is_not_waited_for(system, tmp_path):
    if system.name != "linux":
        pytest.skip("under Wine it is Wine's own sound service that connects")
    path = file_of(tmp_path, soundfile.noise(100))
    with socket.socket(socket.AF_UNIX) as mute:
        mute.bind(str(tmp_path / "mute"))
        mute.listen()

        def milliseconds_to_open():
            with subprocess.Popen(
                [*system.command("play_sound"), str(path)],
                env={
                    **system.environment(system.folder, f"{system.marker}-tool"),
                    "PULSE_SERVER": f"unix:{tmp_path}/mute",
                },
                stdout=subprocess.PIPE,
                text=True,
            ) as player:
                opened = float(player.stdout.readline().split()[1])
                player.kill()
            return opened

        # A machine that is busy may hold the program up by itself.
        wait_until(lambda: milliseconds_to_open() <= 100, what="an opening that does not wait")


def test_a_server_that_comes_back_is_found_again(system, tmp_path, server):
    server.vanish()
    samples = soundfile.noise(8000, seed=5)
    path = file_of(tmp_path, samples)
    gone = play(system, path, environment=server.environment).status
    assert gone == 2 or (system.name == "wine" and gone == 0)
    server.come_back()
    assert play(system, path, environment=server.environment).status == 0
    wait_until(lambda: hears(system, server, 0, samples), what="the sound after all")
