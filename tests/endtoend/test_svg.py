"""SVG drawings, compared with what rsvg-convert draws in the same size, and hostile ones."""
import gzip
import subprocess

import numpy
import pictures
from PIL import Image
from tools import JPEG, PNG, TIFF, ToolTest, main

START = '<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" '
SHAPES = ('<defs><linearGradient id="g"><stop offset="0" stop-color="#f60"/><stop offset="1" stop-color="#06f"/>'
          '</linearGradient></defs><circle cx="120" cy="90" r="70" fill="url(#g)" fill-opacity="0.8"/>'
          '<path d="M9 9L290 170M9 170L200 9" stroke="#113" stroke-width="5"/>'
          '<text x="110" y="100" font-family="sans-serif" font-size="40">Words</text>')
LOGO = START + f'width="300" height="180">{SHAPES}</svg>'


class SvgTest(ToolTest):
    def put(self, name, text):
        (self.folder / name).write_bytes(text if isinstance(text, bytes) else text.encode())
        return name

    def samples(self, path):
        return numpy.asarray(Image.open(path).convert("RGBA"))

    def drawn_by_other(self, name, width, height):
        result = self.home / "reference.png"
        subprocess.run(["rsvg-convert", "-w", str(width), "-h", str(height), self.folder / name, "-o", result], check=True)
        return self.samples(result)


class Sizes(SvgTest):
    def test_every_size_is_sharp(self):
        self.put("a.svg", LOGO)
        for width, height in ((300, 180), (75, 45), (1500, 900), (30, 18)):
            with self.subTest(width):
                subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
                fields = {"formatType": PNG, "resizeType": 0, "width": float(width), "height": float(height), "highQuality": 0}
                actual = self.samples(self.only(self.convert(fields, "a.svg")))
                expected = self.drawn_by_other("a.svg", width, height)
                self.assertEqual(actual.shape, expected.shape)
                for image in (actual, expected):
                    self.assertGreater(image[..., 3].max(), 0)
                seen = expected[..., 3] > 8
                self.assertGreater(pictures.psnr(actual[..., 3], expected[..., 3]), 45)
                self.assertGreater(pictures.psnr(actual[seen], expected[seen]), 40)

    def test_sizes_are_those_of_a_bitmap_of_the_natural_size(self):
        self.put("a.svg", LOGO)
        Image.new("RGBA", (300, 180)).save(self.folder / "b.png")
        for fields in ({"resizeType": 2, "maxSize": 1200.0, "highQuality": 1}, {"resizeType": 1, "ratio": 33.0},
                       {"resizeType": 2, "maxSize": 77.0, "highQuality": 1}, {"resizeType": 9}):
            with self.subTest(fields):
                subprocess.run(["rm", "-rf", self.folder / "S"], check=True)
                results = self.convert({"formatType": PNG, **fields}, "a.svg", "b.png")
                sizes = {Image.open(path).size for path in results}
                self.assertEqual((len(results), len(sizes)), (2, 1))

    def test_a_compressed_drawing_is_the_same(self):
        self.put("a.svg", LOGO)
        self.put("b.svgz", gzip.compress(LOGO.encode()))
        one, other = self.convert({"formatType": TIFF, "resizeType": 2, "maxSize": 500.0}, "a.svg", "b.svgz")
        self.assertEqual(one.read_bytes(), other.read_bytes())

    def test_jpeg_shows_a_drawing_on_white(self):
        self.put("a.svg", START + 'width="20" height="20"><rect x="10" width="10" height="20" fill="red"/></svg>')
        image = Image.open(self.only(self.convert({"formatType": JPEG, "resizeType": 9, "quality": 1.0}, "a.svg")))
        self.assertGreater(min(image.getpixel((2, 10))), 245)
        self.assertLess(image.getpixel((17, 10))[1], 12)


class Texts(SvgTest):
    FAMILIES = ("serif", "sans-serif", "monospace", "Times New Roman", "Arial", "Helvetica", "Courier New", "Palatino")

    def test_known_families_look_as_everywhere_on_this_system(self):
        for family in self.FAMILIES:
            with self.subTest(family):
                name = family.replace(" ", "-")
                self.put(f"{name}.svg", START + 'width="300" height="60"><text x="5" y="40" font-size="36" '
                         f'font-family="{family}">Words <tspan font-weight="bold">bold</tspan></text></svg>')
                done = self.kestrinectl("convert", "--isolation", "strict", "--longest", "300", "--format", "png",
                                        "--out", "out", f"{name}.svg")
                self.assertEqual((done.returncode, done.stderr), (0, b""))
                actual = self.samples(self.folder / f"out/{name}.png")
                expected = self.drawn_by_other(f"{name}.svg", 300, 60)
                self.assertGreater(pictures.psnr(actual[..., 3], expected[..., 3]), 40)


class Companion(SvgTest):
    def test_a_drawing_is_replaced_only_if_asked_for(self):
        self.put("a.svg", LOGO)
        done = self.kestrinectl("convert", "--format", "png", "--replace", "a.svg")
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"a drawing; --first-only replaces it with a bitmap", done.stderr)
        self.assertTrue((self.folder / "a.svg").exists())

    def test_the_isolated_process_draws_the_same(self):
        self.put("a.svg", LOGO)
        for isolation in ("strict", "off"):
            done = self.kestrinectl("convert", "--isolation", isolation, "--longest", "500", "--format", "png",
                                    "--out", isolation, "a.svg")
            self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertEqual((self.folder / "strict/a.png").read_bytes(), (self.folder / "off/a.png").read_bytes())

    def test_compressed_files_that_are_no_drawings_are_other_files(self):
        self.put("a.svg", LOGO)
        self.put("b.tar.gz", gzip.compress(b"no drawing"))
        done = self.kestrinectl("convert", "--longest", "50", "--format", "png", "--out", "out", ".")
        self.assertEqual(done.returncode, 0, done)
        self.put("c.svgz", gzip.compress(b"no drawing"))
        done = self.kestrinectl("convert", "--longest", "50", "--format", "png", "--out", "out", ".")
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"c.svgz: the file holds no SVG drawing", done.stderr)

    def test_xml_files_that_are_no_drawings_are_other_files(self):
        self.put("a.svg", LOGO)
        self.put("b.xml", '<?xml version="1.0"?><notes/>')
        done = self.kestrinectl("convert", "--longest", "50", "--format", "png", "--out", "out", ".")
        self.assertEqual(done.returncode, 0, done)


if __name__ == "__main__":
    main()
