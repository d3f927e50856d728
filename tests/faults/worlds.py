"""The worlds in which the tools run: a home, pictures, presets, and perhaps a second file system."""
import io
import os
import plistlib
import shutil
import subprocess
import sys
from pathlib import Path
from urllib.parse import unquote_to_bytes

sys.path.insert(0, str(Path(__file__).parent.parent / "endtoend"))

import pictures
from tools import BIN, JPEG, PNG, Typedstream


def png(samples):
    buffer = io.BytesIO()
    pictures.image(samples).save(buffer, "PNG")
    return buffer.getvalue()


A_JPEG = pictures.jpeg(pictures.photo(64, 48, seed=1))
B_PNG = png(pictures.photo(48, 64, seed=2))
BLOCKED_TRASH = "volume/.Trash-" + str(os.getuid())

SETS = [{"name": "R", "replaceFile": 1, "formatType": JPEG, "resizeType": 2, "maxSize": 30.0},
        {"name": "W", "formatType": JPEG, "resizeType": 2, "maxSize": 30.0},
        {"name": "X", "formatType": PNG, "resizeType": 2, "maxSize": 20.0}]
PREFERENCES = plistlib.dumps({"resizeSets": Typedstream().sets(SETS),
                              "selectionIndexes": Typedstream().selection([(1, 2)])}, fmt=plistlib.FMT_BINARY)
PREFERENCES_PATH = "home/.config/quov.Kestrine.plist"


# What another program does to the first picture or the folder of the results while a tool is at work.
NEWCOMER = pictures.jpeg(pictures.photo(40, 40, seed=3))
ACTIONS = {
    "shrinks": "[ -e a.jpg ] && truncate -s 300 a.jpg",
    "grows": "[ -e a.jpg ] && echo more >>a.jpg",
    "vanishes": "rm -f a.jpg",
    "is replaced": "[ -e newcomer.jpg ] && mv -f newcomer.jpg a.jpg",
    "folder becomes a link": "[ ! -e W ] || mv W W.before; ln -s elsewhere W",
}


class Scenario:
    """A command in a world. `folder` holds the pictures and is the current folder. `earlier` is a command that has run
    before, without faults."""

    def __init__(self, name, program, *arguments, folder="home/pictures", replaces=False, more=None, blocked=False, earlier=None):
        self.name = name
        self.command = [str(BIN / program), *arguments]
        self.earlier = earlier
        self.undoes = arguments[0] == "undo"
        self.can_be_undone = replaces and program == "kestrinectl"  # by a further command
        self.can_be_resumed = "--update" in arguments or arguments[0] == "run"  # by the same command
        self.is_quiet = program == "kestrine"
        self.changes_presets = arguments[0] == "sets"
        self.makes_pictures = arguments[0] not in ("desktop", "undo")
        self.page = f"{folder}/page.html" if arguments[0] == "compare" else None
        self.folder = folder
        self.notes = ("home/.local/state/kestrine/", f"{folder}/plan")  # what the tool writes for later runs
        self.replaces = replaces
        self.files = {f"{folder}/a.jpg": A_JPEG, f"{folder}/b.png": B_PNG, f"{folder}/keep.txt": b"keep me",
                      PREFERENCES_PATH: PREFERENCES, **(more or {})}
        if blocked:
            self.files[BLOCKED_TRASH] = b"in the way"
        self.needs_volume = folder.startswith("volume")


def scenarios():
    """All of them, the important ones first."""
    pictures_ = ["a.jpg", "b.png"]
    taken = {"home/pictures/W/a.jpg": b"an older result"}
    album = {"volume/pictures/album/one.jpg": A_JPEG, "volume/pictures/album/sub/two.png": B_PNG}
    away = "volume/pictures"
    replacing = ("convert", "--set", "R", "-j1", *pictures_)
    replaced = "kestrinectl " + " ".join(replacing)
    planned = "kestrinectl plan --set W a.jpg b.png >plan"
    return [
        Scenario("replace", "kestrine", "-set", "R", *pictures_, replaces=True),
        Scenario("folder", "kestrine", "-set", "W", *pictures_, more=taken),
        Scenario("replace-by-copy", "kestrine", "-set", "R", *pictures_, folder=away, replaces=True, blocked=True),
        Scenario("replace-on-volume", "kestrine", "-set", "R", *pictures_, folder=away, replaces=True),
        Scenario("several-sets", "kestrine", *pictures_),
        Scenario("album-by-copy", "kestrine", "-set", "R", "album", folder=away, replaces=True, blocked=True, more=album),
        Scenario("convert", "kestrinectl", "convert", "--set", "W", "-j1", *pictures_, more=taken),
        Scenario("convert-update", "kestrinectl", "convert", "--set", "W", "--update", "-j1", *pictures_, more=taken),
        Scenario("convert-replace", "kestrinectl", *replacing, replaces=True),
        Scenario("convert-replace-by-copy", "kestrinectl", *replacing, folder=away, replaces=True, blocked=True),
        Scenario("undo", "kestrinectl", "undo", replaces=True, earlier=replaced),
        Scenario("undo-by-copy", "kestrinectl", "undo", folder=away, replaces=True, blocked=True, earlier=replaced),
        Scenario("run", "kestrinectl", "run", "-j1", "plan", more=taken, earlier=planned),
        Scenario("convert-together", "kestrinectl", "convert", "--set", "W", "-j2", *pictures_),
        Scenario("compare", "kestrinectl", "compare", "--quality", "40,80", "-o", "page.html", "a.jpg"),
        Scenario("sets-add", "kestrinectl", "sets", "add", "New", "--longest", "100"),
        Scenario("sets-edit", "kestrinectl", "sets", "edit", "W", "--longest", "100"),
        Scenario("sets-remove", "kestrinectl", "sets", "remove", "W"),
        Scenario("sets-select", "kestrinectl", "sets", "select", "R"),
        Scenario("desktop-install", "kestrinectl", "desktop", "install", "--all"),
    ]


class World:
    """A folder with the files of a scenario. It can be built again and again."""

    def __init__(self, base):
        self.base = Path(base)
        self.given = {} # the contents of all files before the command, by their path relative to the base

    def mount(self):
        """Makes the world a mount of its own, so that its trashes are in it, and mounts a second file system in it.
        Returns whether the system permits it; needs a mount namespace of its own."""
        commands = [["mount", "--bind", self.base, self.base], ["mkdir", self.base / "volume"],
                    ["mount", "-t", "tmpfs", "-o", "size=16m", "tmpfs", self.base / "volume"]]
        return all(subprocess.run(command, capture_output=True).returncode == 0 for command in commands)

    def remove(self):
        for mounted in (self.base / "volume", self.base):
            subprocess.run(["umount", mounted], capture_output=True)
        for folder in (self.base, f"{self.base}.counts"):
            shutil.rmtree(folder, ignore_errors=True)

    def build(self, scenario):
        for top in (self.base, self.base / "volume"):
            for entry in os.scandir(top) if top.exists() else []:
                if entry.is_dir(follow_symlinks=False) and entry.name != "volume":
                    shutil.rmtree(entry.path)
                elif not entry.is_dir(follow_symlinks=False):
                    os.unlink(entry.path)
        for path, content in scenario.files.items():
            (self.base / path).parent.mkdir(parents=True, exist_ok=True)
            (self.base / path).write_bytes(content)
        self.given = dict(scenario.files)
        if scenario.earlier:
            self.run(scenario, ["sh", "-ec", f'PATH="{BIN}:$PATH"\n{scenario.earlier}'])
            self.given = self.snapshot()

    def run(self, scenario, command):
        """Runs a command without faults. Returns its messages."""
        done = subprocess.run(command, cwd=self.base / scenario.folder, env=self.environment(scenario), capture_output=True)
        return done.stderr

    def undo(self, scenario):
        return self.run(scenario, [str(BIN / "kestrinectl"), "undo"])

    def environment(self, scenario):
        """A build that counts coverage keeps the counts of these runs elsewhere: a fault while they are written would spoil
        those of all runs."""
        return {"HOME": str(self.base / "home"), "PWD": str(self.base / scenario.folder), "LANG": "C",
                "PATH": os.environ["PATH"], "GCOV_PREFIX": f"{self.base}.counts"}

    def snapshot(self):
        """The contents of all files, by their path relative to the base. The target of a link counts as content."""
        found = {}
        for folder, names, files in os.walk(self.base):
            for name in files + [name for name in names if os.path.islink(os.path.join(folder, name))]:
                full = os.path.join(folder, name)
                content = os.fsencode("-> " + os.readlink(full)) if os.path.islink(full) else Path(full).read_bytes()
                found[os.path.relpath(full, self.base)] = content
        return found

    def trashes(self):
        """The folders of the trashes, and the folder that relative paths in their records start from."""
        own = f".Trash-{os.getuid()}"
        return [("home/.local/share/Trash", None), (own, self.base), (f"volume/{own}", self.base / "volume")]


def recorded_path(world, record, top):
    """The original path in a record of the trash, relative to the world; None if the record is broken."""
    lines = record.split(b"\n")
    if len(lines) != 4 or lines[0] != b"[Trash Info]" or lines[3] != b"":
        return None
    if not lines[1].startswith(b"Path=") or not lines[2].startswith(b"DeletionDate="):
        return None
    path = os.fsdecode(unquote_to_bytes(lines[1][5:]))
    return os.path.relpath(os.path.join(top, path) if top else path, world.base)
