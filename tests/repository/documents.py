#!/usr/bin/python3
"""The commands that README.md, CONTRIBUTING.md, docs/ and the manual pages show. Run as a program, prints those of
README.md that build: the ones that commands-not-run.txt leaves to `scripts/check documents`."""
import fnmatch
import re
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent.parent
MARKDOWN = [ROOT / "README.md", ROOT / "CONTRIBUTING.md", *sorted((ROOT / "docs").glob("*.md"))]
MANUAL = sorted((ROOT / "share/man").glob("man*/*"))
COMMAND = re.compile(r"^(\S*/)?(kestrine|kestrinectl|cmake|ctest|scripts/[\w-]+|bench/[\w-]+)(\s|$)")


def blocks_of(document):
    text = document.read_text(encoding="utf-8")
    if document.suffix == ".md":
        return re.findall(r"^```\w*\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)
    return [block.replace("\\-", "-").replace("\\e", "\\")
            for block in re.findall(r"^\.EX\n(.*?)^\.EE$", text, re.MULTILINE | re.DOTALL)]


def transcript_of(block):
    """Pairs of a command and the output shown after it; empty if the block is not a transcript."""
    steps = re.split(r"^\$ ", block, flags=re.MULTILINE)[1:]
    return [tuple(step.partition("\n")[::2]) for step in steps]


def other_commands_of(block):
    """Commands of a block that is not a transcript, without the comments after them."""
    if transcript_of(block):
        return []
    return [re.sub(r"\s+#.*", "", line.strip()) for line in block.splitlines() if COMMAND.match(line.strip())]


def not_run():
    """Patterns of commands that are shown and not run, with the reasons."""
    lines = (HERE / "commands-not-run.txt").read_text(encoding="utf-8").splitlines()
    return dict(line.split(" -- ") for line in lines if line and not line.startswith("#"))


if __name__ == "__main__":
    building = [pattern for pattern, reason in not_run().items() if reason == "scripts/check documents runs it"]
    for shown in (command for block in blocks_of(ROOT / "README.md") for command in other_commands_of(block)):
        if any(fnmatch.fnmatchcase(shown, pattern) for pattern in building):
            print(shown)
