#!/usr/bin/python3
"""Types the drevixctl commands of README.md, each in a shell and in their order, on scratch settings with a helper that acts
without a device; and looks whether every file that README.md links is there.

Usage: readme_test.py README DREVIXCTL DREVIXHELPER MAPS
Ends with 77 without Xvfb.
"""
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

README, CONTROL, HELPER, MAPS = (pathlib.Path(word).resolve() for word in sys.argv[1:])
SHOWS_UNTIL_ENDED = {"drevixctl watch"}
ENTRY = "[Desktop Entry]\nType=Application\nName=VLC\nExec=vlc\n"

if not shutil.which("Xvfb"):
    print("skipped: Xvfb is needed")
    sys.exit(77)
folder = pathlib.Path(tempfile.mkdtemp(prefix="drevix-readme-"))
children = []
text = README.read_text()


def start(*command, **options):
    children.append(subprocess.Popen(command, env=environment, cwd=folder, **options))
    return children[-1]


def until(what, condition):
    end = time.monotonic() + 60
    while not condition():
        if time.monotonic() > end:
            sys.exit(f"not within a minute: {what}")
        time.sleep(0.05)


def type_command(command):
    """What a person would type, with files of his own for those that the page only names."""
    typed = command.replace("/usr/share/applications/vlc.desktop", str(folder / "vlc.desktop"))
    typed = typed.replace("maps FILE", f"maps {MAPS}/plain-dial.map").replace("FILE --to OUT", "all-settings --to recovered")
    if command in SHOWS_UNTIL_ENDED:
        process = start("sh", "-c", "exec " + typed, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        time.sleep(1)
        process.send_signal(signal.SIGINT)
        said = process.communicate(timeout=60)[0].decode()
        return process.poll() in (0, -signal.SIGINT), said
    done = subprocess.run(typed, shell=True, env=environment, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=60)
    return done.returncode == 0, done.stdout


def main():
    global environment
    missing = [link for link in re.findall(r"\]\(([^)#]+)\)", text) if "://" not in link and not (README.parent / link).exists()]
    if missing:
        sys.exit(f"README.md links what is not there: {missing}")

    (folder / "bin").mkdir()
    (folder / "config").mkdir()
    (folder / "Documents").mkdir()
    (folder / "bin/drevixctl").symlink_to(CONTROL)
    (folder / "vlc.desktop").write_text(ENTRY)
    environment = {"PATH": f"{folder}/bin:{os.environ['PATH']}", "HOME": str(folder), "XDG_CONFIG_HOME": str(folder / "config"),
                   "XDG_STATE_HOME": str(folder / "state"), "XDG_RUNTIME_DIR": str(folder), "LC_ALL": "C.UTF-8",
                   "ASAN_OPTIONS": "detect_leaks=0", "DBUS_SESSION_BUS_ADDRESS": f"unix:path={folder}/bus"}
    start("dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address=unix:path={folder}/bus")
    read, write = os.pipe()
    start("Xvfb", "-displayfd", str(write), "-screen", "0", "640x480x24", "-nolisten", "tcp", pass_fds=[write], stderr=subprocess.DEVNULL)
    os.close(write)
    with os.fdopen(read) as display:
        environment["DISPLAY"] = ":" + display.readline().strip()
    until("a bus", (folder / "bus").exists)
    with open(folder / "said", "wb") as output:
        start(HELPER, "--dry-run", stdout=output, stderr=output)
    until("the helper", lambda: "ready" in (folder / "said").read_text())

    commands = re.findall(r"^\| [^|]+ \| `(drevixctl [^`]+)` \|$", text, re.MULTILINE)
    if len(commands) < 15:
        sys.exit(f"only {len(commands)} commands were found")
    failed = []
    for command in commands:
        if "recover" in command:
            shutil.copy(folder / "config/com.halcyra.drevix.prefs", folder / "all-settings")
        worked, said = type_command(command)
        print(f"$ {command}\n{said}")
        if not worked:
            failed.append(command)
    if failed:
        sys.exit(f"these failed: {failed}")


try:
    main()
finally:
    for child in children:
        child.kill()
    shutil.rmtree(folder, ignore_errors=True)
