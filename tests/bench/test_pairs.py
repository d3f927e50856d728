#!/usr/bin/python3
"""Where the median of ratios lies, and when that decides."""
import random
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "bench"))

from racing.pairs import CONFIDENCE, interval, verdict  # noqa: E402


class IntervalTest(unittest.TestCase):
    def test_few_ratios_say_nothing(self):
        self.assertIsNone(interval([1.0] * 7))  # all of 7 are on one side of the median by a chance of 1.6 %
        self.assertEqual(interval([1.0] * 8), (1.0, 1.0))

    def test_the_ends_are_those_of_the_binomial_distribution(self):
        self.assertEqual(interval([float(number) for number in range(1, 21)]), (4.0, 17.0))

    def test_it_holds_the_median_as_often_as_promised(self):
        generator = random.Random(5)
        tries = 4000
        held = 0
        for _ in range(tries):
            low, high = interval([generator.expovariate(1) for _ in range(25)])
            held += low <= 0.6931 <= high
        self.assertGreater(held / tries, CONFIDENCE - 0.004)


class VerdictTest(unittest.TestCase):
    def test_without_ratios_nothing_is_decided(self):
        self.assertEqual(verdict([], 1.03).word, "undecided")

    def test_slower_means_above_the_limit_with_confidence(self):
        self.assertEqual(verdict([1.05, 1.06, 1.04] * 5, 1.03).word, "SLOWER")

    def test_noise_around_the_limit_is_not_slower(self):
        result = verdict([0.9, 1.0, 1.1, 1.2] * 5, 1.03)
        self.assertEqual((result.word, result.is_slower), ("undecided", False))

    def test_equal_speed_is_decided(self):
        self.assertEqual(verdict([0.99, 1.0, 1.01] * 5, 1.03).word, "ok")


if __name__ == "__main__":
    unittest.main()
