"""The pictures for the races: generated ones that resemble photographs, or the user's; made once and kept in a folder.

Large ones repeat a picture of 6 megapixels in mirror tiling, so that detail, noise and bits per pixel are the same
at every size; small ones are scaled down from parts of it.
"""
import hashlib
import importlib.machinery
import importlib.util
import io
import os
import shutil
import sys
from dataclasses import dataclass
from pathlib import Path

import numpy
from PIL import Image, ImageCms, JpegImagePlugin

from racing import foreign

ORIENTATION, UPRIGHT = 0x0112, 1
EDITION = 1  # increase it when the pictures change, so that kept ones are made again
SUFFIXES = {"jpeg": "jpg", "phone": "jpg", "progressive": "jpg", "mixed": "jpg", "png": "png", "rgba": "png", "lzw": "tif",
            "tiff": "tif", **{kind: kind for kind in foreign.WRITERS}}
# Bits per pixel of the kinds of JPEG. Telephones write more than other cameras.
BITS = {"jpeg": 2.0, "phone": 2.5, "progressive": 2.0, "mixed": 2.0}
MIXED = 8  # of so many files of the kind "mixed", the last is progressive

Image.MAX_IMAGE_PIXELS = None


@dataclass(frozen=True)
class Original:
    """A picture to make others from: its samples, and how to save its JPEG files. A user's file has a path, and can race
    unchanged at its own size (`ready`) unless some tools would turn or convert it."""
    samples: numpy.ndarray
    saving: dict
    path: Path = None
    ready: tuple = None


def load_make_pictures():
    sys.dont_write_bytecode = True
    path = Path(__file__).resolve().parents[2] / "examples/make-pictures"
    loader = importlib.machinery.SourceFileLoader("make_pictures", str(path))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("make_pictures", loader))
    loader.exec_module(module)
    return module


def mirrored(samples, width, height, shift):
    """`samples` in mirror tiling, with an offset computed from `shift`."""
    def positions(count, side, offset):
        position = (numpy.arange(count) + offset) % (2 * side)
        return numpy.where(position < side, position, 2 * side - 1 - position)

    rows = positions(height, samples.shape[0], shift * 211)
    columns = positions(width, samples.shape[1], shift * 307)
    return samples[rows[:, None], columns]


def sized(samples, width, height, shift):
    """Mirror tiling for a larger picture, a part scaled down for a smaller one."""
    source_height, source_width = samples.shape[:2]
    if width > source_width or height > source_height:
        return mirrored(samples, width, height, shift)
    factor = max(1, min(source_width // width, source_height // height))
    part = mirrored(samples, width * factor, height * factor, shift)
    return numpy.asarray(Image.fromarray(part).reduce(factor)) if factor > 1 else part


def with_soft_alpha(samples):
    """Alpha from transparent to opaque: a vignette with wavy edges around holes."""
    height, width = samples.shape[:2]
    y, x = numpy.mgrid[0:height, 0:width].astype(numpy.float32) / max(width, height)
    wave = numpy.sin(37 * x + 3 * numpy.sin(11 * y)) * numpy.sin(29 * y + 2 * numpy.sin(13 * x))
    edge = numpy.minimum.reduce([x, y, x.max() - x, y.max() - y])
    alpha = numpy.clip(edge * 30, 0, 1) * numpy.clip((0.93 - wave) * 12, 0, 1)
    return numpy.dstack([samples, numpy.round(alpha * 255).astype(numpy.uint8)])


def quality_for(picture, bits):
    """The JPEG quality that comes nearest to this number of bits per pixel."""
    def bits_at(quality):
        buffer = io.BytesIO()
        picture.save(buffer, "JPEG", quality=quality)
        return 8 * len(buffer.getvalue()) / (picture.width * picture.height)

    low, high = 50, 97
    while high - low > 1:
        middle = (low + high) // 2
        low, high = (middle, high) if bits_at(middle) < bits else (low, middle)
    return min((low, high), key=lambda quality: abs(bits_at(quality) - bits))


def undated(profile):
    """A profile without its creation time, which is in bytes 24 to 35 of the header."""
    return profile[:24] + bytes(12) + profile[36:]


def marker_of(paths):
    """A digest that changes when a file is added, removed or changed."""
    known = "".join(f"{path}\0{path.stat().st_size} {path.stat().st_mtime_ns}\0" for path in paths)
    return hashlib.sha256(known.encode(errors="surrogateescape")).hexdigest()[:12]


class Pictures:
    """Makes missing pictures in `folder`. If `own` is a folder of JPEG files, these are the originals, and race unchanged
    in tasks of their size."""

    def __init__(self, folder, own=None):
        self.own = sorted(path for path in (Path(own).resolve().iterdir() if own else ())
                          if path.suffix.lower() in (".jpg", ".jpeg"))
        if own and not self.own:
            raise SystemExit(f"peers: there are no JPEG files in {own}")
        self.folder = Path(folder) / f"{marker_of(self.own) if own else 'made'}-{EDITION}"
        self.folder.mkdir(parents=True, exist_ok=True)
        self.make = load_make_pictures()
        self.profile = undated(ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes())
        self.originals = {}
        self.qualities = {}

    def paths(self, kind, width, height, count=1):
        """The paths of `count` different pictures of a kind (SUFFIXES)."""
        paths = [self.folder / f"{kind}-{width}x{height}-{number}.{SUFFIXES[kind]}" for number in range(count)]
        missing = [number for number, path in enumerate(paths) if not path.exists()]
        if missing:
            print(f"making {len(missing)} pictures ({kind}), {width} x {height}", flush=True)
        for number in missing:
            self._write(paths[number], kind, width, height, number)
        return paths

    def forget(self):
        """Frees the memory of the originals."""
        self.originals.clear()

    def _original(self, number):
        number = number % len(self.own) if self.own else 0
        if number not in self.originals:
            self.originals = {number: self._read(self.own[number]) if self.own else self._hills()}
        return self.originals[number]

    def _hills(self):
        kept = self.folder / "original.png"
        if not kept.exists():
            print("making the base picture for all others", flush=True)
            self._save(kept, self.make.eight_bit(self.make.hills(3000, 2000, 7)), "PNG", compress_level=1)
        return Original(numpy.asarray(Image.open(kept)), {})

    @staticmethod
    def _read(path):
        """Saves again with the file's tables and subsampling, so that the bits per pixel stay nearly the same."""
        try:
            with Image.open(path) as picture:
                sampling = max(0, JpegImagePlugin.get_sampling(picture))
                saving = {"qtables": picture.quantization, "subsampling": sampling}
                plain = picture.mode == "RGB" and picture.getexif().get(ORIENTATION, UPRIGHT) == UPRIGHT
                samples = numpy.asarray(picture.convert("RGB"))
                return Original(samples, saving, path, picture.size if plain else None)
        except (OSError, AttributeError) as error:
            raise SystemExit(f"peers: cannot use the JPEG file {path}: {error}") from error

    def _write(self, path, kind, width, height, number):
        original = self._original(number)
        if kind == "jpeg" and original.ready == (width, height):
            self._replace(path, lambda unfinished: shutil.copyfile(original.path, unfinished))
            return
        samples = sized(original.samples, width, height, number)
        if kind == "rgba":
            samples = with_soft_alpha(samples)
        picture = Image.fromarray(samples)
        exif = self.make.exif_block(1, path.name)
        if kind in BITS:
            saving = dict(original.saving or {"quality": self._quality(picture, BITS[kind])})
            saving["progressive"] = kind == "progressive" or (kind == "mixed" and number % MIXED == MIXED - 1)
            self._save(path, picture, "JPEG", exif=exif, icc_profile=self.profile, **saving)
        elif kind in foreign.WRITERS:
            self._replace(path, lambda unfinished: foreign.WRITERS[kind](picture, unfinished, self.profile, exif))
        elif kind in ("png", "rgba"):
            self._save(path, picture, "PNG", icc_profile=self.profile)
        else:
            compression = {"compression": "tiff_lzw", "tiffinfo": {317: 2}} if kind == "lzw" else {}
            self._save(path, picture, "TIFF", icc_profile=self.profile, **compression)

    def _quality(self, picture, bits):
        """Measured on the first picture of a size, and on at most 6 megapixels of it."""
        key = (picture.size, bits)
        if key not in self.qualities:
            part = picture.crop((0, 0, min(picture.width, 3000), min(picture.height, 2000)))
            self.qualities[key] = quality_for(part, bits)
        return self.qualities[key]

    def _save(self, path, picture, format_, **options):
        self._replace(path, lambda unfinished: picture.save(unfinished, format_, **options))

    @staticmethod
    def _replace(path, write):
        """Renames only complete files, so that an interrupted run leaves no partial one under the final name."""
        unfinished = path.with_name("unfinished" + path.suffix)
        write(unfinished)
        os.replace(unfinished, path)
