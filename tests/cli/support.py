"""What the tests of the command line share: a home of their own, tiny movies, runs of the program, a look inside outputs.

RAVELIN_CLI is the program under test, whose tool may be one with few parts; movies are made and read with the ffmpeg and
ffprobe of the search path.
"""
import atexit
import json
import os
import re
import shutil
import struct
import subprocess
import tempfile
import time
import unittest
from collections import Counter
from contextlib import suppress
from functools import lru_cache, reduce
from pathlib import Path

CLI = os.path.abspath(os.environ["RAVELIN_CLI"])
TOOL = os.path.realpath(Path(CLI).parent.parent / "resources/ffmpeg")
ENDINGS = {"finished", "failed", "refused"}
ENCODERS = {"h264": "libx264 -preset ultrafast", "hevc": "libx265 -preset ultrafast -x265-params log-level=none",
            "vp8": "libvpx -cpu-used 16", "vp9": "libvpx-vp9 -deadline realtime -cpu-used 8", "msmpeg4v3": "msmpeg4",
            "dts": "dca -strict -2", "vorbis": "libvorbis", "opus": "libopus", "mp3": "libmp3lame"}
MOVIES = Path(tempfile.mkdtemp(prefix="ravelin-movies-"))
atexit.register(shutil.rmtree, MOVIES)


def tool(*arguments):
    return subprocess.run(["ffmpeg", "-v", "error", "-y", *map(str, arguments)], check=True, capture_output=True).stdout


@lru_cache(None)
def movie(*tracks, video="h264", seconds=2, suffix=".mkv", options=()):
    """A movie with audio tracks such as "ac3", "dts 5.1" or "flac 2 96000 ger". One a process: copy it, do not change it."""
    path = MOVIES / f"{len(list(MOVIES.iterdir()))}{suffix}"
    inputs = ["-f", "lavfi", "-i", f"testsrc=size=160x120:rate=25:duration={seconds}"]
    maps = ["-map", 0, "-pix_fmt", "yuv420p", "-c:v", *ENCODERS.get(video, video).split()]
    for i, track in enumerate(tracks):
        codec, layout, rate, language = track.split() + ["2", "48000", "eng"][len(track.split()) - 1:]
        encoder, *more = ENCODERS.get(codec, codec).split()
        inputs += ["-f", "lavfi", "-i", f"sine=frequency={440 + 110 * i}:duration={seconds}"]
        maps += ["-map", i + 1, f"-c:a:{i}", encoder, f"-ac:a:{i}", 6 if layout == "5.1" else layout, f"-ar:a:{i}", rate,
                 f"-metadata:s:a:{i}", f"language={language}", *more]
    tool(*inputs, *maps, *options, path)
    return path


OGG_CHECKSUMS = [reduce(lambda sum, _: sum << 1 ^ (0x104C11DB7 if sum >> 31 else 0), range(8), n << 24) for n in range(256)]


def ogg_page(packet, position, stream, number):
    """A page of one packet of less than 65,025 bytes."""
    header = struct.pack("<4sBBqII", b"OggS", 0, 0 if number else 2, position, stream, number)
    rest = bytes([len(packet) // 255 + 1] + [255] * (len(packet) // 255) + [len(packet) % 255]) + packet
    checksum = reduce(lambda sum, byte: sum << 8 & 0xFFFFFFFF ^ OGG_CHECKSUMS[sum >> 24 ^ byte], header + bytes(4) + rest, 0)
    return header + struct.pack("<I", checksum) + rest


@lru_cache(None)
def ogm(seconds):
    """A movie in the older kind of Ogg, which the tool reads but does not write: MPEG-4 and MP3."""
    video = tool("-f", "lavfi", "-i", f"testsrc=s=160x120:r=25:d={seconds}", "-c:v", "mpeg4", "-f", "m4v", "-")
    audio = tool("-f", "lavfi", "-i", f"sine=d={seconds}", "-ar", 48000, "-b:a", "64k", "-write_xing", 0, "-id3v2_version", 0,
                 "-f", "mp3", "-")
    # The first byte of a packet says whether it is a key frame.
    pictures = [(b"\0" if picture[picture.index(b"\0\0\1\xb6") + 4] >> 6 else b"\x08") + picture
                for picture in re.findall(rb"(?s).*?\x00\x00\x01\xb6.*?(?=\x00\x00\x01|$)", video)]
    sound = [b"\x08" + audio[at:at + 192] for at in range(0, len(audio), 192)]
    pages = []
    for stream, kind, codec, unit, rate, step, facts, frames in (
            (1, b"video", b"XVID", 400000, 1, 1, (160, 120), pictures), (2, b"audio", b"0055", 10**7, 48000, 1152, (1, 8000), sound)):
        header = struct.pack("<B8s4siqqiiiii", 1, kind, codec, 52, unit, rate, 1, 65536, 0, *facts)
        for number, packet in enumerate([header, b"\3vorbis" + bytes(8) + b"\1", *frames]):
            position = max(number - 2, 0) * step
            pages.append((position * unit / rate, number, stream, ogg_page(packet, position, stream, number)))
    path = MOVIES / "ogm.ogm"
    path.write_bytes(b"".join(page for *_, page in sorted(pages)))
    return path


def look(path):
    """What is in a file: its streams, format and chapters, and its packets as hashes."""
    show = [f"-show_{what}" for what in ("streams", "format", "chapters", "packets")]
    return json.loads(subprocess.run(["ffprobe", "-v", "error", "-of", "json", *show, "-show_data_hash", "md5", str(path)],
                                     check=True, capture_output=True).stdout)


def streams(seen, kind):
    return [s for s in seen["streams"] if s["codec_type"] == kind]


def codecs(seen):
    return [s["codec_name"] for s in seen["streams"]]


def languages(seen, kind):
    return [s["tags"].get("language") for s in streams(seen, kind)]


def packets(seen, kind):
    """Of the first stream of its kind."""
    return [p["data_hash"] for p in seen["packets"] if p["stream_index"] == streams(seen, kind)[0]["index"]]


def wait_until(condition, seconds=20):
    """True as soon as the condition holds, False when it did not in time."""
    deadline = time.monotonic() + seconds
    while not (holds := condition()) and time.monotonic() < deadline:
        time.sleep(0.01)
    return holds


class Result:
    """How a run of the program ended, and what it said."""

    def __init__(self, status, out, err):
        self.status, self.out, self.err = status, out.decode(), err.decode()

    @property
    def events(self):
        return [json.loads(line) for line in self.out.splitlines()]

    def of(self, *names):
        return [e for e in self.events if e["event"] in names]

    def files(self, *names):
        return [Path(e["file"]).name for e in self.of(*names)]

    def only(self, name, file=None):
        """The one event of this name, or the one of the movie."""
        [event] = [e for e in self.of(name) if file in (None, Path(e["file"]).name, Path(e["file"]))]
        return event


class CliTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="ravelin-test-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name).resolve()
        self.data = self.folder / ".data"
        self.settings_file = self.folder / ".config/example.ravelin.Ravelin/settings.json"
        # No session bus and no display: nothing of the desktop may be needed.
        gone = ("DBUS_SESSION_BUS_ADDRESS", "DISPLAY", "WAYLAND_DISPLAY", "RAVELIN_RESOURCES", "LC_ALL")
        self.env = {k: v for k, v in os.environ.items() if k not in gone}
        self.env |= {"HOME": str(self.folder), "LANG": "en_US.UTF-8", "LANGUAGE": "en",
                     "XDG_CONFIG_HOME": str(self.folder / ".config"), "XDG_DATA_HOME": str(self.data)}

    def place(self, source, name):
        """A copy of a movie, or a file of this text or these bytes, in the test's folder."""
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        content = source.read_bytes() if isinstance(source, Path) else source
        path.write_bytes(content.encode() if isinstance(content, str) else content)
        return path

    def use_tool(self, script, mode=0o755):
        """Makes a shell script the program's tool; $real: the real one, $home: the test's folder, $converts: it is to convert."""
        path = self.place(f'#!/bin/sh\nreal={TOOL} home={self.folder}\n'
                          f'case " $* " in *" -progress "*) converts=1;; esac\n{script}', ".resources/ffmpeg")
        path.chmod(mode)
        self.env["RAVELIN_RESOURCES"] = str(path.parent)
        # A script starts programs, and those of the tests write files.
        stored = json.loads(self.settings_file.read_text()) if self.settings_file.exists() else {}
        self.place(json.dumps(stored | {"CageTool": 0}), self.settings_file)

    def start(self, *arguments):
        """Starts the program; what it says goes to files, so that it never waits for a reader."""
        files = [tempfile.TemporaryFile(), tempfile.TemporaryFile()]
        process = subprocess.Popen([CLI, *map(str, arguments)], stdin=subprocess.DEVNULL, stdout=files[0], stderr=files[1],
                                   env=self.env, cwd=self.folder)
        process.files = files
        self.addCleanup(lambda: [process.poll() is None and process.kill(), process.wait(), *[f.close() for f in files]])
        return process

    def finish(self, process):
        return Result(process.wait(timeout=60), *(os.pread(file.fileno(), 1 << 24, 0) for file in process.files))

    def run_cli(self, *arguments, status=0):
        result = self.finish(self.start(*arguments))
        self.assertEqual(status, result.status, result.err)
        return result

    def convert(self, *arguments, status=0):
        """Converts with --json, and looks at what holds for every run."""
        result = self.run_cli("convert", "--json", *arguments, status=status)
        self.check_events(result)
        return result

    def check_events(self, result):
        """Each movie ends once, with its last event; the status says whether all succeeded; no working files stay."""
        last = {e["file"]: e["event"] for e in result.events}
        self.assertEqual(dict.fromkeys(last, 1), Counter(e["file"] for e in result.of(*ENDINGS)), "endings")
        self.assertLessEqual(set(last.values()), ENDINGS, "an event after the end")
        if result.status in (0, 1, 3):
            self.assertEqual(result.status != 1, set(last.values()) == {"finished"})
        self.assertEqual([], self.working_files())

    def working_files(self):
        return [path.name for path in self.data.rglob("*.log")]

    def converting(self):
        """How many conversions the tool has begun to tell the progress of."""
        return sum(path.stat().st_size > 0 for path in self.data.rglob("*.log"))

    def outputs(self):
        """The files in the test's folder, but for what tests and program keep in hidden places."""
        names = (str(path.relative_to(self.folder)) for path in self.folder.rglob("*") if path.is_file())
        return sorted(name for name in names if not name.startswith("."))

    def processes(self):
        """The program's running processes and its tools': all that have this test's folder in their environment."""
        found = []
        for entry in Path("/proc").glob("[0-9]*"):
            with suppress(OSError):  # It has ended, or is another user's.
                if os.fsencode(self.data) in (entry / "environ").read_bytes():
                    found.append(int(entry.name))
        return found
