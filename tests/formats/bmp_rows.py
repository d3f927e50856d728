"""BMP, packed by hand."""
import io
import struct

import numpy
import pictures
from PIL import Image
from table import File, Format, Refusal, Variant

WIDTH, HEIGHT = 37, 21
PHOTO, RGBA = pictures.photo(WIDTH, HEIGHT), pictures.photo(WIDTH, HEIGHT, 4)
CORE, INFO, MASKS, ALPHA_MASKS, OS2, CALIBRATED, PROFILED = 12, 40, 52, 56, 64, 108, 124
PLAIN, RUNS_8, RUNS_4, BIT_FIELDS, JPEG, PNG, ALPHA_BIT_FIELDS = range(7)
MASKS_565 = (0xF800, 0x07E0, 0x001F, 0)


def file(name, content, pixels=None, **more):
    return File(name + ".bmp", content, pixels, tolerance=more.pop("tolerance", 0), **more)


def padded(rows):
    """Rows from the bottom to the top, each to a multiple of four bytes."""
    return b"".join(bytes(row) + bytes(-len(row) % 4) for row in reversed(rows))


def bmp(data, bits, header=INFO, compression=PLAIN, colors=b"", masks=(), height=HEIGHT, color_space=0x73524742, profile=b"",
        width=WIDTH):
    """Masks of headers that do not contain them follow the header."""
    if header == CORE:
        info = struct.pack("<IHHHH", header, width, height, 1, bits)
    else:
        count = len(colors) // 4
        info = struct.pack("<IiiHHIIiiII", header, width, height, 1, bits, compression, len(data), 2835, 2835, count, 0)
        info = (info + struct.pack(f"<{len(masks)}I", *masks)).ljust(header, b"\0")
        if header >= CALIBRATED:
            info = info[:56] + struct.pack("<I", color_space) + info[60:]
        if header < MASKS and not masks:
            info = info[:header]
    offset = 14 + len(info) + len(colors)
    if profile:
        info = info[:112] + struct.pack("<II", offset - 14 + len(data), len(profile)) + info[120:]
    return b"BM" + struct.pack("<IHHI", offset + len(data) + len(profile), 0, 0, offset) + info + colors + data + profile


def palette(bits, entry=4):
    colors = numpy.random.default_rng(bits).integers(0, 256, (1 << bits, 3), numpy.uint8)
    stored = colors[:, ::-1]
    if entry == 4:
        stored = numpy.hstack([stored, numpy.zeros((1 << bits, 1), numpy.uint8)])
    return colors, stored.tobytes()


def indices(bits):
    return numpy.random.default_rng(1).integers(0, 1 << bits, (HEIGHT, WIDTH), numpy.uint8)


def packed_indices(samples, bits):
    digits = (samples[..., None] >> numpy.arange(bits, dtype=numpy.uint8)[::-1] & 1).reshape(samples.shape[0], -1)
    return padded([row.tobytes() for row in numpy.packbits(digits, axis=1)])


def colors_24(samples=PHOTO):
    return padded([row[:, ::-1].tobytes() for row in samples])


def headers():
    for header in (CORE, 16, INFO, MASKS, ALPHA_MASKS, OS2, CALIBRATED, PROFILED):
        content = bmp(colors_24(), 24, header)
        yield file(f"header-{header}", content, PHOTO)


def depths():
    for header in (CORE, INFO, PROFILED):
        for bits in (1, 2, 4, 8):
            colors, stored = palette(bits, 3 if header == CORE else 4)
            samples = indices(bits)
            yield file(f"{bits}-{header}", bmp(packed_indices(samples, bits), bits, header, colors=stored), colors[samples])
    samples = PHOTO >> 3
    words = samples[..., 0].astype("<u2") << 10 | samples[..., 1].astype("<u2") << 5 | samples[..., 2]
    expected = numpy.round(samples * (255 / 31)).astype(numpy.uint8)
    yield file("16", bmp(padded([row.astype("<u2").tobytes() for row in words]), 16), expected, tolerance=1)
    words = RGBA[..., [2, 1, 0, 3]]
    yield file("32", bmp(padded([row.tobytes() for row in words]), 32), RGBA[..., :3])


def top_down():
    yield file("top-down", bmp(colors_24(PHOTO[::-1]), 24, height=-HEIGHT), PHOTO)


def fields():
    words = (PHOTO[..., 0].astype("<u2") >> 3) << 11 | (PHOTO[..., 1].astype("<u2") >> 2) << 5 | PHOTO[..., 2] >> 3
    data = padded([row.astype("<u2").tobytes() for row in words])
    expected = numpy.round((PHOTO >> [3, 2, 3]) * (255 / numpy.array([31, 63, 31]))).astype(numpy.uint8)
    for header in (INFO, MASKS, ALPHA_MASKS, CALIBRATED, PROFILED):
        masks = MASKS_565[:3] if header < ALPHA_MASKS else MASKS_565
        yield file(f"565-{header}", bmp(data, 16, header, BIT_FIELDS, masks=masks), expected, tolerance=1)
    swapped = padded([row.tobytes() for row in RGBA])
    masks = (0xFF, 0xFF00, 0xFF0000, 0xFF000000)
    for header, compression in ((INFO, ALPHA_BIT_FIELDS), (ALPHA_MASKS, BIT_FIELDS), (CALIBRATED, BIT_FIELDS),
                                (PROFILED, BIT_FIELDS)):
        yield file(f"alpha-{header}", bmp(swapped, 32, header, compression, masks=masks), RGBA)
    deep = (PHOTO.astype("<u4") << [22, 12, 2]).sum(2).astype("<u4")
    yield file("10-10-10",
               bmp(padded([row.tobytes() for row in deep]), 32, CALIBRATED, BIT_FIELDS, masks=(0x3FF00000, 0xFFC00, 0x3FF, 0)),
               PHOTO, tolerance=1)


def with_runs(row, bits):
    """Run-length codes of one row: runs, and plain indices where no neighbours are equal."""
    codes, at, limit = b"", 0, 255
    while at < len(row):
        run = 1
        while at + run < len(row) and run < limit and row[at + run] == row[at]:
            run += 1
        if run > 1 or at + 3 > len(row):
            value = row[at] if bits == 8 else row[at] << 4 | row[at]
            codes += bytes([run, value])
            at += run
            continue
        plain = [int(value) for value in row[at:at + 5]]
        codes += bytes([0, len(plain)])
        data = bytes(plain) if bits == 8 else bytes(a << 4 | b for a, b in zip(plain[::2], [*plain[1::2], 0]))
        codes += data + bytes(len(data) % 2)
        at += len(plain)
    return codes


def runs():
    for bits, compression in ((8, RUNS_8), (4, RUNS_4)):
        colors, stored = palette(bits)
        samples = indices(bits)
        samples[5:12, 4:30] = 3
        rows = [with_runs(row.tolist(), bits) for row in reversed(samples)]
        yield file(f"runs-{bits}", bmp(b"\0\0".join(rows) + b"\0\1", bits, INFO, compression, stored), colors[samples])


def jumps():
    """Codes that move without pixels; what they pass has the first colour."""
    colors, stored = palette(8)
    samples = numpy.zeros((HEIGHT, WIDTH), numpy.uint8)
    samples[HEIGHT - 1, :4], samples[HEIGHT - 4, 9:13] = 7, 9
    data = bytes([4, 7, 0, 2, 5, 3, 4, 9, 0, 1])
    yield file("jumps", bmp(data, 8, INFO, RUNS_8, stored), colors[samples])


def array():
    content = bmp(colors_24(), 24, CORE)
    offset = struct.unpack_from("<I", content, 10)[0] + 14
    yield file("array",
               b"BA" + struct.pack("<IIHH", 14, 0, WIDTH, HEIGHT) + content[:10] + struct.pack("<I", offset) + content[14:],
               PHOTO)


def inside(kind, compression):
    stream = io.BytesIO()
    Image.fromarray(PHOTO).save(stream, kind)
    yield file(kind, bmp(stream.getvalue(), 0, CALIBRATED, compression))


def of_os2():
    """Huffman codes of 1 bit and run-length codes of 24 bits, in the numbers of the header of OS/2."""
    yield file("huffman", bmp(bytes(200), 1, OS2, 3, palette(1)[1]))
    yield file("runs-24", bmp(bytes(200), 24, OS2, 4))


def linked():
    name = b"/usr/share/color/icc/profile.icc\0"
    yield file("linked", bmp(colors_24(), 24, PROFILED, color_space=0x4C494E4B, profile=name), PHOTO)


def profile():
    return File("a.bmp", bmp(colors_24(), 24, PROFILED, color_space=0x4D424544, profile=pictures.wide_icc()))


FORMAT = Format(
    name="BMP",
    libraries=(),
    read=(
        Variant("headers of 12, 16, 40, 52, 56, 64, 108 and 124 bytes", headers),
        Variant("indices of 1, 2, 4 and 8 bits, colours of 16, 24 and 32 bits", depths),
        Variant("16 and 32 bits with masks of any width, with alpha", fields),
        Variant("rows from the bottom or from the top", top_down),
        Variant("run-length codes of 4 and 8 bits", runs),
        Variant("run-length codes that leave out pixels", jumps),
        Variant("the first bitmap of an OS/2 array", array),
        Variant("linked profiles are ignored, because they are in other files", linked),
    ),
    refused=(
        Refusal("JPEG inside BMP", "only for printers", "the BMP has an unknown pixel format", lambda: inside("JPEG", JPEG)),
        Refusal("PNG inside BMP", "only for printers", "the BMP has an unknown pixel format", lambda: inside("PNG", PNG)),
        Refusal("run-length codes of 24 bits and Huffman codes", "only of OS/2; no program writes them",
                "the BMP has an unknown pixel format", of_os2),
    ),
    carriers={"profile": profile,
              "profile made from the colour space": lambda: calibrated(),
              "alpha": lambda: File("a.bmp", bmp(padded([row.tobytes() for row in RGBA]), 32, CALIBRATED, BIT_FIELDS,
                                                 masks=(0xFF, 0xFF00, 0xFF0000, 0xFF000000)))},
    picture=lambda samples: bmp(colors_24(samples), 24, width=samples.shape[1], height=samples.shape[0]), cost_name="a.bmp",
)


def calibrated():
    """Wide primaries and a gamma of 2.2."""
    content = bytearray(bmp(colors_24(), 24, CALIBRATED, color_space=0))
    points = ((0.64, 0.33, 0.03), (0.21, 0.71, 0.08), (0.15, 0.06, 0.79))
    struct.pack_into("<9I", content, 74, *[round(value * (1 << 30)) for point in points for value in point])
    struct.pack_into("<3I", content, 110, *[round(2.2 * 65536)] * 3)
    return File("a.bmp", bytes(content))
