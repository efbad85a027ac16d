"""What becomes of sound: per codec, layout and style, and by the settings that touch it."""
import json
import unittest

from support import CliTest, languages, look, movie, packets, streams

# What the styles make of a track: 0 AAC stereo, 1 AAC 5.1, 2 AC3 stereo, 3 AC3 5.1, 4 a copy.
STYLES = ("compatible", "fast", "custom")
METHODS = {
    "aac 5.1": (4, 4, 4), "ac3 5.1": (0, 4, 4), "eac3 2": (0, 4, 4),  # taken for AC3 unless EAC3Convert is set
    "dts 2": (0, 2, 2), "dts 5.1": (0, 3, 3), "flac 5.1": (0, 2, 3), "vorbis 2": (0, 2, 2), "opus 2": (0, 2, 2),
}
OUTCOMES = {0: ("aac", 2), 1: ("aac", 6), 2: ("ac3", 2), 3: ("ac3", 6)}


class Audio(CliTest):
    def converted(self, source, *arguments):
        """The start of a conversion, and what is in its output."""
        result = self.convert(self.place(source, "Movie.mkv"), "--output", "Movie.mp4", *arguments)
        return result.only("started"), look(self.folder / "Movie.mp4")

    def assert_sound(self, expected, seen):
        self.assertEqual(expected, [(s["codec_name"], s["channels"]) for s in streams(seen, "audio")])

    def test_every_codec_in_every_style(self):
        sources = {track: self.place(movie(track), track.replace(" ", "-") + ".mkv") for track in METHODS}
        before = {track: look(path) for track, path in sources.items()}
        for style in STYLES:
            (self.folder / style).mkdir()
        # All at once: runs share nothing but the settings.
        runs = [self.start("convert", "--json", *sources.values(), "--style", style, "--to", style) for style in STYLES]
        results = [self.finish(run) for run in runs]
        for style, result, methods in zip(STYLES, results, zip(*METHODS.values())):
            self.check_events(result)
            for (track, path), method in zip(sources.items(), methods):
                with self.subTest(track=track, style=style):
                    started = result.only("started", path)
                    self.assertEqual(method, started["method"])
                    seen = look(started["destination"])
                    codec, layout = track.split()
                    self.assert_sound([OUTCOMES.get(method, (codec, 6 if layout == "5.1" else 2))], seen)
                    self.assertAlmostEqual(2.0, float(seen["format"]["duration"]), delta=0.15)
                    for kind in ("video", "audio") if method == 4 else ("video",):
                        self.assertEqual(packets(before[track], kind), packets(seen, kind))

    def test_settings_change_the_method(self):
        for track, style, assignment, method, outcome in (
            ("ac3 5.1", "fast", "AC3Downmix=1", 2, ("ac3", 2)),
            ("dts 5.1", "fast", "DTSDownmix=1", 2, ("ac3", 2)),
            ("eac3 2", "fast", "EAC3Convert=1", 2, ("ac3", 2)),
            ("flac 5.1", "custom", "CustomFLAC51AudioHandling=1", 1, ("aac", 6)),
            ("opus 2", "custom", "CustomUnknownAudioHandling=0", 0, ("aac", 2)),
            ("flac 2", "custom", "CustomFLACAudioHandling=9", 4, ("flac", 2)),  # no such method: a copy is safe
        ):
            with self.subTest(track=track, assignment=assignment):
                started, seen = self.converted(movie(track), "--style", style, "--set", assignment)
                self.assertEqual(method, started["method"])
                self.assert_sound([outcome], seen)

    def test_rate_and_volume(self):
        for track, volume, rate, graph in (
            ("flac 2 96000", 150, "48000", "[0:1]volume=1.50[out]"), ("flac 2 44100", 99, "44100", None),
            ("aac 2 96000", 200, "96000", None),
        ):
            with self.subTest(track=track, volume=volume):
                started, seen = self.converted(movie(track), "--set", f"AudioVolume={volume}")
                self.assertEqual(rate, streams(seen, "audio")[0]["sample_rate"])
                options = dict(zip(started["arguments"], started["arguments"][1:]))
                self.assertEqual(graph, options.get("-filter_complex"))

    def test_second_surround_track(self):
        both = ("--set", "IncludeSurroundTrack=1")
        copied = (*both, "--set", "IncludeSurroundTrackTranscoded=0")
        for tracks, arguments, expected in (
            (("dts 5.1",), both, [("aac", 2), ("ac3", 6)]),
            (("dts 5.1",), copied, [("aac", 2), ("dts", 6)]),
            (("aac 2", "dts 5.1 48000 ger", "ac3 5.1"), both, [("aac", 2), ("ac3", 6)]),
        ):
            with self.subTest(tracks=tracks, arguments=arguments):
                _, seen = self.converted(movie(*tracks), *arguments)
                self.assert_sound(expected, seen)
                self.assertEqual({"eng"}, set(languages(seen, "audio")))

    def test_which_track_is_taken(self):
        codes = ("eng", "ger", "ger", "rus", "fre")
        tracks = (f"{codec} 2 48000 {language}" for codec, language in zip(("ac3", "dts", "aac", "aac", "mp3"), codes))
        source = self.place(movie(*tracks), "Movie.mkv")
        for preferred, arguments, expected in (
            ("de_AT:en", (), 2), ("ja:fr", (), 4), ("ja", (), 2),  # none: the first AAC of all
            ("en", ("--set", "DefaultAudio=8"), 3), ("de", ("--audio", "0", "--set", "DefaultAudio=8"), 0),
        ):
            with self.subTest(preferred=preferred, arguments=arguments):
                self.env["LANGUAGE"] = preferred
                result = self.convert(source, "--output", "Movie.mp4", "--style", "fast", *arguments)
                self.assertIn(f"0:{expected + 1}", result.only("started")["arguments"])
                self.assertEqual([codes[expected]], languages(look(self.folder / "Movie.mp4"), "audio"))
                probed = result.only("probed")
                if "--audio" not in arguments:
                    self.assertEqual(expected, probed["audioTrackInformation"].index(probed["bestLanguage"]))

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
