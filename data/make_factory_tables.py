#!/usr/bin/env python3
"""Writes our factory colour tables, their reference copies and default_FrameWindow.ini.

Three tables: the classic look (QLT830_colors.clut) and two high-performance schemes,
on a dark grey (QLT830_highperformance.clut) and on a light-to-mid grey process
background (QLT830_highperformance_light.clut). Run once; the generated files are
committed and are what the tests read.
"""
import math
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


# The high-performance schemes: a grey world in which colour means something needs
# attention. Every colour the editor shows has a meaning (its row's name) and gets the
# colour of a role; meanings that share a role share their colour on purpose:
#   - equipment states that are normal are greys: off, open and de-energised in the
#     dim grey, on, closed and energised in the bright grey, moving in between, with
#     the symbol telling open from closed and opening from closing;
#   - the abnormal states keep the colours of the status groups: "Error" of the
#     network topology and "Faulty" of a switching device are "Faulty or invalid value",
#     "Uncertain" topology is "Obsolete or not updating", a switching device stuck in
#     the intermediate position is a limit warning, and the "Manual" mode is
#     "Manually entered": the operator's hand;
#   - the high and low alarms are "Alarm", the high and low warnings one amber; the
#     unacknowledged alarm stands apart from the acknowledged one;
#   - voltage levels, the colours of powered lines (Powered k is voltage level k) and
#     the pipeline media keep muted hues: told apart when looked for, never competing
#     with an alarm;
#   - the drawing palette of the displays (the indexes no row shows) is the classic
#     one at half saturation.
# Two variants: a dark grey process background, and a light-to-mid grey one. Every
# colour drawn on the background stands out from it at least 3:1, text 7:1; the
# status groups stay apart also for protanopes, deuteranopes and tritanopes.
# src/quality checks every rule on both.

# Which role each shown colour takes.
HP_ROLES = {
    1: "tooltip", 16: "frame highlight", 17: "frame shadow", 19: "bounding box", 20: "unmapped", 21: "unmapped",
    22: "unmapped", 29: "unmapped", 23: "background", 30: "text", 31: "new object", 66: "highlight",
    32: "normal", 45: "alarm", 28: "alarm", 24: "alarm", 46: "alarm, unacknowledged",
    48: "alarm, unacknowledged background", 44: "warning", 27: "limit warning", 25: "limit warning",
    35: "faulty", 39: "not updating", 38: "not sampled", 50: "faulty time", 34: "blocked",
    47: "control blocked", 37: "manual", 43: "substituted", 41: "selected", 42: "selected, under command",
    49: "selected, under command background",
    110: "tagout 1", 111: "tagout 2", 112: "tagout 3", 113: "tagout 4", 114: "tagout 5", 115: "tagout 6",
    116: "tagout 7", 117: "reserved", 118: "reserved", 119: "reserved",
    57: "off", 60: "on", 58: "earthed", 56: "not updating", 59: "looped", 61: "faulty", 62: "equipment",
    64: "equipment", 65: "equipment", 67: "winding 1", 68: "winding 2", 69: "winding 3", 70: "winding 4",
    18: "local", 26: "on", 33: "on", 36: "manual", 100: "off", 101: "moving", 102: "on", 103: "moving",
    104: "limit warning", 105: "faulty", 108: "on", 109: "off", 106: "on", 107: "off",
    40: "drinking water", 51: "filtered water", 52: "other medium", 53: "rain water", 54: "raw water",
    63: "recycled water", 71: "rinsed air", 77: "rinsed water", 78: "sludge", 79: "vented water",
}
# Voltage levels 1-10 (80-89) and the powered colours 1-15 (72-76, 90-99).
for k in range(1, 11):
    HP_ROLES[79 + k] = f"voltage {k}"
for k in range(1, 16):
    HP_ROLES[(71 + k) if k <= 5 else (84 + k)] = f"voltage {k}"


def srgb_from_lab(L, a, b):
    """CIELAB (D65) to 8-bit sRGB, clipped."""
    fy = (L + 16) / 116
    fx, fz = fy + a / 500, fy - b / 200
    d = 6 / 29

    def finv(t):
        return t ** 3 if t > d else 3 * d * d * (t - 4 / 29)

    white = (0.9505, 1.0000, 1.0890)
    x, y, z = (w * finv(f) for w, f in zip(white, (fx, fy, fz)))
    linear = (3.2406 * x - 1.5372 * y - 0.4986 * z, -0.9689 * x + 1.8758 * y + 0.0415 * z,
              0.0557 * x - 0.2040 * y + 1.0570 * z)

    def encode(c):
        c = min(max(c, 0.0), 1.0)
        return 12.92 * c if c <= 0.0031308 else 1.055 * c ** (1 / 2.4) - 0.055

    return tuple(int(round(encode(c) * 255)) for c in linear)


def hue_ring(count, lightness, chroma, start):
    """`count` muted hues of one lightness, evenly round the hue circle."""
    return [srgb_from_lab(lightness, chroma * math.cos(math.radians(start + 360 * k / count)),
                          chroma * math.sin(math.radians(start + 360 * k / count))) for k in range(count)]


HP_DARK = {
    "background": (56, 56, 56), "text": (235, 235, 235), "tooltip": (240, 240, 210),
    "frame highlight": (100, 100, 100), "frame shadow": (28, 28, 28), "bounding box": (110, 110, 110),
    "unmapped": (170, 150, 190), "new object": (160, 200, 220), "highlight": (255, 255, 255),
    "normal": (160, 160, 160), "alarm": (255, 120, 120), "alarm, unacknowledged": (255, 40, 40),
    "alarm, unacknowledged background": (120, 0, 0), "warning": (255, 208, 0), "limit warning": (255, 176, 0),
    "faulty": (255, 170, 255), "not updating": (235, 205, 255), "not sampled": (255, 255, 255),
    "faulty time": (255, 190, 255), "blocked": (64, 144, 255), "control blocked": (100, 120, 255),
    "manual": (100, 150, 255), "substituted": (80, 130, 240), "selected": (190, 240, 255),
    "selected, under command": (255, 255, 160), "selected, under command background": (72, 72, 104),
    "tagout 1": (255, 70, 70), "tagout 2": (255, 150, 40), "tagout 3": (255, 230, 64), "tagout 4": (200, 160, 90),
    "tagout 5": (200, 200, 200), "tagout 6": (110, 150, 230), "tagout 7": (200, 220, 255), "reserved": (150, 150, 150),
    "off": (140, 140, 140), "on": (215, 215, 215), "moving": (178, 178, 178), "equipment": (190, 190, 190),
    "earthed": (150, 200, 120), "looped": (120, 200, 210), "local": (120, 190, 230),
    "winding 1": (225, 225, 225), "winding 2": (195, 195, 195), "winding 3": (170, 170, 170),
    "winding 4": (150, 150, 150),
    "drinking water": (120, 170, 230), "filtered water": (110, 190, 190), "other medium": (170, 170, 170),
    "rain water": (150, 175, 200), "raw water": (160, 180, 120), "recycled water": (130, 190, 140),
    "rinsed air": (170, 180, 230), "rinsed water": (140, 200, 220), "sludge": (180, 150, 110),
    "vented water": (200, 195, 150),
}
HP_DARK.update({f"voltage {k + 1}": rgb for k, rgb in enumerate(hue_ring(15, 72, 28, 10))})

# The light variant: everything drawn on the background darker than it. Its status
# colours were searched within their families (red, amber, magenta, blue) for the
# distinctness rules under the simulations; a light background leaves less room.
HP_LIGHT = {
    "background": (210, 210, 210), "text": (24, 24, 24), "tooltip": (255, 255, 225),
    "frame highlight": (240, 240, 240), "frame shadow": (150, 150, 150), "bounding box": (160, 160, 160),
    "unmapped": (110, 80, 130), "new object": (0, 90, 120), "highlight": (0, 0, 0),
    "normal": (63, 63, 63), "alarm": (94, 0, 0), "alarm, unacknowledged": (150, 16, 8),
    "alarm, unacknowledged background": (255, 190, 190), "warning": (160, 105, 0), "limit warning": (156, 95, 16),
    "faulty": (190, 32, 222), "not updating": (150, 80, 222), "not sampled": (120, 100, 140),
    "faulty time": (212, 0, 108), "blocked": (0, 60, 164), "control blocked": (40, 40, 170),
    "manual": (0, 80, 150), "substituted": (30, 60, 130), "selected": (0, 0, 0),
    "selected, under command": (110, 90, 0), "selected, under command background": (255, 255, 200),
    "tagout 1": (132, 0, 0), "tagout 2": (182, 48, 0), "tagout 3": (119, 100, 63), "tagout 4": (94, 66, 24),
    "tagout 5": (48, 48, 48), "tagout 6": (62, 112, 192), "tagout 7": (90, 60, 150), "reserved": (100, 100, 100),
    "off": (110, 110, 110), "on": (40, 40, 40), "moving": (75, 75, 75), "equipment": (60, 60, 60),
    "earthed": (40, 110, 40), "looped": (0, 110, 120), "local": (0, 90, 160),
    "winding 1": (30, 30, 30), "winding 2": (60, 60, 60), "winding 3": (85, 85, 85), "winding 4": (105, 105, 105),
    "drinking water": (30, 80, 160), "filtered water": (0, 110, 110), "other medium": (100, 100, 100),
    "rain water": (60, 90, 130), "raw water": (90, 100, 40), "recycled water": (40, 110, 60),
    "rinsed air": (80, 80, 160), "rinsed water": (0, 100, 140), "sludge": (110, 80, 40),
    "vented water": (100, 100, 60),
}
HP_LIGHT.update({f"voltage {k + 1}": rgb for k, rgb in enumerate(hue_ring(15, 40, 35, 10))})

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

# The light variant's lists: light throughout, the alarm list too.
HP_LIGHT_EXTENDED = [
    ("Alarm list background, light grey", (224, 224, 224)), ("Alarm list gridline, grey", (176, 176, 176)),
    ("Alarm list text, near black", (24, 24, 24)), ("Reserved", (192, 192, 192)), ("Reserved", (192, 192, 192)),
    ("Reserved", (192, 192, 192)), ("Event list background, light grey", (232, 232, 232)),
    ("Event list gridline, grey", (192, 192, 192)), ("Event list day break, dark blue", (40, 70, 140)),
    ("Event list text, near black", (24, 24, 24)), ("Blocking list background, light warm grey", (236, 236, 228)),
    ("Blocking list gridline, grey", (200, 200, 192)), ("Blocking list text, near black", (24, 24, 24)),
    ("Trend graph background, light grey", (216, 216, 216)), ("Trend graph gridline, grey", (176, 176, 176)),
    ("Reserved", (192, 192, 192)),
    ("Trend table background, light grey", (236, 236, 236)), ("Trend table shading, grey", (220, 220, 220)),
    ("Trend table gridline, grey", (192, 192, 192)), ("Trend table text, near black", (24, 24, 24)),
    ("Report graph background, light grey", (216, 216, 216)), ("Report graph gridline, grey", (176, 176, 176)),
    ("Reserved", (192, 192, 192)),
    ("Report table background, light grey", (236, 236, 236)), ("Report table shading, grey", (220, 220, 220)),
    ("Report table gridline, grey", (192, 192, 192)), ("Report table text, near black", (24, 24, 24)),
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
    return format_line(index, name, (r, g, b))


def format_line(index, name, rgb):
    r, g, b = rgb
    text = ("#" if index >= 256 else "") + field(r) + field(g) + field(b) + f"# {index}: {name}"
    if index == 0:
        text += " Version=93.07"
    return text


def hp_line(index, colours, extended):
    """A line of a high-performance scheme: a shown colour from its role, the drawing
    palette muted, the lists from `extended`."""
    if index in HP_ROLES:
        role = HP_ROLES[index]
        return format_line(index, role[0].upper() + role[1:], colours[role])
    if index < 16 and index not in (0, 7, 8, 15):
        name, r, g, b = BASIC[index]
        name, rgb = muted(name, (r, g, b))
        return format_line(index, name, rgb)
    return line(index, {}, extended, muted)


def write_table(here, stem, make_line):
    table = "".join(make_line(i) + "\r\n" for i in range(286)).encode("ascii")
    for name in (stem + ".clut", stem + "$clut"):
        with open(os.path.join(here, name), "wb") as f:
            f.write(table)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    write_table(here, "QLT830_colors", line)
    write_table(here, "QLT830_highperformance", lambda i: hp_line(i, HP_DARK, HP_EXTENDED))
    write_table(here, "QLT830_highperformance_light", lambda i: hp_line(i, HP_LIGHT, HP_LIGHT_EXTENDED))
    with open(os.path.join(here, "default_FrameWindow.ini"), "wb") as f:
        f.write(b"[COLORSCHEMES]\r\nClutFile=QLT830_colors.clut\r\n")


if __name__ == "__main__":
    main()
