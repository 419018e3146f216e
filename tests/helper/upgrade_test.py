#!/usr/bin/python3
"""An upgrade replaces the program of a running helper: the new one takes its place. A removed one ends.

Usage: upgrade_test.py DREVIXHELPER
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

HELPER = pathlib.Path(sys.argv[1]).resolve()
LONGEST = 60  # seconds
LOOKS_AFTER = 5  # seconds

folder = pathlib.Path(tempfile.mkdtemp(prefix="drevix-upgrade-"))
children = []


def until(what, condition):
    end = time.monotonic() + LONGEST
    while not condition():
        if time.monotonic() > end:
            sys.exit(f"not within {LONGEST} s: {what}")
        time.sleep(0.05)


def main():
    (folder / "config").mkdir()
    (folder / "share").mkdir()
    (folder / "share/drevix-settings").symlink_to(HELPER.parents[3])
    program = folder / "lib/drevix-settings/DrevixHelper"
    program.parent.mkdir(parents=True)
    shutil.copy2(HELPER, program)
    environment = {"PATH": os.environ["PATH"], "HOME": str(folder), "XDG_CONFIG_HOME": str(folder / "config"),
                   "XDG_STATE_HOME": str(folder / "state"), "LC_ALL": "C.UTF-8", "ASAN_OPTIONS": "detect_leaks=0",
                   "DBUS_SESSION_BUS_ADDRESS": f"unix:path={folder}/bus"}
    children.append(subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address=unix:path={folder}/bus"],
                                     env=environment))
    until("the bus", (folder / "bus").exists)
    output = folder / "output"
    with open(output, "wb") as out:
        helper = subprocess.Popen([program, "--describe"], env=environment, stdout=out, stderr=out)
    children.append(helper)
    until("the helper is ready", lambda: output.read_text().count("ready") == 1)

    newer = program.with_name("DrevixHelper.dpkg-new")
    program.rename(newer)  # and back, as in an upgrade that failed
    newer.rename(program)
    time.sleep(LOOKS_AFTER + 2)
    if output.read_text().count("ready") != 1:
        sys.exit("the same program was started anew")
    shutil.copy2(HELPER, newer)
    newer.rename(program)
    until("the new program runs", lambda: output.read_text().count("ready") == 2)
    running = os.stat(f"/proc/{helper.pid}/exe").st_ino
    if running != program.stat().st_ino:
        sys.exit("the old program runs on")

    program.unlink()
    until("the helper ends", lambda: helper.poll() is not None)
    if helper.returncode != 0:
        sys.exit(f"exit status {helper.returncode}: {output.read_text()}")


try:
    main()
finally:
    for child in children:
        child.kill()
    shutil.rmtree(folder, ignore_errors=True)
