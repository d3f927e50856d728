#!/usr/bin/python3
"""The chart of the races."""
import sys
import unittest
import xml.etree.ElementTree
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "bench"))

from racing import chart  # noqa: E402
from racing.chart import Race  # noqa: E402

SVG = "{http://www.w3.org/2000/svg}"
PAGE = """# Benchmarks

## T1: one & all

Rounds: 5; 6000 x 4000, 2.0 bits per pixel; the fastest peer is sharp.

| kestrine | 0.25 (0.2-0.3) | 0.2 |
| kestrine, libjpeg-turbo | 0.40 (0.2-0.3) | 0.2 |
| sharp | 1.00 (1.00-1.00) | 1.00 |

## T2-mixed: slower than the peer

Rounds: 5; 6000 x 4000, 2.0 bits per pixel; the fastest peer is vipsthumbnail --linear.

| kestrine | 2.00 (0.2-0.3) | 0.2 |

## T3: without peers

Rounds: 5; 6000 x 4000, 2.0 bits per pixel.

| kestrine |  |  |

## Growth with pixels

| kestrine | 0.5 |
"""


class ChartTest(unittest.TestCase):
    def test_the_races_of_a_page_are_its_tasks_with_peers(self):
        self.assertEqual(chart.races_in(PAGE), [Race("one & all", "sharp", 0.25),
                                                Race("slower than the peer", "vipsthumbnail --linear", 2.0)])

    def test_bars_have_the_lengths_of_the_ratios(self):
        drawing = xml.etree.ElementTree.fromstring(chart.chart_of(PAGE))
        lengths = {kind: [float(bar.get("width")) for bar in drawing.iter(SVG + "rect") if bar.get("class") == kind]
                   for kind in ("ours", "peer")}
        full = chart.BAR_LENGTH
        self.assertEqual(lengths, {"ours": [round(full / 8, 1), full], "peer": [full / 2, full / 2]})

    def test_the_chart_in_the_documents_is_that_of_the_page(self):
        page = (ROOT / "docs/benchmarks.md").read_text()
        self.assertGreater(len(chart.races_in(page)), 10)
        self.assertEqual((ROOT / "docs/images/races.svg").read_text(), chart.chart_of(page))


if __name__ == "__main__":
    unittest.main()
