"""PSD and PSB."""
import struct
from pathlib import Path

import numpy
import pictures
from judges import magick, run
from table import File, Format, Refusal, Variant
from trial import exif

CORPUS = Path(__file__).resolve().parent.parent.parent / "fuzz/corpus/psd"
PHOTO, GREY, INKS = (pictures.photo(61, 43, channels) for channels in (3, 1, 4))
BITMAP, GREYS, INDEXED, RGB, CMYK, MULTICHANNEL, DUOTONE, LAB = 0, 1, 2, 3, 4, 7, 8, 9
PLAIN, RUNS, DEFLATE = 0, 1, 2


def packed_row(row):
    """Plain bytes in PackBits."""
    return b"".join(bytes([len(row[at:at + 128]) - 1]) + row[at:at + 128] for at in range(0, len(row), 128))


def resource(number, content):
    return b"8BIM" + struct.pack(">HHI", number, 0, len(content)) + content + bytes(len(content) % 2)


def psd(samples, mode, bits=None, compression=PLAIN, large=False, colors=b"", resources=b"", layers=b"", rows=None):
    """`rows` are packed rows of each channel, if they are not those of `samples`."""
    height, width, channels = samples.shape
    bits = bits or samples.dtype.itemsize * 8
    if rows is None:
        stored = samples.astype(samples.dtype.newbyteorder(">"))
        rows = [stored[y, :, channel].tobytes() for channel in range(channels) for y in range(height)]
    if compression == RUNS:
        rows = [packed_row(row) for row in rows]
        lengths = struct.pack(f">{len(rows)}{'I' if large else 'H'}", *map(len, rows))
        rows = [lengths, *rows]
    header = b"8BPS" + struct.pack(">HxxxxxxHIIHH", 2 if large else 1, channels, height, width, bits, mode)
    sections = struct.pack(">I", len(colors)) + colors + struct.pack(">I", len(resources)) + resources
    return header + sections + struct.pack(">Q" if large else ">I",
                                           len(layers)) + layers + struct.pack(">H", compression) + b"".join(rows)


def plain_colors():
    for large in (False, True):
        for compression in (PLAIN, RUNS):
            for mode, samples in ((GREYS, GREY), (RGB, PHOTO), (DUOTONE, GREY)):
                for wide in (False, True):
                    stored = samples.astype(numpy.uint16) * 257 - 3 * (samples > 9) if wide else samples
                    stored = stored.astype(numpy.uint16 if wide else numpy.uint8)
                    content = psd(stored, mode, compression=compression, large=large)
                    yield File(f"{mode}-{large}-{compression}-{wide}.{'psb' if large else 'psd'}", content, stored, tolerance=0)


def bitmaps():
    dark = (GREY[..., 0] < 128).astype(numpy.uint8)
    rows = [row.tobytes() for row in numpy.packbits(dark, axis=1)]
    yield File("bitmap.psd", psd(GREY, BITMAP, bits=1, rows=rows), ((1 - dark) * 255)[..., None], tolerance=0)


def indices():
    colors = numpy.random.default_rng(1).integers(0, 256, (256, 3), numpy.uint8)
    yield File("indexed.psd", psd(GREY, INDEXED, colors=colors.T.tobytes()), colors[GREY[..., 0]], tolerance=0)


def other_colors():
    """ImageMagick reads CMYK; Lab is compared by the unit tests."""
    yield File("cmyk.psd", psd(255 - INKS, CMYK), judge=magick, decibels=39)
    for name in ("cmyk-16.psb", "lab-16.psd", "lab-alpha.psd"):
        yield File(name, (CORPUS / name).read_bytes())


def floating_point():
    """The numbers are linear light."""
    light = (PHOTO / 255).astype(numpy.float32)
    curve = numpy.where(light <= 0.0031308, light * 12.92, 1.055 * light ** (1 / 2.4) - 0.055)
    yield File("float.psd", psd(light, RGB), numpy.round(curve * 65535).astype(numpy.uint16), tolerance=2)


def translucent():
    """A negative number of layers says that the fourth channel is the transparency. Colours are stored before white."""
    layers = struct.pack(">IhH", 4, -1, 0)
    stored = INKS.copy()
    stored[..., :3] = numpy.maximum(INKS[..., :3], 255 - INKS[..., 3:])
    yield File("alpha.psd", psd(stored, RGB, layers=layers), judge=lambda path: without_white(stored))


def without_white(stored):
    alpha = stored[..., 3:].astype(float)
    colors = numpy.clip((stored[..., :3] - (255 - alpha)) * 255 / numpy.maximum(alpha, 1), 0, 255)
    return numpy.dstack([numpy.round(colors), alpha]).astype(numpy.uint8)


def only_layers():
    yield File("only-layers.psd", (CORPUS / "only-layers.psd").read_bytes())


def multichannel():
    yield File("multichannel.psd", psd(PHOTO, MULTICHANNEL))


def deflated():
    yield File("deflated.psd", psd(PHOTO, RGB, compression=DEFLATE))


def by_other_program(samples):
    """ImageMagick writes the cost's picture with run-length codes."""
    return run("convert", "-size", "%dx%d" % samples.shape[1::-1], "-depth", 8, "rgb:-", "-compress", "RLE", "psd:-",
               input=samples.tobytes())


FORMAT = Format(
    name="PSD, PSB",
    libraries=(),
    read=(
        Variant("the merged picture in grey, duotone (as grey) and RGB, 8 and 16 bits, plain and run-length coded", plain_colors),
        Variant("bitmaps", bitmaps),
        Variant("indices", indices),
        Variant("CMYK and Lab, 8 and 16 bits", other_colors),
        Variant("32 bits, which become sRGB of 16 bits", floating_point),
        Variant("alpha, if the file marks it as transparency", translucent),
    ),
    refused=(
        Refusal("files without the merged picture", "every blend mode and effect would be needed to draw the layers",
                "the PSD holds only layers",
                only_layers),
        Refusal("multichannel pictures", "how their inks mix is not defined publicly", "multichannel colour mode", multichannel),
        Refusal("pictures compressed by deflate", "no program writes the merged picture in this way",
                "the PSD has an unknown compression", deflated),
    ),
    carriers={"profile": lambda: File("a.psd", psd(PHOTO, RGB, resources=resource(1039, pictures.wide_icc()))),
              "alpha": lambda: next(translucent()),
              "16 bits": lambda: File("a.psd", psd(PHOTO.astype(numpy.uint16) * 256 + 7, RGB)),
              "EXIF": lambda: File("a.psd", psd(PHOTO, RGB, resources=resource(1058, exif())))},
    picture=by_other_program, cost_name="a.psd",
)
