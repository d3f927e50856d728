"""The pages of `kestrinectl compare` in a real browser."""
import base64
import io
import os
import socket
import sys
import urllib.error
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent.parent / "endtoend"))

import numpy
from chromium import Chromium
from PIL import Image
from pictures import jpeg, photo
from tools import ToolTest, main

ARROW_LEFT, ARROW_RIGHT, HOME, END, TAB = "\ue012", "\ue014", "\ue011", "\ue010", "\ue004"
ODD_NAME = "a <b>&\"'$(x)\u202e.jpg"


def contrast(first, second):
    """The ratio of WCAG 2 between two colours such as "rgb(1, 2, 3)"."""
    def luminance(color):
        values = [int(number) / 255 for number in color.removeprefix("rgb(").removesuffix(")").split(",")]
        linear = [value / 12.92 if value <= 0.03928 else ((value + 0.055) / 1.055) ** 2.4 for value in values]
        return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]
    darker, lighter = sorted((luminance(first), luminance(second)))
    return (lighter + 0.05) / (darker + 0.05)


class Pages(ToolTest):
    @classmethod
    def setUpClass(cls):
        cls.browser = Chromium()
        cls.addClassCleanup(cls.browser.close)

    def open(self, *arguments):
        """Makes a page and opens it. All its pictures are decoded then."""
        done = self.kestrinectl("compare", *arguments, "-o", "page.html")
        self.assertEqual(done.returncode, 0, done)
        self.browser.requests(), self.browser.complaints()
        self.browser.open(self.folder / "page.html")
        self.browser.wait_until("[...document.images].every((picture) => picture.complete)")

    def open_usual(self):
        (self.folder / ODD_NAME).write_bytes(jpeg(photo(300, 200)))
        self.open("--quality", "40,90", ODD_NAME)

    def slider(self):
        return int(self.browser.run("return document.querySelector('.slider input').value"))

    def shown_share(self):
        """How much of the width the left picture covers, in percent."""
        return self.browser.run("return 100 - parseFloat(getComputedStyle(document.querySelector('.frame .left')).clipPath"
                                ".split(' ')[1])")

    def focus(self, selector):
        self.browser.run(f"document.querySelector(arguments[0]).focus()", selector)


class Start(ToolTest):
    """A browser that cannot start leaves nothing."""

    def start_with(self, *lines):
        """Starts a driver that prints these lines. Returns the error."""
        driver = self.home / "driver"
        driver.write_text(f"#!/bin/sh\nprintf '%s\\n' $$ \"$HOME\" >'{self.home}/started'\n" + "\n".join(lines) + "\n")
        driver.chmod(0o755)
        with self.assertRaises(Exception) as raised:
            Chromium(driver)
        process, profile = (self.home / "started").read_text().splitlines()
        self.assertFalse(Path("/proc", process).exists() or Path(profile).exists())
        return raised.exception

    def test_a_driver_without_a_port_is_named_with_what_it_printed(self):
        self.assertEqual(str(self.start_with("echo no libraries >&2")),
                         f"{self.home / 'driver'} printed no port, but 'no libraries\\n'")

    def test_a_driver_that_cannot_start_the_browser_is_ended(self):
        with socket.socket() as closed:
            closed.bind(("127.0.0.1", 0))
            error = self.start_with(f"echo started successfully on port {closed.getsockname()[1]}", "exec sleep 60")
        self.assertIsInstance(error, urllib.error.URLError)


class Content(Pages):
    def test_every_picture_is_decoded(self):
        formats = ["jpeg", "png", "gif", "webp", "avif", "tiff", "jxl"]
        (self.folder / "a.jpg").write_bytes(jpeg(photo(300, 200)))
        self.open("--format", ",".join(formats), "a.jpg")
        sizes = self.browser.run("return [...document.images].map((picture) => [picture.naturalWidth, picture.naturalHeight])")
        self.assertEqual(sizes, [[300, 200]] * (2 + 1 + len(formats)))

    def test_nothing_is_loaded_and_nothing_violates_the_policy(self):
        self.open_usual()
        page = (self.folder / "page.html").as_uri()
        self.assertEqual([address for address in self.browser.requests() if not address.startswith("data:")], [page])
        self.assertEqual(self.browser.complaints(), [])

    def test_the_policy_stops_what_a_page_should_not_do(self):
        self.open_usual()
        self.browser.run("const element = document.createElement('img'); element.src = 'http://127.0.0.1:9/x.png';"
                         "document.body.append(element);"
                         "const script = document.createElement('script'); script.textContent = 'window.injected = 1';"
                         "document.body.append(script);")
        self.assertIsNone(self.browser.run("return window.injected"))
        complaints = self.browser.complaints()
        self.assertEqual(len([text for text in complaints if "Content Security Policy" in text]), 2, complaints)

    def test_odd_names_are_text(self):
        self.open_usual()
        name = ODD_NAME.replace("\u202e", "\\u202e")
        self.assertEqual(self.browser.run("return document.querySelector('h2').textContent"), name)
        self.assertEqual(self.browser.run("return document.title"), "Comparison of " + name)


class Slider(Pages):
    def test_the_keyboard_moves_it(self):
        self.open_usual()
        self.focus(".slider input")
        for key, value in (ARROW_RIGHT, 51), (ARROW_LEFT, 50), (HOME, 0), (END, 100), (ARROW_LEFT, 99):
            self.browser.press(key)
            self.assertEqual(self.slider(), value)
            self.assertAlmostEqual(self.shown_share(), value, places=3)

    def test_the_mouse_moves_it_on_the_picture(self):
        self.open_usual()
        frame = self.browser.find(".frame")
        self.browser.drag(frame, (0, 0), (75, 0)) # a quarter of 300 pixels
        self.assertAlmostEqual(self.slider(), 75, delta=1)
        self.assertAlmostEqual(self.shown_share(), 75, delta=1)

    def test_the_right_picture_does_not_shine_through_a_transparent_left_one(self):
        samples = numpy.zeros((60, 80, 4), numpy.uint8)
        Image.fromarray(samples).save(self.folder / "clear.png")
        self.open("--format", "png", "clear.png")
        red = io.BytesIO()
        Image.new("RGB", (80, 60), "red").save(red, "PNG")
        self.browser.run("document.querySelector('.frame .right').src = 'data:image/png;base64,' + arguments[0]",
                         base64.b64encode(red.getvalue()).decode())
        self.browser.wait_until("document.querySelector('.frame .right').complete")
        shown = self.browser.picture_of(self.browser.find(".frame"))
        self.assertEqual([shown.getpixel((x, 30)) for x in (20, 60)], [(255, 255, 255), (255, 0, 0)])

    def test_it_shows_the_chosen_pictures(self):
        self.open_usual()
        self.browser.run("const left = document.querySelector('select.left'); left.selectedIndex = 2;"
                         "left.dispatchEvent(new Event('change'))")
        self.assertTrue(self.browser.run("return document.querySelector('.frame .left').src"
                                         " === document.querySelectorAll('figure img')[2].src"))
        self.assertEqual(self.browser.run("return document.querySelector('.slider .left').textContent"), "JPEG, quality 90")

    def test_everything_is_reached_by_the_tabulator_key(self):
        self.open_usual()
        reached = []
        for _ in range(8):
            self.browser.press(TAB)
            reached.append(self.browser.run("const found = document.activeElement; return found.className || found.type"))
        self.assertEqual(reached, ["left", "right", "radio", "stage", "range", "pane", "pane", "pane"])


class Zoom(Pages):
    def zoom(self, value):
        self.browser.run(f"document.querySelector('.zoom input[value=\"{value}\"]').click()")
        return self.browser.run("const frame = document.querySelector('.frame'), box = frame.getBoundingClientRect();"
                                "return [box.width, box.height,"
                                " getComputedStyle(frame.querySelector('img')).imageRendering,"
                                " document.querySelector('figure img').getBoundingClientRect().width]")

    def test_pixels_are_shown_as_pixels(self):
        self.open_usual()
        self.assertEqual(self.zoom("1"), [300, 200, "auto", 300])
        self.assertEqual(self.zoom("2"), [600, 400, "pixelated", 600])

    def test_a_pixel_is_one_of_the_screen(self):
        self.browser.emulate("setDeviceMetricsOverride", width=1200, height=900, deviceScaleFactor=2, mobile=False)
        self.addCleanup(self.browser.emulate, "clearDeviceMetricsOverride")
        self.open_usual()
        self.assertEqual(self.zoom("1")[:2], [150, 100])
        self.assertEqual(self.zoom("2")[:2], [300, 200])

    def test_all_areas_scroll_together(self):
        Image.fromarray(photo(1900, 1500)).save(self.folder / "large.png")
        self.open("--format", "jpeg", "large.png")
        self.zoom("2")
        self.browser.run("const stage = document.querySelector('.stage');"
                         "stage.scrollLeft = (stage.scrollWidth - stage.clientWidth) / 2; stage.scrollTop = 1e6")
        self.browser.wait_until("[...document.querySelectorAll('.pane')].every((pane) =>"
                                " Math.abs(pane.scrollLeft * 2 - (pane.scrollWidth - pane.clientWidth)) < 4"
                                " && pane.scrollTop > 0 && Math.abs(pane.scrollTop - (pane.scrollHeight - pane.clientHeight)) < 2)")

    def test_parts_of_large_pictures_are_chosen(self):
        Image.fromarray(numpy.tile(photo(300, 200), (10, 10, 1))).save(self.folder / "large.png")
        self.open("--format", "jpeg", "large.png")
        self.browser.run("const part = document.querySelector('select.part'); part.selectedIndex = 1;"
                         "part.dispatchEvent(new Event('change'))")
        self.browser.wait_until("document.querySelector('.frame .right').naturalWidth === 512")
        self.assertEqual(self.browser.run("return [...document.querySelectorAll('figure img')].map((picture) => picture.hidden)"),
                         [True, False, True, True] * 2)
        self.assertEqual(self.browser.run("return document.querySelector('.frame .right').alt"),
                         "large.png, JPEG, quality 80: Centre, full size")


class Reading(Pages):
    def test_controls_and_pictures_have_names_for_screen_readers(self):
        self.open_usual()
        expected = {"select.left": ("combobox", "Left"), "select.right": ("combobox", "Right"),
                    ".slider input": ("slider", "Where the left picture ends and the right one begins"),
                    ".zoom": ("group", "Zoom"), ".zoom input": ("radio", "fit"), "section": ("region", ODD_NAME.replace("\u202e", "\\u202e")),
                    "table": ("table", "Sizes and quality"), ".stage": ("group", "Two pictures, one over the other")}
        for selector, (role, name) in expected.items():
            element = self.browser.find(selector)
            self.assertEqual((self.browser.role_of(element), self.browser.name_of(element)), (role, name), selector)
        for picture in self.browser.find_all("img"):
            self.assertIn(": Whole picture", self.browser.name_of(picture))
        self.assertEqual(self.browser.run("return document.querySelector('.slider input').getAttribute('aria-valuetext')"),
                         "50 % Original, 50 % JPEG, quality 40")

    def test_text_is_readable_on_light_and_dark_paper(self):
        self.open_usual()
        papers = []
        for scheme in "light", "dark":
            self.browser.emulate("setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])
            paper = self.browser.run("return getComputedStyle(document.body).backgroundColor")
            inks = self.browser.run("return [...document.querySelectorAll('h1, h2, p, caption, th, td, label, legend, strong, span')]"
                                    ".filter((element) => element.textContent)"
                                    ".map((element) => getComputedStyle(element).color)")
            self.assertGreater(len(inks), 20)
            for ink in set(inks):
                self.assertGreaterEqual(contrast(paper, ink), 4.5, f"{ink} on {paper}")
            papers.append(paper)
        self.browser.emulate("setEmulatedMedia", features=[])
        self.assertGreater(contrast(*papers), 10)

    def test_the_page_fits_on_a_phone(self):
        self.browser.emulate("setDeviceMetricsOverride", width=360, height=740, deviceScaleFactor=3, mobile=True)
        self.addCleanup(self.browser.emulate, "clearDeviceMetricsOverride")
        self.open_usual()
        self.assertEqual(self.browser.run("return [window.innerWidth, document.documentElement.scrollWidth]"), [360, 360])

    def test_it_can_be_printed_without_the_controls(self):
        self.open_usual()
        self.assertTrue(base64.b64decode(self.browser.print()).startswith(b"%PDF-"))
        self.browser.emulate("setEmulatedMedia", media="print")
        self.addCleanup(self.browser.emulate, "setEmulatedMedia", media="")
        shown = self.browser.run("return ['.viewer', 'table', 'figure img'].map((selector) =>"
                                 " document.querySelector(selector).offsetHeight > 0)")
        self.assertEqual(shown, [False, True, True])

    def test_without_scripts_the_results_are_shown(self):
        self.browser.emulate("setScriptExecutionDisabled", value=True)
        self.addCleanup(self.browser.emulate, "setScriptExecutionDisabled", value=False)
        (self.folder / "a.jpg").write_bytes(jpeg(photo(60, 40)))
        done = self.kestrinectl("compare", "--quality", "40", "a.jpg", "-o", "page.html")
        self.assertEqual(done.returncode, 0, done)
        self.browser.open(self.folder / "page.html")
        self.assertEqual([self.browser.ask(f"/element/{self.browser.find(selector)}/displayed")
                          for selector in (".viewer", "table", "figure img")], [False, True, True])


if __name__ == "__main__":
    main()
