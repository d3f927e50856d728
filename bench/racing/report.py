"""Writes the measurements as a page: the machine, the goals, a table per task.

Times are always shown with ratios.
"""
import datetime
import os
import platform
import shlex
from pathlib import Path

from racing.quality import LIGHT, STORED

HEAD = """# Benchmarks

Written by `bench/peers`, which replaces everything but the notes at the end. In every task all contestants ran in turn,
in random order, within one run, with cached inputs and new output folders. A ratio is the median over the rounds of the
ratio within a round to the fastest peer; less than 1 is faster. Every time includes the start of the process. CPU is
that of the whole process tree, the peak that of its largest process; peaks below {floor:.0f} MiB cannot be
distinguished. Quality is measured against a full decode scaled by Lanczos in double precision, in linear light ("light")
and in the stored encoding ("stored"), at each tool's own size and pixel positions. "dB" and "SSIM" are of the scaled
pixels: for JPEG the same command runs once more with PNG output. "file dB" and "file SSIM" are of the JPEG or GIF file.
SSIM and "file dB" use the nearer reference. Dithered palettes are compared after a blur of 1.5 pixels on both sides. Of
several files the first is measured. A tool that does not keep the profile, or EXIF in JPEG, does less work; it still
counts as a peer. Times depend on the machine; compare ratios.
"""

BUSY = "**The machine was not idle at the start: the figures are approximate.**\n\n"
NOTES = "\n## Notes\n"
IDLE_LOAD = 0.5
LISTING_MILLISECONDS = 2.0
# Working memory beyond the compressed bytes, at any size.
WORKING_MIB = 40
# How much more one pixel or file may cost in the largest run than in the run of the given size.
LINEAR, LINEAR_FROM_MEGAPIXELS, LINEAR_FROM_FILES = 1.15, 24, 100


def table(header, rows):
    if not rows:
        return ""
    lines = ["| " + " | ".join(str(cell) for cell in row) + " |" for row in [header, ["---"] * len(header), *rows]]
    return "\n".join(lines) + "\n\n"


def number(value, form):
    return "" if value is None else format(value, form)


def verdict(met):
    return "yes" if met else "**no**"


def notes_of(page):
    """The notes at the end of a page, which people wrote."""
    _, heading, text = page.partition(NOTES)
    return heading.lstrip("\n") + text


def series_of(entry):
    """growth-png-24 belongs to the series growth-png."""
    return entry.task.key.rpartition("-")[0]


def first_match(path, start):
    for line in Path(path).read_text(errors="replace").splitlines():
        if line.startswith(start):
            return line.split("=" if "=" in line else ":", 1)[1].strip().strip('"')
    return "unknown"


def machine():
    """A description that does not identify the machine."""
    memory = int(first_match("/proc/meminfo", "MemTotal").split()[0]) / 2 ** 20
    processor, system = first_match("/proc/cpuinfo", "model name"), first_match("/etc/os-release", "PRETTY_NAME")
    return (f"{processor}, {len(os.sched_getaffinity(0))} cores, {memory:.0f} GiB of memory, {system}, "
            f"{platform.system()} {platform.release()} {platform.machine()}")


def load():
    return f"{os.getloadavg()[0]:.1f}"


class Goals:
    """The goals of one of our builds in one task, each with the measured value and whether it is met."""

    def __init__(self, entry, build):
        self.entry, self.name, self.rows = entry, build.name, []
        if self.name not in entry.results.runs:
            self._add("runs at all", "no", "yes", False)
            return
        if entry.fastest:
            self._against_the_peer(entry.task.goal, entry.results, build.own_decoder)
        self._alone(entry.task.goal, entry.results)

    def _against_the_peer(self, goal, results, own_decoder):
        peer = self.entry.fastest
        wall, cpu = (results.ratio(self.name, peer, quantity) for quantity in ("wall", "cpu"))
        mine, theirs = results.outputs[self.name], results.outputs[peer]
        self._below("wall", wall, goal.wall, "{:.2f}")
        self._below("wall, aim", wall, goal.wall_aim, "{:.2f}")
        if own_decoder:
            self._below("wall with the own decoder", wall, goal.own_wall, "{:.2f}")
            self._below("wall with the own decoder, aim", wall, goal.own_wall_aim, "{:.2f}")
        self._below("CPU", cpu, goal.cpu, "{:.2f}")
        peak = results.median(self.name, "peak") / results.median(peer, "peak")
        self._below("peak, ratio", peak, goal.peak_share, "{:.2f}")
        self._below("bytes", mine.bytes / theirs.bytes, goal.bytes, "{:.2f}")
        if goal.decibels or self.entry.task.to == "gif":
            self._no_worse_than_the_peer(mine, theirs)

    def _alone(self, goal, results):
        outcome = results.outputs[self.name]
        self._below("peak MiB", results.median(self.name, "peak"), goal.peak, "{:.0f}")
        if outcome.scaling:
            self._above("dB in light", outcome.scaling[LIGHT], goal.decibels, "{:.1f}")

    def _below(self, what, value, limit, form):
        if limit is not None:
            self._add(what, form.format(value), "<= " + form.format(limit), value <= limit)

    def _above(self, what, value, limit, form):
        if limit is not None:
            self._add(what, form.format(value), ">= " + form.format(limit), value >= limit)

    def _no_worse_than_the_peer(self, mine, theirs):
        """Uses the nearer of the two references for each; dithered palettes are compared after a blur."""
        def best(outcome):
            quality = outcome.scaling or outcome.file
            if not quality:
                return None
            return quality["blurred"] if self.entry.task.to == "gif" else max(quality[LIGHT], quality[STORED])

        if best(mine) is not None and best(theirs) is not None:
            self._add("dB, nearer reference", f"{best(mine):.1f}", f">= {best(theirs):.1f} (the peer's)",
                      best(mine) >= best(theirs))

    def _add(self, *row):
        self.rows.append(row)

    def lines(self):
        return [[self.entry.task.key, self.name, self.entry.fastest or "", what, value, limit, verdict(met)]
                for what, value, limit, met in self.rows]


class Report:
    """`ours` are our own builds that took part, the main one first."""

    def __init__(self, floor, ours):
        self.floor, self.ours, self.own_name = floor, ours, ours[0].name
        self.entries, self.growth, self.files, self.start, self.same_bytes = [], [], [], None, []
        self.begun, self.load_before = datetime.date.today(), load()

    def text(self, command, rounds, versions, missing, picture_words, before=""):
        """The new page; `before` is the one that it replaces."""
        parts = [HEAD.format(floor=self.floor), self._setting(command, rounds, versions, missing, picture_words),
                 self._goals(), self._start(), *map(self._task, self.entries), self._same_bytes(), self._growth(),
                 self._files(), notes_of(before)]
        return "\n".join(part.rstrip("\n") + "\n" for part in parts if part)

    def _setting(self, command, rounds, versions, missing, picture_words):
        rows = [["machine", machine()], ["load before, after", f"{self.load_before}, {load()}"], ["date", self.begun],
                ["command", f"`{shlex.join(command)}`"], ["rounds", rounds], ["pictures", picture_words]]
        peers = table(["contestant", "version", "how"], versions)
        absent = f"Not installed, so not raced: {', '.join(missing)}.\n\n" if missing else ""
        busy = BUSY if float(self.load_before) > IDLE_LOAD else ""
        return "## Setting\n\n" + busy + table(["", ""], rows) + peers + absent

    def _goals(self):
        rows = [line for entry in self.entries for build in self.ours for line in Goals(entry, build).lines()]
        listing = f"{self.own_name} -l"
        if self.start and listing in self.start.runs:
            spent = 1000 * self.start.median(listing, "wall")
            rows.insert(0, ["start", self.own_name, "", f"`{listing}`, ms", f"{spent:.1f}",
                            f"<= {LISTING_MILLISECONDS:.1f}", verdict(spent <= LISTING_MILLISECONDS)])
        header = ["task", "build", "fastest peer", "what", "measured", "goal", "met"]
        return "## Goals\n\n" + table(header, rows) if rows else ""

    def _start(self):
        if self.start is None:
            return ""
        empty = "an empty process"
        rows = [[name, f"{self.start.ratio(name, empty, 'wall'):.1f}", f"{1000 * self.start.median(name, 'wall'):.1f}",
                 f"{1000 * (self.start.median(name, 'wall') - self.start.median(empty, 'wall')):.1f}"]
                for name in sorted(self.start.runs, key=lambda name: self.start.median(name, "wall"))]
        return ("## Cost of starting\n\nIt is part of every single-file time below; peers inside a long-running process "
                f"pay it once. Medians of {self.start.rounds} rounds.\n\n"
                + table(["", "÷ an empty process", "wall ms", "ms above it"], rows))

    def _task(self, entry):
        task, results = entry.task, entry.results
        names = sorted(results.runs, key=lambda name: results.median(name, "wall"))
        rows = [self._row(entry, name) for name in names]
        header = ["", "wall ÷ (range)", "CPU ÷", "wall ms", "CPU ms", "peak MiB", "KB out", "keeps", "dB light",
                  "dB stored", "SSIM", "file dB", "file SSIM"]
        if task.to == "gif":
            header[-2] = "file dB blurred"
        text = f"## {task.key}: {task.title}\n\nRounds: {results.rounds}; {entry.input_words}.\n\n"
        text += table(header, rows)
        if results.failures:
            failures = "; ".join(f"{name} ({why})" for name, why in sorted(results.failures.items()))
            text += f"Failed: {failures}.\n\n"
        commands = "\n".join(results.commands[name] for name in names if name in results.commands)
        return text + f"<details><summary>Commands</summary>\n\n```\n{commands}\n```\n\n</details>\n"

    @staticmethod
    def _row(entry, name):
        results, peer, outcome = entry.results, entry.fastest, entry.results.outputs[name]
        wall = cpu = ""
        if peer:
            ratios = results.ratios(name, peer, "wall")
            wall = f"{results.ratio(name, peer, 'wall'):.2f} ({min(ratios):.2f}-{max(ratios):.2f})"
            cpu = f"{results.ratio(name, peer, 'cpu'):.2f}"
        file_decibels = None
        if outcome.file:
            file_decibels = (outcome.file["blurred"] if entry.task.to == "gif"
                             else max(outcome.file[LIGHT], outcome.file[STORED]))
        wall_ms, cpu_ms = (f"{1000 * results.median(name, quantity):.1f}" for quantity in ("wall", "cpu"))
        return [name, wall, cpu, wall_ms, cpu_ms, f"{results.median(name, 'peak'):.0f}", f"{outcome.bytes / 1000:.1f}",
                outcome.kept,
                number(outcome.scaling.get(LIGHT), ".1f"), number(outcome.scaling.get(STORED), ".1f"),
                number(outcome.scaling.get("ssim"), ".4f"), number(file_decibels, ".1f"),
                number(outcome.file.get("ssim"), ".4f")]

    def _same_bytes(self):
        rows = [[each.key, each.count, ", ".join(map(str, each.jobs)), verdict(each.same)] for each in self.same_bytes]
        return ("## The same bytes for any number of cores\n\n"
                + table(["task", "files", "`kestrinectl convert -j`", "same names and bytes as `kestrine`"], rows)
                if rows else "")

    def _growth(self):
        entries = [entry for entry in self.growth if self.own_name in entry.results.runs]
        rows = []
        for series in dict.fromkeys(series_of(entry) for entry in entries):
            rows += self._growth_of([entry for entry in entries if series_of(entry) == series])
        if not rows:
            return ""
        header = ["", "CPU ms per megapixel", f"÷ that of {LINEAR_FROM_MEGAPIXELS} MP", "wall ms", "peak MiB",
                  "file MiB", "met"]
        return ("## Growth with pixels\n\n"
                f"A pixel of the largest picture may cost {LINEAR} times as much as one of "
                f"{LINEAR_FROM_MEGAPIXELS} MP; the peak may be {WORKING_MIB} MiB above the size of the source file.\n\n"
                + table(header, rows))

    def _growth_of(self, entries):
        """The rows of one series; the cost per pixel is compared with that at LINEAR_FROM_MEGAPIXELS."""
        def cost(entry):
            return self._cpu_each(entry, entry.task.width * entry.task.height / 1e6)

        base = next((cost(entry) for entry in entries if entry.task.key.endswith(f"-{LINEAR_FROM_MEGAPIXELS}")), None)
        rows = []
        for entry in entries:
            peak, file = entry.results.median(self.own_name, "peak"), entry.largest_input / 2 ** 20
            times = cost(entry) / base if base else None
            linear = times is None or entry is not entries[-1] or times <= LINEAR
            rows.append([entry.task.title, f"{1000 * cost(entry):.2f}", number(times, ".2f"),
                         f"{1000 * entry.results.median(self.own_name, 'wall'):.0f}", f"{peak:.0f}", f"{file:.1f}",
                         verdict(linear and peak <= file + WORKING_MIB)])
        return rows

    def _files(self):
        entries = [entry for entry in self.files if self.own_name in entry.results.runs]
        if not entries:
            return ""
        costs = {entry.task.key: self._cpu_each(entry, entry.task.count) for entry in entries}
        base = costs.get(f"files-{LINEAR_FROM_FILES}")
        rows = []
        for entry in entries:
            times = costs[entry.task.key] / base if base else None
            peak = entry.results.median(self.own_name, "peak")
            linear = times is None or entry is not entries[-1] or times <= LINEAR
            rows.append([entry.task.title, f"{1000 * costs[entry.task.key]:.2f}", number(times, ".2f"),
                         f"{1000 * entry.results.median(self.own_name, 'wall') / entry.task.count:.2f}", f"{peak:.0f}",
                         verdict(linear and peak <= WORKING_MIB)])
        header = ["", "CPU ms per file", f"÷ that of {LINEAR_FROM_FILES}", "wall ms per file", "peak MiB", "met"]
        return ("## Growth with files\n\nJPEG of 320 x 240 to 160, `kestrinectl convert`, all cores. In the "
                f"largest run a file may cost {LINEAR} times as much as in the run of {LINEAR_FROM_FILES}.\n\n"
                + table(header, rows))

    def _cpu_each(self, entry, units):
        return entry.results.median(self.own_name, "cpu") / units
