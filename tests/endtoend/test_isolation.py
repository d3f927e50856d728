"""Decoders run in a process without rights: a hostile file costs itself and nothing else."""
import os
import re
import shutil
import subprocess
import unittest

from pictures import image, jpeg, photo
from tools import JPEG, ToolTest, is_sanitized, main, messages_of

OTHERS = ["a.jpg", "c.jpg", "d.jpg", "e.jpg"]
FILES = ["a.jpg", "bad.jpg", "c.jpg", "d.jpg", "e.jpg"]


def can_trace():
    return subprocess.run(["strace", "-qq", "-o", os.devnull, "true"], capture_output=True, check=False).returncode == 0


class Isolation(ToolTest):
    """Five pictures. The second one is progressive, so a planted fault strikes when it is read."""

    def setUp(self):
        super().setUp()
        self.store(dict(name="Web", formatType=JPEG, resizeType=2, maxSize=40.0), selection=[(0, 1)])
        for number, name in enumerate(FILES):
            (self.folder / name).write_bytes(jpeg(photo(90, 60, seed=number), progressive=name == "bad.jpg"))

    def with_fault(self, fault):
        return {**self.environment, "LD_PRELOAD": os.environ["KESTRINE_PLANTED_FAULT"], "KESTRINE_FAULT": fault,
                "ASAN_OPTIONS": "verify_asan_link_order=0:" + os.environ.get("ASAN_OPTIONS", "")}

    def results(self):
        folder = self.folder / "Web"
        names = sorted(path.name for path in folder.iterdir()) if folder.exists() else []
        shutil.rmtree(folder, ignore_errors=True)
        return names

    def assert_nothing_escaped(self):
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()), FILES)


@unittest.skipIf(is_sanitized(), "sanitizers report crashes on standard error")
class PlantedFaults(Isolation):
    def test_a_decoder_that_crashes_costs_its_one_file(self):
        for fault in ["crash", "overflow"]:
            self.kestrine(*FILES, environment=self.with_fault(fault))
            self.assertEqual(self.results(), OTHERS, fault)
            for jobs in "1", "2":
                done = self.kestrinectl("convert", "-j", jobs, *FILES, environment=self.with_fault(fault))
                self.assertEqual(messages_of(done), [
                    "bad.jpg: the decoder crashed",
                    "1 of 5 files could not be converted as requested (1 decoder crashed)"])
                self.assertEqual((done.returncode, self.results()), (1, OTHERS), fault)
        self.assert_nothing_escaped()

    def test_a_decoder_that_wants_much_memory_costs_its_one_file(self):
        done = self.kestrinectl("convert", *FILES, environment=self.with_fault("allocate"))
        self.assertIn(b"bad.jpg: not enough memory", done.stderr)
        self.assertEqual((done.returncode, self.results()), (1, OTHERS))

    def test_a_decoder_can_neither_create_a_file_nor_start_a_program(self):
        for fault in ["write", "start"]:
            for run in self.kestrine, self.kestrinectl:
                arguments = ["convert", *FILES] if run == self.kestrinectl else FILES
                run(*arguments, environment=self.with_fault(fault))
                self.assertLessEqual(set(OTHERS), set(self.results()), fault)
                self.assert_nothing_escaped()

    def test_the_planted_fault_would_create_a_file_without_the_isolation(self):
        self.kestrinectl("convert", "--isolation", "off", "bad.jpg", environment=self.with_fault("write"))
        self.assertTrue((self.folder / "escaped").exists())

    def test_a_decoder_cannot_kill_the_program(self):
        self.kestrine(*FILES, environment=self.with_fault("kill"))
        self.assertLessEqual(set(OTHERS), set(self.results()))

    def test_a_replacing_set_keeps_the_original_of_which_the_decoder_crashed(self):
        self.store(dict(name="Small", replaceFile=1, formatType=JPEG), selection=[(0, 1)])
        before = (self.folder / "bad.jpg").read_bytes()
        self.kestrinectl("convert", "bad.jpg", environment=self.with_fault("crash"))
        self.assertEqual((self.folder / "bad.jpg").read_bytes(), before)

    @unittest.skipUnless(can_trace(), "this system permits no tracing of programs")
    def test_exif_data_are_read_in_isolation_too(self):
        trace = self.home / "trace"
        done = self.run_tool("-f", "-e", "trace=seccomp,landlock_restrict_self,fork,clone,sendmsg", "-o", trace,
                             self.program("kestrinectl"), "exif", "a.jpg", program="/usr/bin/strace")
        self.assertEqual(done.stderr, b"kestrinectl: a.jpg: no EXIF data\n")
        self.assertIn("SECCOMP_SET_MODE_FILTER", trace.read_text())


class Choice(Isolation):
    def test_every_choice_gives_the_same_files(self):
        contents = []
        for choice in ["auto", "strict", "off"]:
            done = self.kestrinectl("convert", "--isolation", choice, *FILES)
            self.assertEqual((done.returncode, messages_of(done)), (0, []), choice)
            contents.append([(self.folder / "Web" / name).read_bytes() for name in FILES])
            self.results()
        self.assertEqual(contents[0], contents[1])
        self.assertEqual(contents[0], contents[2])

    def test_other_choices_are_refused(self):
        done = self.kestrinectl("convert", "--isolation", "some", "a.jpg")
        self.assertEqual((done.returncode, done.stderr.decode().splitlines()[0].split(";")[0]),
                         (2, "kestrinectl: --isolation: must be auto, strict or off"))

    def test_the_doctor_shows_every_layer(self):
        done = self.kestrinectl("doctor")
        self.assertEqual(done.returncode, 0)
        lines = done.stdout.decode().splitlines()
        self.assertEqual([line.strip().split(":")[0] for line in lines[:5]],
                         ["isolation of the decoders", "worker process", "resource limits", "Landlock",
                          "system call filter"])
        self.assertEqual(lines[1], "  worker process: in force (a decoder that crashes or hangs costs one file)")


@unittest.skipIf(is_sanitized(), "sanitizers start a process at the end of a program")
@unittest.skipUnless(can_trace(), "this system permits no tracing of programs")
class NoPicture(Isolation):
    """No process is started for what converts nothing."""

    def processes_started_by(self, *arguments):
        trace = self.home / "trace"
        self.run_tool("-f", "-e", "trace=fork,vfork,clone,clone3,socketpair,seccomp", "-o", trace,
                      self.program("kestrine"), *arguments, program="/usr/bin/strace")
        return [line for line in trace.read_text().splitlines() if "exited with" not in line]

    def test_lists_selections_and_files_that_are_no_pictures_start_nothing(self):
        (self.folder / "words.txt").write_text("words")
        for arguments in [["-l"], [], ["words.txt"], ["missing.jpg"]]:
            self.assertEqual(self.processes_started_by(*arguments), [], arguments)
        self.assertNotEqual(self.processes_started_by("a.jpg"), [])


@unittest.skipIf(is_sanitized(), "sanitizers are libraries themselves")
@unittest.skipUnless(can_trace(), "this system permits no tracing of programs")
class Libraries(Isolation):
    """Libraries cost time at every start, so that most are opened only when a file asks for them."""

    ALWAYS = {"libc.so.6", "libm.so.6", "libjpeg.so.62", "libplist-2.0.so.3"}
    PICTURES = {"liblcms2.so.2", "libpng16.so.16", "libz.so.1"}

    def opened_by(self, *arguments):
        trace = self.home / "trace"
        self.run_tool("-f", "-e", "trace=openat", "-o", trace, self.program("kestrine"), *arguments, program="/usr/bin/strace")
        return set(re.findall(r'"[^"]*/(lib[^/"]+\.so[.\d]*)".*= \d', trace.read_text()))

    def test_a_list_of_presets_needs_no_library_for_pictures(self):
        self.assertEqual(self.opened_by("-l"), self.ALWAYS)

    def test_a_jpeg_needs_no_library_of_other_formats(self):
        self.assertEqual(self.opened_by("a.jpg"), self.ALWAYS | self.PICTURES)
        self.assertEqual(self.results(), ["a.jpg"])

    def test_a_gif_needs_one_more(self):
        image(photo(30, 20)).save(self.folder / "a.gif")
        self.assertEqual(self.opened_by("a.gif"), self.ALWAYS | self.PICTURES | {"libgif.so.7"})


main()
