"""Small hostile files. Each may cost 256 MiB and 5 s of processor time, and the other files of its run are converted.

With the argument Bombs.every_file, all of them are tried; this takes minutes, prints what each costs, and fails if one
costs more memory. Times are only printed, since they depend on the machine."""
import os
import resource
import subprocess

import bombs
from bombs import png
from PIL import Image
from tools import BIN, JPEG, ToolTest, is_sanitized, main

MEBIBYTE = 1 << 20
LARGEST = 256 * MEBIBYTE
SECONDS_UNTIL_KILLED = 900 if is_sanitized() else 60  # of processor time

# Refused at once, with these messages.
REFUSED = {
    "canvas.gif": (lambda: bombs.gif(32767, 32767), "too short for a picture of 32767 x 32767"),
    "full.gif": (lambda: bombs.full_gif(32767, 32767), "too short for a picture of 32767 x 32767"),
    "runs.bmp": (lambda: bombs.run_length_bmp(32767, 32767), "too short for a picture of 32767 x 32767"),
    "one colour.webp": (lambda: bombs.lossless_webp(16383, 16383), "too short for a picture of 16383 x 16383"),
    "baseline.jpg": (lambda: bombs.baseline_jpeg(32767, 32767), "too short for a picture of 32767 x 32767"),
    "scans.jpg": (lambda: bombs.progressive_jpeg(6000, 6000, 480), "too many scans for its length"),
    "samples.ppm": (lambda: b"P6 32767 32767 255\n" + bytes(1000), "too short for a picture of 32767 x 32767"),
    "runs.tga": (lambda: bombs.run_length_tga(32767, 32767), "too short for a picture of 32767 x 32767"),
    "rows.psd": (lambda: bombs.packed_psd(30000, 30000), "too short for a picture of 30000 x 30000"),
    "runs.qoi": (lambda: bombs.qoi(32767, 32767), "too short for a picture of 32767 x 32767"),
    "runs.pcx": (lambda: bombs.run_length_pcx(32766, 32767), "too short for a picture of 32766 x 32767"),
    "rows.sgi": (lambda: bombs.sgi_with_shared_rows(60000, 17000), "too short for a picture of 60000 x 17000"),
    "tile.tif": (lambda: bombs.tiff(16, 16, bombs.DEFLATE, bombs.zeros(100 << 20), tile=(10240, 10240)),
                 "tiles that are much larger than itself"),
    "sensor.dng": (lambda: bombs.sensor_without_data(15000, 15000), "too short for a picture of 15000 x 15000"),
    "entities.svg": (lambda: bombs.svg_with_entities(10), "the SVG drawing is damaged"),
    "groups.svg": (lambda: bombs.svg_with_groups(100000), "the SVG drawing is damaged"),
    "text.svgz": (lambda: bombs.svgz(100 << 20), "more than 64 MiB of text"),
    "long row.tif": (lambda: bombs.deflated_tiff(32768, 65536, 64, samples=3, photometric=2), "too many pixels"),
}

# Valid files, which are converted at little cost.
CONVERTED = {
    "texts.png": lambda: bombs.png_with_texts(100, 8 << 20),
    "profile.png": lambda: bombs.png_with_profile(15 << 20),
    "profile beyond the limit.png": lambda: bombs.png_with_profile(100 << 20),
    "chunks.png": lambda: png(8, 8, before=bombs.chunk(b"teSt", b"") * 80000),
    "extensions.gif": lambda: bombs.gif_with_extensions(190000),
    "interlaced.png": lambda: bombs.interlaced_png(3000, 3000, 8, 2),
    "strips.tif": lambda: bombs.deflated_tiff(8192, 8192, 64),
    "packbits.tif": lambda: bombs.tiff(8192, 8192, bombs.PACKBITS, bombs.packbits(8192 * 16), rows=16),
    "shared profile.tif": lambda: bombs.tiff_with_shared_profile(990, 800000),
    "comments.pgm": lambda: b"P5 " + b"#\n" * 450000 + b"5 5 255\n" + bytes(25),
    "values.jpg": lambda: bombs.exif_with_shared_values(5000, 60000),
    "profile parts.jpg": bombs.jpeg_with_profile_parts,
    "resources.psd": lambda: bombs.psd_with_resources(60000),
    "shared rows.sgi": lambda: bombs.sgi_with_shared_rows(9000, 9000),
    "patterns.svg": lambda: bombs.svg_with_patterns(12),
    "entries.ico": lambda: bombs.icon_with_entries(65000),
    "elements.icns": lambda: bombs.icon_with_elements(4000),
}

# The largest pictures that small files can claim; too slow for every run of the tests.
LARGE = {
    "texts 7 GB.png": lambda: bombs.png_with_texts(900, 8 << 20),
    "1 bit.png": lambda: png(32768, 32768, 1, 0),
    "grey.png": lambda: png(32768, 32768, 8, 0),
    "rgb.png": lambda: png(17000, 17000, 8, 2),
    "rgba 16.png": lambda: png(10000, 12000, 16, 6),
    "rgba 16 by libpng.png": lambda: png(10000, 12000, 16, 6, window=12),
    "palette.png": lambda: bombs.palette_png(16384, 16384),
    "interlaced rgb.png": lambda: bombs.interlaced_png(17000, 17000, 8, 2),
    "interlaced 1 bit.png": lambda: bombs.interlaced_png(32768, 32768, 1, 0),
    "tall.png": lambda: png(300, 1000000, 8, 2),
    "large canvas.gif": lambda: bombs.gif(16384, 16384),
    "large full.gif": lambda: bombs.full_gif(16384, 16384),
    "large interlaced.gif": lambda: bombs.full_gif(16384, 16384, True),
    "8 bits.bmp": lambda: bombs.run_length_bmp(16384, 16384),
    "4 bits.bmp": lambda: bombs.run_length_bmp(23000, 23000, 4),
    "codes.bmp": lambda: bombs.run_length_bmp(16384, 16384, 8, b"\xff\0" * 450000 + b"\0\x01"),
    "one row.bmp": lambda: bombs.run_length_bmp(1000, 100000, 8, b"\xff\0" * 450000 + b"\0\x01"),
    "large.webp": lambda: bombs.lossless_webp(8192, 8192),
    "cut off.jpg": lambda: bombs.baseline_jpeg(9400, 9400),
    "baseline 900 kB.jpg": lambda: bombs.baseline_jpeg(25000, 25000, b"\0" * 920000),
    "scans 9 MP.jpg": lambda: bombs.progressive_jpeg(3000, 3000, 499),
    "scans 100 MP.jpg": lambda: bombs.progressive_jpeg(10000, 10000, 300),
    "scans in colour.jpg": lambda: bombs.progressive_jpeg(6000, 6000, 480, 3),
    "progressive 100 MP.jpg": lambda: bombs.progressive_jpeg(10000, 10000, 1),
    "progressive 400 MP.jpg": lambda: bombs.progressive_jpeg(20000, 20000, 1),
    "deflate.tif": lambda: bombs.deflated_tiff(32768, 32768, 64),
    "deflate rows.tif": lambda: bombs.deflated_tiff(16384, 16384, 1),
    "deflate one strip.tif": lambda: bombs.deflated_tiff(16384, 16384),
    "deflate 64 samples.tif": lambda: bombs.deflated_tiff(2048, 2048, 64, samples=64),
    "deflate tiles.tif": lambda: bombs.tiff(16384, 16384, bombs.DEFLATE, bombs.zeros(256 * 256), tile=(256, 256)),
    "deflate cmyk.tif": lambda: bombs.deflated_tiff(8192, 8192, 64, samples=4, photometric=5),
    "deflate lab.tif": lambda: bombs.deflated_tiff(6600, 6600, 60, 16, 3, photometric=8),
    "deflate ycbcr.tif": lambda: bombs.deflated_tiff(9000, 9000, 60, samples=3, photometric=6),
    "deflate ycbcr one strip.tif": lambda: bombs.deflated_tiff(9000, 9000, samples=3, photometric=6),
    "fax.tif": lambda: bombs.tiff(32768, 32768, bombs.FAX4, bombs.fax4(32768), bits=1, photometric=0),
    "shared strips.tif": lambda: bombs.tiff_with_many_strips(990, 200000),
    "lzw.tif": lambda: bombs.repeated_tile(bombs.LZW, "tiff_lzw", "L", 16384),
    "zstd.tif": lambda: bombs.repeated_tile(bombs.ZSTD, "zstd", "L", 16384),
    "lzma.tif": lambda: bombs.repeated_tile(bombs.LZMA, "lzma", "L", 16384),
    "webp.tif": lambda: bombs.repeated_tile(bombs.WEBP, "webp", "RGB", 9216),
    "sensor 36 MP.dng": lambda: bombs.sensor_without_data(6000, 6000),
    "uses.svg": lambda: bombs.svg_with_uses(12, 10),
    "blur.svg": lambda: bombs.svg_with_filters('feGaussianBlur stdDeviation="500"', 50, 50),
    "turbulence.svg": lambda: bombs.svg_with_filters('feTurbulence baseFrequency="0.1" numOctaves="200"', 20, 20),
    "text.pbm": lambda: b"P1 32767 32767\n" + b"0" * 900000,
}

# What libraries must hold whole, in MiB: the picture that libwebp decodes and its result, the coefficients of a
# progressive JPEG, a strip that libtiff converts.
HELD = {"large.webp": 480, "progressive 400 MP.jpg": 800, "deflate ycbcr one strip.tif": 480}


class Bombs(ToolTest):
    def setUp(self):
        super().setUp()
        self.store({"name": "Small", "resizeType": 2, "maxSize": 100.0, "formatType": JPEG})

    def cost(self, *arguments, address_space=None):
        """Runs kestrinectl convert. Returns its status, its output, its peak of memory in bytes (which is at least that of
        this process) and its processor time in seconds."""
        def limit():
            resource.setrlimit(resource.RLIMIT_CPU, (SECONDS_UNTIL_KILLED, SECONDS_UNTIL_KILLED))
            if address_space is not None:
                resource.setrlimit(resource.RLIMIT_AS, (address_space, address_space))

        process = subprocess.Popen([BIN / "kestrinectl", "convert", "--set", "Small", *arguments], cwd=self.folder,
                                   env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                   preexec_fn=limit)
        with process.stdout:
            output = process.stdout.read().decode()
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        return process.returncode, output, usage.ru_maxrss << 10, usage.ru_utime + usage.ru_stime

    def assert_small(self, memory, limit=LARGEST):
        if not is_sanitized():
            self.assertLessEqual(memory, limit)

    def put(self, name, make):
        (self.folder / name).write_bytes(make())
        return name

    def test_files_that_are_too_short_for_their_pictures_are_refused(self):
        for name, (make, words) in REFUSED.items():
            with self.subTest(name):
                status, output, memory, _ = self.cost(self.put(name, make))
                self.assertEqual(status, 1, output)
                self.assertIn(words, output)
                self.assert_small(memory)

    def test_large_contents_of_small_files_cost_little(self):
        for name, make in CONVERTED.items():
            with self.subTest(name):
                status, output, memory, _ = self.cost("--accept-damaged", self.put(name, make))
                self.assertEqual(status, 0, output)
                self.assert_small(memory, 128 * MEBIBYTE)

    def test_the_other_files_of_a_run_are_converted(self):
        names = [self.put(name, make) for name, (make, _) in REFUSED.items()]
        Image.new("RGB", (200, 100), "red").save(self.folder / "a.png")
        status, output, memory, _ = self.cost("-j", "4", *names, "a.png")
        self.assertEqual(status, 1, output)
        self.assertEqual(self.names("Small"), [b"a.jpg"])
        self.assert_small(memory)

    def test_a_bilevel_drawing_in_a_small_file_is_converted(self):
        width, height = 30000, 20000
        line, row = bytes(width // 8 + 1), b"\0" + b"\xff\xff\xff\xff\xff\xfe" * (width // 48)
        pixels = bombs.packed((line if y % 48 == 0 else row for y in range(height)))
        name = self.put("drawing.png", lambda: png(width, height, 1, 0, pixels=pixels))
        self.assertLess((self.folder / name).stat().st_size, 200_000)
        status, output, memory, _ = self.cost(name)
        self.assertEqual(status, 0, output)
        self.assert_small(memory, 64 * MEBIBYTE)
        with Image.open(self.folder / "Small" / "drawing.jpg") as picture:
            self.assertEqual(picture.size, (101, 67))
            darkest, brightest = picture.convert("L").getextrema()
            self.assertTrue(230 < darkest <= brightest < 255, (darkest, brightest))

    def test_large_results_are_not_held_in_memory(self):
        name = self.put("large.png", lambda: png(8000, 6000, 8, 2))
        for kind in ("tiff", "png", "jpeg"):
            with self.subTest(kind):
                status, output, memory, _ = self.cost("--format", kind, "--longest", "8000", "--out", kind, name)
                self.assertEqual(status, 0, output)
                self.assert_small(memory, 64 * MEBIBYTE)
        [result] = (self.folder / "tiff").rglob("large.*")
        self.assertGreater(result.stat().st_size, 8000 * 6000 * 3)
        with Image.open(result) as picture:
            self.assertEqual(picture.size, (8000, 6000))

    def test_several_sets_decode_again_what_is_too_large_to_be_kept(self):
        name = self.put("a.png", lambda: png(15000, 10000, 8, 2))
        status, output, memory, _ = self.cost("--set", "Small", name)
        self.assertEqual(status, 0, output)
        self.assertEqual(self.names("Small"), [b"a.jpg", b"a_1.jpg"])
        self.assert_small(memory, 128 * MEBIBYTE)

    def test_files_that_need_much_memory_wait_for_each_other(self):
        if is_sanitized():
            return
        self.environment["MALLOC_ARENA_MAX"] = "1"  # each one takes address space
        names = [self.put(f"{i}.webp", lambda: bombs.lossless_webp(6000, 6000)) for i in range(6)]
        status, output, memory, _ = self.cost("-j", "6", *names, address_space=900 * MEBIBYTE)
        self.assertEqual(status, 0, output)
        self.assertEqual(len(self.names("Small")), 6)
        status, output, _, _ = self.cost(names[0], address_space=160 * MEBIBYTE)
        self.assertIn("0.webp: the picture needs more memory than is available", output)

    def test_the_limit_of_pixels_can_be_set(self):
        Image.new("RGB", (200, 100), "red").save(self.folder / "a.png")
        status, output, _, _ = self.cost("--max-pixels", "19999", "a.png")
        self.assertEqual(status, 1)
        self.assertIn("a.png: the PNG picture has too many pixels", output)
        self.assertEqual(self.cost("--max-pixels", "20000", "a.png")[0], 0)
        self.put("large.png", lambda: png(40000, 40000, 1, 0))
        self.assertEqual(self.cost("large.png")[0], 1)
        self.assertEqual(self.cost("--max-pixels", "1600000000", "large.png")[0], 0)
        for wrong in ("0", "1000000000001", "many"):
            output = self.cost("--max-pixels", wrong, "a.png")[1]
            self.assertIn("must be a number from 1 to 1000000000000", output)

    def every_file(self):
        makers = {**{name: make for name, (make, _) in REFUSED.items()}, **CONVERTED, **LARGE}
        for name, make in makers.items():
            with self.subTest(name):
                path = self.folder / self.put(name, make)
                status, _, memory, seconds = self.cost("--accept-damaged", name)
                print(f"{memory >> 20:5} MiB {seconds:6.2f} s {path.stat().st_size:9} bytes  status {status}  {name}",
                      flush=True)
                path.unlink()
                self.assert_small(memory, HELD.get(name, LARGEST >> 20) * MEBIBYTE)


if __name__ == "__main__":
    main()
