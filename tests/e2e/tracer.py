"""A tracer of the program's system calls, which can also make them fail."""

import os
import subprocess

from desktop import wait_until
from program import MARKER


class Tracer:
    """Traces a program from now on, and ends with it: a tracer that is told to let go of a program
    whose threads are just ending can wait for ever. `options` are strace's; `log` gets the calls."""

    def __init__(self, program, *options, log=os.devnull):
        self._process = subprocess.Popen(
            ["strace", "-f", "-p", str(program.process.pid), "-o", str(log), *options],
            env={**os.environ, MARKER: program.marker},
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
        )
        assert "attached" in self._process.stderr.readline()

    def wait_for_end(self):
        wait_until(lambda: self._process.poll() is not None, what="the end of the tracer")
        self._process.stderr.close()
