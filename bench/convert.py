"""Times ravelin-cli against the bare tool commands that it runs. Usage: convert.py RAVELIN_CLI

Each figure is the median of alternating pairs (ours, bare), so that changes of the machine's speed cancel out.
"""
import json
import os
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

CLI = os.path.abspath(sys.argv[1])
GIGABYTE = 1_000_000_000


def ffmpeg(*arguments):
    subprocess.run(["ffmpeg", "-v", "error", "-y", *map(str, arguments)], check=True, stdin=subprocess.DEVNULL)


def make_clip(path, seconds, audio):
    ffmpeg("-f", "lavfi", "-i", f"testsrc2=s=1280x720:r=25:d={seconds}", "-f", "lavfi", "-i", f"sine=d={seconds}",
           "-c:v", "libx264", "-preset", "ultrafast", "-b:v", "8M", "-c:a", audio, path)


def make_big(path, clip):
    loops = GIGABYTE // clip.stat().st_size
    ffmpeg("-stream_loop", loops, "-i", clip, "-map", "0", "-c", "copy", path)


def timed(command):
    begin = time.monotonic()
    subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    return time.monotonic() - begin


def convert(movie, output, *more):
    return [CLI, "convert", "--quiet", "--style", "fast", *more, "--output", str(output), str(movie)]


def bare_commands(movie, output):
    """The commands that a conversion starts, as reported by one run."""
    events = subprocess.run([CLI, "convert", "--json", "--style", "fast", "--output", output, movie],
                            capture_output=True, text=True, check=True).stdout.splitlines()
    started = next(e for e in map(json.loads, events) if e["event"] == "started")
    arguments = [a if not a.endswith(".log") else str(output) + ".log" for a in started["arguments"]]
    tool = str(Path(CLI).resolve().parent.parent / "resources/ffmpeg")
    commands = [[tool, "-i", str(movie)]]
    if started["method"] == 4 and "(aac)" in events[0]:
        video, audio = [arguments[i + 1] for i, a in enumerate(arguments) if a == "-map"][:2]
        commands.append([tool, "-i", str(movie), "-stats", "-t", "1", "-map", video, "-map", audio, "-vcodec", "copy",
                         "-acodec", "copy", "-y", str(output)])
    return commands + [[tool, *arguments]]


def pairs(name, movie, output, runs, limit):
    commands = bare_commands(movie, output)
    ratios, ours_all, bare_all = [], [], []
    for _ in range(runs):
        output.unlink(missing_ok=True)
        ours = timed(convert(movie, output))
        bare = 0.0
        for command in commands:
            bare += timed(command)
        ratios.append(ours / bare)
        ours_all.append(ours)
        bare_all.append(bare)
    row(name, f"{statistics.median(ours_all):.3f} s", f"{statistics.median(bare_all):.3f} s",
        statistics.median(ratios), limit)


def cost(name, setting, movie, output, runs, limit):
    """A run with what a setting switches on, against the same without."""
    times = {1: [], 0: []}
    for _ in range(runs):
        for value, list_of in times.items():
            output.unlink(missing_ok=True)
            list_of.append(timed(convert(movie, output, "--set", f"{setting}={value}")))
    with_it, without = (statistics.median(times[value]) for value in (1, 0))
    row(name, f"{with_it:.3f} s", f"{without:.3f} s", with_it / without, limit)


def peak_memory(pid):
    for line in Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmHWM:"):
            return int(line.split()[1]) / 1024
    return 0.0


def batch(folder, clip, count):
    """Memory during a batch, and the cost of queueing a movie at its beginning and at its end."""
    movies = folder / "batch"
    movies.mkdir()
    for number in range(count):
        os.link(clip, movies / f"movie{number:04}.mkv")
    out = folder / "out"
    out.mkdir()
    run = subprocess.Popen([CLI, "convert", "--json", "--style", "fast", "--to", out, movies], stdout=subprocess.PIPE,
                           stderr=subprocess.DEVNULL, text=True)
    queued, peak = [], 0.0
    for line in run.stdout:
        event = json.loads(line)["event"]
        if event == "queued":
            queued.append(time.monotonic())
        if event == "finished":
            peak = peak_memory(run.pid)
    run.wait()
    steps = [b - a for a, b in zip(queued, queued[1:])]
    edge = max(1, count // 10)
    first, last = statistics.median(steps[:edge]), statistics.median(steps[-edge:])
    row(f"queueing, last {edge} / first {edge} of {count}", f"{last * 1000:.1f} ms", f"{first * 1000:.1f} ms", last / first, 1.1)
    print(f"{'peak memory, batch of ' + str(count):44} {peak:9.1f} MiB {'':12} {'':8} at most 30 MiB")


def row(name, ours, bare, ratio, limit):
    print(f"{name:44} {ours:>12} {bare:>12} {ratio:8.3f} at most {limit}")


def main():
    with tempfile.TemporaryDirectory(prefix="ravelin-bench-") as name:
        folder = Path(name)
        os.environ.update(XDG_CONFIG_HOME=f"{name}/config", XDG_DATA_HOME=f"{name}/data")
        ac3, aac, tiny, big = (folder / f for f in ("ac3.mkv", "aac.mkv", "tiny.mkv", "big.mkv"))
        make_clip(ac3, 10, "ac3")
        make_clip(aac, 10, "aac")
        make_clip(tiny, 1, "ac3")
        make_big(big, ac3)
        print(f"{'':44} {'Ravelin':>12} {'bare tool':>12} {'ratio':>8}")
        pairs("10 s, H.264 + AC3: probe, conversion", ac3, folder / "clip.mp4", 21, 1.15)
        pairs("10 s, H.264 + AAC: probe, trial, conversion", aac, folder / "clip.mp4", 21, 1.15)
        pairs("1 GB, H.264 + AC3: probe, conversion", big, folder / "big.mp4", 5, 1.03)
        cost("10 s, H.264 + AC3: with the proof, without", "ProveResults", ac3, folder / "clip.mp4", 41, 1.02)
        cost("1 GB, H.264 + AC3: with the proof, without", "ProveResults", big, folder / "big.mp4", 7, 1.03)
        cost("10 s, H.264 + AC3: in the cage, outside", "CageTool", ac3, folder / "clip.mp4", 41, 1.01)
        big.unlink()
        batch(folder, tiny, 1000)


if __name__ == "__main__":
    main()
