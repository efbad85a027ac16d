"""The window program, killed or ended with a queue, and started again.

test_last_queue.py RELOCATION_PROBE
"""
import json
import os
import signal
import subprocess
import unittest
from contextlib import suppress

from processes import LIMIT, wait_until
from test_application import PROGRAM, Home

NAMES = ["a", "b", "c", "ü d", "e"]


class Killed(Home):
    """Its tool finishes nothing before it may."""

    def __init__(self, test):
        super().__init__(test)
        self.settings(InsertJobsAtBottom=1)
        self.may_finish = self.path / "may finish"
        self.journal = self.path / "data/example.ravelin.Ravelin/Ravelin/Queue/queue.journal"
        self.output = open(self.path / "told", "w+")
        test.addCleanup(self.output.close)
        tool = self.path / "resources/ffmpeg"
        tool.parent.mkdir()
        tool.write_text('#!/bin/sh\n[ $# -eq 2 ] && exec ffmpeg "$@"\nfor last; do :; done\necho half > "$last"\n'
                        f'while ! [ -e "{self.may_finish}" ]; do sleep 0.05; done\nexec ffmpeg "$@"\n')
        tool.chmod(0o755)
        self.environment["RAVELIN_RESOURCES"] = str(tool.parent)

    def start(self, *arguments, presses="none"):
        process = subprocess.Popen([PROGRAM, *arguments], env={**self.environment, "PRESSES": presses},
                                   stdout=self.output)
        self.running.append(process)
        return process

    def stored(self):
        """Name -> state of the jobs in the journal."""
        names, states = {}, {}
        with suppress(FileNotFoundError):
            for line in self.journal.read_text().splitlines():
                record = json.loads(line[9:])
                if "job" in record:
                    names[record["job"]] = os.path.basename(record["source"]).removesuffix(".mkv")
                    states[names[record["job"]]] = record["state"]
                elif "state" in record:
                    states[names[record["of"]]] = record["state"]
        return states

    def told(self):
        self.output.seek(0)
        return self.output.read().splitlines()


class LastQueue(unittest.TestCase):
    def test_it_comes_back(self):
        homes = []
        for number in (signal.SIGKILL, signal.SIGTERM):
            home = Killed(self)
            process = home.start(*[home.movie(name + ".mkv") for name in reversed(NAMES)])
            homes.append((home, process, number))
        for home, process, number in homes:
            with self.subTest(signal=number):
                states = {name: "converting" if name == "a" else "queued" for name in NAMES}
                wait_until(lambda: home.stored() == states, "the queue on disk")
                process.send_signal(number)
                process.wait(LIMIT)

                offered = home.start()
                wait_until(home.told, "the bar")
                self.assertTrue(home.told()[0].startswith("5 movie"), home.told())
                self.assertEqual((home.stored(), home.tools(), list(home.out.iterdir())), (states, [], []))
                offered.send_signal(number)
                offered.wait(LIMIT)

                home.may_finish.touch()
                last = home.start(presses="continueButton")
                wait_until(lambda: all(home.has_output(name + ".mp4") for name in NAMES), "the movies")
                self.assertEqual(sorted(path.stem for path in home.out.iterdir()), sorted(NAMES))
                times = [(home.out / (name + ".mp4")).stat().st_mtime for name in NAMES]
                self.assertEqual(times, sorted(times))
                wait_until(lambda: home.stored() == {}, "an empty store")
                last.send_signal(signal.SIGTERM)
                self.assertEqual(last.wait(LIMIT), 0)


if __name__ == "__main__":
    unittest.main(verbosity=1)
