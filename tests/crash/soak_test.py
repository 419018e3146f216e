#!/usr/bin/python3
"""Works both programs at random beside each other, and holds all settings against a model after each step.

Usage: soak_test.py DREVIXCTL DREVIX_SETTINGS [SECONDS]
Two drevixctl at a time change records; applications come and go; items, imports, a second settings file, factory defaults, earlier
settings; the companion rewrites its file; the panel comes, goes and is killed, and where there is an X server for tests, keys are
typed into it; its helper works beside it, with a session bus and without. DREVIX_SEED=N does the same steps again; their order in
time is the machine's. The memory and the descriptors of panel and helper must not grow.
"""
import collections
import copy
import ctypes
import json
import os
import plistlib
import random
import shutil
import signal
import subprocess
import sys
import time
import zlib

import programs

SEED = int(os.environ.get("DREVIX_SEED", random.randrange(1 << 30)))
APPS = ["", "sh", "cat", "org.kde.okular"]  # these stay; the first has the global settings, the last is the factory's
GUESTS = ["env", "tac"]  # these come and go
NUMBERS = {"ringSpeed": 255, "ringSensitivity": 255, "tunerSensitivity": 255, "ringSpeedX": 255, "ringSensitivityZ": 255}
OTHER_VALUES = {"active": [True, False], "clickEnabled": [True, False], "configName": ["One", "Größe", "x" * 31]}
CONTROLS = ["ringLeft", "ringZRest", "tunerCW", "buttonV", "buttonII", "buttonIII"]
GROUPS = {"ring": "ring", "tuner": "tuner", "buttons": "button"}  # and how the keys of each begin
CLICK = "clickEnabled"  # is the tuner's
ITEMS = ["/usr/share", "/usr/bin", "/etc", "/usr/bin/env"]
TITLES = ["Filter", "Blur", "Sharpen More", "Größe"]
# Virtual keys of the companion's file, by the button that they stand for; and its first key.
BUTTONS = {"buttonI": (1, 4), "buttonII": (3, 8)}
LETTERS = {"a": 0x00, "c": 0x08, "d": 0x02, "q": 0x0C, "s": 0x01, "w": 0x0D}  # key codes
F_KEYS = {"F12": 0x6F, "F5": 0x60, "F6": 0x61, "F7": 0x62}
CMD_SHIFT, SHIFT = 0x300, 0x200
NO_KEY = 0xFF
KEYSTROKE, MENU_ITEM, OPEN_ITEM = 32, 34, 64  # codes of actions
MOST_GROWTH = 16 << 20  # bytes of a program, over all of its life
SETTLED = 20  # seconds until a program has all it needs
SUBREAPER = 36  # of prctl: what a killed program has started becomes ours


def slot(action, key=NO_KEY, modifiers=0, delay=0, menu=0):
    return {"action": action, "modifiers": modifiers, "keyCode": key, "repeat": 0, "delay": delay, "menu": menu, "data": ""}


def menu_item(title):
    return slot(MENU_ITEM, 0, menu=zlib.crc32(title.encode()))


def flat(record):
    """A record of an export as one dictionary, each control's action in it."""
    device = dict(record["devices"]["veltrana"])
    return {key: value for key, value in record.items() if key != "devices"} | device.pop("assignments") | device


class Running:
    """A program that runs for long: what it holds is looked at after each step."""

    def __init__(self, name, pid):
        self.name, self.pid, self.started, self.first = name, pid, time.monotonic(), None

    def check(self):
        try:
            with open(f"/proc/{self.pid}/statm", encoding="ascii") as file:
                now = len(os.listdir(f"/proc/{self.pid}/fd")), int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")
        except OSError:
            return  # who may have ended is asked elsewhere
        if time.monotonic() - self.started < SETTLED or self.first is None:
            self.first = now
            return
        assert now[0] <= self.first[0] + 4, f"descriptors of the {self.name} grow from {self.first[0]} to {now[0]}"
        assert now[1] <= self.first[1] + MOST_GROWTH, f"memory of the {self.name} grows from {self.first[1]} to {now[1]}"


class World(programs.World):
    """Remembers the last commands, for the report of a failure."""

    last = collections.deque(maxlen=25)

    def must(self, *words):
        self.last.append(" ".join(words))
        return super().must(*words)


class Soak:
    def __init__(self, control, panel):
        ctypes.CDLL(None).prctl(SUBREAPER, 1, 0, 0, 0)
        self.world = World("", control, panel)
        self.chance = random.Random(SEED)
        self.panel = self.bus = self.server = self.manager = None  # processes
        self.long = {}  # by process: what runs for long
        self.done = collections.Counter()
        self.start_server()
        for app in APPS[2:-1]:
            self.world.must("add", f"/usr/bin/{app}")
        self.companion_file({})
        self.codes = {entry["name"]: entry["code"] for entry in json.loads(self.world.must("actions", "--json"))}
        self.items = {}  # where the link of that name in an item's data leads
        self.model = self.found()  # by application, all keys

    def start_server(self):
        """An X server, so that keys can be typed into the panel; without one it is drawn nowhere."""
        if not shutil.which("Xvfb") or not shutil.which("openbox") or not shutil.which("xdotool"):
            return
        reading, writing = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset"],
                                       pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as display:
            self.world.environment |= {"DISPLAY": ":" + display.readline().strip(), "QT_QPA_PLATFORM": "xcb"}
        self.manager = subprocess.Popen(["openbox", "--sm-disable"], env=self.world.environment, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)

    def of(self, app):
        return ["--app", app] if app else []

    def found(self):
        return {record["fileName"]: flat(record) for record in plistlib.loads(self.world.must("export", "--all", "-"))}

    def any_app(self):
        return self.chance.choice([*APPS, *(self.model.keys() & set(GUESTS))])

    # What is done, and what the model says to it.

    def words(self, app, only_value=False):
        """A change of one record, and how it changes the model once it is done."""
        if only_value or self.chance.random() < 0.6:
            key = self.chance.choice([*NUMBERS, *NUMBERS, *OTHER_VALUES])
            value = self.chance.randint(0, NUMBERS[key]) if key in NUMBERS else self.chance.choice(OTHER_VALUES[key])
            if app in ("", APPS[-1]) and key in ("active", "configName"):  # not these two
                key, value = "ringSpeedY", self.chance.randint(0, 255)
            return ["set", key, str(value).lower() if isinstance(value, bool) else str(value)], {key: value}
        letter, control = self.chance.choice(list(LETTERS)), self.chance.choice(CONTROLS)
        repeat = self.chance.choice([0, 0, 30]) if not control.startswith("tuner") else 0
        words, wanted = self.chance.choice([
            (f"keystroke cmd+shift+{letter}", slot(KEYSTROKE, LETTERS[letter], CMD_SHIFT, repeat)),
            ("scroll up +shift", slot(self.codes["Scroll up"], NO_KEY, SHIFT, repeat)),
            ("none", slot(0)), ("Undo", slot(self.codes["Undo"]))])
        more = ["--repeat", str(repeat)] if wanted["delay"] else []
        return ["assign", control, *words.split(), *more], {control: wanted}

    def take_others(self, app, said, wanted):
        """Controls that changed with the one that was asked for: those, and no others, may."""
        found = self.found()[app]
        for entry in json.loads(said):
            if entry["control"] not in wanted:
                assert found[entry["control"]]["action"] == entry["action"], f"{entry}: {found[entry['control']]}"
                wanted = wanted | {entry["control"]: found[entry["control"]]}
        return wanted

    def change(self):
        """Two programs at once, of the same record or of two."""
        first = self.any_app()
        second = self.any_app()
        started = []
        for app in (first, second):
            words, wanted = self.words(app, first == second)
            self.world.last.append(" ".join([*words, *self.of(app)]))
            started.append((app, words, wanted, subprocess.Popen([self.world.control, "--json", *words, *self.of(app)],
                                                                 env=self.world.environment, stdout=subprocess.PIPE,
                                                                 stderr=subprocess.PIPE)))
            if first == second and wanted.keys() & started[0][2].keys():  # which is the later is not known
                started[-1][3].wait(programs.TIMEOUT)
                started[0][3].wait(programs.TIMEOUT)
        done = [(app, words, wanted, process, *process.communicate(timeout=programs.TIMEOUT)) for app, words, wanted, process in started]
        for app, words, wanted, process, said, problem in done:
            assert process.returncode == 0 and not problem, f"{words}: {process.returncode}, {problem.decode()}"
        if first == second and done[0][2].keys() & done[1][2].keys():
            key = next(iter(done[0][2]))
            value = self.found()[first][key]
            assert value in (done[0][2][key], done[1][2][key]), f"{key}: {value}"
            self.model[first][key] = value
            return
        for app, words, wanted, process, said, problem in done:
            self.model[app].update(self.take_others(app, said, wanted) if words[0] == "assign" else wanted)

    def exchange(self):
        """What was exported comes back over what was changed since, by way of another settings file or not."""
        file, other = str(self.world.root / programs.EXPORT), str(self.world.root / "exports/other.prefs")
        app = self.any_app()
        self.world.must("export", file, *(self.of(app) if self.chance.random() < 0.5 else ["--all"]))
        if self.chance.random() < 0.5:  # what one program has written another one reads
            self.world.must("import", "--replace", file, "--prefs", other)
            self.world.must("export", file, "--prefs", other, *self.of(app))
        self.world.must("set", "ringSpeedY", str(self.chance.randint(0, 255)), *self.of(app))
        self.world.must("import", "--replace", file)

    def come_or_go(self):
        app = self.chance.choice(GUESTS)
        if app in self.model:
            self.world.must("delete", "--app", app)
            del self.model[app]
        else:
            self.world.must("add", f"/usr/bin/{app}")
            identity = {"fileName": app, "configName": app, "signature": self.model["sh"]["signature"], "active": True}
            self.model[app] = copy.deepcopy(self.model[""]) | identity

    def restore(self):
        """Back by one to three changes, and forth again."""
        before = copy.deepcopy(self.model)
        app, count = self.any_app(), self.chance.randint(1, 3)
        for i in range(count):
            key = list(NUMBERS)[i]
            value = (self.model[app][key] + self.chance.randint(1, 200)) % 250
            if value == self.model[app][key]:
                value += 1
            self.world.must("set", key, str(value), *self.of(app))
            self.model[app][key] = value
        self.check()
        after = self.model
        self.world.must("restore", str(count), *(self.of(app) if self.chance.random() < 0.5 else []))
        self.model = before
        if self.chance.random() < 0.5:
            self.check()
            self.world.must("restore", "1")
            self.model = after

    def restore_guest(self):
        """An application that was deleted comes back with all that it had."""
        guests = list(self.model.keys() & set(GUESTS))
        if guests:
            app = self.chance.choice(sorted(guests))
            self.world.must("delete", "--app", app)
            self.world.must("restore", "1", "--app", app)

    def defaults(self):
        app, group = self.any_app(), self.chance.choice(list(GROUPS))
        self.world.must("defaults", group, *self.of(app))
        found = self.found()[app]
        self.model[app].update({key: value for key, value in found.items()
                                if key.startswith(GROUPS[group]) or (group == "tuner" and key == CLICK)})
        self.world.must("set", "ringSpeedY", str(self.model[app]["ringSpeedY"]), *self.of(app))

    def item(self):
        app, path = self.any_app(), self.chance.choice(ITEMS)
        said = self.world.must("assign", "--json", "buttonP", "open", path, *self.of(app))
        name = self.found()[app]["buttonP"]["data"]
        self.items[name] = path
        self.model[app].update(self.take_others(app, said, {"buttonP": slot(OPEN_ITEM) | {"data": name}}))

    def companion_file(self, bound):
        """Its file with these entries bound; of what is bound to our buttons, the file is right."""
        entries = ""
        for title in TITLES:
            button = next((button for button, wanted in bound.items() if wanted == title), None)
            key, virtual = BUTTONS.get(button, ("", ""))
            entries += programs.HOTKEY.format(title, key, "pyralis" if button else "", virtual)
        self.world.hotkeys(f"<HotKeys TargetApp='System'>{entries}</HotKeys>")

    def companion(self):
        if self.panel is not None:  # its settings hold over what the companion writes while it is in front
            self.start_or_end_panel()
        self.save()
        bound = dict(zip(BUTTONS, self.chance.sample(TITLES, len(BUTTONS))))
        if self.chance.random() < 0.5:
            del bound[self.chance.choice(list(bound))]
        self.companion_file(bound)
        for button in ("buttonI", "buttonII", "buttonIII"):
            if button in bound:
                self.model[""][button] = menu_item(bound[button])
            elif self.model[""][button]["action"] == MENU_ITEM:
                self.model[""][button] = slot(0, 0)
        self.save()

    def save(self):
        """What is bound is in our file then, and in the history after the next save, not only in the companion's file."""
        speed = (self.model[""]["ringSpeedY"] + 1) % 250
        self.world.must("set", "ringSpeedY", str(speed))
        self.model[""]["ringSpeedY"] = speed

    def bind(self):
        title = self.chance.choice(TITLES)
        said = self.world.must("assign", "--json", "buttonI", "menu", title)
        self.model[""].update(self.take_others("", said, {"buttonI": menu_item(title)}))

    # Programs that come and go.

    def start_or_end_panel(self):
        if self.panel is None:
            self.panel = subprocess.Popen([self.world.panel], env=self.world.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                          start_new_session=True)
            self.long[self.panel.pid] = Running("panel", self.panel.pid)
        else:
            self.panel.send_signal(self.chance.choice([signal.SIGTERM, signal.SIGTERM, signal.SIGKILL]))
            self.panel.wait(programs.TIMEOUT)
            del self.long[self.panel.pid]
            self.panel = None

    def type_into_panel(self):
        """The keystroke of the control that the panel begins with, and Apply."""
        if self.server is None:
            return
        if self.panel is None:
            self.start_or_end_panel()
        name, code = self.chance.choice(list(F_KEYS.items()))
        said = self.world.must("assign", "--json", "ringCW", "keystroke", "F9")
        self.model[""].update(self.take_others("", said, {"ringCW": slot(KEYSTROKE, 0x65)}))
        self.model[""]["ringCW"] = slot(KEYSTROKE, code)
        end = time.monotonic() + programs.TIMEOUT
        while self.found()[""]["ringCW"] != self.model[""]["ringCW"]:
            assert time.monotonic() < end, f"what was typed is not saved: {self.found()['']['ringCW']}"
            windows = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "Drevix Veltrana"], env=self.world.environment,
                                     capture_output=True, check=False).stdout.decode().split()
            if windows:
                subprocess.run(["xdotool", "windowactivate", "--sync", windows[0], "sleep", "1.5", "key", "alt+k", "sleep", "0.2", "key",
                                "F2", "key", name, "sleep", "0.2", "key", "ctrl+s"], env=self.world.environment, capture_output=True, check=False, timeout=programs.TIMEOUT)
            time.sleep(0.5)

    def start_or_end_bus(self):
        if self.bus is None:
            self.bus = subprocess.Popen(["dbus-daemon", "--session", f"--address=unix:path={self.world.base}/no-bus", "--nofork"],
                                        stderr=subprocess.DEVNULL)
        else:
            self.bus.terminate()
            self.bus.wait(programs.TIMEOUT)
            self.bus = None
            (self.world.base / "no-bus").unlink(missing_ok=True)

    def helpers(self):
        """Those that panels have started, dead ones put away."""
        found = []
        with open(f"/proc/self/task/{os.getpid()}/children", encoding="ascii") as children:
            others = {process.pid for process in (self.panel, self.bus, self.server, self.manager) if process}
            ours = [int(child) for child in children.read().split() if int(child) not in others]
        for pid in ours:
            if os.waitpid(pid, os.WNOHANG)[0] == 0:
                found.append(pid)
                self.long.setdefault(pid, Running("helper", pid))
            else:
                self.long.pop(pid, None)
        return found

    def end_helpers(self, how=signal.SIGTERM):
        for pid in self.helpers():
            os.kill(pid, how)
            os.waitpid(pid, 0)
            self.long.pop(pid, None)

    def end_helper(self):
        self.end_helpers(self.chance.choice([signal.SIGTERM, signal.SIGKILL]))

    def check(self):
        found = self.found()
        apps = found.keys() ^ self.model.keys()
        assert not apps, f"too many or too few: {apps}"
        wrong = [f"{app or 'global'} {key}: {found[app].get(key)}, not {self.model[app].get(key)}"
                 for app in found for key in found[app].keys() | self.model[app].keys() if found[app].get(key) != self.model[app].get(key)]
        assert not wrong, "; ".join(wrong)
        for app, record in self.model.items():
            if record["buttonP"]["action"] == OPEN_ITEM:
                path = self.items[record["buttonP"]["data"]]
                shown = self.world.must("show", *self.of(app)).decode()
                assert f"{path}\n" in shown, f"{app}: its item {path} is lost: {shown}"
        self.world.must("check")

    def run(self, seconds):
        steps = [self.change] * 6 + [self.exchange, self.come_or_go, self.restore, self.restore_guest, self.defaults, self.item, self.item,
                                     self.companion, self.bind, self.start_or_end_panel, self.type_into_panel, self.start_or_end_bus,
                                     self.end_helper]
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            step = self.chance.choice(steps)
            self.world.last.append(f"[{step.__name__}]")
            self.done[step.__name__] += 1
            step()
            assert self.panel is None or self.panel.poll() is None, f"the panel ended by itself: {self.panel.poll()}"
            self.done["with helper"] += len(self.helpers()) > 0
            for program in self.long.values():
                program.check()
            self.check()

    def close(self):
        for process in (self.panel, self.manager, self.server):
            if process is not None:
                process.terminate()
                process.wait(programs.TIMEOUT)
        self.panel = self.manager = self.server = None
        self.end_helpers()
        if self.bus is not None:
            self.start_or_end_bus()
        self.world.close()


def main():
    soak = Soak(*sys.argv[1:3])
    try:
        soak.run(float(sys.argv[3]) if len(sys.argv) > 3 else 4)
    except AssertionError as error:
        steps = "\n".join(word for word in soak.world.last if not word.startswith(("export --all -", "check", "show")))
        sys.exit(f"{steps}\nafter {dict(soak.done)}: {error}; DREVIX_SEED={SEED}")
    finally:
        soak.close()
    print(f"{soak.done.total()} steps, {dict(soak.done)}; DREVIX_SEED={SEED}")


main()
