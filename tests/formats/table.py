"""What a row of the table of formats consists of. The rows are in the other files of this folder, a file per family of
formats. test_formats.py tries every row; scripts/formats writes docs/formats.md from them."""
from dataclasses import dataclass, field
from typing import Callable


@dataclass(frozen=True)
class File:
    """A file to try. It must show `pixels` (rows, columns, channels) or what `judge`, a function of the path, returns: within
    one level per sample, or with `decibels` with at least this PSNR. A file without both only has to be converted."""
    name: str
    content: bytes
    pixels: object = None
    judge: Callable = None
    decibels: float = None
    options: tuple = ()
    tolerance: int = 1


@dataclass(frozen=True)
class Variant:
    """Files that are read, and how the page names them. `files` makes them."""
    text: str
    files: Callable


@dataclass(frozen=True)
class Refusal:
    """Files that are not read, the reason on the page, and a part of the message."""
    text: str
    reason: str
    message: str
    files: Callable


@dataclass(frozen=True)
class Format:
    """`libraries` are rows of docs/dependencies.md. `carriers` make, for what a file of this format can hold (a name in
    trial.KEPT), a file that holds it; which of it is kept is found by trying. `picture` makes a file of the given samples to
    measure the cost; `cost_note` qualifies the figures."""
    name: str
    libraries: tuple
    read: tuple
    refused: tuple = ()
    carriers: dict = field(default_factory=dict)
    ours: str = ""
    held: str = "nothing"
    notes: tuple = ()
    kept_notes: dict = field(default_factory=dict)
    picture: Callable = None
    cost_name: str = "a.bin"
    cost_note: str = ""
