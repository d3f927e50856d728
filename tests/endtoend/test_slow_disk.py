"""A disk that keeps its readers waiting costs time, and never a picture."""
import subprocess
import sys
import time
from pathlib import Path

from pictures import jpeg, photo
from tools import JPEG, ToolTest, main

STALL = 0.3  # seconds, for each of some reads
HERE = Path(__file__).resolve().parent


class StallingDisk(ToolTest):
    def mounted(self, file):
        """A folder in which the file is, on a disk that stalls."""
        folder = self.home / "disk"
        folder.mkdir()
        disk = subprocess.Popen([sys.executable, HERE / "stalling_disk.py", file, folder, str(STALL)],
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.addCleanup(disk.communicate)
        self.addCleanup(subprocess.run, ["fusermount", "-u", "-z", folder], check=False, capture_output=True)
        while not folder.is_mount():
            if disk.poll() is not None:
                self.skipTest("no FUSE file system can be mounted here: " + disk.stdout.read().decode().splitlines()[-1])
            time.sleep(0.02)
        return folder

    def test_a_picture_on_a_stalling_disk_gives_the_same_result(self):
        self.store(dict(name="Web", formatType=JPEG, resizeType=2, maxSize=300.0), selection=[(0, 1)])
        file = self.folder / "a.jpg"
        file.write_bytes(jpeg(photo(1600, 1200), quality=98))
        (self.folder / "stalling.jpg").symlink_to(self.mounted(file) / "a.jpg")
        self.kestrine("a.jpg")
        begin = time.monotonic()
        self.kestrine("stalling.jpg")
        self.assertGreater(time.monotonic() - begin, STALL)  # otherwise the disk did not stall
        self.assertEqual(*((self.folder / "Web" / name).read_bytes() for name in ["a.jpg", "stalling.jpg"]))


main()
