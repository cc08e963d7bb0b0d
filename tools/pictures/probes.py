# SPDX-License-Identifier: MIT
"""Sensors that measure with electric and magnetic fields, by touch, or by inertia."""

from pictures.canvas import COPPER, DARK, FLOOR, GLASS, INK, METAL


def _thread(c, x, y, w, h, pitch=4):
    c.box(x, y, w, h, fill=METAL, radius=1, across=True)
    for mark in range(y + 4, y + h - 3, pitch):
        c.line([(x + 2, mark + 1), (x + w - 2, mark - 1)], "#5d6a77", 1)


def eddy_current(c, accent, d, length, coil, threaded=True, controller=False, x=48):
    """A probe whose coil sends a magnetic field into a metal part."""
    top = 12
    bottom = top + length
    if controller:
        c.curve((x, top), (x, 0), (24, -2), (24, 18))
        c.box(6, 16, 34, 32)
        c.box(8, 20, 30, 4, fill=accent, radius=0, outline=None)
        c.box(12, 28, 22, 12, fill=DARK, radius=2)
        c.line([(16, 34), (28, 34)], GLASS)
    else:
        c.curve((x, top), (x, 2), (x + 20, 10), (x + 36, 4))
    reach = FLOOR - bottom
    for i in (1, 2):
        radius = coil // 2 - 4 + 5 * i
        c.curve((x - radius + 4, bottom), (x - radius - 2, bottom + reach * (0.3 + 0.5 * i)),
                (x + radius + 2, bottom + reach * (0.3 + 0.5 * i)), (x + radius - 4, bottom), accent, 2)
    c.target(*((46, 46) if controller else ()))
    for half in (6, 13, 20):
        c.arc(x, FLOOR + 5, half, 0, 360, accent, 1, squash=0.17)
    c.box(x - 5, top - 6, 10, 10, fill=DARK, radius=2)
    if threaded:
        _thread(c, x - d // 2, top, d, length - 10)
        c.box(x - d // 2 - 4, top + 8, d + 8, 7, radius=1, fill=METAL, across=True)
    else:
        c.box(x - d // 2, top, d, length - 10, fill=METAL, radius=2, across=True)
    c.box(x - coil // 2, bottom - 12, coil, 12, fill="#f2e3cf", radius=2)
    for y in (bottom - 8, bottom - 4):
        c.line([(x - coil // 2 + 2, y), (x + coil // 2 - 2, y)], COPPER, 2)


def capacitive(c, accent, d, h, guard, stem=0, angled=False):
    """A flat round electrode with its guard ring over a plate; the field between them is straight."""
    cx, face = 48, 46
    top = face - h
    if angled:
        c.curve((cx + d // 2, top + h // 2), (cx + d // 2 + 8, top + h // 2), (86, top), (90, 6))
        c.box(cx + d // 2 - 2, top + h // 2 - 4, 8, 8, fill=DARK, radius=2)
    else:
        c.curve((cx, top - stem), (cx, 0), (72, 12), (88, 4))
        c.box(cx - 5, top - stem - 4, 10, stem + 8, fill=DARK, radius=2)
    for x in range(cx - d // 2 + guard, cx + d // 2 - guard + 1, 6):
        c.line([(x, face + 6), (x, 62)], accent, 2)
        c.arrow_head(x, 66, (0, 1), accent, 4)
    c.target()
    c.disc(cx, face, d // 2, fill=METAL[2], outline=INK, squash=0.3)
    c.disc(cx, face, d // 2 - guard + 3, fill="#f4f6f8", outline=None, squash=0.3)
    c.disc(cx, face, d // 2 - guard, fill=COPPER, outline=None, squash=0.3)
    half, squash = d // 2 - 1, 0.3
    ctx = c.ctx
    ctx.save()
    ctx.rectangle(0, 0, 96, face)
    ctx.clip()
    c.box(cx - d // 2, top, d, h + 8, fill=METAL, radius=4, across=True)
    c.box(cx - half + 1, top + 5, d - 4, 5, fill=accent, radius=0, outline=None)
    ctx.restore()
    c.disc(cx, face, half, fill=COPPER, outline=None, squash=squash)
    c.disc(cx, face, half, fill="#dfe5ea", outline=INK, squash=squash)
    c.disc(cx, face, half - guard + 2, fill="#6c7a88", outline=None, squash=squash)
    c.disc(cx, face, half - guard, fill=COPPER, outline=None, squash=squash)


def dual_head(c, accent, heads, frame):
    """Two heads that measure a strip from both sides, alone or on a frame."""
    if frame:
        c.frame(6, 6, 80, 68, 10)
        c.box(9, 14, 4, 52, fill=accent, radius=0, outline=None)
    w = 44 // heads
    for i in range(heads):
        x = (54 if frame else 48) + (i - (heads - 1) / 2) * (w + 10)
        x = int(x) // 2 * 2
        if not frame:
            c.curve((x, 10), (x, 2), (x + 10, 6), (x + 18, 3))
            c.curve((x, 70), (x, 77), (x + 10, 74), (x + 18, 75))
        for mark in range(x - w // 2 + 6, x + w // 2 - 4, 6):
            c.line([(mark, 32), (mark, 48)], accent, 2)
        for top, face in ((10, 28), (50, 50)):
            c.box(x - w // 2, top, w, 20, fill=METAL, radius=3, across=True)
            c.box(x - w // 2 + 2, top + (5 if top == 10 else 11), w - 4, 4, fill=accent, radius=0, outline=None)
            c.box(x - w // 2 + 4, face, w - 8, 4 if top == 10 else 2, fill=COPPER, radius=0, outline=None)
    c.box(2, 36, 92, 8, fill=("#dfe5ea", "#8d9aa7"), radius=1)


def inertial(c, accent, mode):
    """A cube with its axes, or with an arrow that runs round it."""
    if mode == "rotation":
        c.arc(46, 46, 40, 190, 340, accent, 4, squash=0.42)
    front, side, lid = "#cbd4dc", "#97a4b1", "#f1f4f7"
    cx, cy = 46, 44
    if mode == "axes":
        c.arrow_head(cx, 2, (0, -1), "#2f7de1", 8)
        c.line([(cx, cy), (86, 56)], "#ef2b2d", 3)
        c.arrow_head(92, 58, (0.95, 0.3), "#ef2b2d", 8)
        c.line([(cx, cy), (10, 56)], "#2fae48", 3)
        c.arrow_head(4, 58, (-0.95, 0.3), "#2fae48", 8)
    c.shape([(cx, 20), (68, 28), (cx, 36), (24, 28)], fill=lid)
    c.shape([(24, 28), (cx, 36), (cx, 64), (24, 54)], fill=front)
    c.shape([(68, 28), (cx, 36), (cx, 64), (68, 54)], fill=side)
    if mode == "axes":
        c.shape([(25, 38), (cx, 47), (cx, 53), (25, 44)], fill=accent, outline=None)
        c.shape([(67, 38), (cx, 47), (cx, 53), (67, 44)], fill=accent, outline=None)
        c.line([(cx, 28), (cx, 6)], "#2f7de1", 3)
        c.disc(cx, 28, 3, fill="#2f7de1", outline=None, squash=0.5)
    else:
        c.line([(cx, 28), (cx, 4)], INK, 2, dash=(6, 2))
        c.arc(cx, 46, 40, -20, 150, accent, 4, squash=0.42)
        c.arrow_head(6, 47, (-0.35, -0.93), accent, 10)


def plunger(c, accent, d, length, tip, bellows=False):
    """A cylinder with a spring-loaded rod that touches the part."""
    cx, top = 48, 12
    bottom = top + length
    c.curve((cx, top), (cx, 0), (70, 12), (86, 4))
    c.target()
    c.line([(cx - 26, bottom), (cx - 26, FLOOR - 1)], accent)
    c.arrow_head(cx - 26, FLOOR - 1, (0, 1), accent, 6)
    c.arrow_head(cx - 26, bottom + 1, (0, -1), accent, 6)
    c.line([(cx - 32, bottom), (cx - d // 2, bottom)], accent)
    c.box(cx - 3, bottom - 4, 6, FLOOR - bottom + 1, fill=METAL, radius=0, across=True)
    if bellows:
        for y in range(bottom, FLOOR - 9, 4):
            c.box(cx - 7, y - 1, 14, 5, fill=DARK, radius=2)
    c.disc(cx, FLOOR - tip, tip, fill="#e9edf1")
    c.box(cx - 5, top - 6, 10, 10, fill=DARK, radius=2)
    c.box(cx - d // 2, top, d, length, fill=METAL, radius=3, across=True)
    c.box(cx - d // 2 + 2, top + 6, d - 4, 5, fill=accent, radius=0, outline=None)
    c.box(cx - d // 2 + 2, bottom - 6, d - 4, 2, fill="#5d6a77", radius=0, outline=None)


def draw_wire(c, accent):
    """A drum from which a wire is pulled."""
    c.curve((14, 22), (4, 20), (10, 8), (4, 4))
    c.line([(48, 58), (80, 58)], "#5d6a77", 2)
    c.disc(86, 58, 7, fill=None, outline="#5d6a77")
    c.line([(56, 68), (86, 68)], accent)
    c.arrow_head(92, 68, (1, 0), accent, 7)
    c.box(10, 10, 46, 58, radius=4)
    c.box(52, 52, 10, 12, fill=DARK, radius=2)
    c.disc(33, 40, 20, fill=METAL[0])
    c.disc(33, 40, 15, fill="#e9edf1", outline="#5d6a77")
    c.disc(33, 40, 10, fill="#dfe5ea", outline="#5d6a77")
    c.disc(33, 40, 4, fill=INK, outline=None)
    c.box(12, 13, 42, 4, fill=accent, radius=0, outline=None)
