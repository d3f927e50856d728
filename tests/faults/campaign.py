#!/usr/bin/python3
"""Runs the tools under injected faults, and checks after each run that nothing was lost. See scripts/faults."""
import argparse
import collections
import concurrent.futures
import ctypes
import hashlib
import json
import multiprocessing.util
import os
import random
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import invariants
import plans
from worlds import ACTIONS, BIN, NEWCOMER, World, scenarios

from tools import without_totals  # found by worlds

INJECTOR = os.environ["KESTRINE_FAULT_INJECTOR"]
FAILING_ALLOCATION = os.environ["KESTRINE_FAILING_ALLOCATION"]
KILLED, NOT_INJECTED = 200, 202
TIMEOUT = 120
PIPES = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE}


def without_expected_warnings(messages):
    """A scenario may have a file of another program where its result should be."""
    return "".join(line for line in messages.splitlines(True)
                   if not line.endswith("is not known as a result of an earlier run and is not replaced\n"))


class Runner:
    """Runs one scenario in one world, with faults, and checks the result."""

    def __init__(self, world, scenario):
        self.world, self.scenario = world, scenario
        trace = Path(f"{world.base}.trace")
        world.build(scenario)
        outcome = self.run([INJECTOR, "--trace", str(trace), "--", *scenario.command])
        self.expected, self.expected_stdout = world.snapshot(), outcome.stdout
        self.trace = trace.read_text()
        self.calls = plans.calls_of(self.trace)
        trace.unlink()
        if outcome.status != 0 or outcome.stderr:
            raise SystemExit(f"{scenario.name} fails without faults: {outcome.stderr}")

    def run(self, command, environment=None, prepare=None, streams=PIPES):
        try:
            done = subprocess.run(command, cwd=self.world.base / self.scenario.folder, timeout=TIMEOUT,
                                  stdin=subprocess.DEVNULL, preexec_fn=prepare, **streams,
                                  env={**self.world.environment(self.scenario), **(environment or {})})
        except subprocess.TimeoutExpired:
            return invariants.Outcome(None, b"", b"it does not end", False)
        base = os.fsencode(str(self.world.base))
        killed = command[0] == INJECTOR and done.returncode == KILLED
        messages = os.fsencode(without_expected_warnings(without_totals(os.fsdecode(done.stderr or b""))))
        return invariants.Outcome(done.returncode, (done.stdout or b"").replace(base, b"BASE"), messages, killed)

    def check(self, outcome, *disturbed):
        outcome.disturbed.update(disturbed)
        found = invariants.violations(self.scenario, self.world, self.expected, self.expected_stdout,
                                      self.world.snapshot(), outcome)
        if self.scenario.can_be_resumed:
            messages = self.world.run(self.scenario, self.scenario.command)
            found += invariants.violations_after_resuming(self.scenario, self.expected, self.world.snapshot(), messages)
        if self.scenario.can_be_undone:
            messages = self.world.undo(self.scenario)
            found += invariants.violations_after_undo(self.scenario, self.world, outcome, self.world.snapshot(), messages)
        return found

    # Each kind of fault is a function that returns the sentences about what does not hold; None if the fault did not
    # come to pass.

    def calls_that_fail(self, *faults):
        self.world.build(self.scenario)
        options = [option for fault in faults for option in ("--at", ":".join(map(str, fault)))]
        trace = Path(f"{self.world.base}.trace")
        outcome = self.run([INJECTOR, "--trace", str(trace), *options, "--", *self.scenario.command])
        calls = {(call.process, call.index): call for call in plans.calls_of(trace.read_text())}
        trace.unlink()
        return None if outcome.status == NOT_INJECTED else self.check(outcome, *self.disturbed_by(faults, calls))

    def disturbed_by(self, faults, calls):
        """On a busy machine the planned call can be another one than in the traced run, so `calls` are those of the run
        with the faults."""
        found = {"cleaning"} if len(faults) > 1 else set()
        for process, index, number, fault in faults:
            if fault.endswith("+") or number in plans.REMOVING:
                found.add("cleaning")
            call = calls.get((process, index))
            may_be_line = call is None or call.arguments[0] in (1, 2)
            if number == plans.NUMBERS["write"] and (fault.endswith("+") or may_be_line):
                found |= {"stdout", "stderr"}
            # What comes before the first line may concern the presets.
            if process == 0 and not any(call.process == 0 and call.index < index and call.number == plans.NUMBERS["write"]
                                        and call.arguments[0] == 1 for call in calls.values()):
                found.add("preferences")
        return found

    def allocations_that_fail(self, plan):
        self.world.build(self.scenario)
        environment = {"LD_PRELOAD": FAILING_ALLOCATION, "KESTRINE_FAILING_ALLOCATIONS": plan}
        return self.check(self.run(self.scenario.command, environment), "cleaning", "preferences")

    def number_of_allocations(self):
        self.world.build(self.scenario)
        counts = Path(f"{self.world.base}.counts")
        self.run(self.scenario.command, {"LD_PRELOAD": FAILING_ALLOCATION, "KESTRINE_ALLOCATIONS": str(counts)})
        number = int(counts.read_text().split()[1])
        counts.unlink()
        return number

    def stream_that_fails(self, stream, how):
        self.world.build(self.scenario)
        if how == "full":
            with open("/dev/full", "wb") as full:
                outcome = self.run(self.scenario.command, streams={**PIPES, stream: full})
        elif how == "closed":
            number = {"stdout": 1, "stderr": 2}[stream]
            outcome = self.run(self.scenario.command, prepare=lambda: os.close(number))
        else:
            reading, writing = os.pipe()
            os.close(reading)
            outcome = self.run(self.scenario.command, streams={**PIPES, stream: writing})
            os.close(writing)
        return self.check(outcome, stream)

    def limit(self, name, value):
        number = getattr(resource, "RLIMIT_" + name)
        self.world.build(self.scenario)
        outcome = self.run(self.scenario.command, prepare=lambda: resource.setrlimit(number, (value, value)))
        if outcome.status not in (0, 1) and not outcome.stdout:
            outcome.killed = True  # before main: the loader and the C library give up in their own ways
        return self.check(outcome, "cleaning", "preferences", "stderr")


    def picture_or_folder(self, action, fault):
        """Another program acts before a call of the tool."""
        self.world.build(self.scenario)
        folder = self.world.base / self.scenario.folder
        (folder / "elsewhere").mkdir()
        (folder / "newcomer.jpg").write_bytes(NEWCOMER)
        outcome = self.run([INJECTOR, "--at", ":".join(map(str, fault)), "--", *self.scenario.command],
                           {"KESTRINE_FAULT_ACTION": ACTIONS[action]})
        if outcome.status == NOT_INJECTED:
            return None
        return list(invariants.violations_despite(self.scenario, self.world, NEWCOMER, self.world.snapshot(), outcome))


def has_own_mounts():
    """Gives this process mounts of its own, as root or in a user namespace. Returns whether the system permits it."""
    new_mounts, new_user = 0x20000, 0x10000000
    user, group = os.geteuid(), os.getegid()
    library = ctypes.CDLL(None, use_errno=True)
    if library.unshare(new_mounts) != 0:
        if library.unshare(new_mounts | new_user) != 0:
            return False
        Path("/proc/self/setgroups").write_text("deny")
        Path("/proc/self/uid_map").write_text(f"{user} {user} 1")
        Path("/proc/self/gid_map").write_text(f"{group} {group} 1")
    return subprocess.run(["mount", "--make-rprivate", "/"], capture_output=True).returncode == 0


class Worker:
    """A process with a world of its own, in which it runs what the campaign asks for."""

    world = None

    @classmethod
    def set_up(cls, place):
        prctl_death_signal = 1
        ctypes.CDLL(None).prctl(prctl_death_signal, signal.SIGTERM)
        signal.signal(signal.SIGTERM, cls.end)
        cls.world = World(tempfile.mkdtemp(prefix="kestrine-faults-", dir=place))
        cls.runners = {}
        cls.has_mounts = has_own_mounts() and cls.world.mount()
        multiprocessing.util.Finalize(None, cls.world.remove, exitpriority=1)

    @classmethod
    def end(cls, number, frame):
        """When the campaign was ended."""
        cls.world.remove()
        os._exit(1)

    @classmethod
    def runner(cls, name):
        if name not in cls.runners:
            cls.runners[name] = Runner(cls.world, next(one for one in scenarios() if one.name == name))
        return cls.runners[name]


def possible_jobs(name):
    """All jobs of a scenario; None if the system does not permit the mounts that it needs."""
    scenario = next(one for one in scenarios() if one.name == name)
    if scenario.replaces and not Worker.has_mounts:
        return None
    runner = Worker.runner(name)
    jobs = [["calls_that_fail", fault] for fault in plans.single_faults(runner.calls)]
    count = runner.number_of_allocations()
    jobs += [["allocations_that_fail", f"{number}{ending}"] for number in range(1, count + 1) for ending in ("", "-")]
    jobs += [["stream_that_fails", stream, how] for stream in ("stdout", "stderr") for how in ("full", "closed", "pipe")]
    jobs += [["limit", "NOFILE", value] for value in range(3, 24)]
    jobs += [["limit", "FSIZE", value] for value in (0, 1, 50, 100, 400, 1000, 4096)]
    jobs += [["limit", "AS", value << 20] for value in range(2, 96, 2)]
    if not scenario.changes_presets:
        jobs += [["picture_or_folder", action, [call.process, call.index, call.number, "act"]]
                 for action in ACTIONS for call in runner.calls if call.process == 0]
    return [[name, *job] for job in jobs]


def run_job(numbered):
    """Returns the number of the job and the sentences about what does not hold."""
    number, (name, kind, *arguments) = numbered
    return number, getattr(Worker.runner(name), kind)(*arguments)


class Place:
    """A folder on some file system, with processes that work there."""

    def __init__(self, folder, processes):
        self.pool = concurrent.futures.ProcessPoolExecutor(processes, initializer=Worker.set_up, initargs=(str(folder),))

    def jobs(self):
        """All jobs that are possible here, and the scenarios that are not."""
        names = [one.name for one in scenarios()]
        found = dict(zip(names, self.pool.map(possible_jobs, names)))
        return [job for jobs in found.values() if jobs for job in jobs], [name for name in names if found[name] is None]

    def run(self, numbered_jobs):
        return self.pool.map(run_job, numbered_jobs, chunksize=4)

    def close(self):
        self.pool.shutdown(cancel_futures=True)


def shown(job):
    """A job as a line that --repeat takes."""
    return json.dumps(job, separators=(",", ":"))


def sample(jobs, count, seed):
    """`count` of the jobs: two thirds calls that fail, the rest of the other kinds."""
    chance = random.Random(seed)
    calls = [job for job in jobs if job[1] == "calls_that_fail"]
    others = [job for job in jobs if job[1] not in ("calls_that_fail", "allocations_that_fail")]
    allocations = [job for job in jobs if job[1] == "allocations_that_fail"]
    return (chance.sample(calls, min(len(calls), count * 2 // 3)) + chance.sample(others, min(len(others), count // 6))
            + chance.sample(allocations, min(len(allocations), count // 6)))


def with_doubles(jobs, count, seed):
    """The jobs, and as many runs with two failing calls of the same scenario."""
    chance = random.Random(seed)
    calls = [job for job in jobs if job[1] == "calls_that_fail"]
    by_name = collections.defaultdict(list)
    for job in calls:
        by_name[job[0]].append(job[2])
    doubles = []
    for first in chance.choices(calls, k=count if calls else 0):
        second = chance.choice(by_name[first[0]])
        if second[:2] != first[2][:2]:
            doubles.append([first[0], "calls_that_fail", first[2], second])
    return jobs + doubles


class Tally:
    """Counts runs and prints findings, each kind of sentence a few times."""

    def __init__(self):
        self.runs = self.not_injected = self.bad = 0
        self.kinds = collections.Counter()
        self.start = time.monotonic()

    def add(self, job, sentences):
        self.runs += sentences is not None
        self.not_injected += sentences is None
        self.bad += bool(sentences)
        for sentence in sentences or []:
            kind = (job[0], sentence.split(":")[0][-60:])
            self.kinds[kind] += 1
            if self.kinds[kind] <= 3:
                print(f"{shown(job)}\n    {sentence}", flush=True)

    def line(self):
        minutes = (time.monotonic() - self.start) / 60
        return (f"{self.runs} injected runs, {self.bad} with findings, {self.not_injected} without the planned call, "
                f"{self.runs / max(minutes, 1e-9):.0f} runs per minute")


def tallied(place, jobs):
    tally = Tally()
    for number, sentences in place.run(enumerate(jobs)):
        tally.add(jobs[number], sentences)
    place.close()
    return tally


def run_quick(folder, count, seed, processes):
    """A sample on one file system. Returns the tally and the scenarios that could not run."""
    place = Place(folder, processes)
    jobs, impossible = place.jobs()
    return tallied(place, sample(jobs, count, seed)), impossible


def run_where(folder, is_wanted):
    """All jobs of a kind on one file system."""
    place = Place(folder, os.cpu_count())
    return tallied(place, [job for job in place.jobs()[0] if is_wanted(job)])


class LongCampaign:
    """Every fault at every call, every allocation and more, on every file system that there is. What is done is kept
    in `state`, so that the next start with the same programs and seed continues."""

    def __init__(self, state, seed, doubles):
        self.state, self.seed, self.doubles = Path(state), seed, doubles
        programs = b"".join((BIN / name).read_bytes() for name in ("kestrine", "kestrinectl"))
        self.key = f"{hashlib.sha1(programs).hexdigest()} seed {seed}"

    def run(self, folders):
        self.state.mkdir(parents=True, exist_ok=True)
        key = self.state / "key"
        if not key.exists() or key.read_text() != self.key:
            for old in self.state.iterdir():
                old.unlink()
            key.write_text(self.key)
        return sum(self.run_on(name, folder) for name, folder in folders)

    def run_on(self, name, folder):
        """Returns the number of runs with findings."""
        place = Place(folder, os.cpu_count())
        plan, done = self.state / f"{name}.plan", self.state / f"{name}.done"
        if not plan.exists():
            jobs, impossible = place.jobs()
            chance = random.Random(self.seed)
            jobs = with_doubles(jobs, self.doubles, self.seed)
            chance.shuffle(jobs)
            plan.write_text("\n".join(map(shown, jobs)) + "\n")
            for scenario in impossible:
                print(f"{name}: {scenario} is left out: no mounts are permitted here", flush=True)
        jobs = [json.loads(line) for line in plan.read_text().splitlines()]
        finished = dict(line.split() for line in done.read_text().splitlines()) if done.exists() else {}
        left = [(number, job) for number, job in enumerate(jobs) if str(number) not in finished]
        print(f"{name}: {len(jobs)} runs, {len(finished)} of them done before, {len(left)} left", flush=True)
        tally = Tally()
        with open(done, "a", buffering=1) as log:
            for number, sentences in place.run(left):
                tally.add(jobs[number], sentences)
                verdict = "none" if sentences is None else "bad" if sentences else "good"
                finished[str(number)] = verdict
                log.write(f"{number} {verdict}\n")
                if len(finished) % 5000 == 0:
                    print(f"  {len(finished)} done", flush=True)
        place.close()
        verdicts = collections.Counter(finished.values())
        print(f"{name}: {tally.line()}")
        print(f"{name}: in total {verdicts['good'] + verdicts['bad']} injected runs, {verdicts['bad']} with findings")
        return verdicts["bad"]


def emptied(folder):
    """A campaign that was ended may have left worlds there."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


def file_systems(state):
    """The names and folders of the file systems to run on. Says which ones the system lacks."""
    here = emptied(Path(state).resolve() / "world")
    found = [("default", here)]
    if os.access("/dev/shm", os.W_OK):
        found.append(("memory", emptied(Path("/dev/shm/kestrine-faults-long"))))
    own = subprocess.run(["findmnt", "-n", "-o", "FSTYPE", "-T", here], capture_output=True, text=True).stdout.strip()
    for kind in ("ext4", "btrfs", "vfat"):
        if kind == own:
            continue  # the default one is of this kind
        folder, image = here.parent / kind, here.parent / f"{kind}.image"
        folder.mkdir(exist_ok=True)
        image.write_bytes(b"")
        os.truncate(image, 128 << 20)
        commands = [[f"mkfs.{kind}", image], ["mount", "-o", "loop", image, folder]]
        try:
            done = [subprocess.run(command, capture_output=True, check=True) for command in commands]
            found.append((kind, folder))
        except (OSError, subprocess.CalledProcessError) as error:
            print(f"{kind}: left out: {getattr(error, 'stderr', b'').decode().strip() or error}", flush=True)
            image.unlink()
            folder.rmdir()
    return found


def main():
    parser = argparse.ArgumentParser(prog="scripts/faults", description=__doc__)
    form = parser.add_mutually_exclusive_group(required=True)
    form.add_argument("--quick", action="store_true", help="500 runs in memory, below a minute")
    form.add_argument("--long", action="store_true", help="every fault at every call, on every file system; resumable")
    form.add_argument("--repeat", metavar="JOB", help="one run, as a finding shows it")
    parser.add_argument("--seed", type=int, default=1, help="of the random choices (default: 1)")
    parser.add_argument("--doubles", type=int, default=5000, help="--long: runs with two faults per file system "
                                                                  "(default: 5000)")
    parser.add_argument("--state", default="build/faults", help="where --long keeps what is done (default: build/faults)")
    options = parser.parse_args()
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else tempfile.gettempdir()
    if options.repeat:
        Worker.set_up(memory)
        sentences = run_job((0, json.loads(options.repeat)))[1]
        print("\n".join(sentences) if sentences else "nothing was injected" if sentences is None else "all is well")
        return bool(sentences)
    print(f"seed {options.seed}", flush=True)
    if options.quick:
        tally, impossible = run_quick(memory, 500, options.seed, os.cpu_count())
        print(tally.line())
        return tally.bad > 0
    has_own_mounts()
    return LongCampaign(Path(options.state) / "done", options.seed, options.doubles).run(file_systems(options.state)) > 0


if __name__ == "__main__":
    sys.exit(main())
