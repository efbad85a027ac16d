"""A process that is killed, at whatever moment, leaves nothing that the next start does not put in order.

RAVELIN_ALL_STEPS=1 kills it in front of every one of its calls that change files, not of a sample;
RAVELIN_RANDOM_KILLS is the number of kills at random moments. RAVELIN_KILLER is the library of kill_before.cpp.
"""
import ctypes
import json
import os
import random
import shutil
import signal
import subprocess
import time
import unittest
from contextlib import suppress

from support import CLI, CliTest, movie, wait_until

ALL_STEPS = "RAVELIN_ALL_STEPS" in os.environ
RANDOM_KILLS = int(os.environ.get("RAVELIN_RANDOM_KILLS", 100))
PER_SCENARIO = 8  # of the sample
DELETES = ("--set", "AutoRemove=1", "--set", "AutoRemoveType=1")
TRASHES = ("--set", "AutoRemove=1", "--set", "AutoRemoveType=0")
# As on a full disk. The tool takes the place of the shell: a child of its own would outlive it for a moment.
FAILS = '[ ! $converts ] || { trap "" XFSZ; ulimit -f 16; }; exec "$real" "$@"'
# What is converted how, over which file, with which tool.
SCENARIOS = {
    "beside": (DELETES, None, None), "to the trash": (TRASHES, None, None), "fails": (DELETES, None, FAILS),
    "replaces": (("--output", "Movie.mp4", *DELETES), "old", None),
    "fails to replace": (("--output", "Movie.mp4", *DELETES), "old", FAILS),
    "is damaged": (("--output", "Movie.mp4", "--keep-damaged", *DELETES), "old", None),
    "on a plain volume": (("--output", "Movie.mp4", *DELETES), "old", None),
}

PR_SET_CHILD_SUBREAPER = 36


def wait_for_children():
    """Of killed processes, too: one that the kernel has not ended yet holds the lock of its parent's note."""
    with suppress(ChildProcessError):
        while True:
            os.waitpid(-1, 0)


class Kills(CliTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)

    def prepare(self, scenario):
        """A home with nothing but the movie and what is to be replaced."""
        for path in self.folder.iterdir():
            shutil.rmtree(path) if path.is_dir() else path.unlink()
        arguments, self.old, tool = SCENARIOS[scenario]
        self.source = movie("aac").read_bytes()
        if scenario == "is damaged":
            self.source = self.source[:len(self.source) * 2 // 3]
        self.place(self.source, "Movie.mkv")
        if self.old:
            self.place(self.old, "Movie.mp4")
        self.env.pop("RAVELIN_RESOURCES", None)
        if tool:
            self.use_tool(tool)
        self.env.pop("RAVELIN_PLAIN_VOLUME", None)
        if scenario == "on a plain volume":
            self.env["RAVELIN_PLAIN_VOLUME"] = "1"
        return ("convert", *arguments, "Movie.mkv")

    def run_with_killer(self, *arguments, **variables):
        env = self.env | {"LD_PRELOAD": os.environ["RAVELIN_KILLER"], "ASAN_OPTIONS": "verify_asan_link_order=0"} | variables
        return subprocess.run([CLI, *arguments], env=env, cwd=self.folder, capture_output=True, timeout=60)

    def start_again(self):
        """The next start; it needs no tool."""
        result = self.run_with_killer("settings", "path")
        self.assertEqual((0, b""), (result.returncode, result.stderr))

    def files_below(self, folder):
        return {str(p.relative_to(folder)): p.read_bytes() for p in folder.rglob("*") if p.is_file()}

    def assert_in_order(self, whole):
        """Nothing is lost, hidden or half-written; `whole` is the finished output."""
        files = {name: content for name, content in self.files_below(self.folder).items() if not name.startswith(".resources/")}
        settings = self.settings_file.relative_to(self.folder)
        files.pop(f"{settings}.lock", None)
        if (stored := files.pop(str(settings), None)) is not None:
            json.loads(stored)
        trash = [files.pop(f".data/Trash/{name}", None) for name in ("files/Movie.mkv", "info/Movie.mkv.trashinfo")]
        movies = {name: files.pop(name, None) for name in ("Movie.mkv", "Movie.mp4", "Movie-0.mp4")}
        self.assertEqual([], list(files))
        source, output, kept = movies.values()
        old = self.old.encode() if self.old else None
        self.assertIn(output, (old, whole))
        self.assertIn(kept, (None, old))
        if output:
            self.assertLessEqual(set(os.listxattr(self.folder / "Movie.mp4")), {"user.ravelin.proof"})
        if trash[0] is not None:
            self.assertIn(f"Path={self.folder}/Movie.mkv\n".encode(), trash[1])
        else:
            self.assertIsNone(trash[1])
        if source is None:
            self.assertEqual(whole, output)
        else:
            self.assertEqual(self.source, source)
        return output, kept

    def whole_run(self, scenario):
        """The output of a run that nobody kills, and its number of steps."""
        steps = self.folder.parent / f"{self.folder.name}.steps"
        self.addCleanup(steps.unlink, missing_ok=True)
        self.run_with_killer(*self.prepare(scenario), RAVELIN_STEPS=str(steps))
        output = self.folder / "Movie.mp4"
        return output.read_bytes() if output.exists() else None, int(steps.read_text())

    def test_in_front_of_each_step(self):
        for scenario in SCENARIOS:
            whole, last = self.whole_run(scenario)
            steps = range(1, last + 1)
            if not ALL_STEPS:
                steps = sorted(random.Random(scenario).sample(steps, PER_SCENARIO))
            for step in steps:
                with self.subTest(scenario=scenario, step=step):
                    arguments = self.prepare(scenario)
                    killed = self.run_with_killer(*arguments, RAVELIN_KILL_BEFORE=str(step))
                    wait_for_children()
                    # Now and then a run saves its settings once less.
                    if step < last - 6:
                        self.assertEqual(-signal.SIGKILL, killed.returncode)
                    self.start_again()
                    _, kept = self.assert_in_order(whole)
                    if self.old and scenario != "is damaged":
                        self.assertIsNone(kept, "the old file has its own name")

    def test_at_random_moments(self):
        rng = random.Random(RANDOM_KILLS)
        whole = {name: self.whole_run(name)[0] for name in ("beside", "replaces")}
        for round in range(RANDOM_KILLS):
            scenario = rng.choice(list(whole))
            moment = rng.uniform(0, 0.6)
            with self.subTest(round=round, scenario=scenario, moment=moment):
                process = self.start(*self.prepare(scenario))
                with suppress(subprocess.TimeoutExpired):
                    process.wait(moment)
                process.kill()
                process.wait()
                wait_for_children()
                self.start_again()
                self.assert_in_order(whole[scenario])

    def test_instances_do_not_touch_each_other(self):
        """A start beside a running conversion leaves its files; the file that somebody writes into a killed one's stays."""
        arguments = self.prepare("replaces")
        self.use_tool('exec "$real" ${converts:+-re -stream_loop -1} "$@"')
        process = self.start(*arguments)
        self.assertTrue(wait_until(self.converting))
        self.start_again()
        self.assertEqual(["Movie.mkv", "Movie.mp4"], self.outputs())
        self.assertEqual(1, self.converting())
        process.kill()
        process.wait()
        wait_for_children()
        mine = movie("aac", suffix=".mp4").read_bytes()
        (self.folder / "Movie.mp4").write_bytes(mine)
        later = time.time() + 60
        os.utime(self.folder / "Movie.mp4", (later, later))
        self.start_again()
        self.assertEqual((mine, b"old"), self.assert_in_order(mine))


if __name__ == "__main__":
    unittest.main()
