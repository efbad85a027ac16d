"""What tests of running programs share: waiting with a generous deadline, and a bus of their own.

ctest puts this folder on the search path (PYTHONPATH).
"""
import subprocess
import tempfile
import threading
import time

LIMIT = 60  # seconds, which no machine needs, however busy it is


def wait_until(condition, what):
    """Waits until the condition holds, and returns what it gave."""
    deadline = time.monotonic() + LIMIT
    while not (result := condition()):
        if time.monotonic() > deadline:
            raise AssertionError(f"waited in vain for {what}")
        time.sleep(0.01)
    return result


def next_line(process):
    """The next line that a process writes. Empty at its end, which comes when it writes nothing in time."""
    watchdog = threading.Timer(LIMIT, process.kill)
    watchdog.start()
    line = process.stdout.readline()
    watchdog.cancel()
    return line


def start_bus(test):
    """A session bus that lasts as long as the test. Returns its address."""
    folder = tempfile.TemporaryDirectory()
    test.addCleanup(folder.cleanup)  # A bus that is killed leaves its socket behind.
    bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address", f"--address=unix:dir={folder.name}"],
                           stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    test.addCleanup(bus.communicate)
    test.addCleanup(bus.kill)
    return bus.stdout.readline().strip()
