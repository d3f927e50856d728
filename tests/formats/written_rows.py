"""The formats that are written."""
import io
from dataclasses import dataclass
from typing import Callable

import numpy
import pictures
import tifffile
from judges import avifdec_16, djxl_deep, layers, magick_16, pillow, run
from PIL import Image, ImageFilter
from png_rows import RGB, RGBA, noise, png, profile
from table import File
from tools import exiftool
from trial import MODEL, Trial, Wrong, compare, exif, with_alpha


@dataclass(frozen=True)
class Kind:
    """Results with these options: the same picture, or one of at least `decibels`. `text` names them on the page."""
    text: str = ""
    options: tuple = ()
    decibels: float = None


@dataclass(frozen=True)
class Output:
    """`decode` gives the samples of a result."""
    name: str
    format: str
    by: str
    libraries: tuple
    decode: Callable
    held: str = "nothing"
    kinds: tuple = (Kind(),)
    longest_side: int = None
    ours: str = ""


def source(samples, kind=RGB, bits=8, before=b""):
    return File("a.png", png(samples, kind, bits, before))


def keeps_profile(trial, row):
    """exiftool does not look into JPEG XL; there jxlinfo at least knows the length of the profile."""
    result = trial.converted(source(noise(3, 8), before=profile()), "--format", row.format)
    if result.suffix == ".jxl":
        return f"{len(pictures.wide_icc())}-byte ICC profile".encode() in run("jxlinfo", "-v", result)
    return exiftool(result).get("ICC_Profile:ProfileDescription") == "Wide"


def keeps_exif(trial, row):
    stream = io.BytesIO()
    Image.fromarray(pictures.photo(40, 30)).save(stream, "JPEG", exif=b"Exif\0\0" + exif())
    result = trial.converted(File("a.jpg", stream.getvalue()), "--format", row.format)
    return any(tag.endswith(":Model") and value == MODEL for tag, value in exiftool(result).items())


def alphas(trial, row):
    samples = pictures.photo(40, 30, 4)
    samples[..., 3] = numpy.mgrid[0:30, 0:40][1] * 6
    return numpy.unique(with_alpha(row.decode(trial.converted(source(samples, RGBA), "--format", row.format)))[..., 3])


def keeps_alpha(trial, row):
    return len(alphas(trial, row)) > 2


def keeps_clear_pixels(trial, row):
    return set(alphas(trial, row)) == {0, 255}


def kept_bits(trial, row, *options):
    """How many different greys of a fine ramp remain, as bits."""
    ramp = numpy.arange(65536).reshape(256, 256, 1).repeat(3, 2)
    samples = row.decode(trial.converted(source(ramp, bits=16), "--format", row.format, *options))
    return int(numpy.ceil(numpy.log2(len(numpy.unique(samples[..., 0])))))


KEPT = {"profile": keeps_profile, "EXIF": keeps_exif, "alpha": keeps_alpha, "alpha (on or off)": keeps_clear_pixels}


def check_pixels(trial, row, kind, samples):
    result = trial.converted(source(samples), "--format", row.format, *kind.options)
    expected = samples if row.decode(result).dtype == numpy.uint8 else samples.astype(numpy.uint16) * 257
    compare(File(f"{row.name} {' '.join(kind.options)}", b"", decibels=kind.decibels, tolerance=0), row.decode(result), expected)


def check_longest_side(trial, row):
    """One pixel more than the limit is refused."""
    for side, fits in ((row.longest_side, True), (row.longest_side + 1, False)):
        done, result = trial.convert(source(numpy.zeros((1, side, 3), int)), "--format", row.format)
        if (result is not None) != fits:
            raise Wrong(f"{row.name} with {side} pixels on a side: {done.stderr.decode().strip() or 'it is written'}")


def found_written(row):
    """What is kept; raises Wrong if the row is not true."""
    with Trial() as trial:
        photo = pictures.photo(61, 43)
        smooth = numpy.asarray(Image.fromarray(photo).filter(ImageFilter.GaussianBlur(3)))
        few_colors = photo // 64 * 64
        for kind in row.kinds:
            for samples in (photo, few_colors) if kind.decibels is None else (smooth,):
                check_pixels(trial, row, kind, samples)
        if row.longest_side:
            check_longest_side(trial, row)
        kept = [what for what, keeps in KEPT.items() if keeps(trial, row)]
        bits = kept_bits(trial, row)
        lossless_bits = kept_bits(trial, row, "--lossless") if LOSSLESS in row.kinds else bits
    if bits > 8:
        more = f" ({lossless_bits} with `--lossless`)" if lossless_bits > bits else ""
        kept.append("16 bits" if bits > 12 else f"{bits} of 16 bits{more}")
    return kept


def tiff(path):
    return layers(tifffile.imread(path))


PRESETS = "presets, `kestrinectl convert`"
LOSSLESS = Kind("lossless with `--lossless`", ("--lossless",))
OUTPUTS = (
    Output("JPEG", "jpeg", PRESETS, ("libjpeg-turbo",), pillow, held="nothing; progressive: 6 bytes per pixel",
           kinds=(Kind("baseline", ("--quality", "95"), 35),
                  Kind("progressive with `--progressive`", ("--quality", "95", "--progressive"), 35))),
    Output("PNG", "png", PRESETS, ("libpng", "libdeflate"), magick_16,
           kinds=(Kind(), Kind("with `--effort max` smaller, and with a palette if there are at most 256 colours",
                               ("--effort", "max"))),
           held="nothing; with `--effort max` 1 byte per pixel of pictures with few colours"),
    Output("TIFF", "tiff", PRESETS, (), tiff),
    Output("GIF", "gif", PRESETS, (), pillow, kinds=(Kind(decibels=25),), held="the indices"),
    Output("WebP", "webp", "`kestrinectl convert`", ("libwebp",), pillow, longest_side=16383,
           kinds=(Kind("lossy, with halved colours", ("--quality", "95"), 35), LOSSLESS), held="the picture, up to 42 bytes per pixel"),
    Output("AVIF", "avif", "`kestrinectl convert`", ("libavif",), avifdec_16, longest_side=65536,
           kinds=(Kind("lossy", ("--quality", "95"), 35), LOSSLESS), held="the picture, up to 58 bytes per pixel"),
    Output("JPEG XL", "jxl", "`kestrinectl convert`", ("libjxl",), djxl_deep, kinds=(Kind("lossy", ("--quality", "95"), 35), LOSSLESS),
           held="the picture, up to 95 bytes per pixel"),
)
