"""Files dropped on a window as a file manager does it: the other side of the drag-and-drop protocol of
X, version 5."""

from urllib.parse import quote

from Xlib import X, display
from Xlib.protocol import event as xevent

from desktop import wait_until

VERSION = 5


class Source:
    """The window that files are dragged from, on a connection of its own."""

    def __init__(self, desktop, paths):
        self._display = display.Display(desktop.name)
        screen = self._display.screen()
        self._window = screen.root.create_window(0, 0, 1, 1, 0, screen.root_depth)
        self._list = "".join(f"file://{quote(str(path))}\r\n" for path in paths).encode()

    def _atom(self, name):
        return self._display.intern_atom(name)

    def _send(self, target, name, *words):
        words = [self._window.id, *words, *[0] * (4 - len(words))]
        message = xevent.ClientMessage(window=target, client_type=self._atom(name), data=(32, words))
        target.send_event(message)
        self._display.flush()

    def _answer(self, request):
        """The list that the target asks for."""
        request.requestor.change_property(request.property, request.target, 8, self._list)
        request.requestor.send_event(xevent.SelectionNotify(
            time=request.time, requestor=request.requestor, selection=request.selection,
            target=request.target, property=request.property,
        ))
        self._display.flush()

    def _wait_for(self, name):
        """The words of the target's message."""
        found = []

        def came():
            while self._display.pending_events():
                event = self._display.next_event()
                if event.type == X.SelectionRequest:
                    self._answer(event)
                elif event.type == X.ClientMessage and event.client_type == self._atom(name):
                    found.append(event.data[1])
            return found

        return wait_until(came, what=name)[0]

    def drop(self, window, x, y):
        """On the window, at that place of the screen; whether it was taken."""
        target = self._display.create_resource_object("window", window.id)
        selection = self._atom("XdndSelection")
        self._window.set_selection_owner(selection, X.CurrentTime)
        copy = self._atom("XdndActionCopy")
        self._send(target, "XdndEnter", VERSION << 24, self._atom("text/uri-list"))
        self._send(target, "XdndPosition", 0, x << 16 | y, X.CurrentTime, copy)
        if not self._wait_for("XdndStatus")[1] & 1:
            self._send(target, "XdndLeave")
            return False
        self._send(target, "XdndDrop", 0, X.CurrentTime)
        return bool(self._wait_for("XdndFinished")[1] & 1)

    def close(self):
        self._display.close()
