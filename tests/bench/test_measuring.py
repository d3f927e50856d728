#!/usr/bin/python3
"""Medians, ratios, the order of the rounds, and what happens to contestants that fail."""
import sys
import tempfile
import unittest
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "bench"))

from racing import contestants, measuring, tasks  # noqa: E402
from racing.measuring import Results, Run, RunFailed  # noqa: E402


@dataclass(frozen=True)
class Runner:
    name: str


def results_of(**walls):
    return Results(3, {name: [Run(wall, 2 * wall, 10 * wall) for wall in times] for name, times in walls.items()})


class ResultsTest(unittest.TestCase):
    def test_the_median_of_each_quantity(self):
        results = results_of(ours=[3, 1, 2])
        self.assertEqual([results.median("ours", quantity) for quantity in ("wall", "cpu", "peak")], [2, 4, 20])

    def test_a_ratio_is_the_median_of_the_ratios_within_the_rounds(self):
        results = results_of(ours=[1, 20, 3], theirs=[2, 40, 4])
        self.assertEqual(results.ratios("ours", "theirs", "wall"), [0.5, 0.5, 0.75])
        self.assertEqual(results.ratio("ours", "theirs", "wall"), 0.5)

    def test_a_time_of_zero_divides_nothing(self):
        self.assertGreater(results_of(ours=[1], theirs=[0]).ratio("ours", "theirs", "cpu"), 1)

    def test_the_fastest_is_of_those_that_ran_and_may_be_nobody(self):
        results = results_of(ours=[1, 1, 1], slow=[4, 5, 6], fast=[9, 2, 3])
        self.assertEqual(results.fastest(["slow", "fast", "absent"]), "fast")
        self.assertIsNone(results.fastest(["absent"]))


class RaceTest(unittest.TestCase):
    def test_every_round_has_everybody_once_in_an_order_of_its_own(self):
        order = []
        results = measuring.race([Runner(name) for name in "abcd"], 6,
                                 lambda one: order.append(one.name) or Run(1, 1, 1), 7)
        rounds = [tuple(order[first:first + 4]) for first in range(0, 24, 4)]
        self.assertTrue(all(sorted(names) == list("abcd") for names in rounds))
        self.assertGreater(len(set(rounds)), 1)
        self.assertEqual({name: len(runs) for name, runs in results.runs.items()}, dict.fromkeys("abcd", 6))

    def test_who_fails_once_is_out_with_the_reason(self):
        runs = []

        def run(one):
            runs.append(one.name)
            if one.name == "b" and runs.count("b") == 2:
                raise RunFailed("status 3: no memory")
            return Run(1, 1, 1)

        results = measuring.race([Runner("a"), Runner("b")], 4, run, 0)
        self.assertEqual((list(results.runs), results.failures), (["a"], {"b": "status 3: no memory"}))
        self.assertEqual(runs.count("b"), 2)


class SpawnerTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.spawner = measuring.Spawner(self.folder / "messages")
        self.addCleanup(self.spawner.process.stdout.close)
        self.addCleanup(self.spawner.close)

    def run_shell(self, script):
        return self.spawner.run(["/bin/sh", "-c", script], {"PATH": "/usr/bin:/bin"}, self.folder)

    def test_the_cost_of_the_children_counts(self):
        busy = "i=0; while [ $i -lt 60000 ]; do i=$((i + 1)); done"
        idle = self.run_shell("(:); :")
        run = self.run_shell(f"({busy}); :")
        self.assertGreater(run.cpu, 4 * idle.cpu)
        self.assertGreater(run.peak, 0)

    def test_a_failure_says_the_status_and_the_last_line(self):
        with self.assertRaisesRegex(RunFailed, "^status 3: worse$"):
            self.run_shell("echo bad >&2; echo worse >&2; exit 3")

    def test_a_killed_program_is_a_failure(self):
        with self.assertRaisesRegex(RunFailed, "status -9"):
            self.run_shell("kill -9 $$")

    def test_every_run_has_a_folder_of_its_own_with_the_inputs_and_no_outputs(self):
        original = self.folder / "original"
        original.write_text("x")
        folders = measuring.RunFolders(self.folder / "runs")
        one, other = (folders.make({"a": original, "b": original}) for _ in range(2))
        self.assertNotEqual(one, other)
        for folder in (one, other):
            self.assertEqual(sorted(path.name for path in (folder / "in").iterdir()), ["a", "b"])
            self.assertEqual(list((folder / "out").iterdir()), [])
        folders.remove()
        self.assertEqual([path.name for path in self.folder.iterdir() if path.is_dir()], [])
        self.assertEqual(original.read_text(), "x")


class TasksTest(unittest.TestCase):
    def test_a_name_means_its_variants_and_nothing_else(self):
        named = {name: [task.key for task in tasks.TASKS if tasks.is_named(task.key, name)]
                 for name in ("T1", "T5", "T99")}
        self.assertEqual(named, {"T1": ["T1"], "T5": ["T5-lzw", "T5-plain"], "T99": []})
        self.assertTrue(all(map(tasks.known, ["T8", "growth-png", "growth", "files-100", "start"])))
        self.assertFalse(any(map(tasks.known, ["", "T", "T99", "grow"])))

    def test_keys_are_unique(self):
        keys = [task.key for task in [*tasks.TASKS, *tasks.GROWTH, *tasks.FILES]]
        self.assertEqual(len(keys), len(set(keys)))

    def test_shrinking_divides_sides_and_counts(self):
        task = next(task for task in tasks.TASKS if task.key == "T7").shrunk(12)
        self.assertEqual((task.width, task.height, task.box, task.count, task.different), (66, 50, (21, 21), 16, 16))


class ContestantsTest(unittest.TestCase):
    def job(self, count):
        return tasks.TASKS[1].job(Path("/run"), [f"{number}.jpg" for number in range(count)], "jpeg")

    def test_a_build_folder_says_which_decoder_it_has(self):
        with tempfile.TemporaryDirectory() as folder:
            cache = Path(folder) / "CMakeCache.txt"
            self.assertFalse(contestants.Kestrine(folder).own_decoder)
            for value in ("ON", "OFF"):
                cache.write_text(f"CMAKE_BUILD_TYPE:STRING=Release\nKESTRINE_OWN_JPEG_DECODER:BOOL={value}\n")
                self.assertEqual(contestants.Kestrine(folder).own_decoder, value == "ON")

    def test_one_file_goes_to_the_quiet_tool_and_many_to_the_companion(self):
        ours = contestants.Kestrine("/b")
        self.assertEqual(ours.argv(self.job(1)), [Path("/b/bin/kestrine"), "-set", "T1-jpeg", "0.jpg"])
        self.assertEqual(ours.argv(self.job(2))[:2], [Path("/b/bin/kestrinectl"), "convert"])


if __name__ == "__main__":
    unittest.main()
