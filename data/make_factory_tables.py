#!/usr/bin/env python3
"""Writes our factory colour tables, their reference copies and default_FrameWindow.ini.

Two tables: the classic look (QLT830_colors.clut) and a high-performance scheme
(QLT830_highperformance.clut). Run once; the generated files are committed and are
what the tests read.
"""
import os

BASIC = [
    ("Black", 0, 0, 0), ("Dark red", 128, 0, 0), ("Dark green", 0, 128, 0), ("Olive", 128, 128, 0),
    ("Navy", 0, 0, 128), ("Purple", 128, 0, 128), ("Teal", 0, 128, 128), ("Light grey", 192, 192, 192),
    ("Grey", 128, 128, 128), ("Red", 255, 0, 0), ("Green", 0, 255, 0), ("Yellow", 255, 255, 0),
    ("Blue", 0, 0, 255), ("Magenta", 255, 0, 255), ("Cyan", 0, 255, 255), ("White", 255, 255, 255),
]
LEVELS = [0, 51, 102, 153, 204, 255]
# The list displays' colours, 256 to 285, in the classic look: a dark alarm list with
# white text, light event, blocking and report tables with black text, dark trend and
# report graphs. Indexes no display uses are kept light grey.
EXTENDED = [
    ("Alarm list background", (0, 0, 0)), ("Alarm list gridline", (80, 80, 80)),
    ("Alarm list text", (255, 255, 255)), ("Reserved", (192, 192, 192)), ("Reserved", (192, 192, 192)),
    ("Reserved", (192, 192, 192)), ("Event list background", (255, 255, 255)),
    ("Event list gridline", (192, 192, 192)), ("Event list day break", (0, 0, 160)),
    ("Event list text", (0, 0, 0)), ("Blocking list background", (255, 255, 225)),
    ("Blocking list gridline", (200, 200, 160)), ("Blocking list text", (0, 0, 0)),
    ("Trend graph background", (0, 0, 0)), ("Trend graph gridline", (96, 96, 96)), ("Reserved", (192, 192, 192)),
    ("Trend table background", (255, 255, 255)), ("Trend table shading", (232, 240, 255)),
    ("Trend table gridline", (192, 192, 192)), ("Trend table text", (0, 0, 0)),
    ("Report graph background", (0, 0, 0)), ("Report graph gridline", (96, 96, 96)), ("Reserved", (192, 192, 192)),
    ("Report table background", (255, 255, 255)), ("Report table shading", (240, 240, 240)),
    ("Report table gridline", (192, 192, 192)), ("Report table text", (0, 0, 0)),
    ("Reserved", (192, 192, 192)), ("Reserved", (192, 192, 192)), ("Reserved", (192, 192, 192)),
]

# The status colours of the process displays on their black background, in the
# classic look: red alarms, yellow warnings, green normal, magenta, cyan and white for
# the quality of a value, blues and violet for what an operator has done.
STATUS = {
    23: ("Process display background", (0, 0, 0)),
    32: ("Normal", (0, 200, 0)),
    45: ("Alarm", (255, 40, 40)), 46: ("Alarm, unacknowledged", (255, 0, 0)),
    48: ("Alarm, unacknowledged background", (128, 0, 0)),
    28: ("Measurement high alarm", (255, 0, 0)), 24: ("Measurement low alarm", (255, 0, 0)),
    44: ("Warning", (255, 255, 0)), 27: ("Measurement high warning", (255, 200, 0)),
    25: ("Measurement low warning", (255, 200, 0)),
    35: ("Faulty or invalid value", (255, 0, 255)), 39: ("Obsolete or not updating", (0, 255, 255)),
    38: ("Not sampled or OPC quality bad", (255, 255, 255)), 50: ("Faulty time", (255, 150, 200)),
    34: ("Blocked", (0, 128, 255)), 47: ("Control blocked", (96, 96, 255)),
    37: ("Manually entered", (150, 200, 255)), 43: ("Substituted", (200, 100, 255)),
    41: ("Selected", (255, 255, 255)), 42: ("Selected, under command", (255, 255, 128)),
    49: ("Selected, under command background", (64, 64, 128)),
    # Tagout priorities, from the most severe down.
    110: ("Tagout priority 1", (255, 0, 0)), 111: ("Tagout priority 2", (255, 112, 0)),
    112: ("Tagout priority 3", (255, 200, 0)), 113: ("Tagout priority 4", (200, 255, 0)),
    114: ("Tagout priority 5", (0, 200, 0)), 115: ("Tagout priority 6", (0, 170, 255)),
    116: ("Tagout priority 7", (150, 100, 255)),
}


# The high-performance scheme: a grey world in which colour means something is wrong.
# The process display background is a dark grey; normal states and the display's
# equipment are greys and muted tones; saturated colour is kept for the abnormal
# states, each group in its own family that stays apart also for protanopes,
# deuteranopes and tritanopes: alarms red, warnings amber, value quality magenta to
# white, operator actions blue. The lists are light grey with near-black text, the
# alarm list dark grey with near-white text. src/quality checks every rule on it.
HP_STATUS = {
    23: ("Process display background, dark grey", (56, 56, 56)),
    32: ("Normal, grey", (150, 150, 150)),
    45: ("Alarm, red", (255, 64, 64)), 46: ("Alarm, unacknowledged, red", (255, 40, 40)),
    48: ("Alarm, unacknowledged background, dark red", (120, 0, 0)),
    28: ("Measurement high alarm, red", (255, 64, 64)), 24: ("Measurement low alarm, red", (255, 64, 64)),
    44: ("Warning, amber", (255, 208, 0)), 27: ("Measurement high warning, amber", (255, 176, 0)),
    25: ("Measurement low warning, amber", (255, 176, 0)),
    35: ("Faulty or invalid value, light magenta", (255, 170, 255)),
    39: ("Obsolete or not updating, pale magenta", (255, 190, 255)),
    38: ("Not sampled or OPC quality bad, white", (255, 255, 255)),
    50: ("Faulty time, pale magenta", (255, 190, 255)),
    34: ("Blocked, blue", (64, 144, 255)), 47: ("Control blocked, blue", (96, 128, 255)),
    37: ("Manually entered, blue", (100, 150, 255)), 43: ("Substituted, blue", (80, 140, 255)),
    41: ("Selected, white", (255, 255, 255)), 42: ("Selected, under command, pale yellow", (255, 255, 160)),
    49: ("Selected, under command background, slate", (72, 72, 104)),
    # Tagout priorities, from the most severe down: neighbours differ in lightness
    # as well as in hue.
    110: ("Tagout priority 1, red", (200, 0, 0)), 111: ("Tagout priority 2, orange", (255, 128, 0)),
    112: ("Tagout priority 3, yellow", (255, 230, 64)), 113: ("Tagout priority 4, brown", (160, 110, 40)),
    114: ("Tagout priority 5, light grey", (200, 200, 200)), 115: ("Tagout priority 6, steel blue", (90, 130, 200)),
    116: ("Tagout priority 7, pale blue", (200, 220, 255)),
}
HP_EXTENDED = [
    ("Alarm list background, dark grey", (48, 48, 48)), ("Alarm list gridline, grey", (80, 80, 80)),
    ("Alarm list text, near white", (235, 235, 235)), ("Reserved", (192, 192, 192)), ("Reserved", (192, 192, 192)),
    ("Reserved", (192, 192, 192)), ("Event list background, light grey", (224, 224, 224)),
    ("Event list gridline, grey", (192, 192, 192)), ("Event list day break, dark blue", (40, 70, 140)),
    ("Event list text, near black", (32, 32, 32)), ("Blocking list background, light warm grey", (232, 232, 224)),
    ("Blocking list gridline, grey", (200, 200, 192)), ("Blocking list text, near black", (32, 32, 32)),
    ("Trend graph background, dark grey", (56, 56, 56)), ("Trend graph gridline, grey", (88, 88, 88)),
    ("Reserved", (192, 192, 192)),
    ("Trend table background, light grey", (232, 232, 232)), ("Trend table shading, grey", (216, 216, 216)),
    ("Trend table gridline, grey", (192, 192, 192)), ("Trend table text, near black", (32, 32, 32)),
    ("Report graph background, dark grey", (56, 56, 56)), ("Report graph gridline, grey", (88, 88, 88)),
    ("Reserved", (192, 192, 192)),
    ("Report table background, light grey", (232, 232, 232)), ("Report table shading, grey", (216, 216, 216)),
    ("Report table gridline, grey", (192, 192, 192)), ("Report table text, near black", (32, 32, 32)),
    ("Reserved", (192, 192, 192)), ("Reserved", (192, 192, 192)), ("Reserved", (192, 192, 192)),
]


def muted(name, rgb):
    """A display colour at half its saturation: drawings keep their hue but never
    compete with the colours of abnormal states."""
    grey = 0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2]
    r, g, b = (int(round(grey + (c - grey) / 2)) for c in rgb)
    return f"{name} at half saturation", (r, g, b)


def field(v):
    return f"{v:>3}  "


def line(index, status=STATUS, extended=EXTENDED, palette=lambda name, rgb: (name, rgb)):
    if index in status:
        name, (r, g, b) = status[index]
    elif index < 16:
        name, r, g, b = BASIC[index]
    elif index < 232:
        n = index - 16
        r, g, b = LEVELS[n // 36], LEVELS[n // 6 % 6], LEVELS[n % 6]
        name, (r, g, b) = palette(f"Display colour {r}/{g}/{b}", (r, g, b))
    elif index < 256:
        r = g = b = 8 + 10 * (index - 232)
        name = f"Grey {index - 231}"
    else:
        name, (r, g, b) = extended[index - 256]
    text = ("#" if index >= 256 else "") + field(r) + field(g) + field(b) + f"# {index}: {name}"
    if index == 0:
        text += " Version=93.07"
    return text


def write_table(here, stem, make_line):
    table = "".join(make_line(i) + "\r\n" for i in range(286)).encode("ascii")
    for name in (stem + ".clut", stem + "$clut"):
        with open(os.path.join(here, name), "wb") as f:
            f.write(table)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    write_table(here, "QLT830_colors", line)
    write_table(here, "QLT830_highperformance", lambda i: line(i, HP_STATUS, HP_EXTENDED, muted))
    with open(os.path.join(here, "default_FrameWindow.ini"), "wb") as f:
        f.write(b"[COLORSCHEMES]\r\nClutFile=QLT830_colors.clut\r\n")


if __name__ == "__main__":
    main()
