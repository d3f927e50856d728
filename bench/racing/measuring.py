"""Measures one run at a time, every run in a new folder; computes medians and ratios of the runs of a task.

A ratio is the median over the rounds of the ratio within a round, so that a temporary disturbance of the machine affects
both sides.
"""
import marshal
import os
import random
import shutil
import statistics
import subprocess
import sys
from dataclasses import dataclass, field
from pathlib import Path


@dataclass(frozen=True)
class Run:
    """The cost of one run: seconds, seconds, MiB."""
    wall: float
    cpu: float
    peak: float


class RunFailed(Exception):
    """The program failed or did not write the requested output."""


class Spawner:
    """A small process that starts the programs to measure. It must be started before this process uses much memory."""

    def __init__(self, messages):
        self.messages = messages
        self.process = subprocess.Popen([sys.executable, "-I", "-S", str(Path(__file__).with_name("spawner.py"))],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def run(self, argv, environment, folder):
        request = ([str(word) for word in argv], environment, str(folder), str(self.messages))
        marshal.dump(request, self.process.stdin)
        self.process.stdin.flush()
        status, wall, cpu, peak = marshal.load(self.process.stdout)
        if status != 0:
            lines = Path(self.messages).read_text(errors="replace").strip().splitlines()
            message = next((line for line in lines if "Error: " in line), lines[-1] if lines else "no message")
            raise RunFailed(f"status {status}: {message}")
        return Run(wall, cpu, peak / 1024)

    def close(self):
        self.process.stdin.close()
        self.process.wait()


class RunFolders:
    """A new folder for every run, with the inputs (hard links, so that all share the page cache) and an empty one for
    the outputs. The folders stay until the end: some file systems free deleted data slowly, and one run must not pay
    for the outputs of earlier ones."""

    def __init__(self, parent):
        self.parent, self.made = Path(parent), 0
        self.remove()

    def make(self, inputs):
        self.made += 1
        folder = self.parent / str(self.made)
        (folder / "in").mkdir(parents=True)
        (folder / "out").mkdir()
        for name, original in inputs.items():
            os.link(original, folder / "in" / name)
        return folder

    def remove(self):
        if self.parent.exists():
            shutil.rmtree(self.parent)


@dataclass
class Results:
    """The rounds of one task for each contestant, by name, and the results of checking its outputs."""
    rounds: int
    runs: dict = field(default_factory=dict)
    failures: dict = field(default_factory=dict)
    outputs: dict = field(default_factory=dict)
    commands: dict = field(default_factory=dict)

    def median(self, name, quantity):
        return statistics.median(getattr(run, quantity) for run in self.runs[name])

    def ratios(self, name, other, quantity):
        return [getattr(mine, quantity) / max(getattr(theirs, quantity), 1e-9)
                for mine, theirs in zip(self.runs[name], self.runs[other])]

    def ratio(self, name, other, quantity):
        return statistics.median(self.ratios(name, other, quantity))

    def fastest(self, names):
        """The name with the smallest median wall time; None if none of them ran."""
        running = [name for name in names if name in self.runs]
        return min(running, key=lambda name: self.median(name, "wall"), default=None)


def warm(paths):
    """Reads the files once, so that no contestant waits for the disk."""
    for path in paths:
        with open(path, "rb") as file:
            while file.read(1 << 20):
                pass


def race(contestants, rounds, run_once, order):
    """Every round runs every contestant once, in a new random order. `run_once(contestant)` returns a Run or
    raises RunFailed; a contestant that fails takes no further part, and the reason is kept."""
    results = Results(rounds)
    racing = list(contestants)
    for number in range(rounds):
        random.Random(order * 1000 + number).shuffle(racing)
        for contestant in list(racing):
            try:
                results.runs.setdefault(contestant.name, []).append(run_once(contestant))
            except RunFailed as failure:
                results.failures[contestant.name] = str(failure)
                results.runs.pop(contestant.name, None)
                racing.remove(contestant)
    return results
