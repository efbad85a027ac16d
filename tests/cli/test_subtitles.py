"""Which subtitles reach the output, and whether their text survives the way there."""
import unittest

from support import CliTest, codecs, languages, look, movie, streams, tool

CARRY = ("--set", "DisableBuiltinSubtitles=0")
ASS = """[Script Info]
ScriptType: v4.00+
[V4+ Styles]
Format: Name, Fontname, Fontsize
Style: Default,Sans,20
[Events]
Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text
Dialogue: 0,0:00:00.00,0:00:00.90,Default,,0,0,0,,Drawn words
"""
SAMI = "<SAMI><BODY><SYNC Start=0><P Class=ENCC>Sami words<SYNC Start=900><P Class=ENCC>&nbsp;</BODY></SAMI>"
MICRO_DVD = "{0}{20}Frame words\n{25}{40}More words\n{41}{45}Last words\n"


def srt(text):
    """The tool holds an embedded subtitle back until the next begins, so one that nobody looks for comes last."""
    return f"1\n00:00:00,000 --> 00:00:00,900\n{text}\n\n2\n00:00:01,000 --> 00:00:01,900\nThe end\n\n"


class Subtitles(CliTest):
    def place_with_embedded(self, **texts):
        """A movie with a subtitle stream for each language."""
        inputs, options = [], []
        for i, (language, text) in enumerate(texts.items()):
            inputs += ["-i", self.place(text, f".embedded/{i}.{'ass' if text == ASS else 'srt'}")]
            options += ["-map", i + 1, f"-metadata:s:s:{i}", f"language={language}"]
        tool("-i", movie("ac3"), *inputs, "-map", 0, *options, "-c", "copy", self.folder / "Movie.mkv")
        return self.folder / "Movie.mkv"

    def assert_carried(self, result, movie, *texts):
        """The movie's output has these subtitles and no others, one in a stream."""
        output = result.only("finished", movie)["destination"]
        seen = look(output)
        self.assertEqual(["mov_text"] * len(texts), [s["codec_name"] for s in streams(seen, "subtitle")])
        for i, text in enumerate(texts):
            self.assertIn(text, tool("-i", output, "-map", f"0:s:{i}", "-f", "srt", "-").decode())
        return languages(seen, "subtitle")

    def test_embedded_text_is_carried_when_asked_for(self):
        path = self.place_with_embedded(eng=srt("Grüße – привет"), ger=srt("Zwei"))
        self.assert_carried(self.convert(path), path)
        # Each stream is put in front of the one before it, and a file of its own in front of them all.
        self.assertEqual(["ger", "eng"], self.assert_carried(self.convert(path, *CARRY), path, "Zwei", "Grüße – привет"))
        both = self.convert(path, self.place(srt("Outside"), "Movie.srt"), *CARRY)
        self.assert_carried(both, path, "Outside", "Zwei", "Grüße – привет")

    def test_embedded_ass_is_not_carried(self):
        path = self.place_with_embedded(eng=ASS, ger=srt("Plain words"))
        result = self.convert(path, *CARRY)
        self.assertEqual([3], result.only("probed")["subtitleTrackIDs"])
        self.assertIn("Audiotracks: 1 (2)", result.only("probed")["informationString"])
        self.assert_carried(result, path, "Plain words")

    def test_encodings_and_formats_of_subtitle_files(self):
        path = self.place(movie("ac3"), "Movie.mkv")
        russian = srt("- Привет, мир")
        for name, content, setting, words in (
            ("Movie.srt", russian.encode(), 0, "Привет, мир"), ("Movie.srt", russian.encode("utf-8-sig"), 0, "Привет, мир"),
            ("Movie.srt", russian.encode(), 2, "Привет, мир"), ("Movie.srt", russian.encode("cp1251"), 7, "Привет, мир"),
            ("Movie.srt", russian.encode("utf-16"), 3, "Привет, мир"), ("Movie.SRT", srt("Loud words"), 0, "Loud words"),
            ("Movie.ass", ASS, 0, "Drawn words"), ("Movie.ssa", ASS, 0, "Drawn words"), ("Movie.smi", SAMI, 0, "Sami words"),
            ("Movie.sub", MICRO_DVD, 0, "Frame words"),
        ):
            with self.subTest(name=name, setting=setting):
                result = self.convert(path, self.place(content, name), "--set", f"ExternalSubtitleEncoding={setting}")
                self.assert_carried(result, path, words)

    def test_files_and_movies_of_a_folder_come_together(self):
        movies = [self.place(movie("ac3"), f"films/{name}") for name in ("Movie.mkv", "Movie 2.mkv", "Film.mkv")]
        for name in ("Movie 2.srt", "more/Film.srt"):
            self.place(srt("Matched"), f"films/{name}")
        result = self.convert("films")
        for path in movies:
            self.assert_carried(result, path, *["Matched"] * path.name.startswith("Movie"))

    def test_a_broken_subtitle_file_is_named_as_the_reason(self):
        """Also where the tool ends well, as it does if most of what it decoded, the sound, was good."""
        russian = srt("Привет").encode("cp1251")
        for sound, content in (("ac3", b""), ("aac", russian), ("ac3", russian)):
            with self.subTest(sound=sound, content=content):
                path = self.place(movie(sound), "Movie.mkv")
                failed = self.convert(path, self.place(content, "Movie.srt"), status=1).only("failed")
                self.assertEqual("Information", failed["title"])
                self.assertIn("related to the subtitle file you have specified", failed["message"])
                self.assertEqual(["Movie.mkv", "Movie.srt"], self.outputs())

    def test_a_movie_without_sound_gets_none(self):
        path = self.place(movie(), "Movie.mkv")
        sound = ("--set", "IncludeSurroundTrack=1", "--set", "AudioVolume=150")
        result = self.convert(path, self.place(srt("Unheard"), "Movie.srt"), *sound)
        self.assertIsNone(result.only("started")["method"])
        self.assertEqual(["h264"], codecs(look(result.only("finished")["destination"])))


if __name__ == "__main__":
    unittest.main()
