"""The settings command, settings of one run, the settings file in bad times, and the command line itself."""
import fcntl
import json
import os
import pty
import struct
import subprocess
import termios
import unittest
from contextlib import suppress

from support import CLI, CliTest, movie

PROBED = {"file", "accepted", "fileName", "informationString", "videoTrackCodec", "videoTrackID", "fileSize", "runtimeSeconds",
          "audioTrackInformation", "sampleRates", "subtitleTrackIDs", "bestLanguage", "messages"}


class Settings(CliTest):
    def settings(self, *arguments, status=0):
        return self.run_cli("settings", *arguments, status=status)

    def value(self, key):
        return json.loads(self.settings("--json", "get", key).out)

    def stored(self):
        return json.loads(self.settings_file.read_text())

    def test_set_get_unset(self):
        for key, default, text, value in (
            ("AudioVolume", 100, "-5", -5), ("EAC3Convert", 0, "1", 1),  # has no registered default
            ("DestinationNames", [], '["Film", "Süße – \\"x\\""]', ["Film", 'Süße – "x"']),
        ):
            with self.subTest(key=key, text=text):
                unset = {"key": key, "value": default, "isDefault": True}
                self.assertEqual(unset, self.value(key))
                self.assertEqual("", self.settings("set", key, text).out)
                self.assertEqual({"key": key, "value": value, "isDefault": False}, self.value(key))
                self.assertEqual(value, self.stored()[key])
                self.settings("unset", key)
                self.assertEqual(unset, self.value(key))
                self.assertNotIn(key, self.stored())

    def test_list_and_path(self):
        self.assertEqual(f"{self.settings_file}\n", self.settings("path").out)
        self.settings("set", "AACBitrate", "3")
        listed = [json.loads(line) for line in self.settings("list", "--json").out.splitlines()]
        self.assertEqual(len(listed), len({entry["key"] for entry in listed}))
        self.assertEqual({"AACBitrate": 3}, {e["key"]: e["value"] for e in listed if not e["isDefault"]})
        lines = self.settings("list").out.splitlines()
        self.assertEqual([e["key"] for e in listed], [line.split(" ")[0] for line in lines])
        self.assertLessEqual({"AACBitrate = 3", "FixSubtitleDuration = 1  (default)"}, set(lines))

    def test_refused_values_and_keys(self):
        tomorrows = {"FromTomorrow": {"a": [1]}, "AudioVolume": 70}
        self.place(json.dumps(tomorrows), self.settings_file)
        self.settings("set", "AudioVolume", "80")
        for arguments, says in (
            (("set", "AudioVolume", "loud"), "'loud'"), (("set", "AudioVolume", ""), "whole number"),
            (("set", "DestinationNames", "Film"), "'Film'"), (("set", "AudioVolumes", "1"), "AudioVolume"),
            (("get", "audiovolume"), "AudioVolume"), (("unset", "ConcurentJobs"), "ConcurrentJobs"),
        ):
            with self.subTest(arguments):
                result = self.settings(*arguments, status=2)
                self.assertIn(says, result.err)
                self.assertEqual("", result.out)
        self.assertEqual(tomorrows | {"AudioVolume": 80}, self.stored())

    def test_settings_of_one_run(self):
        """They go before what is stored, and are not stored."""
        source = self.place(movie("ac3"), "Movie.mkv")
        self.settings("set", "AACBitrate", "3")
        self.settings_file.write_text(json.dumps(self.stored() | {"quillonlib_1.0.0_usages": 99}))
        for arguments, rate in (((), "192k"), (("--set", "AACBitrate=0", "--set", "AACBitrate=2"), "160k"),
                                (("--set", "ConversionPreset=1", "--style", "compatible"), "192k")):
            with self.subTest(arguments):
                used = self.convert(source, *arguments).only("started")["arguments"]
                self.assertEqual(rate, used[used.index("-b:a") + 1])
        self.assertEqual(3, self.stored()["AACBitrate"])
        self.assertNotIn("ConversionPreset", self.stored())
        self.assertEqual(3, self.stored()["quillonlib_usages"], "the runs are counted")
        self.assertNotIn("quillonlib_askdate", self.stored(), "nobody is there to be asked")

    def test_a_look_leaves_them_alone(self):
        report = self.data / "example.ravelin.Ravelin/DiagnosticReports/Ravelin_2024-01-01-000000_1.crash"
        report.parent.mkdir(parents=True)
        report.write_text("an old crash")
        self.run_cli("probe", self.place(movie("aac"), "Movie.mkv"))
        self.assertFalse(self.settings_file.exists())

    def test_damaged_or_impossible_file(self):
        self.place("{", self.settings_file)
        first = self.settings("get", "AudioVolume")
        self.assertEqual(("100\n", 1), (first.out, len(first.err.splitlines())), first.err)
        self.assertEqual("", self.settings("set", "AudioVolume", "90").err, "it is said once")
        self.env["XDG_CONFIG_HOME"] = "/proc/nowhere"  # There is no place to store anything at all.
        self.assertIn("/proc/nowhere", self.settings("set", "AudioVolume", "90", status=1).err)
        self.convert(self.place(movie("ac3"), "Movie.mkv"))


class CommandLine(CliTest):
    def test_wrong_usage_starts_nothing(self):
        for name in ("a.mkv", "b.mkv"):
            self.place(movie("ac3"), name)
        for line, says in (
            ("", "--help"), ("transmogrify", "transmogrify"), ("settings", "settings --help"), ("convert", "PATH"), ("probe", "MOVIE"),
            ("convert --bogus a.mkv", "--bogus"), ("convert --to . --output c.mp4 a.mkv", "--output"),
            ("convert --output c.mp4 a.mkv b.mkv", "--output"), ("convert --output c.mp4 .", "--output"),
            ("convert --output c.mkv a.mkv", "c.mkv"), ("convert --audio one a.mkv", "--audio"),
            ("convert --audio -1 a.mkv", "--audio"), ("convert --style slow a.mkv", "slow"),
            ("convert --set AudioVolum=1 a.mkv", "AudioVolume"), ("probe --set AudioVolum=1 a.mkv", "AudioVolume"),
            ("convert --set AudioVolume a.mkv", "KEY=VALUE"), ("settings get", "KEY"), ("settings set AudioVolume", "VALUE"),
            ("settings list more", "more"),
        ):
            with self.subTest(line):
                result = self.run_cli(*line.split(), status=2)
                self.assertEqual("", result.out)
                self.assertEqual(2, len(result.err.splitlines()), result.err)
                self.assertIn(says, result.err)
                self.assertIn("--help'", result.err.splitlines()[1])
        self.assertEqual(["a.mkv", "b.mkv"], self.outputs())

    def test_options_before_movies(self):
        for name in ("a.mkv", "-b.mkv"):
            self.place(movie("ac3"), name)
        for options in (("--set", "AACBitrate=2"), ("--style", "fast"), ("--audio", "0"), ("--to", "."), ("--quiet",)):
            with self.subTest(options):
                self.assertEqual(2, len(self.convert(*options, "--", "-b.mkv", "a.mkv").of("finished")))

    def test_probe(self):
        source = self.place(movie("aac 2 44100 ger", "ac3 5.1"), "Movie.mkv")
        bad = self.place("words", "bad.mkv")
        good, refused = map(json.loads, self.run_cli("probe", "--json", source, bad, status=1).out.splitlines())
        self.assertEqual((PROBED, {"file", "accepted", "messages"}), (set(good), set(refused)))
        expected = {"file": str(source), "accepted": True, "runtimeSeconds": 2, "fileSize": source.stat().st_size, "messages": [],
                    "audioTrackInformation": ["#1: ger (aac)", "#2: eng (ac3) [5.1]"], "sampleRates": [44100, 48000],
                    "videoTrackID": 0, "bestLanguage": "#2: eng (ac3) [5.1]", "subtitleTrackIDs": []}
        self.assertEqual(expected, {key: good[key] for key in expected})
        text = self.run_cli("probe", source).out
        for part in ("Movie.mkv", good["informationString"], *good["audioTrackInformation"]):
            self.assertIn(part, text)
        self.assertIn(f'{good["bestLanguage"]}  (preselected)\n', text)

    def test_what_people_read(self):
        source = self.place(movie("ac3"), "Movie.mkv")
        started, ended = self.run_cli("convert", source).out.splitlines()
        self.assertIn("Movie.mkv", started)
        self.assertIn(str(self.folder / "Movie.mp4"), ended)
        quiet = self.run_cli("convert", "--quiet", source)
        self.assertEqual(("", ""), (quiet.out, quiet.err))
        for command in ((), ("convert",), ("probe",), ("settings",), ("settings", "set")):
            with self.subTest(command):
                self.assertIn(" ".join(("ravelin-cli", *command)), self.run_cli(*command, "--help").out)

    def test_control_characters_of_names_are_escaped(self):
        name = "a\nFinished b\x1b[2J\r\u202e"
        shown = "a\\nFinished b\\x1b[2J\\r\\u202e"
        source = self.place(movie("ac3"), f"{name}.mkv")
        self.place("words", f"bad {name}.mkv")
        self.place("words", f"{name}.txt")
        for arguments, status, ending in (
            (("convert", source), 0, "mp4"), (("convert", "--audio", "7", source), 1, "mkv"), (("probe", source), 0, "mkv"),
            (("plan", source), 0, "mkv"), (("convert", f"bad {name}.mkv"), 1, "mkv"), (("probe", f"bad {name}.mkv"), 1, "mkv"),
            (("convert", f"{name}.txt"), 1, "txt"), (("probe", f"none {name}.mkv"), 1, "mkv"),
        ):
            with self.subTest(arguments):
                result = self.run_cli(*arguments, status=status)
                text = result.out + result.err
                self.assertIn(f"{shown}.{ending}", text)
                self.assertFalse([c for c in text if c != "\n" and not c.isprintable()], text)
                self.assertNotIn("\nFinished b", text)

    def test_what_people_read_on_a_terminal(self):
        """A line that redraws in place, as wide as the terminal at the most."""
        self.use_tool('exec "$real" ${converts:+-re} "$@"')
        source = self.place(movie("ac3"), f"{'long ' * 20}映.mkv")
        terminal, programs_end = pty.openpty()
        fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 60, 0, 0))
        run = subprocess.Popen([CLI, "convert", source], stdout=programs_end, env=self.env)
        os.close(programs_end)
        text = b""
        with suppress(OSError):  # The program has ended.
            while piece := os.read(terminal, 1 << 16):
                text += piece
        os.close(terminal)
        self.assertEqual(0, run.wait())
        *drawn, ended = text.decode().split("\r\x1b[J")
        self.assertEqual(f"long long…g 映.mkv [{'.' * 20}]   0%  ETA 300m 0s", drawn[0])
        self.assertRegex(drawn[-1], r" \[#+\.*\] +\d+%  ETA \d+s$")
        self.assertRegex(ended, r"^Finished .* -> .*\.mp4 \(\ds\)\. Whole: .*\r\n$")


if __name__ == "__main__":
    unittest.main()
