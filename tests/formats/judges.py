"""Programs that decode the files of the table without our own code. Each returns rows, columns, channels."""
import io
import subprocess
import tempfile
from pathlib import Path

import numpy
import tifffile
from PIL import Image


def layers(samples):
    """Rows and columns with a third axis for the channels."""
    return samples if samples.ndim == 3 else samples[..., None]


def run(*command, **options):
    return subprocess.run([str(word) for word in command], check=True, capture_output=True, **options).stdout


def pillow(path):
    image = Image.open(path)
    if image.mode in ("P", "CMYK", "YCbCr", "LAB"):
        image = image.convert("RGBA" if "transparency" in image.info else "RGB")
    return layers(numpy.asarray(image.convert("L") if image.mode == "1" else image))


def pam(data):
    """Reads a portable map, as other programs write it to their standard output."""
    header, _, samples = data.partition(b"ENDHDR\n")
    values = dict(line.split(b" ", 1) for line in header.splitlines()[1:] if line and not line.startswith(b"#"))
    width, height, depth, largest = (int(values[name]) for name in (b"WIDTH", b"HEIGHT", b"DEPTH", b"MAXVAL"))
    return numpy.frombuffer(samples, ">u2" if largest > 255 else numpy.uint8).astype(
        numpy.uint16 if largest > 255 else numpy.uint8).reshape(height, width, depth)


def magick(path, *options, bits=8):
    return pam(run("convert", f"{path}[0]", "-colorspace", "sRGB", *options, "-depth", bits, "PAM:-"))


def magick_16(path):
    return magick(path, bits=16)


def through_png(*command):
    """A judge that has the program write a PNG file; its last two arguments are the file and the result."""
    def judge(path):
        with tempfile.TemporaryDirectory() as folder:
            result = Path(folder) / "judged.png"
            run(*command, path, result)
            return pillow(result)
    return judge


heif_convert = through_png("heif-convert")
avifdec = through_png("avifdec", "-d", "8")
djxl = through_png("djxl")


def avifdec_16(path):
    with tempfile.TemporaryDirectory() as folder:
        result = Path(folder) / "judged.png"
        run("avifdec", "-d", 16, path, result)
        return magick_16(result)


def djxl_deep(path):
    """The samples with the bits that the file has, up to 16."""
    with tempfile.TemporaryDirectory() as folder:
        result = Path(folder) / "judged.png"
        run("djxl", path, result)
        return magick_16(result)


def djxl_16(path):
    """The samples with 16 bits, for files without alpha."""
    with tempfile.TemporaryDirectory() as folder:
        result = Path(folder) / "judged.ppm"
        run("djxl", "--bits_per_sample", 16, path, result)
        return magick(result, bits=16)


def rsvg(path):
    return pillow(io.BytesIO(run("rsvg-convert", path)))


def dcraw(path):
    """Developed with the camera's white balance into sRGB, 16 bits."""
    run("dcraw_emu", "-w", "-T", "-6", "-g", "2.4", "12.92", path)
    return layers(tifffile.imread(f"{path}.tiff"))
