"""The pages that the application shows of itself: whole, self-contained, and with help for every message.

test_documents.py SOURCE_DIR CMAKE_BUILD_DIR
"""
import re
import sys
import unittest
import xml.etree.ElementTree as xml
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import urlsplit

SOURCE, BUILD = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
DOCUMENTS = BUILD / "resources/documents"  # As the application finds them.
EMPTY = {"meta", "link", "img", "br", "source"}
LOADING = {("link", "href"), ("img", "src"), ("source", "srcset")}

# Where messages are made for the user. Everywhere else only what is handed to an alert is one.
TELLING = ["app/**/*.cpp", "convert/*.cpp", "probe/Verdicts.cpp", "tool/Tool.cpp", "support/store/FolderAccess.cpp",
           "support/store/SettingsStore.cpp", "watch/**/*.cpp", "cli/Inputs.cpp", "cli/ConvertCommand.cpp"]
# A mail to support, what the desktop is told, lines of the log, words of the tool and of its loader, names of services and files.
NOT_SHOWN = re.compile(r"Hello\\n|mailto:|Converting MKV file|%1 converts movies, or waits|CJ %p|Info: |Error: |"
                       r"Error creating bookmark|scale=|error while loading|org\.freedesktop\.|/\.")


class Page(HTMLParser):
    """One page: what is wrong with its tags, its links, ids and images, and the texts of marked elements."""

    def __init__(self, path):
        super().__init__()
        self.open, self.faults, self.tags, self.ids, self.texts = [], [], [], [], []
        self.feed(path.read_text())
        self.faults += [f"{tag} is never closed" for tag, _ in self.open]

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        self.tags.append((tag, attributes))
        if "id" in attributes:
            self.ids.append(attributes["id"])
        if tag not in EMPTY:
            self.open.append((tag, attributes))

    def handle_endtag(self, tag):
        if not self.open or self.open.pop()[0] != tag:
            self.faults.append(f"</{tag}> at {self.getpos()}")

    def handle_data(self, data):
        self.texts.append((list(self.open), data))

    def each(self, marked):
        """The texts of the elements for which `marked(tag, attributes)` holds, white space made blanks."""
        found = {}
        for stack, data in self.texts:
            for tag, attributes in stack:
                if marked(tag, attributes):
                    found[id(attributes)] = found.get(id(attributes), "") + data
        return [" ".join(text.split()) for text in found.values()]


PAGES = {path.name: Page(path) for path in sorted(DOCUMENTS.glob("*.html"))}


class Pages(unittest.TestCase):
    def test_all_are_there(self):
        self.assertEqual(set(PAGES), {f"{name}.html" for name in
                                      "quick-start audio-and-players subtitles troubleshooting whats-new".split()})
        self.assertTrue((DOCUMENTS / "licences.rtf").read_text("cp1252").startswith(r"{\rtf1\ansi\ansicpg1252"))

    def test_tags_and_headings(self):
        for name, page in PAGES.items():
            with self.subTest(name):
                self.assertEqual(page.faults, [])
                self.assertEqual(len(page.ids), len(set(page.ids)))
                self.assertIn(("html", {"lang": "en"}), page.tags)
                levels = [int(tag[1]) for tag, _ in page.tags if re.fullmatch("h[1-6]", tag)]
                self.assertEqual((levels[0], levels.count(1)), (1, 1))
                self.assertTrue(all(b <= a + 1 for a, b in zip(levels, levels[1:])), levels)

    def test_links_lead_somewhere(self):
        for name, page in PAGES.items():
            for tag, attributes in page.tags:
                for key in ("href", "src", "srcset"):
                    address = urlsplit(attributes.get(key, name))
                    if address.scheme and (tag, key) not in LOADING:
                        continue  # To be clicked.
                    with self.subTest(page=name, link=attributes.get(key)):
                        self.assertFalse(address.scheme or address.netloc, "is loaded from elsewhere")
                        target = address.path or name
                        self.assertTrue((DOCUMENTS / target).is_file())
                        if address.fragment:
                            self.assertIn(address.fragment, PAGES[target].ids)

    def test_pictures(self):
        shown = [(tag, attributes) for page in PAGES.values() for tag, attributes in page.tags if tag in ("img", "source")]
        there = {f"images/{path.name}": path.stat().st_size for path in (DOCUMENTS / "images").iterdir()}
        self.assertEqual({attributes.get("src") or attributes["srcset"] for _, attributes in shown}, set(there))
        self.assertLess(max(there.values()), 80_000)
        self.assertEqual([attributes for tag, attributes in shown if tag == "img" and not attributes["alt"]], [])

    def test_nothing_runs_or_is_fetched(self):
        for name, page in PAGES.items():
            with self.subTest(name):
                self.assertFalse({tag for tag, _ in page.tags} & {"script", "iframe", "object", "embed", "base"})
                self.assertEqual([key for _, a in page.tags for key in a if key.startswith("on") or key == "style"], [])
        for path in [DOCUMENTS / "style.css", *(DOCUMENTS / "images").glob("*.svg")]:
            with self.subTest(path.name):
                self.assertNotRegex(path.read_text(), r"@import|url\(|<script|href=")


class Help(unittest.TestCase):
    def test_every_shortcut_is_told(self):
        keys = {shortcut.findtext("string") for path in (SOURCE / "resources/interface").glob("*.ui")
                for shortcut in xml.parse(path).iterfind(".//action/property[@name='shortcut']")}
        told = {text for stack, text in PAGES["quick-start.html"].texts
                if stack and stack[-1][0] == "kbd" and ("table", {"id": "shortcuts"}) in stack}
        self.assertEqual(told, keys)

    def test_every_message_is_explained(self):
        page = PAGES["troubleshooting.html"]
        said = page.each(lambda _, attributes: attributes.get("class") == "said")
        prose = page.each(lambda tag, attributes: tag in ("h3", "p", "dd") and attributes.get("class") != "said")
        messages = all_messages()
        self.assertGreater(len(messages), 60)
        for message, where in messages.items():
            with self.subTest(message=message, where=where):
                shown = pattern(message)
                self.assertTrue(any(map(shown.fullmatch, said)) or any(map(shown.search, prose)), "no help for it")

    def test_every_explanation_is_whole(self):
        page = PAGES["troubleshooting.html"]
        for tag, attributes in page.tags:
            if attributes.get("class") != "message":
                continue
            with self.subTest(attributes["id"]):
                inside = [stack[stack.index((tag, attributes)) + 1:] for stack, text in page.texts
                          if (tag, attributes) in stack and text.strip()]
                parts = {(name, id(of)) for stack in inside for name, of in stack}
                names = [name for name, _ in parts]
                self.assertEqual([names.count(name) for name in ("h3", "dt", "dd")], [1, 2, 2])
                self.assertIn("said", [of.get("class") for stack in inside for _, of in stack])


def pattern(message):
    """What the page shows of a message: anything stands where a name or a number goes."""
    blanks = " ".join(re.sub(r"\\n", " ", message).replace(r"\"", '"').split())
    parts = re.split(r"%(?:@|l?[iu]|\d|n)|\[[A-Z_]+\]", blanks.replace("%%", "%").replace("(s)", "s"))
    return re.compile(".+".join(re.escape(part) for part in parts))


TOKENS = re.compile(r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"((?:[^"\\\n]|\\.)*)"|\'(?:[^\'\\]|\\.)+\'|\w+|\s+|.', re.S)


def literals(source):
    """Its strings, adjacent ones joined, each with whether it is an argument of an alert and of the log."""
    text, calls, word = None, [], ""
    for token in TOKENS.finditer(source + ";"):
        if token[2] is not None:
            text = (text or "") + token[2]
        elif not token[0].isspace() and not token[0].startswith(("//", "/*")):
            if text is not None:
                yield text, any(re.match("alert", call) for call in calls), any(re.match("(qn_)?log", c) for c in calls)
            text = None
            if token[0] == "(":
                calls.append(word)
            elif token[0] == ")" and calls:
                calls.pop()
            word = token[0]


def all_messages():
    """Every sentence that the program may say of a trouble: the message, and the file it is from."""
    telling = {path for glob in TELLING for path in (SOURCE / "src").glob(glob)}
    found = {}
    for path in sorted((SOURCE / "src").rglob("*.cpp")):
        for text, alerted, logged in literals(re.sub(r"(?m)^#include.*", "", path.read_text())):
            is_sentence = " " in text and len(re.findall(r"[A-Za-z']{2,}", text)) > 2 and re.search(r"[.?!:]", text)
            if is_sentence and not NOT_SHOWN.match(text) and (alerted or path in telling and not logged):
                found[text] = str(path.relative_to(SOURCE))
    return found


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
