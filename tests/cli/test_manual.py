"""What tells of the command line: the manual page, the completions, the descriptions of settings, and the page for support."""
import json
import os
import re
import shutil
import subprocess
import unittest
from pathlib import Path

from support import CLI, CliTest

MANUAL = Path(os.environ["RAVELIN_MANUAL"])
COMMANDS = ("probe", "plan", "convert", "watch", "doctor", "settings list", "settings get", "settings set", "settings unset",
            "settings path")


class Manual(CliTest):
    def options(self, command):
        """The long options in the help, with the placeholders of their values."""
        text = self.run_cli(*command.split(), "--help").out
        return dict(re.findall(r"^\s+(?:-\w,)?(--[\w-]+)(?: ([A-Z=]+))?", text, re.MULTILINE))

    def test_says_what_the_help_says(self):
        page = (MANUAL / "ravelin-cli.1").read_text().replace("\\-", "-")
        fish = (MANUAL / "ravelin-cli.fish").read_text()
        zsh = (MANUAL / "_ravelin-cli").read_text()
        for command in COMMANDS:
            section = page.split(f".SS {command}\n")[1].split(".SS")[0].split(".SH")[0]
            function = zsh.split(f"_ravelin-cli_{command.replace(' ', '_')}() {{\n")[1].split("\n}\n")[0]
            for option, value in self.options(command).items():
                with self.subTest(command=command, option=option):
                    self.assertEqual(option != "--help", f"\\fB{option}\\fR" + (f" \\fI{value}\\fR" if value else "") in section)
                    self.assertIn(f"{option}[", function)
                    self.assertRegex(fish, f"seen_subcommand_from {command.split()[-1]}.* -l {option[2:]} ")
        for status in ("0", "1", "2", "3", "130, 143"):
            self.assertIn(f".TP\n{status}\n", page)

    def test_page_is_clean(self):
        if not shutil.which("man"):
            self.skipTest("man is not there")
        page = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", MANUAL / "ravelin-cli.1"], capture_output=True, text=True,
                              env=os.environ | {"LC_ALL": "C.UTF-8", "MANWIDTH": "80", "MANROFFSEQ": ""})
        self.assertEqual("", page.stderr)
        self.assertIn("ravelin-cli convert", page.stdout)

    def completed(self, *words):
        """What bash offers for the last word. It makes words of their own of "=" and what stands beside it."""
        split = [piece for word in words for piece in ([p for p in re.split("(=)", word) if p] or [""])]
        script = f"""source {MANUAL}/ravelin-cli.bash
            compopt() {{ :; }}
            COMP_WORDS=(ravelin-cli "$@"); COMP_CWORD=$#
            _ravelin_cli; printf '%s\\n' "${{COMPREPLY[@]}}" """
        run = subprocess.run(["bash", "-u", "-c", script, "bash", *split], capture_output=True, text=True, cwd=self.folder)
        self.assertEqual("", run.stderr)
        return set(run.stdout.split("\n")) - {""}

    def test_bash(self):
        (self.folder / "Some movies").mkdir()
        self.place("", "Some.mkv")
        for words, offered in (
            (("",), {"probe", "plan", "convert", "watch", "settings", "doctor"}), (("con",), {"convert"}),
            (("convert", "--ke"), {"--keep-damaged"}), (("probe", "--ke"), set()), (("settings", "list", "--d"), {"--describe"}),
            (("convert", "So"), {"Some movies", "Some.mkv"}), (("convert", "--to", "So"), {"Some movies"}),
            (("convert", "--to=So"), {"Some movies"}), (("convert", "--style", "c"), {"compatible", "custom"}),
            (("convert", "--style="), {"compatible", "custom", "fast"}), (("watch", "So"), {"Some movies"}),
            (("plan", "--set", "ConcurrentJ"), {"ConcurrentJobs=", "ConcurrentJobCount="}),
            (("convert", "--set", "AutoAdd="), set()), (("convert", "--audio", ""), set()),
            (("settings", "g"), {"get"}), (("settings", "--json", "u"), {"unset"}), (("settings", "get", "AutoC"), {"AutoClean"}),
            (("settings", "set", "AutoClean", "A"), set()), (("convert", "Some.mkv", "--styl"), {"--style"}),
        ):
            with self.subTest(words):
                self.assertEqual(offered, self.completed(*words))

    def test_fish_and_zsh(self):
        for shell, check in (("fish", ["-n"]), ("zsh", ["-n"])):
            if not shutil.which(shell):
                self.skipTest(f"{shell} is not there")
            script = MANUAL / {"fish": "ravelin-cli.fish", "zsh": "_ravelin-cli"}[shell]
            self.assertEqual("", subprocess.run([shell, *check, script], capture_output=True, text=True).stderr)
        for line, offered in (("ravelin-cli con", {"convert"}), ("ravelin-cli convert --style c", {"compatible", "custom"}),
                              ("ravelin-cli settings u", {"unset"}), ("ravelin-cli settings get AutoC", {"AutoClean"})):
            with self.subTest(line):
                script = f"source {MANUAL}/ravelin-cli.fish; complete -C '{line}'"
                run = subprocess.run(["fish", "--no-config", "-c", script], capture_output=True, text=True, cwd=self.folder)
                self.assertEqual(offered, {each.split("\t")[0] for each in run.stdout.splitlines()})


class Descriptions(CliTest):
    def test_settings(self):
        self.run_cli("settings", "set", "AACBitrate", "3")
        described = {e["key"]: e for e in map(json.loads, self.run_cli("settings", "list", "--describe", "--json").out.splitlines())}
        for key, facts in {
            "AACBitrate": {"value": 3, "isDefault": False, "default": 1, "type": "integer"},
            "ConversionPreset": {"meaning": "Conversion style", "allowed": [{"value": 0, "word": "compatible"},
                                                                            {"value": 1, "word": "fast"}, {"value": 2, "word": "custom"}]},
            "ProveResults": {"default": 1, "type": "boolean", "isDefault": True}, "ConcurrentJobCount": {"allowed": None, "default": 0},
            "DestinationNames": {"type": "texts", "default": []},
        }.items():
            with self.subTest(key):
                self.assertLessEqual(facts.items(), {k: v for k, v in described[key].items()}.items())
        text = self.run_cli("settings", "list", "--describe").out
        self.assertIn("ConversionPreset = 0  (default)\n    Conversion style.\n"
                      "    Value: one of 0 = compatible, 1 = fast, 2 = custom; default: 0.\n", text)
        self.assertEqual(len(described), len(re.findall(r"^\w+ = ", text, re.MULTILINE)))


class Doctor(CliTest):
    def doctor(self, *arguments, status=0):
        """What was found, by topic; of several folders the last."""
        lines = self.run_cli("doctor", "--json", *arguments, status=status).out.splitlines()
        return {finding["topic"]: finding for finding in map(json.loads, lines)}

    def test_healthy(self):
        self.run_cli("settings", "set", "AutoAdd", "1")
        self.run_cli("settings", "set", "DestinationNames", '["My secret films"]')
        found = self.doctor(self.folder)
        self.assertEqual("fine", found["tool"]["state"])
        self.assertRegex(found["tool"]["text"], r"^ffmpeg \d")
        self.assertEqual("AutoAdd=1, DestinationNames=1 entry", found["settings"]["text"])
        self.assertIn("locks work", found["folder"]["text"])
        text = self.run_cli("doctor").out
        self.assertEqual([], [line for line in text.splitlines() if not re.match(r"[a-zA-Z]+ +(fine|limited) +\S", line)])
        self.assertNotIn("secret", text)
        self.assertEqual([], [entry for entry in self.folder.rglob("*doctor*")])

    def test_sick(self):
        for tool, says in (("exit 0", "does not run"), ("echo Hello", "does not run"), (None, "missing")):
            with self.subTest(tool):
                self.use_tool(tool or "")
                if tool is None:
                    (self.folder / ".resources/ffmpeg").unlink()
                found = self.doctor(status=1)["tool"]
                self.assertEqual("broken", found["state"])
                self.assertIn(says, found["text"])
                self.assertNotIn(str(self.folder), found["text"])
        self.place("{", self.settings_file)
        self.assertEqual("broken", self.doctor(status=1)["settings"]["state"])
        self.settings_file.unlink(missing_ok=True)
        del self.env["RAVELIN_RESOURCES"]
        self.assertEqual("limited", self.doctor(self.folder / "gone")["folder"]["state"])


if __name__ == "__main__":
    unittest.main()
