"""A client of a Wayland compositor, as small as tests need it: hands on a keyboard and a mouse, and a window that files are
dragged from. It speaks the wire format itself; what it calls by number is named beside the number.
"""
import array
import os
import select
import socket
import struct
import subprocess
import tempfile
import time

SHIFT, LOCK, CONTROL, ALT, SUPER, ALT_GR = 1, 2, 4, 8, 64, 128  # the modifiers at the same bits in every XKB keymap
MODIFIER_KEYS = {SHIFT: 42, CONTROL: 29, ALT: 56, SUPER: 125, ALT_GR: 100}  # by their evdev codes
CAPS_LOCK_KEY = 58
LEFT_BUTTON = 0x110
NOBODY = 65534  # the compositor refuses to run as root


def start_compositor(run_folder, configuration, log_path):
    """Starts one without a screen, in a folder of its own: its process, and where its display and its control socket are; None for
    them where it cannot run."""
    run_folder.mkdir(mode=0o700)
    (run_folder / "config").write_text(configuration)
    as_user = {}
    if os.geteuid() == 0:
        run_folder.parent.chmod(0o711)
        os.chown(run_folder, NOBODY, NOBODY)
        as_user = {"user": NOBODY, "group": NOBODY, "extra_groups": []}
    with open(log_path, "w") as log:
        process = subprocess.Popen(
            ["sway", "--config", str(run_folder / "config")], stdout=log, stderr=log, **as_user,
            env={"PATH": os.environ["PATH"], "HOME": str(run_folder), "XDG_RUNTIME_DIR": str(run_folder), "WLR_BACKENDS": "headless",
                 "WLR_LIBINPUT_NO_DEVICES": "1", "WLR_RENDERER": "pixman", "LC_ALL": "C.UTF-8"})
    deadline = time.monotonic() + 20
    while process.poll() is None and time.monotonic() < deadline:
        found = {path.name[:6]: str(path) for path in run_folder.iterdir() if path.is_socket()}
        if len(found) == 2:
            return process, found["waylan"], found["sway-i"]
        time.sleep(0.01)
    return process, None, None


class Connection:
    """Requests out, events in. An event calls the handler that `on` has for its object and number."""

    def __init__(self, path):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect(path)
        self.last_id, self.bytes, self.files, self.handlers, self.globals = 1, b"", [], {}, {}
        self.on(1, 0, "uus", self._fail)
        registry = self.new()
        self.on(registry, 0, "usu", lambda name, interface, version: self.globals.setdefault(interface, name))
        self.request(1, 1, registry)  # wl_display.get_registry
        self.registry = registry
        self.sync()

    def _fail(self, thing, code, text):
        raise RuntimeError(f"the compositor refused object {thing}, error {code}: {text}")

    def new(self):
        self.last_id += 1
        return self.last_id

    def bind(self, interface, version):
        thing = self.new()
        self.request(self.registry, 0, self.globals[interface], interface, version, thing)
        return thing

    def make(self, thing, opcode, *arguments):
        """Sends a request whose first argument is a new object."""
        made = self.new()
        self.request(thing, opcode, made, *arguments)
        return made

    def on(self, thing, opcode, form, handler):
        self.handlers[thing, opcode] = form, handler

    def request(self, thing, opcode, *arguments, files=()):
        body = b""
        for argument in arguments:
            if isinstance(argument, str):
                text = argument.encode() + b"\0"
                body += struct.pack("=I", len(text)) + text + bytes(-len(text) % 4)
            else:
                body += struct.pack("=I", argument & 0xFFFFFFFF)
        message = struct.pack("=IHH", thing, opcode, 8 + len(body)) + body
        rights = [(socket.SOL_SOCKET, socket.SCM_RIGHTS, array.array("i", files))] if files else []
        self.socket.sendmsg([message], rights)

    def sync(self):
        """Waits until the compositor has handled all requests."""
        done = []
        callback = self.make(1, 0)  # wl_display.sync
        self.on(callback, 0, "u", done.append)
        self.wait(lambda: done, "an answer of the compositor")

    def wait(self, look, what, seconds=10):
        deadline = time.monotonic() + seconds
        while not look():
            if time.monotonic() > deadline:
                raise RuntimeError(f"{what} did not come")
            self.listen(0.02)

    def listen(self, seconds):
        """Handles the events that arrive within the time."""
        if not select.select([self.socket], [], [], seconds)[0]:
            return
        data, files, _, _ = socket.recv_fds(self.socket, 65536, 16)
        if not data:
            raise RuntimeError("the compositor is gone")
        self.bytes += data
        self.files += files
        while len(self.bytes) >= 8:
            thing, opcode, size = struct.unpack("=IHH", self.bytes[:8])
            if len(self.bytes) < size:
                return
            body, self.bytes = self.bytes[8:size], self.bytes[size:]
            if (thing, opcode) in self.handlers:
                form, handler = self.handlers[thing, opcode]
                handler(*self._arguments(form, body))

    def _arguments(self, form, body):
        for kind in form:
            if kind == "f":
                yield self.files.pop(0)
                continue
            number, body = struct.unpack("=I", body[:4])[0], body[4:]
            if kind in "sa":
                yield body[:number] if kind == "a" else body[:number - 1].decode() if number else None
                body = body[number + -number % 4:]
            else:
                yield number


def memory_file(data):
    file = tempfile.TemporaryFile()
    file.write(data)
    file.flush()
    return file


class Hands:
    """A keyboard with the caller's keymap, and a mouse."""

    def __init__(self, connection, size):
        self.connection, self.size = connection, size
        self.seat = connection.bind("wl_seat", 5)
        keyboards = connection.bind("zwp_virtual_keyboard_manager_v1", 1)
        mice = connection.bind("zwlr_virtual_pointer_manager_v1", 1)
        self.keyboard = connection.new()
        connection.request(keyboards, 0, self.seat, self.keyboard)
        self.mouse = connection.new()
        connection.request(mice, 0, self.seat, self.mouse)
        self.group = self.locked = 0

    def use_layouts(self, symbols):
        """Keys from XKB's symbol files, such as pc+us, with the codes of a real keyboard."""
        parts = {"keycodes": "evdev+aliases(qwerty)", "types": "complete", "compat": "complete", "symbols": symbols + "+inet(evdev)"}
        self._use_keymap("".join(f'xkb_{part} {{ include "{name}" }};' for part, name in parts.items()))

    def use_letter(self, letter, code):
        """One key that types a letter, with another key's code on a real keyboard."""
        self._use_keymap(f"xkb_keycodes {{ minimum = 8; maximum = 255; <KEY> = {code + 8}; }};"
                         'xkb_types { include "complete" }; xkb_compat { include "complete" };'
                         f"xkb_symbols {{ key <KEY> {{ [ {letter} ] }}; }};")

    def _use_keymap(self, sections):
        keymap = f"xkb_keymap {{ {sections} }};\0"
        with memory_file(keymap.encode()) as file:
            self.connection.request(self.keyboard, 0, 1, len(keymap), files=[file.fileno()])
        self.use_group(0)

    def use_group(self, group):
        self.group = group
        self._modifiers(0)

    def _modifiers(self, held):
        self.connection.request(self.keyboard, 2, held, 0, self.locked, self.group)

    def _key(self, code, is_down):
        self.connection.request(self.keyboard, 1, now(), code, is_down)

    def press(self, code, modifiers=0):
        keys = [(mask, key) for mask, key in MODIFIER_KEYS.items() if modifiers & mask]
        held = 0
        for mask, key in keys:
            held |= mask
            self._key(key, 1)
            self._modifiers(held)
        self._key(code, 1)
        self._key(code, 0)
        for mask, key in reversed(keys):
            held &= ~mask
            self._key(key, 0)
            self._modifiers(held)
        self.connection.sync()

    def press_caps_lock(self):
        self._key(CAPS_LOCK_KEY, 1)
        self.locked ^= LOCK
        self._modifiers(0)
        self._key(CAPS_LOCK_KEY, 0)
        self.connection.sync()

    def point(self, x, y):
        self.connection.request(self.mouse, 1, now(), int(x), int(y), *self.size)
        self.connection.request(self.mouse, 4)  # frame
        self.connection.sync()

    def button(self, is_down):
        self.connection.request(self.mouse, 2, now(), LEFT_BUTTON, is_down)
        self.connection.request(self.mouse, 4)
        self.connection.sync()

    def click(self, x, y):
        self.point(x, y)
        self.button(1)
        self.button(0)


class DragWindow:
    """A window. If it has a `uri`, pressing a button in it starts dragging that file."""

    def __init__(self, connection, seat, name, side):
        self.connection, self.seat, self.uri = connection, seat, None
        self.serial, self.target, self.is_finished = 0, None, False
        base = connection.bind("xdg_wm_base", 1)
        connection.on(base, 0, "u", lambda serial: connection.request(base, 3, serial))  # ping, pong
        self.surface = connection.make(connection.bind("wl_compositor", 4), 0)
        role = connection.make(base, 2, self.surface)
        window = connection.make(role, 1)
        connection.request(window, 2, name)  # set_title
        self.window = window
        self.rename(name)
        connection.on(role, 0, "u", lambda serial: self._show(role, serial, side))
        connection.request(self.surface, 6)  # commit
        self.shared = connection.bind("wl_shm", 1)
        manager = connection.bind("wl_data_device_manager", 3)
        self.source = None
        self.device = connection.make(manager, 1, seat)
        self.manager = manager
        pointer = connection.make(seat, 0)
        connection.on(pointer, 3, "uuuu", self._pressed)

    def rename(self, name):
        """Makes it the window of this application."""
        self.connection.request(self.window, 3, name)  # set_app_id

    def _show(self, role, serial, side):
        self.connection.request(role, 4, serial)  # ack_configure
        size = side * side * 4
        with memory_file(bytes(size)) as file:
            pool = self.connection.new()
            self.connection.request(self.shared, 0, pool, size, files=[file.fileno()])
        buffer = self.connection.make(pool, 0, 0, side, side, side * 4, 1)
        self.connection.request(self.surface, 1, buffer, 0, 0)  # attach
        self.connection.request(self.surface, 2, 0, 0, side, side)  # damage
        self.connection.request(self.surface, 6)

    def _pressed(self, serial, _time, _button, state):
        self.serial = serial
        if state != 1 or self.uri is None:
            return
        self.source = self.connection.make(self.manager, 0)
        self.connection.request(self.source, 0, "text/uri-list")  # offer
        self.connection.request(self.source, 2, 1)  # set_actions: copy
        self.connection.on(self.source, 0, "s", lambda kind: setattr(self, "target", kind))
        self.connection.on(self.source, 1, "sf", self._send)
        self.connection.on(self.source, 4, "", lambda: setattr(self, "is_finished", True))
        self.connection.request(self.device, 0, self.source, self.surface, 0, serial)  # start_drag

    def _send(self, _kind, file):
        with os.fdopen(file, "wb") as pipe:
            pipe.write(self.uri.encode() + b"\r\n")

    def activation_token(self):
        """The activation token that a launcher gives a program started by a click in this window."""
        token = self.connection.make(self.connection.bind("xdg_activation_v1", 1), 1)
        given = []
        self.connection.on(token, 0, "s", given.append)
        self.connection.request(token, 0, self.serial, self.seat)  # set_serial
        self.connection.request(token, 2, self.surface)  # set_surface
        self.connection.request(token, 3)  # commit
        self.connection.wait(lambda: given, "an activation token")
        return given[0]


def now():
    return int(time.monotonic() * 1000) & 0xFFFFFFFF
