"""A desktop without a screen over a home folder that is new, for tests that use drevix-settings as a person does: an X server, a
window manager, a session bus, and the bus of assistive technology, by which its windows are read."""
import dataclasses
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
if not all(shutil.which(program) for program in ("Xvfb", "openbox", "xdotool", "dbus-daemon")):
    print("skipped: Xvfb, openbox, xdotool and dbus-daemon are needed")
    sys.exit(SKIPPED)
try:
    import gi
    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi, GLib
except (ImportError, ValueError):
    print("skipped: the packages python3-gi and gir1.2-atspi-2.0 are needed")
    sys.exit(SKIPPED)

STATES = {getattr(Atspi.StateType, name.upper()): name for name in (
    "focusable", "focused", "enabled", "checked", "selected", "pressed", "modal", "editable", "active", "expanded")}


def wait_for(what, look, seconds=20):
    deadline = time.monotonic() + seconds
    while not (found := look()):
        if time.monotonic() > deadline:
            sys.exit(f"{what} did not come about")
        time.sleep(0.03)
    return found


@dataclasses.dataclass
class Node:
    """What assistive technology is told of one thing that is shown."""
    role: str
    name: str
    description: str
    labels: list  # the names of those that label it
    value: object  # a number, or None
    text: object  # of a field, or None
    states: set
    box: tuple  # left, top, width, height on the screen
    depth: int
    above: list  # the nodes that it lies in, the window first
    thing: object  # as the bus has it

    def name_at(self, x, y):
        """Of what lies in it at a point of the screen."""
        hit = Atspi.Component.get_accessible_at_point(self.thing, x, y, Atspi.CoordType.SCREEN)
        return hit.get_name() if hit else ""

    def __str__(self):
        parts = ["  " * self.depth + self.role, repr(self.name)]
        parts += [f"labelled {label!r}" for label in self.labels]
        parts += [f"value {self.value:g}"] if self.value is not None else []
        parts += [f"text {self.text!r}"] if self.text is not None else []
        parts += [f"description {self.description!r}"] if self.description else []
        return " ".join(parts + ["({}, {} {}x{})".format(*self.box), ",".join(sorted(self.states))])


def read_node(thing, depth, above):
    states = thing.get_state_set()
    role = thing.get_role_name()
    box = thing.get_extents(Atspi.CoordType.SCREEN)
    labels = [relation.get_target(i).get_name() for relation in thing.get_relation_set()
              if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY for i in range(relation.get_n_targets())]
    value = Atspi.Value.get_current_value(thing) if role in ("slider", "scroll bar", "spin button") else None
    text = Atspi.Text.get_text(thing, 0, -1) if role in ("text", "password text", "entry") else None
    return Node(role, thing.get_name(), thing.get_description() or "", labels, value, text,
                {name for state, name in STATES.items() if states.contains(state)},
                (box.x, box.y, box.width, box.height), depth, above, thing)


def read_shown(thing, depth, above, nodes):
    """Adds what is shown of a part of a window, from the top down."""
    if not thing.get_state_set().contains(Atspi.StateType.SHOWING):
        return
    node = read_node(thing, depth, above)
    nodes.append(node)
    if node.role != "combo box" or "expanded" in node.states: # else nothing of its list is seen
        for i in range(thing.get_child_count()):
            if (child := thing.get_child_at_index(i)) is not None:
                read_shown(child, depth + 1, above + [node], nodes)


class Desktop:
    """What it starts ends with it, and its folder goes."""

    def __init__(self, **more):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="drevix-walk-"))
        self.children = []
        self.environment = {"PATH": f"{self.folder}/bin:{os.environ['PATH']}", "HOME": str(self.folder), "LC_ALL": "C.UTF-8"}
        for name in ("CONFIG", "STATE", "DATA", "CACHE"):
            self.environment[f"XDG_{name}_HOME"] = str(self.folder / name.lower())
            (self.folder / name.lower()).mkdir()
        self.environment |= {"XDG_RUNTIME_DIR": str(self.folder), "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.folder}/bus"}
        self.environment |= {"QT_QPA_PLATFORM": "xcb", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "ASAN_OPTIONS": "detect_leaks=0"}
        self.environment |= more

    def __enter__(self):
        reading, writing = os.pipe()
        self.start("Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset",
                   pass_fds=[writing])
        os.close(writing)
        self.environment["DISPLAY"] = ":" + os.fdopen(reading).readline().strip()
        self.start("dbus-daemon", "--session", "--nofork", "--nopidfile",
                   f"--address={self.environment['DBUS_SESSION_BUS_ADDRESS']}")
        self.start("openbox", "--sm-disable")
        wait_for("a session bus", (self.folder / "bus").exists)
        os.environ |= self.environment
        Atspi.init()
        self.popups = []
        self.listener = Atspi.EventListener.new(self.hear)
        for event in ("object:state-changed:focused", "object:state-changed:showing", "object:selection-changed"):
            self.listener.register(event)
        return self

    def hear(self, event):
        """Menus and other pop-ups are no program's children; they are found from what happens in them."""
        try:
            top = event.source
            while (parent := top.get_parent()) is not None and parent.get_role() not in (Atspi.Role.APPLICATION, Atspi.Role.INVALID):
                top = parent
            self.popups = [top] + [popup for popup in self.popups if popup != top][:4]
        except GLib.Error:
            pass  # it is gone already

    def __exit__(self, *_):
        for child in reversed(self.children):
            self.end(child)
        shutil.rmtree(self.folder, ignore_errors=True)

    def start(self, *words, **more):
        with open(self.folder / "output", "ab") as file:
            self.children.append(subprocess.Popen(words, env=self.environment, stdout=file, stderr=subprocess.STDOUT, **more))
        return self.children[-1]

    def end(self, child):
        if child.poll() is None:
            child.terminate()
            try:
                child.wait(timeout=10)
            except subprocess.TimeoutExpired:
                child.kill()
                child.wait()

    def run(self, *words):
        return subprocess.run(words, env=self.environment, capture_output=True, text=True, check=True, timeout=30).stdout

    def add_program(self, name, title, script, **keys):
        """An installed application: a desktop entry and a script as its program."""
        program = self.folder / "bin" / name
        program.parent.mkdir(exist_ok=True)
        program.write_text(f"#!/bin/sh\n{script}\n")
        program.chmod(0o755)
        entries = self.folder / "data/applications"
        entries.mkdir(exist_ok=True)
        lines = ["[Desktop Entry]", "Type=Application", f"Name={title}", f"Exec={program} %f"]
        (entries / f"{name}.desktop").write_text("\n".join(lines + [f"{key}={value}" for key, value in keys.items()]) + "\n")

    def shown(self, program="drevix-settings"):
        """All that a program's windows show, from the top down; nothing while it has no window."""
        desktop = Atspi.get_desktop(0)
        desktop.clear_cache()
        nodes, windows = [], []
        while GLib.MainContext.default().iteration(False):
            pass
        for i in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(i)
            if application is not None and application.get_name() == program:
                application.clear_cache()
                for j in range(application.get_child_count()):
                    if (window := application.get_child_at_index(j)) is not None:
                        windows.append(window)
        for window in windows + [popup for popup in self.popups if popup not in windows]:
            read_shown(window, 0, [], nodes)
        return nodes

    def key(self, *keys):
        for key in keys:
            self.run("xdotool", "key", key, "sleep", "0.06")

    def type(self, text):
        self.run("xdotool", "type", "--delay", "8", text)

    def click(self, point, button=1):
        self.run("xdotool", "mousemove", *map(str, point), "sleep", "0.05", "click", str(button), "sleep", "0.06")

    def drag(self, start, end):
        """Slowly, as a program takes up a drag only after some way."""
        steps = [(start[0] + (end[0] - start[0]) * i // 12, start[1] + (end[1] - start[1]) * i // 12) for i in range(13)]
        words = ["mousemove", *map(str, start), "mousedown", "1"]
        for point in steps[1:] + [end]:
            words += ["mousemove", *map(str, point), "sleep", "0.05"]
        self.run("xdotool", *words, "sleep", "0.2", "mouseup", "1", "sleep", "0.2")
