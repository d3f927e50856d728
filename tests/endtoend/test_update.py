"""kestrinectl convert --update: makes what is missing or out of date, and overwrites nothing but its own results."""
import fcntl
import json
import os
import random
import shutil
import signal
import subprocess
import time

import pictures
from tools import BIN, JPEG, ToolTest, main, messages_of


class Update(ToolTest):
    def setUp(self):
        super().setUp()
        self.manifests = self.home / ".local/state/kestrine/manifests"
        for seed, name in enumerate(("a.png", "b.png", "sub/c.png")):
            self.picture("in/" + name, seed)

    def picture(self, name, seed=1):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        pictures.image(pictures.photo(60, 40, seed=seed)).save(path)

    def update(self, *arguments, status=0, size="30", files=("in",)):
        """The sources that were converted, and the messages."""
        done = self.kestrinectl("convert", "--longest", size, "--format", "jpeg", "--out", "out", "--update", "-r",
                                *arguments, *files)
        self.assertEqual(done.returncode, status, done)
        return [line.split(" -> ")[0] for line in done.stdout.decode().splitlines()], messages_of(done)

    def results(self):
        return {str(path.relative_to(self.folder / "out")): path.read_bytes()
                for path in (self.folder / "out").rglob("*") if path.is_file()}

    def change(self, name, seed):
        self.picture(name, seed)
        os.utime(self.folder / name, ns=(10**18 + seed, 10**18 + seed))

    ALL = ["in/a.png", "in/b.png", "in/sub/c.png"]


class WhatIsMade(Update):
    def test_a_second_run_does_nothing(self):
        self.assertEqual(self.update(), (self.ALL, []))
        before = {path: path.stat().st_mtime_ns for path in (self.folder / "out").rglob("*")}
        manifest = next(self.manifests.iterdir()).read_bytes()
        self.assertEqual(self.update(), ([], []))
        self.assertEqual({path: path.stat().st_mtime_ns for path in (self.folder / "out").rglob("*")}, before)
        self.assertEqual(next(self.manifests.iterdir()).read_bytes(), manifest)

    def test_skipped_files_are_counted_and_shown_when_asked(self):
        self.update()
        lines, _ = self.update("-v")
        self.assertIn("in/a.png skipped: it is up to date", lines)
        done = self.kestrinectl("convert", "--longest", "30", "--format", "jpeg", "--out", "out", "--update", "-r", "--json", "in")
        objects = [json.loads(line) for line in done.stdout.splitlines()]
        self.assertEqual({item["status"] for item in objects[:-1]}, {"skipped"})
        self.assertEqual(objects[-1]["run"]["skipped"], 3)

    def test_a_changed_source_is_converted_again_into_the_same_name(self):
        self.update()
        before = self.results()
        self.change("in/b.png", 9)
        self.assertEqual(self.update()[0], ["in/b.png"])
        after = self.results()
        self.assertEqual({name for name in after if after[name] != before.get(name)}, {"b.jpg"})

    def test_new_sources_and_missing_results_are_made(self):
        self.update()
        (self.folder / "out/a.jpg").unlink()
        self.picture("in/d.png")
        self.assertEqual(self.update()[0], ["in/a.png", "in/d.png"])

    def test_other_options_make_everything_again_in_place_and_back(self):
        self.update()
        first = self.results()
        self.assertEqual(self.update("--quality", "30")[0], self.ALL)
        self.assertEqual(set(self.results()), set(first))
        self.assertNotEqual(self.results(), first)
        self.assertEqual(self.update()[0], self.ALL)
        self.assertEqual(self.results(), first)

    def test_several_sizes_and_presets_are_remembered_too(self):
        self.assertEqual(len(self.update(size="30,20")[0]), 6)
        self.assertEqual(self.update(size="30,20"), ([], []))
        self.store({"name": "Web", "formatType": JPEG, "resizeType": 2, "maxSize": 30.0})
        for expected in ([b"in/a.png"], []):
            done = self.kestrinectl("convert", "--set", "Web", "--update", "in/a.png")
            self.assertEqual([line.split(b" -> ")[0] for line in done.stdout.splitlines()], expected)

    def test_a_number_in_the_name_counts(self):
        arguments = ("--name", "{n}-{stem}.{ext}")
        self.update(*arguments)
        self.assertEqual(self.update(*arguments), ([], []))
        self.picture("in/aa.png")
        self.assertEqual(self.update(*arguments)[0], ["in/a.png", "in/aa.png", "in/b.png", "in/sub/c.png"])

    def test_sources_whose_results_want_one_name_keep_theirs(self):
        self.picture("in/a.tif", 7)
        self.update()
        before = self.results()
        self.change("in/a.tif", 8)
        self.assertEqual(self.update()[0], ["in/a.tif"])
        after = self.results()
        self.assertEqual({name for name in after if after[name] != before.get(name)}, {"a_1.jpg"})

    def test_a_result_whose_source_is_gone_is_replaced_by_that_of_a_source_that_wants_its_name(self):
        self.update()
        (self.folder / "in/b.png").unlink()
        self.picture("in/b.tif", 9)
        done = self.kestrinectl("convert", "--longest", "30", "--format", "jpeg", "--out", "out", "--update", "-r", "--dry-run", "in")
        self.assertEqual(done.stdout.decode(), f"in/b.tif -> {self.folder}/out/b.jpg\n")
        before = self.results()
        self.assertEqual(self.update(), (["in/b.tif"], []))
        after = self.results()
        self.assertEqual({name for name in after if after[name] != before.get(name)}, {"b.jpg"})
        self.assertEqual(self.update(), ([], []))
        self.picture("in/b.png", 1)
        self.assertEqual(self.update()[0], ["in/b.png"])
        self.assertEqual(self.results()["b.jpg"], after["b.jpg"], "its source is there again, so it stays")
        self.assertEqual(set(self.results()), {*after, "b_1.jpg"})

    def test_sources_that_exchange_their_names_exchange_their_results(self):
        self.picture("in/d.tif", 9)
        self.update()
        before = self.results()
        (self.folder / "in/d.tif").rename(self.folder / "in/b.tif")
        (self.folder / "in/b.png").rename(self.folder / "in/d.png")
        self.update()
        after = self.results()
        self.assertEqual((after["b.jpg"], after["d.jpg"]), (before["d.jpg"], before["b.jpg"]))
        self.assertEqual(set(after), set(before))

    def test_an_edited_result_whose_source_is_gone_is_not_replaced(self):
        self.update()
        (self.folder / "in/b.png").unlink()
        self.picture("in/b.tif", 9)
        (self.folder / "out/b.jpg").write_bytes(b"edited")
        self.update()
        self.assertEqual(self.results()["b.jpg"], b"edited")
        self.assertIn("b_1.jpg", self.results())

    def test_force_makes_all_results_again_in_place(self):
        self.update()
        before = self.results()
        self.assertEqual(self.update("--force")[0], self.ALL)
        self.assertEqual(self.results(), before)

    def test_a_dry_run_names_what_would_be_written(self):
        self.assertEqual(self.update("--dry-run")[0], self.ALL)
        self.assertFalse(self.manifests.exists())
        self.update()
        self.change("in/b.png", 9)
        done = self.kestrinectl("convert", "--longest", "30", "--format", "jpeg", "--out", "out", "--update", "-r", "--dry-run", "in")
        self.assertEqual(done.stdout.decode(), f"in/b.png -> {self.folder}/out/b.jpg\n")

    def test_a_failed_file_is_tried_again(self):
        (self.folder / "in/bad.png").write_bytes((self.folder / "in/a.png").read_bytes()[:900])
        self.update(status=1)
        converted, messages = self.update(status=1)
        self.assertEqual((converted, len(messages)), ([], 2))

    def test_several_results_that_want_the_same_name_replace_each_its_own(self):
        words = ["--name", "{stem}.{ext}"]
        self.assertEqual(self.update(*words, size="12,15", files=("in/a.png",))[1], [])
        made = self.results()
        self.assertEqual(set(made), {"a.jpg", "a_1.jpg"})
        self.assertEqual(self.update(*words, "--force", "-v", size="12,15", files=("in/a.png",))[1], [])
        self.assertEqual(self.results(), made)

    def test_a_dry_run_changes_no_manifest_and_needs_none_that_can_be_written(self):
        self.update("--manifest", "own")
        before = (self.folder / "own").read_bytes()
        for name in self.ALL:
            os.utime(self.folder / name, ns=(10**18, 10**18))
        os.chmod(self.folder / "own", 0o444)
        done = self.run_without_rights("convert", "--longest", "30", "--format", "jpeg", "--out", "out", "--update", "-r", "--manifest",
                                       "own", "--dry-run", "in", program="kestrinectl")
        self.assertEqual((done.returncode, done.stdout), (0, b""), done)
        self.assertEqual((self.folder / "own").read_bytes(), before)

    def test_a_file_that_is_named_in_another_way_is_known(self):
        self.update()
        self.assertEqual(self.update(files=("in/a.png", "in/b.png")), ([], []))
        self.assertEqual(self.update(files=("in/sub/c.png",))[0], ["in/sub/c.png"], "its result goes to another folder")
        self.assertEqual(len(self.update(files=("in/sub",))[0]), 0)

    def test_results_of_other_sources_are_no_strangers(self):
        self.picture("in/a.webp")
        converted, messages = self.update("--name", "{stem}.{ext}")
        self.assertEqual((len(converted), messages), (4, []))
        self.assertEqual(set(self.results()), {"a.jpg", "a_1.jpg", "b.jpg", "c.jpg"})

    def test_a_dry_run_names_results_that_want_the_same_name_differently(self):
        words = ["--name", "{stem}.{ext}"]
        self.update(*words, size="12", files=("in/a.png",))
        done = self.kestrinectl("convert", "--longest", "12,15", "--format", "jpeg", "--out", "out", "--update", "--dry-run", *words,
                                "in/a.png")
        self.assertEqual([line.split("/")[-1] for line in done.stdout.decode().splitlines()], ["a.jpg", "a_1.jpg"])


class WhatIsASource(Update):
    def convert(self, *arguments):
        done = self.kestrinectl("convert", "--longest", "30", "--update", *arguments)
        self.assertEqual(done.returncode, 0, done)
        return sorted(line.split(" -> ")[0] for line in done.stdout.decode().splitlines())

    def test_results_are_no_sources_of_later_runs(self):
        for arguments in (("--name", "{stem}-small.{ext}", "in"), ("--name", "thumbs/{stem}.{ext}", "-r", "in"),
                          ("--format", "webp", "--out", "in", "in")):
            self.assertTrue(self.convert(*arguments), arguments)
            self.assertEqual(self.convert(*arguments), [], arguments)

    def test_a_source_whose_time_alone_has_changed_is_not_converted_again(self):
        self.update()
        for name in self.ALL:
            os.utime(self.folder / name, ns=(10**18, 10**18))
        os.utime(self.folder / "out/a.jpg", ns=(10**18, 10**18))
        self.assertEqual(self.update(), ([], []))
        noted = [json.loads(line) for line in next(self.manifests.iterdir()).read_text().splitlines()]
        self.assertEqual([line["modified"] for line in noted[-3:]], [10**18] * 3)
        self.assertEqual({os.path.basename(line["made"]): line["results"][0]["modified"] == 10**18 for line in noted[-3:]},
                         {"a.png": True, "b.png": False, "c.png": False})
        self.assertEqual(self.update(), ([], []))
        self.assertEqual(len(next(self.manifests.iterdir()).read_text().splitlines()), len(noted))
        self.change("in/b.png", 9)
        self.assertEqual(self.update()[0], ["in/b.png"])


class WhatIsKept(Update):
    def test_a_file_that_we_did_not_make_is_never_overwritten(self):
        (self.folder / "out").mkdir()
        (self.folder / "out/a.jpg").write_text("mine")
        for arguments in ((), ("--force",)):
            _, messages = self.update(*arguments)
            self.assertEqual((self.folder / "out/a.jpg").read_text(), "mine")
            if not arguments:
                self.assertEqual(messages, [f"warning: in/a.png: {self.folder}/out/a.jpg is not known as a result of an earlier "
                                            "run and is not replaced"])
            self.assertIn("a_1.jpg", self.results())
            self.assertNotIn("a_2.jpg", self.results())

    def test_a_result_that_was_edited_is_never_overwritten(self):
        self.update()
        (self.folder / "out/a.jpg").write_text("edited")
        self.assertEqual(self.update(), ([], ["warning: in/a.png: a result was changed since it was made and is not replaced"]))
        self.change("in/a.png", 9)
        for _ in range(2):
            converted, messages = self.update("--force")
            self.assertEqual((self.folder / "out/a.jpg").read_text(), "edited")
            self.assertEqual({name for name in self.results() if name.startswith("a")}, {"a.jpg", "a_1.jpg"})

    def test_without_the_manifest_nothing_is_overwritten(self):
        self.update()
        before = self.results()
        shutil.rmtree(self.manifests)
        self.update()
        self.assertEqual({name: content for name, content in self.results().items() if name in before}, before)
        self.assertEqual(len(self.results()), 6)


class Manifest(Update):
    def test_it_is_found_by_the_folder_of_the_results_or_by_its_name(self):
        self.update()
        os.symlink("out", self.folder / "link")
        done = self.kestrinectl("convert", "--longest", "30", "--format", "jpeg", "--out", "link", "--update", "-r", "in")
        self.assertEqual(done.stdout, b"", "results are remembered by the folder itself")
        self.assertEqual(self.update("--manifest", "own.jsonl")[0], self.ALL)
        self.assertEqual(self.update("--manifest", "own.jsonl"), ([], []))

    def test_one_that_is_named_moves_with_its_folder(self):
        (self.folder / "one").mkdir()
        shutil.move(self.folder / "in", self.folder / "one/in")
        words = ("convert", "--longest", "30", "--format", "jpeg", "--out", "out", "--update", "-r", "--manifest", "own.jsonl", "in")
        done = self.kestrinectl(*words, cwd=self.folder / "one")
        self.assertEqual(len(done.stdout.splitlines()), 3, done)
        shutil.copytree(self.folder / "one", self.folder / "two")
        shutil.move(self.folder / "one", self.folder / "three")
        for name in ("two", "three"):
            done = self.kestrinectl(*words, cwd=self.folder / name)
            self.assertEqual((done.returncode, done.stdout), (0, b""), done)

    def test_a_newer_or_foreign_file_is_refused_and_stays(self):
        for content, words in ((b'{"manifest":2}\n{"new":1}\n', "from a newer version"), (b"my notes\n", "not a manifest"),
                               (b"my notes", "not a manifest"), (b'{"manifest":2}', "not a manifest")):
            (self.folder / "own").write_bytes(content)
            converted, messages = self.update("--manifest", "own", status=1)
            self.assertEqual((converted, len(messages)), ([], 1))
            self.assertIn(words, messages[0])
            self.assertEqual((self.folder / "own").read_bytes(), content)
            self.assertFalse((self.folder / "out").exists())

    def test_if_it_cannot_be_written_nothing_is_converted(self):
        converted, messages = self.update("--manifest", "absent/own", status=1)
        self.assertEqual(converted, [])
        self.assertRegex(messages[0], "the manifest cannot be written: .*absent/own: No such file")
        self.assertFalse((self.folder / "out").exists())

    def test_one_that_was_cut_off_within_its_first_line_is_begun_again(self):
        (self.folder / "own").write_bytes(b'{"manif')
        self.assertEqual(self.update("--manifest", "own")[0], self.ALL)
        self.assertEqual(self.update("--manifest", "own"), ([], []))

    def test_a_damaged_line_costs_only_its_file(self):
        self.update("--manifest", "own")
        lines = (self.folder / "own").read_bytes().splitlines(keepends=True)
        (self.folder / "own").write_bytes(b"".join(lines)[:-20])
        converted, _ = self.update("--manifest", "own", "-j1")
        self.assertEqual(len(converted), 1)
        self.assertEqual(set(self.results()), {"a.jpg", "b.jpg", "sub/c.jpg"}, "its result is recognised and replaced")

    def test_there_is_one_writer_at_a_time(self):
        self.update("--manifest", "own")
        with open(self.folder / "own", "ab") as file:
            fcntl.flock(file, fcntl.LOCK_EX)
            self.assertIn("another run uses the manifest", self.update("--manifest", "own", "--no-wait", status=1)[1][0])
            process = subprocess.Popen([BIN / "kestrinectl", "convert", "--longest", "30", "--out", "out", "--update",
                                        "--manifest", "own", "in"], cwd=self.folder, env=self.environment,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
            self.addCleanup(process.kill)
            self.assertEqual(process.stderr.readline().decode(),
                             f"kestrinectl: waiting for another run that uses the manifest {self.folder}/own\n")
            self.assertIsNone(process.poll())
            stopped = subprocess.Popen([BIN / "kestrinectl", "convert", "--longest", "30", "--out", "out", "--update",
                                        "--manifest", "own", "in"], cwd=self.folder, env=self.environment,
                                       stderr=subprocess.PIPE)
            stopped.stderr.readline()
            stopped.send_signal(signal.SIGINT)
            self.assertEqual((stopped.communicate(timeout=60)[1], stopped.returncode), (b"kestrinectl: stopped by SIGINT\n", 130))
        _, messages = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 0, messages)

    def test_it_does_not_grow_without_end(self):
        for seed in range(12):
            self.update("--manifest", "own", "--force")
        size = (self.folder / "own").stat().st_size
        lines = (self.folder / "own").read_bytes().splitlines(keepends=True)
        (self.folder / "own").write_bytes(b"".join(lines[:1] + lines[1:] * 40))
        self.update("--manifest", "own")
        self.assertLess((self.folder / "own").stat().st_size, size)
        self.assertEqual(self.update("--manifest", "own"), ([], []))

    def test_what_contradicts_it_is_a_usage_error(self):
        for arguments in (("--replace", "--update", "in"), ("--out", "out", "--force", "in"), ("--out", "out", "--no-wait", "in"),
                          ("--out", "out", "--manifest", "x", "in"), ("--update", "-")):
            done = self.kestrinectl("convert", "--longest", "30", *arguments, input=b"")
            self.assertEqual(done.returncode, 2, arguments)


class Interrupted(Update):
    def test_killed_at_any_point_a_later_run_completes_the_results_and_makes_no_others(self):
        for number in range(80):
            self.picture(f"in/{number}.png", number)
        self.update(files=["in"])
        expected = self.results()
        generator = random.Random(2)
        kills = 0
        for _ in range(10):
            shutil.rmtree(self.folder / "out")
            shutil.rmtree(self.manifests)
            for _ in range(4):
                process = subprocess.Popen([BIN / "kestrinectl", "convert", "-q", "--longest", "30", "--format", "jpeg", "--out",
                                            "out", "--update", "-r", "in"], cwd=self.folder, env=self.uncounted())
                time.sleep(generator.uniform(0.005, 0.06))
                process.kill()
                kills += process.wait(timeout=60) != 0
            self.update()
            left = {name for name in self.results() if name.endswith(".kestrine-tmp")}
            self.assertEqual({name: content for name, content in self.results().items() if name not in left}, expected)
        self.assertGreater(kills, 5)


if __name__ == "__main__":
    main()
