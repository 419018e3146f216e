#!/usr/bin/python3
"""Makes the files Defaults.veltrana in resources/ and its folders of the tables in docs/factory-defaults.md, one for each
family of keyboard layouts.

With --check nothing is written: exits 1 when a file is not what the page makes. A row that cannot be read ends
either with the row's line number. The page says what the names of keys mean; docs/property-list.md has the form of
the file.
"""
import pathlib
import plistlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/factory-defaults.md"
RESOURCES = ROOT / "resources"
NAME = "Defaults.veltrana"

NO_KEY = 255
REST = ("ringXYRest", "ringZRest")  # the controls without a row: no action
CONTROLS = (
    "ringLeft ringRight ringUp ringDown ringXYRest ringCCW ringCW ringZRest tunerCCW tunerCW "
    "buttonV buttonP buttonI buttonII buttonIII"
).split()
# Actions that a row names without their code.
ACTIONS = {"keystroke": 32, "scroll up": 224, "scroll down": 225, "scroll left": 226, "scroll right": 227}
# The platform's classic event modifiers.
MODIFIERS = {"cmd": 0x0100, "shift": 0x0200, "alt": 0x0800, "ctrl": 0x1000}
# Virtual key codes; the characters stand where a US keyboard has them.
KEYS = {
    **dict(zip("asdfhgzxcv", range(0, 10))),
    **dict(zip("bqweryt123465=97-80]ou[ip", range(11, 36))),
    **dict(zip("lj'k;\\,/nm.", range(37, 48))),
    **{"return": 36, "tab": 48, "space": 49, "`": 50, "backspace": 51, "esc": 53},
    **{"home": 115, "pg up": 116, "fw del": 117, "end": 119, "pg dwn": 121},
    **{"left": 123, "right": 124, "down": 125, "up": 126},
    **dict(zip([f"f{n}" for n in range(1, 13)], [122, 120, 99, 118, 96, 97, 98, 100, 101, 109, 103, 111])),
    **{"num+.": 65, "num+*": 67, "num++": 69, "num+/": 75, "num+enter": 76, "num+-": 78},
    **dict(zip([f"num+{n}" for n in range(10)], [82, 83, 84, 85, 86, 87, 88, 89, 91, 92])),
}
# What is the same in every record.
DEVICE = {
    "clickEnabled": True,
    **{key: 100 for key in ("ringSensitivity", "ringSpeed", "tunerSensitivity")},
    **{"ringSensitivitySeparate": 0, **{f"ringSensitivity{axis}": 100 for axis in "XYZ"}},
    **{"ringSpeedSeparate": 0, **{f"ringSpeed{axis}": 100 for axis in "XYZ"}},
}


def read_families(lines):
    """The rows of each family of layouts, by its folder: what stands where the first one, of a US keyboard, has its own."""
    families = {}
    for line in lines:
        if re.match(r"\| [A-Z]\w+ +\| +(`|\|)", line):
            _, folder, *rows, _ = (cell.strip().strip("`") for cell in line.strip("|").split("|"))
            families[folder] = "".join(rows)
    if {len(rows) for rows in families.values()} != {len(families[""])}:
        raise KeyError("the families' rows")
    return families


def place_keys(families, folder):
    """The key codes of one family: a character that the layout types elsewhere than a US keyboard has its place there."""
    places = dict(zip(families[folder], families[""]))
    return {**KEYS, **{character: KEYS[place] for character, place in places.items() if character != "·"}}


def read_keys(text, keys):
    """The modifiers and the key code of "ctrl+num++"; without a key, those of "ctrl"."""
    bits = 0
    while text:
        word, _, rest = text.partition("+")
        if word not in MODIFIERS:
            return bits, keys[text]
        bits, text = bits | MODIFIERS[word], rest
    return bits, NO_KEY


def slot(action=0, modifiers=0, key=NO_KEY):
    used = {"action": action, "modifiers": modifiers, "keyCode": key}
    return {**used, "repeat": 0, "delay": 0, "menu": 0, "data": ""}


def read_slot(action, text, keys):
    code = re.search(r"\((\d+)\)$", action)
    command = int(code.group(1)) if code else ACTIONS[action]
    modifiers, key = read_keys(text, keys)
    if (key != NO_KEY) != (command == ACTIONS["keystroke"]):
        raise KeyError(f"{action} {text}")
    return slot(command, modifiers, key)


def read_record(name, line):
    """The record, its assignments still empty, of a line such as "File name `gimp`, signature `1`."."""
    signature = re.search(r"signature `(\w+)`", line).group(1)
    number = int(signature) if signature.isdigit() else int.from_bytes(signature.encode("mac_roman"), "big")
    file_name = re.search(r"File name `([^`]+)`", line)
    return {
        "signature": number,
        "fileName": file_name.group(1) if file_name else "",
        "configName": name if number else "",
        "active": True,
        "factory": True,
        "devices": {"veltrana": {**DEVICE, "assignments": {control: slot() for control in CONTROLS}}},
    }


def read_records(lines, key_codes):
    records, name, missing = [], "", set()
    for number, line in enumerate(lines, 1):
        try:
            if line.startswith("#") and missing:
                raise KeyError(f"{name} has no row for {', '.join(sorted(missing))}")
            if line.startswith("### "):
                name = line[4:]
            elif re.match(r".*signature `\w+`", line) and name:
                records.append(read_record(name, line))
                missing = set(CONTROLS) - set(REST)
            elif re.match(r"\| (ring|tuner|button)", line):
                control, action, keys, _ = (cell.strip() for cell in line.strip("|").split("|"))
                missing.remove(control)
                assignments = records[-1]["devices"]["veltrana"]["assignments"]
                assignments[control] = read_slot(action, keys.strip("`"), key_codes)
        except (KeyError, ValueError) as error:
            sys.exit(f"{PAGE.relative_to(ROOT)}:{number}: cannot read {error}")
    if missing or not records:
        sys.exit(f"{PAGE.relative_to(ROOT)}: its last table is not whole")
    return records


def make_files():
    lines = PAGE.read_text(encoding="utf-8").splitlines()
    families = read_families(lines)
    return {
        RESOURCES / folder / NAME: plistlib.dumps(read_records(lines, place_keys(families, folder)), sort_keys=False)
        for folder in families
    }


def main():
    if sys.argv[1:] not in ([], ["--check"]):
        sys.exit("usage: scripts/make_defaults.py [--check]")
    for file, made in make_files().items():
        if not sys.argv[1:]:
            file.parent.mkdir(exist_ok=True)
            file.write_bytes(made)
        elif not file.is_file() or file.read_bytes() != made:
            sys.exit(f"{file} is not what {PAGE.name} makes: run scripts/make_defaults.py")


main()
