#!/usr/bin/python3
"""Watches a helper's controls, and prints each that goes down (1) or up (0). Usage: watcher.py HELPER_PROCESS"""
import sys

import dbus
import dbus.mainloop.glib
from gi.repository import GLib

DEVICE = "com.halcyra.drevix.Device1"
dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
bus.add_signal_receiver(lambda control, is_down: print(control, int(is_down), flush=True), "Pressed", DEVICE)
device = bus.get_object(f"com.halcyra.drevix.Process.DrevixHelper.p{sys.argv[1]}", "/com/halcyra/drevix/Device", introspect=False)
device.Watch(False, dbus_interface=DEVICE)
print("ready", flush=True)
GLib.MainLoop().run()
