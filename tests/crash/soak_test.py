#!/usr/bin/python3
"""Works both programs at random beside each other, and holds the settings against a model after each step.

Usage: soak_test.py DREVIXCTL DREVIX_SETTINGS [SECONDS]
Two drevixctl at a time change records, import, export and undo by import, the companion rewrites its file, and the panel with its
helper comes, goes and is killed, with a session bus and without. DREVIX_SEED=N does the same steps again; their order in time is
the machine's. The panel's memory and descriptors must not grow.
"""
import collections
import json
import os
import random
import signal
import subprocess
import sys
import time

import programs

SEED = int(os.environ.get("DREVIX_SEED", random.randrange(1 << 30)))
APPS = ["", "sh", "env", "cat"]
KEYS = {"ringSpeed": 100, "ringSensitivity": 255, "tunerSensitivity": 255, "ringSpeedX": 100}  # and the greatest value
ACTIONS = ["undo", "copy", "keystroke cmd+shift+{}", "scroll left", "none"]
CONTROLS = ["ringLeft", "tunerCW", "buttonII", "buttonIV"]
MOST_GROWTH = 16 << 20  # bytes of the panel, over all of its life


class Soak:
    def __init__(self, control, panel):
        self.world = programs.World("", control, panel)
        self.chance = random.Random(SEED)
        self.model = {}  # by application: by what "show" says: the value
        self.panel = self.bus = None
        self.first = None  # descriptors and memory of this panel
        self.done = collections.Counter()
        for app in APPS[2:]:
            self.world.must("add", f"/usr/bin/{app}")
        self.world.hotkeys(programs.FIRST_HOTKEYS)

    def of(self, app):
        return ["--app", app] if app else []

    def shown(self, app):
        return json.loads(self.world.must("show", "--json", *self.of(app)))["devices"]["veltrana"]

    def change(self):
        """Two programs at once, each with a record of its own."""
        started = []
        for app in self.chance.sample(APPS, 2):
            if self.chance.random() < 0.6:
                key = self.chance.choice(list(KEYS))
                value = self.chance.randint(1, KEYS[key])
                words = ["set", key, str(value)]
            else:
                control = self.chance.choice(CONTROLS)
                words = ["assign", control, *self.chance.choice(ACTIONS).format(self.chance.choice("abcxyz")).split()]
            words += self.of(app)
            started.append((app, words, subprocess.Popen([self.world.control, "--json", *words], env=self.world.environment,
                                                         stdout=subprocess.PIPE, stderr=subprocess.PIPE)))
        for app, words, process in started:
            said, problem = process.communicate(timeout=programs.TIMEOUT)
            assert process.returncode == 0, f"{words}: {process.returncode}, {problem.decode()}"
            if words[0] == "set":
                self.model[app][words[1]] = int(words[2])
            else:
                self.model[app][words[1]] = next(entry for entry in json.loads(said) if entry["control"] == words[1])

    def exchange(self):
        """What was exported comes back over what was changed since."""
        file = str(self.world.root / programs.EXPORT)
        app = self.chance.choice(APPS)
        self.world.must("export", file, *self.of(app))
        self.world.must("set", "ringSpeedY", str(self.chance.randint(1, 100)), *self.of(app))
        before = self.shown(app)
        self.world.must("import", "--replace", file)
        assert self.shown(app) != before or before == self.shown(app)

    def companion(self):
        self.world.hotkeys(programs.FIRST_HOTKEYS.replace("Filter", self.chance.choice(["Filter", "Blur", "Sharpen"])))

    def open_item(self):
        self.world.must("assign", "buttonP", "open", self.chance.choice(["/usr/share", "/usr/bin", "/etc"]))

    def start_or_end_panel(self):
        if self.panel is None:
            self.panel = subprocess.Popen([self.world.panel], env=self.world.environment, stderr=subprocess.DEVNULL, start_new_session=True)
            self.first = None
        else:
            self.panel.send_signal(self.chance.choice([signal.SIGTERM, signal.SIGTERM, signal.SIGKILL]))
            self.panel.wait(programs.TIMEOUT)
            self.panel = None

    def start_or_end_bus(self):
        if self.bus is None:
            self.bus = subprocess.Popen(["dbus-daemon", "--session", f"--address=unix:path={self.world.base}/no-bus", "--nofork"],
                                        stderr=subprocess.DEVNULL)
        else:
            self.bus.terminate()
            self.bus.wait(programs.TIMEOUT)
            self.bus = None
            (self.world.base / "no-bus").unlink(missing_ok=True)

    def check_panel(self):
        if self.panel is None:
            return
        assert self.panel.poll() is None, f"the panel ended by itself: {self.panel.poll()}"
        try:
            with open(f"/proc/{self.panel.pid}/statm", encoding="ascii") as file:
                now = len(os.listdir(f"/proc/{self.panel.pid}/fd")), int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")
        except OSError:
            return
        if self.first is None:
            self.first = (time.monotonic(), now) if self.first is None else self.first
        started, first = self.first
        if time.monotonic() - started < 20:  # it is still being drawn
            self.first = (started, now)
            return
        assert now[0] <= first[0] + 4, f"descriptors of the panel grow from {first[0]} to {now[0]}"
        assert now[1] <= first[1] + MOST_GROWTH, f"memory of the panel grows from {first[1]} to {now[1]}"

    def check(self):
        for app, wanted in self.model.items():
            found = self.shown(app)
            for key, value in wanted.items():
                real = found[key] if key in found else found["assignments"][key]
                if isinstance(value, dict):
                    value = {name: value[name] for name in value.keys() & real.keys()}
                    real = {name: real[name] for name in value}
                assert real == value, f"{app or 'global'} {key}: {real}, not {value}"
        self.world.must("check")

    def run(self, seconds):
        self.model = {app: {} for app in APPS}
        steps = [self.change] * 6 + [self.exchange, self.companion, self.open_item, self.start_or_end_panel, self.start_or_end_bus]
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            step = self.chance.choice(steps)
            step()
            self.done[step.__name__] += 1
            self.check_panel()
            self.check()

    def close(self):
        for process in (self.panel, self.bus):
            if process is not None:
                process.terminate()
                process.wait(programs.TIMEOUT)
        self.world.close()


def main():
    soak = Soak(*sys.argv[1:3])
    try:
        soak.run(float(sys.argv[3]) if len(sys.argv) > 3 else 4)
    except AssertionError as error:
        sys.exit(f"after {dict(soak.done)}: {error}; DREVIX_SEED={SEED}")
    finally:
        soak.close()
    print(f"{soak.done.total()} steps, {dict(soak.done)}; DREVIX_SEED={SEED}")


main()
