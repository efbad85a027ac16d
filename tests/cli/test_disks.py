"""Disks that are full or read-only, for the output, the private data and the settings: a clear reason, and nothing is lost.

The disks are mounted in a namespace of the test's own; where that is not allowed, the tests are skipped.
"""
import os
import subprocess
import sys
import unittest

MAY_MOUNT = "RAVELIN_MAY_MOUNT"
if __name__ == "__main__" and MAY_MOUNT not in os.environ:
    allowed = subprocess.run(["unshare", "-rm", "true"], capture_output=True).returncode == 0
    os.environ[MAY_MOUNT] = str(int(allowed))
    if allowed:
        os.execvp("unshare", ["unshare", "-rm", sys.executable, *sys.argv])

from support import CliTest, movie, wait_until  # noqa: E402  It makes a folder, of which only one process may know.

OUTPUT, DATA, SETTINGS = "out", ".data", ".config"
NOT_WRITEABLE = "You don't seem to have write access"
SAVING = "The settings can't be saved in"
NOTE = "Movie conversion failed because a note about it can't be saved in the application's private data"
DELETES = ("--set", "AutoRemove=1", "--set", "AutoRemoveType=1")
REPLACES = ("convert", "Movie.mkv", "--output", "out/Movie.mp4", *DELETES)


def is_settled(disk):
    """The kernel gives deleted files free a moment after the processes that were confined to them have ended.

    Some versions count the attributes of files, too.
    """
    status, files = os.statvfs(disk), list(disk.rglob("*"))
    return status.f_files - status.f_ffree - 1 - len(files) <= sum(bool(os.listxattr(path)) for path in files)


def fill(folder):
    """Leaves not a byte."""
    with (folder / "filler").open("wb", buffering=0) as filler:
        try:
            while filler.write(bytes(4096)):
                pass
        except OSError:
            pass


def take_inodes(folder):
    try:
        for number in range(1000):
            (folder / f"filler-{number}").touch()
    except OSError:
        pass


def protect(folder):
    subprocess.run(["mount", "-o", "remount,ro", folder], check=True)


@unittest.skipUnless(os.environ.get(MAY_MOUNT) == "1", "mounting is not allowed")
class Disks(CliTest):
    def setUp(self):
        super().setUp()
        self.place(movie("aac"), "Movie.mkv")
        (self.folder / OUTPUT).mkdir()

    def mount(self, name, size=1 << 20):
        """A small disk; it goes with the test, for the program's locks and folders are on it."""
        disk = self.folder / name
        disk.mkdir(exist_ok=True)
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={size},nr_inodes=40", "none", disk], check=True)
        self.addCleanup(subprocess.run, ["umount", "-l", disk], check=True)
        return disk

    def files(self, folder):
        """What is there but for what the test filled the disk with, and the lock of the settings."""
        found = (p for p in folder.rglob("*") if p.is_file() and not p.name.startswith("filler") and p.suffix != ".lock")
        return {p.name: p.read_bytes() for p in found}

    def test_disks(self):
        """The disk, what is the matter with it, the command, its status, what it reports, and whether it converts."""
        for name, trouble, command, status, says, converts in (
            (OUTPUT, fill, REPLACES, 1, NOT_WRITEABLE, False), (OUTPUT, take_inodes, REPLACES, 1, NOT_WRITEABLE, False),
            (OUTPUT, protect, REPLACES, 1, NOT_WRITEABLE, False),
            (DATA, fill, REPLACES, 1, NOTE, False), (DATA, take_inodes, REPLACES, 1, NOTE, False),
            (DATA, protect, REPLACES, 1, NOTE, False),
            (SETTINGS, fill, REPLACES, 0, SAVING, True), (SETTINGS, take_inodes, REPLACES, 0, SAVING, True),
            (SETTINGS, protect, REPLACES, 0, SAVING, True),
            (SETTINGS, fill, ("settings", "set", "AudioVolume", "90"), 1, SAVING, False),
            (SETTINGS, take_inodes, ("settings", "set", "AudioVolume", "90"), 1, SAVING, False),
            (SETTINGS, protect, ("settings", "unset", "AACBitrate"), 1, SAVING, False),
        ):
            with self.subTest(disk=name, trouble=trouble.__name__, command=command[0]):
                self.doCleanups()
                self.setUp()
                disk = self.mount(name)
                # All folders are there, as after earlier runs.
                self.run_cli("settings", "set", "AACBitrate", "3")
                self.run_cli("convert", "Movie.mkv", "--to", OUTPUT)
                (self.folder / "out/Movie.mp4").write_text("old")
                settings = self.settings_file.read_bytes()
                self.assertTrue(wait_until(lambda: is_settled(disk)))
                trouble(disk)
                result = self.run_cli(*command, status=status)
                self.assertEqual(1, result.err.count(says), result.err)
                self.assertEqual(not converts, (self.folder / "Movie.mkv").exists())
                self.assertEqual(["Movie.mp4"], list(self.files(self.folder / OUTPUT)))
                self.assertEqual(not converts, (self.folder / "out/Movie.mp4").read_bytes() == b"old")
                self.assertEqual({}, self.files(self.data))
                self.assertEqual(["settings.json"], list(self.files(self.settings_file.parent)))
                if name == SETTINGS:
                    self.assertEqual(settings, self.settings_file.read_bytes())

    def test_private_data_that_fill_meanwhile(self):
        """They say nothing about the movie, whose progress alone cannot be written."""
        disk = self.mount(DATA)
        self.use_tool('[ $converts ] && dd if=/dev/zero of="$home/.data/filler" 2>/dev/null; exec "$real" "$@"')
        self.place("old", "out/Movie.mp4")
        self.run_cli(*REPLACES)
        self.assertFalse((self.folder / "Movie.mkv").exists())
        self.assertEqual(["Movie.mp4"], list(self.files(self.folder / OUTPUT)))
        self.assertEqual({}, self.files(disk))

    def test_a_volume_that_is_away(self):
        """The note of a killed run stays until its volume is back."""
        disk = self.folder / OUTPUT
        source = self.folder / ".volume"
        source.mkdir()
        attach = ["mount", "--bind", source, disk]
        subprocess.run(attach, check=True)
        self.addCleanup(subprocess.run, ["umount", "-l", disk], check=True)
        self.place("old", "out/Movie.mp4")
        self.use_tool('[ $converts ] && kill -9 $PPID; exec "$real" "$@"')
        self.run_cli(*REPLACES, status=-9)
        subprocess.run(["umount", "-l", disk], check=True)
        self.run_cli("settings", "path")
        self.assertNotEqual({}, self.files(self.data))
        self.assertNotEqual(["Movie.mp4"], list(self.files(source)))
        subprocess.run(attach, check=True)
        self.run_cli("settings", "path")
        self.assertEqual({}, self.files(self.data))
        self.assertEqual({"Movie.mp4": b"old"}, self.files(disk))


if __name__ == "__main__":
    unittest.main()
