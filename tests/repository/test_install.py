"""What `cmake --install` puts in place."""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SHARE = Path(__file__).resolve().parent.parent.parent / "share"
EXAMPLES = SHARE.parent / "examples"
INTERFACE = SHARE.parent / "cmake/KestrineDesktop.cmake"


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
        flags = self.flags_of("kestrine")
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["cc", "-std=c99", "-pedantic-errors", "-Wall", "-Wextra", "-Werror", "-o", f"{folder}/convert",
                            EXAMPLES / "programs/convert.c", *flags], check=True)
            self.assertRuns(f"{folder}/convert", f"{folder}/a.webp")
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "CMakeLists.txt").write_text(
                "cmake_minimum_required(VERSION 3.13)\nproject(consumer C)\nfind_package(kestrine 0.1 REQUIRED)\n"
                f"add_executable(convert {EXAMPLES}/programs/convert.c)\ntarget_link_libraries(convert kestrine::kestrine)\n")
            self.build_with_cmake(folder)
            self.assertRuns(f"{folder}/convert", f"{folder}/a.webp")

    def test_cpp_programs_are_built_against_the_installed_archive(self):
        """Once with pkg-config and once with find_package."""
        self.skip_with_sanitizers()
        source = EXAMPLES / "programs/resize.cpp"
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["g++", "-O1", "-Wall", "-Wextra", "-Werror", "-o", f"{folder}/resize", source,
                            *self.flags_of("kestrine-desktop")], check=True)
            self.assertResizes(f"{folder}/resize", folder)
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "CMakeLists.txt").write_text(
                "cmake_minimum_required(VERSION 3.25)\nproject(consumer CXX)\n"
                "find_package(kestrine 0.1 REQUIRED COMPONENTS desktop)\n"
                f"add_executable(resize {source})\ntarget_link_libraries(resize kestrine::desktop)\n")
            self.build_with_cmake(folder)
            self.assertResizes(f"{folder}/resize", folder)

    def test_the_installed_headers_are_those_that_programs_need(self):
        """The headers that CMake names can be included alone, and together they include all others."""
        include = self.prefix / "include/kestrine"
        named = re.search(r"set\(KESTRINE_DESKTOP_HEADERS\n(.*?)^\)", INTERFACE.read_text(encoding="utf-8"), re.DOTALL | re.MULTILINE)
        needed = [self.headers_of(name, include) for name in re.findall(r"^ +(\S+\.h)", named[1], re.MULTILINE)]
        self.assertEqual(set().union(*needed), {path.relative_to(include).as_posix() for path in include.rglob("*.h")})

    def headers_of(self, name, include):
        """The headers below `include` that this one consists of, as the compiler says it."""
        flags = ["-std=c++20", "-Wall", "-Wextra", "-Werror", "-x", "c++", "-fsyntax-only", "-H"]
        done = subprocess.run(["g++", *flags, f"-I{include}", "-"], input=f'#include "{name}"\n', check=False, capture_output=True,
                              text=True)
        self.assertEqual(done.returncode, 0, done.stderr)
        return set(re.findall(rf"^\.+ {re.escape(str(include))}/(\S+)$", done.stderr, re.MULTILINE))

    def test_an_unknown_component_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "CMakeLists.txt").write_text(
                "cmake_minimum_required(VERSION 3.25)\nproject(consumer CXX)\nfind_package(kestrine REQUIRED COMPONENTS desk)\n")
            done = subprocess.run(["cmake", "-S", folder, "-B", folder, f"-DCMAKE_PREFIX_PATH={self.prefix}"], check=False,
                                  capture_output=True, text=True)
            self.assertNotEqual(done.returncode, 0)
            self.assertIn('kestrine has no component "desk"', done.stderr)

    def flags_of(self, module):
        done = subprocess.run(["pkg-config", "--cflags", "--libs", module], check=True, capture_output=True, text=True,
                              env={**os.environ, "PKG_CONFIG_PATH": str(self.library().parent / "pkgconfig")})
        return done.stdout.split()

    def build_with_cmake(self, folder):
        for command in (["-S", folder, "-B", folder, f"-DCMAKE_PREFIX_PATH={self.prefix}"], ["--build", folder]):
            subprocess.run(["cmake", *command], check=True, capture_output=True)

    def assertResizes(self, program, folder):
        """The program says what it should, and its result is that of `kestrine`."""
        places = {name: Path(folder, name) for name in ("program", "tool")}
        for place in places.values():
            place.mkdir()
            shutil.copy(EXAMPLES / "pictures/landscape.jpg", place / "a.jpg")
        home = {"HOME": folder, "PATH": os.environ["PATH"], "PWD": str(places["tool"])}
        subprocess.run([self.prefix / "bin/kestrinectl", "sets", "add", "Web", "--longest", "100", "--format", "jpeg"], env=home,
                       check=True, capture_output=True)
        subprocess.run([self.prefix / "bin/kestrine", "-set", "Web", "a.jpg"], env=home, check=True, capture_output=True)
        done = subprocess.run([program, "Web", "a.jpg"], cwd=places["program"], env=home, check=False, capture_output=True,
                              text=True)
        result = places["program"] / "Web/a.jpg"
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertRegex(done.stdout, rf"\Af/5\.6, 1/250 sec\n{re.escape(str(result))}, [0-9.]+KB\n\Z")
        self.assertEqual(result.read_bytes(), (places["tool"] / "Web/a.jpg").read_bytes())

    def test_python_uses_the_installed_library(self):
        self.skip_with_sanitizers()
        with tempfile.TemporaryDirectory() as folder:
            self.assertRuns(EXAMPLES / "programs/convert.py", f"{folder}/a.webp")

    def test_the_library_finds_its_worker_wherever_both_are(self):
        """Under another prefix than the configured one, in a copy of that installation, and through a link."""
        self.skip_with_sanitizers()
        program = ("import ctypes, sys\nlibrary = ctypes.CDLL(sys.argv[1])\nlibrary.kestrine_error_text.restype = ctypes.c_char_p\n"
                   "print(library.kestrine_use_workers(None), library.kestrine_error_text().decode())\n")
        with tempfile.TemporaryDirectory() as folder:
            moved = Path(folder, "moved")
            place = self.library().relative_to(self.prefix)
            (moved / place).parent.mkdir(parents=True)
            shutil.copy(self.library(), moved / place)
            shutil.copytree(self.prefix / "libexec", moved / "libexec")
            link = Path(folder, "link.so")
            link.symlink_to(moved / place)

            def outcome(library):
                done = subprocess.run([sys.executable, "-c", program, library], check=True, capture_output=True, text=True)
                return done.stdout

            for library in (self.library(), moved / place, link):
                self.assertEqual(outcome(library), "0 \n")
            shutil.rmtree(moved / "libexec")
            self.assertRegex(outcome(link), r"\A2 there is no program /.*/kestrine/kestrine-worker\n\Z")

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
        self.assertCountEqual(os.listdir(self.prefix / "include"), ["kestrine.h", "kestrine"])
        self.assertEqual(os.listdir(self.prefix / "libexec/kestrine"), ["kestrine-worker"])
        self.assertEqual(sorted(os.listdir(self.prefix / "bin")), ["kestrine", "kestrinectl"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
