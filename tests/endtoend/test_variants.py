"""Rare variants of the usual formats, made by hand or by tifffile."""
import ctypes
import struct
import zlib

import numpy
import tifffile
from PIL import Image

import pictures
from tools import ToolTest, main


def chunk(kind, content):
    return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))


class Variants(ToolTest):
    def converted(self, name, *options):
        """The pixels of the file as PNG."""
        done = self.kestrinectl("convert", "--format", "png", "--out", "out", *options, name)
        self.assertEqual(done.returncode, 0, done)
        return pictures.pixels(next((self.folder / "out").iterdir()))

    def tiff(self, samples, **options):
        tifffile.imwrite(self.folder / "a.tif", samples, **options)
        return self.converted("a.tif").astype(int).squeeze()


class TIFF(Variants):
    def test_signed_integers_begin_with_black(self):
        for kind in (numpy.int8, numpy.int16):
            limits = numpy.iinfo(kind)
            stored = numpy.array([[limits.min, -1, 0, limits.max]] * 3, kind)
            shown = self.tiff(stored, photometric="minisblack")
            numpy.testing.assert_array_equal(shown, stored.astype(int) - limits.min)
            next((self.folder / "out").iterdir()).unlink()

    def test_integers_of_32_bits_are_rounded_to_16(self):
        shown = self.tiff(numpy.array([[0, 1 << 15, 1 << 30, 1 << 31, (1 << 32) - 1]] * 3, numpy.uint32), photometric="minisblack")
        numpy.testing.assert_array_equal(shown[0], [0, 0, 16384, 32768, 65535])

    def test_floating_point_numbers_of_any_size_count_from_0_to_1(self):
        for kind in (numpy.float16, numpy.float32, numpy.float64):
            shown = self.tiff(numpy.array([[-1, 0, 0.25, 0.5, 1, 2, numpy.nan]] * 3, kind), photometric="minisblack")
            numpy.testing.assert_array_equal(shown[0], [0, 0, 16384, 32768, 65535, 65535, 0])
            next((self.folder / "out").iterdir()).unlink()

    def test_logluv_is_expanded_by_libtiff(self):
        tiff = ctypes.CDLL("libtiff.so.6")
        tiff.TIFFOpen.restype = ctypes.c_void_p
        file = ctypes.c_void_p(tiff.TIFFOpen(str(self.folder / "a.tif").encode(), b"w"))
        width, height = 16, 4
        for tag, value in ((256, width), (257, height), (277, 3), (258, 32), (262, 32845), (259, 34676), (284, 1), (278, 1),
                           (339, 3), (65560, 0)):
            tiff.TIFFSetField(file, ctypes.c_uint32(tag), ctypes.c_int(value))
        for y in range(height):
            light = numpy.linspace(0.05, 1, width)[:, None] * numpy.ones(3)
            row = light.astype(numpy.float32).tobytes()
            self.assertEqual(tiff.TIFFWriteScanline(file, row, ctypes.c_uint32(y), ctypes.c_uint16(0)), 1)
        tiff.TIFFClose(file)
        shown = self.converted("a.tif").astype(int)
        self.assertEqual(shown.shape, (height, width, 3))
        self.assertTrue((numpy.diff(shown[0, :, 1]) > 0).all(), shown[0])
        self.assertLess(numpy.ptp(shown, axis=2).max(), 12)


class Others(Variants):
    def test_the_first_bitmap_of_an_array_is_shown(self):
        samples = pictures.photo(30, 20)
        pictures.image(samples).save(self.folder / "plain.bmp")
        plain = (self.folder / "plain.bmp").read_bytes()
        offset = struct.unpack_from("<I", plain, 10)[0] + 14
        (self.folder / "a.bmp").write_bytes(b"BA" + struct.pack("<IIHH", 14, 0, 30, 20) + plain[:10]
                                            + struct.pack("<I", offset) + plain[14:])
        numpy.testing.assert_array_equal(self.converted("a.bmp"), samples)

    def test_floating_point_maps_have_either_byte_order_and_their_last_row_first(self):
        samples = pictures.photo(30, 20)
        for order, scale in (("<f4", b"-1.0"), (">f4", b"2.5")):
            rows = (samples / 255).astype(order)[::-1].tobytes()
            (self.folder / "a.pfm").write_bytes(b"PF\n30 20\n" + scale + b"\n" + rows)
            shown = self.converted("a.pfm")
            numpy.testing.assert_array_equal(shown, samples if shown.dtype == numpy.uint8 else samples * 257)
            next((self.folder / "out").iterdir()).unlink()
        (self.folder / "a.pfm").write_bytes(b"Pf\n30 20\n-1.0\n" + rows[:100])
        self.assertEqual(self.kestrinectl("convert", "--format", "png", "--out", "out", "a.pfm").returncode, 1)

    def test_exif_data_continue_in_the_next_segment(self):
        text, model = b"description " * 6000 + b"\0", b"abcdefgh\0"
        place = len(pictures.exif(1, extra=[(0x010E, 2, 4, b"text"), (0x0110, 2, 4, b"text")]))
        block = pictures.exif(1, extra=[(0x010E, 2, len(text), struct.pack(">I", place)),
                                        (0x0110, 2, len(model), struct.pack(">I", place + len(text)))]) + text + model
        parts = [block[i:i + 60000] for i in range(0, len(block), 60000)]
        self.assertEqual(len(parts), 2)
        segments = b"".join(b"\xff\xe1" + struct.pack(">H", len(part) + 8) + b"Exif\0\0" + part for part in parts)
        pictures.image(pictures.photo(30, 20)).save(self.folder / "plain.jpg")
        plain = (self.folder / "plain.jpg").read_bytes()
        (self.folder / "a.jpg").write_bytes(plain[:2] + segments + plain[2:])
        done = self.kestrinectl("exif", "--json", "a.jpg")
        self.assertEqual(done.returncode, 0, done)
        self.kestrinectl("convert", "--longest", "20", "--out", "out", "a.jpg")
        self.assertEqual(Image.open(self.folder / "out/a.jpg").getexif()[0x0110], "abcdefgh")

    def test_a_cut_off_png_or_gif_is_converted_only_if_that_is_accepted(self):
        samples = pictures.photo(60, 80)
        for name in ("a.png", "a.gif"):
            pictures.image(samples).save(self.folder / name)
            content = (self.folder / name).read_bytes()
            (self.folder / name).write_bytes(content[:len(content) * 2 // 3])
            whole = self.kestrinectl("convert", "--format", "png", "--out", "out", name)
            self.assertEqual((whole.returncode, list(self.folder.glob("out/*"))), (1, []))
            shown = self.converted(name, "--accept-damaged")
            self.assertEqual(shown.shape, samples.shape)
            if name == "a.png":
                numpy.testing.assert_array_equal(shown[:20], samples[:20])
                self.assertFalse(shown[-1].any())
            next((self.folder / "out").iterdir()).unlink()

    def test_a_profile_is_kept_beside_invalid_primaries(self):
        pictures.image(pictures.photo(8, 8)).save(self.folder / "a.png", icc_profile=pictures.wide_icc())
        content = (self.folder / "a.png").read_bytes()
        invalid = struct.pack(">8I", 31270, 32900, 10000, 20000, 30000, 60000, 15000, 6000)
        (self.folder / "a.png").write_bytes(content[:33] + chunk(b"cHRM", invalid) + content[33:])
        self.kestrinectl("convert", "--longest", "4", "--out", "out", "a.png")
        before, after = (Image.open(self.folder / place).info.get("icc_profile") for place in ("a.png", "out/a.png"))
        self.assertIsNotNone(after)
        self.assertEqual(after, before)


main()
