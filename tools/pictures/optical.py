# SPDX-License-Identifier: MIT
"""Sensors that measure with light."""

import cairo

from pictures.canvas import CABLE, COPPER, DARK, FLOOR, GLASS, INK, LASER, METAL, SPECTRUM, TARGET, rgba

FIBRE = "#e8b21c"


def triangulation(c, accent, w, h, beam, lens, nose=0, cable="top", screen=False):
    """A laser head over a target: the beam goes straight down, the lens looks at the spot from the side.

    beam and lens are distances from the housing's left side; nose is the size of a chamfer that turns the lens towards the spot.
    """
    left, top = (96 - w) // 2, 10
    bottom, right = top + h, (96 + w) // 2
    spot, eye = left + beam, left + lens
    eye_y = bottom - nose // 2 if nose else bottom
    if cable == "top":
        c.curve((left + 10, 10), (left + 10, 2), (left - 2, 8), (left - 8, 2))
    else:
        c.curve((left, top + 10), (left - 6, top + 10), (left - 4, top + 20), (2, top + 16))
        c.box(left - 5, top + 6, 8, 8, fill=DARK, radius=2)
    c.glow([(eye - 7, eye_y), (eye + 7, eye_y), (spot, FLOOR)], LASER, 0.35)
    c.line([(spot, bottom), (spot, FLOOR)], LASER)
    c.target()
    c.disc(spot, FLOOR, 4, fill=LASER, outline=None, squash=0.5)
    if nose:
        corners = [(left + 1, top + 1), (right - 1, top + 1), (right - 1, bottom - 1 - nose)]
        c.shape(corners + [(right - 1 - nose - 6, bottom - 1), (left + 1, bottom - 1)])
        direction = (nose + 6, -nose)
        mid = (right - 1 - (nose + 6) / 2, bottom - 1 - nose / 2)
        ends = [(mid[0] - direction[0] * k, mid[1] - direction[1] * k) for k in (0.36, -0.36)]
        c.line(ends, INK, 6)
        c.line(ends, GLASS, 3)
    else:
        c.box(left, top, w, h)
        c.box(eye - 8, bottom - 4, 16, 6, fill=GLASS, radius=2)
    c.box(spot - 4, bottom - 4, 8, 6, fill=DARK, radius=1)
    c.box(left + 2, top + 8, w - 4, 5, fill=accent, radius=0, outline=None)
    if screen:
        c.box(left + w // 2 - 12, top + 16, 24, 12, fill=DARK, radius=2)
        c.line([(left + w // 2 - 8, top + 22), (left + w // 2 + 4, top + 22)], GLASS)
    else:
        c.screw(left + 7, top + 19)
        if not nose:
            c.screw(right - 7, top + 19)
    c.lamp(right - 7, top + 5, "#35b44a")


def range_finder(c, accent, w, h, hood=0, lenses=2, screen=False, bracket=False):
    """A head that sends its beam to a far reflector and gets it back."""
    top = 40 - h // 2
    right = 6 + w
    out_y, back_y = (top + h // 4 + 1, top + h - h // 4 - 1) if lenses == 2 else (36, 44)
    c.box(82, 10, 8, 60, fill=TARGET, radius=1)
    for y in range(14, 68, 6):
        c.line([(84, y), (88, y)], "#e9edf1")
    c.line([(right + hood, out_y), (76, out_y)], LASER)
    c.arrow_head(81, out_y, (1, 0), LASER)
    c.line([(right + hood + 6, back_y), (82, back_y)], LASER, dash=(4, 2))
    c.arrow_head(right + hood + 2, back_y, (-1, 0), LASER)
    if bracket:
        c.box(10, top + h - 4, w - 8, 12, fill=DARK, radius=2)
        c.box(6, top + h + 6, w, 5, fill=DARK, radius=1)
    c.curve((14, top + 2), (14, top - 8), (6, top - 2), (4, top - 10))
    if hood:
        c.box(right - 4, top, hood + 4, h, fill=DARK, radius=1)
    if lenses == 2:
        c.box(right - 3, out_y - 5, 6, 10, fill=DARK, radius=1)
        c.box(right - 3, back_y - 7, 6, 14, fill=GLASS, radius=2)
    else:
        c.box(right - 3, 28, 6, 24, fill=GLASS, radius=2)
    c.box(6, top, w, h)
    c.box(12, top + 2, 5, h - 4, fill=accent, radius=0, outline=None)
    if screen:
        c.box(20, 34, w - 20, 12, fill=DARK, radius=2)
        c.line([(24, 40), (w - 6, 40)], GLASS)
    else:
        c.screw(right - 8, top + 8)
        c.screw(right - 8, top + h - 8)


def confocal(c, accent, d, length, tip=0, side_exit=False, rings=1):
    """A pen of diameter d on a glass fibre; its white light is spread into colours of different focus."""
    cx, top = 48, 10 if side_exit else 14
    bottom = top + length
    half = (d - tip) // 2
    if side_exit:
        out = cx + d // 2 + 8
        c.curve((out, top + 8), (out + 9, top + 8), (out + 8, top), (out + 8, 3), FIBRE, 3)
        c.box(cx + d // 2 - 2, top + 4, 12, 8, fill=DARK, radius=2)
    else:
        c.curve((cx, top), (cx, 2), (70, 12), (86, 4), FIBRE, 3)
        c.box(cx - 4, top - 6, 8, 10, fill=DARK, radius=2)
    reach = FLOOR - bottom
    for i, colour in enumerate(SPECTRUM):
        focus = FLOOR - 1 - i * reach * 0.11
        c.glow([(cx - half + 2 + i, bottom), (cx + half - 2 - i, bottom), (cx, focus)], colour, 0.75)
    c.glow([(cx - half + 2, bottom), (cx + half - 2, bottom), (cx, bottom + reach * 0.55)], "#ffffff", 0.7)
    c.target()
    c.disc(cx, FLOOR, 3, fill="#35b44a", outline=None, squash=0.6)
    if tip:
        c.box(cx - half, bottom - 14, d - tip, 14, fill=METAL, radius=2, across=True)
        c.box(cx - d // 2, top, d, length - 10, fill=METAL, radius=3, across=True)
    else:
        c.box(cx - d // 2, top, d, length, fill=METAL, radius=3, across=True)
    c.box(cx - half + 2, bottom - 4, 2 * half - 4, 4, fill=GLASS, radius=1)
    for ring in range(rings):
        c.box(cx - d // 2 + 2, top + 5 + 6 * ring, d - 4, 4, fill=accent, radius=0, outline=None)


def micrometer(c, accent, block, h, gap, base=False, beams=4):
    """Transmitter and receiver face each other; a rod shades a part of the light curtain between them."""
    left = (96 - gap - 2 * block) // 2
    right = left + block + gap
    top = 12 if base else (80 - h) // 2
    light = (top + 8, top + h - 8)
    rod = 48, (light[0] + light[1]) // 2
    radius = (light[1] - light[0]) // 4
    if base:
        c.box(left, top + h - 8, 2 * block + gap, 22)
        c.box(left + 2, top + h + 6, 2 * block + gap - 4, 4, fill=accent, radius=0, outline=None)
    x0, x1 = left + block, right
    c.glow([(x0, light[0]), (rod[0], light[0]), (rod[0], light[1]), (x0, light[1])], LASER, 0.3)
    for y0, y1 in ((light[0], rod[1] - radius), (rod[1] + radius, light[1])):
        c.glow([(rod[0], y0), (x1, y0), (x1, y1), (rod[0], y1)], LASER, 0.3)
    step = (light[1] - light[0] - 2) / (beams - 1)
    for i in range(beams):
        y = round(light[0] + 1 + i * step)
        shaded = abs(y - rod[1]) < radius
        c.line([(x0, y), (rod[0] if shaded else x1, y)], LASER, 1 if shaded else 2)
    c.disc(*rod, radius, fill=("#dfe5ea", "#8d9aa7"))
    if not base:
        c.curve((left + block // 2 - 2, top), (left + block // 2 - 2, 2), (left - 2, 6), (2, 4))
        c.curve((right + block // 2 + 2, top), (right + block // 2 + 2, 2), (right + block + 2, 6), (94, 4))
    for x, window in ((left, left + block - 4), (right, right - 2)):
        c.box(x, top, block, h)
        c.box(window, light[0] - 2, 6, light[1] - light[0] + 4, fill=GLASS, radius=1)
        c.box(x + (2 if x == left else 6), top + 4, block - 8, 4, fill=accent, radius=0, outline=None)


def interferometer(c, accent):
    """A head and a mirror with a standing wave of light between them."""
    c.curve((12, 26), (12, 12), (30, 14), (26, 4), FIBRE, 3)
    x0, x1, wave = 36, 78, 8
    for phase, alpha in ((1, 1.0), (-1, 0.45)):
        c.ctx.set_source_rgba(*rgba(LASER, alpha))
        c.ctx.set_line_width(2)
        c.ctx.move_to(x0, 40)
        for i in range((x1 - x0) // 7):
            x = x0 + 7 * i
            peak = 40 - phase * (wave if i % 2 == 0 else -wave) * 1.9
            c.ctx.curve_to(x + 2.5, peak, x + 4.5, peak, x + 7, 40)
        c.ctx.stroke()
    c.box(80, 12, 10, 56, fill=("#c9eefb", "#7fb9d3", "#c9eefb"), radius=1, across=True)
    for y in range(18, 64, 8):
        c.line([(84, y + 4), (88, y)], "#ffffff", 1)
    c.box(30, 30, 6, 20, fill=GLASS, radius=1)
    c.box(4, 24, 28, 32)
    c.box(4 + 4, 26, 5, 28, fill=accent, radius=0, outline=None)
    for i in range(8):
        c.line([(7 + 10 * i, 62 if i % 2 == 0 else 65), (7 + 10 * i, 69)], CABLE)
    c.line([(6, 68), (78, 68)], CABLE)


def colour_head(c, accent, w, h, optic, fibre=False, screen=False):
    """A head that lights a sample; the three basic colours mix where they overlap."""
    left, cx = (96 - w) // 2, 48
    bottom = 10 + h
    spots = ((cx - 7, 62, "#f53b30"), (cx + 7, 62, "#2860f5"), (cx, 52, "#2fd03c"))
    cable, thickness = (FIBRE, 3) if fibre else (CABLE, 4)
    c.curve((left + 10, 10), (left + 10, 2), (left - 2, 8), (left - 8, 2), cable, thickness)
    x0, x1 = cx - optic // 2 + 2, cx + optic // 2 - 2
    c.glow([(x0, bottom), (x1, bottom), (cx + 18, 62), (cx - 18, 62)], "#f7d85a", 0.35)
    for radius, backing in ((11, INK), (9, "#000000")):
        for x, y, _ in spots:
            c.disc(x, y, radius, fill=backing, outline=None)
    c.ctx.save()
    c.ctx.set_operator(cairo.OPERATOR_ADD)
    for x, y, colour in spots:
        c.disc(x, y, 9, fill=colour, outline=None)
    c.ctx.restore()
    c.box(cx - optic // 2, bottom - 4, optic, 8, fill=DARK, radius=2)
    c.box(cx - optic // 2 + 4, bottom + 1, optic - 8, 3, fill=GLASS, radius=0, outline=None)
    c.box(left, 10, w, h)
    c.box(left + 2, 16, w - 4, 4, fill=accent, radius=0, outline=None)
    if screen:
        c.box(left + 6, 22, w - 12, 10, fill=DARK, radius=2)
        for i, colour in enumerate(SPECTRUM[:1] + SPECTRUM[3:5]):
            c.lamp(cx - 8 + 8 * i, 27, colour)


def profile(c, accent):
    """A fan of laser light that draws a line along a stepped part."""
    steps = [(10, 66), (28, 66), (28, 58), (44, 58), (50, 66), (60, 66), (60, 54), (76, 54), (76, 66), (86, 66)]
    c.curve((26, 10), (26, 2), (16, 8), (8, 2))
    c.glow([(44, 34), (52, 34)] + steps[::-1], LASER, 0.3)
    c.shape([(9, 75), (9, 66)] + steps[1:-1] + [(87, 66), (87, 75)], fill=TARGET)
    c.line(steps, LASER)
    c.box(18, 8, 60, 26)
    c.box(20, 14, 56, 5, fill=accent, radius=0, outline=None)
    c.box(40, 30, 16, 7, fill=DARK, radius=1)
    c.box(62, 30, 12, 6, fill=GLASS, radius=1)
    c.screw(25, 25)


def thickness_gauge(c, accent):
    """A frame with two laser heads that look at a sheet from both sides."""
    c.frame(4, 4, 84, 72, 11)
    c.box(8, 16, 4, 48, fill=accent, radius=0, outline=None)
    c.line([(60, 28), (60, 37)], LASER)
    c.line([(60, 43), (60, 54)], LASER)
    c.glow([(70, 28), (78, 28), (60, 37)], LASER, 0.35)
    c.glow([(70, 54), (78, 54), (60, 43)], LASER, 0.35)
    for top, window in ((14, 26), (52, 50)):
        c.box(48, top, 36, 14, fill=DARK, radius=2)
        c.box(56, window, 8, 4, fill=LASER, radius=0, outline=None)
        c.box(68, window, 12, 4, fill=GLASS, radius=0, outline=None)
    c.box(24, 36, 68, 8, fill=(COPPER, "#a85c19"), radius=1)
