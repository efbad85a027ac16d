"""Sources, destinations and tools that fail, and interruptions: each movie ends once, says why, and leaves nothing behind."""
import os
import signal
import subprocess
import unittest
from pathlib import Path

from support import CLI, ENDINGS, CliTest, movie, wait_until

INVALID = "doesn't seem to be a valid MKV"
NOT_WRITEABLE = "You don't seem to have write access"
OVERWRITES = "You've tried to overwrite the source file with the target file."
DISPOSE = ("--set", "AutoRemove=1", "--set", "AutoRemoveType=1")  # A failure must not cost the user the source.
ENDLESS = 'exec "$real" ${converts:+-re -stream_loop -1} "$@"'


class Failures(CliTest):
    def assert_fails(self, says, *arguments, ending="refused", lines=1):
        """The one movie among the arguments ends so, nothing changes on disk, and people read it in so many lines."""
        before, disk = self.outputs(), self.folder / ".disk"
        [end] = self.convert(*arguments, *DISPOSE, status=1).of(*ENDINGS)
        self.assertEqual(ending, end["event"])
        self.assertIn(says, end["message"])
        self.assertEqual(before, self.outputs())
        # The kernel gives deleted files free a moment after the processes that were confined to them have ended.
        self.assertTrue(wait_until(lambda: not os.path.ismount(disk) or os.statvfs(disk).f_bfree == os.statvfs(disk).f_blocks))
        text = self.run_cli("convert", *arguments, *DISPOSE, status=1)
        self.assertIn(says, text.err)
        self.assertEqual(lines, len(text.err.splitlines()), text.err)
        self.assertNotIn("Finished", text.out)
        self.assertEqual(before, self.outputs())
        return end

    def test_sources(self):
        whole = movie("ac3", seconds=4).read_bytes()
        (self.folder / "empty").mkdir()
        (self.folder / "looped.mkv").symlink_to("looped.mkv")
        (self.folder / "dangling.mkv").symlink_to("nowhere.mkv")
        os.mkfifo(self.folder / "pipe.mkv")
        for name, content, says in (
            ("none.mkv", None, "There is no file"), ("empty", None, "There are no movies in the folder"),
            ("pipe.mkv", None, "is not a regular file"), ("dangling.mkv", None, "is an alias"),
            ("looped.mkv", None, "is an alias"), ("sound.mkv", movie("aac", options=("-vn",)), INVALID),
            ("words.txt", "words", "neither a movie nor a text subtitle file"),
            ("film.m2ts", "", "does not convert movies of the type .m2ts"), ("nothing.mkv", "", INVALID),
            ("words.mkv", "words", INVALID), ("head.mkv", whole[:300], INVALID),
        ):
            with self.subTest(name):
                if content is not None:
                    self.place(content, name)
                self.assert_fails(says, name)
        self.place(whole[:len(whole) // 2], "cut.mkv")
        end = self.assert_fails("the movie is incomplete", "cut.mkv", ending="failed")
        self.assertEqual(["convertWhatIsLeft", "tryAgain"], end["actions"])
        self.assertIn("[try --keep-damaged]", self.run_cli("convert", "cut.mkv", status=1).err)
        self.convert("cut.mkv", "--keep-damaged", status=3).only("finished")
        (self.folder / "cut.mp4").unlink()
        self.place(whole, "whole.mkv")
        self.assert_fails("has 1 audio track", "whole.mkv", "--audio", "1")

    def test_destinations(self):
        source = self.place(movie("aac", suffix=".mp4"), "Movie.mp4")
        (self.folder / "soft.mp4").symlink_to("Movie.mp4")
        (self.folder / "hard.mp4").hardlink_to(source)
        (self.folder / "folder.mp4").mkdir()
        for option, path, says in (
            ("--to", "nowhere", NOT_WRITEABLE), ("--to", "Movie.mp4", NOT_WRITEABLE), ("--to", "/proc", NOT_WRITEABLE),
            ("--output", "nowhere/Movie.mp4", NOT_WRITEABLE), ("--output", "folder.mp4", "is a folder"),
            ("--output", "Movie.mp4", OVERWRITES), ("--output", "folder.mp4/../Movie.mp4", OVERWRITES),
            ("--output", "soft.mp4", OVERWRITES), ("--output", "hard.mp4", OVERWRITES),
        ):
            with self.subTest(option=option, path=path):
                # The message alone does not say which movie it is about.
                self.assert_fails(says, "Movie.mp4", option, path, lines=2 if says == NOT_WRITEABLE else 1)

    def test_full_disk(self):
        """While the tool writes, and, for what fits into its buffer, when it closes the output."""
        disk = self.folder / ".disk"
        disk.mkdir()
        for seconds in (20, 5):
            with self.subTest(seconds=seconds):
                # The sound takes much more room in the output.
                source = self.place(movie("mp3", seconds=seconds, options=("-b:a", "32k")), "Movie.mkv")
                size = f"size={source.stat().st_size + 8192}"
                if subprocess.run(["mount", "-t", "tmpfs", "-o", size, "none", disk], capture_output=True).returncode:
                    self.skipTest("mounting is not allowed")
                try:
                    more_sound = ("--style", "fast", "--set", "AC3StereoBitrate=3")
                    says = "there is not enough free space left on the destination volume"
                    self.assert_fails(says, "Movie.mkv", "--to", ".disk", *more_sound, ending="failed", lines=2)
                    self.assertEqual([], list(disk.iterdir()))
                finally:
                    subprocess.run(["umount", disk], check=True)

    def test_tools(self):
        self.place(movie("ac3"), "Movie.mkv")
        self.env["RAVELIN_RESOURCES"] = str(self.folder / ".nowhere")
        self.assert_fails("The conversion tool is missing", "Movie.mkv", lines=2)
        for script, mode, says in (("", 0o644, "it is not executable"), ("exit 0", 0o755, "it printed nothing")):
            with self.subTest(script=script, mode=mode):
                self.use_tool(script, mode)
                self.assert_fails(says, "Movie.mkv", lines=2)
        (self.folder / ".resources/ffmpeg").write_bytes(Path(CLI).read_bytes()[:10000])
        self.assert_fails("its file is cut off", "Movie.mkv", lines=2)
        self.use_tool('[ $converts ] || exec "$real" "$@"; echo oh no; kill -9 $$')
        end = self.assert_fails("A problem prevented the file from being converted.", "Movie.mkv", ending="failed", lines=4)
        self.assertEqual("Information", end["title"])
        self.assertIn("oh no", end["output"])
        program = self.place("a copy instead of a link", ".resources/Frameworks/Some.framework/Some")
        text = self.run_cli("convert", "Movie.mkv", status=1)
        self.assertIn("This application is damaged. Either your download was damaged", text.err)
        self.assertIn(f"\n\nOffending Path: {program}\n", text.err)

    def test_a_bad_movie_does_not_stop_the_others(self):
        """One is no movie, one is not there, and one goes while it waits."""
        self.place("words", "b.mkv")
        for name in ("a.mkv", "c.mkv", "d.mkv"):
            self.place(movie("ac3"), name)
        self.use_tool('case "$converts $*" in 1*) until [ -e "$home/.read" ]; do sleep 0.01; done; rm -f "$home/c.mkv";;\n'
                      '*c.mkv*) "$real" "$@"; touch "$home/.read"; exit;; esac; exec "$real" "$@"')
        result = self.convert("a.mkv", "b.mkv", "none.mkv", "c.mkv", "d.mkv", status=1)
        self.assertEqual(["a.mkv", "d.mkv"], result.files("finished"))
        self.assertEqual(["b.mkv", "none.mkv"], sorted(result.files("refused")))
        self.assertIn("you've removed/renamed the source movie file", result.only("failed", "c.mkv")["message"])
        self.assertEqual(["a.mkv", "a.mp4", "b.mkv", "d.mkv", "d.mp4"], self.outputs())

    def test_a_message_names_its_movie(self):
        """Although another one began later."""
        for name in ("a.mkv", "b.mkv"):
            self.place(movie("ac3"), name)
        self.use_tool('case "$converts $*" in 1*a.mkv*) until [ -e "$home/.began" ]; do sleep 0.01; done\n'
                      'echo No space left on device >&2; exit 1;; 1*) touch "$home/.began";; esac; exec "$real" "$@"')
        result = self.convert("a.mkv", "b.mkv", "--set", "ConcurrentJobs=1", status=1)
        self.assertEqual((["a.mkv"], ["a.mkv"]), (result.files("message"), result.files("failed")))


class Interruptions(CliTest):
    def setUp(self):
        super().setUp()
        self.names = ["a.mkv", "b.mkv", "c.mkv"]
        for name in self.names:
            self.place(movie("aac"), name)

    def start_and_wait(self, script, moment, *arguments):
        """A run of the three movies with this tool, up to the moment when a file "busy" is there or so many movies convert."""
        self.use_tool(script)
        busy = self.folder / ".busy"
        busy.unlink(missing_ok=True)
        process = self.start("convert", "--json", *self.names, *arguments)
        self.assertTrue(wait_until(busy.exists if moment == "busy" else lambda: self.converting() == moment))
        return process

    def test_signals(self):
        """The tool converts two movies, or hangs in a probe, in a trial run, or in a conversion and does not listen."""
        hang = 'touch "$home/.busy"; exec sleep 100'
        for script, moment, number, status in (
            (ENDLESS, 2, signal.SIGINT, 130), (ENDLESS, 2, signal.SIGTERM, 143), (hang, "busy", signal.SIGINT, 130),
            (f'case " $* " in *" -t "*) {hang};; esac; exec "$real" "$@"', "busy", signal.SIGINT, 130),
            (f'trap "" TERM INT; [ $converts ] && {{ {hang}; }}; exec "$real" "$@"', "busy", signal.SIGTERM, 143),
        ):
            with self.subTest(script=script, number=number):
                process = self.start_and_wait(script, moment, "--set", f"ConcurrentJobs={int(moment == 2)}")
                process.send_signal(number)
                result = self.finish(process)
                self.assertEqual((status, []), (result.status, self.processes()))
                self.check_events(result)
                self.assertEqual(self.names, sorted(result.files("failed", "refused")))
                self.assertEqual({"The conversion was interrupted."}, {e["message"] for e in result.of("failed", "refused")})
                self.assertEqual(self.names, self.outputs())

    def test_a_tool_that_stands_still(self):
        self.use_tool('[ $converts ] && { exec sleep 100; }; exec "$real" "$@"')
        stalls = ("--set", "StallNotice=1", "--stall-limit", 2)
        failed = self.convert(*stalls, "a.mkv", status=1).only("failed")
        self.assertIn("there was no progress for too long", failed["message"])
        self.assertEqual((self.names, []), (self.outputs(), self.processes()))
        self.assertIn("a.mkv: no progress for 1 second", self.run_cli("convert", *stalls, "a.mkv", status=1).out)

    def test_no_tool_outlives_a_killed_program(self):
        self.start_and_wait(ENDLESS, 2, "--set", "ConcurrentJobs=1").kill()
        self.assertTrue(wait_until(lambda: not self.processes()))


if __name__ == "__main__":
    unittest.main()
