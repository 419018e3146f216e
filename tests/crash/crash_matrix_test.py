#!/usr/bin/python3
"""Kills both programs at every system call that writes, and lets every one fail: what they leave is as before or as after.

Usage: crash_matrix_test.py TRACE_WRITES DREVIXCTL DREVIX_SETTINGS [--whole]
Without --whole a few of the points, other ones in every run; DREVIX_SEED chooses them again. With it all, and a table.
"""
import collections
import errno
import os
import random
import sys

import programs

FEW = 34  # points of a short run
SEED = int(os.environ.get("DREVIX_SEED", random.randrange(1 << 30)))
FAULTS = {"EIO": errno.EIO, "ENOSPC": errno.ENOSPC, "short": "short"}


def check_mended(world, before, after):
    """The next programs of ours find all as before or after, and put away what was left."""
    if programs.SETTINGS in world.state():
        world.must("check")
    world.must("list")
    torn = programs.differences(world.state(), before, after)
    assert not torn, f"torn after the next program: {torn}"


def check_kill(world, operation, at, deed, before, after):
    status, output, _ = world.trace(operation, "--at", str(at), "--do", deed)
    assert status == 137, f"status {status}: {output}"
    torn = programs.torn_now(world.state(), before, after)
    assert not torn, f"torn: {torn}"
    check_mended(world, before, after)
    check_left(world, operation, before, after)


def check_left(world, operation, before, after):
    """Once more, if it was not done, and nothing is left of the first time."""
    if operation != "recover" or world.state() != after:  # what was recovered is not overwritten
        status, output, _ = world.trace(operation)
        assert status == 0, f"once more: {status}, {output}"
    found = world.state()
    left = programs.strangers(found, before, after)
    assert not left, f"left over: {left}"
    wrong = [path for path in after if found.get(path) != after[path]]
    assert not wrong, f"not as after a run that nothing disturbs: {wrong}"


def check_fault(world, operation, at, what, ever, before, after):
    status, output, _ = world.trace(operation, "--at", str(at), "--do", str(FAULTS[what]), *["--ever"] * ever)
    found = world.state()
    # What cannot be mended yet is mended by the program after the next.
    torn = programs.torn_now(found, before, after, "kept" if operation == "mend" else output or "nothing")
    assert not torn, f"torn: {torn}, status {status}: {output}"
    assert status in (0, 1), f"status {status}: {output}"
    if operation == "panel":
        assert status == 0, f"status {status}: {output}"  # it does not end by a failure, but shows it
    elif status == 0:
        lost = [path for path in after if found.get(path) != after[path] and not output]
        assert not lost, f"reported as done, and is not: {lost}"
    else:
        assert output, "fails and does not say so"
    check_mended(world, before, after)
    check_left(world, operation, before, after)


def points(events, operation):
    """Everything that can be done to an operation: (what, function, arguments)."""
    for at, event in enumerate(events, 1):
        yield "kill", check_kill, (operation, at, "kill")
        if "bytes" in event and len(event["bytes"]) > 1:
            yield "kill", check_kill, (operation, at, "half")
        for what in FAULTS:
            if what != "short" or "bytes" in event:
                yield f"{what} once", check_fault, (operation, at, what, False)
                yield f"{what} for ever", check_fault, (operation, at, what, True)


def main():
    whole = "--whole" in sys.argv
    world = programs.World(*sys.argv[1:4])
    chosen = random.Random(SEED)
    done, failed = collections.defaultdict(collections.Counter), 0
    for operation in programs.chosen():
        world.prepare(operation)
        before = world.state()
        events = world.record(operation)
        after = world.state()
        if operation == "mend":
            before = after
        all_points = list(points(events, operation))
        share = max(2, FEW // len(programs.OPERATIONS)) if operation != "panel" else 2
        for what, check, arguments in all_points if whole else chosen.sample(all_points, share):
            world.reset()
            done[operation][what] += 1
            try:
                check(world, *arguments, before, after)
            except AssertionError as error:
                failed += 1
                event = events[arguments[1] - 1]
                print(f"{' '.join(map(str, arguments))} ({event['call']} {os.path.basename(event['path']).decode()}): {str(error).strip()}",
                      flush=True)
        if whole:
            print(f"{operation}: {len(events)} calls, {dict(done[operation])}", flush=True)
    world.close()
    total = sum((counter for counter in done.values()), collections.Counter())
    print(f"{total.total()} points, {failed} failed; {dict(total)}; DREVIX_SEED={SEED}")
    sys.exit(failed > 0)


main()
