#!/usr/bin/python3
"""What the helper costs on an X server without a screen: how long a key takes from a device's event to a window, beside a program
that only copies the key; what it does and needs when nothing happens.

Usage: measure.py BUILD_FOLDER [PRESSES [SECONDS]]    default: 5000 presses, 60 s of idling
"""
import os
import pathlib
import re
import statistics
import subprocess
import sys
import time

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
PRESSES, SECONDS = (int(sys.argv[i]) if len(sys.argv) > i else default for i, default in ((1, 5000), (2, 60)))
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tests/support"))
from acting import ActingCase  # noqa: E402

LATENCY = BUILD / "bin/key_latency"


class Bench(ActingCase):
    helper_program = BUILD / "share/drevix-settings/DrevixHelper.app/Contents/Linux/DrevixHelper"
    control_program = BUILD / "bin/drevixctl"


def percentile(times, part):
    return sorted(times)[int(len(times) * part) - 1]


def processes():
    """The helper, and the one that lets its keys go."""
    found = {"helper": Bench.helper.pid}
    for path in pathlib.Path("/proc").iterdir():
        try:
            if path.name.isdigit() and (path / "comm").read_text() == "drevix-keys\n" and \
                    f"HOME={Bench.path}\0" in (path / "environ").read_text():
                found["key keeper"] = int(path.name)
        except OSError:
            pass  # it has ended, or is another's
    return found


def wake_ups(process):
    return sum(int(count) for count in re.findall(r"ctxt_switches:\s*(\d+)", pathlib.Path(f"/proc/{process}/status").read_text()))


def own_memory(process):
    return int(re.search(r"Private_Dirty:\s*(\d+)", pathlib.Path(f"/proc/{process}/smaps_rollup").read_text())[1])


def main():
    Bench.prepare()
    read, write = os.pipe()
    Bench.start("Xvfb", "-displayfd", str(write), "-screen", "0", "640x480x24", "-nolisten", "tcp", pass_fds=[write])
    os.close(write)
    with os.fdopen(read) as display:
        Bench.environment["DISPLAY"] = ":" + display.readline().strip()
    Bench.until(lambda: (Bench.path / "bus").exists())
    Bench.ctl("assign", "buttonI", "keystroke", "F5")
    Bench.start_helper()
    os.mkfifo(Bench.path / "copied")
    Bench.start(LATENCY, "--copy", Bench.path / "copied")
    output = subprocess.run([LATENCY, str(PRESSES), Bench.path / "dial", Bench.path / "copied"], env=Bench.environment, check=True,
                            stdout=subprocess.PIPE, text=True).stdout
    ours, copied = ([float(word) for word in line.split()] for line in output.splitlines())
    print(f"| Event to key, {PRESSES} presses | Ours | Copying one key | Ratio | Target |\n|---|---|---|---|---|")
    for name, measure in (("median", statistics.median), ("99 %", lambda times: percentile(times, 0.99))):
        print(f"| {name} | {measure(ours) / 1000:.3f} ms | {measure(copied) / 1000:.3f} ms | {measure(ours) / measure(copied):.2f} | 1.3 |")
    time.sleep(2)
    before = {name: wake_ups(process) for name, process in processes().items()}
    time.sleep(SECONDS)
    print(f"\n| Idle | Wake-ups in {SECONDS} s | Own memory |\n|---|---|---|")
    for name, process in processes().items():
        print(f"| {name} | {wake_ups(process) - before[name]} | {own_memory(process)} KiB |")
    Bench.end_children()


try:
    main()
finally:
    Bench.doClassCleanups()
