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
EXTENDED = [
    "Alarm list unacknowledged", "Alarm list acknowledged", "Alarm list cleared", "Alarm list background",
    "Alarm list selection", "Event list text", "Event list background", "Event list selection",
    "Blocking list text", "Blocking list background", "Blocking list selection", "Trend grid",
    "Trend background", "Trend cursor", "Report grid", "Report background", "Report header",
    "State normal", "State warning", "State fault", "State maintenance", "State unknown",
    "Pipeline empty", "Pipeline filled", "Pipeline flowing", "Pipeline blocked", "Pipeline fault",
    "Signal display background", "Signal display text", "Signal display selection",
]
EXTENDED_RGB = [
    (255, 0, 0), (255, 160, 0), (0, 160, 0), (255, 255, 255), (0, 120, 215), (0, 0, 0), (250, 250, 240),
    (0, 120, 215), (96, 0, 96), (245, 240, 250), (0, 120, 215), (200, 200, 200), (20, 20, 40),
    (255, 255, 0), (180, 180, 180), (255, 255, 255), (60, 90, 140), (0, 170, 0), (240, 200, 0),
    (220, 0, 0), (0, 140, 220), (150, 150, 150), (210, 210, 210), (70, 110, 200), (0, 200, 255),
    (130, 60, 0), (255, 0, 255), (16, 16, 16), (230, 230, 230), (255, 140, 0),
]


def field(v):
    return f"{v:>3}  "


def line(index):
    if index < 16:
        name, r, g, b = BASIC[index]
    elif index < 232:
        n = index - 16
        r, g, b = LEVELS[n // 36], LEVELS[n // 6 % 6], LEVELS[n % 6]
        name = f"Display colour {r}/{g}/{b}"
    elif index < 256:
        r = g = b = 8 + 10 * (index - 232)
        name = f"Grey {index - 231}"
    else:
        name = EXTENDED[index - 256]
        r, g, b = EXTENDED_RGB[index - 256]
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
