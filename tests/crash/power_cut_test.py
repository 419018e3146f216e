#!/usr/bin/python3
"""Cuts the power in memory: what both programs do to the disk is written down once, and every state that a disk can be left
in at any moment is made of it, and read by the real program. All must be as before or as after, or be put right by it.

Usage: power_cut_test.py TRACE_WRITES DREVIXCTL DREVIX_SETTINGS [--whole]
Without --whole some of the states, other ones in every run; DREVIX_SEED chooses them again.

What reaches the disk: all that was flushed, and of the rest, for each write, all of it, nothing, or any of its 512-byte
sectors, in any order; a length that was set, or not. Of the names made, changed and removed, "in order" any number of the
first ones, as file systems with a journal do it, of which every flush writes all that was pending; "at will" any of those whose
folder was not flushed since, which is all that POSIX promises.
"""
import os
import random
import shutil
import sys

import programs

SECTOR = 512
SEED = int(os.environ.get("DREVIX_SEED", random.randrange(1 << 30)))
FEW = 26  # states of a short run
VARIANTS = 40  # tries to find another state after each call, in the whole run
CHANGES_NAMES = {"open", "mkdir", "rename", "unlink", "symlink", "link"}
NO_CHANGE = {"fchmod", "chmod", "fchown"}  # of what is looked at


class Disk:
    """Names, and what they stand for: a file's number, the target of a link as bytes, or None for a folder."""

    def __init__(self, root, names, files):
        self.root, self.names, self.files = root, dict(names), dict(files)

    def write(self, inode, bytes_, offset):
        old = self.files.get(inode, b"").ljust(offset, b"\0")
        self.files[inode] = old[:offset] + bytes_ + old[offset + len(bytes_):]

    def rename(self, event):
        kind, path = event["call"], event["path"]
        if kind == "open":
            self.names.setdefault(path, event["inode"])
        elif kind == "mkdir":
            self.names.setdefault(path, None)
        elif kind == "symlink":
            self.names.setdefault(path, event["other"])
        elif kind == "unlink":
            self.names.pop(path, None)
        elif path in self.names:  # of a name that never came to be nothing comes
            self.names[event["other"]] = self.names.pop(path) if kind == "rename" else self.names[path]

    def tree(self):
        """Every name that can be reached, with its bytes."""
        found = {}
        for path in sorted(self.names):
            parent = os.path.dirname(path)
            if parent == self.root or found.get(parent, b"") is None:
                there = self.names[path]
                found[path] = ("file", self.files.get(there, b"")) if is_file(there) else there
        return found


def is_file(there):
    return there is not None and not isinstance(there, bytes)


def disk_of(root):
    names, files = {}, {}
    for folder, folders, leaves in os.walk(os.fsencode(root)):
        for name in folders:
            names[os.path.join(folder, name)] = None
        for name in leaves:
            path = os.path.join(folder, name)
            if os.path.islink(path):
                names[path] = os.readlink(path)
            else:
                names[path] = os.stat(path).st_ino
                with open(path, "rb") as file:
                    files[names[path]] = file.read()
    return Disk(os.fsencode(root), names, files)


def apply(disk, event, chance):
    """A write or a length of which some reaches the disk; chance None: all."""
    if event["call"] in ("ftruncate", "fallocate", "truncate"):
        if chance is None or chance.random() < 0.5:
            disk.files[event["inode"]] = disk.files.get(event["inode"], b"")[:event["value"]].ljust(event["value"], b"\0")
        return
    bytes_, offset = event["bytes"][:event["result"]], event["offset"]
    fate = "all" if chance is None else chance.choice(["all", "nothing", "sectors", "sectors"])
    if fate == "all":
        disk.write(event["inode"], bytes_, offset)
    elif fate == "sectors":
        start = offset
        while start < offset + len(bytes_):
            end = min((start // SECTOR + 1) * SECTOR, offset + len(bytes_))
            if chance.random() < 0.5:
                disk.write(event["inode"], bytes_[start - offset:end - offset], start)
            start = end


def is_flushed(event, later, in_order):
    if event["call"] not in CHANGES_NAMES:
        return any(e["call"] == "fsync" and e["inode"] == event["inode"] for e in later)
    if in_order:
        return any(e["call"] == "fsync" for e in later)
    changed = [event["path"]] + ([event["other"]] if event["call"] in ("rename", "link") else [])
    return all(any(e["call"] == "fsync" and e["path"] == os.path.dirname(path) for e in later) for path in changed)


def cut(start, events, in_order, chance):
    """The disk after these calls and a power cut."""
    disk = Disk(start.root, start.names, start.files)
    pending = [not is_flushed(event, events[i + 1:], in_order) for i, event in enumerate(events)]
    names = [i for i, event in enumerate(events) if event["call"] in CHANGES_NAMES and pending[i]]
    lost = set(names[chance.randint(0, len(names)):]) if in_order else {i for i in names if chance.random() < 0.5}
    keeps_all = chance.random() < 0.25
    for i, event in enumerate(events):
        if event["call"] in CHANGES_NAMES:
            if i not in lost:
                disk.rename(event)
        elif event["call"] != "fsync":
            apply(disk, event, chance if pending[i] and not keeps_all else None)
    return disk.tree()


def materialise(root, tree):
    shutil.rmtree(root)
    os.mkdir(root)
    for path, there in tree.items():
        if there is None:
            os.makedirs(path, exist_ok=True)
        elif isinstance(there, tuple):
            with open(path, "wb") as file:
                file.write(there[1])
        else:
            os.symlink(there, path)


def judge(world, before, after, is_done):
    found = world.state()
    torn = programs.torn_now(found, before, after)
    assert not torn, f"torn: {torn}"
    if programs.SETTINGS in found:
        world.must("check")
    world.must("list")
    found = world.state()
    torn = programs.differences(found, {} if is_done else before, after)
    assert not torn, f"{'lost' if is_done else 'torn'} after the next program: {torn}"


def main():
    whole = "--whole" in sys.argv
    chance = random.Random(SEED)
    world = programs.World(*sys.argv[1:4])
    tried, failed = 0, 0
    for operation in programs.chosen():
        world.prepare(operation)
        before = world.state()
        start = disk_of(world.root)
        events = [event for event in world.record(operation)
                  if event["result"] >= 0 and event["call"] not in NO_CHANGE and b"config/halcyra" not in event["path"]]
        after = world.state()
        if operation == "mend":
            before = after
        moments = [(done, in_order) for done in range(len(events) + 1) for in_order in (True, False)]
        moments = moments * VARIANTS if whole else chance.sample(moments, FEW // len(programs.OPERATIONS))
        seen = {}
        for done, in_order in moments:
            tree = cut(start, events[:done], in_order, chance)
            seen.setdefault(repr(sorted(tree.items())), (done, in_order, tree))
        states = list(seen.values())
        for done, in_order, tree in states:
            tried += 1
            materialise(world.root, tree)
            world.renumber_notes()
            try:
                judge(world, before, after, done == len(events))
            except AssertionError as error:
                failed += 1
                last = events[done - 1]
                print(f"{operation} after {done} calls ({last['call']} {os.path.basename(last['path']).decode()}), names "
                      f"{'in order' if in_order else 'at will'}: {error}", flush=True)
        if whole:
            print(f"{operation}: {len(events)} calls, {len(states)} states", flush=True)
    world.close()
    print(f"{tried} states, {failed} failed; DREVIX_SEED={SEED}")
    sys.exit(failed > 0)


main()
