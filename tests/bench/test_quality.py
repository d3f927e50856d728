#!/usr/bin/python3
"""Checks the measuring of quality against the small reference of the end-to-end tests and against known values."""
import sys
import unittest
from pathlib import Path

import numpy

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "bench"), str(ROOT / "tests/endtoend")]

import pictures as small_pictures  # noqa: E402
from racing import quality  # noqa: E402
from racing.tasks import Goal, Task  # noqa: E402


class QualityTest(unittest.TestCase):
    def test_our_geometry_is_that_of_the_dense_reference(self):
        samples = small_pictures.photo(300, 200)
        task = Task("T", "", "jpeg", 300, 200, "png", Goal(), longest=91)
        columns, rows = quality.our_centres((91, 60), task, (300, 200))
        light = quality.scaled(samples, columns, rows, quality.LIGHT)
        one, width, height = map(numpy.float32, (1, 300, 200))
        scale = float((numpy.float32(91) / width * height + one) / height)
        dense = small_pictures.lanczos(samples, scale, scale, int(300 * scale + 0.01), int(200 * scale + 0.01))
        self.assertEqual(dense[1:, :-1].shape, light.shape)
        self.assertLessEqual(abs(light - dense[1:, :-1]).max(), 0.51)

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

    def test_decibels_of_a_known_error(self):
        flat = numpy.zeros((20, 20, 3))
        self.assertAlmostEqual(quality.psnr(flat, flat + 1), 20 * numpy.log10(255))
        self.assertEqual(quality.psnr(flat, flat), 99)

    def test_similarity_is_one_for_the_same_and_less_for_noise(self):
        samples = small_pictures.photo(80, 60).astype(float)
        noisy = samples + numpy.random.default_rng(1).normal(0, 20, samples.shape)
        self.assertAlmostEqual(quality.ssim(samples, samples), 1)
        self.assertLess(quality.ssim(samples, noisy), 0.9)


if __name__ == "__main__":
    unittest.main()
