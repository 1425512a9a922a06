#!/usr/bin/env python3
"""vaskel-proof trace as its users see it: files in, files out, words and exit
codes; judged by qpdf, Poppler, librsvg and libtiff's tools.

    trace_cli_test.py PROGRAM SCAN
"""

import os
import pty
import random
import re
import resource
import select
import signal
import subprocess
import sys
import time
import unittest
import xml.etree.ElementTree

from bitmaps import Bitmap, fill_even_odd, path_contours, random_bitmap, read_pgm, read_tiff
from scratch import ScratchCase

PROGRAM = SCAN = ""
SVG = "{http://www.w3.org/2000/svg}"

# Traced outlines may leave the pixels' edges by so many pixels, and may miss
# or add so much of the page's ink.
REACH = 1
DIFFERENCE = 0.03


def run(*arguments, **options):
    """Runs the program; its streams as text."""
    environment = dict(os.environ, LC_ALL="C.UTF-8")
    environment.pop("SOURCE_DATE_EPOCH", None)
    environment.update(options.pop("env", {}))
    # Older files are the tests' own.
    force = ["--force"] if arguments[:1] == ("trace",) and len(arguments) > 1 else []
    return subprocess.run([PROGRAM, *arguments, *force], capture_output=True, text=True,
                          timeout=120, env=environment, **options)


def judge(*command):
    """Runs one of the judges, which has to be content."""
    done = subprocess.run(command, capture_output=True, text=True, timeout=300)
    assert done.returncode == 0, "%s: %s%s" % (" ".join(command), done.stdout, done.stderr)
    return done.stdout


class Svg:
    def __init__(self, path):
        root = xml.etree.ElementTree.parse(path).getroot()
        paths = root.findall(SVG + "path")
        assert root.tag == SVG + "svg" and len(paths) == 1
        assert paths[0].get("fill-rule") == "evenodd"
        self.title = root.find(SVG + "title").text
        self.width_mm = float(root.get("width").removesuffix("mm"))
        self.height_mm = float(root.get("height").removesuffix("mm"))
        self.box = [int(number) for number in root.get("viewBox").split()]
        self.contours = path_contours(paths[0].get("d"))

    def filled(self):
        return fill_even_odd(self.contours, self.box[2], self.box[3])


class TraceTest(ScratchCase):
    def succeeds(self, *arguments, **options):
        done = run("trace", *arguments, **options)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done

    def fails(self, code, *arguments, **options):
        """The one line that a failure prints."""
        done = run(*arguments, **options)
        self.assertEqual(done.returncode, code, done.stderr)
        self.assertEqual(done.stdout, "")
        return done.stderr

    def scan_bitmap(self):
        judge("tiffcp", "-c", "none", SCAN, self.path("plain.tif"))
        return read_tiff(self.path("plain.tif"))

    def rendered(self, pdf, ppi):
        judge("pdftoppm", "-r", str(ppi), "-gray", "-singlefile", pdf, self.path("page"))
        return read_pgm(self.path("page.pgm"))


class SampleScan(TraceTest):
    def test_the_sample_gives_a_svg_and_a_pdf_that_look_like_it(self):
        svg, pdf = self.path("out.svg"), self.path("out.pdf")
        done = self.succeeds(SCAN, "-o", svg, "-o", pdf)
        self.assertEqual(done.stderr, "")
        self.assertIn("4960 x 7016 pixels at 600 ppi (209.97 x 297.01 mm)", done.stdout)

        drawing = Svg(svg)
        self.assertEqual(drawing.title, "scan.tif")
        self.assertAlmostEqual(drawing.width_mm, 4960 / 600 * 25.4, places=4)
        self.assertAlmostEqual(drawing.height_mm, 7016 / 600 * 25.4, places=4)
        self.assertGreater(len(drawing.contours), 1000)
        for contour in drawing.contours:
            self.assertGreaterEqual(len(contour), 3)
            for x, y in contour:
                self.assertTrue(0 <= x <= drawing.box[2] and 0 <= y <= drawing.box[3])

        judge("qpdf", "--check", pdf)
        self.assertRegex(judge("pdfinfo", pdf), r"Page size: +595\.2 x 841\.92 pts")

        scan = self.scan_bitmap()
        # A pixel of librsvg is 1/96 inch; its number of them is set so that none
        # is rounded. The true size stands in the attributes above.
        judge("rsvg-convert", "-w", "4960", "-h", "7016", "-f", "pdf", "-o", self.path("svg.pdf"),
              svg)
        for name, document, ppi in (("PDF", pdf, 600), ("SVG", self.path("svg.pdf"), 96)):
            with self.subTest(name):
                self.compare(scan, self.rendered(document, ppi))

    def compare(self, scan, page):
        ink = scan.count()
        self.assertLess(scan.differing(page).count(), DIFFERENCE * ink)
        # Nothing is drawn where there is no ink; of the ink only specks and
        # hair lines are missed.
        self.assertLess(page.without(scan.grown(REACH)).count(), 0.0001 * ink)
        self.assertLess(scan.without(page.grown(REACH)).count(), 0.0005 * ink)

    def test_exact_outlines_give_the_scan_back_pixel_by_pixel(self):
        self.succeeds(SCAN, "-o", self.path("out.svg"), "--exact")
        drawing = Svg(self.path("out.svg"))
        self.assertEqual(drawing.box, [0, 0, 4960, 7016])
        self.assertTrue(drawing.filled() == self.scan_bitmap())

    def test_the_same_scan_gives_the_same_bytes_twice(self):
        for turn in "12":
            self.succeeds(SCAN, "-o", self.path(turn + ".svg"), "-o", self.path(turn + ".pdf"),
                          cwd="/" if turn == "1" else self.folder)
        self.assertEqual(self.read("1.svg"), self.read("2.svg"))
        self.assertEqual(self.read("1.pdf"), self.read("2.pdf"))
        self.succeeds(SCAN, "-o", self.path("3.pdf"), env={"SOURCE_DATE_EPOCH": "951868800"})
        self.assertRegex(judge("pdfinfo", "-isodates", self.path("3.pdf")),
                         r"CreationDate: +2000-03-01T00:00:00Z")

    def test_smoothed_pixels_keep_their_ink_and_fill_its_steps(self):
        self.succeeds(SCAN, "-o", self.path("out.pdf"), "--grid", "1", "--smooth", "--filter", "0",
                      "--tolerance", "0", "--min-size", "0")
        page = self.rendered(self.path("out.pdf"), 600)
        scan = self.scan_bitmap()
        self.assertLess(scan.without(page).count(), 0.001 * scan.count())
        self.assertLess(page.without(scan.grown(1)).count(), 0.001 * scan.count())


class Bitmaps(TraceTest):
    def exact(self, bitmap, *options):
        self.path("in.pbm", bitmap.pbm())
        self.succeeds(self.path("in.pbm"), "-o", self.path("out.svg"), "--exact", "--resolution",
                      "600", *options)
        return Svg(self.path("out.svg"))

    def test_exact_outlines_of_any_bitmap_give_it_back(self):
        source = random.Random(20240615)
        bitmaps = [random_bitmap(source, width, height, runs)
                   for width, height in ((1, 1), (1, 9), (9, 1), (7, 8), (64, 64), (65, 33), (200, 90))
                   for runs in (20, 50, 90)]
        full = (1 << 40) - 1
        bitmaps.append(Bitmap(40, 40, [full] * 40))
        bitmaps.append(Bitmap(40, 40, [0x5555555555 >> y % 2 for y in range(40)]))
        rings = []
        for y in range(41):
            row = 0
            for x in range(41):
                row = row << 1 | (max(abs(x - 20), abs(y - 20)) // 2 + 1) % 2
            rings.append(row)
        bitmaps.append(Bitmap(41, 41, rings))
        for index, bitmap in enumerate(bitmaps):
            with self.subTest(index=index, width=bitmap.width, height=bitmap.height):
                self.assertTrue(self.exact(bitmap).filled() == bitmap)
        self.assertEqual(len(bitmaps), 24)

    def test_an_empty_page_gives_empty_files(self):
        self.path("in.pbm", Bitmap(20, 20, [0] * 20).pbm())
        self.succeeds(self.path("in.pbm"), "-o", self.path("out.svg"), "-o", self.path("out.pdf"),
                      "--resolution", "300")
        self.assertEqual(Svg(self.path("out.svg")).contours, [])
        judge("qpdf", "--check", self.path("out.pdf"))

    def test_inverting_swaps_ink_and_paper(self):
        bitmap = random_bitmap(random.Random(7), 50, 40, 80)
        paper = Bitmap(50, 40, [row ^ (1 << 50) - 1 for row in bitmap.rows])
        self.assertTrue(self.exact(bitmap, "--invert").filled() == paper)

    def test_grey_is_split_by_otsu_or_by_a_level(self):
        # Paper 200, ink 90, and a grey of 150 that only a high level takes.
        rows = [bytes([200] * 20 + [90] * 10 + [150] * 2)] * 20
        self.path("in.pgm", b"P5 32 20 255\n" + b"".join(rows))
        widths = {}
        for threshold in ("otsu", "160", "50%", "255"):
            self.succeeds(self.path("in.pgm"), "-o", self.path("out.svg"), "--exact", "--threshold",
                          threshold, "--resolution", "300")
            widths[threshold] = Svg(self.path("out.svg")).filled().count() // 20
        self.assertEqual(widths, {"otsu": 10, "160": 12, "50%": 10, "255": 32})

    def test_small_things_are_dropped_by_their_size_in_any_unit(self):
        # Squares of 1 to 10 pixels at 254 ppi: a pixel is 0.1 mm.
        rows = [0] * 12
        for size in range(1, 11):
            for y in range(size):
                rows[y] |= ((1 << size) - 1) << (size * 12)
        self.path("in.pbm", Bitmap(140, 12, rows).pbm())
        left = {}
        for length in ("0", "0.2mm", "0.02cm", "0.02 inch", "3scanpix", "0.5", "2in"):
            self.succeeds(self.path("in.pbm"), "-o", self.path("out.svg"), "--resolution", "254",
                          "--min-size", length, "--grid", "1", "--filter", "0", "--tolerance", "0")
            left[length] = len(Svg(self.path("out.svg")).contours)
        self.assertEqual(left, {"0": 10, "0.2mm": 8, "0.02cm": 8, "0.02 inch": 5, "3scanpix": 7,
                                "0.5": 5, "2in": 0})
        self.succeeds(self.path("in.pbm"), "-o", self.path("out.svg"), "--resolution", "254",
                      "--min-size", "0.02", "--unit", "cm", "--grid", "1", "--filter", "0",
                      "--tolerance", "0")
        self.assertEqual(len(Svg(self.path("out.svg")).contours), 8)

    def test_a_page_has_the_size_that_its_resolution_says(self):
        self.path("in.png", random_bitmap(random.Random(9), 400, 200, 95).png(11811))
        done = self.succeeds(self.path("in.png"), "-o", self.path("out.svg"), "-o",
                             self.path("out.pdf"))
        self.assertIn("at 300 ppi", done.stdout)
        self.assertEqual(done.stderr, "")
        self.assertAlmostEqual(Svg(self.path("out.svg")).width_mm, 400 / 300 * 25.4, places=4)
        self.assertRegex(judge("pdfinfo", self.path("out.pdf")), r"Page size: +96 x 48 pts")

    def test_a_page_without_resolution_is_said_to_be_taken_as_one_of_300_ppi(self):
        self.path("in.pbm", Bitmap(300, 150, [1] * 150).pbm())
        done = self.succeeds(self.path("in.pbm"), "-o", self.path("out.pdf"))
        self.assertRegex(done.stderr, r"^vaskel-proof: note: .*in\.pbm states no resolution; 300 "
                                      r"ppi is assumed \(--resolution sets it\)\n$")
        self.assertRegex(judge("pdfinfo", self.path("out.pdf")), r"Page size: +72 x 36 pts")
        done = self.succeeds(self.path("in.pbm"), "-o", self.path("out.pdf"), "--quiet")
        self.assertEqual(done.stdout + done.stderr, "")

    def test_a_scan_can_come_and_go_through_pipes(self):
        bitmap = random_bitmap(random.Random(8), 300, 200, 95)
        self.path("in.pbm", bitmap.pbm())
        self.succeeds(self.path("in.pbm"), "-o", self.path("out.svg"), "--resolution", "300")
        pipe = subprocess.Popen(["cat", self.path("in.pbm")], stdout=subprocess.PIPE)
        done = run("trace", "-", "-o", "-", "--format", "svg", "--resolution", "300",
                   stdin=pipe.stdout)
        pipe.stdout.close()
        pipe.wait()
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(done.stderr, "")
        self.assertEqual(done.stdout.replace("standard input", "in.pbm"),
                         self.read("out.svg").decode())


class Errors(TraceTest):
    def test_inputs_that_cannot_be_read_give_one_line_with_name_and_reason(self):
        with open(SCAN, "rb") as file:
            scan = file.read()
        inputs = {
            "empty.tif": (b"", "is empty"),
            "text.txt": (b"Dear Sir or Madam,\n", "is no picture in PNG, TIFF, PBM or PGM format"),
            "photo.jpg": (b"\xff\xd8\xff\xe0JFIF",
                          "is a JPEG picture, not PNG, TIFF, PBM or PGM"),
            "short.tif": (scan[:len(scan) // 2], "is a damaged or truncated TIFF: .+"),
            "short.png": (Bitmap(99, 99, [7] * 99).png()[:80],
                          "is a damaged or truncated PNG.*: .+"),
            "short.pbm": (b"P4 1000 1000\nabc",
                          "is truncated: 1000 x 1000 pixels do not fit into 16 bytes"),
            "huge.pgm": (b"P5 2000000000 2000000000 255\n",
                         "is too large: 2000000000 x 2000000000 pixels, and a side may have "
                         "1000000"),
        }
        self.path("out.svg", b"the older one")
        for name, (content, reason) in inputs.items():
            with self.subTest(name):
                line = self.fails(1, "trace", self.path(name, content), "-o", self.path("out.svg"))
                self.assertRegex(line, r"^vaskel-proof: error: %s: %s\n$"
                                 % (re.escape(self.path(name)), reason))
        line = self.fails(1, "trace", self.path("none.tif"), "-o", self.path("out.svg"))
        self.assertEqual(line, "vaskel-proof: error: %s: No such file or directory\n"
                         % self.path("none.tif"))
        line = self.fails(1, "trace", self.folder, "-o", self.path("out.svg"))
        self.assertEqual(line, "vaskel-proof: error: %s: is a directory\n" % self.folder)
        self.assertEqual(self.read("out.svg"), b"the older one")
        self.assertEqual(sorted(os.listdir(self.folder)), sorted([*inputs, "out.svg"]))

    def test_outputs_that_cannot_be_written_give_one_line_and_keep_the_older_file(self):
        for output, reason in (("/dev/full", "No space left on device"),
                               (self.path("none/out.svg"), "No such file or directory")):
            with self.subTest(output):
                line = self.fails(1, "trace", SCAN, "-o", output, "--format", "svg")
                self.assertEqual(line, "vaskel-proof: error: cannot write %s: %s\n"
                                 % (output, reason))
        for name in ("out.svg", "out.pdf"):
            with self.subTest(name):
                self.path(name, b"the older one")
                line = self.fails(1, "trace", SCAN, "-o", self.path(name),
                                  preexec_fn=lambda: resource.setrlimit(
                                      resource.RLIMIT_FSIZE, (20000, 20000)))
                self.assertEqual(line, "vaskel-proof: error: cannot write %s: File too large\n"
                                 % self.path(name))
                self.assertEqual(self.read(name), b"the older one")
        self.assertEqual(sorted(os.listdir(self.folder)), ["out.pdf", "out.svg"])

    def test_no_output_is_replaced_when_one_of_them_fails(self):
        self.path("out.svg", b"the older one")
        self.fails(1, "trace", SCAN, "-o", self.path("out.svg"), "-o", self.path("none/out.pdf"))
        self.assertEqual(self.read("out.svg"), b"the older one")

    def test_command_lines_that_make_no_sense_are_refused(self):
        out = self.path("out.svg")
        for arguments, words in (
                ((), "subcommand"),
                (("tarce",), "tarce"),
                (("trace",), "required"),
                (("trace", SCAN), "--output"),
                (("trace", SCAN, "-o", out, "--nonsense"), "--nonsense"),
                (("trace", SCAN, "-o", self.path("out.doc")), "--format"),
                (("trace", SCAN, "-o", out, "--min-size", "2 elephants"), "--min-size takes"),
                (("trace", SCAN, "-o", out, "--min-size", "-1mm"), "--min-size takes"),
                (("trace", SCAN, "-o", out, "--tolerance", ""), "--tolerance takes"),
                (("trace", SCAN, "-o", out, "--threshold", "300"), "--threshold takes"),
                (("trace", SCAN, "-o", out, "--resolution", "0"), "--resolution takes"),
                (("trace", SCAN, "-o", out, "--unit", "ell"), "--unit takes"),
                (("trace", SCAN, "-o", out, "--filter", "-1"), "--filter"),
                (("trace", SCAN, "-o", out, "--page", "2"), "has no page 2"),
        ):
            with self.subTest(" ".join(arguments)):
                code = 1 if "page" in words else 2
                self.assertIn(words, self.fails(code, *arguments))
        self.assertEqual(os.listdir(self.folder), [])

    def test_help_and_version_are_asked_for_and_given(self):
        self.assertIn("trace", run("--help").stdout)
        self.assertIn("--min-size", run("trace", "--help").stdout)
        version = run("--version")
        self.assertEqual(version.returncode, 0)
        self.assertRegex(version.stdout, r"^vaskel-proof \d+\.\d+\.\d+ \(libpng .*qpdf [\d.]+\)\n$")

    def test_a_row_of_more_changes_than_the_tracer_takes_is_named(self):
        row = int("10" * 15000, 2)
        self.path("in.pbm", Bitmap(30000, 3, [0, row, row]).pbm())
        line = self.fails(1, "trace", self.path("in.pbm"), "-o", self.path("out.svg"),
                          "--resolution", "600")
        self.assertRegex(line, r"row 2 changes between ink and paper 30,000 times; the tracer "
                               r"takes 24,999")
        # One change fewer than the limit allows is fine.
        row = int("10" * 12499 + "0" * 5002, 2)
        self.path("in.pbm", Bitmap(30000, 3, [0, row, row]).pbm())
        self.succeeds(self.path("in.pbm"), "-o", self.path("out.svg"), "--resolution", "600",
                      "--exact")
        self.assertEqual(len(Svg(self.path("out.svg")).contours), 12499)


class Terminal(TraceTest):
    """The program on a pseudo-terminal of its own."""

    def start(self, *arguments, env=None):
        main, other = pty.openpty()
        environment = dict(os.environ, TERM="xterm", **(env or {}))
        if not env:
            environment.pop("NO_COLOR", None)
        process = subprocess.Popen([PROGRAM, *arguments, "--force"], stdin=other,
                                   stdout=subprocess.PIPE, stderr=other, env=environment)
        os.close(other)
        self.addCleanup(os.close, main)
        return process, main

    def shown(self, process, main, until=None):
        """What appears, up to the end or to the pattern."""
        text, limit = "", time.monotonic() + 120
        while time.monotonic() < limit:
            if until and re.search(until, text):
                return text
            ready, _, _ = select.select([main], [], [], 0.2)
            if not ready:
                if process.poll() is not None:
                    return text
                continue
            try:
                piece = os.read(main, 65536)
            except OSError:  # the other end is closed
                piece = b""
            if not piece:
                return text
            text += piece.decode()
        self.fail("nothing more came: " + text)

    def test_a_terminal_shows_progress_and_nothing_of_it_is_left(self):
        process, main = self.start("trace", SCAN, "-o", self.path("out.svg"))
        text = self.shown(process, main)
        process.communicate()
        self.assertEqual(process.returncode, 0)
        self.assertRegex(text, r"tracing  \[#* *\] +\d+ %")
        self.assertTrue(text.endswith("\r\x1b[K"), repr(text[-80:]))

    def test_a_pipe_gets_no_progress_and_no_colour(self):
        done = run("trace", SCAN, "-o", self.path("out.svg"))
        self.assertEqual(done.stderr, "")
        self.path("in.pbm", Bitmap(30, 30, [1] * 30).pbm())
        done = run("trace", self.path("in.pbm"), "-o", self.path("out.svg"))
        self.assertNotIn("\x1b", done.stderr)
        self.assertIn("note: ", done.stderr)

    def test_messages_on_a_terminal_have_the_colour_of_their_severity(self):
        for env, colour in ((None, True), ({"NO_COLOR": "1"}, False)):
            process, main = self.start("trace", self.path("none.tif"), "-o", self.path("out.svg"),
                                       env=env)
            text = self.shown(process, main)
            process.communicate()
            self.assertEqual(process.returncode, 1)
            self.assertEqual("\x1b[1;31merror:\x1b[0m" in text, colour, repr(text))
        forced = run("--color", "always", "trace", self.path("none.tif"), "-o", "x.svg")
        self.assertIn("\x1b[1;31merror:\x1b[0m", forced.stderr)

    def tall_comb(self):
        """Bars over very many rows: a long trace of a small file."""
        return Bitmap(8000, 100000, [int("1100" * 2000, 2)] * 100000)

    def test_ctrl_c_closes_the_outlines_and_writes_them(self):
        self.path("in.png", self.tall_comb().png(23622))
        for grid in ("1", "16"):
            with self.subTest(grid=grid):
                process, main = self.start("trace", self.path("in.png"), "-o", self.path("out.svg"),
                                           "-o", self.path("out.pdf"), "--grid", grid, "--filter",
                                           "0", "--tolerance", "0")
                self.shown(process, main, until=r"tracing .* [1-9]\d* %")
                process.send_signal(signal.SIGINT)
                text = self.shown(process, main)
                process.communicate()
                self.assertEqual(process.returncode, 130)
                match = re.search(r"cancelled after row ([\d,]+) of 100,000; the outlines up to "
                                  r"there were closed and written", text)
                self.assertTrue(match, repr(text[-300:]))
                rows = int(match[1].replace(",", ""))
                self.assertTrue(0 < rows < 100000)
                drawing = Svg(self.path("out.svg"))
                self.assertEqual(len(drawing.contours), 2000)
                scale = int(grid)
                for contour in drawing.contours:
                    self.assertEqual(sorted({y for _, y in contour}), [0, rows * scale])
                judge("qpdf", "--check", self.path("out.pdf"))

    def test_ctrl_c_during_the_first_pass_writes_nothing(self):
        # Grey rows for the threshold to be found from: 60 MB of one byte.
        with open(self.path("in.pgm"), "wb") as file:
            file.write(b"P5 1000 900000 255\n")
            file.truncate(900000019)
        self.path("out.svg", b"the older one")
        process, main = self.start("trace", self.path("in.pgm"), "-o", self.path("out.svg"),
                                   "--resolution", "600")
        self.shown(process, main, until=r"reading .*%")
        process.send_signal(signal.SIGINT)
        text = self.shown(process, main)
        process.communicate()
        self.assertEqual(process.returncode, 130, text)
        self.assertIn("cancelled before tracing began; nothing was written", text)
        self.assertEqual(self.read("out.svg"), b"the older one")


if __name__ == "__main__":
    PROGRAM, SCAN = (os.path.abspath(name) for name in sys.argv[1:3])
    unittest.main(argv=sys.argv[:1] + sys.argv[3:], verbosity=2)
