"""What `cmake --install` puts in place."""
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

SHARE = Path(__file__).resolve().parent.parent.parent / "share"


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

    def test_nothing_else_is_installed(self):
        self.assertEqual(sorted(os.listdir(self.prefix)), ["bin", "libexec", "share"])
        self.assertEqual(os.listdir(self.prefix / "libexec/kestrine"), ["kestrine-worker"])
        self.assertEqual(sorted(os.listdir(self.prefix / "bin")), ["kestrine", "kestrinectl"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
