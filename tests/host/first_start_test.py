#!/usr/bin/python3
"""What a new user sees in four keyboard layouts, on an X server without a screen: the panel is started and starts the helper,
undo is undo in the window in front, and what is changed in the panel is done at the next press.

Usage: first_start_test.py DREVIX_SETTINGS DREVIXCTL KEY_WINDOW
Ends with 77 where there is no Xvfb, openbox or xdotool.
"""
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

import dbus.bus

SKIPPED = 77
if not all(shutil.which(program) for program in ("Xvfb", "openbox", "xdotool", "setxkbmap")):
    print("skipped: Xvfb, openbox, xdotool and setxkbmap are needed")
    sys.exit(SKIPPED)
PROGRAM, CONTROL, WINDOW = sys.argv[1:]
CTRL = 4  # a state of X events
F12 = 96  # an X key code
LAYOUTS = [("us", 52), ("de", 29), ("fr", 25), ("us dvorak", 61)]  # setxkbmap's words, the X key code that types z
APPLICATION = "librecad"  # whose button I is ctrl+z
OTHER = "nobody"  # has no settings of its own

folder = pathlib.Path(tempfile.mkdtemp(prefix="drevix-first-"))
environment = {"PATH": os.environ["PATH"], "HOME": str(folder), "XDG_CONFIG_HOME": str(folder / "config"), "LC_ALL": "C.UTF-8"}
environment |= {"XDG_STATE_HOME": str(folder / "state"), "XDG_RUNTIME_DIR": str(folder), "QT_QPA_PLATFORM": "xcb"}
environment |= {"ASAN_OPTIONS": "detect_leaks=0", "DBUS_SESSION_BUS_ADDRESS": f"unix:path={folder}/bus"}
children = []


def start(*words, output="unused", **more):
    with open(folder / output, "ab") as file:
        children.append(subprocess.Popen(words, env=environment, stdout=file, stderr=subprocess.STDOUT, **more))
    return children[-1]


def run(*words):
    return subprocess.run(words, env=environment, capture_output=True, text=True, check=True, timeout=30).stdout


def wait_for(what, look, seconds=20):
    deadline = time.monotonic() + seconds
    while not look():
        if time.monotonic() > deadline:
            sys.exit(f"{what} did not come about")
        time.sleep(0.02)


def window(*search):
    return run("xdotool", "search", "--sync", "--onlyvisible", *search).split()[0]


def bring_to_front(name):
    run("xdotool", "windowactivate", "--sync", window("--class", f"^{name}$"))
    wait_for(f"{name} in front", lambda: f"class: {name}\n" in run(CONTROL, "front"))
    wait_for("a panel that lets the device act", lambda: "the settings panel" not in run(CONTROL, "press", "ringXYRest"))


def last_key(name):
    lines = [line.split() for line in (folder / name).read_text().splitlines() if line.startswith("down ")]
    keys = [(int(code), int(state)) for _, code, state in lines if int(code) != 37]
    return keys[-1:]


def helpers():
    """The process ids of the helpers that the panel has started."""
    names = dbus.bus.BusConnection(environment["DBUS_SESSION_BUS_ADDRESS"]).list_names()
    return [int(found[1]) for found in (re.search(r"\.DrevixHelper\.p(\d+)$", name) for name in names) if found]


def end_helpers():
    for process in helpers():
        os.kill(process, signal.SIGTERM)
    wait_for("the helper's end", lambda: not helpers())


def check_undo(layout, code):
    shutil.rmtree(folder / "config", ignore_errors=True)
    (folder / "config").mkdir()
    run("setxkbmap", *layout.split())
    panel = start(PROGRAM, output="panel")
    wait_for("the helper", helpers)
    window("--name", "Drevix Veltrana")
    wait_for("the panel in front", lambda: "drevix-settings" in run(CONTROL, "front"))
    bring_to_front(APPLICATION)
    run(CONTROL, "press", "buttonI")
    wait_for(f"undo in {layout}", lambda: last_key(APPLICATION) == [(code, CTRL)])
    line = next(line for line in run(CONTROL, "show", "--app", APPLICATION).splitlines() if line.startswith("buttonI "))
    if "ctrl+z" not in line:
        sys.exit(f"{layout}: shown as {line!r}")
    return panel


def check_change():
    """In the panel of the last layout, whose names of keys F12 is not among."""
    run("xdotool", "windowactivate", "--sync", window("--name", "Drevix Veltrana"))
    wait_for("a panel that keeps the device quiet", lambda: "the settings panel is in front" in run(CONTROL, "press", "buttonI"))
    run(CONTROL, "assign", "buttonI", "keystroke", "F11")
    bring_to_front(OTHER)
    run(CONTROL, "press", "buttonI")
    wait_for("the key that was assigned", lambda: last_key(OTHER) == [(F12 - 1, 0)])
    run("xdotool", "windowactivate", "--sync", window("--name", "Drevix Veltrana"))
    wait_for("a panel that keeps the device quiet", lambda: "the settings panel is in front" in run(CONTROL, "press", "buttonI"))
    run("xdotool", "sleep", "0.3", "key", "alt+k", "sleep", "0.3", "key", "F2", "key", "F12", "sleep", "0.3", "key", "ctrl+s")
    bring_to_front(OTHER)
    run(CONTROL, "press", "buttonI")
    wait_for("the key of the panel", lambda: last_key(OTHER) == [(F12, 0)])


def check_switch():
    run("setxkbmap", "de")
    run("xdotool", "windowactivate", "--sync", window("--name", "Drevix Veltrana"))
    wait_for("word of the other layout", lambda: "The keyboard layout was switched" in (folder / "panel").read_text())


def main():
    start("dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address=unix:path={folder}/bus")
    reading, writing = os.pipe()
    start("Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset", pass_fds=[writing])
    os.close(writing)
    environment["DISPLAY"] = ":" + os.fdopen(reading).readline().strip()
    start("openbox", "--sm-disable")
    for name in (APPLICATION, OTHER):
        start(WINDOW, name, output=name)
    for layout, code in reversed(LAYOUTS):
        panel = check_undo(layout, code)
        if layout == "us":
            check_change()
            check_switch()
        panel.terminate()
        if panel.wait(timeout=20) != 0:
            sys.exit(f"drevix-settings ended with {panel.returncode} in {layout}")
        end_helpers()
    print(f"undo is undo on a first start in {len(LAYOUTS)} layouts")


try:
    main()
finally:
    for child in reversed(children):
        if child.poll() is None:
            child.kill()
            child.wait()
    shutil.rmtree(folder)
