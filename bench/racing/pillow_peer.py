"""A typical program that uses Pillow: draft decoding, Lanczos, profile and EXIF kept.

Usage: pillow_peer.py WIDTH HEIGHT jpeg|png|tiff|gif QUALITY OUT FILE...
"""
import sys
from pathlib import Path

from PIL import Image

Image.MAX_IMAGE_PIXELS = None
SUFFIXES = {"jpeg": "jpg", "png": "png", "tiff": "tif", "gif": "gif"}


def convert(path, width, height, form, quality, folder):
    with Image.open(path) as picture:
        kept = {key: picture.info[key] for key in ("icc_profile", "exif") if picture.info.get(key)}
        picture.thumbnail((width, height), Image.LANCZOS, reducing_gap=2.0)
        options = {"jpeg": {"quality": quality, **kept}, "tiff": {"compression": "raw", **kept}, "png": kept, "gif": {}}
        if form == "gif":
            picture = picture.quantize(palette=picture.quantize(256), dither=Image.Dither.FLOYDSTEINBERG)
        picture.save(Path(folder) / (Path(path).stem + "." + SUFFIXES[form]), form.upper(), **options[form])


def main():
    width, height, form, quality, folder, *files = sys.argv[1:]
    for file in files:
        convert(file, int(width), int(height), form, int(quality), folder)


main()
