"""The quality of a result, compared with a full decode scaled by Lanczos in double precision, in linear light and in the
stored encoding, at the contestant's own pixel positions.

The curve is always that of sRGB, also for pictures with another profile. Few rows are processed at once, so a picture of
100 megapixels needs little more memory than its samples.
"""
from functools import lru_cache

import numpy
from PIL import Image

LOBES = 3
ROWS_AT_ONCE = 16
SAME_ASPECT = 0.01
LIGHT, STORED = "linear light", "stored encoding"


def to_light(stored):
    return numpy.where(stored <= 0.04045, stored / 12.92, ((stored + 0.055) / 1.055) ** 2.4)


def to_stored(light):
    light = numpy.clip(light, 0, 1)
    return numpy.where(light <= 0.0031308, light * 12.92, 1.055 * light ** (1 / 2.4) - 0.055)


def taps(centres, stretch, side):
    """The input positions (all inside the picture) and weights (their sum is one) for every output position."""
    reach = int(numpy.ceil(LOBES * stretch)) + 1
    positions = numpy.floor(centres).astype(int)[:, None] + numpy.arange(-reach, reach + 1)
    x = (positions + 0.5 - centres[:, None]) / stretch
    inside = (abs(x) < LOBES) & (positions >= 0) & (positions < side)
    weights = numpy.where(inside, numpy.sinc(x) * numpy.sinc(x / LOBES), 0)
    return positions.clip(0, side - 1), weights / weights.sum(axis=1, keepdims=True)


def peer_centres(side, result):
    """Maps the whole picture to the whole result."""
    return (numpy.arange(result) + 0.5) * side / result, side / result


def our_scales(task, width, height):
    """Maps result to source positions for both axes; all operations but the last use single precision. Each side is
    requested one larger than the box, and the extra row and column are cut off."""
    width, height, one, percent = map(numpy.float32, (width, height, 1, 100))
    if task.percent:
        ratio = numpy.float32(task.percent) / percent
    else:
        ratio = numpy.float32(task.longest) / (height if height >= width else width)
    asked_width, asked_height = ratio * width + one, ratio * height + one
    scale = asked_height / height
    aspect = (asked_width / asked_height) / (width / height)
    if abs(float(one - aspect)) <= SAME_ASPECT:
        aspect = one
    return float(scale) * float(aspect), float(scale)


def our_centres(result_size, task, size):
    """Columns count from the left edge and rows from the bottom one; the top row and the right column are cut off."""
    scale_x, scale_y = our_scales(task, *size)
    columns = (numpy.arange(result_size[0]) + 0.5) / scale_x
    rows = size[1] - (result_size[1] - numpy.arange(result_size[1]) - 0.5) / scale_y
    return (columns, 1 / scale_x), (rows, 1 / scale_y)


def scaled(samples, columns, rows, encoding):
    """Samples of 0 to 255 as doubles, scaled. Colour is multiplied by alpha, also in the result."""
    row_positions, row_weights = taps(*rows, samples.shape[0])
    column_positions, column_weights = taps(*columns, samples.shape[1])
    result = numpy.empty((len(row_positions), len(column_positions), samples.shape[2]))
    for first in range(0, len(row_positions), ROWS_AT_ONCE):
        block = slice(first, first + ROWS_AT_ONCE)
        lines = weighed_rows(samples, row_positions[block], row_weights[block], encoding)
        result[block] = sum(lines[:, column_positions[:, tap]] * column_weights[:, tap, None]
                            for tap in range(column_positions.shape[1]))
    return as_stored(result, encoding).clip(0, 1) * 255


def weighed_rows(samples, positions, weights, encoding):
    """The result's rows, as wide as the source."""
    low, high = positions.min(), positions.max() + 1
    matrix = numpy.zeros((len(positions), high - low))
    numpy.add.at(matrix, (numpy.arange(len(positions))[:, None], positions - low), weights)
    values = as_numbers(samples[low:high], encoding)
    return (matrix @ values.reshape(high - low, -1)).reshape(len(positions), *samples.shape[1:])


def as_numbers(samples, encoding):
    table = numpy.arange(256) / 255
    values = (to_light(table) if encoding == LIGHT else table)[samples[..., :3]]
    if samples.shape[2] == 3:
        return values
    alpha = table[samples[..., 3:]]
    return numpy.dstack([values * alpha, alpha])


def as_stored(result, encoding):
    """Converts linear light to the stored encoding; with alpha, divides the colour by it and multiplies again."""
    if encoding == STORED:
        return result
    if result.shape[2] == 3:
        return to_stored(result)
    alpha = result[..., 3:].clip(0, 1)
    color = numpy.divide(result[..., :3], alpha, out=numpy.zeros_like(result[..., :3]), where=alpha > 1e-6)
    return numpy.dstack([to_stored(color) * alpha, alpha])


def read(path, channels):
    """The samples as doubles; with alpha, colour multiplied by it."""
    with Image.open(path) as picture:
        samples = numpy.asarray(picture.convert("RGBA" if channels == 4 else "RGB")).astype(float)
    if channels == 4:
        samples[..., :3] *= samples[..., 3:] / 255
    return samples


def psnr(a, b):
    error = numpy.mean((a - b) ** 2)
    return 99.0 if error == 0 else float(10 * numpy.log10(255 ** 2 / error))


def blurred(plane):
    """A Gaussian window of 11 x 11 with a deviation of 1.5, where it fits inside the picture."""
    window = numpy.exp(-(numpy.arange(11) - 5) ** 2 / (2 * 1.5 ** 2))
    window /= window.sum()
    plane = sum(weight * plane[i:plane.shape[0] - 10 + i] for i, weight in enumerate(window))
    return sum(weight * plane[:, i:plane.shape[1] - 10 + i] for i, weight in enumerate(window))


def ssim(a, b):
    """Mean structural similarity of the luma."""
    a, b = (picture[..., :3] @ numpy.array([0.299, 0.587, 0.114]) for picture in (a, b))
    mean_a, mean_b = blurred(a), blurred(b)
    spread_a, spread_b = blurred(a * a) - mean_a ** 2, blurred(b * b) - mean_b ** 2
    together = blurred(a * b) - mean_a * mean_b
    small, large = (0.01 * 255) ** 2, (0.03 * 255) ** 2
    return float(numpy.mean((2 * mean_a * mean_b + small) * (2 * together + large)
                            / ((mean_a ** 2 + mean_b ** 2 + small) * (spread_a + spread_b + large))))


class Quality:
    """Judges results of one source picture for one task; the references are made once for each geometry."""

    def __init__(self, source, task):
        with Image.open(source) as picture:
            self.samples = numpy.asarray(picture.convert("RGBA" if picture.mode == "RGBA" else "RGB"))
        self.task = task
        self.reference = lru_cache(maxsize=None)(self._reference)

    def _reference(self, ours, width, height, encoding):
        side_y, side_x, _ = self.samples.shape
        if ours:
            columns, rows = our_centres((width, height), self.task, (side_x, side_y))
        else:
            columns, rows = peer_centres(side_x, width), peer_centres(side_y, height)
        return scaled(self.samples, columns, rows, encoding)

    def judge(self, path, ours):
        """Decibels against each reference, and the structural similarity to the nearer one."""
        result = read(path, self.samples.shape[2])
        height, width, _ = result.shape
        references = {encoding: self.reference(ours, width, height, encoding) for encoding in (LIGHT, STORED)}
        decibels = {encoding: psnr(result, reference) for encoding, reference in references.items()}
        nearer = max(decibels, key=decibels.get)
        return {LIGHT: decibels[LIGHT], STORED: decibels[STORED], "ssim": ssim(result, references[nearer]),
                "blurred": max(psnr(blurred_all(result), blurred_all(reference))
                                      for reference in references.values())}


def blurred_all(samples):
    return numpy.dstack([blurred(samples[..., channel]) for channel in range(samples.shape[2])])
