"""Portable maps, PNM."""
import numpy
import pictures
from table import File, Format, Refusal, Variant

WIDTH, HEIGHT = 37, 21
PHOTO, GREY = pictures.photo(WIDTH, HEIGHT), pictures.photo(WIDTH, HEIGHT, 1)
BITS = (GREY[..., 0] > 128).astype(numpy.uint8)
SIZE = b"%d %d" % (WIDTH, HEIGHT)


def file(name, content, pixels=None, **more):
    return File(name, content, pixels, tolerance=more.pop("tolerance", 0), **more)


def text(samples):
    return " ".join(map(str, samples.ravel())).encode() + b"\n"


def words(samples):
    return samples.astype(">u2").tobytes()


def bit_maps():
    yield file("text.pbm", b"P1\n# a comment\n" + SIZE + b"\n" + text(BITS), (1 - BITS) * 255)
    yield file("text-close.pbm", b"P1 " + SIZE + b"\n" + text(BITS).replace(b" ", b""), (1 - BITS) * 255)
    yield file("bits.pbm", b"P4 " + SIZE + b"\n" + numpy.packbits(BITS, axis=1).tobytes(), (1 - BITS) * 255)


def maps():
    for text_digit, digit, samples in ((2, 5, GREY), (3, 6, PHOTO)):
        for largest in (1, 10, 100, 255, 256, 1000, 4095, 65535):
            stored = numpy.round(samples.astype(float) * (largest / 255)).astype(int)
            full, kind = (255, numpy.uint8) if largest < 256 else (65535, numpy.uint16)
            expected = numpy.round(stored * (full / largest)).astype(kind)
            header = SIZE + b"\n%d\n" % largest
            yield file(f"{text_digit}-{largest}.pnm", b"P%d\n" % text_digit + header + text(stored), expected, tolerance=1)
            binary = words(stored) if largest > 255 else stored.astype(numpy.uint8).tobytes()
            yield file(f"{digit}-{largest}.pnm", b"P%d\n" % digit + header + binary, expected, tolerance=1)


def pam(samples, kind, largest):
    lines = [b"P7", b"WIDTH %d" % samples.shape[1], b"HEIGHT %d" % samples.shape[0], b"DEPTH %d" % samples.shape[2],
             b"MAXVAL %d" % largest, *([b"TUPLTYPE " + kind] if kind else []), b"ENDHDR\n"]
    return b"\n".join(lines) + (words(samples) if largest > 255 else samples.astype(numpy.uint8).tobytes())


def arbitrary_maps():
    for kind, channels in ((b"GRAYSCALE", 1), (b"GRAYSCALE_ALPHA", 2), (b"RGB", 3), (b"RGB_ALPHA", 4), (b"", 1), (b"", 3),
                           (b"", 4)):
        samples = pictures.photo(WIDTH, HEIGHT, channels)
        name = f"{kind.decode().lower()}-{channels}"
        yield file(f"{name}-8.pam", pam(samples, kind, 255), samples)
        wide = samples.astype(numpy.uint16) * 257 - (samples > 100)
        yield file(f"{name}-16.pam", pam(wide, kind, 65535), wide.astype(numpy.uint16))
    yield file("bits.pam", pam(BITS[..., None], b"BLACKANDWHITE", 1), BITS * 255)
    both = numpy.dstack([BITS, BITS[::-1]])
    yield file("bits-alpha.pam", pam(both, b"BLACKANDWHITE_ALPHA", 1), both * 255)


def float_maps():
    for mark, samples in ((b"PF", PHOTO), (b"Pf", GREY)):
        for order, scale in (("<f4", b"-1.0"), (">f4", b"1.0")):
            rows = (samples / 255).astype(order)[::-1].tobytes()
            yield file(f"{mark.decode()}{scale.decode()}.pfm", mark + b"\n" + SIZE + b"\n" + scale + b"\n" + rows, samples)


def half_float_maps():
    for mark, samples in ((b"PH", PHOTO), (b"Ph", GREY)):
        yield file(f"{mark.decode()}.phm", mark + b"\n" + SIZE + b"\n-1.0\n" + (samples / 255).astype("<f2")[::-1].tobytes())


def other_types():
    yield file("other.pam", pam(PHOTO, b"HUE", 255))
    yield file("cmyk.pam", pam(pictures.photo(WIDTH, HEIGHT, 4), b"CMYK", 255))


def several():
    content = b"P6 " + SIZE + b" 255\n"
    yield file("several.ppm", content + PHOTO.tobytes() + content + PHOTO[::-1].tobytes(), PHOTO)


FORMAT = Format(
    name="PNM",
    libraries=(),
    read=(
        Variant("P1 and P4: bits, as text and packed", bit_maps),
        Variant("P2, P3, P5 and P6: grey and RGB with any largest value from 1 to 65535", maps),
        Variant("P7 (PAM): bits, grey and RGB, with and without alpha, 8 and 16 bits", arbitrary_maps),
        Variant("PF and Pf: floating point, whose numbers are taken as sRGB", float_maps),
        Variant("of several pictures in a file the first", several),
    ),
    refused=(
        Refusal("P7 of other types, such as CMYK", "what they mean is not defined", "the arbitrary map has an unknown type",
                other_types),
        Refusal("PH and Ph (16-bit floating point)", "rare", "not in a known picture format", half_float_maps),
    ),
    carriers={"alpha": lambda: File("a.pam", pam(pictures.photo(WIDTH, HEIGHT, 4), b"RGB_ALPHA", 255)),
              "16 bits": lambda: File("a.ppm", b"P6 " + SIZE + b" 65535\n" + words(PHOTO.astype(int) * 256 + 7))},
    picture=lambda samples: b"P6 %d %d 255\n" % samples.shape[1::-1] + samples.tobytes(), cost_name="a.ppm",
)
