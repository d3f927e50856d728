"""GIF."""
import io

import numpy
import pictures
from judges import pillow
from PIL import Image
from table import File, Format, Variant

PHOTO = Image.fromarray(pictures.photo(61, 43))
ACCEPTING = ("--accept-damaged",)


def saved(image, **options):
    stream = io.BytesIO()
    image.save(stream, "GIF", **options)
    return stream.getvalue()


def colors(count):
    return PHOTO.quantize(count)


def clear():
    """One of the colours is transparent."""
    return saved(colors(16), transparency=3)


def as_rgba(content):
    return numpy.asarray(Image.open(io.BytesIO(content)).convert("RGBA"))


def plain():
    for count in (2, 4, 16, 256):
        for interlace in (0, 1):
            content = saved(colors(count), interlace=interlace)
            for version in (b"GIF87a", b"GIF89a"):
                yield File(f"{count}-{interlace}-{version.decode()}.gif", version + content[6:], as_rgba(content), tolerance=0)


def transparency():
    content = clear()
    yield File("clear.gif", content, as_rgba(content), tolerance=0)


def own_table():
    """The table of colours belongs to the picture and not to the file."""
    content = saved(colors(16))
    length = 3 << ((content[10] & 7) + 1)
    head, table, rest = content[:13], content[13:13 + length], content[13 + length:]
    place = rest.index(b",")
    head = head[:10] + bytes([head[10] & 0x70]) + head[11:]
    size = content[10] & 7
    descriptor = rest[place:place + 9] + bytes([rest[place + 9] & 0x78 | 0x80 | size])
    yield File("own-table.gif", head + rest[:place] + descriptor + table + rest[place + 10:], as_rgba(content), tolerance=0)


def no_table():
    """The indices are the greys."""
    greys = Image.fromarray((numpy.arange(43 * 61).reshape(43, 61) % 256).astype(numpy.uint8))
    content = saved(greys)
    head = content[:10] + bytes([content[10] & 0x7F]) + content[11:13]
    yield File("no-table.gif", head + content[13 + 768:], numpy.asarray(greys), tolerance=0)


def animation():
    frames = [Image.fromarray(pictures.photo(30, 20, seed=seed)).quantize(64) for seed in (1, 2, 3)]
    content = saved(frames[0], save_all=True, append_images=frames[1:], duration=50, loop=0)
    yield File("animated.gif", content, judge=pillow, tolerance=0)


def smaller_than_screen():
    """A picture inside a larger screen, whose other pixels are clear."""
    content = saved(colors(16))
    wide = content[:6] + (81).to_bytes(2, "little") + (63).to_bytes(2, "little") + content[10:]
    expected = numpy.zeros((63, 81, 4), numpy.uint8)
    expected[:43, :61] = as_rgba(content)
    yield File("screen.gif", wide, expected, tolerance=0)


def cut_off():
    content = saved(colors(64))
    yield File("cut-off.gif", content[:len(content) * 2 // 3], options=ACCEPTING)


FORMAT = Format(
    name="GIF",
    libraries=("giflib",),
    read=(
        Variant("GIF87a and GIF89a, 2 to 256 colours, interlaced or not", plain),
        Variant("a transparent colour", transparency),
        Variant("a table of colours for the file or for the picture", own_table),
        Variant("files without a table of colours, in grey", no_table),
        Variant("pictures smaller than their screen", smaller_than_screen),
        Variant("of animations the first picture", animation),
        Variant("cut off files as far as they go; `kestrinectl` asks for `--accept-damaged`", cut_off),
    ),
    carriers={"alpha (on or off)": lambda: File("a.gif", clear())},
    held="nothing; of interlaced files up to 4 megapixels the indices",
    picture=lambda samples: saved(Image.fromarray(samples).quantize(256, method=Image.FASTOCTREE)), cost_name="a.gif",
)
