"""kestrinectl convert with options that say what is made and where it goes, with and without presets."""
import os
import shutil

import numpy
from PIL import Image

import pictures
from tools import JPEG, PNG, ToolTest, exiftool, main


class ConvertByOptions(ToolTest):
    def convert(self, *arguments, status=0, messages=None):
        """Runs the command. It must return `status` and print exactly these messages to standard error."""
        done = self.kestrinectl("convert", *arguments)
        self.assertEqual(done.returncode, status, done)
        if status == 0 or messages is not None:
            self.assertEqual(done.stderr.decode().splitlines(), ["kestrinectl: " + line for line in messages or []])
        return done

    def refused(self, *arguments):
        """The message about wrong options."""
        done = self.convert(*arguments, "a.png", status=2)
        self.assertEqual(self.names(), self.before)
        self.assertRegex(done.stderr, rb"\Akestrinectl: [^\n]+\n\Z")
        return done.stderr.decode().removeprefix("kestrinectl: ").split(";")[0].strip()

    def picture(self, name, width=60, height=40, seed=1, **options):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        pictures.image(pictures.photo(width, height, seed=seed)).save(path, **options)

    def setUp(self):
        super().setUp()
        self.picture("a.png")
        self.before = self.names()

    def tree(self, folder):
        """The files below a folder, and their sizes in pixels."""
        root = self.folder / folder
        return {str(path.relative_to(root)): Image.open(path).size for path in sorted(root.rglob("*")) if path.is_file()}


class Sizes(ConvertByOptions):
    def test_sizes_are_exact_pixels(self):
        self.picture("tall.png", 400, 600)
        for arguments, size in ((("--longest", "30"), (20, 30)), (("--width", "100"), (100, 150)),
                                (("--height", "90"), (60, 90)), (("--width", "50", "--height", "40"), (50, 40)),
                                (("--percent", "12.5"), (50, 75)), (("--fit", "90x90"), (60, 90)),
                                (("--cover", "90x90"), (90, 90))):
            self.convert(*arguments, "--out", "small", "tall.png")
            self.assertEqual(self.tree("small"), {"tall.png": size}, arguments)
            shutil.rmtree(self.folder / "small")

    def test_sizes_are_exact_with_a_preset_too_and_those_of_the_preset_as_ever(self):
        self.picture("b.png", 600, 400)
        self.store({"name": "Web", "resizeType": 2, "maxSize": 300.0, "formatType": JPEG})
        self.convert("--set", "Web", "b.png")
        self.convert("--set", "Web", "--longest", "300", "b.png")
        self.assertEqual(self.tree("Web"), {"b.jpg": (301, 200), "b_1.jpg": (300, 200)})

    def test_exact_pixels_do_not_depend_on_the_resolution_of_the_file(self):
        self.picture("scan.jpg", 600, 400, dpi=(300, 300), quality=95)
        self.convert("--longest", "300", "--out", "small", "scan.jpg")
        self.assertEqual(self.tree("small"), {"scan.jpg": (300, 200)})

    def test_a_scaled_picture_is_filtered_in_linear_light(self):
        samples = pictures.photo(400, 300)
        pictures.image(samples).save(self.folder / "photo.png")
        self.convert("--width", "100", "--out", "small", "photo.png")
        expected = pictures.lanczos(samples, 0.25, 0.25, 100, 75)
        self.assertGreater(pictures.psnr(pictures.pixels(self.folder / "small/photo.png"), expected), 48)

    def test_cover_keeps_the_part_that_gravity_names(self):
        pictures.image(pictures.corners(200, 100)).save(self.folder / "corners.png")
        for gravity, expected in (("west", "rrww"), ("east", "ggbb"), ("center", "rgbw")):
            self.convert("--cover", "40x40", "--gravity", gravity, "--out", gravity, "corners.png")
            self.assertEqual(pictures.quarters(self.folder / gravity / "corners.png"), expected)

    def test_no_enlarge_keeps_smaller_pictures(self):
        self.store({"name": "Web", "resizeType": 2, "maxSize": 300.0, "formatType": PNG})
        for arguments in (("--longest", "600"), ("--set", "Web")):
            self.convert(*arguments, "--no-enlarge", "--out", "out", "a.png")
            self.convert(*arguments, "--out", "large", "a.png")
        self.assertEqual(set(self.tree("out").values()), {(60, 40)})
        self.assertEqual(set(self.tree("large").values()), {(600, 400), (301, 200)})
        source = pictures.pixels(self.folder / "a.png")
        self.assertTrue(numpy.array_equal(pictures.pixels(self.folder / "out/a.png"), source))

    def test_several_sizes_make_several_results_named_by_their_width(self):
        self.picture("in/deep/b.png", 300, 200)
        done = self.convert("--longest", "30,90", "--out", "out", "-r", "in", "a.png")
        self.assertEqual(self.tree("out"), {"deep/b-30.png": (30, 20), "deep/b-90.png": (90, 60),
                                            "a-30.png": (30, 20), "a-90.png": (90, 60)})
        self.assertEqual([line.split(b" -> ")[0] for line in done.stdout.splitlines()],
                         [b"in/deep/b.png"] * 2 + [b"a.png"] * 2)


class Formats(ConvertByOptions):
    def test_without_a_format_the_result_has_that_of_the_file_or_else_jpeg_or_png(self):
        self.picture("b.jpeg")
        self.picture("C.TIF")
        self.picture("d.gif")
        self.picture("e.bmp")
        Image.new("RGBA", (60, 40), (200, 0, 0, 99)).save(self.folder / "f.webp", lossless=True)
        self.convert("--longest", "30", "--out", "out", *(os.fsdecode(name) for name in self.names()))
        self.assertEqual({name: Image.open(self.folder / "out" / name).format for name in self.tree("out")},
                         {"a.png": "PNG", "b.jpeg": "JPEG", "C.TIF": "TIFF", "d.gif": "GIF", "e.jpg": "JPEG",
                          "f.png": "PNG"})

    def test_a_format_and_a_quality_can_be_given_with_and_without_a_preset(self):
        self.store({"name": "Web", "formatType": PNG, "compression": 20.0, "width": 60.0, "height": 40.0})
        tables = {}
        for name, arguments in (("usual", ()), ("low", ("--quality", "20")), ("of the set", ("--set", "Web"))):
            self.convert("--format", "jpeg", *arguments, "--name", name + ".jpg", "--out", "out", "a.png")
            tables[name] = Image.open(self.folder / "out" / (name + ".jpg")).quantization[0][0]
        self.assertEqual(tables, {"usual": 6, "low": 40, "of the set": 40})

    def test_exif_is_carried_and_a_jpeg_without_a_preset_gets_quality_80(self):
        block = pictures.exif(extra=[(0x0110, 2, 4, b"abc\0")])
        (self.folder / "photo.jpg").write_bytes(pictures.jpeg(pictures.photo(60, 40), block))
        self.convert("--longest", "30", "--out", "out", "photo.jpg")
        self.assertEqual(exiftool(self.folder / "out/photo.jpg")["IFD0:Model"], "abc")
        self.assertEqual(Image.open(self.folder / "out/photo.jpg").quantization[0][0], 6)


class Places(ConvertByOptions):
    def test_out_keeps_the_folders_of_a_recursive_search(self):
        for name in ("in/b.png", "in/deep/er/c.png"):
            self.picture(name)
        self.convert("--percent", "50", "--out", "out/small", "-r", "in", "a.png")
        self.assertEqual(set(self.tree("out/small")), {"a.png", "b.png", "deep/er/c.png"})

    def test_out_holds_the_folders_of_presets(self):
        self.store({"name": "A", "formatType": JPEG}, {"name": "B", "formatType": PNG, "replaceFile": 1}, selection=[(0, 2)])
        self.picture("in/deep/b.png")
        self.convert("-r", "--out", "out", "in")
        self.assertEqual(set(self.tree("out")), {"A/deep/b.jpg", "B/deep/b.png"})

    def test_a_preset_that_replaces_puts_its_result_into_out(self):
        self.store({"name": "A", "formatType": PNG, "replaceFile": 1}, selection=[(0, 1)])
        content = (self.folder / "a.png").read_bytes()
        self.convert("--out", "out", "a.png")
        self.assertEqual((self.folder / "a.png").read_bytes(), content)
        self.assertEqual(set(self.tree("out")), {"A/a.png"})

    def test_equal_names_in_one_folder_become_free_names_in_the_order_of_the_files(self):
        for name, width in (("x/a.png", 20), ("y/a.png", 30), ("z/a.gif", 50)):
            self.picture(name, width, 10)
        for jobs in ("1", "4"):
            self.convert("-j", jobs, "--percent", "100", "--out", "out", "x/a.png", "z/a.gif", "y/a.png")
            self.assertEqual(self.tree("out"), {"a.png": (20, 10), "a.gif": (50, 10), "a_1.png": (30, 10)})
            shutil.rmtree(self.folder / "out")

    def test_a_second_run_leaves_out_the_folder_for_results(self):
        self.picture("in/b.png")
        left_out = ["left out in/out, the folder of --out; --all-folders searches it"]
        for messages in ([], left_out):
            self.convert("--percent", "50", "--out", "in/out", "-r", "in", messages=messages)
        self.assertEqual(set(self.tree("in/out")), {"b.png", "b_1.png"})

    def test_names_have_fields_and_may_make_folders_below_out(self):
        self.store({"name": "Web", "formatType": JPEG, "width": 30.0, "height": 20.0})
        for i in range(10):
            self.picture(f"in/p{i}.png")
        os.utime(self.folder / "in/p9.png", (0, 1_700_000_000))
        self.convert("--set", "Web", "--name", "{set}-{height}/{n}-{stem}.{ext}", "--out", "out", "-r", "in")
        self.assertEqual(sorted(self.tree("out")), [f"Web-20/{i + 1:02}-p{i}.jpg" for i in range(10)])

    def test_names_without_out_are_below_the_folder_where_the_result_would_have_gone(self):
        self.store({"name": "Web", "formatType": JPEG}, selection=[(0, 1)])
        self.picture("in/deep/b.png")
        self.convert("--longest", "30", "--name", "{stem}-small.{ext}", "-r", "in")
        self.convert("--name", "{stem}-web.{ext}", "in/deep/b.png")
        self.assertEqual(set(self.tree("in/deep")), {"b.png", "b-small.png", "Web/b-web.jpg"})

    def test_replace_puts_the_original_into_the_trash_and_the_result_into_its_place(self):
        self.picture("photo.jpeg", 300, 200, quality=95)
        original = (self.folder / "photo.jpeg").read_bytes()
        self.convert("--longest", "30", "--replace", "photo.jpeg")
        self.convert("--format", "gif", "--replace", "a.png")
        self.assertEqual(self.tree("."), {"a.gif": (60, 40), "photo.jpeg": (30, 20)})
        self.assertEqual((self.home / ".local/share/Trash/files/photo.jpeg").read_bytes(), original)

    def test_replace_makes_a_preset_replace_for_one_run(self):
        self.store({"name": "Web", "formatType": JPEG, "width": 30.0, "height": 20.0})
        self.convert("--set", "Web", "--replace", "a.png")
        self.assertEqual(self.tree("."), {"a.jpg": (30, 20)})


class WrongOptions(ConvertByOptions):
    def test_contradictions_are_named_in_one_line_and_nothing_is_converted(self):
        self.assertEqual(self.refused("--longest", "30", "--width", "30", "--out", "x"),
                         "--longest and --width contradict each other: both give a size")
        self.assertEqual(self.refused("--percent", "30", "--fit", "3x3", "--out", "x"),
                         "--percent and --fit contradict each other: both give a size")
        self.assertEqual(self.refused("--width", "30,60", "--height", "30", "--out", "x"),
                         "--width and --height together take one number each")
        self.assertEqual(self.refused("--longest", "30", "--replace", "--out", "x"),
                         "--replace and --out contradict each other: both give the results a place")
        self.assertEqual(self.refused("--longest", "30", "--replace", "--name", "x"),
                         "--replace and --name contradict each other: both give the results a place")
        self.assertEqual(self.refused("--longest", "30,60", "--replace"),
                         "--replace takes one result per file, and these options make 2")
        self.assertEqual(self.refused("--format", "png", "--quality", "80", "--out", "x"),
                         "--quality has no effect on PNG")
        self.assertEqual(self.refused("--longest", "30", "--gravity", "east", "--out", "x"), "--gravity needs --cover")
        self.assertEqual(self.refused("--quality", "30", "--no-enlarge", "--out", "x"),
                         "--no-enlarge needs a size, such as --longest 1200")
        self.assertEqual(self.refused("--longest", "30"),
                         "the results need a place: give --out FOLDER, --name TEMPLATE or --replace")

    def test_values_that_make_no_sense_are_refused(self):
        for arguments in (("--longest", "0"), ("--longest", "30,x"), ("--percent", "nan"), ("--fit", "30"),
                          ("--gravity", "up"), ("--format", "bmp"), ("--quality", "101"), ("--name", "../x"),
                          ("--name", "{nonsense}"), ("--out", "")):
            self.assertTrue(self.refused(*arguments).startswith(arguments[0]), arguments)

    def test_without_a_selected_set_the_message_says_how_to_do_without(self):
        self.convert("a.png", status=1, messages=["no set is selected; name one with --set, or describe the result, such "
                                                  "as with --longest 1200 --out small"])


if __name__ == "__main__":
    main()
