"""Camera raw files: what is developed equals what dcraw_emu develops, and previews of full size are the picture. The
files are of our own making (raw_files.py); no camera made them."""
import os
import subprocess

import numpy
import raw_files as raw
import tifffile
from PIL import Image
from tools import BIN, JPEG, TIFF, ToolTest, exiftool, main

UNSCALED = {"formatType": TIFF, "resizeType": 9, "convertResolution": 0}


class RawTest(ToolTest):
    def put(self, name, content):
        (self.folder / name).write_bytes(content)
        return name


class Development(RawTest):
    def developed_by_other(self, name):
        """White balance of the camera, sRGB with its tone curve, 16 bits; upright."""
        subprocess.run(["dcraw_emu", "-w", "-T", "-6", "-g", "2.4", "12.92", self.folder / name], check=True,
                       capture_output=True)
        path = self.folder / f"{name}.tiff"
        samples = tifffile.imread(path)
        path.unlink()
        return samples

    def assert_developed_as_by_other(self, name):
        expected = self.developed_by_other(name)
        actual = tifffile.imread(self.only(self.convert(UNSCALED, name)))
        self.assertEqual(actual.dtype, numpy.uint16)
        numpy.testing.assert_array_equal(actual, expected)

    def test_a_mosaic(self):
        self.assert_developed_as_by_other(self.put("a.dng", raw.dng(150, 110)))

    def test_a_mosaic_in_the_other_byte_order(self):
        self.assert_developed_as_by_other(self.put("a.dng", raw.dng(150, 110, order=">")))

    def test_every_orientation(self):
        for orientation in range(1, 9):
            with self.subTest(orientation):
                subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
                self.assert_developed_as_by_other(self.put("a.dng", raw.dng(150, 110, orientation=orientation)))

    def test_linear_colours(self):
        self.assert_developed_as_by_other(self.put("a.dng", raw.dng(150, 110, photometric=raw.LINEAR_RAW)))

    def test_other_makers(self):
        for name, make in (("a.nef", raw.nef), ("a.arw", raw.arw), ("a.pef", raw.pef)):
            with self.subTest(name):
                subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
                self.assert_developed_as_by_other(self.put(name, make(150, 110, (60, 40))))

    def test_the_result_is_marked_as_srgb(self):
        self.put("a.dng", raw.dng(60, 40))
        path = self.only(self.convert({"formatType": JPEG, "resizeType": 9, "attachExifData": 1}, "a.dng"))
        self.assertIn("sRGB", exiftool(path)["ICC_Profile:ProfileDescription"])

    def test_a_reduced_picture_is_like_the_reduced_whole(self):
        self.put("a.dng", raw.dng(1500, 1100))
        for width, height in ((150, 110), (300, 220)):  # from half the size, and from the whole
            with self.subTest(width):
                subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
                fields = {"formatType": TIFF, "resizeType": 0, "width": float(width), "height": float(height)}
                actual = tifffile.imread(self.only(self.convert(fields, "a.dng")))[..., :3] / 65535
                scene = raw.scene(width, height)
                inner = (slice(2, -2), slice(2, -2))
                # LibRaw stretches the brightness, so only the shape is compared, channel by channel
                for channel in range(3):
                    one, other = (image[inner][..., channel].ravel() for image in (actual, scene))
                    self.assertGreater(numpy.corrcoef(one, other)[0, 1], 0.999)


class Previews(RawTest):
    MAKERS = {"dng": raw.dng, "nef": raw.nef, "cr2": raw.cr2, "arw": raw.arw, "pef": raw.pef, "rw2": raw.rw2,
              "orf": raw.orf, "raf": raw.raf, "cr3": raw.cr3}
    SENSOR, LARGE = (320, 240), (312, 234)

    def test_a_preview_of_full_size_is_the_picture(self):
        expected = numpy.asarray(Image.open(__import__("io").BytesIO(raw.jpeg(*self.LARGE))))
        for extension, make in self.MAKERS.items():
            with self.subTest(extension):
                subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
                self.put(f"a.{extension}", make(*self.SENSOR, self.LARGE))
                result = tifffile.imread(self.only(self.convert(UNSCALED, f"a.{extension}")))
                self.assertLessEqual(numpy.abs(result.astype(int) - expected).max(), 1)

    def test_it_is_turned_upright_once_and_its_exif_says_so(self):
        for extension, make in self.MAKERS.items():
            for rotates in (0, 1):
                with self.subTest(extension, rotates=rotates):
                    subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
                    self.put(f"a.{extension}", make(*self.SENSOR, self.LARGE, orientation=6))
                    path = self.only(self.convert({"formatType": JPEG, "resizeType": 9, "attachExifData": 1,
                                                   "autoRotate": rotates}, f"a.{extension}"))
                    self.assertEqual(Image.open(path).size, self.LARGE[::-1])
                    tags = exiftool(path)
                    self.assertEqual(tags["ExifIFD:DateTimeOriginal"], "2024:06:01 18:30:05")
                    self.assertEqual(str(tags["IFD0:Orientation"]), "1")


class Companion(RawTest):
    def test_a_raw_file_is_replaced_only_if_asked_for(self):
        self.put("a.dng", raw.dng(60, 40))
        done = self.kestrinectl("convert", "--format", "jpeg", "--replace", "a.dng")
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"a camera raw file; --first-only replaces it with the developed picture", done.stderr)
        self.assertTrue((self.folder / "a.dng").exists())

    def test_its_results_are_jpeg_by_default(self):
        self.put("a.dng", raw.dng(60, 40))
        done = self.kestrinectl("convert", "--longest", "30", "--out", "out", "a.dng")
        self.assertEqual(done.returncode, 0, done)
        self.assertEqual([path.name for path in (self.folder / "out").iterdir()], ["a.jpg"])

    def test_an_unknown_camera_is_an_error(self):
        self.put("a.cr2", raw.cr2(320, 240, (60, 40)))
        done = self.kestrinectl("convert", "--longest", "30", "--out", "out", "a.cr2")
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"LibRaw does not support", done.stderr)


if __name__ == "__main__":
    main()
