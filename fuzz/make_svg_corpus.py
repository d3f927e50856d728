#!/usr/bin/python3
"""Makes the files in corpus/svg. Usage: make_svg_corpus.py"""
import base64
import gzip
import io

from PIL import Image

from write_corpus import write_corpus

START = '<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" '


def picture(kind):
    stream = io.BytesIO()
    Image.new("RGB", (3, 2), (200, 60, 20)).save(stream, kind)
    return f"data:image/{kind};base64," + base64.b64encode(stream.getvalue()).decode()


def texts():
    shapes = ('<defs><linearGradient id="g"><stop offset="0" stop-color="#f60"/><stop offset="1" stop-color="#06f"/>'
              '</linearGradient></defs><circle cx="20" cy="15" r="12" fill="url(#g)" fill-opacity="0.7"/>'
              '<path d="M2 2L38 28" stroke="#113" stroke-width="3"/>')
    yield "shapes.svg", START + f'width="40" height="30">{shapes}</svg>'
    yield "prolog.svg", ('\ufeff<?xml version="1.0" encoding="UTF-8"?>\n<!-- made by hand -->\n<!DOCTYPE svg PUBLIC '
                         '"-//W3C//DTD SVG 1.1//EN" "http://www.w3.org/Graphics/SVG/1.1/DTD/svg11.dtd">\n'
                         + START + f'viewBox="0 0 40 30">{shapes}</svg>')
    yield "compressed.svgz", gzip.compress((START + f'width="40" height="30">{shapes}</svg>').encode(), mtime=0)
    yield "texts.svg", (START + 'width="160" height="80" font-size="14"><text y="16">Sans</text>'
                        '<text y="32" font-family="Georgia" font-style="italic">Serif \u00e9</text>'
                        '<text y="48" font-family="Courier New" font-weight="bold">Mono</text>'
                        '<text y="64" font-family="No Such Family">Other \u6f22\u0416</text></svg>')
    yield "pictures.svg", (START + 'width="40" height="30">' + "".join(
        f'<image x="{10 * i}" width="9" height="9" xlink:href="{picture(kind)}"/>' for i, kind in enumerate(("png", "jpeg")))
        + '<image y="15" width="9" height="9" xlink:href="file:///etc/hostname"/></svg>')
    yield "units.svg", START + f'width="1in" height="18pt" viewBox="0 0 40 30">{shapes}</svg>'
    yield "filter.svg", (START + 'width="40" height="30"><filter id="f"><feGaussianBlur stdDeviation="2"/></filter>'
                         '<rect x="9" y="9" width="20" height="9" fill="red" filter="url(#f)"/></svg>')
    yield "uses.svg", (START + 'width="40" height="30"><defs><g id="a"><rect width="2" height="2"/></g><g id="b">'
                       + '<use xlink:href="#a" x="5"/>' * 5 + '</g></defs><use xlink:href="#b" y="3"/></svg>')


def files():
    for name, content in texts():
        yield name, content if isinstance(content, bytes) else content.encode()


if __name__ == "__main__":
    write_corpus("svg", files())
