"""Times ravelin-cli against the bare commands of its tool, and against one plain copy by the system's tool.

Usage: convert.py RAVELIN_CLI EMPTY_PROGRAM. Each figure is the median of alternating runs (ours, the others), so that
changes of the machine's speed cancel out.
"""
import json
import os
import shlex
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

CLI, EMPTY = map(os.path.abspath, sys.argv[1:])
TOOL = str(Path(CLI).parent.parent / "resources/ffmpeg")
SYSTEM_TOOL = shutil.which("ffmpeg")
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
    commands = [[TOOL, "-i", str(movie)]]
    if started["method"] == 4 and "(aac)" in events[0]:
        video, audio = [arguments[i + 1] for i, a in enumerate(arguments) if a == "-map"][:2]
        commands.append([TOOL, "-i", str(movie), "-stats", "-t", "1", "-map", video, "-map", audio, "-vcodec", "copy",
                         "-acodec", "copy", "-y", str(output)])
    return commands + [[TOOL, *arguments]]


def plain_copy(movie, output):
    return [[SYSTEM_TOOL, "-i", str(movie), "-c", "copy", "-y", str(output)]]


def compare(name, ours, output, runs, others):
    """`others`: a name, a list of commands and a limit for each; a row for each."""
    times = [[] for _ in range(len(others) + 1)]
    for _ in range(runs):
        for list_of, commands in zip(times, [[ours], *(commands for _, commands, _ in others)]):
            output.unlink(missing_ok=True)
            list_of.append(sum(map(timed, commands)))
    for (other, _, limit), list_of in zip(others, times[1:]):
        ratio = statistics.median(a / b for a, b in zip(times[0], list_of))
        row(f"{name} / {other}", *(f"{statistics.median(each):.3f} s" for each in (times[0], list_of)), ratio, limit)


def conversion(name, movie, output, runs, bare_limit, plain_limit):
    bare = bare_commands(movie, output)
    compare(name, convert(movie, output), output, runs,
            [("bare commands", bare, bare_limit), ("plain copy", plain_copy(movie, output), plain_limit)])


def many(folder, clip, count, runs):
    """Two at a time, as ravelin-cli does it and as xargs does."""
    movies, out = folder / "many", folder / "many-out"
    movies.mkdir()
    out.mkdir()
    bare = bare_commands(clip, out / "0.mp4")
    lines = []
    for number in range(count):
        movie = movies / f"{number}.mkv"
        os.link(clip, movie)
        places = {str(clip): str(movie), str(out / "0.mp4"): str(out / f"{number}.mp4")}
        lines.append("; ".join(shlex.join(places.get(word, word.replace("0.mp4.log", f"{number}.log")) for word in command)
                               for command in bare))
    (folder / "lines").write_text("\n".join(lines))
    ours = [CLI, "convert", "--quiet", "--style", "fast", "--set", "ConcurrentJobs=1", "--to", str(out), str(movies)]
    xargs = ["xargs", "-a", str(folder / "lines"), "-d", "\n", "-P2", "-I{}", "sh", "-c", "{}"]
    times = {"ours": [], "xargs": []}
    for _ in range(runs):
        for name, command in (("ours", ours), ("xargs", xargs)):
            shutil.rmtree(out)
            out.mkdir()
            times[name].append(timed(command))
            assert len(list(out.glob("*.mp4"))) == count
    medians = [statistics.median(each) for each in times.values()]
    ratio = statistics.median(a / b for a, b in zip(*times.values()))
    row(f"{count} x 10 s / xargs -P2 of bare commands", *(f"{each:.3f} s" for each in medians), ratio, 1.1)


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
    print(f"{name:44} {ours:>12} {bare:>12} {ratio:8.3f}" + (f" at most {limit}" if limit else ""))


def main():
    with tempfile.TemporaryDirectory(prefix="ravelin-bench-") as name:
        folder = Path(name)
        os.environ.update(XDG_CONFIG_HOME=f"{name}/config", XDG_DATA_HOME=f"{name}/data")
        ac3, aac, tiny, big = (folder / f for f in ("ac3.mkv", "aac.mkv", "tiny.mkv", "big.mkv"))
        make_clip(ac3, 10, "ac3")
        make_clip(aac, 10, "aac")
        make_clip(tiny, 1, "ac3")
        make_big(big, ac3)
        print(f"{'':44} {'Ravelin':>12} {'the other':>12} {'ratio':>8}")
        compare("--version", [CLI, "--version"], folder / "none", 41, [("an empty program", [[EMPTY]], 1.5)])
        conversion("10 s, AC3", ac3, folder / "clip.mp4", 21, None, 0.7)
        conversion("10 s, AAC", aac, folder / "clip.mp4", 21, None, 1.0)
        many(folder, ac3, 100, 3)
        conversion("1 GB, AC3", big, folder / "big.mp4", 5, 1.02, 1.02)
        cost("10 s, H.264 + AC3: with the proof, without", "ProveResults", ac3, folder / "clip.mp4", 41, 1.02)
        cost("1 GB, H.264 + AC3: with the proof, without", "ProveResults", big, folder / "big.mp4", 7, 1.03)
        # Under 2 ms: 1 % of a run with the system's tool, which takes four times as long to start.
        cost("10 s, H.264 + AC3: in the cage, outside", "CageTool", ac3, folder / "clip.mp4", 41, 1.04)
        big.unlink()
        batch(folder, tiny, 1000)


if __name__ == "__main__":
    main()
