"""cmake/KestrineHardening.cmake gives a program every protection, and check_hardening.py notices each missing one."""
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
CHECK = ROOT / "tests/repository/check_hardening.py"
PROJECT = f"""cmake_minimum_required(VERSION 3.25)
project(small LANGUAGES CXX)
include({ROOT}/cmake/KestrineHardening.cmake)
add_library(library STATIC library.cpp)
add_executable(small main.cpp)
target_link_libraries(library PUBLIC kestrine_hardening)
target_link_libraries(small PRIVATE library)
"""
LIBRARY = """#include <cstring>
#include <unistd.h>
namespace kestrine {
void fill(char* into) { std::memset(into, 1, 3 * 4096); }
int copied(const char* text) { char copy[8]; std::strcpy(copy, text); return copy[0]; }
int large(void (*use)(char*)) { char large[3 * 4096]; use(large); return large[5]; }
}
"""
MAIN = """namespace kestrine { void fill(char*); int copied(const char*); int large(void (*)(char*)); }
int main(int, char** arguments) { return kestrine::copied(arguments[0]) + kestrine::large(kestrine::fill); }
"""


class Hardening(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="kestrine-hardening-")
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        (self.root / "CMakeLists.txt").write_text(PROJECT)
        (self.root / "library.cpp").write_text(LIBRARY)
        (self.root / "main.cpp").write_text(MAIN)

    def findings_with(self, addition=""):
        """The exit status and the output of the check, for the program of the project with an addition."""
        (self.root / "CMakeLists.txt").write_text(PROJECT + addition)
        build = self.root / "build"
        for command in (["cmake", "-S", self.root, "-B", build, "-DCMAKE_BUILD_TYPE=Release"], ["cmake", "--build", build]):
            done = subprocess.run(command, capture_output=True, text=True, check=False)
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        done = subprocess.run([CHECK, build / "small"], capture_output=True, text=True, check=False)
        self.assertEqual(done.stderr, "")
        return done.returncode, done.stdout

    def test_the_flags_of_a_release_give_every_protection(self):
        self.assertEqual(self.findings_with(), (0, "no protection is missing\n"))

    def test_each_missing_protection_is_reported(self):
        compiler = "target_compile_options(kestrine_hardening INTERFACE {})\n"
        linker = "target_link_options(kestrine_hardening INTERFACE {})\n"
        for addition, finding in (
            (compiler.format("-fno-stack-protector"), "has no function with a stack protector"),
            (compiler.format("-fno-stack-clash-protection"), "has 1 functions that skip pages of the stack"),
            (compiler.format("-fcf-protection=none"), "has 2 functions without endbr64"),
            (compiler.format("-D_FORTIFY_SOURCE=0"), "checks sizes (FORTIFY_SOURCE)"),
            (linker.format("-no-pie"), "is not position-independent"),
            (linker.format("LINKER:-z,norelro"), "no RELRO"),
            (linker.format("LINKER:-z,lazy"), "no BIND_NOW"),
            (linker.format("LINKER:-z,execstack"), "has an executable stack"),
            (linker.format("-s"), "has no names of functions"),
        ):
            with self.subTest(addition=addition):
                status, output = self.findings_with(addition)
                self.assertEqual(status, 1)
                self.assertIn(finding, output)


if __name__ == "__main__":
    unittest.main(verbosity=2)
