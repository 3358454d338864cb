"""An animation: playing, stepping, ranges, directions."""

import pytest

import view
from desktop import wait_until
from framefile import Animation
from program import Player

SLOW = ("-r", "8")  # frames can be told apart by looking


def follows(seen, step, numbers):
    """Whether each frame of the list is followed by the one `step` further on, round the ends."""
    places = [numbers.index(n) for n in seen]
    return all((b - a) % len(numbers) == step % len(numbers) for a, b in zip(places, places[1:]))


def test_an_animation_starts_playing_at_once_and_repeats(start, folder):
    animation = Animation().write(folder)
    player = Player(start(*SLOW, "shot."), animation)
    seen = player.record_in_order(9, lambda seen: follows(seen, 1, animation.numbers))
    assert set(seen) == set(animation.numbers)


def test_the_first_and_the_last_frame_have_exactly_their_pixels(play):
    player = play()
    for number, stroke in ((1, "Control_L+Left"), (6, "Control_L+Right")):
        player.step(stroke, number)
        shown = player.animation.picture(number).colour[::-1]
        measured = player.program.find(shown)
        x, y = view.expected_margins(64, 48, animation=True)
        assert measured.margins() == (x, x, y, y)
        assert measured.text, "the status line is above the picture"
    assert player.program.title() == "VisTel: shot"


SIZES = [(64, 48), (300, 100), (319, 239), (320, 240), (400, 60), (100, 300)]


@pytest.mark.parametrize("width, height", SIZES)
def test_an_animation_has_at_least_20_pixels_of_band_all_round(play, width, height):
    player = play(last=2, width=width, height=height)
    measured = player.program.find(player.animation.picture(1).colour[::-1])
    x, y = view.expected_margins(width, height, animation=True)
    assert measured.margins() == (x, x, y, y)
    assert min(x, y) >= 20
    assert measured.text


def test_zoom_of_an_animation(start, folder):
    animation = Animation(last=2).write(folder)
    program = start("-m", "3", "shot.")
    program.find_part(view.magnified(animation.landmark(), 3))
    program.wait_until_loaded()
    program.key("space")
    shown = [view.magnified(animation.picture(n).colour[::-1], 3) for n in (1, 2)]
    program.key("Control_L+Left")
    assert program.find(shown[0]).margins() == (64, 64, 48, 48)
    program.key("Right")
    assert program.find(shown[1]).margins() == (64, 64, 48, 48)


def test_space_pauses_and_resumes(start, folder):
    animation = Animation().write(folder)
    player = Player(start(*SLOW, "shot."), animation)
    player.playing()
    stopped_on = player.pause()
    assert player.frame() == stopped_on
    player.program.key("space")
    assert player.record(4)[0] == stopped_on
    player.record_in_order(4, lambda seen: follows(seen, 1, animation.numbers))


def test_the_arrows_step_and_wrap_at_both_ends(play):
    player = play(last=4)
    for expected in (2, 3, 4, 1, 2):
        player.step("Right", expected)
    for expected in (1, 4, 3, 2, 1, 4):
        player.step("Left", expected)


def test_right_while_playing_does_nothing(start, folder):
    animation = Animation(last=8).write(folder)
    player = Player(start("-r", "4", "shot."), animation)
    player.playing(1)

    def goes_on():
        first = player.frame()
        player.program.key("Right")
        return follows([first, *player.record(3)[1:]], 1, animation.numbers)

    # A frame may be missed on a busy machine; a step would be one too many each time.
    assert any(goes_on() for _ in range(5))


def test_control_and_an_arrow_jump_to_the_ends(play):
    player = play()
    player.step("Right", 2)
    player.step("Control_L+Right", 6)
    player.step("Control_R+Left", 1)


def test_digits_set_the_step_and_wrapping_keeps_its_places(play):
    player = play(last=10)
    player.program.key("3")
    for expected in (4, 7, 10, 1):
        player.step("Right", expected)
    for expected in (10, 7, 4, 1):
        player.step("Left", expected)
    player.program.key("4")
    for expected in (5, 9, 1):
        player.step("Right", expected)
    player.step("Left", 9)
    player.program.key("1")
    player.step("Left", 8)


def test_0_sets_the_step_to_10(play):
    player = play(last=25)
    player.program.key("0")
    for expected in (11, 21, 1):
        player.step("Right", expected)


def without_first(seen):
    """The first frame is on the screen for a moment only when it is passed going backward, because
    the clock starts anew there: it may be missed."""
    rest = [number for number in seen if number != 1]
    return [n for n, before in zip(rest, [None, *rest]) if n != before]


def test_comma_plays_backward_and_period_forward(play):
    player = play(*SLOW)
    player.program.key("space", "comma")
    player.wait_for(5)


    def backward(seen):
        rest = without_first(seen)
        return len(rest) >= 7 and follows(rest, -1, player.animation.numbers[1:])

    player.record_in_order(9, backward)
    player.program.key("period")
    player.playing(1)
    player.record_in_order(7, lambda seen: follows(seen, 1, player.animation.numbers))


def test_s_reflects_at_the_ends(play):
    player = play(*SLOW, last=4)
    player.program.key("s", "space")

    def reflected(seen):
        rest = without_first(seen)
        steps = [b - a for a, b in zip(rest, rest[1:])]
        turns = {rest[i + 1] for i in range(len(steps) - 1) if steps[i] != steps[i + 1]}
        return all(abs(step) == 1 for step in steps) and turns == {2, 4}

    player.record_in_order(14, reflected)
    player.program.key("s", "period")
    player.wait_for(4)
    player.record_in_order(6, lambda seen: follows(seen, 1, player.animation.numbers))


@pytest.mark.parametrize("stroke, start_at, last", [("period", 4, 6), ("comma", 3, 1)])
def test_alt_with_a_play_key_plays_once_from_end_to_end(play, stroke, start_at, last):
    player = play("-r", "8")
    for number in range(2, start_at + 1):
        player.step("Right", number)
    player.program.key("space")

    def once_through():
        player.program.key(f"Alt_L+{stroke}")
        player.wait_for(7 - last)
        seen = [7 - last]

        def ended():
            number = player.frame()
            seen.extend([] if number in (None, seen[-1]) else [number])
            return seen[-1] == last

        wait_until(ended, what=lambda: f"frame {last}; seen: {seen}", interval=0.004)
        assert player.settled(1.0) == last
        return seen

    # A frame may be missed on a busy machine, but not each time.
    whole = sorted(player.animation.numbers, reverse=last == 1)
    assert any(once_through() == whole for _ in range(5))
    player.step("Left" if last == 6 else "Right", 5 if last == 6 else 2)


def test_shift_with_the_play_keys_sets_the_range(play):
    player = play(last=8)
    for expected in (2, 3):
        player.step("Right", expected)
    player.program.key("Shift_L+comma")
    for expected in (4, 5, 6):
        player.step("Right", expected)
    player.program.key("Shift_L+period")
    for expected in (3, 4, 5, 6):
        player.step("Right", expected)
    player.step("Control_L+Left", 3)
    player.step("Left", 6)
    # Once more on its own place, each end goes back to the sequence's.
    player.program.key("Shift_L+period")
    player.step("Right", 7)
    player.step("Control_L+Left", 3)
    player.program.key("Shift_L+comma")
    player.step("Left", 2)


def test_t_plays_a_range_in_its_time_and_can_be_switched_off(play):
    player = play("-r", "10", last=8)
    player.program.key("t", "space")
    player.record_in_order(9, lambda seen: len(set(seen)) == 8)
    player.program.key("t")
    player.record_in_order(9, lambda seen: len(set(seen)) == 8)


def test_the_status_line_changes_with_the_frame(play):
    player = play(last=4)
    lines = []
    for number in (1, 2, 3, 4):
        wait_until(player.program.steady, what="the status line")
        lines.append(player.status_line().tobytes())
        player.step("Right", number % 4 + 1)
    assert len(set(lines)) == 4


@pytest.mark.parametrize("option, rate", [("film", 24), ("pal", 25), ("ntsc", 30), ("12", 12)])
def test_the_play_format_sets_the_rate(start, folder, option, rate):
    # A range of `rate` frames takes one second.
    animation = Animation(last=rate).write(folder)
    player = Player(start("-r", option, "shot."), animation)
    assert player.plays_a_round_in(1.0)


def test_an_animation_whose_frames_differ_in_size_keeps_its_window(start, folder):
    big = Animation(last=1, width=200, height=160).write(folder)
    small = Animation(first=2, last=2, width=100, height=80).write(folder)
    program = start("shot.")
    program.find_part(big.landmark())
    before = program.desktop.rectangle(program.window())
    program.find_part(small.landmark())
    assert program.desktop.rectangle(program.window()) == before


RANGES = {
    "a range given among the files, in one word each": (
        ["absent", "-n", "3", "5", "1", "shot"],
        range(1, 9),
        [3, 4, 5],
    ),
    "every second file": (["shot."], range(1, 8, 2), [1, 3, 5, 7]),
    "padded names": (["shot."], range(8, 12), [8, 9, 10, 11]),
    "a range given backwards": (["-n", "6", "2", "-2", "shot"], range(1, 9), [2, 4, 6]),
    "a range given among the files": (["absent", "-n3", "5", "1", "shot"], range(1, 9), [3, 4, 5]),
    "a single numbered file": (["shot."], range(7, 8), [7]),
}


@pytest.mark.parametrize("arguments, files, shown", RANGES.values(), ids=RANGES.keys())
def test_ranges(start, folder, request, arguments, files, shown):
    pattern = "shot.{:04}" if "padded" in request.node.name else "shot.{}"
    animation = Animation(files.start, files[-1], files.step).write(folder, pattern)
    player = Player(start(*arguments), animation)
    player.pause()
    player.step("Control_L+Left", shown[0])
    for expected in [*shown[1:], shown[0]]:
        player.step("Right", expected)


PATTERNS = {"shot.#.iff": "shot.{:04}.iff", "shot.@@.iff": "shot.{:02}.iff", "shot": "shot.{}"}


@pytest.mark.parametrize("pattern", PATTERNS)
def test_patterns(start, folder, pattern):
    animation = Animation(7, 11).write(folder, PATTERNS[pattern])
    player = Player(start("-n", "7", "11", "1", pattern), animation)
    player.pause()
    player.step("Control_L+Left", 7)
    player.step("Left", 11)


def test_find_first_steps_to_the_first_frame_that_exists(start, folder):
    animation = Animation(5, 9).write(folder)
    player = Player(start("-f", "-n", "1", "9", "1", "shot"), animation)
    player.pause()
    player.step("Control_L+Right", 9)
    player.step("Left", 8)


def test_quitting_while_playing_ends_with_status_0(start, folder):
    animation = Animation().write(folder)
    program = start("shot.")
    Player(program, animation).playing()
    assert program.close() == 0
    assert program.stderr() == ""


def test_the_frame_rate_is_kept_for_the_next_run(start, folder):
    animation = Animation(last=10).write(folder)
    first = start("-r", "10", "shot.")
    Player(first, animation)
    assert first.close() == 0
    player = Player(start("shot."), animation)
    assert player.plays_a_round_in(1.0)
