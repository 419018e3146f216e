#!/usr/bin/python3
"""A window from which a file can be dragged, for tests. Usage: drag_source.py FILE"""
import pathlib
import sys

import gi
gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk

window = Gtk.Window(title="Drag source")
source = Gtk.EventBox()
source.drag_source_set(Gdk.ModifierType.BUTTON1_MASK, [], Gdk.DragAction.COPY)
source.drag_source_add_uri_targets()
source.connect("drag-data-get", lambda _, __, data, *___: data.set_uris([pathlib.Path(sys.argv[1]).as_uri()]))
window.add(source)
window.set_default_size(120, 80)
window.show_all()
Gtk.main()
