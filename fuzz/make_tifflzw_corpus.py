#!/usr/bin/python3
"""Makes the files in corpus/tifflzw: three bytes of a recipe (tifflzw.cpp) and LZW data. Usage: make_tifflzw_corpus.py"""
import io

import numpy
from PIL import Image

from write_corpus import write_corpus

BIG_ENDIAN, TILED, DIFFERENCES, BITS_16, BITS_4 = 1, 2, 4, 8, 16


def lzw(samples):
    """The data of one strip, as libtiff compresses bytes."""
    stream = io.BytesIO()
    Image.fromarray(samples.reshape(1, -1)).save(stream, "TIFF", compression="tiff_lzw", tiffinfo={278: 1})
    tags = Image.open(io.BytesIO(stream.getvalue())).tag_v2
    return stream.getvalue()[tags[273][0]:][:tags[279][0]]


def recipe(flags, samples, width, height):
    return bytes([flags | (samples - 1) << 5, width - 1, height - 1])


def files():
    random = numpy.random.default_rng(1)
    noise = random.integers(0, 256, 60 * 70 * 3, numpy.uint8)
    few = random.integers(0, 3, 60 * 70 * 3, numpy.uint8)
    flat = numpy.full(60 * 70 * 3, 9, numpy.uint8)
    mixed = numpy.where(numpy.arange(noise.size) // 500 % 2 == 0, noise, flat).astype(numpy.uint8)
    for name, samples in (("noise", noise), ("few", few), ("flat", flat), ("mixed", mixed)):
        yield f"{name}-rgb", recipe(0, 3, 60, 70) + lzw(samples)
        yield f"{name}-differences", recipe(DIFFERENCES, 3, 60, 70) + lzw(samples)
    yield "words", recipe(DIFFERENCES | BITS_16 | BIG_ENDIAN, 1, 60, 70) + lzw(noise[:2 * 60 * 70])
    yield "nibbles", recipe(BITS_4, 1, 60, 70) + lzw(mixed[:60 * 70 // 2])
    yield "tile", recipe(TILED | DIFFERENCES, 4, 32, 16) + lzw(mixed[:32 * 16 * 4])
    yield "cut", recipe(0, 1, 60, 70) + lzw(noise[:60 * 70])[:4000]
    yield "old-order", recipe(0, 1, 2, 2) + bytes([0, 1, 2, 4, 8, 16])
    yield "no-clear-code", recipe(0, 1, 2, 2) + bytes([0x30, 0x98, 0x8C, 0x66])


write_corpus("tifflzw", list(files()))
