"""Measures the costs of the window relative to an empty Qt window, on the current display. Usage: window.py BIN_FOLDER

Each figure is the median of alternating pairs (ours, empty); the longest gap between two iterations of the event loop
is measured while a thousand movies are added.
"""
import json
import os
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

BIN = Path(sys.argv[1]).resolve()
PAIRS = 15


def run(program, home, seconds, *paths):
    environment = {"PATH": os.environ["PATH"], "DISPLAY": os.environ["DISPLAY"], "HOME": str(home), "LANG": "C.UTF-8",
                   "QT_QPA_PLATFORM": "xcb", "XDG_CONFIG_HOME": f"{home}/config", "XDG_DATA_HOME": f"{home}/data",
                   "XDG_RUNTIME_DIR": str(home), "BENCH_SECONDS": str(seconds)}
    if "XAUTHORITY" in os.environ:
        environment["XAUTHORITY"] = os.environ["XAUTHORITY"]
    environment["BENCH_BEGIN"] = str(time.clock_gettime_ns(time.CLOCK_MONOTONIC))
    output = subprocess.run([BIN / program, *paths], env=environment, capture_output=True, text=True, check=True).stdout
    return json.loads(output.splitlines()[-1])


def told(name, figure, limit, unit=""):
    verdict = "ok" if figure <= limit else "TOO MUCH"
    print(f"{name:<58} {figure:6.2f}{unit}  (limit {limit}{unit})  {verdict}")
    return figure <= limit


def main():
    with tempfile.TemporaryDirectory(prefix="ravelin-bench-") as folder:
        home = Path(folder)
        pairs = [(run("bench_ravelin", home, 0.5), run("bench_empty", home, 0.5)) for _ in range(PAIRS)]
        ours = statistics.median(pair[0]["painted"] for pair in pairs)
        empty = statistics.median(pair[1]["painted"] for pair in pairs)
        print(f"first paint: ours {ours:.0f} ms, empty {empty:.0f} ms; "
              f"PSS: ours {pairs[0][0]['pss'] / 1024:.1f} MiB, empty {pairs[0][1]['pss'] / 1024:.1f} MiB")
        good = told("start to the first painted window, times an empty one",
                    statistics.median(a["painted"] / b["painted"] for a, b in pairs), 3)
        good &= told("memory (PSS), times an empty window's",
                     statistics.median(a["pss"] / b["pss"] for a, b in pairs), 2)

        movies = home / "movies"
        movies.mkdir()
        first = movies / "0.mkv"
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=160x120:r=10:d=1", "-f", "lavfi", "-i",
                        "sine=d=1", "-c:v", "mpeg4", "-c:a", "ac3", first], check=True)
        paths = [first]
        for number in range(1, 1000):
            paths.append(movies / f"{number}.mkv")
            os.link(first, paths[-1])
        settings = {"HasUpgradedFromPre13": 1, "DestinationBookmarks": json.dumps([str(home)]),
                    "DestinationNames": json.dumps(["out"]), "DefaultDestination": 3, "AutoAdd": 1}
        for auto_add in (0, 1):
            settings["AutoAdd"] = auto_add
            environment = {**os.environ, "XDG_CONFIG_HOME": f"{home}/config", "XDG_DATA_HOME": f"{home}/data"}
            for key, value in settings.items():
                subprocess.run([BIN / "ravelin-cli", "settings", "set", key, str(value)], env=environment, check=True)
            figures = run("bench_ravelin", home, 15, *paths)
            good &= told(f"longest gap while 1,000 paths are opened, AutoAdd {auto_add}", figures["gap"], 50, " ms")
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
