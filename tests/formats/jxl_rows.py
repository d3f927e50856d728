"""JPEG XL, by cjxl."""
import io
import tempfile
from pathlib import Path

import numpy
import pictures
from heif_rows import smooth
from judges import djxl, djxl_16, pillow, run
from PIL import Image
from png_rows import GREY, GREY_ALPHA, RGB, RGBA, noise, png
from table import File, Format, Refusal, Variant
from trial import exif

PHOTO = pictures.photo(61, 43)


def cjxl(content, extension, *options):
    with tempfile.TemporaryDirectory() as folder:
        source, result = Path(folder) / f"a.{extension}", Path(folder) / "a.jxl"
        source.write_bytes(content)
        run("cjxl", source, result, "-e", 3, *options)
        return result.read_bytes()


def saved(samples, kind="PNG", **options):
    stream = io.BytesIO()
    Image.fromarray(samples).save(stream, kind, **options)
    return stream.getvalue()


LOSSLESS = ("-d", 0)


def lossless():
    """cjxl stores alpha with 8 bits, and fewer bits than 16 in another scale than their maximum says; so djxl judges those."""
    for kind, channels in ((GREY, 1), (GREY_ALPHA, 2), (RGB, 3), (RGBA, 4)):
        for bits in (8, 16) if channels in (1, 3) else (8,):
            samples = noise(channels, bits).astype(numpy.uint8 if bits == 8 else numpy.uint16)
            yield File(f"lossless-{channels}-{bits}.jxl", cjxl(png(samples, kind, bits), "png", *LOSSLESS), samples, tolerance=0)
    for bits in (10, 12):
        samples = noise(3, bits)
        content = b"P6 %d %d %d\n" % (*samples.shape[1::-1], (1 << bits) - 1) + samples.astype(">u2").tobytes()
        yield File(f"lossless-{bits}.jxl", cjxl(content, "ppm", *LOSSLESS), judge=djxl_16)


def lossy():
    for distance in (1, 4):
        for options in ((), ("-p",), ("--container=1",)):
            content = cjxl(saved(PHOTO), "png", "-d", distance, *options)
            yield File(f"lossy-{distance}-{len(options)}.jxl", content, judge=djxl, decibels=45)
    yield File("lossy-alpha.jxl", cjxl(saved(pictures.photo(61, 43, 4)), "png", "-d", 1), judge=djxl, decibels=45)


def lossy_with_profile():
    """Compared with the source, loss included: djxl shows linear sRGB instead."""
    samples = smooth(90, 70)
    content = cjxl(saved(samples, icc_profile=pictures.wide_icc()), "png", "-d", "0.3")
    yield File("wide.jxl", content, samples, decibels=39)


def floating_point():
    rows = (PHOTO / 255).astype("<f4")[::-1].tobytes()
    content = b"PF\n61 43\n-1.0\n" + rows
    yield File("float.jxl", cjxl(content, "pfm", "-d", 1), judge=djxl_16, decibels=45)


def recompressed():
    for options in ({"subsampling": 0}, {"subsampling": 2, "progressive": True}):
        content = saved(PHOTO, "JPEG", quality=90, **options)
        yield File(f"jpeg-{options['subsampling']}.jxl", cjxl(content, "jpg"), judge=djxl, decibels=45)


def turned():
    """cjxl puts the orientation of the EXIF data into the codestream; djxl applies it."""
    for orientation in (3, 6, 8):
        content = saved(PHOTO, "JPEG", quality=95, exif=b"Exif\0\0" + pictures.exif(orientation))
        yield File(f"turned-{orientation}.jxl", cjxl(content, "jpg"), judge=djxl, decibels=45)


def animation():
    frames = [Image.fromarray(pictures.photo(30, 20, seed=seed)).quantize(64) for seed in (1, 2, 3)]
    stream = io.BytesIO()
    frames[0].save(stream, "GIF", save_all=True, append_images=frames[1:], duration=50)
    first = pillow(io.BytesIO(stream.getvalue()))
    yield File("animated.jxl", cjxl(stream.getvalue(), "gif", *LOSSLESS), first)


def cut_off():
    content = cjxl(saved(PHOTO), "png", "-d", 1)
    yield File("cut-off.jxl", content[:len(content) * 2 // 3])


FORMAT = Format(
    name="JPEG XL",
    libraries=("libjxl",),
    read=(
        Variant("lossless, grey and RGB, with and without alpha, 8 to 16 bits", lossless),
        Variant("lossy, progressive, bare codestream and container", lossy),
        Variant("lossy with any RGB profile; lossy grey with a profile becomes grey with the curve of sRGB", lossy_with_profile),
        Variant("floating point, as 16 bits", floating_point),
        Variant("recompressed JPEG", recompressed),
        Variant("orientations, applied", turned),
        Variant("of animations the first frame", animation),
    ),
    refused=(
        Refusal("cut off files", "an original must not look complete", "the JPEG XL file ends too early", cut_off),
    ),
    carriers={"profile": lambda: File("a.jxl", cjxl(saved(PHOTO, icc_profile=pictures.wide_icc()), "png", "-d", 1)),
              "alpha": lambda: File("a.jxl", cjxl(saved(pictures.photo(61, 43, 4)), "png", *LOSSLESS)),
              "16 bits": lambda: File("a.jxl", cjxl(png(noise(3, 16), RGB, 16), "png", *LOSSLESS)),
              "EXIF": lambda: File("a.jxl", cjxl(saved(PHOTO, "JPEG", exif=b"Exif\0\0" + exif()), "jpg"))},
    kept_notes={"EXIF": "also compressed; with orientation 1, because the codestream turns the picture"},
    notes=("CMYK (black as an extra channel) is not read: there is no conversion yet. It is not tried, because no program of the "
           "tests writes such files.",
           "Alpha that is multiplied in is read, but not tried: the encoder of libjxl 0.7 does not write it."),
    held="the pixels, and 12 bytes per pixel in the library",
    picture=lambda samples: cjxl(b"P6 %d %d 255\n" % samples.shape[1::-1] + samples.tobytes(), "ppm", "-d", 1), cost_name="a.jxl",
)
