"""The report of skipped tests finds every skip and refuses those that are not allowed."""
import unittest
import xml.etree.ElementTree

import report_skips
from report_skips import is_allowed, skips_of


def case(output, skipped=False, status="run"):
    inner = '<skipped message="SKIP_REGULAR_EXPRESSION_MATCHED"/>' if skipped else ""
    return xml.etree.ElementTree.fromstring(
        f'<testcase name="host: Trash.x" status="{status}">{inner}<system-out>{output}</system-out></testcase>')


class Skips(unittest.TestCase):
    def test_a_test_that_ran_is_none(self):
        self.assertEqual(skips_of(case("[       OK ] Trash.x (0 ms)")), [])

    def test_a_skipped_googletest_gives_its_reason(self):
        output = "TrashTests.cpp:3: Skipped\nno attributes here\n\n[  SKIPPED ] Trash.x (0 ms)"
        self.assertEqual(skips_of(case(output, skipped=True)), [("host: Trash.x", "no attributes here")])

    def test_a_test_that_could_not_run_is_one(self):
        self.assertEqual(skips_of(case("", status="notrun")), [("host: Trash.x", "no reason given")])

    def test_a_skipped_test_within_a_passing_program_is_found(self):
        for description in ("", "\nWhat it does"):
            output = f"test_a (__main__.Disk.test_a){description} ... skipped 'no disk'\ntest_b (__main__.Disk.test_b) ... ok\n" \
                     "\nOK (skipped=1)"
            self.assertEqual(skips_of(case(output)), [("host: Trash.x: Disk.test_a", "no disk")])

    def test_a_skip_that_is_only_counted_is_found(self):
        self.assertEqual(skips_of(case("ss.\nOK (skipped=2)")), [("host: Trash.x", "a test of this file gives no reason")] * 2)


class AllowedSkips(unittest.TestCase):
    ALLOWED = report_skips.allowed_skips("# why\n\nhost: Trash.* -- no attributes here\n")

    def test_name_and_reason_must_both_match(self):
        self.assertTrue(is_allowed(("host: Trash.x", "no attributes here"), self.ALLOWED))
        self.assertFalse(is_allowed(("host: Trash.x", "no time"), self.ALLOWED))
        self.assertFalse(is_allowed(("host: Files.x", "no attributes here"), self.ALLOWED))

    def test_every_line_of_the_list_has_a_name_and_a_reason(self):
        for line in report_skips.allowed_skips(report_skips.ALLOWED_SKIPS.read_text(encoding="utf-8")):
            self.assertEqual(len(line), 2, line)
            self.assertNotIn("*", line[0].split(":")[0], "names the folder")


if __name__ == "__main__":
    unittest.main(verbosity=2)
