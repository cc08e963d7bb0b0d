# SPDX-License-Identifier: MIT
"""Interface cards, converters and controllers."""

from pictures.canvas import CABLE, COPPER, DARK, GLASS, INK, METAL

BOARD = ("#3f9d63", "#25764a")


def card(c, accent, w, channels):
    """A plug-in card with its slot bracket, chips and gold contacts."""
    left = 96 - w - 2
    c.box(left + 12, 62, w - 26, 12, fill="#d9a62e", radius=0)
    for x in range(left + 16, left + w - 16, 4):
        c.line([(x, 64), (x, 72)], INK, 1)
    c.line([(left + w // 2 + 8, 62), (left + w // 2 + 8, 76)], INK, 2)
    c.box(left, 12, w, 52, fill=BOARD, radius=2)
    c.box(left + 22, 20, 22, 22, fill=DARK, radius=1)
    for y in range(24, 40, 4):
        c.line([(left + 18, y), (left + 22, y)], "#e9edf1", 1)
        c.line([(left + 44, y), (left + 48, y)], "#e9edf1", 1)
    for i in range(3):
        c.box(left + w - 26, 18 + 10 * i, 18, 7, fill=DARK, radius=1, outline=None)
    c.line([(left + 24, 52), (left + w - 20, 52), (left + w - 12, 44)], "#8fd3a8", 1)
    c.line([(left + 24, 56), (left + w - 16, 56), (left + w - 8, 48)], "#8fd3a8", 1)
    c.box(left - 4, 6, 8, 70, fill=METAL, radius=1, across=True)
    height = 36 // channels
    for i in range(channels):
        c.box(left - 2, 18 + i * (height + 4), 12, height, fill=accent, radius=1)


def _socket(c, kind, x, y):
    """A connector on the front, 14 wide."""
    if kind == "usb":
        c.box(x, y + 2, 14, 8, fill="#e9edf1", radius=1)
        c.box(x + 4, y + 4, 6, 2, fill=INK, radius=0, outline=None)
    elif kind == "eth":
        c.box(x, y, 14, 12, fill="#1f2933", radius=1, outline=INK)
        c.box(x + 3, y + 4, 8, 6, fill="#d9a62e", radius=0, outline=None)
        c.box(x + 5, y + 2, 4, 3, fill="#d9a62e", radius=0, outline=None)
    else:
        c.disc(x + 7, y + 6, 7, fill=DARK)
        c.disc(x + 7, y + 6, 2, fill="#e9edf1", outline=None)


def converter(c, accent, w, h, sockets, mark, fins=0):
    """A box with connectors at its front and the mark of its bus on the lid."""
    left, top = (96 - w) // 2, 44 - h // 2
    if fins:
        for i in range(fins):
            c.box(left + 8 + i * (w - 16) // fins, top - 8, 6, 12, fill=METAL, radius=1, across=True)
    c.box(left + 6, top + h - 4, 10, 6, fill=DARK, radius=1)
    c.box(left + w - 16, top + h - 4, 10, 6, fill=DARK, radius=1)
    c.box(left, top, w, h)
    c.box(left + 2, top + 5, w - 4, 4, fill=accent, radius=0, outline=None)
    gap = (w - 14 * len(sockets)) // (len(sockets) + 1)
    for i, kind in enumerate(sockets):
        _socket(c, kind, left + gap + i * (14 + gap), top + h - 17)
    cx, y = 48, top + (h - 20) // 2 + 6
    if mark == "usb":
        c.line([(cx - 12, y), (cx + 10, y)], INK)
        c.disc(cx - 12, y, 3, fill=INK, outline=None)
        c.arrow_head(cx + 14, y, (1, 0), INK, 6)
        c.line([(cx - 8, y), (cx - 3, y - 5), (cx + 3, y - 5)], INK)
        c.line([(cx - 4, y), (cx + 1, y + 5), (cx + 5, y + 5)], INK)
    elif mark == "net":
        c.line([(cx, y - 4), (cx, y)], INK)
        c.line([(cx - 13, y + 5), (cx - 13, y), (cx + 13, y), (cx + 13, y + 5)], INK)
        for x, dy in ((cx, -5), (cx - 13, 5), (cx, 5), (cx + 13, 5)):
            c.box(x - 3, y + dy - 3, 6, 6, fill=INK, radius=0, outline=None)
        c.line([(cx, y), (cx, y + 5)], INK)
    elif mark == "bus":
        c.line([(cx - 20, y), (cx + 20, y)], INK)
        for x in (cx - 14, cx, cx + 14):
            c.line([(x, y), (x, y + 5)], INK)
            c.box(x - 4, y + 3, 8, 6, fill=INK, radius=0, outline=None)
        c.box(cx - 6, y - 7, 12, 5, fill=INK, radius=0, outline=None)
        c.line([(cx, y - 3), (cx, y)], INK)


def controller(c, accent, w, h, knob, sockets):
    """A desktop controller with a screen that shows the measured curve."""
    left, top = (96 - w) // 2, 42 - h // 2
    c.box(left + 8, top + h - 4, 12, 8, fill=DARK, radius=2)
    c.box(left + w - 20, top + h - 4, 12, 8, fill=DARK, radius=2)
    c.box(left, top, w, h, radius=4)
    c.box(left + 2, top + 4, w - 4, 4, fill=accent, radius=0, outline=None)
    sw = w - 34 if knob else w - 16
    c.box(left + 8, top + 12, sw, h - 34, fill=DARK, radius=2)
    y = top + 12 + (h - 34) // 2
    c.line([(left + 12, y + 4), (left + 8 + sw // 3, y + 4), (left + 8 + sw // 2, y - 5),
            (left + 8 + 2 * sw // 3, y + 2), (left + 4 + sw, y - 3)], GLASS, 2)
    if knob:
        c.disc(left + w - 14, top + 21, 9, fill=METAL[:2])
        c.line([(left + w - 14, top + 21), (left + w - 10, top + 15)], INK)
    gap = (w - 14 * sockets) // (sockets + 1)
    for i in range(sockets):
        _socket(c, "round", left + gap + i * (14 + gap), top + h - 18)


def any_sensor(c, accent):
    """A sensor of no known family: a plain head that sends out waves."""
    c.curve((30, 16), (30, 4), (18, 10), (10, 4), CABLE)
    for radius in (14, 24, 34):
        c.arc(48, 38, radius, 40, 140, accent, 3)
    c.box(24, 12, 48, 30)
    c.box(26, 18, 44, 5, fill=accent, radius=0, outline=None)
    c.box(38, 38, 20, 7, fill=DARK, radius=2)
    c.screw(31, 31)
    c.screw(65, 31)
    c.line([(44, 29), (52, 29)], COPPER, 2)
