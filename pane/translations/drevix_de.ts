<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>Callout</name>
    <message>
        <source>%1 · pressed</source>
        <translation>%1 · gedrückt</translation>
    </message>
    <message>
        <source>Pressed.</source>
        <translation>Gedrückt.</translation>
    </message>
</context>
<context>
    <name>Controls</name>
    <message>
        <source>Global Settings</source>
        <translation>Globale Einstellungen</translation>
    </message>
    <message>
        <source>Push left</source>
        <translation>Nach links drücken</translation>
    </message>
    <message>
        <source>Push right</source>
        <translation>Nach rechts drücken</translation>
    </message>
    <message>
        <source>Push up</source>
        <translation>Nach oben drücken</translation>
    </message>
    <message>
        <source>Push down</source>
        <translation>Nach unten drücken</translation>
    </message>
    <message>
        <source>Push released</source>
        <translation>Druck losgelassen</translation>
    </message>
    <message>
        <source>Turn left</source>
        <translation>Nach links drehen</translation>
    </message>
    <message>
        <source>Turn right</source>
        <translation>Nach rechts drehen</translation>
    </message>
    <message>
        <source>Turn released</source>
        <translation>Drehung losgelassen</translation>
    </message>
    <message>
        <source>Tuner left</source>
        <translation>Tuner nach links</translation>
    </message>
    <message>
        <source>Tuner right</source>
        <translation>Tuner nach rechts</translation>
    </message>
    <message>
        <source>Button V</source>
        <translation>Taste V</translation>
    </message>
    <message>
        <source>Button P</source>
        <translation>Taste P</translation>
    </message>
    <message>
        <source>Button I</source>
        <translation>Taste I</translation>
    </message>
    <message>
        <source>Button II</source>
        <translation>Taste II</translation>
    </message>
    <message>
        <source>Button III</source>
        <translation>Taste III</translation>
    </message>
</context>
<context>
    <name>DrevixPaneView</name>
    <message>
        <source>Drevix Veltrana</source>
        <translation>Drevix Veltrana</translation>
    </message>
    <message>
        <source>Application</source>
        <translation>Anwendung</translation>
    </message>
    <message>
        <source>Choose whose settings to edit.</source>
        <translation>Wählen, wessen Einstellungen bearbeitet werden.</translation>
    </message>
    <message>
        <source>Use these settings:</source>
        <translation>Diese Einstellungen:</translation>
    </message>
    <message>
        <source>Use these settings</source>
        <translation>Diese Einstellungen</translation>
    </message>
    <message>
        <source>On</source>
        <translation>Ein</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>Aus</translation>
    </message>
    <message>
        <source>Off: The device does nothing in this application.</source>
        <translation>Aus: Das Gerät tut in dieser Anwendung nichts.</translation>
    </message>
    <message>
        <source>Overview…</source>
        <translation>Übersicht …</translation>
    </message>
    <message>
        <source>Show what all controls do, to print or to keep (Ctrl+P)</source>
        <translation>Zeigen, was alle Bedienelemente tun, zum Drucken oder Aufheben (Strg+P)</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Open the help (F1 explains the part of the window in use)</source>
        <translation>Die Hilfe öffnen (F1 erklärt, woran man gerade arbeitet)</translation>
    </message>
    <message>
        <source>Pages</source>
        <translation>Seiten</translation>
    </message>
    <message>
        <source>About Veltrana</source>
        <translation>Über Veltrana</translation>
    </message>
    <message>
        <source>Version of the panel, help and website</source>
        <translation>Version der Einstellungen, Hilfe und Website</translation>
    </message>
    <message>
        <source>Device</source>
        <translation>Gerät</translation>
    </message>
    <message>
        <source>R&amp;ing</source>
        <translation>R&amp;ing</translation>
    </message>
    <message>
        <source>Pushing and turning the ring</source>
        <translation>Drücken und Drehen des Rings</translation>
    </message>
    <message>
        <source>C&amp;ontrol:</source>
        <translation>E&amp;lement:</translation>
    </message>
    <message>
        <source>Controls of the ring</source>
        <translation>Bedienelemente des Rings</translation>
    </message>
    <message>
        <source>S&amp;ensitivity:</source>
        <translation>Empfin&amp;dlichkeit:</translation>
    </message>
    <message>
        <source>Ring sensitivity</source>
        <translation>Empfindlichkeit des Rings</translation>
    </message>
    <message>
        <source>S&amp;peed:</source>
        <translation>Tem&amp;po:</translation>
    </message>
    <message>
        <source>Ring speed</source>
        <translation>Geschwindigkeit des Rings</translation>
    </message>
    <message>
        <source>Same for all &amp;directions</source>
        <translation>In allen &amp;Richtungen gleich</translation>
    </message>
    <message>
        <source>Restore Ri&amp;ng</source>
        <translation>Ri&amp;ng zurücksetzen</translation>
    </message>
    <message>
        <source>&amp;Tuner</source>
        <translation>&amp;Tuner</translation>
    </message>
    <message>
        <source>Turning the dial</source>
        <translation>Drehen des Tuners</translation>
    </message>
    <message>
        <source>Controls of the tuner</source>
        <translation>Bedienelemente des Tuners</translation>
    </message>
    <message>
        <source>Tuner sensitivity</source>
        <translation>Empfindlichkeit des Tuners</translation>
    </message>
    <message>
        <source>C&amp;lick sound</source>
        <translation>Klick&amp;geräusch</translation>
    </message>
    <message>
        <source>Restore Tu&amp;ner</source>
        <translation>Tu&amp;ner zurücksetzen</translation>
    </message>
    <message>
        <source>&amp;Buttons</source>
        <translation>T&amp;asten</translation>
    </message>
    <message>
        <source>The five buttons</source>
        <translation>Die fünf Tasten</translation>
    </message>
    <message>
        <source>Buttons</source>
        <translation>Tasten</translation>
    </message>
    <message>
        <source>The buttons have no sensitivity or speed.</source>
        <translation>Die Tasten haben keine Empfindlichkeit und kein Tempo.</translation>
    </message>
    <message>
        <source>Restore Butto&amp;ns</source>
        <translation>Taste&amp;n zurücksetzen</translation>
    </message>
    <message>
        <source>&amp;Action:</source>
        <translation>A&amp;ktion:</translation>
    </message>
    <message>
        <source>Action</source>
        <translation>Aktion</translation>
    </message>
    <message>
        <source>&amp;Find Action…</source>
        <translation>Aktion &amp;suchen …</translation>
    </message>
    <message>
        <source>Search all actions by name (Ctrl+K)</source>
        <translation>Alle Aktionen nach Namen durchsuchen (Strg+K)</translation>
    </message>
    <message>
        <source>&amp;Keys:</source>
        <translation>Tast&amp;en:</translation>
    </message>
    <message>
        <source>Keys</source>
        <translation>Tasten</translation>
    </message>
    <message>
        <source>Click, then press the keys.</source>
        <translation>Klicken, dann die Tasten drücken.</translation>
    </message>
    <message>
        <source>Key without a character</source>
        <translation>Taste ohne Zeichen</translation>
    </message>
    <message>
        <source>Which key is stored as cmd</source>
        <translation>Welche Taste als cmd gespeichert wird</translation>
    </message>
    <message>
        <source>With:</source>
        <translation>Mit:</translation>
    </message>
    <message>
        <source>Ctrl</source>
        <translation>Strg</translation>
    </message>
    <message>
        <source>Alt</source>
        <translation>Alt</translation>
    </message>
    <message>
        <source>Super</source>
        <translation>Super</translation>
    </message>
    <message>
        <source>Shift</source>
        <translation>Umschalt</translation>
    </message>
    <message>
        <source>Caps Lock</source>
        <translation>Feststell</translation>
    </message>
    <message>
        <source>&amp;When held:</source>
        <translation>Beim &amp;Halten:</translation>
    </message>
    <message>
        <source>Key repeat</source>
        <translation>Tastenwiederholung</translation>
    </message>
    <message>
        <source>Co&amp;mmand:</source>
        <translation>&amp;Befehl:</translation>
    </message>
    <message>
        <source>Navigation command</source>
        <translation>Navigationsbefehl</translation>
    </message>
    <message>
        <source>Tool command</source>
        <translation>Werkzeugbefehl</translation>
    </message>
    <message>
        <source>&amp;Menu item:</source>
        <translation>&amp;Menüeintrag:</translation>
    </message>
    <message>
        <source>Companion menu item</source>
        <translation>Menüeintrag des Begleitgeräts</translation>
    </message>
    <message>
        <source>Standard command</source>
        <translation>Standardbefehl</translation>
    </message>
    <message>
        <source>&amp;Key:</source>
        <translation>Tast&amp;e:</translation>
    </message>
    <message>
        <source>Special key</source>
        <translation>Sondertaste</translation>
    </message>
    <message>
        <source>Fun&amp;ction:</source>
        <translation>Funkti&amp;on:</translation>
    </message>
    <message>
        <source>Desktop function</source>
        <translation>Schreibtischfunktion</translation>
    </message>
    <message>
        <source>Ite&amp;m:</source>
        <translation>&amp;Objekt:</translation>
    </message>
    <message>
        <source>Item to open</source>
        <translation>Zu öffnendes Objekt</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>Wä&amp;hlen …</translation>
    </message>
    <message>
        <source>Try It</source>
        <translation>Ausprobieren</translation>
    </message>
    <message>
        <source>Try what the control will open</source>
        <translation>Ausprobieren, was das Bedienelement öffnet</translation>
    </message>
    <message>
        <source>&amp;Media:</source>
        <translation>&amp;Medien:</translation>
    </message>
    <message>
        <source>Media command</source>
        <translation>Medienbefehl</translation>
    </message>
    <message>
        <source>Auto repeat</source>
        <translation>Automatische Wiederholung</translation>
    </message>
    <message>
        <source>No device connected</source>
        <translation>Kein Gerät angeschlossen</translation>
    </message>
    <message>
        <source>Connected: ##</source>
        <translation>Angeschlossen: ##</translation>
    </message>
    <message>
        <source>Version ##</source>
        <translation>Version ##</translation>
    </message>
    <message>
        <source>Serial ##</source>
        <translation>Seriennr. ##</translation>
    </message>
    <message>
        <source>Write the changes to the settings file</source>
        <translation>Die Änderungen in die Einstellungsdatei schreiben</translation>
    </message>
    <message>
        <source>&amp;Revert</source>
        <translation>&amp;Verwerfen</translation>
    </message>
    <message>
        <source>Go back to the settings in the file</source>
        <translation>Zurück zu den Einstellungen in der Datei</translation>
    </message>
    <message>
        <source>Appl&amp;y</source>
        <translation>An&amp;wenden</translation>
    </message>
    <message>
        <source>Save the settings and put them in force</source>
        <translation>Die Einstellungen sichern und in Kraft setzen</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>Rü&amp;ckgängig</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Take back the last change</source>
        <translation>Die letzte Änderung zurücknehmen</translation>
    </message>
    <message>
        <source>Do what was undone again</source>
        <translation>Das Zurückgenommene wiederholen</translation>
    </message>
</context>
<context>
    <name>Engine</name>
    <message>
        <source>No action</source>
        <translation>Keine Aktion</translation>
    </message>
    <message>
        <source>Global setting</source>
        <translation>Globale Einstellung</translation>
    </message>
    <message>
        <source>Ring mode</source>
        <translation>Ringmodus</translation>
    </message>
    <message>
        <source>Keystroke</source>
        <translation>Tastendruck</translation>
    </message>
    <message>
        <source>Companion menu</source>
        <translation>Menü des Begleitgeräts</translation>
    </message>
    <message>
        <source>Tool</source>
        <translation>Werkzeug</translation>
    </message>
    <message>
        <source>Navigation</source>
        <translation>Navigation</translation>
    </message>
    <message>
        <source>Open file or application</source>
        <translation>Datei oder Anwendung öffnen</translation>
    </message>
    <message>
        <source>Item</source>
        <translation>Objekt</translation>
    </message>
    <message>
        <source>Desktop</source>
        <translation>Schreibtisch</translation>
    </message>
    <message>
        <source>Special key</source>
        <translation>Sondertaste</translation>
    </message>
    <message>
        <source>Media player</source>
        <translation>Medienspieler</translation>
    </message>
    <message>
        <source>Standard command</source>
        <translation>Standardbefehl</translation>
    </message>
    <message>
        <source>Scroll</source>
        <translation>Scrollen</translation>
    </message>
    <message>
        <source>Same as Global Settings</source>
        <translation>Wie globale Einstellungen</translation>
    </message>
    <message>
        <source>Switch ring mode</source>
        <translation>Ringmodus umschalten</translation>
    </message>
    <message>
        <source>Companion menu item</source>
        <translation>Menüeintrag des Begleitgeräts</translation>
    </message>
    <message>
        <source>Tool size down</source>
        <translation>Werkzeug kleiner</translation>
    </message>
    <message>
        <source>Tool size up</source>
        <translation>Werkzeug größer</translation>
    </message>
    <message>
        <source>Move left</source>
        <translation>Nach links bewegen</translation>
    </message>
    <message>
        <source>Move right</source>
        <translation>Nach rechts bewegen</translation>
    </message>
    <message>
        <source>Move up</source>
        <translation>Nach oben bewegen</translation>
    </message>
    <message>
        <source>Move down</source>
        <translation>Nach unten bewegen</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>Verkleinern</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>Vergrößern</translation>
    </message>
    <message>
        <source>Fit to window</source>
        <translation>In Fenster einpassen</translation>
    </message>
    <message>
        <source>Show desktop</source>
        <translation>Schreibtisch anzeigen</translation>
    </message>
    <message>
        <source>Show this application&apos;s windows</source>
        <translation>Fenster dieser Anwendung zeigen</translation>
    </message>
    <message>
        <source>Show all windows</source>
        <translation>Alle Fenster anzeigen</translation>
    </message>
    <message>
        <source>Open file manager</source>
        <translation>Dateimanager öffnen</translation>
    </message>
    <message>
        <source>Open web browser</source>
        <translation>Webbrowser öffnen</translation>
    </message>
    <message>
        <source>Open mail</source>
        <translation>E-Mail öffnen</translation>
    </message>
    <message>
        <source>Open calendar</source>
        <translation>Kalender öffnen</translation>
    </message>
    <message>
        <source>Open contacts</source>
        <translation>Kontakte öffnen</translation>
    </message>
    <message>
        <source>Open messages</source>
        <translation>Nachrichten öffnen</translation>
    </message>
    <message>
        <source>Open terminal</source>
        <translation>Terminal öffnen</translation>
    </message>
    <message>
        <source>Open text editor</source>
        <translation>Texteditor öffnen</translation>
    </message>
    <message>
        <source>Open calculator</source>
        <translation>Taschenrechner öffnen</translation>
    </message>
    <message>
        <source>Open image viewer</source>
        <translation>Bildbetrachter öffnen</translation>
    </message>
    <message>
        <source>Open document viewer</source>
        <translation>Dokumentbetrachter öffnen</translation>
    </message>
    <message>
        <source>Open music player</source>
        <translation>Musikspieler öffnen</translation>
    </message>
    <message>
        <source>Open video player</source>
        <translation>Videospieler öffnen</translation>
    </message>
    <message>
        <source>Open screenshot tool</source>
        <translation>Bildschirmfoto-Werkzeug öffnen</translation>
    </message>
    <message>
        <source>Open software manager</source>
        <translation>Softwareverwaltung öffnen</translation>
    </message>
    <message>
        <source>Open system monitor</source>
        <translation>Systemmonitor öffnen</translation>
    </message>
    <message>
        <source>Open system settings</source>
        <translation>Systemeinstellungen öffnen</translation>
    </message>
    <message>
        <source>Lock screen</source>
        <translation>Bildschirm sperren</translation>
    </message>
    <message>
        <source>Log out</source>
        <translation>Abmelden</translation>
    </message>
    <message>
        <source>Suspend</source>
        <translation>Bereitschaft</translation>
    </message>
    <message>
        <source>Restart</source>
        <translation>Neu starten</translation>
    </message>
    <message>
        <source>Shut down</source>
        <translation>Herunterfahren</translation>
    </message>
    <message>
        <source>Eject disc</source>
        <translation>Disc auswerfen</translation>
    </message>
    <message>
        <source>Mute microphone</source>
        <translation>Mikrofon stummschalten</translation>
    </message>
    <message>
        <source>Mute sound</source>
        <translation>Ton stummschalten</translation>
    </message>
    <message>
        <source>Volume down</source>
        <translation>Leiser</translation>
    </message>
    <message>
        <source>Volume up</source>
        <translation>Lauter</translation>
    </message>
    <message>
        <source>Brightness down</source>
        <translation>Dunkler</translation>
    </message>
    <message>
        <source>Brightness up</source>
        <translation>Heller</translation>
    </message>
    <message>
        <source>Play or pause</source>
        <translation>Wiedergabe oder Pause</translation>
    </message>
    <message>
        <source>Next track</source>
        <translation>Nächster Titel</translation>
    </message>
    <message>
        <source>Previous track</source>
        <translation>Voriger Titel</translation>
    </message>
    <message>
        <source>Stop playing</source>
        <translation>Wiedergabe beenden</translation>
    </message>
    <message>
        <source>Player volume up</source>
        <translation>Medienspieler lauter</translation>
    </message>
    <message>
        <source>Player volume down</source>
        <translation>Medienspieler leiser</translation>
    </message>
    <message>
        <source>Browser back</source>
        <translation>Browser zurück</translation>
    </message>
    <message>
        <source>Browser forward</source>
        <translation>Browser vorwärts</translation>
    </message>
    <message>
        <source>Browser reload</source>
        <translation>Browser neu laden</translation>
    </message>
    <message>
        <source>New</source>
        <translation>Neu</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Sichern</translation>
    </message>
    <message>
        <source>Print</source>
        <translation>Drucken</translation>
    </message>
    <message>
        <source>Close window</source>
        <translation>Fenster schließen</translation>
    </message>
    <message>
        <source>Minimize window</source>
        <translation>Fenster minimieren</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Cut</source>
        <translation>Ausschneiden</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Einfügen</translation>
    </message>
    <message>
        <source>Select all</source>
        <translation>Alles auswählen</translation>
    </message>
    <message>
        <source>Find</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Find next</source>
        <translation>Weitersuchen</translation>
    </message>
    <message>
        <source>Next window</source>
        <translation>Nächstes Fenster</translation>
    </message>
    <message>
        <source>Full screen</source>
        <translation>Vollbild</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Scroll up</source>
        <translation>Nach oben scrollen</translation>
    </message>
    <message>
        <source>Scroll down</source>
        <translation>Nach unten scrollen</translation>
    </message>
    <message>
        <source>Scroll left</source>
        <translation>Nach links scrollen</translation>
    </message>
    <message>
        <source>Scroll right</source>
        <translation>Nach rechts scrollen</translation>
    </message>
    <message>
        <source>Application command</source>
        <translation>Befehl der Anwendung</translation>
    </message>
    <message>
        <source>nothing went wrong</source>
        <translation>nichts ging schief</translation>
    </message>
    <message>
        <source>the file is damaged or holds no settings</source>
        <translation>die Datei ist beschädigt oder enthält keine Einstellungen</translation>
    </message>
    <message>
        <source>the folder is full</source>
        <translation>der Ordner ist voll</translation>
    </message>
    <message>
        <source>a resource could not be added</source>
        <translation>ein Zusatz konnte nicht hinzugefügt werden</translation>
    </message>
    <message>
        <source>the file beside it that describes it is damaged</source>
        <translation>die Datei daneben, die sie beschreibt, ist beschädigt</translation>
    </message>
    <message>
        <source>this system can&apos;t do that</source>
        <translation>dieses System kann es nicht</translation>
    </message>
    <message>
        <source>a message holds another kind of data</source>
        <translation>eine Nachricht enthält Daten anderer Art</translation>
    </message>
    <message>
        <source>a message holds no data</source>
        <translation>eine Nachricht enthält keine Daten</translation>
    </message>
    <message>
        <source>the program does not understand the message</source>
        <translation>das Programm versteht die Nachricht nicht</translation>
    </message>
    <message>
        <source>the disk is full</source>
        <translation>der Datenträger ist voll</translation>
    </message>
    <message>
        <source>the disk isn&apos;t there</source>
        <translation>der Datenträger ist nicht da</translation>
    </message>
    <message>
        <source>the disk reported an error</source>
        <translation>der Datenträger meldete einen Fehler</translation>
    </message>
    <message>
        <source>the name cannot be used</source>
        <translation>der Name kann nicht verwendet werden</translation>
    </message>
    <message>
        <source>the file is incomplete</source>
        <translation>die Datei ist unvollständig</translation>
    </message>
    <message>
        <source>the file is damaged</source>
        <translation>die Datei ist beschädigt</translation>
    </message>
    <message>
        <source>too many files are open</source>
        <translation>zu viele Dateien sind offen</translation>
    </message>
    <message>
        <source>there is no such file</source>
        <translation>diese Datei gibt es nicht</translation>
    </message>
    <message>
        <source>the disk is write-protected</source>
        <translation>der Datenträger ist schreibgeschützt</translation>
    </message>
    <message>
        <source>the file is in use by another program</source>
        <translation>die Datei wird von einem anderen Programm benutzt</translation>
    </message>
    <message>
        <source>the name is already taken</source>
        <translation>der Name ist schon vergeben</translation>
    </message>
    <message>
        <source>invalid argument</source>
        <translation>ungültiges Argument</translation>
    </message>
    <message>
        <source>the file is not open</source>
        <translation>die Datei ist nicht offen</translation>
    </message>
    <message>
        <source>you don&apos;t have permission</source>
        <translation>die Berechtigung fehlt</translation>
    </message>
    <message>
        <source>the file is not open for writing</source>
        <translation>die Datei ist nicht zum Schreiben offen</translation>
    </message>
    <message>
        <source>there is not enough memory</source>
        <translation>es ist nicht genug Speicher da</translation>
    </message>
    <message>
        <source>there is no such folder</source>
        <translation>diesen Ordner gibt es nicht</translation>
    </message>
    <message>
        <source>it was cancelled</source>
        <translation>es wurde abgebrochen</translation>
    </message>
    <message>
        <source>no settings were found</source>
        <translation>es wurden keine Einstellungen gefunden</translation>
    </message>
    <message>
        <source>the program isn&apos;t running</source>
        <translation>das Programm läuft nicht</translation>
    </message>
    <message>
        <source>it is a folder, pipe or device, not a file</source>
        <translation>es ist ein Ordner, eine Pipe oder ein Gerät, keine Datei</translation>
    </message>
    <message>
        <source>an unknown error occurred</source>
        <translation>ein unbekannter Fehler trat auf</translation>
    </message>
    <message>
        <source>it is a binary list of an unknown version</source>
        <translation>sie ist eine binäre Liste einer unbekannten Version</translation>
    </message>
    <message>
        <source>it is cut short, or its trailer is invalid</source>
        <translation>sie ist abgeschnitten, oder ihr Ende ergibt keinen Sinn</translation>
    </message>
    <message>
        <source>the root is not an array</source>
        <translation>die Wurzel ist keine Reihung</translation>
    </message>
    <message>
        <source>a count is damaged</source>
        <translation>eine Anzahl ist beschädigt</translation>
    </message>
    <message>
        <source>its shared values add up to more than its bytes</source>
        <translation>ihre gemeinsamen Werte ergeben mehr als ihre Bytes</translation>
    </message>
    <message>
        <source>its shared texts add up to more than 1 GB</source>
        <translation>ihre gemeinsamen Texte ergeben mehr als 1 GB</translation>
    </message>
    <message>
        <source>a value has a type that no list may hold</source>
        <translation>ein Wert hat einen Typ, den keine Liste enthalten darf</translation>
    </message>
    <message>
        <source>an integer is too large</source>
        <translation>eine ganze Zahl ist zu groß</translation>
    </message>
    <message>
        <source>a real number has an unknown size</source>
        <translation>eine Kommazahl hat eine unbekannte Größe</translation>
    </message>
    <message>
        <source>a date is malformed</source>
        <translation>ein Datum ist fehlerhaft</translation>
    </message>
    <message>
        <source>a text is malformed UTF-16</source>
        <translation>ein Text ist fehlerhaftes UTF-16</translation>
    </message>
    <message>
        <source>a text that should be ASCII is not</source>
        <translation>ein Text, der ASCII sein sollte, ist es nicht</translation>
    </message>
    <message>
        <source>a key is not a text</source>
        <translation>ein Schlüssel ist kein Text</translation>
    </message>
    <message>
        <source>an object lies outside the list</source>
        <translation>ein Objekt liegt außerhalb der Liste</translation>
    </message>
    <message>
        <source>it is not well-formed</source>
        <translation>sie ist nicht wohlgeformt</translation>
    </message>
    <message>
        <source>unexpected data after the list</source>
        <translation>nach der Liste folgt noch etwas</translation>
    </message>
    <message>
        <source>text stands outside a value</source>
        <translation>Text steht außerhalb eines Werts</translation>
    </message>
    <message>
        <source>it is not well-formed: an element ends with another&apos;s end tag</source>
        <translation>sie ist nicht wohlgeformt: ein Element endet mit dem Endezeichen eines anderen</translation>
    </message>
    <message>
        <source>an entity is used that is not predefined</source>
        <translation>eine nicht vordefinierte Entität wird verwendet</translation>
    </message>
    <message>
        <source>its document type makes declarations</source>
        <translation>ihr Dokumenttyp enthält Deklarationen</translation>
    </message>
    <message>
        <source>an element is unknown</source>
        <translation>ein Element ist unbekannt</translation>
    </message>
    <message>
        <source>an element stands inside a value</source>
        <translation>ein Element steht innerhalb eines Werts</translation>
    </message>
    <message>
        <source>the root is not &lt;plist&gt;</source>
        <translation>die Wurzel ist nicht &lt;plist&gt;</translation>
    </message>
    <message>
        <source>a key stands outside a dictionary</source>
        <translation>ein Schlüssel steht außerhalb eines Wörterbuchs</translation>
    </message>
    <message>
        <source>a key has no value</source>
        <translation>ein Schlüssel hat keinen Wert</translation>
    </message>
    <message>
        <source>a &lt;plist&gt; stands inside the list</source>
        <translation>ein &lt;plist&gt; steht innerhalb der Liste</translation>
    </message>
    <message>
        <source>there is more than one root</source>
        <translation>es gibt mehr als eine Wurzel</translation>
    </message>
    <message>
        <source>a value has no key</source>
        <translation>ein Wert hat keinen Schlüssel</translation>
    </message>
    <message>
        <source>it holds no array</source>
        <translation>sie enthält keine Reihung</translation>
    </message>
    <message>
        <source>a truth value holds text</source>
        <translation>ein Wahrheitswert enthält Text</translation>
    </message>
    <message>
        <source>an integer is malformed or too large</source>
        <translation>eine ganze Zahl ist fehlerhaft oder zu groß</translation>
    </message>
    <message>
        <source>a real number is malformed or too large</source>
        <translation>eine Kommazahl ist fehlerhaft oder zu groß</translation>
    </message>
    <message>
        <source>it is larger than 2 GB</source>
        <translation>sie ist größer als 2 GB</translation>
    </message>
    <message>
        <source>it is a binary list of more than 256 MB</source>
        <translation>sie ist eine binäre Liste von mehr als 256 MB</translation>
    </message>
    <message>
        <source>arrays and dictionaries are nested more than 64 deep</source>
        <translation>Reihungen und Wörterbücher sind mehr als 64-fach geschachtelt</translation>
    </message>
    <message>
        <source>one of its elements holds more than 65,536 values</source>
        <translation>eines ihrer Elemente enthält mehr als 65.536 Werte</translation>
    </message>
    <message>
        <source>one of its elements holds more than 16 MB of text and data</source>
        <translation>eines ihrer Elemente enthält mehr als 16 MB Text und Daten</translation>
    </message>
    <message>
        <source>hold the control down for a second</source>
        <translation>das Bedienelement eine Sekunde lang gedrückt halten</translation>
    </message>
    <message>
        <source>the companion does not accept menu commands</source>
        <translation>das Begleitgerät nimmt keine Menübefehle an</translation>
    </message>
    <message>
        <source>no item has been chosen</source>
        <translation>kein Objekt ist gewählt</translation>
    </message>
    <message>
        <source>no key has been chosen</source>
        <translation>keine Taste ist gewählt</translation>
    </message>
    <message>
        <source>this key cannot be sent</source>
        <translation>diese Taste kann nicht gesendet werden</translation>
    </message>
    <message>
        <source>this terminal has no key for it</source>
        <translation>dieses Terminal hat keine Taste dafür</translation>
    </message>
    <message>
        <source>the keyboard layout has no key for it</source>
        <translation>die Tastaturbelegung hat keine Taste dafür</translation>
    </message>
    <message>
        <source>there is no desktop to send it to</source>
        <translation>es gibt keinen Desktop, an den es gesendet werden könnte</translation>
    </message>
    <message>
        <source>keys cannot be sent: see DrevixHelper(1)</source>
        <translation>Tasten können nicht gesendet werden: siehe DrevixHelper(1)</translation>
    </message>
    <message>
        <source>this desktop cannot</source>
        <translation>dieser Desktop kann das nicht</translation>
    </message>
    <message>
        <source>no player runs</source>
        <translation>kein Player läuft</translation>
    </message>
    <message>
        <source>the item is gone</source>
        <translation>das Objekt ist nicht mehr da</translation>
    </message>
    <message>
        <source>no file manager is installed</source>
        <translation>keine Dateiverwaltung ist installiert</translation>
    </message>
    <message>
        <source>no web browser is installed</source>
        <translation>kein Webbrowser ist installiert</translation>
    </message>
    <message>
        <source>no mail program is installed</source>
        <translation>kein E-Mail-Programm ist installiert</translation>
    </message>
    <message>
        <source>no calendar is installed</source>
        <translation>kein Kalender ist installiert</translation>
    </message>
    <message>
        <source>no contacts program is installed</source>
        <translation>kein Adressbuch ist installiert</translation>
    </message>
    <message>
        <source>no messages program is installed</source>
        <translation>kein Nachrichtenprogramm ist installiert</translation>
    </message>
    <message>
        <source>no terminal is installed</source>
        <translation>kein Terminal ist installiert</translation>
    </message>
    <message>
        <source>no text editor is installed</source>
        <translation>kein Texteditor ist installiert</translation>
    </message>
    <message>
        <source>no calculator is installed</source>
        <translation>kein Taschenrechner ist installiert</translation>
    </message>
    <message>
        <source>no image viewer is installed</source>
        <translation>kein Bildbetrachter ist installiert</translation>
    </message>
    <message>
        <source>no document viewer is installed</source>
        <translation>kein Dokumentbetrachter ist installiert</translation>
    </message>
    <message>
        <source>no music player is installed</source>
        <translation>kein Musikplayer ist installiert</translation>
    </message>
    <message>
        <source>no video player is installed</source>
        <translation>kein Videoplayer ist installiert</translation>
    </message>
    <message>
        <source>no screenshot tool is installed</source>
        <translation>kein Bildschirmfotoprogramm ist installiert</translation>
    </message>
    <message>
        <source>no software manager is installed</source>
        <translation>keine Softwareverwaltung ist installiert</translation>
    </message>
    <message>
        <source>no system monitor is installed</source>
        <translation>keine Systemüberwachung ist installiert</translation>
    </message>
    <message>
        <source>no settings program is installed</source>
        <translation>keine Systemeinstellungen sind installiert</translation>
    </message>
</context>
<context>
    <name>Host</name>
    <message>
        <source>Decides, application by application, what every control of the device does.</source>
        <translation>Bestimmt für jede Anwendung, was jedes Bedienelement des Gerätes tut.</translation>
    </message>
    <message>
        <source>Tell on standard error what is done.</source>
        <translation>Auf der Fehlerausgabe mitteilen, was getan wird.</translation>
    </message>
    <message>
        <source>Import the settings in this file, after a question.</source>
        <translation>Die Einstellungen aus dieser Datei importieren, nach einer Frage.</translation>
    </message>
    <message>
        <source>It takes one file, and none with --picture; see --help.</source>
        <translation>Es nimmt eine Datei, und keine mit --picture; siehe --help.</translation>
    </message>
    <message>
        <source>Write a picture of the panel to FILE and exit.</source>
        <translation>Schreibt ein Bild des Fensters in die Datei FILE und endet.</translation>
    </message>
    <message>
        <source>Show the settings of the application APP.</source>
        <translation>Zeigt die Einstellungen der Anwendung APP.</translation>
    </message>
    <message>
        <source>Do this at the panel before, such as &quot;press Ctrl+K&quot;; see the manual.</source>
        <translation>Tut zuvor dies am Fenster, zum Beispiel &quot;press Ctrl+K&quot;; siehe die Handbuchseite.</translation>
    </message>
    <message>
        <source>Take the icons of THEME.</source>
        <translation>Nimmt die Symbole von THEME.</translation>
    </message>
    <message>
        <source>There is no step &quot;%1&quot;.</source>
        <translation>Einen Schritt „%1“ gibt es nicht.</translation>
    </message>
    <message>
        <source>The step &quot;%1&quot; could not be done.</source>
        <translation>Der Schritt „%1“ war nicht möglich.</translation>
    </message>
    <message>
        <source>Show page N, from 0.</source>
        <translation>Zeigt die Seite N, von 0 an.</translation>
    </message>
    <message>
        <source>Show the control KEY, such as buttonII.</source>
        <translation>Zeigt das Bedienelement KEY, zum Beispiel buttonII.</translation>
    </message>
    <message>
        <source>Show the control KEY as pressed on the device.</source>
        <translation>Zeigt das Bedienelement KEY als am Gerät gedrückt.</translation>
    </message>
    <message>
        <source>Make the picture&apos;s window this large.</source>
        <translation>Macht das Fenster des Bildes so groß.</translation>
    </message>
    <message>
        <source>Draw FACTOR times as large.</source>
        <translation>Zeichnet um den Faktor FACTOR größer.</translation>
    </message>
    <message>
        <source>Draw light text on dark ground.</source>
        <translation>Zeichnet helle Schrift auf dunklem Grund.</translation>
    </message>
    <message>
        <source>Draw in black and white.</source>
        <translation>In Schwarz und Weiß zeichnen.</translation>
    </message>
    <message>
        <source>--page takes a number.</source>
        <translation>--page verlangt eine Zahl.</translation>
    </message>
    <message>
        <source>--size takes a width and a height, such as 800x600.</source>
        <translation>--size verlangt Breite und Höhe, zum Beispiel 800x600.</translation>
    </message>
    <message>
        <source>--scale takes a number from 0.5 to 8, for pictures of up to 8000 pixels.</source>
        <translation>--scale verlangt eine Zahl von 0.5 bis 8, für Bilder von höchstens 8000 Pixeln.</translation>
    </message>
    <message>
        <source>There are no settings for &quot;%1&quot;.</source>
        <translation>Es gibt keine Einstellungen für „%1“.</translation>
    </message>
    <message>
        <source>There is no page %1.</source>
        <translation>Es gibt keine Seite %1.</translation>
    </message>
    <message>
        <source>There is no control &quot;%1&quot;.</source>
        <translation>Es gibt kein Bedienelement „%1“.</translation>
    </message>
    <message>
        <source>The picture could not be written to &quot;%1&quot;.</source>
        <translation>Das Bild konnte nicht nach „%1“ geschrieben werden.</translation>
    </message>
</context>
<context>
    <name>Keys</name>
    <message>
        <source>Super</source>
        <translation>Super</translation>
    </message>
    <message>
        <source>Ctrl</source>
        <translation>Strg</translation>
    </message>
    <message>
        <source>Alt</source>
        <translation>Alt</translation>
    </message>
    <message>
        <source>Shift</source>
        <translation>Umschalt</translation>
    </message>
    <message>
        <source>Caps Lock</source>
        <translation>Feststell</translation>
    </message>
    <message>
        <source>Num</source>
        <translation>Num</translation>
    </message>
    <message>
        <source>Enter</source>
        <translation>Enter</translation>
    </message>
    <message>
        <source>Tab</source>
        <translation>Tab</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Esc</translation>
    </message>
    <message>
        <source>Insert</source>
        <translation>Einfg</translation>
    </message>
    <message>
        <source>Print</source>
        <translation>Druck</translation>
    </message>
    <message>
        <source>Scroll Lock</source>
        <translation>Rollen</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Backspace</source>
        <translation>Rücktaste</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Entf</translation>
    </message>
    <message>
        <source>Space</source>
        <translation>Leertaste</translation>
    </message>
    <message>
        <source>Home</source>
        <translation>Pos1</translation>
    </message>
    <message>
        <source>End</source>
        <translation>Ende</translation>
    </message>
    <message>
        <source>Page Up</source>
        <translation>Bild auf</translation>
    </message>
    <message>
        <source>Page Down</source>
        <translation>Bild ab</translation>
    </message>
    <message>
        <source>Left</source>
        <translation>Links</translation>
    </message>
    <message>
        <source>Right</source>
        <translation>Rechts</translation>
    </message>
    <message>
        <source>Up</source>
        <translation>Hoch</translation>
    </message>
    <message>
        <source>Down</source>
        <translation>Runter</translation>
    </message>
    <message>
        <source>Num Lock</source>
        <translation>Num</translation>
    </message>
    <message>
        <source>Menu</source>
        <translation>Menü</translation>
    </message>
</context>
<context>
    <name>Menus</name>
    <message>
        <source>(none)</source>
        <translation>(keine)</translation>
    </message>
    <message>
        <source>Add Application…</source>
        <translation>Anwendung hinzufügen …</translation>
    </message>
    <message>
        <source>Delete…</source>
        <translation>Löschen …</translation>
    </message>
    <message>
        <source>Export…</source>
        <translation>Exportieren …</translation>
    </message>
    <message>
        <source>Import…</source>
        <translation>Importieren …</translation>
    </message>
    <message>
        <source>Install Plug-ins…</source>
        <translation>Zusatzmodule installieren …</translation>
    </message>
    <message>
        <source>About Veltrana…</source>
        <translation>Über Veltrana …</translation>
    </message>
    <message>
        <source>Hold the keys down</source>
        <translation>Tasten gedrückt halten</translation>
    </message>
    <message>
        <source>Press once</source>
        <translation>Einmal drücken</translation>
    </message>
    <message>
        <source>Repeat 10 times a second</source>
        <translation>10-mal pro Sekunde wiederholen</translation>
    </message>
    <message>
        <source>Repeat 4 times a second</source>
        <translation>4-mal pro Sekunde wiederholen</translation>
    </message>
    <message>
        <source>Repeat twice a second</source>
        <translation>Zweimal pro Sekunde wiederholen</translation>
    </message>
    <message>
        <source>Scroll once</source>
        <translation>Einmal scrollen</translation>
    </message>
    <message>
        <source>Scroll 20 times a second</source>
        <translation>20-mal pro Sekunde scrollen</translation>
    </message>
    <message>
        <source>Scroll 10 times a second</source>
        <translation>10-mal pro Sekunde scrollen</translation>
    </message>
    <message>
        <source>Scroll 4 times a second</source>
        <translation>4-mal pro Sekunde scrollen</translation>
    </message>
    <message>
        <source>Other key</source>
        <translation>Andere Taste</translation>
    </message>
    <message>
        <source>No key</source>
        <translation>Keine Taste</translation>
    </message>
    <message>
        <source>Escape</source>
        <translation>Escape</translation>
    </message>
    <message>
        <source>Backspace</source>
        <translation>Rücktaste</translation>
    </message>
    <message>
        <source>Enter</source>
        <translation>Enter</translation>
    </message>
    <message>
        <source>Tab</source>
        <translation>Tabulator</translation>
    </message>
    <message>
        <source>Num Enter</source>
        <translation>Num Enter</translation>
    </message>
    <message>
        <source>Insert</source>
        <translation>Einfg</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Home</source>
        <translation>Pos1</translation>
    </message>
    <message>
        <source>End</source>
        <translation>Ende</translation>
    </message>
    <message>
        <source>Page Up</source>
        <translation>Bild auf</translation>
    </message>
    <message>
        <source>Page Down</source>
        <translation>Bild ab</translation>
    </message>
    <message>
        <source>Num Lock</source>
        <translation>Num</translation>
    </message>
    <message>
        <source>Print</source>
        <translation>Druck</translation>
    </message>
    <message>
        <source>Scroll Lock</source>
        <translation>Rollen</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
</context>
<context>
    <name>Sheet</name>
    <message>
        <source>Bold: changed from the factory settings.</source>
        <translation>Fett: anders als ab Werk.</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
</context>
<context>
    <name>Targets</name>
    <message>
        <source>Off</source>
        <translation>Aus</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Every other application</source>
        <translation>Alle anderen Anwendungen</translation>
    </message>
    <message>
        <source>factory settings</source>
        <translation>Werkseinstellungen</translation>
    </message>
    <message>
        <source>your settings</source>
        <translation>eigene Einstellungen</translation>
    </message>
    <message>
        <source>off</source>
        <translation>aus</translation>
    </message>
    <message>
        <source>unsaved changes</source>
        <translation>ungesicherte Änderungen</translation>
    </message>
    <message>
        <source>Yours</source>
        <translation>Eigene</translation>
    </message>
    <message>
        <source>From the factory</source>
        <translation>Ab Werk</translation>
    </message>
    <message>
        <source>Installed, without settings</source>
        <translation>Installiert, ohne Einstellungen</translation>
    </message>
</context>
<context>
    <name>drevix::ApplicationChooser</name>
    <message>
        <source>Select an Application</source>
        <translation>Anwendung auswählen</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Applications</source>
        <translation>Anwendungen</translation>
    </message>
    <message>
        <source>&amp;Add</source>
        <translation>&amp;Hinzufügen</translation>
    </message>
    <message>
        <source>&amp;Show Settings</source>
        <translation>Einstellungen &amp;zeigen</translation>
    </message>
    <message>
        <source>&amp;Other…</source>
        <translation>An&amp;dere …</translation>
    </message>
    <message>
        <source>has settings</source>
        <translation>hat Einstellungen</translation>
    </message>
</context>
<context>
    <name>drevix::ConfirmPanel</name>
    <message>
        <source>Delete Settings?</source>
        <translation>Einstellungen löschen?</translation>
    </message>
    <message>
        <source>Delete these settings?</source>
        <translation>Diese Einstellungen löschen?</translation>
    </message>
    <message>
        <source>Global Settings will be used instead.</source>
        <translation>Statt ihrer gelten dann die globalen Einstellungen.</translation>
    </message>
    <message>
        <source>&amp;Delete</source>
        <translation>&amp;Löschen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Replace Settings</source>
        <translation>Einstellungen ersetzen</translation>
    </message>
    <message>
        <source>Replace these settings?</source>
        <translation>Diese Einstellungen ersetzen?</translation>
    </message>
    <message>
        <source>The new settings replace the old ones.</source>
        <translation>Die neuen Einstellungen ersetzen die alten.</translation>
    </message>
    <message>
        <source>&amp;Replace</source>
        <translation>&amp;Ersetzen</translation>
    </message>
    <message>
        <source>&amp;Keep Old</source>
        <translation>&amp;Alte behalten</translation>
    </message>
    <message>
        <source>Import Settings</source>
        <translation>Einstellungen importieren</translation>
    </message>
    <message>
        <source>Import the settings in this file?</source>
        <translation>Die Einstellungen aus dieser Datei importieren?</translation>
    </message>
    <message>
        <source>You are asked again before any of yours are replaced.</source>
        <translation>Bevor vorhandene ersetzt werden, wird noch einmal gefragt.</translation>
    </message>
    <message>
        <source>&amp;Import</source>
        <translation>&amp;Importieren</translation>
    </message>
    <message>
        <source>Do the same for &amp;all</source>
        <translation>Mit a&amp;llen so verfahren</translation>
    </message>
    <message>
        <source>They replace the settings of %1, which has the same stored name.</source>
        <translation>Sie ersetzen die Einstellungen von %1, das unter demselben Namen gespeichert ist.</translation>
    </message>
</context>
<context>
    <name>drevix::DevicePicture</name>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
</context>
<context>
    <name>drevix::DrevixPane</name>
    <message>
        <source>The keyboard layout was switched. Close the settings and open them again to see the keys of the new one.</source>
        <translation>Die Tastaturbelegung wurde gewechselt. Schließen und öffnen Sie die Einstellungen, um die Tasten der neuen zu sehen.</translation>
    </message>
    <message>
        <source>Choose a menu entry</source>
        <translation>Menüeintrag wählen</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>&amp;Find Action…</source>
        <translation>Aktion &amp;suchen …</translation>
    </message>
    <message>
        <source>&amp;Copy Action</source>
        <translation>Aktion &amp;kopieren</translation>
    </message>
    <message>
        <source>&amp;Paste Action</source>
        <translation>Aktion &amp;einfügen</translation>
    </message>
    <message>
        <source>&amp;No Action</source>
        <translation>Keine &amp;Aktion</translation>
    </message>
    <message>
        <source>&amp;Back to Factory</source>
        <translation>Ab &amp;Werk</translation>
    </message>
    <message>
        <source>Copy &amp;All Actions</source>
        <translation>A&amp;lle Aktionen kopieren</translation>
    </message>
    <message>
        <source>Pas&amp;te All Actions</source>
        <translation>Alle Aktionen ein&amp;fügen</translation>
    </message>
    <message>
        <source>&amp;Duplicate for Another Application…</source>
        <translation>Für andere Anwendung &amp;duplizieren …</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>%1 was not taken: %2.</source>
        <translation>%1 wurde nicht übernommen: %2.</translation>
    </message>
    <message>
        <source>%1 can&apos;t do the same in %2 and stay as they are.</source>
        <translation>%1: Das geht in %2 nicht; hier bleibt es, wie es ist.</translation>
    </message>
    <message>
        <source>Couldn&apos;t start the device helper.</source>
        <translation>Das Hilfsprogramm des Geräts konnte nicht gestartet werden.</translation>
    </message>
    <message>
        <source>The device helper won&apos;t start when you log in: move the program to a folder whose path has no letters but those of English.</source>
        <translation>Das Hilfsprogramm des Geräts startet nicht beim Anmelden: Legen Sie das Programm in einen Ordner, dessen Pfad nur englische Buchstaben hat.</translation>
    </message>
    <message>
        <source>The device helper won&apos;t start when you log in</source>
        <translation>Das Hilfsprogramm des Geräts startet nicht beim Anmelden</translation>
    </message>
    <message>
        <source>Helper not running</source>
        <translation>Hilfsprogramm läuft nicht</translation>
    </message>
    <message>
        <source>No device connected</source>
        <translation>Kein Gerät angeschlossen</translation>
    </message>
    <message>
        <source>Couldn&apos;t open the help.</source>
        <translation>Die Hilfe konnte nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>Couldn&apos;t start the trainer.</source>
        <translation>Der Trainer konnte nicht gestartet werden.</translation>
    </message>
    <message>
        <source>Couldn&apos;t open %1.</source>
        <translation>%1 konnte nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>The companion has no menu for this application.</source>
        <translation>Das Begleitgerät hat kein Menü für diese Anwendung.</translation>
    </message>
    <message>
        <source>only on buttons I, II and III</source>
        <translation>nur auf den Tasten I, II und III</translation>
    </message>
    <message>
        <source>not on %1</source>
        <translation>nicht auf %1</translation>
    </message>
    <message>
        <source>not in %1</source>
        <translation>nicht in %1</translation>
    </message>
    <message>
        <source>unknown action</source>
        <translation>unbekannte Aktion</translation>
    </message>
    <message>
        <source>Ring: sensitivity %1, speed %2, same for all directions</source>
        <translation>Ring: Empfindlichkeit %1, Tempo %2, gleich für alle Richtungen</translation>
    </message>
    <message>
        <source>Ring: sensitivity %1, %2, %3, speed %4, %5, %6 (left and right, up and down, turning)</source>
        <translation>Ring: Empfindlichkeit %1, %2, %3, Tempo %4, %5, %6 (seitwärts, auf und ab, Drehen)</translation>
    </message>
    <message>
        <source>Tuner: sensitivity %1, click sound on</source>
        <translation>Tuner: Empfindlichkeit %1, mit Klickgeräusch</translation>
    </message>
    <message>
        <source>Tuner: sensitivity %1, click sound off</source>
        <translation>Tuner: Empfindlichkeit %1, ohne Klickgeräusch</translation>
    </message>
    <message>
        <source>Off: the device does nothing in this application.</source>
        <translation>Aus: In dieser Anwendung tut das Gerät nichts.</translation>
    </message>
    <message>
        <source>Couldn&apos;t use this item</source>
        <translation>Das Objekt konnte nicht verwendet werden</translation>
    </message>
    <message>
        <source>%1 could not be opened.</source>
        <translation>%1 konnte nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>Choose a file, folder or application, or drop one here.</source>
        <translation>Wählen Sie eine Datei, einen Ordner oder eine Anwendung, oder ziehen Sie sie hierher.</translation>
    </message>
    <message>
        <source>This item can&apos;t be found any more.</source>
        <translation>Dieses Objekt ist nicht mehr zu finden.</translation>
    </message>
    <message>
        <source>%1 no longer exists.</source>
        <translation>%1 gibt es nicht mehr.</translation>
    </message>
    <message>
        <source>Open %1</source>
        <translation>Öffnen: %1</translation>
    </message>
    <message>
        <source>Open %1 (missing)</source>
        <translation>Öffnen: %1 (fehlt)</translation>
    </message>
    <message>
        <source>Alt</source>
        <translation>Alt</translation>
    </message>
    <message>
        <source>Super</source>
        <translation>Super</translation>
    </message>
    <message>
        <source>Ctrl</source>
        <translation>Strg</translation>
    </message>
    <message>
        <source>%1 is stored as cmd</source>
        <translation>%1 wird als cmd gespeichert</translation>
    </message>
    <message>
        <source>Stored as %1</source>
        <translation>Gespeichert als %1</translation>
    </message>
    <message>
        <source>The desktop keeps its own combinations.</source>
        <translation>Der Desktop behält seine Kombinationen.</translation>
    </message>
    <message>
        <source>Click, then press the keys.</source>
        <translation>Klicken, dann die Tasten drücken.</translation>
    </message>
    <message>
        <source>Also used by %1</source>
        <translation>Auch bei: %1</translation>
    </message>
    <message>
        <source>Also used by %1 and %2 more</source>
        <translation>Auch bei: %1 und %2 weiteren</translation>
    </message>
    <message>
        <source>%1: %2.</source>
        <translation>%1: %2.</translation>
    </message>
    <message>
        <source>Couldn&apos;t load your settings</source>
        <translation>Die Einstellungen konnten nicht geladen werden</translation>
    </message>
    <message>
        <source>Couldn&apos;t read the settings file, so changes can&apos;t be saved. It was left as it is.</source>
        <translation>Die Einstellungsdatei konnte nicht gelesen werden, daher können Änderungen nicht gesichert werden. Sie blieb, wie sie ist.</translation>
    </message>
    <message>
        <source>The settings file was damaged. It was kept as %1; these are the factory settings.</source>
        <translation>Die Einstellungsdatei war beschädigt. Sie wurde als %1 aufgehoben; dies sind die Werkseinstellungen.</translation>
    </message>
    <message>
        <source>Couldn&apos;t keep the changes</source>
        <translation>Die Änderungen konnten nicht behalten werden</translation>
    </message>
    <message>
        <source>line %1: %2</source>
        <translation>Zeile %1: %2</translation>
    </message>
    <message>
        <source>Couldn&apos;t delete settings for %1</source>
        <translation>Die Einstellungen für %1 konnten nicht gelöscht werden</translation>
    </message>
    <message>
        <source>Couldn&apos;t add settings for %1</source>
        <translation>Einstellungen für %1 konnten nicht hinzugefügt werden</translation>
    </message>
    <message>
        <source>Couldn&apos;t export</source>
        <translation>Das Exportieren ist nicht gelungen</translation>
    </message>
    <message>
        <source>Couldn&apos;t import this file: %1.</source>
        <translation>Diese Datei konnte nicht importiert werden: %1.</translation>
    </message>
    <message>
        <source>Not enough memory for %1 of the %2 records in the file.</source>
        <translation>Der Speicher reicht für %1 der %2 Einträge der Datei nicht.</translation>
    </message>
    <message>
        <source>on</source>
        <translation>ein</translation>
    </message>
    <message>
        <source>off</source>
        <translation>aus</translation>
    </message>
    <message>
        <source>Changed. Factory: %1</source>
        <translation>Geändert. Ab Werk: %1</translation>
    </message>
    <message>
        <source>%1 + %2</source>
        <translation>%1 + %2</translation>
    </message>
    <message>
        <source>For left and right</source>
        <translation>Für links und rechts</translation>
    </message>
    <message>
        <source>For up and down</source>
        <translation>Für oben und unten</translation>
    </message>
    <message>
        <source>For turning</source>
        <translation>Für das Drehen</translation>
    </message>
    <message>
        <source>Back to factory settings:</source>
        <translation>Zurück zu den Werkseinstellungen:</translation>
    </message>
    <message>
        <source>Back to Factory: %1</source>
        <translation>Ab Werk: %1</translation>
    </message>
    <message>
        <source>Sensitivity: %1</source>
        <translation>Empfindlichkeit: %1</translation>
    </message>
    <message>
        <source>Speed: %1</source>
        <translation>Geschwindigkeit: %1</translation>
    </message>
    <message>
        <source>Same for all directions: %1</source>
        <translation>In allen Richtungen gleich: %1</translation>
    </message>
    <message>
        <source>Click sound: %1</source>
        <translation>Klickgeräusch: %1</translation>
    </message>
    <message>
        <source>Unknown action %1</source>
        <translation>Unbekannte Aktion %1</translation>
    </message>
    <message>
        <source>No keys yet</source>
        <translation>Noch keine Tasten</translation>
    </message>
    <message>
        <source>Nothing happens. Choose an action above.</source>
        <translation>Nichts geschieht. Wählen Sie oben eine Aktion.</translation>
    </message>
    <message>
        <source>Global Settings: %1</source>
        <translation>Globale Einstellungen: %1</translation>
    </message>
    <message>
        <source>Changes what the ring does.</source>
        <translation>Wechselt, was der Ring tut.</translation>
    </message>
    <message>
        <source>Every %1/60 of a second</source>
        <translation>Alle %1/60 Sekunden</translation>
    </message>
    <message>
        <source>Another program changed %1 too; the changes made here are kept.</source>
        <translation>Auch ein anderes Programm hat %1 geändert; die hier gemachten Änderungen bleiben.</translation>
    </message>
    <message>
        <source>Another program deleted %1, which was changed here; it is kept.</source>
        <translation>Ein anderes Programm hat %1 gelöscht, hier wurde es geändert; es bleibt erhalten.</translation>
    </message>
    <message>
        <source>Another program changed %1, which was deleted here; it stays deleted.</source>
        <translation>Ein anderes Programm hat %1 geändert, hier wurde es gelöscht; es bleibt gelöscht.</translation>
    </message>
    <message>
        <source>&quot;%1&quot;</source>
        <translation>„%1“</translation>
    </message>
    <message>
        <source>%1 and %2 more</source>
        <translation>%1 und %2 weiteren</translation>
    </message>
    <message>
        <source>Another program is saving; your changes will be saved after it.</source>
        <translation>Ein anderes Programm sichert gerade; danach werden Ihre Änderungen gesichert.</translation>
    </message>
    <message>
        <source>Not saved: another program is saving.</source>
        <translation>Nicht gesichert: Ein anderes Programm sichert gerade.</translation>
    </message>
    <message>
        <source>Not saved: couldn&apos;t keep a copy of the damaged settings file: %1.</source>
        <translation>Nicht gesichert: Von der beschädigten Einstellungsdatei konnte keine Kopie aufgehoben werden: %1.</translation>
    </message>
    <message>
        <source>Not saved: the settings file couldn&apos;t be read.</source>
        <translation>Nicht gesichert: Die Einstellungsdatei konnte nicht gelesen werden.</translation>
    </message>
    <message>
        <source>Not saved: %1.</source>
        <translation>Nicht gesichert: %1.</translation>
    </message>
    <message>
        <source>The settings file was damaged. It was kept as %1, and a new one was written.</source>
        <translation>Die Einstellungsdatei war beschädigt. Sie wurde als %1 aufgehoben, und eine neue wurde geschrieben.</translation>
    </message>
    <message>
        <source>Retr&amp;y</source>
        <translation>Erne&amp;ut sichern</translation>
    </message>
    <message>
        <source>&amp;Save Now</source>
        <translation>Jet&amp;zt sichern</translation>
    </message>
    <message>
        <source>All changes saved</source>
        <translation>Alles gesichert</translation>
    </message>
    <message>
        <source>%1 Your changes are kept here.</source>
        <translation>%1 Ihre Änderungen bleiben hier.</translation>
    </message>
    <message>
        <source>Unsaved changes in %1 applications</source>
        <translation>Ungesichert in %1 Anwendungen</translation>
    </message>
    <message>
        <source>Unsaved changes</source>
        <translation>Ungesicherte Änderungen</translation>
    </message>
    <message>
        <source>Unsaved</source>
        <translation>Ungesichert</translation>
    </message>
    <message>
        <source>Unsaved changes in %1</source>
        <translation>Ungesichert: %1</translation>
    </message>
    <message>
        <source>Your settings are saved. Close the window again to leave.</source>
        <translation>Ihre Einstellungen sind gesichert. Zum Beenden das Fenster nochmals schließen.</translation>
    </message>
    <message>
        <source>Add…</source>
        <translation>Hinzufügen …</translation>
    </message>
    <message>
        <source>Add settings for another application (%1)</source>
        <translation>Einstellungen für eine weitere Anwendung hinzufügen (%1)</translation>
    </message>
    <message>
        <source>Delete these settings</source>
        <translation>Diese Einstellungen löschen</translation>
    </message>
    <message>
        <source>For every application without settings of its own</source>
        <translation>Für alle Anwendungen ohne eigene Einstellungen</translation>
    </message>
    <message>
        <source>Factory settings</source>
        <translation>Werkseinstellungen</translation>
    </message>
    <message>
        <source>Your settings</source>
        <translation>Eigene Einstellungen</translation>
    </message>
    <message>
        <source>1 control changed</source>
        <translation>1 Bedienelement geändert</translation>
    </message>
    <message>
        <source>%1 controls changed</source>
        <translation>%1 Bedienelemente geändert</translation>
    </message>
    <message>
        <source>Another program deleted %1</source>
        <translation>Ein anderes Programm hat %1 gelöscht</translation>
    </message>
    <message>
        <source>Another program changed %1 too</source>
        <translation>Ein anderes Programm hat %1 auch geändert</translation>
    </message>
    <message>
        <source>Another program changed %1, which you deleted</source>
        <translation>Ein anderes Programm hat %1 geändert, das Sie gelöscht haben</translation>
    </message>
    <message>
        <source>The device helper isn&apos;t running</source>
        <translation>Das Hilfsprogramm des Geräts läuft nicht</translation>
    </message>
    <message>
        <source>The device does nothing until it runs. Your settings are safe.</source>
        <translation>Das Gerät tut nichts, bis es läuft. Ihre Einstellungen sind sicher.</translation>
    </message>
    <message>
        <source>Start Helper</source>
        <translation>Hilfsprogramm starten</translation>
    </message>
    <message>
        <source>Welcome to your Veltrana</source>
        <translation>Willkommen bei Ihrem Veltrana</translation>
    </message>
    <message>
        <source>Open Help</source>
        <translation>Hilfe öffnen</translation>
    </message>
    <message>
        <source>Got It</source>
        <translation>Verstanden</translation>
    </message>
    <message>
        <source>Pick an application, or stay with Global Settings.</source>
        <translation>Eine Anwendung wählen oder bei den globalen Einstellungen bleiben.</translation>
    </message>
    <message>
        <source>Click a control in the picture.</source>
        <translation>Ein Bedienelement im Bild anklicken.</translation>
    </message>
    <message>
        <source>Choose what it does, then Apply.</source>
        <translation>Wählen, was es tut, dann anwenden.</translation>
    </message>
    <message>
        <source>Your settings replaced the ones another program had saved.</source>
        <translation>Ihre Einstellungen haben die ersetzt, die ein anderes Programm gesichert hatte.</translation>
    </message>
    <message>
        <source>You have changes here that it doesn&apos;t know of. Which should be kept?</source>
        <translation>Hier gibt es Änderungen, die es nicht kennt. Was soll gelten?</translation>
    </message>
    <message>
        <source>Show Theirs</source>
        <translation>Die anderen zeigen</translation>
    </message>
    <message>
        <source>Keep Mine</source>
        <translation>Meine behalten</translation>
    </message>
    <message>
        <source>Version %1, serial %2</source>
        <translation>Version %1, Seriennummer %2</translation>
    </message>
    <message>
        <source>%1 added</source>
        <translation>%1 hinzugefügt</translation>
    </message>
    <message>
        <source>%1 deleted</source>
        <translation>%1 gelöscht</translation>
    </message>
    <message>
        <source>other values</source>
        <translation>andere Werte</translation>
    </message>
    <message>
        <source>damaged</source>
        <translation>beschädigt</translation>
    </message>
    <message>
        <source>Earlier Settings…</source>
        <translation>Frühere Einstellungen …</translation>
    </message>
    <message>
        <source>The earlier settings could not be listed</source>
        <translation>Die früheren Einstellungen konnten nicht aufgelistet werden</translation>
    </message>
    <message>
        <source>There are no earlier settings yet; each save keeps what it replaces.</source>
        <translation>Es gibt noch keine früheren Einstellungen; jedes Sichern bewahrt auf, was es ersetzt.</translation>
    </message>
    <message>
        <source>The earlier settings could not be read; nothing was changed.</source>
        <translation>Die früheren Einstellungen konnten nicht gelesen werden; es wurde nichts geändert.</translation>
    </message>
    <message>
        <source>Couldn&apos;t export: %1. What %2 held is kept in %3, and comes back when it can be written again.</source>
        <translation>Das Exportieren ist nicht gelungen: %1. Was %2 enthielt, ist in %3 aufgehoben und kommt zurück, sobald wieder geschrieben werden kann.</translation>
    </message>
    <message>
        <source>another program kept writing it</source>
        <translation>ein anderes Programm schreibt sie gerade</translation>
    </message>
    <message>
        <source>it is too long</source>
        <translation>sie ist zu lang</translation>
    </message>
    <message>
        <source>The companion dial&apos;s file %1 could not be written: %2. Its entries hold again for buttons I, II and III when it is next read.</source>
        <translation>Die Datei %1 des Begleitgeräts konnte nicht geschrieben werden: %2. Ihre Einträge gelten für die Tasten I, II und III wieder, sobald sie das nächste Mal gelesen wird.</translation>
    </message>
    <message>
        <source>Your settings for buttons I, II and III replaced what another program had meanwhile changed in the companion dial&apos;s file %1.</source>
        <translation>Ihre Einstellungen für die Tasten I, II und III haben ersetzt, was ein anderes Programm inzwischen in der Datei %1 des Begleitgeräts geändert hatte.</translation>
    </message>
    <message>
        <source>What it held is kept as %1.</source>
        <translation>Ihr Inhalt ist als %1 aufgehoben.</translation>
    </message>
    <message>
        <source>The settings are saved, but what was replaced could not be kept: %1.</source>
        <translation>Die Einstellungen sind gesichert, aber was ersetzt wurde, konnte nicht aufbewahrt werden: %1.</translation>
    </message>
    <message>
        <source>What was replaced is under Earlier Settings (%1).</source>
        <translation>Was ersetzt wurde, steht unter „Frühere Einstellungen“ (%1).</translation>
    </message>
    <message>
        <source>Couldn&apos;t undo or redo</source>
        <translation>Zurücknehmen oder Wiederholen ging nicht</translation>
    </message>
</context>
<context>
    <name>drevix::ExportPanel</name>
    <message>
        <source>Export Settings</source>
        <translation>Einstellungen exportieren</translation>
    </message>
    <message>
        <source>A&amp;ll applications</source>
        <translation>A&amp;lle Anwendungen</translation>
    </message>
</context>
<context>
    <name>drevix::FindPanel</name>
    <message>
        <source>Find Action</source>
        <translation>Aktion suchen</translation>
    </message>
    <message>
        <source>Search actions, or type a keystroke such as ctrl+s</source>
        <translation>Aktion suchen, oder Tasten eingeben wie strg+s</translation>
    </message>
    <message>
        <source>Search actions</source>
        <translation>Aktionen suchen</translation>
    </message>
    <message>
        <source>Actions</source>
        <translation>Aktionen</translation>
    </message>
    <message>
        <source>↑ ↓ choose · Enter assigns to %1 · Esc closes</source>
        <translation>↑ ↓ wählt · Enter weist %1 zu · Esc schließt</translation>
    </message>
    <message>
        <source>No action matches “%1”.</source>
        <translation>Keine Aktion passt zu „%1“.</translation>
    </message>
    <message>
        <source>Keystroke</source>
        <translation>Tastendruck</translation>
    </message>
</context>
<context>
    <name>drevix::HistoryPanel</name>
    <message>
        <source>&amp;Restore</source>
        <translation>&amp;Wiederherstellen</translation>
    </message>
    <message>
        <source>Earlier Settings</source>
        <translation>Frühere Einstellungen</translation>
    </message>
    <message>
        <source>Replaced</source>
        <translation>Ersetzt</translation>
    </message>
    <message>
        <source>What changed then</source>
        <translation>Was sich da änderte</translation>
    </message>
    <message>
        <source>&amp;Bring back:</source>
        <translation>&amp;Zurückholen:</translation>
    </message>
    <message>
        <source>All settings</source>
        <translation>Alle Einstellungen</translation>
    </message>
</context>
<context>
    <name>drevix::ImportPanel</name>
    <message>
        <source>Import Settings</source>
        <translation>Einstellungen importieren</translation>
    </message>
</context>
<context>
    <name>drevix::InformationPanel</name>
    <message>
        <source>About Veltrana</source>
        <translation>Über Veltrana</translation>
    </message>
    <message>
        <source>Drevix Veltrana ##</source>
        <translation>Drevix Veltrana ##</translation>
    </message>
    <message>
        <source>Settings panel ##</source>
        <translation>Einstellungen ##</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;Trainer</source>
        <translation>&amp;Trainer</translation>
    </message>
    <message>
        <source>&amp;Website</source>
        <translation>&amp;Website</translation>
    </message>
    <message>
        <source>&amp;Support</source>
        <translation>&amp;Unterstützung</translation>
    </message>
    <message>
        <source>The trainer is not installed.</source>
        <translation>Der Trainer ist nicht installiert.</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Schließen</translation>
    </message>
</context>
<context>
    <name>drevix::ItemPanel</name>
    <message>
        <source>Choose an Item to Open</source>
        <translation>Objekt zum Öffnen wählen</translation>
    </message>
    <message>
        <source>Choose</source>
        <translation>Wählen</translation>
    </message>
    <message>
        <source>&amp;Item:</source>
        <translation>&amp;Objekt:</translation>
    </message>
</context>
<context>
    <name>drevix::KeystrokeField</name>
    <message>
        <source>Stored as %1</source>
        <translation>Gespeichert als %1</translation>
    </message>
    <message>
        <source>Press the keys now</source>
        <translation>Jetzt die Tasten drücken</translation>
    </message>
    <message>
        <source>Waiting for a key combination. Those of the desktop do not arrive: press the key alone, then check its modifiers.</source>
        <translation>Eine Tastenkombination wird erwartet. Die des Desktops kommen nicht an: die Taste allein drücken, dann ihre Zusatztasten ankreuzen.</translation>
    </message>
    <message>
        <source>Waiting for a key combination.</source>
        <translation>Eine Tastenkombination wird erwartet.</translation>
    </message>
    <message>
        <source>Press Enter, then the keys.</source>
        <translation>Enter drücken, dann die Tasten.</translation>
    </message>
    <message>
        <source>%1, stored as %2</source>
        <translation>%1, gespeichert als %2</translation>
    </message>
</context>
<context>
    <name>drevix::LiveView</name>
    <message>
        <source>%1: %2.</source>
        <translation>%1: %2.</translation>
    </message>
</context>
<context>
    <name>drevix::MessageStrip</name>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>drevix::OverviewPanel</name>
    <message>
        <source>&amp;All applications</source>
        <translation>&amp;Alle Anwendungen</translation>
    </message>
    <message>
        <source>Overview</source>
        <translation>Übersicht</translation>
    </message>
    <message>
        <source>Sheets</source>
        <translation>Blätter</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>&amp;Save as PDF…</source>
        <translation>Als PDF &amp;sichern …</translation>
    </message>
    <message>
        <source>&amp;Print…</source>
        <translation>&amp;Drucken …</translation>
    </message>
    <message>
        <source>Couldn&apos;t write “%1”: %2</source>
        <translation>„%1“ konnte nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>Save as PDF</source>
        <translation>Als PDF sichern</translation>
    </message>
    <message>
        <source>PDF documents (*.pdf)</source>
        <translation>PDF-Dokumente (*.pdf)</translation>
    </message>
    <message>
        <source>There is no program that shows PDF documents. The sheet is in “%1”.</source>
        <translation>Es gibt kein Programm für PDF-Dokumente. Das Blatt liegt in „%1“.</translation>
    </message>
</context>
<context>
    <name>drevix::PanelWindow</name>
    <message>
        <source>Drevix Veltrana</source>
        <translation>Drevix Veltrana</translation>
    </message>
</context>
<context>
    <name>drevix::SettingsFilePanel</name>
    <message>
        <source>Veltrana settings (*.%1)</source>
        <translation>Veltrana-Einstellungen (*.%1)</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
</context>
<context>
    <name>drevix::TargetSideBar</name>
    <message>
        <source>Off</source>
        <translation>Aus</translation>
    </message>
    <message>
        <source>Every other application</source>
        <translation>Alle anderen Anwendungen</translation>
    </message>
    <message>
        <source>Search applications</source>
        <translation>Anwendungen suchen</translation>
    </message>
    <message>
        <source>Applications</source>
        <translation>Anwendungen</translation>
    </message>
    <message>
        <source>More</source>
        <translation>Mehr</translation>
    </message>
    <message>
        <source>No application is called “%1”.</source>
        <translation>Keine Anwendung heißt „%1“.</translation>
    </message>
</context>
<context>
    <name>drevix::UnsavedPanel</name>
    <message>
        <source>&amp;Retry</source>
        <translation>Erne&amp;ut sichern</translation>
    </message>
    <message>
        <source>&amp;Export All…</source>
        <translation>Alle &amp;exportieren …</translation>
    </message>
    <message>
        <source>&amp;Discard</source>
        <translation>&amp;Verwerfen</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
    <message>
        <source>Unsaved Settings</source>
        <translation>Ungesicherte Einstellungen</translation>
    </message>
    <message>
        <source>If you discard the changes, the settings stay as they were saved last.</source>
        <translation>Wenn Sie die Änderungen verwerfen, bleiben die Einstellungen, wie sie zuletzt gesichert wurden.</translation>
    </message>
</context>
</TS>
