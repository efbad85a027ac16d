"""What becomes of sound: per codec, layout and style, and by the settings that touch it."""
import json
import unittest

from support import CliTest, languages, look, movie, packets, streams

# What the styles make of a track: 0 AAC stereo, 1 AAC 5.1, 2 AC3 stereo, 3 AC3 5.1, 4 a copy.
STYLES = ("compatible", "fast", "custom")
METHODS = {
    "aac 5.1": (4, 4, 4), "ac3 5.1": (0, 4, 4), "eac3 2": (0, 4, 4),  # taken for AC3 unless EAC3Convert is set
    "dts 5.1": (0, 3, 3), "flac 5.1": (0, 2, 1), "vorbis 2": (0, 2, 2), "opus 2": (0, 2, 2),
}
OUTCOMES = {0: ("aac", 2), 1: ("aac", 6), 2: ("ac3", 2), 3: ("ac3", 6)}


class Audio(CliTest):
    def test_every_codec_in_every_style(self):
        sources = {track: self.place(movie(track), track.replace(" ", "-") + ".mkv") for track in METHODS}
        before = {track: look(path) for track, path in sources.items()}
        for style in STYLES:
            (self.folder / style).mkdir()
        # All at once: runs share nothing but the settings.
        runs = [self.start("convert", "--json", *sources.values(), "--style", style, "--to", style,
                           "--set", "CustomFLAC51AudioHandling=1") for style in STYLES]
        results = [self.finish(run) for run in runs]
        for style, result, methods in zip(STYLES, results, zip(*METHODS.values())):
            self.check_events(result)
            for (track, path), method in zip(sources.items(), methods):
                with self.subTest(track=track, style=style):
                    started = result.only("started", path)
                    self.assertEqual(method, started["method"])
                    seen = look(started["destination"])
                    codec, layout = track.split()
                    sound = OUTCOMES.get(method, (codec, 6 if layout == "5.1" else 2))
                    self.assertEqual([sound], [(s["codec_name"], s["channels"]) for s in streams(seen, "audio")])
                    self.assertAlmostEqual(2.0, float(seen["format"]["duration"]), delta=0.15)
                    for kind in ("video", "audio") if method == 4 else ("video",):
                        self.assertEqual(packets(before[track], kind), packets(seen, kind))

    def test_volume_rate_and_second_surround_track(self):
        source = self.place(movie("flac 2 96000", "dts 5.1 48000 ger", "ac3 5.1"), "Movie.mkv")
        more = ("--audio", "0", "--set", "AudioVolume=150", "--set", "IncludeSurroundTrack=1")
        sound = streams(look(self.convert(source, *more).only("finished")["destination"]), "audio")
        self.assertEqual([("aac", 2, "48000"), ("ac3", 6, "48000")],
                         [(s["codec_name"], s["channels"], s["sample_rate"]) for s in sound])
        self.assertEqual("eng", sound[1]["tags"]["language"])

    def test_which_track_is_taken(self):
        spoken = ("eng", "ger", "ger", "fre")
        tracks = (f"{codec} 2 48000 {language}" for codec, language in zip(("ac3", "dts", "aac", "mp3"), spoken))
        source = self.place(movie(*tracks), "Movie.mkv")
        for preferred, arguments, taken in (("de_AT:en", (), 2), ("ja:fr", (), 3), ("de", ("--audio", "0"), 0)):
            with self.subTest(preferred=preferred, arguments=arguments):
                self.env["LANGUAGE"] = preferred
                result = self.convert(source, "--output", "Movie.mp4", "--style", "fast", *arguments)
                self.assertEqual([spoken[taken]], languages(look(self.folder / "Movie.mp4"), "audio"))
                best = result.only("probed")["bestLanguage"]
                self.assertEqual(taken or 2, result.only("probed")["audioTrackInformation"].index(best))

    def test_languages_of_a_locale_in_another_encoding(self):
        source = self.place(movie("ac3", "ac3 2 48000 ger"), "Movie.mkv")
        for variable in ("LC_ALL", "LANG"):
            with self.subTest(variable):
                for name in ("LANG", "LANGUAGE", "LC_ALL", "LC_CTYPE"):
                    self.env.pop(name, None)
                self.env[variable] = "de_DE.ISO-8859-1"
                result = self.run_cli("probe", "--json", source)
                self.assertIn(": ger (", json.loads(result.out)["bestLanguage"])
                self.assertEqual("", result.err)


if __name__ == "__main__":
    unittest.main()
