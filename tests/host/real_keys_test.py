#!/usr/bin/python3
"""Presses real keys on the keystroke field of drevix-settings, on an X server without a screen and under a window manager that
keeps combinations such as Alt+F4 for itself, in the layouts of five countries.

Usage: real_keys_test.py DREVIX_SETTINGS DREVIXCTL
Ends with 77 where there is no Xvfb.
"""
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

PROGRAM, CONTROL = sys.argv[1:]
SKIPPED = 77
CMD, SHIFT, CAPS, OPT, CTRL = 0x0100, 0x0200, 0x0400, 0x0800, 0x1000

# What is pressed, in xdotool's words with keys by their X keycode, as no layout changes those; what is stored; the key's name
# where every layout has the same.
EVERYWHERE = [
    ("38", 0x00, 0, None),  # A of the US layout
    ("shift+24", 0x0C, SHIFT, None),  # Q
    ("ctrl+24", 0x0C, CTRL, None),
    ("super+shift+25", 0x0D, CMD | SHIFT, None),  # W
    ("ctrl+alt+shift+super+39", 0x01, CTRL | OPT | SHIFT | CMD, None),  # S
    ("alt+38", 0x00, OPT, None),  # the panel's own Apply
    ("ctrl+15", 0x16, CTRL, None),  # 6
    ("49", 0x32, 0, None),  # a dead key in German and French
    ("94", 0x0A, 0, None),  # beside the left shift key on ISO keyboards
    ("Escape", 0x35, 0, "esc"),
    ("23", 0x30, 0, "tab"),
    ("shift+23", 0x30, SHIFT, "tab"),
    ("ctrl+23", 0x30, CTRL, "tab"),
    ("36", 0x24, 0, "return"),
    ("65", 0x31, 0, "space"),
    ("22", 0x33, 0, "delete"),
    ("119", 0x75, 0, "fw del"),
    ("118", 0x72, 0, "help"),
    ("67", 0x7A, 0, "F1"),
    ("68", 0x78, 0, "F2"),
    ("shift+96", 0x6F, SHIFT, "F12"),
    ("107", 0x69, 0, "F13"),
    ("116", 0x7D, 0, "down"),
    ("super+113", 0x7B, CMD, "left"),
    ("112", 0x74, 0, "pg up"),
    ("110", 0x73, 0, "home"),
    ("87", 0x53, 0, "1"),  # keypad
    ("ctrl+86", 0x45, CTRL, "+"),  # keypad
    ("104", 0x4C, 0, "enter"),  # keypad
    ("135", 0x6E, 0, "\\0"),  # the menu key
    # The window manager's own, which the field gets as soon as the X server has given it the whole keyboard.
    ("alt+70", 0x76, OPT, "F4"),
    ("alt+23", 0x30, OPT, "tab"),
    ("alt+65", 0x31, OPT, "space"),
    ("super+40", 0x02, CMD, None),  # D
]
OF_WINDOW_MANAGER = ("alt+70", "alt+23", "alt+65", "super+40")
# With caps lock on, and the key that turns it off again.
WITH_CAPS_LOCK = [("54", 0x08, CAPS, None), ("ctrl+54", 0x08, CAPS | CTRL, None)]  # C

# Names of keys by key code. The letters of Russian are not those of the names: there the US layout's are.
US_NAMES = {0x00: "a", 0x0C: "q", 0x0D: "w", 0x01: "s", 0x16: "6", 0x32: "`", 0x02: "d", 0x08: "c"}
LAYOUTS = [
    # setxkbmap's words, keycodes of the letters Y (the field) and A (Apply), names that differ from the US layout's, more keys
    ("us", 29, 38, {}, []),
    ("de", 52, 38, {0x32: "^"}, [("ISO_Level3_Shift+24", 0x0C, OPT, "q")]),
    ("fr", 29, 24, {0x00: "q", 0x0C: "a", 0x0D: "z", 0x16: "-"}, []),
    ("ru,us", 29, 38, {}, []),  # as it is used: without Latin letters no mnemonic could be pressed
    ("us dvorak", 28, 38, {0x0C: "'", 0x0D: ",", 0x01: "o", 0x02: "e", 0x08: "j"}, []),
]
WORDS = [(CMD, "cmd+"), (SHIFT, "shift+"), (CAPS, "caps+"), (OPT, "opt+"), (CTRL, "ctrl+")]

if not shutil.which("Xvfb"):
    print("skipped: there is no Xvfb (package xvfb)")
    sys.exit(SKIPPED)

folder = pathlib.Path(tempfile.mkdtemp(prefix="drevix-keys-"))
(folder / "config").mkdir()
environment = {"PATH": os.environ["PATH"], "HOME": str(folder), "XDG_CONFIG_HOME": str(folder / "config"), "LC_ALL": "C.UTF-8"}
environment |= {"XDG_RUNTIME_DIR": str(folder), "QT_QPA_PLATFORM": "xcb", "ASAN_OPTIONS": "detect_leaks=0"}
children = []


def start(*words, **more):
    children.append(subprocess.Popen(words, env=environment, **more))
    return children[-1]


def run(*words):
    return subprocess.run(words, env=environment, capture_output=True, text=True, check=True, timeout=30).stdout


def stored():
    slot = json.loads(run(CONTROL, "--json", "show"))["devices"]["veltrana"]["assignments"]["ringCW"]
    return slot["keyCode"], slot["modifiers"]


def wait_for(what, look, seconds=20):
    deadline = time.monotonic() + seconds
    while not look():
        if time.monotonic() > deadline:
            sys.exit(f"{what} did not come about")
        time.sleep(0.02)


def combination_name(key_code, modifiers, name):
    keypad = "num+" if 65 <= key_code <= 92 else ""
    return "".join(word for bit, word in WORDS if modifiers & bit) + keypad + name


class Panel:
    """drevix-settings with the keystroke of the control "Turn right" in front of the user."""

    def __init__(self, layout, field_key, apply_key, names):
        self.layout, self.apply_key, self.names = layout, apply_key, US_NAMES | names
        run("setxkbmap", *layout.split())
        run(CONTROL, "assign", "ringCW", "keystroke", "F9")
        self.process = start(PROGRAM)
        window = run("xdotool", "search", "--sync", "--onlyvisible", "--name", "Drevix Veltrana").split()[0]
        run("xdotool", "windowactivate", "--sync", window, "sleep", "0.3", "key", f"alt+{field_key}")

    def press(self, combination, key_code, modifiers, name):
        where = f"{combination} in {self.layout}"
        step = ["sleep", "0.1"] if combination in OF_WINDOW_MANAGER else []
        run("xdotool", "key", "F2", *step, "key", combination, "key", f"alt+{self.apply_key}")
        wait_for(f"{where} as {key_code:#x} with {modifiers:#x}", lambda: stored() == (key_code, modifiers), 5)
        name = name or self.names.get(key_code)
        if name:
            shown = combination_name(key_code, modifiers, name)
            line = next(line for line in run(CONTROL, "show").splitlines() if line.startswith("ringCW "))
            if re.split("  +", line)[-1] != shown:
                sys.exit(f"{where}: shown as {line!r}, not {shown!r}")

    def leave(self):
        if self.process.poll() is not None:
            sys.exit(f"drevix-settings ended in {self.layout}")
        self.process.terminate()
        if self.process.wait(timeout=20) != 0:
            sys.exit(f"drevix-settings ended with {self.process.returncode} in {self.layout}")


def main():
    reading, writing = os.pipe()
    start("Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset",
          pass_fds=[writing], stderr=subprocess.DEVNULL)
    os.close(writing)
    environment["DISPLAY"] = ":" + os.fdopen(reading).readline().strip()
    start("openbox", "--sm-disable", stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    wait_for("a window manager", lambda: subprocess.run(["xdotool", "get_desktop"], env=environment, capture_output=True).returncode == 0)
    pressed = 0
    for layout, field_key, apply_key, names, more in LAYOUTS:
        panel = Panel(layout, field_key, apply_key, names)
        for row in EVERYWHERE + more:
            panel.press(*row)
        run("xdotool", "key", "Caps_Lock")
        for row in WITH_CAPS_LOCK:
            panel.press(*row)
        run("xdotool", "key", "Caps_Lock")
        panel.leave()
        pressed += len(EVERYWHERE) + len(more) + len(WITH_CAPS_LOCK)
    print(f"{pressed} combinations in {len(LAYOUTS)} layouts arrived as they were pressed")


try:
    main()
finally:
    for child in reversed(children):
        if child.poll() is None:
            child.terminate()
            child.wait()
    shutil.rmtree(folder)
