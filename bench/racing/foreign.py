"""Pictures in newer formats, written by the formats' own programs or by Pillow. What Pillow does not read is also decoded
by them, for the measurement of quality.
"""
import subprocess
import sys
from pathlib import Path

import numpy

sys.path.append(str(Path(__file__).resolve().parents[2] / "tests/endtoend"))
import heif_files  # noqa: E402

PACKAGES = {"heif-enc": "libheif-examples", "avifenc": "libavif-bin", "cjxl": "libjxl-tools"}
PHONE_TILE = 512
HEVC_QUALITY = "60"


def run(*command):
    try:
        subprocess.run(list(map(str, command)), check=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    except FileNotFoundError:
        raise SystemExit(f"peers: {command[0]} is missing; install {PACKAGES[command[0]]}") from None
    except subprocess.CalledProcessError as error:
        lines = error.stderr.decode(errors="replace").strip().splitlines()
        raise SystemExit(f"peers: {command[0]} failed: {lines[-1] if lines else 'no message'}") from None


def write_heic(picture, path, profile, exif):
    """A grid of tiles, as telephones write it."""
    made = heif_files.grid(numpy.asarray(picture), PHONE_TILE, "-q", HEVC_QUALITY, properties=[heif_files.prof(profile)])
    made.add_exif(made.primary, exif.removeprefix(b"Exif\0\0"))
    path.write_bytes(made.file())


def write_avif(picture, path, profile, exif):
    source = path.with_name("source.png")
    picture.save(source, icc_profile=profile, exif=exif, compress_level=1)
    run("avifenc", "-s", 8, "-j", 1, "-y", 420, "--min", 18, "--max", 28, source, path)
    source.unlink()


def write_jp2(picture, path, profile, exif):
    picture.save(path, "JPEG2000", tile_size=(1024, 1024), quality_mode="rates", quality_layers=[12])


def write_jxl(picture, path, profile, exif):
    source = path.with_name("source.png")
    picture.save(source, icc_profile=profile, exif=exif, compress_level=1)
    run("cjxl", source, path, "-d", 1, "-e", 3, "--num_threads=0")
    source.unlink()


def write_webp(picture, path, profile, exif):
    picture.save(path, "WEBP", quality=80, icc_profile=profile, exif=exif)


def write_svg(picture, path, profile, exif):
    """A logo of gradients, curves, a clip and strokes, without text. Only the size is that of the picture."""
    rays = "".join(f'<path d="M0 0 L{120 + 7 * number} -9 L{120 + 7 * number} 9 Z" transform="rotate({15 * number})"/>'
                   for number in range(24))
    path.write_text(f"""<svg xmlns="http://www.w3.org/2000/svg" width="{picture.width}" height="{picture.height}" viewBox="-200 -150 400 300">
<defs>
<radialGradient id="sun"><stop offset="0" stop-color="#fff3b0"/><stop offset="1" stop-color="#e07a1f"/></radialGradient>
<linearGradient id="sea" x2="0" y2="1"><stop stop-color="#3d7ea6"/><stop offset="1" stop-color="#12263a" stop-opacity=".8"/></linearGradient>
<clipPath id="badge"><circle r="130"/></clipPath>
</defs>
<g clip-path="url(#badge)">
<rect x="-200" y="-150" width="400" height="300" fill="#f4d9b8"/>
<g fill="#f2b26b" fill-opacity=".6">{rays}</g>
<circle r="52" fill="url(#sun)"/>
<path d="M-200 30 C-140 0 -90 60 -30 34 S90 6 200 40 V150 H-200 Z" fill="url(#sea)"/>
<path d="M-200 66 C-120 40 -60 96 10 70 S120 48 200 78 V150 H-200 Z" fill="#0b1d2c" fill-opacity=".55"/>
</g>
<circle r="130" fill="none" stroke="#12263a" stroke-width="7" stroke-dasharray="24 6"/>
</svg>
""")


WRITERS = {"heic": write_heic, "avif": write_avif, "jp2": write_jp2, "jxl": write_jxl, "webp": write_webp, "svg": write_svg}
DECODERS = {".heic": ("heif-convert",), ".avif": ("avifdec",), ".jxl": ("djxl",)}


def readable(path):
    """The picture as a file that Pillow reads."""
    decoder = DECODERS.get(path.suffix)
    if decoder is None:
        return path
    decoded = path.with_name(f"decoded-{path.stem}.png")
    if not decoded.exists():
        unfinished = decoded.with_name("unfinished.png")
        run(*decoder, path, unfinished)
        unfinished.replace(decoded)
    return decoded
