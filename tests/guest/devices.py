#!/usr/bin/python3
"""Input devices of a real kernel, as the first process of a guest that has nothing else: devices are made by /dev/uinput, and
the helper's keys are read from the keyboard that it makes. scripts/guest_devices starts it.

Usage: devices.py [STEP ...]    by the names of their functions; all without one
Prints a line for each step; "all steps passed" is said when they did.
"""
import errno
import fcntl
import os
import pathlib
import re
import shutil
import signal
import statistics
import struct
import subprocess
import sys
import time
import traceback

sys.path.insert(0, "/tests")
import compositor  # noqa: E402

HELPER = "/drevix/share/drevix-settings/DrevixHelper.app/Contents/Linux/DrevixHelper"
CONTROL = "/drevix/bin/drevixctl"
USER = 1000
HOME = pathlib.Path("/home")
ENVIRONMENT = {"PATH": "/bin:/usr/bin", "HOME": str(HOME), "XDG_CONFIG_HOME": f"{HOME}/config", "XDG_STATE_HOME": f"{HOME}/state",
               "XDG_RUNTIME_DIR": str(HOME), "WAYLAND_DISPLAY": "wayland-0", "LC_ALL": "C.UTF-8",
               "DBUS_SESSION_BUS_ADDRESS": f"unix:path={HOME}/bus"}
OWN_KEYBOARD = "Drevix virtual keyboard"

EV_SYN, EV_KEY, EV_REL, EV_ABS = range(4)
ABS_X, ABS_Y, ABS_WHEEL, REL_WHEEL, REL_DIAL = 0, 1, 8, 8, 7
BTN_0, BUTTON_I, BUTTON_II, BTN_DPAD_UP = 0x100, 0x102, 0x103, 0x220
K, A, F5, LEFT_CTRL, LEFT_SHIFT = 37, 30, 63, 29, 42
EVENT = struct.Struct("llHHi")

UI_SET = {EV_KEY: 0x40045565, EV_REL: 0x40045566, EV_ABS: 0x40045567}
UI_SET_EVBIT, UI_DEV_SETUP, UI_ABS_SETUP = 0x40045564, 0x405C5503, 0x401C5504
UI_DEV_CREATE, UI_DEV_DESTROY, UI_GET_SYSNAME, EVIOCGRAB = 0x5501, 0x5502, 0x8040552C, 0x40044590

steps = []
children = []


def step(function):
    steps.append(function)
    return function


def expect(condition, what):
    if not condition:
        raise AssertionError(what)


def until(condition, what, between=0.005):
    end = time.monotonic() + 20
    while not (found := condition()):
        expect(time.monotonic() < end, what() if callable(what) else what)
        expect(Session.helper is None or Session.helper.poll() is None, "the helper has ended")
        time.sleep(between)
    return found


class Device:
    """A device made by the guest. As with udev, the user may read it only some time after it came: after `meanwhile`."""

    def __init__(self, name="Test ring", product=0x5678, keys=range(BTN_0, BTN_0 + 5), dials=(REL_WHEEL,),
                 axes=((ABS_X, -127, 127), (ABS_Y, -127, 127)), meanwhile=lambda node: None):
        self.maker = os.open("/dev/uinput", os.O_RDWR)
        for kind, codes in ((EV_KEY, keys), (EV_REL, dials), (EV_ABS, [axis[0] for axis in axes])):
            fcntl.ioctl(self.maker, UI_SET_EVBIT, kind)
            for code in codes:
                fcntl.ioctl(self.maker, UI_SET[kind], code)
        for code, least, most in axes:
            fcntl.ioctl(self.maker, UI_ABS_SETUP, struct.pack("H2x6i", code, 0, least, most, 0, 0, 0))
        fcntl.ioctl(self.maker, UI_DEV_SETUP, struct.pack("4H80sI", 3, 0x1234, product, 0x105, name.encode(), 0))
        fcntl.ioctl(self.maker, UI_DEV_CREATE)
        system_name = fcntl.ioctl(self.maker, UI_GET_SYSNAME, bytes(64)).split(b"\0")[0].decode()
        self.node = "/dev/input/" + until(lambda: [path.name for path in pathlib.Path(
            f"/sys/devices/virtual/input/{system_name}").glob("event*")], "no node")[0]
        until(lambda: os.path.exists(self.node), "no node")
        meanwhile(self.node)
        os.chown(self.node, USER, USER)

    def send(self, *events):
        os.write(self.maker, b"".join(EVENT.pack(0, 0, *event) for event in (*events, (EV_SYN, 0, 0))))

    def press(self, button, times=1):
        for _ in range(times):
            self.send((EV_KEY, button, 1))
            self.send((EV_KEY, button, 0))

    def unplug(self):
        fcntl.ioctl(self.maker, UI_DEV_DESTROY)
        os.close(self.maker)


def make_dial(meanwhile=lambda node: None):
    return Device(name="Test dial", product=0x567B, keys=(BTN_0, BTN_DPAD_UP), dials=(REL_DIAL,), axes=((ABS_WHEEL, 0, 255),),
                  meanwhile=meanwhile)


class Reader:
    """Another program that reads a device."""

    def __init__(self, node):
        self.file, self.events = os.open(node, os.O_RDONLY | os.O_NONBLOCK), []
        self.is_gone = False

    def read(self):
        try:
            while data := os.read(self.file, EVENT.size * 64):
                self.events += [EVENT.unpack(data[i:i + EVENT.size])[2:] for i in range(0, len(data), EVENT.size)]
        except BlockingIOError:
            pass
        except OSError as problem:
            expect(problem.errno == errno.ENODEV, str(problem))
            self.is_gone = True
        return self.events

    def keys(self):
        return [(code, value) for kind, code, value in self.read() if kind == EV_KEY]

    def presses(self, key):
        return self.keys().count((key, 1))

    def down(self):
        """The keys that are down by what was read."""
        return {code for code, value in dict(self.keys()).items() if value}

    def close(self):
        os.close(self.file)


def start(*command, output="unused"):
    with open(HOME / output, "ab") as file:
        child = subprocess.Popen(command, env=ENVIRONMENT, stdout=file, stderr=subprocess.STDOUT, user=USER, group=USER,
                                 extra_groups=[], cwd=HOME)
    children.append(child)
    return child


def ctl(*words):
    return subprocess.run([CONTROL, *words], env=ENVIRONMENT, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=60, check=True, user=USER, group=USER, extra_groups=[]).stdout


def said(output="said"):
    return (HOME / output).read_text()


def own_keyboards():
    found = []
    for path in pathlib.Path("/sys/class/input").glob("event*"):
        try:
            if (path / "device/name").read_text().strip() == OWN_KEYBOARD:
                found.append("/dev/input/" + path.name)
        except OSError:
            pass  # it goes right now
    return found


def press_until_read(device, what):
    """Until the helper has noticed that the device or the compositor is another one."""
    before = Session.keyboard.presses(F5)
    until(lambda: device.press(BUTTON_I) or Session.keyboard.presses(F5) > before, what, 0.05)


class Session:
    """The compositor, the helper and who reads the helper's keyboard."""
    compositor = helper = keyboard = None

    @classmethod
    def begin(cls):
        (HOME / "said").write_text("")
        cls.helper = start(HELPER, output="said")
        until(lambda: "ready\n" in said(), said)
        cls.read_keyboard()

    @classmethod
    def read_keyboard(cls):
        node = until(own_keyboards, said)[0]
        until(lambda: os.path.exists(node), "no node of the keyboard")
        cls.keyboard = Reader(node)

    @classmethod
    def begin_compositor(cls, *offers):
        cls.compositor = compositor.Compositor(HOME / "wayland-0", [compositor.SEAT, *offers], front="in-front")
        os.chown(HOME / "wayland-0", USER, USER)


def connected(count):
    return lambda: said().split("devices connected: ")[-1].startswith(str(count))


@step
def first_device():
    """The helper starts without any device, when /dev/input is missing, and makes its keyboard"""
    shutil.rmtree("/dev/input", ignore_errors=True)
    Session.begin_compositor()
    Session.begin()


@step
def hot_plug():
    """A device that comes later is read, also when its node opens to the user only 0.3 s after it came"""
    Session.device = Device(meanwhile=lambda node: time.sleep(0.3))
    until(connected(1), said)
    Session.device.press(BUTTON_I)
    until(lambda: Session.keyboard.keys() == [(F5, 1), (F5, 0)], lambda: f"{Session.keyboard.keys()} {said()}")


@step
def own_keyboard():
    """The helper's own keyboard is never read, although its node is open to the user and a map names it"""
    for node in own_keyboards():
        os.chown(node, USER, USER)
    time.sleep(0.3)
    expect(connected(1)(), said())
    descriptors = [os.path.realpath(path) for path in pathlib.Path(f"/proc/{Session.helper.pid}/fd").iterdir()]
    expect(Session.device.node in descriptors and not set(own_keyboards()) & set(descriptors), f"{descriptors}")


@step
def grab():
    """A second reader sees nothing of a grabbed device"""
    reader, before = Reader(Session.device.node), Session.keyboard.presses(F5)
    Session.device.press(BUTTON_I, 5)
    until(lambda: Session.keyboard.presses(F5) == before + 5, "presses were lost")
    expect(reader.read() == [], f"{reader.events}")
    reader.close()


@step
def grabbed_by_another():
    """A device that another program has grabbed is said to be kept, and acts when that lets go"""
    others = []

    def grab_it(node):
        others.append(Reader(node))
        fcntl.ioctl(others[0].file, EVIOCGRAB, 1)
    device = make_dial(grab_it)
    until(lambda: "keeps " + device.node in said(), said)
    before = Session.keyboard.presses(F5)
    device.press(BTN_DPAD_UP)
    time.sleep(0.2)
    expect(Session.keyboard.presses(F5) == before, "events of a device that another has grabbed")
    others[0].close()
    device.press(BTN_DPAD_UP)
    until(lambda: Session.keyboard.presses(F5) == before + 1, said)
    device.unplug()
    until(connected(1), said)


@step
def many_presses():
    """300 presses become 300 keys, none is left down"""
    until(lambda: not Session.keyboard.down(), "a key is down")
    delays = []
    for i in range(300):
        Session.keyboard.events.clear()
        begin = time.monotonic()
        Session.device.press(BUTTON_I)
        until(lambda: Session.keyboard.keys() == [(F5, 1), (F5, 0)], lambda i=i: f"press {i}: {Session.keyboard.events}", 0.0005)
        delays.append(time.monotonic() - begin)
    until(lambda: not Session.keyboard.down(), "a key is down")
    delays.sort()
    return f"device to key {statistics.median(delays) * 1e3:.1f} ms median, {delays[296] * 1e3:.1f} ms 99 %, emulated"


@step
def fast_dial():
    """50 steps at once of a keystroke with two modifiers: all 50 reach a reader, although its queue is shorter"""
    before = Session.keyboard.presses(K)
    Session.device.send((EV_REL, REL_WHEEL, 50))
    until(lambda: Session.keyboard.presses(K) >= before + 50,
          lambda: f"{Session.keyboard.presses(K) - before} of 50 came, {Session.keyboard.events.count((EV_SYN, 3, 0))} times dropped")
    expect(Session.keyboard.presses(K) == before + 50 and not Session.keyboard.down(), "too many, or one is down")


@step
def dropped_events():
    """The helper is held up while 6,000 events come: a key that went down meanwhile is down, one that went up is up"""
    device = Session.device

    def flood(last):
        os.kill(Session.helper.pid, signal.SIGSTOP)
        for i in range(3000):
            device.send((EV_ABS, ABS_Y, i % 7))
        device.send((EV_KEY, BUTTON_II, last))
        for i in range(3000):
            device.send((EV_ABS, ABS_Y, i % 7))
        os.kill(Session.helper.pid, signal.SIGCONT)
    for last, wanted in ((1, {LEFT_CTRL, A}), (0, set())):
        flood(last)
        until(lambda wanted=wanted: Session.keyboard.down() == wanted, lambda: f"{Session.keyboard.down()}")
    device.press(BUTTON_I)
    until(lambda: Session.keyboard.keys()[-2:] == [(F5, 1), (F5, 0)], "it does not go on")


@step
def dropped_counter():
    """A counter that goes round goes on from its new value after events were dropped"""
    device = make_dial()
    until(connected(2), said)
    before = Session.keyboard.presses(K)
    os.kill(Session.helper.pid, signal.SIGSTOP)
    for i in range(1000):
        device.send((EV_ABS, ABS_WHEEL, i % 256))
    os.kill(Session.helper.pid, signal.SIGCONT)
    time.sleep(0.5)  # else the next is part of what was lost
    device.send((EV_ABS, ABS_WHEEL, (999 + 8) % 256))  # two steps of four counts
    until(lambda: Session.keyboard.presses(K) >= before + 2, lambda: f"{Session.keyboard.presses(K) - before}")
    time.sleep(0.3)
    turns = Session.keyboard.presses(K) - before, Session.keyboard.events.count((EV_REL, REL_WHEEL, -1))
    expect(turns == (2, 0), f"steps ahead and back: {turns}")
    device.unplug()
    until(connected(1), said)


@step
def unplugging():
    """Unplugged with a key down: the keys go up, the device is told to be gone"""
    Session.device.send((EV_KEY, BUTTON_II, 1))
    until(lambda: Session.keyboard.down() == {LEFT_CTRL, A}, lambda: f"{Session.keyboard.down()}")
    Session.device.unplug()
    until(lambda: not Session.keyboard.down(), "a key stayed down")
    until(connected(0), said)


@step
def plugged_in_again():
    """Unplugged and plugged in at once, 20 times, under the same node: each time it is read anew"""
    for i in range(20):
        device = Device()
        until(connected(1), f"time {i}: {said()}")
        press_until_read(device, f"time {i}")
        device.unplug()
    Session.device = Device()
    press_until_read(Session.device, "the last time")
    expect(connected(1)(), said())


@step
def watched():
    """drevixctl watch tells the control, watch --raw the event in the words of a map"""
    watch = start(CONTROL, "watch", output="watched")
    until(lambda: Session.device.press(BUTTON_I) or "buttonI" in said("watched"), lambda: said("watched"), 0.2)
    watch.kill()
    device = Device(name="Unknown", product=0x9999)
    raw = start(CONTROL, "watch", "--raw", output="raw")
    until(lambda: "Unknown" in said("raw"), lambda: said("raw"))
    device.send((EV_ABS, ABS_X, 90))
    until(lambda: "axis=ABS_X   # 90" in said("raw"), lambda: said("raw"))
    device.unplug()
    until(lambda: "unplugged" in said("raw"), lambda: said("raw"))
    raw.kill()


@step
def compositor_gone():
    """The compositor goes with a key down: the keyboard goes too, and a new one comes with the next compositor"""
    Session.device.send((EV_KEY, BUTTON_II, 1))
    until(lambda: Session.keyboard.down() == {LEFT_CTRL, A}, "not down")
    Session.compositor.end()
    until(lambda: Session.keyboard.read() is not None and Session.keyboard.is_gone, "the keyboard stayed")
    left = Session.keyboard.down()
    Session.device.send((EV_KEY, BUTTON_II, 0))
    Session.begin_compositor()
    Session.read_keyboard()
    press_until_read(Session.device, "the next compositor")
    return "keys were let go before it went" if not left else "the kernel let them go"


@step
def compositor_without_keys():
    """A compositor that tells the window in front but takes no keys gets them by the keyboard, and the wheel too"""
    Session.compositor.end()
    until(lambda: Session.keyboard.read() is not None and Session.keyboard.is_gone, "the keyboard stayed")
    Session.begin_compositor(compositor.TOPLEVELS)
    Session.read_keyboard()
    until(lambda: "entry: in-front" in ctl("front"), lambda: ctl("front"))
    Session.device.press(BUTTON_I)
    until(lambda: Session.keyboard.keys() == [(F5, 1), (F5, 0)], lambda: f"{Session.keyboard.events}")
    Session.device.send((EV_REL, REL_WHEEL, -2))
    until(lambda: Session.keyboard.read().count((EV_REL, REL_WHEEL, -1)) == 2, lambda: f"{Session.keyboard.events}")


@step
def killed():
    """Killed with a key down: the kernel takes the keyboard away, and the device is free for other readers"""
    Session.device.send((EV_KEY, BUTTON_II, 1))
    until(lambda: Session.keyboard.down() == {LEFT_CTRL, A}, "not down")
    Session.helper.kill()
    expect(Session.helper.wait() == -signal.SIGKILL, said())
    Session.helper = None
    until(lambda: Session.keyboard.read() is not None and Session.keyboard.is_gone and not own_keyboards(), "the keyboard stayed")
    reader = Reader(Session.device.node)
    Session.device.send((EV_KEY, BUTTON_II, 0))
    until(reader.keys, "the device is still grabbed")
    Session.begin()


@step
def ended():
    """Ended with a key down: likewise, and it ends well"""
    Session.device.press(BUTTON_I)
    until(lambda: Session.keyboard.presses(F5) > 0, said)
    Session.device.send((EV_KEY, BUTTON_II, 1))
    until(lambda: Session.keyboard.down() == {LEFT_CTRL, A}, "not down")
    Session.helper.send_signal(signal.SIGTERM)
    expect(Session.helper.wait(20) == 0, said())
    Session.helper = None
    until(lambda: Session.keyboard.read() is not None and Session.keyboard.is_gone and not own_keyboards(), "the keyboard stayed")


@step
def refused():
    """Where /dev/uinput may not be written, one line says so"""
    os.chown("/dev/uinput", 0, 0)
    (HOME / "said").write_text("")
    Session.helper = start(HELPER, output="said")
    until(lambda: "ready\n" in said(), said)
    time.sleep(2.5)
    lines = [line for line in said().splitlines() if "uinput" in line]
    expect(len(lines) == 1, said())
    return re.sub("^DrevixHelper: ", "", lines[0])


def prepare():
    for folder in ("config/com.halcyra.drevix.maps", "state"):
        (HOME / folder).mkdir(parents=True)
    (HOME / "config/com.halcyra.drevix.maps/own.map").write_text(f'device name="{OWN_KEYBOARD}"\nbuttonV key=KEY_F1\n')
    for path in [HOME, *HOME.rglob("*")]:
        os.chown(path, USER, USER)
    os.chown("/dev/uinput", USER, USER)
    start("/usr/bin/dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address=unix:path={HOME}/bus")
    until(lambda: os.path.exists(HOME / "bus"), "no bus")
    for words in (["buttonI", "keystroke", "F5"], ["buttonII", "keystroke", "ctrl+a", "--repeat", "-1"], ["ringUp", "keystroke", "F5"],
                  ["tunerCW", "keystroke", "ctrl+shift+k"], ["tunerCCW", "scroll", "down"]):
        ctl("assign", *words)
    ctl("set", "tunerSensitivity", "100")


def main():
    failed = 0
    try:
        prepare()
        for function in [step for step in steps if step.__name__ in sys.argv[1:] or not sys.argv[1:]]:
            begin = time.monotonic()
            try:
                note = function() or ""
                print(f"ok    {function.__doc__}{': ' + note if note else ''} ({time.monotonic() - begin:.1f} s)", flush=True)
            except Exception:  # whatever it is, the next step is tried
                failed += 1
                print(f"FAIL  {function.__doc__}", flush=True)
                traceback.print_exc()
                print(Session.helper and Session.helper.poll(), said(), flush=True)
                subprocess.run(["/bin/busybox", "sh", "-c", "/bin/busybox dmesg | /bin/busybox grep -i -A3 segfault"], check=False)
    except Exception:
        failed += 1
        traceback.print_exc()
    print(f"{failed} failed" if failed else "all steps passed", flush=True)
    for child in children:
        child.kill()


main()
