"""kestrinectl plan, run and merge: a conversion in parts gives the same tree as convert, whatever happens to the parts."""
import fcntl
import json
import os
import random
import shutil
import signal
import subprocess
import time
from pathlib import Path

import jsonschema

import pictures
from tools import BIN, JPEG, ToolTest, main, messages_of, on_a_terminal

SCHEMA = json.loads((Path(__file__).resolve().parent.parent.parent / "share/shard-log.schema.json").read_text())
OPTIONS = ("--longest", "30,20", "--format", "jpeg", "--out", "out")
ODD = [b"a b.png", b"line\nbreak.png", b'"quoted\'.png', b"$(touch injected).png", b"\xff\xfe.png", b"-r.png", b"tab\t.png",
       b"[a,b].png", "ä.png".encode(), b"{}.png", b"*.png"]


class Scale(ToolTest):
    def setUp(self):
        super().setUp()
        self.tree = self.folder / "tree"
        for seed, name in enumerate((*ODD, b"p.png", b"p.tif", b"sub/p.png", b"sub/deep/q.png", b"P.PNG")):
            self.picture(self.tree / os.fsdecode(b"in/" + name), seed)

    @staticmethod
    def picture(path, seed):
        path.parent.mkdir(parents=True, exist_ok=True)
        pictures.image(pictures.photo(60, 40, seed=seed)).save(path, format="TIFF" if path.suffix == ".tif" else "PNG")

    def inside(self, tree, *words, status=0, **options):
        done = subprocess.run([BIN / "kestrinectl", *words], cwd=tree, env=self.uncounted(), capture_output=True, timeout=120,
                              **options)
        self.assertEqual(done.returncode, status, done)
        return done

    def plan(self, *words, options=OPTIONS, files=("-r", "in"), **more):
        done = self.inside(self.tree, "plan", *options, *words, *files, **more)
        (self.tree / "plan").write_bytes(done.stdout)
        return done

    def copy(self, name):
        """A copy of the tree with its plan, which keeps all times."""
        subprocess.run(["cp", "-a", self.tree, self.folder / name], check=True)
        return self.folder / name

    def run_shards(self, tree, count, *words):
        for number in range(1, count + 1):
            self.inside(tree, "run", "--shard", f"{number}/{count}", *words, "plan")

    def merge(self, tree, status=0):
        return self.inside(tree, "merge", "plan", *sorted(tree.glob("plan.*.jsonl")), status=status)

    @staticmethod
    def results(tree, folder="out"):
        return {os.fsencode(path.relative_to(tree)): path.read_bytes() for path in (tree / folder).rglob("*") if path.is_file()}

    def expected(self, options=OPTIONS, files=("-r", "in")):
        tree = self.copy("expected")
        self.inside(tree, "convert", *options, *files)
        return self.results(tree)

    @staticmethod
    def logged(log):
        return [json.loads(line) for line in log.read_bytes().splitlines()]


class SameTree(Scale):
    def test_any_number_of_shards_gives_what_convert_gives(self):
        expected = self.expected()
        self.assertEqual(len(expected), 2 * (len(ODD) + 5))
        self.plan()
        for count in (1, 3, 16):
            tree = self.copy(f"of{count}")
            self.run_shards(tree, count)
            self.assertEqual(self.results(tree), expected)
            self.merge(tree)
        self.assertEqual(list(self.folder.rglob("injected")), [])

    def test_results_that_want_one_name_get_those_of_convert(self):
        for seed, name in enumerate(("x/p.png", "y/p.png", "z/p.png", "y/p_1.png")):
            self.picture(self.tree / "in" / name, seed)
        files = ("--name", "{stem}.{ext}", "-r", "in")
        options = ("--longest", "30", "--format", "jpeg", "--out", "out")
        expected = self.expected(options, files)
        self.assertIn(b"out/p_1_1.jpg", expected)
        self.plan(options=options, files=files)
        tree = self.copy("of16")
        self.run_shards(tree, 16)
        self.assertEqual(self.results(tree), expected)

    def test_shards_may_run_at_the_same_time_and_in_any_order(self):
        expected = self.expected()
        self.plan()
        runs = [subprocess.Popen([BIN / "kestrinectl", "run", "-q", "--shard", f"{number}/8", "plan"], cwd=self.tree, env=self.environment)
                for number in (8, 3, 1, 2, 7, 6, 5, 4, 4, 3)]
        self.assertEqual([run.wait(120) for run in runs], [0] * len(runs))
        self.assertEqual(self.results(self.tree), expected)
        self.merge(self.tree)

    def test_a_stored_set_is_carried_by_the_plan(self):
        self.store({"name": "Web", "formatType": JPEG, "resizeType": 3, "maxSize": 30.0})
        self.plan(options=("--set", "Web"))
        expected = self.copy("expected")
        self.inside(expected, "convert", "--set", "Web", "-r", "in")
        self.preferences.unlink()
        self.run_shards(self.tree, 3)
        self.assertEqual(self.results(self.tree, "in"), self.results(expected, "in"))

    def test_options_and_folders_of_other_kinds_are_carried_too(self):
        options = ("--percent", "50", "--no-upright", "--name", "[{n}]-{width}.{ext}", "--out", "a folder", "--times", "keep",
                   "--accept-damaged", "--metadata", "none", "--progressive")
        pictures.image(pictures.photo(300, 200)).save(self.tree / "in/cut.jpg")
        cut = (self.tree / "in/cut.jpg").read_bytes()
        (self.tree / "in/cut.jpg").write_bytes(cut[:len(cut) // 2])
        (self.tree / "in/lying.jpg").write_bytes(pictures.jpeg(pictures.photo(40, 30), block=pictures.exif(6)))
        self.plan(options=options)
        expected = self.copy("expected")
        self.inside(expected, "convert", *options, "-r", "in")
        self.run_shards(self.tree, 3)
        self.assertEqual(self.results(self.tree, "a folder"), self.results(expected, "a folder"))
        self.assertTrue(list((self.tree / "a folder").glob("*-20.jpg")), "the lying picture is not turned")
        times = [{path.name: path.stat().st_mtime_ns for path in (tree / "a folder").iterdir()} for tree in (self.tree, expected)]
        self.assertEqual(*times)

    def test_a_copy_of_the_tree_works_under_another_root(self):
        expected = self.expected()
        self.plan()
        tree = self.copy("elsewhere")
        shutil.rmtree(self.tree)
        self.inside(self.folder, "run", "--root", tree, "--log", "the log", tree / "plan")
        self.assertEqual(self.results(tree), expected)
        self.inside(self.folder, "merge", tree / "plan", "the log")

    def test_merge_finds_the_logs_beside_the_plan(self):
        self.plan()
        self.assertIn(b"missing", self.inside(self.tree, "merge", "plan", status=1).stdout)
        self.run_shards(self.tree, 2)
        for folder, plan in ((self.tree, "plan"), (self.folder, self.tree / "plan")):
            self.assertIn(b"all done", self.inside(folder, "merge", plan).stderr)

    def test_merge_takes_only_the_logs_of_its_plan(self):
        self.plan()
        self.run_shards(self.tree, 2)
        (self.tree / "plan.b").write_bytes(self.inside(self.tree, "plan", "--longest", "10", "--out", "out", "in/p.tif").stdout)
        self.inside(self.tree, "run", "plan.b")
        (self.tree / "plan.some-of-mine.jsonl").write_text("mine")
        for plan in ("plan", "plan.b"):
            self.assertIn(b"all done", self.inside(self.tree, "merge", plan).stderr)

    def test_a_copy_whose_times_have_whole_seconds_is_the_same(self):
        self.plan()
        for path in (self.tree / "in").rglob("*.png"):
            os.utime(path, (1, int(path.stat().st_mtime)))
        self.run_shards(self.tree, 1)

    def test_names_that_a_file_system_may_confuse_share_a_shard(self):
        for name in ("Straße.png", "STRASSE.png", "é.png", "e\u0301.png"):
            self.picture(self.tree / "similar" / name, 1)
        done = self.plan(options=("--longest", "30", "--format", "jpeg", "--out", "out"), files=("similar",))
        self.assertIn("warning: some results have names that differ only in upper and lower case", done.stderr.decode())
        shards = {}
        for number in range(1, 65):
            listed = self.inside(self.tree, "run", "--shard", f"{number}/64", "--list", "sources", "plan").stdout.decode()
            shards |= {name: number for name in listed.split("\0")[:-1]}
        self.assertEqual(len(shards), 4)
        self.assertEqual(shards["similar/Straße.png"], shards["similar/STRASSE.png"])
        self.assertEqual(shards["similar/é.png"], shards["similar/e\u0301.png"])
        self.assertEqual(len(set(shards.values())), 2)


class AgainAndAgain(Scale):
    def test_a_finished_shard_converts_nothing_and_says_so(self):
        self.plan()
        self.run_shards(self.tree, 3)
        before = {path: (path.stat().st_mtime_ns, path.stat().st_ino) for path in self.tree.rglob("*")}
        for number in (1, 2, 3):
            done = self.inside(self.tree, "run", "--shard", f"{number}/3", "plan")
            self.assertEqual(done.stdout, b"")
            self.assertIn(f"shard {number}/3 was done already, nothing to convert", messages_of(done))
        self.assertEqual({path: (path.stat().st_mtime_ns, path.stat().st_ino) for path in self.tree.rglob("*")}, before)

    def test_killed_runs_are_continued_until_everything_is_there(self):
        expected = self.expected()
        self.plan()
        choice = random.Random(1)
        for _ in range(25):
            shard = choice.choice(["1/1", "1/3", "2/3", "3/3", "5/16"])
            run = subprocess.Popen([BIN / "kestrinectl", "run", "-q", "--shard", shard, "plan"], cwd=self.tree, env=self.uncounted())
            time.sleep(choice.uniform(0, 0.15))
            run.send_signal(signal.SIGKILL)
            run.wait()
        self.run_shards(self.tree, 3)
        self.assertEqual(self.results(self.tree), expected)
        self.merge(self.tree)

    def test_a_torn_line_is_as_if_it_had_not_been_written(self):
        expected = self.expected()
        self.plan()
        self.run_shards(self.tree, 1)
        log = self.tree / "plan.1-of-1.jsonl"
        whole = log.read_bytes()
        for cut in (1, 40, 1000, 2000, len(whole) - 20):
            log.write_bytes(whole[:-cut])
            done = self.inside(self.tree, "run", "plan")
            self.assertNotIn(b" -> ", done.stdout)
            self.merge(self.tree)
        self.assertEqual(self.results(self.tree), expected)

    def test_lost_logs_and_lost_results_are_made_good(self):
        expected = self.expected()
        self.plan()
        self.run_shards(self.tree, 3)
        (self.tree / "plan.2-of-3.jsonl").unlink()
        next((self.tree / "out").glob("p-*.jpg")).unlink()
        self.run_shards(self.tree, 3)
        self.assertEqual(self.results(self.tree), expected)
        self.merge(self.tree)

    def test_a_stopped_run_says_what_is_left(self):
        for number in range(200):
            self.picture(self.tree / f"in/many/{number}.png", number)
        self.plan()
        run = subprocess.Popen([BIN / "kestrinectl", "run", "-j", "1", "plan"], cwd=self.tree, env=self.environment,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        run.stdout.readline()
        run.send_signal(signal.SIGTERM)
        _, errors = run.communicate(timeout=120)
        self.assertEqual(run.returncode, 128 + signal.SIGTERM)
        self.assertRegex(errors.decode(), r"stopped by SIGTERM: \d+ files? done, \d+ left")
        self.merge(self.tree, status=1)
        self.inside(self.tree, "run", "plan")
        self.merge(self.tree)


class Refusals(Scale):
    def failures(self, tree, *words):
        done = self.inside(tree, "run", "--json", *words, "plan", status=1)
        return {str(item["source"]): item["kind"] for item in map(json.loads, done.stdout.splitlines()[:-1]) if item["status"] == "failed"}

    def test_a_changed_source_fails_and_the_others_are_converted(self):
        expected = self.expected()
        self.plan()
        self.picture(self.tree / "in/p.png", 99)
        os.utime(self.tree / "in/sub/p.png")
        (self.tree / "in/sub/deep/q.png").unlink()
        self.assertEqual(self.failures(self.tree),
                         {"in/p.png": "changed", "in/sub/p.png": "changed", "in/sub/deep/q.png": "not found"})
        missing = {b"out/p-30.jpg", b"out/p-20.jpg", b"out/sub/p-30.jpg", b"out/sub/p-20.jpg", b"out/sub/deep/q-30.jpg",
                   b"out/sub/deep/q-20.jpg"}
        self.assertEqual(self.results(self.tree), {name: data for name, data in expected.items() if name not in missing})
        done = self.merge(self.tree, status=1)
        self.assertIn("in/p.png: failed, it was changed since the plan was made; make a new plan\n", done.stdout.decode())
        self.assertEqual(messages_of(done), ["16 files: 0 missing, 3 failed"])

    def test_a_file_that_is_not_ours_is_never_touched(self):
        self.plan()
        (self.tree / "out").mkdir()
        (self.tree / "out/p-30.jpg").write_text("mine")
        (self.tree / "out/p_1-30.jpg").symlink_to("nowhere")
        for _ in range(2):
            self.assertEqual(self.failures(self.tree)["in/p.png"], "name taken")
            self.assertEqual((self.tree / "out/p-30.jpg").read_text(), "mine")
            self.assertEqual(os.readlink(self.tree / "out/p_1-30.jpg"), "nowhere")
        (self.tree / "out/p-30.jpg").unlink()
        self.inside(self.tree, "run", "plan")
        self.merge(self.tree)

    def test_an_edited_result_stays_as_it_is(self):
        self.plan()
        self.run_shards(self.tree, 1)
        (self.tree / "out/p-30.jpg").write_text("edited")
        self.assertEqual(self.failures(self.tree), {"in/p.png": "name taken"})
        self.assertEqual((self.tree / "out/p-30.jpg").read_text(), "edited")
        self.assertIn(b"in/p.png: failed, ", self.inside(self.tree, "merge", "plan", "plan.1-of-1.jsonl", status=1).stdout)

    def test_a_result_that_only_the_log_knows_is_ours(self):
        """Such a result may have been made by another version of the program."""
        self.plan()
        self.run_shards(self.tree, 1)
        log = self.tree / "plan.1-of-1.jsonl"
        other = self.tree / "out/p-30.jpg"
        shutil.copy(self.tree / "out/p-20.jpg", other)
        lines = self.logged(log)
        small, large = [next(output for line in lines for output in line.get("outputs", ()) if output["path"] == path)
                        for path in ("out/p-20.jpg", "out/p-30.jpg")]
        large.update({key: small[key] for key in ("digest", "bytes")})
        log.write_text("".join(json.dumps(line) + "\n" for line in lines))
        self.assertIn(b"nothing to convert", self.inside(self.tree, "run", "plan").stderr)
        (self.tree / "out/p-20.jpg").unlink()
        self.inside(self.tree, "run", "plan")
        self.assertEqual((self.tree / "out/p-20.jpg").read_bytes(), other.read_bytes())
        os.utime(other)
        self.inside(self.tree, "merge", "--results", "plan", "plan.1-of-1.jsonl")

    def test_a_link_does_not_lead_out_of_the_root(self):
        self.plan()
        (self.folder / "outside").mkdir()
        (self.tree / "out").symlink_to(self.folder / "outside")
        self.assertEqual(set(self.failures(self.tree).values()), {"refused"})
        self.assertEqual(list((self.folder / "outside").iterdir()), [])

    def test_a_plan_that_leads_out_of_the_root_is_refused_whole(self):
        self.plan()
        good = (self.tree / "plan").read_bytes()
        for path in (b"../p-30.jpg", b"/tmp/p-30.jpg", b"out/../../p.jpg", b"./p.jpg", b"out//p.jpg", b"out/"):
            (self.tree / "plan").write_bytes(good.replace(b"\0out/p-30.jpg\0", b"\0" + path + b"\0"))
            done = self.inside(self.tree, "run", "plan", status=1)
            self.assertIn(b"leads out of the root", done.stderr)
            self.assertFalse((self.tree / "out").exists())

    def test_a_damaged_plan_is_refused_with_a_reason(self):
        self.plan()
        good = (self.tree / "plan").read_bytes()
        for content, reason in ((b"", "is not a plan"), (b"kestrine-plan 2\0" + good[16:], "has the format 2"),
                                (good[:-1], "is cut off"), (good[:len(good) // 2], "is cut off"),
                                (good + b"x", "there is more after the end"),
                                (good.replace(b"--longest", b"--shortest"), "does not understand"),
                                (good.replace(b'"--out=out"', b'"--replace=true"').replace(b"30,20", b"30"), "does not understand"),
                                (good.replace(b"\x002\0{", b"\x003\0{", 1), "is damaged"),
                                (good.replace(b"\x002\0{", b"\x000\0{", 1), "is damaged")):
            (self.tree / "plan").write_bytes(content)
            done = self.inside(self.tree, "run", "plan", status=1)
            self.assertIn(reason, done.stderr.decode())
            self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)
        self.assertFalse((self.tree / "out").exists())

    def test_a_log_of_another_plan_is_refused(self):
        self.plan()
        self.run_shards(self.tree, 1)
        log = (self.tree / "plan.1-of-1.jsonl").read_bytes()
        self.picture(self.tree / "in/new.png", 1)
        self.plan()
        for words in (("run", "plan"), ("merge", "plan", "plan.1-of-1.jsonl")):
            self.assertIn(b"belongs to another plan", self.inside(self.tree, *words, status=1).stderr)
        self.assertEqual((self.tree / "plan.1-of-1.jsonl").read_bytes(), log)
        picture = self.tree / "in/p.png"
        before = picture.read_bytes()
        self.assertIn(b"is not a log", self.inside(self.tree, "run", "--log", picture, "plan", status=1).stderr)
        self.assertEqual(picture.read_bytes(), before)

    def test_a_file_that_is_no_log_is_refused_and_stays(self):
        self.plan()
        for name, content in (("plan", (self.tree / "plan").read_bytes()), ("package.json", b'{"name":"site"}')):
            (self.tree / name).write_bytes(content)
            self.assertIn(b"is not a log", self.inside(self.tree, "run", "--log", name, "plan", status=1).stderr)
            self.assertEqual((self.tree / name).read_bytes(), content)

    def test_a_run_that_still_waits_for_its_plan_ends_at_the_first_signal(self):
        os.mkfifo(self.tree / "pipe")
        run = subprocess.Popen([BIN / "kestrinectl", "run", "--root", ".", "--log", "log", "pipe"], cwd=self.tree, env=self.environment)
        with open(self.tree / "pipe", "wb") as plan: # opened when the run has opened it, too
            plan.write(b"kestrine-plan")
            plan.flush()
            run.send_signal(signal.SIGTERM)
            self.assertEqual(run.wait(timeout=60), -signal.SIGTERM)

    def test_a_log_of_another_version_is_refused_and_stays(self):
        self.plan()
        self.run_shards(self.tree, 1)
        log = self.tree / "plan.1-of-1.jsonl"
        changed = log.read_bytes().replace(b'"version":1', b'"version":2', 1)
        log.write_bytes(changed)
        for words in (("run", "plan"), ("merge", "plan", log.name)):
            self.assertIn(b"is from another version of kestrinectl", self.inside(self.tree, *words, status=1).stderr)
        self.assertEqual(log.read_bytes(), changed)

    def test_a_plan_from_a_pipe_needs_places_for_log_and_results(self):
        self.plan()
        content, expected = (self.tree / "plan").read_bytes(), self.expected()
        for words in ((), ("--root", "."), ("--log", "log")):
            [message] = messages_of(self.inside(self.tree, "run", *words, "/dev/stdin", status=2, input=content))
            self.assertIn("is not a regular file, so --log and --root have no default; give both", message)
        self.assertEqual(self.results(self.tree), {})
        self.inside(self.tree, "run", "--root", ".", "--log", "log", "/dev/stdin", input=content)
        self.assertEqual(self.results(self.tree), expected)
        [message] = messages_of(self.inside(self.tree, "merge", "/dev/stdin", "log", status=2, input=content))
        self.assertIn("is not a regular file", message)

    def test_an_empty_path_is_refused_in_one_line(self):
        self.plan()
        for words in (("run", ""), ("run", "--log", "", "plan"), ("run", "--root", "", "plan"), ("merge", ""), ("merge", "plan", ""),
                      ("merge", "--results", "--root", "", "plan"), ("plan", *OPTIONS, "--root", "", "in")):
            [message] = messages_of(self.inside(self.tree, *words, status=2))
            self.assertIn("must not be empty", message, words)

    def test_a_run_that_may_not_wait_fails_while_another_uses_its_log(self):
        self.plan()
        with open(self.tree / "plan.1-of-1.jsonl", "a") as log:
            fcntl.flock(log, fcntl.LOCK_EX)
            self.assertIn(b"another run uses the log", self.inside(self.tree, "run", "--no-wait", "plan", status=1).stderr)


class Planning(Scale):
    def test_replacing_cannot_be_planned(self):
        self.store({"name": "Web", "replaceFile": 1, "formatType": JPEG})
        for words in (("--longest", "30", "--replace"), ("--set", "Web")):
            done = self.inside(self.tree, "plan", *words, "in", status=2)
            self.assertEqual((done.stdout, b"replacing files cannot be planned" in done.stderr), (b"", True))

    def test_files_and_results_outside_the_root_cannot_be_planned(self):
        self.picture(self.folder / "beside.png", 1)
        self.inside(self.tree, "plan", *OPTIONS, "../beside.png", status=2)
        self.inside(self.tree, "plan", "--longest", "30", "--out", "../out", "in", status=2)
        done = self.inside(self.tree, "plan", *OPTIONS, "--root", "..", "../beside.png")
        self.assertIn(b"\0beside.png\0", done.stdout)
        self.assertIn(b"\0tree/out/beside-30.jpg\0", done.stdout)

    def test_a_list_of_files_is_planned(self):
        done = self.inside(self.tree, "plan", *OPTIONS, "--files-from", "-", "-0", input=b"in/" + ODD[1] + b"\0in/p.png\0")
        self.assertIn(b"\0in/" + ODD[1] + b"\0", done.stdout)
        self.assertEqual(messages_of(done), ["2 files planned, 4 results"])

    def test_sets_that_cannot_be_read_matter_only_where_sets_are_applied(self):
        self.write_preferences(b"junk")
        done = self.plan(files=("in/p.png",))
        self.assertIn("this run uses no presets", messages_of(done)[0])
        self.run_shards(self.tree, 1)
        self.assertEqual(len(self.results(self.tree)), 2)
        self.plan(options=("--set", "Web"), files=("in/p.png",), status=1)

    def test_what_cannot_be_opened_counts_once_however_often_it_is_named(self):
        (self.tree / "in/loop.png").symlink_to("loop.png")
        done = self.plan(files=("in", "in/loop.png"), status=1)
        self.assertIn("the plan lacks 1 item that cannot be read", messages_of(done))

    def test_what_cannot_be_read_is_reported_and_the_rest_is_planned(self):
        done = self.plan(files=("in/p.png", "absent.png"), status=1)
        self.assertEqual(messages_of(done), ["absent.png: cannot examine: No such file or directory",
                                             "the plan lacks 1 item that cannot be read"])
        self.run_shards(self.tree, 1)
        self.assertEqual(len(self.results(self.tree)), 2)

    def test_a_file_that_gives_no_result_is_not_planned(self):
        whole = (self.tree / "in/p.png").read_bytes()
        (self.tree / "no.jpg").write_text("no picture")
        (self.tree / "cut.png").write_bytes(whole[:20])
        os.mkfifo(self.tree / "pipe")
        files = ("pipe", "no.jpg", "cut.png")
        planned = self.plan(options=("--percent", "50", "--out", "out"), files=(*files, "in/p.png"), status=1)
        dry = self.inside(self.tree, "convert", "--dry-run", "--percent", "50", "--out", "out", *files, status=1)
        self.assertEqual(messages_of(planned), [*messages_of(dry)[:3], "the plan lacks 3 items that cannot be read"])
        self.run_shards(self.tree, 1)
        self.assertIn(b"all done: 1 file", self.merge(self.tree).stderr)
        self.assertEqual(messages_of(self.plan(files=("pipe", "in/p.png"), status=1))[0], "pipe: is not a regular file")

    def test_a_picture_that_cannot_be_read_fails_in_its_run(self):
        (self.tree / "in/bad.png").write_bytes((self.tree / "in/p.png").read_bytes()[:20])
        self.plan(options=("--percent", "50", "--format", "jpeg", "--out", "out"))
        done = self.inside(self.tree, "run", "plan", status=1)
        self.assertIn("in/bad.png: ", done.stderr.decode())
        self.assertIn("in/bad.png: failed", self.merge(self.tree, status=1).stdout.decode())

    def test_a_plan_is_not_written_to_a_terminal(self):
        shown = on_a_terminal(lambda terminal: subprocess.run([BIN / "kestrinectl", "plan", *OPTIONS, "in"], cwd=self.tree,
                                                              env=self.environment, stdout=terminal, stderr=terminal, check=False))
        self.assertIn(b"redirect standard output to a file", shown)

    def test_nothing_to_plan_is_an_error_unless_allowed(self):
        (self.tree / "empty").mkdir()
        self.inside(self.tree, "plan", *OPTIONS, "empty", status=1)
        self.plan("--allow-empty", files=("empty",))
        self.inside(self.tree, "run", "--shard", "2/3", "plan")
        self.merge(self.tree)


class Logs(Scale):
    def test_every_line_is_as_the_schema_says(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)
        self.plan()
        self.picture(self.tree / "in/p.png", 99)
        self.inside(self.tree, "run", "plan", status=1)
        lines = self.logged(self.tree / "plan.1-of-1.jsonl")
        validator = jsonschema.Draft202012Validator(SCHEMA)
        for line in lines:
            validator.validate(line)
        self.assertEqual(lines[0]["log"]["of"], 1)
        self.assertEqual([line["status"] for line in lines[1:-1]].count("failed"), 1)
        self.assertEqual(lines[-1]["run"]["done"], 15)
        merged = [json.loads(line) for line in self.inside(self.tree, "merge", "--json", "plan", "plan.1-of-1.jsonl", status=1).stdout.splitlines()]
        for line in merged:
            validator.validate(line)
        self.assertEqual([line["record"] for line in merged[:-1]], list(range(16)))
        for line in (lines[1] | {"more": 1}, {"log": {}}, {}):
            self.assertFalse(validator.is_valid(line))

    def test_merge_names_what_is_missing_and_which_shards_to_run_again(self):
        self.plan()
        for number in (1, 3, 4):
            self.inside(self.tree, "run", "-q", "--shard", f"{number}/4", "plan")
        left = self.inside(self.tree, "run", "--shard", "2/4", "--list", "sources", "plan").stdout.split(b"\0")[:-1]
        self.assertGreater(len(left), 0)
        done = self.merge(self.tree, status=1)
        self.assertEqual(done.stdout, b"".join(name + b": missing\n" for name in left))
        logs = [path.name for path in self.tree.glob("plan.*.jsonl")]
        self.assertEqual(self.inside(self.tree, "merge", "--shards", "4", "plan", *logs, status=1).stdout, b"2\n")
        missing = [json.loads(line) for line in self.inside(self.tree, "merge", "--json", "plan", *logs, status=1).stdout.splitlines()]
        self.assertEqual([item["status"] for item in missing[:-1]].count("missing"), len(left))
        self.assertEqual(missing[-1], {"merge": {"done": 16 - len(left), "failed": 0, "missing": len(left)}})

    def test_merge_finds_lost_and_changed_results_when_asked(self):
        self.plan()
        self.run_shards(self.tree, 1)
        tree = self.folder / "copy"
        shutil.copytree(self.tree, tree, copy_function=shutil.copyfile) # with other times
        log = "plan.1-of-1.jsonl"
        self.inside(tree, "merge", "--results", "plan", log)
        (tree / "out/p-30.jpg").unlink()
        (tree / "out/sub/p-20.jpg").write_bytes((tree / "out/sub/p-20.jpg").read_bytes()[::-1])
        self.inside(tree, "merge", "plan", log)
        done = self.inside(tree, "merge", "--results", "plan", log, status=1)
        self.assertEqual(done.stdout, b"in/p.png: missing\nin/sub/p.png: missing\n")
        self.inside(tree, "merge", "--results", "--root", self.tree, "plan", log)

    def test_the_names_of_a_shard_are_listed_for_other_programs(self):
        self.plan()
        sources = b"".join(self.inside(self.tree, "run", "--shard", f"{number}/5", "--list", "sources", "plan").stdout for number in range(1, 6))
        results = b"".join(self.inside(self.tree, "run", "--shard", f"{number}/5", "--list", "results", "plan").stdout for number in range(1, 6))
        self.assertFalse((self.tree / "out").exists())
        self.run_shards(self.tree, 1)
        self.assertEqual(sorted(sources.split(b"\0")[:-1]),
                         sorted(os.fsencode(path.relative_to(self.tree)) for path in (self.tree / "in").rglob("*") if path.is_file()))
        self.assertEqual(sorted(results.split(b"\0")[:-1]), sorted(self.results(self.tree)))


if __name__ == "__main__":
    main()
