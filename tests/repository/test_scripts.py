"""The scripts for building and checking, tried on a small project of their own."""
import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

SCRIPTS = Path(__file__).resolve().parent.parent.parent / "scripts"
PRESETS = """{"version": 6, "configurePresets": [{"name": "dev", "generator": "Ninja",
              "binaryDir": "${sourceDir}/build/${presetName}"}]}"""


class SmallProject(unittest.TestCase):
    """A project with these scripts, whose one target writes the file `made`."""

    def setUp(self):
        self.root = Path(tempfile.mkdtemp(prefix="kestrine-scripts-"))
        self.addCleanup(shutil.rmtree, self.root)
        shutil.copytree(SCRIPTS, self.root / "scripts")
        self.write("CMakePresets.json", PRESETS)
        self.project("add_custom_target(make_it ALL COMMAND ${CMAKE_COMMAND} -E touch ${CMAKE_SOURCE_DIR}/made)")

    def write(self, name, text):
        (self.root / name).parent.mkdir(parents=True, exist_ok=True)
        (self.root / name).write_text(text)

    def project(self, commands):
        self.write("CMakeLists.txt", f"cmake_minimum_required(VERSION 3.25)\nproject(small NONE)\n{commands}\n")

    def script(self, name, *arguments):
        return subprocess.run([self.root / "scripts" / name, *arguments], capture_output=True, text=True, check=False,
                              env={**os.environ, "CLICOLOR": "0"})


class Building(SmallProject):
    def test_a_preset_is_configured_and_built(self):
        done = self.script("build", "dev")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertTrue((self.root / "made").exists())

    def test_a_folder_of_another_generator_is_begun_afresh(self):
        self.write("build/dev/CMakeCache.txt", "CMAKE_GENERATOR:INTERNAL=Unix Makefiles\n"
                                               f"CMAKE_HOME_DIRECTORY:INTERNAL={self.root}\n")
        self.write("build/dev/old", "")
        self.assertEqual(self.script("configure", "dev").returncode, 0)
        self.assertFalse((self.root / "build/dev/old").exists())

    def test_a_folder_that_is_configured_already_is_kept(self):
        self.script("configure", "dev")
        self.write("build/dev/old", "")
        self.assertEqual(self.script("configure", "dev").returncode, 0)
        self.assertTrue((self.root / "build/dev/old").exists())

    def test_the_log_is_shown_only_on_failure(self):
        self.assertEqual(self.script("configure", "dev").stdout, "")
        self.project('message(FATAL_ERROR "a library is missing")')
        done = self.script("configure", "dev")
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("a library is missing", done.stderr)

    def test_a_failing_command_is_shown_and_fails_the_build(self):
        self.project("add_custom_target(make_it ALL COMMAND ${CMAKE_COMMAND} -E cat ${CMAKE_SOURCE_DIR}/absent)")
        done = self.script("build", "dev")
        self.assertEqual(done.returncode, 1)
        self.assertIn("absent", done.stdout)

    def test_a_build_tells_how_far_it_is(self):
        self.assertIn("of 1 steps", self.script("build", "dev").stdout)

    def test_nothing_is_left_beside_the_build_folder(self):
        before = sorted(os.listdir(self.root))
        self.script("configure", "dev")
        self.assertEqual(sorted(os.listdir(self.root)), sorted(before + ["build"]))


class Checking(SmallProject):
    def setUp(self):
        super().setUp()
        shutil.rmtree(self.root / "scripts/check.d")
        self.write("scripts/install-dependencies", "")
        (self.root / "scripts/install-dependencies").chmod(0o755)

    def part(self, name, text):
        self.write(f"scripts/check.d/{name}", f"# What {name} does\n{text}\n")

    def test_all_parts_run_and_a_table_closes(self):
        self.part("good", 'figure "3 things"')
        self.part("bad", "false")
        done = self.script("check")
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stdout, r"\npart +result +time +figures\nbad +FAILED +0:0\d +\ngood +passed +0:0\d +3 things\n$")

    def test_an_option_goes_to_the_part_before_it(self):
        self.part("one", 'figure "got ${1:-nothing}"')
        self.part("two", 'figure "got ${1:-nothing}"')
        self.assertRegex(self.script("check", "one", "--seconds=5", "two").stdout, r"one .* got --seconds=5\n(.*\n)*two .* got nothing")

    def test_what_succeeded_before_an_interruption_is_left_out(self):
        self.part("long", 'work() { echo "$1" >>worked; [ "$1" != b ] || [ -e rested ] || kill -9 "$check"; }\n'
                          "export -f work\n"
                          "export check=$PPID\n"
                          'printf "%s\\n" a b c | each 1 work')
        self.assertEqual(self.script("check", "long").returncode, -9)
        self.write("rested", "")
        done = self.script("check", "long")
        self.assertIn("long, continued", done.stdout)
        self.assertEqual(sorted((self.root / "worked").read_text().split()).count("a"), 1)

    def test_a_finished_part_begins_anew(self):
        self.part("short", 'work() { echo "$1" >>worked; }; export -f work; echo a | each 1 work')
        self.script("check", "short")
        self.script("check", "short")
        self.assertEqual((self.root / "worked").read_text(), "a\na\n")

    def test_one_failure_is_shown_fails_the_part_and_stops_no_other(self):
        self.part("mixed", 'work() { echo "about $1"; [ "$1" != a ]; }; export -f work; printf "a\\nb\\n" | each 1 work')
        done = self.script("check", "mixed")
        self.assertEqual(done.returncode, 1)
        self.assertIn("--- a\nabout a\n", done.stdout)
        self.assertTrue((self.root / "build/check/mixed/items/b.done").exists())

    def test_a_suite_can_be_limited_to_folders_and_leave_out_tests(self):
        self.write("tests/allowed-skips.txt", "")
        self.write("tests/repository/report_skips.py", (SCRIPTS.parent / "tests/repository/report_skips.py").read_text())
        (self.root / "tests/repository/report_skips.py").chmod(0o755)
        self.project("enable_testing()\n" + "".join(f'add_test(NAME "{name}" COMMAND ${{CMAKE_COMMAND}} -E {result})\n' for
                     name, result in (("one: good", "true"), ("one: bad", "false"), ("two: bad", "false"))))
        self.part("all", "scripts/build dev; suite dev")
        self.part("some", "scripts/build dev; left_out='one: bad' suite dev one")
        self.assertRegex(self.script("check", "all").stdout, r"all +FAILED .* 3 tests, 2 failed, 0 skipped")
        self.assertRegex(self.script("check", "some").stdout, r"some +passed .* 1 tests, 0 failed, 0 skipped")

    def test_an_unknown_part_is_refused_before_any_runs(self):
        self.part("one", "touch ran")
        self.assertEqual(self.script("check", "one", "none").returncode, 2)
        self.assertFalse((self.root / "ran").exists())


class Dependencies(unittest.TestCase):
    def test_every_part_tells_what_it_does(self):
        done = subprocess.run([SCRIPTS / "check", "--list"], capture_output=True, text=True, check=True)
        for line in done.stdout.splitlines():
            self.assertRegex(line, r"^\w+ +\w{3,}")

    def test_an_unknown_part_has_no_packages(self):
        done = subprocess.run([SCRIPTS / "install-dependencies", "--check", "none"], capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 1)
        self.assertIn("no part of scripts/check is called 'none'", done.stderr)

    def test_libraries_of_another_processor_need_a_folder(self):
        done = subprocess.run([SCRIPTS / "install-dependencies", "--foreign", "arm64"], capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 1)
        self.assertIn("--foreign takes an architecture and a folder", done.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
