"""The recipes of docs/many-machines.md do what the page promises: each is taken from the page and run.

Those for programs that are not installed (jq, GNU parallel, sshd) are skipped. Slurm is used where its daemons are installed; elsewhere a
stand-in runs the tasks of the array.
"""
import getpass
import json
import os
import re
import shutil
import socket
import subprocess
import unittest
from pathlib import Path

from support import CLI, CliTest, Result, codecs, look, movie, wait_until

PAGE = (Path(__file__).parents[2] / "docs/many-machines.md").read_text()
RECIPES = {name: script for name, script in re.findall(r"<!-- recipe: ([^\n]+) -->\n```sh\n(.*?)```\n", PAGE, re.S)}
NAMES = ("Small.mkv", "Größer & 'länger'.mkv", "line\nbreak $(x).mkv")
STAND_IN = r"""#!/bin/sh
for word; do case $word in --array=*) range=${word#--array=1-} ;; esac; script=$word; done
pattern() { sed -n "s/^#SBATCH --$1=//p" "$script" | sed "s/%A/1/; s/%a/$2/"; }
status=0
for task in $(seq "${range%\%*}"); do
    SLURM_ARRAY_TASK_ID=$task sh "$script" > "$(pattern output "$task")" 2> "$(pattern error "$task")" || status=$?
done
exit $status
"""


def program(name):
    return shutil.which(name, path=os.environ["PATH"] + ":/usr/sbin:/sbin")


def needs(*names):
    return unittest.skipUnless(all(map(program, names)), f"not all of {', '.join(names)} are installed")


def free_port():
    with socket.socket() as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


def answers(port):
    with socket.socket() as one:
        return one.connect_ex(("127.0.0.1", port)) == 0


class Recipes(CliTest):
    def setUp(self):
        super().setUp()
        (self.folder / "bin").mkdir()
        (self.folder / "bin/ravelin-cli").symlink_to(CLI)
        self.env["PATH"] = f"{self.folder}/bin:{self.env['PATH']}:/usr/sbin:/sbin"
        for seconds, name in enumerate(NAMES, 2):
            self.place(movie("ac3", seconds=seconds), f"share/movies/{name}")
        (self.folder / "share/converted").mkdir()

    def recipe(self, name, status=0, change=("", "")):
        script = RECIPES[name].replace("/share/", f"{self.folder}/share/").replace(*change)
        run = subprocess.run(["sh", "-c", script], cwd=self.folder, env=self.env, capture_output=True, timeout=300)
        self.assertEqual(status, run.returncode, run.stderr.decode())
        return Result(run.returncode, run.stdout, run.stderr)

    def daemon(self, *command):
        log = (self.folder / f"{Path(command[0]).name}.log").open("wb")
        self.addCleanup(log.close)
        process = subprocess.Popen([program(command[0]), *map(str, command[1:])], stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                   env=self.env)
        self.addCleanup(process.wait)
        self.addCleanup(process.terminate)
        return process

    def check_outputs(self):
        outputs = sorted((self.folder / "share/converted").iterdir())
        self.assertEqual(sorted(name.replace(".mkv", ".mp4") for name in NAMES), [path.name for path in outputs])
        for path in outputs:
            self.assertEqual(["h264", "aac"], codecs(look(path)))

    def events(self, *files):
        return [json.loads(line) for file in files for line in file.read_text().splitlines()]

    def check_events(self, *files, skipped):
        ends = [e for e in self.events(*files) if e["event"] in ("finished", "failed", "refused")]
        self.assertEqual(sorted((f"{self.folder}/share/movies/{name}", skipped) for name in NAMES),
                         sorted((e["file"], e.get("skipped", False)) for e in ends))

    def test_folder(self):
        self.recipe("folder")
        self.check_outputs()
        self.assertEqual(3, self.recipe("folder").out.count("is there and whole"))
        self.check_outputs()

    @needs("jq")
    def test_xargs(self):
        self.place("no movie", "share/movies/Broken.mkv")
        self.assertIn("Some movies cannot be converted.", self.recipe("list").err)
        found = (self.folder / "movies.list").read_bytes().decode().split("\0")
        self.assertEqual([*reversed(NAMES), ""], [name.rpartition("/movies/")[2] for name in found])
        for skipped in (False, True):
            shutil.rmtree(self.folder / "events", ignore_errors=True)
            self.recipe("xargs")
            self.check_events(*(self.folder / "events").iterdir(), skipped=skipped)
            self.check_outputs()
        (self.folder / "share/movies/Small.mkv").unlink()
        self.recipe("xargs", status=123)
        self.assertIn("Small.mkv: There is no file", self.recipe("failures").out)

    def start_host(self, name):
        """A computer with settings and data of its own; only the share is common. Returns its port."""
        home, port, keys = self.folder / name, free_port(), self.folder / "keys"
        home.mkdir()
        keys.mkdir(exist_ok=True)
        for key in (keys / "user", keys / name):
            if not key.exists():
                subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", key], check=True)
        (keys / "authorized").write_text((keys / "user.pub").read_text())
        if os.getuid() == 0:
            Path("/run/sshd").mkdir(exist_ok=True)  # sshd insists on it.
        variables = " ".join(f'{key}="{value}"' for key, value in {
            "PATH": self.env["PATH"], "XDG_CONFIG_HOME": home / "config", "XDG_DATA_HOME": home / "data"}.items())
        config = self.place(f"ListenAddress 127.0.0.1:{port}\nHostKey {keys / name}\nAuthorizedKeysFile {keys / 'authorized'}\n"
                            f"PidFile none\nStrictModes no\nUsePAM no\nPasswordAuthentication no\nKbdInteractiveAuthentication no\n"
                            f"PermitRootLogin prohibit-password\nSetEnv {variables}\n", f"{name}/sshd.conf")
        self.daemon("sshd", "-D", "-e", "-f", config)
        self.assertTrue(wait_until(lambda: answers(port)), "sshd does not start")
        return port

    @needs("jq", "parallel", "sshd")
    def test_parallel(self):
        hosts = {name: self.start_host(name) for name in ("alpha", "beta")}
        client = "".join(f"Host {name}\n  HostName 127.0.0.1\n  Port {port}\n" for name, port in hosts.items())
        config = self.place(f"{client}Host *\n  User {getpass.getuser()}\n  IdentityFile {self.folder}/keys/user\n  IdentitiesOnly yes\n"
                            f"  StrictHostKeyChecking no\n  UserKnownHostsFile {self.folder}/keys/known\n  LogLevel ERROR\n", "ssh.conf")
        self.env["PARALLEL_SSH"] = f"ssh -F {config}"
        self.env["PARALLEL_HOME"] = str(self.folder / ".parallel")
        self.place("1/alpha\n1/beta\n", "hosts")
        self.recipe("list")
        for skipped in (False, True):
            self.recipe("parallel")
            self.check_events(self.folder / "events.jsonl", skipped=skipped)
            self.check_outputs()
            log = [line.split("\t") for line in (self.folder / "jobs.log").read_text().splitlines()[1:]]
            self.assertEqual(3, sum(fields[:1] != [] and fields[6] == "0" for fields in log if len(fields) > 6))
        self.assertEqual({"alpha", "beta"}, {name for name in hosts if (self.folder / name / "config").exists()})
        small = self.folder / "share/movies/Small.mkv"
        small.rename(self.folder / "away")
        self.recipe("parallel", status=1)
        (self.folder / "away").rename(small)
        self.recipe("parallel", change=("--joblog", "--resume-failed --joblog"))
        self.assertEqual({"Small.mkv"}, {Path(e["file"]).name for e in self.events(self.folder / "events.jsonl")})

    def start_slurm(self):
        """A cluster of one node on the loopback address."""
        state = self.folder / "slurm"
        for name in ("munge", "controller", "node"):
            (state / name).mkdir(parents=True)
            (state / name).chmod(0o700)
        self.folder.chmod(0o755)
        key = state / "munge/key"
        key.write_bytes(os.urandom(128))
        key.chmod(0o400)
        self.daemon("munged", "--foreground", "--force", f"--key-file={key}", f"--socket={state}/munge/socket",
                    f"--pid-file={state}/munge/pid", f"--seed-file={state}/munge/seed", f"--log-file={state}/munge/log",
                    "--num-threads=1")
        self.assertTrue(wait_until(lambda: (state / "munge/socket").exists()), "munged does not start")
        host = socket.gethostname().partition(".")[0]
        config = self.place(
            f"ClusterName=test\nSlurmctldHost={host}(127.0.0.1)\nSlurmctldPort={free_port()}\nSlurmdPort={free_port()}\n"
            f"SlurmUser={getpass.getuser()}\nSlurmdUser={getpass.getuser()}\nAuthType=auth/munge\nAuthInfo=socket={state}/munge/socket\n"
            f"CredType=cred/munge\nStateSaveLocation={state}/controller\nSlurmdSpoolDir={state}/node\n"
            f"SlurmctldPidFile={state}/controller.pid\nSlurmdPidFile={state}/node.pid\nProctrackType=proctrack/linuxproc\n"
            f"TaskPlugin=task/none\nMpiDefault=none\nReturnToService=2\nSelectType=select/cons_tres\nSelectTypeParameters=CR_CPU\n"
            f"JobAcctGatherType=jobacct_gather/none\nMinJobAge=300\n"
            f"NodeName={host} NodeAddr=127.0.0.1 CPUs={os.cpu_count()} State=UNKNOWN\n"
            f"PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP\n", "slurm/slurm.conf")
        self.env["SLURM_CONF"] = str(config)
        self.daemon("slurmctld", "-D", "-i", "-f", config)
        self.daemon("slurmd", "-D", "-f", config)
        ready = lambda: b"idle" in subprocess.run([program("sinfo"), "-h", "-o", "%T"], env=self.env,  # noqa: E731
                                                  capture_output=True).stdout
        self.assertTrue(wait_until(ready, 60), "Slurm does not start")

    @needs("jq")
    def test_slurm(self):
        if all(map(program, ("munged", "slurmctld", "slurmd", "sbatch"))):
            self.start_slurm()
        else:
            print("Slurm is not installed: a stand-in runs the tasks", flush=True)
            self.place(STAND_IN, "bin/sbatch").chmod(0o755)
        self.recipe("list")
        self.place(RECIPES["slurm convert.sbatch"].replace("/share/", f"{self.folder}/share/"), "convert.sbatch")
        for skipped in (False, True):
            shutil.rmtree(self.folder / "events", ignore_errors=True)
            self.recipe("slurm submit")
            self.check_events(*(self.folder / "events").glob("*.jsonl"), skipped=skipped)
            self.check_outputs()
        (self.folder / "share/movies/Small.mkv").unlink()
        self.recipe("slurm submit", status=1)


if __name__ == "__main__":
    unittest.main()
