"""Drives a headless Chromium through chromedriver, by the WebDriver protocol of the W3C."""
import base64
import contextlib
import io
import json
import os
import re
import shutil
import subprocess
import tempfile
import urllib.request
from pathlib import Path

from PIL import Image

OPENER = urllib.request.build_opener(urllib.request.ProxyHandler({})) # the driver runs on this machine
ELEMENT = "element-6066-11e4-a52e-4f735466cecf" # the key that the protocol gives to elements


class Chromium:
    """A browser with a profile of its own. All methods raise an error if the browser refuses."""

    def __init__(self, driver="chromedriver"):
        with contextlib.ExitStack() as undo:
            self.profile = tempfile.mkdtemp(prefix="kestrine-chromium-")
            undo.callback(shutil.rmtree, self.profile, ignore_errors=True)
            self.start_driver(driver, undo)
            self.start_browser()
            undo.callback(self.ask_to_end)
            self.undo = undo.pop_all()

    def start_driver(self, driver, undo):
        environment = {**os.environ, "HOME": self.profile}
        errors = Path(self.profile, "errors") # a file, because nobody reads a pipe while the browser runs
        with errors.open("w") as stream:
            process = subprocess.Popen([driver, "--port=0"], stdout=subprocess.PIPE, stderr=stream, text=True, env=environment)
        undo.enter_context(process) # which waits for its end
        undo.callback(process.terminate)
        printed = ""
        for line in process.stdout:
            if match := re.search(r"successfully on port (\d+)", line):
                self.session = f"http://127.0.0.1:{match[1]}/session"
                return
            printed += line
        raise RuntimeError(f"{driver} printed no port, but {printed + errors.read_text()!r}")

    def start_browser(self):
        # The pages are our own, and Chromium's sandbox refuses to run as root.
        arguments = ["--headless", "--no-sandbox", "--disable-gpu", "--window-size=1200,900", f"--user-data-dir={self.profile}/data"]
        wanted = {"goog:chromeOptions": {"args": arguments}, "goog:loggingPrefs": {"performance": "ALL", "browser": "ALL"}}
        self.session += "/" + self.ask("", {"capabilities": {"alwaysMatch": wanted}})["sessionId"]

    def ask(self, command, parameters=None):
        data = None if parameters is None else json.dumps(parameters).encode()
        request = urllib.request.Request(self.session + command, data, {"Content-Type": "application/json"})
        with OPENER.open(request, timeout=120) as answer:
            return json.load(answer)["value"]

    def ask_to_end(self):
        OPENER.open(urllib.request.Request(self.session, method="DELETE"), timeout=60).close()

    def close(self):
        self.undo.close()

    def open(self, path):
        self.ask("/url", {"url": path.as_uri()})

    def run(self, script, *arguments):
        """The value that a function body returns."""
        return self.ask("/execute/sync", {"script": script, "args": arguments})

    def wait_until(self, expression):
        """Fails if the expression does not become true."""
        script = ("const done = arguments[0], end = Date.now() + 20000;"
                  f"(function look() {{ if ({expression}) done(true);"
                  " else if (Date.now() > end) done(false); else setTimeout(look, 20); })();")
        assert self.ask("/execute/async", {"script": script, "args": []}), f"never true: {expression}"

    def find(self, selector):
        return self.ask("/element", {"using": "css selector", "value": selector})[ELEMENT]

    def find_all(self, selector):
        return [found[ELEMENT] for found in self.ask("/elements", {"using": "css selector", "value": selector})]

    def name_of(self, element):
        """What a screen reader calls it."""
        return self.ask(f"/element/{element}/computedlabel")

    def role_of(self, element):
        return self.ask(f"/element/{element}/computedrole")

    def press(self, *keys):
        """Presses keys, one after another, in whatever has the focus."""
        steps = [{"type": kind, "value": key} for key in keys for kind in ("keyDown", "keyUp")]
        self.ask("/actions", {"actions": [{"type": "key", "id": "keyboard", "actions": steps}]})

    def drag(self, element, start, end):
        """Moves the mouse with a pressed button, from and to places relative to the centre of the element."""
        def move(place):
            return {"type": "pointerMove", "origin": {ELEMENT: element}, "x": place[0], "y": place[1], "duration": 0}
        steps = [move(start), {"type": "pointerDown", "button": 0}, move(end), {"type": "pointerUp", "button": 0}]
        self.ask("/actions", {"actions": [{"type": "pointer", "id": "mouse", "actions": steps}]})

    def picture_of(self, element):
        """The pixels of an element as the screen shows them."""
        shot = base64.b64decode(self.ask(f"/element/{element}/screenshot"))
        return Image.open(io.BytesIO(shot)).convert("RGB")

    def emulate(self, command, **parameters):
        return self.ask("/goog/cdp/execute", {"cmd": "Emulation." + command, "params": parameters})

    def print(self):
        """The bytes of a PDF document, in base64."""
        return self.ask("/print", {})

    def requests(self):
        """The addresses that were requested since the last call."""
        messages = [json.loads(entry["message"])["message"] for entry in self.ask("/se/log", {"type": "performance"})]
        return [message["params"]["request"]["url"] for message in messages if message["method"] == "Network.requestWillBeSent"]

    def complaints(self):
        """Errors and violations of the page's policy since the last call."""
        return [entry["message"] for entry in self.ask("/se/log", {"type": "browser"})]
