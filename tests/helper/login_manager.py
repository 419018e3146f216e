#!/usr/bin/python3
"""The login manager as one session sees it: prints what it is asked, refuses to suspend, and locks and unlocks the session at each
signal USR1."""
import signal

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

MANAGER, SESSION = "org.freedesktop.login1.Manager", "org.freedesktop.login1.Session"
DBusGMainLoop(set_as_default=True)
bus = dbus.SystemBus()
name = dbus.service.BusName("org.freedesktop.login1", bus)


class Manager(dbus.service.Object):
    @dbus.service.method(MANAGER, in_signature="b")
    def Suspend(self, _is_interactive):
        print("Suspend", flush=True)
        raise dbus.DBusException("it must stay awake", name="org.example.Refused")


class Session(dbus.service.Object):
    is_locked = False

    @dbus.service.method(SESSION)
    def Lock(self):
        print("Lock", flush=True)

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, _interface, _name):
        return dbus.Boolean(self.is_locked)

    @dbus.service.signal(dbus.PROPERTIES_IFACE, signature="sa{sv}as")
    def PropertiesChanged(self, _interface, _changed, _gone):
        pass

    def switch_lock(self):
        self.is_locked = not self.is_locked
        self.PropertiesChanged(SESSION, {}, ["LockedHint"])
        return True


manager = Manager(bus, "/org/freedesktop/login1")
session = Session(bus, "/org/freedesktop/login1/session/auto")
GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGUSR1, session.switch_lock)
print("ready", flush=True)
GLib.MainLoop().run()
