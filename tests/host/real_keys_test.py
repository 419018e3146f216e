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

from keystrokes import CAPS, EVERYWHERE, OF_WINDOW_MANAGER, OPT, US_NAMES, WITH_CAPS_LOCK, combination_name

PROGRAM, CONTROL = sys.argv[1:]
SKIPPED = 77
LAYOUTS = [
    # setxkbmap's words, keycodes of the letters K (the field) and Y (Apply), names that differ from the US layout's, more keys
    ("us", 45, 29, {}, []),
    ("de", 45, 52, {0x32: "^"}, [("ISO_Level3_Shift+24", 0x0C, OPT, "q")]),
    ("fr", 45, 29, {0x00: "q", 0x0C: "a", 0x0D: "z", 0x16: "-"}, []),
    ("ru,us", 45, 29, {}, []),  # as it is used: without Latin letters no mnemonic could be pressed
    ("us dvorak", 55, 28, {0x0C: "'", 0x0D: ",", 0x01: "o", 0x02: "e", 0x08: "j"}, []),
]

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


class Panel:
    """drevix-settings with the keystroke of the control "Turn right" in front of the user."""

    def __init__(self, layout, field_key, apply_key, names):
        self.layout, self.apply_key, self.names = layout, apply_key, US_NAMES | names
        run("setxkbmap", *layout.split())
        run(CONTROL, "assign", "ringCW", "keystroke", "F9")
        with open(folder / "said", "wb") as said:
            self.process = start(PROGRAM, stdout=said, stderr=said)
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
            # Behind some names stands the key's label; the name of "enter" is its label alone.
            if shown not in re.fullmatch(r"(.*?)(?: \((.+)\))?", re.split("  +", line)[-1]).groups():
                sys.exit(f"{where}: shown as {line!r}, not {shown!r}")

    def tells_of_switch(self):
        return "layout was switched" in (folder / "said").read_text()

    def switch(self, layout, key):
        """To another layout, in which the key types another letter; the window is in front all the time."""
        run("setxkbmap", layout)
        run("xdotool", "key", key)
        wait_for(f"word of {layout} after {self.layout}", self.tells_of_switch)

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
        if panel.tells_of_switch():
            sys.exit(f"a switch was told of that there was not, in {layout}")
        if layout == LAYOUTS[-1][0]:
            panel.switch("de", "29")
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
