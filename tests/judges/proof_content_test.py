"""What stands in the sample host's proof, as other programs read it: the font
(t1utils), every caption and swatch (Poppler, Ghostscript, MuPDF), the colours
of the ICC chains (Little CMS called directly), the streams of both files; and
what becomes of other inputs. How the renderings agree is judged elsewhere.

usage: proof_content_test.py VASKEL_PROOF
"""

import base64
import ctypes
import ctypes.util
import json
import os
import pathlib
import re
import struct
import subprocess
import sys
import tempfile
import zlib

SAMPLES = pathlib.Path(__file__).resolve().parents[2] / "samples" / "data"
PPI = 72

failures = []
checks = 0


def check(holds, what):
    global checks
    checks += 1
    if not holds:
        failures.append(what)


def run(*command, **options):
    return subprocess.run([str(c) for c in command], check=True, stdout=subprocess.PIPE,
                          **options).stdout


class Pdf:
    """Objects of a PDF as qpdf tells them."""

    def __init__(self, path):
        self.path = path
        whole = json.loads(run("qpdf", "--json", "--json-key=qpdf", path))
        self.objects = whole["qpdf"][1]

    def dict_of(self, entry):
        return entry["stream"]["dict"] if "stream" in entry else entry.get("value", {})

    def find(self, key, value):
        """(object number, dictionary) of all whose key has this value."""
        found = []
        for name, entry in self.objects.items():
            values = self.dict_of(entry)
            if isinstance(values, dict) and values.get(key) == value:
                found.append((int(name[4:].split()[0]) if name != "trailer" else 0, values))
        return found

    def resolve(self, value):
        if isinstance(value, str) and re.fullmatch(r"\d+ 0 R", value):
            return self.dict_of(self.objects["obj:" + value])
        return value

    def stream(self, number, how):
        return run("qpdf", f"--show-object={number}", how, self.path)


# --- structure, fonts, text ---------------------------------------------------


def judge_structure(pdf, report):
    checked = run("qpdf", "--check", pdf.path)
    check(b"No syntax or stream encoding errors" in checked, "qpdf --check")
    info = run("pdfinfo", pdf.path).decode()
    check("2001" in info, "the date is not SOURCE_DATE_EPOCH")
    check(report["inputs"]["scan"] in info, "the source is not in the document information")
    intents = pdf.find("/S", "/GTS_PDFX")
    check(len(intents) == 1, "output intent")
    if intents:
        number = int(intents[0][1]["/DestOutputProfile"].split()[0])
        profile = pdf.stream(number, "--filtered-stream-data")
        check(profile == (SAMPLES / report["inputs"]["cmykProfile"]).read_bytes(),
              "the intent's profile is not the press profile's file")


def judge_font(pdf, report, folder):
    font = report["font"]
    listed = run("pdffonts", pdf.path).decode().splitlines()[2:]
    check(len(listed) == 1 and listed[0].startswith(font["name"] + " "), "pdffonts: name")
    columns = listed[0][36:].split()
    check(columns[:2] == ["Type", "1"] and columns[3:6] == ["yes", "no", "yes"],
          f"pdffonts: {listed[0]}")
    [(_, descriptor)] = pdf.find("/Type", "/FontDescriptor")
    number = int(descriptor["/FontFile"].split()[0])
    lengths = [pdf.resolve(descriptor["/FontFile"])[f"/Length{i}"] for i in (1, 2, 3)]
    check(lengths == [font[f"length{i}"] for i in (1, 2, 3)], f"font sections {lengths}")
    program = folder / "embedded.t1"
    program.write_bytes(pdf.stream(number, "--filtered-stream-data"))
    check(program.stat().st_size == sum(lengths), "font sections do not add up")
    text = run("t1disasm", program)
    check(run("t1disasm", input=run("t1asm", "--pfb", input=text)) == text, "t1asm round trip")
    glyphs = dict(re.findall(rb"^/(\S+) \{\n\t(-?\d+ -?\d+) hsbw", text, re.M))
    check(len(glyphs) == font["characters"] + 1, f"{len(glyphs)} glyphs in the program")
    # Widths and names of the dictionary are those of the program.
    [(_, dictionary)] = pdf.find("/Subtype", "/Type1")
    widths = pdf.resolve(dictionary["/Widths"])
    first = dictionary["/FirstChar"]
    code = None
    named = 0
    for item in pdf.resolve(pdf.resolve(dictionary["/Encoding"])["/Differences"]):
        if isinstance(item, int):
            code = item
            continue
        advance = glyphs[item[1:].encode("latin-1")].split()[1]
        check(widths[code - first] == int(advance), f"width of {item}")
        code += 1
        named += 1
    check(named == font["characters"], f"{named} codes named in the PDF")


def words(text):
    return re.sub(r"\s+", " ", text)


def judge_text(pdf, report):
    text = words(run("pdftotext", "-raw", pdf.path, "-").decode())
    expected = [report["scan"]["width"], report["scan"]["height"], report["inputs"]["image"],
                report["inputs"]["font"]]
    for row in report["swatches"]:
        expected.append(row["label"])
        expected += [colour["numbers"] for colour in row["colours"]]
    check(len(expected) > 60, "few captions")
    for caption in expected:
        check(words(caption) in text, f"pdftotext misses {caption!r}")


# --- streams ------------------------------------------------------------------


def judge_pictures(pdf, report):
    images = sorted(pdf.find("/Subtype", "/Image"))
    check(len(images) == len(report["pictures"]), "number of pictures")
    for (number, values), picture in zip(images, report["pictures"]):
        name = picture["name"]
        check((values["/Width"], values["/Height"]) == (picture["width"], picture["height"]),
              f"{name}: size")
        check(values["/Filter"] == "/ASCII85Decode", f"{name}: filter")
        decoded = pdf.stream(number, "--filtered-stream-data")
        check(len(decoded) == picture["bytes"] ==
              picture["width"] * picture["height"] * picture["channels"], f"{name}: bytes")
        check(zlib.crc32(decoded) == picture["crc32"], f"{name}: qpdf decodes other samples")
        raw = pdf.stream(number, "--raw-stream-data")
        check(base64.a85decode(b"<~" + raw.strip(), adobe=True) == decoded,
              f"{name}: Python decodes other samples")
        check(max(map(len, raw.split(b"\n"))) <= 101, f"{name}: long lines")


def judge_postscript(path, report):
    data = path.read_bytes()
    check(data.startswith(b"%!PS-Adobe-3.0\n"), "PostScript header")
    for comment in (b"%%BoundingBox:", b"%%EndComments", b"%%EndProlog", b"%%EndSetup",
                    b"%%Page: 1 1", b"%%Trailer", b"%%EOF"):
        check(re.search(rb"^" + comment, data, re.M), f"{comment.decode()} is missing")
    # Byte counts say where the data ends, and what stands in it decodes alike.
    found = 0
    for match in re.finditer(rb"^%%BeginData: (\d+) ASCII Bytes\n", data, re.M):
        body = data[match.end():match.end() + int(match[1])]
        check(data[match.end() + int(match[1]):].startswith(b"%%EndData\n"), "data length")
        samples = base64.a85decode(b"<~" + body.split(b" image\n", 1)[1].strip(), adobe=True)
        check(zlib.crc32(samples) == report["pictures"][found]["crc32"], "samples in PostScript")
        found += 1
    check(found == len(report["pictures"]), f"{found} pictures in PostScript")
    check(b"/Encoding userdict /DravixEncoding get" in data and b"/Encoding 256 array" in data,
          "one of the two encodings is missing")


# --- swatches ----------------------------------------------------------------


def read_ppm(data):
    header = re.match(rb"P6\s(?:#[^\n]*\n)?(\d+)\s(\d+)\s255\s", data)
    return int(header[1]), int(header[2]), data[header.end():]


def gs_page(path):
    return run("gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=ppmraw", f"-r{PPI}",
               "-dTextAlphaBits=4", "-dGraphicsAlphaBits=4", "-sOutputFile=%stdout", path)


def poppler_page(path):
    return run("pdftoppm", "-r", PPI, path)


def mupdf_page(path):
    return run("mutool", "draw", "-q", "-r", PPI, "-F", "ppm", "-o", "-", path,
               stderr=subprocess.DEVNULL)


def judge_swatch_pixels(pages, report):
    """Every swatch's colour is on every page, in an area of its own. MuPDF's
    levels differ by one from the others'."""
    wanted = {tuple(colour["rgb"]) for row in report["swatches"] for colour in row["colours"]}
    check(len(wanted) > 40, "few swatches")
    near = {bytes((r + i, g + j, b + k)): (r, g, b) for r, g, b in wanted
            for i in (-1, 0, 1) for j in (-1, 0, 1) for k in (-1, 0, 1)
            if min(r + i, g + j, b + k) >= 0 and max(r + i, g + j, b + k) <= 255}
    near.update({bytes(colour): colour for colour in wanted})
    for name, page in pages.items():
        _, _, samples = read_ppm(page)
        count = dict.fromkeys(wanted, 0)
        for at in range(0, len(samples), 3):
            colour = near.get(samples[at:at + 3])
            if colour:
                count[colour] += 1
        for colour, pixels in count.items():
            check(pixels >= 200, f"{name}: no area of {colour}")


# --- colour -------------------------------------------------------------------


class LittleCms:
    """Little CMS called directly, with the flags of the embedded platform."""

    FLAGS = 0x0040 | 0x0100  # no cache, no optimisation
    CMYK_8 = 6 << 16 | 4 << 3 | 1
    RGB_8 = 4 << 16 | 3 << 3 | 1

    def __init__(self, intent):
        self.intent = intent  # by the numbers of ICC.1
        self.lib = ctypes.CDLL(ctypes.util.find_library("lcms2") or "liblcms2.so.2")
        self.lib.cmsOpenProfileFromFile.restype = ctypes.c_void_p
        self.lib.cmsCreate_sRGBProfile.restype = ctypes.c_void_p
        self.lib.cmsCreateTransform.restype = ctypes.c_void_p
        self.lib.cmsCreateTransform.argtypes = [ctypes.c_void_p, ctypes.c_uint32, ctypes.c_void_p,
                                                ctypes.c_uint32, ctypes.c_uint32, ctypes.c_uint32]
        self.lib.cmsDoTransform.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_char_p,
                                            ctypes.c_uint32]
        self.press = self.lib.cmsOpenProfileFromFile(
            str(SAMPLES / "FOGRA39L_coated.icc").encode(), b"r")
        self.screen = self.lib.cmsCreate_sRGBProfile()
        assert self.press and self.screen

    def convert(self, pixels, source, source_format, target, target_format, channels):
        link = self.lib.cmsCreateTransform(source, source_format, target, target_format,
                                           self.intent, self.FLAGS)
        assert link
        out = ctypes.create_string_buffer(len(pixels) * channels)
        self.lib.cmsDoTransform(link, b"".join(map(bytes, pixels)), out, len(pixels))
        return [tuple(out.raw[i:i + channels]) for i in range(0, len(out.raw), channels)]

    def to_screen(self, inks):
        return self.convert(inks, self.press, self.CMYK_8, self.screen, self.RGB_8, 3)

    def to_press(self, colours):
        return self.convert(colours, self.screen, self.RGB_8, self.press, self.CMYK_8, 4)


def judge_colours(report):
    rows = {row["label"]: row["colours"] for row in report["swatches"]}

    def row(words_of_label):
        found = [colours for label, colours in rows.items()
                 if all(word in label for word in words_of_label)]
        check(len(found) == 1, f"{len(found)} rows of swatches about {words_of_label}")
        return found[0] if found else []

    [intent] = [choice for choice in report["choices"] if choice["option"] == "--intent"]
    cms = LittleCms(intent["value"])
    one = row(["one link"])
    inks = [[int(n) for n in re.findall(r"\d+", colour["numbers"])] for colour in one]
    check(cms.to_screen(inks) == [tuple(colour["rgb"]) for colour in one],
          "one link: Little CMS gives other colours")
    given = [colour["rgb"] for colour in row(["as they are"])]
    two = row(["two links"])
    check(cms.to_screen(cms.to_press(given)) == [tuple(colour["rgb"]) for colour in two],
          "two links: Little CMS gives other colours")
    check(len(one) >= 8 and len(two) >= 8, "few swatches in the ICC rows")


# --- no clock, and other inputs -----------------------------------------


def make(program, folder, name, *options, epoch="1000000000"):
    folder.mkdir(exist_ok=True)
    files = [folder / f"{name}.{kind}" for kind in ("pdf", "ps", "json")]
    environment = dict(os.environ)
    environment.pop("SOURCE_DATE_EPOCH", None)
    if epoch:
        environment["SOURCE_DATE_EPOCH"] = epoch
    run(program, "make", "-q", "-o", files[0], "--ps", files[1], "--json", files[2], *options,
        env=environment)
    return files


def judge_repetition(program, folder):
    undated = [make(program, folder / place, "proof", epoch=None) for place in ("one", "two")]
    for one, other in zip(*undated):
        check(one.read_bytes() == other.read_bytes(), f"{one.suffix}: bytes depend on the clock")


def png_picture(path, width, height):
    rows = b"".join(b"\0" + bytes(v for x in range(width) for v in (x * 255 // width,
                    y * 255 // height, (x * 7 + y * 13) % 256)) for y in range(height))

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    path.write_bytes(b"\x89PNG\r\n\x1a\n" +
                     chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) +
                     chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def judge_other_inputs(program, folder):
    picture = folder / "picture.png"
    png_picture(picture, 211, 140)
    files = make(program, folder / "other", "proof", "--image", picture, "--unit", "inch",
                 "--width", "4inch")
    report = json.loads(files[2].read_text())
    pdf = Pdf(files[0])
    check(report["pictures"][0]["channels"] == 3, "an RGB picture has three channels")
    check(report["scan"]["width"].split()[1] == "inch", "dimensions in the chosen unit")
    judge_text(pdf, report)
    judge_pictures(pdf, report)
    judge_postscript(files[1], report)
    for bad in (["--image", SAMPLES / "README.md"], ["--font", SAMPLES / "scan.tif"],
                ["--cmyk-profile", SAMPLES / "scan.tif"], ["--scan", folder / "none.tif"],
                ["--width", "wide"]):
        target = folder / "bad.pdf"
        ended = subprocess.run([program, "make", "-o", target, *bad], stderr=subprocess.PIPE)
        check(ended.returncode in (1, 2) and len(ended.stderr.splitlines()) <= 2,
              f"{bad}: code {ended.returncode}")
        check(not target.exists(), f"{bad}: something was written")


def main():
    program = sys.argv[1]
    with tempfile.TemporaryDirectory() as place:
        folder = pathlib.Path(place)
        files = make(program, folder / "first", "proof")
        report = json.loads(files[2].read_text())
        pdf = Pdf(files[0])
        judge_structure(pdf, report)
        judge_font(pdf, report, folder)
        judge_text(pdf, report)
        judge_pictures(pdf, report)
        judge_postscript(files[1], report)
        judge_colours(report)
        distilled = folder / "distilled.pdf"
        run("ps2pdf", files[1], distilled)
        pages = {"Poppler, PDF": poppler_page(files[0]), "Ghostscript, PDF": gs_page(files[0]),
                 "MuPDF, PDF": mupdf_page(files[0]), "Ghostscript, PostScript": gs_page(files[1]),
                 "Poppler, distilled PostScript": poppler_page(distilled),
                 "MuPDF, distilled PostScript": mupdf_page(distilled)}
        judge_swatch_pixels(pages, report)
        judge_repetition(program, folder)
        judge_other_inputs(program, folder)
    for failure in failures[:30]:
        print("FAILED:", failure)
    print(f"{checks} checks, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
