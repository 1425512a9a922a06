#!/usr/bin/python3
"""Makes scan.tif: a typeset page of the Debian Social Contract as a scanner
would deliver it (600 ppi, bilevel, CCITT Group 4), skewed and noisy.

Needs the Debian packages doc-debian (the text), fonts-ebgaramond (the type),
python3-pil and python3-numpy. The same versions of them give the same bytes.

    /usr/bin/python3 make_sample_scan.py [scan.tif]
"""

import gzip
import math
import os
import re
import sys

import numpy
from PIL import Image, ImageDraw, ImageFilter, ImageFont

TEXT = "/usr/share/doc/debian/social-contract.txt.gz"
FONTS = "/usr/share/fonts/opentype/ebgaramond/EBGaramond12-%s.otf"
PPI = 1200  # of the drawing; the scan has half of it
WIDTH, HEIGHT = 9920, 14032  # ISO A4
SKEW_DEGREES = 0.35
SEED = 20221001


def pt(points):
    return points * PPI / 72


def mm(millimetres):
    return millimetres * PPI / 25.4


def font(style, points):
    return ImageFont.truetype(FONTS % style, round(pt(points)))


def articles():
    """The five articles: (title, text)."""
    with gzip.open(TEXT, "rt", encoding="utf-8") as file:
        text = file.read()
    body = text.split('"Social Contract" with the Free Software Community')[1]
    body = body.split("____")[0]
    found = []
    for part in re.split(r"\n +\d\. ", body)[1:]:
        title, _, rest = part.partition("\n")
        found.append((title.strip(), " ".join(rest.split()).replace('"', "\0")))
    assert len(found) == 5, "the text is not what this script expects"
    return [(title, curl(rest)) for title, rest in found]


def curl(text):
    """Typographic quotation marks, and apostrophes if any."""
    opening = True
    out = ""
    for char in text.replace("'", "\u2019"):
        if char == "\0":
            char = "\u201c" if opening else "\u201d"
            opening = not opening
        out += char
    return out


class Page:
    def __init__(self):
        self.image = Image.new("L", (WIDTH, HEIGHT), 255)
        self.draw = ImageDraw.Draw(self.image)

    def centred(self, y, text, face, spread=0):
        """One line, its letters spread apart, the baseline at y."""
        width = sum(face.getlength(c) + spread for c in text) - spread
        x = (WIDTH - width) / 2
        for char in text:
            self.draw.text((x, y), char, font=face, fill=0, anchor="ls")
            x += face.getlength(char) + spread

    def paragraph(self, x, y, width, text, face, leading):
        """Justified lines; returns the baseline below the last one."""
        blank = face.getlength(" ")
        line, length = [], 0.0
        lines = []
        for word in text.split():
            extent = face.getlength(word)
            if line and length + blank + extent > width:
                lines.append((line, False))
                line, length = [], 0.0
            length += extent + (blank if line else 0)
            line.append((word, extent))
        lines.append((line, True))
        for words, last in lines:
            gap = blank
            if not last and len(words) > 1:
                gap = (width - sum(extent for _, extent in words)) / (len(words) - 1)
            at = x
            for word, extent in words:
                self.draw.text((at, y), word, font=face, fill=0, anchor="ls")
                at += extent + gap
            y += leading
        return y

    def curve(self, points, thickness):
        self.draw.line(points, fill=0, width=max(1, round(thickness)), joint="curve")

    def rosette(self, x, y, radius):
        """A guilloche of our own: interlaced waves around a circle."""
        for waves, depth, offsets in ((24, 0.16, 6), (36, 0.07, 4)):
            middle = radius * (0.78 if waves == 24 else 0.45)
            for turn in range(offsets):
                points = []
                for step in range(1441):
                    angle = 2 * math.pi * step / 1440
                    wave = math.sin(waves * angle / 3 + 2 * math.pi * turn / offsets)
                    r = middle + radius * depth * wave
                    points.append((x + r * math.cos(angle), y + r * math.sin(angle)))
                self.curve(points, pt(0.35))
        for r, thickness in ((1.0, 0.9), (0.965, 0.3), (0.60, 0.5), (0.345, 0.5)):
            self.ring(x, y, radius * r, pt(thickness))
        star = []
        for tip in range(16):
            r = radius * (0.29 if tip % 2 == 0 else 0.12)
            star.append((x + r * math.sin(math.pi * tip / 8), y - r * math.cos(math.pi * tip / 8)))
        self.draw.polygon(star, fill=0)
        self.draw.ellipse((x - radius * 0.06, y - radius * 0.06, x + radius * 0.06,
                           y + radius * 0.06), fill=255)

    def ring(self, x, y, radius, thickness):
        self.draw.ellipse((x - radius, y - radius, x + radius, y + radius), outline=0,
                          width=round(thickness))

    def frame(self, inset, thickness):
        self.draw.rectangle((inset, inset, WIDTH - inset, HEIGHT - inset), outline=0,
                            width=round(thickness))


def typeset():
    page = Page()
    page.frame(mm(14), pt(1.2))
    page.frame(mm(15.5), pt(0.4))
    page.rosette(WIDTH / 2, mm(41), mm(20))
    page.centred(mm(77.5), "SOCIAL CONTRACT", font("Regular", 34), pt(3))
    page.centred(mm(86.5), "with the Free Software Community", font("Italic", 19))
    page.draw.line((WIDTH / 2 - mm(18), mm(91.5), WIDTH / 2 + mm(18), mm(91.5)), fill=0,
                   width=round(pt(0.5)))
    y = mm(102)
    left, width = mm(40), mm(138)
    for number, (title, text) in enumerate(articles(), 1):
        page.draw.text((left - mm(5), y), str(number), font=font("Regular", 30), fill=0,
                       anchor="rs")
        page.draw.text((left, y), title, font=font("Italic", 15), fill=0, anchor="ls")
        y = page.paragraph(left, y + pt(14.5), width, text, font("Regular", 10), pt(13))
        y += pt(14.5)
    page.centred(HEIGHT - mm(19.5), "Version 1.2 ratified on October 1st, 2022 \u00b7 "
                 "the Debian Project", font("Italic", 8.5))
    return page.image


def scan(image):
    """What a scanner does: skew, blur, uneven light, grain, dust, one bit."""
    image = image.rotate(SKEW_DEGREES, Image.BICUBIC, fillcolor=255)
    image = image.filter(ImageFilter.GaussianBlur(2.2))
    image = image.resize((WIDTH // 2, HEIGHT // 2), Image.BOX)
    random = numpy.random.default_rng(SEED)
    level = numpy.asarray(image, dtype=numpy.float32)
    rows, columns = level.shape
    light = numpy.linspace(-4, 6, columns, dtype=numpy.float32)[None, :]
    grain = random.normal(0, 9, level.shape).astype(numpy.float32)
    level = level + light + grain
    dust(level, random, 160, 0)     # dark specks on the paper
    dust(level, random, 90, 255)    # and voids in the ink
    return Image.fromarray(numpy.where(level < 128, 0, 255).astype(numpy.uint8)).convert("1")


def dust(level, random, count, grey):
    rows, columns = level.shape
    for _ in range(count):
        y, x = random.integers(8, rows - 8), random.integers(8, columns - 8)
        for _ in range(int(random.integers(1, 5))):
            dy, dx = random.integers(-1, 2, 2)
            level[y + dy, x + dx] = grey


def main():
    path = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "scan.tif")
    scan(typeset()).save(path, compression="group4", dpi=(600, 600))
    print("%s: %d bytes" % (path, os.path.getsize(path)))


if __name__ == "__main__":
    main()
