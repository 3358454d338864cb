#!/usr/bin/env python3
"""Checks that includes in src/ run downwards only, between the folders and between the rooms of
viewer/, that no two modules include each other, be it through others, and that the operating system
is met below src/platform/ alone. There are no exceptions.

    check_layers.py [SOURCE_FOLDER]   prints offending lines; exit status 1 when there are any
    check_layers.py --self-test       proves that it finds what it is there to find
"""

import contextlib
import io
import re
import sys
import tempfile
from pathlib import Path

# Which folders each folder may include, besides itself. A room of viewer/ is a folder of its own.
FLOORS_BELOW_VIEWER = {"sequence", "analysis", "iff", "audio", "settings", "host", "platform"}
ROOMS = ["viewer/window", "viewer/picture", "viewer/playback", "viewer/commands"]  # upwards
MAY_INCLUDE = {
    "app": {"viewer", *ROOMS} | FLOORS_BELOW_VIEWER,
    "viewer": set(ROOMS) | FLOORS_BELOW_VIEWER,
    "viewer/commands": {"viewer/playback", "viewer/picture", "viewer/window"} | FLOORS_BELOW_VIEWER,
    "viewer/playback": {"viewer/picture", "viewer/window"} | FLOORS_BELOW_VIEWER,
    "viewer/picture": {"viewer/window"} | FLOORS_BELOW_VIEWER,
    "viewer/window": {"host", "platform"},
    "sequence": {"settings", "iff", "host", "platform"},
    "analysis": {"iff", "host", "platform"},
    "iff": {"host", "platform"},
    "audio": {"host", "platform"},
    "settings": {"host", "platform"},
    "host": {"platform"},
    "platform": set(),
}

SUFFIXES = {".h", ".hpp", ".cpp", ".cc", ".c", ".inc", ".inl"}
INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"(?P<own>[^"]+)"|<(?P<system>[^>]+)>)')

# Headers and names that belong to one operating system, toolkit or sound server.
SYSTEM_HEADER = re.compile(
    r"""(?xi) ^(?:
        (?:windows|windowsx|winsock2?|winuser|wingdi|winreg|winnls|commdlg|commctrl|shellapi|shlobj|
           shlwapi|mmsystem|mmreg|dsound|objbase|ole2|tchar|direct|io|process|psapi)\.h
      | (?:unistd|dlfcn|pthread|poll|termios|dirent|spawn|langinfo)\.h
      | (?:sys|linux|X11|xcb|pulse|GL|EGL|gtk|glib)/.*
    )$"""
)
QT_HEADER = re.compile(r"^Q[A-Z]\w*$|^Qt[A-Z]\w*(/.*)?$")
SYSTEM_NAME = re.compile(
    r"\b(_WIN32|_WIN64|WIN32|WIN64|__MINGW32__|__MINGW64__|_MSC_VER|__linux__|__linux|__unix__"
    r"|__APPLE__|Q_OS_\w+)\b"
)
STRING = re.compile(r'"(?:\\.|[^"\\])*"')


def without_comments(text):
    """The text with comments blanked, line for line."""

    def blank(match):
        found = match.group(0)
        return re.sub(r"[^\n]", " ", found) if found.startswith("/") else found

    pattern = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', re.DOTALL)
    return pattern.sub(blank, text)


def is_system_header(name):
    return bool(SYSTEM_HEADER.match(name) or QT_HEADER.match(name))


def folder_of(path):
    """The folder, or room, that a path below src/ lies in."""
    parts = path.split("/")
    room = "/".join(parts[:2])
    return room if len(parts) > 2 and room in MAY_INCLUDE else parts[0]


def own_include_fault(folder, name):
    """Why a file of `folder` may not include "name"; None when it may."""
    if "/" not in name:
        return None
    target = folder_of(name)
    if target == "..":
        return "includes are written from src/ on"
    if is_system_header(name) and folder != "platform":
        return "system headers are for platform/"
    if target not in MAY_INCLUDE:
        return None
    if target != folder and target not in MAY_INCLUDE[folder]:
        return f"{folder}/ may not include {target}/"
    return None


def faults_in(folder, text):
    """(line number, line, reason) of each fault in a file of src/<folder>/."""
    lines = text.splitlines()
    for number, line in enumerate(without_comments(text).splitlines(), 1):
        include = INCLUDE.match(line)
        reason = None
        if include and include["own"]:
            reason = own_include_fault(folder, include["own"])
        elif include:
            if folder != "platform" and is_system_header(include["system"]):
                reason = "system headers are for platform/"
        elif folder != "platform":
            name = SYSTEM_NAME.search(STRING.sub('""', line))
            reason = name and f"{name[0]} is for platform/"
        if reason:
            yield number, lines[number - 1], reason


def module_of(path):
    """A header and its source are one module: the path without its suffix."""
    return path.rsplit(".", 1)[0]


def modules_included(path, text):
    """The modules of the tree that a file includes, but for its own."""
    for line in without_comments(text).splitlines():
        include = INCLUDE.match(line)
        if include and include["own"] and "/" in include["own"]:
            module = module_of(include["own"])
            if module != module_of(path):
                yield module


def circles(graph):
    """Lists of modules that include each other in a round, each round once (Tarjan's components)."""
    index, low, stack, found = {}, {}, [], []

    def visit(module):
        index[module] = low[module] = len(index)
        stack.append(module)
        for target in graph.get(module, ()):
            if target not in index:
                visit(target)
                low[module] = min(low[module], low[target])
            elif target in stack:
                low[module] = min(low[module], index[target])
        if low[module] == index[module]:
            round_ = []
            while not round_ or round_[-1] != module:
                round_.append(stack.pop())
            if len(round_) > 1:
                found.append(sorted(round_))

    for module in sorted(graph):
        if module not in index:
            visit(module)
    return found


def check(source):
    """Prints the faults; returns (faults, files)."""
    faults = files = 0
    graph = {}
    for path in sorted(source.rglob("*")):
        place = path.relative_to(source)
        if path.suffix not in SUFFIXES or not path.is_file():
            continue
        files += 1
        folder = folder_of(place.as_posix())
        if folder not in MAY_INCLUDE or len(place.parts) < 2:
            print(f"{path}: lies in no folder of the house")
            faults += 1
            continue
        text = path.read_text(encoding="utf-8", errors="replace")
        for number, line, reason in faults_in(folder, text):
            print(f"{path}:{number}: {reason}: {line.strip()}")
            faults += 1
        included = graph.setdefault(module_of(place.as_posix()), set())
        included.update(modules_included(place.as_posix(), text))
    for round_ in circles(graph):
        print(f"{source}: these include each other: {', '.join(round_)}")
        faults += 1
    return faults, files


# --- self-test ------------------------------------------------------------------------------------

SELF_TEST = [
    # folder, line, is a fault
    ("app", '#include "viewer/viewer_loop.h"', False),
    ("app", '#include "platform/window.h"', False),
    ("app", '#include "viewer/viewer_state.h"', False),
    ("app", '#include "viewer/window/drawing.h"', False),
    ("viewer", '#include "viewer/viewer_state.h"', False),
    ("viewer", '#include "viewer/commands/key_table.h"', False),
    ("viewer/commands", '#include "viewer/viewer_state.h"', True),
    ("viewer/commands", '#include "viewer/playback/player.h"', False),
    ("viewer/commands", '#include "settings/saved_settings.h"', False),
    ("viewer/playback", '#include "viewer/commands/command.h"', True),
    ("viewer/playback", '#include "viewer/picture/picture.h"', False),
    ("viewer/picture", '#include "viewer/playback/player.h"', True),
    ("viewer/picture", '#include "viewer/window/drawing.h"', False),
    ("viewer/picture", '#include "viewer/viewer_session.h"', True),
    ("viewer/window", '#include "viewer/picture/picture.h"', True),
    ("viewer/window", '#include "sequence/sequence_state.h"', True),
    ("viewer/window", '#include "viewer/window/event_queue.h"', False),
    ("viewer/window", '#include "host/font.h"', False),
    ("viewer", '#include "app/run.h"', True),
    ("viewer", '#include "audio/sound.h"', False),
    ("sequence", '#include "viewer/drawing.h"', True),
    ("sequence", '#include "analysis/plane_views.h"', True),
    ("sequence", '#include "audio/sound.h"', True),
    ("sequence", '#include "settings/saved_settings.h"', False),
    ("sequence", '#include "viewer/viewer_state.h"', True),
    ("analysis", '#include "viewer/viewer_state.h"', True),
    ("analysis", '#include "settings/saved_settings.h"', True),
    ("analysis", '#include "iff/frame_store.h"', False),
    ("iff", '#include "audio/sound.h"', True),
    ("iff", '#include "sequence/image_source.h"', True),
    ("iff", '#include "app/command_line.h"', True),
    ("host", '#include "app/command_line.h"', True),
    ("platform", '#include "app/command_line.h"', True),
    ("iff", '  #  include   "iff/result_codes.h"', False),
    ("host", '#include "iff/result_codes.h"', True),
    ("host", '#include "platform/files.h"', False),
    ("platform", '#include "host/tstring.h"', True),
    ("platform", '#include "platform/window.h"', False),
    ("viewer", '#include "../platform/window.h"', True),
    ("viewer", '#include "generated.inc"', False),
    ("viewer", "#include <windows.h>", True),
    ("viewer", "#include <Windows.h>", True),
    ("viewer", "#include <QWidget>", True),
    ("viewer", "#include <QtWidgets/QWidget>", True),
    ("viewer", '#include "X11/Xlib.h"', True),
    ("viewer", "#include <X11/Xlib.h>", True),
    ("audio", "#include <pulse/pulseaudio.h>", True),
    ("sequence", "#include <unistd.h>", True),
    ("sequence", "#include <sys/stat.h>", True),
    ("viewer", "#include <GL/gl.h>", True),
    ("platform", "#include <windows.h>", False),
    ("platform", "#include <QWidget>", False),
    ("platform", "#ifdef _WIN32", False),
    ("host", "#ifdef _WIN32", True),
    ("host", "#if defined(__linux__)", True),
    ("host", "// not with _WIN32 any more", False),
    ("host", "/* #include <windows.h> */", False),
    ("host", 'const char* text = "_WIN32";', False),
    ("host", 'const char* text = "// "; int x = _WIN32;', True),
    ("host", "#include <queue>", False),
    ("host", "#include <vector>", False),
    ("host", "#include <cstdio>", False),
]


def self_test():
    wrong = 0
    for folder, line, is_fault in SELF_TEST:
        if bool(list(faults_in(folder, f"int before;\n{line}\n"))) != is_fault:
            print(f"self-test: src/{folder}/: {line!r} {'passes' if is_fault else 'is refused'}")
            wrong += 1
    with tempfile.TemporaryDirectory() as name:
        source = Path(name)
        for file, text in {
            "iff/deep/a.cpp": '\n#include "viewer/x.h"\n',  # upwards
            "iff/b.h": '#include "host/y.h"\n',
            "attic/c.h": "",  # no folder of the house
            "viewer/window/d.cpp": '#include "viewer/picture/e.h"\n',  # from room to room, upwards
            "host/one.h": '#include "host/two.h"\n',  # a round of three
            "host/two.cpp": '#include "host/three.h"\n',
            "host/three.h": '#include "host/one.h"\n',
        }.items():
            path = source / file
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        with contextlib.redirect_stdout(io.StringIO()):
            counted = check(source)
        if counted != (4, 7):
            print(f"self-test: four faults in seven files are counted as {counted}")
            wrong += 1
    print(f"self-test: {len(SELF_TEST)} lines and one tree, {wrong} wrong")
    return wrong


def main(arguments):
    if arguments == ["--self-test"]:
        return 1 if self_test() else 0
    source = Path(arguments[0]) if arguments else Path(__file__).resolve().parents[1] / "src"
    if not source.is_dir():
        print(f"{source} is no folder")
        return 2
    faults, files = check(source)
    if not files:
        print(f"{source} holds no source files")
        return 2
    print(f"{files} files, {faults} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
