"""The Help menu: which page comes, in which browser, and what is told where there is none."""

from contextlib import contextmanager
from pathlib import Path
from urllib.parse import unquote, urlparse

import pytest

from desktop import wait_until
from framefile import Picture, noise, on_screen, write
from program import BUILD, compile_helper

PICTURE = Picture(colour=noise(200, 160, seed=2))

# The items of the Help menu, from the first one on.
PAGES = [22, 13, 16, 23, 20, 29, 21]

PAGE_CLASS = "VistelTestPage"  # what pages are for the system


def show(start, folder, **options):
    write(folder / "one", PICTURE)
    program = start("one", **options)
    program.find(on_screen(PICTURE))
    return program


def choose_page(program, item):
    """Picks the item of the Help menu, the third one, counted from 0."""
    opens = ["Down"] if program.system.name == "wine" else []  # the other opens them at once
    program.key("F10")
    for stroke in ["Right", "Right", *opens, *["Down"] * item, "Return"]:
        program.wait_for_rest(0.1)
        program.desktop.key(stroke)


def lines_of(log):
    return log.read_text(encoding="utf-8").splitlines() if log.exists() else []


def next_line(program, log, count):
    """The line after so many, once it is there."""
    wait_until(lambda: len(lines_of(log)) > count, what=lambda: f"a page {program.report()}")
    assert len(lines_of(log)) == count + 1, lines_of(log)
    return lines_of(log)[-1]


def file_of(address):
    """The file that an address leads to, for the system under which this test runs."""
    path = unquote(urlparse(address).path)
    return Path(path[3:] if path[1:3] == "Z:" else path)


def make_script(path, text):
    path.parent.mkdir(exist_ok=True)
    path.write_text(f"#!/bin/sh\n{text}\n")
    path.chmod(0o755)


# --- a browser is there ---------------------------------------------------------------------------


def default_of(system, key):
    status, answer = system._run("reg", "query", key, "/ve")
    return answer.split("REG_SZ", 1)[1].strip() if status == 0 and "REG_SZ" in answer else None


def set_default(system, key, value):
    status, answer = system._run("reg", "add", key, "/ve", "/d", value, "/f")
    assert status == 0, answer


@contextmanager
def registered(system, command):
    """The command is the one that opens pages, for a while."""
    values = {rf"HKCR\{PAGE_CLASS}\shell\open\command": command}
    values |= {r"HKCR\.htm": PAGE_CLASS, r"HKCR\.html": PAGE_CLASS}
    before = {key: default_of(system, key) for key in values}
    for key, value in values.items():
        set_default(system, key, value)
    try:
        yield
    finally:
        for key, value in before.items():
            if value is None:
                system._run("reg", "delete", key, "/f")
            else:
                set_default(system, key, value)


def windows_name(path):
    return "Z:" + str(path).replace("/", "\\")


def logging_program():
    compiler = ["x86_64-w64-mingw32-gcc-posix", "-static", "-mwindows"]
    return compile_helper(compiler, "log_arguments", BUILD / "e2e" / "win64" / "log_arguments.exe")


@contextmanager
def logging_browser(system, tmp_path, log):
    """Pages are opened by a program that logs their address; what a program needs to be started
    with for that."""
    if system.name == "linux":
        make_script(tmp_path / "tools" / "xdg-open", f'echo "$@" >>"{log}"')
        binaries = system.environment(tmp_path, "none")["PATH"]
        yield {"PATH": f"{tmp_path / 'tools'}:{binaries}"}
        return
    with registered(system, f'"{windows_name(logging_program())}" "{windows_name(log)}" "%1" -x'):
        yield {}


def test_each_item_of_the_help_menu_shows_its_page(start, system, folder, tmp_path):
    log = tmp_path / "pages"
    with logging_browser(system, tmp_path, log) as environment:
        program = show(start, folder, environment=environment)
        for item, page in enumerate(PAGES):
            choose_page(program, item)
            address = next_line(program, log, item)
            assert address.startswith("file:///") and not address.startswith("file:////"), address
            assert file_of(address).name == f"VisTel{page}.html"
            assert "<h1>" in file_of(address).read_text(encoding="utf-8")
        program.find(on_screen(PICTURE))
        assert program.close() == 0
        assert program.stderr() == ""


def test_the_installation_may_have_blanks_in_its_name(start, system, folder, tmp_path):
    log = tmp_path / "pages"
    with logging_browser(system, tmp_path, log) as environment:
        program = show(
            start, folder, environment={**environment, "TAVO_LOCATION": "/opt/my own  tools"}
        )
        choose_page(program, 1)
        address = next_line(program, log, 0)
        assert address.endswith("/opt/my%20own%20%20tools/docs/ext/VisTel/VisTel13.html")


# --- which browser --------------------------------------------------------------------------------

# What is registered, PROGRAM and LOG standing for names, and what the program is called with.
COMMANDS = {
    "a place between quotes": ('"PROGRAM" "LOG" "%1" -x', "URL"),
    "a place without quotes": ('"PROGRAM" "LOG" %1', "URL"),
    "the place between quotes first": ('"PROGRAM" "LOG" %1 "%1" %1', "%1 | URL"),
    "no place": ('"PROGRAM" "LOG" -page', "-page | URL"),
}


@pytest.mark.parametrize("command, expected", COMMANDS.values(), ids=COMMANDS.keys())
def test_the_address_is_put_in_the_place_of_the_registered_command(
    start, system, folder, tmp_path, command, expected
):
    if system.name != "wine":
        pytest.skip("browsers are not registered so there")
    log = tmp_path / "pages"
    command = command.replace("PROGRAM", windows_name(logging_program()))
    with registered(system, command.replace("LOG", windows_name(log))):
        program = show(start, folder)
        choose_page(program, 0)
        line = next_line(program, log, 0)
        *words, address = line.split(" | ")
        assert " | ".join([*words, "URL"]) == expected
        assert address.endswith("VisTel22.html")


def test_some_browsers_are_left_to_the_shell(start, system, folder, tmp_path):
    if system.name != "wine":
        pytest.skip("browsers are not registered so there")
    log = tmp_path / "pages"
    command = f'"{windows_name(logging_program())}" "{windows_name(log)}" OPERA.EXE "%1"'
    with registered(system, command):
        program = show(start, folder)
        choose_page(program, 0)
        line = next_line(program, log, 0)
        # The shell hands over the file, not the address.
        assert line.startswith("OPERA.EXE | ") and line.endswith("VisTel22.html")
        assert "file:///" not in line


def test_the_browsers_of_the_variable_come_after_that_of_the_desktop(
    start, system, folder, tmp_path
):
    if system.name != "linux":
        pytest.skip("a variable of the other system")
    tools, log = tmp_path / "tools", tmp_path / "pages"
    make_script(tools / "xdg-open", f'echo desktop "$@" >>"{log}"; exit 3')
    make_script(tools / "broken", f'echo broken "$@" >>"{log}"; exit 1')
    make_script(tools / "works", f'echo works "$@" >>"{log}"')
    browsers = "missing:broken -a:works --url=%s -b:broken"
    path = f"{tools}:{system.environment(tmp_path, 'none')['PATH']}"
    program = show(start, folder, environment={"PATH": path, "BROWSER": browsers})
    choose_page(program, 1)
    wait_until(lambda: len(lines_of(log)) > 2, what=lambda: f"three browsers {program.report()}")
    said = [line.replace(str(BUILD), "BUILD").split(" ") for line in lines_of(log)]
    page = "file://BUILD/linux/docs/ext/VisTel/VisTel13.html"
    assert said == [["desktop", page], ["broken", "-a", page], ["works", f"--url={page}", "-b"]]
    program.find(on_screen(PICTURE))


def test_a_browser_that_stays_open_keeps_nobody_waiting(start, system, folder, tmp_path):
    if system.name != "linux":
        pytest.skip("nobody waits for a browser there")
    tools, log = tmp_path / "tools", tmp_path / "pages"
    make_script(tools / "xdg-open", f'echo "$@" >>"{log}"; exec sleep 600')
    path = f"{tools}:{system.environment(tmp_path, 'none')['PATH']}"
    program = show(start, folder, environment={"PATH": path, "BROWSER": "missing"})
    choose_page(program, 0)
    next_line(program, log, 0)
    choose_page(program, 1)
    next_line(program, log, 1)
    assert program.close() == 0


def test_without_a_browser_a_box_names_the_page(start, system, folder, tmp_path):
    if system.name != "linux":
        pytest.skip("the shell tells it there")
    program = show(start, folder, environment={"PATH": str(tmp_path), "BROWSER": ""})
    choose_page(program, 0)
    wait_until(lambda: len(program.desktop.windows()) == 2, what=lambda: f"a box {program.report()}")
    program.desktop.save(tmp_path / "box.png")
    program.desktop.key("Return")
    wait_until(lambda: len(program.desktop.windows()) == 1, what="the end of the box")
    program.find(on_screen(PICTURE))
    assert program.close() == 0
