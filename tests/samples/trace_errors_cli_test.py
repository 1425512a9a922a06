#!/usr/bin/env python3
"""vaskel-proof trace where something is wrong or interrupts it: words, exit
codes, what is left of older files, and what a terminal shows.

    trace_errors_cli_test.py PROGRAM SCAN
"""

import os
import pty
import re
import resource
import select
import signal
import subprocess
import time

import trace_case
from bitmaps import Bitmap
from trace_case import PROGRAM, SCAN, Svg, TraceTest, judge, run


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
    trace_case.main()
