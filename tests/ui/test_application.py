"""The real window program with the real tool, started as users start it, on a display of its own.

test_application.py RAVELIN
"""
import json
import os
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from processes import LIMIT, start_bus, wait_until

PROGRAM = Path(sys.argv.pop(1)).resolve()


class Home:
    """A user with settings, folders and movies, and nothing else of this machine."""

    def __init__(self, test):
        test.addCleanup(self.close)
        self.folder = tempfile.TemporaryDirectory(prefix="ravelin-window-")
        self.path = Path(self.folder.name)
        self.out = self.path / "out"
        self.out.mkdir()
        self.running = []
        runtime = self.path / "run"
        runtime.mkdir(mode=0o700)
        self.environment = {"PATH": os.environ["PATH"], "HOME": str(self.path), "LANG": "C.UTF-8",
                            "XDG_CONFIG_HOME": str(self.path / "config"), "XDG_DATA_HOME": str(self.path / "data"),
                            "XDG_RUNTIME_DIR": str(runtime), "QT_QPA_PLATFORM": "offscreen"}
        for name in os.environ:
            if name.endswith("SAN_OPTIONS"):
                self.environment[name] = os.environ[name]

    def close(self):
        for process in self.running:
            process.kill()
            process.wait()
        self.folder.cleanup()

    def settings(self, **values):
        file = self.path / "config/example.ravelin.Ravelin/settings.json"
        cli = PROGRAM.with_name("ravelin-cli")
        values = {"HasUpgradedFromPre13": 1, "DestinationBookmarks": json.dumps([str(self.out)]),
                  "DestinationNames": json.dumps(["out"]), "DefaultDestination": 3, "AutoAdd": 1,
                  "ShowPosters": 0, **values}  # The stand-in tools take no posters.
        for key, value in values.items():
            subprocess.run([cli, "settings", "set", key, str(value)], env=self.environment, check=True,
                           stdout=subprocess.DEVNULL)
        return file

    def movie(self, name, seconds=2):
        path = self.path / name
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"testsrc2=s=160x120:r=10:d={seconds}",
                        "-f", "lavfi", "-i", f"sine=d={seconds}", "-c:v", "mpeg4", "-c:a", "ac3", "-y", path],
                       check=True)
        return path

    def start(self, *arguments):
        process = subprocess.Popen([PROGRAM, *map(str, arguments)], env=self.environment)
        self.running.append(process)
        return process

    def has_output(self, name):
        """A whole one: a movie that is being written has no index yet."""
        path = self.out / name
        return path.exists() and subprocess.run(["ffmpeg", "-v", "error", "-i", path, "-f", "null", "-"],
                                                capture_output=True).returncode == 0

    def tools(self):
        found = subprocess.run(["pgrep", "-f", str(self.path)], capture_output=True, text=True).stdout.split()
        own = {str(process.pid) for process in self.running}
        return [pid for pid in found if pid not in own]


class Application(unittest.TestCase):
    def test_a_second_start_hands_its_files_over(self):
        for bus in (True, False):
            with self.subTest(bus=bus):
                home = Home(self)
                if bus:
                    home.environment["DBUS_SESSION_BUS_ADDRESS"] = start_bus(self)
                home.settings()
                first = home.start(home.movie("ä first #1.mkv"))
                wait_until(lambda: home.has_output("ä first #1.mp4"), "the first movie")
                second = home.start(home.movie("second.mkv").as_uri(), home.movie("third one.mkv"))
                self.assertEqual(second.wait(LIMIT), 0)
                wait_until(lambda: home.has_output("second.mp4") and home.has_output("third one.mp4"), "the others")
                first.send_signal(signal.SIGTERM)
                self.assertEqual(first.wait(LIMIT), 0)

    def test_what_ends_it_leaves_nothing_half_written(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number):
                home = Home(self)
                home.settings()
                # A tool that is never done with what it writes.
                slow = home.path / "resources"
                slow.mkdir()
                tool = slow / "ffmpeg"
                tool.write_text('#!/bin/sh\n[ $# -eq 2 ] && exec ffmpeg "$@"\n'
                                'for last; do :; done\necho half > "$last"\nwhile :; do sleep 0.1; done\n')
                tool.chmod(0o755)
                home.environment["RAVELIN_RESOURCES"] = str(slow)
                process = home.start(home.movie("a.mkv"))
                wait_until(lambda: (home.out / "a.mp4").exists() and (home.out / "a.mp4").stat().st_size, "the start")
                process.send_signal(number)
                self.assertEqual(process.wait(LIMIT), 0)
                self.assertEqual(list(home.out.iterdir()), [])
                self.assertEqual(home.tools(), [])

    def test_it_quits_by_itself_where_that_is_set(self):
        home = Home(self)
        home.settings(QuitAfterConversion=1, ShowPosters=1)
        process = home.start(home.movie("a.mkv"), home.movie("b.mkv"))
        self.assertEqual(process.wait(LIMIT), 0)
        self.assertTrue(home.has_output("a.mp4") and home.has_output("b.mp4"))


if __name__ == "__main__":
    unittest.main(verbosity=1)
