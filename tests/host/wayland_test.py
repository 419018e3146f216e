#!/usr/bin/python3
"""Works drevix-settings as a person does under a Wayland compositor without a screen: keys, a drop from another program, going away
and coming back.

Usage: wayland_test.py DREVIX_SETTINGS DREVIXCTL
Ends with 77 where there is no compositor.
"""
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

from keystrokes import EVERYWHERE, WITH_CAPS_LOCK

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
import wayland  # noqa: E402

PROGRAM, CONTROL = sys.argv[1:]
SKIPPED = 77
SIZE = (1600, 1000)
X_KEYCODE_OFFSET = 8  # X11 counts keys from 8
MODIFIERS = {"shift": wayland.SHIFT, "ctrl": wayland.CONTROL, "alt": wayland.ALT, "super": wayland.SUPER}
OF_COMPOSITOR = ("alt+70", "super+40")
ESCAPE, F2, A, K, Y, Z = 1, 60, 30, 37, 21, 44  # evdev codes, of the letters by the US layout
A_STORED = 0x00

# What the compositor would do by itself with two of the combinations that are pressed.
CONFIGURATION = f"""
output HEADLESS-1 resolution {SIZE[0]}x{SIZE[1]}
xwayland disable
focus_follows_mouse no
focus_on_window_activation focus
default_floating_border none
for_window [app_id="com.halcyra.drevix.settings"] floating enable, move absolute position 0 0
for_window [app_id="other"] floating enable, move absolute position 1200 0
bindsym Mod4+d exec touch {{folder}}/bound
bindsym Mod1+F4 kill
"""

if not shutil.which("sway"):
    print("skipped: there is no compositor (package sway)")
    sys.exit(SKIPPED)

folder = pathlib.Path(tempfile.mkdtemp(prefix="drevix-wayland-"))
children = []


def start(*words, **more):
    children.append(subprocess.Popen(words, **more))
    return children[-1]


def start_compositor(run_folder):
    process, display, control = wayland.start_compositor(run_folder, CONFIGURATION.format(folder=run_folder), folder / "compositor.log")
    children.append(process)
    if display is None:
        print("skipped: the compositor cannot run here\n" + (folder / "compositor.log").read_text())
        sys.exit(SKIPPED)
    return display, control


def wait_for(what, look, seconds=20):
    deadline = time.monotonic() + seconds
    while not look():
        if time.monotonic() > deadline:
            sys.exit(f"{what} did not come about")
        time.sleep(0.01)


class Desk:
    def __init__(self):
        self.run_folder = folder / "compositor"
        display, self.control_socket = start_compositor(self.run_folder)
        (folder / "config").mkdir()
        (folder / "run").mkdir(mode=0o700)
        # No X server and no choice of a platform: the program finds its way to the compositor by itself.
        self.environment = {"PATH": os.environ["PATH"], "HOME": str(folder), "XDG_CONFIG_HOME": str(folder / "config"),
                            "XDG_RUNTIME_DIR": str(folder / "run"), "WAYLAND_DISPLAY": display, "LC_ALL": "C.UTF-8",
                            "ASAN_OPTIONS": "detect_leaks=0"}
        self.connection = wayland.Connection(display)
        self.hands = wayland.Hands(self.connection, SIZE)
        self.hands.use_layouts("pc+us")
        self.other = wayland.DragWindow(self.connection, self.hands.seat, "other", 200)
        self.wait_for("the other window", lambda: self.window("other"))

    def wait_for(self, what, look, seconds=20):
        def listen_and_look():
            self.connection.listen(0)
            return look()
        wait_for(what, listen_and_look, seconds)

    def control(self, *words):
        return subprocess.run([CONTROL, *words], env=self.environment, capture_output=True, text=True, check=True, timeout=30).stdout

    def slots(self):
        return json.loads(self.control("--json", "show"))["devices"]["veltrana"]["assignments"]

    def window(self, app_id):
        """The window as the compositor sees it, None without one."""
        tree = subprocess.run(["swaymsg", "--socket", self.control_socket, "--raw", "-t", "get_tree"], capture_output=True, check=True,
                              timeout=30).stdout
        nodes = [json.loads(tree)]
        while nodes:
            node = nodes.pop()
            if node.get("app_id") == app_id:
                return node
            nodes += node["nodes"] + node["floating_nodes"]
        return None

    def stored(self):
        slot = self.slots()["ringCW"]
        return slot["keyCode"], slot["modifiers"]

    def panel_window(self):
        return self.window("com.halcyra.drevix.settings")

    def start_panel(self, field_key):
        """drevix-settings with the keystroke field of "Turn right" in use. The key is that of the field's letter."""
        self.control("assign", "ringCW", "keystroke", "F9")
        panel = start(PROGRAM, "--control", "ringCW", env=self.environment)
        self.wait_for("the panel", lambda: (self.panel_window() or {}).get("focused"))
        self.wait_for_rest(panel)  # what is typed before the window has drawn itself goes elsewhere
        self.hands.press(field_key, wayland.ALT)
        self.wait_for_rest(panel)  # with a letter Qt asks for the window's turn as well, and gets it a little later
        return panel

    def wait_for_rest(self, process):
        rests = []

        def is_at_rest():
            state = pathlib.Path(f"/proc/{process.pid}/stat").read_text().rpartition(") ")[2][0]
            rests.append(state == "S")
            return len(rests) > 20 and all(rests[-20:])

        self.wait_for("rest of the panel", is_at_rest)

    def end(self, panel):
        if panel.poll() is not None:
            sys.exit(f"drevix-settings ended with {panel.returncode}")
        panel.terminate()
        if panel.wait(timeout=20) != 0:
            sys.exit(f"drevix-settings ended with {panel.returncode}")

    def middle(self, app_id):
        rectangle = self.window(app_id)["rect"]
        return rectangle["x"] + rectangle["width"] // 2, rectangle["y"] + rectangle["height"] // 2

    def go_to_other(self):
        self.hands.click(*self.middle("other"))
        self.wait_for("the other window's turn", lambda: self.window("other")["focused"])


def pressed_keys(combination):
    *words, key = combination.split("+")
    code = ESCAPE if key == "Escape" else int(key) - X_KEYCODE_OFFSET
    return code, sum(MODIFIERS[word] for word in words)


def type_names(desk):
    """Names in the terminal were those of the layout that is configured, not of the compositor's."""
    desk.hands.use_layouts("pc+de")
    desk.control("assign", "ringCW", "keystroke", "z")
    if desk.stored() != (0x10, 0):
        sys.exit(f"z in the compositor's German layout was stored as {desk.stored()}")


def press_on_screen(desk, apply_key, place_of_z):
    """A keyboard on the screen numbered its only key 1, and Escape was stored. Its letter is that key of the group in force."""
    desk.hands.press(F2)
    keyboard = wayland.Hands(desk.connection, SIZE)
    keyboard.use_letter("z", ESCAPE)
    keyboard.press(ESCAPE)
    desk.hands.press(apply_key, wayland.ALT)
    desk.wait_for(f"z of a keyboard on the screen as {place_of_z:#x}", lambda: desk.stored() == (place_of_z, 0), 5)


def press_all(desk, layout, group, field_key, apply_key, place_of_z):
    desk.hands.use_layouts(layout)
    desk.hands.use_group(group)
    panel = desk.start_panel(field_key)

    def press(rows):
        for combination, key_code, modifiers, _name in rows:
            desk.hands.press(F2)
            if combination in OF_COMPOSITOR:
                time.sleep(0.1)  # it leaves them to the field when it was asked, which no hand is quicker than
            desk.hands.press(*pressed_keys(combination))
            desk.hands.press(apply_key, wayland.ALT)
            desk.wait_for(f"{combination} in {layout} as {key_code:#x} with {modifiers:#x}",
                          lambda: desk.stored() == (key_code, modifiers), 5)

    press(EVERYWHERE)
    desk.hands.press_caps_lock()
    press(WITH_CAPS_LOCK)
    desk.hands.press_caps_lock()
    press_on_screen(desk, apply_key, place_of_z)
    desk.end(panel)
    if (desk.run_folder / "bound").exists():
        sys.exit("the compositor took a combination that the field waited for")
    return len(EVERYWHERE) + len(WITH_CAPS_LOCK)


def drop_file(desk):
    """Drags a file from the other window to where the panel takes it: the picture, whose controls each take one. The panel is in
    the background then, and used to throw the file away when its turn came.
    """
    file = folder / "dropped.txt"
    file.touch()
    before = desk.slots()
    desk.other.uri = file.as_uri()
    desk.hands.point(*desk.middle("other"))
    desk.hands.button(1)
    rectangle = desk.panel_window()["rect"]
    rows = sorted(range(5, rectangle["height"], 10), key=lambda row: abs(row - rectangle["height"] * 2 // 5))
    for x, y in ((x, y) for y in rows for x in range(5, rectangle["width"], 10)):
        desk.hands.point(rectangle["x"] + x, rectangle["y"] + y)
        desk.connection.listen(0.05)
        if desk.other.target:
            break
    desk.hands.button(0)
    desk.wait_for("the end of the drop", lambda: desk.other.is_finished)
    desk.other.uri = None

    def is_stored():
        changed = [slot for key, slot in desk.slots().items() if slot != before[key]]
        return len(changed) == 1 and "dropped.txt" in json.dumps(changed)

    desk.wait_for("the dropped file's place among the settings", is_stored)


def leave_and_return(desk, panel):
    desk.hands.press(F2)
    desk.hands.press(A)
    desk.go_to_other()
    desk.wait_for("the keystroke that was given before leaving", lambda: desk.stored() == (A_STORED, 0))
    # A second start raised nothing: the leave that its launcher had for it stayed with it.
    token = desk.other.activation_token()
    second = subprocess.run([PROGRAM], env=desk.environment | {"XDG_ACTIVATION_TOKEN": token}, timeout=30)
    if second.returncode != 0 or panel.poll() is not None:
        sys.exit(f"a second start ended with {second.returncode}, the first is at {panel.poll()}")
    desk.wait_for("the panel's turn after a second start", lambda: desk.panel_window()["focused"], 5)


def main():
    desk = Desk()
    type_names(desk)
    count = sum(press_all(desk, *row) for row in [("pc+us+de:2", 1, K, Z, 0x10), ("pc+us", 0, K, Y, 0x06)])
    panel = desk.start_panel(K)
    leave_and_return(desk, panel)
    drop_file(desk)
    desk.end(panel)
    print(f"{count} combinations in two layouts arrived as they were pressed; leaving saves, a second start raises the window, a drop is taken")


started = time.monotonic()
try:
    main()
finally:
    print(f"{time.monotonic() - started:.1f} s")
    for child in reversed(children):
        if child.poll() is None:
            child.terminate()
            child.wait()
    shutil.rmtree(folder)
