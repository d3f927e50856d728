"""ICO, CUR and ICNS."""
import io
import struct
from pathlib import Path

import numpy
import pictures
from bmp_rows import bmp, colors_24, packed_indices, padded, palette
from PIL import Image
from png_rows import RGB, RGBA, noise, png, profile
from table import File, Format, Refusal, Variant

CORPUS = Path(__file__).resolve().parent.parent.parent / "fuzz/corpus"
SIDE = 32
PHOTO = pictures.photo(SIDE, SIDE, 4)
PHOTO[..., 3] |= 1
MASK = numpy.arange(SIDE * SIDE).reshape(SIDE, SIDE) % 3 == 0
BITS = numpy.packbits(MASK, axis=1)


def ico(*entries, kind=1):
    """`entries` are pictures with their sides; bits per pixel as stated in the directory are 32."""
    data, directory, offset = b"", struct.pack("<HHH", 0, kind, len(entries)), 6 + 16 * len(entries)
    for side, content in entries:
        directory += struct.pack("<BBBBHHII", side % 256, side % 256, 0, 0, 1, 32, len(content), offset + len(data))
        data += content
    return directory + data


def bitmap(content):
    """The bitmap of an icon: without a file header, followed by its mask. The stored height covers both."""
    header = bytearray(content[14:])
    struct.pack_into("<i", header, 8, 2 * SIDE)
    return bytes(header) + padded([row.tobytes() for row in BITS])


def shown(colors):
    return numpy.dstack([colors, numpy.where(MASK, 0, 255).astype(numpy.uint8)])


def depths():
    for kind in (1, 2):
        for bits in (1, 4, 8):
            colors, stored = palette(bits)
            samples = numpy.random.default_rng(bits).integers(0, 1 << bits, (SIDE, SIDE), numpy.uint8)
            content = bmp(packed_indices(samples, bits), bits, colors=stored, width=SIDE, height=SIDE)
            yield File(f"{bits}-{kind}.ico", ico((SIDE, bitmap(content)), kind=kind), shown(colors[samples]), tolerance=0)
    content = bmp(colors_24(PHOTO[..., :3]), 24, width=SIDE, height=SIDE)
    yield File("24.ico", ico((SIDE, bitmap(content))), shown(PHOTO[..., :3]), tolerance=0)
    content = bmp(padded([row[:, [2, 1, 0, 3]].tobytes() for row in PHOTO]), 32, width=SIDE, height=SIDE)
    yield File("32.ico", ico((SIDE, bitmap(content))), PHOTO, tolerance=0)
    yield File("16.ico", (CORPUS / "ico/16-bits-masks.ico").read_bytes())


def pngs():
    yield File("png.ico", ico((SIDE, png(PHOTO, RGBA, 8))), PHOTO, tolerance=0)


def largest():
    small = png(numpy.full((16, 16, 4), 90, int), RGBA, 8)
    yield File("several.ico", ico((16, small), (SIDE, png(PHOTO, RGBA, 8)), (16, small)), PHOTO, tolerance=0)


def run_lengths():
    content = bmp(b"\x20\x01\0\0" * SIDE + b"\0\1", 8, compression=1, colors=palette(8)[1], width=SIDE, height=SIDE)
    yield File("runs.ico", ico((SIDE, bitmap(content))))


def icon_with_profile():
    return File("a.ico", ico((SIDE, png(PHOTO[..., :3], RGB, 8, profile()))))


def deep_icon():
    return File("a.ico", ico((37, png(noise(3, 16), RGB, 16))))


ICO = Format(
    name="ICO, CUR",
    libraries=("libpng",), ours="the icons and their bitmaps",
    read=(
        Variant("1, 4, 8, 16, 24 and 32 bits with mask; of 32 bits the fourth byte is alpha unless it is 0 everywhere", depths),
        Variant("PNG inside icons", pngs),
        Variant("of several pictures the largest (most pixels, then most bits, then the first)", largest),
    ),
    refused=(Refusal("run-length codes", "programs do not write them into icons", "a picture with run-length codes", run_lengths),
             ),
    carriers={"alpha": lambda: next(pngs()), "profile": icon_with_profile, "16 bits": deep_icon},
    kept_notes={"profile": "of PNG", "16 bits": "of PNG"},
)


def icns(*elements):
    content = b"".join(kind + struct.pack(">I", 8 + len(data)) + data for kind, data in elements)
    return b"icns" + struct.pack(">I", 8 + len(content)) + content


def packed(plane):
    """Plain bytes in the run-length codes of icons."""
    data = plane.tobytes()
    return b"".join(bytes([len(data[at:at + 128]) - 1]) + data[at:at + 128] for at in range(0, len(data), 128))


def planes(samples):
    return b"".join(packed(numpy.ascontiguousarray(samples[..., channel])) for channel in range(samples.shape[2]))


def icon_codes():
    alpha = PHOTO[..., 3].tobytes()
    yield File("colors.icns", icns((b"il32", planes(PHOTO[..., :3])), (b"l8mk", alpha)), PHOTO, tolerance=0)
    yield File("argb.icns", icns((b"ic05", b"ARGB" + planes(PHOTO[..., [3, 0, 1, 2]]))), PHOTO, tolerance=0)
    for name in ("plain-16.icns", "colors-16-mask.icns"):
        yield File(name, (CORPUS / "icns" / name).read_bytes())


def icon_files():
    for side, kind in ((128, b"ic07"), (256, b"ic08")):
        samples = pictures.photo(side, side, 4)
        yield File(f"png-{side}.icns", icns((kind, png(samples, RGBA, 8))), samples, tolerance=0)
        stream = io.BytesIO()
        Image.fromarray(samples).save(stream, "JPEG2000")
        yield File(f"jp2-{side}.icns", icns((kind, stream.getvalue())), samples, tolerance=0)


def old_icons():
    """Black and white, and indices of the system's colours, which the unit tests compare."""
    bits = File("bits.icns", icns((b"ICN#", BITS.tobytes() + b"\xff" * (SIDE * SIDE // 8))),
                (~MASK * 255).astype(numpy.uint8)[..., None])
    yield bits
    for name in ("indices-4.icns", "indices-8.icns"):
        yield File(name, (CORPUS / "icns" / name).read_bytes())


def largest_icon():
    small = png(numpy.full((16, 16, 4), 90, int), RGBA, 8)
    samples = pictures.photo(128, 128, 4)
    yield File("several.icns", icns((b"icp4", small), (b"ic07", png(samples, RGBA, 8)), (b"icp4", small)), samples, tolerance=0)


ICNS = Format(
    name="ICNS",
    libraries=("libpng", "OpenJPEG"), ours="the icons and their older pictures",
    read=(
        Variant("PNG and JPEG 2000 inside icons", icon_files),
        Variant("ARGB, run-length coded and plain colours, with masks of 8 bits and of bits", icon_codes),
        Variant("indices of 4 and 8 bits of the system's colours; bits", old_icons),
        Variant("of several pictures the largest (most pixels, then most colours)", largest_icon),
    ),
    carriers={"alpha": lambda: next(icon_codes()), "profile": lambda: with_profile()},
    kept_notes={"profile": "of PNG and JPEG 2000"},
    held="nothing; of JPEG 2000 as there",
)


def with_profile():
    return File("a.icns", icns((b"ic07", png(pictures.photo(128, 128), RGB, 8, profile()))))


FORMATS = (ICO, ICNS)
