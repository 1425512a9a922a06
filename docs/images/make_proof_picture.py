#!/usr/bin/python3
"""Makes proof.png: the sample proof as Poppler shows it.

Needs vaskel-proof (./dev build) and the Debian packages python3-pil and
poppler-utils.

    /usr/bin/python3 docs/images/make_proof_picture.py [build/release]
"""

import os
import subprocess
import sys
import tempfile

from PIL import Image

HERE = os.path.dirname(os.path.abspath(__file__))
SAMPLES = os.path.join(HERE, "../../samples/data")
PROGRAM = os.path.join(sys.argv[1] if len(sys.argv) > 1 else "build/release",
                       "samples/vaskel-proof")
WIDTH = 926  # pixels
FINER = 3    # rendered about so many times larger, then averaged


def main():
    with tempfile.TemporaryDirectory() as folder:
        proof, page = os.path.join(folder, "proof.pdf"), os.path.join(folder, "page")
        inputs = [("--scan", "scan.tif"), ("--image", "picture.jpg"),
                  ("--cmyk-profile", "FOGRA39L_coated.icc")]
        subprocess.run([PROGRAM, "make", "-q", "-o", proof, *(word for option, name in inputs
                        for word in (option, os.path.join(SAMPLES, name)))], check=True)
        subprocess.run(["pdftoppm", "-r", str(72 * FINER), "-singlefile", proof, page], check=True)
        picture = Image.open(page + ".ppm")
        picture = picture.resize((WIDTH, picture.height * WIDTH // picture.width), Image.BOX)
    target = os.path.join(HERE, "proof.png")
    picture.save(target, optimize=True)
    print("%s: %d bytes" % (target, os.path.getsize(target)))


if __name__ == "__main__":
    main()
