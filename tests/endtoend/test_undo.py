"""kestrinectl undo: a replacing run is taken back completely, even after either program was killed."""
import contextlib
import itertools
import json
import os
import random
import shutil
import signal
import subprocess
import time
from pathlib import Path

import pictures
from tools import BIN, PNG, ToolTest, main, messages_of


class Undo(ToolTest):
    def setUp(self):
        super().setUp()
        self.journals = self.home / ".local/state/kestrine/journal"
        self.trash = self.home / ".local/share/Trash"

    def picture(self, name, size=(60, 40), seed=1):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        pictures.image(pictures.photo(*size, seed=seed)).save(path)
        return path

    def replace(self, *arguments, status=0):
        done = self.kestrinectl("convert", "--longest", "30", "--replace", *arguments)
        self.assertEqual(done.returncode, status, done)
        return done

    def undo(self, *arguments, status=0):
        done = self.kestrinectl("undo", *arguments)
        self.assertEqual(done.returncode, status, done)
        return done.stdout.decode() + "\n".join(messages_of(done))

    def state(self):
        """Everything about the files below the folder that must be as before."""
        state = {}
        for path in sorted(self.folder.rglob("*")):
            status = path.stat()
            attributes = {name: os.getxattr(path, name) for name in os.listxattr(path)}
            state[os.fsencode(path)] = (status.st_mode, status.st_mtime_ns, status.st_uid, attributes,
                                        None if path.is_dir() else path.read_bytes())
        return {path: kept for path, kept in state.items() if kept[-1] is not None}


class TakingBack(Undo):
    def test_originals_come_back_and_results_go(self):
        for name in ("a.png", "sub/b.tif", "c.png"):
            self.picture(name)
        os.utime(self.folder / "a.png", ns=(10**18, 10**18 + 7))
        os.chmod(self.folder / "sub/b.tif", 0o640)
        before = self.state()
        self.replace("--format", "jpeg", "-r", ".")
        self.assertEqual(self.names(), [b"a.jpg", b"c.jpg", b"sub"])
        self.assertEqual(self.undo(), "run 1: 3 originals back in place\n")
        self.assertEqual(self.state(), before)
        self.assertEqual([list((self.trash / part).iterdir()) for part in ("files", "info")], [[], []])

    def test_presets_that_replace_are_undone_as_well(self):
        self.store({"name": "R", "replaceFile": 1, "formatType": PNG, "resizeType": 2, "maxSize": 30.0}, selection=[(0, 1)])
        self.picture("a.png")
        before = self.state()
        self.assertEqual(self.kestrinectl("convert", "a.png").returncode, 0)
        self.assertNotEqual(self.state(), before)
        self.undo()
        self.assertEqual(self.state(), before)

    def test_unusual_names_come_back(self):
        self.picture("a.png")
        for name in (b"\xff\xfe.png", b"new\nline.png", b"%41.png", "ü \"'.png".encode()):
            shutil.copy(self.folder / "a.png", os.path.join(os.fsencode(self.folder), name))
        before = self.state()
        self.replace(".")
        self.undo()
        self.assertEqual(self.state(), before)

    def test_a_link_comes_back_as_a_link(self):
        self.picture("deep/a.png")
        os.symlink("deep/a.png", self.folder / "link.png")
        self.replace("link.png")
        self.assertFalse((self.folder / "link.png").is_symlink())
        self.undo()
        self.assertEqual(os.readlink(self.folder / "link.png"), "deep/a.png")

    def test_the_latest_run_is_undone_first_and_any_run_by_its_number(self):
        original = self.picture("a.png", size=(400, 300))
        content = original.read_bytes()
        self.replace("a.png")
        first = original.read_bytes()
        self.assertEqual(self.kestrinectl("convert", "--percent", "50", "--replace", "a.png").returncode, 0)
        self.assertIn("run 2", self.undo())
        self.assertEqual(original.read_bytes(), first)
        self.assertIn("run 1", self.undo("1"))
        self.assertEqual(original.read_bytes(), content)

    def test_a_missing_folder_is_made_again(self):
        self.picture("sub/a.png")
        self.replace("sub/a.png")
        shutil.rmtree(self.folder / "sub")
        self.undo()
        self.assertTrue((self.folder / "sub/a.png").exists())

    def test_an_original_on_another_file_system_comes_back(self):
        memory = Path("/dev/shm")
        if not os.access(memory, os.W_OK) or memory.stat().st_dev == self.home.stat().st_dev:
            self.skipTest("/dev/shm is not another file system here")
        self.folder = Path(subprocess.run(["mktemp", "-d", "-p", memory, "kestrine-XXXXXX"], capture_output=True, text=True,
                                          check=True).stdout.strip())
        self.addCleanup(subprocess.run, ["rm", "-rf", self.folder, memory / f".Trash-{os.getuid()}"])
        self.picture("a.png")
        before = self.state()
        self.replace("a.png")
        self.undo()
        self.assertEqual(self.state(), before)


class RunsThatFailed(Undo):
    """What could not be replaced, because its folder is read-only, counts for nothing."""

    def fail_to_replace(self, *arguments):
        os.chmod(self.folder / "fixed", 0o555)
        done = self.run_without_rights("convert", "--longest", "30", "--format", "jpeg", "--replace", *arguments, program="kestrinectl")
        os.chmod(self.folder / "fixed", 0o755)
        self.assertEqual(done.returncode, 1, done)

    def test_a_run_that_replaced_nothing_leaves_no_journal(self):
        self.picture("fixed/a.png")
        self.fail_to_replace("fixed/a.png")
        self.assertEqual(list(self.journals.iterdir()), [])
        self.assertIn("nothing to undo", self.undo(status=1))

    def test_the_run_before_it_is_undone(self):
        self.picture("fixed/b.png")
        original = self.picture("a.png")
        content = original.read_bytes()
        self.replace("a.png")
        self.fail_to_replace("fixed/b.png")
        self.assertIn("run 1: 1 original back in place", self.undo())
        self.assertEqual(original.read_bytes(), content)

    def test_only_what_was_replaced_is_listed_and_counted(self):
        self.picture("a.png")
        self.picture("fixed/b.png")
        self.fail_to_replace("-r", ".")
        self.assertIn(b"1 file in", self.kestrinectl("history").stdout)
        self.assertEqual(self.undo(), "run 1: 1 original back in place\n")

    def test_a_file_that_equals_the_failed_result_stays(self):
        self.picture("a.png")
        self.picture("fixed/b.png")
        self.fail_to_replace("-r", ".")
        done = self.kestrinectl("convert", "--longest", "30", "--format", "jpeg", "--out", "fixed", "fixed/b.png")
        self.assertEqual(done.returncode, 0, done)
        self.undo()
        self.assertEqual(sorted(os.listdir(self.folder / "fixed")), ["b.jpg", "b.png"])

    def test_an_original_that_somebody_brought_back_is_counted_apart(self):
        self.picture("a.png")
        self.picture("b.png")
        self.replace("--format", "jpeg", "a.png", "b.png")
        os.rename(self.trash / "files/a.png", self.folder / "a.png")
        self.assertEqual(self.undo(), "run 1: 1 original back in place, 1 there already\n")
        self.assertEqual(self.names(), [b"a.png", b"b.png"])


class WhatStays(Undo):
    def test_an_edited_result_stays_and_the_original_comes_back_beside_it(self):
        content = self.picture("a.png").read_bytes()
        self.picture("b.png")
        self.replace("a.png", "b.png")
        with open(self.folder / "a.png", "ab") as file:
            file.write(b"edited")
        edited = (self.folder / "a.png").read_bytes()
        text = self.undo(status=1)
        self.assertIn(f"{self.folder}/a.png was changed since and is kept; its original is {self.folder}/a_1.png", text)
        self.assertEqual((self.folder / "a.png").read_bytes(), edited)
        self.assertEqual((self.folder / "a_1.png").read_bytes(), content)
        self.assertEqual(self.names(), [b"a.png", b"a_1.png", b"b.png"])

    def test_an_edited_result_of_another_name_stays_too(self):
        content = self.picture("a.png").read_bytes()
        self.replace("--format", "jpeg", "a.png")
        (self.folder / "a.jpg").write_bytes(b"edited")
        self.assertIn(f"{self.folder}/a.jpg was changed since and is kept; its original is {self.folder}/a.png", self.undo(status=1))
        self.assertEqual((self.folder / "a.png").read_bytes(), content)
        self.assertEqual((self.folder / "a.jpg").read_bytes(), b"edited")

    def test_a_file_that_took_the_name_of_the_original_stays(self):
        content = self.picture("a.png").read_bytes()
        self.replace("--format", "jpeg", "a.png")
        (self.folder / "a.png").write_bytes(b"another")
        self.assertIn(f"another file is named {self.folder}/a.png now and is kept; the original is {self.folder}/a_1.png",
                      self.undo(status=1))
        self.assertEqual((self.folder / "a.png").read_bytes(), b"another")
        self.assertEqual((self.folder / "a_1.png").read_bytes(), content)
        self.assertEqual(self.names(), [b"a.png", b"a_1.png"])

    def test_an_emptied_trash_is_an_error_and_the_result_stays(self):
        self.picture("a.png")
        self.replace("a.png")
        result = self.state()
        shutil.rmtree(self.trash)
        self.assertIn(f"{self.folder}/a.png: the original is no longer in the trash", self.undo(status=1))
        self.assertEqual(self.state(), result)

    def test_a_trash_that_cannot_be_read_is_not_taken_for_an_emptied_one(self):
        self.picture("a.png")
        before = self.state()
        self.replace("a.png")
        replaced, records, hidden = self.state(), self.trash / "info", self.trash / "hidden"
        records.rename(hidden)
        records.symlink_to("info")
        self.assertIn(f"{self.folder}/a.png: cannot open the folder {records}: Too many levels of symbolic links", self.undo(status=1))
        self.assertEqual(self.state(), replaced)
        records.unlink()
        hidden.rename(records)
        self.undo()
        self.assertEqual(self.state(), before)

    def test_nothing_to_undo_is_an_error(self):
        self.assertIn("nothing to undo", self.undo(status=1))
        self.picture("a.png")
        self.replace("a.png")
        self.undo()
        self.assertIn("nothing to undo", self.undo(status=1))
        self.assertIn("nothing to undo: run 1 was undone already", self.undo("1", status=1))
        self.assertIn("there is no run 7", self.undo("7", status=1))

    def test_another_item_of_the_same_name_in_the_trash_stays_there(self):
        content = self.picture("a.png").read_bytes()
        self.replace("a.png")
        second = self.picture("a.png", seed=2).read_bytes()
        subprocess.run(["trash-put", self.folder / "a.png"], env=self.environment, check=True)
        self.undo()
        self.assertEqual((self.folder / "a.png").read_bytes(), content)
        self.assertEqual([path.read_bytes() for path in (self.trash / "files").iterdir()], [second])


class Journal(Undo):
    def test_the_folder_is_private(self):
        self.picture("a.png")
        self.replace("a.png")
        self.assertEqual(self.journals.stat().st_mode & 0o777, 0o700)
        self.assertEqual(next(self.journals.iterdir()).stat().st_mode & 0o777, 0o600)

    def test_runs_are_listed(self):
        self.assertIn("no run has replaced files yet", messages_of(self.kestrinectl("history"))[0])
        for name in ("a.png", "b/c.png"):
            self.picture(name)
        self.replace("a.png")
        self.replace("-j", "1", "b/c.png", "a.png")
        self.undo()
        lines = self.kestrinectl("history").stdout.decode().splitlines()
        self.assertRegex(lines[0], rf"\A1  \d{{4}}-\d\d-\d\dT\S+  1 file in {self.folder}\Z")
        self.assertRegex(lines[1], rf"\A2  \S+  2 files in {self.folder} and other folders, undone\Z")
        runs = [json.loads(line) for line in self.kestrinectl("history", "--json").stdout.splitlines()]
        self.assertEqual([(run["run"], run["files"], run["undone"]) for run in runs], [(1, 1, False), (2, 2, True)])

    def test_without_a_journal_nothing_is_touched_unless_the_user_goes_on_without(self):
        self.journals.parent.mkdir(parents=True)
        self.journals.write_text("in the way")
        self.picture("a.png")
        before = self.state()
        error = messages_of(self.replace("a.png", status=1))
        self.assertRegex(error[0], r"\Athe journal for undo cannot be written \(.*\); nothing was converted; --no-journal goes on")
        self.assertEqual(self.state(), before)
        self.replace("--no-journal", "a.png")
        self.assertNotEqual(self.state(), before)

    def test_a_run_that_replaces_nothing_leaves_no_journal(self):
        (self.folder / "a.png").write_text("words")
        self.replace("a.png", status=1)
        self.picture("b.png")
        self.kestrinectl("convert", "--longest", "30", "--out", "out", "b.png")
        self.kestrinectl("convert", "--longest", "30", "--replace", "--dry-run", "b.png")
        self.assertEqual(list(self.journals.iterdir()), [])

    def test_a_run_goes_only_when_it_is_old_and_not_among_the_last_100(self):
        self.journals.mkdir(parents=True)
        for number in range(1, 121):
            (self.journals / f"{number}.jsonl").write_text('{"journal":1,"began":"then"}\n')
            if number <= 10 or number > 115:
                os.utime(self.journals / f"{number}.jsonl", (10**9, 10**9))
        self.picture("a.png")
        self.replace("a.png")
        kept = {int(path.stem) for path in self.journals.iterdir()}
        self.assertEqual(kept, set(range(11, 122)))

    def test_the_journal_of_a_newer_version_is_refused(self):
        self.journals.mkdir(parents=True)
        (self.journals / "1.jsonl").write_text('{"journal":2,"began":"then"}\n')
        self.assertIn("newer version", self.undo("1", status=1))

    def test_totals_and_json_name_the_run(self):
        for name in ("a.png", "b.png"):
            self.picture(name)
        self.assertIn(b"'kestrinectl undo 1' brings the originals back", self.replace("a.png", "b.png").stderr)
        done = self.kestrinectl("convert", "--json", "--percent", "50", "--replace", "a.png")
        run = json.loads(done.stdout.splitlines()[-1])["run"]
        self.assertEqual(run["journal"], 2)


class ManyFiles(Undo):
    def fill(self, count):
        for seed in range(8):
            self.picture(f"p{seed}.png", seed=seed)
        for number in range(8, count):
            shutil.copy(self.folder / f"p{number % 8}.png", self.folder / f"p{number}.png")
            os.utime(self.folder / f"p{number}.png", ns=(10**18 + number, 10**18 + number))
            with contextlib.suppress(OSError):  # not every file system keeps attributes
                os.setxattr(self.folder / f"p{number}.png", "user.rating", str(number).encode())

    def test_a_thousand_files_come_back(self):
        self.fill(1000)
        before = self.state()
        self.assertEqual(self.kestrinectl("convert", "-q", "--format", "jpeg", "--longest", "20", "--replace", ".").returncode, 0)
        self.assertEqual(sum(name.endswith(b".jpg") for name in self.names()), 1000)
        self.assertEqual(self.undo(), "run 1: 1000 originals back in place\n")
        self.assertEqual(self.state(), before)

    def killed_after(self, seconds, *arguments):
        """Whether the program was killed before its end."""
        process = subprocess.Popen([BIN / "kestrinectl", *arguments], cwd=self.folder, env=self.uncounted(),
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(seconds)
        process.kill()
        return process.wait(timeout=60) == -signal.SIGKILL

    def test_killed_at_any_point_undo_finishes(self):
        self.fill(150)
        before = self.state()
        generator = random.Random(1)
        kills = 0
        for attempt in range(12):
            form = "jpeg" if attempt % 2 else "png"
            kills += self.killed_after(generator.uniform(0.005, 0.15), "convert", "-q", "--format", form, "--longest", "20",
                                       "--replace", ".")
            for interruptions in itertools.count():  # a slow program may be killed before it has done anything
                history = self.kestrinectl("history", "--json").stdout.splitlines()
                if not history or b'"undone":false' not in history[-1]:
                    break
                if interruptions == 8 or not self.killed_after(generator.uniform(0.001, 0.02), "undo"):
                    self.kestrinectl("undo")
            self.assertEqual(self.state(), before, attempt)
            self.assertEqual(list(self.trash.glob("files/*")), [], attempt)
        self.assertGreater(kills, 3)


if __name__ == "__main__":
    main()
