"""Power losses: the calls of a real run are recorded, and every state of the disk that a power loss may leave after
each call is made from them. No original may be lost in any of these states.

What a power loss may leave: of each folder, the state after any of its changes since it was last synced; a rename is
in both of its folders or in neither; a file has its content only if it was synced after it was written."""
import itertools
import os
import tempfile
import unittest
from pathlib import Path

import campaign
from tools import is_sanitized, main
from worlds import World, scenarios

OPEN_CREATE, OPEN_EXCLUSIVE, OPEN_TEMPORARY = 0o100, 0o200, 0o20000000
AT_FDCWD = 0xffffff9c
NUMBERS = dict(write=1, open=2, close=3, pwrite64=18, fcntl=72, fsync=74, rename=82, mkdir=83, unlink=87, openat=257,
               mkdirat=258, unlinkat=263, renameat=264, linkat=265, renameat2=316, sendfile=40)
NAMES = {number: name for name, number in NUMBERS.items()}


class Disk:
    """The changes that a trace makes, folder by folder. A file is a number; the files of the beginning have their path."""

    def __init__(self, existing):
        self.changes = {}          # folder -> [(time, name, file or None, number of the rename or None)]
        self.synced = {}           # folder -> [(time, number of changes that were synced)]
        self.content_synced = {}   # file -> [(time, whether its content is on the disk)]
        self.files = 0
        self.now = {path: path for path in existing}

    def new_file(self):
        self.files += 1
        return self.files

    def change(self, time, path, file, rename=None):
        folder, name = os.path.split(path)
        self.changes.setdefault(folder, []).append((time, name, file, rename))
        if file is None:
            self.now.pop(path, None)
        else:
            self.now[path] = file

    def content(self, time, file, is_synced):
        self.content_synced.setdefault(file, []).append((time, is_synced))

    def sync_folder(self, time, folder):
        self.synced.setdefault(folder, []).append((time, len(self.changes.get(folder, []))))

    def whole_at(self, file, time):
        states = [is_synced for when, is_synced in self.content_synced.get(file, []) if when <= time]
        return isinstance(file, str) or (bool(states) and states[-1])

    def states_at(self, time):
        """Every state that a power loss after the call at `time` may leave, as {path: file}."""
        folders = sorted(self.changes)
        ranges = []
        for folder in folders:
            made = sum(1 for change in self.changes[folder] if change[0] <= time)
            forced = max([count for when, count in self.synced.get(folder, []) if when <= time], default=0)
            ranges.append(range(forced, made + 1))
        for counts in itertools.product(*ranges):
            kept = {folder: self.changes[folder][:count] for folder, count in zip(folders, counts)}
            renames = [rename for changes in kept.values() for *_, rename in changes if rename is not None]
            if all(renames.count(rename) == 2 for rename in renames):
                yield kept


class Trace:
    """Follows the descriptors of a recorded run, and passes every change to a disk."""

    def __init__(self, calls, base, folder, existing):
        self.disk = Disk(existing)
        self.base, self.folder = str(base), str(base / folder)
        self.open = {}  # descriptor -> path of a folder, or the number of a file
        self.renames = 0
        self.end = 0
        for call in calls:
            name = NAMES.get(call.number)
            if call.process == 0 and name and call.result >= 0:
                self.end += 1
                getattr(self, name)(self.end, call)

    def path(self, folder, name):
        start = self.folder if folder & 0xffffffff == AT_FDCWD else self.open.get(folder, self.folder)
        return os.path.normpath(os.path.join(start, "" if name == "%" else name)) if isinstance(start, str) else ""

    def opened(self, time, call, path, flags):
        if flags & OPEN_TEMPORARY == OPEN_TEMPORARY:
            self.open[call.result] = self.disk.new_file()
        elif flags & OPEN_CREATE and flags & OPEN_EXCLUSIVE:
            file = self.disk.new_file()
            self.open[call.result] = file
            self.disk.change(time, path, file)
        else:
            known = self.disk.now.get(path)
            self.open[call.result] = known if isinstance(known, int) else path

    def openat(self, time, call):
        self.opened(time, call, self.path(call.arguments[0], call.paths[0]), call.arguments[2])

    def write(self, time, call):
        file = self.open.get(call.arguments[0])
        if isinstance(file, int):
            self.disk.content(time, file, False)

    pwrite64 = write

    def fcntl(self, time, call):
        if call.arguments[1] not in (1, 2, 3, 4):  # a duplicate
            self.open[call.result] = self.open.get(call.arguments[0])

    def close(self, time, call):
        self.open.pop(call.arguments[0], None)

    def fsync(self, time, call):
        what = self.open.get(call.arguments[0])
        if isinstance(what, int):
            self.disk.content(time, what, True)
        elif what:
            self.disk.sync_folder(time, what)

    def mkdir(self, time, call):
        self.disk.change(time, self.path(AT_FDCWD, call.paths[0]), "folder")

    def mkdirat(self, time, call):
        self.disk.change(time, self.path(call.arguments[0], call.paths[0]), "folder")

    def unlink(self, time, call):
        self.disk.change(time, self.path(AT_FDCWD, call.paths[0]), None)

    def unlinkat(self, time, call):
        self.disk.change(time, self.path(call.arguments[0], call.paths[0]), None)

    def renameat(self, time, call):
        source, target = (self.path(call.arguments[i], call.paths[i // 2]) for i in (0, 2))
        file = self.disk.now[source]
        self.renames += 1
        self.disk.change(time, source, None, self.renames)
        self.disk.change(time, target, file, self.renames)

    renameat2 = renameat

    def linkat(self, time, call):
        source = call.paths[0]
        is_nameless = source.startswith("/proc/self/fd/")
        file = self.open[int(source.rsplit("/", 1)[1])] if is_nameless else self.disk.now[self.path(call.arguments[0], source)]
        self.disk.change(time, self.path(call.arguments[2], call.paths[1]), file)


def entries(disk, kept, existing):
    """What can be reached in a state: {path: file}."""
    found = {path: path for path in existing}
    for folder, changes in kept.items():
        for _, name, file, _ in changes:
            found.pop(f"{folder}/{name}", None)
            if file is not None:
                found[f"{folder}/{name}"] = file
    made = {f"{folder}/{name}" for folder, changes in disk.changes.items() for _, name, file, _ in changes
            if file == "folder"}
    unreachable = made - set(found)
    return {path: file for path, file in found.items()
            if not any(path.startswith(folder + "/") for folder in unreachable)}


def losses(trace, existing, originals):
    """Sentences about states in which an original is lost, or a name shows what is not on the disk."""
    disk = trace.disk
    for time in range(trace.end + 1):
        for kept in disk.states_at(time):
            found = entries(disk, kept, existing)
            for original in originals:
                name = os.path.basename(original)
                in_place = found.get(original) == original
                in_trash = any(path.endswith("/files/" + name) and (file == original or disk.whole_at(file, time))
                               and disk.whole_at(found.get(path.replace("/files/", "/info/") + ".trashinfo"), time)
                               for path, file in found.items() if "/files/" in path)
                aside = any(file == original and path.endswith(".kestrine-tmp") for path, file in found.items())
                if not in_place and not in_trash:
                    yield f"after call {time}, {name} may be lost{', though it has a hidden name' if aside else ''}"
            for path, file in found.items():
                if isinstance(file, int) and not disk.whole_at(file, time) and not path.endswith(".kestrine-tmp") and (
                        os.path.dirname(path) == trace.folder):
                    yield f"after call {time}, {os.path.basename(path)} may show what is not on the disk"


class PowerLoss(unittest.TestCase):
    def setUp(self):
        if is_sanitized():
            self.skipTest("sanitizers do not work in a traced process")
        pid = os.fork()  # mounts of its own belong to a process of its own
        if pid != 0:
            self.status = os.waitpid(pid, 0)[1]
            return
        self.status = None

    def check(self, name):
        """Runs in a process of its own; the parent takes over its result."""
        if self.status is not None:
            self.assertEqual(self.status, 0, "see above")
            return
        problems = ["an exception"]
        try:
            problems = self.problems_of(name)
        finally:
            if campaign.Worker.world is not None:
                campaign.Worker.world.remove()
            print("\n".join(sorted(set(problems))[:5]), flush=True)
            os._exit(1 if problems else 0)

    @staticmethod
    def problems_of(name):
        campaign.Worker.set_up(tempfile.gettempdir())
        scenario = next(one for one in scenarios() if one.name == name)
        if not campaign.Worker.has_mounts:
            print("left out, since no mounts are permitted here:", name)
            return []
        runner = campaign.Worker.runner(name)
        base = campaign.Worker.world.base
        existing = {str(base / path) for path in scenario.files}
        trace = Trace(runner.calls, base, scenario.folder, existing)
        originals = [str(base / scenario.folder / picture) for picture in ("a.jpg", "b.png")]
        problems = list(losses(trace, existing, originals))
        if not any(change[2] is None for changes in trace.disk.changes.values() for change in changes):
            problems.append("the trace shows no original that was replaced")
        return problems

    def test_an_original_that_is_moved_to_the_trash_is_never_lost(self):
        self.check("replace")

    def test_an_original_that_is_copied_to_the_trash_is_never_lost(self):
        self.check("replace-by-copy")

    def test_an_original_in_the_trash_of_its_volume_is_never_lost(self):
        self.check("replace-on-volume")

    def test_with_a_result_that_is_written_first_nothing_is_lost(self):
        self.check("convert-replace")

    def test_with_a_result_that_is_written_first_a_copied_original_is_not_lost(self):
        self.check("convert-replace-by-copy")


if __name__ == "__main__":
    main()
