"""Camera raw files and SVG drawings."""
import base64
import gzip
import io

import numpy
import pictures
import raw_files
from judges import dcraw, pillow, rsvg
from table import File, Format, Refusal, Variant

SENSOR, LARGE, SMALL = (160, 120), (156, 117), (60, 40)
MAKERS = {"dng": raw_files.dng, "nef": raw_files.nef, "cr2": raw_files.cr2, "arw": raw_files.arw, "pef": raw_files.pef,
          "rw2": raw_files.rw2,
          "orf": raw_files.orf, "raf": raw_files.raf, "cr3": raw_files.cr3}


def previews():
    expected = pillow(io.BytesIO(raw_files.jpeg(*LARGE)))
    for extension, make in MAKERS.items():
        yield File(f"a.{extension}", make(*SENSOR, LARGE), expected)


def developed():
    for name, content in (("mosaic", raw_files.dng(*SENSOR)), ("small-preview", raw_files.dng(*SENSOR, preview=SMALL)),
                          ("linear", raw_files.dng(*SENSOR, photometric=raw_files.LINEAR_RAW))):
        yield File(f"{name}.dng", content, judge=dcraw)


def turned():
    for orientation, turn in ((6, -1), (8, 1), (3, 2)):
        expected = numpy.rot90(pillow(io.BytesIO(raw_files.jpeg(*LARGE))), turn)
        for extension, make in (("dng", lambda *sizes, o=orientation: raw_files.dng(*sizes, orientation=o)),
                                ("nef", lambda *sizes, o=orientation: raw_files.nef(*sizes, o))):
            yield File(f"turned-{orientation}.{extension}", make(*SENSOR, LARGE), expected)


def unknown_cameras():
    yield File("unknown.cr2", raw_files.cr2(*SENSOR, SMALL))


def preview_with_profile():
    preview = raw_files.interchange(raw_files.jpeg(*LARGE, icc_profile=pictures.wide_icc()))
    sensor = raw_files.sensor_page(raw_files.mosaic(raw_files.scene(*SENSOR)), ">")
    main = raw_files.camera(1, "NIKON CORPORATION", "NIKON X").set(254, raw_files.LONG, [1])
    return File("a.nef", raw_files.Tiff(">").file(main.set(330, raw_files.LONG, [preview, sensor])))


RAW = Format(
    name="camera raw: DNG, CR2, CR3, NEF, ARW, ORF, RW2, RAF, PEF and what else LibRaw knows",
    libraries=("LibRaw",), ours="the files and the camera's own pictures; LibRaw develops",
    read=(
        Variant("the camera's own JPEG picture if its sides have at least 90 % of those of the sensor's", previews),
        Variant("else the sensor's data, developed with the camera's white balance; a smaller preview is never shown", developed),
        Variant("orientation, applied", turned),
    ),
    refused=(
        Refusal("cameras that LibRaw 0.20 does not know, and its newer compressions", "only LibRaw knows their data",
                "of a kind that LibRaw does not support", unknown_cameras),
    ),
    carriers={"profile": preview_with_profile, "EXIF": lambda: File("a.dng", raw_files.dng(*SENSOR, LARGE)),
              "16 bits": lambda: next(developed()), "profile made from the colour space": lambda: next(developed())},
    kept_notes={"profile": "of the camera's picture", "EXIF": "with orientation 1", "16 bits": "of developed pictures",
                "profile made from the colour space": "developed pictures are in sRGB"},
    notes=("The files that are tried are of our own making, because no camera's file may be copied here. So CRW, MRW, X3F and "
           "relatives of TIFF such as NRW, SRW and 3FR are not tried.",
           "Files without a public mark of the sensor's data (some IIQ and older files) show their largest TIFF page."),
    held="the camera's picture: as JPEG. Developed: 16 bytes per pixel; reduced 4.7 times and more, a third of that",
    picture=lambda samples: raw_files.dng(samples.shape[1], samples.shape[0]), cost_name="a.dng", cost_note="developed",
)


START = '<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" '
SHAPES = ('<defs><linearGradient id="g"><stop offset="0" stop-color="#f60"/><stop offset="1" stop-color="#06f"/></linearGradient>'
          '<filter id="f"><feGaussianBlur stdDeviation="2"/></filter></defs><circle cx="40" cy="30" r="24" fill="url(#g)"/>'
          '<path d="M2 2L78 58" stroke="#113" stroke-width="3"/>'
          '<rect x="9" y="9" width="20" height="9" fill="red" filter="url(#f)"/>')


def drawing(content, size='width="80" height="60"'):
    return (START + size + ">" + content + "</svg>").encode()


def shapes():
    for name, size in (("size", 'width="80" height="60"'), ("box", 'viewBox="0 0 80 60"'),
                       ("units", 'width="60pt" height="45pt" viewBox="0 0 80 60"')):
        yield File(f"{name}.svg", drawing(SHAPES, size), judge=rsvg, decibels=45)
    yield File("compressed.svgz", gzip.compress(drawing(SHAPES)), judge=rsvg, decibels=45)


def texts():
    yield File("text.svg", drawing('<style>text { fill: #236 }</style><text y="40" font-size="30">Text</text>'), judge=rsvg,
               decibels=45)


def inner_pictures():
    stream = io.BytesIO()
    pictures.image(pictures.photo(40, 30)).save(stream, "PNG")
    data = base64.b64encode(stream.getvalue()).decode()
    yield File("inside.svg", drawing(f'<image width="80" height="60" xlink:href="data:image/png;base64,{data}"/>'), judge=rsvg,
               decibels=39)


def outside():
    """A picture from another file stays away; the drawing is empty."""
    yield File("outside.svg", drawing('<image width="80" height="60" xlink:href="file:///usr/share/pixmaps/debian-logo.png"/>'),
               numpy.zeros((60, 80, 4), numpy.uint8), tolerance=0)


def scripts():
    content = drawing('<script>document.documentElement.setAttribute("fill", "red")</script>'
                      '<rect width="80" height="60" fill="#fff"/>')
    yield File("script.svg", content, numpy.full((60, 80, 4), 255, numpy.uint8), tolerance=0)


def utf_16():
    yield File("utf-16.svg", drawing(SHAPES).decode().encode("utf-16"))


def long_text():
    yield File("long.svgz", gzip.compress(drawing(" " * (65 << 20))))


def logo(samples):
    """A drawing of that natural size with some hundred shapes."""
    height, width = samples.shape[:2]
    circles = "".join(f'<circle cx="{(7919 * i) % width}" cy="{(104729 * i) % height}" r="{200 + i % 400}" '
                      f'fill="#{(i * 5003) % 4096:03x}" fill-opacity="0.6"/>' for i in range(300))
    return drawing(circles, f'width="{width}" height="{height}"')


SVG = Format(
    name="SVG, SVGZ",
    libraries=("librsvg",),
    read=(
        Variant("shapes, gradients and filters; sizes in any unit, or those of the view box", shapes),
        Variant("texts and styles inside the file", texts),
        Variant("pictures inside the file", inner_pictures),
        Variant("scripts and animation are ignored", scripts),
        Variant("everything outside the file is left out: a picture must not depend on or reach other files", outside),
    ),
    refused=(
        Refusal("UTF-16", "rare", "not in a known picture format", utf_16),
        Refusal("more than 64 MiB of text", "not a drawing for people", "more than 64 MiB of text", long_text),
    ),
    carriers={"alpha": lambda: File("a.svg", drawing('<rect width="40" height="60" fill="red" fill-opacity="0.4"/>'
                                                     '<circle cx="50" cy="30" r="9"/>'))},
    notes=("A drawing counts as a picture of its natural size, and is drawn at the size of the result.",),
    held="the drawing's elements; pixels: 48 MiB at most",
    picture=logo, cost_name="a.svg", cost_note="300 translucent circles",
)

FORMATS = (RAW, SVG)
