"""scripts/tool fails with one sentence that says why, and leaves what was there.

test_tool_script.py SOURCE_DIR. The build itself is too long for a test; tests/cli/test_both_tools.py looks at what it makes.
"""
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(sys.argv[1]).resolve()
CHANGELOG = "ffmpeg (7:{}-0+deb12u1) bookworm; urgency=medium\n"
DSC = "Format: 3.0 (quilt)\nSource: ffmpeg\nVersion: 7:5.1.9-0+deb12u1\nChecksums-Sha256:\n {} 3 ffmpeg_5.1.9.orig.tar.xz\n".format("0" * 64)


class ToolScript(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="ravelin-test-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.output = self.folder / "out/tool"
        # Nothing is installed by a test: all that the build needs is there.
        self.place("bin/dpkg-query", "#!/bin/sh\necho installed\n")

    def place(self, name, content):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(content)
        path.chmod(0o755)
        return path

    def package(self, configure, version="5.1.9"):
        """An unpacked source package that our patches fit, with this script for its configuration."""
        for patch in (SOURCE / "packaging/tool").glob("*.patch"):
            head, hunk = patch.read_text().split("\n@@", 1)
            file = head.split("--- a/", 1)[1].split("\n", 1)[0]
            self.place(f"package/{file}", "".join(line[1:] + "\n" for line in hunk.splitlines()[1:] if line[:1] in (" ", "-")))
        self.place("package/debian/changelog", CHANGELOG.format(version))
        self.place("package/configure", f"#!/bin/sh\n{configure}\n")
        return self.folder / "package"

    def assert_fails(self, says, *arguments, **environment):
        self.place("out/tool/ffmpeg", "the former one")
        environment = {**os.environ, "PATH": f"{self.folder}/bin:{os.environ['PATH']}", **environment}
        done = subprocess.run([SOURCE / "scripts/tool", *map(str, arguments)], env=environment, capture_output=True, text=True, timeout=120)
        self.assertEqual(1, done.returncode, done.stderr)
        self.assertIn(says, done.stderr.splitlines()[-1])
        self.assertEqual(["tool"], os.listdir(self.output.parent))
        self.assertEqual(["ffmpeg"], os.listdir(self.output))

    def test_no_network(self):
        self.assert_fails("is there a network?", "--fetch", self.output, RAVELIN_DEBIAN_MIRROR="http://127.0.0.1:9")

    def test_sources(self):
        self.place("damaged/ffmpeg_5.1.9.orig.tar.xz", "xyz")
        self.place("damaged/ffmpeg_5.1.9-0+deb12u1.dsc", DSC)
        self.assert_fails("Unpacking the source package failed", "--output", self.output, "--source", self.folder / "damaged")
        for says, *package in (("The source is of version 7:7.1.1-0+deb12u1", "", "7.1.1"),
                               ("Configuring the tool failed", "echo gcc is unable to create an executable file >&2; exit 1"),
                               ("Compiling the tool failed", "touch config.h; printf 'ffmpeg:\\n\\tfalse\\n' >Makefile")):
            with self.subTest(says):
                self.assert_fails(says, "--output", self.output, "--source", self.package(*package))

    def test_no_space(self):
        """At the beginning, and when another program has taken it meanwhile."""
        package = self.package("head -c 5000000 /dev/zero >file")
        disk = self.output.parent
        disk.mkdir()
        if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=4m", "none", disk], capture_output=True).returncode:
            self.skipTest("mounting is not allowed")
        self.addCleanup(subprocess.run, ["umount", disk], check=True)
        self.assert_fails("There is too little space on the disk", "--output", self.output, "--source", package)
        self.place("bin/df", "#!/bin/sh\necho 10000\n")
        self.assert_fails("there is no space left on the disk", "--output", self.output, "--source", package)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
