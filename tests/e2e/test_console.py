"""What the program says on the console, and its exit status."""

import pytest

from desktop import wait_until
from framefile import Animation, Picture, Style, image_form, noise, on_screen, write


def run(start, *arguments):
    program = start(*arguments)
    status = program.wait_for_exit()
    return status, program.stdout(), program.stderr()


USAGE_CASES = {
    "an unknown letter": ["-y"],
    "an unknown word": ["--nonsense"],
    "an unknown letter after a good option": ["-v", "-y", "shot.1"],
    "a zoom without its number": ["-m"],
    "a shrink factor without its number": ["-s"],
    "a range of two numbers": ["-n", "1", "2"],
    "a play format without its name": ["-r"],
    "a sound without its file": ["-u"],
    "an inline range that ends too early": ["absent", "-n5", "9"],
}


@pytest.mark.parametrize("arguments", USAGE_CASES.values(), ids=USAGE_CASES.keys())
def test_usage_goes_to_standard_error_with_status_1(start, arguments):
    status, out, err = run(start, *arguments)
    assert status == 1
    banner, usage = err.split("8.5", 1)
    assert "vistel" in usage.lower()
    last = usage.splitlines()[-1]
    assert last.startswith(("Unknown option: ", "An argument is missing: ")), last
    assert len(usage.splitlines()) > 5
    assert "8.5" not in out


def test_the_version_goes_to_standard_output_with_status_0(start):
    assert run(start, "--version") == (0, "VisTel version 8.5, image viewer and flipbook player\n", "")


def test_words_that_are_not_what_their_options_need_are_told_one_by_one(start):
    words = ["-m", "x", "-r", "23.976", "-n", "1", "x", "1", "-u", "none.wav", "absent"]
    status, out, err = run(start, *words)
    told = err.splitlines()
    assert (status, len(told)) == (0, 5)
    assert all(word in line for word, line in zip(('"x"', '"x"', "none.wav", "23 is", "absent"), told))


@pytest.mark.parametrize("option", ["-h", "--help"])
def test_help_goes_to_standard_output_with_status_0(start, option):
    status, out, err = run(start, option)
    assert status == 0
    assert err == ""
    assert len(out.splitlines()) > 20
    for letter in "GBDCKSTfFRradehpcvzZwgksmlWPtNnu":
        assert f"-{letter}" in out, f"option -{letter} is not explained"


def test_options_after_help_are_not_looked_at(start):
    status, out, err = run(start, "-h", "--nonsense")
    assert (status, err) == (0, "")
    assert out


def test_options_before_help_are_looked_at(start):
    status, out, err = run(start, "--nonsense", "-h")
    assert status == 1
    assert err


def test_the_count_of_files_and_failures_is_reported_when_verbose(start):
    status, out, err = run(start, "-v", "absent-one", "absent-two")
    assert status == 0
    assert "absent-one" in out and "absent-two" in out
    last = err.strip().splitlines()[-1]
    assert last.count("2") == 2


def test_without_files_an_empty_window_waits_for_the_user(start):
    program = start()
    program.window()
    assert program.title() == "VisTel"
    wait_until(program.steady, what="an empty window at rest")
    assert program.close() == 0


def test_control_characters_of_texts_in_files_are_shown_as_escapes(start, folder):
    picture = Picture(colour=noise(64, 48, seed=3))
    write(folder / "one", picture, Style(after_header=[("ANNO", b"red \x1b[31m\x07")]))
    program = start("-v", "one")
    program.find(on_screen(picture))
    wait_until(lambda: r"red \x1b[31m\x07" in program.stdout(), what="the report in the file")
    assert "\x1b" not in program.stdout()
    assert program.close() == 0


def test_control_characters_of_names_are_shown_as_escapes(system, start):
    if system.name == "wine":
        pytest.skip("there no name holds them")
    status, out, err = run(start, "-v", "no\x1b[31mne")
    assert r"no\x1b[31mne" in out and r"no\x1b[31mne" in err
    assert "\x1b" not in out + err


def test_a_list_shown_again_and_again_tells_once_what_is_missing(start, folder):
    picture = Picture(colour=noise(64, 48, seed=3))
    write(folder / "one", picture)
    program = start("-v", "-S", "absent", "one")
    wait_until(lambda: program.stdout().count("File: absent") >= 4, what="four rounds")
    assert program.stderr().count("absent") == 1
    program.close()


def test_the_report_is_there_while_the_frames_are_shown(start, folder):
    Animation(1, 3).write(folder)
    program = start("-v", "shot.")
    program.window()
    wait_until(lambda: "VISTEL_MEMORY" in program.stdout(), what="the report in the file")
    assert program.close() == 0
