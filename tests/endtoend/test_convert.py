"""kestrinectl convert: applies sets to many files at once, with the same results as `kestrine`."""
import fcntl
import os
import shutil
import signal
import struct
import subprocess
import termios
import time
import unittest
from pathlib import Path

import pictures
from PIL import Image
from tools import BIN, TOTALS, JPEG, PNG, TIFF, ToolTest, is_built_with, main, messages_of, on_a_terminal

JOBS = ("1", "2", "5")


class Convert(ToolTest):
    def convert(self, *arguments, status=0, messages=None):
        """Runs the command. It must return `status` and, if it succeeds or `messages` is given, print exactly these
        messages to standard error."""
        done = self.kestrinectl("convert", *arguments)
        self.assertEqual(done.returncode, status, done)
        if status == 0 or messages is not None:
            self.assertEqual(messages_of(done), messages or [])
        return done

    def picture(self, name, width=60, height=40, seed=1):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        pictures.image(pictures.photo(width, height, seed=seed)).save(path)

    def contents(self, folder):
        return {name: (self.folder / folder / os.fsdecode(name)).read_bytes() for name in self.names(folder)}

    def web(self, **fields):
        self.store({"name": "Web", "resizeType": 2, "maxSize": 30.0, "formatType": JPEG, **fields}, selection=[(0, 1)])

    def test_names_that_compete_do_not_depend_on_the_number_of_jobs(self):
        stems = ("a", "a_1", "a_1_1", "a_2", "a_3", "b", "b_1", "c")
        for number, stem in enumerate(stems * 8):
            path = self.folder / f"in/{number % 9}/{number % 4}/{stem}.{('png', 'bmp')[number % 2]}"
            path.parent.mkdir(parents=True, exist_ok=True)
            pictures.image(pictures.photo(20 + number * 7 % 60, 20, seed=number)).save(path)
        (self.folder / "in/3/cut.png").write_bytes((self.folder / "in/0/0/a.png").read_bytes()[:60])
        outputs = []
        for jobs in ("1", "2", "7"):
            out = self.folder / f"out{jobs}"
            out.mkdir()
            (out / "a.jpg").touch()
            self.kestrinectl("convert", "--percent", "90", "--format", "jpeg", "--name", "{stem}.{ext}", "--out", out, "-j", jobs, "-r", "in")
            outputs.append({path.name: path.read_bytes() for path in out.iterdir()})
        self.assertGreater(len(outputs[0]), 50)
        self.assertEqual(outputs[1], outputs[0])
        self.assertEqual(outputs[2], outputs[0])

    def test_any_number_of_jobs_gives_the_same_results_as_kestrine(self):
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

    def test_a_line_shows_the_path_of_each_result(self):
        self.web()
        self.picture("a.png")
        line = b"a.png -> " + os.fsencode(self.folder) + b"/Web/"
        self.assertEqual(self.convert("a.png").stdout, line + b"a.jpg\n")
        self.assertEqual(self.convert("a.png").stdout, line + b"a_1.jpg\n")

    def test_failures_are_reported_in_file_order_and_other_files_are_converted(self):
        self.web()
        self.picture("a.png")
        self.picture("z.png")
        (self.folder / "text.jpg").write_text("no picture")
        (self.folder / "cut.png").write_bytes((self.folder / "a.png").read_bytes()[:900])
        for jobs in JOBS:
            done = self.convert("-j", jobs, "a.png", "text.jpg", "absent.jpg", "cut.png", "z.png", status=1)
            lines = messages_of(done)
            for line, start in zip(lines, ("text.jpg: the file is not in a known picture format", "absent.jpg: cannot open: No such file",
                                           "cut.png: ", "3 of 5")):
                self.assertTrue(line.startswith(start), lines)
            self.assertEqual(len(lines), 4)
            self.assertEqual(len(done.stdout.splitlines()), 2)

    def test_a_folder_stands_for_the_pictures_in_it(self):
        self.web()
        for name in ("in/b.png", "in/a.jpg", "in/deep/c.png", "in/.hidden.png"):
            self.picture(name)
        (self.folder / "in" / "notes.txt").write_text("no picture")
        os.symlink("a.jpg", self.folder / "in" / "link.jpg")
        done = self.convert("in/", messages=["1 other file left out"])
        self.assertEqual([line.split(b" -> ")[0] for line in done.stdout.splitlines()],
                         [b"in/a.jpg", b"in/b.png", b"in/link.jpg"])
        self.assertEqual(self.names("in/Web"), [b"a.jpg", b"b.jpg", b"link.jpg"])

    def test_a_picture_that_is_named_several_times_is_converted_once(self):
        self.web()
        for name in ("in/a.jpg", "in/sub/b.jpg"):
            self.picture(name)
        os.symlink("sub", self.folder / "in/link")
        for arguments in (("in/a.jpg", "in/a.jpg"), ("in/a.jpg", "in", "in/../in/a.jpg"), ("in", "./in/a.jpg")):
            self.assertEqual(len(self.convert(*arguments).stdout.splitlines()), 1)
        self.assertEqual(len(self.convert("in/sub/b.jpg", "in/link/b.jpg", "in/link").stdout.splitlines()), 1)
        shutil.rmtree(self.folder / "in/Web")
        shutil.rmtree(self.folder / "in/sub/Web")
        self.assertEqual(len(self.convert("-r", "in/sub", "in").stdout.splitlines()), 2)

    def test_a_picture_that_is_named_twice_is_replaced_once(self):
        self.picture("a.jpg", 60, 40)
        done = self.kestrinectl("convert", "--percent", "50", "--replace", "a.jpg", ".", "a.jpg")
        self.assertEqual(done.returncode, 0, done)
        with Image.open(self.folder / "a.jpg") as picture:
            self.assertEqual(picture.size, (30, 20))
        self.assertEqual(self.kestrinectl("undo").returncode, 0)
        with Image.open(self.folder / "a.jpg") as picture:
            self.assertEqual(picture.size, (60, 40))

    def test_a_recursive_search_keeps_the_folders_and_leaves_out_results(self):
        self.web()
        for name in ("in/b.png", "in/deep/c.png", "in/deep/er/d.png"):
            self.picture(name)
        left_out = ["left out in/Web, a folder for results; --all-folders searches it"]
        for messages in ([], left_out):
            self.assertEqual(len(self.convert("-r", "in", messages=messages).stdout.splitlines()), 3)
        self.assertEqual(self.names("in/Web"), [b"b.jpg", b"b_1.jpg", b"deep"])
        self.assertEqual(self.names("in/Web/deep"), [b"c.jpg", b"c_1.jpg", b"er"])
        self.assertEqual(self.names("in/deep"), [b"c.png", b"er"])

    def test_folders_named_like_any_stored_set_are_left_out_at_any_depth_and_named_once(self):
        self.store({"name": "Web"}, {"name": "Print"}, selection=[(0, 1)])
        for name in ("in/a.png", "in/Print/b.png", "in/deep/Web/c.png", "in/print/d.png"):
            self.picture(name)
        left_out = [f"left out in/{name}, a folder for results; --all-folders searches it"
                    for name in ("Print", "deep/Web")]
        done = self.convert("-r", "in", "in/deep", "./in", messages=[*left_out, "no pictures in in/deep"])
        self.assertEqual(sorted({line.split(b" -> ")[0] for line in done.stdout.splitlines()}),
                         [b"in/a.png", b"in/print/d.png"])

    def test_a_folder_argument_is_always_searched_and_an_option_searches_all_folders(self):
        self.store({"name": "Out"}, {"name": "Web"}, {"name": "a/b"}, selection=[(0, 1)])
        for name in ("Web/a.png", "Web/Web/b.png", "Web/a/b/c.png", "Web/a/d.png"):
            self.picture(name)
        left_out = [f"left out Web/{name}, a folder for results; --all-folders searches it"
                    for name in ("Web", "a/b")]
        self.assertEqual(len(self.convert("-r", "Web", messages=left_out).stdout.splitlines()), 2)
        shutil.rmtree(self.folder / "Web" / "Out")
        done = self.convert("-r", "Web", "Web/Web", messages=left_out[1:])
        self.assertEqual(len(done.stdout.splitlines()), 3)
        for folder in ("Web/Out", "Web/Web/Out"):
            shutil.rmtree(self.folder / folder)
        self.assertEqual(len(self.convert("--all-folders", "Web/").stdout.splitlines()), 4)

    def test_without_pictures_the_status_is_1_unless_allow_empty_is_given(self):
        self.web()
        self.picture("deep/er/a.png")
        (self.folder / "empty").mkdir()
        (self.folder / "notes").mkdir()
        (self.folder / "notes" / "a.txt").write_text("words")
        messages = ["no pictures in empty", "no pictures in notes",
                    "no pictures in deep; --recursive searches its sub-folders", "1 other file left out"]
        arguments = ("empty", "notes", "deep")
        self.convert(*arguments, status=1, messages=[*messages, "nothing to convert"])
        self.convert("--allow-empty", *arguments, messages=messages)
        self.convert("empty", "deep/er", messages=messages[:1])

    def test_pictures_in_a_folder_that_cannot_be_read_are_named_and_other_files_counted(self):
        self.web()
        self.picture("in/a.png")
        contents = {"b.xcf": b"gimp xcf v011", "c": b"DDS |....", "d.JPG": b"", "e.txt": b"words",
                    "f.xmp": b"<x/>", ".hidden.heic": b""}
        for name, content in contents.items():
            (self.folder / "in" / name).write_bytes(content)
        unreadable = [f"in/{name}: the file is not in a picture format that can be read" for name in ("b.xcf", "c", "d.JPG")]
        self.convert("in", status=1, messages=[*unreadable, "2 other files left out",
                                               "3 of 4 files could not be converted as requested (3 not supported)"])
        (self.folder / "in" / "a.png").unlink()
        shutil.rmtree(self.folder / "in" / "Web")
        self.convert("--allow-empty", "in", status=1, messages=[
            *unreadable, "no pictures in in that can be read", "2 other files left out",
            "3 of 3 files could not be converted as requested (3 not supported)"])

    def test_an_inaccessible_folder_or_file_is_reported_and_the_others_are_converted(self):
        self.web()
        for name in ("in/a.png", "in/b.png", "in/closed/c.png", "other/d.png"):
            self.picture(name)
        for name, mode in (("in/b.png", 0), ("in/closed", 0), ("other", 0o555)):
            os.chmod(self.folder / name, mode)
        done = self.run_without_rights("convert", "-r", "in", "other", program="kestrinectl")
        for name in ("in/closed", "other"):
            os.chmod(self.folder / name, 0o755)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(messages_of(done), [
            "in/b.png: cannot open: Permission denied",
            "cannot read the folder in/closed: Permission denied",
            f"other/d.png: cannot create the folder {self.folder}/other/Web: Permission denied",
            "2 of 3 files could not be converted as requested (2 not permitted), 1 folder could not be read"])
        self.assertEqual(self.names("in/Web"), [b"a.jpg"])

    def test_a_damaged_picture_is_an_error_unless_it_is_accepted(self):
        self.web(replaceFile=1)
        whole = pictures.jpeg(pictures.photo(200, 100))
        (self.folder / "a.jpg").write_bytes(whole[:len(whole) // 2])
        error = self.convert("a.jpg", status=1).stderr.decode()
        self.assertIn("a.jpg: the picture is damaged (", error)
        self.assertIn("nothing was written; --accept-damaged converts it anyway\n", error)
        self.assertEqual((self.folder / "a.jpg").read_bytes(), whole[:len(whole) // 2])
        done = self.kestrinectl("convert", "--accept-damaged", "a.jpg")
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stderr.decode(), r"\Akestrinectl: warning: a\.jpg: the picture is damaged \(.*\n\Z")
        self.assertEqual((self.home / ".local/share/Trash/files/a.jpg").read_bytes(), whole[:len(whole) // 2])
        self.assertEqual(pictures.pixels(self.folder / "a.jpg").shape[:2], (15, 31))

    def animation(self, name, frames):
        first, *others = [Image.new("L", (60, 40), 40 * number) for number in range(frames)]
        first.save(self.folder / name, save_all=True, append_images=others)

    def test_only_the_first_frame_or_page_is_converted_with_a_warning(self):
        self.web()
        for name in "a.gif", "b.webp", "c.tif", "d.png":
            self.animation(name, 3)
        done = self.kestrinectl("convert", "a.gif", "b.webp", "c.tif", "d.png")
        self.assertEqual(done.returncode, 0)
        self.assertEqual(messages_of(done), [f"warning: {line}" for line in (
            "a.gif: only frame 1 of 3 is converted", "b.webp: only frame 1 of 3 is converted",
            "c.tif: only page 1 of 3 is converted", "d.png: only frame 1 of 3 is converted")])

    def test_an_animation_is_not_replaced_unless_its_first_frame_is_wanted(self):
        self.web(replaceFile=1)
        self.animation("a.gif", 4)
        original = (self.folder / "a.gif").read_bytes()
        self.convert("a.gif", status=1, messages=[
            "a.gif: not replaced, because it is an animation of 4 frames; --first-only replaces it with its first frame",
            "1 of 1 file could not be converted as requested (1 several pages or frames)"])
        self.assertEqual((self.folder / "a.gif").read_bytes(), original)
        self.assertEqual(self.convert("--first-only", "a.gif").stderr, b"")
        self.assertEqual((self.home / ".local/share/Trash/files/a.gif").read_bytes(), original)

    def test_undefined_codes_in_the_middle_of_a_picture_are_damage(self):
        self.web(replaceFile=1)
        damaged = bytearray(pictures.jpeg(pictures.photo(400, 300)))
        middle = len(damaged) // 2
        damaged[middle:middle + 400] = b"\xff\x00" * 200
        (self.folder / "a.jpg").write_bytes(damaged)
        self.assertIn(b"a.jpg: the picture is damaged (", self.convert("a.jpg", status=1).stderr)
        self.assertEqual((self.folder / "a.jpg").read_bytes(), damaged)

    def test_an_original_stays_when_the_name_of_its_result_is_too_long(self):
        self.store({"name": "Web", "formatType": TIFF, "replaceFile": 1}, selection=[(0, 1)])
        name = "a" * 251 + ".png"
        self.picture(name)
        self.assertIn(b"File name too long", self.convert(name, status=1).stderr)
        self.assertEqual(self.names(), [name.encode()])

    def test_a_failure_common_to_all_sets_is_reported_once(self):
        self.store({"name": "A", "formatType": JPEG}, {"name": "B", "formatType": PNG}, selection=[(0, 2)])
        (self.folder / "a.txt").write_text("words")
        self.assertEqual(len(self.convert("a.txt", status=1).stderr.splitlines()), 2)

    def test_several_sets_give_several_results_per_file(self):
        self.store({"name": "A", "formatType": JPEG}, {"name": "B", "formatType": PNG}, selection=[(0, 1)])
        self.picture("a.png")
        done = self.convert("--set", "B", "--set", "@1", "a.png")
        self.assertEqual([line.split(b"/")[-2] for line in done.stdout.splitlines()], [b"B", b"A"])

    def test_wrong_arguments_give_status_2_and_an_unknown_set_status_1(self):
        self.web()
        self.picture("a.png")
        for arguments in ((), ("-j", "0", "a.png"), ("-j", "x", "a.png"), ("--nonsense", "a.png")):
            self.assertRegex(self.convert(*arguments, status=2).stderr, rb"\Akestrinectl: [^\n]+\n\Z")
        self.assertIn(b'no set named "Print"', self.convert("--set", "Print", "a.png", status=1).stderr)
        self.store({"name": "Web"})
        self.assertIn(b"no set is selected", self.convert("a.png", status=2).stderr)

    def test_an_original_that_cannot_go_to_the_trash_is_reported(self):
        self.web(replaceFile=1)
        inside = self.home / ".local" / "share" / "Trash" / "files"  # files in the trash are not moved there again
        self.picture(inside / "a.png")
        done = self.convert(inside / "a.png", status=1)
        self.assertIn(f"the original could not be moved to the trash (it is in the trash or contains the trash) and remains in its place; "
                      f"the result is {inside}/a.jpg\n".encode(), done.stderr)
        self.assertEqual(self.names(inside), [b"a.jpg", b"a.png"])

    def test_a_file_without_a_result_is_not_replaced(self):
        self.web(replaceFile=1)
        (self.folder / "a.txt").write_text("words")
        self.convert("a.txt", status=1)
        self.assertEqual(self.names(), [b"a.txt"])
        self.assertFalse((self.home / ".local/share/Trash").exists())

    def test_when_the_result_cannot_be_published_the_message_names_the_place_of_the_original(self):
        self.web(replaceFile=1)
        self.picture("a.png")
        done = self.kestrinectl("convert", "a.png", environment={
            **self.environment, "LD_PRELOAD": os.environ["KESTRINE_FAILING_RENAME"],
            "ASAN_OPTIONS": "verify_asan_link_order=0:" + os.environ.get("ASAN_OPTIONS", "")})
        trashed = self.home / ".local/share/Trash/files/a.png"
        self.assertEqual((done.returncode, done.stderr.decode().splitlines()), (1, [
            f"kestrinectl: a.png: cannot create {self.folder}/a.jpg: Input/output error; the original is in the trash: "
            f"restore it there, or move it back from {trashed}",
            "kestrinectl: 1 of 1 file could not be converted as requested (1 system error)"]))
        self.assertTrue(trashed.exists())
        self.assertEqual(self.names(), [])

    def test_names_of_any_bytes_are_converted(self):
        self.web()
        self.picture("a.png")
        names = [b"sp ace.png", b"\xff\xfe.png", b"new\nline.png", b"-dash.png", b"[x,y].png", "ü%s.png".encode()]
        for name in names:
            shutil.copy(os.fsencode(self.folder / "a.png"), os.path.join(os.fsencode(self.folder), name))
        self.convert("-j", "2", "--", *names)
        self.assertEqual(self.names("Web"), sorted(name.replace(b".png", b".jpg") for name in names))

    def test_files_may_stand_before_and_after_the_end_of_options(self):
        self.web()
        self.picture("a.png")
        self.picture("-b.png")
        self.convert("a.png", "--", "-b.png")
        self.assertEqual(self.names("Web"), [b"-b.jpg", b"a.jpg"])

    def shown_on_a_terminal(self, *arguments):
        return on_a_terminal(lambda terminal: subprocess.run(
            [BIN / "kestrinectl", "convert", *arguments], cwd=self.folder, env=self.environment, stderr=terminal,
            stdout=terminal, check=False, timeout=60))

    def test_a_terminal_shows_the_progress(self):
        self.web()
        for name in ("a.png", "b.png"):
            self.picture(name)
        shown = self.shown_on_a_terminal("a.png", "b.png")
        self.assertIn(b"1 of 2", shown)
        self.assertTrue(shown.endswith(b"\r\x1b[K"), shown)

    def test_control_characters_are_escaped_on_a_terminal_and_raw_in_a_pipe(self):
        self.web()
        name = b"a\x1b[31m\n.png"
        self.picture(os.fsdecode(name))
        shown = self.shown_on_a_terminal(name, b"\tabsent.png")
        self.assertIn(b"a\\x1b[31m\\n.png -> ", shown)
        self.assertIn(b"kestrinectl: \\tabsent.png: ", shown)
        self.assertTrue(self.convert(name).stdout.startswith(name + b" -> "))

    def test_shown_paths_are_short_where_that_is_safe(self):
        self.web()
        self.picture("in/a.png")
        self.picture("-b.png")
        for typed, shown in (("./in//a.png", b"in/a.png"), ("in/./a.png", b"in/a.png"), ("in/../in/a.png", b"in/../in/a.png"),
                             ("./-b.png", b"./-b.png"), (".//in/./", b"in/a.png")):
            self.assertEqual(self.convert(typed).stdout.split(b" -> ")[0], shown)


class Stopping(ToolTest):
    """Signals arrive while the program waits to write to its standard output, a full pipe of one page."""

    COUNT = 150

    def start(self, program, *arguments, **fields):
        self.store({"name": "Web", "resizeType": 3, "formatType": JPEG, **fields}, selection=[(0, 1)])
        pictures.image(pictures.photo(8, 8)).save(self.folder / "p0.png")
        for i in range(1, self.COUNT):
            shutil.copy(self.folder / "p0.png", self.folder / f"p{i}.png")
        files = [f"p{i}.png" for i in range(self.COUNT)]
        process = subprocess.Popen([BIN / program, *arguments, *files], cwd=self.folder, env=self.environment,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(process.kill)
        fcntl.fcntl(process.stdout, fcntl.F_SETPIPE_SZ, 4096)
        deadline = time.monotonic() + 60
        while self.waiting(process.stdout) < 4096 - 150 and time.monotonic() < deadline:
            time.sleep(0.01)
        return process

    @staticmethod
    def waiting(pipe):
        return struct.unpack("i", fcntl.ioctl(pipe, termios.FIONREAD, b"\0" * 4))[0]

    def test_after_a_signal_the_current_files_are_finished_and_the_rest_is_counted(self):
        for number, jobs in ((signal.SIGINT, "1"), (signal.SIGTERM, "3"), (signal.SIGHUP, "2")):
            process = self.start("kestrinectl", "convert", "-j", jobs)
            process.send_signal(number)
            lines, error = process.communicate(timeout=60)
            done = lines.count(b"\n")
            self.assertLess(done, self.COUNT)
            self.assertEqual(error.decode(), f"kestrinectl: stopped by {number.name}: {done} files done, "
                                             f"{self.COUNT - done} left\n")
            self.assertEqual(process.returncode, 128 + number)
            self.assertEqual(len(self.names("Web")), done)
            shutil.rmtree(self.folder / "Web")

    def test_after_a_signal_every_original_or_its_result_is_in_place(self):
        process = self.start("kestrinectl", "convert", "-j", "2", replaceFile=1)
        process.send_signal(signal.SIGTERM)
        process.communicate(timeout=60)
        stems = {name.split(b".")[0] for name in self.names()}
        self.assertEqual(stems, {f"p{i}".encode() for i in range(self.COUNT)})

    def wait_until_taken(self, process, number):
        """Waits until the signal is no longer pending for the process."""
        status = Path(f"/proc/{process.pid}/status")
        for _ in range(60_000):
            pending = [line for line in status.read_text().splitlines() if line.startswith(("SigPnd:", "ShdPnd:"))]
            if not any(int(line.split()[1], 16) >> (number - 1) & 1 for line in pending):
                return
            time.sleep(0.001)
        self.fail("the signal is not taken")

    # Its _exit() flushes the streams of the C library, and so waits for the thread that waits to write.
    @unittest.skipIf(is_built_with("tsan"), "the thread sanitizer waits for standard output before it ends a program")
    def test_a_second_signal_ends_the_program_at_once(self):
        process = self.start("kestrinectl", "convert")
        process.send_signal(signal.SIGTERM)
        self.wait_until_taken(process, signal.SIGTERM)
        self.assertIsNone(process.poll(), "it must still be waiting to write")
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(timeout=60), 128 + signal.SIGINT)

    def test_an_ignored_signal_has_no_effect(self):
        before = signal.signal(signal.SIGHUP, signal.SIG_IGN)
        try:
            process = self.start("kestrinectl", "convert")
        finally:
            signal.signal(signal.SIGHUP, before)
        process.send_signal(signal.SIGHUP)
        lines, error = process.communicate(timeout=60)
        self.assertEqual((process.returncode, lines.count(b"\n")), (0, self.COUNT))
        self.assertRegex(error.decode(), TOTALS)

    def test_a_signal_ends_kestrine_at_once(self):
        process = self.start("kestrine")
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(timeout=60), -signal.SIGTERM)


if __name__ == "__main__":
    main()
