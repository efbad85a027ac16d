"""A movie reaches nothing but itself and its output, whatever it says and whatever the system can do about it."""
import os
import shutil
import subprocess
import unittest

from support import CLI, CliTest, movie, tool

DEPRIVED = os.environ["RAVELIN_DEPRIVED"]
# What a playlist of each kind looks like that names another movie.
PLAYLISTS = {
    "concat": "ffconcat version 1.0\nfile '{path}'\n",
    "relative concat": "ffconcat version 1.0\nfile {name}\n",
    "hls": "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\n{path}\n#EXT-X-ENDLIST\n",
    "hls with a protocol": "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\nfile:{path}\n#EXT-X-ENDLIST\n",
    "relative hls": "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\n{name}\n#EXT-X-ENDLIST\n",
    "dash": '<?xml version="1.0"?><MPD xmlns="urn:mpeg:dash:schema:mpd:2011" type="static" mediaPresentationDuration="PT2S">'
            '<Period><AdaptationSet mimeType="video/mp2t"><Representation id="1" bandwidth="1"><SegmentList duration="2">'
            '<SegmentURL media="{path}"/></SegmentList></Representation></AdaptationSet></Period></MPD>',
    "streaming": "<SmoothStreamingMedia/>", "mlp": "#EXTM3U\nfile:///etc/passwd\n", "rtsp": "RTSPtextRTSP://127.0.0.1:9/\n",
    "sdp": "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=video 9 RTP/AVP 96\na=rtpmap:96 H264/90000\n",
}
# The traps work, without the cage. Tools from version 7 on refuse a list of segments by its name.
READS_PLAYLISTS = f'exec {shutil.which("ffmpeg")} "$@"'
LEAKING = ("relative concat", "relative hls")


class Cage(CliTest):
    def setUp(self):
        super().setUp()
        self.private = self.place(movie("aac", suffix=".ts"), "private.ts")

    def leaks(self, playlist, *options):
        """Whether the private movie's pictures, or anything else, went into an output."""
        trap = self.place(PLAYLISTS[playlist].format(path=self.private, name=self.private.name), "trap.ts")
        output = self.folder / "out.mp4"
        self.finish(self.start("convert", *options, "--output", output, trap))
        leaked = output.exists() and output.stat().st_size > 0
        output.unlink(missing_ok=True)
        return leaked

    def test_playlists_read_no_other_movie(self):
        for playlist in PLAYLISTS:
            with self.subTest(playlist):
                self.assertFalse(self.leaks(playlist))
        self.use_tool(READS_PLAYLISTS)
        self.assertIn([self.leaks(playlist) for playlist in LEAKING], ([True, True], [True, False]))

    def test_subtitle_files_read_no_other_file(self):
        secret = self.place("1\n00:00:00,100 --> 00:00:01,900\nThe password is walnut\n", "secret.srt")
        film = self.place(movie("aac"), "Film.mkv")
        for playlist in ("concat", "hls", "relative hls", "relative concat"):
            with self.subTest(playlist):
                self.place(PLAYLISTS[playlist].format(path=secret, name=secret.name), "Film.srt")
                self.finish(self.start("convert", film, self.folder / "Film.srt"))
                self.assertEqual([], [o.name for o in self.folder.glob("*.mp4") if b"walnut" in o.read_bytes()])
        self.use_tool(READS_PLAYLISTS)
        self.convert(film, self.folder / "Film.srt")
        self.assertTrue(any(b"walnut" in o.read_bytes() for o in self.folder.glob("*.mp4")), "the trap does not work at all")

    def test_systems_that_cannot_restrict_the_tool(self):
        film = self.place(movie("aac"), "Film.mkv")
        for without, there, strictly in (("files", "network, system calls", 1), ("calls", "files, network", 1), ("both", "none", 1)):
            with self.subTest(without):
                def run(*arguments):
                    done = subprocess.run([DEPRIVED, without, CLI, *map(str, arguments)], env=self.env, cwd=self.folder,
                                          capture_output=True, text=True)
                    return done.returncode, done.stdout + done.stderr
                self.assertEqual((0, f"Cage: {there}"), (lambda r: (r[0], r[1].splitlines()[-1]))(run("--version")))
                self.assertEqual(0, run("convert", film, "--output", self.folder / "out.mp4")[0])
                status, said = run("convert", film, "--set", "CageTool=2", "--output", self.folder / "strict.mp4")
                self.assertEqual(strictly, status)
                self.assertIn("this system cannot restrict it", said)
                self.assertFalse((self.folder / "strict.mp4").exists())
        self.assertEqual("Cage: files, network, system calls", self.run_cli("--version").out.splitlines()[-1])

    def test_files_that_only_their_owner_may_read(self):
        """Root reads other people's movies and keeps no other right than that."""
        if os.geteuid() != 0:
            self.skipTest("needs root")
        film = self.place(movie("aac"), "home/Film.mkv")
        os.chown(film.parent, 65534, 65534)
        os.chown(film, 65534, 65534)
        film.chmod(0o600)
        film.parent.chmod(0o700)
        result = self.convert(film)
        self.assertEqual("whole", result.only("finished")["receipt"]["verdict"])


if __name__ == "__main__":
    unittest.main()
