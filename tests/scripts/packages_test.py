#!/usr/bin/python3
"""Runs scripts/packages on a system of its own, with apt's files in a scratch folder and every package there but not asked for.

Usage: packages_test.py PACKAGES
Ends with 77 where there is no apt.
"""
import fcntl
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import time

SCRIPT = pathlib.Path(sys.argv[1])
SKIPPED = 77
HELD_SECONDS = 1.5

if not shutil.which("apt-get"):
    print("skipped: there is no apt")
    sys.exit(SKIPPED)


def make_system(folder):
    for name in ("bin", "etc/apt.conf.d", "etc/sources.list.d", "etc/preferences.d", "state/lists/partial", "cache/archives/partial", "dpkg"):
        (folder / name).mkdir(parents=True)
    (folder / "etc/sources.list").touch()
    (folder / "apt.conf").write_text(
        f'Dir::Etc "{folder}/etc"; Dir::State "{folder}/state"; Dir::State::status "{folder}/dpkg/status"; Dir::Cache "{folder}/cache";\n')
    words = re.search(r"run_packages='(.*?)'", SCRIPT.read_text(), re.DOTALL)[1].split()
    (folder / "dpkg/status").write_text("".join(
        f"Package: {word}\nStatus: install ok installed\nVersion: 1\nArchitecture: all\nMaintainer: x <x@y>\nDescription: x\n\n" for word in words))
    for name, text in (("dpkg-query", "exit 1"), ("sudo", 'exec "$@"')):
        (folder / "bin" / name).write_text(f"#!/bin/sh\n{text}\n")
        (folder / "bin" / name).chmod(0o755)
    return dict(os.environ, APT_CONFIG=f"{folder}/apt.conf", PATH=f"{folder}/bin:{os.environ['PATH']}")


with tempfile.TemporaryDirectory(prefix="drevix-packages-") as name:
    folder = pathlib.Path(name)
    environment = make_system(folder)
    # A lock that another program held, as the upgrade of a fresh machine does, made it fail at once.
    for lock in ("state/lists/lock", "dpkg/lock-frontend"):
        with open(folder / lock, "a") as file:
            fcntl.lockf(file, fcntl.LOCK_EX)
            started = time.monotonic()
            threading.Timer(HELD_SECONDS, fcntl.lockf, (file, fcntl.LOCK_UN)).start()
            done = subprocess.run([SCRIPT, "run"], env=environment, capture_output=True, text=True, timeout=60)
            if done.returncode != 0 or time.monotonic() - started < HELD_SECONDS:
                sys.exit(f"{lock} held: {done.returncode} after {time.monotonic() - started:.1f} s\n{done.stdout}{done.stderr}")
    # Any other failure is no reason to wait.
    (folder / "dpkg/status").write_text("")
    done = subprocess.run([SCRIPT, "run"], env=environment, capture_output=True, text=True, timeout=60)
    if done.returncode != 1 or "Unable to locate package" not in done.stderr:
        sys.exit(f"an unknown package: {done.returncode}\n{done.stdout}{done.stderr}")
print("scripts/packages waits for the package manager")
