# A substitute for the desktop's portal, started by the message bus of a test.
#   FakePortal.py BEHAVIOUR RECORD [URI...]
# Appends each request to the file RECORD and replies according to BEHAVIOUR (a key of `behaviours`).
import json
import os
import signal
import sys

import dbus
import dbus.lowlevel
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME = "org.freedesktop.portal.Desktop"
CHOOSER = "org.freedesktop.portal.FileChooser"
REQUEST = "org.freedesktop.portal.Request"
CHOSEN, CANCELLED, OTHER = range(3)

behaviour, record, *uris = sys.argv[1:]


class Portal(dbus.service.Object):
    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v",
                         async_callbacks=("reply", "fail"))
    def Get(self, interface, name, reply, fail):
        if (interface, name) != (CHOOSER, "version") or behaviour == "no chooser":
            fail(dbus.exceptions.DBusException(name="org.freedesktop.DBus.Error.UnknownInterface"))
        elif behaviour == "slow":
            GLib.timeout_add_seconds(15, lambda: reply(dbus.UInt32(3)))
        else:
            reply(dbus.UInt32(2 if behaviour == "old" else 3))

    @dbus.service.method(CHOOSER, in_signature="ssa{sv}", out_signature="o", sender_keyword="sender")
    def OpenFile(self, parent, title, options, sender):
        with open(record, "a") as file:
            file.write(json.dumps([parent, title, options], sort_keys=True) + "\n")
        if behaviour == "refuses":
            raise dbus.exceptions.DBusException(name="org.freedesktop.portal.Error.NotAllowed")
        folder = "/org/freedesktop/portal/desktop/request/" + sender[1:].replace(".", "_") + "/"
        return behaviours[behaviour](sender, folder + options["handle_token"])


def response_message(destination, handle, response, named):
    message = dbus.lowlevel.SignalMessage(handle, REQUEST, "Response")
    message.append(dbus.UInt32(response), dbus.Dictionary(named, "sv"), signature="ua{sv}")
    if destination:
        message.set_destination(destination)
    return message


def respond(destination, handle, response, named=None):
    named = {"uris": dbus.Array(uris, "s")} if named is None else named
    bus.send_message(response_message(destination, handle, response, named))


def later(action, handle):
    GLib.idle_add(lambda: action() and False)
    return handle


def answering(response):
    return lambda client, handle: later(lambda: respond(client, handle, response), handle)


def early(client, handle):
    respond(None, handle, CHOSEN)
    return handle


def other_handle(client, handle):
    own = "/org/freedesktop/portal/desktop/request/1"
    return later(lambda: respond(client, own, CHOSEN), own)


def others_first(client, handle):
    def answers():
        respond(client, handle + "_of_another", CANCELLED)
        respond(client, handle, CHOSEN)
    return later(answers, handle)


def forged_first(client, handle):
    def answers():
        forger = dbus.bus.BusConnection(os.environ["DBUS_STARTER_ADDRESS"])
        forger.send_message(response_message(client, handle, CANCELLED, {}))
        forger.flush()
        forger.get_name_owner(NAME)  # answered after the forgery went out
        respond(client, handle, CHOSEN)
    return later(answers, handle)


def more_results(client, handle):
    named = {"choices": dbus.Array([("encoding", "utf8")], "(ss)"), "uris": dbus.Array(uris, "s")}
    return later(lambda: respond(client, handle, CHOSEN, named), handle)


def closed_window(client, handle):
    bus.request_name("org.freedesktop.impl.portal.desktop.fake")
    return answering(OTHER)(client, handle)


def vanishes(client, handle):
    return later(lambda: bus.flush() or loop.quit(), handle)


def ends_bus(client, handle):
    daemon = bus.get_unix_process_id(dbus.BUS_DAEMON_NAME)
    return later(lambda: bus.flush() or os.kill(daemon, signal.SIGTERM), handle)


behaviours = {
    "chooses": answering(CHOSEN),
    "old": answering(CHOSEN),
    "slow": answering(CHOSEN),
    "cancels": answering(CANCELLED),
    "shows nothing": answering(OTHER),
    "closed window": closed_window,
    "answers early": early,
    "other handle": other_handle,
    "others first": others_first,
    "forged first": forged_first,
    "more results": more_results,
    "no results": lambda client, handle: later(lambda: respond(client, handle, CHOSEN, {}), handle),
    "text for a list": lambda client, handle: later(
        lambda: respond(client, handle, CHOSEN, {"uris": dbus.String("file:///a")}), handle),
    "vanishes": vanishes,
    "ends bus": ends_bus,
}

dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.bus.BusConnection(os.environ["DBUS_STARTER_ADDRESS"])
portal = Portal(bus, "/org/freedesktop/portal/desktop")
bus.request_name(NAME)
loop = GLib.MainLoop()
bus.call_on_disconnection(lambda connection: loop.quit())
loop.run()
