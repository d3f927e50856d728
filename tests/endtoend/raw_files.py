"""Makes camera raw files with the structure of each maker's format, from pictures that are drawn here. Written without our
own code, so that the tests judge it. No camera made any of them: the sensor data are plain 16-bit numbers in the pattern
red, green / green, blue, which LibRaw develops where it can; it knows only DNG without the camera's name."""
import io
import struct

import numpy
from PIL import Image

BYTE, ASCII, SHORT, LONG, RATIONAL, UNDEFINED, SRATIONAL = 1, 2, 3, 4, 5, 7, 10
SIZES = {BYTE: 1, ASCII: 1, SHORT: 2, LONG: 4, RATIONAL: 8, UNDEFINED: 1, SRATIONAL: 8}
COLOR_FILTERS, LINEAR_RAW = 32803, 34892
CODES = {BYTE: "B", SHORT: "H", LONG: "I", UNDEFINED: "B"}


def scene(width, height):
    """Smooth colours, 0 to 1, without the detail that demosaicing would make up."""
    y, x = numpy.mgrid[0:height, 0:width]
    return numpy.dstack([0.15 + 0.6 * x / width, 0.2 + 0.5 * y / height, 0.7 - 0.5 * x / width])


def mosaic(colors, levels=4000):
    """The numbers of a sensor that sees `colors`, in the pattern red, green / green, blue."""
    linear = numpy.round(colors ** 2.2 * levels).astype("<u2")
    sensor = linear[..., 1].copy()
    sensor[0::2, 0::2] = linear[0::2, 0::2, 0]
    sensor[1::2, 1::2] = linear[1::2, 1::2, 2]
    return sensor


def jpeg(width, height, quality=92, **options):
    """A preview, which is bluer than the scene, so that nobody mistakes one for the other."""
    samples = numpy.round(scene(width, height)[..., ::-1] * 255).astype(numpy.uint8)
    stream = io.BytesIO()
    Image.fromarray(samples).save(stream, "JPEG", quality=quality, **options)
    return stream.getvalue()


def rational(*values):
    return [part for value in values for part in (round(value * 10000), 10000)]


class Directory:
    """A TIFF directory. A value is a list of numbers, a string, bytes, another Directory, a list of them, or a Blob."""

    def __init__(self):
        self.entries = {}

    def set(self, tag, kind, value):
        self.entries[tag] = (kind, value)
        return self


class Blob(bytes):
    """Bytes elsewhere in the file; the entry is where."""


class Tiff:
    def __init__(self, order="<", version=42, header=b""):
        self.order, self.version = order, version
        self.data = bytearray((b"II" if order == "<" else b"MM") + struct.pack(order + "HI", version, 0) + header)

    def append(self, content):
        if len(self.data) % 2:
            self.data += b"\0"
        at = len(self.data)
        self.data += content
        return at

    def number(self, value):
        return value if isinstance(value, int) else self.append(value)

    def values(self, kind, value):
        """The count and the bytes of an entry."""
        if isinstance(value, Directory):
            value = [self.write(value)]
        elif isinstance(value, Blob):
            value = [self.append(value)]
        elif isinstance(value, str):
            value = value.encode() + b"\0"
        elif value and isinstance(value, list) and isinstance(value[0], Directory):
            value = [self.write(directory) for directory in value]
        if isinstance(value, bytes):
            return len(value), value
        code = {RATIONAL: "I", SRATIONAL: "i"}.get(kind) or CODES[kind]
        return len(value) * struct.calcsize(code) // SIZES[kind], struct.pack(f"{self.order}{len(value)}{code}", *value)

    def write(self, directory, following=0):
        """Writes a directory after everything that it refers to, and returns where it is."""
        entries = b""
        for tag, (kind, value) in sorted(directory.entries.items()):
            count, content = self.values(kind, value)
            if len(content) > 4:
                content = struct.pack(self.order + "I", self.append(content))
            entries += struct.pack(self.order + "HHI", tag, kind, count) + content.ljust(4, b"\0")
        return self.append(struct.pack(self.order + "H", len(directory.entries)) + entries
                           + struct.pack(self.order + "I", following))

    def file(self, *pages):
        following = 0
        for page in reversed(pages):
            following = self.write(page, following)
        struct.pack_into(self.order + "I", self.data, 4, following)
        return bytes(self.data)


def exif(**more):
    directory = Directory().set(0x9003, ASCII, "2024:06:01 18:30:05").set(0x829A, RATIONAL, [1, 250])
    for tag, (kind, value) in more.items():
        directory.set(int(tag, 0), kind, value)
    return directory


def camera(orientation=1, make="Maker", model="Model", directory=None):
    """The entries that describe the camera."""
    page = (directory or Directory()).set(271, ASCII, make).set(272, ASCII, model).set(0x8769, LONG, exif())
    return page.set(274, SHORT, [orientation]) if orientation else page


def sensor_page(sensor, order="<", photometric=COLOR_FILTERS, page=None):
    height, width = sensor.shape[:2]
    samples = 1 if sensor.ndim == 2 else sensor.shape[2]
    page = page or Directory()
    page.set(254, LONG, [0]).set(256, LONG, [width]).set(257, LONG, [height])
    page.set(258, SHORT, [16] * samples).set(259, SHORT, [1]).set(262, SHORT, [photometric])
    page.set(273, LONG, Blob(sensor.astype(order + "u2").tobytes())).set(277, SHORT, [samples])
    page.set(278, LONG, [height]).set(279, LONG, [sensor.size * 2])
    if photometric == COLOR_FILTERS:
        page.set(33421, SHORT, [2, 2]).set(33422, BYTE, [0, 1, 1, 2])
    return page


def strip_of_jpeg(preview, width, height, page=None):
    """A page that is a JPEG file in one strip."""
    page = page or Directory()
    page.set(254, LONG, [1]).set(256, LONG, [width]).set(257, LONG, [height]).set(258, SHORT, [8, 8, 8])
    page.set(259, SHORT, [7]).set(262, SHORT, [6]).set(273, LONG, Blob(preview)).set(277, SHORT, [3])
    return page.set(278, LONG, [height]).set(279, LONG, [len(preview)])


def interchange(preview, page=None):
    """A page with a pointer to a JPEG file."""
    page = page or Directory()
    return page.set(259, SHORT, [6]).set(513, LONG, Blob(preview)).set(514, LONG, [len(preview)])


def dng(width, height, preview=None, orientation=1, order="<", photometric=COLOR_FILTERS):
    """`preview` is the size of a JPEG preview; the main directory shows a small one, as in most files."""
    colors = scene(width, height)
    sensor = mosaic(colors) if photometric == COLOR_FILTERS else numpy.round(colors ** 2.2 * 4000).astype("<u2")
    sensor_directory = sensor_page(sensor, order, photometric).set(50717, LONG, [4000])
    main = camera(orientation)
    thumbnail = numpy.full((12, 16, 3), 90, numpy.uint8)
    main.set(254, LONG, [1]).set(256, LONG, [16]).set(257, LONG, [12]).set(258, SHORT, [8, 8, 8]).set(259, SHORT, [1])
    main.set(262, SHORT, [2]).set(273, LONG, Blob(thumbnail.tobytes())).set(277, SHORT, [3]).set(278, LONG, [12])
    main.set(279, LONG, [thumbnail.size])
    main.set(50706, BYTE, [1, 4, 0, 0]).set(50708, ASCII, "Maker Model")
    # sRGB primaries, so that the colours stay as they are
    matrix = [3.2406, -1.5372, -0.4986, -0.9689, 1.8758, 0.0415, 0.0557, -0.2040, 1.0570]
    main.set(50721, SRATIONAL, rational(*matrix)).set(50778, SHORT, [21])
    main.set(50728, RATIONAL, rational(0.95, 1.0, 0.9))
    subs = [sensor_directory]
    if preview:
        subs.append(strip_of_jpeg(jpeg(*preview), *preview))
    main.set(330, LONG, subs)
    return Tiff(order).file(main)


def nef(width, height, preview, orientation=1):
    """Big-endian, with the preview in a sub-directory."""
    main = camera(orientation, "NIKON CORPORATION", "NIKON X")
    main.set(254, LONG, [1])
    main.set(330, LONG, [interchange(jpeg(*preview)), sensor_page(mosaic(scene(width, height)), ">")])
    return Tiff(">").file(main)


def cr2(width, height, preview, orientation=1):
    """The preview is the first page; the sensor's is the fourth, and its size stands only in its compressed data."""
    tiff = Tiff("<", header=b"CR\2\0" + bytes(4))
    main = strip_of_jpeg(jpeg(*preview), *preview, camera(orientation, "Canon", "Canon X")).set(259, SHORT, [6])
    # the header of lossless JPEG: two components, each with half of the columns
    start = b"\xff\xd8\xff\xc4\0\x03\0\xff\xc3" + struct.pack(">HBHHB", 14, 14, height, width // 2, 2) + bytes([1, 17, 0, 2, 17, 0])
    last = Directory().set(259, SHORT, [6]).set(273, LONG, Blob(start + bytes(400))).set(279, LONG, [len(start) + 400])
    last.set(50752, SHORT, [1, width // 2, width // 2])
    return tiff.file(main, interchange(jpeg(16, 12)), Directory().set(256, LONG, [8]), last)


def arw(width, height, preview, orientation=1):
    main = interchange(jpeg(*preview), camera(orientation, "SONY", "SONY X")).set(254, LONG, [1])
    return Tiff("<").file(main.set(330, LONG, [sensor_page(mosaic(scene(width, height)))]), interchange(jpeg(16, 12)))


def pef(width, height, preview, orientation=1):
    main = sensor_page(mosaic(scene(width, height)), ">", page=camera(orientation, "PENTAX", "PENTAX X"))
    return Tiff(">").file(main, interchange(jpeg(16, 12)), interchange(jpeg(*preview)))


def rw2(width, height, preview, orientation=1):
    """Other tags than those of TIFF; the preview is the value of one of them."""
    main = camera(orientation, "Panasonic", "DMC-X").set(2, SHORT, [width + 8]).set(3, SHORT, [height + 4])
    main.set(4, SHORT, [0]).set(5, SHORT, [0]).set(6, SHORT, [height]).set(7, SHORT, [width])
    main.set(46, UNDEFINED, jpeg(*preview)).set(280, LONG, [0xFFFFFFFF])
    return Tiff("<", 0x55, bytes(16)).file(main)


def orf(width, height, preview, orientation=1):
    """Only LibRaw knows that the first page is that of the sensor."""
    main = sensor_page(mosaic(scene(width, height)), photometric=1, page=camera(orientation, "OLYMPUS CORPORATION", "E-X"))
    return Tiff("<", 0x4F52).file(main, interchange(jpeg(*preview)))


def raf(width, height, preview, orientation=1):
    """A header, a JPEG file with the EXIF data, and a list of numbers about the sensor."""
    stream = jpeg(*preview, exif=exif_block(orientation))
    numbers = [(0x100, struct.pack(">HH", height + 6, width + 10)), (0x111, struct.pack(">HH", height, width))]
    about = struct.pack(">I", len(numbers)) + b"".join(struct.pack(">HH", tag, 4) + value for tag, value in numbers)
    sensor = mosaic(scene(width, height)).tobytes()
    start = 160
    header = b"FUJIFILMCCD-RAW 0201FF000000" + b"FinePix X".ljust(32, b"\0") + b"0100" + bytes(20)
    places = [(start, len(stream)), (start + len(stream), len(about)), (start + len(stream) + len(about), len(sensor))]
    header += b"".join(struct.pack(">II", *place) for place in places)
    return header.ljust(start, b"\0") + stream + about + sensor


def exif_block(orientation):
    block = Tiff("<").file(camera(orientation, "FUJIFILM", "FinePix X"))
    return b"Exif\0\0" + block


def box(name, content):
    return struct.pack(">I4s", len(content) + 8, name) + content


def cr3(width, height, preview, orientation=1):
    """ISO boxes: EXIF directories in one, and tracks of one sample each, of which the first is the preview."""
    stream = jpeg(*preview)
    main = Directory().set(271, ASCII, "Canon").set(272, ASCII, "Canon X").set(274, SHORT, [orientation])
    metadata = bytes.fromhex("85c0b687820f11e08111f4ce462b6a48") + box(b"CNCV", b"CanonCR3_001/00.09.00/00.00.00")
    metadata += box(b"CMT1", Tiff().file(main)) + box(b"CMT2", Tiff().file(exif()))

    def track(size, offset, length):
        entry = bytes(6) + struct.pack(">H", 1) + bytes(16) + struct.pack(">HH", *size) + bytes(50)
        table = box(b"stsd", struct.pack(">II", 0, 1) + box(b"CRAW", entry))
        table += box(b"stsz", struct.pack(">III", 0, length, 1)) + box(b"co64", struct.pack(">IIQ", 0, 1, offset))
        return box(b"trak", box(b"mdia", box(b"minf", box(b"stbl", table))))

    def header(offset):
        tracks = track(preview, offset, len(stream)) + track((width, height), offset + len(stream), 64)
        return box(b"ftyp", b"crx \0\0\0\1crx isom") + box(b"moov", box(b"uuid", metadata) + tracks)

    offset = len(header(0)) + 8
    return header(offset) + box(b"mdat", stream + bytes(64))
