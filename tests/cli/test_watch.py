"""The watch folder as a service: what arrives is converted, once, when it is complete."""
import os
import shutil
import signal
import subprocess
import unittest
from contextlib import suppress
from pathlib import Path

from support import CliTest, codecs, look, movie, wait_until


class Watch(CliTest):
    def setUp(self):
        super().setUp()
        (self.folder / "in").mkdir()

    def watch(self, *arguments):
        process = self.start("watch", "--json", *arguments, "in")
        self.assertTrue(wait_until(lambda: self.is_watching(process)), "it does not watch")
        return process

    def is_watching(self, process):
        found = ""
        for info in Path(f"/proc/{process.pid}/fdinfo").glob("*"):
            with suppress(OSError):
                found += info.read_text()
        return "inotify wd:" in found

    def end(self, process, number=signal.SIGTERM):
        process.send_signal(number)
        return self.finish(process)

    def finished(self, process):
        out = os.pread(process.files[0].fileno(), 1 << 24, 0).decode()
        return [line for line in out.splitlines() if '"finished"' in line]

    def test_what_arrives(self):
        source = movie("ac3")
        self.place(source, "in/old.mkv")
        process = self.watch("--to", ".")
        self.place(source, "in/new/a.mkv")
        self.assertTrue(wait_until(lambda: self.finished(process), 40))
        self.assertEqual(["h264", "aac"], codecs(look(self.folder / "a.mp4")))
        result = self.end(process)
        self.assertEqual((143, ["a.mkv"]), (result.status, result.files("finished")))
        self.assertEqual([], result.of("failed", "refused"))
        self.assertFalse(self.settings_file.exists() and "Watchfolder" in self.settings_file.read_text())

    def test_a_failure_is_told_once_and_the_watch_goes_on(self):
        process = self.watch()
        self.place("no movie at all", "in/broken.mkv")
        self.place(movie("ac3"), "in/whole.mkv")
        self.assertTrue(wait_until(lambda: self.finished(process), 40))
        result = self.end(process, signal.SIGINT)
        self.assertEqual(130, result.status)
        self.assertEqual((["broken.mkv"], ["whole.mkv"]), (result.files("refused"), result.files("finished")))
        self.assertEqual(["in/broken.mkv", "in/whole.mkv", "in/whole.mp4"], self.outputs())

    def test_folders_that_cannot_be_watched(self):
        self.place("a file", "file")
        for folder, says in (("none", "there is no folder"), ("file", "is not a folder")):
            result = self.run_cli("watch", folder, status=2)
            self.assertIn(says, result.err)
        process = self.watch()
        (self.folder / "in").rmdir()
        result = self.finish(process)
        self.assertEqual(1, result.status)
        self.assertIn(str(self.folder / "in"), result.err)

    def test_the_unit_is_sound(self):
        unit = Path(__file__).parents[2] / "packaging/systemd/ravelin-watch@.service"
        if not shutil.which("systemd-analyze"):
            self.skipTest("systemd-analyze is not there")
        copy = self.place(unit.read_text().replace("ExecStart=ravelin-cli", "ExecStart=/bin/true"),
                          "ravelin-watch@x.service")
        run = subprocess.run(["systemd-analyze", "verify", "--man=no", "--user", copy], capture_output=True, text=True,
                             env=self.env | {"XDG_RUNTIME_DIR": str(self.folder)})
        self.assertNotIn("ravelin-watch", run.stderr)


if __name__ == "__main__":
    unittest.main()
