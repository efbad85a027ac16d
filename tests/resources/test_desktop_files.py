"""The files by which a desktop finds, shows and starts the application, as they are installed, and the drawings.

test_desktop_files.py SOURCE_DIR CMAKE_BUILD_DIR
"""
import configparser
import email.utils
import json
import re
import struct
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path

SOURCE, BUILD = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
ICONS = SOURCE / "resources/icons"
INFO = json.loads((SOURCE / "resources/Info.json").read_text())
ID = INFO["CFBundleIdentifier"]
# What the application accepts, and the type by which a file manager knows it.
TYPES = {"mkv": "video/x-matroska", "mp4": "video/mp4", "mov": "video/quicktime", "ogm": "video/x-ogm+ogg",
         "wmv": "video/x-ms-wmv", "mpg": "video/mpeg", "flv": "video/x-flv", "webm": "video/webm", "ts": "video/mp2t",
         "avi": "video/x-msvideo"}
SYMBOLIC = set("""add toolbar_pause toolbar_start clean preferences state-queued state-converting state-paused state-finished
    state-failed job-pause job-continue job-remove job-reveal job-explain job-more page-general page-audio page-subtitles
    page-destinations page-watchfolder page-advanced busy mood-happy mood-unsure mood-problem icon-appstore icon-macupdate
    icon-alternativeto icon-filehorse remove track-left-out track-picture state-damaged""".split())
# What the renderer knows: it draws nothing for the rest, and says nothing.
ELEMENTS = {"svg", "g", "title", "path", "circle", "rect", "line", "polyline"}


def keyfile(path):
    parser = configparser.ConfigParser(interpolation=None, strict=True)
    parser.optionxform = str
    parser.read_string(path.read_text())
    return parser


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="ravelin-installed-")
        cls.addClassCleanup(folder.cleanup)
        subprocess.run(["cmake", "--install", BUILD, "--prefix", folder.name], check=True, capture_output=True)
        cls.share = Path(folder.name) / "share"
        cls.desktop_path = cls.share / f"applications/{ID}.desktop"
        cls.metainfo_path = cls.share / f"metainfo/{ID}.metainfo.xml"
        cls.desktop = keyfile(cls.desktop_path)["Desktop Entry"]
        cls.metainfo = xml.parse(cls.metainfo_path).getroot()

    def test_validators_are_content(self):
        for command in (["desktop-file-validate", self.desktop_path],
                        ["appstreamcli", "validate", "--no-net", self.metainfo_path]):
            with self.subTest(command[0]):
                run = subprocess.run(command, capture_output=True, text=True)
                self.assertEqual(run.returncode, 0, run.stdout + run.stderr)

    def test_one_identifier(self):
        service = keyfile(self.share / f"dbus-1/services/{ID}.service")["D-BUS Service"]
        self.assertEqual(service["Name"], ID)
        self.assertRegex(service["Exec"], r"^/.*/bin/ravelin( |$)")
        self.assertEqual(self.desktop["Icon"], ID)
        self.assertEqual(self.metainfo.findtext("id"), ID)
        self.assertEqual(self.metainfo.findtext("launchable"), ID + ".desktop")
        self.assertEqual(self.metainfo.findtext("url[@type='homepage']"), INFO["VendorProductPage"])

    def test_newest_release_is_this_one(self):
        release = self.metainfo.find("releases/release")
        changelog = (SOURCE / "debian/changelog").read_text()
        packaged = email.utils.parsedate_to_datetime(re.search(r"^ -- .*>  (.*)$", changelog, re.M)[1])
        for version, date in ((release.get("version"), release.get("date")),
                              (re.match(r"ravelin \((.*)\)", changelog)[1], str(packaged.date()))):
            self.assertEqual((version, date), (INFO["CFBundleShortVersionString"], release.get("date")))

    def test_screenshots_are_those_of_the_documentation(self):
        images = list(self.metainfo.iter("image"))
        self.assertTrue(images)
        for image in images:
            name = image.text.rsplit("/", 1)[1]
            size = int(image.get("width")), int(image.get("height"))
            self.assertEqual(png_size(SOURCE / "docs/images" / name), size, name)

    def test_every_accepted_movie_opens(self):
        opened = set(self.desktop["MimeType"].strip(";").split(";"))
        provided = {node.text for node in self.metainfo.iter("mediatype")}
        self.assertLessEqual(set(TYPES.values()), opened)
        self.assertEqual(opened, provided)

    def test_icons(self):
        theme = self.share / "icons/hicolor"
        self.assertTrue((theme / f"scalable/apps/{ID}.svg").is_file())
        for size in (16, 22, 24, 32, 48, 64, 128, 256):
            self.assertEqual(png_size(theme / f"{size}x{size}/apps/{ID}.png"), (size, size))


class Flatpak(unittest.TestCase):
    def setUp(self):
        self.folder = SOURCE / "packaging/flatpak"
        self.manifest = json.loads((self.folder / f"{ID}.json").read_text())

    def test_it_is_ours_and_reaches_no_files(self):
        self.assertEqual(self.manifest["id"], ID)
        self.assertEqual(self.manifest["command"], keyfile(SOURCE / f"resources/desktop/{ID}.desktop")["Desktop Entry"]["Exec"].split()[0])
        permissions = {argument.split("=")[0] for argument in self.manifest["finish-args"]}
        self.assertLessEqual(permissions, {"--socket", "--share", "--device"})
        self.assertNotIn("--device=all", self.manifest["finish-args"])

    def test_sources_are_there_and_verified(self):
        for module in self.manifest["modules"]:
            for source in module["sources"]:
                with self.subTest(module["name"], source=source.get("url") or source.get("path")):
                    if source["type"] == "dir":
                        self.assertTrue((self.folder / source["path"] / "CMakeLists.txt").is_file() or source.get("dest"))
                        self.assertTrue((self.folder / source["path"]).is_dir())
                    else:
                        self.assertEqual(source["type"], "archive")
                        self.assertRegex(source["url"], "^https://")
                        self.assertRegex(source["sha256"], "^[0-9a-f]{64}$")


def png_size(path):
    header = path.read_bytes()[:24]
    return struct.unpack(">II", header[16:24]) if header.startswith(b"\x89PNG\r\n\x1a\n") else None


class Drawings(unittest.TestCase):
    def test_every_symbolic_icon_is_there(self):
        self.assertEqual({path.stem for path in (ICONS / "symbolic").glob("*.svg")}, SYMBOLIC)

    def test_they_follow_the_palette(self):
        for path in [*(ICONS / "symbolic").glob("*.svg"), ICONS / "drop-movies.svg"]:
            accent = {"accentColor"} if path.stem == "drop-movies" or path.stem.startswith("mood-") else set()
            with self.subTest(path.name):
                nodes = list(xml.parse(path).iter())
                self.assertLessEqual({re.sub("{.*}", "", node.tag) for node in nodes}, ELEMENTS)
                colours = {node.get(key) for node in nodes for key in ("fill", "stroke", "color", "style")} - {None}
                self.assertLessEqual(colours, {"currentColor", "none"} | accent)
                self.assertIn("currentColor", colours)

    def test_the_notice_has_its_mark(self):
        self.assertEqual([png_size(ICONS / name) for name in ("ok.png", "ok@2x.png")], [(64, 64), (128, 128)])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
