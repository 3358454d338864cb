#!/usr/bin/env python3
"""Checks the help pages in docs/ext/VisTel: their tables are up to date, every key and option is
explained, the menu opens pages that are there, links and pictures lead somewhere, and what is opened
is closed.

    check_help_pages.py               prints what is wrong; exit status 1 when anything is
    check_help_pages.py --self-test   proves that it finds what it is there to find
"""
import re
import sys
import tempfile
from html.parser import HTMLParser
from importlib.machinery import SourceFileLoader
from importlib.util import module_from_spec, spec_from_loader
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
MENU = ROOT / "src" / "viewer" / "commands" / "menu_commands.cpp"
STYLE = "style.css"
EMPTY = {"br", "hr", "img", "link", "meta"}
MOUSE = "button"  # keys whose name tells that they belong to the mouse
KEYBOARD_PAGE, MOUSE_PAGE, OPTIONS_PAGE = "VisTel21.html", "VisTel29.html", "VisTel20.html"


def load_generator():
    loader = SourceFileLoader("help_pages", str(ROOT / "scripts" / "help_pages"))
    module = module_from_spec(spec_from_loader("help_pages", loader))
    sys.dont_write_bytecode = True
    loader.exec_module(module)
    return module


class Page(HTMLParser):
    """What a page opens and closes, and where it leads."""

    def __init__(self, text):
        super().__init__()
        self.links, self.anchors, self.faults, self.open = [], set(), [], []
        self.feed(text)
        self.faults += [f"<{tag}> is not closed" for tag, _ in self.open]

    def fault(self, what):
        self.faults.append(f"line {self.getpos()[0]}: {what}")

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        if tag not in EMPTY:
            self.open.append((tag, self.getpos()[0]))
        if "id" in values:
            self.anchors.add(values["id"])
        for name in ("href", "src"):
            if name in values:
                self.links.append((self.getpos()[0], values[name]))
        if tag == "img" and not values.get("alt"):
            self.fault("a picture without a text in its place")

    def handle_endtag(self, tag):
        if self.open and self.open[-1][0] == tag:
            self.open.pop()
        else:
            self.fault(f"</{tag}> closes nothing")


def link_faults(folder, pages):
    for name, page in pages.items():
        for line, link in page.links:
            target, _, anchor = link.partition("#")
            if ":" in target or target.startswith("/"):
                yield f"{name}: line {line}: {link} leads out of the folder"
            elif target and not (folder / target).is_file():
                yield f"{name}: line {line}: {link} is not there"
            elif anchor and anchor not in pages[target or name].anchors:
                yield f"{name}: line {line}: no place #{anchor} in {target or name}"


def files_without_a_link(folder, pages):
    linked = {link.partition("#")[0] for page in pages.values() for _, link in page.links}
    for path in sorted(folder.rglob("*")):
        name = path.relative_to(folder).as_posix()
        if path.is_file() and name not in linked:
            yield f"{name}: no page leads to it"


def coverage_faults(generator, tables, texts):
    """Every key stands on the page of the keyboard or of the mouse, every option on its own, once."""
    def listed(page, wanted):
        for kind, words in generator.regions(texts[page]):
            if kind == wanted:
                separator = " | " if wanted == "keys" else None
                yield from (word.strip() for word in words.split(separator))

    mouse = [key for key in tables.keys if MOUSE in key]
    keyboard = [key for key in tables.keys if MOUSE not in key]
    for page, kind, names in (
        (KEYBOARD_PAGE, "keys", keyboard),
        (MOUSE_PAGE, "keys", mouse),
        (OPTIONS_PAGE, "options", list(tables.options)),
    ):
        there = list(listed(page, kind))
        for name in names:
            if there.count(name) != 1:
                yield f"{page}: {name} is there {there.count(name)} times"


def menu_faults(pages, menu):
    """The menu's pages are those that there are."""
    opened = {f"VisTel{number}.html" for number in re.findall(r"openHelpPage, +(\d+)}", menu)}
    for name in sorted(opened ^ set(pages)):
        yield f"{name}: " + ("the menu opens it, it is not there" if name in opened else "no menu item opens it")


def faults(folder, generator, tables, menu):
    missing = [name for name in (*generator.PAGES, STYLE) if not (folder / name).is_file()]
    if missing:
        return [f"{name} is missing" for name in missing]
    texts = {path.name: path.read_text(encoding="utf-8") for path in sorted(folder.glob("*.html"))}
    pages = {name: Page(text) for name, text in texts.items()}
    found = [f"{path.name} is not up to date: run scripts/help_pages" for path, _ in generator.stale(tables, folder)]
    found += [f"{name}: {fault}" for name, page in pages.items() for fault in page.faults]
    found += link_faults(folder, pages)
    found += files_without_a_link(folder, pages)
    found += coverage_faults(generator, tables, texts)
    found += menu_faults(pages, menu)
    return found


# Replaced in one page each, and what must then be found.
SPOILT = [
    ("VisTel13.html", 'href="VisTel23.html"', 'href="VisTel24.html"', "VisTel24.html is not there"),
    ("VisTel13.html", 'href="VisTel20.html"', 'href="VisTel20.html#no"', "no place #no"),
    ("VisTel22.html", 'src="pictures/', 'src="picture/', "is not there"),
    ("VisTel22.html", 'src="pictures/mask', 'src="pictures/depth', "pictures/mask.png: no page leads"),
    ("VisTel22.html", ' alt="', ' title="', "without a text"),
    ("VisTel16.html", "<ol>", "", "</ol> closes nothing"),
    ("VisTel16.html", "</main>", "", "</body> closes nothing"),
    ("VisTel21.html", "<kbd>Space</kbd>", "<kbd>Blank</kbd>", "VisTel21.html is not up to date"),
    ("VisTel21.html", "Space | ", "", "VisTel21.html: Space is there 0 times"),
    ("VisTel20.html", "options h D", "options h h D", "VisTel20.html: h is there 2 times"),
    ("VisTel29.html", 'href="style.css"', 'href="http://a/b.css"', "leads out of the folder"),
]


def self_test(generator, tables):
    menu, failures = MENU.read_text(encoding="utf-8"), []
    source = generator.FOLDER
    for name, old, new, expected in SPOILT:
        with tempfile.TemporaryDirectory() as copy:
            folder = Path(copy)
            for path in source.rglob("*"):
                if path.is_file():
                    (folder / path.relative_to(source)).parent.mkdir(exist_ok=True)
                    (folder / path.relative_to(source)).write_bytes(path.read_bytes())
            text = (folder / name).read_text(encoding="utf-8")
            assert old in text, f"{name} has no {old}"
            (folder / name).write_text(text.replace(old, new), encoding="utf-8")
            if not any(expected in fault for fault in faults(folder, generator, tables, menu)):
                failures.append(f"{name} with {new!r}: nothing found like {expected!r}")
    wrong_menu = re.sub(r"(openHelpPage, +)13}", r"\g<1>14}", menu)
    told = " ".join(faults(source, generator, tables, wrong_menu))
    if "VisTel14.html: the menu opens it" not in told or "VisTel13.html: no menu item" not in told:
        failures.append("a menu item with a wrong page is not found")
    return failures


def main():
    generator = load_generator()
    tables = generator.Tables()
    if "--self-test" in sys.argv[1:]:
        found, good = self_test(generator, tables), f"{len(SPOILT) + 1} faults, all found"
    else:
        menu = MENU.read_text(encoding="utf-8")
        found = faults(generator.FOLDER, generator, tables, menu)
        good = f"{len(generator.PAGES)} help pages, all up to date"
    print("\n".join(found) if found else good)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
