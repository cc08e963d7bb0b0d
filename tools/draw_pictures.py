#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws the pictures of the sensor models and groups and writes them, with their resource list, into the library.

Needs pycairo (Debian: python3-cairo). Every picture is one row of PICTURES; the same rows give the same bytes.
"""

import argparse
import pathlib
import sys
from xml.sax.saxutils import escape

sys.dont_write_bytecode = True

try:
    import cairo
except ImportError:
    sys.exit("draw_pictures.py: needs pycairo (on Debian: apt-get install python3-cairo)")

from pictures import electronics, groups, optical, probes
from pictures.canvas import SIZE, Canvas

RESOURCES = pathlib.Path(__file__).resolve().parent.parent / "src" / "resources"

ACCENTS = {
    "tavrin": "#c4262e",
    "range": "#c2500f",
    "oscura": "#6d3fc0",
    "wavlen": "#3f4fc4",
    "silvant": "#20803f",
    "korrin": "#96620c",
    "delmar": "#0b7f86",
    "color": "#b3267e",
    "gyrant": "#1d68bd",
    "morvik": "#4d7a1b",
    "profax": "#a3243f",
    "interfaces": "#44596e",
    "other": "#9a4526",
    "plain": "#52687d",
}


def member(canvas, name):
    _, family, _, draw, parameters = next(row for row in PICTURES if row[0] == name)
    draw(canvas, ACCENTS[family], **parameters)


def family_of(*names):
    return {"draw": member, "models": names}


# File name, family (its colour), label, drawing function, parameters. A picture that several models share has a label
# that is right for each of them.
PICTURES = (
    ("genericSensor", "plain", "SENSOR", electronics.any_sensor, {}),
    ("All-groups", "plain", "ALL", groups.all_families, {"accents": ACCENTS}),
    # Laser triangulation
    ("TX-group", "tavrin", "TX", groups.members, family_of("TX210", "TX230", "TX270", "TX310")),
    ("TX210", "tavrin", "TX210", optical.triangulation, {"w": 44, "h": 26, "beam": 12, "lens": 32}),
    ("TX220", "tavrin", "TX220", optical.triangulation, {"w": 36, "h": 40, "beam": 8, "lens": 26}),
    ("TX230", "tavrin", "TX230", optical.triangulation, {"w": 78, "h": 30, "beam": 14, "lens": 62}),
    ("TX240", "tavrin", "TX240", optical.triangulation, {"w": 52, "h": 32, "beam": 12, "lens": 38, "cable": "side"}),
    ("TX250", "tavrin", "TX250", optical.triangulation, {"w": 56, "h": 36, "beam": 44, "lens": 14}),
    ("TX260", "tavrin", "TX260", optical.triangulation, {"w": 66, "h": 34, "beam": 12, "lens": 50, "screen": True}),
    ("TX270", "tavrin", "TX270/300", optical.triangulation, {"w": 44, "h": 32, "beam": 10, "lens": 35, "nose": 12}),
    ("TX280", "tavrin", "TX280", optical.triangulation,
     {"w": 58, "h": 30, "beam": 14, "lens": 49, "nose": 12, "cable": "side"}),
    ("TX290", "tavrin", "TX290", optical.triangulation, {"w": 52, "h": 42, "beam": 12, "lens": 40, "nose": 18}),
    ("TX310", "tavrin", "TX310", optical.triangulation,
     {"w": 72, "h": 34, "beam": 14, "lens": 61, "nose": 16, "screen": True}),
    # Laser range finders
    ("RG-group", "range", "RG", groups.members, family_of("RG4xx", "RG52x", "RG531", "RG540")),
    ("RG4xx", "range", "RG4xx", optical.range_finder, {"w": 32, "h": 40}),
    ("RG52x", "range", "RG52x", optical.range_finder, {"w": 44, "h": 44, "screen": True}),
    ("RG531", "range", "RG53x", optical.range_finder, {"w": 38, "h": 34, "hood": 10, "lenses": 1}),
    ("RG540", "range", "RG540", optical.range_finder, {"w": 42, "h": 36, "bracket": True}),
    # Confocal
    ("CC410", "oscura", "CC410", optical.confocal, {"d": 36, "length": 32}),
    ("CC420", "oscura", "CC420", optical.confocal, {"d": 28, "length": 36}),
    ("CC430", "oscura", "CC430", optical.confocal, {"d": 44, "length": 30, "rings": 2}),
    ("CC440", "oscura", "CC440", optical.confocal, {"d": 36, "length": 36, "tip": 12}),
    ("CC450", "oscura", "CC450", optical.confocal, {"d": 28, "length": 38, "side_exit": True}),
    ("CC460", "oscura", "CC460", optical.confocal, {"d": 46, "length": 36, "tip": 14, "rings": 2}),
    ("CC470", "oscura", "CC470", optical.confocal, {"d": 20, "length": 34}),
    ("CC480", "oscura", "CC480", optical.confocal, {"d": 40, "length": 36, "side_exit": True, "rings": 2}),
    ("CC49x", "oscura", "CC49x", optical.confocal, {"d": 54, "length": 34, "tip": 16, "side_exit": True, "rings": 3}),
    ("WI610", "wavlen", "WI610/620", optical.interferometer, {}),
    # Light curtain micrometers
    ("MC-group", "silvant", "MC", groups.members, family_of("MC310", "MC320", "MC330", "MC340")),
    ("MC310", "silvant", "MC310", optical.micrometer, {"block": 22, "h": 48, "gap": 40}),
    ("MC320", "silvant", "MC320", optical.micrometer, {"block": 24, "h": 42, "gap": 36, "base": True}),
    ("MC330", "silvant", "MC330", optical.micrometer, {"block": 20, "h": 34, "gap": 24, "base": True, "beams": 3}),
    ("MC340", "silvant", "MC340", optical.micrometer, {"block": 20, "h": 60, "gap": 48, "beams": 6}),
    # Eddy current
    ("korrin-group", "korrin", "KORRIN", groups.members, family_of("EC810", "EC82x", "EC830", "MV410")),
    ("EC810", "korrin", "EC810", probes.eddy_current, {"d": 18, "length": 42, "coil": 22}),
    ("EC82x", "korrin", "EC82x", probes.eddy_current,
     {"d": 14, "length": 40, "coil": 22, "controller": True, "x": 66}),
    ("EC830", "korrin", "EC830-850", probes.eddy_current, {"d": 32, "length": 34, "coil": 44, "threaded": False}),
    # Capacitive
    ("delmar-group", "delmar", "DELMAR", groups.members, family_of("CP710", "CP720", "CP740", "CB910")),
    ("CP710", "delmar", "CP710/750", probes.capacitive, {"d": 40, "h": 26, "guard": 8}),
    ("CP720", "delmar", "CP720", probes.capacitive, {"d": 60, "h": 18, "guard": 10, "stem": 6}),
    ("CP730", "delmar", "CP730", probes.capacitive, {"d": 28, "h": 32, "guard": 6}),
    ("CP740", "delmar", "CP740", probes.capacitive, {"d": 50, "h": 22, "guard": 14, "angled": True}),
    ("CB910", "delmar", "CB910", probes.dual_head, {"heads": 1, "frame": False}),
    ("CB92xx", "delmar", "CB92xx", probes.dual_head, {"heads": 2, "frame": True}),
    # Colour
    ("color-group", "color", "COLOR", groups.members, family_of("PG110", "PG120", "HV210", "HV220")),
    ("PG110", "color", "PG110", optical.colour_head, {"w": 40, "h": 28, "optic": 26, "fibre": True}),
    ("PG120", "color", "PG120", optical.colour_head, {"w": 56, "h": 28, "optic": 26, "screen": True}),
    ("HV210", "color", "HV210", optical.colour_head, {"w": 28, "h": 32, "optic": 18}),
    ("HV220", "color", "HV2/HV220", optical.colour_head, {"w": 64, "h": 24, "optic": 44}),
    # Inclination and rotation, displacement, profile, thickness
    ("KV-BUS_Gyrant", "gyrant", "KV-BUS", probes.inertial, {"mode": "axes"}),
    ("GY32x", "gyrant", "GY32x", probes.inertial, {"mode": "rotation"}),
    ("MV410", "morvik", "MV4xx", probes.plunger, {"d": 16, "length": 30, "tip": 4}),
    ("MV420", "morvik", "MV420", probes.plunger, {"d": 26, "length": 34, "tip": 5}),
    ("MV430", "morvik", "MV430", probes.plunger, {"d": 20, "length": 24, "tip": 4, "bellows": True}),
    ("DVxxx", "morvik", "DVxxx", probes.draw_wire, {}),
    ("PF7xx", "profax", "PF7xx", optical.profile, {}),
    ("Spessa", "other", "SPESSA", optical.thickness_gauge, {}),
    ("thermo-group", "other", "THERMO", groups.thermometers, {}),
    # Cards, converters, controllers
    ("interface-group", "interfaces", "INTERFACES", groups.members,
     family_of("XA100 (PCI)", "XA100 (USB)", "XA200_ETH", "UC100")),
    ("XA100 (PCI)", "interfaces", "XA100 PCI", electronics.card, {"w": 72, "channels": 1}),
    ("XA100 (USB)", "interfaces", "XA100 USB", electronics.converter,
     {"w": 60, "h": 44, "sockets": ("usb", "round"), "mark": "usb"}),
    ("XA200", "interfaces", "XA200", electronics.card, {"w": 86, "channels": 2}),
    ("XA200_ETH", "interfaces", "XA200 ETH", electronics.converter,
     {"w": 84, "h": 48, "sockets": ("eth", "round", "round"), "mark": "net"}),
    ("XA300", "interfaces", "XA300", electronics.converter,
     {"w": 68, "h": 56, "sockets": ("eth", "round"), "mark": "bus", "fins": 4}),
    ("UC100", "interfaces", "UC100", electronics.controller, {"w": 80, "h": 60, "knob": True, "sockets": 2}),
    ("Q-Unit", "interfaces", "Q-UNIT", electronics.controller, {"w": 88, "h": 54, "knob": False, "sockets": 4}),
)


def draw(row, scale):
    _, family, label, function, parameters = row
    surface = cairo.ImageSurface(cairo.FORMAT_ARGB32, SIZE * scale, SIZE * scale)
    canvas = Canvas(surface, scale)
    function(canvas, ACCENTS[family], **parameters)
    canvas.label(label, ACCENTS[family])
    surface.flush()
    return surface


def file_names(row):
    return {1: f"{row[0]}.png", 2: f"{row[0]}@2x.png"}


def resource_list():
    names = sorted((name for row in PICTURES for name in file_names(row).values()), key=str.casefold)
    lines = "".join(f"        <file>images/{escape(name)}</file>\n" for name in names)
    return f'<RCC>\n    <qresource prefix="/">\n{lines}    </qresource>\n</RCC>\n'


def write_all():
    images = RESOURCES / "images"
    images.mkdir(parents=True, exist_ok=True)
    for row in PICTURES:
        for scale, name in file_names(row).items():
            draw(row, scale).write_to_png(str(images / name))
    (RESOURCES / "pictures.qrc").write_text(resource_list(), encoding="utf-8")


def check():
    """Returns the differences between the table and the committed files."""
    faults = []
    names = [row[0] for row in PICTURES]
    faults += [f"{name}: twice in the table" for name in sorted(set(names)) if names.count(name) > 1]
    wanted = {}
    for row in PICTURES:
        for scale, name in file_names(row).items():
            wanted[name] = SIZE * scale
    present = {path.name for path in (RESOURCES / "images").glob("*")}
    faults += [f"{name}: missing" for name in sorted(wanted.keys() - present)]
    faults += [f"{name}: not in the table" for name in sorted(present - wanted.keys())]
    for name in sorted(wanted.keys() & present):
        surface = cairo.ImageSurface.create_from_png(str(RESOURCES / "images" / name))
        if (surface.get_width(), surface.get_height()) != (wanted[name], wanted[name]):
            faults.append(f"{name}: {surface.get_width()}x{surface.get_height()}, not {wanted[name]} squared")
    qrc = RESOURCES / "pictures.qrc"
    if not qrc.exists() or qrc.read_text(encoding="utf-8") != resource_list():
        faults.append("pictures.qrc: differs from the table")
    return faults


def contact_sheet(path, scale, background):
    columns, cell_w, cell_h = 9, 128, 124
    rows = -(-len(PICTURES) // columns)
    surface = cairo.ImageSurface(cairo.FORMAT_ARGB32, columns * cell_w * scale, rows * cell_h * scale)
    ctx = cairo.Context(surface)
    ctx.set_source_rgb(*((0.12, 0.13, 0.15) if background == "dark" else (1, 1, 1)))
    ctx.paint()
    ctx.set_font_size(11 * scale)
    for i, row in enumerate(PICTURES):
        x, y = (i % columns) * cell_w * scale, (i // columns) * cell_h * scale
        ctx.set_source_surface(draw(row, scale), x + 16 * scale, y + 6 * scale)
        ctx.paint()
        ctx.set_source_rgb(*((0.85, 0.87, 0.9) if background == "dark" else (0.2, 0.2, 0.2)))
        extents = ctx.text_extents(row[0])
        ctx.move_to(x + (cell_w * scale - extents.x_advance) / 2, y + 117 * scale)
        ctx.show_text(row[0])
    surface.write_to_png(path)


def main():
    parser = argparse.ArgumentParser(description="Draws the pictures of the sensor models.")
    parser.add_argument("--check", action="store_true", help="only compare the files with the table")
    parser.add_argument("--contact-sheet", metavar="FILE", help="only draw all pictures with their names on one sheet")
    parser.add_argument("--scale", type=int, choices=(1, 2), default=1, help="resolution of the sheet")
    parser.add_argument("--background", choices=("light", "dark"), default="light", help="background of the sheet")
    arguments = parser.parse_args()
    if arguments.contact_sheet:
        contact_sheet(arguments.contact_sheet, arguments.scale, arguments.background)
        return 0
    if not arguments.check:
        write_all()
        return 0
    faults = check()
    for fault in faults:
        print(f"draw_pictures.py: {fault}", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
