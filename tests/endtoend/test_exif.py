"""kestrinectl exif: descriptions, JSON, dates. The tool is installed in a separate home, with and without its tables."""
import json
import os
import shutil
import struct
import subprocess
from pathlib import Path

from PIL import Image

import pictures
from tools import BIN, ToolTest, exiftool, main

SHARE = Path(__file__).resolve().parents[2] / "share"
NOT_AVAILABLE = "Exif information is not available"
ATTRIBUTE = "user.kestrine.creation-date"


def directory(fields, position, next_offset=b"\0\0\0\0"):
    """A big-endian directory for the offset `position`, followed by its values. Fields: (tag, type, count, value)."""
    data_at = position + 2 + 12 * len(fields) + 4
    entries, data = b"", b""
    for tag, kind, count, value in fields:
        if len(value) > 4:
            entries += struct.pack(">HHII", tag, kind, count, data_at + len(data))
            data += value
        else:
            entries += struct.pack(">HHI", tag, kind, count) + value.ljust(4, b"\0")
    return struct.pack(">H", len(fields)) + entries + next_offset + data


def text(tag, value):
    return tag, 2, len(value) + 1, value.encode() + b"\0"


def short(tag, *values):
    return tag, 3, len(values), struct.pack(f">{len(values)}H", *values)


def rational(tag, *values):
    return tag, 5, len(values) // 2, struct.pack(f">{len(values)}I", *values)


def undefined(tag, value):
    return tag, 7, len(value), value


def jpeg(ifd0=(), exif=(), ifd1=()):
    """Markers and EXIF only, since the reader needs no pixels. IFD1's offset is little-endian, as the reader expects."""
    tiff = b"MM\0*" + struct.pack(">I", 8)
    size = len(directory([*ifd0, (0x8769, 4, 1, b"\0" * 4)], 8))
    second = 8 + size
    sub = directory(exif, second)
    first = directory([*ifd0, (0x8769, 4, 1, struct.pack(">I", second))], 8,
                      struct.pack("<I", second + len(sub) if ifd1 else 0))
    tiff += first + sub + (directory(ifd1, second + len(sub)) if ifd1 else b"")
    return b"\xff\xd8\xff\xe1" + struct.pack(">H", len(tiff) + 8) + b"Exif\0\0" + tiff + b"\xff\xd9"


PHOTO = jpeg([text(0x10f, "Kappa"), short(0x112, 6)],
             [rational(0x829d, 28, 10), text(0x9003, "2008:01:02 10:11:12"), short(0x9209, 16),
              undefined(0xa301, b"\1"), rational(0x829a, 0, 0)])


class Exif(ToolTest):
    def setUp(self):
        super().setUp()
        prefix = self.home / "usr"
        (prefix / "bin").mkdir(parents=True)
        self.program = shutil.copy(BIN / "kestrinectl", prefix / "bin")
        shutil.copytree(SHARE, prefix / "share/kestrine")
        self.environment["TZ"] = "Asia/Tokyo"

    def exif(self, *arguments, status=0, **environment):
        done = self.run_tool("exif", *arguments, program=self.program,
                             environment={**self.environment, **environment})
        self.assertEqual(done.returncode, status, done)
        if status == 0:
            self.assertEqual(done.stderr, b"")
        else:
            self.assertRegex(done.stderr, rb"\Akestrinectl: [^\n]+\n\Z")
        self.errors = done.stderr.decode(errors="replace")
        return done.stdout.decode()

    def json(self, *files, **options):
        return [json.loads(line) for line in self.exif("--json", *files, **options).splitlines()]

    def write(self, name, content):
        (self.folder / name).write_bytes(content)
        return name

    def keeps_attributes(self):
        try:
            os.setxattr(self.folder, "user.kestrine.probe", b"x")
        except OSError:
            return False
        return True

    def test_the_description_is_in_the_users_language(self):
        self.write("a.jpg", PHOTO)
        self.assertEqual(self.exif("a.jpg"), "Maker : Kappa\nDate taken : 2008:01:02 10:11:12\n\nF-number : f/2.8\n\n"
                         "Exposure time : 1/nan sec\nFlash : Did not fire, suppressed\n\n")
        self.assertIn("メーカー : Kappa\n", self.exif("a.jpg", LANG="ja_JP.UTF-8"))
        self.assertIn("フラッシュ : 非発光、発光禁止\n", self.exif("a.jpg", LANG="ja_JP.UTF-8"))

    def test_without_tables_the_keys_are_shown(self):
        shutil.rmtree(self.home / "usr/share")
        self.write("a.jpg", PHOTO)
        self.assertIn("fNumber : f/2.8\n", self.exif("a.jpg"))
        self.assertIn("flash : flash16\n", self.exif("a.jpg"))

    def test_output_for_several_files_names_each_file(self):
        self.write("a.jpg", jpeg([text(0x10f, "A")]))
        self.write("b.png", PHOTO)
        shown = self.exif("a.jpg", "b.png")
        self.assertTrue(shown.startswith("a.jpg:\nMaker : A\n\n\n\nb.png:\nMaker : Kappa\n"), shown)
        self.assertEqual(self.exif("--narrow", "a.jpg", "b.png", status=1), "a.jpg:\nMaker : A\n\n\n\n")
        self.assertEqual(self.errors, "kestrinectl: b.png: no EXIF data\n")

    def test_files_may_have_any_name(self):
        for name in ("[a,b].jpg", "-a.jpg"):
            self.write(name, jpeg([text(0x10f, name)]))
            self.assertEqual(self.exif("--", name), f"Maker : {name}\n\n\n\n")

    def test_json_has_tags_values_and_display_strings(self):
        [photo] = self.json(self.write("a.jpg", PHOTO))
        self.assertEqual(list(photo), ["path", "reader", "tags", "values", "display", "description"])
        self.assertEqual((photo["path"], photo["reader"]), ("a.jpg", True))
        self.assertEqual(photo["tags"]["IFD0"]["010F"], "Kappa")
        self.assertEqual(photo["tags"]["IFD0"]["0112"], [6])
        self.assertEqual(photo["tags"]["ExifSubIFD"]["829D"], [28, 10])
        self.assertEqual(photo["tags"]["ExifSubIFD"]["A301"], {"bytes": "01"})
        values, display = photo["values"], photo["display"]
        self.assertEqual((len(values), len(display)), (31, 24))
        self.assertEqual(values["fNumberNumber"], struct.unpack("f", struct.pack("f", 2.8))[0])
        self.assertEqual(values["exposureTimeNumber"], "nan")
        self.assertEqual((values["maker"], values["cameraName"]), ("Kappa", None))
        self.assertEqual((values["imageDirectionNumber"], values["flashNumber"]), (6, 16))
        self.assertEqual(values["sceneTypeNumber"], {"raises": "NSInvalidArgumentException"})
        self.assertEqual(display["sceneType"], {"raises": "NSInvalidArgumentException"})
        self.assertEqual((display["fNumber"], display["lensAperture"]), ("f/2.8", "N/A"))
        self.assertTrue(photo["description"].startswith("Maker : Kappa\n"))

    def test_numbers_that_json_cannot_store_are_strings(self):
        signed = (0x9204, 10, 1, struct.pack(">ii", -1, 0))
        [photo] = self.json(self.write("a.jpg", jpeg([], [rational(0x829d, 1, 0), signed])))
        self.assertEqual((photo["values"]["fNumberNumber"], photo["values"]["exposureBiasNumber"]), ("inf", "-inf"))
        self.assertEqual((photo["display"]["fNumber"], photo["display"]["exposureBias"]), ("f/inf", "-inf EV"))

    def test_accessors_that_raise_are_named(self):
        [photo] = self.json(self.write("a.jpg", jpeg([undefined(0x10f, b"\0\xff")], [short(0x829d, 28)])))
        self.assertEqual(photo["values"]["fNumberNumber"], {"raises": "NSRangeException"})
        self.assertEqual(photo["values"]["maker"], {"bytes": "00ff"})
        self.assertEqual(photo["description"], {"raises": "NSRangeException"})
        self.exif("a.jpg", status=1)
        self.assertIn("NSRangeException", self.errors)

    def test_files_without_exif_and_files_without_reader_differ_in_their_tags(self):
        without, png = self.json("--narrow", self.write("a.jpg", b"\xff\xd8\xff\xd9"), self.write("b.png", PHOTO), status=1)
        self.assertEqual((without["reader"], without["tags"]), (True, None))
        self.assertEqual((png["reader"], png["tags"]), (False, {}))
        for photo in (without, png):
            self.assertEqual(set(photo["values"].values()), {None})
            self.assertEqual(set(photo["display"].values()), {"N/A"})
            self.assertEqual(photo["description"], NOT_AVAILABLE)

    def test_a_path_that_is_not_utf_8_is_given_as_bytes(self):
        name = b"\xff.jpg"
        (Path(os.fsdecode(bytes(self.folder) + b"/" + name))).write_bytes(PHOTO)
        [photo] = self.json(name)
        self.assertEqual(photo["path"], {"bytes": name.hex()})
        self.assertEqual(photo["values"]["maker"], "Kappa")

    def test_a_missing_file_fails_but_has_an_entry_in_json(self):
        self.write("a.jpg", PHOTO)
        [missing] = self.json("missing.jpg", status=1)
        self.assertEqual((missing["reader"], missing["tags"], missing["description"]), (False, {}, NOT_AVAILABLE))
        missing, photo = self.json("--narrow", "missing.jpg", "a.jpg", status=1)
        self.assertEqual((missing["reader"], missing["tags"], missing["description"]), (True, {}, "\n\n\n"))
        self.assertEqual(photo["values"]["maker"], "Kappa")
        self.assertEqual(self.exif("missing.jpg", "a.jpg", status=1)[:7], "a.jpg:\n")
        self.assertIn("missing.jpg: cannot open: No such file or directory", self.errors)
        self.exif(".", status=1)
        self.assertIn(".: is not a regular file", self.errors)
        self.exif("", status=1)
        self.assertEqual(self.errors, "kestrinectl: an empty argument names no file\n")

    def test_the_date_is_in_local_time(self):
        self.write("a.jpg", PHOTO)
        self.write("b.jpg", jpeg([], [text(0x9003, "2024:10:27 02:30:00")]))
        self.write("c.png", b"words")
        self.assertEqual(self.exif("--date", "a.jpg"), "2008-01-02T10:11:12+09:00\n")
        self.assertEqual(self.exif("--date", "b.jpg", TZ="Europe/Berlin"), "2024-10-27T02:30:00+02:00\n")
        self.assertEqual(self.exif("--date", "a.jpg", "c.png", status=1), "a.jpg: 2008-01-02T10:11:12+09:00\n")
        self.assertEqual(self.errors, "kestrinectl: c.png: no date\n")

    def test_the_creation_date_is_set_and_printed(self):
        if not self.keeps_attributes():
            self.skipTest("the temporary folder's file system keeps no extended attributes")
        self.write("a.jpg", PHOTO)
        self.write("b.jpg", jpeg([], [text(0x9003, "2008:01:02 10:11:12")], [(0x882a, 8, 1, struct.pack(">h", 9))]))
        self.assertEqual(self.exif("--set-creation-date", "a.jpg", "b.jpg"),
                         "a.jpg: creation date set to 2008-01-02T01:11:12+09:00\n"
                         "b.jpg: creation date set to 2008-01-02T19:11:12+09:00\n")
        self.assertEqual(os.getxattr(self.folder / "a.jpg", ATTRIBUTE), b"2008-01-02T01:11:12+09:00")
        self.assertEqual((self.folder / "a.jpg").read_bytes(), PHOTO)

    def test_without_a_date_nothing_is_changed(self):
        self.write("a.jpg", jpeg([], [text(0x9003, "2008:01:02")]))
        self.write("b.png", b"words")
        self.assertEqual(self.exif("--set-creation-date", "a.jpg", "b.png", status=1), "")
        self.assertEqual(self.errors, "kestrinectl: a.jpg: no date, nothing changed; b.png: no date, nothing changed\n")
        for name in ("a.jpg", "b.png"):
            self.assertNotIn(ATTRIBUTE, os.listxattr(self.folder / name))

    def block(self, order="<"):
        """An EXIF block in either byte order with a maker, a date, an exposure time and a place."""
        Image.fromarray(pictures.photo(8, 8)).save(self.folder / "block.jpg")
        subprocess.run(["exiftool", "-q", "-overwrite_original", "-Make=Kappa", "-DateTimeOriginal=2008:01:02 10:11:12",
                        "-ExposureTime=1/250", "-GPSLatitude=48.1", "-GPSLatitudeRef=N",
                        f"-ExifByteOrder={'II' if order == '<' else 'MM'}", "block.jpg"], cwd=self.folder, check=True)
        block = Image.open(self.folder / "block.jpg").info["exif"]
        self.assertEqual(block[6:8], b"II" if order == "<" else b"MM")
        return block

    def test_both_byte_orders_all_places_and_formats_are_read(self):
        photo = Image.fromarray(pictures.photo(40, 30))
        for order in "<>":
            block = self.block(order)
            for name in ("a.jpg", "a.png", "a.webp"):
                photo.save(self.folder / name, exif=block)
            raw = block.removeprefix(b"Exif\0\0")
            self.write("a.nef", raw)
            comments = b"".join(b"\xff\xfe" + struct.pack(">H", 302) + b"c" * 300 for _ in range(5))
            self.write("late.jpeg", pictures.jpeg(pictures.photo(40, 30), raw, before=comments))
            for name in ("a.jpg", "a.png", "a.webp", "a.nef", "late.jpeg"):
                shown = self.exif(name)
                self.assertIn("Maker : Kappa\nDate taken : 2008:01:02 10:11:12\n", shown, (order, name))
                self.assertIn("Exposure time : 1/250 sec", shown, (order, name))
                self.assertEqual(self.exif("--date", name), "2008-01-02T10:11:12+09:00\n", (order, name))
                self.assertEqual(exiftool(self.folder / name)["IFD0:Make"], "Kappa", "the file is what we take it for")

    def test_heic_avif_and_jpeg_xl_are_read(self):
        Image.fromarray(pictures.photo(64, 48)).save(self.folder / "a.jpg", exif=self.block(), quality=95)
        for name, command in (("a.avif", ["avifenc", "-s", "10", "a.jpg", "a.avif"]), ("a.jxl", ["cjxl", "a.jpg", "a.jxl"])):
            subprocess.run(command, cwd=self.folder, check=True, capture_output=True)
            self.assertEqual(self.exif("--date", name), "2008-01-02T10:11:12+09:00\n", name)

    def test_the_narrow_view_shows_what_turns_pictures_of_presets(self):
        for order, status in (("<", 1), (">", 0)):
            self.write("a.jpg", pictures.jpeg(pictures.photo(40, 30), pictures.exif(6, order)))
            [shown] = self.json("--narrow", "a.jpg", status=status)
            self.assertEqual(shown["values"]["imageDirectionNumber"], None if status else 6)
            self.assertEqual(self.json("a.jpg")[0]["values"]["imageDirectionNumber"], 6)

    def test_the_creation_date_of_any_format_is_set(self):
        if not self.keeps_attributes():
            self.skipTest("the temporary folder's file system keeps no extended attributes")
        Image.fromarray(pictures.photo(40, 30)).save(self.folder / "a.png", exif=self.block())
        self.exif("--set-creation-date", "a.png")
        self.assertEqual(os.getxattr(self.folder / "a.png", ATTRIBUTE), b"2008-01-02T01:11:12+09:00")

    def test_options_that_exclude_each_other_are_refused(self):
        self.exif("--json", "--date", "a.jpg", status=2)
        self.exif(status=2)


if __name__ == "__main__":
    main()
