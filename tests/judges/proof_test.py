#!/usr/bin/env python3
"""Makes the sample proof and lets other programs judge it.

usage: proof_test.py VASKEL_PROOF SAMPLE_FOLDER

qpdf finds no fault; pdffonts and pdftotext see an embedded Type 1 font and its
text; the pictures' streams decode to what the samplers gave; Ghostscript,
Poppler and MuPDF show the PDF alike, and the PostScript like the PDF, outside
of the areas whose colours a viewer manages; the same input gives the same
bytes.
"""

import base64
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import zlib

import numpy

PPI = 288
BLOCK = 8  # pixels are averaged in squares, since programs render edges by different rules
# Squares of which a channel differs by more than 64 of 255, of all.
MOST_DIFFERING = 0.005
MOST_MEAN = 6.0  # of 255; Ghostscript draws every pixel that an edge touches


def run(*command):
    result = subprocess.run([str(c) for c in command], capture_output=True)
    if result.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}\n{result.stderr.decode(errors='replace')}")
    return result.stdout


def check(condition, what):
    if not condition:
        sys.exit(f"failed: {what}")
    print(f"ok: {what}")


def make(program, samples, folder):
    run(program, "make", "-q", "--scan", samples / "scan.tif", "--image", samples / "picture.jpg",
        "--cmyk-profile", samples / "FOGRA39L_coated.icc", "-o", folder / "proof.pdf",
        "--ps", folder / "proof.ps", "--json", folder / "proof.json")
    return folder / "proof.pdf", folder / "proof.ps", json.loads((folder / "proof.json").read_text())


def check_streams(pdf, report):
    data = pdf.read_bytes()
    images = []
    for found in re.finditer(rb"<<([^<>]*/Subtype /Image[^<>]*)>>\s*stream\r?\n", data):
        width = int(re.search(rb"/Width (\d+)", found[1])[1])
        length = int(re.search(rb"/Length (\d+)", found[1])[1])
        check(b"/Filter /ASCII85Decode" in found[1], "an ASCII85 stream")
        images.append((width, data[found.end():found.end() + length].strip()))
    check(len(images) == len(report["pictures"]), f"{len(images)} pictures in the PDF")
    for (width, text), picture in zip(images, report["pictures"]):
        check(text.endswith(b"~>"), "the stream has its end marker")
        samples = base64.a85decode(text[:-2])
        check(width == picture["width"] and len(samples) == picture["bytes"]
              and zlib.crc32(samples) == picture["crc32"],
              f"the stream of '{picture['name']}' decodes to the sampler's {len(samples)} bytes")


def check_text(pdf, report):
    fonts = run("pdffonts", pdf).decode().splitlines()[2:]
    check(len(fonts) == 1, "one font")
    check(re.match(rf"{re.escape(report['font']['name'])}\s+Type 1\s+Custom\s+yes\s+no\s+yes", fonts[0]),
          f"embedded Type 1 font with text: {fonts[0]}")
    text = run("pdftotext", "-layout", pdf, "-").decode()
    for words in ["VaskelLib proof", report["scan"]["width"] + " × " + report["scan"]["height"],
                  "reduced by area means", "a detail, enlarged 4.17 times",
                  "screen to press and back, a chain of two links", "C255 M0 Y0 K0"]:
        check(words in text, f"text: {words}")
    count = text.count("\n")
    check(count > 50, f"{count} lines of text")


def read_ppm(path):
    data = path.read_bytes()
    header = re.match(rb"P6\s+(?:#.*\n\s*)*(\d+)\s+(\d+)\s+255\s", data)
    check(header is not None, f"{path.name} is a picture")
    return int(header[1]), int(header[2]), data[header.end():]


def shrunk(picture):
    """The picture's means of BLOCK x BLOCK pixels, placed from the lower left."""
    width, height, data = picture
    pixels = numpy.frombuffer(data, numpy.uint8).reshape(height, width, 3)
    w, h = width // BLOCK, height // BLOCK
    pixels = pixels[height - h * BLOCK:, :w * BLOCK]
    return pixels.reshape(h, BLOCK, w, BLOCK, 3).mean(axis=(1, 3))


def counting(shape, report):
    """The squares that count: not those of colours that a viewer manages."""
    keep = numpy.ones(shape, bool)
    scale = PPI / 72 / BLOCK
    for x, y, w, h in report["masks"]:
        left, right = int(x * scale) - 1, int((x + w) * scale) + 2
        low, high = int(y * scale) - 1, int((y + h) * scale) + 2
        keep[shape[0] - high:shape[0] - low, left:right] = False
    return keep


def compare(name, first, second, report):
    check(first[:2] == second[:2], f"{name}: {first[0]} x {first[1]} pixels")
    a, b = shrunk(first), shrunk(second)
    keep = counting(a.shape[:2], report)
    check(keep.mean() > 0.75, f"{name}: {100 * keep.mean():.0f} % of the page counts")
    difference = numpy.abs(a - b).max(axis=2)[keep]
    share, mean = (difference > 64).mean(), difference.mean()
    check(share < MOST_DIFFERING and mean < MOST_MEAN,
          f"{name}: {100 * share:.3f} % of the squares differ, {mean:.3f} of 255 on the mean")


def ghostscript(source, target):
    run("gs", "-q", "-dNOPAUSE", "-dBATCH", "-dSAFER", "-sDEVICE=ppmraw", f"-r{PPI}",
        f"-sOutputFile={target}", source)
    return read_ppm(target)


def poppler(source, target):
    run("pdftoppm", "-aa", "no", "-aaVector", "no", "-r", PPI, "-singlefile", source, target.with_suffix(""))
    return read_ppm(target)


def mupdf(source, target):
    run("mutool", "draw", "-q", "-r", PPI, "-o", target, source)
    return read_ppm(target)


def main():
    program, samples = sys.argv[1], pathlib.Path(sys.argv[2])
    os.environ["SOURCE_DATE_EPOCH"] = "1700000000"
    with tempfile.TemporaryDirectory() as work:
        folders = [pathlib.Path(work) / name for name in ("first", "second")]
        for folder in folders:
            folder.mkdir()
        pdf, ps, report = make(program, samples, folders[0])
        again = make(program, samples, folders[1])
        for one, two in zip((pdf, ps), again):
            check(one.read_bytes() == two.read_bytes(), f"{one.name}: the same bytes twice")

        run("qpdf", "--check", pdf)
        print("ok: qpdf finds no fault")
        information = run("pdfinfo", pdf).decode()
        check("VaskelLib proof" in information and "2023" in information, "title and date")
        check(report["inputs"]["imageFormat"] == "JPEG, inverted inks", "inverted inks are recognised")
        check_text(pdf, report)
        check_streams(pdf, report)
        check(b"/GTS_PDFX" in pdf.read_bytes(), "an output intent")

        out = folders[0]
        by_gs = ghostscript(pdf, out / "gs.ppm")
        by_poppler = poppler(pdf, out / "poppler.ppm")
        compare("Ghostscript and Poppler", by_gs, by_poppler, report)
        compare("Ghostscript and MuPDF", by_gs, mupdf(pdf, out / "mupdf.ppm"), report)
        compare("PDF and PostScript", by_gs, ghostscript(ps, out / "ps.ppm"), report)
        run("ps2pdf", ps, out / "distilled.pdf")
        compare("Poppler on what ps2pdf makes", by_gs, poppler(out / "distilled.pdf", out / "d1.ppm"), report)
        compare("MuPDF on what ps2pdf makes", by_gs, mupdf(out / "distilled.pdf", out / "d2.ppm"), report)
        dark = sum(1 for i in range(0, len(by_gs[2]), 3) if by_gs[2][i] < 128)
        check(dark > by_gs[0] * by_gs[1] // 50, f"{dark} dark pixels: the page is not blank")


main()
