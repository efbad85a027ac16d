"""The window program, killed or ended with a queue, and started again.

test_last_queue.py RELOCATION_PROBE

RAVELIN_ALL_STEPS=1 kills it in front of every one of its calls that change files, not of a sample. RAVELIN_KILLER is
the library of kill_before.cpp.
"""
import json
import os
import random
import shutil
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

    def test_killed_in_front_of_each_step(self):
        """Brings back a queue and converts it; the next start goes on wherever that was killed."""
        home = Killed(self)
        names = NAMES[:3]
        first = home.start(*[home.movie(name + ".mkv", 1) for name in reversed(names)])
        wait_until(lambda: len(home.stored()) == len(names), "the queue on disk")
        first.send_signal(signal.SIGTERM)
        first.wait(LIMIT)
        del home.environment["RAVELIN_RESOURCES"]  # From now on the real tool.
        shutil.copytree(home.path, home.path / "before", ignore=shutil.ignore_patterns("resources", "told"))
        folders = "out", "data", "config", "run"

        def files():
            return {str(path.relative_to(home.path)) for folder in folders
                    for path in (home.path / folder).rglob("*") if path.is_file()}

        def outputs():
            return {path.stem: path.read_bytes() for path in home.out.glob("[!.]*.mp4")}

        def run(**variables):
            home.environment.update(variables)
            lock.unlink(missing_ok=True)  # Made anew when the program is up.
            process = home.start(presses="continueButton")
            wait_until(lambda: process.poll() is not None or (not home.stored() and expected <= files()), "the end")
            process.send_signal(signal.SIGTERM)
            return process.wait(LIMIT)

        lock = home.journal.with_name("queue.lock")
        expected = {f"out/{name}.mp4" for name in names} | {str(lock.relative_to(home.path))}
        steps_file = home.path / "steps"
        options = home.environment.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"
        self.assertEqual(0, run(LD_PRELOAD=os.environ["RAVELIN_KILLER"], RAVELIN_KILLED=PROGRAM.name, ASAN_OPTIONS=options,
                                RAVELIN_STEPS=str(steps_file)))
        expected = files()
        whole = outputs()["a"]
        steps = range(1, int(steps_file.read_text()))
        for step in steps if "RAVELIN_ALL_STEPS" in os.environ else random.Random(1).sample(steps, 4):
            with self.subTest(step=step):
                for folder in folders:
                    shutil.rmtree(home.path / folder)
                    shutil.copytree(home.path / "before" / folder, home.path / folder)
                run(RAVELIN_KILL_BEFORE=str(step))
                stored = [name for name, state in home.stored().items() if state != "finished"]
                done = [name for name, content in outputs().items() if content == whole]
                self.assertEqual((names[-len(stored):] if stored else [], set(names)), (stored, {*stored, *done}))
                self.assertEqual(0, run(RAVELIN_KILL_BEFORE="0"))
                # The last one may have been finished, and nothing knew yet.
                again = files() - expected
                self.assertLessEqual(again, {f"out/{name}-0.mp4" for name in stored[:1] if name in done})
                self.assertEqual((dict.fromkeys(outputs(), whole), expected | again), (outputs(), files()))


if __name__ == "__main__":
    unittest.main(verbosity=1)
