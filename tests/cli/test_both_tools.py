"""The tool that scripts/tool builds does what the system's does: the same reports, records, streams and packets.

RAVELIN_BUILT_TOOL is the former; without it the test is skipped. The movies hold every codec that the system's tool can write
and that the accepted containers have a name for.
"""
import os
import re
import shutil
import struct
import subprocess
import sys
import unittest
from pathlib import Path

from support import MOVIES, CliTest, look, ogm, tool

BUILT, SYSTEM = os.environ["RAVELIN_BUILT_TOOL"], shutil.which("ffmpeg")
VIDEO = ("libx264 libx264rgb libx265 mpeg4 libxvid libvpx libvpx-vp9 libaom-av1 mpeg1video mpeg2video mjpeg jpeg2000 png vc2 msmpeg4v2 "
         "msmpeg4 wmv1 wmv2 flv flashsv h261 h263 h263p libtheora prores_ks dnxhd dvvideo ffv1 ffvhuff huffyuv magicyuv utvideo asv1 "
         "asv2 avrp ayuv cfhd cinepak cljr dpx exr gif hap jpegls ljpeg msvideo1 qtrle r10k r210 rawvideo snow speedhq svq1 targa tiff "
         "v210 v308 v408 v410 y41p yuv4 zlib zmbv").split()
AUDIO = ("aac ac3 eac3 mp2 libmp3lame dca flac alac libopus libvorbis truehd mlp libspeex tta wavpack wmav1 wmav2 s302m libgsm libgsm_ms "
         "adpcm_ima_qt adpcm_ima_wav adpcm_ms adpcm_swf adpcm_yamaha g722 g726 g723_1 nellymoser real_144 sonic dfpwm pcm_alaw pcm_mulaw "
         "pcm_bluray pcm_dvd pcm_f32be pcm_f32le pcm_f64be pcm_f64le pcm_s8 pcm_u8 pcm_s16be pcm_s16le pcm_s24be pcm_s24le pcm_s32be "
         "pcm_s32le").split()
NEEDS = {"dnxhd": "-s 1280x720 -b:v 60M -pix_fmt yuv422p", "dvvideo": "-s 720x576", "libxvid": "-qscale 5", "wmv1": "-b:v 1M",
         "libaom-av1": "-cpu-used 8 -pix_fmt yuv420p", "libvpx": "-cpu-used 16", "libvpx-vp9": "-deadline realtime -cpu-used 8",
         "libx265": "-preset ultrafast", "speedhq": "-pix_fmt yuv422p", "g722": "-ar 16000 -ac 1", "adpcm_swf": "-ar 22050",
         "nellymoser": "-ar 22050 -ac 1", "libspeex": "-ar 16000", "adpcm_ima_qt": "-ac 2", "s302m": "-ac 2", "ac3": "-ac 6",
         "dca": "-ac 6", "flac": "-ar 96000"} | dict.fromkeys(("libgsm", "libgsm_ms", "g723_1", "real_144", "g726"), "-ar 8000 -ac 1")
# Which codecs are put into a container (None: whatever its muxer takes), what is beside them, and the muxer.
CONTAINERS = {
    "mkv": (None, "mpeg4 ac3", "matroska"), "mov": (None, "mpeg4 aac", "mov"), "mp4": (None, "mpeg4 aac", "mp4"),
    "avi": ("mpeg4 libxvid libx264 msmpeg4v2 msmpeg4 wmv1 wmv2 mjpeg ffv1 ffvhuff huffyuv utvideo magicyuv asv1 asv2 cinepak cljr dvvideo "
            "msvideo1 rawvideo snow zlib zmbv ac3 libmp3lame mp2 dca aac flac libvorbis wmav2 adpcm_ima_wav adpcm_ms pcm_alaw pcm_mulaw "
            "pcm_s16le pcm_u8 pcm_f32le g726 libgsm_ms", "mpeg4 mp2", "avi"),
    "wmv": ("wmv1 wmv2 msmpeg4 mpeg4 mjpeg wmav1 wmav2 libmp3lame ac3 pcm_s16le", "wmv2 mp2", "asf"),
    "ts": ("libx264 libx265 mpeg4 mpeg1video mpeg2video vc2 aac ac3 eac3 mp2 libmp3lame dca libopus s302m", "mpeg4 mp2", "mpegts"),
    "mpg": ("libx264 mpeg1video mpeg2video ac3 mp2 dca pcm_dvd", "mpeg2video mp2", "vob"),
    "webm": ("libvpx libvpx-vp9 libaom-av1 libopus libvorbis", "libvpx libopus", "webm"),
    "flv": ("flv libx264 flashsv libmp3lame aac nellymoser adpcm_swf libspeex", "flv libmp3lame", "flv"),
    "ogm": ("libtheora libvorbis libopus flac libspeex", "libtheora libvorbis", "ogg")}
SUBTITLES = {"mkv": "subrip ass ssa text webvtt dvdsub", "mp4": "mov_text", "mov": "mov_text"}
LINES = "".join(f"{i}\n00:00:0{i}.100 --> 00:00:0{i}.900\nLine <i>{i}</i>\n\n" for i in range(4)).replace(".", ",")
FILES = {"srt": LINES, "ass": "[Script Info]\nScriptType: v4.00+\n\n[Events]\nFormat: Start, End, Text\n" + "".join(
             f"Dialogue: 0:00:0{i}.10,0:00:0{i}.90,Line {i}\n" for i in range(4)),
         "smi": "<SAMI><BODY>" + "".join(f"<SYNC Start={i}100><P>Line {i}\n<SYNC Start={i}900><P>&nbsp;\n" for i in range(4)) + "</BODY></SAMI>",
         "sub": "".join(f"{{{25 * i + 3}}}{{{25 * i + 20}}}Line {i}\n" for i in range(4))}
START = ("-f", "lavfi", "-i", "testsrc=s=176x144:r=25:d=0.4", "-f", "lavfi", "-i", "sine=d=0.8:r=44100")


def encode(outputs):
    """Several outputs in one start, which ends with the first that cannot be written; those that can be, one by one then."""
    command = [SYSTEM, "-v", "error", "-y", *START]
    if subprocess.run(command + sum(outputs, []), stdin=subprocess.DEVNULL, capture_output=True).returncode:
        for output in outputs:
            subprocess.run(command + output, stdin=subprocess.DEVNULL, capture_output=True)


def make_movies(folder):
    """A movie for each codec in each container, named by both: what a muxer does not take is missing."""
    for codecs, kind in ((VIDEO, 0), (AUDIO, 1)):
        outputs = []
        for codec in codecs:
            targets = {}  # By what is beside the codec: one encoder for many containers.
            for container, (names, beside, muxer) in CONTAINERS.items():
                if names is None or codec in names.split():
                    # Streams without a place for a codec's header have it in front of the key pictures.
                    header = ":bsfs/v=dump_extra" if container in ("ts", "mpg") else ""
                    targets.setdefault(beside.split()[1 - kind], []).append(
                        f"[f={muxer}:onfail=ignore{header}]{folder}/{codec}.{container}")
            for other, slaves in targets.items():
                both = [other, other]
                both[kind] = codec
                outputs.append(["-map", "0", "-map", "1", "-c:v", both[0], "-c:a", both[1], "-flags", "+global_header", "-strict", "-2",
                                *NEEDS.get(codec, "").split(), "-f", "tee", "|".join(slaves)])
        encode(outputs)
    (folder / "lines.srt").write_text(LINES)
    outputs = [["-map", "0", "-map", "1", "-c:v", "mpeg4", f"{folder}/plain.mkv"]]
    for container, codecs in SUBTITLES.items():
        outputs += [["-i", f"{folder}/lines.srt", "-map", "0", "-map", "1", "-map", "2", "-c:v", "mpeg4", "-c:s", codec,
                     f"{folder}/{codec}.{container}"] for codec in codecs.split()]
    for output in outputs:
        encode([output])
    shutil.copy(ogm(1), folder / "old.ogm")
    (folder / "lines.srt").unlink()
    return sorted(path for path in folder.iterdir() if path.stat().st_size or path.unlink())


def reports(program, files):
    """What the program reports of each file, many of them in one start, which ends with the first that it refuses."""
    said = []
    while len(said) < len(files):
        some = files[len(said):len(said) + 40]
        output = subprocess.run([program, *sum((["-i", str(file)] for file in some), [])], stdin=subprocess.DEVNULL, capture_output=True)
        parts = re.split(r"(?m)^Input #\d+", output.stderr.decode(errors="replace"))[1:]
        said += [[line.rstrip() for line in part.splitlines() if line[:1] in ", " and "Last message repeated" not in line] for part in parts]
        if len(parts) < len(some):
            said.append(["refused"])
    # Which decoder the program has is no difference, nor whether the picture's shape is known from the container or from it,
    # nor the picture format of AV1, for which the built tool has none.
    unlike = re.compile(r" \(lib\w+\)|(?<=Stream #)\d+|(?<=av1 \(Main\), )\w+|(?<=0x31307661\), )\w+|,? \[?SAR \S+ DAR [\d:]+\]?")
    return {file.name: unlike.sub("", "\n".join(lines)) for file, lines in zip(files, said)}


def pcm_in_mp4(mov, codec):
    """The movie with the sample entry that newer recorders write in MP4; its sound is the first track, of one channel."""
    kind, bits, order = re.fullmatch(r"pcm_([sf])(\d+)([lb]e)", codec).groups()
    entry = struct.pack(">4s6xH8xHH4xI", b"ipcm" if kind == "s" else b"fpcm", 1, 1, 16, 44100 << 16)
    entry += struct.pack(">I4s4xBB", 14, b"pcmC", order == "le", int(bits))
    entry = struct.pack(">I", len(entry) + 4) + entry
    data, at, around = bytearray(mov.read_bytes().replace(b"qt  ", b"isom")), 0, []
    for name in (b"moov", b"trak", b"mdia", b"minf", b"stbl", b"stsd"):
        at = data.index(name, at)
        around.append(at - 4)
    former, = struct.unpack_from(">I", data, at + 12)
    data[at + 12:at + 12 + former] = entry
    for box in around:
        struct.pack_into(">I", data, box, struct.unpack_from(">I", data, box)[0] + len(entry) - former)
    return bytes(data)


def version(program):
    return subprocess.run([program, "-version"], capture_output=True, text=True, check=True).stdout.split()[2].split("-")[0]


are_alike = Path(BUILT).exists() and version(SYSTEM) == version(BUILT)


class BothTools(CliTest):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.movies = MOVIES / "both"
        cls.movies.mkdir()
        cls.files = make_movies(cls.movies)

    def run_with(self, program, *arguments):
        resources = self.folder / f".{Path(program).parent.name}"
        resources.mkdir(exist_ok=True)
        (resources / "ffmpeg").unlink(missing_ok=True)
        (resources / "ffmpeg").symlink_to(program)
        self.env["RAVELIN_RESOURCES"] = str(resources)
        return self.finish(self.start(*arguments, "--set", "CageTool=2"))

    def test_movies_are_there(self):
        """What a version of the system's tool cannot write is missing, but not much of it."""
        there = {file.name for file in self.files}
        self.assertGreater(len(there), 250)
        self.assertLessEqual({f"{codec}.mkv" for codec in ("libx264", "libx265", "aac", "dca", "truehd", "subrip")}, there)
        self.assertEqual(set(CONTAINERS), {file.suffix[1:] for file in self.files})

    @unittest.skipIf(are_alike, "the reports are compared")
    def test_records(self):
        keys = ("audioTrackInformation", "subtitleTrackIDs", "videoTrackCodec", "videoTrackID")
        for some in (self.files[i:i + 50] for i in range(0, len(self.files), 50)):
            system, built = ([[record.get(key) for key in ("file", *keys)]
                              for record in self.run_with(program, "probe", "--json", *some).events] for program in (SYSTEM, BUILT))
            self.assertEqual(len(some), len(system))
            self.assertEqual(system, built)

    @unittest.skipUnless(are_alike, "of other versions the records are compared")
    def test_reports(self):
        system, built = reports(SYSTEM, self.files), reports(BUILT, self.files)
        for name, report in system.items():
            with self.subTest(name):
                self.assertEqual(report, built[name])

    @unittest.skipUnless(are_alike, "other versions write other packets")
    def test_conversions(self):
        """Each codec once, from the first container that has it, and each container once; every other one in the fast style."""
        chosen = {}
        for suffix in CONTAINERS:
            of_container = [file for file in self.files if file.suffix == f".{suffix}"]
            chosen[f".{suffix}"] = of_container[0]
            chosen |= {file.stem: file for file in of_container if file.stem not in chosen}
        films = sorted(set(chosen.values()))
        for suffix, text in FILES.items():
            films.append(self.place(self.movies / "plain.mkv", f"films/with {suffix}.mkv"))
            self.place(text, f"films/with {suffix}.{suffix}")
        subtitles = [self.folder / f"films/with {suffix}.{suffix}" for suffix in FILES]
        for style, part in (("compatible", films[::2]), ("fast", films[1::2])):
            ends = []
            for program in (SYSTEM, BUILT):
                out = self.folder / Path(program).parent.name / style
                out.mkdir(parents=True)
                result = self.run_with(program, "convert", "--json", "--style", style, "--to", out, *part, *subtitles,
                                       "--set", "DisableBuiltinSubtitles=0", "--set", "FixSubtitleDuration=0", "--set", "ConcurrentJobs=1")
                ends.append({Path(end["file"]).name: end for end in result.of("finished", "failed", "refused")})
            self.assertEqual(len(part), len(ends[0]))
            for name, end in ends[0].items():
                with self.subTest(name, style=style):
                    self.compare(end, ends[1][name])

    def compare(self, system, built):
        self.assertEqual(system["event"], built["event"], (system, built))
        if system["event"] != "finished":
            self.assertEqual(*(end.get("message", "").split("\n\nCommand-line")[0] for end in (system, built)))
            return
        self.assertEqual(system["receipt"], built["receipt"])
        one, other = (Path(end["destination"]) for end in (system, built))
        if one.read_bytes() == other.read_bytes():
            return
        first, second = look(one), look(other)
        for seen in (first, second):
            seen.pop("format")
        self.assertEqual(first, second)

    def test_last_subtitle(self):
        """The built tool writes it with the usual arguments."""
        film = self.place(self.movies / "subrip.mkv", "Film.mkv")
        result = self.run_with(BUILT, "convert", "--json", "--set", "DisableBuiltinSubtitles=0", film)
        receipt = result.only("finished")["receipt"]
        self.assertEqual(("whole", 4, []), (receipt["verdict"], receipt["tracks"][2]["count"], receipt["notes"]))

    def test_pcm_in_mp4(self):
        """The size and kind of its samples stand in a box of their own, which the system's tool may not know."""
        sound = "-map 1 -map 0 -c:v mpeg4 -c:a".split()
        for codec in "pcm_s16be pcm_s24le pcm_s24be pcm_s32le pcm_f32le pcm_f64be".split():
            with self.subTest(codec):
                mov = self.folder / f"{codec}.mov"
                encode([[*sound, codec, str(mov)]])
                mp4 = self.place(pcm_in_mp4(mov, codec), f"{codec}.mp4")
                heard = []
                for film in (mov, mp4):
                    out = self.folder / film.suffix[1:]
                    out.mkdir(exist_ok=True)
                    receipt = self.run_with(BUILT, "convert", "--json", "--to", out, film).only("finished")["receipt"]
                    self.assertEqual("whole", receipt["verdict"])
                    heard.append(tool("-i", out / f"{codec}.mp4", "-map", "0:a", "-f", "md5", "-"))
                self.assertEqual(*heard)


if __name__ == "__main__":
    if not Path(BUILT).exists():
        print(f"SKIPPED: there is no {BUILT}; scripts/tool builds it.")
        sys.exit(77)
    unittest.main()
