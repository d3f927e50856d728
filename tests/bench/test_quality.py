#!/usr/bin/python3
"""Checks the measuring of quality: by plain loops, known values, and the dense reference of the end-to-end tests."""
import math
import sys
import unittest
from pathlib import Path

import numpy

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "bench"), str(ROOT / "tests/endtoend")]

import pictures as small_pictures  # noqa: E402
from racing import quality  # noqa: E402
from racing.tasks import Goal, Task  # noqa: E402


def task_of(width, height, **size):
    return Task("T", "", "png", width, height, "png", Goal(), **size)


def lanczos(x):
    if x == 0:
        return 1.0
    return math.sin(math.pi * x) * math.sin(math.pi * x / 3) * 3 / (math.pi * x) ** 2 if abs(x) < 3 else 0.0


def to_light(stored):
    return stored / 12.92 if stored <= 0.04045 else ((stored + 0.055) / 1.055) ** 2.4


def to_stored(light):
    return light * 12.92 if light <= 0.0031308 else 1.055 * light ** (1 / 2.4) - 0.055


def sample_by_loops(samples, centre_x, centre_y, stretch_x, stretch_y, channel, linear):
    """One sample of the result, straight from the definition of the filter."""
    total = weights = 0.0
    for y in range(samples.shape[0]):
        for x in range(samples.shape[1]):
            weight = lanczos((x + 0.5 - centre_x) / stretch_x) * lanczos((y + 0.5 - centre_y) / stretch_y)
            value = samples[y, x, channel] / 255
            total += weight * (to_light(value) if linear else value)
            weights += weight
    value = min(max(total / weights, 0), 1)
    return 255 * (to_stored(value) if linear else value)


class ReferenceTest(unittest.TestCase):
    def assert_like_loops(self, samples, columns, rows, encoding):
        result = quality.scaled(samples, columns, rows, encoding)
        for j, centre_y in enumerate(rows[0]):
            for i, centre_x in enumerate(columns[0]):
                for channel in range(3):
                    expected = sample_by_loops(samples, centre_x, centre_y, columns[1], rows[1], channel,
                                               encoding == quality.LIGHT)
                    self.assertAlmostEqual(result[j, i, channel], expected, places=9)

    def test_a_peer_s_reference_is_what_plain_loops_give(self):
        samples = small_pictures.photo(23, 17)
        columns = ((numpy.arange(7) + 0.5) * 23 / 7, 23 / 7)
        rows = ((numpy.arange(5) + 0.5) * 17 / 5, 17 / 5)
        for encoding in (quality.LIGHT, quality.STORED):
            self.assert_like_loops(samples, columns, rows, encoding)
        self.assertEqual(quality.peer_centres(23, 7)[1], 23 / 7)
        numpy.testing.assert_array_equal(quality.peer_centres(17, 5)[0], rows[0])

    def test_our_reference_is_what_plain_loops_give(self):
        samples = small_pictures.photo(24, 16)
        columns, rows = quality.our_centres((8, 4), task_of(24, 16, longest=8), (24, 16))
        scale = (8 / 24 * 16 + 1) / 16
        self.assertAlmostEqual(rows[0][-1], 16 - 0.5 / scale, places=5)
        self.assert_like_loops(samples, columns, rows, quality.LIGHT)

    def test_our_geometry_is_that_of_the_dense_reference(self):
        samples = small_pictures.photo(300, 200)
        columns, rows = quality.our_centres((91, 60), task_of(300, 200, longest=91), (300, 200))
        light = quality.scaled(samples, columns, rows, quality.LIGHT)
        one, width, height = map(numpy.float32, (1, 300, 200))
        scale = float((numpy.float32(91) / width * height + one) / height)
        dense = small_pictures.lanczos(samples, scale, scale, int(300 * scale + 0.01), int(200 * scale + 0.01))
        self.assertEqual(dense[1:, :-1].shape, light.shape)
        self.assertLessEqual(abs(light - dense[1:, :-1]).max(), 0.51)

    def test_one_scale_for_both_axes_unless_the_shape_changes_by_more_than_a_hundredth(self):
        same = quality.our_scales(task_of(6000, 4000, longest=1200), 6000, 4000)
        self.assertEqual(same[0], same[1])
        other = quality.our_scales(task_of(122, 81, longest=40), 122, 81)
        self.assertAlmostEqual(other[0], 41 / 122, places=6)
        self.assertAlmostEqual(other[1], (40 / 122 * 81 + 1) / 81, places=6)

    def test_the_percentage_asks_each_side_one_larger(self):
        scale_x, scale_y = quality.our_scales(task_of(4000, 3000, percent=50), 4000, 3000)
        self.assertAlmostEqual(scale_y, 1501 / 3000, places=7)
        self.assertEqual(scale_x, scale_y)

    def test_a_flat_picture_stays_flat_in_both_encodings(self):
        samples = numpy.full((40, 60, 3), 77, numpy.uint8)
        for encoding in (quality.LIGHT, quality.STORED):
            result = quality.scaled(samples, quality.peer_centres(60, 20), quality.peer_centres(40, 13), encoding)
            self.assertLess(abs(result - 77).max(), 1e-9)

    def test_a_peer_gives_the_left_half_to_the_left_half(self):
        samples = numpy.zeros((40, 60, 3), numpy.uint8)
        samples[:, :30] = 255
        result = quality.scaled(samples, quality.peer_centres(60, 20), quality.peer_centres(40, 13), quality.STORED)
        self.assertLess(abs(result + result[:, ::-1] - 255).max(), 1e-9)

    def test_the_color_of_clear_pixels_does_not_show(self):
        samples = numpy.zeros((40, 40, 4), numpy.uint8)
        samples[..., 1] = 255
        samples[:, 20:] = (200, 0, 0, 255)
        result = quality.scaled(samples, quality.peer_centres(40, 10), quality.peer_centres(40, 10), quality.LIGHT)
        self.assertEqual(result[..., 1].max(), 0)


class FiguresTest(unittest.TestCase):
    def test_decibels_of_a_known_error(self):
        flat = numpy.zeros((20, 20, 3))
        self.assertAlmostEqual(quality.psnr(flat, flat + 1), 20 * numpy.log10(255))
        self.assertEqual(quality.psnr(flat, flat), 99)

    def test_similarity_is_one_for_the_same_and_less_for_noise(self):
        samples = small_pictures.photo(80, 60).astype(float)
        noisy = samples + numpy.random.default_rng(1).normal(0, 20, samples.shape)
        self.assertAlmostEqual(quality.ssim(samples, samples), 1)
        self.assertLess(quality.ssim(samples, noisy), 0.9)

    def test_similarity_of_flat_pictures_is_that_of_their_means(self):
        dark, bright = numpy.full((20, 20, 3), 100.0), numpy.full((20, 20, 3), 120.0)
        small = (0.01 * 255) ** 2
        self.assertAlmostEqual(quality.ssim(dark, bright), (2 * 100 * 120 + small) / (100 ** 2 + 120 ** 2 + small))


if __name__ == "__main__":
    unittest.main()
