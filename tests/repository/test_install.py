"""What `cmake --install` puts in place."""
import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

SHARE = Path(__file__).resolve().parent.parent.parent / "share"
EXAMPLES = SHARE.parent / "examples"


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.prefix = Path(cls.folder.name)
        subprocess.run(["cmake", "--install", os.environ["KESTRINE_BUILD"], "--prefix", cls.prefix], check=True,
                       capture_output=True)

    def test_no_folder_is_empty(self):
        self.assertEqual([path for path in self.prefix.rglob("*") if path.is_dir() and not any(path.iterdir())], [])

    def test_everything_in_share_is_installed_once(self):
        names = sorted(path.name for path in (self.prefix / "share").rglob("*") if path.is_file())
        self.assertEqual(names, sorted(path.name for path in SHARE.rglob("*") if path.is_file()))

    def test_the_library_offers_only_the_functions_of_its_header(self):
        header = (self.prefix / "include/kestrine.h").read_text(encoding="utf-8")
        declared = set(re.findall(r"^KESTRINE_API [^(]*?(kestrine_\w+)\(", header, re.MULTILINE))
        done = subprocess.run(["nm", "-D", "--defined-only", self.library()], check=True, capture_output=True, text=True)
        offered = {line.split()[-1] for line in done.stdout.splitlines() if " A " not in line}
        self.assertEqual(offered, {f"{name}@@KESTRINE_0" for name in declared})

    def test_c_programs_are_built_against_the_installed_library(self):
        """Once with pkg-config and once with find_package, by a C compiler that takes nothing but C99."""
        self.skip_with_sanitizers()
        flags = subprocess.run(["pkg-config", "--cflags", "--libs", "kestrine"], check=True, capture_output=True, text=True,
                               env={**os.environ, "PKG_CONFIG_PATH": str(self.library().parent / "pkgconfig")}).stdout.split()
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["cc", "-std=c99", "-pedantic-errors", "-Wall", "-Wextra", "-Werror", "-o", f"{folder}/convert",
                            EXAMPLES / "programs/convert.c", *flags], check=True)
            self.assertRuns(f"{folder}/convert", f"{folder}/a.webp")
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "CMakeLists.txt").write_text(
                "cmake_minimum_required(VERSION 3.13)\nproject(consumer C)\nfind_package(kestrine 0.1 REQUIRED)\n"
                f"add_executable(convert {EXAMPLES}/programs/convert.c)\ntarget_link_libraries(convert kestrine::kestrine)\n")
            for command in (["-S", folder, "-B", folder, f"-DCMAKE_PREFIX_PATH={self.prefix}"], ["--build", folder]):
                subprocess.run(["cmake", *command], check=True, capture_output=True)
            self.assertRuns(f"{folder}/convert", f"{folder}/a.webp")

    def test_python_uses_the_installed_library(self):
        self.skip_with_sanitizers()
        with tempfile.TemporaryDirectory() as folder:
            self.assertRuns(EXAMPLES / "programs/convert.py", f"{folder}/a.webp")

    def library(self):
        return next(self.prefix.glob("lib/**/libkestrine.so.0"))

    def skip_with_sanitizers(self):
        if b"san_init" in self.library().read_bytes():
            self.skipTest("a library with sanitizers needs programs with sanitizers")

    def assertRuns(self, program, result):
        done = subprocess.run([program, EXAMPLES / "pictures/landscape.jpg", result], check=False, capture_output=True,
                              env={**os.environ, "LD_LIBRARY_PATH": str(self.library().parent)})
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertEqual(Path(result).read_bytes()[8:12], b"WEBP")

    def test_the_programs_run_from_there(self):
        for program, argument in (("kestrine", "-l"), ("kestrinectl", "--help")):
            done = subprocess.run([self.prefix / "bin" / program, argument], env={"HOME": self.folder.name}, check=False,
                                  capture_output=True)
            self.assertEqual((done.returncode, done.stderr), (0, b""))

    def test_the_manual_pages_tell_the_version_of_the_program(self):
        done = subprocess.run([self.prefix / "bin/kestrinectl", "--version"], check=False, capture_output=True, text=True)
        self.assertRegex(done.stdout, r"\Akestrinectl \d+\.\d+\.\d+\n\Z")
        for page in ("man1/kestrine.1", "man1/kestrinectl.1", "man5/kestrine-presets.5"):
            title = (self.prefix / "share/man" / page).read_text(encoding="utf-8").splitlines()[0]
            self.assertIn(f'"kestrine {done.stdout.split()[1]}"', title)

    def test_the_changelog_begins_with_the_version_of_the_program(self):
        done = subprocess.run([self.prefix / "bin/kestrinectl", "--version"], check=True, capture_output=True, text=True)
        newest = re.search(r"^## (\S+)", (EXAMPLES.parent / "CHANGELOG.md").read_text(encoding="utf-8"), re.MULTILINE)
        self.assertEqual(f"kestrinectl {newest[1]}\n", done.stdout)

    def test_nothing_else_is_installed(self):
        self.assertEqual(sorted(os.listdir(self.prefix)), ["bin", "include", "lib", "libexec", "share"])
        self.assertEqual(os.listdir(self.prefix / "include"), ["kestrine.h"])
        self.assertEqual(os.listdir(self.prefix / "libexec/kestrine"), ["kestrine-worker"])
        self.assertEqual(sorted(os.listdir(self.prefix / "bin")), ["kestrine", "kestrinectl"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
