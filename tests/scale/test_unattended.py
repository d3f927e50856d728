"""The units of share/unattended are valid, and a systemd of its own starts the service when pictures arrive."""
import os
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parent.parent.parent
sys.path[:0] = [str(REPOSITORY / "tests/endtoend"), str(Path(__file__).resolve().parent)]
import pictures # noqa: E402
import servers # noqa: E402

BIN = Path(os.environ["KESTRINE_BIN"])
UNITS = REPOSITORY / "share/unattended"
NAMES = ("kestrine-inbox.service", "kestrine-inbox.path", "kestrine-inbox.timer")


@unittest.skipUnless(os.getuid() == 0, "only root can start another systemd")
class WatchedFolder(unittest.TestCase):
    def setUp(self):
        self.home = Path(tempfile.mkdtemp(prefix="kestrine-unattended-"))
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)
        self.environment = {"HOME": str(self.home), "PATH": f"{BIN}:/usr/sbin:/usr/bin:/sbin:/bin", "LANG": "C.UTF-8"}
        self.units = self.home / ".config/systemd/user"
        self.units.mkdir(parents=True)
        for name in NAMES: # systemd looks for programs where packages put them
            text = (UNITS / name).read_text().replace("=kestrinectl ", f"={BIN}/kestrinectl ")
            (self.units / name).write_text(text)

    def control(self, *words):
        subprocess.run(["systemctl", "--user", *words], env=self.manager.environment, check=True, capture_output=True)

    def results(self):
        return {path.name for path in (self.home / "Pictures/Small").glob("*.jpg")}

    def wait_for_results(self, names):
        servers.wait_until(lambda: self.results() == names, f"the service does not make {names}")

    def put(self, name):
        pictures.image(pictures.photo(60, 40)).save(self.home / "Pictures/Inbox" / name)

    def test_the_units_are_valid(self):
        (self.home / "runtime").mkdir()
        done = subprocess.run(["systemd-analyze", "verify", "--user", *NAMES], cwd=self.units, capture_output=True, text=True, check=False,
                              env={**self.environment, "XDG_RUNTIME_DIR": str(self.home / "runtime")})
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))

    def test_pictures_are_converted_when_they_arrive(self):
        self.manager = servers.ServiceManager(self, self.home, self.environment)
        self.control("start", "kestrine-inbox.path", "kestrine-inbox.timer")
        self.put("a.jpg")
        self.wait_for_results({"a.jpg"})
        for number in range(20): # some of them while the service works; that changes announce all of them is not promised
            self.put(f"{number}.jpg")
            time.sleep(0.2)
        servers.wait_until(lambda: self.manager.state_of("kestrine-inbox.service") == "inactive", "the service does not end")
        self.control("start", "kestrine-inbox.service") # as the timer does
        self.wait_for_results({"a.jpg"} | {f"{number}.jpg" for number in range(20)})
        self.assertEqual([self.manager.state_of(unit) for unit in NAMES], ["inactive", "active", "active"])


if __name__ == "__main__":
    unittest.main(verbosity=2, warnings="ignore")
