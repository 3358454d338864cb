"""Turns resources/image_types.txt into the tables of host/image_plugins.cpp and of the converter.

usage: embed_image_types.py IMAGE_TYPES.TXT TYPES.INC CODECS.INC

Each line of the table is "key | name | extensions | abilities"; blank lines and lines that begin with
"#" are skipped. TYPES.INC gets the rows, CODECS.INC the addresses of the codecs in the same order.
"""
import json
import sys


def read_types(path):
    rows, seen = [], set()
    for number, line in enumerate(open(path, encoding="utf-8"), 1):
        if not line.strip() or line.startswith("#"):
            continue
        fields = [field.strip() for field in line.split("|")]
        where = f"{path}:{number}"
        if len(fields) != 4 or not all(fields):
            sys.exit(f"{where}: not 'key | name | extensions | abilities'")
        key, name, extensions, abilities = fields
        if not set(abilities) <= set("rwm"):
            sys.exit(f"{where}: abilities are r, w and m")
        names = [key, name] + ["." + extension for extension in extensions.split()]
        if len(set(names)) < len(names) - (key == name) or seen & set(names):
            sys.exit(f"{where}: a key, name or extension is there twice")
        seen |= set(names)
        rows.append((key, name, extensions, abilities))
    return rows


if __name__ == "__main__":
    source, types, codecs = sys.argv[1:]
    rows = read_types(source)
    with open(types, "w", encoding="utf-8") as out:
        for key, name, extensions, abilities in rows:
            able = ", ".join("true" if letter in abilities else "false" for letter in "rwm")
            extensions = " ".join(extensions.split())
            out.write(f"    {{{json.dumps(key)}, {json.dumps(name)}, {json.dumps(extensions)}, {able}}},\n")
    with open(codecs, "w", encoding="utf-8") as out:
        for key, *_ in rows:
            out.write(f"    &{key}Codec,\n")
