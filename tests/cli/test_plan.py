"""What is said of a movie before it is converted, and whether the output is then like that."""
import json
import struct
import unittest

from support import CliTest, look, movie, tool

SRT = "1\n00:00:00,000 --> 00:00:00,900\nWords\n\n2\n00:00:01,000 --> 00:00:01,900\nThe end\n\n"
META = ";FFMETADATA1\ntitle=The Movie\n" + "".join(
    f"[CHAPTER]\nTIMEBASE=1/1\nSTART={i}\nEND={i + 1}\ntitle=Chapter {i}\n" for i in range(2))
# A display set of picture subtitles that clears the screen.
PICTURES = b"".join(struct.pack(">2sIIBH", b"PG", 90000, 0, kind, len(data)) + data for kind, data in (
    (0x16, struct.pack(">HHBHBBBB", 160, 120, 0x10, 0, 0x80, 0, 0, 0)), (0x80, b"")))
CARRY = ("--audio", "0", "--set", "DisableBuiltinSubtitles=0", "--set", "IncludeSurroundTrack=1")


class Plan(CliTest):
    def place_everything(self):
        """A movie with surround sound, a commentary, text and picture subtitles, a cover, a font, chapters and a title."""
        self.place(movie("ac3 5.1", "aac", "dts 2 48000 ger", options=("-metadata:s:a:1", "title=Director's\nStream #0:9: Audio: ac3")),
                   ".parts/movie.mkv")
        parts = {name: self.place(content, f".parts/{name}") for name, content in (
            ("1.srt", SRT), ("2.srt", SRT), ("3.sup", PICTURES), ("meta", META), ("font.ttf", "font"))}
        inputs = [self.folder / ".parts/movie.mkv", *parts.values()][:5]
        tool(*[word for path in inputs for word in ("-i", path)], *"-map 0 -map 1 -map 2 -map 3 -map_metadata 4 -c copy".split(),
             "-disposition:a:1", "comment", "-metadata:s:s:0", "language=eng", "-metadata:s:s:1", "language=ger",
             "-attach", parts["font.ttf"], "-metadata:s:t:0", "mimetype=font/ttf", self.folder / "Movie.mkv")
        return self.folder / "Movie.mkv"

    def plans(self, *arguments, status=0):
        return [json.loads(line) for line in self.run_cli("plan", "--json", *arguments, status=status).out.splitlines()]

    def test_the_output_is_as_planned(self):
        path, subtitles = self.place_everything(), self.place(SRT, "Movie.srt")
        before = self.outputs()
        [plan] = self.plans(path, subtitles, *CARRY)
        self.assertEqual(before, self.outputs())
        self.assertEqual({"file", "accepted", "messages", "tracks", "arguments", "fileSize", "runtimeSeconds", "estimatedOutputBytes"},
                         set(plan))
        self.assertEqual((path.stat().st_size, 2), (plan["fileSize"], plan["runtimeSeconds"]))
        self.assertEqual(
            [(0, "video", "copied"), (1, "audio", "converted"), (1, "audio", "copied"), (2, "audio", "leftOut"),
             (3, "audio", "leftOut"), (4, "subtitle", "converted"), (5, "subtitle", "converted"), (6, "subtitle", "leftOut"),
             (7, "attachment", "leftOut"), (None, "subtitle", "converted")],
            [(t["stream"], t["kind"], t["action"]) for t in plan["tracks"]])
        for track in plan["tracks"]:
            self.assertEqual((track["action"] == "converted", track["action"] == "leftOut"),
                             (track["to"] is not None, track["reason"] is not None))
        self.assertEqual("Director's\nStream #0:9: Audio: ac3", plan["tracks"][3]["title"])

        result = self.convert(path, subtitles, *CARRY)
        self.assertEqual(plan["tracks"], result.only("queued")["plan"])
        started = result.only("started")
        words = {started["destination"]: "OUTPUT", started["arguments"][started["arguments"].index("-progress") + 1]: "PROGRESS"}
        self.assertEqual(plan["arguments"], [words.get(word, word) for word in started["arguments"]])
        seen = look(started["destination"])
        self.assertLess(0.5, plan["estimatedOutputBytes"] / int(seen["format"]["size"]))
        self.assertGreater(2, plan["estimatedOutputBytes"] / int(seen["format"]["size"]))
        # The subtitle file, the German and the English subtitles. A track of the names of chapters follows.
        self.assertEqual([("h264", None), ("aac", "eng"), ("ac3", "eng"), ("mov_text", "und"), ("mov_text", "ger"), ("mov_text", "eng")],
                         [(s["codec_name"], s["tags"].get("language") if s["codec_type"] != "video" else None)
                          for s in seen["streams"] if s["codec_type"] != "data"])
        self.assertEqual(("The Movie", 2), (seen["format"]["tags"]["title"], len(seen["chapters"])))

    def test_in_words(self):
        path = self.place(movie("ac3 5.1", "dts 2 48000 ger"), "Movie.mkv")
        result = self.run_cli("plan", "--style", "fast", "--audio", 1, "--set", "AC3StereoBitrate=0", path)
        self.assertEqual(["Movie.mkv", "  Picture: H.264 160x120, copied",
                          "  Sound: English AC3 5.1, left out (only one audio track is carried)",
                          "  Sound: German DTS stereo becomes AC3 stereo, 160 kb/s"], result.out.splitlines())

    def test_refusals(self):
        self.place(movie("ac3"), "films/Movie.mkv")
        self.place("no movie", "films/Text.mkv")
        plans = self.plans("films", "gone.mkv", status=1)
        self.assertEqual([("gone.mkv", False), ("Movie.mkv", True), ("Text.mkv", False)],
                         [(p["file"].rpartition("/")[2], p["accepted"]) for p in plans])
        self.assertIn("There is no file", plans[0]["messages"][0]["message"])
        [none] = self.plans("--audio", 1, "films/Movie.mkv", status=1)
        self.assertEqual((False, "has 1 audio track, none with the position 1"),
                         (none["accepted"], none["messages"][-1]["message"].partition("' ")[2].rstrip(".")))
        self.run_cli("plan", self.place(SRT, "Alone.srt"), status=2)


if __name__ == "__main__":
    unittest.main()
