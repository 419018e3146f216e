#!/usr/bin/python3
"""The reporters of the window in front under the compositors that they are made for, GNOME's Shell and KWin, without a screen:
installed and switched on as a user does it, with the real helper on the same bus. scripts/try_desktops starts it.

Usage: try_desktops.py PREFIX [NAME ...]    PREFIX: what cmake --install has filled; NAME: only these compositors, shell or kwin
Prints a line for each step; "all steps passed" is said when they did.
"""
import itertools
import pathlib
import re
import shutil
import statistics
import struct
import subprocess
import sys
import time
import traceback

import dbus

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "support"))
import wayland  # noqa: E402
from acting import BUTTON_I, ActingCase  # noqa: E402

PREFIX = pathlib.Path(sys.argv[1]).resolve()
ALPHA, BETA, GAMMA = NAMES = "com.example.Alpha", "com.example.Beta", "com.example.Gamma"
SWITCHES = 20
LEFT_ALT, ESCAPE = 56, 1
ACTIVATED = 4  # among the states of a window
MOUSE_AND_KEYBOARD = 3  # of a seat
# What button I does: two applications have settings of their own.
EXPECTED = {ALPHA: "keys shift+KEY_A", BETA: "keys opt+ctrl+KEY_B", GAMMA: "keys KEY_F5"}
LOCKED = "nothing: the session is locked"


class Window:
    """A window of its own program, or a dialog of another one. Knows whether it is in front, by the compositor's own word."""

    def __init__(self, display, name, owner=None):
        self.connection, self.is_front = owner.connection if owner else wayland.Connection(display), False
        self.window = wayland.DragWindow(self.connection, self.connection.bind("wl_seat", 5), name, 100)
        self.connection.on(self.window.window, 0, "uua", self.configure)
        self.is_dialog = owner is not None
        if self.is_dialog:
            self.connection.request(self.window.window, 1, owner.window.window)  # set_parent
        self.connection.sync()

    def configure(self, _width, _height, states):
        self.is_front = ACTIVATED in struct.unpack(f"={len(states) // 4}I", states)

    def close(self):
        if self.is_dialog:
            self.connection.request(self.window.surface, 1, 0, 0, 0)  # attach nothing
            self.connection.request(self.window.surface, 6)  # commit
            self.connection.sync()
        else:
            self.connection.socket.close()


class Session(ActingCase):
    """A user's session with one compositor, its programs and its settings."""
    helper_program, control_program = PREFIX / "lib/drevix-settings/DrevixHelper", PREFIX / "bin/drevixctl"

    @classmethod
    def begin(cls):
        cls.prepare()
        run = cls.path / "run"
        run.mkdir(mode=0o700)
        shutil.copytree(PREFIX, cls.path / ".local", symlinks=True)
        # The second bus stands for the system's, on which nobody of this machine is to be found.
        cls.start("dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address=unix:path={cls.path}/system")
        cls.environment |= {"XDG_RUNTIME_DIR": str(run), "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={cls.path}/system",
                            "GSETTINGS_BACKEND": "keyfile", "NO_AT_BRIDGE": "1"}
        cls.until(lambda: (cls.path / "bus").exists() and (cls.path / "system").exists())
        applications = cls.path / ".local/share/applications"
        for name in NAMES:
            (applications / f"{name}.desktop").write_text(f"[Desktop Entry]\nType=Application\nName={name}\nExec=/usr/bin/true {name}\n")
        for name in (ALPHA, BETA):
            cls.ctl("add", str(applications / f"{name}.desktop"))
        for words in (["F5"], ["shift+a", "--app", ALPHA], ["ctrl+alt+b", "--app", BETA]):
            cls.ctl("assign", "buttonI", "keystroke", *words)
        cls.bus = dbus.bus.BusConnection(cls.environment["DBUS_SESSION_BUS_ADDRESS"])
        cls.windows = {}
        cls.start_compositor()
        cls.start_helper("--dry-run")

    @classmethod
    def start_program(cls, *command):
        """A compositor, in the folder of the user."""
        cls.compositor = cls.start(*command, output="compositor", cwd=cls.path)
        socket = cls.path / "run/wayland-7"
        cls.until(lambda: socket.is_socket() and cls.is_up(), "the compositor did not start")
        cls.environment["WAYLAND_DISPLAY"] = str(socket)

    @classmethod
    def call(cls, name, path, interface, method, *arguments):
        return dbus.Interface(cls.bus.get_object(name, path, introspect=False), interface).get_dbus_method(method)(*arguments)

    @classmethod
    def is_up(cls):
        try:
            return cls.call(cls.bus_name, "/", "org.freedesktop.DBus.Peer", "Ping") is None
        except dbus.DBusException:
            return False

    @classmethod
    def pump(cls):
        for window in cls.windows.values():
            window.connection.listen(0)

    @classmethod
    def until(cls, condition, what="nothing happened"):
        def look():
            if getattr(cls, "windows", None):
                cls.pump()
            return condition()
        super().until(look, what)

    @classmethod
    def open(cls, name, owner=None):
        cls.windows[name] = Window(cls.environment["WAYLAND_DISPLAY"], name, cls.windows.get(owner))
        cls.until(lambda: cls.windows[name].is_front, f"{name} did not come to the front")

    @classmethod
    def close(cls, name):
        cls.windows.pop(name).close()

    @classmethod
    def front(cls):
        name = f"com.halcyra.drevix.Process.DrevixHelper.p{cls.helper.pid}"
        return dict(cls.call(name, "/com/halcyra/drevix/Device", "com.halcyra.drevix.Device1", "Front"))

    @classmethod
    def until_front(cls, name):
        """Waits until the helper knows which window is in front; None: that it does not."""
        entry = name and name + cls.suffix
        cls.until(lambda: cls.front().get("entry") == entry, lambda: f"{entry} is not in front: {cls.front()}")

    @classmethod
    def press(cls):
        """What a press on the device does."""
        before = cls.said()
        cls.press_key()
        cls.until(lambda: len(cls.said()) > len(before))
        return cls.said()[len(before)].removeprefix("buttonI: ")

    @classmethod
    def press_key(cls):
        ActingCase.press(cls(), BUTTON_I)

    @classmethod
    def said(cls):
        return [line for line in (cls.path / "said").read_text().splitlines() if line.startswith("buttonI: ")]


# The Shell locks where the display manager of this name says its version.
DISPLAY_MANAGER = """
import dbus, dbus.mainloop.glib, dbus.service
from gi.repository import GLib
dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)

class Manager(dbus.service.Object):
    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, _interface, _name):
        return "43.0"

bus = dbus.SystemBus()
name = dbus.service.BusName("org.gnome.DisplayManager", bus)
manager = Manager(bus, "/org/gnome/DisplayManager/Manager")
GLib.MainLoop().run()
"""


class Shell(Session):
    title, bus_name, suffix = "GNOME Shell", "org.gnome.Shell", ".desktop"
    extension = "drevix-front@com.halcyra"

    @classmethod
    def version(cls):
        return subprocess.run(["gnome-shell", "--version"], capture_output=True, text=True, check=True).stdout.split()[-1]

    @classmethod
    def start_compositor(cls):
        cls.start("/usr/bin/python3", "-c", DISPLAY_MANAGER)
        cls.run("gsettings", "set", "org.gnome.shell", "welcome-dialog-last-shown-version", "999")
        cls.start_program("gnome-shell", "--headless", "--wayland", "--no-x11", "--virtual-monitor", "800x600",
                          "--wayland-display", "wayland-7")
        cls.until(lambda: "GNOME Shell started" in (cls.path / "compositor").read_text())
        cls.call(cls.bus_name, "/org/gnome/Shell", "org.freedesktop.DBus.Properties", "Set", cls.bus_name, "OverviewActive",
                 dbus.Boolean(False, variant_level=1))
        path = cls.call("org.gnome.Mutter.RemoteDesktop", "/org/gnome/Mutter/RemoteDesktop", "org.gnome.Mutter.RemoteDesktop", "CreateSession")
        cls.hands = dbus.Interface(cls.bus.get_object("org.gnome.Mutter.RemoteDesktop", path), "org.gnome.Mutter.RemoteDesktop.Session")
        cls.hands.Start()
        # Which make the seat's mouse and keyboard.
        cls.hands.NotifyPointerMotionRelative(1.0, 1.0)
        cls.hands.NotifyKeyboardKeycode(dbus.UInt32(ESCAPE), True)
        cls.hands.NotifyKeyboardKeycode(dbus.UInt32(ESCAPE), False)
        connection, has = wayland.Connection(cls.environment["WAYLAND_DISPLAY"]), []
        connection.on(connection.bind("wl_seat", 5), 0, "u", has.append)
        connection.wait(lambda: has and has[-1] == MOUSE_AND_KEYBOARD, "a seat with mouse and keyboard")

    @classmethod
    def run(cls, *command):
        subprocess.run(command, env=cls.environment, check=True, timeout=30, stdout=subprocess.DEVNULL)

    @classmethod
    def activate(cls, name):
        """By the keys that a user has for it: once goes to the window used before, twice to the one before that."""
        times = itertools.cycle((1, 2))

        def is_there():
            if not cls.windows[name].is_front:
                for key, is_down in ((LEFT_ALT, True), *((ESCAPE, True), (ESCAPE, False)) * next(times), (LEFT_ALT, False)):
                    cls.hands.NotifyKeyboardKeycode(dbus.UInt32(key), is_down)
                time.sleep(0.1)
                cls.pump()
            return cls.windows[name].is_front
        cls.until(is_there, f"{name} did not come to the front")

    @classmethod
    def switch(cls, is_on):
        cls.run("gnome-extensions", "enable" if is_on else "disable", cls.extension)

    @classmethod
    def lock(cls, is_locked):
        cls.call("org.gnome.ScreenSaver", "/org/gnome/ScreenSaver", "org.gnome.ScreenSaver", "SetActive", is_locked)


class KWin(Session):
    title, bus_name, suffix = "KWin", "org.kde.KWin", ""

    @classmethod
    def start_compositor(cls):
        # A program with file capabilities gets no say in its libraries; a copy has none.
        shutil.copy(shutil.which("kwin_wayland"), cls.path / "kwin")
        cls.environment |= {"KWIN_FORCE_OWN_QPA": "1"}
        cls.start_program(str(cls.path / "kwin"), "--virtual", "--width", "800", "--height", "600", "--socket", "wayland-7")

    @classmethod
    def version(cls):
        return subprocess.run([cls.path / "kwin", "--version"], env=cls.environment, capture_output=True, text=True, check=True).stdout.split()[-1]

    @classmethod
    def activate(cls, name):
        script = cls.path / f"activate{time.monotonic_ns()}.js"
        script.write_text(f"workspace.clientList().filter(c => c.resourceClass == '{name}').forEach(c => workspace.activeClient = c);")
        number = cls.call(cls.bus_name, "/Scripting", "org.kde.kwin.Scripting", "loadScript", str(script))
        cls.call(cls.bus_name, f"/{number}", "org.kde.kwin.Script", "run")
        cls.until(lambda: cls.windows[name].is_front, f"{name} did not come to the front")

    @classmethod
    def switch(cls, is_on):
        """As System Settings does it."""
        path = cls.path / "config/kwinrc"
        text = path.read_text() if path.exists() else ""
        text = re.sub(r"\[Plugins\]\ndrevix-frontEnabled=\w+\n", "", text)
        path.write_text(text + f"[Plugins]\ndrevix-frontEnabled={'true' if is_on else 'false'}\n")
        cls.call(cls.bus_name, "/KWin", "org.kde.KWin", "reconfigure")

    @classmethod
    def lock(cls, is_locked):
        cls.call(cls.bus_name, "/ScreenSaver", "org.freedesktop.ScreenSaver", "SetActive", is_locked)


steps = []


def step(function):
    steps.append(function)
    return function


def expect_press(desktop, expected):
    actual = desktop.press()
    if actual != expected:
        raise AssertionError(f"a press did {actual!r}, not {expected!r}, with {desktop.front()}")


@step
def not_switched_on(desktop):
    """Not switched on: no window is known, and the settings for all applications act"""
    desktop.open(ALPHA)
    desktop.until_front(None)
    expect_press(desktop, EXPECTED[GAMMA])


@step
def switched_on(desktop):
    """Switched on: the window in front is told at once, and its settings act"""
    desktop.switch(True)
    desktop.until_front(ALPHA)
    expect_press(desktop, EXPECTED[ALPHA])


@step
def changes(desktop):
    """20 changes between two applications with settings of their own and one without: each is told, and each press acts by the settings of the one in front"""
    desktop.open(BETA)
    desktop.open(GAMMA)
    times = []
    for i in range(SWITCHES):
        name = NAMES[i % len(NAMES)]
        desktop.activate(name)
        begin = time.monotonic()
        desktop.until_front(name)
        times.append((time.monotonic() - begin) * 1000)
        expect_press(desktop, EXPECTED[name])
    return f"from front to told {statistics.median(times):.0f} ms median, {max(times):.0f} ms at most, the asking included"


@step
def closed(desktop):
    """A window closes: the next one is in front; the last one: none is known"""
    desktop.activate(BETA)
    desktop.until_front(BETA)
    desktop.close(BETA)
    desktop.until(lambda: any(window.is_front for window in desktop.windows.values()), "nothing is in front")
    desktop.until_front(next(name for name, window in desktop.windows.items() if window.is_front))
    desktop.close(GAMMA)
    desktop.until_front(ALPHA)
    desktop.close(ALPHA)
    desktop.until_front(None)
    desktop.open(ALPHA)
    desktop.until_front(ALPHA)


@step
def renamed(desktop):
    """The window in front becomes another application's: that is told"""
    for name in (BETA, ALPHA):
        desktop.windows[ALPHA].window.rename(name)
        desktop.until_front(name)
        expect_press(desktop, EXPECTED[name])


@step
def dialog(desktop):
    """A dialog with a name of its own counts as the window that it belongs to"""
    desktop.open("portal", ALPHA)
    time.sleep(0.3)  # for what must not be told
    desktop.until_front(ALPHA)
    expect_press(desktop, EXPECTED[ALPHA])
    desktop.close("portal")
    desktop.until(lambda: desktop.windows[ALPHA].is_front, "it does not come back to the front")


@step
def helper_anew(desktop):
    """A helper that is started anew is told"""
    desktop.dial.close()
    desktop.helper.terminate()
    desktop.helper.wait()
    desktop.start_helper("--dry-run")
    if desktop is KWin:
        desktop.until_front(None)
        desktop.open(BETA)
        desktop.close(BETA)
    desktop.until_front(ALPHA)
    expect_press(desktop, EXPECTED[ALPHA])
    return "with the next change of the front" if desktop is KWin else "at once"


@step
def switched_off(desktop):
    """Switched off: no window is known; on again: it is told"""
    desktop.switch(False)
    done = []
    desktop.until(lambda: done.append(desktop.press()) or done[-1] == EXPECTED[GAMMA], lambda: f"stale: {desktop.front()}")
    desktop.until_front(None)
    desktop.switch(True)
    desktop.until_front(ALPHA)
    expect_press(desktop, EXPECTED[ALPHA])
    return f"{len(done) - 1} presses acted by the old one meanwhile"


@step
def locked(desktop):
    """Locked: nothing is typed"""
    desktop.lock(True)
    desktop.until(lambda: desktop.press() == LOCKED, "the session is not locked")
    if desktop is KWin:
        return "unlocking was not tried, since it asks for a password"
    desktop.lock(False)
    desktop.until(lambda: desktop.press() != LOCKED, "the session stays locked")
    desktop.until_front(ALPHA)
    expect_press(desktop, EXPECTED[ALPHA])
    return "unlocked, the window in front is known again"


@step
def complaints(desktop):
    """The compositor complains of nothing in its reporter"""
    lines = [line for line in (desktop.path / "compositor").read_text().splitlines() if "drevix-front" in line]
    if lines:
        raise AssertionError("\n".join(lines))


@step
def killed(desktop):
    """The compositor is killed: no window is known, and the helper goes on"""
    desktop.compositor.kill()
    desktop.compositor.wait()
    desktop.windows.clear()
    desktop.until_front(None)
    expect_press(desktop, LOCKED if desktop is KWin else EXPECTED[GAMMA])
    return "it stays locked" if desktop is KWin else ""


def main():
    failed = 0
    for desktop in (Shell, KWin):
        if sys.argv[2:] and desktop.__name__.lower() not in sys.argv[2:]:
            continue
        try:
            desktop.begin()
            print(f"on    {desktop.title} {desktop.version()}", flush=True)
            for function in steps:
                begin = time.monotonic()
                note = function(desktop) or ""
                print(f"ok    {function.__doc__}{'; ' + note if note else ''} ({time.monotonic() - begin:.1f} s)", flush=True)
        except Exception:  # the other one is tried all the same
            failed += 1
            print(f"FAIL  {desktop.title}", flush=True)
            traceback.print_exc()
            print(*(path.read_text() for name in ("said", "compositor") if (path := desktop.path / name).exists()), flush=True)
        desktop.doClassCleanups()
    print(f"{failed} failed" if failed else "all steps passed", flush=True)


main()
