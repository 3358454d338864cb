"""A sound server of our own whose only output is a file: what is heard can be compared sample for
sample. Needs the packages pulseaudio and pulseaudio-utils."""

import os
import subprocess
import threading
import time
from pathlib import Path

import numpy as np

from desktop import wait_until

RATE = 44100
FRAME_BYTES = 4  # stereo, 16 bits


class SoundServer:
    def __init__(self, folder):
        self.folder = Path(folder)
        self.folder.mkdir(mode=0o700, exist_ok=True)
        self.socket = self.folder / "socket"
        self.pipe = self.folder / "pipe"
        self._server = None
        self._start()

    @property
    def environment(self):
        """For programs that are to find this server."""
        return {"PULSE_SERVER": f"unix:{self.socket}", "PULSE_COOKIE": str(self.folder / "cookie")}

    def _start(self):
        script = self.folder / "start.pa"
        sink = f"file={self.pipe} rate={RATE} channels=2 format=s16le use_system_clock_for_timing=yes"
        script.write_text(
            f"load-module module-native-protocol-unix socket={self.socket} auth-anonymous=1\n"
            f"load-module module-pipe-sink {sink}\n"
        )
        command = ["pulseaudio", "-n", "-F", script, "--daemonize=no", "--use-pid-file=no"]
        command += ["--exit-idle-time=-1", "--realtime=no", "--high-priority=no"]
        private = {"HOME": str(self.folder), "PULSE_RUNTIME_PATH": str(self.folder)}
        with (self.folder / "log").open("wb") as log:
            self._server = subprocess.Popen(
                command, env={**os.environ, **private}, stdin=subprocess.DEVNULL, stdout=log, stderr=log
            )
        wait_until(lambda: self.socket.exists() and self.pipe.exists(), what="the sound server")
        self._heard = bytearray()
        self._began = None  # when the first sample of what is heard was played
        self._lock = threading.Lock()
        self._reader = threading.Thread(target=self._listen, daemon=True)
        self._reader.start()

    def _listen(self):
        with self.pipe.open("rb", buffering=0) as pipe:
            while block := pipe.read(1 << 16):
                now = time.monotonic()
                with self._lock:
                    # What follows is written as soon as all before it was played.
                    began = now - len(self._heard) / FRAME_BYTES / RATE
                    self._began = min(self._began or began, began)
                    self._heard += block

    def heard(self):
        with self._lock:
            return bytes(self._heard)

    def starts(self, since=0):
        """When each sound began that silence came before, seconds of time.monotonic()."""
        with self._lock:
            began, heard = self._began, bytes(self._heard)
        frames = np.frombuffer(heard[: len(heard) // FRAME_BYTES * FRAME_BYTES], "<i2").reshape(-1, 2)
        loud = np.flatnonzero(frames.any(axis=1))
        quiet_before = np.diff(loud, prepend=-RATE) > RATE // 20
        times = began + loud[quiet_before] / RATE if len(loud) else np.array([])
        return times[times >= since]

    def vanish(self):
        """The server ends; its clients are told."""
        self._server.kill()
        self._server.wait()
        self._reader.join(10)
        for path in (self.socket, self.pipe):
            path.unlink(missing_ok=True)

    def come_back(self):
        self._start()

    def close(self):
        if self._server.poll() is None:
            self.vanish()
