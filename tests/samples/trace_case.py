"""What tests of vaskel-proof trace have in common. The first two arguments of
the program that imports this are the command under test and the sample scan."""

import os
import subprocess
import sys
import unittest
import xml.etree.ElementTree

from bitmaps import fill_even_odd, path_contours, read_pgm, read_tiff
from scratch import ScratchCase

PROGRAM, SCAN = (os.path.abspath(name) for name in sys.argv[1:3])
SVG = "{http://www.w3.org/2000/svg}"


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


def main():
    unittest.main(argv=sys.argv[:1] + sys.argv[3:], verbosity=2)
