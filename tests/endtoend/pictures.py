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


def icc(name="sRGB"):
    return ImageCms.ImageCmsProfile(ImageCms.createProfile(name)).tobytes()


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
