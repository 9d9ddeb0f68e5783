#!/usr/bin/env python3
"""Writes our factory colour table, its reference copy and default_FrameWindow.ini.

Run once; the generated files are committed and are what the tests read.
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


def field(v):
    return f"{v:>3}  "


def line(index):
    if index in STATUS:
        name, (r, g, b) = STATUS[index]
    elif index < 16:
        name, r, g, b = BASIC[index]
    elif index < 232:
        n = index - 16
        r, g, b = LEVELS[n // 36], LEVELS[n // 6 % 6], LEVELS[n % 6]
        name = f"Display colour {r}/{g}/{b}"
    elif index < 256:
        r = g = b = 8 + 10 * (index - 232)
        name = f"Grey {index - 231}"
    else:
        name, (r, g, b) = EXTENDED[index - 256]
    text = ("#" if index >= 256 else "") + field(r) + field(g) + field(b) + f"# {index}: {name}"
    if index == 0:
        text += " Version=93.07"
    return text


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    table = "".join(line(i) + "\r\n" for i in range(286)).encode("ascii")
    for name in ("QLT830_colors.clut", "QLT830_colors$clut"):
        with open(os.path.join(here, name), "wb") as f:
            f.write(table)
    with open(os.path.join(here, "default_FrameWindow.ini"), "wb") as f:
        f.write(b"[COLORSCHEMES]\r\nClutFile=QLT830_colors.clut\r\n")


if __name__ == "__main__":
    main()
