#!/usr/bin/python3
"""Writes fuzz/corpus/plan and fuzz/corpus/shardlog: what the built kestrinectl writes, and variants that must be refused.
Usage: make_plan_corpus.py FOLDER_OF_KESTRINECTL"""
import subprocess
import sys
import tempfile
from pathlib import Path

from write_corpus import write_corpus

SETS = b'{"name":"Web","replaceFile":false,"resizeType":"maxSize","maxSize":30,"formatType":"jpeg"}'


def plan(results, treatment, *records, version=b"1", end=None):
    fields = [b"kestrine-plan " + version, str(results).encode(), treatment]
    for source, numbers, *names in records:
        fields += [source, numbers, *names]
    fields += [b"", str(len(records) if end is None else end).encode()]
    return b"".join(field + b"\0" for field in fields)


OPTIONS = b'{"sets":[],"options":["--longest=30,20","--format=jpeg","--out=out"]}'
RECORD = (b"in/a.png", b"120 1700000000123456789 5", b"out/a-30.jpg", b"out/a-20.jpg")


def main(tool):
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        (folder / "in").mkdir()
        for file in ("a.pgm", "b\n.pgm"):
            (folder / "in" / file).write_bytes(b"P5 4 4 255\n" + bytes(range(16)))

        def run(*words):
            return subprocess.run([tool, *words], cwd=folder, check=True, capture_output=True).stdout
        made = run("plan", "--longest", "2", "--format", "jpeg", "--out", "out", "in")
        (folder / "plan").write_bytes(made)
        run("run", "plan")
        lines = (folder / "plan.1-of-1.jsonl").read_bytes().splitlines()
    write_corpus("plan", [
        ("made", made),
        ("empty", plan(1, OPTIONS.replace(b",20", b""))),
        ("two", plan(2, OPTIONS, RECORD, (b"\xff/\n", b"0 -1 18446744073709551615", b"", b"b"))),
        ("set", plan(1, b'{"sets":[' + SETS + b'],"options":["--no-upright"]}', (b"a", b"1 2 3", b"Web/a.jpg"))),
        ("replacing", plan(1, b'{"sets":[],"options":["--replace=true"]}')),
        ("outside", plan(2, OPTIONS, (b"in/a.png", b"1 2 3", b"../a", b"/b"))),
        ("count", plan(2, OPTIONS, RECORD, end=2)),
        ("newer", plan(2, OPTIONS, RECORD, version=b"2")),
        ("bytes", plan(1, b'{"sets":[],"options":[{"bytes":"2d2d6f75743dff"}]}')),
    ])
    write_corpus("shardlog", [("begin", lines[0]), ("file", lines[1]), ("end", lines[-1]),
                              ("failed", b'{"source":{"bytes":"ff"},"status":"failed","outputs":[],"reason":"no","record":3}'),
                              ("torn", lines[1][:60])])


if __name__ == "__main__":
    main(Path(sys.argv[1]).resolve() / "kestrinectl")
