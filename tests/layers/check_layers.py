#!/usr/bin/python3
"""Reads every #include below src/ and complains of one that breaks the layers, or of a third-party header outside the
folder that owns it. Usage: check_layers.py SOURCE_FOLDER"""
import re
import sys
from pathlib import Path

# What a folder may include of ours, besides itself.
PLATFORM = ["platform/host", "platform/foundation", "platform/coregraphics", "platform/imageio", "platform/coreimage",
            "platform/appkit"]
FILES = ["platform/host", "platform/foundation", "platform/finder", "platform/carbon"]
ALLOWED = {folder: PLATFORM[:i] for i, folder in enumerate(PLATFORM)}
ALLOWED |= {folder: FILES[:i] for i, folder in enumerate(FILES)}
ALLOWED["platform/appkit"] = ALLOWED["platform/appkit"] + ["platform/finder"]
ALLOWED["_MyClasses"] = PLATFORM + FILES
ALLOWED["models"] = PLATFORM + ["_MyClasses"]
ALLOWED["commandline"] = PLATFORM + ["_MyClasses", "models"]
ALLOWED["kestrinectl"] = PLATFORM + ["_MyClasses", "models"]

# Who owns a third-party header, by its beginning: a folder below src/, or folders of that name wherever they are.
OWNERS = {
    "jpeglib.h": "platform/imageio", "jerror.h": "platform/imageio", "png": "platform/imageio",
    "isa-l/": "platform/imageio/png/fast", "libdeflate.h": "platform/imageio/png/fast", "zlib.h": "platform/imageio/png",
    "gif_lib.h": "platform/imageio", "tiff": "platform/imageio", "webp/": "platform/imageio",
    "lcms2.h": "platform/coregraphics", "hwy/": "/kernels",
    "plist/": "platform/foundation/propertylist", "systemd/": "platform/appkit",
    "CLI/": "kestrinectl", "nlohmann/": "kestrinectl",
}

# The system's own headers. Everything with a slash or a .h that is not listed here is somebody's library.
SYSTEM = re.compile(r"^[a-z_]+$|^(sys|linux)/[a-z_]+\.h$|^(cxxabi|dirent|dlfcn|fcntl|grp|limits|poll|pwd|signal|spawn|"
                    r"stdio|stdlib|string|syscall|time|unistd|wchar)\.h$")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def layer_of(path):
    for folder in sorted(ALLOWED, key=len, reverse=True):
        if path.startswith(folder + "/"):
            return folder
    return None


def complaints(root):
    for file in sorted(root.rglob("*")):
        if file.suffix not in (".h", ".cpp"):
            continue
        name = file.relative_to(root).as_posix()
        layer = layer_of(name)
        if layer is None:
            yield f"{name}: lies in no known layer"
            continue
        for bracket, header in INCLUDE.findall(file.read_text()):
            if bracket == '"':
                target = layer_of(header)
                if target is None or not (root / header).exists():
                    yield f'{name}: includes "{header}", which is no file of ours'
                elif target != layer and target not in ALLOWED[layer]:
                    yield f'{name}: {layer} may not include "{header}"'
                continue
            owner = next((o for start, o in OWNERS.items() if header.startswith(start)), None)
            if owner is not None and owner + "/" not in "/" + name:
                yield f"{name}: <{header}> belongs to {owner}"
            elif owner is None and not SYSTEM.match(header):
                yield f"{name}: <{header}> belongs to nobody; add it to check_layers.py and docs/dependencies.md"


if __name__ == "__main__":
    found = list(complaints(Path(sys.argv[1])))
    print("\n".join(found) or "all layers hold")
    sys.exit(1 if found else 0)
