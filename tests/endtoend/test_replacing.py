"""Replacing in place: the original is in the trash, complete and restorable, even after failures."""
import os
import subprocess
from pathlib import Path

from PIL import Image

import pictures
from tools import BIN, JPEG, PNG, ToolTest, main


class Replacing(ToolTest):
    def setUp(self):
        super().setUp()
        self.original = pictures.jpeg(pictures.photo(60, 40))

    def replace(self, *files, **fields):
        self.store({"name": "R", "replaceFile": 1, "formatType": JPEG, "resizeType": 2, "maxSize": 30.0, **fields})
        return self.kestrine("-set", "R", *files)

    def trash(self):
        done = subprocess.run(["trash-list"], env=self.environment, capture_output=True, check=True)
        return done.stdout

    def test_trash_cli_lists_and_restores_the_original(self):
        (self.folder / "a.jpg").write_bytes(self.original)
        self.replace("a.jpg")
        self.assertEqual(Image.open(self.folder / "a.jpg").size, (31, 20))
        self.assertIn(str(self.folder / "a.jpg").encode(), self.trash())
        (self.folder / "a.jpg").unlink()
        subprocess.run(["trash-restore", str(self.folder / "a.jpg")], input=b"0\n", env=self.environment,
                       capture_output=True, check=True)
        self.assertEqual((self.folder / "a.jpg").read_bytes(), self.original)

    def test_unusual_names_are_restorable(self):
        for name in (b"100% fun.jpg", b"a\nb.jpg", "ü 日.jpg".encode(), b"\xff\x80.jpg"):
            (self.folder / os.fsdecode(name)).write_bytes(self.original)
            self.replace(name)
            self.assertEqual((self.home / ".local/share/Trash/files" / os.fsdecode(name)).read_bytes(), self.original)

    def test_two_originals_with_one_name_are_both_kept(self):
        for _ in range(2):
            (self.folder / "a.jpg").write_bytes(self.original)
            self.replace("a.jpg")
        trashed = sorted((self.home / ".local/share/Trash/files").iterdir())
        self.assertEqual([path.name for path in trashed], ["a.2.jpg", "a.jpg"])
        self.assertEqual({path.read_bytes() for path in trashed}, {self.original})

    def test_the_result_has_the_rights_of_the_original(self):
        for mode in (0o600, 0o640, 0o444):
            path = self.folder / "a.jpg"
            path.write_bytes(self.original)
            path.chmod(mode)
            self.replace("a.jpg")
            self.assertEqual(path.stat().st_mode & 0o777, mode)
            path.unlink()
            path.write_bytes(self.original)
            path.chmod(mode)
            done = self.kestrinectl("convert", "--percent", "50", "--replace", "a.jpg")
            self.assertEqual((done.returncode, path.stat().st_mode & 0o777), (0, mode), done)
            path.unlink()

    def test_a_file_that_is_no_picture_also_goes_to_the_trash(self):
        (self.folder / "a.jpg").write_text("words")
        self.replace("a.jpg")
        self.assertEqual(self.names(), [])
        self.assertEqual((self.home / ".local/share/Trash/files/a.jpg").read_text(), "words")

    def test_dots_slashes_the_current_folder_and_its_parents_are_never_trashed(self):
        (self.folder / "a.jpg").write_bytes(self.original)
        self.replace("", ".", "..", "/", "a/..", "../pictures", "../../" + self.home.name)
        self.assertEqual((self.folder / "a.jpg").read_bytes(), self.original)
        self.assertFalse((self.home / ".local/share/Trash").exists())

    def test_on_another_file_system_the_complete_original_is_in_a_trash(self):
        memory = Path("/dev/shm")
        if not os.access(memory, os.W_OK) or memory.stat().st_dev == self.home.stat().st_dev:
            self.skipTest("/dev/shm is not another file system here")
        other = Path(subprocess.run(["mktemp", "-d", "-p", memory, "kestrine-XXXXXX"], capture_output=True, text=True,
                                    check=True).stdout.strip())
        self.addCleanup(subprocess.run, ["rm", "-rf", other, memory / f".Trash-{os.getuid()}"])
        (other / "a.jpg").write_bytes(self.original)
        self.store({"name": "R", "replaceFile": 1, "formatType": PNG})
        self.kestrine("-set", "R", "a.jpg", environment={**self.environment, "PWD": str(other)})
        self.assertEqual(sorted(os.listdir(other)), ["a.png"])
        places = [memory / f".Trash-{os.getuid()}" / "files/a.jpg", self.home / ".local/share/Trash/files/a.jpg"]
        kept = [place for place in places if place.exists()]
        self.assertEqual([place.read_bytes() for place in kept], [self.original])

    def test_without_rights_in_the_folder_the_original_stays_and_nothing_is_written(self):
        (self.folder / "a.jpg").write_bytes(self.original)
        self.store({"name": "R", "replaceFile": 1, "formatType": PNG})
        os.chmod(self.folder, 0o555)
        done = self.run_without_rights("-set", "R", "a.jpg")
        os.chmod(self.folder, 0o755)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertEqual(self.names(), [b"a.jpg"])
        self.assertEqual((self.folder / "a.jpg").read_bytes(), self.original)


class FullDisk(ToolTest):
    def test_on_a_full_disk_no_partial_file_appears_and_the_run_continues(self):
        (self.folder / "a.jpg").write_bytes(pictures.jpeg(pictures.photo(1200, 900)))
        self.store({"name": "R", "formatType": 2, "resizeType": 9}, {"name": "T", "resizeType": 2, "maxSize": 40.0})
        script = (f'mount -t tmpfs -o size=1m tmpfs "{self.folder}/R" && '
                  f'"{BIN}/kestrine" -set R a.jpg && ls -A "{self.folder}/R"')
        (self.folder / "R").mkdir()
        done = subprocess.run(["unshare", "-m", "sh", "-c", script], cwd=self.folder, env=self.environment,
                              capture_output=True)
        if b"mount:" in done.stderr or b"unshare:" in done.stderr:
            self.skipTest("no file system can be mounted here: " + done.stderr.decode())
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertEqual(done.stdout, b"a.jpg converting... and done!!\n", "the folder stays empty")


if __name__ == "__main__":
    main()
