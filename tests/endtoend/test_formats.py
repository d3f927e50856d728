"""Pictures of formats that are only read, written by other programs, keep every pixel."""
import subprocess
import unittest

import numpy
import tifffile
from PIL import Image

import pictures
from tools import TIFF, ToolTest, main

UNSCALED = {"formatType": TIFF, "resizeType": 9, "convertResolution": 0}


def samples_of(width, height, channels, seed=7):
    """Noise, with areas of one colour for run-length codes."""
    samples = numpy.random.default_rng(seed).integers(0, 256, (height, width, channels), numpy.uint8)
    samples[height // 3:2 * height // 3] = samples[height // 3, 0]
    samples[:, width // 2:] = samples[:, width // 2:width // 2 + 1]
    return samples


def image_of(samples):
    mode = {1: "L", 2: "LA", 3: "RGB", 4: "RGBA"}[samples.shape[2]]
    return Image.fromarray(samples.squeeze(2) if mode == "L" else samples, mode)


def rgba(samples):
    """8-bit samples of any layout as RGBA; transparent pixels are black."""
    pixels = numpy.array(image_of(samples).convert("RGBA"))
    pixels[pixels[..., 3] == 0] = 0
    return pixels


class Lossless(ToolTest):
    """Each test writes files, each with the samples that its result must have."""

    SIZES = ((1, 1), (7, 5), (33, 17), (300, 3))

    def setUp(self):
        super().setUp()
        self.expected = {}

    def put(self, name, write, expected):
        write(str(self.folder / name))
        self.expected[name.rpartition(".")[0]] = expected

    def image_magick(self, source, name, *options):
        """Writes the picture `source` as `name`, with these options."""
        source.save(self.folder.parent / "source.png")
        subprocess.run(["convert", self.folder.parent / "source.png", *options, self.folder / name], check=True)

    def check(self, tolerance=0):
        names = sorted(path.name for path in self.folder.iterdir())
        results = {path.stem: path for path in self.convert(UNSCALED, *names)}
        self.assertEqual(sorted(results), sorted(self.expected))
        for stem, expected in self.expected.items():
            result = tifffile.imread(results[stem]).reshape(expected.shape)
            with self.subTest(stem):
                if result.dtype == numpy.uint8 and result.shape[-1] in (2, 4):
                    result, expected = rgba(result), rgba(expected)
                self.assertEqual(result.dtype, expected.dtype)
                self.assertLessEqual(int(abs(result.astype(int) - expected).max()), tolerance)

    def each(self, *channels):
        for size in self.SIZES:
            for count in channels:
                samples = samples_of(*size, count)
                yield "%dx%d-%d" % (*size, count), samples, image_of(samples)

    def test_tga(self):
        for stem, samples, image in self.each(1, 2, 3, 4):
            for code in (None, "tga_rle"):
                for corner in (1, -1):
                    self.put(f"{stem}{code}{corner}.tga",
                             lambda path: image.save(path, compression=code, orientation=corner), samples)
        for stem, samples, image in self.each(3):
            indexed = image.quantize(50)
            for code in (None, "tga_rle"):
                self.put(f"{stem}{code}p.tga", lambda path: indexed.save(path, compression=code),
                         numpy.array(indexed.convert("RGB")))
        self.check()

    def test_sgi(self):
        for stem, samples, image in self.each(1, 3, 4):
            self.put(f"{stem}.sgi", image.save, samples)
            for depth, factor in ((8, 1), (16, 257)):
                for code in ("None", "RLE"):
                    name = f"{stem}-{depth}-{code}"
                    self.image_magick(image, name + ".sgi", "-depth", str(depth), "-compress", code)
                    self.expected[name] = samples.astype(numpy.uint16) * 257 if depth == 16 else samples
        self.check()

    def test_pcx_and_dcx(self):
        for stem, samples, image in self.each(3):
            indexed = image.quantize(100)
            self.put(f"{stem}p.pcx", indexed.save, numpy.array(indexed.convert("RGB")))
            bits = image.convert("1")
            self.put(f"{stem}b.pcx", bits.save, numpy.array(bits).astype(numpy.uint8) * 255)
            for extension in ("pcx", "dcx"):
                for code in ("None", "RLE"):
                    self.image_magick(image, f"{stem}-{extension}-{code}.{extension}", "-compress", code)
                    self.expected[f"{stem}-{extension}-{code}"] = samples
        self.check()

    def test_psd_and_psb(self):
        for stem, samples, image in self.each(1, 3):
            for depth in (8, 16):
                for code in ("None", "RLE"):
                    for extension in ("psd", "psb"):
                        name = f"{stem}-{depth}-{code}-{extension}"
                        self.image_magick(image, f"{name}.{extension}", "-depth", str(depth), "-compress", code)
                        self.expected[name] = samples.astype(numpy.uint16) * 257 if depth == 16 else samples
        self.check()

    def test_translucent_psd(self):
        for stem, samples, image in self.each(4):
            white = numpy.maximum(samples[..., :3], 255 - samples[..., 3:])  # colours that white may show through
            self.image_magick(Image.fromarray(numpy.dstack([white, samples[..., 3]]), "RGBA"), f"{stem}.psd")
            read = subprocess.run(["convert", f"{self.folder / stem}.psd[0]", "-depth", "8", "RGBA:-"],
                                  check=True, capture_output=True).stdout
            self.expected[stem] = numpy.frombuffer(read, numpy.uint8).reshape(samples.shape)
        self.check(tolerance=1)

    def test_icons(self):
        for stem, samples, image in self.each(4):
            if image.width > 256:
                continue
            samples[..., 3] |= 1
            visible = Image.fromarray(samples, "RGBA")
            for kind in ("png", "bmp"):
                self.put(f"{stem}{kind}.ico",
                         lambda path: visible.save(path, sizes=[image.size], bitmap_format=kind), samples)
            self.image_magick(visible, f"{stem}.ico")
            self.expected[stem] = samples
        samples = samples_of(256, 256, 4)
        self.put("large.icns", Image.fromarray(samples, "RGBA").resize((1024, 1024), Image.NEAREST).save,
                 samples.repeat(4, 0).repeat(4, 1))
        self.check()


class CutOff(ToolTest):
    def test_gives_nothing(self):
        samples = samples_of(80, 60, 3)
        image = pictures.image(samples)
        for extension in ("tga", "pcx", "sgi"):
            image.save(self.folder / f"cut.{extension}")
        image.convert("RGBA").save(self.folder / "cut.ico", sizes=[(80, 60)], bitmap_format="bmp")
        for name in ("cut.psd", "cut.psb"):
            image.save(self.folder.parent / "source.png")
            subprocess.run(["convert", self.folder.parent / "source.png", self.folder / name], check=True)
        for path in self.folder.iterdir():
            path.write_bytes(path.read_bytes()[:-40])
        names = sorted(path.name for path in self.folder.iterdir())
        self.assertEqual(self.convert({"formatType": TIFF}, *names), [])
        for name in names:
            done = self.kestrinectl("convert", "--set", "S", name)
            self.assertEqual(done.returncode, 1, name)
            self.assertIn(b"ends", done.stderr, name)


class Layers(ToolTest):
    def test_are_not_replaced_unless_asked(self):
        pictures.image(pictures.photo(30, 20)).save(self.folder / "source.png")
        subprocess.run(["convert", "source.png", "a.psd"], cwd=self.folder, check=True)
        self.store({"name": "S", "formatType": TIFF, "replaceFile": 1})
        done = self.kestrinectl("convert", "--set", "S", "a.psd")
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"a picture of 1 layer", done.stderr)
        self.assertEqual(self.names(), [b"a.psd", b"source.png"])


if __name__ == "__main__":
    main()
