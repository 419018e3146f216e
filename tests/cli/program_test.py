#!/usr/bin/python3
"""The real drevixctl, as other programs see it. Usage: program_test.py DREVIXCTL"""
import json
import os
import pathlib
import plistlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM = sys.argv.pop(1)


class Program(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.path = pathlib.Path(self.folder.name)
        self.environment = {**os.environ, "XDG_CONFIG_HOME": str(self.path / "config"), "XDG_STATE_HOME": str(self.path / "state"), "HOME": str(self.path), "LC_ALL": "C"}

    def run_program(self, *arguments, **options):
        return subprocess.run([PROGRAM, *arguments], env=self.environment, capture_output=True, timeout=60, **options)

    def read(self, *arguments):
        result = self.run_program(*arguments)
        self.assertEqual((result.returncode, result.stderr), (0, b""), arguments)
        return result.stdout.decode()

    def test_every_json_output_is_json_and_every_table_fits_a_terminal(self):
        records = json.loads(self.read("list", "--json"))
        self.assertEqual(records[0]["name"], "Global Settings")
        self.assertGreater(len(records), 1)
        self.assertEqual({frozenset(record) for record in records},
                         {frozenset(["name", "fileName", "signature", "factory", "active", "number"])})
        names = [record["fileName"] for record in records[1:]]
        shows = [["show"]] + [["show", "--app", name] for name in names]
        for command in [["list"], ["actions"], *shows, ["help"], *(["help", name] for name in self.commands())]:
            for line in self.read(*command).splitlines():
                self.assertLessEqual(len(line), 80, line)
        self.assertNotIn("\u2026", self.read("actions"))
        self.assertEqual(json.loads(self.read("actions", "--json"))[0]["code"], 0)
        self.assertEqual([entry["control"] for entry in json.loads(self.read("--json", "assign", "ringLeft", "undo"))][0],
                         "ringLeft")
        out, record = str(self.path / "out"), set(records[0]) - {"number"}
        for arguments, keys in [
            (["set", "active", "no"], record), (["add", "/bin/sh"], record), (["defaults", "ring"], record),
            (["delete", "--app", "sh"], record), (["export", out], {"records"}),
            (["import", out], {"added", "replaced", "left"}), (["check"], {"file", "valid", "status", "records", "problems"}),
            (["recover", str(self.path / "config/com.halcyra.drevix.prefs"), "--to", out + "2"], {"saved", "announced"}),
        ]:
            self.assertEqual(set(json.loads(self.read("--json", *arguments))), keys, arguments)

    def commands(self):
        return self.read("__complete", "").splitlines()

    def test_an_export_is_a_property_list_and_comes_back(self):
        self.read("assign", "buttonII", "keystroke", "cmd+shift+esc")
        self.read("export", "--all", str(self.path / "all.veltrana"))
        with open(self.path / "all.veltrana", "rb") as file:
            exported = plistlib.load(file)
        shown = json.loads(self.read("show", "--json"))
        self.assertEqual(shown.pop("factory"), True)
        self.assertEqual(exported[0], shown)
        self.assertEqual(exported[0]["devices"]["veltrana"]["assignments"]["buttonII"]["keyCode"], 53)
        # A binary list of what another program made of it.
        exported[0]["devices"]["veltrana"]["ringSpeed"] = 31
        with open(self.path / "changed.veltrana", "wb") as file:
            plistlib.dump(exported, file, fmt=plistlib.FMT_BINARY)
        self.read("import", "--replace", str(self.path / "changed.veltrana"))
        self.assertEqual(json.loads(self.read("show", "--json"))["devices"]["veltrana"]["ringSpeed"], 31)

    def test_programs_that_change_at_once_lose_nothing(self):
        keys = ["ringSensitivityX", "ringSensitivityY", "ringSensitivityZ", "ringSpeedX", "ringSpeedY", "ringSpeedZ",
                "ringSensitivity", "tunerSensitivity"]
        running = [subprocess.Popen([PROGRAM, "set", key, "7"], env=self.environment, stdout=subprocess.DEVNULL)
                   for key in keys]
        self.assertEqual([process.wait(60) for process in running], [0] * len(keys))
        device = json.loads(self.read("show", "--json"))["devices"]["veltrana"]
        self.assertEqual({key: device[key] for key in keys}, dict.fromkeys(keys, 7))

    def test_verbose_tells_the_categories_that_are_asked_for(self):
        self.assertIn(b" document: opened ", self.run_program("list", "--verbose").stderr)
        self.environment["DREVIX_VERBOSE"] = "companion,bus"
        self.assertEqual(self.run_program("list").stderr, b"")

    def test_exit_statuses_and_lost_output(self):
        self.assertEqual(self.run_program().returncode, 2)
        self.assertEqual(self.run_program("show", "--app", "Nobody\n").stderr.count(b"\n"), 1)
        self.assertRegex(self.read("--version"), r"^drevixctl \d+\.\d+\.\d+\n$")
        with open("/dev/full", "wb") as full:
            result = subprocess.run([PROGRAM, "actions"], env=self.environment, stdout=full, stderr=subprocess.PIPE,
                                    timeout=60, check=False)
        self.assertEqual((result.returncode, result.stderr.count(b"\n")), (1, 1))


unittest.main()
