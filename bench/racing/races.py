"""Runs all races: runs every contestant in turn, checks its outputs, and keeps the measurements for the page."""
import hashlib
import os
import shlex
import shutil
import subprocess
import sys
from dataclasses import dataclass

from racing import contestants, inspecting, measuring, tasks

JOBS_COMPARED = (1, 2, 3, 8)


@dataclass
class Entry:
    """A completed task; `largest_input` in bytes."""
    task: tasks.Task
    results: measuring.Results
    fastest: str
    input_words: str
    largest_input: int


@dataclass(frozen=True)
class SameBytes:
    """Whether `kestrinectl convert` writes the same files as `kestrine`, for any number of jobs."""
    key: str
    count: int
    jobs: tuple
    same: bool


@dataclass(frozen=True)
class Starter:
    """A command that starts and does nothing."""
    name: str
    argv: tuple


class Races:
    """Everything that a run needs except the racing contestants; `ours` are our own builds, the main one first."""

    def __init__(self, work, npm, spawner, pictures, ours, judging):
        self.npm, self.spawner, self.pictures = npm, spawner, pictures
        self.ours, self.judging = ours, judging
        self.folders = measuring.RunFolders(work / "runs")
        self.home = work / "home"
        shutil.rmtree(self.home, ignore_errors=True)
        self.home.mkdir()
        self.environment = {"HOME": str(self.home), "PATH": os.environ["PATH"], "LANG": "C.UTF-8"}
        self.judge = (None, None)

    def race(self, task, racing, rounds):
        inputs = self._inputs(task)
        racing = [one for one in racing if task.linear_peer or not one.light]
        for to in (task.to, "png") if task.to == "jpeg" else (task.to,):
            self._add_preset(task, to)
        measuring.warm(inputs.values())
        found, able = measuring.Results(0), []
        for one in racing:
            try:
                self._inspect(one, task, inputs, found)
                able.append(one)
            except measuring.RunFailed as failure:
                found.failures[one.name] = str(failure)
        results = measuring.race(able, task.rounds(rounds), lambda one: self._run(one, task, inputs, task.to),
                                 sum(map(ord, task.key)))
        results.failures.update(found.failures)
        results.outputs, results.commands = found.outputs, found.commands
        fastest = results.fastest([one.name for one in racing if not one.ours])
        return Entry(task, results, fastest, *described(task, inputs, fastest))

    def same_bytes(self, task):
        """Call it after racing the task, which creates the preset."""
        inputs, written = self._inputs(task), []
        quiet, many = self.ours[0].command_of_the_quiet_tool, self.ours[0].command_for_many
        commands = [quiet, *(lambda job, count=count: [*many(job), "-j", count] for count in JOBS_COMPARED)]
        for command in commands:
            job = task.job(self.folders.make(inputs), inputs, task.to)
            written.append(self._digests(job, command(job)))
        same = all(each == written[0] and len(each) == task.count for each in written)
        return SameBytes(task.key, task.count, JOBS_COMPARED, same)

    def start(self, racing, rounds):
        def run(one):
            argv = [shutil.which(one.argv[0]), *one.argv[1:]]
            return self.spawner.run(argv, {**self.environment, "PWD": str(self.home)}, self.home)
        return measuring.race(starters(self.ours, racing, self.npm), rounds, run, 0)

    def _add_preset(self, task, to):
        words = [self.ours[0].companion, "sets", "add", "--overwrite", *map(str, task.preset_options(to))]
        done = subprocess.run(words, env=self.environment, capture_output=True, text=True)
        if done.returncode != 0:
            raise SystemExit(f"peers: kestrinectl could not create a preset: {done.stderr.strip()}")

    def _inputs(self, task):
        """Names in the run folder and the files for them; one file may have several names."""
        made = self.pictures.paths(task.kind, task.width, task.height, task.different)
        self.pictures.forget()
        return {f"p{number:05}{made[0].suffix}": made[number % task.different] for number in range(task.count)}

    def _run(self, contestant, task, inputs, to, look=lambda job, outputs: None):
        """One run in a new folder. Checks its outputs."""
        job = task.job(self.folders.make(inputs), inputs, to)
        cost = contestant.run(self.spawner, job, self.environment)
        outputs = contestant.outputs(job)
        if len(outputs) != len(inputs):
            raise measuring.RunFailed(f"{len(outputs)} of {len(inputs)} outputs")
        look(job, outputs)
        return cost

    def _inspect(self, contestant, task, inputs, results):
        """The warm-up run: checks the outputs and their quality; for JPEG once more without the loss of JPEG."""
        if task.to not in contestant.formats:
            raise measuring.RunFailed(f"cannot write {task.to.upper()}")
        judging = self.judging and task.judged
        name, source = next(iter(inputs.items()))

        def look(job, outputs):
            outcome = results.outputs[contestant.name] = inspecting.outcome_of(outputs, task)
            results.commands[contestant.name] = self._shown(contestant, job)
            if judging:
                quality = self._quality_of(task, source).judge(outputs[0], contestant.ours)
                setattr(outcome, "file" if task.to in ("jpeg", "gif") else "scaling", quality)

        def look_without_loss(_, outputs):
            results.outputs[contestant.name].scaling = self._quality_of(task, source).judge(outputs[0], contestant.ours)

        self._run(contestant, task, inputs, task.to, look)
        if judging and task.to == "jpeg":
            self._run(contestant, task, {name: source}, "png", look_without_loss)

    def _quality_of(self, task, source):
        """The judge of the previous task if the picture and its scaling are the same."""
        from racing.foreign import readable
        from racing.quality import Quality
        key = (source, task.box)
        if self.judge[0] != key:
            self.judge = (None, None)
            self.judge = (key, Quality(readable(source), task))
        return self.judge[1]

    def _shown(self, contestant, job):
        """The command without this machine's paths, with one file in place of all."""
        words = shlex.join(str(word) for word in contestant.argv(job))
        named = [(job.folder, "RUN"), (self.npm, "NPM"), (contestants.HERE, "bench/racing"),
                 *((ours.build, "BUILD") for ours in self.ours)]
        for folder, name in named:
            words = words.replace(str(folder), name)
        return words.split(job.files[1])[0] + "..." if job.many and job.files[1] in words else words

    def _digests(self, job, command):
        folder = job.folder / "in"
        self.spawner.run([*command, *job.files], {**self.environment, "PWD": str(folder)}, folder)
        return [(path.name, hashlib.sha256(path.read_bytes()).digest()) for path in self.ours[0].outputs(job)]


def described(task, inputs, fastest):
    first = next(iter(inputs.values())).stat().st_size
    largest = max(path.stat().st_size for path in set(inputs.values()))
    peer = f"; the fastest peer is {fastest}" if fastest else ""
    return f"{task.width} x {task.height}, {8 * first / (task.width * task.height):.1f} bits per pixel{peer}", largest


def starters(ours, racing, npm):
    """The commands that measure starting. Node and Python also load their library, as in every run."""
    commands = {"an empty process": ("/bin/true",)}
    commands.update({f"{one.name} -l": (one.quiet_tool, "-l") for one in ours})
    magick = next((one.program for one in racing if one.name == "ImageMagick"), "")
    known = {"vipsthumbnail": ("vipsthumbnail", "--vips-version"), "ImageMagick": (magick, "-version"),
             "GraphicsMagick": ("gm", "version"), "Pillow": (sys.executable, "-c", "from PIL import Image"),
             "sharp": ("node", "-e", f"require('{npm}/node_modules/sharp')"),
             "@napi-rs/image": ("node", "-e", f"require('{npm}/node_modules/@napi-rs/image')")}
    commands.update({name: known[name] for name in (one.name for one in racing) if name in known})
    return [Starter(name, argv) for name, argv in commands.items()]
