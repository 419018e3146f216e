"""The real helper on a bus of its own, with a pipe in place of a device, for tests of what it does on a desktop."""
import os
import pathlib
import shutil
import struct
import subprocess
import tempfile
import time
import unittest

EV_SYN, EV_KEY, EV_REL, EV_ABS = range(4)
BUTTON_I, BUTTON_II, REL_WHEEL, ABS_X = 0x102, 0x103, 8, 0  # of the map that comes with the program
SKIPPED = 77


class ActingCase(unittest.TestCase):
    """`helper_program` and `control_program` are to be set before."""

    @classmethod
    def prepare(cls):
        cls.children = []
        cls.path = pathlib.Path(tempfile.mkdtemp(prefix="drevix-acting-"))
        cls.addClassCleanup(shutil.rmtree, cls.path, True)
        cls.addClassCleanup(cls.end_children)
        (cls.path / "config").mkdir()
        cls.environment = {"PATH": os.environ["PATH"], "HOME": str(cls.path), "XDG_CONFIG_HOME": str(cls.path / "config"),
                           "XDG_STATE_HOME": str(cls.path / "state"), "LC_ALL": "C.UTF-8", "ASAN_OPTIONS": "detect_leaks=0",
                           "DBUS_SESSION_BUS_ADDRESS": f"unix:path={cls.path}/bus",
                           "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={cls.path}/bus"}
        cls.start("dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address=unix:path={cls.path}/bus")
        os.mkfifo(cls.path / "dial")

    @classmethod
    def add_programs(cls, *names):
        """Records for programs of these names."""
        for name in names:
            program = cls.path / "bin" / name
            program.parent.mkdir(exist_ok=True)
            program.write_text("")
            program.chmod(0o755)
            cls.ctl("add", str(program))

    @classmethod
    def end_children(cls):
        for child in reversed(cls.children):
            child.kill()
            child.wait()

    @classmethod
    def start(cls, *command, output="unused", **more):
        with open(cls.path / output, "ab") as file:
            child = subprocess.Popen(command, env=cls.environment, stdout=file, stderr=subprocess.STDOUT, **more)
        cls.children.append(child)
        return child

    @classmethod
    def start_helper(cls, *options):
        (cls.path / "said").write_text("")
        cls.helper = cls.start(cls.helper_program, "--stand-in", f'file={cls.path}/dial name="Test ring" vendor=0x1234 product=0x5678 '
                               "axis=ABS_X,-127,127 dial=REL_WHEEL key=BTN_2 key=BTN_3", *options, output="said")
        cls.until(lambda: "ready\n" in (cls.path / "said").read_text())
        cls.dial = open(cls.path / "dial", "wb", buffering=0)
        cls.addClassCleanup(cls.dial.close)

    @classmethod
    def until(cls, condition, what="nothing happened"):
        end = time.monotonic() + 20
        while not condition():
            if time.monotonic() > end:
                raise AssertionError(what() if callable(what) else what)
            time.sleep(0.01)

    @classmethod
    def ctl(cls, *words):
        return subprocess.run([cls.control_program, *words], env=cls.environment, capture_output=True, text=True, timeout=30,
                              check=True).stdout

    def send(self, *events):
        self.dial.write(b"".join(struct.pack("llHHi", 0, 0, *event) for event in (*events, (EV_SYN, 0, 0))))

    def press(self, button):
        self.send((EV_KEY, button, 1))
        self.send((EV_KEY, button, 0))
