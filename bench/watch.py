"""Measures the costs of watching a folder. Usage: watch.py RAVELIN_CLI [SECONDS]

SECONDS is the idle time on a tree of 20,000 folders (default 60; the figures are per minute).
"""
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from contextlib import suppress
from pathlib import Path

CLI = os.path.abspath(sys.argv[1])
IDLE = float(sys.argv[2]) if len(sys.argv) > 2 else 60
FOLDERS = 20_000


def told(name, figure, limit, unit):
    verdict = "ok" if figure <= limit else "TOO MUCH"
    print(f"{name:<58} {figure:6.2f}{unit}  (limit {limit}{unit})  {verdict}")
    return figure <= limit


class Watch:
    def __init__(self, home, folder):
        environment = {**os.environ, "XDG_CONFIG_HOME": f"{home}/config", "XDG_DATA_HOME": f"{home}/data"}
        environment.pop("DBUS_SESSION_BUS_ADDRESS", None)
        self.begin = time.monotonic()
        self.process = subprocess.Popen([CLI, "watch", "--json", folder], env=environment, stdout=subprocess.PIPE)

    def watches(self):
        count = 0
        for info in Path(f"/proc/{self.process.pid}/fdinfo").glob("*"):
            with suppress(OSError):
                count += info.read_text().count("inotify wd:")
        return count

    def wait_for_watches(self, count):
        while self.watches() < count:
            time.sleep(0.02)
        return time.monotonic() - self.begin

    def wait_for(self, event):
        for line in self.process.stdout:
            if json.loads(line)["event"] == event:
                return time.monotonic()
        raise AssertionError("it ended")

    def wakeups(self):
        total = 0
        for status in Path(f"/proc/{self.process.pid}/task").glob("*/status"):
            fields = dict(line.split(":", 1) for line in status.read_text().splitlines())
            total += int(fields["voluntary_ctxt_switches"])
        return total

    def memory(self, kind):
        """In MiB. Anonymous is private memory; Pss includes a share of the memory shared with other processes."""
        text = Path(f"/proc/{self.process.pid}/smaps_rollup").read_text()
        return int(next(line for line in text.splitlines() if line.startswith(kind + ":")).split()[1]) / 1024

    def end(self):
        self.process.terminate()
        self.process.wait()
        self.process.stdout.close()


def latency(home):
    movie, folder = home / "movie.mkv", home / "latency"
    folder.mkdir()
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=160x120:r=10:d=1", "-f", "lavfi", "-i",
                    "sine=d=1", "-c:v", "mpeg4", "-c:a", "ac3", movie], check=True)
    watch = Watch(home, folder)
    watch.wait_for_watches(1)
    seconds = []
    for number in range(5):
        shutil.copyfile(movie, folder / f"{number}.mkv")
        closed = time.monotonic()
        seconds.append(watch.wait_for("started") - closed)
        watch.wait_for("finished")
    watch.end()
    return told("close of a complete file to the start of its conversion", statistics.median(seconds), 3.5, " s")


def idle(home):
    tree = home / "tree"
    for number in range(FOLDERS - 1):
        (tree / f"{number % 141}" / f"{number // 141}").mkdir(parents=True, exist_ok=True)
    folders = 1 + sum(len(names) for _, names, _ in os.walk(tree))
    watch = Watch(home, tree)
    good = told(f"until {folders:,} folders are watched", watch.wait_for_watches(folders), 2, " s")
    time.sleep(2)
    wakeups, memory = watch.wakeups(), watch.memory("Anonymous")
    time.sleep(IDLE)
    good &= told("wake-ups a minute while nothing happens", (watch.wakeups() - wakeups) * 60 / IDLE, 10, "")
    good &= told("growth of its memory meanwhile", watch.memory("Anonymous") - memory, 0.25, " MiB")
    print(f"memory (PSS) with all folders watched: {watch.memory('Pss'):.1f} MiB")
    watch.end()
    return good


def main():
    with tempfile.TemporaryDirectory(prefix="ravelin-bench-") as folder:
        good = latency(Path(folder))
        good &= idle(Path(folder))
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
