#!/usr/bin/env python3
"""vaskel-proof check and trace --check as their users see them: lines, JSON,
marks in the drawings, words and exit codes; judged by qpdf, Poppler and
librsvg.

    check_cli_test.py PROGRAM SCAN
"""

import json
import os
import random
import re
import subprocess
import sys
import unittest

from scratch import ScratchCase
import xml.etree.ElementTree

PROGRAM = SCAN = ""
SVG = "{http://www.w3.org/2000/svg}"
HEAD = '<svg xmlns="http://www.w3.org/2000/svg" width="100mm" height="50mm" viewBox="0 0 200 100">'


def run(*arguments, **options):
    """Runs the program; its streams as text."""
    environment = dict(os.environ, LC_ALL="C.UTF-8", SOURCE_DATE_EPOCH="951868800")
    return subprocess.run([PROGRAM, *arguments], capture_output=True, text=True, timeout=300,
                          env=environment, **options)


def judge(*command):
    """Runs one of the judges, which has to be content."""
    done = subprocess.run(command, capture_output=True, timeout=300)
    assert done.returncode == 0, "%s: %s%s" % (" ".join(command), done.stdout, done.stderr)
    return done.stdout


class Picture:
    """A colour picture from PPM data."""

    def __init__(self, data):
        match = re.match(rb"P6\s+(\d+)\s+(\d+)\s+255\s", data)
        self.width, self.height = int(match[1]), int(match[2])
        self.pixels = data[match.end():]
        assert len(self.pixels) == 3 * self.width * self.height

    def reds(self):
        """The places of red pixels as shares of the page."""
        found = []
        for at in range(0, len(self.pixels), 3):
            red, green, blue = self.pixels[at:at + 3]
            if red > 200 and green < 120 and blue < 120:
                y, x = divmod(at // 3, self.width)
                found.append(((x + 0.5) / self.width, (y + 0.5) / self.height))
        return found


class CheckTest(ScratchCase):
    def svg(self, content, name="in.svg"):
        return self.path(name, HEAD + content + "</svg>")

    def report(self, *arguments, code):
        """The report as JSON, and standard output."""
        done = run(*arguments, "--force", "--json", self.path("report.json"))
        self.assertEqual(done.returncode, code, done.stderr)
        self.assertEqual(done.stderr, "")
        with open(self.path("report.json"), encoding="utf-8") as file:
            return json.load(file), done.stdout

    def rendered(self, name):
        """The first page of a PDF, or an SVG, as a picture of 800 pixels' width."""
        if name.endswith(".svg"):
            judge("rsvg-convert", "-f", "pdf", "-o", self.path("rendered.pdf"), self.path(name))
            name = "rendered.pdf"
        return Picture(judge("pdftoppm", "-scale-to-x", "800", "-scale-to-y", "-1", "-singlefile",
                             self.path(name)))


class Drawings(CheckTest):
    BOW_TIE = '<path id="bow" transform="translate(100 40)" d="M0 0L20 10L20 0L0 10z"/>'

    def test_a_crossing_is_a_line_an_object_and_a_mark(self):
        report, text = self.report("check", self.svg(self.BOW_TIE), "-o", self.path("out.pdf"), "-o",
                                   self.path("out.svg"), code=3)
        self.assertEqual(text, 'path 1 "bow": crossing at 110 45: contour 0 line 0, contour 0 '
                               "line 2\n"
                               "1 path, 1 contour, 5 points: 1 path crosses itself; 1 crossing, "
                               "0 touches, 0 overlaps\n"
                               "wrote %s\nwrote %s\n" % (self.path("out.pdf"), self.path("out.svg")))
        self.assertEqual(report["paths"][0]["findings"],
                         [{"kind": "crossing", "x": 110, "y": 45, "selint": True,
                           "lines": [{"contour": 0, "line": 0}, {"contour": 0, "line": 2}]}])
        self.assertTrue(report["paths"][0]["intersect"])
        self.assertAlmostEqual(report["unitsPerInch"]["x"], 50.8)

        judge("qpdf", "--check", self.path("out.pdf"))
        self.assertRegex(judge("pdfinfo", self.path("out.pdf")).decode(),
                         r"Page size: +283\.465 x 141\.732 pts")
        for name in ("out.pdf", "out.svg"):
            with self.subTest(name):
                reds = self.rendered(name).reds()
                self.assertGreater(len(reds), 30)
                # A circle of 2 mm around (110, 45), as shares of 200 x 100: round
                # on the page of 100 x 50 mm.
                for x, y in reds:
                    radius = ((x * 100 - 55) ** 2 + (y * 50 - 22.5) ** 2) ** 0.5
                    self.assertAlmostEqual(radius, 2, delta=0.35)
                for side in (min, max):
                    self.assertAlmostEqual(side(x for x, _ in reds) * 100,
                                           55 + (2 if side is max else -2), delta=0.35)

    def test_touches_are_listed_and_are_no_crossing(self):
        # A triangle whose tip touches a square's side, and two squares apart.
        report, text = self.report(
            "check", self.svg('<path d="M10 10h20v20h-20zM20 10l5-5h-10z"/>'), code=0)
        self.assertEqual(text.splitlines()[0],
                         "path 1: touch at 20 10: contour 0 line 0, contour 1 line 0")
        self.assertEqual((report["crossings"], report["touches"]), (0, 1))
        self.assertFalse(report["paths"][0]["intersect"])

    def test_curves_cross_where_they_do(self):
        # x(t) - 50 = (b - a) 50 (1 - 16 ab) is 0 at ab = 1/16: y = 600 ab = 37.5.
        report, _ = self.report("check", self.svg('<path d="M0 0C300 200-200 200 100 0"/>'), code=3)
        self.assertEqual(len(report["paths"][0]["findings"]), 1)
        finding = report["paths"][0]["findings"][0]
        self.assertAlmostEqual(finding["x"], 50, delta=0.02)
        self.assertAlmostEqual(finding["y"], 37.5, delta=0.02)
        coarse, _ = self.report("check", self.svg('<path d="M0 0C300 200-200 200 100 0"/>'),
                                "--flatness", "1", code=3)
        self.assertLess(coarse["paths"][0]["points"], report["paths"][0]["points"] / 4)

    def test_random_outlines_cross_where_exact_arithmetic_says(self):
        source = random.Random(20240811)
        found = 0
        for turn in range(30):
            points = [(source.randrange(200), source.randrange(100)) for _ in range(12)]
            points = [p for p, q in zip(points, points[1:] + points[:1]) if p != q]
            want = proper_crossings(points)
            data = "M" + "L".join("%d %d" % point for point in points) + "z"
            report, _ = self.report("check", self.svg('<path d="%s"/>' % data),
                                    code=3 if want else run("check", self.path("in.svg")).returncode)
            got = {tuple(line["line"] for line in finding["lines"])
                   for finding in report["paths"][0]["findings"] if finding["kind"] == "crossing"}
            with self.subTest(turn=turn, data=data):
                self.assertLessEqual(set(want), got)
                for finding in report["paths"][0]["findings"]:
                    pair = tuple(line["line"] for line in finding["lines"])
                    if pair in want:
                        self.assertAlmostEqual(finding["x"], want[pair][0], delta=1e-4)
                        self.assertAlmostEqual(finding["y"], want[pair][1], delta=1e-4)
                        found += 1
        self.assertGreater(found, 300)

    def test_standard_streams_serve_as_files(self):
        done = run("check", "-", "--json", "-", input=HEAD + self.BOW_TIE + "</svg>")
        self.assertEqual(done.returncode, 3)
        self.assertEqual(json.loads(done.stdout)["crossings"], 1)
        done = run("check", self.svg(self.BOW_TIE), "-o", "-", "--format", "svg")
        self.assertEqual(done.returncode, 3)
        self.assertEqual(xml.etree.ElementTree.fromstring(done.stdout).tag, SVG + "svg")

    def test_what_use_elements_refer_to_is_checked(self):
        content = ('<defs><path id="tie" d="M0 0L8 8V0L0 8z"/></defs>'
                   '<use href="#tie" x="10"/><use href="#tie" x="30"/>')
        report, _ = self.report("check", self.svg(content), code=3)
        self.assertEqual([(finding["x"], finding["y"]) for path in report["paths"]
                          for finding in path["findings"]], [(14, 4), (34, 4)])
        done = run("check", self.svg('<rect width="9" height="9"/><use href="#a"/>'))
        self.assertEqual(done.returncode, 0)
        self.assertIn("note: %s: 1 use element refers to nothing in this file"
                      % self.path("in.svg"), done.stderr)


def proper_crossings(points):
    """Pairs of lines of a closed outline that cross within both, with the place."""
    def side(a, b, c):
        return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0])
    lines = list(zip(points, points[1:] + points[:1]))
    crossings = {}
    for j, (c, d) in enumerate(lines):
        for i, (a, b) in enumerate(lines[:j]):
            s, t = side(c, d, a), side(c, d, b)
            if s * t < 0 and side(a, b, c) * side(a, b, d) < 0:
                crossings[i, j] = (a[0] + (b[0] - a[0]) * s / (s - t),
                                   a[1] + (b[1] - a[1]) * s / (s - t))
    return crossings


class Traces(CheckTest):
    def test_a_traced_page_and_its_svg_have_the_same_findings(self):
        for options, crosses in (((), False), (("--grid", "1", "--filter", "1", "--tolerance",
                                                "2scanpix"), True)):
            with self.subTest(options=options):
                code = 3 if crosses else 0
                traced, text = self.report("trace", SCAN, "-o", self.path("scan.svg"), "-o",
                                           self.path("scan.pdf"), "--check", *options, code=code)
                self.assertIn("outlines, ", text)
                checked, _ = self.report("check", self.path("scan.svg"), code=code)
                # The drawing's grid is finer than whole outline units.
                self.assertEqual(*([(finding["kind"], finding["lines"])
                                    for finding in report["paths"][0]["findings"]]
                                   for report in (traced, checked)))
                for ours, theirs in zip(traced["paths"][0]["findings"],
                                        checked["paths"][0]["findings"]):
                    for axis in "xy":
                        self.assertAlmostEqual(ours[axis], theirs[axis], delta=0.5)
                self.assertEqual(checked["paths"][0]["contours"], traced["paths"][0]["contours"])
                self.assertEqual(checked["paths"][0]["points"], traced["paths"][0]["points"])
                self.assertEqual(traced["crossings"] > 0, crosses)
                judge("qpdf", "--check", self.path("scan.pdf"))
                marks = [path for path in
                         xml.etree.ElementTree.parse(self.path("scan.svg")).getroot()
                         if path.get("stroke") == "#f00"]
                self.assertEqual(len(marks), 1 if crosses else 0)

    def test_older_files_are_replaced_with_force_only(self):
        self.path("out.json", "the older one")
        arguments = ("check", self.svg(Drawings.BOW_TIE), "--json", self.path("out.json"))
        done = run(*arguments)
        self.assertEqual(done.returncode, 1)
        self.assertIn("--force", done.stderr)
        with open(self.path("out.json"), encoding="utf-8") as file:
            self.assertEqual(file.read(), "the older one")
        self.assertEqual(run(*arguments, "--force").returncode, 3)

    def test_json_needs_a_check(self):
        done = run("trace", SCAN, "-o", self.path("out.svg"), "--json", self.path("out.json"))
        self.assertEqual(done.returncode, 2)
        self.assertIn("add --check", done.stderr)
        self.assertEqual(os.listdir(self.folder), [])


class Errors(CheckTest):
    def fails(self, code, *arguments):
        done = run(*arguments)
        self.assertEqual(done.returncode, code, done.stderr)
        self.assertEqual(done.stdout, "")
        self.assertNotIn("\n", done.stderr.rstrip("\n") if code == 1 else "")
        return done.stderr

    def test_files_that_cannot_be_checked_give_one_line(self):
        laughs = "".join('<!ENTITY %s "%s">' % (chr(98 + i), "&%s;" % chr(97 + i) * 20)
                         for i in range(8))
        inputs = {
            "empty.svg": ("", "is empty"),
            "text.svg": ("Dear Sir", "is no well-formed XML: line 1: Start tag expected.*"),
            "page.html": ("<html/>", "is XML, but no SVG.*"),
            "nothing.svg": (HEAD + "<text>A</text></svg>", "holds no path"),
            "short.svg": (HEAD + '<path d="M0 0L1 1"/>', "is no well-formed XML: line 1: .*"),
            "data.svg": (HEAD + '\n<path d="M0 0L1,"/></svg>', "line 2: attribute d cannot be read"),
            "far.svg": (HEAD + '<path d="M0 0L1e30 1"/></svg>',
                        "line 1: a coordinate is farther from 0 than 33,554,432 units"),
            "deep.svg": (HEAD + "<g>" * 100000 + "</g>" * 100000 + "</svg>",
                         "nests elements more than 256 deep, at line 1"),
            "laughs.svg": ('<!DOCTYPE svg [<!ENTITY a "M0 0L1 1">' + laughs + "]>" + HEAD
                           + '<path d="&i;"/></svg>', "is no well-formed XML: .*"),
            "secret.svg": ('<!DOCTYPE svg [<!ENTITY a SYSTEM "file:///etc/hostname">]>' + HEAD
                           + "<path d='M0 0L1 1'/><text>&a;</text></svg>",
                           "is no well-formed XML: line 1: Entity 'a' not defined"),
        }
        for name, (content, reason) in inputs.items():
            with self.subTest(name):
                line = self.fails(1, "check", self.path(name, content), "-o", self.path("out.pdf"))
                self.assertRegex(line, r"^vaskel-proof: error: %s: %s\n$"
                                 % (re.escape(self.path(name)), reason))
        self.assertIn("No such file", self.fails(1, "check", self.path("none.svg")))
        self.assertFalse(os.path.exists(self.path("out.pdf")))

    def test_command_lines_that_make_no_sense_are_refused(self):
        svg = self.svg(Drawings.BOW_TIE)
        for arguments, words in (((), "required"), ((svg, "-o", "x.doc"), "--format"),
                                 ((svg, "--limit", "0"), "--limit"),
                                 ((svg, "--flatness", "0"), "--flatness"),
                                 ((svg, "--flatness", "much"), "--flatness")):
            with self.subTest(" ".join(arguments)):
                self.assertIn(words, self.fails(2, "check", *arguments))

    def test_help_tells_how_the_three_engines_differ(self):
        text = run("check", "--help").stdout
        for word in ("Vaskel::intcalc", "Vaskel::selint", "Vaskel::intersect", "touch", "overlap"):
            self.assertIn(word, text)
        self.assertIn("check", run("--help").stdout)


if __name__ == "__main__":
    PROGRAM, SCAN = (os.path.abspath(name) for name in sys.argv[1:3])
    unittest.main(argv=sys.argv[:1] + sys.argv[3:], verbosity=2)
