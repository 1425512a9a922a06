"""Bitmaps as big integers, for the tests of the sample host.

A Bitmap holds its rows one after the other, one bit a pixel, the first pixel
in the highest bit of its row. Whole pages are compared, grown and counted with
integer arithmetic, which takes milliseconds where a loop takes minutes.
"""

import re
import struct
import zlib


class Bitmap:
    def __init__(self, width, height, rows):
        """rows: an integer a row, the first pixel in bit width - 1."""
        assert len(rows) == height
        self.width, self.height, self.rows = width, height, rows

    def __eq__(self, other):
        return (self.width, self.height, self.rows) == (other.width, other.height, other.rows)

    def count(self):
        return sum(bin(row).count("1") for row in self.rows)

    def combined(self, other, operation):
        assert (self.width, self.height) == (other.width, other.height)
        return Bitmap(self.width, self.height,
                      [operation(a, b) for a, b in zip(self.rows, other.rows)])

    def differing(self, other):
        return self.combined(other, lambda a, b: a ^ b)

    def without(self, other):
        return self.combined(other, lambda a, b: a & ~b)

    def grown(self, pixels):
        """Every ink pixel spread to the square of that many pixels around it."""
        mask = (1 << self.width) - 1
        wide = []
        for row in self.rows:
            for _ in range(pixels):
                row |= row << 1 | row >> 1
            wide.append(row & mask)
        tall = []
        for y in range(self.height):
            row = 0
            for near in wide[max(0, y - pixels):y + pixels + 1]:
                row |= near
            tall.append(row)
        return Bitmap(self.width, self.height, tall)

    def cropped(self, height):
        return Bitmap(self.width, height, self.rows[:height])

    def pbm(self):
        row_bytes = (self.width + 7) // 8
        shift = row_bytes * 8 - self.width
        return b"P4 %d %d\n" % (self.width, self.height) + b"".join(
            (row << shift).to_bytes(row_bytes, "big") for row in self.rows)

    def png(self, pixels_per_metre=None):
        """Bilevel, 0 black; equal rows share their work."""
        row_bytes = (self.width + 7) // 8
        shift = row_bytes * 8 - self.width
        full = (1 << row_bytes * 8) - 1
        packer = zlib.compressobj(1)
        packed = b"".join(
            packer.compress(b"\0" + ((row << shift) ^ full).to_bytes(row_bytes, "big"))
            for row in self.rows) + packer.flush()

        def chunk(name, data):
            return (struct.pack(">I", len(data)) + name + data +
                    struct.pack(">I", zlib.crc32(name + data)))

        header = chunk(b"IHDR", struct.pack(">IIBBBBB", self.width, self.height, 1, 0, 0, 0, 0))
        scale = b""
        if pixels_per_metre:
            scale = chunk(b"pHYs", struct.pack(">IIB", pixels_per_metre, pixels_per_metre, 1))
        return (b"\x89PNG\r\n\x1a\n" + header + scale + chunk(b"IDAT", packed) +
                chunk(b"IEND", b""))


def random_bitmap(random, width, height, runs):
    """runs: how likely, of 100, the next pixel is like the one before it."""
    rows = []
    for _ in range(height):
        row, ink = 0, random.randrange(2)
        for _ in range(width):
            if random.randrange(100) >= runs:
                ink ^= 1
            row = row << 1 | ink
        rows.append(row)
    return Bitmap(width, height, rows)


def read_pgm(path, level=128):
    """A raw PGM as ink below the level."""
    with open(path, "rb") as file:
        data = file.read()
    match = re.match(rb"P5\s+(\d+)\s+(\d+)\s+255\s", data)
    width, height = int(match[1]), int(match[2])
    assert len(data) == match.end() + width * height, path
    table = bytes(ord("1" if grey < level else "0") for grey in range(256))
    digits = data[match.end():].translate(table)
    return Bitmap(width, height,
                  [int(digits[y * width:(y + 1) * width], 2) for y in range(height)])


def read_tiff(path):
    """An uncompressed little-endian bilevel TIFF in strips, as tiffcp writes it."""
    with open(path, "rb") as file:
        data = file.read()
    assert data[:4] == b"II*\0", path
    at = struct.unpack_from("<I", data, 4)[0]
    fields = {}
    for i in range(struct.unpack_from("<H", data, at)[0]):
        tag, kind, count = struct.unpack_from("<HHI", data, at + 2 + 12 * i)
        size, code = {3: (2, "H"), 4: (4, "I")}.get(kind, (0, ""))
        if not size:
            continue
        place = at + 2 + 12 * i + 8
        if size * count > 4:
            place = struct.unpack_from("<I", data, place)[0]
        fields[tag] = struct.unpack_from("<%d%s" % (count, code), data, place)
    width, height = fields[256][0], fields[257][0]
    assert fields[259][0] == 1 and fields.get(258, (1,))[0] == 1, "not uncompressed and bilevel"
    packed = b"".join(data[start:start + count] for start, count in zip(fields[273], fields[279]))
    row_bytes = (width + 7) // 8
    full = (1 << width) - 1
    rows = []
    for y in range(height):
        row = int.from_bytes(packed[y * row_bytes:(y + 1) * row_bytes], "big")
        row >>= row_bytes * 8 - width
        rows.append(row if fields[262][0] == 0 else row ^ full)
    return Bitmap(width, height, rows)


def fill_even_odd(contours, width, height):
    """The even-odd fill of outlines that run along pixel edges: crossing an
    upright edge flips everything to the right of it."""
    rows = [0] * height
    for contour in contours:
        for (x0, y0), (x1, y1) in zip(contour, contour[1:] + contour[:1]):
            assert x0 == x1 or y0 == y1, "an outline that is not exact"
            if x0 == x1:
                flip = (1 << (width - x0)) - 1
                for y in range(min(y0, y1), max(y0, y1)):
                    rows[y] ^= flip
    return Bitmap(width, height, rows)


TOKEN = re.compile(r"[MLHVZmlhvz]|-?\d+")


def path_contours(data):
    """The closed contours of SVG path data of whole numbers."""
    contours, points = [], []
    x = y = 0
    command, numbers = "", []
    needs = {"M": 2, "l": 2, "h": 1, "v": 1}
    for token in TOKEN.findall(data):
        if token == "z":
            contours.append(points)
            command = ""
        elif token.isalpha():
            command, numbers = token, []
        else:
            numbers.append(int(token))
            if len(numbers) < needs[command]:
                continue
            if command == "M":
                x, y = numbers
                points = []
            elif command == "l":
                x, y = x + numbers[0], y + numbers[1]
            elif command == "h":
                x += numbers[0]
            else:
                y += numbers[0]
            points.append((x, y))
            numbers = []
    assert command == "", "a contour that is not closed"
    return contours
