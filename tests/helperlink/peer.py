#!/usr/bin/python3
"""A process that takes events, made from docs/driver-messages.md alone. Usage: peer.py NAME MODE [SECONDS]

Prints "ready" once it can be found, and a line "CLASS ID" for each event. MODE is how it answers the device request.
"""
import os
import struct
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME, MODE = sys.argv[1:3]
SECONDS = float(sys.argv[3]) if len(sys.argv) > 3 else 0
OBJECT, INTERFACE = "/com/halcyra/drevix/Process", "com.halcyra.drevix.Process1"


def code(text):
    return struct.unpack(">I", text.encode())[0]


def device_list():
    device = struct.pack("=3H2BI128s128s8s120s", 0x1234, 0x5678, 0x0105, 0, 0, 0, b"Halcyra", b"Drevix Veltrana",
                         bytes([1, 1, 2, 3, 4, 5, 6, 7]), b"")
    return struct.pack("=2H2I", 1, 0, 0, 0) + device + bytes(3 * 396)


ANSWERS = {
    "answer": ("PLZT", device_list()),
    "late": ("PLZT", device_list()),
    "short": ("PLZT", b"\x02\x00" if sys.byteorder == "little" else b"\x00\x02"),
    "empty": ("PLZT", b""),
    "long": ("PLZT", device_list() + bytes([0xEE]) * 300000),
    "type": ("TEXT", device_list()),
    "null": ("null", b""),
    "huge": ("TEXT", bytes(30_000_000)),
}


class Process(dbus.service.Object):
    @dbus.service.method(INTERFACE, in_signature="uuay", out_signature="uay", async_callbacks=("reply", "fail"))
    def HandleEvent(self, event_class, event_id, direct, reply, fail):
        print(struct.pack(">II", event_class, event_id).decode(), flush=True)
        if MODE == "die":
            os._exit(0)
        if MODE == "fail":
            fail(dbus.DBusException("no devices", name="com.example.Error"))
        elif MODE != "nothing" and event_id == code("PLZD"):
            kind, data = ANSWERS[MODE]
            GLib.timeout_add(int(SECONDS * 1000), lambda: reply(dbus.UInt32(code(kind)), dbus.ByteArray(data)))


class Malformed(dbus.service.Object):
    @dbus.service.method(INTERFACE, in_signature="uuay", out_signature="s")
    def HandleEvent(self, event_class, event_id, direct):
        return "a list of devices"


def attack(bus):
    """Sends an answer that nobody asked for to everybody, as an event and as a reply to whatever is waited for."""
    for name in bus.list_names():
        if name.startswith(":") and name != bus.get_unique_name():
            event = dbus.lowlevel.MethodCallMessage(name, OBJECT, INTERFACE, "HandleEvent")
            event.append(dbus.UInt32(code("aevt")), dbus.UInt32(code("ansr")), dbus.ByteArray(device_list()), signature="uuay")
            bus.send_message(event)
            for _ in range(200):
                # A reply takes its number from a call, and a call gets its number when it is sent.
                call = dbus.lowlevel.MethodCallMessage("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetId")
                bus.send_message(call)
                answer = dbus.lowlevel.MethodReturnMessage(call)
                answer.set_destination(name)
                answer.append(dbus.UInt32(code("PLZT")), dbus.ByteArray(device_list()), signature="uay")
                bus.send_message(answer)
    bus.flush()


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
session = dbus.SessionBus()
label = "".join(chr(b) if chr(b).isalnum() and b < 128 and not (i == 0 and chr(b).isdigit()) else f"_{b:02x}"
                for i, b in enumerate(NAME.encode()))
served = (Malformed if MODE == "malformed" else Process)(session, OBJECT)
owned = dbus.service.BusName(f"com.halcyra.drevix.Process.{label}.p{os.getpid()}", session)
if MODE == "attack":
    import dbus.lowlevel
    attack(session)
print("ready", flush=True)
GLib.MainLoop().run()
