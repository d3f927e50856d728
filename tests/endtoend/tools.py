"""Shared by the end-to-end tests: a temporary home, the built programs, presets written without our own code."""
import contextlib
import fcntl
import os
import plistlib
import pty
import re
import shutil
import struct
import subprocess
import tempfile
import termios
import unittest
from pathlib import Path

BIN = Path(os.environ["KESTRINE_BIN"])

FIELDS = [("name", "@"), ("replaceFile", "c"), ("resizeType", "i"), ("height", "f"), ("width", "f"), ("ratio", "f"),
          ("maxSize", "f"), ("formatType", "i"), ("compression", "f"), ("attachExifData", "c"),
          ("convertResolution", "c"), ("autoRotate", "c"), ("chooseFolder", "c"), ("highQuality", "c")]
STORED_FIELDS = {0: 11, 1: 11, 2: 12, 3: 13, 4: 14}
DEFAULTS = dict(name="Untitled", replaceFile=0, resizeType=0, height=1200.0, width=1200.0, ratio=100.0, maxSize=1200.0,
                formatType=1, compression=70.0, attachExifData=0, convertResolution=1, autoRotate=0, chooseFolder=0,
                highQuality=1)
JPEG, PNG, TIFF, GIF = 0, 1, 2, 3
HANGING_AFTER = 900  # seconds; far more than any run takes, also under a sanitizer on a busy machine


class Typedstream:
    """A simple writer of typedstreams without shared references: every type string and class is written again."""

    def __init__(self, order="<"):
        self.order = order
        self.bytes = b"\x04\x0b" + (b"streamtyped" if order == "<" else b"typedstream") + self.integer(1000)

    def integer(self, value):
        if -110 <= value <= 127:
            return struct.pack("b", value)
        if -32767 <= value <= 32767:
            return b"\x81" + struct.pack(self.order + "h", value)
        return b"\x82" + struct.pack(self.order + "i", value)

    def shared(self, text):
        raw = text.encode() if isinstance(text, str) else text
        return b"\x84" + self.integer(len(raw)) + raw

    def class_(self, name, version, *parents):
        chain = b"\x84" + self.shared(name) + self.integer(version)
        return chain + (self.class_(*parents) if parents else b"\x85")

    def value(self, code, value):
        if code == "@":
            return self.shared("@") + (b"\x85" if value is None else self.string(value))
        if code == "c":
            return self.shared("c") + struct.pack("b", value)
        if code == "i":
            return self.shared("i") + self.integer(value)
        return self.shared("f") + b"\x83" + struct.pack(self.order + "f", value)

    def string(self, text):
        raw = text.encode() if isinstance(text, str) else text
        return (b"\x84" + self.class_("NSString", 1, "NSObject", 0) + self.shared("+") + self.integer(len(raw)) + raw
                + b"\x86")

    def sets(self, sets, version=4):
        self.bytes += self.shared("@") + b"\x84" + self.class_("NSArray", 0, "NSObject", 0)
        self.bytes += self.shared("i") + self.integer(len(sets))
        for fields in sets:
            values = {**DEFAULTS, **fields}
            self.bytes += self.shared("@") + b"\x84" + self.class_("ResizeSet", version, "NSObject", 0)
            for name, code in FIELDS[:STORED_FIELDS[version]]:
                self.bytes += self.value(code, values[name])
            self.bytes += b"\x86"
        self.bytes += b"\x86"
        return self.bytes

    def selection(self, ranges):
        self.bytes += self.shared("@") + b"\x84" + self.class_("NSIndexSet", 0, "NSObject", 0)
        for number in [len(ranges)] + [n for pair in ranges for n in pair]:
            self.bytes += self.shared("I") + self.integer(number)
        self.bytes += b"\x86"
        return self.bytes


TOTALS = re.compile(r"(?:; |^kestrinectl: )\d+ files? (?:would be )?converted(?:, [^;]*)? in [\d.]+ m?s(?:; 'kestrinectl undo \d+' .*)?$")


def without_totals(text):
    """Messages without totals, which contain a time."""
    lines = [TOTALS.sub("", line) for line in text.splitlines()]
    return "".join(line + "\n" for line in lines if line)


def messages_of(done):
    """The lines on standard error without the program's name and without totals."""
    return [line.removeprefix("kestrinectl: ") for line in without_totals(done.stderr.decode()).splitlines()]


def on_a_terminal(run):
    """What a program shows on a terminal of 80 x 24 characters. `run` starts it and gets the terminal's descriptor."""
    terminal, inside = pty.openpty()
    fcntl.ioctl(inside, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 80, 0, 0))
    try:
        run(inside)
    finally:
        os.close(inside)
    shown = b""
    with os.fdopen(terminal, "rb", buffering=0) as output, contextlib.suppress(OSError):  # an error is the end
        while piece := output.read(65536):
            shown += piece
    return shown


def is_built_with(*sanitizers):
    """Whether the programs were built with one of these sanitizers, such as "asan"."""
    program = (BIN / "kestrine").read_bytes()
    return any(f"__{sanitizer}_init".encode() in program for sanitizer in sanitizers)


def is_sanitized():
    """Whether the programs were built with a sanitizer, which reserves more address space than the limit permits."""
    return is_built_with("asan", "tsan")


class ToolTest(unittest.TestCase):
    """A temporary home with a folder `pictures` as the current folder, and runs of the programs in it."""

    def setUp(self):
        self.home = Path(tempfile.mkdtemp(prefix="kestrine-home-"))
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)
        self.folder = self.home / "pictures"
        self.folder.mkdir()
        self.environment = {"HOME": str(self.home), "PATH": os.environ["PATH"], "PWD": str(self.folder), "LANG": "C",
                            **{name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")}}
        self.preferences = self.home / ".config" / "quov.Kestrine.plist"

    def store(self, *sets, selection=None, version=4, order="<", form=plistlib.FMT_BINARY, **other):
        values = dict(other)
        values["resizeSets"] = Typedstream(order).sets(sets, version)
        if selection is not None:
            values["selectionIndexes"] = Typedstream(order).selection(selection)
        self.write_preferences(plistlib.dumps(values, fmt=form))

    def write_preferences(self, content):
        self.preferences.parent.mkdir(parents=True, exist_ok=True)
        self.preferences.write_bytes(content)

    def program(self, name):
        return BIN / name

    def run_tool(self, *arguments, program="kestrine", **options):
        environment = options.pop("environment", self.environment)
        folder = options.pop("cwd", self.folder)
        return subprocess.run([BIN / program, *arguments], cwd=folder, env=environment, capture_output=True, timeout=HANGING_AFTER,
                              **options)

    def kestrine(self, *arguments, **options):
        """Runs `kestrine`, which must succeed without messages. Returns its output."""
        done = self.run_tool(*arguments, **options)
        self.assertEqual(done.returncode, 0, done)
        self.assertEqual(done.stderr, b"")
        return done.stdout

    def kestrinectl(self, *arguments, **options):
        return self.run_tool(*arguments, program="kestrinectl", **options)

    def run_without_rights(self, *arguments, program="kestrine"):
        """Runs a program as a user who owns the temporary home and has no other rights."""
        command = [BIN / program]
        if os.getuid() == 0:
            command = ["setpriv", "--reuid", "65534", "--clear-groups", *command]
            subprocess.run(["chown", "-R", "65534", self.home], check=True)
            if subprocess.run([*command[:-1], "cat", BIN / program], capture_output=True).returncode != 0:
                self.skipTest("another user cannot run the program from here")
        return subprocess.run([*command, *arguments], cwd=self.folder, env=self.uncounted(), capture_output=True, timeout=HANGING_AFTER)

    def uncounted(self):
        """The environment of programs that cannot write where a build that counts coverage keeps its counts, or that are
        killed, perhaps while they write them."""
        return {**self.environment, "GCOV_PREFIX": str(self.home)}

    def convert(self, fields, *files):
        """Applies one set named S to files of the current folder. Returns the sorted paths of the results."""
        self.store({"name": "S", **fields})
        self.kestrine("-set", "S", *files)
        return sorted((self.folder / "S").iterdir()) if (self.folder / "S").exists() else []

    def only(self, paths):
        self.assertEqual(len(paths), 1, paths)
        return paths[0]

    def names(self, folder="."):
        return sorted(os.listdir(os.fsencode(self.folder / folder)))


def set_tags(path, tags, *options):
    """Writes tags, named as exiftool() names them, into a file."""
    words = [f"-{name}={value}" for name, value in tags.items()]
    subprocess.run(["exiftool", "-q", "-n", "-overwrite_original", *options, *words, str(path)], check=True)


def exiftool(path, *options):
    """A dictionary of tags and values. Values are unformatted; warnings are also tags."""
    done = subprocess.run(["exiftool", "-a", "-n", "-s", "-G1", *options, str(path)], capture_output=True, text=True)
    tags = {}
    for line in done.stdout.splitlines():
        group, _, rest = line.partition("]")
        tag, _, value = rest.partition(":")
        tags.setdefault(group.strip("[").strip() + ":" + tag.strip(), value.strip())
    return tags


def main():
    # Every test is named, so that scripts/test can report skips. Pillow keeps files open until its objects are
    # destroyed, which is acceptable here.
    unittest.main(verbosity=2, warnings="ignore")
