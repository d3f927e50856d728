"""What must hold after every run, whatever failed. Each check gives sentences about what does not hold."""
import re

from worlds import PREFERENCES_PATH, recorded_path

TEMPORARY = re.compile(r"\.[0-9a-f]{16}\.kestrine-tmp$")


class Outcome:
    """How a run ended. `disturbed` names what else was disturbed: "stdout", "stderr", "preferences", "cleaning"."""

    def __init__(self, status, stdout, stderr, killed):
        self.status, self.stdout, self.stderr, self.killed = status, stdout, stderr, killed
        self.disturbed = set()

    @property
    def may_leave_litter(self):
        return self.killed or "cleaning" in self.disturbed


class Trash:
    """What the trashes of a world hold: for each original path the contents that could be restored there."""

    def __init__(self, world, after):
        self.paths = set()
        self.restorable = []  # (original path, path in the trash)
        self.broken = []
        for trash, top in world.trashes():
            files, info = trash + "/files/", trash + "/info/"
            items = {path[len(files):].split("/")[0] for path in after if path.startswith(files)}
            records = {path[len(info):]: after[path] for path in after if path.startswith(info)}
            for name in items:
                original = recorded_path(world, records.get(name + ".trashinfo", b""), top)
                if original is None:
                    self.broken.append(f"{files}{name} is in the trash without a record")
                else:
                    self.restorable.append((original, files + name))
            for name in records:
                if name.removesuffix(".trashinfo") not in items:
                    self.broken.append(f"{info}{name} is the record of nothing")
            self.paths |= {path for path in after if path.startswith((files, info)) or path == trash + "/directorysizes"}

    def has(self, path, content, after):
        """Whether `path` can be restored with this content, by itself or as a part of a folder."""
        return any((path + "/").startswith(original + "/") and after.get(place + path[len(original):]) == content
                   for original, place in self.restorable)


def originals(scenario, trash, after, outcome):
    """Nothing that existed is lost or changed."""
    for path, content in scenario.files.items():
        if path == PREFERENCES_PATH and scenario.changes_presets:
            continue
        if after.get(path) == content:
            continue
        if not scenario.replaces:
            yield f"{path} changed or vanished"
        elif not trash.has(path, content, after):
            yield f"{path} is lost: it is neither in its place nor restorable"


def is_whole_page(content):
    return content.startswith(b"<!DOCTYPE html>") and content.endswith(b"</html>\n")


def new_files(scenario, world, expected, trash, after, outcome):
    """Every new file is a whole result, belongs to the trash, or is left by a process that was killed."""
    results = {content for path, content in expected.items() if path not in scenario.files or scenario.replaces}
    results |= set(world.given.values())
    for path, content in after.items():
        if scenario.files.get(path) == content or path in trash.paths:
            continue
        if path == PREFERENCES_PATH and scenario.changes_presets or path.startswith(scenario.notes):
            continue
        if TEMPORARY.search(path.split("/")[-1]) or ".kestrine-tmp/" in path:
            if not outcome.may_leave_litter:
                yield f"{path} is litter"
        elif path == scenario.page and is_whole_page(content):
            pass # without what could not be made, perhaps; then the command fails
        elif content not in results:
            yield f"{path} is not a whole result ({len(content)} bytes)"


def trash_entries(scenario, trash, outcome):
    """A crash may leave a record without an item, or an incomplete item with a record; nothing else may."""
    for sentence in trash.broken:
        is_for_later = outcome.may_leave_litter or (scenario.undoes and outcome.status == 1)  # the next undo removes it
        if not is_for_later or "without a record" in sentence:
            yield sentence
    for original, place in trash.restorable:
        if TEMPORARY.search(place) and (not outcome.may_leave_litter or original in scenario.files):
            yield f"{place} is an incomplete item in the trash"


def quiet_output(scenario, expected_stdout, outcome):
    """`kestrine` prints its lines and nothing else."""
    if outcome.killed:
        return
    if outcome.status != 0:
        yield f"the status is {outcome.status}"
    if outcome.stderr:
        yield f"there is a message: {outcome.stderr[:200]!r}"
    if outcome.stdout == expected_stdout or "stdout" in outcome.disturbed:
        return
    if outcome.stdout or "preferences" not in outcome.disturbed:
        yield f"the lines are {outcome.stdout[:200]!r}"


def truthful_output(scenario, world, expected, expected_stdout, trash, after, outcome):
    """The status and the lines of `kestrinectl` agree with what happened."""
    if outcome.killed:
        return
    if outcome.status not in (0, 1) and not (outcome.status == 2 and after == world.given):
        yield f"the status is {outcome.status}"
    if outcome.status != 0 and not outcome.stderr and "stderr" not in outcome.disturbed:
        yield "it failed without a message"
    # The results are there, but the next run will make them again.
    messages = [line for line in outcome.stderr.splitlines() if b"the manifest does not name the result" not in line]
    if outcome.status == 0 and messages:
        yield f"it succeeded with a message: {outcome.stderr[:200]!r}"
    if outcome.status == 0 and outcome.stdout != expected_stdout and "stdout" not in outcome.disturbed:
        yield f"it succeeded with other lines: {outcome.stdout[:200]!r}"
    if scenario.changes_presets:
        yield from truthful_presets(expected, after, outcome)
    elif scenario.undoes:
        yield from truthful_undo(scenario, after, outcome)
    else:
        yield from truthful_results(scenario, world, expected, trash, after, outcome)


def truthful_presets(expected, after, outcome):
    presets, old = after.get(PREFERENCES_PATH), None
    if outcome.status == 0 and presets != expected[PREFERENCES_PATH]:
        yield "it succeeded, but the presets are not changed"
    if presets != expected[PREFERENCES_PATH]:
        return
    if outcome.status != 0 and b"to the disk" not in outcome.stderr and b"could not be written" not in outcome.stderr:
        yield f"it failed, but the presets are changed: {outcome.stderr[:200]!r}"


def missing_originals(scenario, after):
    return [path for path, content in scenario.files.items() if after.get(path) != content]


def results_left(scenario, after):
    """The results in the folder of the pictures."""
    return [path for path in after if path.startswith(scenario.folder + "/") and path not in scenario.files
            and not TEMPORARY.search(path)]


def truthful_undo(scenario, after, outcome):
    missing = missing_originals(scenario, after)
    if outcome.status == 0 and missing:
        yield f"it succeeded, but {missing[0]} is not back"
    if outcome.status == 0 and results_left(scenario, after):
        yield f"it succeeded, but {results_left(scenario, after)[0]} is still there"


def violations_after_resuming(scenario, expected, after, messages):
    """What is wrong when the same command has run again without faults: all files must be as after one undisturbed run."""
    def results(files):
        return {path: content for path, content in files.items() if not path.startswith(scenario.notes) and not TEMPORARY.search(path)}

    wanted, there = results(expected), results(after)
    for path in sorted(wanted.keys() | there.keys()):
        if wanted.get(path) != there.get(path):
            what = "missing" if path not in there else "there" if path not in wanted else "different"
            yield f"{path} is {what} after a second run: {messages[:200]!r}"


def violations_after_undo(scenario, world, outcome, after, messages):
    """What is wrong when a run has been undone without faults, whatever failed before. A result that replaced nothing
    because a call failed stays."""
    for path in missing_originals(scenario, after):
        yield f"{path} is not brought back by undo: {messages[:200]!r}"
    if outcome.killed or outcome.status == 0:
        for path in results_left(scenario, after):
            yield f"{path} is left by undo: {messages[:200]!r}"
    if scenario.undoes and "cleaning" not in outcome.disturbed:
        yield from Trash(world, after).broken
        yield from (f"{path} is litter that undo leaves" for path in after if TEMPORARY.search(path))


def truthful_results(scenario, world, expected, trash, after, outcome):
    whole = {path: content for path, content in expected.items()
             if scenario.files.get(path) != content and not path.startswith((*scenario.notes, "home/.local/share/Trash", "volume/.Trash", ".Trash"))}
    missing = [path for path, content in whole.items() if after.get(path) != content]
    if outcome.status == 0 and missing:
        yield f"it succeeded, but {missing[0]} is not there"
    # When memory runs out after a result was published, the report of success may be what lacked memory.
    excused = "stdout" in outcome.disturbed or b"not enough memory" in outcome.stderr or b"bad_alloc" in outcome.stderr
    # An action is there only when it is also executable, which the contents do not show.
    excused = excused or not scenario.makes_pictures
    if outcome.status != 0 and not missing and not scenario.replaces and not excused:
        yield f"it failed, but every result is there: {outcome.stderr[:200]!r}"
    if scenario.page and outcome.stdout and not is_whole_page(after.get(scenario.page, b"")):
        yield f"it reports {outcome.stdout[:200]!r}, which is not there"
    prints_results = scenario.makes_pictures and not scenario.page
    for line in outcome.stdout.decode().splitlines() if prints_results else []:
        name, arrow, path = line.partition(" -> ")
        place = path.removeprefix("BASE/") if path.startswith("BASE/") else f"{scenario.folder}/{path}"
        if not arrow or place not in after or after[place] not in whole.values():
            yield f"it reports {line}, which is not there"


def is_whole_picture(content):
    return ((content.startswith(b"\xff\xd8") and content.endswith(b"\xff\xd9"))
            or (content.startswith(b"\x89PNG") and content.endswith(b"IEND\xaeB`\x82")))


def violations_despite(scenario, world, newcomer, after, outcome):
    """What does not hold when another program has changed a.jpg or the folder W in the middle of a run."""
    trash = Trash(world, after)
    changed = scenario.folder + "/a.jpg"
    for path, content in scenario.files.items():
        moved = path.replace("/W/", "/W.before/")
        if path != changed and content not in (after.get(path), after.get(moved)) and not (
                scenario.replaces and trash.has(path, content, after)):
            yield f"{path} is lost or changed"
    named = [content for path, content in after.items() if not TEMPORARY.search(path)]
    if newcomer not in named:
        yield "the file that was put in place of a.jpg is lost"
    for path, content in after.items():
        if TEMPORARY.search(path):
            yield f"{path} is litter"
        elif path.startswith(scenario.notes):
            continue
        elif path not in scenario.files and path not in trash.paths and content not in scenario.files.values():
            is_whole = is_whole_page if path == scenario.page else is_whole_picture
            if scenario.makes_pictures and not is_whole(content) and path not in (changed, scenario.folder + "/W"):
                yield f"{path} is not whole"
    yield from trash_entries(scenario, trash, outcome)
    if outcome.status != 0 and (scenario.is_quiet or outcome.status != 1 or not outcome.stderr):
        yield f"the status is {outcome.status}, with the message {outcome.stderr[:200]!r}"
    if scenario.is_quiet and outcome.stderr:
        yield f"there is a message: {outcome.stderr[:200]!r}"


def violations(scenario, world, expected, expected_stdout, after, outcome):
    """All sentences about what does not hold."""
    trash = Trash(world, after)
    found = [*originals(scenario, trash, after, outcome), *new_files(scenario, world, expected, trash, after, outcome),
             *trash_entries(scenario, trash, outcome)]
    if scenario.is_quiet:
        return found + list(quiet_output(scenario, expected_stdout, outcome))
    presets = PREFERENCES_PATH
    if scenario.changes_presets and after.get(presets) not in (scenario.files[presets], expected[presets]):
        found.append("the presets are neither the old nor the new ones")
    return found + list(truthful_output(scenario, world, expected, expected_stdout, trash, after, outcome))
