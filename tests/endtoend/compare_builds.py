#!/usr/bin/python3
"""Converts pictures with two builds of the tools, and reports every file and every message that differs.

    compare_builds.py BIN OTHER_BIN [EMULATOR...]

EMULATOR is the command that runs the programs in OTHER_BIN. The inputs are the example pictures and the corpora of the
fuzzers, damaged files included. Compared are the presets file with its archives, exported presets, EXIF values, and the
results in every format: unscaled (the pixels as decoded), and scaled with both filters. Exit status: 0 if all is equal,
else 1."""
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
SETS = {
    "As decoded": "--percent 10000 --format tiff",
    "Enlarged": "--percent 130 --format png",
    "Half": "--percent 50 --format png --rotate",
    "Plain": "--width 60 --height 50 --format tiff --no-high-quality",
    "Photo": "--longest 100 --format jpeg --quality 70 --rotate --exif",
    "Fine": "--longest 80 --format jpeg --quality 95 --convert-resolution",
    "Palette": "--longest 64 --format gif",
}
SUFFIXES = {"bmp": "bmp", "exiftagreader": "jpg", "gif": "gif", "heif": "heic", "jpeg": "jpg", "ownjpeg": "jpg", "png": "png",
            "pngrows": "png", "pnm": "pnm", "icns": "icns", "ico": "ico", "jp2": "jp2", "jxl": "jxl", "pcx": "pcx", "psd": "psd", "qoi": "qoi", "raw": "dng",
            "sgi": "sgi", "tga": "tga", "svg": "svg", "tiff": "tif", "webp": "webp"}
SLOWEST = 500  # seconds for one command


def copy_inputs(folder):
    """Copies the pictures into `folder`, one sub-folder for each of their places."""
    shutil.copytree(ROOT / "examples/pictures", folder / "examples")
    for corpus, suffix in SUFFIXES.items():
        (folder / corpus).mkdir()
        for file in sorted((ROOT / "fuzz/corpus" / corpus).iterdir()):
            shutil.copy(file, folder / corpus / f"{file.name}.{suffix}")


def outputs_of(command, home):
    """Everything that the tool prints and writes in `home`, which must not exist and is removed again: {name: bytes}."""
    pictures = home / "pictures"
    pictures.mkdir(parents=True)
    copy_inputs(pictures)
    inputs = {path for path in home.rglob("*") if path.is_file()}
    outputs = {}

    def run(name, *arguments):
        done = subprocess.run([*command, *arguments], cwd=pictures, capture_output=True, check=False, timeout=SLOWEST,
                              env={"HOME": str(home), "PWD": str(pictures), "PATH": os.environ["PATH"], "TZ": "UTC"})
        outputs[f"{name}: status"] = str(done.returncode).encode()
        outputs[f"{name}: output"] = done.stdout
        outputs[f"{name}: messages"] = done.stderr

    for name, options in SETS.items():
        run(f"sets add {name}", "sets", "add", name, *options.split())
        assert outputs[f"sets add {name}: status"] == b"0", outputs
    run("sets export", "sets", "export")
    for folder in sorted(path.name for path in pictures.iterdir()):
        for name in SETS:
            run(f"convert --set {name} {folder}", "convert", "--accept-damaged", "--set", name, folder)
    run("exif", "exif", "--json", *sorted(str(path.relative_to(pictures)) for path in inputs if path.suffix == ".jpg"))
    for path in home.rglob("*"):
        if path.is_file() and path not in inputs:
            outputs[str(path.relative_to(home))] = path.read_bytes()
    shutil.rmtree(home)
    return outputs


def main():
    binaries, others, *emulator = sys.argv[1:]
    with tempfile.TemporaryDirectory(prefix="kestrine-builds-") as folder:
        home = Path(folder) / "home"  # the same for both, because messages contain paths
        here = outputs_of([Path(binaries).resolve() / "kestrinectl"], home)
        there = outputs_of([*emulator, Path(others).resolve() / "kestrinectl"], home)
    different = sorted(name for name in here.keys() | there.keys() if here.get(name) != there.get(name))
    for name in different:
        sizes = " and ".join("nothing" if side.get(name) is None else f"{len(side[name])} bytes" for side in (here, there))
        print(f"different: {name} ({sizes})")
    files = [name for name in here if ": " not in name]
    print(f"{len(here)} outputs, {len(files)} of them files; {len(different)} differ")
    sys.exit(1 if different or not files else 0)


if __name__ == "__main__":
    main()
