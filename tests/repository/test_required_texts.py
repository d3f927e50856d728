"""The required texts are in the sources, byte for byte."""
import re
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
SOURCES = HERE.parent.parent / "src"
COMMENT = re.compile(r"^\s*//.*$", re.MULTILINE)


def code_of(folder):
    """All code below a folder, without lines of comments and with adjacent string literals joined."""
    code = "".join(COMMENT.sub("", p.read_text()) for p in sorted((SOURCES / folder).rglob("*"))
                   if p.suffix in (".h", ".cpp"))
    return re.sub(r'(?<!\\)"\s+u?"', "", code)


class RequiredTexts(unittest.TestCase):
    def test_everyTextIsALiteralInItsFolder(self):
        code, missing, count = "", [], 0
        for line in (HERE / "required-texts.txt").read_text().split("\n"):
            if line.startswith("["):
                code = code_of(line.strip("[]"))
            elif line.startswith('"'):
                count += 1
                if line not in code:
                    missing.append(line)
        self.assertEqual(missing, [])
        self.assertGreater(count, 90)


if __name__ == "__main__":
    unittest.main()
