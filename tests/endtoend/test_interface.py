"""libkestrine through its C interface, called as other languages call it."""
import ctypes
import io
import json
import os
import re
import subprocess
import sys
import threading
import unittest
from pathlib import Path

import pictures
from PIL import Image
from tools import ToolTest, main

HEADER = Path(__file__).resolve().parent.parent.parent / "src/libkestrine/kestrine.h"
STATUS = {name: int(number) for name, number in re.findall(r"KESTRINE_(\w+) = (\d+)[,\s]", HEADER.read_text(encoding="utf-8"))}
Progress = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_double, ctypes.c_void_p)


class Info(ctypes.Structure):
    _fields_ = [("size", ctypes.c_size_t), ("format", ctypes.c_char * 16)] + [
        (name, ctypes.c_uint32) for name in ("width", "height", "orientation", "bits", "is_gray", "has_alpha", "has_profile",
                                             "contents", "count")]


class Result(ctypes.Structure):
    _fields_ = [("bytes", ctypes.c_void_p), ("length", ctypes.c_size_t)]


def loaded_library():
    library = ctypes.CDLL(os.environ["KESTRINE_LIBRARY"])
    library.kestrine_error_text.restype = library.kestrine_version.restype = ctypes.c_char_p
    library.kestrine_close.restype = None
    library.kestrine_close.argtypes = library.kestrine_describe.argtypes = None
    return library


class Interface(ToolTest):
    def setUp(self):
        super().setUp()
        self.library = loaded_library()
        self.path = self.folder / "a.png"
        pictures.image(pictures.photo(300, 200)).save(self.path)

    def error(self):
        return self.library.kestrine_error_text().decode()

    def assertStatus(self, name, status, text=""):
        self.assertEqual(status, STATUS[name], self.error())
        if name != "OK":
            self.assertRegex(self.error(), text)

    def opened(self, path=None):
        picture = ctypes.c_void_p()
        self.assertStatus("OK", self.library.kestrine_open_path(os.fsencode(path or self.path), ctypes.byref(picture)))
        self.addCleanup(self.library.kestrine_close, picture)
        return picture

    def options(self, options):
        return json.dumps(options).encode()

    def converted(self, picture=None, **options):
        """The result, as Pillow sees it."""
        result = Result()
        status = self.library.kestrine_convert_to_memory(picture or self.opened(), self.options(options), ctypes.byref(result))
        self.assertStatus("OK", status)
        content = ctypes.string_at(result.bytes, result.length)
        self.library.kestrine_free(ctypes.byref(result))
        self.assertIsNone(result.bytes)
        return Image.open(io.BytesIO(content))

    def assertFails(self, name, text, **options):
        result = Result(1, 1)
        status = self.library.kestrine_convert_to_memory(self.opened(), self.options(options), ctypes.byref(result))
        self.assertStatus(name, status, text)
        self.assertEqual((result.bytes, result.length), (None, 0))


class Opening(Interface):
    def test_pictures_come_from_paths_descriptors_and_memory(self):
        content = self.path.read_bytes()
        with open(self.path, "rb") as file:
            for call in ((self.library.kestrine_open_path, os.fsencode(self.path)),
                         (self.library.kestrine_open_descriptor, file.fileno()),
                         (self.library.kestrine_open_memory, content, ctypes.c_size_t(len(content)))):
                picture = ctypes.c_void_p()
                self.assertStatus("OK", call[0](*call[1:], ctypes.byref(picture)))
                self.assertEqual(self.converted(picture, longest=30).size, (30, 20))
                self.library.kestrine_close(picture)
            self.assertEqual(file.read(4), content[:4])

    def test_failures_have_a_status_and_a_text_and_leave_a_null_picture(self):
        (self.folder / "text.jpg").write_text("words")
        (self.folder / "cut.png").write_bytes(self.path.read_bytes()[:20])
        for name, path, text in (("NOT_FOUND", "none.jpg", "none.jpg: No such file"), ("NOT_A_FILE", ".", "not a regular file"),
                                 ("UNSUPPORTED", "text.jpg", "not in a known picture format"), ("MALFORMED", "cut.png", "PNG")):
            picture = ctypes.c_void_p(1)
            status = self.library.kestrine_open_path(os.fsencode(self.folder / path), ctypes.byref(picture))
            self.assertStatus(name, status, text)
            self.assertIsNone(picture.value)
        self.assertStatus("INPUT_OUTPUT", self.library.kestrine_open_descriptor(-1, ctypes.byref(picture)), "descriptor")

    def test_null_arguments_are_refused(self):
        info, result = Info(size=ctypes.sizeof(Info)), Result()
        for status in (self.library.kestrine_open_path(b"a.png", None), self.library.kestrine_describe(None, ctypes.byref(info)),
                       self.library.kestrine_describe(self.opened(), None),
                       self.library.kestrine_convert_to_memory(None, None, ctypes.byref(result)),
                       self.library.kestrine_convert_to_memory(self.opened(), None, None),
                       self.library.kestrine_convert_to_path(self.opened(), None, None),
                       self.library.kestrine_set_progress(None, None, None)):
            self.assertStatus("WRONG_ARGUMENT", status, "is null")
        self.library.kestrine_close(None)
        self.library.kestrine_free(None)


class Describing(Interface):
    def described(self, path, size=ctypes.sizeof(Info)):
        info = Info(size=size)
        self.assertStatus("OK", self.library.kestrine_describe(self.opened(path), ctypes.byref(info)))
        return info

    def test_a_photograph(self):
        exif = Image.Exif()
        exif[0x0112] = 6
        Image.new("RGB", (30, 20)).save(self.folder / "a.jpg", exif=exif, icc_profile=b"")
        info = self.described(self.folder / "a.jpg")
        self.assertEqual((info.format, info.width, info.height, info.orientation, info.bits, info.is_gray, info.has_alpha,
                          info.has_profile, info.contents, info.count), (b"JPEG", 30, 20, 6, 8, 0, 0, 0, 0, 1))

    def test_an_animation_and_transparency_and_16_bits(self):
        frames = [Image.new("RGBA", (30, 20), (i, 0, 0, i)) for i in (0, 99, 200)]
        frames[0].save(self.folder / "a.webp", save_all=True, append_images=frames[1:], lossless=True)
        info = self.described(self.folder / "a.webp")
        self.assertEqual((info.format, info.has_alpha, info.contents, info.count), (b"WebP", 1, 1, 3))
        Image.new("I;16", (3, 2), 70).save(self.folder / "b.png")
        info = self.described(self.folder / "b.png")
        self.assertEqual((info.bits, info.is_gray), (16, 1))

    def test_programs_with_a_shorter_structure_get_what_fits(self):
        size = Info.height.offset
        info = Info(size=size, height=77)
        self.assertStatus("OK", self.library.kestrine_describe(self.opened(), ctypes.byref(info)))
        self.assertEqual((info.size, info.width, info.height), (size, 300, 77))
        info.size = 0
        self.assertStatus("WRONG_ARGUMENT", self.library.kestrine_describe(self.opened(), ctypes.byref(info)), "size")


class Converting(Interface):
    def test_sizes(self):
        for options, size in (({"longest": 150}, (150, 100)), ({"width": 30}, (30, 20)), ({"height": 30}, (45, 30)),
                              ({"width": 10, "height": 30}, (10, 30)), ({"percent": 50}, (150, 100)), ({"fit": "60x60"}, (60, 40)),
                              ({"fit": "60x60", "pad": "red"}, (60, 60)), ({"cover": "60x60", "gravity": "north"}, (60, 60)),
                              ({"longest": 600, "enlarge": False}, (300, 200)), ({}, (300, 200))):
            self.assertEqual(self.converted(**options).size, size, options)

    def test_formats_and_what_they_carry(self):
        for name, title in (("jpeg", "JPEG"), ("png", "PNG"), ("tiff", "TIFF"), ("gif", "GIF"), ("webp", "WEBP")):
            self.assertEqual(self.converted(format=name, longest=30).format, title)
        exif = Image.Exif()
        exif[0x010f], exif[0x0112] = "Maker", 6
        Image.new("RGB", (30, 20)).save(self.folder / "a.jpg", exif=exif)
        picture = self.opened(self.folder / "a.jpg")
        upright = self.converted(picture)
        self.assertEqual((upright.format, upright.size, dict(upright.getexif())[0x010f]), ("JPEG", (20, 30), "Maker"))
        self.assertEqual(self.converted(picture, upright=False).size, (30, 20))
        self.assertNotIn(0x010f, self.converted(picture, metadata="none").getexif())

    def test_results_equal_those_of_kestrinectl(self):
        self.kestrinectl("convert", "--longest", "100", "--format", "jpeg", "--quality", "66", "--out", "out", "a.png")
        result = self.folder / "own.jpg"
        status = self.library.kestrine_convert_to_path(
            self.opened(), self.options({"longest": 100, "format": "jpeg", "quality": 66}), os.fsencode(result))
        self.assertStatus("OK", status)
        self.assertEqual(result.read_bytes(), (self.folder / "out/a.jpg").read_bytes())

    def test_every_option_is_that_of_kestrinectl(self):
        Image.fromarray(pictures.photo(90, 60)).convert("RGBA").resize((90, 60)).save(self.folder / "t.png")
        Image.fromarray(pictures.photo(90, 60)).save(self.folder / "wide.jpg", icc_profile=pictures.wide_icc(), quality=90)
        for name, options, words in (
                ("wide.jpg", {"format": "jpeg", "progressive": True}, ["--format", "jpeg", "--progressive"]),
                ("t.png", {"format": "png", "effort": "max"}, ["--format", "png", "--effort", "max"]),
                ("t.png", {"format": "jpeg", "background": "#204060"}, ["--format", "jpeg", "--background", "#204060"]),
                ("wide.jpg", {"format": "png", "profile": "srgb"}, ["--format", "png", "--profile", "srgb"]),
                ("t.png", {"format": "webp", "lossless": True}, ["--format", "webp", "--lossless"]),
                ("wide.jpg", {"fit": "40x40", "pad": "#102030", "gravity": "north"},
                 ["--fit", "40x40", "--pad", "#102030", "--gravity", "north"]),
                ("wide.jpg", {"cover": "40x40", "gravity": "east"}, ["--cover", "40x40", "--gravity", "east"]),
                ("wide.jpg", {"longest": 900, "enlarge": False, "quality": 55}, ["--longest", "900", "--no-enlarge", "--quality", "55"])):
            self.kestrinectl("convert", *words, "--metadata", "none", "--name", "result", name)
            made = self.converted(self.opened(self.folder / name), metadata="none", **options).fp.getvalue()
            self.assertEqual(made, (self.folder / "result").read_bytes(), options)
            (self.folder / "result").unlink()

    def test_wrong_options_are_named(self):
        for options, text in (({"longst": 3}, 'no option "longst"'), ({"longest": "3"}, '"longest" must be a whole number'),
                              ({"longest": -3}, "whole number"), ({"longest": 3, "percent": 5}, "more than one size"),
                              ({"format": "bmp"}, '"format" must be jpeg'), ({"quality": 101}, "0 to 100"),
                              ({"pad": "red"}, '"pad" needs "fit"'), ({"gravity": "north"}, '"gravity" needs'),
                              ({"lossless": True, "format": "jpeg"}, "no effect on JPEG"), ({"threads": 9}, "0 or 1"),
                              ({"quality": 3, "format": "png"}, "no effect on PNG"),
                              ({"effort": "normal", "format": "jpeg"}, '"effort" has no effect on JPEG'), ({"upright": 1}, "true or false"),
                              ({"maxBytes": True}, '"maxBytes" must be a number of bytes'), ({"threads": 0.5}, "0 or 1"), ({"fit": "60"}, "1200x800")):
            self.assertFails("WRONG_ARGUMENT", text, **options)
        result = Result()
        for text in (b"[]", b"{", b"\xff", b"\"words\"", b"{}{}"):
            status = self.library.kestrine_convert_to_memory(self.opened(), text, ctypes.byref(result))
            self.assertStatus("WRONG_ARGUMENT", status, "not a JSON object")

    def test_the_most_bytes_are_kept_or_refused(self):
        self.assertLessEqual(len(self.converted(format="jpeg", maxBytes=9000).fp.getvalue()), 9000)
        self.assertFails("TOO_LARGE", "no quality", format="jpeg", maxBytes=10)

    def test_damaged_pictures_need_consent(self):
        Image.fromarray(pictures.photo(300, 200)).save(self.folder / "a.jpg", quality=95)
        content = (self.folder / "a.jpg").read_bytes()
        (self.folder / "a.jpg").write_bytes(content[:len(content) // 2])
        result = Result()
        picture = self.opened(self.folder / "a.jpg")
        self.assertStatus("DAMAGED", self.library.kestrine_convert_to_memory(picture, None, ctypes.byref(result)), ".")
        self.assertEqual(self.converted(picture, acceptDamaged=True).size, (300, 200))

    def test_one_thread_gives_the_same_bytes_and_pictures_may_be_converted_at_the_same_time(self):
        expected = self.converted(longest=100, format="jpeg").fp.getvalue()
        self.assertEqual(self.converted(longest=100, format="jpeg", threads=1).fp.getvalue(), expected)
        found = []
        opened = [self.opened() for _ in range(8)]
        threads = [threading.Thread(target=lambda p=p: found.append(self.converted(p, longest=100, format="jpeg").fp.getvalue()))
                   for p in opened]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(found, [expected] * 8)

    def test_errors_of_one_thread_are_not_those_of_another(self):
        self.assertFails("WRONG_ARGUMENT", "longst", longst=1)
        texts = []
        thread = threading.Thread(target=lambda: texts.append(self.error()))
        thread.start()
        thread.join()
        self.assertEqual(texts, [""])
        self.assertRegex(self.error(), "longst")


class Writing(Interface):
    def test_files_are_not_replaced_unless_asked(self):
        target = self.folder / "out.jpg"
        target.write_text("mine")
        path = os.fsencode(target)
        self.assertStatus("ALREADY_EXISTS", self.library.kestrine_convert_to_path(
            self.opened(), b'{"format": "jpeg"}', path), "out.jpg exists already")
        self.assertEqual(target.read_text(), "mine")
        for _ in range(2):
            self.assertStatus("OK", self.library.kestrine_convert_to_path(
                self.opened(), b'{"format": "jpeg", "overwrite": true}', path))
            self.assertEqual(Image.open(target).format, "JPEG")
            target.unlink()
        self.assertEqual(self.names(), [b"a.png"])

    def test_folders_are_not_made(self):
        status = self.library.kestrine_convert_to_path(self.opened(), None, os.fsencode(self.folder / "none/a.png"))
        self.assertStatus("NOT_FOUND", status, "No such file")

    def test_a_path_that_no_file_can_have_is_refused(self):
        (self.folder / "d").mkdir()
        for path, status in ((b"", "WRONG_ARGUMENT"), (os.fsencode(self.folder / "d") + b"/", "NOT_A_FILE")):
            for options in (None, b'{"overwrite": true}'):
                self.assertStatus(status, self.library.kestrine_convert_to_path(self.opened(), options, path), "empty|folder")

    def test_descriptors_get_the_bytes_from_their_position_on(self):
        with open(self.folder / "out", "w+b") as file:
            file.write(b"before")
            file.flush()
            self.assertStatus("OK", self.library.kestrine_convert_to_descriptor(
                self.opened(), b'{"format": "png"}', file.fileno()))
            file.seek(6)
            self.assertEqual(Image.open(io.BytesIO(file.read())).size, (300, 200))
        self.assertStatus("INPUT_OUTPUT", self.library.kestrine_convert_to_descriptor(self.opened(), None, -1), "write")


class Following(Interface):
    def test_progress_grows_to_1_and_ends_with_null(self):
        picture, shares = self.opened(), []
        report = Progress(lambda share, user: shares.append((share, user)) or 0)
        self.library.kestrine_set_progress(picture, report, ctypes.c_void_p(5))
        self.converted(picture, longest=150)
        self.assertEqual((shares[0], shares[-1]), ((0, 5), (1, 5)))
        self.assertEqual(shares, sorted(set(shares)))
        self.assertGreater(len(shares), 50)
        self.library.kestrine_set_progress(picture, None, None)
        self.converted(picture, longest=150)
        self.assertEqual(shares[-1], (1, 5))

    def test_progress_is_1_only_when_there_is_a_result(self):
        picture, shares, result = self.opened(), [], Result()
        report = Progress(lambda share, user: shares.append(share) or int(share == 1))
        self.library.kestrine_set_progress(picture, report, None)
        for options in ({"format": "jpeg", "maxBytes": 10}, {"format": "webp", "longest": 17000}):
            status = self.library.kestrine_convert_to_memory(picture, self.options(options), ctypes.byref(result))
            self.assertStatus("TOO_LARGE", status, ".")
        self.assertLess(max(shares), 1)

    def test_a_conversion_may_be_cancelled_and_repeated(self):
        for format in ("jpeg", "png", "tiff", "gif", "webp"):
            picture, result = self.opened(), Result()
            report = Progress(lambda share, user: share > 0.5)
            self.library.kestrine_set_progress(picture, report, None)
            status = self.library.kestrine_convert_to_memory(picture, self.options({"format": format}), ctypes.byref(result))
            self.assertStatus("CANCELLED", status, "cancelled")
            self.library.kestrine_set_progress(picture, None, None)
            self.assertEqual(self.converted(picture, format=format).size, (300, 200))


class Workers(ToolTest):
    # The beginning of each program, which is a process of its own that uses workers.
    BEGINNING = """
import ctypes, os, pathlib, signal, sys, time
library = ctypes.CDLL(os.environ["KESTRINE_LIBRARY"])
library.kestrine_error_text.restype = ctypes.c_char_p
library.kestrine_close.restype = library.kestrine_free.restype = None
class Result(ctypes.Structure):
    _fields_ = [("bytes", ctypes.c_void_p), ("length", ctypes.c_size_t)]
def use_workers():
    assert library.kestrine_use_workers(os.fsencode(os.environ["KESTRINE_WORKER"])) == 0, library.kestrine_error_text()
def opened(path):
    picture = ctypes.c_void_p()
    assert library.kestrine_open_path(path, ctypes.byref(picture)) == 0, library.kestrine_error_text()
    return picture
def result_of(picture, longest):
    result = Result()
    options = b'{"format": "png", "longest": %d}' % longest
    status = library.kestrine_convert_to_memory(picture, options, ctypes.byref(result))
    assert status == 0, library.kestrine_error_text()
    content = ctypes.string_at(result.bytes, result.length)
    library.kestrine_free(ctypes.byref(result))
    return content
def converted(path, longest):
    picture = opened(path)
    content = result_of(picture, longest)
    library.kestrine_close(picture)
    return content
def children(process):
    return [int(child) for child in pathlib.Path(f"/proc/{process}/task/{process}/children").read_text().split()]
def names_of_files(process):
    for file in pathlib.Path(f"/proc/{process}/fd").iterdir():
        try:
            yield os.path.basename(os.readlink(file))
        except FileNotFoundError:  # it was closed meanwhile
            pass
def wait_for_end_of(processes):
    for process in processes:
        while pathlib.Path(f"/proc/{process}").exists():
            time.sleep(0.001)
"""

    def setUp(self):
        super().setUp()
        for name, size in (("a.png", (300, 200)), ("b.png", (190, 260))):
            pictures.image(pictures.photo(*size)).save(self.folder / name)

    def run_program(self, program):
        """The output of a Python program that has no other threads and no other children."""
        done = subprocess.run([sys.executable, "-c", self.BEGINNING + program], cwd=self.folder,
                              env={**os.environ, **self.environment}, capture_output=True, text=True, timeout=120)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def test_pictures_are_decoded_in_workers(self):
        """The child of the program starts the workers, and one of them has the picture open."""
        printed = self.run_program("""
assert library.kestrine_use_workers(b"/nonexistent") == 2
for wrong in (b"/tmp", b"/etc/passwd", b"/bin/true"):
    assert library.kestrine_use_workers(wrong) == 4, wrong
    assert library.kestrine_error_text() == wrong + b" does not start as a worker"
use_workers()
assert library.kestrine_convert_to_path(opened(b"a.png"), b'{"longest": 30}', b"c.png") == 0, library.kestrine_error_text()
for child in children(os.getpid()):
    for worker in children(child):
        print(pathlib.Path(f"/proc/{worker}/comm").read_text().strip(), *names_of_files(worker))
""")
        self.assertRegex(printed, r"^kestrine-worker .*\ba\.png")
        self.assertEqual(Image.open(self.folder / "c.png").size, (30, 20))

    def test_a_forked_copy_and_its_parent_convert_at_the_same_time(self):
        """Includes pictures that were opened before the fork. Uses a pool of processes, as is usual in Python."""
        self.run_program("""
import multiprocessing
jobs = [(path, longest) for longest in range(20, 50) for path in (b"a.png", b"b.png")]
expected = [converted(*job) for job in jobs]
use_workers()
before = {path: opened(path) for path in (b"a.png", b"b.png")}
assert [result_of(before[path], longest) for path, longest in jobs] == expected
def both(job):
    path, longest = job
    return converted(*job), result_of(before[path], longest)
with multiprocessing.get_context("fork").Pool(3) as pool:
    found = pool.map_async(both, jobs, chunksize=1)
    for turn in range(2):
        assert [both(job) for job in jobs] == [(content, content) for content in expected]
    assert found.get() == [(content, content) for content in expected]
assert [converted(*job) for job in jobs] == expected
""")

    def test_the_program_that_starts_workers_is_started_again(self):
        self.run_program("""
use_workers()
picture = opened(b"a.png")
expected = result_of(picture, 50)
for turn in range(3):
    helper, = children(os.getpid())
    workers = children(helper)
    os.kill(helper, signal.SIGKILL)
    wait_for_end_of(workers)
    assert result_of(picture, 50) == expected
    assert converted(b"a.png", 50) == expected
    assert library.kestrine_use_workers(None) == 0
    new, = children(os.getpid()) # so no zombie is left
    assert new != helper
""")

    def test_signals_of_a_terminal_do_not_end_workers(self):
        self.run_program("""
os.setpgrp()
use_workers()
expected = converted(b"a.png", 50)
before = children(os.getpid())
for number in (signal.SIGINT, signal.SIGQUIT, signal.SIGTERM, signal.SIGHUP):
    signal.signal(number, lambda *_: None)
    os.killpg(0, number)
    assert converted(b"a.png", 50) == expected, number
assert children(os.getpid()) == before
""")


if __name__ == "__main__":
    main()
