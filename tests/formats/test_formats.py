"""docs/formats.md is true: every variant that it names is tried with a real file and judged by other programs, and the page is what
scripts/formats would write now, except for the measured costs."""
import difflib
import re
import sys
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent / "endtoend")]
sys.dont_write_bytecode = True
import page  # noqa: E402
import trial  # noqa: E402
from formats import FORMATS  # noqa: E402
from written_rows import OUTPUTS, found_written  # noqa: E402

FOUND = {}


def found(function, row):
    """Every row is tried once."""
    if (function, row.name) not in FOUND:
        try:
            FOUND[function, row.name] = function(row)
        except trial.Wrong as wrong:
            FOUND[function, row.name] = wrong
    return FOUND[function, row.name]


class Formats(unittest.TestCase):
    """A test for each format is added below."""

    def assert_true(self, function, row):
        result = found(function, row)
        if isinstance(result, trial.Wrong):
            self.fail(f"\n{result}")

    def test_the_page_says_what_is_found(self):
        current = page.PATH.read_text(encoding="utf-8")
        read = {row.name: found(trial.found, row) for row in FORMATS}
        written = {row.name: found(found_written, row) for row in OUTPUTS}
        if any(isinstance(result, trial.Wrong) for result in FOUND.values()):
            self.fail("a row of the table is not true")
        reading, writing = page.costs_of(current)
        wanted = page.page(page.machine_of(current), read, reading, written, writing)
        changes = difflib.unified_diff(current.splitlines(), wanted.splitlines(), "docs/formats.md", "found", n=0, lineterm="")
        self.assertEqual(list(changes), [], "docs/formats.md is out of date; run scripts/formats")

    def test_the_page_has_all_costs(self):
        reading, writing = page.costs_of(page.PATH.read_text(encoding="utf-8"))
        costs = [reading[row.name] for row in FORMATS if row.picture] + [writing[row.name] for row in OUTPUTS]
        for cost in costs:
            self.assertRegex(f"{cost.memory} {cost.time}", r"^\d+ \d+\.\d+$")


def add_test(verb, function, row):
    name = re.sub(r"\W+", "_", page.title_of(row))
    setattr(Formats, f"test_{verb}_{name}", lambda self: self.assert_true(function, row))


for each in FORMATS:
    add_test("reading", trial.found, each)
for each in OUTPUTS:
    add_test("writing", found_written, each)

if __name__ == "__main__":
    unittest.main(verbosity=2)
