"""Turns resources/messages.txt into the enumerators and the table of host/messages.

usage: embed_messages.py MESSAGES.TXT IDS.INC TABLE.INC

Each line of the catalogue is "s_VistelStrings.NAME = text"; "\\n", "\\t" and "\\\\" in a text are
escapes, blank lines and lines that begin with "#" are skipped. Both outputs are sorted by name: the
enumerators NAME, and a row of enumerator, id and text for each. An output that would not change is
not written, so that a new text compiles the table alone and a new name all who know the names.
"""
import json
import pathlib
import re
import sys

ID = re.compile(r"s_VistelStrings\.(rVT[A-Za-z0-9]+)")


def read_catalogue(path):
    """Texts by name."""
    rows = {}
    for number, line in enumerate(open(path, encoding="utf-8"), 1):
        line = line.rstrip("\n")
        if not line.strip() or line.startswith("#"):
            continue
        name, equals, text = line.partition(" =")
        if not equals:
            sys.exit(f"{path}:{number}: no ' =' in the line")
        found = ID.fullmatch(name)
        if not found:
            sys.exit(f"{path}:{number}: {name} is no message id")
        if found[1] in rows:
            sys.exit(f"{path}:{number}: {name} is there twice")
        text = text[1:] if text.startswith(" ") else text
        rows[found[1]] = text.replace("\\\\", "\0").replace("\\n", "\n").replace("\\t", "\t").replace("\0", "\\")
    return rows


def c_literal(text):
    quoted = json.dumps(text, ensure_ascii=False)
    return quoted.replace("??", "?\\?")


def table_row(name, text):
    return f'    {{Message::{name}, "s_VistelStrings.{name}", {c_literal(text)}}},\n'


def write_when_changed(path, content):
    path = pathlib.Path(path)
    if not path.exists() or path.read_text(encoding="utf-8") != content:
        path.write_text(content, encoding="utf-8")


if __name__ == "__main__":
    rows = read_catalogue(sys.argv[1])
    write_when_changed(sys.argv[2], "".join(f"    {name},\n" for name in sorted(rows)))
    write_when_changed(sys.argv[3], "".join(table_row(name, rows[name]) for name in sorted(rows)))
