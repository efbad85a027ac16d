#!/usr/bin/python3
"""Tests the report of a crash. Usage: tst_CrashReport.py CRASH_PROBE"""
import os
import re
import resource
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from datetime import datetime, timezone
from pathlib import Path

PROBE = os.path.abspath(sys.argv.pop(1))
LIMIT = 60
# If the probe is built with a sanitizer, let the program handle crashes.
SANITIZER = "handle_segv=0:handle_sigbus=0:handle_abort=0:handle_sigill=0:handle_sigfpe=0:handle_sigtrap=0"


class CrashTest(unittest.TestCase):
    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.data = Path(home.name) / "Ü b"
        self.environment = {"XDG_DATA_HOME": str(self.data), "TZ": "ABC-5:30", "LC_ALL": "C.UTF-8", "ASAN_OPTIONS": SANITIZER}

    def crash(self, way):
        """Returns the crashed process and its reports."""
        process = subprocess.Popen([PROBE, way], env=self.environment, stderr=subprocess.DEVNULL)
        process.wait(LIMIT)
        return process, sorted(self.data.glob("example.ravelin.Ravelin/DiagnosticReports/*"))

    def functions(self, report):
        """The probe's own functions in the backtrace, the innermost first."""
        addresses = re.findall(rf"^{re.escape(PROBE)}\(\+(0x[0-9a-f]+)\)", report, re.M)
        names = subprocess.run(["addr2line", "-Cfe", PROBE, *addresses], capture_output=True, text=True, check=True)
        return [name.split("::")[-1].split("(")[0] for name in names.stdout.splitlines()[::2]]

    def test_crashes_are_reported(self):
        for way, number, address, functions in (
            ("null", signal.SIGSEGV, "0x10", ["crashAtAddress", "main"]),
            ("overflow", signal.SIGSEGV, None, ["crashByOverflow"] * 50),
            ("thread", signal.SIGSEGV, "0x10", ["crashAtAddress"]),
            ("division", signal.SIGFPE, None, ["crashByDivision", "main"]),
            ("abort", signal.SIGABRT, None, ["main"]),
        ):
            with self.subTest(way):
                process, reports = self.crash(way)
                self.assertEqual(process.returncode, -number)
                [path] = reports
                name = re.fullmatch(r"Ravelin_(\d{4}-\d\d-\d\d-\d{6})_(\d+)\.crash", path.name)
                self.assertEqual(int(name[2]), process.pid)
                written = datetime.strptime(name[1], "%Y-%m-%d-%H%M%S").replace(tzinfo=timezone.utc).timestamp() - 5.5 * 3600
                self.assertAlmostEqual(written, time.time(), delta=LIMIT)
                report = path.read_text("utf-8")
                path.unlink()
                head = dict(re.findall(r"^([A-Z][\w -]*): (.*)$", report, re.M))
                self.assertEqual((head["Application"], head["Version"], head["Program"]), ("Ravelin", "1.0.0 (1)", PROBE))
                self.assertTrue(head["System"].startswith(f"{os.uname().sysname} {os.uname().release}"))
                self.assertRegex(head["Signal"], rf"^{number.name} \({int(number)}\), code -?\d+$")
                self.assertEqual(head["Time"][:10], name[1][:10])
                where = {"Sent by process": str(process.pid)} if way == "abort" else {"Address": address or head["Address"]}
                self.assertEqual(head, head | where)
                messages = re.search(r"\nLast messages:\n(.*?)\n\nBack-trace:\n", report, re.S)[1].splitlines()
                text = [re.sub(r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d [-+]\d{4} ", "", line) for line in messages]
                self.assertEqual(text[:-1], [f"<{i % 8}> message {i}" for i in range(2, 11)])
                self.assertRegex(text[-1], "^<3> ü{450,500}$")
                called = self.functions(report)
                first = called.index(functions[0])
                self.assertEqual([name for name in called[first:] if name in functions][:len(functions)], functions)

    def test_nothing_is_left_without_a_crash(self):
        process, reports = self.crash("not at all")
        self.assertEqual((process.returncode, reports, self.data.exists()), (0, [], False))

    def test_without_a_place_for_the_report_it_ends_all_the_same(self):
        self.data.write_text("no folder")
        self.assertEqual(self.crash("null")[0].returncode, -signal.SIGSEGV)


if __name__ == "__main__":
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    unittest.main()
