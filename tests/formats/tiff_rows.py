"""TIFF and BigTIFF."""
import io

import libtiff
import numpy
import pictures
import raw_files
from judges import magick, magick_16, pillow
from libtiff import extra, tiff
from PIL import Image
from table import File, Format, Refusal, Variant
from trial import MODEL

WIDTH, HEIGHT = 61, 43
PHOTO, GREY, INKS = (pictures.photo(WIDTH, HEIGHT, channels) for channels in (3, 1, 4))
BITS = (GREY > 128).astype(numpy.uint8)


def file(name, content, pixels=None, judge=None, decibels=None, **more):
    return File(name + ".tif", content, pixels, judge, decibels, **more)


def noise(bits, channels=3):
    kind = numpy.uint8 if bits <= 8 else numpy.uint16 if bits <= 16 else numpy.uint32 if bits <= 32 else numpy.uint64
    return numpy.random.default_rng(bits).integers(0, 1 << bits, (HEIGHT, WIDTH, channels), numpy.uint64).astype(kind)


def compressions():
    lossless = {"none": libtiff.NONE, "lzw": libtiff.LZW, "deflate": libtiff.ADOBE_DEFLATE, "old-deflate": libtiff.DEFLATE,
                "packbits": libtiff.PACKBITS, "lzma": libtiff.LZMA, "zstd": libtiff.ZSTD, "lerc": libtiff.LERC}
    for name, compression in lossless.items():
        for samples in (PHOTO, GREY, noise(16)):
            if name == "lerc" and samples.dtype == numpy.uint16:
                continue  # LERC codes 16 bits like 8
            yield file(f"{name}-{samples.shape[2]}-{samples.dtype}", tiff(samples, compression), samples, tolerance=0)
        yield file(f"{name}-tiles", tiff(PHOTO, compression, tile=16), PHOTO, tolerance=0)
    for name in ("lzw", "deflate", "zstd", "lzma"):
        yield file(f"{name}-differences", tiff(PHOTO, lossless[name], tags=[(libtiff.PREDICTOR, 2)]), PHOTO, tolerance=0)


def lossy_compressions():
    """WebP also without loss. The judges use the same libraries, and our own code only sorts the samples."""
    yield file("webp-lossless", tiff(PHOTO, libtiff.WEBP, tags=[(libtiff.WEBP_LOSSLESS, 1)]), PHOTO)
    yield file("webp", tiff(PHOTO, libtiff.WEBP), judge=pillow, decibels=45)
    yield file("jpeg-rgb", tiff(PHOTO, libtiff.JPEG, rows=16), judge=pillow, decibels=45)
    yield file("jpeg-grey", tiff(GREY, libtiff.JPEG, rows=16), judge=pillow, decibels=45)
    ycbcr = [(libtiff.JPEG_MODE, 1)]
    yield file("jpeg-ycbcr", tiff(PHOTO, libtiff.JPEG, libtiff.YCBCR, rows=16, tags=ycbcr), judge=pillow, decibels=45)
    yield file("pixarlog", tiff(PHOTO, libtiff.PIXARLOG), judge=magick, decibels=45)


def two_colors():
    for name, compression, tags in (("rle", libtiff.RLE, ()), ("fax3", libtiff.FAX3, ()),
                                    ("fax3-2d", libtiff.FAX3, [(libtiff.FAX3_OPTIONS, 1)]),
                                    ("fax4", libtiff.FAX4, ()), ("jbig", libtiff.JBIG, ()),
                                    ("packbits", libtiff.PACKBITS, ()), ("reversed", libtiff.FAX4, [(libtiff.FILL_ORDER, 2)])):
        for photometric in (libtiff.WHITE_IS_ZERO, libtiff.BLACK_IS_ZERO):
            content = tiff(BITS, compression, photometric, bits=1, tags=tags, rows=HEIGHT)
            yield file(f"{name}-{photometric}", content, (BITS ^ (photometric == 0)) * 255, tolerance=0)


def hand_made(compression, bits, data, width, height):
    page = raw_files.Directory()
    for tag, value in ((256, width), (257, height), (258, bits), (259, compression), (262, 1), (277, 1), (278, height),
                       (279, len(data))):
        page.set(tag, raw_files.LONG, [value])
    return raw_files.Tiff().file(page.set(273, raw_files.LONG, raw_files.Blob(data)))


def old_compressions():
    """NeXT with whole rows of two bits, ThunderScan with plain pixels of four bits."""
    two = noise(2, 1)
    rows = numpy.hstack([numpy.zeros((HEIGHT, 1), numpy.uint8),
                         numpy.frombuffer(libtiff.packed(two, 2), numpy.uint8).reshape(HEIGHT, -1)])
    yield file("next", hand_made(32766, 2, rows.tobytes(), WIDTH, HEIGHT), two * 85, tolerance=0)
    four = noise(4, 1)
    yield file("thunderscan", hand_made(32809, 4, (0xC0 | four).tobytes(), WIDTH, HEIGHT), four * 17, tolerance=0)


def old_jpeg():
    stream = io.BytesIO()
    Image.fromarray(PHOTO).save(stream, "JPEG", quality=95, subsampling=0)
    content = stream.getvalue()
    page = raw_files.interchange(content)
    for tag, value in ((256, [WIDTH]), (257, [HEIGHT]), (258, [8, 8, 8]), (262, [6]), (277, [3]), (278, [HEIGHT]), (530, [1, 1])):
        page.set(tag, raw_files.SHORT, value)
    page.set(273, raw_files.LONG, [8]).set(279, raw_files.LONG, [len(content)])
    yield file("old-jpeg", raw_files.Tiff().file(page), judge=lambda _: pillow(io.BytesIO(content)), decibels=39)


def scaled(samples, bits):
    """The samples as the decoder must scale them: to 8 or 16 bits."""
    largest = 255 if bits <= 8 else 65535
    return numpy.round(samples.astype(float) * largest / ((1 << bits) - 1)).astype(numpy.uint8 if bits <= 8 else numpy.uint16)


def whole_numbers():
    for bits in (*range(1, 17), 32):
        for channels in (1, 3):
            samples = noise(bits, channels)
            yield file(f"{bits}-{channels}", tiff(samples, bits=bits), scaled(samples, bits))
        samples = noise(bits, 1)
        yield file(f"{bits}-white-is-zero", tiff(samples, photometric=libtiff.WHITE_IS_ZERO, bits=bits),
                   scaled(samples, bits) ^ numpy.array(255 if bits <= 8 else 65535, numpy.uint8 if bits <= 8 else numpy.uint16))


def signed_numbers():
    for kind, bits in ((numpy.int8, 8), (numpy.int16, 16), (numpy.int32, 32)):
        samples = noise(bits)
        stored = (samples.astype(numpy.int64) - (1 << bits - 1)).astype(kind)
        yield file(f"signed-{bits}", tiff(stored, tags=[(libtiff.SAMPLE_FORMAT, libtiff.SIGNED)]), scaled(samples, bits))


def reals():
    for kind in (numpy.float16, numpy.float32, numpy.float64):
        stored = (noise(16) / 65535).astype(kind)
        expected = numpy.round(stored.astype(float) * 65535).astype(numpy.uint16)
        yield file(f"{kind.__name__}", tiff(stored, tags=[(libtiff.SAMPLE_FORMAT, libtiff.REAL)]), expected)
    tags = [(libtiff.SAMPLE_FORMAT, libtiff.REAL), (libtiff.PREDICTOR, 3)]
    yield file("differences", tiff(stored.astype(numpy.float32), libtiff.ADOBE_DEFLATE, tags=tags), expected)


def structures():
    for mode in ("wl", "wb", "w8l", "w8b"):
        for planar in (False, True):
            for tile in (None, 16):
                for samples in (PHOTO, noise(16)):
                    content = tiff(samples, libtiff.LZW, mode=mode, planar=planar, tile=tile)
                    yield file(f"{mode}-{planar}-{tile}-{samples.dtype}", content, samples, tolerance=0)


def palettes():
    for bits in (1, 2, 4, 8):
        indices = noise(bits, 1)
        colors = numpy.random.default_rng(1).integers(0, 256, (1 << bits, 3)) * 257
        content = tiff(indices, libtiff.LZW, libtiff.INDEXED, bits, tags=[libtiff.color_map(colors)])
        yield file(f"palette-{bits}", content, (colors[indices[..., 0]] // 257).astype(numpy.uint8), tolerance=0)


def alphas():
    bits = noise(1, 2)
    yield file("alpha-1-bit", tiff(bits, bits=1, tags=[extra(2)]), bits * 255, tolerance=0)
    for samples in (INKS, noise(16, 4), noise(8, 2), noise(16, 2)):
        content = tiff(samples, tags=[extra(2)])
        yield file(f"alpha-{samples.shape[2]}-{samples.dtype}", content, samples, tolerance=0)
        multiplied = numpy.dstack([numpy.minimum(samples[..., :-1], samples[..., -1:]), samples[..., -1:]])
        full = numpy.iinfo(samples.dtype).max
        plain = multiplied[..., :-1].astype(float) * full / numpy.maximum(multiplied[..., -1:], 1)
        yield file(f"multiplied-{samples.shape[2]}-{samples.dtype}", tiff(multiplied, tags=[extra(1)]),
                   numpy.dstack([numpy.round(plain).astype(samples.dtype), multiplied[..., -1:]]))


def other_colors():
    yield file("cmyk-8", tiff(INKS, photometric=libtiff.INKS), judge=magick, decibels=45)
    yield file("cmyk-16", tiff(INKS.astype(numpy.uint16) * 257, photometric=libtiff.INKS), judge=magick_16, decibels=45)
    for name, options in (("planar", {"planar": True}), ("tiles", {"tile": 16, "compression": libtiff.LZW})):
        yield file(f"cmyk-{name}", tiff(INKS, photometric=libtiff.INKS, **options), judge=magick, decibels=45)
    with_alpha = numpy.dstack([INKS, GREY])
    yield file("cmyk-alpha", tiff(with_alpha, photometric=libtiff.INKS, tags=[extra(2)]), judge=magick, decibels=45)
    lab = numpy.dstack([PHOTO[..., 0], (PHOTO[..., 1:] // 4 - 32).astype(numpy.uint8)])
    yield file("lab-8", tiff(lab, photometric=libtiff.LAB), judge=magick, decibels=39)
    yield file("icc-lab-8", tiff(lab ^ numpy.array([0, 128, 128], numpy.uint8), photometric=libtiff.ICC_LAB),
               judge=lambda path: magick_of(tiff(lab, photometric=libtiff.LAB), path), decibels=39)
    yield file("ycbcr", tiff(PHOTO, photometric=libtiff.YCBCR, tags=[(libtiff.SUBSAMPLING, 1, 1)]), judge=pillow_ycbcr,
               decibels=45)


def magick_of(content, path):
    other = path.parent / "other.tif"
    other.write_bytes(content)
    return magick(other)


def pillow_ycbcr(_):
    return numpy.asarray(Image.fromarray(PHOTO, "YCbCr").convert("RGB"))


def subsampled():
    """YCbCr without compression: blocks of brightness samples, each followed by one sample of both colours."""
    smooth = numpy.asarray(Image.fromarray(PHOTO).resize((64, 48), Image.BICUBIC))
    ycc = numpy.asarray(Image.fromarray(smooth).convert("YCbCr"))
    for right, down in ((2, 1), (1, 2), (2, 2), (4, 1), (4, 2), (4, 4)):
        blocks = ycc.reshape(48 // down, down, 64 // right, right, 3).transpose(0, 2, 1, 3, 4)
        colors = blocks[..., 1:].mean(axis=(2, 3)).round().astype(numpy.uint8)
        data = numpy.concatenate([blocks[..., 0].reshape(48 // down, 64 // right, -1), colors], axis=2).tobytes()
        page = raw_files.Directory()
        for tag, value in ((256, [64]), (257, [48]), (258, [8, 8, 8]), (259, [1]), (262, [6]), (277, [3]), (278, [48]),
                           (530, [right, down])):
            page.set(tag, raw_files.SHORT, value)
        page.set(273, raw_files.LONG, raw_files.Blob(data)).set(279, raw_files.LONG, [len(data)])
        page.set(532, raw_files.RATIONAL, [0, 1, 255, 1, 128, 1, 255, 1, 128, 1, 255, 1])
        wide = numpy.dstack([ycc[..., :1], colors.repeat(down, 0).repeat(right, 1)])
        expected = numpy.asarray(Image.fromarray(wide, "YCbCr").convert("RGB"))
        yield file(f"subsampled-{right}-{down}", raw_files.Tiff().file(page), expected, decibels=39)


def light():
    """LogLuv and LogL hold light, without loss of what eyes see; the expected colours are those of sRGB."""
    ramp = numpy.linspace(0.05, 1, WIDTH, dtype=numpy.float32)[None, :, None].repeat(HEIGHT, 0)
    for name, compression in (("logluv", libtiff.LOGLUV), ("logluv-24", libtiff.LOGLUV_24)):
        tags = [(libtiff.SGILOG_FORMAT, 0), (libtiff.SAMPLE_FORMAT, libtiff.REAL)]
        yield file(name, tiff(ramp.repeat(3, 2), compression, libtiff.LOG_LUV, tags=tags))
    tags = [(libtiff.SGILOG_FORMAT, 0), (libtiff.SAMPLE_FORMAT, libtiff.REAL)]
    yield file("logl", tiff(ramp, libtiff.LOGLUV, libtiff.LOG_L, tags=tags))


def orientations():
    """Turned upright, as the companion does without other options."""
    turns = {1: lambda p: p, 2: lambda p: p[:, ::-1], 3: lambda p: p[::-1, ::-1], 4: lambda p: p[::-1],
             5: lambda p: p.swapaxes(0, 1),
             6: lambda p: numpy.rot90(p, -1), 7: lambda p: numpy.rot90(p, 2).swapaxes(0, 1), 8: lambda p: numpy.rot90(p)}
    for number, turn in turns.items():
        yield file(f"orientation-{number}", pictures.tiff(PHOTO, number), turn(PHOTO), tolerance=0)


def pages():
    """The first page is a reduced copy."""
    first, second = raw_files.Directory(), raw_files.Directory()
    for page, samples, kind in ((first, PHOTO[::2, ::2], 1), (second, PHOTO, 0)):
        for tag, value in ((254, [kind]), (256, [samples.shape[1]]), (257, [samples.shape[0]]), (258, [8, 8, 8]), (259, [1]),
                           (262, [2]),
                           (277, [3]), (278, [samples.shape[0]]), (279, [samples.size])):
            page.set(tag, raw_files.LONG, value)
        page.set(273, raw_files.LONG, raw_files.Blob(numpy.ascontiguousarray(samples).tobytes()))
    yield file("reduced-first", raw_files.Tiff().file(first, second), PHOTO, tolerance=0)


def unmarked():
    yield file("unmarked", tiff(INKS, tags=[extra(0)]), INKS[..., :3], tolerance=0)


def refused_numbers():
    yield file("24-bits", tiff(noise(24), bits=24))
    yield file("64-bits", tiff(noise(64)))
    yield file("signed-12", tiff(noise(12), bits=12, tags=[(libtiff.SAMPLE_FORMAT, libtiff.SIGNED)]))
    yield file("real-24", tiff(noise(24), bits=24, tags=[(libtiff.SAMPLE_FORMAT, libtiff.REAL)]))


def complex_numbers():
    yield file("complex", tiff(noise(64), tags=[(libtiff.SAMPLE_FORMAT, libtiff.COMPLEX)]))


def other_inks():
    yield file("inks", tiff(INKS, photometric=libtiff.INKS, tags=[(libtiff.INK_SET, 2)]))


def wide_palette():
    colors = numpy.zeros((65536, 3), int)
    yield file("palette-16", tiff(noise(16, 1), photometric=libtiff.INDEXED, tags=[libtiff.color_map(colors)]))


def cut_off():
    yield file("cut-off", pictures.tiff(PHOTO, 1)[:-500])


def fax_words():
    yield file("fax-words", tiff(BITS, libtiff.FAX_WORDS, libtiff.WHITE_IS_ZERO, bits=1, rows=HEIGHT))


def other_ycbcr():
    yield file("ycbcr-16", tiff(noise(16), photometric=libtiff.YCBCR, tags=[(libtiff.SUBSAMPLING, 1, 1)]))


def itu_lab():
    yield file("itu-lab", tiff(PHOTO, photometric=10))


def transparency_mask():
    yield file("mask", tiff(BITS, photometric=4, bits=1))


FORMAT = Format(
    name="TIFF, BigTIFF",
    libraries=("libtiff", "libdeflate"), ours="LZW, sorting out the samples",
    read=(
        Variant("no compression, LZW, deflate, PackBits, LZMA, Zstandard and LERC, also of differences", compressions),
        Variant("JPEG, WebP and PixarLog inside TIFF", lossy_compressions),
        Variant("black and white: fax (run lengths, Group 3 in one and two dimensions, Group 4) and JBIG", two_colors),
        Variant("the compressions of NeXT and ThunderScan", old_compressions),
        Variant("old-style JPEG where libtiff decodes it", old_jpeg),
        Variant("strips and tiles, in one plane or several, in both byte orders", structures),
        Variant("whole numbers of 1 to 16 and of 32 bits, grey (black or white is 0) and RGB", whole_numbers),
        Variant("signed numbers of 8, 16 and 32 bits; the smallest is black", signed_numbers),
        Variant("floating point of 16, 32 and 64 bits; 1 is white", reals),
        Variant("palettes of 1, 2, 4 and 8 bits", palettes),
        Variant("CMYK, Lab of both kinds, YCbCr", other_colors),
        Variant("YCbCr with subsampled colours", subsampled),
        Variant("LogLuv and LogL", light),
        Variant("alpha, multiplied or not", alphas),
        Variant("a fourth sample that is not marked as alpha is ignored, because programs disagree about it", unmarked),
        Variant("all orientations", orientations),
        Variant("the first page that is not a reduced copy", pages),
    ),
    refused=(
        Refusal("whole numbers of other sizes than above, and floating point of 24 bits", "rare, and not pictures",
                "this kind of samples are not supported", refused_numbers),
        Refusal("complex numbers", "not a picture", "this kind of samples are not supported", complex_numbers),
        Refusal("inks other than CMYK", "how they mix is not in the file", "this kind of samples are not supported", other_inks),
        Refusal("YCbCr of 16 bits", "libtiff does not convert it", "can not handle image", other_ycbcr),
        Refusal("Lab in the range of ITU-T T.42", "only for colour fax", "this kind of samples are not supported", itu_lab),
        Refusal("palettes of 16 bits", "libtiff refuses them", "can not handle image", wide_palette),
        Refusal("fax run lengths that are aligned to 16 bits", "libtiff 4.5 does not read what it writes", "Bad code word",
                fax_words),
        Refusal("files with only a transparency mask", "not a picture", "this kind of samples are not supported",
                transparency_mask),
        Refusal("cut off files", "an original must not look complete", "the TIFF file ends too early", cut_off),
    ),
    carriers={"profile": lambda: File("a.tif", tiff(PHOTO, tags=[libtiff.profile(pictures.wide_icc())])),
              "alpha": lambda: File("a.tif", tiff(INKS, tags=[extra(2)])),
              "16 bits": lambda: File("a.tif", tiff(noise(16))),
              "EXIF": lambda: with_exif()},
    held="a strip or a row of tiles if it is large",
    picture=lambda samples: tiff(samples, libtiff.LZW, rows=64, tags=[(libtiff.PREDICTOR, 2)]), cost_name="a.tif",
    cost_note="LZW of differences",
)


def with_exif():
    main = raw_files.Directory().set(272, raw_files.ASCII, MODEL).set(0x8769, raw_files.LONG, raw_files.exif())
    for tag, value in ((256, [WIDTH]), (257, [HEIGHT]), (258, [8, 8, 8]), (259, [1]), (262, [2]), (277, [3]), (278, [HEIGHT]),
                       (279, [PHOTO.size])):
        main.set(tag, raw_files.LONG, value)
    return file("exif", raw_files.Tiff().file(main.set(273, raw_files.LONG, raw_files.Blob(PHOTO.tobytes()))))
