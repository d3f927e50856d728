#!/usr/bin/python3
"""The built tool against the reference that the races judge it by: size and positions must be the same."""
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "bench"), str(ROOT / "tests/endtoend")]

import pictures as small_pictures  # noqa: E402
from racing import quality, tasks  # noqa: E402
from tools import PNG, ToolTest  # noqa: E402

RESIZE_RATIO, RESIZE_LONGEST = 1, 2


class GeometryTest(ToolTest):
    def judged(self, task):
        source = Path(tempfile.mkdtemp(dir=self.home)) / "p.png"
        small_pictures.image(small_pictures.photo(task.width, task.height)).save(source)
        (self.folder / "p.png").write_bytes(source.read_bytes())
        asked = ({"resizeType": RESIZE_RATIO, "ratio": float(task.percent)} if task.percent
                 else {"resizeType": RESIZE_LONGEST, "maxSize": task.longest - 1.0})
        result = self.convert({"formatType": PNG, **asked}, "p.png")[-1]
        return quality.Quality(source, task).judge(result, True)

    def test_the_tool_is_judged_at_its_own_positions(self):
        for width, height, size in ((600, 400, {"longest": 120}), (400, 600, {"longest": 120}),
                                    (122, 81, {"longest": 48}), (400, 300, {"percent": 50}),
                                    (611, 401, {"percent": 25})):
            with self.subTest(width=width, height=height, **size):
                task = tasks.Task("T", "", "png", width, height, "png", tasks.Goal(), **size)
                self.assertGreater(self.judged(task)[quality.LIGHT], 57)


if __name__ == "__main__":
    unittest.main()
