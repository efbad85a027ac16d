"""Every output is compared with its source: sound movies are called whole, and no damage stays silent."""
import random
import unittest
from pathlib import Path

from support import CliTest, movie, tool

PICTURES = 500  # 20 s of 25 pictures a second
CONTAINERS = {
    ".mkv": dict(tracks=("ac3",)), ".webm": dict(tracks=("opus",), video="vp9"), ".mp4": dict(tracks=("aac",)),
    ".mov": dict(tracks=("aac",)), ".avi": dict(tracks=("mp3",), video="mpeg4"),
    ".ts": dict(tracks=("aac",)), ".mpg": dict(tracks=("mp2",), video="mpeg2video"), ".flv": dict(tracks=("aac",)),
    ".wmv": dict(tracks=("mp3",), video="mpeg4", options=("-f", "asf")),
}
READ_TO_THE_FRAME = (".mkv", ".webm", ".mp4", ".mov")


def source(suffix):
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

    def test_damage(self):
        for suffix in CONTAINERS:
            whole = source(suffix).read_bytes()
            for kind, at, length in (("cut", 0.5, 0), ("cut", 0.9, 0), ("zero", 0.4, len(whole) // 10),
                                     ("noise", 0.4, len(whole) // 10), ("remove", 0.4, len(whole) // 10)):
                with self.subTest(suffix, kind=kind, at=at, length=length):
                    path = self.place(damaged(whole, kind, at, length), f"{kind}{at}{suffix}")
                    result = self.finish(self.start("convert", "--json", path, "--set", "AutoRemove=1", "--set",
                                                    "AutoRemoveType=1"))
                    [end] = result.of("finished", "failed", "refused")
                    self.assertNotEqual(("finished", "whole"), (end["event"], end.get("receipt", {}).get("verdict")))
                    self.assertTrue(path.exists(), "the only copy")


if __name__ == "__main__":
    unittest.main()
