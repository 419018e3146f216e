#!/usr/bin/python3
"""drevixctl and DrevixHelper speak German where it is asked for, and no program that reads them notices.

Usage: german_test.py DREVIXHELPER DREVIXCTL
"""
import pathlib
import shutil
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import acting

HELPER, DREVIXCTL = (pathlib.Path(path).resolve() for path in (sys.argv.pop(1), sys.argv.pop(1)))
GERMAN = {"LANGUAGE": "de"}
SOURCES = pathlib.Path("/usr/share/i18n/locales/de_DE")  # Debian's package locales


class German(acting.ActingCase):
    helper_program, control_program = HELPER, DREVIXCTL

    @classmethod
    def setUpClass(cls):
        cls.prepare()
        cls.ctl("assign", "buttonII", "keystroke", "ctrl+s", "--repeat", "6")
        cls.ctl("assign", "buttonI", "none")

    def said(self, *command, language=None):
        """Exit status, standard output and the first line of standard error."""
        result = subprocess.run([str(word) for word in command], env={**self.environment, **(GERMAN if language is None else language)},
                                capture_output=True, text=True, timeout=60, check=False)
        return result.returncode, result.stdout, result.stderr.partition("\n")[0]

    def test_messages(self):
        damaged = self.path / "damaged.prefs"
        damaged.write_bytes(b"no settings")
        broken = self.path / "broken.map"
        broken.write_text("device vendor=1\nbuttonI key=BTN_0 wheel=1\n")
        for command, status, output, error in [
                ((DREVIXCTL, "list"), 0, "NAME", ""),
                ((DREVIXCTL, "show"), 0, "Tempo des Rings", ""),
                ((DREVIXCTL, "show"), 0, "ctrl+s, Wiederholung 6", ""),
                ((DREVIXCTL, "history"), 0, "WAS SICH DABEI ÄNDERTE", ""),
                ((DREVIXCTL, "frobnicate"), 2, "", 'drevixctl: unbekannter Befehl "frobnicate"'),
                ((DREVIXCTL, "export", "/nowhere/file"), 1, "",
                 "drevixctl: /nowhere/file kann nicht geschrieben werden: diesen Ordner gibt es nicht; die Datei wurde nicht geändert"),
                ((DREVIXCTL, "check", damaged), 1, f"{damaged}: beschädigt, 0 Einträge\nSchaden: ",
                 f"drevixctl: {damaged} ist beschädigt und wurde nicht geändert; „drevixctl recover“ sichert die heilen Einträge"),
                ((DREVIXCTL, "maps", broken), 1, f'{broken}:2: unbekanntes Feld "wheel"', f"drevixctl: {broken} hat 1 ungültige Zeile"),
                ((HELPER, "--help"), 0, "Aufruf: DrevixHelper [OPTION ...]", ""),
                ((HELPER, "--prefs"), 2, "", "DrevixHelper: --prefs verlangt FILE; „DrevixHelper --help“ zeigt die Optionen"),
                ((HELPER, "--device", "version=x"), 1, "", "DrevixHelper: --device version=x kann nicht benutzt werden: version muss sein: wie 1.05"),
        ]:
            with self.subTest(command=command[1:]):
                said = self.said(*command)
                self.assertEqual((said[0], said[2]), (status, error))
                self.assertIn(output, said[1])

    def test_what_programs_read_stays(self):
        damaged = self.path / "old.prefs"
        damaged.write_bytes(b"")
        for command in [("list", "--json"), ("show", "--json"), ("actions", "--json"), ("history", "--json"), ("check", damaged, "--json"),
                        ("assign", "ringLeft", "scroll", "left", "+shift", "--json"), ("export", "-", "--all"), ("__complete", "assign", "buttonI", ""),
                        ("__complete", "")]:
            with self.subTest(command=command):
                english = self.said(DREVIXCTL, *command, language={})
                self.assertEqual(self.said(DREVIXCTL, *command), english)
                self.assertEqual(english[0], 0)
        # What one types is what one reads.
        for name in ("Scroll left", "No action", "buttonII"):
            self.assertIn(name, "".join(self.said(DREVIXCTL, word)[1] for word in ("actions", "show")))

    def test_help_of_every_command(self):
        commands = self.said(DREVIXCTL, "__complete", "")[1].split()
        self.assertGreater(len(commands), 20)
        for command in commands:
            english, german = (self.said(DREVIXCTL, "help", command, language=language)[1] for language in ({}, GERMAN))
            with self.subTest(command=command):
                self.assertNotEqual(english.split("\n")[2], german.split("\n")[2])
                self.assertLessEqual(max(map(len, german.split("\n")[2:])), 84)

    def test_who_asks_for_it(self):
        asked = [({"LC_ALL": "C", **GERMAN}, "usage: "), ({"LANGUAGE": "xx"}, "usage: "), ({"LC_ALL": "de_XX.UTF-8"}, "usage: "), (GERMAN, "Aufruf: ")]
        if SOURCES.exists() and shutil.which("localedef"):
            subprocess.run(["localedef", "-i", "de_DE", "-f", "UTF-8", self.path / "de_DE.UTF-8"], check=True)
            asked += [({"LOCPATH": str(self.path), "LC_ALL": "de_DE.UTF-8"}, "Aufruf: "),
                      ({"LOCPATH": str(self.path), "LC_ALL": "", "LANG": "de_DE.UTF-8", "LC_MESSAGES": "C"}, "usage: ")]
        for language, start in asked:
            for program in (DREVIXCTL, HELPER):
                with self.subTest(language=language, program=program.name):
                    status, output, error = self.said(program, "--help", language=language)
                    self.assertEqual((status, output[:len(start)], error), (0, start, ""))

    def test_what_the_helper_tells(self):
        self.start_helper()  # its own language is English
        for command, english, german in [(("press", "buttonI"), "nothing\n", "nichts\n"),
                                         (("press", "buttonII"), "nothing: there is no desktop to send it to\n",
                                          "nichts: es gibt keinen Desktop, an den es gesendet werden könnte\n"),
                                         (("front",), "active: yes\n", "active: ja\n")]:
            for language, text in (({}, english), (GERMAN, german)):
                with self.subTest(command=command, language=language):
                    self.assertIn(text, self.said(DREVIXCTL, *command, language=language)[1])
        self.assertEqual(self.said(DREVIXCTL, "front", "--json"), self.said(DREVIXCTL, "front", "--json", language={}))
        # A helper that starts with a German session tells the rest in German, but not what programs compare.
        self.helper.terminate()
        self.helper.wait()
        self.environment.update(GERMAN)
        self.addCleanup(self.environment.pop, "LANGUAGE")
        self.start_helper()
        complaint = (self.path / "said").read_text()
        self.assertIn("DrevixHelper: kein Desktop: weder WAYLAND_DISPLAY noch DISPLAY ist gesetzt", complaint)
        self.assertIn("angeschlossene Geräte: 1\n", complaint)
        self.assertEqual(self.said(DREVIXCTL, "press", "buttonII", language={"LANGUAGE": ""})[1], "nothing: there is no desktop to send it to\n")


if __name__ == "__main__":
    unittest.main()
