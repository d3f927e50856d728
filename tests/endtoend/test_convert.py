"""kestrinectl convert: sets applied to many files at once, with the results of the quiet tool."""
import os
import pty
import shutil
import subprocess

import pictures
from tools import BIN, JPEG, PNG, ToolTest, main

JOBS = ("1", "2", "5")


class Convert(ToolTest):
    def convert(self, *arguments, status=0):
        done = self.kestrinectl("convert", *arguments)
        self.assertEqual(done.returncode, status, done)
        if status == 0:
            self.assertEqual(done.stderr, b"")
        return done

    def picture(self, name, width=60, height=40, seed=1):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        pictures.image(pictures.photo(width, height, seed=seed)).save(path)

    def contents(self, folder):
        return {name: (self.folder / folder / os.fsdecode(name)).read_bytes() for name in self.names(folder)}

    def web(self, **fields):
        self.store({"name": "Web", "resizeType": 2, "maxSize": 30.0, "formatType": JPEG, **fields}, selection=[(0, 1)])

    def test_any_number_of_jobs_writes_what_the_quiet_tool_writes(self):
        self.web()
        files = []
        for i in range(9):
            self.picture(f"p{i}.png", 500 + 70 * i, 900 - 60 * i, seed=i)
            files.append(f"p{i}.png")
        for name in ("p3.jpg", "p3_1.png", "p7.tiff", "p3_1.jpg"):  # all of these compete for names
            self.picture(name, 200, 100, seed=len(files))
            files.append(name)
        self.kestrine(*files)
        expected = self.contents("Web")
        self.assertEqual(len(expected), len(files))
        for jobs in JOBS:
            shutil.rmtree(self.folder / "Web")
            done = self.convert("-j", jobs, "--set", "Web", *files)
            self.assertEqual(self.contents("Web"), expected, jobs)
            self.assertEqual([line.split(b" -> ")[0].decode() for line in done.stdout.splitlines()], files)

    def test_a_line_tells_where_each_result_went(self):
        self.web()
        self.picture("a.png")
        line = b"a.png -> " + os.fsencode(self.folder) + b"/Web/"
        self.assertEqual(self.convert("a.png").stdout, line + b"a.jpg\n")
        self.assertEqual(self.convert("a.png").stdout, line + b"a_1.jpg\n")

    def test_files_that_fail_are_told_in_their_order_and_the_others_are_converted(self):
        self.web()
        self.picture("a.png")
        self.picture("z.png")
        (self.folder / "text.jpg").write_text("no picture")
        (self.folder / "cut.png").write_bytes((self.folder / "a.png").read_bytes()[:900])
        for jobs in JOBS:
            done = self.convert("-j", jobs, "a.png", "text.jpg", "absent.jpg", "cut.png", "z.png", status=1)
            lines = done.stderr.decode().splitlines()
            for line, start in zip(lines, ("text.jpg: the file is in no picture format", "absent.jpg: cannot open",
                                           "cut.png: ", "3 of 5")):
                self.assertTrue(line.startswith("kestrinectl: " + start), lines)
            self.assertEqual(len(lines), 4)
            self.assertEqual(len(done.stdout.splitlines()), 2)

    def test_a_folder_stands_for_the_pictures_in_it(self):
        self.web()
        for name in ("in/b.png", "in/a.jpg", "in/deep/c.png", "in/.hidden.png"):
            self.picture(name)
        (self.folder / "in" / "notes.txt").write_text("no picture")
        os.symlink("a.jpg", self.folder / "in" / "link.jpg")
        done = self.convert("in/")
        self.assertEqual([line.split(b" -> ")[0] for line in done.stdout.splitlines()],
                         [b"in/a.jpg", b"in/b.png", b"in/link.jpg"])
        self.assertEqual(self.names("in/Web"), [b"a.jpg", b"b.jpg", b"link.jpg"])

    def test_a_recursive_search_keeps_the_folders_and_leaves_outputs_alone(self):
        self.web()
        for name in ("in/b.png", "in/deep/c.png", "in/deep/er/d.png"):
            self.picture(name)
        for _ in range(2):
            self.assertEqual(len(self.convert("-r", "in").stdout.splitlines()), 3)
        self.assertEqual(self.names("in/Web"), [b"b.jpg", b"b_1.jpg", b"deep"])
        self.assertEqual(self.names("in/Web/deep"), [b"c.jpg", b"c_1.jpg", b"er"])
        self.assertEqual(self.names("in/deep"), [b"c.png", b"er"])

    def test_several_sets_give_several_results_a_file(self):
        self.store({"name": "A", "formatType": JPEG}, {"name": "B", "formatType": PNG}, selection=[(0, 1)])
        self.picture("a.png")
        done = self.convert("--set", "B", "--set", "@1", "a.png")
        self.assertEqual([line.split(b"/")[-2] for line in done.stdout.splitlines()], [b"B", b"A"])

    def test_wrong_arguments_are_status_2_and_an_unknown_set_status_1(self):
        self.web()
        self.picture("a.png")
        for arguments in ((), ("-j", "0", "a.png"), ("-j", "x", "a.png"), ("--nonsense", "a.png")):
            self.assertRegex(self.convert(*arguments, status=2).stderr, rb"\Akestrinectl: [^\n]+\n\Z")
        self.assertIn(b'no set named "Print"', self.convert("--set", "Print", "a.png", status=1).stderr)
        self.store({"name": "Web"})
        self.assertIn(b"no set is selected", self.convert("a.png", status=1).stderr)

    def test_an_original_that_cannot_go_to_the_trash_is_told(self):
        self.web(replaceFile=1)
        inside = self.home / ".local" / "share" / "Trash" / "files"  # what is in the trash does not go there again
        self.picture(inside / "a.png")
        done = self.convert(inside / "a.png", status=1)
        self.assertIn(b"trash", done.stderr)
        self.assertEqual(self.names(inside), [b"a.jpg", b"a.png"])

    def test_names_of_any_bytes_are_converted(self):
        self.web()
        self.picture("a.png")
        names = [b"sp ace.png", b"\xff\xfe.png", b"new\nline.png", b"-dash.png", b"[x,y].png", "ü%s.png".encode()]
        for name in names:
            shutil.copy(os.fsencode(self.folder / "a.png"), os.path.join(os.fsencode(self.folder), name))
        self.convert("-j", "2", "--", *names)
        self.assertEqual(self.names("Web"), sorted(name.replace(b".png", b".jpg") for name in names))

    def test_files_may_stand_before_and_behind_the_end_of_options(self):
        self.web()
        self.picture("a.png")
        self.picture("-b.png")
        self.convert("a.png", "--", "-b.png")
        self.assertEqual(self.names("Web"), [b"-b.jpg", b"a.jpg"])

    def test_a_terminal_shows_how_far_the_work_has_got(self):
        self.web()
        for name in ("a.png", "b.png"):
            self.picture(name)
        terminal, inside = pty.openpty()
        subprocess.run([BIN / "kestrinectl", "convert", "a.png", "b.png"], cwd=self.folder, env=self.environment,
                       stderr=inside, stdout=subprocess.DEVNULL, check=True, timeout=60)
        os.close(inside)
        shown = os.read(terminal, 4096)
        os.close(terminal)
        self.assertIn(b"1 of 2", shown)
        self.assertTrue(shown.endswith(b"\r\x1b[K"), shown)


if __name__ == "__main__":
    main()
