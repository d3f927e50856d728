"""HEIC and AVIF. What heif-enc and avifenc do not write comes from heif_files.py."""
import struct
from pathlib import Path

import heif_files as heif
import numpy
import pictures
from judges import avifdec, heif_convert
from PIL import Image
from png_rows import RGB, png
from table import File, Format, Refusal, Variant
from trial import exif

CORPUS = Path(__file__).resolve().parent.parent.parent / "fuzz/corpus/heif"
SAME, SUBSAMPLED = 45, 39  # dB: the judges repeat subsampled colours or interpolate in another way
SRGB = heif.nclx(1, 13, 6)


def smooth(width, height, channels=3):
    y, x = numpy.mgrid[0:height, 0:width] / max(width, height)
    planes = [0.5 + 0.4 * numpy.sin(5.1 * x * (c + 1) + 4.2 * y + c) for c in range(channels)]
    return numpy.round(numpy.dstack(planes) * 255).astype(numpy.uint8)


SMALL = Image.fromarray(smooth(150, 110))
HEIF = {"judge": heif_convert, "decibels": SAME}


def hevc_tile(*options, image=SMALL):
    return heif.tile(image, "-q", "90", "-p", "chroma=444", *options)


def made(*properties, tile=None, kind=None, brand="heic", **options):
    file = heif.File(brand)
    picture = tile or hevc_tile()
    if kind:
        picture.kind = kind
    file.add_coded(picture, SRGB, *properties, **options)
    return file


def hevc_samples():
    for sampling, at_least in (("444", SAME), ("422", SUBSAMPLED), ("420", SUBSAMPLED)):
        for bits in ("8", "10", "12"):
            content = heif.encoded(SMALL if bits == "8" else deep_png(), "-q", "90", "-b", bits, "-p", f"chroma={sampling}")
            assert max(heif.coded(content).bits) == int(bits)
            yield File(f"{sampling}-{bits}.heic", content, judge=heif_convert, decibels=at_least)
    grey = Image.fromarray(smooth(90, 70, 1)[..., 0])
    yield File("grey.heic", heif.encoded(grey, "-q", "90"), judge=heif_convert, decibels=SAME)


def av1_samples():
    """avifdec shows grey pictures of 8 bits in the limited range as if their range were full."""
    for sampling, at_least in (("444", SAME), ("422", SUBSAMPLED), ("420", SUBSAMPLED), ("400", SAME)):
        for bits in ("8", "10", "12"):
            for range_ in ("full", "limited"):
                if (sampling, bits, range_) == ("400", "8", "limited"):
                    continue
                content = heif.encoded(SMALL, "-s", "10", "-y", sampling, "-d", bits, "-r", range_, codec="av1")
                yield File(f"{sampling}-{bits}-{range_}.avif", content, judge=avifdec, decibels=at_least)


def matrices():
    for matrix in ("0", "1", "4", "5", "6", "7", "8", "9", "12"):
        content = heif.encoded(SMALL, "-s", "10", "-y", "444", "--cicp", f"1/13/{matrix}", codec="av1")
        yield File(f"matrix-{matrix}.avif", content, judge=avifdec, decibels=SAME)


def corpus(*names, judge=heif_convert, decibels=SAME):
    for name in names:
        yield File(name, (CORPUS / name).read_bytes(), judge=judge, decibels=decibels)


def structures():
    yield from corpus("grid.heic")
    yield File("overlay.heic", overlay().file(), **HEIF)
    yield from corpus("identity.heic")
    yield File("turned-grid.heic", identity_of_grid().file(), **HEIF)


def overlay():
    """Two pictures on a purple canvas."""
    file = heif.File()
    parts = [file.add_coded(hevc_tile(image=Image.fromarray(smooth(*size))), SRGB, hidden=True) for size in ((100, 80), (64, 64))]
    description = struct.pack(">BBHHHHHHhhhh", 0, 0, 0xFFFF, 0x8080, 0, 0xFFFF, 140, 110, 10, 5, 70, 40)
    file.primary = file.add("iovl", description, [heif.ispe(140, 110)], method=1)
    file.refer("dimg", file.primary, *parts)
    return file


def identity_of_grid():
    file = heif.grid(smooth(128, 128), 64, "-q", "90", "-p", "chroma=444", before=[SRGB], properties=[SRGB])
    grid = file.primary
    kind, data, properties, _, method, unknown = file.items[grid - 1]
    file.items[grid - 1] = (kind, data, properties, True, method, unknown)
    file.primary = file.add("iden", b"", [heif.ispe(128, 128), heif.irot(1)])
    file.refer("dimg", file.primary, grid)
    return file


def transformations():
    steps = [heif.irot(1), heif.imir(0), heif.imir(1), heif.clap(60, 50, (5, 1), (-3, 1))]
    picture = hevc_tile(image=Image.fromarray(smooth(96, 80)))
    for number, first in enumerate(steps):
        yield File(f"step-{number}.heic", made(first, steps[number - 1], tile=picture).file(), **HEIF)
    yield from corpus("grid-turned-and-cut.heic")


def places():
    yield from corpus("data-in-header.heic")
    yield File("data-in-another-item.heic", (CORPUS / "data-in-another-item.heic").read_bytes())


def alpha_samples():
    samples = numpy.dstack([smooth(90, 70), numpy.mgrid[0:70, 0:90][1] * 2 + 60]).astype(numpy.uint8)
    return Image.fromarray(samples)


def heic_alpha():
    yield File("alpha.heic", heif.encoded(alpha_samples(), "-q", "90", "-p", "chroma=444"), **HEIF)
    yield File("alpha-premultiplied.heic", (CORPUS / "alpha-premultiplied.heic").read_bytes())


def avif_alpha():
    for options in ((), ("-p",)):
        content = heif.encoded(alpha_samples(), "-s", "10", *options, codec="av1")
        yield File(f"alpha{len(options)}.avif", content, judge=avifdec, decibels=SAME)


def auxiliary():
    yield from corpus("exif-thumbnail-depth.heic")


def sequences():
    yield from corpus("sequence.avif", judge=avifdec)
    yield from corpus("sequence-without-still.avif", judge=lambda path: avifdec(CORPUS / "sequence.avif"))


def high_range():
    for name in ("10-bits-pq.avif", "10-bits-hlg.avif"):
        yield File(name, (CORPUS / name).read_bytes())


def grain():
    yield File("grain.avif", heif.encoded(SMALL, "-s", "10", "-a", "film-grain-test=1", codec="av1"), judge=avifdec,
               decibels=SUBSAMPLED)


def other_codings():
    for kind in ("vvc1", "avc1", "jpeg", "j2k1", "unci"):
        yield File(f"{kind}.heic", made(kind=kind).file())


def encrypted():
    """The first entry of the list of items names the item's protection after its number."""
    content = made().file()
    entry = content.index(b"infe") + 4 + 4 + 2
    yield File("encrypted.heic", content[:entry] + b"\0\1" + content[entry + 2:])


def elsewhere():
    content = made().file()
    place = content.index(b"iloc") + 4 + 4 + 2 + 2 + 2 + 2
    yield File("elsewhere.heic", content[:place] + b"\0\1" + content[place + 2:])


def unknown_property():
    file = heif.File()
    picture = hevc_tile()
    file.add(picture.kind, picture.data, picture.properties(SRGB), unknown=[heif.box("wxyz", b"1234")])
    yield File("unknown.heic", file.file())


def nonlinear_matrices():
    for matrix in (10, 13, 14):
        file = heif.File()
        file.add_coded(hevc_tile(), heif.nclx(9, 14, matrix))
        yield File(f"matrix-{matrix}.heic", file.file())


def small_header():
    yield File("mini.heif", heif.box("ftyp", b"mif3", bytes(4), b"mif3") + heif.box("mini", bytes(60)))


def fragmented():
    yield File("fragmented.heic", heif.box("ftyp", b"hevc", bytes(4), b"hevc") + heif.box("moov", heif.box("mvex", bytes(8)))
               + heif.box("moof", bytes(40)) + heif.box("mdat", bytes(100)))


def hevc_as_avif():
    file = made(brand="avif")
    yield File("a.avif", file.file())


def cut_off(name, content):
    yield File(name, content()[:-400])


def with_exif(brand, tile):
    file = made(tile=tile, brand=brand)
    file.add_exif(1, exif())
    return file.file()


def av1_tile(*options, image=SMALL):
    return heif.tile(image, "-s", "10", *options, codec="av1")


def deep_png():
    """16 bits, of which the encoders take the upper ones."""
    return png(numpy.asarray(SMALL).astype(int) * 257, RGB, 16)


def carriers(brand, tile, deep, alpha):
    def file(content):
        return File(f"a.{brand}", content)
    return {"profile": lambda: file(plain_with(brand, tile(), heif.prof(pictures.wide_icc()))),
            "profile made from the colour space": lambda: file(plain_with(brand, tile(), heif.nclx(12, 13, 6))),
            "alpha": lambda: file(alpha()), "16 bits": lambda: file(deep()), "EXIF": lambda: file(with_exif(brand, tile()))}


def plain_with(brand, tile, color):
    file = heif.File(brand)
    file.add_coded(tile, color)
    return file.file()


def tiles_of(samples):
    """One tile, repeated, because encoding 12 megapixels takes long. It has a photograph's detail."""
    side = 512
    tile = heif.tile(Image.fromarray(numpy.ascontiguousarray(samples[:side, :side])), "-q", "60")
    file = heif.File()
    height, width = samples.shape[:2]
    columns, rows = -(-width // side), -(-height // side)
    tiles = [file.add_coded(tile, SRGB, hidden=True) for _ in range(columns * rows)]
    file.primary = file.add_grid(tiles, columns, width, height, SRGB)
    return file.file()


KEPT_NOTES = {"profile made from the colour space": "such as Display P3 and BT.2020", "16 bits": "from 10 and 12 bits",
              "EXIF": "with orientation 1, because the container turns the picture"}

HEIC = Format(
    name="HEIC, HEIF",
    libraries=("libde265",), ours="the boxes",
    read=(
        Variant("HEVC pictures of 8, 10 and 12 bits, 4:4:4, 4:2:2, 4:2:0 and grey", hevc_samples),
        Variant("grids, overlays and identity pictures, of each other too", structures),
        Variant("cuts, turns and reflections in the given order", transformations),
        Variant("data in the file, in the header or cut from other items", places),
        Variant("alpha planes, multiplied or not", heic_alpha),
        Variant("thumbnails, depth maps, gain maps and other auxiliary pictures are ignored", auxiliary),
    ),
    refused=(
        Refusal("pictures compressed as VVC, AVC, JPEG, JPEG 2000 or not at all", "no decoder behind these boxes yet",
                "are not supported",
                other_codings),
        Refusal("encrypted pictures", "the key is not in the file", "the picture is encrypted", encrypted),
        Refusal("pictures in other files", "a picture must not reach other files", "the picture is stored in another file",
                elsewhere),
        Refusal("properties that are marked as essential and not known", "the format demands it", "with the property \"wxyz\"",
                unknown_property),
        Refusal("colour matrices of constant luminance and ICtCp", "not linear, and no encoder of still pictures writes them",
                "colour matrix", nonlinear_matrices),
        Refusal("files without the box `meta` (mif3)", "too new", "not in a known picture format", small_header),
        Refusal("fragmented sequences", "rare, and no still pictures", "it has no pictures", fragmented),
        Refusal("cut off files", "an original must not look complete", "the HEIF or AVIF file ends too early",
                lambda: cut_off("cut-off.heic", lambda: made().file())),
    ),
    carriers=carriers("heic", hevc_tile, lambda: heif.encoded(deep_png(), "-q", "90", "-b", "10"),
                      lambda: heif.encoded(alpha_samples(), "-q", "90")),
    kept_notes=KEPT_NOTES,
    notes=("Pictures whose colours have fewer bits than their brightness are not read. It is not tried, because no program of the "
           "tests writes them.",),
    held="of tiles one row of them per thread; else the picture, 3 to 9 bytes per pixel",
    picture=tiles_of, cost_name="a.heic", cost_note="tiles of 512 x 512",
)

AVIF = Format(
    name="AVIF",
    libraries=("dav1d",), ours="the boxes",
    read=(
        Variant("AV1 pictures of 8, 10 and 12 bits, 4:4:4, 4:2:2, 4:2:0 and grey, in both ranges", av1_samples),
        Variant("every linear colour matrix", matrices),
        Variant("film grain", grain),
        Variant("all structures of HEIC, such as grids", lambda: corpus("grid.avif", judge=avifdec)),
        Variant("alpha planes, multiplied or not", avif_alpha),
        Variant("sequences: the main picture, else the first frame of the first track", sequences),
        Variant("PQ and HLG, mapped to standard range", high_range),
    ),
    refused=(
        Refusal("HEVC pictures in a file whose brand is that of AVIF alone", "the library for HEVC is not opened for AVIF files",
                "AVIF files with HEVC pictures are not supported", hevc_as_avif),
        Refusal("cut off files", "an original must not look complete", "the HEIF or AVIF file ends too early",
                lambda: cut_off("cut-off.avif", lambda: made(tile=av1_tile(), brand="avif").file())),
        Refusal("what is not read of HEIC", "as there", "the picture is stored in another file", elsewhere),
    ),
    carriers=carriers("avif", av1_tile, lambda: heif.encoded(deep_png(), "-s", "10", "-d", "10", codec="av1"),
                      lambda: heif.encoded(alpha_samples(), "-s", "10", codec="av1")),
    kept_notes=KEPT_NOTES,
    notes=("Of pictures in layers, the chosen layer is shown. It is not tried, because avifenc 0.11 does not write them.",),
    held="of tiles one row of them per thread; else the picture, 3 to 9 bytes per pixel",
    picture=lambda samples: heif.encoded(Image.fromarray(samples), "-s", "10", "-y", "420", "-j", "2", codec="av1"),
    cost_name="a.avif",
)

FORMATS = (HEIC, AVIF)
