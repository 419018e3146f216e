#!/usr/bin/python3
"""Starts drevix-settings as a person does, on Qt's offscreen platform.

Usage: program_test.py DREVIX_SETTINGS DREVIXCTL
"""
import atexit
import os
import pathlib
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time

import gi
gi.require_version("GdkPixbuf", "2.0")
from gi.repository import GdkPixbuf  # noqa: E402

PROGRAM, CONTROL = sys.argv[1:]
folder = pathlib.Path(tempfile.mkdtemp(prefix="drevix-host-"))
atexit.register(shutil.rmtree, folder)
settings = folder / "config/com.halcyra.drevix.prefs"
environment = dict(os.environ, XDG_CONFIG_HOME=str(folder / "config"), XDG_STATE_HOME=str(folder / "state"), HOME=str(folder), XDG_RUNTIME_DIR=str(folder),
                   DBUS_SESSION_BUS_ADDRESS=f"unix:path={folder}/no-bus")
settings.parent.mkdir()


def run(*words):
    done = subprocess.run([PROGRAM, *words], env=environment, capture_output=True, text=True, timeout=60)
    return done.returncode, done.stderr


def expect(what, real, wanted):
    if real != wanted:
        sys.exit(f"{what}: {real!r}, not {wanted!r}")


def picture_size(path):
    return struct.unpack(">II", path.read_bytes()[16:24])


def black_of(*words):
    """The black pixels of a picture in black and white."""
    run("--picture", str(picture), "--app", "GIMP", "--control", "buttonII", "--size=1000x700", "--contrast", *words)
    image = GdkPixbuf.Pixbuf.new_from_file(str(picture))
    pixels, row, depth = image.get_pixels(), image.get_rowstride(), image.get_n_channels()
    return {(x, y) for y in range(image.get_height()) for x in range(image.get_width()) if not any(pixels[y * row + x * depth : y * row + x * depth + 3])}


# Pictures: of the size asked for, at the scale asked for, without a change of anything.
picture = folder / "panel.png"
for words, size in [(["--size", "800x600"], (800, 600)), (["--size=800x600", "--scale", "2"], (1600, 1200)),
                    (["--size=4000x700", "--scale=2"], (8000, 1400)), (["--size=800x600", "--scale", "2"], (1600, 1200))]:
    expect("status of a picture", run("--picture", str(picture), "--app", "GIMP", "--control", "buttonII", *words)[0], 0)
    expect("size of the picture", picture_size(picture), size)
expect("login item after a picture", (folder / "config/autostart").exists(), False)
light = picture.read_bytes()
run("--picture", str(picture), "--app", "GIMP", "--control", "buttonII", "--size=800x600", "--scale", "2", "--dark")
expect("a dark picture is the light one", picture.read_bytes() == light, False)
run("--picture", str(picture), "--app", "GIMP", "--control", "buttonII", "--size=800x600", "--scale", "2", "--pressed", "ringLeft")
expect("a picture with a pressed control is the one without", picture.read_bytes() == light, False)
steps = folder / "steps.png"
for file, words in [(picture, []), (steps, ["--step", "press Ctrl+K", "--step", "type undo"])]:
    words = ["--picture", str(file), "--size=1000x700", "--step", "await uiTargetButtonMore", *words]
    expect("status of a picture after steps", run(*words)[0], 0)
expect("a picture after steps is the one without", steps.read_bytes() == picture.read_bytes(), False)
expect("settings file after a picture", settings.exists(), False)

# In black and white what has the keyboard has a second line in its own, the wide field a longer one than the button, and a radio
# button a black dot.
field, button, off = [black_of("--step", step) for step in
                      ("focus uiSettingsMenuAction", "focus uiSettingsButtonFind", "click uiSettingsRadioDisabled")]
expect("a longer line in the field", len(field) > len(button), True)
inner = field - button
across, top = range(min(x for x, _ in inner), max(x for x, _ in inner)), min(y for _, y in inner)
expect("a line around it", any(all((x, top - above) in field for x in across) for above in range(1, 6)), True)
expect("a dot that moves", [any(x > 500 and y < 44 for x, y in dots) for dots in (field - off, off - field)], [True, True])

# A machine where nobody is logged in has no folder for a session's sockets, and Qt complained of that.
bare = {name: value for name, value in environment.items() if name != "XDG_RUNTIME_DIR"}
drawn = subprocess.run([PROGRAM, "--picture", str(picture)], env=bare, capture_output=True, text=True, timeout=60)
expect("a picture without a session", (drawn.returncode, drawn.stderr), (0, ""))

# The panel comes from the program's own installation, whatever lies where the program is started.
planted = folder / "lib/drevix-settings/plugins"
planted.mkdir(parents=True)
(folder / "bin").mkdir()
for place in (planted, folder, folder / "bin"):
    (place / "libdrevixpane.so").write_bytes(b"no plug-in")
drawn = subprocess.run([PROGRAM, "--picture", str(picture)], env=environment, cwd=folder / "bin", capture_output=True,
                       timeout=60)
expect("a picture beside planted plug-ins", drawn.returncode, 0)

# Without a display, as over ssh, these stopped the program with Qt's list of platforms.
headless = {name: value for name, value in environment.items() if name not in ("QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY")}
for word, start in [("--version", "drevix-settings "), ("--help", "Usage: "), (f"--picture={picture}", "")]:
    said = subprocess.run([PROGRAM, word], env=headless, capture_output=True, text=True, timeout=60)
    expect(f"{word} without a display", (said.returncode, said.stdout.startswith(start), said.stderr), (0, True, ""))

# Wrong words: one line, nothing written.
for words, status in [
    (["--size", "big"], 2),
    (["--size", "0x600"], 2),
    (["--size", "9000x600"], 2),
    (["--page", "one"], 2),
    (["--scale", "0"], 2),  # these two were a crash
    (["--size", "8000x8000", "--scale", "8"], 2),
    (["--size", "4001x700", "--scale", "2"], 2),
    (["one", "two"], 2),
    (["--picture", str(picture), "--app", "nobody"], 1),
    (["--picture", str(picture), "--control", "buttonX"], 1),
    (["--picture", str(picture), "--pressed", "buttonX"], 1),
    (["--picture", str(picture), "--page", "9"], 1),
    (["--picture", str(picture), "--step", "jump"], 2),
    (["--picture", str(folder / "nowhere/x.png")], 1),
]:
    code, error = run(*words)
    expect(f"status of {words}", code, status)
    expect(f"lines that {words} gives", [line.startswith("drevix-settings: ") for line in error.splitlines()], [True])

# A step that cannot be done is told of after a while; the helper that the panel starts for steps may say something, too.
code, error = run("--picture", str(picture), "--step", "await nobody")
expect("a step that waits for nobody", (code, "await nobody" in error), (1, True))

# A second start ends at once and leaves the first running; the first saves the settings when it goes.
first = subprocess.Popen([PROGRAM], env=environment)
socket = folder / "drevix-settings"
deadline = time.monotonic() + 30
while not socket.exists() and time.monotonic() < deadline:
    time.sleep(0.05)
time.sleep(1)
expect("status of a second start", run()[0], 0)
expect("first instance still running", first.poll(), None)
first.send_signal(signal.SIGTERM)
expect("status of the first, told to end", first.wait(timeout=30), 0)
checked = subprocess.run([CONTROL, "--prefs", str(settings), "check"], env=environment, capture_output=True, text=True)
expect("check of the saved settings", (checked.returncode, checked.stderr), (0, ""))
print("drevix-settings starts, draws, refuses and saves as it should")
