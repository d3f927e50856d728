#!/usr/bin/env python3
"""Makes a WebP file of at most 1200 pixels from a picture, with nothing but Python and libkestrine.
Usage: convert.py PICTURE RESULT"""
import ctypes
import json
import os
import sys

library = ctypes.CDLL("libkestrine.so.0")
library.kestrine_error_text.restype = ctypes.c_char_p
library.kestrine_close.argtypes = [ctypes.c_void_p]
library.kestrine_convert_to_memory.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_void_p]


class Buffer(ctypes.Structure):
    _fields_ = [("bytes", ctypes.c_void_p), ("length", ctypes.c_size_t)]


def check(status):
    if status != 0:
        sys.exit(os.fsdecode(library.kestrine_error_text()))


def converted(path, **options):
    """The bytes of the result."""
    picture, result = ctypes.c_void_p(), Buffer()
    check(library.kestrine_open_path(os.fsencode(path), ctypes.byref(picture)))
    try:
        check(library.kestrine_convert_to_memory(picture, json.dumps(options).encode(), ctypes.byref(result)))
        return ctypes.string_at(result.bytes, result.length)
    finally:
        library.kestrine_free(ctypes.byref(result))
        library.kestrine_close(picture)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit("usage: convert.py PICTURE RESULT")
    content = converted(sys.argv[1], longest=1200, format="webp")
    with open(sys.argv[2], "wb") as file:
        file.write(content)
