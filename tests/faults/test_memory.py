"""Allocations that fail: every line is printed, every result is whole or absent, and nothing is lost."""
import os
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent.parent / "endtoend"))

import pictures
from tools import JPEG, ToolTest, is_sanitized, main, messages_of

LINES = b"a.jpg converting... and done!!\nb.jpg converting... and done!!\n"


class FailingAllocations(ToolTest):
    def setUp(self):
        super().setUp()
        if is_sanitized():
            self.skipTest("sanitizers allocate in their own way")
        self.originals = {name: pictures.jpeg(pictures.photo(60, 40, seed=seed))
                          for seed, name in enumerate(["a.jpg", "b.jpg"])}
        for name, content in self.originals.items():
            (self.folder / name).write_bytes(content)
        self.store({"name": "S", "formatType": JPEG, "resizeType": 2, "maxSize": 30.0})

    def run_with(self, plan):
        """Runs kestrine while allocations fail. Returns its output, and the numbers of allocations."""
        counts = self.home / "counts"
        environment = {**self.environment, "LD_PRELOAD": os.environ["KESTRINE_FAILING_ALLOCATION"],
                       "KESTRINE_FAILING_ALLOCATIONS": plan, "KESTRINE_ALLOCATIONS": str(counts)}
        done = self.run_tool("-set", "S", "a.jpg", "b.jpg", environment=environment)
        self.assertEqual((done.returncode, done.stderr), (0, b""), plan)
        return done.stdout, [int(count) for count in counts.read_text().split()] if counts.exists() else None

    def results(self):
        """Takes the results away and returns them."""
        folder = self.folder / "S"
        found = {path.name: path.read_bytes() for path in folder.iterdir()} if folder.exists() else {}
        for name in found:
            (folder / name).unlink()
        return found

    def sweep(self, ending, step):
        """Runs with failures at every `step`-th allocation. Returns the outputs; checks the results."""
        _, (_, count) = self.run_with("count")
        whole = self.results()
        self.assertEqual(sorted(whole), ["a.jpg", "b.jpg"])
        self.assertGreater(count, 200)
        outputs = []
        for number in range(1, count + 1, step):
            outputs.append(self.run_with(f"{number}{ending}")[0])
            for name, content in self.results().items():
                self.assertEqual(content, whole[name], number)
        for name, content in self.originals.items():
            self.assertEqual((self.folder / name).read_bytes(), content)
        return outputs

    def test_after_one_failing_allocation_every_line_is_complete(self):
        self.assertEqual(set(self.sweep("", 5)), {LINES})

    def test_without_any_memory_from_some_point_on_the_lines_are_complete_or_none_has_begun(self):
        self.assertEqual(set(self.sweep("-", 9)), {LINES, b""})

    def test_before_main_nothing_is_allocated_except_the_reserve_of_the_cxx_library_for_exceptions(self):
        _, (before, _) = self.run_with("count")
        self.assertLessEqual(before, 1)
        self.assertEqual(self.run_with("before 1")[0], LINES)
        self.assertEqual(self.run_with("before 1-")[0], b"")

    def test_kestrinectl_without_memory_says_so_and_ends_with_status_1(self):
        counts = self.home / "counts"
        environment = {**self.environment, "LD_PRELOAD": os.environ["KESTRINE_FAILING_ALLOCATION"],
                       "KESTRINE_FAILING_ALLOCATIONS": "count", "KESTRINE_ALLOCATIONS": str(counts)}
        arguments = ("convert", "--set", "S", "-j1", "a.jpg", "b.jpg")
        self.assertEqual(self.kestrinectl(*arguments, environment=environment).returncode, 0)
        whole = self.results()
        count = int(counts.read_text().split()[1])
        for number in range(1, count, max(1, count // 80)):
            environment["KESTRINE_FAILING_ALLOCATIONS"] = f"{number}-"
            done = self.kestrinectl(*arguments, environment=environment)
            self.assertIn(done.returncode, (0, 1), number)
            self.assertEqual(done.returncode == 1, messages_of(done) != [], done)
            for name, content in self.results().items():
                self.assertEqual(content, whole[name], number)


if __name__ == "__main__":
    main()
