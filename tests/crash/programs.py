"""What both programs write, as a table, and how one of these is run in folders of its own under trace_writes."""
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

SETTINGS = "config/com.halcyra.drevix.prefs"
HOTKEYS = "home/Library/Preferences/Drevix Tarnix Preferences/_System_/~hotkeys"
EXPORT = "exports/all.veltrana"
HOTKEY = "<HotKey><Menu>{}</Menu><Key>{}</Key><Device>{}</Device><Modifier/><VirtualKey>{}</VirtualKey></HotKey>"
FIRST_HOTKEYS = "<HotKeys TargetApp='System'>" + HOTKEY.format("Filter", 3, "pyralis", 8) + HOTKEY.format(
    "Sharpen More", "", "", "") + "</HotKeys>"
# What is no setting: locks, and the place of the window. The history has a test of its own below.
NOT_LOOKED_AT = re.compile(r"\.lock$|^config/halcyra/|/history/")
# What is written in place: torn until the next program has looked at it.
IN_PLACE = ("~hotkeys", ".veltrana")
# What is made empty before it is filled, so that it can be filled.
EMPTY_AT_FIRST = "config/loginwindow.plist"
TIMEOUT = 60  # seconds, for one run of a program on a busy machine

# What is done, and the words for it: {} is the folder. None for the panel, which is started, told to end, and then saves.
OPERATIONS = {
    "first save": ["set", "ringSpeed", "32"],
    "save": ["set", "ringSpeed", "32"],
    "import": ["import", "--replace", "{}/exports/other.veltrana"],
    "first export": ["export", "--all", "{}/exports/new.veltrana"],
    "export": ["export", "--all", "{}/" + EXPORT],
    "hotkeys": ["assign", "buttonI", "menu", "Sharpen More"],
    "items": ["assign", "buttonI", "open", "/usr/share"],
    "recover": ["recover", "{}/exports/damaged", "--to", "{}/exports/new.veltrana"],
    "mend": ["list"],
    "panel": None,
}


def chosen():
    """The operations in DREVIX_OPERATIONS, with commas, or all."""
    asked = os.environ.get("DREVIX_OPERATIONS")
    return asked.split(",") if asked else list(OPERATIONS)


class World:
    """Folders for the programs, as they are before one of the operations."""

    def __init__(self, tracer, control, panel):
        self.tracer, self.control, self.panel = tracer, control, panel
        self.base = pathlib.Path(os.path.realpath(tempfile.mkdtemp(prefix="drevix-crash-")))
        self.root = self.base / "root"
        home = str(self.root / "home")
        self.environment = {**os.environ, "HOME": home, "XDG_CONFIG_HOME": str(self.root / "config"),
                            "XDG_STATE_HOME": str(self.root / "state"), "XDG_RUNTIME_DIR": str(self.base / "run"),
                            "XDG_CACHE_HOME": str(self.base / "cache"), "QT_QPA_PLATFORM": "offscreen", "LC_ALL": "C.UTF-8", "LANGUAGE": "",
                            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.base}/no-bus", "ASAN_OPTIONS": "detect_leaks=0"}
        (self.base / "run").mkdir(mode=0o700)
        self.start()

    def close(self):
        shutil.rmtree(self.base)

    def run(self, *words, **options):
        return subprocess.run([self.control, *words], env=self.environment, capture_output=True, timeout=TIMEOUT, check=False,
                              **options)

    def must(self, *words):
        done = self.run(*words)
        if done.returncode != 0:
            raise AssertionError(f"drevixctl {' '.join(words)}: {done.returncode}, {done.stderr.decode()}")
        return done.stdout

    def start(self):
        """The folders without settings, and once more with what most operations begin with."""
        for folder in ["config", "state", "exports", os.path.dirname(HOTKEYS)]:
            (self.root / folder).mkdir(parents=True)
        self.keep("bare")
        exports = self.root / "exports"
        self.must("set", "ringSpeed", "31")
        self.must("add", "/bin/sh")
        self.must("set", "tunerSensitivity", "140", "--app", "sh")
        self.must("export", "--all", str(exports / "other.veltrana"))
        self.must("set", "tunerSensitivity", "90", "--app", "sh")
        self.must("export", "--all", str(self.root / EXPORT))
        (exports / "damaged").write_bytes((self.root / SETTINGS).read_bytes()[:-100])
        self.must("set", "ringSpeed", "30")
        self.keep("used")

    def prepare(self, operation):
        """Makes the state before an operation; "reset" brings it back."""
        self.reset("bare" if operation == "first save" else "used")
        if operation == "panel":  # the companion's program has taken a button away meanwhile, so there is something to save
            self.hotkeys(FIRST_HOTKEYS)
            self.must("list")
            self.must("assign", "buttonI", "menu", "Sharpen More")
        if operation in ("hotkeys", "panel"):
            self.hotkeys(FIRST_HOTKEYS)
        if operation == "mend":  # an export died with its new bytes half written over the old ones
            self.keep("seed")
            at = [i for i, event in enumerate(self.record("export"), 1) if event["path"].endswith(os.fsencode(EXPORT))
                  and event.get("offset") == 0]
            self.reset()
            self.trace("export", "--at", str(at[0]), "--do", "half")
        self.keep("seed")

    def keep(self, name):
        shutil.rmtree(self.base / name, ignore_errors=True)
        subprocess.run(["cp", "-a", self.root, self.base / name], check=True)

    def hotkeys(self, text):
        (self.root / HOTKEYS).write_text(text, encoding="utf-8")

    def reset(self, name="seed"):
        shutil.rmtree(self.root)
        subprocess.run(["cp", "-a", self.base / name, self.root], check=True)
        self.renumber_notes()

    def renumber_notes(self):
        """The notes of kept copies name a file by its inode, which is another one after a copy."""
        for note in self.root.glob("state/*/kept/*.note"):
            bytes_ = note.read_bytes()
            target = bytes_[40:40 + int.from_bytes(bytes_[24:32], sys.byteorder)]
            if bytes_.startswith(b"DrvxKep1") and target and os.path.exists(target):
                note.write_bytes(bytes_[:8] + os.stat(target).st_ino.to_bytes(8, sys.byteorder) + bytes_[16:])

    def trace(self, operation, *options):
        """Runs the operation under trace_writes: its status, what it says, and the number of calls."""
        words = OPERATIONS[operation]
        program = [self.panel] if words is None else [self.control, *(word.format(self.root) for word in words)]
        (self.base / "run/drevix-settings").unlink(missing_ok=True)
        read_end, write_end = os.pipe()
        command = ["sh", "-c", f'exec 3>&{write_end} "$@"', "sh", self.tracer, "--under", str(self.root), *options, *program]
        with subprocess.Popen(command, env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              pass_fds=[write_end]) as running:
            os.close(write_end)
            if words is None:
                end_when_ready(running, lambda: traced_by(running.pid))
            output = b"".join(running.communicate(timeout=TIMEOUT)).decode(errors="replace")
        with os.fdopen(read_end) as calls:
            said = calls.read()
        return running.returncode, output, int(said) if said else 0

    def record(self, operation):
        """What the operation does, call by call."""
        record = self.base / "record"
        status, output, _ = self.trace(operation, "--record", str(record))
        if status != 0:
            raise AssertionError(f"{operation}: {status}, {output}")
        events = [json.loads(line) for line in record.read_text().splitlines()]
        for event in events:
            for key in {"path", "other", "bytes"} & event.keys():
                event[key] = bytes.fromhex(event[key])
        return with_own_numbers(events)

    def state(self):
        """Every file below the folder: its bytes, or where a link leads."""
        found = {}
        for folder, folders, files in os.walk(self.root):
            for name in files + [name for name in folders if os.path.islink(os.path.join(folder, name))]:
                path = pathlib.Path(folder, name)
                key = str(path.relative_to(self.root))
                if not NOT_LOOKED_AT.search(key):
                    found[key] = os.fsencode(os.readlink(path)) if path.is_symlink() else path.read_bytes()
        # The data of an alias is of no consequence before its link is there.
        return {path: bytes_ for path, bytes_ in found.items() if "/._" not in path or path.replace("/._", "/") in found}


def end_when_ready(running, find):
    """Sends the process SIGTERM once the panel, whose id "find" gives, has told the system what to do with it, or hangs."""
    end = time.monotonic() + TIMEOUT
    while running.poll() is None and not catches_term(find()) and time.monotonic() < end:
        time.sleep(0.02)
    running.send_signal(signal.SIGTERM)


def traced_by(tracer):
    try:
        return int(pathlib.Path(f"/proc/{tracer}/task/{tracer}/children").read_text().split()[0])
    except (IndexError, OSError):
        return 0


def catches_term(process):
    try:
        caught = re.search(r"SigCgt:\s*(\w+)", pathlib.Path(f"/proc/{process}/status").read_text())[1]
        return bool(int(caught, 16) >> (signal.SIGTERM - 1) & 1) and "drevix" in os.readlink(f"/proc/{process}/exe")
    except (TypeError, OSError):
        return False


def with_own_numbers(events):
    """A file system gives the inode of a removed file to the next one: each file that is made gets a number of its own."""
    numbers, lengths, result = {}, {}, []
    for event in events:
        made = event["call"] == "open" and event["result"] >= 0
        if made and not event["value"] & os.O_TRUNC:
            numbers[event["inode"]] = f"new {len(numbers)} {len(result)}"
        if "inode" in event:
            event["inode"] = numbers.get(event["inode"], event["inode"])
        if made and event["value"] & os.O_TRUNC:
            result.append({**event, "call": "ftruncate", "value": 0})
        if event["call"] == "write":  # without an offset: behind the last one
            event["offset"] = lengths.get(event["inode"], 0)
        if "bytes" in event:
            lengths[event["inode"]] = event["offset"] + max(event["result"], 0)
        result.append(event)
    return result


def torn_now(found, before, after, said=""):
    """The files that are torn before the next program has looked at them. What is written in place may be, if that is said."""
    told = "kept" in said or "may have changed" in said or not said
    return [path for path in differences(found, before, after) if not (path.endswith(IN_PLACE) and told)]


def differences(found, before, after):
    """The files that are neither as before nor as after, of those that either state has."""
    return sorted(path for path in before.keys() | after.keys()
                  if found.get(path) not in (before.get(path), after.get(path), b"" if path == EMPTY_AT_FIRST else after.get(path)))


def strangers(found, before, after):
    """Files that no state has."""
    return sorted(found.keys() - before.keys() - after.keys())
