#!/usr/bin/python3
"""The completion in a real bash with bash-completion. Usage: completion_test.py DREVIXCTL"""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM = pathlib.Path(sys.argv.pop(1)).resolve()
SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "cli/drevixctl.bash"

# Lets bash split the line as readline would, and shows what the completion offers, one word on a line.
ASK = r"""
source /usr/share/bash-completion/bash_completion
source "$1"
set -- "$2"
COMP_LINE=$1 COMP_POINT=${#1} COMP_TYPE=9
mapfile -t COMP_WORDS < <(python3 -c 'import re, sys
print("\n".join(re.findall(r"=|(?:\"[^\"]*\"?|\\.|[^\s=])+", sys.argv[1]) + ([""] if sys.argv[1].endswith(" ") else [])))' "$1")
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
_drevixctl
printf '%s\n' "${COMPREPLY[@]}"
"""


class Completion(unittest.TestCase):
    def offered(self, line):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        path = pathlib.Path(folder.name)
        (path / "a file").write_text("")
        program = path / "My Painter"
        program.write_text("")
        program.chmod(0o755)
        hotkeys = path / "Library/Preferences/Drevix Tarnix Preferences/_System_/~hotkeys"
        hotkeys.parent.mkdir(parents=True)
        hotkeys.write_text("<HotKeys TargetApp='x'><HotKey><Menu>Sharpen &amp; Blur</Menu></HotKey><HotKey/></HotKeys>")
        environment = {**os.environ, "XDG_CONFIG_HOME": f"{path}/config", "XDG_STATE_HOME": f"{path}/state", "HOME": str(path),
                       "PATH": f"{PROGRAM.parent}:{os.environ['PATH']}"}
        subprocess.run([PROGRAM, "add", program], env=environment, check=True, capture_output=True)
        result = subprocess.run(["bash", "--norc", "-c", ASK, "bash", SCRIPT, line], env=environment, cwd=path,
                                capture_output=True, text=True, timeout=60, check=False)
        self.assertEqual(result.stderr, "", line)
        return [word for word in result.stdout.splitlines() if word]

    def test_words(self):
        for line, expected in [
            ("drevixctl ex", ["export"]),
            ("drevixctl --json re", ["restore", "recover", "release"]),
            ("drevixctl dev", ["devices"]),
            ("drevixctl assign tuner", ["tunerCCW", "tunerCW"]),
            ("drevixctl assign buttonI Scroll\\ u", ["Scroll\\ up"]),
            ('drevixctl assign buttonI "Scroll u', ["Scroll up"]),
            ("drevixctl set ringSensitivity", ["ringSensitivity"] + [f"ringSensitivity{x}" for x in ["Separate", *"XYZ"]]),
            ("drevixctl --json set active t", ["true"]),
            ("drevixctl defaults ", ["ring", "tuner", "buttons"]),
            ("drevixctl assign buttonI menu Sh", ["Sharpen\\ \\&\\ Blur"]),
            ("drevixctl show --app My", ["My\\ Painter"]),
            ("drevixctl show --app=My", ["My\\ Painter"]),
            ("drevixctl --app My\\ Painter del", ["delete"]),
            ("drevixctl export --a", ["--app", "--all"]),
            ("drevixctl assign ringCW scroll up --repeat 3", ["3", "30"]),
            ("drevixctl list --a", []),
            ("drevixctl help che", ["check"]),
            ("drevixctl import a", ["a file"]),
            ("drevixctl assign buttonI open a", ["a file"]),
            ("drevixctl frobnicate ", []),
        ]:
            self.assertEqual(self.offered(line), expected, line)


unittest.main()
