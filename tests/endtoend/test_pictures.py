"""Sizes, orientation, colours, alpha and metadata of the output files, checked with other programs."""
import io
import struct
import subprocess
import unittest

import numpy
import tifffile
from PIL import Image, ImageCms

import pictures
from tools import GIF, JPEG, PNG, TIFF, ToolTest, exiftool, main

F = numpy.float32


def high_quality_side(pixels, factor):
    """The length in whole pixels of a side that the filter scales by `factor`, after trimming."""
    scaled = float(pixels) * float(factor)
    return int(numpy.floor(scaled + max(0.01, scaled / 2 ** 21))) - 1


def high_quality_size(width, height, target_width, target_height):
    """The size rules in single precision, for a picture of 72 dpi, where one point is one pixel."""
    w1, h1 = F(target_width) + F(1), F(target_height) + F(1)
    scale = h1 / F(height)
    aspect = (w1 / h1) / (F(width) / F(height))
    if not abs(float(F(1) - aspect)) > 0.01:
        aspect = F(1)
    return high_quality_side(width, float(scale) * float(aspect)), high_quality_side(height, scale)


def plain_side(points):
    return max(1, int(numpy.floor(float(points) + 0.5)))


class Sizes(ToolTest):
    sources = [(600, 400), (400, 600), (333, 333), (640, 427), (1001, 13)]

    def size_of(self, size, **fields):
        name = "%dx%d.png" % size
        pictures.image(pictures.photo(*size)).save(self.folder / name)
        return Image.open(self.only(self.convert({"formatType": PNG, **fields}, name))).size

    def each(self):
        for size in self.sources:
            for child in self.folder.iterdir():
                if child.is_dir():
                    subprocess.run(["rm", "-r", child], check=True)
            yield size

    def test_longer_side_in_high_quality_is_one_larger(self):
        for width, height in self.each():
            for length in (50, 333, 700):
                subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
                ratio = F(length + 1) / F(height if height >= width else width)
                expected = high_quality_size(width, height, ratio * F(width), ratio * F(height))
                if min(expected) < 1:
                    continue
                self.assertEqual(self.size_of((width, height), resizeType=2, maxSize=float(length)), expected)

    def test_longer_side_without_high_quality(self):
        for width, height in self.each():
            ratio = F(250) / F(height if height >= width else width)
            expected = plain_side(ratio * F(width)), plain_side(ratio * F(height))
            self.assertEqual(self.size_of((width, height), resizeType=2, maxSize=250.0, highQuality=0), expected)

    def test_width_alone_and_height_alone(self):
        for width, height in self.each():
            ratio = F(77) / F(width)
            expected = high_quality_size(width, height, ratio * F(width), ratio * F(height))
            if min(expected) >= 1:
                self.assertEqual(self.size_of((width, height), width=77.0, height=0.0), expected)
        for width, height in self.each():
            ratio = F(9) / F(height)
            expected = plain_side(ratio * F(width)), plain_side(ratio * F(height))
            self.assertEqual(self.size_of((width, height), width=0.0, height=9.0, highQuality=0), expected)

    def test_percentages(self):
        for percent in (50.0, 33.3, 12.5, 141.4, 100.0):
            for width, height in self.each():
                ratio = F(percent) / F(100)
                expected = high_quality_size(width, height, ratio * F(width), ratio * F(height))
                if min(expected) < 1:
                    continue
                self.assertEqual(self.size_of((width, height), resizeType=1, ratio=percent), expected)

    def test_both_sides_given(self):
        for width, height in self.each():
            self.assertEqual(self.size_of((width, height), width=120.0, height=80.0, highQuality=0), (120, 80))
        for width, height in self.each():
            self.assertEqual(self.size_of((width, height), width=120.0, height=80.0),
                             high_quality_size(width, height, 120, 80))

    def test_a_landscape_of_6000_by_4000_at_1200_gives_1201_by_800(self):
        Image.new("L", (6000, 4000), 99).save(self.folder / "a.png")
        Image.new("L", (4000, 6000), 99).save(self.folder / "b.png")
        a, b = self.convert({"resizeType": 2, "maxSize": 1200.0}, "a.png", "b.png")
        self.assertEqual((Image.open(a).size, Image.open(b).size), ((1201, 800), (800, 1201)))


class Orientation(ToolTest):
    turned = {6: "wrgb", 8: "gbwr"}  # a clockwise and a counter-clockwise quarter turn of "rgbw"

    def quarters(self, data, name="a.jpg", **fields):
        subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
        (self.folder / name).write_bytes(data)
        path = self.only(self.convert({"formatType": JPEG, "resizeType": 2, "maxSize": 40.0, "autoRotate": 1, **fields}, name))
        return pictures.quarters(path), Image.open(path).size

    def test_every_value_in_both_orders_and_both_places(self):
        samples = pictures.corners(60, 48)
        for value in range(0, 10):
            for order in "><":
                for jfif in (True, False):
                    acted_on = order == ">" and value in self.turned
                    expected = self.turned[value] if acted_on else "rgbw"
                    seen, size = self.quarters(pictures.jpeg(samples, pictures.exif(value, order), jfif))
                    self.assertEqual(seen, expected, (value, order, jfif))
                    self.assertEqual(size, (32, 41) if acted_on else (41, 32))

    def test_exif_after_another_segment_is_not_found(self):
        comment = b"\xff\xfe\0\x06abcd"
        data = pictures.jpeg(pictures.corners(60, 48), pictures.exif(6), True, before=comment)
        self.assertEqual(self.quarters(data)[0], "rgbw")

    def test_without_auto_rotate_nothing_is_turned(self):
        data = pictures.jpeg(pictures.corners(60, 48), pictures.exif(6))
        self.assertEqual(self.quarters(data, autoRotate=0)[0], "rgbw")

    def test_only_files_named_jpg_or_jpeg_are_turned(self):
        data = pictures.jpeg(pictures.corners(60, 48), pictures.exif(6))
        for name, expected in (("a.JPG", "wrgb"), ("b.Jpeg", "wrgb"), ("c.jpe", "rgbw"), ("d", "rgbw")):
            self.assertEqual(self.quarters(data, name)[0], expected)

    def test_pictures_are_turned_without_high_quality_and_without_scaling_too(self):
        data = pictures.jpeg(pictures.corners(60, 48), pictures.exif(8))
        self.assertEqual(self.quarters(data, highQuality=0), ("gbwr", (32, 40)))
        self.assertEqual(self.quarters(data, resizeType=5), ("gbwr", (48, 60)))

    def test_an_orientation_that_is_a_string_turns_nothing(self):
        block = pictures.exif(None, ">", [(0x0112, 2, 4, b"six\0")])
        self.assertEqual(self.quarters(pictures.jpeg(pictures.corners(60, 48), block))[0], "rgbw")


class Colours(ToolTest):
    def test_the_filter_agrees_with_the_reference_in_linear_light(self):
        samples = pictures.photo(300, 200)
        pictures.image(samples).save(self.folder / "a.png")
        path = self.only(self.convert({"resizeType": 2, "maxSize": 90.0}, "a.png"))
        height = F(91) / F(300) * F(200)
        scale = float((height + F(1)) / F(200))
        expected = pictures.lanczos(samples, scale, scale, int(300 * scale + 0.01), int(200 * scale + 0.01))[1:, :-1]
        actual = pictures.pixels(path)
        self.assertEqual(actual.shape, expected.shape)
        self.assertLessEqual(abs(actual.astype(int) - expected).max(), 1)

    def test_reduced_decoding_stays_close_to_full_decoding(self):
        samples = pictures.photo(1600, 1200)
        (self.folder / "a.jpg").write_bytes(pictures.jpeg(samples, quality=92))
        path = self.only(self.convert({"resizeType": 2, "maxSize": 300.0}, "a.jpg"))
        decoded = numpy.asarray(Image.open(self.folder / "a.jpg"))
        scale = float((F(301) / F(1600) * F(1200) + F(1)) / F(1200))
        expected = pictures.lanczos(decoded, scale, scale, int(1600 * scale + 0.01), int(1200 * scale + 0.01))[1:, :-1]
        actual = pictures.pixels(path)
        self.assertEqual(actual.shape, expected.shape)
        self.assertGreater(pictures.psnr(actual, expected), 45)

    def test_every_format_that_can_store_a_profile_keeps_it(self):
        profile = pictures.icc("sRGB")
        pictures.image(pictures.photo(60, 40)).save(self.folder / "a.png", icc_profile=profile)
        for format_, extension in ((JPEG, "jpg"), (PNG, "png"), (TIFF, "tiff")):
            with self.subTest(extension):
                paths = self.convert({"formatType": format_, "resizeType": 2, "maxSize": 30.0}, "a.png")
                path = [p for p in paths if p.suffix == "." + extension][0]
                self.assertEqual(Image.open(path).info.get("icc_profile"), profile)

    def test_an_untagged_picture_stays_untagged(self):
        pictures.image(pictures.photo(60, 40)).save(self.folder / "a.png")
        for format_ in (JPEG, PNG, TIFF):
            for path in self.convert({"formatType": format_, "resizeType": 2, "maxSize": 30.0}, "a.png"):
                self.assertNotIn("icc_profile", Image.open(path).info)

    def test_a_cmyk_jpeg_becomes_tagged_srgb(self):
        Image.new("CMYK", (40, 40), (0, 255, 255, 0)).save(self.folder / "a.jpg", quality=95)
        path = self.only(self.convert({"formatType": PNG, "width": 20.0, "height": 20.0}, "a.jpg"))
        with Image.open(path) as result:
            red, green, blue = result.convert("RGB").getpixel((10, 10))
            self.assertTrue(red > 200 and green < 60 and blue < 60, (red, green, blue))
            self.assertIn("icc_profile", result.info)

    def test_sixteen_bits_stay_sixteen_in_png_and_tiff(self):
        ramp = numpy.linspace(0, 65535, 64 * 64 * 3).astype(numpy.uint16).reshape(64, 64, 3)
        tifffile.imwrite(self.folder / "a.tif", ramp, photometric="rgb")
        paths = self.convert({"formatType": TIFF, "resizeType": 1, "ratio": 50.0}, "a.tif")
        result = tifffile.imread(self.only(paths))
        self.assertEqual((result.dtype, result.shape), (numpy.uint16, (32, 32, 3)))
        self.assertGreater(len(numpy.unique(result[..., 0] & 255)), 100, "the low bytes must vary")

    def test_grey_stays_grey(self):
        pictures.image(pictures.photo(60, 40, 1)).save(self.folder / "a.png")
        for format_ in (JPEG, PNG, TIFF):
            for path in self.convert({"formatType": format_, "resizeType": 2, "maxSize": 30.0}, "a.png"):
                self.assertEqual(Image.open(path).mode, "L")


class Pages(ToolTest):
    RED, BLUE = (255, 0, 0), (0, 0, 255)

    def plain(self, color, width, height):
        return numpy.full((height, width, 3), color, numpy.uint8)

    def convert_all(self, *files):
        """The results of every format, quality and kind of size."""
        for size in ({"resizeType": 2, "maxSize": 50.0}, {"resizeType": 1, "ratio": 50.0},
                     {"resizeType": 0, "width": 50.0, "height": 50.0}):
            for format_ in (JPEG, PNG, TIFF, GIF):
                for high_quality in (0, 1):
                    subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
                    fields = {"formatType": format_, "highQuality": high_quality, **size}
                    yield fields, self.convert(fields, *files)

    def assert_gives_what_its_red_picture_gives(self, name):
        tifffile.imwrite(self.folder / "red.tif", self.plain(self.RED, 100, 100), photometric="rgb")
        for fields, paths in self.convert_all("red.tif", name):
            self.assertEqual(len(paths), 2, fields)
            self.assertEqual(paths[0].read_bytes(), paths[1].read_bytes(), fields)

    def test_every_set_uses_the_first_page_of_a_scan(self):
        with tifffile.TiffWriter(self.folder / "scan.tif") as file:
            file.write(self.plain(self.RED, 100, 100), photometric="rgb")
            file.write(self.plain(self.BLUE, 101, 100), photometric="rgb")
        self.assert_gives_what_its_red_picture_gives("scan.tif")

    def test_the_picture_after_a_preview_is_used(self):
        with tifffile.TiffWriter(self.folder / "a.tif") as file:
            file.write(self.plain(self.BLUE, 25, 25), photometric="rgb", subfiletype=1, subifds=1)
            file.write(self.plain(self.RED, 100, 100), photometric="rgb")
        self.assert_gives_what_its_red_picture_gives("a.tif")

    def test_a_preview_of_sensor_data_is_not_converted(self):
        with tifffile.TiffWriter(self.folder / "a.tif") as file:
            file.write(self.plain(self.BLUE, 25, 25), photometric="rgb", subfiletype=1, subifds=1)
            file.write(numpy.zeros((100, 100), numpy.uint16), photometric="cfa",
                       extratags=[(33421, "H", 2, (2, 2)), (33422, "B", 4, b"\0\1\1\2")])
        for fields, paths in self.convert_all("a.tif"):
            self.assertEqual(paths, [], fields)


class Alpha(ToolTest):
    def setUp(self):
        super().setUp()
        # Opaque red in the middle, surrounded by transparent pixels whose hidden colour is green.
        samples = numpy.zeros((80, 80, 4), numpy.uint8)
        samples[..., 1] = 255
        samples[20:60, 20:60] = (255, 0, 0, 255)
        Image.fromarray(samples).save(self.folder / "a.png")

    def test_hidden_colours_do_not_shine_through_at_the_edges(self):
        for high_quality in (0, 1):
            for format_ in (PNG, TIFF):
                subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
                fields = {"formatType": format_, "width": 27.0, "height": 27.0, "highQuality": high_quality}
                result = pictures.pixels(self.only(self.convert(fields, "a.png")))
                self.assertEqual(result.shape, (27, 27, 4))
                visible = result[result[..., 3] > 0]
                self.assertEqual((visible[:, 0].min(), visible[:, 1].max(), visible[:, 2].max()), (255, 0, 0))

    def test_jpeg_has_a_white_background(self):
        fields = {"formatType": JPEG, "width": 40.0, "height": 40.0, "compression": 95.0}
        result = pictures.pixels(self.only(self.convert(fields, "a.png"))).astype(int)
        self.assertLess(abs(result[2, 2] - (255, 255, 255)).max(), 4)
        self.assertLess(abs(result[20, 20] - (255, 0, 0)).max(), 8)

    def test_gif_dithers_half_transparency(self):
        samples = numpy.zeros((64, 64, 4), numpy.uint8)
        samples[..., 0], samples[..., 3] = 200, 128
        Image.fromarray(samples).save(self.folder / "half.png")
        fields = {"formatType": GIF, "width": 64.0, "height": 64.0, "highQuality": 0}
        path = self.only(self.convert(fields, "half.png"))
        shown = numpy.asarray(Image.open(path).convert("RGBA"))[..., 3] > 0
        self.assertAlmostEqual(shown.mean(), 0.5, delta=0.05)


class Metadata(ToolTest):
    def source(self, order):
        camera = [(0x010F, 2, 4, b"Cam\0"), (0x0131, 2, 3, b"SW\0\0")]
        data = pictures.jpeg(pictures.photo(64, 48), pictures.exif(6, order, camera))
        (self.folder / "a.jpg").write_bytes(data)

    def test_exif_of_both_byte_orders_is_kept_and_orientation_matches_the_pixels(self):
        for order in "><":
            for rotate in (0, 1):
                subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
                self.source(order)
                path = self.only(self.convert({"formatType": JPEG, "resizeType": 2, "maxSize": 32.0, "attachExifData": 1,
                                               "autoRotate": rotate}, "a.jpg"))
                tags = exiftool(path)
                turned = rotate and order == ">"
                self.assertEqual(tags["File:ExifByteOrder"], "MM")
                self.assertEqual(tags["IFD0:Make"], "Cam")
                self.assertEqual(tags["IFD0:Orientation"], "1" if turned else "6")
                size = Image.open(path).size
                self.assertEqual((int(tags["ExifIFD:ExifImageWidth"]), int(tags["ExifIFD:ExifImageHeight"])), size)
                self.assertNotIn("ExifTool:Warning", tags)

    def test_exif_is_kept_only_on_request_and_never_in_png(self):
        self.source(">")
        tags = exiftool(self.only(self.convert({"formatType": JPEG, "resizeType": 2, "maxSize": 32.0}, "a.jpg")))
        self.assertNotIn("IFD0:Make", tags)
        subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
        tags = exiftool(self.only(self.convert({"formatType": PNG, "attachExifData": 1}, "a.jpg")))
        self.assertNotIn("IFD0:Make", tags)

    def test_our_output_can_be_turned_again(self):
        (self.folder / "a.jpg").write_bytes(pictures.jpeg(pictures.corners(60, 48), pictures.exif(6, "<")))
        path = self.only(self.convert({"formatType": JPEG, "attachExifData": 1, "resizeType": 4}, "a.jpg"))
        path.rename(self.folder / "b.jpg")
        subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
        path = self.only(self.convert({"formatType": JPEG, "autoRotate": 1, "resizeType": 4}, "b.jpg"))
        self.assertEqual(pictures.quarters(path), "wrgb", "the EXIF is now big-endian, at the place that is read")

    def test_quality_sets_the_subsampling(self):
        pictures.image(pictures.photo(64, 48)).save(self.folder / "a.png")
        for quality, expected in ((70.0, "2 2"), (89.0, "2 2"), (90.0, "1 1"), (100.0, "1 1")):
            subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
            path = self.only(self.convert({"formatType": JPEG, "compression": quality}, "a.png"))
            self.assertEqual(exiftool(path)["File:YCbCrSubSampling"], expected)

    def test_resolution_is_72_times_pixels_per_point(self):
        pictures.image(pictures.photo(300, 200)).save(self.folder / "a.png", dpi=(300, 300))
        def dots(format_, **fields):
            subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
            path = self.only(self.convert({"formatType": format_, **fields}, "a.png"))
            return tuple(round(float(d)) for d in Image.open(path).info["dpi"]), Image.open(path).size
        for format_ in (JPEG, PNG, TIFF):
            self.assertEqual(dots(format_, resizeType=1, ratio=50.0), ((72, 72), (150, 100)))
        self.assertEqual(dots(PNG, resizeType=9, convertResolution=0), ((300, 300), (300, 200)))
        self.assertEqual(dots(JPEG, resizeType=9, convertResolution=0), ((72, 72), (72, 48)))


class Formats(ToolTest):
    def test_every_readable_format_can_be_written_as_every_format(self):
        samples = pictures.photo(50, 40)
        for extension in ("jpg", "png", "tif", "gif", "bmp", "ppm", "pgm", "webp"):
            source = pictures.image(samples).convert("L") if extension == "pgm" else pictures.image(samples)
            options = {"lossless": True} if extension == "webp" else {}
            source.save(self.folder / f"in-{extension}.{extension}", **options)
        names = sorted(path.name for path in self.folder.iterdir())
        for format_, extension in ((JPEG, "jpg"), (PNG, "png"), (TIFF, "tiff"), (GIF, "gif")):
            self.store({"name": extension, "formatType": format_, "width": 25.0, "height": 20.0})
            self.kestrine("-set", extension, *names)
            results = sorted((self.folder / extension).iterdir())
            self.assertEqual(len(results), len(names), extension)
            for path in results:
                with Image.open(path) as result:
                    self.assertEqual(result.size, (25, 20), path)
                    self.assertGreater(pictures.psnr(numpy.asarray(result.convert("L")),
                                                     numpy.asarray(Image.fromarray(samples).convert("L").resize(
                                                         (25, 20), Image.LANCZOS))), 24, path)

    def test_cut_off_pictures_of_formats_other_than_jpeg_png_and_gif_give_nothing(self):
        for extension in ("tif", "bmp", "ppm", "webp"):
            buffer = io.BytesIO()
            kind = {"tif": "TIFF", "ppm": "PPM"}.get(extension, extension.upper())
            pictures.image(pictures.photo(80, 60)).save(buffer, kind)
            (self.folder / f"cut.{extension}").write_bytes(buffer.getvalue()[:len(buffer.getvalue()) * 2 // 3])
        names = sorted(path.name for path in self.folder.iterdir())
        self.assertEqual(self.convert({"formatType": PNG}, *names), [])

    def test_a_cut_off_png_gives_its_decodable_part(self):
        samples = pictures.photo(80, 60)
        pictures.image(samples).save(self.folder / "cut.png")
        content = (self.folder / "cut.png").read_bytes()
        (self.folder / "cut.png").write_bytes(content[:len(content) * 2 // 3])
        result = pictures.pixels(self.only(self.convert({"formatType": PNG, "resizeType": 9}, "cut.png")))
        self.assertEqual(result.shape, samples.shape)
        numpy.testing.assert_array_equal(result[:20], samples[:20])
        self.assertFalse(result[-1].any())

    def test_a_truncated_jpeg_gives_its_decodable_part(self):
        data = pictures.jpeg(pictures.photo(160, 400))
        (self.folder / "a.jpg").write_bytes(data[:len(data) // 2])
        path = self.only(self.convert({"formatType": PNG, "resizeType": 9}, "a.jpg"))
        result = pictures.pixels(path)
        self.assertEqual(result.shape, (400, 160, 3))
        self.assertGreater(result[:100].std(), 5)
        self.assertEqual(len(numpy.unique(result[-1].reshape(-1, 3), axis=0)), 1)

    def test_a_progressive_jpeg_equals_its_baseline(self):
        samples = pictures.photo(200, 150)
        (self.folder / "a.jpg").write_bytes(pictures.jpeg(samples))
        (self.folder / "b.jpg").write_bytes(pictures.jpeg(samples, progressive=True))
        a, b = self.convert({"formatType": PNG, "width": 40.0, "height": 30.0}, "a.jpg", "b.jpg")
        self.assertTrue((pictures.pixels(a) == pictures.pixels(b)).all())


if __name__ == "__main__":
    main()
