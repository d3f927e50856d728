"""kestrinectl compare and sets preview: the page is judged with Python's HTML parser, Pillow and NumPy."""
import os
import re
import stat
import struct
import unittest

import numpy
from comparison_pages import EmbeddedPicture, Page, digest, luma, similarity
from PIL import Image
from pictures import corners, exif, icc, jpeg, photo
from tools import JPEG, PNG, ToolTest, main, messages_of

# Names that would do something where they are not escaped.
ODD_NAMES = [b"$(touch x).jpg", b"`touch x`.jpg", b"a\"b'c.jpg", b"<script>alert(1)<\xe2\x81\x84script>.jpg", b"a&lt;b.jpg",
             b"-->.jpg", b"a\nb\tc.jpg", b"\xff\xfe<.jpg", b"%3Cb%3E %s.jpg", "\u202eabc.jpg".encode(), b"-o.jpg", b"[a,b].jpg",
             b"javascript:x.jpg", " \u00e4 \u65e5.jpg".encode()]


def shown(name):
    """A name as messages on a terminal show it."""
    text = name.decode("utf-8", "surrogateescape")
    text = "".join(f"\\x{ord(c) - 0xdc00:02x}" if 0xdc80 <= ord(c) <= 0xdcff else c for c in text)
    return text.replace("\n", "\\n").replace("\t", "\\t").replace("\u202e", "\\u202e")


def chunks(png):
    """The names of the chunks of a PNG file."""
    names, position = [], 8
    while position < len(png):
        length, name = struct.unpack_from(">I4s", png, position)
        names.append(name.decode())
        position += 12 + length
    return names


class CompareTest(ToolTest):
    def picture(self, name="a.jpg", width=120, height=80, **options):
        samples = photo(width, height, seed=options.pop("seed", 1))
        (self.folder / name).write_bytes(jpeg(samples, **options))
        return samples

    def links(self, name, count):
        """The names of further links to a file; each of them counts as a picture."""
        names = [f"{number}-{name}" for number in range(count)]
        for link in names:
            os.link(self.folder / name, self.folder / link)
        return names

    def compare(self, *arguments, status=0, output="page.html", **options):
        """The page, or the messages of a run that fails."""
        place = [] if output is None else ["-o", output]
        done = self.kestrinectl("compare", *arguments, *place, **options)
        self.assertEqual(done.returncode, status, done)
        self.messages = messages_of(done)
        self.lines = done.stdout.decode("utf-8", "surrogateescape").splitlines()
        return Page(self.folder / output) if status == 0 and output else self.messages

    def section(self, *arguments, **options):
        return self.only(self.compare(*arguments, **options).sections)


class Results(CompareTest):
    def test_results_have_the_bytes_that_convert_gives_them(self):
        self.picture(width=300, height=200)
        section = self.section("--quality", "60,70,80", "--longest", "90", "a.jpg")
        self.assertEqual([figure.label for figure in section.figures],
                         ["Original", "JPEG, quality 60", "JPEG, quality 70", "JPEG, quality 80"])
        for quality in "60", "70", "80":
            self.kestrinectl("convert", "--quality", quality, "--longest", "90", "--metadata", "none", "--out", quality, "a.jpg")
            made = (self.folder / quality / "a.jpg").read_bytes()
            label = f"JPEG, quality {quality}"
            self.assertEqual(section.figure(label).picture.bytes, made)
            pixels, size, share, _ = section.rows[label]
            self.assertEqual((pixels, re.sub(r"\D", "", size.split("(")[-1])), ("90 x 60", str(len(made))))
            self.assertAlmostEqual(float(share.removesuffix(" %")), 100 * len(made) / (self.folder / "a.jpg").stat().st_size,
                                   delta=0.5)

    def test_the_original_is_scaled_in_the_same_way_without_loss(self):
        self.picture(width=300, height=200)
        section = self.section("--quality", "60", "--longest", "90", "a.jpg")
        self.kestrinectl("convert", "--format", "png", "--longest", "90", "--out", "png", "a.jpg")
        original = section.figure("Original").picture
        self.assertEqual((original.type, original.bytes), ("image/png", (self.folder / "png/a.png").read_bytes()))

    def test_the_similarity_is_that_of_the_shown_pictures(self):
        self.picture(width=200, height=150)
        section = self.section("--quality", "5,50,95", "a.jpg")
        reference = luma(section.figure("Original").picture.samples)
        for quality in 5, 50, 95:
            label = f"JPEG, quality {quality}"
            expected = similarity(reference, luma(section.figure(label).picture.samples))
            # Pillow's decoder and ours round the same samples in the same way.
            self.assertAlmostEqual(float(section.rows[label][3]), expected, delta=0.00011)
            self.assertIn(f"SSIM {section.rows[label][3]}", section.figure(label).caption)

    def test_equal_pixels_have_a_similarity_of_one_and_small_pictures_none(self):
        self.picture()
        self.picture("small.jpg", 60, 10)
        large, small = self.compare("--format", "png", "a.jpg", "small.jpg").sections
        self.assertEqual(large.rows["PNG"][3], "1")
        self.assertEqual(small.rows["PNG"][3], "not measured")

    def test_transparent_pictures_are_measured_on_white(self):
        samples = numpy.dstack([photo(80, 60), numpy.full((60, 80), 0, numpy.uint8)])
        Image.fromarray(samples).save(self.folder / "clear.png")
        self.assertEqual(self.section("--format", "png,jpeg", "clear.png").rows["JPEG, quality 80"][3], "1")

    def test_formats_and_qualities_are_combined(self):
        self.picture()
        section = self.section("--format", "jpeg,png,webp", "--quality", "50,90", "a.jpg")
        self.assertEqual(list(section.rows), ["Original file (JPEG)", "JPEG, quality 50", "JPEG, quality 90", "PNG",
                                              "WebP, quality 50", "WebP, quality 90"])

    def test_qualities_of_a_file_whose_format_has_none_give_one_result(self):
        Image.fromarray(photo(60, 40)).save(self.folder / "a.png")
        figures = self.section("--quality", "50,90", "a.png").figures
        self.assertEqual([figure.label for figure in figures], ["Original", "PNG"])

    def test_a_result_that_is_named_twice_is_shown_once(self):
        self.picture()
        self.assertEqual(len(self.section("--quality", "60,60", "--format", "jpeg,jpeg", "a.jpg").figures), 2)

    def test_results_that_are_scaled_in_the_same_way_have_one_original(self):
        self.picture()
        self.store(dict(name="A", formatType=JPEG, compression=50.0), dict(name="B", formatType=JPEG, compression=90.0))
        labels = [figure.label for figure in self.section("--set", "A", "--set", "B", "a.jpg").figures]
        self.assertEqual(labels, ["Original", "A: JPEG, quality 50", "B: JPEG, quality 90"])

    def test_sets_are_compared_with_their_own_sizes_and_originals(self):
        self.picture()
        self.store(dict(name="Big", resizeType=1, ratio=50.0, formatType=JPEG, compression=70.0),
                   dict(name="Small", resizeType=1, ratio=25.0, formatType=PNG))
        section = self.section("--set", "Big", "--set", "@2", "a.jpg")
        self.assertEqual([(figure.label, figure.picture.image.size) for figure in section.figures], [
            ("Original, 60 x 40", (60, 40)), ("Big: JPEG, quality 70, 60 x 40", (60, 40)),
            ("Original, 30 x 20", (30, 20)), ("Small: PNG, 30 x 20", (30, 20))])

    def test_without_options_the_selected_sets_are_compared(self):
        self.picture()
        self.store(dict(name="One", formatType=PNG, resizeType=3), dict(name="Two", formatType=JPEG), selection=[(0, 1)])
        self.assertEqual(list(self.section("a.jpg").rows), ["Original file (JPEG)", "One: PNG"])
        self.store(dict(name="One", formatType=PNG))
        self.assertEqual(self.compare("a.jpg", output="other.html", status=2), [
            "no set is selected; name one with --set, or describe the result, such as with --quality 60,80"])

    def test_several_pictures_have_a_section_each(self):
        self.picture("a.jpg")
        self.picture("b.jpg", 60, 40, seed=2)
        page = self.compare("--quality", "70", "a.jpg", "./b.jpg")
        self.assertEqual([section.name for section in page.sections], ["a.jpg", "b.jpg"])
        self.assertEqual(page.title, "Comparison of 2 pictures")
        self.assertEqual(self.lines, ["page.html (2 results of 2 pictures)"])

    def test_lying_pictures_are_shown_upright(self):
        (self.folder / "a.jpg").write_bytes(jpeg(corners(120, 80), exif(6)))
        section = self.section("--quality", "90", "a.jpg")
        self.assertEqual(section.figure("Original").picture.image.size, (80, 120))
        self.assertEqual(section.rows["Original file (JPEG)"][0], "80 x 120")
        self.assertEqual(section.rows["JPEG, quality 90"][0], "80 x 120")


class Shown(CompareTest):
    def test_what_browsers_do_not_show_is_shown_as_lossless_png(self):
        samples = numpy.round(numpy.linspace(0, 65535, 60 * 40)).astype(numpy.uint16).reshape(40, 60)
        Image.fromarray(samples).save(self.folder / "deep.png")
        section = self.section("--format", "tiff,png", "deep.png")
        tiff = section.figure("TIFF")
        self.assertEqual((tiff.picture.type, tiff.picture.image.mode), ("image/png", "I"))
        self.assertTrue((numpy.asarray(tiff.picture.image) == samples).all())
        self.assertIn("shown as PNG made from the result, because browsers do not show TIFF", tiff.caption)
        self.assertNotIn("browsers", section.figure("PNG").caption)

    def test_jpeg_xl_is_shown_as_png(self):
        self.picture()
        section = self.section("--format", "jxl", "--lossless", "a.jpg")
        figure = section.figure("JPEG XL, lossless")
        self.assertEqual(figure.picture.type, "image/png")
        self.assertTrue((figure.picture.samples == section.figure("Original").picture.samples).all())
        self.assertEqual(section.rows["JPEG XL, lossless"][3], "1")

    def test_formats_that_browsers_show_are_embedded_as_they_are(self):
        self.picture()
        section = self.section("--format", "jpeg,png,gif,webp,avif", "a.jpg")
        self.assertEqual([figure.picture.type for figure in section.figures],
                         ["image/png", "image/jpeg", "image/png", "image/gif", "image/webp", "image/avif"])

    def test_large_pictures_are_a_reduced_view_and_three_crops_of_exact_pixels(self):
        samples = numpy.repeat((60 + numpy.indices((1400, 2600)).sum(axis=0) // 40)[..., None], 3, axis=2).astype(numpy.uint8)
        samples[1000:1200, 2200:2400] = numpy.random.default_rng(1).integers(0, 2, (200, 200, 3)) * 255 # much detail
        samples[100:164, 100:164, 0] += (numpy.indices((64, 64)).sum(axis=0) % 2 * 60).astype(numpy.uint8) # too fine for JPEG
        Image.fromarray(samples).save(self.folder / "large.png")
        section = self.section("--format", "jpeg", "--quality", "40", "large.png")
        self.kestrinectl("convert", "--format", "jpeg", "--quality", "40", "--out", "made", "large.png")
        result = numpy.asarray(Image.open(self.folder / "made/large.jpg"))
        for figure, whole in (section.figure("Original"), samples), (section.figure("JPEG, quality 40"), result):
            view, centre, loss, detail = figure.pictures
            self.assertEqual((view.size, view.image.size), ((2048, 1103), (2048, 1103)))
            self.assertTrue((centre.samples == whole[444:956, 1044:1556]).all())
            self.assertEqual({picture.type for picture in (centre, loss, detail)}, {"image/png"})
            self.assertEqual({picture.image.size for picture in (centre, loss, detail)}, {(512, 512)})
        original = section.figure("Original")
        loss, detail = (original.pictures[number].samples.astype(int) for number in (2, 3))
        self.assertEqual((loss[..., 0] - loss[..., 1] == 60).sum(), 64 * 64 // 2)
        self.assertEqual((detail == 255).sum(), (samples == 255).sum())
        self.assertEqual([picture.alt.split(": ")[1] for picture in original.pictures],
                         ["Whole picture", "Centre, full size", "Greatest loss, full size", "Most detail, full size"])
        self.assertEqual([option.text for option in section.element.one("select", class_="part").all("option")],
                         [picture.alt.split(": ")[1] for picture in original.pictures])

    def test_results_of_different_sizes_have_the_same_parts(self):
        Image.fromarray(numpy.tile(photo(300, 200), (10, 10, 1))).save(self.folder / "large.png")
        section = self.section("--format", "jpeg,tiff", "--longest", "300,3000", "large.png")
        self.assertEqual({tuple(picture.alt.split(": ")[1] for picture in figure.pictures) for figure in section.figures},
                         {("Whole picture", "Centre, full size", "Greatest loss, full size", "Most detail, full size")})
        sizes = [[picture.image.size for picture in figure.pictures] for figure in section.figures]
        self.assertEqual(sizes, [[(300, 200)] * 4, [(300, 200)] * 4, [(2048, 1365)] + [(512, 512)] * 3,
                                 [(2048, 1365)] + [(512, 512)] * 3, [(300, 200)] * 4, [(2048, 1365)] + [(512, 512)] * 3])
        self.assertEqual([figure.picture.type for figure in section.figures[-2:]], ["image/png", "image/jpeg"])

    def test_a_page_stays_below_20_megabytes(self):
        noise = numpy.random.default_rng(1).integers(0, 256, (1800, 1800, 3), numpy.uint8)
        Image.fromarray(noise).save(self.folder / "noise.png")
        page = self.compare("--format", "png,tiff", "noise.png")
        self.assertLess(len(page.bytes), 20_000_000)
        self.assertEqual(page.sections[0].figures[0].picture.size, (1024, 1024))
        self.assertEqual(self.messages, ["hint: noise.png is shown reduced to 1024 pixels, because a page has at most 20 MB; "
                                         "compare fewer pictures or results at once to see more"])

    def test_a_page_that_cannot_be_small_enough_is_refused(self):
        noise = numpy.random.default_rng(1).integers(0, 256, (300, 300, 3), numpy.uint8)
        Image.fromarray(noise).save(self.folder / "noise.png")
        self.assertEqual(self.compare("--format", "png", *self.links("noise.png", 120), status=1), [
            "the page would be larger than 20 MB; compare fewer pictures or results"])
        self.assertNotIn(b"page.html", self.names())


class Metadata(CompareTest):
    def test_no_picture_has_metadata_but_its_profile(self):
        profile = icc()
        block = exif(6, extra=[(0x8298, 2, 4, b"Me!\0")])
        (self.folder / "a.jpg").write_bytes(jpeg(photo(120, 80), block, icc_profile=profile, before=b"\xff\xfe\0\x06me!!"))
        self.store(dict(name="Exif", attachExifData=1, formatType=JPEG))
        for options in ["--format", "jpeg,png,webp,avif,tiff"], ["--set", "Exif"]:
            section = self.section(*options, "a.jpg", output=f"{len(options[1])}.html")
            for figure in section.figures:
                with self.subTest(label=figure.label):
                    self.assertNotIn(b"Exif", figure.picture.bytes)
                    self.assertNotIn(b"Me!", figure.picture.bytes)
                    if figure.picture.type == "image/avif":
                        continue # Pillow cannot read it
                    image = figure.picture.image
                    self.assertEqual(dict(image.getexif()), {})
                    self.assertNotIn("comment", image.info)
                    self.assertEqual(image.info["icc_profile"], profile)
                    if figure.picture.type == "image/png":
                        self.assertLessEqual(set(chunks(figure.picture.bytes)), {"IHDR", "iCCP", "pHYs", "IDAT", "IEND"})

    def test_the_page_names_no_folder(self):
        (self.folder / "holiday").mkdir()
        self.picture("holiday/a.jpg")
        page = self.compare("--quality", "60", str(self.folder / "holiday/a.jpg"))
        for folder in "holiday", self.home.name:
            self.assertNotIn(folder, page.text)


class Document(CompareTest):
    def setUp(self):
        super().setUp()
        self.picture()

    def test_nothing_is_loaded_from_elsewhere(self):
        page = self.compare("--quality", "60", "a.jpg")
        outside = re.sub(r'src="data:[^"]*"', "", page.text)
        self.assertNotRegex(outside, r"(?i)https?:|url\(|@import|\bsrc=|href|srcset|fetch|XMLHttp|eval|innerHTML|document\.write")
        self.assertEqual([element.tag for element in page.tree.all("link") + page.tree.all("iframe")], [])
        for picture in page.tree.all("img"):
            if picture["src"] is not None:
                EmbeddedPicture(picture)

    def test_the_policy_allows_this_style_this_script_and_inner_pictures_only(self):
        page = self.compare("--quality", "60", "a.jpg")
        self.assertEqual(page.policy(), {"default-src": ["'none'"], "img-src": ["data:"],
                                         "style-src": [digest(page.tree.one("style").text)],
                                         "script-src": [digest(page.tree.one("script").text)],
                                         "base-uri": ["'none'"], "form-action": ["'none'"]})
        for element in page.tree.all("div") + page.tree.all("img"):
            self.assertFalse({name for name in element.attributes if name == "style" or name.startswith("on")})

    def test_the_slider_and_the_choices_have_names(self):
        page = self.compare("--quality", "60,80", "a.jpg")
        slider = page.tree.one("input", type="range")
        self.assertTrue(slider["aria-label"])
        self.assertEqual((slider["min"], slider["max"]), ("0", "100"))
        for label in page.tree.all("label"):
            self.assertTrue(label.text.strip())
        self.assertEqual([len(label.all("select") + label.all("input")) for label in page.tree.all("label")], [1] * 5)
        self.assertEqual([radio["value"] for radio in page.tree.all("input", type="radio")], ["fit", "1", "2"])
        self.assertEqual([option.text for option in page.tree.one("select", class_="right").all("option")],
                         ["Original", "JPEG, quality 60", "JPEG, quality 80"])
        for picture in page.tree.one("div", class_="images").all("img"):
            self.assertRegex(picture["alt"], r"^a\.jpg, .+: Whole picture$")
        self.assertEqual(page.tree.one("html")["lang"], "en")

    def test_identifiers_are_unique(self):
        page = self.compare("--quality", "60", "a.jpg", *self.links("a.jpg", 1))
        identifiers = [element["id"] for element in page.tree.all("h2")]
        self.assertEqual(len(identifiers), len(set(identifiers)))
        self.assertEqual([element["aria-labelledby"] for element in page.tree.all("section")], identifiers)
        groups = [radio["name"] for radio in page.tree.all("input", type="radio")]
        self.assertEqual(groups, ["zoom-1"] * 3 + ["zoom-2"] * 3)

    def test_odd_names_are_shown_and_are_nothing_but_text(self):
        usual = self.compare("--quality", "60", *self.links("a.jpg", len(ODD_NAMES)))
        for name in ODD_NAMES:
            os.link(self.folder / "a.jpg", os.path.join(os.fsencode(self.folder), name))
        self.compare("--quality", "60", "--overwrite", "--output=page.html", "--", *ODD_NAMES, output=None)
        page = Page(self.folder / "page.html")
        self.assertEqual([section.name for section in page.sections], [shown(name) for name in ODD_NAMES])
        for tag in "script", "img", "option", "style", "div", "b":
            self.assertEqual(len(page.tree.all(tag)), len(usual.tree.all(tag)), tag)
        self.assertEqual(page.policy(), usual.policy())
        self.assertFalse((self.folder / "x").exists())

    def test_odd_names_of_sets_are_nothing_but_text(self):
        name = "</option><script>\"'&\n$(touch x)"
        self.store(dict(name=name, formatType=JPEG, compression=70.0))
        section = self.section("--set", "@1", "a.jpg")
        label = shown(name.encode()) + ": JPEG, quality 70, "
        self.assertTrue(any(row.startswith(label) or row == label[:-2] for row in section.rows), section.rows)
        self.assertEqual(len(section.element.all("script")), 0)

    def test_the_name_of_the_only_picture_is_the_title(self):
        os.rename(self.folder / "a.jpg", self.folder / "</title>&.jpg".replace("/", "\u2044"))
        self.assertEqual(self.compare("--quality", "60", "<\u2044title>&.jpg").title, "Comparison of <\u2044title>&.jpg")


class Places(CompareTest):
    def setUp(self):
        super().setUp()
        self.picture()

    def test_an_existing_file_is_replaced_only_on_demand(self):
        (self.folder / "page.html").write_text("mine")
        self.assertEqual(self.compare("--quality", "60", "a.jpg", status=1),
                         ["page.html exists already; --overwrite replaces it"])
        self.assertEqual((self.folder / "page.html").read_text(), "mine")
        self.assertEqual(self.section("--quality", "60", "--overwrite", "a.jpg").name, "a.jpg")

    def test_a_picture_that_is_named_several_times_is_shown_once(self):
        page = self.compare("--quality", "60", "a.jpg", "a.jpg", "./a.jpg", str(self.folder / "a.jpg"))
        self.assertEqual([section.name for section in page.sections], ["a.jpg"])
        self.assertEqual(self.lines, ["page.html (1 result of 1 picture)"])

    def test_a_dangling_link_counts_as_a_file(self):
        (self.folder / "page.html").symlink_to("nowhere")
        self.compare("--quality", "60", "a.jpg", status=1)
        self.assertFalse((self.folder / "nowhere").exists())

    def test_a_picture_is_never_overwritten_by_the_page(self):
        before = (self.folder / "a.jpg").read_bytes()
        (self.folder / "link.html").symlink_to("a.jpg")
        for picture, place in ("a.jpg", "a.jpg"), ("a.jpg", "../pictures/a.jpg"), ("a.jpg", "link.html"), ("link.html", "a.jpg"):
            messages = self.compare("--quality", "60", "--overwrite", picture, output=place, status=2)
            is_named = place.endswith(".jpg")
            self.assertEqual(messages, [f"{place} is the name of a picture; --output takes a page, such as page.html" if is_named
                                        else f"{place} is one of the pictures; --output takes another file"])
        self.assertEqual((self.folder / "a.jpg").read_bytes(), before)

    def test_places_that_are_no_files_are_refused_before_anything_is_done(self):
        (self.folder / "folder").mkdir()
        os.mkfifo(self.folder / "pipe")
        for place, status, message in [
                ("folder", 1, "folder is a folder; --output takes a file"),
                ("pipe", 1, "pipe is not a regular file; --output takes another file"),
                ("missing/page.html", 1, "missing/page.html cannot be written: there is no folder missing"),
                ("-", 2, "--output takes a file, such as page.html"),
                ("", 2, "--output takes a file, such as page.html")]:
            self.assertEqual(self.compare("--quality", "60", "--overwrite", "a.jpg", output=place, status=status), [message])
        self.assertEqual(self.compare("--quality", "60", "a.jpg", "", status=1), ["an empty argument names no file"])
        self.assertEqual(self.compare("--quality", "60", "a.jpg", output=None, status=2),
                         ["the page needs a place: give --output FILE, or --open for a temporary page"])
        self.assertEqual(self.names(), [b"a.jpg", b"folder", b"pipe"])

    def test_a_failure_leaves_no_file(self):
        (self.folder / "no.jpg").write_text("no picture")
        messages = self.compare("--quality", "60", "no.jpg", "missing.jpg", status=1)
        self.assertEqual(len(messages), 3)
        self.assertTrue(messages[0].startswith("no.jpg: "))
        self.assertTrue(messages[1].startswith("missing.jpg: "))
        self.assertEqual(messages[2], "there is nothing to compare, so no page was written")
        self.assertEqual(self.names(), [b"a.jpg", b"no.jpg"])

    def test_a_folder_that_cannot_be_written_is_named(self):
        (self.folder / "locked").mkdir(mode=0o555)
        done = self.run_without_rights("compare", "--quality", "60", "a.jpg", "-o", "locked/page.html", program="kestrinectl")
        self.assertEqual(done.returncode, 1, done)
        self.assertIn("locked/page.html: ", messages_of(done)[0])
        self.assertEqual(self.names("locked"), [])

    def test_what_cannot_be_compared_is_named_and_the_rest_is_shown(self):
        (self.folder / "no.jpg").write_text("no picture")
        messages = self.compare("--quality", "60", "no.jpg", "a.jpg", status=1)
        self.assertTrue(messages[0].startswith("no.jpg: "))
        self.assertEqual(messages[1:], ["1 picture could not be compared completely"])
        self.assertEqual([section.name for section in Page(self.folder / "page.html").sections], ["a.jpg"])

    def test_a_result_that_cannot_be_made_is_named_and_the_others_are_shown(self):
        self.picture("large.jpg", 1200, 800)
        messages = self.compare("--format", "jpeg,webp", "--max-bytes", "1500", "--longest", "20,1200", "large.jpg", status=1)
        self.assertIn("large.jpg: no quality gives a file of at most 1500 bytes", messages)
        self.assertGreater(len(Page(self.folder / "page.html").sections[0].figures), 1)

    def test_damaged_pictures_are_shown_with_a_warning(self):
        whole = (self.folder / "a.jpg").read_bytes()
        (self.folder / "half.jpg").write_bytes(whole[: len(whole) // 2])
        self.compare("--quality", "60", "half.jpg")
        self.assertRegex(self.only(self.messages), r"^warning: half\.jpg: the picture is damaged")

    def test_only_the_first_frame_is_shown_with_a_warning(self):
        frames = [Image.fromarray(photo(60, 40, seed=seed)) for seed in (1, 2)]
        frames[0].save(self.folder / "two.gif", save_all=True, append_images=frames[1:])
        self.compare("--format", "png", "two.gif")
        self.assertRegex(self.only(self.messages), r"^warning: two\.gif: .*frame")

    def test_contradicting_options_are_usage_errors(self):
        for arguments, message in [
                (["--quality", "60,101"], "--quality: must be a number from 0 to 100"),
                (["--format", "jpeg,bmp"], "--format: must be jpeg, png, "),
                (["--format", "png", "--quality", "60"], "--quality has no effect on PNG"),
                (["--longest", "10", "--width", "10"], "--longest and --width contradict each other"),
                (["--quality", ",".join(map(str, range(25)))], "these options make 25 results per picture")]:
            messages = self.compare(*arguments, "a.jpg", status=2)
            self.assertTrue(self.only(messages).startswith(message), messages)
        self.assertEqual(self.names(), [b"a.jpg"])


class Browser(CompareTest):
    """`xdg-open` is a script that writes down its arguments."""

    def setUp(self):
        super().setUp()
        self.picture()
        self.programs = self.home / "bin"
        self.programs.mkdir()
        self.environment["PATH"] = f"{self.programs}:{self.environment['PATH']}"

    def install(self, status=0):
        program = self.programs / "xdg-open"
        program.write_text(f'#!/bin/sh\nprintf "%s\\0" "$@" >"{self.home}/opened"\nexit {status}\n')
        program.chmod(0o755)

    def opened(self):
        return (self.home / "opened").read_bytes().split(b"\0")[:-1]

    def test_the_page_is_opened_by_its_absolute_path(self):
        self.install()
        for name in b"page.html", b"-page.html", b"$(touch x);'\" %20.html", b"\xff\n.html":
            self.compare("--quality", "60", "--open", "a.jpg", b"--output=" + name, output=None)
            self.assertEqual(self.opened(), [os.path.join(os.fsencode(self.folder), name)])
        self.assertFalse((self.folder / "x").exists())

    def test_without_a_place_the_page_is_a_private_temporary_one(self):
        self.install()
        for quality in "60", "70":
            self.compare("--quality", quality, "--open", "a.jpg", output=None)
            place = self.home / ".cache/kestrine/preview.html"
            self.assertEqual(self.opened(), [os.fsencode(place)])
            self.assertIn(f"JPEG, quality {quality}", Page(place).sections[0].rows)
            self.assertEqual(stat.S_IMODE(place.stat().st_mode), 0o600)
        self.assertEqual(os.listdir(place.parent), ["preview.html"])

    def test_a_browser_that_cannot_be_started_is_an_error_and_the_page_stays(self):
        self.install(status=3)
        self.assertEqual(self.compare("--quality", "60", "--open", "a.jpg", output="page.html", status=1), [
            "xdg-open could not open the page (exit status 3); open "
            f"{self.folder}/page.html in a browser yourself"])
        self.assertTrue((self.folder / "page.html").exists())
        self.environment["PATH"] = str(self.folder)
        messages = self.compare("--quality", "60", "--open", "--overwrite", "a.jpg", status=1)
        self.assertRegex(self.only(messages), r"^cannot start xdg-open: .* \(Debian package xdg-utils\); open .*/page.html in a browser yourself$")


class Preview(CompareTest):
    def setUp(self):
        super().setUp()
        self.picture()
        self.store(dict(name="Web & Co", formatType=JPEG, resizeType=2, maxSize=60.0, compression=70.0),
                   dict(name="Other", formatType=PNG), selection=[(1, 1)])

    def test_it_is_the_comparison_of_one_set(self):
        done = self.kestrinectl("sets", "preview", "Web & Co", "a.jpg", "--output", "preview.html")
        self.assertEqual(done.returncode, 0, done)
        self.compare("--set", "Web & Co", "a.jpg")
        self.assertEqual((self.folder / "preview.html").read_bytes(), (self.folder / "page.html").read_bytes())

    def test_it_needs_a_set_and_a_place(self):
        for arguments, status, message in [
                (["Nope", "a.jpg", "-o", "p.html"], 1, "no set named \"Nope\"; 'kestrinectl sets list' lists all sets"),
                (["Other", "a.jpg"], 2, "the page needs a place: give --output FILE, or --open for a temporary page"),
                (["Other", "-o", "p.html"], 2, "FILE is required; 'kestrinectl help sets preview' explains its use")]:
            done = self.kestrinectl("sets", "preview", *arguments)
            self.assertEqual((done.returncode, messages_of(done)), (status, [message]))


class Isolation(CompareTest):
    """A planted fault strikes when a progressive JPEG is decoded."""

    def fault(self, name):
        self.environment.update({"LD_PRELOAD": os.environ["KESTRINE_PLANTED_FAULT"], "KESTRINE_FAULT": name,
                                 "ASAN_OPTIONS": "verify_asan_link_order=0:" + os.environ.get("ASAN_OPTIONS", "")})

    def assert_complete_without_escape(self, *arguments):
        self.compare("--quality", "60", *arguments, "a.jpg")
        self.assertEqual((self.lines, self.messages), (["page.html (1 result of 1 picture)"], []))
        self.assertFalse((self.folder / "escaped").exists())

    def test_sources_are_decoded_without_rights(self):
        self.picture(progressive=True)
        self.fault("write")
        self.assert_complete_without_escape()

    def test_results_are_decoded_without_rights(self):
        self.picture()
        self.fault("write")
        self.assert_complete_without_escape("--progressive")

    def test_the_planted_fault_would_create_a_file_without_the_isolation(self):
        self.picture(progressive=True)
        self.fault("write")
        done = self.kestrinectl("convert", "--isolation", "off", "--longest", "60", "--out", "small", "a.jpg")
        self.assertEqual((done.returncode, messages_of(done)), (0, []))
        self.assertTrue((self.folder / "escaped").exists())

    def test_the_planted_fault_strikes_when_results_are_decoded(self):
        self.picture()
        self.fault("crash")
        self.compare("--quality", "60", "--progressive", "a.jpg", status=1)
        self.assertIn("a.jpg: the decoder crashed", self.messages)

    def test_a_decoder_that_crashes_costs_its_one_picture(self):
        self.picture("bad.jpg", progressive=True)
        self.picture("good.jpg")
        self.fault("crash")
        done = self.kestrinectl("compare", "--quality", "60", "bad.jpg", "good.jpg", "-o", "page.html")
        for message in ("bad.jpg: the decoder crashed", "1 picture could not be compared completely"):
            self.assertIn(message, messages_of(done))  # beside which sanitizers report the crash
        self.assertEqual([section.name for section in Page(self.folder / "page.html").sections], ["good.jpg"])


if __name__ == "__main__":
    main()
