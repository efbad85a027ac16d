#!/usr/bin/python3
"""Several instances of one application, on a private bus and without a bus. Usage: tst_SingleInstance.py INSTANCE_PROBE"""
import json
import os
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import unittest

import dbus
import dbus.bus

from processes import LIMIT, next_line, start_bus

PROBE = os.path.abspath(sys.argv.pop(1))
ID = "example.ravelin.Instance-Test"
MAGIC = struct.pack(">I", 0x52760001)
ODD_NAMES = ["/movies/a b.mkv", "/movies/two\nlines\t.mkv", "/movies/Über ß 電影 🎬.mkv", "/movies/100%25 %zz #1?x=y&z;.mkv",
             "/movies/'\"\\$(x).mkv", "//movies/a.mkv", "/movies/file:///b.mkv"]


class Start:
    def __init__(self, environment, arguments):
        self.process = subprocess.Popen([PROBE, *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE, env=environment)

    def line(self):
        line = next_line(self.process)
        return json.loads(line) if line else None

    def role(self):
        return self.line()["what"]

    def stop(self):
        self.process.send_signal(signal.SIGSTOP)
        os.waitpid(self.process.pid, os.WUNTRACED)

    def end(self):
        with self.process:
            self.process.kill()


class StartsTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        self.environment = {"HOME": self.folder, "XDG_RUNTIME_DIR": self.folder, "LC_ALL": "C.UTF-8", "PATH": "/nowhere"}

    def start(self, *paths, identifier=ID, patience=LIMIT * 1000, **environment):
        start = Start({**self.environment, **environment}, (identifier, str(patience), *paths))
        self.addCleanup(start.end)
        return start

    def first(self, *paths):
        first = self.start(*paths)
        self.assertEqual(first.role(), "first")
        return first

    def assert_meets(self, first, *paths):
        second = self.start(*paths)
        self.assertEqual(second.role(), "handed over")
        self.assertEqual(second.process.wait(LIMIT), 0)
        self.assertEqual(first.line(), {"what": "opened" if paths else "activated", "paths": list(paths), "token": ""})


class Meetings:
    """Tests of every mechanism to find the first instance."""

    def test_files_arrive_as_they_were_named(self):
        first = self.first("/its/own.mkv")
        self.assert_meets(first, *ODD_NAMES)
        self.assert_meets(first, *(f"/movies/{'long ' * 30}{number}.mkv" for number in range(5000)))

    def test_activation_carries_the_token(self):
        first = self.first()
        for token in ({"XDG_ACTIVATION_TOKEN": "a ü", "DESKTOP_STARTUP_ID": "b"}, {"DESKTOP_STARTUP_ID": "b_TIME12"}):
            self.assertEqual(self.start(**token).role(), "handed over")
            self.assertEqual(first.line(), {"what": "activated", "paths": [], "token": next(iter(token.values()))})
        self.assert_meets(first)

    def test_many_at_once(self):
        for _ in range(3):
            starts = {f"/{number}.mkv": self.start(f"/{number}.mkv") for number in range(8)}
            roles = {path: start.role() for path, start in starts.items()}
            self.assertEqual(sorted(roles.values()), ["first"] + ["handed over"] * 7)
            others = sorted(path for path, role in roles.items() if role != "first")
            first = next(start for path, start in starts.items() if path not in others)
            self.assertEqual(sorted(first.line()["paths"][0] for _ in others), others)
            first.process.stdin.close()
            self.assertIsNone(first.line())
            self.assertEqual(first.process.wait(LIMIT), 0)

    def test_a_start_while_the_first_one_ends_is_not_lost(self):
        first = self.first()
        for number in range(20):
            path = f"/{number}.mkv"
            first.process.stdin.close()
            second = self.start(path)
            if second.role() == "handed over":
                self.assertEqual(first.line()["paths"], [path])
                second = self.first()
            self.assertIsNone(first.line())
            first = second

    def test_killed_instance_releases_the_claim(self):
        self.first().end()
        self.assert_meets(self.first(), "/a.mkv")

    def test_hung_instance_is_reported(self):
        first = self.first()
        first.stop()
        for paths in (("/a.mkv",), (), [f"/{'long ' * 30}{number}.mkv" for number in range(5000)]):
            self.assertEqual(self.start(*paths, patience=300).role(), "no answer")
        first.process.send_signal(signal.SIGCONT)
        last = self.start("/last.mkv")
        while first.line()["paths"] != ["/last.mkv"]:
            pass  # Messages sent before may arrive, too.
        self.assertEqual(last.role(), "handed over")


class BusTest(Meetings, StartsTest):
    def setUp(self):
        super().setUp()
        self.address = self.environment["DBUS_SESSION_BUS_ADDRESS"] = start_bus(self)

    def test_the_desktop_calls(self):
        first = self.first()
        bus = dbus.bus.BusConnection(self.address)
        self.addCleanup(bus.close)
        application = dbus.Interface(bus.get_object(ID, "/example/ravelin/Instance_Test"), "org.freedesktop.Application")
        both = {"desktop-startup-id": "old", "activation-token": "new", "other": dbus.Int32(1)}
        nothing = dbus.Dictionary({}, "sv")
        mixed = ["file:///a%20%C3%BC", "https://a.example/b", "file://elsewhere/c", "file://localhost/d", "/e", "file:///f#g"]
        for uris, data, told in ((mixed, both, ("opened", ["/a ü", "/d", "/f"], "new")),
                                 (mixed[1:3], {"desktop-startup-id": "old"}, ("activated", [], "old")),
                                 (dbus.Array([], "s"), nothing, ("activated", [], ""))):
            application.Open(uris, data, timeout=LIMIT)
            self.assertEqual(tuple(first.line().values()), (told[1], told[2], told[0]))
        application.ActivateAction("quit", dbus.Array([1], "v"), nothing, timeout=LIMIT)
        application.Activate(both, ignore_reply=True)
        self.assertEqual(first.line()["token"], "new")
        self.assertFalse(os.path.exists(f"{self.folder}/{ID}.lock"))


class SocketTest(Meetings, StartsTest):
    def client(self):
        client = socket.socket(socket.AF_UNIX)
        self.addCleanup(client.close)
        client.settimeout(LIMIT)
        client.connect(f"{self.folder}/{ID}.socket")
        return client

    def test_garbage_does_no_harm(self):
        first = self.first()
        self.client()  # Stays silent.
        text = struct.pack(">I", 4) + "/a".encode("utf-16-be")
        self.client().sendall(MAGIC + struct.pack(">I", 100) + text)  # Never finishes.
        for payload in (struct.pack(">I", 0xFFFFFFF0), text + text[:-1], text + struct.pack(">I", 0xFFFFFFFF),
                        text + struct.pack(">I", 2) + b"\0a", b"", b"\0"):
            with self.subTest(payload=payload):
                client = self.client()
                client.sendall(MAGIC + struct.pack(">I", len(payload)) + payload)
                self.assertEqual(client.recv(1), b"")
        for bytes_ in (b"GET / HTTP/1.0\r\n\r\n", struct.pack(">II", 1, len(text)) + text, MAGIC + b"\xff" * 4,
                       MAGIC + struct.pack(">I", (16 << 20) + 1)):
            with self.subTest(bytes=bytes_):
                client = self.client()
                client.sendall(bytes_)
                try:
                    self.assertEqual(client.recv(1), b"")
                except ConnectionResetError:
                    pass
        self.assert_meets(first, "/a.mkv")

    def test_a_folder_that_others_can_enter_is_not_used(self):
        identifier = f"example.ravelin.Test{os.getpid()}"
        own = f"/tmp/{identifier}-{os.geteuid()}"
        self.addCleanup(shutil.rmtree, own, True)
        os.chmod(self.folder, 0o755)
        starts = [self.start(identifier=identifier, XDG_RUNTIME_DIR=folder)
                  for folder in (self.folder, "", "relative", self.folder + "/missing")]
        self.assertEqual(sorted(start.role() for start in starts), ["first"] + ["handed over"] * 3)
        self.assertEqual(os.stat(own).st_mode & 0o777, 0o700)
        for start in starts:
            start.end()
        os.chmod(self.folder, 0o700)
        shutil.rmtree(own)
        os.symlink(self.folder, own)
        self.addCleanup(os.unlink, own)
        for _ in range(2):
            self.assertEqual(self.start(identifier=identifier, XDG_RUNTIME_DIR="").role(), "first")
        self.assertEqual([name for name in os.listdir(self.folder) if name.startswith(identifier)], [])


if __name__ == "__main__":
    unittest.main()
