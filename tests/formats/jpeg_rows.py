"""JPEG."""
import io
import struct

import pictures
from judges import magick, pillow, run
from PIL import Image
from table import File, Format, Refusal, Variant
from tools import BIN
from trial import MODEL

WIDTH, HEIGHT = 61, 43
PHOTO, GREY = pictures.photo(WIDTH, HEIGHT), pictures.photo(WIDTH, HEIGHT, 1)
INKS = pictures.photo(WIDTH, HEIGHT, 4)
ACCEPTING = ("--accept-damaged",)


def written(space, factors="11111111", *options):
    samples = {"grey": GREY, "cmyk": INKS, "ycck": INKS}.get(space, PHOTO)
    return run(BIN / "kestrine_write_jpeg", WIDTH, HEIGHT, space, factors, *options, input=samples.tobytes())


def file(name, content, judge=pillow, decibels=45, **more):
    return File(name, content, judge=judge, decibels=decibels, **more)


def extended(content):
    """A baseline file is a valid extended file."""
    return content.replace(b"\xff\xc0", b"\xff\xc1", 1)


def processes():
    plain = written("ycc")
    yield file("baseline.jpg", plain)
    yield file("extended.jpg", extended(plain))
    yield file("restarts.jpg", written("ycc", "221111", "restarts"))
    for options in (("progressive",), ("arithmetic",), ("arithmetic", "progressive")):
        yield file("-".join(options) + ".jpg", written("ycc", "111111", *options))


def spaces():
    for space in ("grey", "ycc", "rgb"):
        yield file(f"{space}.jpg", written(space))
    for space in ("cmyk", "ycck"):
        yield file(f"{space}.jpg", written(space), magick)


def subsamplings():
    """Where both sides are not simply halved, libjpeg-turbo and our own decoder repeat the colours, as the judge does."""
    for factors in ("111111", "211111", "121111", "221111", "411111", "421111", "141111", "212111", "222111", "111121", "221221",
                    "311111", "321111", "112111"):
        yield file(f"{factors}.jpg", written("ycc", factors))


def segment(marker, content):
    return struct.pack(">BBH", 0xFF, marker, len(content) + 2) + content


def cut_off():
    content = written("ycc")
    yield file("cut-off.jpg", content[:len(content) // 2], None, None, options=ACCEPTING)
    damaged = bytearray(content)
    damaged[len(content) // 2:len(content) // 2 + 20] = bytes(20)
    yield file("damaged.jpg", bytes(damaged), None, None, options=ACCEPTING)


def huffman_table(kind, symbols):
    """All symbols have codes of the same length: four bits."""
    return segment(0xC4, bytes([kind, 0, 0, 0, len(symbols)]) + bytes(12) + bytes(symbols))


def one_flat_block(marker, bits):
    """8 x 8 grey pixels of medium brightness, as the processes code them: a difference of 0 and the end of the block, or,
    without loss, 64 differences of 0."""
    lossless = marker == 0xC3
    data = bytes(32) if lossless else b"\x00\x3f"
    frame = segment(marker, struct.pack(">BHHB", bits, 8, 8, 1) + bytes([1, 0x11, 0]))
    scan = segment(0xDA, bytes([1, 1, 0, 1, 0, 0]) if lossless else bytes([1, 1, 0, 0, 63, 0]))
    tables = b"" if lossless else segment(0xDB, b"\0" + b"\1" * 64) + huffman_table(0x10, [0])
    return b"\xff\xd8" + tables + frame + huffman_table(0, [0]) + scan + data + b"\xff\xd9"


def twelve_bits():
    yield File("12-bits.jpg", one_flat_block(0xC1, 12))


def lossless():
    for bits in (8, 16):
        yield File(f"lossless-{bits}.jpg", one_flat_block(0xC3, bits))


def hierarchical():
    yield File("hierarchical.jpg", b"\xff\xd8" + segment(0xDE, struct.pack(">BHHB", 8, 8, 8, 1) + bytes([1, 0x11, 0]))
               + one_flat_block(0xC1, 8)[2:])


def jpeg_ls():
    yield File("ls.jpg", b"\xff\xd8" + segment(0xF7, struct.pack(">BHHB", 8, 8, 8, 1) + bytes([1, 0x11, 0])) + bytes(40))


def saved(samples, **options):
    stream = io.BytesIO()
    Image.fromarray(samples).save(stream, "JPEG", quality=92, **options)
    return stream.getvalue()


def further_pictures():
    """A second JPEG file after the first, as cameras store previews and second views."""
    first, second = saved(PHOTO), saved(255 - PHOTO)
    yield File("two.jpg", first + second, pixels=pillow(io.BytesIO(first)))


def with_segments(name, segments):
    content = saved(PHOTO)
    return File(name, content[:2] + b"".join(segments) + content[2:])


def profile_in_segments():
    content = pictures.wide_icc()
    parts = [content[:300], content[300:]]
    return with_segments("profile.jpg", [segment(0xE2, b"ICC_PROFILE\0" + bytes([number, 2]) + part)
                                         for number, part in enumerate(parts, 1)])


def exif_in_segments():
    """A description that does not fit into one segment, and the camera after it."""
    text, model = b"description " * 6000 + b"\0", MODEL.encode().ljust(8, b"\0")
    place = len(pictures.exif(1, extra=[(0x010E, 2, 4, b"text"), (0x0110, 2, 4, b"text")]))
    block = pictures.exif(1, extra=[(0x010E, 2, len(text), struct.pack(">I", place)),
                                    (0x0110, 2, len(model), struct.pack(">I", place + len(text)))]) + text + model
    return with_segments("exif.jpg", [segment(0xE1, b"Exif\0\0" + block[at:at + 60000]) for at in range(0, len(block), 60000)])


FORMAT = Format(
    name="JPEG",
    libraries=("libjpeg-turbo",), ours="the usual baseline and progressive files",
    read=(
        Variant("baseline, extended, progressive and arithmetic coding, of 8 bits; restart markers", processes),
        Variant("grey, YCbCr, RGB, CMYK and YCCK", spaces),
        Variant("every subsampling of the colours, with factors 1 to 4", subsamplings),
        Variant("of several pictures in a file the first: previews, gain maps and second views are ignored", further_pictures),
        Variant("cut off and damaged files as far as they go; `kestrinectl` asks for `--accept-damaged`", cut_off),
    ),
    refused=(
        Refusal("12 bits", "libjpeg-turbo is built for 8 bits", "Unsupported JPEG data precision 12", twelve_bits),
        Refusal("lossless JPEG", "libjpeg-turbo 2.1 does not decode it", "Unsupported JPEG process: SOF type 0xc3", lossless),
        Refusal("hierarchical JPEG", "libjpeg-turbo does not decode it, and no program writes it", "Unsupported marker type 0xde",
                hierarchical),
        Refusal("JPEG-LS", "another format; libjpeg-turbo does not decode it", "Unsupported marker type 0xf7", jpeg_ls),
    ),
    carriers={"profile": profile_in_segments, "EXIF": exif_in_segments},
    kept_notes={"profile": "also in several segments", "EXIF": "also in several segments"},
    held="nothing; of progressive files that libjpeg-turbo decodes the coefficients, 2 bytes per sample",
    picture=lambda samples: saved(samples), cost_name="a.jpg",
)
