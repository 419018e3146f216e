#!/usr/bin/python3
"""Walks through drevix-settings as a person does who has no mouse, and as one who has nothing else: from the first start through
every command, on an X server without a screen. In each state what assistive technology is told is read, written to a file and
checked; what the steps came to is checked in the settings file.

Usage: walk_test.py DREVIX_SETTINGS DREVIXCTL [keys|mouse|start...] [--trees FILE]
Without a word all three: `start` counts the clicks from the first start to a keystroke on a button, and closes the window while the
disk is full. What is read is added to FILE.
Ends with 77 where there is no Xvfb, openbox, xdotool or bus of assistive technology.
"""
import argparse
import html
import json
import os
import pathlib
import re
import resource
import subprocess
import sys
import time
from xml.etree import ElementTree

from panel_desktop import Desktop, wait_for

NEW, COPY = "Aardvark Press", "Badger Draw"  # installed, without settings of their own, and first in their list
NEW_FILE = "aardvark"
MINE = "your settings, unsaved changes"
# The callouts at both sides of the picture, from the top down.
COLUMNS = [["Push up", "Turn left", "Push left", "Push released", "Turn released", "Button V", "Button P", "Tuner left"],
           ["Turn right", "Push right", "Push down", "Button III", "Button II", "Button I", "Tuner right"]]
EXPLAINED = {"push button", "menu item", "check box", "radio button", "page tab"}  # roles whose names the help has
OF_THE_TOOLKIT = {"Choose an Item to Open", "Export Settings", "Import Settings", "Save as PDF"}  # dialogs that it does not explain
# The page that F1 opens: in a state, and where the keyboard is in the window.
PAGE_OF_STATE = {"Select an Application": "applications", "menu of actions": "actions", "Find Action": "actions", "menu of Button II": "actions",
                 "Choose an Item to Open": "actions", "Delete Settings?": "applications", "Export Settings": "import-export",
                 "Import Settings": "import-export", "Overview": "controls", "earlier settings": "index", "about": "index"}
PAGE_OF_PLACE = [("list", "Applications", "applications"), ("radio button", "On", "applications"), ("list", "Device", "controls"),
                 ("combo box", "Action:", "actions"), ("button", "Undo", "index")]
SELF_EVIDENT = {"Cancel", NEW, COPY}
ROOT = pathlib.Path(__file__).resolve().parents[2]


class Help:
    """The help book in both languages: whether it has a word for what is seen."""

    def __init__(self):
        self.english, self.german = [self.text_of(ROOT / "resources/help" / folder) for folder in (".", "de")]
        messages = ElementTree.parse(ROOT / "pane/translations/drevix_de.ts").iter("message")
        self.in_german = {plain(message.findtext("source")): plain(message.findtext("translation") or "") for message in messages}

    @staticmethod
    def text_of(folder):
        pages = [html.unescape(re.sub("<[^>]*>", "", page.read_text())) for page in folder.glob("*.html")]
        return " ".join(" ".join(pages).split())

    def lacks(self, nodes):
        lacking = []
        for node in nodes:
            name = plain(node.labels[0] if node.labels else node.name.split(": ")[0] if node.role in EXPLAINED else "")
            if name and name not in SELF_EVIDENT and \
                    not OF_THE_TOOLKIT & {above.name for above in node.above}:
                for book, word in ((self.english, name), (self.german, self.in_german.get(name, f"{name} in German"))):
                    if word not in book:
                        lacking.append(f"the help does not explain {node.role} {word!r}")
        return lacking


def plain(title):
    return title.replace("&", "").replace("…", "").rstrip(": \u00a0")


class Panel:
    """The program with its window, what is seen of it, and hands for it."""

    def __init__(self, desktop, program, control, trees, walk):
        self.desktop, self.control, self.trees, self.walk = desktop, control, trees, walk
        self.faults, self.states, self.clicks, self.help = [], 0, 0, Help()
        self.process = desktop.start(program, restore_signals=False)  # a write beyond the limit fails, and ends nobody
        self.wait("button", "Apply")

    def nodes(self):
        return self.desktop.shown()

    def until(self, what, find):
        """The first true answer of `find` to what is shown."""
        try:
            return wait_for(f"{self.walk}: {what}", lambda: find(self.nodes()), 10)
        except SystemExit:
            print("\n".join(map(str, self.nodes())), (self.desktop.folder / "output").read_text()[-1500:], sep="\n")
            raise

    def wait(self, role, name, is_so=lambda node: True):
        return self.until(f"{role} {name!r}", lambda nodes: look(nodes, role, name, is_so))

    def gone(self, role, name):
        self.until(f"end of {role} {name!r}", lambda nodes: look(nodes, role, name) is None)

    def shows(self, control, action):
        """Waits until the picture says that a control does this."""
        self.wait("list item", control, lambda node: node.above[-1].name == "Device" and node.description.startswith(action))

    def state(self, name):
        """Reads what is shown once it holds still, writes it down and checks it."""
        before, nodes = None, self.nodes()
        while before is None or list(map(str, before)) != list(map(str, nodes)):
            time.sleep(0.1)
            before, nodes = nodes, self.nodes()
        self.states += 1
        self.trees.write(f"\n== {self.walk}: {name}\n" + "".join(f"{node}\n" for node in nodes))
        self.faults += [f"{self.walk}, {name}: {fault}" for fault in faults_of(nodes)]
        self.faults += self.help.lacks(nodes)
        if self.walk == "keys" and name in PAGE_OF_STATE:
            self.ask_help(PAGE_OF_STATE[name], name)
        return nodes

    def ask_help(self, page, what):
        """Presses F1, and waits for the page of the help."""
        before = opened(self)
        self.key("F1")
        self.expect(f"page {page} for {what}", lambda: re.search(f"/{page}.html$", opened(self)[len(before):].strip()))

    # The mouse.

    def click(self, role, name, button=1):
        self.desktop.click(place_of(self.wait(role, name)), button)
        self.clicks += 1

    def choose(self, menu, item):
        """In a pop-up menu, by the name of its label or by what it shows."""
        self.click("combo box", menu)
        self.click("list item", item)

    def scroll_to(self, role, name, over):
        """Turns the wheel over a list until it shows an item."""
        def is_there(nodes):
            item, frame = look(nodes, role, name), look(nodes, "list", over)
            if item and frame and frame.box[1] <= item.box[1] and item.box[1] + item.box[3] <= frame.box[1] + frame.box[3]:
                return True
            if frame:
                self.desktop.click(place_of(frame), 5)
            return False
        self.until(f"{name!r} in sight", is_there)

    # The keyboard.

    def key(self, *keys):
        self.desktop.key(*keys)

    def reach(self, key, role, name):
        """Presses a key until something has the keyboard."""
        for _ in range(40):
            if look(self.nodes(), role, name, has_keyboard):
                return
            self.key(key)
        sys.exit(f"{self.walk}: {key} does not lead to {role} {name!r}")

    def go_to(self, control):
        """To a control in the picture, and chooses it there."""
        self.reach("F6", "list", "Device")
        to = next((column, column.index(control)) for column in COLUMNS if control in column)
        for _ in range(20):
            at = next(node.name for node in self.nodes() if node.role == "list item" and node.above[-1].name == "Device"
                      and "focused" in node.states)
            if at == control:
                self.key("Return")
                return
            side = next(column for column in COLUMNS if at in column)
            if side is not to[0]:
                self.key("Right" if to[0] is COLUMNS[1] else "Left")
            else:
                self.key("Down" if side.index(at) < to[1] else "Up")
        sys.exit(f"{self.walk}: the arrow keys do not lead to {control}")

    def more(self, item):
        """An item of the side bar's menu."""
        self.reach("F6", "list", "Applications")
        self.reach("Tab", "button", "More")
        self.key("space", "Down")
        self.reach("Down", "menu item", item)
        self.key("Return")

    def answer(self, dialog, text):
        """Types into the field of a dialog that has just opened, and agrees."""
        self.wait("dialog", dialog)
        self.wait("text", None, has_keyboard)
        self.state(dialog)
        self.desktop.type(text)
        self.key("Return")
        self.gone("dialog", dialog)

    # What came of it.

    def does(self, control, application=NEW_FILE):
        lines = self.desktop.run(self.control, "show", "--app", application).splitlines()
        return " ".join(next(line for line in lines if line.startswith(f"{control} ")).split()[1:])

    def stored(self, application=NEW_FILE):
        return json.loads(self.desktop.run(self.control, "--json", "show", "--app", application))["devices"]["veltrana"]

    def applications(self):
        return [record["name"] for record in json.loads(self.desktop.run(self.control, "--json", "list"))]

    def expect(self, what, is_so):
        wait_for(f"{self.walk}: {what}", is_so, 10)


def look(nodes, role, name, is_so=lambda node: True):
    """The last such node: what opened last stands there. A label's name will do for what it labels."""
    return next((node for node in reversed(nodes) if role in node.role and (name is None or name in [node.name, *node.labels])
                 and is_so(node)), None)


def place_of(node):
    """Where to click. A control of the device reaches from its callout, which is at its outer end, to its place in the picture."""
    left, top, width, height = node.box
    if node.role != "list item" or node.above[-1].name != "Device":
        return left + width // 2, top + height // 2
    x = left + 20 if node.name in COLUMNS[0] else left + width - 20
    return next((x, y) for y in range(top + 2, top + height, 3) if node.above[-1].name_at(x, y) == node.name)


def has_keyboard(node):
    return "focused" in node.states and (node.role != "list item" or "focused" in node.above[-1].states)


def faults_of(nodes):
    """What assistive technology is told wrongly, or not."""
    faults = []
    modal = look(nodes, "dialog", None, lambda node: "active" in node.states)
    for node in nodes:
        at = f"{node.role} {node.name!r} at {node.box}"
        if "<" in node.description + node.name:
            faults.append(f"{at}: markup in {node.description!r}")
        if "focusable" not in node.states or (modal and modal not in [node, *node.above]):
            continue
        if not node.name and not node.labels and node.role != "table cell":  # one may be empty
            faults.append(f"{at}: no name")
        if node.role == "slider" and node.value is None:
            faults.append(f"{at}: no value")
        if node.role == "combo box" and not node.labels and not node.description:
            faults.append(f"{at}: says what is chosen and not what of")
        if node.role == "list item" and node.above[-1].name == "Device" and not node.description:
            faults.append(f"{at}: does not say what the control does")
    if look(nodes, "list", "Device") and sum(node.above[-1:] != [] and node.above[-1].name == "Device" and node.role == "list item" for node in nodes) != 15:
        faults.append("not all fifteen controls")
    return faults


# The steps by both hands.

def add_by_keys(panel):
    panel.key("ctrl+n")
    panel.answer("Select an Application", "aardvark")


def add_by_mouse(panel):
    panel.click("button", "Add…")
    panel.state("Select an Application")
    panel.click("list item", NEW)
    panel.click("button", "Add")


def assign_by_keys(panel):
    panel.go_to("Button II")
    panel.key("alt+a", "k")
    panel.state("menu of actions")
    panel.key("Return", "alt+k", "Return")
    panel.wait("text", "Keys", lambda node: node.text == "Press the keys now")
    panel.state("field that waits for keys")
    panel.key("ctrl+shift+s")
    panel.shows("Button II", "Ctrl+Shift+S")


def assign_by_mouse(panel):
    panel.click("list item", "Button II")
    panel.choose("Action:", "Keystroke")
    panel.choose("Other key", "F6")
    for box in ("Ctrl", "Shift"):
        panel.click("check box", box)
    panel.shows("Button II", "Ctrl+Shift+F6")


def find_by_keys(panel):
    panel.go_to("Button III")
    panel.key("ctrl+k")
    panel.wait("text", "Search actions")
    panel.desktop.type("volume up")
    panel.wait("list item", "Volume up", lambda node: "selected" in node.states)
    panel.state("Find Action")
    panel.key("Return")


def find_by_mouse(panel):
    panel.click("list item", "Button III")
    panel.click("button", "Find Action…")
    panel.wait("dialog", "Find Action")
    panel.scroll_to("list item", "Volume up", "Actions")
    panel.state("Find Action")
    panel.click("list item", "Volume up")


def open_by_keys(panel):
    panel.go_to("Button I")
    panel.key("alt+a", "o", "Return", "alt+h")
    panel.answer("Choose an Item to Open", str(panel.desktop.folder / "Notes.txt"))


def other_window(panel):
    """Another program, and its window, from which a file can be dragged."""
    source = panel.desktop.start(sys.executable, "-B", str(pathlib.Path(__file__).with_name("drag_source.py")),
                                 str(panel.desktop.folder / "Notes.txt"))
    return source, panel.desktop.run("xdotool", "search", "--sync", "--onlyvisible", "--name", "^Drag source$").split()[0]


def open_by_mouse(panel):
    source, window = other_window(panel)
    panel.desktop.run("xdotool", "windowmove", "--sync", window, "10", "30")
    panel.desktop.drag((70, 90), place_of(panel.wait("list item", "Button I")))
    panel.shows("Button I", "Open")
    panel.desktop.end(source)


def slide_by_keys(panel):
    panel.key("alt+i", "alt+e", *["Right"] * 3)
    panel.wait("slider", "Ring sensitivity", lambda node: node.value == 103)
    panel.key("alt+t")
    panel.state("page of the tuner")
    panel.key("alt+l")
    panel.wait("check box", "Click sound", lambda node: "checked" not in node.states)


def slide_by_mouse(panel):
    panel.click("page tab", "Ring")
    box = panel.wait("slider", "Ring sensitivity").box
    panel.desktop.click((box[0] + box[2] - 3, box[1] + box[3] // 2))
    panel.wait("slider", "Ring sensitivity", lambda node: node.value == 110)
    panel.click("page tab", "Tuner")
    panel.click("check box", "Click sound")
    panel.wait("check box", "Click sound", lambda node: "checked" not in node.states)


def undo(panel, take_back, take_again):
    take_back()
    panel.wait("check box", "Click sound", lambda node: "checked" in node.states)
    take_back()
    panel.wait("slider", "Ring sensitivity", lambda node: node.value == 100)
    panel.state("undone")
    take_again()
    panel.wait("slider", "Ring sensitivity", lambda node: node.value > 100)
    take_again()
    panel.wait("check box", "Click sound", lambda node: "checked" not in node.states)


def menu_by_keys(panel, control, letter):
    panel.go_to(control)
    panel.key("Menu")
    panel.wait("popup menu", None)
    panel.state(f"menu of {control}")
    panel.key(letter)


def menu_by_mouse(panel, control, item):
    panel.click("list item", control, 3)
    panel.state(f"menu of {control}")
    panel.click("menu item", item)


def duplicate_by_keys(panel):
    menu_by_keys(panel, "Button II", "d")
    panel.answer("Select an Application", "badger")


def duplicate_by_mouse(panel):
    menu_by_mouse(panel, "Button II", "Duplicate for Another Application…")
    panel.click("list item", COPY)
    panel.click("button", "Add")


def go_back_by_keys(panel):
    panel.key("ctrl+f")
    panel.desktop.type("aardv")
    panel.gone("list item", "GIMP")
    panel.state("search")
    panel.key("Return", "Return", "ctrl+f", "Escape")


def revert_by_keys(panel):
    menu_by_keys(panel, "Button P", "n")
    panel.shows("Button P", "No action")
    panel.key("alt+r")


def revert_by_mouse(panel):
    menu_by_mouse(panel, "Button P", "No Action")
    panel.shows("Button P", "No action")
    panel.click("button", "Revert")


def delete_by_keys(panel):
    panel.reach("F6", "list", "Applications")
    panel.key("Delete")
    panel.wait("dialog", "Delete Settings?")
    panel.state("Delete Settings?")
    panel.key("alt+d")


def delete_by_mouse(panel):
    panel.click("button", "Delete these settings")
    panel.state("Delete Settings?")
    panel.click("button", "Delete")


def export_by_mouse(panel):
    panel.click("button", "More")
    panel.click("menu item", "Export…")
    panel.wait("dialog", "Export Settings")
    panel.state("Export Settings")
    panel.click("button", "Save")


def export_by_keys(panel):
    panel.more("Export…")
    panel.answer("Export Settings", str(panel.desktop.folder / "Veltrana Config.veltrana"))


def import_by_keys(panel):
    panel.more("Import…")
    panel.answer("Import Settings", str(panel.desktop.folder / "Veltrana Config.veltrana"))


def import_by_mouse(panel):
    panel.click("button", "More")
    panel.click("menu item", "Import…")
    panel.wait("dialog", "Import Settings")
    panel.state("Import Settings")
    panel.click("table cell", "Veltrana Config.veltrana")
    panel.click("button", "Open")


def help_by_keys(panel):
    for role, name, page in PAGE_OF_PLACE:
        panel.reach("F6", role, name)
        panel.ask_help(page, name)


def overview_by_keys(panel):
    panel.key("ctrl+p")
    panel.wait("dialog", "Overview")
    panel.state("Overview")
    panel.key("alt+a", "alt+p")
    panel.expect("sheets to print", lambda: ".pdf" in opened(panel))
    panel.key("alt+s")
    panel.answer("Save as PDF", str(panel.desktop.folder / "Veltrana.pdf"))
    panel.key("Escape")


def overview_by_mouse(panel):
    panel.click("button", "Overview…")
    panel.click("radio button", "All applications")
    panel.state("Overview")
    panel.click("button", "Print…")
    panel.expect("sheets to print", lambda: ".pdf" in opened(panel))
    panel.click("button", "Save as PDF…")
    panel.wait("dialog", "Save as PDF")
    panel.state("Save as PDF")
    panel.click("button", "Save")
    panel.gone("dialog", "Save as PDF")
    panel.click("button", "Close")


def opened(panel):
    file = panel.desktop.folder / "opened"
    return file.read_text() if file.exists() else ""


def is_whole_pdf(panel):
    file = panel.desktop.folder / "Veltrana.pdf"
    return file.exists() and file.read_bytes().startswith(b"%PDF") and file.read_bytes().rstrip().endswith(b"%%EOF")


# The name of a step; how it is done with the keyboard alone and with the mouse alone; and a wait for what it comes to.
STEPS = [
    ("first start", lambda p: (p.reach("F6", "button", "Open Help"), p.reach("Tab", "button", "Got It"), p.key("space")),
     lambda p: p.click("button", "Got It"), lambda p: p.gone("notification", "Welcome to your Veltrana")),
    ("add", add_by_keys, add_by_mouse, lambda p: p.wait("list item", NEW, lambda node: node.description == MINE)),
    ("assign", assign_by_keys, assign_by_mouse, lambda p: p.shows("Button II", "Ctrl+Shift+")),
    ("find", find_by_keys, find_by_mouse, lambda p: p.shows("Button III", "Volume up")),
    ("open a file", open_by_keys, open_by_mouse, lambda p: p.shows("Button I", "Open Notes.txt")),
    ("sliders", slide_by_keys, slide_by_mouse, lambda p: None),
    ("undo and redo", lambda p: undo(p, lambda: p.key("ctrl+z"), lambda: p.key("ctrl+shift+z")),
     lambda p: undo(p, lambda: p.click("button", "Undo"), lambda: p.click("button", "Redo")), lambda p: None),
    ("copy and paste", lambda p: (menu_by_keys(p, "Button II", "c"), menu_by_keys(p, "Push up", "p")),
     lambda p: (menu_by_mouse(p, "Button II", "Copy Action"), menu_by_mouse(p, "Push up", "Paste Action")),
     lambda p: p.shows("Push up", "Ctrl+Shift+")),
    ("apply", lambda p: p.key("alt+y"), lambda p: p.click("button", "Apply"),
     lambda p: (p.wait("status bar", "All changes saved"), check_applied(p))),
    ("duplicate", duplicate_by_keys, duplicate_by_mouse, lambda p: (p.wait("label", COPY), p.shows("Button III", "Volume up"))),
    ("go back", go_back_by_keys, lambda p: p.click("list item", NEW), lambda p: (p.wait("label", NEW), p.wait("list item", "GIMP"))),
    ("save now", lambda p: p.key("alt+s"), lambda p: p.click("button", "Save Now"),
     lambda p: p.expect("both applications in the file", lambda: {NEW, COPY} <= set(p.applications()))),
    ("revert", revert_by_keys, revert_by_mouse, lambda p: p.shows("Button P", "Show desktop")),
    ("export", export_by_keys, export_by_mouse,
     lambda p: p.expect("an exported file", (p.desktop.folder / "Veltrana Config.veltrana").exists)),
    ("delete", delete_by_keys, delete_by_mouse, lambda p: p.gone("list item", NEW)),
    ("import", import_by_keys, import_by_mouse, lambda p: p.wait("list item", NEW)),
    ("overview", overview_by_keys, overview_by_mouse, lambda p: (p.gone("dialog", "Overview"), p.expect("a whole PDF", lambda: is_whole_pdf(p)))),
    ("earlier settings", lambda p: p.key("ctrl+h"), lambda p: (p.click("button", "More"), p.click("menu item", "Earlier Settings…")),
     lambda p: p.wait("dialog", "Earlier Settings")),
    ("end of earlier settings", lambda p: p.key("Escape"), lambda p: p.click("button", "Cancel"), lambda p: p.gone("dialog", "Earlier Settings")),
    ("about", lambda p: p.more("About Veltrana…"), lambda p: p.click("button", "About Veltrana"), lambda p: p.wait("dialog", "About Veltrana")),
    ("end of about", lambda p: p.key("Escape"), lambda p: p.click("button", "Close"), lambda p: p.gone("dialog", "About Veltrana")),
    ("help", help_by_keys, lambda p: p.click("button", "Help"), lambda p: p.expect("a page of the help", lambda: ".html" in opened(p))),
]


def check_applied(panel):
    keys, sensitivity = ("s", 103) if panel.walk == "keys" else ("F6", 110)
    panel.expect("the settings in the file", lambda: panel.does("buttonII") == f"Keystroke shift+ctrl+{keys}")
    for what, real, wanted in [
            ("copied", panel.does("ringUp"), f"Keystroke shift+ctrl+{keys}"), ("found", panel.does("buttonIII"), "Volume up"),
            ("item", panel.does("buttonI"), f"Open file or application {panel.desktop.folder}/Notes.txt"),
            ("sensitivity", panel.stored()["ringSensitivity"], sensitivity), ("click", panel.stored()["clickEnabled"], False)]:
        if real != wanted:
            sys.exit(f"{panel.walk}: {what} is {real!r}, not {wanted!r}")


def walk(panel, hand):
    for name, by_keys, by_mouse, check in STEPS:
        (by_keys if hand == "keys" else by_mouse)(panel)
        check(panel)
        panel.state(name)


def count_clicks(panel):
    """As a new user does who wants button II to do Ctrl+Shift+S in GIMP."""
    panel.state("first start")
    panel.click("list item", "GIMP")
    panel.click("list item", "Button II")
    panel.click("text", "Keys")
    panel.wait("text", "Keys", lambda node: node.text == "Press the keys now")
    panel.key("ctrl+shift+s")
    panel.shows("Button II", "Ctrl+Shift+S")
    panel.state("a keystroke on a button")
    panel.desktop.run("xdotool", "windowactivate", "--sync", other_window(panel)[1])  # going there saves
    panel.expect("the keystroke in the file", lambda: panel.does("buttonII", "gimp") == "Keystroke shift+ctrl+s")
    if panel.clicks > 3:
        sys.exit(f"{panel.clicks} clicks from the first start to a keystroke")


def close_without_room(panel):
    """Asks before it goes with a change that the disk does not take, and saves it when told to end after that."""
    window = panel.desktop.run("xdotool", "search", "--name", "^Drevix Veltrana").split()[0]
    panel.desktop.run("xdotool", "windowactivate", "--sync", window)
    panel.click("text", "Keys")
    panel.wait("text", "Keys", lambda node: node.text == "Press the keys now")
    panel.key("ctrl+shift+d")
    panel.shows("Button II", "Ctrl+Shift+D")
    limits = resource.prlimit(panel.process.pid, resource.RLIMIT_FSIZE)
    resource.prlimit(panel.process.pid, resource.RLIMIT_FSIZE, (0, limits[1]))
    panel.key("alt+F4")
    panel.wait("button", "Cancel")
    panel.state("a question before closing")
    panel.key("Escape")
    panel.gone("button", "Cancel")
    resource.prlimit(panel.process.pid, resource.RLIMIT_FSIZE, limits)


def run(name, arguments, trees):
    with Desktop() as desktop:
        desktop.add_program("aardvark", NEW, "exit 0")
        desktop.add_program("badger", COPY, "exit 0")
        desktop.add_program("gimp", "GIMP", "exit 0")
        desktop.add_program("xdg-open", "Opener", 'echo "$@" >> "$HOME/opened"', NoDisplay="true")
        (desktop.folder / "Notes.txt").write_text("notes\n")
        panel = Panel(desktop, arguments.program, arguments.control, trees, name)
        if name == "start":
            count_clicks(panel)
            close_without_room(panel)
        else:
            walk(panel, name)
        panel.process.terminate()
        if (status := panel.process.wait(timeout=20)) != 0:
            sys.exit(f"{name}: drevix-settings ended with {status}")
        if name == "start" and panel.does("buttonII", "gimp") != "Keystroke shift+ctrl+d":
            sys.exit(f"the last change was lost: {panel.does('buttonII', 'gimp')}")
        print(f"{name}: {panel.states} states, {panel.clicks} clicks")
        return panel.faults


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("control")
    parser.add_argument("walks", nargs="*", default=["keys", "mouse", "start"])
    parser.add_argument("--trees", default=os.devnull)
    arguments = parser.parse_args()
    if len(arguments.walks) > 1:  # each in a process of its own, as the bus of assistive technology is joined once
        words = [sys.executable, "-B", __file__, arguments.program, arguments.control, "--trees", arguments.trees]
        sys.exit(max([subprocess.run([*words, walk]).returncode for walk in arguments.walks]))
    with open(arguments.trees, "a", encoding="utf-8") as trees:
        if faults := run(arguments.walks[0], arguments, trees):
            sys.exit("\n".join(dict.fromkeys(faults)))


main()
