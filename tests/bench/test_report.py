#!/usr/bin/python3
"""The page: tables, goals met and missed, growth."""
import sys
import unittest
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "bench"))

from racing import report  # noqa: E402
from racing.inspecting import Outcome  # noqa: E402
from racing.measuring import Results, Run  # noqa: E402
from racing.quality import LIGHT, STORED  # noqa: E402
from racing.races import Entry, SameBytes  # noqa: E402
from racing.tasks import Goal, Task  # noqa: E402


@dataclass(frozen=True)
class Build:
    name: str
    own_decoder: bool


OURS, OTHER = Build("kestrine", True), Build("kestrine, libjpeg-turbo", False)
MIB = 2 ** 20


def task_of(goal=Goal(), **fields):
    usual = dict(key="T1", title="a task", kind="jpeg", width=600, height=400, to="jpeg", longest=120)
    return Task(goal=goal, **{**usual, **fields})


def outcome(decibels, size=1000):
    quality = {LIGHT: decibels, STORED: decibels - 5, "ssim": 0.99, "blurred": decibels}
    return Outcome(size, "profile, EXIF", (120, 80), quality, dict(quality))


def entry_of(task, fastest="peer", **seconds):
    """Walls by name; CPU is twice the wall, the peak 20 MiB."""
    names = {"ours": OURS.name, "other": OTHER.name}
    runs = {names.get(name, name): [Run(wall, 2 * wall, 20)] * 3 for name, wall in seconds.items()}
    outputs = {name: outcome(50 if name == "peer" else 55) for name in runs}
    return Entry(task, Results(3, runs, {}, outputs), fastest, "600 x 400", 5 * MIB)


def lines(entry, build=OURS):
    return {row[3]: row[4:] for row in report.Goals(entry, build).lines()}


class TableTest(unittest.TestCase):
    def test_a_table_has_a_line_for_the_head_the_rule_and_every_row(self):
        self.assertEqual(report.table(["a", "b"], [[1, "x"], [2, "y"]]),
                         "| a | b |\n| --- | --- |\n| 1 | x |\n| 2 | y |\n\n")

    def test_no_rows_no_table(self):
        self.assertEqual(report.table(["a"], []), "")

    def test_what_was_not_measured_stays_empty(self):
        self.assertEqual((report.number(None, ".1f"), report.number(1.26, ".1f")), ("", "1.3"))


class GoalsTest(unittest.TestCase):
    goal = Goal(0.55, 0.45, 0.60, 0.32, 0.25, decibels=52, peak=40)

    def test_a_goal_is_met_or_not(self):
        found = lines(entry_of(task_of(self.goal), ours=0.5, peer=1.0))
        self.assertEqual(found["wall"], ["0.50", "<= 0.55", "yes"])
        self.assertEqual(found["wall, aim"], ["0.50", "<= 0.45", "**no**"])
        self.assertEqual(found["CPU"], ["0.50", "<= 0.60", "yes"])
        self.assertEqual(found["dB in light"], ["55.0", ">= 52.0", "yes"])
        self.assertEqual(found["dB, nearer reference"], ["55.0", ">= 50.0 (the peer's)", "yes"])
        self.assertEqual(found["peak MiB"], ["20", "<= 40", "yes"])

    def test_a_build_without_the_own_decoder_is_not_held_to_its_goals(self):
        entry = entry_of(task_of(self.goal), ours=0.3, other=0.5, peer=1.0)
        own = {"wall with the own decoder", "wall with the own decoder, aim"}
        self.assertLessEqual(own, set(lines(entry)))
        self.assertFalse(own & set(lines(entry, OTHER)))
        self.assertEqual(lines(entry, OTHER)["wall"][0], "0.50")

    def test_a_build_that_could_not_run_misses(self):
        self.assertEqual(lines(entry_of(task_of(self.goal), peer=1.0)), {"runs at all": ["no", "yes", "**no**"]})

    def test_without_peers_only_what_needs_none_is_judged(self):
        found = lines(entry_of(task_of(self.goal), fastest=None, ours=0.5))
        self.assertEqual(set(found), {"dB in light", "peak MiB"})

    def test_the_size_of_a_file_is_held_against_the_fastest_peer(self):
        entry = entry_of(task_of(Goal(bytes=0.65)), ours=0.5, peer=1.0)
        entry.results.outputs[OURS.name].bytes = 700
        self.assertEqual(lines(entry)["bytes"], ["0.70", "<= 0.65", "**no**"])


class PageTest(unittest.TestCase):
    def page(self, **parts):
        page = report.Report(3.0, [OURS])
        for name, value in parts.items():
            setattr(page, name, value)
        return page.text(["bench/peers", "--rounds", "3"], 3, [["kestrine", "1", "how"]], ["sharp"], "made")

    def test_a_task_is_a_table_with_the_fastest_on_top(self):
        page = self.page(entries=[entry_of(task_of(), ours=0.5, peer=1.0)])
        rows = [line for line in page.splitlines() if line.startswith(("| kestrine | 0.50", "| peer | 1.00"))]
        self.assertEqual(rows[0], "| kestrine | 0.50 (0.50-0.50) | 0.50 | 500.0 | 1000.0 | 20 | 1.0 | profile, EXIF "
                                  "| 55.0 | 50.0 | 0.9900 | 55.0 | 0.9900 |")
        self.assertEqual(len(rows), 2)

    def test_the_page_names_the_machine_the_command_and_who_is_absent(self):
        page = self.page()
        for words in (report.machine(), "`bench/peers --rounds 3`", "Not installed, so not raced: sharp."):
            self.assertIn(words, page)

    def test_the_notes_of_the_page_before_stay_and_nothing_else(self):
        before = "# Benchmarks\n\nyesterday\n\n## Notes\n\nT5: the kernel's copying.\n"
        page = report.Report(3.0, [OURS]).text(["bench/peers"], 3, [], [], "made", before)
        self.assertTrue(page.endswith("\n\n## Notes\n\nT5: the kernel's copying.\n"))
        self.assertNotIn("yesterday", page)
        again = report.Report(3.0, [OURS]).text(["bench/peers"], 3, [], [], "made", page)
        self.assertEqual(again.count("## Notes"), 1)

    def test_different_bytes_are_told(self):
        page = self.page(same_bytes=[SameBytes("T2", 16, (1, 2), True), SameBytes("T7", 200, (1, 2), False)])
        self.assertIn("| T2 | 16 | 1, 2 | yes |", page)
        self.assertIn("| T7 | 200 | 1, 2 | **no** |", page)

    def growth(self, large_wall, large_peak):
        small = entry_of(task_of(key="growth-jpeg-24", title="24 MP JPEG", width=6000, height=4000), ours=0.24)
        large = entry_of(task_of(key="growth-jpeg-100", title="100 MP JPEG", width=10000, height=10000),
                         ours=large_wall)
        large.results.runs[OURS.name] = [Run(large_wall, 2 * large_wall, large_peak)]
        page = self.page(growth=[small, large])
        return [line.split(" | ")[-1].strip(" |") for line in page.splitlines() if " MP JPEG | " in line]

    def test_growth_is_met_when_cost_is_linear_and_memory_flat(self):
        self.assertEqual(self.growth(1.1, 44), ["yes", "yes"])

    def test_growth_is_missed_by_dearer_pixels_or_by_more_memory(self):
        self.assertEqual(self.growth(1.2, 44), ["yes", "**no**"])
        self.assertEqual(self.growth(1.0, 46), ["yes", "**no**"])

    def test_ten_thousand_files_cost_no_more_each_than_a_hundred(self):
        def files(count, seconds):
            return entry_of(task_of(key=f"files-{count}", title=f"{count} files", count=count), ours=seconds)

        page = self.page(files=[files(100, 0.1), files(10000, 12.0)])
        self.assertIn("| 100 files | 2.00 | 1.00 | 1.00 | 20 | yes |", page)
        self.assertIn("| 10000 files | 2.40 | 1.20 | 1.20 | 20 | **no** |", page)


if __name__ == "__main__":
    unittest.main()
