"""What a desktop does with actions: reads them by its own rules and starts their command lines, and shows notifications."""
import json
import select
import shlex
import subprocess
import sys
import xml.etree.ElementTree
from pathlib import Path

# Shows notifications on a private bus: prints each one as a line of JSON.
SERVICE = """
import json
import dbus.mainloop.glib, dbus.service
from gi.repository import GLib

class Notifications(dbus.service.Object):
    @dbus.service.method("org.freedesktop.Notifications", out_signature="ssss")
    def GetServerInformation(self):
        return "test", "test", "1", "1.2"

    @dbus.service.method("org.freedesktop.Notifications", out_signature="as")
    def GetCapabilities(self):
        return ["body", "body-markup"]

    @dbus.service.method("org.freedesktop.Notifications", in_signature="susssasa{sv}i", out_signature="u")
    def Notify(self, application, replaced, icon, summary, body, actions, hints, timeout):
        print(json.dumps([application, summary, body]), flush=True)
        return 1

dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
name = dbus.service.BusName("org.freedesktop.Notifications", dbus.SessionBus())
Notifications(name, "/org/freedesktop/Notifications")
print("ready", flush=True)
GLib.MainLoop().run()
"""


class NotificationDesktop:
    """A message bus with a service that shows notifications; `address` is its address."""

    def __enter__(self):
        self.bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE,
                                    stderr=subprocess.DEVNULL, text=True)
        self.address = self.bus.stdout.readline().strip()
        self.service = subprocess.Popen([sys.executable, "-c", SERVICE], stdout=subprocess.PIPE, text=True,
                                        env={"DBUS_SESSION_BUS_ADDRESS": self.address})
        assert self.service.stdout.readline() == "ready\n"
        return self

    def next(self):
        """Waits for a notification: application, summary and body."""
        assert select.select([self.service.stdout], [], [], 60)[0], "no notification"
        return json.loads(self.service.stdout.readline())

    def __exit__(self, *_):
        for process in (self.service, self.bus):
            process.kill()
            process.communicate()


def key_file(path, group, *keys):
    """Values of a key file, read by GLib."""
    from gi.repository import GLib
    file = GLib.KeyFile()
    file.load_from_file(str(path), GLib.KeyFileFlags.NONE)
    return [file.get_string(group, key) for key in keys]


def dolphin(path):
    """The label and the command line of a service menu: quoted words, one of them %F."""
    from gi.repository import GLib
    group, = [line[1:-1] for line in path.read_text(encoding="utf-8").splitlines() if line.startswith("[Desktop Action")]
    label, command = key_file(path, group, "Name", "Exec")

    def run(files):
        words = [word.replace("%%", "%") if word != "%F" else word for word in GLib.shell_parse_argv(command)[1]]
        return [argument for word in words for argument in (map(str, files) if word == "%F" else [word])]
    return label, run


def nemo(path):
    """The entry of a file of Nemo: URIs take the place of %U as they are, in quotation marks, and GLib splits the line."""
    from gi.repository import GLib
    label, command, quote = key_file(path, "Nemo Action", "Name", "Exec", "Quote")
    assert quote == "double"

    def run(files):
        before, after = command.split("%U")
        return GLib.shell_parse_argv(before + " ".join(f'"{Path(file).as_uri()}"' for file in files) + after)[1]
    shown = label.removeprefix("Resize: ").replace("__", "_").replace("\u2060", "")
    return shown, run


def thunar(path):
    """The entries of a file of Thunar. The files take the place of %F as words of a shell, which gets the whole line."""
    entries = []
    for action in xml.etree.ElementTree.parse(path).getroot():
        command = action.findtext("command")
        entries.append((action.findtext("name").replace("__", "_"), lambda files, command=command: [
            "/bin/sh", "-c", command.replace("%F", shlex.join(map(str, files)))]))
    return entries
