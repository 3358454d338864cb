"""Sound through a real sound server (packages pulseaudio and pulseaudio-utils), by a helper that
plays a file as the viewer does."""

import re
import subprocess
import tempfile

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


def test_every_sample_is_heard_once_and_in_order(system, tmp_path, server):
    samples = soundfile.noise(44100)
    path = file_of(tmp_path, samples)
    done = play(system, path, environment=server.environment)
    assert done.status == 0
    assert done.told["played"] == pytest.approx(1, abs=0.02)
    wait_until(lambda: samples.tobytes() in server.heard(), what="the whole sound")


def test_twice_the_speed_takes_every_other_frame(system, tmp_path, server):
    samples = soundfile.noise(44100, seed=4)
    path = file_of(tmp_path, samples)
    assert play(system, path, "2", environment=server.environment).status == 0
    wait_until(lambda: samples[::2].tobytes() in server.heard(), what="every other frame")


def test_without_a_server_there_is_no_sound_and_no_wait(system, tmp_path):
    path = file_of(tmp_path, soundfile.noise(100))
    nowhere = {"PULSE_SERVER": f"unix:{tmp_path}/nowhere"}
    done = play(system, path, environment=nowhere)
    assert done.status == 2
    assert done.told["opened"] <= 100


def test_a_server_that_comes_back_is_found_again(system, tmp_path, server):
    server.vanish()
    samples = soundfile.noise(8000, seed=5)
    path = file_of(tmp_path, samples)
    assert play(system, path, environment=server.environment).status == 2
    server.come_back()
    assert play(system, path, environment=server.environment).status == 0
    wait_until(lambda: samples.tobytes() in server.heard(), what="the sound after all")
