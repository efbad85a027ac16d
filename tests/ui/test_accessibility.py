"""The window program as a screen reader meets it: over AT-SPI, on a display and buses of its own.

test_accessibility.py RAVELIN
"""
import os
import subprocess
import unittest

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from processes import next_line, start_bus, wait_until  # noqa: E402
from test_application import Home  # noqa: E402

# A conversion that is half done when the file "half" is there, and done when "whole" is.
TOOL = """#!/bin/bash
[ $# -eq 2 ] && exec ffmpeg "$@"
for argument; do [ "$last" = -progress ] && progress=$argument; last=$argument; done
wait_for() {{ until [ -e "{folder}/$1" ]; do sleep 0.02; done; }}
wait_for half
echo out_time_ms=1000000 > "$progress"
wait_for whole
exec ffmpeg "$@"
"""


def start_display(test):
    """An X server that lasts as long as the test. Returns its name."""
    server = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp"],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    test.addCleanup(server.communicate)
    test.addCleanup(server.kill)
    return ":" + next_line(server).strip()


class Reader:
    """What a screen reader sees and hears."""

    def __init__(self):
        self.heard = []
        self.listener = Atspi.EventListener.new(self.hear)
        self.listener.register("object")

    def hear(self, event):
        try:
            # An announcement is an event of its own from Qt 6.8 on.
            name = event.any_data if event.type == "object:announcement" else event.source.get_name()
            self.heard.append((event.type, role_of(event.source), name, event.detail1))
        except GLib.Error:
            pass  # It is gone.

    def wait(self, condition, what):
        def looked():
            while GLib.MainContext.default().iteration(False):
                pass
            try:
                return condition()
            except GLib.Error:
                return None  # The tree changes while it is looked at.
        return wait_until(looked, what)

    def hears(self, kind, role, name):
        kind = "object:" + kind
        self.wait(lambda: any(heard[:2] == (kind, role) and heard[2].startswith(name) for heard in self.heard),
                  f"{kind} of {role} “{name}”, not in {self.heard[-20:]}")

    def announces(self, text):
        kinds = ("object:announcement", "object:state-changed:showing")
        self.wait(lambda: any(kind in kinds and name.startswith(text) for kind, _, name, _ in self.heard),
                  f"the announcement “{text}”, not in {self.heard[-20:]}")

    def below(self, top):
        for index in range(top.get_child_count()):
            child = top.get_child_at_index(index)
            if child is not None:
                yield child
                yield from self.below(child)

    def find(self, role, name=""):
        """The one with that role whose name begins so, as soon as it is shown."""
        def found():
            return next((each for each in self.below(Atspi.get_desktop(0))
                         if role_of(each) == role and each.get_name().startswith(name)
                         and has(each, "SHOWING")), None)
        return self.wait(found, f"{role} “{name}”")

    def rows(self, count):
        movies = self.find("list", "Movies")
        self.wait(lambda: movies.get_child_count() == count, f"{count} rows")
        return {row.get_name(): row for row in (movies.get_child_at_index(index) for index in range(count))}

    def press(self, accessible, action="Press"):
        names = [Atspi.Action.get_action_name(accessible, index) for index in range(accessible.get_n_actions())]
        accessible.do_action(names.index(action))


def role_of(accessible):
    """The role's name; newer versions of AT-SPI call a push button a button."""
    return accessible.get_role_name().removeprefix("push ")


def has(accessible, state):
    return accessible.get_state_set().contains(getattr(Atspi.StateType, state))


class Accessibility(unittest.TestCase):
    def start(self, *movies):
        # AT-SPI's bus, which the session bus starts, and this process need them, too.
        os.environ["DISPLAY"] = start_display(self)
        home = Home(self)
        os.environ["XDG_RUNTIME_DIR"] = home.environment["XDG_RUNTIME_DIR"]
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = start_bus(self)
        for name in ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS"):
            home.environment[name] = os.environ[name]
        home.environment.update(QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                                RAVELIN_RESOURCES=str(home.path / "resources"))
        home.settings(AutoAdd=0, CageTool=0)
        tool = home.path / "resources/ffmpeg"
        tool.parent.mkdir()
        tool.write_text(TOOL.format(folder=home.path))
        tool.chmod(0o755)
        reader = Reader()
        home.start(*(home.movie(name) for name in movies))
        return home, reader

    def test_from_the_sheet_to_the_end(self):
        home, reader = self.start("a.mkv", "b.mkv")
        sheet = reader.find("panel", "Add “b.mkv”")
        start = reader.find("button", "Start Conversion")
        reader.wait(lambda: has(start, "SENSITIVE") and has(start, "FOCUSED"), "the movie")
        self.assertIn("Resolution: 160x120", sheet.get_description())
        inside = {(role_of(each), each.get_name()) for each in reader.below(sheet) if has(each, "SHOWING")}
        for expected in (("label", "b.mkv"), ("label", "1 more to come"), ("button", "Cancel"),
                         ("combo box", "out"), ("panel", "What becomes of the movie"), ("label", "copied")):
            self.assertIn(expected, inside)
        self.assertNotIn(("progress bar", "Reading the movie"), inside)
        reader.press(reader.find("button", "Add All (2)"))

        rows = reader.rows(2)
        self.assertEqual(sorted(rows), ["a.mkv", "b.mkv"])
        first = reader.wait(lambda: next((name for name in rows if has(rows[name], "BUSY")), None), "the conversion")
        running = rows.pop(first)
        second, waiting = rows.popitem()
        reader.announces(f"{first}: Status: Converting")
        for row in (running, waiting):
            self.assertEqual(role_of(row), "list item")
            self.assertTrue(has(row, "SELECTABLE") and has(row, "SHOWING"))
        self.assertFalse(has(waiting, "BUSY"))
        self.assertIn("Queued", waiting.get_description())
        self.assertEqual((running.get_minimum_value(), running.get_maximum_value()), (0, 100))
        self.assertEqual(running.get_current_value(), 0)
        (home.path / "half").touch()
        reader.wait(lambda: 40 < running.get_current_value() < 60, "half of it")
        reader.hears("property-change:accessible-value", "list item", first)
        total = reader.find("progress bar", "Progress of all movies")
        reader.wait(lambda: 0 < total.get_current_value() < total.get_maximum_value(), "the total")

        reader.press(waiting, "Remove from the list")
        reader.announces(f"Removed “{second}” from the list")
        reader.hears("children-changed:remove", "list", "Movies")
        reader.rows(1)
        reader.press(reader.find("button", "Undo"))
        reader.rows(2)

        (home.path / "whole").touch()
        reader.wait(lambda: "Finished" in running.get_description(), "the end")
        self.assertFalse(has(running, "BUSY"))
        reader.hears("property-change:accessible-description", "list item", first)
        reader.announces(f"{second}: ")
        reader.press(running, "SetFocus")
        reader.wait(lambda: has(running, "FOCUSED") and has(running, "SELECTED"), "the focus")


if __name__ == "__main__":
    unittest.main(verbosity=1)
