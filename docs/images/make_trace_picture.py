#!/usr/bin/python3
"""Makes trace.png: details of the sample scan beside its traced outlines.

Needs vaskel-proof (./dev build) and the Debian packages python3-pil and
librsvg2-bin.

    /usr/bin/python3 docs/images/make_trace_picture.py [build/release]
"""

import os
import re
import subprocess
import sys
import tempfile

from PIL import Image, ImageDraw

HERE = os.path.dirname(os.path.abspath(__file__))
SCAN = os.path.join(HERE, "../../samples/data/scan.tif")
PROGRAM = os.path.join(sys.argv[1] if len(sys.argv) > 1 else "build/release",
                       "samples/vaskel-proof")
PANEL_WIDTH, PANEL_HEIGHT = 560, 330
GAP = 12

# Place on the scan in pixels, enlargement, and how the outlines are shown.
DETAILS = ((2145, 480, 2, "filled"), (1190, 2576, 4, "drawn"))

FILLED = 'fill="#000" fill-rule="evenodd"'
# Lengths here in pixels of the picture, replaced by outline units.
DRAWN = ('fill="none" stroke="#d0103a" stroke-width="{1.6}" stroke-linejoin="round" '
         'marker-start="url(#p)" marker-mid="url(#p)"')
POINT = ('<defs><marker id="p" markerUnits="userSpaceOnUse" overflow="visible">'
         '<circle r="{2.2}" fill="#fff" stroke="#10508c" stroke-width="{1.2}"/></marker></defs>')


def in_units(text, units):
    return re.sub(r"\{(.*?)\}", lambda found: "%g" % (float(found[1]) * units), text)


def scanned(scan, x, y, scale, light):
    crop = scan.crop((x, y, x + PANEL_WIDTH // scale, y + PANEL_HEIGHT // scale + 1))
    panel = crop.resize((crop.width * scale, crop.height * scale), Image.NEAREST)
    panel = panel.crop((0, 0, PANEL_WIDTH, PANEL_HEIGHT))
    return panel.point(lambda grey: 205 if light and grey == 0 else grey).convert("RGB")


def traced(svg, x, y, scale, style, folder):
    """The outlines around a place, rendered by librsvg on transparent ground."""
    grid = int(re.search(r'viewBox="0 0 (\d+)', svg)[1]) // 4960
    head = ('<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d" '
            'viewBox="%d %d %d %d">' % (PANEL_WIDTH, PANEL_HEIGHT, x * grid, y * grid,
                                        PANEL_WIDTH * grid // scale, PANEL_HEIGHT * grid / scale))
    data = re.search(r' d="\n(.*?)"', svg, re.S)[1]
    path = '<path %s d="%s"/>' % (FILLED if style == "filled" else DRAWN, data)
    if style == "drawn":
        path = in_units(POINT + path, grid / scale)
    source, target = os.path.join(folder, "detail.svg"), os.path.join(folder, "detail.png")
    with open(source, "w", encoding="utf-8") as file:
        file.write(head + path + "</svg>")
    subprocess.run(["rsvg-convert", "-o", target, source], check=True)
    return Image.open(target).convert("RGBA")


def main():
    scan = Image.open(SCAN).convert("L")
    with tempfile.TemporaryDirectory() as folder:
        output = os.path.join(folder, "scan.svg")
        subprocess.run([PROGRAM, "trace", SCAN, "-q", "-o", output], check=True)
        with open(output, encoding="utf-8") as file:
            svg = file.read()
        picture = Image.new("RGB", (2 * PANEL_WIDTH + GAP, 2 * PANEL_HEIGHT + GAP), "white")
        for row, (x, y, scale, style) in enumerate(DETAILS):
            top = row * (PANEL_HEIGHT + GAP)
            picture.paste(scanned(scan, x, y, scale, False), (0, top))
            panel = Image.new("RGB", (PANEL_WIDTH, PANEL_HEIGHT), "white")
            if style == "drawn":
                panel = scanned(scan, x, y, scale, True)
            overlay = traced(svg, x, y, scale, style, folder)
            panel.paste(overlay, (0, 0), overlay)
            picture.paste(panel, (PANEL_WIDTH + GAP, top))
    draw = ImageDraw.Draw(picture)
    draw.line((PANEL_WIDTH + GAP // 2, 0, PANEL_WIDTH + GAP // 2, picture.height), fill="#c0c0c0")
    draw.line((0, PANEL_HEIGHT + GAP // 2, picture.width, PANEL_HEIGHT + GAP // 2), fill="#c0c0c0")
    picture = picture.quantize(48, dither=Image.Dither.NONE)
    target = os.path.join(HERE, "trace.png")
    picture.save(target, optimize=True)
    print("%s: %d bytes" % (target, os.path.getsize(target)))


if __name__ == "__main__":
    main()
