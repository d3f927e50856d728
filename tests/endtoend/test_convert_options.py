"""kestrinectl convert with options that say what is made and where it goes, with and without presets."""
import io
import json
import os
import re
import resource
import shutil
import subprocess
import time
import unittest

import numpy
from PIL import Image, ImageCms, ImageOps

import pictures
from tools import JPEG, PNG, TIFF, ToolTest, exiftool, is_sanitized, main, messages_of, set_tags

WIDE_PROFILE = pictures.wide_icc()


class ConvertByOptions(ToolTest):
    def convert(self, *arguments, status=0, messages=None):
        """Runs the command. It must return `status` and print exactly these messages to standard error."""
        done = self.kestrinectl("convert", *arguments)
        self.assertEqual(done.returncode, status, done)
        if status == 0 or messages is not None:
            self.assertEqual(messages_of(done), messages or [])
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


    def test_sizes_that_become_equal_without_enlargement_give_one_result(self):
        arguments = ("--longest", "30,90,120", "--no-enlarge", "--out", "out", "a.png")
        dry = self.convert("--dry-run", *arguments).stdout
        self.assertEqual(self.convert(*arguments).stdout, dry)
        self.assertEqual(self.tree("out"), {"a-30.png": (30, 20), "a-60.png": (60, 40)})


class Formats(ConvertByOptions):
    def test_without_a_format_the_result_has_that_of_the_file_or_else_jpeg_or_png(self):
        self.picture("b.jpeg")
        self.picture("C.TIF")
        self.picture("d.gif")
        self.picture("e.bmp")
        clear = Image.new("RGBA", (60, 40), (200, 0, 0, 99))
        clear.save(self.folder / "f.tga")
        clear.save(self.folder / "g.webp", lossless=True)
        self.convert("--longest", "30", "--out", "out", *(os.fsdecode(name) for name in self.names()))
        self.assertEqual({name: Image.open(self.folder / "out" / name).format for name in self.tree("out")},
                         {"a.png": "PNG", "b.jpeg": "JPEG", "C.TIF": "TIFF", "d.gif": "GIF", "e.jpg": "JPEG",
                          "f.png": "PNG", "g.webp": "WEBP"})

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

    def test_webp_and_jpeg_xl_are_written(self):
        self.picture("b.png", 60, 40)
        self.convert("--format", "webp", "--lossless", "--out", "out", "b.png")
        self.convert("--format", "jxl", "--lossless", "--out", "out", "b.png")
        numpy.testing.assert_array_equal(pictures.pixels(self.folder / "out/b.webp"), pictures.pixels(self.folder / "b.png"))
        subprocess.run(["djxl", "out/b.jxl", "out/c.png"], cwd=self.folder, check=True, capture_output=True)
        numpy.testing.assert_array_equal(pictures.pixels(self.folder / "out/c.png"), pictures.pixels(self.folder / "b.png"))

    def test_avif_is_written_in_every_orientation(self):
        for orientation in range(1, 9):
            picture = pictures.image(pictures.photo(60, 40))
            picture.save(self.folder / "o.jpg", quality=100, subsampling=0, exif=pictures.exif(orientation))
            self.convert("--format", "avif", "--lossless", "--no-upright", "--name", "o.avif", "o.jpg")
            subprocess.run(["avifdec", "o.avif", "stored.png"], cwd=self.folder, check=True, capture_output=True)
            subprocess.run(["heif-convert", "o.avif", "shown.png"], cwd=self.folder, check=True, capture_output=True)
            stored, shown = pictures.pixels(self.folder / "stored.png"), pictures.pixels(self.folder / "shown.png")
            upright = numpy.asarray(ImageOps.exif_transpose(Image.open(self.folder / "o.jpg")))
            numpy.testing.assert_array_equal(stored, numpy.asarray(Image.open(self.folder / "o.jpg")))
            numpy.testing.assert_array_equal(shown[..., :3], upright)
            (self.folder / "o.avif").unlink()

    def test_more_effort_gives_smaller_files(self):
        picture = pictures.image(pictures.photo(200, 150))
        picture.save(self.folder / "b.png")
        sizes = []
        for effort in ("fast", "normal", "max"):
            self.convert("--format", "png", "--effort", effort, "--out", effort, "b.png")
            numpy.testing.assert_array_equal(pictures.pixels(self.folder / effort / "b.png"), numpy.asarray(picture))
            sizes.append((self.folder / effort / "b.png").stat().st_size)
        self.assertLess(sizes[2], min(sizes[:2]))

    def test_a_logo_gets_a_palette_at_the_highest_effort(self):
        pixels = numpy.zeros((80, 120, 4), numpy.uint8)
        pixels[10:40, 20:90] = (200, 30, 40, 255)
        pixels[40:70, 30:60] = (20, 130, 240, 128)
        Image.fromarray(pixels).save(self.folder / "logo.png")
        self.convert("--format", "png", "--effort", "max", "--out", "out", "logo.png")
        made = Image.open(self.folder / "out/logo.png")
        self.assertEqual(made.mode, "P")
        numpy.testing.assert_array_equal(numpy.asarray(made.convert("RGBA")), pixels)

    def test_a_webp_file_stays_one_and_keeps_profile_and_exif_data(self):
        self.picture("b.webp", 60, 40, icc_profile=WIDE_PROFILE, exif=pictures.exif(1, extra=[(0x0110, 2, 4, b"abc\0")]))
        self.convert("--longest", "30", "--out", "out", "b.webp")
        made = Image.open(self.folder / "out/b.webp")
        self.assertEqual((made.format, made.size, made.info["icc_profile"]), ("WEBP", (30, 20), WIDE_PROFILE))
        self.assertEqual(made.getexif()[0x0110], "abc")

    def test_a_progressive_jpeg_has_the_same_pixels(self):
        for words, name in (["--progressive"], "p.jpg"), ([], "b.jpg"):
            self.convert("--format", "jpeg", *words, "--name", name, "a.png")
        made, baseline = Image.open(self.folder / "p.jpg"), Image.open(self.folder / "b.jpg")
        self.assertTrue(made.info.get("progressive") and not baseline.info.get("progressive"))
        numpy.testing.assert_array_equal(numpy.asarray(made), numpy.asarray(baseline))

    def test_options_without_effect_are_refused(self):
        self.assertEqual(self.refused("--format", "png", "--lossless", "--out", "out"), "--lossless has no effect on PNG")
        self.assertEqual(self.refused("--format", "jpeg", "--effort", "max", "--out", "out"), "--effort has no effect on JPEG")
        self.assertEqual(self.refused("--format", "webp", "--progressive", "--out", "out"),
                         "--progressive has no effect on WebP")
        self.assertEqual(self.refused("--longest", "30", "--longest", "40", "--out", "out"), "--longest is given more than once")
        self.assertIn("--out takes a folder", self.refused("--longest", "30", "--out", "-"))

    def test_a_jpeg_stays_lossy_only_if_that_is_accepted(self):
        self.picture("b.jpg", 60, 40)
        done = self.convert("--lossless", "--longest", "30", "--out", "out", "b.jpg", status=1)
        self.assertIn(b"b.jpg: a JPEG cannot be lossless; choose another format", done.stderr)

    def test_equal_sizes_give_one_result(self):
        self.convert("--longest", "30,30", "--format", "png", "--out", "out", "a.png")
        self.assertEqual(set(self.tree("out")), {"a.png"})

    def test_lossless_webp_keeps_the_colours_of_transparent_pixels(self):
        pixels = numpy.array(Image.open(self.folder / "a.png").convert("RGBA"))
        pixels[:, ::2, 3] = 0
        Image.fromarray(pixels).save(self.folder / "clear.png")
        self.convert("--format", "webp", "--lossless", "--name", "clear.webp", "clear.png")
        made = numpy.asarray(Image.open(self.folder / "clear.webp"))
        numpy.testing.assert_array_equal(made, pixels)


class FormatWords(ConvertByOptions):
    def test_formats_have_their_extensions_as_names_too_in_any_case(self):
        for word, title in (("jpg", "JPEG"), ("JPEG", "JPEG"), ("Png", "PNG"), ("tif", "TIFF")):
            self.convert("--format", word, "--name", "{stem}-" + word, "a.png")
            self.assertEqual(Image.open(self.folder / f"a-{word}").format, title)
        self.kestrinectl("sets", "add", "Web", "--format", "JPG")
        self.assertIn(b"jpeg", self.kestrinectl("sets", "export", "Web").stdout)
        done = self.kestrinectl("sets", "import", "--rename", "-", input=b'[{"name": "Other", "formatType": "Tif"}]')
        self.assertEqual(done.returncode, 0, done)
        self.assertIn(b"tiff", self.kestrinectl("sets", "export", "Other").stdout)

    def test_a_name_for_another_format_gets_a_warning(self):
        def warning(name, extension, title):
            return [f"warning: {name}: the name ends with {extension}, but the result is {title}; {{ext}} in --name gives "
                    "the right extension"]
        self.convert("--format", "webp", "--name", "x.jpg", "a.png", messages=warning("a.png", ".jpg", "WebP"))
        self.convert("--percent", "50", "--name", "y.JPG", "a.png", messages=warning("a.png", ".JPG", "PNG"))
        self.convert("--format", "webp", "--name", "z.heic", "--dry-run", "a.png",
                     messages=warning("a.png", ".heic", "WebP"))
        lines = self.convert("--format", "png", "--name", "x.gif", "--json", "a.png").stdout.splitlines()
        self.assertIn(".gif", json.loads(lines[0])["warnings"][0])

    def test_other_names_get_no_warning(self):
        for name in ("{stem}.{ext}", "x.jpeg", "x.JPG", "x", "v1.2", "x.2024"):
            self.convert("--format", "jpeg", "--name", name, "--out", "out", "a.png")
        self.picture("b.jpg")
        self.convert("--percent", "50", "--out", "out", "b.jpg")


class Help(ConvertByOptions):
    def test_options_are_grouped_by_purpose(self):
        text = self.kestrinectl("convert", "--help").stdout.decode()
        groups = {title: re.findall(r"^  (?:-\w, )?(--[\w-]+)", section, re.MULTILINE)
                  for title, section in re.findall(r"^(\w[\w ]+):\n((?: .*\n)+)", text, re.MULTILINE)}
        self.assertEqual(list(groups), ["Arguments", "Options", "Sets", "Size", "Format", "Orientation and colours",
                                        "Metadata", "Places and names of results", "Choice of files", "Repeated runs",
                                        "Output", "Safety and resources"])
        self.assertEqual(groups["Options"], ["--help"])
        self.assertEqual(groups["Format"][:2], ["--format", "--quality"])
        self.assertNotIn("\n\n\n", text)

    def test_first_only_says_what_it_permits(self):
        text = " ".join(self.kestrinectl("convert", "--help").stdout.decode().split())
        self.assertIn("convert the first picture without a warning, also where it replaces the whole file (default: a "
                      "warning, and such files are not replaced, which is an error)", text)


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

    def test_a_picture_and_a_link_to_it_are_replaced_once(self):
        for arguments in (["."], ["a.png", "link.png"], [".", "link.png"]):
            self.picture("a.png", 60, 40)
            (self.folder / "link.png").unlink(missing_ok=True)
            os.symlink("a.png", self.folder / "link.png")
            self.convert("--percent", "50", "--replace", "--exclude", "photo*", *arguments)
            self.assertTrue((self.folder / "link.png").is_symlink())
            self.assertEqual(Image.open(self.folder / "a.png").size, (30, 20))

    def test_a_link_to_a_picture_elsewhere_is_replaced_and_the_picture_stays(self):
        (self.folder / "links").mkdir()
        os.symlink("../a.png", self.folder / "links/link.png")
        before = (self.folder / "a.png").read_bytes()
        self.convert("--percent", "50", "--replace", "links")
        self.assertFalse((self.folder / "links/link.png").is_symlink())
        self.assertEqual((self.folder / "a.png").read_bytes(), before)

    def test_replace_makes_a_preset_replace_for_one_run(self):
        self.store({"name": "Web", "formatType": JPEG, "width": 30.0, "height": 20.0})
        self.convert("--set", "Web", "--replace", "a.png")
        self.assertEqual(self.tree("."), {"a.jpg": (30, 20)})


    def test_a_result_belongs_to_the_group_of_the_folder_that_its_name_leads_to(self):
        group = next((group for group in [*os.getgroups(), 100] if group != os.getgid()), None)
        for folder in ("shared", "out/shared"):
            (self.folder / folder).mkdir(parents=True)
            try:
                os.chown(self.folder / folder, -1, group)
            except PermissionError:
                self.skipTest("only root can choose any group")
            (self.folder / folder).chmod(0o2775)
        self.convert("--longest", "30", "--out", "shared", "a.png")
        self.convert("--longest", "30", "--out", "shared/new", "a.png")
        self.convert("--longest", "30", "--out", "out", "--name", "shared/{stem}.{ext}", "a.png")
        self.convert("--longest", "30", "--out", "out", "--name", "shared/new/{stem}.{ext}", "a.png")
        for result in ("shared/a.png", "shared/new/a.png", "out/shared/a.png", "out/shared/new/a.png"):
            self.assertEqual((self.folder / result).stat().st_gid, group, result)


class Upright(ConvertByOptions):
    def laid_down(self, orientation, order, form):
        """Writes a picture whose quarters are red, green, blue, white once it is turned by its orientation."""
        samples = pictures.corners(60, 40)
        stored = {1: samples, 2: samples[:, ::-1], 3: samples[::-1, ::-1], 4: samples[::-1],
                  5: samples.swapaxes(0, 1), 6: numpy.rot90(samples, 1), 7: numpy.rot90(samples, 2).swapaxes(0, 1),
                  8: numpy.rot90(samples, -1)}[orientation]
        block = pictures.exif(orientation, order)
        name = f"{form}-{orientation}-{'big' if order == '>' else 'little'}.{form}"
        path = self.folder / "in" / name
        path.parent.mkdir(exist_ok=True)
        if form == "jpg":
            path.write_bytes(pictures.jpeg(numpy.ascontiguousarray(stored), block))
        elif form == "tif":
            path.write_bytes(pictures.tiff(stored, orientation, order))
        else:
            prefix = b"Exif\0\0" if form == "webp" else b""
            pictures.image(numpy.ascontiguousarray(stored)).save(path, exif=prefix + block, quality=95)

    def test_all_orientations_are_turned_in_both_byte_orders_wherever_the_format_keeps_them(self):
        for form in ("jpg", "png", "tif", "webp"):
            for orientation in range(1, 9):
                for order in "<>":
                    self.laid_down(orientation, order, form)
        self.convert("--percent", "50", "--out", "out", "in")
        self.assertEqual(len(self.tree("out")), 64)
        for name, size in self.tree("out").items():
            self.assertEqual((size, pictures.quarters(self.folder / "out" / name)), ((30, 20), "rgbw"), name)
            self.assertIn(exiftool(self.folder / "out" / name).get("IFD0:Orientation"), (None, "1"), name)

    def test_pixels_that_are_only_turned_stay_exact(self):
        samples = pictures.photo(31, 17)
        for orientation, expected in ((2, samples[:, ::-1]), (4, samples[::-1]), (5, samples.swapaxes(0, 1)),
                                      (7, numpy.rot90(samples, 2).swapaxes(0, 1))):
            pictures.image(samples).save(self.folder / "t.png", exif=pictures.exif(orientation))
            self.convert("--format", "tiff", "--name", f"{orientation}.tiff", "t.png")
            self.assertTrue(numpy.array_equal(pictures.pixels(self.folder / f"{orientation}.tiff"), expected), orientation)

    def test_a_preset_turns_by_its_own_rule_unless_upright_is_given_and_a_hint_counts_the_others(self):
        self.store({"name": "Web", "formatType": JPEG, "width": 30.0, "height": 30.0, "autoRotate": 1}, selection=[(0, 1)])
        for orientation, order in ((6, ">"), (3, ">"), (6, "<"), (1, ">")):
            self.laid_down(orientation, order, "jpg")
        self.convert("in", messages=["hint: 2 pictures should be turned, which the set does not do; --upright does it"])
        self.assertEqual({name: pictures.quarters(self.folder / "in/Web" / name) for name in self.tree("in/Web")},
                         {"jpg-1-big.jpg": "rgbw", "jpg-6-big.jpg": "rgbw", "jpg-3-big.jpg": "bwrg",
                          "jpg-6-little.jpg": "gbwr"})
        self.convert("--upright", "--out", "out", "in")
        for name in self.tree("out"):
            self.assertEqual(pictures.quarters(self.folder / "out" / name), "rgbw", name)

    def test_a_result_that_carries_the_orientation_needs_no_hint(self):
        self.store({"name": "Web", "formatType": JPEG, "width": 30.0, "height": 30.0, "attachExifData": 1}, selection=[(0, 1)])
        self.laid_down(3, "<", "jpg")
        self.convert("in")
        self.assertEqual(exiftool(self.folder / "in/Web/jpg-3-little.jpg")["IFD0:Orientation"], "3")

    def test_no_upright_turns_nothing(self):
        self.laid_down(3, "<", "jpg")
        self.convert("--percent", "50", "--no-upright", "--out", "out", "in")
        self.assertEqual(pictures.quarters(self.folder / "out/jpg-3-little.jpg"), "bwrg")


class Canvas(ConvertByOptions):
    def test_pad_fills_the_box_around_the_picture(self):
        for gravity, top in ((("center"), 10), ("north", 0), ("southeast", 20)):
            self.convert("--fit", "60x60", "--pad", "#ff8000", "--gravity", gravity, "--format", "png", "--name",
                         f"{gravity}.png", "a.png")
            samples = pictures.pixels(self.folder / f"{gravity}.png")
            self.assertEqual(samples.shape, (60, 60, 3))
            inside = samples[top:top + 40]
            self.assertTrue(numpy.array_equal(inside, pictures.pixels(self.folder / "a.png")), gravity)
            margin = numpy.delete(samples, range(top, top + 40), axis=0)
            self.assertTrue((margin == (255, 128, 0)).all(), gravity)

    def test_a_turned_picture_is_padded_as_it_is_seen(self):
        pictures.image(pictures.corners(60, 40)).save(self.folder / "t.png", exif=pictures.exif(5))
        self.convert("--fit", "60x60", "--pad", "black", "--gravity", "west", "--out", "out", "t.png")
        samples = pictures.pixels(self.folder / "out/t.png")
        self.assertTrue((samples[:, 40:] == 0).all())
        self.assertTrue((samples[:, :40].max(axis=2) > 0).all())

    def test_a_grey_picture_becomes_coloured_only_for_a_coloured_margin(self):
        pictures.image(pictures.photo(60, 40, 1)).save(self.folder / "grey.png")
        for color, mode in (("white", "L"), ("#f00", "RGB")):
            self.convert("--fit", "60x60", "--pad", color, "--name", f"{mode}.png", "grey.png")
            self.assertEqual(Image.open(self.folder / f"{mode}.png").mode, mode)
        self.assertEqual(tuple(pictures.pixels(self.folder / "RGB.png")[0, 0]), (255, 0, 0))

    def test_the_colour_of_a_margin_is_that_of_srgb_in_a_picture_with_another_profile(self):
        wide = Image.fromarray(pictures.photo(60, 40))
        wide.save(self.folder / "wide.tif", icc_profile=WIDE_PROFILE)
        self.convert("--fit", "60x60", "--pad", "#c04040", "--format", "png", "--out", "out", "wide.tif")
        done = Image.open(self.folder / "out/wide.png")
        self.assertEqual(done.info["icc_profile"], WIDE_PROFILE)
        seen = ImageCms.profileToProfile(done, ImageCms.ImageCmsProfile(io.BytesIO(WIDE_PROFILE)),
                                         ImageCms.createProfile("sRGB")).getpixel((0, 0))
        self.assertLessEqual(max(abs(a - b) for a, b in zip(seen, (0xc0, 0x40, 0x40))), 2)
        self.assertNotEqual(done.getpixel((0, 0)), (0xc0, 0x40, 0x40))

    def test_background_is_the_colour_of_transparent_parts(self):
        Image.new("RGBA", (60, 40), (200, 0, 0, 0)).save(self.folder / "clear.png")
        for form in ("png", "jpeg"):
            self.convert("--format", form, "--background", "#336699", "--out", "out", "clear.png")
        for name in ("clear.png", "clear.jpg"):
            seen = Image.open(self.folder / "out" / name)
            self.assertEqual(seen.mode, "RGB")
            self.assertLessEqual(max(abs(a - b) for a, b in zip(seen.getpixel((9, 9)), (0x33, 0x66, 0x99))), 2)


class MaxBytes(ConvertByOptions):
    def test_the_highest_quality_that_fits_is_chosen(self):
        self.picture("photo.png", 600, 400)
        self.convert("--max-bytes", "30k", "--format", "jpeg", "--out", "out", "photo.png")
        size = (self.folder / "out/photo.jpg").stat().st_size
        sizes = {}
        for quality in range(101):
            self.convert("--quality", str(quality), "--format", "jpeg", "--name", "q.jpg", "--out", "q", "photo.png")
            sizes[quality] = (self.folder / "q/q.jpg").stat().st_size
            os.remove(self.folder / "q/q.jpg")
        self.assertEqual(size, max(each for each in sizes.values() if each <= 30000))

    def test_a_quality_is_the_upper_limit(self):
        self.convert("--max-bytes", "1M", "--quality", "20", "--format", "jpeg", "--out", "out", "a.png")
        self.convert("--quality", "20", "--format", "jpeg", "--out", "q", "a.png")
        self.assertEqual((self.folder / "out/a.jpg").read_bytes(), (self.folder / "q/a.jpg").read_bytes())

    def test_a_size_out_of_reach_is_an_error_without_a_file(self):
        done = self.convert("--max-bytes", "100", "--format", "jpeg", "--out", "out", "a.png", status=1)
        self.assertIn(b"a.png: no quality gives a file of at most 100 bytes", done.stderr)
        self.assertFalse((self.folder / "out").exists())
        done = self.convert("--max-bytes", "1", "--format", "jpeg", "--out", "out", "a.png", status=1)
        self.assertIn(b"a.png: no quality gives a file of at most 1 byte\n", done.stderr)
        done = self.convert("--max-bytes", "100", "--out", "out", "a.png", status=1)
        self.assertIn(b"a.png: the format does not give a file of at most 100 bytes", done.stderr)


class Properties(ConvertByOptions):
    def setUp(self):
        super().setUp()
        (self.folder / "photo.jpg").write_bytes(pictures.jpeg(pictures.photo(60, 40)))
        subprocess.run(["exiftool", "-q", "-overwrite_original", "-Artist=Ann", "-Copyright=(c) Ann", "-Model=One",
                        "-DateTimeOriginal=2019:03:04 05:06:07", "-SerialNumber=123", "-OwnerName=Bob",
                        "-LensSerialNumber=45", "-GPSLatitude=12.5", "-GPSLatitudeRef=N", "-ISO=100",
                        self.folder / "photo.jpg"], check=True)
        os.utime(self.folder / "photo.jpg", ns=(0, 1_500_000_000_123_456_789))

    def kept(self, *arguments):
        self.convert("--percent", "50", "--out", "out", *arguments, "photo.jpg")
        tags = exiftool(self.folder / "out/photo.jpg")
        shutil.rmtree(self.folder / "out")
        return {name for name in ("Artist", "Copyright", "Model", "DateTimeOriginal", "ISO", "SerialNumber", "OwnerName",
                                  "LensSerialNumber", "GPSLatitude") for tag in tags if tag.split(":")[1] == name}

    def test_metadata_says_what_is_kept_of_the_exif_data(self):
        usual = {"Artist", "Copyright", "Model", "DateTimeOriginal", "ISO"}
        owner = {"SerialNumber", "OwnerName", "LensSerialNumber"}
        self.assertEqual(self.kept(), usual)
        for words, expected in ((("none",), set()), (("rights",), {"Artist", "Copyright"}), (("exif",), usual),
                                (("all",), usual | owner | {"GPSLatitude"})):
            self.assertEqual(self.kept("--metadata", *words), expected, words)
        self.assertEqual(self.kept("--exif"), usual)

    def test_png_and_tiff_keep_it_too_but_not_with_a_preset(self):
        wanted = ("IFD0:Artist", "IFD0:Model", "ExifIFD:ISO", "ExifIFD:DateTimeOriginal", "ExifIFD:SerialNumber",
                  "GPS:GPSLatitude")
        original = exiftool(self.folder / "photo.jpg")
        for extension, number in (("png", PNG), ("tiff", TIFF)):
            self.store({"name": "Web", "formatType": number, "attachExifData": 1})
            for words, count in (((), 4), (("--metadata", "none"), 0), (("--metadata", "rights"), 1), (("--metadata", "all"), 6)):
                self.convert("--longest", "40", "--format", extension, "--out", "out", *words, "photo.jpg")
                tags = exiftool(self.folder / f"out/photo.{extension}")
                found = [name for name in wanted if name in tags]
                self.assertEqual(len(found), count, (words, tags))
                self.assertEqual({name: tags[name] for name in found}, {name: original[name] for name in found})
                self.assertNotIn("ExifTool:Warning", tags)
                shutil.rmtree(self.folder / "out")
            self.convert("--set", "Web", "photo.jpg")
            self.assertNotIn("IFD0:Artist", exiftool(self.folder / f"Web/photo.{extension}"))
            shutil.rmtree(self.folder / "Web")

    def test_what_a_tiff_says_about_its_origin_is_kept(self):
        pictures.image(pictures.photo(60, 40)).save(self.folder / "a.tif", tiffinfo={315: "Ann", 33432: "Ann 2024", 271: "Maker"})
        self.convert("--percent", "50", "--format", "jpeg", "--out", "out", "a.tif")
        tags = exiftool(self.folder / "out/a.jpg")
        self.assertEqual([tags.get(f"IFD0:{name}") for name in ("Artist", "Copyright", "Make")], ["Ann", "Ann 2024", "Maker"])

    def test_a_tiff_keeps_as_much_as_other_formats(self):
        pictures.image(pictures.photo(60, 40)).save(self.folder / "a.tif")
        wanted = {"GPS:GPSLatitude": "10.5", "IFD0:Rating": "4", "IFD0:XPKeywords": "sea", "IFD0:Software": "S", "IFD0:ImageDescription": "D"}
        set_tags(self.folder / "a.tif", {**wanted, "GPS:GPSLatitudeRef": "N"})
        for extension in ("jpg", "tiff", "webp"):
            self.convert("--percent", "50", "--metadata", "all", "--format", extension, "--name", f"all.{extension}", "a.tif")
            tags = exiftool(self.folder / f"all.{extension}")
            self.assertEqual({name: tags.get(name) for name in wanted}, wanted, extension)
            self.convert("--percent", "50", "--format", extension, "--name", f"usual.{extension}", "a.tif")
            tags = exiftool(self.folder / f"usual.{extension}")
            self.assertEqual([tags.get(name) for name in wanted], [None, None, None, "S", "D"])

    def test_a_preset_takes_of_a_tiff_without_exif_only_what_says_its_origin(self):
        self.store({"name": "Web", "formatType": JPEG, "attachExifData": 1})
        for name, words, expected in (("a.tif", {305: "S"}, None), ("b.tif", {305: "S", 271: "Maker"}, "S")):
            pictures.image(pictures.photo(60, 40)).save(self.folder / name, tiffinfo=words)
            self.convert("--set", "Web", name)
            tags = exiftool(self.folder / "Web" / name.replace("tif", "jpg"))
            self.assertEqual(tags.get("IFD0:Software"), expected)

    def test_text_in_the_byte_order_of_the_source_stays_readable(self):
        for order in ("II", "MM"):
            name = order + ".jpg"
            pictures.image(pictures.photo(60, 40)).save(self.folder / name)
            set_tags(self.folder / name, {"ExifIFD:UserComment": "Grüße"}, "-ExifByteOrder=" + order)
            for extension in ("jpg", "tiff"):
                self.convert("--percent", "50", "--format", extension, "--name", f"{order}-result.{extension}", name)
                result = self.folder / f"{order}-result.{extension}"
                self.assertEqual(exiftool(result)["ExifIFD:UserComment"], "Grüße")
                self.assertNotIn("byte order", str(exiftool(result, "-validate", "-warning")))

    def test_what_depends_on_the_size_of_the_pixels_is_not_kept_when_it_changes(self):
        pictures.image(pictures.photo(60, 40)).save(self.folder / "a.jpg")
        set_tags(self.folder / "a.jpg", {"ExifIFD:FocalPlaneXResolution": "4000", "ExifIFD:SubjectArea": "3 2", "ExifIFD:ISO": "100"})
        self.convert("--percent", "50", "--name", "small.jpg", "a.jpg")
        self.convert("--percent", "100", "--quality", "50", "--name", "same.jpg", "a.jpg")
        for name, expected in (("small.jpg", [False, False, True]), ("same.jpg", [True, True, True])):
            tags = exiftool(self.folder / name)
            self.assertEqual([f"ExifIFD:{tag}" in tags for tag in ("FocalPlaneXResolution", "SubjectArea", "ISO")], expected)

    def test_after_a_conversion_to_srgb_the_exif_data_say_so(self):
        pictures.image(pictures.photo(60, 40)).save(self.folder / "a.jpg", icc_profile=WIDE_PROFILE)
        set_tags(self.folder / "a.jpg", {"ExifIFD:ColorSpace": "2"})
        for words, expected in ((("--profile", "srgb"), "1"), ((), "2")):
            self.convert("--percent", "50", *words, "--name", "r.jpg", "a.jpg")
            self.assertEqual(exiftool(self.folder / "r.jpg")["ExifIFD:ColorSpace"], expected)
            (self.folder / "r.jpg").unlink()

    def test_a_format_that_cannot_keep_what_was_asked_for_gets_a_warning(self):
        warning = "warning: photo.jpg: the result has no EXIF data, since it is GIF; all other formats keep them"
        for word, messages in (("rights", [warning]), ("all", [warning]), ("none", [])):
            self.convert("--longest", "40", "--format", "gif", "--metadata", word, "--out", word, "photo.jpg",
                         messages=messages)

    def test_with_a_preset_exif_is_what_presets_keep(self):
        self.store({"name": "Web", "formatType": JPEG})
        self.convert("--set", "Web", "--exif", "photo.jpg")
        tags = exiftool(self.folder / "Web/photo.jpg")
        self.assertEqual((tags["ExifIFD:SerialNumber"], tags["ExifIFD:ISO"]), ("123", "100"))
        self.assertNotIn("GPS:GPSLatitude", tags)

    def test_times_are_kept_taken_or_now(self):
        self.environment["TZ"] = "UTC-1"
        expected = {"keep": 1_500_000_000_123_456_789, "taken": 1_551_672_367_000_000_000}
        before = time.time_ns() - 10**9
        for word in ("keep", "taken", "now"):
            self.convert("--percent", "50", "--times", word, "--name", word + ".jpg", "photo.jpg")
        self.convert("--percent", "50", "--times", "taken", "--format", "jpg", "--name", "a.jpg", "a.png")
        modified = {path.stem: path.stat().st_mtime_ns for path in self.folder.glob("*.jpg")}
        self.assertEqual({word: modified[word] for word in expected}, expected)
        for word in ("now", "a"):
            self.assertGreaterEqual(modified[word], before)

    def test_a_replaced_file_can_keep_its_time(self):
        self.convert("--percent", "50", "--times", "keep", "--replace", "photo.jpg")
        self.assertEqual((self.folder / "photo.jpg").stat().st_mtime_ns, 1_500_000_000_123_456_789)

    def test_names_can_have_the_day_when_the_picture_was_taken_or_else_when_it_was_modified(self):
        os.utime(self.folder / "a.png", (0, 1_400_000_000))
        self.convert("--percent", "50", "--name", "{date}/{stem}.{ext}", "--out", "out", "photo.jpg", "a.png")
        self.assertEqual(set(self.tree("out")), {"2019-03-04/photo.jpg", "2014-05-13/a.png"})

    def test_a_date_that_does_not_exist_is_no_date(self):
        for number, date in enumerate(("2024:13:45 10:00:00", "2024:02:30 10:00:00", "2024:06:01 25:00:00")):
            name = f"{number}.jpg"
            block = pictures.exif(extra=[(0x8769, 4, 1, (26).to_bytes(4, "big"))])
            block += b"\0\1" + b"\x90\3\0\2" + (20).to_bytes(4, "big") + (44).to_bytes(4, "big") + bytes(4)
            (self.folder / name).write_bytes(pictures.jpeg(pictures.photo(60, 40), block + date.encode() + b"\0"))
            self.assertEqual(exiftool(self.folder / name)["ExifIFD:DateTimeOriginal"], date)
            os.utime(self.folder / name, (0, 1_400_000_000))
            self.convert("--percent", "50", "--name", "{date}/{stem}.{ext}", "--out", "out", name)
        self.assertEqual(set(self.tree("out")), {f"2014-05-13/{number}.jpg" for number in range(3)})

    def test_a_profile_is_kept_or_converted_to_srgb(self):
        samples = pictures.photo(60, 40)
        Image.fromarray(samples).save(self.folder / "wide.png", icc_profile=WIDE_PROFILE)
        self.convert("--percent", "100", "--out", "kept", "wide.png")
        self.convert("--percent", "100", "--profile", "srgb", "--out", "srgb", "wide.png")
        self.assertEqual(Image.open(self.folder / "kept/wide.png").info["icc_profile"], WIDE_PROFILE)
        done = Image.open(self.folder / "srgb/wide.png")
        self.assertIn("sRGB".encode("utf-16-be"), done.info["icc_profile"])
        expected = ImageCms.profileToProfile(Image.fromarray(samples), ImageCms.ImageCmsProfile(io.BytesIO(WIDE_PROFILE)),
                                             ImageCms.createProfile("sRGB"), renderingIntent=1)
        self.assertGreater(pictures.psnr(numpy.asarray(done), numpy.asarray(expected)), 40)


class SkipFitting(ConvertByOptions):
    def is_copied(self, name, *arguments):
        """Whether the file becomes the result as it is."""
        self.convert("--skip-fitting", *arguments, "--out", "out", name)
        result = next((self.folder / "out").iterdir()).read_bytes()
        shutil.rmtree(self.folder / "out")
        return result == (self.folder / name).read_bytes()

    def test_a_file_that_is_as_asked_for_is_copied(self):
        self.picture("photo.jpg", quality=95)
        for name in ("a.png", "photo.jpg"):
            self.assertTrue(self.is_copied(name, "--longest", "600"))
            self.assertTrue(self.is_copied(name, "--longest", "60", "--max-bytes", "1M", "--profile", "srgb"))
            self.assertTrue(self.is_copied(name, "--cover", "60x40"))

    def test_json_tells_copies_from_conversions(self):
        self.picture("large.png", 600, 400)
        done = self.kestrinectl("convert", "--skip-fitting", "--longest", "60", "--json", "--out", "out", "a.png", "large.png")
        *files, _ = map(json.loads, done.stdout.splitlines())
        self.assertEqual({os.path.basename(file["source"]): file["outputs"][0]["copied"] for file in files},
                         {"a.png": True, "large.png": False})

    def test_a_copy_has_its_own_size_in_its_name(self):
        arguments = ("--skip-fitting", "--longest", "600", "--name", "{stem}-{width}x{height}.{ext}", "--out", "out", "a.png")
        dry = self.convert("--dry-run", *arguments).stdout
        plan = self.kestrinectl("plan", *arguments).stdout
        self.assertEqual(self.convert(*arguments).stdout, dry)
        self.assertEqual(set(self.tree("out")), {"a-60x40.png"})
        self.assertIn(b"out/a-60x40.png", plan)

    def test_a_file_that_is_not_is_converted(self):
        self.picture("photo.jpg", quality=95)
        length = (self.folder / "photo.jpg").stat().st_size
        for arguments in (("--longest", "59"), ("--percent", "99"), ("--longest", "600", "--format", "png"),
                          ("--cover", "600x400"), ("--longest", "60", "--max-bytes", str(length - 1)),
                          ("--fit", "60x60", "--pad", "white")):
            self.assertFalse(self.is_copied("photo.jpg", *arguments), arguments)
        self.picture("wide.png", icc_profile=WIDE_PROFILE)
        self.assertFalse(self.is_copied("wide.png", "--longest", "600", "--profile", "srgb"))

    def test_a_lying_picture_and_one_with_more_metadata_are_converted(self):
        samples = pictures.photo(60, 40)
        (self.folder / "lying.jpg").write_bytes(pictures.jpeg(samples, pictures.exif(6)))
        self.assertFalse(self.is_copied("lying.jpg", "--longest", "600", "--metadata", "all"))
        (self.folder / "photo.jpg").write_bytes(pictures.jpeg(samples))
        for tag, allowing in (("-GPSLatitude=12.5", "all"), ("-XMP:Title=x", "all"), ("-IPTC:Credit=x", "all"),
                              ("-Comment=x", "all"), ("-PNG:Comment=x", "all")):
            name = "a.png" if "PNG" in tag else "photo.jpg"
            subprocess.run(["exiftool", "-q", "-overwrite_original", "-all=", tag, self.folder / name], check=True)
            self.assertFalse(self.is_copied(name, "--longest", "600"), tag)
            self.assertTrue(self.is_copied(name, "--longest", "600", "--metadata", allowing), tag)

    def test_results_of_an_earlier_run_fit(self):
        block = pictures.exif(1, extra=[(0x0110, 2, 4, b"abc\0")])
        (self.folder / "photo.jpg").write_bytes(pictures.jpeg(pictures.photo(60, 40), block))
        self.convert("--longest", "30", "--out", "first", "photo.jpg")
        self.assertTrue(self.is_copied("first/photo.jpg", "--longest", "30"))
        self.assertFalse(self.is_copied("first/photo.jpg", "--longest", "30", "--metadata", "none"))

    def test_with_replace_a_fitting_file_stays(self):
        status = (self.folder / "a.png").stat()
        for dry in ("--dry-run",), ():
            done = self.convert("--skip-fitting", "--longest", "600", "--replace", *dry, "a.png")
            self.assertEqual(done.stdout, b"a.png skipped: it already has the requested size and format\n")
        self.assertEqual((self.folder / "a.png").stat().st_ino, status.st_ino)


class Inputs(ConvertByOptions):
    def sources(self, *arguments, **options):
        done = self.kestrinectl("convert", "--percent", "50", "--out", "out", *arguments, **options)
        self.assertEqual((done.returncode, messages_of(done)), (0, []))
        shutil.rmtree(self.folder / "out")
        return [line.split(b" -> ")[0] for line in done.stdout.splitlines()]

    def test_globs_choose_files_in_folders_by_path_or_name(self):
        for name in ("in/a.png", "in/b.jpg", "in/raw/c.png", "in/raw/deep/d.png"):
            self.picture(name)
        for arguments, expected in ((("--include", "*.png"), [b"in/a.png", b"in/raw/c.png", b"in/raw/deep/d.png"]),
                                    (("--include", "raw/*"), [b"in/raw/c.png", b"in/raw/deep/d.png"]),
                                    (("--exclude", "raw/*", "--exclude", "b.*"), [b"in/a.png"]),
                                    (("--include", "*.png", "--exclude", "[cd].*"), [b"in/a.png"])):
            self.assertEqual(self.sources("-r", *arguments, "in"), expected, arguments)
        self.assertEqual(self.sources("--exclude", "*", "in/b.jpg"), [b"in/b.jpg"])

    def test_files_come_from_a_list_or_from_standard_input(self):
        for name in ("b c.png", "-d.png", "in/e.png"):
            self.picture(name)
        (self.folder / "list").write_bytes(b"b c.png\n-d.png\n\nin\n")
        self.assertEqual(self.sources("--files-from", "list", "a.png"), [b"a.png", b"b c.png", b"-d.png", b"in/e.png"])
        self.picture("new\nline.png")
        self.assertEqual(self.sources("--files-from", "-", "-0", input=b"new\nline.png\0a.png\0"),
                         [b"new", b"line.png", b"line.png", b"a.png"])

    def test_quiet_prints_only_errors(self):
        self.store({"name": "Web", "formatType": PNG}, selection=[(0, 1)])
        pictures.image(pictures.photo(60, 40)).save(self.folder / "lying.png", exif=pictures.exif(6))
        self.assertEqual(self.convert("-q", "a.png", "lying.png").stdout, b"")
        done = self.convert("-q", "a.png", "absent.png", status=1)
        self.assertEqual((done.stdout, len(done.stderr.splitlines())), (b"", 2))

    def test_a_list_may_be_a_pipe(self):
        reading, writing = os.pipe()
        os.write(writing, b"a.png\n")
        os.close(writing)
        self.assertEqual(self.sources("--files-from", f"/dev/fd/{reading}", pass_fds=(reading,)), [b"a.png"])
        os.close(reading)

    def test_a_list_of_another_system_may_lack_its_last_line_end_and_begin_with_a_byte_order_mark(self):
        self.picture("t.png")
        for content in (b"a.png\r\nt.png", b"\xef\xbb\xbfa.png\nt.png\n", b"\xef\xbb\xbfa.png\r\nt.png\r\n", b"a.png\r\n\r\nt.png\r"):
            (self.folder / "list").write_bytes(content)
            self.assertEqual(self.sources("--files-from", "list"), [b"a.png", b"t.png"], content)
        shutil.copy(self.folder / "t.png", self.folder / "r\r")
        (self.folder / "list").write_bytes(b"a.png\nr\r")
        self.assertIn(b"r\r -> ", self.convert("--percent", "50", "--out", "r", "--files-from", "list").stdout)
        self.picture("\ufeffa.png")
        self.assertEqual(self.sources("--files-from", "-", "-0", input="\ufeffa.png".encode()), ["\ufeffa.png".encode()])

    def test_zero_bytes_in_a_list_must_be_asked_for(self):
        done = self.kestrinectl("convert", "--percent", "50", "--out", "x", "--files-from", "-", input=b"za/a.png\0zb/a.png\0")
        self.assertEqual((done.returncode, done.stdout), (2, b""))
        self.assertIn(b"--null", done.stderr)

    def test_a_list_that_cannot_be_read_is_an_error(self):
        self.assertIn(b"No such file", self.convert("--percent", "50", "--out", "x", "--files-from", "absent", status=1).stderr)
        (self.folder / "round").symlink_to("round")
        with open(self.folder / "huge", "wb") as huge:
            huge.truncate(1 << 31)
        for name, status, message in (("round", 1, "the list round cannot be opened: Too many levels of symbolic links"),
                                      (".", 1, "the list . is a folder"),
                                      ("/proc/self/mem", 1, "the list /proc/self/mem cannot be read: Input/output error"),
                                      ("huge", 1, "the list huge is too large: it may have at most 1.1 GB"),
                                      ("", 2, "--files-from: must not be empty; 'kestrinectl help convert' explains its use")):
            done = self.convert("--percent", "50", "--out", "x", "--files-from", name, status=status)
            self.assertEqual(messages_of(done), [message])
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        done = self.kestrinectl("convert", "--percent", "50", "--out", "x", "--files-from", "-", stdin=folder)
        self.assertEqual(messages_of(done), ["standard input cannot be read: Is a directory"])
        self.assertIn(b"-0 needs --files-from", self.convert("--percent", "50", "--out", "x", "-0", "a.png", status=2).stderr)


class DryRun(ConvertByOptions):
    def test_it_prints_the_lines_of_the_real_run_and_writes_nothing(self):
        self.store({"name": "Web", "formatType": JPEG}, {"name": "New", "formatType": JPEG, "replaceFile": 1})
        for name in ("x/a.png", "y/a.gif", "y/a_1.png", "out/a.jpg"):
            self.picture(name)
        before = self.tree(".")
        files = ("x/a.png", "y/a.gif", "y/a_1.png", "a.png")
        for arguments in (("--longest", "30", "--format", "jpeg", "--out", "out"), ("--longest", "30,20", "--out", "out"),
                          ("--set", "Web"), ("--set", "New"), ("--percent", "50", "--replace"),
                          ("--percent", "50", "--name", "{width}.{ext}")):
            dry = self.convert("--dry-run", *arguments, *files).stdout
            self.assertEqual(self.tree("."), before)
            shutil.copytree(self.folder, self.home / "copy")
            self.assertEqual(self.convert(*arguments, *files).stdout, dry, arguments)
            shutil.rmtree(self.folder)
            os.rename(self.home / "copy", self.folder)

    def test_a_dry_run_finds_what_would_not_be_replaced(self):
        frames = [pictures.image(pictures.photo(60, 40, seed=seed)) for seed in (1, 2)]
        frames[0].save(self.folder / "two.gif", save_all=True, append_images=frames[1:])
        for dry in ("--dry-run",), ():
            self.assertIn("it is an animation of 2 frames", messages_of(self.convert("--replace", "--percent", "50", *dry, "two.gif", status=1))[0])

    def test_a_dry_run_finds_results_that_are_too_large_or_too_small(self):
        self.picture("flat.png", width=300, height=2)
        self.store({"name": "Thin", "formatType": JPEG, "resizeType": 1, "ratio": 20.0})
        for options, reason in ((("--percent", "6000", "--format", "webp"), "WebP pictures have at most 16383 pixels on a side"),
                                (("--percent", "1000", "--max-pixels", "50000"), "the result has more than 50000 pixels"),
                                (("--max-pixels", "500", "--format", "png"), "too many pixels"),
                                (("--set", "Thin"), "shorter than one pixel")):
            with self.subTest(options):
                dry, real = (messages_of(self.convert(*options, "--out", "out", *first, "flat.png", status=1)) for first in (["--dry-run"], []))
                self.assertIn(reason, dry[0])
                self.assertEqual(dry, real)

    def test_a_dry_run_tells_sizes_that_are_possible_from_others(self):
        for dry in ("--dry-run",), ():
            done = self.convert("--longest", "50,20000", "--format", "webp", "--out", "out", *dry, "a.png", status=1)
            self.assertEqual(done.stdout, b"a.png -> " + bytes(self.folder / "out/a-50.webp") + b"\n")
            self.assertIn("WebP pictures have at most", messages_of(done)[0])

    def test_a_dry_run_finds_files_in_the_place_of_folders(self):
        (self.folder / "file").write_text("words")
        for place in ("file", "file/sub"):
            for dry in ("--dry-run",), ():
                self.assertIn(": Not a directory", messages_of(self.convert("--longest", "50", "--out", place, *dry, "a.png", status=1))[0])

    def test_files_that_need_a_folder_where_a_result_is_fail_for_any_number_of_jobs(self):
        for number in range(20):
            self.picture(f"in/{number:02}.gif")
            self.picture(f"in/{number:02}.png/p.gif")
        for options in ("--dry-run",), ("--jobs", "8"), ("--jobs", "1"):
            done = self.convert("-r", "--longest", "9", "--format", "png", "--out", "out", *options, "in", status=1)
            self.assertEqual(len(done.stdout.splitlines()), 20)
            self.assertEqual(sum(": Not a directory" in line for line in messages_of(done)), 20)
            shutil.rmtree(self.folder / "out", ignore_errors=True)

    def test_a_dry_run_finds_names_that_are_too_long(self):
        name = "n" * 251 + ".png"
        self.picture(name)
        for dry in ("--dry-run",), ():
            messages = messages_of(self.convert("--format", "webp", "--out", "out", *dry, name, status=1))
            self.assertIn("File name too long", messages[0])

    def test_what_cannot_be_opened_is_an_error(self):
        (self.folder / "b.png").write_text("words")
        done = self.convert("--dry-run", "--percent", "50", "--out", "out", "a.png", "b.png", status=1)
        self.assertEqual(len(done.stdout.splitlines()), 1)
        self.assertIn(b"b.png: the file is not in a known picture format", done.stderr)


class ResultsOfARun(ConvertByOptions):
    def test_a_tree_that_contains_the_path_of_its_own_root_keeps_its_folders(self):
        inner = self.folder / "tree" / str(self.folder / "tree")[1:] / "deep"
        inner.mkdir(parents=True)
        shutil.copy(self.folder / "a.png", inner / "p.png")
        relative = inner.relative_to(self.folder / "tree")
        self.convert("-r", "--percent", "50", "--out", "out", "tree")
        self.assertTrue((self.folder / "out" / relative / "p.png").exists())
        self.convert("-r", "--percent", "50", "--name", "small/{stem}.{ext}", "tree")
        self.assertTrue((inner / "small/p.png").exists())

    def test_results_of_a_run_are_not_its_sources(self):
        for name in ("a", "b"):
            (self.folder / name).mkdir()
        for number in range(400):
            shutil.copy(self.folder / "a.png", self.folder / f"a/{number:03}.png")
        shutil.copy(self.folder / "a.png", self.folder / "b/zz.png")
        self.convert("--longest", "5", "--out", "b", "a", "b")
        self.assertEqual(len(self.names("b")), 402)
        (self.folder / "b/out").mkdir()
        self.convert("--all-folders", "--longest", "5", "--out", "b/out", "b")
        self.assertEqual(sum(1 for path in (self.folder / "b/out").rglob("*") if path.is_file()), 402)

    def test_an_empty_argument_beside_a_folder_is_an_error_of_its_own(self):
        (self.folder / "tree").mkdir()
        shutil.copy(self.folder / "a.png", self.folder / "tree")
        self.store({"name": "Web", "formatType": JPEG})  # results may be in folders with this name
        done = self.convert("-r", "--percent", "50", "--out", "out", "tree", "", status=1)
        self.assertIn(b"an empty argument names no file", done.stderr)
        self.assertEqual(self.names("out"), [b"a.png"])

    def test_sizes_that_become_equal_have_one_name_in_a_dry_run_too(self):
        shutil.copy(self.folder / "a.png", self.folder / "a2.png")
        options = ("--longest", "4800,9600", "--no-enlarge", "--format", "jpeg", "--name", "x.{ext}", "--out", "out", "a.png", "a2.png")
        dry = self.convert("--dry-run", *options).stdout
        self.assertEqual(self.convert(*options).stdout, dry)
        self.assertEqual(self.names("out"), [b"x.jpg", b"x_1.jpg"])

    def test_a_copy_is_made_once_and_has_everything(self):
        pictures.image(pictures.photo(60, 40)).save(self.folder / "plain.jpg")
        options = ("--longest", "30,400,600", "--skip-fitting", "--out", "out", "plain.jpg")
        dry = self.convert("--dry-run", *options).stdout
        self.assertEqual(self.convert(*options).stdout, dry)
        self.assertEqual(self.names("out"), [b"plain-30.jpg", b"plain-60.jpg"])
        frames = [pictures.image(pictures.photo(60, 40, seed=seed)) for seed in (1, 2)]
        frames[0].save(self.folder / "moving.gif", save_all=True, append_images=frames[1:])
        self.convert("--longest", "500", "--metadata", "all", "--skip-fitting", "--out", "out", "moving.gif")
        before = (self.folder / "moving.gif").read_bytes()
        self.assertEqual((self.folder / "out/moving.gif").read_bytes(), before)
        for dry in (["--dry-run"], []):  # a fitting file is left in place, whatever it holds
            self.convert("--longest", "500", "--metadata", "all", "--skip-fitting", "--replace", *dry, "moving.gif")
        self.assertEqual((self.folder / "moving.gif").read_bytes(), before)

    def test_sets_with_any_name_stay_below_the_folder_for_results(self):
        self.store({"name": "..", "formatType": PNG}, {"name": "../../up", "formatType": PNG})
        for number, name in ((1, "__"), (2, "__/__/up")):
            self.convert("--set", f"@{number}", "--out", "out/in", "a.png")
            self.assertTrue((self.folder / "out/in" / name / "a.png").exists())
        self.assertEqual(self.names("out"), [b"in"])

    def test_extensions_are_in_upper_case_only_where_those_of_the_sources_are(self):
        for source, result in (("scan", "scan.jpg"), ("scan.001", "scan_1.jpg"), ("B.PNG", "B.JPG")):
            shutil.copy(self.folder / "a.png", self.folder / source)
            self.convert("--format", "jpeg", "--out", "out", source)
            self.assertTrue((self.folder / "out" / result).exists(), self.names("out"))


class Streams(ConvertByOptions):
    def stream(self, *arguments, content=None, status=0):
        """What the command writes to standard output, and its messages."""
        content = (self.folder / "a.png").read_bytes() if content is None else content
        done = self.kestrinectl("convert", *arguments, "-", input=content)
        self.assertEqual(done.returncode, status, done)
        return done.stdout, done.stderr.decode()

    def test_a_picture_from_standard_input_becomes_one_on_standard_output(self):
        for arguments in (("--longest", "30"), ("--format", "jpeg"), ("--longest", "30", "--isolation", "off")):
            self.convert(*arguments, "--out", "out", "a.png")
            expected = next((self.folder / "out").iterdir()).read_bytes()
            shutil.rmtree(self.folder / "out")
            self.assertEqual(self.stream(*arguments), (expected, ""))
        self.assertEqual(self.names(), self.before)

    def test_a_preset_is_applied_to_it(self):
        self.store({"name": "Web", "formatType": JPEG, "resizeType": 2, "maxSize": 30.0, "replaceFile": 1}, selection=[(0, 1)])
        written, messages = self.stream()
        self.assertEqual((Image.open(io.BytesIO(written)).size, messages), ((31, 20), ""))

    def test_what_is_no_picture_is_an_error_without_output(self):
        written, messages = self.stream("--longest", "30", content=b"words", status=1)
        self.assertEqual((written, messages.splitlines()), (b"", [
            "kestrinectl: standard input: the file is not in a known picture format",
            "kestrinectl: the picture could not be converted as requested"]))

    @unittest.skipIf(is_sanitized(), "sanitizers need more address space than the limit")
    def test_input_that_would_fill_the_memory_is_refused(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_AS, (500 << 20, 500 << 20))

        with open("/dev/zero", "rb") as endless:
            done = self.kestrinectl("convert", "--longest", "30", "-", stdin=endless, preexec_fn=limit)
        self.assertEqual((done.returncode, done.stdout), (1, b""))
        self.assertRegex(done.stderr.decode(), r"\Akestrinectl: standard input cannot be read: it has more than [\d.]+ MB, half of the "
                         r"available memory; save it as a file and convert that\n\Z")

    def test_a_folder_as_input_is_an_error(self):
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        done = self.kestrinectl("convert", "--longest", "30", "-", stdin=folder)
        self.assertEqual((done.returncode, done.stderr), (1, b"kestrinectl: standard input cannot be read: Is a directory\n"))

    def test_it_stands_alone_and_has_one_result(self):
        for arguments in (("--longest", "30", "a.png"), ("--longest", "30,60"), ("--longest", "30", "--out", "x"),
                          ("--replace", "--longest", "3"), ("--longest", "30", "--name", "x")):
            self.assertRegex(self.stream(*arguments, status=2)[1], r"\Akestrinectl: - [^\n]+\n\Z")


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
        self.assertEqual(self.refused("--longest", "30", "--gravity", "east", "--out", "x"),
                         "--gravity needs --cover or --pad")
        self.assertEqual(self.refused("--longest", "30", "--pad", "white", "--out", "x"), "--pad needs --fit")
        self.assertEqual(self.refused("--format", "gif", "--max-bytes", "3k", "--out", "x"),
                         "--max-bytes needs a format with a quality, and GIF has none")
        self.assertEqual(self.refused("--percent", "3", "--exif", "--metadata", "none", "--out", "x"),
                         "--exif and --metadata none contradict each other")
        self.assertEqual(self.refused("--quality", "30", "--no-enlarge", "--out", "x"),
                         "--no-enlarge needs a size, such as --longest 1200")
        self.assertEqual(self.refused("--longest", "30"),
                         "the results need a place: give --out FOLDER, --name TEMPLATE or --replace")

    def test_a_wrong_number_of_bytes_is_explained(self):
        for word in ("200kb", "0", "-5", "", "2 M", "many"):
            self.assertEqual(self.refused("--format", "jpeg", "--max-bytes", word, "--out", "x"),
                             "--max-bytes: must be a number of bytes, such as 200k or 2M (k is 1000, M is 1000000)")

    def test_values_that_make_no_sense_are_refused(self):
        for arguments in (("--longest", "0"), ("--longest", "30,x"), ("--percent", "nan"), ("--fit", "30"),
                          ("--gravity", "up"), ("--format", "bmp"), ("--quality", "101"), ("--name", "../x"),
                          ("--name", "{nonsense}"), ("--out", ""), ("--pad", "#12345"), ("--background", "dark"),
                          ("--max-bytes", "0"), ("--max-bytes", "3kB"), ("--metadata", "some"), ("--times", "then"),
                          ("--profile", "p3")):
            self.assertTrue(self.refused(*arguments).startswith(arguments[0]), arguments)

    def test_without_a_selected_set_the_message_says_how_to_do_without(self):
        self.convert("a.png", status=2, messages=["no set is selected; name one with --set, or describe the result, such "
                                                  "as with --longest 1200 --out small, or --percent 100 --out same for the same size"])


if __name__ == "__main__":
    main()
