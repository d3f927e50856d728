"""Writes TIFF files of every kind by libtiff itself, which Pillow and ImageMagick offer only in part."""
import ctypes
import tempfile
from pathlib import Path

import numpy

NONE, RLE, FAX3, FAX4, LZW, JPEG, ADOBE_DEFLATE, PACKBITS, DEFLATE = 1, 2, 3, 4, 5, 7, 8, 32773, 32946
FAX_WORDS, PIXARLOG, LOGLUV, LOGLUV_24, JBIG, LERC, LZMA, ZSTD, WEBP = 32771, 32909, 34676, 34677, 34661, 34887, 34925, 50000, 50001
WHITE_IS_ZERO, BLACK_IS_ZERO, RGB, INDEXED, INKS, YCBCR, LAB, ICC_LAB, LOG_L, LOG_LUV = 0, 1, 2, 3, 5, 6, 8, 9, 32844, 32845
SIGNED, REAL, COMPLEX = 2, 3, 6

WIDTH_TAG, HEIGHT_TAG, BITS, COMPRESSION, PHOTOMETRIC, FILL_ORDER = 256, 257, 258, 259, 262, 266
SAMPLES, ROWS, PLANAR, FAX3_OPTIONS, PREDICTOR, TILE_WIDTH, TILE_HEIGHT, INK_SET = 277, 278, 284, 292, 317, 322, 323, 332
COLOR_MAP, EXTRA_SAMPLES, SAMPLE_FORMAT, SUBSAMPLING, PROFILE, JPEG_MODE, SGILOG_FORMAT, WEBP_LOSSLESS = (
    320, 338, 339, 530, 34675, 65538, 65560, 65569)

library = ctypes.CDLL("libtiff.so.6")
library.TIFFOpen.restype = ctypes.c_void_p
for name in ("TIFFWriteEncodedStrip", "TIFFWriteEncodedTile"):
    getattr(library, name).restype = ctypes.c_ssize_t
library.TIFFSetErrorHandler(None)
library.TIFFSetWarningHandler(None)


def packed(samples, bits):
    """Rows of samples as bytes; samples that are not whole bytes follow one another without gaps."""
    rows = samples.reshape(samples.shape[0], -1)
    if bits % 8 == 0 and samples.dtype.itemsize * 8 == bits:
        return rows.tobytes()
    shifts = numpy.arange(bits, dtype=numpy.uint64)[::-1]
    digits = (rows[..., None].astype(numpy.uint64) >> shifts & numpy.uint64(1)).astype(numpy.uint8)
    return numpy.packbits(digits.reshape(rows.shape[0], -1), axis=1).tobytes()


class Writer:
    def __init__(self, path, mode):
        self.file = ctypes.c_void_p(library.TIFFOpen(str(path).encode(), mode.encode()))
        assert self.file

    def set(self, tag, *values):
        converted = [ctypes.c_int(value) if isinstance(value, int) else value for value in values]
        assert library.TIFFSetField(self.file, ctypes.c_uint32(tag), *converted) == 1, tag

    def strip(self, number, data):
        written = library.TIFFWriteEncodedStrip(self.file, ctypes.c_uint32(number), data, ctypes.c_ssize_t(len(data)))
        assert written == len(data), (written, len(data))

    def tile(self, number, data):
        written = library.TIFFWriteEncodedTile(self.file, ctypes.c_uint32(number), data, ctypes.c_ssize_t(len(data)))
        assert written == len(data), (written, len(data))


def parts_of(samples, planar):
    return [samples[..., channel:channel + 1] for channel in range(samples.shape[2])] if planar else [samples]


def write_strips(writer, samples, bits, planar, rows):
    number = 0
    for part in parts_of(samples, planar):
        for top in range(0, samples.shape[0], rows):
            writer.strip(number, packed(part[top:top + rows], bits))
            number += 1


def write_tiles(writer, samples, bits, planar, side):
    number = 0
    height, width = samples.shape[:2]
    for part in parts_of(samples, planar):
        full = numpy.pad(part, ((0, -height % side), (0, -width % side), (0, 0)), mode="edge")
        for top in range(0, height, side):
            for left in range(0, width, side):
                writer.tile(number, packed(full[top:top + side, left:left + side], bits))
                number += 1


def tiff(samples, compression=NONE, photometric=None, bits=None, mode="w", planar=False, tile=None, rows=7, tags=()):
    """The bytes of a file. `samples` has rows, columns and channels; `tags` are tuples for TIFFSetField."""
    channels = samples.shape[2]
    bits = bits or samples.dtype.itemsize * 8
    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder) / "a.tif"
        writer = Writer(path, mode)
        photometric = photometric if photometric is not None else RGB if channels >= 3 else BLACK_IS_ZERO
        for tag, value in ((WIDTH_TAG, samples.shape[1]), (HEIGHT_TAG, samples.shape[0]), (SAMPLES, channels), (BITS, bits),
                           (COMPRESSION, compression), (PHOTOMETRIC, photometric), (PLANAR, 2 if planar else 1)):
            writer.set(tag, value)
        for tag, value in ((TILE_WIDTH, tile), (TILE_HEIGHT, tile)) if tile else ((ROWS, rows),):
            writer.set(tag, value)
        for tag in tags:
            writer.set(*tag)
        if tile:
            write_tiles(writer, samples, bits, planar, tile)
        else:
            write_strips(writer, samples, bits, planar, rows)
        library.TIFFClose(writer.file)
        return path.read_bytes()


def extra(*kinds):
    """Marks the samples after the colours: 0 unknown, 1 alpha that is multiplied in, 2 alpha."""
    return EXTRA_SAMPLES, len(kinds), (ctypes.c_uint16 * len(kinds))(*kinds)


def color_map(colors):
    """Colours of 16 bits, one in a row."""
    return COLOR_MAP, *[(ctypes.c_uint16 * len(colors))(*map(int, colors[:, channel])) for channel in range(3)]


def profile(content):
    return PROFILE, len(content), ctypes.c_char_p(content)
