"""Reports a window in front to a helper and stays on the bus; says what it was answered. As the owner of org.kde.KWin it says of
its scripts that none is loaded.

Usage: reporter.py HELPER_PROCESS ENTRY CLASS NAME TYPE NUMBER [BUS_NAME]    TYPE: UInt32 or Int32
"""
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()


class Scripting(dbus.service.Object):
    @dbus.service.method("org.kde.kwin.Scripting", in_signature="s", out_signature="b")
    def isScriptLoaded(self, _name):
        print("asked", flush=True)
        return False


process, *texts, kind, number = sys.argv[1:7]
owned = [dbus.service.BusName(name, bus) for name in sys.argv[7:]]
scripting = Scripting(bus, "/Scripting")
device = bus.get_object(f"com.halcyra.drevix.Process.DrevixHelper.p{process}", "/com/halcyra/drevix/Device", introspect=False)
try:
    device.SetFront(*texts, getattr(dbus, kind)(int(number)), dbus_interface="com.halcyra.drevix.Device1")
    print("taken", flush=True)
except dbus.DBusException as problem:
    print(problem, flush=True)
GLib.MainLoop().run()
