"""Makes HEIF and AVIF files of every structure, from pictures that heif-enc and avifenc compress. Written without our own
code, and by hand, because these programs write few of the structures."""
import pathlib
import struct
import subprocess
import tempfile

from PIL import Image


def box(kind, *content):
    data = b"".join(content)
    return struct.pack(">I4s", 8 + len(data), kind.encode()) + data


def full_box(kind, version, flags, *content):
    return box(kind, struct.pack(">I", version << 24 | flags), *content)


def boxes(data):
    """The boxes in `data`, as pairs of type and content."""
    position = 0
    while position < len(data):
        size, kind = struct.unpack_from(">I4s", data, position)
        header = 8
        if size == 1:
            size, header = struct.unpack_from(">Q", data, position + 8)[0], 16
        size = size or len(data) - position
        yield kind.decode("latin-1"), data[position + header:position + size]
        position += size


def child(data, *kinds):
    """The content of the first box of the kind kinds[-1] in the first box of kinds[-2] and so on; full boxes with
    children are "meta" only."""
    for kind in kinds:
        data = next(content for name, content in boxes(data) if name == kind)
        if kind == "meta":
            data = data[4:]
    return data


# Properties of items.
def ispe(width, height):
    return full_box("ispe", 0, 0, struct.pack(">II", width, height))


def irot(quarters):
    """Counter-clockwise."""
    return box("irot", bytes([quarters]))


def imir(left_right):
    return box("imir", bytes([left_right]))


def clap(width, height, right=(0, 1), down=(0, 1)):
    return box("clap", struct.pack(">IIIIiIiI", width, 1, height, 1, *right, *down))


def nclx(primaries, transfer, matrix, full_range=True):
    return box("colr", b"nclx", struct.pack(">HHHB", primaries, transfer, matrix, full_range << 7))


def prof(profile):
    return box("colr", b"prof", profile)


def pixi(*bits):
    return full_box("pixi", 0, 0, bytes([len(bits), *bits]))


def auxc(kind="urn:mpeg:mpegB:cicp:systems:auxiliary:alpha"):
    return full_box("auxC", 0, 0, kind.encode() + b"\0")


class Coded:
    """A compressed picture: the type of its item, its data and its configuration (hvcC or av1C)."""

    def __init__(self, kind, data, configuration, size, bits):
        self.kind, self.data, self.configuration, self.size, self.bits = kind, data, configuration, size, bits

    def properties(self, *more):
        return [self.configuration, ispe(*self.size), pixi(*self.bits), *more]


def items_of(file):
    """The items of a file that has its places in the simplest form, as a dictionary of (type, data, properties)."""
    meta = child(file, "meta")
    types = {}
    for kind, entry in boxes(child(meta, "iinf")[6:]):
        types[struct.unpack_from(">H", entry, 4)[0]] = entry[8:12].decode()
    places = child(meta, "iloc")
    version, sizes = places[0], struct.unpack_from(">H", places, 4)[0]
    offset_size, length_size, base_size = sizes >> 12, sizes >> 8 & 15, sizes >> 4 & 15
    position = 8
    def number(size):
        nonlocal position
        position += size
        return int.from_bytes(places[position - size:position], "big")
    data = {}
    for _ in range(struct.unpack_from(">H", places, 6)[0]):
        item = number(2)
        method = number(2) & 15 if version else 0
        number(2)
        base = number(base_size)
        source = child(meta, "idat") if method == 1 else file
        data[item] = b""
        for _ in range(number(2)):
            offset = base + number(offset_size)
            data[item] += source[offset:offset + number(length_size)]
    container = child(meta, "iprp", "ipco")
    known = [struct.pack(">I4s", 8 + len(content), kind.encode("latin-1")) + content for kind, content in boxes(container)]
    associations = child(meta, "iprp", "ipma")
    count, position, properties = struct.unpack_from(">I", associations, 4)[0], 8, {}
    for _ in range(count):
        item, indexes = struct.unpack_from(">HB", associations, position)
        position += 3
        properties[item] = [known[(index & 127) - 1] for index in associations[position:position + indexes]]
        position += indexes
    return {item: (types[item], data[item], properties[item] if item in properties else []) for item in types}


def coded(file):
    """The first compressed picture in a file."""
    for item_kind, data, properties in items_of(file).values():
        if item_kind in ("hvc1", "av01"):
            configuration = next(p for p in properties if p[4:8] in (b"hvcC", b"av1C"))
            size = next(struct.unpack(">II", p[12:20]) for p in properties if p[4:8] == b"ispe")
            bits = next((p[13:] for p in properties if p[4:8] == b"pixi"), b"\x08\x08\x08")
            return Coded(item_kind, data, configuration, size, bits)
    raise ValueError("no compressed picture")


def encoded(image, *options, codec="hevc"):
    """The file that heif-enc (codec "hevc") or avifenc makes of a Pillow image."""
    with tempfile.TemporaryDirectory() as folder:
        source, result = pathlib.Path(folder) / "a.png", pathlib.Path(folder) / ("a.heic" if codec == "hevc" else "a.avif")
        if isinstance(image, (bytes, bytearray)):
            source.write_bytes(image)
        else:
            image.save(source, icc_profile=None)
        program = ["heif-enc", *options, source, "-o", result] if codec == "hevc" else ["avifenc", *options, source, result]
        subprocess.run(program, check=True, capture_output=True)
        return result.read_bytes()


def tile(image, *options, codec="hevc"):
    return coded(encoded(image, *options, codec=codec))


class File:
    """A file that is put together from items."""

    def __init__(self, brand="heic"):
        self.brand, self.items, self.references, self.primary = brand, [], [], 1

    def add(self, kind, data=b"", properties=(), hidden=False, method=0, unknown=()):
        """Adds an item and returns its number. `method` says where its data go: 0 into the file, 1 into the header; with
        2 they are the first bytes of the item that a reference "iloc" leads to. Properties in `unknown` are marked as
        essential."""
        self.items.append((kind, data, list(properties), hidden, method, list(unknown)))
        return len(self.items)

    def add_coded(self, picture, *properties, hidden=False, method=0):
        return self.add(picture.kind, picture.data, picture.properties(*properties), hidden, method)

    def refer(self, kind, source, *targets):
        self.references.append((kind, source, targets))

    def add_grid(self, tiles, columns, width, height, *properties, method=1):
        """`tiles` are numbers of items, row by row."""
        rows = len(tiles) // columns
        description = struct.pack(">BBBBHH", 0, 0, rows - 1, columns - 1, width, height)
        number = self.add("grid", description, [ispe(width, height), pixi(8, 8, 8), *properties], method=method)
        self.refer("dimg", number, *tiles)
        return number

    def add_exif(self, target, block, prefix=b""):
        number = self.add("Exif", struct.pack(">I", len(prefix)) + prefix + block)
        self.refer("cdsc", number, target)
        return number

    def header(self, file_offset):
        """The box meta, and the data of the items; `file_offset` is where the latter will lie."""
        container, associations, entries, places, file_data, header_data = [], [], [], [], b"", b""
        indexed = any(item[4] == 2 for item in self.items)  # other programs cannot read places with unused indexes
        for number, (kind, data, properties, hidden, method, unknown) in enumerate(self.items, 1):
            entries.append(full_box("infe", 2, int(hidden), struct.pack(">HH4s", number, 0, kind.encode()), b"\0"))
            indexes = b""
            for property in [*properties, *unknown]:
                if property not in container:
                    container.append(property)
                essential = property in unknown or property[4:8] in (b"irot", b"imir", b"clap", b"hvcC", b"av1C", b"lsel")
                indexes += struct.pack(">H", essential << 15 | container.index(property) + 1)
            if indexes:
                associations.append(struct.pack(">HB", number, len(indexes) // 2) + indexes)
            offset = (file_offset + len(file_data), len(header_data), 0)[method]
            place = struct.pack(">HHHH", number, method, 0, 1)
            place += struct.pack(">I", 1) if indexed else b""  # of the item that has the data
            places.append(place + struct.pack(">II", offset, len(data)))
            if method == 1:
                header_data += data
            elif method == 0:
                file_data += data
        references = [box(kind, struct.pack(">HH", source, len(targets)), struct.pack(f">{len(targets)}H", *targets))
                      for kind, source, targets in self.references]
        content = [full_box("hdlr", 0, 0, struct.pack(">I4s12x", 0, b"pict"), b"\0"),
                   full_box("pitm", 0, 0, struct.pack(">H", self.primary)),
                   full_box("iloc", 1, 0, struct.pack(">HH", 0x4404 if indexed else 0x4400, len(places)), *places),
                   full_box("iinf", 0, 0, struct.pack(">H", len(entries)), *entries),
                   full_box("iref", 0, 0, *references) if references else b"",
                   box("iprp", box("ipco", *container),
                       full_box("ipma", 0, 1, struct.pack(">I", len(associations)), *associations)),
                   box("idat", header_data) if header_data else b""]
        return full_box("meta", 0, 0, *content), file_data

    def file(self):
        start = box("ftyp", self.brand.encode(), struct.pack(">I", 0), b"mif1", self.brand.encode())
        length = len(self.header(0)[0])
        meta, data = self.header(len(start) + length + 8)
        return start + meta + box("mdat", data)


def grid(samples, tile_size, *options, codec="hevc", properties=(), brand=None, before=()):
    """A file of tiles, as telephones write it. The tiles at the right and bottom edges repeat the last pixels."""
    image = Image.fromarray(samples)
    height, width = samples.shape[:2]
    columns, rows = -(-width // tile_size), -(-height // tile_size)
    whole = Image.new(image.mode, (columns * tile_size, rows * tile_size))
    whole.paste(image, (0, 0))
    if whole.width > width:
        whole.paste(image.crop((width - 1, 0, width, height)).resize((whole.width - width, height)), (width, 0))
    if whole.height > height:
        whole.paste(whole.crop((0, height - 1, whole.width, height)).resize((whole.width, whole.height - height)), (0, height))
    made = File(brand or ("heic" if codec == "hevc" else "avif"))
    tiles = []
    for y in range(rows):
        for x in range(columns):
            area = (x * tile_size, y * tile_size, (x + 1) * tile_size, (y + 1) * tile_size)
            picture = tile(whole.crop(area), *options, codec=codec)
            tiles.append(made.add_coded(picture, *before, hidden=True))
    made.primary = made.add_grid(tiles, columns, width, height, *properties)
    return made
