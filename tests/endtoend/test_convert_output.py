"""What kestrinectl convert says: totals, details, progress, and JSON for scripts."""
import json
import os
import shutil
import subprocess
from pathlib import Path

import jsonschema

import pictures
from tools import BIN, JPEG, ToolTest, main, on_a_terminal

SCHEMA = json.loads((Path(__file__).resolve().parent.parent.parent / "share/convert.schema.json").read_text())


class Output(ToolTest):
    def setUp(self):
        super().setUp()
        for name in ("a.png", "b.png"):
            pictures.image(pictures.photo(60, 40)).save(self.folder / name)

    def convert(self, *arguments, size="30"):
        return self.kestrinectl("convert", "--longest", size, "--out", "out", *arguments)


class Totals(Output):
    def test_the_last_line_has_the_totals(self):
        done = self.convert("--format", "jpeg", "a.png", "b.png")
        self.assertRegex(done.stderr.decode(), r"\Akestrinectl: 2 files converted, [\d.]+ kB -> ([\d.]+ kB|\d+ bytes) in [\d.]+ m?s\n\Z")

    def test_failures_are_counted_by_reason(self):
        (self.folder / "cut.png").write_bytes((self.folder / "a.png").read_bytes()[:900])
        done = self.convert("a.png", "absent.png", "cut.png", "b.png")
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr.decode().splitlines()[-1],
                         r"\Akestrinectl: 2 of 4 files could not be converted as requested \(1 damaged, 1 not found\); "
                         r"2 files converted, ")

    def test_one_file_alone_and_quiet_runs_have_none(self):
        self.assertEqual(self.convert("a.png").stderr, b"")
        self.assertEqual(self.convert("-q", "a.png", "b.png").stderr, b"")

    def test_a_dry_run_counts_what_would_be_converted(self):
        self.assertRegex(self.convert("--dry-run", "a.png", "b.png").stderr, rb"\Akestrinectl: 2 files would be converted in ")


class Details(Output):
    def test_verbose_adds_sizes_and_times(self):
        line = self.convert("-v", "a.png").stdout.decode()
        self.assertRegex(line, r"\Aa\.png -> .*/out/a\.png \(30 x 20 PNG, [\d.]+ kB -> [\d.]+ (kB|bytes), \d+ ms\)\n\Z")

    def test_verbose_and_quiet_contradict_each_other(self):
        self.assertEqual(self.convert("-v", "-q", "a.png").returncode, 2)


class Progress(Output):
    def on_a_terminal(self, *arguments, **environment):
        command = [BIN / "kestrinectl", "convert", "--longest", "300", "--out", "out", *arguments]
        return on_a_terminal(lambda terminal: subprocess.run(
            command, cwd=self.folder, env={**self.environment, **environment}, stderr=terminal, stdout=subprocess.DEVNULL,
            check=True, timeout=120)).decode()

    def test_a_terminal_shows_rate_sizes_and_remaining_time(self):
        pictures.image(pictures.photo(3000, 2000)).save(self.folder / "large.png", compress_level=1)
        for i in range(12):
            shutil.copy(self.folder / "large.png", self.folder / f"p{i}.png")
        shown = self.on_a_terminal("-j1", ".")
        steps = shown.split("\r\x1b[K")
        self.assertTrue(any(step.startswith("1 of 15 files") for step in steps), shown)
        self.assertRegex(shown, r"\d+ of 15 files, [\d.]+ per second, [\d.]+ MB -> [\d.]+ [kM]B, [\d.]+ m?s left")
        self.assertLess(max(len(step) for step in steps[:-2]), 80)
        self.assertRegex(steps[-2], r"\Akestrinectl: 15 files converted")

    def test_dumb_terminals_and_pipes_show_nothing(self):
        self.assertNotIn(" of ", self.on_a_terminal("a.png", "b.png", TERM="dumb"))
        self.assertNotIn(b" of ", self.convert("a.png", "b.png").stderr)


class JSON(Output):
    def objects(self, *arguments, status=0, stderr=b"", **options):
        """The objects of the files, and the totals. Each must be as the schema says."""
        done = self.convert("--json", *arguments, **options)
        self.assertEqual((done.returncode, done.stderr), (status, stderr), done)
        objects = [json.loads(line) for line in done.stdout.splitlines()]
        for item in objects:
            jsonschema.Draft202012Validator(SCHEMA).validate(item)
        self.assertEqual(objects[-1]["run"]["exitStatus"], status)
        return objects[:-1], objects[-1]["run"]

    def test_the_schema_itself_is_valid_and_refuses_other_objects(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)
        files, run = self.objects("a.png")
        for item in (files[0] | {"more": 1}, {"run": run | {"ms": -1}}, files[0] | {"status": "good"}, {}):
            self.assertFalse(jsonschema.Draft202012Validator(SCHEMA).is_valid(item), item)

    def test_every_file_is_an_object_with_its_results(self):
        files, run = self.objects("--format", "jpeg", "a.png", "b.png", size="30,15")
        self.assertEqual([(item["source"], item["status"], len(item["outputs"])) for item in files],
                         [("a.png", "done", 2), ("b.png", "done", 2)])
        output = files[0]["outputs"][1]
        path = self.folder / "out/a-15.jpg"
        self.assertEqual(output, {"path": str(path), "set": None, "format": "jpeg", "width": 15, "height": 10,
                                  "bytes": path.stat().st_size, "copied": False})
        self.assertEqual((run["done"], run["outputs"], run["journal"]), (2, 4, None))
        self.assertEqual(run["bytesBefore"], sum((self.folder / name).stat().st_size for name in ("a.png", "b.png")))
        self.assertEqual(run["bytesAfter"], sum(path.stat().st_size for path in (self.folder / "out").iterdir()))

    def test_sets_are_named(self):
        self.store({"name": "Web", "formatType": JPEG})
        files, _ = self.objects("--set", "Web", "a.png")
        self.assertEqual(files[0]["outputs"][0]["set"], "Web")

    def test_failures_and_what_was_left_out_are_objects_too(self):
        self.store({"name": "Web"})
        (self.folder / "Web").mkdir()
        (self.folder / "text.txt").write_text("words")
        (self.folder / "bad.heic").write_text("words")
        files, run = self.objects("-r", ".", "absent.png", status=1,
                                  stderr=b"kestrinectl: 2 of 4 files could not be converted as requested (1 not found, 1 not supported)\n")
        self.assertEqual({item["source"]: (item["status"], item["kind"]) for item in files},
                         {"a.png": ("done", None), "b.png": ("done", None), "absent.png": ("failed", "not found"),
                          "bad.heic": ("failed", "not supported"), "Web": ("left-out", None)})
        self.assertEqual((run["failures"], run["otherFiles"]), ({"not found": 1, "not supported": 1}, 1))
        self.assertIn("No such file", [item["reason"] for item in files if item["source"] == "absent.png"][0])

    def test_a_dry_run_names_the_results(self):
        files, run = self.objects("--dry-run", "--format", "jpeg", "a.png")
        self.assertEqual((files[0]["status"], files[0]["outputs"][0]["path"], files[0]["outputs"][0]["format"]),
                         ("would", str(self.folder / "out/a.jpg"), "jpeg"))
        self.assertEqual((run["would"], run["done"]), (1, 0))

    def test_a_file_that_fits_already_is_skipped(self):
        done = self.kestrinectl("convert", "--json", "--longest", "100", "--skip-fitting", "--replace", "--no-enlarge", "a.png")
        item, run = (json.loads(line) for line in done.stdout.splitlines())
        self.assertEqual((item["status"], item["reason"], run["run"]["skipped"]), ("skipped", "it already has the requested size and format", 1))

    def test_names_that_are_not_utf8_are_hexadecimal_digits(self):
        shutil.copy(self.folder / "a.png", os.fsencode(self.folder) + b"/\xff\n\".png")
        files, _ = self.objects("--", b"\xff\n\".png")
        self.assertEqual(bytes.fromhex(files[0]["source"]["bytes"]), b"\xff\n\".png")
        self.assertTrue(bytes.fromhex(files[0]["outputs"][0]["path"]["bytes"]).endswith(b"/out/\xff\n\".png"))

    def test_nothing_to_convert_has_totals_as_well(self):
        (self.folder / "empty").mkdir()
        files, run = self.objects("empty", status=1, stderr=b"kestrinectl: nothing to convert\n")
        self.assertEqual((files[0]["status"], run["done"]), ("left-out", 0))

    def test_it_does_not_go_with_standard_output_as_result(self):
        self.assertEqual(self.kestrinectl("convert", "--json", "--longest", "3", "-", input=b"").returncode, 2)


if __name__ == "__main__":
    main()
