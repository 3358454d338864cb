"""One virtual display: its picture, its windows, its keyboard and mouse."""

import os
import signal
import struct
import subprocess
import tempfile
import time
from contextlib import contextmanager
from pathlib import Path

import numpy as np
from Xlib import X, XK, Xatom, display, error
from Xlib.ext import xtest
from Xlib.protocol import event as xevent

WIDTH, HEIGHT = 1280, 1024

# Seconds until waiting has failed. What comes in time costs none of them, so they are many: the
# machine may be busy.
PATIENCE = float(os.environ.get("VISTEL_PATIENCE", 60))


def wait_until(condition, timeout=PATIENCE, what=None, interval=0.01):
    """Returns the first true result of `condition`; fails when none comes in time."""
    end = time.monotonic() + timeout
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            name = what() if callable(what) else what or condition.__name__
            raise AssertionError(f"waited {timeout:g} s in vain for: {name}")
        time.sleep(interval)


STROKE = 0.02  # seconds that a key is down


class Desktop:
    """An X server without window manager, whose screen is read straight from its memory."""

    def __init__(self, composite=True):
        self._folder = tempfile.TemporaryDirectory(prefix="screen-")
        read_end, write_end = os.pipe()
        command = ["Xvfb", "-displayfd", str(write_end), "-screen", "0", f"{WIDTH}x{HEIGHT}x24"]
        command += ["-fbdir", self._folder.name, "-nolisten", "tcp", "-noreset", "-nocursor"]
        command += [] if composite else ["-extension", "Composite"]
        self._server = subprocess.Popen(
            command,
            pass_fds=[write_end],
            stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            start_new_session=True,
        )
        os.close(write_end)
        with os.fdopen(read_end) as numbers:
            line = numbers.readline()
        if not line.strip():
            raise RuntimeError("the virtual display did not start")
        self.name = f":{line.strip()}"
        self._display = display.Display(self.name)
        self._root = self._display.screen().root
        self._screen = Path(self._folder.name) / "Xvfb_screen0"
        self._display.xfixes_query_version()
        self._held, self._buttons = [], set()
        self._open_screen()
        self.park_pointer()

    @property
    def server(self):
        """The process of the X server."""
        return self._server.pid

    def close(self):
        try:
            self._display.close()
        except error.ConnectionClosedError:
            pass
        self._server.send_signal(signal.SIGTERM)
        try:
            self._server.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self._server.kill()
            self._server.wait()
        self._folder.cleanup()

    # --- picture ----------------------------------------------------------------------------------

    def _open_screen(self):
        """The screen file is an "XWD" dump that the server keeps up to date: a header of big-endian
        words, colour entries of 12 bytes, then the pixels."""
        words = struct.unpack(">25I", self._screen.read_bytes()[:100])
        header_size, version, image_format, depth, width, height = words[:6]
        byte_order, bits_per_pixel, bytes_per_line = words[7], words[11], words[12]
        masks, colours = words[14:17], words[19]
        assert (version, image_format, depth, bits_per_pixel) == (7, 2, 24, 32)
        assert masks == (0xFF0000, 0xFF00, 0xFF) and byte_order == 0
        self._pixels = np.memmap(
            self._screen,
            dtype="<u4",
            mode="r",
            offset=header_size + 12 * colours,
            shape=(height, bytes_per_line // 4),
        )[:, :width]

    def packed(self, x=0, y=0, width=WIDTH, height=HEIGHT):
        """The screen or a part of it as (height, width) words 0xRRGGBB."""
        return self._pixels[y : y + height, x : x + width] & np.uint32(0xFFFFFF)

    def pixel(self, x, y):
        return int(self._pixels[y, x]) & 0xFFFFFF

    def screenshot(self):
        """The screen as (height, width, 3) bytes red, green, blue."""
        return unpack(self.packed())

    def save(self, path):
        from PIL import Image

        Image.fromarray(self.screenshot()).save(path)

    # --- windows ----------------------------------------------------------------------------------

    def windows(self):
        """The mapped top-level windows that have a name: (window, title)."""
        found = []
        for window in self._root.query_tree().children:
            try:
                attributes = window.get_attributes()
                title = self._title(window)
            except (error.BadWindow, error.BadDrawable):
                continue
            if attributes.map_state == X.IsViewable and title:
                found.append((window, title))
        return found

    def _title(self, window):
        # In one request: a title that changes between two could be shorter than what is asked for.
        whole = lambda name, kind: window.get_full_property(name, kind, sizehint=1000)
        named = whole(self._display.get_atom("_NET_WM_NAME"), self._display.get_atom("UTF8_STRING"))
        if named is None:
            named = whole(Xatom.WM_NAME, X.AnyPropertyType)
        if named is None:
            return ""
        value = named.value
        return value.decode("utf-8", "replace") if isinstance(value, bytes) else str(value)

    def rectangle(self, window):
        """Screen rectangle of a window: x, y, width, height."""
        geometry = window.get_geometry()
        corner = self._root.translate_coords(window, 0, 0)
        return corner.x, corner.y, geometry.width, geometry.height

    def topmost(self):
        """Screen rectangle of the window above all others; open menus are windows, too."""
        shown = lambda window: window.get_attributes().map_state == X.IsViewable
        return self.rectangle([w for w in self._root.query_tree().children if shown(w)][-1])

    def has_keyboard(self, window):
        focused = self._display.get_input_focus().focus
        return getattr(focused, "id", 0) in self._family(window)

    def focus(self, window):
        if self.has_keyboard(window):
            return
        window.set_input_focus(X.RevertToPointerRoot, X.CurrentTime)
        self._display.sync()

    def _family(self, window):
        ids, rest = set(), [window]
        while rest:
            current = rest.pop()
            ids.add(current.id)
            rest += current.query_tree().children
        return ids

    def ask_to_close(self, window):
        """What a window manager's close button does."""
        self._send_protocol(window, "WM_DELETE_WINDOW")

    def give_keyboard(self, window):
        """What a window manager does that brings the keyboard back from another window."""
        self.focus(window)
        self._send_protocol(window, "WM_TAKE_FOCUS")

    def _send_protocol(self, window, name):
        message = xevent.ClientMessage(
            window=window,
            client_type=self._display.get_atom("WM_PROTOCOLS"),
            data=(32, [self._display.get_atom(name), X.CurrentTime, 0, 0, 0]),
        )
        window.send_event(message)
        self._display.sync()

    @contextmanager
    def covering(self, x, y, width, height):
        """A window of ours lies over that rectangle for a while."""
        pixel = 0x336699
        window = self._root.create_window(
            x, y, width, height, 0, 24, background_pixel=pixel, override_redirect=True
        )
        window.map()
        self._display.sync()
        try:
            wait_until(
                lambda: (self.packed(x, y, width, height) == pixel).all(),
                what="the covering window",
            )
            yield
        finally:
            window.destroy()
            self._display.sync()

    def cursor(self):
        """The shape of the cursor where it is now: its hot spot (x, y) and its pixels."""
        image = self._display.xfixes_get_cursor_image(self._root)
        return (image.xhot, image.yhot), tuple(image.cursor_image)

    # --- keyboard and mouse -----------------------------------------------------------------------

    def _key_code(self, name):
        symbol = XK.string_to_keysym(name)
        code = self._display.keysym_to_keycode(symbol)
        assert symbol and code, f"no key {name}"
        return code

    def press(self, name):
        xtest.fake_input(self._display, X.KeyPress, self._key_code(name))
        self._held.append(name)
        self._display.sync()

    def release(self, name):
        xtest.fake_input(self._display, X.KeyRelease, self._key_code(name))
        self._held.remove(name)
        self._display.sync()

    def let_keys_repeat(self, on):
        mode = X.AutoRepeatModeOn if on else X.AutoRepeatModeOff
        self._display.change_keyboard_control(auto_repeat_mode=mode)

    def key(self, names):
        """One stroke, such as "Right", "Control_L+Left". However long a busy machine takes over it,
        the key does not repeat."""
        *modifiers, name = names.split("+")
        for modifier in modifiers:
            self.press(modifier)
        self.let_keys_repeat(False)
        self.press(name)
        time.sleep(STROKE)
        self.release(name)
        self.let_keys_repeat(True)
        for modifier in reversed(modifiers):
            self.release(modifier)

    def release_all(self):
        for number in sorted(self._buttons):
            self.button(number, False)
        for name in list(reversed(self._held)):
            self.release(name)

    def move_pointer(self, x, y):
        xtest.fake_input(self._display, X.MotionNotify, x=int(x), y=int(y))
        self._display.sync()

    def park_pointer(self):
        self.move_pointer(WIDTH - 1, HEIGHT - 1)

    def button(self, number, down):
        kind = X.ButtonPress if down else X.ButtonRelease
        xtest.fake_input(self._display, kind, number)
        (self._buttons.add if down else self._buttons.discard)(number)
        self._display.sync()


# --- pictures on the screen -----------------------------------------------------------------------


def pack(rgb):
    """(height, width, 3) bytes to words 0xRRGGBB."""
    wide = rgb.astype(np.uint32)
    return wide[..., 0] << 16 | wide[..., 1] << 8 | wide[..., 2]


def unpack(packed):
    return np.stack([packed >> 16, packed >> 8 & 255, packed & 255], axis=-1).astype(np.uint8)


def occurrences(packed, picture):
    """Where `picture` lies on the screen, pixel for pixel: a list of (x, y) of its corner."""
    wanted = pack(picture)
    height, width = wanted.shape
    rows, columns = packed.shape[0] - height + 1, packed.shape[1] - width + 1
    if rows < 1 or columns < 1:
        return []
    probes = np.random.default_rng(0).integers(0, (height, width), (12, 2))
    some = packed[::16, ::16]
    y, x = min(probes, key=lambda probe: np.count_nonzero(some == wanted[tuple(probe)]))
    places = np.flatnonzero(packed[y : y + rows, x : x + columns] == wanted[y, x])
    ys, xs = np.divmod(places, columns)
    for y, x in probes:
        keep = packed[ys + y, xs + x] == wanted[y, x]
        ys, xs = ys[keep], xs[keep]
    return [
        (int(x), int(y))
        for y, x in zip(ys, xs)
        if np.array_equal(packed[y : y + height, x : x + width], wanted)
    ]
