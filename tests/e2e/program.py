"""The program under test on its two systems: how it is started, watched and ended."""

import contextlib
import os
import shutil
import signal
import subprocess
import tempfile
import time
import uuid
from dataclasses import dataclass
from pathlib import Path

import activity
import view
from desktop import PATIENCE, Desktop, wait_until

ROOT = Path(__file__).resolve().parents[2]
HELPERS = Path(__file__).resolve().parent / "helpers"
BUILD = Path(os.environ.get("VISTEL_BUILD", ROOT / "build"))
MARKER = "VISTEL_TEST_RUN"
SETTINGS_KEY = r"HKCU\Software\Ostrel\vistel"

# All that a program under test has of the environment in which the tests were started.
KEPT = ("LOGNAME", "PATH", "TMPDIR", "USER")


def basic_environment(marker):
    home = BUILD / "e2e" / "home"  # lasting: holds what graphics and font libraries keep for later
    home.mkdir(parents=True, exist_ok=True)
    kept = {name: os.environ[name] for name in KEPT if name in os.environ}
    return {**kept, "HOME": str(home), "LC_ALL": "C.UTF-8", "TZ": "UTC", MARKER: marker}


def be_an_ordinary_parent():
    """What a program inherits beside its environment is the same however the tests were started: in
    the background (no interrupts), under nohup (no hang-ups), from any folder, with any mask. A
    signal that this process ignores is caught here instead, for who is started has that by default;
    this process still does not mind it."""
    for number in signal.valid_signals() - {signal.SIGPIPE, signal.SIGXFSZ}:
        if signal.getsignal(number) == signal.SIG_IGN:
            signal.signal(number, lambda *_: None)
    signal.pthread_sigmask(signal.SIG_SETMASK, ())
    os.umask(0o022)
    os.chdir(ROOT)


# What the first Windows program of a session brings along for all others.
SHARED = (
    "explorer.exe", "services.exe", "winedevice.exe", "plugplay.exe", "svchost.exe", "rpcss.exe",
)


def processes_marked(marker):
    """(id, name) of the processes whose environment carries a mark that begins so."""
    wanted, found = f"{MARKER}={marker}".encode(), []
    for entry in Path("/proc").iterdir():
        if not entry.name.isdigit() or int(entry.name) == os.getpid():
            continue
        try:
            environment = (entry / "environ").read_bytes().split(b"\0")
            if any(variable.startswith(wanted) for variable in environment):
                found.append((int(entry.name), (entry / "comm").read_text().strip()))
        except OSError:
            continue
    return found


def end_processes(marker, spare=()):
    for number, name in processes_marked(marker):
        if name in spare:
            continue
        try:
            os.kill(number, signal.SIGKILL)
        except ProcessLookupError:
            pass


def go_first(number):
    """A process and its group get the processor before others, if this user may ask for that."""
    with contextlib.suppress(PermissionError):
        os.setpriority(os.PRIO_PGRP, number, -10)


def compile_helper(compiler, name, target, libraries=()):
    """Builds a small program of our own for commands inside the system."""
    source = HELPERS / f"{name}.c"
    if not target.exists() or target.stat().st_mtime < source.stat().st_mtime:
        target.parent.mkdir(parents=True, exist_ok=True)
        made = target.with_suffix(f".{os.getpid()}{target.suffix}")  # another run may want it, too
        command = [*compiler, "-O1", "-o", str(made), str(source), *libraries]
        subprocess.run(command, check=True)
        made.replace(target)
    return target


@dataclass
class Finished:
    """A console program that has ended."""

    status: int
    output: bytes
    messages: str
    seconds: float


class System:
    """One of the two systems, with its display. Made once per test session."""

    name = ""
    composite = True

    def __init__(self):
        self.desktop = Desktop(composite=self.composite)
        self.marker = f"{os.getpid()}-{uuid.uuid4().hex}"
        self._folder = tempfile.TemporaryDirectory(prefix="system-")
        self.folder = Path(self._folder.name)  # of the tools: they run in it and keep files in it

    @property
    def binary(self):
        raise NotImplementedError

    def require_binary(self, name):
        """A program that is not there is a failure, never a skipped test."""
        binary = Path(self.command(name)[-1])
        assert binary.is_file(), f"{binary} is missing: build it first"

    def servers(self):
        """The processes beside the program that take part in what it shows."""
        return [self.desktop.server]

    def close(self):
        self.desktop.close()
        end_processes(self.marker)
        self._folder.cleanup()

    def forget_settings(self, folder):
        """The next program starts as for a new user; `folder` is empty and holds its files."""

    def run_tool(self, name, *arguments, stdin=None, folder=None, timeout=PATIENCE):
        """Runs a console program of ours to its end. The output goes through files: what a first
        Windows program brings along would hold a pipe open."""
        with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
            started = time.monotonic()
            done = subprocess.run(
                [*self.command(name), *map(str, arguments)],
                cwd=folder or self.folder,
                env=self.environment(self.folder, f"{self.marker}-tool"),
                stdin=stdin or subprocess.DEVNULL,
                stdout=out,
                stderr=err,
                timeout=timeout,
                check=False,
            )
            seconds = time.monotonic() - started
            out.seek(0), err.seek(0)
            text = err.read().decode("utf-8", "replace").replace("\r\n", "\n")
            return Finished(done.returncode, out.read(), text, seconds)


class Linux(System):
    name = "linux"

    @property
    def binary(self):
        return BUILD / "linux" / "bin" / "vistel"

    def command(self, name="vistel"):
        return [str(self.binary.with_name(name))]

    def emit_command(self):
        """A command of our own that writes a file to its output, for "pipe:"."""
        return str(compile_helper(["gcc"], "emit", BUILD / "e2e" / "linux" / "emit"))

    def frame_variable(self):
        return "$FRAME"

    def environment(self, folder, marker):
        folder.joinpath("run").mkdir(mode=0o700, exist_ok=True)
        variables = basic_environment(marker)
        variables["PATH"] = f"{self.binary.parent}:{variables['PATH']}"
        return {
            **variables,
            "DISPLAY": self.desktop.name,
            "QT_QPA_PLATFORM": "xcb",
            "LIBGL_ALWAYS_SOFTWARE": "1",
            "XDG_CONFIG_HOME": str(folder / "config"),
            "XDG_RUNTIME_DIR": str(folder / "run"),
            "NO_AT_BRIDGE": "1",
        }

    def close_window(self, window):
        self.desktop.ask_to_close(window)


class Wine(System):
    name = "wine"
    composite = False  # child windows over a drawing surface stay invisible with it

    def __init__(self):
        super().__init__()
        self.prefix = Path(os.environ.get("VISTEL_WINEPREFIX", BUILD / "wine"))
        self._server = None
        self._session = f"session-{self.marker}"
        try:
            self._prepare()
        except BaseException:
            self.close()
            raise

    @property
    def binary(self):
        return BUILD / "win64" / "bin" / "vistel.exe"

    @staticmethod
    def loader():
        """Without random addresses: one program in some thousands would not start, because its heap
        lies where Windows has a page of its own (0x7FFE0000)."""
        return ["setarch", "-R", shutil.which("wine64") or "/usr/lib/wine/wine64"]

    def command(self, name="vistel"):
        return [*self.loader(), str(self.binary.with_name(f"{name}.exe"))]

    def emit_command(self):
        compiler = ["x86_64-w64-mingw32-gcc-posix", "-static"]
        target = compile_helper(compiler, "emit", BUILD / "e2e" / "win64" / "emit.exe")
        return "Z:" + str(target).replace("/", "\\")

    def frame_variable(self):
        return "%FRAME%"

    def environment(self, folder, marker):
        return {
            **basic_environment(marker),
            "DISPLAY": self.desktop.name,
            "WINEPREFIX": str(self.prefix),
            # Silent but for what would explain a process that did not start.
            "WINEDEBUG": "-all,err+process,err+module,err+virtual",
            "WINEDLLOVERRIDES": "mscoree=;mshtml=;winemenubuilder.exe=d",
            "WINEPATH": "Z:" + str(self.binary.parent).replace("/", "\\"),
            "LIBGL_ALWAYS_SOFTWARE": "1",
        }

    def servers(self):
        return [*super().servers(), self._server.pid]

    def _run(self, *arguments):
        """Runs a console program; (exit status, output). The output goes through a file: services
        that are started along would hold a pipe open for ever."""
        with tempfile.TemporaryFile() as output:
            done = subprocess.run(
                [*self.loader(), *arguments],
                env=self.environment(ROOT, self._session),
                stdin=subprocess.DEVNULL,
                stdout=output,
                stderr=output,
                timeout=120,
                check=False,
            )
            output.seek(0)
            return done.returncode, output.read().decode("utf-8", "replace")

    @staticmethod
    def _wineserver():
        return shutil.which("wineserver") or "/usr/lib/wine/wineserver"

    def _quiet(self):
        streams = dict.fromkeys(("stdin", "stdout", "stderr"), subprocess.DEVNULL)
        return {"env": self.environment(ROOT, self._session), **streams}

    def _end_server(self):
        for option in ("-k", "-w"):
            command = [self._wineserver(), option]
            subprocess.run(command, timeout=120, check=False, **self._quiet())

    def _prepare(self):
        """The prefix (once), a server of our own for it, and a window setting that suits a screen
        without window manager: a managed window takes two seconds to close there.

        A server that is there already is sent home first: it keeps the screen size of whoever
        started it. So is the one that a new prefix was made with: two service managers live on in
        it, which keep each other from starting a service until who needs it has waited for ten
        seconds. The prefix belongs to this suite, so only one suite at a time can use it."""
        fresh = not (self.prefix / "system.reg").exists()
        self.prefix.mkdir(parents=True, exist_ok=True)
        self._end_server()
        if fresh:
            self._run("wineboot", "-i")
            self._end_server()
        server = [self._wineserver(), "-f", "-p"]
        self._server = subprocess.Popen(server, start_new_session=True, **self._quiet())
        go_first(self._server.pid)  # whatever a Windows program waits for comes from it
        driver = r"HKCU\Software\Wine\X11 Driver"
        status, answer = self._run("reg", "add", driver, "/v", "Managed", "/d", "N", "/f")
        assert status == 0, answer

    def forget_settings(self, folder):
        self._run("reg", "delete", SETTINGS_KEY, "/f")

    def close(self):
        super().close()
        if self._server is not None and self._server.poll() is None:
            self._server.terminate()
            self._server.wait(PATIENCE)
        end_processes(self._session)

    def close_window(self, window):
        self.desktop.focus(window)
        self.desktop.key("Alt_L+F4")


SYSTEMS = {system.name: system for system in (Linux, Wine)}


class Program:
    """One run of the program."""

    def __init__(
        self, system, arguments, folder, private, settings, stdin=None, environment=None,
        stderr=None, name="vistel", stdout=None,
    ):
        """`folder` is the current directory, `private` holds what the run writes to the console,
        `settings` what it keeps for the next one. `stdin`: a file object, None for a null device,
        or "closed". `stdout`, `stderr`: a descriptor, None for a file that stdout() and stderr()
        read. `name`: of the
        program, when it is another one of ours."""
        system.require_binary(name)
        self.system, self.desktop = system, system.desktop
        self.marker = f"{system.marker}-{uuid.uuid4().hex}"
        self._out, self._err = private / "stdout", private / "stderr"
        variables = system.environment(settings, self.marker)
        variables.update(environment or {})
        command = [*system.command(name), *map(str, arguments)]
        if stdin == "closed":
            command, stdin = ["sh", "-c", 'exec "$@" <&-', "sh", *command], None
        with open(self._out, "wb") as out, open(self._err, "wb") as err:
            self.process = subprocess.Popen(
                command,
                cwd=folder,
                env=variables,
                stdin=subprocess.DEVNULL if stdin is None else stdin,
                stdout=out if stdout is None else stdout,
                stderr=err if stderr is None else stderr,
                start_new_session=True,
            )

    # --- console ----------------------------------------------------------------------------------

    def stdout(self):
        return self._out.read_bytes().decode("utf-8", "replace").replace("\r\n", "\n")

    def stderr(self):
        return self._err.read_bytes().decode("utf-8", "replace").replace("\r\n", "\n")

    def running(self):
        return self.process.poll() is None

    def interrupt(self):
        """What Ctrl+C in its console does to the program itself, once it waits for something."""
        if self.system.name == "linux":
            caught = lambda: activity.catches(self.process.pid, signal.SIGINT)
            wait_until(caught, what=lambda: f"a program that minds interrupts {self.report()}")
        self.wait_for_rest(1)
        assert self.running(), self.report()
        self.process.send_signal(signal.SIGINT)

    def busy(self):
        """Whether the program, what it has started or the screen has something to do just now."""
        taking_part = [*activity.family(self.process.pid), *self.system.servers()]
        return any(map(activity.is_working, taking_part))

    def stays(self, look, seconds, patience=PATIENCE):
        """Whether `look` gives the same until there was nothing to do for so many seconds."""
        return activity.stays(look, self.busy, seconds, patience)

    def wait_for_rest(self, seconds=0.3):
        """Waits until what was sent to the program before has been dealt with."""
        self.stays(lambda: None, seconds)

    def wait_until_loaded(self):
        """Waits for the end of loading, which the title tells of once the second frame is under
        way."""
        loaded = lambda: "loading" not in (self.title() or "loading")
        wait_until(lambda: loaded() and self.stays(self.title, 0.2) and loaded(), what=lambda: f"the end of loading {self.report()}")

    def wait_for_exit(self, timeout=PATIENCE):
        """The exit status."""
        what = lambda: f"the program's end {self.report()}"
        wait_until(lambda: not self.running(), timeout, what)
        return self.process.returncode

    def report(self):
        return (
            f"[running: {self.running()}, status: {self.process.returncode}, "
            f"windows: {[title for _, title in self.desktop.windows()]}, "
            f"stderr: {self.stderr()[-2000:]!r}, stdout: {self.stdout()[-500:]!r}]"
        )

    def peak_memory(self):
        """Bytes of resident memory at most, so far. Linux processes only."""
        for line in Path(f"/proc/{self.process.pid}/status").read_text().splitlines():
            if line.startswith("VmHWM:"):
                return int(line.split()[1]) * 1024
        raise AssertionError("no memory figure")

    # --- window -----------------------------------------------------------------------------------

    def window(self, timeout=PATIENCE):
        def shown():
            assert self.running(), f"the program ended before it opened a window {self.report()}"
            windows = self.desktop.windows()
            return windows[0][0] if windows else None

        return wait_until(shown, timeout, lambda: f"a window {self.report()}")

    def has_window(self):
        return bool(self.desktop.windows())

    def title(self):
        windows = self.desktop.windows()
        return windows[0][1] if windows else None

    def key(self, *strokes):
        for stroke in strokes:
            self.desktop.focus(self.window())
            self.desktop.key(stroke)

    def close(self, timeout=PATIENCE):
        """Closes the window as a user does; the exit status."""
        self.system.close_window(self.window())
        return self.wait_for_exit(timeout)

    def kill(self):
        end_processes(self.marker, spare=SHARED)
        if self.running():
            self.process.kill()
        self.process.wait(PATIENCE)

    # --- picture ----------------------------------------------------------------------------------

    def find(self, picture, timeout=PATIENCE):
        """Waits until the picture is on the screen pixel for pixel, once; its place and what lies
        around it."""
        x, y = self.find_part(picture, timeout)
        height, width = picture.shape[:2]
        return view.measure(self.desktop.packed(), width, height, x, y)

    def find_part(self, part, timeout=PATIENCE):
        """Waits until a part of a picture is on the screen; its place there."""

        def found():
            place = view.place_of(self.desktop.packed(), part)
            assert place or self.running(), "the program ended"
            return place

        try:
            return wait_until(found, timeout, "the picture")
        except AssertionError as failure:
            self.desktop.save(self._out.with_name("screen.png"))
            raise AssertionError(f"{failure} {self.report()} {self._out.parent}") from None

    def shows(self, picture):
        return view.place_of(self.desktop.packed(), picture) is not None

    def steady(self, seconds=0.3):
        """Whether the screen stays as it is until there was nothing to do for a while."""
        return self.stays(lambda: self.desktop.packed().tobytes(), seconds)


class Player:
    """A program that shows an Animation: which frame is on the screen, now and over time."""

    def __init__(self, program, animation, timeout=PATIENCE):
        self.program, self.desktop, self.animation = program, program.desktop, animation
        self.x, self.y = program.find_part(animation.landmark(), timeout)

    def frame(self):
        """The number of the frame shown, None while something else is there."""
        half = self.animation.width // 2
        area = self.desktop.packed(self.x + half, self.y, half, self.animation.height)
        if not (area == area[0, 0]).all():
            return None
        value = int(area[0, 0])
        return self.animation.number_of((value >> 16, value >> 8 & 255, value & 255))

    def wait_for(self, number, timeout=PATIENCE):
        last = []

        def there():
            last[:] = [self.frame()]
            return last[0] == number

        what = lambda: f"frame {number}; shown is {last} {self.program.report()}"
        wait_until(there, timeout, what)

    def settled(self, seconds=0.3, timeout=PATIENCE):
        """Waits until the picture does not change any more; the frame number it stays on."""
        seen = []

        def still():
            seen[:] = [self.frame()]
            # The one that stays may be another than the one that was seen.
            return self.program.stays(self.frame, seconds, timeout) and self.frame() == seen[0]

        wait_until(still, timeout, lambda: f"playing to stop {self.program.report()}")
        return seen[0]

    def playing(self, changes=3, timeout=PATIENCE):
        """Waits until that many frame changes were seen; the frames in order."""
        return self.record(changes + 1, timeout)

    def record(self, count, timeout=PATIENCE):
        """The next `count` different frames that are shown, beginning with the one shown now."""
        seen = []

        def enough():
            number = self.frame()
            if number is not None and (not seen or seen[-1] != number):
                seen.append(number)
            return len(seen) >= count

        wait_until(enough, timeout, lambda: f"{count} frames; seen: {seen}", interval=0.004)
        return seen

    def pause(self):
        """Stops playing; the frame it stopped on. While frames are loaded nothing plays yet."""
        self.program.wait_until_loaded()
        self.program.key("space")
        return self.settled()

    def rewind(self, seconds=0.3):
        """Goes to the first frame and rests there; a read takes up to `seconds`. A stroke that came
        during a read may have been overtaken by the frame that was read."""
        first = self.animation.numbers[0]

        def there():
            self.program.key("Control_L+Left")
            return self.settled(seconds) == first

        wait_until(there, what=lambda: f"the first frame {self.program.report()}")

    def step(self, stroke, expected):
        """A step that leads where it began is not seen; one that came before its end would be lost."""
        before = self.frame()
        self.program.key(stroke)
        if before == expected:
            self.program.wait_for_rest()
        self.wait_for(expected)

    def record_in_order(self, count, in_order, timeout=PATIENCE):
        """Records again until so many frames in a row are in order: a busy machine may keep this
        process from seeing each of them."""
        seen = []

        def enough():
            seen[:] = self.record(count, timeout)
            return in_order(seen)

        wait_until(enough, timeout, lambda: f"{count} frames in order; at last seen: {seen}")
        return seen

    def seconds_per_round(self):
        """Time from one showing of the first frame to the next."""
        first, marks, last = self.animation.numbers[0], [], [self.frame()]

        def enough():
            number = self.frame()
            if number == first and last[0] not in (first, None):
                marks.append(time.monotonic())
            last[0] = number if number is not None else last[0]
            return len(marks) == 2

        wait_until(enough, PATIENCE, "a round of the animation", interval=0.002)
        return marks[1] - marks[0]

    def plays_a_round_in(self, seconds, tolerance=0.12, rounds=10):
        """Whether a round takes so long. A busy machine makes rounds longer or delays the look at
        the screen: one undisturbed round of `rounds` is enough."""
        took = [self.seconds_per_round()]
        while abs(took[-1] - seconds) > tolerance and len(took) < rounds:
            took.append(self.seconds_per_round())
        assert abs(took[-1] - seconds) <= tolerance, f"rounds took {took} s instead of {seconds}"
        return True

    def status_line(self):
        """The rows between control bar and picture."""
        packed = self.desktop.packed()
        measured = view.measure(packed, self.animation.width, self.animation.height, self.x, self.y)
        left, right = self.x - measured.left, self.x + measured.width + measured.right
        return packed[self.y - measured.top : self.y, left:right].copy()
