"""Turns resources/messages.txt into the table of host/messages.cpp.

usage: embed_messages.py MESSAGES.TXT OUTPUT.INC

Each line of the catalogue is "id = text"; "\\n", "\\t" and "\\\\" in a text are escapes, blank lines
and lines that begin with "#" are skipped. The table is sorted by id.
"""
import json
import sys


def read_catalogue(path):
    rows = {}
    for number, line in enumerate(open(path, encoding="utf-8"), 1):
        line = line.rstrip("\n")
        if not line.strip() or line.startswith("#"):
            continue
        name, equals, text = line.partition(" =")
        if not equals:
            sys.exit(f"{path}:{number}: no ' =' in the line")
        if name in rows:
            sys.exit(f"{path}:{number}: {name} is there twice")
        text = text[1:] if text.startswith(" ") else text
        rows[name] = text.replace("\\\\", "\0").replace("\\n", "\n").replace("\\t", "\t").replace("\0", "\\")
    return rows


def c_literal(text):
    quoted = json.dumps(text, ensure_ascii=False)
    return quoted.replace("??", "?\\?")


if __name__ == "__main__":
    rows = read_catalogue(sys.argv[1])
    with open(sys.argv[2], "w", encoding="utf-8") as out:
        for name in sorted(rows):
            out.write(f"    {{{c_literal(name)}, {c_literal(rows[name])}}},\n")
