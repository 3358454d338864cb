#!/usr/bin/env python3
"""Checks that the message catalogue and the code agree.

usage: check_messages.py [SOURCE_ROOT]

Every message in the code (Message::rVTName) is in resources/messages.txt and the other way round;
the placeholders of a text fit the arguments at each use, M standing for a message:
  formatMessage(M, {a, b})                     "^1s" ... "^2s"
  formatPositional(messageText(M), {a, b})     the same
  formatPrintf(messageText(M).c_str(), a, b)   printf conversions, also through a named text:
  X = messageText(M); ... formatPrintf(X.c_str(), a, b)
  messageText(M) and messages in tables        no placeholders
Prints what does not agree and exits with 1.
"""
import pathlib
import re
import sys

PREFIX = "s_VistelStrings."
LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
ID = re.compile(r"s_VistelStrings\.(rVT[A-Za-z0-9]+)")
MESSAGE = r"\bMessage::(rVT\w+)"
USE = re.compile(MESSAGE)
TEXT = rf"messageText\(\s*{MESSAGE}\s*\)"
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
        found = ID.fullmatch(name)
        if not equals or not found:
            problems.append(f"{where}: not a line 'id = text'")
        elif found[1] in texts:
            problems.append(f"{where}: {name} is there twice")
        else:
            texts[found[1]] = text[1:] if text.startswith(" ") else text
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
    """One file's uses of messages with arguments."""

    def __init__(self, code):
        self.code = code
        self.found = {}  # position of the name -> (kind, number of arguments)
        self.scan_calls("formatMessage", self.format_message)
        self.scan_calls("formatPositional", self.format_positional)
        self.scan_calls("formatPrintf", self.format_printf)

    def scan_calls(self, name, handler):
        for match in re.finditer(rf"\b{name}\s*\(", self.code):
            handler(match.end() - 1, arguments(self.code, match.end() - 1))

    def record(self, near, name, kind, count):
        found = re.compile(rf"\bMessage::{name}\b").search(self.code, near)
        self.found[found.start()] = (kind, count)

    def format_message(self, at, words):
        for name in USE.findall(words[0]) if words else []:
            self.record(at, name, "positional", braced_count(words[1]) if len(words) > 1 else 0)

    def format_positional(self, at, words):
        inner = re.match(TEXT, words[0]) if words else None
        if inner and len(words) > 1:
            self.record(at, inner.group(1), "positional", braced_count(words[1]))

    def format_printf(self, at, words):
        if not words:
            return
        inner = re.match(rf"{TEXT}\s*\.c_str\(\)", words[0])
        if inner:
            self.record(at, inner.group(1), "printf", len(words) - 1)
            return
        named = re.match(r"(\w+)\s*\.c_str\(\)", words[0])
        if not named:
            return
        pattern = rf"\b{named.group(1)}\s*=\s*{TEXT}"
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

    def complain(match, what):
        problems.append(f"{shown}:{code.count(chr(10), 0, match.start()) + 1}: {what}")

    for match in LITERAL.finditer(code):
        if PREFIX in match[1] or re.search(r"\brVT[A-Z]", match[1]):
            complain(match, f"{match[0]} is a message written as a text")
    for match in USE.finditer(code):
        name = match[1]
        used.add(name)
        if name not in texts:
            complain(match, f"{name} is not in the catalogue")
            continue
        problem = check_use(texts[name], *uses.found.get(match.start(), ("plain", 0)))
        if problem:
            complain(match, f"{name} {problem}")
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
