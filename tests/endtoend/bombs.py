"""Small files that claim to be huge, or that cost much to read; made without our own code."""
import gzip
import io
import struct
import zlib

import numpy
import raw_files
from PIL import Image

def chunk(name, content):
    return struct.pack(">I", len(content)) + name + content + struct.pack(">I", zlib.crc32(name + content))


def zeros(count, level=9, bits=15):
    """A zlib stream of `count` zeros, without holding them."""
    packer = zlib.compressobj(level, zlib.DEFLATED, bits)
    block = bytes(1 << 20)
    parts = [packer.compress(block) for _ in range(count >> 20)]
    return b"".join(parts) + packer.compress(bytes(count & (1 << 20) - 1)) + packer.flush()


def packed(rows):
    packer = zlib.compressobj(9)
    return b"".join(packer.compress(row) for row in rows) + packer.flush()


def png(width, height, bits=8, kind=2, interlaced=0, before=b"", after=b"", pixels=None, window=15):
    """A black picture; `kind` is the number of PNG's colour type."""
    samples = {0: 1, 2: 3, 3: 1, 4: 2, 6: 4}[kind]
    stored = zeros(height * ((width * bits * samples + 7) // 8 + 1), bits=window) if pixels is None else pixels
    header = struct.pack(">IIBBBBB", width, height, bits, kind, 0, 0, interlaced)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + before + chunk(b"IDAT", stored) + after
            + chunk(b"IEND", b""))


def png_with_texts(count, size, **options):
    texts = chunk(b"zTXt", b"x\0\0" + zeros(size)) * count
    return png(8, 8, before=texts, after=texts, **options)


def png_with_profile(size):
    head = struct.pack(">I4sI4s4s4s", size, b"none", 0x02400000, b"mntr", b"RGB ", b"XYZ ") + bytes(12) + b"acsp"
    profile = zlib.compressobj(9)
    stored = profile.compress(head.ljust(128, b"\0")) + profile.compress(bytes(size - 128)) + profile.flush()
    return png(8, 8, before=chunk(b"iCCP", b"x\0\0" + stored))


def interlaced_png(width, height, bits, kind):
    samples = {0: 1, 2: 3, 6: 4}[kind]
    total = 0
    for x, y, dx, dy in ((0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2),
                         (0, 1, 1, 2)):
        columns, rows = -(-(width - x) // dx), -(-(height - y) // dy)
        if columns > 0 and rows > 0:
            total += rows * ((columns * bits * samples + 7) // 8 + 1)
    return png(width, height, bits, kind, interlaced=1, pixels=zeros(total))


def gif(width, height, left=0, top=0, inner=(1, 1), interlaced=False):
    """A canvas with a small picture."""
    return (b"GIF89a" + struct.pack("<HHBBB", width, height, 0x80, 0, 0) + bytes(6)
            + b"," + struct.pack("<HHHHB", left, top, *inner, 0x40 if interlaced else 0)
            + b"\x02\x02\x44\x01\0;")


def full_gif(width, height, interlaced=False):
    """Filled with one colour: each code stands for one pixel more than the previous code. After the table is full, the
    code of the longest string repeats."""
    bits = []

    def put(code, size):
        bits.append((code, size))

    put(4, 3)
    count, size, next_code, length = width * height, 3, 6, 1
    put(0, 3)
    count -= 1
    while count > 0:
        length = min(length + 1, count)
        code = next_code if next_code < 4096 else 4095
        longest = code - 6 + 2
        put(code if count >= longest else 0, size)
        count -= longest if count >= longest else 1
        next_code = min(next_code + 1, 4096)
        if next_code == 1 << size and size < 12:
            size += 1
    put(5, size)
    value = at = 0
    packed = bytearray()
    for code, size in bits:
        value |= code << at
        at += size
        while at >= 8:
            packed.append(value & 255)
            value >>= 8
            at -= 8
    packed.append(value & 255)
    blocks = b"".join(bytes([len(packed[i:i + 255])]) + packed[i:i + 255] for i in range(0, len(packed), 255))
    return (b"GIF89a" + struct.pack("<HHBBB", width, height, 0x80, 0, 0) + bytes(6)
            + b"," + struct.pack("<HHHHB", 0, 0, width, height, 0x40 if interlaced else 0) + b"\x02" + blocks + b"\0;")


def run_length_bmp(width, height, bits=8, codes=b"\0\x01"):
    colors = bytes(4 << bits)
    offset = 54 + len(colors)
    return (b"BM" + struct.pack("<IHHI", offset + len(codes), 0, 0, offset)
            + struct.pack("<IiiHHIIiiII", 40, width, height, 1, bits, {8: 1, 4: 2}[bits], len(codes), 0, 0, 0, 0)
            + colors + codes)


def lossless_webp(width, height):
    """One colour without any pixel data, because every code has a single symbol."""
    bits = [(0x2F, 8), (width - 1, 14), (height - 1, 14), (0, 1), (0, 3),
            (0, 1), (0, 1), (0, 1)]  # no transform, no cache, no meta codes
    bits += [(1, 1), (0, 1), (0, 1), (0, 1)] * 5  # simple code, one symbol of one bit: 0
    value = at = 0
    for number, size in bits:
        value |= number << at
        at += size
    data = value.to_bytes((at + 7) // 8, "little")
    data += bytes(len(data) % 2)
    return b"RIFF" + struct.pack("<I", 12 + len(data)) + b"WEBPVP8L" + struct.pack("<I", len(data)) + data


def segment(marker, content=b""):
    return bytes([0xFF, marker]) + struct.pack(">H", len(content) + 2) + content


def jpeg_header(frame, width, height, components=3, sampling=0x11):
    """Everything before the first scan; each code table has a single code, 0 of one bit, for the symbol 0."""
    tables = segment(0xDB, b"\0" + b"\x01" * 64)
    for number in (0x00, 0x10):
        tables += segment(0xC4, bytes([number, 1]) + bytes(15) + b"\0")
    parts = b"".join(bytes([i + 1, sampling if i == 0 else 0x11, 0]) for i in range(components))
    return b"\xff\xd8" + tables + segment(frame, struct.pack(">BHHB", 8, height, width, components) + parts)


def scan(components, first=0, last=63, bits=0, data=b""):
    parts = b"".join(bytes([number, 0]) for number in components)
    return segment(0xDA, bytes([len(components)]) + parts + bytes([first, last, bits])) + data


def baseline_jpeg(width, height, data=b"\0" * 300, components=3):
    """Hardly any data; the decoder makes up the rest."""
    return jpeg_header(0xC0, width, height, components) + scan(range(1, components + 1), data=data) + b"\xff\xd9"


def progressive_jpeg(width, height, scans, components=1):
    """The first scan has one bit per block. Each later scan has codes of 15 bits for up to 32767 blocks each, in which
    no coefficient changes, but the decoder has to visit all coefficients."""
    blocks = -(-width // 8) * -(-height // 8)
    runs = segment(0xC4, bytes([0x10, 1]) + bytes(15) + b"\xe0")
    codes = -(-blocks // 32767)
    size = 15 * codes
    fill = -size % 8
    bits = int(("0" + "1" * 14) * codes + "1" * fill, 2)
    data = bits.to_bytes((size + fill) // 8, "big").replace(b"\xff", b"\xff\0")
    file = jpeg_header(0xC2, width, height, components)
    file += scan(range(1, components + 1), 0, 0, 0, bytes(-(-blocks // 8) * components)) + runs
    for number in range(scans):
        bit = 1 if number < components else 0x10  # the first one of a component, then the next bit
        file += scan([1 + number % components], 1, 63, bit, data)
    return file + b"\xff\xd9"


LZW, DEFLATE, PACKBITS, FAX4, LZMA, ZSTD, WEBP = 5, 8, 32773, 4, 34925, 50000, 50001


def tiff(width, height, compression, block, bits=8, samples=1, rows=None, tile=None, photometric=1, extra=()):
    """Every strip or tile is the same `block` of the file."""
    rows = rows or height
    count = -(-width // tile[0]) * -(-height // tile[1]) if tile else -(-height // rows)
    data = bytearray(b"II*\0" + struct.pack("<I", 0) + block)
    at = 8

    def array(numbers, code="I"):
        nonlocal data
        if len(numbers) * struct.calcsize(code) <= 4:
            return struct.pack("<" + code * len(numbers), *numbers).ljust(4, b"\0")
        data += bytes(len(data) % 2)
        place = len(data)
        data += struct.pack(f"<{len(numbers)}{code}", *numbers)
        return struct.pack("<I", place)

    entries = [(256, 4, 1, array([width])), (257, 4, 1, array([height])),
               (258, 3, samples, array([bits] * samples, "H")), (259, 3, 1, array([compression], "H")),
               (262, 3, 1, array([photometric], "H")), (277, 3, 1, array([samples], "H")), *extra]
    offsets, lengths = array([at] * count), array([len(block)] * count)
    if tile:
        entries += [(322, 4, 1, array([tile[0]])), (323, 4, 1, array([tile[1]])), (324, 4, count, offsets),
                    (325, 4, count, lengths)]
    else:
        entries += [(273, 4, count, offsets), (278, 4, 1, array([rows])), (279, 4, count, lengths)]
    data += bytes(len(data) % 2)
    struct.pack_into("<I", data, 4, len(data))
    data += struct.pack("<H", len(entries))
    for tag, kind, number, value in sorted(entries):
        data += struct.pack("<HHI", tag, kind, number) + value
    return bytes(data + bytes(4))


def deflated_tiff(width, height, rows=None, bits=8, samples=1, **options):
    rows = rows or height
    return tiff(width, height, DEFLATE, zeros(rows * (width * bits * samples // 8)), bits, samples, rows, **options)


def fax4(height):
    """White rows: one bit each."""
    return b"\xff" * (height // 8) + b"\x00\x10\x01\x00\x10\x01"


def repeated_tile(number, name, mode, side):
    """A black tile as Pillow compresses it, everywhere."""
    buffer = io.BytesIO()
    Image.new(mode, (512, 512), 0).save(buffer, "TIFF", compression=name, strip_size=1 << 30)
    with Image.open(buffer) as picture:
        offset, length = picture.tag_v2[273][0], picture.tag_v2[279][0]
    return tiff(side, side, number, buffer.getvalue()[offset:offset + length], samples=len(mode), tile=(512, 512),
                photometric=2 if mode == "RGB" else 1)


def packbits(count):
    return b"\x81\0" * (count // 128) + b"\x00\0" * (count % 128)


def with_equal_pages(data, pages, entries):
    """The beginning of a TIFF file, completed with pages that have the same entries."""
    for page in range(pages):
        following = len(data) + 2 + 12 * len(entries) + 4 if page + 1 < pages else 0
        data += struct.pack("<H", len(entries))
        for entry in entries:
            data += struct.pack("<HHII", *entry)
        data += struct.pack("<I", following)
    return bytes(data)


def tiff_with_shared_profile(pages, size):
    """Every page has the same profile."""
    profile = struct.pack(">I4sI4s4s4s", size, b"none", 0x02400000, b"mntr", b"GRAY", b"XYZ ") + bytes(12) + b"acsp"
    data = bytearray(b"II*\0" + struct.pack("<I", 8 + size) + profile.ljust(size, b"\0"))
    entries = [(256, 4, 1, 1), (257, 4, 1, 1), (258, 3, 1, 8), (259, 3, 1, 1), (262, 3, 1, 1), (273, 4, 1, 8),
               (277, 3, 1, 1), (278, 4, 1, 1), (279, 4, 1, 1), (34675, 7, size, 8)]
    return with_equal_pages(data, pages, entries)


def tiff_with_many_strips(pages, strips):
    """Every page has the same table of strips."""
    data = bytearray(b"II*\0" + struct.pack("<I", 8 + 4 * strips) + struct.pack("<I", 8) * strips)
    entries = [(256, 4, 1, 1), (257, 4, 1, strips), (258, 3, 1, 8), (259, 3, 1, 1), (262, 3, 1, 1),
               (273, 4, strips, 8), (277, 3, 1, 1), (278, 4, 1, 1), (279, 4, strips, 8)]
    return with_equal_pages(data, pages, entries)


def exif_with_shared_values(entries, size):
    """A JPEG whose EXIF entries all point to the same values."""
    block = bytearray(b"MM\0*" + struct.pack(">IH", 8, entries))
    for number in range(entries):
        block += struct.pack(">HHII", 0x9000 + number, 7, size, 100)
    block += bytes(max(0, 65000 - len(block)))
    return (b"\xff\xd8" + segment(0xE1, b"Exif\0\0" + block) + baseline_jpeg(16, 16)[2:])


def jpeg_with_profile_parts():
    part = segment(0xE2, b"ICC_PROFILE\0\x01\xff" + bytes(60000))
    return b"\xff\xd8" + part * 16 + baseline_jpeg(16, 16)[2:]


def palette_png(width, height):
    return png(width, height, 8, 3, before=chunk(b"PLTE", bytes(768)) + chunk(b"tRNS", bytes(256)))


def gif_with_extensions(count):
    plain = gif(16, 16)
    return plain[:19] + b"!\xfe\x01x\0" * count + plain[19:]


def run_length_tga(width, height):
    return struct.pack("<BBBHHBHHHHBB", 0, 0, 10, 0, 0, 0, 0, 0, width, height, 24, 0x20) + b"\xff\0\0\0" * 100


def packed_psd(width, height, resources=b"", rows=b""):
    return (b"8BPS" + struct.pack(">H6xHIIHH", 1, 3, height, width, 8, 3) + bytes(4)
            + struct.pack(">I", len(resources)) + resources + bytes(4) + b"\0\x01" + rows)


def psd_with_resources(count):
    return packed_psd(4, 4, (b"8BIM" + struct.pack(">HHI", 4000, 0, 0)) * count, b"\0\2" * 12 + b"\xfd\x7f" * 12)


def qoi(width, height):
    return b"qoif" + struct.pack(">IIBB", width, height, 3, 0) + b"\xfd" * 100


def run_length_pcx(width, height):
    return (struct.pack("<BBBBHHHHHH", 10, 5, 1, 8, 0, 0, width - 1, height - 1, 72, 72).ljust(65, b"\0")
            + struct.pack("<BHH", 3, width + width % 2, 1)).ljust(128, b"\0") + b"\xff\0" * 100


def sgi_with_shared_rows(width, height):
    """All rows of all channels are decoded from the same codes."""
    codes = b"\x7f\x55" * (width // 127 + 1)
    header = struct.pack(">HBBHHHHII", 474, 1, 1, 3, width, height, 3, 0, 255).ljust(512, b"\0")
    return header + struct.pack(">I", 512 + 24 * height) * 3 * height + bytes(12 * height) + codes


def icon_with_entries(count):
    """All entries are the same picture."""
    picture = struct.pack("<IiiHHIIIIII", 40, 16, 32, 1, 24, 0, 0, 0, 0, 0, 0) + bytes(48 * 16 + 4 * 16)
    entry = struct.pack("<BBBBHHII", 16, 16, 0, 0, 1, 24, len(picture), 6 + 16 * count)
    return struct.pack("<HHH", 0, 1, count) + entry * count + picture


def icon_with_elements(count):
    elements = b"info\0\0\0\x08" * count + b"ics8" + struct.pack(">I", 264) + bytes(256)
    return b"icns" + struct.pack(">I", 8 + len(elements)) + elements


SVG = '<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" width="1000" height="1000">'


def svg_with_uses(levels, uses):
    """The last group shows uses ** levels squares."""
    groups = "".join(f'<g id="g{i}">' + f'<use xlink:href="#g{i - 1}" x="1"/>' * uses + "</g>" for i in range(1, levels))
    return f'{SVG}<defs><g id="g0"><path d="M0 0h9v9z"/></g>{groups}</defs><use xlink:href="#g{levels - 1}"/></svg>'.encode()


def svg_with_entities(levels):
    entities = "".join(f'<!ENTITY e{i} "' + f"&e{i - 1};" * 10 + '">' for i in range(1, levels))
    return f'<!DOCTYPE svg [<!ENTITY e0 "text">{entities}]>{SVG}<text>&e{levels - 1};</text></svg>'.encode()


def svg_with_patterns(levels):
    patterns = "".join(f'<pattern id="p{i}" width="0.01" height="0.01">'
                       + f'<rect width="1000" height="1000" fill="url(#p{i - 1})"/>' * 3 + "</pattern>" for i in range(levels))
    return f'{SVG}<defs>{patterns}</defs><rect width="1000" height="1000" fill="url(#p{levels - 1})"/></svg>'.encode()


def svg_with_filters(kind, count, shapes):
    effects = f"<{kind}/>" * count
    shape = '<rect width="1000" height="1000" filter="url(#f)"/>'
    return f'{SVG}<filter id="f">{effects}</filter>{shape * shapes}</svg>'.encode()


def svg_with_groups(count):
    return (SVG + "<g>" * count + "</g>" * count + "</svg>").encode()


def svgz(length):
    return gzip.compress(SVG.encode() + b"<!--" + bytes([97]) * length + b"--></svg>")


def sensor_without_data(width, height):
    """A DNG file whose data are missing."""
    page = raw_files.sensor_page(numpy.zeros((8, 8), numpy.uint16), page=raw_files.camera())
    page.set(256, raw_files.LONG, [width]).set(257, raw_files.LONG, [height]).set(278, raw_files.LONG, [height])
    page.set(50706, raw_files.BYTE, [1, 4, 0, 0]).set(50708, raw_files.ASCII, "Maker Model")
    return raw_files.Tiff().file(page)
