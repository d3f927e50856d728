"""The examples of share/unattended: what they start, in the bare environment in which it is started."""
import re
import subprocess
from pathlib import Path

import pictures
from tools import BIN, ToolTest, main

EXAMPLES = Path(__file__).resolve().parents[2] / "share/unattended"


def command_of_service():
    command = re.search(r"^ExecStart=(.*)$", (EXAMPLES / "kestrine-inbox.service").read_text(), re.MULTILINE)[1]
    return command.replace("%h", '"$HOME"')


def command_of_cron():
    line = (EXAMPLES / "crontab").read_text().splitlines()[-1]
    return line.split(maxsplit=5)[5]


class Inbox(ToolTest):
    def setUp(self):
        super().setUp()
        self.inbox, self.small = self.home / "Pictures/Inbox", self.home / "Pictures/Small"
        self.inbox.mkdir(parents=True)

    def put(self, name, bytes_left_out=0):
        path = self.inbox / name
        path.parent.mkdir(exist_ok=True)
        pictures.image(pictures.photo(2000, 40)).save(path)
        if bytes_left_out:
            path.write_bytes(path.read_bytes()[:-bytes_left_out])

    def run_bare(self, command):
        environment = {"HOME": str(self.home), "SHELL": "/bin/sh", "PATH": f"{BIN}:/usr/bin:/bin"}
        return subprocess.run(["/bin/sh", "-c", command], env=environment, cwd="/", stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, check=False)

    def results(self):
        return {str(path.relative_to(self.small)) for path in self.small.rglob("*") if path.is_file()}

    def assert_that_new_pictures_are_converted_once(self, command):
        self.assertEqual(self.run_bare(command).returncode, 0)  # nothing has arrived yet
        self.put("a.jpg")
        self.put("sub/half.jpg", bytes_left_out=3000)
        done = self.run_bare(command)
        self.assertEqual(done.returncode, 1)
        self.assertIn("half.jpg: the picture is damaged", done.stderr)
        self.assertEqual(self.results(), {"a.jpg"})
        made = (self.small / "a.jpg").stat()
        self.put("sub/half.jpg")
        self.assertEqual(self.run_bare(command).returncode, 0)
        self.assertEqual(self.results(), {"a.jpg", "sub/half.jpg"})
        self.assertEqual((self.small / "a.jpg").stat(), made)
        self.assertEqual(pictures.pixels(self.small / "a.jpg").shape[1], 1600)

    def test_the_service_converts_new_pictures_once(self):
        self.assert_that_new_pictures_are_converted_once(command_of_service())

    def test_cron_converts_new_pictures_once_and_has_nothing_to_mail(self):
        self.assert_that_new_pictures_are_converted_once(command_of_cron())
        self.put("c.jpg")
        done = self.run_bare(command_of_cron())
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))


if __name__ == "__main__":
    main()
