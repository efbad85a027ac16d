"""Measures what a long list costs. Usage: queue.py BIN_FOLDER [MOVIES [CONVERTED]]

Each figure of a list of MOVIES (default 10,000) is shown with that of a list of twenty, or with its limit. CONVERTED of
them are converted: by default all, which takes a quarter of an hour.
"""
import json
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

BIN = Path(sys.argv[1]).resolve()
MANY = int(sys.argv[2]) if len(sys.argv) > 2 else 10_000
CONVERTED = int(sys.argv[3]) if len(sys.argv) > 3 else MANY
FEW = 20


def told(name, figure, limit, unit=""):
    verdict = "ok" if figure <= limit else "TOO MUCH"
    print(f"{name:<58} {figure:6.2f}{unit}  (limit {limit}{unit})  {verdict}")
    return figure <= limit


def run(count):
    with tempfile.TemporaryDirectory(prefix="ravelin-bench-", dir="/dev/shm") as folder:
        home = Path(folder)
        for name in ("movies", "resources", "out"):
            (home / name).mkdir()
        shutil.copy(BIN / "bench_tool", home / "resources/ffmpeg")
        for number in range(count):
            name = "endless" if number == 0 else "Some series with a name"
            (home / f"movies/{number:05} {name} - s01e{number % 24:02} - the episode's name.mkv").touch()
        environment = {"PATH": os.environ["PATH"], "HOME": folder, "LANG": "C.UTF-8", "QT_QPA_PLATFORM": "offscreen",
                       "XDG_CONFIG_HOME": f"{folder}/config", "XDG_DATA_HOME": f"{folder}/data",
                       "XDG_RUNTIME_DIR": folder, "RAVELIN_RESOURCES": f"{folder}/resources"}
        settings = {"HasUpgradedFromPre13": 1, "DestinationBookmarks": json.dumps([f"{folder}/out"]),
                    "DestinationNames": json.dumps(["out"]), "DefaultDestination": 3, "ProveResults": 0, "ShowPosters": 0}
        for key, value in settings.items():
            subprocess.run([BIN / "ravelin-cli", "settings", "set", key, str(value)], env=environment, check=True)
        result = subprocess.run([BIN / "bench_queue", home / "movies", str(min(count, CONVERTED))], env=environment,
                                capture_output=True, text=True)
        if "-v" in sys.argv:
            sys.stderr.write(result.stderr[-2000:])
        return json.loads(result.stdout.splitlines()[-1])


def main():
    few = run(FEW)
    many = run(MANY)
    if "-v" in sys.argv:
        print(few)
        for step, figure in many.items():
            print(f"{step}: {figure}")
    good = True
    for step in ("tick", "paint"):
        good &= told(f"{step} with {MANY:,} jobs, times that with twenty", many[step] / few[step], 1.1)
    good &= told(f"memory (PSS) with {MANY:,} jobs", many["add"]["pss"] / 1024, 60, " MiB")
    for step in ("open", "add", "remove", "putBack", "convert", "clean", "undo", "settle"):
        good &= told(f"longest gap, {step} {MANY:,} movies, processor time", many[step]["cpu"], 50, " ms")
    for step in ("idleFinished", "idleSettled"):
        good &= told(f"wake-ups in 10 s, {step}", many[step], 2)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
