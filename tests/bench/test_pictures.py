#!/usr/bin/python3
"""The pictures that race: the same every time, of the sizes and bits asked for, or the user's own."""
import sys
import tempfile
import unittest
from pathlib import Path

import numpy
from PIL import Image

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "bench"), str(ROOT / "tests/endtoend")]

import pictures as small_pictures  # noqa: E402
from racing import foreign, inspecting, pictures  # noqa: E402


class PicturesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.own = self.folder / "own"
        self.own.mkdir()

    def add_own(self, name="a.jpg", width=120, height=80, **saving):
        small_pictures.image(small_pictures.photo(width, height)).save(self.own / name, "JPEG", **saving)
        return self.own / name

    def made(self, work="work"):
        return pictures.Pictures(self.folder / work, self.own)

    def test_the_same_bytes_every_time(self):
        self.add_own()
        for kind in pictures.SUFFIXES:
            first, again = (self.made(work).paths(kind, 60, 40)[0].read_bytes() for work in ("one", "two"))
            self.assertEqual(first, again)

    # What each kind keeps, as Pillow reads it. The decoders of AVIF and JPEG XL lose the EXIF data of the files.
    KEPT = {**dict.fromkeys(["png", "rgba", "lzw", "tiff", "avif", "jxl"], "profile"), "jp2": "nothing"}

    def test_every_kind_has_its_size_and_what_its_writer_keeps(self):
        self.add_own()
        for kind in pictures.SUFFIXES:
            if kind == "svg":
                continue
            with self.subTest(kind=kind):
                path = foreign.readable(self.made().paths(kind, 90, 70)[0])
                with Image.open(path) as picture:
                    self.assertEqual(picture.size, (90, 70))
                    self.assertEqual(picture.mode, "RGBA" if kind == "rgba" else "RGB")
                self.assertEqual(inspecting.kept_in(path), self.KEPT.get(kind, "profile, EXIF"))

    def test_one_of_eight_mixed_files_is_progressive(self):
        self.add_own()
        paths = self.made().paths("mixed", 60, 40, 16)

        def is_progressive(path):
            with Image.open(path) as picture:
                return "progressive" in picture.info

        self.assertEqual([number for number, path in enumerate(paths) if is_progressive(path)], [7, 15])

    def test_a_drawing_has_the_size_asked_for(self):
        self.add_own()
        drawing = self.made().paths("svg", 400, 300)[0].read_text()
        self.assertIn('width="400" height="300"', drawing)

    def test_a_user_s_file_of_the_task_s_size_races_as_it_is(self):
        path = self.add_own(quality=91, progressive=True)
        self.assertEqual(self.made().paths("jpeg", 120, 80)[0].read_bytes(), path.read_bytes())
        self.assertNotEqual(self.made().paths("jpeg", 119, 80)[0].read_bytes(), path.read_bytes())

    def test_a_user_s_file_that_some_tools_would_turn_is_written_anew(self):
        exif = Image.Exif()
        exif[pictures.ORIENTATION] = 6
        path = self.add_own(exif=exif)
        self.assertNotEqual(self.made().paths("jpeg", 120, 80)[0].read_bytes(), path.read_bytes())

    def test_a_changed_user_s_file_is_taken_anew(self):
        path = self.add_own()
        before = self.made().paths("jpeg", 120, 80)[0].read_bytes()
        self.add_own(quality=40)
        self.assertEqual(self.made().paths("jpeg", 120, 80)[0].read_bytes(), path.read_bytes())
        self.assertNotEqual(before, path.read_bytes())

    def test_a_grey_picture_serves_too(self):
        small_pictures.image(small_pictures.photo(120, 80, 1)).save(self.own / "grey.JPG")
        with Image.open(self.made().paths("jpeg", 60, 40)[0]) as picture:
            self.assertEqual((picture.mode, picture.size), ("RGB", (60, 40)))

    def test_a_folder_without_jpeg_files_and_a_broken_file_are_told_in_a_line(self):
        with self.assertRaisesRegex(SystemExit, "^peers: there are no JPEG files in "):
            self.made()
        (self.own / "broken.jpg").write_bytes(b"\xff\xd8 no more")
        with self.assertRaisesRegex(SystemExit, "cannot use the JPEG file .*broken.jpg"):
            self.made().paths("jpeg", 60, 40)

    def test_mirror_tiling_repeats_a_picture_without_seams(self):
        samples = numpy.arange(12, dtype=numpy.uint8).reshape(3, 4)
        tiled = pictures.mirrored(samples, 8, 6, 0)
        numpy.testing.assert_array_equal(tiled[:3, :4], samples)
        numpy.testing.assert_array_equal(tiled[:3, 4:], samples[:, ::-1])
        numpy.testing.assert_array_equal(tiled[3:, :4], samples[::-1])

    def test_the_quality_found_comes_near_to_the_bits_asked_for(self):
        picture = small_pictures.image(small_pictures.photo(240, 160))
        quality = pictures.quality_for(picture, 2.0)
        path = self.folder / "q.jpg"
        picture.save(path, "JPEG", quality=quality)
        self.assertAlmostEqual(8 * path.stat().st_size / (240 * 160), 2.0, delta=0.25)


if __name__ == "__main__":
    unittest.main()
