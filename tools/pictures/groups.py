# SPDX-License-Identifier: MIT
"""Pictures that stand for more than one model."""

from pictures.canvas import CABLE, DARK, GLASS, LASER, METAL


def members(c, accent, draw, models):
    """Four models of a family, at half size."""
    del accent
    for i, model in enumerate(models):
        c.inset(48 * (i % 2), 38 * (i // 2), lambda canvas, name=model: draw(canvas, name))


def thermometers(c, accent):
    """A thermometer beside a head that sees heat."""
    c.box(16, 4, 16, 56, fill="#eef2f5", radius=8)
    c.disc(24, 62, 14, fill="#eef2f5")
    c.box(18, 48, 12, 8, fill="#eef2f5", radius=0, outline=None)
    c.disc(24, 62, 9, fill=LASER, outline=None)
    c.box(22, 24, 4, 36, fill=LASER, radius=0, outline=None)
    for y in range(14, 48, 6):
        c.line([(34, y), (40 if y % 12 == 2 else 37, y)], CABLE)
    c.curve((68, 10), (68, 0), (80, 8), (90, 3))
    for x in (54, 68, 82):
        c.curve((x, 70), (x - 8, 62), (x + 8, 58), (x, 50), LASER, 3)
    c.box(52, 10, 32, 28, fill=METAL, across=True)
    c.box(54, 15, 28, 4, fill=accent, radius=0, outline=None)
    c.box(60, 36, 16, 7, fill=DARK, radius=2)
    c.box(64, 40, 8, 3, fill=GLASS, radius=0, outline=None)


def _tile_laser(c, x, y):
    c.box(x + 4, y + 3, 18, 7, fill="#ffffff", radius=1, outline=None)
    c.line([(x + 8, y + 10), (x + 8, y + 20)], "#ffffff")
    c.line([(x + 18, y + 10), (x + 8, y + 20)], "#ffffff")
    c.line([(x + 4, y + 21), (x + 22, y + 21)], "#ffffff")


def _tile_confocal(c, x, y):
    c.box(x + 8, y + 3, 10, 9, fill="#ffffff", radius=1, outline=None)
    c.shape([(x + 8, y + 13), (x + 18, y + 13), (x + 13, y + 20)], fill="#ffffff", outline=None)
    c.line([(x + 4, y + 21), (x + 22, y + 21)], "#ffffff")


def _tile_curtain(c, x, y):
    c.box(x + 3, y + 4, 6, 17, fill="#ffffff", radius=1, outline=None)
    c.box(x + 17, y + 4, 6, 17, fill="#ffffff", radius=1, outline=None)
    for dy in (7, 12, 17):
        c.line([(x + 9, y + dy), (x + 17, y + dy)], "#ffffff")


def _tile_coil(c, x, y):
    c.box(x + 9, y + 3, 8, 18, fill="#ffffff", radius=1, outline=None)
    for dy in (8, 12, 16):
        c.line([(x + 5, y + dy + 1), (x + 21, y + dy - 1)], "#ffffff")


def _tile_plates(c, x, y):
    c.line([(x + 13, y + 2), (x + 13, y + 9)], "#ffffff")
    c.line([(x + 4, y + 10), (x + 22, y + 10)], "#ffffff", 4)
    c.line([(x + 4, y + 16), (x + 22, y + 16)], "#ffffff", 4)
    c.line([(x + 13, y + 17), (x + 13, y + 23)], "#ffffff")


def _tile_colour(c, x, y):
    for dx, dy in ((8, 16), (18, 16), (13, 8)):
        c.disc(x + dx, y + dy, 5, fill="#ffffff", outline=None)


def _tile_cube(c, x, y):
    c.shape([(x + 13, y + 4), (x + 20, y + 8), (x + 13, y + 12), (x + 6, y + 8)], fill="#ffffff", outline=None)
    c.shape([(x + 5, y + 10), (x + 12, y + 14), (x + 12, y + 22), (x + 5, y + 18)], fill="#ffffff", outline=None)
    c.shape([(x + 21, y + 10), (x + 14, y + 14), (x + 14, y + 22), (x + 21, y + 18)], fill="#ffffff", outline=None)


def _tile_plunger(c, x, y):
    c.box(x + 8, y + 3, 10, 10, fill="#ffffff", radius=1, outline=None)
    c.line([(x + 13, y + 13), (x + 13, y + 20)], "#ffffff")
    c.line([(x + 4, y + 21), (x + 22, y + 21)], "#ffffff")


def _tile_network(c, x, y):
    c.box(x + 10, y + 4, 6, 6, fill="#ffffff", radius=0, outline=None)
    c.line([(x + 13, y + 10), (x + 13, y + 13)], "#ffffff")
    c.line([(x + 6, y + 17), (x + 6, y + 13), (x + 20, y + 13), (x + 20, y + 17)], "#ffffff")
    c.box(x + 3, y + 16, 6, 6, fill="#ffffff", radius=0, outline=None)
    c.box(x + 17, y + 16, 6, 6, fill="#ffffff", radius=0, outline=None)


TILES = (
    ("tavrin", _tile_laser),
    ("oscura", _tile_confocal),
    ("silvant", _tile_curtain),
    ("korrin", _tile_coil),
    ("delmar", _tile_plates),
    ("color", _tile_colour),
    ("gyrant", _tile_cube),
    ("morvik", _tile_plunger),
    ("interfaces", _tile_network),
)


def all_families(c, accent, accents):
    """A grid of symbols, one per family, each in the colour of its family."""
    del accent
    for i, (family, draw) in enumerate(TILES):
        x, y = 2 + 33 * (i % 3), 26 * (i // 3)
        c.box(x, y, 26, 25, fill=accents[family], radius=4, outline=None)
        draw(c, x, y)
