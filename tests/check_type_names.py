#!/usr/bin/env python3
"""Checks that no two headers of src/, or of src/ and one of the tools, define a type of the same name:
a program that is linked from both, as the fuzz targets' is, would take one of them for the other.
What each system defines for itself (src/platform/SYSTEM/) is met by one program only.

    check_type_names.py               prints both places; exit status 1 when there are any
    check_type_names.py --self-test   proves that it finds what it is there to find
"""

import re
import sys
import tempfile
from collections import defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
SYSTEMS = re.compile(r"src/platform/(win32|linux|headless)/")
DEFINITION = re.compile(r"^(?:enum class|enum|struct|class|union) (\w+)[^;]*$")


def definitions(folders):
    """Where each type is defined: of a header's outermost level, which begins a line."""
    places = defaultdict(list)
    for folder in folders:
        for header in sorted(folder.rglob("*.h")):
            if SYSTEMS.search(header.as_posix()):
                continue
            for number, line in enumerate(header.read_text().splitlines(), 1):
                if found := DEFINITION.match(line):
                    places[found[1]].append(f"{header}:{number}")
    return places


def faults(folders):
    return {
        f"{name} is defined {len(at)} times: {', '.join(at)}"
        for name, at in definitions(folders).items()
        if len(at) > 1
    }


def check():
    programs = [tool for tool in (ROOT / "tools").iterdir() if tool.is_dir()]
    found = set().union(*(faults([ROOT / "src", tool]) for tool in programs))
    print("\n".join(sorted(found)), end="\n" if found else "")
    return 1 if found else 0


def self_test():
    with tempfile.TemporaryDirectory() as folder:
        one, other = Path(folder, "one.h"), Path(folder, "other.h")
        one.write_text("struct Frame;\nstruct Frame {\n    struct Row {};\n};\n")
        other.write_text("struct Frame;\nenum class Row {};\n")
        assert not faults([Path(folder)])
        other.write_text("class Frame : Row {\n};\n")
        assert len(faults([Path(folder)])) == 1
    return 0


if __name__ == "__main__":
    if sys.argv[1:] == ["--self-test"]:
        sys.exit(self_test())
    sys.exit(check())
