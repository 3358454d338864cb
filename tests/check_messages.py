#!/usr/bin/env python3
"""Checks that the message catalogue and the code agree.

usage: check_messages.py [SOURCE_ROOT]

Every id in the code is in resources/messages.txt and the other way round; ids are written as whole
string literals; the placeholders of a text fit the arguments at each use:
  formatMessage("id", {a, b})                    "^1s" ... "^2s"
  formatPositional(messageText("id"), {a, b})    the same
  formatPrintf(messageText("id").c_str(), a, b)  printf conversions, also through a named text:
  X = messageText("id"); ... formatPrintf(X.c_str(), a, b)
  messageText("id") and ids in tables            no placeholders
Prints what does not agree and exits with 1.
"""
import pathlib
import re
import sys

PREFIX = "s_VistelStrings."
LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
WHOLE_ID = re.compile(r"s_VistelStrings\.rVT[A-Za-z0-9]+")
POSITIONAL = re.compile(r"\^\^|\^(\d+)[sdf]")
CONVERSION = re.compile(r"%%|%[-+ #0]*\d*(?:\.\d+)?(?:hh|h|ll|l|z|j)?[diuxXofeEgGcs]")
FOLDERS = ("src", "tools")


def read_catalogue(path):
    texts, problems = {}, []
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        name, equals, text = line.partition(" =")
        where = f"{path.name}:{number}"
        if not equals or not WHOLE_ID.fullmatch(name):
            problems.append(f"{where}: not a line 'id = text'")
        elif name in texts:
            problems.append(f"{where}: {name} is there twice")
        else:
            texts[name] = text[1:] if text.startswith(" ") else text
    return texts, problems


def without_comments(code):
    """The code with its comments blanked out; literals and line numbers stay."""
    pattern = re.compile(r'"(?:[^"\\\n]|\\.)*"|\'(?:[^\'\\\n]|\\.)*\'|//[^\n]*|/\*.*?\*/', re.S)

    def keep(match):
        text = match.group()
        return text if text[0] in "\"'" else re.sub(r"[^\n]", " ", text)

    return pattern.sub(keep, code)


def matching(code, opening):
    """The position behind the bracket that closes the one at `opening`; literals are skipped."""
    depth, at = 0, opening
    while at < len(code):
        if code[at] in "\"'":
            quote = code[at]
            at += 1
            while at < len(code) and code[at] != quote:
                at += 2 if code[at] == "\\" else 1
        elif code[at] in "([{":
            depth += 1
        elif code[at] in ")]}":
            depth -= 1
            if depth == 0:
                return at + 1
        at += 1
    return len(code)


def arguments(code, opening):
    """The arguments within the brackets that open at `opening`."""
    end = matching(code, opening) - 1
    parts, start, at = [], opening + 1, opening + 1
    while at < end:
        if code[at] in "([{":
            at = matching(code, at)
        elif code[at] in "\"'":
            quote = code[at]
            at += 1
            while at < end and code[at] != quote:
                at += 2 if code[at] == "\\" else 1
            at += 1
        elif code[at] == ",":
            parts.append(code[start:at].strip())
            at += 1
            start = at
        else:
            at += 1
    last = code[start:end].strip()
    return parts + [last] if last else parts


def braced_count(text):
    return len(arguments(text, 0)) if text.startswith("{") else None


def positional_need(text):
    return max((int(n) for n in POSITIONAL.findall(text) if n), default=0)


def conversions(text):
    return [c for c in CONVERSION.findall(text) if c != "%%"]


class Uses:
    """One file's uses of messages: (line, id, kind, number of arguments)."""

    def __init__(self, code):
        self.code = code
        self.found = {}  # position of the literal -> (id, kind, count)
        self.scan_calls("formatMessage", self.format_message)
        self.scan_calls("formatPositional", self.format_positional)
        self.scan_calls("formatPrintf", self.format_printf)

    def scan_calls(self, name, handler):
        for match in re.finditer(rf"\b{name}\s*\(", self.code):
            handler(match.end() - 1, arguments(self.code, match.end() - 1))

    def record(self, near, name, kind, count):
        self.found[self.code.index(f'"{name}"', near)] = (name, kind, count)

    def format_message(self, at, words):
        ids = [i for i in LITERAL.findall(words[0]) if WHOLE_ID.fullmatch(i)] if words else []
        for name in ids:
            self.record(at, name, "positional", braced_count(words[1]) if len(words) > 1 else 0)

    def format_positional(self, at, words):
        inner = re.match(r'messageText\(\s*"([^"]*)"\s*\)', words[0]) if words else None
        if inner and len(words) > 1:
            self.record(at, inner.group(1), "positional", braced_count(words[1]))

    def format_printf(self, at, words):
        if not words:
            return
        inner = re.match(r'messageText\(\s*"([^"]*)"\s*\)\s*\.c_str\(\)', words[0])
        if inner:
            self.record(at, inner.group(1), "printf", len(words) - 1)
            return
        named = re.match(r"(\w+)\s*\.c_str\(\)", words[0])
        if not named:
            return
        pattern = rf'\b{named.group(1)}\s*=\s*messageText\(\s*"([^"]*)"\s*\)'
        for match in list(re.finditer(pattern, self.code[:at]))[-1:]:
            self.record(match.start(), match.group(1), "printf", len(words) - 1)


def check_use(text, kind, count):
    if kind == "printf":
        if POSITIONAL.search(text):
            return "is used as a printf format and has '^' placeholders"
        need = len(conversions(text))
        return None if need == count else f"has {need} conversions for {count} arguments"
    if kind == "positional":
        if count is None:
            return "is used with arguments that are not written as {...}"
        need = positional_need(text)
        return None if need <= count else f"needs {need} arguments and gets {count}"
    return "has placeholders and is used without arguments" if positional_need(text) else None


def check_file(path, shown, texts, used):
    code = without_comments(path.read_text(encoding="utf-8"))
    uses = Uses(code)
    problems = []
    for match in LITERAL.finditer(code):
        literal = match.group(1)
        where = f"{shown}:{code.count(chr(10), 0, match.start()) + 1}"
        if not WHOLE_ID.fullmatch(literal):
            if PREFIX in literal or re.search(r"\brVT[A-Z]", literal):
                problems.append(f'{where}: "{literal}" is a part of a message id')
            continue
        used.add(literal)
        if literal not in texts:
            problems.append(f"{where}: {literal} is not in the catalogue")
            continue
        _, kind, count = uses.found.get(match.start(), (literal, "plain", 0))
        problem = check_use(texts[literal], kind, count)
        if problem:
            problems.append(f"{where}: {literal} {problem}")
    return problems


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else __file__).resolve()
    root = root if root.is_dir() else root.parent.parent
    texts, problems = read_catalogue(root / "resources" / "messages.txt")
    used = set()
    for folder in FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".cpp", ".h", ".inc"):
                problems += check_file(path, path.relative_to(root), texts, used)
    problems += [f"messages.txt: {name} is used nowhere" for name in sorted(set(texts) - used)]
    print("\n".join(problems) if problems else f"{len(texts)} messages, all in use")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
