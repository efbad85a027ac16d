#!/usr/bin/env python3
"""Every text that people read is found by lupdate and looked up: with a made-up language in which each translation stands
in double brackets, windows and the command line show nothing outside of them but names, numbers and codecs."""
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path

SOURCE, BUILD = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
LINGUIST = "/usr/lib/qt6/bin/"
DATA = r"Ctrl\+\S+|F1|#\d: \w+ \(\w+\)|Ravelin|GPL|Qt|MP4|M4V|AA?C3?|[A-Z]{2}-?\d+|UTF-\d+|ISO-\d+-\d+|Vorbis|LATIN\d|CP\d+|\d+k|\w+\.mkv|eng|ger|unk|out|https?:\S+|[/~]\S+"
OPTIONS = (r"--?\w[\w-]*|\b[A-Z]{3,}(=[A-Z]+)?\b|ravelin-cli|"
           r"\b(probe|plan|convert|watch|doctor|settings|list|get|set|unset|path|compatible|fast|custom)\b")


def linguist(program, *arguments):
    return subprocess.run([LINGUIST + program, *map(str, arguments)], check=True, capture_output=True, text=True)


class Translations(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.home = Path(tempfile.mkdtemp(prefix="ravelin-texts-"))
        cls.addClassCleanup(shutil.rmtree, cls.home)
        texts = cls.home / "ravelin_eo.ts"
        cls.lupdate = linguist("lupdate", "-locations", "none", "-extensions", "cpp,h,ui", SOURCE / "src",
                               SOURCE / "resources/interface", "-source-language", "en", "-target-language", "eo", "-ts", texts)
        document = xml.parse(texts)
        cls.sources = {}
        for context in document.iter("context"):
            for message in context.iter("message"):
                source = message.findtext("source")
                cls.sources.setdefault(context.findtext("name"), set()).add(source)
                translation = message.find("translation")
                del translation.attrib["type"]
                for form in translation.findall("numerusform") or [translation]:
                    form.text = f"⟦{source}⟧"
        document.write(texts)
        resources = cls.home / "resources"
        (resources / "translations").mkdir(parents=True)
        for entry in (BUILD / "resources").iterdir():
            if entry.name != "translations":
                (resources / entry.name).symlink_to(entry)
        linguist("lrelease", texts, "-qm", resources / "translations/ravelin_eo.qm")
        cls.environment = {**os.environ, "RAVELIN_RESOURCES": str(resources), "LANGUAGE": "eo", "LANG": "eo.UTF-8",
                           "XDG_CONFIG_HOME": str(cls.home), "XDG_DATA_HOME": str(cls.home)}

    def run_program(self, name, *arguments):
        result = subprocess.run([BUILD / "bin" / name, *map(str, arguments)], env=self.environment, capture_output=True,
                                text=True, timeout=120, stdin=subprocess.DEVNULL)
        return result.stdout, result.stderr

    def left_untranslated(self, text, data):
        """The words outside of the brackets, which may stand within each other."""
        while "⟦" in text:
            text, before = re.sub(r"⟦[^⟦⟧]*⟧", "", text), text
            self.assertNotEqual(text, before, "brackets without end")
        return re.findall(r"[A-Za-z]{2,}", re.sub(data, "", text))

    def test_lupdate_complains_of_nothing(self):
        complaints = [line for line in self.lupdate.stderr.splitlines() if "Qualifying with unknown namespace" not in line]
        self.assertEqual(complaints, [])
        self.assertTrue(any(text.startswith("Movie conversion failed") for text in self.sources["Ravelin"]), "tables")

    def test_windows(self):
        shown = json.loads(self.run_program("texts_probe")[0])
        for text in shown:
            with self.subTest(text):
                self.assertEqual(self.left_untranslated(re.sub(r"<[^>]*>", "", text), DATA), [])
        seen = set(re.findall(r"⟦([^⟦⟧]*)⟧", "\n".join(shown)))
        for context in ("Preferences", "Container", "MainWindow", "AddSheetView"):
            for name in filter(lambda name: name.startswith(context), self.sources):
                with self.subTest(name):
                    patterns = [re.escape(text).replace(r"%n", ".*").replace("%1", ".*") for text in self.sources[name]]
                    unseen = [text for text in patterns if not any(re.fullmatch(text, each, re.S) for each in seen)
                              and not re.match(r"Ctrl|F1", text)]
                    self.assertLess(len(unseen), 0.1 * len(patterns) + 2, unseen)

    def test_command_line(self):
        movie = self.home / "1.mkv"
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc=d=1", "-f", "lavfi", "-i", "sine=d=1", movie],
                       check=True)
        for arguments in (["--help"], ["plan", "--help"], ["convert", "--help"], ["settings", "--help"], ["probe", movie],
                          ["plan", movie], ["convert", movie], ["convert", "--audio", 7, movie], ["probe", "/nowhere"],
                          ["watch", "/nowhere"], ["convert", "/tmp/x"], ["convert", "--output", "a", "b"],
                          ["settings", "get", "Nonsense"], ["settings", "set", "AutoAdd", "x"]):
            for line in "\n".join(self.run_program("ravelin-cli", *arguments)).splitlines():
                with self.subTest(arguments=arguments, line=line):
                    self.assertEqual(self.left_untranslated(line, DATA + "|" + OPTIONS), [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
