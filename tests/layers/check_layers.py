#!/usr/bin/python3
"""Reads every #include below src/ and complains of one that breaks the layers, of a third-party header outside the
folder that owns it, and of a header of system calls outside host. Usage: check_layers.py SOURCE_FOLDER"""
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
ALLOWED["worker"] = PLATFORM + ["_MyClasses"]
ALLOWED["models"] = PLATFORM + ["_MyClasses"]
ALLOWED["commandline"] = PLATFORM + ["_MyClasses", "models"]
ALLOWED["kestrinectl"] = PLATFORM + ["_MyClasses", "models"]
ALLOWED["libkestrine"] = PLATFORM + ["_MyClasses", "models"]

# Who owns a third-party header, by its beginning: a folder below src/, or folders of that name wherever they are; or
# several of them.
OWNERS = {
    "jpeglib.h": "platform/imageio", "jerror.h": "platform/imageio", "png": "platform/imageio",
    "isa-l/": "platform/imageio/png/fast", "zlib.h": "platform/imageio",
    "libdeflate.h": ("platform/imageio/png/fast", "platform/imageio/tiff"),
    "gif_lib.h": "platform/imageio", "tiff": "platform/imageio", "webp/": "platform/imageio", "jxl/": "platform/imageio",
    "libraw/": "platform/imageio",
    "openjpeg-2.5/": "platform/imageio",
    "libde265/": "platform/imageio/heif", "dav1d/": "platform/imageio/heif", "avif/": "platform/imageio/avif",
    "lcms2.h": "platform/coregraphics", "hwy/": "/kernels",
    "plist/": "platform/foundation/propertylist", "systemd/": "platform/appkit",
    "CLI/": "kestrinectl", "nlohmann/": ("kestrinectl", "libkestrine"), "expat.h": "kestrinectl/desktop",
}

# System calls are made in platform/host. Elsewhere only these files may include their headers, for these reasons.
SYSTEM_CALLS = re.compile(r"^(sys|linux|net|netinet|arpa|asm)/|^(dirent|dlfcn|fcntl|ftw|glob|grp|mntent|poll|pthread|pwd|"
                          r"sched|semaphore|signal|spawn|syscall|syslog|termios|unistd|utime|wait)\.h$")
SYSTEM_CALLERS = {
    "platform/finder/FilePackage.cpp": "reads the type out of a status that host asked for",
    "platform/finder/Finder.cpp": "makes a symbolic link in a folder that it holds open",
    "platform/finder/FinderMetadata.cpp": "asks for the status of a path",
    "platform/finder/FinderPath.cpp": "reads a status that host asked for",
    "platform/finder/FinderPlacement.cpp": "renames within a folder that it holds open",
    "platform/finder/FinderTransfer.cpp": "removes a name from a folder that it holds open",
    "platform/finder/Sidecar.cpp": "opens and replaces the companion file in a folder that it holds open",
    "platform/finder/Volumes.cpp": "asks whether a mount point is hidden by another one",
}

# The system's own headers. Everything with a slash or a .h that is not listed here is a third-party library.
SYSTEM = re.compile(r"^[a-z_]+$|^(sys|linux)/[a-z_]+\.h$|^(cxxabi|dirent|dlfcn|fcntl|fnmatch|grp|langinfo|limits|locale|poll|pwd|"
                    r"sched|signal|spawn|stddef|stdint|stdio|stdlib|string|syscall|time|unistd|wchar)\.h$")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def layer_of(path):
    for folder in sorted(ALLOWED, key=len, reverse=True):
        if path.startswith(folder + "/"):
            return folder
    return None


def unneeded_exceptions(root):
    """Files that SYSTEM_CALLERS lists without need."""
    for name in SYSTEM_CALLERS:
        file = root / name
        headers = [header for _, header in INCLUDE.findall(file.read_text())] if file.exists() else []
        if not any(SYSTEM_CALLS.match(header) for header in headers):
            yield f"{name}: includes no header of system calls any more; take it off the list in check_layers.py"


def complaints(root):
    yield from unneeded_exceptions(root)
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
                    yield f'{name}: includes "{header}", which is not a file of this project'
                elif target != layer and target not in ALLOWED[layer]:
                    yield f'{name}: {layer} may not include "{header}"'
                continue
            owner = next((o for start, o in OWNERS.items() if header.startswith(start)), None)
            owners = (owner,) if isinstance(owner, str) else owner or ()
            if owners and not any(one + "/" in "/" + name for one in owners):
                yield f"{name}: <{header}> belongs to {' and '.join(owners)}"
            elif SYSTEM_CALLS.match(header) and layer != "platform/host" and name not in SYSTEM_CALLERS:
                yield f"{name}: <{header}> is for system calls, which only platform/host makes"
            elif owner is None and not SYSTEM.match(header):
                yield f"{name}: <{header}> is not listed; add it to check_layers.py and docs/dependencies.md"


if __name__ == "__main__":
    found = list(complaints(Path(sys.argv[1])))
    print("\n".join(found) or "all layers hold")
    sys.exit(1 if found else 0)
