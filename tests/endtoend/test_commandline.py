"""The arguments, output, names and folders of `kestrine`."""
import os
import plistlib
import random
import struct
import subprocess
import unittest

from PIL import Image

import pictures
from tools import BIN, GIF, JPEG, PNG, TIFF, ToolTest, Typedstream, is_sanitized, main


class Listing(ToolTest):
    def test_sets_are_listed_in_stored_order(self):
        self.store({"name": "Web"}, {"name": "Größe"}, {"name": "Web"})
        self.assertEqual(self.kestrine("-l"), "Web\nGröße\nWeb\n".encode())

    def test_minus_l_after_a_file_lists_and_converts_nothing(self):
        self.store({"name": "Web"}, selection=[(0, 1)])
        (self.folder / "a.jpg").write_bytes(pictures.jpeg(pictures.photo(20, 10)))
        self.assertEqual(self.kestrine("a.jpg", "-l"), b"Web\n")
        self.assertEqual(self.names(), [b"a.jpg"])

    def test_names_are_used_as_format_strings(self):
        self.store({"name": "50%% off"}, {"name": "%d%s%n%5d"}, {"name": "Thumb 50%"}, {"name": "%y %"})
        self.assertEqual(self.kestrine("-l"), b"50% off\n0(null)    0\nThumb 50\n%y \n")

    def test_every_version_and_both_byte_orders_are_read(self):
        for version in (0, 1, 2, 3, 4):
            for order in "<>":
                for form in (plistlib.FMT_BINARY, plistlib.FMT_XML):
                    self.store({"name": f"V{version}", "height": 33.3}, version=version, order=order, form=form)
                    self.assertEqual(self.kestrine("-l"), f"V{version}\n".encode())

    def test_a_name_ends_at_its_first_zero_byte(self):
        self.store({"name": b"ab\0cd"})
        self.assertEqual(self.kestrine("-l"), b"ab\n")

    def test_names_with_any_bytes_are_listed_unchanged(self):
        self.store({"name": b"a\xff\xfeb\x80"})
        self.assertEqual(self.kestrine("-l"), b"a\xff\xfeb\x80\n")

    def test_without_preferences_no_set_is_listed(self):
        self.assertEqual(self.kestrine("-l"), b"")
        self.assertEqual(self.kestrine("a.jpg"), b"")

    def test_a_copied_mac_home_is_found_and_the_config_home_has_priority(self):
        mac = self.home / "Library/Preferences/quov.Kestrine.plist"
        self.store({"name": "Mac"})
        mac.parent.mkdir(parents=True)
        self.preferences.rename(mac)
        self.assertEqual(self.kestrine("-l"), b"Mac\n")
        self.store({"name": "Linux"})
        self.assertEqual(self.kestrine("-l"), b"Linux\n")
        self.write_preferences(b"broken")
        self.assertEqual(self.kestrine("-l"), b"", "a broken file ends the search")


class BrokenPreferences(ToolTest):
    def test_a_broken_selection_does_not_hide_the_sets(self):
        values = {"resizeSets": Typedstream().sets([{"name": "Web"}]), "selectionIndexes": b"\x04\x0bstreamtyped"}
        self.write_preferences(plistlib.dumps(values, fmt=plistlib.FMT_BINARY))
        self.assertEqual(self.kestrine("-l"), b"Web\n")
        self.assertEqual(self.kestrine("a.jpg"), b"")

    def test_values_of_the_wrong_type_are_ignored(self):
        for value in ("text", 3, [1], {"a": b"b"}, True):
            self.write_preferences(plistlib.dumps({"resizeSets": value, "selectionIndexes": value}))
            self.assertEqual(self.kestrine("-l", "x"), b"")

    def test_randomly_damaged_files_cause_no_messages(self):
        generator = random.Random(2)
        self.store({"name": "Web"}, {"name": "Two"}, selection=[(0, 2)], other=[1, "x", {"y": 2.5}])
        good = self.preferences.read_bytes()
        for _ in range(150):
            bad = bytearray(good)
            for _ in range(generator.randint(1, 6)):
                choice, at = generator.random(), generator.randrange(len(bad))
                if choice < 0.6:
                    bad[at] = generator.randrange(256)
                elif choice < 0.8:
                    del bad[at:at + generator.randint(1, 9)]
                else:
                    bad[at:at] = bytes(generator.randrange(256) for _ in range(generator.randint(1, 9)))
            self.write_preferences(bytes(bad))
            self.kestrine("-l")
            self.kestrine("none.jpg")

    @unittest.skipIf(is_sanitized(), "sanitizers need more address space than the limit")
    def test_a_list_that_expands_exponentially_takes_little_memory(self):
        # 40 levels, each with two references to the next one: 2^40 objects if they were copied.
        objects = [b"\xd1\x01\x02", b"\x5aresizeSets"] + [bytes([0xa2, n, n]) for n in range(3, 43)] + [b"\x08"]
        offsets, body = [], b"bplist00"
        for content in objects:
            offsets.append(len(body))
            body += content
        table = len(body)
        body += b"".join(offset.to_bytes(2, "big") for offset in offsets)
        body += bytes(6) + b"\x02\x01" + len(objects).to_bytes(8, "big") + bytes(8) + table.to_bytes(8, "big")
        self.write_preferences(body)
        limit = "ulimit -v 600000; exec \"$0\" -l"
        done = subprocess.run(["sh", "-c", limit, BIN / "kestrine"], env=self.environment, capture_output=True, timeout=20)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"", b""))

    @unittest.skipIf(is_sanitized(), "sanitizers need more address space than the limit")
    def test_archives_that_repeat_large_objects_take_little_memory(self):
        # A selection of many index sets that share one block of packed ranges, and sets that share one long name.
        stream = Typedstream()
        block = bytes(range(1, 100)) * 4000
        shared = stream.shared("@") + b"\x84" + stream.class_("NSData", 0, "NSObject", 0) + stream.shared("i")
        shared += stream.integer(len(block)) + stream.shared(f"[{len(block)}c]") + block + b"\x86"
        head = stream.shared("@") + b"\x84" + stream.class_("NSArray", 0, "NSObject", 0) + stream.shared("i") + stream.integer(2001)
        # Numbers of shared objects: 0 the array, 1 and 2 its classes, 3 the data.
        sets = (stream.shared("@") + b"\x84" + stream.class_("NSIndexSet", 0, "NSObject", 0) + stream.shared("I")
                + stream.integer(len(block) // 2) + stream.shared("@") + struct.pack("b", 3 - 110) + b"\x86") * 2000
        values = {"selectionIndexes": stream.bytes + head + shared + sets + b"\x86", "resizeSets": b""}
        self.write_preferences(plistlib.dumps(values, fmt=plistlib.FMT_BINARY))
        limit = "ulimit -v 400000; exec \"$0\" a.jpg"
        done = subprocess.run(["sh", "-c", limit, BIN / "kestrine"], env=self.environment, capture_output=True, timeout=20)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"", b""))

    def test_deeply_nested_xml_causes_no_message(self):
        self.write_preferences(b"<plist version='1.0'><dict><key>a</key>" + b"<array>" * 300000 + b"</array>" * 300000
                               + b"</dict></plist>")
        self.assertEqual(self.kestrine("-l"), b"")


class Selecting(ToolTest):
    def setUp(self):
        super().setUp()
        (self.folder / "a.jpg").write_bytes(pictures.jpeg(pictures.photo(20, 10)))
        (self.folder / "y.jpg").write_bytes(pictures.jpeg(pictures.photo(20, 10)))

    def test_only_files_after_the_name_are_converted(self):
        self.store({"name": "Web"}, {"name": "Thumb"})
        self.assertEqual(self.kestrine("a.jpg", "-set", "Web", "y.jpg"), b"y.jpg converting... and done!!\n")
        self.assertEqual(self.names("Web"), [b"y.png"])

    def test_an_unknown_or_differently_cased_name_does_nothing(self):
        self.store({"name": "Web"})
        self.assertEqual(self.kestrine("-set", "web", "a.jpg"), b"")
        self.assertEqual(self.names(), [b"a.jpg", b"y.jpg"])

    def test_the_first_of_two_sets_with_one_name_is_applied(self):
        self.store({"name": "Web", "formatType": GIF}, {"name": "Web", "formatType": TIFF})
        self.kestrine("-set", "Web", "a.jpg")
        self.assertEqual(self.names("Web"), [b"a.gif"])

    def test_the_stored_selection_applies_and_indexes_beyond_the_sets_are_skipped(self):
        self.store({"name": "A"}, {"name": "B"}, {"name": "C"}, {"name": "D"}, {"name": "E"},
                   selection=[(1, 1), (3, 1), (7, 1)])
        self.kestrine("a.jpg")
        self.assertEqual(self.names(), [b"B", b"D", b"a.jpg", b"y.jpg"])

    def test_minus_set_as_the_last_argument_is_a_file(self):
        self.store({"name": "Web", "formatType": PNG}, selection=[(0, 1)])
        (self.folder / "-set").write_bytes(pictures.jpeg(pictures.photo(20, 10)))
        self.assertEqual(self.kestrine("a.jpg", "-set"),
                         b"a.jpg converting... and done!!\n-set converting... and done!!\n")
        self.assertEqual(self.names("Web"), [b"-set.PNG", b"a.png"])

    def test_without_files_nothing_is_printed(self):
        self.store({"name": "Web"}, selection=[(0, 1)])
        self.assertEqual(self.kestrine(), b"")
        self.assertEqual(self.kestrine("-set", "Web"), b"")


class Paths(ToolTest):
    def setUp(self):
        super().setUp()
        self.picture = pictures.jpeg(pictures.photo(20, 10))
        self.store({"name": "Web"}, selection=[(0, 1)])

    def test_an_absolute_argument_is_joined_to_the_current_folder(self):
        (self.folder / "Users/me").mkdir(parents=True)
        (self.folder / "Users/me/a.jpg").write_bytes(self.picture)
        self.kestrine("/Users/me/a.jpg")
        self.assertEqual(self.names("Users/me/Web"), [b"a.png"])

    def test_with_the_root_as_current_folder_absolute_arguments_work(self):
        (self.folder / "a.jpg").write_bytes(self.picture)
        self.kestrine(self.folder / "a.jpg", environment={**self.environment, "PWD": "/"})
        self.assertEqual(self.names("Web"), [b"a.png"])

    def test_volumes_and_tilde_are_used_as_typed(self):
        (self.folder / "~").mkdir()
        (self.folder / "~/a.jpg").write_bytes(self.picture)
        (self.folder / "x~").mkdir()
        (self.folder / "x~/b.jpg").write_bytes(self.picture)
        # "As typed" means relative to the process's current folder, even if PWD differs.
        self.kestrine("~/a.jpg", "x~/b.jpg", environment={**self.environment, "PWD": "/nowhere"})
        self.assertEqual(self.names("~/Web"), [b"a.png"])
        self.assertEqual(self.names("x~/Web"), [b"b.png"])

    def test_without_pwd_the_lines_are_printed_and_nothing_is_changed(self):
        (self.folder / "a.jpg").write_bytes(self.picture)
        environment = {key: value for key, value in self.environment.items() if key != "PWD"}
        self.assertEqual(self.kestrine("a.jpg", environment=environment), b"a.jpg converting... and done!!\n")
        self.assertEqual(self.names(), [b"a.jpg"])

    def test_unusual_names_are_converted_and_printed_byte_for_byte(self):
        odd = [b"100%.jpg", b"a b\nc.jpg", b"\xff\xfe\x80.jpg", "日本 ü.jpg".encode(), b"-x.jpg", b"'\";$(ls).jpg",
               b"%s%n.jpg", b"a.b.c.JPG"]
        for name in odd:
            (self.folder / os.fsdecode(name)).write_bytes(self.picture)
        lines = self.kestrine(*odd)
        self.assertIn(b"\xff\xfe\x80.jpg converting... and done!!\n", lines)
        self.assertIn(b"a b\nc.jpg converting", lines)
        self.assertIn(b"100(nil)g converting", lines)
        expected = sorted(name[:-3] + (b"PNG" if name.endswith(b"JPG") else b"png") for name in odd)
        self.assertEqual(self.names("Web"), expected)

    def test_missing_files_folders_pipes_and_text_files_cause_no_messages(self):
        os.mkfifo(self.folder / "pipe.jpg")
        (self.folder / "text.jpg").write_text("no picture")
        (self.folder / "folder.jpg").mkdir()
        (self.folder / "empty.jpg").write_bytes(b"")
        names = ["pipe.jpg", "text.jpg", "folder.jpg", "empty.jpg", "none.jpg", "", "/", "..", "a/../.."]
        lines = self.kestrine(*names).decode().splitlines()
        self.assertEqual(lines, [name + " converting... and done!!" for name in names])

    def test_a_closed_output_does_not_end_the_run(self):
        (self.folder / "a.jpg").write_bytes(self.picture)
        command = f'"{BIN}/kestrine" a.jpg >&-'
        done = subprocess.run(["sh", "-c", command], cwd=self.folder, env=self.environment, capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        Image.open(self.folder / "Web/a.png").load()

    def test_a_closed_pipe_does_not_end_the_run(self):
        for n in range(3):
            (self.folder / f"{n}.jpg").write_bytes(self.picture)
        command = f'set -o pipefail; "{BIN}/kestrine" 0.jpg 1.jpg 2.jpg | true'
        done = subprocess.run(["bash", "-c", command], cwd=self.folder, env=self.environment, capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertEqual(self.names("Web"), [b"0.png", b"1.png", b"2.png"])


class Results(ToolTest):
    def setUp(self):
        super().setUp()
        (self.folder / "a.jpg").write_bytes(pictures.jpeg(pictures.photo(60, 40)))

    def test_existing_names_get_a_number(self):
        self.store({"name": "Web"})
        for _ in range(3):
            self.kestrine("-set", "Web", "a.jpg")
        (self.folder / "Web/a_3.png").symlink_to("nowhere")
        self.kestrine("-set", "Web", "a.jpg")
        self.assertEqual(self.names("Web"), [b"a.png", b"a_1.png", b"a_2.png", b"a_3.png", b"a_4.png"])
        self.assertTrue((self.folder / "Web/a_3.png").is_symlink())

    def test_no_temporary_file_is_left(self):
        self.store({"name": "Web"}, {"name": "Nothing", "formatType": 9})
        self.kestrine("-set", "Web", "a.jpg")
        self.kestrine("-set", "Nothing", "a.jpg")
        self.assertEqual(self.names("Web"), [b"a.png"])
        self.assertEqual(self.names("Nothing"), [])

    def test_a_file_with_the_name_of_the_folder_is_not_changed(self):
        self.store({"name": "Web"})
        (self.folder / "Web").write_text("mine")
        self.kestrine("-set", "Web", "a.jpg")
        self.assertEqual((self.folder / "Web").read_text(), "mine")

    def test_a_set_named_like_a_path_creates_its_folders(self):
        self.store({"name": "out/deep/er"})
        self.kestrine("-set", "out/deep/er", "a.jpg")
        self.assertEqual(self.names("out/deep/er"), [b"a.png"])

    def test_several_sets_give_the_same_sizes_as_each_set_alone(self):
        small = {"name": "Small", "resizeType": 2, "maxSize": 20.0, "formatType": PNG}
        large = {"name": "Large", "resizeType": 1, "ratio": 150.0, "formatType": JPEG}
        self.store(small, large, selection=[(0, 2)])
        self.kestrine("a.jpg")
        self.assertEqual(Image.open(self.folder / "Small/a.png").size, (21, 14))
        self.assertEqual(Image.open(self.folder / "Large/a.jpg").size, (90, 60))


if __name__ == "__main__":
    main()
