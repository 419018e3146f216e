#!/usr/bin/python3
"""The real helper and drevixctl on a session bus of their own. Usage: helper_test.py DREVIXHELPER DREVIXCTL"""
import json
import os
import pathlib
import re
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest

PEER = pathlib.Path(__file__).resolve().parents[1] / "helperlink" / "peer.py"
HELPER, DREVIXCTL = (pathlib.Path(path).resolve() for path in (sys.argv.pop(1), sys.argv.pop(1)))


class Helper(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.path = pathlib.Path(self.folder.name)
        self.config = self.path / "config"
        self.config.mkdir()
        self.environment = {**os.environ, "XDG_CONFIG_HOME": str(self.config), "XDG_STATE_HOME": str(self.path / "state"), "HOME": str(self.path), "LC_ALL": "C",
                            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.path}/bus"}

    def start(self, *command, output=None):
        """A process that ends with the test; its output goes to a file of that name."""
        with open(self.path / (output or "unused"), "wb") as file:
            process = subprocess.Popen(command, env=self.environment, stdout=file, stderr=subprocess.STDOUT)
        self.addCleanup(lambda: (process.kill(), process.wait()))
        return process

    def start_bus(self):
        bus = self.start("dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address=unix:path={self.path}/bus")
        self.until(lambda: (self.path / "bus").exists())
        return bus

    def start_helper(self, *arguments):
        helper = self.start(HELPER, "--describe", *arguments, output="said")
        self.until(lambda: "ready\n" in self.said())
        return helper

    def said(self):
        return (self.path / "said").read_text()

    def until(self, condition, what=""):
        end = time.monotonic() + 20
        while not condition():
            self.assertLess(time.monotonic(), end, what or "nothing happened")
            time.sleep(0.02)

    def run_ctl(self, *arguments):
        return subprocess.run([DREVIXCTL, *arguments], env=self.environment, capture_output=True, text=True, timeout=60,
                              check=False)

    def ctl(self, *arguments):
        result = self.run_ctl(*arguments)
        self.assertEqual((result.returncode, result.stderr), (0, ""), arguments)
        return result.stdout

    def versions(self):
        return [device["version"] for device in json.loads(self.ctl("devices", "--json"))]

    def test_devices_are_plugged_in_and_out(self):
        self.start_bus()
        file = self.config / "com.halcyra.drevix.devices"
        helper = self.start_helper()
        self.assertEqual(self.ctl("devices"), "no device is connected\n")
        file.write_text("version=1.05 serial=07060504030201 productName=\"Drevix Veltrana\"\nversion=2.10\n")
        self.until(lambda: "connected: 2\n" in self.said())
        self.assertEqual(self.ctl("devices").splitlines()[1].split("  ")[0], "Drevix Veltrana")
        self.assertIn("07060504030201", self.ctl("devices"))
        self.assertEqual(self.versions(), ["1.05", "2.10"])
        file.write_text("version=3.00\nversion=new\n")
        self.until(lambda: "line 2: version must be" in self.said())
        self.assertEqual(self.versions(), ["1.05", "2.10"])
        (self.config / "other").write_text("version=4.00")
        (self.config / "other").rename(file)
        self.until(lambda: "connected: 1\n" in self.said())
        self.assertEqual(self.versions(), ["4.00"])
        file.write_text("version=5.00\n" * 10000)
        self.until(lambda: "not a regular file of at most 64 KiB" in self.said())
        self.assertEqual(self.versions(), ["4.00"])
        file.unlink()
        self.until(lambda: self.said().count("connected: 0\n") == 2)
        self.assertEqual(self.versions(), [])
        # The folder itself goes and comes back, with a link.
        self.config.rename(self.path / "away")
        self.until(lambda: self.said().count("connected: 0\n") == 3)
        (self.path / "linked").write_text("version=6.00")
        self.config.mkdir()
        file.symlink_to(self.path / "linked")
        self.until(lambda: "version 6.00" in self.said())
        helper.send_signal(signal.SIGTERM)
        self.assertEqual(helper.wait(20), 0)
        self.assertEqual(sum(map(int, re.findall("connected: (.*)", self.said()))), self.said().count("  version "))
        self.assertEqual(self.run_ctl("devices").returncode, 1)

    def test_a_helper_that_answers_badly_is_asked_once_a_second(self):
        """It was asked up to 5,000 times a second, and then said not to answer."""
        self.start_bus()
        for mode in ("type", "fail", "huge"):
            helper = self.start("/usr/bin/python3", PEER, "DrevixHelper", mode, output="peer")
            self.until(lambda: "ready\n" in (self.path / "peer").read_text())
            result = self.run_ctl("devices")
            self.assertEqual((result.returncode, result.stderr.count("does not list")), (1, 1), result.stderr)
            self.assertLessEqual((self.path / "peer").read_text().count("PLZWPLZD"), 3, mode)
            helper.kill()
            helper.wait()

    def test_a_change_of_the_users_settings_is_told_and_applied(self):
        self.start_bus()
        painter = self.path / "Painter"
        painter.write_text("")
        painter.chmod(0o755)
        self.ctl("add", str(painter))
        self.ctl("assign", "tunerCW", "scroll", "up")
        self.ctl("assign", "tunerCW", "4", "--app", "Painter")
        self.ctl("assign", "ringCW", "scroll", "up", "+shift", "+ctrl", "--repeat", "6", "--app", "Painter")
        self.start_helper("--device", "version=1.05", "--front", "painter")
        self.ctl("assign", "buttonII", "keystroke", "cmd+shift+esc", "--app", "Painter")
        self.until(lambda: self.said().count("settings for Painter:") == 2)
        report = self.said().rpartition("settings for Painter:")[2]
        self.assertIn("  buttonII: Keystroke cmd+shift+esc\n", report)
        self.assertIn("  ringCW: Scroll up with shift+ctrl, repeat 6\n", report)
        self.assertRegex(report, r"  tunerCW: .* \(as everywhere\)\n")
        before = self.said()
        self.ctl("--prefs", str(self.path / "elsewhere.prefs"), "set", "ringSpeed", "9")
        time.sleep(0.3)
        self.assertEqual(self.said(), before)
        (self.config / "com.halcyra.drevix.prefs").write_bytes(b"damaged" * 100)
        self.assertEqual(self.run_ctl("set", "ringSpeed", "9").returncode, 0)
        self.until(lambda: self.said().count("settings for ") == 3)
        self.ctl("set", "active", "false")
        self.until(lambda: "the device is switched off" in self.said())

    def test_odd_settings_files_do_not_end_the_helper(self):
        self.start_bus()
        odd = self.path / "odd.prefs"
        self.ctl("--prefs", str(odd), "assign", "tunerCW", "4", "--app", "gimp")
        settings = bytearray(odd.read_bytes())
        count = struct.unpack_from("<i", settings, 12)[0]
        struct.pack_into("<i", settings, 64 + 4 * count + struct.unpack_from("<i", settings, 64)[0] + 4, 1667)
        # Without a global record, "Use the global setting" did nothing: the factory's is in force.
        for contents, expected in [(settings, " (as everywhere)"), (b"", "tunerCW: Keystroke")]:
            odd.write_bytes(contents)
            helper = self.start_helper("--prefs", str(odd), "--front", "gimp")
            self.until(lambda text=expected: text in self.said(), expected)
            helper.terminate()
            self.assertEqual(helper.wait(20), 0)

    def start_reporter(self, helper, words, kind="UInt32", number=1, name=""):
        """Reports a window and stays on the bus, as the owner of a name if one is given: its process, and what it was answered."""
        reporter = self.start("/usr/bin/python3", "-B", PEER.parents[1] / "helper" / "reporter.py", str(helper.pid), *words, kind, str(number),
                              *name.split(), output="report")
        self.until(lambda: (self.path / "report").read_text().endswith("\n"))
        return reporter, (self.path / "report").read_text()

    def front(self):
        front = json.loads(self.ctl("front", "--json"))
        return {key: front[key] for key in ("entry", "class", "name", "process") if key in front}

    def test_what_a_compositor_reports_is_in_front_until_it_leaves(self):
        """Reports of KWin, whose scripts have signed numbers alone, were refused; a name could be as long as a message."""
        self.start_bus()
        helper = self.start(HELPER, output="said")
        self.until(lambda: "ready\n" in self.said())
        own = str(os.getpid())
        for kind, number, words, expected in [
                ("UInt32", 1, ("gimp", "Gimp-2.10", "gimp"), {"entry": "gimp", "class": "Gimp-2.10", "name": "gimp", "process": "1"}),
                ("Int32", 1, ("", "", ""), {}),
                ("Int32", own, ("org.kde.krita.desktop", "", ""), {"entry": "org.kde.krita.desktop", "process": own}),
                ("Int32", -7, ("gimp", "x" * 100000, ""), {"entry": "gimp"}),
                ("UInt32", 4294967295, ("x" * 256, "y" * 255, "\n"), {"class": "y" * 255, "name": "\n"})]:
            reporter, answer = self.start_reporter(helper, words, kind, number)
            self.assertEqual((answer, self.front()), ("taken\n", expected))
            reporter.kill()
            self.until(lambda: self.front() == {})

    def test_a_stranger_is_not_believed_where_a_compositor_reports(self):
        self.start_bus()
        helper = self.start(HELPER, output="said")
        self.until(lambda: "ready\n" in self.said())
        for desktop, hint in [("ubuntu:GNOME", "gnome-extensions enable"), ("KDE", "KWin Scripts"), ("sway", "")]:
            self.environment.update(XDG_CURRENT_DESKTOP=desktop, WAYLAND_DISPLAY="none")
            self.assertRegex(self.run_ctl("front").stderr, f"note: no window.*{hint}" if hint else "^$")
        early, _ = self.start_reporter(helper, ("early", "", ""))
        self.assertEqual(self.run_ctl("front").stderr, "")
        compositor, answer = self.start_reporter(helper, ("krita", "", ""), name="org.gnome.Shell")
        self.assertEqual((answer, self.front()["entry"]), ("taken\n", "krita"))
        _, answer = self.start_reporter(helper, ("gimp", "", ""))
        self.assertIn("AccessDenied: here the compositor tells", answer)
        early.kill()
        self.assertEqual(self.front()["entry"], "krita")
        compositor.kill()
        self.until(lambda: self.front() == {})

    def test_a_script_of_kwin_that_was_switched_off_is_noticed(self):
        """KWin stays on the bus, so the window of its last report was in front for ever."""
        self.start_bus()
        helper = self.start(HELPER, output="said")
        self.until(lambda: "ready\n" in self.said())
        self.start_reporter(helper, ("krita", "", ""), name="org.kde.KWin")
        self.assertEqual(self.front()["entry"], "krita")  # who looks is told what was reported, and asks
        self.until(lambda: self.front() == {})
        self.assertEqual((self.path / "report").read_text(), "taken\nasked\n")

    def start_panel(self, helper, *calls):
        """Makes these calls of the device object, and stays on the bus."""
        (self.path / "panel").write_text("")
        panel = self.start("/usr/bin/python3", "-c", "import dbus, dbus.mainloop.glib, sys; from gi.repository import GLib;"
                           "dbus.mainloop.glib.DBusGMainLoop(set_as_default=True); device = dbus.Interface(dbus.SessionBus().get_object("
                           f"'com.halcyra.drevix.Process.DrevixHelper.p{helper.pid}', '/com/halcyra/drevix/Device'), 'com.halcyra.drevix.Device1');"
                           + ";".join(f"device.{call}" for call in calls) + "; print('called', flush=True); GLib.MainLoop().run()", output="panel")
        self.until(lambda: (self.path / "panel").read_text() == "called\n", "the panel does not run")
        return panel

    def test_a_panel_that_hangs_in_front_does_not_keep_the_device_from_acting(self):
        """It did for ever, also with another window in front."""
        self.start_bus()
        helper = self.start(HELPER, "--dry-run", output="said")
        self.until(lambda: "ready\n" in self.said())
        self.ctl("assign", "buttonI", "keystroke", "F5")
        panel = self.start_panel(helper, "Watch(True)")
        quiet, acts = "nothing: the settings panel is in front\n", "keys KEY_F5\n"
        self.until(lambda: self.ctl("press", "buttonI") == quiet)

        def hold_on(seconds):
            end = time.monotonic() + seconds
            while time.monotonic() < end:
                self.assertEqual(self.ctl("press", "buttonI"), quiet)
        hold_on(3)  # it answers
        panel.send_signal(signal.SIGSTOP)
        hold_on(1)
        self.until(lambda: self.ctl("press", "buttonI") == acts)
        panel.send_signal(signal.SIGCONT)
        self.until(lambda: self.ctl("press", "buttonI") == quiet)

    def test_a_panel_is_quiet_as_soon_as_its_window_is_in_front(self):
        """A touch before the panel's own word was typed into it."""
        self.start_bus()
        helper = self.start(HELPER, "--dry-run", output="said")
        self.until(lambda: "ready\n" in self.said())
        self.ctl("assign", "buttonI", "keystroke", "F5")
        quiet, acts = "nothing: the settings panel is in front\n", "keys KEY_F5\n"
        for calls, expected in ((["Watch(True)", "Watch(False)"], quiet), (["Watch(False)"], acts),
                                (["Watch(True)", "Watch(False)", "Unwatch()"], acts)):
            panel = self.start_panel(helper, *calls)
            self.assertEqual(self.ctl("press", "buttonI"), acts, calls)
            reporter, _ = self.start_reporter(helper, ("panel", "", ""), number=panel.pid)
            self.assertEqual(self.ctl("press", "buttonI"), expected, calls)
            reporter.kill()
            self.until(lambda: self.ctl("press", "buttonI") == acts)
            panel.kill()
            panel.wait()

    def test_one_helper_serves_a_session(self):
        self.start_bus()
        pair = [self.start(HELPER, output=f"said{i}") for i in range(2)]
        self.until(lambda: any(helper.poll() is not None for helper in pair))
        time.sleep(0.3)
        ended = [helper.poll() for helper in pair]
        self.assertCountEqual(ended, [1, None])
        other = pair[ended.index(None)]
        self.assertIn(f"another helper serves this session already, process {other.pid}\n",
                      (self.path / f"said{ended.index(1)}").read_text())
        self.assertEqual(self.versions(), [])

    def test_failures_are_told_in_one_line(self):
        for program, arguments, expected in [
            (HELPER, [], "there is no session bus"),
            (HELPER, ["--device", "version=x"], "cannot use --device version=x: version must be"),
            (HELPER, ["--nonsense"], "unknown option"),
            (HELPER, ["--front"], "--front needs APP"),
            (DREVIXCTL, ["devices"], "the device helper is not running"),
        ]:
            result = subprocess.run([program, *arguments], env=self.environment, capture_output=True, text=True,
                                    timeout=60, check=False)
            self.assertEqual(result.returncode, 2 if "option" in expected or "needs" in expected else 1, arguments)
            self.assertIn(expected, result.stderr)
            self.assertEqual(result.stderr.count("\n"), 1, result.stderr)

    def test_a_hung_helper_is_told_from_none_and_a_new_bus_is_joined_until_the_last(self):
        bus = self.start_bus()
        helper = self.start_helper()
        helper.send_signal(signal.SIGSTOP)
        start = time.monotonic()
        result = self.run_ctl("devices")
        self.assertEqual((result.returncode, result.stderr.count("does not list")), (1, 1), result.stderr)
        self.assertLess(time.monotonic() - start, 10)
        self.ctl("set", "ringSpeed", "9")
        helper.send_signal(signal.SIGCONT)
        self.until(lambda: self.said().count("settings for ") == 2)
        bus.kill()
        bus.wait()
        (self.path / "bus").unlink(missing_ok=True)
        last_bus = self.start_bus()
        self.until(lambda: self.said().count("ready\n") == 2)
        self.assertEqual(self.versions(), [])
        last_bus.kill()  # the session ends; the helper once lived on
        self.assertEqual(helper.wait(timeout=30), 0)


unittest.main()
