"""Writes JPEG 2000 codestreams whose components have sizes of their own by OpenJPEG itself, which Pillow does not offer."""
import ctypes
import tempfile
from pathlib import Path

J2K, RGB = 0, 1

library = ctypes.CDLL("libopenjp2.so.7")
for name in ("opj_create_compress", "opj_image_create", "opj_stream_create_default_file_stream"):
    getattr(library, name).restype = ctypes.c_void_p


class ComponentForm(ctypes.Structure):
    _fields_ = [(name, ctypes.c_uint32) for name in ("dx", "dy", "w", "h", "x0", "y0", "prec", "bpp", "sgnd")]


class Component(ctypes.Structure):
    _fields_ = [(name, ctypes.c_uint32) for name in ("dx", "dy", "w", "h", "x0", "y0", "prec", "bpp", "sgnd", "resno", "factor")]
    _fields_ += [("data", ctypes.POINTER(ctypes.c_int32)), ("alpha", ctypes.c_uint16)]


class Image(ctypes.Structure):
    _fields_ = [(name, ctypes.c_uint32) for name in ("x0", "y0", "x1", "y1", "numcomps")] + [("space", ctypes.c_int)]
    _fields_ += [("comps", ctypes.POINTER(Component))]


def codestream(width, height, planes):
    """Lossless, of planes with 8 bits; each plane stands for the whole picture."""
    forms = (ComponentForm * len(planes))()
    for form, plane in zip(forms, planes):
        form.dx, form.dy = round(width / plane.shape[1]), round(height / plane.shape[0])
        form.h, form.w = plane.shape
        form.prec = form.bpp = 8
    image = ctypes.cast(ctypes.c_void_p(library.opj_image_create(len(planes), forms, RGB)), ctypes.POINTER(Image))
    image.contents.x1, image.contents.y1 = width, height
    for number, plane in enumerate(planes):
        for place, value in enumerate(plane.ravel().tolist()):
            image.contents.comps[number].data[place] = value
    parameters = ctypes.create_string_buffer(1 << 16)  # larger than the library's structure
    library.opj_set_default_encoder_parameters(parameters)
    encoder = ctypes.c_void_p(library.opj_create_compress(J2K))
    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder) / "a.j2k"
        stream = ctypes.c_void_p(library.opj_stream_create_default_file_stream(str(path).encode(), 0))
        assert library.opj_setup_encoder(encoder, parameters, image)
        assert library.opj_start_compress(encoder, image, stream)
        assert library.opj_encode(encoder, stream)
        assert library.opj_end_compress(encoder, stream)
        library.opj_stream_destroy(stream)
        library.opj_destroy_codec(encoder)
        library.opj_image_destroy(image)
        return path.read_bytes()
