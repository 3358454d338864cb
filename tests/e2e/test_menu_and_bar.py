"""Menu, control bar and dialogs, used as a user does."""

import view
from desktop import wait_until
from framefile import Animation, Picture, noise, on_screen, write

# Columns of the bar's controls, as resources/control_bar_table.inc has them.
BUTTONS = {"start": 16, "back": 45, "backward": 74, "forward": 103, "step": 132, "end": 161}
RATE = 198


class Bar:
    def __init__(self, player):
        self.player, self.program, self.desktop = player, player.program, player.desktop
        measured = view.measure(
            self.desktop.packed(), player.animation.width, player.animation.height, player.x, player.y
        )
        self.left = player.x - measured.left
        self.top = player.y - measured.top - view.CONTROL_BAR

    def click(self, column):
        self.desktop.focus(self.program.window())
        self.desktop.move_pointer(self.left + column, self.top + 14)
        self.desktop.button(1, True)
        self.desktop.button(1, False)

    def pixels(self):
        top, left = self.top, self.left
        return self.desktop.packed()[top : top + view.CONTROL_BAR, left : left + 320].copy()


def choose(program, menu, *keys):
    program.key(f"Alt_L+{menu}")
    program.wait_for_rest()
    for key in keys:
        program.desktop.key(key)


def toggle_bar(program):
    """Two items have the same mnemonic: one system goes from one to the other, the other takes the
    first; there the item is the third from below."""
    keys = ("b", "b") if program.system.name == "linux" else ("Up", "Up", "Up")
    choose(program, "v", *keys, "Return")


def type_text(desktop, text):
    names = {".": "period", "-": "minus", " ": "space"}
    for character in text:
        desktop.key(names.get(character, character))


def answer_dialog(program, *answers):
    """Waits for a second window, gives it the keyboard, and types."""
    desktop = program.desktop

    def dialog():
        found = [w for w, title in desktop.windows() if not title.startswith("VisTel")]
        return found[0] if found else None

    window = wait_until(dialog, what=lambda: f"a dialog {program.report()}")
    program.wait_for_rest()
    desktop.focus(window)
    for answer in answers:
        type_text(desktop, answer) if len(answer) > 1 and "." in answer else desktop.key(answer)
    return window


def test_the_buttons_of_the_bar_play_and_step(play):
    player = play(last=6)
    bar = Bar(player)
    stopped = bar.pixels()
    bar.click(BUTTONS["step"])
    player.wait_for(2)
    bar.click(BUTTONS["end"])
    player.wait_for(6)
    bar.click(BUTTONS["back"])
    player.wait_for(5)
    bar.click(BUTTONS["start"])
    player.wait_for(1)
    bar.click(BUTTONS["forward"])
    assert len(player.playing()) == 4
    bar.desktop.park_pointer()
    wait_until(lambda: (bar.pixels() != stopped).any(), what="a bar that shows the playing")
    bar.click(BUTTONS["forward"])  # the one in force pauses
    player.settled()
    bar.desktop.park_pointer()
    wait_until(lambda: (bar.pixels() == stopped).all(), what="a bar that shows the pause")
    player.program.key("Right")  # the keyboard is the picture's


def test_a_rate_that_is_typed_is_played(play):
    player = play(last=8)
    bar = Bar(player)
    bar.click(RATE)
    for key in ("Control_L+a", "1", "space", "0", "Return"):
        bar.desktop.key(key)
    player.program.wait_for_rest()
    player.program.key("space")
    player.plays_a_round_in(0.8)


def test_nothing_of_the_picture_moves_when_the_bar_closes_and_opens(play):
    player = play(last=2)
    program = player.program
    picture = on_screen(player.animation.picture(1))
    before = program.desktop.rectangle(program.window())
    place = program.find_part(picture)
    for height in (before[3] - view.CONTROL_BAR, before[3]):
        toggle_bar(program)
        resized = lambda: program.desktop.rectangle(program.window())[3] == height
        wait_until(resized, what=lambda: f"a window {height} high {program.report()}")
        stays = lambda: view.place_of(program.desktop.packed(), picture) == place
        wait_until(stays, what=lambda: f"the picture in its place {program.report()}")


def test_an_image_is_opened_over_a_running_animation(start, folder):
    animation = Animation(last=9).write(folder)
    other = Picture(colour=noise(200, 100, seed=5))
    write(folder / "other.1", other)
    program = start("shot.")
    program.find_part(animation.landmark())
    choose(program, "f", "o")
    answer_dialog(program, "other.1", "Return")
    program.find_part(on_screen(other))
    assert program.close() == 0


def test_something_broken_leaves_the_picture_on_screen(start, folder):
    animation = Animation(last=9).write(folder)
    (folder / "broken.1").write_text("no picture")
    program = start("shot.")
    program.find_part(animation.landmark())
    choose(program, "f", "o")
    answer_dialog(program, "broken.1", "Return")
    boxes = lambda: [title for _, title in program.desktop.windows()].count("VisTel") == 1
    wait_until(boxes, what=lambda: f"a box {program.report()}")
    program.wait_for_rest()
    program.desktop.focus([w for w, t in program.desktop.windows() if t == "VisTel"][0])
    program.desktop.key("Return")
    program.find_part(animation.landmark())
    assert program.close() == 0
