#!/usr/bin/python3
"""A media player and a screen saver on the session bus: prints what it is asked, and locks and unlocks at each signal USR1.
Usage: player.py NAME"""
import signal
import sys

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

PLAYER = "org.mpris.MediaPlayer2.Player"
DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
name = dbus.service.BusName("org.mpris.MediaPlayer2." + sys.argv[1], bus)


class Session(dbus.service.Object):
    is_locked = False

    @dbus.service.method(PLAYER)
    def PlayPause(self):
        self.PropertiesChanged(PLAYER, {"PlaybackStatus": "Playing"}, [])
        print("PlayPause", flush=True)

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, _interface, _name):
        return dbus.Double(0.97)

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ssv")
    def Set(self, _interface, what, value):
        print(what, float(value), flush=True)

    @dbus.service.signal(dbus.PROPERTIES_IFACE, signature="sa{sv}as")
    def PropertiesChanged(self, _interface, _changed, _gone):
        pass

    @dbus.service.signal("org.freedesktop.ScreenSaver", signature="b")
    def ActiveChanged(self, _is_active):
        pass

    def switch_lock(self):
        self.is_locked = not self.is_locked
        self.ActiveChanged(self.is_locked)
        return True


session = Session(bus, "/org/mpris/MediaPlayer2")
GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGUSR1, session.switch_lock)
print("ready", flush=True)
GLib.MainLoop().run()
