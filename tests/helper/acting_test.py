#!/usr/bin/python3
"""The helper acts on an X server without a screen, under a window manager: what a device sends through the reader of real
devices becomes keys of the window in front.

Usage: acting_test.py DREVIXHELPER DREVIXCTL KEY_WINDOW
Ends with 77 where there is no Xvfb, openbox or xdotool.
"""
import ctypes
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "support"))
from acting import BUTTON_I, BUTTON_II, ABS_X, EV_ABS, EV_KEY, EV_REL, REL_WHEEL, SKIPPED, ActingCase  # noqa: E402

if not all(shutil.which(program) for program in ("Xvfb", "openbox", "xdotool")):
    print("skipped: Xvfb, openbox and xdotool are needed")
    sys.exit(SKIPPED)
ActingCase.helper_program, ActingCase.control_program, WINDOW = (pathlib.Path(sys.argv.pop(1)).resolve() for _ in range(3))

SHIFT, CTRL, ALT = 1, 4, 8  # states of X events
SECOND_GROUP = 128  # the same, for a client that knows no groups
A, B, K, F5, Z, Y = 38, 56, 45, 71, 52, 29  # X key codes
MODIFIER_CODES = {37, 50, 64}
SWITCHES, PRESSES = 20, 50


class Acting(ActingCase):
    @classmethod
    def setUpClass(cls):
        cls.prepare()
        read, write = os.pipe()
        cls.start("Xvfb", "-displayfd", str(write), "-screen", "0", "640x480x24", "-nolisten", "tcp", pass_fds=[write])
        os.close(write)
        with os.fdopen(read) as display:
            cls.environment["DISPLAY"] = ":" + display.readline().strip()
        cls.start("openbox")
        for name in ("alpha", "beta", "gamma"):
            cls.start(WINDOW, name, output=name)
        cls.until(lambda: all(cls.window(name) for name in ("alpha", "beta", "gamma")))
        cls.add_programs("alpha", "beta")
        for words in (["buttonI", "keystroke", "F5"], ["tunerCW", "scroll", "up"],
                      ["buttonI", "keystroke", "shift+a", "--app", "alpha"],
                      ["buttonII", "keystroke", "ctrl+k", "--repeat", "-1", "--app", "alpha"],
                      ["ringRight", "keystroke", "shift+a", "--repeat", "3", "--app", "alpha"],
                      ["tunerCW", "4", "--app", "alpha"],
                      ["buttonI", "keystroke", "ctrl+alt+b", "--app", "beta"]):
            cls.ctl("assign", *words)
        cls.ctl("set", "tunerSensitivity", "100", "--app", "alpha")
        cls.start_helper()

    @classmethod
    def window(cls, name):
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--class", f"^{name}$"], env=cls.environment,
                               capture_output=True, text=True, timeout=30, check=False)
        return found.stdout.split()[:1]

    def activate(self, name):
        before = self.told(name).count("focus")
        subprocess.run(["xdotool", "windowactivate", *self.window(name)], env=self.environment, check=True, timeout=30)
        self.until(lambda: self.told(name).count("focus") > before or before > 0)
        self.until(lambda: f"class: {name}\n" in self.ctl("front"), f"{name} did not come to the front")

    def told(self, name):
        return (self.path / name).read_text().splitlines()

    def keys(self, name, kind="down"):
        """The keys that a window got, without modifiers, each with the state that it came with."""
        lines = [line.split() for line in self.told(name) if line.startswith(kind + " ")]
        return [(int(code), int(state)) for _, code, state in lines if int(code) not in MODIFIER_CODES]

    def keys_down(self):
        return int(subprocess.run([WINDOW], env=self.environment, capture_output=True, text=True, timeout=30, check=True).stdout)

    def lock_group(self, group):
        """What the key does that switches between the layouts of one keyboard."""
        x11 = ctypes.CDLL("libX11.so.6")
        x11.XOpenDisplay.restype = ctypes.c_void_p
        display = ctypes.c_void_p(x11.XOpenDisplay(self.environment["DISPLAY"].encode()))
        x11.XkbLockGroup(display, 0x100, group)  # of the core keyboard
        x11.XCloseDisplay(display)

    def test_1_each_press_goes_to_the_window_in_front_by_its_own_settings(self):
        expected = {"alpha": (A, SHIFT), "beta": (B, CTRL | ALT), "gamma": (F5, 0)}
        count = dict.fromkeys(expected, 0)
        for switch in range(SWITCHES):
            name = list(expected)[switch % 3]
            self.activate(name)
            for _ in range(PRESSES):
                self.press(BUTTON_I)
            count[name] += PRESSES
            self.until(lambda: len(self.keys(name, "up")) == count[name], f"presses were lost in {name}")
        for name, key in expected.items():
            self.assertEqual(self.keys(name), [key] * count[name])
        self.assertEqual(self.keys_down(), 0)

    def test_2_wheel_repeat_and_simulated_controls(self):
        self.activate("alpha")
        # The wheel goes to what is under the pointer; on the window manager's own background it would change desktops.
        subprocess.run(["xdotool", "mousemove", "--window", *self.window("alpha"), "50", "50"], env=self.environment, check=True,
                       timeout=30)
        self.send((EV_REL, REL_WHEEL, 3))
        self.until(lambda: self.told("alpha").count("button 4") == 3)
        before = len(self.keys("alpha"))
        self.send((EV_ABS, ABS_X, 127))
        self.until(lambda: len(self.keys("alpha")) >= before + 5)
        self.send((EV_ABS, ABS_X, 0))
        self.until(lambda: self.keys_down() == 0)
        time.sleep(0.2)
        after = len(self.keys("alpha"))
        self.assertEqual(self.ctl("press", "buttonI"), "keys shift+KEY_A\n")
        self.until(lambda: len(self.keys("alpha")) == after + 1)

    def test_2_watchers_are_told_of_a_control_30_times_a_second_and_of_all_that_it_did(self):
        self.activate("gamma")
        watch = self.start(self.control_program, "watch", output="watched")

        def told():
            return [int((re.search(r", (\d+) times", line) or [0, 1])[1]) for line in self.told("watched") if line.startswith("buttonI: ")]
        self.until(lambda: self.press(BUTTON_I) or told(), "nothing is told")
        time.sleep(1)  # what came meanwhile is told
        lines, before, begin = len(told()), sum(told()), time.monotonic()
        for _ in range(400):
            self.press(BUTTON_I)
        self.until(lambda: sum(told()) >= before + 400, "not all was told")
        self.assertEqual(sum(told()), before + 400)
        self.assertLessEqual(len(told()) - lines, 30 * (time.monotonic() - begin) + 2)
        watch.kill()

    def test_2_a_control_is_down_for_watchers_until_the_last_that_holds_it_lets_go(self):
        self.activate("gamma")
        watcher = self.start("/usr/bin/python3", HERE / "watcher.py", str(self.helper.pid), output="pressed")
        self.until(lambda: self.told("pressed") == ["ready"])
        self.send((EV_KEY, BUTTON_II, 1))
        self.until(lambda: self.told("pressed") == ["ready", "buttonII 1"])
        self.ctl("hold", "buttonII")
        self.send((EV_KEY, BUTTON_II, 0))
        time.sleep(0.2)  # what came of that is told
        self.ctl("release", "buttonII")
        self.until(lambda: self.told("pressed")[-1] == "buttonII 0")
        self.assertEqual(self.told("pressed"), ["ready", "buttonII 1", "buttonII 0"])
        watcher.kill()

    def test_2_the_layout_in_force_says_where_a_key_is(self):
        """A layout that was switched while one window stayed in front was noticed only when the front changed."""
        self.ctl("assign", "buttonV", "182")  # undo
        self.activate("gamma")

        def press():
            before = len(self.keys("gamma"))
            told = self.ctl("press", "buttonV")
            self.until(lambda: len(self.keys("gamma")) == before + 1, "undo did not come")
            return told, self.keys("gamma")[-1]
        at_z, at_y = ("keys ctrl+KEY_Z\n", (Z, CTRL)), ("keys ctrl+KEY_Y\n", (Y, CTRL))
        for layouts, expected in (("de", at_y), ("us,de", at_z)):
            subprocess.run(["setxkbmap", layouts], env=self.environment, check=True, timeout=30)
            self.assertEqual(press(), expected, layouts)
        for group, expected in ((1, (at_y[0], (Y, CTRL | SECOND_GROUP))), (0, at_z)):
            self.lock_group(group)
            self.assertEqual(press(), expected, group)

    def test_3_a_change_counts_at_once_and_switched_off_is_off(self):
        self.activate("alpha")
        before = len(self.keys("alpha"))
        self.ctl("set", "active", "false", "--app", "alpha")
        self.until(lambda: "active: no" in self.ctl("front"))
        self.press(BUTTON_I)
        self.assertEqual(self.ctl("press", "buttonI"), "nothing: the device is switched off here\n")
        self.ctl("set", "active", "true", "--app", "alpha")
        self.until(lambda: "active: yes" in self.ctl("front"))
        self.press(BUTTON_I)
        self.until(lambda: len(self.keys("alpha")) > before)
        self.assertEqual(len(self.keys("alpha")), before + 1)

    def test_4_keys_go_up_when_the_front_changes_the_device_goes_or_the_helper_ends(self):
        def change_front():
            self.activate("gamma")

        def unplug():
            self.dial.close()

        def kill():
            self.helper.kill()
            self.helper.wait()

        def end():
            self.helper.send_signal(signal.SIGTERM)
            self.assertEqual(self.helper.wait(20), 0)

        for way in (change_front, unplug, kill, end):
            self.activate("alpha")
            before = len(self.keys("alpha"))
            self.send((EV_KEY, BUTTON_II, 1))
            self.until(lambda: len(self.keys("alpha")) > before, way.__name__)
            time.sleep(0.1)  # whoever lets go for the helper that was killed leaves the keys of the next one alone
            self.assertEqual(self.keys_down(), 2, way.__name__)
            self.assertNotIn("again", "".join(self.told("said")))  # which the device that was plugged in again could be
            way()
            self.until(lambda: self.keys_down() == 0, f"a key stayed down: {way.__name__}")
            if self.helper.poll() is not None:
                self.dial.close()
                self.start_helper()
            elif self.dial.closed:  # and plugged in again
                type(self).dial = open(self.path / "dial", "wb", buffering=0)
            else:
                self.send((EV_KEY, BUTTON_II, 0))

    def test_5_the_player_that_played_last_is_asked_and_nothing_is_typed_while_locked(self):
        self.ctl("assign", "buttonP", "144")
        self.ctl("assign", "buttonV", "151")
        self.activate("gamma")
        self.assertEqual(self.ctl("press", "buttonV"), "nothing: no player runs\n")
        players = {}
        for name in ("first", "second"):
            players[name] = self.start("/usr/bin/python3", HERE / "player.py", name, output=name)
            self.until(lambda name=name: "ready" in self.told(name))
        self.ctl("press", "buttonP")
        self.until(lambda: self.told("second") == ["ready", "PlayPause"])
        self.ctl("press", "buttonV")
        self.until(lambda: self.told("second")[-1] == "Volume 1.0")
        self.assertEqual(self.told("first"), ["ready"])
        players["second"].send_signal(signal.SIGUSR1)
        self.until(lambda: self.ctl("press", "buttonI") == "nothing: the session is locked\n")
        self.ctl("press", "buttonP")  # may act all the same
        self.until(lambda: self.told("second").count("PlayPause") == 2)
        players["second"].send_signal(signal.SIGUSR1)
        self.until(lambda: self.ctl("press", "buttonI") == "keys KEY_F5\n")

    def test_5_the_login_manager_is_asked_and_its_word_counts(self):
        self.ctl("assign", "buttonP", "102")  # lock
        self.ctl("assign", "buttonV", "104")  # suspend
        self.activate("gamma")
        manager = self.start("/usr/bin/python3", HERE / "login_manager.py", output="manager")
        self.until(lambda: self.told("manager") == ["ready"])
        self.ctl("press", "buttonP")
        self.until(lambda: self.told("manager") == ["ready", "Lock"])
        self.ctl("hold", "buttonV")
        self.until(lambda: "the login manager refuses: it must stay awake" in "".join(self.told("said")), "what was refused is not told")
        self.ctl("release", "buttonV")
        self.assertEqual(self.told("manager"), ["ready", "Lock", "Suspend"])
        self.ctl("assign", "buttonV", "103")  # log out, which no session manager is there for
        self.ctl("hold", "buttonV")
        self.until(lambda: "no session manager" in "".join(self.told("said")), "that nobody can be asked is not told")
        self.ctl("release", "buttonV")
        for told in ("nothing: the session is locked\n", "keys KEY_F5\n"):
            manager.send_signal(signal.SIGUSR1)
            self.until(lambda told=told: self.ctl("press", "buttonI") == told, told)


unittest.main()
