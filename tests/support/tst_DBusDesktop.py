#!/usr/bin/python3
"""The desktop services against private buses on which stand-ins answer. Usage: tst_DBusDesktop.py DESKTOP_PROBE"""
import os
import subprocess
import sys
import tempfile
import time
import unittest

import dbus
import dbusmock

PROBE = os.path.abspath(sys.argv.pop(1))
LIMIT = 10


def until(condition, what):
    """Waits for a condition with a deadline and returns what it gave."""
    deadline = time.monotonic() + LIMIT
    while not (result := condition()):
        if time.monotonic() > deadline:
            raise AssertionError(f"waited in vain for {what}")
        time.sleep(0.01)
    return result


class Probe:
    def __init__(self, environment=None, arguments=()):
        self.process = subprocess.Popen([PROBE, *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                        bufsize=1, env=environment)

    def tell(self, command):
        self.process.stdin.write(command + "\n")
        self.line_is("did " + command.split(" ")[0])

    def line_is(self, expected):
        line = self.process.stdout.readline().strip()
        assert line == expected, f"{line!r} instead of {expected!r}"

    def quit(self):
        with self.process:
            self.process.stdin.write("quit\n")
            self.process.stdin.flush()
            return self.process.wait(LIMIT)

    def open_pipes(self):
        folder = f"/proc/{self.process.pid}/fd"
        targets = []
        for descriptor in os.listdir(folder):
            try:
                targets.append(os.readlink(f"{folder}/{descriptor}"))
            except FileNotFoundError:
                pass
        return targets


class DesktopTest(dbusmock.DBusTestCase):
    @classmethod
    def setUpClass(cls):
        cls.start_system_bus()
        cls.start_session_bus()
        cls.system = cls.get_dbus(True)
        cls.session = cls.get_dbus()

    def setUp(self):
        self.probe = Probe()

    def tearDown(self):
        self.assertEqual(self.probe.quit(), 0)

    def mock(self, name, path, interface, system=False):
        server = self.spawn_server(name, path, interface, system_bus=system)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        bus = self.system if system else self.session
        return dbus.Interface(bus.get_object(name, path), dbusmock.MOCK_IFACE)

    def inhibiting_file(self):
        """A logind whose lock is an open file of ours, so that holding it shows in the holder's descriptors."""
        logind = self.mock("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager", system=True)
        folder = tempfile.mkdtemp()
        lock = os.path.join(folder, "lock")
        logind.AddMethod("", "Inhibit", "ssss", "h", f"import os; ret = dbus.types.UnixFd(open({lock!r}, 'w'))")
        return logind, lock

    def test_sleep_is_held_off_until_released(self):
        logind, lock = self.inhibiting_file()
        self.probe.tell("inhibit")
        until(lambda: lock in self.probe.open_pipes(), "the descriptor")
        self.assertEqual(logind.GetMethodCalls("Inhibit")[0][1], ["sleep:idle", "Ravelin", "Converting MKV file.", "block"])
        self.probe.tell("release")
        until(lambda: lock not in self.probe.open_pipes(), "the end of the descriptor")

    def test_released_before_the_answer(self):
        logind, lock = self.inhibiting_file()
        self.probe.process.stdin.write("inhibit\nrelease\n")
        self.probe.line_is("did inhibit")
        self.probe.line_is("did release")
        until(lambda: logind.GetMethodCalls("Inhibit"), "the call")
        self.probe.tell("inhibit")
        until(lambda: lock in self.probe.open_pipes(), "the second descriptor")
        self.assertEqual(self.probe.open_pipes().count(lock), 1)

    def test_notification_with_an_action(self):
        service = "org.freedesktop.Notifications"
        daemon = self.mock(service, "/org/freedesktop/Notifications", service)
        daemon.AddMethod("", "Notify", "susssasa{sv}i", "u", "ret = 7")
        self.probe.tell("notify Finished|a < b|Show|/movies/a b.mp4")
        call = until(lambda: daemon.GetMethodCalls("Notify"), "the notification")[0][1]
        self.assertEqual([str(part) for part in (call[0], call[3], call[4])], ["Ravelin", "Finished", "a &lt; b"])
        self.assertEqual(list(call[5])[-2:], ["show", "Show"])
        self.assertEqual(call[6]["desktop-entry"], "example.ravelin.Ravelin")
        daemon.EmitSignal("", "ActionInvoked", "us", [dbus.UInt32(8), "show"])
        daemon.EmitSignal("", "ActionInvoked", "us", [dbus.UInt32(7), "show"])
        self.probe.line_is("activated /movies/a b.mp4")

    def test_notification_through_the_portal(self):
        self.probe.quit()
        self.probe = Probe(arguments=["--flatpak"])
        path, interface = "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Notification"
        portal = self.mock("org.freedesktop.portal.Desktop", path, interface)
        portal.AddMethod("", "AddNotification", "sa{sv}", "", "")
        self.probe.tell("notify Finished|text|Show|/a.mp4")
        call = until(lambda: portal.GetMethodCalls("AddNotification"), "the notification")[0][1]
        self.assertEqual(call[1]["title"], "Finished")
        portal.EmitSignal("", "ActionInvoked", "ssav", [call[0], "show", dbus.Array([], signature="v")])
        self.probe.line_is("activated /a.mp4")

    def test_reveal(self):
        name = "org.freedesktop.FileManager1"
        manager = self.mock(name, "/org/freedesktop/FileManager1", name)
        manager.AddMethod("", "ShowItems", "ass", "", "")
        self.probe.tell("reveal /movies/a #100% ü.mp4")
        call = until(lambda: manager.GetMethodCalls("ShowItems"), "the call")[0][1]
        self.assertEqual(call[0], ["file:///movies/a%20%23100%25%20%C3%BC.mp4"])

    def test_reveal_without_a_file_manager_opens_the_folder(self):
        folder = tempfile.mkdtemp()
        opener = os.path.join(folder, "xdg-open")
        with open(opener, "w", encoding="utf-8") as file:
            file.write(f'#!/bin/sh\necho "$1" > {folder}/opened.new && mv {folder}/opened.new {folder}/opened\n')
        os.chmod(opener, 0o755)
        self.probe.quit()
        self.probe = Probe(dict(os.environ, PATH=f"{folder}:{os.environ['PATH']}"))
        self.probe.tell("reveal /movies/a.mp4")
        until(lambda: os.path.exists(f"{folder}/opened"), "the opener")
        with open(f"{folder}/opened", encoding="utf-8") as file:
            self.assertEqual(file.read().strip(), "file:///movies")


class NoBusTest(unittest.TestCase):
    def test_nothing_happens_at_once(self):
        environment = {"PATH": "/nowhere", "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nowhere/bus"}
        probe = Probe(environment)
        for command in ("inhibit", "notify a|b|c|/d", "reveal /a", "release"):
            probe.tell(command)
        self.assertEqual(probe.quit(), 0)


if __name__ == "__main__":
    unittest.main()
