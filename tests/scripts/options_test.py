#!/usr/bin/python3
"""Each option of the programs is in --help, in the manual and in the completions, and nothing else is there.

Usage: options_test.py DREVIXHELPER DREVIXCTL DREVIX-SETTINGS
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

HELPER, DREVIXCTL, SETTINGS = (pathlib.Path(path).resolve() for path in sys.argv[1:4])
del sys.argv[1:4]
ROOT = pathlib.Path(__file__).resolve().parents[2]
MANUALS = {HELPER: "helper/DrevixHelper.1", DREVIXCTL: "cli/drevixctl.1", SETTINGS: "host/drevix-settings.1"}
OF_QT = {"--help-all"}  # which the manual names too

# What bash offers for a line's last word.
BASH = r"""
source /usr/share/bash-completion/bash_completion
source "$1"
shift
COMP_LINE="$*" COMP_POINT=${#COMP_LINE} COMP_TYPE=9 COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
$(complete -p "${1##*/}" | sed 's/.* -F \(\S*\) .*/\1/') "$1" "${!#}" "${@: -2:1}"
printf '%s\n' "${COMPREPLY[@]}"
"""
# The same of zsh, which asks the function for drevixctl; the others are read by zsh's own.
ZSH = r"""
compadd() { print -l -- "${(@P)2}" }
_files() { }
words=("${@:2}")
CURRENT=$#words
source "$1"
"""


def run(*command, **more):
    with tempfile.TemporaryDirectory() as home:
        environment = {**os.environ, "HOME": home, "XDG_CONFIG_HOME": home, "XDG_STATE_HOME": home, "XDG_RUNTIME_DIR": home, "LC_ALL": "C",
                       "QT_QPA_PLATFORM": "offscreen", "ASAN_OPTIONS": "detect_leaks=0"}
        return subprocess.run([str(word) for word in command], env=environment, capture_output=True, text=True, timeout=60, check=True, **more).stdout


def options(text):
    return set(re.findall(r"(?<![\w-])--[a-z][a-z-]*", text))


def in_help(program):
    """Those at the start of a line of --help; of drevixctl, for each command too."""
    helps = [run(program, "--help")]
    if program == DREVIXCTL:
        helps += [run(program, "help", command) for command in run(program, "__complete", "").split()]
    return {option for text in helps for line in text.splitlines() if re.match(r"  (-\w, )?--", line) for option in options(line.split("  ")[1])}


def in_bash(script, *words):
    return options(run("bash", "--norc", "-c", BASH, "bash", ROOT / script, *words))


class Options(unittest.TestCase):
    def test_manual(self):
        for program, page in MANUALS.items():
            with self.subTest(program=program.name):
                text = (ROOT / page).read_text()
                self.assertEqual({"-" + flag for flag in re.findall(r"\bFl (-[a-z][a-z-]*)", text)} | OF_QT, in_help(program) | OF_QT)

    def test_bash(self):
        for program in (HELPER, SETTINGS):
            with self.subTest(program=program.name):
                self.assertEqual(in_bash("packaging/drevix-settings.bash", program, "--"), in_help(program))
        self.assertEqual(in_bash("packaging/drevix-settings.bash", HELPER, "--dev"), {"--device", "--devices"})
        self.of_drevixctl(lambda *words: in_bash("cli/drevixctl.bash", *words))

    def test_zsh(self):
        self.of_drevixctl(lambda *words: options(run("zsh", "-f", "-c", ZSH, "zsh", ROOT / "packaging/_drevixctl", *words)))
        run("zsh", "-f", "-n", ROOT / "packaging/_drevix-settings")

    def of_drevixctl(self, offered):
        always = options(run(DREVIXCTL, "help").split("\n\n")[-2])
        self.assertEqual(offered(DREVIXCTL, "--"), always)
        for command in run(DREVIXCTL, "__complete", "").split():
            with self.subTest(command=command):
                usage = run(DREVIXCTL, "help", command).partition("\n")[0]
                self.assertEqual(offered(DREVIXCTL, command, "--"), options(usage) | always)


if __name__ == "__main__":
    unittest.main()
