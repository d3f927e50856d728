"""JPEG 2000: by Pillow, and by changing the boxes of its files. All of these decode with OpenJPEG, so the judges differ from us in
everything but the wavelets."""
import io
import struct

import numpy
import pictures
from heif_files import box
from judges import pillow
from libopenjp2 import codestream as codestream_of
from PIL import Image
from table import File, Format, Refusal, Variant
from trial import exif

PHOTO, GREY, INKS = (pictures.photo(61, 43, channels) for channels in (3, 1, 4))
SRGB, GREYS, SYCC, CMYK, LAB = 16, 17, 18, 12, 14


def saved(samples, **options):
    stream = io.BytesIO()
    pictures.image(samples).save(stream, "JPEG2000", **options)
    return stream.getvalue()


def codestream(content):
    return content[content.index(b"jp2c") + 4:]


def jp2(stream, samples, *header):
    """A file with boxes of our own around a codestream; `header` follows the size."""
    height, width, channels = samples.shape
    bits = samples.dtype.itemsize * 8
    size = box("ihdr", struct.pack(">IIHBBBB", height, width, channels, bits - 1, 7, 0, 0))
    return (box("jP  ", b"\r\n\x87\n") + box("ftyp", b"jp2 ", bytes(4), b"jp2 ") + box("jp2h", size,
                                                                                       *header) + box("jp2c", stream))


def space(number):
    return box("colr", struct.pack(">BBBI", 1, 0, 0, number))


def file(name, content, pixels=None, judge=None, decibels=None, **more):
    return File(name, content, pixels, judge, decibels, **more)


def lossless():
    for samples in (GREY, PHOTO, INKS):
        for options in ({}, {"tile_size": (16, 16)}, {"num_resolutions": 1}, {"progression": "RPCL"}):
            name = f"{samples.shape[2]}-{'-'.join(options)}"
            content = saved(samples, **options)
            yield file(f"{name}.jp2", content, samples, tolerance=0)
            yield file(f"{name}.j2k", codestream(content), samples, tolerance=0)
    wide = Image.fromarray(GREY[..., 0].astype(numpy.uint16) * 257 - 3)
    stream = io.BytesIO()
    wide.save(stream, "JPEG2000")
    yield file("16.jp2", stream.getvalue(), numpy.asarray(wide)[..., None], tolerance=0)


def lossy():
    for samples in (GREY, PHOTO):
        for options in ({}, {"tile_size": (32, 32)}):
            content = saved(samples, irreversible=True, quality_mode="dB", quality_layers=[38], **options)
            yield file(f"lossy-{samples.shape[2]}-{len(options)}.jp2", content, judge=pillow, decibels=45)


def with_form(content, byte):
    """The codestream with another form of all samples (bits less 1, and 128 for signed numbers)."""
    stream = bytearray(codestream(content))
    place = stream.index(b"\xff\x51") + 4 + 36
    for component in range(struct.unpack_from(">H", stream, place - 2)[0]):
        stream[place + 3 * component] = byte
    return bytes(stream)


def bits():
    """The numbers of an 8-bit codestream count from the middle, so with other bits they show the middle of another range."""
    for count in (1, 2, 4, 6, 7, 9, 10, 12, 14, 20, 24, 31):
        full = (1 << count) - 1
        stored = numpy.clip(GREY.astype(int) - 128 + (1 << count - 1), 0, full)
        largest, kind = (255, numpy.uint8) if count <= 8 else (65535, numpy.uint16)
        expected = numpy.round(stored * (largest / full)).astype(kind)
        yield file(f"{count}-bits.j2k", with_form(saved(GREY), count - 1), expected)
    signed = numpy.clip(GREY.astype(int) - 128, -128, 127) + 128
    yield file("signed.j2k", with_form(saved(GREY), 128 | 7), signed.astype(numpy.uint8))


def spaces():
    plain = saved(PHOTO, mct=0)
    expected = numpy.asarray(Image.fromarray(PHOTO, "YCbCr").convert("RGB"))
    yield file("ycbcr.jp2", jp2(codestream(plain), PHOTO, space(SYCC)), expected, decibels=45)
    yield file("cmyk.jp2", jp2(codestream(saved(INKS, mct=0)), INKS, space(CMYK)),
               numpy.asarray(Image.fromarray(INKS, "CMYK").convert("RGB")), decibels=39)


def palettes():
    colors = numpy.random.default_rng(1).integers(0, 256, (256, 3), numpy.uint8)
    table = box("pclr", struct.pack(">HBBBB", 256, 3, 7, 7, 7) + colors.tobytes())
    mapping = box("cmap", b"".join(struct.pack(">HBB", 0, 1, column) for column in range(3)))
    for options in ({}, {"tile_size": (16, 16)}):
        stream = codestream(saved(GREY, **options))
        yield file(f"palette-{len(options)}.jp2", jp2(stream, GREY, space(SRGB), table, mapping), colors[GREY[..., 0]],
                   tolerance=0)


def channels(*kinds):
    return box("cdef", struct.pack(">H", len(kinds)) + b"".join(struct.pack(">HHH", i, *kind) for i, kind in enumerate(kinds)))


def order():
    """Blue first."""
    stream = codestream(saved(numpy.ascontiguousarray(PHOTO[..., ::-1]), mct=0))
    yield file("blue-first.jp2", jp2(stream, PHOTO, space(SRGB), channels((0, 3), (0, 2), (0, 1))), PHOTO, tolerance=0)


def alphas():
    multiplied = numpy.dstack([numpy.minimum(INKS[..., :3], INKS[..., 3:]), INKS[..., 3:]])
    plain = numpy.round(multiplied[..., :3].astype(float) * 255 / numpy.maximum(multiplied[..., 3:], 1)).astype(numpy.uint8)
    colors = [(0, 1), (0, 2), (0, 3)]
    yield file("alpha.jp2", jp2(codestream(saved(INKS)), INKS, space(SRGB), channels(*colors, (1, 0))), INKS, tolerance=0)
    yield file("multiplied.jp2", jp2(codestream(saved(multiplied)), INKS, space(SRGB), channels(*colors, (2, 0))),
               numpy.dstack([plain, multiplied[..., 3:]]))


def subsampled():
    """YCbCr in a container, and the same without one, where the sizes alone tell it."""
    height, width = 44, 60
    ycc = numpy.asarray(Image.fromarray(pictures.photo(width, height)).convert("YCbCr"))
    for right, down in ((2, 1), (2, 2), (1, 2), (4, 4)):
        planes = [ycc[..., 0], *(numpy.ascontiguousarray(ycc[::down, ::right, channel]) for channel in (1, 2))]
        stream = codestream_of(width, height, planes)
        wide = numpy.dstack([planes[0], *(plane.repeat(down, 0).repeat(right, 1) for plane in planes[1:])])
        expected = numpy.asarray(Image.fromarray(wide, "YCbCr").convert("RGB"))
        yield file(f"subsampled-{right}-{down}.jp2", jp2(stream, wide, space(SYCC)), expected, decibels=45)
        if right > 1:
            yield file(f"subsampled-{right}-{down}.j2k", stream, expected, decibels=45)


def lab():
    yield file("lab.jp2", jp2(codestream(saved(PHOTO, mct=0)), PHOTO, space(LAB)))


def too_many_bits():
    yield file("38-bits.j2k", with_form(saved(GREY), 37))


def cut_off():
    content = saved(PHOTO)
    yield file("cut-off.jp2", content[:len(content) * 2 // 3])


def profile():
    return box("colr", struct.pack(">BBB", 2, 0, 0) + pictures.wide_icc())


def exif_box():
    return box("uuid", b"JpgTiffExif->JP2" + exif())


FORMAT = Format(
    name="JPEG 2000",
    libraries=("OpenJPEG",),
    read=(
        Variant("JP2 files and bare codestreams (J2K), lossless, in tiles or not", lossless),
        Variant("lossy", lossy),
        Variant("1 to 31 bits, signed or not", bits),
        Variant("YCbCr and CMYK", spaces),
        Variant("palettes", palettes),
        Variant("channels in any order", order),
        Variant("alpha, multiplied or not", alphas),
        Variant("subsampled components, enlarged without interpolation", subsampled),
    ),
    refused=(
        Refusal("CIE Lab", "rare", "the colour space of the JPEG 2000 picture is not supported", lab),
        Refusal("samples of more than 31 bits", "OpenJPEG does not decode them", "the header of the JPEG 2000 file is damaged",
                too_many_bits),
        Refusal("cut off files", "an original must not look complete",
                "the JPEG 2000 picture is damaged or incomplete", cut_off),
    ),
    carriers={"profile": lambda: File("a.jp2", jp2(codestream(saved(PHOTO)), PHOTO, profile())),
              "alpha": lambda: File("a.jp2", saved(INKS)),
              "16 bits": lambda: File("a.jp2", next(file.content for file in lossless() if file.name == "16.jp2")),
              "EXIF": lambda: File("a.jp2", saved(PHOTO) + exif_box())},
    held="one row of tiles",
    picture=lambda samples: saved(samples, irreversible=True, quality_mode="rates", quality_layers=[12], tile_size=(1024, 1024)),
    cost_name="a.jp2", cost_note="lossy, tiles of 1024 x 1024",
)
