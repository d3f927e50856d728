"""The recipes of share/scale-out with the programs of Debian, while workers are killed at random: the results are those of
one machine, byte for byte."""
import hashlib
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parent.parent.parent
sys.path[:0] = [str(REPOSITORY / "tests/endtoend"), str(Path(__file__).resolve().parent)]
import pictures # noqa: E402
import servers # noqa: E402

BIN = Path(os.environ["KESTRINE_BIN"])
RECIPES = REPOSITORY / "share/scale-out"
SECONDS = float(os.environ.get("KESTRINE_KILL_SECONDS", "20")) # for each recipe
OPTIONS = ("--longest", "900,300", "--format", "jpeg", "--out", "out", "-r", "in")
ODD = [b"a b", b"line\nbreak", b'"quoted\'', b"$(touch injected)", b"\xff\xfe", b"-r", b"tab\t", b"[a,b]", b"{}", b"*", b"{1}",
       b"a;touch injected", b"`touch injected`", b"~", b"\\", b"%", "\u00e9".encode(), b"--checkpoint-action=exec=touch injected"]
FILES = 160


class Killer:
    """Kills workers of this test at random, in the block after `with`."""

    def __init__(self, mark):
        self.mark = ("KESTRINE_TEST=" + mark).encode() + b"\0"
        self.killed = 0
        self.random = random.Random(7)
        self.stopped = threading.Event()

    def workers(self):
        """Runs of a shard that this test started, on whichever host."""
        for process in Path("/proc").iterdir():
            try:
                if (process.name.isdigit() and os.readlink(process / "exe") == str(BIN / "kestrinectl")
                        and self.mark in (process / "environ").read_bytes() + b"\0"
                        and b"--quiet\0" in (process / "cmdline").read_bytes()):
                    yield int(process.name)
            except OSError: # it has ended
                continue

    def work(self):
        while not self.stopped.wait(self.random.uniform(0.2, 1.5)):
            alive = list(self.workers())
            if alive:
                try:
                    os.kill(self.random.choice(alive), 9)
                    self.killed += 1
                except ProcessLookupError:
                    continue

    def __enter__(self):
        self.thread = threading.Thread(target=self.work)
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.stopped.set()
        self.thread.join()


class Recipes(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.all = Path(tempfile.mkdtemp(prefix="kestrine-scale-"))
        cls.all.chmod(0o755)
        cls.addClassCleanup(shutil.rmtree, cls.all, ignore_errors=True)
        cls.tree = cls.all / "tree"
        cls.environment = {"HOME": str(cls.all), "PATH": f"{BIN}:/usr/sbin:/usr/bin:/sbin:/bin", "LANG": "C.UTF-8",
                           "KESTRINE_TEST": str(cls.all)}
        samples = pictures.photo(1600, 1200)
        names = [f"{number}".encode() for number in range(FILES - len(ODD))] + ODD
        for number, name in enumerate(names):
            path = cls.tree / os.fsdecode(b"in/%d/" % (number % 7) + name + b".jpg")
            path.parent.mkdir(parents=True, exist_ok=True)
            side = 200 + number * 37 % 1000
            pictures.image(samples[number:number + side, number:number + side + 200]).save(path, quality=80)
            if number % 20 == 0: # wants the same names
                pictures.image(samples[:90, number:number + 100]).save(path.with_suffix(".png"))
        with (cls.tree / "plan").open("wb") as plan:
            subprocess.run([BIN / "kestrinectl", "plan", *OPTIONS], cwd=cls.tree, env=cls.environment, stdout=plan, check=True)
        expected = cls.all / "expected"
        subprocess.run(["cp", "-a", cls.tree, expected], check=True)
        subprocess.run([BIN / "kestrinectl", "convert", "-q", *OPTIONS], cwd=expected, env=cls.environment, check=True)
        cls.expected = cls.contents(expected)
        shutil.rmtree(expected)
        assert len(cls.expected) > 2 * FILES

    @staticmethod
    def contents(tree):
        return {os.fsencode(path.relative_to(tree)): hashlib.sha256(path.read_bytes()).hexdigest()
                for folder in ("in", "out") for path in (tree / folder).rglob("*") if path.is_file()}

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(dir=self.all))
        self.folder.chmod(0o755)
        self.site = self.folder / "a site"
        subprocess.run(["cp", "-a", self.tree, self.site], check=True)

    def remove_results(self):
        shutil.rmtree(self.site / "out", ignore_errors=True)
        for log in self.site.glob("plan.*"):
            log.unlink()

    def check(self):
        self.assertEqual(self.contents(self.site), self.expected)
        self.assertEqual([path for path in self.all.rglob("injected*")], [])
        self.assertEqual([path.name for path in self.site.iterdir() if path.name.startswith(".")], [])

    def recipe(self, *words, check=False):
        done = subprocess.run([RECIPES / words[0], *words[1:]], cwd=self.folder, env=self.environment, capture_output=True, timeout=600)
        if check:
            self.assertEqual(done.returncode, 0, done)
        return done

    def under_fire(self, *words):
        """Runs a recipe again and again while its workers are killed, then once in peace; and all that from the beginning
        when it was done."""
        end = time.monotonic() + SECONDS
        killed = rounds = 0
        while rounds == 0 or time.monotonic() < end:
            self.remove_results()
            with Killer(str(self.all)) as killer:
                attempts = 0
                while self.recipe(*words).returncode != 0 and attempts < 3:
                    attempts += 1
            killed += killer.killed
            self.recipe(*words, check=True)
            self.check()
            rounds += 1
        self.assertGreater(killed, 0)
        print(f"{rounds} rounds, {killed} workers killed ", end="", flush=True)


class GNUParallel(Recipes):
    def test_one_host(self):
        self.under_fire("one-host", self.site / "plan", "16")
        done = self.recipe("one-host", self.site / "plan", "16", check=True)
        self.assertEqual(done.stderr.decode().splitlines()[-1], f"kestrinectl: all done: {len(self.expected_sources())} files")

    def expected_sources(self):
        return [name for name in self.expected if name.startswith(b"in/")]

    def over_ssh(self):
        hosts = self.folder / "hosts"
        sites = self.folder / "ssh"
        sites.mkdir()
        self.ssh = servers.SSHServers(self, sites, 2, self.environment["PATH"], {"KESTRINE_TEST": str(self.all)})
        hosts.write_text(self.ssh.hosts())
        return hosts

    def test_two_hosts_with_a_shared_folder(self):
        self.under_fire("hosts-with-shared-folder", self.over_ssh(), self.site / "plan", "16")

    def test_two_hosts_with_roots_of_their_own(self):
        hosts = self.over_ssh()
        self.under_fire("hosts-with-scratch", hosts, self.site / "plan", "16")
        for home in self.ssh.homes:
            self.assertEqual([path for path in home.rglob("*") if path.is_file() and ".parallel/tmp" in str(path)], [])

    def test_a_source_that_vanished_costs_no_other_file_and_links_are_followed(self):
        hosts = self.over_ssh()
        linked = self.site / "in/1/1.jpg"
        linked.rename(self.folder / "elsewhere.jpg")
        linked.symlink_to(self.folder / "elsewhere.jpg")
        (self.site / "in/2/2.jpg").unlink()
        done = self.recipe("hosts-with-scratch", hosts, self.site / "plan", "4")
        self.assertEqual((done.returncode, done.stdout), (1, b"in/2/2.jpg: failed, cannot examine: No such file or directory\n"))
        missing = {name for name in self.expected if name.startswith((b"out/2/2-", b"in/2/2."))}
        self.assertEqual(self.contents(self.site), {name: value for name, value in self.expected.items() if name not in missing})

    def test_an_interrupted_recipe_leaves_whole_files_and_can_be_repeated(self):
        hosts = self.over_ssh()
        for seconds in (0.5, 1, 2, 3):
            with subprocess.Popen([RECIPES / "hosts-with-scratch", hosts, self.site / "plan", "16"], cwd=self.folder,
                                  env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                  start_new_session=True) as recipe:
                time.sleep(seconds)
                os.killpg(recipe.pid, signal.SIGTERM)
            self.assertLessEqual(self.contents(self.site).items(), self.expected.items())
        self.recipe("hosts-with-scratch", hosts, self.site / "plan", "16", check=True)
        self.check()

    def test_what_a_host_must_not_replace_stays(self):
        hosts = self.over_ssh()
        mine = self.site / "out/0/0-900.jpg"
        mine.parent.mkdir(parents=True)
        mine.write_text("mine")
        done = self.recipe("hosts-with-scratch", hosts, self.site / "plan", "4")
        self.assertEqual((done.returncode, mine.read_text()), (1, "mine"))
        self.assertEqual(done.stdout, b"in/0/0.jpg: missing\n")


class SlurmArray(Recipes):
    def submit(self, tasks):
        return self.slurm.run("sbatch", "--parsable", f"--array={tasks}", "--output=/dev/null", "--export=ALL",
                              RECIPES / "slurm-array", self.site / "plan", "16", cwd=self.folder).strip()

    def requeue(self, job, number):
        self.slurm.run("scontrol", "requeue", f"{job}_{number}", check=False)
        self.begin[number] = time.monotonic() + 5

    def begin_requeued(self, job, tasks):
        """Slurm would begin them after two minutes, and refuses to before the first attempt has ended."""
        for number in [number for number, when in self.begin.items() if when < time.monotonic() and tasks.get(number) == "PENDING"]:
            self.slurm.run("scontrol", "update", f"jobid={job}_{number}", "StartTime=now", check=False)
            del self.begin[number]

    def fire(self, job, choice):
        """Requeues tasks at random until the array ends. Returns how many."""
        self.begin = {}
        requeued = 0
        while tasks := self.slurm.tasks(job):
            running = [number for number, state in tasks.items() if state == "RUNNING"]
            if running and requeued < 8:
                self.requeue(job, choice.choice(running))
                requeued += 1
            self.begin_requeued(job, tasks)
            time.sleep(0.5)
        return requeued

    def wait_for(self, job):
        servers.wait_until(lambda: not self.slurm.tasks(job), "the array does not end", 300)

    def test_an_array_whose_tasks_are_requeued(self):
        self.slurm = servers.Slurm(self, self.folder, self.environment)
        end = time.monotonic() + SECONDS
        rounds = killed = requeued = 0
        while rounds == 0 or time.monotonic() < end:
            self.remove_results()
            with Killer(str(self.all)) as killer:
                job = self.submit("1-16")
                requeued += self.fire(job, random.Random(rounds))
            killed += killer.killed
            logs = sorted(self.site.glob("plan.*-of-16.jsonl"))
            left = subprocess.run([BIN / "kestrinectl", "merge", "-q", "--shards", "16", self.site / "plan", *logs], env=self.environment,
                                  capture_output=True, text=True, check=False).stdout.strip()
            if left:
                self.wait_for(self.submit(left))
            subprocess.run([BIN / "kestrinectl", "merge", "-q", "--results", self.site / "plan", *self.site.glob("plan.*-of-16.jsonl")],
                           env=self.environment, check=True)
            self.check()
            rounds += 1
        self.assertGreater(requeued, 0)
        self.assertGreater(killed, 0)
        print(f"{rounds} rounds, {requeued} tasks requeued, {killed} workers killed ", end="", flush=True)


@unittest.skipUnless(os.getuid() == 0, "only root can start another systemd")
class Service(Recipes):
    def run_to_the_end(self):
        shown = self.recipe("systemd", self.site / "plan", check=True).stdout.decode()
        unit = re.search(r"--unit (kestrine-[0-9]+) ", shown)[1]
        servers.wait_until(lambda: self.manager.state_of(unit) in ("inactive", "failed"), "the service does not end", 300)

    def test_a_service_that_is_killed(self):
        self.manager = servers.ServiceManager(self, self.folder, self.environment)
        self.environment = self.manager.environment
        self.site = self.site.rename(self.folder / "a $HOME ${HOME} %h site")
        end = time.monotonic() + SECONDS
        rounds = killed = 0
        while rounds == 0 or time.monotonic() < end:
            self.remove_results()
            with Killer(str(self.all)) as killer:
                self.run_to_the_end()
            killed += killer.killed
            self.run_to_the_end()  # systemd gives up on a service that is killed too often
            subprocess.run([BIN / "kestrinectl", "merge", "-q", "--results", self.site / "plan", self.site / "plan.1-of-1.jsonl"],
                           env=self.environment, check=True)
            self.check()
            rounds += 1
        self.assertGreater(killed, 0)
        print(f"{rounds} rounds, {killed} workers killed ", end="", flush=True)


if __name__ == "__main__":
    unittest.main(verbosity=2, warnings="ignore")
