"""kestrinectl sets: creates, shows and changes presets, and keeps all other preferences."""
import json
import os
import plistlib
import subprocess
import unittest

import pictures
from tools import BIN, JPEG, ToolTest, main, on_a_terminal


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

    def stored_names(self):
        return [s["name"] for s in self.exported()]

    def warned(self, *arguments):
        """What a command that succeeds prints to standard error."""
        done = self.kestrinectl("sets", *arguments)
        self.assertEqual(done.returncode, 0, done)
        return done.stderr.decode()

    def on_a_terminal(self, *arguments):
        """What a command prints to a terminal, both streams together."""
        shown = on_a_terminal(lambda terminal: subprocess.run(
            [BIN / "kestrinectl", *arguments], env=self.environment, cwd=self.folder, stdout=terminal, stderr=terminal,
            stdin=subprocess.DEVNULL, timeout=120))
        return shown.decode().replace("\r\n", "\n")

    def test_kestrine_lists_and_applies_an_added_set(self):
        self.control("add", "Web", "--longest", "30", "--format", "jpeg", "--quality", "62.5")
        self.assertEqual(self.kestrine("-l"), b"Web\n")
        (self.folder / "a.png").write_bytes(b"")
        pictures.image(pictures.photo(60, 40)).save(self.folder / "a.png")
        self.kestrine("-set", "Web", "a.png")
        self.assertEqual(self.names("Web"), [b"a.jpg"])

    def test_options_set_their_fields_and_other_fields_have_defaults(self):
        self.control("add", "A", "--width", "80", "--format", "tiff", "--no-high-quality", "--rotate")
        set_ = self.exported("A")[0]
        self.assertEqual((set_["resizeType"], set_["width"], set_["height"]), ("size", 80, 0))
        self.assertEqual((set_["formatType"], set_["highQuality"], set_["autoRotate"]), ("tiff", False, True))
        self.assertEqual((set_["convertResolution"], set_["replaceFile"], set_["compression"]), (True, False, 70))

    def test_edit_keeps_fields_without_an_option(self):
        self.control("add", "A", "--percent", "33.3", "--format", "gif", "--exif")
        before = self.exported("A")[0]
        self.control("edit", "A", "--name", "B", "--quality", "10")
        self.assertEqual(self.exported("B")[0], {**before, "name": "B", "compression": 10})

    def test_sets_are_found_by_name_or_position_and_ambiguous_names_are_refused(self):
        self.store({"name": "A"}, {"name": "B"}, {"name": "A"})
        self.assertIn('2 sets are named "A"', self.control("show", "A", status=1))
        self.control("edit", "@3", "--name", "C")
        self.assertEqual(self.stored_names(), ["A", "B", "C"])
        self.assertIn('no set named "D"; \'kestrinectl sets list\' lists all', self.control("remove", "D", status=1))
        self.assertIn('no set named "@4"', self.control("remove", "@4", status=1))

    def test_removing_keeps_the_selection_of_the_remaining_sets(self):
        for name in "ABCD":
            self.control("add", name)
        self.control("select", "B", "D")
        self.control("remove", "A", "B")
        self.assertEqual([line[0] for line in self.control("list").splitlines()], [" ", "*"])
        self.control("select", "--all")
        self.assertEqual([line[0] for line in self.control("list").splitlines()], ["*", "*"])
        self.control("select", "--none")
        self.assertEqual([line[0] for line in self.control("list").splitlines()], [" ", " "])

    def test_show_names_surprising_effects(self):
        self.control("add", "Web", "--longest", "1200", "--format", "jpeg", "--rotate", "--no-convert-resolution",
                     "--replace", "--exif")
        text = self.control("show", "Web")
        for phrase in ("1201", "little-endian", "points", "enlarged", "trash", "white"):
            self.assertIn(phrase, text)

    def test_show_describes_what_each_format_can_store(self):
        for format_, sentence in (
            ("jpeg", "Writes JPEG at quality 80 %, with the colour profile and the camera's EXIF data."),
            ("png", "Writes PNG, with the colour profile."),
            ("tiff", "Writes TIFF, with the colour profile."),
            ("gif", "Writes GIF."),
        ):
            self.control("add", format_, "--format", format_, "--quality", "80", "--exif")
            lines = self.control("show", format_).splitlines()
            self.assertIn(sentence, [line.strip() for line in lines])
            self.assertEqual(any("only JPEG output can carry EXIF data" in line for line in lines), format_ != "jpeg")
            self.assertEqual(any("transparent parts become white" in line for line in lines), format_ == "jpeg")
        self.control("edit", "jpeg", "--no-exif")
        self.assertIn("with the colour profile, without EXIF data.", self.control("show", "jpeg"))

    def test_export_and_import_are_inverse_for_every_stored_value(self):
        odd = [{"name": "Odd", "resizeType": 77, "formatType": -5, "highQuality": 3, "height": 0.1, "width": 1e30},
               {"name": b"\xff\x80"}, {"name": None}, {"name": "Inf", "ratio": float("inf"), "maxSize": float("nan")}]
        self.store(*odd)
        exported = self.control("export")
        self.preferences.unlink()
        (self.folder / "sets.json").write_text(exported)
        self.control("import", "--any-name", "sets.json")
        self.assertEqual(self.control("export"), exported)
        self.control("import", "--any-name", "--rename", "-", input=exported.encode())
        self.assertEqual(len(self.exported()), 8)

    def test_a_list_without_sets_says_so_on_standard_error(self):
        self.assertEqual(self.warned("list"),
                         "kestrinectl: no sets are stored; 'kestrinectl sets add NAME' adds one\n")

    def test_what_cannot_be_imported_is_named_with_the_reason(self):
        self.assertIn("standard input is not a JSON export of sets", self.control("import", "-", input=b"{}", status=1))
        for path, message in (("absent.json", "the export absent.json cannot be opened: No such file or directory"),
                              (".", "the export . is a folder"),
                              ("/proc/self/mem", "the export /proc/self/mem cannot be read: Input/output error"),
                              ("/dev/zero", "the export /dev/zero is too large: it may have at most 17 MB")):
            self.assertEqual(self.control("import", path, status=1), f"kestrinectl: {message}\n")
        self.assertIn("FILE: must not be empty", self.control("import", "", status=2))

    def test_sets_are_imported_from_pipes(self):
        self.control("import", "-", input=b'[{"name": "A"}]')
        reading, writing = os.pipe()
        os.write(writing, b'[{"name": "B"}]')
        os.close(writing)
        self.control("import", f"/dev/fd/{reading}", pass_fds=(reading,))
        os.close(reading)
        self.assertEqual(self.kestrine("-l"), b"A\nB\n")

    def write_sets(self, *sets):
        (self.folder / "x.json").write_text(json.dumps(sets))

    def test_a_name_that_exists_is_refused_by_add_edit_and_import(self):
        self.control("add", "A")
        self.control("add", "B")
        before = self.preferences.read_bytes()
        self.write_sets({"name": "C"}, {"name": "A"})
        for arguments in (("add", "A"), ("edit", "B", "--name", "A"), ("import", "x.json")):
            self.assertIn('a set named "A" exists already', self.control(*arguments, status=1))
        self.assertEqual(self.preferences.read_bytes(), before)
        self.control("edit", "A", "--name", "A", "--quality", "5")
        self.assertEqual(self.exported("A")[0]["compression"], 5)

    def test_sets_are_found_however_the_letters_of_their_names_are_composed(self):
        composed, decomposed = "Caf\u00e9", "Cafe\u0301"
        self.control("add", decomposed, "--longest", "30")
        self.assertEqual(self.exported(composed)[0]["name"], decomposed)
        self.control("add", composed, "--longest", "40")
        self.assertEqual([self.exported(name)[0]["name"] for name in (composed, decomposed)], [composed, decomposed])
        self.control("remove", decomposed)
        self.control("remove", decomposed)
        self.assertEqual(self.stored_names(), [])

    def test_overwriting_replaces_the_first_set_of_the_name_and_keeps_its_position(self):
        self.store(*({"name": name} for name in "XAAB"), selection=[(1, 1), (3, 1)])
        self.control("add", "A", "--overwrite", "--percent", "7")
        self.assertEqual([(s["name"], s["ratio"]) for s in self.exported()],
                         [("X", 100), ("A", 7), ("A", 100), ("B", 100)])
        self.assertEqual([line[0] for line in self.control("list").splitlines()], [" ", "*", " ", "*"])
        self.control("edit", "X", "--name", "A", "--overwrite", "--percent", "9")
        self.assertEqual([(s["name"], s["ratio"]) for s in self.exported()], [("A", 9), ("A", 100), ("B", 100)])
        self.assertEqual([line[0] for line in self.control("list").splitlines()], ["*", " ", "*"])

    def test_import_overwrites_and_keeps_the_order_of_the_stored_sets(self):
        self.control("add", "A", "--percent", "10")
        self.control("add", "B")
        self.write_sets({"name": "C"}, {"name": "A", "resizeType": "ratio", "ratio": 20})
        self.control("import", "--overwrite", "x.json")
        self.assertEqual([(s["name"], s["ratio"]) for s in self.exported()], [("A", 20), ("B", 100), ("C", 100)])

    def test_renaming_finds_the_first_free_name_and_prints_it(self):
        for name in ("A", "A 2"):
            self.control("add", name)
        self.assertEqual(self.control("add", "A", "--rename"), 'added as "A 3"\n')
        self.assertEqual(self.control("edit", "A 2", "--name", "A", "--rename"), 'renamed to "A 4"\n')
        self.write_sets({"name": "B"}, {"name": "A"}, {"name": "B"})
        self.assertEqual(self.control("import", "--rename", "x.json"),
                         'x.json: set 2: added as "A 2"\nx.json: set 3: added as "B 2"\n')
        self.assertEqual(self.stored_names(), ["A", "A 4", "A 3", "B", "A 2", "B 2"])
        self.assertEqual(self.control("add", "Z", "--rename"), "")

    def test_a_name_twice_in_one_import_is_refused_unless_any_name_is_accepted(self):
        self.write_sets({"name": "A", "ratio": 1}, {"name": "A", "ratio": 2})
        for options in ((), ("--overwrite",)):
            self.assertIn("x.json: set 2: an earlier set has the name", self.control("import", *options, "x.json", status=1))
        self.assertEqual(self.stored_names(), [])
        self.control("import", "--any-name", "x.json")
        self.control("import", "--any-name", "--overwrite", "x.json")
        self.assertEqual([(s["name"], s["ratio"]) for s in self.exported()], [("A", 1), ("A", 2)])

    MISLEADING = (("..", "above"), (".", "folder of the original"), ("/", "separates folders"),
                  ("a/b", "separates folders"), ("", "empty name"), ("@2", "position"), ("@0", "position"),
                  ("x" * 256, "255 bytes"))

    def test_misleading_names_are_refused_with_the_reason(self):
        self.control("add", "A")
        for name, phrase in self.MISLEADING:
            self.assertIn(phrase, self.control("add", name, status=1))
            self.assertIn(phrase, self.control("add", "--overwrite", name, status=1))
            self.assertIn(phrase, self.control("edit", "A", "--name", name, status=1))
            self.write_sets({"name": name})
            self.assertIn(phrase, self.control("import", "x.json", status=1))
        self.write_sets({"name": "a\0b"})
        self.assertIn("zero byte", self.control("import", "x.json", status=1))
        self.assertEqual(self.stored_names(), ["A"])
        for name in ("@", "@x", "a.b", "x" * 255):
            self.control("add", name)

    def test_any_name_can_be_imported_and_stored_ones_work_with_a_warning(self):
        names = [name for name, _ in self.MISLEADING]
        self.write_sets(*({"name": name, "resizeType": "ratio", "ratio": 50} for name in names))
        self.control("import", "--any-name", "x.json")
        self.assertEqual(self.stored_names(), names)
        for position, (_, phrase) in enumerate(self.MISLEADING, 1):
            if position != 2:  # a set is named "@2"
                self.assertRegex(self.control("show", f"@{position}"), f"Warning: .*{phrase}")
        self.control("edit", "..", "--percent", "40")
        self.control("select", "a/b")
        pictures.image(pictures.photo(60, 40)).save(self.folder / "a.png")
        self.kestrine("-set", "a/b", "a.png")
        self.assertEqual(self.names("a/b"), [b"a.png"])

    def test_names_that_kestrine_lists_altered_get_a_warning(self):
        warning = """'kestrine -l' lists "50%" as "50\""""
        self.assertIn("kestrinectl: warning: " + warning, self.warned("add", "50%"))
        self.assertIn(warning, self.control("show", "50%"))
        self.assertEqual(self.kestrine("-l"), b"50\n")
        self.control("add", "A")
        self.assertIn("several lines", self.warned("edit", "A", "--name", "two\nlines"))
        self.assertIn("hidden", self.warned("add", ".web"))
        self.assertIn("option", self.warned("add", "--", "-l"))
        self.write_sets({"name": "100%%"}, {"name": "B"})
        self.assertRegex(self.warned("import", "x.json"), r'\A[^\n]*x.json: set 1: [^\n]*"100%%" as "100%"[^\n]*\n\Z')
        self.assertEqual(self.warned("edit", "B", "--quality", "3"), "")

    def test_show_warns_about_a_set_that_cannot_be_reached_by_its_name(self):
        self.store({"name": "A"}, {"name": "A"})
        self.assertNotIn("Warning", self.control("show", "@1"))
        self.assertIn("Warning: @1 has the same name, and 'kestrine -set' applies that one", self.control("show", "@2"))

    def test_list_can_print_only_the_names(self):
        self.store({"name": "50%"}, {"name": " a\nb"}, {"name": None})
        self.assertEqual(self.control("list", "--names"), "50%\n a\nb\n\n")
        self.assertEqual(self.control("list", "--names", "--null"), "50%\0 a\nb\0\0")
        self.control("list", "--null", status=2)

    def test_control_characters_are_escaped_on_a_terminal_and_raw_in_pipes(self):
        self.store({"name": "\x1b[31mred\n", "resizeType": 77})
        self.assertIn("\x1b[31mred\n", self.control("list"))
        self.assertIn("\x1b[31mred\n", self.control("show", "@1"))
        for arguments in (("list",), ("show", "@1"), ("list", "--names"), ("add", "\x1b[31mred\n")):
            shown = self.on_a_terminal("sets", *arguments)
            self.assertIn(r"\x1b[31mred\n", shown)
            self.assertNotIn("\x1b", shown)
        self.assertIn(r'no set named "\x9b"', self.on_a_terminal("sets", "show", b"\x9b"))
        (self.folder / "\x1b.jpg").write_bytes(b"\xff\xd8\xff\xd9")
        for name in (b"\x1b.jpg", b"none\x1b.jpg"):
            self.assertIn(r"\x1b.jpg", self.on_a_terminal("exif", "--date", name, name))
        self.assertEqual(self.on_a_terminal("sets", "list", "--names", "--null").replace("^@", "\0")[:5], "\x1b[31m")

    def test_an_invalid_import_changes_nothing_and_the_message_names_the_place(self):
        self.control("add", "A")
        before = self.preferences.read_bytes()
        for content, phrase in (("{", "not a JSON export"), ("[1]", "set 1 is not a JSON object"), ('[{"colour": 1}]', 'unknown field "colour"'),
                                ('[{"name": "B"}, {"width": "x"}]', "set 2"), ('[{"highQuality": 300}]', "highQuality"),
                                ('[{"formatType": "bmp"}]', "formatType"), ('[{"width": 1e39}]', "width"),
                                ('[{"resizeType": 18446744073709551615}]', "resizeType"),
                                ('[{"resizeType": 4294967296}]', "resizeType"),
                                ('[{"name": ' + "[" * 300000 + "]" * 300000 + "}]", "deep"), ('[{"width": null}]', "width")):
            (self.folder / "x.json").write_text(content)
            self.assertIn(phrase, self.control("import", "x.json", status=1))
        self.assertIn("cannot be opened", self.control("import", "none.json", status=1))
        self.assertEqual(self.preferences.read_bytes(), before)

    def test_other_keys_and_the_file_format_are_kept(self):
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

    def test_names_in_brackets_are_not_special(self):
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

    def test_of_opposite_switches_the_last_one_applies(self):
        self.control("add", "A", "--no-exif", "--exif", "--high-quality", "--no-high-quality")
        self.assertEqual((self.exported("A")[0]["attachExifData"], self.exported("A")[0]["highQuality"]), (True, False))

    def test_where_names_the_file_even_when_it_is_broken(self):
        self.assertEqual(self.control("where"), str(self.preferences) + "\n")
        self.write_preferences(b"broken")
        self.assertEqual(self.control("where"), str(self.preferences) + "\n")

    @unittest.skipIf(os.getuid() == 0, "root may look into every folder")
    def test_an_inaccessible_folder_is_an_error_and_not_an_empty_list(self):
        self.store({"name": "A"})
        self.preferences.parent.chmod(0)
        self.addCleanup(self.preferences.parent.chmod, 0o700)
        self.assertIn("cannot be read", self.control("list", status=1))

    def test_wrong_arguments_give_status_2_and_one_line(self):
        for arguments in ((), ("add",), ("nonsense",), ("add", "A", "--format", "bmp"), ("add", "A", "--quality", "101"),
                          ("add", "A", "--width", "5", "--percent", "5"), ("select",),
                          ("add", "A", "--width", "nan"), ("add", "A", "--quality", "nan"), ("add", "A", "--percent", "inf"),
                          ("add", "A", "--width", "wide"), ("add", "A", "--overwrite", "--rename")):
            self.control(*arguments, status=2)
        self.assertEqual(self.kestrinectl().returncode, 2)

    def test_messages_show_ranges_as_plain_numbers(self):
        self.assertIn("--width: must be a number from 1 to 1000000;", self.control("add", "A", "--width", "0", status=2))
        self.assertIn("--format: must be jpeg, png, tiff or gif;", self.control("add", "A", "--format", "bmp", status=2))
        self.assertIn("--width needs a value;", self.control("add", "A", "--width", status=2))


class LostOutput(ToolTest):
    """What cannot be written is an error, since scripts must not go on without it."""

    def run_with(self, redirection, *arguments):
        return subprocess.run(["sh", "-c", f'"$@" {redirection}', "sh", BIN / "kestrinectl", *arguments], cwd=self.folder,
                              env=self.environment, stderr=subprocess.PIPE, timeout=120)

    def test_of_any_command_is_an_error(self):
        self.store({"name": "Web", "formatType": JPEG})
        pictures.image(pictures.photo(60, 40)).save(self.folder / "a.png")
        for redirection in (">&-", ">/dev/full"):
            for arguments in (["sets", "list"], ["help"], ["convert", "--set", "Web", "a.png"], ["convert", "--longest", "20", "-", "<a.png"]):
                with self.subTest(redirection=redirection, arguments=arguments):
                    words = [word for word in arguments if not word.startswith("<")]
                    done = self.run_with(" ".join([*arguments[len(words):], redirection]), *words)
                    self.assertEqual(done.returncode, 1, done)
                    self.assertIn(b"kestrinectl: the output could not be written\n", done.stderr)
        self.assertTrue((self.folder / "Web/a.jpg").exists())


class Help(ToolTest):
    def complaint(self, *arguments):
        done = self.kestrinectl(*arguments)
        self.assertEqual((done.returncode, done.stdout), (2, b""), done)
        self.assertRegex(done.stderr, rb"\Akestrinectl: [^\n]+\n\Z")
        return done.stderr.decode()

    def printed(self, *arguments):
        done = self.kestrinectl(*arguments)
        self.assertEqual((done.returncode, done.stderr), (0, b""), done)
        return done.stdout.decode()

    def test_mistyped_commands_and_options_get_a_suggestion(self):
        for arguments, meant in ((("conver",), "convert"), (("set",), "sets"), (("SETS",), "sets"), (("ecif",), "exif"),
                                 (("list",), "sets list"), (("sets", "lst"), "list"), (("sets", "improt"), "import"),
                                 (("help", "conver"), "convert"), (("help", "sets", "ad"), "add"),
                                 (("--hlep",), "--help"), (("version",), "--version"), (("-v",), "-V"), (("sets", "add", "A", "--lognest", "5"), "--longest"),
                                 (("sets", "add", "--qualty=5"), "--quality"), (("convert", "-set", "A", "a"), "--set")):
            self.assertIn(f'did you mean "{meant}"? \'kestrinectl help', self.complaint(*arguments))

    def test_the_message_for_an_invalid_number_has_the_range(self):
        for option, command, range_ in (("--jobs", ("convert", "a"), "1 to 1024"),
                                        ("--quality", ("sets", "add", "A"), "0 to 100")):
            for wrong in ("-1", "5000", "x", "1x"):
                self.assertIn(f"{option}: must be a number from {range_}; 'kestrinectl help",
                              self.complaint(*command, f"{option}={wrong}"))

    def test_words_without_a_similar_command_are_only_reported_as_unknown(self):
        for words, shown in ((("sets", "add", "--", "-y", "--longest", "5"), '"--longest" "5"'), (("run", "--", "a", "-b"), '"-b"'),
                             (("history", "x", "[y]"), '"x" "[y]"')):
            self.assertIn(f"unexpected {shown}; 'kestrinectl help {words[0]}", self.complaint(*words))
        self.assertIn('unknown command "[x]"', self.complaint("help", "[x]"))
        self.assertIn('unknown command "frobnicate"; \'kestrinectl help\' lists all commands', self.complaint("frobnicate"))
        self.assertIn("unknown option \"-x\"; 'kestrinectl help' lists all options", self.complaint("-x"))
        self.assertIn('unknown option "--colour"; \'kestrinectl help sets add\' lists all options',
                      self.complaint("sets", "add", "A", "--colour", "red"))

    def test_values_are_not_parsed_as_options(self):
        self.assertIn("--width: must be", self.complaint("sets", "add", "A", "--width", "-5"))
        self.assertIn("NAME is required", self.complaint("sets", "edit", "--name", "--nonsense"))

    def test_a_missing_command_is_reported_as_missing(self):
        self.assertIn("a command is missing; 'kestrinectl help'", self.complaint())
        self.assertIn("a command is missing; 'kestrinectl help sets'", self.complaint("sets"))

    def test_the_help_command_prints_the_same_as_the_help_option(self):
        self.assertEqual(self.printed("help"), self.printed("--help"))
        for command in (("sets",), ("sets", "add"), ("convert",), ("exif",)):
            self.assertEqual(self.printed("help", *command), self.printed(*command, "--help"))
            self.assertIn("Usage: kestrinectl " + " ".join(command), self.printed("help", *command))

    def test_the_help_of_add_names_the_defaults_and_fits_100_columns(self):
        text = self.printed("help", "sets", "add")
        for default in ("1200 x 1200", "png", "70", "--no-exif", "--convert-resolution", "--no-rotate"):
            self.assertRegex(" ".join(text.split()), rf"\(default: {default}\)")
        self.assertLessEqual(max(map(len, text.splitlines())), 100)
        self.assertNotIn("default", self.printed("help", "sets", "edit").replace("(default: refuse the name)", ""))

    def test_the_version_is_printed(self):
        self.assertRegex(self.printed("--version"), r"\Akestrinectl \d+\.\d+\.\d+\n\Z")
        self.assertEqual(self.printed("-V"), self.printed("--version"))


if __name__ == "__main__":
    main()
