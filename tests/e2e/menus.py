"""The menu and the control bar, used as a user does."""

import view

# Where each item is: the menu's letter, and the strokes that choose it once the menu is open. The
# items without a letter of their own are counted from below: the menu goes round.
ITEMS = {
    "Open Image": ("f", "o"),
    "Open Animation": ("f", "a"),
    "Revert": ("f", "r"),
    "Import Sound": ("f", "u"),
    "Toggle Sound": ("f", "t"),
    "Save Image": ("f", "s"),
    "Save Animation": ("f", "v"),
    "Exit": ("f", "x"),
    "Red Channel": ("v", "r"),
    "Green Channel": ("v", "g"),
    "Blue Channel": ("v", "b", "Return"),  # the same letter as the bar
    "Alpha Channel": ("v", "a"),
    "All Channels": ("v", "c"),
    "Luminance": ("v", "l"),
    "Control Bar": ("v", "Up", "Up", "Up", "Return"),
    "Full Screen": ("v", "Up", "Up", "Return"),
    "Full Resolution": ("v", "Up", "Return"),
    "About": ("h", "a"),
}


def open_menu(program, letter):
    if letter == "h":  # Alt+H is the picture's; the menu is the third one
        opens = ["Down"] if program.system.name == "wine" else []
        strokes = ["F10", "Right", "Right", *opens]
    else:
        strokes = [f"Alt_L+{letter}"]
    program.key(strokes[0])
    program.wait_for_rest(0.1)
    for stroke in strokes[1:]:
        program.desktop.key(stroke)
        program.wait_for_rest(0.1)


def choose(program, item):
    letter, *strokes = ITEMS[item]
    if item == "Blue Channel" and program.system.name == "wine":
        strokes = strokes[:1]  # the first of the two is chosen at once
    open_menu(program, letter)
    for stroke in strokes:
        program.desktop.key(stroke)


def leave_menu(program):
    for _ in range(2):  # the menu, then the row of menus
        program.desktop.key("Escape")
        program.wait_for_rest(0.1)


def menu_picture(program, letter):
    """What an open menu looks like: marks and grey items are part of it."""
    program.wait_for_rest()
    open_menu(program, letter)
    program.wait_for_rest()
    x, y, width, height = program.desktop.topmost()
    packed = program.desktop.packed(x, y, width, height)
    leave_menu(program)
    return packed


# Columns of the bar's controls, as resources/control_bar_table.inc has them.
CONTROLS = {
    "start": 16, "back": 45, "backward": 74, "forward": 103, "step": 132, "end": 161, "rate": 198,
    "all channels": 260, "mask": 283, "depth": 306,
}


class Bar:
    """The bar over a picture that is on the screen at this place."""

    def __init__(self, program, width, height, x, y):
        self.program, self.desktop = program, program.desktop
        measured = view.measure(self.desktop.packed(), width, height, x, y)
        self.left = x - measured.left
        self.top = y - measured.top - view.CONTROL_BAR

    @classmethod
    def of(cls, player):
        return cls(player.program, player.animation.width, player.animation.height, player.x, player.y)

    def point(self, control):
        self.desktop.move_pointer(self.left + CONTROLS[control], self.top + view.CONTROL_BAR // 2)

    def click(self, control):
        self.desktop.focus(self.program.window())
        self.point(control)
        self.desktop.button(1, True)
        self.desktop.button(1, False)

    def pixels(self):
        top, left = self.top, self.left
        return self.desktop.packed(left, top, 320, view.CONTROL_BAR)
