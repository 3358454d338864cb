"""Dialogs and boxes over the program's window, used with the keyboard."""

from desktop import wait_until

NAMES = {".": "period", "-": "minus", " ": "space", "/": "slash", "\\": "backslash"}
SHIFTED = {"#": "numbersign", "_": "underscore", ":": "colon"}

# In which order Tab goes through what our dialogs have below the system's own controls. The first of
# them comes after the list of types and the buttons.
TO_THE_FIRST_FIELD = 5
FIELDS = {
    "linux": ("set end", "end", "zoom", "shrink", "depth"),
    "wine": ("set end", "end", "depth", "zoom", "shrink"),
}


def type_text(desktop, text):
    for character in text:
        if character in SHIFTED or character.isupper():
            desktop.key(f"Shift_L+{SHIFTED.get(character, character)}")
        else:
            desktop.key(NAMES.get(character, character))


class Dialog:
    """The window with this title, which has the keyboard; another one than `after`."""

    def __init__(self, program, title, after=None):
        self.program, self.desktop, self.title = program, program.desktop, title
        passed = after and after.window.id

        def shown():
            found = [w for w, name in self.desktop.windows() if name == title and w.id != passed]
            return found[0] if found else None

        what = lambda: f"a dialog {title!r} {program.report()}"
        self.window = wait_until(shown, what=what)
        program.wait_for_rest(0.1)
        self.desktop.focus(self.window)

    def key(self, *strokes):
        for stroke in strokes:
            self.desktop.key(stroke)

    def type(self, text):
        type_text(self.desktop, text)

    def there(self):
        return any(window.id == self.window.id for window, _ in self.desktop.windows())

    def end(self, stroke):
        """The stroke with which it goes."""
        self.desktop.focus(self.window)  # a box over it may have had the keyboard
        self.key(stroke)
        what = lambda: f"the end of the dialog {self.title!r} {self.program.report()}"
        wait_until(lambda: not self.there(), what=what)

    def choose_type(self, letters):
        """The type whose name begins so; the keyboard is in the field of the name before."""
        self.key("Tab")
        self.type(letters)
        self.program.wait_for_rest(0.1)

    def fill(self, end=None, zoom=None, shrink=None, depth=False):
        """The fields of an animation; the keyboard is in the field of the name before."""
        self.key(*["Tab"] * TO_THE_FIRST_FIELD)
        numbers = {"end": end, "zoom": zoom, "shrink": shrink}
        pressed = {"set end": end is not None, "depth": depth}
        for field in FIELDS[self.program.system.name]:
            if field == "end" and end is None:
                continue  # Tab passes a field that is grey
            if pressed.get(field):
                self.key("space")
            if numbers.get(field) is not None:
                self.key("Control_L+a")
                self.type(str(numbers[field]))
            self.key("Tab")


def answer_file(program, title, name, type_letters=None, offset=None, **fields):
    """Types a name into a dialog for files, and what else is asked; the dialog, which has gone."""
    dialog = Dialog(program, title)
    dialog.type(name)
    if type_letters:
        dialog.choose_type(type_letters)
    if offset is not None:  # the only field
        dialog.key(*["Tab"] * TO_THE_FIRST_FIELD, "Control_L+a")
        dialog.type(str(offset))
    if fields:
        dialog.fill(**fields)
    dialog.end("Return")
    return dialog
