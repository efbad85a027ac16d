"""Every output is compared with its source: sound movies are called whole, and no damage stays silent.

RAVELIN_ALL_STEPS=1 tries all combinations of reads that fail, not a sample. RAVELIN_UNREADER is the library of
fail_reads.cpp.
"""
import errno
import os
import random
import unittest
from itertools import product

from support import CliTest, movie, ogm, tool

ALL_STEPS = "RAVELIN_ALL_STEPS" in os.environ
PICTURES = 500  # 20 s of 25 pictures a second
CONTAINERS = {
    ".mkv": dict(tracks=("ac3",)), ".webm": dict(tracks=("opus",), video="vp9"), ".mp4": dict(tracks=("aac",)),
    ".mov": dict(tracks=("aac",)), ".avi": dict(tracks=("mp3",), video="mpeg4"),
    ".ts": dict(tracks=("aac",)), ".mpg": dict(tracks=("mp2",), video="mpeg2video"), ".flv": dict(tracks=("aac",)),
    ".wmv": dict(tracks=("mp3",), video="mpeg4", options=("-f", "asf")), ".ogm": {},
}
# The options that make 20 s of pictures and sound odd, but no less whole.
ODD = {
    "variable rate.mkv": "-vf select=lt(n\\,100)+not(mod(n\\,7)) -vsync vfr", "live.mkv": "-f matroska -live 1",
    "pause.flv": "-vf select=lt(n\\,100)+gt(n\\,350) -vsync vfr -ar 44100 -c:a aac", "late.mkv": "-output_ts_offset 5",
    "fragments.mp4": "-movflags frag_keyframe+empty_moov", "reordered.mp4": "-bf 3", "uncompressed.mov": "-c:a pcm_s16le",
    "open gop.mkv": "-bf 3 -x264-params open-gop=1", "packed.avi": "-c:v libxvid -bf 2 -c:a libmp3lame",
}
ALWAYS = 10**6
ERRORS = (errno.EIO, errno.ESTALE, errno.ETIMEDOUT, errno.ENOTCONN, errno.EBADMSG)
READ_TO_THE_FRAME = (".mkv", ".webm", ".mp4", ".mov", ".avi")


def source(suffix):
    if suffix == ".ogm":
        return ogm(20)
    made = dict(CONTAINERS[suffix])
    return movie(*made.pop("tracks"), suffix=suffix, seconds=20, **made)


def damaged(data, kind, at, length, seed=1):
    begin = int(len(data) * at)
    noise = random.Random(seed).randbytes(length)
    middle = {"cut": b"", "zero": bytes(length), "noise": noise, "remove": b""}[kind]
    return data[:begin] + middle + (b"" if kind == "cut" else data[begin + length:])


class Proof(CliTest):
    def verdict(self, path, *arguments):
        """How the conversion of a movie ended: "whole", "damaged", "unknown" or "failed"."""
        result = self.finish(self.start("convert", "--json", path, *arguments))
        self.check_events(result)
        [end] = result.of("finished", "failed", "refused")
        self.assertEqual({"whole": 0, "unknown": 0, "damaged": 3, "failed": 1}[self.word(end)], result.status)
        return end

    @staticmethod
    def word(end):
        return end["receipt"]["verdict"] if end["event"] == "finished" else "failed"

    def test_whole(self):
        for suffix in CONTAINERS:
            with self.subTest(suffix):
                end = self.verdict(self.place(source(suffix), f"Movie{suffix}"))
                self.assertEqual("whole", self.word(end), end)
                picture, sound = end["receipt"]["tracks"]
                self.assertEqual((0, "video", "copied"), (picture["stream"], picture["kind"], picture["action"]))
                self.assertEqual(PICTURES, picture["count"])
                self.assertAlmostEqual(20, sound["seconds"], delta=0.2)
                if suffix in READ_TO_THE_FRAME:
                    self.assertEqual(PICTURES, picture["sourceCount"])

    def test_odd_but_whole(self):
        for name, options in ODD.items():
            with self.subTest(name):
                path = self.folder / name
                tool("-f", "lavfi", "-i", "testsrc2=s=160x120:r=25:d=20", "-f", "lavfi", "-i", "sine=d=20", "-c:v", "libx264",
                     "-preset", "ultrafast", *options.split(), path)
                self.assertEqual("whole", self.word(end := self.verdict(path)), end)
        # An edit list leaves out what lies between the last key picture and the cut.
        tool("-ss", "3.3", "-i", self.folder / "reordered.mp4", "-c", "copy", self.folder / "edited.mp4")
        self.assertEqual("whole", self.word(end := self.verdict(self.folder / "edited.mp4")), end)

    def test_lost_lines_are_fetched(self):
        """The usual arguments lose the last line of a track, and one of two that start together."""
        lines = "".join(f"{i}\n00:00:0{at},000 --> 00:00:0{at + 1},000\nline {i}\n\n" for i, at in enumerate((1, 3, 3, 5), 1))
        path = self.folder / "Movie.mkv"
        tool("-i", source(".mkv"), "-i", self.place(lines, "lines.srt"), "-c", "copy", "-c:s", "srt", path)
        end = self.verdict(path, "--set", "DisableBuiltinSubtitles=0")
        self.assertEqual(("whole", 4, 4), (self.word(end), *[end["receipt"]["tracks"][2][k] for k in ("count", "sourceCount")]))
        self.assertIn("Converted a second time", end["receipt"]["notes"][0])

    def test_codec_of_another_muxer(self):
        path = self.place(movie("ac3", video="hevc"), "Movie.mkv")
        self.assertEqual("whole", self.word(self.verdict(path, "--style", "fast", "--set", "DefaultExtension=1")))

    def test_what_is_left(self):
        whole = source(".mkv").read_bytes()
        self.place(whole[:len(whole) // 2], "cut.mkv")
        output = self.place("the former one", "out.mp4")
        end = self.verdict("cut.mkv", "--output", output)
        self.assertEqual("failed", end["event"])
        self.assertIn("convertWhatIsLeft", end["actions"])
        self.assertEqual("the former one", output.read_text())
        end = self.verdict("cut.mkv", "--output", output, "--keep-damaged", "--set", "AutoRemove=1", "--set", "AutoRemoveType=1")
        self.assertEqual("damaged", self.word(end))
        self.assertAlmostEqual(10, end["receipt"]["tracks"][0]["seconds"], delta=1)
        self.assertEqual(["cut.mkv", "out-0.mp4", "out.mp4"], self.outputs())

    def test_damage(self):
        for suffix in CONTAINERS:
            whole = source(suffix).read_bytes()
            tenth = len(whole) // 10
            kinds = [("cut", 0.9, 0), ("zero", 0.4, tenth), ("remove", 0.4, tenth)]
            if suffix in READ_TO_THE_FRAME:
                kinds += [("cut", 0.99, 0), ("noise", 0.4, tenth), ("noise", 0.4, 8192)]
            for kind, at, length in kinds:
                with self.subTest(suffix, kind=kind, at=at, length=length):
                    path = self.place(damaged(whole, kind, at, length), f"{kind}{at}{suffix}")
                    result = self.finish(self.start("convert", "--json", path, "--set", "AutoRemove=1", "--set",
                                                    "AutoRemoveType=1"))
                    [end] = result.of("finished", "failed", "refused")
                    self.assertNotEqual(("finished", "whole"), (end["event"], end.get("receipt", {}).get("verdict")))
                    self.assertTrue(path.exists(), "the only copy")

    def test_reads_that_fail(self):
        """The tool's or our own, once or for good: whole is only what is so without failures."""
        self.env |= {"LD_PRELOAD": os.environ["RAVELIN_UNREADER"], "ASAN_OPTIONS": "verify_asan_link_order=0"}
        output = self.folder / "out.mp4"
        rng = random.Random(35)
        for suffix in CONTAINERS:
            path = self.place(source(suffix), f"Movie{suffix}")
            self.env.pop("RAVELIN_UNREADABLE", None)
            self.assertEqual("whole", self.word(self.verdict(path, "--output", output)))
            whole = output.read_bytes()
            rows = [list(product([reader], (0, 0.4, 0.97), (1, ALWAYS), ERRORS)) for reader in
                    (("-progress", path), ("convert", path), ("convert", output))]
            for (reader, file), at, times, error in sum(rows, []) if ALL_STEPS else map(rng.choice, rows):
                with self.subTest(suffix, reader=reader, file=file.name, at=at, times=times, error=error):
                    length = len(whole) if file == output else file.stat().st_size
                    output.unlink(missing_ok=True)
                    self.env["RAVELIN_UNREADABLE"] = f"{reader} {int(at * length)} {error} {times} {file.name}"
                    if self.word(self.verdict(path, "--output", output)) == "whole":
                        self.assertEqual((whole, 1), (output.read_bytes(), times))


if __name__ == "__main__":
    unittest.main()
