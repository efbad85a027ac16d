"""Several instances, also on several machines, that share folders: none takes the other's files or repeats its work.

RAVELIN_OTHER_MACHINE is the library of other_machine.cpp, RAVELIN_KILLER that of kill_before.cpp.
"""
import json
import os
import signal
import socket
import subprocess
import time
import unittest
from pathlib import Path

from support import CLI, ENDINGS, CliTest, look, movie, packets, wait_until

RECORD = "user.ravelin.proof"
PRELOADED = {"ASAN_OPTIONS": "verify_asan_link_order=0"}
SLOW = 'exec "$real" ${converts:+-re -stream_loop -1} "$@"'
LEFT_ALONE = "is already being converted to"


def change_byte(path):
    """In the middle of a frame, where nothing but its contents changes."""
    content = bytearray(path.read_bytes())
    content[content.index(b"mdat") + 2000 if path.suffix == ".mp4" else len(content) // 2] ^= 1
    path.write_bytes(content)


def without_record(change):
    return lambda home: [os.removexattr(home / "Movie.mp4", RECORD), change(home)]


class Existing(CliTest):
    def skip(self, *arguments, status=0):
        return self.convert("--style", "fast", "--skip-existing", *arguments, status=status)

    def test_which_outputs_are_left(self):
        """What happens after the conversion, and whether the movie is then left."""
        other = movie("ac3", video="libx264 -preset veryfast")
        nothing = lambda home: None  # noqa: E731
        for name, change, is_left in (
            ("nothing", nothing, True),
            ("the record is lost", without_record(nothing), True),
            ("the source is copied", lambda home: os.utime(home / "Movie.mkv"), True),
            ("copied to a volume with coarse times", lambda home: os.utime(home / "Movie.mp4", (5, int(
                (home / "Movie.mp4").stat().st_mtime))), True),
            ("it has another number", lambda home: (home / "Movie.mp4").rename(home / "Movie-0.mp4"), True),
            ("truncated", lambda home: os.truncate(home / "Movie.mp4", 9000), False),
            ("truncated, without a record", without_record(lambda home: os.truncate(home / "Movie.mp4", 9000)), False),
            ("a byte is changed", lambda home: change_byte(home / "Movie.mp4"), False),
            ("a byte is changed, without a record", without_record(lambda home: change_byte(home / "Movie.mp4")), False),
            ("replaced by something else", without_record(lambda home: (home / "Movie.mp4").write_text("mine")), False),
            ("a byte of the source is changed", lambda home: change_byte(home / "Movie.mkv"), False),
            ("the source is another movie of that length", lambda home: (home / "Movie.mkv").write_bytes(other.read_bytes()), False),
            ("the same, without a record",
             without_record(lambda home: (home / "Movie.mkv").write_bytes(other.read_bytes())), False),
        ):
            with self.subTest(name):
                self.doCleanups()
                self.setUp()
                source = self.place(movie("ac3"), "Movie.mkv")
                self.convert("--style", "fast", source)
                change(self.folder)
                before = {path: path.read_bytes() for path in self.folder.glob("*.mp4")}
                result = self.skip(source)
                finished = result.only("finished")
                self.assertEqual(is_left, finished.get("skipped", False))
                if is_left:
                    self.assertEqual("whole", finished["receipt"]["verdict"])
                    self.assertEqual([50, 50], [finished["receipt"]["tracks"][0][key] for key in ("count", "sourceCount")])
                self.assertEqual(is_left, Path(finished["destination"]) in before)
                after = {path: path.read_bytes() for path in self.folder.glob("*.mp4")}
                self.assertEqual(before, {path: after[path] for path in before}, "an existing file was changed")
                self.assertEqual([], self.skip(source).of("started"), "the run after that")

    def test_one_name_for_several_sources(self):
        """Each is recognised by its own output; a damaged or incomparable result is no reason to leave a movie."""
        sources = [self.place(movie("ac3", seconds=seconds), f"{seconds}/Movie.mkv") for seconds in (2, 3)]
        first = self.skip(*sources, "--to", ".")
        self.assertEqual([None, None], [e.get("skipped") for e in first.of("finished")])
        second = self.skip(*sources, "--to", ".")
        self.assertEqual([(True, f"Movie{number}.mp4") for number in ("", "-0")],
                         [(e["skipped"], Path(e["destination"]).name) for e in second.of("finished")])
        self.assertEqual([], second.of("probed"))
        said = self.run_cli("convert", "--skip-existing", *sources, "--to", ".").out
        self.assertEqual(2, said.count("is there and whole"), said)
        (self.folder / "unproven").mkdir()
        for expected in ("Movie.mp4", "Movie-0.mp4"):
            result = self.convert(self.place(movie("ac3", suffix=".ts"), "Movie.ts"), "--skip-existing", "--to", "unproven",
                                  "--set", "ProveResults=0")
            self.assertEqual(expected, Path(result.only("finished")["destination"]).name)

    def test_outputs_beside_their_sources_are_no_movies(self):
        for plain in ({}, PRELOADED | {"LD_PRELOAD": os.environ["RAVELIN_KILLER"], "RAVELIN_PLAIN_VOLUME": "1"}):
            with self.subTest(plain=plain):
                self.doCleanups()
                self.setUp()
                self.env |= plain
                self.place(movie("ac3"), "films/Movie.mkv")
                os.utime(self.place("mine", "films/Movie.mp4"), (0, 0))  # Or it could be one that is being written.
                self.place(movie("aac", suffix=".mp4"), "films/Own-2.mp4")
                self.skip("films")
                for _ in range(2):
                    self.assertEqual(["Movie.mkv", "Own-2.mp4"], self.skip("films").files("finished"))
                self.assertEqual(["Movie-0.mp4", "Movie.mkv", "Movie.mp4", "Own-2-0.mp4", "Own-2.mp4"],
                                 sorted(path.name for path in (self.folder / "films").iterdir()))

    def test_beside_a_run(self):
        """The movie that it converts is left, another one of the same name is not, and its name is not replaced."""
        source, other = (self.place(movie("ac3", seconds=seconds), f"{seconds}/Movie.mkv") for seconds in (2, 3))
        for attributes in (True, False):
            with self.subTest(attributes=attributes):
                env = dict(self.env)
                if not attributes:
                    self.env |= PRELOADED | {"LD_PRELOAD": os.environ["RAVELIN_KILLER"], "RAVELIN_PLAIN_VOLUME": "1"}
                after = dict(self.env)
                self.use_tool(SLOW)
                running = self.start("convert", source, "--to", ".")
                self.assertTrue(wait_until(self.converting))
                self.env = after
                refused = self.finish(self.start("convert", "--json", "--skip-existing", source, "--to", "."))
                self.assertEqual((1, ["refused"]), (refused.status, [e["event"] for e in refused.of(*ENDINGS)]))
                self.assertIn(LEFT_ALONE, refused.only("refused")["message"])
                if attributes:
                    beside = self.run_cli("convert", "--json", "--skip-existing", other, "--to", ".").only("finished")
                    self.assertEqual("Movie-0.mp4", Path(beside["destination"]).name)
                    failed = self.run_cli("convert", "--json", other, "--output", "Movie.mp4", status=1).only("failed")
                    self.assertIn("another conversion is writing the same output", failed["message"])
                self.assertEqual(1, self.converting())
                running.terminate()
                self.assertEqual(143, self.finish(running).status)
                self.assertFalse((self.folder / "Movie.mp4").exists())
                self.env = env


class Together(CliTest):
    def start_on(self, machine, *arguments, **variables):
        before = dict(self.env)
        self.env |= PRELOADED | {"LD_PRELOAD": os.environ["RAVELIN_OTHER_MACHINE"], "RAVELIN_MACHINE": machine} | variables
        process = self.start(*arguments)
        self.env = before
        return process

    def test_at_once(self):
        """Four instances get the same movie. None loses its output to another one, whatever the file system lacks."""
        source = self.place(movie("ac3", seconds=3), "Movie.mkv")
        for lacks in ({}, {"RAVELIN_LOCKS": "none"}, {"RAVELIN_LOCKS": "local", "RAVELIN_SHARED": "1"},
                      {"RAVELIN_SHARED": "1", "RAVELIN_LOCKS": "none", "RAVELIN_NO_LINKS": "1"}):
            for option in ((), ("--skip-existing",)):
                with self.subTest(lacks=lacks, option=option):
                    for path in self.folder.glob("*.mp4"):
                        path.unlink()
                    runs = [self.start_on(f"machine{i}", "convert", "--json", source, *option, **lacks) for i in range(4)]
                    results = [self.finish(run) for run in runs]
                    ends = [result.of(*ENDINGS)[0] for result in results]
                    converted = [e["destination"] for e in ends if e["event"] == "finished" and not e.get("skipped")]
                    outputs = sorted(map(str, self.folder.glob("*.mp4")))
                    self.assertEqual(outputs, sorted(converted))
                    self.assertEqual(1 if option else 4, len(outputs))
                    for output in outputs:
                        self.assertEqual(75, len(packets(look(output), "video")))
                    for end, result in zip(ends, results):
                        self.assertIn((end["event"], result.status), {("finished", 0), ("refused", 1)}, end)
                    self.assertEqual([], [p.name for p in self.folder.glob(".Movie*")])

    def test_shared_private_data(self):
        """A machine that does not see the locks of another one leaves its notes alone, until they are a day old."""
        unseen = {"RAVELIN_LOCKS": "local", "RAVELIN_SHARED": "1"}
        self.place(movie("ac3"), "Movie.mkv")
        self.use_tool(SLOW)
        running = self.start_on("alpha", "convert", "Movie.mkv", **unseen)
        self.assertTrue(wait_until(self.converting))
        [note] = self.data.rglob("Running/*.json")
        clean_up = lambda machine: self.assertEqual(  # noqa: E731
            0, self.finish(self.start_on(machine, "settings", "path", **unseen)).status)
        clean_up("beta")
        self.assertEqual(1, self.converting())
        running.kill()
        running.wait()
        clean_up("beta")
        self.assertEqual((["Movie.mkv", "Movie.mp4"], True), (self.outputs(), note.exists()))
        long_ago = time.time() - 2 * 86400
        os.utime(note, (long_ago, long_ago))
        os.utime(self.folder / "Movie.mp4", (long_ago, long_ago))
        clean_up("beta")
        self.assertEqual((["Movie.mkv"], False), (self.outputs(), note.exists()))

    def test_lines_are_written_at_once(self):
        """A socket of packets shows the calls: lines longer than a pipe takes in one piece, too."""
        source = self.place(movie("ac3"), "/".join(10 * ["x" * 200] + ["Movie.mkv"]))
        ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        with ours:
            with theirs:
                run = subprocess.Popen([CLI, "convert", "--json", source, "gone.mkv"], env=self.env, cwd=self.folder, stdout=theirs,
                                       stderr=subprocess.DEVNULL)
            lines = []
            while line := ours.recv(1 << 20):
                lines.append(line)
        self.assertEqual(1, run.wait())
        self.assertTrue(all(line.endswith(b"\n") and line.count(b"\n") == 1 and "file" in json.loads(line) for line in lines))
        self.assertGreater(max(map(len, lines)), 4096)


class Ahead(CliTest):
    def test_the_next_movie_is_probed_meanwhile(self):
        """And no further one."""
        paths = [self.place(movie("ac3"), f"{i}.mkv") for i in range(4)]
        self.use_tool('exec "$real" ${converts:+-re} "$@"')
        result = self.convert(*paths)
        order = [(e["event"], Path(e["file"]).stem) for e in result.of("probed", "queued", "started", "finished")]
        for event in ("probed", "queued", "started", "finished"):
            self.assertEqual(["0", "1", "2", "3"], [name for what, name in order if what == event])
        for i in range(1, 4):
            self.assertLess(order.index(("queued", str(i))), order.index(("finished", str(i - 1))))
            if i > 1:
                self.assertLess(order.index(("started", str(i - 1))), order.index(("probed", str(i))))

    def test_an_interruption_ends_both_tools(self):
        paths = [self.place(movie("ac3"), f"{i}.mkv") for i in range(3)]
        self.use_tool('case "$*" in *1.mkv*) exec sleep 1000;; esac\n' + SLOW)
        for option in ((), ("--skip-existing",)):
            with self.subTest(option=option):
                process = self.start("convert", "--json", *paths, *option)
                self.assertTrue(wait_until(lambda: self.converting() and len(self.processes()) >= 3))
                process.send_signal(signal.SIGINT)
                result = self.finish(process)
                self.assertEqual(130, result.status)
                self.check_events(result)
                self.assertEqual(["failed", "refused", "refused"], sorted(e["event"] for e in result.of(*ENDINGS)))
                self.assertTrue(wait_until(lambda: not self.processes()))
                self.assertEqual(["0.mkv", "1.mkv", "2.mkv"], self.outputs())


if __name__ == "__main__":
    unittest.main()
