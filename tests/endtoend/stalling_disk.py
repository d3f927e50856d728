"""A file system with one file, which keeps its readers waiting: stalling_disk.py FILE FOLDER SECONDS

Stays mounted on FOLDER until somebody unmounts it. FOLDER contains one file, with the name and the content of FILE.
Each read after the first sixteenth of the file takes SECONDS."""
import errno
import stat
import sys
import time
from pathlib import Path

from fusepy import FUSE, FuseOSError, Operations


class StallingDisk(Operations):
    def __init__(self, file, seconds):
        self.path = "/" + file.name
        self.content = file.read_bytes()
        self.seconds = seconds

    def getattr(self, path, handle=None):
        if path == "/":
            return dict(st_mode=stat.S_IFDIR | 0o755, st_nlink=2)
        if path != self.path:
            raise FuseOSError(errno.ENOENT)
        return dict(st_mode=stat.S_IFREG | 0o644, st_nlink=1, st_size=len(self.content))

    def readdir(self, path, handle):
        return [".", "..", self.path[1:]]

    def read(self, path, size, offset, handle):
        if offset > len(self.content) // 16:
            time.sleep(self.seconds)
        return self.content[offset:offset + size]


FUSE(StallingDisk(Path(sys.argv[1]), float(sys.argv[3])), sys.argv[2], foreground=True, ro=True)
