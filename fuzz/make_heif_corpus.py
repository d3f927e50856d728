#!/usr/bin/python3
"""Makes the files in corpus/heif from pictures that it draws. The decoder's tests read them as well, so they name what they
show. Usage: make_heif_corpus.py"""
import pathlib
import struct
import sys

import numpy
from PIL import Image, ImageCms

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "tests" / "endtoend"))
import heif_files as heif  # noqa: E402
import pictures  # noqa: E402
from write_corpus import write_corpus  # noqa: E402

LOSSLESS = ("-L", "-p", "chroma=444")
# avifenc stores RGB without loss; heif-enc stores YCbCr, whose rounding changes samples by 1.
COLORS = {"hevc": heif.nclx(1, 13, 6), "av1": heif.nclx(1, 13, 0)}


def ramps(width=64, height=64, left=0, top=0):
    """The tests compute the same pixels."""
    y, x = numpy.mgrid[top:top + height, left:left + width]
    return numpy.dstack([3 * x % 256, 5 * y % 256, (2 * x + y) % 256]).astype(numpy.uint8)


def alpha_ramp(width=64, height=64):
    return (4 * numpy.mgrid[0:height, 0:width][1] % 256).astype(numpy.uint8)


def wide_png(samples):
    """A PNG file with 16-bit samples, which Pillow cannot write: eight bits, repeated."""
    import zlib
    height, width = samples.shape[:2]
    rows = b"".join(b"\0" + numpy.repeat(row.reshape(-1), 2).tobytes() for row in samples)
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 16, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def exact_tile(left=0, top=0, codec="hevc"):
    """heif-enc would make smaller pictures larger."""
    options = LOSSLESS if codec == "hevc" else ("-l",)
    return heif.tile(Image.fromarray(ramps(64, 64, left, top)), *options, codec=codec)


def exact_grid(codec="hevc", *properties, **options):
    """100 x 90 pixels of the ramps in tiles of 64 x 64."""
    file = heif.File("heic" if codec == "hevc" else "avif")
    tiles = [file.add_coded(exact_tile(x, y, codec), hidden=True) for y in (0, 64) for x in (0, 64)]
    file.primary = file.add_grid(tiles, 2, 100, 90, COLORS[codec], *properties, **options)
    return file


def single(*properties, codec="hevc", method=0):
    file = heif.File("heic" if codec == "hevc" else "avif")
    file.add_coded(exact_tile(codec=codec), COLORS[codec], *properties, method=method)
    return file


def with_alpha(premultiplied):
    file = single()
    alpha = heif.tile(Image.fromarray(alpha_ramp()), "-L")
    number = file.add_coded(alpha, heif.auxc(), hidden=True)
    file.refer("auxl", number, 1)
    if premultiplied:
        file.refer("prem", 1, number)
    return file


def overlay():
    """Two pictures on an orange canvas of 100 x 90."""
    file = heif.File()
    parts = [file.add_coded(exact_tile(place, place), COLORS["hevc"], hidden=True) for place in (0, 64)]
    description = struct.pack(">BBHHHHHHhhhh", 0, 0, 0xFFFF, 0x8080, 0, 0xFFFF, 100, 90, -4, 6, 80, 50)
    file.primary = file.add("iovl", description, [heif.ispe(100, 90)], method=1)
    file.refer("dimg", file.primary, *parts)
    return file


def identity():
    file = heif.File()
    part = file.add_coded(exact_tile(), COLORS["hevc"], heif.irot(1), hidden=True)
    file.primary = file.add("iden", b"", [heif.ispe(64, 64), heif.imir(1)])
    file.refer("dimg", file.primary, part)
    return file


def cut_from_another_item():
    file = heif.File()
    picture = exact_tile()
    source = file.add("mime", picture.data + b"rest")
    file.primary = file.add_coded(picture, COLORS["hevc"], method=2)
    file.refer("iloc", file.primary, source)
    return file


def with_exif_and_thumbnail():
    resolution = [(0x0128, 3, 1, struct.pack(">HH", 2, 0))]
    file = single(heif.prof(ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()))
    file.add_exif(1, pictures.exif(6, ">", resolution), b"Exif\0\0")
    thumbnail = file.add_coded(exact_tile())
    file.refer("thmb", thumbnail, 1)
    depth = file.add_coded(exact_tile(), heif.auxc("urn:mpeg:hevc:2015:auxid:2"))
    file.refer("auxl", depth, 1)
    return file


def sequence(has_still_picture):
    """Three frames, of which the first is the exact ramps."""
    import subprocess
    import tempfile
    with tempfile.TemporaryDirectory() as folder:
        names = []
        for i in range(3):
            names.append(pathlib.Path(folder) / f"{i}.png")
            Image.fromarray(numpy.roll(ramps(), i * 8, 1)).save(names[-1])
        result = pathlib.Path(folder) / "a.avif"
        subprocess.run(["avifenc", "-l", *names, result], check=True, capture_output=True)
        file = result.read_bytes()
    if has_still_picture:
        return file
    return file.replace(b"meta", b"free", 1)


def avif(samples, *options):
    return heif.encoded(Image.fromarray(samples), "-s", "8", *options, codec="av1")


def files():
    grey = pictures.photo(64, 64, 1)[..., 0]
    yield "exact.heic", single().file()
    yield "exact.avif", avif(ramps(), "-l")
    yield "lossy-420.heic", heif.encoded(Image.fromarray(ramps()), "-q", "80")
    yield "lossy-420.avif", avif(ramps(), "-y", "420")
    yield "10-bits-422.heic", heif.encoded(wide_png(ramps()), "-q", "90", "-b", "10", "-p", "chroma=422")
    yield "12-bits-422.avif", avif(ramps(), "-y", "422", "-d", "12", "-r", "limited")
    yield "10-bits-pq.avif", avif(ramps(), "-d", "10", "--cicp", "9/16/9")
    yield "10-bits-hlg.avif", avif(ramps(), "-d", "10", "--cicp", "9/18/9")
    yield "display-p3.avif", avif(ramps(), "--cicp", "12/13/1")
    yield "grey.heic", heif.encoded(Image.fromarray(grey), "-q", "80")
    yield "grey.avif", avif(grey, "-y", "400")
    yield "alpha.heic", with_alpha(False).file()
    yield "alpha-premultiplied.heic", with_alpha(True).file()
    yield "alpha.avif", avif(numpy.dstack([ramps(), alpha_ramp()]), "-l")
    yield "grid.heic", exact_grid().file()
    yield "grid.avif", exact_grid("av1").file()
    yield "grid-turned-and-cut.heic", exact_grid("hevc", heif.clap(80, 60), heif.irot(1), heif.imir(1), method=0).file()
    yield "data-in-header.heic", single(method=1).file()
    yield "data-in-another-item.heic", cut_from_another_item().file()
    yield "overlay.heic", overlay().file()
    yield "identity.heic", identity().file()
    yield "exif-thumbnail-depth.heic", with_exif_and_thumbnail().file()
    yield "sequence.avif", sequence(True)
    yield "sequence-without-still.avif", sequence(False)


if __name__ == "__main__":
    write_corpus("heif", files())
