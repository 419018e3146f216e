"""Combinations pressed in every layout, and how they are stored and shown."""
CMD, SHIFT, CAPS, OPT, CTRL = 0x0100, 0x0200, 0x0400, 0x0800, 0x1000

# What is pressed, in xdotool's words with keys by their X keycode, as no layout changes those; what is stored; the key's name
# where every layout has the same.
EVERYWHERE = [
    ("38", 0x00, 0, None),  # A of the US layout
    ("shift+24", 0x0C, SHIFT, None),  # Q
    ("ctrl+24", 0x0C, CTRL, None),
    ("super+shift+25", 0x0D, CMD | SHIFT, None),  # W
    ("ctrl+alt+shift+super+39", 0x01, CTRL | OPT | SHIFT | CMD, None),  # S
    ("alt+29", 0x10, OPT, None),  # the panel's own Apply
    ("ctrl+15", 0x16, CTRL, None),  # 6
    ("49", 0x32, 0, None),  # a dead key in German and French
    ("94", 0x0A, 0, None),  # beside the left shift key on ISO keyboards
    ("Escape", 0x35, 0, "esc"),
    ("23", 0x30, 0, "tab"),
    ("shift+23", 0x30, SHIFT, "tab"),
    ("ctrl+23", 0x30, CTRL, "tab"),
    ("36", 0x24, 0, "return"),
    ("65", 0x31, 0, "space"),
    ("22", 0x33, 0, "delete"),
    ("119", 0x75, 0, "fw del"),
    ("118", 0x72, 0, "help"),
    ("67", 0x7A, 0, "F1"),
    ("68", 0x78, 0, "F2"),
    ("shift+96", 0x6F, SHIFT, "F12"),
    ("107", 0x69, 0, "F13"),
    ("116", 0x7D, 0, "down"),
    ("super+113", 0x7B, CMD, "left"),
    ("112", 0x74, 0, "pg up"),
    ("110", 0x73, 0, "home"),
    ("87", 0x53, 0, "1"),  # keypad
    ("ctrl+86", 0x45, CTRL, "+"),  # keypad
    ("104", 0x4C, 0, "enter"),  # keypad
    ("135", 0x6E, 0, "\\0"),  # the menu key
    # The window manager's own, which the field gets as soon as the X server has given it the whole keyboard.
    ("alt+70", 0x76, OPT, "F4"),
    ("alt+23", 0x30, OPT, "tab"),
    ("alt+65", 0x31, OPT, "space"),
    ("super+40", 0x02, CMD, None),  # D
]
OF_WINDOW_MANAGER = ("alt+70", "alt+23", "alt+65", "super+40")
# With caps lock on, and the key that turns it off again.
WITH_CAPS_LOCK = [("54", 0x08, CAPS, None), ("ctrl+54", 0x08, CAPS | CTRL, None)]  # C

# Names of keys by key code. The letters of Russian are not those of the names: there the US layout's are.
US_NAMES = {0x00: "a", 0x0C: "q", 0x0D: "w", 0x01: "s", 0x16: "6", 0x32: "`", 0x02: "d", 0x08: "c"}
WORDS = [(CMD, "cmd+"), (SHIFT, "shift+"), (CAPS, "caps+"), (OPT, "opt+"), (CTRL, "ctrl+")]


def combination_name(key_code, modifiers, name):
    keypad = "num+" if 65 <= key_code <= 92 else ""
    return "".join(word for bit, word in WORDS if modifiers & bit) + keypad + name
