#!/usr/bin/python3
"""Tests the desktop services on private buses with mocked services. Usage: tst_DBusDesktop.py DESKTOP_PROBE"""
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import dbus
import dbus.bus
import dbusmock
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

from processes import LIMIT, next_line, wait_until

PROBE = os.path.abspath(sys.argv.pop(1))
PORTAL, PORTAL_PATH = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"


class Probe:
    def __init__(self, environment=None, arguments=()):
        self.process = subprocess.Popen([PROBE, *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                        bufsize=1, env=environment)

    def send(self, command, *answers):
        self.process.stdin.write(command + "\n")
        for line in (*answers, "did " + command.split(" ")[0]):
            self.line_is(line)

    def send_at_once(self, *commands):
        self.process.stdin.write("\n".join((*commands, "")))
        for command in commands:
            self.line_is("did " + command.split(" ")[0])

    def line_is(self, expected):
        line = next_line(self.process).strip()
        assert line == expected, f"{line!r} instead of {expected!r}"

    def quit(self):
        with self.process:
            self.process.stdin.write("quit\n")
            self.process.stdin.flush()
            return self.process.wait(LIMIT)

    def open_pipes(self):
        folder = f"/proc/{self.process.pid}/fd"
        return [os.path.realpath(f"{folder}/{descriptor}") for descriptor in os.listdir(folder)]


class DesktopTest(dbusmock.DBusTestCase):
    @classmethod
    def setUpClass(cls):
        cls.start_system_bus()
        cls.start_session_bus()
        # Old versions of the library only forget it.
        cls.addClassCleanup(shutil.rmtree, Path(cls.get_services_dir()).parent, ignore_errors=True)
        cls.system = cls.get_dbus(True)
        cls.session = cls.get_dbus()

    def setUp(self):
        self.probe = Probe()

    def tearDown(self):
        self.assertEqual(self.probe.quit(), 0)

    def mock(self, name, path, interface, *method, system=False):
        """A service with this method: its name, types of arguments and of the answer, and code."""
        server = self.spawn_server(name, path, interface, system_bus=system)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        bus = self.system if system else self.session
        mock = dbus.Interface(bus.get_object(name, path), dbusmock.MOCK_IFACE)
        mock.AddMethod("", *method)
        return mock

    def portal(self, interface, *method, name=PORTAL):
        return self.mock(name, PORTAL_PATH, "org.freedesktop.portal." + interface, *method)

    def folder(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        return folder.name

    def restart(self, *arguments, **environment):
        self.assertEqual(self.probe.quit(), 0)
        self.probe = Probe(dict(os.environ, **environment), arguments)

    def restart_with_opener(self, then=""):
        """Puts a folder first in the search path, whose xdg-open writes its argument to the file "opened"."""
        folder = self.folder()
        opener = Path(folder, "xdg-open")
        opener.write_text(f'#!/bin/sh\necho chatter\ncd {folder}\necho "$1" >new && mv new opened\n{then}\n')
        opener.chmod(0o755)
        self.restart(PATH=f"{folder}:{os.environ['PATH']}")
        return folder

    def content(self, path):
        wait_until(lambda: os.path.exists(path) and os.path.getsize(path), path)
        return Path(path).read_text("utf-8").strip()

    def inhibiting_file(self):
        """A logind whose lock is our open file, so that the holder's descriptors show it."""
        lock = os.path.join(self.folder(), "lock")
        return self.mock("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "Inhibit",
                         "ssss", "h", f"import os; ret = dbus.types.UnixFd(open({lock!r}, 'w'))", system=True), lock

    def test_sleep_is_held_off_until_released(self):
        logind, lock = self.inhibiting_file()
        self.probe.send("inhibit")
        wait_until(lambda: lock in self.probe.open_pipes(), "the descriptor")
        self.assertEqual(logind.GetMethodCalls("Inhibit")[0][1], ["sleep:idle", "Ravelin", "Converting MKV file.", "block"])
        self.probe.send("release")
        wait_until(lambda: lock not in self.probe.open_pipes(), "the end of the descriptor")

    def test_released_before_the_answer(self):
        logind, lock = self.inhibiting_file()
        self.probe.send_at_once("inhibit", "release")
        wait_until(lambda: logind.GetMethodCalls("Inhibit"), "the call")
        self.probe.send("inhibit")
        wait_until(lambda: lock in self.probe.open_pipes(), "the second descriptor")
        # The reply itself also holds the descriptor, until the event loop deletes it.
        wait_until(lambda: self.probe.open_pipes().count(lock) == 1, "the end of the first descriptor")

    def test_sleep_is_held_off_through_the_portal(self):
        self.restart("--flatpak")
        portal = self.portal("Inhibit", "Inhibit", "sua{sv}", "o",
                             "ret = dbus.ObjectPath('/request/' + str(len(self.call_log)))")
        for number in (1, 2):
            portal.AddObject(f"/request/{number}", "org.freedesktop.portal.Request", {}, [("Close", "", "", "")])
        requests = [dbus.Interface(self.session.get_object(PORTAL, f"/request/{number}"), dbusmock.MOCK_IFACE)
                    for number in (1, 2)]
        self.probe.send_at_once("inhibit", "release", "inhibit")
        wait_until(lambda: requests[0].GetMethodCalls("Close"), "the end of the request that was not wanted any more")
        self.assertEqual(portal.GetMethodCalls("Inhibit")[0][1], ["", 4 | 8, {"reason": "Converting MKV file."}])
        self.assertEqual(requests[1].GetMethodCalls("Close"), [])
        self.probe.send("release")
        wait_until(lambda: requests[1].GetMethodCalls("Close"), "the end of the request")

    def test_the_machine_is_put_to_sleep_and_shut_down(self):
        self.probe.send("can sleep")
        self.probe.line_is("denied")  # There is no logind yet.
        logind = self.mock("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "Suspend",
                           "b", "", "", system=True)
        logind.AddMethod("", "PowerOff", "b", "", "raise dbus.exceptions.DBusException('Not tonight.', name='org.test.No')")
        for answer, told in (("yes", "allowed"), ("challenge", "allowed"), ("inhibitor-blocked", "allowed"),
                             ("no", "denied"), ("na", "denied")):
            for method, command in (("CanSuspend", "can sleep"), ("CanPowerOff", "can power-off")):
                with self.subTest(command, answer=answer):
                    logind.AddMethod("", method, "", "s", f"ret = {answer!r}")
                    self.probe.send(command)
                    self.probe.line_is(told)
        self.probe.send("sleep")
        self.probe.line_is("carried out")
        self.probe.send("power-off")
        self.probe.line_is("carried out Not tonight.")
        self.assertEqual([list(logind.GetMethodCalls(method)[0][1]) for method in ("Suspend", "PowerOff")], [[True], [True]])

    def test_notification_with_an_action(self):
        service = "org.freedesktop.Notifications"
        daemon = self.mock(service, "/org/freedesktop/Notifications", service, "Notify", "susssasa{sv}i", "u", "ret = 7")
        self.probe.send("notify Finished|a < b|Show|/movies/a b.mp4")
        self.probe.send("settle")  # An immediate reply has been handled by now.
        call = wait_until(lambda: daemon.GetMethodCalls("Notify"), "the notification")[0][1]
        self.assertEqual([str(part) for part in (call[0], call[3], call[4])], ["Ravelin", "Finished", "a &lt; b"])
        self.assertEqual(list(call[5])[-2:], ["show", "Show"])
        self.assertEqual(call[6]["desktop-entry"], "example.ravelin.Ravelin")
        daemon.EmitSignal("", "ActionInvoked", "us", [dbus.UInt32(8), "show"])
        daemon.EmitSignal("", "ActionInvoked", "us", [dbus.UInt32(7), "show"])
        self.probe.line_is("activated /movies/a b.mp4")
        daemon.EmitSignal("", "NotificationClosed", "uu", [dbus.UInt32(7), dbus.UInt32(2)])
        daemon.EmitSignal("", "ActionInvoked", "us", [dbus.UInt32(7), "show"])
        self.probe.send("notify Failed|text||/b.mp4")
        self.probe.send("settle")  # An immediate reply has been handled by now.
        second = wait_until(lambda: daemon.GetMethodCalls("Notify")[1:], "the second notification")[0][1]
        self.assertEqual(list(second[5]), ["default", "Failed"])
        daemon.EmitSignal("", "ActionInvoked", "us", [dbus.UInt32(7), "default"])
        self.probe.line_is("activated /b.mp4")

    def test_notifications_of_a_group_replace_one_another(self):
        service, path = "org.freedesktop.Notifications", "/org/freedesktop/Notifications"
        daemon = self.mock(service, path, service, "Notify", "susssasa{sv}i", "u",
                           "ret = args[1] or dbus.UInt32(len(self.call_log))")

        def posted(count):
            return [(str(call[3]), int(call[1])) for _, call in
                    wait_until(lambda: daemon.GetMethodCalls("Notify")[count - 1:] and daemon.GetMethodCalls("Notify"), "all")]

        # What comes before the reply to the first one waits for it, and only the last of that is posted.
        self.probe.send_at_once("notify A|text||/a|done", "notify Failed|text||/f", "notify B|text||/b|done",
                                "notify C|text|||done")
        self.assertEqual(posted(3), [("A", 0), ("Failed", 0), ("C", 1)])
        self.probe.send("settle")
        daemon.EmitSignal("", "ActivationToken", "us", [dbus.UInt32(1), "token"])
        daemon.EmitSignal("", "ActionInvoked", "us", [dbus.UInt32(1), "default"])
        self.probe.line_is("activated token")
        daemon.EmitSignal("", "NotificationClosed", "uu", [dbus.UInt32(1), dbus.UInt32(2)])
        daemon.EmitSignal("", "ActionInvoked", "us", [dbus.UInt32(2), "default"])
        self.probe.line_is("activated /f")
        self.probe.send_at_once("notify D|text||/d|done", "notify E|text||/e|done")
        self.restart()  # Nothing is lost when the application quits.
        self.assertEqual(posted(5)[3:], [("D", 0), ("E", 4)])

    def test_notification_through_the_portal(self):
        self.restart("--flatpak")
        portal = self.portal("Notification", "AddNotification", "sa{sv}", "", "")
        self.probe.send("notify Finished|text|Show|/a.mp4")
        call = wait_until(lambda: portal.GetMethodCalls("AddNotification"), "the notification")[0][1]
        self.assertEqual(call[1]["title"], "Finished")
        self.assertEqual(call[1]["buttons"], [{"label": "Show", "action": "show"}])
        portal.EmitSignal("", "ActionInvoked", "ssav", [call[0], "show", dbus.Array([], signature="v")])
        self.probe.line_is("activated /a.mp4")
        for group in ("done", "", "done"):
            self.probe.send(f"notify Finished|text|Show|/a.mp4|{group}")
        ids = [call[0] for _, call in wait_until(lambda: portal.GetMethodCalls("AddNotification")[3:] and
                                                 portal.GetMethodCalls("AddNotification"), "all")]
        self.assertEqual([ids.index(id) for id in ids], [0, 1, 2, 1])

    def test_a_notification_is_withdrawn(self):
        service, path = "org.freedesktop.Notifications", "/org/freedesktop/Notifications"
        daemon = self.mock(service, path, service, "Notify", "susssasa{sv}i", "u", "ret = dbus.UInt32(len(self.call_log))")
        daemon.AddMethod("", "CloseNotification", "u", "", "")
        # Also when the reply with its identifier is still to come, and once only.
        self.probe.send_at_once("withdraw other", "notify A|text|||window", "withdraw window", "notify B|text|||window")
        wait_until(lambda: daemon.GetMethodCalls("Notify")[1:], "the second one")
        self.probe.send("settle")
        self.probe.send_at_once("withdraw window", "withdraw window")
        closed = wait_until(lambda: daemon.GetMethodCalls("CloseNotification")[1:] and
                            daemon.GetMethodCalls("CloseNotification"), "both ends")
        self.assertEqual([int(call[0]) for _, call in closed], [1, 3])
        self.assertEqual([int(call[1]) for _, call in daemon.GetMethodCalls("Notify")], [0, 0])

        self.restart("--flatpak")
        portal = self.portal("Notification", "AddNotification", "sa{sv}", "", "")
        portal.AddMethod("", "RemoveNotification", "s", "", "")
        self.probe.send_at_once("withdraw window", "notify A|text|||window", "withdraw window", "withdraw window")
        self.restart()  # Waits for what was sent.
        self.assertEqual([list(call) for _, call in portal.GetMethodCalls("RemoveNotification")], [["window"]])

    def test_notification_with_a_button_that_quits(self):
        service, path = "org.freedesktop.Notifications", "/org/freedesktop/Notifications"
        daemon = self.mock(service, path, service, "Notify", "susssasa{sv}i", "u", "ret = 7")
        self.probe.send("notify Goes on|text|Show||window|Quit")
        self.probe.send("settle")
        call = wait_until(lambda: daemon.GetMethodCalls("Notify"), "the notification")[0][1]
        self.assertEqual(list(call[5]), ["default", "Goes on", "show", "Show", "quit", "Quit"])
        for action, told in (("quit", "quit activated token"), ("show", "activated token")):
            daemon.EmitSignal("", "ActivationToken", "us", [dbus.UInt32(7), "token"])
            daemon.EmitSignal("", "ActionInvoked", "us", [dbus.UInt32(7), action])
            self.probe.line_is(told)

        self.restart("--flatpak")
        portal = self.portal("Notification", "AddNotification", "sa{sv}", "", "")
        for action, told in (("quit", "quit activated token"), ("show", "activated token")):
            self.probe.send("notify Goes on|text|Show||window|Quit")
            call = wait_until(lambda: portal.GetMethodCalls("AddNotification"), "the notification")[-1][1]
            self.assertEqual([(str(b["label"]), str(b["action"])) for b in call[1]["buttons"]],
                             [("Show", "show"), ("Quit", "quit")])
            platform = dbus.Dictionary({"activation-token": "token"}, signature="sv", variant_level=1)
            portal.EmitSignal("", "ActionInvoked", "ssav", [call[0], action, dbus.Array([platform], signature="v")])
            self.probe.line_is(told)

    def test_reveal(self):
        name = "org.freedesktop.FileManager1"
        manager = self.mock(name, "/org/freedesktop/FileManager1", name, "ShowItems", "ass", "", "")
        self.probe.send("reveal /movies/a #100% ü.mp4|/movies/b.mp4")
        call = wait_until(lambda: manager.GetMethodCalls("ShowItems"), "the call")[0][1]
        self.assertEqual(call[0], ["file:///movies/a%20%23100%25%20%C3%BC.mp4", "file:///movies/b.mp4"])

    def test_reveal_without_a_file_manager_opens_the_folder(self):
        folder = self.restart_with_opener()
        self.probe.send("reveal /movies/a.mp4")
        self.assertEqual(self.content(f"{folder}/opened"), "file:///movies")

    def test_a_flatpak_reveals_and_trashes_through_the_portal(self):
        folder = self.folder()
        for name in ("a.mp4", "b.mp4"):
            Path(folder, name).touch()
        self.restart("--flatpak")
        path_of = "os.readlink(f'/proc/self/fd/{args[%d].take()}')"
        portal = self.portal("OpenURI", "OpenDirectory", "sha{sv}", "o",
                             f"import os; open('{folder}/shown', 'a').write({path_of % 1} + ' '); ret = dbus.ObjectPath('/request')")
        portal.AddMethod("org.freedesktop.portal.Trash", "TrashFile", "h", "u",
                         f"import os; ret = dbus.UInt32({path_of % 0}.endswith('a.mp4'))")
        self.probe.send(f"reveal {folder}/a.mp4|{folder}/b.mp4")
        self.assertEqual(self.content(f"{folder}/shown"), f"{folder}/a.mp4")
        self.probe.send(f"trash {folder}/a.mp4", "moved")
        self.probe.send(f"trash {folder}/b.mp4", "not moved")
        self.probe.send(f"trash {folder}/c.mp4", "not moved")
        self.assertTrue(Path(folder, "b.mp4").exists())

    def test_files_are_taken_over_from_the_file_transfer_portal(self):
        self.mock("org.freedesktop.portal.Documents", "/org/freedesktop/portal/documents", "org.freedesktop.portal.FileTransfer",
                  "RetrieveFiles", "sa{sv}", "as", "ret = ['/run/user/1/doc/2/a b.mkv', '/c'] if args[0] == 'k' else []")
        self.probe.send("transfer k", "/run/user/1/doc/2/a b.mkv|/c")
        self.probe.send("transfer other", "")

    def test_a_flatpak_asks_to_go_on_without_windows(self):
        portal = self.portal("Background", "RequestBackground", "sa{sv}", "o", "ret = dbus.ObjectPath('/request')")
        self.probe.send("background not in a sandbox")
        self.restart("--flatpak")
        self.probe.send("background converting")
        self.restart()  # Waits for what was sent.
        self.assertEqual([dict(call[1]) for _, call in portal.GetMethodCalls("RequestBackground")], [{"reason": "converting"}])

    def test_pages_open_by_the_program_else_by_the_portal(self):
        folder = self.restart_with_opener()
        self.probe.send("open mailto:a@b.example?subject=x%20y%26z", "opened")
        self.assertEqual(self.content(f"{folder}/opened"), "mailto:a@b.example?subject=x%20y%26z")
        self.probe.send("open no-scheme?subject=x", "not opened")

        portal = self.portal("OpenURI", "OpenURI", "ssa{sv}", "o", "ret = dbus.ObjectPath('/request')")
        portal.AddMethod("", "OpenFile", "sha{sv}", "o",
                         "import os; open('{0}/file', 'w').write(os.readlink(f'/proc/self/fd/{{args[1].take()}}')); "
                         "ret = dbus.ObjectPath('/request')".format(folder))
        for arguments in ((), ("--flatpak",)):
            self.restart(*arguments, PATH=folder if arguments else "/nowhere")
            self.probe.send("open https://ravelin.example/a%20b", "opened")
        calls = wait_until(lambda: portal.GetMethodCalls("OpenURI")[1:] and portal.GetMethodCalls("OpenURI"), "both calls")
        self.assertEqual([call[1][1] for call in calls], ["https://ravelin.example/a%20b"] * 2)
        self.probe.send(f"open file://{folder}", "opened")
        self.assertEqual(self.content(f"{folder}/file"), os.path.realpath(folder))
        self.probe.send("open file:///nowhere/at/all", "not opened")

    def test_a_mail_is_opened_only_if_a_program_takes_it(self):
        self.restart_with_opener(then="exit 3")
        self.probe.send("open mailto:a@b.example", "not opened")
        self.probe.send("open https://ravelin.example", "opened")  # The reply for a web page is not awaited.
        self.restart(PATH="/nowhere")
        self.probe.send("open mailto:a@b.example", "not opened")  # There is a bus, but no portal.

    def test_a_mail_program_outlives_the_application(self):
        folder = self.restart_with_opener(then="read line <pipe; echo $line >ended")
        os.mkfifo(f"{folder}/pipe")
        self.probe.send("open mailto:a@b.example", "opened")
        self.restart()
        with open(f"{folder}/pipe", "w", encoding="utf-8") as pipe:
            pipe.write("alive\n")
        self.assertEqual(self.content(f"{folder}/ended"), "alive")

    def test_launcher_shows_what_changes(self):
        bus = dbus.bus.BusConnection(os.environ["DBUS_SESSION_BUS_ADDRESS"], mainloop=DBusGMainLoop())
        self.addCleanup(bus.close)
        told = []
        bus.add_signal_receiver(lambda *arguments: told.append(arguments), "Update", "com.canonical.Unity.LauncherEntry")
        for fraction in ("0.25", "0.25", "2", "", "", "0.5"):
            self.probe.send(f"progress {fraction}".strip())
        wait_until(lambda: (GLib.MainContext.default().iteration(False), told[3:])[1], "the signals")
        application = "application://example.ravelin.Ravelin.desktop"
        self.assertEqual(told, [(application, {"progress": fraction, "progress-visible": visible})
                                for fraction, visible in ((0.25, True), (1, True), (0, False), (0.5, True))])

    def test_appearance_of_a_portal_that_comes_late(self):
        portal = self.portal("Settings", "Appear", "", "", f"self.connection.request_name({PORTAL!r})", name="example.stand.in")

        def values(scheme, animations):
            portal.AddMethod("", "ReadAll", "as", "a{sa{sv}}",
                             f"ret = {{'org.freedesktop.appearance': {{'color-scheme': dbus.UInt32({scheme}), 'contrast': 'x'}}, "
                             f"'org.gnome.desktop.interface': {{'enable-animations': dbus.Boolean({animations}, variant_level=2)}}}}")

        values(1, False)
        self.probe.send("appearance")
        portal.Appear(dbus_interface="org.freedesktop.portal.Settings")
        self.probe.line_is("dark, still")
        for group, key, value, now, told in (
                ("org.freedesktop.appearance", "color-scheme", dbus.UInt32(1), (1, False), None),
                ("org.freedesktop.appearance", "accent-color", dbus.UInt32(2), (1, False), None),
                ("org.freedesktop.appearance", "color-scheme", dbus.UInt32(2), (2, False), "light, still"),
                ("org.gnome.desktop.interface", "color-scheme", dbus.UInt32(1), (2, False), None),
                ("org.gnome.desktop.interface", "enable-animations", True, (2, True), "light, moving")):
            values(*now)  # It may be asked a second time, since it came while it was asked.
            portal.EmitSignal("", "SettingChanged", "ssv", [group, key, value])
            if told:
                self.probe.line_is(told)
        values(1, False)
        self.restart()
        self.probe.send("appearance")
        self.probe.line_is("dark, still")
        self.assertEqual(list(portal.GetMethodCalls("ReadAll")[-1][1][0]),
                         ["org.freedesktop.appearance", "org.gnome.desktop.interface"])


class NoBusTest(unittest.TestCase):
    def test_nothing_happens_at_once(self):
        with socket.create_server(("127.0.0.1", 0)) as display:
            # Starting a bus on demand would first query the display for a running one.
            display.setblocking(False)
            number = display.getsockname()[1] - 6000
            nothing = {"PATH": "/nowhere", "DISPLAY": f"127.0.0.1:{number}",
                       "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nowhere/bus"}
            for address in (None, "", "autolaunch:", "unix:path=/nowhere/bus"):
                for arguments in ((), ("--flatpak",)):
                    with self.subTest(address=address, arguments=arguments):
                        session = {} if address is None else {"DBUS_SESSION_BUS_ADDRESS": address}
                        probe = Probe({**nothing, **session}, arguments)
                        for command in ("inhibit", "notify a|b|c|/d", "reveal /a", "release", "progress 0.5", "appearance",
                                        "can sleep", "sleep"):
                            probe.send(command)
                        probe.send("open https://ravelin.example", "not opened")
                        self.assertEqual(probe.quit(), 0)
                        with self.assertRaises(BlockingIOError):
                            display.accept()


if __name__ == "__main__":
    unittest.main()
