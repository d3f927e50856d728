"""Tries files of the table with the built kestrinectl."""
import os
import shutil
import struct
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

import numpy
import tifffile
from PIL import Image

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "endtoend"))
import judges  # noqa: E402
import pictures  # noqa: E402
from tools import BIN, exiftool  # noqa: E402


class Wrong(Exception):
    """A row of the table that is not true."""


class Trial:
    """A folder for the files, removed at the end, and runs of kestrinectl in it."""

    def __enter__(self):
        self.folder = Path(tempfile.mkdtemp(prefix="kestrine-formats-"))
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.folder)

    def convert(self, file, *options):
        """Writes the file and converts it alone. Returns the finished process and the result, or None."""
        for name in ("in", "out"):
            shutil.rmtree(self.folder / name, ignore_errors=True)
            (self.folder / name).mkdir()
        self.path = self.folder / "in" / file.name
        self.path.write_bytes(file.content)
        environment = {"HOME": str(self.folder), "PATH": os.environ["PATH"], "LANG": "C"}
        done = subprocess.run([BIN / "kestrinectl", "convert", "--out", "../out", *options, *file.options, file.name],
                              cwd=self.folder / "in", env=environment, capture_output=True, timeout=120)
        results = list((self.folder / "out").iterdir())
        return done, results[0] if done.returncode == 0 and len(results) == 1 else None

    def converted(self, file, *options):
        done, result = self.convert(file, *options)
        if result is None:
            raise Wrong(f"{file.name} is not converted: {done.stderr.decode().strip()}")
        return result

    def check_read(self, file):
        """The result is a TIFF file, because tifffile reads all of its 16 bits. Returns whether its pixels were compared."""
        result = judges.layers(tifffile.imread(self.converted(file, "--format", "tiff")))
        expected = file.judge(self.path) if file.judge else file.pixels
        if expected is not None:
            compare(file, result, expected)
        return expected is not None

    def check_refused(self, file, message):
        done, result = self.convert(file, "--format", "png")
        if result is not None:
            raise Wrong(f"{file.name} is converted")
        if message not in done.stderr.decode():
            raise Wrong(f"{file.name} is refused with another message: {done.stderr.decode().strip()}")


def with_alpha(samples):
    """Samples of any layout and depth as RGBA of their depth, with the colours of clear pixels black."""
    full = numpy.iinfo(samples.dtype).max
    colors = samples[..., :3] if samples.shape[2] >= 3 else samples[..., :1].repeat(3, 2)
    alpha = samples[..., -1:] if samples.shape[2] in (2, 4) else numpy.full_like(samples[..., :1], full)
    return numpy.dstack([numpy.where(alpha > 0, colors, 0), alpha])


def compare(file, result, expected):
    if result.shape[:2] != expected.shape[:2]:
        raise Wrong(f"{file.name} has {result.shape[1]} x {result.shape[0]} pixels, not {expected.shape[1]} x {expected.shape[0]}")
    result, expected = with_alpha(result), with_alpha(judges.layers(expected))
    if file.decibels is not None:
        bytes_ = [numpy.round(each / 257) if each.dtype == numpy.uint16 else each for each in (result, expected)]
        decibels = pictures.psnr(*bytes_)
        if decibels < file.decibels:
            raise Wrong(f"{file.name}: {decibels:.1f} dB are less than {file.decibels}")
        return
    if expected.dtype == numpy.uint8 and result.dtype == numpy.uint16:
        expected = expected.astype(numpy.uint16) * 257
    if expected.dtype != result.dtype:
        raise Wrong(f"{file.name} loses its 16 bits")
    difference = abs(result.astype(int) - expected).max()
    if difference > file.tolerance:
        raise Wrong(f"{file.name} differs by {difference} levels")


# What a file may hold beside colours of 8 bits, and how to see whether the result still holds it.
def keeps_profile(trial, file):
    """The very bytes; a profile that the file implies (by other means than bytes) has only to be there."""
    kept = Image.open(trial.converted(file, "--format", "png")).info.get("icc_profile")
    return kept == pictures.wide_icc()


def makes_profile(trial, file):
    return bool(Image.open(trial.converted(file, "--format", "png")).info.get("icc_profile"))


def keeps_alpha(trial, file):
    samples = with_alpha(judges.layers(tifffile.imread(trial.converted(file, "--format", "tiff"))))
    return len(numpy.unique(samples[..., 3])) > 2


def keeps_clear_pixels(trial, file):
    samples = with_alpha(judges.layers(tifffile.imread(trial.converted(file, "--format", "tiff"))))
    return set(numpy.unique(samples[..., 3])) == {0, 255}


def keeps_16_bits(trial, file):
    samples = judges.layers(tifffile.imread(trial.converted(file, "--format", "tiff")))
    return samples.dtype == numpy.uint16 and (samples % 257 != 0).any()


def keeps_exif(trial, file):
    tags = exiftool(trial.converted(file, "--format", "jpeg"))
    return tags.get("IFD0:Model") == MODEL


MODEL = "Model"  # as raw_files.py writes it
KEPT = {"profile": keeps_profile, "profile made from the colour space": makes_profile, "alpha": keeps_alpha,
        "alpha (on or off)": keeps_clear_pixels, "16 bits": keeps_16_bits, "EXIF": keeps_exif}


def exif():
    """An EXIF block from its TIFF header on, with the name of a camera."""
    model = MODEL.encode() + b"\0"
    place = len(pictures.exif(None, extra=[(0x0110, 2, len(model), b"    ")]))
    return pictures.exif(None, extra=[(0x0110, 2, len(model), struct.pack(">I", place))]) + model


@dataclass(frozen=True)
class Found:
    """`kept` holds names in KEPT, and `compared` says for the texts of variants whether the pixels of all files, of some or of
    none were compared."""
    kept: tuple
    compared: dict


def found(row):
    """Tries everything about a format. Raises Wrong with all that is not true."""
    wrong, kept, compared = [], [], {}
    with Trial() as trial:
        def attempt(text, function, *arguments):
            try:
                return function(*arguments)
            except Wrong as failure:
                wrong.append(f"{row.name}, {text}: {failure}")
        for variant in row.read:
            answers = {attempt(variant.text, trial.check_read, file) for file in variant.files()}
            compared[variant.text] = "some" if len(answers) > 1 else "all" if answers == {True} else "none"
        for refusal in row.refused:
            for file in refusal.files():
                attempt(refusal.text, trial.check_refused, file, refusal.message)
        for what, keeps in KEPT.items():
            if what in row.carriers and attempt(what, keeps, trial, row.carriers[what]()):
                kept.append(what)
    if wrong:
        raise Wrong("\n".join(wrong))
    return Found(tuple(kept), compared)
