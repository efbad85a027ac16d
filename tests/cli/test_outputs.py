"""What outputs are: the picture untouched, in the right file, under the right name, in the right order."""
import unittest
from pathlib import Path

from support import CliTest, codecs, look, movie, packets, streams, tool

LONGEST = 255 - len(".mkv")
CHAPTERS = "[CHAPTER]\nTIMEBASE=1/1\nSTART=0\nEND=1\ntitle=Tür 0\n[CHAPTER]\nTIMEBASE=1/1\nSTART=1\nEND=2\ntitle=Tür 1\n"


def frames(path):
    return tool("-i", path, "-map", "0:v:0", "-f", "streamhash", "-")


class Contents(CliTest):
    def test_codecs(self):
        for codec, tag, warnings in (("h264", "avc1", []), ("mpeg4", "mp4v", []), ("hevc", "hvc1", ["hevcvideowarning"]),
                                     ("vp9", "vp09", ["wrongvideowarning"])):
            with self.subTest(codec=codec):
                path = self.place(movie("ac3", video=codec), f"{codec}.mkv")
                result = self.convert(path)
                self.assertEqual(codec, result.only("probed")["videoTrackCodec"])
                self.assertEqual(warnings, [m["key"] for m in result.only("probed")["messages"]])
                self.assertEqual(warnings, [m["key"] for m in result.of("message")])
                seen = look(result.only("finished")["destination"])
                self.assertEqual((codec, tag), tuple(streams(seen, "video")[0][k] for k in ("codec_name", "codec_tag_string")))
                self.assertEqual(packets(look(path), "video"), packets(seen, "video"))

    def test_containers(self):
        for suffix, video, sound, expected in (
            (".mp4", "h264", "aac", "aac"), (".mov", "hevc", "ac3", "ac3"), (".ts", "h264", "aac", "aac"),
            (".avi", "mpeg4", "mp3", "ac3"), (".webm", "vp9", "opus", "ac3"),
        ):
            with self.subTest(suffix=suffix):
                path = self.place(movie(sound, video=video, suffix=suffix), f"from{suffix}")
                output = self.convert(path, "--style", "fast").only("finished")["destination"]
                self.assertEqual([video, expected], codecs(look(output)))
                self.assertEqual(frames(path), frames(output))

    def test_cover_is_not_the_picture_and_chapters_stay(self):
        cover = self.place(tool("-f", "lavfi", "-i", "color=size=64x64", "-frames:v", 1, "-f", "mjpeg", "-"), ".cover.jpg")
        path = self.folder / "Movie.mkv"
        tool("-i", movie("ac3"), "-i", self.place(f";FFMETADATA1\n{CHAPTERS}", ".chapters"), "-map", 0, "-map_metadata", 1,
             "-c", "copy", "-attach", cover, "-metadata:s:t", "mimetype=image/jpeg", path)
        seen = look(self.convert(path).only("finished")["destination"])
        self.assertEqual(["h264", "aac"], codecs(seen)[:2])
        self.assertEqual(1, len(streams(seen, "video")))
        self.assertEqual(packets(look(path), "video"), packets(seen, "video"))
        chapters = [(chapter["tags"]["title"], float(chapter["start_time"])) for chapter in seen["chapters"]]
        self.assertEqual([("Tür 0", 0.0), ("Tür 1", 1.0)], chapters)


class Names(CliTest):
    def test_unusual_names(self):
        stems = ["two  blanks ", "it's \"quoted\" `so`", "100% %d %03d %s %@ %1", "a:b", "-y", "line\nbreak", "Süße – 映画 🎬",
                 "$(touch run) & ; | *?", "back\\slash", "v1.0.final", "[1080p] {x}", "x" * LONGEST, "ü" * (LONGEST // 2)]
        (self.folder / "out").mkdir()
        paths = [self.place(movie("ac3"), f"in/{stem}.mkv") for stem in stems]
        result = self.convert(*paths, "--to", "out")
        for stem, path in zip(stems, paths):
            with self.subTest(stem=stem):
                self.assertEqual(str(self.folder / "out" / f"{stem}.mp4"), result.only("finished", path)["destination"])
        self.assertEqual(sorted([f"in/{s}.mkv" for s in stems] + [f"out/{s}.mp4" for s in stems]), self.outputs())

    def test_existing_files_stay_unless_named(self):
        """Also when it is a movie of the same run that takes the name."""
        sources = [self.place(movie("ac3", seconds=seconds), f"{seconds}/Movie.mkv") for seconds in (2, 3)]
        mine = self.place("mine", "Movie.mp4")
        result = self.convert(*sources, "--to", ".")
        self.assertEqual("mine", mine.read_text())
        for source, name, seconds in zip(sources, ("Movie-0.mp4", "Movie-1.mp4"), (2, 3)):
            self.assertEqual(str(self.folder / name), result.only("finished", source)["destination"])
            self.assertEqual(25 * seconds, len(packets(look(self.folder / name), "video")))
        self.convert(sources[0], "--output", mine)
        self.assertEqual(["h264", "aac"], codecs(look(mine)))
        self.assertEqual(3, len(list(self.folder.glob("*.mp4"))))


class Run(CliTest):
    def test_order_is_as_given_and_in_folders_by_name(self):
        for name in ("z.mkv", "films/b.mkv", "films/a/2.mkv", "films/a/10.mkv", "films/c.txt", "m.mkv"):
            self.place(movie("ac3"), name)
        result = self.convert("z.mkv", "films", "m.mkv")
        for event in ("queued", "started", "finished"):
            self.assertEqual(["z.mkv", "10.mkv", "2.mkv", "b.mkv", "m.mkv"], result.files(event))

    def test_progress(self):
        """The tool reads as fast as a player would."""
        self.use_tool('exec "$real" ${converts:+-re} "$@"')
        result = self.convert(self.place(movie("ac3 2 48000 ger", "mp3", seconds=3), "Movie.mkv"), "--set", "DefaultAudio=3")
        found = result.of("progress")
        percents = [e["percent"] for e in found]
        self.assertTrue(found)
        self.assertLessEqual(len(found), result.only("finished")["seconds"] + 1)
        self.assertEqual(sorted(percents), percents)
        self.assertTrue(any(10 < percent < 100 for percent in percents), percents)
        self.assertRegex(found[-1]["status"], r"^Status: Converting   Audio:  ger \(ac3\) \(Discarded:  eng \(mp3\)\)   ETA: ")
        self.assertRegex(result.only("finished")["status"], r"^Status: Finished \[Conversion took: \d+s\]$")
        self.assertGreater(result.only("finished")["seconds"], 2)

    def test_source_goes_to_the_trash_when_asked_for(self):
        self.convert(self.place(movie("ac3"), "Movie.mkv"), "--set", "AutoRemove=1", "--set", "AutoRemoveType=0")
        self.assertEqual(["Movie.mp4"], self.outputs())
        self.assertEqual(1, len(list(self.data.glob("Trash/files/Movie.mkv"))))


if __name__ == "__main__":
    unittest.main()
