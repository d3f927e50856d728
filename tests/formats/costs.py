"""Measures what reading and writing a picture of 12 megapixels costs."""
import os
import shutil
import statistics
import sys
from pathlib import Path

import tifffile
from formats import FORMATS
from page import Cost
from written_rows import OUTPUTS

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "bench"))
from racing import measuring  # noqa: E402
from racing.pictures import Pictures  # noqa: E402

WIDTH, HEIGHT = 4000, 3000
READING = ("--longest", "1200", "--format", "jpeg")


class Costs:
    """`spawner` must have been started before this process became large."""

    def __init__(self, spawner, program, work, rounds):
        self.spawner, self.program, self.work, self.rounds = spawner, program, work, rounds
        self.samples = tifffile.imread(Pictures(work).paths("tiff", WIDTH, HEIGHT)[0])
        self.idle = self._median(["--version"])[0]

    def _median(self, arguments):
        """The peak in MiB and the time in seconds."""
        runs = []
        for _ in range(self.rounds):
            shutil.rmtree(self.work / "out", ignore_errors=True)
            environment = {"HOME": str(self.work), "PATH": os.environ["PATH"], "LANG": "C"}
            runs.append(self.spawner.run([self.program, *arguments], environment, self.work))
        return tuple(statistics.median(getattr(run, quantity) for run in runs) for quantity in ("peak", "cpu"))

    def _cost(self, file, *arguments):
        measuring.warm([file])
        peak, seconds = self._median(["convert", "--out", "out", *arguments, file])
        return Cost(f"{max(0, peak - self.idle):.0f}", f"{seconds:.2f}")

    def reading(self):
        costs = {}
        for row in FORMATS:
            costs[row.name] = Cost()
            if row.picture:
                file = self.work / row.cost_name
                file.write_bytes(row.picture(self.samples))
                costs[row.name] = self._cost(file, *READING)
                print(f"  {row.cost_name}: {costs[row.name].memory} MiB, {costs[row.name].time} s", flush=True)
                file.unlink()
        return costs

    def writing(self):
        file = self.work / "a.ppm"
        file.write_bytes(b"P6 %d %d 255\n" % (WIDTH, HEIGHT) + self.samples.tobytes())
        costs = {}
        for row in OUTPUTS:
            costs[row.name] = self._cost(file, "--format", row.format)
            print(f"  written as {row.name}: {costs[row.name].memory} MiB, {costs[row.name].time} s", flush=True)
        return costs
