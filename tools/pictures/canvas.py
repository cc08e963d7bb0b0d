# SPDX-License-Identifier: MIT
"""The drawing surface and the vocabulary that all pictures share: outlines, shading, label, target, cable."""

import math

import cairo

from pictures.lettering import GLYPHS, advance, text_width

SIZE = 96
STROKE = 2
FLOOR = 66  # top of the measured object in the pictures that show one

INK = "#2f3b48"
STEEL = ("#f1f4f7", "#b4c0cb")
METAL = ("#8d9aa7", "#f4f6f8", "#7d8a97")
DARK = ("#6b7c8e", "#4b5a6a")
GLASS = "#7fd3ef"
LASER = "#ef2b2d"
CABLE = "#8492a0"
TARGET = ("#a9b4bf", "#7c8996")
COPPER = "#d07a2d"
SPECTRUM = ("#e8352e", "#f59a23", "#f3e02f", "#35b44a", "#2f7de1", "#7b3fc4")


def rgba(colour, alpha=1.0):
    return tuple(int(colour[i : i + 2], 16) / 255 for i in (1, 3, 5)) + (alpha,)


class Canvas:
    """A square of SIZE units; whole numbers fall on pixel borders at 1x and 2x, strokes are two units wide."""

    def __init__(self, surface, scale):
        self.ctx = cairo.Context(surface)
        self.ctx.scale(scale, scale)
        self.ctx.set_line_join(cairo.LINE_JOIN_ROUND)
        self.stroke_width = STROKE

    def inset(self, x, y, draw):
        """Draws with `draw` at half size; even coordinates are still on pixel centres."""
        self.ctx.save()
        self.ctx.translate(x + 0.5, y + 0.5)
        self.ctx.scale(0.5, 0.5)
        draw(self)
        self.ctx.restore()

    # Paths

    def _paint(self, fill, outline, bounds, across):
        ctx = self.ctx
        if fill is not None:
            if isinstance(fill, str):
                ctx.set_source_rgba(*rgba(fill))
            else:
                x, y, w, h = bounds
                shade = cairo.LinearGradient(x, y, x + w, y) if across else cairo.LinearGradient(x, y, x, y + h)
                for i, colour in enumerate(fill):
                    shade.add_color_stop_rgba(i / (len(fill) - 1), *rgba(colour))
                ctx.set_source(shade)
            ctx.fill_preserve()
        if outline is not None:
            ctx.set_source_rgba(*rgba(outline))
            ctx.set_line_width(self.stroke_width)
            ctx.stroke_preserve()
        ctx.new_path()

    def box(self, x, y, w, h, fill=STEEL, radius=3.0, outline=INK, across=False):
        """A rounded rectangle whose outer border, outline included, is x, y, w, h."""
        ctx = self.ctx
        bounds = (x, y, w, h)
        if outline is not None:
            half = self.stroke_width / 2
            x, y, w, h, radius = x + half, y + half, w - 2 * half, h - 2 * half, max(radius - half, 0)
        if radius == 0:
            ctx.rectangle(x, y, w, h)
        else:
            ctx.new_sub_path()
            ctx.arc(x + w - radius, y + radius, radius, -math.pi / 2, 0)
            ctx.arc(x + w - radius, y + h - radius, radius, 0, math.pi / 2)
            ctx.arc(x + radius, y + h - radius, radius, math.pi / 2, math.pi)
            ctx.arc(x + radius, y + radius, radius, math.pi, 3 * math.pi / 2)
            ctx.close_path()
        self._paint(fill, outline, bounds, across)

    def disc(self, cx, cy, r, fill=STEEL, outline=INK, squash=1.0):
        """A circle (or an ellipse of height `squash` times its width); r reaches to the outer border."""
        ctx = self.ctx
        if outline is not None:
            r -= self.stroke_width / 2
        ctx.save()
        ctx.translate(cx, cy)
        ctx.scale(1, squash)
        ctx.new_sub_path()
        ctx.arc(0, 0, r, 0, 2 * math.pi)
        ctx.restore()
        self._paint(fill, outline, (cx - r, cy - r * squash, 2 * r, 2 * r * squash), False)

    def shape(self, points, fill=STEEL, outline=INK, across=False):
        xs, ys = [p[0] for p in points], [p[1] for p in points]
        self.ctx.move_to(*points[0])
        for point in points[1:]:
            self.ctx.line_to(*point)
        self.ctx.close_path()
        self._paint(fill, outline, (min(xs), min(ys), max(xs) - min(xs), max(ys) - min(ys)), across)

    def glow(self, points, colour, alpha):
        """A translucent area of light."""
        self.ctx.set_source_rgba(*rgba(colour, alpha))
        self.ctx.move_to(*points[0])
        for point in points[1:]:
            self.ctx.line_to(*point)
        self.ctx.close_path()
        self.ctx.fill()

    def line(self, points, colour=INK, width=STROKE, dash=(), cap=cairo.LINE_CAP_BUTT):
        ctx = self.ctx
        ctx.set_source_rgba(*rgba(colour))
        ctx.set_line_width(width)
        ctx.set_line_cap(cap)
        ctx.set_dash(dash)
        ctx.move_to(*points[0])
        for point in points[1:]:
            ctx.line_to(*point)
        ctx.stroke()
        ctx.set_dash(())
        ctx.set_line_cap(cairo.LINE_CAP_BUTT)

    def curve(self, start, control1, control2, end, colour=CABLE, width=4):
        ctx = self.ctx
        ctx.set_source_rgba(*rgba(colour))
        ctx.set_line_width(width)
        ctx.set_line_cap(cairo.LINE_CAP_ROUND)
        ctx.move_to(*start)
        ctx.curve_to(*control1, *control2, *end)
        ctx.stroke()
        ctx.set_line_cap(cairo.LINE_CAP_BUTT)

    def arc(self, cx, cy, r, begin, end, colour=INK, width=STROKE, squash=1.0):
        """A part of a circle or ellipse; angles in degrees, clockwise from the right."""
        ctx = self.ctx
        ctx.set_source_rgba(*rgba(colour))
        ctx.set_line_width(width)
        ctx.save()
        ctx.translate(cx, cy)
        ctx.scale(1, squash)
        ctx.new_path()
        ctx.arc(0, 0, r, math.radians(begin), math.radians(end))
        ctx.restore()
        ctx.stroke()

    def frame(self, x, y, w, h, beam):
        """A frame that is open to the right, of beams this thick."""
        right, bottom = x + w - 1, y + h - 1
        inner = [(right, bottom - beam), (x + beam, bottom - beam), (x + beam, y + beam + 1), (right, y + beam + 1)]
        self.shape([(x + 1, y + 1), (right, y + 1)] + inner[::-1] + [(right, bottom), (x + 1, bottom)])

    def arrow_head(self, x, y, direction, colour, size=6):
        """A filled triangle with its tip at x, y; direction is a unit vector along an axis or a diagonal."""
        dx, dy = direction
        half = size * 0.6
        base = (x - dx * size, y - dy * size)
        tip = [(x, y), (base[0] - dy * half, base[1] + dx * half), (base[0] + dy * half, base[1] - dx * half)]
        self.shape(tip, fill=colour, outline=None)

    # Elements that many pictures show

    def label(self, text, accent):
        """The plate at the bottom with the model's number."""
        self.box(2, 79, 92, 16, fill=accent, radius=4, outline=None)
        self.text(text, (SIZE - text_width(text)) // 2, 83)

    def text(self, text, x, y, colour="#ffffff"):
        for character in text:
            for polyline in GLYPHS[character]:
                self.line([(x + px, y + py) for px, py in polyline], colour, STROKE, cap=cairo.LINE_CAP_SQUARE)
            x += advance(character)

    def target(self, x=8, w=80, top=FLOOR):
        """The measured object."""
        self.box(x, top, w, 76 - top, fill=TARGET, radius=2)

    def screw(self, cx, cy):
        self.disc(cx, cy, 3, fill="#7d8a97", outline=None)
        self.disc(cx, cy, 1.5, fill="#e9edf1", outline=None)

    def lamp(self, cx, cy, colour):
        self.disc(cx, cy, 2, fill=colour, outline=None)
