"""The Debian packages and the container, in fresh roots of the suite for which they were built.

test_packages.py FOLDER ROOT_ARCHIVE WORK_FOLDER

scripts/package --test runs it. FOLDER has the packages; it needs root's rights, Debian's archive, and an ffmpeg that makes movies.
"""
import contextlib
import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import threading
import unittest
from pathlib import Path

FOLDER, ARCHIVE, WORK = (Path(path).resolve() for path in sys.argv[1:4])
SOURCE = Path(__file__).resolve().parents[2]
IN_ROOT = SOURCE / "packaging/in-root"
DEADLINE = 180  # In seconds, for what takes a few.
GRAPHICAL = re.compile(r"lib(qt6|qt5)?(gui|widgets|svg|opengl|waylandclient|wayland-client|x11|xcb|gl1|egl|glx|gtk)", re.I)
# What apt, dpkg and the C library keep for themselves.
ALWAYS_CHANGING = re.compile(r"/(proc|sys|dev|tmp|run|packages|var/lib/(dpkg|apt)|var/cache/(apt|debconf|ldconfig)|var/log)(/|$)|"
                             r"/etc/ld\.so\.cache$|.*\.dpkg-|/etc/resolv\.conf$")


def package(name):
    return next(FOLDER.glob(f"{name}_*.deb"))


def make_movie(path):
    path.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc2=s=320x240:r=25:d=4", "-f", "lavfi", "-i",
                    "sine=d=4", "-map", "0", "-map", "1", "-map", "1", "-c:v", "libx264", "-preset", "ultrafast", "-c:a:0", "ac3",
                    "-c:a:1", "flac", path], check=True, stdin=subprocess.DEVNULL)
    return path


class Root:
    """A fresh root; its processes end with each call."""

    def __init__(self, name):
        self.path = WORK / name
        self.path.mkdir()
        subprocess.run(["tar", "-xp", "--zstd", "-f", ARCHIVE, "-C", self.path], check=True)
        self.apt("update")

    def command(self, *words, options=(), user=None, environment=()):
        if user is not None:
            words = ["setpriv", f"--reuid={user}", f"--regid={user}", "--init-groups", "--no-new-privs", "env", f"HOME=/home/{user}",
                     *environment, *words]
        return list(map(str, [IN_ROOT, *options, self.path, *words]))

    def run(self, *words, check=True, **options):
        run = subprocess.run(self.command(*words, **options), capture_output=True, text=True, stdin=subprocess.DEVNULL, timeout=900)
        if check and run.returncode:
            raise AssertionError(f"{shlex.join(map(str, words))}: status {run.returncode}\n{run.stdout[-3000:]}{run.stderr[-3000:]}")
        return run

    def apt(self, *words, **options):
        return self.run("apt-get", "-q", "-y", "-o", "Dpkg::Use-Pty=0", "--no-install-recommends", *words, options=["--network"],
                        **options)

    def put(self, *paths):
        """Copies packages to where apt of the root reads them; returns their paths there."""
        (self.path / "packages").mkdir(exist_ok=True)
        for path in paths:
            shutil.copy(path, self.path / "packages")
        return [f"/packages/{path.name}" for path in paths]

    def installed(self):
        listed = self.run("dpkg-query", "-W", "-f", "${db:Status-Abbrev} ${Package}\n").stdout
        return {line.split()[-1] for line in listed.splitlines() if line.startswith("ii")}

    def files(self):
        found = set()
        for folder, folders, names in os.walk(self.path):
            inside = "/" + os.path.relpath(folder, self.path)
            for name in folders + names:
                path = os.path.normpath(f"{inside}/{name}")
                if not ALWAYS_CHANGING.match(path):
                    found.add(path)
            folders[:] = [name for name in folders if not ALWAYS_CHANGING.match(os.path.normpath(f"{inside}/{name}"))]
        return found

    def install_needed_by(self, *packages):
        """Installs what the packages depend on, without them."""
        simulated = self.apt("-s", "install", *packages).stdout
        needed = set(re.findall(r"^Inst (\S+)", simulated, re.M)) - {"ravelin", "ravelin-cli"}
        if needed:
            self.apt("install", *sorted(needed))
        return needed


class Watch:
    """A command that goes on until it is told to end; use it in a with statement."""

    # A line on standard input ends it, as its processes have other numbers outside.
    SCRIPT = '"$@" & child=$!; read -r line; kill -TERM $child; wait $child'

    def __init__(self, root, *words, **options):
        self.process = subprocess.Popen(root.command("sh", "-c", self.SCRIPT, "sh", *words, **options),
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        with contextlib.suppress(ProcessLookupError):
            self.process.kill()
        self.process.wait()
        self.process.stdin.close()
        self.process.stdout.close()

    def wait_for_line(self, start):
        said = ""
        alarm = threading.Timer(DEADLINE, self.process.kill)
        alarm.start()
        try:
            for line in self.process.stdout:
                said += line
                if line.startswith(start):
                    return
        finally:
            alarm.cancel()
        raise AssertionError(f"No line {start!r}: {said}")

    def end(self):
        """The exit status after SIGTERM."""
        self.process.communicate("\n", timeout=DEADLINE)
        return self.process.returncode


def give(path, user):
    """Makes the user of a root the owner, by the numbers of the root's users."""
    root = next(parent for parent in path.parents if parent.parent == WORK)
    line = next(line for line in (root / "etc/passwd").read_text().splitlines() if line.startswith(user + ":"))
    subprocess.run(["chown", "-R", ":".join(line.split(":")[2:4]), path], check=True)


def newer(path, folder):
    """The package with a higher version and otherwise the same."""
    unpacked = folder / "unpacked"
    subprocess.run(["dpkg-deb", "-R", path, unpacked], check=True)
    control = unpacked / "DEBIAN/control"
    version = re.search(r"^Version: (.*)$", control.read_text(), re.M)[1]
    control.write_text(control.read_text().replace(version, version + "+1"))
    made = folder / path.name.replace(version, version + "+1")
    subprocess.run(["dpkg-deb", "-b", unpacked, made], check=True, capture_output=True)
    shutil.rmtree(unpacked)
    return made


class Packages(unittest.TestCase):
    """The steps of one installation, in the order of their names."""

    @classmethod
    def setUpClass(cls):
        cls.root = Root("installed")
        cls.addClassCleanup(shutil.rmtree, cls.root.path, ignore_errors=True)
        cls.root.run("useradd", "--create-home", "watcher")
        cls.home = cls.root.path / "home/watcher"
        cls.home.chmod(0o700)  # It serves as the runtime folder, too.
        cls.cli, cls.window = cls.root.put(package("ravelin-cli"), package("ravelin"))
        cls.movie = make_movie(WORK / "movie.mkv")

    def movie_in(self, folder):
        """The movie in a folder of the other user's home."""
        folder = self.home / folder
        folder.mkdir(exist_ok=True)
        shutil.copy(self.movie, folder)
        give(folder, "watcher")
        return folder / self.movie.name

    def purge(self, before):
        shutil.rmtree(self.home)
        self.root.apt("purge", *self.root.installed() & {"ravelin", "ravelin-cli"})
        self.assertEqual(self.root.files() ^ before, {path for path in before if path.startswith("/home/watcher")})
        self.home.mkdir(0o700)
        give(self.home, "watcher")

    def test_1_the_command_line_alone(self):
        needed = self.root.install_needed_by(self.cli)
        self.assertTrue(needed)
        if "ffmpeg" not in needed:  # Debian's needs graphical libraries.
            self.assertEqual([name for name in needed if GRAPHICAL.match(name)], [])
        before = self.root.files()
        self.check_damaged_packages(before)
        self.root.apt("install", self.cli)
        self.check_conversion()
        self.check_watch()
        self.purge(before)

    def check_damaged_packages(self, before):
        whole = package("ravelin-cli").read_bytes()

        def with_another_byte(member, offset):
            at = whole.index(member) + offset
            return whole[:at] + bytes([whole[at] ^ 1]) + whole[at + 1:]

        for name, content in {"a byte of its files": with_another_byte(b"data.tar", 5000),
                              "a byte of its description": with_another_byte(b"control.tar", 100),
                              "cut short": whole[:len(whole) // 2], "its beginning": whole[:100], "empty": b""}.items():
            with self.subTest("damaged", damage=name):
                (self.root.path / "packages/damaged.deb").write_bytes(content)
                self.assertNotEqual(self.root.apt("install", "/packages/damaged.deb", check=False).returncode, 0)
                self.assertEqual(self.root.files(), before)
                self.assertNotIn("ravelin-cli", self.root.installed())

    def check_conversion(self):
        output = self.movie_in("films").with_suffix(".mp4")
        run = self.root.run("ravelin-cli", "convert", "--style", "fast", "/home/watcher/films/movie.mkv", user="watcher")
        self.assertTrue(output.is_file(), run.stdout + run.stderr)
        self.assertIn("Whole: 100 of 100 pictures", run.stdout)
        self.assertEqual(run.stderr, "")

    def check_watch(self):
        unit = next((self.root.path / "usr/lib/systemd/user").glob("ravelin-watch@.service")).read_text()
        command = shlex.split(re.search(r"^ExecStart=(.*)$", unit, re.M)[1].replace("%f", "/home/watcher/Incoming"))
        successes = re.search(r"^SuccessExitStatus=(.*)$", unit, re.M)[1].split()
        incoming = self.home / "Incoming"
        incoming.mkdir()
        give(incoming, "watcher")
        with Watch(self.root, *command, user="watcher") as watch:
            watch.wait_for_line("Watching /home/watcher/Incoming")
            self.movie_in("Incoming")
            watch.wait_for_line("Finished")
            self.assertIn(str(watch.end()), successes)
        self.assertEqual({path.name for path in incoming.iterdir()}, {"movie.mkv", "movie.mp4"})

    def test_2_the_window(self):
        self.root.install_needed_by(self.cli, self.window)
        before = self.root.files()
        self.root.apt("install", self.cli, self.window)
        identifier = json.loads((SOURCE / "resources/Info.json").read_text())["CFBundleIdentifier"]
        desktop = (self.root.path / f"usr/share/applications/{identifier}.desktop").read_text()
        program = re.search(r"^Exec=(\S+)", desktop, re.M)[1]
        # It finds its libraries and comes as far as its event loop.
        run = self.root.run("timeout", "5", program, user="watcher", check=False,
                            environment=["QT_QPA_PLATFORM=offscreen", "XDG_RUNTIME_DIR=/home/watcher"])
        self.assertEqual((run.returncode, run.stderr), (124, ""))
        newer_packages = self.root.put(newer(package("ravelin-cli"), WORK), newer(package("ravelin"), WORK))
        self.root.apt("install", *newer_packages)
        self.root.apt("install", "--reinstall", *newer_packages)
        self.check_conversion()
        self.purge(before)


class Container(unittest.TestCase):
    """What the Containerfile says, done without a container engine."""

    INSTRUCTIONS = {"FROM", "COPY", "RUN", "ENV", "VOLUME", "USER", "HEALTHCHECK", "STOPSIGNAL", "ENTRYPOINT"}

    @classmethod
    def setUpClass(cls):
        text = (SOURCE / "packaging/container/Containerfile").read_text()
        text = re.sub(r"^#.*\n", "", text, flags=re.M).replace("\\\n", " ")
        cls.steps = [line.split(None, 1) for line in text.splitlines() if line.strip()]
        cls.root = Root("container")
        cls.addClassCleanup(shutil.rmtree, cls.root.path, ignore_errors=True)
        cls.environment, cls.user = [], None
        for word, rest in cls.steps:
            assert word in cls.INSTRUCTIONS, word
            if word == "COPY":
                pattern, target = rest.split()
                for path in FOLDER.glob(pattern):
                    shutil.copy(path, cls.root.path / target.strip("/"))
            elif word == "RUN":
                cls.root.run("sh", "-c", rest, options=["--network"])
            elif word == "ENV":
                cls.environment += shlex.split(rest)
            elif word == "USER":
                cls.user = rest.strip()
        cls.entry = json.loads(dict(cls.steps)["ENTRYPOINT"])
        cls.health = json.loads(dict(cls.steps)["HEALTHCHECK"].split("CMD", 1)[1])
        cls.volumes = {name: WORK / f"volume-{name}" for name in ("incoming", "movies", "data")}
        for name, path in cls.volumes.items():
            path.mkdir()
            shutil.copystat(cls.root.path / name, path)
            owner = (cls.root.path / name).stat()
            os.chown(path, owner.st_uid, owner.st_gid)
            cls.addClassCleanup(shutil.rmtree, path, ignore_errors=True)
        cls.options = ["--read-only"]
        for name, path in cls.volumes.items():
            cls.options += ["--bind", path, f"/{name}"]

    def test_it_converts_what_arrives(self):
        watch = " ".join(shlex.quote(word) for word in self.entry)
        health = " ".join(shlex.quote(word) for word in self.health)
        self.assertNotEqual(self.user, "root")
        options = {"user": self.user, "options": self.options, "environment": self.environment}
        # The health is looked at in the same processes, for which a file is the sign.
        both = f'{watch} & child=$!; until [ -e /data/look ]; do sleep 0.1; done; {health}; echo "Health $?"; wait $child'
        with Watch(self.root, "sh", "-c", both, **options) as running:
            running.wait_for_line("Watching /incoming")
            shutil.copy(make_movie(WORK / "arrival.mkv"), self.volumes["incoming"])
            running.wait_for_line("Finished")
            self.assertTrue((self.volumes["movies"] / "arrival.mp4").is_file())
            (self.volumes["data"] / "look").touch()
            running.wait_for_line("Health 0")
        self.assertEqual(self.root.run("touch", "/usr/new", check=False, **options).returncode, 1)

    def test_health_fails_without_the_folders(self):
        self.assertEqual(self.root.run(*self.health, check=False, user=self.user, options=self.options).returncode, 0)
        for name, path in self.volumes.items():
            with self.subTest(name):
                owner = path.stat()
                os.chown(path, 0, 0)
                path.chmod(0o700)
                try:
                    self.assertNotEqual(self.root.run(*self.health, check=False, user=self.user, options=self.options).returncode, 0)
                finally:
                    path.chmod(0o755)
                    os.chown(path, owner.st_uid, owner.st_gid)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
