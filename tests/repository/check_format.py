#!/usr/bin/python3
"""Complains of files that are not formatted: C++ by clang-format 14 and .clang-format, other text by its line ends.
The last line counts the files. Usage: check_format.py [--fix] ROOT (--fix: corrects them)"""
import os
import subprocess
import sys
from pathlib import Path

CLANG_FORMAT = "clang-format-14"
CPP = {".cpp", ".h"}
TEXT = {".py", ".md", ".txt", ".cmake", ".json", ".mjs", ".1", ".5", ".fish"}
# Bytes of foreign programs: what they are is the point.
FOREIGN = ("fuzz/corpus/",)
OUTPUT = ("build", ".git", "__pycache__")


def files_of(root):
    for folder, folders, names in os.walk(root):
        folders[:] = sorted(f for f in folders if not f.startswith(OUTPUT))
        for name in sorted(names):
            path = Path(folder, name)
            if not path.relative_to(root).as_posix().startswith(FOREIGN) and not path.is_symlink():
                yield path


def is_text(path):
    if path.suffix in TEXT:
        return True
    with open(path, "rb") as file:
        return path.suffix == "" and file.read(2) == b"#!"


def tidied(text):
    """The text without spaces at the ends of lines, and with one line end at its end."""
    return "\n".join(line.rstrip(" \t\r") for line in text.split("\n")).rstrip("\n") + "\n"


def badly_formatted(sources):
    """The C++ files that clang-format would change."""
    done = subprocess.run([CLANG_FORMAT, "--style=file", "--dry-run", *sources], capture_output=True, text=True, check=True)
    changed = {line.split(":", 1)[0] for line in done.stderr.splitlines() if "[-Wclang-format-violations]" in line}
    return [source for source in sources if str(source) in changed]


def main(root, fix):
    files = list(files_of(root))
    sources = [file for file in files if file.suffix in CPP]
    texts = [file for file in files if is_text(file)]
    bad_sources = badly_formatted(sources)
    bad_texts = [file for file in texts if tidied(file.read_text(encoding="utf-8")) != file.read_text(encoding="utf-8")]
    if fix and bad_sources:
        subprocess.run([CLANG_FORMAT, "--style=file", "-i", *bad_sources], check=True)
    for file in bad_texts if fix else []:
        file.write_text(tidied(file.read_text(encoding="utf-8")), encoding="utf-8")
    bad = bad_sources + bad_texts
    for file in bad:
        print(f"{file.relative_to(root)}: {'corrected' if fix else 'is not formatted'}")
    if bad and not fix:
        print("'scripts/check format --fix' formats all files")
    print(f"{len(sources) + len(texts)} files, {len(bad)} {'corrected' if fix else 'not formatted'}")
    return 0 if fix or not bad else 1


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[-1]).resolve(), "--fix" in sys.argv[1:-1]))
