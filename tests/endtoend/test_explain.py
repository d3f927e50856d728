"""kestrinectl explain and doctor."""
import json
import re
import shutil
import subprocess
from pathlib import Path

import pictures
from PIL import Image
from tools import BIN, JPEG, PNG, ToolTest, main, messages_of

SOURCES = Path(__file__).resolve().parent.parent.parent / "src"


class Explain(ToolTest):
    def setUp(self):
        super().setUp()
        self.store({"name": "Web", "formatType": JPEG, "resizeType": 2, "maxSize": 60.0, "autoRotate": 1},
                   {"name": "Half", "formatType": PNG, "resizeType": 1, "ratio": 50.0, "replaceFile": 1},
                   {"name": "None", "formatType": 77})

    def picture(self, name, orientation, order=">"):
        (self.folder / name).write_bytes(pictures.jpeg(pictures.photo(120, 80), pictures.exif(orientation, order)))

    def explain(self, *arguments, status=0):
        done = self.kestrinectl("explain", *arguments)
        self.assertEqual(done.returncode, status, done)
        return done.stdout.decode()

    def test_names_and_sizes_are_those_of_the_real_results(self):
        for name, orientation, order in (("a.jpg", 6, ">"), ("b.jpg", 6, "<"), ("c.jpg", 3, ">"), ("d.JPG", 1, ">")):
            self.picture(name, orientation, order)
            for _ in range(2):
                before = {path.name for path in (self.folder / "Web").iterdir()} if (self.folder / "Web").exists() else set()
                explained = json.loads(self.explain("--json", "--set", "Web", name))["sets"][0]
                self.kestrinectl("convert", "--set", "Web", name)
                [made] = {path.name for path in (self.folder / "Web").iterdir()} - before
                self.assertEqual(explained["path"], str(self.folder / "Web" / made))
                self.assertEqual((explained["width"], explained["height"]), Image.open(self.folder / "Web" / made).size)

    def test_what_a_picture_is_stands_in_words(self):
        photo = Image.fromarray(pictures.photo(120, 80))
        photo.save(self.folder / "a.png", icc_profile=pictures.wide_icc())
        self.assertIn("PNG, 120 x 80 pixels, RGB, 8 bits per sample, the colour profile Wide.", self.explain("a.png"))
        self.picture("b.jpg", 8)
        self.assertIn("Orientation 8: to be turned 90 degrees counterclockwise.", self.explain("b.jpg"))
        photo.save(self.folder / "c.gif", save_all=True, append_images=[photo.rotate(90)])
        self.assertIn("only frame 1 of 2 is converted", self.explain("c.gif"))

    def test_it_says_why_a_picture_is_not_turned(self):
        self.picture("little.jpg", 6, "<")
        self.picture("down.jpg", 3)
        self.assertIn("presets read the orientation only from big-endian EXIF data", self.explain("--set", "Web", "little.jpg"))
        self.assertIn("presets only turn by a quarter", self.explain("--set", "Web", "down.jpg"))
        self.assertIn("because the set does not turn pictures", self.explain("--set", "Half", "down.jpg"))

    def test_an_empty_path_and_a_removed_folder_are_named_in_words(self):
        self.assertEqual(messages_of(self.kestrinectl("explain", "")), ["an empty argument names no file"])
        gone = 'mkdir gone && cd gone && rmdir ../gone && exec "$0" explain a.jpg'
        done = subprocess.run(["sh", "-c", gone, BIN / "kestrinectl"], cwd=self.folder, env=self.environment, capture_output=True)
        self.assertEqual(messages_of(done), ["the current folder cannot be found: No such file or directory"])

    def test_all_sets_are_explained_and_nothing_is_written(self):
        self.picture("a.jpg", 1)
        text = self.explain("a.jpg")
        for words in ("Set Web:", "the longer side of the result is 61", "Set Half:", "Moves the original to the trash",
                      f"{self.folder}/a.png", "Set None:", "Writes nothing."):
            self.assertIn(words, text)
        self.assertEqual(self.names(), [b"a.jpg"])

    def test_a_result_with_too_long_a_side_is_said_to_be_too_large(self):
        self.store({"name": "Huge", "formatType": PNG, "resizeType": 1, "ratio": 100000.0})
        pictures.image(pictures.photo(1200, 2)).save(self.folder / "wide.png")
        reason = "a side of the result would be longer than 1000000 pixels"
        self.assertIn(f"Gives no result, because {reason}.", self.explain("wide.png"))
        for words in (("--set", "Huge"), ("--percent", "100000", "--out", "x")):
            done = self.kestrinectl("convert", *words, "wide.png")
            self.assertEqual(messages_of(done)[0], "wide.png: " + reason)

    def test_what_is_no_picture_is_an_error(self):
        (self.folder / "a.txt").write_text("words")
        self.explain("a.txt", status=1)
        self.explain("absent.jpg", status=1)
        self.explain("--set", "Nope", "a.txt", status=1)


class Doctor(ToolTest):
    def doctor(self, *arguments, status=0, **environment):
        done = self.kestrinectl("doctor", *arguments, environment={**self.environment, **environment})
        self.assertEqual(done.returncode, status, done)
        return done.stdout.decode(), messages_of(done)

    def test_it_says_which_preferences_file_is_used_and_why(self):
        self.assertIn(f"no file yet; 'kestrinectl sets add NAME' creates {self.preferences}", self.doctor()[0])
        self.store({"name": "Web"})
        other = self.home / "Library/Preferences/quov.Kestrine.plist"
        other.parent.mkdir(parents=True)
        shutil.copy(self.preferences, other)
        text, _ = self.doctor()
        self.assertIn(f"{self.preferences}: used, because it is the first that exists", text)
        self.assertIn(f"{other}: not used, because another file comes first", text)
        self.assertIn("1 set, 0 selected", text)

    def test_a_broken_archive_is_an_error_that_says_what_to_do(self):
        self.store({"name": "Web"})
        self.write_preferences(self.preferences.read_bytes().replace(b"streamtyped", b"streamtypes"))
        text, messages = self.doctor(status=1)
        self.assertIn("broken: kestrine ignores them", text)
        self.assertRegex(messages[0], "cannot be read .*; repair the file or move it away")

    def test_equal_and_misleading_names_are_found(self):
        self.store({"name": "Web"}, {"name": "Web"}, {"name": "a/b"})
        text, _ = self.doctor()
        self.assertIn('@2 "Web": @1 has the same name', text)
        self.assertIn('@3 "a/b": ', text)

    def test_it_says_where_originals_go(self):
        text, _ = self.doctor(self.folder)
        self.assertIn(f"originals go to {self.home}/.local/share/Trash", text)
        self.assertFalse((self.home / ".local").exists(), "it only looks")
        self.assertEqual(self.doctor("absent", status=1)[1], ["absent is not a folder; name an existing one"])
        self.assertEqual(self.doctor("", status=2)[1], ["FOLDER: must not be empty; 'kestrinectl help doctor' explains its use"])

    def test_it_says_why_originals_cannot_go_to_the_trash(self):
        (self.folder / "fixed").mkdir(mode=0o555)
        done = self.run_without_rights("doctor", "fixed", program="kestrinectl")
        self.assertIn(b"originals cannot go to the trash: the folder is not writable", done.stdout)
        self.home.chmod(0o555)
        self.addCleanup(self.home.chmod, 0o755)
        done = self.run_without_rights("doctor", program="kestrinectl")
        self.assertIn(b"originals cannot go to the trash: ", done.stdout)

    def test_names_that_look_equal_are_found(self):
        self.store({"name": "Caf\u00e9"}, {"name": "Cafe\u0301"})
        text, _ = self.doctor()
        self.assertIn("the name of @2 looks the same, but its letters are composed differently", text)
        self.assertIn("the name of @1 looks the same", text)

    def test_json_says_the_same_as_the_lines(self):
        self.store({"name": "Web"}, {"name": "a/b"})
        told = json.loads(self.doctor("--json", self.folder)[0])
        text, _ = self.doctor(self.folder)
        for layer in told["isolation"]:
            self.assertIn(f"  {layer['layer']}: {'in force' if layer['inForce'] else 'missing'} ({layer['purpose']})\n", text)
        preferences = told["preferences"]
        self.assertEqual([(place["path"], place["used"]) for place in preferences["files"] if place["exists"]], [(str(self.preferences), True)])
        self.assertEqual((preferences["sets"], preferences["selected"], preferences["problem"]), (2, 0, None))
        self.assertEqual([(finding["position"], finding["set"]) for finding in preferences["findings"]], [(2, "a/b")])
        self.assertEqual(told["trash"], {"folder": str(self.folder), "possible": True, "text": text.splitlines()[-1].strip()})

    def test_json_names_what_is_broken(self):
        self.write_preferences(b"no archive")
        (self.folder / "fixed").mkdir(mode=0o555)
        done = self.run_without_rights("doctor", "--json", "fixed", program="kestrinectl")
        told = json.loads(done.stdout)
        self.assertIn(told["preferences"]["problem"], done.stderr.decode())
        self.assertNotEqual(told["preferences"]["problem"], "")
        self.assertFalse(told["trash"]["possible"])
        self.assertEqual(done.returncode, 1)

    def test_it_knows_every_library_that_is_opened_on_demand(self):
        sources = "".join(path.read_text() for path in SOURCES.rglob("*.cpp"))
        self.assertEqual(re.findall(r'"lib[\w-]+\.so\.[\d.]+"', sources), [], "a name that the build does not find")
        table = (BIN.parent / "src/platform/host/SystemLibraryTable.cpp").read_text()
        known = dict(re.findall(r'\{OnDemand::(\w+), "lib[^"]+", "([^"]+)"', table))
        any_version = {"icu"}
        self.assertEqual(set(known), set(re.findall(r"OnDemand::(\w+)", sources)) | any_version)
        needed = (SOURCES.parent / "scripts/install-dependencies").read_text()
        for package in known.values():
            self.assertIn(f" {package} ", needed.replace("\n", " "))

    def test_all_libraries_are_there(self):
        self.assertRegex(self.doctor()[0], r"libraries:\n  (none is missing|lib\S+ is missing, for .*; 'apt install \S+' installs it)\n")


if __name__ == "__main__":
    main()
