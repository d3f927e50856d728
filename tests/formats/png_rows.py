"""PNG."""
import io
import struct
import zlib

import numpy
import pictures
from PIL import Image
from table import File, Format, Refusal, Variant
from trial import exif

GREY, RGB, INDEXED, GREY_ALPHA, RGBA = 0, 2, 3, 4, 6
CHANNELS = {GREY: 1, RGB: 3, INDEXED: 1, GREY_ALPHA: 2, RGBA: 4}
KINDS = [(GREY, bits) for bits in (1, 2, 4, 8, 16)] + [(INDEXED, bits) for bits in (1, 2, 4, 8)]
KINDS += [(kind, bits) for kind in (RGB, GREY_ALPHA, RGBA) for bits in (8, 16)]
PASSES = ((0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2), (0, 1, 1, 2))
WIDTH, HEIGHT = 37, 21
ACCEPTING = ("--accept-damaged",)


def chunk(kind, content):
    return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))


def noise(channels, bits, width=WIDTH, height=HEIGHT):
    return numpy.random.default_rng(bits * 8 + channels).integers(0, 1 << bits, (height, width, channels))


def packed(samples, bits):
    """Rows of samples as bytes, each row after the number of its filter (none)."""
    height = samples.shape[0]
    rows = samples.reshape(height, -1)
    if bits == 16:
        data = rows.astype(">u2").view(numpy.uint8).reshape(height, -1)
    else:
        data = numpy.packbits((rows[..., None] >> numpy.arange(bits)[::-1] & 1).astype(numpy.uint8).reshape(height, -1), axis=1)
    return numpy.hstack([numpy.zeros((height, 1), numpy.uint8), data]).tobytes()


def png(samples, kind, bits, before=b"", interlaced=False, after=b"", level=6):
    """`before` stands before the pixels, `after` after them."""
    height, width = samples.shape[:2]
    if interlaced:
        parts = [samples[y::down, x::right] for x, y, right, down in PASSES]
        rows = b"".join(packed(part, bits) for part in parts if part.size)
    else:
        rows = packed(samples, bits)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, bits, kind, 0, 0, int(interlaced)))
            + before + chunk(b"IDAT", zlib.compress(rows, level)) + after + chunk(b"IEND", b""))


def palette(bits):
    return numpy.random.default_rng(3).integers(0, 256, (1 << bits, 3), numpy.uint8)


def full_depth(samples, bits):
    """Samples of fewer than 8 bits with 8."""
    return samples.astype(numpy.uint16) if bits == 16 else (samples * (255 // ((1 << bits) - 1))).astype(numpy.uint8)


def kinds(interlaced):
    for kind, bits in KINDS:
        samples = noise(CHANNELS[kind], bits)
        name = f"{kind}-{bits}-{'interlaced' if interlaced else 'plain'}.png"
        if kind == INDEXED:
            colors = palette(bits)
            yield File(name, png(samples, kind, bits, chunk(b"PLTE", colors.tobytes()), interlaced),
                       pixels=colors[samples[..., 0]],
                       tolerance=0)
        else:
            yield File(name, png(samples, kind, bits, b"", interlaced), pixels=full_depth(samples, bits), tolerance=0)


def transparent_colors():
    for kind, bits in KINDS:
        if kind in (GREY_ALPHA, RGBA):
            continue
        for interlaced in (False, True):
            samples = noise(CHANNELS[kind], bits)
            if kind == INDEXED:
                colors, alpha = palette(bits), numpy.arange(0, 1 << bits, dtype=numpy.uint8) * 3 + 1
                before, pixels = chunk(b"PLTE", colors.tobytes()) + chunk(b"tRNS", alpha.tobytes()), colors[samples[..., 0]]
                pixels = numpy.dstack([pixels, alpha[samples[..., 0]]])
            else:
                clear = samples[5, 7]
                unused = 0 if bits == 16 or interlaced else 0xFFFF << bits & 0xFFFF  # bits above the depth do not count
                before, pixels = chunk(b"tRNS", (clear | unused).astype(">u2").tobytes()), full_depth(samples, bits)
                opaque = (samples != clear).any(2) * (65535 if bits == 16 else 255)
                pixels = numpy.dstack([pixels, opaque.astype(pixels.dtype)])
            yield File(f"{kind}-{bits}-{interlaced}.png", png(samples, kind, bits, before, interlaced), pixels=pixels,
                       tolerance=0)


def animation():
    """An animation whose first frame is the picture, by Pillow, and one whose picture is not part of it."""
    frames = [Image.fromarray(pictures.photo(30, 20, seed=seed)) for seed in (1, 2, 3)]
    for with_default in (False, True):
        stream = io.BytesIO()
        frames[0].save(stream, "PNG", save_all=True, append_images=frames[1:], default_image=with_default)
        yield File(f"animated-{with_default}.png", stream.getvalue(), pixels=numpy.asarray(frames[0]), tolerance=0)


def damaged():
    samples = noise(3, 8)
    content = png(samples, RGB, 8)
    for name, file in (("cut-off.png", content[:len(content) // 2]),
                       ("wrong-checksum.png", content[:-16] + bytes(4) + content[-12:])):
        yield File(name, file, options=ACCEPTING)


def damaged_interlaced():
    content = png(noise(3, 8), RGB, 8, interlaced=True)
    yield File("cut-off-interlaced.png", content[:len(content) // 2], options=ACCEPTING)


def early_transparency():
    samples, colors, alpha = noise(1, 4), palette(4), numpy.arange(16, dtype=numpy.uint8) * 16
    before = chunk(b"tRNS", alpha.tobytes()) + chunk(b"PLTE", colors.tobytes())
    yield File("early.png", png(samples, INDEXED, 4, before), tolerance=0,
               pixels=numpy.dstack([colors[samples[..., 0]], alpha[samples[..., 0]]]))


def telephone():
    """The variant that telephones' programs use begins with another chunk and has no header of zlib."""
    yield File("telephone.png",
               png(noise(3, 8), RGB, 8).replace(b"\x89PNG\r\n\x1a\n", b"\x89PNG\r\n\x1a\n" + chunk(b"CgBI", b"\x50\0\x20\x02"),
                                                1))


def profile():
    return chunk(b"iCCP", b"wide\0\0" + zlib.compress(pictures.wide_icc()))


CALIBRATION = chunk(b"gAMA", struct.pack(">I", 45455)) + chunk(b"cHRM",
                                                               struct.pack(">8I", 31270, 32900, 64000, 33000, 21000, 71000,
                                                                                    15000, 6000))

FORMAT = Format(
    name="PNG",
    libraries=("libpng", "ISA-L"),
    read=(
        Variant("grey, RGB, indexed, grey with alpha and RGBA of every depth, 1 to 16 bits", lambda: kinds(False)),
        Variant("the same interlaced", lambda: kinds(True)),
        Variant("a transparent colour, and palettes with alpha", transparent_colors),
        Variant("of animations the picture that programs without animations show", animation),
        Variant("cut off and damaged files as far as they go; `kestrinectl` asks for `--accept-damaged`", damaged),
        Variant("transparency that stands before the palette", early_transparency),
    ),
    refused=(
        Refusal("interlaced files that are cut off or damaged", "the first passes alone show hardly anything",
                "the file ends too early", damaged_interlaced),
        Refusal("the variant of tools for telephones (chunk CgBI)", "not PNG; libpng refuses it", "unhandled critical chunk",
                telephone),
    ),
    carriers={"profile": lambda: File("a.png", png(noise(3, 8), RGB, 8, profile())),
              "profile made from the colour space": lambda: File("a.png", png(noise(3, 8), RGB, 8, CALIBRATION)),
              "alpha": lambda: File("a.png", png(noise(4, 8), RGBA, 8)),
              "16 bits": lambda: File("a.png", png(noise(3, 16), RGB, 16)),
              "EXIF": lambda: File("a.png", png(noise(3, 8), RGB, 8, chunk(b"eXIf", exif())))},
    kept_notes={"profile made from the colour space": "gAMA and cHRM, or cICP"},
    held="nothing; of interlaced files half of the rows, up to a limit",
    picture=lambda samples: png(samples, RGB, 8, level=1), cost_name="a.png",
)
