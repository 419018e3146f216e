#!/usr/bin/python3
"""The desktop of a Wayland compositor without a screen: two windows, and what they get.

Usage: desktop_wlroots_test.py DESKTOP_PROBE
Ends with 77 where there is no compositor.
"""
import json
import os
import pathlib
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parents[2] / "support"))
import wayland  # noqa: E402
from compositor import KEYBOARDS, SEAT, TOPLEVELS, Compositor  # noqa: E402

PROBE = sys.argv[1]
SKIPPED = 77
SIZE = (800, 600)
CONFIGURATION = """
output HEADLESS-1 resolution 800x600
xwayland disable
focus_follows_mouse no
default_floating_border none
for_window [app_id="one"] floating enable, move absolute position 0 0
for_window [app_id="two"] floating enable, move absolute position 400 0
"""
A, SHIFT_KEY, CTRL_KEY = 30, 42, 29
UP, DOWN, LEFT, RIGHT = range(4)
GET_INPUTS, INPUT_EVENT = 100, 0x80000015  # of sway's own messages
CLOSE, MINIMIZE, FULL_SCREEN, SHOW_DESKTOP = range(4)

if not shutil.which("sway"):
    print("skipped: there is no compositor (package sway)")
    sys.exit(SKIPPED)
folder = pathlib.Path(tempfile.mkdtemp(prefix="drevix-wlroots-"))
children = []


class Window:
    def __init__(self, display, name):
        self.connection, self.group = wayland.Connection(display), 0
        seat = self.connection.bind("wl_seat", 5)
        self.events = []
        keyboard = self.connection.make(seat, 1)
        pointer = self.connection.make(seat, 0)
        self.connection.on(keyboard, 3, "uuuu", lambda _serial, _time, key, down: self.events.append(("key", key, down)))
        self.connection.on(keyboard, 4, "uuuuu", self.take_modifiers)
        self.connection.on(pointer, 8, "ui", lambda axis, steps: self.events.append(("wheel", axis, steps)))
        wayland.DragWindow(self.connection, seat, name, 200)
        self.connection.sync()

    def take_modifiers(self, _serial, held, _latched, _locked, group):
        self.events.append(("held", held))
        self.group = group

    def expect(self, *events):
        def look():
            got = iter(self.events)
            return all(event in got for event in events)  # in this order
        try:
            self.connection.wait(look, str(events))
        except RuntimeError as problem:
            sys.exit(f"{problem}, but {self.events}")
        self.events.clear()


class Probe:
    def __init__(self, environment, first="open"):
        self.process = subprocess.Popen([PROBE], env=environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1)
        children.append(self.process)
        if first:
            self.expect(first)

    def expect(self, wanted):
        seen = []
        for line in self.process.stdout:
            seen.append(line.strip())
            if seen[-1] == wanted:
                return
        sys.exit(f"{wanted!r} was not said, but {seen}")

    def do(self, *lines, answer="yes"):
        for line in lines:
            self.process.stdin.write(line + "\n")
            self.expect(answer)


def main():
    compositor, display, control = wayland.start_compositor(folder / "compositor", CONFIGURATION, folder / "log")
    children.append(compositor)
    if display is None:
        print("skipped: the compositor cannot run here\n" + (folder / "log").read_text())
        sys.exit(SKIPPED)

    def sway(*words):
        return subprocess.run(["swaymsg", "--socket", control, "--raw", *words], capture_output=True, text=True, check=True,
                              timeout=20).stdout

    connection = wayland.Connection(display)
    hands = wayland.Hands(connection, SIZE)
    hands.use_layouts("pc+us+de:2")
    one, two = Window(display, "one"), Window(display, "two")
    connection.sync()
    environment = {"PATH": os.environ["PATH"], "XDG_RUNTIME_DIR": str(folder), "WAYLAND_DISPLAY": display, "SWAYSOCK": control}
    probe = Probe(environment)
    for _ in range(3):
        for name, window in (("one", one), ("two", two)):
            sway(f'[app_id="{name}"] focus')
            probe.expect(f"front {name}")
            probe.do(f"down {CTRL_KEY}", f"down {A}", f"up {A}", f"up {CTRL_KEY}")
            window.expect(("held", 4), ("key", A, 1), ("key", A, 0), ("held", 0))

    # The session's keyboard is switched to its second layout and back; a program that starts meanwhile knows too.
    for group, starts in ((1, False), (1, True), (0, False)):
        hands.use_group(group)
        connection.sync()
        if starts:
            probe = Probe(environment)
        else:
            probe.expect("layout changed")
        # That may have been said of an earlier change, the session's keymap; then the probe types before it knows of this one.
        for tries_left in (2, 1, 0):
            two.connection.sync()
            two.events.clear()
            probe.do(f"down {A}", f"up {A}")
            two.connection.wait(lambda: ("key", A, 0) in two.events, "the key")
            if two.group == group:
                break
            if tries_left == 0:
                sys.exit(f"typed in layout {two.group}, wanted {group}")
            two.connection.listen(0.1)
    hands.point(450, 50)
    probe.do(f"scroll {UP} 1", f"scroll {RIGHT} 1")
    two.expect(("wheel", 0, 0xFFFFFFFF), ("wheel", 1, 1))

    def two_node():
        nodes = [json.loads(sway("-t", "get_tree"))]
        while nodes:
            node = nodes.pop()
            if node.get("app_id") == "two":
                return node
            nodes += node["nodes"] + node["floating_nodes"]
        return None

    # Asked before the compositor has told of the last change, as a busy one may, it asks for what is there already.
    for mode in (1, 0):
        for tries_left in (2, 1, 0):
            probe.do(f"ask {FULL_SCREEN}")
            try:
                two.connection.wait(lambda mode=mode: two_node()["fullscreen_mode"] == mode, f"full screen {mode}", seconds=5)
                break
            except RuntimeError:
                if tries_left == 0:
                    raise
        two.connection.listen(0.1)
    probe.do(f"ask {SHOW_DESKTOP}", answer="no")

    two.events.clear()
    probe.do(f"down {SHIFT_KEY}", f"down {A}")
    two.expect(("held", 1), ("key", A, 1))
    probe.process.send_signal(signal.SIGKILL)
    two.expect(("key", A, 0))  # the compositor lets it go

    answer = sway_message(GET_INPUTS, b"[]")
    for says in (b"", answer + b"no message at all", answer + sway_message(INPUT_EVENT, b"[]")):
        try_foreign_sway(environment, says)
    probe = Probe(environment)
    compositor.kill()
    probe.expect("lost")
    if not os.access("/dev/uinput", os.W_OK):  # else the machine's own desktop would get the key
        try_without_keyboard({**environment, "WAYLAND_DISPLAY": "other", "SWAYSOCK": ""})


def sway_message(kind, text):
    return b"i3-ipc" + struct.pack("=II", len(text), kind) + text


def try_foreign_sway(environment, says):
    """One that does not answer when it is asked for the layout, or not as sway does, is let go, and keys are pressed all the same."""
    with socket.socket(socket.AF_UNIX) as sway:
        sway.bind(f"{folder}/sway")
        sway.listen()
        sway.settimeout(20)
        probe = Probe({**environment, "SWAYSOCK": f"{folder}/sway"}, first=None)
        asked, _ = sway.accept()
        with asked:
            asked.settimeout(20)
            asked.sendall(says)
            while asked.recv(4096):
                pass
        probe.expect("open")
        probe.do(f"down {A}", f"up {A}")
    probe.process.kill()
    os.unlink(f"{folder}/sway")


def try_without_keyboard(environment):
    """A compositor tells its windows but takes no keys, or hangs up when asked for a keymap, and the kernel makes no keyboard: one
    line says so."""
    problem = ("the Wayland compositor takes no keys from programs, and no keyboard can be made by /dev/uinput: No such file or directory; "
               "see DrevixHelper(1)")
    stand_in = Compositor(folder / "other", [SEAT, TOPLEVELS], front="in-front")
    probe = Probe(environment, first=problem)
    probe.expect("front in-front")
    probe.do(f"down {A}", f"scroll {UP} 1", answer="no")
    stand_in.end()
    probe.expect("lost")
    Compositor(folder / "other", [SEAT, KEYBOARDS], syncs=1)
    if Probe(environment, first=problem).process.wait(timeout=20) != 1:
        sys.exit("a desktop was made of a compositor that had hung up")


try:
    main()
finally:
    for child in reversed(children):
        child.kill()
        child.wait()
    shutil.rmtree(folder)
