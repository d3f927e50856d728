"""PCX, SGI and TGA: by Pillow, ImageMagick and by hand. And QOI, by hand."""
import io
import struct
from pathlib import Path

import numpy
import pictures
from judges import run
from PIL import Image
from table import File, Format, Refusal, Variant

CORPUS = Path(__file__).resolve().parent.parent.parent / "fuzz/corpus"
WIDTH, HEIGHT = 61, 43
PHOTO, GREY, RGBA, GREY_ALPHA = (pictures.photo(WIDTH, HEIGHT, channels) for channels in (3, 1, 4, 2))
BLOCKS = numpy.ascontiguousarray(PHOTO[::4, ::4].repeat(4, 0).repeat(4, 1)[:HEIGHT, :WIDTH])


def saved(image, kind, **options):
    stream = io.BytesIO()
    image.save(stream, kind, **options)
    return stream.getvalue()


def by_magick(samples, *options):
    """The bytes that ImageMagick writes; the last option is the format, such as "sgi:-"."""
    return run("convert", "-size", "%dx%d" % samples.shape[1::-1], "-depth", 8, "rgba:-" if samples.shape[2] == 4 else "rgb:-",
               *options,
               input=samples.tobytes())


def tga(data, kind, bits, colors=b"", entry=0, descriptor=0x20, width=WIDTH, height=HEIGHT):
    count = len(colors) // (entry // 8) if entry else 0
    return struct.pack("<BBBHHBHHHHBB", 0, int(count > 0), kind, 0, count, entry, 0, 0, width, height, bits,
                       descriptor) + colors + data


def tga_colors():
    for samples in (PHOTO, RGBA, BLOCKS):
        for compression in (None, "tga_rle"):
            for corner in (1, -1):
                content = saved(Image.fromarray(samples), "TGA", compression=compression, orientation=corner)
                yield File(f"{samples.shape[2]}-{compression}-{corner}.tga", content, samples, tolerance=0)
    words = (PHOTO[..., 0].astype("<u2") >> 3) << 10 | (PHOTO[..., 1].astype("<u2") >> 3) << 5 | PHOTO[..., 2] >> 3
    expected = numpy.round((PHOTO >> 3) * (255 / 31)).astype(numpy.uint8)
    for bits in (15, 16):
        yield File(f"{bits}.tga", tga(words.astype("<u2").tobytes(), 2, bits), expected)


def tga_corners():
    for descriptor, turned in ((0x20, PHOTO), (0, PHOTO[::-1]), (0x30, PHOTO[:, ::-1]), (0x10, PHOTO[::-1, ::-1])):
        data = numpy.ascontiguousarray(turned[..., ::-1]).tobytes()
        yield File(f"corner-{descriptor}.tga", tga(data, 2, 24, descriptor=descriptor), PHOTO, tolerance=0)


def tga_greys():
    for name, samples in (("grey", GREY), ("grey-alpha", GREY_ALPHA)):
        for compression in (None, "tga_rle"):
            content = saved(pictures.image(samples) if samples.shape[2] == 1 else Image.fromarray(samples, "LA"), "TGA",
                            compression=compression)
            yield File(f"{name}-{compression}.tga", content, samples, tolerance=0)
    yield File("grey-1-bit.tga", (CORPUS / "tga/gray-1-bit.tga").read_bytes())


def tga_indices():
    colors = numpy.random.default_rng(1).integers(0, 256, (256, 3), numpy.uint8)
    stored = numpy.ascontiguousarray(colors[:, ::-1]).tobytes()
    yield File("indices-8.tga", tga(GREY.tobytes(), 1, 8, stored, 24), colors[GREY[..., 0]], tolerance=0)
    yield File("indices-16.tga", tga(GREY.astype("<u2").tobytes(), 1, 16, stored, 24), colors[GREY[..., 0]], tolerance=0)
    quantized = Image.fromarray(PHOTO).quantize(50)
    yield File("indices-runs.tga", saved(quantized, "TGA", compression="tga_rle"), numpy.asarray(quantized.convert("RGB")),
               tolerance=0)


def tga_interleaved():
    yield File("interleaved.tga", tga(PHOTO.tobytes(), 2, 24, descriptor=0x60))


def tga_huffman():
    yield File("huffman.tga", tga(PHOTO.tobytes(), 32, 8, bytes(768), 24))


def tga_bit_runs():
    yield File("bit-runs.tga", tga(bytes(400), 11, 1))


TGA = Format(
    name="TGA",
    libraries=(),
    read=(
        Variant("colours of 15, 16, 24 and 32 bits, plain and run-length coded", tga_colors),
        Variant("stored from any corner", tga_corners),
        Variant("greys of 1 and 8 bits, and of 8 bits with alpha", tga_greys),
        Variant("indices of 8 and 16 bits", tga_indices),
    ),
    refused=(
        Refusal("interleaved rows", "programs disagree about their order", "not in a known picture format",
                tga_interleaved),
        Refusal("Huffman codes", "not defined publicly", "not in a known picture format", tga_huffman),
        Refusal("run-length coded bits", "no program reads those of another", "not in a known picture format",
                tga_bit_runs),
    ),
    carriers={"alpha": lambda: File("a.tga", saved(Image.fromarray(RGBA), "TGA"))},
    picture=lambda samples: saved(Image.fromarray(samples), "TGA", compression="tga_rle"), cost_name="a.tga",
)


def sgi(samples, colormap=0):
    """Plain rows, from the lowest up, a channel after another."""
    height, width, channels = samples.shape
    header = struct.pack(">HBBHHHHII", 474, 0, samples.dtype.itemsize, 3 if channels > 1 else 2, width, height, channels, 0, 255)
    header = header.ljust(104, b"\0") + struct.pack(">I", colormap)
    return header.ljust(512, b"\0") + samples[::-1].transpose(2, 0, 1).astype(samples.dtype.newbyteorder(">")).tobytes()


def sgi_plain():
    for samples in (GREY, GREY_ALPHA, PHOTO, RGBA):
        wide = (samples.astype(int) * 257 - 3 * (samples > 9)).astype(numpy.uint16)
        yield File(f"{samples.shape[2]}-8.sgi", sgi(samples), samples, tolerance=0)
        yield File(f"{samples.shape[2]}-16.sgi", sgi(wide), wide, tolerance=0)


def sgi_runs():
    for samples in (PHOTO, RGBA, BLOCKS):
        yield File(f"runs-{samples.shape[2]}-8.sgi", by_magick(samples, "-compress", "RLE", "sgi:-"), samples, tolerance=0)
        content = by_magick(samples, "-depth", "16", "-compress", "RLE", "sgi:-")
        yield File(f"runs-{samples.shape[2]}-16.sgi", content, samples.astype(numpy.uint16) * 257, tolerance=0)


def sgi_color_maps():
    yield File("color-map.sgi", sgi(GREY, colormap=1))


def sgi_channels():
    yield File("channels.sgi", sgi(pictures.photo(WIDTH, HEIGHT, 5)))


SGI = Format(
    name="SGI",
    libraries=(),
    read=(
        Variant("grey, grey with alpha, RGB and RGBA of 8 and 16 bits", sgi_plain),
        Variant("the same run-length coded", sgi_runs),
    ),
    refused=(
        Refusal("colour maps and indices", "obsolete, and other tools ignore what they mean", "a colour map or indices",
                sgi_color_maps),
        Refusal("more than 4 channels", "they have no meaning", "unknown number of channels", sgi_channels),
    ),
    carriers={"alpha": lambda: File("a.sgi", sgi(RGBA)),
              "16 bits": lambda: File("a.sgi", sgi(PHOTO.astype(numpy.uint16) * 256 + 7))},
    picture=lambda samples: by_magick(samples, "-compress", "RLE", "sgi:-"), cost_name="a.sgi",
)


def pcx(data, bits, planes, width=WIDTH, height=HEIGHT, runs=0, colors=b"", row_bytes=None):
    """A PCX file with `data` as its rows of planes; `colors` are the 16 colours of the header."""
    row_bytes = row_bytes or (width * bits + 7) // 8
    header = struct.pack("<BBBBHHHHHH", 10, 5, runs, bits, 0, 0, width - 1, height - 1, 72, 72) + colors.ljust(48, b"\0")
    return (header + struct.pack("<BBHH", 0, planes, row_bytes, 1)).ljust(128, b"\0") + data


def digits(samples, bits):
    """Packed rows of indices."""
    return numpy.packbits((samples[..., None] >> numpy.arange(bits, dtype=numpy.uint8)[::-1] & 1).reshape(samples.shape[0], -1),
                          axis=1)


def pcx_indices():
    colors = numpy.random.default_rng(1).integers(0, 256, (16, 3), numpy.uint8)
    for bits in (2, 4):
        samples = numpy.random.default_rng(bits).integers(0, 1 << bits, (HEIGHT, WIDTH), numpy.uint8)
        yield File(f"{bits}-bits.pcx", pcx(digits(samples, bits).tobytes(), bits, 1, colors=colors.tobytes()), colors[samples],
                   tolerance=0)
    for planes in (2, 3, 4):
        samples = numpy.random.default_rng(planes).integers(0, 1 << planes, (HEIGHT, WIDTH), numpy.uint8)
        data = numpy.stack([digits(samples >> plane & 1, 1) for plane in range(planes)], axis=1).tobytes()
        yield File(f"{planes}-planes.pcx", pcx(data, 1, planes, colors=colors.tobytes()), colors[samples], tolerance=0)
    quantized = Image.fromarray(PHOTO).quantize(100)
    yield File("256-colors.pcx", saved(quantized, "PCX"), numpy.asarray(quantized.convert("RGB")), tolerance=0)


def pcx_colors():
    """Pillow and ImageMagick write runs."""
    yield File("rgb.pcx", saved(Image.fromarray(PHOTO), "PCX"), PHOTO, tolerance=0)
    yield File("blocks.pcx", by_magick(BLOCKS, "pcx:-"), BLOCKS, tolerance=0)
    yield File("plain.pcx", pcx(PHOTO.transpose(0, 2, 1).tobytes(), 8, 3), PHOTO, tolerance=0)
    yield File("rgba.pcx", pcx(RGBA.transpose(0, 2, 1).tobytes(), 8, 4), RGBA, tolerance=0)


def pcx_bits():
    bits = (GREY > 128).astype(numpy.uint8)
    yield File("bits.pcx", saved(Image.fromarray(bits[..., 0] * 255).convert("1"), "PCX"), bits * 255, tolerance=0)


def pages():
    """Places of the pages, then the pages."""
    first, second = (saved(Image.fromarray(samples), "PCX") for samples in (PHOTO, 255 - PHOTO))
    content = struct.pack("<IIII", 987654321, 16, 16 + len(first), 0) + first + second
    yield File("pages.dcx", content, PHOTO, tolerance=0)


def pcx_planes():
    for bits in (2, 4):
        yield File(f"planes-{bits}.pcx", pcx(bytes(WIDTH * HEIGHT), bits, 2))


PCX = Format(
    name="PCX, DCX",
    libraries=(),
    read=(
        Variant("bits (black and white)", pcx_bits),
        Variant("indices of 1 to 4 planes of one bit, of 2, 4 and 8 bits", pcx_indices),
        Variant("RGB and RGBA of 8 bits, plain and run-length coded", pcx_colors),
        Variant("of DCX the first page", pages),
    ),
    refused=(Refusal("several planes of 2 or 4 bits", "no program writes them", "unknown pixel format", pcx_planes),),
    carriers={"alpha": lambda: File("a.pcx", pcx(RGBA.transpose(0, 2, 1).tobytes(), 8, 4))},
    picture=lambda samples: saved(Image.fromarray(samples), "PCX"), cost_name="a.pcx",
)


def qoi_codes(samples):
    """The codes for rows of RGB or RGBA, all kinds of them."""
    recent, before, run_length, codes = {}, (0, 0, 0, 255), 0, bytearray()
    alpha = samples.shape[2] == 4
    for pixel in map(tuple, samples.reshape(-1, samples.shape[2]).tolist()):
        pixel = pixel if alpha else (*pixel, 255)
        if pixel == before and run_length < 62:
            run_length += 1
            continue
        if run_length:
            codes.append(0xC0 | run_length - 1)
            run_length = 0
        if pixel == before:
            run_length = 1
            continue
        place = (pixel[0] * 3 + pixel[1] * 5 + pixel[2] * 7 + pixel[3] * 11) % 64
        red, green, blue = ((now - then + 128) % 256 - 128 for now, then in zip(pixel[:3], before[:3]))
        if recent.get(place) == pixel:
            codes.append(place)
        elif pixel[3] != before[3]:
            codes += bytes([0xFF, *pixel])
        elif all(-2 <= each <= 1 for each in (red, green, blue)):
            codes.append(0x40 | red + 2 << 4 | green + 2 << 2 | blue + 2)
        elif -32 <= green <= 31 and -8 <= red - green <= 7 and -8 <= blue - green <= 7:
            codes += bytes([0x80 | green + 32, red - green + 8 << 4 | blue - green + 8])
        else:
            codes += bytes([0xFE, *pixel[:3]])
        recent[place], before = pixel, pixel
    if run_length:
        codes.append(0xC0 | run_length - 1)
    return bytes(codes)


def qoi(codes, width, height, channels, linear=0):
    return b"qoif" + struct.pack(">IIBB", width, height, channels, linear) + codes + bytes(7) + b"\1"


def qoi_of(samples, linear=0):
    return qoi(qoi_codes(samples), samples.shape[1], samples.shape[0], samples.shape[2], linear)


def qoi_colors():
    for name, samples in (("rgb", PHOTO), ("rgba", RGBA), ("blocks", BLOCKS)):
        yield File(f"{name}.qoi", qoi_of(samples), samples, tolerance=0)


def long_qoi(samples):
    """The codes of the upper rows, repeated; they refer to nothing before the first pixel but a difference, which these pictures do
    not begin with."""
    height, width = samples.shape[:2]
    rows = height // 40
    codes = qoi_codes(samples[:rows])
    return qoi(codes * 40, width, rows * 40, 3)


QOI = Format(
    name="QOI",
    libraries=(),
    read=(Variant("RGB and RGBA", qoi_colors),),
    carriers={"alpha": lambda: File("a.qoi", qoi_of(RGBA)),
              "profile made from the colour space": lambda: File("a.qoi", qoi_of(PHOTO, linear=1))},
    kept_notes={"profile made from the colour space": "linear light"},
    picture=long_qoi, cost_name="a.qoi",
)

FORMATS = (PCX, QOI, SGI, TGA)
