"""WebP."""
import io

import numpy
import pictures
from judges import pillow
from PIL import Image
from table import File, Format, Variant
from trial import exif

PHOTO, RGBA = pictures.photo(61, 43), pictures.photo(61, 43, 4)


def saved(samples, **options):
    stream = io.BytesIO()
    Image.fromarray(samples).save(stream, "WEBP", **options)
    return stream.getvalue()


def lossy():
    for quality in (10, 50, 95):
        yield File(f"lossy-{quality}.webp", saved(PHOTO, quality=quality), judge=pillow, decibels=45)
        yield File(f"lossy-alpha-{quality}.webp", saved(RGBA, quality=quality), judge=pillow, decibels=45)


def lossless():
    for samples in (PHOTO, RGBA, (PHOTO // 64) * 64):
        for method in (0, 6):
            yield File(f"lossless-{samples.shape[2]}-{method}.webp", saved(samples, lossless=True, method=method, exact=True),
                       samples,
                       tolerance=0)


def animations():
    frames = [Image.fromarray(pictures.photo(30, 20, seed=seed)) for seed in (1, 2, 3)]
    stream = io.BytesIO()
    frames[0].save(stream, "WEBP", save_all=True, append_images=frames[1:], lossless=True)
    yield File("animated.webp", stream.getvalue(), numpy.asarray(frames[0]), tolerance=0)


FORMAT = Format(
    name="WebP",
    libraries=("libwebp",),
    read=(
        Variant("lossy, with and without alpha", lossy),
        Variant("lossless, with and without alpha", lossless),
        Variant("of animations the first picture", animations),
    ),
    carriers={"profile": lambda: File("a.webp", saved(PHOTO, icc_profile=pictures.wide_icc())),
              "alpha": lambda: File("a.webp", saved(RGBA)),
              "EXIF": lambda: File("a.webp", saved(PHOTO, exif=b"Exif\0\0" + exif()))},
    held="lossless: the picture, 4 bytes per pixel; lossy: alpha; animations smaller than their canvas: all",
    picture=lambda samples: saved(samples, quality=80, method=0), cost_name="a.webp",
)
