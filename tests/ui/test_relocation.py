"""The window program, moved while it converts: it starts anew from where it is and goes on with what was waiting.

test_relocation.py RELOCATION_PROBE
"""
import os
import shutil
import signal
import subprocess
import unittest
from contextlib import suppress
from pathlib import Path

from processes import LIMIT, wait_until
from test_application import PROGRAM, Home

MOVED = "Ravelin has been moved, but applications should never be moved while they are running. [Restart Ravelin]"
FAILED = "Ravelin could not restart itself. Please do so yourself. [Quit]"
UNSHARE = ["unshare", "--mount"] if os.geteuid() == 0 else ["unshare", "--mount", "--map-root-user"]


class Portable(Home):
    """An application folder to be carried about. Its tool finishes nothing before it may, and takes its time to end."""

    def __init__(self, test):
        super().__init__(test)
        self.settings()
        self.may_finish = self.path / "may finish"
        self.output = open(self.path / "told", "w+")
        self.application = self.path / "disk/Ravelin app"
        (self.application / "bin").mkdir(parents=True)
        shutil.copy(PROGRAM, self.application / "bin")
        tool = self.application / "resources/ffmpeg"
        tool.parent.mkdir()
        tool.write_text('#!/bin/sh\n[ $# -eq 2 ] && exec ffmpeg "$@"\ntrap "sleep 0.5; exit 1" TERM\n'
                        'for last; do :; done\necho half > "$last"\n'
                        f'while ! [ -e "{self.may_finish}" ]; do sleep 0.05; done\nexec ffmpeg "$@"\n')
        tool.chmod(0o755)

    def close(self):
        for pid in self.instances():
            os.kill(pid, signal.SIGKILL)
        self.output.close()
        super().close()

    def start(self, *arguments, folder=None):
        program = (folder or self.application) / "bin" / PROGRAM.name
        process = subprocess.Popen([program, *arguments], env=self.environment, stdout=self.output)
        self.running.append(process)
        return process

    def converts(self):
        with suppress(FileNotFoundError):  # One was deleted while we looked.
            return any(path.stat().st_size > 0 for path in self.out.iterdir())
        return False

    def instances(self):
        """Process identifier -> the application folder that it was started from."""
        found = {}
        for pid in subprocess.run(["pgrep", "-f", f"/{PROGRAM.name}"], capture_output=True, text=True).stdout.split():
            try:
                environment = Path(f"/proc/{pid}/environ").read_text()
                program = Path(f"/proc/{pid}/cmdline").read_text().split("\0")[0]
            except OSError:
                continue
            if f"HOME={self.path}\0" in environment and program.endswith(PROGRAM.name):
                found[int(pid)] = program.removesuffix(f"/bin/{PROGRAM.name}")
        return found

    def alerts(self):
        self.output.seek(0)
        return self.output.read().splitlines()


class Relocation(unittest.TestCase):
    def assert_goes_on(self, home, old, place, movies):
        """From `place`, with all movies, under the names that they would have had; nothing stays behind."""
        wait_until(lambda: old not in home.instances(), "the end of the old instance")
        self.assertEqual(home.alerts(), [MOVED])
        # A child that is about to become a tool looks like a second one for a moment.
        wait_until(lambda: list(home.instances().values()) == [str(place)], "one instance in the new place")
        wait_until(home.converts, "the new instance at work")
        home.may_finish.touch()
        wait_until(lambda: all(home.has_output(movie + ".mp4") for movie in movies), "the movies")
        self.assertEqual(sorted(path.name for path in home.out.iterdir()), sorted(movie + ".mp4" for movie in movies))
        for pid in home.instances():
            os.kill(pid, signal.SIGTERM)
        wait_until(lambda: not home.instances() and not home.tools(), "the end")

    def test_a_moved_folder(self):
        moved = []  # One after the other, so that they wait for the end of their moves together.
        for old, new, place in (("disk/Ravelin app", "elsewhere", "elsewhere"), ("disk", "new disk", "new disk/Ravelin app")):
            home = Portable(self)
            if old == "disk":
                home.environment["RAVELIN_RESOURCES"] = str(home.application / "resources")
            process = home.start(home.movie("a.mkv"), home.movie("disk/ü b.mkv"))
            wait_until(home.converts, "a conversion")
            (home.path / old).rename(home.path / new)
            moved.append((home, process, home.path / place))
        for home, process, place in moved:
            with self.subTest(moved_to=place.name):
                self.assertEqual(process.wait(LIMIT), 0)
                self.assert_goes_on(home, process.pid, place, ("a", "ü b"))

    def test_a_volume_at_another_mount_point(self):
        if subprocess.run([*UNSHARE, "mount", "-t", "tmpfs", "none", "/mnt"], capture_output=True).returncode != 0:
            self.skipTest("this machine lets no test mount anything")
        moved = []
        for steps in (["mount --move one two"], ["umount --lazy one", "mount --bind disk two"]):
            home = Portable(self)
            home.movie("disk/a.mkv")
            (home.path / "one").mkdir()
            (home.path / "two").mkdir()
            shell = subprocess.Popen([*UNSHARE, "sh", "-e"], stdin=subprocess.PIPE, stdout=home.output, text=True,
                                     cwd=home.path, env=home.environment)
            home.running.append(shell)
            self.addCleanup(shell.stdin.close)
            print("mount --bind disk one", f'"$PWD/one/Ravelin app/bin/{PROGRAM.name}" one/a.mkv &', sep="\n",
                  file=shell.stdin, flush=True)
            wait_until(home.converts, "a conversion")
            (old,) = home.instances()
            print(*steps, sep="\n", file=shell.stdin, flush=True)
            moved.append((home, old, steps))
        for home, old, steps in moved:
            with self.subTest(steps=steps):
                self.assert_goes_on(home, old, home.path / "two/Ravelin app", ("a",))

    def test_what_cannot_be_started_is_told_and_nothing_is_lost(self):
        home = Portable(self)
        process = home.start(home.movie("a.mkv"))
        wait_until(home.converts, "a conversion")
        home.application.rename(home.path / "elsewhere")
        shutil.rmtree(home.path / "elsewhere/bin")
        self.assertEqual(process.wait(LIMIT), 0)
        self.assertEqual(home.alerts(), [MOVED, FAILED])
        self.assertEqual((home.instances(), list(home.out.iterdir())), ({}, []))
        home.start(folder=PROGRAM.parents[1])
        wait_until(lambda: home.has_output("a.mp4"), "the movie")


if __name__ == "__main__":
    unittest.main(verbosity=1)
