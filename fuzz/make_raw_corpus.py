#!/usr/bin/python3
"""Makes the files in corpus/raw. The decoder's tests read them as well, so they name what they show.
Usage: make_raw_corpus.py"""
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "tests" / "endtoend"))
import raw_files as raw  # noqa: E402
from write_corpus import write_corpus  # noqa: E402

SENSOR = (48, 32)
LARGE, SMALL = (46, 30), (40, 28)  # at least 90 % of both sides, and less


def files():
    yield "developed.dng", raw.dng(*SENSOR)
    yield "developed-turned.dng", raw.dng(*SENSOR, orientation=6)
    yield "developed-mirrored.dng", raw.dng(*SENSOR, orientation=2)
    yield "developed-linear.dng", raw.dng(*SENSOR, photometric=raw.LINEAR_RAW)
    yield "small-preview.dng", raw.dng(*SENSOR, preview=SMALL)
    yield "large-preview.dng", raw.dng(*SENSOR, preview=LARGE, order=">")
    yield "large-preview-mirrored.dng", raw.dng(*SENSOR, preview=LARGE, orientation=5)
    yield "large-preview-turned.nef", raw.nef(*SENSOR, LARGE, 6)
    yield "large-preview-turned-already.nef", raw.nef(*SENSOR, LARGE[::-1], 6)
    yield "large-preview.cr2", raw.cr2(*SENSOR, LARGE)
    yield "large-preview.arw", raw.arw(*SENSOR, LARGE)
    yield "large-preview.pef", raw.pef(*SENSOR, LARGE)
    yield "large-preview.rw2", raw.rw2(*SENSOR, LARGE)
    yield "large-preview.orf", raw.orf(*SENSOR, LARGE)
    yield "large-preview-turned.raf", raw.raf(*SENSOR, LARGE, 8)
    yield "large-preview.cr3", raw.cr3(*SENSOR, LARGE)
    yield "small-preview.cr2", raw.cr2(*SENSOR, SMALL)


if __name__ == "__main__":
    write_corpus("raw", files())
