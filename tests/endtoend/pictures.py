"""Pictures for the end-to-end tests, made and read without our own code."""
import io
import struct

import numpy
from PIL import Image, ImageCms


def photo(width, height, channels=3, seed=1):
    """Smooth gradients with some texture; 8-bit samples."""
    generator = numpy.random.default_rng(seed)
    y, x = numpy.mgrid[0:height, 0:width] / max(width, height)
    planes = []
    for channel in range(channels):
        base = 0.5 + 0.35 * numpy.sin(3.1 * x * (channel + 1) + 4.2 * y + channel)
        planes.append(base + 0.05 * generator.standard_normal((height, width)))
    samples = numpy.clip(numpy.dstack(planes), 0, 1)
    return numpy.round(samples * 255).astype(numpy.uint8)


def image(samples):
    return Image.fromarray(samples[..., 0] if samples.shape[-1] == 1 else samples)


def corners(width, height):
    """A picture whose four quarters are red, green, blue, white from the top left, clockwise."""
    samples = numpy.zeros((height, width, 3), numpy.uint8)
    samples[: height // 2, : width // 2] = (220, 30, 30)
    samples[: height // 2, width // 2:] = (30, 200, 40)
    samples[height // 2:, width // 2:] = (40, 50, 220)
    samples[height // 2:, : width // 2] = (240, 240, 240)
    return samples


def exif(orientation=None, order=">", extra=()):
    """An EXIF block from the TIFF header on, with an orientation and other fields (tag, type, count, four bytes)."""
    entries = list(extra)
    if orientation is not None:
        entries.append((0x0112, 3, 1, struct.pack(order + "HH", orientation, 0)))
    entries.sort()
    block = (b"MM\0*" if order == ">" else b"II*\0") + struct.pack(order + "I", 8) + struct.pack(order + "H", len(entries))
    for tag, kind, count, value in entries:
        block += struct.pack(order + "HHI", tag, kind, count) + value
    return block + struct.pack(order + "I", 0)


def jpeg(samples, block=None, jfif=True, before=b"", quality=95, **options):
    """JPEG bytes with an EXIF block directly after SOI or after the 18 bytes of JFIF, and `before` before the block."""
    buffer = io.BytesIO()
    image(samples).save(buffer, "JPEG", quality=quality, **options)
    data = buffer.getvalue()
    assert data[2:4] == b"\xff\xe0"
    head, rest = data[:20], data[20:]
    app1 = b""
    if block is not None:
        app1 = b"\xff\xe1" + struct.pack(">H", len(block) + 8) + b"Exif\0\0" + block
    return (head if jfif else data[:2]) + before + app1 + rest


def tiff(samples, orientation, order=">"):
    """TIFF bytes of an 8-bit RGB picture in one strip, with an orientation and without EXIF data."""
    height, width = samples.shape[:2]
    shorts = {256: width, 257: height, 259: 1, 262: 2, 274: orientation, 277: 3, 278: height}
    end = 8 + 2 + 12 * (len(shorts) + 3) + 4
    entries = {tag: struct.pack(order + "HIHH", 3, 1, value, 0) for tag, value in shorts.items()}
    entries[258] = struct.pack(order + "HII", 3, 3, end)
    entries[273] = struct.pack(order + "HII", 4, 1, end + 6)
    entries[279] = struct.pack(order + "HII", 4, 1, samples.size)
    head = (b"MM\0*" if order == ">" else b"II*\0") + struct.pack(order + "IH", 8, len(entries))
    for tag in sorted(entries):
        head += struct.pack(order + "H", tag) + entries[tag]
    return head + struct.pack(order + "IHHH", 0, 8, 8, 8) + samples.tobytes()


def icc(name="sRGB"):
    return ImageCms.ImageCmsProfile(ImageCms.createProfile(name)).tobytes()


def wide_icc():
    """A profile with wide primaries and a gamma of 2.2."""
    def number(value):
        return struct.pack(">i", round(value * 65536))

    def xyz(*values):
        return b"XYZ \0\0\0\0" + b"".join(map(number, values))

    text = b"desc\0\0\0\0" + struct.pack(">I", 5) + b"Wide\0" + b"\0" * 79
    curve = b"curv\0\0\0\0" + struct.pack(">IH", 1, round(2.2 * 256)) + b"\0\0"
    tags = {b"desc": text, b"cprt": b"text\0\0\0\0None\0\0\0\0", b"wtpt": xyz(0.9642, 1, 0.8249),
            b"rXYZ": xyz(0.60974, 0.31111, 0.01947), b"gXYZ": xyz(0.20528, 0.62567, 0.06087),
            b"bXYZ": xyz(0.14919, 0.06322, 0.74457), b"rTRC": curve, b"gTRC": curve, b"bTRC": curve}
    table, data = struct.pack(">I", len(tags)), b""
    start = 128 + 4 + 12 * len(tags)
    for name, value in tags.items():
        value += b"\0" * (-len(value) % 4)
        table += name + struct.pack(">II", start + len(data), len(value))
        data += value
    header = struct.pack(">I4sI4s4s4s12s4s", start + len(data), b"", 0x02200000, b"mntr", b"RGB ", b"XYZ ", b"", b"acsp")
    header = header.ljust(68, b"\0") + number(0.9642) + number(1) + number(0.8249)
    return header.ljust(128, b"\0") + table + data


def pixels(path):
    return numpy.asarray(Image.open(path))


def quarters(path):
    """The colours in the middle of the four quarters, as letters from the top left, clockwise."""
    samples = numpy.asarray(Image.open(path).convert("RGB")).astype(int)
    height, width = samples.shape[:2]
    letters = {"r": (220, 30, 30), "g": (30, 200, 40), "b": (40, 50, 220), "w": (240, 240, 240)}
    seen = ""
    for v, u in ((1, 1), (1, 3), (3, 3), (3, 1)):
        color = samples[height * v // 4, width * u // 4]
        seen += min(letters, key=lambda letter: abs(color - letters[letter]).sum())
    return seen


def psnr(a, b):
    error = numpy.mean((a.astype(float) - b.astype(float)) ** 2)
    return 99 if error == 0 else 10 * numpy.log10(255 ** 2 / error)


def lanczos(samples, scale_x, scale_y, width, height):
    """The high-quality filter in double precision and linear light, for opaque sRGB samples. Positions count from the left
    and bottom edges. The result is untrimmed; the caller trims it."""
    def weights(scale, source, result, from_the_end):
        matrix = numpy.zeros((result, source))
        stretch = max(1, 1 / scale)
        for i in range(result):
            centre = (i + 0.5) / scale
            if from_the_end:
                centre = source - (result - i - 0.5) / scale
            x = (numpy.arange(source) + 0.5 - centre) / stretch
            matrix[i] = numpy.where(abs(x) < 3, numpy.sinc(x) * numpy.sinc(x / 3), 0)
        return matrix / matrix.sum(axis=1, keepdims=True)

    stored = samples / 255
    light = numpy.where(stored <= 0.04045, stored / 12.92, ((stored + 0.055) / 1.055) ** 2.4)
    light = numpy.einsum("yY,Yxc->yxc", weights(scale_y, samples.shape[0], height, True), light)
    light = numpy.einsum("xX,yXc->yxc", weights(scale_x, samples.shape[1], width, False), light).clip(0, 1)
    stored = numpy.where(light <= 0.0031308, light * 12.92, 1.055 * light ** (1 / 2.4) - 0.055)
    return numpy.round(stored * 255).astype(numpy.uint8)
