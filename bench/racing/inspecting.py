"""Checks the outputs of a run: whether they are as requested, their size, and the metadata they keep."""
from dataclasses import dataclass, field

from PIL import Image

from racing.measuring import RunFailed

CAMERA_DIRECTORY, MAKER, EXPOSURE = 0x8769, 0x010F, 0x829A


@dataclass
class Outcome:
    """`bytes` of all files; `kept`: profile, EXIF; the quality of the scaled pixels and of the file, where measured."""
    bytes: int
    kept: str
    size: tuple
    scaling: dict = field(default_factory=dict)
    file: dict = field(default_factory=dict)


def kept_in(path):
    with Image.open(path) as picture:
        tags = picture.getexif()
        has_exif = MAKER in tags and EXPOSURE in tags.get_ifd(CAMERA_DIRECTORY)
        has_profile = bool(picture.info.get("icc_profile"))
    return ", ".join([*["profile"] * has_profile, *["EXIF"] * has_exif]) or "nothing"


def check(outputs, task):
    """Fails unless the first output has the requested size, within one pixel for rounding."""
    with Image.open(outputs[0]) as picture:
        size = picture.size
    wanted_width = task.box[0]
    wanted_height = wanted_width * task.height / task.width
    if abs(size[0] - wanted_width) > 1 or abs(size[1] - wanted_height) > 2:
        raise RunFailed(f"came out as {size[0]} x {size[1]}")
    return size


def outcome_of(outputs, task):
    size = check(outputs, task)
    return Outcome(sum(path.stat().st_size for path in outputs), kept_in(outputs[0]), size)
