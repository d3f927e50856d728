"""What lies in the top folder of the repository. Results of a program that was tried there must not be committed."""
import subprocess
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
TOP = {".ci", ".clang-format", ".clang-tidy", ".editorconfig", ".gitignore", "CHANGELOG.md", "CMakeLists.txt",
       "CMakePresets.json", "CONTRIBUTING.md", "README.md", "SECURITY.md", "bench", "cmake", "debian", "docs", "examples",
       "fuzz", "scripts", "share", "src", "tests"}


def entries():
    """The committed entries of the top folder; all entries except `build` if there is no Git history."""
    if not (ROOT / ".git").exists():
        return {path.name for path in ROOT.iterdir()} - {"build"}
    listed = subprocess.run(["git", "-c", f"safe.directory={ROOT}", "-C", ROOT, "ls-tree", "--name-only", "HEAD"],
                            capture_output=True, check=True)
    return set(listed.stdout.decode().splitlines())


class Files(unittest.TestCase):
    def test_the_top_folder_holds_nothing_else(self):
        self.assertEqual(entries() - TOP, set())


if __name__ == "__main__":
    unittest.main()
