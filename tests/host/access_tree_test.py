#!/usr/bin/python3
"""The panel as assistive technology sees it, on an X server without a screen and under a window manager: in every state each
control has a name. On the way a keystroke is found, saved and undone with the keyboard alone, and from the first start it takes two
clicks and the chord to have button II of an application do it.

Usage: access_tree_test.py DREVIX_SETTINGS DREVIXCTL [FOLDER FOR THE TREES]
Ends with 77 where something that it needs is missing.
"""
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

PROGRAM, CONTROL = (pathlib.Path(word).resolve() for word in sys.argv[1:3])
TREES = pathlib.Path(sys.argv[3]) if len(sys.argv) > 3 else None
LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
SECONDS = 60

try:
    import gi
    gi.require_version("Atspi", "2.0")
except (ImportError, ValueError) as problem:
    print(f"skipped: {problem}")
    sys.exit(77)
if not all(map(shutil.which, ("Xvfb", "openbox", "xdotool", "dbus-daemon", LAUNCHER))):
    print("skipped: Xvfb, openbox, xdotool and at-spi2-core are needed")
    sys.exit(77)

folder = pathlib.Path(tempfile.mkdtemp(prefix="drevix-walk-"))
children = []


def start(*words, **more):
    children.append(subprocess.Popen(words, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                     start_new_session=True, **more))
    return children[-1]


def until(what, look):
    end = time.monotonic() + SECONDS
    while True:
        found = look()
        if found:
            return found
        if time.monotonic() > end:
            dump("failed")
            sys.exit(f"not within {SECONDS} s: {what}")
        time.sleep(0.05)


def make_session():
    global environment, Atspi
    for name in ("config", "data/applications", "documents"):
        (folder / name).mkdir(parents=True)
    entry = "[Desktop Entry]\nType=Application\nName={0}\nExec=/bin/true\n"
    for name in ("Painter", "Sculptor"):
        (folder / f"data/applications/{name.lower()}.desktop").write_text(entry.format(name))
    (folder / "documents/notes.txt").write_text("notes")
    environment = {"PATH": os.environ["PATH"], "HOME": str(folder), "XDG_CONFIG_HOME": str(folder / "config"),
                   "XDG_STATE_HOME": str(folder / "state"), "XDG_RUNTIME_DIR": str(folder), "XDG_DATA_HOME": str(folder / "data"),
                   "XDG_DATA_DIRS": "/usr/share", "LC_ALL": "C.UTF-8", "QT_QPA_PLATFORM": "xcb", "ASAN_OPTIONS": "detect_leaks=0",
                   "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "DBUS_SESSION_BUS_ADDRESS": f"unix:path={folder}/bus"}
    start("dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address=unix:path={folder}/bus")
    read, write = os.pipe()
    start("Xvfb", "-displayfd", str(write), "-screen", "0", "1400x900x24", "-nolisten", "tcp", pass_fds=[write])
    os.close(write)
    with os.fdopen(read) as display:
        environment["DISPLAY"] = ":" + display.readline().strip()
    while not (folder / "bus").exists():
        time.sleep(0.05)
    start("openbox")
    start(LAUNCHER, "--launch-immediately")
    os.environ.update(environment)
    from gi.repository import Atspi as loaded  # finds its bus through the environment
    Atspi = loaded


# The accessibility tree

VALUED = ("slider", "spin button")
NAMED = ("push button", "check box", "radio button", "combo box", "slider", "text", "entry", "page tab", "list item", "tree item",
         "menu item", "dialog", "frame", "list", "toggle button", "table cell")


def application():
    desktop = Atspi.get_desktop(0)
    for i in range(desktop.get_child_count()):
        app = desktop.get_child_at_index(i)
        if app is not None and "drevix" in (app.get_name() or "").lower():
            return app
    return None


def nodes(node=None, depth=0):
    """Every node that is showing, with its depth."""
    node = node or application()
    if node is None:
        return
    try:
        states = node.get_state_set()
        if depth and not states.contains(Atspi.StateType.SHOWING):
            return
        yield depth, node
        for i in range(node.get_child_count()):
            child = node.get_child_at_index(i)
            if child is not None:
                yield from nodes(child, depth + 1)
    except gi.repository.GLib.Error:
        return  # it is gone


def value_of(node):
    role = node.get_role_name()
    if role in VALUED:
        return str(node.get_current_value())
    if "Text" in node.get_interfaces():
        return Atspi.Text.get_text(node, 0, -1)
    return ""


def states_of(node):
    states = node.get_state_set()
    names = ("FOCUSED", "SELECTED", "CHECKED", "ENABLED", "FOCUSABLE")
    return [name.lower() for name in names if states.contains(getattr(Atspi.StateType, name))]


def dump(step):
    lines, problems = [], []
    for depth, node in nodes():
        role, name, value = node.get_role_name(), node.get_name() or "", value_of(node)
        words = [f"{'  ' * depth}{role} {name!r}"]
        words += [f"value {value!r}"] if value else []
        words += [f"description {node.get_description()!r}"] if node.get_description() else []
        lines.append(" ".join([*words, *states_of(node)]))
        is_control = node.get_state_set().contains(Atspi.StateType.FOCUSABLE)
        if role in NAMED and is_control and not name:
            problems.append(lines[-1].strip())
    if TREES:
        TREES.mkdir(exist_ok=True)
        (TREES / f"{step}.txt").write_text("\n".join(lines) + "\n")
    return lines, problems


# The walk

def keys(*combinations):
    subprocess.run(["xdotool", "key", "--delay", "60", *combinations], env=environment, check=True, timeout=SECONDS)


def type_text(text):
    subprocess.run(["xdotool", "type", "--delay", "60", text], env=environment, check=True, timeout=SECONDS)


def find(name, role=None):
    for _, node in nodes():
        if node.get_name() == name and role in (None, node.get_role_name()):
            return node
    return None


def point_of(node):
    """A point where the node is what lies under the mouse: a control's rectangle spans its callout and its place in the picture."""
    box = node.get_extents(Atspi.CoordType.SCREEN)
    for x in (0.5, 0.95, 0.05):
        for y in (0.5, 0.95, 0.05):
            point = box.x + int(box.width * x), box.y + int(box.height * y)
            under = node.get_parent().get_accessible_at_point(*point, Atspi.CoordType.SCREEN)
            if under is None or under.get_name() == node.get_name():
                return point
    sys.exit(f"{node.get_name()} is nowhere under the mouse")


def click(name, role=None):
    x, y = point_of(until(f"{name} is showing", lambda: find(name, role)))
    subprocess.run(["xdotool", "mousemove", str(x), str(y), "sleep", "0.2", "click", "1"], env=environment, check=True, timeout=SECONDS)


def assigned(control, app):
    done = subprocess.run([CONTROL, "--json", "show", "--app", app], env=environment, capture_output=True, text=True, timeout=SECONDS)
    slot = json.loads(done.stdout)["devices"]["veltrana"]["assignments"][control] if done.returncode == 0 else {}
    return slot.get("keyCode"), slot.get("modifiers")


def look_at(state):
    time.sleep(0.5)  # what is being shown is shown
    lines, problems = dump(state)
    if len(lines) < 10:
        sys.exit(f"{state}: there is no tree: {lines}")
    return [f"{state}: {problem}" for problem in problems]


def walk():
    problems = []
    start(PROGRAM)
    until("the stage is showing", lambda: find("Device", "list"))
    problems += look_at("first start")
    subprocess.run("xdotool search --onlyvisible --name 'Drevix Veltrana' windowsize --sync %@ 1300 850", shell=True, env=environment,
                   check=True, timeout=SECONDS)  # with the side bar

    # The new user: two clicks and the chord, after a search for the list that does not show it.
    before = assigned("buttonII", "gimp")
    click("GNU Image Manipulation Program" if find("GNU Image Manipulation Program") else "GIMP")
    click("Button II", "list item")
    until("its name is above the action", lambda: find("Button II", "label"))
    keys("ctrl+k")
    until("the list of actions", lambda: find("Search actions"))
    problems += look_at("find")
    type_text("ctrl+shift+s")
    keys("Return", "ctrl+s")
    until("the keystroke is saved", lambda: assigned("buttonII", "gimp") not in (before, (None, None)))
    problems += look_at("assigned")

    keys("ctrl+z", "ctrl+s")
    until("the keystroke is undone", lambda: assigned("buttonII", "gimp") == before)
    keys("ctrl+shift+z", "ctrl+s")
    until("it is done again", lambda: assigned("buttonII", "gimp") != before)

    for state, combination in (("add", "ctrl+n"), ("overview", "ctrl+p"), ("earlier", "ctrl+h")):
        keys(combination)
        problems += look_at(state)
        keys("Escape")
    if problems:
        sys.exit("\n".join(problems))


try:
    make_session()
    walk()
finally:
    for child in children:
        try:
            os.killpg(child.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
    shutil.rmtree(folder, ignore_errors=True)
