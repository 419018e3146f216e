#!/usr/bin/python3
"""Lets every request for memory of drevixctl fail in turn, once and from then on: it ends by itself, says what it has not done,
and leaves what it changes as before or as after. Some of those of the panel that is told to end and saves fail too: it may end
as Qt does then, but what it writes must be as before or as after.

Usage: memory_test.py FAIL_MEMORY DREVIXCTL DREVIX_SETTINGS [--whole]
Without --whole some of the requests, other ones in every run; DREVIX_SEED chooses them again.
"""
import collections
import os
import random
import re
import subprocess
import sys

import programs

SEED = int(os.environ.get("DREVIX_SEED", random.randrange(1 << 30)))
FEW = 80  # runs of a short run
OF_PANEL, FEW_OF_PANEL = 300, 6  # with --whole, and without
AT_ITS_END = 0.02  # of the panel's requests: when it saves
NEXT = re.compile(r"^drevixctl: ", re.M)
# What a program says when the settings are neither as before nor as after: without what the companion's file says, or of some
# records that were imported only a part.
OTHERS = re.compile("keep what they have|the others were imported")


def counted(world, library, *words):
    """A command whose requests are counted in a file of its own: programs that an earlier one started write to theirs."""
    (world.base / "requests").unlink(missing_ok=True)
    return ["sh", "-c", 'exec 3>>"$1"; shift; exec env LD_PRELOAD="$@"', "sh", str(world.base / "requests"), library, *words]


def requests_of(world):
    """The number of requests of the command that ran last; the lower ones are of programs that it started."""
    return max(map(int, (world.base / "requests").read_text().split()), default=0)


def run(world, library, operation, **variables):
    """The status, what is said, and the number of requests."""
    words = [word.format(world.root) for word in programs.OPERATIONS[operation]]
    command = counted(world, library, world.control, *words)
    done = subprocess.run(command, env={**world.environment, **variables}, capture_output=True, timeout=programs.TIMEOUT, check=False)
    return done.returncode, done.stderr.decode(errors="replace"), requests_of(world)


def run_panel(world, library, **variables):
    """The status, negative for a signal or where it hung, and the number of requests."""
    (world.base / "run/drevix-settings").unlink(missing_ok=True)
    with subprocess.Popen(counted(world, library, world.panel), env={**world.environment, **variables}, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as panel:
        programs.end_when_ready(panel, lambda: panel.pid)
        try:
            panel.wait(programs.TIMEOUT)
        except subprocess.TimeoutExpired:
            panel.kill()
    return panel.returncode, requests_of(world)


def check_panel(world, library, chance, count):
    """How its runs ended, and how many left something torn."""
    ends, failed = collections.Counter(), 0
    world.prepare("panel")
    before = world.state()
    status, requests = run_panel(world, library)
    assert status == 0 and requests > 0, f"panel: {status}, {requests} requests"
    after = world.state()
    for number in range(count):
        first = int(requests * (1 - AT_ITS_END)) if number % 2 else 1
        at, ever = chance.randint(first, requests), chance.random() < 0.5
        world.reset()
        status, _ = run_panel(world, library, DREVIX_FAIL_AT=str(at), **({"DREVIX_FAIL_EVER": "1"} if ever else {}))
        saved = world.state().get(programs.SETTINGS) != before[programs.SETTINGS]
        ends[f"{'ended' if status == 0 else f'status {status}'}, {'saved' if saved else 'not saved'}"] += 1
        torn = programs.torn_now(world.state(), before, after)
        world.must("check")
        world.must("list")
        torn += programs.differences(world.state(), before, after)
        if torn:
            failed += 1
            print(f"panel, request {at}{' and all later ones' if ever else ''}: torn: {torn}, status {status}", flush=True)
    print(f"panel: {requests} requests, {count} of them failed: {dict(ends)}", flush=True)
    return failed


def check(world, library, operation, at, ever, before, after):
    variables = {"DREVIX_FAIL_AT": str(at), **({"DREVIX_FAIL_EVER": "1"} if ever else {})}
    status, said, _ = run(world, library, operation, **variables)
    assert status in (0, 1), f"status {status}: {said}"
    found = world.state()
    torn = programs.torn_now(found, before, after, said or "nothing")
    if OTHERS.search(said):
        world.must("check")
        torn = [path for path in torn if path != programs.SETTINGS]
    assert not torn, f"torn: {torn}, status {status}: {said}"
    if status == 0 and not said:
        lost = [path for path in after if found.get(path) != after[path]]
        assert not lost, f"reported as done, and is not: {lost}"
    assert status == 0 or NEXT.search(said), f"status {status}, and says: {said}"
    world.must("list")
    torn = set(programs.differences(world.state(), before, after)) - ({programs.SETTINGS} if OTHERS.search(said) else set())
    assert not torn, f"torn after the next program: {torn}"


def main():
    library, control, panel = sys.argv[1:4]
    if b"asan" in subprocess.run(["ldd", control], capture_output=True, check=True).stdout:
        sys.exit(77)  # the sanitizer has an allocator of its own
    whole, chance = "--whole" in sys.argv, random.Random(SEED)
    world = programs.World("", control, panel)
    operations = [operation for operation in programs.chosen() if operation not in ("panel", "mend")]
    tried, failed = 0, 0
    for operation in operations:
        world.prepare(operation)
        before = world.state()
        status, said, requests = run(world, library, operation)
        assert status == 0 and requests > 0, f"{operation}: {status}, {said}"
        after = world.state()
        points = [(at, ever) for at in range(1, requests + 1) for ever in (False, True)]
        for at, ever in points if whole else chance.sample(points, FEW // len(operations)):
            world.reset()
            tried += 1
            try:
                check(world, library, operation, at, ever, before, after)
            except AssertionError as error:
                failed += 1
                print(f"{operation}, request {at}{' and all later ones' if ever else ''}: {str(error).strip()}", flush=True)
        if whole:
            print(f"{operation}: {requests} requests", flush=True)
    if "panel" in programs.chosen():
        count = OF_PANEL if whole else FEW_OF_PANEL
        tried, failed = tried + count, failed + check_panel(world, library, chance, count)
    world.close()
    print(f"{tried} runs, {failed} failed; DREVIX_SEED={SEED}")
    sys.exit(failed > 0)


main()
