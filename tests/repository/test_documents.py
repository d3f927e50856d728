"""Every command that the documents show runs and gives the shown output, or is listed with a reason.

A block (between ``` in Markdown, .EX and .EE in a manual page) with lines "$ COMMAND" is a transcript: its commands run in
order, in the folder ~/pictures of one home per document, which is shown as /home/you. The lines that follow a command
are all that it prints, with SIZE and TIME in totals. In other blocks, what begins like a command must be listed in commands-not-run.txt."""
import fnmatch
import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

from documents import MANUAL, MARKDOWN, ROOT, blocks_of, not_run, other_commands_of, transcript_of

BIN = os.environ["KESTRINE_BIN"]
PICTURES = ROOT / "examples/pictures"


class ShownCommands(unittest.TestCase):
    def run_in(self, home, command):
        """What a command prints in the folder ~/pictures, as a user would see it on a terminal."""
        environment = {"HOME": str(home), "PATH": f"{BIN}:/usr/bin:/bin", "LANG": "C.UTF-8", "TZ": "UTC"}
        script = 'cd ~/pictures; ls() { command ls -C "$@"; }\n' + command
        done = subprocess.run(["bash", "-c", script], env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, timeout=60, check=False)
        return done.stdout.replace(str(home), "/home/you")

    def without_figures(self, output):
        """Totals contain times, and sizes that another version of a library changes."""
        output = re.sub(r"in [\d.]+ m?s$", "in TIME", output, flags=re.MULTILINE)
        return re.sub(r"-> [\w.]+ [kM]?B in TIME", "-> SIZE in TIME", output)

    def home(self):
        """A home with pictures in ~/pictures and ~/Pictures/Journey."""
        home = Path(tempfile.mkdtemp(prefix="kestrine-documents-"))
        self.addCleanup(shutil.rmtree, home)
        shutil.copytree(PICTURES, home / "pictures")
        for number, name in enumerate(("landscape.jpg", "PORTRAIT.JPG"), 1):
            shutil.copy(PICTURES / name, home / f"pictures/IMG_{number}.JPG")
        journey = home / "Pictures/Journey"
        journey.mkdir(parents=True)
        for name in ("landscape.jpg", "badge.png"):
            shutil.copy(PICTURES / name, journey)
        return home

    def test_transcripts_give_the_shown_output(self):
        for document in MARKDOWN + MANUAL:
            home = self.home()
            for command, output in (step for block in blocks_of(document) for step in transcript_of(block)):
                with self.subTest(document=document.name, command=command):
                    self.assertEqual(self.without_figures(self.run_in(home, command)), output)

    def test_commands_outside_transcripts_are_listed_with_a_reason(self):
        known = not_run()
        shown = [(document.name, command) for document in MARKDOWN + MANUAL for block in blocks_of(document)
                 for command in other_commands_of(block)]
        for name, command in shown:
            self.assertTrue(any(fnmatch.fnmatchcase(command, pattern) for pattern in known), f"{name}: {command}")
        for pattern in known:
            self.assertTrue(fnmatch.filter([command for _, command in shown], pattern), f"shown nowhere: {pattern}")

    def help_of(self, words):
        return subprocess.run([f"{BIN}/kestrinectl", *words, "--help"], capture_output=True, text=True, check=True).stdout

    def test_commands_within_sentences_exist_with_their_options(self):
        for document in MARKDOWN:
            for _, command in re.findall(r"([`'])(kestrinectl [^`'\n]*)\1", document.read_text(encoding="utf-8")):
                words = re.match(r"kestrinectl ((?:sets )?[a-z]+)?", command).group(1)
                with self.subTest(document=document.name, command=command):
                    told = self.help_of(words.split() if words else [])
                    self.assertRegex(told, rf"Usage: \S*kestrinectl {words or ''}")
                    for option in re.findall(r"(?<=\s)--?[a-z][\w-]*", command):
                        self.assertRegex(told, rf"(?<![\w-]){option}(?![\w-])")


class Formats(unittest.TestCase):
    def test_everything_that_is_read_is_named_where_users_look(self):
        names = set()
        for decoder in sorted((ROOT / "src/platform/imageio").glob("*/Decoder.cpp")):
            codecs = re.findall(r'^const ImageCodec \w+(?: = )?\{(?:\.name = )?"([^"]+)"', decoder.read_text(), re.MULTILINE)
            self.assertNotEqual(codecs, [], decoder)
            names.update(codecs)
        for document in ("README.md", "share/man/man1/kestrine.1", "debian/control"):
            text = " ".join((ROOT / document).read_text().split())
            for name in sorted(names):
                with self.subTest(document=document, format=name):
                    self.assertTrue(name in text)


if __name__ == "__main__":
    unittest.main(verbosity=2)
