#!/usr/bin/python3
"""The helper acts on a Wayland compositor without a screen: what a device sends through the reader of real devices becomes keys
of the window in front, in the layout of the session.

Usage: acting_wayland_test.py DREVIXHELPER DREVIXCTL
Ends with 77 where there is no sway.
"""
import pathlib
import shutil
import struct
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "support"))
import wayland  # noqa: E402
from acting import BUTTON_I, BUTTON_II, EV_KEY, SKIPPED, ActingCase  # noqa: E402

if not shutil.which("sway"):
    print("skipped: there is no compositor (package sway)")
    sys.exit(SKIPPED)
ActingCase.helper_program, ActingCase.control_program = (pathlib.Path(sys.argv.pop(1)).resolve() for _ in range(2))
CONFIGURATION = """
output HEADLESS-1 resolution 640x480
xwayland disable
focus_follows_mouse no
"""
SHIFT, CTRL, ALT = 1, 4, 8
A, B, K, F5, Z, Y = 30, 48, 37, 63, 44, 21
CTRL_KEY = 29
MODIFIER_CODES = {CTRL_KEY, 42, 56}
NAMES = ("alpha", "beta", "gamma")
SWITCHES, PRESSES = 20, 50


class Window:
    """Notes each key with the modifiers and the layout that were in force when it came."""

    def __init__(self, display, name):
        self.connection, self.state, self.keys, self.down = wayland.Connection(display), (0, 0), [], set()
        seat = self.connection.bind("wl_seat", 5)
        keyboard = self.connection.make(seat, 1)
        self.connection.on(keyboard, 1, "uua", self.enter)
        self.connection.on(keyboard, 3, "uuuu", self.take_key)
        self.connection.on(keyboard, 4, "uuuuu", self.take_modifiers)
        wayland.DragWindow(self.connection, seat, name, 100)
        self.connection.sync()

    def enter(self, _serial, _surface, keys):
        self.down = set(struct.unpack(f"={len(keys) // 4}I", keys))

    def take_key(self, _serial, _time, key, is_down):
        (self.down.add if is_down else self.down.discard)(key)
        if is_down and key not in MODIFIER_CODES:
            self.keys.append((key, *self.state))

    def take_modifiers(self, _serial, held, _latched, _locked, group):
        self.state = held, group


class ActingOnWayland(ActingCase):
    @classmethod
    def setUpClass(cls):
        cls.prepare()
        compositor, display, cls.control = wayland.start_compositor(cls.path / "compositor", CONFIGURATION, cls.path / "log")
        cls.children.append(compositor)
        if display is None:
            raise unittest.SkipTest("the compositor cannot run here: " + (cls.path / "log").read_text())
        cls.environment |= {"XDG_RUNTIME_DIR": str(cls.path), "WAYLAND_DISPLAY": display, "SWAYSOCK": cls.control}
        cls.hands = wayland.Hands(wayland.Connection(display), (640, 480))
        cls.hands.use_layouts("pc+us+de:2")
        cls.windows = {name: Window(display, name) for name in NAMES}
        cls.add_programs("alpha", "beta")
        for words in (["buttonI", "keystroke", "F5"], ["buttonII", "182"],
                      ["buttonI", "keystroke", "shift+a", "--app", "alpha"],
                      ["buttonII", "keystroke", "ctrl+k", "--repeat", "-1", "--app", "alpha"],
                      ["buttonI", "keystroke", "ctrl+alt+b", "--app", "beta"]):
            cls.ctl("assign", *words)
        cls.start_helper()

    def activate(self, name):
        subprocess.run(["swaymsg", "--socket", self.control, f'[app_id="{name}"] focus'], check=True, timeout=20, stdout=subprocess.DEVNULL)
        self.until(lambda: f"entry: {name}\n" in self.ctl("front"), f"{name} did not come to the front")

    def wait(self, name, look, what):
        self.windows[name].connection.wait(look, what)

    def test_1_each_press_goes_to_the_window_in_front_by_its_own_settings(self):
        expected = {"alpha": (A, SHIFT, 0), "beta": (B, CTRL | ALT, 0), "gamma": (F5, 0, 0)}
        count = dict.fromkeys(expected, 0)
        for switch in range(SWITCHES):
            name = NAMES[switch % 3]
            self.activate(name)
            for _ in range(PRESSES):
                self.press(BUTTON_I)
            count[name] += PRESSES
            window = self.windows[name]
            self.wait(name, lambda: len(window.keys) >= count[name] and not window.down, f"{count[name]} presses in {name}")
        for name, key in expected.items():
            self.windows[name].connection.sync()
            self.assertEqual(self.windows[name].keys, [key] * count[name])
            self.assertEqual((self.windows[name].down, self.windows[name].state), (set(), (0, 0)))

    def test_2_keys_are_typed_in_the_layout_in_force(self):
        """The second layout once typed as the first: undo was found where the one has z and typed y in the other."""
        self.activate("gamma")
        window = self.windows["gamma"]
        for group, place in ((1, Y), (0, Z)):
            self.hands.use_group(group)
            self.hands.connection.sync()
            self.until(lambda place=place: self.ctl("press", "buttonII") == f"keys ctrl+{'KEY_Y' if place == Y else 'KEY_Z'}\n",
                       lambda: self.ctl("press", "buttonII"))
            self.wait("gamma", lambda place=place, group=group: window.keys[-1] == (place, CTRL, group) and not window.down,
                      f"undo in layout {group}")

    def test_3_keys_go_up_when_the_front_changes_the_device_goes_or_the_helper_is_killed(self):
        def change_front():
            self.activate("gamma")

        def unplug():
            self.dial.close()

        def kill():
            self.helper.kill()
            self.helper.wait()

        for way, front in ((change_front, "gamma"), (unplug, "alpha"), (kill, "alpha")):
            self.activate("alpha")
            self.send((EV_KEY, BUTTON_II, 1))
            self.wait("alpha", lambda: self.windows["alpha"].down == {CTRL_KEY, K}, "ctrl+k")
            way()
            window = self.windows[front]
            self.wait(front, lambda window=window: not window.down and window.state == (0, 0), f"after {way.__name__}: no key down")
            if self.dial.closed:
                type(self).dial = open(self.path / "dial", "wb", buffering=0)
            elif self.helper.poll() is None:
                self.send((EV_KEY, BUTTON_II, 0))


unittest.main()
