"""The layer table of CONTRIBUTING.md, and what check_layers.py refuses."""
import re
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "tests/layers"))
import check_layers  # noqa: E402


def short(folder):
    return folder.removeprefix("platform/")


class TableInContributing(unittest.TestCase):
    def test_it_names_what_each_folder_may_include_as_the_check_does(self):
        rows = re.findall(r"^\| `(\w+)` \| (.*)\|$", (ROOT / "CONTRIBUTING.md").read_text(), re.MULTILINE)
        table = {folder: set(re.findall(r"`(\w+)`", others)) for folder, others in rows}
        rules = {short(folder): set(map(short, others)) for folder, others in check_layers.ALLOWED.items()}
        self.assertEqual(table, rules)


class Fence(unittest.TestCase):
    def complaints(self, **files):
        """What is complained of in a tree of these files (named like platform_host_A: include)."""
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder)
            for name, include in files.items():
                file = root / (name.replace("__", "/") + ".cpp")
                file.parent.mkdir(parents=True, exist_ok=True)
                file.write_text(f"#include {include}\n")
            return [c for c in check_layers.complaints(root) if "take it off the list" not in c]

    def test_system_calls_are_made_in_host(self):
        for header in ("<unistd.h>", "<sys/stat.h>", "<fcntl.h>", "<linux/fs.h>", "<signal.h>"):
            self.assertEqual(self.complaints(platform__host__A=header), [])
            self.assertEqual(len(self.complaints(models__A=header)), 1, header)

    def test_a_listed_file_makes_system_calls_and_its_neighbour_does_not(self):
        self.assertEqual(self.complaints(platform__finder__Sidecar="<fcntl.h>"), [])
        self.assertEqual(len(self.complaints(platform__finder__Other="<fcntl.h>")), 1)

    def test_a_listed_file_without_need_is_complained_of(self):
        with tempfile.TemporaryDirectory() as folder:
            self.assertEqual(len(list(check_layers.complaints(Path(folder)))), len(check_layers.SYSTEM_CALLERS))

    def test_includes_go_down_and_libraries_stay_where_they_belong(self):
        self.assertEqual(self.complaints(models__A="<vector>"), [])
        self.assertEqual(len(self.complaints(models__A="<png.h>")), 1)
        self.assertEqual(len(self.complaints(models__A="<unknown/library.h>")), 1)


if __name__ == "__main__":
    unittest.main(verbosity=2)
