#!/usr/bin/env python3
"""vaskel-proof trace as its users see it: files in, files out; judged by qpdf,
Poppler, librsvg and libtiff's tools.

    trace_cli_test.py PROGRAM SCAN
"""

import random
import subprocess

import trace_case
from bitmaps import Bitmap, random_bitmap
from trace_case import SCAN, Svg, TraceTest, judge, run

# Traced outlines may leave the pixels' edges by so many pixels, and may miss
# or add so much of the page's ink.
REACH = 1
DIFFERENCE = 0.03


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


if __name__ == "__main__":
    trace_case.main()
