"""The companion: presets are made, shown, changed; everything else in the preferences stays."""
import json
import os
import plistlib
import subprocess
import unittest

import pictures
from tools import BIN, ToolTest, main


class Sets(ToolTest):
    def control(self, *arguments, status=0, **options):
        done = self.kestrinectl("sets", *arguments, **options)
        self.assertEqual(done.returncode, status, done)
        if status == 0:
            self.assertEqual(done.stderr, b"")
        else:
            self.assertEqual(done.stdout, b"")
            self.assertRegex(done.stderr, rb"\Akestrinectl: [^\n]+\n\Z")
        return done.stdout.decode(errors="replace") if status == 0 else done.stderr.decode()

    def exported(self, *names):
        return json.loads(self.control("export", *names))["sets"]

    def test_a_set_that_was_added_is_listed_and_applied_by_the_quiet_tool(self):
        self.control("add", "Web", "--longest", "30", "--format", "jpeg", "--quality", "62.5")
        self.assertEqual(self.kestrine("-l"), b"Web\n")
        (self.folder / "a.png").write_bytes(b"")
        pictures.image(pictures.photo(60, 40)).save(self.folder / "a.png")
        self.kestrine("-set", "Web", "a.png")
        self.assertEqual(self.names("Web"), [b"a.jpg"])

    def test_options_set_their_fields_and_leave_the_others_at_their_defaults(self):
        self.control("add", "A", "--width", "80", "--format", "tiff", "--no-high-quality", "--rotate")
        set_ = self.exported("A")[0]
        self.assertEqual((set_["resizeType"], set_["width"], set_["height"]), ("size", 80, 0))
        self.assertEqual((set_["formatType"], set_["highQuality"], set_["autoRotate"]), ("tiff", False, True))
        self.assertEqual((set_["convertResolution"], set_["replaceFile"], set_["compression"]), (True, False, 70))

    def test_edit_changes_only_what_is_said(self):
        self.control("add", "A", "--percent", "33.3", "--format", "gif", "--exif")
        before = self.exported("A")[0]
        self.control("edit", "A", "--name", "B", "--quality", "10")
        self.assertEqual(self.exported("B")[0], {**before, "name": "B", "compression": 10})

    def test_sets_are_found_by_name_or_position_and_doubtful_names_are_refused(self):
        for name in ("A", "B", "A"):
            self.control("add", name)
        self.assertIn("2 sets are named A", self.control("show", "A", status=1))
        self.control("edit", "@3", "--name", "C")
        self.assertEqual([s["name"] for s in self.exported()], ["A", "B", "C"])
        self.assertIn("there is no set D", self.control("remove", "D", status=1))
        self.assertIn("there is no set @4", self.control("remove", "@4", status=1))

    def test_removing_keeps_the_selection_on_the_sets_that_stay(self):
        for name in "ABCD":
            self.control("add", name)
        self.control("select", "B", "D")
        self.control("remove", "A", "B")
        self.assertEqual([line[0] for line in self.control("list").splitlines()], [" ", "*"])
        self.control("select", "--all")
        self.assertEqual([line[0] for line in self.control("list").splitlines()], ["*", "*"])
        self.control("select", "--none")
        self.assertEqual([line[0] for line in self.control("list").splitlines()], [" ", " "])

    def test_show_names_the_surprises(self):
        self.control("add", "Web", "--longest", "1200", "--format", "jpeg", "--rotate", "--no-convert-resolution",
                     "--replace", "--exif")
        text = self.control("show", "Web")
        for phrase in ("1201", "little-endian", "points", "enlarged", "trash", "white"):
            self.assertIn(phrase, text)

    def test_export_and_import_are_inverse_for_every_stored_value(self):
        odd = [{"name": "Odd", "resizeType": 77, "formatType": -5, "highQuality": 3, "height": 0.1, "width": 1e30},
               {"name": b"\xff\x80"}, {"name": None}, {"name": "Inf", "ratio": float("inf"), "maxSize": float("nan")}]
        self.store(*odd)
        exported = self.control("export")
        self.preferences.unlink()
        (self.folder / "sets.json").write_text(exported)
        self.control("import", "sets.json")
        self.assertEqual(self.control("export"), exported)
        self.control("import", "-", input=exported.encode())
        self.assertEqual(len(self.exported()), 8)

    def test_import_can_take_the_place_of_sets_with_the_same_name(self):
        self.control("add", "A", "--percent", "10")
        self.control("add", "B")
        (self.folder / "x.json").write_text(json.dumps([{"name": "A", "resizeType": "ratio", "ratio": 20}, {"name": "C"}]))
        self.control("import", "--replace", "x.json")
        self.assertEqual([(s["name"], s["ratio"]) for s in self.exported()], [("A", 20), ("B", 100), ("C", 100)])

    def test_a_bad_import_changes_nothing_and_says_where(self):
        self.control("add", "A")
        before = self.preferences.read_bytes()
        for content, phrase in (("{", "no JSON"), ("[1]", "set 1"), ('[{"colour": 1}]', "colour"),
                                ('[{"name": "B"}, {"width": "x"}]', "set 2"), ('[{"highQuality": 300}]', "highQuality"),
                                ('[{"formatType": "bmp"}]', "formatType"), ('[{"width": 1e39}]', "width"),
                                ('[{"resizeType": 18446744073709551615}]', "resizeType"),
                                ('[{"resizeType": 4294967296}]', "resizeType"),
                                ('[{"name": ' + "[" * 300000 + "]" * 300000 + "}]", "deep"), ('[{"width": null}]', "width")):
            (self.folder / "x.json").write_text(content)
            self.assertIn(phrase, self.control("import", "x.json", status=1))
        self.assertIn("cannot read", self.control("import", "none.json", status=1))
        self.assertEqual(self.preferences.read_bytes(), before)

    def test_other_keys_and_the_form_of_the_file_are_kept(self):
        other = {"Window Frame": "0 0 10 10", "Recent": ["/a", "/b"], "Count": 7, "Ratio": 0.5, "On": True,
                 "Blob": b"\0\1", "Deep": {"x": {"y": [1, 2]}}}
        for form, head in ((plistlib.FMT_XML, b"<?xml"), (plistlib.FMT_BINARY, b"bplist00")):
            self.store({"name": "A"}, form=form, **other)
            self.control("add", "B")
            content = self.preferences.read_bytes()
            self.assertTrue(content.startswith(head))
            stored = plistlib.loads(content)
            self.assertEqual({key: stored[key] for key in other}, other)
            self.assertEqual(self.kestrine("-l"), b"A\nB\n")

    def test_broken_presets_are_never_overwritten(self):
        self.write_preferences(b"broken")
        self.assertIn("cannot be read", self.control("add", "A", status=1))
        self.write_preferences(plistlib.dumps({"resizeSets": b"broken"}))
        self.assertIn("cannot be read", self.control("add", "A", status=1))
        self.assertEqual(plistlib.loads(self.preferences.read_bytes()), {"resizeSets": b"broken"})

    def test_a_system_file_is_copied_before_it_is_changed(self):
        system = self.home / "etc"
        system.mkdir()
        self.store({"name": "System"})
        self.preferences.rename(system / "quov.Kestrine.plist")
        before = (system / "quov.Kestrine.plist").read_bytes()
        self.environment["XDG_CONFIG_DIRS"] = str(system)
        self.control("add", "Mine")
        self.assertEqual((system / "quov.Kestrine.plist").read_bytes(), before)
        self.assertEqual(self.kestrine("-l"), b"System\nMine\n")

    def test_names_in_brackets_are_names(self):
        for name in ("a", "b", "[a,b]", "[]", "[x]"):
            self.control("add", name)
        self.control("remove", "[a,b]", "[]")
        self.control("edit", "[x]", "--name", "[y]")
        self.assertEqual([s["name"] for s in self.exported()], ["a", "b", "[y]"])
        self.control("select", "[y]")
        self.assertIn("* @3  [y]", self.control("list"))

    def test_changes_made_at_the_same_time_are_all_kept(self):
        processes = [subprocess.Popen([BIN / "kestrinectl", "sets", "add", f"s{n}"], env=self.environment)
                     for n in range(12)]
        self.assertEqual([process.wait() for process in processes], [0] * 12)
        self.assertEqual(sorted(s["name"] for s in self.exported()), sorted(f"s{n}" for n in range(12)))
        self.assertEqual(sorted(path.name for path in self.preferences.parent.iterdir()), [self.preferences.name])

    def test_of_a_switch_and_its_opposite_the_last_counts(self):
        self.control("add", "A", "--no-exif", "--exif", "--high-quality", "--no-high-quality")
        self.assertEqual((self.exported("A")[0]["attachExifData"], self.exported("A")[0]["highQuality"]), (True, False))

    def test_where_names_the_file_even_when_it_is_broken(self):
        self.assertEqual(self.control("where"), str(self.preferences) + "\n")
        self.write_preferences(b"broken")
        self.assertEqual(self.control("where"), str(self.preferences) + "\n")

    @unittest.skipIf(os.getuid() == 0, "root may look into every folder")
    def test_a_folder_that_may_not_be_searched_is_no_empty_list(self):
        self.store({"name": "A"})
        self.preferences.parent.chmod(0)
        self.addCleanup(self.preferences.parent.chmod, 0o700)
        self.assertIn("cannot be read", self.control("list", status=1))

    def test_wrong_arguments_end_with_2_and_one_line(self):
        for arguments in ((), ("add",), ("nonsense",), ("add", "A", "--format", "bmp"), ("add", "A", "--quality", "101"),
                          ("add", "A", "--width", "5", "--percent", "5"), ("select",),
                          ("add", "A", "--width", "nan"), ("add", "A", "--quality", "nan"), ("add", "A", "--percent", "inf"), ("add", "A", "--width", "wide")):
            self.control(*arguments, status=2)
        self.assertEqual(self.kestrinectl().returncode, 2)

    def test_help_is_no_error(self):
        for arguments in (("--help",), ("sets", "--help"), ("sets", "add", "--help")):
            done = self.kestrinectl(*arguments)
            self.assertEqual((done.returncode, done.stderr), (0, b""))
            self.assertIn(b"Usage:", done.stdout)


if __name__ == "__main__":
    main()
